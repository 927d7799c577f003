#include "render/trRenderGISettings.h"

#include "nodes/trProjectFile.h"

#include "foundation/trMessages.h"
#include "nodes/trGuiAction.h"
#include "nodes/trParamHint.h"
#include "render/trRenderSettings.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

struct GIHints {
    trIntHint relativeDetail;
    trDoubleHint detail; // cache detail and sample quality
    trDoubleHint blurRadius;
    trStringHint label;
    trLinkHint cacheFile;
    trIntHint blendMode;
    trIntHint blendRange;
    trIntHint surfaceDetailsMethod;
    trDoubleHint surfaceDetailsRadius;
    trIntHint cloudPreset;
    trDoubleHint voxelScatterQuality;

    GIHints()
    {
        relativeDetail.SetRange(1, 6);
        detail.SetRange(0.0, 6.0);
        blurRadius.SetRange(1.0, 16.0);
        cacheFile.AddFileFilter("GI cache files", "*.gic");
        static char const *const blendTexts[] = {"One file (exact filename)", "Nearest file in sequence",
                                                 "Equal blend within range", "Interpolate (for animation)"};
        for (int i = 0; i < 4; ++i)
            blendMode.SetMenuItemTextAndValue(i, blendTexts[i], i);
        blendRange.SetRange(2, 10);
        surfaceDetailsMethod.SetMenuItemTextAndValue(0, "Ambient occlusion", 0);
        surfaceDetailsMethod.SetMenuItemTextAndValue(1, "Global illumination", 1);
        surfaceDetailsRadius.SetRange(0.0, 64.0);
        static char const *const presetTexts[] = {"Still / Low",         "Still / Medium",
                                                  "Still / High",        "Still / Very high",
                                                  "Sequence Quality x1", "Sequence Quality x2",
                                                  "Sequence Quality x4", "Sequence Quality x8"};
        for (int i = 0; i < 8; ++i)
            cloudPreset.SetMenuItemTextAndValue(i, presetTexts[i], i);
        voxelScatterQuality.SetRange(0.0, 400.0);
    }
};

GIHints &Hints()
{
    static GIHints hints;
    return hints;
}

// The render's "detail", which the relative GI detail is measured against.
double RenderDetail(trBase const *node)
{
    double detail = 1.0;
    if (trIsUnderRenderNode(node))
        trGetNumericParam(node->Parent(), "detail", detail);
    return detail;
}

trString WithFrame(trString const &path, long const *frame)
{
    return frame ? path.WithFrameNumber(*frame) : path;
}

} // namespace

