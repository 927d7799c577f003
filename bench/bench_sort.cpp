// trFastQSort against std::sort on one million 40-byte records.

#include "foundation/trRand.h"
#include "foundation/trSort.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace {

std::vector<trTriSortElmt> MakeElements(long count)
{
    trRand rand;
    rand.Seed(7);
    std::vector<trTriSortElmt> elements(count);
    for (long i = 0; i < count; ++i)
        elements[i] = {nullptr, nullptr, (unsigned long)i, 0, rand.Double() * 1e4};
    return elements;
}

void BM_trFastQSort_1M(benchmark::State &state)
{
    auto const source = MakeElements(1000000);
    trFastQSort<trTriSortElmt> sorter;
    for (auto _ : state) {
        state.PauseTiming();
        auto elements = source;
        state.ResumeTiming();
        sorter.Sort(elements.data(), long(elements.size()));
        benchmark::DoNotOptimize(elements.data());
    }
    state.SetItemsProcessed(state.iterations() * long(source.size()));
}
BENCHMARK(BM_trFastQSort_1M)->Unit(benchmark::kMillisecond);

void BM_StdSort_1M(benchmark::State &state)
{
    auto const source = MakeElements(1000000);
    for (auto _ : state) {
        state.PauseTiming();
        auto elements = source;
        state.ResumeTiming();
        std::sort(elements.begin(), elements.end(),
                  [](trTriSortElmt const &a, trTriSortElmt const &b) { return a.key < b.key; });
        benchmark::DoNotOptimize(elements.data());
    }
    state.SetItemsProcessed(state.iterations() * long(source.size()));
}
BENCHMARK(BM_StdSort_1M)->Unit(benchmark::kMillisecond);

} // namespace
