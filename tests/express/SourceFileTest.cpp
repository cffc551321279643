#include <gtest/gtest.h>

#include <system_error>

#include "SourceFile.h"

namespace VELMAR::Express {
namespace {

void ExpectPosition(const SourceFile& file, std::uint32_t offset, int line, int column) {
  const Position position = file.PositionOf(offset);
  EXPECT_EQ(position.line, line) << "offset " << offset;
  EXPECT_EQ(position.column, column) << "offset " << offset;
}

TEST(SourceFile, LinesAndColumnsCountFromOne) {
  const SourceFile file("f", "ab\ncd\n");
  ExpectPosition(file, 0, 1, 1);
  ExpectPosition(file, 1, 1, 2);
  ExpectPosition(file, 2, 1, 3);  // the line end belongs to its line
  ExpectPosition(file, 3, 2, 1);
  ExpectPosition(file, 6, 3, 1);
}

TEST(SourceFile, OffsetBehindTheEndIsTheEnd) {
  ExpectPosition(SourceFile("f", "ab"), 100, 1, 3);
  ExpectPosition(SourceFile("f", ""), 0, 1, 1);
  EXPECT_EQ(SourceFile("f", "a\nbc").LineOf(100), "bc");
}

TEST(SourceFile, ColumnsCountCharactersNotBytes) {
  ExpectPosition(SourceFile("f", "\xC3\xA4\xE2\x82\xACx"), 5, 1, 3);
}

TEST(SourceFile, ByteOrderMarkIsNoPartOfTheText) {
  EXPECT_EQ(SourceFile("f",
                       "\xEF\xBB\xBF"
                       "a")
                .Text(),
            "a");
}

TEST(SourceFile, LineOfLeavesOutBothKindsOfLineEnd) {
  const SourceFile file("f", "ab\r\ncd\nef");
  EXPECT_EQ(file.LineOf(1), "ab");
  EXPECT_EQ(file.LineOf(4), "cd");
  EXPECT_EQ(file.LineOf(8), "ef");
}

TEST(SourceFile, ReadOfAMissingFileThrowsTheSystemsReason) {
  try {
    SourceFile::Read("no/such/file.exp");
    FAIL() << "nothing thrown";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    EXPECT_NE(std::string(error.what()).find("no/such/file.exp"), std::string::npos);
  }
}

TEST(SourceFile, ReadOfADirectoryThrows) { EXPECT_THROW(SourceFile::Read("."), std::system_error); }

}  // namespace
}  // namespace VELMAR::Express
