// The animation manager: its set of animated parameters, its messages as a listener of
// the host hears them, and the holding back of state messages in bulk operations.

#include "test_trBaseSupport.h"

namespace {

using Codes = std::vector<unsigned long>;

TEST(trAnimationManager, AddingANewPairSendsTheStateMessage)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe node;
    ManagerListener heard;
    m->AddAnimatedParam(&node, node.iR, 0);
    m->AddAnimatedParam(&node, node.iR, 1); // the same pair: nothing
    m->AddAnimatedParam(nullptr, 3, 0);     // no node: nothing
    EXPECT_EQ(heard.codes, Codes{25008});
    EXPECT_TRUE(m->IsNodeAnimated(&node) && m->IsParamAnimated(&node, node.iR));
    m->RemoveAnimatedParam(&node, node.iR);
    EXPECT_FALSE(m->IsNodeAnimated(&node));
    m->RemoveAnimatedParam(&node, node.iR); // gone already: nothing
    EXPECT_EQ(heard.codes, (Codes{25008, 25008}));
}

TEST(trAnimationManager, ADestroyedNodeLeavesTheSet)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe other;
    m->AddAnimatedParam(&other, other.iV, 0);
    ManagerListener heard;
    size_t const before = m->AnimatedParams().size();
    {
        Probe node;
        m->AddAnimatedParam(&node, node.iR, 0);
        m->AddAnimatedParam(&node, node.iV, 0);
        EXPECT_TRUE(m->IsNodeAnimated(&node));
        EXPECT_EQ(m->AnimatedParams().size(), before + 2);
        heard.codes.clear();
    }
    // Both of its pairs went with one state message; the other node stays.
    EXPECT_EQ(heard.codes, Codes{25008});
    EXPECT_EQ(m->AnimatedParams().size(), before);
    EXPECT_TRUE(m->IsNodeAnimated(&other));
    m->RemoveAnimatedParam(&other, other.iV);
    // A node that left the set before its end is no longer heard of.
    heard.codes.clear();
    {
        Probe node;
        m->AddAnimatedParam(&node, node.iR, 0);
        m->RemoveAnimatedParam(&node, node.iR);
        heard.codes.clear();
    }
    EXPECT_TRUE(heard.codes.empty());
}

TEST(trAnimationManager, SuspendedStateMessagesComeOnceOnResumeAndKeyMessagesCarryRecords)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe node;
    ManagerListener heard;
    EXPECT_FALSE(m->SuspendStateNotifications());
    EXPECT_TRUE(m->SuspendStateNotifications()); // gives the previous flag
    m->AddAnimatedParam(&node, node.iR, 0);
    m->AddAnimatedParam(&node, node.iV, 0);
    m->KeyInserted(&node, node.iR, 0, 12); // key messages are never held back
    EXPECT_EQ(heard.codes, Codes{25009});
    m->ResumeStateNotifications();
    m->ResumeStateNotifications(); // nothing pending
    EXPECT_EQ(heard.codes, (Codes{25009, 25008}));
    m->RemoveAnimatedParam(&node, node.iR);
    m->RemoveAnimatedParam(&node, node.iV);

    // Key messages carry their records.
    heard.codes.clear();
    heard.records.clear();
    m->KeyInserted(&node, 4, 1, 100);
    m->KeyMoved(&node, 5, 2, 101);
    m->KeyRemoved(&node, 6, 0, 102);
    m->InterpolationModeChanged(&node, 7, 1, 2);
    m->KeyInterpolationChanged(&node, 8, 2, 103);
    m->SendStateChangedMessage();
    EXPECT_EQ(heard.codes, (Codes{25009, 25010, 25011, 25012, 25013, 25008}));
    ASSERT_EQ(heard.records.size(), 6u);
    auto const &r = heard.records;
    EXPECT_TRUE(r[0].node == &node && r[0].paramIndex == 4 && r[0].component == 1 && r[0].keyID == 100);
    EXPECT_EQ(r[3].mode, 2);
}

} // namespace
