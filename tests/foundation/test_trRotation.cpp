#include <gtest/gtest.h>

#include <cmath>

#include "foundation/trRotation.h"

namespace {

const double kHalfPi = std::acos(0.0);

void ExpectNear(trVector const &a, trVector const &b, double tol = 1e-12)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

trMatrix4x4<double> Axis(int axis, double angle)
{
    trVector a;
    a(axis) = angle;
    return trRotation(a).GetTransform().Matrix();
}

trVector QuatRotate(trQuaternion const &q, trVector const &v)
{
    trQuaternion r = q * trQuaternion(0, v.x, v.y, v.z) * q.Conjugate();
    return trVector(r.x, r.y, r.z);
}

const trVector kAngles[] = {trVector(0.3, -1.1, 2.2), trVector(-2.9, 0.4, 0.05), trVector(1.0, 2.0, 3.0)};

} // namespace

TEST(trRotation, OrdersAreProductsOfAxisTurnsAndMatchVectorForms)
{
    // Axes applied first to last for orders 0..5, and the vector form of each.
    const int axes[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
    trVector (trVector::*forms[6])(trVector const &) const = {
        &trVector::RotatedXYZ, &trVector::RotatedXZY, &trVector::RotatedYXZ,
        &trVector::RotatedYZX, &trVector::RotatedZXY, &trVector::RotatedZYX,
    };
    trVector p(0.7, -1.3, 2.0);
    for (trVector const &a : kAngles)
        for (int o = 0; o < 6; ++o) {
            trMatrix4x4<double> product =
                Axis(axes[o][2], a(axes[o][2])) * Axis(axes[o][1], a(axes[o][1])) * Axis(axes[o][0], a(axes[o][0]));
            trRotation r(a, o);
            EXPECT_TRUE(r.GetTransform().Matrix().NearlyEquals(product, 1e-14)) << trEulerOrderLabel[o];
            ExpectNear(r.GetTransform().Point(p), (p.*forms[o])(a), 1e-12);
            // The pitch, heading and bank names build the same products.
            EXPECT_TRUE(trRotation(a, o + 6).GetTransform().Matrix().NearlyEquals(product, 0.0));
            // The transform carries its inverse.
            ExpectNear(r.GetTransform().Inverse().Point(r.GetTransform().Point(p)), p, 1e-12);
        }
}

TEST(trRotation, QuaternionAndOrderConversionsKeepTheTurn)
{
    trVector p(0.2, 1.0, -0.6);
    for (trVector const &a : kAngles)
        for (int o = 0; o < 24; ++o) {
            trRotation r(a, o % 12, o / 12 ? trRotation::RightHanded : trRotation::LeftHanded);
            trVector expected = r.GetTransform().Point(p);
            trQuaternion q = r.GetQuaternion();
            EXPECT_NEAR(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z, 1.0, 1e-14);
            ExpectNear(QuatRotate(q, p), expected, 1e-12);
            trRotation x = r, z = r;
            x.ConvertOrderToXYZ();
            z.ConvertOrderToZXY();
            EXPECT_TRUE(x.order == trRotation::XYZ && z.order == trRotation::ZXY && x.handedness == r.handedness);
            ExpectNear(x.GetTransform().Point(p), expected, 1e-12);
            ExpectNear(z.GetTransform().Point(p), expected, 1e-12);
        }
    // Gimbal lock: the middle turn of the target order is a quarter turn.
    trRotation locked(trVector(0.4, kHalfPi, 0.3), trRotation::XYZ);
    trRotation converted = locked;
    converted.ConvertOrderToZXY();
    converted.ConvertOrderToXYZ();
    ExpectNear(converted.GetTransform().Point(p), locked.GetTransform().Point(p), 1e-9);

    // Already XYZ: angles untouched.
    trRotation same(kAngles[0], trRotation::XYZ), native(kAngles[1], trRotation::ZXY);
    same.ConvertOrderToXYZ();
    native.ConvertOrderToNative();
    EXPECT_TRUE(same.angles == kAngles[0] && native.order == trRotation::BPH && native.angles == kAngles[1]);
}

TEST(trRotation, HandednessComparisonsBadOrdersAndQuaternionAlgebra)
{
    trRotation left(trVector(0.1, 0.2, 0.3), trRotation::XYZ, trRotation::LeftHanded);
    trRotation copy = left, right = left;
    copy.ConvertToLeftHanded();
    EXPECT_EQ(copy, left);
    right.ConvertToRightHanded();
    EXPECT_TRUE(right.handedness == trRotation::RightHanded && right.angles == trVector(-0.1, -0.2, 0.3) &&
                right != left);
    // The same turn in the library's frame either way.
    EXPECT_TRUE(right.GetTransform().Matrix().NearlyEquals(left.GetTransform().Matrix(), 0.0));
    right.ConvertToLeftHanded();
    EXPECT_EQ(right, left);

    trRotation a(trVector(1, 2, 3)), b(trVector(1, 2, 3 + 1e-13)), c(trVector(1, 2, 3), trRotation::ZYX);
    EXPECT_TRUE(a.NearlyEquals(b) && !(a == b) && !a.NearlyEquals(c));

    // An unknown order is reported and taken as XYZ rather than read out of range.
    trRotation bad(trVector(0.5, 0.6, 0.7), 99);
    EXPECT_TRUE(bad.GetTransform().Matrix().NearlyEquals(trRotation(trVector(0.5, 0.6, 0.7)).GetTransform().Matrix(),
                                                         0.0));

    trQuaternion z, q;
    z.SetAxisAngle(trVector(0, 0, 0), 1.0);
    q.SetAxisAngle(trVector(0, 5, 0), kHalfPi); // the axis is normalised
    EXPECT_EQ(z.w, std::cos(0.5));
    EXPECT_NEAR(q.y, std::sqrt(0.5), 1e-15);
    ExpectNear(QuatRotate(q, trVector(0, 0, 1)), trVector(1, 0, 0));

    trQuaternion id = q * q.Conjugate();
    EXPECT_TRUE(std::fabs(id.w - 1.0) < 1e-15 && std::fabs(id.y) < 1e-15);
    // i j = k
    EXPECT_EQ(trQuaternion(0, 1, 0, 0) * trQuaternion(0, 0, 1, 0), trQuaternion(0, 0, 0, 1));
}
