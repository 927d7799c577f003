#pragma once
// trBase: the one base class of everything a host sees in a project. A node is a named
// object in a tree; it declares typed parameters whose values live in the derived
// class's own members, and keeps a table of pointers to them, through which all the
// generic machinery (files, undo, animation, the host's interface, links) works.

#include "foundation/trColour.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/KMMessenger.h"
#include "nodes/trDestructionNotifier.h"

#include <cstddef>
#include <list>
#include <set>
#include <vector>

class trBase;
class trBasePrivate;
class trIntHint;
class trDoubleHint;
class trVectorHint;
class tr2VectorHint;
class trFColHint;
class trStringHint;
class trPtrHint;
class trBoolHint;
class trLinkHint;
class trFile;
class trAnimate;
class trGuiPushButton;
class trGuiActionPreset;
class trNetwork;

// Types of parameter entries. Codes from 1000 up are interface widgets; they take
// parameter indices like values do.
enum trParamType : long {
    trParamInt = 0,
    trParamDouble = 1,
    trParamVector = 2,
    trParamColour = 3,
    trParamString = 4,
    trParamPtr = 5,
    trParamBool = 6,
    trParamFile = 7,
    trParam2Vector = 8,
    trParamFloat = 9,
    trParamReserved10 = 10,
    trParamReserved11 = 11,
    trParamPushButton = 1000,
    trParamGuiTab = 1001,
    trParamGuiHintBase = 2000, // + the trGuiHint code
};

// Layout hints for the host's interface. Only the codes matter to the library.
enum trGuiHint : int {
    trGuiSeparator = 0,
    trGuiNewLine = 1,
    trGuiNewColumn = 2,
    trGuiSpacer = 3,
    trGuiIndent = 4,
    trGuiUnindent = 5,
    trGuiHeading = 6,
    trGuiCollapsed = 7,
    trGuiExpanded = 8,
    trGuiAdvanced = 12,
    trGuiGroupStart = 14,
    trGuiGroupEnd = 15,
    trGuiSubGroupStart = 16,
    trGuiSubGroupEnd = 17,
    trGuiHidden = 18,
    trGuiReadOnly = 23,
    trGuiWide = 24,
    trGuiNarrow = 25,
    trGuiStaticText = 26, // the next string parameter is shown as text, not edited
    trGuiNameStart = 27,
    trGuiNameEnd = 28,
};

// One entry of a node's parameter table.
struct trParamRecord {
    long type = 0;
    void *storage = nullptr; // in the derived object; never owned
    char *name = nullptr;    // heap copy; empty for interface entries
    trString displayName;    // the sentinel until one is set
    void *hint = nullptr;    // not owned
    trAnimate *anim = nullptr; // owned
    unsigned char notifyOnChange = 1;
    unsigned char shouldBeSaved = 1;
    unsigned char guiEnabled = 1;
};

// Observer of one node's parameters; a node holds at most one.
class trParamReport {
public:
    virtual ~trParamReport() = default;
    virtual void OnObjectParamChanged(trBase *node, long index, trBase *who);
    virtual void OnObjectParamAnimChanged(trBase *node, long index, trBase *who);
    virtual void OnObjectDestroy(trBase *node);
};

// Passed as `who` with every parameter write, so a handler can tell a change made by
// the system from one made by the user. A node writing another's parameter passes itself.
extern trBase *trWhoSystem;
extern trBase *trWhoUser;
extern trBase *trWhoUserIndirect;

// Messages every node sends through its messenger.
enum trNodeMessage : unsigned long {
    trMsgNodePreDestroy = 25001,
    trMsgNodeDestructor = 25002,
    trMsgNodeRenamed = 25003,
    trMsgParamGuiEnabled = 25005,
    trMsgParamGuiDisabled = 25006,
};

class trBase : public trDestructionNotifier, public Kellmere::KMMessenger {
public:
    trBase();
    ~trBase() override;
    // Nothing relies on copying a live node.
    trBase(trBase const &) = delete;
    trBase &operator=(trBase const &) = delete;

