// The parser's handling of tokens: consuming, expecting, start sets, and the distance between errors.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "Parser.h"
#include "ReadingSupport.h"

namespace {

using reading::ScannerOver;
using reading::Source;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::Parser;
using VELMAR::TestData::CapturedLog;

// A parser over a text, without provider.
struct TokenParser {
  explicit TokenParser(const std::string& text) : scanner(text, Source::Memory), parser(scanner.Get()) {}
  ScannerOver scanner;
  Parser parser;
  CapturedLog log;
};

struct KindText {
  int kind;
  const char* text;
};

TEST(ParserTokens, StartSetsHoldTheirKinds) {
  const KindText kinds[] = {{0, ""},
                            {1, "1"},
                            {2, "1."},
                            {3, "#1"},
                            {4, "'a'"},
                            {5, "\"0\""},
                            {6, "A"},
                            {7, "HEADER;"},
                            {8, "DATA;"},
                            {9, "ENDSEC;"},
                            {10, "ISO-10303-21;"},
                            {11, "END-ISO-10303-21;"},
                            {12, ";"},
                            {13, "!"},
                            {14, ","},
                            {15, "("},
                            {16, ")"},
                            {17, "$"},
                            {18, "."},
                            {19, "*"},
                            {20, "="},
                            {21, "&SCOPE"},
                            {22, "ENDSCOPE"},
                            {23, "/"},
                            {24, "%"}};
  const std::vector<int> sets[] = {
      {0, 12}, {1, 2, 3, 4, 5, 6, 13, 15, 17, 18, 19}, {1, 2, 3, 4, 5, 15, 17, 18}};
  for (const KindText& kind : kinds) {
    TokenParser tokens(kind.text);
    tokens.parser.Get();
    for (int set = 0; set < 3; ++set) {
      const bool expected =
          std::find(std::begin(sets[set]), std::end(sets[set]), kind.kind) != std::end(sets[set]);
      EXPECT_EQ(tokens.parser.StartOf(set), expected) << "kind " << kind.kind << ", set " << set;
    }
  }
}

TEST(ParserTokens, ExpectConsumesTheTokenOrReports) {
  TokenParser tokens("A\n B C");
  tokens.parser.Get();
  tokens.parser.Expect(6);
  tokens.parser.Expect(12);
  EXPECT_THAT(tokens.log.lines, ElementsAre("-- line 2 col 2: \";\" expected"));
  tokens.parser.Expect(6);
  tokens.parser.Expect(6);
  tokens.parser.Expect(0);
  EXPECT_EQ(tokens.log.lines.size(), 1u);
  EXPECT_EQ(tokens.parser.GetErrors().count, 1);
}

TEST(ParserTokens, AnErrorIsReportedOnlyTwoTokensBehindTheLast) {
  TokenParser tokens("A B C D E F");
  tokens.parser.Get();
  tokens.parser.SynErr(12);
  tokens.parser.SynErr(13);
  tokens.parser.Get();
  tokens.parser.SynErr(14);
  tokens.parser.Get();
  tokens.parser.Get();
  tokens.parser.SynErr(99);
  EXPECT_THAT(tokens.log.lines, ElementsAre("-- line 1 col 1: \";\" expected", "-- line 1 col 7: error 99"));
  EXPECT_EQ(tokens.parser.GetErrors().count, 2);
}

TEST(ParserTokens, ASuppressedErrorStartsTheDistanceAgain) {
  TokenParser tokens("A B C D E F");
  tokens.parser.Get();
  tokens.parser.SynErr(12);
  for (int i = 0; i < 4; ++i) {
    tokens.parser.Get();
    tokens.parser.SynErr(12);
  }
  EXPECT_EQ(tokens.parser.GetErrors().count, 1);
}

TEST(ParserTokens, TheFirstErrorNeedsNoDistance) {
  TokenParser tokens("");
  tokens.parser.Get();
  tokens.parser.SynErr(12);
  EXPECT_EQ(tokens.parser.GetErrors().count, 1);
}

TEST(ParserTokens, SemErrReportsTheTokenConsumed) {
  TokenParser tokens("A B\n  C D");
  tokens.parser.Get();
  tokens.parser.Get();
  tokens.parser.Get();
  tokens.parser.SemErr(L"not good");
  tokens.parser.SemErr(L"suppressed");
  EXPECT_THAT(tokens.log.lines, ElementsAre("-- line 1 col 3: not good"));
  EXPECT_EQ(tokens.parser.GetErrors().count, 1);
}

TEST(ParserTokens, ExpectWeakSkipsToTheStartSet) {
  TokenParser tokens("A B C ; D");
  tokens.parser.Get();
  tokens.parser.ExpectWeak(15, 0);
  EXPECT_THAT(tokens.log.lines, ElementsAre("-- line 1 col 1: \"(\" expected"));
  EXPECT_TRUE(tokens.parser.StartOf(0));
  tokens.parser.ExpectWeak(12, 0);
  tokens.parser.Expect(6);
  EXPECT_EQ(tokens.parser.GetErrors().count, 1);
}

TEST(ParserTokens, WeakSeparatorConsumesTheSeparator) {
  TokenParser tokens(", 1");
  tokens.parser.Get();
  EXPECT_TRUE(tokens.parser.WeakSeparator(14, 1, 0));
  tokens.parser.Expect(1);
  EXPECT_FALSE(tokens.parser.WeakSeparator(14, 1, 0));
  EXPECT_THAT(tokens.log.lines, IsEmpty());
}

}  // namespace
