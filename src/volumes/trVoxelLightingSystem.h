#pragma once
// Light arriving at a cloud's voxels from outside, gathered by rays from inside
// each voxel and cached per direction. The caches and lookups come with the voxel
// lighting system; for now an instance is the render's two settings it is made from.

#include <vector>

namespace trVoxelLightingSystem {

// One entry per render thread (trMaxThreads of them, made at load), set while that
// thread is inside a lookup; only its own thread touches an entry.
extern std::vector<char> sIsDuringLookup;

struct Instance {
    // `firstSetting` is kept unchanged; `quality` sets the samples per side.
    Instance(int firstSetting, int quality);

    // Quality 0..7 gives 3, 4, 6, 8, 11, 16, 23, 32 samples per side; higher
    // qualities the rounded square root of 8 << quality. Negative counts as 0.
    static int SamplesPerSideForQuality(int quality);

    int FirstSetting;
    int SamplesPerSide;
};

}  // namespace trVoxelLightingSystem
