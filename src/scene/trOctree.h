#pragma once
// A value stored at a point of space with a resolution: each node covers a box and
// splits into eight half-size children on demand. Used for caches of lighting.
// Trees are not locked inside: callers lock a shared tree.

#include "foundation/trBoundingBox.h"
#include "foundation/trChunkyAllocator.h"
#include "foundation/trColour.h"
#include "foundation/trVector.h"

#include <vector>

class trRay;

// A chunky allocator of branch blocks that takes blocks back for reuse, so a
// cache that collapses and regrows stays within the memory it has had.
template <class Block>
class trOctreeBranchPool : public trChunkyAllocator<Block> {
public:
    explicit trOctreeBranchPool(unsigned long chunkSize = 4096) : trChunkyAllocator<Block>(chunkSize) {}
    // A given-back block first, else a new one; null when out of memory.
    Block *Get()
    {
        if (!freeBlocks.empty()) {
            Block *b = freeBlocks.back();
            freeBlocks.pop_back();
            return b;
        }
        return this->GetItem();
    }
    void GiveBack(Block *block) { freeBlocks.push_back(block); }
    unsigned long NumFree() const { return freeBlocks.size(); }
    // Blocks handed out and not given back.
    unsigned long NumInUse() const { return this->NumItems() - freeBlocks.size(); }

private:
    std::vector<Block *> freeBlocks;
};

// The order in which a ray from `origin` meets the eight children of a node
// centred at `centre`: child numbers as the characters '0'..'7', nearest first.
char const *trOctreeBranchOrder(trVector const &origin, trVector const &centre);
// The child of a node (corner, size) that holds p: x + 2y + 4z, each bit from
// floor((p - corner) / size * 2) clamped to 0..1.
int trOctreeOctant(trVector const &p, trVector const &corner, trVector const &size);

// What both octree kinds are made of: the box, the value and its flag, the branch
// block and the link up, with the accessors and tree operations over them. `Node` is
// the kind itself, `Block` its block of eight branches, and `Links` what the kind
// keeps next to its pool pointer: nothing for trOctree, the recency list for
// trLRUOctree.
template <class Node, class T, class Block, class Links>
class trOctreeNode {
public:
    using Branches = Block;
    using Pool = trOctreeBranchPool<Block>;

    // A root; with a pool, branches come from it and go back to it.
    explicit trOctreeNode(Pool *pool = nullptr) : allocator(pool) {}
    // Branches of plain allocation are freed; those of a pool stay with the pool.
    ~trOctreeNode()
    {
        if (!allocator)
            Collapse();
    }
    trOctreeNode(trOctreeNode const &) = delete;
    trOctreeNode &operator=(trOctreeNode const &) = delete;

    // Places the node, outside any list; it takes its parent's pool. Returns 1.
    long Init(Node *parent, trVector const &corner, trVector const &size);

    trVector Center() const { return corner + size * 0.5; }
    trVector const &Corner() const { return corner; }
    trVector const &Size() const { return size; }
    trBoundingBox BoundingBox() const { return trBoundingBox(corner, corner + size); }
    Node *Parent() const { return parent; }
    // Null at a leaf or for i outside 0..7.
    Node *Branch(int i) const { return branches && i >= 0 && i < 8 ? &branches->node[i] : nullptr; }
    bool HasBranches() const { return branches != nullptr; }

    T const &Value() const { return value; }
    void SetValue(T const &v)
    {
        value = v;
        valid = true;
    }
    bool IsValid() const { return valid; }
    void Invalidate() { valid = false; }

    // Whether this node is as fine as a request of this size.
    bool Resolves(double requestSize) const { return requestSize >= size.MaxComp(); }

    // The node that holds P at the resolution `requestSize`, splitting nodes on the
    // way; *created (if given) counts the nodes made. Null when P is outside this
    // node, or when the size is not a positive number.
    Node *GetNode(trVector const &P, double requestSize, int *created);

    // Makes eight children that copy this node's value, not valid. 1, or 0 when
    // out of memory or already split.
    int Subdivide();
    // Removes every node below; returns how many.
    int Collapse();
    void DestroyBranches() { Collapse(); }

    char const *BestBranchOrder(trRay const &ray) const;

protected:
    Pool *allocator = nullptr;
    [[no_unique_address]] Links links;
    T value{};
    bool valid = false;
    trVector corner;
    trVector size;
    Block *branches = nullptr;
    Node *parent = nullptr;
};

template <class T>
class trOctree;

template <class T>
struct trOctreeBranches {
    trOctree<T> node[8];
};

struct trOctreeNoLinks {};

template <class T>
class trOctree : public trOctreeNode<trOctree<T>, T, trOctreeBranches<T>, trOctreeNoLinks> {
public:
    using trOctreeNode<trOctree<T>, T, trOctreeBranches<T>, trOctreeNoLinks>::trOctreeNode;
};
