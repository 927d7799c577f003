// Node system: parameter access by index and by name, creating nodes through the
// class pool, and what a tree of parents costs in resident memory.

#include "nodes/trBase.h"
#include "nodes/trClassPool.h"

#include "bench_memory.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {

// A node with a dozen parameters, the parameter of interest last, so that a lookup by
// name scans a realistic table.
class BenchNode : public trBase {
public:
    BenchNode()
    {
        for (int i = 0; i < 12; ++i)
            Param(fillers[i], fillerNames[i], double(i));
        Param(value, "value", 0.0);
    }
    double fillers[12] = {};
    double value = 0.0;

    static constexpr char const *fillerNames[12] = {"a_scale", "b_scale", "c_scale", "d_scale",
                                                    "e_scale", "f_scale", "g_scale", "h_scale",
                                                    "i_scale", "j_scale", "k_scale", "l_scale"};
};

// A node with only the entries every node has.
class BenchPlain : public trBase {
};

trBase *CreateBenchNode() { return new BenchNode; }
trBase *CreateBenchPlain() { return new BenchPlain; }
void DestroyBenchNode(trBase *node) { delete node; }

// Distinct classes for the children of one parent, as a real scene mixes its nodes:
// each child then takes its name at the first try.
constexpr int kChildClasses = 1000;

void RegisterBenchClasses()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    trClasses.AddClass("bench", "bench_node", CreateBenchNode, DestroyBenchNode, "");
    trClasses.AddClass("bench", "bench_plain", CreateBenchPlain, DestroyBenchNode, "");
    for (int i = 0; i < kChildClasses; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "bench_child_%03d", i);
        trClasses.AddClass("bench", name, CreateBenchNode, DestroyBenchNode, "");
    }
}

void BM_SetParamByIndex(benchmark::State &state)
{
    RegisterBenchClasses();
    trBase *node = trCreateObject("bench_node", nullptr, 1);
    long index = 0;
    node->FindParam(index, "value");
    double v = 0.0;
    for (auto _ : state) {
        v += 1.0;
        benchmark::DoNotOptimize(node->SetParam(index, v, trWhoSystem));
    }
    trDestroyObject(node);
}
BENCHMARK(BM_SetParamByIndex);

void BM_SetParamByName(benchmark::State &state)
{
    RegisterBenchClasses();
    trBase *node = trCreateObject("bench_node", nullptr, 1);
    double v = 0.0;
    for (auto _ : state) {
        v += 1.0;
        benchmark::DoNotOptimize(node->SetParam("value", v, trWhoSystem));
    }
    trDestroyObject(node);
}
BENCHMARK(BM_SetParamByName);

void BM_GetParamByIndex(benchmark::State &state)
{
    RegisterBenchClasses();
    trBase *node = trCreateObject("bench_node", nullptr, 1);
    long index = 0;
    node->FindParam(index, "value");
    double v = 0.0;
    for (auto _ : state) {
        node->GetParam(index, v);
        benchmark::DoNotOptimize(v);
    }
    trDestroyObject(node);
}
BENCHMARK(BM_GetParamByIndex);

void BM_GetParamByName(benchmark::State &state)
{
    RegisterBenchClasses();
    trBase *node = trCreateObject("bench_node", nullptr, 1);
    double v = 0.0;
    for (auto _ : state) {
        node->GetParam("value", v);
        benchmark::DoNotOptimize(v);
    }
    trDestroyObject(node);
}
BENCHMARK(BM_GetParamByName);

// 100,000 nodes under 100 parents, created through the pool (construction, tree,
// naming, OnCreate, OnFirstCreate), the c-th child of each parent of classNames[c];
// the tear-down is not timed.
void CreateUnder100Parents(benchmark::State &state, std::vector<trString> const &classNames)
{
    constexpr int kParents = 100;
    for (auto _ : state) {
        std::vector<trBase *> parents;
        for (int p = 0; p < kParents; ++p) {
            trBase *parent = trCreateObject("bench_node", nullptr, 1);
            for (trString const &className : classNames)
                trCreateObject(className, parent, 1);
            parents.push_back(parent);
        }
        state.PauseTiming();
        for (trBase *parent : parents)
            trDestroyObject(parent);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kParents * long(classNames.size()));
}

constexpr int kPerParent = 1000;

// Children of mixed classes, as a real scene has them.
void BM_CreateObject100kUnder100Parents(benchmark::State &state)
{
    RegisterBenchClasses();
    std::vector<trString> classNames;
    for (int i = 0; i < kPerParent; ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "bench_child_%03d", i % kChildClasses);
        classNames.emplace_back(name);
    }
    CreateUnder100Parents(state, classNames);
}
BENCHMARK(BM_CreateObject100kUnder100Parents)->Unit(benchmark::kMillisecond)->Iterations(1);

// Every child of one class, so that each new node is numbered after up to 999
// siblings of its own class.
void BM_CreateObject100kUnder100ParentsOneClass(benchmark::State &state)
{
    RegisterBenchClasses();
    CreateUnder100Parents(state, std::vector<trString>(kPerParent, trString("bench_node")));
}
BENCHMARK(BM_CreateObject100kUnder100ParentsOneClass)->Unit(benchmark::kMillisecond)->Iterations(1);

// Children of one class under one parent: each takes the first free number, so the
// naming cost grows with the number of siblings of the same class.
void BM_CreateObjectSameClassSiblings(benchmark::State &state)
{
    RegisterBenchClasses();
    long const n = state.range(0);
    for (auto _ : state) {
        trBase *parent = trCreateObject("bench_node", nullptr, 1);
        for (long c = 0; c < n; ++c)
            trCreateObject("bench_node", parent, 1);
        state.PauseTiming();
        trDestroyObject(parent);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}
BENCHMARK(BM_CreateObjectSameClassSiblings)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMicrosecond);

// 10,000 parents with one child each. Every parent allocates a child table of 65,536
// slots (512 KiB of address space, 5 GB in all); only the pages written become
// resident, so the tree costs megabytes, not gigabytes.
void BM_ResidentMemory10kParents(benchmark::State &state)
{
    RegisterBenchClasses();
    constexpr int kParents = 10000;
    double megabytes = 0.0;
    for (auto _ : state) {
        long const before = BenchStatusKiB("VmRSS");
        std::vector<trBase *> parents;
        parents.reserve(kParents);
        for (int p = 0; p < kParents; ++p) {
            trBase *parent = trCreateObject("bench_plain", nullptr, 1);
            trCreateObject("bench_plain", parent, 1);
            parents.push_back(parent);
        }
        long const after = BenchStatusKiB("VmRSS");
        megabytes = double(after - before) / 1024.0;
        state.PauseTiming();
        for (trBase *parent : parents)
            trDestroyObject(parent);
        state.ResumeTiming();
    }
    state.counters["rss_MB"] = megabytes;
    state.counters["KiB_per_parent"] = megabytes * 1024.0 / kParents;
}
BENCHMARK(BM_ResidentMemory10kParents)->Unit(benchmark::kMillisecond)->Iterations(1);

} // namespace
