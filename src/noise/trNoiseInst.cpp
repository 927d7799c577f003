// Set-up of the cached noise objects. Their Noise3 and Noise4 live in trNoise.cpp,
// beside the free functions whose results they must repeat bit for bit.

#include "noise/trNoiseInst.h"

#include "noise/trNoise.h"

namespace {
void SetOffset(double *offset, bool useOffset, int seed)
{
    trVector const n = useOffset ? trNoff3(seed) : trVector(0.0, 0.0, 0.0);
    offset[0] = n.x;
    offset[1] = n.y;
    offset[2] = n.z;
}
} // namespace

void trNoiseInst3::Init(bool useOffsetIn, int seedIn)
{
    cacheValid = false;
    useOffset = useOffsetIn;
    seed = seedIn;
    SetOffset(offset, useOffset, seed);
}

void trNoiseInst4::Init(bool useOffsetIn, int seedIn)
{
    cacheValid = false;
    useOffset = useOffsetIn;
    seed = seedIn;
    SetOffset(offset, useOffset, seed);
}
