// The element table: names as stored in files and lists, the render layer's flag
// for each, and the name shown beside it.
#include "render/trRenderElement.h"

namespace {

constexpr int kNone = trRenderElementGateNone;
constexpr int kSurfaces = trRenderElementGateSurfaces;
constexpr int kAtmosphere = trRenderElementGateAtmosphere;

constexpr trRenderElementInfo kElements[trNumNamedRenderElements] = {
    {svRgb, "svRgb", "rgb", "RGB", kNone},
    {svAlpha, "svAlpha", "alpha", "Alpha", kNone},
    {svSurfRgb, "svSurfRgb", "surface_rgb", "Surface RGB", kSurfaces},
    {svSurfAlpha, "svSurfAlpha", "surface_alpha", "Surface Alpha", kSurfaces},
    {svAtmoRgb, "svAtmoRgb", "atmosphere_rgb", "Atmosphere RGB", kAtmosphere},
    {svAtmoAlpha, "svAtmoAlpha", "atmosphere_alpha", "Atmosphere Alpha", kAtmosphere},
    {svCloudRgb, "svCloudRgb", "cloud_rgb", "Cloud RGB", kAtmosphere},
    {svCloudAlpha, "svCloudAlpha", "cloud_alpha", "Cloud Alpha", kAtmosphere},
    {svSurfDepth, "svSurfDepth", "surface_depth", "Surface Depth", kNone},
    {svSurfPos, "svSurfPos", "surface_position", "Surface Position", kNone},
    {svSurfNormal, "svSurfNormal", "surface_normal", "Surface Normal", kNone},
    {svSurf2dMotion, "svSurf2dMotion", "surface_2d_motion", "Surface 2D Motion Vector", kNone},
    {svSurfDiffCol, "svSurfDiffCol", "surface_diffuse_colour", "Surface Diffuse Colour (before lighting)",
     kSurfaces},
    {svSurfEmit, "svSurfEmit", "surface_emission", "Surface Emission (Luminosity)", kSurfaces},
    {svSurfDirect, "svSurfDirect", "surface_direct", "Surface Direct (Diff. + Spec.)", kSurfaces},
    {svSurfDirectDiff, "svSurfDirectDiff", "surface_direct_diffuse", "Surface Direct Diffuse", kSurfaces},
    {svSurfDirectSpec, "svSurfDirectSpec", "surface_direct_specular", "Surface Direct Specular", kSurfaces},
    {svSurfIndirect, "svSurfIndirect", "surface_indirect", "Surface Indirect (GI + Refl.)", kSurfaces},
    {svSurfIndirectDiff, "svSurfIndirectDiff", "surface_indirect_diffuse", "Surface Indirect Diffuse (GI)",
     kSurfaces},
    {svSurfIndirectDiffRefl, "svSurfIndirectDiffRefl", nullptr, nullptr, kNone},
    {svSurfIndirectDiffTrans, "svSurfIndirectDiffTrans", nullptr, nullptr, kNone},
    {svSurfIndirectSpec, "svSurfIndirectSpec", "surface_indirect_specular", "Surface Indirect Spec. (Refl.)",
     kSurfaces},
    {svSurfIndirectSpecRefl, "svSurfIndirectSpecRefl", nullptr, nullptr, kNone},
    {svSurfIndirectSpecTrans, "svSurfIndirectSpecTrans", nullptr, nullptr, kNone},
    {svAtmoDirect, "svAtmoDirect", "atmosphere_direct", "Atmosphere Direct", kAtmosphere},
    {svAtmoIndirect, "svAtmoIndirect", "atmosphere_indirect", "Atmosphere Indirect (GI + Amb.)", kAtmosphere},
    {svCloudDepth, "svCloudDepth", "cloud_depth", "Cloud Depth", kAtmosphere},
    {svCloudPos, "svCloudPos", "cloud_position", "Cloud Position", kAtmosphere},
    {svCloud2dMotion, "svCloud2dMotion", "cloud_2d_motion", "Cloud 2D Motion Vector", kAtmosphere},
    {svCloudDirect, "svCloudDirect", "cloud_direct", "Cloud Direct", kAtmosphere},
    {svCloudIndirect, "svCloudIndirect", "cloud_indirect", "Cloud Indirect (GI + Amb.)", kAtmosphere},
    {svSampleRate, "svSampleRate", "sample_rate", "Sample Rate", kNone},
};

} // namespace

trRenderElementInfo const *trRenderElementInfoFor(int type)
{
    if (type < 0 || type >= trNumNamedRenderElements)
        return nullptr;
    return &kElements[type];
}

char const *trRenderElementName(int type)
{
    trRenderElementInfo const *info = trRenderElementInfoFor(type);
    return info ? info->name : "";
}
