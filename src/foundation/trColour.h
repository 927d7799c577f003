#pragma once

// Colour value types. Everything here is header-inline because shaders use it
// in their innermost loops.

#include <cmath>
#include <vector>

#include "foundation/trVector.h"

class trBCol;
class trB4Col;

namespace trColourDetail {
inline float Min(float a, float b) { return b < a ? b : a; }
inline float Max(float a, float b) { return a < b ? b : a; }
inline float Clamp(float v, float lo, float hi) { return v < lo ? lo : (hi < v ? hi : v); }

// |a - b| <= |a| * tol, relative to the first value, as the vector classes do.
inline bool Near(float a, float b, float tol) { return std::fabs(a - b) <= std::fabs(a) * tol; }

// c * 255 + offset, truncated and clamped to 0..255. Clamping in float first is
// the same as truncate-then-clamp for every finite input, and keeps huge values
// and NaN (which becomes 0) out of an undefined integer conversion.
inline unsigned char ToByte(float c, float offset)
{
    float v = c * 255.0f + offset;
    if (!(v >= 0.0f))
        return 0;
    if (v >= 255.0f)
        return 255;
    return static_cast<unsigned char>(v);
}

constexpr float kByteToFloat = 0.003921569f;
constexpr float kOneOverGamma = 0.45454544f;
constexpr float kLumR = 0.2125f, kLumG = 0.7152f, kLumB = 0.0724f;
} // namespace trColourDetail

// Linear float colour, unbounded. Exactly 12 bytes: image rows and caches are
// addressed with that stride.
class trFCol
{
public:
    float r, g, b;

    trFCol() : r(0.0f), g(0.0f), b(0.0f) {}
    trFCol(float red, float green, float blue) : r(red), g(green), b(blue) {}
    explicit trFCol(float grey) : r(grey), g(grey), b(grey) {}
    // Bytes to float by 1/255.
    inline explicit trFCol(trBCol const &c);

    float Red() const { return r; }
    float Green() const { return g; }
    float Blue() const { return b; }
    // Component by index: 0 red, 1 green, anything else blue.
    float Get(int i) const { return i == 0 ? r : (i == 1 ? g : b); }
    void Get(float &red, float &green, float &blue) const { red = r; green = g; blue = b; }
    void Set(float red, float green, float blue) { r = red; g = green; b = blue; }
    void Set(float grey) { r = g = b = grey; }
    float *Floats() { return &r; }
    float const *Floats() const { return &r; }

    trFCol operator+(trFCol const &o) const { return trFCol(r + o.r, g + o.g, b + o.b); }
    trFCol operator-(trFCol const &o) const { return trFCol(r - o.r, g - o.g, b - o.b); }
    trFCol operator*(trFCol const &o) const { return trFCol(r * o.r, g * o.g, b * o.b); }
    trFCol operator/(trFCol const &o) const { return trFCol(r / o.r, g / o.g, b / o.b); }
    trFCol operator+(float s) const { return trFCol(r + s, g + s, b + s); }
    trFCol operator-(float s) const { return trFCol(r - s, g - s, b - s); }
    trFCol operator*(float s) const { return trFCol(r * s, g * s, b * s); }
    trFCol operator/(float s) const { return trFCol(r / s, g / s, b / s); }
    trFCol operator-() const { return trFCol(-r, -g, -b); }

    trFCol &operator+=(trFCol const &o) { r += o.r; g += o.g; b += o.b; return *this; }
    trFCol &operator-=(trFCol const &o) { r -= o.r; g -= o.g; b -= o.b; return *this; }
    trFCol &operator*=(trFCol const &o) { r *= o.r; g *= o.g; b *= o.b; return *this; }
    trFCol &operator/=(trFCol const &o) { r /= o.r; g /= o.g; b /= o.b; return *this; }
    trFCol &operator+=(float s) { r += s; g += s; b += s; return *this; }
    trFCol &operator-=(float s) { r -= s; g -= s; b -= s; return *this; }
    trFCol &operator*=(float s) { r *= s; g *= s; b *= s; return *this; }
    trFCol &operator/=(float s) { r /= s; g /= s; b /= s; return *this; }

