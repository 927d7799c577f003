// The class registry: registration rules and texts, the road from a class name to a
// node in the tree, destruction, and classes loaded one at a time from a module.

#include "test_trBaseSupport.h"

namespace {

// Records the order in which the pool drives a node through its life.
std::vector<std::string> lifeLog;

class PoolRecorder : public trBase {
public:
    PoolRecorder()
    {
        lifeLog.push_back("construct");
        Param(level, "level", 3L);
    }
    long Init(trBase *parent, unsigned char addToParent) override
    {
        // The id is set before Init, and the instance count is raised only after it.
        lifeLog.push_back("init id=" + std::to_string(RegisteredClassId()));
        return trBase::Init(parent, addToParent);
    }
    long OnCreate() override
    {
        lifeLog.push_back(std::string("create name=") + Name().chars);
        return 1;
    }
    long OnFirstCreate() override
    {
        lifeLog.push_back("first");
        level = 7; // a new node differs from one read from a file
        return 1;
    }
    void PreDestroy() override
    {
        lifeLog.push_back("predestroy");
        trBase::PreDestroy();
    }
    long level = 0;
};

trBase *CreateRecorder() { return new PoolRecorder; }
void DestroyRecorder(trBase *node)
{
    lifeLog.push_back("destroy");
    delete node;
}

trBase *CreatePlain() { return new trBase; }
void DestroyPlain(trBase *node) { delete node; }
trBase *CreateNothing() { return nullptr; }

// Registers the test classes once for the whole program.
void RegisterPoolTestClasses()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    trClasses.AddClass("test", "pooltest_recorder", CreateRecorder, DestroyRecorder, "");
    trClasses.AddClass("test", "pooltest_node", CreatePlain, DestroyPlain, "Pool test node");
    trClasses.AddClass("test", "pooltest_null", CreateNothing, DestroyPlain, "");
}

long IdOf(char const *className)
{
    long id = -2;
    EXPECT_EQ(trClasses.FindClassIdFromClassName(id, className), 1) << className;
    return id;
}

} // namespace

TEST(trClassPool, AddClassStoresTypeNameAndDisplayNames)
{
    long const before = trClasses.NumClasses();
    EXPECT_EQ(trClasses.AddClass("shader", "pooltest_fancy_shader", CreatePlain, DestroyPlain, ""), before + 1);
    EXPECT_EQ(trClasses.AddClass("shader/", "pooltest_other", CreatePlain, DestroyPlain, "Other one"), before + 2);
    // No display name given: the class name, humanized; no second separator on the type.
    EXPECT_EQ(ClassTexts(IdOf("pooltest_fancy_shader")),
              "pooltest_fancy_shader|shader/|Pooltest fancy shader|Pooltest fancy");
    EXPECT_EQ(ClassTexts(IdOf("pooltest_other")), "pooltest_other|shader/|Other one|Other one");
    // Outside the registered ids every text is empty.
    EXPECT_TRUE(trClasses.ClassName(-1) == "" && trClasses.ClassType(trClasses.NumClasses()) == "");
    EXPECT_EQ(trClasses.InstanceCount(trClassPool::kMaxClasses), 0);
}

TEST(trClassPool, NamesOf255CharactersRegisterAnd256Fail)
{
    std::string const longest(255, 'a');
    std::string const tooLong(256, 'b');
    char const *message =
        "AddClass: No more than 255 characters allowed for class_type, class_name and class_display_name";
    long const before = trClasses.NumClasses();
    EXPECT_EQ(trClasses.AddClass("test", longest, CreatePlain, DestroyPlain, ""), before + 1);
    EXPECT_STREQ(trClasses.ClassName(before).chars, longest.c_str());
    for (int which = 0; which < 3; ++which) {
        HostCapture capture;
        Console console;
        EXPECT_EQ(trClasses.AddClass(which == 0 ? trString(tooLong) : trString("test"),
                                     which == 1 ? trString(tooLong) : trString("pooltest_too_long"), CreatePlain,
                                     DestroyPlain, which == 2 ? trString(tooLong) : trString()),
                  0);
        EXPECT_EQ(console.Done(), std::string("ERROR: ") + message + "\n");
        EXPECT_EQ(capture.errors, std::vector<std::string>{message});
        EXPECT_EQ(trClasses.NumClasses(), before + 1);
    }
    long id = 0;
    EXPECT_EQ(trClasses.FindClassIdFromClassName(id, "pooltest_too_long"), 0);
    EXPECT_EQ(id, -1);
}

