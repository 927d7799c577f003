// Targa files: only the plain kind, type 2 (unmapped, uncompressed RGB) at 24 bits.
// Everything else goes through FreeImage by way of ReadFile.

#include "images/trImage.h"

#include "foundation/trMessages.h"
#include "images/trImageIOText.h"

#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

constexpr long kTgaHeaderSize = 18;

inline unsigned LittleEndian16(unsigned char const *p) { return unsigned(p[0]) | (unsigned(p[1]) << 8); }

// Skips `count` bytes by reading them, so that a short file is noticed.
bool Skip(std::FILE *f, long count)
{
    unsigned char buffer[256];
    while (count > 0) {
        long const n = count < long(sizeof buffer) ? count : long(sizeof buffer);
        if (std::fread(buffer, 1, std::size_t(n), f) != std::size_t(n))
            return false;
        count -= n;
    }
    return true;
}

} // namespace

long trImage::ReadTGA(trString const &name)
{
    std::FILE *f = std::fopen(name.chars, "rb");
    if (!f)
        return FailRead(trJoin("ReadTGA: Unable to open image file", name));
    trFileCloser closer(f);

    unsigned char header[kTgaHeaderSize];
    if (std::fread(header, 1, sizeof header, f) != sizeof header)
        return FailRead(trJoin("Error reading TGA header in file ", name));

    long const idLength = header[0];
    int const imageType = header[2];
    long const mapLength = LittleEndian16(header + 5);
    int const mapEntryBits = header[7];
    long const imageWidth = LittleEndian16(header + 12);
    long const imageHeight = LittleEndian16(header + 14);
    int const bitsPerPixel = header[16];

    if (imageType != 2 || bitsPerPixel != 24)
        return FailRead(trJoin(
            "Unable to read TGA file ", name,
            "\nThis library only supports Type 2 Targa 24 images (Unmapped/Uncompressed RGB format)"));
    if (!Skip(f, idLength))
        return FailRead(
            trJoin("Error while attempting to skip TGA Image Identification Field.\nTGA file may be invalid.\n", name));
    // Entries of 15 bits take two bytes in the file: round the entry size up to whole bytes.
    if (!Skip(f, mapLength * ((mapEntryBits + 7) / 8)))
        return FailRead(
            trJoin("Error while attempting to skip TGA Color Map in file ", name, ".\nTGA file may be invalid"));
    if (imageWidth == 0 || imageHeight == 0)
        return FailRead(
            trJoin("ReadTGA: Image has no pixels (size ", imageWidth, " x ", imageHeight, ") in file ", name));

    // A file too short for its stated size fails here, before anything is allocated.
    std::int64_t const rowBytes = std::int64_t(imageWidth) * 3;
    long const here = std::ftell(f);
    if (here < 0 || std::fseek(f, 0, SEEK_END) != 0)
        return FailRead(trJoin("ReadTGA: Unable to open image file", name));
    long const end = std::ftell(f);
    if (end < 0 || std::fseek(f, here, SEEK_SET) != 0)
        return FailRead(trJoin("ReadTGA: Unable to open image file", name));
    if (std::int64_t(end) - here < rowBytes * imageHeight)
        return FailRead(trJoin("Error reading scanline from TGA file ", name));

    if (!Init(0, 0, int(imageWidth), int(imageHeight), 3, 1, false))
        return FailRead(trJoin("ReadTGA: Unable to (re)allocate image (file ", name, ")"));

    // Rows are read in file order as rows 0 upward; the descriptor byte is not consulted.
    for (long y = 0; y < imageHeight; ++y) {
        unsigned char *row = ScanlineRaw(int(y));
        if (std::fread(row, 1, std::size_t(rowBytes), f) != std::size_t(rowBytes))
            return FailRead(trJoin("Error reading scanline from TGA file ", name));
        for (long x = 0; x < imageWidth; ++x, row += 3) {
            unsigned char const blue = row[0];
            row[0] = row[2];
            row[2] = blue;
        }
    }
    return 1;
}
