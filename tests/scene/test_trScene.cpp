// Scene store: handles, bad input, groups and instancing, materials, particles.

#include "scene/trScene.h"
#include "scene/trSkeleton.h"
#include "shading/trMaterial.h"
#include "shading/trShader.h"
#include "volumes/trAtmosList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

namespace {

// Persistent materials live for the process; give them back when the tests end.
class MaterialEnvironment : public testing::Environment {
public:
    void TearDown() override { trFreePersistentMaterials(); }
};
testing::Environment *const materialEnvironment = testing::AddGlobalTestEnvironment(new MaterialEnvironment);

std::shared_ptr<trScene> NewScene()
{
    auto scene = std::make_shared<trScene>();
    scene->Init();
    return scene;
}

// Runs `f` and returns what it wrote to stderr.
template <class F>
std::string Stderr(F f)
{
    testing::internal::CaptureStderr();
    f();
    return testing::internal::GetCapturedStderr();
}

double const kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

TEST(trSceneRecords, LayoutFitsAnIndexBufferAndStaysSmall)
{
    EXPECT_EQ(sizeof(trPoint), 12u);
    EXPECT_EQ(sizeof(trTri), 48u);
    // An accelerator reads the first 12 bytes of each record as three 32-bit indices.
    trTri tri(7, 8, 9, 10, 11, 12, 13, 14, 15, 3, nullptr);
    std::uint32_t raw[3];
    std::memcpy(raw, &tri, sizeof raw);
    EXPECT_TRUE(raw[0] == 7u && raw[1] == 8u && raw[2] == 9u);
}

TEST(trScene, InitMakesTheAtmosphereListAndTheStandInSkeleton)
{
    trScene scene;
    EXPECT_EQ(scene.AtmosList(), nullptr);  // the constructor alone makes no list
    EXPECT_EQ(scene.Init(), 1);
    EXPECT_NE(scene.AtmosList(), nullptr);
    trSkeleton::Skeleton *sk = scene.Skeleton();
    ASSERT_NE(sk, nullptr);
    EXPECT_TRUE(sk->NumJoints() == 100u && sk->NumBones() == 99u);
    // Joint handles are 1-based: joint i = 10 is handle 11, at (1.0, sin 2.0, 0).
    EXPECT_FLOAT_EQ(sk->GetJoint(11)->Pos.x, 1.0f);
    EXPECT_FLOAT_EQ(sk->GetJoint(11)->Pos.y, float(std::sin(2.0)));
    EXPECT_TRUE(sk->GetJoint(0) == nullptr && sk->GetBone(100) == nullptr);
}

TEST(trScene, HandlesAreOneBasedAndBadHandlesGiveNull)
{
    trScene scene;
    scene.Init();
    EXPECT_EQ(scene.AddPoint(trVector(1, 2, 3)), 1u);
    EXPECT_EQ(scene.AddPoint(trVector(0.1, 0, 0)), 2u);
    EXPECT_EQ(scene.AddNormal(trVector(0, 1, 0)), 1u);
    EXPECT_EQ(scene.AddTexVert(trVector(0.5, 0.25, 0)), 1u);
    EXPECT_EQ(scene.NumPts(), 2u);
    EXPECT_TRUE(scene.GetPPoint(0) == nullptr && scene.GetPPoint(3) == nullptr);
    EXPECT_TRUE(scene.GetPNormal(2) == nullptr && scene.GetPMaterial(0) == nullptr);
    EXPECT_EQ(scene.GetPersistentMaterialIndex(1), -1);
    // Stored in single precision.
    EXPECT_EQ(scene.GetPPoint(2)->x, 0.1f);
    EXPECT_EQ(scene.GetPPoint(1)->z, 3.0f);
}

TEST(trScene, NonFiniteCoordinatesAreRefusedWithAMessage)
{
    trScene scene;
    scene.Init();
    unsigned long h = 1;
    std::string err = Stderr([&] { h = scene.AddPoint(trVector(0, kNaN, 0)); });
    EXPECT_EQ(h, 0u);
    EXPECT_NE(err.find("ERROR: AddPoint: "), std::string::npos) << err;
    EXPECT_EQ(scene.NumPts(), 0u);
    Stderr([&] {
        EXPECT_EQ(scene.AddNormal(trVector(std::numeric_limits<double>::infinity(), 0, 0)), 0u);
        EXPECT_EQ(scene.AddTexVert(trVector(kNaN, 0, 0)), 0u);
        EXPECT_EQ(scene.AddParticle(trVector(0, 0, kNaN), 1.0f), 0u);
        EXPECT_EQ(scene.AddParticle(trVector(0, 0, 0), float(kNaN)), 0u);
        trLight light;
        light.Pos = trVector(kNaN, 0, 0);
        EXPECT_EQ(scene.AddLight(light), 0u);
    });
    EXPECT_EQ(scene.NumNormals() + scene.NumTexVerts() + scene.NumParticles() + scene.NumLights(), 0u);
}

TEST(trScene, AddTriChecksEveryHandle)
{
    trScene scene;
    scene.Init();
    for (int i = 0; i < 3; ++i)
        scene.AddPoint(trVector(i, i * i, 0));
    scene.AddNormal(trVector(0, 0, 1));
    struct Case {
        trTri tri;
        char const *message;
    } const cases[] = {
        {trTri(0, 1, 2, 0, nullptr), "AddTri: point handle 0 is not in the scene (3 points)"},
        {trTri(1, 2, 4, 0, nullptr), "AddTri: point handle 4 is not in the scene (3 points)"},
        {trTri(1, 2, 3, 1, 1, 2, 0, 0, 0, 0, nullptr), "AddTri: normal handle 2 is not in the scene"},
        {trTri(1, 2, 3, 0, 0, 0, 0, 1, 0, 0, nullptr), "AddTri: texture vertex handle 1 is not in the scene"},
        {trTri(1, 2, 3, 1, nullptr), "AddTri: material handle 1 is not in the scene"},
    };
    for (Case const &c : cases) {
        unsigned long h = 1;
        std::string err = Stderr([&] { h = scene.AddTri(c.tri); });
        EXPECT_EQ(h, 0u) << c.message;
        EXPECT_EQ(err, std::string("ERROR: ") + c.message + "\n");
    }
    // A handle too big for a record is not cut down to a small one.
    std::string err = Stderr([&] { EXPECT_EQ(scene.AddTri((1UL << 32) + 1, 2, 3), 0u); });
    EXPECT_EQ(err, "ERROR: AddTri: handle 4294967297 is not in the scene\n");
    EXPECT_EQ(scene.NumTris(), 0u);
    // Normals of 0 mean none; all three at 1 is fine.
    EXPECT_EQ(scene.AddTri(trTri(1, 2, 3, 1, 1, 1, 0, 0, 0, 0, nullptr)), 1u);
    EXPECT_EQ(scene.AddTri(3, 2, 1), 2u);
}

TEST(trScene, DegenerateTrisAreKeptAndHaveAZeroNormal)
{
    trScene scene;
    scene.Init();
    scene.AddPoint(trVector(0, 0, 0));
    scene.AddPoint(trVector(2, 0, 0));
    scene.AddPoint(trVector(0, 3, 0));
    scene.AddPoint(trVector(4, 0, 0));  // on the line of points 1 and 2
    unsigned long const same = scene.AddTri(1, 1, 2);
    unsigned long const line = scene.AddTri(1, 2, 4);
    unsigned long const good = scene.AddTri(1, 2, 3);
    ASSERT_TRUE(same && line && good);
    EXPECT_EQ(scene.CalcTriNormal(scene.GetPTri(same), false), trVector());
    EXPECT_EQ(scene.CalcTriNormal(scene.GetPTri(line), false), trVector());
    // (2,0,0) x (0,3,0) = (0,0,6): unit z, and with addNormal the tri points at it.
    trVector const n = scene.CalcTriNormal(scene.GetPTri(good), true);
    EXPECT_EQ(n, trVector(0, 0, 1));
    EXPECT_EQ(scene.NumNormals(), 1u);
    EXPECT_TRUE(scene.GetPTri(good)->HasNormals());
    EXPECT_EQ(scene.CalcTriNormal(nullptr, true), trVector());
    scene.BeginGroup("g");
    scene.AddNormal(trVector(1, 0, 0));
    scene.EndGroup();
    scene.ClearNormals(false);
    EXPECT_EQ(scene.NumNormals(), 0u);
    EXPECT_FALSE(scene.GetPTri(good)->HasNormals());
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumNormals(), 1u);
    scene.ClearNormals(true);
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumNormals(), 0u);
}

