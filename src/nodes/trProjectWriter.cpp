// Writing project and clip files. The same element text goes either straight to a file
// or into a string, through one small sink, so that the two forms can't drift apart.

#include "nodes/trProjectFile.h"

#include "foundation/trJoin.h"
#include "foundation/trMessages.h"
#include "nodes/trBase.h"

#include "nodes/trAnimate.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

class Sink {
public:
    virtual ~Sink() = default;
    virtual void Put(char const *text, std::size_t n) = 0;
    void Put(char const *text) { Put(text, std::strlen(text)); }
    void Put(trString const &text) { Put(text.chars, std::size_t(text.length)); }
    void Put(std::string const &text) { Put(text.data(), text.size()); }
};

class FileSink : public Sink {
public:
    explicit FileSink(std::FILE *f) : file(f) {}
    void Put(char const *text, std::size_t n) override
    {
        if (file && n)
            std::fwrite(text, 1, n, file);
    }
    using Sink::Put;

private:
    std::FILE *file;
};

class StringSink : public Sink {
public:
    void Put(char const *text, std::size_t n) override { text_.append(text, n); }
    using Sink::Put;
    std::string text_;
};

char const kUnregisteredClass[] = "unregistered_class";

trString Legal(trString text)
{
    text.MakeXMLLegal();
    return text;
}

trString Number(double value, char const *format)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, format, value);
    return trString(buffer);
}

trString ElementNameOf(trBase const &node, char const *elementName)
{
    if (elementName)
        return trString(elementName);
    return node.IsRegistered() ? node.RegisteredClassName() : trString(kUnregisteredClass);
}

void PutAttribute(Sink &out, char const *name, trString const &value, bool onLine)
{
    out.Put(onLine ? "\n\t" : " ");
    out.Put(name);
    out.Put(" = \"");
    out.Put(Legal(value));
    out.Put("\"");
}

void PutElementStart(Sink &out, char const *name, trXMLLean::Attributes const &attributes, bool oneAttributePerLine,
                     bool selfClose)
{
    out.Put("<");
    out.Put(name);
    for (auto const &a : attributes)
        PutAttribute(out, a.first.chars, a.second, oneAttributePerLine);
    if (oneAttributePerLine)
        out.Put("\n");
    out.Put(selfClose ? " />\n" : "\t>");
}

void PutElementEnd(Sink &out, char const *name)
{
    out.Put("</");
    out.Put(name);
    out.Put(">\n");
}

void PutOpen(Sink &out, char const *indent, char const *elementName, trBase const *node)
{
    out.Put(indent);
    out.Put("<");
    out.Put(elementName ? elementName : "");
    if (!node) {
        out.Put(">\n");
        return;
    }
    out.Put("\n");
    // Values are reached through the virtual text forms; the node itself is `who`.
    trBase &n = const_cast<trBase &>(*node);
    trString value;
    for (long i = 0; i < n.NumParams(); ++i) {
        trParamRecord const *r = n.ParamRecord(i);
        if (!r || r->shouldBeSaved != 1 || r->type >= trParamPushButton || r->type == trParamPtr)
            continue;
        if (!n.GetStringFromParam(i, value, &n))
            continue;
        out.Put(indent);
        out.Put("\t");
        out.Put(r->name);
        out.Put(" = \"");
        out.Put(Legal(value));
        out.Put("\"\n");
    }
    out.Put(indent);
    out.Put("\t>\n");
}

void PutClose(Sink &out, char const *indent, char const *elementName)
{
    out.Put(indent);
    out.Put("</");
    out.Put(elementName ? elementName : "");
    out.Put(">\n");
}

char const *ModeName(long mode)
{
    return mode == 2 ? "linear" : "tcb";
}

