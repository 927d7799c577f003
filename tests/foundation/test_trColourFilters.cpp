#include "foundation/trColourFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

void ExpectCol(trFCol const &c, double r, double g, double b, double tol = 1e-6)
{
    EXPECT_NEAR(c.r, r, tol);
    EXPECT_NEAR(c.g, g, tol);
    EXPECT_NEAR(c.b, b, tol);
}

// Adds a constant and counts its destructions.
class CountingFilter : public trFColFilter
{
public:
    CountingFilter(float amount, int *counter) : add(amount), destroyed(counter) {}
    ~CountingFilter() override { ++*destroyed; }
    trFCol operator()(trFCol const &c) const override { return c + add; }

private:
    float add;
    int *destroyed;
};

struct ScaleFilter : trFColFilter {
    trFCol operator()(trFCol const &c) const override { return c * 3.0f; }
};

} // namespace

TEST(trColourFilterTest, GreyFringeGammaAndGamutStretch)
{
    EXPECT_EQ(trMaxToGreyFColFilter()(trFCol(0.25f, 0.5f, -3)), trFCol(0.5f));
    EXPECT_EQ(trMaxToGreyFColFilter()(trFCol(-1, -5, -0.5f)), trFCol(-0.5f));
    ExpectCol(FringeAlphaFColFilter()(trFCol(0.5f, 0.25f, 1)), 1, 0.75, 0);
    ExpectCol(FringeAlphaFColFilter()(trFCol(0, 2, -1)), 0, -8, -8);
    ExpectCol(RedFringeAlphaFColFilter()(trFCol(0.25f, 0.5f, 0.5f)), 0.75, 0.75, 0.75);

    trGammaCorrectionFColFilter g22(2.2);
    ExpectCol(g22(trFCol(0.25f, 1, 0)), 0.53252054, 1, 0);
    // Negative channels become pow(0, exponent).
    ExpectCol(g22(trFCol(-0.5f, -1e-30f, -100)), 0, 0, 0, 0);
    trGammaCorrectionFColFilter inverse(-2);
    EXPECT_TRUE(std::isinf(inverse(trFCol(-1, 0, 4)).r));
    EXPECT_FLOAT_EQ(inverse(trFCol(-1, 0, 4)).b, 0.5f);
    // Tiny gammas take the signed limit.
    EXPECT_TRUE(trGammaCorrectionFColFilter(0).Exponent() == 1e12f &&
                trGammaCorrectionFColFilter(-1e-13).Exponent() == -1e12f);
    EXPECT_EQ(trGammaCorrectionFColFilter(0)(trFCol(0.5f, 1, 2)), trFCol(0, 1, std::numeric_limits<float>::infinity()));

    trFCol c2(0.9f, 0.3f, 0.1f), w = c2.FromWideGamut();
    EXPECT_EQ(trGamutStretchFColFilter(0)(c2), c2);
    ExpectCol(trGamutStretchFColFilter(1)(c2), w.r, w.g, w.b);
    ExpectCol(trGamutStretchFColFilter(0.5)(c2), (w.r + c2.r) / 2, (w.g + c2.g) / 2, (w.b + c2.b) / 2);
    // Greys are fixed points of the matrix and so of the stretch.
    ExpectCol(trGamutStretchFColFilter(3)(trFCol(0.4f)), 0.4, 0.4, 0.4);
}

