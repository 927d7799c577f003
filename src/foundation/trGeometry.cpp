#include "foundation/trGeometry.h"

#include <cmath>

#include "shading/trIntersection.h"

int trClipRayToNearFar(trVector &start, trVector &end, trVector const &axis, double const &nearDist,
                       double const &farDist)
{
    double d0 = axis.Dot(start);
    double d1 = axis.Dot(end);
    // The negated forms also reject NaN depths.
    if (!(nearDist <= farDist))
        return 0;
    if ((d0 < nearDist && d1 < nearDist) || (d0 > farDist && d1 > farDist))
        return 0;
    if (!(d0 == d0) || !(d1 == d1))
        return 0;

    // Here at least one end is inside the slab or the two ends straddle it, so
    // the depth changes wherever a clip is needed and dd is not zero there.
    double dd = d1 - d0;
    double t0 = 0.0, t1 = 1.0;
    if (d0 < nearDist)
        t0 = (nearDist - d0) / dd;
    else if (d0 > farDist)
        t0 = (farDist - d0) / dd;
    if (d1 < nearDist)
        t1 = (nearDist - d0) / dd;
    else if (d1 > farDist)
        t1 = (farDist - d0) / dd;

    trVector a = start, delta = end - start;
    if (t0 != 0.0)
        start = a + delta * t0;
    if (t1 != 1.0)
        end = a + delta * t1;
    return 1;
}

int trClipPolygonAgainstPlane(int n, trVector const *points, double const *distances, signed char *sides,
                              trVector *out)
{
    if (n <= 0 || !points || !distances || !out)
        return 0;
    int count = 0;
    for (int i = 0; i < n; ++i) {
        double di = distances[i];
        if (sides)
            sides[i] = di > 0.0 ? 1 : (di < 0.0 ? -1 : 0);
        if (di >= 0.0)
            out[count++] = points[i];
        // A crossing only where the signs are strictly opposite: a point on the
        // plane is emitted once, as itself, and never again as a crossing.
        int next = i + 1 == n ? 0 : i + 1;
        double dn = distances[next];
        if ((di > 0.0 && dn < 0.0) || (di < 0.0 && dn > 0.0)) {
            double s = di / (di - dn);
            out[count++] = points[i] + (points[next] - points[i]) * s;
        }
    }
    return count;
}

int trIntersectLineCone(trVector const &origin, trVector const &dir, trVector const &apex, trVector const &axis,
                        double halfAngle, double *t0, double *t1)
{
    double cosA = std::cos(halfAngle);
    double cos2 = cosA * cosA;
    trVector co = origin - apex;
    double dv = dir.Dot(axis);
    double cov = co.Dot(axis);
    double dd = dir.Dot(dir);

    // (P - apex) . axis = |P - apex| cos(halfAngle), squared, with P on the line.
    double a = dv * dv - dd * cos2;
    double b = 2.0 * (dv * cov - dir.Dot(co) * cos2);
    double c = cov * cov - co.Dot(co) * cos2;

    double roots[2];
    int found = 0;
    if (std::fabs(a) <= 1e-12 * dd) {
        // The line runs parallel to the cone's surface: at most one crossing.
        if (std::fabs(b) <= 1e-12)
            return 0;
        roots[found++] = -c / b;
    } else {
        double disc = b * b - 4.0 * a * c;
        if (disc < 0.0)
            return 0;
        double sq = std::sqrt(disc);
        double q = -0.5 * (b + (b < 0.0 ? -sq : sq));
        double r0 = q / a;
        double r1 = q != 0.0 ? c / q : r0;
        if (r0 > r1) {
            double t = r0;
            r0 = r1;
            r1 = t;
        }
        roots[found++] = r0;
        if (r1 != r0)
            roots[found++] = r1;
    }

    // Keep the crossings on the nappe that opens along +axis.
    double kept[2];
    int count = 0;
    for (int i = 0; i < found; ++i)
        if ((co + dir * roots[i]).Dot(axis) >= 0.0)
            kept[count++] = roots[i];
    if (count > 0 && t0)
        *t0 = kept[0];
    if (count > 1 && t1)
        *t1 = kept[1];
    return count;
}

bool trIntersectRayTri(trRay const &ray, trVector const *corners, trIntersection &isect)
{
    if (!corners)
        return false;
    trVector e1 = corners[1] - corners[0];
    trVector e2 = corners[2] - corners[0];
    trVector p = ray.delta.Cross(e2);
    double det = e1.Dot(p);
    if (det > -1e-12 && det < 1e-12)
        return false;
    double inv = 1.0 / det;
    trVector s = ray.origin - corners[0];
    trVector q = s.Cross(e1);
    double u = s.Dot(p) * inv;
    double v = ray.delta.Dot(q) * inv;
    double t = e2.Dot(q) * inv;
    isect.u = u;
    isect.v = v;
    isect.t = t;
    if (u < 0.0 || u > 1.0)
        return false;
    if (v < 0.0 || u + v > 1.0)
        return false;
    if (t <= 1e-12 || t > 1.0)
        return false;
    isect.Point = ray.origin + ray.delta * t;
    return true;
}

bool trIntersectLineTriSlow(trVector const &origin, trVector const &dir, trVector const *corners, double &t,
                            double &u, double &v)
{
    if (!corners)
        return false;
    trVector e1 = corners[1] - corners[0];
    trVector e2 = corners[2] - corners[0];
    trVector n = e1.Cross(e2);
    double nn = n.LengthSq();
    if (nn <= 0.0 || !(nn == nn))
        return false;
    double denom = n.Dot(dir);
    if (std::fabs(denom) <= 1e-12 * std::sqrt(nn) * dir.Length())
        return false;
    double tHit = n.Dot(corners[0] - origin) / denom;
    trVector w = origin + dir * tHit - corners[0];
    // Ratios of signed areas to the whole: w = u e1 + v e2.
    double uHit = n.Dot(w.Cross(e2)) / nn;
    double vHit = n.Dot(e1.Cross(w)) / nn;
    if (uHit < 0.0 || vHit < 0.0 || uHit + vHit > 1.0)
        return false;
    t = tHit;
    u = uHit;
    v = vHit;
    return true;
}

double trNormaliseToPlusMinus180Degrees(double const &degrees)
{
    double r = std::fmod(degrees, 360.0);
    if (r > 180.0)
        r -= 360.0;
    else if (r <= -180.0)
        r += 360.0;
    return r;
}
