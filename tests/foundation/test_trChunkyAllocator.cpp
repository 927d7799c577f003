#include "foundation/trChunkyAllocator.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {
struct Record {
    double value = 3.5;
    long tag = -1;
};
} // namespace

TEST(trChunkyAllocator, ItemsNeverMoveAsTheStoreGrows)
{
    trChunkyAllocator<Record> store(7);
    std::vector<Record *> handed;
    for (int i = 0; i < 100; ++i) {
        Record *r = store.GetItem();
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(r->value, 3.5) << "items come default-constructed";
        r->tag = i;
        handed.push_back(r);
    }
    EXPECT_EQ(store.NumItems(), 100ul);
    std::set<Record *> distinct(handed.begin(), handed.end());
    EXPECT_EQ(distinct.size(), handed.size());
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(&store.Item(i) == handed[i] && handed[i]->tag == i) << i;
    // Items of one chunk are contiguous.
    EXPECT_TRUE(handed[1] - handed[0] == 1 && handed[6] - handed[0] == 6);
}

TEST(trChunkyAllocator, CopiesShareChunksAndFreeThemOnce)
{
    auto *original = new trChunkyAllocator<Record>(4);
    for (int i = 0; i < 10; ++i)
        original->GetItem()->tag = i;
    trChunkyAllocator<Record> copy(*original);
    trChunkyAllocator<Record> assigned(1);
    assigned = *original;
    EXPECT_EQ(&copy.Item(9), &original->Item(9)) << "copies are shallow";
    delete original; // must not free what the copies still use
    EXPECT_TRUE(copy.Item(9).tag == 9 && assigned.Item(3).tag == 3);

    // Growing one copy leaves the other untouched.
    Record *extra = copy.GetItem();
    extra->tag = 77;
    EXPECT_TRUE(copy.NumItems() == 11ul && assigned.NumItems() == 10ul);
}
