#include "scene/trView.h"

#include "foundation/trMessages.h"
#include "scene/trRenderTri.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>

double trView::zStretch = 1.0;

namespace {

constexpr double kTwoPi = 6.28318530717958;
constexpr double kPi = 3.14159265358979;
constexpr double kLog2E = 1.44269504088896;
// How far the projected form may raise an edge's need above its distance form:
// 4.322 levels, a factor of 2^4.322 (about 20) in size, so that a corner close to
// the camera plane cannot ask for endless splits.
constexpr double kCapFactor = 20.000996841363346;

double Log2(double x) { return std::log(x > 1e-300 ? x : 1e-300) * kLog2E; }

std::uint32_t FloatBits(float f)
{
    std::uint32_t u;
    std::memcpy(&u, &f, sizeof u);
    return u;
}

// A corner's hash by its texture position: the same corner hashes the same in
// every tri that shares it.
std::uint32_t DetailHash(trVector const &pt)
{
    float const z = (float(pt.z) + 1.953953f) * 0.82762825f;
    float const y = (float(pt.y) + 1.7387738f) * 0.73624676f;
    float const x = (float(pt.x) + 1.346346f) * 0.25583625f;
    return FloatBits(z) ^ FloatBits(y) ^ FloatBits(x);
}

// Angle wrapped into -pi..pi.
double WrapAngle(double a)
{
    if (a > kPi || a < -kPi)
        a -= kTwoPi * std::floor((a + kPi) / kTwoPi);
    return a;
}

}  // namespace

trView::trView() {}

trView::~trView()
{
    delete ViewT0;
    delete ViewT1;
}

trView::trView(trView const &o) { *this = o; }

trView &trView::operator=(trView const &o)
{
    if (this == &o)
        return *this;
    trView *t0 = o.ViewT0 ? new trView(*o.ViewT0) : nullptr;
    trView *t1 = o.ViewT1 ? new trView(*o.ViewT1) : nullptr;
    delete ViewT0;
    delete ViewT1;
    Pos = o.Pos;
    Dir = o.Dir;
    Rot = o.Rot;
    WorldToView = o.WorldToView;
    ViewToWorld = o.ViewToWorld;
    ImageZoomX = o.ImageZoomX;
    ImageZoomY = o.ImageZoomY;
    Perspective = o.Perspective;
    StereoOffset = o.StereoOffset;
    DOFSubjectDistance = o.DOFSubjectDistance;
    DOFRadius = o.DOFRadius;
    ImageWidth = o.ImageWidth;
    ImageHeight = o.ImageHeight;
    HalfWidth = o.HalfWidth;
    HalfHeight = o.HalfHeight;
    ScaleX = o.ScaleX;
    ScaleY = o.ScaleY;
    cropLeft = o.cropLeft;
    cropTop = o.cropTop;
    cropRight = o.cropRight;
    cropBottom = o.cropBottom;
    ProjectionMode = o.ProjectionMode;
    DetailMode360 = o.DetailMode360;
    Box = o.Box;
    HasBox = o.HasBox;
    ViewT0 = t0;
    ViewT1 = t1;
    return *this;
}

long trView::Init(trView const &o, int width, int height)
{
    *this = o;
    SetImageSize(width, height);
    if (ViewT0)
        ViewT0->SetImageSize(width, height);
    if (ViewT1)
        ViewT1->SetImageSize(width, height);
    return 1;
}

void trView::SetImageSize(int width, int height)
{
    if (width < 0)
        width = 0;
    if (height < 0)
        height = 0;
    ImageWidth = width;
    ImageHeight = height;
    HalfWidth = width * 0.5;
    HalfHeight = height * 0.5;
    ScaleX = width * ImageZoomX;
    ScaleY = width * ImageZoomY;
    SetCropUnBounded(0.0, 0.0, width, height);
}

