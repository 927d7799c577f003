#include "foundation/trCores.h"
#include "foundation/trRand.h"
#include "nodes/test_trBaseSupport.h"
#include "render/trBucketRender.h"
#include "render/trRender.h"
#include "render/trRenderTarget.h"
#include "scene/trRayCaches.h"
#include "scene/trRenderTri.h"
#include "scene/trScene.h"
#include "scene/trView.h"
#include "shading/trLightOctree.h"
#include "shading/trLightState.h"
#include "shading/trRayIdentities.h"
#include "shading/trRenderState.h"
#include "shading/trThreadRenderRecord.h"
#include "volumes/trVoxelLightingSystem.h"
#include "volumes/trVoxelScatterModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

int FramesOn(unsigned thread) { return trThreadRecord(thread).frames.Size(); }

void ExpectCol(trFCol const &a, trFCol const &b, char const *what)
{
    EXPECT_LT(std::fabs(a.r - b.r) + std::fabs(a.g - b.g) + std::fabs(a.b - b.b), 3e-6f)
        << what << ": " << a.r << " " << a.g << " " << a.b << " against " << b.r << " " << b.g << " " << b.b;
}

// What a backup brings back, as text.
std::string Saved(trRenderState const &s)
{
    std::ostringstream out;
    out << "frames " << FramesOn(s.Thread) << " P " << s.P.x << "," << s.P.y << "," << s.P.z << " light depth "
        << s.LightDepth << " ray depth " << s.RayRecursionDepth() << " lobes " << s.frame->Bsdf.Lobes.size()
        << " smooth " << s.SmoothSize() << " t " << trThreadRecord(s.Thread).intersection.t;
    return out.str();
}

// What a state owns: frame, sky cache, ray caches, rand, light states, thread slot, light caches.
std::string Owns(trRenderState const &s)
{
    std::string owns;
    for (bool b : {s.ownsFrame, s.ownsSkyCache, s.ownsRayCaches, s.ownsRand, s.ownsLightStates, s.ownsThreadSlot,
                   s.ownsLightCaches})
        owns += b ? '1' : '0';
    return owns;
}

}  // namespace

TEST(trRenderState, NestedBackupsRestoreStateFrameFlagsAndStackDepth)
{
    trRenderState state(nullptr, nullptr);
    ASSERT_NE(state.frame, nullptr);
    EXPECT_EQ(state.rootState, &state);
    trRenderStateFrame *const ownFrame = state.frame;
    std::string const owns = Owns(state);
    int const depth0 = FramesOn(state.Thread);
    state.P = trVector(1, 2, 3);
    state.frame->Bsdf.Lobes.resize(2);
    trThreadRecord(state.Thread).intersection.t = 0.25;
    std::string const before = Saved(state);
    {
        trScopedStateBackup outer(state);
        EXPECT_EQ(FramesOn(state.Thread), depth0 + 1);
        EXPECT_EQ(Owns(outer.Backup()), "1000000");
        EXPECT_EQ(&outer.Backup().ShadingInterface().RenderState(), &outer.Backup());
        EXPECT_EQ(outer.Backup().frame->Bsdf.Lobes.size(), 2u) << "the lobes are deep-copied";
        state.P = trVector(4, 5, 6);
        state.LightDepth = 2;
        state.frame->RayRecursionDepth = 2;
        state.frame->Bsdf.Lobes.clear();
        trThreadRecord(state.Thread).intersection.t = 0.5;
        std::string const changed = Saved(state);
        {
            trScopedStateBackup inner(state);
            EXPECT_EQ(FramesOn(state.Thread), depth0 + 2);
            state.P = trVector(7, 8, 9);
            state.frame->RayRecursionDepth = 3;
            trThreadRecord(state.Thread).intersection.t = 0.75;
        }
        EXPECT_EQ(Saved(state), changed);
        // A restore by hand, after which the guard does nothing more.
        trScopedStateBackup byHand(state);
        state.P = trVector();
        byHand.Restore();
        EXPECT_EQ(Saved(state), changed);
    }
    EXPECT_EQ(Saved(state), before);
    EXPECT_EQ(state.frame, ownFrame);
    EXPECT_EQ(Owns(state), owns);
    EXPECT_EQ(&state.ShadingInterface().RenderState(), &state);
}

