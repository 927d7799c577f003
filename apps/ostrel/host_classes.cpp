#include "host_classes.h"

#include "foundation/trString.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "render/trRenderGISettings.h"
#include "render/trRenderLayer.h"
#include "render/trRenderSettings.h"

namespace {

// This host's render node: the values the settings nodes under it read from their
// parent when they are made. A host with a real render driver has many more.
class OstrelRenderNode : public trBase {
public:
    OstrelRenderNode()
    {
        auto const on = static_cast<unsigned char>(1);
        auto const off = static_cast<unsigned char>(0);
        Param(detail, "detail", 1.0);
        Param(antiAliasing, "anti-aliasing", 4L);
        Param(microvertexJittering, "microvertex_jittering", on);
        Param(detailJittering, "detail_jittering", on);
        Param(detailBlending, "detail_blending", 0.0);
        Param(displacementFilter, "displacement_filter", 1.0);
        Param(giSampleQuality, "GI_sample_quality", 2.0);
        Param(giBlurRadius, "GI_blur_radius", 8.0);
        Param(supersamplePrepass, "supersample_prepass", off);
        Param(giSurfaceDetails, "GI_surface_details", off);
        Param(giPrepassPadding, "GI_prepass_padding", 0.0);
    }

    double detail = 0;
    long antiAliasing = 0;
    unsigned char microvertexJittering = 0;
    unsigned char detailJittering = 0;
    double detailBlending = 0;
    double displacementFilter = 0;
    double giSampleQuality = 0;
    double giBlurRadius = 0;
    unsigned char supersamplePrepass = 0;
    unsigned char giSurfaceDetails = 0;
    double giPrepassPadding = 0;
};

template <class T> trBase *Create() { return new T; }
void Destroy(trBase *node) { delete node; }

} // namespace

void RegisterHostClasses()
{
    // Types are categories for a host's menus: the render node is a "render", and its
    // settings nodes sit one level below it, since they only make sense as its children.
    trClasses.AddClass("render", "render", Create<OstrelRenderNode>, Destroy, "");
    trClasses.AddClass("render/settings", "render_bucket_controls", Create<trRenderBucketControls>, Destroy, "");
    trClasses.AddClass("render/settings", "render_developer_controls", Create<trRenderDeveloperControls>, Destroy,
                       "");
    trClasses.AddClass("render/settings", "render_pixel_sampler", Create<trRenderPixelSampler>, Destroy, "");
    trClasses.AddClass("render/settings", "render_subdiv_settings", Create<trRenderSubdivSettings>, Destroy, "");
    trClasses.AddClass("render/settings", "render_GI_settings", Create<trRenderGISettings>, Destroy, "");
    // Layers say which objects, lights and elements a render takes; a render may have many.
    trClasses.AddClass("render", "render_layer", trRenderLayerCreate, trRenderLayerDestroy, "");
}
