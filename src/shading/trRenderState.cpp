#include "shading/trRenderState.h"

#include "foundation/trCores.h"
#include "foundation/trMessages.h"
#include "foundation/trRand.h"
#include "render/trBucketRender.h"
#include "render/trRender.h"
#include "render/trRenderTarget.h"
#include "scene/trRayCaches.h"
#include "scene/trRenderTri.h"
#include "scene/trScene.h"
#include "scene/trView.h"
#include "shading/trLightOctree.h"
#include "shading/trLightState.h"
#include "shading/trSkyCache.h"
#include "shading/trThreadRenderRecord.h"
#include "volumes/trVoxelLightingSystem.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <new>

unsigned trRenderState::NextRenderPassId = 0;

namespace {

// The slot table: one byte per slot, 1 while a state holds it.
std::mutex threadSlotMutex;
unsigned char *threadSlots = nullptr;
int numThreadSlots = 0;

// Every light cache covers the same box, large enough for any scene.
trVector const kLightCacheCorner(-1e8, -1e8, -1e8);
trVector const kLightCacheSize(2e8, 2e8, 2e8);

// The next frame on a thread's stack, or null (with a message) when it is full.
trRenderStateFrame *PushFrame(unsigned thread)
{
    trRenderStateFrame *slot = trThreadRecord(thread).frames.Push();
    if (!slot)
        trError("trRenderState: No room for another frame on this thread's stack");
    return slot;
}

bool IsNotBlack(trFCol const &c) { return c.r != 0.0f || c.g != 0.0f || c.b != 0.0f; }

}  // namespace

// ---- Thread slots ----

unsigned trRenderState::TakeThreadSlot(bool *ownSlot)
{
    if (ownSlot)
        *ownSlot = false;
    {
        std::lock_guard<std::mutex> lock(threadSlotMutex);
        if (!threadSlots) {
            // Lives as long as the process: states made at load may release slots at exit.
            threadSlots = new (std::nothrow) unsigned char[trMaxThreads()]();
            numThreadSlots = threadSlots ? trMaxThreads() : 0;
        }
        for (int i = 0; i < numThreadSlots; ++i)
            if (!threadSlots[i]) {
                threadSlots[i] = 1;
                if (ownSlot)
                    *ownSlot = true;
                return unsigned(i);
            }
    }
    trError("Please report the following error to Marrowvane Software: Exceeded maximum thread count in this "
            "session.");
    return 0;
}

void trRenderState::ReleaseThreadSlot(unsigned slot)
{
    std::lock_guard<std::mutex> lock(threadSlotMutex);
    if (threadSlots && int(slot) < numThreadSlots)
        threadSlots[slot] = 0;
}

int trRenderState::NumFreeThreadSlots()
{
    std::lock_guard<std::mutex> lock(threadSlotMutex);
    if (!threadSlots)
        return trMaxThreads();
    return int(std::count(threadSlots, threadSlots + numThreadSlots, 0));
}

// ---- Construction, backup and restore ----

trRenderState::trRenderState(trRender *render, trRenderTarget *target)
{
    ownsLightCaches = true;
    rootState = this;
    PRender = render;
    PRenderTarget = target;

    bool ownSlot = false;
    Thread = TakeThreadSlot(&ownSlot);
    // A slot shared after the table ran out is not this state's to free.
    ownsThreadSlot = ownSlot;

    frame = PushFrame(Thread);
    if (frame) {
        *frame = trRenderStateFrame();
        frame->RayRecursionDepth = 1;
        ownsFrame = true;
    }

    skyCache = new (std::nothrow) trSkyCache;
    ownsSkyCache = skyCache != nullptr;
    rayCaches = new (std::nothrow) trRayCaches;
    ownsRayCaches = rayCaches != nullptr;
    if (!skyCache || !rayCaches)
        trError("trRenderState: Not enough memory for the thread's caches");
    ForkRand();

    RenderPassId = NextRenderPassId++;
    LinkInterfaces();
    if (target && target->view)
        RootEye = target->view->Pos;
}

trRenderState::trRenderState(trRenderState const &other) : trRenderStateData(other)
{
    TakeFrameAsBackupOf(other);
}

void trRenderState::BackupOf(trRenderState const &other, bool)
{
    static_cast<trRenderStateData &>(*this) = other;
    TakeFrameAsBackupOf(other);
}

