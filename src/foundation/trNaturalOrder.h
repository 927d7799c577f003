#pragma once
// Natural ordering of texts: digit runs compare by value ("a2" before "a10"), and a
// run with a leading zero compares digit by digit, like a fraction ("a02" before "a1").
// All comparisons give -1, 0 or 1; a null text reads as empty.

class trString;

// The two cores. `Skipping` ignores white space on both sides at every step; `Strict`
// counts it. With foldCase, letters compare without regard to case.
int trNaturalOrderCompareSkipping(char const *a, char const *b, bool foldCase);
int trNaturalOrderCompareStrict(char const *a, char const *b, bool foldCase);

// "Case" means case is ignored, "Space" that white space counts; but note that
// trNaturalOrderCompareSpace skips white space, unlike trNaturalOrderLessSpace.
int trNaturalOrderCompare(trString const &a, trString const &b);
int trNaturalOrderCompare(char const *a, char const *b);
int trNaturalOrderCompareCase(trString const &a, trString const &b);
int trNaturalOrderCompareCase(char const *a, char const *b);
int trNaturalOrderCompareSpace(trString const &a, trString const &b);
int trNaturalOrderCompareSpace(char const *a, char const *b);
int trNaturalOrderCompareSpaceCase(trString const &a, trString const &b);
int trNaturalOrderCompareSpaceCase(char const *a, char const *b);

bool trNaturalOrderLess(trString const &a, trString const &b);
bool trNaturalOrderLess(char const *a, char const *b);
bool trNaturalOrderLessCase(trString const &a, trString const &b);
bool trNaturalOrderLessCase(char const *a, char const *b);
bool trNaturalOrderLessSpace(trString const &a, trString const &b);
bool trNaturalOrderLessSpace(char const *a, char const *b);
bool trNaturalOrderLessSpaceCase(trString const &a, trString const &b);
bool trNaturalOrderLessSpaceCase(char const *a, char const *b);

// Sort predicates over trString.
struct trNaturalOrderSort_Less {
    bool operator()(trString const &a, trString const &b) const { return trNaturalOrderLess(a, b); }
};
struct trNaturalOrderSortCase_Less {
    bool operator()(trString const &a, trString const &b) const { return trNaturalOrderLessCase(a, b); }
};
struct trNaturalOrderSortSpace_Less {
    bool operator()(trString const &a, trString const &b) const { return trNaturalOrderLessSpace(a, b); }
};
struct trNaturalOrderSortCaseSpace_Less {
    bool operator()(trString const &a, trString const &b) const
    {
        return trNaturalOrderLessSpaceCase(a, b);
    }
};

// Sort predicates over C texts, each given by a reference to its first byte.
struct trNaturalOrderSortChar_Less {
    bool operator()(char const &a, char const &b) const { return trNaturalOrderLess(&a, &b); }
};
struct trNaturalOrderSortCharCase_Less {
    bool operator()(char const &a, char const &b) const { return trNaturalOrderLessCase(&a, &b); }
};
struct trNaturalOrderSortCharSpace_Less {
    bool operator()(char const &a, char const &b) const { return trNaturalOrderLessSpace(&a, &b); }
};
struct trNaturalOrderSortCharCaseSpace_Less {
    bool operator()(char const &a, char const &b) const { return trNaturalOrderLessSpaceCase(&a, &b); }
};
