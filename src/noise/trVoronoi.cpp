// Voronoi patterns. The feature point of a cell and the cell's value come from hashes
// with fixed per-axis offsets; the search order and the tie rule (the earlier cell
// keeps its place) are part of every saved pattern, so neither may change.

#include "noise/trVoronoi.h"

#include "foundation/trColour.h"
#include "noise/trNoise.h"

#include <cmath>

namespace {

// Hash offsets of the feature coordinates x, y, z, and of the cell's value.
constexpr long kFeatureOffset[3][3] = {{38, 130, 142}, {73, 22, 72}, {48, 63, 32}};
constexpr long kValueOffset[3] = {73, 98, 57};

// Squared distances and vectors start at 10 and (10, 0, 0): farther than any feature
// in the block can be.
constexpr double kFar = 10.0;

inline long Floor(double t)
{
    // Past 2^62, and for NaN, there is no cell to speak of: keep the conversion defined.
    if (!(std::fabs(t) < 4.6e18))
        return 0;
    long i = long(t);
    return t < double(i) ? i - 1 : i;
}

// Low byte of a + b without signed overflow, whatever the cell.
inline long Byte(long a, long b) { return long((static_cast<unsigned long>(a) + static_cast<unsigned long>(b)) & 255ul); }

// Cell coordinate base + d, wrapping like the hash does rather than overflowing.
inline long Step(long base, long d) { return long(static_cast<unsigned long>(base) + static_cast<unsigned long>(d)); }

inline long Hash3(long a, long b, long c)
{
    long const *P = perm;
    return P[P[P[a & 255] + (b & 255)] + (c & 255)];
}

// The 27 cells around p, z slowest, then y, then x; the feature point per cell.
struct trCellBlock {
    long base[3];     // floor(p)
    double f[27][3];  // feature point, absolute
};

void FillBlock(trCellBlock &block, double const *p)
{
    long const *P = perm;
    double const (*G)[3] = grad3;
    for (int k = 0; k < 3; ++k)
        block.base[k] = Floor(p[k]);
    for (int axis = 0; axis < 3; ++axis) {
        long const *off = kFeatureOffset[axis];
        // Partial hashes, shared by the cells of a row and of a column.
        long px[3], pxy[3][3];
        for (int dx = 0; dx < 3; ++dx)
            px[dx] = P[Byte(block.base[0], dx - 1 + off[0])];
        for (int dy = 0; dy < 3; ++dy) {
            long const by = Byte(block.base[1], dy - 1 + off[1]);
            for (int dx = 0; dx < 3; ++dx)
                pxy[dy][dx] = P[px[dx] + by];
        }
        long const cellAxis = block.base[axis];
        for (int dz = 0; dz < 3; ++dz) {
            long const bz = Byte(block.base[2], dz - 1 + off[2]);
            for (int dy = 0; dy < 3; ++dy)
                for (int dx = 0; dx < 3; ++dx) {
                    int const d[3] = {dx, dy, dz};
                    double const h = G[P[pxy[dy][dx] + bz]][0];
                    block.f[dz * 9 + dy * 3 + dx][axis] = double(Step(cellAxis, d[axis] - 1)) + 0.5 + 0.5 * h;
                }
        }
    }
}

struct trNearest3 {
    long win[3]; // the nearest cell
    trVector nearest, second;
};

inline double Min(double a, double b) { return b < a ? b : a; }

// The least of d[0..27], in four independent chains.
inline double Least(double const *d)
{
    double m0 = d[0], m1 = d[1], m2 = d[2], m3 = d[3];
    for (int c = 4; c < 28; c += 4) {
        m0 = Min(m0, d[c]);
        m1 = Min(m1, d[c + 1]);
        m2 = Min(m2, d[c + 2]);
        m3 = Min(m3, d[c + 3]);
    }
    return Min(Min(m0, m1), Min(m2, m3));
}

// The plain search runs z slowest, then y, then x, and a later cell takes a place only
// with a strictly smaller distance. Its result is thus the first cell of least distance,
// and the first of least distance among the others. Finding those two from all 27
// distances at once gives the same cells without a hard-to-predict branch per cell.
void Search3(double const *p, trNearest3 &out)
{
    long const *P = perm;
    double const (*G)[3] = grad3;
    long base[3];
    double half[3][3]; // cell coordinate + 0.5, per axis and offset
    for (int a = 0; a < 3; ++a) {
        base[a] = Floor(p[a]);
        for (int d = 0; d < 3; ++d)
            half[a][d] = double(Step(base[a], d - 1)) + 0.5;
    }
    // Per feature axis, the hash through the x and y bytes of each column.
    long pxy[3][3][3];
    long bz[3][3];
    for (int k = 0; k < 3; ++k) {
        long const *off = kFeatureOffset[k];
        long const px[3] = {P[Byte(base[0], off[0] - 1)], P[Byte(base[0], off[0])], P[Byte(base[0], off[0] + 1)]};
        for (int dy = 0; dy < 3; ++dy) {
            long const by = Byte(base[1], dy - 1 + off[1]);
            for (int dx = 0; dx < 3; ++dx)
                pxy[k][dy][dx] = P[px[dx] + by];
        }
        for (int dz = 0; dz < 3; ++dz)
            bz[k][dz] = Byte(base[2], dz - 1 + off[2]);
    }
    double vx[28], vy[28], vz[28], dist[28];
    for (int dz = 0; dz < 3; ++dz)
        for (int dy = 0; dy < 3; ++dy)
            for (int dx = 0; dx < 3; ++dx) {
                int const c = dz * 9 + dy * 3 + dx;
                double const x = p[0] - (half[0][dx] + 0.5 * G[P[pxy[0][dy][dx] + bz[0][dz]]][0]);
                double const y = p[1] - (half[1][dy] + 0.5 * G[P[pxy[1][dy][dx] + bz[1][dz]]][0]);
                double const z = p[2] - (half[2][dz] + 0.5 * G[P[pxy[2][dy][dx] + bz[2][dz]]][0]);
                vx[c] = x;
                vy[c] = y;
                vz[c] = z;
                dist[c] = x * x + y * y + z * z;
            }
    dist[27] = kFar;

    // A distance must be below the starting 10 to take a place (NaN never does).
    out.nearest = out.second = trVector(kFar, 0.0, 0.0);
    int i1 = 13;
    double const d1 = Least(dist);
    if (d1 < kFar) {
        i1 = 0;
        while (dist[i1] != d1)
            ++i1;
        out.nearest = trVector(vx[i1], vy[i1], vz[i1]);
        dist[i1] = kFar;
        double const d2 = Least(dist);
        if (d2 < kFar) {
            int i2 = 0;
            while (dist[i2] != d2)
                ++i2;
            out.second = trVector(vx[i2], vy[i2], vz[i2]);
        }
    }
    out.win[0] = Step(base[0], i1 % 3 - 1);
    out.win[1] = Step(base[1], i1 / 3 % 3 - 1);
    out.win[2] = Step(base[2], i1 / 9 - 1);
}

inline double const *CellValueGradient(long x, long y, long z)
{
    return grad3[Hash3(Byte(x, kValueOffset[0]), Byte(y, kValueOffset[1]), Byte(z, kValueOffset[2]))];
}

inline double const *ValueGradient(trCellBlock const &block, int c)
{
    return CellValueGradient(Step(block.base[0], c % 3 - 1), Step(block.base[1], c / 3 % 3 - 1),
                             Step(block.base[2], c / 9 - 1));
}

inline void SetValue(double &value, double const *g) { value = 0.5 * g[0]; }
inline void SetValue(float &value, double const *g) { value = float(0.5 * g[0]); }
inline void SetValue(trFCol &value, double const *g)
{
    value.r = float(0.5 * g[0]);
    value.g = float(0.5 * g[1]);
    value.b = float(0.5 * g[2]);
}

template <class T> void Voronoi3(T &value, trVector &nearest, trVector &second, double const *p)
{
    trNearest3 found;
    Search3(p, found);
    nearest = found.nearest;
    second = found.second;
    SetValue(value, CellValueGradient(found.win[0], found.win[1], found.win[2]));
}

// Weighted mean of the cells' gradients, then halved and narrowed by SetValue.
template <class T> void SetWeightedValue(T &value, double const (*values)[3], double const *w, double sum)
{
    double acc[3] = {0.0, 0.0, 0.0};
    for (int c = 0; c < 27; ++c)
        for (int k = 0; k < 3; ++k)
            acc[k] += w[c] * values[c][k];
    double const mean[3] = {acc[0] / sum, acc[1] / sum, acc[2] / sum};
    SetValue(value, mean);
}

template <class T>
void OldSmoothVoronoi3(T &value, double &distance, trVector &gradient, double const *p, double const *sharpness)
{
    trCellBlock block;
    FillBlock(block, p);
    // The softness divides: held to at least 1e-12 like any divisor.
    double const k = *sharpness > 1e-12 ? *sharpness : 1e-12;
    double dist[27];
    trVector unit[27];
    double dmin = 1e300;
    for (int c = 0; c < 27; ++c) {
        trVector const v(p[0] - block.f[c][0], p[1] - block.f[c][1], p[2] - block.f[c][2]);
        dist[c] = v.Length();
        unit[c] = v.Normalized();
        if (dist[c] < dmin)
            dmin = dist[c];
    }
    // Weights relative to the nearest, so that the exponentials can't all underflow.
    double w[27], sum = 0.0;
    double values[27][3];
    trVector grad(0.0, 0.0, 0.0);
    for (int c = 0; c < 27; ++c) {
        w[c] = std::exp(-k * (dist[c] - dmin));
        sum += w[c];
        grad += unit[c] * w[c];
        double const *g = ValueGradient(block, c);
        values[c][0] = g[0];
        values[c][1] = g[1];
        values[c][2] = g[2];
    }
    distance = dmin - std::log(sum) / k;
    gradient = grad * (1.0 / sum);
    SetWeightedValue(value, values, w, sum);
}

} // namespace

