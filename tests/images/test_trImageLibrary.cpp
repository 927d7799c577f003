// The asset library helpers: host hand-off, sizes, thumbnails, encodings and the
// per-pixel copy, on fixtures made by ImageMagick.
#include "test_trImageFormatsSupport.h"

#include "foundation/trVector.h"

namespace {

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

// The pixels in the order the copy hands them out: bottom row first.
std::vector<Pixel> CopyAll(FIBITMAP *bitmap)
{
    std::vector<Pixel> out;
    trLibraryCopyImage(bitmap, [&](int x, int y, unsigned char r, unsigned char g, unsigned char b,
                                   unsigned char a) { out.push_back({x, y, r, g, b, a}); });
    return out;
}

// The size as "w x h", or "none" where it can't be had.
template <class T> std::string SizeOf(T const &what)
{
    tr2Vector s;
    return trLibraryGetImageSize(what, s) ? std::to_string(int(s.x)) + " x " + std::to_string(int(s.y)) : "none";
}

trString Fx(char const *name) { return trString(Fixture(name).c_str()); }

} // namespace

TEST(ImageLibrary, HostHandOffNeedsTheCallback)
{
    trCallBackLibraryAddItem = nullptr;
    EXPECT_FALSE(trLibraryAddImage(trString("a.png"), 1));
    trCallBackLibraryAddItem = RecordAdd;
    EXPECT_TRUE(trLibraryAddHeightfield(trString("h.ter"), 5));
    EXPECT_TRUE(g_kind == 2u && g_path == "h.ter" && g_option == 5);
    trCallBackLibraryAddItem = nullptr;
}

TEST(ImageLibrary, SizesAndPixelCopyTopRowFirst)
{
    EXPECT_TRUE(trLibraryCanFreeImageOpenFile(Fx("rgb_2x2.png")) &&
                trLibraryCanFreeImageOpenFile(trString("missing.png")));
    EXPECT_FALSE(trLibraryCanFreeImageOpenFile(trString("missing.nothing")));
    EXPECT_EQ(SizeOf(Fx("rgb_2x2.png")), "2 x 2");
    EXPECT_EQ(SizeOf(trString("/no/such.png")), "none");
    FIBITMAP *bitmap = nullptr;
    ASSERT_TRUE(trLibraryLoadBitmap(Fx("rgb_2x2.png"), bitmap));
    std::vector<Pixel> pixels = CopyAll(bitmap);
    ASSERT_EQ(pixels.size(), 4u);
    // y = 0 is the picture's top row: red then green, blue below red.
    auto rgba = [&](std::size_t i) { return std::vector<int>{pixels[i].x, pixels[i].y, pixels[i].r, pixels[i].g,
                                                             pixels[i].b, pixels[i].a}; };
    EXPECT_EQ(rgba(2), (std::vector<int>{0, 0, 255, 0, 0, 255}));
    EXPECT_EQ(rgba(3), (std::vector<int>{1, 0, 0, 255, 0, 255}));
    EXPECT_EQ(rgba(0), (std::vector<int>{0, 1, 0, 0, 255, 255}));
    trLibraryFlipImageVertical(bitmap);
    pixels = CopyAll(bitmap);
    EXPECT_EQ(rgba(2)[4], 255);
    trLibraryDestroyBitmap(bitmap);
    trLibraryDestroyBitmap(nullptr);
    trLibraryFlipImageVertical(nullptr);
    EXPECT_FALSE(trLibraryCopyImage(nullptr, [](int, int, unsigned char, unsigned char, unsigned char,
                                                unsigned char) {}));
    // A palette image is read through 32 bits, alpha included.
    ASSERT_TRUE(trLibraryLoadBitmap(Fx("palette_2x1.png"), bitmap));
    pixels = CopyAll(bitmap);
    ASSERT_EQ(pixels.size(), 2u);
    EXPECT_EQ(pixels[1].b, 255);
    trLibraryDestroyBitmap(bitmap);
}

