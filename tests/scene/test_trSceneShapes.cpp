// Scene store shapes: planes, discs, cylinders and spheres, checked for counts,
// placement and consistent outward winding.

#include "scene/trScene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <utility>
#include <vector>

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

TEST(trSceneShapes, PlanesAreCutIntoNearSquaresFacingEdgeACrossEdgeB)
{
    struct Row {
        trVector a, b;
        bool cut;
        unsigned long tris;
        double area;
        trVector piece;  // the diagonal of each piece
    } const rows[] = {
        {trVector(2, 0, 0), trVector(0, 0, -3), false, 2, 6.0, trVector(2, 0, -3)},
        {trVector(0, 0, 1), trVector(10, 0, 0), true, 20, 10.0, trVector(1, 0, 1)},  // ten unit squares
        {trVector(3.4, 0, 0), trVector(0, 1, 0), true, 6, 3.4, trVector(3.4 / 3, 1, 0)},  // 3.4 rounds to 3
        {trVector(3.4, 0, 0), trVector(0, 1, 0), false, 2, 3.4, trVector(3.4, 1, 0)},
        {trVector(5, 0, 0), trVector(0, 0, 0), true, 2000, 0.0, trVector(0.005, 0, 0)},  // a zero edge: 1000 strips
    };
    for (Row const &r : rows) {
        SCOPED_TRACE(r.tris);
        trScene scene;
        scene.Init();
        trVector const corner(1, 2, 3);
        EXPECT_EQ(scene.AddPolyPlane(corner, r.a, r.b, r.cut, 0), r.tris);
        ASSERT_EQ(scene.NumTris(), r.tris);
        EXPECT_EQ(scene.NumPts(), 2 * r.tris);
        EXPECT_NEAR(TotalArea(scene), r.area, 1e-5);
        // The first piece: its corners in order round it, from `corner`.
        trVector const p[4] = {scene.GetPPoint(1)->Vec(), scene.GetPPoint(2)->Vec(), scene.GetPPoint(3)->Vec(),
                               scene.GetPPoint(4)->Vec()};
        EXPECT_NEAR((p[0] - corner).Length() + (p[2] - corner - r.piece).Length(), 0.0, 1e-5);
        EXPECT_NEAR((p[1] + p[3] - p[0] - p[2]).Length(), 0.0, 1e-5);
        for (unsigned long h = 1; h <= r.tris && r.area > 0.0; ++h) {
            EXPECT_GT(TriCross(scene, h).Dot(r.a.Cross(r.b)), 0.0);
            trTri const &t = *scene.GetPTri(h);
            trBoundingBox box(Corner(scene, t, 0), Corner(scene, t, 1));
            EXPECT_NEAR(box.Union(Corner(scene, t, 2)).Size().Length(), r.piece.Length(), 1e-5);
        }
    }
}

TEST(trSceneShapes, DiscAndRingLieInThePlaneAndFaceTheNormalACylinderFacesOutward)
{
    trVector const normals[] = {trVector(0, 1, 0), trVector(0, 0, -2), trVector(1, -1, -1), trVector(-1, 1, 1),
                                trVector(0.3, 0.4, -0.5)};
    for (trVector const &normal : normals) {
        trScene scene, ring;
        scene.Init();
        ring.Init();
        trVector const centre(1, -2, 3);
        trVector const n = normal.Normalized();
        ASSERT_NE(scene.AddPolyDisc(centre, 2.0, 0.0, normal, 0.3, 6, 0), 0u);
        ASSERT_NE(ring.AddPolyDisc(centre, 2.0, 1.0, normal, 0.0, 8, 0), 0u);
        EXPECT_TRUE(scene.NumPts() == 7u && scene.NumTris() == 6u);
        EXPECT_TRUE(ring.NumPts() == 16u && ring.NumTris() == 16u);
        for (unsigned long p = 2; p <= 7; ++p) {
            trVector const d = scene.GetPPoint(p)->Vec() - centre;
            EXPECT_NEAR(d.Dot(n), 0.0, 1e-5);
            EXPECT_NEAR(d.Length(), 2.0, 1e-5);
        }
        for (trScene *s : {&scene, &ring})
            for (unsigned long h = 1; h <= s->NumTris(); ++h)
                EXPECT_GT(TriCross(*s, h).Normalized().Dot(n), 0.999);
        // A regular hexagon of circumradius 2; octagons of radius 2 less 1: 2 sqrt 2 (4 - 1).
        EXPECT_NEAR(TotalArea(scene), 1.5 * std::sqrt(3.0) * 4.0, 1e-4);
        EXPECT_NEAR(TotalArea(ring), 2.0 * std::sqrt(2.0) * 3.0, 1e-4);
    }
    // A cylinder faces outward.
    trScene scene;
    scene.Init();
    ASSERT_NE(scene.AddPolyCylinder(trVector(0, 0, 0), 1.5, 4.0, trVector(0, 0, 1), 0.0, 12, 0), 0u);
    EXPECT_TRUE(scene.NumPts() == 24u && scene.NumTris() == 24u);
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        trVector const c = Centroid(scene, h);
        EXPECT_GT(TriCross(scene, h).Dot(trVector(c.x, c.y, 0.0)), 0.0);
        EXPECT_NEAR(TriCross(scene, h).z, 0.0, 1e-5);
    }
    trBoundingBox const box = scene.BoundingBox();
    EXPECT_NEAR(box.lo.z, 0.0, 1e-6);
    EXPECT_NEAR(box.hi.z, 4.0, 1e-6);
}

