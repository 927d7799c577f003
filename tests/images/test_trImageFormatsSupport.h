#pragma once
// Shared by the image format tests: the patterns the fixture files were made from, a
// capture of the host's messages, scratch folders, hand-built SGI files, and reading a
// file back through ImageMagick.

#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "images/trImage.h"
#include "nodes/trClassPool.h"

#include <gtest/gtest.h>

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

// What the host's error and warning callbacks received while alive.
class MessageCapture {
public:
    MessageCapture() : oldError(trCallBackError), oldWarning(trCallBackWarning), oldDlg(trDoDlgBoxes)
    {
        Current() = this;
        trCallBackError = [](char const *t, trErrorWarningData *) { Current()->errors.push_back(t); };
        trCallBackWarning = [](char const *t, trErrorWarningData *) { Current()->warnings.push_back(t); };
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

    std::vector<std::string> errors;
    std::vector<std::string> warnings;

private:
    static MessageCapture *&Current()
    {
        static MessageCapture *current = nullptr;
        return current;
    }
    trMessageCallBack oldError;
    trMessageCallBack oldWarning;
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

[[maybe_unused]] void WriteBytes(std::string const &path, std::vector<unsigned char> const &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const *>(bytes.data()), std::streamsize(bytes.size()));
}

[[maybe_unused]] std::vector<unsigned char> ReadBytes(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

[[maybe_unused]] void Put16(std::vector<unsigned char> &out, std::size_t at, unsigned v)
{
    out[at] = static_cast<unsigned char>(v >> 8);
    out[at + 1] = static_cast<unsigned char>(v);
}

[[maybe_unused]] void Put32(std::vector<unsigned char> &out, std::size_t at, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        out[at + std::size_t(i)] = static_cast<unsigned char>(v >> (24 - 8 * i));
}

// An SGI header: storage 0 or 1, bytes a sample, sizes.
[[maybe_unused]] std::vector<unsigned char> SgiHeader(int storage, int bpc, int x, int y, int z)
{
    std::vector<unsigned char> h(512, 0);
    Put16(h, 0, 474);
    h[2] = static_cast<unsigned char>(storage);
    h[3] = static_cast<unsigned char>(bpc);
    Put16(h, 4, z > 1 ? 3 : 2);
    Put16(h, 6, unsigned(x));
    Put16(h, 8, unsigned(y));
    Put16(h, 10, unsigned(z));
    return h;
}

// A verbatim SGI from samples[channel][row][x] (row 0 the bottom), 1 or 2 bytes a sample.
[[maybe_unused]] std::vector<unsigned char>
SgiVerbatim(int bpc, std::vector<std::vector<std::vector<unsigned>>> const &samples)
{
    int const z = int(samples.size());
    int const y = int(samples[0].size());
    int const x = int(samples[0][0].size());
    std::vector<unsigned char> file = SgiHeader(0, bpc, x, y, z);
    for (auto const &plane : samples)
        for (auto const &row : plane)
            for (unsigned v : row) {
                if (bpc == 2)
                    file.push_back(static_cast<unsigned char>(v >> 8));
                file.push_back(static_cast<unsigned char>(v));
            }
    return file;
}

// A run-length SGI by an encoder of our own: runs of equal samples become repeat units,
// everything else literal units, at most 127 a unit; each row ends with a 0 count.
[[maybe_unused]] std::vector<unsigned char>
SgiRunLength(int bpc, std::vector<std::vector<std::vector<unsigned>>> const &samples)
{
    int const z = int(samples.size());
    int const y = int(samples[0].size());
    int const x = int(samples[0][0].size());
    std::vector<unsigned char> file = SgiHeader(1, bpc, x, y, z);
    std::size_t const tables = std::size_t(y) * z * 4;
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
            std::size_t i = 0;
            while (i < row.size()) {
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

// A 16-bit sample of the image at column x, row y, channel c.
[[maybe_unused]] unsigned Sample16(trImage const &image, int x, int y, int c)
{
    std::uint16_t v;
    std::memcpy(&v, image.PixelRaw(x, y) + 2 * c, 2);
    return v;
}

[[maybe_unused]] float SampleF(trImage const &image, int x, int y, int c)
{
    float v;
    std::memcpy(&v, image.PixelRaw(x, y) + 4 * c, 4);
    return v;
}

// The file as ImageMagick decodes it: 8-bit RGB, top row first. Empty on failure.
[[maybe_unused]] std::vector<unsigned char> ImageMagickRgb8(std::string const &path, int depth = 8)
{
#ifdef OSTREL_IMAGEMAGICK_CONVERT
    std::string const command = std::string("\"") + OSTREL_IMAGEMAGICK_CONVERT + "\" \"" + path + "\" -depth " +
                                std::to_string(depth) + " rgb:- 2>/dev/null";
    std::FILE *pipe = popen(command.c_str(), "r");
    if (!pipe)
        return {};
    std::vector<unsigned char> bytes;
    unsigned char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        bytes.insert(bytes.end(), buffer, buffer + n);
    if (pclose(pipe) != 0)
        return {};
    return bytes;
#else
    (void)path;
    (void)depth;
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
