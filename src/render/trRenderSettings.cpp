#include "render/trRenderSettings.h"

#include "foundation/trCores.h"
#include "foundation/trMessages.h"
#include "nodes/trFile.h"
#include "nodes/trGuiAction.h"
#include "nodes/trParamHint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <initializer_list>

// ---- Shared by the settings nodes ----

bool trIsUnderRenderNode(trBase const *node)
{
    trBase const *parent = node ? node->Parent() : nullptr;
    return parent && parent->RegisteredClassName() == trRenderClassName;
}

void trWarnIfNotOnlySettingsNode(trBase *node)
{
    if (!trIsUnderRenderNode(node) || !node->IsRegistered())
        return;
    trBase *parent = node->Parent();
    long const classId = node->RegisteredClassId();
    for (long i = 0; i < parent->NumChildren(); ++i) {
        trBase const *child = parent->Child(i);
        if (child && child != node && child->RegisteredClassId() == classId) {
            trWarning(parent->Name() + ": Only one \"" + node->RegisteredClassName() +
                      "\" node can be used per render node.");
            return;
        }
    }
}

bool trGetNumericParam(trBase const *node, char const *paramName, double &value)
{
    long index = 0;
    if (!node || !node->FindParam(index, paramName))
        return false;
    void const *p = node->ParamPtr(index);
    switch (node->ParamType(index)) {
    case trParamInt: value = double(*static_cast<long const *>(p)); return true;
    case trParamDouble: value = *static_cast<double const *>(p); return true;
    case trParamFloat: value = double(*static_cast<float const *>(p)); return true;
    case trParamBool: value = *static_cast<unsigned char const *>(p) ? 1.0 : 0.0; return true;
    default: return false;
    }
}

bool trSetNumericParam(trBase *node, char const *paramName, double value, trBase *who, bool force)
{
    long index = 0;
    if (!node || !node->FindParam(index, paramName))
        return false;
    switch (node->ParamType(index)) {
    case trParamInt: node->SetParam(index, long(std::floor(value + 0.5)), who, force); return true;
    case trParamDouble: node->SetParam(index, value, who, force); return true;
    case trParamFloat: node->SetParam(index, float(value), who, force); return true;
    case trParamBool:
        node->SetParam(index, static_cast<unsigned char>(value != 0.0 ? 1 : 0), who, force);
        return true;
    default: return false;
    }
}

bool trCopyParamByName(trBase &to, trBase const &from, char const *paramName)
{
    long src = 0, dst = 0;
    if (!from.FindParam(src, paramName) || !to.FindParam(dst, paramName) ||
        from.ParamType(src) != to.ParamType(dst))
        return false;
    void const *p = from.ParamPtr(src);
    switch (from.ParamType(src)) {
    case trParamInt: to.SetParam(dst, *static_cast<long const *>(p), trWhoSystem, true); return true;
    case trParamDouble: to.SetParam(dst, *static_cast<double const *>(p), trWhoSystem, true); return true;
    case trParamFloat: to.SetParam(dst, *static_cast<float const *>(p), trWhoSystem, true); return true;
    case trParamBool: to.SetParam(dst, *static_cast<unsigned char const *>(p), trWhoSystem, true); return true;
    case trParam2Vector: to.SetParam(dst, *static_cast<tr2Vector const *>(p), trWhoSystem, true); return true;
    case trParamVector: to.SetParam(dst, *static_cast<trVector const *>(p), trWhoSystem, true); return true;
    case trParamColour: to.SetParam(dst, *static_cast<trManRgb const *>(p), trWhoSystem, true); return true;
    case trParamString: to.SetParam(dst, *static_cast<trString const *>(p), trWhoSystem); return true;
    // The stored text: relative to the content folder, which the caller copies first.
    case trParamFile: to.SetParam(dst, static_cast<trFile const *>(p)->FileStringR(), trWhoSystem); return true;
    default: return false;
    }
}

namespace {

void CopyParamsByName(trBase &to, trBase const &from, std::initializer_list<char const *> names)
{
    for (char const *n : names)
        trCopyParamByName(to, from, n);
}

struct PixelSamplerHints {
    trIntHint antiAliasing;
    trIntHint firstSamplingLevel;
    trDoubleHint noiseThreshold;
    trStringHint label;         // a saved label: no style bits
    trStringHint computedLabel; // computed from the other values, so never saved

