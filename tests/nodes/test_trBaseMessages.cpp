// What a node tells the world: messenger codes 25001 to 25006 heard by a real listener,
// the order of the end of a node, reports, interface parameters and actions, progress,
// and the write-back of a read at a frame.

#include "test_trBaseSupport.h"

#include "nodes/trDestructionNotifier.h"
#include "nodes/trGuiAction.h"

namespace {

char const *const kClass = "core_messages_probe";

class Report : public trParamReport {
public:
    void OnObjectParamChanged(trBase *node, long index, trBase *who) override
    {
        Events().push_back("report " + NameOf(node) + " " + std::to_string(index) + " " + NameOf(who));
    }
    void OnObjectDestroy(trBase *node) override { Events().push_back("report destroy " + NameOf(node)); }
};

class Watcher : public trDependant {
public:
    void OnDestructionNotifierPreDestroy(trDestructionNotifier const *) override
    {
        Events().push_back("dependant told");
    }
};

TEST(trBaseMessages, RenamesAreAnnouncedOnlyWhenTheNameChangesAndStatesWithTheIndex)
{
    Probe n;
    n.name = "n";
    Listener ear;
    ear.ListenTo(&n);
    n.SetName(trString("m"));
    n.SetName(trString("m"));
    n.SetParam(1, trString("k"), trWhoUser);
    n.SetParam(1, trString("k"), trWhoUser);
    EXPECT_EQ(ear.Codes(), (std::vector<unsigned long>{25003, 25003}));
    EXPECT_TRUE(ear.heard[0].data == static_cast<trBase *>(&n) && ear.heard[1].data == static_cast<trBase *>(&n));
    // SetName itself is no parameter change.
    Events().clear();
    n.SetName(trString("j"));
    EXPECT_EQ(Events(), std::vector<std::string>({"msg 25003"}));
    // Interface state messages carry the index.
    ear.heard.clear();
    n.SetParamGuiEnabled(n.iR, false);
    EXPECT_FALSE(n.IsParamGuiEnabled(n.iR));
    n.SetParamGuiEnabled("real_value", true);
    EXPECT_TRUE(n.IsParamGuiEnabled(n.iR));
    EXPECT_EQ(ear.Codes(), (std::vector<unsigned long>{25006, 25005}));
    EXPECT_TRUE(ear.heard[0].index == n.iR && ear.heard[1].index == n.iR);
}

TEST(trBaseMessages, TheEndOfANodeInOrder)
{
    TestClass(kClass);
    Probe root;
    root.name = "root";
    Probe *kid = AsProbe(root.CreateChild(trString(kClass)));
    kid->SetName(trString("kid"));
    Listener ear;
    ear.ListenTo(kid);
    Report report;
    kid->AttachParamReport(&report);
    Watcher watcher;
    kid->RegisterDependant(&watcher);
    Events().clear();
    kid->logging = false;
    EXPECT_EQ(root.DestroyChild(0), 1);
    // Its own links are emptied last in PreDestroy; they were empty, so only the report
    // hears of the link that notifies, and the root isn't warned of a change.
    std::vector<std::string> const expected = {
        "root.PreState(kid,PreDestroy())", "dependant told",     "msg 25001",
        "report kid 17 kid",               "msg 25002",          "report destroy kid",
        "root.State(kid,Destructor)"};
    EXPECT_EQ(Events(), expected);
    EXPECT_EQ(ear.Codes(), (std::vector<unsigned long>{25001, 25002}));
    EXPECT_EQ(ear.heard[1].data, static_cast<void *>(static_cast<trBase *>(kid)));
    EXPECT_EQ(root.NumChildren(), 0);
}

TEST(trBaseMessages, ReportsFollowTheHandlersAndInterfaceParametersGoTheirOwnWay)
{
    Probe root;
    root.name = "root";
    Probe *kid = new Probe;
    kid->Init(&root, 0);
    kid->name = "kid";
    Report report;
    kid->AttachParamReport(&report);
    Events().clear();
    kid->SetParam(kid->iI, 5L, trWhoUser);
    kid->SetParam(kid->iGuiExtra, trString("x"), trWhoUser);
    kid->SetParam(4L, true, trWhoUser); // gui_use_node_pos: no notification at all
    std::vector<std::string> const expected = {
        "root.Pre(kid,8,user)",          "kid.Changed(8,user)",          "root.ChildChanged(kid,8,user)",
        "report kid 8 user",             "root.Pre(kid,18,user)",        "kid.GuiChanged(18,user)",
        "root.ChildGuiChanged(kid,18,user)", "report kid 18 user",       "root.Pre(kid,4,user)"};
    EXPECT_EQ(Events(), expected);
    kid->DetachParamReport();
    delete kid; // attached without entering the list: the root doesn't own it
}

TEST(trBaseMessages, AReadAtAFrameWritesTheValueBackAsTheSystem)
{
    Probe n;
    n.name = "n";
    n.SetParam(n.iV, trVector(4, 5, 6), trWhoUser);
    Events().clear();
    double frame = 10;
    trVector v;
    EXPECT_EQ(n.GetParam(n.iV, v, trWhoUser, &frame), 1);
    EXPECT_TRUE(v == trVector(4, 5, 6) && n.v == v);
    EXPECT_EQ(Events(), std::vector<std::string>({"n.Pre(n,11,system)", "n.Changed(11,system)"}));
    // Without a frame it is a plain read.
    Events().clear();
    long i = 0;
    EXPECT_TRUE(n.GetParam(n.iI, i, trWhoUser, nullptr) && i == 3);
    EXPECT_TRUE(Events().empty());
    // A wrong type writes nothing back.
    HostCapture host;
    EXPECT_EQ(n.GetParam(n.iS, i, trWhoUser, &frame), 0);
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(n.UpdateParamFromAnim(n.iI, frame), 0);
    EXPECT_EQ(n.ParamAnim(n.iI), nullptr);
}

// A project root that can refuse to go on.
class ProgressRoot : public Probe {
public:
    long answer = 1;
    std::vector<std::string> seen;
    long OnChildProgress(trBase *child, unsigned long &id, trString const &text, float a, float b,
                         unsigned char mayAbort) override
    {
        seen.push_back(NameOf(child) + " " + std::to_string(id) + " " + Str(text) + " " + std::to_string(a) +
                       " " + std::to_string(b) + " " + std::to_string(mayAbort));
        id = 77;
        return answer;
    }
};

TEST(trBaseMessages, ProgressReachesTheRoot)
{
    TestClass(kClass);
    ProgressRoot root;
    trBase *mid = root.CreateChild(trString(kClass));
    trBase *leaf = mid->CreateChild(trString(kClass));
    leaf->SetName(trString("leaf"));
    unsigned long id = 3;
    root.answer = 0;
    EXPECT_EQ(leaf->ReportProgress(id, trString("half"), 0.5f, 1.f), 0);
    EXPECT_EQ(id, 77u);
    EXPECT_EQ(leaf->ReportProgressNoAbort(id, trString("more"), 0.75f, 1.f), 0);
    EXPECT_EQ(root.seen,
              (std::vector<std::string>{"leaf 3 half 0.500000 1.000000 1", "leaf 77 more 0.750000 1.000000 0"}));
    Probe lone;
    EXPECT_EQ(lone.ReportProgress(id, trString("x"), 0.f, 1.f), 1); // a base root goes on
}

} // namespace
