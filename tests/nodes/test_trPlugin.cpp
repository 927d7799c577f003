// Plug-ins: the support classes, the token's prefixes, and real modules loaded from
// the build: the reference plug-in and a folder of modules that fail in their own ways.

#include "foundation/trMessages.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"
#include "nodes/trPlugin.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string> *hostWarnings = nullptr;
std::vector<std::string> *hostErrors = nullptr;

// Collects what reaches the host's callbacks, and both console streams.
class CaptureAll {
public:
    CaptureAll() : oldError(trCallBackError), oldWarning(trCallBackWarning), oldDoDlgBoxes(trDoDlgBoxes)
    {
        hostWarnings = &warnings;
        hostErrors = &errors;
        trCallBackWarning = [](char const *text, trErrorWarningData *) { hostWarnings->push_back(text); };
        trCallBackError = [](char const *text, trErrorWarningData *) { hostErrors->push_back(text); };
        trDoDlgBoxes = 1;
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
    }
    void Finish()
    {
        if (finished)
            return;
        finished = true;
        out = testing::internal::GetCapturedStdout();
        err = testing::internal::GetCapturedStderr();
        trCallBackError = oldError;
        trCallBackWarning = oldWarning;
        trDoDlgBoxes = oldDoDlgBoxes;
        hostWarnings = nullptr;
        hostErrors = nullptr;
    }
    ~CaptureAll() { Finish(); }

    std::vector<std::string> warnings;
    std::vector<std::string> errors;
    std::string out;
    std::string err;

private:
    trMessageCallBack oldError;
    trMessageCallBack oldWarning;
    int oldDoDlgBoxes;
    bool finished = false;
};

bool Has(std::string const &text, std::string const &part) { return text.find(part) != std::string::npos; }

class TokenNode : public trBase {
};
trBase *CreateTokenNode() { return new TokenNode; }
void DestroyTokenNode(trBase *node) { delete node; }

} // namespace

TEST(trPluginToken, PrefixesComeFromTheAuthor)
{
    struct Case {
        char const *author;
        char const *namePrefix;
        char const *displayPrefix;
    } const cases[] = {
        {"Acme Ltd", "Acme_Ltd::", "(Acme_Ltd) "},
        {"", "User::", "(User) "},
        {nullptr, "User::", "(User) "},
        {"Marrowvane", "", ""},
        {"marrowvane", "marrowvane::", "(marrowvane) "}, // only the exact author keeps plain names
        {"A&B<C>D\rE\nF\tG\"H", "A_B_C_D_E_F_G_H::", "(A_B_C_D_E_F_G_H) "},
    };
    for (Case const &c : cases) {
        trPluginToken token(nullptr, trPluginSdkVersion(), c.author);
        EXPECT_STREQ(trPluginToken::CurrentNamePrefix().chars, c.namePrefix);
        EXPECT_STREQ(trPluginToken::CurrentDisplayPrefix().chars, c.displayPrefix);
    }
    EXPECT_STREQ(trPluginToken::CurrentNamePrefix().chars, "");
}

TEST(trPluginToken, AddClassRegistersPrefixedNames)
{
    long const before = trClasses.NumClasses();
    {
        trPluginToken token(nullptr, trPluginSdkVersion(), "Acme Ltd");
        EXPECT_EQ(token.AddClass("shader", "fancy_shader", CreateTokenNode, DestroyTokenNode, ""), before + 1);
        EXPECT_EQ(trPluginToken::AddClass("shader", "plain_shader", CreateTokenNode, DestroyTokenNode,
                                          "Plain shader"),
                  before + 2);
    }
    EXPECT_STREQ(trClasses.ClassName(before).chars, "Acme_Ltd::fancy_shader");
    EXPECT_STREQ(trClasses.ClassDisplayName(before).chars, "(Acme_Ltd) Fancy shader");
    EXPECT_STREQ(trClasses.ClassDisplayName(before + 1).chars, "(Acme_Ltd) Plain shader");
    EXPECT_STREQ(trClasses.ClassType(before).chars, "shader/");

    trBase *node = trCreateObject("Acme_Ltd::fancy_shader", nullptr, 1);
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->Name().chars, "Acme Ltd::fancy shader 01");
    EXPECT_EQ(trDestroyObject(node), 1);

    {
        trPluginToken token(nullptr, trPluginSdkVersion(), "Marrowvane");
        EXPECT_EQ(token.AddClass("test", "plugintest_plain", CreateTokenNode, DestroyTokenNode, ""), before + 3);
    }
    EXPECT_STREQ(trClasses.ClassName(before + 2).chars, "plugintest_plain");
    EXPECT_STREQ(trClasses.ClassDisplayName(before + 2).chars, "Plugintest plain");

    // With no token alive nothing registers.
    EXPECT_EQ(trPluginToken::AddClass("test", "plugintest_orphan", CreateTokenNode, DestroyTokenNode, ""), 0);
    EXPECT_EQ(trClasses.NumClasses(), before + 3);
}

