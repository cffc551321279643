// The schemas of the tests hold all of the language: each word and symbol, each kind of node. As
// ConstructsTest prints them and compares what is read again, each has been through the lexer, the parser,
// the resolver and the printer.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "ExpressionVisitor.h"
#include "Lexer.h"
#include "ModelDump.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

class Language : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA)) {
      if (entry.path().extension() != ".exp") continue;
      const SchemaText text(ContentOf(entry.path().string()));
      if (text.diagnostics.ErrorCount() > 0) continue;
      Tokens(text.model);
      Nodes(ModelDump(text.model).Text());
      ExpressionVisitor(Expressions).Visit(text.model);
    }
  }

  // Those of the canonical text: of what the model holds.
  static void Tokens(const Model& model) {
    std::ostringstream printed;
    Print(model, printed);
    Diagnostics diagnostics;
    for (const Token& token : Tokenize(SourceFile("printed.exp", printed.str()), diagnostics)) {
      tokens_.insert(token.kind);
    }
  }

  // "statement 7", "type 3".
  static void Nodes(const std::string& dump) {
    for (std::size_t at = 0; (at = dump.find("\n", at)) != std::string::npos;) {
      const std::size_t begin = dump.find('[', at) + 1;
      const std::size_t kind = dump.find(' ', begin) + 1;
      nodes_.insert(dump.substr(begin, dump.find_first_not_of("0123456789", kind) - begin));
      at = kind;
    }
  }

  static void Expressions(const Expression& expression) {
    if (expression.kind == ExpressionKind::Unary) {
      operators_.insert(static_cast<const Unary&>(expression).op);
    } else if (expression.kind == ExpressionKind::Operation) {
      operators_.insert(static_cast<const Operation&>(expression).op);
    } else if (expression.kind == ExpressionKind::BuiltinCall) {
      builtins_.insert(static_cast<const BuiltinCall&>(expression).builtin);
    } else if (expression.kind == ExpressionKind::BuiltinConstant) {
      builtins_.insert(static_cast<const BuiltinConstant&>(expression).builtin);
    }
  }

  template <class Kind>
  static void ExpectNodes(const char* what, Kind last) {
    for (int kind = 0; kind <= static_cast<int>(last); ++kind) {
      EXPECT_EQ(nodes_.count(what + (' ' + std::to_string(kind))), 1u) << what << ' ' << kind;
    }
  }

  static std::set<TokenKind> tokens_;
  static std::set<std::string> nodes_;
  static std::set<Operator> operators_;
  static std::set<Builtin> builtins_;
};

std::set<TokenKind> Language::tokens_;
std::set<std::string> Language::nodes_;
std::set<Operator> Language::operators_;
std::set<Builtin> Language::builtins_;

TEST_F(Language, EveryWordAndSymbolIsPrinted) {
  for (int kind = 0; kind < static_cast<int>(TokenKind::kCount); ++kind) {
    EXPECT_EQ(tokens_.count(static_cast<TokenKind>(kind)), 1u) << DescribeKind(static_cast<TokenKind>(kind));
  }
}

TEST_F(Language, EveryKindOfNodeIsRead) {
  ExpectNodes("declaration", DeclarationKind::Variable);
  ExpectNodes("type", TypeKind::Named);
  ExpectNodes("attribute", AttributeKind::Inverse);
  ExpectNodes("supertypes", SupertypeExpression::Kind::AndOr);
  ExpectNodes("statement", StatementKind::Skip);
  ExpectNodes("expression", ExpressionKind::Aggregate);
  ExpectNodes("interface", 1);
}

TEST_F(Language, EveryOperatorIsRead) {
  for (int op = 0; op <= static_cast<int>(Operator::Not); ++op) {
    EXPECT_EQ(operators_.count(static_cast<Operator>(op)), 1u)
        << OperatorRowOf(static_cast<Operator>(op)).text;
  }
}

TEST_F(Language, EveryFunctionAndConstantIsRead) {
  for (int i = 0; i < static_cast<int>(Builtin::kCount); ++i) {
    const auto builtin = static_cast<Builtin>(i);
    const bool isLiteral =
        builtin == Builtin::False || builtin == Builtin::True || builtin == Builtin::Unknown;
    if (isLiteral || BuiltinRowOf(builtin).kind == BuiltinRow::Procedure) continue;
    EXPECT_EQ(builtins_.count(builtin), 1u) << BuiltinRowOf(builtin).name;
  }
}

}  // namespace
}  // namespace VELMAR::Express
