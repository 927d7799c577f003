#include "render/trRenderLayer.h"

#include "foundation/trMessages.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trParamHint.h"
#include "render/trRenderGISettings.h"
#include "render/trRenderSettings.h"
#include "scene/trScene.h"
#include "scene/trSceneMaker.h"

namespace {

char const *const kObjectGroupNames[trRenderLayer::kNumGroups] = {
    "object_group_1", "object_group_2", "object_group_3", "object_group_4", "object_group_5"};
char const *const kVisibilityNames[trRenderLayer::kNumGroups] = {"visibility_1", "visibility_2", "visibility_3",
                                                                  "visibility_4", "visibility_5"};
char const *const kCastShadowsNames[trRenderLayer::kNumGroups] = {
    "cast_shadows_and_other_rays_1", "cast_shadows_and_other_rays_2", "cast_shadows_and_other_rays_3",
    "cast_shadows_and_other_rays_4", "cast_shadows_and_other_rays_5"};
char const *const kLightGroupNames[trRenderLayer::kNumGroups] = {
    "light_group_1", "light_group_2", "light_group_3", "light_group_4", "light_group_5"};

char const *const kGISettingsClass = "render_GI_settings";
char const *const kGISettingsButton = "GI_settings_button";

// Hints are shared by every layer and outlive them all.
struct LayerHints {
    trIntHint visibilityMenu;
    trDoubleHint clipRange;
    trStringHint sectionStyle;

    LayerHints()
    {
        visibilityMenu.SetMenuItemTextAndValue(0, "Invisible", trSceneVisibilityInvisible);
        visibilityMenu.SetMenuItemTextAndValue(1, "Holdout", trSceneVisibilityHoldout);
        visibilityMenu.SetMenuItemTextAndValue(2, "Visible", trSceneVisibilityVisible);
        clipRange.SetRange(0.0, 1e16);
        clipRange.SetFocus(0.0, 8.0);
        // Section headings are fixed text: shown, never saved.
        sectionStyle.SetStyleFlags(trStringHint::StyleReadOnly);
    }
};

LayerHints &Hints()
{
    static LayerHints hints;
    return hints;
}

// The headings the element flags stand under: the images a compositor layers, the
// split of those into light components, and the passes that carry data, not colour.
enum ElementSection { kSectionImages = 0, kSectionLighting = 1, kSectionData = 2, kNumSections = 3 };

struct SectionInfo {
    char const *paramName;
    char const *title;
};

constexpr SectionInfo kSections[kNumSections] = {
    {"render_elements_section", "Render Elements / Extra Output Images"},
    {"lighting_section", "Lighting"},
    {"data_section", "Data"},
};

ElementSection SectionOf(int type)
{
    switch (type) {
    case svRgb:
    case svAlpha:
    case svSurfRgb:
    case svSurfAlpha:
    case svAtmoRgb:
    case svAtmoAlpha:
    case svCloudRgb:
    case svCloudAlpha:
        return kSectionImages;
    case svSurfDepth:
    case svSurfPos:
    case svSurfNormal:
    case svSurf2dMotion:
    case svCloudDepth:
    case svCloudPos:
    case svCloud2dMotion:
    case svSampleRate:
        return kSectionData;
    default:
        return kSectionLighting;
    }
}

// A group link counts as set only when it reaches a node: a name that resolves to
// nothing selects nothing, so the layer behaves as if the slot were empty.
bool IsSet(trFile const &link)
{
    return link.LinkedNode(true) != nullptr;
}

trSceneVisibilityMode ToVisibilityMode(long v)
{
    // Files may hold any integer; the menu has three values.
    if (v <= trSceneVisibilityInvisible)
        return trSceneVisibilityInvisible;
    if (v >= trSceneVisibilityVisible)
        return trSceneVisibilityVisible;
    return trSceneVisibilityHoldout;
}

} // namespace

