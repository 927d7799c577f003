// Project and clip files: the exact text written, round trips through the reader, link
// resolution after a load, animation curves in both forms, custom data, clip files and
// the blob coding.

#include "test_trBaseSupport.h"

#include "nodes/trBlobCoding.h"
#include "nodes/trProjectFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

namespace {

// A node with a custom block: a blob of bytes kept in an element of its own, plus the
// order in which the reader called the custom hooks.
class CustomNode : public trBase {
public:
    CustomNode() { Param(label, "label", trString("custom")); }
    long WriteXMLCustomData(trString indent, trString &out) override
    {
        if (bytes.empty())
            return 1;
        out = indent + "<bytes data=\"" +
              trXML::EncodeBlobForXML(bytes.data(), std::uint64_t(bytes.size()), 9) + "\" />\n" + indent +
              "plain text\n";
        return 1;
    }
    void EnteredXMLCustomData() override { calls.push_back("enter"); }
    void HandleXMLCustomElement(trString const &element, char const **attributes) override
    {
        calls.push_back("element " + Str(element));
        if (element == "bytes" && attributes[0] && std::string(attributes[0]) == "data") {
            trDataBlock block;
            std::uint64_t size = 0;
            if (trXML::DecodeBlobForXML(attributes[1], block, size))
                bytes.assign(block.Data(), block.Data() + size);
        }
    }
    void HandleXMLCustomElementClosed(trString const &element) override { calls.push_back("closed " + Str(element)); }
    void HandleXMLCustomCharacterData(trString const &text) override { characters += Str(text); }
    void ExitedXMLCustomData() override { calls.push_back("exit"); }
    trString label;
    std::vector<unsigned char> bytes;
    std::vector<std::string> calls;
    std::string characters;
};

// Old names of parameters still found in files.
class RetiredNode : public trBase {
public:
    RetiredNode() { Param(inputNode, "input_node", trString()); Param(quality, "voxel_scatter_quality", 1.0); }
    long SetParamFromString(char const *paramName, trString const &text, trBase *who) override
    {
        return trSetParamFromStringRetired(*this, paramName, text, who);
    }
    using trBase::SetParamFromString;
    trNodeLink inputNode;
    double quality = 0;
};

// The root of a test project, as a host's project class would be.
class ProjectRoot : public trBase {
public:
    ProjectRoot() { SetName("root"); Param(currentFrame, "current_frame", 1.0); }
    double currentFrame = 0;
};

// The report is attached when the node is made, before its attributes are read.
class CountingReport : public trParamReport {
public:
    void OnObjectParamChanged(trBase *, long index, trBase *who) override { heard.emplace_back(index, who); }
    std::vector<std::pair<long, trBase *>> heard;
};
CountingReport report;
class ReportedProbe : public Probe {
public:
    ReportedProbe() { AttachParamReport(&report); }
};

class ProjectFile : public ::testing::Test {
protected:
    void SetUp() override
    {
        TestClass("pf_probe");
        TestClass<CustomNode>("pf_custom");
        TestClass<RetiredNode>("pf_retired");
        TestClass<ReportedProbe>("pf_reported");
        Events().clear();
    }
    Probe *AddProbe(trBase &parent, char const *nodeName)
    {
        trBase *n = parent.CreateChild("pf_probe");
        n->SetName(nodeName);
        return AsProbe(n);
    }
    std::string Text(trBase const &root) { return Str(trBaseXML::GetElement(root, true, "", "proj")); }
    bool Read(trBase &root, std::string const &text) { return trBaseXML::ReadBuffer(root, text.c_str(), "proj"); }
};

// The block of the three base parameters every node writes after its name.
std::string BaseBlock(std::string const &indent)
{
    return indent + "gui_use_node_pos = \"0\"\n" + indent + "gui_node_pos = \"0 0 0\"\n" + indent + "gui_group = \"\"\n";
}

TEST_F(ProjectFile, WritesTheElementFormExactly)
{
    Scratch folder;
    ProjectRoot root;
    Probe *p = AddProbe(root, "Stone");
    p->SetParam(p->iI, 42L, trWhoUser);
    p->SetParam(p->iV, trVector(1, 2.5, 3e20), trWhoUser);
    std::string const path = folder.File("a.svd");
    ASSERT_TRUE(trBaseXML::WriteProjectFile(path.c_str(), root, "proj"));
    std::string const expected = "<proj\n\tname = \"root\"\n" + BaseBlock("\t") + "\tcurrent_frame = \"1\"\n\t>\n" +
                                 "\t<pf_probe\n\t\tname = \"Stone\"\n" + BaseBlock("\t\t") +
                                 "\t\tint_value = \"42\"\n"
                                 "\t\treal_value = \"1.5\"\n"
                                 "\t\tfloat_value = \"0.5\"\n"
                                 "\t\tvector_value = \"1 2.5 3e+20\"\n"
                                 "\t\tvector2_value = \"4 5\"\n"
                                 "\t\tcolour_value = \"0.5 0.5 0.5\"\n"
                                 "\t\tstring_value = \"hello\"\n"
                                 "\t\tbool_value = \"1\"\n"
                                 "\t\tinput_link = \"\"\n"
                                 "\t\tgui_extra = \"\"\n"
                                 "\t\t>\n"
                                 "\t</pf_probe>\n"
                                 "</proj>\n";
    EXPECT_EQ(ReadAll(path), expected);
    // The string form of a node without animation is the same text.
    EXPECT_EQ(Text(root), expected);
    // No temporary is left beside the file.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path), {}), 1);
}

TEST_F(ProjectFile, UnregisteredNodesAndNullRootElement)
{
    Scratch folder;
    ProjectRoot root;
    Probe loose; // never through the registry
    loose.SetName("loose");
    std::string const text = Str(trBaseXML::GetElement(loose, false, "", nullptr));
    EXPECT_EQ(text.rfind("<unregistered_class\n\tname = \"loose\"\n", 0), 0u);
    EXPECT_TRUE(trString(text).EndsWith("\t>\n</unregistered_class>\n"));
    std::string const path = folder.File("empty.svd");
    ASSERT_TRUE(trBaseXML::WriteProjectFile(path.c_str(), root, nullptr));
    EXPECT_EQ(ReadAll(path), "");
    EXPECT_EQ(Str(trBaseXML::GetElementOpen("\t", "clip", nullptr)) + Str(trBaseXML::GetElementClose("\t", "clip")),
              "\t<clip>\n\t</clip>\n");
}

TEST_F(ProjectFile, RoundTripKeepsEveryValueAndRewritesByteForByte)
{
    Scratch folder;
    ProjectRoot root;
    Probe *a = AddProbe(root, "A");
    a->SetParam(a->iR, 0.1, trWhoUser);
    a->SetParam(a->iF, 0.3f, trWhoUser);
    a->SetParam(a->iC, trManRgb(0, 0.25f, 0.125f, 2.0f), trWhoUser);
    a->SetParam(a->iB, static_cast<unsigned char>(0), trWhoUser);
    a->SetParam(a->iS, trString("a & b < c > \"d\"\there\nnext\r\nline"), trWhoUser);
    Probe *child = AddProbe(*a, "Child");
    child->SetParam(child->iI, -7L, trWhoUser);
    std::string const first = folder.File("first.svd"), second = folder.File("second.svd");
    ASSERT_TRUE(trBaseXML::WriteProjectFile(first.c_str(), root, "proj"));
    ProjectRoot loaded;
    ASSERT_TRUE(trBaseXML::ReadFile(loaded, first.c_str(), "proj"));
    ASSERT_EQ(loaded.NumChildren(), 1);
    Probe *la = AsProbe(loaded.Child(trString("A")));
    ASSERT_NE(la, nullptr);
    EXPECT_TRUE(la->r == 0.1 && la->f == 0.3f && la->c.r == 0.25f && la->c.b == 2.0f && la->b == 0);
    EXPECT_EQ(Str(la->s), "a & b < c > \"d\"\there\nnext\r\nline");
    ASSERT_EQ(la->NumChildren(), 1);
    EXPECT_EQ(AsProbe(la->Child(0))->i, -7);
    EXPECT_EQ(Str(la->Child(0)->NameAndPath()), "/A/Child");
    ASSERT_TRUE(trBaseXML::WriteProjectFile(second.c_str(), loaded, "proj"));
    EXPECT_EQ(ReadAll(first), ReadAll(second));
}

TEST_F(ProjectFile, ForwardLinkResolvesAfterTheLoad)
{
    report.heard.clear();
    ProjectRoot root;
    ASSERT_TRUE(Read(root, "<proj>\n<pf_reported name=\"Early\" input_link=\"Late\" />\n"
                           "<pf_probe name=\"Late\" />\n</proj>\n"));
    Probe *early = AsProbe(root.Child(trString("Early")));
    Probe *late = AsProbe(root.Child(trString("Late")));
    ASSERT_TRUE(early && late);
    EXPECT_EQ(early->link.LinkedNode(false), late);
    EXPECT_EQ(late->NumOutputs(), 1);
    // The link's parameter was written twice: at its attribute by the system, while the
    // target didn't exist yet, and after the load by the node itself.
    std::vector<trBase *> linkWriters;
    for (auto const &h : report.heard)
        if (h.first == early->iLink)
            linkWriters.push_back(h.second);
    EXPECT_EQ(linkWriters, (std::vector<trBase *>{trWhoSystem, early}));
    // The node's own handler runs twice: at the attribute and when the link resolves.
    std::string const atRead = "Early.Changed(" + std::to_string(early->iLink) + ",system)";
    std::string const atResolve = "Early.Changed(" + std::to_string(early->iLink) + ",Early)";
    EXPECT_EQ(std::count(Events().begin(), Events().end(), atRead), 1);
    EXPECT_EQ(std::count(Events().begin(), Events().end(), atResolve), 1);
    early->DetachParamReport();
}

TEST_F(ProjectFile, UnknownClassWarnsAndItsChildrenGoToItsParent)
{
    HostCapture host;
    ProjectRoot root;
    Console console;
    ASSERT_TRUE(Read(root, "<proj>\n<pf_probe name=\"P\">\n<no_such_class name=\"X\">\n<pf_probe name=\"Q\" />\n"
                           "</no_such_class>\n</pf_probe>\n</proj>"));
    console.Done();
    ASSERT_EQ(host.warnings.size(), 1u);
    EXPECT_TRUE(Has(host.warnings[0], "no_such_class"));
    EXPECT_TRUE(Has(console.out, "ReadXML: Line 3: element <no_such_class> skipped; what it holds goes to \"/P\""))
        << console.all;
    trBase *p = root.Child(trString("P"));
    ASSERT_NE(p, nullptr);
    ASSERT_EQ(p->NumChildren(), 1);
    EXPECT_EQ(Str(p->Child(0)->name), "Q");
}

TEST_F(ProjectFile, NonSavedParametersAndNonNodeSectionsAreLeftOut)
{
    ProjectRoot root;
    Probe *p = AddProbe(root, "P");
    p->SetParam(p->iS, trString("changed"), trWhoUser);
    p->SetParamShouldBeSaved(p->iS, false);
    std::string const text = Text(root);
    EXPECT_EQ(text.find("string_value"), std::string::npos);
    ProjectRoot loaded; // keeps its default
    ASSERT_TRUE(Read(loaded, text));
    EXPECT_EQ(Str(AsProbe(loaded.Child(0))->s), "hello");
    // What a non_node section holds creates nothing.
    ProjectRoot other;
    ASSERT_TRUE(Read(other, "<proj><non_node><pf_probe name=\"A\"><pf_probe name=\"B\" /></pf_probe></non_node>"
                            "<pf_probe name=\"C\" /></proj>"));
    ASSERT_EQ(other.NumChildren(), 1);
    EXPECT_EQ(Str(other.Child(0)->name), "C");
}

TEST_F(ProjectFile, AnimationCurvesAreWrittenInBothForms)
{
    ProjectRoot root;
    Probe *p = AddProbe(root, "P");
    trVector v(2, 0, 0);
    ASSERT_TRUE(p->SetParamKeyWithValue(p->iR, 0, v, 1.0, 0));
    v.x = 0.1;
    ASSERT_TRUE(p->SetParamKeyWithValue(p->iR, 0, v, 24.0, 0));
    p->ParamAnim(p->iR)->FirstKey(0)->SetTCB(0.5, -0.25, 1);
    p->SetParamComponentInterpolationMode(p->iR, 0, 2);
    v = trVector(0, 0, 7);
    ASSERT_TRUE(p->SetParamKeyWithValue(p->iV, 2, v, 3.0, 0));
    Scratch folder;
    std::string const path = folder.File("anim.svd");
    ASSERT_TRUE(trBaseXML::WriteProjectFile(path.c_str(), root, "proj"));
    std::string const file = ReadAll(path);
    std::string const streamForm = "\t\t<animationData param = \"real_value\" componentIndex = \"0\"\t>\n"
                                   "\t\t\t<curve mode = \"linear\"\t>\n"
                                   "\t\t\t\t\t<key t = \"1\" value = \"2\" tension = \"0.5\" continuity = \"-0.25\" bias = \"1\" />\n"
                                   "\t\t\t\t\t<key t = \"24\" value = \"0.1\" tension = \"0\" continuity = \"0\" bias = \"0\" />\n"
                                   "\t\t\t</curve>\n"
                                   "\t\t</animationData>\n"
                                   "\t\t<animationData param = \"vector_value\" componentIndex = \"2\"\t>\n"
                                   "\t\t\t<curve mode = \"tcb\"\t>\n"
                                   "\t\t\t\t\t<key t = \"3\" value = \"7\" tension = \"0\" continuity = \"0\" bias = \"0\" />\n"
                                   "\t\t\t</curve>\n"
                                   "\t\t</animationData>\n"
                                   "\t</pf_probe>\n";
    EXPECT_NE(file.find("\t\t>\n" + streamForm), std::string::npos) << file;
    std::string const compact = Text(root);
    EXPECT_NE(compact.find("<animationData param=\"real_value\" componentIndex=\"0\">\n<curve mode=\"linear\">\n"
                           "<key t=\"1\" value=\"2\" tension=\"0.5\" continuity=\"-0.25\" bias=\"1\" />\n"
                           "<key t=\"24\" value=\"0.1\" tension=\"0\" continuity=\"0\" bias=\"0\" />\n"
                           "</curve>\n</animationData>\n"),
              std::string::npos)
        << compact;
    // Both forms read back to the same curves.
    for (std::string const &text : {file, compact}) {
        ProjectRoot loaded;
        ASSERT_TRUE(Read(loaded, text));
        Probe *q = AsProbe(loaded.Child(0));
        EXPECT_EQ(Curve(*q, q->iR, 0), "2: 1=2(0.5,-0.25,1) 24=0.1(0,0,0)");
        EXPECT_EQ(Curve(*q, q->iV, 2), "1: 3=7(0,0,0)");
        EXPECT_EQ(Str(trBaseXML::GetElement(loaded, true, "", "proj")), compact);
    }
}

TEST_F(ProjectFile, CurvesAsRead)
{
    // No mode is tension-continuity-bias; a key at a fractional frame stands at the
    // rounded frame and keeps its tension, continuity and bias. The older param element
    // keys each frame of each component.
    ProjectRoot root;
    ASSERT_TRUE(Read(root, "<proj><pf_probe name=\"P\">"
                           "<animationData param=\"float_value\" componentIndex=\"0\"><curve>"
                           "<key t=\"10.4\" value=\"3\" tension=\"0.75\" />"
                           "<key t=\"20\" value=\"5\" continuity=\"1\" bias=\"-1\" />"
                           "</curve></animationData>"
                           "<param name=\"vector_value\" vf1=\"1 2 3\" vf30=\"4 5 6\" /></pf_probe></proj>"));
    Probe *p = AsProbe(root.Child(0));
    EXPECT_EQ(Curve(*p, p->iF, 0), "1: 10=3(0.75,0,0) 20=5(0,1,-1)");
    for (int c = 0; c < 3; ++c)
        EXPECT_EQ(Curve(*p, p->iV, c), "1: 1=" + std::to_string(1 + c) + "(0,0,0) 30=" + std::to_string(4 + c) + "(0,0,0)");
}

TEST_F(ProjectFile, CustomDataRoundTripsThroughTheHooks)
{
    ProjectRoot root;
    auto *node = static_cast<CustomNode *>(root.CreateChild("pf_custom"));
    node->SetName("C");
    for (int i = 0; i < 5000; ++i)
        node->bytes.push_back(static_cast<unsigned char>(i * 7 % 251));
    std::string const text = Text(root);
    EXPECT_NE(text.find("\t\t<custom>\n\t\t\t<bytes data=\""), std::string::npos) << text.substr(0, 400);
    EXPECT_NE(text.find("\" />\n\t\t\tplain text\n\t\t</custom>\n\t</pf_custom>\n"), std::string::npos);
    ProjectRoot loaded;
    ASSERT_TRUE(Read(loaded, text));
    auto *read = static_cast<CustomNode *>(loaded.Child(0));
    EXPECT_EQ(read->bytes, node->bytes);
    EXPECT_EQ(read->calls, (std::vector<std::string>{"enter", "element bytes", "closed bytes", "exit"}));
    EXPECT_NE(read->characters.find("plain text"), std::string::npos);
    EXPECT_EQ(Text(loaded), text);
}

TEST_F(ProjectFile, RetiredNamesLoadUnderTheirNewNames)
{
    HostCapture host;
    ProjectRoot root;
    ASSERT_TRUE(Read(root, "<proj><pf_probe name=\"Source\" /><pf_retired name=\"R\" input_heightfield=\"Source\""
                           " voxel_scattering_quality=\"4\" optimise_voxel_scattering=\"0\" /></proj>"));
    auto *r = static_cast<RetiredNode *>(root.Child(trString("R")));
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->inputNode.LinkedNode(false), root.Child(trString("Source")));
    EXPECT_EQ(r->quality, 4.0);
    EXPECT_EQ(trSetParamFromStringRetired(*r, "optimise_voxel_scattering", "1", trWhoSystem), 0); // no second warning
    EXPECT_EQ(host.warnings,
              std::vector<std::string>{"\"Optimise voxel scattering\" is now enabled automatically and cannot "
                                       "be turned off."});
}

