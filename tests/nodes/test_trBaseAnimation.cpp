// Animation through the node: keys on parameters, evaluation written into them, baking,
// motion files, the manager's view of it all, and the host's undo records.

#include "test_trBaseSupport.h"

#include "nodes/trUndoData.h"

#include <memory>
#include <tuple>
#include <utility>

namespace {

// A root that carries the frame parameters, and a file parameter for sequences.
class AnimScene : public Probe {
public:
    double currentFrame = 0.0;
    trFileForRead image;
    long iFrame, iImage;
    int guardSeen = -1;
    AnimScene()
    {
        iFrame = Param(currentFrame, "current_frame", 0.0);
        iImage = Param(image, "image_file", trString("sky.png"));
    }
    void OnParamChanged(long index, trBase *who) override
    {
        if (index != iFrame)
            guardSeen = AnimUpdateGuard();
        Probe::OnParamChanged(index, who);
    }
};

// Records the generic undo hook's calls under a chosen token code.
struct UndoCapture {
    static inline std::vector<std::unique_ptr<trUndoOperationData>> records;
    static inline trUndoToken token;
    explicit UndoCapture(trUndoOperation code)
    {
        records.clear();
        token = trUndoToken(code);
        trUndoCopyCurrentUndoToken = []() { return token; };
        trUndoGeneric = [](trUndoOperationData *data) { records.emplace_back(data); };
    }
    ~UndoCapture()
    {
        trUndoCopyCurrentUndoToken = nullptr;
        trUndoGeneric = nullptr;
        records.clear();
    }
};

// Counts OnObjectParamAnimChanged.
class AnimReport : public trParamReport {
public:
    void OnObjectParamAnimChanged(trBase *, long index, trBase *) override { changed.push_back(index); }
    std::vector<long> changed;
};

TEST(trBaseAnimation, KeysStandAtRoundedFramesAndTakeThePresentValue)
{
    Probe n;
    EXPECT_EQ(n.SetParamKey(n.iR, 0, 10.4, 1), 1);
    trAnimate *a = n.ParamAnim(n.iR);
    ASSERT_NE(a, nullptr);
    EXPECT_TRUE(a->UsesMetaKeys());
    // The next whole frame doesn't count, nor another component.
    EXPECT_EQ((std::vector<bool>{n.IsParamKeyedAtFrame(n.iR, 0, 10.9, 1.0), n.IsParamKeyedAtFrame(n.iR, 0, 10.0, 0.0),
                                 n.IsParamKeyedAtFrame(n.iR, 0, 11.0, 1.0), n.IsParamKeyedAtFrame(n.iR, 1, 10.0, 1.0)}),
              (std::vector<bool>{true, true, false, false}));
    n.SetParamKey(n.iR, 0, 10.5, 1);
    EXPECT_EQ(Curve(n, n.iR, 0), "1: 10=1.5(0,0,0) 11=1.5(0,0,0)");
    // A key takes the value of the moment and changes nothing.
    Probe m;
    m.SetParam(m.iR, 2.0, trWhoUser);
    m.SetParamKey(m.iR, 0, 0.0, 1);
    m.SetParam(m.iR, 6.0, trWhoUser);
    m.SetParamKey(m.iR, 0, 10.0, 1);
    EXPECT_EQ(m.r, 6.0);
    EXPECT_EQ(m.ParamAnim(m.iR)->FirstKey(0)->Value(), 2.0);
    for (auto [frame, value] : {std::pair{10.0, 6.0}, {0.0, 2.0}, {5.0, 4.0}}) {
        EXPECT_EQ(m.UpdateParamFromAnim(m.iR, frame), 1);
        EXPECT_NEAR(m.r, value, 1e-12) << frame;
    }
    // A read at a frame reads the curve and leaves the value.
    Probe g;
    g.SetParamComponentInterpolationMode(g.iR, 0, trAnimationInterpolationLinear);
    trVector v0(0, 0, 0), v10(10, 0, 0);
    g.SetParamKeyWithValue(g.iR, 0, v0, 0.0, 0);
    g.SetParamKeyWithValue(g.iR, 0, v10, 10.0, 0);
    g.SetParam(g.iR, 42.0, trWhoUser);
    double frame = 2.5, value = 0.0;
    EXPECT_EQ(g.GetParam(g.iR, value, trWhoSystem, &frame), 1);
    EXPECT_DOUBLE_EQ(value, 2.5);
    EXPECT_EQ(g.r, 42.0);
}

TEST(trBaseAnimation, IntegersAndBooleansTakeTheRoundedCurve)
{
    Probe n;
    trVector one(1, 0, 0), two(2, 0, 0), zero(0, 0, 0);
    n.SetParamKeyWithValue(n.iI, 0, one, 0.0, 0);
    n.SetParamKeyWithValue(n.iI, 0, two, 10.0, 0);
    // The two-key TCB curve is 1.5 at the middle: rounded, 2. At frame 4 it is 1.376.
    for (auto [frame, rounded] : {std::pair{5.0, 2L}, {4.0, 1L}, {6.0, 2L}}) {
        n.UpdateParamFromAnim(n.iI, frame);
        EXPECT_EQ(n.i, rounded) << frame;
    }
    n.SetParamKeyWithValue(n.iB, 0, zero, 0.0, 0);
    n.SetParamKeyWithValue(n.iB, 0, one, 10.0, 0);
    for (auto [frame, expected] : {std::pair{4.0, 0}, {6.0, 1}}) {
        n.UpdateParamFromAnim(n.iB, frame);
        EXPECT_EQ(n.b, expected) << frame;
    }
    // Huge values saturate.
    Probe h;
    trVector huge(1e300, 0, 0);
    h.SetParamKeyWithValue(h.iI, 0, huge, 1e300, 0);
    EXPECT_EQ(h.ParamAnim(h.iI)->FirstKey(0)->FrameInt(), 1L << 62);
    h.UpdateParamFromAnim(h.iI, 0.0);
    EXPECT_EQ(h.i, 1L << 62);
}

TEST(trBaseAnimation, ComponentsAreKeyedAndWrittenIndependently)
{
    Probe n;
    n.SetParam(n.iC, trManRgb(0, 0.1f, 0.2f, 0.3f), trWhoUser);
    trVector red0(0, 9, 9), red1(1, 9, 9);
    n.SetParamComponentInterpolationMode(n.iC, 0, trAnimationInterpolationLinear);
    n.SetParamKeyWithValue(n.iC, 0, red0, 0.0, 0);
    n.SetParamKeyWithValue(n.iC, 0, red1, 10.0, 0);
    EXPECT_TRUE(n.IsParamComponentAnimated(n.iC, 0));
    EXPECT_FALSE(n.IsParamComponentAnimated(n.iC, 1));
    n.SetParam(n.iC, trManRgb(0, 0.1f, 0.7f, 0.3f), trWhoUser);
    int const tag = n.c.ColourSpace;
    n.UpdateParamFromAnim(n.iC, 5.0);
    EXPECT_EQ(trFCol(n.c.r, n.c.g, n.c.b), trFCol(0.5f, 0.7f, 0.3f)); // only red has keys
    EXPECT_EQ(n.c.ColourSpace, tag);
    // A vector keyed on all components at once, then each on its own curve.
    n.SetParam(n.iV, trVector(1, 2, 3), trWhoUser);
    EXPECT_EQ(n.SetParamKey(n.iV, -1, 0.0, 0), 1);
    trAnimate *a = n.ParamAnim(n.iV);
    EXPECT_EQ(a->NumKeys(0) + a->NumKeys(1) + a->NumKeys(2), 3);
    EXPECT_EQ(a->FindMetaKeyForFrame(0.0)->GetComponents(), 7);
    n.SetParam(n.iV, trVector(10, 20, 30), trWhoUser);
    EXPECT_EQ(n.SetParamKey(n.iV, 2, 10.0, 0), 1);
    n.SetParamComponentInterpolationMode(n.iV, 2, trAnimationInterpolationLinear);
    n.UpdateParamFromAnim(n.iV, 5.0);
    EXPECT_EQ(n.v, trVector(1.0, 2.0, 16.5));
    // A 2-vector takes components 0 and 1 only.
    EXPECT_EQ(n.SetParamKey(n.iV2, -1, 3.0, 0), 1);
    EXPECT_TRUE(n.ParamAnim(n.iV2)->NumKeys(1) == 1 && n.ParamAnim(n.iV2)->NumKeys(2) == 0);
    EXPECT_EQ(n.SetParamKey(n.iV2, 2, 3.0, 0), 0);
}

TEST(trBaseAnimation, WhatCantBeKeyedIsRefused)
{
    Probe n;
    // Strings, pointers and links; a component a scalar or vector lacks; an unknown index;
    // modes out of range; removing and updating what has no keys.
    EXPECT_EQ((std::vector<long>{n.SetParamKey(n.iS, 0, 1.0, 0), n.SetParamKey(n.iP, -1, 1.0, 0),
                                 n.SetParamKey(n.iLink, 0, 1.0, 0), n.SetParamKey(n.iR, 1, 1.0, 0),
                                 n.SetParamKey(n.iV, 3, 1.0, 0), n.SetParamKey(n.iV, -2, 1.0, 0),
                                 n.SetParamKey(999, 0, 1.0, 0), n.SetParamComponentInterpolationMode(n.iR, 0, 7),
                                 n.SetParamComponentInterpolationMode(n.iR, 3, 1),
                                 n.SetParamComponentInterpolationMode(n.iS, 0, 1),
                                 n.GetParamComponentInterpolationMode(n.iR, 0), n.RemoveParamKey(n.iR, 0, 1.0, 0),
                                 n.RemoveParamKey(n.iR, 0), n.UpdateParamFromAnim(n.iR, 1.0),
                                 n.SetParamKeyIfAnimated(n.iR), n.SetParamKeyIfPreferred(n.iR)}),
              (std::vector<long>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}));
    EXPECT_EQ(n.ParamAnim(n.iS), nullptr);
    EXPECT_FALSE(n.IsParamAnimated(n.iV));
}

