#include "scene/trScene.h"

#include "foundation/trMessages.h"
#include "scene/trSkeleton.h"
#include "shading/trMaterial.h"
#include "volumes/trAtmosList.h"

#include <cmath>
#include <cstring>
#include <new>

namespace {

bool IsFinite(trVector const &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// Messages are formatted into a fixed buffer: they are short and this path must
// not fail for want of memory.
template <class... Args>
void Fail(char const *format, Args... args)
{
    char text[256];
    std::snprintf(text, sizeof text, format, args...);
    trOutError(text);
}

trPoint ToPoint(trVector const &v) { return trPoint(float(v.x), float(v.y), float(v.z)); }

// Pushes with the table's limit and memory checked; the new 1-based handle, or 0.
template <class Table, class Item>
unsigned long PushChecked(Table &table, Item const &item, char const *who)
{
    if (table.size() >= trScene::kMaxTableSize) {
        Fail("%s: table is full", who);
        return 0;
    }
    try {
        table.push_back(item);
    } catch (std::bad_alloc const &) {
        Fail("%s: Out of memory", who);
        return 0;
    }
    return table.size();
}

// Two unit vectors spanning the plane across `normal`, right-handed with it.
void PlaneAxes(trVector const &normal, trVector &a, trVector &b)
{
    trVector n = normal.Normalized();
    // The normal turned a quarter about x and three quarters about z; crossing
    // it with the normal gives the first axis.
    trVector r = trMatrix4x4<double>::RotationZ(1.5 * M_PI).MulDirection(
        trMatrix4x4<double>::RotationX(0.5 * M_PI).MulDirection(n));
    a = r.Cross(n);
    // That turn maps normals along (1, -1, -1) onto themselves: fall back to the
    // axis least aligned with the normal.
    if (a.LengthSq() < 1e-12) {
        trVector helper = std::fabs(n.x) < 0.9 ? trVector(1, 0, 0) : trVector(0, 1, 0);
        a = helper.Cross(n);
    }
    a = a.Normalized();
    b = n.Cross(a);
}

} // namespace

// ---- trGeomGroup ----

trGeomGroup::trGeomGroup(trString const &n, trSceneGroupAffector const *a, std::shared_ptr<trScene> s)
    : name(n), affector(a ? new trSceneGroupAffector(*a) : nullptr), scene(std::move(s))
{
}

trGeomGroup::~trGeomGroup() { delete affector; }

trGeomGroup::trGeomGroup(trGeomGroup const &o)
    : name(o.name), affector(o.affector ? new trSceneGroupAffector(*o.affector) : nullptr), scene(o.scene),
      enabled(o.enabled)
{
}

trGeomGroup::trGeomGroup(trGeomGroup &&o) noexcept
    : name(std::move(o.name)), affector(o.affector), scene(std::move(o.scene)), enabled(o.enabled)
{
    o.affector = nullptr;
}

trGeomGroup &trGeomGroup::operator=(trGeomGroup const &o)
{
    if (this != &o) {
        trGeomGroup copy(o);
        *this = std::move(copy);
    }
    return *this;
}

trGeomGroup &trGeomGroup::operator=(trGeomGroup &&o) noexcept
{
    if (this != &o) {
        delete affector;
        name = std::move(o.name);
        affector = o.affector;
        o.affector = nullptr;
        scene = std::move(o.scene);
        enabled = o.enabled;
    }
    return *this;
}

bool trGeomGroup::CreateOwnedScene()
{
    try {
        scene = std::make_shared<trScene>();
    } catch (std::bad_alloc const &) {
        scene.reset();
        return false;
    }
    return true;
}

void trGeomGroup::Release()
{
    scene.reset();
    delete affector;
    affector = nullptr;
}

bool trGeomGroup::CastsShadows() const
{
    return scene && scene->CastsShadows() && (!affector || affector->MayCastShadows);
}

bool trGeomGroup::IsVisibleInReflections() const
{
    return scene && scene->IsVisibleInReflections() && (!affector || affector->MayBeVisibleInReflections);
}

trSceneVisibilityMode trGeomGroup::VisibilityModeInRasteriser() const
{
    if (!scene)
        return trSceneVisibilityInvisible;
    trSceneVisibilityMode m = scene->VisibilityModeInRasteriser();
    return affector && affector->AllowedVisibilityMode < m ? affector->AllowedVisibilityMode : m;
}

trSceneVisibilityMode trGeomGroup::VisibilityModeInRayTracer() const
{
    if (!scene)
        return trSceneVisibilityInvisible;
    trSceneVisibilityMode m = scene->VisibilityModeInRayTracer();
    return affector && affector->AllowedVisibilityMode < m ? affector->AllowedVisibilityMode : m;
}

// ---- Lifecycle ----

trScene::trScene() = default;

trScene::~trScene() { Cleanup(); }

trScene::trScene(trScene const &other) : std::enable_shared_from_this<trScene>(other) { CopyFrom(other); }

trScene &trScene::operator=(trScene const &other)
{
    if (this != &other) {
        Cleanup();
        CopyFrom(other);
    }
    return *this;
}

void trScene::CopyFrom(trScene const &o)
{
    transform = o.transform;
    inverseTransform = o.inverseTransform;
    materials = o.materials;
    points = o.points;
    normals = o.normals;
    texVerts = o.texVerts;
    tris = o.tris;
    lights = o.lights;
    atmospheres = o.atmospheres;
    groups = o.groups;
    openGroupIndex = o.openGroupIndex;
    sortingBias = o.sortingBias;
    allowsTriSubdivision = o.allowsTriSubdivision;
    allowsOpacityShaders = o.allowsOpacityShaders;
    isAllowedInRendersThatSubdivide = o.isAllowedInRendersThatSubdivide;
    castsShadows = o.castsShadows;
    isVisibleInReflections = o.isVisibleInReflections;
    visibilityMode = o.visibilityMode;
    visibilityModeInRasteriser = o.visibilityModeInRasteriser;
    visibilityModeInRayTracer = o.visibilityModeInRayTracer;
    currentAffector = o.currentAffector;
    overrideSurfaceShader = o.overrideSurfaceShader;
    particleInflator = o.particleInflator;
    backgroundMaterial = o.backgroundMaterial;
    // Preparation and its caches belong to the original.
    preppedForRender = false;
    sorted = false;
    render = nullptr;
    renderTriCache = nullptr;
    ownsRenderTriCache = false;
    progenitor = nullptr;
    skeleton = o.skeleton ? new trSkeleton::Skeleton(*o.skeleton) : nullptr;
    atmosList = o.atmosList ? new trAtmosList(*o.atmosList) : nullptr;
    numParticles = 0;
    particleChunks = nullptr;
    if (o.numParticles && AllocParticleList()) {
        unsigned long const used = (o.numParticles + kParticlesPerChunk - 1) / kParticlesPerChunk;
        for (unsigned long c = 0; c < used; ++c) {
            particleChunks[c] = new (std::nothrow) trParticle[kParticlesPerChunk];
            if (!particleChunks[c]) {
                trOutError("trScene: Out of memory copying particles");
                break;
            }
            std::memcpy(particleChunks[c], o.particleChunks[c], sizeof(trParticle) * kParticlesPerChunk);
            unsigned long const end = (c + 1) * kParticlesPerChunk;
            numParticles = end < o.numParticles ? end : o.numParticles;
        }
    }
}

long trScene::Init()
{
    Cleanup();
    transform.SetIdentity();
    inverseTransform.SetIdentity();
    openGroupIndex = 0;
    sortingBias = 0.0;
    allowsTriSubdivision = allowsOpacityShaders = isAllowedInRendersThatSubdivide = true;
    castsShadows = isVisibleInReflections = true;
    visibilityMode = visibilityModeInRasteriser = visibilityModeInRayTracer = trSceneVisibilityVisible;
    currentAffector.Reset();
    overrideSurfaceShader = nullptr;
    particleInflator = nullptr;
    backgroundMaterial = 0;
    render = nullptr;
    progenitor = nullptr;

    // A stand-in skeleton that the object samplers read: a wavy chain.
    skeleton = new trSkeleton::Skeleton;
    for (int i = 0; i < 100; ++i)
        skeleton->AddJoint(trSkeleton::SkJoint(trFVector(float(0.1 * i), float(std::sin(0.2 * i)), 0.0f)));
    for (unsigned long i = 1; i < 100; ++i) {
        trSkeleton::SkBone bone;
        bone.SetJoints(i, i + 1);
        skeleton->AddBone(bone);
    }
    atmosList = new trAtmosList;
    return 1;
}

long trScene::Cleanup()
{
    // The render triangle cache is made and released by preparation; a scene
    // only drops its claim here.
    renderTriCache = nullptr;
    ownsRenderTriCache = false;
    materials.clear();
    points.clear();
    normals.clear();
    texVerts.clear();
    tris.clear();
    lights.clear();
    atmospheres.clear();
    FreeParticles();
    for (trGeomGroup &group : groups) {
        std::shared_ptr<trScene> sub = group.Subscene();
        // A scene other groups still hold is left as it is; one only this group
        // holds is emptied now, while the reference keeps it alive.
        if (sub && sub.use_count() <= 2)
            sub->Cleanup();
        group.Release();
    }
    groups.clear();
    openGroupIndex = 0;
    preppedForRender = false;
    sorted = false;
    delete skeleton;
    skeleton = nullptr;
    delete atmosList;
    atmosList = nullptr;
    return 1;
}

void trScene::SetTransform(trMatrix4x4<double> const &toParent)
{
    transform = toParent;
    inverseTransform = toParent.Inverse();
}

// ---- Groups ----

std::shared_ptr<trScene> trScene::OpenSubscene() const
{
    if (openGroupIndex <= 0 || (unsigned long)openGroupIndex > groups.size())
        return nullptr;
    return groups[openGroupIndex - 1].Subscene();
}

trScene *trScene::InnermostOpenScene()
{
    trScene *scene = this;
    while (std::shared_ptr<trScene> sub = scene->OpenSubscene())
        scene = sub.get();
    return scene;
}

unsigned long trScene::AppendGroup(trString const &name, std::shared_ptr<trScene> scene)
{
    trSceneGroupAffector const *affector = currentAffector.AllowsAll() ? nullptr : &currentAffector;
    return PushChecked(groups, trGeomGroup(name, affector, std::move(scene)), "BeginGroup");
}

unsigned long trScene::BeginGroup() { return BeginGroup(trString()); }

unsigned long trScene::BeginGroup(trString const &name)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->BeginGroup(name);
    unsigned long handle = AppendGroup(name, nullptr);
    if (!handle)
        return 0;
    trGeomGroup &group = groups[handle - 1];
    if (!group.CreateOwnedScene() || !group.SubsceneRawPtr()->Init()) {
        trOutError("BeginGroup: Out of memory");
        groups.pop_back();
        openGroupIndex = 0;
        return 0;
    }
    openGroupIndex = long(handle);
    return handle;
}

