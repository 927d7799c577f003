// Replaces the global operator new and delete of the benchmark program with forms
// that count each allocation and otherwise go straight to malloc and free.

#include "bench_alloc_count.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> gAllocations{0};

void *CountedAlloc(std::size_t size, std::size_t align)
{
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (size == 0)
        size = 1;
    if (align <= alignof(std::max_align_t))
        return std::malloc(size);
    // aligned_alloc wants a size that is a multiple of the alignment.
    return std::aligned_alloc(align, (size + align - 1) / align * align);
}

void *CountedAllocOrThrow(std::size_t size, std::size_t align)
{
    void *p = CountedAlloc(size, align);
    if (!p)
        throw std::bad_alloc();
    return p;
}

}  // namespace

long BenchAllocCount() { return gAllocations.load(std::memory_order_relaxed); }

void *operator new(std::size_t size) { return CountedAllocOrThrow(size, 0); }
void *operator new[](std::size_t size) { return CountedAllocOrThrow(size, 0); }
void *operator new(std::size_t size, std::align_val_t al) { return CountedAllocOrThrow(size, std::size_t(al)); }
void *operator new[](std::size_t size, std::align_val_t al) { return CountedAllocOrThrow(size, std::size_t(al)); }
void *operator new(std::size_t size, std::nothrow_t const &) noexcept { return CountedAlloc(size, 0); }
void *operator new[](std::size_t size, std::nothrow_t const &) noexcept { return CountedAlloc(size, 0); }
void *operator new(std::size_t size, std::align_val_t al, std::nothrow_t const &) noexcept
{
    return CountedAlloc(size, std::size_t(al));
}
void *operator new[](std::size_t size, std::align_val_t al, std::nothrow_t const &) noexcept
{
    return CountedAlloc(size, std::size_t(al));
}

void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }
void operator delete(void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, std::nothrow_t const &) noexcept { std::free(p); }
void operator delete[](void *p, std::nothrow_t const &) noexcept { std::free(p); }
void operator delete(void *p, std::align_val_t, std::nothrow_t const &) noexcept { std::free(p); }
void operator delete[](void *p, std::align_val_t, std::nothrow_t const &) noexcept { std::free(p); }
