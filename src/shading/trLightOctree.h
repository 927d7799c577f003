#pragma once
// Shared stores of lighting samples, looked up by position with a smoothing
// threshold; every thread of a render reads and inserts under the store's mutex.
// The sample tree and its lookup come with the direct and indirect lighting; for
// now a store is its box, its flags and its threshold.

#include "foundation/trColour.h"
#include "foundation/trVector.h"

#include <memory>
#include <mutex>

class trLightOctree {
public:
    trLightOctree(trVector const &corner, trVector const &size, bool holdsOcclusion, bool holdsColour,
                  double threshold)
        : Corner(corner), Size(size), HoldsOcclusion(holdsOcclusion), HoldsColour(holdsColour), threshold(threshold)
    {
    }

    std::mutex Mutex;
    trVector Corner;
    trVector Size;
    bool HoldsOcclusion;
    bool HoldsColour;
    double threshold;
    trFCol ColourScale = trFCol(1.0f, 1.0f, 1.0f);
};

// One light's store, with a link to the store all lights share and the light's
// weight among them.
class trLightOctreePair {
public:
    trLightOctreePair(double weight, trVector const &corner, trVector const &size, trLightOctree *shared)
        : Own(std::make_unique<trLightOctree>(corner, size, true, false, 0.33)), Shared(shared), Weight(weight)
    {
    }

    std::unique_ptr<trLightOctree> Own;
    trLightOctree *Shared;
    double Weight;
};
