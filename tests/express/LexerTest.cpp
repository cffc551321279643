#include <gmock/gmock.h>

#include "Lexer.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Lexed {
  explicit Lexed(const std::string& text) : file("test.exp", text), tokens(Tokenize(file, diagnostics)) {}

  std::vector<TokenKind> Kinds() const {
    std::vector<TokenKind> kinds;
    for (const Token& token : tokens) kinds.push_back(token.kind);
    return kinds;
  }
  std::string Text(std::size_t i) const { return std::string(file.Text(tokens[i].offset, tokens[i].length)); }
  std::vector<std::string> Codes() const {
    std::vector<std::string> codes;
    for (const Diagnostic& d : diagnostics.All()) {
      codes.push_back(std::string(CatalogueRowOf(d.code).number) + '@' + std::to_string(d.where.offset));
    }
    return codes;
  }

  SourceFile file;
  Diagnostics diagnostics;
  std::vector<Token> tokens;
};

struct OneToken {
  const char* text;
  TokenKind kind;
};

std::ostream& operator<<(std::ostream& out, const OneToken& row) { return out << row.text; }

class EveryToken : public testing::TestWithParam<OneToken> {};

TEST_P(EveryToken, IsReadWhole) {
  const Lexed lexed(GetParam().text);
  EXPECT_THAT(lexed.Kinds(), ElementsAre(GetParam().kind, TokenKind::EndOfFile));
  EXPECT_EQ(lexed.Text(0), GetParam().text);
  EXPECT_THAT(lexed.Codes(), IsEmpty());
}

TEST_P(EveryToken, EndsBeforeTheNextOne) {
  const Lexed lexed(std::string(GetParam().text) + " x");
  EXPECT_THAT(lexed.Kinds(), ElementsAre(GetParam().kind, TokenKind::Identifier, TokenKind::EndOfFile));
}

INSTANTIATE_TEST_SUITE_P(
    Symbols, EveryToken,
    testing::Values(OneToken{".", TokenKind::Dot}, OneToken{",", TokenKind::Comma},
                    OneToken{";", TokenKind::Semicolon}, OneToken{":", TokenKind::Colon},
                    OneToken{"*", TokenKind::Times}, OneToken{"+", TokenKind::Plus},
                    OneToken{"-", TokenKind::Minus}, OneToken{"=", TokenKind::Equal},
                    OneToken{"\\", TokenKind::Backslash}, OneToken{"/", TokenKind::Slash},
                    OneToken{"<", TokenKind::Less}, OneToken{">", TokenKind::Greater},
                    OneToken{"[", TokenKind::LeftBracket}, OneToken{"]", TokenKind::RightBracket},
                    OneToken{"{", TokenKind::LeftBrace}, OneToken{"}", TokenKind::RightBrace},
                    OneToken{"|", TokenKind::Bar}, OneToken{"(", TokenKind::LeftParenthesis},
                    OneToken{")", TokenKind::RightParenthesis}, OneToken{"?", TokenKind::Question},
                    OneToken{"<=", TokenKind::LessEqual}, OneToken{"<>", TokenKind::NotEqual},
                    OneToken{">=", TokenKind::GreaterEqual}, OneToken{"<*", TokenKind::LessStar},
                    OneToken{":=", TokenKind::Assign}, OneToken{"||", TokenKind::BarBar},
                    OneToken{"**", TokenKind::Power}, OneToken{":=:", TokenKind::InstanceEqual},
                    OneToken{":<>:", TokenKind::InstanceNotEqual}));

