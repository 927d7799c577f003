// The camera: screen <-> world round trips in every projection, footprints at known
// distances, depth values, visibility against the crop, time views, and the split
// rule for render tris.

#include "foundation/trRand.h"
#include "nodes/test_trBaseSupport.h"
#include "scene/trRenderTri.h"
#include "scene/trView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

trView MakeView(trProjectionMode mode, double stereo = 0.0)
{
    trView v;
    v.Init(trVector(10.0, -3.0, 7.0), trRotation(trVector(0.3, -0.7, 0.2)), 640, 480, 1.0, 1.0, true, mode, stereo);
    return v;
}

// A camera at the origin looking along +z.
trView PlainView(trProjectionMode mode, int w = 640, int h = 480, double zoom = 1.0)
{
    trView v;
    v.Init(trVector(), trRotation(), w, h, zoom, zoom, true, mode);
    return v;
}

double Near(double a, double b) { return std::fabs(a - b) <= 1e-7 * std::max(1.0, std::fabs(b)); }

TEST(trView, ScreenToWorldAndBackInEveryProjection)
{
    for (int mode = 0; mode < 4; ++mode)
        for (double stereo : {0.0, 0.05}) {
            SCOPED_TRACE("mode " + std::to_string(mode) + " stereo " + std::to_string(stereo));
            trView v = MakeView(trProjectionMode(mode), stereo);
            v.SetCrop(50, 40, 600, 400);  // the crop plays no part in the mapping
            for (double sx : {3.0, 170.5, 320.0, 611.25})
                for (double sy : {2.0, 240.0, 477.5})
                    for (double z : {0.5, 40.0}) {
                        trVector o, d, screen, view;
                        v.WorldRayFromScreenPos(o, d, sx, sy, z);
                        trVector const P = o + d;
                        v.WPos2SPos(&P, &screen, &view, 1);
                        EXPECT_TRUE(Near(screen.x, sx) && Near(screen.y, sy)) << sx << " " << sy << " -> " << screen.x
                                                                              << " " << screen.y;
                        EXPECT_FLOAT_EQ(float(screen.z), v.DepthValueFromViewSpace(view));
                        // The depth argument is view z, or distance from the ray's origin.
                        v.ViewRayFromScreenPos(o, d, sx, sy, z);
                        EXPECT_NEAR(mode < 2 ? d.z : d.Length(), z, 1e-9 * z);
                        if (mode != 2 || stereo == 0.0) {
                            EXPECT_NEAR(screen.z, 1.0 / z, 1e-9 / z);
                        }
                    }
            // Points in front of the camera, spread over the image, come back on their ray.
            for (int i = 0; i < 20; ++i) {
                trVector const P = v.WorldSpaceFromViewSpace(trVector((i % 5 - 2) * 1.3, (i / 5 - 1.5) * 0.9, 5.0 + i));
                trVector screen, o, d;
                v.WPos2SPos(&P, &screen, nullptr, 1);
                v.WorldRayFromScreenPos(o, d, screen.x, screen.y, 1.0);
                EXPECT_LT((P - o).Cross(d.Normalized()).Length(), 1e-9 * (P - o).Length()) << i;
                EXPECT_GT((P - o).Dot(d), 0.0) << i;
            }
        }
}

TEST(trView, BehindThePerspectiveCameraAndAroundTheSphericalOne)
{
    trView v = PlainView(trProjectionPerspective);
    trVector const P(1.0, 2.0, -4.0);
    trVector s, o, d;
    v.WPos2SPos(&P, &s, nullptr, 1);
    EXPECT_LT(s.z, 0.0);
    EXPECT_EQ(v.Visibility(s, trVector()), 0);
    // Without stereo every spherical ray starts at the centre; the image centre looks
    // along Dir, the right edge straight behind.
    v = MakeView(trProjectionSpherical);
    v.WorldRayFromScreenPos(o, d, 17.0, 400.0, 3.0);
    EXPECT_TRUE(Near(o.x, v.Pos.x) && Near(o.y, v.Pos.y) && Near(o.z, v.Pos.z));
    v.WorldRayFromScreenPos(o, d, 320.0, 240.0, 1.0);
    EXPECT_NEAR((d - v.Dir).Length(), 0.0, 1e-12);
    v.WorldRayFromScreenPos(o, d, 640.0, 240.0, 1.0);
    EXPECT_NEAR((d + v.Dir).Length(), 0.0, 1e-12);
}

