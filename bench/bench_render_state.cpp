// The backup and restore that every ray makes of its render state, in ns, with the
// allocations made in the timed loop (0 is required once the frame slots are warm).
// Also reports the size of a frame and of the per-thread records made at load.

#include "bench_alloc_count.h"

#include "foundation/trCores.h"
#include "shading/trRenderState.h"
#include "shading/trThreadRenderRecord.h"

#include <benchmark/benchmark.h>

namespace {

// `lobes` lobes in the bsdf: their storage is what a backup may have to allocate.
void BackupAndRestore(benchmark::State &bench, int lobes)
{
    trRenderState state(nullptr, nullptr);
    state.frame->Bsdf.Lobes.resize(std::size_t(lobes));
    // Warm-up: the frame slots above this one take the lobe storage once.
    for (int i = 0; i < 4; ++i) {
        trScopedStateBackup outer(state);
        trScopedStateBackup inner(state);
    }
    long const allocsBefore = BenchAllocCount();
    for (auto _ : bench) {
        trScopedStateBackup backup(state);
        state.P.x += 1.0;
        state.frame->RayRecursionDepth = 2;
        benchmark::DoNotOptimize(state.P);
    }
    bench.counters["allocs"] = double(BenchAllocCount() - allocsBefore);
    bench.counters["frame_bytes"] = double(sizeof(trRenderStateFrame));
    bench.counters["state_bytes"] = double(sizeof(trRenderState));
    double const rowBytes =
        double(sizeof(trThreadRenderRecord)) + trThreadRenderRecord::kNumFrames * double(sizeof(trRenderStateFrame));
    bench.counters["record_table_MiB"] = rowBytes * trMaxThreads() / (1024.0 * 1024.0);
}

void BM_trScopedStateBackup(benchmark::State &bench) { BackupAndRestore(bench, 0); }
BENCHMARK(BM_trScopedStateBackup);

void BM_trScopedStateBackup_ThreeLobes(benchmark::State &bench) { BackupAndRestore(bench, 3); }
BENCHMARK(BM_trScopedStateBackup_ThreeLobes);

} // namespace