TEST(trRenderState, AssignmentCopiesFrameContentAndKeepsFramePointerAndOwnership)
{
    trRenderState state(nullptr, nullptr);
    trRenderState backup(state);
    backup.P = trVector(1, 0, 0);
    backup.frame->SmoothSize = 0.5;
    backup.frame->Bsdf.Lobes.resize(3);
    trRenderStateFrame *const frame = state.frame;
    std::string const owns = Owns(state);

    state = backup;
    EXPECT_EQ(state.frame, frame);
    EXPECT_NE(state.frame, backup.frame);
    EXPECT_EQ(Saved(state), Saved(backup));
    EXPECT_EQ(Owns(state), owns);
    EXPECT_EQ(&state.RenderingInterface().RenderState(), &state);
    // The other way round a backup stays a backup.
    backup = state;
    EXPECT_EQ(Owns(backup), "1000000");
}

TEST(trRenderState, ForkMovesToItsOwnSlotAndSharesOnlyTheLightCachesUntilSlotsRunOut)
{
    trScene scene;
    scene.Init();
    scene.AddLight(trLight());
    trRender render;
    render.scene = &scene;
    trRenderState root(&render, nullptr);
    ASSERT_EQ(root.Init(true), 1);
    root.frame->SmoothSize = 0.125;

    int const rootDepth = FramesOn(root.Thread);
    auto fork = std::make_unique<trRenderState>(root);
    EXPECT_EQ(FramesOn(root.Thread), rootDepth + 1);
    fork->ForkForThread();

    EXPECT_NE(fork->Thread, root.Thread);
    EXPECT_EQ(FramesOn(root.Thread), rootDepth) << "the source's frame is given up";
    EXPECT_EQ(FramesOn(fork->Thread), 1);
    EXPECT_EQ(fork->frame, trThreadRecord(fork->Thread).frames.Top());
    EXPECT_EQ(fork->SmoothSize(), 0.125);
    EXPECT_EQ(Owns(*fork), "1011110");
    EXPECT_TRUE(fork->rand != root.rand && fork->rayCaches != root.rayCaches && fork->LightStates != root.LightStates);
    EXPECT_TRUE(fork->rayCaches->SubdivCache.Active);
    EXPECT_EQ(fork->LightStates[0].PState(), fork.get());
    EXPECT_TRUE(fork->skyCache == root.skyCache && fork->sharedLightOctree == root.sharedLightOctree &&
                fork->lightOctreeCaches == root.lightOctreeCaches && fork->diffuseGiOctrees == root.diffuseGiOctrees)
        << "the light caches are shared";
    EXPECT_EQ(fork->rootState, &root);
    // The slot and the frame go back with the fork.
    unsigned const forkThread = fork->Thread;
    int const freeBefore = trRenderState::NumFreeThreadSlots();
    fork.reset();
    EXPECT_EQ(trRenderState::NumFreeThreadSlots(), freeBefore + 1);
    EXPECT_EQ(FramesOn(forkThread), 0);
    // Hold every free slot without making states for them: more states than slots
    // share slot 0, with a message.
    std::vector<unsigned> held;
    for (int n = trRenderState::NumFreeThreadSlots(); n > 0; --n)
        held.push_back(trRenderState::TakeThreadSlot());
    ASSERT_EQ(trRenderState::NumFreeThreadSlots(), 0);
    {
        HostCapture capture;
        trRenderState excess(nullptr, nullptr);
        EXPECT_EQ(excess.Thread, 0u);
        EXPECT_FALSE(excess.ownsThreadSlot);
        EXPECT_EQ(capture.errors, std::vector<std::string>{"Please report the following error to Marrowvane "
                                                           "Software: Exceeded maximum thread count in this session."});
    }
    EXPECT_EQ(trRenderState::NumFreeThreadSlots(), 0) << "a shared slot isn't freed by the state that shares it";
    for (unsigned slot : held)
        trRenderState::ReleaseThreadSlot(slot);
}

