#include "nodes/trPlugin.h"

#include "nodes/trClassPool.h"

#include <cstring>

struct trPluginTokenRecord {
    trString namePrefix;
    trString displayPrefix;
};

namespace {

// The one current token record, and the token that made it.
trPluginTokenRecord *currentRecord = nullptr;
trPluginToken const *currentOwner = nullptr;

// The author's text as it may stand in a class name: blanks and the characters
// that a project file would have to escape become "_".
trString SafeAuthor(char const *author)
{
    trString text(author && *author ? author : "User");
    for (long i = 0; i < text.length; ++i) {
        switch (text.chars[i]) {
        case ' ':
        case '&':
        case '<':
        case '>':
        case '\r':
        case '\n':
        case '\t':
        case '"':
            text.chars[i] = '_';
            break;
        default:
            break;
        }
    }
    return text;
}

} // namespace

trPluginStartupInfo::trPluginStartupInfo(trString const &directory) : directory(new trString(directory)) {}

trPluginStartupInfo::~trPluginStartupInfo() { delete directory; }

char *trPluginStartupInfo::PluginDirectory() const { return directory->chars; }

trPluginSdkVersion::trPluginSdkVersion() : version(new unsigned int(kCurrent)) {}

trPluginSdkVersion::trPluginSdkVersion(trPluginSdkVersion const &other)
    : version(new unsigned int(*other.version))
{
}

trPluginSdkVersion &trPluginSdkVersion::operator=(trPluginSdkVersion const &other)
{
    *version = *other.version;
    return *this;
}

trPluginSdkVersion::~trPluginSdkVersion() { delete version; }

void trPluginSdkVersion::SetVersion(unsigned int v) { *version = v; }

unsigned int trPluginSdkVersion::Version() const { return *version; }

trPluginToken::trPluginToken(trPluginStartupInfo *, trPluginSdkVersion const &, char const *author)
    : record(new trPluginTokenRecord)
{
    // This author's classes have always carried their plain names.
    bool const plain = author && std::strcmp(author, "Marrowvane") == 0;
    if (!plain) {
        trString const safe = SafeAuthor(author);
        record->namePrefix = safe + "::";
        record->displayPrefix = trString("(") + safe + ") ";
    }
    delete currentRecord;
    currentRecord = record;
    currentOwner = this;
}

trPluginToken::~trPluginToken()
{
    // A token that a newer one replaced has lost its record already.
    if (currentOwner == this) {
        delete currentRecord;
        currentRecord = nullptr;
        currentOwner = nullptr;
    }
}

long trPluginToken::AddClass(trString const &classType, trString const &className, trBase *(*create)(),
                             void (*destroy)(trBase *), trString const &displayName)
{
    if (!currentRecord)
        return 0;
    trString const display =
        currentRecord->displayPrefix + (displayName.length ? displayName : className.Humanized());
    return trClasses.AddClass(classType, currentRecord->namePrefix + className, create, destroy, display);
}

trString trPluginToken::CurrentNamePrefix() { return currentRecord ? currentRecord->namePrefix : trString(); }

trString trPluginToken::CurrentDisplayPrefix()
{
    return currentRecord ? currentRecord->displayPrefix : trString();
}
