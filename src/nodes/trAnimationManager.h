#pragma once
// The project-wide record of what is animated. It tells the host's interface, through
// its messages, when keys or the set of animated parameters change.

#include "nodes/KMMessenger.h"

#include <set>
#include <utility>

class trBase;

enum trAnimationMessage : unsigned long {
    trMsgAnimStateChanged = 25008,
    trMsgAnimKeyInserted = 25009,
    trMsgAnimKeyMoved = 25010,
    trMsgAnimKeyRemoved = 25011,
    trMsgAnimInterpolationModeChanged = 25012,
    trMsgAnimKeyInterpolationChanged = 25013,
};

// The data of messages 25009 to 25013; valid only while the message is delivered.
struct trAnimKeyMessageData {
    trBase *node = nullptr;
    long paramIndex = -1;
    int component = -1;
    long keyID = -1; // -1 for a change of interpolation mode
    int mode = 0;    // the new mode in 25012, otherwise 0
};

class trAnimationManager : public Kellmere::KMMessenger {
public:
    using AnimatedParam = std::pair<trBase *, long>;

    // Made by the first call; lives as long as the process.
    static trAnimationManager *Instance();
    static trAnimationManager *ms_instance;

    trAnimationManager(trAnimationManager const &) = delete;
    trAnimationManager &operator=(trAnimationManager const &) = delete;

    void AddAnimatedParam(trBase *node, long index, int component);
    void RemoveAnimatedParam(trBase *node, long index);
    bool IsNodeAnimated(trBase const *node) const;
    bool IsParamAnimated(trBase const *node, long index) const;
    std::set<AnimatedParam> const &AnimatedParams() const { return animatedParams; }

    // Holds back message 25008 until ResumeStateNotifications; gives the previous flag.
    bool SuspendStateNotifications();
    void ResumeStateNotifications();
    void SendStateChangedMessage();

    void KeyInserted(trBase *node, long index, int component, long keyID);
    void KeyMoved(trBase *node, long index, int component, long keyID);
    void KeyRemoved(trBase *node, long index, int component, long keyID);
    void InterpolationModeChanged(trBase *node, long index, int component, int mode);
    void KeyInterpolationChanged(trBase *node, long index, int component, long keyID);

    // Route of message 25002 of an animated node.
    void HandleNodeDestroyed(Kellmere::KMMessenger *from, Kellmere::KMMessage &message);

private:
    trAnimationManager();
    ~trAnimationManager() override = default;
    void SendKeyMessage(unsigned long code, trBase *node, long index, int component, long keyID, int mode);

    std::set<AnimatedParam> animatedParams;
    unsigned char suspended = 0;
    unsigned char pendingState = 0;
    Kellmere::KMMessageRoutingImp<trAnimationManager> destroyRouter;
};
