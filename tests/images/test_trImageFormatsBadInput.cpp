// Bad files for every reader of this library's own: missing, empty, truncated, corrupt,
// with dimensions far beyond what the file holds, and under the wrong extension. Each
// must end in 0 and one clear message naming the reader, leave the image empty, and
// allocate nothing out of proportion to the file.

#include "test_trImageFormatsSupport.h"

#include <sys/resource.h>

namespace {

// Reads through `read` and expects failure with a message that begins with `prefix`.
template <class Read> void ExpectRefused(Read read, std::string const &path, std::string const &prefix)
{
    trImage image;
    // Something to lose: a failed read must leave the image empty.
    ASSERT_EQ(image.Init(0, 0, 3, 3, 3, 1), 1);
    MessageCapture capture;
    EXPECT_EQ(read(image, path), 0) << path;
    ASSERT_EQ(capture.errors.size(), 1u) << capture.AllErrors();
    EXPECT_EQ(capture.errors[0].rfind(prefix, 0), 0u) << capture.errors[0];
    EXPECT_NE(capture.errors[0].find(path), std::string::npos) << capture.errors[0];
    EXPECT_EQ(image.Pixels(), nullptr);
    EXPECT_EQ(image.Width(), 0);
}

long ReadSgi(trImage &image, std::string const &path) { return image.ReadSGI(path.c_str()); }
long ReadTga(trImage &image, std::string const &path) { return image.ReadTGA(path.c_str()); }
long ReadMola(trImage &image, std::string const &path) { return image.ReadMOLA(path.c_str()); }

std::vector<std::vector<std::vector<unsigned>>> SmallPlanes(int z, int h, int w)
{
    std::vector<std::vector<std::vector<unsigned>>> s(z, std::vector<std::vector<unsigned>>(h, std::vector<unsigned>(w)));
    for (int c = 0; c < z; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                s[c][y][x] = unsigned((x * 31 + y * 17 + c * 5) % 251);
    return s;
}

// A Targa header: type, bits per pixel, size, identification length, colour map length.
std::vector<unsigned char> TgaHeader(int type, int bits, int w, int h, int idLength = 0, int mapLength = 0)
{
    std::vector<unsigned char> t(18, 0);
    t[0] = static_cast<unsigned char>(idLength);
    t[1] = mapLength ? 1 : 0;
    t[2] = static_cast<unsigned char>(type);
    t[5] = static_cast<unsigned char>(mapLength);
    t[6] = static_cast<unsigned char>(mapLength >> 8);
    t[7] = mapLength ? 24 : 0;
    t[12] = static_cast<unsigned char>(w);
    t[13] = static_cast<unsigned char>(w >> 8);
    t[14] = static_cast<unsigned char>(h);
    t[15] = static_cast<unsigned char>(h >> 8);
    t[16] = static_cast<unsigned char>(bits);
    return t;
}

// Holds the address space to a limit while alive, so that a forged size that tried to
// allocate gigabytes would fail the test rather than pass by luck.
class AddressSpaceLimit {
public:
    explicit AddressSpaceLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_AS, &old);
        // Sanitizer builds reserve huge shadow regions: leave the limit alone there.
#if !defined(__SANITIZE_ADDRESS__)
        rlimit limit = old;
        limit.rlim_cur = std::min<rlim_t>(old.rlim_max, bytes);
        active = setrlimit(RLIMIT_AS, &limit) == 0;
#else
        (void)bytes;
#endif
    }
    ~AddressSpaceLimit()
    {
        if (active)
            setrlimit(RLIMIT_AS, &old);
    }
    AddressSpaceLimit(AddressSpaceLimit const &) = delete;
    AddressSpaceLimit &operator=(AddressSpaceLimit const &) = delete;

private:
    rlimit old{};
    bool active = false;
};

} // namespace

