// Motion files on arbitrary bytes: the first byte picks the parameter, the rest is the
// file. Nothing may crash, and whatever curves come out must be well formed: each list
// in strictly rising frame order, linked both ways, counted right, and the meta keys
// giving exactly the components keyed at each frame.

#include "foundation/trColour.h"
#include "foundation/trMessages.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/trAnimate.h"
#include "nodes/trBase.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

class FuzzNode : public trBase {
public:
    FuzzNode()
    {
        indices[0] = Param(real, "real", 0.5);
        indices[1] = Param(integer, "integer", 3L);
        indices[2] = Param(vector, "vector", trVector(1, 2, 3));
        indices[3] = Param(colour, "colour", trManRgb(0, 0.1f, 0.2f, 0.3f));
        indices[4] = Param(planar, "planar", tr2Vector(4, 5));
        indices[5] = Param(flag, "flag", (unsigned char)1);
        indices[6] = Param(text, "text", trString("x"));
    }
    double real = 0;
    long integer = 0;
    trVector vector;
    trManRgb colour;
    tr2Vector planar;
    unsigned char flag = 0;
    trString text;
    long indices[7] = {};
};

void Check(bool ok)
{
    if (!ok)
        std::abort();
}

void CheckCurves(trAnimate const *a)
{
    if (!a)
        return;
    for (int c = 0; c < trAnimate::kNumComponents; ++c) {
        long n = 0;
        trAnimKey *prev = nullptr;
        for (trAnimKey *k = a->FirstKey(c); k; k = k->Next(), ++n) {
            Check(k->Prev() == prev);
            Check(!prev || prev->Frame() < k->Frame());
            if (a->UsesMetaKeys()) {
                trAnimMetaKey *m = a->FindMetaKeyForFrame(k->Frame());
                Check(m && m->DoYouHaveThisComponent(c));
            }
            prev = k;
        }
        Check(n == a->NumKeys(c));
        for (double f : {-1e9, -1.5, 0.0, 0.5, 7.25, 100.0, 1e9})
            (void)a->GetValue(f, c);
    }
    long n = 0;
    for (trAnimMetaKey *m = a->FirstMetaKey(); m; m = m->NextMeta(), ++n) {
        Check(m->HasComponents());
        for (int c = 0; c < trAnimate::kNumComponents; ++c)
            Check(m->DoYouHaveThisComponent(c) == (a->FindKeyForFrame(c, m->Frame()) != nullptr));
    }
    Check(n == a->NumMetaKeys());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    // The reader takes a path: the input goes into an anonymous memory file.
    static int fd = [] {
        trDoDlgBoxes = 0;
        std::freopen("/dev/null", "w", stdout); // the import's console lines
        return memfd_create("motion", 0);
    }();
    static std::string path = "/proc/self/fd/" + std::to_string(fd);
    static FuzzNode node;
    if (fd < 0 || size == 0)
        return 0;
    long const index = node.indices[data[0] % 7];
    if (ftruncate(fd, 0) != 0 || pwrite(fd, data + 1, size - 1, 0) != ssize_t(size - 1))
        return 0;
    node.ReadParamFile(index, path.c_str());
    CheckCurves(node.ParamAnim(index));
    node.UpdateAllFromAnim(3.5);
    return 0;
}
