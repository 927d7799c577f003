#include "nodes/trClassPool.h"

#include "foundation/trMessages.h"
#include "nodes/trPlugin.h"

#include <dlfcn.h>
#include <fnmatch.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <unordered_map>

// The parallel tables, indexed by class id. They live in one anonymous mapping of
// about 18 MB of address space: pages that no registration touches are never backed
// by memory, and a text entry is constructed only when its class is registered.
struct trClassPoolTables {
    void *block = nullptr;
    std::size_t size = 0;
    long *classIds = nullptr; // storage of the pool's parameters
    trClassPool::CreateFunc *createFunctions = nullptr;
    trClassPool::DestroyFunc *destroyFunctions = nullptr;
    long *instanceCounts = nullptr;
    trString *classTypes = nullptr;
    trString *classNames = nullptr;
    trString *classDisplayNames = nullptr;
    trString *classDisplayNamesSimplified = nullptr;
    // Parameter index of each class name's first registration, which is what a scan
    // with FindParam finds; the keys point into classNames, which never move.
    std::unordered_map<std::string_view, long> paramIndexByName;
};

namespace {

constexpr std::size_t kWordTable = sizeof(long) * trClassPool::kMaxClasses;
constexpr std::size_t kTextTable = sizeof(trString) * trClassPool::kMaxClasses;
static_assert(sizeof(trClassPool::CreateFunc) == sizeof(long) && sizeof(trClassPool::DestroyFunc) == sizeof(long),
              "function tables have word-sized entries");

trString SimplifiedDisplayName(trString const &classType, trString const &displayName)
{
    if (classType.BeginsWith("shader")) {
        trString const suffix(" shader");
        if (displayName.EndsWith(suffix, false))
            return displayName.SubString(0, int(displayName.length - suffix.length));
        return displayName;
    }
    if (classType.BeginsWith("heightfield")) {
        trString const prefix("Heightfield ");
        if (displayName.BeginsWith(prefix, false))
            return displayName.SubString(int(prefix.length), int(displayName.length - prefix.length)).Humanized();
        return displayName;
    }
    return displayName;
}

// dlopen searches the library path for a name without a separator; a plug-in file
// is always meant relative to the working folder.
trString ModuleOpenPath(trString const &file)
{
    if (std::strchr(file.chars, '/'))
        return file;
    return trString("./") + file;
}

void *OpenModule(trString const &file)
{
    dlerror();
    void *handle = dlopen(ModuleOpenPath(file).chars, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        // The system's own reason, for the console.
        if (char const *reason = dlerror())
            trOutMsg(reason);
    }
    return handle;
}

// Looks a function up by each name in turn; `tried` is left at the last name tried.
void *FindFunction(void *module, trString const &mangled, trString const &plain, trString &tried)
{
    dlerror();
    tried = mangled;
    if (void *symbol = dlsym(module, mangled.chars))
        return symbol;
    tried = plain;
    return dlsym(module, plain.chars);
}

// The names a compiler gives `trBase *name()` and `void name(trBase *)` at file scope.
trString MangledNoArgs(trString const &name)
{
    trString mangled("_Z");
    mangled += trString().SetInt(name.length);
    return mangled + name + "v";
}

trString MangledBaseArg(trString const &name)
{
    trString mangled("_Z");
    mangled += trString().SetInt(name.length);
    return mangled + name + "P6trBase";
}

} // namespace

trClassPool::trClassPool() : tables(new trClassPoolTables)
{
    std::size_t const size = 4 * kWordTable + 4 * kTextTable;
    void *block = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (block == MAP_FAILED) {
        trOutError("trClassPool: Unable to allocate the class tables!");
        return;
    }
    char *at = static_cast<char *>(block);
    tables->block = block;
    tables->size = size;
    tables->classIds = reinterpret_cast<long *>(at);
    at += kWordTable;
    tables->createFunctions = reinterpret_cast<CreateFunc *>(at);
    at += kWordTable;
    tables->destroyFunctions = reinterpret_cast<DestroyFunc *>(at);
    at += kWordTable;
    tables->instanceCounts = reinterpret_cast<long *>(at);
    at += kWordTable;
    tables->classTypes = reinterpret_cast<trString *>(at);
    at += kTextTable;
    tables->classNames = reinterpret_cast<trString *>(at);
    at += kTextTable;
    tables->classDisplayNames = reinterpret_cast<trString *>(at);
    at += kTextTable;
    tables->classDisplayNamesSimplified = reinterpret_cast<trString *>(at);
}

