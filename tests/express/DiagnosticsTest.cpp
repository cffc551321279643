#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "Diagnostics.h"

namespace VELMAR::Express {
namespace {

std::string Printed(const Diagnostics& diagnostics) {
  std::ostringstream out;
  diagnostics.Print(out);
  return out.str();
}

TEST(Diagnostics, PrintsPlaceTextCodeHintLineAndCaret) {
  const SourceFile file("file.exp", "ENTITY a;\n  radius : lenght_measure;\n");
  Diagnostics diagnostics;
  diagnostics.Report(Code::UnknownType, {&file, 21, 14}, "unknown type 'lenght_measure'",
                     "did you mean 'length_measure'?");
  EXPECT_EQ(Printed(diagnostics),
            "file.exp:2:12: error: unknown type 'lenght_measure' [E021]; did you mean 'length_measure'?\n"
            "      radius : lenght_measure;\n"
            "               ^~~~~~~~~~~~~~\n");
}

TEST(Diagnostics, PrintsTheOtherPlaceAsANote) {
  const SourceFile file("f", "a\na");
  Diagnostics diagnostics;
  diagnostics.Report(Code::DuplicateName, {&file, 2, 1}, "name 'a' is declared twice", {&file, 0, 1},
                     "first here");
  EXPECT_EQ(Printed(diagnostics),
            "f:2:1: error: name 'a' is declared twice [E026]\n    a\n    ^\nf:1:1: note: first here\n    a\n "
            "   ^\n");
}

TEST(Diagnostics, CaretStandsRightBehindTabsAndCharactersOfSeveralBytes) {
  const SourceFile file("f", "\t\xC3\xA4 \xC3\xB6\xC3\xB6!");
  Diagnostics diagnostics;
  diagnostics.Report(Code::UnexpectedCharacter, {&file, 4, 4}, "x");
  EXPECT_EQ(Printed(diagnostics), "f:1:4: error: x [E001]\n    \t\xC3\xA4 \xC3\xB6\xC3\xB6!\n    \t  ^~\n");
}

TEST(Diagnostics, CaretGoesNoFurtherThanTheLine) {
  const SourceFile file("f", "ab\ncd");
  Diagnostics diagnostics;
  diagnostics.Report(Code::Expected, {&file, 1, 4}, "x");
  EXPECT_EQ(Printed(diagnostics), "f:1:2: error: x [E010]\n    ab\n     ^\n");
}

TEST(Diagnostics, PrintsInTheOrderOfTheText) {
  const SourceFile file("f", "a\nb\nc");
  Diagnostics diagnostics;
  diagnostics.Report(Code::Expected, {&file, 4, 1}, "third");
  diagnostics.Report(Code::Expected, {&file, 0, 1}, "first");
  diagnostics.Report(Code::Expected, {&file, 2, 1}, "second");
  const std::string text = Printed(diagnostics);
  EXPECT_LT(text.find("first"), text.find("second"));
  EXPECT_LT(text.find("second"), text.find("third"));
}

TEST(Diagnostics, WarningsAreCountedApart) {
  const SourceFile file("f", "a");
  Diagnostics diagnostics;
  diagnostics.Report(Code::ReservedSchemaName, {&file, 0, 1}, "x");
  EXPECT_EQ(diagnostics.ErrorCount(), 0u);
  EXPECT_EQ(diagnostics.WarningCount(), 1u);
  EXPECT_EQ(Printed(diagnostics), "f:1:1: warning: x [W001]\n    a\n    ^\n");
}

TEST(Diagnostics, KeepsAThousandAndCountsTheRest) {
  const SourceFile file("f", "");
  Diagnostics diagnostics;
  for (int i = 0; i < 1000; ++i) diagnostics.Report(Code::Expected, {&file, 0, 0}, "x");
  EXPECT_EQ(Printed(diagnostics).find("more"), std::string::npos);
  diagnostics.Report(Code::Expected, {&file, 0, 0}, "x");
  EXPECT_EQ(diagnostics.All().size(), 1000u);
  EXPECT_EQ(diagnostics.ErrorCount(), 1001u);
  EXPECT_NE(Printed(diagnostics).find("and 1 more\n"), std::string::npos);
}

TEST(Catalogue, NumbersDifferAndBeginWithTheirSeverity) {
  std::set<std::string> seen;
  for (std::size_t i = 0; i < static_cast<std::size_t>(Code::kCount); ++i) {
    const CatalogueRow& row = CatalogueRowOf(static_cast<Code>(i));
    EXPECT_TRUE(seen.insert(row.number).second) << row.number;
    EXPECT_EQ(row.number[0], row.severity == Severity::Error ? 'E' : 'W') << row.number;
    EXPECT_EQ(std::string(row.explanation).back(), '.') << row.number;
  }
}

TEST(Catalogue, IsTheTableOfTheDocumentation) {
  std::ifstream in(VELMAR_TEST_DATA "/../../../docs/express.md");
  ASSERT_TRUE(in);
  std::vector<std::string> documented;
  for (std::string line; std::getline(in, line);) {
    const bool isRow =
        line.size() > 6 && line[0] == '|' && (line[2] == 'E' || line[2] == 'W') && line[6] == ' ';
    if (isRow) documented.push_back(line);
  }
  std::vector<std::string> rows;
  for (std::size_t i = 0; i < static_cast<std::size_t>(Code::kCount); ++i) {
    const CatalogueRow& row = CatalogueRowOf(static_cast<Code>(i));
    rows.push_back(std::string("| ") + row.number + " | " + row.explanation + " |");
  }
  EXPECT_EQ(documented, rows);
}

TEST(Nearest, FindsTransposedMissingAndWrongLetters) {
  const std::vector<std::string> names{"length_measure", "point", "line"};
  EXPECT_EQ(Nearest("lenght_measure", names), "length_measure");
  EXPECT_EQ(Nearest("pont", names), "point");
  EXPECT_EQ(Nearest("pount", names), "point");
}

TEST(Nearest, IsEmptyWhereNothingIsNear) {
  EXPECT_EQ(Nearest("surface", {"point", "line"}), "");
  EXPECT_EQ(Nearest("a", {"b"}), "");
  EXPECT_EQ(Nearest("a", {}), "");
}

}  // namespace
}  // namespace VELMAR::Express
