// ostrel: the command-line host. It links the library like any host would, sets the
// message callbacks, loads plug-ins and reports on the registry.

#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "nodes/trClassPool.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
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

int RunClasses(std::vector<std::string> const &args)
{
    std::string folder;
    bool folderGiven = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if (args[i] == "-h" || args[i] == "--help") {
            std::fputs(kUsage, stdout);
            return kExitOk;
        }
        if (args[i] == "--plugins") {
            if (i + 1 >= args.size())
                return UsageError("--plugins needs a folder");
            folder = args[++i];
            folderGiven = true;
        } else if (args[i].rfind("--plugins=", 0) == 0) {
            folder = args[i].substr(std::strlen("--plugins="));
            folderGiven = true;
        } else {
            return UsageError("classes: unknown argument: " + args[i]);
        }
    }
    if (folderGiven && folder.empty())
        return UsageError("--plugins needs a folder");

    if (!folderGiven) {
        folder = DefaultPluginFolder();
        if (folder.empty()) {
            trError("ostrel: No plug-in folder next to the program; give one with --plugins");
            return kExitFailed;
        }
    }
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        trError(trString("ostrel: Plug-in folder not found: ") + trString(folder));
        return kExitFailed;
    }
    // The pool concatenates names to the folder, so it must end with its separator.
    if (folder.back() != '/')
        folder += '/';

    trClasses.LoadPlugins(trString(folder), "*.svp");
    PrintClasses();
    return numErrors ? kExitFailed : kExitOk;
}

} // namespace

int main(int argc, char **argv)
{
    InstallCallbacks();
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
    if (command == "classes")
        return RunClasses(std::vector<std::string>(args.begin() + 1, args.end()));
    return UsageError("unknown command: " + command);
}
