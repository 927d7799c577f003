// Voronoi patterns against a plain search loop and a brute-force search of a wider
// block, and the soft forms against their limits and derivatives.

#include "noise/trVoronoi.h"

#include "foundation/trColour.h"
#include "foundation/trRand.h"
#include "noise/trNoise.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

class VoronoiTest : public ::testing::Test {
protected:
    void SetUp() override { trNoiseInit(); }
};

long Hash3(long a, long b, long c) { return perm[perm[perm[a & 255] + (b & 255)] + (c & 255)]; }
double H2(long a, long b) { return grad2[perm[perm[a & 255] + (b & 255)]][0]; }

trVector Feature(long x, long y, long z)
{
    return trVector(x + 0.5 + 0.5 * grad3[Hash3(x + 38, y + 130, z + 142)][0],
                    y + 0.5 + 0.5 * grad3[Hash3(x + 73, y + 22, z + 72)][0],
                    z + 0.5 + 0.5 * grad3[Hash3(x + 48, y + 63, z + 32)][0]);
}

// The search as a plain loop over 3^3 (or, with reach 2, 5^3) cells, z slowest, the
// earlier cell keeping a tie. Returns the value gradient of the nearest cell.
double const *PlainVoronoi3(trVector &nearest, trVector &second, double const *p, long reach = 1)
{
    long const b[3] = {long(std::floor(p[0])), long(std::floor(p[1])), long(std::floor(p[2]))};
    double d1 = 10.0, d2 = 10.0;
    nearest = second = trVector(10.0, 0.0, 0.0);
    long w[3] = {};
    for (long z = b[2] - reach; z <= b[2] + reach; ++z)
        for (long y = b[1] - reach; y <= b[1] + reach; ++y)
            for (long x = b[0] - reach; x <= b[0] + reach; ++x) {
                trVector const f = Feature(x, y, z);
                trVector const v(p[0] - f.x, p[1] - f.y, p[2] - f.z);
                double const d = v.x * v.x + v.y * v.y + v.z * v.z;
                if (d < d1)
                    d2 = d1, second = nearest, d1 = d, nearest = v, w[0] = x, w[1] = y, w[2] = z;
                else if (d < d2)
                    d2 = d, second = v;
            }
    return grad3[Hash3(w[0] + 73, w[1] + 98, w[2] + 57)];
}

std::vector<double> Points(unsigned long seed, int count, double scale)
{
    trRand rand;
    rand.Seed(seed);
    std::vector<double> v(count);
    for (double &c : v)
        c = (rand.Double() * 2.0 - 1.0) * scale;
    return v;
}

TEST_F(VoronoiTest, MatchesThePlainLoopAndABruteForceSearchOfAWiderBlock)
{
    auto const c = Points(31, 9000, 1e4);
    int ties = 0;
    for (size_t n = 0; n + 2 < c.size(); n += 3) {
        double const p[3] = {c[n] * 0.01, c[n + 1] * 0.01, c[n + 2] * 0.01};
        trVector nearest, second, wideNearest, wideSecond;
        PlainVoronoi3(wideNearest, wideSecond, p, 2);
        // Midway between the two nearest features the distances often tie exactly, and then
        // the earlier cell in the loop must come first.
        trVector const at[2] = {trVector(p[0], p[1], p[2]),
                                (trVector(p[0], p[1], p[2]) * 2.0 - (wideNearest + wideSecond)) * 0.5};
        for (int k = 0; k < 2; ++k) {
            double const q[3] = {at[k].x, at[k].y, at[k].z};
            trVector plainNearest, plainSecond;
            double const *g = PlainVoronoi3(plainNearest, plainSecond, q);
            double value;
            trVoronoi3(value, nearest, second, q);
            ASSERT_TRUE(nearest == plainNearest && second == plainSecond && value == 0.5 * g[0] &&
                        nearest.LengthSq() <= second.LengthSq())
                << q[0] << " " << q[1] << " " << q[2];
            // The 27 cells hold the two nearest of the 125.
            EXPECT_TRUE(k == 1 || (nearest == wideNearest && second == wideSecond));
            ties += nearest.LengthSq() == second.LengthSq();
            trFCol col;
            trVoronoi3(col, nearest, second, q);
            EXPECT_EQ(col, trFCol(float(0.5 * g[0]), float(0.5 * g[1]), float(0.5 * g[2])));
        }
    }
    EXPECT_GT(ties, 100);
}

TEST_F(VoronoiTest, TwoDimensionalAgreesWithABruteForceSearch)
{
    long const ox0 = long(noff1[1]), ox1 = long(noff1[2]), oy0 = long(noff1[4]), oy1 = long(noff1[5]);
    auto const c = Points(4, 2000, 300.0);
    int secondAgrees = 0;
    for (size_t n = 0; n + 1 < c.size(); n += 2) {
        double const p[2] = {c[n], c[n + 1]};
        long const bx = long(std::floor(p[0])), by = long(std::floor(p[1]));
        // Nearest over 5x5 cells; second nearest over the 3x3 the search covers, and
        // over 5x5, which in 2D it sometimes misses.
        double best = 1e9, next3 = 1e9, next5 = 1e9;
        long wx = 0, wy = 0;
        for (long y = by - 2; y <= by + 2; ++y)
            for (long x = bx - 2; x <= bx + 2; ++x) {
                double const vx = p[0] - (x + 0.5 + 0.5 * H2(x + ox0, y + ox1));
                double const vy = p[1] - (y + 0.5 + 0.5 * H2(x + oy0, y + oy1));
                double const d = vx * vx + vy * vy;
                bool const inner = std::labs(x - bx) <= 1 && std::labs(y - by) <= 1;
                if (d < best)
                    next5 = best, next3 = inner ? best : next3, best = d, wx = x, wy = y;
                else
                    next5 = std::min(next5, d), next3 = inner ? std::min(next3, d) : next3;
            }
        tr2Vector nearest, second;
        double const value = trVoronoi2(nearest, second, p);
        EXPECT_NEAR(nearest.x * nearest.x + nearest.y * nearest.y, best, 1e-12);
        EXPECT_NEAR(second.x * second.x + second.y * second.y, next3, 1e-12);
        secondAgrees += std::fabs(second.x * second.x + second.y * second.y - next5) < 1e-12;
        EXPECT_EQ(value, 0.5 * H2(wx + long(noff1[100]), wy + long(noff1[101])));
    }
    EXPECT_GT(secondAgrees, 900);
}

