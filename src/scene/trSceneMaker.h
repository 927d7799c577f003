#pragma once
// trSceneMaker: the base of every node that puts geometry into a scene (objects,
// populations, planets). A render walks the node tree and asks each enabled maker to
// fill the scene store; a render layer decides per maker whether it takes part.
//
// Only the identity and the `enable` switch live here so far. The scene-building work
// fills in Make, the variations and the visibility parameters that every maker shares.

#include "nodes/trBase.h"

class trSceneMaker : public trBase {
public:
    trSceneMaker()
    {
        DeclareTrue("is_scene_maker");
        Gui(trGuiIndent);
        Param(enable, "enable", static_cast<unsigned char>(1));
    }
    ~trSceneMaker() override = default;

    bool IsEnabled() const { return enable != 0; }

protected:
    unsigned char enable = 1;
};
