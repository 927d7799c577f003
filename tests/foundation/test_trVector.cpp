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

TEST(trVector, NormalizedGuardsTinyAndZeroLengths)
{
    EXPECT_EQ(trVector(0, 0, 0).Normalized(), trVector(0, 0, 0));
    // Below the guard the factor is 1e12, not 1 / length.
    EXPECT_DOUBLE_EQ(trVector(1e-13, 0, 0).Normalized().x, 0.1);
    ExpectNear(trVector(3, 0, 4).Normalized(), trVector(0.6, 0, 0.8));
    EXPECT_NEAR(trVector(1, 2, 3).Normalized(5.0).Length(), 5.0, 1e-12);
    EXPECT_DOUBLE_EQ(trVector(1e-13, 0, 0).Normalized(2.0).x, 0.2);
    // p = 0 leaves the vector alone, p = 1 normalises, p = 0.5 halves the log length.
    EXPECT_EQ(trVector(4, 0, 0).NormalizedWeak(0.0), trVector(4, 0, 0));
    ExpectNear(trVector(0, 4, 0).NormalizedWeak(1.0), trVector(0, 1, 0));
    ExpectNear(trVector(0, 0, 4).NormalizedWeak(0.5), trVector(0, 0, 2));
}

TEST(trVector, InverseAndDivisionAreGuarded)
{
    trVector inv = trVector(2, -4, 0).Inverse();
    EXPECT_EQ(inv, trVector(0.5, -0.25, 1e12));
    // At the guard itself (not exceeding it) the reciprocal is replaced.
    EXPECT_EQ(trVector(1e-12, -1e-13, -0.0).Inverse(), trVector(1e12, -1e12, 1e12));
    EXPECT_EQ(trFVector(4, -1e-7f, 0).Inverse(), trFVector(0.25f, -1e6f, 1e6f));

    trVector q = trVector(1, -1, 0) / 0.0;
    EXPECT_TRUE(std::isfinite(q.x) && std::isfinite(q.y));
    EXPECT_DOUBLE_EQ(q.x, 1e12);
    EXPECT_DOUBLE_EQ(q.y, -1e12);
    EXPECT_EQ(q.z, 0.0);
}

TEST(trVector, NearlyEqualsIsRelativeToThisObject)
{
    // A zero component demands exact equality.
    EXPECT_FALSE(trVector(0, 1, 1).NearlyEquals(trVector(1e-30, 1, 1)));
    EXPECT_TRUE(trVector(0, 1, 1).NearlyEquals(trVector(0, 1, 1)));
    trVector a(1, 2, -4);
    EXPECT_TRUE(a.NearlyEquals(a * (1 + 5e-13)));
    EXPECT_FALSE(a.NearlyEquals(a * (1 + 2e-12)));

    // NearlyEqualsF: 1e-6 as a float constant (slightly below 1e-6).
    double tolF = 1e-6f;
    EXPECT_FALSE(trVector(1, 1, 1).NearlyEqualsF(trVector(1 + 0.9999999990e-6, 1, 1)));
    EXPECT_TRUE(trVector(1, 1, 1).NearlyEqualsF(trVector(1 + 0.99e-6, 1, 1)));
    // Asymmetric: the tolerance scales with this object's component.
    trVector one(1, 1, 1), below(1 - tolF * (1 - 1e-9), 1, 1);
    EXPECT_TRUE(one.NearlyEqualsF(below));
    EXPECT_FALSE(below.NearlyEqualsF(one));
}

TEST(trVector, MeasuresAndComponents)
{
    trVector v(3, 100, 4);
    EXPECT_DOUBLE_EQ(v.Length2(), 5.0);  // y left out
    EXPECT_DOUBLE_EQ(v.LengthSq2(), 25.0);

    trVector w(-5, 2, 3);

    EXPECT_EQ(trVector(1, 0, 0).Cross(trVector(0, 1, 0)), trVector(0, 0, 1));
}

TEST(trVector, SingleAxisTurnsByHand)
{
    // Quarter turns checked against the formulas worked out by hand.
    ExpectNear(trVector(1, 0, 0).Banked(kHalfPi), trVector(0, -1, 0));
    ExpectNear(trVector(0, 1, 0).Banked(kHalfPi), trVector(1, 0, 0));
    ExpectNear(trVector(1, 0, 0).Headed(kHalfPi), trVector(0, 0, -1));
    ExpectNear(trVector(0, 0, 1).Headed(kHalfPi), trVector(1, 0, 0));
    ExpectNear(trVector(0, 1, 0).Pitched(kHalfPi), trVector(0, 0, -1));
    ExpectNear(trVector(0, 0, 1).Pitched(kHalfPi), trVector(0, 1, 0));
    // The Rotated family follows the right-hand rule.
    ExpectNear(trVector(0, 1, 0).RotatedX(kHalfPi), trVector(0, 0, 1));
    ExpectNear(trVector(0, 0, 1).RotatedY(kHalfPi), trVector(1, 0, 0));
    ExpectNear(trVector(1, 0, 0).RotatedZ(kHalfPi), trVector(0, 1, 0));
    // Float versions agree.
    trFVector f = trFVector(1, 0, 0).Banked(1.0f).Headed(0.5f).Pitched(-0.25f);
    trVector d = trVector(1, 0, 0).Banked(1.0).Headed(0.5).Pitched(-0.25);
    ExpectNear(trVector(f), d, 1e-6);
}

TEST(trVector, EulerOrdersByHand)
{
    trVector up(0, 1, 0);
    trVector r = Deg(90, 90, 0);
    // x first takes up to +z, then y takes +z to +x.
    ExpectNear(up.RotatedXYZ(r), trVector(1, 0, 0));
    // y first leaves up alone, then x takes it to +z.
    ExpectNear(up.RotatedYXZ(r), trVector(0, 0, 1));
    trVector s = Deg(90, 0, 90);
    ExpectNear(up.RotatedXZY(s), trVector(0, 0, 1));   // x: +z; z leaves +z
    ExpectNear(up.RotatedZXY(s), trVector(-1, 0, 0));  // z: -x; x leaves -x
    trVector t = Deg(0, 90, 90);
    ExpectNear(trVector(0, 0, 1).RotatedYZX(t), trVector(0, 1, 0));  // y: +x; z: +y
    ExpectNear(trVector(0, 0, 1).RotatedZYX(t), trVector(1, 0, 0));  // z: +z; y: +x
}

TEST(trVector, LegacyOrdersRoundTripAndByHand)
{
    // Banked 90 keeps +z, Pitched 90 takes +z to +y, Headed keeps +y.
    ExpectNear(trVector(0, 0, 1).RotatedSV2Legacy(Deg(90, 90, 90)), trVector(0, 1, 0));
    ExpectNear(trVector(1, 0, 0).InverseHoudiniRotatedXYZ_Deprecated(Deg(90, 0, 90)), trVector(0, 0, -1));

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
