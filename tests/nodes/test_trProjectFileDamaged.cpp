// Project files that go wrong: damaged, truncated, binary, deeply nested or huge input,
// elements where they don't belong, bad values; and saves that can't complete, which
// must leave the previous file as it was.

#include "test_trBaseSupport.h"

#include "nodes/trAnimate.h"
#include "nodes/trProjectFile.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

std::string ReadAll(std::string const &path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

void WriteAll(std::string const &path, std::string const &text)
{
    std::ofstream out(path, std::ios::binary);
    out << text;
}

class Scratch {
public:
    Scratch()
    {
        path = std::filesystem::temp_directory_path() /
               ("ostrel-damaged-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::create_directories(path);
    }
    ~Scratch()
    {
        std::error_code e;
        std::filesystem::remove_all(path, e);
    }
    std::string File(char const *name) const { return (path / name).string(); }
    std::filesystem::path path;
    static inline int counter = 0;
};

class Root : public trBase {
public:
    Root() { SetName("root"); }
};

class DamagedProject : public ::testing::Test {
protected:
    void SetUp() override
    {
        ProbeClass("pd_probe");
        Events().clear();
    }
    // Runs a read of `text`, keeping what reached the console.
    bool Read(trBase &root, std::string const &text)
    {
        ::testing::internal::CaptureStdout();
        ::testing::internal::CaptureStderr();
        bool const ok = trBaseXML::ReadBuffer(root, text.c_str(), "proj");
        out = ::testing::internal::GetCapturedStdout();
        err = ::testing::internal::GetCapturedStderr();
        console = out + err;
        return ok;
    }
    std::string out, err, console;
};

TEST_F(DamagedProject, TruncatedFileKeepsWhatWasReadAndTriggersNoLinks)
{
    HostCapture host;
    Root root;
    EXPECT_FALSE(Read(root, "<proj>\n<pd_probe name=\"A\" input_link=\"B\" />\n<pd_probe name=\"B\" int_value=\"5\">\n"));
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0], "Parse error in byte stream at line: 4:\nno element found\n");
    ASSERT_EQ(root.NumChildren(), 2);
    EXPECT_EQ(AsProbe(root.Child(1))->i, 5);
    // The link named a node that came later: without the final pass it is unresolved.
    EXPECT_EQ(AsProbe(root.Child(0))->link.LinkedNode(false), nullptr);
    EXPECT_EQ(out.find("ReadXML: done"), std::string::npos);
}

TEST_F(DamagedProject, FileParseErrorsNameTheFileAndLine)
{
    HostCapture host;
    Scratch scratch;
    std::string const path = scratch.File("bad.svd");
    WriteAll(path, "<proj>\n<pd_probe name=\"A\">\n</proj>\n");
    Root root;
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(trBaseXML::ReadFile(root, path.c_str(), "proj"));
    ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0], path + ":\nParse error at line 3:\nmismatched tag\n");
    EXPECT_EQ(root.NumChildren(), 1);
}

TEST_F(DamagedProject, BinaryAndEmptyInputFailCleanly)
{
    HostCapture host;
    Root root;
    std::string binary;
    for (int i = 0; i < 4096; ++i)
        binary += char(1 + (i * 37) % 255);
    EXPECT_FALSE(Read(root, binary));
    EXPECT_FALSE(Read(root, ""));
    EXPECT_FALSE(Read(root, "<proj><pd_probe name=\"A\" name=\"B\" /></proj>")); // duplicate attribute
    ASSERT_EQ(host.errors.size(), 3u);
    EXPECT_EQ(host.errors[1], "Parse error in byte stream at line: 1:\nno element found\n");
    EXPECT_EQ(root.NumChildren(), 0);
}

TEST_F(DamagedProject, MissingFilesAndBadArguments)
{
    HostCapture host;
    Root root;
    Scratch scratch;
    std::string const missing = scratch.File("missing.svd");
    ::testing::internal::CaptureStdout();
    EXPECT_FALSE(trBaseXML::ReadFile(root, missing.c_str(), "proj"));
    EXPECT_FALSE(trBaseXML::ReadFile(root, nullptr, "proj"));
    EXPECT_FALSE(trBaseXML::ReadBuffer(root, nullptr, "proj"));
    // A folder opens but can't be read.
    EXPECT_FALSE(trBaseXML::ReadFile(root, scratch.path.c_str(), "proj"));
    ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(host.errors.size(), 4u);
    EXPECT_EQ(host.errors[0], "ReadXML: Cannot open file: \"" + missing + "\"");
    EXPECT_EQ(host.errors[1], "ReadXML: Passed neither file nor byte stream");
    EXPECT_EQ(host.errors[2], "ReadXML: Passed neither file nor byte stream");
    EXPECT_EQ(host.errors[3], "Read error\n");
}

