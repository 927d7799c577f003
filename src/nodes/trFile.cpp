#include "nodes/trFile.h"

#include "foundation/trMessages.h"
#include "nodes/trBase.h"

#include <algorithm>
#include <vector>

class trFilePrivate {
public:
    trString fileString;
    long openMode = trFileModePlain;
    unsigned char isExternal = 1;
    unsigned char isInternal = 0;
    unsigned char hasChanged = 1;
    unsigned char isCached = 0;
    trBase *acceptedNode = nullptr;
    trBase *linkedNode = nullptr;
    trFile *forwardLink = nullptr;
    long isDirectlyEditable = 1;
    long nodeType = trNodeTypeAny;
    trBase *owner = nullptr;
    long ownerParam = -1;

    // The output list this object entered, and under which pair. Only the link that is
    // its owner's own parameter storage ever enters one; copies never do, so that a
    // copy's lifetime can't disturb the network.
    trBase *attachedNode = nullptr;
    trBase *attachedOwner = nullptr;
    long attachedParam = -1;
    // Links whose forwardLink is this object; they drop it when this one goes away.
    std::vector<trFile *> forwarders;
    // What Reset returns this class to.
    long classMode = trFileModePlain;
    unsigned char classHidden = 0;
};

namespace {

// A chain of forwarding links is short (a parent's input, at most a few levels); the
// bound only keeps a malformed chain from spinning.
constexpr int kMaxForwardHops = 4096;

// The `input_node` link parameter of a node, if it declares one.
trFile *InputNodeLinkOf(trBase *node)
{
    if (!node)
        return nullptr;
    long index = 0;
    if (!node->FindParam(index, "input_node") || node->ParamType(index) != trParamFile)
        return nullptr;
    return static_cast<trFile *>(node->ParamPtr(index));
}

} // namespace

trString trStringFromNodeType(long type)
{
    switch (type) {
    case trNodeTypeShader:
        return "shader";
    case trNodeTypeCamera:
        return "camera";
    case trNodeTypeHeightfield:
        return "heightfield";
    case trNodeTypeMicroHandler:
        return "micro_handler";
    case trNodeTypeObject:
        return "object";
    case trNodeTypePlanet:
        return "planet";
    case trNodeTypeRenderLayer:
        return "render_layer";
    case trNodeTypeGroup:
        return "group";
    default:
        return trString();
    }
}

trString trAssertStringFromNodeType(long type)
{
    if (type == trNodeTypeAny)
        return trString();
    if (type == trNodeTypeObject)
        return "is_scene_maker";
    // An unknown type asks for "is_", which no node declares: such a link accepts nothing.
    return "is_" + trStringFromNodeType(type);
}

// ---------------------------------------------------------------------------------------

trFile::trFile() : d(new trFilePrivate) {}

trFile::trFile(trFile const &other) : d(new trFilePrivate)
{
    trFilePrivate const &o = *other.d;
    d->fileString = o.fileString;
    d->openMode = o.openMode;
    d->isExternal = o.isExternal;
    d->isInternal = o.isInternal;
    d->hasChanged = o.hasChanged;
    d->isCached = o.isCached;
    d->acceptedNode = o.acceptedNode;
    d->linkedNode = o.linkedNode;
    d->isDirectlyEditable = o.isDirectlyEditable;
    d->nodeType = o.nodeType;
    // A copy has no owner, so it reads the target it was given but is in no output list.
    SetForward(o.forwardLink);
}

trFile::~trFile()
{
    Detach();
    SetForward(nullptr);
    for (trFile *follower : d->forwarders)
        follower->d->forwardLink = nullptr;
    delete d;
}

