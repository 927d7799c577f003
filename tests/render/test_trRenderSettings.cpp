// Render settings nodes: the pixel sampler's derived values, the hand-edit rule, the
// one-node warning, subdiv inheritance, the GI detail link, file modes and surface
// details, retired keys, cache file names, copies and a project round trip.

#include "foundation/trCores.h"
#include "nodes/test_trBaseSupport.h"
#include "nodes/trProjectFile.h"
#include "render/trRenderGISettings.h"
#include "render/trRenderSettings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
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

char const *const kSettingsClasses[] = {"render_bucket_controls", "render_developer_controls", "render_pixel_sampler",
                                        "render_subdiv_settings", "render_GI_settings"};

// The library registers no class: the tests do what a host does. Another test may
// have registered "render" already, with a class of its own, so render nodes here are
// made directly and given that class's id.
TestRender *NewRender(trBase &parent, char const *name)
{
    static long const renderId = [] {
        trClassPool::CreateFunc const creates[] = {Create<TestRender>,           Create<trRenderBucketControls>,
                                                   Create<trRenderDeveloperControls>, Create<trRenderPixelSampler>,
                                                   Create<trRenderSubdivSettings>,  Create<trRenderGISettings>};
        char const *const names[] = {"render", kSettingsClasses[0], kSettingsClasses[1], kSettingsClasses[2],
                                     kSettingsClasses[3], kSettingsClasses[4]};
        long id = 0;
        for (int i = 0; i < 6; ++i)
            if (!trClasses.FindClassIdFromClassName(id, names[i]))
                trClasses.AddClass(i ? "render/settings" : "render", names[i], creates[i],
                                   [](trBase *n) { delete n; }, "");
        trClasses.FindClassIdFromClassName(id, "render");
        return id;
    }();
    auto *render = new TestRender;
    render->SetRegisteredClassId(renderId);
    render->Init(&parent, 1);
    render->SetName(name);
    return render;
}

std::string Text(trBase &node, char const *param)
{
    long index = 0;
    trString text;
    if (!node.FindParam(index, param) || !node.GetStringFromParam(index, text, &node))
        return "<missing>";
    return Str(text);
}

bool GuiEnabled(trBase &node, char const *param)
{
    long index = 0;
    return node.FindParam(index, param) && node.IsParamGuiEnabled(index);
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
    template <class T = trBase> T *Make(char const *className, trBase *parent = nullptr)
    {
        return static_cast<T *>(trCreateObject(className, parent ? parent : render, 1));
    }
    trRenderPixelSampler *Sampler() { return Make<trRenderPixelSampler>("render_pixel_sampler"); }
    // Reads `xml` into a new render node `name` under the root.
    bool Load(char const *name, char const *xml) { return trBaseXML::ReadBuffer(*NewRender(root, name), xml, "r"); }
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
    } const rows[] = {
        {5, true, 0, 0.06, "25", "0.39"}, // 4 -> 5 of a new node: robust is on
        {0, true, 2, 0.3, "1", "0.25"},   // 0 counts as 1, and stays 0
        {-3, true, 2, 0.3, "1", "0.25"}, {2, true, 1, 0.15, "4", "0.25"},
        {3, true, 1, 0.1, "9", "0.56"},  {8, false, 2, 0.0375, "64", "16"},
    };
    for (Row const &r : rows) {
        auto *s = Sampler();
        s->SetParam("robust", r.robust, trWhoUser);
        s->SetParam("anti-aliasing", r.aa, trWhoUser);
        SCOPED_TRACE(r.aa);
        EXPECT_EQ(s->antiAliasing, r.aa);
        EXPECT_EQ(s->firstSamplingLevel, r.level);
        EXPECT_DOUBLE_EQ(s->pixelNoiseThreshold, r.threshold);
        EXPECT_EQ(Text(*s, "raster_samples_per_pixel") + " " + Text(*s, "max_samples_per_pixel") + " " +
                      Text(*s, "min_samples_per_pixel"),
                  std::string(r.raster) + " " + r.raster + " " + r.min);
        EXPECT_FALSE(s->customiseSampling); // anti-aliasing by hand doesn't customise
        render->DestroyChild(s->Name());
    }
    // Levels -2..3 and one outside the menu, which takes the 64-sub-pixel cell.
    auto *s = Sampler();
    s->SetParam("anti-aliasing", 8L, trWhoSystem);
    for (auto [level, min] : {std::pair{-1L, "0.25"}, {0L, "1"}, {1L, "4"}, {2L, "16"}, {3L, "64"}, {7L, "0.016"},
                              {-9L, "0.016"}}) {
        s->SetParam("first_sampling_level", level, trWhoSystem);
        EXPECT_EQ(Text(*s, "min_samples_per_pixel"), min) << level;
    }
}

