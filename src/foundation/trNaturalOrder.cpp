#include "foundation/trNaturalOrder.h"

#include "foundation/trString.h"

#include <cctype>

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Digit runs with a leading zero compare like fractions, digit by digit from the
// left; the shorter run is smaller when all else is equal. On a tie `run` is the
// common length of the two runs, which are then identical.
int CompareLeftAligned(char const *a, char const *b, long &run)
{
    for (long i = 0;; ++i) {
        bool const digitA = IsDigit(a[i]);
        bool const digitB = IsDigit(b[i]);
        if (!digitA && !digitB) {
            run = i;
            return 0;
        }
        if (!digitA)
            return -1;
        if (!digitB)
            return 1;
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    }
}

// Other digit runs compare by value: the longer run is larger, and between runs of
// one length the first differing digit decides.
int CompareRightAligned(char const *a, char const *b, long &run)
{
    int bias = 0;
    for (long i = 0;; ++i) {
        bool const digitA = IsDigit(a[i]);
        bool const digitB = IsDigit(b[i]);
        if (!digitA && !digitB) {
            run = i;
            return bias;
        }
        if (!digitA)
            return -1;
        if (!digitB)
            return 1;
        if (bias == 0 && a[i] != b[i])
            bias = a[i] < b[i] ? -1 : 1;
    }
}

template <bool skipBlanks>
int Compare(char const *a, char const *b, bool foldCase)
{
    if (!a)
        a = "";
    if (!b)
        b = "";
    for (;;) {
        if constexpr (skipBlanks) {
            while (IsBlank(*a))
                ++a;
            while (IsBlank(*b))
                ++b;
        }
        char ca = *a;
        char cb = *b;
        if (IsDigit(ca) && IsDigit(cb)) {
            long run = 0;
            int const order = (ca == '0' || cb == '0') ? CompareLeftAligned(a, b, run)
                                                       : CompareRightAligned(a, b, run);
            if (order != 0)
                return order;
            // Tied runs are identical, and every tail of them ties too: step over
            // the whole run rather than comparing it again from each digit.
            a += run;
            b += run;
            continue;
        }
        if (!ca && !cb)
            return 0;
        if (foldCase) {
            ca = static_cast<char>(std::toupper(static_cast<unsigned char>(ca)));
            cb = static_cast<char>(std::toupper(static_cast<unsigned char>(cb)));
        }
        // Signed bytes: text above 127 sorts before plain ASCII.
        signed char const sa = static_cast<signed char>(ca);
        signed char const sb = static_cast<signed char>(cb);
        if (sa != sb)
            return sa < sb ? -1 : 1;
        ++a;
        ++b;
    }
}

} // namespace

int trNaturalOrderCompareSkipping(char const *a, char const *b, bool foldCase)
{
    return Compare<true>(a, b, foldCase);
}

int trNaturalOrderCompareStrict(char const *a, char const *b, bool foldCase)
{
    return Compare<false>(a, b, foldCase);
}

int trNaturalOrderCompare(char const *a, char const *b) { return Compare<true>(a, b, false); }
int trNaturalOrderCompare(trString const &a, trString const &b) { return Compare<true>(a.chars, b.chars, false); }

int trNaturalOrderCompareCase(char const *a, char const *b) { return Compare<true>(a, b, true); }
int trNaturalOrderCompareCase(trString const &a, trString const &b) { return Compare<true>(a.chars, b.chars, true); }

// Skips white space despite its name; callers depend on it.
int trNaturalOrderCompareSpace(char const *a, char const *b) { return Compare<true>(a, b, false); }
int trNaturalOrderCompareSpace(trString const &a, trString const &b) { return Compare<true>(a.chars, b.chars, false); }

int trNaturalOrderCompareSpaceCase(char const *a, char const *b) { return Compare<false>(a, b, true); }
int trNaturalOrderCompareSpaceCase(trString const &a, trString const &b) { return Compare<false>(a.chars, b.chars, true); }

bool trNaturalOrderLess(char const *a, char const *b) { return Compare<true>(a, b, false) < 0; }
bool trNaturalOrderLess(trString const &a, trString const &b) { return Compare<true>(a.chars, b.chars, false) < 0; }

bool trNaturalOrderLessCase(char const *a, char const *b) { return Compare<true>(a, b, true) < 0; }
bool trNaturalOrderLessCase(trString const &a, trString const &b) { return Compare<true>(a.chars, b.chars, true) < 0; }

bool trNaturalOrderLessSpace(char const *a, char const *b) { return Compare<false>(a, b, false) < 0; }
bool trNaturalOrderLessSpace(trString const &a, trString const &b) { return Compare<false>(a.chars, b.chars, false) < 0; }

bool trNaturalOrderLessSpaceCase(char const *a, char const *b) { return Compare<false>(a, b, true) < 0; }
bool trNaturalOrderLessSpaceCase(trString const &a, trString const &b) { return Compare<false>(a.chars, b.chars, true) < 0; }
