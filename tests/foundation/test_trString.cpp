#include "foundation/trString.h"

#include "foundation/trBoundingBox.h"
#include "foundation/trVector.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace {

std::string Repeat(char c, int n) { return std::string(static_cast<std::size_t>(n), c); }
std::string Str(trString const &s) { return std::string(s.chars, static_cast<std::size_t>(s.length)); }

// The invariants every live string keeps: terminated, inline below 31 bytes with
// `chars` on its own buffer, on its own heap block otherwise.
void ExpectSound(trString const &s)
{
    ASSERT_NE(s.chars, nullptr);
    EXPECT_EQ(s.chars[s.length], '\0');
    bool const small = s.length < trString::ms_maxSmallStringSize;
    EXPECT_EQ(s.isSmall, small ? 1 : 0);
    EXPECT_EQ(s.chars, small ? s.buffer : s.heap);
    if (small) {
        EXPECT_EQ(s.capacity, 31);
    } else {
        EXPECT_GE(s.capacity, s.length);
    }
}

std::string Join(std::vector<trString> const &pieces)
{
    std::string joined;
    for (std::size_t i = 0; i < pieces.size(); ++i)
        joined += (i ? "|" : "") + Str(pieces[i]);
    return joined;
}

} // namespace

// Readable failures.
void PrintTo(trString const &s, std::ostream *os) { *os << '"' << (s.chars ? Str(s) : "(null)") << '"'; }

TEST(trStringStorage, InlineLimitAndBlockReuse)
{
    trString inlineText(Repeat('a', 30)), heapText(Repeat('b', 31)), empty;
    ExpectSound(inlineText);
    ExpectSound(heapText);
    ExpectSound(empty);
    EXPECT_EQ(heapText.capacity, 31);

    // From 100 bytes: 60 keeps the block, 40 reallocates, 20 goes inline.
    trString s(Repeat('x', 100));
    char *block = s.heap;
    s = Repeat('y', 60).c_str();
    EXPECT_TRUE(s.heap == block && s.capacity == 100 && Str(s) == Repeat('y', 60));
    s = Repeat('z', 40).c_str();
    EXPECT_TRUE(s.capacity == 40 && Str(s) == Repeat('z', 40));
    s = Repeat('w', 20).c_str();
    ExpectSound(s);

    trString t(Repeat('x', 100));
    t.SetupStorage(50); // exactly twice too large is still kept
    EXPECT_EQ(t.capacity, 100);
    t.SetupStorage(49);
    EXPECT_TRUE(t.capacity == 49 && t.length == 49 && t.chars[49] == '\0');

    EXPECT_EQ(s.Reserve(40), 1);
    EXPECT_EQ(Str(s), std::string(40, '\0'));
    s.Init();
    ExpectSound(s);
    EXPECT_EQ(s.length, 0);
}

TEST(trStringCopy, CopyMoveAndSelfAssignment)
{
    for (int n : {0, 5, 30, 31, 200}) {
        SCOPED_TRACE(n);
        std::string const text = Repeat('c', n);
        trString a(text);
        trString b(a);
        trString c;
        c = b;
        ExpectSound(b);
        ExpectSound(c);
        EXPECT_EQ(Str(c), text);
        if (n > 0) {
            EXPECT_NE(b.chars, a.chars);
        }
        trString &alias = c;
        c = alias;
        c = std::move(alias);
        ExpectSound(c);
        EXPECT_EQ(Str(c), text);

        char *block = a.chars;
        trString moved(std::move(a));
        ExpectSound(moved);
        ExpectSound(a);
        EXPECT_EQ(a.length, 0);
        if (n >= 31) {
            EXPECT_EQ(moved.chars, block); // the block is stolen, not copied
        }
        trString target(Repeat('t', 300 - n));
        target = std::move(moved);
        ExpectSound(target);
        EXPECT_EQ(Str(target), text);
    }
}

