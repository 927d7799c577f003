#include <gtest/gtest.h>

#include <cmath>

#include "foundation/trBoundingBox.h"
#include "foundation/trRay.h"
#include "foundation/trTransform.h"

namespace {

const double kHalfPi = std::acos(0.0);

using M = trMatrix4x4<double>;

M General()
{
    double v[16] = {2, 0.5, -1, 3, 0.25, 1.5, 0.75, -2, 1, -0.5, 3, 0.5, 0, 0, 0, 1};
    return M(v);
}

M Projective()
{
    double v[16] = {1, 2, 0, 1, 0, 1, 3, 0, 4, 0, 1, 2, 0.5, 0.25, 1, 3};
    return M(v);
}

void ExpectNear(trVector const &a, trVector const &b, double tol = 1e-12)
{
    EXPECT_NEAR(a.x, b.x, tol);
    EXPECT_NEAR(a.y, b.y, tol);
    EXPECT_NEAR(a.z, b.z, tol);
}

} // namespace

TEST(trMatrix4x4, IdentityProductOrderLayoutInverseAndDeterminant)
{
    EXPECT_TRUE(M().IsIdentity());
    // Scale first, then translate: the right factor applies first.
    M ts = M::Translation(trVector(10, 0, 0)) * M::Scaling(trVector(2, 3, 4));
    EXPECT_EQ(ts.MulPoint(trVector(1, 1, 1)), trVector(12, 3, 4));
    EXPECT_EQ(ts.MulDirection(trVector(1, 1, 1)), trVector(2, 3, 4));

    double gl[16];
    M::Translation(trVector(5, 6, 7)).GetOpenGL(gl);
    EXPECT_EQ(trVector(gl[12], gl[13], gl[14]), trVector(5, 6, 7));

    // The rotation blocks agree with the right-hand rule.
    ExpectNear(M::RotationZ(kHalfPi).MulPoint(trVector(1, 0, 0)), trVector(0, 1, 0));
    ExpectNear(M::RotationX(kHalfPi).MulPoint(trVector(0, 1, 0)), trVector(0, 0, 1));
    ExpectNear(M::RotationY(kHalfPi).MulPoint(trVector(0, 0, 1)), trVector(1, 0, 0));

    for (M const &a : {General(), Projective(), M::RotationY(0.7) * M::Translation(trVector(1e5, -3, 2))}) {
        EXPECT_TRUE((a.Inverse() * a).NearlyEquals(M(), 1e-9));
        EXPECT_TRUE((a * a.Inverse()).NearlyEquals(M(), 1e-9));
    }
    // A zero on the diagonal needs a row swap.
    double swapped[16] = {0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0};
    M s(swapped);
    EXPECT_TRUE((s.Inverse() * s).NearlyEquals(M(), 1e-15));

    trMatrix4x4<float> f = trMatrix4x4<float>::RotationZ(0.3) * trMatrix4x4<float>::Scaling(trVector(2, 3, 4));
    EXPECT_TRUE((f.Inverse() * f).NearlyEquals(trMatrix4x4<float>(), 1e-6f));

    // A singular matrix gives finite values, not infinities.
    M const zi = M::Scaling(trVector(1, 0, 1)).Inverse();
    for (int i = 0; i < 16; ++i)
        EXPECT_TRUE(std::isfinite(zi(i / 4, i % 4))) << i;

    EXPECT_DOUBLE_EQ(M::Scaling(trVector(2, 3, 4)).Determinant(), 24.0);
    EXPECT_NEAR(M::RotationX(0.4).Determinant(), 1.0, 1e-15);
    double const swapXY[16] = {0, 1, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    EXPECT_DOUBLE_EQ(M(swapXY).Determinant(), -1.0);
    // det(A B) = det A det B
    EXPECT_NEAR((General() * Projective()).Determinant(), General().Determinant() * Projective().Determinant(),
                1e-9);
}

TEST(trTransform, KeepsInverseComposesAndMovesRaysAndBoxes)
{
    trTransform<double> a(General()), b(M::RotationX(0.5) * M::Translation(trVector(0, 2, 0)));
    trVector p(0.3, -4, 7);
    ExpectNear(a.Inverse().Point(a.Point(p)), p, 1e-12);
    EXPECT_EQ(a.Inverse().Matrix(), a.InverseMatrix());
    trTransform<double> ab = a * b;
    ExpectNear(ab.Point(p), a.Point(b.Point(p)), 1e-12);
    ExpectNear(ab.Inverse().Point(ab.Point(p)), p, 1e-12);

    // Normals stay perpendicular to transformed tangents under uneven scaling.
    trTransform<double> s(M::Scaling(trVector(1, 5, 1)));
    EXPECT_NEAR(s.Direction(trVector(1, 1, 0)).Dot(s.Normal(trVector(1, -1, 0))), 0.0, 1e-12);

    trTransform<double> t(M::Translation(trVector(10, 0, 0)) * M::RotationY(kHalfPi));
    trRay ray(trVector(0, 0, 1), trVector(0, 0, 3), 42);
    ExpectNear(t.Ray(ray).origin, trVector(11, 0, 0));
    ExpectNear(t.Ray(ray).delta, trVector(2, 0, 0));

    // A quarter turn about y takes x extents to z extents and z to -x.
    trBoundingBox out =
        trTransform<double>(M::RotationY(kHalfPi)).BoundingBox(trBoundingBox(trVector(0, 0, 0), trVector(1, 2, 3)));
    ExpectNear(out.lo, trVector(0, 0, -1));
    ExpectNear(out.hi, trVector(3, 2, 0));
    EXPECT_TRUE(t.BoundingBox(trBoundingBox()).IsEmpty());
}
