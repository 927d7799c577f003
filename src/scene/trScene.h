#pragma once
// The render-ready form of geometry: flat tables of points, normals, texture
// vertices, triangles, materials, lights and particles, and groups that each hold
// a sub-scene. Every Add... returns a 1-based handle into its table, 0 on failure.
// While a group is open, adds go to its sub-scene, so handles are relative to the
// scene that holds them and a scene maker never sees the nesting.

#include "foundation/trBoundingBox.h"
#include "foundation/trString.h"
#include "foundation/trTransform.h"
#include "foundation/trVector.h"
#include "scene/trLight.h"
#include "scene/trSceneRecords.h"

#include <cstdio>
#include <memory>
#include <vector>

class trMaterial;
class trShader;
class trParticleInflator;
class trRender;
class trRenderTriCache;
class trAtmosList;
namespace trSkeleton {
class Skeleton;
}

class trScene : public std::enable_shared_from_this<trScene> {
public:
    static constexpr unsigned long kParticlesPerChunk = 32768;
    static constexpr unsigned long kMaxParticleChunks = 32768;
    static constexpr unsigned long kMaxParticles = kParticlesPerChunk * kMaxParticleChunks;  // 2^30
    // Handles in records are 32-bit.
    static constexpr unsigned long kMaxTableSize = 0xffffffffUL;

    trScene();
    ~trScene();
    // A copy shares its groups' sub-scenes and none of the render caches.
    trScene(trScene const &other);
    trScene &operator=(trScene const &other);

    // ---- Lifecycle ----
    // Empties the scene, sets identity transforms and the defaults, and makes the
    // skeleton and the atmosphere list. Returns 1.
    long Init();
    // Back to empty, keeping table capacity. Returns 1.
    long Cleanup();

    // ---- Transform: points are stored relative to it ----
    void SetTransform(trMatrix4x4<double> const &toParent);
    trMatrix4x4<double> const &GetTransform() const { return transform; }
    trMatrix4x4<double> const &GetInverseTransform() const { return inverseTransform; }

    // ---- Adding (redirected into the open group) ----
    unsigned long AddMaterial(trMaterial const &material);
    // Non-finite coordinates are refused with a message.
    unsigned long AddPoint(trVector const &p);
    unsigned long AddNormal(trVector const &n);
    unsigned long AddTexVert(trVector const &t);
    unsigned long AddParticle(trVector const &pos, float size, long material = -1);
    // Point handles must exist; normal, texture and material handles may be 0 (none)
    // but not past the end. A degenerate tri is kept: it renders as nothing.
    unsigned long AddTri(trTri const &tri);
    unsigned long AddTri(unsigned long p0, unsigned long p1, unsigned long p2, unsigned long material = 0,
                         void *data = nullptr);
    unsigned long AddLight(trLight const &light);
    unsigned long AddAtmosphere(trShader *shader);

    // Four points and two tris; the handle of the second tri, or 0.
    unsigned long AddPolyPlane(trVector const &corner, trVector const &edgeA, trVector const &edgeB,
                               unsigned long material);
    // With subdivideLongSide, a thin plane is cut into near-square pieces along its longer edge.
    unsigned long AddPolyPlane(trVector const &corner, trVector const &edgeA, trVector const &edgeB,
                               bool subdivideLongSide, unsigned long material);
    // A flat ring (a disc when innerRadius is 0); the last tri's handle, or 0.
    unsigned long AddPolyDisc(trVector const &centre, double outerRadius, double innerRadius,
                              trVector const &normal, double startAngle, long segments, unsigned long material);
    // An open tube of the given height along the normal.
    unsigned long AddPolyCylinder(trVector const &centre, double radius, double height, trVector const &normal,
                                  double startAngle, long segments, unsigned long material);
    unsigned long AddPolySphere(trVector const &centre, trVector const &radii, trVector const &axis,
                                double startAngle, long segments, long rings, bool withNormals, bool withTexture,
                                unsigned long material);
    unsigned long AddPolySphere(trVector const &centre, trVector const &radii, long segments, long rings,
                                unsigned long material);

    // A group holding `scene`, which may be held by other groups too. The group's handle, or 0.
    unsigned long AddScene(std::shared_ptr<trScene> scene);
    unsigned long AddScene(std::shared_ptr<trScene> scene, trString const &name);