TEST_F(VoronoiTest, SmoothFormsApproachTheSharpOneAndHaveTheRightGradient)
{
    auto const c = Points(6, 600, 80.0);
    for (size_t n = 0; n + 2 < c.size(); n += 3) {
        double const p[3] = {c[n], c[n + 1], c[n + 2]};
        trVector nearest, second;
        trFCol exact;
        trVoronoi3(exact, nearest, second, p);
        double const hard = nearest.Length(), soft = 8.0;
        double sv, distance;
        trDEV_SmoothVoronoi3(sv, p, 0.0, 10.0);
        EXPECT_NEAR(sv, hard, 1e-12); // the newer form with no softness: the least distance
        trVector gradient;
        trOldSmoothVoronoi3(sv, distance, gradient, p, &soft);
        // A soft minimum of 27 lies below the least distance, by at most ln(27) / k.
        EXPECT_TRUE(distance <= hard + 1e-12 && distance >= hard - std::log(27.0) / soft - 1e-12 &&
                    std::fabs(sv) <= 0.5);
        double const h = 1e-6;
        for (int axis = 0; axis < 3; ++axis) {
            double a[3] = {p[0], p[1], p[2]}, b[3] = {p[0], p[1], p[2]};
            a[axis] += h;
            b[axis] -= h;
            double da, db, va, vb;
            trVector ga, gb;
            trOldSmoothVoronoi3(va, da, ga, a, &soft);
            trOldSmoothVoronoi3(vb, db, gb, b, &soft);
            EXPECT_NEAR((da - db) / (2 * h), gradient(axis), 1e-5) << axis;
        }

        // Very sharp: the least distance and, away from the edges, the cell's values.
        double const sharp = 2000.0;
        trFCol col;
        trOldSmoothVoronoi3(col, distance, gradient, p, &sharp);
        EXPECT_NEAR(distance, hard, std::log(27.0) / sharp + 1e-12);
        if (second.Length() - hard > 0.05) {
            EXPECT_NEAR(col.r, exact.r, 1e-6);
            EXPECT_NEAR((gradient - nearest.Normalized()).Length(), 0.0, 1e-6);
        }
    }
}

TEST_F(VoronoiTest, DevSmoothFormIsSeamlessAndFaceFunctions)
{
    // Crossing a cell face swaps cells in and out of the block; the fade hides it.
    for (int face = -4; face <= 4; ++face)
        for (int axis = 0; axis < 3; ++axis) {
            double a[3] = {0.31, 7.77, -2.4}, b[3] = {0.31, 7.77, -2.4};
            a[axis] = std::nextafter(double(face), -1e9);
            b[axis] = double(face);
            double oa, ob;
            trDEV_SmoothVoronoi3(oa, a, 0.1, 4.0);
            trDEV_SmoothVoronoi3(ob, b, 0.1, 4.0);
            EXPECT_NEAR(oa, ob, 1e-9) << face << " " << axis;
        }

    trVector out;
    trVector const p(1.3, -0.2, 4.9);
    trDEV_SmoothVoronoiFace3(out, p);
    double const xyz[3] = {p.x, p.y, p.z};
    double const k = 64.0;
    double value, distance;
    trVector gradient;
    trOldSmoothVoronoi3(value, distance, gradient, xyz, &k);
    EXPECT_EQ(out, trVector(0.0, distance, 0.0));

    auto const c = Points(12, 300, 30.0);
    for (size_t n = 0; n + 5 < c.size(); n += 6) {
        trVector const start(c[n], c[n + 1], c[n + 2]), dir(c[n + 3], c[n + 4], c[n + 5]);
        trSharpVoronoiFace3(out, start, dir);
        // Forward on the line through the start ...
        EXPECT_TRUE((out - start).Cross(dir).Length() < 1e-6 * (1.0 + (out - start).Length() * dir.Length()) &&
                    (out - start).Dot(dir) >= 0.0);
        // ... on a face of the start's cell: its feature and one other are nearest.
        double const from[3] = {start.x, start.y, start.z}, at[3] = {out.x, out.y, out.z};
        trVector nearest, second;
        trVoronoi3(value, nearest, second, from);
        trVector const home = start - nearest;
        trVoronoi3(value, nearest, second, at);
        EXPECT_NEAR(nearest.Length(), second.Length(), 1e-6);
        EXPECT_NEAR((out - home).Length(), nearest.Length(), 1e-6);
    }
    trSharpVoronoiFace3(out, p, trVector(0.0, 0.0, 0.0));
    EXPECT_EQ(out, p);
}

} // namespace