    PixelSamplerHints()
    {
        computedLabel.SetStyleFlags(trStringHint::StyleReadOnly);
        antiAliasing.SetRange(1, 8);
        static char const *const texts[] = {"1/1024 first samples", "1/256 first samples", "1/64 first samples",
                                            "1/16 first samples",   "1/4 first samples",
                                            "Max samples (non-adaptive)"};
        for (int i = 0; i < 6; ++i)
            firstSamplingLevel.SetMenuItemTextAndValue(i, texts[i], long(i) - 2);
        noiseThreshold.SetRange(0.0, 8.0);
        noiseThreshold.SetFocus(0.0, 2.0);
    }
};

PixelSamplerHints &SamplerHints()
{
    static PixelSamplerHints hints;
    return hints;
}

struct SubdivHints {
    trIntHint stabilisation;
    trIntHint cacheSize;

    SubdivHints() { stabilisation.SetRange(1, 8); }
};

SubdivHints &SubdivSettingsHints()
{
    static SubdivHints hints;
    return hints;
}

} // namespace

// ---- trRenderBucketControls ----

trRenderBucketControls::trRenderBucketControls()
{
    Param(maxBucketSize, "max_bucket_size", tr2Vector(256.0, 256.0));
    Param(allowAutoReduction, "allow_auto_reduction", static_cast<unsigned char>(1));
}

trRenderBucketControls::~trRenderBucketControls() = default;

long trRenderBucketControls::OnCreate()
{
    long const result = trBase::OnCreate();
    trWarnIfNotOnlySettingsNode(this);
    return result;
}

long trRenderBucketControls::OnFirstCreate() { return trBase::OnFirstCreate(); }

void trRenderBucketControls::OnParamChanged(long index, trBase *who) { trBase::OnParamChanged(index, who); }

void trRenderBucketControls::CopySettingsFrom(trRenderBucketControls const &other)
{
    maxBucketSize = other.maxBucketSize;
    allowAutoReduction = other.allowAutoReduction;
}

// ---- trRenderDeveloperControls ----

trRenderDeveloperControls::trRenderDeveloperControls()
{
    auto const on = static_cast<unsigned char>(1);
    auto const off = static_cast<unsigned char>(0);
    Param(directLightSampMult, "direct_light_samp_mult", 1.0);
    Param(qualityPerRay, "quality_per_ray", on);
    Param(qualityPerPixel, "quality_per_pixel", off);
    AddGuiAction({"quality_per_ray", "quality_per_pixel"}, {"quality_per_ray", "quality_per_pixel"},
                 trGuiActionPreset(trGuiActionPreset::RadioGroup));
    long i = Param(optimiseAtmoDirectLighting, "optimise_atmo_direct_lighting", off);
    SetParamDisplayName(i, "Optimise atmo direct lighting - IN FLUX");
    Param(atmoDirectLightQuality, "atmo_direct_light_quality", 100.0);
    i = Param(optimiseCloudDirectLighting, "optimise_cloud_direct_lighting", off);
    SetParamDisplayName(i, "Optimise cloud direct lighting - IN FLUX");
    Param(cloudDirectLightQuality, "cloud_direct_light_quality", 50.0);
    i = Param(forceOldVoxelScatter, "force_old_voxel_scatter", off);
    SetParamDisplayName(i, "Force old voxel scatter, and ignore scatter quality in GI Settings");
    Param(enablePathTracing, "enable_path_tracing", off);
    Param(overridePtSettings, "override_pt_settings", off);
    Param(ptRootMasterQuality, "_pt_rootMasterQuality", 3L);
    Param(ptMaxRayDepth, "_pt_maxRayDepth", 5L);
    i = Param(ptElementalAdaptive, "_pt_elementalAdaptive", on);
    SetParamDisplayName(i, "pt elementalAdaptive - uses more RAM, requires Robust Adaptive");
    i = Param(ptBinnedAdaptive, "_pt_binnedAdaptive", off);
    SetParamDisplayName(i, "pt binnedAdaptive - uses LOTS more RAM, requires Robust Adaptive");
    Param(bumpMapInPrimaryHiresRays, "bump_map_in_primary_hires_rays", on);
    Param(bumpMapInPrimaryLowresRays, "bump_map_in_primary_lowres_rays", on);
    Param(bumpMapInSecondaryHiresRays, "bump_map_in_secondary_hires_rays", on);
    Param(bumpMapInSecondaryLowresRays, "bump_map_in_secondary_lowres_rays", off);
    Param(bumpMapInTertiaryHiresRays, "bump_map_in_tertiary_hires_rays", off);
    Param(bumpMapInTertiaryLowresRays, "bump_map_in_tertiary_lowres_rays", off);
    Param(bumpMapInDeeperHiresRays, "bump_map_in_deeper_hires_rays", off);
    Param(bumpMapInDeeperLowresRays, "bump_map_in_deeper_lowres_rays", off);
}

