// Curves on their own: key lists, meta keys, and evaluation against hand-computed values.

#include "nodes/trAnimate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

std::vector<double> Frames(trAnimate const &a, int component)
{
    std::vector<double> out;
    for (trAnimKey *k = a.FirstKey(component); k; k = k->Next())
        out.push_back(k->Frame());
    return out;
}

// The list must be consistent both ways.
bool Linked(trAnimate const &a, int component)
{
    trAnimKey *prev = nullptr;
    long n = 0;
    for (trAnimKey *k = a.FirstKey(component); k; k = k->Next(), ++n) {
        if (k->Prev() != prev || (prev && prev->Frame() >= k->Frame()))
            return false;
        prev = k;
    }
    return n == a.NumKeys(component);
}

TEST(trAnimKey, IdsCountUpAndNeverRepeat)
{
    long const start = trAnimKey::ms_runningKeyID;
    trAnimKey a;
    trAnimKey b(3.0, 7.0);
    trAnimMetaKey m(4.0);
    EXPECT_EQ(a.GetID(), start);
    EXPECT_EQ(b.GetID(), start + 1);
    EXPECT_EQ(m.GetID(), start + 2);
    EXPECT_EQ(trAnimKey::ms_runningKeyID, start + 3);
}

TEST(trAnimKey, FramesRoundHalfUpAndSaturate)
{
    long const limit = 1L << 62;
    struct Row {
        double frame;
        long rounded;
    } const rows[] = {{10.4, 10},    {10.5, 11},      {-2.5, -2}, {-2.6, -3},
                      {-0.5, 0},     {1e300, limit},  {-1e300, -limit},
                      {std::nan(""), 0}, {1e15 + 0.25, 1000000000000000L}};
    for (Row const &row : rows) {
        trAnimKey k;
        k.SetFrame(row.frame);
        EXPECT_EQ(k.FrameInt(), row.rounded) << row.frame;
        EXPECT_EQ(trRoundFrame(row.frame), row.rounded) << row.frame;
    }
}

TEST(trAnimKey, DeleteAllFollowingCutsTheList)
{
    trAnimate a;
    for (long f = 0; f < 5; ++f)
        a.SetKey(double(f), f, 0);
    trAnimKey *second = a.FirstKey(0)->Next();
    second->DeleteAllFollowing();
    EXPECT_EQ(second->Next(), nullptr);
    EXPECT_EQ(a.FirstKey(0)->Next(), second);
    // The curve's count is its own business; only the cells are checked here.
}

TEST(trAnimMetaKey, MaskOfComponents)
{
    trAnimMetaKey m;
    EXPECT_FALSE(m.HasComponents());
    m.SetComponent(0);
    m.SetComponent(2);
    m.SetComponent(3);  // refused
    m.SetComponent(-1); // refused
    EXPECT_EQ(m.GetComponents(), 5);
    EXPECT_EQ(m.NumComponents(), 2);
    EXPECT_TRUE(m.DoYouHaveThisComponent(2));
    EXPECT_FALSE(m.DoYouHaveThisComponent(1));
    m.ClearComponent(0);
    EXPECT_EQ(m.GetComponents(), 4);
}

TEST(trAnimate, SetKeyKeepsFrameOrderAndOverwrites)
{
    trAnimate a;
    EXPECT_FALSE(a.HasKeys());
    a.SetKey(1.0, 20, 0);
    a.SetKey(2.0, 5, 0);
    trAnimKey *mid = a.SetKey(3.0, 10, 0);
    a.SetKey(4.0, -3, 0);
    EXPECT_EQ(Frames(a, 0), (std::vector<double>{-3, 5, 10, 20}));
    EXPECT_TRUE(Linked(a, 0));
    EXPECT_EQ(a.NumKeys(0), 4);

    // Overwrite: same cell, same id, TCB kept, only the value changes.
    mid->SetTCB(0.1, 0.2, 0.3);
    long const id = mid->GetID();
    EXPECT_EQ(a.SetKey(9.0, 10, 0), mid);
    EXPECT_TRUE(mid->GetID() == id && mid->Value() == 9.0 && mid->Tension() == 0.1 && mid->Bias() == 0.3);
    EXPECT_EQ(a.NumKeys(0), 4);
}

