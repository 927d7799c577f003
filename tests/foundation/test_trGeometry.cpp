#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "foundation/trGeometry.h"
#include "shading/trIntersection.h"

namespace {

const trVector kTri[3] = {trVector(0, 0, 0), trVector(1, 0, 0), trVector(0, 1, 0)};

void ExpectNear(trVector const &a, trVector const &b)
{
    EXPECT_LT((a - b).Length(), 1e-12) << a.x << " " << a.y << " " << a.z;
}

} // namespace

TEST(trIntersectRayAndLineTri, KnownBarycentricsAndMisses)
{
    trIntersection isect;
    ASSERT_TRUE(trIntersectRayTri(trRay(trVector(0.25, 0.5, 1), trVector(0.25, 0.5, -1)), kTri, isect));
    EXPECT_TRUE(isect.t == 0.5 && isect.u == 0.25 && isect.v == 0.5 && isect.Point == trVector(0.25, 0.5, 0));

    // From the other side, on a tilted tri: P = P0 + u e1 + v e2 reproduces the hit.
    trVector tilted[3] = {trVector(1, 2, 3), trVector(4, 2, 5), trVector(0, 6, 4)};
    trVector target = tilted[0] + (tilted[1] - tilted[0]) * 0.2 + (tilted[2] - tilted[0]) * 0.3;
    trIntersection h;
    ASSERT_TRUE(trIntersectRayTri(trRay(trVector(-5, -5, -5), target * 2.0 - trVector(-5, -5, -5)), tilted, h));
    ExpectNear(trVector(h.u, h.v, h.t), trVector(0.2, 0.3, 0.5));

    // Outside the tri: no hit, but u, v and t are still written.
    isect.Point = trVector(9, 9, 9);
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.75, 0.5, 1), trVector(0.75, 0.5, -1)), kTri, isect));
    EXPECT_TRUE(isect.u == 0.75 && isect.v == 0.5 && isect.t == 0.5 && isect.Point == trVector(9, 9, 9));
    // In the plane of the tri: the determinant test.
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(-1, 0.2, 0), trVector(2, 0.2, 0)), kTri, isect));
    // Too short to reach it, and starting on it.
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 2), trVector(0.2, 0.2, 1)), kTri, isect));
    EXPECT_GT(isect.t, 1.0);
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 0), trVector(0.2, 0.2, -1)), kTri, isect));
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 1), trVector(0.2, 0.2, -1)), nullptr, isect));

    double t = 0, u = 0, v = 0;
    // Behind the origin still counts: a line, not a ray.
    ASSERT_TRUE(trIntersectLineTriSlow(trVector(0.25, 0.5, -2), trVector(0, 0, -1), kTri, t, u, v));
    EXPECT_TRUE(t == -2.0 && u == 0.25 && v == 0.5);
    EXPECT_TRUE(trIntersectLineTriSlow(trVector(0.5, 0.5, 1), trVector(0, 0, 1), kTri, t, u, v));  // on an edge
    EXPECT_FALSE(trIntersectLineTriSlow(trVector(0.6, 0.5, 1), trVector(0, 0, 1), kTri, t, u, v) ||
                 trIntersectLineTriSlow(trVector(0.2, 0.2, 1), trVector(1, 0, 0), kTri, t, u, v));
}

TEST(trClipPolygonAgainstPlane, PointCounts)
{
    trVector square[4] = {trVector(0, 0, 0), trVector(1, 0, 0), trVector(1, 1, 0), trVector(0, 1, 0)};
    trVector out[5];
    signed char sides[4];

    // Plane x = 0.5, keeping x >= 0.5: a smaller square.
    double d1[4] = {-0.5, 0.5, 0.5, -0.5};
    ASSERT_EQ(trClipPolygonAgainstPlane(4, square, d1, sides, out), 4);
    EXPECT_TRUE(out[0] == trVector(0.5, 0, 0) && out[3] == trVector(0.5, 1, 0));

    // Cutting one corner off gives five points, keeping one a triangle; all behind gives none.
    double const cuts[3][4] = {{-1, 1, 1, 1}, {1, -1, -1, -1}, {-1, -2, -3, -4}};
    int const counts[3] = {5, 3, 0};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(trClipPolygonAgainstPlane(4, square, cuts[i], nullptr, out), counts[i]) << i;
    // A diagonal plane through two corners: those corners once each, no duplicates.
    double d6[4] = {0, 1, 0, -1};
    EXPECT_EQ(trClipPolygonAgainstPlane(4, square, d6, sides, out), 3);
    EXPECT_EQ(sides[0], 0);
    EXPECT_EQ(trClipPolygonAgainstPlane(0, square, d6, sides, out), 0);
    EXPECT_EQ(trClipPolygonAgainstPlane(4, nullptr, d6, sides, out), 0);
}

TEST(trGeometry, ClipsToTheSlabCrossesAQuarterConeAndNormalisesDegrees)
{
    trVector a(0, 0, -5), b(0, 0, 20);
    // A reversed segment too; wholly beyond far: untouched.
    trVector c(2, 0, 15), d(2, 0, 5), e(0, 0, 11), f(0, 0, 30);
    EXPECT_EQ(trClipRayToNearFar(a, b, trVector(0, 0, 1), 1.0, 10.0), 1);
    EXPECT_EQ(trClipRayToNearFar(c, d, trVector(0, 0, 1), 1.0, 10.0), 1);
    EXPECT_EQ(trClipRayToNearFar(e, f, trVector(0, 0, 1), 1.0, 10.0), 0);
    EXPECT_EQ(std::vector<trVector>({a, b, c, d, e}),
              std::vector<trVector>({{0, 0, 1}, {0, 0, 10}, {2, 0, 10}, {2, 0, 5}, {0, 0, 11}}));

    // Apex at the origin opening up +y, 45 degrees: at height 1 the radius is 1. At height
    // -1 only the other nappe lies: no crossing. Parallel to the surface x = y, the line from
    // (0, 2, 0) along (1, 1, 0) crosses only the opposite side x = -y, at (-1, 1, 0).
    auto cone = [](trVector const &from, trVector const &dir, double *t1) {
        double t0 = NAN;
        int const n = trIntersectLineCone(from, dir, trVector(), trVector(0, 1, 0), std::atan(1.0), &t0, t1);
        return trVector(n, t0, t1 ? *t1 : NAN);
    };
    double t1 = NAN;
    ExpectNear(cone(trVector(-3, 1, 0), trVector(1, 0, 0), &t1), trVector(2, 2, 4));
    EXPECT_EQ(cone(trVector(-3, -1, 0), trVector(1, 0, 0), &t1).x, 0);
    EXPECT_NEAR(cone(trVector(0, 2, 0), trVector(1, 1, 0), nullptr).x, 1, 0);
    EXPECT_NEAR(cone(trVector(0, 2, 0), trVector(1, 1, 0), nullptr).y, -1.0, 1e-12);

    std::vector<double> got;
    for (double d : {190.0, -190.0, 540.0, -180.0})
        got.push_back(trNormaliseToPlusMinus180Degrees(d));
    EXPECT_EQ(got, std::vector<double>({-170.0, 170.0, 180.0, 180.0}));
}
