#pragma once
// Interface actions: small rules that run when a node's parameter changes, such as a
// boolean that enables other parameters, or booleans that act as a radio group. A node
// declares them with trBase::AddGuiAction; its trGuiActionSet runs them.

#include "foundation/trString.h"

#include <deque>
#include <memory>
#include <vector>

class trBase;

class trGuiAction {
public:
    virtual ~trGuiAction() = default;
    // `changed` is the parameter that triggered the action, `names` the action's targets.
    virtual void Action(trBase *node, trString const &changed, std::vector<trString> &names) = 0;
};

// Each target's interface state follows the changed boolean: enabled when it is 1.
class trGuiActionBoolEnableDisable : public trGuiAction {
public:
    void Action(trBase *node, trString const &changed, std::vector<trString> &names) override;
};

// When the changed boolean becomes 1, every other name of the group is set to 0.
class trGuiActionRadioGroup : public trGuiAction {
public:
    void Action(trBase *node, trString const &changed, std::vector<trString> &names) override;
};

// Names the kind of action that AddGuiAction makes.
class trGuiActionPreset {
public:
    enum Kind : long {
        BoolEnableDisable = 0,
        RadioGroup = 1,
    };

    trGuiActionPreset(Kind k = BoolEnableDisable) : kind(k) {}
    Kind GetKind() const { return kind; }
    // A new action of this kind; null for a kind that doesn't exist.
    std::shared_ptr<trGuiAction> MakeAction() const;

private:
    Kind kind;
};

// A node's actions: pairs of a trigger list and a shared action with its targets.
class trGuiActionSet {
public:
    trGuiActionSet() = default;
    ~trGuiActionSet();
    trGuiActionSet(trGuiActionSet const &) = delete;
    trGuiActionSet &operator=(trGuiActionSet const &) = delete;

    void Add(std::vector<trString> const &triggers, std::vector<trString> const &targets,
             trGuiActionPreset const &preset);
    // Runs, in the order they were added, the actions that have the name as a trigger.
    void OnParamChanged(trBase *node, trString const &changedName);
    long NumActions() const { return long(entries.size()); }

private:
    struct Entry {
        std::vector<trString> triggers;
        std::vector<trString> targets;
        std::shared_ptr<trGuiAction> action;
    };
    // A deque keeps entries in place when an action adds more while the set runs.
    std::deque<Entry> entries;
};
