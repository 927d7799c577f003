// MOLA planetary elevation grids: headerless signed 16-bit big-endian samples, whose
// dimensions follow from the file's length alone.

#include "images/trImage.h"

#include "foundation/trMessages.h"
#include "images/trImageIOText.h"

#include <cstdint>
#include <cstdio>
#include <vector>

namespace {

struct MolaSize {
    std::int64_t fileLength;
    int width;
    int height;
};

// The 8294400-byte grid is read as the small grid: only its first quarter.
constexpr MolaSize kMolaSizes[] = {
    {2073600, 1440, 720},    {8294400, 1440, 720},     {33177600, 5760, 2880},
    {129761280, 11520, 5632}, {132710400, 11520, 5760},
};

} // namespace

long trImage::ReadMOLA(trString const &name)
{
    trString const openError = trJoin("ReadMOLA: Unable to open image file", name);
    std::FILE *f = std::fopen(name.chars, "rb");
    if (!f)
        return FailRead(openError);
    std::int64_t fileLength = -1;
    if (fseeko(f, 0, SEEK_END) == 0)
        fileLength = ftello(f);
    std::fclose(f);
    if (fileLength < 0)
        return FailRead(openError);

    MolaSize const *size = nullptr;
    for (MolaSize const &s : kMolaSizes)
        if (s.fileLength == fileLength)
            size = &s;
    if (!size)
        return FailRead(
            trJoin("Unable to read MOLA file ", name, "\nUnknown file size from which to determine dimensions"));

    // Opened afresh for the samples, from the start.
    f = std::fopen(name.chars, "rb");
    if (!f)
        return FailRead(openError);
    trFileCloser closer(f);

    if (!Init(0, 0, size->width, size->height, 1, 2, true))
        return FailRead(trJoin("ReadMOLA: Unable to (re)allocate image (file ", name, ")"));

    std::vector<unsigned char> row;
    try {
        row.resize(std::size_t(size->width) * 2);
    } catch (...) {
        return FailRead("ReadMOLA: Unable to allocate temporary scanline");
    }
    // The file starts with the top of the picture: row h - 1 down to row 0.
    for (int y = size->height - 1; y >= 0; --y) {
        if (std::fread(row.data(), 1, row.size(), f) != row.size())
            return FailRead(trJoin("Error reading scanline from MOLA file ", name));
        std::int16_t *out = reinterpret_cast<std::int16_t *>(ScanlineRaw(y));
        for (int x = 0; x < size->width; ++x)
            out[x] = std::int16_t(std::uint16_t((unsigned(row[2 * std::size_t(x)]) << 8) | row[2 * std::size_t(x) + 1]));
    }
    return 1;
}
