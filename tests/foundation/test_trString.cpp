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
void ExpectSound(std::initializer_list<trString const *> strings)
{
    for (trString const *s : strings) {
        ASSERT_NE(s->chars, nullptr);
        bool const small = s->length < trString::ms_maxSmallStringSize;
        EXPECT_TRUE(s->chars[s->length] == '\0' && s->isSmall == (small ? 1 : 0) &&
                    s->chars == (small ? s->buffer : s->heap) && (small ? s->capacity == 31 : s->capacity >= s->length))
            << "length " << s->length << " capacity " << s->capacity;
    }
}

// Rows of {what came out, what should}, reported by number.
void ExpectRows(std::vector<std::pair<std::string, std::string>> const &rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i].first, rows[i].second) << "row " << i;
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

TEST(trStringStorage, InlineLimitBlockReuseCopyMoveAndAssignment)
{
    trString inlineText(Repeat('a', 30)), heapText(Repeat('b', 31)), empty;
    ExpectSound({&inlineText, &heapText, &empty});
    EXPECT_EQ(heapText.capacity, 31);

    // From 100 bytes: 60 keeps the block, 40 reallocates, 20 goes inline.
    trString s(Repeat('x', 100));
    char *block = s.heap;
    s = Repeat('y', 60).c_str();
    EXPECT_TRUE(s.heap == block && s.capacity == 100 && Str(s) == Repeat('y', 60));
    s = Repeat('z', 40).c_str();
    EXPECT_TRUE(s.capacity == 40 && Str(s) == Repeat('z', 40));
    s = Repeat('w', 20).c_str();
    ExpectSound({&s});

    trString t(Repeat('x', 100));
    t.SetupStorage(50); // exactly twice too large is still kept
    EXPECT_EQ(t.capacity, 100);
    t.SetupStorage(49);
    EXPECT_TRUE(t.capacity == 49 && t.length == 49 && t.chars[49] == '\0');

    EXPECT_EQ(s.Reserve(40), 1);
    EXPECT_EQ(Str(s), std::string(40, '\0'));
    s.Init();
    ExpectSound({&s});
    EXPECT_EQ(s.length, 0);

    for (int n : {0, 5, 30, 31, 200}) {
        SCOPED_TRACE(n);
        std::string const text = Repeat('c', n);
        trString a(text), b(a), c;
        c = b;
        ExpectSound({&b, &c});
        EXPECT_EQ(Str(c), text);
        EXPECT_TRUE(n == 0 || b.chars != a.chars);
        trString &alias = c;
        c = alias;
        c = std::move(alias);
        ExpectSound({&c});
        EXPECT_EQ(Str(c), text);

        char *block = a.chars;
        trString moved(std::move(a));
        ExpectSound({&moved, &a});
        EXPECT_EQ(a.length, 0);
        EXPECT_TRUE(n < 31 || moved.chars == block) << "the block is stolen, not copied";
        trString target(Repeat('t', 300 - n));
        target = std::move(moved);
        ExpectSound({&target});
        EXPECT_EQ(Str(target), text);
    }

    trString small("0123456789");
    small = small.chars + 3;
    EXPECT_EQ(small, "3456789");
    trString kept(Repeat('a', 40) + Repeat('b', 60));
    kept = kept.chars + 40; // block kept, text moves down
    EXPECT_EQ(Str(kept), Repeat('b', 60));
    trString fresh(Repeat('a', 30) + Repeat('b', 70));
    fresh = fresh.chars + 60; // a new block, copied before the old one goes
    EXPECT_EQ(Str(fresh), Repeat('b', 40));
    ExpectSound({&fresh});

    trString n(static_cast<char const *>(nullptr));
    EXPECT_EQ(n, "");
    n = "abc";
    n = static_cast<char const *>(nullptr);
    n += static_cast<char const *>(nullptr);
    EXPECT_EQ(n, "");
    EXPECT_EQ(trString(3.14159265), "3.14159");

    // Comparisons take a null text as empty.
    trString nullA, nullB, text("a");
    nullA.chars = nullB.chars = nullptr;
    EXPECT_TRUE(nullA == nullB && nullA == trString() && nullA == "" && nullA != "a");
    EXPECT_TRUE(nullA < text && nullA > nullB);
    nullA.chars = nullA.buffer;
    nullB.chars = nullB.buffer;
}

