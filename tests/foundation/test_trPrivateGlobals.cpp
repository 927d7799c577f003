#include "foundation/trCores.h"
#include "foundation/trGlobals.h"
#include "foundation/trPrivateGlobals.h"
#include "foundation/trRand.h"
#include "foundation/trString.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

TEST(trPrivateGlobals, DirectionsAreUnitKeepTheirSpreadAndAreTheSameOnEveryBuild)
{
    trVector const *d = trThePrivateGlobals.Directions();
    for (int i = 0; i < trPrivateGlobals::kNumDirections; ++i) {
        ASSERT_NEAR(d[i].Length(), 1.0, 1e-12) << i;
        double bound = 2.25 / std::sqrt(float(i));
        for (int e = 0; e < i; ++e)
            ASSERT_GE(std::acos(-d[i].Dot(d[e])), bound) << "entry " << i << " against " << e;
    }

    std::vector<trVector> again(trPrivateGlobals::kNumDirections);
    trPrivateGlobals::BuildDirections(again.data());
    for (int i = 0; i < trPrivateGlobals::kNumDirections; ++i)
        ASSERT_EQ(again[i], trThePrivateGlobals.Direction(i));
    EXPECT_EQ(trThePrivateGlobals.Direction(1024 + 5), trThePrivateGlobals.Direction(5));

    // The first entry is the first draw inside the unit ball, seeded with 1230.
    trRand rand;
    rand.Seed(1230);
    trVector first;
    for (;;) {
        double x = rand.Double() * 2 - 1, y = rand.Double() * 2 - 1, z = rand.Double() * 2 - 1;
        if (x * x + y * y + z * z <= 1) {
            first = trVector(x, y, z).Normalized();
            break;
        }
    }
    EXPECT_EQ(trThePrivateGlobals.Direction(0), first);
}

TEST(trPrivateGlobals, PerThreadRecordsAndStateAreReadyAtLoad)
{
    EXPECT_EQ(trThePrivateGlobals.NumThreadSlots(), trMaxThreads());
    EXPECT_NE(trThePrivateGlobals.ThreadRecords(), nullptr);
    EXPECT_TRUE(trThePrivateGlobals.PersistentMaterials().capacity() >= 10000u &&
                trThePrivateGlobals.PersistentMaterials().empty());
    EXPECT_GT(trThePrivateGlobals.LoadTime(), 1.6e9) << "seconds since the epoch";
}
