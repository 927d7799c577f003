#pragma once
// trClassPool: the registry of node classes. Everything that makes a node, whether the
// host, a project file or a plug-in, does so by class name through the one global
// `trClasses`, so a class from a plug-in module is no different from a built-in one.
//
// The pool is itself a node: each registered class is an integer parameter named after
// the class, whose value is the class id, so a name is looked up with FindParam. Next to
// that it keeps fixed tables of kMaxClasses entries indexed by id.

#include "foundation/trString.h"
#include "nodes/trBase.h"

#include <vector>

struct trClassPoolTables;

class trClassPool : public trBase {
public:
    using CreateFunc = trBase *(*)();
    using DestroyFunc = void (*)(trBase *);

    static constexpr long kMaxClasses = 65536;
    // Longer type, class or display names are refused.
    static constexpr long kMaxNameLength = 255;

    trClassPool();
    ~trClassPool() override;

    // Registers a class; returns the new class count, or 0. The type gains a final "/"
    // if it has none; an empty display name means the humanized class name.
    long AddClass(trString const &classType, trString const &className, CreateFunc create, DestroyFunc destroy,
                  trString const &displayName);
    // Registers a class whose module exports baseName + "_create" and baseName + "_destroy".
    long LoadClass(trString const &classType, trString const &className, trString const &baseName,
                   trString const &modulePath);

    // Loads every module in `directory` (which ends with its separator) whose name
    // matches the wildcard `pattern`, in name order; returns how many started.
    long LoadPlugins(trString const &directory, trString const &pattern);
    long LoadPluginAutoCompile(trString const &file, trString const &pattern, trString const &directory);
    // Loads one module and calls its trPluginStartup; returns what that returned, or 0.
    long LoadPlugin(trString const &file, trString const &directory);

    long NumClasses() const;
    // For an id outside 0 to NumClasses() - 1 these give the empty text.
    trString ClassType(long id) const;
    trString ClassName(long id) const;
    trString ClassDisplayName(long id) const;
    // The display name without the words its category already says: "Lambert shader"
    // under shader/ is "Lambert".
    trString ClassDisplayNameSimplified(long id) const;
    // 1 and the id if the name is registered; otherwise 0, and id is -1.
    long FindClassIdFromClassName(long &id, trString const &className) const;
    // Objects created so far of a class; never decremented.
    long InstanceCount(long id) const;
    // Modules that would not load since the last LoadPlugins reported them.
    std::vector<trString> const &FailedPlugins() const { return failedPlugins; }

    // From a name to a node in the tree: constructed, registered, placed, named and
    // told OnCreate. Null for an unknown class.
    trBase *CreateObjectLean(trString const &className, trBase *parent, unsigned char addToParent);
    // CreateObjectLean, then OnFirstCreate: for a new node rather than one read from a file.
    trBase *CreateObject(trString const &className, trBase *parent, unsigned char addToParent);
    // PreDestroy, then the class's destroy function; 1, or 0 for null or an unregistered node.
    long DestroyObject(trBase *node);

private:
    // The class id registered under this name, or -1.
    long LookUp(trString const &className) const;

    trClassPoolTables *tables;
    long numClasses = 0;
    std::vector<trString> failedPlugins;
};

extern trClassPool trClasses;

trBase *trCreateObject(trString const &className, trBase *parent, unsigned char addToParent);
trBase *trCreateObjectLean(trString const &className, trBase *parent, unsigned char addToParent);
long trDestroyObject(trBase *node);
