#include "foundation/trString.h"

#include "foundation/trBoundingBox.h"
#include "foundation/trMessages.h"
#include "foundation/trVector.h"

#include <algorithm>
#include <cctype>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>
#include <strings.h>

namespace {

std::string_view View(trString const &text)
{
    return std::string_view(text.chars ? text.chars : "", static_cast<std::size_t>(text.length));
}

char *NewBlock(long size) { return static_cast<char *>(::operator new(static_cast<std::size_t>(size) + 1)); }

// Shared by the members below; a file-local copy so that calls within the library
// don't go through the interposable exported symbol.
void PrepareStorage(trString &s, long size)
{
    if (size < 0)
        size = 0;
    if (size < trString::ms_maxSmallStringSize) {
        if (!s.isSmall)
            ::operator delete(s.heap);
        s.isSmall = 1;
        s.capacity = trString::ms_maxSmallStringSize;
        s.chars = s.buffer;
    } else {
        bool const keep = !s.isSmall && size <= s.capacity && 2 * size >= s.capacity;
        if (!keep) {
            char *block = NewBlock(size);
            if (!s.isSmall)
                ::operator delete(s.heap);
            s.heap = block;
            s.capacity = size;
            s.isSmall = 0;
        }
        s.chars = s.heap;
    }
    s.length = size;
    s.chars[size] = 0;
}

trString FromBytes(char const *text, long n)
{
    trString result;
    PrepareStorage(result, n);
    std::memcpy(result.chars, text, static_cast<std::size_t>(n));
    return result;
}

enum class trArgKind { integer, real };

// Checks that a caller's format holds at most one conversion and that it suits the
// argument, and rewrites it with the length modifier that argument needs, so that
// "%04d" works for a long. Widths and precisions are kept below 1000.
bool AdaptFormat(char const *format, trArgKind kind, std::string &out)
{
    out.clear();
    int conversions = 0;
    for (char const *p = format; *p; ++p) {
        if (*p != '%') {
            out += *p;
            continue;
        }
        if (p[1] == '%') {
            out += "%%";
            ++p;
            continue;
        }
        out += *p++;
        while (*p && std::strchr("-+ #0", *p))
            out += *p++;
        int digits = 0;
        while (std::isdigit(static_cast<unsigned char>(*p))) {
            if (++digits > 3)
                return false;
            out += *p++;
        }
        if (*p == '.') {
            out += *p++;
            digits = 0;
            while (std::isdigit(static_cast<unsigned char>(*p))) {
                if (++digits > 3)
                    return false;
                out += *p++;
            }
        }
        while (*p && std::strchr("hlLqjzt", *p))
            ++p;
        char const c = *p;
        if (!c || ++conversions > 1)
            return false;
        if (kind == trArgKind::integer) {
            if (!std::strchr("diouxX", c))
                return false;
            out += 'l';
        } else if (!std::strchr("fFeEgGaA", c)) {
            return false;
        }
        out += c;
    }
    return true;
}

template <class T>
void PrintValue(trString &text, char const *format, T value)
{
    char local[128];
    int const n = std::snprintf(local, sizeof local, format, value);
    if (n < 0) {
        text.Init();
    } else if (n < static_cast<int>(sizeof local)) {
        text = local;
    } else {
        text.Reserve(n);
        std::snprintf(text.chars, static_cast<std::size_t>(n) + 1, format, value);
    }
}

// The caller's format made safe, or the fallback with a message naming the operation.
char const *CheckedFormat(char const *format, trArgKind kind, char const *fallback,
                          char const *operation, std::string &adapted)
{
    if (!format)
        return fallback;
    if (AdaptFormat(format, kind, adapted))
        return adapted.c_str();
    trOutError(trString(operation) + ": bad format \"" + format + "\", expected at most one " +
               (kind == trArgKind::integer ? "integer" : "real") + " conversion; using \"" +
               fallback + "\"");
    return fallback;
}

struct trMetricUnit {
    double scale;
    char const *unit;
    bool large; // the two top rows print no decimals by default
};

trMetricUnit MetricUnit(double metres)
{
    double const magnitude = std::fabs(metres);
    if (magnitude >= 1e9)
        return {1e-6, "Mm", true};
    if (magnitude >= 1e6)
        return {0.001, "km", true};
    if (magnitude >= 1000.0)
        return {0.001, "km", false};
    if (magnitude < 1.0)
        return {1000.0, "mm", false};
    return {1.0, "m", false};
}

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

char FoldAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

} // namespace

