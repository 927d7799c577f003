#pragma once
// Shared by the image tests: the patterns the fixture files were made from, a capture of
// the host's messages, scratch folders, hand-built SGI files, and reading a file back
// through ImageMagick.

#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "images/trImage.h"
#include "nodes/trClassPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>
#include <unistd.h>

namespace {

constexpr int kPatternW = 37;
constexpr int kPatternH = 23;

// The patterns of make_test_images.cmake; y = 0 is the top row of the picture.
struct Rgb {
    int r, g, b;
};
[[maybe_unused]] Rgb Pattern8(int x, int y)
{
    return {(37 * x + 11 * y) % 256, (5 * x + 53 * y + 7) % 256, (x * x + 3 * y * y + 19) % 256};
}
[[maybe_unused]] Rgb Pattern16(int x, int y)
{
    return {(4099 * x + 1031 * y + 11) % 65536, (997 * x + 2801 * y + 7) % 65536,
            (x * x * 41 + 3 * y * y + 19) % 65536};
}
[[maybe_unused]] int Alpha8(int x, int y) { return (29 * x + 71 * y + 3) % 256; }

[[maybe_unused]] std::string DataPath(char const *name)
{
#ifdef OSTREL_IMAGE_TEST_DATA
    return std::string(OSTREL_IMAGE_TEST_DATA) + name;
#else
    return name;
#endif
}

// Fails the test with a hint when the fixture hasn't made the file.
[[maybe_unused]] bool HaveDataFile(char const *name)
{
    if (std::filesystem::exists(DataPath(name)))
        return true;
    ADD_FAILURE() << "missing " << DataPath(name) << ": run through ctest, whose fixture makes the files";
    return false;
}

// The small checked-in fixtures in data/ beside this source (see data/README.md).
[[maybe_unused]] std::string Fixture(char const *name)
{
    std::string const here = __FILE__;
    return here.substr(0, here.find_last_of('/') + 1) + "data/" + name;
}

// A 2x2 GIF screen whose frame claims 18761 x 18761 pixels.
[[maybe_unused]] std::vector<unsigned char> const kHugeGifFrame = {
    0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x02, 0x00, 0x02, 0x00, 0xf0, 0x00, 0x00, 0x7e, 0x7e, 0x7e,
    0x00, 0x00, 0x00, 0x21, 0xf9, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x21, 0xff, 0x00, 0x2c, 0x00,
    0x00, 0x00, 0x00, 0x49, 0x49, 0x49, 0x49, 0x00, 0x02, 0x02, 0x84, 0x51, 0x00, 0x3b};

// What the host's error and warning callbacks received while alive.
class MessageCapture {
public:
    MessageCapture() : oldError(trCallBackError), oldWarning(trCallBackWarning), oldDlg(trDoDlgBoxes)
    {
        Current() = this;
        trCallBackError = [](char const *t, trErrorWarningData *) { Current()->errors.push_back(t ? t : ""); };
        trCallBackWarning = [](char const *t, trErrorWarningData *) { Current()->warnings.push_back(t ? t : ""); };
        trDoDlgBoxes = 1;
    }
    ~MessageCapture()
    {
        trCallBackError = oldError;
        trCallBackWarning = oldWarning;
        trDoDlgBoxes = oldDlg;
        Current() = nullptr;
    }
    MessageCapture(MessageCapture const &) = delete;
    MessageCapture &operator=(MessageCapture const &) = delete;

    std::string AllErrors() const
    {
        std::string all;
        for (auto const &e : errors)
            all += e + "\n";
        return all;
    }
    bool AnyErrorStartsWith(std::string const &prefix) const
    {
        return std::any_of(errors.begin(), errors.end(), [&](std::string const &e) { return e.rfind(prefix, 0) == 0; });
    }

    std::vector<std::string> errors;
    std::vector<std::string> warnings;

private:
    static MessageCapture *&Current()
    {
        static MessageCapture *current = nullptr;
        return current;
    }
    trMessageCallBack oldError, oldWarning;
    int oldDlg;
};

// A fresh folder, removed with everything in it at the end.
class ScratchDir {
public:
    ScratchDir()
    {
        static int counter = 0;
        path = std::filesystem::temp_directory_path() /
               ("ostrel_imgio_" + std::to_string(getpid()) + "_" + std::to_string(counter++));
        std::filesystem::create_directories(path);
    }
    ~ScratchDir()
    {
        std::error_code ec;
        std::filesystem::remove_all(path, ec);
    }
    ScratchDir(ScratchDir const &) = delete;
    ScratchDir &operator=(ScratchDir const &) = delete;

    std::string File(char const *name) const { return (path / name).string(); }

    std::filesystem::path path;
};

using Bytes = std::vector<unsigned char>;

[[maybe_unused]] void WriteBytes(std::string const &path, Bytes const &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const *>(bytes.data()), std::streamsize(bytes.size()));
}