class trRenderLayerPrivate {
public:
    trGroupLink objectGroups[trRenderLayer::kNumGroups];
    long visibility[trRenderLayer::kNumGroups] = {};
    unsigned char castShadows[trRenderLayer::kNumGroups] = {};
    long excludedVisibility = 0;
    unsigned char excludedCastShadows = 0;
    trGroupLink lightGroups[trRenderLayer::kNumGroups];
    unsigned char alwaysIncludeEnviroLights = 0;
    double nearClip = 0.0;
    double farClip = 1e16;
    unsigned char atmosphereOnBackground = 1;
    unsigned char allowSurfacesVisible = 1;
    unsigned char allowAtmosphereVisible = 1;
    unsigned char allowShadows = 1;
    unsigned char overrideGISettings = 0;
    unsigned char elements[trNumNamedRenderElements] = {};
    trString sections[kNumSections];

    trRenderLayer_CheckAllRenderElementsButton checkAllButton;
    trRenderLayer_UncheckAllRenderElementsButton uncheckAllButton;
    trRenderLayer_GISettingsButton giSettingsButton;

    // Indices of the parameters the change handlers look at.
    long objectGroupIndex[trRenderLayer::kNumGroups] = {};
    long visibilityIndex[trRenderLayer::kNumGroups] = {};
    long castShadowsIndex[trRenderLayer::kNumGroups] = {};
    long lightGroupIndex[trRenderLayer::kNumGroups] = {};
    long excludedVisibilityIndex = -1;
    long excludedCastShadowsIndex = -1;
    long alwaysIncludeEnviroLightsIndex = -1;
    long overrideGISettingsIndex = -1;
    long giSettingsButtonIndex = -1;
};

// ---------------------------------------------------------------------------------
// Buttons

trRenderLayer_CheckAllRenderElementsButton::trRenderLayer_CheckAllRenderElementsButton()
    : trGuiPushButton(trString("Check All"))
{
}

void trRenderLayer_CheckAllRenderElementsButton::OnClick()
{
    if (trRenderLayer *layer = dynamic_cast<trRenderLayer *>(owner))
        layer->CheckAllRenderElements();
}

trRenderLayer_UncheckAllRenderElementsButton::trRenderLayer_UncheckAllRenderElementsButton()
    : trGuiPushButton(trString("Uncheck All"))
{
}

void trRenderLayer_UncheckAllRenderElementsButton::OnClick()
{
    if (trRenderLayer *layer = dynamic_cast<trRenderLayer *>(owner))
        layer->UncheckAllRenderElements();
}

trRenderLayer_GISettingsButton::trRenderLayer_GISettingsButton() : trGuiPushButton(trString("GI Settings...")) {}

void trRenderLayer_GISettingsButton::OnClick()
{
    if (trRenderLayer *layer = dynamic_cast<trRenderLayer *>(owner))
        layer->OpenGISettings();
}

// ---------------------------------------------------------------------------------
// Declaration