TEST(trAnimate, InvalidComponentsAndModesAreRefused)
{
    trAnimate a;
    EXPECT_TRUE(a.SetKey(1.0, 0, 3) == nullptr && a.SetKey(1.0, 0, -1) == nullptr && !a.HasKeys());
    EXPECT_TRUE(a.NumKeys(5) == 0 && a.FirstKey(-1) == nullptr && a.GetValue(0.0, 3) == 0.0);
    EXPECT_EQ(a.GetComponentInterpolationMode(3), 0);
    EXPECT_EQ(a.SetComponentInterpolationMode(3, 2), 0);
    EXPECT_EQ(a.RemoveAllKeysForComponent(-1), 0);
    EXPECT_EQ(a.SetComponentInterpolationMode(1, trAnimationInterpolationLinear), 1);
    EXPECT_EQ(a.GetComponentInterpolationMode(1), trAnimationInterpolationLinear);
    EXPECT_EQ(a.SetComponentInterpolationMode(1, 0), 0);
    EXPECT_EQ(a.SetComponentInterpolationMode(1, 3), 0);
    EXPECT_EQ(a.GetComponentInterpolationMode(1), trAnimationInterpolationLinear);
}

TEST(trAnimate, FindKeys)
{
    trAnimate a;
    a.SetKey(1.0, 10, 1);
    trAnimKey *k = a.SetKey(2.0, 20, 2);
    EXPECT_EQ(a.FindKeyForFrame(1, 10.0), a.FirstKey(1));
    EXPECT_EQ(a.FindKeyForFrame(1, 10.4), a.FirstKey(1)); // the frame rounds
    EXPECT_EQ(a.FindKeyForFrame(1, 10.5), nullptr);
    EXPECT_EQ(a.FindKeyForFrame(0, 10.0), nullptr);
    int component = -7;
    EXPECT_EQ(a.FindKeyByID(k->GetID(), component), k);
    EXPECT_EQ(component, 2);
    EXPECT_EQ(a.FindKeyByID(-5, component), nullptr);
    EXPECT_EQ(component, -1);
    EXPECT_EQ(a.LastKey(2), k);
}

TEST(trAnimate, ValueIsConstantOutsideTheKeys)
{
    trAnimate a;
    EXPECT_EQ(a.GetValue(5.0, 0), 0.0); // no keys
    a.SetKey(4.0, 10, 0);
    // A single key gives a constant curve.
    EXPECT_EQ(a.GetValue(-100.0, 0), 4.0);
    EXPECT_EQ(a.GetValue(1000.0, 0), 4.0);
    a.SetKey(8.0, 20, 0);
    for (int mode : {1, 2}) {
        a.SetComponentInterpolationMode(0, mode);
        EXPECT_EQ(a.GetValue(9.0, 0), 4.0);
        EXPECT_EQ(a.GetValue(20.0, 0), 8.0);
        EXPECT_EQ(a.GetValue(20.5, 0), 8.0);
    }
}

TEST(trAnimate, LinearIsTheStraightLineBetweenKeys)
{
    trAnimate a;
    a.SetComponentInterpolationMode(0, trAnimationInterpolationLinear);
    a.SetKey(0.0, 0, 0);
    a.SetKey(10.0, 10, 0);
    a.SetKey(-10.0, 30, 0);
    EXPECT_DOUBLE_EQ(a.GetValue(5.0, 0), 5.0);
    EXPECT_DOUBLE_EQ(a.GetValue(20.0, 0), 0.0);
    EXPECT_DOUBLE_EQ(a.GetValue(25.0, 0), -5.0);
}

TEST(trAnimate, BeforeAndAfterAreTheKeysAroundTheFrame)
{
    trAnimate a;
    trAnimKey *k0 = a.SetKey(0.0, 0, 0);
    trAnimKey *k1 = a.SetKey(1.0, 10, 0);
    trAnimKey *k2 = a.SetKey(2.0, 20, 0);
    // At a key frame itself (10) the key before is strictly before, the one after is at it.
    struct {
        double frame;
        trAnimKey *before, *after;
    } const rows[] = {{15.0, k1, k2}, {10.0, k0, k1}, {-1.0, nullptr, k0}, {25.0, k2, nullptr}};
    for (auto const &r : rows) {
        trAnimKey *before = nullptr, *after = nullptr;
        a.GetValue(r.frame, 0, &before, &after);
        EXPECT_TRUE(before == r.before && after == r.after) << r.frame;
    }
}

TEST(trAnimate, StartKeyGivesTheSameValues)
{
    trAnimate a;
    for (long f = 0; f <= 50; f += 5)
        a.SetKey(double((f * 7) % 11), f, 0);
    trAnimKey *before = nullptr;
    for (double f = -2.0; f < 55.0; f += 0.75) {
        double const fresh = a.GetValue(f, 0);
        double const walked = a.GetValue(f, 0, &before, nullptr, before);
        EXPECT_DOUBLE_EQ(walked, fresh) << f;
    }
    // A start beyond the frame is not used.
    EXPECT_DOUBLE_EQ(a.GetValue(3.0, 0, nullptr, nullptr, a.LastKey(0)), a.GetValue(3.0, 0));
}

