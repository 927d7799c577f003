#include "nodes/trGuiAction.h"

#include "foundation/trMessages.h"
#include "nodes/trBase.h"

#include <string>
#include <utility>

void trGuiActionBoolEnableDisable::Action(trBase *node, trString const &changed, std::vector<trString> &names)
{
    unsigned char value = 0;
    if (!node || !node->GetParam(changed.chars, value))
        return;
    for (trString const &target : names)
        node->SetParamGuiEnabled(target.chars, value == 1);
}

void trGuiActionRadioGroup::Action(trBase *node, trString const &changed, std::vector<trString> &names)
{
    unsigned char value = 0;
    if (!node || !node->GetParam(changed.chars, value) || !value)
        return;
    // Work on a copy: clearing a member runs the set again, which may reach these names.
    std::vector<trString> const group = names;
    for (trString const &member : group)
        if (member != changed)
            node->SetParam(member.chars, static_cast<unsigned char>(0), trWhoSystem, true);
}

std::shared_ptr<trGuiAction> trGuiActionPreset::MakeAction() const
{
    switch (kind) {
    case BoolEnableDisable:
        return std::make_shared<trGuiActionBoolEnableDisable>();
    case RadioGroup:
        return std::make_shared<trGuiActionRadioGroup>();
    }
    return nullptr;
}

trGuiActionSet::~trGuiActionSet() = default;

void trGuiActionSet::Add(std::vector<trString> const &triggers, std::vector<trString> const &targets,
                         trGuiActionPreset const &preset)
{
    std::shared_ptr<trGuiAction> action = preset.MakeAction();
    if (!action) {
        trError(trString("trGuiActionSet::Add: Unknown action preset: ") +
                trString(std::to_string(long(preset.GetKind()))));
        return;
    }
    entries.push_back({triggers, targets, std::move(action)});
}

void trGuiActionSet::OnParamChanged(trBase *node, trString const &changedName)
{
    // By index, and holding the action: an action may add entries to this set.
    for (size_t i = 0; i < entries.size(); ++i) {
        Entry &entry = entries[i];
        for (trString const &trigger : entry.triggers) {
            if (trigger == changedName) {
                std::shared_ptr<trGuiAction> action = entry.action;
                action->Action(node, changedName, entry.targets);
                break;
            }
        }
    }
}
