#include "foundation/trColour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

void ExpectCol(trFCol const &c, double r, double g, double b, double tol = 1e-6)
{
    EXPECT_NEAR(c.r, r, tol);
    EXPECT_NEAR(c.g, g, tol);
    EXPECT_NEAR(c.b, b, tol);
}

} // namespace

TEST(trFColTest, LayoutAndArithmetic)
{
    static_assert(std::is_trivially_copyable_v<trFCol> && sizeof(trFCol) == 12 && sizeof(trF4Col) == 16);
    trFCol a(1, 2, 3), b(4, 8, 16);
    ExpectCol(a + b, 5, 10, 19, 0);
    ExpectCol(b - a, 3, 6, 13, 0);
    ExpectCol(a * b, 4, 16, 48, 0);
    ExpectCol(b / a, 4, 4, 16.0 / 3.0);
    ExpectCol(a * 2.0f, 2, 4, 6, 0);
    trFCol c = a;
    c += b;
    c *= 2.0f;
    c -= trFCol(1.0f);
    c /= trFCol(1, 1, 37);
    ExpectCol(c, 9, 19, 1, 0);
}

TEST(trFColTest, ExactComparisons)
{
    trFCol a(0.1f, 0.2f, 0.3f);
    EXPECT_TRUE(a == trFCol(0.1f, 0.2f, 0.3f));
    EXPECT_TRUE(a != trFCol(0.1f, 0.2f, std::nextafter(0.3f, 1.0f)));
    // Less only when all three channels are less.
    EXPECT_TRUE(a < trFCol(1, 1, 1));
    EXPECT_FALSE(a < trFCol(1, 1, 0.3f));
    EXPECT_FALSE(trFCol(1, 1, 1) < a);
    EXPECT_FALSE(a < a);
}

TEST(trFColTest, BlendComplementPow)
{
    trFCol a(0, 1, 2), b(10, 11, 12);
    EXPECT_EQ(a.BlendedTo(b, 0.0f), a);
    EXPECT_EQ(a.BlendedTo(b, 1.0f), b);
    ExpectCol(a.BlendedTo(b, 0.25f), 2.5, 3.5, 4.5);
    ExpectCol(a.BlendedTo(b, 0.75), 7.5, 8.5, 9.5);
    ExpectCol(a.BlendedTo(b, trFCol(0, 0.5f, 1)), 0, 6, 12);
    ExpectCol(trFCol(0.25f, 1, -1).Complement(), 0.75, 0, 2);
    ExpectCol(trFCol(4, 9, 0.25f).Pow(0.5f), 2, 3, 0.5);
    ExpectCol(trFCol(4, 9, 0.25f).Sqrt(), 2, 3, 0.5);
}

TEST(trFColTest, NearlyEqualsIsRelativeToThis)
{
    trFCol a(1000, 1, 0);
    EXPECT_TRUE(a.NearlyEquals(trFCol(1000.0005f, 1, 0)));
    EXPECT_FALSE(a.NearlyEquals(trFCol(1000.01f, 1, 0)));
    // A zero channel demands exact equality.
    EXPECT_FALSE(a.NearlyEquals(trFCol(1000, 1, 1e-30f)));
    EXPECT_TRUE(trFCol(1e-30f, 1, 1).NearlyEquals(trFCol(1e-30f, 1, 1)));
}

TEST(trFColTest, ComponentFunctions)
{
    // The median of every ordering of three distinct values.
    float v[3] = {1, 7, 4};
    int perms[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto &p : perms)
        EXPECT_EQ(trFCol(v[p[0]], v[p[1]], v[p[2]]).MedianComp(), 4.0f);
    // Ties of magnitude go to the earlier channel, keeping its sign.
    EXPECT_EQ(trFCol(2, -2, 1).LargestComp(), 2.0f);
    EXPECT_EQ(trFCol(1, -2, 2).LargestComp(), -2.0f);
    EXPECT_EQ(trFCol(0, 1, -3).LargestComp(), -3.0f);
}

TEST(trFColTest, LuminanceWeights)
{
    // The weights add to 1.0001, not 1.
    EXPECT_NEAR(trFCol(1, 1, 1).LuminanceLinear(), 1.0001, 1e-6);
    EXPECT_NEAR(trFCol(1, 0, 0).LuminanceMonitor(), 0.49459995, 1e-6);
    EXPECT_NEAR(trFCol(0.5f).LuminanceMonitor(), 0.50002274, 1e-6);
}