TEST(trBaseAnimation, RemovingKeys)
{
    Probe n;
    trAnimationManager *manager = trAnimationManager::Instance();
    n.SetParamKey(n.iV, -1, 1.0, 0);
    n.SetParamKey(n.iV, -1, 2.0, 0);
    EXPECT_EQ(n.RemoveParamKey(n.iV, 1, 1.2, 0), 1);
    EXPECT_EQ(n.RemoveParamKey(n.iV, 1, 1.0, 0), 0);
    EXPECT_EQ(n.ParamAnim(n.iV)->NumKeys(1), 1);
    EXPECT_EQ(n.RemoveParamKey(n.iV, 0), 1);
    EXPECT_FALSE(n.IsParamComponentAnimated(n.iV, 0));
    EXPECT_TRUE(n.IsParamAnimated(n.iV) && manager->IsParamAnimated(&n, n.iV));
    n.RemoveParamKey(n.iV, 1);
    n.RemoveParamKey(n.iV, 2);
    EXPECT_FALSE(n.IsParamAnimated(n.iV) || manager->IsParamAnimated(&n, n.iV));
    EXPECT_NE(n.ParamAnim(n.iV), nullptr); // the curves keep their modes
    n.SetParamKey(n.iV, 0, 1.0, 0);
    EXPECT_EQ(n.DeleteParamAnim(n.iV), 1);
    EXPECT_EQ(n.ParamAnim(n.iV), nullptr);
    EXPECT_FALSE(manager->IsNodeAnimated(&n));
}

