#include <gmock/gmock.h>

#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::HasSubstr;

std::string Printed(const SchemaText& text) {
  std::ostringstream out;
  Print(text.model, out);
  return out.str();
}

// Every operation in parentheses, so that the tree shows.
std::string Nested(const Expression& expression) {
  if (expression.kind == ExpressionKind::Unary) {
    const auto& unary = static_cast<const Unary&>(expression);
    return std::string("(") + OperatorRowOf(unary.op).text + ' ' + Nested(*unary.operand) + ')';
  }
  if (expression.kind == ExpressionKind::Operation) {
    const auto& operation = static_cast<const Operation&>(expression);
    return '(' + Nested(*operation.left) + ' ' + OperatorRowOf(operation.op).text + ' ' +
           Nested(*operation.right) + ')';
  }
  return ExpressionText(expression);
}

struct ExpressionRow {
  const char* express;
  const char* tree;
  const char* printed;
};

std::ostream& operator<<(std::ostream& out, const ExpressionRow& row) { return out << row.express; }

class EveryExpression : public testing::TestWithParam<ExpressionRow> {
 protected:
  static SchemaText Read(const std::string& expression) {
    return InSchema(
        "TYPE colour = ENUMERATION OF (red, green); END_TYPE; ENTITY d; x : INTEGER; END_ENTITY; ENTITY e; "
        "a, b, c : INTEGER; p, q, r : LOGICAL; "
        "l : LIST OF INTEGER; s : STRING; n : e; i : BINARY; "
        "WHERE " +
        expression + "; END_ENTITY; FUNCTION f (x : INTEGER) : INTEGER; RETURN (x); END_FUNCTION;");
  }
};

TEST_P(EveryExpression, IsReadAsItsTreeAndPrintedWithoutNeedlessParentheses) {
  const SchemaText text = Read(GetParam().express);
  ASSERT_EQ(text.diagnostics.ErrorCount(), 0u) << testing::PrintToString(text.Findings());
  const Expression& expression = *text.GetEntity("e").where.at(0).expression;
  EXPECT_EQ(Nested(expression), GetParam().tree);
  EXPECT_EQ(ExpressionText(expression), GetParam().printed);
  const SchemaText again = Read(GetParam().printed);
  ASSERT_EQ(again.diagnostics.ErrorCount(), 0u);
  EXPECT_EQ(Nested(*again.GetEntity("e").where.at(0).expression), GetParam().tree);
}

