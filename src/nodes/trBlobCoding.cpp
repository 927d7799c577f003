#include "nodes/trBlobCoding.h"

#include <zlib.h>

#include <cstring>
#include <new>

namespace {

char const kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

int Base64Value(unsigned char c)
{
    if (c >= 'A' && c <= 'Z')
        return c - 'A';
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 26;
    if (c >= '0' && c <= '9')
        return c - '0' + 52;
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return -1;
}

// Deflate never expands by more than about 1032 to 1, so a stated length beyond that
// is damage, and must not be allowed to ask for an absurd allocation.
constexpr std::uint64_t kMaxInflateRatio = 1040;

} // namespace

trString trXML::Base64Encode(unsigned char const *bytes, std::uint64_t size)
{
    std::string out;
    out.reserve(std::size_t((size + 2) / 3 * 4));
    std::uint64_t i = 0;
    for (; i + 3 <= size; i += 3) {
        unsigned const v = unsigned(bytes[i]) << 16 | unsigned(bytes[i + 1]) << 8 | bytes[i + 2];
        out += kAlphabet[v >> 18 & 63];
        out += kAlphabet[v >> 12 & 63];
        out += kAlphabet[v >> 6 & 63];
        out += kAlphabet[v & 63];
    }
    if (size - i == 1) {
        unsigned const v = unsigned(bytes[i]) << 16;
        out += kAlphabet[v >> 18 & 63];
        out += kAlphabet[v >> 12 & 63];
        out += "==";
    } else if (size - i == 2) {
        unsigned const v = unsigned(bytes[i]) << 16 | unsigned(bytes[i + 1]) << 8;
        out += kAlphabet[v >> 18 & 63];
        out += kAlphabet[v >> 12 & 63];
        out += kAlphabet[v >> 6 & 63];
        out += '=';
    }
    return trString(out);
}

bool trXML::Base64Decode(char const *text, std::unique_ptr<unsigned char[]> &bytes, std::uint64_t &size)
{
    bytes.reset();
    size = 0;
    if (!text)
        return false;
    std::size_t const n = std::strlen(text);
    std::unique_ptr<unsigned char[]> out(new (std::nothrow) unsigned char[n / 4 * 3 + 3]);
    if (!out)
        return false;
    std::uint64_t count = 0;
    unsigned accumulator = 0;
    int bits = 0, symbols = 0, padding = 0;
    for (std::size_t i = 0; i < n; ++i) {
        unsigned char const c = static_cast<unsigned char>(text[i]);
        if (c == ' ' || c == '\t' || c == '\n' || c == '\r')
            continue;
        if (c == '=') {
            ++padding;
            ++symbols;
            continue;
        }
        int const v = Base64Value(c);
        if (v < 0 || padding)
            return false; // data after padding, or outside the alphabet
        accumulator = (accumulator << 6 | unsigned(v)) & 0xffffff;
        bits += 6;
        ++symbols;
        if (bits >= 8) {
            bits -= 8;
            out[count++] = static_cast<unsigned char>(accumulator >> bits & 0xff);
        }
    }
    if (symbols % 4 != 0 || padding > 2)
        return false;
    bytes = std::move(out);
    size = count;
    return true;
}

trString trXML::EncodeBlobForXML(void *data, std::uint64_t const &size, int level)
{
    if (!data || size == 0)
        return trString();
    uLong const capacity = uLong(size + (size / 100) * 2 + 12);
    if (std::uint64_t(capacity) < size)
        return trString();
    std::unique_ptr<unsigned char[]> buffer(new (std::nothrow) unsigned char[8 + capacity]);
    if (!buffer)
        return trString();
    uLongf compressedSize = capacity;
    if (compress2(buffer.get() + 8, &compressedSize, static_cast<Bytef const *>(data), uLong(size), level) != Z_OK)
        return trString();
    for (int i = 0; i < 8; ++i)
        buffer[i] = static_cast<unsigned char>(size >> (8 * i) & 0xff);
    return Base64Encode(buffer.get(), 8 + std::uint64_t(compressedSize));
}

long trXML::DecodeBlobForXML(char const *text, trDataBlock &out, std::uint64_t &size)
{
    auto fail = [&]() {
        out.Reset();
        size = 0;
        return 0L;
    };
    if (!text)
        return fail();
    std::unique_ptr<unsigned char[]> raw;
    std::uint64_t rawSize = 0;
    if (!Base64Decode(text, raw, rawSize) || rawSize <= 8)
        return fail();
    std::uint64_t stated = 0;
    for (int i = 0; i < 8; ++i)
        stated |= std::uint64_t(raw[i]) << (8 * i);
    std::uint64_t const compressed = rawSize - 8;
    if (stated == 0 || stated > compressed * kMaxInflateRatio + 64 || uLong(stated) != stated)
        return fail();
    unsigned char *bytes = new (std::nothrow) unsigned char[stated];
    if (!bytes)
        return fail();
    out.Reset(bytes);
    uLongf produced = uLongf(stated);
    if (uncompress(bytes, &produced, raw.get() + 8, uLong(compressed)) != Z_OK || produced != stated)
        return fail();
    size = stated;
    return 1;
}
