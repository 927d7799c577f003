// Writing image files: the BMP and SGI headers byte for byte, the pixels as ImageMagick
// reads them back, and EXR and TIFF through the writer plug-in, read back by OpenEXR,
// libtiff and ImageMagick.

#include "test_trImageFormatsSupport.h"

#include "foundation/trColourFilters.h"

#include <cmath>

#ifdef OSTREL_HAVE_OPENEXR
#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#endif
#ifdef OSTREL_HAVE_TIFF
#include <tiffio.h>
#endif

namespace {

unsigned Le16(std::vector<unsigned char> const &b, std::size_t at) { return b[at] | (unsigned(b[at + 1]) << 8); }
std::uint32_t Le32(std::vector<unsigned char> const &b, std::size_t at)
{
    return b[at] | (std::uint32_t(b[at + 1]) << 8) | (std::uint32_t(b[at + 2]) << 16) |
           (std::uint32_t(b[at + 3]) << 24);
}
unsigned Be16(std::vector<unsigned char> const &b, std::size_t at) { return (unsigned(b[at]) << 8) | b[at + 1]; }
std::uint32_t Be32(std::vector<unsigned char> const &b, std::size_t at)
{
    return (std::uint32_t(b[at]) << 24) | (std::uint32_t(b[at + 1]) << 16) | (std::uint32_t(b[at + 2]) << 8) |
           b[at + 3];
}

// The 8-bit pattern in a byte image, the picture's top row as our row h - 1.
void FillPattern(trBImage &image)
{
    ASSERT_EQ(image.Init(0, 0, kPatternW, kPatternH), 1);
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x) {
            Rgb const p = Pattern8(x, kPatternH - 1 - r);
            *image.BPixelRaw(x, r) = trBCol{static_cast<unsigned char>(p.r), static_cast<unsigned char>(p.g),
                                            static_cast<unsigned char>(p.b)};
        }
}

// ImageMagick's decoding, top row first, against the pattern.
void ExpectImageMagickSeesPattern(std::string const &path)
{
#ifdef OSTREL_IMAGEMAGICK_CONVERT
    std::vector<unsigned char> const rgb = ImageMagickRgb8(path);
    ASSERT_EQ(rgb.size(), std::size_t(kPatternW) * kPatternH * 3) << path;
    for (int y = 0; y < kPatternH; ++y)
        for (int x = 0; x < kPatternW; ++x) {
            Rgb const p = Pattern8(x, y);
            std::size_t const i = (std::size_t(y) * kPatternW + x) * 3;
            ASSERT_EQ(rgb[i], p.r) << x << "," << y;
            ASSERT_EQ(rgb[i + 1], p.g) << x << "," << y;
            ASSERT_EQ(rgb[i + 2], p.b) << x << "," << y;
        }
#else
    GTEST_SKIP() << "ImageMagick not found";
#endif
}

} // namespace

TEST(trImageFormatsWrite, BmpHeaderAndRowsByteForByte)
{
    trBImage image;
    ASSERT_EQ(image.Init(0, 0, 5, 3), 1);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x)
            *image.BPixelRaw(x, y) = trBCol{static_cast<unsigned char>(10 * x + y), static_cast<unsigned char>(100 + y),
                                            static_cast<unsigned char>(200 + x)};
    ScratchDir dir;
    std::string const path = dir.File("h.bmp");
    testing::internal::CaptureStdout();
    long const ok = image.WriteBMP(path.c_str());
    std::string const out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(ok, 1);
    EXPECT_EQ(out, "WriteBMP: attempting to write file\n" + path + "\nWriteBMP successful\n");

    std::vector<unsigned char> const b = ReadBytes(path);
    // Rows of 15 bytes are padded to 16: 54 + 3 * 16.
    ASSERT_EQ(b.size(), 102u);
    EXPECT_EQ(b[0], 'B');
    EXPECT_EQ(b[1], 'M');
    // Size, reserved, data offset, info size, width, height, planes, bits, compression, data size, 2835
    // pixels per metre both ways, no palette.
    std::vector<std::uint32_t> const header = {Le32(b, 2),  Le32(b, 6),  Le32(b, 10), Le32(b, 14), Le32(b, 18),
                                               Le32(b, 22), Le16(b, 26), Le16(b, 28), Le32(b, 30), Le32(b, 34),
                                               Le32(b, 38), Le32(b, 42), Le32(b, 46), Le32(b, 50)};
    EXPECT_EQ(header, (std::vector<std::uint32_t>{102, 0, 54, 40, 5, 3, 1, 24, 0, 0, 2835, 2835, 0, 0}));
    for (int y = 0; y < 3; ++y) {
        std::size_t const row = 54 + 16 * std::size_t(y);
        for (int x = 0; x < 5; ++x) {
            EXPECT_EQ(b[row + 3 * x], 200 + x);
            EXPECT_EQ(b[row + 3 * x + 1], 100 + y);
            EXPECT_EQ(b[row + 3 * x + 2], 10 * x + y);
        }
        EXPECT_EQ(b[row + 15], 0);
    }
}

