// Parameter text on arbitrary bytes: every parameter type is written from the text and
// read back, as a project load does. Nothing may crash, and a read-back must parse again.

#include "foundation/trColour.h"
#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/trBase.h"
#include "nodes/trFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

class FuzzNode : public trBase {
public:
    FuzzNode()
    {
        Param(integer, "integer", 3L);
        Param(real, "real", 0.5);
        Param(single, "single", 0.25f);
        Param(vector, "vector", trVector(1, 2, 3));
        Param(planar, "planar", tr2Vector(4, 5));
        Param(colour, "colour", trManRgb(0, 0.1f, 0.2f, 0.3f));
        Param(text, "text", trString("x"));
        Param(pointer, "pointer", trPtr());
        Param(flag, "flag", (unsigned char)1);
        Param(file, "file", trString(""));
        Param(link, "link", trString(""));
    }
    long integer = 0;
    double real = 0;
    float single = 0;
    trVector vector;
    tr2Vector planar;
    trManRgb colour;
    trString text;
    trPtr pointer;
    unsigned char flag = 0;
    trFile file;
    trNodeLink link;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    static bool quiet = [] {
        trDoDlgBoxes = 0;
        return true;
    }();
    (void)quiet;
    static FuzzNode root;
    std::string bytes(reinterpret_cast<char const *>(data), size);
    trString input(bytes.c_str());
    for (long index = 0; index < root.NumParams(); ++index) {
        root.SetParamFromString(index, input, trWhoSystem);
        trString back;
        if (root.GetStringFromParam(index, back, trWhoSystem) && index != 1) {
            // What was printed must read again (the name, index 1, is made unique instead).
            if (root.ParamType(index) != trParamPtr && !root.SetParamFromString(index, back, trWhoSystem))
                std::abort();
        }
    }
    return 0;
}