TEST(trScene, AddsGoToTheInnermostOpenGroup)
{
    trScene scene;
    scene.Init();
    for (int i = 0; i < 5; ++i)
        scene.AddPoint(trVector(i, 0, 0));
    scene.EndGroup();  // harmless with no group open
    EXPECT_EQ(scene.OpenGroupIndex(), 0);

    unsigned long const outer = scene.BeginGroup("outer");
    EXPECT_EQ(outer, 1u);
    EXPECT_EQ(scene.OpenGroupIndex(), 1);
    // The sub-scene's first point, whatever the top scene holds.
    EXPECT_EQ(scene.AddPoint(trVector(7, 7, 7)), 1u);
    unsigned long const inner = scene.BeginGroup("inner");
    EXPECT_EQ(inner, 1u);  // the first group of the outer group's scene
    EXPECT_EQ(scene.AddPoint(trVector(8, 8, 8)), 1u);
    EXPECT_EQ(scene.AddPoint(trVector(9, 9, 9)), 2u);
    EXPECT_EQ(scene.AddTri(1, 2, 2), 1u);
    scene.EndGroup();  // closes "inner" only
    EXPECT_EQ(scene.AddPoint(trVector(6, 6, 6)), 2u);  // back in "outer"
    scene.EndGroup();
    EXPECT_EQ(scene.AddPoint(trVector(5, 5, 5)), 6u);
    scene.EndGroup();

    EXPECT_EQ(scene.NumGroups(), 1u);
    trScene *outerScene = scene.GetPGroup(1)->SubsceneRawPtr();
    ASSERT_NE(outerScene, nullptr);
    EXPECT_EQ(outerScene->NumPts(), 2u);
    EXPECT_EQ(outerScene->NumGroups(), 1u);
    trScene *innerScene = outerScene->GetPGroup(1)->SubsceneRawPtr();
    EXPECT_EQ(innerScene->NumPts(), 2u);
    EXPECT_EQ(innerScene->NumTris(), 1u);
}