// Storage.

void trString::FreeHeap() noexcept { ::operator delete(heap); }

void trString::SetupStorage(long size) { PrepareStorage(*this, size); }

long trString::Reserve(long n)
{
    PrepareStorage(*this, n);
    std::memset(chars, 0, static_cast<std::size_t>(length) + 1);
    return 1;
}

void trString::Init()
{
    if (!isSmall)
        FreeHeap();
    InitInline();
}

void trString::ConstructHeap(char const *text, long n)
{
    heap = NewBlock(n);
    std::memcpy(heap, text, static_cast<std::size_t>(n));
    heap[n] = 0;
    length = n;
    capacity = n;
    isSmall = 0;
    chars = heap;
}

void trString::AssignSlow(char const *text, long n)
{
    auto const from = reinterpret_cast<std::uintptr_t>(text);
    auto const own = reinterpret_cast<std::uintptr_t>(chars);
    if (chars && from >= own && from <= own + static_cast<std::uintptr_t>(length)) {
        // A piece of this very text, and the storage changes: go through a copy,
        // since setting up storage may free the source.
        trString copy;
        copy.Construct(text, n);
        *this = static_cast<trString &&>(copy);
        return;
    }
    PrepareStorage(*this, n);
    std::memcpy(chars, text, static_cast<std::size_t>(n));
}

void trString::AppendSlow(char const *text, long n)
{
    long const total = length + n;
    if (!isSmall && total <= capacity) {
        std::memmove(heap + length, text, static_cast<std::size_t>(n));
        heap[total] = 0;
        length = total;
        return;
    }
    // Exact when leaving the inline buffer, doubling after that, so that appending
    // byte by byte stays linear.
    long const newCapacity = isSmall ? total : std::max(total, 2 * capacity);
    char *block = NewBlock(newCapacity);
    std::memcpy(block, chars, static_cast<std::size_t>(length));
    std::memcpy(block + length, text, static_cast<std::size_t>(n)); // text may be our own
    block[total] = 0;
    if (!isSmall)
        FreeHeap();
    heap = block;
    capacity = newCapacity;
    isSmall = 0;
    chars = heap;
    length = total;
}

trString::trString(double const &value)
{
    char text[64];
    int const n = std::snprintf(text, sizeof text, "%.6g", value);
    Construct(text, std::clamp(n, 0, static_cast<int>(sizeof text) - 1));
}

trString operator+(char const *left, trString const &right)
{
    long const n = left ? static_cast<long>(std::strlen(left)) : 0;
    trString result;
    PrepareStorage(result, n + right.length);
    std::memcpy(result.chars, left, static_cast<std::size_t>(n));
    std::memcpy(result.chars + n, right.chars, static_cast<std::size_t>(right.length));
    return result;
}

// Formatting.

trString &trString::SetInt(long const &value, char const *format)
{
    std::string adapted;
    PrintValue(*this, CheckedFormat(format, trArgKind::integer, "%ld", "SetInt", adapted), value);
    return *this;
}

trString &trString::SetDouble(double const &value, char const *format)
{
    std::string adapted;
    PrintValue(*this, CheckedFormat(format, trArgKind::real, "%.10g", "SetDouble", adapted), value);
    return *this;
}

trString &trString::SetMetric(double const &metres, char const *format)
{
    trMetricUnit const unit = MetricUnit(metres);
    char const *fallback = unit.large ? "%.0f" : "%.2f";
    std::string adapted;
    PrintValue(*this, CheckedFormat(format, trArgKind::real, fallback, "SetMetric", adapted),
               metres * unit.scale);
    *this += ' ';
    *this += unit.unit;
    return *this;
}

