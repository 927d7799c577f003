// Noise along a ray march: small steps, so that successive points often share a lattice
// cell, as they do in a volume shader. The same points go to GLM's and libnoise's
// gradient noise where those are installed. "ns_per_call" is the time of one call.

#include "foundation/trVector.h"
#include "noise/trNoise.h"
#include "noise/trNoiseInst.h"
#include "noise/trVoronoi.h"

#include <benchmark/benchmark.h>

#include <vector>

#ifdef OSTREL_HAVE_GLM
#include <glm/gtc/noise.hpp>
#endif
#ifdef OSTREL_HAVE_LIBNOISE
#include <libnoise/noise.h>
#endif

namespace {

constexpr int kPoints = 4096;

// 4096 points 0.05 apart along a slanted ray, with a slowly moving fourth coordinate.
std::vector<double> const &RayPoints()
{
    static std::vector<double> const points = [] {
        std::vector<double> p(kPoints * 4);
        trVector const start(12.34, 45.67, 7.89), dir(0.8, 0.36, -0.48);
        for (int i = 0; i < kPoints; ++i) {
            trVector const q = start + dir * (0.05 * i);
            p[i * 4 + 0] = q.x;
            p[i * 4 + 1] = q.y;
            p[i * 4 + 2] = q.z;
            p[i * 4 + 3] = 0.01 * i;
        }
        return p;
    }();
    return points;
}

void Report(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * kPoints);
    // Seconds per call, which the console prints with its SI prefix ("16.8ns").
    state.counters["ns_per_call"] = benchmark::Counter(
        double(kPoints), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_trNoise3_Ray(benchmark::State &state)
{
    trNoiseInit();
    auto const &p = RayPoints();
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i)
            sum += trNoise3(&p[i * 4]);
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_trNoise3_Ray);

void BM_trNoise4_Ray(benchmark::State &state)
{
    trNoiseInit();
    auto const &p = RayPoints();
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i)
            sum += trNoise4(&p[i * 4]);
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_trNoise4_Ray);

void BM_trNoiseInst3_Ray(benchmark::State &state)
{
    trNoiseInit();
    auto const &p = RayPoints();
    trNoiseInst3 noise;
    noise.Init(true, 3);
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i)
            sum += noise.Noise(trVector(p[i * 4], p[i * 4 + 1], p[i * 4 + 2]), 0.0);
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_trNoiseInst3_Ray);

void BM_trVoronoi3_Ray(benchmark::State &state)
{
    trNoiseInit();
    auto const &p = RayPoints();
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i) {
            double value;
            trVector nearest, second;
            trVoronoi3(value, nearest, second, &p[i * 4]);
            sum += value + nearest.x + second.x;
        }
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_trVoronoi3_Ray);

#ifdef OSTREL_HAVE_GLM
void BM_GlmPerlin3_Ray(benchmark::State &state)
{
    auto const &p = RayPoints();
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i)
            sum += glm::perlin(glm::dvec3(p[i * 4], p[i * 4 + 1], p[i * 4 + 2]));
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_GlmPerlin3_Ray);
#endif

#ifdef OSTREL_HAVE_LIBNOISE
void BM_LibnoiseGradient3_Ray(benchmark::State &state)
{
    auto const &p = RayPoints();
    for (auto _ : state) {
        double sum = 0.0;
        for (int i = 0; i < kPoints; ++i)
            sum += noise::GradientCoherentNoise3D(p[i * 4], p[i * 4 + 1], p[i * 4 + 2], 0, noise::QUALITY_STD);
        benchmark::DoNotOptimize(sum);
    }
    Report(state);
}
BENCHMARK(BM_LibnoiseGradient3_Ray);
#endif

} // namespace
