#pragma once
// The per-thread object through which every ray, shader, light and displacement
// of a render runs: where the render stands right now on this thread. Every ray
// takes a backup of it (trScopedStateBackup) and restores it on return, so code on
// a ray may change it at will and its caller still finds its own point intact.
//
// A backup is a flat copy of the fields below plus one frame from the thread's
// stack of frames; it owns that frame and nothing else. Six ownership flags say
// which of the pointed-to objects this very object releases; a restore never
// changes them.

#include "foundation/trColour.h"
#include "foundation/trVector.h"
#include "render/trRenderContext.h"
#include "shading/trIntersection.h"
#include "shading/trRenderStateFrame.h"
#include "shading/trShadingInterface.h"

#include <cstdint>
#include <type_traits>
#include <vector>

class trRender;
struct trRenderTarget;
class trBucketRender;
class trView;
class trSkyCache;
class trRayCaches;
class trMersenneTwister;
class trLightOctree;
class trLightOctreePair;
class trLightState;
class trGeomGroup;
class trRenderTri;
class trRenderState;
class trScene;
struct trTri;
namespace trVoxelLightingSystem {
struct Instance;
}

// The fields of a render state, in order. Plain data, so that a backup and a
// restore are one block copy.
struct trRenderStateData {
    bool initialised = false;
    bool ownsLightCaches = false;
    trRenderState *rootState = nullptr;
    bool ownsFrame = false;
    bool ownsSkyCache = false;
    bool ownsRayCaches = false;
    bool ownsRand = false;
    bool ownsLightStates = false;
    bool ownsThreadSlot = false;

    trRender *PRender = nullptr;
    trRenderTarget *PRenderTarget = nullptr;  // its first member is the main view
    trBucketRender *PBucketRender = nullptr;  // null outside a bucket

    int numSceneLights = 0;
    int numExtraLights = 0;

    trRenderStateFrame *frame = nullptr;
    trSkyCache *skyCache = nullptr;
    trRayCaches *rayCaches = nullptr;
    trMersenneTwister *rand = nullptr;  // the thread's generator; drawn from by Rand...()

    // Light caches, shared by every state of a render and locked on their own.
    std::vector<trLightOctreePair *> *lightOctreeCaches = nullptr;  // one per light state
    trLightOctree *sharedLightOctree = nullptr;
    std::vector<trLightOctree *> *diffuseGiOctrees = nullptr;
    std::vector<trLightOctree *> *glossyGiOctrees = nullptr;

    unsigned Thread = 0;  // row in the per-thread tables
    unsigned RenderPassId = 0;

    trRenderingInterface renderingInterface;
    trShadingInterface shadingInterface;

    int LightDepth = 1;  // one more on every traced ray and atmosphere ray
    double SplitLength = 0.0;
    // Which sources cast shadows for this state.
    bool DoShadowsFromSurfaces = true;
    bool DoShadowsFromAtmosphere = true;
    int MaxLightDepth = 6;
    double DetailMultiplier = 1.0;
    bool DoPrimarySurfaces = true;
    bool DoPrimaryAtmosphere = true;
    double RayDetailMultiplier = 0.25;
    // 1 / (sqrt(view scale x * view scale y) * detail * ray detail), set per pass.
    double RayFootprint = 1.0;
    double RayFootprintSq = 1.0;
    bool IsRayTracedPass = false;
    int ViewProjection = 0;  // 1: orthographic
    double frameTime = 0.0;  // animation time; Frame() gives it as a float
    float GIFactor = 1.0f;

    trVector RootEye;  // the main camera
    trVector Eye;      // origin of the ray being shaded
    trVector Pg, P;    // undisplaced and displaced shading position
    trVector Ng, Ni, N;
    trVector Ptg, Pt, Nt;
    trGeomGroup *CurrentGroup = nullptr;
    trRenderTri *CurrentRenderTri = nullptr;
    trVector MicroCorners[3];
    trVector MicroCornersRest[3];  // before the shading adjustments

    trFCol Cutil;  // scratch for a shader

    // Output block.
    trFCol Cemit_surf;
    trFCol Cdiff_surfDirect;
    trFCol Cdiff_surfIndirect;
    trFCol Cspec_surfDirect;
    trFCol Cspec_surfIndirect;
    trFCol Ao_surf;
    trFCol Oo_surf;
    trFCol Co_atmoDirect;
    trFCol Co_atmoIndirect;
    trFCol Ao_atmo;
    float CloudPos[3] = {0.0f, 0.0f, 0.0f};
    float Cloud2dMotion[2] = {0.0f, 0.0f};
    float CloudDepth = 0.0f;
    trFCol Co_cloudDirect;
    trFCol Co_cloudIndirect;
    trFCol Ao_cloud;
    trFCol Oo_volume;

    int numLightStates = 0;
    int numPlainLights = 0;
    int numEnviroLightsDiffuse = 0;
    int numEnviroLightsSpecular = 0;
    trLightState *LightStates = nullptr;