TEST(trAnimate, TwoKeyTCBHasHandComputedValues)
{
    // Two keys: prior and next are the span's ends, so the outer tangent terms vanish
    // and m0 = m1 = (y1 - y0) / 2 with T = C = B = 0.
    trAnimate a;
    a.SetKey(0.0, 0, 0);
    a.SetKey(10.0, 10, 0);
    // s = 0.25: h01 = 0.15625, h10 = 0.140625, h11 = -0.046875.
    EXPECT_NEAR(a.GetValue(2.5, 0), 2.03125, 1e-12);
    EXPECT_NEAR(a.GetValue(5.0, 0), 5.0, 1e-12);
    EXPECT_NEAR(a.GetValue(7.5, 0), 7.96875, 1e-12);
}

TEST(trAnimate, TCBUsesTheFirstKeysParametersForTheSpan)
{
    trAnimate a;
    trAnimKey *k0 = a.SetKey(0.0, 0, 0);
    trAnimKey *k1 = a.SetKey(10.0, 10, 0);
    a.SetKey(0.0, 20, 0);
    // Span 0..10: m0 = 10 * 0.5 = 5; m1 = ((0 - 10) * 1 + 10) * 0.5 = 0.
    // s = 0.5: 0.5 * 10 + 0.125 * 5 = 5.625.
    EXPECT_NEAR(a.GetValue(5.0, 0), 5.625, 1e-12);
    // k1's parameters play no part in the span that starts at k0.
    k1->SetTCB(0.9, -0.5, 0.7);
    EXPECT_NEAR(a.GetValue(5.0, 0), 5.625, 1e-12);
    // Full tension on k0 flattens both tangents: the Hermite blend of the ends alone.
    k0->SetTCB(1.0, 0.0, 0.0);
    EXPECT_NEAR(a.GetValue(5.0, 0), 5.0, 1e-12);
    EXPECT_NEAR(a.GetValue(2.5, 0), 1.5625, 1e-12);
    // Bias 1: m0 = (0 + 10 * 0 * 1) * 0.5 = 0 and m1 = (0 * 0 * (-10) + 10 * 2) * 0.5 = 10.
    k0->SetTCB(0.0, 0.0, 1.0);
    EXPECT_NEAR(a.GetValue(5.0, 0), 5.0 - 0.125 * 10.0, 1e-12);
}

TEST(trAnimate, TCBPassesThroughEveryKey)
{
    trAnimate a;
    double const values[] = {3.0, -1.0, 4.0, 1.5, -5.0, 9.0};
    long const frames[] = {-7, 0, 3, 11, 12, 40};
    for (int i = 0; i < 6; ++i) {
        trAnimKey *k = a.SetKey(values[i], frames[i], 2);
        k->SetTCB(0.3 * i - 0.8, 0.5 - 0.2 * i, 0.1 * i);
    }
    for (int i = 0; i < 6; ++i)
        EXPECT_NEAR(a.GetValue(double(frames[i]), 2), values[i], 1e-9) << frames[i];
    // Just inside each span the curve starts at its key.
    for (int i = 0; i < 5; ++i)
        EXPECT_NEAR(a.GetValue(double(frames[i]) + 1e-7, 2), values[i], 1e-4);
}

TEST(trAnimate, ComponentsAreIndependent)
{
    trAnimate a;
    a.SetComponentInterpolationMode(0, trAnimationInterpolationLinear);
    a.SetKey(0.0, 0, 0);
    a.SetKey(10.0, 10, 0);
    a.SetKey(100.0, 0, 2);
    a.SetKey(0.0, 20, 2);
    EXPECT_DOUBLE_EQ(a.GetValue(5.0, 0), 5.0);
    EXPECT_EQ(a.GetValue(5.0, 1), 0.0);
    EXPECT_NEAR(a.GetValue(10.0, 2), 50.0, 1e-12); // two-key TCB is symmetric about its middle
    EXPECT_EQ(a.RemoveAllKeysForComponent(0), 2);
    EXPECT_EQ(a.NumKeys(2), 2);
}

TEST(trAnimate, RemoveKeys)
{
    trAnimate a;
    a.SetUseMetaKeys(true);
    a.SetKey(1.0, 5, 0);
    a.SetKey(2.0, 5, 2);
    trAnimKey *k = a.SetKey(3.0, 9, 1);
    EXPECT_EQ(a.RemoveKey(5L, 1), 0);
    EXPECT_EQ(a.RemoveKey(6L, 0), 0);
    long mask = -1;
    EXPECT_EQ(a.RemoveKey(5L, &mask), 2);
    EXPECT_TRUE(mask == 5 && a.NumKeys(0) == 0 && a.NumKeys(2) == 0);
    int component = -1;
    EXPECT_EQ(a.RemoveKeyByID(k->GetID(), component), 1);
    EXPECT_EQ(component, 1);
    EXPECT_FALSE(a.HasKeys() || a.HasMetaKeys());
    EXPECT_EQ(a.RemoveKey(5L, static_cast<long *>(nullptr)), 0);
}