TEST(trImageFormatsWrite, SgiHeaderAndPlanesByteForByte)
{
    trBImage image;
    ASSERT_EQ(image.Init(0, 0, 4, 2), 1);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 4; ++x)
            *image.BPixelRaw(x, y) = trBCol{static_cast<unsigned char>(x + 4 * y), static_cast<unsigned char>(50 + x),
                                            static_cast<unsigned char>(250 - y)};
    ScratchDir dir;
    std::string const path = dir.File("h.sgi");
    testing::internal::CaptureStdout();
    long const ok = image.WriteSGIRGB(path.c_str());
    std::string const out = testing::internal::GetCapturedStdout();
    ASSERT_EQ(ok, 1);
    EXPECT_EQ(out, "WriteSGIRGB: attempting to write file\n" + path + "\nWriteSGIRGB successful\n");

    std::vector<unsigned char> const b = ReadBytes(path);
    ASSERT_EQ(b.size(), 512u + 3 * 8);
    // Magic, storage, bytes per channel, dimension, size x y z, min, max, reserved.
    std::vector<std::uint32_t> const header = {Be16(b, 0),  b[2],        b[3],        Be16(b, 4),
                                               Be16(b, 6),  Be16(b, 8),  Be16(b, 10), Be32(b, 12),
                                               Be32(b, 16), Be32(b, 20)};
    EXPECT_EQ(header, (std::vector<std::uint32_t>{474, 0, 1, 3, 4, 2, 3, 0, 255, 0xffffffffu}));
    for (std::size_t i = 24; i < 512; ++i)
        ASSERT_EQ(b[i], 0) << i;
    unsigned char const planes[24] = {0, 1, 2, 3, 4, 5, 6, 7,          50, 51, 52, 53, 50, 51, 52, 53,
                                      250, 250, 250, 250, 249, 249, 249, 249};
    for (std::size_t i = 0; i < 24; ++i)
        EXPECT_EQ(b[512 + i], planes[i]) << i;
}

TEST(trImageFormatsWrite, ImageMagickReadsBackBmpAndSgi)
{
    trBImage image;
    FillPattern(image);
    ScratchDir dir;
    ASSERT_EQ(image.WriteBMP(dir.File("p.bmp").c_str()), 1);
    ASSERT_EQ(image.WriteSGIRGB(dir.File("p.sgi").c_str()), 1);
    ExpectImageMagickSeesPattern(dir.File("p.bmp"));
    ExpectImageMagickSeesPattern(dir.File("p.sgi"));

    // And our own reader takes the SGI back unchanged.
    trImage back;
    ASSERT_EQ(back.ReadFile(dir.File("p.sgi").c_str()), 1);
    ASSERT_EQ(back.NumBytes(), image.NumBytes());
    EXPECT_EQ(std::memcmp(back.Pixels(), image.Pixels(), std::size_t(image.NumBytes())), 0);
}

TEST(trImageFormatsWrite, WritersReportNullImagesAndUnopenableFiles)
{
    trBImage empty;
    MessageCapture capture;
    testing::internal::CaptureStdout();
    EXPECT_EQ(empty.WriteBMP("x.bmp"), 0);
    EXPECT_EQ(empty.WriteSGIRGB("x.sgi"), 0);
    trBImage image;
    ASSERT_EQ(image.Init(0, 0, 2, 2), 1);
    image.Clear();
    EXPECT_EQ(image.WriteBMP("/no/such/folder/x.bmp"), 0);
    EXPECT_EQ(image.WriteSGIRGB("/no/such/folder/x.sgi"), 0);
    testing::internal::GetCapturedStdout();
    ASSERT_EQ(capture.errors.size(), 5u);
    EXPECT_EQ(capture.errors[0], "WriteBMP: image is null!");
    EXPECT_EQ(capture.errors[1], "WriteSGIRGB: image is null!");
    EXPECT_EQ(capture.errors[2], "WriteBMP: Unable to open file!\n\nPossible causes: folder doesn't exist or disk full.");
    EXPECT_EQ(capture.errors[3], "No such file or directory");
    EXPECT_EQ(capture.errors[4],
              "WriteSGIRGB: Unable to open file /no/such/folder/x.sgi\n\nPossible causes: folder doesn't exist or "
              "disk full.");
}

