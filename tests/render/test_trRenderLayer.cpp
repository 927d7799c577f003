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
// exactly so, and each named element has its flag on the layer, in group 1.
TEST_F(RenderLayerTest, ElementTableAndFlags)
{
    struct Row {
        int type;
        char const *name, *param, *display;
        int gate; // 0 none, 1 surfaces, 2 atmosphere
    };
    Row const rows[] = {
        {0, "svRgb", "rgb", "RGB", 0},
        {1, "svAlpha", "alpha", "Alpha", 0},
        {2, "svSurfRgb", "surface_rgb", "Surface RGB", 1},
        {3, "svSurfAlpha", "surface_alpha", "Surface Alpha", 1},
        {4, "svAtmoRgb", "atmosphere_rgb", "Atmosphere RGB", 2},
        {5, "svAtmoAlpha", "atmosphere_alpha", "Atmosphere Alpha", 2},
        {6, "svCloudRgb", "cloud_rgb", "Cloud RGB", 2},
        {7, "svCloudAlpha", "cloud_alpha", "Cloud Alpha", 2},
        {8, "svSurfDepth", "surface_depth", "Surface Depth", 0},
        {9, "svSurfPos", "surface_position", "Surface Position", 0},
        {10, "svSurfNormal", "surface_normal", "Surface Normal", 0},
        {11, "svSurf2dMotion", "surface_2d_motion", "Surface 2D Motion Vector", 0},
        {12, "svSurfDiffCol", "surface_diffuse_colour", "Surface Diffuse Colour (before lighting)", 1},
        {13, "svSurfEmit", "surface_emission", "Surface Emission (Luminosity)", 1},
        {14, "svSurfDirect", "surface_direct", "Surface Direct (Diff. + Spec.)", 1},
        {15, "svSurfDirectDiff", "surface_direct_diffuse", "Surface Direct Diffuse", 1},
        {16, "svSurfDirectSpec", "surface_direct_specular", "Surface Direct Specular", 1},
        {17, "svSurfIndirect", "surface_indirect", "Surface Indirect (GI + Refl.)", 1},
        {18, "svSurfIndirectDiff", "surface_indirect_diffuse", "Surface Indirect Diffuse (GI)", 1},
        {19, "svSurfIndirectDiffRefl", nullptr, nullptr, 0},
        {20, "svSurfIndirectDiffTrans", nullptr, nullptr, 0},
        {21, "svSurfIndirectSpec", "surface_indirect_specular", "Surface Indirect Spec. (Refl.)", 1},
        {22, "svSurfIndirectSpecRefl", nullptr, nullptr, 0},
        {23, "svSurfIndirectSpecTrans", nullptr, nullptr, 0},
        {24, "svAtmoDirect", "atmosphere_direct", "Atmosphere Direct", 2},
        {25, "svAtmoIndirect", "atmosphere_indirect", "Atmosphere Indirect (GI + Amb.)", 2},
        {26, "svCloudDepth", "cloud_depth", "Cloud Depth", 2},
        {27, "svCloudPos", "cloud_position", "Cloud Position", 2},
        {28, "svCloud2dMotion", "cloud_2d_motion", "Cloud 2D Motion Vector", 2},
        {29, "svCloudDirect", "cloud_direct", "Cloud Direct", 2},
        {30, "svCloudIndirect", "cloud_indirect", "Cloud Indirect (GI + Amb.)", 2},
        {31, "svSampleRate", "sample_rate", "Sample Rate", 0},
    };
    ASSERT_EQ(std::size(rows), size_t(trNumNamedRenderElements));
    trRenderLayer *layer = NewLayer(root);
    trFImageList list;
    size_t flags = 0;
    for (Row const &r : rows) {
        trRenderElementInfo const *info = trRenderElementInfoFor(r.type);
        ASSERT_NE(info, nullptr);
        EXPECT_STREQ(info->name, r.name);
        EXPECT_EQ(info->gate, r.gate) << r.name;
        list.AddImage(nullptr, trRenderElementType(r.type), 1.0, true, true);
        EXPECT_STREQ(list.TypeString(list.NumImages() - 1), r.name);
        if (!r.param) {
            EXPECT_EQ(info->paramName, nullptr) << r.name;
            continue;
        }
        ++flags;
        EXPECT_STREQ(info->paramName, r.param);
        EXPECT_STREQ(info->displayName, r.display);
        long index = 0;
        ASSERT_TRUE(layer->FindParam(index, r.param)) << r.param;
        EXPECT_EQ(layer->ParamType(index), trParamBool);
        EXPECT_TRUE(layer->IsParamInParamGroup(index, trRenderLayer::kElementParamGroup));
        EXPECT_EQ(Str(layer->ParamDisplayName(index)), r.display);
        unsigned char v = 9;
        layer->GetParam(index, v);
        EXPECT_EQ(v, r.type == svAlpha ? 1 : 0) << r.param;
    }
    EXPECT_EQ(layer->GetParamsInParamGroup(trRenderLayer::kElementParamGroup).size(), flags);
    EXPECT_EQ(trRenderElementInfoFor(svBinnedPathTracer), nullptr);
    EXPECT_STREQ(trRenderElementName(svBinnedPathTracer), "");
    EXPECT_TRUE(layer->IsTrue("is_render_layer"));
}

