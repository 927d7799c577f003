#include "nodes/trAnimate.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>
#include <vector>

// ---------------------------------------------------------------------------------
// trAnimKey

long trAnimKey::ms_runningKeyID = 0;

trAnimKey::trAnimKey() : id(ms_runningKeyID++)
{
}

trAnimKey::trAnimKey(double frame, double value) : value(value), frame(frame), id(ms_runningKeyID++)
{
}

trAnimKey::~trAnimKey() = default;

long trRoundFrame(double f)
{
    constexpr double kLimit = 4611686018427387904.0; // 2^62
    double const r = std::floor(f + 0.5);
    if (!(r == r))
        return 0;
    if (r >= kLimit)
        return long(kLimit);
    if (r <= -kLimit)
        return -long(kLimit);
    return long(r);
}

long trAnimKey::FrameInt() const
{
    return trRoundFrame(frame);
}

void trAnimKey::SetTCB(double t, double c, double b)
{
    tension = t;
    continuity = c;
    bias = b;
}

void trAnimKey::DeleteAllFollowing()
{
    trAnimKey *k = next;
    next = nullptr;
    while (k) {
        trAnimKey *n = k->next;
        delete k;
        k = n;
    }
}

// ---------------------------------------------------------------------------------
// trAnimMetaKey

namespace {

bool ValidComponent(long component)
{
    return component >= 0 && component < trAnimate::kNumComponents;
}

// Division guard: a divisor of size at most 1e-12 becomes 1e-12 with its sign.
double GuardedRatio(double num, double den)
{
    if (std::fabs(den) > 1e-12)
        return num / den;
    return num / (den < 0.0 ? -1e-12 : 1e-12);
}

void FreeList(trAnimKey *first)
{
    if (first) {
        first->DeleteAllFollowing();
        delete first;
    }
}

// Puts a list back in frame order after frames changed. Cells flagged in `moved` sort
// after the others at one frame, so that a key dragged onto another one replaces it.
trAnimKey *SortList(trAnimKey *first, std::unordered_set<trAnimKey *> const &moved)
{
    std::vector<trAnimKey *> cells;
    for (trAnimKey *k = first; k; k = k->next)
        cells.push_back(k);
    if (cells.empty())
        return nullptr;
    std::stable_sort(cells.begin(), cells.end(), [&](trAnimKey *a, trAnimKey *b) {
        if (a->frame != b->frame)
            return a->frame < b->frame;
        return !moved.count(a) && moved.count(b);
    });
    for (size_t i = 0; i < cells.size(); ++i) {
        cells[i]->prev = i ? cells[i - 1] : nullptr;
        cells[i]->next = i + 1 < cells.size() ? cells[i + 1] : nullptr;
    }
    return cells.front();
}

// Drops every cell that has a later cell at the same whole frame; gives the new count.
long ConsolidateList(trAnimKey *&first)
{
    long count = 0;
    trAnimKey *k = first;
    while (k) {
        trAnimKey *n = k->next;
        if (n && n->FrameInt() == k->FrameInt()) {
            if (k->prev)
                k->prev->next = n;
            else
                first = n;
            n->prev = k->prev;
            delete k;
        } else {
            ++count;
        }
        k = n;
    }
    return count;
}

} // namespace

void trAnimMetaKey::SetComponent(long component)
{
    if (ValidComponent(component))
        components = static_cast<unsigned char>(components | (1u << component));
}

void trAnimMetaKey::ClearComponent(long component)
{
    if (ValidComponent(component))
        components = static_cast<unsigned char>(components & ~(1u << component));
}

bool trAnimMetaKey::DoYouHaveThisComponent(long component) const
{
    return ValidComponent(component) && (components & (1u << component)) != 0;
}

long trAnimMetaKey::NumComponents() const
{
    long n = 0;
    for (int c = 0; c < trAnimate::kNumComponents; ++c)
        n += (components >> c) & 1;
    return n;
}

// ---------------------------------------------------------------------------------
// trAnimate

trAnimate::trAnimate() = default;

trAnimate::~trAnimate()
{
    for (int c = 0; c < kNumComponents; ++c)
        FreeList(firstKey[c]);
    FreeMetaKeys();
}

bool trAnimate::HasKeys() const
{
    return firstKey[0] || firstKey[1] || firstKey[2];
}

long trAnimate::NumKeys(int component) const
{
    return ValidComponent(component) ? numKeys[component] : 0;
}

trAnimKey *trAnimate::FirstKey(int component) const
{
    return ValidComponent(component) ? firstKey[component] : nullptr;
}

trAnimKey *trAnimate::LastKey(int component) const
{
    trAnimKey *k = FirstKey(component);
    while (k && k->next)
        k = k->next;
    return k;
}

trAnimKey *trAnimate::FindKeyForFrame(int component, double frame) const
{
    long const f = trRoundFrame(frame);
    for (trAnimKey *k = FirstKey(component); k; k = k->next) {
        long const kf = k->FrameInt();
        if (kf == f)
            return k;
        if (kf > f)
            break;
    }
    return nullptr;
}