// The stream form has blanks around "=" and a tab before ">"; the string form (for the
// clipboard) has neither. Readers see no difference.
void PutAnimation(Sink &out, trBase const &node, std::string const &indent, bool compact)
{
    for (long i = 0; i < node.NumParams(); ++i) {
        trAnimate *anim = node.ParamAnim(i);
        if (!anim)
            continue;
        char const *paramName = node.ParamName(i);
        for (int c = 0; c < 3; ++c) {
            trAnimKey *key = anim->FirstKey(c);
            if (!key)
                continue;
            char const *mode = ModeName(long(anim->GetComponentInterpolationMode(c)));
            if (compact) {
                out.Put("<animationData param=\"");
                out.Put(Legal(trString(paramName)));
                out.Put("\" componentIndex=\"");
                out.Put(std::to_string(c));
                out.Put("\">\n<curve mode=\"");
                out.Put(mode);
                out.Put("\">\n");
                for (; key; key = key->Next()) {
                    out.Put("<key t=\"");
                    out.Put(Number(key->Frame(), "%.10g"));
                    out.Put("\" value=\"");
                    out.Put(Number(key->Value(), "%.10g"));
                    out.Put("\" tension=\"");
                    out.Put(Number(key->Tension(), "%.10g"));
                    out.Put("\" continuity=\"");
                    out.Put(Number(key->Continuity(), "%.10g"));
                    out.Put("\" bias=\"");
                    out.Put(Number(key->Bias(), "%.10g"));
                    out.Put("\" />\n");
                }
                out.Put("</curve>\n</animationData>\n");
                continue;
            }
            out.Put(indent);
            out.Put("\t");
            PutElementStart(out, "animationData",
                            {{trString("param"), trString(paramName)},
                             {trString("componentIndex"), trString(std::to_string(c))}},
                            false, false);
            out.Put("\n");
            out.Put(indent);
            out.Put("\t\t");
            PutElementStart(out, "curve", {{trString("mode"), trString(mode)}}, false, false);
            out.Put("\n");
            for (; key; key = key->Next()) {
                out.Put(indent);
                out.Put("\t\t\t\t");
                PutElementStart(out, "key",
                                {{trString("t"), Number(key->Frame(), "%.10g")},
                                 {trString("value"), Number(key->Value(), "%.10g")},
                                 {trString("tension"), Number(key->Tension(), "%.10g")},
                                 {trString("continuity"), Number(key->Continuity(), "%.10g")},
                                 {trString("bias"), Number(key->Bias(), "%.10g")}},
                                false, true);
            }
            out.Put(indent);
            out.Put("\t\t");
            PutElementEnd(out, "curve");
            out.Put(indent);
            out.Put("\t");
            PutElementEnd(out, "animationData");
        }
    }
}

void PutCustom(Sink &out, trBase const &node, std::string const &indent)
{
    trBase &n = const_cast<trBase &>(node);
    trString custom;
    if (n.WriteXMLCustomData(trString((indent + "\t\t").c_str()), custom) != 1 || custom.length == 0)
        return;
    out.Put(indent);
    out.Put("\t<custom>\n");
    out.Put(custom);
    out.Put(indent);
    out.Put("\t</custom>\n");
}

void PutChildren(Sink &out, trBase const &node, std::string const &indent, bool compact);

void PutElement(Sink &out, trBase const &node, bool withChildren, std::string const &indent,
                char const *elementName, bool compact)
{
    trString const name = ElementNameOf(node, elementName);
    PutOpen(out, indent.c_str(), name.chars, &node);
    PutAnimation(out, node, indent, compact);
    PutCustom(out, node, indent);
    if (withChildren)
        PutChildren(out, node, indent + "\t", compact);
    PutClose(out, indent.c_str(), name.chars);
}

void PutChildren(Sink &out, trBase const &node, std::string const &indent, bool compact)
{
    for (long i = 0; i < node.NumChildren(); ++i)
        if (trBase const *child = node.Child(i))
            PutElement(out, *child, true, indent, nullptr, compact);
}

// ---- Safe saving ----
// A file is written as a temporary beside its target and renamed over it only when it
// is complete and on the disk, so that a failed save never costs the previous file.

struct PendingFile {
    trString path;      // the target
    trString temporary; // what is being written
    trString rootElement;
    char const *operation;
};

std::mutex &PendingMutex()
{
    static std::mutex m;
    return m;
}

std::map<std::FILE *, PendingFile> &Pending()
{
    static std::map<std::FILE *, PendingFile> pending;
    return pending;
}

