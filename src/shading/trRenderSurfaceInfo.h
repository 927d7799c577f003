#pragma once
// What the ray core tells the lighting code about the surface point being shaded,
// and the record that keeps a ray leaving a coarse triangle from hitting the
// surface it approximates (the shadow terminator).

#include "foundation/trVector.h"

struct trRenderTerminatorFix {
    bool active = false;
    unsigned char side = 0;  // 0 or 1
    trFVector normal;
    unsigned pointIndices[3] = {0, 0, 0};  // the triangle the ray starts from
};

struct trRenderSurfaceInfo {
    trVector Ps;        // shading position
    trVector Pd;        // displaced position
    trVector Nv;        // shading normal, corrected for the view
    trVector NvFacing;  // the same, turned towards the viewer
    trVector Ni;        // interpolated normal
    double terminatorAngle = 0.0;
    bool hasTerminatorAngle = false;
    trRenderTerminatorFix terminatorFix;
};
