// Render settings nodes: the pixel sampler's derived values, the hand-edit rule, the
// one-node warning, subdiv inheritance, the GI detail link, file modes and surface
// details, retired keys, cache file names, copies and a project round trip.

#include "foundation/trCores.h"
#include "foundation/trMessages.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trProjectFile.h"
#include "render/trRenderGISettings.h"
#include "render/trRenderSettings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The host's render node, as far as the settings nodes read it.
class TestRender : public trBase {
public:
    TestRender()
    {
        Param(detail, "detail", 1.0);
        Param(antiAliasing, "anti-aliasing", 4L);
        Param(microvertexJittering, "microvertex_jittering", static_cast<unsigned char>(1));
        Param(detailJittering, "detail_jittering", static_cast<unsigned char>(1));
        Param(detailBlending, "detail_blending", 0.0);
        Param(displacementFilter, "displacement_filter", 1.0);
        Param(giSampleQuality, "GI_sample_quality", 2.0);
        Param(giBlurRadius, "GI_blur_radius", 8.0);
        Param(supersamplePrepass, "supersample_prepass", static_cast<unsigned char>(0));
        Param(giSurfaceDetails, "GI_surface_details", static_cast<unsigned char>(0));
        Param(giPrepassPadding, "GI_prepass_padding", 0.0);
    }
    double detail = 0, detailBlending = 0, displacementFilter = 0, giSampleQuality = 0, giBlurRadius = 0,
           giPrepassPadding = 0;
    long antiAliasing = 0;
    unsigned char microvertexJittering = 0, detailJittering = 0, supersamplePrepass = 0, giSurfaceDetails = 0;
};

template <class T> trBase *Create() { return new T; }
void Destroy(trBase *node) { delete node; }

char const *const kSettingsClasses[] = {"render_bucket_controls", "render_developer_controls", "render_pixel_sampler",
                                        "render_subdiv_settings", "render_GI_settings"};

// The library registers no class: the tests do what a host does. Another test may
// have registered "render" already, with a class of its own, so render nodes here are
// made directly and given that class's id.
void RegisterClasses()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    long id = 0;
    auto add = [&](char const *type, char const *name, trClassPool::CreateFunc create) {
        if (!trClasses.FindClassIdFromClassName(id, name))
            trClasses.AddClass(type, name, create, Destroy, "");
    };
    add("render", "render", Create<TestRender>);
    add("render/settings", kSettingsClasses[0], Create<trRenderBucketControls>);
    add("render/settings", kSettingsClasses[1], Create<trRenderDeveloperControls>);
    add("render/settings", kSettingsClasses[2], Create<trRenderPixelSampler>);
    add("render/settings", kSettingsClasses[3], Create<trRenderSubdivSettings>);
    add("render/settings", kSettingsClasses[4], Create<trRenderGISettings>);
}

TestRender *NewRender(trBase &parent, char const *name)
{
    RegisterClasses();
    long id = 0;
    trClasses.FindClassIdFromClassName(id, "render");
    auto *render = new TestRender;
    render->SetRegisteredClassId(id);
    render->Init(&parent, 1);
    render->SetName(name);
    return render;
}

// What reached the host's message callbacks.
struct Messages {
    Messages()
    {
        Current() = this;
        oldWarning = trCallBackWarning;
        oldDlg = trDoDlgBoxes;
        trCallBackWarning = [](char const *t, trErrorWarningData *) { Current()->warnings.push_back(t); };
        trDoDlgBoxes = 1;
    }
    ~Messages()
    {
        trCallBackWarning = oldWarning;
        trDoDlgBoxes = oldDlg;
        Current() = nullptr;
    }
    static Messages *&Current()
    {
        static Messages *current = nullptr;
        return current;
    }
    std::vector<std::string> warnings;
    trMessageCallBack oldWarning;
    int oldDlg;
};

std::string Text(trBase &node, char const *param)
{
    long index = 0;
    trString text;
    if (!node.FindParam(index, param) || !node.GetStringFromParam(index, text, &node))
        return "<missing>";
    return text.chars ? text.chars : "";
}