TEST(trView, FootprintsAndDepthsAtKnownDistances)
{
    // A small segment across the view at distance 10: its projected length must
    // agree with the sizes the view reports. Depth: view z, or distance to the eye.
    struct Case {
        trProjectionMode mode;
        double pixelsPerUnitAt10;
        float depth;  // of (3, 4, 12)
    } const cases[] = {
        {trProjectionPerspective, 64.0, 1.0f / 12.0f},  // 640 / 10
        {trProjectionOrthographic, 640.0, 1.0f / 12.0f},  // no distance
        {trProjectionSpherical, 640.0 / (2 * M_PI) / 10.0, 1.0f / 13.0f},
        {trProjectionFisheye, 64.0, 1.0f / 13.0f},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.mode);
        trView v = PlainView(c.mode);
        trVector const ends[2] = {trVector(-0.005, 0.0, 10.0), trVector(0.005, 0.0, 10.0)};
        trVector s[2];
        v.WPos2SPos(ends, s, nullptr, 2);
        EXPECT_NEAR(s[1].x - s[0].x, 0.01 * c.pixelsPerUnitAt10, 1e-4);
        trVector const ss = v.WSize2SSizeNew(0.01, trVector(0, 0, 10));
        EXPECT_NEAR(ss.x, 0.01 * c.pixelsPerUnitAt10, 1e-9);
        if (c.mode != trProjectionSpherical) {
            EXPECT_NEAR(v.WSize2SSize(0.01, trVector(0, 0, 10)), 0.01 * c.pixelsPerUnitAt10, 1e-9);
        }
        EXPECT_NEAR(ss.z, 0.01 / 100.0, 1e-12);  // 1/z changes by size / z^2
        trVector const V(3.0, 4.0, 12.0), off(1, 1, 1);
        EXPECT_FLOAT_EQ(v.DepthValueFromViewSpace(V), c.depth);
        EXPECT_FLOAT_EQ(v.DepthValueFromViewSpace(V + off, off), c.depth);
        EXPECT_TRUE(std::isfinite(v.DepthValueFromViewSpace(trVector())));
    }
    // Zoom scales perspective footprints; the scale is by width in both axes.
    trView const zoomed = PlainView(trProjectionPerspective, 640, 100, 2.0);
    EXPECT_DOUBLE_EQ(zoomed.WSize2SSizeNew(1.0, trVector(0, 0, 10)).y, 128.0);
}

