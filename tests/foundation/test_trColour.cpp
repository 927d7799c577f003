#include "foundation/trColour.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

void ExpectCol(trFCol const &c, double r, double g, double b, double tol = 1e-6)
{
    EXPECT_NEAR(c.r, r, tol);
    EXPECT_NEAR(c.g, g, tol);
    EXPECT_NEAR(c.b, b, tol);
}

float const kNan = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();

} // namespace

TEST(trFColTest, ArithmeticComparisonsAndBlends)
{
    static_assert(std::is_trivially_copyable_v<trFCol> && sizeof(trFCol) == 12 && sizeof(trF4Col) == 16);
    trFCol a(1, 2, 3), b(4, 8, 16);
    ExpectCol(b / a, 4, 4, 16.0 / 3.0);
    trFCol c = a;
    c += b;
    c *= 2.0f;
    c -= trFCol(1.0f);
    c /= trFCol(1, 1, 37);
    EXPECT_EQ(std::vector<trFCol>({a + b, b - a, a * b, a * 2.0f, c}),
              std::vector<trFCol>({{5, 10, 19}, {3, 6, 13}, {4, 16, 48}, {2, 4, 6}, {9, 19, 1}}));

    trFCol d(0.1f, 0.2f, 0.3f);
    EXPECT_TRUE(d == trFCol(0.1f, 0.2f, 0.3f) && d != trFCol(0.1f, 0.2f, std::nextafter(0.3f, 1.0f)));
    // Less only when all three channels are less.
    EXPECT_TRUE(d < trFCol(1, 1, 1));
    EXPECT_FALSE(d < trFCol(1, 1, 0.3f) || trFCol(1, 1, 1) < d || d < d);

    trFCol e(0, 1, 2), f(10, 11, 12);
    EXPECT_TRUE(e.BlendedTo(f, 0.0f) == e && e.BlendedTo(f, 1.0f) == f);
    ExpectCol(e.BlendedTo(f, 0.25f), 2.5, 3.5, 4.5);
    ExpectCol(e.BlendedTo(f, 0.75), 7.5, 8.5, 9.5);
    ExpectCol(e.BlendedTo(f, trFCol(0, 0.5f, 1)), 0, 6, 12);
    ExpectCol(trFCol(0.25f, 1, -1).Complement(), 0.75, 0, 2);
    ExpectCol(trFCol(4, 9, 0.25f).Pow(0.5f), 2, 3, 0.5);
    ExpectCol(trFCol(4, 9, 0.25f).Sqrt(), 2, 3, 0.5);
}