TEST_F(ProjectFile, ClipFilesHoldSomeNodesOfATree)
{
    Scratch folder;
    ProjectRoot root;
    Probe *a = AddProbe(root, "A");
    Probe *b = AddProbe(root, "B");
    a->SetParam(a->iLink, trString("B"), trWhoUser);
    AddProbe(root, "NotCopied");
    std::string const path = folder.File("clip.svd");
    std::FILE *clip = trBaseXML::BeginWriteClipFile(path.c_str(), "clip");
    ASSERT_NE(clip, nullptr);
    trBaseXML::WriteElement(clip, *a, true, "\t", nullptr);
    trBaseXML::WriteElement(clip, *b, true, "\t", nullptr);
    ASSERT_TRUE(trBaseXML::EndWriteClipFile(clip));
    std::string const text = ReadAll(path);
    EXPECT_EQ(text.rfind("<clip>\n\t<pf_probe\n\t\tname = \"A\"\n", 0), 0u) << text;
    EXPECT_TRUE(trString(text).EndsWith("\t</pf_probe>\n</clip>\n"));
    // Pasting it into a tree that has both names: the copies are renamed, and their link
    // follows the nearest node of the name.
    ProjectRoot other;
    AddProbe(other, "A");
    ASSERT_TRUE(trBaseXML::ReadFile(other, path.c_str(), "clip"));
    ASSERT_EQ(other.NumChildren(), 3);
    EXPECT_EQ(Str(other.Child(1)->name) + " " + Str(other.Child(2)->name), "A_1 B");
    EXPECT_EQ(AsProbe(other.Child(1))->link.LinkedNode(false), other.Child(2));
    EXPECT_FALSE(trBaseXML::EndWriteClipFile(nullptr));
}

