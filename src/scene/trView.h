#pragma once

// One camera at one instant: the turns between world, view and screen space, the
// rays of the screen's pixels, what is visible, and how finely a triangle must be
// split to look smooth from here. Two further views, when set, are the camera at
// shutter start and end.
//
// View space: the camera at the origin looking along +z, x to the right, y up.
// Screen space: pixels, x from the left, y from the bottom row, z the depth value
// (1 / distance: larger is nearer, 0 is nothing).

#include "foundation/trBoundingBox.h"
#include "foundation/trRotation.h"
#include "foundation/trTransform.h"
#include "foundation/trVector.h"

class trRenderTri;

// What the split rule needs of the render's subdivision settings. The render fills
// it once per render from its copy of the subdiv settings node: `fully_adaptive`,
// `force_all_edges`, `detail_jittering` (the amount is the render's detail jitter,
// 1 when on) and `detail_blending`.
struct trViewSubdivRules {
    bool fullyAdaptive = true;
    bool forceAllEdges = false;
    bool detailJittering = true;
    double detailJitterAmount = 1.0;  // levels of random spread, centred on 0
    double detailBlending = 0.0;      // levels over which new detail fades in; 0: at once
};

enum trProjectionMode : int {
    trProjectionPerspective = 0,
    trProjectionOrthographic = 1,
    trProjectionSpherical = 2,  // 360 by 180 degrees
    trProjectionFisheye = 3,    // angular
};

class trView {
public:
    trView();
    ~trView();
    // A copy takes copies of the time views too.
    trView(trView const &o);
    trView &operator=(trView const &o);

    // -- Set up. Both forms return 1.
    // A copy of `o` at another image size: the scale follows the width, the crop
    // becomes the full image, and the time views are resized alike.
    long Init(trView const &o, int width, int height);
    // A camera at `pos` turned by `rot`, looking along the turned +z. Modes other
    // than spherical shift the position by the stereo offset along the turned +x;
    // `perspective` false makes a perspective mode orthographic. Old time views go.
    long Init(trVector const &pos, trRotation const &rot, int width, int height, double zoomX, double zoomY,
              bool perspective, trProjectionMode mode, double stereoOffset = 0.0, double dofSubjectDistance = 0.0,
              double dofRadius = 0.0);

    // Copies of `v` become the views at shutter start and end (without their own
    // time views).
    void SetT0(trView const &v);
    void SetT1(trView const &v);
    void DeleteTimeViews();
    bool HasTimeViews() const { return ViewT0 && ViewT1; }
    // On this view and on both time views.
    void SetDOFRadius(double r);
    void Set360DetailMode(int mode) { DetailMode360 = mode; }

    void SetBoundingBox(trBoundingBox const &box);
    void RemoveBoundingBox();
    bool HasBoundingBox() const { return HasBox; }
    trBoundingBox const &BoundingBox() const { return Box; }
    // A box is set and none of it can be seen.
    bool IsDegenerate() const;

    // Crop in pixels, left/top being the low x/y. SetCrop keeps it inside the
    // image and never inverted; SetCropUnBounded takes the values as they are.
    void SetCrop(double l, double t, double r, double b);
    void SetCropUnBounded(double l, double t, double r, double b);

    // -- Spaces.
    trVector ViewSpaceFromWorldSpace(trVector const &P) const { return WorldToView.MulPoint(P); }
    trVector WorldSpaceFromViewSpace(trVector const &P) const { return ViewToWorld.MulPoint(P); }
    // With both time views, the mix of their world points by time 0..1.
    trVector WorldSpaceFromViewSpace(trVector const &P, double time) const;

