#include "nodes/trUndo.h"

void (*trUndoNodeParamInt)(trBase *, long, long, trBase *) = nullptr;
void (*trUndoNodeParamDouble)(trBase *, long, double, trBase *) = nullptr;
void (*trUndoNodeParamVector)(trBase *, long, trVector const &, long, trBase *) = nullptr;
void (*trUndoNodeParamFCol)(trBase *, long, trManRgb const &, trBase *) = nullptr;
void (*trUndoNodeParamString)(trBase *, long, trString const &, trBase *) = nullptr;
void (*trUndoNodeParamPtr)(trBase *, long, trPtr const &, trBase *) = nullptr;
void (*trUndoNodeParamBool)(trBase *, long, unsigned char, trBase *) = nullptr;
void (*trUndoNodeParamFile)(trBase *, long, trFile const &, trBase *) = nullptr;
void (*trUndoNodeParam2Vector)(trBase *, long, tr2Vector const &, long, trBase *) = nullptr;
void (*trUndoNodeCreation)(std::vector<trBase *> &) = nullptr;

trUndoToken (*trUndoGetNewUndoToken)(trUndoOperation) = nullptr;
trUndoToken (*trUndoGetAndSetNewUndoToken)(trUndoOperation) = nullptr;
void (*trUndoSetUndoToken)(trUndoToken const &) = nullptr;
void (*trUndoClearUndoToken)() = nullptr;
trUndoToken (*trUndoCopyCurrentUndoToken)() = nullptr;

trUndoToken trGetNewUndoToken(trUndoOperation operation)
{
    return trUndoGetNewUndoToken ? trUndoGetNewUndoToken(operation) : trUndoToken();
}

trUndoToken trGetAndSetNewUndoToken(trUndoOperation operation)
{
    return trUndoGetAndSetNewUndoToken ? trUndoGetAndSetNewUndoToken(operation) : trUndoToken();
}

void trSetUndoToken(trUndoToken const &token)
{
    if (trUndoSetUndoToken)
        trUndoSetUndoToken(token);
}

void trClearUndoToken()
{
    if (trUndoClearUndoToken)
        trUndoClearUndoToken();
}

trUndoToken trCopyCurrentUndoToken()
{
    return trUndoCopyCurrentUndoToken ? trUndoCopyCurrentUndoToken() : trUndoToken();
}

bool trUndoIsIdle()
{
    return trCopyCurrentUndoToken() == trUndoToken();
}
