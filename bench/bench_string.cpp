// trString against std::string, side by side: copying texts of several lengths
// (trString keeps up to 30 bytes inline, libstdc++'s std::string 15), and building
// short names by appending.

#include "foundation/trString.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

std::string TextOfLength(long n)
{
    std::string text;
    for (long i = 0; i < n; ++i)
        text += char('a' + i % 26);
    return text;
}

void BM_trString_Copy(benchmark::State &state)
{
    trString const source(TextOfLength(state.range(0)));
    for (auto _ : state) {
        trString copy(source);
        benchmark::DoNotOptimize(copy.chars);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_trString_Copy)->Arg(8)->Arg(24)->Arg(30)->Arg(64);

void BM_StdString_Copy(benchmark::State &state)
{
    std::string const source(TextOfLength(state.range(0)));
    for (auto _ : state) {
        std::string copy(source);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_StdString_Copy)->Arg(8)->Arg(24)->Arg(30)->Arg(64);

void BM_trString_CopyAssign(benchmark::State &state)
{
    trString const source(TextOfLength(state.range(0)));
    trString target("previous value");
    for (auto _ : state) {
        benchmark::DoNotOptimize(&source);
        target = source;
        benchmark::DoNotOptimize(target.chars);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_trString_CopyAssign)->Arg(8)->Arg(24)->Arg(64);

void BM_StdString_CopyAssign(benchmark::State &state)
{
    std::string const source(TextOfLength(state.range(0)));
    std::string target("previous value");
    for (auto _ : state) {
        benchmark::DoNotOptimize(&source);
        target = source;
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_StdString_CopyAssign)->Arg(8)->Arg(24)->Arg(64);

// A node path of five short pieces, 22 bytes in all.
void BM_trString_AppendShort(benchmark::State &state)
{
    char const *pieces[] = {"root", "/", "terrain", "/", "height_01"};
    for (auto _ : state) {
        trString path;
        for (char const *piece : pieces) {
            benchmark::DoNotOptimize(piece);
            path += piece;
        }
        benchmark::DoNotOptimize(path.chars);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_trString_AppendShort);

void BM_StdString_AppendShort(benchmark::State &state)
{
    char const *pieces[] = {"root", "/", "terrain", "/", "height_01"};
    for (auto _ : state) {
        std::string path;
        for (char const *piece : pieces) {
            benchmark::DoNotOptimize(piece);
            path += piece;
        }
        benchmark::DoNotOptimize(path.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_StdString_AppendShort);

// The same pieces through operator+, each step a new value.
void BM_trString_Concatenate(benchmark::State &state)
{
    trString const root("root"), terrain("terrain");
    for (auto _ : state) {
        trString path = root + "/" + terrain + "/" + "height_01";
        benchmark::DoNotOptimize(path.chars);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_trString_Concatenate);

void BM_StdString_Concatenate(benchmark::State &state)
{
    std::string const root("root"), terrain("terrain");
    for (auto _ : state) {
        std::string path = root + "/" + terrain + "/" + "height_01";
        benchmark::DoNotOptimize(path.data());
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_StdString_Concatenate);

} // namespace
