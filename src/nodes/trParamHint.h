#pragma once
// Parameter hints: how a host's interface should show a parameter (range, menu, style).
// The library draws nothing; it keeps these declarations beside the parameter table.
// A hint is itself a node whose settings are parameters, so a host can read any hint
// generically by name with GetParam. A hint is not owned by the nodes that use it.

#include "foundation/trString.h"
#include "nodes/trBase.h"

#include <functional>
#include <vector>

struct trParamHintPrivate;
struct trIntHintPrivate;
struct trDoubleHintPrivate;
struct trFColHintPrivate;
struct trStringHintPrivate;
struct trLinkHintPrivate;

class trParamHint : public trBase {
public:
    trParamHint();
    ~trParamHint() override;

private:
    trParamHintPrivate *hintBase;
};

// Integer parameters: a range, or a menu of texts with a value each.
// Parameters: do_range, do_menu (booleans), min_value, max_value (integers).
class trIntHint : public trParamHint {
public:
    trIntHint();
    ~trIntHint() override;

    bool DoRange() const;
    bool DoMenu() const;
    long MinValue() const;
    long MaxValue() const;
    // Turns the range on with these bounds.
    void SetRange(long minValue, long maxValue);

    virtual void ClearMenu();
    long NumMenuItems() const;
    // Empty text for an index that has no item.
    trString MenuItemTextFromIndex(int index) const;
    // -1 for an index that has no item.
    long ValueFromMenuItemIndex(int index) const;
    // The first item with the value, or -1.
    long MenuItemIndexFromValue(long value) const;
    // A new item gets its index as value; an existing one keeps its value.
    long SetMenuItemText(int index, trString const &text);
    // Turns the menu on and widens min_value/max_value to take the value.
    long SetMenuItemTextAndValue(int index, trString const &text, long value);
    // Appends an item after the last.
    long AddMenuItem(trString const &text, long value);

private:
    trIntHintPrivate *priv;
};

// Real parameters (double and float). Parameters: min_value, max_value, focus_value,
// focus_power (reals), do_extended_lower, do_extended_upper (booleans). The focus is
// where a slider gives most resolution; "extended" lets typed values pass that bound.
class trDoubleHint : public trParamHint {
public:
    trDoubleHint();
    ~trDoubleHint() override;

    double MinValue() const;
    double MaxValue() const;
    double FocusValue() const;
    double FocusPower() const;
    bool DoExtendedLower() const;
    bool DoExtendedUpper() const;
    void SetRange(double minValue, double maxValue);
    void SetFocus(double focusValue, double focusPower);
    void SetExtended(bool lower, bool upper);

private:
    trDoubleHintPrivate *priv;
};

// Colour parameters. Parameter: fcol_style_flags (integer).
class trFColHint : public trParamHint {
public:
    enum StyleFlags : long {
        StyleAboveOne = 1,           // components may go above 1 (light intensities)
        StyleNegative = 2,           // components may go below 0
        StyleNoColourManagement = 4, // the value is data, not a colour: never converted
    };

    trFColHint();
    ~trFColHint() override;

    void SetStyleFlags(long flags);
    long GetStyleFlags() const;

private:
    trFColHintPrivate *priv;
};

// String parameters. Parameter: string_style_flags (integer). A string with any of the
// bits in StyleNotSavedMask isn't saved with the project (trBase::Param clears its flag).
class trStringHint : public trParamHint {
public:
    enum StyleFlags : long {
        StyleReadOnly = 1,  // shown, not edited; the value is derived, so not saved
        StyleMultiLine = 2, // edited in a text box of several lines
        StyleTransient = 4, // lives for the session only, so not saved
        StyleNotSavedMask = StyleReadOnly | StyleTransient,
    };

    trStringHint();
    ~trStringHint() override;

    void SetStyleFlags(long flags);
    long GetStyleFlags() const;

private:
    trStringHintPrivate *priv;
};

// File and node-link parameters. Parameters: is_image_file_flag,
// is_heightfield_file_flag, is_object_file_flag (booleans). Also the file filters of a
// file dialog (a description and its patterns) and a validation function.
class trLinkHint : public trParamHint {
public:
    using ValidationFunc = std::function<bool(trString const &)>;

    trLinkHint();
    ~trLinkHint() override;

    void SetIsImageFile(bool is);
    bool GetIsImageFile() const;
    void SetIsHeightfieldFile(bool is);
    bool GetIsHeightfieldFile() const;
    void SetIsObjectFile(bool is);
    bool GetIsObjectFile() const;

    // Patterns separated by ';', e.g. "*.tif;*.tiff".
    void AddFileFilter(trString const &description, trString const &patterns);
    void AddFileFilter(trString const &description, std::vector<trString> const &patterns);
    // A filter described "GENERIC" and without patterns: the host puts its own list
    // there, chosen by the file-kind flags.
    void AddGenericFileFilter();
    long GetNumFileFilters() const;
    // 0 (and empty results) for an index out of range.
    long GetFileFilterAtIndex(long index, trString &description, std::vector<trString> &patterns) const;

    void SetFileValidationFunc(ValidationFunc const &func);
    ValidationFunc const &GetFileValidationFunc() const;
    // True when no function is set.
    bool IsFileValid(trString const &path) const;

private:
    trLinkHintPrivate *priv;
};

// Hints without settings: they exist so that every parameter type has a hint class.
class trVectorHint : public trParamHint {
};

class tr2VectorHint : public trParamHint {
};

class trPtrHint : public trParamHint {
};

class trBoolHint : public trParamHint {
};

// Given to integer and real parameters declared without a hint. Built at load.
extern trIntHint trDefaultIntHint;
extern trDoubleHint trDefaultDoubleHint;