TEST(trRenderState, ForkedStatesRunOnTheirThreadsAtOnce)
{
    // The render forks one state per worker on the host's thread, then every worker
    // traces on its own at the same time: distinct slots, and nested backups on one
    // thread's frame stack never disturb another's.
    trRenderState root(nullptr, nullptr);
    constexpr int kWorkers = 8;
    std::vector<std::unique_ptr<trRenderState>> states;
    std::vector<unsigned> slots;
    for (int w = 0; w < kWorkers; ++w) {
        states.push_back(std::make_unique<trRenderState>(root));
        states.back()->ForkForThread();
        slots.push_back(states.back()->Thread);
    }
    std::sort(slots.begin(), slots.end());
    EXPECT_EQ(std::adjacent_find(slots.begin(), slots.end()), slots.end()) << "two workers share a slot";
    std::vector<int> intact(kWorkers, 0);
    std::vector<std::thread> workers;
    for (int w = 0; w < kWorkers; ++w)
        workers.emplace_back([&state = *states[std::size_t(w)], &count = intact[std::size_t(w)], w] {
            for (int ray = 0; ray < 200; ++ray) {
                state.P.x = w + ray;
                {
                    trScopedStateBackup outer(state);
                    state.P.x = -1.0;
                    trScopedStateBackup inner(state);
                    state.P.x = -2.0;
                }
                count += state.P.x == w + ray && FramesOn(state.Thread) == 1;
            }
        });
    for (std::thread &t : workers)
        t.join();
    EXPECT_EQ(intact, std::vector<int>(kWorkers, 200));
}

TEST(trScopedStateBackup, DepthOutOfRangeAndAFullFrameStackAreReportedAndTheRayGoesOn)
{
    trRenderState state(nullptr, nullptr);
    struct Case {
        int depth;
        int stored;
        char const *message;
    } const cases[] = {{16, 15, "trScopedStateBackup: state->RayRecursionDepth() exceeded limit"},
                       {-1, 0, "trScopedStateBackup: state->RayRecursionDepth() < 0"},
                       {15, 15, nullptr}, {0, 0, nullptr}};
    for (Case const &c : cases) {
        state.frame->RayRecursionDepth = c.depth;
        HostCapture capture;
        {
            trScopedStateBackup backup(state);
            EXPECT_EQ(backup.Depth(), c.stored) << c.depth;
            state.frame->RayRecursionDepth = 99;
        }
        EXPECT_EQ(state.RayRecursionDepth(), c.depth) << "restored";
        EXPECT_EQ(capture.errors, c.message ? std::vector<std::string>{c.message} : std::vector<std::string>{});
    }
    // A full frame stack: the next backup has no frame, says so, and restores without one.
    std::vector<std::unique_ptr<trRenderState>> held;
    while (FramesOn(state.Thread) < trThreadRenderRecord::kNumFrames)
        held.push_back(std::make_unique<trRenderState>(state));
    HostCapture capture;
    {
        trScopedStateBackup overflow(state);
        EXPECT_EQ(overflow.Backup().frame, nullptr);
        state.P = trVector(1, 1, 1);
    }
    EXPECT_EQ(state.P, trVector());
    EXPECT_EQ(capture.errors.size(), 1u);
    EXPECT_EQ(FramesOn(state.Thread), trThreadRenderRecord::kNumFrames);
}