trClassPool::~trClassPool()
{
    if (tables->block) {
        // Only the entries of registered classes were ever constructed.
        for (long id = 0; id < numClasses; ++id) {
            tables->classTypes[id].~trString();
            tables->classNames[id].~trString();
            tables->classDisplayNames[id].~trString();
            tables->classDisplayNamesSimplified[id].~trString();
        }
        munmap(tables->block, tables->size);
    }
    numClasses = 0;
    delete tables;
    tables = nullptr;
}

long trClassPool::AddClass(trString const &classType, trString const &className, CreateFunc create,
                           DestroyFunc destroy, trString const &displayName)
{
    if (classType.length > kMaxNameLength || className.length > kMaxNameLength ||
        displayName.length > kMaxNameLength) {
        trError("AddClass: No more than 255 characters allowed for class_type, class_name and class_display_name");
        return 0;
    }

    trString type(classType);
    if (!type.EndsWith("/"))
        type += "/";

    // Besides a failed declaration, the pool refuses what it could never find again:
    // an empty name, a name taken by one of its own non-class entries ("name",
    // "gui_group", ...), and a class past the capacity of its tables.
    long const id = numClasses;
    long existing = 0;
    bool const shadowed = FindParam(existing, className.chars) && ParamType(existing) != trParamInt;
    bool declared = false;
    long index = -1;
    if (tables->block && id < kMaxClasses && className.length > 0 && !shadowed) {
        long const before = NumParams();
        index = Param(tables->classIds[id], className.chars, id);
        declared = index >= 0 && NumParams() == before + 1;
    }
    if (!declared) {
        trError("AddClass: cannot add to classpool!");
        return 0;
    }

    trString const display = displayName.length ? displayName : className.Humanized();
    new (&tables->classTypes[id]) trString(type);
    new (&tables->classNames[id]) trString(className);
    new (&tables->classDisplayNames[id]) trString(display);
    new (&tables->classDisplayNamesSimplified[id]) trString(SimplifiedDisplayName(type, display));
    tables->createFunctions[id] = create;
    tables->destroyFunctions[id] = destroy;
    tables->instanceCounts[id] = 0;
    tables->paramIndexByName.emplace(
        std::string_view(tables->classNames[id].chars, std::size_t(tables->classNames[id].length)), index);
    numClasses = id + 1;
    return numClasses;
}

long trClassPool::LoadClass(trString const &classType, trString const &className, trString const &baseName,
                            trString const &modulePath)
{
    void *module = OpenModule(modulePath);
    if (!module) {
        trError("trLoadClass: Cannot load library: " + modulePath);
        return 0;
    }
    trString const createName = baseName + "_create";
    trString const destroyName = baseName + "_destroy";
    trString tried;
    void *create = FindFunction(module, MangledNoArgs(createName), createName, tried);
    if (!create)
        trError("trLoadClass: " + modulePath + "\n" + "Cannot locate function: " + tried);
    void *destroy = FindFunction(module, MangledBaseArg(destroyName), destroyName, tried);
    if (!destroy)
        trError("trLoadClass: " + modulePath + "\n" + "Cannot locate function: " + tried);
    if (!create || !destroy)
        return 0;
    return AddClass(classType, className, reinterpret_cast<CreateFunc>(create),
                    reinterpret_cast<DestroyFunc>(destroy), trString());
}

long trClassPool::LoadPlugins(trString const &directory, trString const &pattern)
{
    trOutMsg("Loading plugins in: " + directory);

    // Names in byte order, so that every run loads (and registers) in the same order.
    // An empty directory means the working folder.
    std::vector<std::string> fileNames;
    std::error_code error;
    std::filesystem::path const folder(directory.length ? directory.chars : ".");
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (it->is_directory(typeError))
            continue;
        std::string const fileName = it->path().filename().string();
        if (fnmatch(pattern.chars, fileName.c_str(), 0) == 0)
            fileNames.push_back(fileName);
    }
    std::sort(fileNames.begin(), fileNames.end());

    if (fileNames.empty())
        trOutMsg("No files matching " + pattern + " in this directory");

    long count = 0;
    for (std::string const &fileName : fileNames)
        if (LoadPluginAutoCompile(directory + trString(fileName), pattern, directory))
            ++count;

    trOutMsg("Loaded " + trString(double(count)) + " modules in this directory");

    if (!failedPlugins.empty()) {
        std::string text("The following plugins could not be loaded in this version:\n\n");
        bool quernstone = false;
        for (trString const &path : failedPlugins) {
            text += path.chars;
            text += "\n";
            if (path.Contains("quernstone.svp", false))
                quernstone = true;
        }
        text += "\n";
        text += "Contact the plugin developers for compatible updates.\n";
        if (quernstone) {
            text += "\n";
            text += "For quernstone.svp, please contact its developer.\n";
        }
        trWarning(text.c_str());
        failedPlugins.clear();
    }
    return count;
}