void trScene::EndGroup()
{
    std::shared_ptr<trScene> sub = OpenSubscene();
    if (!sub) {
        openGroupIndex = 0;
        return;
    }
    // Groups pair like brackets: the innermost open one closes first.
    if (sub->openGroupIndex) {
        sub->EndGroup();
        return;
    }
    trGeomGroup &group = groups[openGroupIndex - 1];
    trSceneGroupAffector affector;
    if (group.SceneGroupAffector())
        affector = *group.SceneGroupAffector();
    if (atmosList && sub->atmosList) {
        for (long i = 0; i < sub->atmosList->Count(); ++i) {
            trAtmosFlags flags = sub->atmosList->Flags(i);
            if (affector.AllowedVisibilityMode < flags.PrimaryMode)
                flags.PrimaryMode = affector.AllowedVisibilityMode;
            flags.Secondary = flags.Secondary && affector.MayBeVisibleInReflections;
            flags.Shadows = flags.Shadows && affector.MayCastShadows;
            atmosList->Add(sub->atmosList->Shader(i), flags);
        }
    }
    // The group's handle in this scene is its id.
    for (unsigned long m = 1; m <= sub->NumMaterials(); ++m)
        if (trPersistentMaterial *pm = trGetPersistentMaterial(sub->GetPersistentMaterialIndex(m)))
            pm->SetOwnerGroupId(openGroupIndex);
    openGroupIndex = 0;
}