TEST(trRenderState, FractalModifiersResetOnlyWithAFrame)
{
    trRenderState state(nullptr, nullptr);
    state.frame->DEV_FractalMultiplier = 3.0;
    state.frame->SmoothSize = 2.0;
    state.ResetFractalModifiers();
    EXPECT_EQ(state.frame->DEV_FractalMultiplier, 1.0);
    EXPECT_EQ(state.SmoothSize(), double(1e-6f));

    trRenderState backup(state);
    backup.Discard(false);
    ASSERT_EQ(backup.frame, nullptr);
    backup.ResetFractalModifiers();  // nothing to reset, and no crash
}

TEST(trRenderState, OutputsComposeThroughTheVolumesInFront)
{
    trRenderState s(nullptr, nullptr);
    s.ResetShadeAttributesCOA();
    ExpectCol(s.Oo_all(), trFCol(1, 1, 1), "a fresh shade is opaque");
    ExpectCol(s.Co_all(), trFCol(), "and black");

    trRand rand(7);
    for (int trial = 0; trial < 20; ++trial) {
        auto col = [&] { return trFCol(rand.Float(), rand.Float(), rand.Float()); };
        s.SetCoSurf(col(), col(), col(), col(), col());
        for (trFCol *c : {&s.Co_atmoDirect, &s.Co_atmoIndirect, &s.Co_cloudDirect, &s.Co_cloudIndirect, &s.Oo_surf,
                          &s.Oo_volume, &s.Ao_surf, &s.Ao_atmo, &s.Ao_cloud})
            *c = col();
        trFCol const through = trFCol(1, 1, 1) - s.Oo_volume;

        ExpectCol(s.Oo_all(), trFCol(1, 1, 1) - (trFCol(1, 1, 1) - s.Oo_surf) * through, "Oo_all");
        ExpectCol(s.Co_all(), s.Co_allDirect() + s.Co_allIndirect() + s.Co_allEmit(), "Co_all");
        ExpectCol(s.Co_surf_occ(), s.Co_surf_raw() * through, "Co_surf_occ");
        ExpectCol(s.Co_surf_raw(), s.Cdiff_surf_raw() + s.Cspec_surf_raw() + s.Cemit_surf, "Co_surf_raw");
        ExpectCol(s.Cspec_all(), (s.Cspec_surfDirect + s.Cspec_surfIndirect) * through, "Cspec_all");
        ExpectCol(s.Ao_all(), s.Ao_atmo + s.Ao_cloud + s.Ao_surf * through, "Ao_all");

        trRenderState other(nullptr, nullptr);
        other.SetCo(s);
        other.SetAo(s);
        other.SetOo(s);
        ExpectCol(other.Co_all(), s.Co_all(), "SetCo");
        ExpectCol(other.Ao_all(), s.Ao_all(), "SetAo");
        ExpectCol(other.Oo_all(), s.Oo_all(), "SetOo");
    }
}

TEST(trRenderState, PixelSizeAndSpotSizeFromTheMainView)
{
    trView view;
    view.Pos = trVector(0, 0, -10);
    view.ScaleX = view.ScaleY = 100.0;
    trRenderTarget target;
    target.view = &view;
    trRenderState s(nullptr, &target);
    EXPECT_TRUE(s.RootEye == view.Pos && s.PMainView() == &view);

    EXPECT_DOUBLE_EQ(s.PixelSize(trVector(0, 0, 0)), 0.1) << "10 units away, 100 pixels per unit";
    s.RayFootprint = 0.01;
    s.RayDetailMultiplier = 0.5;
    EXPECT_DOUBLE_EQ(s.MicropolySpotSize(trVector(0, 0, 0)), 0.05);
    s.ViewProjection = trProjectionOrthographic;
    EXPECT_DOUBLE_EQ(s.PixelSize(trVector(0, 0, 1000)), 0.01) << "orthographic: distance counts as 1";
    EXPECT_DOUBLE_EQ(s.MicropolySpotSize(trVector(0, 0, 1000)), 0.005);

    view.ScaleX = 0.0;
    s.ViewProjection = 0;
    EXPECT_DOUBLE_EQ(s.PixelSize(trVector(0, 0, 0)), 10.0 / 1e-6);
    view.ScaleY = -1e-20;
    EXPECT_TRUE(std::isfinite(s.PixelSize(trVector(0, 0, 0))));
}

