// Curves on their own: key lists, meta keys, and evaluation against hand-computed values.

#include "nodes/trAnimate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
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

TEST(trAnimKey, IdsCountUpAndFramesRoundHalfUpAndSaturate)
{
    long const start = trAnimKey::ms_runningKeyID;
    trAnimKey a;
    trAnimKey b(3.0, 7.0);
    trAnimMetaKey m(4.0);
    EXPECT_EQ((std::vector<long>{a.GetID(), b.GetID(), m.GetID(), trAnimKey::ms_runningKeyID}),
              (std::vector<long>{start, start + 1, start + 2, start + 3}));
    long const limit = 1L << 62;
    struct {
        double frame;
        long rounded;
    } const rows[] = {{10.4, 10},      {10.5, 11},       {-2.5, -2},       {-2.6, -3},
                      {-0.5, 0},       {1e300, limit},   {-1e300, -limit}, {std::nan(""), 0},
                      {1e15 + 0.25, 1000000000000000L}};
    for (auto const &row : rows) {
        trAnimKey k;
        k.SetFrame(row.frame);
        EXPECT_EQ(k.FrameInt(), row.rounded) << row.frame;
        EXPECT_EQ(trRoundFrame(row.frame), row.rounded) << row.frame;
    }
}

TEST(trAnimKey, DeleteAllFollowingAndConsolidateCutTheListAndMetaKeysMaskComponents)
{
    trAnimate a;
    for (long f = 0; f < 5; ++f)
        a.SetKey(double(f), f, 0);
    trAnimKey *second = a.FirstKey(0)->Next();
    second->DeleteAllFollowing();
    EXPECT_EQ(second->Next(), nullptr);
    EXPECT_EQ(a.FirstKey(0)->Next(), second); // the curve's count is its own business
    // Consolidating two cells at one frame keeps the later one.
    trAnimate b;
    b.SetKey(1.0, 1, 0);
    trAnimKey *k2 = b.SetKey(2.0, 2, 0);
    k2->SetFrame(1.0); // two cells at frame 1, the first one first
    b.ConsolidateKeys();
    EXPECT_EQ(b.NumKeys(0), 1);
    EXPECT_TRUE(b.FirstKey(0) == k2 && k2->Prev() == nullptr);
    trAnimMetaKey m;
    EXPECT_FALSE(m.HasComponents());
    for (int c : {0, 2, 3, -1}) // the last two are refused
        m.SetComponent(c);
    EXPECT_EQ(m.GetComponents(), 5);
    EXPECT_EQ(m.NumComponents(), 2);
    EXPECT_TRUE(m.DoYouHaveThisComponent(2) && !m.DoYouHaveThisComponent(1));
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
    EXPECT_EQ((std::vector<long>{a.GetComponentInterpolationMode(3), a.SetComponentInterpolationMode(3, 2),
                                 a.RemoveAllKeysForComponent(-1),
                                 a.SetComponentInterpolationMode(1, trAnimationInterpolationLinear),
                                 a.SetComponentInterpolationMode(1, 0), a.SetComponentInterpolationMode(1, 3),
                                 a.GetComponentInterpolationMode(1)}),
              (std::vector<long>{0, 0, 0, 1, 0, 0, trAnimationInterpolationLinear}));
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

TEST(trAnimate, ValuesAgainstHandComputedOnes)
{
    using Keys = std::vector<std::pair<double, long>>; // value, frame
    Keys const two = {{4, 10}, {8, 20}}, line = {{0, 0}, {10, 10}, {-10, 30}}, span = {{0, 0}, {10, 10}};
    // Two-key TCB: prior and next are the span's ends, so the outer tangent terms vanish and
    // m0 = m1 = (y1 - y0) / 2 with T = C = B = 0; at s = 0.25 h01 = 0.15625, h10 = 0.140625,
    // h11 = -0.046875. Outside the keys every mode is constant.
    struct {
        int mode;
        Keys keys;
        double frame, value;
    } const rows[] = {
        {1, {}, 5, 0},         {1, {{4, 10}}, -100, 4}, {1, {{4, 10}}, 1000, 4}, {1, two, 9, 4},
        {1, two, 20, 8},       {1, two, 20.5, 8},       {2, two, 9, 4},          {2, two, 20, 8},
        {2, two, 20.5, 8},     {2, line, 5, 5},         {2, line, 20, 0},        {2, line, 25, -5},
        {1, span, 2.5, 2.03125}, {1, span, 5, 5},       {1, span, 7.5, 7.96875},
    };
    for (auto const &row : rows) {
        trAnimate a;
        a.SetComponentInterpolationMode(0, row.mode);
        for (auto [value, frame] : row.keys)
            a.SetKey(value, frame, 0);
        EXPECT_NEAR(a.GetValue(row.frame, 0), row.value, 1e-12)
            << "mode " << row.mode << ", " << row.keys.size() << " keys, frame " << row.frame;
    }
}

TEST(trAnimate, BeforeAndAfterAreTheKeysAroundTheFrameAndAStartKeyChangesNothing)
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
    trAnimate b;
    for (long f = 0; f <= 50; f += 5)
        b.SetKey(double((f * 7) % 11), f, 0);
    trAnimKey *before = nullptr;
    for (double f = -2.0; f < 55.0; f += 0.75) {
        double const fresh = b.GetValue(f, 0);
        EXPECT_DOUBLE_EQ(b.GetValue(f, 0, &before, nullptr, before), fresh) << f;
    }
    // A start beyond the frame is not used.
    EXPECT_DOUBLE_EQ(b.GetValue(3.0, 0, nullptr, nullptr, b.LastKey(0)), b.GetValue(3.0, 0));
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
    for (int i = 0; i < 6; ++i)
        a.SetKey(values[i], frames[i], 2)->SetTCB(0.3 * i - 0.8, 0.5 - 0.2 * i, 0.1 * i);
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
    EXPECT_EQ(a.MoveKeys(ids, 1, -25), 1);
    EXPECT_EQ(Frames(a, 0), (std::vector<double>{-5, 0}));
    EXPECT_TRUE(Linked(a, 0));
    EXPECT_EQ(a.MoveKeys(nullptr, 0, 3), 0);
    long const unknown[] = {-99};
    EXPECT_EQ(a.MoveKeys(unknown, 1, 3), 0);
    // Moving a meta key carries its component keys.
    trAnimate b;
    b.SetUseMetaKeys(true);
    b.SetKey(1.0, 4, 0);
    b.SetKey(2.0, 4, 2);
    b.SetKey(3.0, 8, 1);
    long const meta[] = {b.FindMetaKeyForFrame(4.0)->GetID()};
    EXPECT_EQ(b.MoveKeys(meta, 1, 2), 2);
    EXPECT_EQ(Frames(b, 0), (std::vector<double>{6}));
    EXPECT_EQ(Frames(b, 2), (std::vector<double>{6}));
    EXPECT_EQ(Frames(b, 1), (std::vector<double>{8}));
    EXPECT_EQ(b.FindMetaKeyForFrame(6.0)->GetID(), meta[0]);
    EXPECT_EQ(b.FindMetaKeyForFrame(4.0), nullptr);
}

} // namespace
