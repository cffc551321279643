// What the library says of the syntax, in words of users.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Checking.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

struct Row {
  const char* data;
  int column;
  const char* text;
};

class SyntaxMistake : public testing::TestWithParam<Row> {};

TEST_P(SyntaxMistake, IsSaidInWordsOfUsers) {
  TemporaryDirectory directory;
  Findings findings(WriteFile(directory.Path("in.stp"), FileWith(GetParam().data)));
  EXPECT_TRUE(CheckSyntax(findings.File(), findings));
  ASSERT_FALSE(findings.WithPlace().empty());
  const Finding& found = findings.WithPlace().front();
  EXPECT_EQ(found.code, Code::kSyntax);
  EXPECT_EQ(found.text, GetParam().text);
  EXPECT_EQ(found.place.line, 8);
  EXPECT_EQ(found.place.column, GetParam().column);
}

INSTANTIATE_TEST_SUITE_P(
    All, SyntaxMistake,
    testing::Values(Row{"#1=COLOUR(;\n", 11, "\")\" expected"},
                    Row{"#1=;\n", 4, "the name of an entity type, in capital letters, or \"(\" of a complex instance expected"},
                    Row{"#1=();\n", 5, "the name of an entity type, in capital letters, expected"},
                    Row{"#1=COLOUR()#2=COLOUR();\n", 12, "\";\" expected behind the instance"},
                    Row{"#1=DIRECTION('',,1);\n", 17, "a value expected"},
                    Row{"#1=DIRECTION('',(1.,,2.));\n", 21, "a value expected"},
                    Row{"#1=ORIENTED_EDGE('',*,*,$,.t.);\n", 28, "a name in capital letters expected"},
                    Row{"COLOUR();\n", 1, "the name of an instance, such as #1, expected"},
                    Row{"#1=COLOUR();COLOUR();\n", 13, "\"ENDSEC\" expected"}));

TEST(SyntaxMistakes, OfTheHeaderAreSaidInWordsOfUsers) {
  TemporaryDirectory directory;
  Findings findings(WriteFile(directory.Path("in.stp"), "ISO-10303-21;\nFILE_NAME();\nENDSEC;\nDATA;\n#1=COLOUR();\nENDSEC;\nEND-ISO-10303-21;\n"));
  EXPECT_TRUE(CheckSyntax(findings.File(), findings));
  ASSERT_FALSE(findings.WithPlace().empty());
  EXPECT_EQ(findings.WithPlace().front().text, "\"HEADER\" expected");
  EXPECT_EQ(findings.WithPlace().front().place.line, 2);
}

}  // namespace
}  // namespace velmar