TEST(trBaseAnimation, KeyingAtTheCurrentFrame)
{
    AnimScene scene;
    scene.currentFrame = 4.0;
    // Not animated: nothing.
    EXPECT_EQ(scene.SetParamKeyIfAnimated(scene.iR), 0);
    EXPECT_EQ(scene.SetParamKeyIfKeyedAtCurrentFrame(scene.iR), 0);
    EXPECT_EQ(scene.ParamAnim(scene.iR), nullptr);
    scene.SetParamKey(scene.iR, 0, 0.0, 0);
    scene.SetParam(scene.iR, 3.0, trWhoUser);
    EXPECT_EQ(scene.SetParamKeyIfKeyedAtCurrentFrame(scene.iR), 0); // no key near frame 4
    EXPECT_EQ(scene.SetParamKeyIfAnimated(scene.iR), 1);
    EXPECT_EQ(Curve(scene, scene.iR, 0), "1: 0=1.5(0,0,0) 4=3(0,0,0)");
    scene.currentFrame = 4.6; // within 1 of the key at 4: a key goes at the rounded frame 5
    scene.SetParam(scene.iR, 8.0, trWhoUser);
    EXPECT_EQ(scene.SetParamKeyIfKeyedAtCurrentFrame(scene.iR), 1);
    EXPECT_EQ(Curve(scene, scene.iR, 0), "1: 0=1.5(0,0,0) 4=3(0,0,0) 5=8(0,0,0)");
}

