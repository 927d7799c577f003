#pragma once
// Shared by the node core tests: a probe node with a parameter of every type that logs
// what reaches its virtual slots, a messenger that logs what it hears, a capture of the
// host's message callbacks and of the console, and scratch files. Everything is per test
// file (anonymous namespace).

#include "foundation/trColour.h"
#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/KMMessenger.h"
#include "nodes/trAnimate.h"
#include "nodes/trAnimationManager.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

// One ordered log for nodes and listeners, so that tests can check interleaving.
[[maybe_unused]] std::vector<std::string> &Events()
{
    static std::vector<std::string> events;
    return events;
}

[[maybe_unused]] std::string Str(trString const &s)
{
    return s.chars ? s.chars : "";
}

[[maybe_unused]] std::string NameOf(trBase const *node)
{
    if (!node)
        return "null";
    if (node == trWhoSystem)
        return "system";
    if (node == trWhoUser)
        return "user";
    if (node == trWhoUserIndirect)
        return "indirect";
    return Str(node->name);
}

[[maybe_unused]] bool Has(std::string const &text, std::string const &part)
{
    return text.find(part) != std::string::npos;
}

// What the host's callbacks received while alive.
class HostCapture {
public:
    HostCapture()
        : oldError(trCallBackError), oldWarning(trCallBackWarning), oldInfo(trCallBackInfoMsg), oldDlg(trDoDlgBoxes)
    {
        current = this;
        trCallBackError = [](char const *t, trErrorWarningData *) { current->errors.push_back(t); };
        trCallBackWarning = [](char const *t, trErrorWarningData *) { current->warnings.push_back(t); };
        trCallBackInfoMsg = [](char const *t, trErrorWarningData *) { current->infos.push_back(t); };
        trDoDlgBoxes = 1;
    }
    ~HostCapture()
    {
        trCallBackError = oldError;
        trCallBackWarning = oldWarning;
        trCallBackInfoMsg = oldInfo;
        trDoDlgBoxes = oldDlg;
        current = nullptr;
    }
    HostCapture(HostCapture const &) = delete;
    HostCapture &operator=(HostCapture const &) = delete;

    std::vector<std::string> errors, warnings, infos;

private:
    static inline HostCapture *current = nullptr;
    trMessageCallBack oldError, oldWarning, oldInfo;
    int oldDlg;
};

// Both console streams while alive; Done() ends the capture and keeps what came.
class Console {
public:
    Console()
    {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    ~Console() { Done(); }
    std::string const &Done()
    {
        if (!done) {
            done = true;
            out = testing::internal::GetCapturedStdout();
            err = testing::internal::GetCapturedStderr();
            all = out + err;
        }
        return all;
    }
    std::string out, err, all;

private:
    bool done = false;
};

// A node with one parameter of each value type, logging its slots.
class Probe : public trBase {
public:
    long i = 0;
    double r = 0;
    float f = 0;
    trVector v;
    tr2Vector v2;
    trRgbLinear709 c; // tagged before declaration: the default must not clear the tag
    trString s;
    trPtr p;
    unsigned char b = 0;
    trNodeLink link;
    trString guiExtra;
    long iI, iR, iF, iV, iV2, iC, iS, iP, iB, iLink, iGuiExtra;
    bool logging = true;

    Probe()
    {
        iI = Param(i, "int_value", 3L);
        iR = Param(r, "real_value", 1.5);
        iF = Param(f, "float_value", 0.5f);
        iV = Param(v, "vector_value", trVector(1, 2, 3));
        iV2 = Param(v2, "vector2_value", tr2Vector(4, 5));
        iC = Param(c, "colour_value", trManRgb(0, 0.5f, 0.5f, 0.5f));
        iS = Param(s, "string_value", trString("hello"));
        iP = Param(p, "ptr_value", trPtr());
        iB = Param(b, "bool_value", static_cast<unsigned char>(1));
        iLink = Param(link, "input_link", trString());
        iGuiExtra = Param(guiExtra, "gui_extra", trString());
    }

    // Logs "name.What(arg,arg,...)".
    template <class... A>
    void Log(char const *what, A const &...args)
    {
        std::string text;
        ((text += (text.empty() ? "" : ",") + Arg(args)), ...);
        if (logging)
            Events().push_back(NameOf(this) + "." + what + "(" + text + ")");
    }
    static std::string Arg(long index) { return std::to_string(index); }
    static std::string Arg(trBase *node) { return NameOf(node); }
    static std::string Arg(trString const &text) { return Str(text); }