// Without the plug-in the EXR and TIFF writers name what is missing. The module stays
// loaded for the life of a process, so this holds only where nothing loaded it yet.
TEST(trImageFormatsWrite, MissingWriterPluginIsReported)
{
    long id = -1;
    if (trClasses.FindClassIdFromClassName(id, "image_writer_exr"))
        GTEST_SKIP() << "the writer plug-in is already loaded in this process";
    trFImage image;
    ASSERT_EQ(image.Init(0, 0, 2, 2), 1);
    trFloatMap map;
    ASSERT_EQ(map.Init(0, 0, 2, 2), 1);
    trBImage bytes;
    ASSERT_EQ(bytes.Init(0, 0, 2, 2), 1);
    {
        // The writers themselves fail quietly...
        MessageCapture capture;
        EXPECT_EQ(image.WriteEXR("a.exr"), 0);
        EXPECT_EQ(image.WriteTIFF("a.tif"), 0);
        EXPECT_EQ(map.WriteEXR("b.exr"), 0);
        EXPECT_EQ(bytes.WriteTIFF("c.tif"), 0);
        EXPECT_TRUE(capture.errors.empty()) << capture.AllErrors();
    }
    // ...and a save by name says which plug-in is missing.
    MessageCapture capture;
    EXPECT_EQ(image.WriteFile("a.exr", nullptr, nullptr), 0);
    EXPECT_EQ(image.WriteFile("a.tif", nullptr, nullptr), 0);
    EXPECT_EQ(map.WriteFile("b.exr", nullptr, nullptr), 0);
    EXPECT_EQ(bytes.WriteFile("c.tiff", nullptr, nullptr), 0);
    ASSERT_EQ(capture.errors.size(), 4u);
    EXPECT_EQ(capture.errors[0],
              "WriteFile: No EXR writer is loaded (plug-in class image_writer_exr); load the image writer plug-ins "
              "to write a.exr");
    EXPECT_EQ(capture.errors[1],
              "WriteFile: No TIFF writer is loaded (plug-in class image_writer_tiff); load the image writer plug-ins "
              "to write a.tif");
    EXPECT_NE(capture.errors[2].find("image_writer_exr"), std::string::npos);
    EXPECT_NE(capture.errors[3].find("image_writer_tiff"), std::string::npos);
}

#ifdef OSTREL_IMAGE_WRITER_PLUGIN_DIR

namespace {

// Values a half holds exactly, above 1 and below 0 included.
float ExrValue(int x, int r, int c) { return float(x) * 0.25f - float(r) * 0.5f + float(c) * 8.0f - 3.0f; }

} // namespace