// A project root holding one render node.
struct Fixture : ::testing::Test {
    trBase root;
    TestRender *render = nullptr;

    void SetUp() override
    {
        root.SetName("Project");
        render = NewRender(root, "Main");
    }
    template <class T> T *Make(char const *className, trBase *parent = nullptr)
    {
        return static_cast<T *>(trCreateObject(className, parent ? parent : render, 1));
    }
};

using PixelSampler = Fixture;

TEST_F(PixelSampler, DerivedValuesFollowAntiAliasing)
{
    struct Row {
        long aa;
        bool robust;
        long level;
        double threshold;
        char const *raster, *min;
    };
    Row const rows[] = {
        {5, true, 0, 0.06, "25", "0.39"}, // 4 -> 5 of a new node: robust is on
        {0, true, 2, 0.3, "1", "0.25"},   // 0 counts as 1, and stays 0
        {-3, true, 2, 0.3, "1", "0.25"},
        {2, true, 1, 0.15, "4", "0.25"},
        {3, true, 1, 0.1, "9", "0.56"},
        {8, false, 2, 0.0375, "64", "16"},
    };
    for (Row const &r : rows) {
        auto *s = Make<trRenderPixelSampler>("render_pixel_sampler");
        s->SetParam("robust", r.robust, trWhoUser);
        s->SetParam("anti-aliasing", r.aa, trWhoUser);
        SCOPED_TRACE(r.aa);
        EXPECT_EQ(s->antiAliasing, r.aa);
        EXPECT_EQ(s->firstSamplingLevel, r.level);
        EXPECT_DOUBLE_EQ(s->pixelNoiseThreshold, r.threshold);
        EXPECT_EQ(Text(*s, "raster_samples_per_pixel"), r.raster);
        EXPECT_EQ(Text(*s, "max_samples_per_pixel"), r.raster);
        EXPECT_EQ(Text(*s, "min_samples_per_pixel"), r.min);
        EXPECT_FALSE(s->customiseSampling); // anti-aliasing by hand doesn't customise
        render->DestroyChild(s->Name());
    }
}

TEST_F(PixelSampler, MinimumSamplesForEveryLevel)
{
    auto *s = Make<trRenderPixelSampler>("render_pixel_sampler");
    s->SetParam("anti-aliasing", 8L, trWhoSystem);
    // Levels -2..3 and one outside the menu, which takes the 64-sub-pixel cell.
    struct Row {
        long level;
        char const *min;
    } const rows[] = {{-1, "0.25"}, {0, "1"}, {1, "4"}, {2, "16"}, {3, "64"}, {7, "0.016"}, {-9, "0.016"}};
    for (auto const &r : rows) {
        s->SetParam("first_sampling_level", r.level, trWhoSystem);
        EXPECT_EQ(Text(*s, "min_samples_per_pixel"), r.min) << r.level;
    }
}

TEST_F(PixelSampler, OnlyHandEditsTurnOnCustomSampling)
{
    trBase other;
    struct Row {
        trBase *who;
        bool customises;
    } const rows[] = {{trWhoSystem, false}, {&other, false}, {trWhoUser, true}, {trWhoUserIndirect, true}};
    for (char const *param : {"first_sampling_level", "pixel_noise_threshold"}) {
        for (auto const &r : rows) {
            auto *s = Make<trRenderPixelSampler>("render_pixel_sampler");
            if (std::string(param) == "first_sampling_level")
                s->SetParam(param, -1L, r.who);
            else
                s->SetParam(param, 0.5, r.who);
            EXPECT_EQ(s->customiseSampling != 0, r.customises) << param;
            render->DestroyChild(s->Name());
        }
    }
    // Customised values survive a change of anti-aliasing, and return when it's off.
    auto *s = Make<trRenderPixelSampler>("render_pixel_sampler");
    s->SetParam("first_sampling_level", -2L, trWhoUser);
    s->SetParam("anti-aliasing", 2L, trWhoUser);
    EXPECT_EQ(s->firstSamplingLevel, -2);
    s->SetParam("customise_sampling", false, trWhoUser);
    EXPECT_EQ(s->firstSamplingLevel, 1);
    EXPECT_DOUBLE_EQ(s->pixelNoiseThreshold, 0.15);

    // A file's values are the system's: customise_sampling stays as the file says.
    ASSERT_TRUE(trBaseXML::ReadBuffer(*NewRender(root, "R2"),
                                      "<r><render_pixel_sampler name=\"Loaded\" first_sampling_level=\"-2\" "
                                      "pixel_noise_threshold=\"0.2\"/></r>",
                                      "r"));
    auto *loaded = static_cast<trRenderPixelSampler *>(root.NodeByPath("/R2/Loaded"));
    ASSERT_NE(loaded, nullptr);
    EXPECT_FALSE(loaded->customiseSampling);
    EXPECT_EQ(loaded->firstSamplingLevel, -2);
}

