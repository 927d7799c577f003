// Generic octrees: finding and making nodes, collapsing, branch order, and the
// recency list of the LRU variant.

#include "foundation/trRay.h"
#include "scene/trLRUOctree.h"
#include "scene/trOctree.h"

#include <gtest/gtest.h>

#include <bitset>
#include <cmath>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace {

template <class Tree>
void InitRoot(Tree &root, double side = 8.0)
{
    root.Init(nullptr, trVector(0, 0, 0), trVector(side, side, side));
}

using LRU = trLRUOctree<float>;

// Walks the list from oldest to newest, checking the back links on the way.
std::vector<LRU *> ListOf(LRU *head, LRU *tail)
{
    std::vector<LRU *> nodes;
    LRU *previous = nullptr;
    for (LRU *n = head; n; n = n->Newer()) {
        EXPECT_EQ(n->Older(), previous);
        nodes.push_back(n);
        previous = n;
        if (nodes.size() > 100000)
            break;
    }
    EXPECT_EQ(previous, tail);
    return nodes;
}

} // namespace

TEST(trOctree, PointsOutsideAndBadSizesGiveNullAndCoarseRequestsStopAbove)
{
    trOctree<float> root;
    InitRoot(root);
    double const nan = std::numeric_limits<double>::quiet_NaN();
    // Outside (the upper face is), not a number, or not a positive size.
    for (auto [P, size] : {std::pair{trVector(8, 1, 1), 1.0}, {trVector(1, 1, -1e-9), 1.0}, {trVector(nan, 1, 1), 1.0},
                           {trVector(1, 1, 1), 0.0}, {trVector(1, 1, 1), -2.0}, {trVector(1, 1, 1), nan}}) {
        int created = -1;
        EXPECT_EQ(root.GetNode(P, size, &created), nullptr) << P.x << " " << P.z << " " << size;
        EXPECT_EQ(created, 0);
    }
    EXPECT_FALSE(root.HasBranches());
    // The lower face is inside. Coarse requests stop at the root or the parent.
    EXPECT_EQ(root.GetNode(trVector(0, 0, 0), 8.0, nullptr), &root);
    EXPECT_EQ(root.GetNode(trVector(1, 1, 1), 100.0, nullptr), &root);
    EXPECT_EQ(root.GetNode(trVector(1, 1, 1), 8.0, nullptr), &root);
    EXPECT_TRUE(root.Resolves(8.0) && !root.Resolves(7.9));
    trOctree<float> *child = root.GetNode(trVector(1, 1, 1), 4.0, nullptr);
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->Parent(), &root);
    // Asked of a child, a request twice its size or more gives its parent.
    EXPECT_EQ(child->GetNode(trVector(1, 1, 1), 8.0, nullptr), &root);
    EXPECT_EQ(child->GetNode(trVector(1, 1, 1), 4.0, nullptr), child);
}

TEST(trOctree, FindsTheLeafThatHoldsThePoint)
{
    trOctree<float> root;
    InitRoot(root);
    root.SetValue(0.25f);
    trVector const P(5.5, 0.5, 3.2);
    int created = -1;
    trOctree<float> *leaf = root.GetNode(P, 1.0, &created);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(created, 24);  // three levels of eight
    // Cells of size 1 are whole-number boxes: the one at floor(P).
    EXPECT_EQ(leaf->Corner(), trVector(5, 0, 3));
    EXPECT_EQ(leaf->Size(), trVector(1, 1, 1));
    EXPECT_TRUE(leaf->BoundingBox().Contains(P));
    EXPECT_FALSE(leaf->IsValid());
    EXPECT_EQ(leaf->Value(), 0.25f);  // copied down on the way
    leaf->SetValue(2.0f);
    EXPECT_TRUE(leaf->IsValid());
    // The same cell again makes nothing; a finer request below it makes eight.
    EXPECT_EQ(root.GetNode(trVector(5.9, 0.1, 3.9), 1.0, &created), leaf);
    EXPECT_EQ(created, 0);
    trOctree<float> *finer = root.GetNode(P, 0.5, &created);
    EXPECT_EQ(created, 8);
    EXPECT_EQ(finer->Parent(), leaf);
    EXPECT_EQ(finer->Corner(), trVector(5.5, 0.5, 3.0));
    EXPECT_EQ(finer->Parent()->Parent()->Parent()->Parent(), &root);  // four levels down
}

