#pragma once
// Voronoi (cellular) patterns over one jittered feature point per unit cell, and the
// soft forms that round off the cell edges. They read the tables of trNoiseInit.

#include "foundation/trVector.h"

class trFCol;

// Nearest and second-nearest feature points around p. `nearest` and `second` are p
// minus each feature (their lengths are the distances); the result is the nearest
// cell's value in -0.5..0.5.
double trVoronoi2(tr2Vector &nearest, tr2Vector &second, double const *p);

// The same in 3D over the 27 cells around p; T is float, double or trFCol (a value
// per channel).
template <class T> void trVoronoi3(T &value, trVector &nearest, trVector &second, double const *p);
template <> void trVoronoi3<float>(float &value, trVector &nearest, trVector &second, double const *p);
template <> void trVoronoi3<double>(double &value, trVector &nearest, trVector &second, double const *p);
template <> void trVoronoi3<trFCol>(trFCol &value, trVector &nearest, trVector &second, double const *p);

// Soft minimum over the same feature points: `distance` is -ln(sum of exp(-k d)) / k
// with k = *sharpness, `gradient` its gradient in p, and `value` the cells' values
// weighted like the distances. Large k approaches trVoronoi3.
template <class T>
void trOldSmoothVoronoi3(T &value, double &distance, trVector &gradient, double const *p,
                         double const *sharpness);
template <>
void trOldSmoothVoronoi3<float>(float &value, double &distance, trVector &gradient, double const *p,
                                double const *sharpness);
template <>
void trOldSmoothVoronoi3<double>(double &value, double &distance, trVector &gradient, double const *p,
                                 double const *sharpness);
template <>
void trOldSmoothVoronoi3<trFCol>(trFCol &value, double &distance, trVector &gradient, double const *p,
                                 double const *sharpness);

// Soft minimum of the feature distances, a the softness and b the falloff, faded out
// at the edge of the search block so that the result has no seams.
void trDEV_SmoothVoronoi3(double &out, double const *p, double const &a, double const &b);
// (0, soft distance, 0), the soft distance at sharpness 64.
void trDEV_SmoothVoronoiFace3(trVector &out, trVector const &p);
// The point where the line from p along `direction` meets the face between the
// nearest and second-nearest cells; p itself for a zero direction.
void trSharpVoronoiFace3(trVector &out, trVector const &p, trVector const &direction);