trFile &trFile::operator=(trFile const &other)
{
    if (this == &other)
        return *this;
    trFilePrivate const &o = *other.d;
    d->fileString = o.fileString;
    d->isExternal = o.isExternal;
    d->isInternal = o.isInternal;
    d->hasChanged = o.hasChanged;
    d->isDirectlyEditable = o.isDirectlyEditable;
    // A node link stays a link of its own kind: a plain link assigned to a shader link
    // must not lift the shader check.
    if (d->classMode != trFileModeNodeLink) {
        d->openMode = o.openMode;
        d->nodeType = o.nodeType;
    }
    if (d->owner) {
        // Our own place in the tree decides the target and the output entry.
        d->isCached = 0;
        Resolve(true, false);
    } else {
        if (Detach())
            d->linkedNode = nullptr;
        d->isCached = o.isCached;
        d->linkedNode = o.linkedNode;
        d->acceptedNode = o.acceptedNode;
        SetForward(o.forwardLink == this ? nullptr : o.forwardLink);
    }
    return *this;
}

void trFile::ResetState(long mode)
{
    Detach();
    SetForward(nullptr);
    d->fileString = trString();
    // Node links keep their mode and node type through every form of Reset.
    if (d->classMode == trFileModeNodeLink) {
        d->openMode = trFileModeNodeLink;
    } else {
        d->openMode = mode;
        d->nodeType = trNodeTypeAny;
    }
    d->isExternal = d->classHidden ? 0 : 1;
    d->isInternal = 0;
    d->hasChanged = 1;
    d->isCached = 0;
    d->acceptedNode = nullptr;
    d->linkedNode = nullptr;
    d->isDirectlyEditable = 1;
    d->owner = nullptr;
    d->ownerParam = -1;
}

void trFile::Reset(trString const &text, long openMode)
{
    ResetState(openMode);
    d->fileString = text;
}

void trFile::Reset(long openMode) { ResetState(openMode); }

void trFile::Reset() { ResetState(d->classMode); }

void trFile::SetClassDefaults(long mode, bool hidden, bool applyNow)
{
    d->classMode = mode;
    d->classHidden = hidden ? 1 : 0;
    if (applyNow) {
        d->openMode = mode;
        d->isExternal = hidden ? 0 : 1;
        d->isInternal = 0;
    }
}

// ---------------------------------------------------------------------------------------

trString const &trFile::FileStringR() const { return d->fileString; }

trString const *trFile::PFileStringR() const { return &d->fileString; }

trString trFile::FullPath() const
{
    trString const &text = d->fileString;
    if (!d->owner || d->openMode == trFileModeNodeLink || text.length == 0)
        return text;
    trString const content = d->owner->ContentFilePath();
    if (content.length == 0 || text.chars[0] == '/' || text.chars[0] == '\\' ||
        (text.length > 1 && text.chars[1] == ':'))
        return text;
    return content + text;
}

void trFile::SetFileString(trString const &text)
{
    trString stored = text;
    if (d->owner && d->openMode != trFileModeNodeLink) {
        // Project-relative paths survive a move of the project folder.
        trString const content = d->owner->ContentFilePath();
        if (content.length > 0 && text.BeginsWith(content, true))
            stored = trString(text.chars + content.length);
    }
    if (!d->owner && stored != d->fileString) {
        // Without a place in the tree a new text can't be resolved; drop the old target.
        d->linkedNode = nullptr;
        SetForward(nullptr);
    }
    d->fileString = stored;
    d->hasChanged = 1;
    d->isCached = 0;
    Resolve(true, false);
}

long trFile::OpenMode() const { return d->openMode; }

void trFile::SetOpenMode(long mode)
{
    if (mode == d->openMode)
        return;
    d->openMode = mode;
    // Leaving link mode leaves the output list; entering it resolves the text.
    Resolve(true, false);
}

bool trFile::IsExternal() const { return d->isExternal != 0; }

bool trFile::IsInternal() const { return d->isInternal != 0; }

void trFile::SetIsExternal(bool external)
{
    d->isExternal = external ? 1 : 0;
    if (external)
        d->isInternal = 0;
}

void trFile::SetIsInternal(bool internal)
{
    d->isInternal = internal ? 1 : 0;
    if (internal)
        d->isExternal = 0;
}

