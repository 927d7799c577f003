#include "foundation/trPrivateGlobals.h"

#include "foundation/trCores.h"
#include "foundation/trMessages.h"
#include "foundation/trRand.h"
#include "noise/trNoise.h"
#include "shading/trMaterial.h"
#include "shading/trShadingInterface.h"
#include "shading/trThreadRenderRecord.h"

#include <chrono>
#include <cmath>

trPrivateGlobals::trPrivateGlobals()
{
    trOutMsg("Constructing trPrivateGlobals");
    loadTime = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    trNoiseInit();
    BuildDirections(directions);
    numThreadSlots = trMaxThreads();
    threadRecords = std::make_unique<trThreadRenderRecord[]>(numThreadSlots);
    persistentMaterials.reserve(10000);
    trShadingInterface::ABIStaticInit();
}

trPrivateGlobals::~trPrivateGlobals()
{
    trOutMsg("Destroying trPrivateGlobals");
    // The materials are the process's: they go with the vector that holds them.
    trFreePersistentMaterials();
}

void trPrivateGlobals::BuildDirections(trVector *out)
{
    trRand rand;
    rand.Seed(1230);
    for (int i = 0; i < kNumDirections; ++i) {
        double const bound = 2.25 / std::sqrt(float(i));
        // acos falls as its argument rises, so a dot clearly below cos(bound) can't be
        // rejected; only near the bound is acos itself consulted, keeping the exact test.
        double const safeBelow = bound < 3.14159 ? std::cos(bound) - 1e-9 : -2.0;
        for (;;) {
            double x = rand.Double() * 2 - 1;
            double y = rand.Double() * 2 - 1;
            double z = rand.Double() * 2 - 1;
            trVector candidate(x, y, z);
            if (candidate.Dot(candidate) > 1)
                continue;
            candidate = candidate.Normalized();
            bool accepted = true;
            for (int e = 0; e < i; ++e) {
                double opposite = -candidate.Dot(out[e]);
                if (opposite < safeBelow)
                    continue;
                if (std::acos(opposite) < bound) {
                    accepted = false;
                    break;
                }
            }
            if (accepted) {
                out[i] = candidate;
                break;
            }
        }
    }
}
