#include "foundation/trNaturalOrder.h"

#include "foundation/trString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

// A literal transcription of the rules, re-walking the digit runs from every digit,
// to check the library's version, which steps over a tied run in one go.
int ReferenceCompare(char const *a, char const *b, bool skip, bool fold)
{
    auto digit = [](char c) { return c >= '0' && c <= '9'; };
    auto space = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; };
    for (;; ++a, ++b) {
        while (skip && space(*a))
            ++a;
        while (skip && space(*b))
            ++b;
        char ca = *a, cb = *b;
        if (digit(ca) && digit(cb)) {
            // With a leading zero the first differing digit decides at once; otherwise the
            // longer run wins and the first difference only breaks a tie of lengths.
            bool const leftAligned = ca == '0' || cb == '0';
            int bias = 0, result = 0;
            for (int i = 0;; ++i) {
                bool const da = digit(a[i]), db = digit(b[i]);
                if (!da || !db) {
                    result = da == db ? bias : da ? 1 : -1;
                    break;
                }
                if (!bias && a[i] != b[i])
                    bias = a[i] < b[i] ? -1 : 1;
                if (leftAligned && bias) {
                    result = bias;
                    break;
                }
            }
            if (result)
                return result;
        }
        if (!ca && !cb)
            return 0;
        if (fold) {
            ca = static_cast<char>(std::toupper(static_cast<unsigned char>(ca)));
            cb = static_cast<char>(std::toupper(static_cast<unsigned char>(cb)));
        }
        if (static_cast<signed char>(ca) != static_cast<signed char>(cb))
            return static_cast<signed char>(ca) < static_cast<signed char>(cb) ? -1 : 1;
    }
}

std::string RandomText(std::mt19937 &random)
{
    static char const alphabet[] = "0012399 aAbB.\t\xe9";
    std::string text;
    int const n = static_cast<int>(random() % 12);
    for (int i = 0; i < n; ++i)
        text += alphabet[random() % (sizeof alphabet - 1)];
    return text;
}

} // namespace

// Defined with the string tests, for readable failures.
void PrintTo(trString const &s, std::ostream *os);

TEST(trNaturalOrder, HandPickedCases)
{
    struct Row {
        char const *a, *b;
        bool skip, fold;
        int expected;
    } const rows[] = {
        {"a2", "a10", true, false, -1},    {"a10", "a2", true, false, 1},
        {"x12y3", "x12y10", true, false, -1}, // tie, then the walk goes on
        {"a10", "a10", true, false, 0},
        {"29", "31", true, false, -1}, // the first differing digit decides, not the last
        // Leading zeros compare left-aligned; the longer run is larger.
        {"a02", "a1", true, false, -1},    {"a1", "a01", true, false, 1},     {"1.05", "1.5", true, false, -1},
        {"1.50", "1.5", true, false, 1},   {"x0070b", "x0070a", true, false, 1},
        // Skipping ignores white space at every step, but not within a digit run; strict counts it.
        {"a 1", "a1", true, false, 0},     {"a 1", "a1", false, false, -1},   {"1 2", "12", true, false, -1},
        {"abc", "ABD", true, false, 1},    {"abc", "ABD", true, true, -1},
        {"\xe9", "z", false, false, -1}, // bytes compare signed
    };
    for (Row const &r : rows) {
        int const got = r.skip ? trNaturalOrderCompareSkipping(r.a, r.b, r.fold)
                               : trNaturalOrderCompareStrict(r.a, r.b, r.fold);
        EXPECT_EQ(got, r.expected) << r.a << " | " << r.b;
    }
    EXPECT_EQ(trNaturalOrderCompare(static_cast<char const *>(nullptr), ""), 0);
}

