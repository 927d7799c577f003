// Pixel stores: layout, allocation, conversions, look-ups, fills, operators,
// dithering, the 3-D capacity ladder, lists and small records.
#include "test_trImageFormatsSupport.h"

#include <cmath>
#include <tuple>

#include "foundation/trColourFilters.h"
#include "images/trImageArithmetic.h"

namespace {

class ImageTest : public ::testing::Test {
protected:
    MessageCapture capture;
};

void ExpectCol(trFCol const &c, float r, float g, float b, float tol = 1e-6f)
{
    EXPECT_NEAR(c.r, r, tol);
    EXPECT_NEAR(c.g, g, tol);
    EXPECT_NEAR(c.b, b, tol);
}

} // namespace

TEST_F(ImageTest, InitCopyAndAbsurdSizes)
{
    trFImage f;
    trFloatMap m;
    ASSERT_EQ(f.Init(10, 20, 4, 3), 1);
    EXPECT_TRUE(f.BytesPerPixel() == 12 && f.EndX() == 14 && f.EndY() == 23);
    EXPECT_EQ(static_cast<void *>(f.FPixelOffset(11, 22)), static_cast<void *>(f.FPixelRaw(1, 2)));
    EXPECT_EQ(f.FScanlineOffset(21) + 3, f.FPixelRaw(3, 1));
    EXPECT_EQ(f.FPixelRaw(std::int64_t(5)), f.FPixelRaw(1, 1)); // a linear index walks rows
    ASSERT_EQ(m.Init(0, 0, 2, 2), 1);
    EXPECT_EQ(m.BytesPerPixel(), 4);

    trImage image;
    // No layout yet: nothing to allocate.
    EXPECT_EQ(image.Init(0, 0, 4, 4), 0);
    EXPECT_EQ(capture.errors,
              std::vector<std::string>{"trImage: unable to allocate pixelmap with zero bytes per pixel"});
    ASSERT_EQ(image.Init(1, 2, 3, 2, 2, 2, true), 1);
    EXPECT_TRUE(image.BytesPerPixel() == 4 && image.IsSigned());
    image.SetValueMultiplierForWriteFile(3.0);
    image.SetValueOffsetForWriteFile(-1.0);
    // Channels and bytes below 1 keep the present layout; settings and signedness reset.
    ASSERT_EQ(image.Init(5, 6, 7, 8, 0, -1), 1);
    EXPECT_TRUE(image.NumChannels() == 2 && image.BytesPerChannel() == 2 && !image.IsSigned() && image.OffsetX() == 5);
    EXPECT_TRUE(image.ValueMultiplierForWriteFile() == 1.0 && image.ValueOffsetForWriteFile() == 0.0);
    image.Cleanup();
    EXPECT_EQ(image.Pixels(), nullptr);

    // A copy takes layout, offsets and pixels, and owns them.
    f.Fill(trFCol(0.25f, 0.5f, 0.75f));
    f.FPixelRaw(1, 1)->r = 9.0f;
    ASSERT_EQ(image.Copy(f), 1);
    ASSERT_EQ(image.OffsetX(), 10);
    ExpectCol(image.FColFromPixel(image.PixelRaw(1, 1)), 9.0f, 0.5f, 0.75f);
    image.Clear();
    ExpectCol(image.FColFromPixel(image.PixelRaw(1, 1)), 0.0f, 0.0f, 0.0f);
    ExpectCol(f.FColFromPixel(f.PixelRaw(1, 1)), 9.0f, 0.5f, 0.75f);

    capture.errors.clear();
    EXPECT_EQ(f.Init(0, 0, 2000000000, 2000000000), 0);
    ASSERT_EQ(capture.errors.size(), 1u);
    EXPECT_TRUE(capture.errors[0].rfind("trImage: unable to allocate pixelmap: size ", 0) == 0 &&
                capture.errors[0].find(" Mb") != std::string::npos)
        << capture.errors[0];
    EXPECT_TRUE(f.Pixels() == nullptr && f.Width() == 0);
    EXPECT_EQ(f.Init(0, 0, -3, 4), 0);
    // An empty picture is allowed and holds no store.
    EXPECT_EQ(f.Init(0, 0, 0, 5), 1);
    EXPECT_TRUE(f.Pixels() == nullptr && f.MeanCol().r == 0.0f);
}