TEST(trScene, ScopedGroupsNest)
{
    trScene scene;
    scene.Init();
    {
        trScopedSceneGroup a(scene, "a");
        EXPECT_EQ(a.GetHGroup(), 1u);
        {
            trScopedSceneGroup b(scene, "b");
            ASSERT_NE(b.GetPGroup(), nullptr);
            scene.AddPoint(trVector(1, 0, 0));
        }
        scene.AddPoint(trVector(2, 0, 0));
    }
    EXPECT_EQ(scene.OpenGroupIndex(), 0);
    EXPECT_EQ(scene.NumPts(), 0u);
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumPts(), 1u);
}

TEST(trScene, OneSceneInTwoGroupsIsOneCopyOfTheGeometry)
{
    auto top = NewScene();
    auto shared = NewScene();
    shared->AddPolyPlane(trVector(0, 0, 0), trVector(1, 0, 0), trVector(0, 1, 0), 0);
    EXPECT_EQ(shared.use_count(), 1);
    EXPECT_EQ(top->AddScene(shared, "first"), 1u);
    EXPECT_EQ(top->AddScene(shared), 2u);
    EXPECT_EQ(shared.use_count(), 3);
    EXPECT_EQ(top->GetPGroup(1)->SubsceneRawPtr(), top->GetPGroup(2)->SubsceneRawPtr());
    EXPECT_EQ(top->NumPts(), 0u);
    // The group keeps the scene alive once the maker lets go.
    trScene *raw = shared.get();
    shared.reset();
    EXPECT_EQ(raw->NumTris(), 2u);
    // Cleaning the top scene leaves a scene that another holder keeps as it is.
    auto keeper = top->GetPGroup(1)->Subscene();
    top->Cleanup();
    EXPECT_EQ(top->NumGroups(), 0u);
    EXPECT_EQ(keeper.use_count(), 1);
    EXPECT_EQ(keeper->NumTris(), 2u);
}

TEST(trScene, AddSceneRefusesNullAndCycles)
{
    auto a = NewScene();
    auto b = NewScene();
    unsigned long h = 1;
    std::string err = Stderr([&] { h = a->AddScene(nullptr); });
    EXPECT_EQ(h, 0u);
    EXPECT_EQ(err, "ERROR: AddScene: no scene given\n");
    err = Stderr([&] { h = a->AddScene(a); });
    EXPECT_EQ(h, 0u);
    EXPECT_EQ(err, "ERROR: AddScene: a scene can't hold itself\n");
    EXPECT_EQ(b->AddScene(a), 1u);
    Stderr([&] { h = a->AddScene(b); });  // a -> b -> a
    EXPECT_EQ(h, 0u);
    EXPECT_EQ(a->NumGroups(), 0u);
    EXPECT_EQ(a.use_count(), 2);
}