trRenderLayer::trRenderLayer() : d(new trRenderLayerPrivate)
{
    LayerHints &h = Hints();
    trString const castShadowsText("Cast shadows and other rays");

    GuiTab("Objects", "objects_tab");
    for (int i = 0; i < kNumGroups; ++i)
        d->objectGroupIndex[i] = Param(d->objectGroups[i], kObjectGroupNames[i], trString());
    for (int i = 0; i < kNumGroups; ++i) {
        d->visibilityIndex[i] = Param(d->visibility[i], kVisibilityNames[i], long(trSceneVisibilityVisible),
                                      &h.visibilityMenu);
        SetParamDisplayName(d->visibilityIndex[i], "Render");
    }
    for (int i = 0; i < kNumGroups; ++i) {
        d->castShadowsIndex[i] = Param(d->castShadows[i], kCastShadowsNames[i], static_cast<unsigned char>(1));
        SetParamDisplayName(d->castShadowsIndex[i], castShadowsText);
    }
    // The row for every object in none of the groups.
    d->excludedVisibilityIndex =
        Param(d->excludedVisibility, "excluded_visibility", long(trSceneVisibilityInvisible), &h.visibilityMenu);
    SetParamDisplayName(d->excludedVisibilityIndex, "All other objects");
    d->excludedCastShadowsIndex =
        Param(d->excludedCastShadows, "excluded_cast_shadows_and_other_rays", static_cast<unsigned char>(0));
    SetParamDisplayName(d->excludedCastShadowsIndex, castShadowsText);

    GuiTab("Lights", "lights_tab");
    for (int i = 0; i < kNumGroups; ++i)
        d->lightGroupIndex[i] = Param(d->lightGroups[i], kLightGroupNames[i], trString());
    d->alwaysIncludeEnviroLightsIndex =
        Param(d->alwaysIncludeEnviroLights, "always_include_enviro_lights", static_cast<unsigned char>(0));

    // Clipping, what may be seen, GI and the elements share one tab.
    GuiTab("Settings", "settings_tab");
    Param(d->nearClip, "near_clipping_distance", 0.0, &h.clipRange);
    Param(d->farClip, "far_clipping_distance", 1e16, &h.clipRange);
    long index = Param(d->atmosphereOnBackground, "atmosphere_on_background", static_cast<unsigned char>(1));
    SetParamDisplayName(index, "Atmo/cloud on background - for background or full scene renders");
    index = Param(d->allowSurfacesVisible, "allow_surfaces_visible", static_cast<unsigned char>(1));
    SetParamDisplayName(index, "Allow surfaces to be visible");
    index = Param(d->allowAtmosphereVisible, "allow_atmosphere_visible", static_cast<unsigned char>(1));
    SetParamDisplayName(index, "Allow atmo/cloud to be visible");
    Param(d->allowShadows, "allow_shadows", static_cast<unsigned char>(1));
    d->overrideGISettingsIndex =
        Param(d->overrideGISettings, "override_GI_settings", static_cast<unsigned char>(0));
    d->giSettingsButtonIndex = NumParams();
    PushButton(d->giSettingsButton, kGISettingsButton);

    PushButton(d->checkAllButton, "render_elements_check_all_button");
    PushButton(d->uncheckAllButton, "render_elements_uncheck_all_button");

    // The element flags, generated from the element table, section by section. The
    // headings stay outside the group, which holds the flags only.
    for (int s = 0; s < kNumSections; ++s) {
        Gui(trGuiStaticText);
        index = Param(d->sections[s], kSections[s].paramName, trString(kSections[s].title), &h.sectionStyle);
        SetParamDisplayName(index, kSections[s].title);
        ParamGroupStart(kElementParamGroup);
        for (int t = 0; t < trNumNamedRenderElements; ++t) {
            trRenderElementInfo const *info = trRenderElementInfoFor(t);
            if (!info->paramName || SectionOf(t) != s)
                continue;
            index = Param(d->elements[t], info->paramName, static_cast<unsigned char>(t == svAlpha ? 1 : 0));
            SetParamDisplayName(index, info->displayName);
        }
        ParamGroupEnd();
    }

    DeclareTrue("is_render_layer");

    // With no links yet, the per-group and "all other" settings have nothing to act on.
    HandleParamChangeForObjects(nullptr);
    HandleParamChangeForLighting(nullptr);
    SetParamGuiEnabled(d->giSettingsButtonIndex, d->overrideGISettings != 0);
}

trRenderLayer::~trRenderLayer()
{
    delete d;
}

// ---------------------------------------------------------------------------------
// Lifecycle and changes

long trRenderLayer::OnCreate()
{
    long result = trBase::OnCreate();
    // Layers may be many; only the render's element node is one of a kind.
    if (RegisteredClassName() == "render_element")
        trWarnIfNotOnlySettingsNode(this);
    return result;
}

void trRenderLayer::OnParamChanged(long index, trBase *who)
{
    // A name typed by hand that reaches no node would silently select nothing. Loads
    // (trWhoSystem) are quiet: their targets may not exist yet.
    if (who != trWhoSystem) {
        for (int i = 0; i < kNumGroups; ++i) {
            trFile const *link = nullptr;
            if (index == d->objectGroupIndex[i])
                link = &d->objectGroups[i];
            else if (index == d->lightGroupIndex[i])
                link = &d->lightGroups[i];
            if (!link)
                continue;
            trString const &text = link->FileStringR();
            if (text.Length() > 0 && !link->LinkedNode(true) && !NodeByPath(text))
                trWarning(trString("RenderLayer: ") + NameAndPath() + ": " + ParamName(index) + " names \"" + text +
                          "\", but there is no such node; the group selects nothing until it exists.");
        }
    }
    HandleParamChangeForObjects(&index);
    HandleParamChangeForLighting(&index);
    if (index == d->overrideGISettingsIndex)
        SetParamGuiEnabled(d->giSettingsButtonIndex, d->overrideGISettings != 0);
    trBase::OnParamChanged(index, who);
}