trString &trString::SetMetric(double const &metres, int digits)
{
    trMetricUnit const unit = MetricUnit(metres);
    double const value = metres * unit.scale;
    double const magnitude = std::fabs(value);
    // Each integer digit of the scaled value uses up one significant digit.
    double power = 1.0;
    while (digits > 0 && magnitude > power) {
        --digits;
        power *= 10.0;
    }
    // No three-decimal form: 2 and 3 both print two decimals.
    static char const *const formats[10] = {"%.0f", "%.1f", "%.2f", "%.2f", "%.4f",
                                            "%.5f", "%.6f", "%.7f", "%.8f", "%.9f"};
    PrintValue(*this, formats[std::clamp(digits, 0, 9)], value);
    *this += ' ';
    *this += unit.unit;
    return *this;
}

// Conversions.

int trString::ToInt32() const
{
    if (!chars || length == 0)
        return 0;
    long long const value = std::strtoll(chars, nullptr, 10);
    return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

trString &trString::ToUpper()
{
    for (long i = 0; i < length; ++i)
        chars[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(chars[i])));
    return *this;
}

trString &trString::ToLower()
{
    for (long i = 0; i < length; ++i)
        chars[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(chars[i])));
    return *this;
}

trString &trString::Trim()
{
    TrimLeft();
    return TrimRight();
}

trString &trString::TrimLeft()
{
    long first = 0;
    while (first < length && IsBlank(chars[first]))
        ++first;
    if (first > 0)
        Assign(chars + first, length - first);
    return *this;
}

trString &trString::TrimRight()
{
    if (length == 0)
        return *this;
    long last = length - 1;
    while (last > 0 && IsBlank(chars[last]))
        --last;
    // With no non-blank at all, `last` stops at 0 and the first byte stays.
    if (last + 1 < length)
        Assign(chars, last + 1);
    return *this;
}

trString trString::Humanized() const
{
    trString result(*this);
    if (result.length == 0)
        return result;
    result.chars[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(result.chars[0])));
    for (long i = 0; i < result.length; ++i)
        if (result.chars[i] == '_')
            result.chars[i] = ' ';
    return result;
}

trString trString::SubString(int start, int count) const
{
    if (start < 0 || count < 1 || length == 0 || start > length)
        return trString();
    long const available = length - start;
    long const n = static_cast<long>(
        strnlen(chars + start, static_cast<std::size_t>(std::min<long>(count, available))));
    return FromBytes(chars + start, n);
}

trString trString::Extension(bool lowerCase, bool withDot) const
{
    std::string_view const text = View(*this);
    std::size_t const dot = text.rfind('.');
    if (dot == std::string_view::npos)
        return trString();
    std::size_t const from = withDot ? dot : dot + 1;
    trString result = FromBytes(text.data() + from, static_cast<long>(text.size() - from));
    if (lowerCase)
        result.ToLower();
    return result;
}

trString trString::WithExtension(trString const &ext) const
{
    if (EndsWith(ext, false))
        return *this;
    return *this + ext;
}

trString trString::WithFrameNumber(long frame) const
{
    static char const *const patterns[10] = {"%d",   "%01d", "%02d", "%03d", "%04d",
                                             "%05d", "%06d", "%07d", "%08d", "%09d"};
    static char const *const printing[10] = {"%ld",   "%01ld", "%02ld", "%03ld", "%04ld",
                                             "%05ld", "%06ld", "%07ld", "%08ld", "%09ld"};
    trString result(*this);
    if (length == 0 || !std::memchr(chars, '%', static_cast<std::size_t>(length)))
        return result;
    for (int i = 0; i < 10; ++i) {
        if (View(result).find(patterns[i]) == std::string_view::npos)
            continue;
        char printed[32];
        std::snprintf(printed, sizeof printed, printing[i], frame);
        if (std::strcmp(printed, patterns[i]) != 0)
            result = trStringReplace(result, patterns[i], printed);
    }
    return result;
}

