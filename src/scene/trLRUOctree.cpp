#include "scene/trLRUOctree.h"

#include "foundation/trRay.h"
#include "scene/trOctreeOps.h"

#include <new>

template <class T>
trLRUOctree<T>::~trLRUOctree()
{
    if (!allocator)
        Collapse();
}

template <class T>
long trLRUOctree<T>::Init(trLRUOctree *p, trVector const &c, trVector const &s)
{
    parent = p;
    if (p)
        allocator = p->allocator;
    LRUNewer = LRUOlder = nullptr;
    corner = c;
    size = s;
    valid = false;
    branches = nullptr;
    return 1;
}

template <class T>
int trLRUOctree<T>::Subdivide()
{
    return trOctreeOps::Subdivide(*this);
}

template <class T>
int trLRUOctree<T>::Collapse()
{
    return trOctreeOps::Collapse(*this);
}

template <class T>
trLRUOctree<T> *trLRUOctree<T>::GetNode(trVector const &P, double requestSize, int *created)
{
    return trOctreeOps::GetNode(*this, P, requestSize, created);
}

template <class T>
trLRUOctree<T> *trLRUOctree<T>::LRUGetNode(trVector const &P, double requestSize, int *created,
                                           trLRUOctree *&head, trLRUOctree *&tail)
{
    trLRUOctree *node = GetNode(P, requestSize, created);
    if (node)
        node->LRUUse(head, tail);
    return node;
}

template <class T>
char const *trLRUOctree<T>::BestBranchOrder(trRay const &ray) const
{
    return trOctreeBranchOrder(ray.origin, Center());
}

template <class T>
void trLRUOctree<T>::Unhook(trLRUOctree *&head, trLRUOctree *&tail)
{
    if (LRUOlder)
        LRUOlder->LRUNewer = LRUNewer;
    else if (head == this)
        head = LRUNewer;
    if (LRUNewer)
        LRUNewer->LRUOlder = LRUOlder;
    else if (tail == this)
        tail = LRUOlder;
    LRUOlder = LRUNewer = nullptr;
}

template <class T>
void trLRUOctree<T>::PushNewest(trLRUOctree *&head, trLRUOctree *&tail)
{
    LRUOlder = tail;
    LRUNewer = nullptr;
    if (tail)
        tail->LRUNewer = this;
    else
        head = this;
    tail = this;
}

template <class T>
void trLRUOctree<T>::LRUUse(trLRUOctree *&head, trLRUOctree *&tail)
{
    for (trLRUOctree *node = this; node && node != tail; node = node->parent) {
        node->Unhook(head, tail);
        node->PushNewest(head, tail);
    }
}

template <class T>
void trLRUOctree<T>::LRUForget(trLRUOctree *&head, trLRUOctree *&tail)
{
    if (branches)
        for (trLRUOctree &child : branches->node)
            child.LRUForget(head, tail);
    Unhook(head, tail);
}

template <class T>
void trLRUOctree<T>::LRUDelete(trLRUOctree *&head, trLRUOctree *&tail, int *count)
{
    int removed = 0;
    if (branches) {
        for (trLRUOctree &child : branches->node)
            child.LRUForget(head, tail);
        removed = Collapse();
    }
    valid = false;
    Unhook(head, tail);
    if (count)
        *count = removed;
}

template class trLRUOctree<float>;
template class trLRUOctree<double>;
template class trLRUOctree<long>;
template class trLRUOctree<unsigned long>;
template class trLRUOctree<trFCol>;
template class trLRUOctree<trVector>;
template class trLRUOctree<trFColVectorPair>;
template class trLRUOctree<void *>;
template class trLRUOctree<unsigned long *>;

// The octree node and the two recency links.
static_assert(sizeof(trLRUOctree<float>) == 96, "a float LRU octree node is 96 bytes");
