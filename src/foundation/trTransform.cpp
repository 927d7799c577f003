#include "foundation/trTransform.h"

#include <cmath>

#include "foundation/trBoundingBox.h"
#include "foundation/trRay.h"

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::Inverse() const
{
    // Elimination in double whatever T is: a float matrix loses less that way.
    double a[4][8];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            a[i][j] = m[i][j];
            a[i][j + 4] = i == j ? 1.0 : 0.0;
        }

    for (int col = 0; col < 4; ++col) {
        int pivotRow = col;
        for (int r = col + 1; r < 4; ++r)
            if (std::fabs(a[r][col]) > std::fabs(a[pivotRow][col]))
                pivotRow = r;
        if (pivotRow != col)
            for (int j = 0; j < 8; ++j) {
                double t = a[col][j];
                a[col][j] = a[pivotRow][j];
                a[pivotRow][j] = t;
            }
        double inv = trGuardedReciprocal(a[col][col]);
        for (int j = 0; j < 8; ++j)
            a[col][j] *= inv;
        for (int r = 0; r < 4; ++r) {
            if (r == col)
                continue;
            double f = a[r][col];
            if (f == 0.0)
                continue;
            for (int j = 0; j < 8; ++j)
                a[r][j] -= f * a[col][j];
        }
    }

    trMatrix4x4 result;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            result.m[i][j] = static_cast<T>(a[i][j + 4]);
    return result;
}

template <class T>
T trMatrix4x4<T>::Determinant() const
{
    // Laplace expansion by 2 by 2 minors of the top and bottom row pairs.
    double s0 = double(m[0][0]) * m[1][1] - double(m[1][0]) * m[0][1];
    double s1 = double(m[0][0]) * m[1][2] - double(m[1][0]) * m[0][2];
    double s2 = double(m[0][0]) * m[1][3] - double(m[1][0]) * m[0][3];
    double s3 = double(m[0][1]) * m[1][2] - double(m[1][1]) * m[0][2];
    double s4 = double(m[0][1]) * m[1][3] - double(m[1][1]) * m[0][3];
    double s5 = double(m[0][2]) * m[1][3] - double(m[1][2]) * m[0][3];
    double c5 = double(m[2][2]) * m[3][3] - double(m[3][2]) * m[2][3];
    double c4 = double(m[2][1]) * m[3][3] - double(m[3][1]) * m[2][3];
    double c3 = double(m[2][1]) * m[3][2] - double(m[3][1]) * m[2][2];
    double c2 = double(m[2][0]) * m[3][3] - double(m[3][0]) * m[2][3];
    double c1 = double(m[2][0]) * m[3][2] - double(m[3][0]) * m[2][2];
    double c0 = double(m[2][0]) * m[3][1] - double(m[3][0]) * m[2][1];
    return static_cast<T>(s0 * c5 - s1 * c4 + s2 * c3 + s3 * c2 - s4 * c1 + s5 * c0);
}

template <class T>
bool trMatrix4x4<T>::NearlyEquals(trMatrix4x4 const &o, T tolerance) const
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!(std::fabs(m[i][j] - o.m[i][j]) <= tolerance))
                return false;
    return true;
}

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::Translation(trVector const &t)
{
    trMatrix4x4 r;
    r.m[0][3] = static_cast<T>(t.x);
    r.m[1][3] = static_cast<T>(t.y);
    r.m[2][3] = static_cast<T>(t.z);
    return r;
}

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::Scaling(trVector const &s)
{
    trMatrix4x4 r;
    r.m[0][0] = static_cast<T>(s.x);
    r.m[1][1] = static_cast<T>(s.y);
    r.m[2][2] = static_cast<T>(s.z);
    return r;
}

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::RotationX(double angle)
{
    T c = static_cast<T>(std::cos(angle)), s = static_cast<T>(std::sin(angle));
    trMatrix4x4 r;
    r.m[1][1] = c;
    r.m[1][2] = -s;
    r.m[2][1] = s;
    r.m[2][2] = c;
    return r;
}

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::RotationY(double angle)
{
    T c = static_cast<T>(std::cos(angle)), s = static_cast<T>(std::sin(angle));
    trMatrix4x4 r;
    r.m[0][0] = c;
    r.m[0][2] = s;
    r.m[2][0] = -s;
    r.m[2][2] = c;
    return r;
}

template <class T>
trMatrix4x4<T> trMatrix4x4<T>::RotationZ(double angle)
{
    T c = static_cast<T>(std::cos(angle)), s = static_cast<T>(std::sin(angle));
    trMatrix4x4 r;
    r.m[0][0] = c;
    r.m[0][1] = -s;
    r.m[1][0] = s;
    r.m[1][1] = c;
    return r;
}

template <class T>
trRay trTransform<T>::Ray(trRay const &ray) const
{
    trVector from = Point(ray.origin);
    trVector to = Point(ray.origin + ray.delta);
    return trRay(from, to, ray.id);
}

template <class T>
trBoundingBox trTransform<T>::BoundingBox(trBoundingBox const &box) const
{
    trBoundingBox result;
    if (box.IsEmpty())
        return result;
    for (int i = 0; i < 8; ++i)
        result.Union(Point(box.Corner(i)));
    return result;
}

template class trMatrix4x4<double>;
template class trMatrix4x4<float>;
template class trTransform<double>;
template class trTransform<float>;
