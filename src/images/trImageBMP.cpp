// Windows bitmaps: the writer of uncompressed 24-bit files. Rows go out bottom first,
// which is the format's own order and ours, so no flip is needed.

#include "images/trImage.h"

#include "foundation/trMessages.h"
#include "images/trImageIOText.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::uint32_t kBmpHeaderSize = 54;

inline void PutLittleEndian16(unsigned char *p, unsigned v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

inline void PutLittleEndian32(unsigned char *p, std::uint32_t v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
    p[2] = static_cast<unsigned char>(v >> 16);
    p[3] = static_cast<unsigned char>(v >> 24);
}

} // namespace

long trBImage::WriteBMP(trString const &name)
{
    trOutMsg("WriteBMP: attempting to write file");
    trOutMsg(name);
    if (!pixels) {
        trError("WriteBMP: image is null!");
        return 0;
    }
    // Rows are padded with zeros to a multiple of four bytes.
    std::int64_t const rowSize = (std::int64_t(width) * 3 + 3) & ~std::int64_t(3);
    std::int64_t const fileSize = kBmpHeaderSize + rowSize * height;
    if (fileSize > 0xffffffffLL) {
        trError(trJoin("WriteBMP: image of ", width, " x ", height, " is too large for a bitmap file: ", name));
        return 0;
    }

    std::FILE *f = std::fopen(name.chars, "wb");
    if (!f) {
        int const openErrno = errno;
        trError("WriteBMP: Unable to open file!\n\nPossible causes: folder doesn't exist or disk full.");
        trError(std::strerror(openErrno));
        return 0;
    }

    unsigned char header[kBmpHeaderSize] = {};
    header[0] = 'B';
    header[1] = 'M';
    PutLittleEndian32(header + 2, std::uint32_t(fileSize));
    PutLittleEndian32(header + 6, 0);
    PutLittleEndian32(header + 10, kBmpHeaderSize);
    PutLittleEndian32(header + 14, 40);
    PutLittleEndian32(header + 18, std::uint32_t(width));
    PutLittleEndian32(header + 22, std::uint32_t(height));
    PutLittleEndian16(header + 26, 1);
    PutLittleEndian16(header + 28, 24);
    PutLittleEndian32(header + 30, 0);
    PutLittleEndian32(header + 34, 0);
    PutLittleEndian32(header + 38, 2835);
    PutLittleEndian32(header + 42, 2835);
    PutLittleEndian32(header + 46, 0);
    PutLittleEndian32(header + 50, 0);

    bool ok = std::fwrite(header, 1, sizeof header, f) == sizeof header;
    std::vector<unsigned char> row(std::size_t(rowSize), 0);
    for (int y = 0; y < height && ok; ++y) {
        unsigned char const *in = ScanlineRaw(y);
        unsigned char *out = row.data();
        for (int x = 0; x < width; ++x, in += 3, out += 3) {
            out[0] = in[2];
            out[1] = in[1];
            out[2] = in[0];
        }
        ok = std::fwrite(row.data(), 1, row.size(), f) == row.size();
    }
    int const writeErrno = errno;
    if (std::fclose(f) != 0)
        ok = false;
    if (!ok) {
        trError(trJoin("WriteBMP: Unable to write file ", name, ": ", std::strerror(writeErrno)));
        return 0;
    }
    trOutMsg("WriteBMP successful");
    return 1;
}
