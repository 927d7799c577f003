// Cached noise objects: bit for bit the free functions, along paths that stay in a cell,
// cross faces, run backwards and jump.

#include "noise/trNoiseInst.h"

#include "foundation/trRand.h"
#include "noise/trNoise.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

class NoiseInstTest : public ::testing::Test {
protected:
    void SetUp() override { trNoiseInit(); }
};

// A ray march with small steps, then a few jumps and points right at cell faces.
std::vector<trVector> Path()
{
    std::vector<trVector> path;
    trVector p(-2.3, 0.71, 5.02);
    trVector const step(0.037, -0.011, 0.023);
    for (int i = 0; i < 3000; ++i) {
        path.push_back(p);
        p += step;
    }
    for (int i = 0; i < 1000; ++i) {
        path.push_back(p);
        p -= step * 0.5;
    }
    trRand rand;
    rand.Seed(77);
    for (int i = 0; i < 500; ++i)
        path.emplace_back(rand.Double() * 2000 - 1000, rand.Double() * 10, rand.Double() * 2 - 1);
    for (int i = -3; i <= 3; ++i) {
        path.emplace_back(double(i), 0.5, 0.5);
        path.emplace_back(std::nextafter(double(i), -1e9), 0.5, 0.5);
        path.emplace_back(0.5, std::nextafter(double(i), 1e9), double(i));
        path.emplace_back(double(i), double(i), double(i));
    }
    return path;
}

TEST_F(NoiseInstTest, EqualTheFreeFunctionsBitForBitCopiesCarryTheCacheAndInitResetsIt)
{
    auto const path = Path();
    for (int seed : {0, 5, 255, 1000}) {
        trNoiseInst3 plain, shifted;
        trNoiseInst4 four;
        plain.Init(false, seed);
        shifted.Init(true, seed);
        four.Init(true, seed);
        trVector const off = trNoff3(seed);
        double w = -1.5;
        for (trVector const &p : path) {
            double const a[3] = {p.x, p.y, p.z};
            // The fourth coordinate carries no offset.
            double const b[4] = {p.x + off.x, p.y + off.y, p.z + off.z, w};
            ASSERT_EQ(plain.Noise(p, 0.0), trNoise3(a)) << p.x << " " << p.y << " " << p.z;
            ASSERT_EQ(shifted.Noise(p, 0.0), trNoise3(b)) << seed;
            ASSERT_EQ(plain.Noise3(b), trNoise3(b));
            ASSERT_EQ(four.Noise(p, w), trNoise4(b)) << w;
            ASSERT_EQ(four.Noise4(b), trNoise4(b));
            w += 0.013;
        }
        trNoiseInst4 copy(four);
        double const q[4] = {1.5 + off.x, 2.5 + off.y, 3.5 + off.z, 0.25};
        EXPECT_EQ(copy.Noise(trVector(1.5, 2.5, 3.5), 0.25), trNoise4(q));
    }

    trNoiseInst3 a;
    a.Init(true, 3);
    trVector const p(10.25, -4.5, 0.125);
    double const first = a.Noise(p, 0.0);
    trNoiseInst3 b(a);
    trVector const q(10.26, -4.49, 0.126);
    EXPECT_EQ(b.Noise(q, 0.0), a.Noise(q, 0.0));

    // A new seed moves the pattern at once, even where the old cell would still hit.
    b.Init(true, 4);
    trVector const off = trNoff3(4);
    double const moved[3] = {p.x + off.x, p.y + off.y, p.z + off.z};
    EXPECT_EQ(b.Noise(p, 0.0), trNoise3(moved));
    EXPECT_NE(b.Noise(p, 0.0), first);

    // Without an offset the point is used as it stands.
    b.Init(false, 4);
    double const plain[3] = {p.x, p.y, p.z};
    EXPECT_EQ(b.Noise(p, 0.0), trNoise3(plain));
}

} // namespace
