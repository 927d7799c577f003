#include "nodes/trParamHint.h"

#include "foundation/trMessages.h"

#include <string>

// The default hints are built at load, before most other globals. Their own integer
// and real parameters receive the default hints by the declaration rule: only those
// addresses are stored, so it doesn't matter that the objects may still be under
// construction. Nothing here may touch another global object.
//
// Settings are written straight into storage rather than through SetParam: hints are
// configured while nodes are built, and that must not reach undo or notifications.

struct trParamHintPrivate {
    // Room for shared hint state, so that the class can grow without changing its layout.
    long reserved = 0;
};

trParamHint::trParamHint() : hintBase(new trParamHintPrivate)
{
}

trParamHint::~trParamHint()
{
    delete hintBase;
}

// ---- trIntHint ----

struct trIntHintPrivate {
    unsigned char doRange = 0;
    unsigned char doMenu = 0;
    long minValue = 0;
    long maxValue = 10;
    std::vector<trString> menuTexts; // parallel to menuValues
    std::vector<long> menuValues;
};

trIntHint::trIntHint() : priv(new trIntHintPrivate)
{
    DeclareParam(trParamBool, &priv->doRange, "do_range", nullptr);
    DeclareParam(trParamBool, &priv->doMenu, "do_menu", nullptr);
    DeclareParam(trParamInt, &priv->minValue, "min_value", nullptr);
    DeclareParam(trParamInt, &priv->maxValue, "max_value", nullptr);
}

trIntHint::~trIntHint()
{
    delete priv;
}

bool trIntHint::DoRange() const
{
    return priv->doRange != 0;
}

bool trIntHint::DoMenu() const
{
    return priv->doMenu != 0;
}

long trIntHint::MinValue() const
{
    return priv->minValue;
}

long trIntHint::MaxValue() const
{
    return priv->maxValue;
}

void trIntHint::SetRange(long minValue, long maxValue)
{
    priv->doRange = 1;
    priv->minValue = minValue;
    priv->maxValue = maxValue;
}

void trIntHint::ClearMenu()
{
    priv->menuTexts.clear();
    priv->menuValues.clear();
}

long trIntHint::NumMenuItems() const
{
    return long(priv->menuValues.size());
}

trString trIntHint::MenuItemTextFromIndex(int index) const
{
    if (index < 0 || index >= NumMenuItems()) {
        trOutError(trString("trIntHint::MenuItemTextFromIndex: No menu item at index ") + trString(std::to_string(index)));
        return trString();
    }
    return priv->menuTexts[size_t(index)];
}

long trIntHint::ValueFromMenuItemIndex(int index) const
{
    if (index < 0 || index >= NumMenuItems()) {
        trOutError(trString("trIntHint::ValueFromMenuItemIndex: No menu item at index ") + trString(std::to_string(index)));
        return -1;
    }
    return priv->menuValues[size_t(index)];
}

long trIntHint::MenuItemIndexFromValue(long value) const
{
    for (size_t i = 0; i < priv->menuValues.size(); ++i)
        if (priv->menuValues[i] == value)
            return long(i);
    return -1;
}

long trIntHint::SetMenuItemText(int index, trString const &text)
{
    if (index >= 0 && index < NumMenuItems())
        return SetMenuItemTextAndValue(index, text, priv->menuValues[size_t(index)]);
    return SetMenuItemTextAndValue(index, text, index);
}

long trIntHint::SetMenuItemTextAndValue(int index, trString const &text, long value)
{
    priv->doRange = 0;
    priv->doMenu = 1;
    if (index < 0) {
        trError("trIntHint: First menu item must have index 0, and the rest must be ordered consecutively.");
        return 0;
    }
    if (value < priv->minValue)
        priv->minValue = value;
    if (value > priv->maxValue)
        priv->maxValue = value;
    size_t const n = size_t(index) + 1;
    if (priv->menuValues.size() < n) {
        // Items skipped over take their index as value, as SetMenuItemText would give them.
        for (size_t i = priv->menuValues.size(); i < n; ++i)
            priv->menuValues.push_back(long(i));
        priv->menuTexts.resize(n);
    }
    priv->menuTexts[size_t(index)] = text;
    priv->menuValues[size_t(index)] = value;
    return 1;
}

long trIntHint::AddMenuItem(trString const &text, long value)
{
    return SetMenuItemTextAndValue(int(NumMenuItems()), text, value);
}

// ---- trDoubleHint ----

struct trDoubleHintPrivate {
    double minValue = 0.0;
    double maxValue = 1.0;   // a unit range suits most factors and amounts
    double focusValue = 0.0;
    double focusPower = 1.0; // 1: a linear slider, no extra resolution near the focus
    unsigned char doExtendedLower = 0;
    unsigned char doExtendedUpper = 0;
};

trDoubleHint::trDoubleHint() : priv(new trDoubleHintPrivate)
{
    DeclareParam(trParamDouble, &priv->minValue, "min_value", nullptr);
    DeclareParam(trParamDouble, &priv->maxValue, "max_value", nullptr);
    DeclareParam(trParamDouble, &priv->focusValue, "focus_value", nullptr);
    DeclareParam(trParamDouble, &priv->focusPower, "focus_power", nullptr);
    DeclareParam(trParamBool, &priv->doExtendedLower, "do_extended_lower", nullptr);
    DeclareParam(trParamBool, &priv->doExtendedUpper, "do_extended_upper", nullptr);
}

trDoubleHint::~trDoubleHint()
{
    delete priv;
}

double trDoubleHint::MinValue() const
{
    return priv->minValue;
}

