#pragma once
// The render driver, as far as the render state reads it so far: the context, the
// scene, and the driver's copies of the settings the state works from. The driver
// fills these at Init from its own copies of the settings nodes (subdivision
// settings and GI settings); the rest of the driver comes with the render control.

#include "render/trRenderContext.h"

class trScene;

class trRender {
public:
    trRenderContext::Context RenderContext() const { return context; }
    trScene *PScene() const { return scene; }

    trRenderContext::Context context = trRenderContext::Context(0);
    trScene *scene = nullptr;

    // From the subdivision settings.
    double rayDetailMultiplier = 0.25;
    bool stabiliseRayDetailInMotion = false;
    int rayDetailStabilisation = 3;
    // From the GI settings, for the voxel lighting instance of the render.
    int cloudGIMaxRayDepth = 2;
    int cloudGIQualityPreset = 1;
};
