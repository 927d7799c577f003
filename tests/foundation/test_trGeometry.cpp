#include <gtest/gtest.h>

#include <cmath>

#include "foundation/trGeometry.h"
#include "shading/trIntersection.h"

namespace {

const trVector kTri[3] = {trVector(0, 0, 0), trVector(1, 0, 0), trVector(0, 1, 0)};

} // namespace

TEST(trIntersectRayTri, KnownBarycentrics)
{
    trIntersection isect;
    ASSERT_TRUE(trIntersectRayTri(trRay(trVector(0.25, 0.5, 1), trVector(0.25, 0.5, -1)), kTri, isect));
    EXPECT_DOUBLE_EQ(isect.t, 0.5);
    EXPECT_DOUBLE_EQ(isect.u, 0.25);
    EXPECT_DOUBLE_EQ(isect.v, 0.5);
    EXPECT_EQ(isect.Point, trVector(0.25, 0.5, 0));

    // From the other side, on a tilted tri: P = P0 + u e1 + v e2 reproduces the hit.
    trVector tilted[3] = {trVector(1, 2, 3), trVector(4, 2, 5), trVector(0, 6, 4)};
    trVector target = tilted[0] + (tilted[1] - tilted[0]) * 0.2 + (tilted[2] - tilted[0]) * 0.3;
    trIntersection h;
    ASSERT_TRUE(trIntersectRayTri(trRay(trVector(-5, -5, -5), target * 2.0 - trVector(-5, -5, -5)), tilted, h));
    EXPECT_NEAR(h.u, 0.2, 1e-12);
    EXPECT_NEAR(h.v, 0.3, 1e-12);
    EXPECT_NEAR(h.t, 0.5, 1e-12);
}

TEST(trIntersectRayTri, Misses)
{
    trIntersection isect;
    // Outside the tri: no hit, but u, v and t are still written.
    isect.Point = trVector(9, 9, 9);
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.75, 0.5, 1), trVector(0.75, 0.5, -1)), kTri, isect));
    EXPECT_DOUBLE_EQ(isect.u, 0.75);
    EXPECT_DOUBLE_EQ(isect.v, 0.5);
    EXPECT_DOUBLE_EQ(isect.t, 0.5);
    EXPECT_EQ(isect.Point, trVector(9, 9, 9));
    // In the plane of the tri: the determinant test.
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(-1, 0.2, 0), trVector(2, 0.2, 0)), kTri, isect));
    // Too short to reach it, and starting on it.
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 2), trVector(0.2, 0.2, 1)), kTri, isect));
    EXPECT_GT(isect.t, 1.0);
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 0), trVector(0.2, 0.2, -1)), kTri, isect));
    EXPECT_FALSE(trIntersectRayTri(trRay(trVector(0.2, 0.2, 1), trVector(0.2, 0.2, -1)), nullptr, isect));
}

TEST(trIntersectLineTriSlow, LineMeetsTri)
{
    double t = 0, u = 0, v = 0;
    // Behind the origin still counts: a line, not a ray.
    ASSERT_TRUE(trIntersectLineTriSlow(trVector(0.25, 0.5, -2), trVector(0, 0, -1), kTri, t, u, v));
    EXPECT_DOUBLE_EQ(t, -2.0);
    EXPECT_DOUBLE_EQ(u, 0.25);
    EXPECT_DOUBLE_EQ(v, 0.5);
    EXPECT_TRUE(trIntersectLineTriSlow(trVector(0.5, 0.5, 1), trVector(0, 0, 1), kTri, t, u, v));  // on an edge
    EXPECT_FALSE(trIntersectLineTriSlow(trVector(0.6, 0.5, 1), trVector(0, 0, 1), kTri, t, u, v));
    EXPECT_FALSE(trIntersectLineTriSlow(trVector(0.2, 0.2, 1), trVector(1, 0, 0), kTri, t, u, v));
}