long trView::Init(trVector const &pos, trRotation const &rot, int width, int height, double zoomX, double zoomY,
                  bool perspective, trProjectionMode mode, double stereoOffset, double dofSubjectDistance,
                  double dofRadius)
{
    DeleteTimeViews();
    if (int(mode) < 0 || int(mode) > 3) {
        char text[96];
        std::snprintf(text, sizeof text, "Init: unknown projection mode %d; perspective is used", int(mode));
        trWarning(text);
        mode = trProjectionPerspective;
    }
    if (!perspective && mode == trProjectionPerspective)
        mode = trProjectionOrthographic;
    ProjectionMode = mode;
    Perspective = mode != trProjectionOrthographic;

    Rot = rot;
    trTransform<double> const turn = rot.GetTransform();
    StereoOffset = stereoOffset;
    DOFSubjectDistance = dofSubjectDistance;
    DOFRadius = dofRadius;
    Pos = pos;
    // Spherical stereo moves each ray's origin on a circle instead.
    if (mode != trProjectionSpherical)
        Pos += turn.Direction(trVector(1.0, 0.0, 0.0)) * stereoOffset;
    Dir = turn.Direction(trVector(0.0, 0.0, 1.0));
    ViewToWorld = trMatrix4x4<double>::Translation(Pos) * turn.Matrix();
    WorldToView = turn.InverseMatrix() * trMatrix4x4<double>::Translation(-Pos);

    ImageZoomX = zoomX;
    ImageZoomY = zoomY;
    SetImageSize(width, height);
    return 1;
}

void trView::SetT0(trView const &v)
{
    trView *t = new trView(v);
    t->DeleteTimeViews();
    delete ViewT0;
    ViewT0 = t;
}

void trView::SetT1(trView const &v)
{
    trView *t = new trView(v);
    t->DeleteTimeViews();
    delete ViewT1;
    ViewT1 = t;
}

void trView::DeleteTimeViews()
{
    delete ViewT0;
    delete ViewT1;
    ViewT0 = nullptr;
    ViewT1 = nullptr;
}

void trView::SetDOFRadius(double r)
{
    DOFRadius = r;
    if (ViewT0)
        ViewT0->SetDOFRadius(r);
    if (ViewT1)
        ViewT1->SetDOFRadius(r);
}

void trView::SetBoundingBox(trBoundingBox const &box)
{
    Box = box;
    HasBox = true;
}

void trView::RemoveBoundingBox()
{
    Box = trBoundingBox();
    HasBox = false;
}

bool trView::IsDegenerate() const { return HasBox && BoxVisibility(Box) == 0; }

void trView::SetCrop(double l, double t, double r, double b)
{
    auto clamp = [](double v, double hi) { return v < 0.0 ? 0.0 : (v > hi ? hi : v); };
    double const w = ImageWidth, h = ImageHeight;
    l = clamp(l, w);
    r = clamp(r, w);
    t = clamp(t, h);
    b = clamp(b, h);
    // An inverted crop is empty, not turned round.
    SetCropUnBounded(l, t, r < l ? l : r, b < t ? t : b);
}

void trView::SetCropUnBounded(double l, double t, double r, double b)
{
    cropLeft = l;
    cropTop = t;
    cropRight = r;
    cropBottom = b;
}

trVector trView::WorldSpaceFromViewSpace(trVector const &P, double time) const
{
    if (!HasTimeViews())
        return WorldSpaceFromViewSpace(P);
    trVector const a = ViewT0->WorldSpaceFromViewSpace(P);
    trVector const b = ViewT1->WorldSpaceFromViewSpace(P);
    return a + (b - a) * time;
}

void trView::ViewRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z) const
{
    switch (ProjectionMode) {
    case trProjectionOrthographic: {
        double const x = (sx - HalfWidth) * trGuardedReciprocal(ScaleX);
        double const y = (sy - HalfHeight) * trGuardedReciprocal(ScaleY);
        // Parallel rays from the image plane; stereo shears them.
        origin.Set(x, y, 0.0);
        dir.Set(-z * StereoOffset, 0.0, z);
        break;
    }
    case trProjectionSpherical: {
        double const a = (sx - HalfWidth) * trGuardedReciprocal(double(ImageWidth)) * kTwoPi;
        double const b = (sy - HalfHeight) * trGuardedReciprocal(double(ImageHeight)) * kPi;
        double const cb = std::cos(b), sb = std::sin(b);
        if (StereoOffset == 0.0) {
            origin.Set(0.0, 0.0, 0.0);
            dir.Set(z * cb * std::sin(a), z * sb, z * cb * std::cos(a));
        } else {
            // The eye sits on a circle of radius StereoOffset, to the right of the
            // pixel's heading, and the heading itself turns back by the offset.
            origin.Set(StereoOffset * std::cos(a), 0.0, -StereoOffset * std::sin(a));
            double const ra = a - StereoOffset;
            dir.Set(z * cb * std::sin(ra), z * sb, z * cb * std::cos(ra));
        }
        break;
    }
    case trProjectionFisheye: {
        double const x = (sx - HalfWidth) * trGuardedReciprocal(ScaleX) - StereoOffset;
        double const y = (sy - HalfHeight) * trGuardedReciprocal(ScaleY);
        double const r = std::sqrt(x * x + y * y);
        origin.Set(0.0, 0.0, 0.0);
        // sin(r) / r times (x, y): the angle off the axis is the distance from the centre.
        double const k = r > 1e-12 ? z * std::sin(r) / r : z;
        dir.Set(k * x, k * y, z * std::cos(r));
        break;
    }
    default: {
        origin.Set(0.0, 0.0, 0.0);
        double const x = (sx - HalfWidth) * trGuardedReciprocal(ScaleX) - StereoOffset;
        double const y = (sy - HalfHeight) * trGuardedReciprocal(ScaleY);
        dir.Set(x * z, y * z, z);
        break;
    }
    }
}

