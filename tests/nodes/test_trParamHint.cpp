// Parameter hints and push buttons: their settings as parameters, menus, string styles,
// file filters, and buttons declared on a node.

#include "test_trBaseSupport.h"

#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"

namespace {

// Base entries 0 to 7 are the same on every node; a class's own start at 8.
constexpr long kFirstOwnParam = 8;

long IndexOf(trBase const &node, char const *name)
{
    long index = -1;
    EXPECT_TRUE(node.FindParam(index, name)) << name;
    return index;
}

// A string for each style, a seed and a button.
class HintTestNode : public trBase {
public:
    HintTestNode()
    {
        readOnlyHint.SetStyleFlags(trStringHint::StyleReadOnly);
        multiLineHint.SetStyleFlags(trStringHint::StyleMultiLine);
        transientHint.SetStyleFlags(trStringHint::StyleTransient);
        Param(plain, "plain_text", trString("a"), &plainHint);
        Param(readOnly, "read_only_text", trString("b"), &readOnlyHint);
        Param(multiLine, "multi_line_text", trString("c"), &multiLineHint);
        Param(transient, "transient_text", trString("d"), &transientHint);
        Param(seed, "seed", 7L);
        PushButton(seedButton, "new_seed");
    }
    void OnParamChanged(long index, trBase *who) override
    {
        changed.emplace_back(index, who);
        trBase::OnParamChanged(index, who);
    }
    trStringHint plainHint, readOnlyHint, multiLineHint, transientHint;
    trString plain, readOnly, multiLine, transient;
    long seed = 0;
    trRandomSeedGuiPushButton seedButton;
    std::vector<std::pair<long, trBase *>> changed;
};

TEST(trParamHintTest, SettingsAreParametersReadableByName)
{
    trIntHint hint;
    unsigned char b = 9;
    long v = -1;
    // The range set through the generic write reaches the typed accessors, and back.
    EXPECT_EQ(hint.SetParam("max_value", 250L, trWhoSystem), 1);
    EXPECT_EQ(hint.MaxValue(), 250);
    hint.SetRange(-3, 4);
    EXPECT_TRUE(hint.GetParam("min_value", v) && v == -3);
    EXPECT_TRUE(hint.GetParam("do_range", b) && b == 1);
    // Integer settings take the default hint, booleans none; the default hint built at
    // load points at itself.
    EXPECT_EQ(hint.ParamHint(kFirstOwnParam + 2), static_cast<void *>(&trDefaultIntHint));
    EXPECT_EQ(hint.ParamHint(kFirstOwnParam), nullptr);
    EXPECT_EQ(trDefaultIntHint.ParamHint(kFirstOwnParam + 3), static_cast<void *>(&trDefaultIntHint));
    EXPECT_EQ(trDefaultIntHint.MaxValue(), 10);
    trDoubleHint real;
    double d = -1;
    EXPECT_EQ(real.ParamHint(kFirstOwnParam + 1), static_cast<void *>(&trDefaultDoubleHint));
    EXPECT_EQ(trDefaultDoubleHint.ParamHint(kFirstOwnParam), static_cast<void *>(&trDefaultDoubleHint));
    real.SetRange(-2.5, 40);
    real.SetFocus(1, 3);
    real.SetExtended(false, true);
    EXPECT_TRUE(real.GetParam("max_value", d) && d == 40.0);
    EXPECT_TRUE(real.GetParam("focus_power", d) && d == 3.0);
    EXPECT_TRUE(real.GetParam("do_extended_upper", b) && b == 1);
    EXPECT_EQ(real.SetParam("min_value", -7.0, trWhoSystem), 1);
    EXPECT_EQ(real.MinValue(), -7.0);
    trStringHint s;
    trFColHint c;
    s.SetStyleFlags(trStringHint::StyleMultiLine | trStringHint::StyleTransient);
    EXPECT_TRUE(s.GetParam("string_style_flags", v) && v == 6);
    EXPECT_EQ(s.SetParam("string_style_flags", 1L, trWhoSystem), 1);
    EXPECT_EQ(s.GetStyleFlags(), 1);
    c.SetStyleFlags(trFColHint::StyleAboveOne);
    EXPECT_TRUE(c.GetParam("fcol_style_flags", v) && v == 1);
}

TEST(trParamHintTest, MenuOfValuesFiveOneNine)
{
    trIntHint hint;
    hint.SetRange(3, 4);
    EXPECT_TRUE(hint.SetMenuItemTextAndValue(0, "Five", 5) && hint.SetMenuItemTextAndValue(1, "One", 1) &&
                hint.SetMenuItemTextAndValue(2, "Nine", 9));
    // The bounds only widen: 3..4 became exactly 1..9.
    EXPECT_TRUE(hint.MinValue() == 1 && hint.MaxValue() == 9 && !hint.DoRange() && hint.DoMenu());
    EXPECT_EQ(hint.NumMenuItems(), 3);
    EXPECT_EQ(hint.MenuItemIndexFromValue(9), 2);
    EXPECT_EQ(hint.MenuItemIndexFromValue(7), -1);
    EXPECT_EQ(hint.MenuItemTextFromIndex(2), trString("Nine"));
    // Reordering the texts keeps each value findable: a saved value survives.
    hint.SetMenuItemTextAndValue(0, "Nine", 9);
    hint.SetMenuItemTextAndValue(2, "Five", 5);
    EXPECT_EQ(hint.MenuItemIndexFromValue(9), 0);
    EXPECT_EQ(hint.MenuItemIndexFromValue(5), 2);
    // First match wins when a value repeats.
    hint.AddMenuItem("Also nine", 9);
    EXPECT_EQ(hint.NumMenuItems(), 4);
    EXPECT_EQ(hint.MenuItemIndexFromValue(9), 0);
    hint.ClearMenu();
    EXPECT_EQ(hint.NumMenuItems(), 0);
    EXPECT_EQ(hint.MenuItemIndexFromValue(9), -1);
    // Renaming an item keeps its value; a skipped item exists, empty, with its index as value.
    trIntHint gaps;
    gaps.SetMenuItemText(0, "Zero");
    gaps.SetMenuItemTextAndValue(1, "Hundred", 100);
    EXPECT_EQ(gaps.ValueFromMenuItemIndex(0), 0);
    gaps.SetMenuItemText(1, "Century");
    EXPECT_EQ(gaps.ValueFromMenuItemIndex(1), 100);
    EXPECT_EQ(gaps.MenuItemTextFromIndex(1), trString("Century"));
    gaps.SetMenuItemTextAndValue(4, "Four hundred", 400);
    EXPECT_TRUE(gaps.NumMenuItems() == 5 && gaps.MaxValue() == 400);
    EXPECT_TRUE(gaps.MenuItemTextFromIndex(3) == "" && gaps.ValueFromMenuItemIndex(3) == 3);
}

TEST(trParamHintTest, BadMenuIndicesReportAndChangeNothing)
{
    trIntHint hint;
    hint.SetRange(0, 5);
    Console console;
    EXPECT_EQ(hint.SetMenuItemTextAndValue(-1, "Bad", 50), 0);
    EXPECT_EQ(hint.NumMenuItems(), 0);
    EXPECT_EQ(hint.MaxValue(), 5); // the value of a refused item isn't taken into the range
    EXPECT_TRUE(hint.DoMenu());    // the switch to a menu comes first
    EXPECT_EQ(hint.ValueFromMenuItemIndex(0), -1);
    EXPECT_EQ(hint.MenuItemTextFromIndex(-2), trString(""));
    console.Done();
    EXPECT_TRUE(Has(console.err, "ERROR: trIntHint: First menu item must have index 0, and the rest must be ordered "
                                 "consecutively."))
        << console.err;
    EXPECT_TRUE(Has(console.err, "No menu item at index -2")) << console.err;
}

TEST(trParamHintTest, LinkHintFlagsFiltersAndValidation)
{
    trLinkHint hint;
    unsigned char b = 9;
    hint.SetIsHeightfieldFile(true);
    EXPECT_TRUE(hint.GetParam("is_heightfield_file_flag", b) && b == 1);
    EXPECT_EQ(hint.SetParam("is_object_file_flag", static_cast<unsigned char>(1), trWhoSystem), 1);
    EXPECT_TRUE(hint.GetIsObjectFile());
    hint.AddFileFilter("TIFF images", " *.tif ; *.tiff;;");
    hint.AddGenericFileFilter();
    hint.AddFileFilter("Anything", std::vector<trString>{"*"});
    ASSERT_EQ(hint.GetNumFileFilters(), 3);
    trString description;
    std::vector<trString> patterns;
    EXPECT_EQ(hint.GetFileFilterAtIndex(0, description, patterns), 1);
    EXPECT_EQ(description, trString("TIFF images"));
    EXPECT_EQ(patterns, (std::vector<trString>{"*.tif", "*.tiff"}));
    EXPECT_EQ(hint.GetFileFilterAtIndex(1, description, patterns), 1);
    EXPECT_TRUE(description == "GENERIC" && patterns.empty());
    Console console;
    EXPECT_EQ(hint.GetFileFilterAtIndex(3, description, patterns), 0);
    EXPECT_TRUE(Has(console.Done(), "trLinkHint::GetFileFilterAtIndex"));
    EXPECT_EQ(description, trString(""));
    EXPECT_TRUE(hint.IsFileValid("anything.txt")); // no function: all valid
    hint.SetFileValidationFunc(
        [](trString const &p) { return p.length >= 4 && std::string(p.chars + p.length - 4) == ".ter"; });
    EXPECT_TRUE(hint.IsFileValid("hills.ter"));
    EXPECT_FALSE(hint.IsFileValid("hills.tif"));
}

TEST(trParamHintTest, StringStyleDecidesSavingFromDeclaration)
{
    HintTestNode node;
    EXPECT_EQ((std::vector<bool>{node.GetParamShouldBeSaved(IndexOf(node, "plain_text")),
                                 node.GetParamShouldBeSaved(IndexOf(node, "read_only_text")),
                                 node.GetParamShouldBeSaved(IndexOf(node, "multi_line_text")),
                                 node.GetParamShouldBeSaved(IndexOf(node, "transient_text"))}),
              (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(node.ParamHint(IndexOf(node, "read_only_text")), static_cast<void *>(&node.readOnlyHint));
}

TEST(trGuiPushButtonTest, DeclaredButtonKnowsOwnerAndSwitchesState)
{
    HintTestNode node;
    trRandomSeedGuiPushButton &button = node.seedButton;
    EXPECT_EQ(button.Owner(), &node);
    EXPECT_EQ(button.Label(), trString("Random Seed"));
    EXPECT_EQ(button.TargetParamName(), trString("seed"));
    long const index = IndexOf(node, "new_seed");
    EXPECT_EQ(node.ParamType(index), trParamPushButton);
    Listener listener;
    listener.ListenTo(&node);
    button.Disable();
    EXPECT_FALSE(node.IsParamGuiEnabled(index));
    button.Enable();
    EXPECT_TRUE(node.IsParamGuiEnabled(index));
    EXPECT_EQ(listener.Codes(), (std::vector<unsigned long>{25006, 25005}));
    EXPECT_TRUE(listener.heard[0].index == index && listener.heard[1].index == index);
    listener.StopListeningTo(&node);
    // A button never declared has no owner: a message, no crash.
    trGuiPushButton loose("Loose");
    Console console;
    loose.Disable();
    loose.OnClick();
    EXPECT_TRUE(Has(console.Done(), "has no owner"));
}

TEST(trGuiPushButtonTest, RandomSeedButtonSetsAFreshSeed)
{
    HintTestNode node;
    long const seedIndex = IndexOf(node, "seed");
    for (int click = 0; click < 20; ++click) {
        node.changed.clear();
        node.seedButton.OnClick();
        EXPECT_TRUE(node.seed >= 0 && node.seed <= 0xffff) << node.seed;
        // Forced: the handler runs once per click, even if the draw repeats the value.
        EXPECT_EQ(node.changed, (std::vector<std::pair<long, trBase *>>{{seedIndex, trWhoUserIndirect}}));
    }
}

} // namespace
