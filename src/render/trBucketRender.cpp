#include "render/trBucketRender.h"

#include "scene/trRenderTri.h"

trBucketRender::trBucketRender()
    : triStack(kTriStackSize), renderTris(new (std::nothrow) trChunkyAllocator<trRenderTri>(1024))
{
}

trBucketRender::~trBucketRender() { delete renderTris; }

int trBucketRender::PushPTri(trRenderTri *tri) { return triStack.Push(tri) ? 1 : 0; }

trRenderTri *trBucketRender::PopPTri()
{
    trRenderTri **top = triStack.Top();
    if (!top)
        return nullptr;
    trRenderTri *tri = *top;
    triStack.Pop();
    return tri;
}

trRenderTri *trBucketRender::NewRenderTri() { return renderTris ? renderTris->GetItem() : nullptr; }