TEST_F(ImageTest, PixelConversionTable)
{
    unsigned char const bytes[4] = {255, 0, 51, 102};
    std::uint16_t const u16[3] = {65535, 32768, 0};
    float const floats[4] = {-2.0f, 0.5f, 7.0f, 0.25f}, k = 1.5259022e-5f;
    struct Row {
        int channels, bpc;
        bool isSigned;
        void const *pixel;
        trF4Col want;
    } const rows[] = {
        {1, 1, false, bytes, {1, 1, 1, 1}}, {4, 1, false, bytes, {1, 0, 0.2f, 0.4f}},
        // 16-bit: unsigned and signed read the same bits differently.
        {3, 2, false, u16, {65535 * k, 32768 * k, 0, 1}}, {3, 2, true, u16, {-k, -32768 * k, 0, 1}},
        {4, 4, false, floats, {-2, 0.5f, 7, 0.25f}}, {2, 1, false, bytes, {0, 0, 0, 1}}, // two channels: black
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.channels << " x " << row.bpc << (row.isSigned ? " signed" : ""));
        trImage img;
        ASSERT_EQ(img.Init(0, 0, 1, 1, row.channels, row.bpc, row.isSigned), 1);
        trF4Col const c4 = img.F4ColFromPixel(row.pixel);
        ExpectCol(img.FColFromPixel(row.pixel), row.want.r, row.want.g, row.want.b);
        ExpectCol(trFCol(c4.r, c4.g, c4.b), row.want.r, row.want.g, row.want.b);
        EXPECT_NEAR(c4.a, row.want.a, 1e-6f);
    }
}

TEST_F(ImageTest, SmoothLookupWeightsAndWrapping)
{
    trFloatMap m;
    ASSERT_EQ(m.Init(100, 100, 5, 1), 1);
    float const values[5] = {1.0f, 10.0f, 100.0f, 1000.0f, 10000.0f};
    std::memcpy(m.FPixelRaw(0, 0), values, sizeof values);
    // At x = 0.5 pixels 0, 1, 2 take 0.25, 0.5, 0.25 (offsets are ignored).
    EXPECT_NEAR(m.FColLookupSmooth(0.5, 0.0, false, false).r, 0.25f * 1 + 0.5f * 10 + 0.25f * 100, 1e-3f);
    // At x = 1.0 (u = 1.5): taps 0..3 at distances 1.5, 0.5, 0.5, 1.5: weights 1/16, 7/16, 7/16, 1/16.
    EXPECT_NEAR(m.FColLookupSmooth(1.0, 0.0, false, false).r, (1.0f + 7.0f * 10 + 7.0f * 100 + 1000.0f) / 16.0f, 1e-2f);
    // At x = -0.5 the left taps clamp to pixel 0 or wrap to the right end.
    EXPECT_NEAR(m.FColLookupSmooth(-0.5, 0.0, false, false).r, 0.25f * 1 + 0.5f * 1 + 0.25f * 10, 1e-3f);
    EXPECT_NEAR(m.FColLookupSmooth(-0.5, 0.0, true, false).r, 0.25f * 10000 + 0.5f * 1 + 0.25f * 10, 1e-2f);
    // A flat image stays flat anywhere (weights sum to 1), even far outside.
    trFImage flat, empty;
    ASSERT_EQ(flat.Init(0, 0, 3, 3), 1);
    flat.Fill(trFCol(0.5f, 0.25f, 2.0f));
    for (trFCol const &c :
         {flat.FColLookupSmooth(1.37, 2.91, false, true), flat.FColLookupSmooth(-1e12, 1e30, true, true),
          flat.FColLookupSmooth(std::nan(""), 0.0, true, false)})
        ExpectCol(c, 0.5f, 0.25f, 2.0f, 1e-5f);
    ExpectCol(empty.FColLookupSmooth(0.0, 0.0, false, false), 0.0f, 0.0f, 0.0f);
}

