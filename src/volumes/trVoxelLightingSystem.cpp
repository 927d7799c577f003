#include "volumes/trVoxelLightingSystem.h"

#include <cmath>

namespace trVoxelLightingSystem {

Instance::Instance(int firstSetting, int quality)
    : FirstSetting(firstSetting), SamplesPerSide(SamplesPerSideForQuality(quality))
{
}

int Instance::SamplesPerSideForQuality(int quality)
{
    static int const kTable[8] = {3, 4, 6, 8, 11, 16, 23, 32};
    if (quality < 0)
        quality = 0;
    if (quality < 8)
        return kTable[quality];
    // Past 40 the count no longer fits the rays a render could shoot.
    if (quality > 40)
        quality = 40;
    return int(std::ceil(std::sqrt(std::ldexp(8.0, quality)) - 0.5));
}

}  // namespace trVoxelLightingSystem