    bool operator==(trFCol const &o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(trFCol const &o) const { return !(*this == o); }
    // True when every channel is less: a partial order, not a sort key.
    bool operator<(trFCol const &o) const { return r < o.r && g < o.g && b < o.b; }

    // (other - this) t + this, with per-channel weights or one weight.
    trFCol BlendedTo(trFCol const &o, trFCol const &t) const
    {
        return trFCol((o.r - r) * t.r + r, (o.g - g) * t.g + g, (o.b - b) * t.b + b);
    }
    trFCol BlendedTo(trFCol const &o, float t) const
    {
        return trFCol((o.r - r) * t + r, (o.g - g) * t + g, (o.b - b) * t + b);
    }
    trFCol BlendedTo(trFCol const &o, double t) const
    {
        return trFCol(static_cast<float>((double(o.r) - r) * t + r),
                      static_cast<float>((double(o.g) - g) * t + g),
                      static_cast<float>((double(o.b) - b) * t + b));
    }
    trFCol Complement() const { return trFCol(1.0f - r, 1.0f - g, 1.0f - b); }
    trFCol Pow(float e) const { return trFCol(std::pow(r, e), std::pow(g, e), std::pow(b, e)); }
    bool NearlyEquals(trFCol const &o) const
    {
        using trColourDetail::Near;
        return Near(r, o.r, 1e-6f) && Near(g, o.g, 1e-6f) && Near(b, o.b, 1e-6f);
    }

    float AbsMaxComp() const
    {
        return trColourDetail::Max(std::fabs(r), trColourDetail::Max(std::fabs(g), std::fabs(b)));
    }
    float AvgComp() const { return (r + g + b) * 0.33333334f; }
    float MeanComp() const { return (r + g + b) / 3.0f; }
    float MedianComp() const
    {
        using trColourDetail::Max;
        using trColourDetail::Min;
        return Max(Min(r, g), Min(Max(r, g), b));
    }
    float MaxComp() const { return trColourDetail::Max(r, trColourDetail::Max(g, b)); }
    float MinComp() const { return trColourDetail::Min(r, trColourDetail::Min(g, b)); }
    float MaxCompWeighted(float wr, float wg, float wb) const
    {
        return trColourDetail::Max(r * wr, trColourDetail::Max(g * wg, b * wb));
    }
    // The signed component of largest magnitude; ties go to the earlier channel.
    float LargestComp() const
    {
        float best = r;
        if (std::fabs(g) > std::fabs(best))
            best = g;
        if (std::fabs(b) > std::fabs(best))
            best = b;
        return best;
    }
    // The system's own luminance weights, used everywhere on the shading side.
    float LuminanceLinear() const
    {
        return trColourDetail::kLumR * r + trColourDetail::kLumG * g + trColourDetail::kLumB * b;
    }
    // Luminance of the colour as a 2.2 monitor would show it. Negative channels give NaN.
    float LuminanceMonitor() const
    {
        return std::pow(trFCol(std::pow(r, 2.2f), std::pow(g, 2.2f), std::pow(b, 2.2f)).LuminanceLinear(),
                        trColourDetail::kOneOverGamma);
    }
    trFCol Clamped() const { return Clamped(0.0f, 1.0f); }
    trFCol Clamped(float lo, float hi) const
    {
        using trColourDetail::Clamp;
        return trFCol(Clamp(r, lo, hi), Clamp(g, lo, hi), Clamp(b, lo, hi));
    }
    trFCol ClampedHigh(float hi = 1.0f) const
    {
        using trColourDetail::Min;
        return trFCol(Min(r, hi), Min(g, hi), Min(b, hi));
    }
    trFCol ClampedLow(float lo = 0.0f) const
    {
        using trColourDetail::Max;
        return trFCol(Max(r, lo), Max(g, lo), Max(b, lo));
    }
    // Each channel to the power 1/2.2. Negative channels give NaN.
    trFCol GammaCorrect() const { return Pow(trColourDetail::kOneOverGamma); }
    bool IsNan() const { return std::isnan(r) || std::isnan(g) || std::isnan(b); }
    // s = 0 gives the grey of equal luminance, 1 the colour itself.
    trFCol Saturated(float s) const
    {
        float l = LuminanceLinear();
        return trFCol((r - l) * s + l, (g - l) * s + l, (b - l) * s + l);
    }
    trFCol Sqrt() const { return trFCol(std::sqrt(r), std::sqrt(g), std::sqrt(b)); }

    // Mix into the wider working gamut and back; double precision so that a
    // round trip is exact to float rounding.
    trFCol ToWideGamut() const
    {
        double R = r, G = g, B = b;
        return trFCol(static_cast<float>(0.8 * R + 0.17 * G + 0.03 * B),
                      static_cast<float>(0.28 * R + 0.56 * G + 0.16 * B),
                      static_cast<float>(0.02 * R + 0.12 * G + 0.86 * B));
    }
    trFCol FromWideGamut() const
    {
        double R = r, G = g, B = b;
        return trFCol(
            static_cast<float>(1.4003634161114475 * R - 0.43185947910357364 * G + 0.031496062992125984 * B),
            static_cast<float>(-0.7195639006662629 * R + 2.081768625075712 * G - 0.36220472440944884 * B),
            static_cast<float>(0.06783767413688674 * R - 0.28043609933373714 * G + 1.2125984251968505 * B));
    }
};

static_assert(sizeof(trFCol) == 12, "trFCol arrays are addressed with a 12-byte stride");

inline trFCol operator+(float s, trFCol const &c) { return trFCol(s + c.r, s + c.g, s + c.b); }
inline trFCol operator-(float s, trFCol const &c) { return trFCol(s - c.r, s - c.g, s - c.b); }
inline trFCol operator*(float s, trFCol const &c) { return trFCol(s * c.r, s * c.g, s * c.b); }
inline trFCol operator/(float s, trFCol const &c) { return trFCol(s / c.r, s / c.g, s / c.b); }

// Linear float colour with alpha. Arithmetic and comparisons cover all four
// channels; the ...Rgb forms look at the colour alone.
class trF4Col
{
public:
    float r, g, b, a;