TEST(trImageFormatsBadInput, MissingFilesGiveTheOpenMessages)
{
    std::string const path = "/no/such/folder/x";
    MessageCapture capture;
    trImage image;
    EXPECT_EQ(image.ReadSGI((path + ".sgi").c_str()), 0);
    EXPECT_EQ(image.ReadTGA((path + ".tga").c_str()), 0);
    EXPECT_EQ(image.ReadMOLA((path + ".img").c_str()), 0);
    ASSERT_EQ(capture.errors.size(), 3u);
    EXPECT_EQ(capture.errors[0], "ReadSGI: Unable to open image file" + path + ".sgi");
    EXPECT_EQ(capture.errors[1], "ReadTGA: Unable to open image file" + path + ".tga");
    EXPECT_EQ(capture.errors[2], "ReadMOLA: Unable to open image file" + path + ".img");
}

TEST(trImageFormatsBadInput, SgiEmptyShortAndWrongFiles)
{
    ScratchDir dir;
    std::string const notSgi = "ReadSGI: File is not an SGI image (not found magic 474): \n\n";
    WriteBytes(dir.File("empty.sgi"), {});
    ExpectRefused(ReadSgi, dir.File("empty.sgi"), notSgi);
    WriteBytes(dir.File("one.sgi"), {0x01});
    ExpectRefused(ReadSgi, dir.File("one.sgi"), notSgi);
    // A PNG under an SGI name.
    if (HaveDataFile("rgb8.png")) {
        std::vector<unsigned char> const png = ReadBytes(DataPath("rgb8.png"));
        WriteBytes(dir.File("png.rgb"), png);
        ExpectRefused(ReadSgi, dir.File("png.rgb"), notSgi);
        trImage image;
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(dir.File("png.rgb").c_str()), 0);
        ASSERT_EQ(capture.errors.size(), 1u);
        EXPECT_EQ(capture.errors[0], notSgi + dir.File("png.rgb"));
    }
    // The magic, then nothing: the header is short of its 512 bytes.
    std::vector<unsigned char> header = SgiHeader(0, 1, 4, 4, 3);
    header.resize(100);
    WriteBytes(dir.File("header.sgi"), header);
    ExpectRefused(ReadSgi, dir.File("header.sgi"), "ReadSGI: File is truncated");
}

// A file cut short in its image data keeps the rows it has, leaves the rest black and
// still reads, with a warning naming the file.
template <class Read> void ExpectTruncatedButRead(Read read, std::string const &path)
{
    trImage image;
    MessageCapture capture;
    EXPECT_EQ(read(image, path), 1) << path;
    EXPECT_TRUE(capture.errors.empty()) << capture.AllErrors();
    ASSERT_EQ(capture.warnings.size(), 1u);
    EXPECT_EQ(capture.warnings[0].rfind("ReadSGI: File is truncated", 0), 0u) << capture.warnings[0];
    EXPECT_NE(capture.warnings[0].find(path), std::string::npos);
    EXPECT_NE(image.Pixels(), nullptr);
}

TEST(trImageFormatsBadInput, SgiTruncatedData)
{
    ScratchDir dir;
    auto const planes = SmallPlanes(3, 6, 10);
    std::vector<unsigned char> const verbatim = SgiVerbatim(1, planes);
    std::vector<unsigned char> const rle = SgiRunLength(1, planes);
    for (std::size_t cut : {std::size_t(513), std::size_t(512 + 90), verbatim.size() - 1}) {
        std::vector<unsigned char> part(verbatim.begin(), verbatim.begin() + std::ptrdiff_t(cut));
        WriteBytes(dir.File("v.sgi"), part);
        ExpectTruncatedButRead(ReadSgi, dir.File("v.sgi"));
    }
    // Half the file: the red plane (first in the file) is whole, the blue one is black.
    {
        std::vector<unsigned char> half(verbatim.begin(), verbatim.begin() + std::ptrdiff_t(512 + 6 * 10 + 5));
        WriteBytes(dir.File("h.sgi"), half);
        trImage image;
        MessageCapture capture;
        ASSERT_EQ(image.ReadSGI(dir.File("h.sgi").c_str()), 1);
        unsigned char const *p = static_cast<unsigned char const *>(image.PixelRaw(0, 5));
        EXPECT_EQ(p[0], planes[0][5][0]);
        EXPECT_EQ(p[2], 0) << "unread samples stay black";
    }
    // Cut inside the header or the tables: nothing can be read, so nothing is kept.
    std::vector<unsigned char> header(verbatim.begin(), verbatim.begin() + 300);
    WriteBytes(dir.File("head.sgi"), header);
    ExpectRefused(ReadSgi, dir.File("head.sgi"), "ReadSGI: File is truncated");
    std::vector<unsigned char> tables(rle.begin(), rle.begin() + 512 + 50);
    WriteBytes(dir.File("t.sgi"), tables);
    ExpectRefused(ReadSgi, dir.File("t.sgi"), "ReadSGI: File is truncated");
    // Cut inside the rows the tables point to.
    std::vector<unsigned char> rows(rle.begin(), rle.end() - 3);
    WriteBytes(dir.File("r.sgi"), rows);
    ExpectTruncatedButRead(ReadSgi, dir.File("r.sgi"));
    if (HaveDataFile("rgb8_rle.sgi")) {
        std::vector<unsigned char> real = ReadBytes(DataPath("rgb8_rle.sgi"));
        real.resize(real.size() * 3 / 4);
        WriteBytes(dir.File("real.sgi"), real);
        ExpectTruncatedButRead(ReadSgi, dir.File("real.sgi"));
    }
}