INSTANTIATE_TEST_SUITE_P(
    Expressions, EveryExpression,
    testing::Values(
        ExpressionRow{"a + b * c = a", "((a + (b * c)) = a)", "a + b * c = a"},
        ExpressionRow{"(a + b) * c < a", "(((a + b) * c) < a)", "(a + b) * c < a"},
        ExpressionRow{"a - b - c > a", "(((a - b) - c) > a)", "a - b - c > a"},
        ExpressionRow{"a - (b - c) >= a", "((a - (b - c)) >= a)", "a - (b - c) >= a"},
        ExpressionRow{"a / b DIV c <= a MOD b", "(((a / b) DIV c) <= (a MOD b))", "a / b DIV c <= a MOD b"},
        ExpressionRow{"p or q AND r xor p", "((p OR (q AND r)) XOR p)", "p OR q AND r XOR p"},
        ExpressionRow{"not p and q", "((NOT p) AND q)", "NOT p AND q"},
        ExpressionRow{"NOT (p AND q)", "(NOT (p AND q))", "NOT (p AND q)"},
        ExpressionRow{"-a ** b <> -(a ** b)", "(((- a) ** b) <> (- (a ** b)))", "-a ** b <> -(a ** b)"},
        ExpressionRow{"(a ** b) ** c = +a ** (b ** c)", "(((a ** b) ** c) = ((+ a) ** (b ** c)))",
                      "(a ** b) ** c = +a ** (b ** c)"},
        ExpressionRow{"-(-a) = a", "((- (- a)) = a)", "-(-a) = a"},
        ExpressionRow{"(a = b) = (a < b)", "((a = b) = (a < b))", "(a = b) = (a < b)"},
        ExpressionRow{"n :=: SELF", "(n :=: SELF)", "n :=: SELF"},
        ExpressionRow{"n :<>: ((self))", "(n :<>: SELF)", "n :<>: SELF"},
        ExpressionRow{"a IN l", "(a IN l)", "a IN l"},
        ExpressionRow{"s like 'it''s @'", "(s LIKE 'it''s @')", "s LIKE 'it''s @'"},
        ExpressionRow{"s = \"000000E4\" + \"0001F600\"", "(s = (\"000000E4\" + \"0001F600\"))",
                      "s = \"000000E4\" + \"0001F600\""},
        ExpressionRow{"i = %0101", "(i = %0101)", "i = %0101"},
        ExpressionRow{"1.50 < 2.E3", "(1.5 < 2000.0)", "1.5 < 2000.0"},
        ExpressionRow{"1.0e-20 < 1.e+30", "(1.0e-20 < 1.0e+30)", "1.0e-20 < 1.0e+30"},
        ExpressionRow{"{0 < a <= b + 1}", "{0 < a <= b + 1}", "{0 < a <= b + 1}"},
        ExpressionRow{"{(p) <= (a = b) < q}", "{p <= (a = b) < q}", "{p <= (a = b) < q}"},
        ExpressionRow{"l = [1, a : 3, f (b)]", "(l = [1, a : 3, f (b)])", "l = [1, a : 3, f (b)]"},
        ExpressionRow{"SIZEOF ([]) = 0", "(SIZEOF ([]) = 0)", "SIZEOF ([]) = 0"},
        ExpressionRow{"SizeOf (Query (x <* l | x > a)) = 0", "(SIZEOF (QUERY (x <* l | x > a)) = 0)",
                      "SIZEOF (QUERY (x <* l | x > a)) = 0"},
        ExpressionRow{"SELF\\e.n.s[a + 1] = s[1:2]", "(SELF\\e.n.s[a + 1] = s[1 : 2])",
                      "SELF\\e.n.s[a + 1] = s[1 : 2]"},
        ExpressionRow{"colour.red <> Green", "(colour.red <> green)", "colour.red <> green"},
        ExpressionRow{"d (1) || n = ?", "((d (1) || n) = ?)", "d (1) || n = ?"},
        ExpressionRow{"PI > const_e", "(PI > CONST_E)", "PI > CONST_E"},
        ExpressionRow{"TRUE = (false = Unknown)", "(TRUE = (FALSE = UNKNOWN))", "TRUE = (FALSE = UNKNOWN)"}));

TEST(Printer, PrintsEveryStatement) {
  const std::string body =
      "  LOCAL\n"
      "    i : INTEGER := 1;\n"
      "    l : LIST OF INTEGER := [];\n"
      "  END_LOCAL;\n"
      "  ;\n"
      "  REPEAT k := 1 TO n BY 2 WHILE i < 3 UNTIL i > 5;\n"
      "    i := i + k;\n"
      "    IF i = 2 THEN\n"
      "      SKIP;\n"
      "    ELSE\n"
      "      ESCAPE;\n"
      "    END_IF;\n"
      "  END_REPEAT;\n"
      "  CASE i OF\n"
      "    1, 2 :\n"
      "      INSERT (l, i, 0);\n"
      "    3 :\n"
      "      BEGIN\n"
      "        p (i);\n"
      "        q;\n"
      "      END;\n"
      "    OTHERWISE :\n"
      "      ;\n"
      "  END_CASE;\n"
      "  ALIAS x FOR l[1];\n"
      "    x := 2;\n"
      "  END_ALIAS;\n"
      "  REPEAT;\n"
      "    RETURN (i);\n"
      "  END_REPEAT;\n";
  const std::string schema =
      "SCHEMA s '{ x }';\n\nPROCEDURE p (VAR v : INTEGER);\n  v := 1;\n  RETURN;\nEND_PROCEDURE;\n\n"
      "PROCEDURE q;\n  ;\nEND_PROCEDURE;\n\nFUNCTION f (n : INTEGER; m : REAL) : INTEGER;\n" +
      body + "END_FUNCTION;\n\nEND_SCHEMA;\n";
  const SchemaText text(schema);
  EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << testing::PrintToString(text.Findings());
  EXPECT_EQ(Printed(text), schema);
}