double trVoronoi2(tr2Vector &nearest, tr2Vector &second, double const *p)
{
    long const *P = perm;
    double const (*G)[2] = grad2;
    // The hash offsets come from the offset table, cut to integers.
    long const ox[2] = {long(noff1[1]), long(noff1[2])};
    long const oy[2] = {long(noff1[4]), long(noff1[5])};
    long const ov[2] = {long(noff1[100]), long(noff1[101])};
    long const bx = Floor(p[0]), by = Floor(p[1]);
    double d1 = kFar, d2 = kFar;
    tr2Vector n(kFar, 0.0), s(kFar, 0.0);
    long winX = bx, winY = by;
    for (long dy = -1; dy <= 1; ++dy) {
        long const y = Step(by, dy);
        for (long dx = -1; dx <= 1; ++dx) {
            long const x = Step(bx, dx);
            double const hx = G[P[P[Byte(x, ox[0])] + Byte(y, ox[1])]][0];
            double const hy = G[P[P[Byte(x, oy[0])] + Byte(y, oy[1])]][0];
            double const vx = p[0] - (double(x) + 0.5 + 0.5 * hx);
            double const vy = p[1] - (double(y) + 0.5 + 0.5 * hy);
            double const d = vx * vx + vy * vy;
            if (d < d1) {
                d2 = d1;
                s = n;
                d1 = d;
                n = tr2Vector(vx, vy);
                winX = x;
                winY = y;
            } else if (d < d2) {
                d2 = d;
                s = tr2Vector(vx, vy);
            }
        }
    }
    nearest = n;
    second = s;
    return 0.5 * G[P[P[Byte(winX, ov[0])] + Byte(winY, ov[1])]][0];
}

