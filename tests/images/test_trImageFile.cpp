// Reading and writing by name: the dispatch rules, the name checks, and FreeImage
// reading of the small fixtures in data/ (see data/README.md).
#include "test_trImageFormatsSupport.h"

namespace {

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

std::string g_locatedName;
bool RefuseLocation(trString *name)
{
    g_locatedName = name->chars;
    return false;
}

} // namespace

TEST(ImageFile, ReadsGreyAndPalette)
{
    trImage grey, palette;
    ASSERT_EQ(grey.ReadFile(trString(Fixture("grey_3x1.png").c_str())), 1);
    EXPECT_TRUE(grey.NumChannels() == 1 && grey.PixelRaw(1, 0)[0] == 128);
    EXPECT_NEAR(grey.FColFromPixel(grey.PixelRaw(2, 0)).g, 1.0f, 1e-6f);
    // A palette goes through 32 bits: four channels, opaque.
    ASSERT_EQ(palette.ReadFile(trString(Fixture("palette_2x1.png").c_str())), 1);
    ASSERT_EQ(palette.NumChannels(), 4);
    EXPECT_EQ(Bytes(palette.Pixels(), palette.Pixels() + 8), (Bytes{255, 0, 0, 255, 0, 0, 255, 255}));
}

TEST(ImageFile, NameLengthLimitFrameNumberAndLocationCallback)
{
    // Exactly 16000 characters is accepted (and fails later, as no such file exists).
    std::string name = std::string(15996, 'a') + ".png";
    trImage image;
    {
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(trString(name.c_str())), 0);
        EXPECT_FALSE(capture.AnyErrorStartsWith("trImage ReadFile: Filename is longer"));
        EXPECT_TRUE(capture.AnyErrorStartsWith("ReadImage: Unable to load image: \n\n"));
    }
    {
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(trString(("b" + name).c_str())), 0);
        EXPECT_EQ(capture.errors,
                  std::vector<std::string>{"trImage ReadFile: Filename is longer than 16000 characters"});
    }
    MessageCapture capture;
    trCallBackLoadUserResource = RefuseLocation;
    long frame = 7;
    EXPECT_EQ(image.ReadFile(trString("/nowhere/shot_%04d.png"), &frame), 0);
    trCallBackLoadUserResource = nullptr;
    EXPECT_EQ(g_locatedName, "/nowhere/shot_0007.png");
    EXPECT_EQ(capture.errors, std::vector<std::string>{"trImage : Cannot locate file /nowhere/shot_0007.png"});
}

TEST(ImageFile, BadFilesFailCleanly)
{
    Bytes const png = ReadBytes(Fixture("rgb_2x2.png"));
    // A PNG header that claims 100000 x 100000 pixels is refused before decoding. IHDR width
    // and height follow the signature and the chunk's length and type; the chunk's CRC (over
    // type and data, 17 bytes) stays valid so that only the size is wrong.
    Bytes huge = png;
    Put32(huge, 16, 100000);
    Put32(huge, 20, 100000);
    Put32(huge, 29, std::uint32_t(Crc32(huge.data() + 12, 17)));
    // An icon bitmap of bit depth 65535, refused before the decoder sees it.
    Bytes depth = {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 0x68, 4, 0, 0, 22, 0, 0, 0,
                   40, 0, 0, 0, 16, 0, 0, 0, 32, 0, 0, 0, 1, 0, 0xff, 0xff};
    depth.resize(depth.size() + 24 + 256, 0xff);
    struct Row {
        char const *what, *name;
        Bytes bytes;
    } const rows[] = {
        {"truncated", "bad.dat", Bytes(png.begin(), png.begin() + long(png.size() / 2))},
        {"empty", "bad.dat", {}},
        {"unknown content", "bad.dat", {'h', 'e', 'l', 'l', 'o'}},
        {"huge PNG", "huge.png", huge},
        {"huge GIF frame", "huge_frame.gif", kHugeGifFrame},
        {"an icon whose bitmap header claims a vast picture", "huge_icon.dat",
         {0x00, 0x00, 0x01, 0x00, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 0x08, 0x00, 0x83, 0x02,
          0x00, 0x00, 0x00, 0x00, 0x02, 0x02, 0x84, 0x51, 0x00, 0x7e, 0x7e, 0x7e, 0x00, 0x80}},
        {"an icon entry pointing past the end, not decoded from stale bytes", "stray_icon.dat",
         {0, 0, 1, 0, 1, 0, 16, 16, 0, 0, 1, 0, 32, 0, 0x68, 4, 0, 0, 0x16, 0x10, 0, 0}},
        {"icon bit depth 65535", "depth_icon.dat", depth},
        // Found by fuzzing: the decoder sized its bitmap from bytes that weren't there,
        // and crashed on a run-length buffer of negative size.
        {"an icon directory cut short", "short_icon.dat", {0, 0, 1, 0, 0x74}},
        {"a Targa identification field past the end", "short_id.tga",
         {0x22, 0, 0x0a, 0, 0, 0, 0, 0, 2, 0, 0, 0x80, 0xf0, 0xe0, 3, 0, 0x10, 0x3f, 0}},
    };
    ScratchDir dir;
    trImage image;
    ASSERT_EQ(image.ReadFile(trString(Fixture("rgb_2x2.png").c_str())), 1);
    for (Row const &row : rows) {
        WriteBytes(dir.File(row.name), row.bytes);
        MessageCapture capture;
        EXPECT_EQ(image.ReadFile(trString(dir.File(row.name).c_str())), 0) << row.what;
        EXPECT_TRUE(capture.AnyErrorStartsWith("ReadImage: ")) << row.what << ": " << capture.AllErrors();
    }
    MessageCapture capture;
    EXPECT_EQ(image.ReadFile(trString("/no/such/file.jpg")) + image.ReadFile(trString("")), 0);
}

