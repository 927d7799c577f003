// Parameter values as text: the printed forms, reading back, forced writes on load,
// and the refusals for text that doesn't parse and for types without a text form.

#include "test_trBaseSupport.h"

#include "nodes/trGuiPushButton.h"

namespace {

std::string TextOf(trBase &n, long index, long *result = nullptr)
{
    trString text("stale");
    long const r = n.GetStringFromParam(index, text, trWhoUser);
    if (result)
        *result = r;
    return Str(text);
}

TEST(trBaseText, PrintedForms)
{
    Probe n;
    n.v = trVector(1, 2.5, 3e20);
    n.i = -5000000000L; // integers are 64-bit here
    n.r = 0.1;
    n.f = 0.1f; // widened, so the float's own digits show
    n.c.Set(0.5f, 0.25f, 0.1f);
    n.v2 = tr2Vector(-1, 1e-12);
    n.SetParam(n.iLink, trString("/some/where"), trWhoUser);
    for (auto [index, text] : {std::pair{n.iV, "1 2.5 3e+20"}, {n.iI, "-5000000000"}, {n.iR, "0.1"},
                               {n.iF, "0.1000000015"}, {n.iC, "0.5 0.25 0.1000000015"}, {n.iV2, "-1 1e-12"},
                               {n.iLink, "/some/where"}, {1L, ""}})
        EXPECT_EQ(TextOf(n, index), text) << index;
    // Pointers, widgets and raw entries have no text form.
    HostCapture host;
    trGuiPushButton button;
    n.PushButton(button, "press");
    long const widget = n.NumParams() - 1;
    trVector reserved;
    long const r11 = n.DeclareRaw(11, &reserved, "reserved");
    for (long index : {n.iP, widget, r11}) {
        long result = 7;
        EXPECT_EQ(TextOf(n, index, &result), "");
        EXPECT_EQ(result, 0);
    }
    EXPECT_EQ(host.errors, std::vector<std::string>({"GetStringFromParam: Bad parameter type!"}));
}

TEST(trBaseText, ReadingBackGivesTheSameText)
{
    Probe n, m;
    n.i = 123456789012L;
    n.r = -2.75e-7;
    n.f = 3.5f;
    n.v = trVector(0.125, -8, 1e100);
    n.v2 = tr2Vector(7, 0.001);
    n.c.Set(0.2f, 0.4f, 1.5f);
    n.b = 0;
    n.s = "multi word text";
    for (long index : {n.iI, n.iR, n.iF, n.iV, n.iV2, n.iC, n.iB, n.iS}) {
        std::string const text = TextOf(n, index);
        EXPECT_EQ(m.SetParamFromString(index, trString(text.c_str()), trWhoUser), 1) << text;
        EXPECT_EQ(TextOf(m, index), text);
    }
    EXPECT_EQ(m.c.ColourSpace, trManRgb::kLinear709); // text carries no tag
}

TEST(trBaseText, ReadsAreForcedAndTrailingTextIsIgnored)
{
    Probe n;
    n.name = "n";
    Events().clear();
    EXPECT_EQ(n.SetParamFromString(n.iI, trString("3"), trWhoSystem), 1); // equal, still told
    EXPECT_EQ(Events(), std::vector<std::string>({"n.Pre(n,8,system)", "n.Changed(8,system)"}));
    EXPECT_TRUE(n.SetParamFromString("int_value", trString("12abc"), trWhoSystem) && n.i == 12);
    EXPECT_TRUE(n.SetParamFromString(n.iB, trString("257"), trWhoSystem) && n.b == 1); // the low byte
    EXPECT_TRUE(n.SetParamFromString(n.iS, trString("  spaced  "), trWhoSystem) && Str(n.s) == "  spaced  ");
}

TEST(trBaseText, UnparsableTextChangesNothing)
{
    Probe n;
    n.name = "n";
    HostCapture host;
    Events().clear();
    struct {
        long index;
        char const *text, *error;
    } const cases[] = {
        {n.iI, "abc", "abc: Expected 1x integer for parameter int_value"},
        {n.iR, "", ": Expected 1x real for parameter real_value"},
        {n.iF, "x1", "x1: Expected 1x real for parameter float_value"},
        {n.iV, "1 2", "1 2: Expected 3x real for parameter vector_value"},
        {n.iV2, "1,2", "1,2: Expected 2x real for parameter vector2_value"},
        {n.iC, "1 2 z", "1 2 z: Expected 3x real for parameter colour_value"},
        {n.iB, "yes", "yes: Expected 0 or 1 for parameter bool_value"},
    };
    for (auto const &c : cases) {
        Console console;
        EXPECT_EQ(n.SetParamFromString(c.index, trString(c.text), trWhoUser), 0) << c.text;
        EXPECT_EQ(console.Done(), std::string("ERROR: ") + c.error + "\n");
    }
    EXPECT_TRUE(Events().empty());
    EXPECT_TRUE(host.errors.empty()); // console only
    EXPECT_EQ(n.SetParamFromString(n.iP, trString("0x1"), trWhoUser), 0);
    trGuiPushButton button;
    n.PushButton(button, "press");
    EXPECT_EQ(n.SetParamFromString(n.NumParams() - 1, trString("1"), trWhoUser), 0);
    EXPECT_EQ(n.SetParamFromString(0L, trString("1"), trWhoUser), 0); // an interface entry
    EXPECT_EQ(host.errors, std::vector<std::string>({"SetParamFromString: Unsupported parameter type: pointer!",
                                                     "SetParamFromString: Unsupported parameter type: widget!",
                                                     "SetParamFromString: Bad parameter type!"}));
    EXPECT_EQ(n.SetParamFromString("zzz", trString("1"), trWhoUser), 0);
    EXPECT_EQ(host.warnings,
              std::vector<std::string>{"SetParamFromString: Unknown parameter: \"zzz\" in class: UNREGISTERED_CLASS"});
    EXPECT_TRUE(Events().empty());
}

TEST(trBaseText, ReservedTripleIsReadAsAVector)
{
    Probe n;
    HostCapture host;
    trVector reserved;
    long const r11 = n.DeclareRaw(11, &reserved, "reserved");
    // Read, then forwarded as a vector, which the entry's type refuses.
    EXPECT_EQ(n.SetParamFromString(r11, trString("1 2 3"), trWhoUser), 0);
    EXPECT_EQ(host.warnings, std::vector<std::string>{"SetParam: Wrong type for parameter: \"reserved\" in class: "
                                                      "UNREGISTERED_CLASS. Expected type 11, got type 2"});
    long dummy = 0;
    long const r10 = n.DeclareRaw(10, &dummy, "reserved_pair");
    EXPECT_EQ(n.SetParamFromString(r10, trString("1 2"), trWhoUser), 0);
    EXPECT_EQ(host.errors, std::vector<std::string>({"SetParamFromString: Bad parameter type!"}));
}

} // namespace
