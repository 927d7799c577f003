#include <gtest/gtest.h>

#include <cmath>

#include "foundation/trVector.h"

namespace {

const double kHalfPi = std::acos(0.0);

void ExpectNear(trVector const &a, trVector const &b, double tol = 1e-12)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

trVector Deg(double x, double y, double z)
{
    return trVector(x, y, z) * (kHalfPi / 90.0);
}

} // namespace

TEST(trVector, MeasuresAndNormalizedGuardsTinyAndZeroLengths)
{
    EXPECT_EQ(trVector(0, 0, 0).Normalized(), trVector(0, 0, 0));
    EXPECT_TRUE(trVector(3, 100, 4).Length2() == 5.0 && trVector(3, 100, 4).LengthSq2() == 25.0); // y left out
    EXPECT_EQ(trVector(1, 0, 0).Cross(trVector(0, 1, 0)), trVector(0, 0, 1));
    // Below the guard the factor is 1e12, not 1 / length.
    ExpectNear(trVector(trVector(1e-13, 0, 0).Normalized().x, trVector(1e-13, 0, 0).Normalized(2.0).x,
                        trVector(1, 2, 3).Normalized(5.0).Length()),
               trVector(0.1, 0.2, 5.0));
    ExpectNear(trVector(3, 0, 4).Normalized(), trVector(0.6, 0, 0.8));
    // p = 0 leaves the vector alone, p = 1 normalises, p = 0.5 halves the log length.
    EXPECT_EQ(trVector(4, 0, 0).NormalizedWeak(0.0), trVector(4, 0, 0));
    ExpectNear(trVector(0, 4, 0).NormalizedWeak(1.0), trVector(0, 1, 0));
    ExpectNear(trVector(0, 0, 4).NormalizedWeak(0.5), trVector(0, 0, 2));
}

TEST(trVector, GuardedInverseAndDivisionAndRelativeNearlyEquals)
{
    EXPECT_EQ(trVector(2, -4, 0).Inverse(), trVector(0.5, -0.25, 1e12));
    // At the guard itself (not exceeding it) the reciprocal is replaced.
    EXPECT_EQ(trVector(1e-12, -1e-13, -0.0).Inverse(), trVector(1e12, -1e12, 1e12));
    EXPECT_EQ(trFVector(4, -1e-7f, 0).Inverse(), trFVector(0.25f, -1e6f, 1e6f));

    EXPECT_EQ(trVector(1, -1, 0) / 0.0, trVector(1e12, -1e12, 0.0)); // finite

    // A zero component demands exact equality.
    EXPECT_TRUE(!trVector(0, 1, 1).NearlyEquals(trVector(1e-30, 1, 1)) &&
                trVector(0, 1, 1).NearlyEquals(trVector(0, 1, 1)));
    trVector a(1, 2, -4);
    EXPECT_TRUE(a.NearlyEquals(a * (1 + 5e-13)) && !a.NearlyEquals(a * (1 + 2e-12)));

    // NearlyEqualsF: 1e-6 as a float constant (slightly below 1e-6).
    double tolF = 1e-6f;
    EXPECT_FALSE(trVector(1, 1, 1).NearlyEqualsF(trVector(1 + 0.9999999990e-6, 1, 1)));
    EXPECT_TRUE(trVector(1, 1, 1).NearlyEqualsF(trVector(1 + 0.99e-6, 1, 1)));
    // Asymmetric: the tolerance scales with this object's component.
    trVector one(1, 1, 1), below(1 - tolF * (1 - 1e-9), 1, 1);
    EXPECT_TRUE(one.NearlyEqualsF(below));
    EXPECT_FALSE(below.NearlyEqualsF(one));
}

TEST(trVector, TurnsByHandAndLegacyOrdersRoundTrip)
{
    // Quarter turns checked against the formulas worked out by hand; the Rotated family
    // follows the right-hand rule.
    trVector const x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    std::pair<trVector, trVector> const rows[] = {
        {x.Banked(kHalfPi), -y},  {y.Banked(kHalfPi), x},  {x.Headed(kHalfPi), -z},  {z.Headed(kHalfPi), x},
        {y.Pitched(kHalfPi), -z}, {z.Pitched(kHalfPi), y}, {y.RotatedX(kHalfPi), z}, {z.RotatedY(kHalfPi), x},
        {x.RotatedZ(kHalfPi), y},
        // Euler orders: x first takes up to +z, then y takes +z to +x; y first leaves up alone.
        {y.RotatedXYZ(Deg(90, 90, 0)), x}, {y.RotatedYXZ(Deg(90, 90, 0)), z},
        {y.RotatedXZY(Deg(90, 0, 90)), z},  // x: +z; z leaves +z
        {y.RotatedZXY(Deg(90, 0, 90)), -x}, // z: -x; x leaves -x
        {z.RotatedYZX(Deg(0, 90, 90)), y},  // y: +x; z: +y
        {z.RotatedZYX(Deg(0, 90, 90)), x},  // z: +z; y: +x
        // Legacy: Banked 90 keeps +z, Pitched 90 takes +z to +y, Headed keeps +y.
        {z.RotatedSV2Legacy(Deg(90, 90, 90)), y}, {x.InverseHoudiniRotatedXYZ_Deprecated(Deg(90, 0, 90)), -z},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(i);
        ExpectNear(rows[i].first, rows[i].second);
    }
    // Float versions agree.
    trFVector f = trFVector(1, 0, 0).Banked(1.0f).Headed(0.5f).Pitched(-0.25f);
    trVector d = trVector(1, 0, 0).Banked(1.0).Headed(0.5).Pitched(-0.25);
    ExpectNear(trVector(f), d, 1e-6);

    trVector angles[] = {trVector(0.3, -1.2, 2.5), trVector(3.0, 0.1, -0.7), Deg(90, 90, 90)};
    trVector points[] = {trVector(1, 2, 3), trVector(-1e6, 5e5, 0.01), trVector(0, 0, 1)};
    for (trVector const &r : angles)
        for (trVector const &p : points) {
            trVector back = p.RotatedSV2Legacy(r).InverseRotatedSV2Legacy(r);
            ExpectNear(back, p, 1e-9 * (1 + p.Length()));
            EXPECT_NEAR(p.RotatedSV2Legacy(r).Length(), p.Length(), 1e-9 * p.Length());
        }

    trFVector rf(0.3f, -1.2f, 2.5f);
    trVector viaFloat = trFVector(1, 2, 3).InverseHoudiniRotatedXYZ(rf);
    trVector viaDouble = trVector(1, 2, 3).InverseHoudiniRotatedXYZ_Deprecated(trVector(rf));
    ExpectNear(viaFloat, viaDouble, 1e-5);
}
