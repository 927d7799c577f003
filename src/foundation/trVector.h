#pragma once

// Double and float vectors. Positions are double because scenes are planetary in
// scale; trFVector is the compact form kept in stored data. The arithmetic is
// header-inline: it runs in every ray and every micro-triangle.
//
// Axis conventions: y is up. The single-axis forms Banked, Headed and Pitched turn
// in the x-y, x-z and y-z planes; the Rotated... family turns the other way round
// about x and z, so that RotatedX/Y/Z are the usual right-hand-rule matrices.

#include <cmath>
#include <type_traits>

class trFVector;

// Divisors no larger than this are replaced by it, with their sign, so that a
// division never makes an infinity or a NaN out of a finite vector.
constexpr double trTinyDivisor = 1e-12;
constexpr double trHugeReciprocal = 1e12;
constexpr float trTinyDivisorF = 1e-6f;
constexpr float trHugeReciprocalF = 1e6f;

// 1 / c if |c| exceeds 1e-12, else 1e12 with the sign of c (zero takes plus).
inline double trGuardedReciprocal(double c)
{
    if (std::fabs(c) > trTinyDivisor)
        return 1.0 / c;
    return c < 0.0 ? -trHugeReciprocal : trHugeReciprocal;
}

inline float trGuardedReciprocal(float c)
{
    if (std::fabs(c) > trTinyDivisorF)
        return 1.0f / c;
    return c < 0.0f ? -trHugeReciprocalF : trHugeReciprocalF;
}

// c itself if |c| exceeds the guard, else the guard with the sign of c.
inline double trGuardedDivisor(double c)
{
    if (std::fabs(c) > trTinyDivisor)
        return c;
    return c < 0.0 ? -trTinyDivisor : trTinyDivisor;
}

inline float trGuardedDivisor(float c)
{
    if (std::fabs(c) > trTinyDivisorF)
        return c;
    return c < 0.0f ? -trTinyDivisorF : trTinyDivisorF;
}

class trVector
{
public:
    double x, y, z;

