#pragma once
// The text type of the library: 8-bit bytes, NUL-terminated, copied by value.
// Texts of up to 30 bytes live inline, so names and parameter values never touch
// the heap; `chars` always points at the current text so readers never branch.

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

class trVector;
class tr2Vector;
class trBoundingBox;

class trString {
public:
    // Texts shorter than this live in the inline buffer; this long or longer, on the heap.
    static constexpr long ms_maxSmallStringSize = 31;

    // The members are public and in this order on purpose: the layout is part of the
    // library's binary interface (64 bytes).
    union {
        char buffer[32]; // the inline text
        char *heap;      // the heap block, when the text is long
    };
    long length;           // bytes, without the terminator
    long capacity;         // 31 for inline text, else the block's size less one
    unsigned char isSmall; // 1 when the text is inline
    char *chars;           // the current text, inline or on the heap

    trString() noexcept { InitInline(); }
    trString(char const *text)
    {
        if (text)
            Construct(text, static_cast<long>(std::strlen(text)));
        else
            InitInline();
    }
    trString(trString const &other)
    {
        if (other.isSmall)
            CopyInline(other);
        else
            Construct(other.chars, other.length);
    }
    trString(trString &&other) noexcept { Steal(other); }
    trString(std::string const &text) { Construct(text.data(), static_cast<long>(text.size())); }
    // Formatted with "%.6g".
    trString(double const &value);

    ~trString()
    {
        if (!isSmall)
            FreeHeap();
        // A destroyed string reads as a null one, so that a late reader (a static
        // destructor, say) sees an empty text rather than freed memory.
        length = 0;
        capacity = 0;
        isSmall = 1;
        buffer[0] = 0;
        chars = nullptr;
        __asm__ __volatile__("" : : "r"(this) : "memory");
    }

    trString &operator=(trString const &other)
    {
        if (this != &other) {
            if (other.isSmall) {
                if (!isSmall)
                    FreeHeap();
                CopyInline(other);
            } else {
                Assign(other.chars, other.length);
            }
        }
        return *this;
    }
    trString &operator=(trString &&other) noexcept
    {
        if (this != &other) {
            if (!isSmall)
                FreeHeap();
            Steal(other);
        }
        return *this;
    }
    // A null text assigns the empty text.
    trString &operator=(char const *text)
    {
        if (text)
            Assign(text, static_cast<long>(std::strlen(text)));
        else
            Assign("", 0);
        return *this;
    }
    trString &operator=(std::string const &text)
    {
        Assign(text.data(), static_cast<long>(text.size()));
        return *this;
    }

    // Storage.
    // Prepares for a text of `size` bytes, discarding the old text; a heap block is
    // kept only when it is big enough and not more than twice too big. The new text
    // is terminated at `size` but otherwise undefined.
    void SetupStorage(long size);
    // A zero-filled text of n bytes for the caller to write into; returns 1.
    long Reserve(long n);
    // Frees any heap block and leaves the empty inline text.
    void Init();

    long Length() const { return length; }
    long Size() const { return length; }

    // Concatenation.
    trString &operator+=(char const *text)
    {
        if (text)
            AppendBytes(text, static_cast<long>(std::strlen(text)));
        return *this;
    }
    trString &operator+=(trString const &text)
    {
        AppendBytes(text.chars, text.length);
        return *this;
    }
    trString &Append(char c)
    {
        AppendBytes(&c, 1);
        return *this;
    }
    // Without these a char would append the number it converts to through double.
    trString &operator+=(char c) { return Append(c); }
    trString operator+(char c) const
    {
        trString result(*this);
        result.Append(c);
        return result;
    }
    trString operator+(char const *text) const
    {
        trString result(*this);
        result += text;
        return result;
    }
    trString operator+(trString const &text) const
    {
        trString result(*this);
        result += text;
        return result;
    }

    // Formatting; each replaces the text. A format must hold at most one conversion of
    // the argument's kind (length modifiers are supplied here); a null format means
    // "%ld" and "%.10g". A bad format is reported and the default used instead.
    trString &SetInt(long const &value, char const *format = nullptr);
    trString &SetDouble(double const &value, char const *format = nullptr);
    // A distance in metres, printed in "Mm", "km", "m" or "mm" after a space.
    trString &SetMetric(double const &metres, char const *format = nullptr);
    // The same, with about `digits` significant digits.
    trString &SetMetric(double const &metres, int digits);

    // Conversions. The in-place forms return this string.
    int ToInt32() const;
    trString &ToUpper();
    trString &ToLower();
    trString &Trim();
    trString &TrimLeft();
    // Keeps up to the last non-blank; a text of blanks only keeps its first byte.
    trString &TrimRight();
    // First byte upper case, "_" to blank: "render_layer" gives "Render layer".
    trString Humanized() const;
    trString SubString(int start, int count) const;
    // The text after the last ".", or empty when there is none.
    trString Extension(bool lowerCase = false, bool withDot = false) const;
    // This text, with `ext` (dot included) appended unless it already ends with it.
    trString WithExtension(trString const &ext) const;
    // Substitutes the frame for every "%d" and "%01d" to "%09d".
    trString WithFrameNumber(long frame) const;
    // Escapes & < > CR LF TAB and the double quote as XML entities.
    trString &MakeXMLLegal();
    // Replaces every occurrence of `from`; the last argument is not used.
    trString &ReplaceInPlace(trString const &from, trString const &to, int unused = 0);