TEST(trScene, GroupFlagsAreTheSceneAndTheAffectorTogether)
{
    trScene scene;
    scene.Init();
    scene.BeginGroup("plain");
    scene.EndGroup();
    scene.BeginGroupAffectors(trSceneVisibilityHoldout, false, true);
    EXPECT_EQ(scene.CurrentGroupAffector().AllowedVisibilityMode, trSceneVisibilityHoldout);
    scene.BeginGroup("held");
    scene.EndGroup();
    scene.EndGroupAffectors();
    EXPECT_TRUE(scene.CurrentGroupAffector().AllowsAll());

    trGeomGroup *plain = scene.GetPGroup(1);
    trGeomGroup *held = scene.GetPGroup(2);
    EXPECT_EQ(plain->SceneGroupAffector(), nullptr);
    ASSERT_NE(held->SceneGroupAffector(), nullptr);
    EXPECT_EQ(plain->VisibilityModeInRasteriser(), trSceneVisibilityVisible);
    EXPECT_EQ(held->VisibilityModeInRasteriser(), trSceneVisibilityHoldout);
    EXPECT_EQ(held->VisibilityModeInRayTracer(), trSceneVisibilityHoldout);
    EXPECT_FALSE(held->IsVisibleInReflections());
    // The sub-scene's own settings count too.
    held->SubsceneRawPtr()->SetCastsShadows(false);
    held->SubsceneRawPtr()->SetVisibilityModeInRayTracer(trSceneVisibilityInvisible);
    EXPECT_FALSE(held->CastsShadows());
    EXPECT_EQ(held->VisibilityModeInRayTracer(), trSceneVisibilityInvisible);
    EXPECT_FALSE(held->IsVisibleOrHoldoutInRayTracer());
    // A copied group owns its own affector.
    trGeomGroup copy = *held;
    EXPECT_NE(copy.SceneGroupAffector(), held->SceneGroupAffector());
    EXPECT_EQ(copy.SceneGroupAffector()->AllowedVisibilityMode, trSceneVisibilityHoldout);
    // An unknown mode is refused.
    std::string err = Stderr([&] { scene.BeginGroupAffectors(trSceneVisibilityMode(7), true, true); });
    EXPECT_EQ(err, "ERROR: BeginGroupAffectors: unknown visibility mode 7\n");
    EXPECT_TRUE(scene.CurrentGroupAffector().AllowsAll());
}

TEST(trScene, MaterialsLiveInTheGlobalTableAndForgetDestroyedShaders)
{
    trShader *surface = new trShader;
    trShader *displace = new trShader;
    trScene scene;
    scene.Init();
    unsigned long const m1 = scene.AddMaterial(trMaterial(surface, displace, nullptr, 0.5f, 1, 0, 0, 0));
    unsigned long const m2 = scene.AddMaterial(trMaterial(surface, nullptr, surface, 0.0f));
    EXPECT_EQ(m1, 1u);
    EXPECT_EQ(m2, 2u);
    EXPECT_EQ(scene.NumMaterials(), 2u);
    EXPECT_EQ(scene.GetPersistentMaterialIndex(m2), scene.GetPersistentMaterialIndex(m1) + 1);
    trMaterial *a = scene.GetPMaterial(m1);
    trMaterial *b = scene.GetPMaterial(m2);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->DisplacementShader(), displace);
    EXPECT_EQ(a->ShadowDisplacementShader(), displace);
    EXPECT_EQ(surface->NumDependants(), 2);

    // Destroying the surface shader clears it wherever it was held.
    surface->PreDestroy();
    delete surface;
    EXPECT_EQ(a->SurfaceShader(), nullptr);
    EXPECT_EQ(b->SurfaceShader(), nullptr);
    EXPECT_EQ(b->AtmosphereShader(), nullptr);
    EXPECT_FALSE(b->HasShader());
    EXPECT_EQ(a->DisplacementShader(), displace);

    // Tris and the background take material handles.
    scene.AddPoint(trVector());
    EXPECT_EQ(scene.AddTri(1, 1, 1, m2), 1u);
    EXPECT_EQ(scene.SetBackgroundMaterial(m1), 1);
    Stderr([&] { EXPECT_EQ(scene.SetBackgroundMaterial(3), 0); });
    EXPECT_EQ(scene.GetBackgroundMaterial(), m1);

    displace->PreDestroy();
    delete displace;
    EXPECT_EQ(a->DisplacementShader(), nullptr);
    EXPECT_EQ(a->ShadowDisplacementShader(), nullptr);
}

