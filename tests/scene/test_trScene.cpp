// Scene store: handles, bad input, groups and instancing, materials, particles.

#include "scene/trScene.h"
#include "scene/trSkeleton.h"
#include "shading/trMaterial.h"
#include "shading/trShader.h"
#include "volumes/trAtmosList.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

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

// An initialised scene.
class SceneStore : public testing::Test {
protected:
    void SetUp() override { scene.Init(); }
    trScene scene;
};

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

// Handles are one-based; every refusal names its operation and adds nothing.
TEST_F(SceneStore, HandlesAreOneBasedAndBadInputIsRefusedWithAMessage)
{
    // Points are stored in single precision.
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(scene.AddPoint(trVector(i + 0.1, i * i, 0)), i + 1u);
    EXPECT_EQ(scene.GetPPoint(1)->x, 0.1f);
    EXPECT_EQ(scene.AddNormal(trVector(0, 0, 1)), 1u);
    EXPECT_EQ(scene.AddTexVert(trVector(0.5, 0.25, 0)), 1u);
    EXPECT_TRUE(scene.GetPPoint(0) == nullptr && scene.GetPPoint(4) == nullptr);
    EXPECT_TRUE(scene.GetPNormal(2) == nullptr && scene.GetPMaterial(0) == nullptr);
    EXPECT_EQ(scene.GetPersistentMaterialIndex(1), -1);
    auto a = NewScene(), b = NewScene();
    EXPECT_EQ(b->AddScene(a), 1u);
    trScene bare;  // never Init'ed: no atmosphere list to add to
    trShader shader;
    trLight light;
    light.Pos = trVector(kNaN, 0, 0);
    std::vector<unsigned long> handles;
    std::string const err = Stderr([&] {
        handles = {scene.AddPoint(trVector(0, kNaN, 0)), scene.AddNormal(trVector(HUGE_VAL, 0, 0)),
                   scene.AddTexVert(trVector(kNaN, 0, 0)), scene.AddParticle(trVector(0, 0, kNaN), 1.0f),
                   scene.AddParticle(trVector(), float(kNaN)), scene.AddParticle(trVector(), 1.0f, 5),
                   scene.AddLight(light), scene.AddTri(trTri(0, 1, 2, 0, nullptr)),
                   scene.AddTri(trTri(1, 2, 4, 0, nullptr)), scene.AddTri(trTri(1, 2, 3, 1, 1, 2, 0, 0, 0, 0, nullptr)),
                   scene.AddTri(trTri(1, 2, 3, 0, 0, 0, 0, 2, 0, 0, nullptr)), scene.AddTri(trTri(1, 2, 3, 1, nullptr)),
                   scene.AddTri((1UL << 32) + 1, 2, 3), static_cast<unsigned long>(scene.SetBackgroundMaterial(3)),
                   scene.AddAtmosphere(nullptr), bare.AddAtmosphere(&shader), a->AddScene(nullptr), a->AddScene(a),
                   a->AddScene(b)};  // the last: a -> b -> a
        scene.BeginGroupAffectors(trSceneVisibilityMode(7), true, true);
    });
    EXPECT_EQ(handles, std::vector<unsigned long>(19, 0));
    EXPECT_EQ(err, "ERROR: AddPoint: coordinates must be finite numbers\n"
                   "ERROR: AddNormal: coordinates must be finite numbers\n"
                   "ERROR: AddTexVert: coordinates must be finite numbers\n"
                   "ERROR: AddParticle: position and size must be finite numbers\n"
                   "ERROR: AddParticle: position and size must be finite numbers\n"
                   "ERROR: AddParticle: material handle 5 is not in the scene\n"
                   "ERROR: AddLight: position and direction must be finite numbers\n"
                   "ERROR: AddTri: point handle 0 is not in the scene (3 points)\n"
                   "ERROR: AddTri: point handle 4 is not in the scene (3 points)\n"
                   "ERROR: AddTri: normal handle 2 is not in the scene\n"
                   "ERROR: AddTri: texture vertex handle 2 is not in the scene\n"
                   "ERROR: AddTri: material handle 1 is not in the scene\n"
                   // A handle too big for a record is not cut down to a small one.
                   "ERROR: AddTri: handle 4294967297 is not in the scene\n"
                   "ERROR: SetBackgroundMaterial: material handle 3 is not in the scene\n"
                   "ERROR: AddAtmosphere: no shader given\n"
                   "ERROR: AddAtmosphere: the scene has not been initialised\n"
                   "ERROR: AddScene: no scene given\n"
                   "ERROR: AddScene: a scene can't hold itself\n"
                   "ERROR: AddScene: a scene can't hold itself\n"
                   "ERROR: BeginGroupAffectors: unknown visibility mode 7\n");
    // Only the three points, the normal and the texture vertex made above.
    EXPECT_EQ(scene.NumPts() + scene.NumNormals() + scene.NumTexVerts(), 5u);
    EXPECT_EQ(scene.NumParticles() + scene.NumLights() + scene.NumTris() + scene.NumAtmospheres() +
                  scene.GetBackgroundMaterial() + a->NumGroups(), 0u);
    EXPECT_EQ(a.use_count(), 2);
    EXPECT_TRUE(scene.CurrentGroupAffector().AllowsAll());
    // Normals of 0 mean none; all three at 1 is fine.
    EXPECT_EQ(scene.AddTri(trTri(1, 2, 3, 1, 1, 1, 0, 0, 0, 0, nullptr)), 1u);
    EXPECT_EQ(scene.AddTri(3, 2, 1), 2u);
}

