// ostrel: the command-line host. It links the library like any host would, sets the
// message callbacks, loads plug-ins, reports on the registry, and reads and writes
// project files.

#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "nodes/trAnimate.h"
#include "nodes/trBase.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trPathManager.h"
#include "nodes/trProjectFile.h"

#include "host_classes.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <deque>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#ifndef OSTREL_INSTALL_PLUGIN_SUBDIR
#define OSTREL_INSTALL_PLUGIN_SUBDIR "lib/ostrel/plugins"
#endif

namespace {

constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;
constexpr int kExitUsage = 2;

char const kUsage[] =
    "Usage: ostrel <command> [options]\n"
    "\n"
    "Commands:\n"
    "  classes [--plugins DIR]   load the plug-ins in DIR (by default the reference\n"
    "                            plug-ins installed with this program) and list every\n"
    "                            registered class: type, name and display name\n"
    "  info FILE.svd [--plugins DIR]\n"
    "                            read a project and print its node tree: class,\n"
    "                            name and path of each node, and every saved\n"
    "                            parameter with its value and any animation keys\n"
    "  resave IN OUT [--plugins DIR]\n"
    "                            read a project and write it again\n"
    "\n"
    "Options:\n"
    "  -h, --help                show this text\n";

// The library prints every message to the console itself; the host only keeps count,
// so that a run with errors ends with a failure status.
long numErrors = 0;
long numWarnings = 0;

void OnError(char const *, trErrorWarningData *) { ++numErrors; }
void OnWarning(char const *, trErrorWarningData *) { ++numWarnings; }
void OnInfo(char const *, trErrorWarningData *) {}

void InstallCallbacks()
{
    trCallBackError = OnError;
    trCallBackWarning = OnWarning;
    trCallBackInfoMsg = OnInfo;
    // Messages reach the callbacks only while this is set; there are no boxes to show.
    trDoDlgBoxes = 1;
}

int UsageError(std::string const &text)
{
    std::fprintf(stderr, "ostrel: %s\nTry 'ostrel --help'.\n", text.c_str());
    return kExitUsage;
}

std::filesystem::path ProgramFolder()
{
    std::error_code error;
    std::filesystem::path const self = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::filesystem::path() : self.parent_path();
}

// The reference plug-ins: <bin>/../plugins in a build tree, <bin>/../lib/ostrel/plugins
// in an install. Empty when neither exists.
std::string DefaultPluginFolder()
{
    std::filesystem::path const bin = ProgramFolder();
    if (bin.empty())
        return std::string();
    for (std::filesystem::path const &candidate :
         {bin / ".." / "plugins", bin / ".." / OSTREL_INSTALL_PLUGIN_SUBDIR}) {
        std::error_code error;
        if (std::filesystem::is_directory(candidate, error))
            return std::filesystem::weakly_canonical(candidate, error).string();
    }
    return std::string();
}

void PrintClasses()
{
    long const n = trClasses.NumClasses();
    std::size_t typeWidth = std::strlen("TYPE");
    std::size_t nameWidth = std::strlen("NAME");
    for (long id = 0; id < n; ++id) {
        typeWidth = std::max(typeWidth, std::size_t(trClasses.ClassType(id).length));
        nameWidth = std::max(nameWidth, std::size_t(trClasses.ClassName(id).length));
    }
    std::printf("%-*s  %-*s  %s\n", int(typeWidth), "TYPE", int(nameWidth), "NAME", "DISPLAY NAME");
    for (long id = 0; id < n; ++id)
        std::printf("%-*s  %-*s  %s\n", int(typeWidth), trClasses.ClassType(id).chars, int(nameWidth),
                    trClasses.ClassName(id).chars, trClasses.ClassDisplayName(id).chars);
    std::printf("%ld %s\n", n, n == 1 ? "class" : "classes");
}

// The options every command shares: --plugins DIR; the rest are positional.
struct Options {
    std::string folder;
    bool folderGiven = false;
    bool help = false;
    std::vector<std::string> positional;
};

// 0 when the arguments are good; otherwise the exit status of the usage error.
int ParseOptions(char const *command, std::vector<std::string> const &args, Options &options)
{
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-h" || args[i] == "--help") {
            options.help = true;
        } else if (args[i] == "--plugins") {
            if (i + 1 >= args.size())
                return UsageError("--plugins needs a folder");
            options.folder = args[++i];
            options.folderGiven = true;
        } else if (args[i].rfind("--plugins=", 0) == 0) {
            options.folder = args[i].substr(std::strlen("--plugins="));
            options.folderGiven = true;
        } else if (args[i].size() > 1 && args[i][0] == '-') {
            return UsageError(std::string(command) + ": unknown argument: " + args[i]);
        } else {
            options.positional.push_back(args[i]);
        }
    }
    if (options.folderGiven && options.folder.empty())
        return UsageError("--plugins needs a folder");
    return 0;
}

