#pragma once
// Message texts of the image readers and writers, joined in a std::string so that long
// chains of parts with numbers in them make one allocation and one trString.

#include "foundation/trString.h"

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
