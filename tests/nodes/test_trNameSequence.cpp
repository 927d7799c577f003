// Name sequence detection: the segments of a name, the comparisons, and whole folders
// where one name must find exactly its own frames.

#include "test_trBaseSupport.h"

#include "nodes/trNameSequence.h"

namespace {

using Detector = trNameSequenceDetector;

std::vector<std::string> Names(std::vector<trString> const &list)
{
    std::vector<std::string> out;
    for (trString const &s : list)
        out.emplace_back(s.chars);
    return out;
}

std::vector<trString> Strings(std::vector<std::string> const &list)
{
    return std::vector<trString>(list.begin(), list.end());
}

std::vector<std::string> const kFolder = {"file001.txt",        "file002.txt",        "file003.txt",
                                          "file004.txt",        "file005.txt",        "file.txt",
                                          "files001.txt",       "files002.txt",       "file003_id.001.txt",
                                          "file003_id.002.txt", "file003_id.005"};

TEST(trNameSequence, PatternsCutAtEveryDigitBoundaryAndCompare)
{
    Detector::Pattern const p = Detector::GeneratePattern("file003_id.001.txt");
    std::string segments;
    for (auto const &segment : p)
        segments += std::to_string(std::get<0>(segment)) + ":" + Str(std::get<1>(segment)) + " ";
    EXPECT_EQ(segments, "1:file 2:003 1:_id. 2:001 1:.txt ");
    EXPECT_TRUE(Detector::GeneratePattern("").empty());
    auto P = Detector::GeneratePattern;
    EXPECT_TRUE(Detector::ComparePatternsGeneral(P("a1b"), P("a22b")));
    EXPECT_FALSE(Detector::ComparePatternsGeneral(P("a1b"), P("c1b")));
    EXPECT_FALSE(Detector::ComparePatternsGeneral(P("a1b"), P("a1b2")));
    long index = -1;
    EXPECT_TRUE(Detector::FindVaryingDigitsSegment(P("a1b7"), P("a2b007"), index));
    EXPECT_EQ(index, 1);
    // Two places differ: not one sequence.
    EXPECT_FALSE(Detector::FindVaryingDigitsSegment(P("a1b7"), P("a2b8"), index));
    // None differs.
    EXPECT_FALSE(Detector::FindVaryingDigitsSegment(P("a1"), P("a001"), index));
    // Digit runs too long for any integer still compare by value.
    EXPECT_TRUE(Detector::FindVaryingDigitsSegment(P("x123456789012345678901"), P("x123456789012345678902"), index));
    trString prefix, suffix;
    Detector::GeneratePrefixSuffixStrings(P("file003_id.001.txt"), 3, prefix, suffix);
    EXPECT_EQ(Str(prefix) + "|" + Str(suffix), "file003_id.|.txt");
    EXPECT_EQ(Names(Detector::CollectFinalCandidates(Strings({"ab.x", "b.x", "ab.y", "AB.x"}), "a", ".x")),
              std::vector<std::string>{"ab.x"});
    EXPECT_EQ(Detector::CollectFinalCandidates(Strings({"a1", "b1"}), "", "1").size(), 2u);
    Detector::Pattern result;
    EXPECT_TRUE(Detector::Match("f12_3", P("f7_3"), 1, result));
    EXPECT_EQ(result.size(), 4u); // "f", "12", "_", "3"
    EXPECT_FALSE(Detector::Match("f12_4", P("f7_3"), 1, result)); // digits elsewhere must be equal
    EXPECT_FALSE(Detector::Match("fx_3", P("f7_3"), 1, result));
}

TEST(trNameSequence, PlainNamesFindTheirFramesAndSubSequencesStayApart)
{
    Detector d;
    EXPECT_EQ(Names(d.CollectSequence("file003.txt", Strings(kFolder))),
              (std::vector<std::string>{"file001.txt", "file002.txt", "file003.txt", "file004.txt", "file005.txt"}));
    auto const indexed = d.GetIndexedSequence();
    ASSERT_EQ(indexed.size(), 5u);
    EXPECT_EQ(Str(indexed.at(4)), "file004.txt");
    Detector e;
    EXPECT_EQ(Names(e.CollectSequence("file003_id.001.txt", Strings(kFolder))),
              (std::vector<std::string>{"file003_id.001.txt", "file003_id.002.txt"}));
}

TEST(trNameSequence, EmptyPrefixNamesNotInTheFolderAndTwoSpellings)
{
    std::vector<std::string> bottles;
    for (int i = 1; i <= 6; ++i)
        bottles.push_back("00" + std::to_string(i) + " green bottles.img");
    Detector d;
    EXPECT_EQ(Names(d.CollectSequence("006 green bottles.img", Strings(bottles))), bottles);
    // The name isn't in the list: it finds its neighbours and is left out itself.
    Detector e;
    EXPECT_EQ(Names(e.CollectSequence("bigjobs 100", Strings({"bigjobs 10020", "bigjobs 10000", "bigjobs 10010"}))),
              (std::vector<std::string>{"bigjobs 10000", "bigjobs 10010", "bigjobs 10020"}));
    auto const indexed = e.GetIndexedSequence();
    EXPECT_TRUE(indexed.begin()->first == 10000 && indexed.rbegin()->first == 10020);
    // Two spellings of one number keep the first: "f007" sorts before "f7" in the natural
    // order, so it is the one kept for 7.
    Detector f;
    EXPECT_EQ(f.CollectSequence("f7.x", Strings({"f6.x", "f7.x", "f007.x", "f8.x"})).size(), 3u);
    ASSERT_EQ(f.GetIndexedSequence().size(), 3u);
    EXPECT_EQ(Str(f.GetIndexedSequence().at(7)), "f007.x");
}

TEST(trNameSequence, NoSequenceGivesNothing)
{
    Detector d;
    // Both neighbours differ in two digit segments.
    EXPECT_TRUE(d.CollectSequence("a1b1", Strings({"a1b1", "a2b2", "a0b3"})).empty());
    EXPECT_TRUE(d.CollectSequence("plain.txt", Strings({"plain.txt", "other.txt"})).empty());
    EXPECT_TRUE(d.CollectSequence("", Strings({"a1", "a2"})).empty());
    EXPECT_TRUE(d.CollectSequence("lonely7", {}).empty());
    EXPECT_TRUE(d.GetIndexedSequence().empty());
}

TEST(trNameSequence, FoldersAreListedFromTheDisk)
{
    Scratch folder;
    std::filesystem::create_directories(folder.path / "frame0004.exr"); // a folder isn't a frame
    for (char const *name : {"frame0001.exr", "frame0002.exr", "frame0003.exr", "other.exr"})
        folder.Write(name, "x");
    Detector d;
    EXPECT_EQ(Names(d.CollectSequenceInFolder(folder.File("frame0002.exr").c_str())),
              (std::vector<std::string>{"frame0001.exr", "frame0002.exr", "frame0003.exr"}));
    EXPECT_TRUE(d.CollectSequenceInFolder((folder.path / "missing" / "a1.exr").string().c_str()).empty());
}

} // namespace