TEST(trImageFormatsBadInput, SgiCorruptHeadersAndRuns)
{
    ScratchDir dir;
    auto refuse = [&](std::vector<unsigned char> const &file, char const *prefix) {
        WriteBytes(dir.File("c.sgi"), file);
        ExpectRefused(ReadSgi, dir.File("c.sgi"), prefix);
    };
    std::vector<unsigned char> file = SgiVerbatim(1, SmallPlanes(3, 2, 4));
    file[2] = 2;
    refuse(file, "ReadSGI: Unknown storage 2");
    file[2] = 0;
    file[3] = 4;
    refuse(file, "ReadSGI: Unsupported bytes per channel 4");
    file[3] = 1;
    Put16(file, 6, 0);
    refuse(file, "ReadSGI: Image has no pixels");
    Put16(file, 6, 4);
    Put16(file, 10, 0);
    refuse(file, "ReadSGI: Image has no pixels");

    // A repeat that runs past the row's end, a literal that wants more than the row
    // holds, and a row table entry pointing into the header.
    std::vector<unsigned char> rle = SgiHeader(1, 1, 4, 1, 1);
    rle.resize(520, 0);
    for (unsigned char b : {0x05, 7, 0x00})
        rle.push_back(b);
    Put32(rle, 512, 520);
    Put32(rle, 516, 3);
    refuse(rle, "ReadSGI: Corrupt run-length data");
    rle[520] = 0x84;
    refuse(rle, "ReadSGI: Corrupt run-length data");
    rle[520] = 0x02;
    Put32(rle, 512, 10);
    refuse(rle, "ReadSGI: A run-length row lies outside the file");
}

// The largest sizes the header can state, in files of a few hundred bytes: refused
// before any allocation, under a limit of address space that the allocations would
// break.
TEST(trImageFormatsBadInput, SgiAndTargaHugeDimensionsInSmallFiles)
{
    ScratchDir dir;
    std::vector<unsigned char> verbatim = SgiHeader(0, 2, 65535, 65535, 4);
    verbatim.resize(700, 0x55);
    WriteBytes(dir.File("huge.sgi"), verbatim);
    std::vector<unsigned char> rle = SgiHeader(1, 2, 65535, 65535, 3);
    rle.resize(4000, 0);
    WriteBytes(dir.File("huge_rle.sgi"), rle);
    // Tables that fit the file, but a size out of all proportion to it.
    std::vector<unsigned char> wide = SgiHeader(1, 2, 65535, 20, 3);
    wide.resize(512 + 8 * 60 + 4, 0);
    for (int i = 0; i < 60; ++i) {
        Put32(wide, 512 + 4 * std::size_t(i), 512 + 8 * 60);
        Put32(wide, 512 + 240 + 4 * std::size_t(i), 4);
    }
    WriteBytes(dir.File("wide.sgi"), wide);
    std::vector<unsigned char> tga = TgaHeader(2, 24, 65535, 65535);
    tga.resize(600, 0);
    WriteBytes(dir.File("huge.tga"), tga);

    AddressSpaceLimit limit(rlim_t(8) << 30);
    ExpectRefused(ReadSgi, dir.File("huge.sgi"), "ReadSGI: Image size 65535 x 65535 x 4 is implausible");
    ExpectRefused(ReadSgi, dir.File("huge_rle.sgi"), "ReadSGI: File is truncated");
    ExpectRefused(ReadSgi, dir.File("wide.sgi"), "ReadSGI: Image size 65535 x 20 x 3 is implausible");
    ExpectRefused(ReadTga, dir.File("huge.tga"), "Error reading scanline from TGA file ");
}