trRenderDeveloperControls::~trRenderDeveloperControls() = default;

long trRenderDeveloperControls::OnCreate()
{
    long const result = trBase::OnCreate();
    trWarnIfNotOnlySettingsNode(this);
    return result;
}

long trRenderDeveloperControls::OnFirstCreate() { return trBase::OnFirstCreate(); }

void trRenderDeveloperControls::OnParamChanged(long index, trBase *who) { trBase::OnParamChanged(index, who); }

void trRenderDeveloperControls::CopySettingsFrom(trRenderDeveloperControls const &other)
{
    directLightSampMult = other.directLightSampMult;
    qualityPerRay = other.qualityPerRay;
    qualityPerPixel = other.qualityPerPixel;
    optimiseAtmoDirectLighting = other.optimiseAtmoDirectLighting;
    atmoDirectLightQuality = other.atmoDirectLightQuality;
    optimiseCloudDirectLighting = other.optimiseCloudDirectLighting;
    cloudDirectLightQuality = other.cloudDirectLightQuality;
    forceOldVoxelScatter = other.forceOldVoxelScatter;
    enablePathTracing = other.enablePathTracing;
    overridePtSettings = other.overridePtSettings;
    ptRootMasterQuality = other.ptRootMasterQuality;
    ptMaxRayDepth = other.ptMaxRayDepth;
    ptElementalAdaptive = other.ptElementalAdaptive;
    ptBinnedAdaptive = other.ptBinnedAdaptive;
    bumpMapInPrimaryHiresRays = other.bumpMapInPrimaryHiresRays;
    bumpMapInPrimaryLowresRays = other.bumpMapInPrimaryLowresRays;
    bumpMapInSecondaryHiresRays = other.bumpMapInSecondaryHiresRays;
    bumpMapInSecondaryLowresRays = other.bumpMapInSecondaryLowresRays;
    bumpMapInTertiaryHiresRays = other.bumpMapInTertiaryHiresRays;
    bumpMapInTertiaryLowresRays = other.bumpMapInTertiaryLowresRays;
    bumpMapInDeeperHiresRays = other.bumpMapInDeeperHiresRays;
    bumpMapInDeeperLowresRays = other.bumpMapInDeeperLowresRays;
}

// ---- trRenderPixelSampler ----

trRenderPixelSampler::trRenderPixelSampler()
{
    PixelSamplerHints &h = SamplerHints();
    long constexpr kDefaultAntiAliasing = 4;
    iAntiAliasing = Param(antiAliasing, "anti-aliasing", kDefaultAntiAliasing, &h.antiAliasing);
    Gui(trGuiStaticText);
    long i = Param(samplesPerPixelLabel, "samples_per_pixel_label", trString(), &h.label);
    SetParamDisplayName(i, "Samples per pixel:");
    Gui(trGuiStaticText);
    i = Param(rasterSamplesPerPixel, "raster_samples_per_pixel", trString(), &h.computedLabel);
    SetParamDisplayName(i, "Rasteriser");
    Gui(trGuiStaticText);
    i = Param(maxSamplesPerPixel, "max_samples_per_pixel", trString(), &h.computedLabel);
    SetParamDisplayName(i, "RT/Defer adaptive max");
    Gui(trGuiStaticText);
    i = Param(minSamplesPerPixel, "min_samples_per_pixel", trString(), &h.computedLabel);
    SetParamDisplayName(i, "RT/Defer adaptive min");
    // legacy is the other half of robust's radio group, so a file need only hold robust.
    i = Param(legacy, "legacy", static_cast<unsigned char>(1));
    SetParamDisplayName(i, "Legacy adaptive sampler");
    SetParamShouldBeSaved(i, false);
    i = Param(newCurve, "new_curve", static_cast<unsigned char>(0));
    SetParamDisplayName(i, "Newer curve");
    iRobust = Param(robust, "robust", static_cast<unsigned char>(0));
    SetParamDisplayName(iRobust, "Robust adaptive sampler");
    AddGuiAction({"legacy", "robust"}, {"legacy", "robust"}, trGuiActionPreset(trGuiActionPreset::RadioGroup));
    iCustomiseSampling = Param(customiseSampling, "customise_sampling", static_cast<unsigned char>(0));
    iFirstSamplingLevel = Param(firstSamplingLevel, "first_sampling_level", 1L, &h.firstSamplingLevel);
    iPixelNoiseThreshold =
        Param(pixelNoiseThreshold, "pixel_noise_threshold", 0.3 / double(kDefaultAntiAliasing), &h.noiseThreshold);
}

