// Render layers: the element table every compositor reads, the gates of the element
// accessors, which makers a layer includes and how, the interface state that follows
// the links, bad links, copying, check/uncheck all, GI settings and a project round trip.

#include "nodes/test_trBaseSupport.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trProjectFile.h"
#include "render/trRenderElement.h"
#include "render/trRenderGISettings.h"
#include "render/trRenderImageList.h"
#include "render/trRenderLayer.h"
#include "scene/trScene.h"
#include "scene/trSceneMaker.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

class GroupNode : public trBase {
public:
    GroupNode() { DeclareTrue("is_group"); }
};
class CameraNode : public trBase {
public:
    CameraNode() { DeclareTrue("is_camera"); }
};
class ObjectMaker : public trSceneMaker {};
class LightMaker : public trSceneMaker {
public:
    LightMaker() { DeclareTrue("is_lighting_related"); }
};

template <class T> trBase *Create() { return new T; }
void Destroy(trBase *node) { delete node; }

void Register(char const *name, trClassPool::CreateFunc create)
{
    long id = -1;
    if (!trClasses.FindClassIdFromClassName(id, name))
        trClasses.AddClass("test/", name, create, Destroy, "");
}

class RenderLayerTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        Register("render_layer", trRenderLayerCreate);
        Register("render_element", trRenderLayerCreate);
        Register("render", Create<trBase>);
        Register("enviro_light", Create<LightMaker>);
        Register("layer_test_group", Create<GroupNode>);
        Register("layer_test_camera", Create<CameraNode>);
        Register("layer_test_object", Create<ObjectMaker>);
        Register("layer_test_light", Create<LightMaker>);
    }

    trRenderLayer *NewLayer(trBase &parent)
    {
        return dynamic_cast<trRenderLayer *>(trCreateObject("render_layer", &parent, 1));
    }
    trBase *NewNode(char const *className, char const *nodeName)
    {
        trBase *node = trCreateObject(className, &root, 1);
        node->SetName(nodeName);
        return node;
    }
    trSceneMaker *NewMaker(char const *className, char const *nodeName, char const *group)
    {
        auto *maker = static_cast<trSceneMaker *>(NewNode(className, nodeName));
        maker->SetParam("gui_group", trString(group), trWhoUser);
        return maker;
    }
    // Whether each named parameter is enabled in the interface, as a string of 0 and 1.
    std::string Enabled(trBase &node, std::vector<char const *> const &names)
    {
        std::string states;
        for (char const *name : names) {
            long index = 0;
            EXPECT_TRUE(node.FindParam(index, name)) << name;
            states += node.IsParamGuiEnabled(index) ? '1' : '0';
        }
        return states;
    }
    // Runs the pair and returns what the maker was given: enabled, mode, reflections, shadows.
    std::string Affect(trRenderLayer const &layer, trSceneMaker const *maker)
    {
        bool enabled = false;
        layer.BeginGroupAffectors(maker, *scene, enabled);
        trSceneGroupAffector a = scene->CurrentGroupAffector();
        layer.EndGroupAffectors(maker, *scene);
        EXPECT_TRUE(scene->CurrentGroupAffector().AllowsAll());
        return std::to_string(enabled) + " " + std::to_string(a.AllowedVisibilityMode) +
               std::to_string(a.MayBeVisibleInReflections) + std::to_string(a.MayCastShadows);
    }

    trBase root;
    std::shared_ptr<trScene> scene = std::make_shared<trScene>();
    HostCapture host;
};

// Every value parameter (from index 8) changed away from its default.
void Scramble(trRenderLayer &layer, char const *groupName)
{
    for (long i = 8; i < layer.NumParams(); ++i) {
        void *p = layer.ParamPtr(i);
        switch (layer.ParamType(i)) {
        case trParamInt: layer.SetParam(i, (*static_cast<long *>(p) + 1 + i % 2) % 3, trWhoUser); break;
        case trParamDouble: layer.SetParam(i, *static_cast<double *>(p) * 0.5 + 7.0, trWhoUser); break;
        case trParamBool:
            layer.SetParam(i, static_cast<unsigned char>(!*static_cast<unsigned char *>(p)), trWhoUser);
            break;
        case trParamFile: layer.SetParam(i, trString(groupName), trWhoUser); break;
        default: break;
        }
    }
}