TEST(trStringCopy, AssignFromOwnTextAndNull)
{
    trString small("0123456789");
    small = small.chars + 3;
    EXPECT_EQ(small, "3456789");
    trString kept(Repeat('a', 40) + Repeat('b', 60));
    kept = kept.chars + 40; // block kept, text moves down
    EXPECT_EQ(Str(kept), Repeat('b', 60));
    trString fresh(Repeat('a', 30) + Repeat('b', 70));
    fresh = fresh.chars + 60; // a new block, copied before the old one goes
    EXPECT_EQ(Str(fresh), Repeat('b', 40));
    ExpectSound(fresh);

    trString s(static_cast<char const *>(nullptr));
    EXPECT_EQ(s, "");
    s = "abc";
    s = static_cast<char const *>(nullptr);
    s += static_cast<char const *>(nullptr);
    EXPECT_EQ(s, "");
    EXPECT_EQ(trString(3.14159265), "3.14159");

    // Comparisons take a null text as empty.
    trString nullA, nullB, text("a");
    nullA.chars = nullB.chars = nullptr;
    EXPECT_TRUE(nullA == nullB && nullA == trString() && nullA == "" && nullA != "a");
    EXPECT_TRUE(nullA < text && nullA > nullB);
    nullA.chars = nullA.buffer;
    nullB.chars = nullB.buffer;
}

