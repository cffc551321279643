// The scanner: tokens, comments, lines and columns, from every kind of source.
#include <gtest/gtest.h>

#include <cwchar>
#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "ReadingSupport.h"
#include "Scanner.h"

namespace {

using reading::AllSources;
using reading::Ended;
using reading::kByteOrderMark;
using reading::NameOf;
using reading::RunInChild;
using reading::ScannerOver;
using reading::Source;
using reading::Utf8;
using VELMAR::KeywordMap;
using VELMAR::Scanner;
using VELMAR::StartStates;
using VELMAR::Token;

constexpr int kBlock = 65536;
constexpr int kLongestToken = 32767;

// A token as a value; two are equal where kind and text are.
struct Tok {
  int kind;
  std::string text;
  int pos = 0;
  int line = 0;
  int col = 0;
  Tok(int kind, std::string text) : kind(kind), text(std::move(text)) {}
  explicit Tok(const Token& token, bool utf8)
      : kind(token.kind), pos(token.pos), line(token.line), col(token.col) {
    for (const wchar_t* c = token.val; *c != 0; ++c) {
      text += utf8 ? Utf8(static_cast<unsigned int>(*c)) : std::string(1, static_cast<char>(*c));
      EXPECT_TRUE(utf8 || static_cast<unsigned int>(*c) < 256u);
    }
  }
};
bool operator==(const Tok& a, const Tok& b) { return a.kind == b.kind && a.text == b.text; }
std::ostream& operator<<(std::ostream& os, const Tok& token) {
  return os << token.kind << " [" << token.text << "] at " << token.pos << ", " << token.line << ":"
            << token.col;
}
using Toks = std::vector<Tok>;

// All tokens without the end of input, which is put into `end` where that is given.
Toks ScanAll(const std::string& bytes, Source source, Tok* end = nullptr) {
  const bool utf8 = bytes.compare(0, 3, kByteOrderMark) == 0;
  ScannerOver scanner(bytes, source);
  Toks tokens;
  while (true) {
    const Token* token = scanner->Scan();
    if (token->kind == Token::EoF) {
      if (end != nullptr) {
        *end = Tok(Token::EoF, "");
        end->pos = token->pos;
        end->line = token->line;
        end->col = token->col;
      }
      return tokens;
    }
    tokens.emplace_back(*token, utf8);
    if (tokens.size() > bytes.size()) {
      ADD_FAILURE() << "more tokens than bytes";
      return tokens;
    }
  }
}
Toks ScanAll(const std::string& bytes) { return ScanAll(bytes, Source::Memory); }

// Line and column of a byte position, counted from the start of the input.
std::pair<int, int> TruePlace(const std::string& bytes, int pos) {
  std::size_t i = bytes.compare(0, 3, kByteOrderMark) == 0 ? 3 : 0;
  const bool utf8 = i == 3;
  int line = 1;
  int col = 1;
  for (; i < static_cast<std::size_t>(pos); ++i) {
    if (utf8 && (bytes[i] & 0xC0) == 0x80) continue;
    ++col;
    const bool loneCr = bytes[i] == '\r' && (i + 1 == bytes.size() || bytes[i + 1] != '\n');
    if (bytes[i] == '\n' || loneCr) {
      ++line;
      col = 1;
    }
  }
  return {line, col};
}

// A carriage return without a line feed counts as a line feed.
std::string WithLineFeeds(std::string bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\r' && (i + 1 == bytes.size() || bytes[i + 1] != '\n')) bytes[i] = '\n';
  }
  return bytes;
}

// Scans the bytes from every source and compares the tokens, their texts with those at their positions, and
// their lines and columns with those counted.
void ExpectTokens(const std::string& bytes, const Toks& expected) {
  const std::string normal = WithLineFeeds(bytes);
  for (const Source source : AllSources()) {
    SCOPED_TRACE(NameOf(source) + " [" + bytes.substr(0, 300) + "]");
    Tok end(0, "");
    const Toks tokens = ScanAll(bytes, source, &end);
    EXPECT_EQ(tokens, expected);
    for (const Tok& token : tokens) {
      EXPECT_EQ(normal.substr(static_cast<std::size_t>(token.pos), token.text.size()), token.text) << token;
      EXPECT_EQ(std::make_pair(token.line, token.col), TruePlace(bytes, token.pos)) << token;
    }
    EXPECT_EQ(end.pos, static_cast<int>(bytes.size()));
    EXPECT_EQ(std::make_pair(end.line, end.col), TruePlace(bytes, end.pos));
  }
}

// As above, and once more as UTF-8. For texts of ASCII.
void ExpectTokensAlsoAsUtf8(const std::string& bytes, const Toks& expected) {
  ExpectTokens(bytes, expected);
  ExpectTokens(kByteOrderMark + bytes, expected);
}

// ------------------------------------------------------------------------------ the table of rules

struct Case {
  const char* name;
  std::string input;
  Toks tokens;
};
std::ostream& operator<<(std::ostream& os, const Case& c) { return os << c.name; }

constexpr int kInteger = Token::Integer;
constexpr int kReal = Token::Real;
constexpr int kInstance = Token::EntityInstanceName;
constexpr int kString = Token::String;
constexpr int kBinary = Token::Binary;
constexpr int kIdent = Token::Ident;
constexpr int kInvalid = Token::Invalid;

const Tok kPoint(18, ".");
const Tok kQuote(kInvalid, "\"");

class ScannerRules : public testing::TestWithParam<Case> {};

TEST_P(ScannerRules, Hold) { ExpectTokensAlsoAsUtf8(GetParam().input, GetParam().tokens); }