    trF4Col() : r(0.0f), g(0.0f), b(0.0f), a(0.0f) {}
    trF4Col(float red, float green, float blue, float alpha) : r(red), g(green), b(blue), a(alpha) {}
    explicit trF4Col(trFCol const &c, float alpha = 1.0f) : r(c.r), g(c.g), b(c.b), a(alpha) {}
    inline explicit trF4Col(trB4Col const &c);

    float Red() const { return r; }
    float Green() const { return g; }
    float Blue() const { return b; }
    float Alpha() const { return a; }
    // Component by index: 0 red, 1 green, 2 blue, anything else alpha.
    float Get(int i) const { return i == 0 ? r : (i == 1 ? g : (i == 2 ? b : a)); }
    void Get(float &red, float &green, float &blue, float &alpha) const
    {
        red = r; green = g; blue = b; alpha = a;
    }
    void Set(float red, float green, float blue, float alpha) { r = red; g = green; b = blue; a = alpha; }
    float *Floats() { return &r; }
    float const *Floats() const { return &r; }
    trFCol Rgb() const { return trFCol(r, g, b); }

    trF4Col operator+(trF4Col const &o) const { return trF4Col(r + o.r, g + o.g, b + o.b, a + o.a); }
    trF4Col operator-(trF4Col const &o) const { return trF4Col(r - o.r, g - o.g, b - o.b, a - o.a); }
    trF4Col operator*(trF4Col const &o) const { return trF4Col(r * o.r, g * o.g, b * o.b, a * o.a); }
    trF4Col operator/(trF4Col const &o) const { return trF4Col(r / o.r, g / o.g, b / o.b, a / o.a); }
    trF4Col operator+(float s) const { return trF4Col(r + s, g + s, b + s, a + s); }
    trF4Col operator-(float s) const { return trF4Col(r - s, g - s, b - s, a - s); }
    trF4Col operator*(float s) const { return trF4Col(r * s, g * s, b * s, a * s); }
    trF4Col operator/(float s) const { return trF4Col(r / s, g / s, b / s, a / s); }
    trF4Col operator-() const { return trF4Col(-r, -g, -b, -a); }

