#include "scene/trLRUOctree.h"

template <class T>
trLRUOctree<T> *trLRUOctree<T>::LRUGetNode(trVector const &P, double requestSize, int *created,
                                           trLRUOctree *&head, trLRUOctree *&tail)
{
    trLRUOctree *node = this->GetNode(P, requestSize, created);
    if (node)
        node->LRUUse(head, tail);
    return node;
}

template <class T>
void trLRUOctree<T>::Unhook(trLRUOctree *&head, trLRUOctree *&tail)
{
    if (links.LRUOlder)
        links.LRUOlder->links.LRUNewer = links.LRUNewer;
    else if (head == this)
        head = links.LRUNewer;
    if (links.LRUNewer)
        links.LRUNewer->links.LRUOlder = links.LRUOlder;
    else if (tail == this)
        tail = links.LRUOlder;
    links.LRUOlder = links.LRUNewer = nullptr;
}

template <class T>
void trLRUOctree<T>::PushNewest(trLRUOctree *&head, trLRUOctree *&tail)
{
    links.LRUOlder = tail;
    links.LRUNewer = nullptr;
    if (tail)
        tail->links.LRUNewer = this;
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
        removed = this->Collapse();
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
