#pragma once
// Four of the nodes that hold what a user tunes about a render: bucket sizes, developer
// switches, the pixel sampler and render-time subdivision. Each is a child of a node of
// class "render" and is copied once when a render starts, which then reads the
// parameters straight from these public fields. The global illumination settings are
// in trRenderGISettings.h.

#include "foundation/trVector.h"
#include "nodes/trBase.h"

// The registered class name of the node that owns render settings.
inline constexpr char trRenderClassName[] = "render";

class trRenderBucketControls : public trBase {
public:
    trRenderBucketControls();
    ~trRenderBucketControls() override;

    long OnCreate() override;
    long OnFirstCreate() override;
    void OnParamChanged(long index, trBase *who) override;

    // Copies the parameters without notifications.
    void CopySettingsFrom(trRenderBucketControls const &other);

    tr2Vector maxBucketSize;              // max_bucket_size
    unsigned char allowAutoReduction = 0; // allow_auto_reduction
};

class trRenderDeveloperControls : public trBase {
public:
    trRenderDeveloperControls();
    ~trRenderDeveloperControls() override;

    long OnCreate() override;
    long OnFirstCreate() override;
    void OnParamChanged(long index, trBase *who) override;

    // Copies every field without parameter calls, as a render does when it starts.
    void CopySettingsFrom(trRenderDeveloperControls const &other);

    double directLightSampMult = 0;                 // direct_light_samp_mult
    unsigned char qualityPerRay = 0;                // quality_per_ray
    unsigned char qualityPerPixel = 0;              // quality_per_pixel
    unsigned char optimiseAtmoDirectLighting = 0;   // optimise_atmo_direct_lighting
    double atmoDirectLightQuality = 0;              // atmo_direct_light_quality
    unsigned char optimiseCloudDirectLighting = 0;  // optimise_cloud_direct_lighting
    double cloudDirectLightQuality = 0;             // cloud_direct_light_quality
    unsigned char forceOldVoxelScatter = 0;         // force_old_voxel_scatter
    unsigned char enablePathTracing = 0;            // enable_path_tracing
    unsigned char overridePtSettings = 0;           // override_pt_settings
    long ptRootMasterQuality = 0;                   // _pt_rootMasterQuality
    long ptMaxRayDepth = 0;                         // _pt_maxRayDepth
    unsigned char ptElementalAdaptive = 0;          // _pt_elementalAdaptive
    unsigned char ptBinnedAdaptive = 0;             // _pt_binnedAdaptive
    unsigned char bumpMapInPrimaryHiresRays = 0;    // bump_map_in_primary_hires_rays
    unsigned char bumpMapInPrimaryLowresRays = 0;   // bump_map_in_primary_lowres_rays
    unsigned char bumpMapInSecondaryHiresRays = 0;  // bump_map_in_secondary_hires_rays
    unsigned char bumpMapInSecondaryLowresRays = 0; // bump_map_in_secondary_lowres_rays
    unsigned char bumpMapInTertiaryHiresRays = 0;   // bump_map_in_tertiary_hires_rays
    unsigned char bumpMapInTertiaryLowresRays = 0;  // bump_map_in_tertiary_lowres_rays
    unsigned char bumpMapInDeeperHiresRays = 0;     // bump_map_in_deeper_hires_rays
    unsigned char bumpMapInDeeperLowresRays = 0;    // bump_map_in_deeper_lowres_rays
};

class trRenderPixelSampler : public trBase {
public:
    trRenderPixelSampler();
    ~trRenderPixelSampler() override;

    long OnCreate() override;
    // Takes the render's anti-aliasing and turns the robust sampler on: a new node uses
    // it, while one read from a file keeps what the file says.
    long OnFirstCreate() override;
    // Keeps the sample count labels, the first sampling level and the noise threshold
    // in step with anti-aliasing unless the user customised them.
    void OnParamChanged(long index, trBase *who) override;

    // The content file path, then anti-aliasing, customise_sampling,
    // first_sampling_level, pixel_noise_threshold, legacy, new_curve and robust, in that
    // order, through the parameter calls.
    void CopySettingsFrom(trRenderPixelSampler const &other);

