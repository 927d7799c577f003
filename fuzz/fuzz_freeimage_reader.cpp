// The FreeImage read paths on arbitrary bytes: from a file through trImage::ReadFile,
// and from memory through the asset library's decoder and pixel copy.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <unistd.h>

#include "foundation/trMessages.h"
#include "images/trFreeImageAdapter.h"
#include "images/trImage.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size)
{
    static std::string const path = "/tmp/ostrel_fuzz_freeimage_" + std::to_string(getpid()) + ".dat";
    trDoDlgBoxes = 0;
    // Pictures of a few megapixels exercise every decoder path; larger ones only cost time.
    trFreeImageAdapter::SetMaxPixels(1LL << 18);
    if (FILE *f = std::fopen(path.c_str(), "wb")) {
        if (size)
            std::fwrite(data, 1, size, f);
        std::fclose(f);
        trImage image;
        if (image.ReadFile(trString(path.c_str()))) {
            // Touch every pixel so a wrong size would show.
            volatile float sink = 0.0f;
            for (int y = 0; y < image.Height(); ++y)
                for (int x = 0; x < image.Width(); ++x)
                    sink = sink + image.FColFromPixel(image.PixelRaw(x, y)).r;
            (void)sink;
        }
    }
    if (size > 0) {
        trDataBlock block;
        auto *copy = new unsigned char[size];
        std::memcpy(copy, data, size);
        block.Reset(copy);
        FIBITMAP *bitmap = nullptr;
        if (trLibraryReadImageFromMemory(block, long(size), bitmap)) {
            unsigned long sum = 0;
            trLibraryCopyImage(bitmap, [&](int, int, unsigned char r, unsigned char, unsigned char, unsigned char) {
                sum += r;
            });
            trLibraryDestroyBitmap(bitmap);
        }
    }
    return 0;
}
