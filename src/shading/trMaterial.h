#pragma once
// What a triangle is shaded with: its shaders and a few flags. Scenes keep
// materials in one process-wide table of trPersistentMaterial, so that a material
// outlives the scene maker that made it and can be found by a plain index.

#include "foundation/trString.h"
#include "nodes/trDestructionNotifier.h"

class trShader;

class trMaterial {
public:
    trMaterial() = default;
    // The displacement shader is kept twice: once for shading and once for the
    // shadow pass, which may be pointed elsewhere by the shading code.
    trMaterial(trShader *surface, trShader *displacement, trShader *atmosphere, float smoothing,
               unsigned char flag0 = 0, unsigned char flag1 = 0, unsigned char flag2 = 0,
               unsigned char flag3 = 0);

    static constexpr int kNumShaders = 4;

    trShader *SurfaceShader() const { return shaders[0]; }
    trShader *DisplacementShader() const { return shaders[1]; }
    trShader *ShadowDisplacementShader() const { return shaders[2]; }
    trShader *AtmosphereShader() const { return shaders[3]; }
    // Slot 0..3 in the order above; null past the end.
    trShader *Shader(int i) const { return i >= 0 && i < kNumShaders ? shaders[i] : nullptr; }
    void SetShader(int i, trShader *shader)
    {
        if (i >= 0 && i < kNumShaders)
            shaders[i] = shader;
    }
    // Clears every slot that holds `shader`.
    void ForgetShader(trShader const *shader);
    // Whether any slot holds a shader.
    bool HasShader() const;

    float Smoothing() const { return smoothing; }
    unsigned char Flag(int i) const { return i >= 0 && i < 4 ? flags[i] : 0; }
    trString const &Name() const { return name; }
    void SetName(trString const &n) { name = n; }

private:
    trShader *shaders[kNumShaders] = {nullptr, nullptr, nullptr, nullptr};
    float smoothing = 0.0f;
    unsigned char flags[4] = {0, 0, 0, 0};
    unsigned char enabled = 1;
    trString name;
    long kind = 2;
};

// A material in the process-wide table. It listens to each of its shaders, so
// that a shader node being destroyed clears the pointer here and no render
// follows a stale one.
class trPersistentMaterial : public trDependant {
public:
    explicit trPersistentMaterial(trMaterial const &material);
    ~trPersistentMaterial() override;
    trPersistentMaterial(trPersistentMaterial const &) = delete;
    trPersistentMaterial &operator=(trPersistentMaterial const &) = delete;

    trMaterial &Material() { return material; }
    trMaterial const &Material() const { return material; }
    long OwnerGroupId() const { return ownerGroupId; }
    void SetOwnerGroupId(long id) { ownerGroupId = id; }

    void OnDestructionNotifierPreDestroy(trDestructionNotifier const *notifier) override;

private:
    trMaterial material;
    long ownerGroupId = 0;
};

// Adds a copy of `material` to the process-wide table under its mutex; returns
// its 0-based index there, or -1 if it can't be allocated.
long trAddPersistentMaterial(trMaterial const &material);
// The material at a 0-based global index, or null when out of range.
trPersistentMaterial *trGetPersistentMaterial(long index);
long trNumPersistentMaterials();
// Deletes every persistent material and empties the table. For shutdown, when
// no scene will ask for one again; later look-ups of old indices give null.
void trFreePersistentMaterials();