trString SystemText(int error)
{
    return trString(std::strerror(error));
}

// Creates the temporary with the permissions a new file would get; keeps an existing
// file's mode, so that a save doesn't change who may read the project.
std::FILE *OpenTemporary(trString const &path, trString &temporary, int &error)
{
    mode_t mode = 0666;
    struct stat existing;
    bool const exists = ::stat(path.chars, &existing) == 0;
    if (exists) {
        if (S_ISDIR(existing.st_mode)) {
            error = EISDIR;
            return nullptr;
        }
        mode = existing.st_mode & 07777;
    }
    static unsigned long counter = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary = trJoin(path, ".tmp", long(::getpid()), "_", long(++counter));
        int const fd = ::open(temporary.chars, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : mode);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            error = errno;
            return nullptr;
        }
        if (exists)
            (void)::fchmod(fd, mode);
        std::FILE *f = ::fdopen(fd, "w");
        if (!f) {
            error = errno;
            ::close(fd);
            ::unlink(temporary.chars);
            return nullptr;
        }
        return f;
    }
    error = EEXIST;
    return nullptr;
}

// Flushes, syncs and closes, then renames over the target. 0 with `error` on failure,
// and the temporary is gone.
bool CommitTemporary(std::FILE *f, trString const &temporary, trString const &path, int &error)
{
    bool ok = std::fflush(f) == 0 && !std::ferror(f);
    if (!ok)
        error = errno ? errno : EIO;
    if (ok && ::fsync(::fileno(f)) != 0 && errno != EINVAL && errno != EROFS) {
        ok = false;
        error = errno;
    }
    if (std::fclose(f) != 0 && ok) {
        ok = false;
        error = errno ? errno : EIO;
    }
    if (ok && ::rename(temporary.chars, path.chars) != 0) {
        ok = false;
        error = errno;
    }
    if (!ok)
        ::unlink(temporary.chars);
    return ok;
}

std::FILE *BeginSave(char const *operation, char const *path, trString &temporary)
{
    trString const target(path ? path : "");
    trOutMsg(trJoin(operation, ": Attempting to write file: \"", target, "\""));
    int error = 0;
    std::FILE *f = target.length ? OpenTemporary(target, temporary, error) : nullptr;
    if (!f) {
        trString text = trJoin(operation, ": Cannot open file: \"", target, "\"");
        if (error)
            text = trJoin(text, " (", SystemText(error), ")");
        trError(text);
    }
    return f;
}

bool EndSave(char const *operation, std::FILE *f, trString const &temporary, trString const &path)
{
    errno = 0;
    int error = 0;
    if (!CommitTemporary(f, temporary, path, error)) {
        trError(trJoin(operation, ": Cannot write file: \"", path, "\" (", SystemText(error),
                 "); the previous file is unchanged"));
        return false;
    }
    trOutMsg(trJoin(operation, ": done"));
    return true;
}

} // namespace

// ---------------------------------------------------------------------------------
// trXMLLean

void trXMLLean::WriteElementStart(std::FILE *stream, char const *name, Attributes const &attributes,
                                  bool oneAttributePerLine, bool selfClose)
{
    FileSink out(stream);
    PutElementStart(out, name, attributes, oneAttributePerLine, selfClose);
}

void trXMLLean::WriteElementEnd(std::FILE *stream, char const *name)
{
    FileSink out(stream);
    PutElementEnd(out, name);
}

void trXMLLean::WriteAttribute(std::FILE *stream, char const *name, trString const &value, bool onLine)
{
    FileSink out(stream);
    PutAttribute(out, name, value, onLine);
}

void trXMLLean::WriteAttribute(std::FILE *stream, char const *name, double value, bool onLine)
{
    FileSink out(stream);
    PutAttribute(out, name, Number(value, "%.6g"), onLine);
}

trString trXMLLean::ElementStart(char const *name)
{
    return ElementStart(name, Attributes(), false, false);
}

trString trXMLLean::ElementStart(char const *name, Attributes const &attributes, bool oneAttributePerLine,
                                 bool selfClose)
{
    StringSink out;
    PutElementStart(out, name, attributes, oneAttributePerLine, selfClose);
    return trString(out.text_);
}