    void AssignOverrideSurfaceShader(trShader *shader) { overrideSurfaceShader = shader; }
    trShader *GetOverrideSurfaceShader() const { return overrideSurfaceShader; }
    void AssignParticleInflator(trParticleInflator *inflator) { particleInflator = inflator; }
    trParticleInflator *GetParticleInflator() const { return particleInflator; }
    // Empties the normal table and clears every tri's normal handles; with
    // inGroups, also in every sub-scene.
    void ClearNormals(bool inGroups);
    // The unit geometric normal of `tri`, in this scene's space (zero for a
    // degenerate tri). With addNormal, it is also added to the normal table and
    // set as all three of the tri's normals.
    trVector CalcTriNormal(trTri *tri, bool addNormal);
    // 0 clears it; a handle past the end is refused. Returns 1 on success.
    long SetBackgroundMaterial(unsigned long material);
    unsigned long GetBackgroundMaterial() const { return backgroundMaterial; }

    // ---- Groups ----
    unsigned long BeginGroup();
    unsigned long BeginGroup(trString const &name);
    void EndGroup();
    void BeginGroupAffectors(trSceneVisibilityMode mode, bool visibleInReflections, bool castShadows);
    void EndGroupAffectors();
    // The 1-based handle of the open group of this scene, 0 if none.
    long OpenGroupIndex() const { return openGroupIndex; }
    // The scene that adds go to now: the sub-scene of the innermost open group, or this.
    trScene *InnermostOpenScene();

    // ---- Reading ----
    unsigned long NumMaterials() const { return materials.size(); }
    unsigned long NumPts() const { return points.size(); }
    unsigned long NumTexVerts() const { return texVerts.size(); }
    unsigned long NumNormals() const { return normals.size(); }
    unsigned long NumParticles() const { return numParticles; }
    unsigned long NumTris() const { return tris.size(); }
    unsigned long NumLights() const { return lights.size(); }
    unsigned long NumGroups() const { return groups.size(); }
    unsigned long NumAtmospheres() const { return atmospheres.size(); }

    // Null for handle 0 or past the end.
    trPoint *GetPPoint(unsigned long h) { return h && h <= points.size() ? &points[h - 1] : nullptr; }
    trTexVert *GetPTexVert(unsigned long h) { return h && h <= texVerts.size() ? &texVerts[h - 1] : nullptr; }
    trNormal *GetPNormal(unsigned long h) { return h && h <= normals.size() ? &normals[h - 1] : nullptr; }
    trTri *GetPTri(unsigned long h) { return h && h <= tris.size() ? &tris[h - 1] : nullptr; }
    trLight *GetPLight(unsigned long h) { return h && h <= lights.size() ? &lights[h - 1] : nullptr; }
    trGeomGroup *GetPGroup(unsigned long h) { return h && h <= groups.size() ? &groups[h - 1] : nullptr; }
    trParticle *GetPParticle(unsigned long h);
    trShader *GetAtmosphere(unsigned long h) const { return h && h <= atmospheres.size() ? atmospheres[h - 1] : nullptr; }
    // The index in the process-wide material table for a handle of this scene, -1 if none.
    long GetPersistentMaterialIndex(unsigned long h) const;
    trMaterial *GetPMaterial(unsigned long h) const;
    // The triangle table, for handing to an accelerator as an index buffer.
    trTri const *TriData() const { return tris.data(); }
    trPoint const *PointData() const { return points.data(); }

    // Points of the given handles as vectors; with toParent, through the scene's
    // transform. Handle 0 or past the end gives the origin.
    void GetPointVecs(std::uint32_t const *handles, trVector *out, int count, bool toParent) const;
    // Handle 0 (none) or past the end gives zero.
    void GetTexVecs(std::uint32_t const *handles, trVector *out, int count) const;
    // With toParent, normals go through the inverse transpose and are renormalised.
    void GetNormals(std::uint32_t const *handles, trVector *out, int count, bool toParent) const;

    // The box of every point, particle and group below, in the space of this
    // scene's parent; empty when the scene holds nothing.
    trBoundingBox BoundingBox() const;

    // Writes a text report for debugging.
    void Dump(std::FILE *out) const;

