#include "nodes/trBase.h"

#include "foundation/trGlobals.h"
#include "foundation/trMessages.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trGuiAction.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"
#include "nodes/trUndo.h"

#include <sys/mman.h>

#include <algorithm>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>

// The node's private record. The order of the members is kept on purpose.
class trBasePrivate {
public:
    trBasePrivate() { guiGroup.SetIsHidden(); }

    // Reserved for real locks; nothing takes them yet.
    std::recursive_mutex mutex;
    std::condition_variable_any readCondition;
    std::condition_variable_any writeCondition;
    long numReaders = 0;
    long numWriters = 0;
    long numWaitingWriters = 0;
    bool writeLocked = false;

    unsigned char mayAffectPreviews = 1;
    trBase *parent = nullptr;
    trNetwork *children = nullptr;
    long registeredClassId = -1;
    std::vector<trString> trueKeywords;
    std::vector<trParamRecord *> params;
    trParamReport *paramReport = nullptr;
    std::vector<trBase *> outputNodes;
    std::vector<long> outputParams;
    long numOutputs = 0;
    unsigned char externalInputsInside = 0;
    unsigned char animUpdateGuard = 1;
    trBase *bundledWith = nullptr;
    std::list<trBase *> bundledNodes;
    unsigned char guiUseNodePos = 0;
    trVector guiNodePos;
    trNodeLink guiGroup;
    trString contentPathForChildren;
    trString orphanedContentPath;
    trGuiActionSet *guiActions = nullptr;
    std::deque<int> paramGroupStack;
    std::map<int, std::set<long>> paramGroups;
    std::vector<trString *> guiTabs;
};

namespace {

char const *const kUnregisteredClass = "UNREGISTERED_CLASS";

// A null name reads as empty in messages.
char const *Safe(char const *text)
{
    return text ? text : "";
}

trString Decimal(long value)
{
    trString s;
    s.SetInt(value);
    return s;
}

void WarnUnknownParam(trBase const *node, char const *operation, char const *paramName)
{
    trWarning(trString(operation) + "Unknown parameter: \"" + Safe(paramName) + "\" in class: " +
              node->RegisteredClassName());
}

void WarnWrongType(trBase const *node, char const *operation, long index, long got)
{
    trParamRecord const *r = node->ParamRecord(index);
    if (!r) {
        trWarning(trString(operation) + "Parameter index out of range: " + Decimal(index) + " in class: " +
                  node->RegisteredClassName());
        return;
    }
    trWarning(trString(operation) + "Wrong type for parameter: \"" + Safe(r->name) + "\" in class: " +
              node->RegisteredClassName() + ". Expected type " + Decimal(r->type) + ", got type " + Decimal(got));
}

// The record when it has the type; otherwise the warning and null.
trParamRecord *Checked(trBase const *node, char const *operation, long index, long type, long got)
{
    trParamRecord *r = node->ParamRecord(index);
    if (r && r->type == type)
        return r;
    WarnWrongType(node, operation, index, got);
    return nullptr;
}

// 1, 2 or 3 when exactly that component differs, else 0.
long DifferingComponent(trVector const &a, trVector const &b)
{
    long n = 0, c = 0;
    if (a.x != b.x) { ++n; c = 1; }
    if (a.y != b.y) { ++n; c = 2; }
    if (a.z != b.z) { ++n; c = 3; }
    return n == 1 ? c : 0;
}

long DifferingComponent(tr2Vector const &a, tr2Vector const &b)
{
    long n = 0, c = 0;
    if (a.x != b.x) { ++n; c = 1; }
    if (a.y != b.y) { ++n; c = 2; }
    return n == 1 ? c : 0;
}

// The colour-space tag (with its force byte) travels only when the source has one, so
// a plain colour never clears a tag once set.
void AssignColour(trManRgb &to, trManRgb const &from)
{
    to.r = from.r;
    to.g = from.g;
    to.b = from.b;
    if (from.ColourSpace != 0) {
        to.ColourSpace = from.ColourSpace;
        to.Force = from.Force;
    }
}

// The common write of the plain value types.
template <class T, class Store, class Undo>
long WritePlain(trBase *node, long index, T const &value, trBase *who, bool force, long type, Store store,
                Undo undo)
{
    trParamRecord *r = Checked(node, "SetParam: ", index, type, type);
    if (!r)
        return 0;
    T &stored = *static_cast<T *>(r->storage);
    bool const equal = stored == value;
    if (!force && equal)
        return 0;
    node->AcquireWrite(index, who);
    if (!equal) {
        undo(stored);
        store(stored, value);
    }
    if (r->notifyOnChange)
        node->CallParamChanged(index, who, false);
    return 1;
}

template <class T>
void StoreCopy(T &to, T const &from)
{
    to = from;
}

// Reads a value parameter at a frame and puts the stored value back.
template <class T>
long ReadAtFrame(trBase *node, long index, T &value, trBase *who, double *frame)
{
    if (!frame)
        return node->GetParam(index, value, who);
    T old{};
    if (!node->GetParam(index, old, who))
        return 0;
    node->UpdateParamFromAnim(index, *frame);
    node->GetParam(index, value, who);
    node->SetParam(index, old, trWhoSystem, true);
    return 1;
}

// A name clashes with a child of the node itself (other than the node), or with what
// the parent sees in scope.
bool NameClashes(trBase *node, trString const &text)
{
    for (long i = 0, n = node->NumChildren(); i < n; ++i) {
        trBase *c = node->Child(i);
        if (c != node && c->name == text)
            return true;
    }
    trBase *parent = node->Parent();
    return parent && parent->NodeInScope(text, node, nullptr) != nullptr;
}

// The number n that "base" + n printed with "%02d" would carry in a child of this node's
// scope, or 0 when the name doesn't have that form.
long NumberAfterBase(trString const &childName, trString const &base)
{
    if (childName.length < base.length + 2 || childName.length > base.length + 18 ||
        std::memcmp(childName.chars, base.chars, size_t(base.length)) != 0)
        return 0;
    char const *digits = childName.chars + base.length;
    // "%02d" prints two digits below 100 and no leading zero from 100 on.
    if (childName.length - base.length > 2 && digits[0] == '0')
        return 0;
    long n = 0;
    for (char const *c = digits; *c; ++c) {
        if (*c < '0' || *c > '9')
            return 0;
        n = n * 10 + (*c - '0');
    }
    return n;
}

// The first n from 1 for which "base" + n doesn't clash. Gives what trying 1, 2, 3 ...
// against NameClashes gives, in one pass over the scope instead of one pass a number.
long FirstFreeNumber(trBase *node, trString const &base)
{
    long scopeSize = node->NumChildren();
    for (trBase *level = node->Parent(); level; level = level->Parent())
        scopeSize += level->NumChildren();
    // Only numbers up to scopeSize + 1 can be the answer.
    std::vector<char> taken(size_t(scopeSize + 2), 0);
    auto mark = [&](long n) {
        if (n > 0 && n <= scopeSize + 1)
            taken[size_t(n)] = 1;
    };
    for (long i = 0, count = node->NumChildren(); i < count; ++i) {
        trBase *c = node->Child(i);
        if (c != node)
            mark(NumberAfterBase(c->name, base));
    }
    // At each level above, only the first child of a name counts, and it clashes unless
    // it is the node itself.
    std::vector<char> seen;
    for (trBase *level = node->Parent(); level; level = level->Parent()) {
        seen.assign(taken.size(), 0);
        for (long i = 0, count = level->NumChildren(); i < count; ++i) {
            trBase *c = level->Child(i);
            long n = NumberAfterBase(c->name, base);
            if (n <= 0 || n > scopeSize + 1 || seen[size_t(n)])
                continue;
            seen[size_t(n)] = 1;
            if (c != node)
                taken[size_t(n)] = 1;
        }
    }
    long n = 1;
    while (taken[size_t(n)])
        ++n;
    return n;
}

trString MakeUnique(trBase *node, trString text)
{
    if (text.length == 0)
        text += "_1";
    while (NameClashes(node, text))
        text += "_1";
    return text;
}

trString CircularText(trBase const *target, trBase const *owner, long index)
{
    return target->name + " couldn't be connected to the " + owner->ParamDisplayName(index) + " input of " +
           owner->name + " because this would cause a circular path in the node network.";
}

} // namespace

