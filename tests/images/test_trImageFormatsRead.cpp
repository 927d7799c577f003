// Reading image files: files made by ImageMagick from known patterns (SGI verbatim and
// run-length, 8 and 16 bits, one to four planes; Targa; PNG, TIFF, BMP, JPEG through
// FreeImage), EXR made by OpenEXR itself, hand-built SGI and MOLA files, and the choice
// of reader by the name's ending.

#include "test_trImageFormatsSupport.h"

#include <cmath>
#include <cstdlib>

#ifdef OSTREL_HAVE_OPENEXR
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfOutputFile.h>
#endif

namespace {

// Every pixel against the 8-bit pattern; our row r is the picture's row h - 1 - r.
void ExpectPattern8(trImage const &image, bool withAlpha = false)
{
    ASSERT_EQ(image.Width(), kPatternW);
    ASSERT_EQ(image.Height(), kPatternH);
    ASSERT_EQ(image.BytesPerChannel(), 1);
    int mismatches = 0;
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x) {
            Rgb const want = Pattern8(x, kPatternH - 1 - r);
            unsigned char const *p = image.PixelRaw(x, r);
            bool ok = p[0] == want.r && p[1] == want.g && p[2] == want.b;
            if (withAlpha)
                ok = ok && p[3] == Alpha8(x, kPatternH - 1 - r);
            if (!ok && mismatches++ < 5)
                ADD_FAILURE() << "pixel " << x << "," << r << ": " << int(p[0]) << " " << int(p[1]) << " "
                              << int(p[2]) << ", want " << want.r << " " << want.g << " " << want.b;
        }
    EXPECT_EQ(mismatches, 0);
}

void ExpectPattern16(trImage const &image)
{
    ASSERT_EQ(image.Width(), kPatternW);
    ASSERT_EQ(image.Height(), kPatternH);
    ASSERT_EQ(image.NumChannels(), 3);
    ASSERT_EQ(image.BytesPerChannel(), 2);
    int mismatches = 0;
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x) {
            Rgb const want = Pattern16(x, kPatternH - 1 - r);
            if ((Sample16(image, x, r, 0) != unsigned(want.r) || Sample16(image, x, r, 1) != unsigned(want.g) ||
                 Sample16(image, x, r, 2) != unsigned(want.b)) &&
                mismatches++ < 5)
                ADD_FAILURE() << "pixel " << x << "," << r;
        }
    EXPECT_EQ(mismatches, 0);
}

} // namespace

TEST(trImageFormatsRead, SgiVerbatimAndRunLengthGiveThePattern)
{
    for (char const *name : {"rgb8.sgi", "rgb8_rle.sgi"}) {
        SCOPED_TRACE(name);
        if (!HaveDataFile(name))
            continue;
        trImage image;
        MessageCapture capture;
        ASSERT_EQ(image.ReadFile(DataPath(name).c_str()), 1) << capture.AllErrors();
        EXPECT_EQ(image.NumChannels(), 3);
        EXPECT_FALSE(image.IsSigned());
        ExpectPattern8(image);
        EXPECT_TRUE(capture.errors.empty());
    }
}

TEST(trImageFormatsRead, SgiSixteenBitKeepsTwoBytesAChannel)
{
    if (!HaveDataFile("rgb16.sgi"))
        return;
    trImage image;
    ASSERT_EQ(image.ReadSGI(DataPath("rgb16.sgi").c_str()), 1);
    ExpectPattern16(image);
}