template <> void trVoronoi3<float>(float &value, trVector &nearest, trVector &second, double const *p)
{
    Voronoi3(value, nearest, second, p);
}

template <> void trVoronoi3<double>(double &value, trVector &nearest, trVector &second, double const *p)
{
    Voronoi3(value, nearest, second, p);
}

template <> void trVoronoi3<trFCol>(trFCol &value, trVector &nearest, trVector &second, double const *p)
{
    Voronoi3(value, nearest, second, p);
}

template <>
void trOldSmoothVoronoi3<float>(float &value, double &distance, trVector &gradient, double const *p,
                                double const *sharpness)
{
    OldSmoothVoronoi3(value, distance, gradient, p, sharpness);
}

template <>
void trOldSmoothVoronoi3<double>(double &value, double &distance, trVector &gradient, double const *p,
                                 double const *sharpness)
{
    OldSmoothVoronoi3(value, distance, gradient, p, sharpness);
}

template <>
void trOldSmoothVoronoi3<trFCol>(trFCol &value, double &distance, trVector &gradient, double const *p,
                                 double const *sharpness)
{
    OldSmoothVoronoi3(value, distance, gradient, p, sharpness);
}

void trDEV_SmoothVoronoi3(double &out, double const *p, double const &a, double const &b)
{
    trCellBlock block;
    FillBlock(block, p);
    double dist[27];
    double dmin = 1e300;
    for (int c = 0; c < 27; ++c) {
        double const vx = p[0] - block.f[c][0];
        double const vy = p[1] - block.f[c][1];
        double const vz = p[2] - block.f[c][2];
        dist[c] = std::sqrt(vx * vx + vy * vy + vz * vz);
        if (dist[c] < dmin)
            dmin = dist[c];
    }
    double sum = 0.0;
    for (int c = 0; c < 27; ++c) {
        int const d[3] = {c % 3 - 1, c / 3 % 3 - 1, c / 9 - 1};
        double fade = 1.0;
        for (int k = 0; k < 3; ++k) {
            // f: the feature's place in its cell; u: the point's offset from it.
            double const f = block.f[c][k] - double(Step(block.base[k], d[k]));
            double const u = p[k] - block.f[c][k];
            double const right = 1.0 - u / (2.0 - f);
            double const left = 1.0 + u / (1.0 + f);
            double t = right < left ? right : left;
            t = t < 0.0 ? 0.0 : (t > 1.0 ? 1.0 : t);
            fade *= (3.0 - 2.0 * t) * t * t;
        }
        if (fade <= 1e-12)
            continue;
        sum += fade * std::exp(-(dist[c] - dmin) * b);
    }
    out = dmin - a * std::log(sum + 1e-6);
}

