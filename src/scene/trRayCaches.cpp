#include "scene/trRayCaches.h"

#include "volumes/trVoxelLightingSystem.h"

trRayCaches::~trRayCaches() { delete VoxelLighting; }

void trRayCaches::BuildSubdivCache(trScene *scene)
{
    SubdivCache.Scene = scene;
    SubdivCache.Active = scene != nullptr;
}

void trRayCaches::BuildTubeSet()
{
    TubeSet.Active = true;
    TubeSet.NextTube = 0;
}
