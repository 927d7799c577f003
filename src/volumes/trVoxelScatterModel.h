#pragma once
// The scatter models that light cloud voxels. Their estimates come with the scatter
// models themselves; for now this holds the per-thread flag they share.

#include <vector>

class trVoxelScatterModelA {
public:
    // One entry per render thread (trMaxThreads of them, made at load), set while that
    // thread is inside a lookup: a ray traced for background light that meets the same
    // cloud again must not start a new walk. Only its own thread touches an entry.
    static std::vector<char> sIsDuringLookup;
};
