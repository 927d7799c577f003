#pragma once
// A render state's copy of what it needs of one light, with the cache of the last
// answer. The intensity and shadow functions come with the direct lighting.

#include "foundation/trColour.h"
#include "foundation/trVector.h"

class trLight;
class trRenderState;

class trLightState {
public:
    // Copies what the lighting reads from `light`; a null light makes an empty state.
    void Init(trRenderState *state, int lightNumber, trLight *light);
    void ClearCache() { Valid = false; }
    bool IsEnviroLight() const;
    trLight *PLight() const { return light; }
    int LightNumber() const { return lightNumber; }
    trRenderState *PState() const { return state; }

    bool IsInfinite = false;
    bool DoShadowsFromSurfaces = false;
    bool DoShadowsFromAtmosphere = false;
    bool DoSoftShadows = false;
    trVector Pos;
    trVector Direction;
    double InvMaxDistance = 0.0;  // 0: no limit
    double InvRadius = 0.0;
    double Radius = 0.0;

    // The last call's answer.
    bool Valid = false;
    trVector CachedP;
    trVector CachedN;
    trFCol CachedCol;

    // Steps through the global random tables.
    unsigned SampleCounter = 0;
    unsigned AreaCounter = 0;

private:
    trRenderState *state = nullptr;
    int lightNumber = -1;
    trLight *light = nullptr;
};