// ---------------------------------------------------------------------------------
// trParamReport

void trParamReport::OnObjectParamChanged(trBase *, long, trBase *)
{
}

void trParamReport::OnObjectParamAnimChanged(trBase *, long, trBase *)
{
}

void trParamReport::OnObjectDestroy(trBase *)
{
}

// ---------------------------------------------------------------------------------
// trNetwork

trNetwork::trNetwork()
{
}

trNetwork::~trNetwork()
{
    for (long i = 0; i < count; ++i)
        trDestroyObject(children[i]);
}

void *trNetwork::operator new(std::size_t size) noexcept
{
    void *p = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return p == MAP_FAILED ? nullptr : p;
}

void trNetwork::operator delete(void *p) noexcept
{
    if (p)
        munmap(p, sizeof(trNetwork));
}

void trNetwork::RemoveChild(long i)
{
    if (i < 0 || i >= count)
        return;
    children[i] = children[count - 1];
    children[--count] = nullptr;
}

// ---------------------------------------------------------------------------------
// Construction and end

trBase::trBase() : d(new trBasePrivate)
{
    Gui(trGuiNameStart);
    Param(name, "name", trString());
    Gui(trGuiNameEnd);
    Gui(trGuiGroupStart);
    d->params[Param(d->guiUseNodePos, "gui_use_node_pos", 0)]->notifyOnChange = 0;
    d->params[Param(d->guiNodePos, "gui_node_pos", trVector(0, 0, 0))]->notifyOnChange = 0;
    d->params[Param(d->guiGroup, "gui_group", trString())]->notifyOnChange = 0;
    Gui(trGuiGroupEnd);
}

trBase::~trBase()
{
    SendAMessage(trMsgNodeDestructor, this);
    if (d->paramReport)
        d->paramReport->OnObjectDestroy(this);
    if (d->parent)
        d->parent->OnChildStateChanged(this, trString("Destructor"));
    delete d->children;
    d->children = nullptr;
    for (trBase *b : d->bundledNodes)
        b->d->bundledWith = nullptr;
    d->bundledNodes.clear();
    if (d->bundledWith) {
        d->bundledWith->d->bundledNodes.remove(this);
        d->bundledWith = nullptr;
    }
    for (trParamRecord *r : d->params) {
        delete[] r->name;
        trDestroyParamAnim(r->anim);
        delete r;
    }
    d->params.clear();
    for (trString *tab : d->guiTabs)
        delete tab;
    delete d->guiActions;
    delete d;
}

void trBase::PreDestroy()
{
    if (d->parent)
        d->parent->PreChildStateChange(this, trString("PreDestroy()"));
    trDestructionNotifier::PreDestroy();
    SendAMessage(trMsgNodePreDestroy, this);
    long const n = d->numOutputs;
    for (long k = 0; k < n && d->numOutputs > 0; ++k) {
        trBase *node = d->outputNodes[0];
        long const param = d->outputParams[0];
        node->SetParam(param, trString(), this);
        // The write detaches the pair; should a link fail to, drop it here so that no
        // pointer to this node outlives it.
        if (d->numOutputs > 0 && d->outputNodes[0] == node && d->outputParams[0] == param)
            DetachOutput(node, param);
    }
    for (long i = 0; i < long(d->params.size()); ++i)
        if (d->params[i]->type == trParamFile)
            SetParam(i, trString(), this);
}

long trBase::Init(trBase *parent, unsigned char addToParent)
{
    d->parent = parent;
    if (addToParent && parent) {
        if (!parent->d->children) {
            parent->d->children = new trNetwork;
            if (!parent->d->children) {
                trError("trBase::AddChild: Unable to allocate child list!");
                return 0;
            }
        }
        // The table is fixed: refuse rather than write past its end.
        if (parent->d->children->Count() >= trNetwork::kCapacity) {
            trError("trBase::AddChild: Too many children! A node can have at most 65536.");
            return 0;
        }
        parent->d->children->AddChild(this);
    }
    if (!addToParent)
        d->mayAffectPreviews = 0;
    return 1;
}

// ---------------------------------------------------------------------------------
// Virtual hooks with base behaviour

long trBase::OnCreate()
{
    return 1;
}

long trBase::OnFirstCreate()
{
    return 1;
}

long trBase::OnUserCreate(unsigned char)
{
    return 1;
}

long trBase::OnUserDestroy()
{
    return 1;
}

bool trBase::CanUserDestroy()
{
    return true;
}

void trBase::PreChildParamChange(trBase *child, long index, trBase *who)
{
    if (d->parent)
        d->parent->PreChildParamChange(child, index, who);
}

void trBase::PreChildStateChange(trBase *child, trString const &state)
{
    if (d->parent)
        d->parent->PreChildStateChange(child, state);
}

long trBase::OnChildProgress(trBase *child, unsigned long &id, trString const &text, float a, float b,
                             unsigned char mayAbort)
{
    if (d->parent)
        return d->parent->OnChildProgress(child, id, text, a, b, mayAbort);
    return 1;
}

void trBase::OnParamChanged(long index, trBase *who)
{
    // A handler may change the lists: work on copies.
    std::vector<trBase *> const nodes = d->outputNodes;
    for (trBase *out : nodes)
        out->OnDependencyParamChanged(this, index, this, who);
    if (d->parent)
        d->parent->OnChildParamChanged(this, index, who);
}