void trRenderState::TakeFrameAsBackupOf(trRenderState const &other)
{
    LinkInterfaces();
    frame = PushFrame(other.Thread);
    if (frame && other.frame)
        *frame = *other.frame;
    ownsFrame = frame != nullptr;
    ownsSkyCache = false;
    ownsRayCaches = false;
    ownsRand = false;
    ownsLightStates = false;
    ownsThreadSlot = false;
    ownsLightCaches = false;
}

trRenderState &trRenderState::operator=(trRenderState const &other)
{
    if (this == &other)
        return *this;
    trRenderStateFrame *const keptFrame = frame;
    bool const keptLightCaches = ownsLightCaches;
    bool const kept[6] = {ownsFrame, ownsSkyCache, ownsRayCaches, ownsRand, ownsLightStates, ownsThreadSlot};

    if (frame && other.frame && frame != other.frame)
        *frame = *other.frame;
    static_cast<trRenderStateData &>(*this) = other;
    LinkInterfaces();

    frame = keptFrame;
    ownsLightCaches = keptLightCaches;
    ownsFrame = kept[0];
    ownsSkyCache = kept[1];
    ownsRayCaches = kept[2];
    ownsRand = kept[3];
    ownsLightStates = kept[4];
    ownsThreadSlot = kept[5];
    return *this;
}

void trRenderState::Discard(bool)
{
    if (!ownsFrame)
        return;
    trThreadRecord(Thread).frames.Pop();
    ownsFrame = false;
    frame = nullptr;
}

trRenderState::~trRenderState()
{
    Discard(false);
    if (ownsLightCaches)
        FreeLightCaches();
    if (ownsSkyCache)
        delete skyCache;
    if (ownsRayCaches)
        delete rayCaches;
    if (ownsRand)
        delete rand;
    if (ownsLightStates)
        delete[] LightStates;
    if (ownsThreadSlot)
        ReleaseThreadSlot(Thread);
}

void trRenderState::FreeLightCaches()
{
    if (lightOctreeCaches) {
        for (trLightOctreePair *pair : *lightOctreeCaches)
            delete pair;
        delete lightOctreeCaches;
        lightOctreeCaches = nullptr;
    }
    for (std::vector<trLightOctree *> **trees : {&diffuseGiOctrees, &glossyGiOctrees}) {
        if (!*trees)
            continue;
        for (trLightOctree *tree : **trees)
            delete tree;
        delete *trees;
        *trees = nullptr;
    }
    delete sharedLightOctree;
    sharedLightOctree = nullptr;
}

// ---- Init and forks ----

long trRenderState::Init(bool remakeRayCaches)
{
    if (initialised)
        return 1;
    initialised = true;
    trScene *const scene = PRender ? PRender->PScene() : nullptr;

    if (remakeRayCaches && PRender && rayCaches) {
        rayCaches->ResetMidpointRing();
        rayCaches->BuildSubdivCache(scene);
        rayCaches->BuildTubeSet();
    }

    if (trSkyCache *sky = new (std::nothrow) trSkyCache) {
        if (ownsSkyCache)
            delete skyCache;
        skyCache = sky;
        ownsSkyCache = true;
    } else {
        trError("Init: Not enough memory for the sky cache");
    }

    numSceneLights = scene ? int(scene->NumLights()) : 0;
    numExtraLights = 0;
    numLightStates = numSceneLights + numExtraLights;

    try {
        if (!sharedLightOctree)
            sharedLightOctree = new trLightOctree(kLightCacheCorner, kLightCacheSize, true, false, 0.33);
        for (std::vector<trLightOctree *> **trees : {&diffuseGiOctrees, &glossyGiOctrees}) {
            if (!*trees)
                *trees = new std::vector<trLightOctree *>;
            if ((*trees)->empty())
                (*trees)->push_back(new trLightOctree(kLightCacheCorner, kLightCacheSize, false, true, 0.1));
        }
        if (!lightOctreeCaches)
            lightOctreeCaches = new std::vector<trLightOctreePair *>;
        for (std::size_t i = std::size_t(numLightStates); i < lightOctreeCaches->size(); ++i)
            delete (*lightOctreeCaches)[i];
        lightOctreeCaches->resize(std::size_t(numLightStates), nullptr);
        for (trLightOctreePair *&pair : *lightOctreeCaches)
            if (!pair)
                pair = new trLightOctreePair(1.0 / numLightStates, kLightCacheCorner, kLightCacheSize,
                                             sharedLightOctree);
    } catch (std::bad_alloc const &) {
        trError("Init: Not enough memory for the light caches");
        return 0;
    }

    AllocAndInitKnownLights();

    numPlainLights = 0;
    numEnviroLightsDiffuse = 0;
    numEnviroLightsSpecular = 0;
    for (int i = 0; i < numLightStates && LightStates; ++i) {
        trLightState const &ls = LightStates[i];
        if (!ls.IsEnviroLight()) {
            ++numPlainLights;
            continue;
        }
        if (IsNotBlack(ls.PLight()->Col))
            ++numEnviroLightsDiffuse;
        if (IsNotBlack(ls.PLight()->ColInAtmosphere))
            ++numEnviroLightsSpecular;
    }
    return 1;
}

