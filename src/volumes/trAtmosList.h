#pragma once
// The atmospheres a scene renders, each with the flags its group allows. The
// integrators that shade them are added by the atmosphere code.

#include "nodes/trDestructionNotifier.h"

#include <cstdint>
#include <vector>

class trShader;

// Which rays an atmosphere is seen by: a mode for primary rays, then whether
// secondary rays see it, then whether it shadows.
struct trAtmosFlags {
    std::int32_t PrimaryMode = 2;
    unsigned char Secondary = 1;
    unsigned char Shadows = 1;
};
static_assert(sizeof(trAtmosFlags) == 8, "atmosphere flags are one 8-byte record");

class trAtmosList : public trDependant {
public:
    trAtmosList() = default;
    ~trAtmosList() override;
    // A copy listens to the same shaders on its own account.
    trAtmosList(trAtmosList const &other);
    trAtmosList &operator=(trAtmosList const &other);

    // Adds a shader with its flags; a null shader is skipped. Returns the new count.
    long Add(trShader *shader, trAtmosFlags const &flags);
    long Count() const { return long(shaders.size()); }
    // Null once the shader node has been destroyed, or past the end (0-based).
    trShader *Shader(long i) const { return i >= 0 && i < Count() ? shaders[i] : nullptr; }
    trAtmosFlags Flags(long i) const { return i >= 0 && i < Count() ? flags[i] : trAtmosFlags(); }
    void Clear();

    void OnDestructionNotifierPreDestroy(trDestructionNotifier const *notifier) override;

private:
    std::vector<trShader *> shaders;
    std::vector<trAtmosFlags> flags;
};
