#include "nodes/trPathManager.h"

#include "foundation/trGlobals.h"

#include <iterator>

trPathManager *trPathManager::ms_instance = nullptr;

trPathManager *trPathManager::Instance()
{
    // Never destroyed: hosts may still ask for paths from their own static destructors.
    if (!ms_instance)
        ms_instance = new trPathManager;
    return ms_instance;
}

trPathManager::trPathManager()
{
    SetupDefaultsMap();
}

void trPathManager::SetupDefaultsMap()
{
    defaults[trRenderOutputPathKey] = "C:\\";
    defaults[trSequenceOutputPathKey] = "C:\\";
    defaults[trTemporaryOutputFilesPathKey] = "C:\\";
}

trString trPathManager::FindPath(trString const &key) const
{
    auto const it = paths.find(std::string(key.chars ? key.chars : ""));
    return it == paths.end() ? trDefaultFilePath : it->second;
}

void trPathManager::RegisterPath(trString const &key, trString const &path)
{
    if (key.length == 0)
        return;
    paths[std::string(key.chars)] = path;
}

void trPathManager::RemovePath(trString const &key)
{
    paths.erase(std::string(key.chars ? key.chars : ""));
}

void trPathManager::RemoveAllPaths()
{
    paths.clear();
}

int trPathManager::GetNumPaths() const
{
    return int(paths.size());
}

bool trPathManager::GetPathInfoAtIndex(int const &index, trString &key, trString &path) const
{
    if (index < 0 || index >= int(paths.size()))
        return false;
    auto const it = std::next(paths.begin(), index);
    key = trString(it->first);
    path = it->second;
    return true;
}

trString trPathManager::GetKeyForPathAtIndex(int const &index) const
{
    trString key, path;
    return GetPathInfoAtIndex(index, key, path) ? key : trString();
}

trString trPathManager::GetDefaultPathForKey(trString const &key) const
{
    auto const it = defaults.find(key);
    return it == defaults.end() ? trString() : it->second;
}

void trPathManager::SetDefaultPathForKey(trString const &key, trString const &path)
{
    defaults[key] = path;
}

void trPathManager::GetPathsForWriting(PathMap &out) const
{
    out.clear();
    for (auto const &entry : paths)
        out[GeneratePathKeyID(trString(entry.first))] = entry.second;
}

trString trPathManager::GeneratePathKeyID(trString const &key)
{
    return trString("pathManager_path_") + key;
}

trString trPathManagerFindPath(trString const &key)
{
    trString result;
    trPathManager const *manager = trPathManager::ExistingInstance();
    if (!manager)
        return result;
    result = manager->FindPath(key);
    if (result == trDefaultFilePath)
        result = manager->GetDefaultPathForKey(key);
    if (result.length > 0 && !result.EndsWith("\\") && !result.EndsWith("/"))
        result += "\\";
    return result;
}

trString trPathManagerGetRenderOutputPath()
{
    return trPathManagerFindPath(trRenderOutputPathKey);
}

trString trPathManagerGetSequenceOutputPath()
{
    return trPathManagerFindPath(trSequenceOutputPathKey);
}

trString trPathManagerGetTemporaryOutputFilesPath()
{
    return trPathManagerFindPath(trTemporaryOutputFilesPathKey);
}