void trScene::BeginGroupAffectors(trSceneVisibilityMode mode, bool visibleInReflections, bool castShadows)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->BeginGroupAffectors(mode, visibleInReflections, castShadows);
    if (mode < trSceneVisibilityInvisible || mode > trSceneVisibilityVisible) {
        Fail("BeginGroupAffectors: unknown visibility mode %d", int(mode));
        return;
    }
    currentAffector.Set(mode, visibleInReflections, castShadows);
}

void trScene::EndGroupAffectors()
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->EndGroupAffectors();
    currentAffector.Reset();
}

unsigned long trScene::AddScene(std::shared_ptr<trScene> scene) { return AddScene(std::move(scene), trString()); }

namespace {

// Whether `root` is `target` or holds it somewhere below.
bool Reaches(trScene *root, trScene const *target, int depth)
{
    if (root == target)
        return true;
    if (depth > 10000)
        return true;  // deeper than any real scene: treat as a cycle
    for (unsigned long g = 1; g <= root->NumGroups(); ++g)
        if (trScene *sub = root->GetPGroup(g)->SubsceneRawPtr(); sub && Reaches(sub, target, depth + 1))
            return true;
    return false;
}

} // namespace

unsigned long trScene::AddScene(std::shared_ptr<trScene> scene, trString const &name)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddScene(std::move(scene), name);
    if (!scene) {
        trOutError("AddScene: no scene given");
        return 0;
    }
    if (Reaches(scene.get(), this, 0)) {
        trOutError("AddScene: a scene can't hold itself");
        return 0;
    }
    char line[256];
    std::snprintf(line, sizeof line, "%.200s adding scene  count = %ld", name.chars, long(scene.use_count()));
    trPrintDebugMessage(line);
    return AppendGroup(name, std::move(scene));
}