    trF4Col &operator+=(trF4Col const &o) { r += o.r; g += o.g; b += o.b; a += o.a; return *this; }
    trF4Col &operator-=(trF4Col const &o) { r -= o.r; g -= o.g; b -= o.b; a -= o.a; return *this; }
    trF4Col &operator*=(trF4Col const &o) { r *= o.r; g *= o.g; b *= o.b; a *= o.a; return *this; }
    trF4Col &operator/=(trF4Col const &o) { r /= o.r; g /= o.g; b /= o.b; a /= o.a; return *this; }
    trF4Col &operator+=(float s) { r += s; g += s; b += s; a += s; return *this; }
    trF4Col &operator-=(float s) { r -= s; g -= s; b -= s; a -= s; return *this; }
    trF4Col &operator*=(float s) { r *= s; g *= s; b *= s; a *= s; return *this; }
    trF4Col &operator/=(float s) { r /= s; g /= s; b /= s; a /= s; return *this; }

    bool operator==(trF4Col const &o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(trF4Col const &o) const { return !(*this == o); }
    // True when every channel is less: a partial order, not a sort key.
    bool operator<(trF4Col const &o) const { return r < o.r && g < o.g && b < o.b && a < o.a; }

    trF4Col BlendedTo(trF4Col const &o, trF4Col const &t) const
    {
        return trF4Col((o.r - r) * t.r + r, (o.g - g) * t.g + g, (o.b - b) * t.b + b, (o.a - a) * t.a + a);
    }
    trF4Col BlendedTo(trF4Col const &o, float t) const
    {
        return trF4Col((o.r - r) * t + r, (o.g - g) * t + g, (o.b - b) * t + b, (o.a - a) * t + a);
    }
    trF4Col BlendedTo(trF4Col const &o, double t) const
    {
        return trF4Col(static_cast<float>((double(o.r) - r) * t + r), static_cast<float>((double(o.g) - g) * t + g),
                       static_cast<float>((double(o.b) - b) * t + b), static_cast<float>((double(o.a) - a) * t + a));
    }
    trF4Col Complement() const { return trF4Col(1.0f - r, 1.0f - g, 1.0f - b, 1.0f - a); }
    trF4Col Pow(float e) const
    {
        return trF4Col(std::pow(r, e), std::pow(g, e), std::pow(b, e), std::pow(a, e));
    }
    bool NearlyEquals(trF4Col const &o) const
    {
        using trColourDetail::Near;
        return Near(r, o.r, 1e-6f) && Near(g, o.g, 1e-6f) && Near(b, o.b, 1e-6f) && Near(a, o.a, 1e-6f);
    }

    float MaxCompRgb() const { return Rgb().MaxComp(); }
    float MinCompRgb() const { return Rgb().MinComp(); }
    float AbsMaxCompRgb() const { return Rgb().AbsMaxComp(); }
    float AvgCompRgb() const { return Rgb().AvgComp(); }
    float MeanCompRgb() const { return Rgb().MeanComp(); }
    float LargestCompRgb() const { return Rgb().LargestComp(); }
};

static_assert(sizeof(trF4Col) == 16, "trF4Col is four packed floats");

inline trF4Col operator*(float s, trF4Col const &c) { return trF4Col(s * c.r, s * c.g, s * c.b, s * c.a); }

// Display colour, one byte a channel.
class trBCol
{
public:
    unsigned char r, g, b;

    trBCol() : r(0), g(0), b(0) {}
    trBCol(unsigned char red, unsigned char green, unsigned char blue) : r(red), g(green), b(blue) {}
    // c * 255 + 0.5, truncated and clamped to 0..255.
    explicit trBCol(trFCol const &c)
        : r(trColourDetail::ToByte(c.r, 0.5f)), g(trColourDetail::ToByte(c.g, 0.5f)),
          b(trColourDetail::ToByte(c.b, 0.5f))
    {
    }
    // As above with per-channel dither offsets in place of the 0.5.
    trBCol(trFCol const &c, trFCol const &dither)
        : r(trColourDetail::ToByte(c.r, dither.r)), g(trColourDetail::ToByte(c.g, dither.g)),
          b(trColourDetail::ToByte(c.b, dither.b))
    {
    }

