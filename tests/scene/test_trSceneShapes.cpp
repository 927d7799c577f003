// Scene store shapes: planes, discs, cylinders and spheres, checked for counts,
// placement and consistent outward winding.

#include "scene/trScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <utility>

namespace {

trVector Corner(trScene &scene, trTri const &tri, int i) { return scene.GetPPoint(tri.pts[i])->Vec(); }

trVector TriCross(trScene &scene, unsigned long h)
{
    trTri const &t = *scene.GetPTri(h);
    return (Corner(scene, t, 1) - Corner(scene, t, 0)).Cross(Corner(scene, t, 2) - Corner(scene, t, 0));
}

trVector Centroid(trScene &scene, unsigned long h)
{
    trTri const &t = *scene.GetPTri(h);
    return (Corner(scene, t, 0) + Corner(scene, t, 1) + Corner(scene, t, 2)) / 3.0;
}

double TotalArea(trScene &scene)
{
    double area = 0.0;
    for (unsigned long h = 1; h <= scene.NumTris(); ++h)
        area += 0.5 * TriCross(scene, h).Length();
    return area;
}

// Every directed edge must appear once and its reverse once: a closed surface
// wound the same way throughout.
void ExpectClosedAndConsistent(trScene &scene)
{
    std::map<std::pair<unsigned, unsigned>, int> edges;
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        trTri const &t = *scene.GetPTri(h);
        for (int i = 0; i < 3; ++i)
            ++edges[{t.pts[i], t.pts[(i + 1) % 3]}];
    }
    for (auto const &[edge, count] : edges) {
        EXPECT_EQ(count, 1) << edge.first << "->" << edge.second;
        auto reverse = edges.find({edge.second, edge.first});
        EXPECT_TRUE(reverse != edges.end() && reverse->second == 1) << edge.first << "->" << edge.second;
    }
}

} // namespace

TEST(trSceneShapes, PlaneHasFourPointsAndTwoTrisFacingEdgeACrossEdgeB)
{
    trScene scene;
    scene.Init();
    trVector const corner(1, 2, 3), a(2, 0, 0), b(0, 0, -3);
    unsigned long const last = scene.AddPolyPlane(corner, a, b, 0);
    EXPECT_EQ(last, 2u);
    ASSERT_EQ(scene.NumPts(), 4u);
    EXPECT_EQ(scene.GetPPoint(3)->Vec(), corner + a + b);
    EXPECT_EQ(scene.GetPPoint(4)->Vec(), corner + b);
    trVector const facing = a.Cross(b);  // (0, 6, 0)
    for (unsigned long h = 1; h <= 2; ++h)
        EXPECT_GT(TriCross(scene, h).Dot(facing), 0.0);
    EXPECT_DOUBLE_EQ(TotalArea(scene), 6.0);
}

TEST(trSceneShapes, ThinPlaneIsCutIntoNearSquares)
{
    trScene scene;
    scene.Init();
    // 10 by 1: ten unit squares along the long edge.
    EXPECT_NE(scene.AddPolyPlane(trVector(), trVector(0, 0, 1), trVector(10, 0, 0), true, 0), 0u);
    EXPECT_EQ(scene.NumTris(), 20u);
    EXPECT_EQ(scene.NumPts(), 40u);
    EXPECT_NEAR(TotalArea(scene), 10.0, 1e-9);
    // Each tri spans at most one unit along x.
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        trTri const &t = *scene.GetPTri(h);
        double lo = 1e9, hi = -1e9;
        for (int i = 0; i < 3; ++i) {
            lo = std::fmin(lo, Corner(scene, t, i).x);
            hi = std::fmax(hi, Corner(scene, t, i).x);
        }
        EXPECT_NEAR(hi - lo, 1.0, 1e-6);
    }
    // 3.4 rounds to 3 pieces; the flag off gives one piece.
    trScene other;
    other.Init();
    other.AddPolyPlane(trVector(), trVector(3.4, 0, 0), trVector(0, 1, 0), true, 0);
    EXPECT_EQ(other.NumTris(), 6u);
    other.AddPolyPlane(trVector(), trVector(3.4, 0, 0), trVector(0, 1, 0), false, 0);
    EXPECT_EQ(other.NumTris(), 8u);
}

TEST(trSceneShapes, PlaneWithAZeroEdgeCutsIntoAThousandStrips)
{
    trScene scene;
    scene.Init();
    EXPECT_NE(scene.AddPolyPlane(trVector(), trVector(5, 0, 0), trVector(0, 0, 0), true, 0), 0u);
    EXPECT_EQ(scene.NumTris(), 2000u);
    EXPECT_EQ(scene.NumPts(), 4000u);
    // A plane with a bad material fails as a whole result.
    std::string err;
    testing::internal::CaptureStderr();
    EXPECT_EQ(scene.AddPolyPlane(trVector(), trVector(1, 0, 0), trVector(0, 1, 0), 3), 0u);
    err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("AddTri: material handle 3"), std::string::npos);
}