#ifdef OSTREL_HAVE_OPENEXR
TEST(trImageFormatsWrite, ExrThroughThePluginReadsBackInOpenEXR)
{
    ASSERT_TRUE(LoadImageWriters());
    trFImage image;
    ASSERT_EQ(image.Init(0, 0, kPatternW, kPatternH), 1);
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x)
            *image.FPixelRaw(x, r) = trFCol{ExrValue(x, r, 0), ExrValue(x, r, 1), ExrValue(x, r, 2)};
    // Exact in float, not in half.
    image.FPixelRaw(0, 0)->r = 1.0f / 3.0f;
    ScratchDir dir;

    for (int type : {1, 2}) {
        SCOPED_TRACE(type);
        std::string const path = dir.File(type == 1 ? "half.exr" : "float.exr");
        trImageWriterFormatInfo info;
        info.SetExrPixelType(type);
        MessageCapture capture;
        ASSERT_EQ(image.WriteEXR(path.c_str(), &info), 1) << capture.AllErrors();

        Imf::InputFile file(path.c_str());
        Imath::Box2i const dw = file.header().dataWindow();
        ASSERT_EQ(dw.max.x - dw.min.x + 1, kPatternW);
        ASSERT_EQ(dw.max.y - dw.min.y + 1, kPatternH);
        Imf::Channel const *red = file.header().channels().findChannel("R");
        ASSERT_NE(red, nullptr);
        EXPECT_EQ(red->type, type == 1 ? Imf::HALF : Imf::FLOAT);
        std::vector<float> rgb(std::size_t(kPatternW) * kPatternH * 3);
        Imf::FrameBuffer fb;
        char const *names[3] = {"R", "G", "B"};
        for (int c = 0; c < 3; ++c)
            fb.insert(names[c], Imf::Slice(Imf::FLOAT, reinterpret_cast<char *>(rgb.data() + c) -
                                                           (dw.min.x + std::ptrdiff_t(dw.min.y) * kPatternW) * 12,
                                           12, 12 * std::size_t(kPatternW)));
        file.setFrameBuffer(fb);
        file.readPixels(dw.min.y, dw.max.y);
        // The file's first line is our top row.
        for (int y = 0; y < kPatternH; ++y)
            for (int x = 0; x < kPatternW; ++x)
                for (int c = 0; c < 3; ++c) {
                    float const got = rgb[(std::size_t(y) * kPatternW + x) * 3 + c];
                    int const r = kPatternH - 1 - y;
                    if (x == 0 && r == 0 && c == 0)
                        EXPECT_EQ(got, type == 1 ? 0.333251953125f : 1.0f / 3.0f);
                    else
                        ASSERT_EQ(got, ExrValue(x, r, c)) << x << "," << y << "," << c;
                }
    }

    // FreeImage, by way of ReadFile, takes the float file back as it was.
    trImage back;
    ASSERT_EQ(back.ReadFile(dir.File("float.exr").c_str()), 1);
    ASSERT_EQ(back.NumBytes(), image.NumBytes());
    EXPECT_EQ(std::memcmp(back.Pixels(), image.Pixels(), std::size_t(image.NumBytes())), 0);
}

TEST(trImageFormatsWrite, FloatMapWritesOneChannelExr)
{
    ASSERT_TRUE(LoadImageWriters());
    trFloatMap map;
    ASSERT_EQ(map.Init(0, 0, 6, 4), 1);
    for (int r = 0; r < 4; ++r)
        for (int x = 0; x < 6; ++x)
            *map.FPixelRaw(x, r) = float(x * 10 + r) - 12.5f;
    ScratchDir dir;
    std::string const path = dir.File("height.exr");
    trImageWriterFormatInfo info;
    info.SetExrPixelType(2);
    ASSERT_EQ(map.WriteFile(path.c_str(), nullptr, &info), 1);
    Imf::InputFile file(path.c_str());
    Imf::ChannelList const &channels = file.header().channels();
    ASSERT_NE(channels.findChannel("Y"), nullptr);
    EXPECT_EQ(channels.findChannel("R"), nullptr);
    std::vector<float> y(24);
    Imf::FrameBuffer fb;
    fb.insert("Y", Imf::Slice(Imf::FLOAT, reinterpret_cast<char *>(y.data()), 4, 24));
    file.setFrameBuffer(fb);
    file.readPixels(0, 3);
    for (int line = 0; line < 4; ++line)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(y[std::size_t(line) * 6 + x], float(x * 10 + (3 - line)) - 12.5f);
}
#endif

TEST(trImageFormatsWrite, TiffThroughThePluginReadsBackInImageMagick)
{
    ASSERT_TRUE(LoadImageWriters());
    trBImage image;
    FillPattern(image);
    ScratchDir dir;
    for (int compression : {0, 1, 2, 3}) {
        SCOPED_TRACE(compression);
        std::string const path = dir.File(("b" + std::to_string(compression) + ".tif").c_str());
        trImageWriterFormatInfo info;
        info.SetTiffRequiredOptions(8, compression);
        ASSERT_EQ(image.WriteTIFF(path.c_str(), &info), 1);
        ExpectImageMagickSeesPattern(path);
    }
}