TEST_F(PixelSampler, NewNodeTakesRenderAntiAliasingAndRobust)
{
    render->SetParam("anti-aliasing", 6L, trWhoUser);
    auto *made = Make<trRenderPixelSampler>("render_pixel_sampler");
    EXPECT_EQ(made->antiAliasing, 6);
    EXPECT_TRUE(made->robust);
    EXPECT_FALSE(made->legacy); // the radio group
    long index = 0;
    ASSERT_TRUE(made->FindParam(index, "new_curve"));
    EXPECT_FALSE(made->IsParamGuiEnabled(index));
    made->SetParam("legacy", true, trWhoUser);
    EXPECT_FALSE(made->robust);
    EXPECT_TRUE(made->IsParamGuiEnabled(index));

    // Read from a file, it keeps the file's sampler: the lean path skips OnFirstCreate.
    auto *lean = static_cast<trRenderPixelSampler *>(trCreateObjectLean("render_pixel_sampler", render, 1));
    EXPECT_FALSE(lean->robust);
    EXPECT_TRUE(lean->legacy);
}

using Settings = Fixture;

TEST_F(Settings, SecondNodeOfAClassWarnsOncePerCreation)
{
    for (char const *cls : kSettingsClasses) {
        Messages m;
        trBase *first = Make<trBase>(cls);
        EXPECT_TRUE(m.warnings.empty()) << cls;
        trBase *second = Make<trBase>(cls);
        trBase *third = Make<trBase>(cls);
        std::string const text = "Main: Only one \"" + std::string(cls) + "\" node can be used per render node.";
        ASSERT_EQ(m.warnings.size(), 2u) << cls;
        for (auto const &w : m.warnings)
            EXPECT_NE(w.find(text), std::string::npos) << w;
        for (trBase *n : {first, second, third})
            render->DestroyChild(n->Name());
    }
    // Elsewhere than under a render node, any number is fine.
    Messages m;
    trBase *group = root.CreateChild("render_bucket_controls");
    Make<trBase>("render_pixel_sampler", group);
    Make<trBase>("render_pixel_sampler", group);
    EXPECT_TRUE(m.warnings.empty());
}

TEST_F(Settings, SubdivInheritsFromRenderOnce)
{
    render->SetParam("microvertex_jittering", false, trWhoUser);
    render->SetParam("detail_blending", 0.4, trWhoUser);
    render->SetParam("displacement_filter", 2.5, trWhoUser);
    auto *s = Make<trRenderSubdivSettings>("render_subdiv_settings");
    EXPECT_TRUE(s->valuesInherited);
    EXPECT_FALSE(s->microvertexJittering);
    EXPECT_TRUE(s->detailJittering);
    EXPECT_DOUBLE_EQ(s->detailBlending, 0.4);
    EXPECT_DOUBLE_EQ(s->displacementFilter, 2.5);
    // A second OnCreate (as a re-attach would make) doesn't overwrite.
    render->SetParam("detail_blending", 0.9, trWhoUser);
    s->OnCreate();
    EXPECT_DOUBLE_EQ(s->detailBlending, 0.4);

    // Outside a render nothing is taken; a change of a shared value marks it inherited.
    trRenderSubdivSettings loose;
    loose.OnCreate();
    EXPECT_FALSE(loose.valuesInherited);
    loose.SetParam("force_all_edges", true, trWhoUser);
    EXPECT_FALSE(loose.valuesInherited);
    loose.SetParam("detail_jittering", false, trWhoUser);
    EXPECT_TRUE(loose.valuesInherited);
}

