// The benchmark program. `--quick` runs every benchmark briefly, for a smoke run that
// still prints each figure; other flags go to Google Benchmark unchanged.

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

int main(int argc, char **argv)
{
    std::vector<char *> args;
    static char quickTime[] = "--benchmark_min_time=0.02";
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0)
            args.push_back(quickTime);
        else
            args.push_back(argv[i]);
    }
    int count = int(args.size());
    benchmark::Initialize(&count, args.data());
    if (benchmark::ReportUnrecognizedArguments(count, args.data()))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