trAnimKey *trAnimate::FindKeyByID(long id, int &component) const
{
    for (int c = 0; c < kNumComponents; ++c)
        for (trAnimKey *k = firstKey[c]; k; k = k->next)
            if (k->id == id) {
                component = c;
                return k;
            }
    component = -1;
    return nullptr;
}

trAnimKey *trAnimate::SetKey(double value, long frame, int component)
{
    if (!ValidComponent(component))
        return nullptr;
    double const f = double(frame);
    trAnimKey *prev = nullptr;
    trAnimKey *k = firstKey[component];
    while (k && k->frame < f) {
        prev = k;
        k = k->next;
    }
    if (k && k->frame == f) {
        k->value = value;
    } else {
        trAnimKey *cell = new trAnimKey(f, value);
        cell->prev = prev;
        cell->next = k;
        if (prev)
            prev->next = cell;
        else
            firstKey[component] = cell;
        if (k)
            k->prev = cell;
        ++numKeys[component];
        k = cell;
    }
    if (useMetaKeys)
        MetaSet(frame, component);
    return k;
}

long trAnimate::MoveKeys(long const *ids, long count, long offset)
{
    if (!ids || count <= 0)
        return 0;
    std::unordered_set<long> idSet(ids, ids + count);
    // A meta key carries the component keys standing at its frame with it.
    for (trAnimMetaKey *m = firstMetaKey; m; m = m->NextMeta()) {
        if (!idSet.count(m->id))
            continue;
        for (int c = 0; c < kNumComponents; ++c)
            if (m->DoYouHaveThisComponent(c))
                if (trAnimKey *k = FindKeyForFrame(c, m->frame))
                    idSet.insert(k->id);
    }
    std::unordered_set<trAnimKey *> moved;
    long numMoved = 0;
    for (int c = 0; c < kNumComponents; ++c)
        for (trAnimKey *k = firstKey[c]; k; k = k->next)
            if (idSet.count(k->id)) {
                k->frame += double(offset);
                moved.insert(k);
                ++numMoved;
            }
    for (trAnimMetaKey *m = firstMetaKey; m; m = m->NextMeta())
        if (idSet.count(m->id)) {
            m->frame += double(offset);
            moved.insert(m);
        }
    if (moved.empty())
        return 0;
    for (int c = 0; c < kNumComponents; ++c)
        firstKey[c] = SortList(firstKey[c], moved);
    firstMetaKey = static_cast<trAnimMetaKey *>(SortList(firstMetaKey, moved));
    ConsolidateKeys();
    return numMoved;
}

void trAnimate::ConsolidateKeys()
{
    for (int c = 0; c < kNumComponents; ++c)
        numKeys[c] = ConsolidateList(firstKey[c]);
    trAnimKey *meta = firstMetaKey;
    numMetaKeys = ConsolidateList(meta);
    firstMetaKey = static_cast<trAnimMetaKey *>(meta);
    if (useMetaKeys)
        RebuildMetaKeys();
}

void trAnimate::Unlink(int component, trAnimKey *key)
{
    if (key->prev)
        key->prev->next = key->next;
    else
        firstKey[component] = key->next;
    if (key->next)
        key->next->prev = key->prev;
    --numKeys[component];
    long const frame = key->FrameInt();
    delete key;
    if (useMetaKeys)
        MetaClear(frame, component);
}

long trAnimate::RemoveKey(long frame, long *component)
{
    long mask = 0, removed = 0;
    for (int c = 0; c < kNumComponents; ++c)
        if (RemoveKey(frame, c)) {
            mask |= 1L << c;
            ++removed;
        }
    if (component)
        *component = mask;
    return removed;
}

long trAnimate::RemoveKey(long frame, int component)
{
    trAnimKey *k = FindKeyForFrame(component, double(frame));
    if (!k)
        return 0;
    Unlink(component, k);
    return 1;
}

long trAnimate::RemoveKeyByID(long id, int &component)
{
    trAnimKey *k = FindKeyByID(id, component);
    if (!k)
        return 0;
    Unlink(component, k);
    return 1;
}

long trAnimate::RemoveAllKeysForComponent(int component)
{
    if (!ValidComponent(component))
        return 0;
    long const n = numKeys[component];
    FreeList(firstKey[component]);
    firstKey[component] = nullptr;
    numKeys[component] = 0;
    if (useMetaKeys)
        RebuildMetaKeys();
    return n;
}

int trAnimate::GetComponentInterpolationMode(int component) const
{
    return ValidComponent(component) ? mode[component] : int(trAnimationInterpolationNone);
}

long trAnimate::SetComponentInterpolationMode(int component, int newMode)
{
    if (!ValidComponent(component) ||
        (newMode != trAnimationInterpolationTCB && newMode != trAnimationInterpolationLinear))
        return 0;
    mode[component] = newMode;
    return 1;
}