void ExpectSameValues(trRenderLayer &a, trRenderLayer &b)
{
    ASSERT_EQ(a.NumParams(), b.NumParams());
    for (long i = 8; i < a.NumParams(); ++i) {
        trString x, y;
        a.GetStringFromParam(i, x, nullptr);
        b.GetStringFromParam(i, y, nullptr);
        EXPECT_EQ(Str(x), Str(y)) << a.ParamName(i);
    }
}

} // namespace

// The element table is the interface compositors and files depend on: it must read
// exactly so, and each named element has its flag on the layer, in group 1, and its accessor.
TEST_F(RenderLayerTest, ElementTableFlagsAndAccessors)
{
    // In type order.
    struct Row {
        char const *name, *param, *display;
        int gate; // 0 none, 1 surfaces, 2 atmosphere
    };
    Row const rows[] = {
        {"svRgb", "rgb", "RGB", 0}, {"svAlpha", "alpha", "Alpha", 0}, {"svSurfRgb", "surface_rgb", "Surface RGB", 1},
        {"svSurfAlpha", "surface_alpha", "Surface Alpha", 1}, {"svAtmoRgb", "atmosphere_rgb", "Atmosphere RGB", 2},
        {"svAtmoAlpha", "atmosphere_alpha", "Atmosphere Alpha", 2}, {"svCloudRgb", "cloud_rgb", "Cloud RGB", 2},
        {"svCloudAlpha", "cloud_alpha", "Cloud Alpha", 2}, {"svSurfDepth", "surface_depth", "Surface Depth", 0},
        {"svSurfPos", "surface_position", "Surface Position", 0},
        {"svSurfNormal", "surface_normal", "Surface Normal", 0},
        {"svSurf2dMotion", "surface_2d_motion", "Surface 2D Motion Vector", 0},
        {"svSurfDiffCol", "surface_diffuse_colour", "Surface Diffuse Colour (before lighting)", 1},
        {"svSurfEmit", "surface_emission", "Surface Emission (Luminosity)", 1},
        {"svSurfDirect", "surface_direct", "Surface Direct (Diff. + Spec.)", 1},
        {"svSurfDirectDiff", "surface_direct_diffuse", "Surface Direct Diffuse", 1},
        {"svSurfDirectSpec", "surface_direct_specular", "Surface Direct Specular", 1},
        {"svSurfIndirect", "surface_indirect", "Surface Indirect (GI + Refl.)", 1},
        {"svSurfIndirectDiff", "surface_indirect_diffuse", "Surface Indirect Diffuse (GI)", 1},
        {"svSurfIndirectDiffRefl", nullptr, nullptr, 0}, {"svSurfIndirectDiffTrans", nullptr, nullptr, 0},
        {"svSurfIndirectSpec", "surface_indirect_specular", "Surface Indirect Spec. (Refl.)", 1},
        {"svSurfIndirectSpecRefl", nullptr, nullptr, 0}, {"svSurfIndirectSpecTrans", nullptr, nullptr, 0},
        {"svAtmoDirect", "atmosphere_direct", "Atmosphere Direct", 2},
        {"svAtmoIndirect", "atmosphere_indirect", "Atmosphere Indirect (GI + Amb.)", 2},
        {"svCloudDepth", "cloud_depth", "Cloud Depth", 2}, {"svCloudPos", "cloud_position", "Cloud Position", 2},
        {"svCloud2dMotion", "cloud_2d_motion", "Cloud 2D Motion Vector", 2},
        {"svCloudDirect", "cloud_direct", "Cloud Direct", 2},
        {"svCloudIndirect", "cloud_indirect", "Cloud Indirect (GI + Amb.)", 2},
        {"svSampleRate", "sample_rate", "Sample Rate", 0},
    };
    ASSERT_EQ(std::size(rows), size_t(trNumNamedRenderElements));
    trRenderLayer *layer = NewLayer(root);
    trFImageList list;
    size_t flags = 0;
    auto text = [](char const *s) { return std::string(s ? s : "-"); };
    for (Row const &r : rows) {
        int const type = int(&r - rows);
        trRenderElementInfo const *info = trRenderElementInfoFor(type);
        ASSERT_NE(info, nullptr);
        list.AddImage(nullptr, trRenderElementType(type), 1.0, true, true);
        EXPECT_EQ(text(info->name) + "|" + text(list.TypeString(type)) + "|" + text(info->paramName) + "|" +
                      text(info->displayName) + "|" + std::to_string(info->gate),
                  text(r.name) + "|" + r.name + "|" + text(r.param) + "|" + text(r.display) + "|" +
                      std::to_string(r.gate));
        if (!r.param)
            continue;
        ++flags;
        long index = 0;
        ASSERT_TRUE(layer->FindParam(index, r.param)) << r.param;
        EXPECT_EQ(layer->ParamType(index), trParamBool);
        EXPECT_TRUE(layer->IsParamInParamGroup(index, trRenderLayer::kElementParamGroup));
        EXPECT_EQ(Str(layer->ParamDisplayName(index)), r.display);
        unsigned char v = 9;
        layer->GetParam(index, v);
        EXPECT_EQ(v, type == svAlpha ? 1 : 0) << r.param;
    }
    EXPECT_EQ(layer->GetParamsInParamGroup(trRenderLayer::kElementParamGroup).size(), flags);
    EXPECT_EQ(trRenderElementInfoFor(svBinnedPathTracer), nullptr);
    EXPECT_STREQ(trRenderElementName(svBinnedPathTracer), "");
    EXPECT_TRUE(layer->IsTrue("is_render_layer"));
    // Each named accessor reads its own element, through the gate of its kind.
    using L = trRenderLayer;
    struct {
        bool (L::*has)() const;
        int type;
    } const accessors[] = {
        {&L::HasRgb, svRgb}, {&L::HasAlpha, svAlpha}, {&L::HasSurfaceRgb, svSurfRgb},
        {&L::HasSurfaceAlpha, svSurfAlpha}, {&L::HasAtmosphereRgb, svAtmoRgb}, {&L::HasAtmosphereAlpha, svAtmoAlpha},
        {&L::HasCloudRgb, svCloudRgb}, {&L::HasCloudAlpha, svCloudAlpha}, {&L::HasSurfaceDepth, svSurfDepth},
        {&L::HasSurfacePosition, svSurfPos}, {&L::HasSurfaceNormal, svSurfNormal},
        {&L::HasSurface2dMotion, svSurf2dMotion}, {&L::HasSurfaceDiffuseColour, svSurfDiffCol},
        {&L::HasSurfaceEmission, svSurfEmit}, {&L::HasSurfaceDirect, svSurfDirect},
        {&L::HasSurfaceDirectDiffuse, svSurfDirectDiff}, {&L::HasSurfaceDirectSpecular, svSurfDirectSpec},
        {&L::HasSurfaceIndirect, svSurfIndirect}, {&L::HasSurfaceIndirectDiffuse, svSurfIndirectDiff},
        {&L::HasSurfaceIndirectSpecular, svSurfIndirectSpec}, {&L::HasAtmosphereDirect, svAtmoDirect},
        {&L::HasAtmosphereIndirect, svAtmoIndirect}, {&L::HasCloudDepth, svCloudDepth},
        {&L::HasCloudPosition, svCloudPos}, {&L::HasCloud2dMotion, svCloud2dMotion},
        {&L::HasCloudDirect, svCloudDirect}, {&L::HasCloudIndirect, svCloudIndirect},
        {&L::HasSampleRate, svSampleRate},
    };
    // One flag on at a time, so an accessor wired to another element shows.
    for (auto const &a : accessors) {
        layer->UncheckAllRenderElements();
        layer->SetParam(trRenderElementInfoFor(a.type)->paramName, static_cast<unsigned char>(1), trWhoUser);
        for (auto const &b : accessors)
            EXPECT_EQ((layer->*b.has)(), b.type == a.type) << trRenderElementName(a.type) << " read by "
                                                           << trRenderElementName(b.type);
    }
    layer->CheckAllRenderElements();
    layer->SetParam("allow_surfaces_visible", static_cast<unsigned char>(0), trWhoUser);
    EXPECT_TRUE(!layer->HasSurfaceRgb() && layer->HasSurfaceDepth() && layer->HasCloudRgb());
    layer->SetParam("allow_atmosphere_visible", static_cast<unsigned char>(0), trWhoUser);
    for (auto const &a : accessors)
        EXPECT_EQ((layer->*a.has)(), trRenderElementInfoFor(a.type)->gate == trRenderElementGateNone)
            << trRenderElementName(a.type);
}

