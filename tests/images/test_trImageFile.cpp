// Reading and writing by name: the dispatch rules, the name checks, and FreeImage
// reading of fixtures made by ImageMagick (see data/README.md).
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "foundation/trMessages.h"
#include "foundation/trVector.h"
#include "images/trImage.h"

namespace {

std::vector<std::string> g_errors;

void CaptureError(char const *text, trErrorWarningData *)
{
    g_errors.emplace_back(text ? text : "");
}

// The fixtures sit in data/ beside this source (see data/README.md).
std::string Fixture(char const *name)
{
    std::string here = __FILE__;
    return here.substr(0, here.find_last_of('/') + 1) + "data/" + name;
}

std::string TempPath(std::string const &name)
{
    return ::testing::TempDir() + "ostrel_imgcore_" + name;
}

// The CRC-32 of PNG chunks, bit by bit.
unsigned long Crc32(unsigned char const *p, std::size_t n)
{
    unsigned long crc = 0xffffffffUL;
    for (std::size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xedb88320UL & (0UL - (crc & 1UL)));
    }
    return crc ^ 0xffffffffUL;
}

std::vector<unsigned char> FileBytes(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::vector<unsigned char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(std::string const &path, std::vector<unsigned char> const &bytes)
{
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<char const *>(bytes.data()), std::streamsize(bytes.size()));
}

class ImageFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_errors.clear();
        trCallBackError = CaptureError;
    }
    void TearDown() override
    {
        trCallBackError = nullptr;
        trCallBackLoadUserResource = nullptr;
    }
    bool AnyErrorStartsWith(std::string const &prefix) const
    {
        for (auto const &e : g_errors)
            if (e.rfind(prefix, 0) == 0)
                return true;
        return false;
    }
};

} // namespace

TEST_F(ImageFileTest, ReadsGreyPaletteAndJpeg)
{
    trImage grey;
    ASSERT_EQ(grey.ReadFile(trString(Fixture("grey_3x1.png").c_str())), 1);
    EXPECT_EQ(grey.NumChannels(), 1);
    EXPECT_EQ(grey.PixelRaw(1, 0)[0], 128);
    EXPECT_NEAR(grey.FColFromPixel(grey.PixelRaw(2, 0)).g, 1.0f, 1e-6f);

    // A palette goes through 32 bits: four channels, opaque.
    trImage palette;
    ASSERT_EQ(palette.ReadFile(trString(Fixture("palette_2x1.png").c_str())), 1);
    ASSERT_EQ(palette.NumChannels(), 4);
    EXPECT_EQ(palette.PixelRaw(1, 0)[2], 255);
    EXPECT_EQ(palette.PixelRaw(1, 0)[0], 0);
    EXPECT_EQ(palette.PixelRaw(0, 0)[0], 255);

    trImage jpeg;
    ASSERT_EQ(jpeg.ReadFile(trString(Fixture("jpeg_8x8.jpg").c_str())), 1);
    ASSERT_EQ(jpeg.Width(), 8);
    ASSERT_EQ(jpeg.NumChannels(), 3);
    unsigned char const *q = jpeg.PixelRaw(4, 4);
    EXPECT_NEAR(q[0], 200, 3);
    EXPECT_NEAR(q[1], 100, 3);
    EXPECT_NEAR(q[2], 50, 3);
}

TEST_F(ImageFileTest, NameLengthLimit)
{
    // Exactly 16000 characters is accepted (and fails later, as no such file exists).
    std::string name(15996, 'a');
    name += ".png";
    trImage image;
    EXPECT_EQ(image.ReadFile(trString(name.c_str())), 0);
    EXPECT_FALSE(AnyErrorStartsWith("trImage ReadFile: Filename is longer"));
    EXPECT_TRUE(AnyErrorStartsWith("ReadImage: Unable to load image: \n\n"));
    g_errors.clear();
    name.insert(0, "b");
    EXPECT_EQ(image.ReadFile(trString(name.c_str())), 0);
    ASSERT_EQ(g_errors.size(), 1u);
    EXPECT_EQ(g_errors[0], "trImage ReadFile: Filename is longer than 16000 characters");
}

namespace {
std::string g_locatedName;
bool RefuseLocation(trString *name)
{
    g_locatedName = name->chars;
    return false;
}
} // namespace