TEST_F(PixelSampler, OnlyHandEditsTurnOnCustomSampling)
{
    trBase other;
    for (bool level : {true, false})
        for (auto [who, customises] : {std::pair{trWhoSystem, false}, {&other, false}, {trWhoUser, true},
                                       {trWhoUserIndirect, true}}) {
            auto *s = Sampler();
            if (level)
                s->SetParam("first_sampling_level", -1L, who);
            else
                s->SetParam("pixel_noise_threshold", 0.5, who);
            EXPECT_EQ(s->customiseSampling != 0, customises) << level << " " << NameOf(who);
            render->DestroyChild(s->Name());
        }
    // Customised values survive a change of anti-aliasing, and return when it's off.
    auto *s = Sampler();
    s->SetParam("first_sampling_level", -2L, trWhoUser);
    s->SetParam("anti-aliasing", 2L, trWhoUser);
    EXPECT_EQ(s->firstSamplingLevel, -2);
    s->SetParam("customise_sampling", false, trWhoUser);
    EXPECT_EQ(s->firstSamplingLevel, 1);
    EXPECT_DOUBLE_EQ(s->pixelNoiseThreshold, 0.15);
    // A file's values are the system's: customise_sampling stays as the file says.
    ASSERT_TRUE(Load("R2", "<r><render_pixel_sampler name=\"L\" first_sampling_level=\"-2\" "
                           "pixel_noise_threshold=\"0.2\"/></r>"));
    auto *loaded = static_cast<trRenderPixelSampler *>(root.NodeByPath("/R2/L"));
    ASSERT_NE(loaded, nullptr);
    EXPECT_FALSE(loaded->customiseSampling);
    EXPECT_EQ(loaded->firstSamplingLevel, -2);
}

using Settings = Fixture;

TEST_F(Settings, SecondNodeOfAClassWarnsOncePerCreation)
{
    for (char const *cls : kSettingsClasses) {
        HostCapture host;
        trBase *made[] = {Make(cls), nullptr, nullptr};
        EXPECT_TRUE(host.warnings.empty()) << cls;
        made[1] = Make(cls);
        made[2] = Make(cls);
        std::string const text = "Main: Only one \"" + std::string(cls) + "\" node can be used per render node.";
        EXPECT_EQ(host.warnings, std::vector<std::string>(2, text));
        for (trBase *n : made)
            render->DestroyChild(n->Name());
    }
    // Elsewhere than under a render node, any number is fine.
    HostCapture host;
    trBase *group = root.CreateChild("render_bucket_controls");
    Make("render_pixel_sampler", group);
    Make("render_pixel_sampler", group);
    EXPECT_TRUE(host.warnings.empty());
}

