// The asset library helpers: host hand-off, sizes, thumbnails, encodings and the
// per-pixel copy, on fixtures made by ImageMagick.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "foundation/trMessages.h"
#include "foundation/trVector.h"
#include "images/trImage.h"

namespace {

// The fixtures sit in data/ beside this source (see data/README.md).
std::string Fixture(char const *name)
{
    std::string here = __FILE__;
    return here.substr(0, here.find_last_of('/') + 1) + "data/" + name;
}

unsigned long g_kind = 0;
std::string g_path;
long g_option = 0;

bool RecordAdd(unsigned long const &kind, trString const &path, long const &option)
{
    g_kind = kind;
    g_path = path.chars;
    g_option = option;
    return true;
}

struct Pixel {
    int x, y;
    unsigned char r, g, b, a;
};

std::vector<Pixel> CopyAll(FIBITMAP *bitmap)
{
    std::vector<Pixel> out;
    trLibraryCopyImage(bitmap, [&](int x, int y, unsigned char r, unsigned char g, unsigned char b,
                                   unsigned char a) { out.push_back({x, y, r, g, b, a}); });
    return out;
}

} // namespace

TEST(ImageLibrary, HostHandOffNeedsTheCallback)
{
    trCallBackLibraryAddItem = nullptr;
    EXPECT_FALSE(trLibraryAddImage(trString("a.png"), 1));
    trCallBackLibraryAddItem = RecordAdd;
    EXPECT_TRUE(trLibraryAddHeightfield(trString("h.ter"), 5));
    EXPECT_EQ(g_kind, 2u);
    EXPECT_EQ(g_path, "h.ter");
    EXPECT_EQ(g_option, 5);
    trCallBackLibraryAddItem = nullptr;
}

TEST(ImageLibrary, SizesAndPixelCopyTopRowFirst)
{
    trString path(Fixture("rgb_2x2.png").c_str());
    EXPECT_TRUE(trLibraryCanFreeImageOpenFile(path));
    EXPECT_TRUE(trLibraryCanFreeImageOpenFile(trString("missing.png")));
    EXPECT_FALSE(trLibraryCanFreeImageOpenFile(trString("missing.nothing")));
    tr2Vector size;
    ASSERT_TRUE(trLibraryGetImageSize(path, size));
    EXPECT_TRUE(size.x == 2.0 && size.y == 2.0);
    EXPECT_FALSE(trLibraryGetImageSize(trString("/no/such.png"), size));

    FIBITMAP *bitmap = nullptr;
    ASSERT_TRUE(trLibraryLoadBitmap(path, bitmap));
    std::vector<Pixel> pixels = CopyAll(bitmap);
    ASSERT_EQ(pixels.size(), 4u);
    // y = 0 is the picture's top row: red then green.
    for (auto const &p : pixels) {
        bool const ok = (p.x == 0 && p.y == 0)   ? (p.r == 255 && p.g == 0 && p.b == 0 && p.a == 255)
                        : (p.x == 1 && p.y == 0) ? (p.r == 0 && p.g == 255 && p.b == 0)
                        : (p.x == 0 && p.y == 1) ? (p.r == 0 && p.g == 0 && p.b == 255)
                                                 : true;
        EXPECT_TRUE(ok) << p.x << "," << p.y;
    }
    trLibraryFlipImageVertical(bitmap);
    for (auto const &p : CopyAll(bitmap))
        EXPECT_TRUE(p.x != 0 || p.y != 0 || p.b == 255);
    trLibraryDestroyBitmap(bitmap);
    trLibraryDestroyBitmap(nullptr);
    trLibraryFlipImageVertical(nullptr);
    EXPECT_FALSE(trLibraryCopyImage(nullptr, [](int, int, unsigned char, unsigned char, unsigned char,
                                                unsigned char) {}));
    // A palette image is read through 32 bits, alpha included.
    ASSERT_TRUE(trLibraryLoadBitmap(trString(Fixture("palette_2x1.png").c_str()), bitmap));
    pixels = CopyAll(bitmap);
    ASSERT_EQ(pixels.size(), 2u);
    EXPECT_EQ(pixels[1].b, 255);
    trLibraryDestroyBitmap(bitmap);
}

TEST(ImageLibrary, ThumbnailsArePaddedToASquare)
{
    std::vector<unsigned char> bgra(4 * 40 * 10);
    for (std::size_t i = 0; i < bgra.size(); i += 4) {
        bgra[i] = 30;      // blue
        bgra[i + 1] = 20;  // green
        bgra[i + 2] = 10;  // red
        bgra[i + 3] = 255;
    }
    FIBITMAP *preview = nullptr;
    ASSERT_TRUE(trLibraryPreviewBytesToBitmap(bgra.data(), 40, 10, preview));
    tr2Vector size;
    ASSERT_TRUE(trLibraryGetImageSize(preview, size));
    FIBITMAP *square = nullptr;
    ASSERT_TRUE(trLibraryMakeThumbnailImage(preview, square, true));
    ASSERT_TRUE(trLibraryGetImageSize(square, size));
    EXPECT_TRUE(size.x == 512.0 && size.y == 512.0);
    // The picture sits centred; the border is black and opaque.
    std::vector<Pixel> pixels = CopyAll(square);
    ASSERT_EQ(pixels.size(), 512u * 512u);
    auto at = [&](int x, int y) { return pixels[std::size_t((511 - y) * 512 + x)]; };
    Pixel centre = at(256, 256);
    EXPECT_EQ(centre.r, 10);
    EXPECT_EQ(centre.b, 30);
    Pixel corner = at(0, 0);
    EXPECT_EQ(corner.r + corner.g + corner.b, 0);
    EXPECT_EQ(corner.a, 255);
    FIBITMAP *plain = nullptr;
    ASSERT_TRUE(trLibraryMakeThumbnailImage(preview, plain, false));
    ASSERT_TRUE(trLibraryGetImageSize(plain, size));
    EXPECT_EQ(size.x, 40.0);
    trLibraryDestroyBitmap(plain);
    trLibraryDestroyBitmap(square);
    trLibraryDestroyBitmap(preview);
    EXPECT_FALSE(trLibraryPreviewBytesToBitmap(nullptr, 4, 4, preview));
    EXPECT_FALSE(trLibraryPreviewBytesToBitmap(bgra.data(), 0, 4, preview));
}