trRenderGISettings::trRenderGISettings()
{
    GIHints &h = Hints();
    auto const on = static_cast<unsigned char>(1);
    auto const off = static_cast<unsigned char>(0);

    GuiTab("Prepass", "prepass_tab");
    iRelativeDetail = Param(GI_relative_detail, "GI_relative_detail", 2L, &h.relativeDetail);
    iCacheDetail = Param(GI_cache_detail, "GI_cache_detail", 2.0, &h.detail);
    Param(GI_sample_quality, "GI_sample_quality", 2.0, &h.detail);
    Param(GI_blur_radius, "GI_blur_radius", 8.0, &h.blurRadius);
    Param(supersample_prepass, "supersample_prepass", off);
    Gui(trGuiSeparator);
    Gui(trGuiStaticText);
    long i = Param(cache_files_separator, "cache_files_separator", trString(), &h.label);
    SetParamDisplayName(i, "GI Cache File");
    iNoFile = Param(no_GI_cache_file, "no_GI_cache_file", on);
    SetParamDisplayName(iNoFile, "Automatic GI cache (no file)");
    iWrite = Param(write_to_GI_cache_file, "write_to_GI_cache_file", off);
    // Stored relative, so the default lies in the project folder, wherever that is.
    Param(GI_cache_filename_to_write, "GI_cache_filename_to_write", trString("gicache_%04d.gic"), &h.cacheFile);
    i = Param(write_surface_points, "write_surface_points", on);
    SetParamDisplayName(i, "Surface points");
    i = Param(write_volume_points, "write_volume_points", on);
    SetParamDisplayName(i, "Atmo, Cloud v2");
    i = Param(write_cloud_voxels, "write_cloud_voxels", on);
    SetParamDisplayName(i, "Cloud v3, Easy Cloud");
    iRead = Param(read_from_GI_cache_file, "read_from_GI_cache_file", off);
    SetParamDisplayName(iRead, "Read GI cache file(s)");
    Param(GI_cache_filename_to_read, "GI_cache_filename_to_read", trString(), &h.cacheFile);
    iBlendMode = Param(GI_cache_blend_mode, "GI_cache_blend_mode", long(BlendInterpolate), &h.blendMode);
    SetParamDisplayName(iBlendMode, "Blend mode");
    i = Param(GI_cache_blend_range, "GI_cache_blend_range", 5L, &h.blendRange);
    SetParamDisplayName(i, "Number of files to blend");
    AddGuiAction({"no_GI_cache_file", "write_to_GI_cache_file", "read_from_GI_cache_file"},
                 {"no_GI_cache_file", "write_to_GI_cache_file", "read_from_GI_cache_file"},
                 trGuiActionPreset(trGuiActionPreset::RadioGroup));
    Gui(trGuiSeparator);
    Gui(trGuiStaticText);
    i = Param(prepass_advanced_separator, "prepass_advanced_separator", trString(), &h.label);
    SetParamDisplayName(i, "Advanced");
    Param(GI_prepass_padding, "GI_prepass_padding", 0.0);

    GuiTab("Image Pass", "image_pass_tab");
    Gui(trGuiStaticText);
    Param(GISD_text_1, "GISD_text_1", trString("These settings apply when rendering with \"Standard renderer.\""),
          &h.label);
    iSurfaceDetails = Param(GI_surface_details, "GI_surface_details", off);
    iSurfaceDetailsMethod = Param(GI_surface_details_method, "GI_surface_details_method", 1L, &h.surfaceDetailsMethod);
    i = Param(GISD_occlusion_weight, "GISD_occlusion_weight", 1.0);
    SetParamDisplayName(i, "Occlusion weight");
    i = Param(GISD_bounce_weight, "GISD_bounce_weight", 1.0);
    SetParamDisplayName(i, "Bounce to the ounce");
    i = Param(GISD_radius, "GISD_radius", 24.0, &h.surfaceDetailsRadius);
    SetParamDisplayName(i, "Radius (in pixels)");
    i = Param(GISD_falloff, "GISD_falloff", on);
    SetParamDisplayName(i, "Falloff");

    Gui(trGuiStaticText);
    Param(GISD_text_3, "GISD_text_3", trString("These settings apply when rendering with \"Path tracer.\""), &h.label);
    iPTSurfaceDetails = Param(PT_GI_surface_details, "PT_GI_surface_details", off);
    SetParamDisplayName(iPTSurfaceDetails, "Exaggerate surface details");
    iPTSurfaceDetailsMethod =
        Param(PT_GI_surface_details_method, "PT_GI_surface_details_method", 1L, &h.surfaceDetailsMethod);
    i = Param(PT_GISD_occlusion_weight, "PT_GISD_occlusion_weight", 1.0);
    SetParamDisplayName(i, "Occlusion exaggeration");
    i = Param(PT_GISD_bounce_weight, "PT_GISD_bounce_weight", 1.0);
    SetParamDisplayName(i, "Bounce exaggeration");
    i = Param(PT_GISD_radius, "PT_GISD_radius", 24.0, &h.surfaceDetailsRadius);
    SetParamDisplayName(i, "Radius (in pixels)");
    i = Param(PT_GISD_falloff, "PT_GISD_falloff", on);
    SetParamDisplayName(i, "Falloff");

    GuiTab("GI in Clouds", "clouds_tab");
    i = Param(cloud_GI_quality_preset, "cloud_GI_quality_preset", 1L, &h.cloudPreset);
    SetParamDisplayName(i, "Cloud GI quality");
    Param(cloud_GI_max_ray_depth, "cloud_GI_max_ray_depth", 2L);
    // Always on: a file can't change it (see SetParamFromString), so it isn't saved.
    i = Param(optimise_voxel_scattering, "optimise_voxel_scattering", on);
    SetParamShouldBeSaved(i, false);
    i = Param(voxel_scatter_quality, "voxel_scatter_quality", 100.0, &h.voxelScatterQuality);
    SetParamDisplayName(i, "Voxel scattering quality");

    GuiEnablePrepassParams(true);
    GuiEnableWriteParams(false);
    GuiEnableReadParams(false);
    GuiEnableSurfaceDetailParams(false);
    GuiEnableSurfaceDetailParams(true);
}

trRenderGISettings::~trRenderGISettings() = default;

long trRenderGISettings::OnCreate()
{
    long const result = trBase::OnCreate();
    trWarnIfNotOnlySettingsNode(this);
    return result;
}