    constexpr trVector() : x(0.0), y(0.0), z(0.0) {}
    constexpr trVector(double ax, double ay, double az) : x(ax), y(ay), z(az) {}
    explicit trVector(double const *xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    // Widening from float is exact, so it is implicit.
    inline trVector(trFVector const &v);

    void Set(double ax, double ay, double az) { x = ax; y = ay; z = az; }
    void Set(double const *xyz) { x = xyz[0]; y = xyz[1]; z = xyz[2]; }

    // Component by index: 0 is x, 1 is y, anything else z.
    double &operator()(int i) { return i == 0 ? x : (i == 1 ? y : z); }
    double operator()(int i) const { return i == 0 ? x : (i == 1 ? y : z); }

    trVector operator+(trVector const &o) const { return trVector(x + o.x, y + o.y, z + o.z); }
    trVector operator-(trVector const &o) const { return trVector(x - o.x, y - o.y, z - o.z); }
    // Component by component; Dot and Cross are named.
    trVector operator*(trVector const &o) const { return trVector(x * o.x, y * o.y, z * o.z); }
    // Component by component, each divisor guarded.
    trVector operator/(trVector const &o) const
    {
        return trVector(x / trGuardedDivisor(o.x), y / trGuardedDivisor(o.y), z / trGuardedDivisor(o.z));
    }
    trVector operator+(double s) const { return trVector(x + s, y + s, z + s); }
    trVector operator-(double s) const { return trVector(x - s, y - s, z - s); }
    trVector operator*(double s) const { return trVector(x * s, y * s, z * s); }
    // The divisor is guarded like every other division by a scalar.
    trVector operator/(double s) const
    {
        double d = trGuardedDivisor(s);
        return trVector(x / d, y / d, z / d);
    }
    trVector operator-() const { return trVector(-x, -y, -z); }

    trVector &operator+=(trVector const &o) { x += o.x; y += o.y; z += o.z; return *this; }
    trVector &operator-=(trVector const &o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    trVector &operator*=(trVector const &o) { x *= o.x; y *= o.y; z *= o.z; return *this; }
    trVector &operator/=(trVector const &o) { return *this = *this / o; }
    trVector &operator+=(double s) { x += s; y += s; z += s; return *this; }
    trVector &operator-=(double s) { x -= s; y -= s; z -= s; return *this; }
    trVector &operator*=(double s) { x *= s; y *= s; z *= s; return *this; }
    trVector &operator/=(double s) { return *this = *this / s; }

    bool operator==(trVector const &o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(trVector const &o) const { return !(*this == o); }

    double Dot(trVector const &o) const { return x * o.x + y * o.y + z * o.z; }
    trVector Cross(trVector const &o) const
    {
        return trVector(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x);
    }
    double LengthSq() const { return x * x + y * y + z * z; }
    double Length() const { return std::sqrt(LengthSq()); }
    // The "2" forms ignore y: a horizontal measure.
    double LengthSq2() const { return x * x + z * z; }
    double Length2() const { return std::sqrt(LengthSq2()); }

    double MaxComp() const { return x > y ? (x > z ? x : z) : (y > z ? y : z); }
    double MinComp() const { return x < y ? (x < z ? x : z) : (y < z ? y : z); }
    double AbsMaxComp() const { return trVector(std::fabs(x), std::fabs(y), std::fabs(z)).MaxComp(); }
    double AbsMinComp() const { return trVector(std::fabs(x), std::fabs(y), std::fabs(z)).MinComp(); }

    // Times 1 / length, or times 1e12 when the length is 1e-12 or less: a zero
    // vector stays zero and a tiny one grows by at most that factor.
    trVector Normalized() const
    {
        double len = Length();
        return *this * (len > trTinyDivisor ? 1.0 / len : trHugeReciprocal);
    }
    // Length `scale`, with the same guard.
    trVector Normalized(double scale) const
    {
        double len = Length();
        return *this * (len > trTinyDivisor ? scale / len : scale / trTinyDivisor);
    }
    // Times the guarded reciprocal length raised to p: p = 1 normalises, p = 0
    // leaves the vector as it is.
    trVector NormalizedWeak(double p) const
    {
        double len = Length();
        return *this * std::pow(len > trTinyDivisor ? 1.0 / len : trHugeReciprocal, p);
    }

    // Per component 1 / c, guarded.
    trVector Inverse() const
    {
        return trVector(trGuardedReciprocal(x), trGuardedReciprocal(y), trGuardedReciprocal(z));
    }
    trVector ScaledBy(trVector const &s) const { return *this * s; }
    trVector ScaledBy(double s) const { return *this * s; }

    bool IsNan() const { return std::isnan(x) || std::isnan(y) || std::isnan(z); }

    // |this - o| at most |this| * 1e-12 per component. Relative to this object's
    // components, so not symmetric; a zero component demands exact equality.
    bool NearlyEquals(trVector const &o) const
    {
        return std::fabs(o.x - x) <= std::fabs(x) * 1e-12 && std::fabs(o.y - y) <= std::fabs(y) * 1e-12 &&
               std::fabs(o.z - z) <= std::fabs(z) * 1e-12;
    }
    // The same with 1e-6 held in single precision.
    bool NearlyEqualsF(trVector const &o) const
    {
        const double tol = 1e-6f;
        return std::fabs(o.x - x) <= std::fabs(x) * tol && std::fabs(o.y - y) <= std::fabs(y) * tol &&
               std::fabs(o.z - z) <= std::fabs(z) * tol;
    }

    // Single-axis turns, radians.
    // x-y plane: x' = x cos a + y sin a, y' = y cos a - x sin a.
    trVector Banked(double a) const
    {
        double c = std::cos(a), s = std::sin(a);
        return trVector(x * c + y * s, y * c - x * s, z);
    }
    // x-z plane: x' = x cos a + z sin a, z' = z cos a - x sin a.
    trVector Headed(double a) const
    {
        double c = std::cos(a), s = std::sin(a);
        return trVector(x * c + z * s, y, z * c - x * s);
    }
    // y-z plane: y' = y cos a + z sin a, z' = z cos a - y sin a.
    trVector Pitched(double a) const
    {
        double c = std::cos(a), s = std::sin(a);
        return trVector(x, y * c + z * s, z * c - y * s);
    }

    // Right-hand-rule turns about one axis: Pitched(-a), Headed(a), Banked(-a).
    trVector RotatedX(double a) const { return Pitched(-a); }
    trVector RotatedY(double a) const { return Headed(a); }
    trVector RotatedZ(double a) const { return Banked(-a); }

    // Euler turns by the angles r.x, r.y, r.z (radians), named by the order in
    // which the axes are applied: RotatedXYZ turns about x first, then y, then z.
    trVector RotatedXYZ(trVector const &r) const;
    trVector RotatedXZY(trVector const &r) const;
    trVector RotatedYXZ(trVector const &r) const;
    trVector RotatedYZX(trVector const &r) const;
    trVector RotatedZXY(trVector const &r) const;
    trVector RotatedZYX(trVector const &r) const;

    // The order of old projects, kept bit for bit: Banked r.z, Pitched r.x,
    // Headed r.y. The inverse undoes it step by step.
    trVector RotatedSV2Legacy(trVector const &r) const;
    trVector InverseRotatedSV2Legacy(trVector const &r) const;
    // Banked r.z, Headed r.y, Pitched -r.x; kept for old data.
    trVector InverseHoudiniRotatedXYZ_Deprecated(trVector const &r) const;
};

inline trVector operator*(double s, trVector const &v) { return v * s; }

class tr2Vector
{
public:
    double x, y;

    constexpr tr2Vector() : x(0.0), y(0.0) {}
    constexpr tr2Vector(double ax, double ay) : x(ax), y(ay) {}
    explicit tr2Vector(double const *xy) : x(xy[0]), y(xy[1]) {}

    void Set(double ax, double ay) { x = ax; y = ay; }
    void Set(double const *xy) { x = xy[0]; y = xy[1]; }

    // Component by index: 0 is x, anything else y.
    double &operator()(int i) { return i == 0 ? x : y; }
    double operator()(int i) const { return i == 0 ? x : y; }

    tr2Vector operator+(tr2Vector const &o) const { return tr2Vector(x + o.x, y + o.y); }
    tr2Vector operator-(tr2Vector const &o) const { return tr2Vector(x - o.x, y - o.y); }
    tr2Vector operator*(tr2Vector const &o) const { return tr2Vector(x * o.x, y * o.y); }
    tr2Vector operator/(tr2Vector const &o) const
    {
        return tr2Vector(x / trGuardedDivisor(o.x), y / trGuardedDivisor(o.y));
    }
    tr2Vector operator+(double s) const { return tr2Vector(x + s, y + s); }
    tr2Vector operator-(double s) const { return tr2Vector(x - s, y - s); }
    tr2Vector operator*(double s) const { return tr2Vector(x * s, y * s); }
    tr2Vector operator/(double s) const
    {
        double d = trGuardedDivisor(s);
        return tr2Vector(x / d, y / d);
    }
    tr2Vector operator-() const { return tr2Vector(-x, -y); }

    tr2Vector &operator+=(tr2Vector const &o) { x += o.x; y += o.y; return *this; }
    tr2Vector &operator-=(tr2Vector const &o) { x -= o.x; y -= o.y; return *this; }
    tr2Vector &operator*=(tr2Vector const &o) { x *= o.x; y *= o.y; return *this; }
    tr2Vector &operator/=(tr2Vector const &o) { return *this = *this / o; }
    tr2Vector &operator+=(double s) { x += s; y += s; return *this; }
    tr2Vector &operator-=(double s) { x -= s; y -= s; return *this; }
    tr2Vector &operator*=(double s) { x *= s; y *= s; return *this; }
    tr2Vector &operator/=(double s) { return *this = *this / s; }

    bool operator==(tr2Vector const &o) const { return x == o.x && y == o.y; }
    bool operator!=(tr2Vector const &o) const { return !(*this == o); }

    double Dot(tr2Vector const &o) const { return x * o.x + y * o.y; }
    double LengthSq() const { return x * x + y * y; }
    double Length() const { return std::sqrt(LengthSq()); }
    // A plane vector has no vertical part to leave out: the "2" forms equal the
    // full ones.
    double LengthSq2() const { return LengthSq(); }
    double Length2() const { return Length(); }

    double MaxComp() const { return x > y ? x : y; }
    double MinComp() const { return x < y ? x : y; }
    double AbsMaxComp() const { return std::fabs(x) > std::fabs(y) ? std::fabs(x) : std::fabs(y); }
    double AbsMinComp() const { return std::fabs(x) < std::fabs(y) ? std::fabs(x) : std::fabs(y); }

    tr2Vector Normalized() const
    {
        double len = Length();
        return *this * (len > trTinyDivisor ? 1.0 / len : trHugeReciprocal);
    }
    tr2Vector Normalized(double scale) const
    {
        double len = Length();
        return *this * (len > trTinyDivisor ? scale / len : scale / trTinyDivisor);
    }
    tr2Vector NormalizedWeak(double p) const
    {
        double len = Length();
        return *this * std::pow(len > trTinyDivisor ? 1.0 / len : trHugeReciprocal, p);
    }
    tr2Vector ScaledBy(tr2Vector const &s) const { return *this * s; }
    tr2Vector ScaledBy(double s) const { return *this * s; }

    // As trVector::NearlyEquals: relative to this object, zero demands exactness.
    bool NearlyEquals(tr2Vector const &o) const
    {
        return std::fabs(o.x - x) <= std::fabs(x) * 1e-12 && std::fabs(o.y - y) <= std::fabs(y) * 1e-12;
    }
};

inline tr2Vector operator*(double s, tr2Vector const &v) { return v * s; }

// The float vector repeats trVector line for line in single precision, with the
// guards 1e-6 and 1e6.
class trFVector
{
public:
    float x, y, z;

    constexpr trFVector() : x(0.0f), y(0.0f), z(0.0f) {}
    constexpr trFVector(float ax, float ay, float az) : x(ax), y(ay), z(az) {}
    explicit trFVector(float const *xyz) : x(xyz[0]), y(xyz[1]), z(xyz[2]) {}
    // Narrowing from double loses precision, so it must be asked for.
    explicit trFVector(trVector const &v)
        : x(static_cast<float>(v.x)), y(static_cast<float>(v.y)), z(static_cast<float>(v.z))
    {
    }

    void Set(float ax, float ay, float az) { x = ax; y = ay; z = az; }
    void Set(float const *xyz) { x = xyz[0]; y = xyz[1]; z = xyz[2]; }
    float *Floats() { return &x; }
    float const *Floats() const { return &x; }

    // Component by index: 0 is x, 1 is y, anything else z.
    float &operator()(int i) { return i == 0 ? x : (i == 1 ? y : z); }
    float operator()(int i) const { return i == 0 ? x : (i == 1 ? y : z); }

    trFVector operator+(trFVector const &o) const { return trFVector(x + o.x, y + o.y, z + o.z); }
    trFVector operator-(trFVector const &o) const { return trFVector(x - o.x, y - o.y, z - o.z); }
    trFVector operator*(trFVector const &o) const { return trFVector(x * o.x, y * o.y, z * o.z); }
    trFVector operator/(trFVector const &o) const
    {
        return trFVector(x / trGuardedDivisor(o.x), y / trGuardedDivisor(o.y), z / trGuardedDivisor(o.z));
    }
    trFVector operator+(float s) const { return trFVector(x + s, y + s, z + s); }
    trFVector operator-(float s) const { return trFVector(x - s, y - s, z - s); }
    trFVector operator*(float s) const { return trFVector(x * s, y * s, z * s); }
    trFVector operator/(float s) const
    {
        float d = trGuardedDivisor(s);
        return trFVector(x / d, y / d, z / d);
    }
    trFVector operator-() const { return trFVector(-x, -y, -z); }

    trFVector &operator+=(trFVector const &o) { x += o.x; y += o.y; z += o.z; return *this; }
    trFVector &operator-=(trFVector const &o) { x -= o.x; y -= o.y; z -= o.z; return *this; }
    trFVector &operator*=(trFVector const &o) { x *= o.x; y *= o.y; z *= o.z; return *this; }
    trFVector &operator/=(trFVector const &o) { return *this = *this / o; }
    trFVector &operator+=(float s) { x += s; y += s; z += s; return *this; }
    trFVector &operator-=(float s) { x -= s; y -= s; z -= s; return *this; }
    trFVector &operator*=(float s) { x *= s; y *= s; z *= s; return *this; }
    trFVector &operator/=(float s) { return *this = *this / s; }

    bool operator==(trFVector const &o) const { return x == o.x && y == o.y && z == o.z; }
    bool operator!=(trFVector const &o) const { return !(*this == o); }

    float Dot(trFVector const &o) const { return x * o.x + y * o.y + z * o.z; }
    trFVector Cross(trFVector const &o) const
    {
        return trFVector(y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x);
    }
    float LengthSq() const { return x * x + y * y + z * z; }
    float Length() const { return std::sqrt(LengthSq()); }
    float LengthSq2() const { return x * x + z * z; }
    float Length2() const { return std::sqrt(LengthSq2()); }

    float MaxComp() const { return x > y ? (x > z ? x : z) : (y > z ? y : z); }
    float MinComp() const { return x < y ? (x < z ? x : z) : (y < z ? y : z); }
    float AbsMaxComp() const { return trFVector(std::fabs(x), std::fabs(y), std::fabs(z)).MaxComp(); }
    float AbsMinComp() const { return trFVector(std::fabs(x), std::fabs(y), std::fabs(z)).MinComp(); }

    trFVector Normalized() const
    {
        float len = Length();
        return *this * (len > trTinyDivisorF ? 1.0f / len : trHugeReciprocalF);
    }
    trFVector Normalized(float scale) const
    {
        float len = Length();
        return *this * (len > trTinyDivisorF ? scale / len : scale / trTinyDivisorF);
    }
    trFVector NormalizedWeak(float p) const
    {
        float len = Length();
        return *this * std::pow(len > trTinyDivisorF ? 1.0f / len : trHugeReciprocalF, p);
    }
    trFVector Inverse() const
    {
        return trFVector(trGuardedReciprocal(x), trGuardedReciprocal(y), trGuardedReciprocal(z));
    }
    trFVector ScaledBy(trFVector const &s) const { return *this * s; }
    trFVector ScaledBy(float s) const { return *this * s; }

    bool IsNan() const { return std::isnan(x) || std::isnan(y) || std::isnan(z); }

    // Relative to this object's components with 1e-6; zero demands exactness.
    bool NearlyEquals(trFVector const &o) const
    {
        return std::fabs(o.x - x) <= std::fabs(x) * 1e-6f && std::fabs(o.y - y) <= std::fabs(y) * 1e-6f &&
               std::fabs(o.z - z) <= std::fabs(z) * 1e-6f;
    }

    trFVector Banked(float a) const
    {
        float c = std::cos(a), s = std::sin(a);
        return trFVector(x * c + y * s, y * c - x * s, z);
    }
    trFVector Headed(float a) const
    {
        float c = std::cos(a), s = std::sin(a);
        return trFVector(x * c + z * s, y, z * c - x * s);
    }
    trFVector Pitched(float a) const
    {
        float c = std::cos(a), s = std::sin(a);
        return trFVector(x, y * c + z * s, z * c - y * s);
    }

    // Banked r.z, Headed r.y, Pitched -r.x.
    trFVector InverseHoudiniRotatedXYZ(trFVector const &r) const
    {
        return Banked(r.z).Headed(r.y).Pitched(-r.x);
    }
};

// Any arithmetic scalar on the left, in float; a template so that a double or an
// int does not also match the double vector's form through the widening.
template <class S, class = std::enable_if_t<std::is_arithmetic_v<S>>>
inline trFVector operator*(S s, trFVector const &v)
{
    return v * static_cast<float>(s);
}

inline trVector::trVector(trFVector const &v) : x(v.x), y(v.y), z(v.z) {}