// Each named accessor reads its own element, through the gate of its kind.
TEST_F(RenderLayerTest, AccessorsFollowFlagsThroughGates)
{
    using Has = bool (trRenderLayer::*)() const;
    struct {
        Has has;
        int type;
    } const accessors[] = {
        {&trRenderLayer::HasRgb, svRgb}, {&trRenderLayer::HasAlpha, svAlpha},
        {&trRenderLayer::HasSurfaceRgb, svSurfRgb}, {&trRenderLayer::HasSurfaceAlpha, svSurfAlpha},
        {&trRenderLayer::HasAtmosphereRgb, svAtmoRgb}, {&trRenderLayer::HasAtmosphereAlpha, svAtmoAlpha},
        {&trRenderLayer::HasCloudRgb, svCloudRgb}, {&trRenderLayer::HasCloudAlpha, svCloudAlpha},
        {&trRenderLayer::HasSurfaceDepth, svSurfDepth}, {&trRenderLayer::HasSurfacePosition, svSurfPos},
        {&trRenderLayer::HasSurfaceNormal, svSurfNormal}, {&trRenderLayer::HasSurface2dMotion, svSurf2dMotion},
        {&trRenderLayer::HasSurfaceDiffuseColour, svSurfDiffCol}, {&trRenderLayer::HasSurfaceEmission, svSurfEmit},
        {&trRenderLayer::HasSurfaceDirect, svSurfDirect}, {&trRenderLayer::HasSurfaceDirectDiffuse, svSurfDirectDiff},
        {&trRenderLayer::HasSurfaceDirectSpecular, svSurfDirectSpec},
        {&trRenderLayer::HasSurfaceIndirect, svSurfIndirect},
        {&trRenderLayer::HasSurfaceIndirectDiffuse, svSurfIndirectDiff},
        {&trRenderLayer::HasSurfaceIndirectSpecular, svSurfIndirectSpec},
        {&trRenderLayer::HasAtmosphereDirect, svAtmoDirect}, {&trRenderLayer::HasAtmosphereIndirect, svAtmoIndirect},
        {&trRenderLayer::HasCloudDepth, svCloudDepth}, {&trRenderLayer::HasCloudPosition, svCloudPos},
        {&trRenderLayer::HasCloud2dMotion, svCloud2dMotion}, {&trRenderLayer::HasCloudDirect, svCloudDirect},
        {&trRenderLayer::HasCloudIndirect, svCloudIndirect}, {&trRenderLayer::HasSampleRate, svSampleRate},
    };
    trRenderLayer *layer = NewLayer(root);
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
    EXPECT_FALSE(layer->HasSurfaceRgb());
    EXPECT_TRUE(layer->HasSurfaceDepth());
    EXPECT_TRUE(layer->HasCloudRgb());
    layer->SetParam("allow_atmosphere_visible", static_cast<unsigned char>(0), trWhoUser);
    for (auto const &a : accessors)
        EXPECT_EQ((layer->*a.has)(), trRenderElementInfoFor(a.type)->gate == trRenderElementGateNone)
            << trRenderElementName(a.type);
}

