// Reading project and clip files with Expat. The document is streamed: each element
// start creates a node (parents before children) and sets its parameters in attribute
// order; links can only resolve once the whole tree exists, so they are triggered
// again after the last piece has been parsed.

#include "nodes/trProjectFile.h"

#include "foundation/trJoin.h"
#include "foundation/trMessages.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"

#include "nodes/trAnimate.h"

#include <expat.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <exception>
#include <memory>
#include <type_traits>

namespace {

constexpr int kMaxDepth = 256;
constexpr std::size_t kPieceSize = 8192;
// Key frames are whole numbers held in a long, rounded from a double.
constexpr long kMaxFrame = 1000000000000000L;

// What a curve element is about while its keys are read.
struct CurveHelper {
    long param = -2;
    long component = -2;
};

struct ReadContext {
    XML_Parser parser = nullptr;
    trBase *current = nullptr;
    trString rootElement;
    int depth = 0;
    unsigned char nodePushed[kMaxDepth] = {};
    unsigned char customHere[kMaxDepth] = {};
    unsigned char inCustom[kMaxDepth] = {};
    unsigned char nonNodeHere[kMaxDepth] = {};
    unsigned char inNonNode[kMaxDepth] = {};
    bool inAnimationData = false;
    long animParam = -2;
    long animComponent = -2;
    bool inCurve = false;
    std::unique_ptr<CurveHelper> curve;
    bool warnedDepth = false;
    bool failed = false; // a handler gave up: the parse is stopped
    trString failure;
};

long Line(ReadContext const &c)
{
    return long(XML_GetCurrentLineNumber(c.parser));
}

char const *Attribute(char const **attributes, char const *name)
{
    for (char const **a = attributes; a && a[0]; a += 2)
        if (std::strcmp(a[0], name) == 0)
            return a[1];
    return nullptr;
}

// A value that didn't take has already been reported by the node; this adds where.
void SetFromAttribute(ReadContext &c, trBase &node, char const *name, char const *value)
{
    if (!node.SetParamFromString(name, trString(value), trWhoSystem))
        trOutWarning(trJoin("ReadXML: Line ", Line(c), ": parameter \"", name, "\" of \"", node.NameAndPath(), "\" was not set"));
}

bool ValidComponent(long component)
{
    return component >= 0 && component <= 2;
}

void StartAnimationData(ReadContext &c, char const **attributes)
{
    c.inAnimationData = true;
    c.animParam = -2;
    c.animComponent = -2;
    if (char const *param = Attribute(attributes, "param")) {
        long index = 0;
        if (c.current->FindParam(index, param))
            c.animParam = index;
        else
            trOutWarning(trJoin("ReadXML: Line ", Line(c), ": animation of unknown parameter \"", param, "\" in \"",
                              c.current->NameAndPath(), "\" ignored"));
    }
    if (char const *component = Attribute(attributes, "componentIndex"))
        c.animComponent = std::atoi(component);
}

// The older form: one attribute per keyed frame, named "vf" + frame.
void StartParam(ReadContext &c, char const **attributes)
{
    long index = -1;
    bool found = false;
    for (char const **a = attributes; a && a[0]; a += 2) {
        if (std::strcmp(a[0], "name") == 0) {
            found = c.current->FindParam(index, a[1]);
            continue;
        }
        long frame = 0;
        if (!found || std::sscanf(a[0], "vf%ld", &frame) != 1)
            continue;
        if (frame > kMaxFrame || frame < -kMaxFrame) {
            trOutWarning(trJoin("ReadXML: Line ", Line(c), ": key with a frame out of range ignored"));
            continue;
        }
        SetFromAttribute(c, *c.current, c.current->ParamName(index), a[1]);
        c.current->SetParamKey(index, -1, double(frame), 1);
    }
}

void StartCurve(ReadContext &c, char const **attributes)
{
    if (c.inAnimationData)
        c.inCurve = true;
    c.curve = std::make_unique<CurveHelper>();
    c.curve->param = c.animParam;
    c.curve->component = c.animComponent;
    // A missing or unknown mode reads as tension-continuity-bias, the default.
    char const *mode = Attribute(attributes, "mode");
    long const value = mode && std::strcmp(mode, "linear") == 0 ? 2 : 1;
    if (c.animParam < 0 || !ValidComponent(c.animComponent))
        return;
    c.current->SetParamComponentInterpolationMode(c.animParam, int(c.animComponent), int(value));
}

double NumberAttribute(char const **attributes, char const *name)
{
    char const *text = Attribute(attributes, name);
    return text ? std::strtod(text, nullptr) : 0.0;
}

void StartKey(ReadContext &c, char const **attributes)
{
    if (!c.inAnimationData || !c.inCurve || !c.curve)
        return;
    if (c.animParam < 0 || !ValidComponent(c.animComponent))
        return;
    double const t = NumberAttribute(attributes, "t");
    double const value = NumberAttribute(attributes, "value");
    double const tension = NumberAttribute(attributes, "tension");
    double const continuity = NumberAttribute(attributes, "continuity");
    double const bias = NumberAttribute(attributes, "bias");
    if (!std::isfinite(t) || std::fabs(t) > double(kMaxFrame) || !std::isfinite(value) || !std::isfinite(tension) ||
        !std::isfinite(continuity) || !std::isfinite(bias)) {
        trOutWarning(trJoin("ReadXML: Line ", Line(c), ": key with a frame or value out of range ignored"));
        return;
    }
    trVector v(value, value, value);
    int const component = int(c.animComponent);
    if (!c.current->SetParamKeyWithValue(c.animParam, component, v, t, 1))
        return;
    trAnimate *anim = c.current->ParamAnim(c.animParam);
    if (!anim)
        return;
    // Keys stand at whole frames, so the key just made is found at the rounded frame.
    if (trAnimKey *key = anim->FindKeyForFrame(component, t))
        key->SetTCB(tension, continuity, bias);
}

void StartNode(ReadContext &c, char const *name, char const **attributes)
{
    trBase *parent = c.current;
    long const before = parent->NumChildren();
    trBase *node = parent->CreateChildLean(trString(name));
    if (!node) {
        trOutWarning(trJoin("ReadXML: Line ", Line(c), ": element <", name, "> skipped; what it holds goes to \"",
                          parent->IsRoot() ? trString("/") : parent->NameAndPath(), "\""));
        return;
    }
    if (parent->NumChildren() != before + 1) {
        // The parent's child table refused it: nothing owns the node, so it goes.
        trDestroyObject(node);
        return;
    }
    for (char const **a = attributes; a && a[0]; a += 2)
        SetFromAttribute(c, *node, a[0], a[1]);
    c.nodePushed[c.depth] = 1;
    c.current = node;
}

void StartElement(ReadContext &c, char const *name, char const **attributes)
{
    ++c.depth;
    if (c.depth >= kMaxDepth) {
        if (!c.warnedDepth)
            trOutError(trJoin("ReadXML: Line ", Line(c), ": elements nested deeper than ", long(kMaxDepth - 1),
                            " levels are ignored"));
        c.warnedDepth = true;
        return;
    }
    int const d = c.depth;
    if (c.customHere[d - 1] || c.inCustom[d - 1])
        c.inCustom[d] = 1;
    if (c.nonNodeHere[d - 1] || c.inNonNode[d - 1])
        c.inNonNode[d] = 1;
    if (!c.current) {
        trOutError("ReadXMLFile: StartElement: No node pointer!");
        return;
    }
    if (c.rootElement == name) {
        for (char const **a = attributes; a && a[0]; a += 2)
            SetFromAttribute(c, *c.current, a[0], a[1]);
        return;
    }
    if (std::strcmp(name, "custom") == 0) {
        c.customHere[d] = 1;
        c.current->EnteredXMLCustomData();
    } else if (std::strcmp(name, "non_node") == 0) {
        c.nonNodeHere[d] = 1;
    } else if (std::strcmp(name, "animationData") == 0) {
        StartAnimationData(c, attributes);
    } else if (std::strcmp(name, "param") == 0) {
        StartParam(c, attributes);
    } else if (std::strcmp(name, "curve") == 0) {
        StartCurve(c, attributes);
    } else if (std::strcmp(name, "key") == 0) {
        StartKey(c, attributes);
    } else if (c.inCustom[d]) {
        c.current->HandleXMLCustomElement(trString(name), attributes);
    } else if (!c.inNonNode[d]) {
        StartNode(c, name, attributes);
    }
}

void EndElement(ReadContext &c, char const *name)
{
    if (c.depth >= kMaxDepth) {
        --c.depth;
        return;
    }
    int const d = c.depth;
    if (c.nodePushed[d]) {
        c.nodePushed[d] = 0;
        if (c.current)
            c.current = c.current->Parent();
    }
    if (c.inCustom[d] && c.current)
        c.current->HandleXMLCustomElementClosed(trString(name));
    if (std::strcmp(name, "animationData") == 0) {
        c.inAnimationData = false;
        c.animParam = -2;
        c.animComponent = -2;
    } else if (std::strcmp(name, "curve") == 0) {
        c.inCurve = false;
        c.curve.reset();
    } else if (std::strcmp(name, "custom") == 0 && c.current) {
        c.current->ExitedXMLCustomData();
    }
    c.customHere[d] = c.inCustom[d] = c.nonNodeHere[d] = c.inNonNode[d] = 0;
    if (c.depth > 0)
        --c.depth;
}

void CharacterData(ReadContext &c, char const *text, int length)
{
    int const d = c.depth;
    // Text directly inside <custom> belongs to the class as well as text in its elements.
    if (d <= 0 || d >= kMaxDepth || !c.current || !(c.inCustom[d] || c.customHere[d]))
        return;
    trString piece;
    piece.SetupStorage(length);
    std::memcpy(piece.chars, text, std::size_t(length));
    piece.chars[length] = 0;
    c.current->HandleXMLCustomCharacterData(piece);
}

// Nothing may unwind through Expat's C frames: a failure stops the parse instead.
template <class F> void Guarded(void *data, F &&f)
{
    ReadContext &c = *static_cast<ReadContext *>(data);
    if (c.failed)
        return;
    try {
        f(c);
    } catch (std::exception const &e) {
        c.failed = true;
        c.failure = trJoin("ReadXML: Line ", Line(c), ": reading stopped: ", e.what());
        XML_StopParser(c.parser, XML_FALSE);
    } catch (...) {
        c.failed = true;
        c.failure = trJoin("ReadXML: Line ", Line(c), ": reading stopped");
        XML_StopParser(c.parser, XML_FALSE);
    }
}

void XMLCALL OnStart(void *data, XML_Char const *name, XML_Char const **attributes)
{
    Guarded(data, [&](ReadContext &c) { StartElement(c, name, attributes); });
}

void XMLCALL OnEnd(void *data, XML_Char const *name)
{
    Guarded(data, [&](ReadContext &c) { EndElement(c, name); });
}

void XMLCALL OnCharacters(void *data, XML_Char const *text, int length)
{
    Guarded(data, [&](ReadContext &c) { CharacterData(c, text, length); });
}

struct ParserFree {
    void operator()(XML_Parser p) const { XML_ParserFree(p); }
};

trString ParseErrorText(ReadContext const &c, char const *path)
{
    if (c.failed)
        return c.failure;
    char line[32];
    std::snprintf(line, sizeof line, "%ld", Line(c));
    char const *expat = XML_ErrorString(XML_GetErrorCode(c.parser));
    trString text;
    if (path)
        text = trJoin(path, ":\nParse error at line ", line, ":\n", expat, "\n");
    else
        text = trJoin("Parse error in byte stream at line: ", line, ":\n", expat, "\n");
    return text;
}

bool ReadXML(trBase &root, char const *path, char const *buffer, char const *rootElement)
{
    if (path && buffer) {
        trError("ReadXML: Passed both a file and a byte stream");
        return false;
    }
    if (!path && !buffer) {
        trError("ReadXML: Passed neither file nor byte stream");
        return false;
    }
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree> parser(XML_ParserCreate(nullptr));
    if (!parser) {
        std::fputs("Couldn't allocate memory for parser\n", stderr);
        return false;
    }
    auto context = std::make_unique<ReadContext>();
    ReadContext &c = *context;
    c.parser = parser.get();
    c.current = &root;
    c.rootElement = rootElement ? rootElement : "";
    XML_SetUserData(c.parser, &c);
    XML_SetElementHandler(c.parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(c.parser, OnCharacters);

    if (buffer) {
        trOutMsg("ReadXML: Attempting to read byte stream");
        if (XML_Parse(c.parser, buffer, int(std::strlen(buffer)), 1) == XML_STATUS_ERROR) {
            trError(ParseErrorText(c, nullptr));
            return false;
        }
    } else {
        trOutMsg(trJoin("ReadXML: Attempting to read file: \"", path, "\""));
        std::FILE *f = std::fopen(path, "rt");
        if (!f) {
            trError(trJoin("ReadXML: Cannot open file: \"", path, "\""));
            return false;
        }
        // One block per read rather than one for the process, so that a class may read
        // another file from within its custom data.
        std::unique_ptr<char[]> piece(new char[kPieceSize]);
        bool ok = true;
        for (;;) {
            std::size_t const n = std::fread(piece.get(), 1, kPieceSize, f);
            if (std::ferror(f)) {
                trError("Read error\n");
                ok = false;
                break;
            }
            bool const last = n < kPieceSize && std::feof(f);
            if (XML_Parse(c.parser, piece.get(), int(n), last) == XML_STATUS_ERROR) {
                trError(ParseErrorText(c, path));
                ok = false;
                break;
            }
            if (last)
                break;
        }
        std::fclose(f);
        if (!ok)
            return false;
    }
    root.TriggerAllNodeLinks();
    trOutMsg("ReadXML: done");
    return true;
}

struct RootNameContext {
    XML_Parser parser = nullptr;
    trString name;
    bool found = false;
};

void XMLCALL OnFirstStart(void *data, XML_Char const *name, XML_Char const **)
{
    RootNameContext &c = *static_cast<RootNameContext *>(data);
    c.name = name;
    c.found = true;
    XML_StopParser(c.parser, XML_FALSE);
}

} // namespace

bool trBaseXML::ReadFile(trBase &root, char const *path, char const *rootElement)
{
    return ReadXML(root, path, nullptr, rootElement);
}

bool trBaseXML::ReadBuffer(trBase &root, char const *text, char const *rootElement)
{
    return ReadXML(root, nullptr, text, rootElement);
}

bool trBaseXML::ReadRootElementName(char const *path, trString &name)
{
    name = trString();
    if (!path)
        return false;
    std::FILE *f = std::fopen(path, "rt");
    if (!f)
        return false;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, ParserFree> parser(XML_ParserCreate(nullptr));
    RootNameContext c;
    c.parser = parser.get();
    if (parser) {
        XML_SetUserData(c.parser, &c);
        XML_SetStartElementHandler(c.parser, OnFirstStart);
        char piece[4096];
        while (!c.found) {
            std::size_t const n = std::fread(piece, 1, sizeof piece, f);
            bool const last = n < sizeof piece;
            if (XML_Parse(c.parser, piece, int(n), last) == XML_STATUS_ERROR || last)
                break;
        }
    }
    std::fclose(f);
    if (c.found)
        name = c.name;
    return c.found;
}

long trSetParamFromStringRetired(trBase &node, char const *paramName, trString const &text, trBase *who)
{
    if (paramName && std::strcmp(paramName, "optimise_voxel_scattering") == 0) {
        if (text == "0")
            trWarning("\"Optimise voxel scattering\" is now enabled automatically and cannot be turned off.");
        return 0;
    }
    char const *name = paramName;
    if (paramName && std::strcmp(paramName, "input_heightfield") == 0)
        name = "input_node";
    else if (paramName && std::strcmp(paramName, "voxel_scattering_quality") == 0)
        name = "voxel_scatter_quality";
    return node.trBase::SetParamFromString(name, text, who);
}