TEST_F(SceneStore, DegenerateTrisAreKeptAndHaveAZeroNormal)
{
    // The last is on the line of the first two.
    for (trVector const &p : {trVector(0, 0, 0), trVector(2, 0, 0), trVector(0, 3, 0), trVector(4, 0, 0)})
        scene.AddPoint(p);
    unsigned long const same = scene.AddTri(1, 1, 2), line = scene.AddTri(1, 2, 4), good = scene.AddTri(1, 2, 3);
    ASSERT_TRUE(same && line && good);
    EXPECT_EQ(scene.CalcTriNormal(scene.GetPTri(same), false), trVector());
    EXPECT_EQ(scene.CalcTriNormal(scene.GetPTri(line), false), trVector());
    // (2,0,0) x (0,3,0) = (0,0,6): unit z, and with addNormal the tri points at it.
    EXPECT_EQ(scene.CalcTriNormal(scene.GetPTri(good), true), trVector(0, 0, 1));
    EXPECT_TRUE(scene.NumNormals() == 1u && scene.GetPTri(good)->HasNormals());
    EXPECT_EQ(scene.CalcTriNormal(nullptr, true), trVector());
    scene.BeginGroup("g");
    scene.AddNormal(trVector(1, 0, 0));
    scene.EndGroup();
    scene.ClearNormals(false);
    EXPECT_FALSE(scene.NumNormals() || scene.GetPTri(good)->HasNormals());
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumNormals(), 1u);
    scene.ClearNormals(true);
    EXPECT_EQ(scene.GetPGroup(1)->SubsceneRawPtr()->NumNormals(), 0u);
}

