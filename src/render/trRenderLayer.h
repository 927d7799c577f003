#pragma once
// trRenderLayer: the settings node that says which objects and lights take part in a
// render, in which way, and which element images are wanted. Scene building asks it,
// maker by maker, through BeginGroupAffectors / EndGroupAffectors; a host asks the
// Has... accessors which elements to add to a target's image list.

#include "nodes/trBase.h"
#include "nodes/trGuiPushButton.h"
#include "render/trRenderElement.h"

class trScene;
class trSceneMaker;
class trRenderLayer;
class trRenderLayerPrivate;
class trRenderGISettings;

// The three buttons of a layer; each acts on the layer that declared it.
class trRenderLayer_CheckAllRenderElementsButton : public trGuiPushButton {
public:
    trRenderLayer_CheckAllRenderElementsButton();
    void OnClick() override;
};

class trRenderLayer_UncheckAllRenderElementsButton : public trGuiPushButton {
public:
    trRenderLayer_UncheckAllRenderElementsButton();
    void OnClick() override;
};

class trRenderLayer_GISettingsButton : public trGuiPushButton {
public:
    trRenderLayer_GISettingsButton();
    void OnClick() override;
};

class trRenderLayer : public trBase {
public:
    static constexpr int kNumGroups = 5;
    // Parameter group of the element flags.
    static constexpr int kElementParamGroup = 1;

    trRenderLayer();
    ~trRenderLayer() override;

    long OnCreate() override;
    void OnParamChanged(long index, trBase *who) override;

    // Copies the content path, then every parameter by name: links, visibilities,
    // shadow flags, light groups, clip distances, allow flags, element flags. Links are
    // copied as text and resolve from this node's place: a copy made for a render should
    // be created with the original's parent (addToParent 0) so that they reach the same groups.
    void CopySettingsFrom(trRenderLayer const &other);

    // Keep the interface state of the dependent parameters in step with the links.
    // The argument points at the index (long) of the parameter that changed; null
    // re-evaluates everything. 1 if the parameter concerned the handler.
    long HandleParamChangeForObjects(void *changedIndex);
    long HandleParamChangeForLighting(void *changedIndex);

    // Decides whether a maker takes part and sets the scene's current group affector
    // for what it adds. Pair every call with EndGroupAffectors.
    void BeginGroupAffectors(trSceneMaker const *maker, trScene &scene, bool &enabled) const;
    void EndGroupAffectors(trSceneMaker const *maker, trScene &scene) const;

    // The layer's own GI settings: the first child of class "render_GI_settings", or a
    // new one created as a child. Null when the host hasn't registered that class.
    trRenderGISettings *GetGISettings();
    // Makes sure the GI settings node exists and returns it for the host to show.
    trRenderGISettings *OpenGISettings();

    // Every boolean of the element group set to true, or to false.
    void CheckAllRenderElements();
    void UncheckAllRenderElements();

    // ---- Elements ----
    // Whether the element is wanted: its flag, through the gate of its kind (surface
    // elements need allow_surfaces_visible, atmosphere and cloud elements need
    // allow_atmosphere_visible). False for an element without a flag.
    bool HasElement(int type) const;
    bool HasRgb() const { return HasElement(svRgb); }
    bool HasAlpha() const { return HasElement(svAlpha); }
    bool HasSurfaceRgb() const { return HasElement(svSurfRgb); }
    bool HasSurfaceAlpha() const { return HasElement(svSurfAlpha); }
    bool HasAtmosphereRgb() const { return HasElement(svAtmoRgb); }
    bool HasAtmosphereAlpha() const { return HasElement(svAtmoAlpha); }
    bool HasCloudRgb() const { return HasElement(svCloudRgb); }
    bool HasCloudAlpha() const { return HasElement(svCloudAlpha); }
    bool HasSurfaceDepth() const { return HasElement(svSurfDepth); }
    bool HasSurfacePosition() const { return HasElement(svSurfPos); }
    bool HasSurfaceNormal() const { return HasElement(svSurfNormal); }
    bool HasSurface2dMotion() const { return HasElement(svSurf2dMotion); }
    bool HasSurfaceDiffuseColour() const { return HasElement(svSurfDiffCol); }
    bool HasSurfaceEmission() const { return HasElement(svSurfEmit); }
    bool HasSurfaceDirect() const { return HasElement(svSurfDirect); }
    bool HasSurfaceDirectDiffuse() const { return HasElement(svSurfDirectDiff); }
    bool HasSurfaceDirectSpecular() const { return HasElement(svSurfDirectSpec); }
    bool HasSurfaceIndirect() const { return HasElement(svSurfIndirect); }
    bool HasSurfaceIndirectDiffuse() const { return HasElement(svSurfIndirectDiff); }
    bool HasSurfaceIndirectSpecular() const { return HasElement(svSurfIndirectSpec); }
    bool HasAtmosphereDirect() const { return HasElement(svAtmoDirect); }
    bool HasAtmosphereIndirect() const { return HasElement(svAtmoIndirect); }
    bool HasCloudDepth() const { return HasElement(svCloudDepth); }
    bool HasCloudPosition() const { return HasElement(svCloudPos); }
    bool HasCloud2dMotion() const { return HasElement(svCloud2dMotion); }
    bool HasCloudDirect() const { return HasElement(svCloudDirect); }
    bool HasCloudIndirect() const { return HasElement(svCloudIndirect); }
    bool HasSampleRate() const { return HasElement(svSampleRate); }

    // ---- Settings ----
    double NearClip() const;
    void SetNearClip(double distance);
    double FarClip() const;
    void SetFarClip(double distance);
    bool AllowsAtmosphereOnBackground() const;
    bool AllowsSurfacesVisible() const;
    bool AllowsAtmosphereVisible() const;
    bool AllowsShadows() const;
    bool AllowsLighting() const { return true; }
    bool ShouldForceFlatLighting() const { return false; }
    bool ShouldOverrideGISettings() const;

private:
    trRenderLayerPrivate *d;
};

// Create and destroy functions for registering the class (as "render_layer").
trBase *trRenderLayerCreate();
void trRenderLayerDestroy(trBase *node);
