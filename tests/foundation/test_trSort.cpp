#include "foundation/trRand.h"
#include "foundation/trSort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

template <class T>
void ExpectSortedPermutation(std::vector<T> sorted, std::vector<T> original)
{
    for (size_t i = 1; i < sorted.size(); ++i)
        ASSERT_LE(sorted[i - 1].key, sorted[i].key) << "at " << i;
    auto byTag = [](T const &a, T const &b) { return a.key < b.key || (a.key == b.key && a.tag < b.tag); };
    std::sort(sorted.begin(), sorted.end(), byTag);
    std::sort(original.begin(), original.end(), byTag);
    for (size_t i = 0; i < sorted.size(); ++i) {
        ASSERT_EQ(sorted[i].key, original[i].key);
        ASSERT_EQ(sorted[i].tag, original[i].tag) << "elements must travel with their keys";
    }
}

std::vector<trTaggedSortElmt> Make(long count, int pattern)
{
    trRand rand;
    rand.Seed(count);
    std::vector<trTaggedSortElmt> v(count);
    for (long i = 0; i < count; ++i) {
        double key = 0;
        switch (pattern) {
        case 0: key = rand.Double(); break;           // random
        case 1: key = double(i); break;                // ascending
        case 2: key = double(count - i); break;        // descending
        case 3: key = double(rand.Int() % 4); break;   // many equal keys
        case 4: key = 5.0; break;                      // all equal
        case 5: key = double(i % 2 ? i : count - i); break; // organ pipe
        }
        v[i] = {(unsigned long)i, key};
    }
    return v;
}

} // namespace

TEST(trFastQSort, SortsEveryShapeOfInput)
{
    trFastQSort<trTaggedSortElmt> sorter;
    trSort<trTaggedSortElmt> &base = sorter;
    for (long count : {0L, 1L, 2L, 3L, 4L, 5L, 6L, 7L, 16L, 17L, 100L, 1000L, 20000L}) {
        for (int pattern = 0; pattern < 6; ++pattern) {
            auto v = Make(count, pattern);
            auto original = v;
            base.Sort(v.data(), long(v.size()));
            SCOPED_TRACE(testing::Message() << "count " << count << " pattern " << pattern);
            ExpectSortedPermutation(v, original);
        }
    }
}

TEST(trFastQSort, SortsFortyByteRecordsByTheirLastMemberAndAdversarialInputs)
{
    std::vector<trTriSortElmt> v(5000);
    trRand rand;
    rand.Seed(3);
    for (size_t i = 0; i < v.size(); ++i)
        v[i] = {nullptr, &v, i, i * 2, -rand.Double()};
    trFastQSort<trTriSortElmt> sorter;
    sorter.Sort(v.data(), long(v.size()));
    for (size_t i = 1; i < v.size(); ++i)
        ASSERT_TRUE(v[i - 1].key <= v[i].key && v[i].groupIndex == v[i].triIndex * 2) << i;

    // A sawtooth of many runs; with recursion on the smaller side the depth stays small.
    std::vector<trTaggedSortElmt> saw(2000000);
    for (size_t i = 0; i < saw.size(); ++i)
        saw[i] = {i, double((i * 7919) % 1000)};
    trFastQSort<trTaggedSortElmt>().Sort(saw.data(), long(saw.size()));
    for (size_t i = 1; i < saw.size(); ++i)
        ASSERT_LE(saw[i - 1].key, saw[i].key);
}