void trRenderState::AllocAndInitKnownLights()
{
    if (ownsLightStates)
        delete[] LightStates;
    LightStates = nullptr;
    ownsLightStates = false;
    if (numLightStates <= 0)
        return;
    LightStates = new (std::nothrow) trLightState[std::size_t(numLightStates)];
    if (!LightStates) {
        trError("AllocAndInitKnownLights: Not enough memory for the light states");
        numLightStates = 0;
        return;
    }
    ownsLightStates = true;
    trScene *const scene = PRender ? PRender->PScene() : nullptr;
    for (int i = 0; i < numLightStates; ++i) {
        // The scene numbers its lights from 1.
        trLight *light = scene && i < numSceneLights ? scene->GetPLight(static_cast<unsigned long>(i) + 1) : nullptr;
        LightStates[i].Init(this, i, light);
    }
}

void trRenderState::ForkLightStates()
{
    AllocAndInitKnownLights();
    ownsLightStates = LightStates != nullptr;
}

void trRenderState::ForkRand()
{
    trMersenneTwister *generator = new (std::nothrow) trMersenneTwister;
    if (!generator) {
        trError("ForkRand: Not enough memory for a random generator");
        return;
    }
    generator->sgenrand(trGlobalRand.Int());
    if (ownsRand)
        delete rand;
    rand = generator;
    ownsRand = true;
}

void trRenderState::ForkForThread()
{
    unsigned const oldThread = Thread;
    bool ownSlot = false;
    unsigned const newThread = TakeThreadSlot(&ownSlot);
    // A state that held a slot of its own gives it up as it moves.
    if (ownsThreadSlot)
        ReleaseThreadSlot(oldThread);
    Thread = newThread;
    ownsThreadSlot = ownSlot;

    // The source gives its frame up: the state moves to the other thread.
    trStack<trRenderStateFrame> &oldFrames = trThreadRecord(oldThread).frames;
    if (oldFrames.Size() >= 1)
        oldFrames.Pop();
    trRenderStateFrame *newFrame = PushFrame(Thread);
    if (newFrame && frame && newFrame != frame)
        *newFrame = *frame;
    frame = newFrame;
    ownsFrame = newFrame != nullptr;

    if (trRayCaches *caches = new (std::nothrow) trRayCaches) {
        if (ownsRayCaches)
            delete rayCaches;
        rayCaches = caches;
        ownsRayCaches = true;
        rayCaches->ResetMidpointRing();
        rayCaches->BuildSubdivCache(PRender ? PRender->PScene() : nullptr);
        rayCaches->BuildTubeSet();
    } else {
        trError("ForkForThread: Not enough memory for the ray caches");
    }

    ForkRand();
    AllocAndInitKnownLights();
    ownsLightStates = LightStates != nullptr;
}

// ---- Draws ----

unsigned long trRenderState::RandInt() { return rand->genrand(); }

float trRenderState::RandFloat() { return float(rand->genrand()) * 2.3283064e-10f; }

double trRenderState::RandDouble() { return double(rand->genrand()) / 4294967295.0; }

// ---- Where the render stands ----

trView *trRenderState::PMainView() const { return PRenderTarget ? PRenderTarget->view : nullptr; }

trRenderContext::Context trRenderState::RenderContext() const
{
    return PRender ? PRender->RenderContext() : trRenderContext::Context(0);
}

bool trRenderState::IsPausingOrAborting() const { return PBucketRender && PBucketRender->IsPausingOrAborting(); }