long trRenderLayer::HandleParamChangeForObjects(void *changedIndex)
{
    long const *changed = static_cast<long const *>(changedIndex);
    bool concerned = !changed;
    for (int i = 0; i < kNumGroups; ++i) {
        if (!changed || *changed == d->objectGroupIndex[i]) {
            bool set = IsSet(d->objectGroups[i]);
            SetParamGuiEnabled(d->visibilityIndex[i], set);
            SetParamGuiEnabled(d->castShadowsIndex[i], set);
            concerned = true;
        } else if (*changed == d->visibilityIndex[i] || *changed == d->castShadowsIndex[i]) {
            concerned = true;
        }
    }
    if (!concerned)
        return 0;
    bool anySet = false;
    for (int i = 0; i < kNumGroups; ++i)
        anySet = anySet || IsSet(d->objectGroups[i]);
    SetParamGuiEnabled(d->excludedVisibilityIndex, anySet);
    SetParamGuiEnabled(d->excludedCastShadowsIndex, anySet);
    return 1;
}

long trRenderLayer::HandleParamChangeForLighting(void *changedIndex)
{
    long const *changed = static_cast<long const *>(changedIndex);
    bool concerned = !changed;
    for (int i = 0; i < kNumGroups && !concerned; ++i)
        concerned = *changed == d->lightGroupIndex[i] || *changed == d->alwaysIncludeEnviroLightsIndex;
    if (!concerned)
        return 0;
    bool anySet = false;
    for (int i = 0; i < kNumGroups; ++i)
        anySet = anySet || IsSet(d->lightGroups[i]);
    SetParamGuiEnabled(d->alwaysIncludeEnviroLightsIndex, anySet);
    return 1;
}

void trRenderLayer::CopySettingsFrom(trRenderLayer const &other)
{
    if (&other == this)
        return;
    SetOrphanedContentFilePath(other.ContentFilePath());
    // Every value parameter of the class, in table order, by name. Entries 0 to 7 (the
    // name and the interface placement) belong to the node, not to its settings.
    for (long i = 8; i < NumParams(); ++i) {
        char const *paramName = ParamName(i);
        long from = 0;
        if (!paramName || !other.FindParam(from, paramName))
            continue;
        switch (ParamType(i)) {
        case trParamInt: {
            long v = 0;
            if (other.GetParam(from, v))
                SetParam(i, v, trWhoSystem);
            break;
        }
        case trParamDouble: {
            double v = 0.0;
            if (other.GetParam(from, v))
                SetParam(i, v, trWhoSystem);
            break;
        }
        case trParamBool: {
            unsigned char v = 0;
            if (other.GetParam(from, v))
                SetParam(i, v, trWhoSystem);
            break;
        }
        case trParamFile: {
            trString v;
            if (other.GetParam(from, v))
                SetParam(i, v, trWhoSystem);
            break;
        }
        default: // headings and widgets carry no settings
            break;
        }
    }
}

// ---------------------------------------------------------------------------------
// Scene building