// ---- Tables ----

unsigned long trScene::AddMaterial(trMaterial const &material)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddMaterial(material);
    long index = trAddPersistentMaterial(material);
    if (index < 0) {
        trOutError("AddMaterial: Out of memory");
        return 0;
    }
    return PushChecked(materials, (unsigned long)index, "AddMaterial");
}

unsigned long trScene::AddPoint(trVector const &p)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddPoint(p);
    if (!IsFinite(p)) {
        trOutError("AddPoint: coordinates must be finite numbers");
        return 0;
    }
    return PushChecked(points, ToPoint(p), "AddPoint");
}

unsigned long trScene::AddNormal(trVector const &n)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddNormal(n);
    if (!IsFinite(n)) {
        trOutError("AddNormal: coordinates must be finite numbers");
        return 0;
    }
    return PushChecked(normals, ToPoint(n), "AddNormal");
}

unsigned long trScene::AddTexVert(trVector const &t)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddTexVert(t);
    if (!IsFinite(t)) {
        trOutError("AddTexVert: coordinates must be finite numbers");
        return 0;
    }
    return PushChecked(texVerts, ToPoint(t), "AddTexVert");
}

unsigned long trScene::AddTri(unsigned long p0, unsigned long p1, unsigned long p2, unsigned long material,
                              void *data)
{
    // Records hold 32-bit handles: a larger one can't name anything in the scene.
    unsigned long const handles[4] = {p0, p1, p2, material};
    for (unsigned long h : handles)
        if (h > kMaxTableSize) {
            Fail("AddTri: handle %lu is not in the scene", h);
            return 0;
        }
    return AddTri(trTri(p0, p1, p2, material, data));
}

unsigned long trScene::AddTri(trTri const &tri)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddTri(tri);
    unsigned long const np = points.size(), nn = normals.size(), nt = texVerts.size();
    for (int i = 0; i < 3; ++i) {
        if (tri.pts[i] == 0 || tri.pts[i] > np) {
            Fail("AddTri: point handle %lu is not in the scene (%lu points)", (unsigned long)tri.pts[i], np);
            return 0;
        }
        if (tri.normals[i] > nn) {
            Fail("AddTri: normal handle %lu is not in the scene", (unsigned long)tri.normals[i]);
            return 0;
        }
        if (tri.texVerts[i] > nt) {
            Fail("AddTri: texture vertex handle %lu is not in the scene", (unsigned long)tri.texVerts[i]);
            return 0;
        }
    }
    if (tri.material > materials.size()) {
        Fail("AddTri: material handle %lu is not in the scene", (unsigned long)tri.material);
        return 0;
    }
    return PushChecked(tris, tri, "AddTri");
}

unsigned long trScene::AddLight(trLight const &light)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddLight(light);
    if (!IsFinite(light.Pos) || !IsFinite(light.Dir)) {
        trOutError("AddLight: position and direction must be finite numbers");
        return 0;
    }
    return PushChecked(lights, light, "AddLight");
}

