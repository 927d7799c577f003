// The animation manager: its set of animated parameters, its messages as a listener of
// the host hears them, and the holding back of state messages in bulk operations.

#include "test_trBaseSupport.h"

#include "nodes/trAnimate.h"
#include "nodes/trAnimationManager.h"

#include <gtest/gtest.h>

namespace {

// Hears everything the manager sends, copying the key records while they are valid.
class ManagerListener : public Kellmere::KMMessenger {
public:
    ManagerListener() { ListenTo(trAnimationManager::Instance()); }
    void ReceiveAMessage(Kellmere::KMMessenger *from, Kellmere::KMMessage &m) override
    {
        EXPECT_EQ(from, trAnimationManager::Instance());
        codes.push_back(m.Code());
        if (m.Code() == trMsgAnimStateChanged) {
            EXPECT_EQ(m.Data(), nullptr);
            records.push_back({});
        } else {
            records.push_back(*static_cast<trAnimKeyMessageData *>(m.Data()));
        }
    }
    long Count(unsigned long code) const
    {
        long n = 0;
        for (unsigned long c : codes)
            n += c == code;
        return n;
    }
    std::vector<unsigned long> codes;
    std::vector<trAnimKeyMessageData> records;
};

TEST(trAnimationManager, AddingANewPairSendsTheStateMessage)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe node;
    ManagerListener heard;
    m->AddAnimatedParam(&node, node.iR, 0);
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25008}));
    m->AddAnimatedParam(&node, node.iR, 1); // the same pair: nothing
    EXPECT_EQ(heard.codes.size(), 1u);
    m->AddAnimatedParam(nullptr, 3, 0); // no node: nothing
    EXPECT_EQ(heard.codes.size(), 1u);
    EXPECT_TRUE(m->IsNodeAnimated(&node));
    EXPECT_TRUE(m->IsParamAnimated(&node, node.iR));

    m->RemoveAnimatedParam(&node, node.iR);
    EXPECT_FALSE(m->IsNodeAnimated(&node));
    EXPECT_EQ(heard.Count(25008), 2);
    m->RemoveAnimatedParam(&node, node.iR); // gone already: nothing
    EXPECT_EQ(heard.Count(25008), 2);
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
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25008}));
    EXPECT_EQ(m->AnimatedParams().size(), before);
    EXPECT_TRUE(m->IsNodeAnimated(&other));
    m->RemoveAnimatedParam(&other, other.iV);
}

TEST(trAnimationManager, ANodeThatLeftTheSetIsNoLongerHeard)
{
    trAnimationManager *m = trAnimationManager::Instance();
    ManagerListener heard;
    {
        Probe node;
        m->AddAnimatedParam(&node, node.iR, 0);
        m->RemoveAnimatedParam(&node, node.iR);
        heard.codes.clear();
    }
    EXPECT_TRUE(heard.codes.empty());
}

TEST(trAnimationManager, SuspendedStateMessagesComeOnceOnResume)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe node;
    ManagerListener heard;
    EXPECT_FALSE(m->SuspendStateNotifications());
    EXPECT_TRUE(m->SuspendStateNotifications()); // gives the previous flag
    m->AddAnimatedParam(&node, node.iR, 0);
    m->AddAnimatedParam(&node, node.iV, 0);
    m->KeyInserted(&node, node.iR, 0, 12); // key messages are never held back
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25009}));
    m->ResumeStateNotifications();
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25009, 25008}));
    m->ResumeStateNotifications(); // nothing pending
    EXPECT_EQ(heard.codes.size(), 2u);

    m->RemoveAnimatedParam(&node, node.iR);
    m->RemoveAnimatedParam(&node, node.iV);
}

TEST(trAnimationManager, KeyMessagesCarryTheirRecords)
{
    trAnimationManager *m = trAnimationManager::Instance();
    Probe node;
    ManagerListener heard;
    m->KeyInserted(&node, 4, 1, 100);
    m->KeyMoved(&node, 5, 2, 101);
    m->KeyRemoved(&node, 6, 0, 102);
    m->InterpolationModeChanged(&node, 7, 1, 2);
    m->KeyInterpolationChanged(&node, 8, 2, 103);
    m->SendStateChangedMessage();
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25009, 25010, 25011, 25012, 25013, 25008}));
    ASSERT_EQ(heard.records.size(), 6u);
    auto const &r = heard.records;
    EXPECT_EQ(r[0].node, &node);
    EXPECT_EQ(r[0].paramIndex, 4);
    EXPECT_EQ(r[0].component, 1);
    EXPECT_EQ(r[0].keyID, 100);
    EXPECT_EQ(r[3].mode, 2);
}

} // namespace