TEST_F(RenderLayerTest, ObjectGroupsDecideInclusionAndAffector)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "Rocks");
    NewNode("layer_test_group", "Trees");
    trSceneMaker *rock = NewMaker("layer_test_object", "Rock", "Rocks");
    trSceneMaker *tree = NewMaker("layer_test_object", "Tree", "Trees");
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");

    // No group set: every maker is in, fully visible.
    for (trSceneMaker *m : {rock, tree, loose})
        EXPECT_EQ(Affect(*layer, m), "1 211");

    layer->SetParam("object_group_2", trString("Rocks"), trWhoUser);
    layer->SetParam("visibility_2", 1L, trWhoUser);
    layer->SetParam("cast_shadows_and_other_rays_2", static_cast<unsigned char>(0), trWhoUser);
    // A later slot for the same group doesn't count: the first match wins.
    layer->SetParam("object_group_4", trString("Rocks"), trWhoUser);
    layer->SetParam("object_group_5", trString("Trees"), trWhoUser);
    layer->SetParam("visibility_5", 0L, trWhoUser);
    EXPECT_EQ(Affect(*layer, rock), "1 100");
    // Invisible but still casting shadows: included.
    EXPECT_EQ(Affect(*layer, tree), "1 011");
    // By default, once any group is set, all others drop out.
    EXPECT_EQ(Affect(*layer, loose), "0 000");
    layer->SetParam("excluded_cast_shadows_and_other_rays", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_EQ(Affect(*layer, loose), "1 011");
    layer->SetParam("excluded_visibility", 2L, trWhoUser);
    EXPECT_EQ(Affect(*layer, loose), "1 211");
    // A visibility outside the menu, as a file may hold, is taken as the nearest mode.
    layer->SetParam("visibility_2", 7L, trWhoUser);
    EXPECT_EQ(Affect(*layer, rock), "1 200");

    // Lights ignore object groups.
    trSceneMaker *sun = NewMaker("layer_test_light", "Sun", "");
    EXPECT_EQ(Affect(*layer, sun), "1 211");
}

TEST_F(RenderLayerTest, LightGroupsAndEnviroLights)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "Key lights");
    trSceneMaker *key = NewMaker("layer_test_light", "Key", "Key lights");
    trSceneMaker *fill = NewMaker("layer_test_light", "Fill", "");
    trSceneMaker *sky = NewMaker("enviro_light", "Sky", "");
    for (trSceneMaker *m : {key, fill, sky})
        EXPECT_EQ(Affect(*layer, m), "1 211");

    layer->SetParam("light_group_3", trString("Key lights"), trWhoUser);
    EXPECT_EQ(Affect(*layer, key), "1 211");
    EXPECT_EQ(Affect(*layer, fill), "0 211");
    EXPECT_EQ(Affect(*layer, sky), "0 211");
    layer->SetParam("always_include_enviro_lights", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_EQ(Affect(*layer, sky), "1 211");
    EXPECT_EQ(Affect(*layer, fill), "0 211");
}

TEST_F(RenderLayerTest, InterfaceStateFollowsLinks)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "G");
    auto enabled = [&](char const *name) {
        long index = 0;
        EXPECT_TRUE(layer->FindParam(index, name)) << name;
        return layer->IsParamGuiEnabled(index);
    };
    char const *dependants[] = {"visibility_3", "cast_shadows_and_other_rays_3", "excluded_visibility",
                                "excluded_cast_shadows_and_other_rays", "always_include_enviro_lights",
                                "GI_settings_button"};
    for (char const *name : dependants)
        EXPECT_FALSE(enabled(name)) << name;

    layer->SetParam("object_group_3", trString("G"), trWhoUser);
    EXPECT_TRUE(enabled("visibility_3"));
    EXPECT_TRUE(enabled("cast_shadows_and_other_rays_3"));
    EXPECT_FALSE(enabled("visibility_2"));
    EXPECT_TRUE(enabled("excluded_visibility"));
    EXPECT_TRUE(enabled("excluded_cast_shadows_and_other_rays"));
    EXPECT_FALSE(enabled("always_include_enviro_lights"));

    layer->SetParam("light_group_1", trString("G"), trWhoUser);
    EXPECT_TRUE(enabled("always_include_enviro_lights"));
    layer->SetParam("override_GI_settings", static_cast<unsigned char>(1), trWhoUser);
    EXPECT_TRUE(enabled("GI_settings_button"));

    layer->SetParam("object_group_3", trString(""), trWhoUser);
    layer->SetParam("light_group_1", trString(""), trWhoUser);
    layer->SetParam("override_GI_settings", static_cast<unsigned char>(0), trWhoUser);
    for (char const *name : dependants)
        EXPECT_FALSE(enabled(name)) << name;
}