TEST(trView, VisibilityOfPointsAgainstEachCropSideAndOfBoxes)
{
    trView v = PlainView(trProjectionPerspective);
    v.SetCrop(10, 20, 100, 200);
    struct Case {
        trVector sp, ss;
        int visible, total;
    } const cases[] = {
        {{50, 50, 0.1}, {1, 1, 0}, 1, 1},    {{50, 50, 0.0}, {1, 1, 0.0}, 0, 0},
        {{50, 50, -0.1}, {1, 1, 0.05}, 0, 0}, {{50, 50, -0.1}, {1, 1, 0.2}, 1, 0},  // behind; reaching in front
        {{5, 50, 0.1}, {4, 0, 0}, 0, 0},     {{5, 50, 0.1}, {5, 0, 0}, 1, 0},      // left: 10 - 5 above 4
        {{50, 15, 0.1}, {0, 4, 0}, 0, 0},    {{50, 15, 0.1}, {0, 5, 0}, 1, 0},     // top
        {{100, 50, 0.1}, {0, 0, 0}, 0, 0},   {{99.5, 50, 0.1}, {0, 0, 0}, 1, 1},   // right: at or above 100 + 0
        {{104, 50, 0.1}, {4, 0, 0}, 0, 0},   {{104, 50, 0.1}, {4.5, 0, 0}, 1, 0},
        {{50, 200, 0.1}, {0, 0, 0}, 0, 0},   {{50, 203, 0.1}, {0, 3.5, 0}, 1, 0},  // bottom
    };
    for (Case const &c : cases) {
        EXPECT_EQ(v.Visibility(c.sp, c.ss), c.visible) << c.sp.x << " " << c.sp.y << " " << c.sp.z;
        EXPECT_EQ(v.VisibilityTotal(c.sp, c.ss), c.total) << c.sp.x << " " << c.sp.y << " " << c.sp.z;
    }
    // A bounded crop stays in the image and never turns inside out.
    v.SetCrop(-5, 30, 900, 10);
    EXPECT_TRUE(v.cropLeft == 0 && v.cropRight == 640 && v.cropBottom == 30);
    v.SetCropUnBounded(-5, -6, 700, 500);
    EXPECT_EQ(v.cropLeft, -5);
    // Boxes, against the full image.
    auto box = [](double x0, double z0, double x1, double z1) {
        return trBoundingBox(trVector(x0, -1, z0), trVector(x1, 1, z1));
    };
    v = PlainView(trProjectionPerspective);
    EXPECT_EQ(v.BoxVisibility(box(-1, 5, 1, 6)), 1);
    EXPECT_EQ(v.BoxVisibility(box(-1, -6, 1, -5)), 0);
    EXPECT_EQ(v.BoxVisibility(box(50, 5, 51, 6)), 0);   // off to the right
    EXPECT_EQ(v.BoxVisibility(box(-1, -1, 1, 1)), 1);   // around the eye
    EXPECT_EQ(v.BoxVisibility(trBoundingBox()), 0);
    EXPECT_FALSE(v.IsDegenerate());
    v.SetBoundingBox(box(-1, -6, 1, -5));
    EXPECT_TRUE(v.IsDegenerate());
    v.RemoveBoundingBox();
    EXPECT_FALSE(v.IsDegenerate());
    // A fisheye sees as far off its axis as the crop's corners reach: here 2.5 radians.
    trView f = PlainView(trProjectionFisheye, 640, 480, 0.25);
    EXPECT_EQ(f.BoxVisibility(box(5, -1, 6, 0)), 1);
    EXPECT_EQ(f.BoxVisibility(box(-1, -6, 1, -5)), 0);
    f.SetCrop(240, 180, 400, 300);  // now 0.625 radians
    EXPECT_EQ(f.BoxVisibility(box(5, -1, 6, 0)), 0);
}

TEST(trView, TimeViews)
{
    trView v = MakeView(trProjectionPerspective);
    trView moved = v;
    moved.Init(trVector(12.0, -3.0, 7.5), trRotation(trVector(0.3, -0.6, 0.2)), 640, 480, 1.2, 1.2, true,
               trProjectionPerspective);

    trVector o, d, ot, dt, o1, d1;
    v.WorldRayFromScreenPos(o, d, 100.0, 200.0, 3.0);
    v.WorldRayFromScreenPos(ot, dt, 100.0, 200.0, 3.0, 0.7);
    EXPECT_TRUE(o == ot && d == dt);  // no time views: time plays no part

    v.SetT0(v);
    v.SetT1(moved);
    v.ViewT1->WorldRayFromScreenPos(o1, d1, 100.0, 200.0, 3.0);
    v.WorldRayFromScreenPos(ot, dt, 100.0, 200.0, 3.0, 0.25);
    EXPECT_NEAR((ot - (o * 0.75 + o1 * 0.25)).Length(), 0.0, 1e-12);
    EXPECT_NEAR((dt - (d * 0.75 + d1 * 0.25)).Length(), 0.0, 1e-12);
    trVector const P(1, 2, 3);
    EXPECT_NEAR((v.WorldSpaceFromViewSpace(P, 1.0) - moved.WorldSpaceFromViewSpace(P)).Length(), 0.0, 1e-12);
    // Projection at the shutter ends uses the time views.
    trVector const W = moved.WorldSpaceFromViewSpace(trVector(0.5, 0.5, 10));
    trVector s0, s1;
    v.WPos2SPos_T0(&W, &s0, nullptr, 1);
    v.WPos2SPos_T1(&W, &s1, nullptr, 1);
    EXPECT_NEAR(s1.x, 320.0 + 0.05 * 640 * 1.2, 1e-9);
    EXPECT_NE(s0.x, s1.x);

    v.SetDOFRadius(0.25);
    EXPECT_TRUE(v.ViewT0->DOFRadius == 0.25 && v.ViewT1->DOFRadius == 0.25);
    // Copies own their time views.
    trView copy = v;
    ASSERT_TRUE(copy.ViewT0 && copy.ViewT1);
    EXPECT_NE(copy.ViewT0, v.ViewT0);
    copy.SetDOFRadius(2.0);
    EXPECT_EQ(v.ViewT1->DOFRadius, 0.25);
    // Resizing reaches the time views; a fresh camera drops them.
    copy.Init(v, 320, 240);
    EXPECT_EQ(copy.ViewT1->ImageWidth, 320);
    EXPECT_DOUBLE_EQ(copy.ViewT1->ScaleX, 320 * 1.2);
    copy.Init(trVector(), trRotation(), 10, 10, 1, 1, true, trProjectionPerspective);
    EXPECT_FALSE(copy.ViewT0 || copy.ViewT1);
}

