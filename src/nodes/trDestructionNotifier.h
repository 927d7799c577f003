#pragma once
// Lets objects outside the node tree learn that a node is about to go away.

#include <vector>

class trDestructionNotifier;

class trDependant {
public:
    virtual ~trDependant() = default;
    virtual void OnDestructionNotifierDestructor(trDestructionNotifier const *) {}
    virtual void OnDestructionNotifierPreDestroy(trDestructionNotifier const *) {}
};

class trDestructionNotifier {
public:
    trDestructionNotifier() = default;
    // A copy has no dependants of its own.
    trDestructionNotifier(trDestructionNotifier const &) {}
    trDestructionNotifier &operator=(trDestructionNotifier const &) { return *this; }
    // Doesn't notify: dependants are told in PreDestroy.
    virtual ~trDestructionNotifier() = default;

    // Adds once.
    void RegisterDependant(trDependant *dependant);
    // Removes every entry of it.
    void ForgetDependant(trDependant const *dependant);
    long NumDependants() const { return long(dependants.size()); }

protected:
    // Tells each dependant, on a copy of the list, since a dependant may forget itself.
    void PreDestroy();

private:
    std::vector<trDependant *> dependants;
};
