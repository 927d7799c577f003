// Reading image files: files made by ImageMagick from known patterns (SGI verbatim and
// run-length, 8 and 16 bits, one to four planes; Targa; PNG, TIFF, BMP, JPEG through
// FreeImage), hand-built SGI and MOLA files, and the choice of reader by the name's
// ending. EXR reading is checked with the files the writer tests make.

#include "test_trImageFormatsSupport.h"

#include <cmath>
#include <utility>

namespace {

// What a fixture holds: the 8-bit pattern (with alpha as a fourth channel, or alone as
// grey), the 16-bit one, the 16-bit one as floats in 0..1, or the 8-bit one lossily.
enum Kind { P8, P8A, Grey, P16, PF, Lossy };

// Channel c of the pattern at our row r, which is the picture's row h - 1 - r.
double Want(Kind kind, int x, int r, int c)
{
    int const y = kPatternH - 1 - r;
    if (kind == Grey || c == 3)
        return Alpha8(x, y);
    Rgb const p = kind == P16 || kind == PF ? Pattern16(x, y) : Pattern8(x, y);
    int const v = c == 0 ? p.r : c == 1 ? p.g : p.b;
    return kind == PF ? v / 65535.0 : v;
}

double Got(trImage const &image, int x, int r, int c)
{
    switch (image.BytesPerChannel()) {
    case 1: return image.PixelRaw(x, r)[c];
    case 2: return SampleAt(image, x, r, c);
    default: return SampleAt<float>(image, x, r, c);
    }
}

} // namespace

TEST(trImageFormatsRead, FixturesGiveThePattern)
{
    enum Reader { ByName, Sgi, Tga };
    struct Row {
        char const *name;
        Reader reader;
        int channels;
        Kind kind;
    } const rows[] = {
        {"rgb8.sgi", ByName, 3, P8}, {"rgb8_rle.sgi", ByName, 3, P8}, {"rgb16.sgi", Sgi, 3, P16},
        // Four planes load as three.
        {"rgba8.sgi", Sgi, 3, P8},   {"rgba8_rle.sgi", Sgi, 3, P8},   {"grey8.sgi", Sgi, 1, Grey},
        {"grey8_rle.sgi", Sgi, 1, Grey}, {"rgb8.tga", Tga, 3, P8},    {"rgb8.png", ByName, 3, P8},
        {"rgb8.tif", ByName, 3, P8}, {"rgb8.bmp", ByName, 3, P8},     {"rgb16.png", ByName, 3, P16},
        {"rgb16.tif", ByName, 3, P16}, {"rgba8.png", ByName, 4, P8A}, {"rgbf.tif", ByName, 3, PF},
        {"rgb8.jpg", ByName, 3, Lossy},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.name);
        if (!HaveDataFile(row.name))
            continue;
        std::string const path = DataPath(row.name);
        trImage image;
        MessageCapture capture;
        long const ok = row.reader == Sgi   ? image.ReadSGI(path.c_str())
                        : row.reader == Tga ? image.ReadTGA(path.c_str())
                                            : image.ReadFile(path.c_str());
        ASSERT_EQ(ok, 1) << capture.AllErrors();
        EXPECT_TRUE(capture.errors.empty());
        ASSERT_EQ(image.Width(), kPatternW);
        ASSERT_EQ(image.Height(), kPatternH);
        ASSERT_EQ(image.NumChannels(), row.channels);
        ASSERT_EQ(image.BytesPerChannel(), row.kind == P16 ? 2 : row.kind == PF ? 4 : 1);
        EXPECT_FALSE(image.IsSigned());
        int mismatches = 0;
        double total = 0.0;
        for (int r = 0; r < kPatternH; ++r)
            for (int x = 0; x < kPatternW; ++x)
                for (int c = 0; c < row.channels; ++c) {
                    double const want = Want(row.kind, x, r, c), got = Got(image, x, r, c);
                    total += std::fabs(got - want);
                    if (row.kind != Lossy && std::fabs(got - want) > (row.kind == PF ? 1e-6 : 0.0) &&
                        mismatches++ < 5)
                        ADD_FAILURE() << "pixel " << x << "," << r << " channel " << c << ": " << got << ", want "
                                      << want;
                }
        EXPECT_EQ(mismatches, 0);
        // Lossy: close on average.
        EXPECT_TRUE(row.kind != Lossy || total / (3.0 * kPatternW * kPatternH) < 12.0) << total;
    }
}