long trClassPool::LoadPluginAutoCompile(trString const &file, trString const &pattern, trString const &directory)
{
    if (pattern == "*.cpp") {
        // Source plug-ins would be compiled to ".svp_nt_intel" first; there is no
        // compiler to call on this platform.
        trOutError("Unable to auto-compile on this platform.");
        return 0;
    }
    return LoadPlugin(file, directory);
}

long trClassPool::LoadPlugin(trString const &file, trString const &directory)
{
    // There is no critical-error dialog to switch off here: a failed load only
    // returns the system's reason, which OpenModule prints.
    void *module = OpenModule(file);
    if (!module) {
        trOutWarning("trLoadPlugin: Cannot load library: " + file);
        failedPlugins.push_back(file);
        return 0;
    }
    // The module stays loaded for the life of the process, whatever its entry says.
    dlerror();
    void *symbol = dlsym(module, trPluginStartupName);
    if (!symbol) {
        trError("trLoadPlugin: " + file + "\n" + "Cannot locate function: " + trPluginStartupName);
        return 0;
    }
    auto const entry = reinterpret_cast<trPluginStartupFunc>(symbol);
    auto *info = new trPluginStartupInfo(directory);
    long const result = entry(info);
    delete info;
    return result;
}

long trClassPool::NumClasses() const { return numClasses; }

trString trClassPool::ClassType(long id) const
{
    return id >= 0 && id < numClasses ? tables->classTypes[id] : trString();
}

trString trClassPool::ClassName(long id) const
{
    return id >= 0 && id < numClasses ? tables->classNames[id] : trString();
}

trString trClassPool::ClassDisplayName(long id) const
{
    return id >= 0 && id < numClasses ? tables->classDisplayNames[id] : trString();
}

trString trClassPool::ClassDisplayNameSimplified(long id) const
{
    return id >= 0 && id < numClasses ? tables->classDisplayNamesSimplified[id] : trString();
}

long trClassPool::InstanceCount(long id) const
{
    return id >= 0 && id < numClasses ? tables->instanceCounts[id] : 0;
}

long trClassPool::LookUp(trString const &className) const
{
    // The same answer as FindParam, without a scan of every class name.
    auto const found =
        tables->paramIndexByName.find(std::string_view(className.chars, std::size_t(className.length)));
    if (found == tables->paramIndexByName.end())
        return -1;
    long const id = *static_cast<long const *>(ParamPtr(found->second));
    return id >= 0 && id < numClasses ? id : -1;
}

long trClassPool::FindClassIdFromClassName(long &id, trString const &className) const
{
    id = LookUp(className);
    return id >= 0 ? 1 : 0;
}

trBase *trClassPool::CreateObjectLean(trString const &className, trBase *parent, unsigned char addToParent)
{
    long const id = LookUp(className);
    if (id < 0) {
        trWarning("CreateObject: Unrecognised class: " + className);
        return nullptr;
    }
    CreateFunc const create = tables->createFunctions[id];
    if (!create) {
        trError("CreateObject: No create function for class: " + className);
        return nullptr;
    }
    trBase *node = create();
    if (!node)
        return nullptr;
    node->SetRegisteredClassId(id);
    node->Init(parent, addToParent);
    ++tables->instanceCounts[id];
    node->SetName(className.Humanized() + " %02d");
    node->OnCreate();
    return node;
}

trBase *trClassPool::CreateObject(trString const &className, trBase *parent, unsigned char addToParent)
{
    trBase *node = CreateObjectLean(className, parent, addToParent);
    if (node)
        node->OnFirstCreate();
    return node;
}

long trClassPool::DestroyObject(trBase *node)
{
    if (!node)
        return 0;
    long const id = node->RegisteredClassId();
    if (!node->IsRegistered() || id < 0 || id >= numClasses) {
        trError("DestroyObject: Object has no registered class id! Not created through trCreateObject?");
        return 0;
    }
    DestroyFunc const destroy = tables->destroyFunctions[id];
    node->PreDestroy();
    // A class registered without a destroy function is taken to be allocated with new.
    if (destroy)
        destroy(node);
    else
        delete node;
    return 1;
}

trBase *trCreateObject(trString const &className, trBase *parent, unsigned char addToParent)
{
    return trClasses.CreateObject(className, parent, addToParent);
}

trBase *trCreateObjectLean(trString const &className, trBase *parent, unsigned char addToParent)
{
    return trClasses.CreateObjectLean(className, parent, addToParent);
}

long trDestroyObject(trBase *node) { return trClasses.DestroyObject(node); }