TEST(Printer, PrintsEveryDeclaration) {
  const std::string schema =
      "SCHEMA s;\n\nUSE FROM t\n  (a,\n   b AS c);\n\nREFERENCE FROM t;\n\n"
      "CONSTANT\n  k : INTEGER := 1;\n  m : REAL := 2.0;\nEND_CONSTANT;\n\n"
      "TYPE colour = EXTENSIBLE ENUMERATION OF (red, green);\nEND_TYPE;\n\n"
      "TYPE more = ENUMERATION BASED_ON colour WITH (blue);\nEND_TYPE;\n\n"
      "TYPE choice = EXTENSIBLE GENERIC_ENTITY SELECT;\nEND_TYPE;\n\n"
      "TYPE text = STRING (3) FIXED;\nWHERE\n  short : SELF <> 'a';\n  SELF <> 'b';\nEND_TYPE;\n\n"
      "ENTITY r\n  ABSTRACT SUPERTYPE OF (ONEOF (x, y ANDOR z) AND (z ANDOR x));\n  v : OPTIONAL NUMBER;\n"
      "  w : ARRAY [1 : k] OF OPTIONAL UNIQUE REAL;\nEND_ENTITY;\n\n"
      "ENTITY x\n  SUBTYPE OF (r);\n  SELF\\r.v RENAMED u : REAL;\nDERIVE\n  d : REAL := u * 2.0;\nINVERSE\n"
      "  i : BAG [0 : ?] OF z FOR o;\n  j : z FOR z.o;\nUNIQUE\n  u1 : d, SELF\\r.w;\n  u;\nWHERE\n  d > "
      "0.0;\n"
      "END_ENTITY;\n\n"
      "ENTITY y ABSTRACT\n  SUBTYPE OF (r);\nEND_ENTITY;\n\nENTITY z ABSTRACT SUPERTYPE\n  SUBTYPE OF (r);\n "
      " o : "
      "x;\nEND_ENTITY;\n\n"
      "SUBTYPE_CONSTRAINT sc FOR r;\n  ABSTRACT SUPERTYPE;\n  TOTAL_OVER (x, y);\n  ONEOF (x, y);\n"
      "END_SUBTYPE_CONSTRAINT;\n\n"
      "FUNCTION f (g : AGGREGATE : l OF GENERIC : e; h : GENERIC_ENTITY : n) : SET [1 : 2] OF GENERIC : "
      "e;\n\n"
      "  FUNCTION inner : REAL;\n    RETURN (1.0);\n  END_FUNCTION;\n\n"
      "  RETURN (g);\nEND_FUNCTION;\n\n"
      "RULE ru FOR (x, y);\n  LOCAL\n    n : INTEGER := 0;\n  END_LOCAL;\n  n := SIZEOF (x);\nWHERE\n  wr1 : "
      "n = 0;\n"
      "END_RULE;\n\nEND_SCHEMA;\n\nSCHEMA t;\n\nENTITY a;\nEND_ENTITY;\n\nENTITY "
      "b;\nEND_ENTITY;\n\nEND_SCHEMA;\n";
  const SchemaText text(schema);
  EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << testing::PrintToString(text.Findings());
  EXPECT_EQ(Printed(text), schema);
}

TEST(Printer, PrintsVersionsAsTheyWereWritten) {
  const SchemaText text("SCHEMA a 'it''s 1'; END_SCHEMA; SCHEMA list \"000000E40001F600\"; END_SCHEMA;");
  EXPECT_EQ(text.model.schemas[0]->version, "it's 1");
  EXPECT_EQ(text.model.schemas[1]->version, "\xC3\xA4\xF0\x9F\x98\x80");
  EXPECT_EQ(text.diagnostics.ErrorCount(), 0u);
  EXPECT_EQ(Printed(text),
            "SCHEMA a 'it''s 1';\n\nEND_SCHEMA;\n\nSCHEMA list \"000000E40001F600\";\n\nEND_SCHEMA;\n");
}

TEST(Printer, LeavesOutRemarksAndLowersNames) {
  EXPECT_THAT(Printed(InSchema("(* r *) ENTITY Thing; -- tail\n Name : String; END_ENTITY;")),
              HasSubstr("\nENTITY thing;\n  name : STRING;\nEND_ENTITY;\n"));
}

}  // namespace
}  // namespace VELMAR::Express