double trRenderState::PixelSize(trVector const &p) const
{
    double const d = ViewProjection == trProjectionOrthographic ? 1.0 : (p - RootEye).Length();
    trView const *view = PMainView();
    double const s = view ? view->ScaleX * view->ScaleY : 0.0;
    // A negative scale product counts by its size, so the root stays real.
    return d / std::sqrt(std::fabs(trGuardedDivisor(s)));
}

double trRenderState::MicropolySpotSize(trVector const &p) const
{
    double const d = ViewProjection == trProjectionOrthographic ? 1.0 : (p - RootEye).Length();
    return RayFootprint * RayDetailMultiplier * d;
}

void trRenderState::InitSplitLengthFromStatePp()
{
    SplitLength = 0.0;
    if (!PRender || !PRender->stabiliseRayDetailInMotion)
        return;
    // Edge 2 to 0 enters by its length, not its square: that is how the split
    // lengths already stored in caches were made.
    double const candidates[3] = {(MicroCorners[1] - MicroCorners[0]).LengthSq(),
                                  (MicroCorners[2] - MicroCorners[1]).LengthSq(),
                                  (MicroCorners[0] - MicroCorners[2]).Length()};
    double const x = std::max({candidates[0], candidates[1], candidates[2]});
    double const stabilisation = std::max(1.0, double(PRender->rayDetailStabilisation));
    SplitLength = stabilisation / trGuardedDivisor(RayDetailMultiplier) * std::sqrt(x);
}

void trRenderState::ResetShadeAttributesCOA()
{
    if (frame)
        frame->Bsdf.Clear();
    Cutil = trFCol();
    Cemit_surf = trFCol();
    Cdiff_surfDirect = trFCol();
    Cdiff_surfIndirect = trFCol();
    Cspec_surfDirect = trFCol();
    Cspec_surfIndirect = trFCol();
    Ao_surf = trFCol();
    Oo_surf = trFCol(1.0f, 1.0f, 1.0f);
    Co_atmoDirect = trFCol();
    Co_atmoIndirect = trFCol();
    Ao_atmo = trFCol();
    std::fill(CloudPos, CloudPos + 3, 0.0f);
    std::fill(Cloud2dMotion, Cloud2dMotion + 2, 0.0f);
    CloudDepth = 0.0f;
    Co_cloudDirect = trFCol();
    Co_cloudIndirect = trFCol();
    Ao_cloud = trFCol();
    Oo_volume = trFCol();
}

void trRenderState::ResetFractalModifiers()
{
    if (!frame)
        return;
    frame->SmoothSize = double(1e-6f);
    frame->DEV_CloudFeatureScalar = 1.0;
    frame->DEV_FractalTailBoost = 0.0;
    frame->DEV_FractalUpperThreshold = 0.0;
    frame->DEV_FractalLowerThreshold = 0.0;
    frame->DEV_FractalMultiplier = 1.0;
}

// ---- Geometry for the bucket ----

int trRenderState::PushRenderTri(trRenderTri *tri, bool displace)
{
    if (!tri || !PBucketRender)
        return 0;
    // The tri's initial displacement runs here once render-time subdivision
    // provides it; until then a tri goes to the bucket as it was made.
    (void)displace;
    return PBucketRender->PushPTri(tri);
}

int trRenderState::PushTri(bool displace, trTri &tri, trScene &scene, trGeomGroup *group)
{
    if (!PBucketRender)
        return 0;
    trVector corners[3];
    for (int i = 0; i < 3; ++i) {
        trPoint const *point = scene.GetPPoint(tri.pts[i]);
        if (!point)
            return 0;
        corners[i] = point->Vec();
    }
    trRenderTri *renderTri = PBucketRender->NewRenderTri();
    if (!renderTri)
        return 0;
    renderTri->Root.Material = scene.GetPersistentMaterialIndex(tri.material);
    renderTri->Root.Group = group;
    renderTri->Root.SourceTri = &tri;
    trVector const normal = (corners[1] - corners[0]).Cross(corners[2] - corners[0]).Normalized();
    for (int i = 0; i < 3; ++i) {
        renderTri->P[i] = renderTri->Pg[i] = corners[i];
        trTexVert const *tex = tri.HasTexVerts() ? scene.GetPTexVert(tri.texVerts[i]) : nullptr;
        renderTri->Pt[i] = renderTri->Ptg[i] = tex ? tex->Vec() : corners[i];
        trNormal const *n = tri.HasNormals() ? scene.GetPNormal(tri.normals[i]) : nullptr;
        renderTri->Ng[i] = normal;
        renderTri->Ni[i] = renderTri->Nt[i] = n ? n->Vec() : normal;
    }
    return PushRenderTri(renderTri, displace);
}

