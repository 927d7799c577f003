#pragma once
// trRenderGISettings: every choice about global illumination. How detailed and how
// blurred the pre pass is, whether its cache is written to or read from GI cache files,
// the surface detail pass of the final image, and light in clouds. A child of a
// "render" node (or of a render layer); a render works from a copy.

#include "foundation/trString.h"
#include "nodes/trBase.h"
#include "nodes/trFile.h"

class trRenderGISettings : public trBase {
public:
    // How the frames of a cache file sequence are used when reading.
    enum BlendMode : int {
        BlendOneFile = 0,      // the exact file name
        BlendNearestFile = 1,  // the nearest file of the sequence
        BlendEqualInRange = 2, // an equal blend of the files within the range
        BlendInterpolate = 3,  // interpolated between frames, for animation
    };

    trRenderGISettings();
    ~trRenderGISettings() override;

    long OnCreate() override;
    // A new node takes the render's GI values, or turns surface details on outside a render.
    long OnFirstCreate() override;
    // Keeps the relative and absolute detail together and the interface state right.
    void OnParamChanged(long index, trBase *who) override;
    // Reads the names of older projects: "voxel_scattering_quality" is
    // voxel_scatter_quality, and optimise_voxel_scattering can no longer be turned off.
    long SetParamFromString(char const *paramName, trString const &text, trBase *who) override;
    using trBase::SetParamFromString;

    // ---- Accessors ----
    // GI_cache_detail; a value over 100 is an absolute detail given without the
    // relative link, and stands for itself less 100.
    double GIAbsoluteDetail() const;
    double GISampleQuality() const;
    double GIBlurRadius() const;
    int NumPrepassSupersamples() const;
    double GIPrepassPadding() const;
    // The full path; with a frame, the number put into its "%d" or "%0Nd" field.
    trString GICacheFilenameToRead(long const *frame) const;
    trString GICacheFilenameToWrite(long const *frame) const;
    BlendMode GICacheBlendMode() const;
    int GICacheBlendRange() const;
    bool ShouldWriteToGICacheFile() const;
    bool ShouldReadFromGICacheFile() const;
    // Each flag counts only while writing is on.
    bool ShouldWriteSurfacePoints() const;
    bool ShouldWriteVolumePoints() const;
    bool ShouldWriteVoxels() const;
    // Surface details of the standard renderer, or of the path tracer.
    bool ShouldDoSSAO(bool pathTraced) const;
    bool ShouldDoSSGI(bool pathTraced) const;
    bool ShouldRayTraceGISurfaceDetails(bool pathTraced) const;
    double GISDOcclusionWeight(bool pathTraced) const;
    double GISDBounceWeight(bool pathTraced) const;
    double GISDRadius(bool pathTraced) const;
    bool GISDFalloff(bool pathTraced) const;
    int CloudGIQualityPreset() const;
    int CloudGIMaxRayDepth() const;
    bool ShouldOptimiseVoxelScattering() const;
    double VoxelScatteringQuality() const;

    void SetGIAbsoluteDetail(double detail);
    void SetGIBlurRadius(double radius);
    void SetGISampleQuality(double quality);

    // Every parameter by name, and the content file path, so that a copy outside the
    // tree finds the same cache files.
    void CopySettingsFrom(trRenderGISettings const &other);

    // Interface state of the groups that follow the file modes.
    void GuiEnablePrepassParams(bool enable);
    void GuiEnableWriteParams(bool enable);
    // The blend range also needs a blend mode that blends.
    void GuiEnableReadParams(bool enable);
    void GuiEnableSurfaceDetailParams(bool pathTraced);

    // The relative detail that an absolute detail stands for under a render "detail".
    static long RelativeFromAbsoluteDetail(double absolute, double renderDetail);

    // ---- Parameters, in order of declaration ----
    // Tab "Prepass"
    long GI_relative_detail = 0;
    double GI_cache_detail = 0;
    double GI_sample_quality = 0;
    double GI_blur_radius = 0;
    unsigned char supersample_prepass = 0;
    trString cache_files_separator;
    unsigned char no_GI_cache_file = 0;
    unsigned char write_to_GI_cache_file = 0;
    trFileForWrite GI_cache_filename_to_write;
    unsigned char write_surface_points = 0;
    unsigned char write_volume_points = 0;
    unsigned char write_cloud_voxels = 0;
    unsigned char read_from_GI_cache_file = 0;
    trFileForRead GI_cache_filename_to_read;
    long GI_cache_blend_mode = 0;
    long GI_cache_blend_range = 0;
    trString prepass_advanced_separator;
    double GI_prepass_padding = 0;
    // Tab "Image Pass", standard renderer
    trString GISD_text_1;
    unsigned char GI_surface_details = 0;
    long GI_surface_details_method = 0;
    double GISD_occlusion_weight = 0;
    double GISD_bounce_weight = 0;
    double GISD_radius = 0;
    unsigned char GISD_falloff = 0;
    // Tab "Image Pass", path tracer
    trString GISD_text_3;
    unsigned char PT_GI_surface_details = 0;
    long PT_GI_surface_details_method = 0;
    double PT_GISD_occlusion_weight = 0;
    double PT_GISD_bounce_weight = 0;
    double PT_GISD_radius = 0;
    unsigned char PT_GISD_falloff = 0;
    // Tab "GI in Clouds"
    long cloud_GI_quality_preset = 0;
    long cloud_GI_max_ray_depth = 0;
    unsigned char optimise_voxel_scattering = 0;
    double voxel_scatter_quality = 0;

private:
    long iRelativeDetail = 0, iCacheDetail = 0, iNoFile = 0, iWrite = 0, iRead = 0, iBlendMode = 0;
    long iSurfaceDetails = 0, iSurfaceDetailsMethod = 0, iPTSurfaceDetails = 0, iPTSurfaceDetailsMethod = 0;
};