TEST(trRenderState, GIPrepassRaysAreDeepRaysWithALowFactor)
{
    trRenderState s(nullptr, nullptr);
    struct Case {
        int lightDepth;
        float factor;
        bool prepass;
    } const cases[] = {{1, 0.0f, false}, {2, 0.0f, false}, {2, 0.49f, false}, {3, 0.49f, true},
                       {3, 0.5f, false}, {7, 0.0f, true},  {3, 1.0f, false}};
    for (Case const &c : cases) {
        s.LightDepth = c.lightDepth;
        s.GIFactor = c.factor;
        EXPECT_EQ(s.IsGIPrepassRay(), c.prepass) << c.lightDepth << " " << c.factor;
    }
}

TEST(trRenderState, PerThreadTablesCoverEveryThreadSlot)
{
    // Ray identities of threads start 65536 apart.
    for (unsigned i : {0u, 1u, 200u, 255u})
        EXPECT_EQ(trRayIdentities()[i], (i << 16) + 1);
    trRayIdentities ids;
    EXPECT_EQ(&ids[256], &ids[0]) << "threads past the table wrap instead of writing past it";
    // A render thread indexes these by its slot: a short table would be written past.
    for (std::vector<char> const *flags :
         {&trVoxelLightingSystem::sIsDuringLookup, &trVoxelScatterModelA::sIsDuringLookup}) {
        ASSERT_EQ(flags->size(), std::size_t(trMaxThreads()));
        EXPECT_EQ(std::count(flags->begin(), flags->end(), 0), long(flags->size()));
    }
}

TEST(trRenderState, InitCountsPlainAndEnviroLightsAndMakesTheLightCaches)
{
    trScene scene;
    scene.Init();
    trLight plain, sky;
    sky.IsEnviroLight = true;
    trLight diffuseOnly = sky;
    diffuseOnly.ColInAtmosphere = trFCol();
    trLight dark = sky;
    dark.Col = trFCol();
    dark.ColInAtmosphere = trFCol();
    for (trLight const *light : {&plain, &sky, &plain, &diffuseOnly, &dark})
        scene.AddLight(*light);

    trRender render;
    render.scene = &scene;
    trRenderState s(&render, nullptr);
    ASSERT_EQ(s.Init(false), 1);
    // All, plain, enviro lights with diffuse light, enviro lights with specular light.
    EXPECT_EQ((std::vector{s.numLightStates, s.numPlainLights, s.numEnviroLightsDiffuse, s.numEnviroLightsSpecular}),
              (std::vector{5, 2, 2, 1}));
    EXPECT_EQ(s.LightStates[3].PLight(), scene.GetPLight(4)) << "in the scene's order";
    ASSERT_EQ(s.lightOctreeCaches->size(), 5u);
    EXPECT_DOUBLE_EQ((*s.lightOctreeCaches)[0]->Weight, 0.2);
    EXPECT_EQ((*s.lightOctreeCaches)[4]->Shared, s.sharedLightOctree);
    EXPECT_EQ(s.sharedLightOctree->threshold, 0.33);
    ASSERT_EQ(s.glossyGiOctrees->size(), 1u);
    EXPECT_EQ((*s.glossyGiOctrees)[0]->threshold, 0.1);
    EXPECT_FALSE(s.rayCaches->SubdivCache.Active) << "Init(false) leaves the ray caches alone";
    // A second Init is a no-op until a new state is made.
    scene.AddLight(plain);
    EXPECT_EQ(s.Init(true), 1);
    EXPECT_EQ(s.numLightStates, 5);
    // Without a render: no lights, and still the caches.
    trRenderState bare(nullptr, nullptr);
    ASSERT_EQ(bare.Init(true), 1);
    EXPECT_TRUE(bare.numLightStates == 0 && bare.LightStates == nullptr && bare.sharedLightOctree != nullptr);
    EXPECT_EQ(bare.RenderContext(), 0);
    EXPECT_FALSE(bare.IsPausingOrAborting());
}

