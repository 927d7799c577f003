// The node tree: names and their clash rule, paths and look-ups, children and their
// table, content paths, frames, bundles and creation by the user.

#include "test_trBaseSupport.h"

#include "nodes/trUndo.h"

#include <cstdio>

namespace {

char const *const kClass = "core_tree_probe";

// A root owning registered children, so that its end destroys them properly.
struct Tree {
    Probe root;
    Tree() { TestClass(kClass); root.name = "root"; }
    Probe *Add(trBase *parent, char const *name)
    {
        Probe *n = AsProbe(parent->CreateChild(trString(kClass)));
        if (name)
            n->SetName(trString(name));
        return n;
    }
};

TEST(trBaseNames, ClashesGetSuffixesAndNumbersCount)
{
    Tree t;
    Probe *a = t.Add(&t.root, "A");
    Probe *b = t.Add(&t.root, "A");
    Probe *c = t.Add(&t.root, nullptr);
    EXPECT_EQ(Str(a->name) + " " + Str(b->name), "A A_1");
    EXPECT_EQ(c->SetParam(1, trString("A"), trWhoUser), 1);
    trString shown;
    c->GetParam(1, shown);
    EXPECT_EQ(Str(shown), "A_1_1");
    // Created nodes already carry numbered names of their class.
    Probe *p1 = t.Add(&t.root, nullptr);
    Probe *p2 = t.Add(&t.root, nullptr);
    EXPECT_EQ(Str(p1->name) + ", " + Str(p2->name), "Core tree probe 01, Core tree probe 02");
    p1->SetName(trString("Planet %02d"));
    p2->SetName(trString("Planet %02D")); // the marker is found regardless of case
    c->SetName(trString(""));
    EXPECT_EQ(Str(p1->name) + ", " + Str(p2->name) + ", " + Str(c->name), "Planet 01, Planet 02, _1");
}

TEST(trBaseNames, OwnChildrenAndEverythingInScopeClash)
{
    Tree t;
    Probe *uncle = t.Add(&t.root, "U");
    Probe *p = t.Add(&t.root, "P");
    Probe *kid = t.Add(p, "X");
    // A node may not take the name of its own child...
    p->SetName(trString("X"));
    EXPECT_EQ(Str(p->name), "X_1");
    // ...nor of a node that its parent sees further up.
    kid->SetName(trString("U"));
    EXPECT_EQ(Str(kid->name), "U_1");
    EXPECT_EQ(t.root.NodeInScope(trString("U"), nullptr, nullptr), uncle);
    EXPECT_EQ(kid->NodeInScope(trString("U"), nullptr, nullptr), uncle);
    EXPECT_EQ(kid->NodeInScope(trString("U"), uncle, nullptr), nullptr);
    EXPECT_TRUE(t.root.NameExistsInTree(trString("U_1"), nullptr, nullptr));
    EXPECT_FALSE(t.root.NameExistsInTree(trString("U_1"), kid, nullptr));
    EXPECT_TRUE(kid->ClassExistsInTree(trString(kClass), nullptr, nullptr));
    Tree lone;
    Probe *only = lone.Add(&lone.root, "only");
    EXPECT_TRUE(lone.root.ClassExistsInTree(only->RegisteredClassId(), nullptr, nullptr));
    EXPECT_FALSE(lone.root.ClassExistsInTree(only->RegisteredClassId(), only, nullptr));
}

// The name with the first free number, by the clash rule tried one number at a time.
std::string FirstFreeByTrying(trBase *node, char const *base)
{
    for (long n = 1;; ++n) {
        char text[64];
        std::snprintf(text, sizeof text, "%s%02ld", base, n);
        trString candidate(text);
        bool clash = node->Parent() && node->Parent()->NodeInScope(candidate, node, nullptr);
        for (long i = 0; i < node->NumChildren(); ++i)
            clash = clash || (node->Child(i) != node && node->Child(i)->name == candidate);
        if (!clash)
            return text;
    }
}

TEST(trBaseNames, NumberedNamesTakeTheFirstFreeNumberInScope)
{
    Tree t;
    t.Add(&t.root, "N 01");
    t.Add(&t.root, "N 03");
    t.Add(&t.root, "N 1");   // not the printed form of a number
    t.Add(&t.root, "N 002"); // nor this
    Probe *p = t.Add(&t.root, "P");
    t.Add(p, "N 02");
    Probe *target = t.Add(p, "T");
    t.Add(target, "N 04"); // the node's own children clash too
    target->SetName(trString("N %02d"));
    EXPECT_EQ(Str(target->name), "N 05");
    EXPECT_EQ(t.root.DestroyChild(trString("N 03")), 1);
    target->SetName(trString("T"));
    target->SetName(trString("N %02d"));
    EXPECT_EQ(Str(target->name), "N 03");
    // A sibling of the same number seen first at a level above doesn't count when it is
    // the node itself: renaming to the same pattern keeps a free number.
    for (int round = 0; round < 40; ++round) {
        Probe *n = t.Add(round % 3 ? p : &t.root, nullptr);
        std::string const expected = FirstFreeByTrying(n, "Core tree probe ");
        n->SetName(trString("x"));
        n->SetName(trString("Core tree probe %02d"));
        ASSERT_EQ(Str(n->name), expected) << "round " << round;
    }
}

TEST(trBaseNames, PathsAndNodeByPath)
{
    Tree t;
    Probe *p = t.Add(&t.root, "P");
    Probe *c = t.Add(p, "C");
    Probe *d = t.Add(c, "D");
    Probe *s = t.Add(&t.root, "S");
    EXPECT_EQ(Str(t.root.Path()) + "|" + Str(p->Path()) + "|" + Str(d->Path()) + "|" + Str(d->NameAndPath()),
              "|/|/P/C/|/P/C/D");
    // "/" asks for the root's child named ""; a final separator finds nothing; absolute paths
    // work from anywhere; a bare name is an own child first, then what the parent sees in
    // scope, and the root has no parent to ask.
    struct {
        trBase *from;
        char const *path;
        trBase *found;
    } const rows[] = {{&t.root, "", nullptr}, {&t.root, "/", nullptr},    {&t.root, "/P/C/D", d}, {d, "/P", p},
                      {&t.root, "P/C", c},    {&t.root, "/P/", nullptr},  {&t.root, "/P/missing", nullptr},
                      {c, "D", d},            {d, "S", s},                {d, "C", c},            {&t.root, "D", nullptr}};
    for (auto const &r : rows)
        EXPECT_EQ(r.from->NodeByPath(trString(r.path)), r.found) << r.path;
    EXPECT_TRUE(p->IsAnAncestorOf(d));
    EXPECT_FALSE(d->IsAnAncestorOf(p));
}

TEST(trBaseChildren, OrderWalkAndDestroyMovesTheLastChild)
{
    Tree t;
    Probe *a = t.Add(&t.root, "a");
    Probe *b = t.Add(&t.root, "b");
    Probe *a1 = t.Add(a, "a1");
    Probe *c = t.Add(&t.root, "c");
    Probe *d = t.Add(&t.root, "d");
    std::vector<trBase *> walk;
    for (trBase *n = &t.root; n; n = n->NextInTree())
        walk.push_back(n);
    EXPECT_EQ(walk, std::vector<trBase *>({&t.root, a, a1, b, c, d}));
    EXPECT_EQ(b->NextSibling(), c);
    EXPECT_EQ(t.root.DestroyChild(1), 1); // b goes, d takes its slot
    ASSERT_EQ(t.root.NumChildren(), 3);
    EXPECT_EQ((std::vector<trBase *>{t.root.Child(0L), t.root.Child(1L), t.root.Child(2L)}),
              (std::vector<trBase *>{a, d, c}));
    EXPECT_EQ(t.root.DestroyChild(trString("a")), 1); // its own child goes with it
    EXPECT_EQ(t.root.Child(0L), c);
    EXPECT_EQ(t.root.DestroyChild(trString("zz")), 0);
    EXPECT_EQ(c->DestroyChild(0), 0); // no list at all
    EXPECT_EQ(t.root.NumChildren(), 2);
}

long ResidentKiB()
{
    long pages = 0, resident = 0;
    std::FILE *f = std::fopen("/proc/self/statm", "r");
    if (!f)
        return -1;
    int const got = std::fscanf(f, "%ld %ld", &pages, &resident);
    std::fclose(f);
    return got == 2 ? resident * (sysconf(_SC_PAGESIZE) / 1024) : -1;
}

TEST(trBaseChildren, ChildTablesCostOnlyTheSlotsInUse)
{
    // Each table spans 512 KiB; 10,000 of them fully backed would be 5 GB.
    constexpr int kTables = 10000;
    static_assert(sizeof(trNetwork) > 512 * 1024);
    std::vector<trNetwork *> tables;
    tables.reserve(kTables);
    long const before = ResidentKiB();
    trBase *const marker = reinterpret_cast<trBase *>(&tables);
    for (int i = 0; i < kTables; ++i) {
        tables.push_back(new trNetwork);
        tables.back()->AddChild(marker);
    }
    long const after = ResidentKiB();
    if (before > 0 && after > 0) {
        EXPECT_LT(after - before, 80 * 1024) << "KiB resident for " << kTables << " child tables";
    }
    // Removing moves the last entry into the freed slot.
    trBase *const other = reinterpret_cast<trBase *>(&tables[1]);
    tables[0]->AddChild(other);
    EXPECT_EQ(tables[0]->Count(), 2);
    tables[0]->RemoveChild(0);
    EXPECT_EQ(tables[0]->Count(), 1);
    EXPECT_EQ(tables[0]->Child(0), other);
    // Tables hold no real nodes here: empty them before they destroy their children.
    for (trNetwork *n : tables) {
        while (n->Count() > 0)
            n->RemoveChild(0);
        delete n;
    }
}

TEST(trBaseMisc, ContentPathsInheritAndAnnounce)
{
    Tree t;
    Probe *p = t.Add(&t.root, "P");
    Probe *c = t.Add(p, "C");
    t.root.SetOrphanedContentFilePath(trString("/orphan/"));
    EXPECT_EQ(Str(c->ContentFilePath()) + " " + Str(t.root.ContentFilePath()), "/orphan/ /orphan/");
    Console console;
    p->SetAbsoluteContentFilePathForChildren(trString("/work/"));
    EXPECT_EQ(console.Done(), "Content path for children of \"/P\" set to \"/work/\"\n");
    EXPECT_EQ(Str(c->ContentFilePath()) + " " + Str(p->ContentFilePath()) + " " +
                  Str(c->AbsoluteContentFilePathForChildren()),
              "/work/ /orphan/ /work/");
}

// A project root declares the frame range.
class FrameRoot : public Probe {
public:
    double current = 12.5, start = 1.7, end = -0.5;
    long iCurrent = Param(current, "current_frame", 12.5), iStart = Param(start, "start_frame", 1.7),
         iEnd = Param(end, "end_frame", -0.5);
};

TEST(trBaseMisc, FramesComeFromTheRootAndAnAttachedNodeIsNoChild)
{
    TestClass(kClass);
    FrameRoot root;
    trBase *kid = root.CreateChild(trString(kClass));
    // The end frame is floored, not truncated.
    EXPECT_TRUE(kid->GetCurrentFrame() == 12.5 && kid->GetStartFrame() == 1 && kid->GetEndFrame() == -1);
    Probe bare;
    EXPECT_TRUE(bare.GetCurrentFrame() == 0.0 && bare.GetEndFrame() == 0);
    // Attached without entering the list: it has a parent, is no root and no child.
    Probe loose;
    EXPECT_TRUE(loose.MayAffectPreviews());
    EXPECT_EQ(loose.Init(&root, 0), 1);
    EXPECT_TRUE(loose.Parent() == &root && !loose.IsRoot() && !loose.MayAffectPreviews());
    EXPECT_EQ(root.NumChildren(), 1);
    loose.Init(nullptr, 0);
}

TEST(trBaseMisc, BundlesAndTheirEnd)
{
    Tree t;
    Probe *hub = t.Add(&t.root, "hub");
    Probe *x = t.Add(&t.root, "x");
    Probe *y = t.Add(&t.root, "y");
    x->SetBundledWith(hub);
    y->SetBundledWith(hub);
    EXPECT_EQ(hub->GetBundledNodeList(), std::list<trBase *>({x, y}));
    x->SetBundledWith(y);
    EXPECT_EQ(hub->GetBundledNodeList(), std::list<trBase *>({y}));
    EXPECT_EQ(x->GetBundledWith(), y);
    t.root.DestroyChild(trString("y")); // x is left bundled with nothing
    EXPECT_EQ(x->GetBundledWith(), nullptr);
    EXPECT_TRUE(hub->GetBundledNodeList().empty());
}

class UserMade : public Probe {
public:
    long OnUserCreate(unsigned char arg) override { return arg == 1 ? 5 : 6; }
};

TEST(trBaseMisc, UserCreateReportsToUndoOnlyForArgumentOne)
{
    static std::vector<trBase *> created;
    created.clear();
    trUndoNodeCreation = [](std::vector<trBase *> &nodes) { created.insert(created.end(), nodes.begin(), nodes.end()); };
    UserMade n;
    EXPECT_EQ(n.UserCreate(0), 6);
    EXPECT_TRUE(created.empty());
    EXPECT_EQ(n.UserCreate(1), 5);
    EXPECT_EQ(created, std::vector<trBase *>({&n}));
    trUndoNodeCreation = nullptr;
}

} // namespace
