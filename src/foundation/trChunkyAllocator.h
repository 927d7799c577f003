#pragma once
// A growing store of items that never move: items are handed out from whole chunks,
// so no heap call is made per item and pointers stay valid as the store grows.

#include <cstddef>
#include <memory>
#include <new>
#include <vector>

template <class T>
class trChunkyAllocator {
public:
    // A chunk size of 0 is not allowed: GetItem divides by it.
    explicit trChunkyAllocator(unsigned long chunkSize) : chunkSize(chunkSize) {}

    // Copies are shallow and share the chunks; each chunk is freed once, when its
    // last holder goes.
    trChunkyAllocator(trChunkyAllocator const &) = default;
    trChunkyAllocator &operator=(trChunkyAllocator const &) = default;

    // The next free item, default-constructed; null if a chunk can't be allocated.
    T *GetItem()
    {
        unsigned long chunk = numItems / chunkSize;
        if (chunk >= chunks.size()) {
            T *block = static_cast<T *>(::operator new(sizeof(T) * chunkSize, std::align_val_t(alignof(T)), std::nothrow));
            if (!block)
                return nullptr;
            for (unsigned long i = 0; i < chunkSize; ++i)
                new (block + i) T();
            // Freed without running item destructors: items are plain records.
            chunks.emplace_back(block, [](T *p) { ::operator delete(p, std::align_val_t(alignof(T))); });
        }
        T *item = chunks[chunk].get() + numItems % chunkSize;
        ++numItems;
        return item;
    }

    T &Item(unsigned long i) { return chunks[i / chunkSize].get()[i % chunkSize]; }
    T const &Item(unsigned long i) const { return chunks[i / chunkSize].get()[i % chunkSize]; }
    unsigned long NumItems() const { return numItems; }
    unsigned long ChunkSize() const { return chunkSize; }

private:
    unsigned long chunkSize;
    unsigned long numItems = 0;
    std::vector<std::shared_ptr<T>> chunks;
};
