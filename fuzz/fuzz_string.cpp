// Arbitrary bytes through the text-parsing functions of trString and the natural
// order. The first byte picks the delimiter, the next ones split the rest into a
// text and two patterns, so that every function sees hostile input of every kind.

#include "foundation/trNaturalOrder.h"
#include "foundation/trString.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

// Stops the run on a broken property, so that libFuzzer keeps the input.
void Check(bool ok)
{
    if (!ok)
        std::abort();
}

trString Text(std::string const &bytes) { return trString(bytes.c_str()); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size)
{
    if (size < 3)
        return 0;
    char const delimiter[2] = {static_cast<char>(data[0]), 0};
    std::size_t const fromLength = data[1] % 8;
    std::size_t const toLength = data[2] % 8;
    std::string rest(reinterpret_cast<char const *>(data) + 3, size - 3);
    std::string const from = rest.substr(0, fromLength);
    std::string const to = rest.substr(std::min(rest.size(), fromLength), toLength);
    trString const text = Text(rest); // cut at the first NUL, as any C text
    trString const pattern = Text(from);
    trString const replacement = Text(to);

    // Tokenise: the pieces joined by the delimiter give back the text, less a final
    // delimiter.
    if (delimiter[0] != 0) {
        std::vector<trString> const pieces = trStringTokenise(text, delimiter, 0);
        trString joined;
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            if (i)
                joined += delimiter;
            joined += pieces[i];
        }
        if (!pieces.empty() && text.chars[text.length - 1] == delimiter[0])
            joined += delimiter;
        Check(joined == text);
        for (trString const &piece : trStringTokenise(text, delimiter, 1))
            Check(piece.length <= text.length);
    }

    // Natural order: antisymmetric, and each string equals itself.
    for (bool fold : {false, true}) {
        int const ab = trNaturalOrderCompareSkipping(text.chars, pattern.chars, fold);
        Check(ab == -trNaturalOrderCompareSkipping(pattern.chars, text.chars, fold));
        int const strict = trNaturalOrderCompareStrict(text.chars, replacement.chars, fold);
        Check(strict == -trNaturalOrderCompareStrict(replacement.chars, text.chars, fold));
        Check(trNaturalOrderCompareStrict(text.chars, text.chars, fold) == 0);
    }

    // Replace: both forms, the buffer form bounded by its size.
    trString const replaced = trStringReplace(text, pattern, replacement);
    Check(replaced.chars[replaced.length] == 0);
    if (!text.Contains(pattern))
        Check(replaced == text);
    int const bufferSize = static_cast<int>(text.length + 64);
    std::vector<char> buffer(static_cast<std::size_t>(bufferSize));
    std::memcpy(buffer.data(), text.chars, static_cast<std::size_t>(text.length) + 1);
    trStringReplace(buffer.data(), pattern.chars, replacement.chars, bufferSize);
    Check(std::strlen(buffer.data()) < static_cast<std::size_t>(bufferSize));

    // Frame numbers, extensions, paths.
    trString const framed = text.WithFrameNumber(static_cast<long>(data[1]) - 100);
    Check(framed.chars[framed.length] == 0);
    trString const ext = text.Extension(true, true);
    Check(ext.length <= text.length);
    trString const withExt = text.WithExtension(pattern);
    Check(withExt.length >= text.length);
    trString path, name, base, extension;
    trExtractFilePathAndName(text, path, name);
    if (text.length)
        Check(path + name == text);
    trExtractFileNameAndExtension(text, base, extension);
    if (text.length && text.Contains("."))
        Check(base + "." + extension == text);

    // Numbers, escaping, case and trimming.
    (void)text.ToInt32();
    trString xml(text);
    xml.MakeXMLLegal();
    Check(!xml.Contains("<") && !xml.Contains(">") && !xml.Contains("\""));
    Check(xml.length >= text.length);
    trString trimmed(text);
    trimmed.Trim();
    Check(trimmed.length <= text.length);
    Check(text.Humanized().length == text.length);
    int at = 0;
    if (text.FindLeftmost(pattern, at))
        Check(std::memcmp(text.chars + at, pattern.chars, static_cast<std::size_t>(pattern.length)) == 0);
    if (text.FindRightmost(pattern, at))
        Check(std::memcmp(text.chars + at, pattern.chars, static_cast<std::size_t>(pattern.length)) == 0);
    Check(text.SubString(data[1] % 40, data[2] % 40).length <= 40);
    return 0;
}