TEST_F(Settings, SubdivCacheDefaultFollowsCoresInUse)
{
    // The default caps at 64 threads; the top of the range doesn't.
    struct Row {
        int cores;
        long def, max;
    } const rows[] = {{0, 400, 800}, {8, 2200, 4400}, {100, 16200, 50400}};
    for (auto const &r : rows) {
        trSetPreferredNumCores(true, r.cores);
        trRenderSubdivSettings s;
        EXPECT_EQ(s.sizeOfSubdivCacheInMb, r.def) << r.cores;
        EXPECT_EQ(trRenderSubdivSettings::MaxSubdivCacheMb(), r.max) << r.cores;
    }
    trSetPreferredNumCores(false, 0);
    trRenderSubdivSettings s;
    long index = 0;
    ASSERT_TRUE(s.FindParam(index, "size_of_subdiv_cache_in_Mb"));
    EXPECT_FALSE(s.IsParamGuiEnabled(index));
    s.SetParam("override_size_of_subdiv_cache", true, trWhoUser);
    EXPECT_TRUE(s.IsParamGuiEnabled(index));
}

using GISettings = Fixture;

TEST_F(GISettings, RelativeAndAbsoluteDetailMoveTogether)
{
    struct Row {
        double renderDetail;
        char const *param;
        double value;
        double cache;
        long relative;
    } const rows[] = {
        {1.0, "GI_relative_detail", 6, 10, 6},   // capped at 10
        {0.5, "GI_relative_detail", 3, 6, 3},
        {1.0, "GI_cache_detail", 12, 12, 3},
        {2.0, "GI_cache_detail", 3, 3, 1},       // anything above 0 is at least 1
        {1.0, "GI_cache_detail", 0, 0, 0},
        {0.0, "GI_cache_detail", 4, 4, 4000000000000L}, // the divisor is guarded, not zero
        {1.0, "GI_cache_detail", 102, 102, 2},   // absolute by request: relative untouched
    };
    for (auto const &r : rows) {
        render->SetParam("detail", r.renderDetail, trWhoUser);
        auto *g = Make<trRenderGISettings>("render_GI_settings");
        if (std::string(r.param) == "GI_relative_detail")
            g->SetParam(r.param, long(r.value), trWhoUser);
        else
            g->SetParam(r.param, r.value, trWhoUser);
        EXPECT_DOUBLE_EQ(g->GI_cache_detail, r.cache) << r.param << " " << r.value;
        EXPECT_EQ(g->GI_relative_detail, r.relative) << r.param << " " << r.value;
        render->DestroyChild(g->Name());
    }
    // The system's writes, as of a file, and nodes without a render above: no link.
    auto *g = Make<trRenderGISettings>("render_GI_settings");
    g->SetParam("GI_relative_detail", 5L, trWhoSystem);
    g->SetParam("GI_cache_detail", 7.0, trWhoSystem);
    EXPECT_EQ(g->GI_relative_detail, 5);
    EXPECT_DOUBLE_EQ(g->GI_cache_detail, 7.0);
    trRenderGISettings loose;
    loose.SetParam("GI_relative_detail", 5L, trWhoUser);
    EXPECT_DOUBLE_EQ(loose.GI_cache_detail, 2.0);

    struct Clamp {
        double cache, absolute;
    } const clamps[] = {{102, 2}, {-3, 0}, {5, 5}, {100, 100}};
    for (auto const &c : clamps) {
        loose.SetGIAbsoluteDetail(c.cache);
        EXPECT_DOUBLE_EQ(loose.GIAbsoluteDetail(), c.absolute) << c.cache;
    }
    loose.SetGIBlurRadius(0.0);
    loose.SetGISampleQuality(-1.0);
    EXPECT_DOUBLE_EQ(loose.GIBlurRadius(), 1.0);
    EXPECT_DOUBLE_EQ(loose.GISampleQuality(), 0.0);
}

