#pragma once
// A stack of records in one block made up front, for stacks that a render thread
// pushes and pops without calling the allocator. A slot is constructed the first
// time the stack reaches it and is then kept, with whatever storage its record
// holds, until the stack goes: a later push onto it reuses that storage.

#include "foundation/trMessages.h"

#include <cstddef>
#include <new>

template <class T>
class trStack {
public:
    explicit trStack(int capacity)
    {
        if (capacity <= 0)
            return;
        items = static_cast<T *>(::operator new(sizeof(T) * std::size_t(capacity), std::align_val_t(alignof(T)),
                                                std::nothrow));
        if (!items) {
            trError("trStack: Not enough memory to allocate stack!");
            return;
        }
        this->capacity = capacity;
    }
    ~trStack()
    {
        for (int i = 0; i < constructed; ++i)
            items[i].~T();
        if (items)
            ::operator delete(items, std::align_val_t(alignof(T)));
    }
    trStack(trStack const &) = delete;
    trStack &operator=(trStack const &) = delete;

    bool IsAllocated() const { return items != nullptr; }
    int Capacity() const { return capacity; }
    int Size() const { return size; }
    bool IsEmpty() const { return size == 0; }

    // The slot above the top, which becomes the top. It holds what it held when it was
    // last popped (a default record the first time). Null when the stack is full.
    T *Push()
    {
        if (size >= capacity)
            return nullptr;
        if (size == constructed) {
            new (items + size) T();
            ++constructed;
        }
        return items + size++;
    }
    bool Push(T const &value)
    {
        T *slot = Push();
        if (!slot)
            return false;
        *slot = value;
        return true;
    }
    // Does nothing on an empty stack.
    void Pop()
    {
        if (size > 0)
            --size;
    }
    T *Top() { return size ? items + size - 1 : nullptr; }
    T &operator[](int i) { return items[i]; }

private:
    T *items = nullptr;
    int capacity = 0;
    int size = 0;
    int constructed = 0;
};
