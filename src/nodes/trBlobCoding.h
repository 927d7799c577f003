#pragma once
// Binary data inside project files: zlib compression, an 8-byte little-endian length of
// the original, and base64, so that a class can keep a blob in an attribute or in its
// custom block.

#include "foundation/trDataBlock.h"
#include "foundation/trString.h"

#include <cstdint>
#include <memory>

class trXML {
public:
    // Empty text for null data, a size of 0, or any failure of the compression.
    static trString EncodeBlobForXML(void *data, std::uint64_t const &size, int level);
    // 1 with `out` holding `size` bytes; 0 with `out` empty and `size` 0 for null,
    // empty or damaged text.
    static long DecodeBlobForXML(char const *text, trDataBlock &out, std::uint64_t &size);

    // Standard base64 (A-Z, a-z, 0-9, +, /, "=" padding), no line breaks.
    static trString Base64Encode(unsigned char const *bytes, std::uint64_t size);
    // False for a character outside the alphabet or a bad length; white space is skipped.
    static bool Base64Decode(char const *text, std::unique_ptr<unsigned char[]> &bytes, std::uint64_t &size);
};
