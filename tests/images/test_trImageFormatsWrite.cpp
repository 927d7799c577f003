// Writing image files: the BMP and SGI headers byte for byte, the pixels as ImageMagick
// reads them back, and EXR and TIFF through the writer plug-in, read back by OpenEXR,
// libtiff and ImageMagick.

#include "test_trImageFormatsSupport.h"

#include <cmath>
#include <tuple>

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

// A byte image of w x h with pixel (x, y) = colour(x, y).
template <class F> void Fill(trBImage &image, int w, int h, F colour)
{
    ASSERT_EQ(image.Init(0, 0, w, h), 1);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            auto const [r, g, b] = colour(x, y);
            *image.BPixelRaw(x, y) =
                trBCol{static_cast<unsigned char>(r), static_cast<unsigned char>(g), static_cast<unsigned char>(b)};
        }
}

// The 8-bit pattern, the picture's top row as our row h - 1.
void FillPattern(trBImage &image)
{
    Fill(image, kPatternW, kPatternH, [](int x, int r) {
        Rgb const p = Pattern8(x, kPatternH - 1 - r);
        return std::tuple{p.r, p.g, p.b};
    });
}

// ImageMagick's decoding, top row first, against the pattern.
void ExpectImageMagickSeesPattern(std::string const &path)
{
#ifdef OSTREL_IMAGEMAGICK_CONVERT
    Bytes want;
    for (int y = 0; y < kPatternH; ++y)
        for (int x = 0; x < kPatternW; ++x) {
            Rgb const p = Pattern8(x, y);
            want.insert(want.end(), {(unsigned char)p.r, (unsigned char)p.g, (unsigned char)p.b});
        }
    EXPECT_TRUE(ImageMagickRgb8(path) == want) << path;
#else
    GTEST_SKIP() << "ImageMagick not found";
#endif
}

// Writes through `write`, expecting success and the two progress lines on stdout.
template <class W> Bytes WriteAndRead(W write, std::string const &path, std::string const &name)
{
    testing::internal::CaptureStdout();
    long const ok = write(path.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              name + ": attempting to write file\n" + path + "\n" + name + " successful\n");
    EXPECT_EQ(ok, 1);
    return ReadBytes(path);
}

} // namespace