TEST_F(SceneStore, AddsGoToTheInnermostOpenGroupScopedOrNot)
{
    for (int i = 0; i < 5; ++i)
        scene.AddPoint(trVector(i, 0, 0));
    trLight sun;  // lights are stored by value
    sun.Dir = trVector(0, -1, 1);
    EXPECT_EQ(scene.AddLight(sun), 1u);
    scene.EndGroup();  // harmless with no group open
    EXPECT_EQ(scene.OpenGroupIndex(), 0);

    EXPECT_EQ(scene.BeginGroup("outer"), 1u);
    EXPECT_EQ(scene.OpenGroupIndex(), 1);
    // The sub-scene's first point, whatever the top scene holds.
    EXPECT_EQ(scene.AddPoint(trVector(7, 7, 7)), 1u);
    EXPECT_EQ(scene.BeginGroup("inner"), 1u);  // the first group of the outer group's scene
    EXPECT_EQ(scene.AddPoint(trVector(8, 8, 8)), 1u);
    EXPECT_EQ(scene.AddPoint(trVector(9, 9, 9)), 2u);
    EXPECT_EQ(scene.AddTri(1, 2, 2), 1u);
    EXPECT_EQ(scene.AddLight(trLight()), 1u);
    scene.EndGroup();  // closes "inner" only
    EXPECT_EQ(scene.AddPoint(trVector(6, 6, 6)), 2u);  // back in "outer"
    scene.EndGroup();
    EXPECT_EQ(scene.AddPoint(trVector(5, 5, 5)), 6u);
    scene.EndGroup();

    EXPECT_TRUE(scene.NumGroups() == 1u && scene.NumLights() == 1u);
    EXPECT_EQ(scene.GetPLight(1)->Dir, trVector(0, -1, 1));
    trScene *outerScene = scene.GetPGroup(1)->SubsceneRawPtr();
    ASSERT_NE(outerScene, nullptr);
    EXPECT_TRUE(outerScene->NumPts() == 2u && outerScene->NumGroups() == 1u);
    trScene *innerScene = outerScene->GetPGroup(1)->SubsceneRawPtr();
    EXPECT_TRUE(innerScene->NumPts() == 2u && innerScene->NumTris() == 1u && innerScene->NumLights() == 1u);
    // Scoped groups nest the same way.
    {
        trScopedSceneGroup a(scene, "a");
        EXPECT_EQ(a.GetHGroup(), 2u);
        {
            trScopedSceneGroup b(scene, "b");
            ASSERT_NE(b.GetPGroup(), nullptr);
            scene.AddPoint(trVector(1, 0, 0));
        }
        scene.AddPoint(trVector(2, 0, 0));
    }
    EXPECT_TRUE(scene.OpenGroupIndex() == 0 && scene.NumPts() == 6u);
    EXPECT_EQ(scene.GetPGroup(2)->SubsceneRawPtr()->NumPts(), 1u);
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
    EXPECT_TRUE(top->NumGroups() == 0u && keeper.use_count() == 1 && keeper->NumTris() == 2u);
}