TEST(trPluginToken, ANewTokenReplacesTheCurrentOne)
{
    auto *older = new trPluginToken(nullptr, trPluginSdkVersion(), "Older");
    {
        trPluginToken newer(nullptr, trPluginSdkVersion(), "Newer");
        EXPECT_STREQ(trPluginToken::CurrentNamePrefix().chars, "Newer::");
        // The replaced token's end leaves the current one alone.
        delete older;
        EXPECT_STREQ(trPluginToken::CurrentNamePrefix().chars, "Newer::");
    }
    EXPECT_STREQ(trPluginToken::CurrentNamePrefix().chars, "");
}

#if defined(OSTREL_REFERENCE_PLUGIN_DIR) && defined(OSTREL_BAD_PLUGIN_DIR)

namespace {

// Loads the reference folder once for the whole program.
void LoadReferencePlugins()
{
    static long loaded = -1;
    if (loaded < 0) {
        CaptureAll capture;
        loaded = trClasses.LoadPlugins(OSTREL_REFERENCE_PLUGIN_DIR, "*.svp");
    }
    ASSERT_EQ(loaded, 2) << "the reference module and the image writer module";
}

} // namespace

TEST(trClassPoolPlugins, LoadPluginsReportsTheReferenceFolder)
{
    CaptureAll capture;
    long const before = trClasses.NumClasses();
    long const loaded = trClasses.LoadPlugins(OSTREL_REFERENCE_PLUGIN_DIR, "*.svp");
    capture.Finish();
    // The reference folder holds the reference module and the image writer module.
    EXPECT_EQ(loaded, 2);
    EXPECT_EQ(capture.out, std::string("Loading plugins in: ") + OSTREL_REFERENCE_PLUGIN_DIR +
                               "\nLoaded 2 modules in this directory\n");
    EXPECT_EQ(capture.err, "");
    EXPECT_TRUE(capture.warnings.empty());
    ASSERT_EQ(trClasses.NumClasses(), before + 5);
    // Modules load in name order: the image writers, then the reference module's three
    // classes in its order of registration.
    EXPECT_STREQ(trClasses.ClassName(before).chars, "image_writer_exr");
    EXPECT_STREQ(trClasses.ClassName(before + 1).chars, "image_writer_tiff");
    long const first = before + 2;
    EXPECT_STREQ(trClasses.ClassName(first).chars, "Ostrel_Reference::reference_surface");
    EXPECT_STREQ(trClasses.ClassType(first).chars, "shader/surface/");
    EXPECT_STREQ(trClasses.ClassDisplayName(first).chars, "(Ostrel_Reference) Reference surface shader");
    EXPECT_STREQ(trClasses.ClassDisplayNameSimplified(first).chars, "(Ostrel_Reference) Reference surface");
    EXPECT_STREQ(trClasses.ClassName(first + 1).chars, "Ostrel_Reference::reference_terrain");
    EXPECT_STREQ(trClasses.ClassDisplayName(first + 1).chars, "(Ostrel_Reference) Reference terrain");
    EXPECT_STREQ(trClasses.ClassType(first + 2).chars, "group/");
}