trString &trString::MakeXMLLegal()
{
    // One pass gives what the chain "&", "<", ">", CR, LF, TAB, quote would: the
    // ampersand goes first there, and no entity holds a later character.
    auto entity = [](char c) -> char const * {
        switch (c) {
        case '&': return "&amp;";
        case '<': return "&lt;";
        case '>': return "&gt;";
        case '\r': return "&#xD;";
        case '\n': return "&#xA;";
        case '\t': return "&#x9;";
        case '"': return "&quot;";
        default: return nullptr;
        }
    };
    long extra = 0;
    for (long i = 0; i < length; ++i)
        if (char const *e = entity(chars[i]))
            extra += static_cast<long>(std::strlen(e)) - 1;
    if (extra == 0)
        return *this;
    trString result;
    PrepareStorage(result, length + extra);
    char *out = result.chars;
    for (long i = 0; i < length; ++i) {
        if (char const *e = entity(chars[i])) {
            std::size_t const n = std::strlen(e);
            std::memcpy(out, e, n);
            out += n;
        } else {
            *out++ = chars[i];
        }
    }
    *this = static_cast<trString &&>(result);
    return *this;
}

trString &trString::ReplaceInPlace(trString const &from, trString const &to, int)
{
    *this = trStringReplace(*this, from, to);
    return *this;
}

// Searching.

bool trString::BeginsWith(trString const &text, bool caseSensitive) const
{
    if (text.length == 0 || text.length > length)
        return false;
    if (caseSensitive)
        return std::memcmp(chars, text.chars, static_cast<std::size_t>(text.length)) == 0;
    for (long i = 0; i < text.length; ++i)
        if (FoldAscii(chars[i]) != FoldAscii(text.chars[i]))
            return false;
    return true;
}

bool trString::EndsWith(trString const &text, bool caseSensitive) const
{
    if (text.length == 0 || text.length > length)
        return false;
    char const *tail = chars + (length - text.length);
    if (caseSensitive)
        return std::memcmp(tail, text.chars, static_cast<std::size_t>(text.length)) == 0;
    return strcasecmp(tail, text.chars) == 0;
}

bool trString::FindLeftmost(trString const &text, int &position) const
{
    position = 0;
    if (text.length == 0)
        return false;
    std::size_t const at = View(*this).find(View(text));
    if (at == std::string_view::npos) {
        position = -1;
        return false;
    }
    position = static_cast<int>(at);
    return true;
}

bool trString::FindRightmost(trString const &text, int &position) const
{
    position = 0;
    if (text.length == 0)
        return false;
    std::size_t const at = View(*this).rfind(View(text));
    if (at == std::string_view::npos) {
        position = -1;
        return false;
    }
    position = static_cast<int>(at);
    return true;
}

bool trString::Contains(trString const &text) const
{
    return text.length != 0 && View(*this).find(View(text)) != std::string_view::npos;
}

bool trString::Contains(trString const &text, bool caseSensitive) const
{
    if (caseSensitive)
        return Contains(text);
    trString lowText(*this);
    trString lowPattern(text);
    lowText.ToLower();
    lowPattern.ToLower();
    return lowText.Contains(lowPattern);
}

// Free functions.

trString trStringReplace(trString const &text, trString const &from, trString const &to)
{
    // An empty `from` has no occurrences to replace.
    if (text.length == 0 || from.length == 0 || from == to)
        return text;
    std::string_view const source = View(text);
    std::string_view const pattern = View(from);
    long count = 0;
    for (std::size_t at = source.find(pattern); at != std::string_view::npos;
         at = source.find(pattern, at + pattern.size()))
        ++count;
    if (count == 0)
        return text;
    trString result;
    PrepareStorage(result, text.length + count * (to.length - from.length));
    char *out = result.chars;
    std::size_t done = 0;
    for (std::size_t at = source.find(pattern); at != std::string_view::npos;
         at = source.find(pattern, at + pattern.size())) {
        std::memcpy(out, source.data() + done, at - done);
        out += at - done;
        std::memcpy(out, to.chars, static_cast<std::size_t>(to.length));
        out += to.length;
        done = at + pattern.size();
    }
    std::memcpy(out, source.data() + done, source.size() - done);
    return result;
}