TEST_F(ImageFileTest, FrameNumberAndLocationCallback)
{
    trCallBackLoadUserResource = RefuseLocation;
    trImage image;
    long frame = 7;
    EXPECT_EQ(image.ReadFile(trString("/nowhere/shot_%04d.png"), &frame), 0);
    EXPECT_EQ(g_locatedName, "/nowhere/shot_0007.png");
    ASSERT_EQ(g_errors.size(), 1u);
    EXPECT_EQ(g_errors[0], "trImage : Cannot locate file /nowhere/shot_0007.png");
}

TEST_F(ImageFileTest, BadFilesFailCleanly)
{
    trImage image;
    ASSERT_EQ(image.ReadFile(trString(Fixture("rgb_2x2.png").c_str())), 1);
    std::vector<unsigned char> png = FileBytes(Fixture("rgb_2x2.png"));
    // Truncated, empty, unknown content and a missing file.
    std::vector<std::vector<unsigned char>> inputs = {
        std::vector<unsigned char>(png.begin(), png.begin() + long(png.size() / 2)),
        {},
        {'h', 'e', 'l', 'l', 'o'},
    };
    for (auto const &bytes : inputs) {
        g_errors.clear();
        std::string path = TempPath("bad.dat");
        WriteBytes(path, bytes);
        EXPECT_EQ(image.ReadFile(trString(path.c_str())), 0);
        EXPECT_TRUE(AnyErrorStartsWith("ReadImage: ")) << (g_errors.empty() ? "" : g_errors[0]);
        std::remove(path.c_str());
    }
    EXPECT_EQ(image.ReadFile(trString("/no/such/file.jpg")), 0);
    EXPECT_EQ(image.ReadFile(trString("")), 0);
    // A PNG header that claims 100000 x 100000 pixels is refused before decoding.
    std::vector<unsigned char> huge = png;
    // IHDR width and height follow the 8-byte signature and the chunk's length and type.
    for (int i = 0; i < 2; ++i) {
        huge[16 + 4 * i] = 0x00;
        huge[17 + 4 * i] = 0x01;
        huge[18 + 4 * i] = 0x86;
        huge[19 + 4 * i] = 0xa0;
    }
    // Keep the chunk's CRC (over type and data, 17 bytes) valid so only the size is wrong.
    unsigned long crc = Crc32(huge.data() + 12, 17);
    for (int i = 0; i < 4; ++i)
        huge[29 + std::size_t(i)] = static_cast<unsigned char>(crc >> (24 - 8 * i));
    std::string path = TempPath("huge.png");
    WriteBytes(path, huge);
    EXPECT_EQ(image.ReadFile(trString(path.c_str())), 0);
    std::remove(path.c_str());
    // A 2x2 GIF screen whose frame claims 18761 x 18761 pixels: refused before decoding.
    std::vector<unsigned char> gif = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x02, 0x00, 0x02, 0x00, 0xf0, 0x00, 0x00, 0x7e, 0x7e, 0x7e, 0x00, 0x00, 0x00, 0x21, 0xf9, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x21, 0xff, 0x00, 0x2c, 0x00, 0x00, 0x00, 0x00, 0x49, 0x49, 0x49, 0x49, 0x00, 0x02, 0x02, 0x84, 0x51, 0x00, 0x3b};
    std::string gifPath = TempPath("huge_frame.gif");
    WriteBytes(gifPath, gif);
    EXPECT_EQ(image.ReadFile(trString(gifPath.c_str())), 0);
    std::remove(gifPath.c_str());
    // An icon whose bitmap header (at the entry's offset) claims a vast picture.
    std::vector<unsigned char> icon = {0x00, 0x00, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x83, 0x02, 0x00, 0x00, 0x00, 0x00, 0x02, 0x02, 0x84, 0x51, 0x00, 0x7e, 0x7e, 0x7e, 0x00, 0x80};
    std::string iconPath = TempPath("huge_icon.dat");
    WriteBytes(iconPath, icon);
    EXPECT_EQ(image.ReadFile(trString(iconPath.c_str())), 0);
    std::remove(iconPath.c_str());
    // An icon entry pointing past the end of the file is refused, not decoded from stale bytes.
    std::vector<unsigned char> stray = {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 0x68, 4, 0, 0, 0x16, 0x10, 0, 0};
    WriteBytes(iconPath, stray);
    EXPECT_EQ(image.ReadFile(trString(iconPath.c_str())), 0);
    std::remove(iconPath.c_str());
    // An icon bitmap of bit depth 65535 is refused before the decoder sees it.
    std::vector<unsigned char> depth = {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 0x68, 4, 0, 0, 22, 0, 0, 0,
                                        40, 0, 0, 0, 16, 0, 0, 0, 32, 0, 0, 0, 1, 0, 0xff, 0xff};
    depth.resize(depth.size() + 24 + 256, 0xff);
    WriteBytes(iconPath, depth);
    EXPECT_EQ(image.ReadFile(trString(iconPath.c_str())), 0);
    std::remove(iconPath.c_str());
}

