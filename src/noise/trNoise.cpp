// The noise tables and the lattice noises. The cached objects' Noise3 and Noise4 are
// defined here too, beside trNoise3 and trNoise4, so that both run the very same
// inline corner code and agree bit for bit.

#include "noise/trNoise.h"

#include "foundation/trColour.h"
#include "foundation/trRand.h"
#include "noise/trNoiseInst.h"

#include <cmath>

// The corner code must be inlined into each caller: a call would spill the hashes.
#if defined(__GNUC__)
#define TR_NOISE_INLINE inline __attribute__((always_inline))
#else
#define TR_NOISE_INLINE inline
#endif

namespace {

// Internal storage: code in this file reaches it directly, not through the GOT.
alignas(64) long sPerm[512];
alignas(64) double sGrad1[512];
alignas(64) double sGrad2[512][2];
alignas(64) double sGrad3[512][3];
alignas(64) double sGrad4[512][4];
alignas(64) double sNoff1[256];
alignas(64) double sNoff2[256][2];
alignas(64) double sNoff3[256][3];
alignas(64) double sNoff4[256][4];
// 768 draws, and a copy of them behind.
alignas(64) unsigned long sCellInts[1536];

bool sNoiseReady = false;

constexpr double kShift = 4096.0;

// One random component: a gradient in -1..1 in steps of 1/256, and an offset of up
// to 2^24 from the next draw.
inline void DrawComponent(double &grad, double &noff)
{
    grad = double(long(trGlobalRand.Int() & 0x1ff) - 256) / 256.0;
    noff = double(trGlobalRand.Int()) / 256.0;
}

template <int N> void Normalise(double (&v)[N])
{
    double lengthSq = 0.0;
    for (int k = 0; k < N; ++k)
        lengthSq += v[k] * v[k];
    double const length = std::sqrt(lengthSq);
    for (int k = 0; k < N; ++k)
        v[k] = v[k] / length;
}

// floor without a library call; t - Floor(t) is then exact.
TR_NOISE_INLINE long Floor(double t)
{
    // Past 2^62, and for NaN, there is no cell to speak of: keep the conversion defined.
    if (!(std::fabs(t) < 4.6e18))
        return 0;
    long i = long(t);
    return t < double(i) ? i - 1 : i;
}

TR_NOISE_INLINE double SCurve(double t) { return t * t * (3.0 - 2.0 * t); }

TR_NOISE_INLINE double Lerp(double t, double a, double b) { return a + t * (b - a); }

inline int NoffIndex(int seed)
{
    int i = seed % 256;
    // A negative seed wraps into the table rather than reading in front of it.
    return i < 0 ? i + 256 : i;
}

// Gradient indices of the eight corners of the cell with the given low bytes per axis;
// x varies fastest: 000, 100, 010, 110, 001, 101, 011, 111.
TR_NOISE_INLINE void CornerHashes3(long x0, long x1, long y0, long y1, long z0, long z1, long *h)
{
    long const i = sPerm[x0], j = sPerm[x1];
    long const b00 = sPerm[i + y0], b10 = sPerm[j + y0];
    long const b01 = sPerm[i + y1], b11 = sPerm[j + y1];
    h[0] = sPerm[b00 + z0];
    h[1] = sPerm[b10 + z0];
    h[2] = sPerm[b01 + z0];
    h[3] = sPerm[b11 + z0];
    h[4] = sPerm[b00 + z1];
    h[5] = sPerm[b10 + z1];
    h[6] = sPerm[b01 + z1];
    h[7] = sPerm[b11 + z1];
}

TR_NOISE_INLINE double At3(long h, double rx, double ry, double rz)
{
    double const *g = sGrad3[h];
    return rx * g[0] + ry * g[1] + rz * g[2];
}

// The trilinear blend of corner values, weights by the s-curve of the fractions.
TR_NOISE_INLINE double Blend3(double rx0, double ry0, double rz0, long const *h)
{
    double const rx1 = rx0 - 1.0, ry1 = ry0 - 1.0, rz1 = rz0 - 1.0;
    double const sx = SCurve(rx0), sy = SCurve(ry0), sz = SCurve(rz0);
    double const a = Lerp(sx, At3(h[0], rx0, ry0, rz0), At3(h[1], rx1, ry0, rz0));
    double const b = Lerp(sx, At3(h[2], rx0, ry1, rz0), At3(h[3], rx1, ry1, rz0));
    double const c = Lerp(sy, a, b);
    double const d = Lerp(sx, At3(h[4], rx0, ry0, rz1), At3(h[5], rx1, ry0, rz1));
    double const e = Lerp(sx, At3(h[6], rx0, ry1, rz1), At3(h[7], rx1, ry1, rz1));
    double const f = Lerp(sy, d, e);
    return Lerp(sz, c, f);
}

// Sixteen corners, x fastest, then y, z, w.
TR_NOISE_INLINE void CornerHashes4(long const *lo, long const *hi, long *h)
{
    long const px[2] = {sPerm[lo[0]], sPerm[hi[0]]};
    long pxy[4];
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x)
            pxy[y * 2 + x] = sPerm[px[x] + (y ? hi[1] : lo[1])];
    long pxyz[8];
    for (int z = 0; z < 2; ++z)
        for (int k = 0; k < 4; ++k)
            pxyz[z * 4 + k] = sPerm[pxy[k] + (z ? hi[2] : lo[2])];
    for (int w = 0; w < 2; ++w)
        for (int k = 0; k < 8; ++k)
            h[w * 8 + k] = sPerm[pxyz[k] + (w ? hi[3] : lo[3])];
}