long trRenderGISettings::OnFirstCreate()
{
    long const result = trBase::OnFirstCreate();
    if (!trIsUnderRenderNode(this)) {
        SetParam(iSurfaceDetails, static_cast<unsigned char>(1), trWhoSystem);
        return result;
    }
    for (char const *n :
         {"GI_sample_quality", "GI_blur_radius", "supersample_prepass", "GI_surface_details", "GI_prepass_padding"}) {
        double value = 0;
        if (trGetNumericParam(Parent(), n, value))
            trSetNumericParam(this, n, value, trWhoSystem);
    }
    return result;
}

long trRenderGISettings::RelativeFromAbsoluteDetail(double absolute, double renderDetail)
{
    double divisor = renderDetail * 4.0;
    if (std::fabs(divisor) <= 1e-12)
        divisor = divisor < 0 ? -1e-12 : 1e-12;
    double const r = absolute / divisor;
    if (!(r > 0))
        return 0;
    return std::max(1L, long(std::floor(r + 0.5)));
}

void trRenderGISettings::OnParamChanged(long index, trBase *who)
{
    trBase::OnParamChanged(index, who);
    // The system's writes (a file, a copy, the write-back of an animated read, this link
    // itself) keep both values as given, so a project reads back as it was saved.
    bool const linked = who != trWhoSystem && trIsUnderRenderNode(this);
    if (index == iRelativeDetail) {
        if (!linked)
            return;
        double const d = RenderDetail(this);
        if (RelativeFromAbsoluteDetail(GI_cache_detail, d) != GI_relative_detail)
            SetParam(iCacheDetail, std::min(10.0, double(GI_relative_detail) * d * 4.0), trWhoSystem);
    } else if (index == iCacheDetail) {
        // Over 100 the detail is absolute by request, and the relative value is left alone.
        if (!linked || GI_cache_detail > 100.0)
            return;
        long const r = RelativeFromAbsoluteDetail(GI_cache_detail, RenderDetail(this));
        if (r != GI_relative_detail)
            SetParam(iRelativeDetail, r, trWhoSystem);
    } else if (index == iWrite) {
        GuiEnableWriteParams(write_to_GI_cache_file != 0);
    } else if (index == iRead) {
        GuiEnablePrepassParams(read_from_GI_cache_file == 0);
        GuiEnableReadParams(read_from_GI_cache_file != 0);
    } else if (index == iBlendMode) {
        GuiEnableReadParams(read_from_GI_cache_file != 0);
    } else if (index == iSurfaceDetails || index == iSurfaceDetailsMethod) {
        GuiEnableSurfaceDetailParams(false);
    } else if (index == iPTSurfaceDetails || index == iPTSurfaceDetailsMethod) {
        GuiEnableSurfaceDetailParams(true);
    }
}

long trRenderGISettings::SetParamFromString(char const *paramName, trString const &text, trBase *who)
{
    // Older projects: "voxel_scattering_quality" and a switch for voxel scattering that
    // is now always on.
    return trSetParamFromStringRetired(*this, paramName, text, who);
}

void trRenderGISettings::GuiEnablePrepassParams(bool enable)
{
    for (char const *n :
         {"GI_cache_detail", "GI_sample_quality", "GI_blur_radius", "supersample_prepass", "GI_prepass_padding"})
        SetParamGuiEnabled(n, enable);
}

void trRenderGISettings::GuiEnableWriteParams(bool enable)
{
    for (char const *n :
         {"GI_cache_filename_to_write", "write_surface_points", "write_volume_points", "write_cloud_voxels"})
        SetParamGuiEnabled(n, enable);
}

void trRenderGISettings::GuiEnableReadParams(bool enable)
{
    SetParamGuiEnabled("GI_cache_filename_to_read", enable);
    SetParamGuiEnabled("GI_cache_blend_mode", enable);
    SetParamGuiEnabled("GI_cache_blend_range", enable && GI_cache_blend_mode >= BlendEqualInRange);
}

void trRenderGISettings::GuiEnableSurfaceDetailParams(bool pathTraced)
{
    bool const on = (pathTraced ? PT_GI_surface_details : GI_surface_details) != 0;
    long const method = pathTraced ? PT_GI_surface_details_method : GI_surface_details_method;
    char const *prefix = pathTraced ? "PT_" : "";
    for (char const *n : {"GI_surface_details_method", "GISD_occlusion_weight", "GISD_falloff", "GISD_radius"})
        SetParamGuiEnabled((trString(prefix) + n).chars, on);
    // The bounce weight only means something to the global illumination method.
    SetParamGuiEnabled((trString(prefix) + "GISD_bounce_weight").chars, on && method == 1);
}

