#include "nodes/trGuiAction.h"

#include "nodes/KMMessenger.h"
#include "nodes/trBase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

long ActionIndexOf(trBase const &node, char const *name)
{
    long index = -1;
    EXPECT_TRUE(node.FindParam(index, name)) << name;
    return index;
}

class ActionTestListener : public Kellmere::KMMessenger {
public:
    void ReceiveAMessage(Kellmere::KMMessenger *, Kellmere::KMMessage &message) override
    {
        codes.push_back(message.Code());
        indices.push_back(message.Data() ? *static_cast<long const *>(message.Data()) : -1);
    }
    std::vector<unsigned long> codes;
    std::vector<long> indices;
};

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
    ActionTestListener listener;
    listener.ListenTo(&node);

    EXPECT_EQ(node.SetParam("use_fog", static_cast<unsigned char>(0), trWhoUser), 1);
    EXPECT_FALSE(node.IsParamGuiEnabled(density));
    EXPECT_FALSE(node.IsParamGuiEnabled(amount));
    EXPECT_TRUE(node.IsParamGuiEnabled(ActionIndexOf(node, "use_fog")));
    EXPECT_EQ(listener.codes, (std::vector<unsigned long>{25006, 25006}));
    EXPECT_EQ(listener.indices, (std::vector<long>{density, amount}));

    listener.codes.clear();
    listener.indices.clear();
    EXPECT_EQ(node.SetParam("use_fog", static_cast<unsigned char>(1), trWhoUser), 1);
    EXPECT_TRUE(node.IsParamGuiEnabled(density));
    EXPECT_EQ(listener.codes, (std::vector<unsigned long>{25005, 25005}));

    // Only 1 counts as enabled: a stored 2 disables.
    listener.codes.clear();
    node.SetParam("use_fog", static_cast<unsigned char>(2), trWhoUser);
    EXPECT_FALSE(node.IsParamGuiEnabled(density));
    ASSERT_FALSE(listener.codes.empty());
    EXPECT_EQ(listener.codes[0], 25006u);

    // A change of a parameter that is no trigger runs nothing.
    listener.codes.clear();
    node.SetParam("count", 4L, trWhoUser);
    EXPECT_TRUE(listener.codes.empty());
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
    testing::internal::CaptureStdout();
    set.OnParamChanged(&node, "count");
    std::string const out = testing::internal::GetCapturedStdout();
    EXPECT_NE(out.find("GetParam: Wrong type for parameter: \"count\""), std::string::npos) << out;
    EXPECT_TRUE(node.IsParamGuiEnabled(density));

    // An unknown kind is refused with a message.
    testing::internal::CaptureStderr();
    set.Add({"count"}, {"fog_density"}, trGuiActionPreset(static_cast<trGuiActionPreset::Kind>(77)));
    std::string const err = testing::internal::GetCapturedStderr();
    EXPECT_NE(err.find("trGuiActionSet::Add: Unknown action preset: 77"), std::string::npos) << err;
    EXPECT_EQ(set.NumActions(), 2);
}

TEST(trGuiActionTest, PresetsMakeTheirClasses)
{
    auto radio = trGuiActionPreset(trGuiActionPreset::RadioGroup).MakeAction();

    // Run directly, with a group naming a non-member as well as members.
    ActionTestNode node;
    std::vector<trString> group{"quality_low", "quality_medium"};
    node.medium = 1;
    node.high = 1;
    radio->Action(&node, "quality_high", group);
    EXPECT_TRUE(node.low == 0 && node.medium == 0 && node.high == 1); // high is not in the list it was given
}