void trDEV_SmoothVoronoiFace3(trVector &out, trVector const &p)
{
    double const xyz[3] = {p.x, p.y, p.z};
    double const sharpness = 64.0;
    double value, distance;
    trVector gradient;
    trOldSmoothVoronoi3(value, distance, gradient, xyz, &sharpness);
    out = trVector(0.0, distance, 0.0);
}

void trSharpVoronoiFace3(trVector &out, trVector const &p, trVector const &direction)
{
    out = p;
    double const length = direction.Length();
    if (!(length > 1e-12))
        return;
    trVector const unit = direction * (1.0 / length);
    trVector nearest, second;
    double value;
    double const xyz[3] = {p.x, p.y, p.z};
    trVoronoi3(value, nearest, second, xyz);
    trVector const home = p - nearest; // the feature whose cell p is in

    // Every point of a cell lies within sqrt(3) of its feature, so 3.5 along the line is
    // past the face. Each step meets the bisector of the home feature and the nearest
    // other one at the current point; that face is nearer to p than the current point,
    // so the steps only move back, and they stop on the face of the home cell.
    double t = 3.5;
    trVector x = p + unit * t;
    for (int step = 0; step < 64; ++step) {
        double const at[3] = {x.x, x.y, x.z};
        trVoronoi3(value, nearest, second, at);
        trVector other = x - nearest;
        if ((other - home).LengthSq() < 1e-18)
            other = x - second;
        trVector const normal = other - home;
        trVector const mid = (home + other) * 0.5;
        double denom = unit.Dot(normal);
        if (std::fabs(denom) <= 1e-12)
            denom = denom < 0.0 ? -1e-12 : 1e-12;
        double const next = (mid - p).Dot(normal) / denom;
        double const moved = (next - t) * (next - t);
        t = next;
        x = p + unit * t;
        if (moved < 1e-14)
            break;
    }
    out = x;
}
