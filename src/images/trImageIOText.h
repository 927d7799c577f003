#pragma once
// Shared by the image readers and writers: message texts joined in a std::string, so
// that long chains of parts with numbers in them make one allocation and one trString,
// and a file handle closed on every way out.

#include "foundation/trString.h"

#include <cstdio>
#include <string>
#include <type_traits>

namespace trImageIOText {

inline void Append(std::string &out, char const *text) { out += text ? text : ""; }
inline void Append(std::string &out, trString const &text) { out += text.chars ? text.chars : ""; }
template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0> void Append(std::string &out, T value)
{
    out += std::to_string(value);
}

template <class... Parts> trString Join(Parts const &...parts)
{
    std::string out;
    (Append(out, parts), ...);
    return trString(out);
}

} // namespace trImageIOText

// Closes a file on every way out of a reader.
class trFileCloser {
public:
    explicit trFileCloser(std::FILE *f) : file(f) {}
    ~trFileCloser()
    {
        if (file)
            std::fclose(file);
    }
    trFileCloser(trFileCloser const &) = delete;
    trFileCloser &operator=(trFileCloser const &) = delete;

private:
    std::FILE *file;
};
