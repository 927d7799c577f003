#pragma once
// Lattice gradient noise in one to four dimensions, cell noise and the random offset
// tables that shaders use to decorrelate octaves. Every value here comes from fixed
// seeds, so that a project renders the same on every machine and every frame.

#include "foundation/trVector.h"

class trFCol;

// Fills the tables once; later calls return at once. Runs at load, before any shader.
void trNoiseInit();

// The tables, read-only once trNoiseInit has run. Each gradient table and `perm` holds
// its first 256 entries twice, so that the sum of two bytes indexes it without a mask.
extern long const (&perm)[512];
extern double const (&grad1)[512];
extern double const (&grad2)[512][2];
extern double const (&grad3)[512][3];
extern double const (&grad4)[512][4];
extern double const (&noff1)[256];
extern double const (&noff2)[256][2];
extern double const (&noff3)[256][3];
extern double const (&noff4)[256][4];
extern unsigned long const (&cellInts)[1536];

// Large random offsets, chosen by seed modulo 256; all zero before trNoiseInit.
double trNoff1(int seed);
tr2Vector trNoff2(int seed);
trVector trNoff3(int seed);
// Three entries of noff1, one per axis.
trVector trNoff3(int seedX, int seedY, int seedZ);

// Gradient noise: 0 on the integer lattice, roughly -1..1 between, period 256.
double trNoise1(double x);
double trNoise2(double const *p);
double trNoise3(double const *p);
double trNoise4(double const *p);

// A value in -0.5..0.5 per integer cell; only the low byte of each coordinate counts.
double trCellNoise2(int const *cell);
double trCellNoise3(int const *cell);
// A random 32-bit integer per cell, over the same hash as trCellNoise3.
unsigned long trCellInt3(int const *cell);
// T is float, double (both equal trCellNoise3) or trFCol (three components).
template <class T> void trCellNoise3(T &value, int const *cell);
template <> void trCellNoise3<float>(float &value, int const *cell);
template <> void trCellNoise3<double>(double &value, int const *cell);
template <> void trCellNoise3<trFCol>(trFCol &value, int const *cell);

// Value noise with linear weights: one gradient component per lattice corner.
double trLerpNoise3(double const *p);
// trLerpNoise3 with its x and y blends narrowed to ramps of the given widths.
double trLerpNoise3_SmoothXY(double const *p, double const *width);
// The older value noise, blended with weights (1 - t) and t.
double trOldSharpNoise3(double const *p);
