// Plug-ins: the support classes, the token's prefixes, and real modules loaded from
// the build: the reference plug-in and a folder of modules that fail in their own ways.

#include "test_trBaseSupport.h"

#include "nodes/trGuiPushButton.h"
#include "nodes/trParamHint.h"
#include "nodes/trPlugin.h"

namespace {

// The host's callbacks and both console streams; Done() ends the console capture.
struct CaptureAll : HostCapture, Console {
};

trBase *CreateTokenNode() { return new trBase; }
void DestroyTokenNode(trBase *node) { delete node; }

} // namespace

TEST(trPluginToken, PrefixesComeFromTheAuthor)
{
    struct {
        char const *author, *namePrefix, *displayPrefix;
    } const cases[] = {
        {"Acme Ltd", "Acme_Ltd::", "(Acme_Ltd) "},
        {"", "User::", "(User) "},
        {nullptr, "User::", "(User) "},
        {"Marrowvane", "", ""},
        {"marrowvane", "marrowvane::", "(marrowvane) "}, // only the exact author keeps plain names
        {"A&B<C>D\rE\nF\tG\"H", "A_B_C_D_E_F_G_H::", "(A_B_C_D_E_F_G_H) "},
    };
    for (auto const &c : cases) {
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
        EXPECT_EQ(trPluginToken::AddClass("shader", "plain_shader", CreateTokenNode, DestroyTokenNode, "Plain shader"),
                  before + 2);
    }
    EXPECT_EQ(ClassTexts(before), "Acme_Ltd::fancy_shader|shader/|(Acme_Ltd) Fancy shader|(Acme_Ltd) Fancy");
    EXPECT_EQ(Str(trClasses.ClassDisplayName(before + 1)), "(Acme_Ltd) Plain shader");
    trBase *node = trCreateObject("Acme_Ltd::fancy_shader", nullptr, 1);
    ASSERT_NE(node, nullptr);
    EXPECT_STREQ(node->Name().chars, "Acme Ltd::fancy shader 01");
    EXPECT_EQ(trDestroyObject(node), 1);
    {
        trPluginToken token(nullptr, trPluginSdkVersion(), "Marrowvane");
        EXPECT_EQ(token.AddClass("test", "plugintest_plain", CreateTokenNode, DestroyTokenNode, ""), before + 3);
    }
    EXPECT_EQ(ClassTexts(before + 2), "plugintest_plain|test/|Plugintest plain|Plugintest plain");
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
    capture.Done();
    // The reference folder holds the reference module and the image writer module.
    EXPECT_EQ(loaded, 2);
    EXPECT_EQ(capture.out, std::string("Loading plugins in: ") + OSTREL_REFERENCE_PLUGIN_DIR +
                               "\nLoaded 2 modules in this directory\n");
    EXPECT_EQ(capture.err, "");
    EXPECT_TRUE(capture.warnings.empty());
    ASSERT_EQ(trClasses.NumClasses(), before + 5);
    // Modules load in name order: the image writers, then the reference module's three
    // classes in its order of registration.
    EXPECT_EQ(Str(trClasses.ClassName(before)) + " " + Str(trClasses.ClassName(before + 1)),
              "image_writer_exr image_writer_tiff");
    long const first = before + 2;
    EXPECT_EQ(ClassTexts(first), "Ostrel_Reference::reference_surface|shader/surface/|"
                                 "(Ostrel_Reference) Reference surface shader|(Ostrel_Reference) Reference surface");
    EXPECT_EQ(ClassTexts(first + 1), "Ostrel_Reference::reference_terrain|heightfield/|"
                                     "(Ostrel_Reference) Reference terrain|(Ostrel_Reference) Reference terrain");
    EXPECT_STREQ(trClasses.ClassType(first + 2).chars, "group/");
}