TEST(trColourFilterTest, ConcatOrderAndOwnership)
{
    int destroyed = 0;
    {
        CountingFilter add(1, &destroyed);
        ScaleFilter scale;
        trConcatFColFilter addThenScale(false, &add, &scale);
        trConcatFColFilter scaleThenAdd(false, &scale, &add);
        EXPECT_EQ(addThenScale(trFCol(1)), trFCol(6));
        EXPECT_EQ(scaleThenAdd(trFCol(1)), trFCol(4));
    }
    // Only the stack filter's own end counts: the concatenations freed nothing.
    EXPECT_EQ(destroyed, 1);

    destroyed = 0;
    delete new trConcatFColFilter(true, new CountingFilter(1, &destroyed), new CountingFilter(2, &destroyed));
    EXPECT_EQ(destroyed, 2);

    // A null filter is the identity; an owned filter given twice is freed once.
    destroyed = 0;
    auto *twice = new CountingFilter(1, &destroyed);
    {
        trConcatFColFilter owner(true, twice, twice);
        EXPECT_EQ(owner(trFCol(0)), trFCol(2));
        EXPECT_EQ(trConcatFColFilter(false, nullptr, twice)(trFCol(0)), trFCol(1));
        EXPECT_EQ(trConcatFColFilter(true, nullptr, nullptr)(trFCol(5)), trFCol(5));
    }
    EXPECT_EQ(destroyed, 1);
}

TEST(trColourFilterTest, Saturation)
{
    trFCol c(0.8f, 0.2f, 0.4f);
    float l = 0.2125f * 0.8f + 0.7152f * 0.2f + 0.0724f * 0.4f;
    ExpectCol(trSaturationFColFilter(1)(c), 0.8, 0.2, 0.4);
    ExpectCol(trSaturationFColFilter(0)(c), l, l, l);
    ExpectCol(trSaturationFColFilter(0.5)(c), (0.8 + l) / 2, (0.2 + l) / 2, (0.4 + l) / 2);
    ExpectCol(trSaturationFColFilter(-1)(c), 2 * l - 0.8, 2 * l - 0.2, 2 * l - 0.4);

    // Above 1 it is soft.
    // By hand: L = 0.32752; red has delta 0.47248 over headroom 0.2, green
    // -0.12752 over -0.2.
    ExpectCol(trSaturationFColFilter(2)(trFCol(0.8f, 0.2f, 0.2f)), 0.98116122, 0.10571189, 0.10571189, 1e-6);
    // Channels at 0 and 1 have no headroom and stay.
    trFCol edge = trSaturationFColFilter(5)(trFCol(1, 0, 0.5f));
    EXPECT_TRUE(edge.r == 1.0f && edge.g == 0.0f && !edge.IsNan());

    // Never leaves 0..1 for colours inside it, and moves each channel away from L.
    for (double amount : {1.001, 1.5, 3.0, 50.0, 1e6})
        for (int i = 0; i < 21 * 21 * 21; ++i) {
            trFCol const in(i % 21 / 20.0f, i / 21 % 21 / 20.0f, i / 441 / 20.0f);
            trFCol const out = trSaturationFColFilter(amount)(in);
            float const lum = in.LuminanceLinear();
            for (int ch = 0; ch < 3; ++ch)
                ASSERT_TRUE(out.Get(ch) >= 0.0f && out.Get(ch) <= 1.0f &&
                            (in.Get(ch) > lum ? out.Get(ch) >= in.Get(ch) : out.Get(ch) <= in.Get(ch)))
                    << amount << " " << i << " " << ch;
        }
}