    // Searching. An empty pattern never matches.
    bool BeginsWith(trString const &text, bool caseSensitive = true) const;
    bool EndsWith(trString const &text, bool caseSensitive = true) const;
    // The byte position of the first (last) occurrence; -1 when absent, 0 for an
    // empty pattern.
    bool FindLeftmost(trString const &text, int &position) const;
    bool FindRightmost(trString const &text, int &position) const;
    bool Contains(trString const &text) const;
    bool Contains(trString const &text, bool caseSensitive) const;

private:
    void InitInline() noexcept
    {
        buffer[0] = 0;
        length = 0;
        capacity = ms_maxSmallStringSize;
        isSmall = 1;
        chars = buffer;
    }
    // A fixed 32-byte copy: the whole inline buffer, terminator included.
    void CopyInline(trString const &other) noexcept
    {
        std::memcpy(buffer, other.buffer, sizeof buffer);
        length = other.length;
        capacity = ms_maxSmallStringSize;
        isSmall = 1;
        chars = buffer;
    }
    void Steal(trString &other) noexcept
    {
        std::memcpy(buffer, other.buffer, sizeof buffer);
        length = other.length;
        capacity = other.capacity;
        isSmall = other.isSmall;
        chars = isSmall ? buffer : heap;
        other.InitInline();
    }
    void Construct(char const *text, long n)
    {
        if (n < ms_maxSmallStringSize) {
            std::memcpy(buffer, text, static_cast<std::size_t>(n));
            buffer[n] = 0;
            length = n;
            capacity = ms_maxSmallStringSize;
            isSmall = 1;
            chars = buffer;
        } else {
            ConstructHeap(text, n);
        }
    }
    void Assign(char const *text, long n)
    {
        bool const keepInline = isSmall && n < ms_maxSmallStringSize;
        // A heap block that still fits and is not more than twice too big is reused.
        bool const keepBlock =
            !isSmall && n >= ms_maxSmallStringSize && n <= capacity && 2 * n >= capacity;
        if (keepInline || keepBlock) {
            std::memmove(chars, text, static_cast<std::size_t>(n));
            chars[n] = 0;
            length = n;
        } else {
            AssignSlow(text, n);
        }
    }
    void AppendBytes(char const *text, long n)
    {
        if (n <= 0)
            return;
        long const total = length + n;
        // Below 31 bytes the text always fits where it is (inline, or a larger block).
        if (total < ms_maxSmallStringSize) {
            std::memmove(chars + length, text, static_cast<std::size_t>(n));
            chars[total] = 0;
            length = total;
        } else {
            AppendSlow(text, n);
        }
    }
    void ConstructHeap(char const *text, long n);
    void AssignSlow(char const *text, long n);
    void AppendSlow(char const *text, long n);
    void FreeHeap() noexcept;
};

static_assert(sizeof(trString) == 64, "trString is 64 bytes");
static_assert(offsetof(trString, length) == 32 && offsetof(trString, capacity) == 40 &&
                  offsetof(trString, isSmall) == 48 && offsetof(trString, chars) == 56,
              "trString member layout");

trString operator+(char const *left, trString const &right);

// Byte-exact equality; a null text on either side reads as empty.
inline bool operator==(trString const &a, trString const &b)
{
    return a.length == b.length &&
           (a.length == 0 || std::memcmp(a.chars, b.chars, static_cast<std::size_t>(a.length)) == 0);
}
inline bool operator==(trString const &a, char const *b)
{
    return std::strcmp(a.chars ? a.chars : "", b ? b : "") == 0;
}
inline bool operator==(char const *a, trString const &b) { return b == a; }
inline bool operator!=(trString const &a, trString const &b) { return !(a == b); }
inline bool operator!=(trString const &a, char const *b) { return !(a == b); }
inline bool operator!=(char const *a, trString const &b) { return !(b == a); }
// Unsigned byte order.
inline bool operator<(trString const &a, trString const &b)
{
    return std::strcmp(a.chars ? a.chars : "", b.chars ? b.chars : "") < 0;
}
// Not the mirror of <: equal strings also give true, which callers rely on.
inline bool operator>(trString const &a, trString const &b)
{
    return std::strcmp(a.chars ? a.chars : "", b.chars ? b.chars : "") >= 0;
}

// Replaces every non-overlapping occurrence of `from`, left to right, without
// rescanning what was put in.
trString trStringReplace(trString const &text, trString const &from, trString const &to);
// Replaces in a caller's buffer, rescanning after each replacement. The buffer must
// hold `size` bytes, or with size <= 0, the text + from + to + 1; a result that would
// not fit stops the replacing with an error message.
void trStringReplace(char *text, char const *from, char const *to, int size);
// Pieces between occurrences of the first byte of `delimiter`, empty ones included,
// but none after a final delimiter. With trim 1 each piece is trimmed.
std::vector<trString> trStringTokenise(trString const &text, trString const &delimiter,
                                       unsigned char trim);
// `path` keeps the last "/" or "\"; with none it is empty. An empty `full` changes nothing.
void trExtractFilePathAndName(trString const &full, trString &path, trString &name);
// Split at the last "."; with none, `name` is `full` and `ext` empty. An empty `full`
// changes nothing.
void trExtractFileNameAndExtension(trString const &full, trString &name, trString &ext);
// The line end of text files: "\r\n".
char const *trEOL();

// "true" or "false".
trString trToString(unsigned char value);
trString trToString(void *value);
trString trToString(char const *value);
trString trToString(trString const &value);
// Components by "%.10g", separated by blanks; a box gives lo then hi.
trString trToString(trVector const &value);
trString trToString(tr2Vector const &value);
trString trToString(trBoundingBox const &value);
