// Noise tables and lattice noises: draw order, lattice zeros, period, hashing, range.

#include "noise/trNoise.h"

#include "foundation/trColour.h"
#include "foundation/trRand.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

class NoiseTest : public ::testing::Test {
protected:
    void SetUp() override { trNoiseInit(); }
};

long Hash2(long i, long j) { return perm[perm[i & 255] + (j & 255)]; }
long Hash3(long i, long j, long k) { return perm[Hash2(i, j) + (k & 255)]; }
double S(double t) { return t * t * (3.0 - 2.0 * t); }

std::vector<double> Coordinates(unsigned long seed, int count, double scale)
{
    trRand rand;
    rand.Seed(seed);
    std::vector<double> v(count);
    for (double &c : v)
        c = (rand.Double() * 2.0 - 1.0) * scale;
    return v;
}

TEST_F(NoiseTest, TablesFollowTheDrawOrderOfAFreshGeneratorAndOffsetsComeFromThem)
{
    trNoiseInit(); // a second call changes nothing
    trMersenneTwister mt;
    mt.sgenrand(11);
    // 768 draws, of which the second 256 are then overwritten by the first 256.
    for (int i = 0; i < 768; ++i) {
        unsigned long const draw = mt.genrand();
        ASSERT_EQ(cellInts[i], i < 256 || i >= 512 ? draw : cellInts[i - 256]) << i;
        ASSERT_EQ(cellInts[i + 768], cellInts[i]) << i;
    }
    mt.sgenrand(0);
    for (int i = 0; i < 256; ++i) {
        double const *grads[4][2] = {{&grad1[i], &grad1[i + 256]}, {grad2[i], grad2[i + 256]},
                                     {grad3[i], grad3[i + 256]}, {grad4[i], grad4[i + 256]}};
        double const *noffs[4] = {&noff1[i], noff2[i], noff3[i], noff4[i]};
        for (int n = 1; n <= 4; ++n) {
            double v[4], len = 0.0;
            for (int k = 0; k < n; ++k) {
                v[k] = (double(mt.genrand() & 0x1ff) - 256.0) / 256.0;
                ASSERT_EQ(noffs[n - 1][k], double(mt.genrand()) / 256.0) << i;
                len += v[k] * v[k];
            }
            for (int k = 0; k < n; ++k) { // gradients of two or more components are unit
                ASSERT_EQ(grads[n - 1][0][k], n == 1 ? v[k] : v[k] / std::sqrt(len)) << i << " " << n;
                ASSERT_EQ(grads[n - 1][1][k], grads[n - 1][0][k]);
            }
        }
    }
    long p[256];
    for (int i = 0; i < 256; ++i)
        p[i] = i;
    for (int k = 255; k > 0; --k)
        std::swap(p[k], p[mt.genrand() & 255]);
    for (int i = 0; i < 512; ++i)
        ASSERT_EQ(perm[i], p[i & 255]) << i;
    mt.sgenrand(0);
    mt.genrand();
    EXPECT_EQ(trNoff1(0), double(mt.genrand()) / 256.0); // the second draw after seeding
    EXPECT_EQ(trNoff1(300), noff1[44]);
    EXPECT_EQ(trNoff1(-3), noff1[253]); // negative seeds wrap into the table
    EXPECT_EQ(trNoff3(9), trVector(noff3[9][0], noff3[9][1], noff3[9][2]));
    EXPECT_EQ(trNoff3(1, 2, 258), trVector(noff1[1], noff1[2], noff1[2]));
}

