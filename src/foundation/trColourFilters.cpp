#include "foundation/trColourFilters.h"

#include <cmath>

namespace {

inline float Sq4(float c) { return 4.0f * c * (1.0f - c); }

// 1 / v, or the signed limit when |v| is at most `tiny` (zero counts as positive).
inline double GuardedInverse(double v, double tiny, double limit)
{
    if (std::fabs(v) > tiny)
        return 1.0 / v;
    return v < 0.0 ? -limit : limit;
}

} // namespace

// ---- Bases ----

trFColFilter::~trFColFilter() = default;
trFCol trFColFilter::operator()(trFCol const &c) const { return c; }

trBColFilter::~trBColFilter() = default;
trBCol trBColFilter::operator()(trBCol const &c) const { return c; }

trFColPairFilter::~trFColPairFilter() = default;
trFCol trFColPairFilter::operator()(trFCol const &a, trFCol const &) const { return a; }

trFColVecBinaryOp::~trFColVecBinaryOp() = default;

long trFColVecBinaryOp::Count(trFColVec const &out, trFColVec const &a, trFColVec const &b)
{
    long n = out.count;
    if (a.count < n)
        n = a.count;
    if (b.count < n)
        n = b.count;
    return n;
}

void trFColVecBinaryOp::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i)
        out.cols[i] = a.cols[i];
}

// ---- Channel selection ----

trFCol trRedToGreyFColFilter::operator()(trFCol const &c) const { return trFCol(c.r); }
trFCol trGreenToGreyFColFilter::operator()(trFCol const &c) const { return trFCol(c.g); }
trFCol trBlueToGreyFColFilter::operator()(trFCol const &c) const { return trFCol(c.b); }
trFCol trMaxToGreyFColFilter::operator()(trFCol const &c) const { return trFCol(c.MaxComp()); }

// ---- Concatenation ----

trConcatFColFilter::trConcatFColFilter(bool ownsFilters, trFColFilter *firstFilter, trFColFilter *secondFilter)
    : owns(ownsFilters), first(firstFilter), second(secondFilter)
{
}

trConcatFColFilter::~trConcatFColFilter()
{
    if (owns) {
        // The same filter given twice is freed once.
        if (second != first)
            delete second;
        delete first;
    }
}

trFCol trConcatFColFilter::operator()(trFCol const &c) const
{
    trFCol out = first ? (*first)(c) : c;
    return second ? (*second)(out) : out;
}

// ---- Gamma ----

trGammaCorrectionFColFilter::trGammaCorrectionFColFilter(double gamma)
    : exponent(static_cast<float>(GuardedInverse(gamma, 1e-12, 1e12)))
{
}

trFCol trGammaCorrectionFColFilter::operator()(trFCol const &c) const
{
    return c.ClampedLow(0.0f).Pow(exponent);
}

// ---- Gamut stretch ----

trGamutStretchFColFilter::trGamutStretchFColFilter(double amt) : amount(static_cast<float>(amt)) {}

trFCol trGamutStretchFColFilter::operator()(trFCol const &c) const
{
    trFCol w = c.FromWideGamut();
    return (w - c) * amount + c;
}

// ---- Saturation ----

trSaturationFColFilter::trSaturationFColFilter(double s) : saturation(s) {}

trFCol trSaturationFColFilter::operator()(trFCol const &c) const
{
    // The weights add up to 1.0001; that is how the system has always weighed them.
    double l = 0.2125 * double(c.r) + 0.7152 * double(c.g) + 0.0724 * double(c.b);
    double ch[3] = {c.r, c.g, c.b};
    if (saturation <= 1.0) {
        for (double &v : ch)
            v = (v - l) * saturation + l;
    } else {
        double t = saturation - 1.0;
        for (double &v : ch) {
            double delta = (v - l) * t;
            double h, div;
            // Headroom towards 1 or towards 0. A headroom of zero takes the sign
            // of its direction, so that r keeps the sign of delta and no 0 * inf
            // can come out.
            if (delta > 0.0) {
                h = 1.0 - v;
                div = std::fabs(h) > 1e-6 ? h : (h < 0.0 ? -1e-6 : 1e-6);
            } else {
                h = -v;
                div = std::fabs(h) > 1e-6 ? h : (h > 0.0 ? 1e-6 : -1e-6);
            }
            double r = delta / div;
            v = (1.0 - std::exp(-(r < 16.0 ? r : 16.0))) * h + v;
        }
    }
    return trFCol(static_cast<float>(ch[0]), static_cast<float>(ch[1]), static_cast<float>(ch[2]));
}

