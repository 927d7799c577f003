#pragma once
// The octree of trOctree.h with a recency list through its nodes, for caches with
// a memory budget: the caller keeps the list's ends, uses nodes as it reads them,
// and evicts from the oldest end. Not locked inside: callers lock a shared tree.

#include "scene/trOctree.h"

template <class T>
class trLRUOctree;

template <class T>
struct trLRUOctreeBranches {
    trLRUOctree<T> node[8];
};

// A node's neighbours in the recency list.
template <class Node>
struct trLRUOctreeLinks {
    Node *LRUNewer = nullptr;
    Node *LRUOlder = nullptr;
};

template <class T>
class trLRUOctree
    : public trOctreeNode<trLRUOctree<T>, T, trLRUOctreeBranches<T>, trLRUOctreeLinks<trLRUOctree<T>>> {
    using Base = trOctreeNode<trLRUOctree<T>, T, trLRUOctreeBranches<T>, trLRUOctreeLinks<trLRUOctree<T>>>;

public:
    // A node still in a recency list must be forgotten before it goes.
    using Base::Base;

    trLRUOctree *Newer() const { return links.LRUNewer; }
    trLRUOctree *Older() const { return links.LRUOlder; }

    // GetNode (nodes made on the way are not put in the list), then LRUUse of the
    // node found.
    trLRUOctree *LRUGetNode(trVector const &P, double requestSize, int *created, trLRUOctree *&head,
                            trLRUOctree *&tail);

    // head is the oldest node, tail the newest.
    // Makes this node and each parent up the path the newest, stopping at a node
    // already newest.
    void LRUUse(trLRUOctree *&head, trLRUOctree *&tail);
    // Takes every node below, then this one, out of the list.
    void LRUForget(trLRUOctree *&head, trLRUOctree *&tail);
    // Gives back every node below (out of the list first), marks this node not
    // valid and takes it out of the list. *count is the number of nodes given back.
    void LRUDelete(trLRUOctree *&head, trLRUOctree *&tail, int *count);
    // Whether this node is in a list with those ends.
    bool IsInList(trLRUOctree const *head) const { return links.LRUOlder || links.LRUNewer || head == this; }

private:
    using Base::branches;
    using Base::links;
    using Base::parent;
    using Base::valid;

    void Unhook(trLRUOctree *&head, trLRUOctree *&tail);
    void PushNewest(trLRUOctree *&head, trLRUOctree *&tail);
};

extern template class trLRUOctree<float>;
extern template class trLRUOctree<double>;
extern template class trLRUOctree<long>;
extern template class trLRUOctree<unsigned long>;
extern template class trLRUOctree<trFCol>;
extern template class trLRUOctree<trVector>;
extern template class trLRUOctree<trFColVectorPair>;
extern template class trLRUOctree<void *>;
extern template class trLRUOctree<unsigned long *>;