TEST(trStringConcatAndCompare, AppendOperatorsAndOrder)
{
    for (int n : {3, 20, 40}) { // inline, crossing, heap
        trString self(Repeat('u', n));
        self += self;
        EXPECT_EQ(Str(self), Repeat('u', 2 * n));
        ExpectSound({&self});
    }
    trString grown;
    std::string expect;
    for (int i = 0; i < 1000; ++i) {
        grown.Append(static_cast<char>('a' + i % 26));
        expect += static_cast<char>('a' + i % 26);
    }
    EXPECT_EQ(Str(grown), expect);
    trString const left("left");
    ExpectRows({{Str(left + "right"), "leftright"}, {Str("pre-" + left), "pre-left"},
                {Str(left + '/'), "left/"}}); // a char, not the number it would convert to

    trString const a("abc"), b("abd"), same("abc");
    EXPECT_TRUE(a == same && a == "abc" && "abc" == a);
    EXPECT_TRUE(a != b && "abd" != a && a != "ab");
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(trString("z") < trString("\x80")); // unsigned bytes
    // > is true for equal strings too, and < is not.
    EXPECT_TRUE(a > same && !(a < same));
}

TEST(trStringFormat, SetIntSetDoubleAndSetMetric)
{
    trString s;
    // Bad formats are reported and the default is used. Integer digits of the scaled value
    // use up the significant digits; the sign is kept and the unit chosen by size.
    ExpectRows({
        {Str(s.SetInt(42, "%04d")), "0042"},       {Str(s.SetInt(1099511627776L, "%d")), "1099511627776"},
        {Str(s.SetInt(42, "%s")), "42"},           {Str(s.SetInt(42, "%d %d")), "42"},
        {Str(s.SetInt(42, "%")), "42"},            {Str(s.SetInt(-5)), "-5"},
        {Str(s.SetDouble(1.0, "%d")), "1"},        {Str(s.SetDouble(1.0, "%99999f")), "1"},
        {Str(s.SetDouble(1.0 / 3.0)), "0.3333333333"}, {std::to_string(s.SetDouble(1.0, "%200.1f").length), "200"},
        {Str(s.SetMetric(1500.0, "%.3f")), "1.500 km"}, {Str(s.SetMetric(0.0, "%.1f")), "0.0 mm"},
        {Str(s.SetMetric(0.5, 3)), "500 mm"},      {Str(s.SetMetric(0.5, 4)), "500.0 mm"},
        {Str(s.SetMetric(1234.5, 4)), "1.23 km"},  {Str(s.SetMetric(1234.5, 5)), "1.2345 km"},
        {Str(s.SetMetric(1.0, 2)), "1.00 m"},      {Str(s.SetMetric(5.0, -3)), "5 m"},
        {Str(s.SetMetric(7e9, 2)), "7000 Mm"},     {Str(s.SetMetric(0.0)), "0.00 mm"},
        {Str(s.SetMetric(1.0)), "1.00 m"},         {Str(s.SetMetric(-1500.0)), "-1.50 km"},
        {Str(s.SetMetric(-3e9)), "-3000 Mm"},
    });
}