TEST_F(RenderLayerTest, ObjectAndLightGroupsDecideInclusionAndAffector)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "Rocks");
    NewNode("layer_test_group", "Trees");
    trSceneMaker *rock = NewMaker("layer_test_object", "Rock", "Rocks");
    trSceneMaker *tree = NewMaker("layer_test_object", "Tree", "Trees");
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");

    auto objects = [&] { return Affect(*layer, rock) + ", " + Affect(*layer, tree) + ", " + Affect(*layer, loose); };
    EXPECT_EQ(objects(), "1 211, 1 211, 1 211");  // no group set: every maker is in, fully visible

    layer->SetParam("object_group_2", trString("Rocks"), trWhoUser);
    layer->SetParam("visibility_2", 1L, trWhoUser);
    layer->SetParam("cast_shadows_and_other_rays_2", static_cast<unsigned char>(0), trWhoUser);
    // A later slot for the same group doesn't count: the first match wins.
    layer->SetParam("object_group_4", trString("Rocks"), trWhoUser);
    layer->SetParam("object_group_5", trString("Trees"), trWhoUser);
    layer->SetParam("visibility_5", 0L, trWhoUser);
    // Trees are invisible but still cast shadows: included. By default, once any group
    // is set, all others drop out.
    EXPECT_EQ(objects(), "1 100, 1 011, 0 000");
    layer->SetParam("excluded_cast_shadows_and_other_rays", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_EQ(Affect(*layer, loose), "1 011");
    layer->SetParam("excluded_visibility", 2L, trWhoUser);
    EXPECT_EQ(Affect(*layer, loose), "1 211");
    // A visibility outside the menu, as a file may hold, is taken as the nearest mode.
    layer->SetParam("visibility_2", 7L, trWhoUser);
    EXPECT_EQ(Affect(*layer, rock), "1 200");
    // Lights ignore object groups, and go by the light groups.
    NewNode("layer_test_group", "Key lights");
    trSceneMaker *key = NewMaker("layer_test_light", "Key", "Key lights");
    trSceneMaker *fill = NewMaker("layer_test_light", "Fill", "");
    trSceneMaker *sky = NewMaker("enviro_light", "Sky", "");
    auto lights = [&] { return Affect(*layer, key) + ", " + Affect(*layer, fill) + ", " + Affect(*layer, sky); };
    EXPECT_EQ(lights(), "1 211, 1 211, 1 211");
    layer->SetParam("light_group_3", trString("Key lights"), trWhoUser);
    EXPECT_EQ(lights(), "1 211, 0 211, 0 211");
    layer->SetParam("always_include_enviro_lights", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_EQ(lights(), "1 211, 0 211, 1 211");
}

TEST_F(RenderLayerTest, InterfaceStateFollowsLinksAndBadLinksSelectNothing)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "G");
    std::vector<char const *> const names = {"visibility_3", "cast_shadows_and_other_rays_3", "visibility_2",
                                             "excluded_visibility", "excluded_cast_shadows_and_other_rays",
                                             "always_include_enviro_lights", "GI_settings_button"};
    EXPECT_EQ(Enabled(*layer, names), "0000000");
    layer->SetParam("object_group_3", trString("G"), trWhoUser);
    EXPECT_EQ(Enabled(*layer, names), "1101100");
    layer->SetParam("light_group_1", trString("G"), trWhoUser);
    EXPECT_EQ(Enabled(*layer, names), "1101110");
    layer->SetParam("override_GI_settings", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_EQ(Enabled(*layer, names), "1101111");
    layer->SetParam("object_group_3", trString(""), trWhoUser);
    layer->SetParam("light_group_1", trString(""), trWhoUser);
    layer->SetParam("override_GI_settings", static_cast<unsigned char>(0), trWhoUser);
    EXPECT_EQ(Enabled(*layer, names), "0000000");

    // Bad links warn and select nothing.
    NewNode("layer_test_camera", "Cam");
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");
    layer->SetParam("object_group_1", trString("Nowhere"), trWhoUser);
    layer->SetParam("light_group_2", trString("Cam"), trWhoUser);
    ASSERT_EQ(host.warnings.size(), 2u);
    EXPECT_NE(host.warnings[0].find("object_group_1 names \"Nowhere\""), std::string::npos) << host.warnings[0];
    EXPECT_NE(host.warnings[1].find("Wrong type of node"), std::string::npos) << host.warnings[1];
    EXPECT_FALSE(layer->LinkedNode("object_group_1") || layer->LinkedNode("light_group_2"));
    // Neither link selects anything: the layer acts as if both were empty.
    EXPECT_EQ(Affect(*layer, loose), "1 211");
    EXPECT_EQ(Enabled(*layer, {"visibility_1"}), "0");
    // A null maker is refused with a message, not followed.
    bool enabled = true;
    layer->BeginGroupAffectors(nullptr, *scene, enabled);
    layer->EndGroupAffectors(nullptr, *scene);
    EXPECT_FALSE(enabled);
    EXPECT_EQ(host.errors.size(), 1u);
}

