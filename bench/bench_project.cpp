// Project files: writing and reading a project of 10,000 nodes with 20 parameters each
// (100 groups of 100), and what the process holds at its peak.

#include "foundation/trColour.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trProjectFile.h"

#include "bench_memory.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

constexpr int kGroups = 100;
constexpr int kNodesPerGroup = 100;

// Twenty saved parameters of the common kinds besides the base entries.
class ProjectBenchNode : public trBase {
public:
    ProjectBenchNode()
    {
        static char const *const realNames[8] = {"scale", "gain", "offset_x", "offset_y",
                                                 "roughness", "height", "density", "falloff"};
        for (int i = 0; i < 8; ++i)
            Param(reals[i], realNames[i], 0.5 * i);
        static char const *const intNames[4] = {"seed", "octaves", "mode", "samples"};
        for (int i = 0; i < 4; ++i)
            Param(ints[i], intNames[i], long(i));
        Param(position, "position", trVector(1, 2, 3));
        Param(size, "size", trVector(1000, 0, 1000));
        Param(colour, "colour", trManRgb(0, 0.8f, 0.7f, 0.6f));
        Param(uv, "uv_scale", tr2Vector(1, 1));
        Param(enabled, "enabled", static_cast<unsigned char>(1));
        Param(label, "label", trString("untitled"));
        Param(strength, "strength", 1.0f);
        Param(input, "input_node", trString());
    }
    double reals[8] = {};
    long ints[4] = {};
    trVector position, size;
    trManRgb colour;
    tr2Vector uv;
    unsigned char enabled = 0;
    trString label;
    float strength = 0;
    trNodeLink input;
};

class ProjectBenchRoot : public trBase {
public:
    ProjectBenchRoot() { SetName("project"); }
};

void RegisterProjectBenchClasses()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    trClasses.AddClass("bench", "project_bench_node", []() -> trBase * { return new ProjectBenchNode; },
                       [](trBase *n) { delete n; }, "");
}

// Each node's input is the one before it in its group.
std::unique_ptr<ProjectBenchRoot> MakeProject()
{
    auto root = std::make_unique<ProjectBenchRoot>();
    char name[32];
    for (int g = 0; g < kGroups; ++g) {
        trBase *group = root->CreateChild("project_bench_node");
        std::snprintf(name, sizeof name, "Group %03d", g);
        group->SetName(name);
        for (int n = 0; n < kNodesPerGroup - 1; ++n) {
            auto *node = static_cast<ProjectBenchNode *>(group->CreateChild("project_bench_node"));
            std::snprintf(name, sizeof name, "Node %03d", n);
            node->SetName(name);
            node->reals[0] = g + n * 0.001;
            node->ints[0] = g * 1000 + n;
            if (n > 0) {
                std::snprintf(name, sizeof name, "Node %03d", n - 1);
                node->SetParam("input_node", trString(name), trWhoSystem);
            }
        }
    }
    return root;
}

// The high-water mark of resident memory, from the kernel, in MiB.
double PeakResidentMiB()
{
    return double(BenchStatusKiB("VmHWM")) / 1024.0;
}

std::string BenchFile(char const *leaf)
{
    return (std::filesystem::temp_directory_path() / (std::string("ostrel-bench-") + std::to_string(::getpid()) + leaf))
        .string();
}

// The library reports each read and write on the standard output; keep the figures clean.
class QuietStdout {
public:
    QuietStdout()
    {
        std::fflush(stdout);
        saved = ::dup(1);
        FILE *null = std::fopen("/dev/null", "w");
        if (null) {
            ::dup2(::fileno(null), 1);
            std::fclose(null);
        }
    }
    ~QuietStdout()
    {
        std::fflush(stdout);
        if (saved >= 0) {
            ::dup2(saved, 1);
            ::close(saved);
        }
    }
    QuietStdout(QuietStdout const &) = delete;
    QuietStdout &operator=(QuietStdout const &) = delete;

private:
    int saved = -1;
};

void BM_ProjectWrite10kNodes(benchmark::State &state)
{
    RegisterProjectBenchClasses();
    std::unique_ptr<ProjectBenchRoot> root = MakeProject();
    std::string const path = BenchFile("-write.svd");
    for (auto _ : state) {
        QuietStdout quiet;
        if (!trBaseXML::WriteProjectFile(path.c_str(), *root, "ostrel_project"))
            state.SkipWithError("write failed");
    }
    std::error_code error;
    double const bytes = double(std::filesystem::file_size(path, error));
    state.counters["file_MiB"] = bytes / (1024.0 * 1024.0);
    state.counters["nodes/s"] = benchmark::Counter(double(kGroups * kNodesPerGroup) * double(state.iterations()),
                                                   benchmark::Counter::kIsRate);
    state.counters["peak_rss_MiB"] = PeakResidentMiB();
    std::filesystem::remove(path, error);
}
BENCHMARK(BM_ProjectWrite10kNodes)->Unit(benchmark::kMillisecond);

void BM_ProjectRead10kNodes(benchmark::State &state)
{
    RegisterProjectBenchClasses();
    std::string const path = BenchFile("-read.svd");
    {
        std::unique_ptr<ProjectBenchRoot> root = MakeProject();
        QuietStdout quiet;
        trBaseXML::WriteProjectFile(path.c_str(), *root, "ostrel_project");
    }
    long nodes = 0;
    for (auto _ : state) {
        auto root = std::make_unique<ProjectBenchRoot>();
        {
            QuietStdout quiet;
            if (!trBaseXML::ReadFile(*root, path.c_str(), "ostrel_project"))
                state.SkipWithError("read failed");
        }
        // Counting and the tree's destruction aren't part of a read.
        state.PauseTiming();
        nodes = 0;
        for (trBase *n = root->NextInTree(); n; n = n->NextInTree())
            ++nodes;
        root.reset();
        state.ResumeTiming();
    }
    state.counters["nodes"] = double(nodes);
    state.counters["nodes/s"] =
        benchmark::Counter(double(kGroups * kNodesPerGroup) * double(state.iterations()), benchmark::Counter::kIsRate);
    state.counters["peak_rss_MiB"] = PeakResidentMiB();
    std::error_code error;
    std::filesystem::remove(path, error);
}
BENCHMARK(BM_ProjectRead10kNodes)->Unit(benchmark::kMillisecond);

} // namespace