TEST(trClassPool, SimplifiedDisplayNamesDropWhatTheCategorySays)
{
    struct {
        char const *type, *name, *display, *simplified;
    } const cases[] = {
        {"shader", "pooltest_s1", "Lambert shader", "Lambert"},
        {"shader/surface", "pooltest_s2", "Velvet SHADER", "Velvet"}, // suffix without regard to case
        {"shader", "pooltest_s3", "Shader", "Shader"},                // no blank before it
        {"material", "pooltest_s4", "Lambert shader", "Lambert shader"},
        {"heightfield", "pooltest_h1", "Heightfield generator_x", "Generator x"},
        {"heightfield/op", "pooltest_h2", "HEIGHTFIELD warp", "Warp"},
        {"heightfield", "pooltest_h3", "Heightfields", "Heightfields"},
        {"shader", "pooltest_h4", "Heightfield generator_x", "Heightfield generator_x"},
    };
    for (auto const &c : cases) {
        ASSERT_NE(trClasses.AddClass(c.type, c.name, CreatePlain, DestroyPlain, c.display), 0) << c.name;
        EXPECT_EQ(ClassTexts(IdOf(c.name)), std::string(c.name) + "|" + c.type + "/|" + c.display + "|" + c.simplified);
    }
}

TEST(trClassPool, RefusesNamesItCouldNeverFindAgain)
{
    long const before = trClasses.NumClasses();
    // The pool's own entries are not classes: "name" is its name parameter.
    long id = 0;
    EXPECT_EQ(trClasses.FindClassIdFromClassName(id, "name"), 0);
    EXPECT_EQ(trClasses.FindClassIdFromClassName(id, "gui_group"), 0);
    for (char const *name : {"name", "gui_group", ""}) {
        HostCapture capture;
        Console console;
        EXPECT_EQ(trClasses.AddClass("test", name, CreatePlain, DestroyPlain, ""), 0);
        EXPECT_EQ(console.Done(), "ERROR: AddClass: cannot add to classpool!\n");
    }
    EXPECT_EQ(trClasses.NumClasses(), before);
    // A later duplicate is accepted but unreachable: the first registration wins.
    ASSERT_NE(trClasses.AddClass("test", "pooltest_twice", CreatePlain, DestroyPlain, "First"), 0);
    ASSERT_NE(trClasses.AddClass("test", "pooltest_twice", CreatePlain, DestroyPlain, "Second"), 0);
    EXPECT_STREQ(trClasses.ClassDisplayName(IdOf("pooltest_twice")).chars, "First");
}

TEST(trClassPool, UnknownClassGivesNullAndAWarning)
{
    HostCapture capture;
    Console console;
    EXPECT_EQ(trCreateObject("pooltest_no_such_class", nullptr, 1), nullptr);
    EXPECT_EQ(trCreateObjectLean("Pooltest_recorder", nullptr, 1), nullptr); // names are case-sensitive
    console.Done();
    EXPECT_TRUE(Has(console.out, "Warning: CreateObject: Unrecognised class: pooltest_no_such_class\n"));
    EXPECT_TRUE(Has(console.out, "Warning: CreateObject: Unrecognised class: Pooltest_recorder\n"));
    ASSERT_EQ(capture.warnings.size(), 2u);
    EXPECT_EQ(capture.warnings[0], "CreateObject: Unrecognised class: pooltest_no_such_class");
    EXPECT_TRUE(capture.errors.empty());
    // A create function returning null gives null, and no instance is counted.
    RegisterPoolTestClasses();
    long const id = IdOf("pooltest_null");
    long const before = trClasses.InstanceCount(id);
    EXPECT_EQ(trCreateObject("pooltest_null", nullptr, 1), nullptr);
    EXPECT_EQ(trClasses.InstanceCount(id), before);
}

TEST(trClassPool, CreateObjectRunsTheStepsInOrder)
{
    RegisterPoolTestClasses();
    long const id = IdOf("pooltest_recorder");
    long const countBefore = trClasses.InstanceCount(id);
    lifeLog.clear();
    trBase *node = trCreateObject("pooltest_recorder", nullptr, 1);
    ASSERT_NE(node, nullptr);
    std::vector<std::string> const expected = {"construct", "init id=" + std::to_string(id),
                                               "create name=Pooltest recorder 01", "first"};
    EXPECT_EQ(lifeLog, expected);
    EXPECT_TRUE(node->RegisteredClassId() == id && node->IsRegistered());
    EXPECT_STREQ(node->RegisteredClassName().chars, "pooltest_recorder");
    EXPECT_EQ(static_cast<PoolRecorder *>(node)->level, 7);
    // The lean form leaves out OnFirstCreate: values come from a file instead.
    lifeLog.clear();
    trBase *lean = trCreateObjectLean("pooltest_recorder", nullptr, 1);
    ASSERT_NE(lean, nullptr);
    EXPECT_EQ(lifeLog.back(), "create name=Pooltest recorder 01"); // a root has no siblings
    EXPECT_EQ(static_cast<PoolRecorder *>(lean)->level, 3);
    EXPECT_EQ(trClasses.InstanceCount(id), countBefore + 2);
    // Destruction: PreDestroy, then the class's own destroy function.
    lifeLog.clear();
    EXPECT_EQ(trDestroyObject(node), 1);
    EXPECT_EQ(trDestroyObject(lean), 1);
    EXPECT_EQ(lifeLog, (std::vector<std::string>{"predestroy", "destroy", "predestroy", "destroy"}));
    // Counts are of objects created, never decremented.
    EXPECT_EQ(trClasses.InstanceCount(id), countBefore + 2);
}

