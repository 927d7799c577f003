#include "nodes/trAnimationManager.h"

#include "nodes/trBase.h"

#include <limits>

trAnimationManager *trAnimationManager::ms_instance = nullptr;

trAnimationManager *trAnimationManager::Instance()
{
    if (!ms_instance)
        ms_instance = new trAnimationManager();
    return ms_instance;
}

trAnimationManager::trAnimationManager() : destroyRouter(this, &trAnimationManager::HandleNodeDestroyed)
{
}

void trAnimationManager::AddAnimatedParam(trBase *node, long index, int)
{
    if (!node)
        return;
    if (!animatedParams.insert(AnimatedParam(node, index)).second)
        return;
    ListenTo(node, trMsgNodeDestructor, destroyRouter);
    SendStateChangedMessage();
}

void trAnimationManager::RemoveAnimatedParam(trBase *node, long index)
{
    if (!animatedParams.erase(AnimatedParam(node, index)))
        return;
    if (!IsNodeAnimated(node))
        StopListeningTo(node);
    SendStateChangedMessage();
}

bool trAnimationManager::IsNodeAnimated(trBase const *node) const
{
    // Pairs are ordered by node first: the first pair not below (node, min) tells.
    auto it = animatedParams.lower_bound(AnimatedParam(const_cast<trBase *>(node), std::numeric_limits<long>::min()));
    return it != animatedParams.end() && it->first == node;
}

bool trAnimationManager::IsParamAnimated(trBase const *node, long index) const
{
    return animatedParams.count(AnimatedParam(const_cast<trBase *>(node), index)) != 0;
}

bool trAnimationManager::SuspendStateNotifications()
{
    bool const was = suspended != 0;
    suspended = 1;
    return was;
}

void trAnimationManager::ResumeStateNotifications()
{
    suspended = 0;
    if (pendingState) {
        pendingState = 0;
        SendAMessage(trMsgAnimStateChanged, nullptr);
    }
}

void trAnimationManager::SendStateChangedMessage()
{
    if (suspended) {
        pendingState = 1;
        return;
    }
    SendAMessage(trMsgAnimStateChanged, nullptr);
}

void trAnimationManager::SendKeyMessage(unsigned long code, trBase *node, long index, int component, long keyID,
                                        int mode)
{
    trAnimKeyMessageData data;
    data.node = node;
    data.paramIndex = index;
    data.component = component;
    data.keyID = keyID;
    data.mode = mode;
    SendAMessage(code, &data);
}

void trAnimationManager::KeyInserted(trBase *node, long index, int component, long keyID)
{
    SendKeyMessage(trMsgAnimKeyInserted, node, index, component, keyID, 0);
}

void trAnimationManager::KeyMoved(trBase *node, long index, int component, long keyID)
{
    SendKeyMessage(trMsgAnimKeyMoved, node, index, component, keyID, 0);
}

void trAnimationManager::KeyRemoved(trBase *node, long index, int component, long keyID)
{
    SendKeyMessage(trMsgAnimKeyRemoved, node, index, component, keyID, 0);
}

void trAnimationManager::InterpolationModeChanged(trBase *node, long index, int component, int mode)
{
    SendKeyMessage(trMsgAnimInterpolationModeChanged, node, index, component, -1, mode);
}

void trAnimationManager::KeyInterpolationChanged(trBase *node, long index, int component, long keyID)
{
    SendKeyMessage(trMsgAnimKeyInterpolationChanged, node, index, component, keyID, 0);
}

void trAnimationManager::HandleNodeDestroyed(Kellmere::KMMessenger *from, Kellmere::KMMessage &message)
{
    // The node sends itself as the data; `from` is its messenger part.
    trBase *node = static_cast<trBase *>(message.Data());
    bool dropped = false;
    for (auto it = animatedParams.begin(); it != animatedParams.end();) {
        if (it->first == node) {
            it = animatedParams.erase(it);
            dropped = true;
        } else {
            ++it;
        }
    }
    StopListeningTo(from);
    if (dropped)
        SendStateChangedMessage();
}
