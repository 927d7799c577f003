#include "render/trRenderImageList.h"

#include <algorithm>
#include <cstdint>

long trSetBytePixelsFromFloatImageList(trBImageList const &bytes, trFImageList const &floats, long seed)
{
    std::uint64_t const count = std::min<std::uint64_t>(std::uint64_t(std::max(bytes.NumImages(), 0)),
                                                        floats.NumImages());
    long converted = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        trBImage *target = bytes.Image(int(i));
        trFImage const *source = floats.Image(i);
        if (!target || !source)
            continue;
        target->SetBytePixelsFromFloatPixels(*source, bytes.Filter(int(i)), seed);
        ++converted;
    }
    return converted;
}