TEST_F(SceneStore, GroupFlagsAreTheSceneAndTheAffectorTogetherAndReachItsAtmospheres)
{
    trShader *sky = new trShader, *haze = new trShader;
    EXPECT_EQ(scene.AddAtmosphere(sky), 1u);
    scene.BeginGroup("plain");
    scene.EndGroup();
    scene.BeginGroupAffectors(trSceneVisibilityHoldout, false, true);
    EXPECT_EQ(scene.CurrentGroupAffector().AllowedVisibilityMode, trSceneVisibilityHoldout);
    scene.BeginGroup("held");
    EXPECT_EQ(scene.AddAtmosphere(haze), 1u);  // first of the group's scene
    scene.EndGroup();
    scene.EndGroupAffectors();
    EXPECT_TRUE(scene.CurrentGroupAffector().AllowsAll());
    // Atmospheres take primary, secondary and shadow modes from their group's affector.
    EXPECT_EQ(scene.NumAtmospheres(), 1u);
    trAtmosList *list = scene.AtmosList();
    ASSERT_EQ(list->Count(), 2);
    EXPECT_TRUE(list->Shader(0) == sky && list->Shader(1) == haze);
    auto flags = [&](int i) {
        return std::to_string(list->Flags(i).PrimaryMode) + std::to_string(list->Flags(i).Secondary) +
               std::to_string(list->Flags(i).Shadows);
    };
    EXPECT_EQ(flags(0) + " " + flags(1), "211 101");
    haze->PreDestroy();
    delete haze;
    EXPECT_EQ(list->Shader(1), nullptr);

    trGeomGroup *plain = scene.GetPGroup(1), *held = scene.GetPGroup(2);
    EXPECT_EQ(plain->SceneGroupAffector(), nullptr);
    ASSERT_NE(held->SceneGroupAffector(), nullptr);
    EXPECT_EQ(plain->VisibilityModeInRasteriser(), trSceneVisibilityVisible);
    EXPECT_TRUE(held->VisibilityModeInRasteriser() == trSceneVisibilityHoldout &&
                held->VisibilityModeInRayTracer() == trSceneVisibilityHoldout);
    EXPECT_FALSE(held->IsVisibleInReflections());
    // The sub-scene's own settings count too.
    held->SubsceneRawPtr()->SetCastsShadows(false);
    held->SubsceneRawPtr()->SetVisibilityModeInRayTracer(trSceneVisibilityInvisible);
    EXPECT_FALSE(held->CastsShadows() || held->IsVisibleOrHoldoutInRayTracer());
    EXPECT_EQ(held->VisibilityModeInRayTracer(), trSceneVisibilityInvisible);
    // A copied group owns its own affector.
    trGeomGroup copy = *held;
    EXPECT_NE(copy.SceneGroupAffector(), held->SceneGroupAffector());
    EXPECT_EQ(copy.SceneGroupAffector()->AllowedVisibilityMode, trSceneVisibilityHoldout);
    scene.Cleanup();
    EXPECT_EQ(sky->NumDependants(), 0);
    delete sky;
}

TEST_F(SceneStore, MaterialsLiveInTheGlobalTableKnowTheirGroupAndForgetDestroyedShaders)
{
    trShader *surface = new trShader;
    trShader *displace = new trShader;
    unsigned long const m1 = scene.AddMaterial(trMaterial(surface, displace, nullptr, 0.5f, 1, 0, 0, 0));
    unsigned long const m2 = scene.AddMaterial(trMaterial(surface, nullptr, surface, 0.0f));
    EXPECT_TRUE(m1 == 1u && m2 == 2u && scene.NumMaterials() == 2u);
    EXPECT_EQ(scene.GetPersistentMaterialIndex(m2), scene.GetPersistentMaterialIndex(m1) + 1);
    trMaterial *a = scene.GetPMaterial(m1), *b = scene.GetPMaterial(m2);
    ASSERT_TRUE(a && b);
    EXPECT_TRUE(a->DisplacementShader() == displace && a->ShadowDisplacementShader() == displace);
    EXPECT_EQ(surface->NumDependants(), 2);
    // Destroying the surface shader clears it wherever it was held.
    surface->PreDestroy();
    delete surface;
    EXPECT_FALSE(a->SurfaceShader() || b->SurfaceShader() || b->AtmosphereShader() || b->HasShader());
    EXPECT_EQ(a->DisplacementShader(), displace);
    // Tris and the background take material handles.
    scene.AddPoint(trVector());
    EXPECT_EQ(scene.AddTri(1, 1, 1, m2), 1u);
    EXPECT_EQ(scene.SetBackgroundMaterial(m1), 1);
    EXPECT_EQ(scene.GetBackgroundMaterial(), m1);

    displace->PreDestroy();
    delete displace;
    EXPECT_FALSE(a->DisplacementShader() || a->ShadowDisplacementShader());
    // Ending a group records it on the materials made in it.
    scene.BeginGroup("a");
    scene.EndGroup();
    scene.BeginGroup("b");
    EXPECT_EQ(scene.AddMaterial(trMaterial()), 1u);
    trPersistentMaterial *pm =
        trGetPersistentMaterial(scene.GetPGroup(2)->SubsceneRawPtr()->GetPersistentMaterialIndex(1));
    ASSERT_NE(pm, nullptr);
    EXPECT_EQ(pm->OwnerGroupId(), 0);
    scene.EndGroup();
    EXPECT_EQ(pm->OwnerGroupId(), 2);
}