TEST_F(GISettings, NewNodeTakesRenderValues)
{
    render->SetParam("GI_blur_radius", 3.0, trWhoUser);
    render->SetParam("supersample_prepass", true, trWhoUser);
    auto *g = Make<trRenderGISettings>("render_GI_settings");
    EXPECT_DOUBLE_EQ(g->GI_blur_radius, 3.0);
    EXPECT_EQ(g->NumPrepassSupersamples(), 9);
    EXPECT_FALSE(g->GI_surface_details);
    // A node made elsewhere (under a render layer) has surface details on.
    auto *elsewhere = Make<trRenderGISettings>("render_GI_settings", &root);
    EXPECT_TRUE(elsewhere->GI_surface_details);
}

TEST_F(GISettings, FileModesAreARadioGroupAndEnableTheirParams)
{
    trRenderGISettings g;
    auto enabled = [&](char const *n) {
        long i = 0;
        return g.FindParam(i, n) && g.IsParamGuiEnabled(i);
    };
    EXPECT_FALSE(enabled("GI_cache_filename_to_write"));
    g.SetParam("write_to_GI_cache_file", true, trWhoUser);
    EXPECT_FALSE(g.no_GI_cache_file);
    EXPECT_TRUE(g.ShouldWriteSurfacePoints() && g.ShouldWriteVolumePoints() && g.ShouldWriteVoxels());
    EXPECT_TRUE(enabled("GI_cache_filename_to_write") && enabled("write_cloud_voxels"));

    g.SetParam("read_from_GI_cache_file", true, trWhoUser);
    EXPECT_FALSE(g.ShouldWriteToGICacheFile());
    EXPECT_TRUE(g.write_surface_points);
    EXPECT_FALSE(g.ShouldWriteSurfacePoints()); // the flag counts only while writing
    EXPECT_FALSE(enabled("write_surface_points"));
    EXPECT_FALSE(enabled("GI_cache_detail") || enabled("GI_prepass_padding") || enabled("supersample_prepass"));
    EXPECT_TRUE(enabled("GI_cache_filename_to_read") && enabled("GI_cache_blend_range"));
    g.SetParam("GI_cache_blend_mode", 1L, trWhoUser);
    EXPECT_FALSE(enabled("GI_cache_blend_range"));
    g.SetParam("GI_cache_blend_mode", 2L, trWhoUser);
    EXPECT_TRUE(enabled("GI_cache_blend_range"));
    EXPECT_EQ(g.GICacheBlendMode(), trRenderGISettings::BlendEqualInRange);

    g.SetParam("no_GI_cache_file", true, trWhoUser);
    EXPECT_FALSE(g.ShouldReadFromGICacheFile());
    EXPECT_TRUE(enabled("GI_cache_detail") && enabled("GI_blur_radius"));
    EXPECT_FALSE(enabled("GI_cache_filename_to_read") || enabled("GI_cache_blend_range"));
    // Turning a member off leaves the others as they are.
    g.SetParam("no_GI_cache_file", false, trWhoUser);
    EXPECT_FALSE(g.ShouldWriteToGICacheFile() || g.ShouldReadFromGICacheFile());
}

TEST_F(GISettings, SurfaceDetailMethods)
{
    trRenderGISettings g;
    struct Row {
        long method;
        bool ssao, ssgi, rayTraced, bounceEnabled;
    } const rows[] = {{0, true, false, false, false}, {1, false, true, false, true}, {2, false, false, true, false}};
    for (bool pt : {false, true}) {
        std::string const prefix = pt ? "PT_" : "";
        long bounce = 0, radius = 0;
        ASSERT_TRUE(g.FindParam(bounce, (prefix + "GISD_bounce_weight").c_str()));
        ASSERT_TRUE(g.FindParam(radius, (prefix + "GISD_radius").c_str()));
        EXPECT_FALSE(g.IsParamGuiEnabled(radius));
        g.SetParam((prefix + "GI_surface_details").c_str(), true, trWhoUser);
        EXPECT_TRUE(g.IsParamGuiEnabled(radius));
        for (auto const &r : rows) {
            g.SetParam((prefix + "GI_surface_details_method").c_str(), r.method, trWhoUser);
            EXPECT_EQ(g.ShouldDoSSAO(pt), r.ssao) << pt << r.method;
            EXPECT_EQ(g.ShouldDoSSGI(pt), r.ssgi) << pt << r.method;
            EXPECT_EQ(g.ShouldRayTraceGISurfaceDetails(pt), r.rayTraced) << pt << r.method;
            EXPECT_EQ(g.IsParamGuiEnabled(bounce), r.bounceEnabled) << pt << r.method;
        }
    }
    g.SetParam("PT_GISD_radius", 40.0, trWhoUser);
    EXPECT_DOUBLE_EQ(g.GISDRadius(true), 40.0);
    EXPECT_DOUBLE_EQ(g.GISDRadius(false), 24.0);
}