TEST(trClassPoolPlugins, FailingModulesAreReportedAndTheScanGoesOn)
{
    std::string const dir = OSTREL_BAD_PLUGIN_DIR;
    CaptureAll capture;
    long const before = trClasses.NumClasses();
    long const loaded = trClasses.LoadPlugins(dir.c_str(), "*.svp");
    capture.Done();
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
        capture.Done();
        EXPECT_TRUE(trClasses.FailedPlugins().empty() && capture.errors.empty() && capture.warnings.empty());
    }
    {
        // A file that is no module: listed until the next LoadPlugins reports it.
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugin((dir + "not_a_module.svp").c_str(), dir.c_str()), 0);
        capture.Done();
        ASSERT_EQ(trClasses.FailedPlugins().size(), 1u);
        EXPECT_STREQ(trClasses.FailedPlugins()[0].chars, (dir + "not_a_module.svp").c_str());
        EXPECT_TRUE(Has(capture.out, "not_a_module.svp")); // the system's reason names the file
        EXPECT_TRUE(capture.errors.empty());
    }
    {
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugins(dir.c_str(), "*.none"), 0);
        capture.Done();
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
        capture.Done();
        EXPECT_EQ(capture.err, "ERROR: Unable to auto-compile on this platform.\n");
        EXPECT_TRUE(capture.errors.empty()); // console only
    }
    {
        CaptureAll capture;
        EXPECT_EQ(trClasses.LoadPlugins("/no/such/folder/", "*.svp"), 0);
        capture.Done();
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
    ASSERT_TRUE(surface && input && terrain);
    EXPECT_STREQ(surface->Name().chars, "Ostrel Reference::reference surface 01");
    EXPECT_TRUE(surface->IsTrue("is_shader"));
    EXPECT_TRUE(terrain->IsTrue("is_heightfield"));
    // Defaults, as declared by the module.
    long pattern = 0;
    double amplitude = 0;
    EXPECT_TRUE(surface->GetParam("pattern", pattern) && pattern == 5);
    EXPECT_TRUE(terrain->GetParam("amplitude", amplitude) && amplitude == 100.0);
    // Every type, written and read back by name across the module boundary.
    int marker = 0;
    trBase *const u = trWhoUser;
    EXPECT_EQ((std::vector<long>{surface->SetParam("pattern", 9L, u), surface->SetParam("roughness", 0.625, u),
                                 surface->SetParam("gain", 2.5f, u), surface->SetParam("offset", trVector(1, -2, 3.5), u),
                                 surface->SetParam("scale", tr2Vector(0.5, 4.0), u),
                                 surface->SetParam("colour", trManRgb(trManRgb::kLinear709, 0.1f, 0.2f, 0.3f), u),
                                 surface->SetParam("label", trString("granite"), u),
                                 surface->SetParam("user_data", trPtr(&marker), u),
                                 surface->SetParam("enabled", static_cast<unsigned char>(0), u),
                                 surface->SetParam("texture_file", trString("/textures/granite.tif"), u),
                                 surface->SetParam("input_node", input->Name(), u)}),
              std::vector<long>(11, 1));
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
    EXPECT_TRUE(v == trVector(1.0, -2.0, 3.5) && v2.x == 0.5 && v2.y == 4.0);
    EXPECT_TRUE(c.r == 0.1f && c.g == 0.2f && c.b == 0.3f);
    EXPECT_EQ(Str(s) + " " + Str(file.FileStringR()) + " " + Str(link.FileStringR()),
              "granite /textures/granite.tif " + Str(input->Name()));
    // The link is live: it resolves, and the target knows its dependant.
    EXPECT_EQ(surface->LinkedNode("input_node"), input);
    EXPECT_TRUE(input->IsLinkedTo(surface));
    // The wrong type is refused by name, as for any node.
    CaptureAll capture;
    EXPECT_EQ(surface->SetParam("roughness", trVector(), trWhoUser), 0);
    capture.Done();
    ASSERT_EQ(capture.warnings.size(), 1u);
    EXPECT_TRUE(Has(capture.warnings[0], "Ostrel_Reference::reference_surface")) << capture.warnings[0];
    // Hints and widgets made by the module reach the host through the table.
    long index = 0;
    ASSERT_TRUE(surface->FindParam(index, "pattern"));
    auto *menu = static_cast<trIntHint *>(surface->ParamHint(index));
    ASSERT_NE(menu, nullptr);
    EXPECT_STREQ(menu->MenuItemTextFromIndex(1).chars, "Ridged");
    ASSERT_TRUE(surface->FindParam(index, "random_seed"));
    void *widget = nullptr;
    EXPECT_EQ(surface->GetWidget(index, &widget, trWhoUser), 1);
    ASSERT_NE(widget, nullptr);
    EXPECT_EQ(static_cast<trGuiPushButton *>(widget)->Owner(), surface);
    // Transient strings and parameter groups as the module declared them.
    EXPECT_TRUE(surface->FindParam(index, "notes") && !surface->GetParamShouldBeSaved(index));
    EXPECT_TRUE(surface->FindParam(index, "offset") && surface->IsParamInParamGroup(index, 2));
    // Destroying the target empties the link that pointed at it.
    EXPECT_EQ(root->DestroyChild(trString(input->Name())), 1);
    EXPECT_EQ(surface->LinkedNode("input_node"), nullptr);
    EXPECT_EQ(trDestroyObject(root), 1);
}

#endif
