#pragma once

// 4 by 4 matrices and transforms. Matrices act on column vectors: a point p goes
// to M p, translation sits in the last column, and A * B applies B first.
// Instantiated for double and float.

#include "foundation/trVector.h"

class trRay;
class trBoundingBox;

template <class T>
class trMatrix4x4
{
public:
    T m[4][4];  // row by row

    trMatrix4x4() { SetIdentity(); }
    // Sixteen values row by row.
    explicit trMatrix4x4(T const *rowMajor)
    {
        for (int i = 0; i < 16; ++i)
            m[i / 4][i % 4] = rowMajor[i];
    }

    void SetIdentity()
    {
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                m[r][c] = r == c ? T(1) : T(0);
    }
    bool IsIdentity() const { return *this == trMatrix4x4(); }

    // Element access with the row and column clamped into 0..3.
    T &operator()(int row, int col) { return m[Clamp(row)][Clamp(col)]; }
    T operator()(int row, int col) const { return m[Clamp(row)][Clamp(col)]; }

    // This times o: the result applies o first, then this.
    trMatrix4x4 Mul(trMatrix4x4 const &o) const
    {
        trMatrix4x4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.m[i][j] = m[i][0] * o.m[0][j] + m[i][1] * o.m[1][j] + m[i][2] * o.m[2][j] + m[i][3] * o.m[3][j];
        return r;
    }
    trMatrix4x4 operator*(trMatrix4x4 const &o) const { return Mul(o); }

    // A point through the full matrix: the result is divided by the fourth
    // coordinate when that is not 1 (guarded, for projective matrices).
    trVector MulPoint(trVector const &p) const
    {
        double x = m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3];
        double y = m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3];
        double z = m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3];
        double w = m[3][0] * p.x + m[3][1] * p.y + m[3][2] * p.z + m[3][3];
        if (w != 1.0) {
            double iw = trGuardedReciprocal(w);
            return trVector(x * iw, y * iw, z * iw);
        }
        return trVector(x, y, z);
    }
    // A direction: the upper 3 by 3 only.
    trVector MulDirection(trVector const &d) const
    {
        return trVector(m[0][0] * d.x + m[0][1] * d.y + m[0][2] * d.z, m[1][0] * d.x + m[1][1] * d.y + m[1][2] * d.z,
                        m[2][0] * d.x + m[2][1] * d.y + m[2][2] * d.z);
    }
    // A normal of a surface transformed by this matrix's inverse-transpose role:
    // call it on the inverse matrix. The transpose of the upper 3 by 3.
    trVector MulNormalByTranspose(trVector const &n) const
    {
        return trVector(m[0][0] * n.x + m[1][0] * n.y + m[2][0] * n.z, m[0][1] * n.x + m[1][1] * n.y + m[2][1] * n.z,
                        m[0][2] * n.x + m[1][2] * n.y + m[2][2] * n.z);
    }

    // The inverse by Gauss-Jordan elimination with partial pivoting. A pivot of
    // size 1e-12 or less is replaced by the guard with its sign, so a singular
    // matrix gives large but finite values instead of infinities.
    trMatrix4x4 Inverse() const;
    trMatrix4x4 Transpose() const
    {
        trMatrix4x4 r;
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                r.m[i][j] = m[j][i];
        return r;
    }
    T Determinant() const;

    // Column by column, as OpenGL takes a matrix.
    void GetOpenGL(T *out16) const
    {
        for (int c = 0; c < 4; ++c)
            for (int r = 0; r < 4; ++r)
                out16[c * 4 + r] = m[r][c];
    }

    bool operator==(trMatrix4x4 const &o) const
    {
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                if (m[i][j] != o.m[i][j])
                    return false;
        return true;
    }
    bool operator!=(trMatrix4x4 const &o) const { return !(*this == o); }
    // Every element within `tolerance` of the other's, absolutely.
    bool NearlyEquals(trMatrix4x4 const &o, T tolerance) const;

    // Building blocks.
    static trMatrix4x4 Translation(trVector const &t);
    static trMatrix4x4 Scaling(trVector const &s);
    // Right-hand-rule turns, radians; they agree with trVector::RotatedX/Y/Z.
    static trMatrix4x4 RotationX(double angle);
    static trMatrix4x4 RotationY(double angle);
    static trMatrix4x4 RotationZ(double angle);

private:
    static int Clamp(int i) { return i < 0 ? 0 : (i > 3 ? 3 : i); }
};

// A matrix kept together with its inverse.
template <class T>
class trTransform
{
public:
    trTransform() {}
    // The inverse is computed.
    explicit trTransform(trMatrix4x4<T> const &forward) : forward_(forward), inverse_(forward.Inverse()) {}
    // The caller vouches that `inverse` is the inverse of `forward`.
    trTransform(trMatrix4x4<T> const &forward, trMatrix4x4<T> const &inverse) : forward_(forward), inverse_(inverse) {}

    trMatrix4x4<T> const &Matrix() const { return forward_; }
    trMatrix4x4<T> const &InverseMatrix() const { return inverse_; }
    // The inverse transform: the two matrices swapped.
    trTransform Inverse() const { return trTransform(inverse_, forward_); }

    // This after o: o is applied first.
    trTransform operator*(trTransform const &o) const
    {
        return trTransform(forward_ * o.forward_, o.inverse_ * inverse_);
    }

    trVector Point(trVector const &p) const { return forward_.MulPoint(p); }
    trVector Direction(trVector const &d) const { return forward_.MulDirection(d); }
    // Normals go by the transpose of the inverse; not renormalised.
    trVector Normal(trVector const &n) const { return inverse_.MulNormalByTranspose(n); }

    // Transforms the origin and origin + delta, keeping the ray's id.
    trRay Ray(trRay const &ray) const;
    // The box around the eight transformed corners; an empty box stays empty.
    trBoundingBox BoundingBox(trBoundingBox const &box) const;

    void GetOpenGL(T *out16) const { forward_.GetOpenGL(out16); }

    bool operator==(trTransform const &o) const { return forward_ == o.forward_ && inverse_ == o.inverse_; }
    bool operator!=(trTransform const &o) const { return !(*this == o); }

private:
    trMatrix4x4<T> forward_;
    trMatrix4x4<T> inverse_;
};

extern template class trMatrix4x4<double>;
extern template class trMatrix4x4<float>;
extern template class trTransform<double>;
extern template class trTransform<float>;