TEST_F(GISettings, RetiredKeysFromOldFiles)
{
    Messages m;
    trRenderGISettings g;
    EXPECT_EQ(g.SetParamFromString("voxel_scattering_quality", "150", trWhoSystem), 1);
    EXPECT_DOUBLE_EQ(g.VoxelScatteringQuality(), 150.0);
    EXPECT_EQ(g.SetParamFromString("optimise_voxel_scattering", "1", trWhoSystem), 0);
    EXPECT_TRUE(m.warnings.empty());
    EXPECT_EQ(g.SetParamFromString("optimise_voxel_scattering", "0", trWhoSystem), 0);
    ASSERT_EQ(m.warnings.size(), 1u);
    EXPECT_NE(m.warnings[0].find(
                  "\"Optimise voxel scattering\" is now enabled automatically and cannot be turned off."),
              std::string::npos);
    EXPECT_TRUE(g.ShouldOptimiseVoxelScattering());
    EXPECT_EQ(g.SetParamFromString("GI_blur_radius", "0", trWhoSystem), 1);
    EXPECT_DOUBLE_EQ(g.GIBlurRadius(), 1.0);
}

TEST_F(GISettings, CacheFileNamesLieInTheProjectFolder)
{
    root.SetAbsoluteContentFilePathForChildren("/projects/valley/");
    auto *g = Make<trRenderGISettings>("render_GI_settings");
    long const frame = 12;
    EXPECT_EQ(std::string(g->GICacheFilenameToWrite(nullptr).chars), "/projects/valley/gicache_%04d.gic");
    EXPECT_EQ(std::string(g->GICacheFilenameToWrite(&frame).chars), "/projects/valley/gicache_0012.gic");
    g->SetParam("GI_cache_filename_to_read", trString("/projects/valley/caches/a_%03d.gic"), trWhoUser);
    EXPECT_EQ(std::string(g->GI_cache_filename_to_read.FileStringR().chars), "caches/a_%03d.gic");
    EXPECT_EQ(std::string(g->GICacheFilenameToRead(&frame).chars), "/projects/valley/caches/a_012.gic");
    // A field that isn't a frame number is left as text.
    g->SetParam("GI_cache_filename_to_read", trString("/tmp/a_%s%n.gic"), trWhoUser);
    EXPECT_EQ(std::string(g->GICacheFilenameToRead(&frame).chars), "/tmp/a_%s%n.gic");

    // A copy outside the tree, as a render takes, finds the same files.
    trRenderGISettings copy;
    copy.CopySettingsFrom(*g);
    EXPECT_EQ(std::string(copy.GICacheFilenameToWrite(&frame).chars), "/projects/valley/gicache_0012.gic");
}