    // Parameter storage of the name (index 1). Write it through SetName or SetParam.
    trString name;

    // ---- Virtual operations, in slot order ----
    virtual void PreDestroy();
    virtual long Init(trBase *parent, unsigned char addToParent);
    virtual long OnCreate();
    virtual long OnFirstCreate();
    virtual long OnUserCreate(unsigned char arg);
    virtual long OnUserDestroy();
    virtual bool CanUserDestroy();
    virtual void PreChildParamChange(trBase *child, long index, trBase *who);
    virtual void PreChildStateChange(trBase *child, trString const &state);
    virtual long OnChildProgress(trBase *child, unsigned long &id, trString const &text, float a, float b,
                                 unsigned char mayAbort);
    virtual void OnParamChanged(long index, trBase *who);
    virtual void OnGuiParamChanged(long index, trBase *who);
    virtual void OnDependencyParamChanged(trBase *source, long index, trBase *via, trBase *who);
    virtual void OnChildParamChanged(trBase *child, long index, trBase *who);
    virtual void OnChildGuiParamChanged(trBase *child, long index, trBase *who);
    virtual void OnChildStateChanged(trBase *child, trString const &state);
    virtual void *PreviewHandler();
    virtual long SetParamFromString(long index, trString const &text, trBase *who);
    virtual long SetParamFromString(char const *paramName, trString const &text, trBase *who);
    virtual long GetStringFromParam(long index, trString &text, trBase *who);
    virtual long Request_double_from_vector(double &out, trVector const &v, long component);
    virtual void *RequestMember(char const *memberName);
    virtual long WriteXMLCustomData(trString indent, trString &out);
    virtual void EnteredXMLCustomData();
    virtual void HandleXMLCustomElement(trString const &element, char const **attributes);
    virtual void HandleXMLCustomElementClosed(trString const &element);
    virtual void HandleXMLCustomCharacterData(trString const &text);
    virtual void ExitedXMLCustomData();

    // ---- Declaration, from a derived constructor, in the order the entries stand ----
    // Each returns the new parameter's index.
    long Param(long &value, char const *paramName, long defaultValue, trIntHint *hint = nullptr);
    long Param(double &value, char const *paramName, double defaultValue, trDoubleHint *hint = nullptr);
    long Param(float &value, char const *paramName, float defaultValue, trDoubleHint *hint = nullptr);
    long Param(trVector &value, char const *paramName, trVector const &defaultValue, trVectorHint *hint = nullptr);
    long Param(tr2Vector &value, char const *paramName, tr2Vector const &defaultValue, tr2VectorHint *hint = nullptr);
    long Param(trManRgb &value, char const *paramName, trManRgb const &defaultValue, trFColHint *hint = nullptr);
    long Param(trString &value, char const *paramName, trString const &defaultValue, trStringHint *hint = nullptr);
    long Param(trPtr &value, char const *paramName, trPtr const &defaultValue, trPtrHint *hint = nullptr);
    long Param(unsigned char &value, char const *paramName, unsigned char defaultValue, trBoolHint *hint = nullptr);
    long Param(trFile &value, char const *paramName, trString const &defaultValue, trLinkHint *hint = nullptr);
    void Gui(trGuiHint hint);
    void Gui(trGuiHint hint, int count);
    void PushButton(trGuiPushButton &button, char const *buttonName);
    void GuiTab(char const *title, char const *tabName);
    void DeclareTrue(trString const &keyword);
    bool IsTrue(trString const &keyword) const;
    void ParamGroupStart(int group);
    void ParamGroupEnd();
    long AddParamToParamGroup(long index, int group);
    long AddParamToParamGroup(char const *paramName, int group);
    std::set<long> GetParamsInParamGroup(int group) const;
    bool IsParamInParamGroup(long index, int group) const;

