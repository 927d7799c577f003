#pragma once
// A small synchronous messaging module: a messenger sends coded messages, and every
// messenger that listens to it receives them at once, on the sender's thread.

#include <map>
#include <set>
#include <vector>

namespace Kellmere {

class KMMessenger;

class KMObject {
public:
    virtual ~KMObject() = default;
    virtual long ClassVersion() const { return 1; }
};

class KMMessage {
public:
    KMMessage(unsigned long code = 0, void *data = nullptr) : code(code), data(data) {}
    unsigned long Code() const { return code; }
    void *Data() const { return data; }

private:
    unsigned long code;
    void *data;
};

// Takes the messages a listener asked for with a router, in place of ReceiveAMessage.
class KMMessageRouterBase {
public:
    virtual ~KMMessageRouterBase() = default;
    virtual void Route(KMMessenger *from, KMMessage &message) = 0;
};

// Routes to a member function of a listener.
template <class T>
class KMMessageRoutingImp : public KMMessageRouterBase {
public:
    using Handler = void (T::*)(KMMessenger *, KMMessage &);
    KMMessageRoutingImp(T *target, Handler handler) : target(target), handler(handler) {}
    void Route(KMMessenger *from, KMMessage &message) override { (target->*handler)(from, message); }

private:
    T *target;
    Handler handler;
};

class KMMessenger : public KMObject {
public:
    KMMessenger() = default;
    // Copies start with no listeners and listen to nothing.
    KMMessenger(KMMessenger const &) : KMObject() {}
    KMMessenger &operator=(KMMessenger const &) { return *this; }
    ~KMMessenger() override;

    virtual void SendAMessage(KMMessage &message);
    virtual void SendAMessage(unsigned long code, void *data);
    // Called for messages that no router of this listener takes; does nothing here.
    virtual void ReceiveAMessage(KMMessenger *from, KMMessage &message);
    virtual void ListenTo(KMMessenger *talker, std::set<unsigned long> &codes, KMMessageRouterBase &router);
    virtual void ListenTo(KMMessenger *talker, unsigned long code, KMMessageRouterBase &router);
    virtual void ListenTo(KMMessenger *talker);
    virtual void StopListeningTo(KMMessenger *talker);
    virtual bool IsTalkingWith(KMMessenger *other);
    // A messenger in the dead pool receives nothing more; used while it is being torn down.
    virtual void AddToDeadPool(KMMessenger *messenger);
    virtual void RemoveFromDeadPool(KMMessenger *messenger);

    long NumListeners() const { return long(listeners.size()); }

private:
    struct Subscription {
        KMMessenger *listener;
        bool allCodes;
        std::map<unsigned long, KMMessageRouterBase *> routes;
    };
    Subscription *Find(KMMessenger *listener);
    void Forget(KMMessenger *other);

    std::vector<Subscription> listeners; // who hears this messenger
    std::vector<KMMessenger *> talkers;  // whom this messenger hears
};

} // namespace Kellmere
