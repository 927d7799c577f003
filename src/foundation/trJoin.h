#pragma once
// Joins the parts of a message into one trString: texts, trStrings, std::strings and
// integers, in order. The parts gather in one std::string, so that a long chain of
// parts makes one allocation (and g++ 12 gives no false warnings about the inlined
// small-buffer appends of a chain of trString +).

#include "foundation/trString.h"

#include <string>
#include <type_traits>

namespace trJoinParts {

inline void Append(std::string &out, char const *text) { out += text ? text : ""; }
inline void Append(std::string &out, trString const &text)
{
    out.append(text.chars ? text.chars : "", std::size_t(text.length));
}
inline void Append(std::string &out, std::string const &text) { out += text; }
template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0> void Append(std::string &out, T value)
{
    out += std::to_string(value);
}

} // namespace trJoinParts

template <class... Parts> trString trJoin(Parts const &...parts)
{
    std::string out;
    (trJoinParts::Append(out, parts), ...);
    return trString(out);
}
