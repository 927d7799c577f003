#pragma once
// trFile: the value of a file or node-link parameter. One object is either a path to a
// file or the path of another node; a node link resolves to a pointer and enters its
// owner in the target's output list, which is how the node network is wired.

#include "foundation/trString.h"

class trBase;
class trFilePrivate;

enum trNodeType : long {
    trNodeTypeAny = 0,
    trNodeTypeShader = 1,
    trNodeTypeCamera = 2,
    trNodeTypeHeightfield = 3,
    trNodeTypeMicroHandler = 4,
    trNodeTypeObject = 5,
    trNodeTypePlanet = 6,
    trNodeTypeRenderLayer = 7,
    trNodeTypeGroup = 8,
};

enum trFileOpenMode : long {
    trFileModePlain = 0,
    trFileModeRead = 1,
    trFileModeWrite = 2,
    trFileModeNodeLink = 3,
};

// "shader", "camera", ... for 1 to 8; empty otherwise.
trString trStringFromNodeType(long type);
// The capability keyword a target must declare: empty for 0, "is_scene_maker" for
// objects, otherwise "is_" + the type's text.
trString trAssertStringFromNodeType(long type);

class trFile {
public:
    trFile();
    trFile(trFile const &other);
    virtual ~trFile();

    // ---- Virtual operations, in slot order ----
    virtual trFile &operator=(trFile const &other);
    virtual void Reset(trString const &text, long openMode);
    virtual void Reset(long openMode);
    virtual void Reset();

    trString const &FileStringR() const;
    trString const *PFileStringR() const;
    // The stored text made absolute against the owner's content folder.
    trString FullPath() const;
    trString const &LinkString() const { return FileStringR(); }
    void SetFileString(trString const &text);
    void SetLinkString(trString const &text) { SetFileString(text); }

    long OpenMode() const;
    void SetOpenMode(long mode);
    bool IsNodeLink() const { return OpenMode() == trFileModeNodeLink; }
    bool IsExternal() const;
    bool IsInternal() const;
    bool IsHidden() const { return !IsExternal() && !IsInternal(); }
    void SetIsExternal(bool external);
    void SetIsInternal(bool internal);
    void SetIsHidden();
    long IsDirectlyEditable() const;
    void SetIsDirectlyEditable(long editable);
    bool HasChanged() const;
    void SetHasChanged(bool changed);
    // Remembers the present target, so that a later change of target can be told.
    void AcceptChange();
    bool IsLinkedNodeEqualToAccepted() const;
    long NodeType() const;
    void SetNodeType(long type);
    void SetOwner(trBase *owner, long param);
    trBase *Owner() const;
    long OwnerParam() const;

    // The target; with `follow`, through forwarding links. Null while unresolved.
    trBase *LinkedNode(bool follow) const;
    trBase *LinkedNodeDirectOnly() const;
    bool IsCached() const;
    // Resolves the link and keeps the output lists right; returns the target.
    trBase *CacheLink(bool follow);
    // The link this one follows ("{input_node}" forms), or null.
    trFile *ForwardLink() const;

protected:
    // Fixes what Reset returns this class to; with `applyNow` the object takes it at once.
    void SetClassDefaults(long mode, bool hidden, bool applyNow);

private:
    trBase *Resolve(bool follow, bool quiet);
    bool IsOwnersStorage() const;
    bool Detach();
    void SetForward(trFile *link);
    void ResetState(long mode);

    trFilePrivate *d;
};

class trFileForRead : public trFile {
public:
    trFileForRead();
    trFileForRead(trFileForRead const &other);
    trFileForRead &operator=(trFileForRead const &other);
    using trFile::operator=;
};

class trFileForWrite : public trFile {
public:
    trFileForWrite();
    trFileForWrite(trFileForWrite const &other);
    trFileForWrite &operator=(trFileForWrite const &other);
    using trFile::operator=;
};

// A link to another node. Reset keeps the mode and the node type; so does assignment,
// which takes only the text and the flags of its source.
class trNodeLink : public trFile {
public:
    trNodeLink();
    trNodeLink(trNodeLink const &other);
    trNodeLink &operator=(trNodeLink const &other);
    using trFile::operator=;
    using trFile::Reset;
    virtual void Reset(trString const &text);
};

class trShaderLink : public trNodeLink {
public:
    trShaderLink();
    using trNodeLink::operator=;
};

class trCameraLink : public trNodeLink {
public:
    trCameraLink();
    using trNodeLink::operator=;
};

class trHeightfieldLink : public trNodeLink {
public:
    trHeightfieldLink();
    using trNodeLink::operator=;
};

class trMicroHandlerLink : public trNodeLink {
public:
    trMicroHandlerLink();
    using trNodeLink::operator=;
};

class trObjectLink : public trNodeLink {
public:
    trObjectLink();
    using trNodeLink::operator=;
};

class trPlanetLink : public trNodeLink {
public:
    trPlanetLink();
    using trNodeLink::operator=;
};

class trRenderLayerLink : public trNodeLink {
public:
    trRenderLayerLink();
    using trNodeLink::operator=;
};

class trGroupLink : public trNodeLink {
public:
    trGroupLink();
    using trNodeLink::operator=;
};