double trAnimate::GetValue(double frame, int component, trAnimKey **before, trAnimKey **after,
                           trAnimKey *start) const
{
    if (before)
        *before = nullptr;
    if (after)
        *after = nullptr;
    trAnimKey *const first = FirstKey(component);
    if (!first)
        return 0.0;
    if (frame <= first->frame) {
        if (after)
            *after = first;
        return first->value;
    }
    // A start at or beyond the frame can't be k0: walk from the beginning then.
    trAnimKey *k0 = start && start->frame < frame ? start : first;
    while (k0->next && k0->next->frame < frame)
        k0 = k0->next;
    trAnimKey *const k1 = k0->next;
    if (before)
        *before = k0;
    if (!k1)
        return k0->value;
    if (after)
        *after = k1;

    double const f0 = k0->frame, f1 = k1->frame;
    double const y0 = k0->value, y1 = k1->value;
    double const d = f1 - f0;
    switch (mode[component]) {
    case trAnimationInterpolationLinear: {
        double const s = GuardedRatio(frame - f0, d);
        return (1.0 - s) * y0 + s * y1;
    }
    case trAnimationInterpolationTCB: {
        // One set of tension, continuity and bias, k0's, shapes both ends of the span.
        trAnimKey const *kp = k0->prev ? k0->prev : k0;
        trAnimKey const *kn = k1->next ? k1->next : k1;
        double const dp = f0 - kp->frame;
        double const dn = kn->frame - f1;
        double const rp = GuardedRatio(d, dp);
        double const rn = GuardedRatio(d, dn);
        double const t = k0->tension, c = k0->continuity, b = k0->bias;
        double const a = (1.0 - t) * 0.5;
        double const m0 = ((y0 - kp->value) * rp * (1.0 + b) * (1.0 + c) + (y1 - y0) * (1.0 - b) * (1.0 - c)) * a;
        double const m1 = ((kn->value - y1) * rn * (1.0 - b) * (1.0 + c) + (y1 - y0) * (1.0 + b) * (1.0 - c)) * a;
        double const s = GuardedRatio(frame - f0, d);
        double const s2 = s * s, s3 = s2 * s;
        return (2.0 * s3 - 3.0 * s2 + 1.0) * y0 + (3.0 * s2 - 2.0 * s3) * y1 + (s3 - 2.0 * s2 + s) * m0 +
               (s3 - s2) * m1;
    }
    default:
        return first->value;
    }
}

// ---- Meta keys ----

void trAnimate::SetUseMetaKeys(bool use)
{
    useMetaKeys = use ? 1 : 0;
    if (use)
        RebuildMetaKeys();
    else
        FreeMetaKeys();
}

trAnimMetaKey *trAnimate::FindMetaKeyForFrame(double frame) const
{
    long const f = trRoundFrame(frame);
    for (trAnimMetaKey *m = firstMetaKey; m; m = m->NextMeta()) {
        long const mf = m->FrameInt();
        if (mf == f)
            return m;
        if (mf > f)
            break;
    }
    return nullptr;
}

trAnimMetaKey *trAnimate::FindMetaKeyByID(long id) const
{
    for (trAnimMetaKey *m = firstMetaKey; m; m = m->NextMeta())
        if (m->id == id)
            return m;
    return nullptr;
}

void trAnimate::MetaSet(long frame, int component)
{
    double const f = double(frame);
    trAnimMetaKey *prev = nullptr;
    trAnimMetaKey *m = firstMetaKey;
    while (m && m->frame < f) {
        prev = m;
        m = m->NextMeta();
    }
    if (!m || m->frame != f) {
        trAnimMetaKey *cell = new trAnimMetaKey(f);
        cell->prev = prev;
        cell->next = m;
        if (prev)
            prev->next = cell;
        else
            firstMetaKey = cell;
        if (m)
            m->prev = cell;
        ++numMetaKeys;
        m = cell;
    }
    m->SetComponent(component);
}

void trAnimate::MetaClear(long frame, int component)
{
    trAnimMetaKey *m = FindMetaKeyForFrame(double(frame));
    if (!m)
        return;
    m->ClearComponent(component);
    if (m->HasComponents())
        return;
    if (m->prev)
        m->prev->next = m->next;
    else
        firstMetaKey = m->NextMeta();
    if (m->next)
        m->next->prev = m->prev;
    --numMetaKeys;
    delete m;
}

// Brings the masks in line with the component lists. Meta keys that still stand at a
// keyed frame keep their ids; the rest are dropped, and new frames get new ones.
void trAnimate::RebuildMetaKeys()
{
    for (trAnimMetaKey *m = firstMetaKey; m; m = m->NextMeta())
        m->SetComponents(0);
    for (int c = 0; c < kNumComponents; ++c)
        for (trAnimKey *k = firstKey[c]; k; k = k->next)
            MetaSet(k->FrameInt(), c);
    trAnimMetaKey *m = firstMetaKey;
    while (m) {
        trAnimMetaKey *n = m->NextMeta();
        if (!m->HasComponents()) {
            if (m->prev)
                m->prev->next = m->next;
            else
                firstMetaKey = n;
            if (n)
                n->prev = m->prev;
            --numMetaKeys;
            delete m;
        }
        m = n;
    }
}

void trAnimate::FreeMetaKeys()
{
    FreeList(firstMetaKey);
    firstMetaKey = nullptr;
    numMetaKeys = 0;
}