    // The ray through screen position (sx, sy), in view space. The point
    // origin + dir lies at depth z: view z for perspective and orthographic,
    // distance from the origin for spherical and fisheye.
    void ViewRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z) const;
    // With both time views, the mix of their rays by t; otherwise as above.
    void ViewRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z, double t) const;
    void WorldRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z) const;
    void WorldRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z, double t) const;

    // The inverse of ViewRayFromScreenPos: screen x, y of a view-space point, and
    // its depth value as z (negative behind the camera in modes 0 and 1).
    trVector ScreenPosFromViewSpace(trVector const &V) const;
    // For each of n world points: its screen position and, where `view` is not
    // null, its view-space position. _T0 and _T1 use the time views where set.
    void WPos2SPos(trVector const *world, trVector *screen, trVector *view, int n) const;
    void WPos2SPos_T0(trVector const *world, trVector *screen, trVector *view, int n) const;
    void WPos2SPos_T1(trVector const *world, trVector *screen, trVector *view, int n) const;
    // Fills the tri's screen positions at shutter start and end.
    void ProjectTri(trRenderTri &tri) const;

    // Pixels covered by a world size at view-space point V (the geometric mean of
    // the two axes).
    double WSize2SSize(double size, trVector const &V) const;
    // Per axis: x and y in pixels, z the spread of the depth value; the form that
    // Visibility takes as a span.
    trVector WSize2SSizeNew(double size, trVector const &V) const;
    // The scale from view units to pixels, uniform by width.
    double ViewScale() const;

    // 1 / distance for spherical and fisheye, else 1 / view z; guarded. The
    // two-point form measures from `origin` (a ray's start) instead of the camera.
    float DepthValueFromViewSpace(trVector const &V) const;
    float DepthValueFromViewSpace(trVector const &V, trVector const &origin) const;

    // -- Visibility: 1 visible, 0 not.
    // Screen point sp with span ss (as WSize2SSizeNew): 0 behind the camera or
    // wholly outside the crop.
    int Visibility(trVector const &sp, trVector const &ss) const;
    // 1 only when the whole span is in front and inside the crop.
    int VisibilityTotal(trVector const &sp, trVector const &ss) const;
    // Conservative: 0 only when the box surely can't be seen (a fisheye tests
    // the radius the crop reaches, a spherical view sees every box).
    int BoxVisibility(trBoundingBox const &box) const;
    // 0 when the world tri turns its back to the camera: its normal
    // (P1 - P0) x (P2 - P0) points away from the eye.
    int BfcVisibility(trVector const *corners) const;

    // The split rule for a tri whose screen positions are filled (ProjectTri).
    // 0: invisible or finished (a degenerate edge); 1: fine enough; above 1: split,
    // by how many levels the coarsest edge is coarser than wanted (fading in over
    // 1..2 with detail blending). splitEdges receives the edge to split and the
    // next edge. `detail` is the render's detail multiplier, `displacementBound`
    // how far the material may still move the surface. `randomTable` holds 16384
    // values in 0..1; null means no jitter. `screenMargin` (pixels) widens the
    // tri's screen box before the crop test, as a lens's circle of confusion does.
    double TriVisibility(trRenderTri &tri, double detail, double displacementBound, trViewSubdivRules const &rules,
                         bool cullBackfaces, int splitEdges[2], float const *randomTable,
                         double screenMargin = 0.0) const;

    // -- Data, in this order. Public: the render reads these per sample.
    trVector Pos;
    trVector Dir;  // the rotation applied to (0, 0, 1)
    trRotation Rot;
    trMatrix4x4<double> WorldToView;
    trMatrix4x4<double> ViewToWorld;

    double ImageZoomX = 1.0;
    double ImageZoomY = 1.0;
    bool Perspective = true;

    double StereoOffset = 0.0;
    double DOFSubjectDistance = 0.0;
    double DOFRadius = 0.0;

    int ImageWidth = 0;
    int ImageHeight = 0;
    double HalfWidth = 0.0;
    double HalfHeight = 0.0;
    // Width x zoom: the view's scale is uniform by width.
    double ScaleX = 0.0;
    double ScaleY = 0.0;

    // Crop in pixels; the full image after Init.
    double cropLeft = 0.0;
    double cropTop = 0.0;
    double cropRight = 0.0;
    double cropBottom = 0.0;
    trProjectionMode ProjectionMode = trProjectionPerspective;
    int DetailMode360 = 0;

    trBoundingBox Box;
    bool HasBox = false;

    // Views at shutter start and end, owned; null without motion blur.
    trView *ViewT0 = nullptr;
    trView *ViewT1 = nullptr;

    // A global depth factor of every view.
    static double zStretch;

private:
    // Image size, half sizes, scales by width, and the crop reset to the image.
    void SetImageSize(int width, int height);
};