trRenderPixelSampler::~trRenderPixelSampler() = default;

long trRenderPixelSampler::OnCreate()
{
    long const result = trBase::OnCreate();
    trWarnIfNotOnlySettingsNode(this);
    return result;
}

long trRenderPixelSampler::OnFirstCreate()
{
    long const result = trBase::OnFirstCreate();
    double aa = 0;
    if (trIsUnderRenderNode(this) && trGetNumericParam(Parent(), "anti-aliasing", aa))
        SetParam(iAntiAliasing, long(std::floor(aa + 0.5)), trWhoSystem);
    SetParam(iRobust, static_cast<unsigned char>(1), trWhoSystem);
    return result;
}

int trRenderPixelSampler::FirstSamplingCellSize(long level)
{
    switch (level) {
    case -2: return 32;
    case -1: return 16;
    case 0: return 8;
    case 1: return 4;
    case 2: return 2;
    case 3: return 1;
    default: return 64;
    }
}

double trRenderPixelSampler::MinSamplesPerPixel(long aa, long level)
{
    double const a = double(std::max(aa, 1L));
    double const cell = double(FirstSamplingCellSize(level));
    return a * a / (cell * cell);
}

void trRenderPixelSampler::OnParamChanged(long index, trBase *who)
{
    trBase::OnParamChanged(index, who);
    long const a = std::max(antiAliasing, 1L);
    long const n = a * a;
    if (index == iCustomiseSampling || index == iAntiAliasing || index == iRobust) {
        trString text;
        text.SetInt(n, "%d");
        SetParam("raster_samples_per_pixel", text, trWhoSystem);
        SetParam("max_samples_per_pixel", text, trWhoSystem);
        // Custom values stay until customise_sampling is turned off again.
        if (!customiseSampling) {
            long const level = robust ? (a == 1 ? 2 : (a <= 3 ? 1 : 0)) : 2;
            SetParam(iFirstSamplingLevel, level, trWhoSystem);
            SetParam(iPixelNoiseThreshold, 0.3 / double(a), trWhoSystem);
        }
    }
    if (index == iAntiAliasing || index == iFirstSamplingLevel) {
        trString text;
        text.SetDouble(MinSamplesPerPixel(a, firstSamplingLevel), "%.2g");
        SetParam("min_samples_per_pixel", text, trWhoSystem);
    }
    if (index == iRobust)
        SetParamGuiEnabled("new_curve", !robust);
    // Edits by hand: the user's own change, and one made for the user by an interface
    // action (a button). The system's writes (files, copies, this handler) are not.
    bool const byHand = who == trWhoUser || who == trWhoUserIndirect;
    if (byHand && (index == iFirstSamplingLevel || index == iPixelNoiseThreshold) && !customiseSampling)
        SetParam(iCustomiseSampling, static_cast<unsigned char>(1), trWhoSystem);
}

void trRenderPixelSampler::CopySettingsFrom(trRenderPixelSampler const &other)
{
    SetOrphanedContentFilePath(other.ContentFilePath());
    CopyParamsByName(*this, other,
                     {"anti-aliasing", "customise_sampling", "first_sampling_level", "pixel_noise_threshold", "legacy",
                      "new_curve", "robust"});
}

// ---- trRenderSubdivSettings ----

