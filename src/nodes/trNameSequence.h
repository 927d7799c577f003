#pragma once
// Decides, from one file name and the names in its folder, which files are frames of
// the same sequence and which frame number each one has. A name is cut into runs of
// digits and runs of other characters; the frames of a sequence differ from their
// neighbours in exactly one digit run.

#include "foundation/trString.h"

#include <map>
#include <tuple>
#include <vector>

class trNameSequenceDetector {
public:
    enum SegmentKind : long { kText = 1, kDigits = 2 };
    using Segment = std::tuple<long, trString>;
    using Pattern = std::vector<Segment>;

    // The names of the sequence that `name` belongs to, in order of frame number; empty
    // when there is none. `name` needn't be among folderNames: it is then used only to
    // find its neighbours.
    std::vector<trString> CollectSequence(trString const &name, std::vector<trString> const &folderNames);
    // The same over the files of the name's folder (plain files only); the result holds
    // names without the folder.
    std::vector<trString> CollectSequenceInFolder(trString const &path);
    // Frame number to file name, from the last CollectSequence.
    std::map<long, trString> GetIndexedSequence() const { return sequence; }

    // The steps, for callers with needs of their own.
    static Pattern GeneratePattern(trString const &name);
    // Same segment count, same kinds, equal text in every non-digit segment.
    static bool ComparePatternsGeneral(Pattern const &a, Pattern const &b);
    // True, with `index` set, when exactly one digit segment differs in value.
    static bool FindVaryingDigitsSegment(Pattern const &a, Pattern const &b, long &index);
    static void GeneratePrefixSuffixStrings(Pattern const &pattern, long const &index, trString &prefix,
                                            trString &suffix);
    static std::vector<trString> CollectFinalCandidates(std::vector<trString> const &names, trString const &prefix,
                                                        trString const &suffix);
    // Fills `sequence` from the names that match the pattern at its varying segment.
    void CollectFinalSequence(std::vector<trString> const &names, Pattern const &pattern, long const &index);
    static bool Match(trString const &candidate, Pattern const &pattern, long const &index, Pattern &result);

private:
    Pattern pattern;
    trString name;
    bool nameWasAdded = false;
    std::map<long, trString> sequence;
};
