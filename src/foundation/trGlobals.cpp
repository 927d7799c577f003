// Every object the library builds at load, in the order it must be built. Nothing here
// may call a host callback (none is set yet) or start a thread. Destruction runs in
// reverse. New load-time objects go into their place in this sequence.

#include "foundation/trGlobals.h"

#include "foundation/trCores.h"
#include "foundation/trPrivateGlobals.h"
#include "foundation/trRand.h"
#include "foundation/trString.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trParamHint.h"
#include "nodes/trUndo.h"
#include "shading/trRayIdentities.h"
#include "volumes/trVoxelLightingSystem.h"
#include "volumes/trVoxelScatterModel.h"

// Sentinels, then the default hints of parameters declared without one.
trString const trEmptySentinel("#!}EMPTY{#!");
trIntHint trDefaultIntHint;
trDoubleHint trDefaultDoubleHint;

trString const trUnsignedLongFormat("%lu");

// The registry of node classes: its eight base entries and empty tables.
trClassPool trClasses;

trString trAppPath;

// Each who-object is a plain node that stands for a source of changes.
static trBase trWhoSystemNode;
static trBase trWhoUserNode;
static trBase trWhoUserIndirectNode;
trBase *trWhoSystem = &trWhoSystemNode;
trBase *trWhoUser = &trWhoUserNode;
trBase *trWhoUserIndirect = &trWhoUserIndirectNode;

trRand trGlobalRand;

trString const trDefaultFilePath("09BA0814-9D0C-4AFF-9F34-12CC567D2241");
trString const trRenderOutputPathKey("renderOutput");
trString const trSequenceOutputPathKey("sequenceOutput");
trString const trTemporaryOutputFilesPathKey("temporaryOutputFiles");

// Runs the noise set-up and builds the direction table and the per-thread records.
trPrivateGlobals trThePrivateGlobals;

// Ray identities, one counter per thread, each starting 65,536 above the last.
trRayIdentities trRayId;

// The per-thread flags of the cloud lighting code, all clear, one byte per thread.
std::vector<char> trVoxelLightingSystem::sIsDuringLookup(std::size_t(trMaxThreads()), 0);
std::vector<char> trVoxelScatterModelA::sIsDuringLookup(std::size_t(trMaxThreads()), 0);

// Draws the identities of undo tokens.
trRand trUndoToken::ms_rand(90210);