TEST(trImageFormatsRead, SgiFourPlanesLoadAsThreeAndOnePlaneAsOne)
{
    for (char const *name : {"rgba8.sgi", "rgba8_rle.sgi"}) {
        SCOPED_TRACE(name);
        if (!HaveDataFile(name))
            continue;
        trImage image;
        ASSERT_EQ(image.ReadSGI(DataPath(name).c_str()), 1);
        EXPECT_EQ(image.NumChannels(), 3);
        EXPECT_EQ(image.BytesPerPixel(), 3);
        ExpectPattern8(image);
    }
    for (char const *name : {"grey8.sgi", "grey8_rle.sgi"}) {
        SCOPED_TRACE(name);
        if (!HaveDataFile(name))
            continue;
        trImage image;
        ASSERT_EQ(image.ReadSGI(DataPath(name).c_str()), 1);
        ASSERT_EQ(image.NumChannels(), 1);
        ASSERT_EQ(image.Width(), kPatternW);
        ASSERT_EQ(image.Height(), kPatternH);
        for (int r = 0; r < kPatternH; ++r)
            for (int x = 0; x < kPatternW; ++x)
                ASSERT_EQ(*image.PixelRaw(x, r), Alpha8(x, kPatternH - 1 - r)) << x << "," << r;
    }
}

// Our own encoder, 16-bit units, with a long repeat that spans units and rows of
// different lengths; read back sample for sample.
TEST(trImageFormatsRead, SgiSixteenBitRunLengthDecodes)
{
    int const w = 300;
    int const h = 4;
    std::vector<std::vector<std::vector<unsigned>>> samples(3, std::vector<std::vector<unsigned>>(
                                                                   h, std::vector<unsigned>(w)));
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                samples[c][y][x] = (x > 40 && x < 250) ? 0xfedcu - unsigned(c + y) : unsigned(x * 211 + y * 7 + c);
    ScratchDir dir;
    std::string const path = dir.File("rle16.sgi");
    WriteBytes(path, SgiRunLength(2, samples));
    trImage image;
    MessageCapture capture;
    ASSERT_EQ(image.ReadSGI(path.c_str()), 1) << capture.AllErrors();
    ASSERT_EQ(image.BytesPerChannel(), 2);
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                ASSERT_EQ(Sample16(image, x, y, c), samples[c][y][x] & 0xffff) << c << " " << x << "," << y;
}

// Rows that share their data are legal: the tables may point twice at one row.
TEST(trImageFormatsRead, SgiRunLengthRowsMayShareData)
{
    std::vector<unsigned char> file = SgiHeader(1, 1, 5, 2, 1);
    file.resize(512 + 16, 0);
    std::size_t const row = file.size();
    for (unsigned char b : {0x83, 10, 20, 30, 0x02, 99, 0x00})
        file.push_back(b);
    Put32(file, 512, std::uint32_t(row));
    Put32(file, 516, std::uint32_t(row));
    Put32(file, 520, 7);
    Put32(file, 524, 7);
    ScratchDir dir;
    WriteBytes(dir.File("shared.sgi"), file);
    trImage image;
    ASSERT_EQ(image.ReadSGI(dir.File("shared.sgi").c_str()), 1);
    unsigned char const want[5] = {10, 20, 30, 99, 99};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 5; ++x)
            EXPECT_EQ(*image.PixelRaw(x, y), want[x]);
}

TEST(trImageFormatsRead, TargaTypeTwoGivesThePattern)
{
    if (!HaveDataFile("rgb8.tga"))
        return;
    trImage image;
    ASSERT_EQ(image.ReadTGA(DataPath("rgb8.tga").c_str()), 1);
    EXPECT_EQ(image.NumChannels(), 3);
    ExpectPattern8(image);
}

// A run-length Targa (type 10) is refused by ReadTGA; ReadFile hands it to FreeImage.
TEST(trImageFormatsRead, TargaRunLengthIsRefusedByReadTGAButReadByReadFile)
{
    if (!HaveDataFile("rgb8_rle.tga"))
        return;
    std::string const path = DataPath("rgb8_rle.tga");
    trImage image;
    {
        MessageCapture capture;
        EXPECT_EQ(image.ReadTGA(path.c_str()), 0);
        ASSERT_EQ(capture.errors.size(), 1u);
        EXPECT_EQ(capture.errors[0], "Unable to read TGA file " + path +
                                         "\nThis library only supports Type 2 Targa 24 images "
                                         "(Unmapped/Uncompressed RGB format)");
        EXPECT_EQ(image.Pixels(), nullptr);
    }
    ASSERT_EQ(image.ReadFile(path.c_str()), 1);
    ExpectPattern8(image);
}

