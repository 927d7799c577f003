#include "foundation/trBoundingBox.h"

#include <cmath>

trBoundingBox &trBoundingBox::Intersection(trBoundingBox const &o, bool allowInverted)
{
    lo.Set(Max(lo.x, o.lo.x), Max(lo.y, o.lo.y), Max(lo.z, o.lo.z));
    hi.Set(Min(hi.x, o.hi.x), Min(hi.y, o.hi.y), Min(hi.z, o.hi.z));
    if (!allowInverted)
        hi.Set(Max(hi.x, lo.x), Max(hi.y, lo.y), Max(hi.z, lo.z));
    return *this;
}

bool trBoundingBox::IntersectPlane(trVector const &normal, double d, trVector const &halfSize)
{
    trVector nearCorner, farCorner;
    for (int q = 0; q < 3; ++q) {
        if (normal(q) > 0.0) {
            nearCorner(q) = -halfSize(q);
            farCorner(q) = halfSize(q);
        } else {
            nearCorner(q) = halfSize(q);
            farCorner(q) = -halfSize(q);
        }
    }
    return normal.Dot(nearCorner) + d <= 0.0 && normal.Dot(farCorner) + d >= 0.0;
}

namespace {

// Separating-axis test on the cross product of one box axis and one tri edge.
// p0 and p1 are the projections of two corners (the third projects onto one of
// them for these axes), r the projected half-size of the box.
bool AxisSeparates(double p0, double p1, double r)
{
    double mn = p0 < p1 ? p0 : p1;
    double mx = p0 < p1 ? p1 : p0;
    return mn > r || mx < -r;
}

} // namespace

bool trBoundingBox::IntersectTri(trVector const *corners) const
{
    if (!corners || IsEmpty())
        return false;

    // Work relative to the box centre, as the plane test expects.
    trVector c = Centre();
    trVector h = HalfSize();
    trVector v0 = corners[0] - c, v1 = corners[1] - c, v2 = corners[2] - c;
    trVector e0 = v1 - v0, e1 = v2 - v1, e2 = v0 - v2;

    // Nine axes from the box axes crossed with the edges.
    {
        double fx = std::fabs(e0.x), fy = std::fabs(e0.y), fz = std::fabs(e0.z);
        if (AxisSeparates(e0.z * v0.y - e0.y * v0.z, e0.z * v2.y - e0.y * v2.z, fz * h.y + fy * h.z) ||
            AxisSeparates(-e0.z * v0.x + e0.x * v0.z, -e0.z * v2.x + e0.x * v2.z, fz * h.x + fx * h.z) ||
            AxisSeparates(e0.y * v1.x - e0.x * v1.y, e0.y * v2.x - e0.x * v2.y, fy * h.x + fx * h.y))
            return false;
    }
    {
        double fx = std::fabs(e1.x), fy = std::fabs(e1.y), fz = std::fabs(e1.z);
        if (AxisSeparates(e1.z * v0.y - e1.y * v0.z, e1.z * v2.y - e1.y * v2.z, fz * h.y + fy * h.z) ||
            AxisSeparates(-e1.z * v0.x + e1.x * v0.z, -e1.z * v2.x + e1.x * v2.z, fz * h.x + fx * h.z) ||
            AxisSeparates(e1.y * v0.x - e1.x * v0.y, e1.y * v1.x - e1.x * v1.y, fy * h.x + fx * h.y))
            return false;
    }
    {
        double fx = std::fabs(e2.x), fy = std::fabs(e2.y), fz = std::fabs(e2.z);
        if (AxisSeparates(e2.z * v0.y - e2.y * v0.z, e2.z * v1.y - e2.y * v1.z, fz * h.y + fy * h.z) ||
            AxisSeparates(-e2.z * v0.x + e2.x * v0.z, -e2.z * v1.x + e2.x * v1.z, fz * h.x + fx * h.z) ||
            AxisSeparates(e2.y * v1.x - e2.x * v1.y, e2.y * v2.x - e2.x * v2.y, fy * h.x + fx * h.y))
            return false;
    }

    // The box's own three axes: the tri's extent against the half-size.
    for (int q = 0; q < 3; ++q) {
        double mn = std::fmin(v0(q), std::fmin(v1(q), v2(q)));
        double mx = std::fmax(v0(q), std::fmax(v1(q), v2(q)));
        if (mn > h(q) || mx < -h(q))
            return false;
    }

    // The tri's plane.
    trVector n = e0.Cross(e1);
    return IntersectPlane(n, -n.Dot(v0), h);
}