TEST(trClassPool, TwoChildrenOfOneClassCarry01And02)
{
    RegisterPoolTestClasses();
    trBase *parent = trCreateObject("pooltest_node", nullptr, 1);
    ASSERT_NE(parent, nullptr);
    EXPECT_STREQ(parent->Name().chars, "Pooltest node 01");
    // A root's own name is not in its children's scope: they number from 01 again.
    trBase *first = parent->CreateChild("pooltest_node");
    trBase *second = trCreateObject("pooltest_node", parent, 1);
    ASSERT_TRUE(first && second);
    EXPECT_EQ(parent->NumChildren(), 2);
    // One level down the parent is in scope, and so are its siblings.
    trBase *grandchild = first->CreateChild("pooltest_node");
    ASSERT_NE(grandchild, nullptr);
    EXPECT_EQ(Str(first->Name()) + ", " + Str(second->Name()) + ", " + Str(grandchild->Name()),
              "Pooltest node 01, Pooltest node 02, Pooltest node 03");
    // Attached without entering the child list: it has a parent but is no child.
    trBase *detached = trCreateObject("pooltest_node", parent, 0);
    ASSERT_NE(detached, nullptr);
    EXPECT_EQ(detached->Parent(), parent);
    EXPECT_EQ(parent->NumChildren(), 2);
    EXPECT_EQ(trDestroyObject(detached), 1);
    EXPECT_EQ(trDestroyObject(parent), 1);
}

TEST(trClassPool, DestroyObjectRefusesWhatThePoolDidNotMake)
{
    HostCapture capture;
    {
        Console console; // null: quietly nothing
        EXPECT_EQ(trDestroyObject(nullptr), 0);
        EXPECT_EQ(console.Done(), "");
        EXPECT_TRUE(capture.errors.empty() && capture.warnings.empty());
    }
    trBase unregistered;
    EXPECT_FALSE(unregistered.IsRegistered());
    Console console;
    EXPECT_EQ(trDestroyObject(&unregistered), 0);
    char const *message = "DestroyObject: Object has no registered class id! Not created through trCreateObject?";
    EXPECT_EQ(console.Done(), std::string("ERROR: ") + message + "\n");
    EXPECT_EQ(capture.errors, std::vector<std::string>{message});
}

#ifdef OSTREL_REFERENCE_PLUGIN_DIR
TEST(trClassPool, LoadClassFindsPlainAndCompilerNamedFunctions)
{
    trString const module = OSTREL_REFERENCE_PLUGIN_DIR "reference.svp";
    long const before = trClasses.NumClasses();
    // Exported under C names.
    EXPECT_EQ(trClasses.LoadClass("group", "pooltest_loaded_group", "reference_group", module), before + 1);
    // Exported under the names the compiler gives the C++ signatures.
    EXPECT_EQ(trClasses.LoadClass("heightfield", "pooltest_loaded_terrain", "reference_terrain", module),
              before + 2);
    EXPECT_EQ(ClassTexts(before), "pooltest_loaded_group|group/|Pooltest loaded group|Pooltest loaded group");
    EXPECT_EQ(ClassTexts(before + 1),
              "pooltest_loaded_terrain|heightfield/|Pooltest loaded terrain|Pooltest loaded terrain");
    trBase *terrain = trCreateObject("pooltest_loaded_terrain", nullptr, 1);
    ASSERT_NE(terrain, nullptr);
    double amplitude = 0.0;
    EXPECT_TRUE(terrain->GetParam("amplitude", amplitude) && amplitude == 100.0);
    EXPECT_STREQ(terrain->Name().chars, "Pooltest loaded terrain 01");
    EXPECT_EQ(trDestroyObject(terrain), 1);
}

TEST(trClassPool, LoadClassReportsWhatIsMissing)
{
    long const before = trClasses.NumClasses();
    trString const module = OSTREL_REFERENCE_PLUGIN_DIR "reference.svp";
    HostCapture capture;
    Console console;
    EXPECT_EQ(trClasses.LoadClass("group", "pooltest_missing", "no_such_base", module), 0);
    EXPECT_EQ(trClasses.LoadClass("group", "pooltest_missing", "x", "/no/such/module.svp"), 0);
    console.Done();
    EXPECT_TRUE(Has(console.out, "/no/such/module.svp")) << console.all; // the system's reason
    // The plain name is the one tried last.
    std::string const head = std::string("trLoadClass: ") + module.chars + "\nCannot locate function: no_such_base_";
    EXPECT_EQ(capture.errors, (std::vector<std::string>{head + "create", head + "destroy",
                                                        "trLoadClass: Cannot load library: /no/such/module.svp"}));
    EXPECT_EQ(trClasses.NumClasses(), before);
}
#endif
