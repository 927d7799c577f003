#pragma once
// A store of joints and bones. Every scene carries one; the object samplers read it.

#include "foundation/trVector.h"

#include <vector>

namespace trSkeleton {

struct SkJoint {
    trFVector Pos;
    SkJoint() = default;
    explicit SkJoint(trFVector const &p) : Pos(p) {}
};

struct SkBone {
    // 1-based joint handles; 0 for none.
    unsigned long Joints[2] = {0, 0};
    void SetJoints(unsigned long a, unsigned long b)
    {
        Joints[0] = a;
        Joints[1] = b;
    }
};

class Skeleton {
public:
    // Each returns the new 1-based handle.
    unsigned long AddJoint(SkJoint const &joint)
    {
        joints.push_back(joint);
        return joints.size();
    }
    unsigned long AddBone(SkBone const &bone)
    {
        bones.push_back(bone);
        return bones.size();
    }
    // Null for a handle of 0 or past the end.
    SkJoint *GetJoint(unsigned long h) { return h && h <= joints.size() ? &joints[h - 1] : nullptr; }
    SkBone *GetBone(unsigned long h) { return h && h <= bones.size() ? &bones[h - 1] : nullptr; }
    unsigned long NumJoints() const { return joints.size(); }
    unsigned long NumBones() const { return bones.size(); }
    void Clear()
    {
        joints.clear();
        bones.clear();
    }

private:
    std::vector<SkJoint> joints;
    std::vector<SkBone> bones;
};

} // namespace trSkeleton