TEST(trImageFormatsBadInput, TargaShortAndWrongFiles)
{
    ScratchDir dir;
    auto path = dir.File("t.tga");
    WriteBytes(path, {});
    ExpectRefused(ReadTga, path, "Error reading TGA header in file ");
    WriteBytes(path, std::vector<unsigned char>(17, 0));
    ExpectRefused(ReadTga, path, "Error reading TGA header in file ");

    std::vector<unsigned char> paletted = TgaHeader(1, 8, 4, 4);
    paletted.resize(100, 0);
    WriteBytes(path, paletted);
    ExpectRefused(ReadTga, path, "Unable to read TGA file ");
    std::vector<unsigned char> deep = TgaHeader(2, 32, 4, 4);
    deep.resize(100, 0);
    WriteBytes(path, deep);
    ExpectRefused(ReadTga, path, "Unable to read TGA file ");

    std::vector<unsigned char> id = TgaHeader(2, 24, 2, 2, 200);
    id.resize(50, 0);
    WriteBytes(path, id);
    ExpectRefused(ReadTga, path, "Error while attempting to skip TGA Image Identification Field.\nTGA file may be invalid.\n");
    std::vector<unsigned char> map = TgaHeader(2, 24, 2, 2, 0, 100);
    map.resize(50, 0);
    WriteBytes(path, map);
    ExpectRefused(ReadTga, path, "Error while attempting to skip TGA Color Map in file ");

    std::vector<unsigned char> rows = TgaHeader(2, 24, 4, 4);
    rows.resize(18 + 4 * 4 * 3 - 1, 0);
    WriteBytes(path, rows);
    ExpectRefused(ReadTga, path, "Error reading scanline from TGA file ");
    std::vector<unsigned char> none = TgaHeader(2, 24, 0, 4);
    none.resize(30, 0);
    WriteBytes(path, none);
    ExpectRefused(ReadTga, path, "ReadTGA: Image has no pixels");
}

TEST(trImageFormatsBadInput, TargaSkipsIdentificationAndColourMap)
{
    // Two pixels after a 3-byte identification field and a 2-entry 24-bit colour map.
    std::vector<unsigned char> file = TgaHeader(2, 24, 2, 1, 3, 2);
    for (int b : {97, 98, 99, 1, 2, 3, 4, 5, 6, 10, 20, 30, 40, 50, 60})
        file.push_back(static_cast<unsigned char>(b));
    ScratchDir dir;
    WriteBytes(dir.File("ok.tga"), file);
    trImage image;
    ASSERT_EQ(image.ReadTGA(dir.File("ok.tga").c_str()), 1);
    unsigned char const want[6] = {30, 20, 10, 60, 50, 40};
    EXPECT_EQ(std::memcmp(image.Pixels(), want, 6), 0);
}

TEST(trImageFormatsBadInput, MolaWrongSizes)
{
    ScratchDir dir;
    std::string const suffix = "\nUnknown file size from which to determine dimensions";
    for (std::size_t length : {std::size_t(0), std::size_t(1), std::size_t(2073599), std::size_t(2073601)}) {
        std::string const path = dir.File("m.img");
        WriteBytes(path, std::vector<unsigned char>(length, 0));
        trImage image;
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(path.c_str()), 0);
        ASSERT_EQ(capture.errors.size(), 1u);
        EXPECT_EQ(capture.errors[0], "Unable to read MOLA file " + path + suffix);
        EXPECT_EQ(image.Pixels(), nullptr);
    }
    // An SGI file under a MOLA name is judged by its length alone.
    WriteBytes(dir.File("sgi.img"), SgiVerbatim(1, SmallPlanes(3, 2, 2)));
    ExpectRefused(ReadMola, dir.File("sgi.img"), "Unable to read MOLA file ");
}
