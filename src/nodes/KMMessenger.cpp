#include "nodes/KMMessenger.h"

#include <algorithm>

namespace Kellmere {

namespace {
// Messengers that must receive nothing more. Shared by all messengers.
std::set<KMMessenger *> &DeadPool()
{
    static std::set<KMMessenger *> pool;
    return pool;
}
} // namespace

KMMessenger::~KMMessenger()
{
    // Unhook both ways so that no one keeps a pointer to this messenger.
    for (auto &s : listeners) {
        auto &t = s.listener->talkers;
        t.erase(std::remove(t.begin(), t.end(), this), t.end());
    }
    for (KMMessenger *talker : talkers) {
        auto &l = talker->listeners;
        l.erase(std::remove_if(l.begin(), l.end(), [this](Subscription const &s) { return s.listener == this; }), l.end());
    }
    DeadPool().erase(this);
}

KMMessenger::Subscription *KMMessenger::Find(KMMessenger *listener)
{
    for (auto &s : listeners)
        if (s.listener == listener)
            return &s;
    return nullptr;
}

void KMMessenger::SendAMessage(unsigned long code, void *data)
{
    KMMessage message(code, data);
    SendAMessage(message);
}

void KMMessenger::SendAMessage(KMMessage &message)
{
    if (listeners.empty())
        return;
    // A handler may start or stop listening: deliver to a snapshot, and skip any
    // listener that has left in the meantime.
    std::vector<KMMessenger *> snapshot;
    snapshot.reserve(listeners.size());
    for (auto &s : listeners)
        snapshot.push_back(s.listener);
    for (KMMessenger *listener : snapshot) {
        Subscription *s = Find(listener);
        if (!s || DeadPool().count(listener))
            continue;
        auto route = s->routes.find(message.Code());
        if (route != s->routes.end())
            route->second->Route(this, message);
        else if (s->allCodes)
            listener->ReceiveAMessage(this, message);
    }
}

void KMMessenger::ReceiveAMessage(KMMessenger *, KMMessage &)
{
}

void KMMessenger::ListenTo(KMMessenger *talker, std::set<unsigned long> &codes, KMMessageRouterBase &router)
{
    for (unsigned long code : codes)
        ListenTo(talker, code, router);
}

void KMMessenger::ListenTo(KMMessenger *talker, unsigned long code, KMMessageRouterBase &router)
{
    if (!talker || talker == this)
        return;
    ListenTo(talker);
    Subscription *s = talker->Find(this);
    if (s->allCodes && s->routes.empty())
        s->allCodes = false; // a listener with routes hears only what it routed
    s->routes[code] = &router;
}

void KMMessenger::ListenTo(KMMessenger *talker)
{
    if (!talker || talker == this || talker->Find(this))
        return;
    talker->listeners.push_back({this, true, {}});
    talkers.push_back(talker);
}

void KMMessenger::StopListeningTo(KMMessenger *talker)
{
    if (!talker)
        return;
    auto &l = talker->listeners;
    l.erase(std::remove_if(l.begin(), l.end(), [this](Subscription const &s) { return s.listener == this; }), l.end());
    talkers.erase(std::remove(talkers.begin(), talkers.end(), talker), talkers.end());
}

bool KMMessenger::IsTalkingWith(KMMessenger *other)
{
    return other && (Find(other) || other->Find(this));
}

void KMMessenger::AddToDeadPool(KMMessenger *messenger)
{
    if (messenger)
        DeadPool().insert(messenger);
}

void KMMessenger::RemoveFromDeadPool(KMMessenger *messenger)
{
    DeadPool().erase(messenger);
}

} // namespace Kellmere