TEST_F(Settings, NewNodesTakeTheirRendersValuesOnce)
{
    render->SetParam("anti-aliasing", 6L, trWhoUser);
    render->SetParam("microvertex_jittering", false, trWhoUser);
    render->SetParam("detail_blending", 0.4, trWhoUser);
    render->SetParam("displacement_filter", 2.5, trWhoUser);
    render->SetParam("GI_blur_radius", 3.0, trWhoUser);
    render->SetParam("supersample_prepass", true, trWhoUser);

    auto *made = Sampler();
    EXPECT_EQ(made->antiAliasing, 6);
    EXPECT_TRUE(made->robust && !made->legacy); // the radio group
    EXPECT_FALSE(GuiEnabled(*made, "new_curve"));
    made->SetParam("legacy", true, trWhoUser);
    EXPECT_FALSE(made->robust);
    EXPECT_TRUE(GuiEnabled(*made, "new_curve"));
    // Read from a file, it keeps the file's sampler: the lean path skips OnFirstCreate.
    auto *lean = static_cast<trRenderPixelSampler *>(trCreateObjectLean("render_pixel_sampler", render, 1));
    EXPECT_TRUE(!lean->robust && lean->legacy);

    auto *s = Make<trRenderSubdivSettings>("render_subdiv_settings");
    EXPECT_TRUE(s->valuesInherited && !s->microvertexJittering && s->detailJittering);
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

    auto *g = Make<trRenderGISettings>("render_GI_settings");
    EXPECT_DOUBLE_EQ(g->GI_blur_radius, 3.0);
    EXPECT_EQ(g->NumPrepassSupersamples(), 9);
    EXPECT_FALSE(g->GI_surface_details);
    // A node made elsewhere (under a render layer) has surface details on.
    EXPECT_TRUE(Make<trRenderGISettings>("render_GI_settings", &root)->GI_surface_details);
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
        EXPECT_EQ(trRenderSubdivSettings().sizeOfSubdivCacheInMb, r.def) << r.cores;
        EXPECT_EQ(trRenderSubdivSettings::MaxSubdivCacheMb(), r.max) << r.cores;
    }
    trSetPreferredNumCores(false, 0);
    trRenderSubdivSettings s;
    EXPECT_FALSE(GuiEnabled(s, "size_of_subdiv_cache_in_Mb"));
    s.SetParam("override_size_of_subdiv_cache", true, trWhoUser);
    EXPECT_TRUE(GuiEnabled(s, "size_of_subdiv_cache_in_Mb"));
}

using GISettings = Fixture;

