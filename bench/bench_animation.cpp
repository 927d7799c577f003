// Animation: evaluating a curve at a frame, and writing an animated parameter from its
// curve at a frame, for TCB and linear curves of 2, 10 and 100 keys. The frames sweep
// the whole curve so the walk to the span is counted at its average length.

#include "nodes/trAnimate.h"
#include "nodes/trBase.h"

#include <benchmark/benchmark.h>

namespace {

constexpr long kSpacing = 10; // frames between keys

void FillCurve(trAnimate &a, int component, long numKeys)
{
    for (long k = 0; k < numKeys; ++k)
        a.SetKey(double((k * 37) % 11) - 5.0, k * kSpacing, component)->SetTCB(0.1, -0.2, 0.3);
}

// The next frame of a sweep over the curve, in quarter frames.
double NextFrame(double frame, long numKeys)
{
    frame += 0.25 * 7.0;
    double const end = double((numKeys - 1) * kSpacing);
    return frame > end ? frame - end : frame;
}

void BM_AnimGetValue(benchmark::State &state)
{
    int const mode = int(state.range(0));
    long const numKeys = long(state.range(1));
    trAnimate a;
    a.SetComponentInterpolationMode(0, mode);
    FillCurve(a, 0, numKeys);
    double frame = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(a.GetValue(frame, 0));
        frame = NextFrame(frame, numKeys);
    }
    state.SetLabel(mode == trAnimationInterpolationTCB ? "tcb" : "linear");
}

class BenchAnimNode : public trBase {
public:
    BenchAnimNode() { index = Param(value, "value", 0.0); }
    double value = 0.0;
    long index = 0;
};

void BM_AnimUpdateParam(benchmark::State &state)
{
    int const mode = int(state.range(0));
    long const numKeys = long(state.range(1));
    BenchAnimNode node;
    node.SetParamComponentInterpolationMode(node.index, 0, mode);
    FillCurve(*node.ParamAnim(node.index), 0, numKeys);
    double frame = 0.0;
    for (auto _ : state) {
        node.UpdateParamFromAnim(node.index, frame);
        benchmark::DoNotOptimize(node.value);
        frame = NextFrame(frame, numKeys);
    }
    state.SetLabel(mode == trAnimationInterpolationTCB ? "tcb" : "linear");
}

void AnimArgs(benchmark::internal::Benchmark *b)
{
    for (int mode : {int(trAnimationInterpolationTCB), int(trAnimationInterpolationLinear)})
        for (long keys : {2L, 10L, 100L})
            b->Args({mode, keys});
    b->ArgNames({"mode", "keys"});
}

} // namespace

BENCHMARK(BM_AnimGetValue)->Apply(AnimArgs);
BENCHMARK(BM_AnimUpdateParam)->Apply(AnimArgs);
