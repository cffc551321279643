#include <gmock/gmock.h>

#include "SchemaText.h"
#include "TypeChecker.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// What an entity with attributes of all kinds of types may say in a domain rule, and what it may not.
SchemaText WithRule(const std::string& rule) {
  return InSchema(
      "TYPE colour = ENUMERATION OF (red, green); END_TYPE; TYPE size = ENUMERATION OF (small, large); "
      "END_TYPE; "
      "TYPE shade = EXTENSIBLE ENUMERATION OF (dark); END_TYPE; "
      "TYPE more_shades = ENUMERATION BASED_ON shade WITH (light); END_TYPE; "
      "TYPE extent = REAL; END_TYPE; TYPE label = STRING; END_TYPE; "
      "TYPE measure = SELECT (extent, count); END_TYPE; TYPE count = INTEGER; END_TYPE; "
      "TYPE text_or_part = SELECT (label, part); END_TYPE; TYPE anything = EXTENSIBLE SELECT; END_TYPE; "
      "TYPE lists = SELECT (numbers, texts); END_TYPE; TYPE numbers = LIST OF INTEGER; END_TYPE; "
      "TYPE texts = LIST OF STRING; END_TYPE; "
      "FUNCTION f (n : INTEGER; s : STRING) : REAL; RETURN (n + LENGTH (s)); END_FUNCTION; "
      "FUNCTION same (x, y : GENERIC : t) : LOGICAL; RETURN (x = y); END_FUNCTION; "
      "FUNCTION first (a : AGGREGATE OF GENERIC : t) : GENERIC : t; RETURN (a[1]); END_FUNCTION; "
      "FUNCTION members (a : AGGREGATE : k OF part) : AGGREGATE : k OF part; RETURN (a); END_FUNCTION; "
      "ENTITY part; name : label; END_ENTITY; ENTITY special SUBTYPE OF (part); extra : INTEGER; END_ENTITY; "
      "ENTITY other SUBTYPE OF (part); END_ENTITY; ENTITY alone; name : STRING; END_ENTITY; "
      "ENTITY e SUBTYPE OF (part); i : INTEGER; r : REAL; n : NUMBER; s : STRING; b : BINARY; l : LOGICAL; "
      "c : colour; z : size; d : shade; m : more_shades; h : extent; q : measure; v : anything; w : "
      "text_or_part; "
      "p : part; a : alone; li : LIST OF INTEGER; ls : SET OF STRING; lp : SET [0 : ?] OF part; la : SET OF "
      "alone; "
      "u : lists; g : BAG OF BAG OF INTEGER; y : ARRAY [-1 : 3] OF INTEGER; WHERE " +
      rule + "; END_ENTITY;");
}

struct RuleRow {
  const char* rule;
  const char* finding;  // code and text; empty where there is nothing to say
};

std::ostream& operator<<(std::ostream& out, const RuleRow& row) { return out << row.rule; }

class EveryRule : public testing::TestWithParam<RuleRow> {};