TEST_F(GISettings, RelativeAndAbsoluteDetailMoveTogether)
{
    struct Row {
        double renderDetail;
        bool relative;  // which of the two is set
        double value, cache;
        long relativeAfter;
    } const rows[] = {
        {0.5, true, 3, 6, 3}, {1.0, false, 12, 12, 3}, {1.0, false, 0, 0, 0},
        {1.0, true, 6, 10, 6},              // capped at 10
        {2.0, false, 3, 3, 1},              // anything above 0 is at least 1
        {0.0, false, 4, 4, 4000000000000L}, // the divisor is guarded, not zero
        {1.0, false, 102, 102, 2},          // absolute by request: relative untouched
    };
    for (auto const &r : rows) {
        render->SetParam("detail", r.renderDetail, trWhoUser);
        auto *g = Make<trRenderGISettings>("render_GI_settings");
        if (r.relative)
            g->SetParam("GI_relative_detail", long(r.value), trWhoUser);
        else
            g->SetParam("GI_cache_detail", r.value, trWhoUser);
        EXPECT_DOUBLE_EQ(g->GI_cache_detail, r.cache) << r.relative << " " << r.value;
        EXPECT_EQ(g->GI_relative_detail, r.relativeAfter) << r.relative << " " << r.value;
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

    for (auto [cache, absolute] : {std::pair{102.0, 2.0}, {-3.0, 0.0}, {5.0, 5.0}, {100.0, 100.0}}) {
        loose.SetGIAbsoluteDetail(cache);
        EXPECT_DOUBLE_EQ(loose.GIAbsoluteDetail(), absolute) << cache;
    }
    loose.SetGIBlurRadius(0.0);
    loose.SetGISampleQuality(-1.0);
    EXPECT_DOUBLE_EQ(loose.GIBlurRadius(), 1.0);
    EXPECT_DOUBLE_EQ(loose.GISampleQuality(), 0.0);
}

TEST_F(GISettings, FileModesAndSurfaceDetailMethodsEnableTheirParams)
{
    trRenderGISettings g;
    auto enabled = [&](char const *n) { return GuiEnabled(g, n); };
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
    // Surface detail methods, for renders and for the path tracer ("PT_").
    char const *const methods[] = {"1000", "0101", "0010"};  // SSAO, SSGI, ray traced, bounce weight enabled
    for (bool pt : {false, true}) {
        std::string const prefix = pt ? "PT_" : "";
        EXPECT_FALSE(enabled((prefix + "GISD_radius").c_str()));
        g.SetParam((prefix + "GI_surface_details").c_str(), true, trWhoUser);
        EXPECT_TRUE(enabled((prefix + "GISD_radius").c_str()));
        for (long m = 0; m < 3; ++m) {
            g.SetParam((prefix + "GI_surface_details_method").c_str(), m, trWhoUser);
            std::string got;
            for (bool b : {g.ShouldDoSSAO(pt), g.ShouldDoSSGI(pt), g.ShouldRayTraceGISurfaceDetails(pt),
                           enabled((prefix + "GISD_bounce_weight").c_str())})
                got += b ? '1' : '0';
            EXPECT_EQ(got, methods[m]) << prefix << m;
        }
    }
    g.SetParam("PT_GISD_radius", 40.0, trWhoUser);
    EXPECT_DOUBLE_EQ(g.GISDRadius(true), 40.0);
    EXPECT_DOUBLE_EQ(g.GISDRadius(false), 24.0);
}

TEST_F(GISettings, CacheFileNamesLieInTheProjectFolder)
{
    root.SetAbsoluteContentFilePathForChildren("/projects/valley/");
    auto *g = Make<trRenderGISettings>("render_GI_settings");
    long const frame = 12;
    EXPECT_EQ(Str(g->GICacheFilenameToWrite(nullptr)), "/projects/valley/gicache_%04d.gic");
    EXPECT_EQ(Str(g->GICacheFilenameToWrite(&frame)), "/projects/valley/gicache_0012.gic");
    g->SetParam("GI_cache_filename_to_read", trString("/projects/valley/caches/a_%03d.gic"), trWhoUser);
    EXPECT_EQ(Str(g->GI_cache_filename_to_read.FileStringR()), "caches/a_%03d.gic");
    EXPECT_EQ(Str(g->GICacheFilenameToRead(&frame)), "/projects/valley/caches/a_012.gic");
    // A field that isn't a frame number is left as text.
    g->SetParam("GI_cache_filename_to_read", trString("/tmp/a_%s%n.gic"), trWhoUser);
    EXPECT_EQ(Str(g->GICacheFilenameToRead(&frame)), "/tmp/a_%s%n.gic");
    // A copy outside the tree, as a render takes, finds the same files.
    trRenderGISettings copy;
    copy.CopySettingsFrom(*g);
    EXPECT_EQ(Str(copy.GICacheFilenameToWrite(&frame)), "/projects/valley/gicache_0012.gic");
}

// A copy outside the tree, as a render takes.
template <class T> std::unique_ptr<trBase> CopyOf(trBase *node)
{
    auto copy = std::make_unique<T>();
    copy->CopySettingsFrom(*static_cast<T *>(node));
    return copy;
}

TEST_F(Settings, ProjectRoundTripAndCopiesKeepEveryValue)
{
    render->SetParam("detail", 1.25, trWhoUser);
    trBase *n[5];
    for (int i = 0; i < 5; ++i)
        n[i] = Make(kSettingsClasses[i]);
    n[0]->SetParam("max_bucket_size", tr2Vector(96, 48), trWhoUser);
    n[1]->SetParam("quality_per_pixel", true, trWhoUser);
    n[1]->SetParam("_pt_maxRayDepth", 9L, trWhoUser);
    n[2]->SetParam("anti-aliasing", 7L, trWhoUser);
    n[2]->SetParam("pixel_noise_threshold", 0.0123456789012, trWhoUser);
    n[2]->SetParam("new_curve", true, trWhoUser);
    n[3]->SetParam("detail_blending", 0.3, trWhoUser);
    n[3]->SetParam("ray_detail_stabilisation", 6L, trWhoUser);
    n[4]->SetParam("GI_relative_detail", 2L, trWhoUser);
    n[4]->SetParam("write_to_GI_cache_file", true, trWhoUser);
    n[4]->SetParam("GI_cache_filename_to_write", trString("caches/run \"A\" & <B>_%04d.gic"), trWhoUser);
    n[4]->SetParam("cloud_GI_quality_preset", 6L, trWhoUser);
    // The render's own element holds the five; it is read into another render node.
    trString const first = trBaseXML::GetElement(*render, true, "", "render");
    trBase again;
    TestRender *render2 = NewRender(again, "Other");
    ASSERT_TRUE(trBaseXML::ReadBuffer(*render2, first.chars, "render"));
    EXPECT_EQ(Str(first), Str(trBaseXML::GetElement(*render2, true, "", "render")));
    ASSERT_EQ(render2->NumChildren(), 5);
    std::unique_ptr<trBase> const copies[] = {CopyOf<trRenderBucketControls>(n[0]),
                                              CopyOf<trRenderDeveloperControls>(n[1]),
                                              CopyOf<trRenderPixelSampler>(n[2]), CopyOf<trRenderSubdivSettings>(n[3]),
                                              CopyOf<trRenderGISettings>(n[4])};
    for (long c = 0; c < 5; ++c) {
        trBase *original = render->Child(c);
        for (long i = 8; i < original->NumParams(); ++i) {
            if (!original->GetParamShouldBeSaved(i) || original->ParamType(i) >= trParamPushButton)
                continue;
            char const *p = original->ParamName(i);
            EXPECT_EQ(Text(*render2->Child(c), p), Text(*original, p)) << p;
            EXPECT_EQ(Text(*copies[c], p), Text(*original, p)) << "copy " << p;
        }
    }
}

TEST_F(Settings, BadValuesAndRetiredKeysInAFileAreReportedNotFatal)
{
    HostCapture host;
    ASSERT_TRUE(Load("R", "<r><render_pixel_sampler name=\"S\" anti-aliasing=\"abc\" "
                          "first_sampling_level=\"99\" no_such_param=\"1\"/>"
                          "<render_GI_settings name=\"G\" GI_cache_blend_mode=\"17\" GI_relative_detail=\"-4\" "
                          "GI_cache_filename_to_write=\"%s%s%n\"/></r>"));
    auto *s = static_cast<trRenderPixelSampler *>(root.NodeByPath("/R/S"));
    auto *g = static_cast<trRenderGISettings *>(root.NodeByPath("/R/G"));
    ASSERT_TRUE(s && g);
    EXPECT_EQ(s->antiAliasing, 4); // unparsed: the default stays
    EXPECT_EQ(s->firstSamplingLevel, 99);
    EXPECT_EQ(Text(*s, "min_samples_per_pixel"), "0.0039"); // 16 / 4096, the "other" row
    EXPECT_TRUE(std::any_of(host.warnings.begin(), host.warnings.end(),
                            [](std::string const &w) { return w.find("no_such_param") != std::string::npos; }));
    EXPECT_EQ(g->GICacheBlendRange(), 5);
    EXPECT_EQ(int(g->GICacheBlendMode()), 17);
    EXPECT_EQ(g->GI_relative_detail, -4); // as the file says: a load doesn't relink
    EXPECT_DOUBLE_EQ(g->GIAbsoluteDetail(), 2.0);
    long const frame = 3;
    EXPECT_EQ(Str(g->GICacheFilenameToWrite(&frame)), "%s%s%n");
    // Retired keys of old files: one still read, one always on, with a warning when a file turns it off.
    host.warnings.clear();
    EXPECT_EQ(g->SetParamFromString("voxel_scattering_quality", "150", trWhoSystem), 1);
    EXPECT_DOUBLE_EQ(g->VoxelScatteringQuality(), 150.0);
    EXPECT_EQ(g->SetParamFromString("optimise_voxel_scattering", "1", trWhoSystem), 0);
    EXPECT_TRUE(host.warnings.empty());
    EXPECT_EQ(g->SetParamFromString("optimise_voxel_scattering", "0", trWhoSystem), 0);
    EXPECT_EQ(host.warnings, std::vector<std::string>{
                                 "\"Optimise voxel scattering\" is now enabled automatically and cannot be turned off."});
    EXPECT_TRUE(g->ShouldOptimiseVoxelScattering());
    EXPECT_EQ(g->SetParamFromString("GI_blur_radius", "0", trWhoSystem), 1);
    EXPECT_DOUBLE_EQ(g->GIBlurRadius(), 1.0);
}

} // namespace