TEST(trScene, EndGroupRecordsTheGroupOnItsMaterials)
{
    trScene scene;
    scene.Init();
    scene.BeginGroup("a");
    scene.EndGroup();
    scene.BeginGroup("b");
    unsigned long const m = scene.AddMaterial(trMaterial());
    EXPECT_EQ(m, 1u);
    trScene *sub = scene.GetPGroup(2)->SubsceneRawPtr();
    trPersistentMaterial *pm = trGetPersistentMaterial(sub->GetPersistentMaterialIndex(m));
    ASSERT_NE(pm, nullptr);
    EXPECT_EQ(pm->OwnerGroupId(), 0);
    scene.EndGroup();
    EXPECT_EQ(pm->OwnerGroupId(), 2);
}

TEST(trScene, AtmospheresOfAGroupTakeItsAffector)
{
    trShader *sky = new trShader;
    trShader *haze = new trShader;
    trScene scene;
    scene.Init();
    Stderr([&] { EXPECT_EQ(scene.AddAtmosphere(nullptr), 0u); });
    EXPECT_EQ(scene.AddAtmosphere(sky), 1u);
    scene.BeginGroupAffectors(trSceneVisibilityHoldout, true, false);
    scene.BeginGroup("g");
    EXPECT_EQ(scene.AddAtmosphere(haze), 1u);  // first of the group's scene
    scene.EndGroup();
    scene.EndGroupAffectors();
    EXPECT_EQ(scene.NumAtmospheres(), 1u);
    trAtmosList *list = scene.AtmosList();
    ASSERT_EQ(list->Count(), 2);
    EXPECT_EQ(list->Shader(0), sky);
    EXPECT_EQ(list->Flags(0).PrimaryMode, 2);
    EXPECT_EQ(list->Shader(1), haze);
    EXPECT_EQ(list->Flags(1).PrimaryMode, 1);
    EXPECT_EQ(list->Flags(1).Secondary, 1);
    EXPECT_EQ(list->Flags(1).Shadows, 0);
    haze->PreDestroy();
    delete haze;
    EXPECT_EQ(list->Shader(1), nullptr);
    scene.Cleanup();
    EXPECT_EQ(sky->NumDependants(), 0);
    delete sky;
    trScene bare;  // never Init'ed: no list to add to
    trShader other;
    std::string err = Stderr([&] { EXPECT_EQ(bare.AddAtmosphere(&other), 0u); });
    EXPECT_EQ(err, "ERROR: AddAtmosphere: the scene has not been initialised\n");
}

TEST(trScene, ParticlesNeverMoveAcrossChunks)
{
    trScene scene;
    scene.Init();
    EXPECT_EQ(scene.AddParticle(trVector(1, 2, 3), 0.5f), 1u);
    trParticle *first = scene.GetPParticle(1);
    unsigned long const n = trScene::kParticlesPerChunk + 10;
    for (unsigned long i = 2; i <= n; ++i)
        ASSERT_EQ(scene.AddParticle(trVector(double(i), 0, 0), 1.0f), i);
    EXPECT_EQ(scene.GetPParticle(1), first);
    EXPECT_EQ(first->Pos(), trVector(1, 2, 3));
    EXPECT_EQ(scene.GetPParticle(trScene::kParticlesPerChunk + 1)->Pos().x, double(trScene::kParticlesPerChunk + 1));
    EXPECT_EQ(scene.GetPParticle(n + 1), nullptr);
    std::string err = Stderr([&] { EXPECT_EQ(scene.AddParticle(trVector(), 1.0f, 5), 0u); });
    EXPECT_EQ(err, "ERROR: AddParticle: material handle 5 is not in the scene\n");
    EXPECT_EQ(scene.NumParticles(), n);
    // A copy has its own particles.
    trScene copy(scene);
    EXPECT_EQ(copy.NumParticles(), n);
    copy.GetPParticle(1)->SetSize(9.0f);
    EXPECT_EQ(first->Size(), 0.5f);
    EXPECT_EQ(copy.GetPParticle(n)->Pos().x, double(n));
    scene.Cleanup();
}