TEST(trView, BadCameraDataStaysFinite)
{
    HostCapture host;
    trView v;
    EXPECT_EQ(v.Init(trVector(), trRotation(), -10, -3, 0.0, 1.0, true, trProjectionMode(7)), 1);
    ASSERT_EQ(host.warnings.size(), 1u);
    EXPECT_EQ(host.warnings[0].rfind("Init: ", 0), 0u);
    EXPECT_TRUE(v.ProjectionMode == trProjectionPerspective && v.ImageWidth == 0 && v.cropBottom == 0);
    trVector o, d;
    v.ViewRayFromScreenPos(o, d, 3.0, 4.0, 1.0);
    EXPECT_FALSE(d.IsNan() || std::isinf(d.x) || std::isinf(d.y));
    EXPECT_TRUE(std::isfinite(v.WSize2SSize(1.0, trVector(0, 0, 0))));
}

// -- The split rule.

trRenderTri Tri(trVector a, trVector b, trVector c)
{
    trRenderTri t;
    t.P[0] = t.Pt[0] = a;
    t.P[1] = t.Pt[1] = b;
    t.P[2] = t.Pt[2] = c;
    return t;
}

trViewSubdivRules NoJitter(bool adaptive = true)
{
    trViewSubdivRules r;
    r.detailJittering = false;
    r.fullyAdaptive = adaptive;
    return r;
}

double Split(trView const &v, trRenderTri t, double detail, trViewSubdivRules const &rules = NoJitter(),
             int *edges = nullptr, float const *table = nullptr, double displacement = 0.0, bool cull = false,
             double margin = 0.0)
{
    int e[2] = {-1, -1};
    v.ProjectTri(t);
    return v.TriVisibility(t, detail, displacement, rules, cull, edges ? edges : e, table, margin);
}

TEST(trView, TriVisibilityEnds)
{
    trView v = PlainView(trProjectionPerspective);
    trVector const a(0, 0, 10), b(1, 0, 10), c(0, 1, 10), r(5.1, 0, 0);
    EXPECT_EQ(Split(v, Tri(a, a + trVector(1e-7, 0, 0), c), 1.0), 0.0);  // zero-length edge
    EXPECT_EQ(Split(v, Tri(-a, -b, -c), 1.0), 0.0);                       // behind
    // Just off the right of the image (by 6.4 pixels), unless displacement or a
    // margin may bring it in.
    EXPECT_EQ(Split(v, Tri(a + r, b + r, c + r), 1.0), 0.0);
    EXPECT_GT(Split(v, Tri(a + r, b + r, c + r), 1.0, NoJitter(), nullptr, nullptr, 0.2), 1.0);
    EXPECT_GT(Split(v, Tri(a + r, b + r, c + r), 1.0, NoJitter(), nullptr, nullptr, 0.0, false, 7.0), 1.0);
    EXPECT_GT(Split(v, Tri(a, b, c), 1.0), 1.0);
    // Back faces go only when asked and when nothing can displace them.
    EXPECT_EQ(Split(v, Tri(a, b, c), 1.0, NoJitter(), nullptr, nullptr, 0.0, true), 0.0);
    EXPECT_GT(Split(v, Tri(a, c, b), 1.0, NoJitter(), nullptr, nullptr, 0.0, true), 1.0);
    EXPECT_GT(Split(v, Tri(a, b, c), 1.0, NoJitter(), nullptr, nullptr, 0.5, true), 1.0);
}