#ifdef OSTREL_HAVE_TIFF
// Float frames to 16-bit and 32-bit TIFF: quantised to round(v * 65535) clamped to 0..1,
// or the floats unchanged; read back with libtiff.
TEST(trImageFormatsWrite, FloatTiffSixteenAndThirtyTwoBits)
{
    ASSERT_TRUE(LoadImageWriters());
    int const w = 7;
    int const h = 3;
    trFImage image;
    ASSERT_EQ(image.Init(0, 0, w, h), 1);
    for (int r = 0; r < h; ++r)
        for (int x = 0; x < w; ++x)
            *image.FPixelRaw(x, r) = trFCol{float(x) / 6.0f, float(r) * 0.4f - 0.2f, float(x * r) * 0.3f};
    ScratchDir dir;
    for (int bits : {16, 32}) {
        SCOPED_TRACE(bits);
        std::string const path = dir.File(bits == 16 ? "f16.tif" : "f32.tif");
        trImageWriterFormatInfo info;
        info.SetTiffRequiredOptions(bits, 1);
        ASSERT_EQ(image.WriteTIFF(path.c_str(), &info), 1);
        TIFF *tiff = TIFFOpen(path.c_str(), "r");
        ASSERT_NE(tiff, nullptr);
        std::uint32_t tw = 0, th = 0;
        std::uint16_t spp = 0, bps = 0, format = 0, comp = 0;
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &tw);
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &th);
        TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &spp);
        TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bps);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format);
        TIFFGetField(tiff, TIFFTAG_COMPRESSION, &comp);
        EXPECT_TRUE(tw == std::uint32_t(w) && th == std::uint32_t(h) && spp == 3 && bps == bits);
        EXPECT_EQ(format, bits == 32 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
        EXPECT_EQ(comp, COMPRESSION_LZW);
        std::vector<unsigned char> line(std::size_t(TIFFScanlineSize(tiff)));
        for (int y = 0; y < h; ++y) {
            ASSERT_EQ(TIFFReadScanline(tiff, line.data(), std::uint32_t(y), 0), 1);
            for (int x = 0; x < w; ++x) {
                trFCol const src = *image.FPixelRaw(x, h - 1 - y);
                float const want[3] = {src.r, src.g, src.b};
                for (int k = 0; k < 3; ++k) {
                    if (bits == 32) {
                        float v;
                        std::memcpy(&v, line.data() + 4 * (3 * x + k), 4);
                        EXPECT_EQ(v, want[k]);
                    } else {
                        std::uint16_t v;
                        std::memcpy(&v, line.data() + 2 * (3 * x + k), 2);
                        double const clamped = std::min(1.0, std::max(0.0, double(want[k])));
                        EXPECT_EQ(v, std::uint16_t(std::floor(clamped * 65535.0 + 0.5))) << x << " " << k;
                    }
                }
            }
        }
        TIFFClose(tiff);
    }
}
#endif

TEST(trImageFormatsWrite, PluginRefusesUnknownOptions)
{
    ASSERT_TRUE(LoadImageWriters());
    trFImage image;
    ASSERT_EQ(image.Init(0, 0, 2, 2), 1);
    image.Fill(trFCol{0.5f, 0.5f, 0.5f});
    ScratchDir dir;
    MessageCapture capture;
    trImageWriterFormatInfo exr;
    exr.SetExrPixelType(7);
    EXPECT_EQ(image.WriteEXR(dir.File("a.exr").c_str(), &exr), 0);
    trImageWriterFormatInfo tiffBits;
    tiffBits.SetTiffBitsPerChannel(12);
    EXPECT_EQ(image.WriteTIFF(dir.File("a.tif").c_str(), &tiffBits), 0);
    trImageWriterFormatInfo tiffCompression;
    tiffCompression.SetTiffCompression(9);
    EXPECT_EQ(image.WriteTIFF(dir.File("b.tif").c_str(), &tiffCompression), 0);
    EXPECT_EQ(image.WriteEXR("/no/such/folder/a.exr"), 0);
    EXPECT_EQ(image.WriteTIFF("/no/such/folder/a.tif"), 0);
    ASSERT_EQ(capture.errors.size(), 5u) << capture.AllErrors();
    EXPECT_EQ(capture.errors[0].rfind("image_writer_exr: unsupported EXR pixel type 7", 0), 0u);
    EXPECT_EQ(capture.errors[1].rfind("image_writer_tiff: unsupported bits per channel 12", 0), 0u);
    EXPECT_EQ(capture.errors[2].rfind("image_writer_tiff: unsupported compression 9", 0), 0u);
    EXPECT_EQ(capture.errors[3].rfind("image_writer_exr: Unable to write file /no/such/folder/a.exr", 0), 0u);
    EXPECT_EQ(capture.errors[4].rfind("image_writer_tiff: Unable to open file /no/such/folder/a.tif", 0), 0u);
    EXPECT_FALSE(std::filesystem::exists(dir.File("a.exr")));
}

#endif
