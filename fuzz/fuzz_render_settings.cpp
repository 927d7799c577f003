// Arbitrary bytes read as a project holding the host's render node, its settings nodes
// and render layers, with the command-line host's own registrations. Every create and
// change hook of those classes runs on what the reader makes of the bytes. What was
// read is written out and read back, and the second reading must write the same text:
// a project of settings nodes has to survive a save and a load unchanged.

#include "foundation/trString.h"
#include "nodes/trBase.h"
#include "nodes/trProjectFile.h"

#include "host_classes.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

class FuzzRoot : public trBase {
public:
    FuzzRoot() { SetName("root"); }
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // The library reports every message on the console; keep the standard output quiet.
    if (!std::freopen("/dev/null", "w", stdout))
        return 0;
    RegisterHostClasses();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    std::string const text(reinterpret_cast<char const *>(data), size);
    FuzzRoot first;
    if (!trBaseXML::ReadBuffer(first, text.c_str(), "proj"))
        return 0;
    trString const written = trBaseXML::GetElement(first, true, "", "proj");
    FuzzRoot second;
    if (!trBaseXML::ReadBuffer(second, written.chars, "proj"))
        std::abort();
    if (trBaseXML::GetElement(second, true, "", "proj") != written)
        std::abort();
    return 0;
}
