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

template <class T>
class trLRUOctree {
public:
    using Branches = trLRUOctreeBranches<T>;
    using Pool = trOctreeBranchPool<Branches>;

    explicit trLRUOctree(Pool *pool = nullptr) : allocator(pool) {}
    // Branches of plain allocation are freed; those of a pool stay with the pool.
    // A node still in a recency list must be forgotten first.
    ~trLRUOctree();
    trLRUOctree(trLRUOctree const &) = delete;
    trLRUOctree &operator=(trLRUOctree const &) = delete;

    long Init(trLRUOctree *parent, trVector const &corner, trVector const &size);

    trVector Center() const { return corner + size * 0.5; }
    trVector const &Corner() const { return corner; }
    trVector const &Size() const { return size; }
    trBoundingBox BoundingBox() const { return trBoundingBox(corner, corner + size); }
    trLRUOctree *Parent() const { return parent; }
    trLRUOctree *Branch(int i) const { return branches && i >= 0 && i < 8 ? &branches->node[i] : nullptr; }
    bool HasBranches() const { return branches != nullptr; }
    trLRUOctree *Newer() const { return LRUNewer; }
    trLRUOctree *Older() const { return LRUOlder; }

    T const &Value() const { return value; }
    void SetValue(T const &v)
    {
        value = v;
        valid = true;
    }
    bool IsValid() const { return valid; }
    void Invalidate() { valid = false; }
    bool Resolves(double requestSize) const { return requestSize >= size.MaxComp(); }

    // As trOctree::GetNode; nodes made on the way are not put in the list.
    trLRUOctree *GetNode(trVector const &P, double requestSize, int *created);
    // GetNode, then LRUUse of the node found.
    trLRUOctree *LRUGetNode(trVector const &P, double requestSize, int *created, trLRUOctree *&head,
                            trLRUOctree *&tail);

    int Subdivide();
    // Removes every node below and returns how many; they must be out of the list
    // (LRUDelete takes them out first).
    int Collapse();
    void DestroyBranches() { Collapse(); }
    char const *BestBranchOrder(trRay const &ray) const;

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
    bool IsInList(trLRUOctree const *head) const { return LRUOlder || LRUNewer || head == this; }

private:
    friend struct trOctreeOps;
    void Unhook(trLRUOctree *&head, trLRUOctree *&tail);
    void PushNewest(trLRUOctree *&head, trLRUOctree *&tail);

    Pool *allocator = nullptr;
    trLRUOctree *LRUNewer = nullptr;
    trLRUOctree *LRUOlder = nullptr;
    T value{};
    bool valid = false;
    trVector corner;
    trVector size;
    Branches *branches = nullptr;
    trLRUOctree *parent = nullptr;
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