TEST(trStringConcat, AppendAndOperators)
{
    for (int n : {3, 20, 40}) { // inline, crossing, heap
        trString self(Repeat('u', n));
        self += self;
        EXPECT_EQ(Str(self), Repeat('u', 2 * n));
        ExpectSound(self);
    }
    trString grown;
    std::string expect;
    for (int i = 0; i < 1000; ++i) {
        grown.Append(static_cast<char>('a' + i % 26));
        expect += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(Str(grown), expect);

    trString const a("left");
    EXPECT_EQ(a + "right", "leftright");
    EXPECT_EQ("pre-" + a, "pre-left");
    EXPECT_EQ(a + '/', "left/"); // a char, not the number it would convert to
}

TEST(trStringCompare, EqualityAndOrder)
{
    trString const a("abc"), b("abd"), same("abc");
    EXPECT_TRUE(a == same && a == "abc" && "abc" == a);
    EXPECT_TRUE(a != b && "abd" != a && a != "ab");
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(trString("z") < trString("\x80")); // unsigned bytes
    // > is true for equal strings too, and < is not.
    EXPECT_TRUE(a > same);
    EXPECT_FALSE(a < same);
}

TEST(trStringFormat, SetIntSetDoubleAndSetMetric)
{
    trString s;
    // Bad formats are reported and the default is used.
    struct IntRow {
        long value;
        char const *format, *text;
    } const ints[] = {{42, "%04d", "0042"}, {1099511627776L, "%d", "1099511627776"},
                      {42, "%s", "42"},     {42, "%d %d", "42"}, {42, "%", "42"}};
    for (IntRow const &r : ints)
        EXPECT_EQ(s.SetInt(r.value, r.format), r.text) << r.format;
    EXPECT_EQ(s.SetInt(-5), "-5");
    EXPECT_EQ(s.SetDouble(1.0, "%d"), "1");
    EXPECT_EQ(s.SetDouble(1.0, "%99999f"), "1");
    EXPECT_EQ(s.SetDouble(1.0 / 3.0), "0.3333333333");
    EXPECT_EQ(s.SetDouble(1.0, "%200.1f").length, 200);

    EXPECT_EQ(s.SetMetric(1500.0, "%.3f"), "1.500 km");
    EXPECT_EQ(s.SetMetric(0.0, "%.1f"), "0.0 mm");
    // Integer digits of the scaled value use up the significant digits; the sign is kept
    // and the unit chosen by size.
    struct MetricRow {
        double value;
        int digits;
        char const *text;
    } const metrics[] = {{0.5, 3, "500 mm"},     {0.5, 4, "500.0 mm"}, {1234.5, 4, "1.23 km"}, {1234.5, 5, "1.2345 km"},
                         {1.0, 2, "1.00 m"},     {5.0, -3, "5 m"},     {7e9, 2, "7000 Mm"}};
    for (MetricRow const &r : metrics)
        EXPECT_EQ(s.SetMetric(r.value, r.digits), r.text) << r.value << " " << r.digits;
    EXPECT_EQ(s.SetMetric(0.0), "0.00 mm");
    EXPECT_EQ(s.SetMetric(1.0), "1.00 m");
    EXPECT_EQ(s.SetMetric(-1500.0), "-1.50 km");
    EXPECT_EQ(s.SetMetric(-3e9), "-3000 Mm");
}

TEST(trStringConvert, NumbersCaseTrimAndPieces)
{
    EXPECT_EQ(trString("").ToInt32(), 0);
    EXPECT_EQ(trString("-45x").ToInt32(), -45);
    EXPECT_EQ(trString("99999999999").ToInt32(), INT_MAX);
    EXPECT_EQ(trString("aBc1_z").ToUpper(), "ABC1_Z");
    EXPECT_EQ(trString("  a b \t\n").Trim(), "a b");
    EXPECT_EQ(trString("   ").TrimLeft(), "");
    EXPECT_EQ(trString("   ").TrimRight(), " "); // keeps its first byte
    trString big(Repeat(' ', 50) + "word" + Repeat(' ', 50));
    EXPECT_EQ(big.Trim(), "word");
    ExpectSound(big);

    EXPECT_EQ(trString("render_layer").Humanized(), "Render layer");
    trString const h("hello");
    EXPECT_EQ(h.SubString(1, 3), "ell");
    EXPECT_EQ(h.SubString(1, 100), "ello");
    EXPECT_EQ(h.SubString(-1, 2), "");
    EXPECT_EQ(trString(Repeat('a', 40) + Repeat('b', 40)).SubString(35, 10), "aaaaabbbbb");

    trString const name("image.TIF");
    EXPECT_EQ(name.Extension(false, false), "TIF");
    EXPECT_EQ(name.Extension(true, true), ".tif");
    EXPECT_EQ(trString("noext").Extension(false, true), "");
    EXPECT_EQ(trString("dir.d/file").Extension(false, false), "d/file"); // separators ignored
    EXPECT_EQ(trString("pic.PNG").WithExtension(".png"), "pic.PNG");
    EXPECT_EQ(trString("pic.jpg").WithExtension(".png"), "pic.jpg.png");

    EXPECT_EQ(trString("render.%04d.exr").WithFrameNumber(7), "render.0007.exr");
    EXPECT_EQ(trString("%d_%02d_%d").WithFrameNumber(3), "3_03_3");
    EXPECT_EQ(trString("%03d").WithFrameNumber(-7), "-07");
    EXPECT_EQ(trString("100% %s %10d").WithFrameNumber(1), "100% %s %10d");
}

TEST(trStringConvert, MakeXMLLegal)
{
    trString s("a<b>&\"c'\r\n\t");
    EXPECT_EQ(s.MakeXMLLegal(), "a&lt;b&gt;&amp;&quot;c'&#xD;&#xA;&#x9;");

    // The same as the chain of replacements, ampersand first.
    std::mt19937 random(11);
    char const alphabet[] = "a&<>\r\n\t\"';#x";
    char const *pairs[][2] = {{"&", "&amp;"},  {"<", "&lt;"},   {">", "&gt;"},   {"\r", "&#xD;"},
                              {"\n", "&#xA;"}, {"\t", "&#x9;"}, {"\"", "&quot;"}};
    for (int round = 0; round < 300; ++round) {
        std::string text;
        for (int i = int(random() % 50); i > 0; --i)
            text += alphabet[random() % (sizeof alphabet - 1)];
        trString chained(text), direct(text);
        for (auto const &pair : pairs)
            chained = trStringReplace(chained, pair[0], pair[1]);
        ASSERT_EQ(direct.MakeXMLLegal(), chained) << text;
    }
}

TEST(trStringSearch, BeginsEndsFindContains)
{
    trString const s("Hello World");
    EXPECT_TRUE(s.BeginsWith("Hello") && s.BeginsWith("Hello World") && s.BeginsWith("hELLO", false));
    EXPECT_FALSE(s.BeginsWith("hello") || s.BeginsWith("") || s.BeginsWith("Hello World!"));
    EXPECT_FALSE(trString("@a").BeginsWith("`a", false)); // only ASCII letters fold
    EXPECT_TRUE(s.EndsWith("World") && s.EndsWith("WORLD", false));
    EXPECT_FALSE(s.EndsWith("world") || s.EndsWith("", false) || s.EndsWith("xHello World"));

    trString const t("abcabc");
    int at = 99;
    EXPECT_TRUE(t.FindLeftmost("bc", at));
    EXPECT_EQ(at, 1);
    EXPECT_TRUE(t.FindRightmost("bc", at));
    EXPECT_EQ(at, 4);
    EXPECT_FALSE(t.FindRightmost("", at));
    EXPECT_EQ(at, 0);
    EXPECT_FALSE(t.FindLeftmost("x", at));
    EXPECT_EQ(at, -1);
    EXPECT_TRUE(t.Contains("cab") && t.Contains("CAB", false));
    EXPECT_FALSE(t.Contains("CAB") || t.Contains("CAB", true) || t.Contains("") || t.Contains("", false));
}

TEST(trStringReplace, BothForms)
{
    EXPECT_EQ(trStringReplace("aaa", "aa", "b"), "ba");   // left to right, no overlap
    EXPECT_EQ(trStringReplace("abc", "b", "bb"), "abbc"); // not rescanned
    EXPECT_EQ(trStringReplace("abc", "", "x"), "abc");
    trString in("one two one");
    EXPECT_EQ(in.ReplaceInPlace("one", "1", 123), "1 two 1");

    // The buffer form rescans, and so finds what its own replacement made.
    char cascade[32] = "aab";
    trStringReplace(cascade, "ab", "b", 32);
    EXPECT_STREQ(cascade, "b");
    // A replacement holding its pattern would never end; the size stops it.
    char endless[16] = "x";
    trStringReplace(endless, "x", "xx", 16);
    EXPECT_EQ(std::string(endless), Repeat('x', 15));
    trStringReplace(nullptr, "a", "b", 0);
}

TEST(trStringTokeniseAndPaths, Pieces)
{
    EXPECT_EQ(Join(trStringTokenise(",,,,", ",", 0)), "|||"); // one empty piece per delimiter
    EXPECT_TRUE(trStringTokenise("", ",", 0).empty());
    EXPECT_TRUE(trStringTokenise("a,b", "", 0).empty());
    EXPECT_EQ(Join(trStringTokenise("a,b,,c,", ",", 0)), "a|b||c");
    EXPECT_EQ(Join(trStringTokenise("a;b,c", ",;", 0)), "a;b|c"); // first byte only
    EXPECT_EQ(Join(trStringTokenise(" a , b ,   ,c", ",", 1)), "a|b||c");

    trString path("p"), name("n"), ext("e");
    trExtractFilePathAndName("", path, name);
    EXPECT_EQ(Str(path) + "|" + Str(name), "p|n");
    trExtractFilePathAndName("dir/sub\\file.txt", path, name);
    EXPECT_EQ(Str(path) + "|" + Str(name), "dir/sub\\|file.txt");
    trString both("a/b/c");
    trExtractFilePathAndName(both, both, name);
    EXPECT_EQ(Str(both) + "|" + Str(name), "a/b/|c");
    trExtractFileNameAndExtension("", name, ext);
    EXPECT_EQ(Str(name) + "|" + Str(ext), "c|e");
    trExtractFileNameAndExtension("a.b.c", name, ext);
    EXPECT_EQ(Str(name) + "|" + Str(ext), "a.b|c");
}

TEST(trStringToString, AllForms)
{
    EXPECT_EQ(trToString(static_cast<unsigned char>(1)), "true");
    EXPECT_EQ(trToString(static_cast<unsigned char>(0)), "false");
    int anything = 0;
    void *readBack = nullptr;
    ASSERT_EQ(std::sscanf(trToString(static_cast<void *>(&anything)).chars, "%p", &readBack), 1);
    EXPECT_EQ(readBack, &anything);
    EXPECT_EQ(trToString(trVector(1.0 / 3.0, 1e-20, 1234567890.0)), "0.3333333333 1e-20 1234567890");
    EXPECT_EQ(trToString(trBoundingBox(trVector(-1.0, -2.0, -3.0), trVector(4.0, 5.0, 6.5))), "-1 -2 -3 4 5 6.5");
}
