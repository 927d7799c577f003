#pragma once
// Undo is kept by the host: the library calls its hooks with the old values, and
// groups compound operations under tokens.

#include "foundation/trRand.h"

#include <cstdint>
#include <vector>

class trBase;
class trString;
class trVector;
class tr2Vector;
class trManRgb;
class trPtr;
class trFile;

enum trUndoOperation {
    trUndoOperationNone = 0,
    trUndoOperationKeySet = 1,
    trUndoOperationKeyRemoved = 2,
    trUndoOperationMotionFileRead = 3,
    trUndoOperationParamAnimDeleted = 4,
    trUndoOperationInterpolationModeChanged = 5,
};

class trUndoToken {
public:
    trUndoToken() = default;
    explicit trUndoToken(trUndoOperation operation) : operation(operation) { GenerateID(); }

    bool operator==(trUndoToken const &o) const { return operation == o.operation && id == o.id; }
    bool operator!=(trUndoToken const &o) const { return !(*this == o); }
    trUndoOperation GetOperation() const { return operation; }
    std::uint32_t GetID() const { return id; }
    void GenerateID() { id = std::uint32_t(ms_rand.Int()); }

    // Seeded at load with 90210.
    static trRand ms_rand;

private:
    trUndoOperation operation = trUndoOperationNone;
    std::uint32_t id = 0;
};

// Parameter hooks receive the node, the index, the old value and who. The vector forms
// get, before who, the component that differs (1, 2, 3 for x, y, z) when exactly one
// does, and 0 otherwise. A float parameter uses the double hook.
extern void (*trUndoNodeParamInt)(trBase *node, long index, long oldValue, trBase *who);
extern void (*trUndoNodeParamDouble)(trBase *node, long index, double oldValue, trBase *who);
extern void (*trUndoNodeParamVector)(trBase *node, long index, trVector const &oldValue, long component, trBase *who);
extern void (*trUndoNodeParamFCol)(trBase *node, long index, trManRgb const &oldValue, trBase *who);
extern void (*trUndoNodeParamString)(trBase *node, long index, trString const &oldValue, trBase *who);
extern void (*trUndoNodeParamPtr)(trBase *node, long index, trPtr const &oldValue, trBase *who);
extern void (*trUndoNodeParamBool)(trBase *node, long index, unsigned char oldValue, trBase *who);
extern void (*trUndoNodeParamFile)(trBase *node, long index, trFile const &oldValue, trBase *who);
extern void (*trUndoNodeParam2Vector)(trBase *node, long index, tr2Vector const &oldValue, long component, trBase *who);
extern void (*trUndoNodeCreation)(std::vector<trBase *> &nodes);

// Token hooks; the wrappers give the default token when the host set none.
extern trUndoToken (*trUndoGetNewUndoToken)(trUndoOperation);
extern trUndoToken (*trUndoGetAndSetNewUndoToken)(trUndoOperation);
extern void (*trUndoSetUndoToken)(trUndoToken const &);
extern void (*trUndoClearUndoToken)();
extern trUndoToken (*trUndoCopyCurrentUndoToken)();

trUndoToken trGetNewUndoToken(trUndoOperation operation);
trUndoToken trGetAndSetNewUndoToken(trUndoOperation operation);
void trSetUndoToken(trUndoToken const &token);
void trClearUndoToken();
trUndoToken trCopyCurrentUndoToken();
// True when no compound operation is under way: parameter hooks are called only then.
bool trUndoIsIdle();