std::string CaseName(const testing::TestParamInfo<Case>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Integer, ScannerRules,
    testing::Values(
        Case{"OneDigit", "7", {{kInteger, "7"}}},
        Case{"ManyDigits", "0123456789", {{kInteger, "0123456789"}}},
        Case{"PlusSign", "+7", {{kInteger, "+7"}}}, Case{"MinusSign", "-12", {{kInteger, "-12"}}},
        Case{"NoSpaceAfterTheSign", "- 12", {{kInvalid, "-"}, {kInteger, "12"}}},
        Case{"PlusAlone", "+", {{kInvalid, "+"}}}, Case{"MinusAlone", "-", {{kInvalid, "-"}}},
        Case{"TwoSigns", "+-1", {{kInvalid, "+"}, {kInteger, "-1"}}},
        Case{"SignBeforeLetter", "-A", {{kInvalid, "-"}, {kIdent, "A"}}},
        Case{"SignBeforePoint", "+.5", {{kInvalid, "+"}, kPoint, {kInteger, "5"}}},
        Case{"SignEndsTheNumberBefore", "1-2", {{kInteger, "1"}, {kInteger, "-2"}}},
        Case{"LetterEndsIt", "12A", {{kInteger, "12"}, {kIdent, "A"}}},
        Case{"ExponentWithoutPoint", "1E5", {{kInteger, "1"}, {kIdent, "E5"}}},
        Case{"LowerCaseExponentWithoutPoint", "1e5", {{kInteger, "1"}, {kInvalid, "e"}, {kInteger, "5"}}},
        Case{"SpaceBeforeThePoint", "1 .5", {{kInteger, "1"}, kPoint, {kInteger, "5"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Real, ScannerRules,
    testing::Values(Case{"NoDigitsBehindThePoint", "2.", {{kReal, "2."}}},
                    Case{"DigitsBehindThePoint", "2.50", {{kReal, "2.50"}}},
                    Case{"Signed", "-0.5 +1.", {{kReal, "-0.5"}, {kReal, "+1."}}},
                    Case{"Exponent", "1.E5", {{kReal, "1.E5"}}},
                    Case{"LowerCaseExponentWithSign", "1.e+5", {{kReal, "1.e+5"}}},
                    Case{"NegativeExponent", "1.25E-05", {{kReal, "1.25E-05"}}},
                    Case{"ExponentWithoutDigit", "1.E", {{kInvalid, "1.E"}}},
                    Case{"LowerCaseExponentWithoutDigit", "-1.5e", {{kInvalid, "-1.5e"}}},
                    Case{"ExponentSignWithoutDigit", "1.E+", {{kInvalid, "1.E+"}}},
                    Case{"ExponentMinusWithoutDigit", "1.5e-", {{kInvalid, "1.5e-"}}},
                    Case{"ExponentBeforeLetter", "1.EX", {{kInvalid, "1.E"}, {kIdent, "X"}}},
                    Case{"ExponentSignBeforeLetter", "1.E+X", {{kInvalid, "1.E+"}, {kIdent, "X"}}},
                    Case{"ExponentTwice", "1.EE5", {{kInvalid, "1.E"}, {kIdent, "E5"}}},
                    Case{"ExponentSignTwice", "1.E+-5", {{kInvalid, "1.E+"}, {kInteger, "-5"}}},
                    Case{"SpaceInTheExponent", "1.E 5", {{kInvalid, "1.E"}, {kInteger, "5"}}},
                    Case{"PointBehindTheExponent", "1.E5.", {{kReal, "1.E5"}, kPoint}},
                    Case{"SecondPoint", "1.5.2", {{kReal, "1.5"}, kPoint, {kInteger, "2"}}},
                    Case{"MustBeginWithADigit", ".5", {kPoint, {kInteger, "5"}}},
                    Case{"LetterEndsIt", "1.A", {{kReal, "1."}, {kIdent, "A"}}},
                    Case{"TheExponentLetterDIsNone", "1.D5", {{kReal, "1."}, {kIdent, "D5"}}},
                    Case{"SecondExponent", "1.E5E6", {{kReal, "1.E5"}, {kIdent, "E6"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    InstanceName, ScannerRules,
    testing::Values(Case{"OneDigit", "#1", {{kInstance, "#1"}}}, Case{"Zero", "#0", {{kInstance, "#0"}}},
                    Case{"ManyDigits", "#000120000000000", {{kInstance, "#000120000000000"}}},
                    Case{"Alone", "#", {{kInvalid, "#"}}},
                    Case{"BeforeABlank", "# 1", {{kInvalid, "#"}, {kInteger, "1"}}},
                    Case{"BeforeALetter", "#A", {{kInvalid, "#"}, {kIdent, "A"}}},
                    Case{"BeforeASign", "#-1", {{kInvalid, "#"}, {kInteger, "-1"}}},
                    Case{"Twice", "##1", {{kInvalid, "#"}, {kInstance, "#1"}}},
                    Case{"OneBehindTheOther", "#1#2", {{kInstance, "#1"}, {kInstance, "#2"}}},
                    Case{"BeforeAPoint", "#1.5", {{kInstance, "#1"}, kPoint, {kInteger, "5"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Binary, ScannerRules,
    testing::Values(
        Case{"FirstDigit0", "\"0\"", {{kBinary, "\"0\""}}},
        Case{"FirstDigit1", "\"1\"", {{kBinary, "\"1\""}}},
        Case{"FirstDigit2", "\"2\"", {{kBinary, "\"2\""}}},
        Case{"FirstDigit3", "\"3FA\"", {{kBinary, "\"3FA\""}}},
        Case{"EveryDigit", "\"20123456789ABCDEF\"", {{kBinary, "\"20123456789ABCDEF\""}}},
        Case{"FirstDigit4", "\"4\"", {kQuote, {kInteger, "4"}, kQuote}},
        Case{"Empty", "\"\"", {kQuote, kQuote}},
        Case{"LowerCaseDigit", "\"3fA\"", {{kInvalid, "\"3"}, {kInvalid, "f"}, {kIdent, "A"}, kQuote}},
        Case{"LetterG", "\"3FG\"", {{kInvalid, "\"3F"}, {kIdent, "G"}, kQuote}},
        Case{"BlankInside", "\"3 F\"", {{kInvalid, "\"3"}, {kIdent, "F"}, kQuote}},
        Case{"Unterminated", "\"3F", {{kInvalid, "\"3F"}}},
        Case{"TwoInARow", "\"0\"\"1\"", {{kBinary, "\"0\""}, {kBinary, "\"1\""}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Ident, ScannerRules,
    testing::Values(Case{"Letters", "CARTESIAN_POINT", {{kIdent, "CARTESIAN_POINT"}}},
                    Case{"DigitsAndUnderscores", "A_1_B9_", {{kIdent, "A_1_B9_"}}},
                    Case{"UnderscoreFirst", "_ _1A __", {{kIdent, "_"}, {kIdent, "_1A"}, {kIdent, "__"}}},
                    Case{"LowerCaseLettersEndIt", "ABcD", {{kIdent, "AB"}, {kInvalid, "c"}, {kIdent, "D"}}},
                    Case{"AMinusEndsIt", "A-B", {{kIdent, "A"}, {kInvalid, "-"}, {kIdent, "B"}}},
                    Case{"AMinusBeforeADigitEndsIt", "A-1", {{kIdent, "A"}, {kInteger, "-1"}}},
                    Case{"BetweenPoints", ".T.", {kPoint, {kIdent, "T"}, kPoint}},
                    Case{"UserDefined", "!NAME", {{13, "!"}, {kIdent, "NAME"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    Keyword, ScannerRules,
    testing::Values(
        Case{"Header", "HEADER;", {{7, "HEADER;"}}},
        Case{"HeaderAndBlank", "HEADER ;", {{kIdent, "HEADER"}, {12, ";"}}},
        Case{"HeaderAndLineEnd", "HEADER\n;", {{kIdent, "HEADER"}, {12, ";"}}},
        Case{"HeaderAndComment", "HEADER/**/;", {{kIdent, "HEADER"}, {12, ";"}}},
        Case{"Headers", "HEADERS", {{kIdent, "HEADERS"}}}, Case{"Data", "DATA;", {{8, "DATA;"}}},
        Case{"Data1", "DATA_1", {{kIdent, "DATA_1"}}},
        Case{"DataAndParenthesis",
             "DATA('A');",
             {{kIdent, "DATA"}, {15, "("}, {kString, "'A'"}, {16, ")"}, {12, ";"}}},
        Case{"EndSec", "ENDSEC;", {{9, "ENDSEC;"}}},
        Case{"EndSecAndBlank", "ENDSEC ;", {{kIdent, "ENDSEC"}, {12, ";"}}},
        Case{"Iso", "ISO-10303-21;", {{10, "ISO-10303-21;"}}},
        Case{"EndIso", "END-ISO-10303-21;", {{11, "END-ISO-10303-21;"}}},
        Case{"EndIsoDoesNotGoBack", "END-ISO-10303-2X", {{kInvalid, "END-ISO-10303-2"}, {kIdent, "X"}}},
        Case{"IsoInLowerCase", "iso", {{kInvalid, "i"}, {kInvalid, "s"}, {kInvalid, "o"}}},
        Case{"ScopeStart", "&SCOPE", {{21, "&SCOPE"}}},
        Case{"ScopeStartBeforeALetter", "&SCOPEX", {{21, "&SCOPE"}, {kIdent, "X"}}},
        Case{"EndScope", "ENDSCOPE", {{22, "ENDSCOPE"}}},
        Case{"EndScopeAndSemicolon", "ENDSCOPE;", {{22, "ENDSCOPE"}, {12, ";"}}},
        Case{"EndScopes", "ENDSCOPES", {{kIdent, "ENDSCOPES"}}},
        Case{"EndScop", "ENDSCOP", {{kIdent, "ENDSCOP"}}},
        Case{"XEndScope", "XENDSCOPE", {{kIdent, "XENDSCOPE"}}},
        Case{"OneBehindTheOther", "HEADER;ENDSEC;DATA;", {{7, "HEADER;"}, {9, "ENDSEC;"}, {8, "DATA;"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    String, ScannerRules,
    testing::Values(
        Case{"Empty", "''", {{kString, "''"}}}, Case{"Text", "'abc'", {{kString, "'abc'"}}},
        Case{"DoubledApostrophe", "'It''s'", {{kString, "'It''s'"}}},
        Case{"OnlyADoubledApostrophe", "''''", {{kString, "''''"}}},
        Case{"TwoDoubledApostrophes", "''''''", {{kString, "''''''"}}},
        Case{"ThreeApostrophes", "'''", {{kInvalid, "'''"}}},
        Case{"BlankBetweenTwo", "'a' 'b'", {{kString, "'a'"}, {kString, "'b'"}}},
        Case{"LetterBehind", "'a'B", {{kString, "'a'"}, {kIdent, "B"}}},
        Case{"BackslashBeforeTheApostropheEndsIt", "'a\\' B", {{kString, "'a\\'"}, {kIdent, "B"}}},
        Case{"BackslashBeforeADoubledApostrophe", "'a\\''b'", {{kString, "'a\\''b'"}}},
        Case{"EscapesStayRaw",
             "'\\\\\\S\\a\\PA\\\\X\\E9\\X2\\03A9\\X0\\\\X4\\0001F600\\X0\\'",
             {{kString, "'\\\\\\S\\a\\PA\\\\X\\E9\\X2\\03A9\\X0\\\\X4\\0001F600\\X0\\'"}}},
        Case{"CommentSignsInside", "'/* a */ // b'", {{kString, "'/* a */ // b'"}}},
        Case{"LineFeedInside", "'a\nb' C", {{kString, "'a\nb'"}, {kIdent, "C"}}},
        Case{"CrlfInside", "'a\r\nb' C", {{kString, "'a\r\nb'"}, {kIdent, "C"}}},
        Case{"LoneCarriageReturnInsideCountsAsLineFeed", "'a\rb' C", {{kString, "'a\nb'"}, {kIdent, "C"}}},
        Case{"TabInside", "'a\tb'", {{kString, "'a\tb'"}}},
        Case{"ControlCharactersInside", "'\x01\x0B\x0C\x1F\x7F'", {{kString, "'\x01\x0B\x0C\x1F\x7F'"}}},
        Case{"Unterminated", "'abc", {{kInvalid, "'abc"}}},
        Case{"UnterminatedAfterADoubledApostrophe", "'abc''", {{kInvalid, "'abc''"}}},
        Case{"UnterminatedOverLines", "A 'b\nC;\n", {{kIdent, "A"}, {kInvalid, "'b\nC;\n"}}},
        Case{"LoneApostrophe", "'", {{kInvalid, "'"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    OneCharacter, ScannerRules,
    testing::Values(Case{"All",
                         ";!,()$.*=/",
                         {{12, ";"},
                          {13, "!"},
                          {14, ","},
                          {15, "("},
                          {16, ")"},
                          {17, "$"},
                          {18, "."},
                          {19, "*"},
                          {20, "="},
                          {23, "/"}}},
                    Case{"Repeated", ";;((", {{12, ";"}, {12, ";"}, {15, "("}, {15, "("}}},
                    Case{"LowerCaseLetters", "abc", {{kInvalid, "a"}, {kInvalid, "b"}, {kInvalid, "c"}}},
                    Case{"OtherCharacters",
                         "% \f \v ? @ [ ] ^ ` { | } ~ : < > \\ \x7F",
                         {{kInvalid, "%"},
                          {kInvalid, "\f"},
                          {kInvalid, "\v"},
                          {kInvalid, "?"},
                          {kInvalid, "@"},
                          {kInvalid, "["},
                          {kInvalid, "]"},
                          {kInvalid, "^"},
                          {kInvalid, "`"},
                          {kInvalid, "{"},
                          {kInvalid, "|"},
                          {kInvalid, "}"},
                          {kInvalid, "~"},
                          {kInvalid, ":"},
                          {kInvalid, "<"},
                          {kInvalid, ">"},
                          {kInvalid, "\\"},
                          {kInvalid, "\x7F"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    WhiteSpace, ScannerRules,
    testing::Values(
        Case{"Nothing", "", {}}, Case{"OnlyBlanks", " \t\r\n \n\r \r\n", {}},
        Case{"BlankTabAndLineEnds",
             "A B\tC\nD\rE\r\nF",
             {{kIdent, "A"}, {kIdent, "B"}, {kIdent, "C"}, {kIdent, "D"}, {kIdent, "E"}, {kIdent, "F"}}},
        Case{"LineFeedAndCarriageReturn", "A\n\rB", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"TwoCarriageReturnsAndALineFeed", "A\r\r\nB", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"CarriageReturnAtTheEnd", "A\r", {{kIdent, "A"}}},
        Case{"ATabIsOneColumn", "\t\tA\tB", {{kIdent, "A"}, {kIdent, "B"}}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    BlockComment, ScannerRules,
    testing::Values(
        Case{"Alone", "/* a */", {}}, Case{"Empty", "/**/A", {{kIdent, "A"}}},
        Case{"ThreeAsterisks", "/***/A", {{kIdent, "A"}}},
        Case{"ManyAsterisks", "/*********/A", {{kIdent, "A"}}},
        Case{"BeforeAToken", "/* a */A", {{kIdent, "A"}}}, Case{"BehindAToken", "A/* a */", {{kIdent, "A"}}},
        Case{"BetweenTokens", "A/* a */B", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"SeparatesTheDigitsOfANumber", "1/**/2", {{kInteger, "1"}, {kInteger, "2"}}},
        Case{"Nested", "/* a /* b */ c */ D", {{kIdent, "D"}}},
        Case{"NestedTwice", "/*/*/**/*/*/ D", {{kIdent, "D"}}},
        Case{"NestedSideBySide", "/* /* a */ /* b */ */D", {{kIdent, "D"}}},
        Case{"OpeningSlashDoesNotClose", "/*/ a */B", {{kIdent, "B"}}},
        Case{"ClosingAsteriskDoesNotOpen",
             "/* /* a */* b */ C */ D",
             {{kIdent, "C"}, {19, "*"}, {23, "/"}, {kIdent, "D"}}},
        Case{"TwoInARow", "/* a *//* b */C", {{kIdent, "C"}}},
        Case{"ApostropheInside", "/* it's */A", {{kIdent, "A"}}},
        Case{"SlashesInside", "/* // */A", {{kIdent, "A"}}},
        Case{"OverLines", "A /* x\ny\nz */ B", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"OverCrlfLines", "A /* x\r\ny\r\nz */ B\r\nC", {{kIdent, "A"}, {kIdent, "B"}, {kIdent, "C"}}},
        Case{"OverCrLines", "A /* x\ry\rz */ B\rC", {{kIdent, "A"}, {kIdent, "B"}, {kIdent, "C"}}},
        Case{"EndsWithItsLine", "A /* x\ny */\nB", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"LineEndsThenColumns", "/*\n\n*/A B\nC", {{kIdent, "A"}, {kIdent, "B"}, {kIdent, "C"}}},
        Case{"TwoOverLines", "/*\n*/ A /*\n\n*/ /*\n*/B", {{kIdent, "A"}, {kIdent, "B"}}},
        Case{"Unterminated", "A /* b", {{kIdent, "A"}}},
        Case{"UnterminatedOverLines", "A /* b\nC\r\nD\rE", {{kIdent, "A"}}},
        Case{"UnterminatedNested", "A /* /* */ B", {{kIdent, "A"}}},
        Case{"UnterminatedAfterTheAsterisk", "A /* b *", {{kIdent, "A"}}}, Case{"OnlyTheOpening", "/*", {}},
        Case{"OpeningAndSlash", "/*/", {}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    LineComment, ScannerRules,
    testing::Values(
        Case{"EndsAtCrlf", "A // b\r\nC", {{kIdent, "A"}, {kIdent, "C"}}},
        Case{"Empty", "//\r\nA", {{kIdent, "A"}}},
        Case{"DoesNotEndAtALineFeed", "A // b\nC\nD", {{kIdent, "A"}}},
        Case{"DoesNotEndAtACarriageReturn", "A // b\rC\rD", {{kIdent, "A"}}},
        Case{"RunsOverLineFeedsToTheNextCrlf", "A // b\nC\rD\r\nE", {{kIdent, "A"}, {kIdent, "E"}}},
        Case{"DoesNotEndAtLineFeedAndCarriageReturn", "A // b\n\rC", {{kIdent, "A"}}},
        Case{"EndsAtTheSecondOfTwoCarriageReturns", "A // b\r\r\nC", {{kIdent, "A"}, {kIdent, "C"}}},
        Case{"BlockCommentSignsInside", "// /* b\r\nC", {{kIdent, "C"}}},
        Case{"TwoInARow", "// a\r\n// b\r\nC", {{kIdent, "C"}}},
        Case{"BlockCommentBehind", "// a\r\n/* b\r\n */C", {{kIdent, "C"}}},
        Case{"ThreeSlashes", "///\r\nC", {{kIdent, "C"}}}, Case{"AtTheEnd", "A // b", {{kIdent, "A"}}},
        Case{"AtTheEndWithCarriageReturn", "A // b\r", {{kIdent, "A"}}}, Case{"OnlyTheSlashes", "//", {}}),
    CaseName);

INSTANTIATE_TEST_SUITE_P(
    LoneSlash, ScannerRules,
    testing::Values(Case{"Alone", "/", {{23, "/"}}},
                    Case{"BeforeAToken", "/#1/", {{23, "/"}, {kInstance, "#1"}, {23, "/"}}},
                    Case{"BlankBetween", "/ *", {{23, "/"}, {19, "*"}}},
                    Case{"BlankBetweenSlashes", "/ /", {{23, "/"}, {23, "/"}}},
                    Case{"BeforeALineEnd", "/\n/\r\n/\rA", {{23, "/"}, {23, "/"}, {23, "/"}, {kIdent, "A"}}},
                    Case{"AsteriskFirst", "*/", {{19, "*"}, {23, "/"}}}),
    CaseName);

// -------------------------------------------------------------------------------- first characters

// The tokens of one character between blanks.
Toks ExpectedFor(unsigned int c) {
  static const std::map<char, int> oneCharacter = {{';', 12}, {'!', 13}, {',', 14}, {'(', 15}, {')', 16},
                                                   {'$', 17}, {'.', 18}, {'*', 19}, {'=', 20}, {'/', 23}};
  const std::string text = Utf8(c);
  if (c == ' ' || c == '\t' || c == '\n' || c == '\r') return {};
  if (c >= '0' && c <= '9') return {{kInteger, text}};
  if ((c >= 'A' && c <= 'Z') || c == '_') return {{kIdent, text}};
  if (c == '\'') return {{kInvalid, "' "}};
  if (c < 128) {
    const auto found = oneCharacter.find(static_cast<char>(c));
    if (found != oneCharacter.end()) return {{found->second, text}};
  }
  return {{kInvalid, text}};
}

class ScannerFirstCharacter : public testing::TestWithParam<int> {};

TEST_P(ScannerFirstCharacter, BeginsTheTokenOfItsRow) {
  for (int c = GetParam(); c < GetParam() + 16 && c < 256; ++c) {
    const std::string asByte = " " + std::string(1, static_cast<char>(c)) + " ";
    Toks expected = ExpectedFor(static_cast<unsigned int>(c));
    for (Tok& token : expected) {
      if (c >= 128) token.text = std::string(1, static_cast<char>(c));
    }
    ExpectTokens(asByte, expected);
    ExpectTokens(std::string(kByteOrderMark) + " " + Utf8(static_cast<unsigned int>(c)) + " ",
                 ExpectedFor(static_cast<unsigned int>(c)));
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, ScannerFirstCharacter, testing::Range(1, 256, 16));

TEST(Scanner, NulBeginsNoToken) {
  for (const Source source : AllSources()) {
    ScannerOver scanner(std::string("A\0B", 3), source);
    EXPECT_EQ(scanner->Scan()->kind, kIdent);
    const Token* nul = scanner->Scan();
    EXPECT_EQ(nul->kind, kInvalid);
    EXPECT_EQ(nul->pos, 1);
    const Token* behind = scanner->Scan();
    EXPECT_EQ(behind->kind, kIdent);
    EXPECT_EQ(behind->pos, 2);
    EXPECT_EQ(scanner->Scan()->kind, 0);
  }
}

TEST(Scanner, CharactersBeyondLatin1BeginNoToken) {
  // Among them those that fall into the hash bucket of "A", "0", "(" and a blank, and digits and letters of
  // other scripts.
  for (const unsigned int c : {0x100u, 0x141u, 0x130u, 0x128u, 0x120u, 0x391u, 0x660u, 0xFF10u, 0xFF21u,
                               0x2028u, 0x3000u, 0xFEFFu, 0xFFFFu, 0x10001u, 0x1F600u, 0x10041u, 0x10FFFFu}) {
    ExpectTokens(std::string(kByteOrderMark) + "A" + Utf8(c) + "B",
                 {{kIdent, "A"}, {kInvalid, Utf8(c)}, {kIdent, "B"}});
  }
}

// ---------------------------------------------------------------------------------- reserved words

class ScannerReservedWord : public testing::TestWithParam<std::string> {};

TEST_P(ScannerReservedWord, IsRecognisedWhole) {
  static const std::map<std::string, int> kinds = {
      {"HEADER;", 7}, {"DATA;", 8}, {"ENDSEC;", 9}, {"ISO-10303-21;", 10}, {"END-ISO-10303-21;", 11}};
  const int kind = kinds.at(GetParam());
  ExpectTokensAlsoAsUtf8(GetParam(), {{kind, GetParam()}});
  ExpectTokensAlsoAsUtf8(GetParam() + "A", {{kind, GetParam()}, {kIdent, "A"}});
  ExpectTokensAlsoAsUtf8("A" + GetParam(), [&] {
    // Behind another letter it is an identifier up to the first character that is none of an identifier.
    const std::size_t end = GetParam().find_first_of("-;");
    Toks tokens = {{kIdent, "A" + GetParam().substr(0, end)}};
    for (const Tok& token : ScanAll(GetParam().substr(end))) tokens.push_back(token);
    return tokens;
  }());
}

TEST_P(ScannerReservedWord, EveryBeginningFollowedByEveryKindOfCharacter) {
  const std::string word = GetParam();
  for (std::size_t length = 1; length < word.size(); ++length) {
    const std::string begin = word.substr(0, length);
    const bool named = begin.find('-') == std::string::npos;
    ExpectTokens(begin, {{named ? kIdent : kInvalid, begin}});
    for (const char next : {' ', '\n', 'A', 'X', '9', '_', 'x', ';', '-', '\'', '('}) {
      const std::string rest(1, next);
      if (next == word[length]) continue;
      const bool letter = next == 'A' || next == 'X' || next == '_' || next == '9';
      Toks expected;
      if (named && letter) {
        expected.emplace_back(kIdent, begin + rest);
      } else if (named && next == '-' && (begin == "END" || begin == "ISO")) {
        expected.emplace_back(kInvalid, begin + rest);
      } else {
        expected.emplace_back(named ? kIdent : kInvalid, begin);
        if (next == '9') {
          expected.emplace_back(kInteger, rest);
        } else if (letter) {
          expected.emplace_back(kIdent, rest);
        } else if (next == ';') {
          expected.emplace_back(12, rest);
        } else if (next == '(') {
          expected.emplace_back(15, rest);
        } else if (next == '-' || next == 'x' || next == '\'') {
          expected.emplace_back(kInvalid, rest);
        }
      }
      ExpectTokens(begin + rest, expected);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Words, ScannerReservedWord,
                         testing::Values("HEADER;", "DATA;", "ENDSEC;", "ISO-10303-21;", "END-ISO-10303-21;"),
                         [](const auto& info) {
                           std::string name;
                           for (char c : info.param) {
                             if (std::isalnum(static_cast<unsigned char>(c))) name += c;
                           }
                           return name;
                         });

TEST(Scanner, EveryBeginningOfTheScopeWordIsInvalid) {
  const std::string word = "&SCOPE";
  for (std::size_t length = 1; length < word.size(); ++length) {
    const std::string begin = word.substr(0, length);
    ExpectTokens(begin, {{kInvalid, begin}});
    ExpectTokens(begin + " ", {{kInvalid, begin}});
    ExpectTokens(begin + "X", {{kInvalid, begin}, {kIdent, "X"}});
    ExpectTokens(begin + "&SCOPE", {{kInvalid, begin}, {21, "&SCOPE"}});
    ExpectTokens(begin + ";", {{kInvalid, begin}, {12, ";"}});
  }
}

// ----------------------------------------------------------------------------------------- strings

TEST(Scanner, AStringHoldsEveryByteButTheApostrophe) {
  std::string text = "'";
  for (int c = 1; c < 256; ++c) {
    if (c != '\'' && c != '\r') text += static_cast<char>(c);
  }
  text += "'";
  ExpectTokens(text + "A", {{kString, text}, {kIdent, "A"}});
}

TEST(Scanner, ANulInsideAStringIsPartOfIt) {
  for (const Source source : AllSources()) {
    ScannerOver scanner(std::string("'a\0b' C", 7), source);
    const Token* token = scanner->Scan();
    EXPECT_EQ(token->kind, kString);
    EXPECT_EQ(std::wmemcmp(token->val, L"'a\0b'", 6), 0);
    EXPECT_EQ(scanner->Scan()->pos, 6);
  }
}

TEST(Scanner, AStringOfUtf8HoldsCodePointsBelow65536) {
  const std::string text =
      "'" + Utf8(0x80) + Utf8(0xE9) + Utf8(0x7FF) + Utf8(0x800) + Utf8(0x4E00) + Utf8(0xFFFF) + "'";
  ExpectTokens(kByteOrderMark + text + " A", {{kString, text}, {kIdent, "A"}});
  ScannerOver scanner(kByteOrderMark + text, Source::Memory);
  EXPECT_STREQ(scanner->Scan()->val,
               (std::wstring{L'\'', 0x80, 0xE9, 0x7FF, 0x800, 0x4E00, 0xFFFF, L'\''}).c_str());
}

TEST(Scanner, WithoutTheByteOrderMarkEveryByteIsACharacter) {
  const std::string text = "'" + Utf8(0xE9) + Utf8(0x1F600) + "'";
  ExpectTokens(text + " A", {{kString, text}, {kIdent, "A"}});
  ScannerOver scanner(text, Source::Memory);
  EXPECT_STREQ(scanner->Scan()->val,
               (std::wstring{L'\'', 0xC3, 0xA9, 0xF0, 0x9F, 0x98, 0x80, L'\''}).c_str());
}

TEST(Scanner, ACodePointBeyond65535BreaksAString) {
  const std::string emoji = Utf8(0x1F600);
  ExpectTokens(kByteOrderMark + ("'a" + emoji + "B' C"),
               {{kInvalid, "'a"}, {kInvalid, emoji}, {kIdent, "B"}, {kInvalid, "' C"}});
  ExpectTokens(kByteOrderMark + ("'a" + Utf8(0x10FFFF)), {{kInvalid, "'a"}, {kInvalid, Utf8(0x10FFFF)}});
}

TEST(Scanner, CodePoint65536IsTheEndOfInput) {
  for (const Source source : AllSources()) {
    ScannerOver scanner(kByteOrderMark + ("A 'a" + Utf8(0x10000) + "' B"), source);
    EXPECT_EQ(scanner->Scan()->kind, kIdent);
    const Token* broken = scanner->Scan();
    EXPECT_EQ(broken->kind, kInvalid);
    EXPECT_STREQ(broken->val, L"'a");
    for (int i = 0; i < 10; ++i) EXPECT_EQ(scanner->Scan()->kind, 0) << i;
  }
}

// --------------------------------------------------------------------------------- byte order mark

TEST(Scanner, PositionsCountTheByteOrderMarkAndColumnsDoNot) {
  for (const Source source : AllSources()) {
    ScannerOver scanner(kByteOrderMark + std::string("A\n'\xC3\xA9' B"), source);
    const Token* a = scanner->Scan();
    EXPECT_EQ(a->pos, 3);
    EXPECT_EQ(a->line, 1);
    EXPECT_EQ(a->col, 1);
    const Token* text = scanner->Scan();
    EXPECT_EQ(text->pos, 5);
    EXPECT_EQ(text->line, 2);
    EXPECT_EQ(text->col, 1);
    const Token* b = scanner->Scan();
    EXPECT_EQ(b->pos, 10);
    EXPECT_EQ(b->line, 2);
    EXPECT_EQ(b->col, 5);
  }
}

TEST(Scanner, OnlyTheByteOrderMark) { ExpectTokens(kByteOrderMark, {}); }

TEST(Scanner, ASecondByteOrderMarkIsAnInvalidToken) {
  ExpectTokens(std::string(kByteOrderMark) + kByteOrderMark + "A",
               {{kInvalid, kByteOrderMark}, {kIdent, "A"}});
}

TEST(Scanner, MalformedUtf8IsDecodedLeniently) {
  for (const Source source : AllSources()) {
    // A stray continuation byte is passed over; a lead byte takes what follows, here the blank: 3 * 64 + 32.
    ScannerOver scanner(std::string(kByteOrderMark) +
                            "\x80"
                            "A\x80\x80"
                            "B \xC3 C",
                        source);
    const Token* name = scanner->Scan();
    EXPECT_EQ(name->kind, kIdent);
    EXPECT_STREQ(name->val, L"AB");
    const Token* odd = scanner->Scan();
    EXPECT_EQ(odd->kind, kInvalid);
    EXPECT_STREQ(odd->val, (std::wstring{static_cast<wchar_t>(3 * 64 + 32)}).c_str());
    EXPECT_STREQ(scanner->Scan()->val, L"C");
    EXPECT_EQ(scanner->Scan()->kind, 0);
  }
}

class ScannerBrokenByteOrderMark : public testing::TestWithParam<std::string> {};

TEST_P(ScannerBrokenByteOrderMark, EndsTheProcess) {
  for (const Source source : AllSources()) {
    const Ended ended = RunInChild([&] { ScannerOver scanner(GetParam(), source); });
    EXPECT_EQ(ended.exitStatus, 1) << NameOf(source);
    EXPECT_EQ(ended.output, "Illegal byte order mark at start of file") << NameOf(source);
  }
}

INSTANTIATE_TEST_SUITE_P(Cases, ScannerBrokenByteOrderMark,
                         testing::Values(std::string("\xEF"), std::string("\xEF\0", 2),
                                         std::string("\xEF\xBB"), std::string("\xEF\xBB\xBE"),
                                         std::string("\xEF\xBF\xBBISO-10303-21;"),
                                         std::string("\xEFISO-10303-21;")));

TEST(Scanner, AByteOrderMarkBehindTheFirstCharacterIsOrdinary) {
  ExpectTokens(std::string(" \xEF\xBB\xBF"), {{kInvalid, "\xEF"}, {kInvalid, "\xBB"}, {kInvalid, "\xBF"}});
}

// ------------------------------------------------------------------------------- lines and columns

TEST(Scanner, EveryKindOfLineEndCountsOnce) {
  for (const std::string lineEnd : {"\n", "\r\n", "\r"}) {
    for (const char* mark : {"", kByteOrderMark}) {
      std::string bytes = mark;
      for (int line = 0; line < 20; ++line)
        bytes += std::string(static_cast<std::size_t>(line), ' ') + "A" + lineEnd;
      for (const Source source : AllSources()) {
        Tok end(0, "");
        const Toks tokens = ScanAll(bytes, source, &end);
        ASSERT_EQ(tokens.size(), 20u);
        for (int line = 0; line < 20; ++line) {
          EXPECT_EQ(tokens[static_cast<std::size_t>(line)].line, line + 1);
          EXPECT_EQ(tokens[static_cast<std::size_t>(line)].col, line + 1);
        }
        EXPECT_EQ(end.line, 21);
        EXPECT_EQ(end.col, 1);
      }
    }
  }
}

TEST(Scanner, PlaceBehindACommentIsAsIfItsLinesHadBeenBlank) {
  const std::string text = "A /* one\n two /* three\n */ four */ B; // five\r\n C /* six\r\nseven */ D\nE";
  const std::string blank =
      "A       \n                \n            B;        \r\n C       \r\n         D\nE";
  const Toks withComments = ScanAll(text);
  const Toks withBlanks = ScanAll(blank);
  ASSERT_EQ(withComments, withBlanks);
  for (std::size_t i = 0; i < withComments.size(); ++i) {
    EXPECT_EQ(withComments[i].line, withBlanks[i].line) << withComments[i];
    EXPECT_EQ(withComments[i].col, withBlanks[i].col) << withComments[i];
  }
}

TEST(Scanner, TheLineIsTrueBehindAnUnterminatedComment) {
  Tok end(0, "");
  ScanAll("A\n/* b\nc\nd", Source::Memory, &end);
  EXPECT_EQ(end.line, 4);
  EXPECT_EQ(end.col, 2);
  ScanAll("A\n// b\nc\nd", Source::Memory, &end);
  EXPECT_EQ(end.line, 4);
  EXPECT_EQ(end.col, 2);
}

TEST(Scanner, StringsOverLinesCountTheirLines) {
  const Toks tokens = ScanAll("'a\nb\r\nc\rd' E");
  ASSERT_EQ(tokens.size(), 2u);
  EXPECT_EQ(tokens[0].line, 1);
  EXPECT_EQ(tokens[1].line, 4);
  EXPECT_EQ(tokens[1].col, 4);
}

TEST(Scanner, AnEmptyInputIsItsEndAtPosition0) {
  for (const Source source : AllSources()) {
    ScannerOver scanner("", source);
    const Token* end = scanner->Scan();
    EXPECT_EQ(end->kind, 0);
    EXPECT_EQ(end->pos, 0);
    EXPECT_EQ(end->line, 1);
    EXPECT_EQ(end->col, 1);
  }
}

// ----------------------------------------------------------------------------- blocks of the input

// Every kind of token and comment, lone carriage returns, pairs of characters that belong together, UTF-8.
const char kSnippet[] =
    "ISO-10303-21;\r\nHEADER;/* a /* b */\r\n*/ENDSEC;\rDATA;#12=(A_1('it''s \xC3\xA9 "
    "\xE4\xB8\x80',-1.5E+10,.T.,\"0AF\","
    "$,*),/#3/);//c\r\n&SCOPE ENDSCOPE !X -7 2. END-ISO-10303-2X ENDSEC;\r\n\nEND-ISO-10303-21;";

// The tokens of kSnippet must be the same wherever a border of `block` bytes falls into it.
void ExpectBordersDoNotMatter(int block, Source source, const std::string& mark) {
  const std::string snippet = kSnippet;
  const Toks reference = ScanAll(mark + snippet);
  ASSERT_GT(reference.size(), 30u);
  for (std::size_t before = 0; before <= snippet.size(); ++before) {
    const std::size_t blanks = static_cast<std::size_t>(block) - before - mark.size();
    const Toks tokens = ScanAll(mark + std::string(blanks, ' ') + snippet + std::string(10, ' '), source);
    ASSERT_EQ(tokens, reference) << "border behind byte " << before;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
      ASSERT_EQ(tokens[i].pos, reference[i].pos + static_cast<int>(blanks))
          << "border behind byte " << before << tokens[i];
      ASSERT_EQ(tokens[i].line, reference[i].line) << "border behind byte " << before << tokens[i];
      const int shift = tokens[i].line == 1 ? static_cast<int>(blanks) : 0;
      ASSERT_EQ(tokens[i].col, reference[i].col + shift) << "border behind byte " << before << tokens[i];
    }
  }
}

TEST(ScannerBlocks, TheBorderOfAFilesFirstBlockFallsAnywhere) {
  ExpectBordersDoNotMatter(kBlock, Source::File, "");
}
TEST(ScannerBlocks, TheBorderOfAFilesSecondBlockFallsAnywhere) {
  ExpectBordersDoNotMatter(2 * kBlock, Source::File, "");
}
TEST(ScannerBlocks, TheBorderOfANamedFilesBlockFallsAnywhere) {
  ExpectBordersDoNotMatter(kBlock, Source::Name, "");
}
TEST(ScannerBlocks, TheBorderOfAUtf8FilesBlockFallsAnywhere) {
  ExpectBordersDoNotMatter(kBlock, Source::File, kByteOrderMark);
}
TEST(ScannerBlocks, TheBorderOfAPipesFirstChunkFallsAnywhere) {
  ExpectBordersDoNotMatter(1024, Source::Pipe, "");
}
TEST(ScannerBlocks, TheBorderOfAPipesSecondChunkFallsAnywhere) {
  ExpectBordersDoNotMatter(2048, Source::Pipe, "");
}
TEST(ScannerBlocks, TheBorderOfAUtf8PipesChunkFallsAnywhere) {
  ExpectBordersDoNotMatter(1024, Source::Pipe, kByteOrderMark);
}
TEST(ScannerBlocks, TheBorderOfAPipesBlockFallsAnywhere) {
  ExpectBordersDoNotMatter(kBlock, Source::Pipe, "");
}

TEST(ScannerBlocks, ATokenLongerThanSeveralChunksOfAPipe) {
  const std::string text = "'" + std::string(30000, 'x') + "'";
  ExpectTokens("A " + text + " B", {{kIdent, "A"}, {kString, text}, {kIdent, "B"}});
}

TEST(ScannerBlocks, ACommentLongerThanSeveralBlocks) {
  const std::string comment = "/*" + std::string(300000, '\n') + "*/";
  ExpectTokens("A" + comment + "B", {{kIdent, "A"}, {kIdent, "B"}});
}

TEST(ScannerBlocks, AStreamStaysOpenAndTheCallers) {
  reading::TemporaryFile file("A B");
  FILE* stream = fopen(file.Path().c_str(), "rb");
  {
    Scanner scanner(stream);
    EXPECT_EQ(scanner.Scan()->kind, kIdent);
  }
  EXPECT_NE(fcntl(fileno(stream), F_GETFD), -1);
  EXPECT_EQ(fclose(stream), 0);
}

TEST(ScannerBlocks, AMemoryBlockIsCopied) {
  std::string bytes = "ABC DEF";
  Scanner scanner(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
  bytes.assign(bytes.size(), '(');
  EXPECT_STREQ(scanner.Scan()->val, L"ABC");
  EXPECT_STREQ(scanner.Scan()->val, L"DEF");
}

// ---------------------------------------------------------------------------------- the token list

TEST(ScannerPeek, LooksAheadWithoutConsuming) {
  ScannerOver scanner("A B C", Source::Memory);
  Token* a = scanner->Peek();
  EXPECT_STREQ(a->val, L"A");
  Token* b = scanner->Peek();
  EXPECT_STREQ(b->val, L"B");
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(scanner->Scan(), a);
  EXPECT_EQ(scanner->Scan(), b);
  EXPECT_STREQ(scanner->Scan()->val, L"C");
  EXPECT_EQ(scanner->Scan()->kind, 0);
}

TEST(ScannerPeek, BeginsBehindTheTokenLastScanned) {
  ScannerOver scanner("A B C D", Source::Memory);
  scanner->Peek();
  scanner->Peek();
  scanner->Peek();
  EXPECT_STREQ(scanner->Scan()->val, L"A");
  EXPECT_STREQ(scanner->Peek()->val, L"B");
  EXPECT_STREQ(scanner->Peek()->val, L"C");
}

TEST(ScannerPeek, ResetBeginsAgain) {
  ScannerOver scanner("A B C", Source::Memory);
  EXPECT_STREQ(scanner->Scan()->val, L"A");
  EXPECT_STREQ(scanner->Peek()->val, L"B");
  EXPECT_STREQ(scanner->Peek()->val, L"C");
  scanner->ResetPeek();
  EXPECT_STREQ(scanner->Peek()->val, L"B");
  EXPECT_STREQ(scanner->Scan()->val, L"B");
}

TEST(ScannerPeek, PassesNoInvalidToken) {
  ScannerOver scanner("% A", Source::Memory);
  EXPECT_EQ(scanner->Peek()->kind, kInvalid);
  EXPECT_EQ(scanner->Peek()->kind, kIdent);
}

TEST(ScannerPeek, StaysAtTheEndOfInput) {
  ScannerOver scanner("A", Source::Memory);
  EXPECT_EQ(scanner->Peek()->kind, kIdent);
  EXPECT_EQ(scanner->Peek()->kind, 0);
  EXPECT_EQ(scanner->Peek()->kind, 0);
  EXPECT_EQ(scanner->Scan()->kind, kIdent);
  EXPECT_EQ(scanner->Scan()->kind, 0);
}

TEST(ScannerPeek, FarAheadKeepsEveryToken) {
  std::string bytes;
  for (int i = 0; i < 50000; ++i) bytes += "#" + std::to_string(i) + " ";
  ScannerOver scanner(bytes, Source::Memory);
  const Token* first = scanner->Scan();
  std::vector<Token*> peeked;
  for (int i = 1; i < 50000; ++i) peeked.push_back(scanner->Peek());
  EXPECT_STREQ(first->val, L"#0");
  for (int i = 1; i < 50000; ++i) {
    Token* token = scanner->Scan();
    ASSERT_EQ(token, peeked[static_cast<std::size_t>(i) - 1]);
    ASSERT_EQ(token->val, L"#" + std::to_wstring(i));
  }
  EXPECT_EQ(scanner->Scan()->kind, 0);
}

TEST(Scanner, TheTokenLastScannedIsKeptWhileTheNextIsScanned) {
  std::string bytes;
  for (int i = 0; i < 30000; ++i) bytes += "A" + std::to_string(i) + " ";
  ScannerOver scanner(bytes, Source::Memory);
  const Token* last = scanner->Scan();
  for (int i = 1; i < 30000; ++i) {
    const Token* token = scanner->Scan();
    ASSERT_EQ(last->val, L"A" + std::to_wstring(i - 1));
    ASSERT_EQ(last->next, token);
    last = token;
  }
}

TEST(Scanner, TheListEndsWithNull) {
  ScannerOver scanner("A B", Source::Memory);
  Token* a = scanner->Scan();
  EXPECT_EQ(a->next, nullptr);
  Token* b = scanner->Scan();
  EXPECT_EQ(a->next, b);
  EXPECT_EQ(b->next, nullptr);
}

TEST(Scanner, BehindTheEndThereAreOnlyEnds) {
  for (const Source source : AllSources()) {
    ScannerOver scanner("A", source);
    scanner->Scan();
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(scanner->Scan()->kind, 0);
  }
}

// -------------------------------------------------------------------------------------- hard stops

const char kTooLong[] = "--- Too long token value\n";

TEST(ScannerHardStop, TheLongestTokenHas32767Characters) {
  const std::string longest = "'" + std::string(kLongestToken - 2, 'x') + "'";
  ExpectTokensAlsoAsUtf8(longest + " A", {{kString, longest}, {kIdent, "A"}});
}

struct TooLong {
  const char* name;
  std::string input;
};
std::ostream& operator<<(std::ostream& os, const TooLong& c) { return os << c.name; }

class ScannerTooLong : public testing::TestWithParam<TooLong> {};

TEST_P(ScannerTooLong, EndsTheProcess) {
  for (const Source source : AllSources()) {
    const Ended ended = RunInChild([&] {
      ScannerOver scanner(GetParam().input, source);
      while (scanner->Scan()->kind != 0) continue;
    });
    EXPECT_EQ(ended.exitStatus, 1) << NameOf(source);
    EXPECT_EQ(ended.output, kTooLong) << NameOf(source);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Tokens, ScannerTooLong,
    testing::Values(TooLong{"String", "A '" + std::string(kLongestToken - 1, 'x') + "'"},
                    TooLong{"UnterminatedString", "A '" + std::string(kLongestToken, 'x')},
                    TooLong{"Identifier", std::string(kLongestToken + 1, 'A')},
                    TooLong{"Integer", std::string(kLongestToken + 1, '1')},
                    TooLong{"InstanceName", "#" + std::string(kLongestToken, '1')},
                    TooLong{"Binary", "\"0" + std::string(kLongestToken - 1, 'F') + "\""},
                    TooLong{"Utf8String",
                            kByteOrderMark + ("A '" + std::string(kLongestToken - 1, 'x') + "'")},
                    TooLong{"VeryLongString", "'" + std::string(3000000, 'x') + "'"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_P(ScannerTooLong, IsReadWhereLongTokensAreAllowed) {
  for (const Source source : AllSources()) {
    ScannerOver scanner(GetParam().input + " B", source);
    scanner->AllowLongTokens();
    std::size_t longest = 0;
    for (const Token* token = scanner->Scan(); token->kind != 0; token = scanner->Scan()) {
      longest = std::max(longest, std::wcslen(token->val));
    }
    EXPECT_GT(longest, static_cast<std::size_t>(kLongestToken)) << NameOf(source);
  }
}

TEST(ScannerHardStop, TheLengthOfAUtf8TokenIsCountedInCodePoints) {
  std::string text = "'";
  for (int i = 0; i < kLongestToken - 2; ++i) text += Utf8(0x4E00);
  ExpectTokens(kByteOrderMark + (text + "' A"), {{kString, text + "'"}, {kIdent, "A"}});
  const Ended ended = RunInChild([&] {
    ScannerOver scanner(kByteOrderMark + text + Utf8(0x4E00) + "'", Source::Memory);
    scanner->Scan();
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, kTooLong);
}

TEST(ScannerHardStop, ALongCommentIsNoToken) {
  ExpectTokens("A /*" + std::string(200000, 'x') + "*/ B //" + std::string(200000, 'y') + "\r\nC",
               {{kIdent, "A"}, {kIdent, "B"}, {kIdent, "C"}});
}

TEST(ScannerHardStop, AFileThatCannotBeOpenedEndsTheProcess) {
  const Ended ended = RunInChild([] { Scanner scanner(L"/no/such folder/part.stp"); });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "--- Cannot open file /no/such folder/part.stp\n");
}

TEST(ScannerHardStop, AnUnreadableNameBeyondAsciiEndsTheProcessToo) {
  const Ended ended = RunInChild([] { Scanner scanner(L"/no/such/\u00C3\u00A9.stp"); });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output.substr(0, 30), "--- Cannot open file /no/such/");
}

TEST(ScannerHardStop, TheMessageComesAlsoWhereStandardOutputIsWide) {
  const Ended ended = RunInChild([] {
    if (std::freopen("/dev/stdout", "w", stdout) == nullptr || std::fwide(stdout, 1) <= 0) std::exit(3);
    std::wprintf(L"wide ");
    Scanner scanner(L"/no/such/part.stp");
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "wide --- Cannot open file /no/such/part.stp\n");
}

TEST(Scanner, AFileNameIsOneCharacterPerByte) {
  reading::TemporaryFile file("A B");
  const std::string renamed = file.Path() + "_\xC3\xA9";
  ASSERT_EQ(std::rename(file.Path().c_str(), renamed.c_str()), 0);
  std::wstring name;
  for (const char c : renamed) name += static_cast<wchar_t>(static_cast<unsigned char>(c));
  {
    Scanner scanner(name.c_str());
    EXPECT_STREQ(scanner.Scan()->val, L"A");
  }
  std::remove(renamed.c_str());
}

// -------------------------------------------------------------------------------------- the tables

TEST(StartStates, ACharacterThatWasNeverSetHasState0) {
  StartStates states;
  for (const int c : {0, 65, 127, 128, 255, 65536, 1114111}) EXPECT_EQ(states.state(c), 0);
}

TEST(StartStates, CharactersOfOneBucketAreToldApart) {
  StartStates states;
  states.set('A', 7);
  states.set('A' + 128, 8);
  states.set(65536, -1);
  EXPECT_EQ(states.state('A'), 7);
  EXPECT_EQ(states.state('A' + 128), 8);
  EXPECT_EQ(states.state('A' + 256), 0);
  EXPECT_EQ(states.state(65536), -1);
  EXPECT_EQ(states.state(0), 0);
  EXPECT_EQ(states.state(128), 0);
}

TEST(KeywordMap, FindsExactTextsOnly) {
  KeywordMap keywords;
  keywords.set(L"ENDSCOPE", 22);
  EXPECT_EQ(keywords.get(L"ENDSCOPE", 6), 22);
  EXPECT_EQ(keywords.get(L"endscope", 6), 6);
  EXPECT_EQ(keywords.get(L"ENDSCOP", 6), 6);
  EXPECT_EQ(keywords.get(L"ENDSCOPES", 6), 6);
  EXPECT_EQ(keywords.get(L"", 6), 6);
}

TEST(KeywordMap, WordsOfOneBucketAreToldApart) {
  std::wstring other;
  const int bucket = coco_string_hash(L"ENDSCOPE") % 128;
  for (int i = 0; other.empty(); ++i) {
    const std::wstring word = L"W" + std::to_wstring(i);
    if (coco_string_hash(word.c_str()) % 128 == bucket) other = word;
  }
  KeywordMap keywords;
  keywords.set(L"ENDSCOPE", 22);
  EXPECT_EQ(keywords.get(other.c_str(), 6), 6);
  keywords.set(other.c_str(), 30);
  EXPECT_EQ(keywords.get(other.c_str(), 6), 30);
  EXPECT_EQ(keywords.get(L"ENDSCOPE", 6), 22);
}

TEST(KeywordMap, OwnsItsKeys) {
  KeywordMap keywords;
  wchar_t* key = coco_string_create(L"ABC");
  keywords.set(key, 5);
  coco_string_delete(key);
  EXPECT_EQ(keywords.get(L"ABC", 6), 5);
}

TEST(TokenKinds, HaveTheirNumbers) {
  const int kinds[] = {Token::EoF,
                       Token::Integer,
                       Token::Real,
                       Token::EntityInstanceName,
                       Token::String,
                       Token::Binary,
                       Token::Ident,
                       Token::Header,
                       Token::Data,
                       Token::EndSec,
                       Token::Iso10303_21,
                       Token::EndIso10303_21,
                       Token::Semicolon,
                       Token::Exclamation,
                       Token::Comma,
                       Token::LeftParenthesis,
                       Token::RightParenthesis,
                       Token::Dollar,
                       Token::Point,
                       Token::Asterisk,
                       Token::Equals,
                       Token::Scope,
                       Token::EndScope,
                       Token::Slash,
                       Token::Invalid};
  for (int number = 0; number <= 24; ++number) EXPECT_EQ(kinds[number], number);
}

}  // namespace