void trView::ViewRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z, double t) const
{
    if (!HasTimeViews()) {
        ViewRayFromScreenPos(origin, dir, sx, sy, z);
        return;
    }
    trVector o0, d0, o1, d1;
    ViewT0->ViewRayFromScreenPos(o0, d0, sx, sy, z);
    ViewT1->ViewRayFromScreenPos(o1, d1, sx, sy, z);
    origin = o0 + (o1 - o0) * t;
    dir = d0 + (d1 - d0) * t;
}

void trView::WorldRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z) const
{
    trVector o, d;
    ViewRayFromScreenPos(o, d, sx, sy, z);
    origin = ViewToWorld.MulPoint(o);
    dir = ViewToWorld.MulDirection(d);
}

void trView::WorldRayFromScreenPos(trVector &origin, trVector &dir, double sx, double sy, double z, double t) const
{
    if (!HasTimeViews()) {
        WorldRayFromScreenPos(origin, dir, sx, sy, z);
        return;
    }
    // Each time view places its own ray in the world; the world rays are mixed.
    trVector o0, d0, o1, d1;
    ViewT0->WorldRayFromScreenPos(o0, d0, sx, sy, z);
    ViewT1->WorldRayFromScreenPos(o1, d1, sx, sy, z);
    origin = o0 + (o1 - o0) * t;
    dir = d0 + (d1 - d0) * t;
}

trVector trView::ScreenPosFromViewSpace(trVector const &V) const
{
    switch (ProjectionMode) {
    case trProjectionOrthographic:
        return trVector((V.x + V.z * StereoOffset) * ScaleX + HalfWidth, V.y * ScaleY + HalfHeight,
                        trGuardedReciprocal(V.z));
    case trProjectionSpherical: {
        double const n = V.Length();
        double a, b;
        if (StereoOffset == 0.0) {
            a = std::atan2(V.x, V.z);
            b = std::atan2(V.y, std::sqrt(V.x * V.x + V.z * V.z));
        } else {
            // Solve for the heading whose ray, from its point on the eye circle,
            // passes through V: in the frame of the heading the ray is
            // S (1, 0) + t (-sin S, cos S), so sin(phi + S) = S cos S / rho with
            // phi the angle of V off the heading.
            double const S = StereoOffset;
            double const rho = std::sqrt(V.x * V.x + V.z * V.z);
            double k = S * std::cos(S) * trGuardedReciprocal(rho);
            k = k > 1.0 ? 1.0 : (k < -1.0 ? -1.0 : k);
            double const phi = std::asin(k) - S;
            a = WrapAngle(std::atan2(V.x, V.z) - phi);
            double const along = rho * std::cos(phi) * trGuardedReciprocal(std::cos(S));
            b = std::atan2(V.y, along);
        }
        return trVector(a / kTwoPi * ImageWidth + HalfWidth, b / kPi * ImageHeight + HalfHeight,
                        trGuardedReciprocal(n));
    }
    case trProjectionFisheye: {
        double const n = V.Length();
        double const rho = std::sqrt(V.x * V.x + V.y * V.y);
        double const r = std::atan2(rho, V.z);
        double const k = rho > 1e-300 ? r / rho : 0.0;
        return trVector((k * V.x + StereoOffset) * ScaleX + HalfWidth, k * V.y * ScaleY + HalfHeight,
                        trGuardedReciprocal(n));
    }
    default: {
        double const iz = trGuardedReciprocal(V.z);
        return trVector((V.x * iz + StereoOffset) * ScaleX + HalfWidth, V.y * iz * ScaleY + HalfHeight, iz);
    }
    }
}