TR_NOISE_INLINE double At4(long h, double rx, double ry, double rz, double rw)
{
    double const *g = sGrad4[h];
    return rx * g[0] + ry * g[1] + rz * g[2] + rw * g[3];
}

TR_NOISE_INLINE double Blend4(double const *r0, long const *h)
{
    double const rx0 = r0[0], ry0 = r0[1], rz0 = r0[2], rw0 = r0[3];
    double const rx1 = rx0 - 1.0, ry1 = ry0 - 1.0, rz1 = rz0 - 1.0, rw1 = rw0 - 1.0;
    double const sx = SCurve(rx0), sy = SCurve(ry0), sz = SCurve(rz0), sw = SCurve(rw0);
    double layer[2];
    for (int w = 0; w < 2; ++w) {
        double const rw = w ? rw1 : rw0;
        long const *hw = h + 8 * w;
        double const a = Lerp(sx, At4(hw[0], rx0, ry0, rz0, rw), At4(hw[1], rx1, ry0, rz0, rw));
        double const b = Lerp(sx, At4(hw[2], rx0, ry1, rz0, rw), At4(hw[3], rx1, ry1, rz0, rw));
        double const c = Lerp(sy, a, b);
        double const d = Lerp(sx, At4(hw[4], rx0, ry0, rz1, rw), At4(hw[5], rx1, ry0, rz1, rw));
        double const e = Lerp(sx, At4(hw[6], rx0, ry1, rz1, rw), At4(hw[7], rx1, ry1, rz1, rw));
        double const f = Lerp(sy, d, e);
        layer[w] = Lerp(sz, c, f);
    }
    return Lerp(sw, layer[0], layer[1]);
}

// Shift, floor and fraction of one coordinate, with the two wrapped lattice bytes.
struct trLatticeAxis {
    long lo, hi;
    double r;
};

TR_NOISE_INLINE trLatticeAxis Axis(double v)
{
    double const t = v + kShift;
    long const i = Floor(t);
    long const lo = i & 255;
    return {lo, (lo + 1) & 255, t - double(i)};
}

// The value-noise corners: one gradient component each, no dot product.
TR_NOISE_INLINE void ValueCorners3(double const *p, double *value, double *r)
{
    trLatticeAxis const x = Axis(p[0]), y = Axis(p[1]), z = Axis(p[2]);
    long h[8];
    CornerHashes3(x.lo, x.hi, y.lo, y.hi, z.lo, z.hi, h);
    for (int k = 0; k < 8; ++k)
        value[k] = sGrad3[h[k]][0];
    r[0] = x.r;
    r[1] = y.r;
    r[2] = z.r;
}

inline double Clamp01(double v) { return v < 0.0 ? 0.0 : (v > 1.0 ? 1.0 : v); }

// The ramp of the smoothed value noise: linear through the middle of the cell, its
// slope the reciprocal of the width. The slope is held to 1..4 so that the blend
// stays continuous at the lattice and never gets sharper than a quarter cell.
inline double RampSlope(double width)
{
    if (!(width > 0.25))
        return 4.0;
    double const slope = 1.0 / width;
    return slope < 1.0 ? 1.0 : slope;
}

} // namespace

long const (&perm)[512] = sPerm;
double const (&grad1)[512] = sGrad1;
double const (&grad2)[512][2] = sGrad2;
double const (&grad3)[512][3] = sGrad3;
double const (&grad4)[512][4] = sGrad4;
double const (&noff1)[256] = sNoff1;
double const (&noff2)[256][2] = sNoff2;
double const (&noff3)[256][3] = sNoff3;
double const (&noff4)[256][4] = sNoff4;
unsigned long const (&cellInts)[1536] = sCellInts;

