// Scene store and octrees: filling a scene with ten million triangles (time, and
// resident bytes per triangle), and octree insertion and look-up rates.

#include "foundation/trRand.h"
#include "scene/trLRUOctree.h"
#include "scene/trOctree.h"
#include "scene/trScene.h"

#include "bench_memory.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

// A grid of 1001 by 5001 points, two tris per cell: exactly ten million tris.
void BM_SceneAdd10MTris(benchmark::State &state)
{
    constexpr long kWide = 1000, kHigh = 5000;
    constexpr double kTris = 2.0 * kWide * kHigh;
    double bytesPerTri = 0.0, triTableBytesPerTri = 0.0;
    for (auto _ : state) {
        long const before = BenchStatusKiB("VmRSS");
        trScene scene;
        scene.Init();
        for (long y = 0; y <= kHigh; ++y)
            for (long x = 0; x <= kWide; ++x)
                scene.AddPoint(trVector(double(x), 0.0, double(y)));
        long const afterPoints = BenchStatusKiB("VmRSS");
        for (long y = 0; y < kHigh; ++y)
            for (long x = 0; x < kWide; ++x) {
                unsigned long const p = 1 + y * (kWide + 1) + x;
                scene.AddTri(p, p + 1, p + kWide + 2);
                scene.AddTri(p, p + kWide + 2, p + kWide + 1);
            }
        long const after = BenchStatusKiB("VmRSS");
        benchmark::DoNotOptimize(scene.NumTris());
        bytesPerTri = double(after - before) * 1024.0 / kTris;
        triTableBytesPerTri = double(after - afterPoints) * 1024.0 / kTris;
        state.PauseTiming();
        scene.Cleanup();
        state.ResumeTiming();
    }
    state.counters["bytes_per_tri"] = bytesPerTri;
    state.counters["tri_table_bytes_per_tri"] = triTableBytesPerTri;
    state.counters["tri_record_bytes"] = double(sizeof(trTri));
    state.SetItemsProcessed(state.iterations() * long(kTris));
}
BENCHMARK(BM_SceneAdd10MTris)->Unit(benchmark::kMillisecond)->Iterations(1);

// Adding tris alone, in a scene of three points: the per-call cost.
void BM_SceneAddTri(benchmark::State &state)
{
    trScene scene;
    scene.Init();
    scene.AddPoint(trVector(0, 0, 0));
    scene.AddPoint(trVector(1, 0, 0));
    scene.AddPoint(trVector(0, 1, 0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(scene.AddTri(1, 2, 3));
        if (scene.NumTris() >= 1000000) {
            state.PauseTiming();
            scene.Init();
            scene.AddPoint(trVector(0, 0, 0));
            scene.AddPoint(trVector(1, 0, 0));
            scene.AddPoint(trVector(0, 1, 0));
            state.ResumeTiming();
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SceneAddTri);

std::vector<trVector> RandomPoints(long n)
{
    trRand rand;
    rand.Seed(17);
    std::vector<trVector> points(n);
    for (trVector &p : points)
        p = trVector(rand.Double(), rand.Double(), rand.Double());
    return points;
}

constexpr long kOctreePoints = 1 << 16;
constexpr double kCell = 1.0 / 1024.0;  // ten levels below a unit root

// Fresh tree each round: every point makes a path to a cell of its own.
void BM_OctreeInsert(benchmark::State &state)
{
    std::vector<trVector> const points = RandomPoints(kOctreePoints);
    long nodes = 0;
    for (auto _ : state) {
        trOctree<float>::Pool pool(4096);
        trOctree<float> root(&pool);
        root.Init(nullptr, trVector(0, 0, 0), trVector(1, 1, 1));
        nodes = 1;
        for (trVector const &p : points) {
            int created = 0;
            root.GetNode(p, kCell, &created)->SetValue(1.0f);
            nodes += created;
        }
        benchmark::DoNotOptimize(nodes);
    }
    state.counters["nodes"] = double(nodes);
    state.SetItemsProcessed(state.iterations() * kOctreePoints);
}
BENCHMARK(BM_OctreeInsert)->Unit(benchmark::kMillisecond);

// The same points again in a built tree: a walk of ten levels, nothing made.
void BM_OctreeLookup(benchmark::State &state)
{
    std::vector<trVector> const points = RandomPoints(kOctreePoints);
    trOctree<float>::Pool pool(4096);
    trOctree<float> root(&pool);
    root.Init(nullptr, trVector(0, 0, 0), trVector(1, 1, 1));
    for (trVector const &p : points)
        root.GetNode(p, kCell, nullptr)->SetValue(1.0f);
    long i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(root.GetNode(points[i], kCell, nullptr));
        i = (i + 1) & (kOctreePoints - 1);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_OctreeLookup);

// Look-ups in the recency variant, which relink the whole path each time.
void BM_LRUOctreeLookup(benchmark::State &state)
{
    std::vector<trVector> const points = RandomPoints(kOctreePoints);
    trLRUOctree<float>::Pool pool(4096);
    trLRUOctree<float> root(&pool);
    root.Init(nullptr, trVector(0, 0, 0), trVector(1, 1, 1));
    trLRUOctree<float> *head = nullptr, *tail = nullptr;
    for (trVector const &p : points)
        root.LRUGetNode(p, kCell, nullptr, head, tail)->SetValue(1.0f);
    long i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(root.LRUGetNode(points[i], kCell, nullptr, head, tail));
        i = (i + 1) & (kOctreePoints - 1);
    }
    root.LRUForget(head, tail);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_LRUOctreeLookup);

// A cache under a budget of 50,000 nodes: insert, and evict the oldest when over.
void BM_LRUOctreeInsertEvict(benchmark::State &state)
{
    std::vector<trVector> const points = RandomPoints(kOctreePoints);
    long constexpr kBudget = 50000;
    for (auto _ : state) {
        trLRUOctree<float>::Pool pool(4096);
        trLRUOctree<float> root(&pool);
        root.Init(nullptr, trVector(0, 0, 0), trVector(1, 1, 1));
        trLRUOctree<float> *head = nullptr, *tail = nullptr;
        long nodes = 1;
        for (trVector const &p : points) {
            int created = 0;
            root.LRUGetNode(p, kCell, &created, head, tail)->SetValue(1.0f);
            nodes += created;
            while (nodes > kBudget && head && head != &root) {
                int count = 0;
                head->LRUDelete(head, tail, &count);
                nodes -= count;
            }
        }
        benchmark::DoNotOptimize(nodes);
        root.LRUForget(head, tail);
    }
    state.SetItemsProcessed(state.iterations() * kOctreePoints);
}
BENCHMARK(BM_LRUOctreeInsertEvict)->Unit(benchmark::kMillisecond);

} // namespace