void trBase::OnGuiParamChanged(long index, trBase *who)
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->storage == &name) {
        // Renamed: rewrite every link that points here.
        std::vector<trBase *> const nodes = d->outputNodes;
        std::vector<long> const params = d->outputParams;
        for (size_t i = 0; i < nodes.size(); ++i) {
            trBase *n = nodes[i];
            bool const near = n == d->parent || n->Parent() == d->parent;
            n->SetParam(params[i], near ? trString(name) : Path() + name, this);
        }
    }
    if (d->parent)
        d->parent->OnChildGuiParamChanged(this, index, who);
}

void trBase::OnDependencyParamChanged(trBase *source, long index, trBase *, trBase *who)
{
    // Runs down the whole network on every change: no heap for the common case.
    constexpr long kFixed = 16;
    long const n = long(d->outputNodes.size());
    trBase *fixed[kFixed];
    std::vector<trBase *> heap;
    trBase **nodes = fixed;
    if (n > kFixed) {
        heap = d->outputNodes;
        nodes = heap.data();
    } else {
        std::copy(d->outputNodes.begin(), d->outputNodes.end(), fixed);
    }
    for (long i = 0; i < n; ++i)
        nodes[i]->OnDependencyParamChanged(source, index, this, who);
}

void trBase::OnChildParamChanged(trBase *child, long index, trBase *who)
{
    if (d->parent)
        d->parent->OnChildParamChanged(child, index, who);
}

void trBase::OnChildGuiParamChanged(trBase *child, long index, trBase *who)
{
    if (d->parent)
        d->parent->OnChildGuiParamChanged(child, index, who);
}

void trBase::OnChildStateChanged(trBase *child, trString const &state)
{
    if (d->parent)
        d->parent->OnChildStateChanged(child, state);
}

void *trBase::PreviewHandler()
{
    return nullptr;
}

long trBase::Request_double_from_vector(double &, trVector const &, long)
{
    return 0;
}

void *trBase::RequestMember(char const *)
{
    return nullptr;
}

long trBase::WriteXMLCustomData(trString, trString &)
{
    return 1;
}

void trBase::EnteredXMLCustomData()
{
}

void trBase::HandleXMLCustomElement(trString const &, char const **)
{
}

void trBase::HandleXMLCustomElementClosed(trString const &)
{
}

void trBase::HandleXMLCustomCharacterData(trString const &)
{
}

void trBase::ExitedXMLCustomData()
{
}

// ---------------------------------------------------------------------------------
// Declaration

long trBase::DeclareParam(long type, void *storage, char const *paramName, void *hint)
{
    trParamRecord *r = new trParamRecord;
    long const index = long(d->params.size());
    d->params.push_back(r);
    r->type = type;
    r->storage = storage;
    char const *text = Safe(paramName);
    size_t const len = std::strlen(text);
    r->name = new char[len + 1];
    std::memcpy(r->name, text, len + 1);
    r->displayName = trEmptySentinel;
    if (!hint) {
        if (type == trParamInt)
            hint = &trDefaultIntHint;
        else if (type == trParamDouble || type == trParamFloat)
            hint = &trDefaultDoubleHint;
    }
    r->hint = hint;
    if (type >= trParamPushButton)
        r->notifyOnChange = 0;
    if (!d->paramGroupStack.empty())
        AddParamToParamGroup(index, d->paramGroupStack.back());
    return index;
}

