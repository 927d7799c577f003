// The reference plug-in: a module built like any third party's, against the public
// headers and the library only. Its classes show every kind of parameter a node can
// declare, with hints, a tab, groups and a push button, so that hosts and tests have
// real classes from a real module to work with.

#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"
#include "nodes/trPlugin.h"
#include "nodes/trProjectFile.h"

namespace {

// Hints are shared by every node of a class and outlive them all.
struct ReferenceHints {
    trIntHint patternMenu;
    trIntHint seedRange;
    trDoubleHint roughnessRange;
    trDoubleHint gainRange;
    trFColHint colourStyle;
    trStringHint labelStyle;
    trStringHint notesStyle;
    trLinkHint textureFile;
    trLinkHint inputLink;
    trBoolHint enabled;
    trVectorHint offset;
    tr2VectorHint scale;
    trPtrHint userData;

    ReferenceHints()
    {
        // Stored values needn't follow the menu order: files keep the value.
        patternMenu.SetMenuItemTextAndValue(0, "Flat", 0);
        patternMenu.SetMenuItemTextAndValue(1, "Ridged", 5);
        patternMenu.SetMenuItemTextAndValue(2, "Billowy", 9);
        seedRange.SetRange(0, 0xffff);
        roughnessRange.SetRange(0.0, 1.0);
        gainRange.SetRange(0.0, 10.0);
        gainRange.SetFocus(1.0, 2.0);
        gainRange.SetExtended(false, true);
        colourStyle.SetStyleFlags(trFColHint::StyleAboveOne);
        labelStyle.SetStyleFlags(0);
        notesStyle.SetStyleFlags(trStringHint::StyleTransient);
        textureFile.SetIsImageFile(true);
        textureFile.AddFileFilter("Images", "*.tif;*.tiff;*.exr;*.png");
        textureFile.AddGenericFileFilter();
    }
};

ReferenceHints &Hints()
{
    static ReferenceHints hints;
    return hints;
}

// Every parameter type, on one surface-like node.
class ReferenceSurface : public trBase {
public:
    ReferenceSurface()
    {
        ReferenceHints &h = Hints();
        DeclareTrue("is_shader");
        GuiTab("Surface", "surface_tab");
        Gui(trGuiGroupStart);
        ParamGroupStart(1);
        Param(pattern, "pattern", 5, &h.patternMenu);
        Param(roughness, "roughness", 0.25, &h.roughnessRange);
        Param(gain, "gain", 1.0f, &h.gainRange);
        Param(colour, "colour", trManRgb(trManRgb::kLinear709, 0.8f, 0.7f, 0.6f), &h.colourStyle);
        ParamGroupEnd();
        Gui(trGuiGroupEnd);
        Gui(trGuiGroupStart);
        ParamGroupStart(2);
        Param(offset, "offset", trVector(0.0, 1.0, 0.0), &h.offset);
        Param(scale, "scale", tr2Vector(1.0, 1.0), &h.scale);
        Param(enabled, "enabled", 1, &h.enabled);
        ParamGroupEnd();
        Gui(trGuiGroupEnd);
        GuiTab("Inputs", "inputs_tab");
        Param(label, "label", trString("untitled"), &h.labelStyle);
        Param(notes, "notes", trString(), &h.notesStyle);
        Param(userData, "user_data", trPtr(), &h.userData);
        Param(textureFile, "texture_file", trString(), &h.textureFile);
        inputNode.SetIsExternal(true);
        Param(inputNode, "input_node", trString(), &h.inputLink);
        Param(seed, "seed", 0, &h.seedRange);
        PushButton(seedButton, "random_seed");
    }

    long pattern = 0;
    double roughness = 0.0;
    float gain = 0.0f;
    trManRgb colour;
    trVector offset;
    tr2Vector scale;
    unsigned char enabled = 0;
    trString label;
    trString notes;
    trPtr userData;
    trFileForRead textureFile;
    trNodeLink inputNode;
    long seed = 0;
    trRandomSeedGuiPushButton seedButton{trString("seed")};
};

// A heightfield-like node, to show the simplified display name under heightfield/.
// Its input was once called "input_heightfield", which old projects still hold.
class ReferenceTerrain : public trBase {
public:
    ReferenceTerrain()
    {
        DeclareTrue("is_heightfield");
        Param(size, "size", trVector(1000.0, 0.0, 1000.0));
        Param(amplitude, "amplitude", 100.0);
        Param(resolution, "resolution", 256L);
        inputNode.SetIsExternal(true);
        Param(inputNode, "input_node", trString(), &Hints().inputLink);
    }

    long SetParamFromString(char const *paramName, trString const &text, trBase *who) override
    {
        return trSetParamFromStringRetired(*this, paramName, text, who);
    }
    using trBase::SetParamFromString;

    trVector size;
    double amplitude = 0.0;
    long resolution = 0;
    trNodeLink inputNode;
};

// A plain grouping node with no parameters of its own.
class ReferenceGroup : public trBase {
public:
    ReferenceGroup() { DeclareTrue("is_group"); }
};

template <class T> trBase *Create() { return new T; }
void Destroy(trBase *node) { delete node; }

} // namespace

OSTREL_PLUGIN_EXPORT long trPluginStartup(trPluginStartupInfo *info)
{
    trPluginToken token(info, trPluginSdkVersion(), "Ostrel Reference");
    long ok = 1;
    ok &= token.AddClass("shader/surface", "reference_surface", Create<ReferenceSurface>, Destroy,
                         "Reference surface shader") != 0;
    ok &= token.AddClass("heightfield/", "reference_terrain", Create<ReferenceTerrain>, Destroy,
                         "") != 0;
    ok &= token.AddClass("group", "reference_group", Create<ReferenceGroup>, Destroy, "") != 0;
    return ok;
}

// Classes a host can register one by one with trClassPool::LoadClass: one pair under
// plain C names, one under the names the compiler gives the C++ signatures.
extern "C" OSTREL_PLUGIN_API trBase *reference_group_create() { return new ReferenceGroup; }
extern "C" OSTREL_PLUGIN_API void reference_group_destroy(trBase *node) { delete node; }
OSTREL_PLUGIN_API trBase *reference_terrain_create() { return new ReferenceTerrain; }
OSTREL_PLUGIN_API void reference_terrain_destroy(trBase *node) { delete node; }