trString trXMLLean::ElementEnd(char const *name)
{
    StringSink out;
    PutElementEnd(out, name);
    return trString(out.text_);
}

trString trXMLLean::Attribute(char const *name, trString const &value, bool onLine)
{
    StringSink out;
    PutAttribute(out, name, value, onLine);
    return trString(out.text_);
}

trString trXMLLean::Attribute(char const *name, double value, bool onLine)
{
    return Attribute(name, Number(value, "%.6g"), onLine);
}

// ---------------------------------------------------------------------------------
// trBaseXML, writing

void trBaseXML::WriteElement(std::FILE *stream, trBase const &node, bool withChildren, char const *indent,
                             char const *elementName)
{
    FileSink out(stream);
    PutElement(out, node, withChildren, indent ? indent : "", elementName, false);
}

void trBaseXML::WriteElementOpen(std::FILE *stream, char const *indent, char const *elementName, trBase const *node)
{
    FileSink out(stream);
    PutOpen(out, indent ? indent : "", elementName, node);
}

void trBaseXML::WriteElementChildren(std::FILE *stream, trBase const &node, char const *indent)
{
    FileSink out(stream);
    PutChildren(out, node, indent ? indent : "", false);
}

void trBaseXML::WriteElementClose(std::FILE *stream, char const *indent, char const *elementName)
{
    FileSink out(stream);
    PutClose(out, indent ? indent : "", elementName);
}

trString trBaseXML::GetElement(trBase const &node, bool withChildren, char const *indent, char const *elementName)
{
    StringSink out;
    PutElement(out, node, withChildren, indent ? indent : "", elementName, true);
    return trString(out.text_);
}

trString trBaseXML::GetElementOpen(char const *indent, char const *elementName, trBase const *node)
{
    StringSink out;
    PutOpen(out, indent ? indent : "", elementName, node);
    return trString(out.text_);
}

trString trBaseXML::GetElementChildren(trBase const &node, char const *indent)
{
    StringSink out;
    PutChildren(out, node, indent ? indent : "", true);
    return trString(out.text_);
}

trString trBaseXML::GetElementClose(char const *indent, char const *elementName)
{
    StringSink out;
    PutClose(out, indent ? indent : "", elementName);
    return trString(out.text_);
}

bool trBaseXML::WriteProjectFile(char const *path, trBase const &root, char const *rootElement)
{
    static char const kOperation[] = "WriteProjectFile";
    // The message is given twice, as it always has been; hosts' logs expect the pair.
    trOutMsg(trJoin(kOperation, ": Attempting to write file: \"", path, "\""));
    trString temporary;
    std::FILE *f = BeginSave(kOperation, path, temporary);
    if (!f)
        return false;
    if (rootElement)
        WriteElement(f, root, true, "", rootElement);
    return EndSave(kOperation, f, temporary, trString(path));
}

std::FILE *trBaseXML::BeginWriteClipFile(char const *path, char const *rootElement)
{
    static char const kOperation[] = "WriteClipFile";
    trString temporary;
    std::FILE *f = BeginSave(kOperation, path, temporary);
    if (!f)
        return nullptr;
    WriteElementOpen(f, "", rootElement ? rootElement : "", nullptr);
    std::lock_guard<std::mutex> lock(PendingMutex());
    Pending()[f] = PendingFile{trString(path), temporary, trString(rootElement ? rootElement : ""), kOperation};
    return f;
}

bool trBaseXML::EndWriteClipFile(std::FILE *stream)
{
    PendingFile pending;
    {
        std::lock_guard<std::mutex> lock(PendingMutex());
        auto it = Pending().find(stream);
        if (!stream || it == Pending().end()) {
            trError("WriteClipFile: Not a clip file opened with BeginWriteClipFile");
            return false;
        }
        pending = it->second;
        Pending().erase(it);
    }
    WriteElementClose(stream, "", pending.rootElement.chars);
    return EndSave(pending.operation, stream, pending.temporary, pending.path);
}
