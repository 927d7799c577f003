#pragma once
// What each render thread keeps beside its render state: the intersection of the
// point being shaded, the medium a ray is inside, two materials the path tracer
// shades subsurface exits and participating media with, and the stack of state
// frames. One row per thread slot, all made when the library loads, so that no
// render thread allocates them.

#include "foundation/trPrivateGlobals.h"
#include "foundation/trStack.h"
#include "shading/trBsdf.h"
#include "shading/trIntersection.h"
#include "shading/trMaterial.h"
#include "shading/trRenderStateFrame.h"

struct trThreadRenderRecord {
    // Deeper than any ray recursion: each ray takes one frame, shader calls a few more.
    static constexpr int kNumFrames = 128;

    trThreadRenderRecord() : frames(kNumFrames) {}

    trIntersection intersection;
    trMaterial *currentMediumMaterial = nullptr;  // whose subsurface exit is pending
    trBsdfMedium currentMedium;
    // The shader framework attaches their shaders: a translucent shader for the exit
    // of subsurface scattering, and a participating-medium shader.
    trMaterial sssExitMaterial;
    trMaterial mediumMaterial;
    trStack<trRenderStateFrame> frames;
};

// The row of a thread slot.
inline trThreadRenderRecord &trThreadRecord(unsigned thread) { return trThePrivateGlobals.ThreadRecords()[thread]; }
