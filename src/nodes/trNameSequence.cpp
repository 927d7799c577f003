#include "nodes/trNameSequence.h"

#include "foundation/trNaturalOrder.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

long Kind(trNameSequenceDetector::Segment const &s)
{
    return std::get<0>(s);
}

trString const &Text(trNameSequenceDetector::Segment const &s)
{
    return std::get<1>(s);
}

// The decimal value of a digit run without the limits of an int: leading zeros are
// dropped and what remains compared as text, so "007" equals "7".
bool SameDigitValue(trString const &a, trString const &b)
{
    char const *pa = a.chars;
    char const *pb = b.chars;
    while (*pa == '0')
        ++pa;
    while (*pb == '0')
        ++pb;
    return std::strcmp(pa, pb) == 0;
}

} // namespace

trNameSequenceDetector::Pattern trNameSequenceDetector::GeneratePattern(trString const &text)
{
    Pattern result;
    long start = 0;
    for (long i = 1; i <= text.length; ++i) {
        bool const end = i == text.length;
        bool const digit = std::isdigit(static_cast<unsigned char>(text.chars[i - 1])) != 0;
        if (end || digit != (std::isdigit(static_cast<unsigned char>(text.chars[i])) != 0)) {
            result.emplace_back(digit ? kDigits : kText, text.SubString(int(start), int(i - start)));
            start = i;
        }
    }
    return result;
}

bool trNameSequenceDetector::ComparePatternsGeneral(Pattern const &a, Pattern const &b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Kind(a[i]) != Kind(b[i]))
            return false;
        if (Kind(a[i]) == kText && Text(a[i]) != Text(b[i]))
            return false;
    }
    return true;
}

bool trNameSequenceDetector::FindVaryingDigitsSegment(Pattern const &a, Pattern const &b, long &index)
{
    if (a.empty() || a.size() != b.size())
        return false;
    long found = -1;
    long differing = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (Kind(a[i]) != kDigits || Kind(b[i]) != kDigits)
            continue;
        if (!SameDigitValue(Text(a[i]), Text(b[i]))) {
            ++differing;
            found = long(i);
        }
    }
    if (differing != 1)
        return false;
    index = found;
    return true;
}

void trNameSequenceDetector::GeneratePrefixSuffixStrings(Pattern const &p, long const &index, trString &prefix,
                                                         trString &suffix)
{
    for (long i = 0; i < long(p.size()); ++i) {
        if (i < index)
            prefix += Text(p[std::size_t(i)]);
        else if (i > index)
            suffix += Text(p[std::size_t(i)]);
    }
}

std::vector<trString> trNameSequenceDetector::CollectFinalCandidates(std::vector<trString> const &names,
                                                                     trString const &prefix, trString const &suffix)
{
    std::vector<trString> kept;
    if (prefix.length == 0 && suffix.length == 0)
        return kept;
    for (trString const &n : names) {
        if (prefix.length && !n.BeginsWith(prefix, true))
            continue;
        if (suffix.length && !n.EndsWith(suffix, true))
            continue;
        kept.push_back(n);
    }
    return kept;
}

bool trNameSequenceDetector::Match(trString const &candidate, Pattern const &p, long const &index, Pattern &result)
{
    Pattern const c = GeneratePattern(candidate);
    if (c.size() != p.size() || index < 0 || index >= long(p.size()))
        return false;
    for (long i = 0; i < long(p.size()); ++i) {
        Segment const &a = c[std::size_t(i)];
        Segment const &b = p[std::size_t(i)];
        if (i == index) {
            if (Kind(a) != kDigits || Kind(b) != kDigits)
                return false;
        } else if (Kind(a) != Kind(b) || Text(a) != Text(b)) {
            return false;
        }
    }
    result = c;
    return true;
}

void trNameSequenceDetector::CollectFinalSequence(std::vector<trString> const &names, Pattern const &p,
                                                  long const &index)
{
    for (trString const &n : names) {
        Pattern matched;
        if (!Match(n, p, index, matched))
            continue;
        // atoi, as frame numbers have always been read; the first spelling of a number wins.
        long const number = std::atoi(Text(matched[std::size_t(index)]).chars);
        sequence.emplace(number, n);
    }
}

std::vector<trString> trNameSequenceDetector::CollectSequence(trString const &text,
                                                              std::vector<trString> const &folderNames)
{
    std::vector<trString> names(folderNames);
    pattern.clear();
    sequence.clear();
    nameWasAdded = false;
    name = text;
    pattern = GeneratePattern(name);
    if (pattern.empty())
        return {};

    trNaturalOrderSortSpace_Less const less;
    std::stable_sort(names.begin(), names.end(), less);
    auto at = std::find(names.begin(), names.end(), name);
    if (at == names.end()) {
        names.push_back(name);
        std::stable_sort(names.begin(), names.end(), less);
        nameWasAdded = true;
        at = std::find(names.begin(), names.end(), name);
    }
    std::size_t const place = std::size_t(at - names.begin());

    long index = -1;
    bool found = false;
    if (place > 0) {
        Pattern const before = GeneratePattern(names[place - 1]);
        if (ComparePatternsGeneral(before, pattern))
            found = FindVaryingDigitsSegment(pattern, before, index);
    }
    if (!found && place + 1 < names.size()) {
        Pattern const after = GeneratePattern(names[place + 1]);
        if (ComparePatternsGeneral(after, pattern))
            found = FindVaryingDigitsSegment(pattern, after, index);
    }
    if (!found)
        return {};

    trString prefix, suffix;
    GeneratePrefixSuffixStrings(pattern, index, prefix, suffix);
    std::vector<trString> kept = CollectFinalCandidates(names, prefix, suffix);
    if (nameWasAdded)
        kept.erase(std::remove(kept.begin(), kept.end(), name), kept.end());
    CollectFinalSequence(kept, pattern, index);

    std::vector<trString> result;
    result.reserve(sequence.size());
    for (auto const &entry : sequence)
        result.push_back(entry.second);
    return result;
}

std::vector<trString> trNameSequenceDetector::CollectSequenceInFolder(trString const &path)
{
    std::filesystem::path const full(path.chars ? path.chars : "");
    std::filesystem::path folder = full.parent_path();
    if (folder.empty())
        folder = ".";
    std::vector<trString> names;
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        std::error_code typeError;
        if (it->is_regular_file(typeError))
            names.emplace_back(it->path().filename().string());
    }
    return CollectSequence(trString(full.filename().string()), names);
}
