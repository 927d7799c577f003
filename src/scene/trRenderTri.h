#pragma once

// One triangle in flight through render-time subdivision: its corners as
// displaced and undisplaced, their normals and texture positions, the edge data
// that keeps a split the same from both sides of an edge, and where the corners
// fall on screen. The subdivision operations (displacement, mid points, sub-tris,
// shading) are added with render-time subdivision; for now this is the record the
// view's split rule and the render state read.

#include "foundation/trColour.h"
#include "foundation/trVector.h"

struct trTri;
class trGeomGroup;

// Where a triangle came from; three words, copied unchanged into every sub-tri.
struct trTriRootInfo {
    long Material = -1;              // persistent material number; negative: none
    trGeomGroup *Group = nullptr;
    trTri const *SourceTri = nullptr;
};

class trRenderTri {
public:
    trRenderTri() = default;
    explicit trRenderTri(trTriRootInfo const &root) : Root(root) {}

    trTriRootInfo Root;
    trVector P[3];    // world corners, displaced
    trVector Pg[3];   // world corners, undisplaced
    trVector Ng[3];   // unit normals: geometric, interpolated, texture space
    trVector Ni[3];
    trVector Nt[3];
    trVector Pt[3];   // texture positions, displaced and undisplaced
    trVector Ptg[3];
    // Edge i runs from corner i to corner i + 1 mod 3. Lengths are -1 until the
    // split rule has measured them; a sub-tri inherits them, halved on the split edge.
    double EdgeLength[3] = {-1.0, -1.0, -1.0};
    int EdgeSplits[3] = {0, 0, 0};  // splits made on each edge so far
    int EdgeKey[3] = {0, 0, 0};     // corner numbers: order an edge the same from both sides
    // Screen positions (x, y in pixels, z the depth value) at shutter start and end.
    trVector ScreenT0[3];
    trVector ScreenT1[3];
    trVector MicroNormal;  // unit normal of the flat tri
    trFCol Blend;          // shading of the parent, faded out as detail comes in
    int Depth = 0;         // splits from the root tri
    int Tag = 0;           // the mid-point ring's tag of the split that made it
};