    // What the caller wants from this shade.
    bool doCe = true;
    bool doCd = true;
    bool doCs = true;
    bool doCo = true;
    bool doOo = true;
    bool doAo = true;
};
static_assert(std::is_trivially_copyable_v<trRenderStateData>, "a backup is a block copy");

class trRenderState : public trRenderStateData {
public:
    // Takes a thread slot and a fresh frame on its stack, makes the sky cache, ray
    // caches and generator, and takes the next pass number.
    trRenderState(trRender *render, trRenderTarget *target);
    // A backup of `other`: BackupOf(other, true).
    trRenderState(trRenderState const &other);
    // The restore: copies `other` and its frame's content, keeping this object's
    // frame pointer and ownership flags.
    trRenderState &operator=(trRenderState const &other);
    ~trRenderState();

    // Once per pass; returns 1 at once when already done. 1 on success.
    long Init(bool remakeRayCaches);

    // A flat copy of `other` with a new frame, copied from other's, pushed on
    // other's thread's stack; owns that frame only. The bool is not read.
    void BackupOf(trRenderState const &other, bool);
    // Gives the frame back to the thread's stack if this object owns it. The bool is not read.
    void Discard(bool);
    // Moves this state to a new thread slot with its own frame, ray caches,
    // generator and light states; the light caches stay shared.
    void ForkForThread();
    void ForkLightStates();
    // A new generator seeded from one draw of the global one.
    void ForkRand();
    // One light state per light: the scene's lights in order, then the extra ones empty.
    void AllocAndInitKnownLights();

    // ---- Random numbers of this thread ----
    trMersenneTwister &Rand() { return *rand; }
    unsigned long RandInt();
    float RandFloat();    // draw * 2.3283064e-10
    double RandDouble();  // draw / 4294967295, 0 to 1 inclusive

    // ---- Where the render stands ----
    float Frame() const { return float(frameTime); }
    void SetFrame(double time) { frameTime = time; }
    int RayRecursionDepth() const { return frame->RayRecursionDepth; }
    double SmoothSize() const { return frame->SmoothSize; }
    trBsdf &Bsdf() { return frame->Bsdf; }
    trView *PMainView() const;
    trRenderContext::Context RenderContext() const;
    // False outside a bucket.
    bool IsPausingOrAborting() const;
    // A deep ray of a GI pre pass: depth 3 or more and GIFactor below 0.5.
    bool IsGIPrepassRay() const { return LightDepth >= 3 && GIFactor < 0.5f; }
    trShadingInterface &ShadingInterface() { return shadingInterface; }
    trRenderingInterface &RenderingInterface() { return renderingInterface; }

    // Distance to the main camera over the root of the view's scale (distance 1 when orthographic).
    double PixelSize(trVector const &p) const;
    // The size of a micropolygon at the state's detail, at `p`.
    double MicropolySpotSize(trVector const &p) const;
    void InitSplitLengthFromStatePp();
    // Opaque, black, no lobes and no volume in front.
    void ResetShadeAttributesCOA();
    // Does nothing without a frame.
    void ResetFractalModifiers();

    // ---- Geometry for the bucket ----
    // Runs the tri's initial displacement first when asked, then hands it to the bucket.
    int PushRenderTri(trRenderTri *tri, bool displace);
    // A tri of `scene`, or three corners; 0 with no bucket or no memory.
    int PushTri(bool displace, trTri &tri, trScene &scene, trGeomGroup *group);
    int PushTri(bool displace, trVector const &corner1, trVector const &corner2, trVector const &corner3,
                trGeomGroup *group, std::uint64_t material);

    // The render's voxel lighting instance, made on first use; null without ray caches.
    trVoxelLightingSystem::Instance *VoxelLightingSystem();

