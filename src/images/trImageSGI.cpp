// SGI image files: the reader (verbatim and run-length, 8 and 16 bits a sample) and the
// writer of uncompressed three-plane byte files. Everything in the format is
// big-endian; row 0 of a plane is the bottom row, as in our own stores.

#include "images/trImage.h"

#include "foundation/trMessages.h"
#include "images/trImageIOText.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int kSgiMagic = 474;
constexpr long kSgiHeaderSize = 512;
// A run-length file can't plausibly expand beyond this many times its own size, even
// with rows that share their data; the cap keeps a forged header from allocating
// gigabytes out of a few bytes.
constexpr std::int64_t kMaxExpansion = 1024;


// The length of an open file, leaving it at its start; -1 when it can't be told.
std::int64_t FileLength(std::FILE *f)
{
    if (fseeko(f, 0, SEEK_END) != 0)
        return -1;
    std::int64_t length = ftello(f);
    if (length < 0 || fseeko(f, 0, SEEK_SET) != 0)
        return -1;
    return length;
}

inline unsigned BigEndian16(unsigned char const *p) { return (unsigned(p[0]) << 8) | p[1]; }

inline std::uint32_t BigEndian32(unsigned char const *p)
{
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | p[3];
}

inline void PutBigEndian16(unsigned char *p, unsigned v)
{
    p[0] = static_cast<unsigned char>(v >> 8);
    p[1] = static_cast<unsigned char>(v);
}

inline void PutBigEndian32(unsigned char *p, std::uint32_t v)
{
    p[0] = static_cast<unsigned char>(v >> 24);
    p[1] = static_cast<unsigned char>(v >> 16);
    p[2] = static_cast<unsigned char>(v >> 8);
    p[3] = static_cast<unsigned char>(v);
}

// Decodes one run-length row of `T` units (already in native order) into `out`,
// `width` samples. Returns false when the data is corrupt: a run past the row's end, or
// a run that wants more data than the row holds. A row whose data ends without its
// closing zero count keeps what it has (the rest stays 0).
template <class T> bool DecodeRow(T const *in, std::int64_t units, T *out, long width)
{
    T const *end = in + units;
    long x = 0;
    while (in < end) {
        unsigned control = *in++;
        long count = control & 0x7f;
        if (count == 0)
            return true;
        if (count > width - x)
            return false;
        if (control & 0x80) {
            if (end - in < count)
                return false;
            std::copy(in, in + count, out + x);
            in += count;
        } else {
            if (in >= end)
                return false;
            std::fill(out + x, out + x + count, *in++);
        }
        x += count;
    }
    return true;
}

} // namespace

