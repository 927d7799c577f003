#pragma once
// The kinds of image a render can produce, one per element of a render target.

// Values are stored in image lists and files; never renumber them.
enum trRenderElementType : int {
    svRgb = 0,
    svAlpha = 1,
    svSurfRgb = 2,
    svSurfAlpha = 3,
    svAtmoRgb = 4,
    svAtmoAlpha = 5,
    svCloudRgb = 6,
    svCloudAlpha = 7,
    svSurfDepth = 8,
    svSurfPos = 9,
    svSurfNormal = 10,
    svSurf2dMotion = 11,
    svSurfDiffCol = 12,
    svSurfEmit = 13,
    svSurfDirect = 14,
    svSurfDirectDiff = 15,
    svSurfDirectSpec = 16,
    svSurfIndirect = 17,
    svSurfIndirectDiff = 18,
    svSurfIndirectDiffRefl = 19,
    svSurfIndirectDiffTrans = 20,
    svSurfIndirectSpec = 21,
    svSurfIndirectSpecRefl = 22,
    svSurfIndirectSpecTrans = 23,
    svAtmoDirect = 24,
    svAtmoIndirect = 25,
    svCloudDepth = 26,
    svCloudPos = 27,
    svCloud2dMotion = 28,
    svCloudDirect = 29,
    svCloudIndirect = 30,
    svSampleRate = 31,
    // The binned path tracer's element: a run of 27 consecutive images, no name.
    svBinnedPathTracer = 32,
};

// Number of named elements (svRgb .. svSampleRate).
constexpr int trNumNamedRenderElements = 32;

// Which switch of a render layer an element also needs: surface elements need surfaces
// to be allowed visible, atmosphere and cloud elements the atmosphere.
enum trRenderElementGate : int {
    trRenderElementGateNone = 0,
    trRenderElementGateSurfaces = 1,
    trRenderElementGateAtmosphere = 2,
};

// One row of the element table. Elements with no layer parameter have null
// parameter and display names.
struct trRenderElementInfo {
    trRenderElementType type;
    char const *name;        // "svRgb", ...
    char const *paramName;   // the render layer's flag, or null
    char const *displayName; // shown beside the flag, or null
    int gate;                // a trRenderElementGate
};

// The row of a named element, or null for any other value.
trRenderElementInfo const *trRenderElementInfoFor(int type);
// The element's name, or "" for a value with no name.
char const *trRenderElementName(int type);