TEST_F(DamagedProject, BadValuesAndUnknownParametersOnlyWarn)
{
    HostCapture host;
    Root root;
    EXPECT_TRUE(Read(root, "<proj>\n<pd_probe name=\"A\" int_value=\"many\" no_such=\"1\" real_value=\"2.5\" "
                           "vector_value=\"1 2\" ptr_value=\"0x10\" />\n</proj>"));
    Probe *a = AsProbe(root.Child(0));
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->i, 3); // the default stays
    EXPECT_EQ(a->r, 2.5);
    EXPECT_EQ(a->v.x, 1.0);
    EXPECT_NE(err.find("many: Expected 1x integer for parameter int_value"), std::string::npos) << console;
    EXPECT_NE(err.find("1 2: Expected 3x real for parameter vector_value"), std::string::npos) << console;
    EXPECT_NE(console.find("ReadXML: Line 2: parameter \"int_value\" of \"/A\" was not set"), std::string::npos) << console;
    ASSERT_EQ(host.warnings.size(), 1u);
    EXPECT_EQ(host.warnings[0], "SetParamFromString: Unknown parameter: \"no_such\" in class: pd_probe");
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0], "SetParamFromString: Unsupported parameter type: pointer!");
}

TEST_F(DamagedProject, AnimationElementsOutOfPlaceAreIgnored)
{
    Root root;
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
    trAnimate *anim = a->ParamAnim(a->iR);
    ASSERT_NE(anim, nullptr);
    EXPECT_EQ(anim->NumKeys(0), 1);
    EXPECT_EQ(anim->FirstKey(0)->Frame(), 7.0);
    EXPECT_EQ(anim->GetComponentInterpolationMode(0), 2);
    EXPECT_NE(console.find("ReadXML: Line 4: animation of unknown parameter \"nope\" in \"/A\" ignored"), std::string::npos)
        << err;
    EXPECT_NE(console.find("ReadXML: Line 7: key with a frame or value out of range ignored"), std::string::npos);
    EXPECT_NE(console.find("ReadXML: Line 8: key with a frame out of range ignored"), std::string::npos);
}

TEST_F(DamagedProject, DeepNestingIsCutOffWithAMessage)
{
    Root root;
    std::string text = "<proj>";
    for (int i = 0; i < 400; ++i)
        text += "<pd_probe name=\"n\">";
    for (int i = 0; i < 400; ++i)
        text += "</pd_probe>";
    text += "<pd_probe name=\"after\" /></proj>";
    EXPECT_TRUE(Read(root, text));
    EXPECT_NE(console.find("elements nested deeper than 255 levels are ignored"), std::string::npos) << console;
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
    Scratch scratch;
    std::string const path = scratch.File("large.svd");
    std::string big(3 * 1000 * 1000, 'x');
    std::string text = "<proj>\n<pd_probe name=\"Big\" string_value=\"" + big + "\" />\n";
    for (int i = 0; i < 2000; ++i)
        text += "<pd_probe name=\"N" + std::to_string(i) + "\" int_value=\"" + std::to_string(i) + "\" />\n";
    text += "</proj>\n";
    WriteAll(path, text);
    Root root;
    ::testing::internal::CaptureStdout();
    bool const ok = trBaseXML::ReadFile(root, path.c_str(), "proj");
    ::testing::internal::GetCapturedStdout();
    ASSERT_TRUE(ok);
    ASSERT_EQ(root.NumChildren(), 2001);
    EXPECT_EQ(AsProbe(root.Child(0))->s.length, long(big.size()));
    EXPECT_EQ(AsProbe(root.Child(2000))->i, 1999);
}

TEST_F(DamagedProject, FailedSavesLeaveThePreviousFile)
{
    HostCapture host;
    Scratch scratch;
    Root root;
    Probe *p = static_cast<Probe *>(root.CreateChild("pd_probe"));
    p->logging = false;
    std::string const path = scratch.File("keep.svd");
    WriteAll(path, "previous contents");

    // A folder in the way of the target.
    std::string const folder = scratch.File("folder.svd");
    std::filesystem::create_directory(folder);
    ::testing::internal::CaptureStdout();
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
    ::testing::internal::GetCapturedStdout();

    EXPECT_FALSE(savedWhenFull);
    EXPECT_EQ(ReadAll(path), "previous contents");
    ASSERT_EQ(host.errors.size(), 4u);
    EXPECT_EQ(host.errors[0], "WriteProjectFile: Cannot open file: \"" + folder + "\" (Is a directory)");
    EXPECT_EQ(host.errors[1], "WriteProjectFile: Cannot open file: \"" + nowhere + "\" (No such file or directory)");
    EXPECT_EQ(host.errors[2], "WriteClipFile: Cannot open file: \"" + nowhere + "\" (No such file or directory)");
    EXPECT_EQ(host.errors[3].rfind("WriteProjectFile: Cannot write file: \"" + path + "\" (", 0), 0u) << host.errors[3];
    EXPECT_NE(host.errors[3].find("the previous file is unchanged"), std::string::npos);
    // Nothing but the old file and the folder is left behind.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(scratch.path), {}), 2);

    // And a save that works replaces it, keeping its permissions.
    std::filesystem::permissions(path, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                                           std::filesystem::perms::group_read);
    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(trBaseXML::WriteProjectFile(path.c_str(), root, "proj"));
    std::string const messages = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(ReadAll(path).rfind("<proj\n", 0), 0u);
    EXPECT_EQ(std::filesystem::status(path).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write |
                  std::filesystem::perms::group_read);
    std::string const attempt = "WriteProjectFile: Attempting to write file: \"" + path + "\"\n";
    EXPECT_EQ(messages, attempt + attempt + "WriteProjectFile: done\n");
}

} // namespace