long trRenderSubdivSettings::DefaultSubdivCacheMb()
{
    int const c = trNumCoresToUse();
    double const threads = double(std::max(std::min(c, 64), 1));
    return long(std::floor((threads * 250.0 + 150.0) / 200.0 + 0.5)) * 200;
}

long trRenderSubdivSettings::MaxSubdivCacheMb()
{
    double const threads = double(std::max(trNumCoresToUse(), 1));
    return long(std::floor((threads * 250.0 + 150.0) / 200.0 + 0.5)) * 400;
}

trRenderSubdivSettings::trRenderSubdivSettings()
{
    SubdivHints &h = SubdivSettingsHints();
    long const cacheMb = DefaultSubdivCacheMb();
    // The core count may change between nodes; the shared hint follows the latest.
    h.cacheSize.SetRange(cacheMb / 4, MaxSubdivCacheMb());

    auto const on = static_cast<unsigned char>(1);
    auto const off = static_cast<unsigned char>(0);
    Param(fullyAdaptive, "fully_adaptive", on);
    iMicrovertexJittering = Param(microvertexJittering, "microvertex_jittering", on);
    Param(forceAllEdges, "force_all_edges", off);
    iDetailJittering = Param(detailJittering, "detail_jittering", on);
    iDetailBlending = Param(detailBlending, "detail_blending", 0.0);
    iDisplacementFilter = Param(displacementFilter, "displacement_filter", 1.0);
    long i = Param(jitterShadingPoints, "jitter_shading_points", on);
    SetParamDisplayName(i, "Jitter shading points on visible micropolygons");
    Param(rayDetailMultiplier, "ray_detail_multiplier", 0.25);
    Param(stabiliseRayDetailInMotion, "stabilise_ray_detail_in_motion", off);
    i = Param(rayDetailStabilisation, "ray_detail_stabilisation", 3L, &h.stabilisation);
    SetParamDisplayName(i, "Amount of stabilisation");
    Param(overrideSizeOfSubdivCache, "override_size_of_subdiv_cache", off);
    Param(sizeOfSubdivCacheInMb, "size_of_subdiv_cache_in_Mb", cacheMb, &h.cacheSize);
    Param(preallocateSubdivCache, "preallocate_subdiv_cache", off);
    AddGuiAction({"override_size_of_subdiv_cache"}, {"size_of_subdiv_cache_in_Mb", "preallocate_subdiv_cache"},
                 trGuiActionPreset(trGuiActionPreset::BoolEnableDisable));
    SetParamGuiEnabled("size_of_subdiv_cache_in_Mb", false);
    SetParamGuiEnabled("preallocate_subdiv_cache", false);
}

trRenderSubdivSettings::~trRenderSubdivSettings() = default;

long trRenderSubdivSettings::OnCreate()
{
    long const result = trBase::OnCreate();
    trWarnIfNotOnlySettingsNode(this);
    // A parent of another class has no render values to share.
    if (!valuesInherited && trIsUnderRenderNode(this)) {
        valuesInherited = true;
        for (char const *n : {"microvertex_jittering", "detail_jittering", "detail_blending", "displacement_filter"}) {
            double value = 0;
            if (trGetNumericParam(Parent(), n, value))
                trSetNumericParam(this, n, value, trWhoSystem);
        }
    }
    return result;
}

long trRenderSubdivSettings::OnFirstCreate() { return trBase::OnFirstCreate(); }

void trRenderSubdivSettings::OnParamChanged(long index, trBase *who)
{
    if (index == iMicrovertexJittering || index == iDetailJittering || index == iDetailBlending ||
        index == iDisplacementFilter)
        valuesInherited = true;
    trBase::OnParamChanged(index, who);
}

void trRenderSubdivSettings::CopySettingsFrom(trRenderSubdivSettings const &other)
{
    SetOrphanedContentFilePath(other.ContentFilePath());
    valuesInherited = other.valuesInherited;
    CopyParamsByName(*this, other,
                     {"fully_adaptive", "force_all_edges", "microvertex_jittering", "detail_jittering",
                      "detail_blending", "displacement_filter", "jitter_shading_points",
                      "stabilise_ray_detail_in_motion", "ray_detail_stabilisation", "ray_detail_multiplier",
                      "override_size_of_subdiv_cache", "size_of_subdiv_cache_in_Mb", "preallocate_subdiv_cache"});
}