void trRenderLayer::BeginGroupAffectors(trSceneMaker const *maker, trScene &scene, bool &enabled) const
{
    if (!maker) {
        trError("BeginGroupAffectors: no scene maker given");
        scene.BeginGroupAffectors(trSceneVisibilityVisible, true, true);
        enabled = false;
        return;
    }
    trBase const *group = maker->GuiGroupNode();

    if (maker->IsTrue("is_lighting_related")) {
        scene.BeginGroupAffectors(trSceneVisibilityVisible, true, true);
        bool anySet = false;
        bool inGroup = false;
        for (int i = 0; i < kNumGroups; ++i) {
            trBase const *node = d->lightGroups[i].LinkedNode(true);
            anySet = anySet || node;
            inGroup = inGroup || (node && node == group);
        }
        enabled = !anySet || inGroup;
        if (d->alwaysIncludeEnviroLights && maker->RegisteredClassName() == "enviro_light")
            enabled = true;
        return;
    }

    int g = 0;
    bool anySet = false;
    for (int i = 0; i < kNumGroups; ++i) {
        trBase const *node = d->objectGroups[i].LinkedNode(true);
        anySet = anySet || node;
        if (g == 0 && node && node == group)
            g = i + 1;
    }
    if (!anySet) {
        scene.BeginGroupAffectors(trSceneVisibilityVisible, true, true);
        enabled = true;
        return;
    }
    long v = g == 0 ? d->excludedVisibility : d->visibility[g - 1];
    bool s = (g == 0 ? d->excludedCastShadows : d->castShadows[g - 1]) != 0;
    scene.BeginGroupAffectors(ToVisibilityMode(v), s, s);
    enabled = v >= 1 || s;
}

void trRenderLayer::EndGroupAffectors(trSceneMaker const *, trScene &scene) const
{
    scene.EndGroupAffectors();
}

// ---------------------------------------------------------------------------------
// GI settings and elements

trRenderGISettings *trRenderLayer::GetGISettings()
{
    for (long i = 0; i < NumChildren(); ++i) {
        trBase *child = Child(i);
        if (child && child->RegisteredClassName() == kGISettingsClass)
            return dynamic_cast<trRenderGISettings *>(child);
    }
    // The pool warns and gives null when the host hasn't registered the class.
    return dynamic_cast<trRenderGISettings *>(trCreateObject(kGISettingsClass, this, 1));
}

trRenderGISettings *trRenderLayer::OpenGISettings()
{
    // The library draws nothing: the host opens the node handed back (a new child also
    // reaches it through the tree's change traffic).
    return GetGISettings();
}

void trRenderLayer::CheckAllRenderElements()
{
    for (long index : GetParamsInParamGroup(kElementParamGroup))
        if (ParamType(index) == trParamBool)
            SetParam(index, static_cast<unsigned char>(1), trWhoUserIndirect);
}

void trRenderLayer::UncheckAllRenderElements()
{
    for (long index : GetParamsInParamGroup(kElementParamGroup))
        if (ParamType(index) == trParamBool)
            SetParam(index, static_cast<unsigned char>(0), trWhoUserIndirect);
}

bool trRenderLayer::HasElement(int type) const
{
    trRenderElementInfo const *info = trRenderElementInfoFor(type);
    if (!info || !info->paramName || !d->elements[type])
        return false;
    switch (info->gate) {
    case trRenderElementGateSurfaces:
        return d->allowSurfacesVisible != 0;
    case trRenderElementGateAtmosphere:
        return d->allowAtmosphereVisible != 0;
    default:
        return true;
    }
}

// ---------------------------------------------------------------------------------
// Settings

double trRenderLayer::NearClip() const
{
    return d->nearClip;
}

void trRenderLayer::SetNearClip(double distance)
{
    SetParam("near_clipping_distance", distance, trWhoSystem);
}

double trRenderLayer::FarClip() const
{
    return d->farClip;
}

void trRenderLayer::SetFarClip(double distance)
{
    SetParam("far_clipping_distance", distance, trWhoSystem);
}

bool trRenderLayer::AllowsAtmosphereOnBackground() const
{
    return d->atmosphereOnBackground != 0;
}

bool trRenderLayer::AllowsSurfacesVisible() const
{
    return d->allowSurfacesVisible != 0;
}

bool trRenderLayer::AllowsAtmosphereVisible() const
{
    return d->allowAtmosphereVisible != 0;
}

bool trRenderLayer::AllowsShadows() const
{
    return d->allowShadows != 0;
}

bool trRenderLayer::ShouldOverrideGISettings() const
{
    return d->overrideGISettings != 0;
}

trBase *trRenderLayerCreate()
{
    return new trRenderLayer;
}

void trRenderLayerDestroy(trBase *node)
{
    delete node;
}