TEST(trSceneShapes, DiscAndRingLieInThePlaneAndFaceTheNormal)
{
    trVector const normals[] = {trVector(0, 1, 0), trVector(0, 0, -2), trVector(1, -1, -1), trVector(-1, 1, 1),
                                trVector(0.3, 0.4, -0.5)};
    for (trVector const &normal : normals) {
        trScene scene;
        scene.Init();
        trVector const centre(1, -2, 3);
        trVector const n = normal.Normalized();
        ASSERT_NE(scene.AddPolyDisc(centre, 2.0, 0.0, normal, 0.3, 6, 0), 0u);
        EXPECT_EQ(scene.NumPts(), 7u);
        EXPECT_EQ(scene.NumTris(), 6u);
        for (unsigned long p = 2; p <= 7; ++p) {
            trVector const d = scene.GetPPoint(p)->Vec() - centre;
            EXPECT_NEAR(d.Dot(n), 0.0, 1e-5);
            EXPECT_NEAR(d.Length(), 2.0, 1e-5);
        }
        for (unsigned long h = 1; h <= 6; ++h)
            EXPECT_GT(TriCross(scene, h).Normalized().Dot(n), 0.999);
        // A regular hexagon of circumradius 2.
        EXPECT_NEAR(TotalArea(scene), 1.5 * std::sqrt(3.0) * 4.0, 1e-4);

        trScene ring;
        ring.Init();
        ASSERT_NE(ring.AddPolyDisc(centre, 2.0, 1.0, normal, 0.0, 8, 0), 0u);
        EXPECT_EQ(ring.NumPts(), 16u);
        EXPECT_EQ(ring.NumTris(), 16u);
        for (unsigned long h = 1; h <= 16; ++h)
            EXPECT_GT(TriCross(ring, h).Normalized().Dot(n), 0.999);
        // Octagon of radius 2 less octagon of radius 1: 2 sqrt 2 (4 - 1).
        EXPECT_NEAR(TotalArea(ring), 2.0 * std::sqrt(2.0) * 3.0, 1e-4);
    }
}

TEST(trSceneShapes, CylinderFacesOutward)
{
    trScene scene;
    scene.Init();
    trVector const centre(0, 0, 0), axis(0, 0, 1);
    ASSERT_NE(scene.AddPolyCylinder(centre, 1.5, 4.0, axis, 0.0, 12, 0), 0u);
    EXPECT_EQ(scene.NumPts(), 24u);
    EXPECT_EQ(scene.NumTris(), 24u);
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        trVector c = Centroid(scene, h);
        trVector const outward(c.x, c.y, 0.0);
        EXPECT_GT(TriCross(scene, h).Dot(outward), 0.0);
        EXPECT_NEAR(TriCross(scene, h).z, 0.0, 1e-5);
    }
    trBoundingBox const box = scene.BoundingBox();
    EXPECT_NEAR(box.lo.z, 0.0, 1e-6);
    EXPECT_NEAR(box.hi.z, 4.0, 1e-6);
}

TEST(trSceneShapes, RingsRefuseTooFewSegments)
{
    trScene scene;
    scene.Init();
    testing::internal::CaptureStderr();
    EXPECT_EQ(scene.AddPolyDisc(trVector(), 1.0, 0.0, trVector(0, 1, 0), 0.0, 2, 0), 0u);
    EXPECT_EQ(scene.AddPolyCylinder(trVector(), 1.0, 1.0, trVector(0, 1, 0), 0.0, -5, 0), 0u);
    EXPECT_EQ(scene.AddPolyDisc(trVector(), std::nan(""), 0.0, trVector(0, 1, 0), 0.0, 8, 0), 0u);
    std::string const err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("ERROR: AddPolyDisc: the segment count must be from 3"), std::string::npos) << err;
    EXPECT_NE(err.find("ERROR: AddPolyCylinder: the segment count must be from 3"), std::string::npos) << err;
    EXPECT_NE(err.find("ERROR: AddPolyDisc: arguments must be finite numbers"), std::string::npos) << err;
    EXPECT_EQ(scene.NumPts(), 0u);
}