TEST(trSceneShapes, BadShapesAddNothingAndSaySo)
{
    trScene scene;
    scene.Init();
    trVector const o, y(0, 1, 0), one(1, 1, 1);
    std::vector<unsigned long> last;
    testing::internal::CaptureStderr();
    last = {scene.AddPolyDisc(o, 1.0, 0.0, y, 0.0, 2, 0), scene.AddPolyCylinder(o, 1.0, 1.0, y, 0.0, -5, 0),
            scene.AddPolyDisc(o, std::nan(""), 0.0, y, 0.0, 8, 0), scene.AddPolySphere(o, one, 1, 8, 0),
            scene.AddPolySphere(o, one, 8, 1, 0), scene.AddPolySphere(o, one, 100000, 100000, 0),
            // A plane with a bad material fails as a whole result, after its points.
            scene.AddPolyPlane(o, trVector(1, 0, 0), y, 3)};
    std::string const err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(last, std::vector<unsigned long>(7, 0));
    for (char const *message : {"ERROR: AddPolyDisc: the segment count must be from 3",
                                "ERROR: AddPolyCylinder: the segment count must be from 3",
                                "ERROR: AddPolyDisc: arguments must be finite numbers",
                                "AddPolySphere: Not enough memory to allocate list of point handles",
                                "AddTri: material handle 3"})
        EXPECT_NE(err.find(message), std::string::npos) << message << " in " << err;
    EXPECT_EQ(scene.NumPts(), 4u);
    EXPECT_EQ(scene.NumTris() + scene.NumNormals() + scene.NumTexVerts(), 0u);
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
        EXPECT_NEAR(scene.GetPNormal(p)->Vec().Dot(d), 1.0, 1e-5);  // the unit vector from the centre
    }
    for (unsigned long h = 1; h <= scene.NumTris(); ++h) {
        EXPECT_GT(TriCross(scene, h).Dot(Centroid(scene, h) - centre), 0.0) << h;
        trTri const &t = *scene.GetPTri(h);
        ASSERT_TRUE(t.HasNormals() && t.HasTexVerts());
        for (int i = 0; i < 3; ++i) {
            // Normals sit beside points; v = 1 - latitude / pi, u = 1 - longitude / 2 pi
            // (either end at the seam).
            EXPECT_EQ(t.normals[i], t.pts[i]);
            trVector const uv = scene.GetPTexVert(t.texVerts[i])->Vec();
            trVector const d = scene.GetPPoint(t.pts[i])->Vec() - centre;
            EXPECT_NEAR(uv.y, 1.0 - std::acos(std::fmax(-1.0, std::fmin(1.0, d.y))) / M_PI, 1e-5);
            if (std::fabs(d.y) < 0.999) {
                double const lon = std::atan2(d.z, d.x) + (d.z < 0.0 ? 2.0 * M_PI : 0.0);
                double const off = std::fabs(uv.x - (1.0 - lon / (2.0 * M_PI)));
                EXPECT_TRUE(off < 1e-5 || std::fabs(off - 1.0) < 1e-5) << uv.x << " at " << lon;
            }
        }
    }
    // The top fan's texture row is v = 1.
    EXPECT_FLOAT_EQ(scene.GetPTexVert(scene.GetPTri(1)->texVerts[0])->y, 1.0f);
    ExpectClosedAndConsistent(scene);
}

TEST(trSceneShapes, EllipsoidAboutAnotherAxis)
{
    trScene scene, tilted;
    scene.Init();
    tilted.Init();
    // Semi-axes along the frame's x, axis and z; with the axis along y this is the world frame.
    ASSERT_NE(scene.AddPolySphere(trVector(), trVector(1, 2, 3), trVector(0, 1, 0), 0.0, 16, 8, false, false, 0), 0u);
    trBoundingBox const box = scene.BoundingBox();
    EXPECT_NEAR((box.hi - trVector(1, 2, 3)).Length(), 0.0, 1e-6);
    EXPECT_EQ(scene.NumNormals() + scene.NumTexVerts(), 0u);
    ExpectClosedAndConsistent(scene);

    ASSERT_NE(tilted.AddPolySphere(trVector(), trVector(1, 1, 1), trVector(1, 0, 0), 0.5, 6, 3, true, false, 0), 0u);
    EXPECT_NEAR(tilted.GetPPoint(1)->x, 1.0, 1e-6);  // the top pole lies along the axis
    ExpectClosedAndConsistent(tilted);
    for (unsigned long h = 1; h <= tilted.NumTris(); ++h)
        EXPECT_GT(TriCross(tilted, h).Dot(Centroid(tilted, h)), 0.0);
}