// An atmosphere added inside a group goes to the group's scene, so that the
// group's affector applies to it when the group ends.
unsigned long trScene::AddAtmosphere(trShader *shader)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddAtmosphere(shader);
    if (!shader) {
        trOutError("AddAtmosphere: no shader given");
        return 0;
    }
    if (!atmosList) {
        trOutError("AddAtmosphere: the scene has not been initialised");
        return 0;
    }
    unsigned long handle = PushChecked(atmospheres, shader, "AddAtmosphere");
    if (handle)
        atmosList->Add(shader, trAtmosFlags());
    return handle;
}

long trScene::SetBackgroundMaterial(unsigned long material)
{
    if (material > materials.size()) {
        Fail("SetBackgroundMaterial: material handle %lu is not in the scene", material);
        return 0;
    }
    backgroundMaterial = material;
    return 1;
}

long trScene::GetPersistentMaterialIndex(unsigned long h) const
{
    return h && h <= materials.size() ? long(materials[h - 1]) : -1;
}

trMaterial *trScene::GetPMaterial(unsigned long h) const
{
    trPersistentMaterial *pm = trGetPersistentMaterial(GetPersistentMaterialIndex(h));
    return pm ? &pm->Material() : nullptr;
}

// ---- Particles ----

bool trScene::AllocParticleList()
{
    particleChunks = new (std::nothrow) trParticle *[kMaxParticleChunks];
    if (!particleChunks) {
        trError("trScene::AllocParticleList: Cannot allocate list");
        return false;
    }
    std::memset(particleChunks, 0, sizeof(trParticle *) * kMaxParticleChunks);
    return true;
}

void trScene::FreeParticles()
{
    if (particleChunks) {
        for (unsigned long c = 0; c < kMaxParticleChunks && particleChunks[c]; ++c)
            delete[] particleChunks[c];
        delete[] particleChunks;
        particleChunks = nullptr;
    }
    numParticles = 0;
}

unsigned long trScene::AddParticle(trVector const &pos, float size, long material)
{
    if (std::shared_ptr<trScene> sub = OpenSubscene())
        return sub->AddParticle(pos, size, material);
    if (!IsFinite(pos) || !std::isfinite(size)) {
        trOutError("AddParticle: position and size must be finite numbers");
        return 0;
    }
    // -1 and 0 both mean no material.
    if (material < -1 || material > long(materials.size())) {
        Fail("AddParticle: material handle %ld is not in the scene", material);
        return 0;
    }
    if (numParticles >= kMaxParticles) {
        trOutError("AddParticle: maximum count exceeded!");
        return 0;
    }
    if (!particleChunks && !AllocParticleList())
        return 0;
    unsigned long const index = numParticles++;
    unsigned long const chunk = index / kParticlesPerChunk;
    if (!particleChunks[chunk]) {
        // Value-initialised: size 0 and material -1.
        particleChunks[chunk] = new (std::nothrow) trParticle[kParticlesPerChunk]();
        if (!particleChunks[chunk]) {
            trOutError("AddParticle: Out of memory");
            --numParticles;
            return 0;
        }
    }
    trParticle &p = particleChunks[chunk][index % kParticlesPerChunk];
    p.SetPos(pos);
    p.SetSize(size);
    p.SetMaterial(material);
    return numParticles;
}

trParticle *trScene::GetPParticle(unsigned long h)
{
    if (!h || h > numParticles)
        return nullptr;
    return &particleChunks[(h - 1) / kParticlesPerChunk][(h - 1) % kParticlesPerChunk];
}

trParticle const *trScene::GetPParticleConst(unsigned long h) const
{
    return const_cast<trScene *>(this)->GetPParticle(h);
}

// ---- Normals ----

void trScene::ClearNormals(bool inGroups)
{
    normals.clear();
    for (trTri &tri : tris)
        tri.SetNormals(0, 0, 0);
    if (inGroups)
        for (trGeomGroup &group : groups)
            if (std::shared_ptr<trScene> sub = group.Subscene())
                sub->ClearNormals(true);
}