// Loads the plug-ins of the chosen (or default) folder; false with a message if there
// is none.
bool LoadPluginFolder(Options const &options)
{
    std::string folder = options.folder;
    if (!options.folderGiven) {
        folder = DefaultPluginFolder();
        if (folder.empty()) {
            trError("ostrel: No plug-in folder next to the program; give one with --plugins");
            return false;
        }
    }
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        trError(trString("ostrel: Plug-in folder not found: ") + trString(folder));
        return false;
    }
    // The pool concatenates names to the folder, so it must end with its separator.
    if (folder.back() != '/')
        folder += '/';
    trClasses.LoadPlugins(trString(folder), "*.svp");
    return true;
}

int RunClasses(std::vector<std::string> const &args)
{
    Options options;
    if (int const status = ParseOptions("classes", args, options))
        return status;
    if (options.help) {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (!options.positional.empty())
        return UsageError("classes: unknown argument: " + options.positional.front());
    if (!LoadPluginFolder(options))
        return kExitFailed;
    PrintClasses();
    return numErrors ? kExitFailed : kExitOk;
}

// The project's root: this host's own node, holding the frame range that nodes read
// through GetCurrentFrame and friends, and the path manager's folders, saved as
// "pathManager_path_<key>" parameters. It isn't a registered class: its element is
// named by the file.
class OstrelProject : public trBase {
public:
    OstrelProject()
    {
        // A root read with an empty name would come back as "_1": give it one.
        SetName("Project");
        Param(startFrame, "start_frame", 1.0);
        Param(endFrame, "end_frame", 1.0);
        Param(currentFrame, "current_frame", 1.0);
    }

    using trBase::SetParamFromString;
    // A saved folder registers itself with the path manager as it is read.
    long SetParamFromString(char const *paramName, trString const &text, trBase *who) override
    {
        trString const name(paramName ? paramName : "");
        trString const prefix = trPathManager::GeneratePathKeyID(trString());
        if (name.length <= prefix.length || !name.BeginsWith(prefix, 1))
            return trBase::SetParamFromString(paramName, text, who);
        trPathManager::Instance()->RegisterPath(trString(paramName + prefix.length), text);
        PathParam(name) = text;
        return 1;
    }

    // Brings the saved folders up to the path manager's entries, before a write.
    void TakePathsFromManager()
    {
        trPathManager::PathMap entries;
        if (trPathManager *manager = trPathManager::ExistingInstance())
            manager->GetPathsForWriting(entries);
        for (auto const &[key, path] : entries)
            PathParam(key) = path;
    }

    double startFrame = 0.0;
    double endFrame = 0.0;
    double currentFrame = 0.0;

private:
    // The storage of a path parameter, declared on first use; a deque keeps the
    // addresses the parameter table points at.
    trString &PathParam(trString const &name)
    {
        long index = 0;
        if (FindParam(index, name.chars))
            return *static_cast<trString *>(ParamRecord(index)->storage);
        trString &storage = pathValues.emplace_back();
        Param(storage, name.chars, trString());
        return storage;
    }

    std::deque<trString> pathValues;
};

// The element name a project is read under when the file has no element at all.
char const kDefaultRootElement[] = "ostrel_project";

std::string Text(trString const &s)
{
    return s.chars ? std::string(s.chars, std::size_t(s.length)) : std::string();
}

std::string Number(double value)
{
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.10g", value);
    return buffer;
}

// " keys[x tcb]: 1=100 50=250" for each component with keys.
std::string KeysText(trBase const &node, long index)
{
    trAnimate const *anim = node.ParamAnim(index);
    if (!anim)
        return std::string();
    static char const *const kComponentNames[] = {"x", "y", "z"};
    long const components = trBase::NumParamComponentsOfType(node.ParamType(index));
    std::string text;
    for (int c = 0; c < 3; ++c) {
        trAnimKey const *key = anim->FirstKey(c);
        if (!key)
            continue;
        text += "  keys";
        if (components > 1)
            text += std::string("[") + kComponentNames[c] + "]";
        text += anim->GetComponentInterpolationMode(c) == 2 ? " linear:" : " tcb:";
        for (; key; key = key->Next()) {
            text += " " + Number(key->Frame()) + "=" + Number(key->Value());
            if (key->Tension() != 0 || key->Continuity() != 0 || key->Bias() != 0)
                text += "(" + Number(key->Tension()) + "," + Number(key->Continuity()) + "," + Number(key->Bias()) +
                        ")";
        }
    }
    return text;
}

void PrintParams(trBase &node, std::string const &indent)
{
    trString value;
    for (long i = 0; i < node.NumParams(); ++i) {
        trParamRecord const *r = node.ParamRecord(i);
        if (!r || !r->shouldBeSaved || r->type >= trParamPushButton || r->type == trParamPtr)
            continue;
        if (!node.GetStringFromParam(i, value, &node))
            continue;
        std::string link;
        if (r->type == trParamFile) {
            trFile const *file = static_cast<trFile const *>(r->storage);
            trBase const *target = file->IsNodeLink() ? file->LinkedNode(false) : nullptr;
            if (target)
                link = "  -> " + Text(target->NameAndPath());
            else if (file->IsNodeLink() && value.length)
                link = "  -> (unresolved)";
        }
        std::printf("%s%s = \"%s\"%s%s%s\n", indent.c_str(), r->name, Text(value).c_str(), link.c_str(),
                    node.ParamAnim(i) ? "  (animated)" : "", KeysText(node, i).c_str());
    }
}

void PrintTree(trBase &node, std::string const &indent, long &count)
{
    for (long i = 0; i < node.NumChildren(); ++i) {
        trBase *child = node.Child(i);
        if (!child)
            continue;
        ++count;
        std::printf("%s%s \"%s\"  %s\n", indent.c_str(), Text(child->RegisteredClassName()).c_str(),
                    Text(child->name).c_str(), Text(child->NameAndPath()).c_str());
        PrintParams(*child, indent + "    ");
        PrintTree(*child, indent + "  ", count);
    }
}

// Reads `path` into `root`; gives the root element's name through `rootElement`.
bool ReadProject(std::string const &path, trBase &root, trString &rootElement)
{
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) {
        trError(trString("ostrel: Not a project file but a folder: \"") + trString(path) + "\"");
        return false;
    }
    if (!trBaseXML::ReadRootElementName(path.c_str(), rootElement))
        rootElement = kDefaultRootElement;
    return trBaseXML::ReadFile(root, path.c_str(), rootElement.chars);
}