TEST(trOctree, ChildrenAreNumberedXPlusTwoYPlusFourZ)
{
    trOctree<long> root;
    root.Init(nullptr, trVector(-2, 10, 4), trVector(4, 2, 8));
    root.SetValue(7);
    ASSERT_EQ(root.Subdivide(), 1);
    EXPECT_EQ(root.Subdivide(), 0);  // already split
    for (int i = 0; i < 8; ++i) {
        trOctree<long> *c = root.Branch(i);
        ASSERT_NE(c, nullptr);
        EXPECT_EQ(c->Corner(), trVector(i & 1 ? 0 : -2, i & 2 ? 11 : 10, i & 4 ? 8 : 4));
        EXPECT_EQ(c->Size(), trVector(2, 1, 4));
        EXPECT_EQ(c->Value(), 7);
        EXPECT_EQ(trOctreeOctant(c->Center(), root.Corner(), root.Size()), i);
    }
    EXPECT_TRUE(root.Branch(8) == nullptr && root.Branch(-1) == nullptr);
    // A flat box still finds octants along its non-zero axes.
    EXPECT_EQ(trOctreeOctant(trVector(1, 0, 1), trVector(0, 0, 0), trVector(1, 0, 1)), 5);
}

TEST(trOctree, CollapseCountsEveryNodeRemovedAndAPoolReusesTheBlocks)
{
    trOctree<float>::Pool pool(16);
    trOctree<float> root(&pool);
    InitRoot(root);
    root.GetNode(trVector(1, 1, 1), 1.0, nullptr);
    root.GetNode(trVector(7, 7, 7), 1.0, nullptr);  // shares only the root's split
    EXPECT_EQ(pool.NumInUse(), 5u);
    EXPECT_EQ(root.Collapse(), 8 + 2 * (8 + 8));
    EXPECT_FALSE(root.HasBranches());
    EXPECT_EQ(root.Collapse(), 0);
    EXPECT_TRUE(pool.NumInUse() == 0u && pool.NumFree() == 5u);
    trOctree<float> *leaf = root.GetNode(trVector(6, 6, 6), 1.0, nullptr);
    EXPECT_EQ(pool.NumItems(), 5u);  // no new blocks
    EXPECT_EQ(leaf->Corner(), trVector(6, 6, 6));
    EXPECT_FALSE(leaf->HasBranches());  // a reused block comes back clean
}

TEST(trOctree, BestBranchOrderPutsNearChildrenFirst)
{
    trOctree<float> root;
    InitRoot(root);  // centre (4, 4, 4)
    for (int s = 0; s < 8; ++s) {
        trVector const origin(s & 1 ? 9 : -1, s & 2 ? 9 : -1, s & 4 ? 9 : -1);
        std::string const order = root.BestBranchOrder(trRay(origin, trVector(4, 4, 4)));
        ASSERT_EQ(order.size(), 8u);
        EXPECT_EQ(std::set<char>(order.begin(), order.end()).size(), 8u);
        EXPECT_EQ(order[0] - '0', s);  // the child on the ray's side
        EXPECT_EQ(order[7] - '0', 7 - s);  // the far one last
        // Children sorted by how many faces lie between them and the first.
        int last = 0;
        for (char c : order) {
            int const steps = int(std::bitset<3>((c - '0') ^ s).count());
            EXPECT_GE(steps, last);
            last = steps;
        }
    }
    // Along a diagonal the ray meets child 0 first and child 7 last.
    std::string const order = root.BestBranchOrder(trRay(trVector(-1, -1, -1), trVector(9, 9, 9)));
    EXPECT_LT(order.find('0'), order.find('7'));
}

// Every value type the trees are made for can find and split nodes.
template <class T>
class trOctreeTyped : public testing::Test {};
using OctreeValues = testing::Types<float, double, long, unsigned long, trFCol, trVector, trFColVectorPair, void *,
                                    unsigned long *>;
TYPED_TEST_SUITE(trOctreeTyped, OctreeValues);

TYPED_TEST(trOctreeTyped, BothTreesFindAndCollapse)
{
    trOctree<TypeParam> plain;
    InitRoot(plain);
    plain.SetValue(TypeParam());
    EXPECT_NE(plain.GetNode(trVector(3, 3, 3), 2.0, nullptr), nullptr);
    EXPECT_EQ(plain.Collapse(), 16);

    typename trLRUOctree<TypeParam>::Pool pool(8);
    trLRUOctree<TypeParam> lru(&pool);
    InitRoot(lru);
    trLRUOctree<TypeParam> *head = nullptr, *tail = nullptr;
    trLRUOctree<TypeParam> *node = lru.LRUGetNode(trVector(3, 3, 3), 2.0, nullptr, head, tail);
    ASSERT_NE(node, nullptr);
    EXPECT_TRUE(head == node && tail == &lru);
    int count = -1;
    lru.LRUDelete(head, tail, &count);
    EXPECT_EQ(count, 16);
    EXPECT_TRUE(head == nullptr && tail == nullptr);
}