TEST(trXMLLean, ElementAndAttributeForms)
{
    trXMLLean::Attributes const attributes{{"t", "1"}, {"value", "a<b"}};
    EXPECT_EQ(Str(trXMLLean::ElementStart("key", attributes, false, true)), "<key t = \"1\" value = \"a&lt;b\" />\n");
    EXPECT_EQ(Str(trXMLLean::ElementStart("key", attributes, true, false)),
              "<key\n\tt = \"1\"\n\tvalue = \"a&lt;b\"\n\t>");
    EXPECT_EQ(Str(trXMLLean::ElementStart("curve")), "<curve\t>");
    EXPECT_EQ(Str(trXMLLean::ElementEnd("curve")), "</curve>\n");
    EXPECT_EQ(Str(trXMLLean::Attribute("x", 1.0 / 3.0, false)), " x = \"0.333333\"");
    EXPECT_EQ(Str(trXMLLean::Attribute("x", trString("q\""), true)), "\n\tx = \"q&quot;\"");
}

TEST(trXML, BlobCodingFollowsItsLayout)
{
    // Empty in, empty out; empty or null text decodes to nothing.
    unsigned char byte = 1;
    EXPECT_EQ(trXML::EncodeBlobForXML(&byte, 0, 6).length, 0);
    EXPECT_EQ(trXML::EncodeBlobForXML(nullptr, 5, 6).length, 0);
    trDataBlock out;
    std::uint64_t size = 99;
    EXPECT_EQ(trXML::DecodeBlobForXML("", out, size), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(trXML::DecodeBlobForXML(nullptr, out, size), 0);
    // Base64 by hand: "Man" is TWFu, and the padded forms.
    for (auto [in, out64] : {std::pair{"Man", "TWFu"}, {"Ma", "TWE="}, {"M", "TQ=="}})
        EXPECT_EQ(Str(trXML::Base64Encode(reinterpret_cast<unsigned char const *>(in), std::strlen(in))), out64);
    // The first 8 bytes are the length, little-endian: 300 = 0x12C, as 2C 01 00... gives
    // "LAEAAAAAAA" and four more bits.
    std::vector<unsigned char> data(300, 'x');
    trString const text = trXML::EncodeBlobForXML(data.data(), data.size(), 9);
    EXPECT_EQ(Str(text).substr(0, 10), "LAEAAAAAAA");
    ASSERT_EQ(trXML::DecodeBlobForXML(text.chars, out, size), 1);
    EXPECT_EQ(size, 300u);
    EXPECT_EQ(std::vector<unsigned char>(out.Data(), out.Data() + size), data);
    // A wrong stated length, or damaged text, gives nothing.
    std::string wrong = Str(text);
    wrong[0] = 'M'; // states 304 bytes
    EXPECT_EQ(trXML::DecodeBlobForXML(wrong.c_str(), out, size), 0);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(out.Data(), nullptr);
    std::string damaged = Str(text);
    damaged[damaged.size() / 2] = '*';
    EXPECT_EQ(trXML::DecodeBlobForXML(damaged.c_str(), out, size), 0);
    EXPECT_EQ(trXML::DecodeBlobForXML("TWFu", out, size), 0); // too short for a length
}

} // namespace