TEST(trAnimate, MetaKeysFollowTheComponentKeys)
{
    trAnimate a;
    a.SetKey(1.0, 7, 1); // made before meta keys were turned on
    a.SetUseMetaKeys(true);
    a.SetKey(1.0, 5, 0);
    a.SetKey(1.0, 5, 2);
    ASSERT_EQ(a.NumMetaKeys(), 2);
    trAnimMetaKey *m5 = a.FindMetaKeyForFrame(5.0);
    ASSERT_NE(m5, nullptr);
    EXPECT_EQ(m5->GetComponents(), 5);
    EXPECT_EQ(a.FindMetaKeyForFrame(7.0)->GetComponents(), 2);
    a.RemoveKey(5L, 0);
    EXPECT_EQ(a.FindMetaKeyForFrame(5.0), m5);
    EXPECT_EQ(m5->GetComponents(), 4);
    a.RemoveKey(5L, 2);
    EXPECT_EQ(a.FindMetaKeyForFrame(5.0), nullptr);
    EXPECT_EQ(a.NumMetaKeys(), 1);
    a.SetUseMetaKeys(false);
    EXPECT_FALSE(a.HasMetaKeys());
    a.SetKey(1.0, 3, 0);
    EXPECT_FALSE(a.HasMetaKeys());
}

TEST(trAnimate, MoveKeysMergesWithTheMovedKeyWinning)
{
    trAnimate a;
    a.SetUseMetaKeys(true);
    a.SetKey(0.0, 0, 0);
    trAnimKey *k10 = a.SetKey(10.0, 10, 0);
    a.SetKey(20.0, 20, 0);
    a.SetKey(7.0, 10, 1);
    long const ids[] = {k10->GetID()};
    EXPECT_EQ(a.MoveKeys(ids, 1, 10), 1);
    EXPECT_EQ(Frames(a, 0), (std::vector<double>{0, 20}));
    EXPECT_TRUE(Linked(a, 0));
    EXPECT_EQ(a.FindKeyForFrame(0, 20.0), k10);
    EXPECT_EQ(k10->Value(), 10.0);
    // Meta keys: frame 10 keeps component 1 only, frame 20 has component 0.
    EXPECT_EQ(a.FindMetaKeyForFrame(10.0)->GetComponents(), 2);
    EXPECT_EQ(a.FindMetaKeyForFrame(20.0)->GetComponents(), 1);
    EXPECT_EQ(a.NumMetaKeys(), 3);

    // Past another key without landing on it: the order is repaired.
    long const back[] = {k10->GetID()};
    EXPECT_EQ(a.MoveKeys(back, 1, -25), 1);
    EXPECT_EQ(Frames(a, 0), (std::vector<double>{-5, 0}));
    EXPECT_TRUE(Linked(a, 0));
    EXPECT_EQ(a.MoveKeys(nullptr, 0, 3), 0);
    long const unknown[] = {-99};
    EXPECT_EQ(a.MoveKeys(unknown, 1, 3), 0);
}

TEST(trAnimate, MovingAMetaKeyCarriesItsComponentKeys)
{
    trAnimate a;
    a.SetUseMetaKeys(true);
    a.SetKey(1.0, 4, 0);
    a.SetKey(2.0, 4, 2);
    a.SetKey(3.0, 8, 1);
    long const ids[] = {a.FindMetaKeyForFrame(4.0)->GetID()};
    EXPECT_EQ(a.MoveKeys(ids, 1, 2), 2);
    EXPECT_EQ(Frames(a, 0), (std::vector<double>{6}));
    EXPECT_EQ(Frames(a, 2), (std::vector<double>{6}));
    EXPECT_EQ(Frames(a, 1), (std::vector<double>{8}));
    EXPECT_EQ(a.FindMetaKeyForFrame(6.0)->GetID(), ids[0]);
    EXPECT_EQ(a.FindMetaKeyForFrame(4.0), nullptr);
}

TEST(trAnimate, ConsolidateKeepsTheLaterCell)
{
    trAnimate a;
    a.SetKey(1.0, 1, 0);
    trAnimKey *k2 = a.SetKey(2.0, 2, 0);
    k2->SetFrame(1.0); // two cells at frame 1, k1 first
    a.ConsolidateKeys();
    EXPECT_EQ(a.NumKeys(0), 1);
    EXPECT_EQ(a.FirstKey(0), k2);
    EXPECT_EQ(k2->Prev(), nullptr);
}

} // namespace