    // ---- The output block, computed per channel ----
    trFCol VolumeTransmittance() const { return Oo_volume.Complement(); }
    trFCol Co_surfDirect_raw() const { return Cdiff_surfDirect + Cspec_surfDirect; }
    trFCol Co_surfIndirect_raw() const { return Cdiff_surfIndirect + Cspec_surfIndirect; }
    trFCol Co_surfEmit_raw() const { return Cemit_surf; }
    trFCol Cdiff_surf_raw() const { return Cdiff_surfDirect + Cdiff_surfIndirect; }
    trFCol Cspec_surf_raw() const { return Cspec_surfDirect + Cspec_surfIndirect; }
    trFCol Co_surf_raw() const
    {
        return Cemit_surf + Cdiff_surfDirect + Cdiff_surfIndirect + Cspec_surfDirect + Cspec_surfIndirect;
    }
    // As they arrive through the volumes in front of the surface.
    trFCol Co_surfDirect_occ() const { return Co_surfDirect_raw() * VolumeTransmittance(); }
    trFCol Co_surfIndirect_occ() const { return Co_surfIndirect_raw() * VolumeTransmittance(); }
    trFCol Co_surfEmit_occ() const { return Cemit_surf * VolumeTransmittance(); }
    trFCol Cemit_surf_occ() const { return Co_surfEmit_occ(); }
    trFCol Cdiff_surf_occ() const { return Cdiff_surf_raw() * VolumeTransmittance(); }
    trFCol Cspec_surf_occ() const { return Cspec_surf_raw() * VolumeTransmittance(); }
    trFCol Co_surf_occ() const { return Co_surf_raw() * VolumeTransmittance(); }
    trFCol Cdiff_surfDirect_occ() const { return Cdiff_surfDirect * VolumeTransmittance(); }
    trFCol Cdiff_surfIndirect_occ() const { return Cdiff_surfIndirect * VolumeTransmittance(); }
    trFCol Cspec_surfDirect_occ() const { return Cspec_surfDirect * VolumeTransmittance(); }
    trFCol Cspec_surfIndirect_occ() const { return Cspec_surfIndirect * VolumeTransmittance(); }
    trFCol CdiffRefl_surfIndirect_occ() const { return frame->CdiffRefl_surfIndirect * VolumeTransmittance(); }
    trFCol CdiffTrans_surfIndirect_occ() const { return frame->CdiffTrans_surfIndirect * VolumeTransmittance(); }
    trFCol CspecRefl_surfIndirect_occ() const { return frame->CspecRefl_surfIndirect * VolumeTransmittance(); }
    trFCol CspecTrans_surfIndirect_occ() const { return frame->CspecTrans_surfIndirect * VolumeTransmittance(); }
    trFCol Cspec_all() const { return Cspec_surf_occ(); }
    trFCol Co_atmo() const { return Co_atmoDirect + Co_atmoIndirect; }
    trFCol Co_cloud() const { return Co_cloudDirect + Co_cloudIndirect; }
    trFCol Co_volume() const { return Co_atmo() + Co_cloud(); }
    trFCol Co_all() const { return Co_surf_occ() + Co_volume(); }
    trFCol Co_allDirect() const { return Co_surfDirect_occ() + Co_atmoDirect + Co_cloudDirect; }
    trFCol Co_allIndirect() const { return Co_surfIndirect_occ() + Co_atmoIndirect + Co_cloudIndirect; }
    trFCol Co_allEmit() const { return Co_surfEmit_occ(); }
    trFCol Ao_surf_occ() const { return Ao_surf * VolumeTransmittance(); }
    trFCol Ao_volume() const { return Ao_atmo + Ao_cloud; }
    trFCol Ao_all() const { return Ao_volume() + Ao_surf_occ(); }
    trFCol Oo_surf_occ() const { return Oo_surf * VolumeTransmittance(); }
    trFCol Oo_all() const { return Oo_surf_occ() + Oo_volume; }

    // Copy outputs from another state: the five surface colours, those plus the
    // four volume colours, the alphas, the opacities.
    void SetCoSurf(trRenderState const &other);
    void SetCoSurf(trFCol const &emit, trFCol const &diffDirect, trFCol const &diffIndirect,
                   trFCol const &specDirect, trFCol const &specIndirect);
    void SetCo(trRenderState const &other);
    void SetAo(trRenderState const &other);
    void SetOo(trRenderState const &other);

    // ---- Thread slots: a process-wide table of trMaxThreads() entries ----
    // The lowest free slot. With none free, reports it and returns slot 0, shared,
    // and `ownSlot` (when given) is false.
    static unsigned TakeThreadSlot(bool *ownSlot = nullptr);
    static void ReleaseThreadSlot(unsigned slot);
    static int NumFreeThreadSlots();

    // The number the next state made takes; counts up on the main thread.
    static unsigned NextRenderPassId;

private:
    void LinkInterfaces()
    {
        renderingInterface.LinkToRenderState(this);
        shadingInterface.LinkToRenderState(this);
    }
    // The rest of a backup once the fields are copied.
    void TakeFrameAsBackupOf(trRenderState const &other);
    void FreeLightCaches();
};

// The guard around every ray: backs up the state and the thread's intersection,
// and puts both back when it goes (or earlier, by Restore, for code that reads
// results after the restore).
class trScopedStateBackup {
public:
    explicit trScopedStateBackup(trRenderState &state);
    ~trScopedStateBackup();
    trScopedStateBackup(trScopedStateBackup const &) = delete;
    trScopedStateBackup &operator=(trScopedStateBackup const &) = delete;

    // Restores now; the destructor then does nothing more.
    void Restore();
    // The state's recursion depth at the backup, clamped to 0..15.
    int Depth() const { return depth; }
    trRenderState &Backup() { return backup; }

private:
    static constexpr int kMaxDepth = 15;
    unsigned thread;
    int depth;
    trRenderState backup;
    trIntersection savedIntersection;
    trRenderState *state;
    trIntersection *threadIntersection;
    bool restored = false;
};