TEST(ImageLibrary, JpegThroughMemoryRoundTrip)
{
    FIBITMAP *bitmap = nullptr;
    ASSERT_TRUE(trLibraryLoadBitmap(trString(Fixture("jpeg_8x8.jpg").c_str()), bitmap));
    trDataBlock block;
    long size = 0;
    EXPECT_FALSE(trLibrarySaveImageToMemory(bitmap, trString("png"), block, size));
    ASSERT_TRUE(trLibrarySaveImageToMemory(bitmap, trString("jpeg"), block, size));
    ASSERT_GT(size, 4);
    EXPECT_EQ(block.Data()[0], 0xff);
    EXPECT_EQ(block.Data()[1], 0xd8);
    FIBITMAP *decoded = nullptr;
    ASSERT_TRUE(trLibraryReadImageFromMemory(block, size, decoded));
    std::vector<Pixel> pixels = CopyAll(decoded);
    ASSERT_EQ(pixels.size(), 64u);
    EXPECT_NEAR(pixels[27].r, 200, 6);
    EXPECT_NEAR(pixels[27].g, 100, 6);
    trLibraryDestroyBitmap(decoded);
    // Garbage bytes decode to nothing.
    trDataBlock junk;
    junk.Reset(new unsigned char[16]());
    EXPECT_FALSE(trLibraryReadImageFromMemory(junk, 16, decoded));
    EXPECT_FALSE(trLibraryReadImageFromMemory(trDataBlock(), 0, decoded));
    // A GIF frame claiming 18761 x 18761 pixels is refused before decoding.
    unsigned char const gif[] = {0x47, 0x49, 0x46, 0x38, 0x39, 0x61, 0x02, 0x00, 0x02, 0x00, 0xf0, 0x00, 0x00, 0x7e, 0x7e, 0x7e, 0x00, 0x00, 0x00, 0x21, 0xf9, 0x04, 0x00, 0x00, 0x00, 0x00, 0x00, 0x21, 0xff, 0x00, 0x2c, 0x00, 0x00, 0x00, 0x00, 0x49, 0x49, 0x49, 0x49, 0x00, 0x02, 0x02, 0x84, 0x51, 0x00, 0x3b};
    trDataBlock big;
    big.Reset(new unsigned char[sizeof gif]);
    std::memcpy(big.Data(), gif, sizeof gif);
    EXPECT_FALSE(trLibraryReadImageFromMemory(big, long(sizeof gif), decoded));

    FIBITMAP *shrunk = nullptr;
    ASSERT_TRUE(trLibraryLoadAndShrinkPreviewImage(trString(Fixture("jpeg_8x8.jpg").c_str()), 4, shrunk));
    tr2Vector dims;
    ASSERT_TRUE(trLibraryGetImageSize(shrunk, dims));
    EXPECT_TRUE(dims.x == 4.0 && dims.y == 4.0);
    trLibraryDestroyBitmap(shrunk);
    trLibraryDestroyBitmap(bitmap);
}

TEST(ImageLibrary, PreviewFilesAreJpeg2000)
{
    FIBITMAP *small = nullptr;
    ASSERT_TRUE(trLibraryProcessImageForPreview(trString(Fixture("rgb_2x2.png").c_str()), small));
    tr2Vector smallSize;
    ASSERT_TRUE(trLibraryGetImageSize(small, smallSize));
    EXPECT_EQ(smallSize.x, 2.0);
    trLibraryDestroyBitmap(small);
    // JPEG 2000 needs some size to encode its resolution levels: use 96 x 48.
    std::vector<unsigned char> bgra(4 * 96 * 48, 200);
    FIBITMAP *bitmap = nullptr;
    ASSERT_TRUE(trLibraryPreviewBytesToBitmap(bgra.data(), 96, 48, bitmap));
    std::string base = ::testing::TempDir() + "ostrel_imgcore_preview";
    std::string path = base + ".j2k";
    ASSERT_TRUE(trLibrarySaveImageForPreview(trString(path.c_str()), bitmap, true));
    ASSERT_TRUE(trLibrarySaveImageForMiniPreview(trString(path.c_str()), bitmap, 64));
    std::string mini = base + "_mini.j2k";
    std::ifstream in(mini, std::ios::binary);
    unsigned char head[4] = {};
    in.read(reinterpret_cast<char *>(head), 4);
    // A JPEG 2000 code stream starts with SOC, SIZ.
    EXPECT_TRUE(head[0] == 0xff && head[1] == 0x4f && head[2] == 0xff && head[3] == 0x51);
    FIBITMAP *back = nullptr;
    ASSERT_TRUE(trLibraryLoadBitmap(trString(mini.c_str()), back));
    tr2Vector size;
    ASSERT_TRUE(trLibraryGetImageSize(back, size));
    EXPECT_TRUE(size.x == 64.0 && size.y == 32.0);
    trLibraryDestroyBitmap(back);
    trLibraryDestroyBitmap(bitmap);
    std::remove(path.c_str());
    std::remove(mini.c_str());
    EXPECT_FALSE(trLibrarySaveImageForPreview(trString(path.c_str()), nullptr, true));
}