TEST(trClipPolygonAgainstPlane, PointCounts)
{
    trVector square[4] = {trVector(0, 0, 0), trVector(1, 0, 0), trVector(1, 1, 0), trVector(0, 1, 0)};
    trVector out[5];
    signed char sides[4];

    // Plane x = 0.5, keeping x >= 0.5: a smaller square.
    double d1[4] = {-0.5, 0.5, 0.5, -0.5};
    ASSERT_EQ(trClipPolygonAgainstPlane(4, square, d1, sides, out), 4);
    EXPECT_EQ(out[0], trVector(0.5, 0, 0));
    EXPECT_EQ(out[3], trVector(0.5, 1, 0));

    // Cutting one corner off gives five points.
    double d2[4] = {-1, 1, 1, 1};
    EXPECT_EQ(trClipPolygonAgainstPlane(4, square, d2, nullptr, out), 5);
    // Keeping one corner gives a triangle.
    double d3[4] = {1, -1, -1, -1};
    EXPECT_EQ(trClipPolygonAgainstPlane(4, square, d3, nullptr, out), 3);
    // All behind, all in front.
    double d4[4] = {-1, -2, -3, -4};
    EXPECT_EQ(trClipPolygonAgainstPlane(4, square, d4, nullptr, out), 0);
    // A diagonal plane through two corners: those corners once each, no duplicates.
    double d6[4] = {0, 1, 0, -1};
    EXPECT_EQ(trClipPolygonAgainstPlane(4, square, d6, sides, out), 3);
    EXPECT_EQ(sides[0], 0);
    EXPECT_EQ(trClipPolygonAgainstPlane(0, square, d6, sides, out), 0);
    EXPECT_EQ(trClipPolygonAgainstPlane(4, nullptr, d6, sides, out), 0);
}

TEST(trClipRayToNearFar, ClipsToTheSlab)
{
    trVector a(0, 0, -5), b(0, 0, 20);
    ASSERT_EQ(trClipRayToNearFar(a, b, trVector(0, 0, 1), 1.0, 10.0), 1);
    EXPECT_EQ(a, trVector(0, 0, 1));
    EXPECT_EQ(b, trVector(0, 0, 10));
    // Reversed segment.
    trVector c(2, 0, 15), d(2, 0, 5);
    ASSERT_EQ(trClipRayToNearFar(c, d, trVector(0, 0, 1), 1.0, 10.0), 1);
    EXPECT_EQ(c, trVector(2, 0, 10));
    EXPECT_EQ(d, trVector(2, 0, 5));
    // Wholly beyond far: untouched.
    trVector e(0, 0, 11), f(0, 0, 30);
    EXPECT_EQ(trClipRayToNearFar(e, f, trVector(0, 0, 1), 1.0, 10.0), 0);
    EXPECT_EQ(e, trVector(0, 0, 11));
}

TEST(trIntersectLineCone, CrossingsOfAQuarterCone)
{
    // Apex at the origin opening up +y, 45 degrees: at height 1 the radius is 1.
    double halfAngle = std::atan(1.0);
    double t0 = 0, t1 = 0;
    ASSERT_EQ(trIntersectLineCone(trVector(-3, 1, 0), trVector(1, 0, 0), trVector(), trVector(0, 1, 0), halfAngle,
                                  &t0, &t1),
              2);
    EXPECT_NEAR(t0, 2.0, 1e-12);
    EXPECT_NEAR(t1, 4.0, 1e-12);
    // At height -1 only the other nappe lies: no crossing.
    EXPECT_EQ(trIntersectLineCone(trVector(-3, -1, 0), trVector(1, 0, 0), trVector(), trVector(0, 1, 0), halfAngle,
                                  &t0, &t1),
              0);
    // Parallel to the surface x = y: the line from (0, 2, 0) along (1, 1, 0) crosses
    // only the opposite side x = -y, at (-1, 1, 0).
    ASSERT_EQ(trIntersectLineCone(trVector(0, 2, 0), trVector(1, 1, 0), trVector(), trVector(0, 1, 0), halfAngle,
                                  &t0, nullptr),
              1);
    EXPECT_NEAR(t0, -1.0, 1e-12);
}

TEST(trGeometry, NormaliseDegrees)
{
    EXPECT_EQ(trNormaliseToPlusMinus180Degrees(190.0), -170.0);
    EXPECT_EQ(trNormaliseToPlusMinus180Degrees(-190.0), 170.0);
    EXPECT_EQ(trNormaliseToPlusMinus180Degrees(540.0), 180.0);
    EXPECT_EQ(trNormaliseToPlusMinus180Degrees(-180.0), 180.0);
}
