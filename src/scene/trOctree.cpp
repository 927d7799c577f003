#include "scene/trOctree.h"

#include "foundation/trRay.h"
#include "scene/trLRUOctree.h"

#include <cmath>
#include <new>

char const *trOctreeBranchOrder(trVector const &origin, trVector const &centre)
{
    // Row s lists s ^ k for k = 0, 1, 2, 4, 3, 5, 6, 7: the child on the ray's
    // side first, then those one face away, two, and the far one last.
    static char const *const orders[8] = {"01243567", "10352476", "23061745", "32170654",
                                          "45607123", "54716032", "67425301", "76534210"};
    int const s = (origin.x >= centre.x ? 1 : 0) | (origin.y >= centre.y ? 2 : 0) | (origin.z >= centre.z ? 4 : 0);
    return orders[s];
}

int trOctreeOctant(trVector const &p, trVector const &corner, trVector const &size)
{
    int octant = 0;
    for (int axis = 0; axis < 3; ++axis) {
        double const f = std::floor((p(axis) - corner(axis)) / trGuardedDivisor(size(axis)) * 2.0);
        if (f >= 1.0)
            octant |= 1 << axis;
    }
    return octant;
}

template <class Node, class T, class Block, class Links>
long trOctreeNode<Node, T, Block, Links>::Init(Node *p, trVector const &c, trVector const &s)
{
    parent = p;
    if (p)
        allocator = p->allocator;
    links = Links{};
    corner = c;
    size = s;
    valid = false;
    branches = nullptr;
    return 1;
}

template <class Node, class T, class Block, class Links>
int trOctreeNode<Node, T, Block, Links>::Subdivide()
{
    if (branches)
        return 0;
    Block *b = allocator ? allocator->Get() : new (std::nothrow) Block;
    if (!b)
        return 0;
    trVector const half = size * 0.5;
    for (int i = 0; i < 8; ++i) {
        trOctreeNode &child = b->node[i];
        child.Init(static_cast<Node *>(this),
                   corner + trVector(i & 1 ? half.x : 0.0, i & 2 ? half.y : 0.0, i & 4 ? half.z : 0.0), half);
        child.value = value;
    }
    branches = b;
    return 1;
}

template <class Node, class T, class Block, class Links>
int trOctreeNode<Node, T, Block, Links>::Collapse()
{
    if (!branches)
        return 0;
    int removed = 0;
    for (trOctreeNode &child : branches->node)
        removed += child.Collapse();
    if (allocator)
        allocator->GiveBack(branches);
    else
        delete branches;
    branches = nullptr;
    return removed + 8;
}

template <class Node, class T, class Block, class Links>
Node *trOctreeNode<Node, T, Block, Links>::GetNode(trVector const &P, double requestSize, int *created)
{
    if (created)
        *created = 0;
    // Written so that a NaN coordinate counts as outside.
    for (int axis = 0; axis < 3; ++axis)
        if (!(P(axis) >= corner(axis) && P(axis) < corner(axis) + size(axis)))
            return nullptr;
    // A size of zero, below or NaN would split without end.
    if (!(requestSize > 0.0))
        return nullptr;
    double const m = size.MaxComp();
    if (requestSize >= 2.0 * m)
        return parent ? parent : static_cast<Node *>(this);
    if (requestSize >= m)
        return static_cast<Node *>(this);
    // The walk goes through this class's view of each node, where its fields are.
    trOctreeNode *node = this;
    for (;;) {
        if (!node->branches) {
            if (!node->Subdivide())
                return static_cast<Node *>(node); // out of memory: the finest node there is
            if (created)
                *created += 8;
        }
        node = &node->branches->node[trOctreeOctant(P, node->corner, node->size)];
        if (requestSize >= node->size.MaxComp())
            return static_cast<Node *>(node);
    }
}

template <class Node, class T, class Block, class Links>
char const *trOctreeNode<Node, T, Block, Links>::BestBranchOrder(trRay const &ray) const
{
    return trOctreeBranchOrder(ray.origin, Center());
}

// Both kinds over the nine value types of the lighting caches.
#define OSTREL_OCTREE_KINDS(T)                                                                                     \
    template class trOctreeNode<trOctree<T>, T, trOctreeBranches<T>, trOctreeNoLinks>;                           \
    template class trOctreeNode<trLRUOctree<T>, T, trLRUOctreeBranches<T>, trLRUOctreeLinks<trLRUOctree<T>>>;
OSTREL_OCTREE_KINDS(float)
OSTREL_OCTREE_KINDS(double)
OSTREL_OCTREE_KINDS(long)
OSTREL_OCTREE_KINDS(unsigned long)
OSTREL_OCTREE_KINDS(trFCol)
OSTREL_OCTREE_KINDS(trVector)
OSTREL_OCTREE_KINDS(trFColVectorPair)
OSTREL_OCTREE_KINDS(void *)
OSTREL_OCTREE_KINDS(unsigned long *)
#undef OSTREL_OCTREE_KINDS

// A pool pointer, the value and its flag, the box, and two links.
static_assert(sizeof(trOctree<float>) == 80, "a float octree node is 80 bytes");
static_assert(sizeof(trOctree<double>) == 88, "a double octree node is 88 bytes");
