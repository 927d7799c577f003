// The parameter table: the entries every node declares, the declaration rules, and the
// typed writes and reads with their conversions, equality rules, undo hooks and texts.

#include "test_trBaseSupport.h"

#include "foundation/trGlobals.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"
#include "nodes/trUndo.h"

#include <cstdio>

namespace {

// Undo hook calls, as text, while a recorder is alive.
struct UndoRecorder {
    static inline std::vector<std::string> log;
    static void Add(char const *format, auto... args)
    {
        char text[128];
        std::snprintf(text, sizeof text, format, args...);
        log.push_back(text);
    }
    UndoRecorder()
    {
        log.clear();
        trUndoNodeParamInt = [](trBase *, long k, long old, trBase *) { Add("int %ld %ld", k, old); };
        trUndoNodeParamDouble = [](trBase *, long k, double old, trBase *) { Add("double %ld %.9g", k, old); };
        trUndoNodeParamVector = [](trBase *, long k, trVector const &old, long c, trBase *) {
            Add("vector %ld %g %g %g c%ld", k, old.x, old.y, old.z, c);
        };
        trUndoNodeParam2Vector = [](trBase *, long k, tr2Vector const &old, long c, trBase *) {
            Add("2vector %ld %g %g c%ld", k, old.x, old.y, c);
        };
        trUndoNodeParamString = [](trBase *, long k, trString const &old, trBase *who) {
            Add("string %ld %s %s", k, Str(old).c_str(), NameOf(who).c_str());
        };
        trUndoNodeParamBool = [](trBase *, long k, unsigned char old, trBase *) { Add("bool %ld %d", k, int(old)); };
    }
    ~UndoRecorder()
    {
        trUndoNodeParamInt = nullptr;
        trUndoNodeParamDouble = nullptr;
        trUndoNodeParamVector = nullptr;
        trUndoNodeParam2Vector = nullptr;
        trUndoNodeParamString = nullptr;
        trUndoNodeParamBool = nullptr;
        trUndoCopyCurrentUndoToken = nullptr;
    }
};

std::string WrongType(char const *op, char const *param, int expected, int got)
{
    return std::string(op) + ": Wrong type for parameter: \"" + param + "\" in class: UNREGISTERED_CLASS. Expected type " +
           std::to_string(expected) + ", got type " + std::to_string(got);
}

TEST(trBaseDeclaration, EveryNodeStartsWithTheSameEightEntries)
{
    trBase node;
    ASSERT_EQ(node.NumParams(), 8);
    long const types[8] = {2027, 4, 2028, 2014, 6, 2, 7, 2015};
    char const *names[8] = {"", "name", "", "", "gui_use_node_pos", "gui_node_pos", "gui_group", ""};
    for (long i = 0; i < 8; ++i) {
        EXPECT_EQ(node.ParamType(i), types[i]) << i;
        EXPECT_STREQ(node.ParamName(i), names[i]) << i;
        // Only name notifies; the three gui_ values and the widgets don't.
        EXPECT_EQ(node.ParamRecord(i)->notifyOnChange, i == 1 ? 1 : 0) << i;
    }
    EXPECT_EQ(node.ParamPtr(1), static_cast<void *>(&node.name));
    EXPECT_EQ(Str(node.ParamDisplayName(4)), "Gui use node pos");
    node.SetParamDisplayName(4, trString("Pinned"));
    EXPECT_EQ(Str(node.ParamDisplayName(4)), "Pinned");
}

TEST(trBaseDeclaration, HintsWidgetsColourTagsAndStaticText)
{
    Probe n;
    EXPECT_EQ(n.iI, 8); // a class's own parameters follow the eight
    // Integer and real parameters without a hint share the load-time defaults.
    EXPECT_EQ(n.ParamHint(n.iI), static_cast<void *>(&trDefaultIntHint));
    EXPECT_EQ(n.ParamHint(n.iR), static_cast<void *>(&trDefaultDoubleHint));
    trIntHint own;
    long other = 0;
    EXPECT_EQ(n.ParamHint(n.Param(other, "other", 9L, &own)), static_cast<void *>(&own));
    // Widgets never notify.
    trGuiPushButton button;
    n.PushButton(button, "press");
    long const pb = n.NumParams() - 1;
    EXPECT_EQ(n.ParamType(pb), 1000);
    EXPECT_EQ(n.ParamRecord(pb)->notifyOnChange, 0);
    void *widget = nullptr;
    EXPECT_EQ(n.GetWidget(pb, &widget, nullptr), 1);
    EXPECT_EQ(widget, static_cast<void *>(&button));
    HostCapture host;
    EXPECT_EQ(n.GetWidget(n.iI, &widget, nullptr), 0);
    EXPECT_EQ(host.warnings,
              std::vector<std::string>{"GetParam: Not a widget, parameter: \"int_value\" in class: UNREGISTERED_CLASS"});
    // A colour default's tag is 0, so the member's own tag survives.
    EXPECT_EQ(n.c.ColourSpace, trManRgb::kLinear709);
    EXPECT_EQ(n.c.r, 0.5f);
    trManRgb tagged;
    n.Param(tagged, "tagged", trManRgb(trManRgb::kData, 1.f, 2.f, 3.f));
    EXPECT_EQ(tagged.ColourSpace, trManRgb::kData);
    // Static text marks the next string only.
    trString label, plain;
    n.Gui(trGuiStaticText);
    n.Gui(trGuiSeparator);
    long const il = n.Param(label, "label", trString());
    long const ip = n.Param(plain, "plain", trString());
    EXPECT_TRUE(n.IsParamStaticText(il) && !n.IsParamStaticText(ip) && !n.IsParamStaticText(n.iS));
    EXPECT_EQ(n.NumParamComponents(n.iV2), 2);
    EXPECT_EQ(trBase::NumParamComponentsOfType(10), 2);
}

TEST(trBaseDeclaration, GuiEntriesTabsKeywordsAndGroups)
{
    Probe n;
    long const before = n.NumParams();
    for (int count : {3, 0, -2})
        n.Gui(trGuiSeparator, count);
    EXPECT_EQ(n.NumParams(), before + 3);
    n.GuiTab("Lighting", "tab_light");
    long const tab = n.NumParams() - 1;
    EXPECT_TRUE(n.IsTrue(trString()));
    EXPECT_FALSE(n.IsTrue(trString("is_shader")));
    n.DeclareTrue(trString("is_shader"));
    EXPECT_TRUE(n.IsTrue(trString("is_shader")));
    n.ParamGroupEnd(); // on an empty stack: nothing
    long x = 0, y = 0, z = 0;
    n.ParamGroupStart(5);
    long const ix = n.Param(x, "x", 0L);
    n.Gui(trGuiSeparator); // widgets stay out of groups
    n.ParamGroupStart(6);
    long const iy = n.Param(y, "y", 0L);
    n.ParamGroupEnd();
    n.ParamGroupEnd();
    long const iz = n.Param(z, "z", 0L);
    EXPECT_EQ(n.GetParamsInParamGroup(5), std::set<long>({ix}));
    EXPECT_EQ(n.GetParamsInParamGroup(6), std::set<long>({iy}));
    EXPECT_TRUE(n.GetParamsInParamGroup(99).empty());
    EXPECT_FALSE(n.IsParamInParamGroup(iz, 5));
    EXPECT_EQ(n.AddParamToParamGroup(iz, 5), 1);
    EXPECT_TRUE(n.IsParamInParamGroup(iz, 5));
    EXPECT_EQ(n.AddParamToParamGroup(tab, 5), 0);
    EXPECT_EQ(n.AddParamToParamGroup("y", 7), 1);
    EXPECT_TRUE(n.IsParamInParamGroup(iy, 7));
}

TEST(trBaseSetParam, LiteralsReachTheirOverloadsRealsConvertAndColourTagsTravel)
{
    Probe n;
    HostCapture host;
    EXPECT_EQ((std::vector<long>{n.SetParam(n.iI, 7, trWhoUser), n.SetParam(n.iB, false, trWhoUser),
                                 n.SetParam(n.iS, "text", trWhoUser), n.SetParam("int_value", 8, trWhoUser),
                                 n.SetParam(n.iF, 2.25, trWhoUser),
                                 n.SetParam(n.iR, 0.1f, trWhoUser)}),
              (std::vector<long>{1, 1, 1, 1, 1, 1}));
    // A double is narrowed into a float, a float widened into a double.
    EXPECT_TRUE(n.i == 8 && n.b == 0 && Str(n.s) == "text" && n.f == 2.25f && n.r == double(0.1f));
    double widened = 0;
    float narrowed = 0;
    EXPECT_TRUE(n.GetParam(n.iF, widened) && widened == 2.25);
    EXPECT_TRUE(n.GetParam(n.iR, narrowed) && narrowed == 0.1f);
    // A bool on an integer or an integer on a string is a type error, not a silent
    // conversion; a float on a colour still sets grey.
    EXPECT_EQ(n.SetParam(n.iI, true, trWhoUser), 0);
    EXPECT_EQ(n.SetParam(n.iS, 5, trWhoUser), 0);
    long out = 0;
    EXPECT_EQ(n.GetParam(n.iS, out), 0);
    EXPECT_EQ(n.SetParam(n.iC, 0.25f, trWhoUser), 1);
    EXPECT_EQ(n.SetParam(n.iC, 0.75, trWhoUser), 0);
    EXPECT_EQ(n.i, 8);
    EXPECT_TRUE(n.c.r == 0.25f && n.c.b == 0.25f);
    EXPECT_EQ(n.c.ColourSpace, trManRgb::kLinear709); // the grey has word 0: the tag stays
    // Colours: the same floats with word 0 against a tag are equal, so nothing happens; a
    // different tag on both sides is a difference, and travels.
    n.SetParam(n.iC, trManRgb(0, 0.5f, 0.5f, 0.5f), trWhoUser, true);
    EXPECT_EQ(n.SetParam(n.iC, trManRgb(0, 0.5f, 0.5f, 0.5f), trWhoUser), 0);
    EXPECT_EQ(n.SetParam(n.iC, trRgbData(0.5f, 0.5f, 0.5f), trWhoUser), 1);
    EXPECT_EQ(n.c.ColourSpace, trManRgb::kData);
    EXPECT_EQ(n.SetParam(n.iC, trManRgb(0, 1.f, 0.f, 0.f), trWhoUser), 1);
    EXPECT_TRUE(n.c.ColourSpace == trManRgb::kData && n.c.r == 1.f);
    EXPECT_EQ(host.warnings, (std::vector<std::string>{
                                 WrongType("SetParam", "int_value", 0, 6),
                                 WrongType("SetParam", "string_value", 4, 0), WrongType("GetParam", "string_value", 4, 0),
                                 WrongType("SetParam", "colour_value", 3, 9), WrongType("SetParam", "colour_value", 3, 1)}));
}

TEST(trBaseSetParam, EqualValuesForceAndNotificationOrder)
{
    TestClass("core_params_probe");
    Probe root;
    root.name = "root";
    Probe *child = AsProbe(root.CreateChild(trString("core_params_probe")));
    ASSERT_NE(child, nullptr);
    child->name = "kid";
    Events().clear();
    EXPECT_EQ(child->SetParam(child->iI, 3L, trWhoUser), 0); // equal to the default
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(child->SetParam(child->iI, 4L, trWhoUser), 1);
    EXPECT_EQ(child->SetParam(child->iI, 4L, trWhoSystem, true), 1);
    EXPECT_EQ(Events(), (std::vector<std::string>{"root.Pre(kid,8,user)", "kid.Changed(8,user)",
                                                  "root.ChildChanged(kid,8,user)", "root.Pre(kid,8,system)",
                                                  "kid.Changed(8,system)", "root.ChildChanged(kid,8,system)"}));
    // A name write is made unique, and equal text still notifies.
    Probe n;
    n.name = "solo";
    Events().clear();
    EXPECT_EQ(n.SetParam(1, trString("solo"), trWhoUser), 1);
    EXPECT_EQ(Events(), std::vector<std::string>({"solo.Pre(solo,1,user)", "solo.GuiChanged(1,user)"}));
    EXPECT_EQ(n.SetParam("name", "", trWhoUser), 1);
    trString got;
    EXPECT_TRUE(n.GetParam("name", got) && Str(got) == "_1");
}

TEST(trBaseSetParam, UndoHooksGetOldValuesOnlyWhenIdle)
{
    Probe n;
    UndoRecorder undo;
    n.SetParam(n.iI, 10L, trWhoUser);
    n.SetParam(n.iI, 10L, trWhoUser, true); // forced and equal: no hook
    n.SetParam(n.iF, 0.25f, trWhoUser);     // float uses the double hook, old widened
    n.SetParam(n.iV, trVector(1, 7, 3), trWhoUser);
    n.SetParam(n.iV, trVector(0, 7, 0), trWhoUser);
    n.SetParam(n.iV2, tr2Vector(6, 5), trWhoUser);
    n.SetParam(n.iB, static_cast<unsigned char>(0), trWhoUser);
    n.SetParam(n.iS, trString("bye"), trWhoUser);
    n.SetParam(n.iS, trString("bye"), trWhoUser); // equal text: notifies, no hook
    EXPECT_EQ(undo.log, (std::vector<std::string>{"int 8 3", "double 10 0.5", "vector 11 1 2 3 c2", "vector 11 1 7 3 c0",
                                                  "2vector 12 4 5 c1", "bool 16 1", "string 14 hello user"}));
    // A compound operation under way: values change, hooks stay silent.
    trUndoCopyCurrentUndoToken = []() { return trUndoToken(trUndoOperationKeySet); };
    undo.log.clear();
    EXPECT_EQ(n.SetParam(n.iI, 11L, trWhoUser), 1);
    EXPECT_EQ(n.i, 11);
    EXPECT_TRUE(undo.log.empty());
}

TEST(trBaseSetParam, UnknownNamesAndRanges)
{
    Probe n;
    HostCapture host;
    long value = 0;
    EXPECT_EQ(n.SetParam("nope", 1L, trWhoUser), 0);
    EXPECT_EQ(n.GetParam("nope", value), 0);
    EXPECT_EQ(n.SetParam(static_cast<char const *>(nullptr), 1L, trWhoUser), 0);
    EXPECT_EQ(host.warnings, (std::vector<std::string>{
                                 "SetParam: Unknown parameter: \"nope\" in class: UNREGISTERED_CLASS",
                                 "GetParam: Unknown parameter: \"nope\" in class: UNREGISTERED_CLASS",
                                 "SetParam: Unknown parameter: \"\" in class: UNREGISTERED_CLASS"}));
    // FindParam: exact, case-sensitive; the empty name sets the index to 0.
    long index = 42;
    EXPECT_FALSE(n.FindParam(index, ""));
    EXPECT_EQ(index, 0);
    EXPECT_FALSE(n.FindParam(index, "Int_value"));
    EXPECT_TRUE(n.FindParam(index, "int_value") && index == n.iI);
    EXPECT_EQ(n.SetParam(999L, 1L, trWhoUser), 0);
    EXPECT_EQ(n.ParamRecord(999), nullptr);
    // A registered node names its class.
    TestClass("core_params_probe");
    trBase *made = trCreateObject(trString("core_params_probe"), nullptr, 0);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->SetParam("nope", 1L, trWhoUser), 0);
    EXPECT_EQ(host.warnings.back(), "SetParam: Unknown parameter: \"nope\" in class: core_params_probe");
    trDestroyObject(made);
}

} // namespace
