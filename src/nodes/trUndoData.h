#pragma once
// Records given to the host's generic undo hook. Each says what the library is about to
// change, so the host can snapshot the state it needs to undo it.

#include "nodes/trUndo.h"

#include <utility>
#include <vector>

class trBase;

class trUndoOperationData {
public:
    trUndoOperationData(trUndoOperation operation, trBase *node) : operation(operation), node(node) {}
    virtual ~trUndoOperationData();

    trUndoOperation GetOperation() const { return operation; }
    trBase *GetNode() const { return node; }

    trUndoOperation operation;
    trBase *node;
};

// Code 1 (key set) or 2 (key removed): the key's parameter, component and whole frame.
class trSetRemoveParamKeyUndoData : public trUndoOperationData {
public:
    trSetRemoveParamKeyUndoData(trUndoOperation operation, trBase *node, long paramIndex, int component,
                                double frame)
        : trUndoOperationData(operation, node), paramIndex(paramIndex), component(component), frame(frame)
    {
    }

    long paramIndex;
    int component; // -1 for every component
    double frame;
};

// Code 5: `mode` is the component's mode before the change (0 if it had no curves).
class trChangeAnimInterpolationModeUndoData : public trUndoOperationData {
public:
    trChangeAnimInterpolationModeUndoData(trBase *node, long paramIndex, int component, int mode)
        : trUndoOperationData(trUndoOperationInterpolationModeChanged, node), paramIndex(paramIndex),
          component(component), mode(mode)
    {
    }

    long paramIndex;
    int component;
    int mode;
};

// Code 3 (motion file read) or 4 (parameter animation deleted).
class trReadParamFileDeleteParamAnimUndoData : public trUndoOperationData {
public:
    trReadParamFileDeleteParamAnimUndoData(trUndoOperation operation, trBase *node, std::vector<long> paramIndices)
        : trUndoOperationData(operation, node), paramIndices(std::move(paramIndices))
    {
    }

    std::vector<long> paramIndices;
};

// The host's generic undo hook; it takes ownership of the record (delete it when done).
extern void (*trUndoGeneric)(trUndoOperationData *data);

// True when the hook is set and the current token carries this code: then a record is due.
bool trUndoGenericWanted(trUndoOperation operation);
