#include <gtest/gtest.h>

#include "foundation/trBoundingBox.h"

#include <utility>
#include <vector>

namespace {

trBoundingBox Unit() { return trBoundingBox(trVector(0, 0, 0), trVector(1, 1, 1)); }

} // namespace

TEST(trBoundingBox, UnionIntersectionAndOverlap)
{
    trBoundingBox empty;
    EXPECT_TRUE(empty.IsEmpty());
    trBoundingBox b = empty;
    b.Union(trVector(3, -2, 5));
    EXPECT_TRUE(b.lo == trVector(3, -2, 5) && b.hi == trVector(3, -2, 5) && !b.IsEmpty());
    b.Union(trVector(-1, 4, 5));
    EXPECT_EQ(b, trBoundingBox(trVector(-1, -2, 5), trVector(3, 4, 5)));

    // Corners in any order.
    EXPECT_EQ(trBoundingBox(trVector(1, 0, 1), trVector(0, 1, 0)), Unit());
    trBoundingBox u = trBoundingBox();
    u.Union(Unit());
    EXPECT_EQ(u, Unit());
    EXPECT_TRUE(Unit().Contains(trVector(1, 0, 0.5)) && !Unit().Contains(trVector(1.01, 0, 0.5)));

    trBoundingBox a = Unit();
    a.Intersection(trBoundingBox(trVector(0.5, -1, 0.25), trVector(2, 0.5, 0.75)));
    EXPECT_EQ(a, trBoundingBox(trVector(0.5, 0, 0.25), trVector(1, 0.5, 0.75)));

    // Disjoint along x: a flat box, hi equal to lo there.
    trBoundingBox flat = Unit();
    flat.Intersection(trBoundingBox(trVector(3, 0, 0), trVector(4, 1, 1)));
    EXPECT_TRUE(flat.lo.x == 3 && flat.hi.x == 3 && !flat.IsEmpty());
    trBoundingBox inverted = Unit();
    inverted.Intersection(trBoundingBox(trVector(3, 0, 0), trVector(4, 1, 1)), true);
    EXPECT_TRUE(inverted.hi.x == 1 && inverted.IsEmpty());

    // Sharing a face is not an overlap.
    EXPECT_FALSE(Unit().IntersectBoundingBox(trBoundingBox(trVector(1, 0, 0), trVector(2, 1, 1))));
    EXPECT_TRUE(Unit().IntersectBoundingBox(trBoundingBox(trVector(0.999, 0.5, 0.5), trVector(2, 3, 4))));
    EXPECT_FALSE(Unit().IntersectBoundingBox(trBoundingBox(trVector(0.5, 2, 0.5), trVector(0.6, 3, 0.6))));
}

TEST(trBoundingBox, RaySlabPlaneAndTriangle)
{
    trBoundingBox box = Unit();
    double tn = -1, tf = -1;
    // From x = -1 to x = 3 through the middle: enters at t = 0.25, leaves at 0.5.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(-1, 0.5, 0.5), trVector(3, 0.5, 0.5)), &tn, &tf), 1);
    EXPECT_TRUE(tn == 0.25 && tf == 0.5) << tn << " " << tf;
    // Along x, just outside the y range: the parallel test rejects it.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(-1, 1.0000001, 0.5), trVector(3, 1.0000001, 0.5)), nullptr, nullptr), 0);
    // Along x on the face y = 1: inside the slab, a hit.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(-1, 1, 0.5), trVector(3, 1, 0.5)), nullptr, nullptr), 1);
    // The ray is finite: it stops before the box.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(-3, 0.5, 0.5), trVector(-0.5, 0.5, 0.5)), nullptr, nullptr), 0);
    // Starting inside: near is 0.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(0.5, 0.5, 0.5), trVector(0.5, 0.5, 2.5)), &tn, &tf), 1);
    EXPECT_TRUE(tn == 0.0 && tf == 0.25) << tn << " " << tf;
    // Diagonal miss: x and y ranges do not overlap in t.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(-1, 0.5, 0.5), trVector(0.5, 3, 0.5)), nullptr, nullptr), 0);
    // Pointing away along x with the box wholly behind: the first-axis early out
    // reports a hit (the test only ever culls).
    EXPECT_EQ(box.IntersectRay(trRay(trVector(3, 0.5, 0.5), trVector(5, 0.5, 0.5)), &tn, &tf), 1);
    EXPECT_LT(tf, 0.0);
    // The same along y is a miss.
    EXPECT_EQ(box.IntersectRay(trRay(trVector(0.5, 3, 0.5), trVector(0.5, 5, 0.5)), nullptr, nullptr), 0);

    // Through, touching the top face, beyond it; near the corner (1, 1, 1) and beyond it.
    std::vector<bool> planes;
    for (auto [normal, d] : {std::pair{trVector(0, 1, 0), 0.0}, {trVector(0, 1, 0), -1.0}, {trVector(0, 1, 0), -1.5},
                             {trVector(1, 1, 1), -2.9}, {trVector(1, 1, 1), -3.1}})
        planes.push_back(trBoundingBox::IntersectPlane(normal, d, trVector(1, 1, 1)));
    EXPECT_EQ(planes, std::vector<bool>({true, true, false, true, false}));

    trVector through[3] = {trVector(-1, 0.5, -1), trVector(3, 0.5, -1), trVector(-1, 0.5, 3)};
    EXPECT_TRUE(box.IntersectTri(through));
    trVector above[3] = {trVector(-1, 1.5, -1), trVector(3, 1.5, -1), trVector(-1, 1.5, 3)};
    EXPECT_FALSE(box.IntersectTri(above));
    trVector inside[3] = {trVector(0.1, 0.1, 0.1), trVector(0.2, 0.1, 0.1), trVector(0.1, 0.2, 0.1)};
    EXPECT_TRUE(box.IntersectTri(inside));
    // The tri's box overlaps the unit box, but the tri passes beside its corner:
    // only an edge axis separates them.
    trVector beside[3] = {trVector(2.6, -0.5, 0.5), trVector(-0.5, 2.6, 0.5), trVector(3, 3, 0.5)};
    EXPECT_FALSE(box.IntersectTri(beside));
    trVector cutting[3] = {trVector(2.4, -0.5, 0.5), trVector(-0.5, 2.4, 0.5), trVector(3, 3, 0.5)};
    EXPECT_TRUE(box.IntersectTri(cutting));
    EXPECT_FALSE(trBoundingBox().IntersectTri(inside));
}
