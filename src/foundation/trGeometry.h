#pragma once

// Small intersection and clipping helpers.

#include "foundation/trRay.h"
#include "foundation/trVector.h"

struct trIntersection;

// Clips the segment from start to end to the slab near <= axis . p <= far,
// moving the ends in place. `axis` is the depth direction (normally a unit view
// direction). Returns 1 if part of the segment remains, 0 if none does, in which
// case the ends are left as they were.
int trClipRayToNearFar(trVector &start, trVector &end, trVector const &axis, double const &nearDist,
                       double const &farDist);

// Clips a polygon of n points against a plane, keeping the side where the signed
// distance is 0 or more. `distances` holds the signed distance of each input
// point. `sides`, if not null, receives per input point 1 (kept, distance above
// 0), 0 (on the plane) or -1 (clipped). `out` must have room for n + 1 points.
// Returns the new point count: 0 when everything is clipped.
int trClipPolygonAgainstPlane(int n, trVector const *points, double const *distances, signed char *sides,
                              trVector *out);

// Where the line origin + t dir meets the surface of the cone with the given
// apex, unit axis and half-angle (radians, in 0..pi/2). Only the nappe that
// opens along +axis counts. Returns the number of crossings, 0, 1 or 2, with t0
// <= t1; a single crossing is in t0. Pointers may be null.
int trIntersectLineCone(trVector const &origin, trVector const &dir, trVector const &apex, trVector const &axis,
                        double halfAngle, double *t0, double *t1);

// Ray and triangle (Moller-Trumbore, double precision) over the ray's range.
// A determinant inside (-1e-12, 1e-12) is no hit; u outside 0..1, v below 0 or
// u + v above 1 is no hit; t at or below 1e-12 or above 1 is no hit. u, v and t
// are written whenever the determinant passes, hit or not; on a hit Point is set
// to origin + t delta.
bool trIntersectRayTri(trRay const &ray, trVector const *corners, trIntersection &isect);

// The infinite line origin + t dir against a triangle: the plane crossing first,
// then barycentrics from sub-triangle areas. Edges count as inside. Writes t, u,
// v (as trIntersection's u and v) on a hit. False for a line parallel to the
// plane or a degenerate triangle.
bool trIntersectLineTriSlow(trVector const &origin, trVector const &dir, trVector const *corners, double &t,
                            double &u, double &v);

// An angle in degrees brought into (-180, 180].
double trNormaliseToPlusMinus180Degrees(double const &degrees);