void trFile::SetIsHidden()
{
    d->isExternal = 0;
    d->isInternal = 0;
}

long trFile::IsDirectlyEditable() const { return d->isDirectlyEditable; }

void trFile::SetIsDirectlyEditable(long editable) { d->isDirectlyEditable = editable; }

bool trFile::HasChanged() const { return d->hasChanged != 0; }

void trFile::SetHasChanged(bool changed) { d->hasChanged = changed ? 1 : 0; }

void trFile::AcceptChange()
{
    d->acceptedNode = d->isCached ? LinkedNode(true) : nullptr;
    d->hasChanged = 0;
}

bool trFile::IsLinkedNodeEqualToAccepted() const { return LinkedNode(true) == d->acceptedNode; }

long trFile::NodeType() const { return d->nodeType; }

void trFile::SetNodeType(long type)
{
    if (type == d->nodeType)
        return;
    d->nodeType = type;
    // A resolved link is tested again against the new kind.
    if (d->owner && d->isCached && d->openMode == trFileModeNodeLink)
        Resolve(true, false);
}

void trFile::SetOwner(trBase *owner, long param)
{
    if (owner == d->owner && param == d->ownerParam)
        return;
    if (Detach())
        d->linkedNode = nullptr;
    d->owner = owner;
    d->ownerParam = param;
    // Resolve against the new place at once, so that the target can be inspected (a
    // copy given an owner is how a write is checked for cycles). Quiet: the write that
    // follows reports a wrong kind of node itself.
    if (owner && d->openMode == trFileModeNodeLink)
        Resolve(true, true);
}

trBase *trFile::Owner() const { return d->owner; }

long trFile::OwnerParam() const { return d->ownerParam; }

trBase *trFile::LinkedNode(bool follow) const
{
    trFile const *link = this;
    for (int hop = 0; hop < kMaxForwardHops; ++hop) {
        if (!link->d->isCached)
            return nullptr;
        if (!follow || !link->d->forwardLink)
            return link->d->linkedNode;
        link = link->d->forwardLink;
    }
    return nullptr;
}

trBase *trFile::LinkedNodeDirectOnly() const { return d->isCached ? d->linkedNode : nullptr; }

bool trFile::IsCached() const { return d->isCached != 0; }

trFile *trFile::ForwardLink() const { return d->forwardLink; }

trBase *trFile::CacheLink(bool follow) { return Resolve(follow, false); }

// ---------------------------------------------------------------------------------------

bool trFile::IsOwnersStorage() const
{
    trBase *owner = d->owner;
    long const index = d->ownerParam;
    return owner && index >= 0 && index < owner->NumParams() && owner->ParamType(index) == trParamFile &&
           owner->ParamPtr(index) == static_cast<void const *>(this);
}

// Touches only the target, never the owner, so that it is safe while either is being
// torn down: a target empties every link to it before it goes.
bool trFile::Detach()
{
    if (!d->attachedNode)
        return false;
    trBase *node = d->attachedNode;
    d->attachedNode = nullptr;
    node->DetachOutput(d->attachedOwner, d->attachedParam);
    d->attachedOwner = nullptr;
    d->attachedParam = -1;
    return true;
}

void trFile::SetForward(trFile *link)
{
    if (link == d->forwardLink)
        return;
    if (d->forwardLink) {
        std::vector<trFile *> &list = d->forwardLink->d->forwarders;
        list.erase(std::remove(list.begin(), list.end(), this), list.end());
    }
    d->forwardLink = link;
    if (link)
        link->d->forwarders.push_back(this);
}