long trBase::Param(long &value, char const *paramName, long defaultValue, trIntHint *hint)
{
    long const i = DeclareParam(trParamInt, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(double &value, char const *paramName, double defaultValue, trDoubleHint *hint)
{
    long const i = DeclareParam(trParamDouble, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(float &value, char const *paramName, float defaultValue, trDoubleHint *hint)
{
    long const i = DeclareParam(trParamFloat, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(trVector &value, char const *paramName, trVector const &defaultValue, trVectorHint *hint)
{
    long const i = DeclareParam(trParamVector, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(tr2Vector &value, char const *paramName, tr2Vector const &defaultValue, tr2VectorHint *hint)
{
    long const i = DeclareParam(trParam2Vector, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(trManRgb &value, char const *paramName, trManRgb const &defaultValue, trFColHint *hint)
{
    long const i = DeclareParam(trParamColour, &value, paramName, hint);
    AssignColour(value, defaultValue);
    return i;
}

long trBase::Param(trString &value, char const *paramName, trString const &defaultValue, trStringHint *hint)
{
    long const i = DeclareParam(trParamString, &value, paramName, hint);
    value = defaultValue;
    if (hint && (hint->GetStyleFlags() & 5))
        d->params[i]->shouldBeSaved = 0;
    return i;
}

long trBase::Param(trPtr &value, char const *paramName, trPtr const &defaultValue, trPtrHint *hint)
{
    long const i = DeclareParam(trParamPtr, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(unsigned char &value, char const *paramName, unsigned char defaultValue, trBoolHint *hint)
{
    long const i = DeclareParam(trParamBool, &value, paramName, hint);
    value = defaultValue;
    return i;
}

long trBase::Param(trFile &value, char const *paramName, trString const &defaultValue, trLinkHint *hint)
{
    long const i = DeclareParam(trParamFile, &value, paramName, hint);
    value.SetOwner(this, i);
    value.SetFileString(defaultValue);
    return i;
}

void trBase::Gui(trGuiHint hint)
{
    DeclareParam(trParamGuiHintBase + long(hint), nullptr, "", nullptr);
}

void trBase::Gui(trGuiHint hint, int count)
{
    for (int i = 0; i < count; ++i)
        Gui(hint);
}

void trBase::PushButton(trGuiPushButton &button, char const *buttonName)
{
    DeclareParam(trParamPushButton, &button, buttonName, nullptr);
    button.SetOwnerAndName(this, trString(buttonName));
}

void trBase::GuiTab(char const *title, char const *tabName)
{
    trString *tab = new trString(title);
    d->guiTabs.push_back(tab);
    DeclareParam(trParamGuiTab, tab, tabName, nullptr);
}

void trBase::DeclareTrue(trString const &keyword)
{
    d->trueKeywords.push_back(keyword);
}

bool trBase::IsTrue(trString const &keyword) const
{
    if (keyword.length == 0)
        return true;
    return std::find(d->trueKeywords.begin(), d->trueKeywords.end(), keyword) != d->trueKeywords.end();
}

void trBase::ParamGroupStart(int group)
{
    d->paramGroupStack.push_back(group);
}

void trBase::ParamGroupEnd()
{
    if (!d->paramGroupStack.empty())
        d->paramGroupStack.pop_back();
}

long trBase::AddParamToParamGroup(long index, int group)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r || r->type < trParamInt || r->type > trParamReserved11)
        return 0;
    d->paramGroups[group].insert(index);
    return 1;
}

long trBase::AddParamToParamGroup(char const *paramName, int group)
{
    long index = 0;
    if (!FindParam(index, paramName)) {
        WarnUnknownParam(this, "AddParamToParamGroup: ", paramName);
        return 0;
    }
    return AddParamToParamGroup(index, group);
}

std::set<long> trBase::GetParamsInParamGroup(int group) const
{
    auto it = d->paramGroups.find(group);
    return it == d->paramGroups.end() ? std::set<long>() : it->second;
}

bool trBase::IsParamInParamGroup(long index, int group) const
{
    auto it = d->paramGroups.find(group);
    return it != d->paramGroups.end() && it->second.count(index) != 0;
}

// ---------------------------------------------------------------------------------
// Tree

trBase *trBase::Parent() const
{
    return d->parent;
}

bool trBase::IsRoot() const
{
    return d->parent == nullptr;
}

trBase *trBase::Root()
{
    trBase *n = this;
    while (n->d->parent)
        n = n->d->parent;
    return n;
}

long trBase::NumChildren() const
{
    return d->children ? d->children->Count() : 0;
}

trBase *trBase::Child(long index) const
{
    if (!d->children || index < 0 || index >= d->children->Count())
        return nullptr;
    return d->children->Child(index);
}

trBase *trBase::Child(trString const &childName) const
{
    for (long i = 0, n = NumChildren(); i < n; ++i) {
        trBase *c = d->children->Child(i);
        if (c->name == childName)
            return c;
    }
    return nullptr;
}

trBase *trBase::CreateChild(trString const &className)
{
    return trCreateObject(className, this, 1);
}

trBase *trBase::CreateChildLean(trString const &className)
{
    return trCreateObjectLean(className, this, 1);
}

long trBase::DestroyChild(long index)
{
    trBase *child = Child(index);
    if (!child)
        return 0;
    long const result = trDestroyObject(child);
    if (result) {
        // The slot is looked up again: a handler may have moved children meanwhile.
        for (long i = 0, n = NumChildren(); i < n; ++i) {
            if (d->children->Child(i) == child) {
                d->children->RemoveChild(i);
                break;
            }
        }
    }
    return result;
}

long trBase::DestroyChild(trString const &childName)
{
    for (long i = 0, n = NumChildren(); i < n; ++i)
        if (d->children->Child(i)->name == childName)
            return DestroyChild(i);
    return 0;
}

trBase *trBase::NextInTree()
{
    if (NumChildren() > 0)
        return Child(0);
    for (trBase *n = this; n; n = n->d->parent) {
        if (trBase *s = n->NextSibling())
            return s;
    }
    return nullptr;
}

trBase *trBase::NextSibling()
{
    return d->parent ? d->parent->NextSiblingOfChild(this) : nullptr;
}

trBase *trBase::NextSiblingOfChild(trBase const *child)
{
    for (long i = 0, n = NumChildren(); i < n; ++i)
        if (d->children->Child(i) == child)
            return i + 1 < n ? d->children->Child(i + 1) : nullptr;
    return nullptr;
}

bool trBase::IsAnAncestorOf(trBase const *node) const
{
    if (!node)
        return false;
    for (trBase const *n = node->d->parent; n; n = n->d->parent)
        if (n == this)
            return true;
    return false;
}

bool trBase::IsDescendedFrom(trBase const *node) const
{
    return node && node->IsAnAncestorOf(this);
}

void trBase::SetName(trString text)
{
    if (text == name)
        return;
    if (text.EndsWith(trString("%02d"), false)) {
        trString const base = text.SubString(0, int(text.length - 4));
        char number[32];
        std::snprintf(number, sizeof number, "%02ld", FirstFreeNumber(this, base));
        text = base + number;
    } else {
        text = MakeUnique(this, text);
    }
    name = text;
    SendAMessage(trMsgNodeRenamed, this);
}

trString trBase::Path() const
{
    if (!d->parent)
        return trString();
    if (!d->parent->d->parent)
        return trString("/");
    return d->parent->Path() + d->parent->name + "/";
}

trString trBase::NameAndPath() const
{
    return Path() + name;
}

trBase *trBase::NodeByPath(trString const &path)
{
    if (path.length == 0)
        return nullptr;
    char const *slash = std::strrchr(path.chars, '/');
    if (!slash) {
        if (trBase *c = Child(path))
            return c;
        return d->parent ? d->parent->NodeInScope(path, nullptr, nullptr) : nullptr;
    }
    long const dirLength = long(slash - path.chars) + 1;
    trString const leaf(slash + 1);
    if (dirLength == 1)
        return Root()->Child(leaf);
    trBase *dir = NodeByPath(path.SubString(0, int(dirLength - 1)));
    return dir ? dir->Child(leaf) : nullptr;
}

trBase *trBase::NodeInScope(trString const &nodeName, trBase const *exclude1, trBase const *exclude2)
{
    if (nodeName.length == 0)
        return nullptr;
    for (trBase *n = this; n; n = n->d->parent) {
        trBase *c = n->Child(nodeName);
        if (c && c != exclude1 && c != exclude2)
            return c;
    }
    return nullptr;
}

// The whole tree of this node, its root included.
bool trBase::NameExistsInTree(trString const &nodeName, trBase const *exclude1, trBase const *exclude2)
{
    for (trBase *n = Root(); n; n = n->NextInTree())
        if (n != exclude1 && n != exclude2 && n->name == nodeName)
            return true;
    return false;
}

bool trBase::ClassExistsInTree(long classId, trBase const *exclude1, trBase const *exclude2)
{
    if (classId < 0)
        return false;
    for (trBase *n = Root(); n; n = n->NextInTree())
        if (n != exclude1 && n != exclude2 && n->d->registeredClassId == classId)
            return true;
    return false;
}

bool trBase::ClassExistsInTree(trString const &className, trBase const *exclude1, trBase const *exclude2)
{
    long id = -1;
    if (!trClasses.FindClassIdFromClassName(id, className))
        return false;
    return ClassExistsInTree(id, exclude1, exclude2);
}

// ---------------------------------------------------------------------------------
// Writing values

long trBase::SetParam(long index, long value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParamInt, StoreCopy<long>, [&](long const &old) {
        if (trUndoNodeParamInt && trUndoIsIdle())
            trUndoNodeParamInt(this, index, old, who);
    });
}

long trBase::SetParam(long index, int value, trBase *who, bool force)
{
    return SetParam(index, long(value), who, force);
}

long trBase::SetParam(long index, double value, trBase *who, bool force)
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->type == trParamFloat)
        return SetParam(index, float(value), who, force);
    return WritePlain(this, index, value, who, force, trParamDouble, StoreCopy<double>, [&](double const &old) {
        if (trUndoNodeParamDouble && trUndoIsIdle())
            trUndoNodeParamDouble(this, index, old, who);
    });
}

long trBase::SetParam(long index, float value, trBase *who, bool force)
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->type == trParamDouble)
        return SetParam(index, double(value), who, force);
    if (r && r->type == trParamColour) {
        // A float on a colour warns and still sets a grey.
        WarnWrongType(this, "SetParam: ", index, trParamFloat);
        return SetParam(index, trManRgb(0, value, value, value), who, force);
    }
    return WritePlain(this, index, value, who, force, trParamFloat, StoreCopy<float>, [&](float const &old) {
        if (trUndoNodeParamDouble && trUndoIsIdle())
            trUndoNodeParamDouble(this, index, double(old), who);
    });
}

long trBase::SetParam(long index, trVector const &value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParamVector, StoreCopy<trVector>,
                      [&](trVector const &old) {
                          if (trUndoNodeParamVector && trUndoIsIdle())
                              trUndoNodeParamVector(this, index, old, DifferingComponent(old, value), who);
                      });
}

long trBase::SetParam(long index, tr2Vector const &value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParam2Vector, StoreCopy<tr2Vector>,
                      [&](tr2Vector const &old) {
                          if (trUndoNodeParam2Vector && trUndoIsIdle())
                              trUndoNodeParam2Vector(this, index, old, DifferingComponent(old, value), who);
                      });
}

long trBase::SetParam(long index, trManRgb const &value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParamColour, AssignColour, [&](trManRgb const &old) {
        if (trUndoNodeParamFCol && trUndoIsIdle())
            trUndoNodeParamFCol(this, index, old, who);
    });
}

long trBase::SetParam(long index, trPtr const &value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParamPtr, StoreCopy<trPtr>, [&](trPtr const &old) {
        if (trUndoNodeParamPtr && trUndoIsIdle())
            trUndoNodeParamPtr(this, index, old, who);
    });
}

long trBase::SetParam(long index, unsigned char value, trBase *who, bool force)
{
    return WritePlain(this, index, value, who, force, trParamBool, StoreCopy<unsigned char>,
                      [&](unsigned char const &old) {
                          if (trUndoNodeParamBool && trUndoIsIdle())
                              trUndoNodeParamBool(this, index, old, who);
                      });
}

long trBase::SetParam(long index, bool value, trBase *who, bool force)
{
    return SetParam(index, static_cast<unsigned char>(value ? 1 : 0), who, force);
}

long trBase::SetParam(long index, trString const &value, trBase *who)
{
    trParamRecord *r = ParamRecord(index);
    if (!r || (r->type != trParamString && r->type != trParamFile)) {
        WarnWrongType(this, "SetParam: ", index, trParamString);
        return 0;
    }
    trString text(value);
    bool const isName = r->storage == &name;
    if (isName)
        text = MakeUnique(this, text);

    if (r->type == trParamString) {
        trString &stored = *static_cast<trString *>(r->storage);
        AcquireWrite(index, who);
        if (stored != text) {
            trString const old = stored;
            stored = text;
            if (trUndoNodeParamString && trUndoIsIdle())
                trUndoNodeParamString(this, index, old, who);
            // Only a real rename is announced.
            if (isName)
                SendAMessage(trMsgNodeRenamed, this);
        }
        if (r->notifyOnChange)
            CallParamChanged(index, who, false);
        return 1;
    }

    trFile &link = *static_cast<trFile *>(r->storage);
    trString const old = link.FileStringR();
    bool changed;
    if (link.IsNodeLink()) {
        trBase *target = NodeByPath(text);
        if (target && target->IsCircularLink(this)) {
            trInfoMsg(CircularText(target, this, index));
            return 0;
        }
        // A new text that resolves to nothing yet counts as a change too: a link read
        // before its target exists notifies at the read and again when it resolves.
        changed = target != link.LinkedNode(true) || (!target && text != old);
    } else {
        changed = text != old;
    }
    if (changed)
        AcquireWrite(index, who);
    if (text != old && trUndoNodeParamString && trUndoIsIdle())
        trUndoNodeParamString(this, index, old, who);
    link.SetLinkString(text);
    if (r->notifyOnChange)
        CallParamChanged(index, who, !changed);
    return 1;
}

long trBase::SetParam(long index, char const *value, trBase *who)
{
    return SetParam(index, trString(value), who);
}

long trBase::SetParam(long index, trFile const &value, trBase *who)
{
    trParamRecord *r = Checked(this, "SetParam: ", index, trParamFile, trParamFile);
    if (!r)
        return 0;
    trFile &stored = *static_cast<trFile *>(r->storage);
    trFile copy(value);
    copy.SetOwner(this, index);
    if (copy.IsNodeLink()) {
        trBase *target = copy.LinkedNode(true);
        if (target && target->IsCircularLink(this)) {
            trInfoMsg(CircularText(target, this, index));
            return 0;
        }
    }
    AcquireWrite(index, who);
    if (stored.FileStringR() != copy.FileStringR() && trUndoNodeParamFile && trUndoIsIdle())
        trUndoNodeParamFile(this, index, stored, who);
    stored = copy;
    stored.SetHasChanged(true);
    if (r->notifyOnChange)
        CallParamChanged(index, who, false);
    return 1;
}

// By name: look up, then as by index.
#define TR_SET_BY_NAME(Type)                                                                       \
    long trBase::SetParam(char const *paramName, Type value, trBase *who, bool force)            \
    {                                                                                              \
        long index = 0;                                                                            \
        if (!FindParam(index, paramName)) {                                                        \
            WarnUnknownParam(this, "SetParam: ", paramName);                                       \
            return 0;                                                                              \
        }                                                                                          \
        return SetParam(index, value, who, force);                                                 \
    }

TR_SET_BY_NAME(long)
TR_SET_BY_NAME(int)
TR_SET_BY_NAME(double)
TR_SET_BY_NAME(float)
TR_SET_BY_NAME(trVector const &)
TR_SET_BY_NAME(tr2Vector const &)
TR_SET_BY_NAME(trManRgb const &)
TR_SET_BY_NAME(trPtr const &)
TR_SET_BY_NAME(unsigned char)
TR_SET_BY_NAME(bool)
#undef TR_SET_BY_NAME

#define TR_SET_BY_NAME_NO_FORCE(Type)                                                              \
    long trBase::SetParam(char const *paramName, Type value, trBase *who)                        \
    {                                                                                              \
        long index = 0;                                                                            \
        if (!FindParam(index, paramName)) {                                                        \
            WarnUnknownParam(this, "SetParam: ", paramName);                                       \
            return 0;                                                                              \
        }                                                                                          \
        return SetParam(index, value, who);                                                        \
    }

TR_SET_BY_NAME_NO_FORCE(trString const &)
TR_SET_BY_NAME_NO_FORCE(char const *)
TR_SET_BY_NAME_NO_FORCE(trFile const &)
#undef TR_SET_BY_NAME_NO_FORCE

// ---------------------------------------------------------------------------------
// Reading values

namespace {

template <class T>
long ReadPlain(trBase const *node, long index, T &value, long type)
{
    trParamRecord const *r = Checked(node, "GetParam: ", index, type, type);
    if (!r)
        return 0;
    value = *static_cast<T const *>(r->storage);
    return 1;
}

} // namespace

long trBase::GetParam(long index, long &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParamInt);
}

