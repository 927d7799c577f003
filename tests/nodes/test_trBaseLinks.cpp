// Links between nodes as the node core sees them: output lists, the flow of a change
// down the network, refused cycles, renames and destruction rewriting the links.

#include "test_trBaseSupport.h"

#include <algorithm>

namespace {

char const *const kClass = "core_links_probe";

struct Net {
    Probe root;
    Net() { TestClass(kClass); root.name = "root"; }
    Probe *Add(trBase *parent, char const *name)
    {
        Probe *n = AsProbe(parent->CreateChild(trString(kClass)));
        n->SetName(trString(name));
        return n;
    }
};

TEST(trBaseLinks, ALinkEntersTheTargetsOutputsOnce)
{
    Net net;
    Probe *a = net.Add(&net.root, "a");
    Probe *b = net.Add(&net.root, "b");
    EXPECT_EQ(a->SetParam(a->iLink, trString("b"), trWhoUser), 1);
    ASSERT_EQ(b->NumOutputs(), 1);
    EXPECT_EQ(b->OutputNode(0), a);
    EXPECT_EQ(b->OutputParamIndex(0), a->iLink);
    EXPECT_EQ(a->LinkedNode(trString("input_link")), b);
    b->AttachOutput(a, a->iLink); // already there
    EXPECT_EQ(b->NumOutputs(), 1);
    EXPECT_TRUE(b->IsLinkedTo(a));
    EXPECT_FALSE(b->IsLinkedTo(a, trString("gui_group")));
    // Unlinking leaves the list.
    EXPECT_EQ(a->SetParam(a->iLink, trString(""), trWhoUser), 1);
    EXPECT_EQ(b->NumOutputs(), 0);
    // A whole link value is copied into place.
    trNodeLink given;
    given.SetFileString(trString("b"));
    Events().clear();
    EXPECT_EQ(a->SetParam(a->iLink, given, trWhoUser), 1);
    EXPECT_EQ(a->link.LinkedNode(true), b);
    EXPECT_EQ(b->NumOutputs(), 1);
    EXPECT_TRUE(a->link.HasChanged());
    EXPECT_EQ(Events(), std::vector<std::string>({"root.Pre(a,17,user)", "a.Changed(17,user)",
                                                  "root.ChildChanged(a,17,user)"}));
    trNodeLink read;
    EXPECT_TRUE(a->GetParam(a->iLink, read) && Str(read.FileStringR()) == "b");
}

TEST(trBaseLinks, CyclesAreRefusedWithAnInfoMessage)
{
    Net net;
    Probe *a = net.Add(&net.root, "a");
    Probe *b = net.Add(&net.root, "b");
    Probe *c = net.Add(&net.root, "c");
    HostCapture host;
    ASSERT_EQ(a->SetParam(a->iLink, trString("b"), trWhoUser), 1); // b feeds a
    ASSERT_EQ(b->SetParam(b->iLink, trString("c"), trWhoUser), 1); // c feeds b
    Events().clear();
    Console console;
    EXPECT_EQ(c->SetParam(c->iLink, trString("a"), trWhoUser), 0); // a would feed c: a cycle
    EXPECT_TRUE(Has(console.Done(), "Node cycles!\n"));
    ASSERT_EQ(host.infos.size(), 1u);
    EXPECT_EQ(host.infos[0], "a couldn't be connected to the Input link input of c because this would cause a "
                             "circular path in the node network.");
    EXPECT_EQ(Str(c->link.FileStringR()), "");
    EXPECT_EQ(a->NumOutputs(), 0);
    EXPECT_TRUE(Events().empty()); // nothing was told
    // Linking to itself is a cycle too, and so is a trFile given whole.
    EXPECT_EQ(a->SetParam(a->iLink, trString("a"), trWhoUser), 0);
    trNodeLink given;
    given.SetFileString(trString("a"));
    EXPECT_EQ(c->SetParam(c->iLink, given, trWhoUser), 0);
    EXPECT_EQ(host.infos.size(), 3u);
    EXPECT_EQ(Str(b->link.FileStringR()), "c");
    EXPECT_TRUE(c->IsLinkedTo(a));
}

TEST(trBaseLinks, AChangeFlowsDownTheNetworkThenToTheParent)
{
    Net net;
    Probe *src = net.Add(&net.root, "src");
    Probe *mid = net.Add(&net.root, "mid");
    Probe *end = net.Add(&net.root, "end");
    mid->SetParam(mid->iLink, trString("src"), trWhoUser);
    end->SetParam(end->iLink, trString("mid"), trWhoUser);
    Events().clear();
    src->SetParam(src->iR, 4.0, trWhoUser);
    std::vector<std::string> const expected = {
        "root.Pre(src,9,user)",       "src.Changed(9,user)",
        "mid.Dep(src,9,src,user)",    "end.Dep(src,9,mid,user)",
        "root.ChildChanged(src,9,user)"};
    EXPECT_EQ(Events(), expected);
    // A relink to the same target isn't a change: only the report would hear of it.
    Events().clear();
    EXPECT_EQ(mid->SetParam(mid->iLink, trString("/src"), trWhoUser), 1);
    EXPECT_TRUE(Events().empty());
    EXPECT_EQ(Str(mid->link.FileStringR()), "/src");
}

TEST(trBaseLinks, SeventeenOutputsAreToldInLinkOrder)
{
    for (int count : {16, 17}) {
        Net net;
        Probe *hub = net.Add(&net.root, "hub");
        std::vector<std::string> expected = {"hub.Changed(8,user)"};
        for (int k = 0; k < count; ++k) {
            Probe *n = net.Add(&net.root, ("n" + std::to_string(k)).c_str());
            n->SetParam(n->iLink, trString("hub"), trWhoUser);
        }
        // A second hop below the hub checks what travels further: source and via.
        Probe *relay = net.Add(&net.root, "relay");
        Probe *leaf = net.Add(&net.root, "leaf");
        leaf->SetParam(leaf->iLink, trString("relay"), trWhoUser);
        relay->SetParam(relay->iLink, trString("hub"), trWhoUser);
        for (int k = 0; k < count; ++k)
            expected.push_back("n" + std::to_string(k) + ".Dep(hub,8,hub,user)");
        expected.push_back("relay.Dep(hub,8,hub,user)");
        expected.push_back("leaf.Dep(hub,8,relay,user)");
        net.root.logging = false;
        Events().clear();
        hub->SetParam(hub->iI, 99L, trWhoUser);
        EXPECT_EQ(Events(), expected) << count << " outputs";
        // Through a relay with that many outputs of its own.
        for (int k = 0; k < count; ++k) {
            Probe *n = AsProbe(net.root.Child(trString(("n" + std::to_string(k)).c_str())));
            n->SetParam(n->iLink, trString("relay"), trWhoUser);
        }
        Events().clear();
        hub->OnDependencyParamChanged(hub, 8, hub, trWhoSystem);
        expected = {"hub.Dep(hub,8,hub,system)", "relay.Dep(hub,8,hub,system)", "leaf.Dep(hub,8,relay,system)"};
        for (int k = 0; k < count; ++k)
            expected.push_back("n" + std::to_string(k) + ".Dep(hub,8,relay,system)");
        EXPECT_EQ(Events(), expected) << count << " outputs, through the relay";
    }
}

TEST(trBaseLinks, DestroyingATargetEmptiesEveryLinkToIt)
{
    Net net;
    Probe *t = net.Add(&net.root, "t");
    Probe *a = net.Add(&net.root, "a");
    Probe *b = net.Add(&net.root, "b");
    Probe *up = net.Add(&net.root, "up");
    a->SetParam(a->iLink, trString("t"), trWhoUser);
    b->SetParam(b->iLink, trString("t"), trWhoUser);
    t->SetParam(t->iLink, trString("up"), trWhoUser); // t's own input
    ASSERT_EQ(t->NumOutputs(), 2);
    ASSERT_EQ(up->NumOutputs(), 1);
    net.root.logging = false;
    Events().clear();
    EXPECT_EQ(net.root.DestroyChild(trString("t")), 1);
    EXPECT_EQ(Str(a->link.FileStringR()) + Str(b->link.FileStringR()), "");
    EXPECT_EQ(up->NumOutputs(), 0);
    // Each owner was told, with the vanishing node as who.
    for (char const *told : {"a.Changed(17,t)", "b.Changed(17,t)"})
        EXPECT_NE(std::find(Events().begin(), Events().end(), told), Events().end()) << told;
    EXPECT_EQ(net.root.NumChildren(), 3);
}

TEST(trBaseLinks, ARenameRewritesTheLinksThatPointHere)
{
    Net net;
    Probe *p = net.Add(&net.root, "P");
    Probe *t = net.Add(p, "T");
    Probe *sib = net.Add(p, "S");
    Probe *far = net.Add(&net.root, "F");
    p->SetParam(p->iLink, trString("T"), trWhoUser);
    sib->SetParam(sib->iLink, trString("T"), trWhoUser);
    far->SetParam(far->iLink, trString("/P/T"), trWhoUser);
    ASSERT_EQ(t->NumOutputs(), 3);
    EXPECT_EQ(t->SetParam(1, trString("T2"), trWhoUser), 1);
    EXPECT_EQ(Str(p->link.FileStringR()), "T2");    // the parent: bare name
    EXPECT_EQ(Str(sib->link.FileStringR()), "T2");  // a sibling: bare name
    EXPECT_EQ(Str(far->link.FileStringR()), "/P/T2"); // elsewhere: the path
    EXPECT_EQ(far->link.LinkedNode(true), t);
    EXPECT_EQ(t->NumOutputs(), 3);
}

TEST(trBaseLinks, TriggerResolvesLinksWrittenBeforeTheirTargets)
{
    Net net;
    Probe *a = net.Add(&net.root, "a");
    Probe *sub = net.Add(a, "sub");
    a->SetParam(a->iLink, trString("later"), trWhoUser);
    sub->SetParam(sub->iLink, trString("/later"), trWhoUser);
    EXPECT_EQ(a->link.LinkedNode(true), nullptr);
    Probe *later = net.Add(&net.root, "later");
    EXPECT_EQ(later->NumOutputs(), 0);
    net.root.TriggerAllNodeLinks();
    EXPECT_EQ(a->link.LinkedNode(true), later);
    EXPECT_EQ(sub->link.LinkedNode(true), later);
    EXPECT_EQ(later->NumOutputs(), 2);
    // The interface group is a link like the others.
    EXPECT_EQ(a->SetParam("gui_group", "later", trWhoUser), 1);
    EXPECT_EQ(a->GuiGroupNode(), later);
}

TEST(trBaseLinks, InputsAreFoundByKindAndPosition)
{
    Probe n;
    trNodeLink in1, in2, in3;
    long const i1 = n.Param(in1, "in1", trString());
    long const i2 = n.Param(in2, "in2", trString());
    long const i3 = n.Param(in3, "in3", trString());
    in2.SetIsInternal(true);
    // Probe's own input_link is external too, and comes first.
    long index = -1;
    EXPECT_TRUE(n.FindParamByExternalInputIndex(index, 1) && index == i1);
    EXPECT_TRUE(n.FindParamByExternalInputIndex(index, 2) && index == i3);
    EXPECT_FALSE(n.FindParamByExternalInputIndex(index, 3));
    EXPECT_TRUE(n.FindParamByInternalInputIndex(index, 0) && index == i2);
    EXPECT_TRUE(n.FindParamByAnyInputIndex(index, 0) && index == n.iLink);
    EXPECT_FALSE(n.FindParamByAnyInputIndex(index, 3));
    EXPECT_TRUE(n.IsParamInternalLink(i2));
    EXPECT_FALSE(n.IsParamExternalLink(6)); // gui_group is hidden
}

} // namespace
