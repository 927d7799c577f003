#pragma once
// Push buttons that a node declares among its parameters (trBase::PushButton). The
// host draws them and calls OnClick; the library only keeps what a button is and does.

#include "foundation/trString.h"

class trBase;

class trGuiPushButton {
public:
    explicit trGuiPushButton(trString const &text = trString());
    // ---- Virtual operations, in slot order ----
    virtual ~trGuiPushButton();
    // Enable and Disable set the interface state of the button's entry on its owner.
    virtual void Enable();
    virtual void Disable();
    virtual void OnClick();

    // Called by trBase::PushButton when the button is declared.
    void SetOwnerAndName(trBase *owner, trString const &buttonName);
    trBase *Owner() const { return owner; }
    trString const &Name() const { return name; }
    trString const &Label() const { return label; }
    void SetLabel(trString const &text) { label = text; }
    long Style() const { return style; }
    void SetStyle(long s) { style = s; }
    long Width() const { return width; }
    long Height() const { return height; }
    void SetSize(long w, long h)
    {
        width = w;
        height = h;
    }

protected:
    trBase *owner = nullptr;
    trString name;
    trString label;
    long style = 0; // reserved for the host's button styles
    long width = 100;
    long height = 20;
};

// Draws a new seed for an integer parameter of the owner.
class trRandomSeedGuiPushButton : public trGuiPushButton {
public:
    explicit trRandomSeedGuiPushButton(trString const &target = trString("seed"));
    ~trRandomSeedGuiPushButton() override;

    // Sets the target to a fresh seed in 0 to 0xffff, as the user's indirect change.
    void OnClick() override;
    // A fresh seed, as OnClick would set, without setting anything.
    long RandomInt();

    trString const &TargetParamName() const { return targetParamName; }
    void SetTargetParamName(trString const &paramName) { targetParamName = paramName; }

private:
    trString targetParamName;
};
