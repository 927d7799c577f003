#pragma once
// The tree operations that both octree kinds share: splitting a node into eight,
// collapsing a subtree, and walking down to the node of a requested size. Private to
// the octree sources; each node class lets it at its members.

#include "foundation/trVector.h"
#include "scene/trOctree.h"

#include <new>

struct trOctreeOps {
    template <class Node> static int Subdivide(Node &n)
    {
        if (n.branches)
            return 0;
        using Branches = typename Node::Branches;
        Branches *b = n.allocator ? n.allocator->Get() : new (std::nothrow) Branches;
        if (!b)
            return 0;
        trVector const half = n.size * 0.5;
        for (int i = 0; i < 8; ++i) {
            Node &child = b->node[i];
            child.Init(&n, n.corner + trVector(i & 1 ? half.x : 0.0, i & 2 ? half.y : 0.0, i & 4 ? half.z : 0.0),
                       half);
            child.value = n.value;
        }
        n.branches = b;
        return 1;
    }

    template <class Node> static int Collapse(Node &n)
    {
        if (!n.branches)
            return 0;
        int removed = 0;
        for (Node &child : n.branches->node)
            removed += child.Collapse();
        if (n.allocator)
            n.allocator->GiveBack(n.branches);
        else
            delete n.branches;
        n.branches = nullptr;
        return removed + 8;
    }

    template <class Node> static Node *GetNode(Node &n, trVector const &P, double requestSize, int *created)
    {
        if (created)
            *created = 0;
        // Written so that a NaN coordinate counts as outside.
        for (int axis = 0; axis < 3; ++axis)
            if (!(P(axis) >= n.corner(axis) && P(axis) < n.corner(axis) + n.size(axis)))
                return nullptr;
        // A size of zero, below or NaN would split without end.
        if (!(requestSize > 0.0))
            return nullptr;
        double const m = n.size.MaxComp();
        if (requestSize >= 2.0 * m)
            return n.parent ? n.parent : &n;
        if (requestSize >= m)
            return &n;
        Node *node = &n;
        for (;;) {
            if (!node->branches) {
                if (!node->Subdivide())
                    return node; // out of memory: the finest node there is
                if (created)
                    *created += 8;
            }
            node = &node->branches->node[trOctreeOctant(P, node->corner, node->size)];
            if (requestSize >= node->size.MaxComp())
                return node;
        }
    }
};