    trFCol ToFCol() const
    {
        using trColourDetail::kByteToFloat;
        return trFCol(r * kByteToFloat, g * kByteToFloat, b * kByteToFloat);
    }
    bool operator==(trBCol const &o) const { return r == o.r && g == o.g && b == o.b; }
    bool operator!=(trBCol const &o) const { return !(*this == o); }
};

// Display colour with alpha, one byte a channel.
class trB4Col
{
public:
    unsigned char r, g, b, a;

    trB4Col() : r(0), g(0), b(0), a(0) {}
    trB4Col(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha)
        : r(red), g(green), b(blue), a(alpha)
    {
    }
    explicit trB4Col(trF4Col const &c)
        : r(trColourDetail::ToByte(c.r, 0.5f)), g(trColourDetail::ToByte(c.g, 0.5f)),
          b(trColourDetail::ToByte(c.b, 0.5f)), a(trColourDetail::ToByte(c.a, 0.5f))
    {
    }
    trB4Col(trF4Col const &c, trF4Col const &dither)
        : r(trColourDetail::ToByte(c.r, dither.r)), g(trColourDetail::ToByte(c.g, dither.g)),
          b(trColourDetail::ToByte(c.b, dither.b)), a(trColourDetail::ToByte(c.a, dither.a))
    {
    }

    trF4Col ToF4Col() const
    {
        using trColourDetail::kByteToFloat;
        return trF4Col(r * kByteToFloat, g * kByteToFloat, b * kByteToFloat, a * kByteToFloat);
    }
    trBCol Rgb() const { return trBCol(r, g, b); }
    bool operator==(trB4Col const &o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(trB4Col const &o) const { return !(*this == o); }
};

inline trFCol::trFCol(trBCol const &c) : trFCol(c.ToFCol()) {}
inline trF4Col::trF4Col(trB4Col const &c) : trF4Col(c.ToF4Col()) {}

// Two colours summed and scaled as one unit.
class trFColPair
{
public:
    trFCol first, second;

    trFColPair() = default;
    trFColPair(trFCol const &a, trFCol const &b) : first(a), second(b) {}

    trFColPair &operator+=(trFColPair const &o) { first += o.first; second += o.second; return *this; }
    trFColPair &operator*=(float s) { first *= s; second *= s; return *this; }
    trFColPair &operator*=(trFCol const &c) { first *= c; second *= c; return *this; }
    bool operator==(trFColPair const &o) const { return first == o.first && second == o.second; }
    bool operator!=(trFColPair const &o) const { return !(*this == o); }
};

// A colour with a direction or position, as stored in the lighting octrees.
class trFColVectorPair
{
public:
    trFCol col;
    trVector vec;

    trFColVectorPair() = default;
    trFColVectorPair(trFCol const &c, trVector const &v) : col(c), vec(v) {}

    trFColVectorPair &operator+=(trFColVectorPair const &o)
    {
        col += o.col;
        vec.x += o.vec.x; vec.y += o.vec.y; vec.z += o.vec.z;
        return *this;
    }
    trFColVectorPair &operator*=(double s)
    {
        col *= static_cast<float>(s);
        vec.x *= s; vec.y *= s; vec.z *= s;
        return *this;
    }
    bool operator==(trFColVectorPair const &o) const
    {
        return col == o.col && vec.x == o.vec.x && vec.y == o.vec.y && vec.z == o.vec.z;
    }
    bool operator!=(trFColVectorPair const &o) const { return !(*this == o); }
};

// A non-owning view of an array of colours.
class trFColVec
{
public:
    trFCol *cols;
    long count;

    trFColVec() : cols(nullptr), count(0) {}
    explicit trFColVec(std::vector<trFCol> &v) : cols(v.data()), count(static_cast<long>(v.size())) {}
    trFColVec(trFCol *p, long n) : cols(p), count(n < 0 ? 0 : n) {}
    // The colours first .. last - 1 of p; an inverted range views nothing.
    trFColVec(trFCol *p, long first, long last) : cols(p + first), count(last > first ? last - first : 0) {}

    long Count() const { return count; }
    trFCol &operator()(long i) { return cols[i]; }
    trFCol const &operator()(long i) const { return cols[i]; }
};

// A pointer as a parameter value. Never owns what it points at.
class trPtr
{
public:
    trPtr() : p(nullptr) {}
    trPtr(void *ptr) : p(ptr) {}