double trDoubleHint::MaxValue() const
{
    return priv->maxValue;
}

double trDoubleHint::FocusValue() const
{
    return priv->focusValue;
}

double trDoubleHint::FocusPower() const
{
    return priv->focusPower;
}

bool trDoubleHint::DoExtendedLower() const
{
    return priv->doExtendedLower != 0;
}

bool trDoubleHint::DoExtendedUpper() const
{
    return priv->doExtendedUpper != 0;
}

void trDoubleHint::SetRange(double minValue, double maxValue)
{
    priv->minValue = minValue;
    priv->maxValue = maxValue;
}

void trDoubleHint::SetFocus(double focusValue, double focusPower)
{
    priv->focusValue = focusValue;
    priv->focusPower = focusPower;
}

void trDoubleHint::SetExtended(bool lower, bool upper)
{
    priv->doExtendedLower = lower ? 1 : 0;
    priv->doExtendedUpper = upper ? 1 : 0;
}

// ---- trFColHint ----

struct trFColHintPrivate {
    long styleFlags = 0;
};

trFColHint::trFColHint() : priv(new trFColHintPrivate)
{
    DeclareParam(trParamInt, &priv->styleFlags, "fcol_style_flags", nullptr);
}

trFColHint::~trFColHint()
{
    delete priv;
}

void trFColHint::SetStyleFlags(long flags)
{
    priv->styleFlags = flags;
}

long trFColHint::GetStyleFlags() const
{
    return priv->styleFlags;
}

// ---- trStringHint ----

struct trStringHintPrivate {
    long styleFlags = 0;
};

trStringHint::trStringHint() : priv(new trStringHintPrivate)
{
    DeclareParam(trParamInt, &priv->styleFlags, "string_style_flags", nullptr);
}

trStringHint::~trStringHint()
{
    delete priv;
}

void trStringHint::SetStyleFlags(long flags)
{
    priv->styleFlags = flags;
}

long trStringHint::GetStyleFlags() const
{
    return priv->styleFlags;
}

// ---- trLinkHint ----

namespace {
struct trFileFilter {
    trString description;
    std::vector<trString> patterns;
};

// Splits "a; b;;c" into "a", "b", "c": empty pieces and surrounding blanks are dropped.
std::vector<trString> trSplitPatterns(trString const &patterns)
{
    std::vector<trString> out;
    char const *p = patterns.chars;
    while (*p) {
        while (*p == ';' || *p == ' ' || *p == '\t')
            ++p;
        char const *start = p;
        while (*p && *p != ';')
            ++p;
        char const *end = p;
        while (end > start && (end[-1] == ' ' || end[-1] == '\t'))
            --end;
        if (end > start)
            out.emplace_back(std::string(start, size_t(end - start)));
    }
    return out;
}
} // namespace

struct trLinkHintPrivate {
    unsigned char isImageFile = 0;
    unsigned char isHeightfieldFile = 0;
    unsigned char isObjectFile = 0;
    std::vector<trFileFilter> filters;
    trLinkHint::ValidationFunc validate;
};

trLinkHint::trLinkHint() : priv(new trLinkHintPrivate)
{
    DeclareParam(trParamBool, &priv->isImageFile, "is_image_file_flag", nullptr);
    DeclareParam(trParamBool, &priv->isHeightfieldFile, "is_heightfield_file_flag", nullptr);
    DeclareParam(trParamBool, &priv->isObjectFile, "is_object_file_flag", nullptr);
}

trLinkHint::~trLinkHint()
{
    delete priv;
}

void trLinkHint::SetIsImageFile(bool is)
{
    priv->isImageFile = is ? 1 : 0;
}

bool trLinkHint::GetIsImageFile() const
{
    return priv->isImageFile != 0;
}

void trLinkHint::SetIsHeightfieldFile(bool is)
{
    priv->isHeightfieldFile = is ? 1 : 0;
}

bool trLinkHint::GetIsHeightfieldFile() const
{
    return priv->isHeightfieldFile != 0;
}

void trLinkHint::SetIsObjectFile(bool is)
{
    priv->isObjectFile = is ? 1 : 0;
}

bool trLinkHint::GetIsObjectFile() const
{
    return priv->isObjectFile != 0;
}

void trLinkHint::AddFileFilter(trString const &description, trString const &patterns)
{
    priv->filters.push_back({description, trSplitPatterns(patterns)});
}

void trLinkHint::AddFileFilter(trString const &description, std::vector<trString> const &patterns)
{
    priv->filters.push_back({description, patterns});
}

void trLinkHint::AddGenericFileFilter()
{
    priv->filters.push_back({trString("GENERIC"), {}});
}

long trLinkHint::GetNumFileFilters() const
{
    return long(priv->filters.size());
}

long trLinkHint::GetFileFilterAtIndex(long index, trString &description, std::vector<trString> &patterns) const
{
    if (index < 0 || index >= GetNumFileFilters()) {
        trOutError(trString("trLinkHint::GetFileFilterAtIndex: No file filter at index ") + trString(std::to_string(index)));
        description = trString();
        patterns.clear();
        return 0;
    }
    trFileFilter const &f = priv->filters[size_t(index)];
    description = f.description;
    patterns = f.patterns;
    return 1;
}

void trLinkHint::SetFileValidationFunc(ValidationFunc const &func)
{
    priv->validate = func;
}

trLinkHint::ValidationFunc const &trLinkHint::GetFileValidationFunc() const
{
    return priv->validate;
}

bool trLinkHint::IsFileValid(trString const &path) const
{
    return !priv->validate || priv->validate(path);
}
