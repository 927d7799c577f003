#include "nodes/trGuiPushButton.h"

#include "foundation/trMessages.h"
#include "foundation/trRand.h"
#include "nodes/trBase.h"

#include <ctime>

trGuiPushButton::trGuiPushButton(trString const &text) : label(text)
{
}

trGuiPushButton::~trGuiPushButton() = default;

void trGuiPushButton::Enable()
{
    if (!owner) {
        trOutError(trString("trGuiPushButton::Enable: Button \"") + label + "\" has no owner");
        return;
    }
    owner->SetParamGuiEnabled(name.chars, true);
}

void trGuiPushButton::Disable()
{
    if (!owner) {
        trOutError(trString("trGuiPushButton::Disable: Button \"") + label + "\" has no owner");
        return;
    }
    owner->SetParamGuiEnabled(name.chars, false);
}

void trGuiPushButton::OnClick()
{
}

void trGuiPushButton::SetOwnerAndName(trBase *node, trString const &buttonName)
{
    owner = node;
    name = buttonName;
}

trRandomSeedGuiPushButton::trRandomSeedGuiPushButton(trString const &target)
    : trGuiPushButton(trString("Random Seed")), targetParamName(target)
{
}

trRandomSeedGuiPushButton::~trRandomSeedGuiPushButton() = default;

long trRandomSeedGuiPushButton::RandomInt()
{
    // The time alone would repeat within a second; the draw keeps clicks apart.
    trGlobalRand.Seed(static_cast<unsigned long>(std::time(nullptr)) + trGlobalRand.Int());
    return long(trGlobalRand.Int() & 0xffff);
}

void trRandomSeedGuiPushButton::OnClick()
{
    if (!owner) {
        trOutError("trRandomSeedGuiPushButton::OnClick: Button has no owner");
        return;
    }
    owner->SetParam(targetParamName.chars, RandomInt(), trWhoUserIndirect, true);
}