TEST_F(Settings, ProjectRoundTripAndCopiesKeepEveryValue)
{
    render->SetParam("detail", 1.25, trWhoUser);
    auto *b = Make<trRenderBucketControls>(kSettingsClasses[0]);
    auto *d = Make<trRenderDeveloperControls>(kSettingsClasses[1]);
    auto *p = Make<trRenderPixelSampler>(kSettingsClasses[2]);
    auto *s = Make<trRenderSubdivSettings>(kSettingsClasses[3]);
    auto *g = Make<trRenderGISettings>(kSettingsClasses[4]);
    b->SetParam("max_bucket_size", tr2Vector(96, 48), trWhoUser);
    d->SetParam("quality_per_pixel", true, trWhoUser);
    d->SetParam("_pt_maxRayDepth", 9L, trWhoUser);
    p->SetParam("anti-aliasing", 7L, trWhoUser);
    p->SetParam("pixel_noise_threshold", 0.0123456789012, trWhoUser);
    p->SetParam("new_curve", true, trWhoUser);
    s->SetParam("detail_blending", 0.3, trWhoUser);
    s->SetParam("ray_detail_stabilisation", 6L, trWhoUser);
    g->SetParam("GI_relative_detail", 2L, trWhoUser);
    g->SetParam("write_to_GI_cache_file", true, trWhoUser);
    g->SetParam("GI_cache_filename_to_write", trString("caches/run \"A\" & <B>_%04d.gic"), trWhoUser);
    g->SetParam("cloud_GI_quality_preset", 6L, trWhoUser);

    // The render's own element holds the five; it is read into another render node.
    trString const first = trBaseXML::GetElement(*render, true, "", "render");
    trBase again;
    TestRender *render2 = NewRender(again, "Other");
    ASSERT_TRUE(trBaseXML::ReadBuffer(*render2, first.chars, "render"));
    trString const second = trBaseXML::GetElement(*render2, true, "", "render");
    EXPECT_EQ(std::string(first.chars), std::string(second.chars));
    ASSERT_EQ(render2->NumChildren(), 5);
    trRenderBucketControls bc;
    trRenderDeveloperControls dc;
    trRenderPixelSampler pc;
    trRenderSubdivSettings sc;
    trRenderGISettings gc;
    bc.CopySettingsFrom(*b);
    dc.CopySettingsFrom(*d);
    pc.CopySettingsFrom(*p);
    sc.CopySettingsFrom(*s);
    gc.CopySettingsFrom(*g);
    trBase *copies[] = {&bc, &dc, &pc, &sc, &gc};
    for (long c = 0; c < 5; ++c) {
        trBase *original = render->Child(c);
        trBase *read = render2->Child(c);
        for (long i = 8; i < original->NumParams(); ++i) {
            if (!original->GetParamShouldBeSaved(i) || original->ParamType(i) >= trParamPushButton)
                continue;
            char const *n = original->ParamName(i);
            EXPECT_EQ(Text(*read, n), Text(*original, n)) << n;
            EXPECT_EQ(Text(*copies[c], n), Text(*original, n)) << "copy " << n;
        }
    }
}

TEST_F(Settings, BadValuesInAFileAreReportedNotFatal)
{
    Messages m;
    char const *text = "<r><render_pixel_sampler name=\"S\" anti-aliasing=\"abc\" "
                       "first_sampling_level=\"99\" no_such_param=\"1\"/>"
                       "<render_GI_settings name=\"G\" GI_cache_blend_mode=\"17\" GI_relative_detail=\"-4\" "
                       "GI_cache_filename_to_write=\"%s%s%n\"/></r>";
    ASSERT_TRUE(trBaseXML::ReadBuffer(*NewRender(root, "R"), text, "r"));
    auto *s = static_cast<trRenderPixelSampler *>(root.NodeByPath("/R/S"));
    auto *g = static_cast<trRenderGISettings *>(root.NodeByPath("/R/G"));
    ASSERT_TRUE(s && g);
    EXPECT_EQ(s->antiAliasing, 4); // unparsed: the default stays
    EXPECT_EQ(s->firstSamplingLevel, 99);
    EXPECT_EQ(Text(*s, "min_samples_per_pixel"), "0.0039"); // 16 / 4096, the "other" row
    bool unknownReported = false;
    for (auto const &w : m.warnings)
        unknownReported |= w.find("no_such_param") != std::string::npos;
    EXPECT_TRUE(unknownReported);
    EXPECT_EQ(g->GICacheBlendRange(), 5);
    EXPECT_EQ(int(g->GICacheBlendMode()), 17);
    EXPECT_EQ(g->GI_relative_detail, -4); // as the file says: a load doesn't relink
    EXPECT_DOUBLE_EQ(g->GIAbsoluteDetail(), 2.0);
    long const frame = 3;
    EXPECT_EQ(std::string(g->GICacheFilenameToWrite(&frame).chars), "%s%s%n");
}

} // namespace