TEST(trClassPoolPlugins, FailingModulesAreReportedAndTheScanGoesOn)
{
    std::string const dir = OSTREL_BAD_PLUGIN_DIR;
    CaptureAll capture;
    long const before = trClasses.NumClasses();
    long const loaded = trClasses.LoadPlugins(dir.c_str(), "*.svp");
    capture.Finish();
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(trClasses.NumClasses(), before);

    // The text file: the system's reason, then a warning; every module was tried.
    EXPECT_TRUE(Has(capture.out, "Loading plugins in: " + dir + "\n"));
    EXPECT_TRUE(Has(capture.out, "Warning: trLoadPlugin: Cannot load library: " + dir + "not_a_module.svp\n"));
    EXPECT_TRUE(Has(capture.out, "Warning: trLoadPlugin: Cannot load library: " + dir + "quernstone.svp\n"));
    EXPECT_TRUE(Has(capture.out, "Loaded 0 modules in this directory\n"));
    // The module without an entry is an error, and not a module "that would not load".
    std::string const noEntry = "trLoadPlugin: " + dir + "no_entry.svp\nCannot locate function: trPluginStartup";
    EXPECT_EQ(capture.err, "ERROR: " + noEntry + "\n");
    ASSERT_EQ(capture.errors.size(), 1u);
    EXPECT_EQ(capture.errors[0], noEntry);

    // One warning at the end, for all modules, in name order. The entry returning 0
    // is in neither list.
    ASSERT_EQ(capture.warnings.size(), 1u);
    std::string const expected = "The following plugins could not be loaded in this version:\n\n" + dir +
                                 "not_a_module.svp\n" + dir + "quernstone.svp\n" +
                                 "\nContact the plugin developers for compatible updates.\n"
                                 "\nFor quernstone.svp, please contact its developer.\n";
    EXPECT_EQ(capture.warnings[0], expected);
    EXPECT_FALSE(Has(capture.warnings[0], "entry_zero"));
    EXPECT_TRUE(trClasses.FailedPlugins().empty());
}

TEST(trClassPoolPlugins, EachModuleAlone)
{
    std::string const dir = OSTREL_BAD_PLUGIN_DIR;
    {
        // An entry that declines: result 0, not listed as failed, no message.
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugin((dir + "entry_zero.svp").c_str(), dir.c_str()), 0);
        capture.Finish();
        EXPECT_TRUE(trClasses.FailedPlugins().empty());
        EXPECT_TRUE(capture.errors.empty());
        EXPECT_TRUE(capture.warnings.empty());
    }
    {
        // A file that is no module: listed until the next LoadPlugins reports it.
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugin((dir + "not_a_module.svp").c_str(), dir.c_str()), 0);
        capture.Finish();
        ASSERT_EQ(trClasses.FailedPlugins().size(), 1u);
        EXPECT_STREQ(trClasses.FailedPlugins()[0].chars, (dir + "not_a_module.svp").c_str());
        EXPECT_TRUE(Has(capture.out, "not_a_module.svp")); // the system's reason names the file
        EXPECT_TRUE(capture.errors.empty());
    }
    {
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugins(dir.c_str(), "*.none"), 0);
        capture.Finish();
        // A failure left from before is reported by the next scan, even one that finds nothing.
        std::string const head = "Loading plugins in: " + dir + "\nNo files matching *.none in this directory\n" +
                                 "Loaded 0 modules in this directory\nWarning: The following plugins could "
                                 "not be loaded in this version:\n";
        EXPECT_EQ(capture.out.substr(0, head.size()), head);
        ASSERT_EQ(capture.warnings.size(), 1u);
        EXPECT_TRUE(Has(capture.warnings[0], dir + "not_a_module.svp\n"));
        EXPECT_FALSE(Has(capture.warnings[0], "its developer"));
        EXPECT_TRUE(trClasses.FailedPlugins().empty());
    }
    {
        // Source plug-ins cannot be compiled here.
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPluginAutoCompile((dir + "x.cpp").c_str(), "*.cpp", dir.c_str()), 0);
        capture.Finish();
        EXPECT_EQ(capture.err, "ERROR: Unable to auto-compile on this platform.\n");
        EXPECT_TRUE(capture.errors.empty()); // console only
    }
    {
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugins("/no/such/folder/", "*.svp"), 0);
        capture.Finish();
        EXPECT_TRUE(Has(capture.out, "No files matching *.svp in this directory\n"));
    }
}