// Reading a real into the other precision converts, as writing does.
long trBase::GetParam(long index, double &value, trBase const *) const
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->type == trParamFloat) {
        value = double(*static_cast<float const *>(r->storage));
        return 1;
    }
    return ReadPlain(this, index, value, trParamDouble);
}

long trBase::GetParam(long index, float &value, trBase const *) const
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->type == trParamDouble) {
        value = float(*static_cast<double const *>(r->storage));
        return 1;
    }
    return ReadPlain(this, index, value, trParamFloat);
}

long trBase::GetParam(long index, trVector &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParamVector);
}

long trBase::GetParam(long index, tr2Vector &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParam2Vector);
}

long trBase::GetParam(long index, trManRgb &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParamColour);
}

// A link reads as its text.
long trBase::GetParam(long index, trString &value, trBase const *) const
{
    trParamRecord const *r = ParamRecord(index);
    if (r && r->type == trParamFile) {
        value = static_cast<trFile const *>(r->storage)->FileStringR();
        return 1;
    }
    return ReadPlain(this, index, value, trParamString);
}

long trBase::GetParam(long index, trPtr &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParamPtr);
}

long trBase::GetParam(long index, unsigned char &value, trBase const *) const
{
    return ReadPlain(this, index, value, trParamBool);
}

