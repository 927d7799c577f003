#pragma once
// Shared by the node core tests: a probe node with a parameter of every type that logs
// what reaches its virtual slots, a messenger that logs what it hears, and a capture
// of the host's message callbacks. Everything is per test file (anonymous namespace).

#include "foundation/trColour.h"
#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/KMMessenger.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"

#include <string>
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

// What the host's callbacks received while alive.
class HostCapture {
public:
    HostCapture()
        : oldError(trCallBackError), oldWarning(trCallBackWarning), oldInfo(trCallBackInfoMsg),
          oldDlg(trDoDlgBoxes)
    {
        Current() = this;
        trCallBackError = [](char const *t, trErrorWarningData *) { Current()->errors.push_back(t); };
        trCallBackWarning = [](char const *t, trErrorWarningData *) { Current()->warnings.push_back(t); };
        trCallBackInfoMsg = [](char const *t, trErrorWarningData *) { Current()->infos.push_back(t); };
        trDoDlgBoxes = 1;
    }
    ~HostCapture()
    {
        trCallBackError = oldError;
        trCallBackWarning = oldWarning;
        trCallBackInfoMsg = oldInfo;
        trDoDlgBoxes = oldDlg;
        Current() = nullptr;
    }
    HostCapture(HostCapture const &) = delete;
    HostCapture &operator=(HostCapture const &) = delete;

    std::vector<std::string> errors, warnings, infos;

private:
    static HostCapture *&Current()
    {
        static HostCapture *current = nullptr;
        return current;
    }
    trMessageCallBack oldError, oldWarning, oldInfo;
    int oldDlg;
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

    void Log(std::string const &text)
    {
        if (logging)
            Events().push_back(NameOf(this) + "." + text);
    }

    void PreChildParamChange(trBase *child, long index, trBase *who) override
    {
        Log("Pre(" + NameOf(child) + "," + std::to_string(index) + "," + NameOf(who) + ")");
        trBase::PreChildParamChange(child, index, who);
    }
    void PreChildStateChange(trBase *child, trString const &state) override
    {
        Log("PreState(" + NameOf(child) + "," + Str(state) + ")");
        trBase::PreChildStateChange(child, state);
    }
    void OnParamChanged(long index, trBase *who) override
    {
        Log("Changed(" + std::to_string(index) + "," + NameOf(who) + ")");
        trBase::OnParamChanged(index, who);
    }
    void OnGuiParamChanged(long index, trBase *who) override
    {
        Log("GuiChanged(" + std::to_string(index) + "," + NameOf(who) + ")");
        trBase::OnGuiParamChanged(index, who);
    }
    void OnDependencyParamChanged(trBase *source, long index, trBase *via, trBase *who) override
    {
        Log("Dep(" + NameOf(source) + "," + std::to_string(index) + "," + NameOf(via) + "," + NameOf(who) + ")");
        trBase::OnDependencyParamChanged(source, index, via, who);
    }
    void OnChildParamChanged(trBase *child, long index, trBase *who) override
    {
        Log("ChildChanged(" + NameOf(child) + "," + std::to_string(index) + "," + NameOf(who) + ")");
        trBase::OnChildParamChanged(child, index, who);
    }
    void OnChildGuiParamChanged(trBase *child, long index, trBase *who) override
    {
        Log("ChildGuiChanged(" + NameOf(child) + "," + std::to_string(index) + "," + NameOf(who) + ")");
        trBase::OnChildGuiParamChanged(child, index, who);
    }
    void OnChildStateChanged(trBase *child, trString const &state) override
    {
        Log("State(" + NameOf(child) + "," + Str(state) + ")");
        trBase::OnChildStateChanged(child, state);
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
    std::vector<Heard> heard;
};

// Registers a Probe class under `className` once per process; returns its id.
[[maybe_unused]] long ProbeClass(char const *className)
{
    long id = -1;
    if (trClasses.FindClassIdFromClassName(id, trString(className)))
        return id;
    trClasses.AddClass(trString("test/"), trString(className), []() -> trBase * { return new Probe; },
                       [](trBase *n) { delete n; }, trString());
    trClasses.FindClassIdFromClassName(id, trString(className));
    return id;
}

[[maybe_unused]] Probe *AsProbe(trBase *n)
{
    return static_cast<Probe *>(n);
}

} // namespace
