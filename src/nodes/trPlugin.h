#pragma once
// Plug-in support: what a module's entry receives, the SDK version it was built
// against, and the token through which it registers its node classes.
//
// A module exports
//     OSTREL_PLUGIN_EXPORT long trPluginStartup(trPluginStartupInfo *info)
//     {
//         trPluginToken token(info, trPluginSdkVersion(), "Acme Ltd");
//         token.AddClass("shader/", "fancy_shader", Create, Destroy, "");
//         return 1;
//     }
// and returns 0 when it cannot work in this process.

#include "foundation/trString.h"

class trBase;
class trPluginStartupInfo;

// Exports a function of a module even when it is built with hidden visibility.
#define OSTREL_PLUGIN_API __attribute__((visibility("default")))
// The entry of a module, exported with a plain C name.
#define OSTREL_PLUGIN_EXPORT extern "C" OSTREL_PLUGIN_API

using trPluginStartupFunc = long (*)(trPluginStartupInfo *);

// The plain exported name of the entry.
inline constexpr char const trPluginStartupName[] = "trPluginStartup";

class trPluginStartupInfo {
public:
    explicit trPluginStartupInfo(trString const &directory);
    ~trPluginStartupInfo();
    trPluginStartupInfo(trPluginStartupInfo const &) = delete;
    trPluginStartupInfo &operator=(trPluginStartupInfo const &) = delete;

    // The folder the module was loaded from, with its final separator.
    char *PluginDirectory() const;

private:
    trString *directory;
};

class trPluginSdkVersion {
public:
    static constexpr unsigned int kCurrent = 40530;

    trPluginSdkVersion();
    trPluginSdkVersion(trPluginSdkVersion const &other);
    trPluginSdkVersion &operator=(trPluginSdkVersion const &other);
    ~trPluginSdkVersion();

    void SetVersion(unsigned int version);
    unsigned int Version() const;

private:
    unsigned int *version;
};

struct trPluginTokenRecord;

// The registration handle of a plug-in. The process has one current token: a new
// token replaces it, and the current token's destructor ends it.
class trPluginToken {
public:
    trPluginToken(trPluginStartupInfo *info, trPluginSdkVersion const &version, char const *author);
    ~trPluginToken();
    trPluginToken(trPluginToken const &) = delete;
    trPluginToken &operator=(trPluginToken const &) = delete;

    // The pool's AddClass with the current token's prefixes; 0 when there is no token.
    static long AddClass(trString const &classType, trString const &className, trBase *(*create)(),
                         void (*destroy)(trBase *), trString const &displayName);

    // The current token's prefixes; empty when there is none.
    static trString CurrentNamePrefix();
    static trString CurrentDisplayPrefix();

private:
    trPluginTokenRecord *record;
};