void trNoiseInit()
{
    if (sNoiseReady)
        return;
    sNoiseReady = true;

    trGlobalRand.Seed(11);
    for (int i = 0; i < 768; ++i)
        sCellInts[i] = trGlobalRand.Int();

    // The order of draws below fixes every pattern in every saved project.
    trGlobalRand.Seed(0);
    for (int i = 0; i < 256; ++i) {
        sPerm[i] = i;
        DrawComponent(sGrad1[i], sNoff1[i]);
        for (int k = 0; k < 2; ++k)
            DrawComponent(sGrad2[i][k], sNoff2[i][k]);
        Normalise(sGrad2[i]);
        for (int k = 0; k < 3; ++k)
            DrawComponent(sGrad3[i][k], sNoff3[i][k]);
        Normalise(sGrad3[i]);
        for (int k = 0; k < 4; ++k)
            DrawComponent(sGrad4[i][k], sNoff4[i][k]);
        Normalise(sGrad4[i]);
    }
    for (int k = 255; k > 0; --k) {
        int const j = int(trGlobalRand.Int() & 255);
        long const swap = sPerm[k];
        sPerm[k] = sPerm[j];
        sPerm[j] = swap;
    }
    for (int i = 0; i < 256; ++i) {
        sPerm[i + 256] = sPerm[i];
        sGrad1[i + 256] = sGrad1[i];
        for (int k = 0; k < 2; ++k)
            sGrad2[i + 256][k] = sGrad2[i][k];
        for (int k = 0; k < 3; ++k)
            sGrad3[i + 256][k] = sGrad3[i][k];
        for (int k = 0; k < 4; ++k)
            sGrad4[i + 256][k] = sGrad4[i][k];
        sCellInts[i + 256] = sCellInts[i];
    }
    for (int i = 0; i < 768; ++i)
        sCellInts[i + 768] = sCellInts[i];
}

double trNoff1(int seed) { return sNoff1[NoffIndex(seed)]; }

tr2Vector trNoff2(int seed)
{
    double const *n = sNoff2[NoffIndex(seed)];
    return tr2Vector(n[0], n[1]);
}

trVector trNoff3(int seed)
{
    double const *n = sNoff3[NoffIndex(seed)];
    return trVector(n[0], n[1], n[2]);
}

trVector trNoff3(int seedX, int seedY, int seedZ)
{
    return trVector(sNoff1[NoffIndex(seedX)], sNoff1[NoffIndex(seedY)], sNoff1[NoffIndex(seedZ)]);
}

double trNoise1(double v)
{
    trLatticeAxis const x = Axis(v);
    double const u = x.r * sGrad1[sPerm[x.lo]];
    double const w = (x.r - 1.0) * sGrad1[sPerm[x.hi]];
    return Lerp(SCurve(x.r), u, w);
}

double trNoise2(double const *p)
{
    trLatticeAxis const x = Axis(p[0]), y = Axis(p[1]);
    long const i = sPerm[x.lo], j = sPerm[x.hi];
    double const rx0 = x.r, rx1 = x.r - 1.0, ry0 = y.r, ry1 = y.r - 1.0;
    double const *g00 = sGrad2[sPerm[i + y.lo]];
    double const *g10 = sGrad2[sPerm[j + y.lo]];
    double const *g01 = sGrad2[sPerm[i + y.hi]];
    double const *g11 = sGrad2[sPerm[j + y.hi]];
    double const sx = SCurve(rx0), sy = SCurve(ry0);
    double const a = Lerp(sx, rx0 * g00[0] + ry0 * g00[1], rx1 * g10[0] + ry0 * g10[1]);
    double const b = Lerp(sx, rx0 * g01[0] + ry1 * g01[1], rx1 * g11[0] + ry1 * g11[1]);
    return Lerp(sy, a, b);
}

double trNoise3(double const *p)
{
    trLatticeAxis const x = Axis(p[0]), y = Axis(p[1]), z = Axis(p[2]);
    long h[8];
    CornerHashes3(x.lo, x.hi, y.lo, y.hi, z.lo, z.hi, h);
    return Blend3(x.r, y.r, z.r, h);
}

double trNoise4(double const *p)
{
    long lo[4], hi[4];
    double r[4];
    for (int k = 0; k < 4; ++k) {
        trLatticeAxis const a = Axis(p[k]);
        lo[k] = a.lo;
        hi[k] = a.hi;
        r[k] = a.r;
    }
    long h[16];
    CornerHashes4(lo, hi, h);
    return Blend4(r, h);
}

double trCellNoise2(int const *c)
{
    return sGrad2[sPerm[sPerm[c[0] & 255] + (c[1] & 255)]][0] * 0.5;
}

namespace {
inline long CellHash3(int const *c)
{
    return sPerm[sPerm[sPerm[c[0] & 255] + (c[1] & 255)] + (c[2] & 255)];
}
} // namespace

double trCellNoise3(int const *c) { return sGrad3[CellHash3(c)][0] * 0.5; }