TEST(trNaturalOrder, NamedFunctionsAndFunctorsMapOntoTheCores)
{
    // "x 20" against "x3" tells skipping (20 > 3) from strict (' ' < '3'); "a9"
    // against "B1" tells plain bytes ('a' > 'B') from folded ('A' < 'B').
    trString const c("x 20"), d("x3"), e("a9"), f("B1");
    ASSERT_EQ(std::vector<int>({trNaturalOrderCompareSkipping(c.chars, d.chars, false),
                                trNaturalOrderCompareStrict(c.chars, d.chars, true),
                                trNaturalOrderCompareSkipping(e.chars, f.chars, false),
                                trNaturalOrderCompareSkipping(e.chars, f.chars, true)}),
              std::vector<int>({1, -1, 1, -1}));

    // Expected results for (c, d) and (e, f), for both overloads.
    EXPECT_EQ(trNaturalOrderCompare(c, d) * 10 + trNaturalOrderCompare(e.chars, f.chars), 11);
    EXPECT_EQ(trNaturalOrderCompareCase(c.chars, d.chars) * 10 + trNaturalOrderCompareCase(e, f), 9);
    // Skips white space despite its name.
    EXPECT_EQ(trNaturalOrderCompareSpace(c, d) * 10 + trNaturalOrderCompareSpace(e.chars, f.chars), 11);
    EXPECT_EQ(trNaturalOrderCompareSpaceCase(c.chars, d.chars) * 10 + trNaturalOrderCompareSpaceCase(e, f), -11);
    EXPECT_FALSE(trNaturalOrderLess(c, d) || trNaturalOrderLess(e.chars, f.chars));
    EXPECT_TRUE(!trNaturalOrderLessCase(c.chars, d.chars) && trNaturalOrderLessCase(e, f));
    EXPECT_TRUE(trNaturalOrderLessSpace(c, d) && !trNaturalOrderLessSpace(e.chars, f.chars));
    EXPECT_TRUE(trNaturalOrderLessSpaceCase(c.chars, d.chars) && trNaturalOrderLessSpaceCase(e, f));

    std::vector<trString> names = {"img10", "img2", "img1", "img02", "Img3"};
    std::sort(names.begin(), names.end(), trNaturalOrderSort_Less());
    EXPECT_EQ(names, (std::vector<trString>{"Img3", "img02", "img1", "img2", "img10"}));
    std::sort(names.begin(), names.end(), trNaturalOrderSortCase_Less());
    EXPECT_EQ(names, (std::vector<trString>{"img02", "img1", "img2", "Img3", "img10"}));

    trString const spaced[2] = {"a 20", "a3"};
    EXPECT_TRUE(trNaturalOrderSort_Less()(spaced[1], spaced[0]) &&
                trNaturalOrderSortSpace_Less()(spaced[0], spaced[1]));

    // The char forms take a reference to the first byte of a text.
    char const *const texts[] = {"a10", "a2", "A 20", "a3"};
    EXPECT_TRUE(trNaturalOrderSortChar_Less()(*texts[1], *texts[0]) &&
                trNaturalOrderSortCharCase_Less()(*texts[1], *texts[0]));
    EXPECT_TRUE(trNaturalOrderSortCharSpace_Less()(*texts[2], *texts[3]) &&
                trNaturalOrderSortCharCaseSpace_Less()(*texts[2], *texts[3]));
}

TEST(trNaturalOrder, AgreesWithReferenceIsAntisymmetricAndTakesLongDigitRuns)
{
    std::mt19937 random(5);
    for (int round = 0; round < 20000; ++round) {
        std::string const a = RandomText(random);
        std::string const b = (round % 4 == 0) ? a : RandomText(random);
        for (bool fold : {false, true}) {
            int const skipping = trNaturalOrderCompareSkipping(a.c_str(), b.c_str(), fold);
            int const strict = trNaturalOrderCompareStrict(a.c_str(), b.c_str(), fold);
            ASSERT_EQ(skipping, ReferenceCompare(a.c_str(), b.c_str(), true, fold)) << a << " | " << b;
            ASSERT_EQ(strict, ReferenceCompare(a.c_str(), b.c_str(), false, fold)) << a << " | " << b;
            ASSERT_EQ(skipping, -trNaturalOrderCompareSkipping(b.c_str(), a.c_str(), fold));
            ASSERT_EQ(strict, -trNaturalOrderCompareStrict(b.c_str(), a.c_str(), fold));
        }
    }

    std::string const digits(200000, '7');
    EXPECT_EQ(trNaturalOrderCompare(digits.c_str(), digits.c_str()), 0);
    std::string const zeros = "0" + digits;
    EXPECT_EQ(trNaturalOrderCompareStrict(zeros.c_str(), zeros.c_str(), false), 0);
    std::string bigger = digits;
    bigger.back() = '8';
    EXPECT_EQ(trNaturalOrderCompare(digits.c_str(), bigger.c_str()), -1);
}