TEST_F(ImageTest, FillsMeanAndArithmeticOperators)
{
    trFImage f;
    ASSERT_EQ(f.Init(10, 10, 4, 2), 1);
    f.Fill(trFCol(1.0f, 2.0f, 3.0f));
    f.FillRectangleOffset(11, 10, 13, 11, trFCol(5.0f, 6.0f, 7.0f));
    EXPECT_TRUE(*f.FPixelOffset(10, 10) == trFCol(1, 2, 3) && *f.FPixelOffset(11, 10) == trFCol(5, 6, 7) &&
                *f.FPixelOffset(13, 10) == trFCol(1, 2, 3));
    ExpectCol(f.MeanCol(), 2.0f, 3.0f, 4.0f, 1e-6f); // six (1,2,3) and two (5,6,7)
    // Empty or inverted rectangles change nothing; rectangles past the edge are clipped.
    f.FillRectangleOffset(12, 10, 12, 12, trFCol(9.0f, 9.0f, 9.0f));
    f.FillRectangleOffset(13, 11, 11, 10, trFCol(9.0f, 9.0f, 9.0f));
    ExpectCol(f.MeanCol(), 2.0f, 3.0f, 4.0f, 1e-6f);
    f.FillRectangleOffset(13, 11, 100, 100, trFCol(9.0f, 10.0f, 11.0f));
    EXPECT_EQ(*f.FPixelOffset(13, 11), trFCol(9.0f, 10.0f, 11.0f));
    trBImage bytes;
    ASSERT_EQ(bytes.Init(0, 0, 2, 2), 1);
    bytes.Fill(trBCol(1, 2, 3));
    bytes.FillRectangleOffset(1, 1, 2, 2, trBCol(7, 8, 9));
    EXPECT_TRUE(bytes.BPixelRaw(1, 1)->g == 8 && bytes.BPixelRaw(0, 1)->g == 2);
    trFloatMap m;
    ASSERT_EQ(m.Init(-1, -1, 2, 2), 1);
    m.Fill(4.0f);
    m.FillRectangleOffset(-1, -1, 0, 0, -4.0f);
    EXPECT_TRUE(*m.FPixelRaw(0, 0) == -4.0f && *m.FPixelRaw(1, 1) == 4.0f);

    trFImage a, b, c;
    ASSERT_EQ(a.Init(0, 0, 3, 2) + b.Init(0, 0, 3, 2) + c.Init(1, 0, 5, 1), 3);
    a.Fill(trFCol(6.0f, 8.0f, 10.0f));
    b.Fill(trFCol(2.0f, 4.0f, 0.0f));
    c.Fill(trFCol(1.0f, 1.0f, 1.0f));
    a += b;
    ExpectCol(*a.FPixelRaw(2, 1), 8.0f, 12.0f, 10.0f);
    a -= b;
    ExpectCol(*a.FPixelRaw(0, 0), 6.0f, 8.0f, 10.0f);
    a *= b;
    ExpectCol(*a.FPixelRaw(1, 0), 12.0f, 32.0f, 0.0f);
    a.Fill(trFCol(6.0f, 8.0f, 1.0f));
    a /= b;
    ExpectCol(*a.FPixelRaw(1, 1), 3.0f, 2.0f, 1.0f / trGuardedDivisor(0.0f)); // finite
    // Only the overlap of the two rectangles changes.
    a.Fill(trFCol(0.0f, 0.0f, 0.0f));
    a += c;
    EXPECT_TRUE(*a.FPixelRaw(0, 0) == trFCol(0.0f) && *a.FPixelRaw(1, 0) == trFCol(1.0f) &&
                *a.FPixelRaw(1, 1) == trFCol(0.0f));
    // Assignment reuses the store when the rectangle matches, reallocates otherwise.
    unsigned char *store = a.Pixels();
    a = b;
    EXPECT_TRUE(a.Pixels() == store && *a.FPixelRaw(2, 1) == trFCol(2.0f, 4.0f, 0.0f));
    a = c;
    EXPECT_TRUE(a.OffsetX() == 1 && a.Width() == 5 && *a.FPixelRaw(4, 0) == trFCol(1.0f));
}

