#pragma once
// A light as the scene store keeps it: where it is, what it gives, and what it
// may do. The lighting code reads these records during a render.

#include "foundation/trColour.h"
#include "foundation/trVector.h"

class trShader;
class trView;

class trLight {
public:
    trVector Pos;
    trVector Dir = trVector(0.0, -1.0, 0.0);
    trFCol Col = trFCol(1.0f, 1.0f, 1.0f);
    trFCol ColInAtmosphere = trFCol(1.0f, 1.0f, 1.0f);
    double Radius = 0.0;
    double AngularRadiusInRadians = 0.0;
    double MaxDistance = 0.0;  // 0: no limit
    long NumSoftShadowSamples = 1;
    trShader *PShader = nullptr;
    trView *PView = nullptr;

    bool DoShadows = true;
    bool DoShadowsFromSurfaces = true;
    bool DoShadowsFromAtmosphere = true;
    bool DoSoftShadows = false;
    bool DoSpecularHighlights = true;
    bool DoGlowInAtmosphere = true;
    bool DoGISurfaces = true;
    bool DoGIAtmosphere = true;
    bool DoDetailFromSurfaces = true;
    bool DoDetailFromAtmosphere = true;
    bool IsEnviroLight = false;
    bool IsGILight = false;
    bool IsInfinite = false;
};
