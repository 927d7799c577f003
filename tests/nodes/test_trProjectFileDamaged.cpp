// Project files that go wrong: damaged, truncated, binary, deeply nested or huge input,
// elements where they don't belong, bad values; and saves that can't complete, which
// must leave the previous file as it was.

#include "test_trBaseSupport.h"

#include "nodes/trProjectFile.h"

#include <csignal>
#include <sys/resource.h>

namespace {

class DamagedProject : public ::testing::Test {
protected:
    void SetUp() override
    {
        TestClass("pd_probe");
        Events().clear();
    }
    // Runs a read of `text`, keeping what reached the console.
    bool Read(trBase &root, std::string const &text)
    {
        Console console;
        bool const ok = trBaseXML::ReadBuffer(root, text.c_str(), "proj");
        console.Done();
        err = console.err;
        all = console.all;
        return ok;
    }
    std::string err, all;
    Scratch scratch;
    trBase root;
};

TEST_F(DamagedProject, TruncatedFileKeepsWhatWasReadAndTriggersNoLinks)
{
    HostCapture host;
    EXPECT_FALSE(Read(root, "<proj>\n<pd_probe name=\"A\" input_link=\"B\" />\n<pd_probe name=\"B\" int_value=\"5\">\n"));
    EXPECT_EQ(host.errors, std::vector<std::string>{"Parse error in byte stream at line: 4:\nno element found\n"});
    ASSERT_EQ(root.NumChildren(), 2);
    EXPECT_EQ(AsProbe(root.Child(1))->i, 5);
    // The link named a node that came later: without the final pass it is unresolved.
    EXPECT_EQ(AsProbe(root.Child(0))->link.LinkedNode(false), nullptr);
    EXPECT_FALSE(Has(all, "ReadXML: done"));
}

TEST_F(DamagedProject, UnreadableInputFailsWithAMessage)
{
    HostCapture host;
    std::string binary;
    for (int i = 0; i < 4096; ++i)
        binary += char(1 + (i * 37) % 255);
    EXPECT_FALSE(Read(root, binary));
    EXPECT_FALSE(Read(root, ""));
    EXPECT_FALSE(Read(root, "<proj><pd_probe name=\"A\" name=\"B\" /></proj>")); // duplicate attribute
    ASSERT_EQ(host.errors.size(), 3u);
    EXPECT_EQ(host.errors[1], "Parse error in byte stream at line: 1:\nno element found\n");
    EXPECT_EQ(root.NumChildren(), 0);
    host.errors.clear();
    // Files: a parse error names the file and line; missing files, no name and folders.
    std::string const bad = scratch.Write("bad.svd", "<proj>\n<pd_probe name=\"A\">\n</proj>\n");
    std::string const missing = scratch.File("missing.svd");
    Console console;
    EXPECT_FALSE(trBaseXML::ReadFile(root, bad.c_str(), "proj"));
    EXPECT_EQ(root.NumChildren(), 1);
    EXPECT_FALSE(trBaseXML::ReadFile(root, missing.c_str(), "proj"));
    EXPECT_FALSE(trBaseXML::ReadFile(root, nullptr, "proj"));
    EXPECT_FALSE(trBaseXML::ReadBuffer(root, nullptr, "proj"));
    EXPECT_FALSE(trBaseXML::ReadFile(root, scratch.path.c_str(), "proj")); // a folder opens but can't be read
    EXPECT_EQ(host.errors, (std::vector<std::string>{bad + ":\nParse error at line 3:\nmismatched tag\n",
                                                     "ReadXML: Cannot open file: \"" + missing + "\"",
                                                     "ReadXML: Passed neither file nor byte stream",
                                                     "ReadXML: Passed neither file nor byte stream", "Read error\n"}));
}

TEST_F(DamagedProject, BadValuesAndUnknownParametersOnlyWarn)
{
    HostCapture host;
    EXPECT_TRUE(Read(root, "<proj>\n<pd_probe name=\"A\" int_value=\"many\" no_such=\"1\" real_value=\"2.5\" "
                           "vector_value=\"1 2\" ptr_value=\"0x10\" />\n</proj>"));
    Probe *a = AsProbe(root.Child(0));
    ASSERT_NE(a, nullptr);
    EXPECT_TRUE(a->i == 3 && a->r == 2.5 && a->v.x == 1.0); // the default stays
    EXPECT_TRUE(Has(err, "many: Expected 1x integer for parameter int_value")) << all;
    EXPECT_TRUE(Has(err, "1 2: Expected 3x real for parameter vector_value")) << all;
    EXPECT_TRUE(Has(all, "ReadXML: Line 2: parameter \"int_value\" of \"/A\" was not set")) << all;
    EXPECT_EQ(host.warnings,
              std::vector<std::string>{"SetParamFromString: Unknown parameter: \"no_such\" in class: pd_probe"});
    EXPECT_EQ(host.errors, std::vector<std::string>{"SetParamFromString: Unsupported parameter type: pointer!"});
}

TEST_F(DamagedProject, AnimationElementsOutOfPlaceAreIgnored)
{
    EXPECT_TRUE(Read(root,
                     "<proj><pd_probe name=\"A\">\n"
                     "<key t=\"1\" value=\"5\" />\n"                                    // outside any curve
                     "<curve><key t=\"2\" value=\"5\" /></curve>\n"                     // curve outside animationData
                     "<animationData param=\"nope\" componentIndex=\"0\"><curve><key t=\"3\" value=\"1\" /></curve></animationData>\n"
                     "<animationData param=\"real_value\" componentIndex=\"7\"><curve><key t=\"4\" value=\"1\" /></curve></animationData>\n"
                     "<animationData param=\"real_value\"><curve><key t=\"5\" value=\"1\" /></curve></animationData>\n"
                     "<animationData param=\"real_value\" componentIndex=\"0\"><curve mode=\"linear\">"
                     "<key t=\"nan\" value=\"1\" /><key t=\"1e300\" value=\"1\" /><key t=\"6\" value=\"inf\" />"
                     "<key t=\"7\" value=\"8\" /></curve></animationData>\n"
                     "<param name=\"real_value\" vf99999999999999999=\"1\" />\n"
                     "</pd_probe></proj>"));
    Probe *a = AsProbe(root.Child(0));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(Curve(*a, a->iR, 0), "2: 7=8(0,0,0)");
    for (char const *message : {"ReadXML: Line 4: animation of unknown parameter \"nope\" in \"/A\" ignored",
                                "ReadXML: Line 7: key with a frame or value out of range ignored",
                                "ReadXML: Line 8: key with a frame out of range ignored"})
        EXPECT_TRUE(Has(all, message)) << message << "\n" << all;
}

TEST_F(DamagedProject, DeepNestingIsCutOffWithAMessage)
{
    std::string text = "<proj>";
    for (int i = 0; i < 400; ++i)
        text += "<pd_probe name=\"n\">";
    for (int i = 0; i < 400; ++i)
        text += "</pd_probe>";
    text += "<pd_probe name=\"after\" /></proj>";
    EXPECT_TRUE(Read(root, text));
    EXPECT_TRUE(Has(all, "elements nested deeper than 255 levels are ignored")) << all;
    // 254 nested nodes below the root element, then the sibling after them.
    long depth = 0;
    for (trBase *n = root.Child(0); n; n = n->NumChildren() ? n->Child(0) : nullptr)
        ++depth;
    EXPECT_EQ(depth, 254);
    ASSERT_EQ(root.NumChildren(), 2);
    EXPECT_EQ(Str(root.Child(1)->name), "after");
}

TEST_F(DamagedProject, LargeFilesStreamInPieces)
{
    // Values and element counts well beyond one 8192-byte piece.
    std::string const big(3 * 1000 * 1000, 'x');
    std::string text = "<proj>\n<pd_probe name=\"Big\" string_value=\"" + big + "\" />\n";
    for (int i = 0; i < 2000; ++i)
        text += "<pd_probe name=\"N" + std::to_string(i) + "\" int_value=\"" + std::to_string(i) + "\" />\n";
    text += "</proj>\n";
    Console console;
    ASSERT_TRUE(trBaseXML::ReadFile(root, scratch.Write("large.svd", text).c_str(), "proj"));
    ASSERT_EQ(root.NumChildren(), 2001);
    EXPECT_EQ(AsProbe(root.Child(0))->s.length, long(big.size()));
    EXPECT_EQ(AsProbe(root.Child(2000))->i, 1999);
}

TEST_F(DamagedProject, FailedSavesLeaveThePreviousFile)
{
    HostCapture host;
    Probe *p = AsProbe(root.CreateChild("pd_probe"));
    std::string const path = scratch.Write("keep.svd", "previous contents");
    // A folder in the way of the target.
    std::string const folder = scratch.File("folder.svd");
    std::filesystem::create_directory(folder);
    Console console;
    EXPECT_FALSE(trBaseXML::WriteProjectFile(folder.c_str(), root, "proj"));
    EXPECT_TRUE(std::filesystem::is_directory(folder));
    // A folder that doesn't exist.
    std::string const nowhere = scratch.File("no/such/folder.svd");
    EXPECT_FALSE(trBaseXML::WriteProjectFile(nowhere.c_str(), root, "proj"));
    EXPECT_EQ(trBaseXML::BeginWriteClipFile(nowhere.c_str(), "clip"), nullptr);
    // A disk that fills up mid-write: the file size limit stands in for it.
    p->SetParam(p->iS, trString(std::string(200000, 'y')), trWhoUser);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = 4096;
    setrlimit(RLIMIT_FSIZE, &small);
    bool const savedWhenFull = trBaseXML::WriteProjectFile(path.c_str(), root, "proj");
    setrlimit(RLIMIT_FSIZE, &old);
    std::signal(SIGXFSZ, oldHandler);
    console.Done();
    EXPECT_FALSE(savedWhenFull);
    EXPECT_EQ(ReadAll(path), "previous contents");
    ASSERT_EQ(host.errors.size(), 4u);
    std::string const missing = "\"" + nowhere + "\" (No such file or directory)";
    EXPECT_EQ(std::vector<std::string>(host.errors.begin(), host.errors.begin() + 3),
              (std::vector<std::string>{"WriteProjectFile: Cannot open file: \"" + folder + "\" (Is a directory)",
                                        "WriteProjectFile: Cannot open file: " + missing,
                                        "WriteClipFile: Cannot open file: " + missing}));
    EXPECT_EQ(host.errors[3].rfind("WriteProjectFile: Cannot write file: \"" + path + "\" (", 0), 0u) << host.errors[3];
    EXPECT_TRUE(Has(host.errors[3], "the previous file is unchanged"));
    // Nothing but the old file and the folder is left behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.path), {}), 2);
    // And a save that works replaces it, keeping its permissions.
    using std::filesystem::perms;
    std::filesystem::permissions(path, perms::owner_read | perms::owner_write | perms::group_read);
    Console again;
    EXPECT_TRUE(trBaseXML::WriteProjectFile(path.c_str(), root, "proj"));
    again.Done();
    EXPECT_EQ(ReadAll(path).rfind("<proj\n", 0), 0u);
    EXPECT_EQ(std::filesystem::status(path).permissions(), perms::owner_read | perms::owner_write | perms::group_read);
    std::string const attempt = "WriteProjectFile: Attempting to write file: \"" + path + "\"\n";
    EXPECT_EQ(again.out, attempt + attempt + "WriteProjectFile: done\n");
}

} // namespace