long trImage::ReadSGI(trString const &name)
{
    std::FILE *f = std::fopen(name.chars, "rb");
    if (!f)
        return FailRead(trJoin("ReadSGI: Unable to open image file", name));
    trFileCloser closer(f);

    std::int64_t const fileLength = FileLength(f);
    unsigned char header[kSgiHeaderSize];
    std::size_t const got = std::fread(header, 1, sizeof header, f);
    if (got < 2 || BigEndian16(header) != kSgiMagic)
        return FailRead(trJoin("ReadSGI: File is not an SGI image (not found magic 474): \n\n", name));
    if (got < std::size_t(kSgiHeaderSize) || fileLength < kSgiHeaderSize)
        return FailRead(trJoin("ReadSGI: File is truncated: its header is shorter than 512 bytes: ", name));

    int const storage = header[2];
    int const bytesPerSample = header[3];
    long const xSize = BigEndian16(header + 6);
    long const ySize = BigEndian16(header + 8);
    long const zSize = BigEndian16(header + 10);
    trString const sizeText = trJoin(xSize, " x ", ySize, " x ", zSize);

    if (storage != 0 && storage != 1)
        return FailRead(trJoin("ReadSGI: Unknown storage ", storage, " (0 verbatim or 1 run-length expected) in file ",
                             name));
    if (bytesPerSample != 1 && bytesPerSample != 2)
        return FailRead(trJoin("ReadSGI: Unsupported bytes per channel ", bytesPerSample, " (1 or 2 expected) in file ",
                             name));
    if (xSize == 0 || ySize == 0 || zSize == 0)
        return FailRead(trJoin("ReadSGI: Image has no pixels (size ", sizeText, ") in file ", name));

    // The store never holds a fourth channel, and further planes are not read.
    long const channels = std::min(zSize, 3L);
    std::int64_t const rowBytes = std::int64_t(xSize) * bytesPerSample;
    std::int64_t const planeBytes = rowBytes * ySize;
    std::int64_t const dataLength = fileLength - kSgiHeaderSize;

    // Check the size against the file before allocating anything.
    std::vector<std::uint32_t> rowStart;
    std::vector<std::uint32_t> rowLength;
    std::vector<unsigned char> data;
    if (storage == 0) {
        if (planeBytes * channels > kMaxExpansion * fileLength)
            return FailRead(trJoin("ReadSGI: Image size ", sizeText, " is implausible for a file of ", fileLength,
                                 " bytes: ", name));
    } else {
        std::int64_t const tableEntries = std::int64_t(ySize) * zSize;
        if (dataLength < tableEntries * 8)
            return FailRead(
                trJoin("ReadSGI: File is truncated: too short for the row tables of an image of ", sizeText, ": ", name));
        if (planeBytes * channels > kMaxExpansion * fileLength)
            return FailRead(trJoin("ReadSGI: Image size ", sizeText, " is implausible for a file of ", fileLength,
                                 " bytes: ", name));
        // The tables and the rows they point to: the whole file, compressed.
        data.resize(std::size_t(fileLength));
        std::memcpy(data.data(), header, kSgiHeaderSize);
        if (std::fread(data.data() + kSgiHeaderSize, 1, std::size_t(dataLength), f) != std::size_t(dataLength))
            return FailRead(trJoin("ReadSGI: Unable to read file ", name));
        rowStart.resize(std::size_t(tableEntries));
        rowLength.resize(std::size_t(tableEntries));
        unsigned char const *table = data.data() + kSgiHeaderSize;
        for (std::int64_t i = 0; i < tableEntries; ++i) {
            rowStart[std::size_t(i)] = BigEndian32(table + 4 * i);
            rowLength[std::size_t(i)] = BigEndian32(table + 4 * (tableEntries + i));
        }
    }

    if (!Init(0, 0, int(xSize), int(ySize), int(channels), bytesPerSample, false))
        return FailRead(trJoin("ReadSGI: Unable to (re)allocate image (file ", name, ")"));
    Clear();
    // A file cut short keeps the rows it has; the rest of the image stays black.
    auto truncated = [&] {
        trWarning(trJoin("ReadSGI: File is truncated; the rest of the image is left black: ", name));
        return 1L;
    };

    // One row of samples: bytes, or 16-bit samples in native order.
    std::vector<std::uint16_t> row16;
    try {
        row16.resize(std::size_t(xSize));
    } catch (...) {
        return FailRead("ReadSGI: Unable to allocate temporary scanline");
    }
    unsigned char *row = reinterpret_cast<unsigned char *>(row16.data());
    std::vector<std::uint16_t> units;

    for (long c = 0; c < channels; ++c) {
        for (long y = 0; y < ySize; ++y) {
            if (storage == 0) {
                if (std::fread(row, 1, std::size_t(rowBytes), f) != std::size_t(rowBytes))
                    return truncated();
                if (bytesPerSample == 2)
                    for (long x = 0; x < xSize; ++x)
                        row16[std::size_t(x)] = std::uint16_t(BigEndian16(row + 2 * x));
            } else {
                std::size_t const entry = std::size_t(c * ySize + y);
                std::int64_t const start = rowStart[entry];
                std::int64_t const length = rowLength[entry];
                if (start < kSgiHeaderSize)
                    return FailRead(trJoin("ReadSGI: A run-length row lies outside the file (channel ", c, ", row ", y,
                                         "): ", name));
                if (start + length > fileLength)
                    return truncated();
                std::fill(row16.begin(), row16.end(), 0);
                unsigned char const *in = data.data() + start;
                bool ok;
                if (bytesPerSample == 1) {
                    ok = DecodeRow(in, length, row, xSize);
                } else {
                    // Units are 16-bit: bring the row's units to native order first.
                    std::int64_t const count = length / 2;
                    units.resize(std::size_t(count));
                    for (std::int64_t i = 0; i < count; ++i)
                        units[std::size_t(i)] = std::uint16_t(BigEndian16(in + 2 * i));
                    ok = DecodeRow(units.data(), count, row16.data(), xSize);
                }
                if (!ok)
                    return FailRead(trJoin("ReadSGI: Corrupt run-length data (channel ", c, ", row ", y, "): ", name));
            }
            // The row's samples go to the channel's slot of each pixel.
            unsigned char *out = ScanlineRaw(int(y)) + c * bytesPerSample;
            if (channels == 1) {
                std::memcpy(out, row, std::size_t(rowBytes));
            } else if (bytesPerSample == 1) {
                for (long x = 0; x < xSize; ++x, out += bytesPerPixel)
                    *out = row[x];
            } else {
                for (long x = 0; x < xSize; ++x, out += bytesPerPixel)
                    std::memcpy(out, &row16[std::size_t(x)], 2);
            }
        }
    }
    return 1;
}