void trStringReplace(char *text, char const *from, char const *to, int size)
{
    if (!text || !from || !to || !*from || std::strcmp(from, to) == 0)
        return;
    std::size_t const fromLength = std::strlen(from);
    std::size_t const toLength = std::strlen(to);
    std::size_t textLength = std::strlen(text);
    std::size_t const limit =
        size > 0 ? static_cast<std::size_t>(size) : textLength + fromLength + toLength + 1;
    std::size_t start = 0;
    while (char *found = std::strstr(text + start, from)) {
        std::size_t const at = static_cast<std::size_t>(found - text);
        std::size_t const newLength = textLength - fromLength + toLength;
        if (newLength + 1 > limit) {
            trOutError(trString("trStringReplace: replacing \"") + from + "\" by \"" + to +
                       "\" needs more than the " + trString().SetInt(static_cast<long>(limit)) +
                       " bytes given; stopped");
            return;
        }
        std::memmove(found + toLength, found + fromLength, textLength - at - fromLength + 1);
        std::memcpy(found, to, toLength);
        textLength = newLength;
        // Rescanning from the start finds nothing before this point that doesn't
        // overlap what was just put in, so the scan resumes just before it.
        start = at >= fromLength ? at - fromLength + 1 : 0;
    }
}

std::vector<trString> trStringTokenise(trString const &text, trString const &delimiter,
                                       unsigned char trim)
{
    std::vector<trString> pieces;
    if (text.length == 0 || delimiter.length == 0)
        return pieces;
    char const cut = delimiter.chars[0];
    long start = 0;
    for (long i = 0; i < text.length; ++i) {
        if (text.chars[i] == cut) {
            pieces.push_back(FromBytes(text.chars + start, i - start));
            start = i + 1;
        }
    }
    if (start < text.length)
        pieces.push_back(FromBytes(text.chars + start, text.length - start));
    if (trim == 1)
        for (trString &piece : pieces)
            piece.Trim();
    return pieces;
}

void trExtractFilePathAndName(trString const &full, trString &path, trString &name)
{
    if (full.length == 0)
        return;
    long separator = full.length - 1;
    while (separator >= 0 && full.chars[separator] != '/' && full.chars[separator] != '\\')
        --separator;
    // Built apart first: `full` may be one of the outputs.
    trString newPath = FromBytes(full.chars, separator + 1);
    trString newName = FromBytes(full.chars + separator + 1, full.length - separator - 1);
    path = static_cast<trString &&>(newPath);
    name = static_cast<trString &&>(newName);
}

void trExtractFileNameAndExtension(trString const &full, trString &name, trString &ext)
{
    if (full.length == 0)
        return;
    std::size_t const dot = View(full).rfind('.');
    if (dot == std::string_view::npos) {
        trString newName(full);
        name = static_cast<trString &&>(newName);
        ext.Init();
        return;
    }
    long const at = static_cast<long>(dot);
    trString newName = FromBytes(full.chars, at);
    trString newExt = FromBytes(full.chars + at + 1, full.length - at - 1);
    name = static_cast<trString &&>(newName);
    ext = static_cast<trString &&>(newExt);
}

char const *trEOL() { return "\r\n"; }

trString trToString(unsigned char value) { return trString(value ? "true" : "false"); }

trString trToString(void *value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", value);
    return trString(text);
}

trString trToString(char const *value) { return trString(value); }

trString trToString(trString const &value) { return value; }

trString trToString(trVector const &value)
{
    char text[96];
    std::snprintf(text, sizeof text, "%.10g %.10g %.10g", value.x, value.y, value.z);
    return trString(text);
}

trString trToString(tr2Vector const &value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.10g %.10g", value.x, value.y);
    return trString(text);
}

trString trToString(trBoundingBox const &value)
{
    return trToString(value.lo) + " " + trToString(value.hi);
}