trBase *trFile::Resolve(bool follow, bool quiet)
{
    trFilePrivate *p = d;
    p->isCached = 1;
    trString const &text = p->fileString;

    if (!p->owner || p->openMode != trFileModeNodeLink) {
        // No longer a link, or no place in the tree: it can't stay in an output list.
        if (Detach())
            p->linkedNode = nullptr;
    } else {
        Detach();
        p->linkedNode = nullptr;
        bool forwarding = false;
        if (text.length > 0 && text.chars[0] == '{') {
            trFile *target = nullptr;
            if (text == "{parent.input_node}") {
                target = InputNodeLinkOf(p->owner->Parent());
                forwarding = true;
            } else if (text == "{input_node}") {
                target = InputNodeLinkOf(p->owner);
                if (!IsHidden())
                    SetIsInternal(true);
                forwarding = true;
            }
            if (forwarding)
                // The input_node parameter itself can't follow itself.
                SetForward(target == this ? nullptr : target);
        }
        if (!forwarding) {
            SetForward(nullptr);
            trBase *node = p->owner->NodeByPath(text);
            if (node && p->nodeType != trNodeTypeAny && !node->IsTrue(trAssertStringFromNodeType(p->nodeType))) {
                node = nullptr;
                if (!quiet)
                    trWarning("Wrong type of node in " + p->owner->name + " link to " + text);
            }
            if (node) {
                p->linkedNode = node;
                if (!IsHidden()) {
                    if (node->Parent() == p->owner)
                        SetIsInternal(true);
                    else
                        SetIsExternal(true);
                }
                if (IsOwnersStorage()) {
                    node->AttachOutput(p->owner, p->ownerParam);
                    p->attachedNode = node;
                    p->attachedOwner = p->owner;
                    p->attachedParam = p->ownerParam;
                }
            }
        }
    }

    if (p->forwardLink && p->nodeType != trNodeTypeAny && p->forwardLink->d->nodeType != p->nodeType) {
        SetForward(nullptr);
        if (!quiet) {
            if (p->owner)
                trWarning("Wrong type of node in " + p->owner->name + " link to " + text);
            else
                trWarning("Wrong type of node in unknown node link to " + text);
        }
        return nullptr;
    }
    if (follow && p->forwardLink)
        return p->forwardLink->LinkedNode(true);
    return p->linkedNode;
}

// ---------------------------------------------------------------------------------------

trFileForRead::trFileForRead() { SetClassDefaults(trFileModeRead, true, true); }
trFileForRead::trFileForRead(trFileForRead const &other) : trFile(other)
{
    SetClassDefaults(trFileModeRead, true, false);
}
trFileForRead &trFileForRead::operator=(trFileForRead const &other)
{
    trFile::operator=(other);
    return *this;
}

trFileForWrite::trFileForWrite() { SetClassDefaults(trFileModeWrite, true, true); }
trFileForWrite::trFileForWrite(trFileForWrite const &other) : trFile(other)
{
    SetClassDefaults(trFileModeWrite, true, false);
}
trFileForWrite &trFileForWrite::operator=(trFileForWrite const &other)
{
    trFile::operator=(other);
    return *this;
}

trNodeLink::trNodeLink() { SetClassDefaults(trFileModeNodeLink, false, true); }
trNodeLink::trNodeLink(trNodeLink const &other) : trFile(other)
{
    SetClassDefaults(trFileModeNodeLink, false, false);
}
trNodeLink &trNodeLink::operator=(trNodeLink const &other)
{
    trFile::operator=(other);
    return *this;
}

void trNodeLink::Reset(trString const &text) { trFile::Reset(text, trFileModeNodeLink); }

trShaderLink::trShaderLink() { SetNodeType(trNodeTypeShader); }
trCameraLink::trCameraLink() { SetNodeType(trNodeTypeCamera); }
trHeightfieldLink::trHeightfieldLink() { SetNodeType(trNodeTypeHeightfield); }
trMicroHandlerLink::trMicroHandlerLink() { SetNodeType(trNodeTypeMicroHandler); }
trObjectLink::trObjectLink() { SetNodeType(trNodeTypeObject); }
trPlanetLink::trPlanetLink() { SetNodeType(trNodeTypePlanet); }
trRenderLayerLink::trRenderLayerLink() { SetNodeType(trNodeTypeRenderLayer); }
trGroupLink::trGroupLink() { SetNodeType(trNodeTypeGroup); }
