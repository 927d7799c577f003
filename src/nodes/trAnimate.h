#pragma once
// Animation curves of one parameter: a sorted list of keys per component (x, y, z or
// r, g, b; a scalar uses component 0), and optionally a list of meta keys that records,
// per frame, which components have a key there.

enum trAnimationInterpolationMode : int {
    trAnimationInterpolationNone = 0, // never stored; the result of a refused query
    trAnimationInterpolationTCB = 1,  // tension, continuity, bias: the default
    trAnimationInterpolationLinear = 2,
};

// floor(f + 0.5) as a whole number, saturated to +-2^62 (and 0 for NaN), so that no
// value read from a file can overflow it.
long trRoundFrame(double f);

class trAnimKey {
public:
    trAnimKey();
    trAnimKey(double frame, double value);
    virtual ~trAnimKey();
    trAnimKey(trAnimKey const &) = delete;
    trAnimKey &operator=(trAnimKey const &) = delete;

    trAnimKey *Next() const { return next; }
    trAnimKey *Prev() const { return prev; }
    long GetID() const { return id; }
    double Frame() const { return frame; }
    // The whole frame the key stands at: floor(frame + 0.5).
    long FrameInt() const;
    void SetFrame(double f) { frame = f; }
    double Value() const { return value; }
    void SetValue(double v) { value = v; }
    double Tension() const { return tension; }
    double Continuity() const { return continuity; }
    double Bias() const { return bias; }
    void SetTCB(double t, double c, double b);
    // Deletes every key after this one; this one becomes the last.
    void DeleteAllFollowing();

    // The id of the next key made; counts up from 0 and never repeats in a run.
    static long ms_runningKeyID;

    // The list cell, public for the curve that owns it.
    trAnimKey *next = nullptr;
    trAnimKey *prev = nullptr;
    double value = 0.0;
    double tension = 0.0;
    double continuity = 0.0;
    double bias = 0.0;
    double frame = 0.0;
    long id;
};

// A meta key: which components (bit 0 to 2) have a key at its frame.
class trAnimMetaKey : public trAnimKey {
public:
    trAnimMetaKey() = default;
    explicit trAnimMetaKey(double frame) : trAnimKey(frame, 0.0) {}

    trAnimMetaKey *NextMeta() const { return static_cast<trAnimMetaKey *>(next); }
    trAnimMetaKey *PrevMeta() const { return static_cast<trAnimMetaKey *>(prev); }

    void SetComponent(long component);
    void ClearComponent(long component);
    bool DoYouHaveThisComponent(long component) const;
    unsigned char GetComponents() const { return components; }
    void SetComponents(unsigned char mask) { components = mask; }
    bool HasComponents() const { return components != 0; }
    long NumComponents() const;

    unsigned char components = 0;
};

class trAnimate {
public:
    static constexpr int kNumComponents = 3;

    trAnimate();
    virtual ~trAnimate();
    trAnimate(trAnimate const &) = delete;
    trAnimate &operator=(trAnimate const &) = delete;

    // ---- Keys; components are 0, 1, 2, any other is refused with null or 0 ----
    bool HasKeys() const;
    long NumKeys(int component) const;
    trAnimKey *FirstKey(int component) const;
    trAnimKey *LastKey(int component) const;
    // The key standing at floor(frame + 0.5), or null.
    trAnimKey *FindKeyForFrame(int component, double frame) const;
    // The key of that id in any component list; `component` receives its list.
    trAnimKey *FindKeyByID(long id, int &component) const;
    // Inserts a key at the frame or overwrites the value of the one there (which keeps
    // its id and its tension, continuity and bias). Gives the key, or null when refused.
    trAnimKey *SetKey(double value, long frame, int component);
    // Shifts the keys with the given ids (in any component, and meta keys) by `offset`
    // frames, then merges keys that came to one frame. Gives the number moved.
    long MoveKeys(long const *ids, long count, long offset);
    // Where two cells of one list stand at one frame, the later cell wins.
    void ConsolidateKeys();
    // Removes the keys at the frame from every component; `component`, when given,
    // receives the mask of the components that had one. Gives the number removed.
    long RemoveKey(long frame, long *component);
    // Removes the key of one component at the frame. 1 if there was one.
    long RemoveKey(long frame, int component);
    long RemoveKeyByID(long id, int &component);
    // Gives the number of keys removed.
    long RemoveAllKeysForComponent(int component);
    // 0 for an invalid component.
    int GetComponentInterpolationMode(int component) const;
    // Only modes 1 and 2 are taken. 1 on success.
    long SetComponentInterpolationMode(int component, int mode);

    // The curve's value at a (fractional) frame. `before` and `after` receive the keys
    // around it; `start`, a key of this component's list, begins the walk there.
    double GetValue(double frame, int component, trAnimKey **before = nullptr, trAnimKey **after = nullptr,
                    trAnimKey *start = nullptr) const;

    // ---- Meta keys ----
    // Turning them on builds them from the present keys; off frees them.
    void SetUseMetaKeys(bool use);
    bool UsesMetaKeys() const { return useMetaKeys != 0; }
    bool HasMetaKeys() const { return firstMetaKey != nullptr; }
    long NumMetaKeys() const { return numMetaKeys; }
    trAnimMetaKey *FirstMetaKey() const { return firstMetaKey; }
    trAnimMetaKey *FindMetaKeyForFrame(double frame) const;
    trAnimMetaKey *FindMetaKeyByID(long id) const;

private:
    void MetaSet(long frame, int component);
    void MetaClear(long frame, int component);
    void RebuildMetaKeys();
    void FreeMetaKeys();
    void Unlink(int component, trAnimKey *key);

    trAnimKey *firstKey[kNumComponents] = {nullptr, nullptr, nullptr};
    int mode[kNumComponents] = {trAnimationInterpolationTCB, trAnimationInterpolationTCB,
                                trAnimationInterpolationTCB};
    long numKeys[kNumComponents] = {0, 0, 0};
    unsigned char useMetaKeys = 0;
    trAnimMetaKey *firstMetaKey = nullptr;
    long numMetaKeys = 0;
};
