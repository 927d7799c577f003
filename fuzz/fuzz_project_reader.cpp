// Arbitrary bytes through the project reader. Two test classes cover every kind of
// parameter, a node link, and custom data; what was read is written out again and
// read back, and the second reading must write the same text as the first. The bytes
// also go through the blob decoder.

#include "foundation/trColour.h"
#include "foundation/trString.h"
#include "foundation/trVector.h"
#include "nodes/trBase.h"
#include "nodes/trBlobCoding.h"
#include "nodes/trClassPool.h"
#include "nodes/trFile.h"
#include "nodes/trProjectFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

void Check(bool ok)
{
    if (!ok)
        std::abort();
}

class FuzzNode : public trBase {
public:
    FuzzNode()
    {
        Param(i, "i", 3L);
        Param(r, "r", 1.5);
        Param(f, "f", 0.5f);
        Param(v, "v", trVector(1, 2, 3));
        Param(v2, "v2", tr2Vector(4, 5));
        Param(c, "c", trManRgb(0, 0.5f, 0.5f, 0.5f));
        Param(s, "s", trString("text"));
        Param(p, "p", trPtr());
        Param(b, "b", static_cast<unsigned char>(1));
        Param(link, "link", trString());
        Param(file, "file", trString());
    }
    long WriteXMLCustomData(trString indent, trString &out) override
    {
        if (custom.length)
            out = indent + "<blob data=\"" + trString(custom).MakeXMLLegal() + "\" />\n";
        return 1;
    }
    void HandleXMLCustomElement(trString const &element, char const **attributes) override
    {
        if (element == "blob" && attributes && attributes[0] && attributes[1])
            custom = attributes[1];
    }
    void HandleXMLCustomCharacterData(trString const &text) override { seen += text.length; }

    long i = 0;
    double r = 0;
    float f = 0;
    trVector v;
    tr2Vector v2;
    trManRgb c;
    trString s;
    trPtr p;
    unsigned char b = 0;
    trNodeLink link;
    trFileForRead file;
    trString custom;
    long seen = 0;
};

class FuzzRoot : public trBase {
public:
    FuzzRoot()
    {
        SetName("root");
        Param(frame, "current_frame", 1.0);
    }
    double frame = 0;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    // The library reports every message on the console; keep the standard output quiet.
    if (!std::freopen("/dev/null", "w", stdout))
        return 0;
    trClasses.AddClass("test/", "fz", []() -> trBase * { return new FuzzNode; }, [](trBase *n) { delete n; }, "");
    trClasses.AddClass("test/", "fz_group", []() -> trBase * { return new FuzzNode; }, [](trBase *n) { delete n; },
                       "");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    std::string const text(reinterpret_cast<char const *>(data), size);

    trDataBlock block;
    std::uint64_t blobSize = 0;
    long const decoded = trXML::DecodeBlobForXML(text.c_str(), block, blobSize);
    Check(decoded ? blobSize > 0 && block.Data() : blobSize == 0 && !block.Data());
    if (decoded) {
        trString const again = trXML::EncodeBlobForXML(block.Data(), blobSize, 6);
        trDataBlock second;
        std::uint64_t secondSize = 0;
        Check(trXML::DecodeBlobForXML(again.chars, second, secondSize) == 1 && secondSize == blobSize);
    }

    FuzzRoot first;
    bool const ok = trBaseXML::ReadBuffer(first, text.c_str(), "proj");
    trString const written = trBaseXML::GetElement(first, true, "", "proj");
    if (!ok)
        return 0;
    FuzzRoot second;
    Check(trBaseXML::ReadBuffer(second, written.chars, "proj"));
    trString const rewritten = trBaseXML::GetElement(second, true, "", "proj");
    Check(rewritten == written);
    return 0;
}