TEST(trBaseAnimation, UpdateAllWalksTheTreeAndTheGuardTellsAnimationWrites)
{
    TestClass<AnimScene>("test_anim_scene");
    AnimScene root;
    auto *c = static_cast<AnimScene *>(root.CreateChild(trString("test_anim_scene")));
    ASSERT_NE(c, nullptr);
    trVector a(1, 0, 0), b(3, 0, 0);
    root.SetParamKeyWithValue(root.iR, 0, a, 0.0, 0);
    c->SetParamKeyWithValue(c->iI, 0, b, 0.0, 0);
    c->SetParamKeyWithValue(c->iV, 0, b, 0.0, 0);
    EXPECT_EQ(root.UpdateAllFromAnim(7.0), 3);
    EXPECT_TRUE(root.r == 1.0 && c->i == 3 && c->v.x == 3.0);
    EXPECT_EQ(c->guardSeen, 0);
    EXPECT_EQ(c->AnimUpdateGuard(), 1);
    c->SetParam(c->iR, 5.0, trWhoUser);
    EXPECT_EQ(c->guardSeen, 1);
    // Numbered file sequences are retriggered; a plain file or a node link never is.
    EXPECT_EQ(root.UpdateParamFromAnim(root.iImage, 3.0), 0);
    root.SetParam(root.iImage, "clouds.%04d.exr", trWhoUser);
    root.guardSeen = -1;
    EXPECT_EQ(root.UpdateParamFromAnim(root.iImage, 3.0), 1);
    EXPECT_EQ(root.guardSeen, 0); // the change handler ran, inside the update
    EXPECT_EQ(root.UpdateParamFromAnim(root.iLink, 3.0), 0);
}

TEST(trBaseAnimation, BakeKeysEveryFrameWithTheCurvesValues)
{
    TestClass<AnimScene>("test_anim_scene");
    AnimScene root;
    trVector v0(0, 0, 0), v10(10, 0, 0), v4(4, 0, 0);
    root.SetParamKeyWithValue(root.iR, 0, v0, 0.0, 0);
    root.SetParamKeyWithValue(root.iR, 0, v10, 10.0, 0);
    std::vector<double> expected;
    for (long f = 2; f <= 8; ++f)
        expected.push_back(root.ParamAnim(root.iR)->GetValue(double(f), 0));
    auto *child = static_cast<AnimScene *>(root.CreateChild(trString("test_anim_scene")));
    child->SetParamKeyWithValue(child->iF, 0, v4, 0.0, 0);
    EXPECT_EQ(root.BakeAnimation(5, 4, true), 0);
    EXPECT_EQ(root.BakeAnimation(2, 8, false), 1);
    trAnimate *a = root.ParamAnim(root.iR);
    EXPECT_EQ(a->NumKeys(0), 9); // 2..8, and the keys at 0 and 10 stay
    for (long f = 2; f <= 8; ++f)
        EXPECT_DOUBLE_EQ(a->FindKeyForFrame(0, double(f))->Value(), expected[size_t(f - 2)]);
    EXPECT_EQ(child->ParamAnim(child->iF)->NumKeys(0), 1);
    EXPECT_EQ(root.BakeAnimation(0, 1, true), 2);
    EXPECT_EQ(child->ParamAnim(child->iF)->NumKeys(0), 2);
    Probe still;
    EXPECT_EQ(still.BakeAnimation(0, 10, true), 0);
    // A range no one means is refused with a message, not run out of memory.
    HostCapture host;
    EXPECT_EQ(root.BakeAnimation(-(1L << 62), 1L << 62, true), 0);
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0].rfind("BakeAnimation: ", 0), 0u);
}