TEST_F(NoiseTest, GradientNoiseIsZeroOnTheLatticeRepeatsEvery256AndIsBoundedVariedAndContinuous)
{
    for (int x = -300; x <= 300; x += 7)
        for (int z = -5000; z <= 5000; z += 1111) {
            double const p[4] = {double(x), double(x / 3), double(z), double(z - x)};
            ASSERT_TRUE(trNoise3(p) == 0.0 && trNoise2(p) == 0.0 && trNoise4(p) == 0.0 && trNoise1(p[0]) == 0.0)
                << x << " " << z;
        }
    auto const c = Coordinates(8, 30000, 300.0);
    double sumSq = 0.0;
    for (size_t n = 0; n + 3 < c.size(); n += 4) {
        double const p[4] = {c[n], c[n + 1], c[n + 2], c[n + 3]};
        double const v = trNoise3(p);
        sumSq += v * v;
        ASSERT_TRUE(std::fabs(v) < 1.1 && std::fabs(trNoise4(p)) < 1.1 && std::fabs(trNoise2(p)) < 1.1 &&
                    std::fabs(trNoise1(p[0])) < 1.1);
        // The slope is a few units at most, so a tiny step moves the value little.
        double const q[4] = {p[0] + 1e-7, p[1] - 1e-7, p[2] + 1e-7, p[3] + 1e-7};
        ASSERT_LT(std::fabs(trNoise3(q) - v), 1e-5);
        ASSERT_LT(std::fabs(trNoise4(q) - trNoise4(p)), 1e-5);
        for (int axis = 0; n < 400 && axis < 4; ++axis) {
            double w[4] = {p[0], p[1], p[2], p[3]};
            w[axis] += 256.0;
            EXPECT_NEAR(trNoise4(w), trNoise4(p), 1e-9);
            EXPECT_NEAR(trNoise3(w), trNoise3(p), 1e-9);
            EXPECT_NEAR(trNoise2(w), trNoise2(p), 1e-9);
        }
        EXPECT_NEAR(trNoise1(p[0] - 512.0), trNoise1(p[0]), 1e-9);
    }
    double const rms = std::sqrt(sumSq / double(c.size() / 4));
    EXPECT_GT(rms, 0.1);
    EXPECT_LT(rms, 0.5);
    // Across a cell face, where the corners change.
    double const width[2] = {0.3, 0.6};
    for (int face = -3; face <= 3; ++face) {
        double const below[3] = {std::nextafter(double(face), -1e9), 0.3, 0.7};
        double const above[3] = {double(face), 0.3, 0.7};
        EXPECT_NEAR(trNoise3(below), trNoise3(above), 1e-12);
        EXPECT_NEAR(trOldSharpNoise3(below), trOldSharpNoise3(above), 1e-12);
        EXPECT_NEAR(trLerpNoise3_SmoothXY(below, width), trLerpNoise3_SmoothXY(above, width), 1e-12);
    }
    // Nothing finite comes of these; the point is that no index leaves the tables.
    double const bad[4] = {std::nan(""), INFINITY, -INFINITY, 1e300};
    (void)trNoise3(bad);
    (void)trNoise4(bad);
    (void)trLerpNoise3(bad + 1);
}

TEST_F(NoiseTest, SlicesAndMidpointsMatchTheHandFormula)
{
    // Along x with the other axes on the lattice, only the x terms of two corners survive.
    for (double x : Coordinates(21, 200, 600.0)) {
        long const i = long(std::floor(x + 4096.0)), j = 17, k = -40;
        double const r = x + 4096.0 - double(i);
        auto blend = [&](double u, double v) { return u + S(r) * (v - u); };
        double const p[3] = {x, double(j), double(k)};
        EXPECT_NEAR(trNoise3(p), blend(r * grad3[Hash3(i, j, k)][0], (r - 1) * grad3[Hash3(i + 1, j, k)][0]), 1e-15);
        EXPECT_NEAR(trNoise2(p), blend(r * grad2[Hash2(i, j)][0], (r - 1) * grad2[Hash2(i + 1, j)][0]), 1e-15);
        EXPECT_NEAR(trNoise1(x), blend(r * grad1[perm[i & 255]], (r - 1) * grad1[perm[(i + 1) & 255]]), 1e-15);
        // Along w in 4D: the w components, hashed last.
        double const p4[4] = {double(j), double(k), double(j), x};
        long const h = Hash3(j, k, j);
        EXPECT_NEAR(trNoise4(p4), blend(r * grad4[perm[h + (i & 255)]][3], (r - 1) * grad4[perm[h + ((i + 1) & 255)]][3]),
                    1e-15);
    }
    // At a cell's centre every weight is 1/2: the mean of the 8 corner dot products.
    for (int c = 0; c < 50; ++c) {
        int const i = c * 37 - 900, j = c * 11 + 5, k = 300 - c * 53;
        double sum = 0.0;
        for (int corner = 0; corner < 8; ++corner) {
            int const dx = corner & 1, dy = (corner >> 1) & 1, dz = corner >> 2;
            double const *g = grad3[Hash3(i + dx, j + dy, k + dz)];
            sum += (0.5 - dx) * g[0] + (0.5 - dy) * g[1] + (0.5 - dz) * g[2];
        }
        double const p[3] = {i + 0.5, j + 0.5, k + 0.5};
        EXPECT_NEAR(trNoise3(p), sum / 8.0, 1e-14);
    }
}

