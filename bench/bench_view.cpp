// The camera: ray generation per sample (view and world space, per projection, and
// with motion blur's time views) and the split rule per render tri. Each reports
// the allocations made in its timed loop, which must be 0.

#include "foundation/trRand.h"
#include "scene/trRenderTri.h"
#include "scene/trView.h"

#include "bench_alloc_count.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

constexpr int kPositions = 1024;  // a power of two: positions are picked by mask

trView BenchView(trProjectionMode mode)
{
    trView v;
    v.Init(trVector(100.0, 20.0, -50.0), trRotation(trVector(0.1, 0.4, 0.0)), 1920, 1080, 1.0, 1.0, true, mode);
    return v;
}

// Sub-pixel positions spread over the image.
void Positions(std::vector<double> &xs, std::vector<double> &ys)
{
    trMersenneTwister twister;
    twister.sgenrand(1);
    for (int i = 0; i < kPositions; ++i) {
        xs.push_back(twister.genrand() / 4294967295.0 * 1920.0);
        ys.push_back(twister.genrand() / 4294967295.0 * 1080.0);
    }
}

// Arg 0: the projection mode; arg 1: 1 for world space.
void BM_ViewRay(benchmark::State &state)
{
    trView const v = BenchView(trProjectionMode(state.range(0)));
    bool const world = state.range(1) != 0;
    std::vector<double> xs, ys;
    Positions(xs, ys);
    trVector o, d;
    unsigned i = 0;
    long const before = BenchAllocCount();
    for (auto _ : state) {
        unsigned const k = i++ & (kPositions - 1);
        if (world)
            v.WorldRayFromScreenPos(o, d, xs[k], ys[k], 1.0);
        else
            v.ViewRayFromScreenPos(o, d, xs[k], ys[k], 1.0);
        benchmark::DoNotOptimize(o);
        benchmark::DoNotOptimize(d);
    }
    state.counters["allocations"] = double(BenchAllocCount() - before);
    state.SetLabel(std::string(state.range(0) == 0 ? "perspective" : "spherical") + (world ? " world" : " view"));
}
BENCHMARK(BM_ViewRay)->Args({0, 0})->Args({2, 0})->Args({0, 1})->Args({2, 1});

// World rays with both time views: two rays mixed by the sample's time.
void BM_WorldRayMotion(benchmark::State &state)
{
    trView v = BenchView(trProjectionPerspective);
    trView end = BenchView(trProjectionPerspective);
    end.Init(trVector(101.0, 20.0, -49.0), trRotation(trVector(0.1, 0.42, 0.0)), 1920, 1080, 1.0, 1.0, true,
             trProjectionPerspective);
    v.SetT0(v);
    v.SetT1(end);
    std::vector<double> xs, ys;
    Positions(xs, ys);
    trVector o, d;
    unsigned i = 0;
    long const before = BenchAllocCount();
    for (auto _ : state) {
        unsigned const k = i++ & (kPositions - 1);
        v.WorldRayFromScreenPos(o, d, xs[k], ys[k], 1.0, double(k) / kPositions);
        benchmark::DoNotOptimize(o);
        benchmark::DoNotOptimize(d);
    }
    state.counters["allocations"] = double(BenchAllocCount() - before);
}
BENCHMARK(BM_WorldRayMotion);

// The split rule on tris of a ground plane in front of the camera, from near to
// far, with jitter on.
void BM_TriVisibility(benchmark::State &state)
{
    trView v;
    v.Init(trVector(0.0, 2.0, 0.0), trRotation(trVector(0.2, 0.0, 0.0)), 1920, 1080, 1.0, 1.0, true,
           trProjectionPerspective);
    std::vector<float> table(16384);
    trMersenneTwister twister;
    twister.sgenrand(0);
    for (float &f : table)
        f = float(twister.genrand() / 4294967295.0);
    std::vector<trRenderTri> tris(256);
    for (int i = 0; i < 256; ++i) {
        double const x = (i % 16 - 8) * 3.0, z = 5.0 + (i / 16) * 6.0;
        trRenderTri &t = tris[i];
        t.P[0] = t.Pt[0] = trVector(x, 0.0, z);
        t.P[1] = t.Pt[1] = trVector(x + 2.5, 0.0, z + 0.3);
        t.P[2] = t.Pt[2] = trVector(x + 0.4, 0.0, z + 2.7);
        v.ProjectTri(t);
    }
    trViewSubdivRules const rules;
    int edges[2];
    unsigned i = 0;
    double sum = 0.0;
    long const before = BenchAllocCount();
    for (auto _ : state) {
        sum += v.TriVisibility(tris[i++ & 255], 1.0, 0.1, rules, false, edges, table.data());
        benchmark::DoNotOptimize(sum);
    }
    state.counters["allocations"] = double(BenchAllocCount() - before);
}
BENCHMARK(BM_TriVisibility);

}  // namespace