// ---- Soft clip and contrast ----

trSoftClipContrastFColFilter::trSoftClipContrastFColFilter(double exposure, bool softClipOn, double const &clip,
                                                           bool compensateExposure, bool contrastOn,
                                                           double const &contrast)
    : scale(exposure), softClip(0.0), softClipInv(1.0), contrastExp(1.0)
{
    if (softClipOn) {
        softClip = clip;
        softClipInv = GuardedInverse(clip, 1e-12, 1e12);
        // Raises the exposure to offset the darkening of the shoulder.
        if (compensateExposure)
            scale = std::exp(softClip * softClip * 0.25) * exposure;
    }
    if (contrastOn)
        contrastExp = std::exp(contrast);
}

double trSoftClipContrastFColFilter::Channel(float in) const
{
    double c = (in > 0.0f ? double(in) : 0.0) * scale;
    if (softClip != 0.0)
        c = std::pow(1.0 - std::exp(-std::pow(c, softClipInv)), softClip);
    if (contrastExp != 0.0) {
        c = c < 0.0 ? 0.0 : (c > 1.0 ? 1.0 : c);
        if (c < 0.5)
            c = std::pow(2.0 * c, contrastExp) * 0.5;
        else
            c = 1.0 - std::pow(2.0 * (1.0 - c), contrastExp) * 0.5;
    }
    return c;
}

trFCol trSoftClipContrastFColFilter::operator()(trFCol const &c) const
{
    return trFCol(static_cast<float>(Channel(c.r)), static_cast<float>(Channel(c.g)),
                  static_cast<float>(Channel(c.b)));
}

// ---- Fringe alpha ----

trFCol FringeAlphaFColFilter::operator()(trFCol const &c) const { return trFCol(Sq4(c.r), Sq4(c.g), Sq4(c.b)); }
trFCol RedFringeAlphaFColFilter::operator()(trFCol const &c) const { return trFCol(Sq4(c.r)); }

// ---- Screens ----

trFCol trScreenFColPairFilter::operator()(trFCol const &a, trFCol const &b) const
{
    return trFCol(1.0f - (1.0f - a.r) * (1.0f - b.r), 1.0f - (1.0f - a.g) * (1.0f - b.g),
                  1.0f - (1.0f - a.b) * (1.0f - b.b));
}

trClampedScreenFColPairFilter::trClampedScreenFColPairFilter(trFCol const &m)
    : limit(m),
      inverse(static_cast<float>(GuardedInverse(m.r, 1e-6, 1e6)), static_cast<float>(GuardedInverse(m.g, 1e-6, 1e6)),
              static_cast<float>(GuardedInverse(m.b, 1e-6, 1e6)))
{
}

trFCol trClampedScreenFColPairFilter::operator()(trFCol const &a, trFCol const &b) const
{
    // Exponent 1/m with scale m: the curve's slope at black stays that of a plain screen.
    auto ch = [](float x, float y, float m, float i) {
        return (1.0f - std::pow(1.0f - x, i) * std::pow(1.0f - y, i)) * m;
    };
    return trFCol(ch(a.r, b.r, limit.r, inverse.r), ch(a.g, b.g, limit.g, inverse.g),
                  ch(a.b, b.b, limit.b, inverse.b));
}

// ---- Row operations ----

void trFColAdd::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i)
        out.cols[i] = a.cols[i] + b.cols[i];
}

void trFColVecSubtract::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i)
        out.cols[i] = a.cols[i] - b.cols[i];
}

void trFColVecMultiply::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i)
        out.cols[i] = a.cols[i] * b.cols[i];
}

void trFColVecRawDivide::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i)
        out.cols[i] = a.cols[i] / b.cols[i];
}

void trFColVecSafeDivide::operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const
{
    auto div = [](float x, float y) { return y == 0.0f ? x : x / y; };
    long n = Count(out, a, b);
    for (long i = 0; i < n; ++i) {
        trFCol const &x = a.cols[i];
        trFCol const &y = b.cols[i];
        out.cols[i] = trFCol(div(x.r, y.r), div(x.g, y.g), div(x.b, y.b));
    }
}
