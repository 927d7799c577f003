#pragma once
// Gradient noise objects that remember the lattice cell of the last point. A shader
// marching along a ray samples many points per cell; the cache skips the floors and
// the corner hashes there, and the result stays bit for bit that of trNoise3/trNoise4.
// An object belongs to one thread; copying it copies the cache.

#include "foundation/trVector.h"

class trNoiseInst3 {
public:
    trNoiseInst3() = default;
    virtual ~trNoiseInst3() = default;

    // Clears the cache; the offset is trNoff3(seed) when useOffset, otherwise zero.
    void Init(bool useOffset, int seed);
    // trNoise3 at p plus the offset. The second argument has no part in 3D noise.
    double Noise(trVector const &p, double const &)
    {
        return Noise3(p.x + offset[0], p.y + offset[1], p.z + offset[2]);
    }
    // trNoise3 at p, with no offset.
    double Noise3(double const *p) { return Noise3(p[0], p[1], p[2]); }

private:
    double Noise3(double x, double y, double z);

    bool cacheValid = false;
    long cell[3] = {};         // floor of each coordinate, after the 4096 shift
    double origin[3] = {};     // the same as doubles: fractions are taken against these
    long lo[3] = {};           // cell & 255 per axis
    long hi[3] = {};           // (cell + 1) & 255 per axis
    long corner[8] = {};       // gradient index of each corner, x fastest
    bool useOffset = false;
    int seed = 0;
    double offset[3] = {};
};

class trNoiseInst4 {
public:
    trNoiseInst4() = default;
    virtual ~trNoiseInst4() = default;

    // Clears the cache; the offset is trNoff3(seed) when useOffset, otherwise zero.
    void Init(bool useOffset, int seed);
    // trNoise4 at (p plus the offset, w); the fourth coordinate carries no offset.
    double Noise(trVector const &p, double const &w)
    {
        return Noise4(p.x + offset[0], p.y + offset[1], p.z + offset[2], w);
    }
    // trNoise4 at p, with no offset.
    double Noise4(double const *p) { return Noise4(p[0], p[1], p[2], p[3]); }

private:
    double Noise4(double x, double y, double z, double w);

    bool cacheValid = false;
    long cell[4] = {};
    double origin[4] = {};
    long lo[4] = {};
    long hi[4] = {};
    long corner[16] = {};
    bool useOffset = false;
    int seed = 0;
    double offset[3] = {};
};