void trView::WPos2SPos(trVector const *world, trVector *screen, trVector *view, int n) const
{
    for (int i = 0; i < n; ++i) {
        trVector const v = WorldToView.MulPoint(world[i]);
        if (view)
            view[i] = v;
        screen[i] = ScreenPosFromViewSpace(v);
    }
}

void trView::WPos2SPos_T0(trVector const *world, trVector *screen, trVector *view, int n) const
{
    (ViewT0 ? ViewT0 : this)->WPos2SPos(world, screen, view, n);
}

void trView::WPos2SPos_T1(trVector const *world, trVector *screen, trVector *view, int n) const
{
    (ViewT1 ? ViewT1 : this)->WPos2SPos(world, screen, view, n);
}

void trView::ProjectTri(trRenderTri &tri) const
{
    WPos2SPos_T0(tri.P, tri.ScreenT0, nullptr, 3);
    WPos2SPos_T1(tri.P, tri.ScreenT1, nullptr, 3);
}

double trView::ViewScale() const
{
    double const s = ScaleX * ScaleY;
    return std::sqrt(s > 0.0 ? s : 0.0);
}

trVector trView::WSize2SSizeNew(double size, trVector const &V) const
{
    switch (ProjectionMode) {
    case trProjectionOrthographic: {
        double const iz = trGuardedReciprocal(V.z);
        return trVector(size * std::fabs(ScaleX), size * std::fabs(ScaleY), size * iz * iz);
    }
    case trProjectionSpherical: {
        double const in = trGuardedReciprocal(V.Length());
        return trVector(size * in * ImageWidth / kTwoPi, size * in * ImageHeight / kPi, size * in * in);
    }
    case trProjectionFisheye: {
        double const in = trGuardedReciprocal(V.Length());
        return trVector(size * in * std::fabs(ScaleX), size * in * std::fabs(ScaleY), size * in * in);
    }
    default: {
        double const iz = std::fabs(trGuardedReciprocal(V.z));
        return trVector(size * iz * std::fabs(ScaleX), size * iz * std::fabs(ScaleY), size * iz * iz);
    }
    }
}

double trView::WSize2SSize(double size, trVector const &V) const
{
    trVector const s = WSize2SSizeNew(size, V);
    return std::sqrt(s.x * s.y);
}

float trView::DepthValueFromViewSpace(trVector const &V) const
{
    if (ProjectionMode == trProjectionSpherical || ProjectionMode == trProjectionFisheye)
        return float(trGuardedReciprocal(V.Length()));
    return float(trGuardedReciprocal(V.z));
}

float trView::DepthValueFromViewSpace(trVector const &V, trVector const &origin) const
{
    return DepthValueFromViewSpace(V - origin);
}

int trView::Visibility(trVector const &sp, trVector const &ss) const
{
    if (-ss.z >= sp.z)
        return 0;  // behind the camera
    if (cropLeft - sp.x > ss.x || cropTop - sp.y > ss.y)
        return 0;
    if (sp.x >= cropRight + ss.x || sp.y >= cropBottom + ss.y)
        return 0;
    return 1;
}

int trView::VisibilityTotal(trVector const &sp, trVector const &ss) const
{
    if (sp.z - ss.z <= 0.0)
        return 0;
    if (sp.x - ss.x < cropLeft || sp.y - ss.y < cropTop)
        return 0;
    // The far sides are exclusive, as in Visibility.
    if (sp.x + ss.x >= cropRight || sp.y + ss.y >= cropBottom)
        return 0;
    return 1;
}