TEST(trFColTest, GammaSaturationClamps)
{
    ExpectCol(trFCol(0.25f, 1, 0).GammaCorrect(), 0.53252054, 1, 0);
    EXPECT_TRUE(std::isnan(trFCol(-0.25f, 0, 0).GammaCorrect().r));

    trFCol c(0.8f, 0.2f, 0.4f);
    float l = c.LuminanceLinear();
    ExpectCol(c.Saturated(0), l, l, l);
    ExpectCol(c.Saturated(1), 0.8, 0.2, 0.4);
    ExpectCol(c.Saturated(2), 1.6 - l, 0.4 - l, 0.8 - l, 1e-6);

    trFCol d(-1, 0.5f, 2);
    ExpectCol(d.Clamped(), 0, 0.5, 1, 0);
    ExpectCol(d.Clamped(0.6f, 1.5f), 0.6, 0.6, 1.5, 1e-7);

    float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(trFCol(0, 0, nan).IsNan());
}

TEST(trFColTest, WideGamut)
{
    // Both matrices keep white.
    ExpectCol(trFCol(1).ToWideGamut(), 1, 1, 1);
    ExpectCol(trFCol(1).FromWideGamut(), 1, 1, 1);
    // Round trip over a grid of colours, both directions.
    for (int i = 0; i <= 10; ++i)
        for (int j = 0; j <= 10; ++j)
            for (int k = 0; k <= 10; ++k) {
                trFCol c(i * 0.1f, j * 0.1f, k * 0.1f);
                trFCol a = c.ToWideGamut().FromWideGamut();
                trFCol b = c.FromWideGamut().ToWideGamut();
                ExpectCol(a, c.r, c.g, c.b, 1e-6);
                ExpectCol(b, c.r, c.g, c.b, 1e-6);
            }
}

TEST(trF4ColTest, ChannelsAndRgbForms)
{
    trF4Col c(1, -4, 2, 0.5f);
    trF4Col d = c * 2.0f + trF4Col(1, 1, 1, 1);
    EXPECT_EQ(d, trF4Col(3, -7, 5, 2));
    EXPECT_EQ(trF4Col(1, 0, 0.5f, 0.25f).Complement(), trF4Col(0, 1, 0.5f, 0.75f));
    EXPECT_TRUE(trF4Col(4, 9, 16, 25).Pow(0.5f).NearlyEquals(trF4Col(2, 3, 4, 5)));
    EXPECT_FALSE(trF4Col(4, 9, 16, 25).NearlyEquals(trF4Col(4, 9, 16, 25.001f)));
}

TEST(trBColTest, RoundingAndClamping)
{
    EXPECT_EQ(trBCol(trFCol(1.2f, -0.1f, 0.5f)), trBCol(255, 0, 128));
    EXPECT_EQ(trBCol(trFCol(1.0f, 0.998f, 0.999f)), trBCol(255, 254, 255));
    // Just below and above the half-way points.
    EXPECT_EQ(trBCol(trFCol(0.5f / 255 - 1e-4f, 0.5f / 255 + 1e-4f, 254.5f / 255 - 1e-4f)), trBCol(0, 1, 254));
    EXPECT_EQ(trBCol(trFCol(-1e20f, 1e20f, std::numeric_limits<float>::quiet_NaN())), trBCol(0, 255, 0));
    EXPECT_EQ(trBCol(trFCol(-std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(), 0)),
              trBCol(0, 255, 0));
    // Every byte survives a trip through float.
    for (int v = 0; v < 256; ++v) {
        unsigned char u = static_cast<unsigned char>(v);
        trBCol b(u, u, u);
        EXPECT_EQ(trBCol(trFCol(b)), b);
    }
    EXPECT_FLOAT_EQ(trBCol(255, 0, 51).ToFCol().r, 1.0000001f);
    EXPECT_FLOAT_EQ(trBCol(255, 0, 51).ToFCol().b, 0.2f);
}

TEST(trBColTest, DitherOffsets)
{
    trFCol c(10.9f / 255, 10.2f / 255, 10.5f / 255);
    // Offsets replace the 0.5: a zero offset truncates, a large one pushes up.
    EXPECT_EQ(trBCol(c, trFCol(0.0f)), trBCol(10, 10, 10));
    EXPECT_EQ(trBCol(c, trFCol(0.99f)), trBCol(11, 11, 11));
    EXPECT_EQ(trBCol(c, trFCol(0.05f, 0.75f, 0.45f)), trBCol(10, 10, 10));
    EXPECT_EQ(trBCol(c, trFCol(0.15f, 0.85f, 0.55f)), trBCol(11, 11, 11));
    EXPECT_EQ(trBCol(c), trBCol(11, 10, 11));
    EXPECT_EQ(trBCol(trFCol(1.0f), trFCol(0.99f)), trBCol(255, 255, 255));
    EXPECT_EQ(trBCol(trFCol(0.0f), trFCol(-0.99f)), trBCol(0, 0, 0));
}