TEST(trRenderState, BucketLinksPausingAndTriangles)
{
    trRenderState s(nullptr, nullptr);
    EXPECT_EQ(s.PushTri(false, trVector(0, 0, 0), trVector(1, 0, 0), trVector(0, 1, 0), nullptr, 0), 0)
        << "no bucket";
    trBucketRender bucket;
    s.PBucketRender = &bucket;
    EXPECT_FALSE(s.IsPausingOrAborting());
    bucket.RequestPause();
    EXPECT_TRUE(s.IsPausingOrAborting());
    bucket.Resume();
    bucket.Abort();
    EXPECT_TRUE(s.IsPausingOrAborting());

    EXPECT_EQ(s.PushTri(false, trVector(0, 0, 0), trVector(2, 0, 0), trVector(0, 2, 0), nullptr, 3), 1);
    ASSERT_EQ(bucket.NumStackTrisPending(), 1);
    trRenderTri *tri = bucket.PopPTri();
    EXPECT_TRUE(tri->P[1] == trVector(2, 0, 0) && tri->Ng[0] == trVector(0, 0, 1) && tri->Root.Material == 3);
}

TEST(trRenderState, VoxelLightingInstanceAndSplitLengthFromTheRenderSettings)
{
    trRender render;
    render.cloudGIMaxRayDepth = 5;
    render.cloudGIQualityPreset = 9;
    trRenderState s(&render, nullptr);
    trVoxelLightingSystem::Instance *instance = s.VoxelLightingSystem();
    ASSERT_NE(instance, nullptr);
    EXPECT_EQ(s.VoxelLightingSystem(), instance);
    EXPECT_EQ(instance->FirstSetting, 5);
    EXPECT_EQ(instance->SamplesPerSide, 64) << "sqrt(8 << 9)";
    EXPECT_EQ(trVoxelLightingSystem::Instance::SamplesPerSideForQuality(-3), 3);
    EXPECT_EQ(trVoxelLightingSystem::Instance::SamplesPerSideForQuality(8), 45) << "sqrt(2048) = 45.25";
    EXPECT_GT(trVoxelLightingSystem::Instance::SamplesPerSideForQuality(1000), 0);
    // The split length follows the stabilised ray detail.
    s.MicroCorners[0] = trVector(0, 0, 0);
    s.MicroCorners[1] = trVector(3, 0, 0);  // edge 0-1: 9 squared
    s.MicroCorners[2] = trVector(3, 4, 0);  // edge 1-2: 16 squared; edge 2-0: 5, not squared
    s.SplitLength = 7.0;
    s.InitSplitLengthFromStatePp();
    EXPECT_EQ(s.SplitLength, 0.0);

    render.stabiliseRayDetailInMotion = true;
    render.rayDetailStabilisation = 3;
    s.RayDetailMultiplier = 0.5;
    s.InitSplitLengthFromStatePp();
    EXPECT_DOUBLE_EQ(s.SplitLength, 3 / 0.5 * 4.0);
    // Short edges: the unsquared edge 2-0 (sqrt 0.05) outweighs the squared ones.
    s.MicroCorners[1] = trVector(0.1, 0, 0);
    s.MicroCorners[2] = trVector(0.1, 0.2, 0);
    s.InitSplitLengthFromStatePp();
    EXPECT_DOUBLE_EQ(s.SplitLength, 3 / 0.5 * std::sqrt(std::sqrt(0.05)));

    s.RayDetailMultiplier = 0.0;
    s.InitSplitLengthFromStatePp();
    EXPECT_TRUE(std::isfinite(s.SplitLength));
}