TEST_F(ImageFileTest, WriteDispatch)
{
    trBImage empty;
    EXPECT_EQ(empty.WriteFile(trString(TempPath("empty.sgi").c_str())), 0);
    EXPECT_TRUE(g_errors.empty());

    trBImage b;
    ASSERT_EQ(b.Init(0, 0, 3, 2), 1);
    b.Fill(trBCol(1, 2, 3));
    // A JPEG name, or a very short name, gets SGI data.
    std::string jpg = TempPath("frame_%03d.jpg");
    long frame = 12;
    ASSERT_EQ(b.WriteFile(trString(jpg.c_str()), &frame), 1);
    std::string written = TempPath("frame_012.jpg");
    std::vector<unsigned char> bytes = FileBytes(written);
    ASSERT_GE(bytes.size(), 512u + 18u);
    EXPECT_EQ(bytes[0] * 256 + bytes[1], 474);
    std::remove(written.c_str());
    // ".bmp" in any case gets a bitmap.
    std::string bmp = TempPath("x.BmP");
    ASSERT_EQ(b.WriteFile(trString(bmp.c_str())), 1);
    bytes = FileBytes(bmp);
    ASSERT_GE(bytes.size(), 54u);
    EXPECT_EQ(bytes[0], 'B');
    EXPECT_EQ(bytes[1], 'M');
    std::remove(bmp.c_str());
    // A bitmap written by us reads back through FreeImage with the same pixels.
    b.BPixelRaw(2, 1)->r = 250;
    std::string bmp2 = TempPath("y.bmp");
    ASSERT_EQ(b.WriteFile(trString(bmp2.c_str())), 1);
    trImage back;
    ASSERT_EQ(back.ReadFile(trString(bmp2.c_str())), 1);
    ASSERT_EQ(back.NumChannels(), 3);
    EXPECT_EQ(back.PixelRaw(2, 1)[0], 250);
    EXPECT_EQ(back.PixelRaw(0, 0)[2], 3);
    std::remove(bmp2.c_str());
    // Without the plug-in writers, EXR and TIFF names fail quietly with 0.
    trFImage f;
    ASSERT_EQ(f.Init(0, 0, 1, 1), 1);
    EXPECT_EQ(f.WriteFile(trString(TempPath("x.png").c_str())), 0);
    EXPECT_EQ(f.WriteFile(trString(TempPath("x.tiff").c_str())), 0);
    // The four-float image can't be written at all.
    g_errors.clear();
    trF4Image f4;
    EXPECT_EQ(f4.WriteFile(trString("x.exr")), 0);
    EXPECT_EQ(f4.WriteEXR(trString("x.exr")), 0);
    EXPECT_EQ(f4.WriteTIFF(trString("x.tif")), 0);
    ASSERT_EQ(g_errors.size(), 3u);
    EXPECT_EQ(g_errors[0], "trF4Image::WriteFile not implemented");
    EXPECT_EQ(g_errors[2], "trF4Image::WriteTIFF not implemented");
}

TEST_F(ImageFileTest, FrameNamesNeverDrivePrintfWithStrayConversions)
{
    trBImage b;
    ASSERT_EQ(b.Init(0, 0, 1, 1), 1);
    long frame = 5;
    // "%s" is not an integer conversion and stays as it is; "%%" is a percent sign.
    std::string pattern = TempPath("odd_%s_%%_%d.sgi");
    ASSERT_EQ(b.WriteFile(trString(pattern.c_str()), &frame), 1);
    std::string expected = TempPath("odd_%s_%_5.sgi");
    EXPECT_FALSE(FileBytes(expected).empty());
    std::remove(expected.c_str());
}

TEST_F(ImageFileTest, SupportedFormatList)
{
    std::string path = TempPath("formats.txt");
    ASSERT_TRUE(trWriteSupportedImageFormats(trString(path.c_str())));
    std::ifstream in(path);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("SGI Image Format - sgi,rgb,bw,gba<br />\n"), std::string::npos);
    EXPECT_NE(text.find("Portable Network Graphics - png<br />\n"), std::string::npos);
    std::remove(path.c_str());
    EXPECT_FALSE(trWriteSupportedImageFormats(trString("/no/such/folder/formats.txt")));
}