TEST(trScene, LightsAreStoredByValue)
{
    trScene scene;
    scene.Init();
    trLight sun;
    sun.Dir = trVector(0, -1, 1);
    sun.IsInfinite = true;
    EXPECT_EQ(scene.AddLight(sun), 1u);
    scene.BeginGroup("lamps");
    EXPECT_EQ(scene.AddLight(trLight()), 1u);
    scene.EndGroup();
    EXPECT_EQ(scene.NumLights(), 1u);
    EXPECT_EQ(scene.GetPLight(1)->Dir, trVector(0, -1, 1));
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumLights(), 1u);
}

TEST(trScene, TransformsAndBounds)
{
    trScene scene;
    scene.Init();
    EXPECT_TRUE(scene.BoundingBox().IsEmpty());
    scene.BeginGroup("empty");
    scene.EndGroup();
    EXPECT_TRUE(scene.BoundingBox().IsEmpty());  // an empty group adds nothing

    scene.AddPoint(trVector(1, 0, 0));
    scene.AddPoint(trVector(0, 2, 0));
    auto moved = NewScene();
    moved->AddPoint(trVector(0, 0, 0));
    moved->AddNormal(trVector(1, 0, 0));
    moved->SetTransform(trMatrix4x4<double>::Translation(trVector(10, 0, -3)) *
                        trMatrix4x4<double>::RotationZ(M_PI / 2));
    scene.AddScene(moved, "moved");
    trBoundingBox const box = scene.BoundingBox();
    EXPECT_EQ(box.lo, trVector(0, 0, -3));
    EXPECT_EQ(box.hi, trVector(10, 2, 0));

    std::uint32_t const handles[3] = {1, 0, 7};
    trVector out[3];
    moved->GetPointVecs(handles, out, 3, true);
    EXPECT_EQ(out[0], trVector(10, 0, -3));
    moved->GetPointVecs(handles, out, 1, false);
    EXPECT_EQ(out[0], trVector(0, 0, 0));
    // A quarter turn about z takes the x normal to y.
    moved->GetNormals(handles, out, 3, true);
    EXPECT_NEAR(out[0].x, 0.0, 1e-12);
    EXPECT_NEAR(out[0].y, 1.0, 1e-12);
    EXPECT_EQ(out[1], trVector());
    EXPECT_EQ(out[2], trVector());
    EXPECT_TRUE(moved->GetInverseTransform().Mul(moved->GetTransform()).NearlyEquals(trMatrix4x4<double>(), 1e-12));
}

TEST(trScene, CopyCleanupAndDump)
{
    auto sub = NewScene();
    sub->AddPoint(trVector(1, 1, 1));
    trScene scene;
    scene.Init();
    scene.AddPoint(trVector(3, 2, 1));
    scene.AddScene(sub, "shared");
    scene.SetSortingBias(2.5);
    scene.SetIsVisibleInReflections(false);

    trScene copy = scene;
    EXPECT_EQ(copy.NumPts(), 1u);
    EXPECT_EQ(copy.GetPGroup(1)->SubsceneRawPtr(), sub.get());
    EXPECT_EQ(sub.use_count(), 3);
    EXPECT_NE(copy.Skeleton(), scene.Skeleton());
    copy.AddPoint(trVector());
    EXPECT_EQ(scene.NumPts(), 1u);

    std::FILE *f = std::tmpfile();
    ASSERT_NE(f, nullptr);
    scene.Dump(f);
    std::rewind(f);
    char text[1024] = {};
    size_t const n = std::fread(text, 1, sizeof text - 1, f);
    std::fclose(f);
    std::string const dump(text, n);
    EXPECT_NE(dump.find("1 points"), std::string::npos) << dump;
    EXPECT_NE(dump.find("group 1 \"shared\""), std::string::npos) << dump;

    EXPECT_EQ(scene.Cleanup(), 1);
    EXPECT_EQ(scene.NumPts() + scene.NumGroups() + scene.NumTris(), 0u);
    EXPECT_EQ(scene.Skeleton(), nullptr);
    EXPECT_EQ(sub->NumPts(), 1u);  // the copy still holds it
    copy = scene;
    EXPECT_EQ(copy.NumGroups(), 0u);
    EXPECT_EQ(sub.use_count(), 1);
}