TEST(trLRUOctree, UsingALeafMakesItsWholePathRecent)
{
    LRU root;
    InitRoot(root);
    LRU *head = nullptr, *tail = nullptr;
    LRU *a = root.LRUGetNode(trVector(1, 1, 1), 1.0, nullptr, head, tail);
    LRU *a1 = a->Parent(), *a2 = a1->Parent();
    // Oldest first: the leaf, then each parent, the root newest.
    EXPECT_EQ(ListOf(head, tail), (std::vector<LRU *>{a, a1, a2, &root}));
    LRU *b = root.LRUGetNode(trVector(7, 7, 7), 1.0, nullptr, head, tail);
    LRU *b1 = b->Parent(), *b2 = b1->Parent();
    // a's path is older than b's now; the shared root is newest.
    EXPECT_EQ(ListOf(head, tail), (std::vector<LRU *>{a, a1, a2, b, b1, b2, &root}));
    // Using a again puts its path back among the newest.
    a->LRUUse(head, tail);
    EXPECT_EQ(ListOf(head, tail), (std::vector<LRU *>{b, b1, b2, a, a1, a2, &root}));
}

TEST(trLRUOctree, EvictingANodeWithChildrenTakesThemOutOfTheListFirst)
{
    LRU::Pool pool(4);
    LRU root(&pool);
    InitRoot(root);
    LRU *head = nullptr, *tail = nullptr;
    LRU *deep = root.LRUGetNode(trVector(1, 1, 1), 1.0, nullptr, head, tail);
    LRU *other = root.LRUGetNode(trVector(7, 1, 1), 1.0, nullptr, head, tail);
    ASSERT_TRUE(deep && other);
    LRU *mid = deep->Parent()->Parent();  // the root's child that holds `deep`
    int count = -1;
    mid->LRUDelete(head, tail, &count);
    EXPECT_EQ(count, 16);  // two blocks below it
    EXPECT_FALSE(mid->HasBranches());
    EXPECT_FALSE(mid->IsInList(head));
    // Other's path and the root are left.
    EXPECT_EQ(ListOf(head, tail), (std::vector<LRU *>{other, other->Parent(), other->Parent()->Parent(), &root}));
    EXPECT_EQ(pool.NumInUse(), 3u);
    // A leaf gives nothing back, but leaves the list.
    other->LRUDelete(head, tail, &count);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(ListOf(head, tail).size(), 3u);
    root.LRUForget(head, tail);
    EXPECT_TRUE(head == nullptr && tail == nullptr);
}

TEST(trLRUOctree, ACacheEvictsOldestUnderABudget)
{
    LRU::Pool pool(64);
    LRU root(&pool);
    InitRoot(root, 1.0);
    LRU *head = nullptr, *tail = nullptr;
    long nodes = 1;
    long const budget = 200;
    auto point = [](int i) {
        return trVector(std::fmod(i * 0.618034, 1.0), std::fmod(i * 0.414214, 1.0), std::fmod(i * 0.732051, 1.0));
    };
    for (int i = 0; i < 2000; ++i) {
        int created = 0;
        LRU *n = root.LRUGetNode(point(i), 1.0 / 16.0, &created, head, tail);
        ASSERT_NE(n, nullptr);
        n->SetValue(float(i));
        nodes += created;
        while (nodes > budget && head && head != &root) {
            int count = 0;
            head->LRUDelete(head, tail, &count);
            nodes -= count;
        }
        ASSERT_LE(nodes, budget + 64);  // one fresh path over at most
        EXPECT_EQ(long(pool.NumInUse()) * 8 + 1, nodes);
    }
    // The newest value is still there.
    int created = -1;
    LRU *last = root.GetNode(point(1999), 1.0 / 16.0, &created);
    EXPECT_EQ(created, 0);
    EXPECT_TRUE(last->IsValid());
    EXPECT_EQ(last->Value(), 1999.0f);
    root.LRUForget(head, tail);
}