long trBase::GetParam(long index, trFile &value, trBase const *) const
{
    trParamRecord const *r = Checked(this, "GetParam: ", index, trParamFile, trParamFile);
    if (!r)
        return 0;
    value = *static_cast<trFile const *>(r->storage);
    return 1;
}

#define TR_GET_BY_NAME(Type)                                                                       \
    long trBase::GetParam(char const *paramName, Type &value, trBase const *who) const          \
    {                                                                                              \
        long index = 0;                                                                            \
        if (!FindParam(index, paramName)) {                                                        \
            WarnUnknownParam(this, "GetParam: ", paramName);                                       \
            return 0;                                                                              \
        }                                                                                          \
        return GetParam(index, value, who);                                                        \
    }

TR_GET_BY_NAME(long)
TR_GET_BY_NAME(double)
TR_GET_BY_NAME(float)
TR_GET_BY_NAME(trVector)
TR_GET_BY_NAME(tr2Vector)
TR_GET_BY_NAME(trManRgb)
TR_GET_BY_NAME(trString)
TR_GET_BY_NAME(trPtr)
TR_GET_BY_NAME(unsigned char)
TR_GET_BY_NAME(trFile)
#undef TR_GET_BY_NAME

long trBase::GetParam(long index, long &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, double &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, float &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, trVector &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, tr2Vector &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, trManRgb &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetParam(long index, unsigned char &value, trBase *who, double *frame)
{
    return ReadAtFrame(this, index, value, who, frame);
}

long trBase::GetWidget(long index, void **widget, trBase const *) const
{
    trParamRecord const *r = ParamRecord(index);
    if (!r || r->type < trParamPushButton) {
        trWarning(trString("GetParam: Not a widget, parameter: \"") + (r ? r->name : "") + "\" in class: " +
                  RegisteredClassName());
        return 0;
    }
    if (widget)
        *widget = r->storage;
    return 1;
}

// ---------------------------------------------------------------------------------
// Text forms

long trBase::SetParamFromString(long index, trString const &text, trBase *who)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r) {
        trError("SetParamFromString: Bad parameter type!");
        return 0;
    }
    char const *s = text.chars;
    trString const paramName(r->name);
    auto fail = [&](char const *what) {
        trOutError(text + ": " + what + paramName);
        return 0L;
    };
    switch (r->type) {
    case trParamInt: {
        long v = 0;
        if (std::sscanf(s, "%ld", &v) != 1)
            return fail("Expected 1x integer for parameter ");
        return SetParam(index, v, who, true);
    }
    case trParamDouble: {
        double v = 0;
        if (std::sscanf(s, "%lf", &v) != 1)
            return fail("Expected 1x real for parameter ");
        return SetParam(index, v, who, true);
    }
    case trParamVector: {
        trVector v;
        if (std::sscanf(s, "%lf %lf %lf", &v.x, &v.y, &v.z) != 3)
            return fail("Expected 3x real for parameter ");
        return SetParam(index, v, who, true);
    }
    case trParamColour: {
        float c[3] = {0, 0, 0};
        if (std::sscanf(s, "%f %f %f", &c[0], &c[1], &c[2]) != 3)
            return fail("Expected 3x real for parameter ");
        return SetParam(index, trManRgb(0, c[0], c[1], c[2]), who, true);
    }
    case trParamString:
    case trParamFile:
        return SetParam(index, text, who);
    case trParamPtr:
        trError("SetParamFromString: Unsupported parameter type: pointer!");
        return 0;
    case trParamBool: {
        int v = 0;
        if (std::sscanf(s, "%d", &v) != 1)
            return fail("Expected 0 or 1 for parameter ");
        return SetParam(index, static_cast<unsigned char>(v & 0xff), who, true);
    }
    case trParam2Vector: {
        tr2Vector v;
        if (std::sscanf(s, "%lf %lf", &v.x, &v.y) != 2)
            return fail("Expected 2x real for parameter ");
        return SetParam(index, v, who, true);
    }
    case trParamFloat: {
        float v = 0;
        if (std::sscanf(s, "%f", &v) != 1)
            return fail("Expected 1x real for parameter ");
        return SetParam(index, v, who, true);
    }
    case trParamReserved11: {
        float c[3] = {0, 0, 0};
        if (std::sscanf(s, "%f %f %f", &c[0], &c[1], &c[2]) != 3)
            return fail("Expected 3x real for parameter ");
        return SetParam(index, trVector(c[0], c[1], c[2]), who, true);
    }
    case trParamPushButton:
        trError("SetParamFromString: Unsupported parameter type: widget!");
        return 0;
    default:
        trError("SetParamFromString: Bad parameter type!");
        return 0;
    }
}

long trBase::SetParamFromString(char const *paramName, trString const &text, trBase *who)
{
    long index = 0;
    if (!FindParam(index, paramName)) {
        WarnUnknownParam(this, "SetParamFromString: ", paramName);
        return 0;
    }
    return SetParamFromString(index, text, who);
}

long trBase::GetStringFromParam(long index, trString &text, trBase *)
{
    trParamRecord const *r = ParamRecord(index);
    text = trString();
    if (!r) {
        trError("GetStringFromParam: Bad parameter type!");
        return 0;
    }
    char buffer[128];
    void const *p = r->storage;
    switch (r->type) {
    case trParamInt:
        std::snprintf(buffer, sizeof buffer, "%ld", *static_cast<long const *>(p));
        break;
    case trParamDouble:
        std::snprintf(buffer, sizeof buffer, "%.10g", *static_cast<double const *>(p));
        break;
    case trParamVector: {
        trVector const &v = *static_cast<trVector const *>(p);
        std::snprintf(buffer, sizeof buffer, "%.10g %.10g %.10g", v.x, v.y, v.z);
        break;
    }
    case trParamColour: {
        trManRgb const &c = *static_cast<trManRgb const *>(p);
        std::snprintf(buffer, sizeof buffer, "%.10g %.10g %.10g", double(c.r), double(c.g), double(c.b));
        break;
    }
    case trParamString:
        text = *static_cast<trString const *>(p);
        return 1;
    case trParamFile:
        text = static_cast<trFile const *>(p)->FileStringR();
        return 1;
    case trParamPtr:
        return 0;
    case trParamBool:
        std::snprintf(buffer, sizeof buffer, "%d", int(*static_cast<unsigned char const *>(p)));
        break;
    case trParam2Vector: {
        tr2Vector const &v = *static_cast<tr2Vector const *>(p);
        std::snprintf(buffer, sizeof buffer, "%.10g %.10g", v.x, v.y);
        break;
    }
    case trParamFloat:
        std::snprintf(buffer, sizeof buffer, "%.10g", double(*static_cast<float const *>(p)));
        break;
    default:
        if (r->type >= trParamPushButton)
            return 0;
        trError("GetStringFromParam: Bad parameter type!");
        return 0;
    }
    text = buffer;
    return 1;
}