TEST(trBColTest, FourChannels)
{
    EXPECT_EQ(trB4Col(trF4Col(1.2f, -0.1f, 0.5f, 0.2f)), trB4Col(255, 0, 128, 51));
    EXPECT_EQ(trB4Col(trF4Col(0.5f, 0.5f, 0.5f, 0.5f), trF4Col(0, 0, 0, 0.6f)), trB4Col(127, 127, 127, 128));
    trB4Col b(1, 2, 3, 255);
    EXPECT_EQ(trB4Col(trF4Col(b)), b);
}

TEST(trManRgbTest, ConstructionAssignmentAndScaling)
{
    trManRgb black(200);
    EXPECT_EQ(black.ColourSpace, 200);
    EXPECT_EQ(black.ToDisplay(), trFCol());
    // Doubles are narrowed to float.
    EXPECT_EQ(trManRgb(100, 0.1, 0.2, 0.3).ToDisplay(), trFCol(0.1f, 0.2f, 0.3f));
    trRgbLinear709 c(1, 2, 3);
    c = 0.5;
    EXPECT_EQ(c.ColourSpace, 100);
    EXPECT_EQ(c.ToDisplay(), trFCol(0.5f));

    trManRgbForceData f(1, 2, 3);
    f = 0.25f;
    EXPECT_EQ(f.ColourSpace, 1);
    EXPECT_EQ(f.Force, 1);
    trManRgb scaled = f * 2;
    EXPECT_EQ(scaled.ColourSpace, 1);
    EXPECT_EQ(scaled.Force, 0);
    EXPECT_EQ(scaled.ToDisplay(), trFCol(0.5f));
    EXPECT_EQ((0.5 * trRgbLinear709(4)).ColourSpace, 100);
    EXPECT_EQ((0.5 * trRgbLinear709(4)).ToDisplay(), trFCol(2));
}

TEST(trManRgbTest, TagRuleOfComparisons)
{
    trManRgb data(1, 0.5f, 0.5f, 0.5f);
    trManRgb plain(0, 0.5f, 0.5f, 0.5f);
    trManRgb linear(100, 0.5f, 0.5f, 0.5f);
    EXPECT_TRUE(data == plain && plain == linear && data.NearlyEquals(plain));
    EXPECT_FALSE(data == linear || data.NearlyEquals(linear));
    // The force byte takes no part.
    EXPECT_TRUE(trManRgbForceData(0.5) == trRgbData(0.5));
    EXPECT_TRUE(plain < trManRgb(100, 1, 1, 1));
    EXPECT_FALSE(data < trManRgb(100, 1, 1, 1));
}

namespace {

// Doubles colours of the managed spaces and marks which space it saw.
class DoublingConverter : public trColourConverter
{
public:
    mutable int lastSpace = -1;
    trFCol Convert(trFCol const &c, int colourSpace) const override
    {
        lastSpace = colourSpace;
        return c * 2.0f;
    }
};

} // namespace

TEST(trManRgbTest, ToRenderUsesTheInstalledConverter)
{
    trColourConverter const *previous = trGetColourConverter();
    trSetColourConverter(nullptr);
    EXPECT_EQ(trRgbLinear709(1).ToRender(), trFCol(1));

    DoublingConverter conv;
    trSetColourConverter(&conv);
    EXPECT_EQ(trRgbLinear709(1).ToRender(), trFCol(2));
    EXPECT_EQ(conv.lastSpace, 100);
    EXPECT_EQ(trManRgb(200, 1, 1, 1).ToRender(), trFCol(2));
    EXPECT_EQ(conv.lastSpace, 200);
    conv.lastSpace = -1;
    EXPECT_EQ(trManRgb(0, 1, 1, 1).ToRender(), trFCol(1));
    EXPECT_EQ(trRgbData(1).ToRender(), trFCol(1));
    EXPECT_EQ(trManRgb(300, 1, 1, 1).ToRender(), trFCol(1));
    EXPECT_EQ(conv.lastSpace, -1);
    // Blends in render space: 709 end doubled, data end untouched.
    trFCol blend = trRgbLinear709(1).BlendedTo(trRgbData(0), 0.25f);
    EXPECT_EQ(blend, trFCol(1.5f));

    trSetColourConverter(previous);
}