INSTANTIATE_TEST_SUITE_P(
    Literals, EveryToken,
    testing::Values(OneToken{"0", TokenKind::IntegerLiteral},
                    OneToken{"12345678901234567890", TokenKind::IntegerLiteral},
                    OneToken{"1.", TokenKind::RealLiteral}, OneToken{"1.5", TokenKind::RealLiteral},
                    OneToken{"1.E5", TokenKind::RealLiteral}, OneToken{"1.5e-10", TokenKind::RealLiteral},
                    OneToken{"''", TokenKind::StringLiteral}, OneToken{"'it''s'", TokenKind::StringLiteral},
                    OneToken{"'(* -- ; \"'", TokenKind::StringLiteral},
                    OneToken{"'gr\xC3\xBC'", TokenKind::StringLiteral},
                    OneToken{"\"\"", TokenKind::EncodedStringLiteral},
                    OneToken{"\"0000004a000000FF\"", TokenKind::EncodedStringLiteral},
                    OneToken{"%0", TokenKind::BinaryLiteral}, OneToken{"%0110", TokenKind::BinaryLiteral}));

INSTANTIATE_TEST_SUITE_P(
    Words, EveryToken,
    testing::Values(OneToken{"a", TokenKind::Identifier}, OneToken{"x_1_", TokenKind::Identifier},
                    OneToken{"entity_", TokenKind::Identifier},
                    OneToken{"end_subtype_constraints", TokenKind::Identifier},
                    OneToken{"ENTITY", TokenKind::Entity}, OneToken{"entity", TokenKind::Entity},
                    OneToken{"EnTiTy", TokenKind::Entity}, OneToken{"self", TokenKind::Self},
                    OneToken{"based_on", TokenKind::BasedOn},
                    OneToken{"generic_entity", TokenKind::GenericEntity},
                    OneToken{"end_subtype_constraint", TokenKind::EndSubtypeConstraint},
                    OneToken{"total_over", TokenKind::TotalOver}, OneToken{"sizeof", TokenKind::Builtin},
                    OneToken{"Pi", TokenKind::Builtin}, OneToken{"log10", TokenKind::Builtin}));

TEST(Lexer, EveryReservedWordIsFoundUnderItsDescription) {
  for (int i = static_cast<int>(TokenKind::Abstract); i < static_cast<int>(TokenKind::kCount); ++i) {
    const TokenKind kind = static_cast<TokenKind>(i);
    const Lexed lexed(DescribeKind(kind));
    EXPECT_THAT(lexed.Kinds(), ElementsAre(kind, TokenKind::EndOfFile)) << DescribeKind(kind);
  }
}

TEST(Lexer, IntegerWithALetterBehindItIsTwoTokens) {
  EXPECT_THAT(Lexed("1E5").Kinds(),
              ElementsAre(TokenKind::IntegerLiteral, TokenKind::Identifier, TokenKind::EndOfFile));
}

TEST(Lexer, TailRemarkEndsWithTheLine) {
  EXPECT_THAT(Lexed("a -- b (* c\nd").Kinds(),
              ElementsAre(TokenKind::Identifier, TokenKind::Identifier, TokenKind::EndOfFile));
  EXPECT_THAT(Lexed("a -- b").Kinds(), ElementsAre(TokenKind::Identifier, TokenKind::EndOfFile));
}

TEST(Lexer, EmbeddedRemarksNest) {
  const Lexed lexed("(* 1 (* 2 *) 1 (**) *) x");
  EXPECT_THAT(lexed.Kinds(), ElementsAre(TokenKind::Identifier, TokenKind::EndOfFile));
  EXPECT_THAT(lexed.Codes(), IsEmpty());
}

TEST(Lexer, ParenthesisAndStarThatOverlapAreNotAnEnd) {
  EXPECT_THAT(Lexed("(*) x *)").Kinds(), ElementsAre(TokenKind::EndOfFile));
  EXPECT_THAT(Lexed("(**) x").Kinds(), ElementsAre(TokenKind::Identifier, TokenKind::EndOfFile));
}

TEST(Lexer, RemarkThatIsNotClosedIsReportedWhereItBegins) {
  EXPECT_THAT(Lexed("a (* (* *) b").Codes(), ElementsAre("E003@2"));
  EXPECT_THAT(Lexed("a (*").Codes(), ElementsAre("E003@2"));
}

TEST(Lexer, RemarkEndWithoutBeginIsReported) { EXPECT_THAT(Lexed("a *) b").Codes(), ElementsAre("E004@2")); }

