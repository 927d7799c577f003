#pragma once
// Project and clip files: the node tree as XML, one element per node named after its
// registered class, one attribute per saved parameter, then its animation curves, its
// custom block and its children. Reading streams the file through Expat; writing goes
// straight to the file, through a temporary beside it that replaces the old file only
// once it is complete.

#include "foundation/trString.h"
#include "nodes/trBlobCoding.h"

#include <cstdio>
#include <utility>
#include <vector>

class trBase;

// The small element and attribute writer. An element start is "<", the name and its
// attributes, a line end if one attribute per line, then " />\n" when self-closing or
// "\t>" otherwise. An attribute is "\n\t" on its own line or else a blank, then
// name = "value", the value made XML-legal.
class trXMLLean {
public:
    using Attributes = std::vector<std::pair<trString, trString>>;

    static void WriteElementStart(std::FILE *stream, char const *name, Attributes const &attributes,
                                  bool oneAttributePerLine, bool selfClose);
    static void WriteElementEnd(std::FILE *stream, char const *name);
    static void WriteAttribute(std::FILE *stream, char const *name, trString const &value, bool onLine);
    // Printed with "%.6g".
    static void WriteAttribute(std::FILE *stream, char const *name, double value, bool onLine);

    static trString ElementStart(char const *name);
    static trString ElementStart(char const *name, Attributes const &attributes, bool oneAttributePerLine,
                                 bool selfClose);
    static trString ElementEnd(char const *name);
    static trString Attribute(char const *name, trString const &value, bool onLine);
    static trString Attribute(char const *name, double value, bool onLine);
};

class trBaseXML {
public:
    // Reads the elements under `rootElement` into `root`: the root element's attributes
    // are the root's parameters, and every other element a node. What was read before
    // an error stays in the tree; links are resolved only after a complete read.
    static bool ReadFile(trBase &root, char const *path, char const *rootElement);
    static bool ReadBuffer(trBase &root, char const *text, char const *rootElement);
    // The name of the first element of a file, which a reader must name as its root.
    static bool ReadRootElementName(char const *path, trString &name);

    // False if the file couldn't be opened or written; a failed write leaves any
    // previous file as it was. With a null rootElement the file is left empty.
    static bool WriteProjectFile(char const *path, trBase const &root, char const *rootElement);
    // A clip file: the bare start tag of rootElement, the nodes the caller writes with
    // WriteElement, then the end tag from EndWriteClipFile. Null if it can't be opened.
    static std::FILE *BeginWriteClipFile(char const *path, char const *rootElement);
    // False if the clip couldn't be written completely.
    static bool EndWriteClipFile(std::FILE *stream);

    // A null elementName means the node's registered class name.
    static void WriteElement(std::FILE *stream, trBase const &node, bool withChildren, char const *indent,
                             char const *elementName);
    // With a null node, the bare start tag and a line end only.
    static void WriteElementOpen(std::FILE *stream, char const *indent, char const *elementName,
                                 trBase const *node);
    static void WriteElementChildren(std::FILE *stream, trBase const &node, char const *indent);
    static void WriteElementClose(std::FILE *stream, char const *indent, char const *elementName);

    // The same text in a string (animation curves in their compact form), for the
    // clipboard and ReadBuffer.
    static trString GetElement(trBase const &node, bool withChildren, char const *indent, char const *elementName);
    static trString GetElementOpen(char const *indent, char const *elementName, trBase const *node);
    static trString GetElementChildren(trBase const &node, char const *indent);
    static trString GetElementClose(char const *indent, char const *elementName);
};

// Loads parameters under the names they had in older projects: "input_heightfield" is
// "input_node", "voxel_scattering_quality" is "voxel_scatter_quality", and
// "optimise_voxel_scattering" is no longer a parameter (a "0" draws a warning, since it
// can't be turned off any more). Every other name goes to trBase::SetParamFromString.
// For classes that override SetParamFromString(char const *, ...) to accept old files.
long trSetParamFromStringRetired(trBase &node, char const *paramName, trString const &text, trBase *who);
