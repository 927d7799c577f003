// Pixel store hot paths: fills, means, smooth look-ups, dithering, and the 3-D store's
// reuse of its capacity.
#include <benchmark/benchmark.h>

#include "images/trImage.h"

namespace {

void BM_FImageFillAndMean(benchmark::State &state)
{
    trFImage image;
    image.Init(0, 0, int(state.range(0)), int(state.range(0)));
    for (auto _ : state) {
        image.Fill(trFCol(0.5f, 0.25f, 0.125f));
        benchmark::DoNotOptimize(image.MeanCol());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(0));
}
BENCHMARK(BM_FImageFillAndMean)->Arg(256)->Arg(1024);

void BM_SmoothLookup(benchmark::State &state)
{
    trFImage image;
    image.Init(0, 0, 512, 512);
    image.Fill(trFCol(1.0f, 2.0f, 3.0f));
    double x = 0.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(image.FColLookupSmooth(x, x * 0.7, true, false));
        x += 1.37;
        if (x > 600.0)
            x = -50.0;
    }
}
BENCHMARK(BM_SmoothLookup);

void BM_Dither(benchmark::State &state)
{
    trFImage source;
    source.Init(0, 0, 512, 512);
    source.Fill(trFCol(0.3f, 0.6f, 0.9f));
    trBImage bytes;
    for (auto _ : state)
        bytes.SetBytePixelsFromFloatPixels(source, nullptr, 7);
    state.SetItemsProcessed(state.iterations() * 512 * 512);
}
BENCHMARK(BM_Dither);

void BM_Image3ResizeWithinLadder(benchmark::State &state)
{
    trImage3 volume;
    int d = 60;
    for (auto _ : state) {
        // Sizes within a few percent of each other keep one store.
        volume.Init(0, 0, 0, 64, 64, d, 1, 4);
        d = d == 60 ? 58 : 60;
        benchmark::DoNotOptimize(volume.Pixels());
    }
}
BENCHMARK(BM_Image3ResizeWithinLadder);

} // namespace