unsigned long trCellInt3(int const *c) { return sCellInts[CellHash3(c)]; }

template <> void trCellNoise3<double>(double &value, int const *c) { value = trCellNoise3(c); }

template <> void trCellNoise3<float>(float &value, int const *c) { value = float(trCellNoise3(c)); }

template <> void trCellNoise3<trFCol>(trFCol &value, int const *c)
{
    double const *g = sGrad3[CellHash3(c)];
    value.r = float(g[0] * 0.5);
    value.g = float(g[1] * 0.5);
    value.b = float(g[2] * 0.5);
}

double trLerpNoise3(double const *p)
{
    double v[8], r[3];
    ValueCorners3(p, v, r);
    double const c = Lerp(r[1], Lerp(r[0], v[0], v[1]), Lerp(r[0], v[2], v[3]));
    double const d = Lerp(r[1], Lerp(r[0], v[4], v[5]), Lerp(r[0], v[6], v[7]));
    return Lerp(r[2], c, d);
}

double trLerpNoise3_SmoothXY(double const *p, double const *width)
{
    double v[8], r[3];
    ValueCorners3(p, v, r);
    double const wx = Clamp01(0.5 + (r[0] - 0.5) * RampSlope(width[0]));
    double const wy = Clamp01(0.5 + (r[1] - 0.5) * RampSlope(width[1]));
    double const upper = Lerp(wy, Lerp(wx, v[4], v[5]), Lerp(wx, v[6], v[7]));
    double const lower = Lerp(wy, Lerp(wx, v[0], v[1]), Lerp(wx, v[2], v[3]));
    return Lerp(r[2], lower, upper);
}

double trOldSharpNoise3(double const *p)
{
    double v[8], r[3];
    ValueCorners3(p, v, r);
    double const ux = 1.0 - r[0], uy = 1.0 - r[1], uz = 1.0 - r[2];
    double const c = (v[0] * ux + v[1] * r[0]) * uy + (v[2] * ux + v[3] * r[0]) * r[1];
    double const d = (v[4] * ux + v[5] * r[0]) * uy + (v[6] * ux + v[7] * r[0]) * r[1];
    return c * uz + d * r[2];
}

// The cached objects. A fraction against the cached origin lies in 0..1 exactly when
// the cached floor is the floor of the new coordinate (the subtraction is monotonic
// and never rounds a non-zero difference to 0), so the reuse changes no bit.

double trNoiseInst3::Noise3(double x, double y, double z)
{
    double const t[3] = {x + kShift, y + kShift, z + kShift};
    double const fx = t[0] - origin[0], fy = t[1] - origin[1], fz = t[2] - origin[2];
    // One test for the usual case of a point in the cell of the last one.
    if (cacheValid & (fx >= 0.0) & (fx < 1.0) & (fy >= 0.0) & (fy < 1.0) & (fz >= 0.0) & (fz < 1.0))
        return Blend3(fx, fy, fz, corner);
    double const f[3] = {fx, fy, fz};
    double r[3];
    for (int k = 0; k < 3; ++k) {
        if (cacheValid && f[k] >= 0.0 && f[k] < 1.0) {
            r[k] = f[k];
            continue;
        }
        long const i = Floor(t[k]);
        cell[k] = i;
        origin[k] = double(i);
        lo[k] = i & 255;
        hi[k] = (lo[k] + 1) & 255;
        r[k] = t[k] - origin[k];
    }
    CornerHashes3(lo[0], hi[0], lo[1], hi[1], lo[2], hi[2], corner);
    cacheValid = true;
    return Blend3(r[0], r[1], r[2], corner);
}

double trNoiseInst4::Noise4(double x, double y, double z, double w)
{
    double const t[4] = {x + kShift, y + kShift, z + kShift, w + kShift};
    double const f[4] = {t[0] - origin[0], t[1] - origin[1], t[2] - origin[2], t[3] - origin[3]};
    if (cacheValid & (f[0] >= 0.0) & (f[0] < 1.0) & (f[1] >= 0.0) & (f[1] < 1.0) & (f[2] >= 0.0) & (f[2] < 1.0) &
        (f[3] >= 0.0) & (f[3] < 1.0))
        return Blend4(f, corner);
    double r[4];
    for (int k = 0; k < 4; ++k) {
        if (cacheValid && f[k] >= 0.0 && f[k] < 1.0) {
            r[k] = f[k];
            continue;
        }
        long const i = Floor(t[k]);
        cell[k] = i;
        origin[k] = double(i);
        lo[k] = i & 255;
        hi[k] = (lo[k] + 1) & 255;
        r[k] = t[k] - origin[k];
    }
    CornerHashes4(lo, hi, corner);
    cacheValid = true;
    return Blend4(r, corner);
}