    // ---- Tree ----
    trBase *Parent() const;
    bool IsRoot() const;
    trBase *Root();
    long NumChildren() const;
    trBase *Child(long index) const;
    trBase *Child(trString const &childName) const;
    trBase *CreateChild(trString const &className);
    trBase *CreateChildLean(trString const &className);
    long DestroyChild(long index);
    long DestroyChild(trString const &childName);
    trBase *NextInTree();
    trBase *NextSibling();
    trBase *NextSiblingOfChild(trBase const *child);
    bool IsAnAncestorOf(trBase const *node) const;
    bool IsDescendedFrom(trBase const *node) const;
    trString const &Name() const { return name; }
    void SetName(trString text);
    trString Path() const;
    trString NameAndPath() const;
    trBase *NodeByPath(trString const &path);
    trBase *NodeInScope(trString const &nodeName, trBase const *exclude1, trBase const *exclude2);
    bool NameExistsInTree(trString const &nodeName, trBase const *exclude1, trBase const *exclude2);
    bool ClassExistsInTree(long classId, trBase const *exclude1, trBase const *exclude2);
    bool ClassExistsInTree(trString const &className, trBase const *exclude1, trBase const *exclude2);

    // ---- Parameter access: 1 on a change (or a forced write), 0 otherwise ----
    long SetParam(long index, long value, trBase *who, bool force = false);
    long SetParam(long index, int value, trBase *who, bool force = false);
    long SetParam(long index, double value, trBase *who, bool force = false);
    long SetParam(long index, float value, trBase *who, bool force = false);
    long SetParam(long index, trVector const &value, trBase *who, bool force = false);
    long SetParam(long index, tr2Vector const &value, trBase *who, bool force = false);
    long SetParam(long index, trManRgb const &value, trBase *who, bool force = false);
    long SetParam(long index, trPtr const &value, trBase *who, bool force = false);
    long SetParam(long index, unsigned char value, trBase *who, bool force = false);
    long SetParam(long index, bool value, trBase *who, bool force = false);
    long SetParam(long index, trString const &value, trBase *who);
    long SetParam(long index, char const *value, trBase *who);
    long SetParam(long index, trFile const &value, trBase *who);

    long SetParam(char const *paramName, long value, trBase *who, bool force = false);
    long SetParam(char const *paramName, int value, trBase *who, bool force = false);
    long SetParam(char const *paramName, double value, trBase *who, bool force = false);
    long SetParam(char const *paramName, float value, trBase *who, bool force = false);
    long SetParam(char const *paramName, trVector const &value, trBase *who, bool force = false);
    long SetParam(char const *paramName, tr2Vector const &value, trBase *who, bool force = false);
    long SetParam(char const *paramName, trManRgb const &value, trBase *who, bool force = false);
    long SetParam(char const *paramName, trPtr const &value, trBase *who, bool force = false);
    long SetParam(char const *paramName, unsigned char value, trBase *who, bool force = false);
    long SetParam(char const *paramName, bool value, trBase *who, bool force = false);
    long SetParam(char const *paramName, trString const &value, trBase *who);
    long SetParam(char const *paramName, char const *value, trBase *who);
    long SetParam(char const *paramName, trFile const &value, trBase *who);

    long GetParam(long index, long &value, trBase const *who = nullptr) const;
    long GetParam(long index, double &value, trBase const *who = nullptr) const;
    long GetParam(long index, float &value, trBase const *who = nullptr) const;
    long GetParam(long index, trVector &value, trBase const *who = nullptr) const;
    long GetParam(long index, tr2Vector &value, trBase const *who = nullptr) const;
    long GetParam(long index, trManRgb &value, trBase const *who = nullptr) const;
    long GetParam(long index, trString &value, trBase const *who = nullptr) const;
    long GetParam(long index, trPtr &value, trBase const *who = nullptr) const;
    long GetParam(long index, unsigned char &value, trBase const *who = nullptr) const;
    long GetParam(long index, trFile &value, trBase const *who = nullptr) const;