TEST_F(SceneStore, ParticlesNeverMoveAcrossChunks)
{
    EXPECT_EQ(scene.AddParticle(trVector(1, 2, 3), 0.5f), 1u);
    trParticle *first = scene.GetPParticle(1);
    unsigned long const n = trScene::kParticlesPerChunk + 10;
    for (unsigned long i = 2; i <= n; ++i)
        ASSERT_EQ(scene.AddParticle(trVector(double(i), 0, 0), 1.0f), i);
    EXPECT_TRUE(scene.GetPParticle(1) == first && first->Pos() == trVector(1, 2, 3));
    EXPECT_EQ(scene.GetPParticle(trScene::kParticlesPerChunk + 1)->Pos().x, double(trScene::kParticlesPerChunk + 1));
    EXPECT_TRUE(scene.GetPParticle(n + 1) == nullptr && scene.NumParticles() == n);
    // A copy has its own particles.
    trScene copy(scene);
    EXPECT_EQ(copy.NumParticles(), n);
    copy.GetPParticle(1)->SetSize(9.0f);
    EXPECT_EQ(first->Size(), 0.5f);
    EXPECT_EQ(copy.GetPParticle(n)->Pos().x, double(n));
    scene.Cleanup();
}

TEST_F(SceneStore, TransformsAndBounds)
{
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
    EXPECT_TRUE(scene.BoundingBox().lo == trVector(0, 0, -3) && scene.BoundingBox().hi == trVector(10, 2, 0));

    std::uint32_t const handles[3] = {1, 0, 7};
    trVector out[3];
    moved->GetPointVecs(handles, out, 3, true);
    EXPECT_EQ(out[0], trVector(10, 0, -3));
    moved->GetPointVecs(handles, out, 1, false);
    EXPECT_EQ(out[0], trVector(0, 0, 0));
    // A quarter turn about z takes the x normal to y.
    moved->GetNormals(handles, out, 3, true);
    EXPECT_NEAR((out[0] - trVector(0, 1, 0)).Length(), 0.0, 1e-12);
    EXPECT_TRUE(out[1] == trVector() && out[2] == trVector());
    EXPECT_TRUE(moved->GetInverseTransform().Mul(moved->GetTransform()).NearlyEquals(trMatrix4x4<double>(), 1e-12));
}

TEST_F(SceneStore, CopyCleanupAndDump)
{
    auto sub = NewScene();
    sub->AddPoint(trVector(1, 1, 1));
    scene.AddPoint(trVector(3, 2, 1));
    scene.AddScene(sub, "shared");
    scene.SetSortingBias(2.5);
    scene.SetIsVisibleInReflections(false);

    trScene copy = scene;
    EXPECT_TRUE(copy.NumPts() == 1u && copy.GetPGroup(1)->SubsceneRawPtr() == sub.get() && sub.use_count() == 3);
    EXPECT_NE(copy.Skeleton(), scene.Skeleton());
    copy.AddPoint(trVector());
    EXPECT_EQ(scene.NumPts(), 1u);

    char *text = nullptr;
    size_t size = 0;
    std::FILE *f = open_memstream(&text, &size);
    scene.Dump(f);
    std::fclose(f);
    std::string const dump(text, size);
    std::free(text);
    EXPECT_NE(dump.find("1 points"), std::string::npos) << dump;
    EXPECT_NE(dump.find("group 1 \"shared\""), std::string::npos) << dump;

    EXPECT_EQ(scene.Cleanup(), 1);
    EXPECT_TRUE(scene.NumPts() + scene.NumGroups() + scene.NumTris() == 0u && scene.Skeleton() == nullptr);
    EXPECT_EQ(sub->NumPts(), 1u);  // the copy still holds it
    copy = scene;
    EXPECT_TRUE(copy.NumGroups() == 0u && sub.use_count() == 1);
}
