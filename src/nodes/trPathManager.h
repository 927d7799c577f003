#pragma once
// The process-wide table of named folders: where rendered images, sequences and
// temporary files go, and any folder the host registers under a key of its own.
// It is saved with a project under GeneratePathKeyID(key).

#include "foundation/trString.h"

#include <map>
#include <string>

class trPathManager {
public:
    using PathMap = std::map<trString, trString>;

    // Made on first use.
    static trPathManager *Instance();
    // The instance if one has been made, else null; makes nothing.
    static trPathManager *ExistingInstance() { return ms_instance; }

    // The registered path, or trDefaultFilePath (a marker no real folder has) when the
    // key isn't registered, so that an empty path and a missing key differ.
    trString FindPath(trString const &key) const;
    // An empty key does nothing.
    void RegisterPath(trString const &key, trString const &path);
    // An unknown key does nothing.
    void RemovePath(trString const &key);
    void RemoveAllPaths();
    int GetNumPaths() const;
    // In the byte order of the keys; false (or empty text) out of range.
    bool GetPathInfoAtIndex(int const &index, trString &key, trString &path) const;
    trString GetKeyForPathAtIndex(int const &index) const;
    // Empty text when the key has no default.
    trString GetDefaultPathForKey(trString const &key) const;
    void SetDefaultPathForKey(trString const &key, trString const &path);
    // Empties `out`, then fills it with GeneratePathKeyID(key) to path for every entry.
    void GetPathsForWriting(PathMap &out) const;
    // "pathManager_path_" + key.
    static trString GeneratePathKeyID(trString const &key);

private:
    trPathManager();
    void SetupDefaultsMap();

    static trPathManager *ms_instance;
    std::map<std::string, trString> paths;
    PathMap defaults;
};

// The path for a key, falling back to the key's default, with a final separator so a
// file name can be joined straight on; empty when neither exists.
trString trPathManagerFindPath(trString const &key);
trString trPathManagerGetRenderOutputPath();
trString trPathManagerGetSequenceOutputPath();
trString trPathManagerGetTemporaryOutputFilesPath();
