#include "nodes/trUndoData.h"

void (*trUndoGeneric)(trUndoOperationData *) = nullptr;

trUndoOperationData::~trUndoOperationData() = default;

bool trUndoGenericWanted(trUndoOperation operation)
{
    return trUndoGeneric && trCopyCurrentUndoToken().GetOperation() == operation;
}