    long GetParam(char const *paramName, long &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, double &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, float &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, trVector &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, tr2Vector &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, trManRgb &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, trString &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, trPtr &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, unsigned char &value, trBase const *who = nullptr) const;
    long GetParam(char const *paramName, trFile &value, trBase const *who = nullptr) const;

    // Reads the value at a frame, then writes the stored value back (forced, with
    // trWhoSystem), so the node is left as it was. A null frame reads storage.
    long GetParam(long index, long &value, trBase *who, double *frame);
    long GetParam(long index, double &value, trBase *who, double *frame);
    long GetParam(long index, float &value, trBase *who, double *frame);
    long GetParam(long index, trVector &value, trBase *who, double *frame);
    long GetParam(long index, tr2Vector &value, trBase *who, double *frame);
    long GetParam(long index, trManRgb &value, trBase *who, double *frame);
    long GetParam(long index, unsigned char &value, trBase *who, double *frame);

    // The storage of a widget entry (codes from 1000).
    long GetWidget(long index, void **widget, trBase const *who) const;

    // ---- Table inspection ----
    bool FindParam(long &index, char const *paramName) const;
    bool FindParamByExternalInputIndex(long &index, int n) const;
    bool FindParamByInternalInputIndex(long &index, int n) const;
    bool FindParamByAnyInputIndex(long &index, int n) const;
    long NumParams() const;
    long ParamType(long index) const;
    bool IsParamStaticText(long index) const;
    bool IsParamExternalLink(long index) const;
    bool IsParamInternalLink(long index) const;
    void *ParamPtr(long index) const;
    char const *ParamName(long index) const;
    trString ParamDisplayName(long index) const;
    void SetParamDisplayName(long index, trString const &displayName);
    void *ParamHint(long index) const;
    bool GetParamShouldBeSaved(long index) const;
    void SetParamShouldBeSaved(long index, bool save);
    void SetParamGuiEnabled(long index, bool enabled);
    void SetParamGuiEnabled(char const *paramName, bool enabled);
    bool IsParamGuiEnabled(long index) const;
    void AddGuiAction(std::vector<trString> const &triggers, std::vector<trString> const &targets,
                      trGuiActionPreset const &preset);
    // The record itself, for the generic machinery (files, animation); null out of range.
    trParamRecord *ParamRecord(long index) const;
    static long NumParamComponentsOfType(long type);
    long NumParamComponents(long const &index) const;

    // Runs the change handlers of one parameter, the report and the interface actions.
    void CallParamChanged(long index, trBase *who, bool suppress);

    // ---- Links and flow ----
    void AttachOutput(trBase *node, long param);
    void DetachOutput(trBase *node, long param);
    long NumOutputs() const;
    trBase *OutputNode(int i) const;
    long OutputParamIndex(int i) const;
    bool IsLinkedTo(trBase const *node) const;
    bool IsLinkedTo(trBase const *node, trString const &paramName) const;
    bool IsCircularLink(trBase const *other) const;
    trBase *LinkedNode(trString const &paramName) const;
    void TriggerAllNodeLinks();
    bool ExternalInputsInside() const;
    void SetExternalInputsInside(bool inside);
    trBase *GuiGroupNode() const;

    // ---- Miscellaneous ----
    void SetBundledWith(trBase *node);
    trBase *GetBundledWith() const;
    std::list<trBase *> const &GetBundledNodeList() const;
    void SetAbsoluteContentFilePathForChildren(trString const &path);
    void SetOrphanedContentFilePath(trString const &path);
    trString AbsoluteContentFilePathForChildren() const;
    trString ContentFilePath() const;
    void AttachParamReport(trParamReport *report);
    void DetachParamReport();
    trParamReport *ParamReport() const;
    long ReportProgress(unsigned long &id, trString const &text, float a, float b);
    long ReportProgressNoAbort(unsigned long &id, trString const &text, float a, float b);
    long UserCreate(unsigned char arg);
    // No locking: tells the root before a change, so that a host can halt a render.
    void AcquireWrite(long index, trBase *who);
    void AcquireShare();
    void ReleaseShare();
    void ReleaseWrite();
    bool MayAffectPreviews() const;
    void SetMayAffectPreviews(bool may);
    double GetCurrentFrame();
    long GetStartFrame();
    long GetEndFrame();
    trString RegisteredClassName() const;
    trString RegisteredClassDisplayName() const;
    long RegisteredClassId() const;
    bool IsRegistered() const;
    void SetRegisteredClassId(long id);