double trRenderGISettings::GIAbsoluteDetail() const
{
    double const d = GI_cache_detail;
    return d > 100.0 ? d - 100.0 : std::max(0.0, d);
}

double trRenderGISettings::GISampleQuality() const { return std::max(0.0, GI_sample_quality); }
double trRenderGISettings::GIBlurRadius() const { return std::max(1.0, GI_blur_radius); }
int trRenderGISettings::NumPrepassSupersamples() const { return supersample_prepass ? 9 : 1; }
double trRenderGISettings::GIPrepassPadding() const { return GI_prepass_padding; }

trString trRenderGISettings::GICacheFilenameToRead(long const *frame) const
{
    return WithFrame(GI_cache_filename_to_read.FullPath(), frame);
}

trString trRenderGISettings::GICacheFilenameToWrite(long const *frame) const
{
    return WithFrame(GI_cache_filename_to_write.FullPath(), frame);
}

trRenderGISettings::BlendMode trRenderGISettings::GICacheBlendMode() const
{
    return static_cast<BlendMode>(GI_cache_blend_mode);
}

int trRenderGISettings::GICacheBlendRange() const { return int(GI_cache_blend_range); }
bool trRenderGISettings::ShouldWriteToGICacheFile() const { return write_to_GI_cache_file != 0; }
bool trRenderGISettings::ShouldReadFromGICacheFile() const { return read_from_GI_cache_file != 0; }
bool trRenderGISettings::ShouldWriteSurfacePoints() const { return write_surface_points && write_to_GI_cache_file; }
bool trRenderGISettings::ShouldWriteVolumePoints() const { return write_volume_points && write_to_GI_cache_file; }
bool trRenderGISettings::ShouldWriteVoxels() const { return write_cloud_voxels && write_to_GI_cache_file; }

bool trRenderGISettings::ShouldDoSSAO(bool pathTraced) const
{
    return pathTraced ? PT_GI_surface_details && PT_GI_surface_details_method == 0
                      : GI_surface_details && GI_surface_details_method == 0;
}

bool trRenderGISettings::ShouldDoSSGI(bool pathTraced) const
{
    return pathTraced ? PT_GI_surface_details && PT_GI_surface_details_method == 1
                      : GI_surface_details && GI_surface_details_method == 1;
}

bool trRenderGISettings::ShouldRayTraceGISurfaceDetails(bool pathTraced) const
{
    return pathTraced ? PT_GI_surface_details && PT_GI_surface_details_method == 2
                      : GI_surface_details && GI_surface_details_method == 2;
}

double trRenderGISettings::GISDOcclusionWeight(bool pathTraced) const
{
    return pathTraced ? PT_GISD_occlusion_weight : GISD_occlusion_weight;
}

double trRenderGISettings::GISDBounceWeight(bool pathTraced) const
{
    return pathTraced ? PT_GISD_bounce_weight : GISD_bounce_weight;
}

double trRenderGISettings::GISDRadius(bool pathTraced) const { return pathTraced ? PT_GISD_radius : GISD_radius; }

bool trRenderGISettings::GISDFalloff(bool pathTraced) const
{
    return (pathTraced ? PT_GISD_falloff : GISD_falloff) != 0;
}

int trRenderGISettings::CloudGIQualityPreset() const { return int(cloud_GI_quality_preset); }
int trRenderGISettings::CloudGIMaxRayDepth() const { return int(cloud_GI_max_ray_depth); }
bool trRenderGISettings::ShouldOptimiseVoxelScattering() const { return optimise_voxel_scattering != 0; }
double trRenderGISettings::VoxelScatteringQuality() const { return voxel_scatter_quality; }

void trRenderGISettings::SetGIAbsoluteDetail(double detail) { SetParam(iCacheDetail, detail, trWhoSystem); }
void trRenderGISettings::SetGIBlurRadius(double radius) { SetParam("GI_blur_radius", radius, trWhoSystem); }
void trRenderGISettings::SetGISampleQuality(double quality) { SetParam("GI_sample_quality", quality, trWhoSystem); }

void trRenderGISettings::CopySettingsFrom(trRenderGISettings const &other)
{
    SetOrphanedContentFilePath(other.ContentFilePath());
    for (long i = 0; i < other.NumParams(); ++i) {
        char const *n = other.ParamName(i);
        // The name and the interface entries belong to the node, not to its settings.
        if (!n || !*n || other.ParamPtr(i) == &other.name || std::strncmp(n, "gui_", 4) == 0)
            continue;
        trCopyParamByName(*this, other, n);
    }
}