trVector trScene::CalcTriNormal(trTri *tri, bool addNormal)
{
    if (!tri)
        return trVector();
    trVector p[3];
    GetPointVecs(tri->pts, p, 3, false);
    trVector n = (p[1] - p[0]).Cross(p[2] - p[0]);
    // A degenerate tri has no direction: zero, not a blown-up rounding error.
    n = n.LengthSq() > 0.0 ? n.Normalized() : trVector();
    if (addNormal) {
        unsigned long h = PushChecked(normals, ToPoint(n), "CalcTriNormal");
        if (h)
            tri->SetNormals(h, h, h);
    }
    return n;
}

void trScene::GetPointVecs(std::uint32_t const *handles, trVector *out, int count, bool toParent) const
{
    for (int i = 0; i < count; ++i) {
        std::uint32_t h = handles[i];
        out[i] = h && h <= points.size() ? points[h - 1].Vec() : trVector();
        if (toParent)
            out[i] = transform.MulPoint(out[i]);
    }
}

void trScene::GetTexVecs(std::uint32_t const *handles, trVector *out, int count) const
{
    for (int i = 0; i < count; ++i) {
        std::uint32_t h = handles[i];
        out[i] = h && h <= texVerts.size() ? texVerts[h - 1].Vec() : trVector();
    }
}

void trScene::GetNormals(std::uint32_t const *handles, trVector *out, int count, bool toParent) const
{
    for (int i = 0; i < count; ++i) {
        std::uint32_t h = handles[i];
        out[i] = h && h <= normals.size() ? normals[h - 1].Vec() : trVector();
        if (toParent && out[i].LengthSq() > 0.0)
            out[i] = inverseTransform.MulNormalByTranspose(out[i]).Normalized();
    }
}

// ---- Shapes ----

unsigned long trScene::AddPolyPlane(trVector const &corner, trVector const &edgeA, trVector const &edgeB,
                                    unsigned long material)
{
    unsigned long p0 = AddPoint(corner);
    unsigned long p1 = AddPoint(corner + edgeA);
    unsigned long p2 = AddPoint(corner + edgeA + edgeB);
    unsigned long p3 = AddPoint(corner + edgeB);
    if (!p0 || !p1 || !p2 || !p3)
        return 0;
    if (!AddTri(p0, p1, p2, material))
        return 0;
    return AddTri(p0, p2, p3, material);
}

unsigned long trScene::AddPolyPlane(trVector const &corner, trVector const &edgeA, trVector const &edgeB,
                                    bool subdivideLongSide, unsigned long material)
{
    if (!subdivideLongSide)
        return AddPolyPlane(corner, edgeA, edgeB, material);
    double const aSq = edgeA.LengthSq(), bSq = edgeB.LengthSq();
    bool const aLonger = aSq >= bSq;
    double const longerSq = aLonger ? aSq : bSq, shorterSq = aLonger ? bSq : aSq;
    long count = 1000;
    if (shorterSq > 1e-12) {
        double c = std::floor(std::sqrt(longerSq / shorterSq) + 0.5);
        count = c < 1000.0 ? long(c) : 1000;
    }
    if (count < 1)
        count = 1;
    trVector const step = (aLonger ? edgeA : edgeB) / double(count);
    unsigned long last = 0;
    for (long i = 0; i < count; ++i) {
        trVector const start = corner + step * double(i);
        last = aLonger ? AddPolyPlane(start, step, edgeB, material) : AddPolyPlane(start, edgeA, step, material);
        if (!last)
            return 0;
    }
    return last;
}