[[maybe_unused]] Bytes ReadBytes(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Big-endian `n`-byte value at `at`.
[[maybe_unused]] void PutBe(Bytes &out, std::size_t at, std::uint32_t v, int n)
{
    for (int i = 0; i < n; ++i)
        out[at + std::size_t(i)] = static_cast<unsigned char>(v >> (8 * (n - 1 - i)));
}
[[maybe_unused]] void Put16(Bytes &out, std::size_t at, unsigned v) { PutBe(out, at, v, 2); }
[[maybe_unused]] void Put32(Bytes &out, std::size_t at, std::uint32_t v) { PutBe(out, at, v, 4); }

// An SGI header: storage 0 or 1, bytes a sample, sizes.
[[maybe_unused]] Bytes SgiHeader(int storage, int bpc, int x, int y, int z)
{
    Bytes h(512, 0);
    Put16(h, 0, 474);
    h[2] = static_cast<unsigned char>(storage);
    h[3] = static_cast<unsigned char>(bpc);
    Put16(h, 4, z > 1 ? 3 : 2);
    Put16(h, 6, unsigned(x));
    Put16(h, 8, unsigned(y));
    Put16(h, 10, unsigned(z));
    return h;
}

using Planes = std::vector<std::vector<std::vector<unsigned>>>; // [channel][row][x], row 0 the bottom

// An SGI file from samples, 1 or 2 bytes a sample: verbatim, or run-length by an encoder
// of our own (runs of 3 or more equal samples become repeat units, everything else
// literal units, at most 127 a unit; each row ends with a 0 count).
[[maybe_unused]] Bytes SgiFile(int bpc, Planes const &samples, bool runLength = false)
{
    int const z = int(samples.size()), y = int(samples[0].size()), x = int(samples[0][0].size());
    Bytes file = SgiHeader(runLength ? 1 : 0, bpc, x, y, z);
    std::size_t const tables = std::size_t(y) * z * 4;
    if (runLength)
        file.resize(file.size() + 2 * tables, 0);
    auto unit = [&](unsigned v) {
        if (bpc == 2)
            file.push_back(static_cast<unsigned char>(v >> 8));
        file.push_back(static_cast<unsigned char>(v));
    };
    for (int c = 0; c < z; ++c)
        for (int r = 0; r < y; ++r) {
            std::size_t const start = file.size();
            auto const &row = samples[std::size_t(c)][std::size_t(r)];
            if (!runLength) {
                for (unsigned v : row)
                    unit(v);
                continue;
            }
            for (std::size_t i = 0; i < row.size();) {
                std::size_t run = 1;
                while (i + run < row.size() && row[i + run] == row[i] && run < 127)
                    ++run;
                if (run >= 3) {
                    unit(unsigned(run));
                    unit(row[i]);
                    i += run;
                    continue;
                }
                std::size_t lit = 0;
                while (i + lit < row.size() && lit < 127 &&
                       !(i + lit + 2 < row.size() && row[i + lit] == row[i + lit + 1] &&
                         row[i + lit] == row[i + lit + 2]))
                    ++lit;
                unit(0x80u | unsigned(lit));
                for (std::size_t k = 0; k < lit; ++k)
                    unit(row[i + k]);
                i += lit;
            }
            unit(0);
            std::size_t const entry = std::size_t(c) * y + std::size_t(r);
            Put32(file, 512 + 4 * entry, std::uint32_t(start));
            Put32(file, 512 + tables + 4 * entry, std::uint32_t(file.size() - start));
        }
    return file;
}

// A sample of the image at column x, row y, channel c, of 2 (unsigned) or 4 (float) bytes.
template <class T = std::uint16_t> T SampleAt(trImage const &image, int x, int y, int c)
{
    T v;
    std::memcpy(&v, image.PixelRaw(x, y) + sizeof(T) * std::size_t(c), sizeof(T));
    return v;
}

// The file as ImageMagick decodes it: 8-bit RGB, top row first. Empty on failure.
[[maybe_unused]] Bytes ImageMagickRgb8(std::string const &path)
{
#ifdef OSTREL_IMAGEMAGICK_CONVERT
    std::string const command =
        std::string("\"") + OSTREL_IMAGEMAGICK_CONVERT + "\" \"" + path + "\" -depth 8 rgb:- 2>/dev/null";
    std::FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return {};
    Bytes bytes;
    unsigned char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        bytes.insert(bytes.end(), buffer, buffer + n);
    return pclose(pipe) == 0 ? bytes : Bytes();
#else
    (void)path;
    return {};
#endif
}

// Loads the image writer module once per process; false when it isn't built.
[[maybe_unused]] bool LoadImageWriters()
{
#ifdef OSTREL_IMAGE_WRITER_PLUGIN_DIR
    static bool const loaded = [] {
        long id = -1;
        if (trClasses.FindClassIdFromClassName(id, "image_writer_exr"))
            return true;
        return trClasses.LoadPlugin(OSTREL_IMAGE_WRITER_PLUGIN_DIR "image_writers.svp",
                                    OSTREL_IMAGE_WRITER_PLUGIN_DIR) != 0;
    }();
    return loaded;
#else
    return false;
#endif
}

} // namespace