    // ---- Animation ----
    // Keys stand at whole frames: the frame is rounded with floor(f + 0.5). Components
    // are 0, 1, 2; SetParamKey alone also takes -1 for every component of the type.
    // The last argument of SetParamKey, SetParamKeyWithValue and RemoveParamKey: when
    // nonzero, the node's parameter report hears of the change.
    // 1 if a key was made.
    long SetParamKey(long index, int component, double const &frame, int notify);
    // The value of component c is value.x, .y or .z for c = 0, 1, 2.
    long SetParamKeyWithValue(long index, int component, trVector &value, double const &frame, int notify);
    long RemoveParamKey(long index, int component, double const &frame, int notify);
    // Removes every key of one component.
    long RemoveParamKey(long index, int component);
    long SetParamKeyIfKeyedAtCurrentFrame(long index);
    long SetParamKeyIfAnimated(long index);
    long SetParamKeyIfPreferred(long index);
    // 0 for a parameter without curves or an invalid component.
    int GetParamComponentInterpolationMode(long index, int component);
    long SetParamComponentInterpolationMode(long index, int component, int mode);
    bool IsParamKeyedAtFrame(long index, int component, double const &frame, double const &tolerance);
    bool IsParamAnimated(long index);
    bool IsParamComponentAnimated(long index, int component);
    trAnimate *ParamAnim(long index) const;
    long DeleteParamAnim(long index);
    void ReportParamAnimChanged(long index, trBase *who);
    // Writes the curves' value at the frame into the parameter. 1 if anything was done.
    long UpdateParamFromAnim(long index, double const &frame);
    // Every parameter, then every child, recursively; gives the number of updates.
    long UpdateAllFromAnim(double const &frame);
    // Keys every whole frame of [first, last] on every animated parameter; gives the
    // number of parameters baked.
    long BakeAnimation(long first, long last, bool withChildren);
    // Imports a motion text file: lines of a frame and a value in the parameter's text form.
    long ReadParamFile(long index, char const *path);
    // 0 while a parameter write comes from animation.
    unsigned char AnimUpdateGuard() const;
    void SetAnimUpdateGuard(unsigned char guard);

protected:
    // Appends an entry and returns its index.
    long DeclareParam(long type, void *storage, char const *paramName, void *hint);

private:
    friend class trNetwork;
    trBasePrivate *d;
};

// Frees a parameter's animation curves.
void trDestroyParamAnim(trAnimate *anim);

// The child list of a node: a fixed table of 65,536 slots, allocated on first use.
// Its pages are mapped lazily, so slots never touched cost no memory.
// It is deliberately a plain class rather than a node of its own: a parent then costs
// no parameter table, messenger or private record for its child list.
class trNetwork {
public:
    static constexpr long kCapacity = 65536;

    trNetwork();
    // Destroys each child with trDestroyObject, in table order.
    ~trNetwork();
    trNetwork(trNetwork const &) = delete;
    trNetwork &operator=(trNetwork const &) = delete;

    // An anonymous private mapping without reserve; null when the system refuses it.
    static void *operator new(std::size_t size) noexcept;
    static void operator delete(void *p) noexcept;

    long Count() const { return count; }
    trBase *Child(long i) const { return children[i]; }
    // No capacity test here: trBase::Init refuses a child past kCapacity.
    void AddChild(trBase *child) { children[count++] = child; }
    // Moves the last child into the slot.
    void RemoveChild(long i);

private:
    long count = 0;
    trBase *children[kCapacity];
};