TEST(trBaseAnimation, TheManagerHearsOfEveryKeyAndTheReportWhenAsked)
{
    Probe n;
    ManagerListener heard;
    EXPECT_EQ(n.SetParamKey(n.iV, -1, 3.0, 0), 1);
    // One state message for the new pair, then a key message for each component.
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25008, 25009, 25009, 25009}));
    trAnimate *a = n.ParamAnim(n.iV);
    for (int c = 0; c < 3; ++c) {
        trAnimKeyMessageData const &r = heard.records[size_t(c) + 1];
        EXPECT_TRUE(r.node == &n && r.paramIndex == n.iV && r.component == c && r.keyID == a->FirstKey(c)->GetID());
    }
    heard.codes.clear();
    n.SetParamComponentInterpolationMode(n.iV, 1, trAnimationInterpolationLinear);
    n.RemoveParamKey(n.iV, 2, 3.0, 0);
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25012, 25011}));
    EXPECT_EQ(heard.records[4].mode, 2);
    heard.codes.clear();
    n.DeleteParamAnim(n.iV);
    EXPECT_EQ(heard.codes, (std::vector<unsigned long>{25008}));
    AnimReport report;
    n.AttachParamReport(&report);
    n.SetParamKey(n.iR, 0, 1.0, 0);
    EXPECT_TRUE(report.changed.empty());
    n.SetParamKey(n.iR, 0, 2.0, 1);
    n.RemoveParamKey(n.iR, 0, 2.0, 1);
    EXPECT_EQ(report.changed, (std::vector<long>{n.iR, n.iR}));
    n.DetachParamReport();
}

TEST(trBaseAnimation, UndoRecordsGoOutUnderTheirTokens)
{
    Probe n;
    {
        UndoCapture undo(trUndoOperationNone);
        n.SetParamKey(n.iR, 0, 1.0, 0);
        n.DeleteParamAnim(n.iR);
        EXPECT_TRUE(undo.records.empty());
    }
    {
        UndoCapture undo(trUndoOperationKeySet);
        n.SetParamKey(n.iV, -1, 6.6, 0);
        n.RemoveParamKey(n.iV, 0, 7.0, 0); // code 2 isn't current
        ASSERT_EQ(undo.records.size(), 1u);
        auto *r = dynamic_cast<trSetRemoveParamKeyUndoData *>(undo.records[0].get());
        ASSERT_NE(r, nullptr);
        EXPECT_TRUE(r->GetOperation() == trUndoOperationKeySet && r->GetNode() == &n);
        EXPECT_TRUE(r->paramIndex == n.iV && r->component == -1 && r->frame == 7.0);
    }
    {
        UndoCapture undo(trUndoOperationInterpolationModeChanged);
        n.SetParamComponentInterpolationMode(n.iV, 2, trAnimationInterpolationLinear);
        n.SetParamComponentInterpolationMode(n.iV, 2, trAnimationInterpolationTCB);
        ASSERT_EQ(undo.records.size(), 2u);
        auto *r0 = dynamic_cast<trChangeAnimInterpolationModeUndoData *>(undo.records[0].get());
        auto *r1 = dynamic_cast<trChangeAnimInterpolationModeUndoData *>(undo.records[1].get());
        ASSERT_TRUE(r0 && r1);
        // Each records the mode before its change.
        EXPECT_TRUE(r0->component == 2 && r0->mode == trAnimationInterpolationTCB);
        EXPECT_EQ(r1->mode, trAnimationInterpolationLinear);
    }
    {
        UndoCapture undo(trUndoOperationParamAnimDeleted);
        n.DeleteParamAnim(n.iV);
        ASSERT_EQ(undo.records.size(), 1u);
        auto *r = dynamic_cast<trReadParamFileDeleteParamAnimUndoData *>(undo.records[0].get());
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(r->paramIndices, (std::vector<long>{n.iV}));
    }
    {
        UndoCapture undo(trUndoOperationMotionFileRead);
        Scratch dir;
        HostCapture host;
        EXPECT_EQ(n.ReadParamFile(n.iR, dir.Write("undo.txt", "0 1.5\n").c_str()), 1);
        ASSERT_EQ(undo.records.size(), 1u);
        EXPECT_EQ(undo.records[0]->GetOperation(), trUndoOperationMotionFileRead);
    }
}