long trBImage::WriteSGIRGB(trString const &name)
{
    trOutMsg("WriteSGIRGB: attempting to write file");
    trOutMsg(name);
    if (!pixels) {
        trError("WriteSGIRGB: image is null!");
        return 0;
    }
    if (width > 0xffff || height > 0xffff) {
        trError(trJoin("WriteSGIRGB: An SGI file holds at most 65535 pixels a side; image is ", width, " x ", height,
                     ": ", name));
        return 0;
    }
    std::FILE *f = std::fopen(name.chars, "wb");
    if (!f) {
        trError(trJoin("WriteSGIRGB: Unable to open file ", name,
                     "\n\nPossible causes: folder doesn't exist or disk full."));
        return 0;
    }

    unsigned char header[kSgiHeaderSize] = {};
    PutBigEndian16(header, kSgiMagic);
    header[2] = 0; // verbatim
    header[3] = 1; // one byte a sample
    PutBigEndian16(header + 4, 3);
    PutBigEndian16(header + 6, unsigned(width));
    PutBigEndian16(header + 8, unsigned(height));
    PutBigEndian16(header + 10, 3);
    PutBigEndian32(header + 12, 0);
    PutBigEndian32(header + 16, 255);
    std::memset(header + 20, 0xff, 4);
    // The name (80 bytes), the colour map (4 bytes) and the padding stay 0.

    bool ok = std::fwrite(header, 1, sizeof header, f) == sizeof header;
    std::vector<unsigned char> row(static_cast<std::size_t>(width));
    for (int c = 0; c < 3 && ok; ++c) {
        for (int y = 0; y < height && ok; ++y) {
            unsigned char const *in = ScanlineRaw(y) + c;
            for (int x = 0; x < width; ++x, in += 3)
                row[std::size_t(x)] = *in;
            ok = std::fwrite(row.data(), 1, row.size(), f) == row.size();
        }
    }
    int const writeErrno = errno;
    if (std::fclose(f) != 0)
        ok = false;
    if (!ok) {
        trError(trJoin("WriteSGIRGB: Unable to write file ", name, ": ", std::strerror(writeErrno)));
        return 0;
    }
    trOutMsg("WriteSGIRGB successful");
    return 1;
}
