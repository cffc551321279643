// Mistakes in the characters of strings.
#include <gtest/gtest.h>

#include <string>

#include "StepStringRules.h"

namespace velmar {
namespace {

struct Row {
  const char* text;
  int offset;  // of the mistake; -1 where there is none
  bool isEscape;
};

class MistakesIn : public ::testing::TestWithParam<Row> {};

TEST_P(MistakesIn, AreFoundWhereTheyBegin) {
  const auto mistake = FindStringMistake(GetParam().text);
  ASSERT_EQ(mistake.has_value(), GetParam().offset >= 0) << GetParam().text;
  if (!mistake) return;
  EXPECT_EQ(static_cast<int>(mistake->offset), GetParam().offset) << GetParam().text;
  EXPECT_EQ(mistake->isEscape, GetParam().isEscape) << GetParam().text;
  EXPECT_FALSE(mistake->text.empty());
}

INSTANTIATE_TEST_SUITE_P(Escapes, MistakesIn,
                         ::testing::Values(Row{"", -1, false}, Row{"plain ''text''", -1, false}, Row{"a\\\\b", -1, false},
                                           Row{"a\\b", 1, true}, Row{"\\", 0, true}, Row{"\\X\\E4", -1, false},
                                           Row{"\\X\\E", 0, true}, Row{"\\X\\G4", 0, true},
                                           Row{"x\\X2\\03B103B2\\X0\\", -1, false}, Row{"x\\X2\\03B103B\\X0\\", 1, true},
                                           Row{"x\\X2\\03B1", 1, true}, Row{"\\X2\\\\X0\\", 0, true},
                                           Row{"\\X4\\0001F600\\X0\\", -1, false}, Row{"\\X4\\0001F60\\X0\\", 0, true},
                                           Row{"\\S\\d", -1, false}, Row{"\\S\\''", -1, false}, Row{"\\S\\", 0, true},
                                           Row{"\\PB\\\\S\\d", -1, false}, Row{"\\PJ\\", 0, true}, Row{"\\PB", 0, true},
                                           Row{"one\\N\\two\\F\\", -1, false}, Row{"one\\n\\two", 3, true}));

INSTANTIATE_TEST_SUITE_P(Bytes, MistakesIn,
                         ::testing::Values(Row{"Geh\xC3\xA4use", -1, false}, Row{"Geh\xE4use", 3, false},
                                           Row{"\xE2\x82\xAC", -1, false}, Row{"\xE2\x82", 0, false},
                                           Row{"\xF0\x9F\x98\x80", -1, false}, Row{"\xF4\x90\x80\x80", 0, false},
                                           Row{"\xC0\xAF", 0, false}, Row{"\xED\xA0\x80", 0, false},
                                           Row{"\xE0\x9F\xBF", 0, false}, Row{"a\x80", 1, false}));

}  // namespace
}  // namespace velmar