int trRenderState::PushTri(bool displace, trVector const &corner1, trVector const &corner2, trVector const &corner3,
                           trGeomGroup *group, std::uint64_t material)
{
    if (!PBucketRender)
        return 0;
    trRenderTri *renderTri = PBucketRender->NewRenderTri();
    if (!renderTri)
        return 0;
    renderTri->Root.Material = long(material);
    renderTri->Root.Group = group;
    renderTri->Root.SourceTri = nullptr;
    trVector const corners[3] = {corner1, corner2, corner3};
    trVector const normal = (corner2 - corner1).Cross(corner3 - corner1).Normalized();
    for (int i = 0; i < 3; ++i) {
        renderTri->P[i] = renderTri->Pg[i] = renderTri->Pt[i] = renderTri->Ptg[i] = corners[i];
        renderTri->Ng[i] = renderTri->Ni[i] = renderTri->Nt[i] = normal;
    }
    return PushRenderTri(renderTri, displace);
}

trVoxelLightingSystem::Instance *trRenderState::VoxelLightingSystem()
{
    if (!rayCaches)
        return nullptr;
    if (!rayCaches->VoxelLighting) {
        // Without a render, the settings' defaults.
        int const first = PRender ? PRender->cloudGIMaxRayDepth : trRender().cloudGIMaxRayDepth;
        int const quality = PRender ? PRender->cloudGIQualityPreset : trRender().cloudGIQualityPreset;
        rayCaches->VoxelLighting = new (std::nothrow) trVoxelLightingSystem::Instance(first, quality);
    }
    return rayCaches->VoxelLighting;
}

// ---- Output copies ----

void trRenderState::SetCoSurf(trRenderState const &other)
{
    SetCoSurf(other.Cemit_surf, other.Cdiff_surfDirect, other.Cdiff_surfIndirect, other.Cspec_surfDirect,
              other.Cspec_surfIndirect);
}

void trRenderState::SetCoSurf(trFCol const &emit, trFCol const &diffDirect, trFCol const &diffIndirect,
                              trFCol const &specDirect, trFCol const &specIndirect)
{
    Cemit_surf = emit;
    Cdiff_surfDirect = diffDirect;
    Cdiff_surfIndirect = diffIndirect;
    Cspec_surfDirect = specDirect;
    Cspec_surfIndirect = specIndirect;
}

void trRenderState::SetCo(trRenderState const &other)
{
    SetCoSurf(other);
    Co_atmoDirect = other.Co_atmoDirect;
    Co_atmoIndirect = other.Co_atmoIndirect;
    Co_cloudDirect = other.Co_cloudDirect;
    Co_cloudIndirect = other.Co_cloudIndirect;
}

void trRenderState::SetAo(trRenderState const &other)
{
    Ao_surf = other.Ao_surf;
    Ao_atmo = other.Ao_atmo;
    Ao_cloud = other.Ao_cloud;
}

void trRenderState::SetOo(trRenderState const &other)
{
    Oo_surf = other.Oo_surf;
    Oo_volume = other.Oo_volume;
}

// ---- trScopedStateBackup ----

namespace {
int RecursionDepthOf(trRenderState const &state) { return state.frame ? state.frame->RayRecursionDepth : 0; }
}  // namespace

trScopedStateBackup::trScopedStateBackup(trRenderState &s)
    : thread(s.Thread),
      depth(std::clamp(RecursionDepthOf(s), 0, kMaxDepth)),
      backup(s),
      savedIntersection(trThreadRecord(thread).intersection),
      state(&s),
      threadIntersection(&trThreadRecord(thread).intersection)
{
    int const actual = RecursionDepthOf(s);
    if (actual < 0)
        trError("trScopedStateBackup: state->RayRecursionDepth() < 0");
    else if (actual > kMaxDepth)
        trError("trScopedStateBackup: state->RayRecursionDepth() exceeded limit");
}

trScopedStateBackup::~trScopedStateBackup() { Restore(); }

void trScopedStateBackup::Restore()
{
    if (restored)
        return;
    *state = backup;
    *threadIntersection = savedIntersection;
    restored = true;
    backup.Discard(false);
}