int trView::BoxVisibility(trBoundingBox const &box) const
{
    if (box.IsEmpty())
        return 0;
    if (ProjectionMode == trProjectionSpherical)
        return 1;
    if (ProjectionMode == trProjectionFisheye) {
        // By the box's bounding sphere: unseen when all of it lies further off the
        // axis than any crop corner reaches.
        trVector const c = WorldToView.MulPoint(box.Centre());
        double const radius = box.HalfSize().Length();
        double const dist = c.Length();
        if (dist <= radius)
            return 1;
        double const off = std::atan2(std::sqrt(c.x * c.x + c.y * c.y), c.z) - std::asin(radius / dist);
        double reach = 0.0;
        for (int i = 0; i < 4; ++i) {
            double const x = ((i & 1 ? cropRight : cropLeft) - HalfWidth) * trGuardedReciprocal(ScaleX) - StereoOffset;
            double const y = ((i & 2 ? cropBottom : cropTop) - HalfHeight) * trGuardedReciprocal(ScaleY);
            double const r = std::sqrt(x * x + y * y);
            reach = r > reach ? r : reach;
        }
        return off > reach ? 0 : 1;
    }
    double loX = trBoundingBox::Huge, loY = trBoundingBox::Huge, hiX = -trBoundingBox::Huge,
           hiY = -trBoundingBox::Huge, nearest = 0.0;
    int behind = 0;
    for (int i = 0; i < 8; ++i) {
        trVector const v = WorldToView.MulPoint(box.Corner(i));
        if (v.z <= 0.0)
            ++behind;
        trVector const s = ScreenPosFromViewSpace(v);
        loX = s.x < loX ? s.x : loX;
        hiX = s.x > hiX ? s.x : hiX;
        loY = s.y < loY ? s.y : loY;
        hiY = s.y > hiY ? s.y : hiY;
        nearest = s.z > nearest ? s.z : nearest;
    }
    if (behind == 8)
        return 0;
    // A perspective box across the camera plane projects without bound.
    if (behind > 0 && ProjectionMode == trProjectionPerspective)
        return 1;
    return Visibility(trVector((loX + hiX) * 0.5, (loY + hiY) * 0.5, nearest),
                      trVector((hiX - loX) * 0.5, (hiY - loY) * 0.5, 0.0));
}

int trView::BfcVisibility(trVector const *corners) const
{
    trVector const n = (corners[1] - corners[0]).Cross(corners[2] - corners[0]);
    if (ProjectionMode == trProjectionOrthographic)
        return n.Dot(Dir) > 0.0 ? 0 : 1;
    trVector const centroid = (corners[0] + corners[1] + corners[2]) * (1.0 / 3.0);
    return n.Dot(centroid - Pos) > 0.0 ? 0 : 1;
}