// ---------------------------------------------------------------------------------
// Table inspection

bool trBase::FindParam(long &index, char const *paramName) const
{
    if (!paramName || !*paramName) {
        index = 0;
        return false;
    }
    for (size_t i = 0; i < d->params.size(); ++i) {
        if (std::strcmp(d->params[i]->name, paramName) == 0) {
            index = long(i);
            return true;
        }
    }
    return false;
}

namespace {

// The n-th link parameter for which `test` holds.
template <class Test>
bool FindNthLink(trBase const *node, long &index, int n, Test test)
{
    if (n < 0)
        return false;
    int seen = 0;
    for (long i = 0, count = node->NumParams(); i < count; ++i) {
        trParamRecord const *r = node->ParamRecord(i);
        if (r->type != trParamFile || !test(*static_cast<trFile const *>(r->storage)))
            continue;
        if (seen++ == n) {
            index = i;
            return true;
        }
    }
    return false;
}

} // namespace

bool trBase::FindParamByExternalInputIndex(long &index, int n) const
{
    return FindNthLink(this, index, n, [](trFile const &f) { return f.IsExternal(); });
}

bool trBase::FindParamByInternalInputIndex(long &index, int n) const
{
    return FindNthLink(this, index, n, [](trFile const &f) { return f.IsInternal(); });
}

bool trBase::FindParamByAnyInputIndex(long &index, int n) const
{
    return FindParamByExternalInputIndex(index, n) || FindParamByInternalInputIndex(index, n);
}

long trBase::NumParams() const
{
    return long(d->params.size());
}

long trBase::ParamType(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r ? r->type : -1;
}

bool trBase::IsParamStaticText(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    if (!r || index <= 0 || r->type != trParamString)
        return false;
    for (long i = index - 1; i >= 0 && d->params[i]->type >= trParamGuiHintBase; --i)
        if (d->params[i]->type == long(trParamGuiHintBase) + long(trGuiStaticText))
            return true;
    return false;
}

bool trBase::IsParamExternalLink(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r && r->type == trParamFile && static_cast<trFile const *>(r->storage)->IsExternal();
}

bool trBase::IsParamInternalLink(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r && r->type == trParamFile && static_cast<trFile const *>(r->storage)->IsInternal();
}

void *trBase::ParamPtr(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r ? r->storage : nullptr;
}

char const *trBase::ParamName(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r ? r->name : "";
}

trString trBase::ParamDisplayName(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    if (!r)
        return trString();
    if (r->displayName == trEmptySentinel)
        return trString(r->name).Humanized();
    return r->displayName;
}

void trBase::SetParamDisplayName(long index, trString const &displayName)
{
    if (trParamRecord *r = ParamRecord(index))
        r->displayName = displayName;
}

void *trBase::ParamHint(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r ? r->hint : nullptr;
}

bool trBase::GetParamShouldBeSaved(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r && r->shouldBeSaved;
}

void trBase::SetParamShouldBeSaved(long index, bool save)
{
    if (trParamRecord *r = ParamRecord(index))
        r->shouldBeSaved = save ? 1 : 0;
}

void trBase::SetParamGuiEnabled(long index, bool enabled)
{
    trParamRecord *r = ParamRecord(index);
    if (!r)
        return;
    r->guiEnabled = enabled ? 1 : 0;
    long which = index;
    SendAMessage(enabled ? trMsgParamGuiEnabled : trMsgParamGuiDisabled, &which);
}

void trBase::SetParamGuiEnabled(char const *paramName, bool enabled)
{
    long index = 0;
    if (!FindParam(index, paramName)) {
        WarnUnknownParam(this, "SetParamGuiEnabled: ", paramName);
        return;
    }
    SetParamGuiEnabled(index, enabled);
}

bool trBase::IsParamGuiEnabled(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r && r->guiEnabled;
}

void trBase::AddGuiAction(std::vector<trString> const &triggers, std::vector<trString> const &targets,
                          trGuiActionPreset const &preset)
{
    if (!d->guiActions)
        d->guiActions = new trGuiActionSet;
    d->guiActions->Add(triggers, targets, preset);
}

trParamRecord *trBase::ParamRecord(long index) const
{
    if (index < 0 || index >= long(d->params.size()))
        return nullptr;
    return d->params[index];
}

long trBase::NumParamComponentsOfType(long type)
{
    switch (type) {
    case trParamVector:
    case trParamColour:
    case trParamReserved11:
        return 3;
    case trParam2Vector:
    case trParamReserved10:
        return 2;
    default:
        return 1;
    }
}

long trBase::NumParamComponents(long const &index) const
{
    return NumParamComponentsOfType(ParamType(index));
}

void trBase::CallParamChanged(long index, trBase *who, bool suppress)
{
    trParamRecord const *r = ParamRecord(index);
    if (!r)
        return;
    if (!suppress) {
        bool const isGui = r->storage == &name || std::strncmp(r->name, "gui_", 4) == 0;
        if (isGui)
            OnGuiParamChanged(index, who);
        else
            OnParamChanged(index, who);
    }
    if (d->paramReport)
        d->paramReport->OnObjectParamChanged(this, index, who);
    if (d->guiActions)
        d->guiActions->OnParamChanged(this, trString(r->name));
}

// ---------------------------------------------------------------------------------
// Links and flow

void trBase::AttachOutput(trBase *node, long param)
{
    for (long i = 0; i < d->numOutputs; ++i)
        if (d->outputNodes[i] == node && d->outputParams[i] == param)
            return;
    d->outputNodes.push_back(node);
    d->outputParams.push_back(param);
    d->numOutputs = long(d->outputNodes.size());
}

void trBase::DetachOutput(trBase *node, long param)
{
    for (long i = 0; i < d->numOutputs; ++i) {
        if (d->outputNodes[i] == node && d->outputParams[i] == param) {
            d->outputNodes.erase(d->outputNodes.begin() + i);
            d->outputParams.erase(d->outputParams.begin() + i);
            break;
        }
    }
    d->numOutputs = long(d->outputNodes.size());
}