TEST(trView, TriVisibilityOneMicropolygonIsLevelZeroAndJitterAgreesAcrossAnEdge)
{
    // Frontal tri at distance 10: its longest edge spans `pixels` on screen.
    trView v = PlainView(trProjectionPerspective);
    trRenderTri t = Tri(trVector(0, 0, 10), trVector(0.5, 0, 10), trVector(0.25, 0.2, 10));
    double const pixels = 0.5 * 64.0;
    trView o = PlainView(trProjectionOrthographic, 100, 100);
    for (bool adaptive : {true, false}) {
        EXPECT_EQ(Split(v, t, 0.99 / pixels, NoJitter(adaptive)), 1.0);
        EXPECT_NEAR(Split(v, t, 1.01 / pixels, NoJitter(adaptive)), 2.0 + std::log2(1.01), 1e-9);
        EXPECT_NEAR(Split(v, t, 8.0 / pixels, NoJitter(adaptive)), 2.0 + 3.0, 1e-9);
        // Orthographic: one micropolygon exactly, and the same at any distance.
        for (double z : {2.0, 3000.0}) {
            trRenderTri ot = Tri(trVector(0, 0, z), trVector(0.25, 0, z), trVector(0.125, 0.1, z));
            EXPECT_EQ(Split(o, ot, 1.0 / 25.0, NoJitter(adaptive)), 1.0);
            EXPECT_NEAR(Split(o, ot, 4.0 / 25.0, NoJitter(adaptive)), 4.0, 1e-9) << z;
        }
    }
    trViewSubdivRules blend = NoJitter();
    blend.detailBlending = 2.0;
    EXPECT_NEAR(Split(v, t, 1.5 / pixels, blend), 1.0 + std::log2(1.5) / 2.0, 1e-9);
    // A stored length limits the edge: a tri known to be half as long asks one level less.
    for (double &l : t.EdgeLength)
        l = 0.25;
    EXPECT_NEAR(Split(v, t, 8.0 / pixels, NoJitter(false)), 2.0 + 2.0, 1e-9);

    // Jitter moves a level by at most half, and agrees across an edge: in any corner order.
    std::vector<float> table(16384);
    trMersenneTwister twister;
    twister.sgenrand(0);
    for (float &f : table)
        f = float(twister.genrand() / 4294967295.0);
    trViewSubdivRules rules;
    rules.detailJitterAmount = 1.0;
    trVector const p[3] = {trVector(0.1, 0.2, 10), trVector(0.7, -0.1, 11), trVector(-0.3, 0.4, 12)};
    int differs = 0;
    for (double detail : {0.5, 1.0, 2.0}) {
        double const plain = Split(v, Tri(p[0], p[1], p[2]), detail);
        double const first = Split(v, Tri(p[0], p[1], p[2]), detail, rules, nullptr, table.data());
        int const order[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {1, 0, 2}, {0, 2, 1}, {2, 1, 0}};
        for (auto const &c : order)
            EXPECT_EQ(Split(v, Tri(p[c[0]], p[c[1]], p[c[2]]), detail, rules, nullptr, table.data()), first);
        EXPECT_LE(std::fabs(first - plain), 0.5 + 1e-12);
        differs += first != plain;
    }
    EXPECT_GT(differs, 0);
}

TEST(trView, TriVisibilitySplitEdgeChoice)
{
    trView o = PlainView(trProjectionOrthographic, 100, 100);
    trRenderTri const right = Tri(trVector(0, 0, 5), trVector(1, 0, 5), trVector(0, 1, 5));
    int e[2];
    auto edges = [&] { return std::to_string(e[0]) + std::to_string(e[1]); };
    Split(o, right, 1.0, NoJitter(), e);
    EXPECT_EQ(edges(), "12");  // the neediest edge: the hypotenuse
    Split(o, right, 0.0, NoJitter(), e);
    EXPECT_EQ(e[0], 1);  // equal levels (detail 0): the longer edge in the world wins
    Split(o, Tri(trVector(1, 0, 5), trVector(0, 1, 5), trVector(0, 0, 6)), 1.0, NoJitter(false), e);
    EXPECT_EQ(edges(), "20");  // equal levels and lengths: the later edge
    // Perspective: a short near edge outranks two long edges seen end on, unless
    // all edges are forced, when the longest goes first.
    trView v = PlainView(trProjectionPerspective);
    trRenderTri t = Tri(trVector(0, 0, 2), trVector(0.2, 0, 2), trVector(2.5, 0.01, 50));
    double const level = Split(v, t, 1.0, NoJitter(), e);
    EXPECT_EQ(e[0], 0);
    trViewSubdivRules force = NoJitter();
    force.forceAllEdges = true;
    EXPECT_EQ(Split(v, t, 1.0, force, e), level);
    EXPECT_EQ(e[0], 2);
}

}  // namespace
