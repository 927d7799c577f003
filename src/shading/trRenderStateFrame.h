#pragma once
// The part of the render state that is versioned per ray but too big to copy as
// part of the state object: it lives on a per-thread stack of frames made in
// advance, and each ray takes the next frame as its own.

#include "shading/trBsdf.h"
#include "shading/trRenderSurfaceInfo.h"

struct trRenderStateFrame {
    unsigned char DoRayTracedSubdivisibles = 1;
    int RayRecursionDepth = 0;
    double SmoothSize = double(1e-6f);
    // Detail controls of the fractal functions.
    double DEV_CloudFeatureScalar = 1.0;
    double DEV_FractalTailBoost = 0.0;
    double DEV_FractalUpperThreshold = 0.0;
    double DEV_FractalLowerThreshold = 0.0;
    double DEV_FractalMultiplier = 1.0;
    float MinSpecularHighlightRoughness = 1e-6f;
    float PathScatterMultiplier = 1.0f;
    bool DoBsdfOnly = false;
    trBsdf Bsdf;
    trRenderSurfaceInfo SurfaceInfo;
    trFCol CdiffRefl_surfIndirect;
    trFCol CdiffTrans_surfIndirect;
    trFCol CspecRefl_surfIndirect;
    trFCol CspecTrans_surfIndirect;
};
