#include "shading/trLightState.h"

#include "scene/trLight.h"

void trLightState::Init(trRenderState *owner, int number, trLight *source)
{
    *this = trLightState();
    state = owner;
    lightNumber = number;
    light = source;
    if (!light)
        return;
    IsInfinite = light->IsInfinite;
    DoShadowsFromSurfaces = light->DoShadows && light->DoShadowsFromSurfaces;
    DoShadowsFromAtmosphere = light->DoShadows && light->DoShadowsFromAtmosphere;
    DoSoftShadows = light->DoSoftShadows;
    Pos = light->Pos;
    Direction = light->Dir;
    InvMaxDistance = light->MaxDistance > 0.0 ? 1.0 / light->MaxDistance : 0.0;
    Radius = light->Radius;
    InvRadius = 1.0 / trGuardedDivisor(light->Radius);
}

bool trLightState::IsEnviroLight() const { return light && light->IsEnviroLight; }
