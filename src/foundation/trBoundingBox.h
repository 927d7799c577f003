#pragma once

// Axis-aligned box. The slab test is inline: the accelerators run it per node.

#include "foundation/trRay.h"
#include "foundation/trVector.h"

class trBoundingBox
{
public:
    // The empty box is lo = +Huge, hi = -Huge: inverted on every axis, so that a
    // Union with a point gives exactly that point and a Union with a box gives
    // that box. Huge is finite so that Size and Centre of an empty box stay finite.
    static constexpr double Huge = 1e300;

    trVector lo, hi;

    trBoundingBox() : lo(Huge, Huge, Huge), hi(-Huge, -Huge, -Huge) {}
    // Either two opposite corners, in any order.
    trBoundingBox(trVector const &a, trVector const &b)
        : lo(Min(a.x, b.x), Min(a.y, b.y), Min(a.z, b.z)), hi(Max(a.x, b.x), Max(a.y, b.y), Max(a.z, b.z))
    {
    }
    explicit trBoundingBox(trVector const &p) : lo(p), hi(p) {}
    // The box from corner p to p + (sx, sy, sz); negative sizes extend the other way.
    trBoundingBox(trVector const &p, double sx, double sy, double sz)
        : trBoundingBox(p, p + trVector(sx, sy, sz))
    {
    }

    // True when the box holds no point: lo above hi on some axis.
    bool IsEmpty() const { return lo.x > hi.x || lo.y > hi.y || lo.z > hi.z; }
    trVector Size() const { return hi - lo; }
    trVector HalfSize() const { return (hi - lo) * 0.5; }
    trVector Centre() const { return (lo + hi) * 0.5; }
    // Corner i: bit 0 picks hi.x, bit 1 hi.y, bit 2 hi.z.
    trVector Corner(int i) const
    {
        return trVector(i & 1 ? hi.x : lo.x, i & 2 ? hi.y : lo.y, i & 4 ? hi.z : lo.z);
    }
    // Inclusive of the faces.
    bool Contains(trVector const &p) const
    {
        return p.x >= lo.x && p.x <= hi.x && p.y >= lo.y && p.y <= hi.y && p.z >= lo.z && p.z <= hi.z;
    }

    trBoundingBox &Union(trBoundingBox const &o)
    {
        lo.Set(Min(lo.x, o.lo.x), Min(lo.y, o.lo.y), Min(lo.z, o.lo.z));
        hi.Set(Max(hi.x, o.hi.x), Max(hi.y, o.hi.y), Max(hi.z, o.hi.z));
        return *this;
    }
    trBoundingBox &Union(trVector const &p)
    {
        lo.Set(Min(lo.x, p.x), Min(lo.y, p.y), Min(lo.z, p.z));
        hi.Set(Max(hi.x, p.x), Max(hi.y, p.y), Max(hi.z, p.z));
        return *this;
    }
    // Per axis the greater lo and the lesser hi. Unless allowInverted, hi is then
    // raised to at least lo: disjoint boxes give a flat box, not an inverted one.
    trBoundingBox &Intersection(trBoundingBox const &o, bool allowInverted = false);

    // Slab test over the ray's range 0..1; 1 on a hit, with near and far written
    // where the pointers are not null.
    int IntersectRay(trRay const &ray, double *tNear, double *tFar) const
    {
        double nearT = 0.0, farT = 1.0;
        for (int axis = 0; axis < 3; ++axis) {
            double inv = ray.inverseDelta(axis);
            double o = ray.origin(axis);
            if (std::fabs(inv) >= trHugeReciprocal) {
                // Parallel to this slab: the start must lie within it.
                if (o < lo(axis) || o > hi(axis))
                    return 0;
            } else {
                double t0 = (lo(axis) - o) * inv;
                double t1 = (hi(axis) - o) * inv;
                if (t0 > t1) {
                    double t = t0;
                    t0 = t1;
                    t1 = t;
                }
                if (t0 > nearT)
                    nearT = t0;
                if (t1 < farT)
                    farT = t1;
            }
            // The historical early out: a far end behind the start on the first
            // axis reports a hit. Callers only cull with this test, so it errs on
            // the side of testing more.
            if (axis == 0 && farT < 0.0)
                break;
            if (nearT > farT)
                return 0;
        }
        if (tNear)
            *tNear = nearT;
        if (tFar)
            *tFar = farT;
        return 1;
    }

    // Whether the plane n . p + d = 0 cuts a box centred at the origin with the
    // given half-size; this box's own corners play no part.
    static bool IntersectPlane(trVector const &normal, double d, trVector const &halfSize);
    // Whether the triangle of three corners overlaps this box (faces included).
    bool IntersectTri(trVector const *corners) const;
    // Strict overlap: boxes that only touch do not intersect.
    bool IntersectBoundingBox(trBoundingBox const &o) const
    {
        return lo.x < o.hi.x && o.lo.x < hi.x && lo.y < o.hi.y && o.lo.y < hi.y && lo.z < o.hi.z &&
               o.lo.z < hi.z;
    }

    bool operator==(trBoundingBox const &o) const { return lo == o.lo && hi == o.hi; }
    bool operator!=(trBoundingBox const &o) const { return !(*this == o); }

private:
    static double Min(double a, double b) { return b < a ? b : a; }
    static double Max(double a, double b) { return a < b ? b : a; }
};