unsigned long trScene::AddRing(char const *who, trVector const &centre, double radiusA, double radiusB,
                               double height, trVector const &normal, double startAngle, long segments,
                               unsigned long material)
{
    if (segments < 3 || segments > 100000000) {
        Fail("%s: the segment count must be from 3 to 100000000", who);
        return 0;
    }
    if (!IsFinite(centre) || !IsFinite(normal) || !std::isfinite(radiusA) || !std::isfinite(radiusB) ||
        !std::isfinite(height) || !std::isfinite(startAngle)) {
        Fail("%s: arguments must be finite numbers", who);
        return 0;
    }
    // Two rings of handles; a ring of radius 0 at the same height is one point.
    bool const fan = radiusB <= 0.0 && height == 0.0;
    unsigned long *ring = new (std::nothrow) unsigned long[2 * segments];
    if (!ring) {
        char text[128];
        std::snprintf(text, sizeof text, "%s: Not enough memory to allocate list of point handles", who);
        trError(text);
        return 0;
    }
    trVector a, b;
    PlaneAxes(normal, a, b);
    trVector const rise = normal.Normalized() * height;
    unsigned long last = 0, centreHandle = 0;
    bool ok = true;
    if (fan)
        ok = (centreHandle = AddPoint(centre)) != 0;
    for (long i = 0; ok && i < segments; ++i) {
        double const angle = startAngle + 2.0 * M_PI * double(i) / double(segments);
        trVector const dir = a * std::cos(angle) + b * std::sin(angle);
        ok = (ring[i] = AddPoint(centre + dir * radiusA)) != 0;
        if (ok && !fan)
            ok = (ring[segments + i] = AddPoint(centre + rise + dir * radiusB)) != 0;
    }
    for (long i = 0; ok && i < segments; ++i) {
        long const j = (i + 1) % segments;
        if (fan) {
            ok = (last = AddTri(centreHandle, ring[i], ring[j], material)) != 0;
        } else {
            ok = AddTri(ring[i], ring[j], ring[segments + j], material) != 0;
            ok = ok && (last = AddTri(ring[i], ring[segments + j], ring[segments + i], material)) != 0;
        }
    }
    delete[] ring;
    return ok ? last : 0;
}

unsigned long trScene::AddPolyDisc(trVector const &centre, double outerRadius, double innerRadius,
                                   trVector const &normal, double startAngle, long segments, unsigned long material)
{
    return AddRing("AddPolyDisc", centre, outerRadius, innerRadius, 0.0, normal, startAngle, segments, material);
}

unsigned long trScene::AddPolyCylinder(trVector const &centre, double radius, double height, trVector const &normal,
                                       double startAngle, long segments, unsigned long material)
{
    // Seen from outside the tube the tris wind anticlockwise, as for a disc seen from its normal side.
    return AddRing("AddPolyCylinder", centre, radius, radius, height, normal, startAngle, segments, material);
}

unsigned long trScene::AddPolySphere(trVector const &centre, trVector const &radii, long segments, long rings,
                                     unsigned long material)
{
    return AddPolySphere(centre, radii, trVector(0, 1, 0), 0.0, segments, rings, true, true, material);
}

