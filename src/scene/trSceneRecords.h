#pragma once
// The records of the scene store's tables. They are kept small because scenes hold
// tens of millions of them: handles inside records are 32-bit.

#include "foundation/trString.h"
#include "foundation/trVector.h"

#include <cstddef>
#include <cstdint>
#include <memory>

class trScene;

// Single precision, relative to the owning scene's transform.
struct trPoint {
    float x = 0.0f, y = 0.0f, z = 0.0f;
    trPoint() = default;
    trPoint(float ax, float ay, float az) : x(ax), y(ay), z(az) {}
    trVector Vec() const { return trVector(x, y, z); }
};
using trNormal = trPoint;
using trTexVert = trPoint;

// Three point handles come first, as three 32-bit integers in a row, so the
// triangle table can serve as an index buffer of stride 48 without a copy. The
// handles are 1-based; an index buffer wants pts[i] - 1, which the accelerators
// get by offsetting the vertex buffer by one point.
struct trTri {
    std::uint32_t pts[3] = {0, 0, 0};
    std::uint32_t normals[3] = {0, 0, 0};    // 0: none
    std::uint32_t texVerts[3] = {0, 0, 0};   // 0: none
    std::uint32_t material = 0;              // 0: none
    void *data = nullptr;

    trTri() = default;
    trTri(unsigned long p0, unsigned long p1, unsigned long p2, unsigned long mat, void *userData)
    {
        SetPts(p0, p1, p2);
        SetMat(mat);
        data = userData;
    }
    trTri(unsigned long p0, unsigned long p1, unsigned long p2, unsigned long n0, unsigned long n1,
          unsigned long n2, unsigned long t0, unsigned long t1, unsigned long t2, unsigned long mat,
          void *userData)
    {
        SetPts(p0, p1, p2);
        SetNormals(n0, n1, n2);
        SetTexVerts(t0, t1, t2);
        SetMat(mat);
        data = userData;
    }
    void SetPts(unsigned long a, unsigned long b, unsigned long c) { Set3(pts, a, b, c); }
    void SetNormals(unsigned long a, unsigned long b, unsigned long c) { Set3(normals, a, b, c); }
    void SetTexVerts(unsigned long a, unsigned long b, unsigned long c) { Set3(texVerts, a, b, c); }
    void SetMat(unsigned long m) { material = std::uint32_t(m); }
    bool HasNormals() const { return normals[0] && normals[1] && normals[2]; }
    bool HasTexVerts() const { return texVerts[0] && texVerts[1] && texVerts[2]; }

private:
    static void Set3(std::uint32_t *h, unsigned long a, unsigned long b, unsigned long c)
    {
        h[0] = std::uint32_t(a);
        h[1] = std::uint32_t(b);
        h[2] = std::uint32_t(c);
    }
};

// Kept in chunks that never move. The material is a 32-bit handle so the record
// stays at 20 bytes; -1 means none yet.
class trParticle {
public:
    float pos[3] = {0.0f, 0.0f, 0.0f};
    float size = 0.0f;
    std::int32_t material = -1;

    trVector Pos() const { return trVector(pos[0], pos[1], pos[2]); }
    void SetPos(trVector const &p)
    {
        pos[0] = float(p.x);
        pos[1] = float(p.y);
        pos[2] = float(p.z);
    }
    float Size() const { return size; }
    void SetSize(float s) { size = s; }
    long Material() const { return material; }
    void SetMaterial(long m) { material = std::int32_t(m); }
};

static_assert(sizeof(trPoint) == 12, "a point is three floats");
static_assert(sizeof(trTri) == 48, "a tri is ten 32-bit handles and a pointer");
static_assert(offsetof(trTri, pts) == 0 && sizeof(trTri::pts) == 12, "point handles lead the tri record");
static_assert(sizeof(trParticle) == 20, "a particle is five 4-byte fields");

// How visible a scene is. The values are ordered: a combination takes the lesser.
enum trSceneVisibilityMode : std::int32_t {
    trSceneVisibilityInvisible = 0,
    trSceneVisibilityHoldout = 1,
    trSceneVisibilityVisible = 2,
};

// What a group lets its scene do; the defaults allow everything.
struct trSceneGroupAffector {
    trSceneVisibilityMode AllowedVisibilityMode = trSceneVisibilityVisible;
    unsigned char MayBeVisibleInReflections = 1;
    unsigned char MayCastShadows = 1;

    void Set(trSceneVisibilityMode mode, bool visibleInReflections, bool castShadows)
    {
        AllowedVisibilityMode = mode;
        MayBeVisibleInReflections = visibleInReflections;
        MayCastShadows = castShadows;
    }
    void Reset() { *this = trSceneGroupAffector(); }
    bool AllowsAll() const
    {
        return AllowedVisibilityMode == trSceneVisibilityVisible && MayBeVisibleInReflections && MayCastShadows;
    }
};
static_assert(sizeof(trSceneGroupAffector) == 8, "an affector is a mode and two bytes");

// A named sub-scene. Groups may share a scene: that is how instancing works.
class trGeomGroup {
public:
    trGeomGroup() = default;
    trGeomGroup(trString const &name, trSceneGroupAffector const *affector, std::shared_ptr<trScene> scene);
    ~trGeomGroup();
    trGeomGroup(trGeomGroup const &other);
    trGeomGroup(trGeomGroup &&other) noexcept;
    trGeomGroup &operator=(trGeomGroup const &other);
    trGeomGroup &operator=(trGeomGroup &&other) noexcept;

    // Makes a new scene that only this group holds, not yet Init'ed; false if out of memory.
    bool CreateOwnedScene();
    std::shared_ptr<trScene> const &Subscene() const { return scene; }
    trScene *SubsceneRawPtr() const { return scene.get(); }
    trString const &Name() const { return name; }
    // Null means the group allows everything.
    trSceneGroupAffector const *SceneGroupAffector() const { return affector; }
    void Release();

    bool IsEnabled() const { return enabled; }
    void SetEnabled(bool e) { enabled = e; }

    // The sub-scene's own settings ANDed with what the affector allows; a group
    // without a scene casts nothing and is invisible.
    bool CastsShadows() const;
    bool IsVisibleInReflections() const;
    trSceneVisibilityMode VisibilityModeInRasteriser() const;
    trSceneVisibilityMode VisibilityModeInRayTracer() const;
    bool IsVisibleOrHoldoutInRasteriser() const { return VisibilityModeInRasteriser() >= trSceneVisibilityHoldout; }
    bool IsVisibleOrHoldoutInRayTracer() const { return VisibilityModeInRayTracer() >= trSceneVisibilityHoldout; }

private:
    trString name;
    trSceneGroupAffector *affector = nullptr;
    std::shared_ptr<trScene> scene;
    bool enabled = true;
};
static_assert(sizeof(trGeomGroup) == 96, "a group is a name, an affector, a shared scene and a flag");