TEST(trStringConvert, NumbersCaseTrimPiecesAndNames)
{
    trString big(Repeat(' ', 50) + "word" + Repeat(' ', 50));
    trString const h("hello"), name("image.TIF");
    ExpectRows({
        {std::to_string(trString("").ToInt32()), "0"}, {std::to_string(trString("-45x").ToInt32()), "-45"},
        {std::to_string(trString("99999999999").ToInt32()), std::to_string(INT_MAX)},
        {Str(trString("aBc1_z").ToUpper()), "ABC1_Z"}, {Str(trString("  a b \t\n").Trim()), "a b"},
        {Str(trString("   ").TrimLeft()), ""},         {Str(trString("   ").TrimRight()), " "}, // keeps its first byte
        {Str(big.Trim()), "word"},                      {Str(trString("render_layer").Humanized()), "Render layer"},
        {Str(h.SubString(1, 3)), "ell"},                {Str(h.SubString(1, 100)), "ello"},
        {Str(h.SubString(-1, 2)), ""},
        {Str(trString(Repeat('a', 40) + Repeat('b', 40)).SubString(35, 10)), "aaaaabbbbb"},
        {Str(name.Extension(false, false)), "TIF"},     {Str(name.Extension(true, true)), ".tif"},
        {Str(trString("noext").Extension(false, true)), ""},
        {Str(trString("dir.d/file").Extension(false, false)), "d/file"}, // separators ignored
        {Str(trString("pic.PNG").WithExtension(".png")), "pic.PNG"},
        {Str(trString("pic.jpg").WithExtension(".png")), "pic.jpg.png"},
        {Str(trString("render.%04d.exr").WithFrameNumber(7)), "render.0007.exr"},
        {Str(trString("%d_%02d_%d").WithFrameNumber(3)), "3_03_3"},
        {Str(trString("%03d").WithFrameNumber(-7)), "-07"},
        {Str(trString("100% %s %10d").WithFrameNumber(1)), "100% %s %10d"},
        {Str(trToString(static_cast<unsigned char>(1))), "true"},
        {Str(trToString(static_cast<unsigned char>(0))), "false"},
        {Str(trToString(trVector(1.0 / 3.0, 1e-20, 1234567890.0))), "0.3333333333 1e-20 1234567890"},
        {Str(trToString(trBoundingBox(trVector(-1.0, -2.0, -3.0), trVector(4.0, 5.0, 6.5)))), "-1 -2 -3 4 5 6.5"},
    });
    ExpectSound({&big});
    int anything = 0;
    void *readBack = nullptr;
    ASSERT_EQ(std::sscanf(trToString(static_cast<void *>(&anything)).chars, "%p", &readBack), 1);
    EXPECT_EQ(readBack, &anything);
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
    int at[4] = {99, 99, 99, 99};
    bool const found[4] = {t.FindLeftmost("bc", at[0]), t.FindRightmost("bc", at[1]), t.FindRightmost("", at[2]),
                           t.FindLeftmost("x", at[3])};
    EXPECT_TRUE(found[0] && found[1] && !found[2] && !found[3]);
    EXPECT_EQ(std::vector<int>(at, at + 4), (std::vector<int>{1, 4, 0, -1}));
    EXPECT_TRUE(t.Contains("cab") && t.Contains("CAB", false));
    EXPECT_FALSE(t.Contains("CAB") || t.Contains("CAB", true) || t.Contains("") || t.Contains("", false));
}

TEST(trStringReplaceAndPieces, BothReplaceFormsTokeniseAndPaths)
{
    trString in("one two one");
    ExpectRows({{Str(trStringReplace("aaa", "aa", "b")), "ba"}, // left to right, no overlap
                {Str(trStringReplace("abc", "b", "bb")), "abbc"}, // not rescanned
                {Str(trStringReplace("abc", "", "x")), "abc"},
                {Str(in.ReplaceInPlace("one", "1", 123)), "1 two 1"},
                {Join(trStringTokenise(",,,,", ",", 0)), "|||"}, // one empty piece per delimiter
                {Join(trStringTokenise("a,b,,c,", ",", 0)), "a|b||c"},
                {Join(trStringTokenise("a;b,c", ",;", 0)), "a;b|c"}, // first byte only
                {Join(trStringTokenise(" a , b ,   ,c", ",", 1)), "a|b||c"}});
    EXPECT_TRUE(trStringTokenise("", ",", 0).empty() && trStringTokenise("a,b", "", 0).empty());

    // The buffer form rescans, and so finds what its own replacement made.
    char cascade[32] = "aab";
    trStringReplace(cascade, "ab", "b", 32);
    EXPECT_STREQ(cascade, "b");
    // A replacement holding its pattern would never end; the size stops it.
    char endless[16] = "x";
    trStringReplace(endless, "x", "xx", 16);
    EXPECT_EQ(std::string(endless), Repeat('x', 15));
    trStringReplace(nullptr, "a", "b", 0);

    trString path("p"), name("n"), ext("e"), both("a/b/c");
    auto split = [&](char const *text) {
        return trExtractFilePathAndName(text, path, name), Str(path) + "|" + Str(name);
    };
    auto dot = [&](char const *text) {
        return trExtractFileNameAndExtension(text, name, ext), Str(name) + "|" + Str(ext);
    };
    ExpectRows({{split(""), "p|n"}, {split("dir/sub\\file.txt"), "dir/sub\\|file.txt"}});
    trExtractFilePathAndName(both, both, name);
    ExpectRows({{Str(both) + "|" + Str(name), "a/b/|c"}, {dot(""), "c|e"}, {dot("a.b.c"), "a.b|c"}});
}
