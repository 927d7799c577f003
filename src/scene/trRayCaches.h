#pragma once
// What one render thread caches for ray-time subdivision: the ring of displaced
// edge midpoints, the tree of split triangles, the tubes of recent rays, and the
// voxel lighting instance of the render. The subdivision itself comes with
// render-time subdivision; for now these record what they were built for.

class trScene;
namespace trVoxelLightingSystem {
struct Instance;
}

class trSubdivCache {
public:
    bool Active = false;
    trScene *Scene = nullptr;
};

class trRayTubeSet {
public:
    bool Active = false;
    int NextTube = 0;  // the ring's next tube to reuse
};

class trRayCaches {
public:
    trRayCaches() = default;
    ~trRayCaches();
    trRayCaches(trRayCaches const &) = delete;
    trRayCaches &operator=(trRayCaches const &) = delete;

    // Forgets every cached midpoint.
    void ResetMidpointRing() { MidpointRingTag = 0; }
    // For the tris of `scene`; a null scene leaves the cache inactive.
    void BuildSubdivCache(trScene *scene);
    void BuildTubeSet();

    int MidpointRingTag = 0;  // 0..63
    trSubdivCache SubdivCache;
    trRayTubeSet TubeSet;
    // Made on first use by the render state; owned.
    trVoxelLightingSystem::Instance *VoxelLighting = nullptr;
};