TEST(trSceneShapes, SphereIsClosedOutwardAndCountedAsStated)
{
    trScene scene;
    scene.Init();
    long const segments = 8, rings = 5;
    trVector const centre(1, 2, 3);
    ASSERT_NE(scene.AddPolySphere(centre, trVector(1, 1, 1), segments, rings, 0), 0u);
    EXPECT_EQ(scene.NumPts(), static_cast<unsigned long>((rings - 1) * segments + 2));
    EXPECT_EQ(scene.NumNormals(), scene.NumPts());
    EXPECT_EQ(scene.NumTexVerts(), static_cast<unsigned long>((segments + 1) * (rings + 1)));
    EXPECT_EQ(scene.NumTris(), static_cast<unsigned long>(2 * segments + 2 * segments * (rings - 2)));
    // Points from the top pole down.
    EXPECT_EQ(scene.GetPPoint(1)->Vec(), centre + trVector(0, 1, 0));
    EXPECT_EQ(scene.GetPPoint(scene.NumPts())->Vec(), centre + trVector(0, -1, 0));
    EXPECT_NEAR(scene.GetPPoint(2)->y, 2.0 + std::cos(M_PI / rings), 1e-6);
    for (unsigned long p = 1; p <= scene.NumPts(); ++p) {
        trVector const d = scene.GetPPoint(p)->Vec() - centre;
        EXPECT_NEAR(d.Length(), 1.0, 1e-6);
        trVector const n = scene.GetPNormal(p)->Vec();
        EXPECT_NEAR(n.Dot(d), 1.0, 1e-5);  // the unit vector from the centre
    }
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        EXPECT_GT(TriCross(scene, h).Dot(Centroid(scene, h) - centre), 0.0) << h;
        trTri const &t = *scene.GetPTri(h);
        ASSERT_TRUE(t.HasNormals() && t.HasTexVerts());
        for (int i = 0; i < 3; ++i) {
            // Normals sit beside points; u falls across, v falls from top to bottom.
            EXPECT_EQ(t.normals[i], t.pts[i]);
            trVector const uv = scene.GetPTexVert(t.texVerts[i])->Vec();
            // v = 1 - latitude / pi, u = 1 - longitude / 2 pi (either end at the seam).
            trVector const d = scene.GetPPoint(t.pts[i])->Vec() - centre;
            EXPECT_NEAR(uv.y, 1.0 - std::acos(std::fmax(-1.0, std::fmin(1.0, d.y))) / M_PI, 1e-5);
            if (std::fabs(d.y) < 0.999) {
                double lon = std::atan2(d.z, d.x);
                if (lon < 0.0)
                    lon += 2.0 * M_PI;
                double const off = std::fabs(uv.x - (1.0 - lon / (2.0 * M_PI)));
                EXPECT_TRUE(off < 1e-5 || std::fabs(off - 1.0) < 1e-5) << uv.x << " at " << lon;
            }
        }
    }
    // The top fan's texture row is v = 1, the bottom fan's v = 0.
    EXPECT_FLOAT_EQ(scene.GetPTexVert(scene.GetPTri(1)->texVerts[0])->y, 1.0f);
    ExpectClosedAndConsistent(scene);
}

TEST(trSceneShapes, EllipsoidAboutAnotherAxis)
{
    trScene scene;
    scene.Init();
    // Semi-axes along the frame's x, axis and z; with the axis along y this is the world frame.
    ASSERT_NE(scene.AddPolySphere(trVector(), trVector(1, 2, 3), trVector(0, 1, 0), 0.0, 16, 8, false, false, 0), 0u);
    trBoundingBox box = scene.BoundingBox();
    EXPECT_NEAR(box.hi.y, 2.0, 1e-6);
    EXPECT_NEAR(box.hi.x, 1.0, 1e-6);
    EXPECT_NEAR(box.hi.z, 3.0, 1e-6);
    EXPECT_EQ(scene.NumNormals(), 0u);
    EXPECT_EQ(scene.NumTexVerts(), 0u);
    ExpectClosedAndConsistent(scene);

    trScene tilted;
    tilted.Init();
    ASSERT_NE(tilted.AddPolySphere(trVector(), trVector(1, 1, 1), trVector(1, 0, 0), 0.5, 6, 3, true, false, 0), 0u);
    EXPECT_NEAR(tilted.GetPPoint(1)->x, 1.0, 1e-6);  // the top pole lies along the axis
    ExpectClosedAndConsistent(tilted);
    for (unsigned long h = 1; h <= tilted.NumTris(); ++h)
        EXPECT_GT(TriCross(tilted, h).Dot(Centroid(tilted, h)), 0.0);
}

TEST(trSceneShapes, SphereWithTooFewSegmentsOrRingsAddsNothing)
{
    trScene scene;
    scene.Init();
    EXPECT_EQ(scene.AddPolySphere(trVector(), trVector(1, 1, 1), 1, 8, 0), 0u);
    EXPECT_EQ(scene.AddPolySphere(trVector(), trVector(1, 1, 1), 8, 1, 0), 0u);
    EXPECT_EQ(scene.NumPts() + scene.NumTris() + scene.NumNormals() + scene.NumTexVerts(), 0u);
    // Too many points to list gives the stated message.
    testing::internal::CaptureStderr();
    EXPECT_EQ(scene.AddPolySphere(trVector(), trVector(1, 1, 1), 100000, 100000, 0), 0u);
    std::string const err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("AddPolySphere: Not enough memory to allocate list of point handles"), std::string::npos);
    EXPECT_EQ(scene.NumPts(), 0u);
}
