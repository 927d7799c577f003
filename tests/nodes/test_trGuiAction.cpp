// Interface actions: radio groups, enabling by a boolean, action sets and presets.

#include "test_trBaseSupport.h"

#include "nodes/trGuiAction.h"

namespace {

long ActionIndexOf(trBase const &node, char const *name)
{
    long index = -1;
    EXPECT_TRUE(node.FindParam(index, name)) << name;
    return index;
}

// Three booleans for a radio group, a switch with two dependants, and a number.
class ActionTestNode : public trBase {
public:
    ActionTestNode()
    {
        Param(low, "quality_low", 1);
        Param(medium, "quality_medium", 0);
        Param(high, "quality_high", 0);
        Param(useFog, "use_fog", 1);
        Param(fogDensity, "fog_density", 0.5);
        Param(fogColourAmount, "fog_amount", 0.25);
        Param(count, "count", 3L);
        AddGuiAction({"quality_low", "quality_medium", "quality_high"},
                     {"quality_low", "quality_medium", "quality_high"}, trGuiActionPreset::RadioGroup);
        AddGuiAction({"use_fog"}, {"fog_density", "fog_amount"}, trGuiActionPreset::BoolEnableDisable);
    }
    void OnParamChanged(long index, trBase *who) override
    {
        changes.push_back({index, who});
        trBase::OnParamChanged(index, who);
    }
    unsigned char low = 0, medium = 0, high = 0, useFog = 0;
    double fogDensity = 0, fogColourAmount = 0;
    long count = 0;
    std::vector<std::pair<long, trBase *>> changes;
};

} // namespace

TEST(trGuiActionTest, RadioGroupSetToOneClearsTheOthers)
{
    ActionTestNode node;
    ASSERT_EQ(node.low, 1);
    node.changes.clear();
    EXPECT_EQ(node.SetParam("quality_high", static_cast<unsigned char>(1), trWhoUser), 1);
    EXPECT_TRUE(node.low == 0 && node.medium == 0 && node.high == 1);
    // The user's write, then the two clears, each forced and by the system.
    std::vector<std::pair<long, trBase *>> const expected = {{ActionIndexOf(node, "quality_high"), trWhoUser},
                                                             {ActionIndexOf(node, "quality_low"), trWhoSystem},
                                                             {ActionIndexOf(node, "quality_medium"), trWhoSystem}};
    EXPECT_EQ(node.changes, expected);
    // Setting to 0 changes nothing else: the group may end with no member set.
    node.changes.clear();
    EXPECT_EQ(node.SetParam("quality_high", static_cast<unsigned char>(0), trWhoUser), 1);
    EXPECT_TRUE(node.high == 0 && node.changes.size() == 1u);
    // A forced 1 on the member already set still clears the rest (all 0 already).
    node.SetParam("quality_medium", static_cast<unsigned char>(1), trWhoUser);
    node.changes.clear();
    node.SetParam("quality_medium", static_cast<unsigned char>(1), trWhoUser, true);
    EXPECT_TRUE(node.medium == 1 && node.changes.size() == 3u);
}

TEST(trGuiActionTest, EnableActionFollowsTheBoolean)
{
    ActionTestNode node;
    long const density = ActionIndexOf(node, "fog_density");
    long const amount = ActionIndexOf(node, "fog_amount");
    Listener listener;
    listener.ListenTo(&node);
    EXPECT_EQ(node.SetParam("use_fog", static_cast<unsigned char>(0), trWhoUser), 1);
    EXPECT_FALSE(node.IsParamGuiEnabled(density));
    EXPECT_FALSE(node.IsParamGuiEnabled(amount));
    EXPECT_TRUE(node.IsParamGuiEnabled(ActionIndexOf(node, "use_fog")));
    EXPECT_EQ(listener.Codes(), (std::vector<unsigned long>{25006, 25006}));
    EXPECT_TRUE(listener.heard[0].index == density && listener.heard[1].index == amount);
    listener.heard.clear();
    EXPECT_EQ(node.SetParam("use_fog", static_cast<unsigned char>(1), trWhoUser), 1);
    EXPECT_TRUE(node.IsParamGuiEnabled(density));
    EXPECT_EQ(listener.Codes(), (std::vector<unsigned long>{25005, 25005}));
    // Only 1 counts as enabled: a stored 2 disables.
    listener.heard.clear();
    node.SetParam("use_fog", static_cast<unsigned char>(2), trWhoUser);
    EXPECT_FALSE(node.IsParamGuiEnabled(density));
    ASSERT_FALSE(listener.heard.empty());
    EXPECT_EQ(listener.heard[0].code, 25006u);
    // A change of a parameter that is no trigger runs nothing.
    listener.heard.clear();
    node.SetParam("count", 4L, trWhoUser);
    EXPECT_TRUE(listener.heard.empty());
    listener.StopListeningTo(&node);
}

TEST(trGuiActionTest, ActionSetRunsOnlyMatchingTriggers)
{
    ActionTestNode node;
    long const density = ActionIndexOf(node, "fog_density");
    trGuiActionSet set;
    set.Add({"quality_low", "use_fog"}, {"fog_density"}, trGuiActionPreset());
    node.low = 0; // written behind the node's back, so only the set reacts
    set.OnParamChanged(&node, "quality_medium");
    EXPECT_TRUE(node.IsParamGuiEnabled(density));
    set.OnParamChanged(&node, "quality_low"); // any trigger of the list runs it
    EXPECT_FALSE(node.IsParamGuiEnabled(density));
    // A trigger that isn't a boolean: the read fails with a warning, targets stay.
    node.SetParamGuiEnabled(density, true);
    set.Add({"count"}, {"fog_density"}, trGuiActionPreset::BoolEnableDisable);
    Console console;
    set.OnParamChanged(&node, "count");
    EXPECT_TRUE(node.IsParamGuiEnabled(density));
    // An unknown kind is refused with a message.
    set.Add({"count"}, {"fog_density"}, trGuiActionPreset(static_cast<trGuiActionPreset::Kind>(77)));
    EXPECT_EQ(set.NumActions(), 2);
    console.Done();
    EXPECT_TRUE(Has(console.out, "GetParam: Wrong type for parameter: \"count\"")) << console.all;
    EXPECT_TRUE(Has(console.err, "trGuiActionSet::Add: Unknown action preset: 77")) << console.all;
}

TEST(trGuiActionTest, PresetsMakeTheirClasses)
{
    // A radio group run directly, with a group naming a non-member as well as members.
    auto radio = trGuiActionPreset(trGuiActionPreset::RadioGroup).MakeAction();
    ActionTestNode node;
    std::vector<trString> group{"quality_low", "quality_medium"};
    node.medium = node.high = 1;
    radio->Action(&node, "quality_high", group);
    EXPECT_TRUE(node.low == 0 && node.medium == 0 && node.high == 1); // high is not in the list it was given
}