TEST_P(EveryRule, IsJudgedByTheTypesOfItsOperands) {
  const SchemaText text = WithRule(GetParam().rule);
  std::vector<std::string> findings;
  for (const Diagnostic& diagnostic : text.diagnostics.All()) {
    findings.push_back(std::string(CatalogueRowOf(diagnostic.code).number) + ' ' + diagnostic.text);
  }
  if (*GetParam().finding) {
    EXPECT_THAT(findings, ElementsAre(GetParam().finding));
  } else {
    EXPECT_THAT(findings, IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Arithmetic, EveryRule,
    testing::Values(RuleRow{"i + r * n - h / q > 2 ** i", ""}, RuleRow{"i DIV 2 + i MOD 2 = -q", ""},
                    RuleRow{"v + 1 > v * v", ""}, RuleRow{"s + name = 'a'", ""}, RuleRow{"b + %1 = b", ""},
                    RuleRow{"? + 1 > i", ""},
                    RuleRow{"i + s > 0", "E046 '+' does not take integer and string"},
                    RuleRow{"s - s = s", "E046 '-' does not take string and string"},
                    RuleRow{"l * i > 0", "E046 '*' does not take logical and integer"},
                    RuleRow{"c / 2 > 0", "E046 '/' does not take colour and integer"},
                    RuleRow{"p DIV 2 > 0", "E046 'DIV' does not take part and integer"},
                    RuleRow{"i MOD s > 0", "E046 'MOD' does not take integer and string"},
                    RuleRow{"b ** 2 > 0", "E046 '**' does not take binary and integer"},
                    RuleRow{"name + h = s", "E046 '+' does not take label (string) and extent (real)"},
                    RuleRow{"w + 1 > 0", "E046 '+' does not take text_or_part and integer"},
                    RuleRow{"-s = s", "E046 '-' takes a number, not string"},
                    RuleRow{"+c = c", "E046 '+' takes a number, not colour"}));

INSTANTIATE_TEST_SUITE_P(
    Comparisons, EveryRule,
    testing::Values(
        RuleRow{"i = r", ""}, RuleRow{"c < green", ""}, RuleRow{"l = TRUE", ""}, RuleRow{"d = m", ""},
        RuleRow{"w = s", ""}, RuleRow{"w = p", ""}, RuleRow{"v = c", ""}, RuleRow{"li = [1, 2]", ""},
        RuleRow{"lp <= [p]", ""},
        RuleRow{"li <= li", "E046 values of list of integer and list of integer have no order"},
        RuleRow{"p :=: SELF", ""}, RuleRow{"lp :=: [SELF]", ""}, RuleRow{"q > i", ""},
        RuleRow{"name LIKE '@#'", ""}, RuleRow{"i = s", "E047 integer and string have no values in common"},
        RuleRow{"c <> z", "E047 colour and size have no values in common"},
        RuleRow{"p = s", "E047 part and string have no values in common"},
        RuleRow{"a :=: p", "E047 alone and part have no values in common"},
        RuleRow{"q = s", "E047 measure and string have no values in common"},
        RuleRow{"li = ls", "E047 list of integer and set of string have no values in common"},
        RuleRow{"li = [s]", "E047 list of integer and aggregate of string have no values in common"},
        RuleRow{"s < 1", "E047 string and integer have no values in common"},
        RuleRow{"p < p", "E046 values of part and part have no order"},
        RuleRow{"lp < lp", "E046 values of set [0 : ?] of part and set [0 : ?] of part have no order"},
        RuleRow{"{1 < p < 2}", "E047 integer and part have no values in common"},
        RuleRow{"{p < p < p}", "E046 values of part and part have no order"},
        RuleRow{"i LIKE 'a'", "E046 'LIKE' does not take integer and string"}, RuleRow{"i IN li", ""},
        RuleRow{"p IN lp", ""}, RuleRow{"v IN ls", ""},
        RuleRow{"li IN li", "E047 list of integer is never an element of list of integer"},
        RuleRow{"s IN li", "E047 string is never an element of list of integer"},
        RuleRow{"a IN lp", "E047 alone is never an element of set [0 : ?] of part"},
        RuleRow{"i IN s", "E046 'IN' does not take integer and string"}));

INSTANTIATE_TEST_SUITE_P(
    LogicalValues, EveryRule,
    testing::Values(RuleRow{"l AND (i = 1) OR NOT v XOR UNKNOWN", ""}, RuleRow{"l", ""}, RuleRow{"v", ""},
                    RuleRow{"l AND i", "E046 'AND' does not take logical and integer"},
                    RuleRow{"s OR l", "E046 'OR' does not take string and logical"},
                    RuleRow{"l XOR c", "E046 'XOR' does not take logical and colour"},
                    RuleRow{"NOT i", "E046 'NOT' takes a logical value, not integer"},
                    RuleRow{"i", "E048 domain rule is integer, expected a logical value"},
                    RuleRow{"lp", "E048 domain rule is set [0 : ?] of part, expected a logical value"},
                    RuleRow{"SIZEOF (QUERY (x <* lp | x.name)) = 0",
                            "E048 condition is label (string), expected a logical value"}));

INSTANTIATE_TEST_SUITE_P(
    Aggregates, EveryRule,
    testing::Values(
        RuleRow{"SIZEOF (lp + SELF + [p] - p * [p]) = 0",
                "E046 '*' does not take part and aggregate of part"},
        RuleRow{"SIZEOF (lp + SELF + ([p] - p) * [p]) = 0", ""}, RuleRow{"SIZEOF ([] + 1) = 0", ""},
        RuleRow{"SIZEOF (1 + li) = 0", ""}, RuleRow{"g + [[1]] = g + [1]", ""},
        RuleRow{"SIZEOF (li + 'a') = 0", "E046 '+' does not take list of integer and string"},
        RuleRow{"SIZEOF (li * ls) = 0", "E046 '*' does not take list of integer and set of string"},
        RuleRow{"SIZEOF (ls - p) = 0", "E046 '-' does not take set of string and part"},
        RuleRow{"li[1] = 1", ""}, RuleRow{"s[1] = s[1:2]", ""}, RuleRow{"v[1] = 1", ""},
        RuleRow{"u[1] = 1", ""}, RuleRow{"li[0] = 1", "W010 index 0 is outside of list of integer"},
        RuleRow{"s[0] = 'a'", "W010 index 0 is outside of string"}, RuleRow{"y[-1] = y[3]", ""},
        RuleRow{"y[-2] = 1", "W010 index -2 is outside of array [-1 : 3] of integer"},
        RuleRow{"y[4] = 1", "W010 index 4 is outside of array [-1 : 3] of integer"},
        RuleRow{"li[1:2] = 1", "E046 list of integer is indexed, expected a string or a binary"},
        RuleRow{"i[0] = 1", "E046 integer is indexed, expected a string or a binary or an aggregate"},
        RuleRow{"li[s] = 1", "E049 index is string, expected an integer"},
        RuleRow{"li[1.5] = 1", "E049 index is real, expected an integer"}, RuleRow{"li[n] = 1", ""},
        RuleRow{"SIZEOF ([s : i, s : 2]) = 0", ""},
        RuleRow{"SIZEOF ([s : s]) = 0", "E049 repetition is string, expected an integer"},
        RuleRow{"SIZEOF (QUERY (x <* i | TRUE)) = 0",
                "E046 QUERY goes through an aggregate, not through integer"},
        RuleRow{"SIZEOF (QUERY (x <* v | x)) = 0", ""}));

INSTANTIATE_TEST_SUITE_P(
    Instances, EveryRule,
    testing::Values(
        RuleRow{"w.name = s", ""}, RuleRow{"p.extra = 1", ""}, RuleRow{"w\\special.extra = 1", ""},
        RuleRow{"p || special (1) = SELF", ""},
        RuleRow{"EXISTS (p || s)", "E046 '||' does not take part and string"},
        RuleRow{"w.missing = 1", "W010 no entity of select text_or_part has an attribute 'missing'"},
        RuleRow{"q.name = s", "E045 the operand of '.name' is no instance but measure"},
        RuleRow{"p.missing = 1", "E025 entity 'part' has no attribute 'missing'"},
        RuleRow{"a\\part.name = s", "E055 alone has no instances that are also of 'part'"},
        RuleRow{"i\\part.name = s", "E045 the operand of '\\part' is no instance but integer"},
        RuleRow{"EXISTS (special ('a'))", "E051 attribute 'extra' takes integer, the value is string"},
        RuleRow{"EXISTS (special (?))", ""}));

INSTANTIATE_TEST_SUITE_P(
    Calls, EveryRule,
    testing::Values(
        RuleRow{"f (1, s) > f (?, ?)", ""}, RuleRow{"f (v, w) > 0", ""},
        RuleRow{"f (s, s) > 0", "E051 parameter 'n' takes integer, the value is string"},
        RuleRow{"f (1.5, s) > 0", "E051 parameter 'n' takes integer, the value is real"},
        RuleRow{"f (1, p) > 0", "E051 parameter 's' takes string, the value is part"},
        RuleRow{"same (i, r)", ""}, RuleRow{"same (v, p)", ""},
        RuleRow{"same (i, s)", "E051 string is given where the type label 't' stands for integer"},
        RuleRow{"first (li) + 1 = 2", ""},
        RuleRow{"first (ls) + 1 = 2", "E046 '+' does not take string and integer"},
        RuleRow{"first ([[s]])[1] = 1", "E047 string and integer have no values in common"},
        RuleRow{"SIZEOF (members (lp) + lp) = 0", ""},
        RuleRow{"SIZEOF (members (la)) = 0",
                "E051 parameter 'a' takes aggregate of part, the value is set of alone"},
        RuleRow{"SIZEOF (members (li)) = 0",
                "E051 parameter 'a' takes aggregate of part, the value is list of integer"},
        RuleRow{"SIN (s) > 0", "E051 SIN takes a number, not string"},
        RuleRow{"LENGTH (1) > 0", "E051 LENGTH takes a string, not integer"},
        RuleRow{"BLENGTH (s) > 0", "E051 BLENGTH takes a binary, not string"},
        RuleRow{"SIZEOF (i) > 0", "E051 SIZEOF takes an aggregate, not integer"},
        RuleRow{"FORMAT (i, 1) = s", "E051 FORMAT takes a string, not integer"},
        RuleRow{"ODD (r)", "E049 argument of ODD is real, expected an integer"},
        RuleRow{"SIZEOF (ROLESOF (s)) = 0", "E051 ROLESOF takes an instance, not string"},
        RuleRow{"VALUE_IN (li, s)", "E047 string is never an element of list of integer"},
        RuleRow{"NVL (i, s) = i", "E047 integer and string have no values in common"},
        RuleRow{"NVL (i, 0) = i", ""}, RuleRow{"SIZEOF (USEDIN (p, '')) = 0", ""},
        RuleRow{"SIZEOF (USEDIN (s, '')) = 0", "W010 only instances are used, not string"},
        RuleRow{"SIZEOF (USEDIN (SELF, 'S.E')) = 0", "W009 a role has the form 'SCHEMA.ENTITY.ATTRIBUTE'"},
        RuleRow{"SIZEOF (USEDIN (SELF, 'S.E.P')) = 0", ""},
        RuleRow{"SIZEOF (USEDIN (SELF, 'S.E.MISSING')) = 0", "W009 entity 'e' has no attribute 'missing'"}));

// ---- assignments --------------------------------------------------------------------------------

struct AssignmentRow {
  const char* target;
  const char* value;
  const char* finding;  // the code; empty where there is nothing to say
};

std::ostream& operator<<(std::ostream& out, const AssignmentRow& row) {
  return out << row.target << " := " << row.value;
}

class EveryAssignment : public testing::TestWithParam<AssignmentRow> {
 protected:
  static std::vector<std::string> Codes(const std::string& declarations) {
    const SchemaText text = InSchema(
        "TYPE colour = ENUMERATION OF (red, both); END_TYPE; TYPE size = ENUMERATION OF (small, both); "
        "END_TYPE; "
        "TYPE extent = REAL; END_TYPE; TYPE choice = SELECT (extent, colour, a); END_TYPE; "
        "TYPE parts = SELECT (a, b); END_TYPE; TYPE open = EXTENSIBLE SELECT; END_TYPE; "
        "ENTITY a; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY c SUBTYPE OF (a); END_ENTITY; "
        "ENTITY d; END_ENTITY; " +
        declarations);
    std::vector<std::string> codes;
    for (const Diagnostic& diagnostic : text.diagnostics.All()) {
      codes.push_back(CatalogueRowOf(diagnostic.code).number);
    }
    return codes;
  }

  static testing::Matcher<std::vector<std::string>> Expected() {
    if (!*GetParam().finding) return IsEmpty();
    return ElementsAre(GetParam().finding);
  }
};

TEST_P(EveryAssignment, FitsOrNotInAStatement) {
  const std::string target = GetParam().target;
  const std::string value = GetParam().value;
  EXPECT_THAT(Codes("FUNCTION f (p : " + value + ") : LOGICAL; LOCAL v : " + target +
                    "; END_LOCAL; v := p; RETURN (EXISTS (v)); END_FUNCTION;"),
              Expected());
}

TEST_P(EveryAssignment, FitsOrNotAsInitialValue) {
  const std::string target = GetParam().target;
  const std::string value = GetParam().value;
  EXPECT_THAT(Codes("FUNCTION f (p : " + value + ") : LOGICAL; LOCAL v : " + target +
                    " := p; END_LOCAL; RETURN (EXISTS (v)); END_FUNCTION;"),
              Expected());
}

TEST_P(EveryAssignment, FitsOrNotAsResult) {
  EXPECT_THAT(Codes("FUNCTION f (p : " + std::string(GetParam().value) + ") : " + GetParam().target +
                    "; RETURN (p); END_FUNCTION;"),
              Expected());
}

TEST_P(EveryAssignment, FitsOrNotAsDerivedAttribute) {
  EXPECT_THAT(Codes("ENTITY e ABSTRACT; p : " + std::string(GetParam().value) +
                    "; DERIVE v : " + GetParam().target + " := p; END_ENTITY;"),
              Expected());
}

INSTANTIATE_TEST_SUITE_P(
    Types, EveryAssignment,
    testing::Values(AssignmentRow{"INTEGER", "INTEGER", ""}, AssignmentRow{"REAL", "INTEGER", ""},
                    AssignmentRow{"NUMBER", "REAL", ""}, AssignmentRow{"INTEGER", "NUMBER", ""},
                    AssignmentRow{"INTEGER", "REAL", "E050"}, AssignmentRow{"INTEGER", "extent", "E050"},
                    AssignmentRow{"extent", "INTEGER", ""}, AssignmentRow{"INTEGER", "STRING", "E050"},
                    AssignmentRow{"BOOLEAN", "LOGICAL", ""}, AssignmentRow{"LOGICAL", "BOOLEAN", ""},
                    AssignmentRow{"LOGICAL", "INTEGER", "E050"}, AssignmentRow{"STRING (3)", "STRING", ""},
                    AssignmentRow{"BINARY", "STRING", "E050"}, AssignmentRow{"colour", "colour", ""},
                    AssignmentRow{"colour", "size", "E050"}, AssignmentRow{"choice", "REAL", ""},
                    AssignmentRow{"REAL", "choice", ""}, AssignmentRow{"choice", "STRING", "E050"},
                    AssignmentRow{"STRING", "choice", "E050"}, AssignmentRow{"choice", "size", "E050"},
                    AssignmentRow{"choice", "b", ""}, AssignmentRow{"choice", "d", "E050"},
                    AssignmentRow{"parts", "choice", ""}, AssignmentRow{"open", "STRING", ""},
                    AssignmentRow{"STRING", "open", ""}, AssignmentRow{"a", "b", ""},
                    AssignmentRow{"b", "a", ""}, AssignmentRow{"b", "c", "W008"},
                    AssignmentRow{"a", "d", "E050"}, AssignmentRow{"a", "parts", ""},
                    AssignmentRow{"a", "REAL", "E050"}, AssignmentRow{"LIST OF REAL", "LIST OF INTEGER", ""},
                    AssignmentRow{"LIST OF INTEGER", "LIST OF REAL", "E050"},
                    AssignmentRow{"LIST OF a", "SET OF a", "E050"}, AssignmentRow{"SET OF a", "BAG OF b", ""},
                    AssignmentRow{"BAG OF a", "SET OF parts", ""}, AssignmentRow{"SET OF a", "a", "E050"},
                    AssignmentRow{"ARRAY [1 : 2] OF a", "LIST OF a", "E050"},
                    AssignmentRow{"LIST OF LIST OF REAL", "LIST OF LIST OF STRING", "E050"}));

class EveryInitializer : public EveryAssignment {};

TEST_P(EveryInitializer, FitsOrNot) {
  EXPECT_THAT(
      Codes("CONSTANT v : " + std::string(GetParam().target) + " := " + GetParam().value + "; END_CONSTANT;"),
      Expected());
}

INSTANTIATE_TEST_SUITE_P(
    Values, EveryInitializer,
    testing::Values(AssignmentRow{"SET OF REAL", "[]", ""}, AssignmentRow{"SET OF REAL", "[1, 2.5, ?]", ""},
                    AssignmentRow{"LIST OF INTEGER", "[1, 2.5]", "E050"},
                    AssignmentRow{"LIST OF STRING", "['a', 1]", "E050"},
                    AssignmentRow{"LIST OF LIST OF REAL", "[[1], []]", ""},
                    AssignmentRow{"LIST OF LIST OF REAL", "[[1], ['a']]", "E050"},
                    AssignmentRow{"LIST OF LIST OF REAL", "[1]", "E050"},
                    AssignmentRow{"LIST OF colour", "[both, red]", ""},
                    AssignmentRow{"LIST [0 : 2] OF REAL", "[1, 2]", ""},
                    AssignmentRow{"LIST [0 : 2] OF REAL", "[1, 2, 3]", "E054"},
                    AssignmentRow{"LIST [0 : 2] OF REAL", "[1 : 2, 2]", ""},
                    AssignmentRow{"LIST [0 : ?] OF REAL", "[1, 2]", ""},
                    AssignmentRow{"ARRAY [-1 : 1] OF REAL", "[1, 2, 3]", ""},
                    AssignmentRow{"ARRAY [-1 : 1] OF REAL", "[1, 2, 3, 4]", "E054"},
                    AssignmentRow{"INTEGER", "[1]", "E050"}, AssignmentRow{"INTEGER", "?", ""},
                    AssignmentRow{"choice", "[1]", "E050"}, AssignmentRow{"open", "[1]", ""},
                    AssignmentRow{"colour", "both", ""}, AssignmentRow{"LIST OF a", "[b () || c ()]", ""}));

// ---- statements ---------------------------------------------------------------------------------

struct StatementRow {
  const char* statement;
  const char* finding;
};

std::ostream& operator<<(std::ostream& out, const StatementRow& row) { return out << row.statement; }

class EveryStatement : public testing::TestWithParam<StatementRow> {};

TEST_P(EveryStatement, IsJudgedByTheTypesInIt) {
  const SchemaText text = InSchema(
      "TYPE colour = ENUMERATION OF (red, green); END_TYPE; "
      "PROCEDURE change (VAR x : INTEGER; y : STRING); x := LENGTH (y); END_PROCEDURE; "
      "FUNCTION f (i : INTEGER; r : REAL; s : STRING; l : LIST OF INTEGER; t : SET OF INTEGER; c : colour; "
      "n : NUMBER; g : GENERIC) : REAL; LOCAL v : INTEGER; a : ARRAY [1 : 2] OF GENERIC; END_LOCAL; v := i; "
      "a := ?; " +
      std::string(GetParam().statement) + "; RETURN (v + SIZEOF (a)); END_FUNCTION;");
  std::vector<std::string> findings;
  for (const Diagnostic& diagnostic : text.diagnostics.All()) {
    findings.push_back(std::string(CatalogueRowOf(diagnostic.code).number) + ' ' + diagnostic.text);
  }
  if (*GetParam().finding) {
    EXPECT_THAT(findings, ElementsAre(GetParam().finding));
  } else {
    EXPECT_THAT(findings, IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Statements, EveryStatement,
    testing::Values(
        StatementRow{"IF i > 1 THEN v := 1; END_IF", ""}, StatementRow{"IF g THEN v := 1; END_IF", ""},
        StatementRow{"IF i THEN v := 1; END_IF", "E048 condition is integer, expected a logical value"},
        StatementRow{"REPEAT WHILE s; SKIP; END_REPEAT",
                     "E048 condition is string, expected a logical value"},
        StatementRow{"REPEAT UNTIL r; SKIP; END_REPEAT", "E048 condition is real, expected a logical value"},
        StatementRow{"REPEAT k := 1 TO n BY 2; v := k; END_REPEAT", ""},
        StatementRow{"REPEAT k := 1 TO s; v := k; END_REPEAT",
                     "E049 REPEAT counts with numbers, not with string"},
        StatementRow{"CASE c OF red, green : v := 1; END_CASE", ""},
        StatementRow{"CASE i OF 1 : v := 1; 'a' : v := 2; END_CASE",
                     "E052 label is string, the selector is integer"},
        StatementRow{"CASE s OF 'a' : v := 1; c : v := 2; END_CASE",
                     "E052 label is colour, the selector is string"},
        StatementRow{"change (v, s)", ""}, StatementRow{"change (l[1], s)", ""},
        StatementRow{"change (1, s)", "E044 VAR parameter 'x' changes its argument, which is no variable"},
        StatementRow{"change (v, 1)", "E051 parameter 'y' takes string, the value is integer"},
        StatementRow{"INSERT (l, 1, 0); REMOVE (l, n)", ""},
        StatementRow{"INSERT (l, 'a', 0)", "E051 INSERT takes integer, the value is string"},
        StatementRow{"INSERT (l, 1, s)", "E049 position is string, expected an integer"},
        StatementRow{"REMOVE (t, 1)", "E051 REMOVE takes a list, not set of integer"},
        StatementRow{"INSERT ([1], 1, 0)", "E044 INSERT changes its argument, which is no variable"},
        StatementRow{"l[1] := 'a'", "E050 an element is integer, the value is string"},
        StatementRow{"s[1] := 'a'", ""}, StatementRow{"a := [s, 1]", ""},
        StatementRow{"a := s", "W011 'a' is array [1 : 2] of generic, the value is string"},
        StatementRow{"ALIAS x FOR v; x := 'a'; END_ALIAS", "E050 'x' is integer, the value is string"},
        StatementRow{"ALIAS x FOR l[1]; x := 1; END_ALIAS", ""},
        StatementRow{"ALIAS x FOR red; v := 1; END_ALIAS",
                     "E044 'red' is an enumeration item: only variables and parameters have an ALIAS"},
        StatementRow{"red := 1",
                     "E044 'red' is an enumeration item: only variables and parameters are assigned to"},
        StatementRow{"IF i > 1 THEN RETURN; END_IF", "E053 function 'f' returns a value: RETURN (...)"}));

TEST(TypeChecker, ProcedureAndRuleReturnNoValue) {
  const SchemaText text = InSchema(
      "ENTITY a; END_ENTITY; PROCEDURE p; RETURN (1); END_PROCEDURE; RULE r FOR (a); RETURN (a); WHERE "
      "SIZEOF (a) = 1; END_RULE;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:46: error: procedure 'p' returns no value [E053]",
                                           "1:89: error: rule 'r' returns no value [E053]"));
}

TEST(TypeChecker, EndlessRepeatIsNoConstantCondition) {
  const SchemaText text = InSchema(
      "FUNCTION f (i : INTEGER) : INTEGER; REPEAT WHILE TRUE UNTIL FALSE; i := i + 1; ESCAPE; END_REPEAT; "
      "REPEAT UNTIL TRUE; i := 2; END_REPEAT; RETURN (i); END_FUNCTION;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:123: warning: condition is always the same [W013]"));
}

TEST(TypeChecker, BoundsAndWidthsAreWholeNumbers) {
  const SchemaText text = InSchema(
      "CONSTANT n : INTEGER := 2; END_CONSTANT; ENTITY a; w : STRING (n); x : STRING ('a'); y : LIST [0 : "
      "1.5] OF REAL; "
      "z : LIST [0 : n * 2] OF REAL; END_ENTITY; ENTITY b; t : a; END_ENTITY;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:90: error: width is string, expected an integer [E049]",
                                           "1:110: error: bound is real, expected an integer [E049]"));
}

// ---- redeclared attributes ----------------------------------------------------------------------

class EveryRedeclaration : public testing::TestWithParam<AssignmentRow> {};

TEST_P(EveryRedeclaration, IsNarrowerOrReported) {
  const SchemaText text = InSchema(
      "TYPE s3 = SELECT (a, b, c); END_TYPE; TYPE s2 = SELECT (a, b); END_TYPE; TYPE s4 = SELECT (a, d); "
      "END_TYPE; "
      "TYPE extent = REAL; END_TYPE; ENTITY a; END_ENTITY; ENTITY b; END_ENTITY; ENTITY c; END_ENTITY; "
      "ENTITY d; "
      "END_ENTITY; ENTITY aa SUBTYPE OF (a); END_ENTITY; ENTITY e; x : " +
      std::string(GetParam().target) +
      "; END_ENTITY; ENTITY f SUBTYPE OF (e); SELF\\e.x : " + GetParam().value + "; END_ENTITY;");
  std::vector<std::string> codes;
  for (const Diagnostic& diagnostic : text.diagnostics.All()) {
    codes.push_back(CatalogueRowOf(diagnostic.code).number);
  }
  if (*GetParam().finding) {
    EXPECT_THAT(codes, ElementsAre(GetParam().finding));
  } else {
    EXPECT_THAT(codes, IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Types, EveryRedeclaration,
    testing::Values(
        AssignmentRow{"NUMBER", "INTEGER", ""}, AssignmentRow{"INTEGER", "NUMBER", "E036"},
        AssignmentRow{"REAL", "extent", ""}, AssignmentRow{"a", "aa", ""}, AssignmentRow{"aa", "a", "E036"},
        AssignmentRow{"a", "b", "E036"}, AssignmentRow{"s3", "s2", ""}, AssignmentRow{"s2", "s3", "E036"},
        AssignmentRow{"s3", "s4", "E036"}, AssignmentRow{"s3", "aa", ""}, AssignmentRow{"s2", "c", "E036"},
        AssignmentRow{"a", "s2", "E036"}, AssignmentRow{"LIST [0 : 5] OF s3", "LIST [1 : 3] OF a", ""},
        AssignmentRow{"LIST [0 : 5] OF a", "LIST [1 : 6] OF a", "E036"},
        AssignmentRow{"LIST [1 : ?] OF a", "LIST [0 : 3] OF a", "E036"},
        AssignmentRow{"LIST [1 : 3] OF a", "LIST [1 : ?] OF a", "E036"},
        AssignmentRow{"LIST [1 : ?] OF a", "LIST OF a", "E036"},
        AssignmentRow{"LIST OF a", "LIST [0 : ?] OF a", ""}, AssignmentRow{"BAG OF a", "SET OF aa", ""},
        AssignmentRow{"SET OF a", "BAG OF a", "E036"}, AssignmentRow{"OPTIONAL a", "a", ""},
        AssignmentRow{"a", "OPTIONAL a", "E056"}, AssignmentRow{"OPTIONAL a", "OPTIONAL aa", ""}));

TEST(TypeChecker, DerivedOrInverseAttributeIsNotExplicitAgain) {
  const SchemaText text = InSchema(
      "ENTITY a; DERIVE x : REAL := 1.0; INVERSE y : SET OF c FOR r; END_ENTITY; ENTITY b SUBTYPE OF (a); "
      "SELF\\a.x : REAL; SELF\\a.y : c; END_ENTITY; ENTITY c; r : a; END_ENTITY;");
  EXPECT_THAT(text.Findings(),
              ElementsAre("1:117: error: derived attribute 'x' is redeclared as explicit [E056]",
                          "1:28: note: declared here",
                          "1:134: error: inverse attribute 'y' is redeclared as explicit [E056]",
                          "1:53: note: declared here"));
}

TEST(TypeChecker, InverseAttributeIsRedeclaredWithASubtype) {
  const SchemaText text = InSchema(
      "ENTITY a; INVERSE y : SET OF c FOR r; END_ENTITY; ENTITY c; r : a; END_ENTITY; ENTITY cc SUBTYPE OF "
      "(c); "
      "END_ENTITY; ENTITY d; r : a; END_ENTITY; ENTITY b SUBTYPE OF (a); INVERSE SELF\\a.y : cc FOR r; "
      "END_ENTITY; "
      "ENTITY e SUBTYPE OF (a); INVERSE SELF\\a.y : SET OF d FOR r; END_ENTITY;");
  EXPECT_THAT(text.Findings(),
              ElementsAre("1:274: error: inverse attribute 'y' is redeclared with entity 'd', which is no "
                          "subtype of 'c' [E036]",
                          "1:29: note: declared here"));
}

// ---- recovery and limits ------------------------------------------------------------------------

TEST(TypeChecker, UnknownNamesGiveNoErrorsOfTypes) {
  const SchemaText text = InSchema("ENTITY a; x : missing; WHERE x + 1 = y; x.z.w; f (x) > 'a'; END_ENTITY;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:25: error: unknown type 'missing' [E021]",
                                           "1:48: error: unknown name 'y' [E041]",
                                           "1:58: error: unknown function or entity 'f' [E041]"));
}

TEST(TypeChecker, SelectOfAggregatesOfItselfIsCompared) {
  const SchemaText text = InSchema(
      "TYPE s = SELECT (l, t); END_TYPE; TYPE l = LIST OF s; END_TYPE; TYPE t = STRING; END_TYPE; "
      "TYPE s2 = SELECT (l2, i); END_TYPE; TYPE l2 = LIST OF s2; END_TYPE; TYPE i = INTEGER; END_TYPE; "
      "ENTITY a; x : s; y : s2; DERIVE z : s := y; WHERE x = y; END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

}  // namespace
}  // namespace VELMAR::Express