unsigned long trScene::AddPolySphere(trVector const &centre, trVector const &radii, trVector const &axis,
                                     double startAngle, long segments, long rings, bool withNormals,
                                     bool withTexture, unsigned long material)
{
    if (segments < 2 || rings < 2)
        return 0;
    if (!IsFinite(centre) || !IsFinite(radii) || !IsFinite(axis) || !std::isfinite(startAngle)) {
        trOutError("AddPolySphere: arguments must be finite numbers");
        return 0;
    }
    double const count = double(rings - 1) * double(segments) + 2.0;
    unsigned long *pts = count < 1e9 ? new (std::nothrow) unsigned long[(unsigned long)count] : nullptr;
    if (!pts) {
        trError("AddPolySphere: Not enough memory to allocate list of point handles");
        return 0;
    }
    unsigned long const numPts = (unsigned long)count;
    // A frame with the axis as local y; for the y axis it is the world frame.
    trVector const w = axis.Normalized();
    trVector const helper = std::fabs(w.x) < 0.9 ? trVector(1, 0, 0) : trVector(0, 0, 1);
    trVector const u = (helper - w * w.Dot(helper)).Normalized();
    trVector const v = u.Cross(w);
    auto local = [&](double lat, double lon) {
        return trVector(std::sin(lat) * std::cos(lon), std::cos(lat), std::sin(lat) * std::sin(lon));
    };
    auto place = [&](trVector const &l) { return centre + u * (l.x * radii.x) + w * (l.y * radii.y) + v * (l.z * radii.z); };

    bool ok = true;
    unsigned long normalBase = 0, texBase = 0;
    // Points, and normals beside them: top pole, rows from the top, bottom pole.
    for (unsigned long i = 0; ok && i < numPts; ++i) {
        trVector l;
        if (i == 0)
            l = trVector(0, 1, 0);
        else if (i == numPts - 1)
            l = trVector(0, -1, 0);
        else {
            long const row = long(i - 1) / segments + 1, col = long(i - 1) % segments;
            l = local(M_PI * double(row) / double(rings), startAngle + 2.0 * M_PI * double(col) / double(segments));
        }
        trVector const p = place(l);
        ok = (pts[i] = AddPoint(p)) != 0;
        if (ok && withNormals) {
            unsigned long n = AddNormal((p - centre).Normalized());
            ok = n != 0;
            if (i == 0)
                normalBase = n;
        }
    }
    for (long row = 0; ok && withTexture && row <= rings; ++row)
        for (long col = 0; ok && col <= segments; ++col) {
            unsigned long t = AddTexVert(trVector(1.0 - double(col) / double(segments), 1.0 - double(row) / double(rings), 0.0));
            ok = t != 0;
            if (row == 0 && col == 0)
                texBase = t;
        }

    // Point i of row r (0 the top pole, rings the bottom pole), column c.
    auto ptIndex = [&](long r, long c) -> unsigned long {
        if (r == 0)
            return 0;
        if (r == rings)
            return numPts - 1;
        return 1 + (unsigned long)(r - 1) * segments + (unsigned long)(c % segments);
    };
    unsigned long last = 0;
    auto tri = [&](long r0, long c0, long r1, long c1, long r2, long c2) {
        unsigned long const i0 = ptIndex(r0, c0), i1 = ptIndex(r1, c1), i2 = ptIndex(r2, c2);
        trTri t(pts[i0], pts[i1], pts[i2], material, nullptr);
        if (withNormals)
            t.SetNormals(normalBase + i0, normalBase + i1, normalBase + i2);
        if (withTexture) {
            auto th = [&](long r, long c) { return texBase + (unsigned long)r * (segments + 1) + (unsigned long)c; };
            t.SetTexVerts(th(r0, c0), th(r1, c1), th(r2, c2));
        }
        last = AddTri(t);
        return last != 0;
    };
    for (long c = 0; ok && c < segments; ++c) {
        ok = tri(0, c, 1, c + 1, 1, c);
        for (long r = 1; ok && r < rings - 1; ++r)
            ok = tri(r, c, r, c + 1, r + 1, c + 1) && tri(r, c, r + 1, c + 1, r + 1, c);
        ok = ok && tri(rings, c, rings - 1, c, rings - 1, c + 1);
    }
    delete[] pts;
    return ok ? last : 0;
}

// ---- Bounds and report ----

trBoundingBox trScene::BoundingBox() const
{
    trBoundingBox box;
    for (trPoint const &p : points)
        box.Union(p.Vec());
    for (unsigned long h = 1; h <= numParticles; ++h) {
        trParticle const *p = GetPParticleConst(h);
        double const r = std::fabs(p->Size());
        box.Union(trBoundingBox(p->Pos() - trVector(r, r, r), p->Pos() + trVector(r, r, r)));
    }
    for (trGeomGroup const &group : groups)
        if (group.SubsceneRawPtr()) {
            trBoundingBox sub = group.SubsceneRawPtr()->BoundingBox();
            if (!sub.IsEmpty())
                box.Union(sub);
        }
    if (box.IsEmpty() || transform.IsIdentity())
        return box;
    return trTransform<double>(transform, inverseTransform).BoundingBox(box);
}

void trScene::Dump(std::FILE *out) const
{
    if (!out)
        return;
    std::fprintf(out, "trScene %p: %lu points, %lu normals, %lu texture vertices, %lu tris, %lu materials, "
                      "%lu particles, %lu lights, %lu atmospheres, %lu groups, open group %ld\n",
                 static_cast<void const *>(this), NumPts(), NumNormals(), NumTexVerts(), NumTris(), NumMaterials(),
                 NumParticles(), NumLights(), NumAtmospheres(), NumGroups(), openGroupIndex);
    trBoundingBox const box = BoundingBox();
    if (!box.IsEmpty())
        std::fprintf(out, "  bounds (%.10g, %.10g, %.10g) to (%.10g, %.10g, %.10g)\n", box.lo.x, box.lo.y,
                     box.lo.z, box.hi.x, box.hi.y, box.hi.z);
    for (unsigned long g = 0; g < groups.size(); ++g) {
        trGeomGroup const &group = groups[g];
        std::fprintf(out, "  group %lu \"%s\": scene %p, held %ld times\n", g + 1, group.Name().chars,
                     static_cast<void const *>(group.SubsceneRawPtr()), long(group.Subscene().use_count()));
    }
}