TEST(trImageFormatsRead, FreeImageFormatsGiveThePattern)
{
    for (char const *name : {"rgb8.png", "rgb8.tif", "rgb8.bmp"}) {
        SCOPED_TRACE(name);
        if (!HaveDataFile(name))
            continue;
        trImage image;
        ASSERT_EQ(image.ReadFile(DataPath(name).c_str()), 1);
        EXPECT_EQ(image.NumChannels(), 3);
        ExpectPattern8(image);
    }
    for (char const *name : {"rgb16.png", "rgb16.tif"}) {
        SCOPED_TRACE(name);
        if (!HaveDataFile(name))
            continue;
        trImage image;
        ASSERT_EQ(image.ReadFile(DataPath(name).c_str()), 1);
        ExpectPattern16(image);
    }
    if (HaveDataFile("rgba8.png")) {
        trImage image;
        ASSERT_EQ(image.ReadFile(DataPath("rgba8.png").c_str()), 1);
        ASSERT_EQ(image.NumChannels(), 4);
        ExpectPattern8(image, true);
    }
}

TEST(trImageFormatsRead, FloatTiffAndJpegComeCloseToThePattern)
{
    if (HaveDataFile("rgbf.tif")) {
        trImage image;
        ASSERT_EQ(image.ReadFile(DataPath("rgbf.tif").c_str()), 1);
        ASSERT_EQ(image.NumChannels(), 3);
        ASSERT_EQ(image.BytesPerChannel(), 4);
        for (int r = 0; r < kPatternH; ++r)
            for (int x = 0; x < kPatternW; ++x) {
                Rgb const want = Pattern16(x, kPatternH - 1 - r);
                ASSERT_NEAR(SampleF(image, x, r, 0), want.r / 65535.0, 1e-6);
                ASSERT_NEAR(SampleF(image, x, r, 2), want.b / 65535.0, 1e-6);
            }
    }
    if (HaveDataFile("rgb8.jpg")) {
        // Lossy: close on average, never far off.
        trImage image;
        ASSERT_EQ(image.ReadFile(DataPath("rgb8.jpg").c_str()), 1);
        ASSERT_EQ(image.NumChannels(), 3);
        ASSERT_EQ(image.Width(), kPatternW);
        ASSERT_EQ(image.Height(), kPatternH);
        double total = 0.0;
        for (int r = 0; r < kPatternH; ++r)
            for (int x = 0; x < kPatternW; ++x) {
                Rgb const want = Pattern8(x, kPatternH - 1 - r);
                unsigned char const *p = image.PixelRaw(x, r);
                total += std::abs(p[0] - want.r) + std::abs(p[1] - want.g) + std::abs(p[2] - want.b);
            }
        EXPECT_LT(total / (3.0 * kPatternW * kPatternH), 12.0);
    }
}

#ifdef OSTREL_HAVE_OPENEXR
// An EXR made by OpenEXR directly, float RGB: read through FreeImage, top row last.
TEST(trImageFormatsRead, ExrFromOpenEXRKeepsValuesAndOrientation)
{
    int const w = 9;
    int const h = 5;
    std::vector<float> rgb(std::size_t(w) * h * 3);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                rgb[(std::size_t(y) * w + x) * 3 + c] = float(x) * 0.25f - float(y) * 3.5f + float(c) * 100.0f;
    ScratchDir dir;
    std::string const path = dir.File("direct.exr");
    {
        Imf::Header header(w, h);
        char const *names[3] = {"R", "G", "B"};
        Imf::FrameBuffer fb;
        for (int c = 0; c < 3; ++c) {
            header.channels().insert(names[c], Imf::Channel(Imf::FLOAT));
            fb.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char *>(rgb.data() + c), 12, 12 * w));
        }
        Imf::OutputFile file(path.c_str(), header);
        file.setFrameBuffer(fb);
        file.writePixels(h);
    }
    trImage image;
    ASSERT_EQ(image.ReadFile(path.c_str()), 1);
    ASSERT_EQ(image.Width(), w);
    ASSERT_EQ(image.Height(), h);
    ASSERT_EQ(image.NumChannels(), 3);
    ASSERT_EQ(image.BytesPerChannel(), 4);
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(SampleF(image, x, r, c), rgb[(std::size_t(h - 1 - r) * w + x) * 3 + c]);
}
#endif

