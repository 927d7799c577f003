#pragma once

// A ray is a finite segment: origin plus t times delta for t from 0 to 1.
// Shortening a ray to a hit is a Set to the hit point, so the parameter range
// stays 0..1 throughout the ray core.

#include "foundation/trVector.h"

class trRay
{
public:
    trVector origin;
    trVector delta;         // end minus origin, not a unit vector
    trVector inverseDelta;  // per component 1 / delta, guarded as trGuardedReciprocal
    trVector direction;     // delta normalised
    unsigned long id;

    trRay() : id(0) { Set(trVector(), trVector(), 0); }
    trRay(trVector const &from, trVector const &to, unsigned long rayId = 0) { Set(from, to, rayId); }

    void Set(trVector const &from, trVector const &to, unsigned long rayId)
    {
        origin = from;
        delta = to - from;
        inverseDelta = delta.Inverse();
        direction = delta.Normalized();
        id = rayId;
    }
    // New ends, same identity.
    void Set(trVector const &from, trVector const &to) { Set(from, to, id); }

    trVector End() const { return origin + delta; }
    trVector At(double t) const { return origin + delta * t; }
    double Length() const { return delta.Length(); }
    // 1 / |delta|^2, with the divisor guarded.
    double InvLengthSq() const { return trGuardedReciprocal(delta.LengthSq()); }
};