    void PreChildParamChange(trBase *ch, long k, trBase *w) override
    {
        Log("Pre", ch, k, w);
        trBase::PreChildParamChange(ch, k, w);
    }
    void PreChildStateChange(trBase *ch, trString const &st) override
    {
        Log("PreState", ch, st);
        trBase::PreChildStateChange(ch, st);
    }
    void OnParamChanged(long k, trBase *w) override { Log("Changed", k, w); trBase::OnParamChanged(k, w); }
    void OnGuiParamChanged(long k, trBase *w) override { Log("GuiChanged", k, w); trBase::OnGuiParamChanged(k, w); }
    void OnDependencyParamChanged(trBase *src, long k, trBase *via, trBase *w) override
    {
        Log("Dep", src, k, via, w);
        trBase::OnDependencyParamChanged(src, k, via, w);
    }
    void OnChildParamChanged(trBase *ch, long k, trBase *w) override
    {
        Log("ChildChanged", ch, k, w);
        trBase::OnChildParamChanged(ch, k, w);
    }
    void OnChildGuiParamChanged(trBase *ch, long k, trBase *w) override
    {
        Log("ChildGuiChanged", ch, k, w);
        trBase::OnChildGuiParamChanged(ch, k, w);
    }
    void OnChildStateChanged(trBase *ch, trString const &st) override
    {
        Log("State", ch, st);
        trBase::OnChildStateChanged(ch, st);
    }

    // Exposes the protected declaration for entries no public overload makes.
    long DeclareRaw(long type, void *storage, char const *paramName)
    {
        return DeclareParam(type, storage, paramName, nullptr);
    }
};

// Listens to every code of the nodes it is given.
class Listener : public Kellmere::KMMessenger {
public:
    struct Heard {
        unsigned long code;
        void *data;
        long index; // what the data points at, for 25005 and 25006
    };
    void ReceiveAMessage(Kellmere::KMMessenger *, Kellmere::KMMessage &m) override
    {
        long index = -1;
        if (m.Code() == trMsgParamGuiEnabled || m.Code() == trMsgParamGuiDisabled)
            index = *static_cast<long *>(m.Data());
        heard.push_back({m.Code(), m.Data(), index});
        Events().push_back("msg " + std::to_string(m.Code()));
    }
    std::vector<unsigned long> Codes() const
    {
        std::vector<unsigned long> codes;
        for (Heard const &h : heard)
            codes.push_back(h.code);
        return codes;
    }
    std::vector<Heard> heard;
};

// Hears what the animation manager sends, copying the key records while they are valid.
class ManagerListener : public Kellmere::KMMessenger {
public:
    ManagerListener() { ListenTo(trAnimationManager::Instance()); }
    void ReceiveAMessage(Kellmere::KMMessenger *from, Kellmere::KMMessage &m) override
    {
        EXPECT_EQ(from, trAnimationManager::Instance());
        bool const state = m.Code() == trMsgAnimStateChanged;
        EXPECT_EQ(state, m.Data() == nullptr) << m.Code();
        codes.push_back(m.Code());
        records.push_back(state ? trAnimKeyMessageData{} : *static_cast<trAnimKeyMessageData *>(m.Data()));
    }
    std::vector<unsigned long> codes;
    std::vector<trAnimKeyMessageData> records;
};

// Registers class T under `className` once per process; returns its id.
template <class T = Probe>
long TestClass(char const *className)
{
    long id = -1;
    if (trClasses.FindClassIdFromClassName(id, trString(className)))
        return id;
    trClasses.AddClass(trString("test/"), trString(className), []() -> trBase * { return new T; },
                       [](trBase *n) { delete n; }, trString());
    trClasses.FindClassIdFromClassName(id, trString(className));
    return id;
}

// A parameter's curve for one component: "mode: frame=value(tension,continuity,bias) ...",
// or "none" without animation.
[[maybe_unused]] std::string Curve(trBase const &node, long index, int component)
{
    trAnimate const *a = node.ParamAnim(index);
    if (!a)
        return "none";
    std::ostringstream s;
    s << a->GetComponentInterpolationMode(component) << ":";
    for (trAnimKey const *k = a->FirstKey(component); k; k = k->Next())
        s << " " << k->Frame() << "=" << k->Value() << "(" << k->Tension() << "," << k->Continuity() << ","
          << k->Bias() << ")";
    return s.str();
}

// A registered class's texts: "name|type|display name|simplified display name".
[[maybe_unused]] std::string ClassTexts(long id)
{
    return Str(trClasses.ClassName(id)) + "|" + Str(trClasses.ClassType(id)) + "|" + Str(trClasses.ClassDisplayName(id)) +
           "|" + Str(trClasses.ClassDisplayNameSimplified(id));
}

[[maybe_unused]] Probe *AsProbe(trBase *n)
{
    return static_cast<Probe *>(n);
}

[[maybe_unused]] std::string ReadAll(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

[[maybe_unused]] void WriteAll(std::string const &path, std::string const &text)
{
    std::ofstream(path, std::ios::binary) << text;
}

// A scratch folder per test, removed afterwards.
class Scratch {
public:
    Scratch()
    {
        static int counter = 0;
        path = std::filesystem::temp_directory_path() /
               ("ostrel-nodes-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(path);
    }
    ~Scratch()
    {
        std::error_code e;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all, e);
        std::filesystem::remove_all(path, e);
    }
    std::string File(char const *name) const { return (path / name).string(); }
    // Writes a file in the folder and gives its path.
    std::string Write(char const *name, std::string const &text) const
    {
        WriteAll(File(name), text);
        return File(name);
    }
    std::filesystem::path path;
};

} // namespace