TEST_F(RenderLayerTest, CheckAndUncheckAllTouchOnlyElements)
{
    trRenderLayer *layer = NewLayer(root);
    layer->SetParam("allow_shadows", static_cast<unsigned char>(0), trWhoUser);
    auto countOn = [&] {
        int n = 0;
        for (long i : layer->GetParamsInParamGroup(trRenderLayer::kElementParamGroup))
            n += *static_cast<unsigned char *>(layer->ParamPtr(i));
        return n;
    };
    auto click = [&](char const *button) {
        long index = 0;
        void *widget = nullptr;
        ASSERT_TRUE(layer->FindParam(index, button));
        layer->GetWidget(index, &widget, nullptr);
        static_cast<trGuiPushButton *>(widget)->OnClick();
    };
    EXPECT_EQ(countOn(), 1);
    click("render_elements_check_all_button");
    EXPECT_EQ(countOn(), 28);
    click("render_elements_uncheck_all_button");
    EXPECT_EQ(countOn(), 0);
    EXPECT_FALSE(layer->AllowsShadows());
    EXPECT_TRUE(layer->AllowsSurfacesVisible());
}

TEST_F(RenderLayerTest, GISettingsChildIsFoundOrMadeAndTheElementNodeIsOneOfAKind)
{
    trRenderLayer *layer = NewLayer(root);
    long id = -1;
    if (!trClasses.FindClassIdFromClassName(id, "render_GI_settings")) {
        EXPECT_EQ(layer->GetGISettings(), nullptr);
        EXPECT_EQ(host.warnings, std::vector<std::string>{"CreateObject: Unrecognised class: render_GI_settings"});
        EXPECT_EQ(layer->NumChildren(), 0);
        Register("render_GI_settings", Create<trRenderGISettings>);
    }
    trRenderGISettings *gi = layer->GetGISettings();
    ASSERT_NE(gi, nullptr);
    EXPECT_EQ(gi->Parent(), layer);
    EXPECT_EQ(layer->OpenGISettings(), gi);
    EXPECT_EQ(layer->NumChildren(), 1);
    // Of the layer's classes only the element node is one of a kind under a render.
    host.warnings.clear();
    trBase *render = NewNode("render", "Render 1");
    NewLayer(*render);
    NewLayer(*render);
    trCreateObject("render_element", render, 1);
    EXPECT_TRUE(host.warnings.empty());
    trCreateObject("render_element", render, 1);
    EXPECT_EQ(host.warnings,
              std::vector<std::string>{"Render 1: Only one \"render_element\" node can be used per render node."});
}