long trBase::NumOutputs() const
{
    return d->numOutputs;
}

trBase *trBase::OutputNode(int i) const
{
    return i >= 0 && i < d->numOutputs ? d->outputNodes[i] : nullptr;
}

long trBase::OutputParamIndex(int i) const
{
    return i >= 0 && i < d->numOutputs ? d->outputParams[i] : -1;
}

bool trBase::IsLinkedTo(trBase const *node) const
{
    if (!node)
        return false;
    for (trBase const *out : d->outputNodes)
        if (out == node || out->IsLinkedTo(node))
            return true;
    return false;
}

// Through a link parameter of that name on `node`, directly or further down.
bool trBase::IsLinkedTo(trBase const *node, trString const &paramName) const
{
    if (!node)
        return false;
    for (long i = 0; i < d->numOutputs; ++i) {
        trBase const *out = d->outputNodes[i];
        if (out == node && paramName == out->ParamName(d->outputParams[i]))
            return true;
        if (out->IsLinkedTo(node, paramName))
            return true;
    }
    return false;
}

bool trBase::IsCircularLink(trBase const *other) const
{
    if (!other)
        return false;
    if (other == this || other->IsLinkedTo(this)) {
        trOutMsg("Node cycles!");
        return true;
    }
    return false;
}

trBase *trBase::LinkedNode(trString const &paramName) const
{
    long index = 0;
    if (!FindParam(index, paramName.chars) || d->params[index]->type != trParamFile)
        return nullptr;
    return static_cast<trFile const *>(d->params[index]->storage)->LinkedNode(true);
}

void trBase::TriggerAllNodeLinks()
{
    for (long i = 0; i < long(d->params.size()); ++i) {
        trParamRecord const *r = d->params[i];
        if (r->type != trParamFile)
            continue;
        trFile const *link = static_cast<trFile const *>(r->storage);
        if (link->IsNodeLink())
            SetParam(i, trString(link->FileStringR()), this);
    }
    for (long i = 0; i < NumChildren(); ++i)
        d->children->Child(i)->TriggerAllNodeLinks();
}

bool trBase::ExternalInputsInside() const
{
    return d->externalInputsInside != 0;
}

void trBase::SetExternalInputsInside(bool inside)
{
    d->externalInputsInside = inside ? 1 : 0;
}

trBase *trBase::GuiGroupNode() const
{
    return d->guiGroup.LinkedNode(true);
}

// ---------------------------------------------------------------------------------
// Miscellaneous

void trBase::SetBundledWith(trBase *node)
{
    if (d->bundledWith)
        d->bundledWith->d->bundledNodes.remove(this);
    d->bundledWith = node;
    if (node)
        node->d->bundledNodes.push_back(this);
}

trBase *trBase::GetBundledWith() const
{
    return d->bundledWith;
}

std::list<trBase *> const &trBase::GetBundledNodeList() const
{
    return d->bundledNodes;
}

void trBase::SetAbsoluteContentFilePathForChildren(trString const &path)
{
    d->contentPathForChildren = path;
    trOutMsg(trString("Content path for children of \"") + NameAndPath() + "\" set to \"" + path + "\"");
}

void trBase::SetOrphanedContentFilePath(trString const &path)
{
    d->orphanedContentPath = path;
}

trString trBase::AbsoluteContentFilePathForChildren() const
{
    if (d->contentPathForChildren.length != 0)
        return d->contentPathForChildren;
    if (d->parent)
        return d->parent->AbsoluteContentFilePathForChildren();
    return d->orphanedContentPath;
}

trString trBase::ContentFilePath() const
{
    return d->parent ? d->parent->AbsoluteContentFilePathForChildren() : d->orphanedContentPath;
}

void trBase::AttachParamReport(trParamReport *report)
{
    d->paramReport = report;
}

void trBase::DetachParamReport()
{
    d->paramReport = nullptr;
}

trParamReport *trBase::ParamReport() const
{
    return d->paramReport;
}

long trBase::ReportProgress(unsigned long &id, trString const &text, float a, float b)
{
    return OnChildProgress(this, id, text, a, b, 1);
}

long trBase::ReportProgressNoAbort(unsigned long &id, trString const &text, float a, float b)
{
    return OnChildProgress(this, id, text, a, b, 0);
}

long trBase::UserCreate(unsigned char arg)
{
    long const result = OnUserCreate(arg);
    if (trUndoNodeCreation && arg == 1) {
        std::vector<trBase *> nodes{this};
        trUndoNodeCreation(nodes);
    }
    return result;
}

void trBase::AcquireWrite(long index, trBase *who)
{
    Root()->PreChildParamChange(this, index, who);
}

void trBase::AcquireShare()
{
}

void trBase::ReleaseShare()
{
}

void trBase::ReleaseWrite()
{
}

bool trBase::MayAffectPreviews() const
{
    return d->mayAffectPreviews != 0;
}

void trBase::SetMayAffectPreviews(bool may)
{
    d->mayAffectPreviews = may ? 1 : 0;
}

namespace {

// A real parameter of the tree's root, by a direct scan of its table; 0 without one.
double RootFrameValue(trBase *node, char const *paramName)
{
    trBase *root = node->Root();
    for (long i = 0, n = root->NumParams(); i < n; ++i) {
        trParamRecord const *r = root->ParamRecord(i);
        if (r->type == trParamDouble && std::strcmp(r->name, paramName) == 0)
            return *static_cast<double const *>(r->storage);
    }
    return 0.0;
}

} // namespace

double trBase::GetCurrentFrame()
{
    return RootFrameValue(this, "current_frame");
}

long trBase::GetStartFrame()
{
    return long(std::floor(RootFrameValue(this, "start_frame")));
}

long trBase::GetEndFrame()
{
    return long(std::floor(RootFrameValue(this, "end_frame")));
}

trString trBase::RegisteredClassName() const
{
    if (d->registeredClassId < 0)
        return trString(kUnregisteredClass);
    return trClasses.ClassName(d->registeredClassId);
}

trString trBase::RegisteredClassDisplayName() const
{
    if (d->registeredClassId < 0)
        return trString(kUnregisteredClass);
    return trClasses.ClassDisplayName(d->registeredClassId);
}

long trBase::RegisteredClassId() const
{
    return d->registeredClassId;
}

bool trBase::IsRegistered() const
{
    return d->registeredClassId >= 0;
}

void trBase::SetRegisteredClassId(long id)
{
    d->registeredClassId = id;
}

// ---------------------------------------------------------------------------------
// Animation

trAnimate *trBase::ParamAnim(long index) const
{
    trParamRecord const *r = ParamRecord(index);
    return r ? r->anim : nullptr;
}

// The rest of the animation members live in trBaseAnimation.cpp.

unsigned char trBase::AnimUpdateGuard() const
{
    return d->animUpdateGuard;
}

void trBase::SetAnimUpdateGuard(unsigned char guard)
{
    d->animUpdateGuard = guard;
}