TEST(trColourFilterTest, SoftClipAndContrast)
{
    double clip = 0.5, contrast = std::log(2.0);
    trSoftClipContrastFColFilter none(2, false, clip, true, false, contrast);
    // With k = 1 the curve is the identity on 0..1 but still clamps.
    ExpectCol(none(trFCol(0.25f, 0.75f, -1)), 0.5, 1, 0);

    trSoftClipContrastFColFilter both(2, true, clip, true, true, contrast);
    EXPECT_TRUE(std::fabs(both.Scale() - 2 * 1.0644944589178593) < 1e-12 &&
                std::fabs(both.ContrastExponent() - 2) < 1e-12)
        << both.Scale() << " " << both.ContrastExponent();
    double zero = 0;
    EXPECT_EQ(trSoftClipContrastFColFilter(1, true, zero, false, false, zero).SoftClipInverse(), 1e12);

    double one = 1, half = 0.5, unused = 0;
    // By hand: a = 1 at c = 1 gives 1 - 1/e; a = 0.5 gives its square root.
    ExpectCol(trSoftClipContrastFColFilter(1, true, one, false, false, unused)(trFCol(1, 0, -2)), 0.63212056, 0, 0);
    ExpectCol(trSoftClipContrastFColFilter(1, true, half, false, false, unused)(trFCol(1)), 0.79506010, 0.79506010,
              0.79506010);

    double amounts[] = {0.25, 0.5, 1, 2};
    for (double &a : amounts) {
        trSoftClipContrastFColFilter f(1, true, a, true, false, unused);
        float prev = -1;
        for (int i = 0; i <= 4000; ++i) {
            float out = f(trFCol(i * 0.01f)).r;
            ASSERT_TRUE(out >= prev && out <= 1.0f) << a << " " << i;
            prev = out;
        }
        EXPECT_GT(prev, 0.99f);
    }
    trSoftClipContrastFColFilter f(1, false, unused, false, true, contrast);
    // k = 2: below the middle pow(2c, 2) / 2, above its mirror image.
    ExpectCol(f(trFCol(0.25f, 0.5f, 0.75f)), 0.125, 0.5, 0.875);
    ExpectCol(f(trFCol(0.1f, 0.9f, 2)), 0.02, 0.98, 1);
}

TEST(trColourFilterTest, ScreensAndVectorOperations)
{
    ExpectCol(trScreenFColPairFilter()(trFCol(0.5f, 0, 1), trFCol(0.5f, 0.3f, 0.2f)), 0.75, 0.3, 1);

    // By hand, limit 0.5 (exponent 2): (1 - 0.5^2 * 0.8^2) * 0.5 = 0.42.
    trClampedScreenFColPairFilter half(trFCol(0.5f, 1, 2));
    // A limit of 1 is the plain screen; limit 2 (exponent 0.5): (1 - sqrt(0.5) * sqrt(0.25)) * 2.
    ExpectCol(half(trFCol(0.5f, 0.5f, 0.5f), trFCol(0.2f, 0.2f, 0.75f)), 0.42, 0.6, (1 - std::sqrt(0.125)) * 2);
    // Black stays black; a full channel reaches the limit.
    ExpectCol(half(trFCol(1), trFCol(0)), 0.5, 1, 2);
    // A zero limit gives 0 without NaN.
    ExpectCol(trClampedScreenFColPairFilter(trFCol(0))(trFCol(0.5f), trFCol(0.5f)), 0, 0, 0, 0);

    std::vector<trFCol> a = {trFCol(1, 2, 3), trFCol(4, 0, -6), trFCol(8)};
    std::vector<trFCol> b = {trFCol(2, 0, 1), trFCol(2, 0, 0), trFCol(1)};
    std::vector<trFCol> o(3, trFCol(-1));
    trFColVec va(a), vb(b), vo(o);
    trFColAdd()(vo, va, vb);
    EXPECT_EQ(o[1], trFCol(6, 0, -6));
    trFColVecSafeDivide()(vo, va, vb);
    EXPECT_TRUE(o[0] == trFCol(0.5f, 2, 3) && o[1] == trFCol(2, 0, -6) && o[2] == trFCol(8));
    trFColVecRawDivide()(vo, va, vb);
    EXPECT_TRUE(o[0].r == 0.5f && o[0].g == INFINITY && std::isnan(o[1].g) && o[1].b == -INFINITY);

    // The loop follows the output's count and stops at a shorter input.
    std::fill(o.begin(), o.end(), trFCol(-1));
    trFColVec firstTwo(o.data(), 2);
    trFColAdd()(firstTwo, va, vb);
    EXPECT_TRUE(o[1] == trFCol(6, 0, -6) && o[2] == trFCol(-1));
    trFColVec shortB(b.data(), 1);
    trFColAdd()(vo, va, shortB);
    EXPECT_TRUE(o[0] == trFCol(3, 2, 4) && o[2] == trFCol(-1));
}