TEST_F(NoiseTest, CellNoiseIsAHashOfTheLowBytesAndValueNoisesBlendCornerValues)
{
    int differing = 0;
    for (int n = 0; n < 200; ++n) {
        int const c[3] = {n * 7 - 700, n * 3, 91 - n * 13};
        double const *g = grad3[Hash3(c[0], c[1], c[2])];
        double const v = trCellNoise3(c);
        int const wrapped[3] = {c[0] + 256 * 3, c[1] - 256 * 40, c[2] + 256 * 1000};
        EXPECT_TRUE(v == 0.5 * g[0] && trCellNoise3(wrapped) == v);
        EXPECT_EQ(trCellInt3(wrapped), cellInts[Hash3(c[0], c[1], c[2])]);
        int const next[3] = {c[0] + 1, c[1], c[2]}, w2[2] = {c[0] - 512, c[1] + 256};
        differing += trCellNoise3(next) != v;
        EXPECT_EQ(trCellNoise2(w2), 0.5 * grad2[Hash2(c[0], c[1])][0]);
        trFCol col;
        trCellNoise3(col, c);
        EXPECT_EQ(col, trFCol(float(v), float(0.5 * g[1]), float(0.5 * g[2])));
    }
    EXPECT_GT(differing, 190);

    double const narrow[2] = {0.3, 0.3};
    for (int n = 0; n < 40; ++n) {
        int const i = n * 5 - 100, j = 3 - n, k = n * n;
        double const p[3] = {double(i), double(j), double(k)};
        double const corner = grad3[Hash3(i, j, k)][0];
        double const other = grad3[Hash3(i + 1, j, k)][0];
        EXPECT_TRUE(trLerpNoise3(p) == corner && trOldSharpNoise3(p) == corner);
        double const mid[3] = {i + 0.5, double(j), double(k)};
        for (double v : {trLerpNoise3(mid), trOldSharpNoise3(mid), trLerpNoise3_SmoothXY(mid, narrow)})
            EXPECT_NEAR(v, 0.5 * (corner + other), 1e-15);
        // Outside its narrow ramp the blend holds the corner's value.
        double const nearCorner[3] = {i + 0.1, double(j), double(k)};
        EXPECT_NEAR(trLerpNoise3_SmoothXY(nearCorner, narrow), corner, 1e-15);
    }
    // A ramp as wide as the cell or wider is the plain linear blend; none at all is the
    // sharpest allowed, a quarter cell.
    double const full[2] = {1.0, 1.0}, wide[2] = {3.0, 100.0}, none[2] = {0.0, -1.0}, quarter[2] = {0.25, 0.25};
    auto const c = Coordinates(13, 900, 50.0);
    for (size_t n = 0; n + 2 < c.size(); n += 3) {
        double const *p = &c[n], lerp = trLerpNoise3(p);
        for (double v : {trLerpNoise3_SmoothXY(p, full), trLerpNoise3_SmoothXY(p, wide), trOldSharpNoise3(p)})
            EXPECT_NEAR(v, lerp, 1e-12);
        EXPECT_EQ(trLerpNoise3_SmoothXY(p, none), trLerpNoise3_SmoothXY(p, quarter));
    }
}

} // namespace
