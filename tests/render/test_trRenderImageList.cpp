// Element image lists of a render target: lookup by type, shared copies, and the step
// from float images to the byte images a host displays.

#include "foundation/trColourFilters.h"
#include "render/trRenderImageList.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

class Halve : public trFColFilter {
public:
    trFCol operator()(trFCol const &c) const override { return trFCol(c.r * 0.5f, c.g * 0.5f, c.b * 0.5f); }
};

trFImage *Flat(float v)
{
    auto *image = new trFImage;
    image->Init(0, 0, 4, 3);
    image->Fill(trFCol(v, v, v));
    return image;
}

} // namespace

TEST(RenderImageList, FindTypeTakesTheFirstAndCopiesShare)
{
    trFImageList list(Flat(0.1f), Flat(1.0f), 1.0, true);
    trFImageList copy = list;
    copy.AddImage(Flat(0.2f), svSurfDepth, 2.0, false, false);
    copy.AddImage(Flat(0.3f), svSurfDepth, 3.0, false, true);
    ASSERT_EQ(list.NumImages(), 4u);
    // The first of a type; a miss leaves the index as it was.
    std::uint64_t depth = 99, alpha = 99, cloud = 99;
    EXPECT_TRUE(list.FindType(svSurfDepth, depth) && list.FindType(svAlpha, alpha));
    EXPECT_FALSE(list.FindType(svCloudDepth, cloud));
    EXPECT_EQ((std::vector<std::uint64_t>{depth, alpha, cloud}), (std::vector<std::uint64_t>{2, 1, 99}));
    EXPECT_EQ(list.Exposure(depth), 2.0);
    list.DeleteImages();
    EXPECT_EQ(copy.NumImages(), 0u);
}

// A byte list shorter than the float list converts only as many as it holds, each
// through its own filter; null images on either side are skipped.
TEST(RenderImageList, ByteListConvertsOnlyWhatItHolds)
{
    trFImageList floats(Flat(0.5f), Flat(1.0f), 1.0, true);
    floats.AddImage(Flat(0.25f), svSurfDepth, 1.0, true, true);
    Halve halve;
    trBImage rgb, alpha;
    trBImageList bytes(&rgb, nullptr, &alpha, &halve);

    EXPECT_EQ(trSetBytePixelsFromFloatImageList(bytes, floats, 7), 2);
    ASSERT_EQ(rgb.Width(), 4);
    ASSERT_EQ(alpha.Height(), 3);
    // 0.5 * 255 = 127.5 dithers to 127 or 128; halved 1.0 likewise.
    for (trBImage const *b : {&rgb, &alpha})
        for (int i = 0; i < 12; ++i) {
            trBCol c = *b->BPixelRaw(i % 4, i / 4);
            EXPECT_GE(c.r, 127);
            EXPECT_LE(c.r, 128);
        }
    EXPECT_EQ(trSetBytePixelsFromFloatImageList(trBImageList(), floats, 7), 0);
    trFImageList holes;
    holes.AddImage(nullptr, svRgb, 1.0, true, true);
    EXPECT_EQ(trSetBytePixelsFromFloatImageList(bytes, holes, 7), 0);
    floats.DeleteImages();
}