    void *Raw() const { return p; }
    trPtr &operator=(void *ptr) { p = ptr; return *this; }
    bool operator==(trPtr const &o) const { return p == o.p; }
    bool operator!=(trPtr const &o) const { return p != o.p; }

private:
    void *p;
};

// Turns a managed colour into the render space. Colour management installs one;
// the library never owns it.
class trColourConverter
{
public:
    virtual ~trColourConverter();
    virtual trFCol Convert(trFCol const &c, int colourSpace) const = 0;
};

// Install (or with null remove) the converter that trManRgb::ToRender uses.
// The caller keeps ownership and keeps it alive until it is removed.
void trSetColourConverter(trColourConverter const *converter);
trColourConverter const *trGetColourConverter();

// A parameter's colour: three floats, a colour-space tag and a force byte.
// Tags: 0 unspecified, 1 data (never managed), 100 scene-linear Rec. 709,
// 200 a further managed space.
class trManRgb
{
public:
    enum { kUnspecified = 0, kData = 1, kLinear709 = 100, kManaged200 = 200 };

    float r, g, b;
    int ColourSpace;
    unsigned char Force;

    trManRgb() : r(0.0f), g(0.0f), b(0.0f), ColourSpace(kUnspecified), Force(0) {}
    explicit trManRgb(int tag) : r(0.0f), g(0.0f), b(0.0f), ColourSpace(tag), Force(0) {}
    trManRgb(int tag, trFCol const &c) : r(c.r), g(c.g), b(c.b), ColourSpace(tag), Force(0) {}
    trManRgb(int tag, int red, int green, int blue)
        : r(static_cast<float>(red)), g(static_cast<float>(green)), b(static_cast<float>(blue)),
          ColourSpace(tag), Force(0)
    {
    }
    trManRgb(int tag, float red, float green, float blue)
        : r(red), g(green), b(blue), ColourSpace(tag), Force(0)
    {
    }
    trManRgb(int tag, double red, double green, double blue)
        : r(static_cast<float>(red)), g(static_cast<float>(green)), b(static_cast<float>(blue)),
          ColourSpace(tag), Force(0)
    {
    }

    // A scalar gives grey; tag and force byte stay.
    trManRgb &operator=(int v) { r = g = b = static_cast<float>(v); return *this; }
    trManRgb &operator=(float v) { r = g = b = v; return *this; }
    trManRgb &operator=(double v) { r = g = b = static_cast<float>(v); return *this; }

    // Scaling keeps the tag; the result is no longer the forced value.
    trManRgb operator*(int s) const { return Scaled(static_cast<float>(s)); }
    trManRgb operator*(float s) const { return Scaled(s); }
    trManRgb operator*(double s) const { return Scaled(static_cast<float>(s)); }

    void Set(float red, float green, float blue) { r = red; g = green; b = blue; }
    trFCol ToRender() const
    {
        if (ColourSpace == kLinear709 || ColourSpace == kManaged200) {
            if (trColourConverter const *conv = trGetColourConverter())
                return conv->Convert(ToDisplay(), ColourSpace);
        }
        return ToDisplay();
    }
    trFCol ToDisplay() const { return trFCol(r, g, b); }
    trFCol BlendedTo(trManRgb const &o, float t) const { return ToRender().BlendedTo(o.ToRender(), t); }
    trFCol BlendedTo(trManRgb const &o, double t) const { return ToRender().BlendedTo(o.ToRender(), t); }

