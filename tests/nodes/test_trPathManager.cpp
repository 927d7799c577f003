// The path manager: registered folders, defaults, the marker for "not registered",
// key order, and the separator the lookup adds.

#include "test_trBaseSupport.h"

#include "foundation/trGlobals.h"
#include "nodes/trPathManager.h"

namespace {

class PathManager : public ::testing::Test {
protected:
    void SetUp() override
    {
        manager = trPathManager::Instance();
        manager->RemoveAllPaths();
    }
    void TearDown() override
    {
        manager->RemoveAllPaths();
        manager->SetDefaultPathForKey(trRenderOutputPathKey, "C:\\");
    }
    trPathManager *manager = nullptr;
};

TEST_F(PathManager, UnregisteredKeysGiveTheMarkerAndFindPathFallsBackToTheDefaults)
{
    for (trString const *key : {&trRenderOutputPathKey, &trSequenceOutputPathKey, &trTemporaryOutputFilesPathKey})
        EXPECT_EQ(Str(manager->GetDefaultPathForKey(*key)), "C:\\");
    EXPECT_EQ(Str(manager->GetDefaultPathForKey("other")), "");
    EXPECT_EQ(manager->FindPath("renderOutput"), trDefaultFilePath);
    // Unregistered with a default: the default, which already ends in a separator.
    EXPECT_EQ(Str(trPathManagerGetRenderOutputPath()), "C:\\");
    manager->SetDefaultPathForKey(trRenderOutputPathKey, "/renders");
    EXPECT_EQ(Str(trPathManagerGetRenderOutputPath()), "/renders\\");
    // Unknown key without a default: empty.
    EXPECT_EQ(Str(trPathManagerFindPath("nothing")), "");
}

TEST_F(PathManager, RegisteredPathsWinAndGainOneSeparator)
{
    for (auto [path, found] : {std::pair{"/work/sequences", "/work/sequences\\"}, {"/work/other/", "/work/other/"}}) {
        manager->RegisterPath(trSequenceOutputPathKey, path);
        EXPECT_EQ(Str(trPathManagerGetSequenceOutputPath()), found);
    }
    manager->RegisterPath(trTemporaryOutputFilesPathKey, "D:\\temp\\");
    EXPECT_EQ(Str(trPathManagerGetTemporaryOutputFilesPath()), "D:\\temp\\");
    // An empty registered path isn't the marker, so the default isn't used.
    manager->RegisterPath(trRenderOutputPathKey, "");
    EXPECT_EQ(Str(trPathManagerGetRenderOutputPath()), "");
    // An empty key registers nothing.
    manager->RegisterPath("", "/x");
    EXPECT_EQ(manager->GetNumPaths(), 3);
}

TEST_F(PathManager, IndexedAccessIsInKeyOrder)
{
    manager->RegisterPath("beta", "/b");
    manager->RegisterPath("Zeta", "/z");
    manager->RegisterPath("alpha", "/a");
    ASSERT_EQ(manager->GetNumPaths(), 3);
    trString key, path;
    // Plain byte order: upper case before lower case.
    ASSERT_TRUE(manager->GetPathInfoAtIndex(0, key, path));
    EXPECT_EQ(Str(key) + " " + Str(path), "Zeta /z");
    EXPECT_EQ(Str(manager->GetKeyForPathAtIndex(1)) + " " + Str(manager->GetKeyForPathAtIndex(2)), "alpha beta");
    EXPECT_FALSE(manager->GetPathInfoAtIndex(3, key, path));
    EXPECT_FALSE(manager->GetPathInfoAtIndex(-1, key, path));
    EXPECT_EQ(Str(manager->GetKeyForPathAtIndex(3)), "");
    manager->RemovePath("alpha");
    manager->RemovePath("never registered");
    EXPECT_EQ(manager->GetNumPaths(), 2);
    EXPECT_EQ(Str(manager->GetKeyForPathAtIndex(1)), "beta");
}

TEST_F(PathManager, PathsAreWrittenUnderTheirSavedNames)
{
    EXPECT_EQ(Str(trPathManager::GeneratePathKeyID("renderOutput")), "pathManager_path_renderOutput");
    manager->RegisterPath("renderOutput", "/r");
    manager->RegisterPath("textures", "/t");
    trPathManager::PathMap out;
    out["stale"] = "gone";
    manager->GetPathsForWriting(out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(Str(out[trString("pathManager_path_renderOutput")]) + Str(out[trString("pathManager_path_textures")]),
              "/r/t");
}

} // namespace
