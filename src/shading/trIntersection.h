#pragma once

// What a ray hit: written by the leaf intersection tests, read by shading.
// Plain data, copied freely: a test works on a copy and assigns it on a hit.

#include "foundation/trColour.h"
#include "foundation/trTransform.h"
#include "foundation/trVector.h"

class trRenderTri;
class trGeomGroup;
class trParticle;

struct trIntersection {
    // The transform of the object hit, to world and back.
    trMatrix4x4<double> ObjectToWorld;
    trMatrix4x4<double> WorldToObject;
    trVector Point;   // the hit, and the end of the ray once it is shortened
    trVector Normal;  // unit
    double t = 0.0;   // ray parameter of the hit, 0..1 over the ray's length
    // Barycentric coordinates: the hit is P0 + u (P1 - P0) + v (P2 - P0).
    double u = 0.0;
    double v = 0.0;
    trFCol Transmittance = trFCol(1.0f, 1.0f, 1.0f);
    trRenderTri *RenderTri = nullptr;
    unsigned Tri = 0;  // tri number in the scene, 0 for none
    trGeomGroup *Group = nullptr;
    trParticle *Particle = nullptr;
    trGeomGroup *ParticleGroup = nullptr;  // group of the instance
    int Instance = -1;
    int RayType = 0;
    bool StopAtFirstHit = true;  // an opacity ray stops at its first opaque hit
    bool LowRes = false;
    bool ExcludeSelf = false;
    double InvFootprint = 1000000.0;
    trRenderTri *SelfTri = nullptr;
};