TEST(ImageLibrary, ThumbnailsArePaddedToASquare)
{
    std::vector<unsigned char> bgra;
    for (int i = 0; i < 40 * 10; ++i)
        bgra.insert(bgra.end(), {30, 20, 10, 255}); // blue, green, red, alpha
    FIBITMAP *preview = nullptr, *square = nullptr, *plain = nullptr;
    ASSERT_TRUE(trLibraryPreviewBytesToBitmap(bgra.data(), 40, 10, preview));
    ASSERT_TRUE(trLibraryMakeThumbnailImage(preview, square, true));
    ASSERT_TRUE(trLibraryMakeThumbnailImage(preview, plain, false));
    EXPECT_EQ(SizeOf(square), "512 x 512");
    EXPECT_EQ(SizeOf(plain), "40 x 10");
    // The picture sits centred; the border is black and opaque.
    std::vector<Pixel> pixels = CopyAll(square);
    ASSERT_EQ(pixels.size(), 512u * 512u);
    auto at = [&](int x, int y) { return pixels[std::size_t((511 - y) * 512 + x)]; };
    EXPECT_TRUE(at(256, 256).r == 10 && at(256, 256).b == 30);
    EXPECT_TRUE(at(0, 0).r + at(0, 0).g + at(0, 0).b == 0 && at(0, 0).a == 255);
    trLibraryDestroyBitmap(plain);
    trLibraryDestroyBitmap(square);
    trLibraryDestroyBitmap(preview);
    EXPECT_FALSE(trLibraryPreviewBytesToBitmap(nullptr, 4, 4, preview) ||
                 trLibraryPreviewBytesToBitmap(bgra.data(), 0, 4, preview));
}

TEST(ImageLibrary, JpegThroughMemoryRoundTrip)
{
    FIBITMAP *bitmap = nullptr, *decoded = nullptr, *shrunk = nullptr;
    ASSERT_TRUE(trLibraryLoadBitmap(Fx("jpeg_8x8.jpg"), bitmap));
    trDataBlock block;
    long size = 0;
    EXPECT_FALSE(trLibrarySaveImageToMemory(bitmap, trString("png"), block, size));
    ASSERT_TRUE(trLibrarySaveImageToMemory(bitmap, trString("jpeg"), block, size));
    ASSERT_GT(size, 4);
    EXPECT_TRUE(block.Data()[0] == 0xff && block.Data()[1] == 0xd8);
    ASSERT_TRUE(trLibraryReadImageFromMemory(block, size, decoded));
    std::vector<Pixel> pixels = CopyAll(decoded);
    ASSERT_EQ(pixels.size(), 64u);
    EXPECT_TRUE(std::abs(pixels[27].r - 200) <= 6 && std::abs(pixels[27].g - 100) <= 6);
    trLibraryDestroyBitmap(decoded);
    // Garbage bytes decode to nothing; a GIF frame claiming 18761 x 18761 pixels is refused
    // before decoding.
    trDataBlock junk, big;
    junk.Reset(new unsigned char[16]());
    big.Reset(new unsigned char[kHugeGifFrame.size()]);
    std::memcpy(big.Data(), kHugeGifFrame.data(), kHugeGifFrame.size());
    EXPECT_FALSE(trLibraryReadImageFromMemory(junk, 16, decoded) ||
                 trLibraryReadImageFromMemory(trDataBlock(), 0, decoded) ||
                 trLibraryReadImageFromMemory(big, long(kHugeGifFrame.size()), decoded));
    ASSERT_TRUE(trLibraryLoadAndShrinkPreviewImage(Fx("jpeg_8x8.jpg"), 4, shrunk));
    EXPECT_EQ(SizeOf(shrunk), "4 x 4");
    trLibraryDestroyBitmap(shrunk);
    trLibraryDestroyBitmap(bitmap);
}

TEST(ImageLibrary, PreviewFilesAreJpeg2000)
{
    FIBITMAP *small = nullptr, *bitmap = nullptr, *back = nullptr;
    ASSERT_TRUE(trLibraryProcessImageForPreview(Fx("rgb_2x2.png"), small));
    EXPECT_EQ(SizeOf(small), "2 x 2");
    trLibraryDestroyBitmap(small);
    // JPEG 2000 needs some size to encode its resolution levels: use 96 x 48.
    std::vector<unsigned char> bgra(4 * 96 * 48, 200);
    ASSERT_TRUE(trLibraryPreviewBytesToBitmap(bgra.data(), 96, 48, bitmap));
    ScratchDir dir;
    std::string const path = dir.File("preview.j2k"), mini = dir.File("preview_mini.j2k");
    ASSERT_TRUE(trLibrarySaveImageForPreview(trString(path.c_str()), bitmap, true));
    ASSERT_TRUE(trLibrarySaveImageForMiniPreview(trString(path.c_str()), bitmap, 64));
    // A JPEG 2000 code stream starts with SOC, SIZ.
    Bytes const head = ReadBytes(mini);
    EXPECT_TRUE(head.size() > 4 && Bytes(head.begin(), head.begin() + 4) == (Bytes{0xff, 0x4f, 0xff, 0x51}));
    ASSERT_TRUE(trLibraryLoadBitmap(trString(mini.c_str()), back));
    EXPECT_EQ(SizeOf(back), "64 x 32");
    trLibraryDestroyBitmap(back);
    trLibraryDestroyBitmap(bitmap);
    EXPECT_FALSE(trLibrarySaveImageForPreview(trString(path.c_str()), nullptr, true));
}
