#include "foundation/trHostServices.h"

#include "foundation/trString.h"

#include <filesystem>
#include <system_error>

namespace {
trBase *scriptNode = nullptr;
}

bool trCheckFileExists(trString const &path)
{
    if (!path.chars || !path.chars[0])
        return false;
    std::error_code error;
    return std::filesystem::is_regular_file(std::filesystem::path(path.chars), error);
}

trBase *trScriptNode()
{
    return scriptNode;
}

trBase *trSetScriptNode(trBase *node)
{
    trBase *previous = scriptNode;
    scriptNode = node;
    return previous;
}