TEST(trBaseAnimation, MotionFileWithCommentsAndValues)
{
    AnimScene n;
    n.currentFrame = 5.0;
    Scratch dir;
    std::string const path =
        dir.Write("good.txt", "; a comment\n# another\n\n   \t \n// and another\n0 1 2 3\r\n"
                              "10.4   4 5 6 extra\n20 -1 -2 -3");
    HostCapture host;
    n.SetParamKey(n.iV, 1, 50.0, 0); // replaced by the file
    EXPECT_EQ(n.ReadParamFile(n.iV, path.c_str()), 1);
    EXPECT_TRUE(host.warnings.empty());
    EXPECT_EQ(host.infos, std::vector<std::string>{"ReadParamFile: Successfully imported 3 key frames"});
    // Four fields at most: "extra" is ignored; the key at 50 went.
    EXPECT_EQ(Curve(n, n.iV, 0), "1: 0=1(0,0,0) 10=4(0,0,0) 20=-1(0,0,0)");
    EXPECT_EQ(Curve(n, n.iV, 1), "1: 0=2(0,0,0) 10=5(0,0,0) 20=-2(0,0,0)");
    EXPECT_EQ(Curve(n, n.iV, 2), "1: 0=3(0,0,0) 10=6(0,0,0) 20=-3(0,0,0)");
    trAnimate *a = n.ParamAnim(n.iV);
    // The parameter shows the curve at the current frame.
    EXPECT_DOUBLE_EQ(n.v.y, a->GetValue(5.0, 1));
    // x: keys 1, 4, -1 at 0, 10, 20; m0 = 1.5, m1 = ((-1 - 4) + 3) / 2 = -1 on the first span.
    EXPECT_NEAR(n.v.x, 2.5 + 0.125 * 1.5 + 0.125 * 1.0, 1e-12);
}

TEST(trBaseAnimation, MotionFileFailures)
{
    Probe n;
    Scratch dir;
    {
        HostCapture host;
        std::string const missing = dir.File("missing.txt");
        EXPECT_EQ(n.ReadParamFile(n.iR, missing.c_str()), 0);
        EXPECT_EQ(n.ReadParamFile(n.iR, nullptr), 0);
        EXPECT_EQ(host.errors, (std::vector<std::string>{"ReadParamFile: Cannot open file: \"" + missing + "\"",
                                                         "ReadParamFile: Cannot open file: \"\""}));
    }
    {
        // Only comments: the animation is gone and the warning is raised.
        n.SetParamKey(n.iR, 0, 3.0, 0);
        HostCapture host;
        EXPECT_EQ(n.ReadParamFile(n.iR, dir.Write("comments.txt", "; nothing\n#here\n").c_str()), 0);
        EXPECT_EQ(host.warnings, std::vector<std::string>{"ReadParamFile: No valid key frames were found in motion file"});
        EXPECT_FALSE(n.IsParamAnimated(n.iR));
    }
    // A bad line stops the import, and the console quotes it; what came before stays.
    // A frame without a value is bad formatting too.
    for (auto [text, line, quoted, keys] :
         {std::tuple{"0 1\n\n5 oops\n9 2\n", "Line 3 of", "\"5 oops\"", 1}, {"7\n", "Line 1 of", "\"7\"", 0}}) {
        Probe fresh;
        HostCapture host;
        Console console;
        EXPECT_EQ(fresh.ReadParamFile(fresh.iR, dir.Write("bad.txt", text).c_str()), 0);
        console.Done();
        EXPECT_EQ(host.warnings, std::vector<std::string>{"ReadParamFile: Bad formatting in motion file"});
        EXPECT_TRUE(Has(console.out, std::string("ReadParamFile: ") + line) && Has(console.out, quoted)) << console.all;
        EXPECT_EQ(fresh.IsParamAnimated(fresh.iR) ? fresh.ParamAnim(fresh.iR)->NumKeys(0) : 0, keys) << text;
    }
    {
        // Parameters that can't be animated are refused before anything changes.
        std::string const path = dir.Write("string.txt", "0 text\n");
        HostCapture host;
        EXPECT_EQ(n.ReadParamFile(n.iS, path.c_str()), 0);
        EXPECT_EQ(n.ReadParamFile(999, path.c_str()), 0);
        EXPECT_EQ(host.errors.size(), 2u);
        EXPECT_EQ(n.s, trString("hello"));
    }
    {
        // A line longer than the reader's buffer is cut, and the rest skipped.
        HostCapture host;
        EXPECT_EQ(n.ReadParamFile(n.iR, dir.Write("long.txt", "1 2" + std::string(3000, ' ') + "junk\n4 8\n").c_str()), 1);
        EXPECT_EQ(Curve(n, n.iR, 0), "1: 1=2(0,0,0) 4=8(0,0,0)");
    }
}

} // namespace