TEST(trFColTest, NearlyEqualsAndComponentFunctions)
{
    trFCol a(1000, 1, 0);
    EXPECT_TRUE(a.NearlyEquals(trFCol(1000.0005f, 1, 0)));
    EXPECT_FALSE(a.NearlyEquals(trFCol(1000.01f, 1, 0)));
    // A zero channel demands exact equality; relative to this object.
    EXPECT_FALSE(a.NearlyEquals(trFCol(1000, 1, 1e-30f)));
    EXPECT_TRUE(trFCol(1e-30f, 1, 1).NearlyEquals(trFCol(1e-30f, 1, 1)));

    // The median of every ordering of three distinct values.
    float v[3] = {1, 7, 4};
    int perms[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    for (auto &p : perms)
        EXPECT_EQ(trFCol(v[p[0]], v[p[1]], v[p[2]]).MedianComp(), 4.0f);
    // Ties of magnitude go to the earlier channel, keeping its sign.
    EXPECT_EQ(std::vector<float>({trFCol(2, -2, 1).LargestComp(), trFCol(1, -2, 2).LargestComp(),
                                  trFCol(0, 1, -3).LargestComp()}),
              std::vector<float>({2, -2, -3}));
}

TEST(trFColTest, LuminanceGammaSaturationClampsWideGamutAndF4Col)
{
    // The weights add to 1.0001, not 1.
    EXPECT_NEAR(trFCol(1, 1, 1).LuminanceLinear(), 1.0001, 1e-6);
    EXPECT_NEAR(trFCol(1, 0, 0).LuminanceMonitor(), 0.49459995, 1e-6);
    EXPECT_NEAR(trFCol(0.5f).LuminanceMonitor(), 0.50002274, 1e-6);

    ExpectCol(trFCol(0.25f, 1, 0).GammaCorrect(), 0.53252054, 1, 0);
    EXPECT_TRUE(std::isnan(trFCol(-0.25f, 0, 0).GammaCorrect().r));
    trFCol c(0.8f, 0.2f, 0.4f);
    float l = c.LuminanceLinear();
    ExpectCol(c.Saturated(0), l, l, l);
    ExpectCol(c.Saturated(1), 0.8, 0.2, 0.4);
    ExpectCol(c.Saturated(2), 1.6 - l, 0.4 - l, 0.8 - l, 1e-6);
    ExpectCol(trFCol(-1, 0.5f, 2).Clamped(), 0, 0.5, 1, 0);
    ExpectCol(trFCol(-1, 0.5f, 2).Clamped(0.6f, 1.5f), 0.6, 0.6, 1.5, 1e-7);
    EXPECT_TRUE(trFCol(0, 0, kNan).IsNan());

    // Both matrices keep white; round trips over a grid of colours, both directions.
    ExpectCol(trFCol(1).ToWideGamut(), 1, 1, 1);
    ExpectCol(trFCol(1).FromWideGamut(), 1, 1, 1);
    for (int i = 0; i <= 1330; ++i) {
        trFCol g(i % 11 * 0.1f, i / 11 % 11 * 0.1f, i / 121 * 0.1f);
        ExpectCol(g.ToWideGamut().FromWideGamut(), g.r, g.g, g.b, 1e-6);
        ExpectCol(g.FromWideGamut().ToWideGamut(), g.r, g.g, g.b, 1e-6);
    }

    trF4Col c4(1, -4, 2, 0.5f);
    EXPECT_EQ(c4 * 2.0f + trF4Col(1, 1, 1, 1), trF4Col(3, -7, 5, 2));
    EXPECT_EQ(trF4Col(1, 0, 0.5f, 0.25f).Complement(), trF4Col(0, 1, 0.5f, 0.75f));
    EXPECT_TRUE(trF4Col(4, 9, 16, 25).Pow(0.5f).NearlyEquals(trF4Col(2, 3, 4, 5)));
    EXPECT_FALSE(trF4Col(4, 9, 16, 25).NearlyEquals(trF4Col(4, 9, 16, 25.001f)));
}

TEST(trBColTest, RoundingClampingDitherOffsetsAndFourChannels)
{
    trFCol const d(10.9f / 255, 10.2f / 255, 10.5f / 255);
    struct Row {
        trBCol got, want;
    } const rows[] = {
        {trBCol(trFCol(1.2f, -0.1f, 0.5f)), {255, 0, 128}}, {trBCol(trFCol(1.0f, 0.998f, 0.999f)), {255, 254, 255}},
        // Just below and above the half-way points.
        {trBCol(trFCol(0.5f / 255 - 1e-4f, 0.5f / 255 + 1e-4f, 254.5f / 255 - 1e-4f)), {0, 1, 254}},
        {trBCol(trFCol(-1e20f, 1e20f, kNan)), {0, 255, 0}}, {trBCol(trFCol(-kInf, kInf, 0)), {0, 255, 0}},
        // Offsets replace the 0.5: a zero offset truncates, a large one pushes up.
        {trBCol(d, trFCol(0.0f)), {10, 10, 10}}, {trBCol(d, trFCol(0.99f)), {11, 11, 11}},
        {trBCol(d, trFCol(0.05f, 0.75f, 0.45f)), {10, 10, 10}}, {trBCol(d, trFCol(0.15f, 0.85f, 0.55f)), {11, 11, 11}},
        {trBCol(d), {11, 10, 11}}, {trBCol(trFCol(1.0f), trFCol(0.99f)), {255, 255, 255}},
        {trBCol(trFCol(0.0f), trFCol(-0.99f)), {0, 0, 0}},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i)
        EXPECT_EQ(rows[i].got, rows[i].want) << "row " << i;
    // Every byte survives a trip through float.
    for (int v = 0; v < 256; ++v) {
        unsigned char u = static_cast<unsigned char>(v);
        EXPECT_EQ(trBCol(trFCol(trBCol(u, u, u))), trBCol(u, u, u));
    }
    EXPECT_FLOAT_EQ(trBCol(255, 0, 51).ToFCol().r, 1.0000001f);
    EXPECT_FLOAT_EQ(trBCol(255, 0, 51).ToFCol().b, 0.2f);

    EXPECT_EQ(trB4Col(trF4Col(1.2f, -0.1f, 0.5f, 0.2f)), trB4Col(255, 0, 128, 51));
    EXPECT_EQ(trB4Col(trF4Col(0.5f, 0.5f, 0.5f, 0.5f), trF4Col(0, 0, 0, 0.6f)), trB4Col(127, 127, 127, 128));
    EXPECT_EQ(trB4Col(trF4Col(trB4Col(1, 2, 3, 255))), trB4Col(1, 2, 3, 255));
}

TEST(trManRgbTest, ConstructionAssignmentScalingAndTagRule)
{
    trManRgb black(200);
    EXPECT_TRUE(black.ColourSpace == 200 && black.ToDisplay() == trFCol());
    // Doubles are narrowed to float.
    EXPECT_EQ(trManRgb(100, 0.1, 0.2, 0.3).ToDisplay(), trFCol(0.1f, 0.2f, 0.3f));
    trRgbLinear709 c(1, 2, 3);
    c = 0.5;
    EXPECT_TRUE(c.ColourSpace == 100 && c.ToDisplay() == trFCol(0.5f));

    trManRgbForceData f(1, 2, 3);
    f = 0.25f;
    EXPECT_TRUE(f.ColourSpace == 1 && f.Force == 1);
    trManRgb scaled = f * 2;
    EXPECT_TRUE(scaled.ColourSpace == 1 && scaled.Force == 0 && scaled.ToDisplay() == trFCol(0.5f));
    trManRgb left = 0.5 * trRgbLinear709(4);
    EXPECT_TRUE(left.ColourSpace == 100 && left.ToDisplay() == trFCol(2));

    trManRgb data(1, 0.5f, 0.5f, 0.5f), plain(0, 0.5f, 0.5f, 0.5f), linear(100, 0.5f, 0.5f, 0.5f);
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
    // Only the managed spaces (100 and 200) go through the converter.
    std::pair<trManRgb, int> const rows[] = {{trRgbLinear709(1), 100},   {trManRgb(200, 1, 1, 1), 200},
                                             {trManRgb(0, 1, 1, 1), -1}, {trRgbData(1), -1},
                                             {trManRgb(300, 1, 1, 1), -1}};
    for (auto const &[colour, space] : rows) {
        conv.lastSpace = -1;
        EXPECT_EQ(colour.ToRender(), trFCol(space < 0 ? 1.0f : 2.0f)) << space;
        EXPECT_EQ(conv.lastSpace, space);
    }
    // Blends in render space: 709 end doubled, data end untouched.
    EXPECT_EQ(trRgbLinear709(1).BlendedTo(trRgbData(0), 0.25f), trFCol(1.5f));
    trSetColourConverter(previous);
}
