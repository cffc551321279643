// The reporting of syntax errors.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iostream>
#include <locale>
#include <string>

#include "CapturedLog.h"
#include "Parser.h"
#include "ReadingSupport.h"

namespace {

using testing::ElementsAre;
using VELMAR::Errors;
using VELMAR::TestData::CapturedLog;

struct Row {
  int number;
  const char* message;
};
std::ostream& operator<<(std::ostream& os, const Row& row) { return os << row.number; }

class SyntaxErrorTable : public testing::TestWithParam<Row> {};

TEST_P(SyntaxErrorTable, HasTheMessage) {
  CapturedLog log;
  Errors errors;
  errors.SynErr(12, 345, GetParam().number);
  EXPECT_THAT(log.lines, ElementsAre(std::string("-- line 12 col 345: ") + GetParam().message));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(true));
  EXPECT_EQ(errors.count, 1);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SyntaxErrorTable,
    testing::Values(Row{0, "EOF expected"}, Row{1, "INTEGER expected"}, Row{2, "REAL expected"},
                    Row{3, "ENTITYINSTANCENAME expected"}, Row{4, "STRING expected"},
                    Row{5, "BINARY expected"}, Row{6, "IDENT expected"}, Row{7, "HEADER expected"},
                    Row{8, "DATA expected"}, Row{9, "ENDSEC expected"}, Row{10, "\"ISO-10303-21;\" expected"},
                    Row{11, "\"END-ISO-10303-21;\" expected"}, Row{12, "\";\" expected"},
                    Row{13, "\"!\" expected"}, Row{14, "\",\" expected"}, Row{15, "\"(\" expected"},
                    Row{16, "\")\" expected"}, Row{17, "\"$\" expected"}, Row{18, "\".\" expected"},
                    Row{19, "\"*\" expected"}, Row{20, "\"=\" expected"}, Row{21, "\"&SCOPE\" expected"},
                    Row{22, "\"ENDSCOPE\" expected"}, Row{23, "\"/\" expected"}, Row{24, "??? expected"},
                    Row{25, "this symbol not expected in headerEntity"}, Row{26, "invalid keyword"},
                    Row{27, "invalid parameterArg"}, Row{28, "invalid untypedParameterArg"},
                    Row{29, "invalid parameterExpAggr"}, Row{30, "invalid untypedParameterExpAggr"},
                    Row{31, "invalid parameterExpAggrSelect"},
                    Row{32, "invalid untypedParameterExpAggrSelect"}, Row{33, "invalid parameter"},
                    Row{34, "invalid untypedParameter"}, Row{35, "invalid entityInstance"},
                    Row{36, "this symbol not expected in entityInstance"}, Row{37, "error 37"},
                    Row{-1, "error -1"}, Row{1000, "error 1000"}, Row{2147483647, "error 2147483647"},
                    Row{-2147483647 - 1, "error -2147483648"}),
    [](const auto& info) {
      const int number = info.param.number;
      return (number < 0 ? "Minus" : "") + std::to_string(number < 0 ? 0u - static_cast<unsigned int>(number)
                                                                     : static_cast<unsigned int>(number));
    });

TEST(Errors, NothingIsCountedInTheBeginning) { EXPECT_EQ(Errors().count, 0); }

TEST(Errors, ErrorLogsTheGivenMessageAndCounts) {
  CapturedLog log;
  Errors errors;
  errors.Error(1, 2, L"something is wrong");
  errors.Error(3, 4, L"");
  EXPECT_THAT(log.lines, ElementsAre("-- line 1 col 2: something is wrong", "-- line 3 col 4: "));
  EXPECT_THAT(log.levels, ElementsAre(1, 1));
  EXPECT_EQ(errors.count, 2);
}

TEST(Errors, WarningWithAPlaceDoesNotCount) {
  CapturedLog log;
  Errors errors;
  errors.Warning(1, 2, L"look here");
  EXPECT_THAT(log.lines, ElementsAre("-- line 1 col 2: look here"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_EQ(errors.count, 0);
}

TEST(Errors, WarningWithoutAPlaceLogsTheMessageAlone) {
  CapturedLog log;
  Errors errors;
  errors.Warning(L"look here");
  EXPECT_THAT(log.lines, ElementsAre("look here"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_EQ(errors.count, 0);
}

TEST(Errors, MessagesAreNarrowedToTheirLowBytes) {
  CapturedLog log;
  Errors errors;
  errors.Error(1, 1, L"a\u00E9\u0141");
  errors.Warning(1, 1, L"\u0142");
  errors.Warning(L"\u0143");
  EXPECT_THAT(log.lines, ElementsAre("-- line 1 col 1: a\xE9\x41", "-- line 1 col 1: \x42", "\x43"));
}

TEST(Errors, ExceptionLogsTheMessageAndEndsTheProcess) {
  const reading::Ended ended = reading::RunInChild([] {
    VELMAR::ExpSimpleLogger logger(&std::cout);
    VELMAR::ExpLogger::AddLogger(&logger);
    Errors errors;
    errors.Exception(L"no way on");
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "no way on\n");
}

TEST(Errors, NothingGoesToStandardOutput) {
  const reading::Ended ended = reading::RunInChild([] {
    Errors errors;
    errors.SynErr(1, 1, 1);
    errors.Error(1, 1, L"x");
    errors.Warning(L"x");
  });
  EXPECT_EQ(ended.exitStatus, 99);
  EXPECT_EQ(ended.output, "");
}

struct Grouping : std::numpunct<char> {
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Errors, NumbersDoNotDependOnTheGlobalLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
  CapturedLog log;
  Errors().SynErr(1234567, 89012, 3456);
  std::locale::global(before);
  EXPECT_THAT(log.lines, ElementsAre("-- line 1234567 col 89012: error 3456"));
}

}  // namespace
