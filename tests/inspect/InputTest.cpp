#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "Input.h"
#include "Population.h"
#include "RunProgram.h"

namespace velmar {
namespace {

TEST(WhyUnreadable, SaysNothingOfAnOrdinaryFile) {
  TemporaryDirectory directory;
  EXPECT_EQ(WhyUnreadable(WriteFile(directory.Path("one byte"), "x")), "");
}

TEST(WhyUnreadable, NamesWhatStandsInTheWay) {
  TemporaryDirectory directory;
  EXPECT_EQ(WhyUnreadable(directory.Path("nothing")), "does not exist");
  EXPECT_EQ(WhyUnreadable(directory.Path("")), "is a directory");
  EXPECT_EQ(WhyUnreadable("/dev/null"), "is not a regular file");
  EXPECT_EQ(WhyUnreadable(WriteFile(directory.Path("empty"), "")), "is empty");
  const std::string file = WriteFile(directory.Path("file"), "x");
  EXPECT_EQ(WhyUnreadable(file + "/below"), "cannot be read: Not a directory");
}

TEST(WhyUnreadable, TheLongestFileHas2147483647Bytes) {
  TemporaryDirectory directory;
  const std::string file = WriteFile(directory.Path("long"), "x");
  std::error_code error;
  std::filesystem::resize_file(file, 2147483647, error);
  if (error) GTEST_SKIP() << "no room for a sparse file of 2 GiB: " << error.message();
  EXPECT_EQ(WhyUnreadable(file), "");
  std::filesystem::resize_file(file, 2147483648, error);
  EXPECT_EQ(WhyUnreadable(file),
            "is 2,147,483,648 bytes long; the longest file that can be read has 2,147,483,647");
}

TEST(Population, AFileThatIsEmptyWhenItIsReadIsNoFileWithoutInstances) {
  TemporaryDirectory directory;
  const std::string path = WriteFile(directory.Path("emptied"), "");
  Findings findings(path);
  Population population;
  try {
    population.ReadAndReport(path, findings);
    ADD_FAILURE() << "nothing is said";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(error.what(), path + " cannot be read: it is empty");
  }
}

TEST(Population, AFileThatIsGoneWhenItIsReadIsNoFileWithoutInstances) {
  TemporaryDirectory directory;
  const std::string path = directory.Path("gone");
  Findings findings(path);
  Population population;
  EXPECT_THROW(population.ReadAndReport(path, findings), std::runtime_error);
  EXPECT_THROW(FileSize(path), std::runtime_error);
}

TEST(HasDamagedByteOrderMark, OnlyWhereTheFirstByteIsNotFollowedByTheOthers) {
  TemporaryDirectory directory;
  EXPECT_FALSE(HasDamagedByteOrderMark(WriteFile(directory.Path("f"), "ISO")));
  EXPECT_FALSE(HasDamagedByteOrderMark(WriteFile(directory.Path("f"), "\xEF\xBB\xBFISO")));
  EXPECT_TRUE(HasDamagedByteOrderMark(WriteFile(directory.Path("f"), "\xEF\xBBISO")));
  EXPECT_TRUE(HasDamagedByteOrderMark(WriteFile(directory.Path("f"), "\xEF")));
  EXPECT_FALSE(HasDamagedByteOrderMark(WriteFile(directory.Path("f"), "I\xEF")));
}

std::string Marked(const Excerpt& excerpt) {
  return excerpt.text.substr(0, excerpt.caret) + "^" + excerpt.text.substr(excerpt.caret);
}

std::vector<std::string> Excerpts(const std::string& text, const std::vector<Place>& places) {
  TemporaryDirectory directory;
  std::vector<std::string> marked;
  for (const Excerpt& excerpt : ReadExcerpts(WriteFile(directory.Path("f"), text), places)) {
    marked.push_back(Marked(excerpt));
  }
  return marked;
}

using Texts = std::vector<std::string>;

TEST(ReadExcerpts, LinesEndAtLfAtCrLfAndAtCrAlone) {
  EXPECT_EQ(Excerpts("ab\ncd\r\nef\rgh\n\r\nij", {{1, 1}, {2, 2}, {3, 1}, {4, 1}, {5, 1}, {6, 2}}),
            (Texts{"^ab", "c^d", "^ef", "^gh", "^", "i^j"}));
}

TEST(ReadExcerpts, TwoPlacesOfOneLineGetAnExcerptEach) {
  EXPECT_EQ(Excerpts("abc\n", {{1, 1}, {1, 3}, {1, 3}}), (Texts{"^abc", "ab^c", "ab^c"}));
}

TEST(ReadExcerpts, APlaceBehindTheLineOrTheFileIsAtItsEnd) {
  EXPECT_EQ(Excerpts("abc\nd", {{1, 4}, {1, 9}, {2, 2}, {3, 1}}), (Texts{"abc^", "abc^", "d^", "^"}));
}

TEST(ReadExcerpts, OfALongLineThereAre100ColumnsAndAtMost60BeforeThePlace) {
  const std::string line = std::string(200, 'a') + "X" + std::string(200, 'b');
  EXPECT_EQ(Excerpts(line, {{1, 201}}), Texts{std::string(60, 'a') + "^X" + std::string(39, 'b')});
  EXPECT_EQ(Excerpts(line, {{1, 61}}), Texts{std::string(60, 'a') + "^" + std::string(40, 'a')});
  EXPECT_EQ(Excerpts(line, {{1, 62}}), Texts{std::string(60, 'a') + "^" + std::string(40, 'a')});
}

TEST(ReadExcerpts, ColumnsAreCharactersInAFileWithAByteOrderMarkAndBytesInOthers) {
  EXPECT_EQ(Excerpts("\xEF\xBB\xBF\xC3\xA4\xE2\x82\xACx", {{1, 3}}), Texts{"\xC3\xA4\xE2\x82\xAC^x"});
  EXPECT_EQ(Excerpts("\xC3\xA4x", {{1, 3}}), Texts{"\xC3\xA4^x"});
}

TEST(IsUtf8, AcceptsWholeAndCutOffSequencesButNoStrayBytes) {
  EXPECT_TRUE(IsUtf8("plain"));
  EXPECT_TRUE(IsUtf8("\xC3\xA4\xF0\x9F\x98\x80"));
  EXPECT_TRUE(IsUtf8("\x98\x80 cut off in front"));
  EXPECT_TRUE(IsUtf8("cut off behind \xF0\x9F"));
  EXPECT_FALSE(IsUtf8("Latin-1 \xE4 umlaut"));
  EXPECT_FALSE(IsUtf8("stray \x80"));
  EXPECT_FALSE(IsUtf8("no lead \xF8"));
}

}  // namespace
}  // namespace velmar
