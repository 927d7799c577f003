#pragma once
// Base of every shader node. The shading operations are added by the shader
// framework; the scene store only needs to point at shaders and hear when one goes.

#include "nodes/trBase.h"

class trShader : public trBase {
public:
    trShader() = default;
    ~trShader() override = default;
};