TEST(ImageFile, WriteDispatchAndSupportedFormatList)
{
    ScratchDir dir;
    MessageCapture capture;
    trBImage empty, b;
    EXPECT_EQ(empty.WriteFile(trString(dir.File("empty.sgi").c_str())), 0);
    EXPECT_TRUE(capture.errors.empty());
    ASSERT_EQ(b.Init(0, 0, 3, 2), 1);
    b.Fill(trBCol(1, 2, 3));
    testing::internal::CaptureStdout();
    // A JPEG name gets SGI data; ".bmp" in any case gets a bitmap.
    long frame = 12;
    ASSERT_EQ(b.WriteFile(trString(dir.File("frame_%03d.jpg").c_str()), &frame), 1);
    Bytes const sgi = ReadBytes(dir.File("frame_012.jpg"));
    EXPECT_TRUE(sgi.size() >= 512u + 18u && sgi[0] * 256 + sgi[1] == 474);
    ASSERT_EQ(b.WriteFile(trString(dir.File("x.BmP").c_str())), 1);
    Bytes const bmp = ReadBytes(dir.File("x.BmP"));
    EXPECT_TRUE(bmp.size() >= 54u && bmp[0] == 'B' && bmp[1] == 'M');
    // "%s" is not an integer conversion and stays as it is; "%%" is a percent sign.
    frame = 5;
    ASSERT_EQ(b.WriteFile(trString(dir.File("odd_%s_%%_%d.sgi").c_str()), &frame), 1);
    EXPECT_FALSE(ReadBytes(dir.File("odd_%s_%_5.sgi")).empty());
    testing::internal::GetCapturedStdout();
    // Without the plug-in writers, EXR and TIFF names fail quietly with 0.
    trFImage f;
    ASSERT_EQ(f.Init(0, 0, 1, 1), 1);
    EXPECT_EQ(f.WriteFile(trString(dir.File("x.png").c_str())) + f.WriteFile(trString(dir.File("x.tiff").c_str())), 0);
    // The four-float image can't be written at all.
    capture.errors.clear();
    trF4Image f4;
    EXPECT_EQ(f4.WriteFile(trString("x.exr")) + f4.WriteEXR(trString("x.exr")) + f4.WriteTIFF(trString("x.tif")), 0);
    ASSERT_EQ(capture.errors.size(), 3u);
    EXPECT_TRUE(capture.errors[0] == "trF4Image::WriteFile not implemented" &&
                capture.errors[2] == "trF4Image::WriteTIFF not implemented")
        << capture.AllErrors();

    ASSERT_TRUE(trWriteSupportedImageFormats(trString(dir.File("formats.txt").c_str())));
    Bytes const bytes = ReadBytes(dir.File("formats.txt"));
    std::string const text(bytes.begin(), bytes.end());
    EXPECT_NE(text.find("SGI Image Format - sgi,rgb,bw,gba<br />\n"), std::string::npos);
    EXPECT_NE(text.find("Portable Network Graphics - png<br />\n"), std::string::npos);
    EXPECT_FALSE(trWriteSupportedImageFormats(trString("/no/such/folder/formats.txt")));
}
