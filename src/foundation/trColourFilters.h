#pragma once

// Function objects that map colours to colours, so that image operators and the
// post-processing chain need no new pixel loop for a new tone operation. All
// operators are const: one filter serves every worker thread at once.

#include "foundation/trColour.h"

// Base of the one-colour filters; the base operation is the identity.
class trFColFilter
{
public:
    virtual ~trFColFilter();
    virtual trFCol operator()(trFCol const &c) const;
};

// Base of the byte-colour filters; the base operation is the identity.
class trBColFilter
{
public:
    virtual ~trBColFilter();
    virtual trBCol operator()(trBCol const &c) const;
};

// Base of the filters that combine two colours; the base returns the first.
class trFColPairFilter
{
public:
    virtual ~trFColPairFilter();
    virtual trFCol operator()(trFCol const &a, trFCol const &b) const;
};

// Base of the operations over whole colour rows. The loop runs over the element
// count of `out`, stopping early should either input be shorter. The base copies `a`.
class trFColVecBinaryOp
{
public:
    virtual ~trFColVecBinaryOp();
    virtual void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const;

protected:
    static long Count(trFColVec const &out, trFColVec const &a, trFColVec const &b);
};

class trRedToGreyFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

class trGreenToGreyFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

class trBlueToGreyFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

class trMaxToGreyFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

// Applies `first`, then `second`; a null filter counts as the identity. When
// `owns` is set the destructor deletes both.
class trConcatFColFilter : public trFColFilter
{
public:
    trConcatFColFilter(bool owns, trFColFilter *first, trFColFilter *second);
    ~trConcatFColFilter() override;
    trConcatFColFilter(trConcatFColFilter const &) = delete;
    trConcatFColFilter &operator=(trConcatFColFilter const &) = delete;

    trFCol operator()(trFCol const &c) const override;

private:
    bool owns;
    trFColFilter *first;
    trFColFilter *second;
};

// Clamps each channel at 0 and raises it to 1 / gamma.
class trGammaCorrectionFColFilter : public trFColFilter
{
public:
    explicit trGammaCorrectionFColFilter(double gamma);
    trFCol operator()(trFCol const &c) const override;
    float Exponent() const { return exponent; }

private:
    float exponent;
};

// (W - c) amount + c, with W the colour decoded from the wide gamut: 0 leaves the
// colour as it is, 1 gives W, and more stretches further.
class trGamutStretchFColFilter : public trFColFilter
{
public:
    explicit trGamutStretchFColFilter(double amount);
    trFCol operator()(trFCol const &c) const override;

private:
    float amount;
};

// Scales chroma about the luminance. Above 1 the channels approach 0 or 1 softly
// and never overshoot them.
class trSaturationFColFilter : public trFColFilter
{
public:
    explicit trSaturationFColFilter(double saturation);
    trFCol operator()(trFCol const &c) const override;

private:
    double saturation;
};

// Exposure, then an optional soft shoulder, then an optional S-curve contrast.
class trSoftClipContrastFColFilter : public trFColFilter
{
public:
    trSoftClipContrastFColFilter(double exposure, bool softClipOn, double const &softClip,
                                 bool compensateExposure, bool contrastOn, double const &contrast);
    trFCol operator()(trFCol const &c) const override;

    double Scale() const { return scale; }
    double SoftClip() const { return softClip; }
    double SoftClipInverse() const { return softClipInv; }
    double ContrastExponent() const { return contrastExp; }

private:
    double Channel(float c) const;

    double scale;
    double softClip;
    double softClipInv;
    double contrastExp;
};

// Each channel 4 c (1 - c): peaks at 0.5, zero at 0 and 1.
class FringeAlphaFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

// 4 r (1 - r) into all three channels.
class RedFringeAlphaFColFilter : public trFColFilter
{
public:
    trFCol operator()(trFCol const &c) const override;
};

// 1 - (1 - a)(1 - b) per channel.
class trScreenFColPairFilter : public trFColPairFilter
{
public:
    trFCol operator()(trFCol const &a, trFCol const &b) const override;
};

// A screen that saturates at the limit m instead of 1:
// (1 - (1 - a)^(1/m) (1 - b)^(1/m)) m per channel.
class trClampedScreenFColPairFilter : public trFColPairFilter
{
public:
    explicit trClampedScreenFColPairFilter(trFCol const &limit);
    trFCol operator()(trFCol const &a, trFCol const &b) const override;

private:
    trFCol limit;
    trFCol inverse;
};

class trFColAdd : public trFColVecBinaryOp
{
public:
    void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const override;
};

class trFColVecSubtract : public trFColVecBinaryOp
{
public:
    void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const override;
};

class trFColVecMultiply : public trFColVecBinaryOp
{
public:
    void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const override;
};

// Plain division: a zero divisor gives infinities or NaN as the hardware does.
class trFColVecRawDivide : public trFColVecBinaryOp
{
public:
    void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const override;
};

// Where a divisor channel is 0 the dividend channel passes unchanged.
class trFColVecSafeDivide : public trFColVecBinaryOp
{
public:
    void operator()(trFColVec &out, trFColVec const &a, trFColVec const &b) const override;
};