TEST_F(ImageTest, ThreadedOperatorGivesTheSamePictureInPlace)
{
    trFImage a, b;
    ASSERT_EQ(a.Init(0, 0, 7, 5), 1);
    for (int i = 0; i < 35; ++i)
        *a.FPixelRaw(i % 7, i / 7) = trFCol(float(i % 7), float(i / 7), float(i % 7 * (i / 7)));
    b = a;
    auto run = [](trFImage &image, int threads) {
        trImageAdd op;
        op.SetDestination(&image);
        op.SetSourceBack(image);
        op.SetSourceFront(image);
        op.SetBackMultiplier(trFCol(2.0f, 2.0f, 2.0f));
        op.OperateThreaded(threads, false, true, true, 0, 0, image.Width(), image.Height());
    };
    run(a, 1);
    run(b, 8);
    EXPECT_EQ(std::memcmp(a.Pixels(), b.Pixels(), std::size_t(a.NumBytes())), 0);
    ExpectCol(*a.FPixelRaw(3, 2), 9.0f, 6.0f, 18.0f);
}

TEST_F(ImageTest, DitherIsReproducibleAndClamps)
{
    trFImage f;
    ASSERT_EQ(f.Init(2, 3, 16, 8), 1);
    for (int i = 0; i < 128; ++i)
        *f.FPixelRaw(i % 16, i / 16) = trFCol(i % 16 / 16.0f, i / 16 / 8.0f, 0.5f);
    *f.FPixelRaw(0, 0) = trFCol(1.0f, 5.0f, -1.0f);
    // A filter replaces the source value first.
    struct Invert : trFColFilter {
        trFCol operator()(trFCol const &c) const override { return trFCol(1.0f - c.r, 1.0f - c.g, 1.0f - c.b); }
    } invert;
    trBImage a, b, c, d;
    a.SetBytePixelsFromFloatPixels(f, nullptr, 42);
    b.SetBytePixelsFromFloatPixels(f, nullptr, 42);
    c.SetBytePixelsFromFloatPixels(f, nullptr, 43);
    d.SetBytePixelsFromFloatPixels(f, &invert, 42);
    ASSERT_TRUE(a.Width() == 16 && a.OffsetX() == 2);
    EXPECT_EQ(std::memcmp(a.Pixels(), b.Pixels(), std::size_t(a.NumBytes())), 0);
    EXPECT_NE(std::memcmp(a.Pixels(), c.Pixels(), std::size_t(a.NumBytes())), 0);
    EXPECT_EQ(*a.BPixelRaw(0, 0), trBCol(255, 255, 0));
    // 0.5 * 255 = 127.5 plus a draw below 1 gives 127 or 128.
    for (int x = 1; x < 16; ++x)
        EXPECT_TRUE(a.BPixelRaw(x, 3)->b == 127 || a.BPixelRaw(x, 3)->b == 128);
    EXPECT_TRUE(d.BPixelRaw(0, 0)->b == 255 && d.BPixelRaw(0, 0)->r == 0);
}

TEST_F(ImageTest, Image3CapacityLadderAndLookups)
{
    trImage3 v, none;
    ASSERT_EQ(v.Init(0, 0, 0, 10, 10, 10, 1, 4), 1);
    std::int64_t cap = v.Capacity();
    // The next rung of the 1.05 ladder: 1.05^170 is the first power at or above 4000.
    EXPECT_TRUE(cap >= 4000 && cap < 4000 * 105 / 100 + 1) << cap;
    unsigned char *store = v.Pixels();
    // 5 % smaller keeps the store; half the size reallocates.
    ASSERT_EQ(v.Init(0, 0, 0, 10, 10, 19, 1, 2), 1); // 3800 bytes
    EXPECT_TRUE(v.Pixels() == store && v.Capacity() == cap);
    ASSERT_EQ(v.Init(1, 2, 3, 10, 10, 10, 1, 2), 1); // 2000 bytes
    EXPECT_TRUE(v.Capacity() < cap && v.Capacity() >= 2000 && v.OffsetZ() == 3);
    EXPECT_EQ(v.PixelOffset(1, 2, 3), v.Pixels());
    EXPECT_EQ(none.Init(0, 0, 0, 2, 2, 2), 0);
    EXPECT_EQ(capture.errors,
              std::vector<std::string>{"trImage3: unable to allocate pixelmap with zero bytes per pixel"});
    EXPECT_EQ(none.Init(0, 0, 0, 100000, 100000, 100000, 4, 4), 0);
    EXPECT_EQ(capture.errors.back().rfind("trImage3: unable to allocate pixelmap: size ", 0), 0u);

    ASSERT_EQ(v.Init(0, 0, 0, 2, 1, 1, 1, 4), 1);
    float const values[2] = {10.0f, 20.0f};
    std::memcpy(v.Pixels(), values, sizeof values);
    // Centres at x + 0.5: x = 0.5 is pixel 0, x = 1.0 halfway; wrapping at x = 0 takes taps
    // -1 (= pixel 1) and 0, half each.
    for (auto [x, wrap, want] :
         {std::tuple{0.5, false, 10.0f}, {1.0, false, 15.0f}, {1.25, false, 17.5f}, {0.0, true, 15.0f}})
        EXPECT_NEAR(v.F4ColLookupLinear(x, 0.5, 0.5, wrap, false, false).r, want, 1e-5f) << x;
    // Smooth: at x = 1.5 (u = 1) pixel 1 has 0.5 and its neighbours 0.25 each, clamped.
    EXPECT_NEAR(v.FColLookupSmooth(1.5, 0.5, 0.5, false, false, false).r, 0.25f * 10 + 0.75f * 20, 1e-4f);
    EXPECT_NEAR(v.F4ColLookupSmooth(1.5, 0.5, 0.5, true, false, false).r, 0.5f * 20 + 0.5f * 10, 1e-4f);
}