// Our own encoder, 16-bit units, with a long repeat that spans units and rows of
// different lengths; read back sample for sample.
TEST(trImageFormatsRead, SgiSixteenBitRunLengthDecodesAndRowsMayShareData)
{
    int const w = 300, h = 4;
    Planes samples(3, std::vector<std::vector<unsigned>>(h, std::vector<unsigned>(w)));
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                samples[c][y][x] = (x > 40 && x < 250) ? 0xfedcu - unsigned(c + y) : unsigned(x * 211 + y * 7 + c);
    ScratchDir dir;
    std::string const path = dir.File("rle16.sgi");
    WriteBytes(path, SgiFile(2, samples, true));
    trImage image;
    MessageCapture capture;
    ASSERT_EQ(image.ReadSGI(path.c_str()), 1) << capture.AllErrors();
    ASSERT_EQ(image.BytesPerChannel(), 2);
    for (int c = 0; c < 3; ++c)
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                ASSERT_EQ(SampleAt(image, x, y, c), samples[c][y][x] & 0xffff) << c << " " << x << "," << y;
    // Rows that share their data are legal: the tables may point twice at one row.
    Bytes file = SgiHeader(1, 1, 5, 2, 1);
    file.resize(512 + 16, 0);
    file.insert(file.end(), {0x83, 10, 20, 30, 0x02, 99, 0x00});
    Put32(file, 512, 528);
    Put32(file, 516, 528);
    Put32(file, 520, 7);
    Put32(file, 524, 7);
    WriteBytes(path, file);
    ASSERT_EQ(image.ReadSGI(path.c_str()), 1);
    EXPECT_EQ(Bytes(image.Pixels(), image.Pixels() + 10), (Bytes{10, 20, 30, 99, 99, 10, 20, 30, 99, 99}));
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
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(Got(image, x, r, c), Want(P8, x, r, c)) << x << "," << r;
}

// MOLA grids: signed big-endian samples, top row first, told by their length. The larger
// length is read as the small grid: only its first quarter.
TEST(trImageFormatsRead, MolaGridsBySizeTopRowFirst)
{
    // The value (7x - 13 * fileRow - 20000) wrapped to 16 bits.
    auto value = [](int x, int fileRow) { return std::int16_t(std::uint16_t(7 * x - 13 * fileRow - 20000)); };
    ScratchDir dir;
    for (auto [name, length] : {std::pair<char const *, std::size_t>{"small.img", 2073600}, {"LARGER.IMG", 8294400}}) {
        SCOPED_TRACE(name);
        Bytes bytes(length, 0xab);
        for (std::size_t i = 0; i < 1440 * 720; ++i)
            Put16(bytes, 2 * i, std::uint16_t(value(int(i % 1440), int(i / 1440))));
        WriteBytes(dir.File(name), bytes);
        trImage image;
        ASSERT_EQ(image.ReadFile(dir.File(name).c_str()), 1);
        ASSERT_TRUE(image.Width() == 1440 && image.Height() == 720 && image.NumChannels() == 1 &&
                    image.BytesPerChannel() == 2);
        EXPECT_TRUE(image.IsSigned());
        for (int r = 0; r < 720; r += 7)
            for (int x = 0; x < 1440; x += 3)
                ASSERT_EQ(SampleAt<std::int16_t>(image, x, r, 0), value(x, 719 - r)) << x << "," << r;
    }
}

// The reader is chosen by the name's last three characters alone. A corrupt SGI tells
// which reader saw it: ReadSGI names itself, FreeImage's path says "ReadImage".
TEST(trImageFormatsRead, ReaderIsChosenByTheNamesEnding)
{
    Bytes bad = SgiHeader(0, 3, 4, 4, 3);
    bad.resize(512 + 4 * 4 * 3 * 3, 0);
    ScratchDir dir;
    // "bw" without its dot is no SGI name.
    for (auto [name, reader] : {std::pair<char const *, char const *>{"a.sgi", "ReadSGI: "}, {"a.SGI", "ReadSGI: "},
                                {"a.rgb", "ReadSGI: "}, {"a.RGB", "ReadSGI: "}, {"a.rgba", "ReadSGI: "},
                                {"a.GBA", "ReadSGI: "}, {"a.bw", "ReadSGI: "}, {"a.BW", "ReadSGI: "},
                                {"abw", "ReadImage: "}, {"a.png", "ReadImage: "}}) {
        std::string const path = dir.File(name);
        WriteBytes(path, bad);
        trImage image;
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(path.c_str()), 0);
        std::string const all = capture.AllErrors(), other = reader[4] == 'S' ? "ReadImage: " : "ReadSGI: ";
        EXPECT_TRUE(all.find(reader) != std::string::npos && all.find(other) == std::string::npos)
            << name << ": " << all;
    }
}