int RunInfo(std::vector<std::string> const &args)
{
    Options options;
    if (int const status = ParseOptions("info", args, options))
        return status;
    if (options.help) {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (options.positional.size() != 1)
        return UsageError("info needs one project file");
    if (!LoadPluginFolder(options))
        return kExitFailed;
    OstrelProject root;
    trString rootElement;
    bool const ok = ReadProject(options.positional.front(), root, rootElement);
    std::printf("project %s, root element <%s>\n", options.positional.front().c_str(), Text(rootElement).c_str());
    PrintParams(root, "    ");
    long count = 0;
    PrintTree(root, "  ", count);
    std::printf("%ld %s\n", count, count == 1 ? "node" : "nodes");
    return ok ? kExitOk : kExitFailed;
}

int RunResave(std::vector<std::string> const &args)
{
    Options options;
    if (int const status = ParseOptions("resave", args, options))
        return status;
    if (options.help) {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    if (options.positional.size() != 2)
        return UsageError("resave needs an input and an output file");
    if (!LoadPluginFolder(options))
        return kExitFailed;
    OstrelProject root;
    trString rootElement;
    if (!ReadProject(options.positional[0], root, rootElement))
        return kExitFailed;
    root.TakePathsFromManager();
    if (!trBaseXML::WriteProjectFile(options.positional[1].c_str(), root, rootElement.chars))
        return kExitFailed;
    return kExitOk;
}

} // namespace

int main(int argc, char **argv)
{
    InstallCallbacks();
    RegisterHostClasses();
    std::vector<std::string> args(argv + 1, argv + argc);
    if (args.empty()) {
        std::fputs(kUsage, stderr);
        return kExitUsage;
    }
    std::string const command = args.front();
    if (command == "-h" || command == "--help") {
        std::fputs(kUsage, stdout);
        return kExitOk;
    }
    std::vector<std::string> const rest(args.begin() + 1, args.end());
    if (command == "classes")
        return RunClasses(rest);
    if (command == "info")
        return RunInfo(rest);
    if (command == "resave")
        return RunResave(rest);
    return UsageError("unknown command: " + command);
}