TEST(Lexer, StringsEndOnTheirLine) {
  EXPECT_THAT(Lexed("'abc\nd").Codes(), ElementsAre("E002@0"));
  EXPECT_THAT(Lexed("'abc").Codes(), ElementsAre("E002@0"));
  EXPECT_THAT(Lexed("'abc''").Codes(), ElementsAre("E002@0"));
  EXPECT_THAT(Lexed("\"0000\nd").Codes(), ElementsAre("E002@0"));
}

TEST(Lexer, SemicolonBehindAStringThatIsNotClosedIsKept) {
  EXPECT_THAT(Lexed("'abc; \r\nd").Kinds(), ElementsAre(TokenKind::StringLiteral, TokenKind::Semicolon,
                                                        TokenKind::Identifier, TokenKind::EndOfFile));
  EXPECT_THAT(Lexed("';\n").Kinds(),
              ElementsAre(TokenKind::StringLiteral, TokenKind::Semicolon, TokenKind::EndOfFile));
}

TEST(Lexer, EncodedStringsHoldGroupsOfEightHexadecimalDigits) {
  EXPECT_THAT(Lexed("\"0000004\"").Codes(), ElementsAre("E005@0"));
  EXPECT_THAT(Lexed("\"00000041\"").Codes(), IsEmpty());
  EXPECT_THAT(Lexed("\"000000410\"").Codes(), ElementsAre("E005@0"));
  EXPECT_THAT(Lexed("\"0000004G\"").Codes(), ElementsAre("E005@0"));
}

TEST(Lexer, BinaryHasAtLeastOneBit) {
  EXPECT_THAT(Lexed("%").Codes(), ElementsAre("E006@0"));
  EXPECT_THAT(Lexed("%2").Codes(), ElementsAre("E006@0"));
  EXPECT_THAT(Lexed("%102").Codes(), ElementsAre("E006@0"));
}

TEST(Lexer, ExponentHasDigits) {
  EXPECT_THAT(Lexed("1.E").Codes(), ElementsAre("E007@0"));
  EXPECT_THAT(Lexed("1.5e+ 3").Codes(), ElementsAre("E007@0"));
}

TEST(Lexer, RunOfUnexpectedCharactersIsOneMessage) {
  const Lexed lexed("a $$$# b");
  EXPECT_THAT(lexed.Codes(), ElementsAre("E001@2"));
  EXPECT_EQ(lexed.diagnostics.All()[0].text, "unexpected character '$'");
  EXPECT_THAT(lexed.Kinds(), ElementsAre(TokenKind::Identifier, TokenKind::Identifier, TokenKind::EndOfFile));
}

TEST(Lexer, ControlCharactersAndBrokenUtf8AreShownAsBytes) {
  EXPECT_EQ(Lexed("\x01").diagnostics.All()[0].text, "unexpected byte 0x01");
  EXPECT_EQ(Lexed("\xC3").diagnostics.All()[0].text, "unexpected byte 0xC3");
  EXPECT_EQ(Lexed(std::string(1, '\0')).diagnostics.All()[0].text, "unexpected byte 0x00");
  EXPECT_EQ(Lexed("\xE2\x82\xAC").diagnostics.All()[0].text, "unexpected character '\xE2\x82\xAC'");
}

TEST(Lexer, LettersOutsideTheAlphabetDoNotBreakANameInTwo) {
  const Lexed lexed(
      "gr\xC3\xB6\xC3\x9F"
      "e;");
  EXPECT_THAT(lexed.Codes(), ElementsAre("E001@2"));
  EXPECT_THAT(lexed.Kinds(), ElementsAre(TokenKind::Identifier, TokenKind::Semicolon, TokenKind::EndOfFile));
}

TEST(Lexer, WhiteSpaceOfAnyKindSeparates) {
  EXPECT_THAT(Lexed("\xEF\xBB\xBF a\tb\r\nc\v\fd").Kinds(),
              ElementsAre(TokenKind::Identifier, TokenKind::Identifier, TokenKind::Identifier,
                          TokenKind::Identifier, TokenKind::EndOfFile));
}

}  // namespace
}  // namespace VELMAR::Express
