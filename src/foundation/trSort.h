#pragma once
// Sorting of records that carry a double key, ascending.

#include <utility>

template <class T>
class trSort {
public:
    virtual ~trSort() = default;
    virtual void Sort(T *elements, long count) = 0;
};

// Median-of-three quicksort that leaves ranges under 5 elements alone, then one
// insertion-sort pass over the whole array. Not stable: equal keys may change order.
// T needs a public double `key`.
template <class T>
class trFastQSort : public trSort<T> {
public:
    void Sort(T *elements, long count) override
    {
        if (count < 2)
            return;
        QuickSort(elements, 0, count - 1);
        InsertionSort(elements, count);
    }

private:
    static void QuickSort(T *a, long lo, long hi)
    {
        while (hi - lo >= 5) {
            long mid = (lo + hi) / 2;
            if (a[mid].key < a[lo].key)
                std::swap(a[mid], a[lo]);
            if (a[hi].key < a[lo].key)
                std::swap(a[hi], a[lo]);
            if (a[hi].key < a[mid].key)
                std::swap(a[hi], a[mid]);
            // Park the median one before the last: a[lo] and a[hi] now bound both scans.
            std::swap(a[mid], a[hi - 1]);
            double const pivot = a[hi - 1].key;
            long i = lo;
            long j = hi - 1;
            for (;;) {
                while (a[++i].key < pivot) {
                }
                while (pivot < a[--j].key) {
                }
                if (j < i)
                    break;
                std::swap(a[i], a[j]);
            }
            std::swap(a[i], a[hi - 1]);
            // The two parts are disjoint, so the order of visiting them doesn't change
            // the result; recursing into the smaller one bounds the stack depth.
            if (j - lo < hi - (i + 1)) {
                QuickSort(a, lo, j);
                lo = i + 1;
            } else {
                QuickSort(a, i + 1, hi);
                hi = j;
            }
        }
    }

    static void InsertionSort(T *a, long count)
    {
        for (long i = 1; i < count; ++i) {
            if (!(a[i].key < a[i - 1].key))
                continue;
            T moving = a[i];
            long j = i;
            do {
                a[j] = a[j - 1];
                --j;
            } while (j > 0 && moving.key < a[j - 1].key);
            a[j] = moving;
        }
    }
};

// A tag with its key: 16 bytes, key second.
struct trTaggedSortElmt {
    unsigned long tag;
    double key;
};

// An element of the rasteriser's draw order, with its group: 40 bytes, key last.
struct trTriSortElmt {
    void *tri;
    void *group;
    unsigned long triIndex;
    unsigned long groupIndex;
    double key;
};

static_assert(sizeof(trTaggedSortElmt) == 16);
static_assert(sizeof(trTriSortElmt) == 40);