    // Tags match when equal or when either is unspecified.
    bool TagsCompatible(trManRgb const &o) const
    {
        return ColourSpace == o.ColourSpace || ColourSpace == kUnspecified || o.ColourSpace == kUnspecified;
    }
    bool NearlyEquals(trManRgb const &o) const
    {
        return TagsCompatible(o) && ToDisplay().NearlyEquals(o.ToDisplay());
    }
    // The force byte takes no part in comparisons.
    bool operator==(trManRgb const &o) const
    {
        return TagsCompatible(o) && r == o.r && g == o.g && b == o.b;
    }
    bool operator!=(trManRgb const &o) const { return !(*this == o); }
    // Every channel less, and only between compatible tags.
    bool operator<(trManRgb const &o) const { return TagsCompatible(o) && ToDisplay() < o.ToDisplay(); }

private:
    trManRgb Scaled(float s) const
    {
        trManRgb m(ColourSpace, r * s, g * s, b * s);
        return m;
    }
};

inline trManRgb operator*(int s, trManRgb const &m) { return m * s; }
inline trManRgb operator*(float s, trManRgb const &m) { return m * s; }
inline trManRgb operator*(double s, trManRgb const &m) { return m * s; }

// A value that no colour management may touch.
class trRgbData : public trManRgb
{
public:
    trRgbData() : trManRgb(kData) {}
    explicit trRgbData(int grey) : trManRgb(kData, grey, grey, grey) {}
    explicit trRgbData(float grey) : trManRgb(kData, grey, grey, grey) {}
    explicit trRgbData(double grey) : trManRgb(kData, grey, grey, grey) {}
    trRgbData(int red, int green, int blue) : trManRgb(kData, red, green, blue) {}
    trRgbData(float red, float green, float blue) : trManRgb(kData, red, green, blue) {}
    trRgbData(double red, double green, double blue) : trManRgb(kData, red, green, blue) {}
    explicit trRgbData(trFCol const &c) : trManRgb(kData, c) {}
    // A scalar gives grey and keeps the tag. Assigning another class of colour
    // is not offered: it would silently change the tag.
    trRgbData &operator=(int v) { trManRgb::operator=(v); return *this; }
    trRgbData &operator=(float v) { trManRgb::operator=(v); return *this; }
    trRgbData &operator=(double v) { trManRgb::operator=(v); return *this; }
};

// Data that stays data even where a context would manage it.
class trManRgbForceData : public trManRgb
{
public:
    trManRgbForceData() : trManRgb(kData) { Force = 1; }
    explicit trManRgbForceData(int grey) : trManRgb(kData, grey, grey, grey) { Force = 1; }
    explicit trManRgbForceData(float grey) : trManRgb(kData, grey, grey, grey) { Force = 1; }
    explicit trManRgbForceData(double grey) : trManRgb(kData, grey, grey, grey) { Force = 1; }
    trManRgbForceData(int red, int green, int blue) : trManRgb(kData, red, green, blue) { Force = 1; }
    trManRgbForceData(float red, float green, float blue) : trManRgb(kData, red, green, blue) { Force = 1; }
    trManRgbForceData(double red, double green, double blue) : trManRgb(kData, red, green, blue) { Force = 1; }
    explicit trManRgbForceData(trFCol const &c) : trManRgb(kData, c) { Force = 1; }
    trManRgbForceData &operator=(int v) { trManRgb::operator=(v); return *this; }
    trManRgbForceData &operator=(float v) { trManRgb::operator=(v); return *this; }
    trManRgbForceData &operator=(double v) { trManRgb::operator=(v); return *this; }
};

// A scene-linear Rec. 709 colour.
class trRgbLinear709 : public trManRgb
{
public:
    trRgbLinear709() : trManRgb(kLinear709) {}
    explicit trRgbLinear709(int grey) : trManRgb(kLinear709, grey, grey, grey) {}
    explicit trRgbLinear709(float grey) : trManRgb(kLinear709, grey, grey, grey) {}
    explicit trRgbLinear709(double grey) : trManRgb(kLinear709, grey, grey, grey) {}
    trRgbLinear709(int red, int green, int blue) : trManRgb(kLinear709, red, green, blue) {}
    trRgbLinear709(float red, float green, float blue) : trManRgb(kLinear709, red, green, blue) {}
    trRgbLinear709(double red, double green, double blue) : trManRgb(kLinear709, red, green, blue) {}
    explicit trRgbLinear709(trFCol const &c) : trManRgb(kLinear709, c) {}
    trRgbLinear709 &operator=(int v) { trManRgb::operator=(v); return *this; }
    trRgbLinear709 &operator=(float v) { trManRgb::operator=(v); return *this; }
    trRgbLinear709 &operator=(double v) { trManRgb::operator=(v); return *this; }
};