double trView::TriVisibility(trRenderTri &tri, double detail, double displacementBound,
                             trViewSubdivRules const &rules, bool cullBackfaces, int splitEdges[2],
                             float const *randomTable, double screenMargin) const
{
    // 1. World edge lengths. The stored length bounds an edge's need, so that a
    // sub-tri never asks for more than its parent's half even where displacement
    // has stretched it; this also ends the recursion.
    double len[3], lenSq[3];
    for (int i = 0; i < 3; ++i) {
        lenSq[i] = (tri.P[(i + 1) % 3] - tri.P[i]).LengthSq();
        double l = std::sqrt(lenSq[i]);
        if (l <= 1e-6)
            return 0.0;
        if (tri.EdgeLength[i] >= 0.0 && l > tri.EdgeLength[i])
            l = tri.EdgeLength[i];
        tri.EdgeLength[i] = l;
        len[i] = l;
    }

    bool const ortho = ProjectionMode == trProjectionOrthographic;
    bool const flatPerspective = ProjectionMode == trProjectionPerspective;
    if (displacementBound < 0.0)
        displacementBound = 0.0;

    // Culling, on the screen positions at both shutter ends. A corner counts as
    // behind when even the displacement can't bring it in front.
    if (flatPerspective || ortho) {
        int behind = 0, front = 0;
        double loX = trBoundingBox::Huge, loY = trBoundingBox::Huge, hiX = -trBoundingBox::Huge,
               hiY = -trBoundingBox::Huge, nearest = 0.0;
        for (int k = 0; k < 6; ++k) {
            trVector const &s = k < 3 ? tri.ScreenT0[k] : tri.ScreenT1[k - 3];
            if (s.z < 0.0 && s.z * displacementBound > -1.0)
                ++behind;
            if (s.z > 0.0)
                ++front;
            loX = s.x < loX ? s.x : loX;
            hiX = s.x > hiX ? s.x : hiX;
            loY = s.y < loY ? s.y : loY;
            hiY = s.y > hiY ? s.y : hiY;
            nearest = s.z > nearest ? s.z : nearest;
        }
        if (behind == 6)
            return 0.0;
        if (ortho || front == 6) {
            double const grow = ortho ? displacementBound : displacementBound * nearest;
            trVector const sp((loX + hiX) * 0.5, (loY + hiY) * 0.5, 1.0);
            trVector const ss((hiX - loX) * 0.5 + grow * std::fabs(ScaleX) + screenMargin,
                              (hiY - loY) * 0.5 + grow * std::fabs(ScaleY) + screenMargin, 0.0);
            if (!Visibility(sp, ss))
                return 0.0;
        }
    }
    if (cullBackfaces && displacementBound <= 0.0 && !BfcVisibility(tri.P))
        return 0.0;

    // 2. Jitter per edge, from both corners' hashes alike so that the two tris of
    // an edge agree.
    double jitter[3] = {0.0, 0.0, 0.0};
    if (rules.detailJittering && rules.detailJitterAmount > 0.0 && randomTable)
        for (int i = 0; i < 3; ++i) {
            std::uint32_t const h = DetailHash(tri.Pt[i]) ^ DetailHash(tri.Pt[(i + 1) % 3]);
            jitter[i] = (double(randomTable[h & 0x3fff]) - 0.5) * rules.detailJitterAmount;
        }

    // 3. The distance form: pixels the edge would span facing the camera at the
    // nearer of its corners (the tri's nearest corner for the uniform test).
    double const s = ViewScale();
    double distSq[3] = {1.0, 1.0, 1.0};
    double nearestSq = 1.0;
    if (!ortho) {
        for (int i = 0; i < 3; ++i) {
            double const d = (tri.P[i] - Pos).LengthSq();
            distSq[i] = d > 0.001 ? d : 0.001;
        }
        nearestSq = distSq[0] < distSq[1] ? distSq[0] : distSq[1];
        nearestSq = distSq[2] < nearestSq ? distSq[2] : nearestSq;
    }

    double level[3];
    for (int i = 0; i < 3; ++i) {
        int const j = (i + 1) % 3;
        double const dSq = rules.fullyAdaptive ? (distSq[i] < distSq[j] ? distSq[i] : distSq[j]) : nearestSq;
        double const pixels = s * len[i] * detail / std::sqrt(dSq);
        if (!rules.fullyAdaptive) {
            level[i] = Log2(pixels) + jitter[i];
            continue;
        }

        // 4. The projected form: the edge's length on screen, the longer of the two
        // shutter ends. Foreshortening may lower the need, but never below what
        // the displacement could stand up towards the camera; the cap guards
        // corners close to the camera plane. An edge that crosses the camera plane
        // keeps the distance form.
        bool projectable = true;
        if (flatPerspective)
            projectable = tri.ScreenT0[i].z > 0.0 && tri.ScreenT0[j].z > 0.0 && tri.ScreenT1[i].z > 0.0 &&
                          tri.ScreenT1[j].z > 0.0;
        if (!projectable) {
            level[i] = Log2(pixels) + jitter[i];
            continue;
        }
        double screenSq = 0.0;
        for (int k = 0; k < 2; ++k) {
            trVector const *sp = k == 0 ? tri.ScreenT0 : tri.ScreenT1;
            double dx = std::fabs(sp[j].x - sp[i].x);
            double const dy = sp[j].y - sp[i].y;
            if (ProjectionMode == trProjectionSpherical && dx > HalfWidth)
                dx = ImageWidth - dx;  // the short way across the seam
            double const q = dx * dx + dy * dy;
            screenSq = q > screenSq ? q : screenSq;
        }
        double projected = std::sqrt(screenSq) * detail;
        double const standUp = displacementBound < len[i] ? pixels * displacementBound / len[i] : pixels;
        projected = projected > standUp ? projected : standUp;
        // The cap is compared before the logarithm: one log per edge.
        double const cap = pixels * kCapFactor;
        level[i] = Log2(projected < cap ? projected : cap) + jitter[i];
    }

    // 5. Blending spreads the step from whole to split over a range of levels;
    // without it a split comes at once, one level clear of 0.
    for (int i = 0; i < 3; ++i) {
        if (rules.detailBlending > 0.0)
            level[i] /= rules.detailBlending;
        else
            level[i] += level[i] > 0.0 ? 1.0 : -1.0;
    }

    // 6. The edge to split: the longest in forced mode, else the neediest; ties go
    // to the longer edge, then to the later one.
    int pick = 0;
    double top = level[0];
    for (int i = 1; i < 3; ++i) {
        if (level[i] > top)
            top = level[i];
        bool better;
        if (rules.forceAllEdges)
            better = lenSq[i] >= lenSq[pick];
        else
            better = level[i] > level[pick] || (level[i] == level[pick] && lenSq[i] >= lenSq[pick]);
        if (better)
            pick = i;
    }
    if (splitEdges) {
        splitEdges[0] = pick;
        splitEdges[1] = (pick + 1) % 3;
    }

    // 7.
    return top > 0.0 ? top + 1.0 : 1.0;
}