TEST(trClassPoolPlugins, ReferenceClassesCarryEveryParameterType)
{
    LoadReferencePlugins();
    trBase *root = trCreateObject("Ostrel_Reference::reference_group", nullptr, 1);
    ASSERT_NE(root, nullptr);
    trBase *surface = root->CreateChild("Ostrel_Reference::reference_surface");
    trBase *input = root->CreateChild("Ostrel_Reference::reference_surface");
    trBase *terrain = root->CreateChild("Ostrel_Reference::reference_terrain");
    ASSERT_NE(surface, nullptr);
    ASSERT_NE(input, nullptr);
    ASSERT_NE(terrain, nullptr);
    EXPECT_STREQ(surface->Name().chars, "Ostrel Reference::reference surface 01");
    EXPECT_TRUE(surface->IsTrue("is_shader"));
    EXPECT_TRUE(terrain->IsTrue("is_heightfield"));

    // Defaults, as declared by the module.
    long pattern = 0;
    EXPECT_EQ(surface->GetParam("pattern", pattern), 1);
    EXPECT_EQ(pattern, 5);
    double amplitude = 0;
    EXPECT_EQ(terrain->GetParam("amplitude", amplitude), 1);
    EXPECT_EQ(amplitude, 100.0);

    // Every type, written and read back by name across the module boundary.
    int marker = 0;
    EXPECT_EQ(surface->SetParam("pattern", 9L, trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("roughness", 0.625, trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("gain", 2.5f, trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("offset", trVector(1.0, -2.0, 3.5), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("scale", tr2Vector(0.5, 4.0), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("colour", trManRgb(trManRgb::kLinear709, 0.1f, 0.2f, 0.3f), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("label", trString("granite"), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("user_data", trPtr(&marker), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("enabled", static_cast<unsigned char>(0), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("texture_file", trString("/textures/granite.tif"), trWhoUser), 1);
    EXPECT_EQ(surface->SetParam("input_node", input->Name(), trWhoUser), 1);

    long l = 0;
    double d = 0;
    float f = 0;
    trVector v;
    tr2Vector v2;
    trManRgb c;
    trString s;
    trPtr p;
    unsigned char b = 1;
    trFile file;
    trNodeLink link;
    EXPECT_TRUE(surface->GetParam("pattern", l) && surface->GetParam("roughness", d) && surface->GetParam("gain", f) &&
                surface->GetParam("offset", v) && surface->GetParam("scale", v2) && surface->GetParam("colour", c) &&
                surface->GetParam("label", s) && surface->GetParam("user_data", p) &&
                surface->GetParam("enabled", b) && surface->GetParam("texture_file", file) &&
                surface->GetParam("input_node", link));
    EXPECT_TRUE(l == 9 && d == 0.625 && f == 2.5f && b == 0 && p.Raw() == &marker);
    EXPECT_EQ(v, trVector(1.0, -2.0, 3.5));
    EXPECT_TRUE(v2.x == 0.5 && v2.y == 4.0);
    EXPECT_TRUE(c.r == 0.1f && c.g == 0.2f && c.b == 0.3f);
    EXPECT_STREQ(s.chars, "granite");
    EXPECT_STREQ(file.FileStringR().chars, "/textures/granite.tif");
    EXPECT_STREQ(link.FileStringR().chars, input->Name().chars);
    // The link is live: it resolves, and the target knows its dependant.
    EXPECT_EQ(surface->LinkedNode("input_node"), input);
    EXPECT_TRUE(input->IsLinkedTo(surface));

    // The wrong type is refused by name, as for any node.
    CaptureAll capture;
    EXPECT_EQ(surface->SetParam("roughness", trVector(), trWhoUser), 0);
    capture.Finish();
    ASSERT_EQ(capture.warnings.size(), 1u);
    EXPECT_TRUE(Has(capture.warnings[0], "Ostrel_Reference::reference_surface"));

    // Hints and widgets made by the module reach the host through the table.
    long index = 0;
    ASSERT_TRUE(surface->FindParam(index, "pattern"));
    auto *menu = static_cast<trIntHint *>(surface->ParamHint(index));
    ASSERT_NE(menu, nullptr);
    EXPECT_STREQ(menu->MenuItemTextFromIndex(1).chars, "Ridged");
    ASSERT_TRUE(surface->FindParam(index, "random_seed"));
    void *widget = nullptr;
    EXPECT_EQ(surface->GetWidget(index, &widget, trWhoUser), 1);
    auto *button = static_cast<trGuiPushButton *>(widget);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->Owner(), surface);
    // Transient strings and parameter groups as the module declared them.
    ASSERT_TRUE(surface->FindParam(index, "notes"));
    EXPECT_FALSE(surface->GetParamShouldBeSaved(index));
    ASSERT_TRUE(surface->FindParam(index, "offset"));
    EXPECT_TRUE(surface->IsParamInParamGroup(index, 2));

    // Destroying the target empties the link that pointed at it.
    EXPECT_EQ(root->DestroyChild(trString(input->Name())), 1);
    EXPECT_EQ(surface->LinkedNode("input_node"), nullptr);
    EXPECT_EQ(trDestroyObject(root), 1);
}

#endif