TEST_F(RenderLayerTest, CopiesAndProjectRoundTripsKeepEveryValue)
{
    trRenderLayer *layer = NewLayer(root);
    trBase *group = NewNode("layer_test_group", "G");
    Scramble(*layer, "G");
    trString const text = trBaseXML::GetElement(root, true, "", "proj");

    trRenderLayer *copy = NewLayer(root);
    copy->CopySettingsFrom(*layer);
    ExpectSameValues(*layer, *copy);
    EXPECT_EQ(copy->LinkedNode("light_group_5"), group);
    EXPECT_DOUBLE_EQ(copy->FarClip(), 0.5e16 + 7.0);
    // The copy behaves the same, not just reads the same.
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");
    EXPECT_EQ(Affect(*layer, loose), Affect(*copy, loose));

    trBase loaded;
    ASSERT_TRUE(trBaseXML::ReadBuffer(loaded, text.chars, "proj"));
    trRenderLayer *back = dynamic_cast<trRenderLayer *>(loaded.Child(trString(layer->Name())));
    ASSERT_NE(back, nullptr);
    ExpectSameValues(*layer, *back);
    EXPECT_EQ(back->LinkedNode("object_group_1"), loaded.Child(trString("G")));
    EXPECT_EQ(Enabled(*back, {"visibility_1"}), "1");  // the interface state follows the loaded links
    EXPECT_TRUE(host.warnings.empty());
}