TEST(trImageFormatsWrite, BmpAndSgiByteForByteReadBackAndFailures)
{
    ScratchDir dir;
    trBImage image;
    Fill(image, 5, 3, [](int x, int y) { return std::tuple{10 * x + y, 100 + y, 200 + x}; });
    Bytes const b = WriteAndRead([&](char const *p) { return image.WriteBMP(p); }, dir.File("h.bmp"), "WriteBMP");
    // Rows of 15 bytes are padded to 16: 54 + 3 * 16. "BM", size, reserved, data offset,
    // info size, width, height, planes, bits, compression, data size, 2835 pixels per metre
    // both ways, no palette; all little-endian.
    ASSERT_EQ(b.size(), 102u);
    EXPECT_EQ(Bytes(b.begin(), b.begin() + 54),
              (Bytes{'B', 'M', 102, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40, 0, 0, 0, 5, 0, 0, 0, 3, 0, 0, 0, 1, 0, 24, 0,
                     0, 0, 0, 0, 0, 0, 0, 0, 0x13, 0x0b, 0, 0, 0x13, 0x0b, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    Bytes rows;
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 5; ++x)
            rows.insert(rows.end(), {(unsigned char)(200 + x), (unsigned char)(100 + y), (unsigned char)(10 * x + y)});
        rows.push_back(0);
    }
    EXPECT_EQ(Bytes(b.begin() + 54, b.end()), rows);

    Fill(image, 4, 2, [](int x, int y) { return std::tuple{x + 4 * y, 50 + x, 250 - y}; });
    Bytes const s = WriteAndRead([&](char const *p) { return image.WriteSGIRGB(p); }, dir.File("h.sgi"), "WriteSGIRGB");
    ASSERT_EQ(s.size(), 512u + 3 * 8);
    // Magic 474, storage, bytes per channel, dimension, size x y z, min, max, reserved, all
    // big-endian; zeros after.
    EXPECT_EQ(Bytes(s.begin(), s.begin() + 24), (Bytes{1, 0xda, 0, 1, 0, 3, 0, 4, 0, 2, 0, 3, 0, 0, 0, 0, 0, 0, 0, 255,
                                                       0xff, 0xff, 0xff, 0xff}));
    EXPECT_EQ(Bytes(s.begin() + 24, s.begin() + 512), Bytes(488, 0));
    EXPECT_EQ(Bytes(s.begin() + 512, s.end()), (Bytes{0, 1, 2, 3, 4, 5, 6, 7, 50, 51, 52, 53, 50, 51, 52, 53, 250, 250,
                                                      250, 250, 249, 249, 249, 249}));

    // ImageMagick reads the pattern back from both, and our own reader takes the SGI back
    // unchanged.
    FillPattern(image);
    ASSERT_EQ(image.WriteBMP(dir.File("p.bmp").c_str()), 1);
    ASSERT_EQ(image.WriteSGIRGB(dir.File("p.sgi").c_str()), 1);
    ExpectImageMagickSeesPattern(dir.File("p.bmp"));
    ExpectImageMagickSeesPattern(dir.File("p.sgi"));
    trImage back;
    ASSERT_EQ(back.ReadFile(dir.File("p.sgi").c_str()), 1);
    ASSERT_EQ(back.NumBytes(), image.NumBytes());
    EXPECT_EQ(std::memcmp(back.Pixels(), image.Pixels(), std::size_t(image.NumBytes())), 0);

    // Null images and files that can't be opened are reported.
    trBImage empty;
    MessageCapture capture;
    testing::internal::CaptureStdout();
    EXPECT_EQ(empty.WriteBMP("x.bmp") + empty.WriteSGIRGB("x.sgi"), 0);
    EXPECT_EQ(image.WriteBMP("/no/such/folder/x.bmp") + image.WriteSGIRGB("/no/such/folder/x.sgi"), 0);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(capture.errors,
              (std::vector<std::string>{
                  "WriteBMP: image is null!", "WriteSGIRGB: image is null!",
                  "WriteBMP: Unable to open file!\n\nPossible causes: folder doesn't exist or disk full.",
                  "No such file or directory",
                  "WriteSGIRGB: Unable to open file /no/such/folder/x.sgi\n\nPossible causes: folder doesn't exist "
                  "or disk full."}));
}

// Without the plug-in the EXR and TIFF writers name what is missing. The module stays
// loaded for the life of a process, so this holds only where nothing loaded it yet.
TEST(trImageFormatsWrite, MissingWriterPluginIsReported)
{
    long id = -1;
    if (trClasses.FindClassIdFromClassName(id, "image_writer_exr"))
        GTEST_SKIP() << "the writer plug-in is already loaded in this process";
    trFImage image;
    trFloatMap map;
    trBImage bytes;
    ASSERT_EQ(image.Init(0, 0, 2, 2) + map.Init(0, 0, 2, 2) + bytes.Init(0, 0, 2, 2), 3);
    {
        // The writers themselves fail quietly...
        MessageCapture capture;
        EXPECT_EQ(image.WriteEXR("a.exr") + image.WriteTIFF("a.tif") + map.WriteEXR("b.exr") + bytes.WriteTIFF("c.tif"),
                  0);
        EXPECT_TRUE(capture.errors.empty()) << capture.AllErrors();
    }
    // ...and a save by name says which plug-in is missing.
    MessageCapture capture;
    EXPECT_EQ(image.WriteFile("a.exr", nullptr, nullptr) + image.WriteFile("a.tif", nullptr, nullptr) +
                  map.WriteFile("b.exr", nullptr, nullptr) + bytes.WriteFile("c.tiff", nullptr, nullptr),
              0);
    ASSERT_EQ(capture.errors.size(), 4u);
    EXPECT_EQ(capture.errors[0], "WriteFile: No EXR writer is loaded (plug-in class image_writer_exr); load the "
                                 "image writer plug-ins to write a.exr");
    EXPECT_EQ(capture.errors[1], "WriteFile: No TIFF writer is loaded (plug-in class image_writer_tiff); load the "
                                 "image writer plug-ins to write a.tif");
    EXPECT_TRUE(capture.errors[2].find("image_writer_exr") != std::string::npos &&
                capture.errors[3].find("image_writer_tiff") != std::string::npos);
}

#ifdef OSTREL_IMAGE_WRITER_PLUGIN_DIR

#ifdef OSTREL_HAVE_OPENEXR
namespace {

// The named float channels of an EXR file, top line first.
std::vector<float> ReadExr(std::string const &path, std::vector<char const *> const &names, int &w, int &h,
                           Imf::PixelType *type = nullptr)
{
    Imf::InputFile file(path.c_str());
    Imath::Box2i const dw = file.header().dataWindow();
    w = dw.max.x - dw.min.x + 1;
    h = dw.max.y - dw.min.y + 1;
    std::size_t const n = names.size();
    std::vector<float> out(std::size_t(w) * h * n);
    Imf::FrameBuffer fb;
    for (std::size_t c = 0; c < n; ++c) {
        Imf::Channel const *channel = file.header().channels().findChannel(names[c]);
        if (!channel)
            return {};
        if (type)
            *type = channel->type;
        fb.insert(names[c], Imf::Slice(Imf::FLOAT,
                                       reinterpret_cast<char *>(out.data() + c) -
                                           (dw.min.x + std::ptrdiff_t(dw.min.y) * w) * std::ptrdiff_t(4 * n),
                                       4 * n, 4 * n * std::size_t(w)));
    }
    file.setFrameBuffer(fb);
    file.readPixels(dw.min.y, dw.max.y);
    return out;
}

// Values a half holds exactly, above 1 and below 0 included.
float ExrValue(int x, int r, int c) { return float(x) * 0.25f - float(r) * 0.5f + float(c) * 8.0f - 3.0f; }

} // namespace

TEST(trImageFormatsWrite, ExrAndFloatMapExrThroughThePluginReadBackInOpenEXR)
{
    ASSERT_TRUE(LoadImageWriters());
    trFImage image;
    ASSERT_EQ(image.Init(0, 0, kPatternW, kPatternH), 1);
    for (int r = 0; r < kPatternH; ++r)
        for (int x = 0; x < kPatternW; ++x)
            *image.FPixelRaw(x, r) = trFCol{ExrValue(x, r, 0), ExrValue(x, r, 1), ExrValue(x, r, 2)};
    image.FPixelRaw(0, 0)->r = 1.0f / 3.0f; // exact in float, not in half
    ScratchDir dir;
    for (int type : {1, 2}) {
        SCOPED_TRACE(type);
        std::string const path = dir.File(type == 1 ? "half.exr" : "float.exr");
        trImageWriterFormatInfo info;
        info.SetExrPixelType(type);
        MessageCapture capture;
        ASSERT_EQ(image.WriteEXR(path.c_str(), &info), 1) << capture.AllErrors();
        int w = 0, h = 0;
        Imf::PixelType pixelType{};
        std::vector<float> const rgb = ReadExr(path, {"R", "G", "B"}, w, h, &pixelType);
        ASSERT_TRUE(w == kPatternW && h == kPatternH && !rgb.empty());
        EXPECT_EQ(pixelType, type == 1 ? Imf::HALF : Imf::FLOAT);
        // The file's first line is our top row.
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            int const x = int(i / 3 % kPatternW), r = kPatternH - 1 - int(i / 3 / kPatternW), c = int(i % 3);
            float const want = x || r || c ? ExrValue(x, r, c) : type == 1 ? 0.333251953125f : 1.0f / 3.0f;
            ASSERT_EQ(rgb[i], want) << x << "," << r << "," << c;
        }
    }
    // FreeImage, by way of ReadFile, takes the float file back as it was, top row last.
    trImage back;
    ASSERT_EQ(back.ReadFile(dir.File("float.exr").c_str()), 1);
    ASSERT_TRUE(back.Width() == kPatternW && back.BytesPerChannel() == 4 && back.NumBytes() == image.NumBytes());
    EXPECT_EQ(std::memcmp(back.Pixels(), image.Pixels(), std::size_t(image.NumBytes())), 0);

    // A float map writes one channel, Y.
    trFloatMap map;
    ASSERT_EQ(map.Init(0, 0, 6, 4), 1);
    for (int i = 0; i < 24; ++i)
        *map.FPixelRaw(i % 6, i / 6) = float(i % 6 * 10 + i / 6) - 12.5f;
    std::string const path = dir.File("height.exr");
    trImageWriterFormatInfo info;
    info.SetExrPixelType(2);
    ASSERT_EQ(map.WriteFile(path.c_str(), nullptr, &info), 1);
    int w = 0, h = 0;
    EXPECT_TRUE(ReadExr(path, {"R"}, w, h).empty());
    std::vector<float> const y = ReadExr(path, {"Y"}, w, h);
    ASSERT_EQ(y.size(), 24u);
    for (std::size_t i = 0; i < 24; ++i)
        EXPECT_EQ(y[i], float(i % 6 * 10 + (3 - int(i / 6))) - 12.5f) << i;
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
    int const w = 7, h = 3;
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
        TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &tw), TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &th);
        TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &spp), TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bps);
        TIFFGetFieldDefaulted(tiff, TIFFTAG_SAMPLEFORMAT, &format), TIFFGetField(tiff, TIFFTAG_COMPRESSION, &comp);
        EXPECT_EQ(std::vector<unsigned>({tw, th, spp, bps, format, comp}),
                  std::vector<unsigned>({unsigned(w), unsigned(h), 3u, unsigned(bits),
                                         bits == 32 ? unsigned(SAMPLEFORMAT_IEEEFP) : unsigned(SAMPLEFORMAT_UINT),
                                         unsigned(COMPRESSION_LZW)}));
        std::vector<unsigned char> line(std::size_t(TIFFScanlineSize(tiff)));
        for (int y = 0; y < h; ++y) {
            ASSERT_EQ(TIFFReadScanline(tiff, line.data(), std::uint32_t(y), 0), 1);
            for (int i = 0; i < 3 * w; ++i) {
                trFCol const src = *image.FPixelRaw(i / 3, h - 1 - y);
                float const want = i % 3 == 0 ? src.r : i % 3 == 1 ? src.g : src.b;
                float f;
                std::uint16_t u;
                std::memcpy(bits == 32 ? static_cast<void *>(&f) : &u, line.data() + bits / 8 * i, bits / 8);
                if (bits == 32)
                    EXPECT_EQ(f, want) << i;
                else
                    EXPECT_EQ(u, std::uint16_t(std::floor(std::clamp(double(want), 0.0, 1.0) * 65535.0 + 0.5))) << i;
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
    trImageWriterFormatInfo exr, tiffBits, tiffCompression;
    exr.SetExrPixelType(7);
    tiffBits.SetTiffBitsPerChannel(12);
    tiffCompression.SetTiffCompression(9);
    EXPECT_EQ(image.WriteEXR(dir.File("a.exr").c_str(), &exr) + image.WriteTIFF(dir.File("a.tif").c_str(), &tiffBits) +
                  image.WriteTIFF(dir.File("b.tif").c_str(), &tiffCompression) +
                  image.WriteEXR("/no/such/folder/a.exr") + image.WriteTIFF("/no/such/folder/a.tif"),
              0);
    char const *const prefixes[] = {"image_writer_exr: unsupported EXR pixel type 7",
                                    "image_writer_tiff: unsupported bits per channel 12",
                                    "image_writer_tiff: unsupported compression 9",
                                    "image_writer_exr: Unable to write file /no/such/folder/a.exr",
                                    "image_writer_tiff: Unable to open file /no/such/folder/a.tif"};
    ASSERT_EQ(capture.errors.size(), 5u) << capture.AllErrors();
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_EQ(capture.errors[i].rfind(prefixes[i], 0), 0u) << capture.errors[i];
    EXPECT_FALSE(std::filesystem::exists(dir.File("a.exr")));
}

#endif