    // Sub-pixels per side of the first cell of adaptive sampling, for a
    // first_sampling_level (64 for a level outside -2 to 3).
    static int FirstSamplingCellSize(long level);
    // The smallest number of samples per pixel for `aa` x `aa` sub-pixels.
    static double MinSamplesPerPixel(long aa, long level);

    long antiAliasing = 0;               // anti-aliasing; 0 from a file counts as 1
    trString samplesPerPixelLabel;       // samples_per_pixel_label
    trString rasterSamplesPerPixel;      // raster_samples_per_pixel, not saved
    trString maxSamplesPerPixel;         // max_samples_per_pixel, not saved
    trString minSamplesPerPixel;         // min_samples_per_pixel, not saved
    unsigned char legacy = 0;            // legacy, not saved
    unsigned char newCurve = 0;          // new_curve
    unsigned char robust = 0;            // robust
    unsigned char customiseSampling = 0; // customise_sampling
    long firstSamplingLevel = 0;         // first_sampling_level
    double pixelNoiseThreshold = 0;      // pixel_noise_threshold

private:
    long iAntiAliasing = 0, iCustomiseSampling = 0, iRobust = 0, iFirstSamplingLevel = 0,
         iPixelNoiseThreshold = 0;
};

class trRenderSubdivSettings : public trBase {
public:
    trRenderSubdivSettings();
    ~trRenderSubdivSettings() override;

    // Besides the one-node check, takes the four values it shares with the render, once
    // in the node's life.
    long OnCreate() override;
    long OnFirstCreate() override;
    void OnParamChanged(long index, trBase *who) override;

    // The content file path, valuesInherited, then every parameter in the order a
    // render copies them, through the parameter calls.
    void CopySettingsFrom(trRenderSubdivSettings const &other);

    // The default cache size (the automatic size for the cores in use, to a multiple of
    // 200 Mb) and the top of its range, which ignores the 64-thread limit.
    static long DefaultSubdivCacheMb();
    static long MaxSubdivCacheMb();

    // Set once the shared values came from the render or were changed here, so that
    // OnCreate never overwrites them. Not a parameter.
    bool valuesInherited = false;

    unsigned char fullyAdaptive = 0;              // fully_adaptive
    unsigned char microvertexJittering = 0;       // microvertex_jittering
    unsigned char forceAllEdges = 0;              // force_all_edges
    unsigned char detailJittering = 0;            // detail_jittering
    double detailBlending = 0;                    // detail_blending
    double displacementFilter = 0;                // displacement_filter
    unsigned char jitterShadingPoints = 0;        // jitter_shading_points
    double rayDetailMultiplier = 0;               // ray_detail_multiplier
    unsigned char stabiliseRayDetailInMotion = 0; // stabilise_ray_detail_in_motion
    long rayDetailStabilisation = 0;              // ray_detail_stabilisation
    unsigned char overrideSizeOfSubdivCache = 0;  // override_size_of_subdiv_cache
    long sizeOfSubdivCacheInMb = 0;               // size_of_subdiv_cache_in_Mb
    unsigned char preallocateSubdivCache = 0;     // preallocate_subdiv_cache

private:
    long iMicrovertexJittering = 0, iDetailJittering = 0, iDetailBlending = 0, iDisplacementFilter = 0;
};

// ---- Shared by the settings nodes ----

// True when the node's parent is registered as a "render".
bool trIsUnderRenderNode(trBase const *node);
// The warning for a second settings node of the same class under one render node.
// Nothing is refused: the node stays.
void trWarnIfNotOnlySettingsNode(trBase *node);
// Reads a numeric parameter (integer, real, float or boolean) of any node as a double.
// False, quietly, when the node has no such parameter.
bool trGetNumericParam(trBase const *node, char const *paramName, double &value);
// Writes a numeric parameter from a double, converted to the parameter's own type.
// False when the node has no numeric parameter of that name.
bool trSetNumericParam(trBase *node, char const *paramName, double value, trBase *who, bool force = false);
// Copies one parameter of the same name and type between two nodes, forced and as the
// system, so that the copy's handlers run as they do when a file is read. A file or
// link copies its stored text. False when either node lacks it or the types differ.
bool trCopyParamByName(trBase &to, trBase const &from, char const *paramName);