namespace {

// A MOLA grid of the given length: signed big-endian samples, top row first, with the
// value (7x - 13 * fileRow - 20000) wrapped to 16 bits.
std::int16_t MolaValue(int x, int fileRow) { return std::int16_t(std::uint16_t(7 * x - 13 * fileRow - 20000)); }

void WriteMola(std::string const &path, std::size_t length, int w)
{
    std::vector<unsigned char> bytes(length, 0xab);
    std::size_t const samples = std::min(length / 2, std::size_t(w) * 720);
    for (std::size_t i = 0; i < samples; ++i) {
        auto const v = std::uint16_t(MolaValue(int(i % w), int(i / w)));
        bytes[2 * i] = static_cast<unsigned char>(v >> 8);
        bytes[2 * i + 1] = static_cast<unsigned char>(v);
    }
    WriteBytes(path, bytes);
}

void ExpectMola(trImage const &image)
{
    ASSERT_EQ(image.Width(), 1440);
    ASSERT_EQ(image.Height(), 720);
    ASSERT_EQ(image.NumChannels(), 1);
    ASSERT_EQ(image.BytesPerChannel(), 2);
    EXPECT_TRUE(image.IsSigned());
    for (int r = 0; r < 720; r += 7)
        for (int x = 0; x < 1440; x += 3) {
            std::int16_t v;
            std::memcpy(&v, image.PixelRaw(x, r), 2);
            ASSERT_EQ(v, MolaValue(x, 719 - r)) << x << "," << r;
        }
}

} // namespace

TEST(trImageFormatsRead, MolaGridsBySizeTopRowFirst)
{
    ScratchDir dir;
    std::string const small = dir.File("small.img");
    WriteMola(small, 2073600, 1440);
    trImage image;
    ASSERT_EQ(image.ReadFile(small.c_str()), 1);
    ExpectMola(image);

    // The larger length is read as the small grid: only its first quarter.
    std::string const larger = dir.File("LARGER.IMG");
    WriteMola(larger, 8294400, 1440);
    trImage other;
    ASSERT_EQ(other.ReadFile(larger.c_str()), 1);
    ExpectMola(other);
}

// The reader is chosen by the name's last three characters alone. A corrupt SGI tells
// which reader saw it: ReadSGI names itself, FreeImage's path says "ReadImage".
TEST(trImageFormatsRead, ReaderIsChosenByTheNamesEnding)
{
    std::vector<unsigned char> bad = SgiHeader(0, 3, 4, 4, 3);
    bad.resize(512 + 4 * 4 * 3 * 3, 0);
    ScratchDir dir;
    auto readerOf = [&](char const *name) {
        std::string const path = dir.File(name);
        WriteBytes(path, bad);
        trImage image;
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(path.c_str()), 0);
        std::string const all = capture.AllErrors();
        if (all.find("ReadSGI: ") != std::string::npos)
            return std::string("sgi");
        if (all.find("ReadImage: ") != std::string::npos)
            return std::string("freeimage");
        return all;
    };
    for (char const *name : {"a.sgi", "a.SGI", "a.rgb", "a.RGB", "a.rgba", "a.GBA", "a.bw", "a.BW"})
        EXPECT_EQ(readerOf(name), "sgi") << name;
    // "bw" without its dot is no SGI name.
    EXPECT_EQ(readerOf("abw"), "freeimage");
    EXPECT_EQ(readerOf("a.png"), "freeimage");
}
