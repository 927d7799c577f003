#include "scene/trOctree.h"

#include "foundation/trRay.h"
#include "scene/trOctreeOps.h"

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

template <class T>
trOctree<T>::~trOctree()
{
    if (!allocator)
        Collapse();
}

template <class T>
long trOctree<T>::Init(trOctree *p, trVector const &c, trVector const &s)
{
    parent = p;
    if (p)
        allocator = p->allocator;
    corner = c;
    size = s;
    valid = false;
    branches = nullptr;
    return 1;
}

template <class T>
int trOctree<T>::Subdivide()
{
    return trOctreeOps::Subdivide(*this);
}

template <class T>
int trOctree<T>::Collapse()
{
    return trOctreeOps::Collapse(*this);
}

template <class T>
trOctree<T> *trOctree<T>::GetNode(trVector const &P, double requestSize, int *created)
{
    return trOctreeOps::GetNode(*this, P, requestSize, created);
}

template <class T>
char const *trOctree<T>::BestBranchOrder(trRay const &ray) const
{
    return trOctreeBranchOrder(ray.origin, Center());
}

template class trOctree<float>;
template class trOctree<double>;
template class trOctree<long>;
template class trOctree<unsigned long>;
template class trOctree<trFCol>;
template class trOctree<trVector>;
template class trOctree<trFColVectorPair>;
template class trOctree<void *>;
template class trOctree<unsigned long *>;

// A pool pointer, the value and its flag, the box, and two links.
static_assert(sizeof(trOctree<float>) == 80, "a float octree node is 80 bytes");
static_assert(sizeof(trOctree<double>) == 88, "a double octree node is 88 bytes");