TEST_F(ImageTest, ImageListsAndRecordsShareTheirRecord)
{
    trFImageList list(new trFImage, new trFImage, 2.0, false);
    ASSERT_EQ(list.NumImages(), 2u);
    EXPECT_TRUE(list.Type(0) == svRgb && list.Type(1) == svAlpha);
    trFImageList copy = list;
    copy.AddImage(nullptr, svSurfDepth, 1.0, true, false);
    copy.AddImage(nullptr, svSurfDepth, 1.0, true, true);
    EXPECT_EQ(list.NumImages(), 4u);
    std::uint64_t index = 99;
    ASSERT_TRUE(list.FindType(svSurfDepth, index));
    EXPECT_EQ(index, 2u);
    EXPECT_FALSE(list.ShouldOutput(2) || list.FindType(svCloudRgb, index));
    list.AssignPostFilter(reinterpret_cast<trImageListFilter *>(&index));
    EXPECT_EQ(copy.AssignedPostFilter(), reinterpret_cast<trImageListFilter *>(&index));
    copy.DeleteImages();
    EXPECT_EQ(list.NumImages(), 0u);

    trBImage a, b;
    trFColFilter filter;
    trBImageList two(&a, nullptr, &b, &filter);
    EXPECT_TRUE(two.NumImages() == 2 && two.Image(1) == &b && two.Filter(1) == &filter && two.Filter(0) == nullptr);
    trBImageList shared = two;
    shared.SetFilter(0, &filter);
    shared.SetFilter(16, &filter);
    EXPECT_TRUE(two.Filter(0) == &filter && two.Image(16) == nullptr);

    trImageWriterFormatInfo info;
    trImageWriterFormatInfo alias = info;
    alias.SetTiffRequiredOptions(16, 5);
    alias.SetExrRequiredOptions(2);
    alias.SetToneMapAndGammaFilter(&filter);
    EXPECT_TRUE(info.GetTiffBitsPerChannel() == 16 && info.GetTiffCompression() == 5 && info.GetExrPixelType() == 2 &&
                info.GetToneMapAndGammaFilter() == &filter);

    trDataBlock block;
    block.Reset(new unsigned char[3]{1, 2, 3});
    trDataBlock other = block;
    block.Reset(nullptr);
    EXPECT_TRUE(other.Data() != nullptr && other.Data()[2] == 3);
}

TEST(RenderElements, TableNames)
{
    EXPECT_STREQ(trRenderElementName(svRgb), "svRgb");
    EXPECT_STREQ(trRenderElementName(19), "svSurfIndirectDiffRefl");
    EXPECT_STREQ(std::string(trRenderElementName(32)).append(trRenderElementName(-1)).c_str(), "");
    for (int i = 0; i < trNumNamedRenderElements; ++i)
        EXPECT_EQ(trRenderElementInfoFor(i)->type, i);
}