TEST_F(RenderLayerTest, BadGroupLinksWarnAndSelectNothing)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_camera", "Cam");
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");

    layer->SetParam("object_group_1", trString("Nowhere"), trWhoUser);
    ASSERT_EQ(host.warnings.size(), 1u);
    EXPECT_NE(host.warnings[0].find("object_group_1 names \"Nowhere\""), std::string::npos)
        << host.warnings[0];
    layer->SetParam("light_group_2", trString("Cam"), trWhoUser);
    ASSERT_EQ(host.warnings.size(), 2u);
    EXPECT_NE(host.warnings[1].find("Wrong type of node"), std::string::npos) << host.warnings[1];

    EXPECT_EQ(layer->LinkedNode("object_group_1"), nullptr);
    EXPECT_EQ(layer->LinkedNode("light_group_2"), nullptr);
    // Neither link selects anything: the layer acts as if both were empty.
    EXPECT_EQ(Affect(*layer, loose), "1 211");
    long index = 0;
    layer->FindParam(index, "visibility_1");
    EXPECT_FALSE(layer->IsParamGuiEnabled(index));
    // A null maker is refused with a message, not followed.
    bool enabled = true;
    layer->BeginGroupAffectors(nullptr, *scene, enabled);
    layer->EndGroupAffectors(nullptr, *scene);
    EXPECT_FALSE(enabled);
    EXPECT_EQ(host.errors.size(), 1u);
}

TEST_F(RenderLayerTest, CopySettingsFromKeepsEveryValue)
{
    trRenderLayer *a = NewLayer(root);
    trRenderLayer *b = NewLayer(root);
    trBase *group = NewNode("layer_test_group", "G");
    Scramble(*a, "G");
    b->CopySettingsFrom(*a);
    ExpectSameValues(*a, *b);
    EXPECT_EQ(b->LinkedNode("light_group_5"), group);
    EXPECT_DOUBLE_EQ(b->FarClip(), 0.5e16 + 7.0);
    // The copy behaves the same, not just reads the same.
    trSceneMaker *loose = NewMaker("layer_test_object", "Loose", "");
    EXPECT_EQ(Affect(*a, loose), Affect(*b, loose));
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

TEST_F(RenderLayerTest, GISettingsChildIsFoundOrMade)
{
    trRenderLayer *layer = NewLayer(root);
    long id = -1;
    if (!trClasses.FindClassIdFromClassName(id, "render_GI_settings")) {
        EXPECT_EQ(layer->GetGISettings(), nullptr);
        ASSERT_EQ(host.warnings.size(), 1u);
        EXPECT_EQ(host.warnings[0], "CreateObject: Unrecognised class: render_GI_settings");
        EXPECT_EQ(layer->NumChildren(), 0);
        Register("render_GI_settings", Create<trRenderGISettings>);
    }
    trRenderGISettings *gi = layer->GetGISettings();
    ASSERT_NE(gi, nullptr);
    EXPECT_EQ(gi->Parent(), layer);
    EXPECT_EQ(layer->OpenGISettings(), gi);
    EXPECT_EQ(layer->NumChildren(), 1);
}

TEST_F(RenderLayerTest, OnlyTheElementNodeIsOneOfAKind)
{
    trBase *render = NewNode("render", "Render 1");
    NewLayer(*render);
    NewLayer(*render);
    EXPECT_TRUE(host.warnings.empty());
    trCreateObject("render_element", render, 1);
    EXPECT_TRUE(host.warnings.empty());
    trCreateObject("render_element", render, 1);
    ASSERT_EQ(host.warnings.size(), 1u);
    EXPECT_EQ(host.warnings[0], "Render 1: Only one \"render_element\" node can be used per render node.");
}

TEST_F(RenderLayerTest, ProjectRoundTripKeepsEveryValue)
{
    trRenderLayer *layer = NewLayer(root);
    NewNode("layer_test_group", "G");
    Scramble(*layer, "G");
    trString const text = trBaseXML::GetElement(root, true, "", "proj");

    trBase loaded;
    ASSERT_TRUE(trBaseXML::ReadBuffer(loaded, text.chars, "proj"));
    trRenderLayer *back = dynamic_cast<trRenderLayer *>(loaded.Child(trString(layer->Name())));
    ASSERT_NE(back, nullptr);
    ExpectSameValues(*layer, *back);
    EXPECT_EQ(back->LinkedNode("object_group_1"), loaded.Child(trString("G")));
    // A loaded layer's interface state follows its links too.
    long index = 0;
    back->FindParam(index, "visibility_1");
    EXPECT_TRUE(back->IsParamGuiEnabled(index));
    EXPECT_TRUE(host.warnings.empty());
}
