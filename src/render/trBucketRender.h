#pragma once
// One render worker: it renders buckets start to end with its own render state.
// So far only what the render state calls: the stack of triangles waiting to be
// rasterised, the store that supplies them, and the pause and abort flags. The
// stages and the thread body come with the bucket lifecycle.

#include "foundation/trChunkyAllocator.h"
#include "foundation/trStack.h"

#include <atomic>

class trRenderTri;

class trBucketRender {
public:
    trBucketRender();
    ~trBucketRender();
    trBucketRender(trBucketRender const &) = delete;
    trBucketRender &operator=(trBucketRender const &) = delete;

    // 1 when the tri is on the stack, 0 when the stack is full.
    int PushPTri(trRenderTri *tri);
    // The last tri pushed, or null.
    trRenderTri *PopPTri();
    int NumStackTrisPending() const { return triStack.Size(); }
    // A tri from the worker's store, valid for the render; null without memory.
    trRenderTri *NewRenderTri();

    void Abort() { aborting = true; }
    bool IsAborting() const { return aborting; }
    void RequestPause() { pauseRequested = true; }
    void Resume() { pauseRequested = false; }
    bool IsPausing() const { return pauseRequested; }
    bool IsPausingOrAborting() const { return aborting || pauseRequested; }

private:
    static constexpr int kTriStackSize = 128;
    trStack<trRenderTri *> triStack;
    trChunkyAllocator<trRenderTri> *renderTris;
    std::atomic<bool> aborting{false};
    std::atomic<bool> pauseRequested{false};
};
