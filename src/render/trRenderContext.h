#pragma once
// What a render is for. The values have no names: 1 is a production render (the
// only one that reports its passes), 2 a preview (one bucket per thread, no
// bucket report); 0 and any other value size buckets like 1 and stay silent.

namespace trRenderContext {
enum Context : int {};
}