    // ---- Flags ----
    bool AllowsTriSubdivision() const { return allowsTriSubdivision; }
    bool AllowsOpacityShaders() const { return allowsOpacityShaders; }
    bool IsAllowedInRendersThatSubdivide() const { return isAllowedInRendersThatSubdivide; }
    bool CastsShadows() const { return castsShadows; }
    bool IsVisibleInReflections() const { return isVisibleInReflections; }
    void SetAllowsTriSubdivision(bool b) { allowsTriSubdivision = b; }
    void SetAllowsOpacityShaders(bool b) { allowsOpacityShaders = b; }
    void SetIsAllowedInRendersThatSubdivide(bool b) { isAllowedInRendersThatSubdivide = b; }
    void SetCastsShadows(bool b) { castsShadows = b; }
    void SetIsVisibleInReflections(bool b) { isVisibleInReflections = b; }
    trSceneVisibilityMode VisibilityMode() const { return visibilityMode; }
    trSceneVisibilityMode VisibilityModeInRasteriser() const { return visibilityModeInRasteriser; }
    trSceneVisibilityMode VisibilityModeInRayTracer() const { return visibilityModeInRayTracer; }
    void SetVisibilityMode(trSceneVisibilityMode m) { visibilityMode = m; }
    void SetVisibilityModeInRasteriser(trSceneVisibilityMode m) { visibilityModeInRasteriser = m; }
    void SetVisibilityModeInRayTracer(trSceneVisibilityMode m) { visibilityModeInRayTracer = m; }
    double SortingBias() const { return sortingBias; }
    void SetSortingBias(double b) { sortingBias = b; }
    trSceneGroupAffector const &CurrentGroupAffector() const { return currentAffector; }

    // ---- Render state, filled by preparation ----
    bool IsPreppedForRender() const { return preppedForRender; }
    bool IsSorted() const { return sorted; }
    trRender *PRender() const { return render; }
    void SetPRender(trRender *r) { render = r; }
    trSkeleton::Skeleton *Skeleton() const { return skeleton; }
    trAtmosList *AtmosList() const { return atmosList; }
    trScene *Progenitor() const { return progenitor; }
    void SetProgenitor(trScene *p) { progenitor = p; }

private:
    // The sub-scene an add goes to, or null for this scene.
    std::shared_ptr<trScene> OpenSubscene() const;
    unsigned long AppendGroup(trString const &name, std::shared_ptr<trScene> scene);
    bool AllocParticleList();
    trParticle const *GetPParticleConst(unsigned long h) const;
    void FreeParticles();
    void CopyFrom(trScene const &other);
    unsigned long AddRing(char const *who, trVector const &centre, double radiusA, double radiusB, double height,
                          trVector const &normal, double startAngle, long segments, unsigned long material);

    trMatrix4x4<double> transform;
    trMatrix4x4<double> inverseTransform;
    std::vector<unsigned long> materials;  // global indices
    std::vector<trPoint> points;
    std::vector<trNormal> normals;
    std::vector<trTexVert> texVerts;
    unsigned long numParticles = 0;
    trParticle **particleChunks = nullptr;
    std::vector<trTri> tris;
    std::vector<trLight> lights;
    std::vector<trShader *> atmospheres;
    std::vector<trGeomGroup> groups;
    long openGroupIndex = 0;
    double sortingBias = 0.0;
    bool allowsTriSubdivision = true;
    bool allowsOpacityShaders = true;
    bool isAllowedInRendersThatSubdivide = true;
    bool castsShadows = true;
    bool isVisibleInReflections = true;
    trSceneVisibilityMode visibilityMode = trSceneVisibilityVisible;
    trSceneVisibilityMode visibilityModeInRasteriser = trSceneVisibilityVisible;
    trSceneVisibilityMode visibilityModeInRayTracer = trSceneVisibilityVisible;
    trSceneGroupAffector currentAffector;
    bool preppedForRender = false;
    bool sorted = false;
    trShader *overrideSurfaceShader = nullptr;
    trParticleInflator *particleInflator = nullptr;
    unsigned long backgroundMaterial = 0;
    trRender *render = nullptr;
    trSkeleton::Skeleton *skeleton = nullptr;
    trAtmosList *atmosList = nullptr;
    trRenderTriCache *renderTriCache = nullptr;
    bool ownsRenderTriCache = false;
    trScene *progenitor = nullptr;
};

// Opens a group for the life of the object.
class trScopedSceneGroup {
public:
    trScopedSceneGroup(trScene &scene, trString const &name)
        : scene(scene), holder(scene.InnermostOpenScene()), handle(scene.BeginGroup(name))
    {
    }
    ~trScopedSceneGroup() { scene.EndGroup(); }
    trScopedSceneGroup(trScopedSceneGroup const &) = delete;
    trScopedSceneGroup &operator=(trScopedSceneGroup const &) = delete;

    // The group's handle in the scene that holds it (the innermost open one at
    // construction); 0 if it failed.
    unsigned long GetHGroup() const { return handle; }
    trGeomGroup *GetPGroup() const { return holder->GetPGroup(handle); }

private:
    trScene &scene;
    trScene *holder;
    unsigned long handle;
};
