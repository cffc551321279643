#include <gmock/gmock.h>

#include "ExpressionResolver.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const Algorithm& LastAlgorithm(const SchemaText& text) {
  return static_cast<const Algorithm&>(*text.model.schemas[0]->declarations.back());
}

struct TypeRow {
  const char* expression;
  const char* type;  // "open" where the language leaves it open
};

std::ostream& operator<<(std::ostream& out, const TypeRow& row) { return out << row.expression; }

class EveryExpressionType : public testing::TestWithParam<TypeRow> {};

TEST_P(EveryExpressionType, IsThatOfTheLanguage) {
  const SchemaText text = InSchema(
      "CONSTANT k : STRING := 'k'; END_CONSTANT; TYPE colour = ENUMERATION OF (red); END_TYPE; "
      "TYPE either = SELECT (e, d); END_TYPE; TYPE other = SELECT (d, o); END_TYPE; ENTITY o; a : STRING; "
      "END_ENTITY; "
      "ENTITY base; z : REAL; END_ENTITY; ENTITY d SUBTYPE OF (base); a : INTEGER; END_ENTITY; "
      "FUNCTION f (x : INTEGER) : BOOLEAN; RETURN (TRUE); END_FUNCTION; FUNCTION g : colour; RETURN (red); "
      "END_FUNCTION; "
      "ENTITY e SUBTYPE OF (base); i : INTEGER; n : NUMBER; r : REAL; s : STRING; b : BINARY; c : colour; "
      "l : LIST OF LIST OF d; v : either; w : other; DERIVE q : REAL := 1.0; "
      "INVERSE users : SET OF u FOR t; user : u FOR t; WHERE EXISTS (NVL (" +
      std::string(GetParam().expression) +
      ", ?)); END_ENTITY; ENTITY u; t : e; END_ENTITY; "
      "FUNCTION late (x : LIST OF GENERIC : l) : SET OF GENERIC : l; RETURN ([x[1]]); END_FUNCTION;");
  ASSERT_THAT(text.Findings(), IsEmpty());
  const auto& exists = static_cast<const BuiltinCall&>(*text.GetEntity("e").where.at(0).expression);
  const TypeExpression* type = static_cast<const BuiltinCall&>(*exists.arguments.at(0)).arguments.at(0)->type;
  EXPECT_EQ(type ? TypeText(*type) : "open", GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    Types, EveryExpressionType,
    testing::Values(
        TypeRow{"1", "integer"}, TypeRow{"1.0", "real"}, TypeRow{"'a'", "string"}, TypeRow{"%1", "binary"},
        TypeRow{"TRUE", "boolean"}, TypeRow{"UNKNOWN", "logical"}, TypeRow{"?", "open"},
        TypeRow{"PI", "real"}, TypeRow{"SELF", "e"}, TypeRow{"i", "integer"}, TypeRow{"z", "real"},
        TypeRow{"q", "real"}, TypeRow{"k", "string"}, TypeRow{"red", "colour"},
        TypeRow{"colour.red", "colour"}, TypeRow{"g", "colour"}, TypeRow{"f (1)", "boolean"},
        TypeRow{"d (1)", "d"}, TypeRow{"d (1) || base (1.0)", "generic_entity"},
        TypeRow{"SELF\\base", "base"}, TypeRow{"SELF\\base.z", "real"}, TypeRow{"l", "list of list of d"},
        TypeRow{"l[1]", "list of d"}, TypeRow{"l[1][2].a", "integer"}, TypeRow{"l[1][2].z", "real"},
        TypeRow{"s[1:2]", "string"}, TypeRow{"b[1]", "binary"}, TypeRow{"v.a", "integer"},
        TypeRow{"v.z", "real"}, TypeRow{"w.a", "open"}, TypeRow{"users", "set of u"}, TypeRow{"user", "u"},
        TypeRow{"users[1].t.i", "integer"}, TypeRow{"i + 1", "integer"}, TypeRow{"i * r", "real"},
        TypeRow{"i - n", "number"}, TypeRow{"i ** 2", "integer"}, TypeRow{"i / 2", "real"},
        TypeRow{"r DIV 2", "integer"}, TypeRow{"i MOD 2", "integer"}, TypeRow{"s + 'a'", "string"},
        TypeRow{"b + %1", "binary"}, TypeRow{"l + l", "list of list of d"}, TypeRow{"-r", "real"},
        TypeRow{"NOT TRUE", "logical"}, TypeRow{"TRUE AND FALSE", "logical"}, TypeRow{"i < 1", "logical"},
        TypeRow{"i IN [1]", "logical"}, TypeRow{"s LIKE 'a'", "logical"}, TypeRow{"{1 < i < 2}", "logical"},
        TypeRow{"[1, 2]", "aggregate of integer"}, TypeRow{"[1, 2.5]", "aggregate of real"},
        TypeRow{"[]", "aggregate of generic"}, TypeRow{"QUERY (x <* l[1] | x.a > 1)", "list of d"},
        TypeRow{"ABS (i)", "integer"}, TypeRow{"SIN (r)", "real"}, TypeRow{"SIZEOF (l)", "integer"},
        TypeRow{"EXISTS (i)", "boolean"}, TypeRow{"ODD (i)", "logical"}, TypeRow{"FORMAT (i, s)", "string"},
        TypeRow{"TYPEOF (i)", "set of string"}, TypeRow{"USEDIN (SELF, s)", "bag of generic_entity"},
        TypeRow{"USEDIN (SELF, 'S.U.T')", "bag of u"}, TypeRow{"USEDIN (SELF, 'S.' + 'U.T')", "bag of u"},
        TypeRow{"late (l)", "set of list of d"}, TypeRow{"late (l[1])[1].a", "integer"},
        TypeRow{"users + user", "set of u"}, TypeRow{"[user] + users", "set of u"},
        TypeRow{"users * USEDIN (SELF, '')", "set of u"}, TypeRow{"l[1] + SELF\\base", "list of base"},
        TypeRow{"[] + 1", "aggregate of integer"}, TypeRow{"v.a + r", "real"}, TypeRow{"w", "other"},
        TypeRow{"VALUE (s)", "number"}, TypeRow{"NVL (i, 1)", "integer"},
        TypeRow{"VALUE_IN (l[1], ?)", "logical"}));

TEST(ExpressionResolver, NamesLeadToTheInnermostDeclaration) {
  const SchemaText text = InSchema(
      "CONSTANT n : REAL := 1.0; END_CONSTANT; FUNCTION f (p : INTEGER) : REAL; LOCAL n : INTEGER := p; "
      "END_LOCAL; "
      "REPEAT n := 1 TO 2; p := n; END_REPEAT; p := n; ALIAS a FOR n; a := p; END_ALIAS; RETURN (n); "
      "END_FUNCTION;");
  ASSERT_THAT(text.Findings(), IsEmpty());
  const Algorithm& f = LastAlgorithm(text);
  const auto declarationOf = [](const Expression& expression) {
    return static_cast<const NameReference&>(expression).referent.declaration;
  };
  EXPECT_EQ(declarationOf(*f.locals[0]->initial), f.parameters[0].get());
  const auto& repeat = static_cast<const RepeatStatement&>(*f.statements[0]);
  EXPECT_EQ(declarationOf(*static_cast<const AssignmentStatement&>(*repeat.body[0]).value),
            repeat.variable.get());
  EXPECT_EQ(declarationOf(*static_cast<const AssignmentStatement&>(*f.statements[1]).value),
            f.locals[0].get());
  const auto& alias = static_cast<const AliasStatement&>(*f.statements[2]);
  EXPECT_EQ(declarationOf(*static_cast<const AssignmentStatement&>(*alias.body[0]).target),
            alias.variable.get());
  EXPECT_EQ(alias.variable->valueType, f.locals[0]->valueType);
}

TEST(ExpressionResolver, AttributeIsTheOneThatTheEntityHas) {
  const SchemaText text = InSchema(
      "ENTITY a; x : NUMBER; END_ENTITY; ENTITY b SUBTYPE OF (a); SELF\\a.x : REAL; WHERE x > 0.0; SELF\\a.x "
      "> 0.0; "
      "END_ENTITY;");
  ASSERT_THAT(text.Findings(), IsEmpty());
  const Entity& b = text.GetEntity("b");
  const auto& own = static_cast<const Operation&>(*b.where[0].expression);
  EXPECT_EQ(static_cast<const NameReference&>(*own.left).referent.attribute, &b.attributes[0]);
  const auto& inherited = static_cast<const Operation&>(*b.where[1].expression);
  EXPECT_EQ(static_cast<const Member&>(*inherited.left).referent.attribute,
            &text.GetEntity("a").attributes[0]);
}

TEST(ExpressionResolver, ItemOfSeveralEnumerationsIsToldByTheOtherOperand) {
  const SchemaText text = InSchema(
      "TYPE p = ENUMERATION OF (x, both); END_TYPE; TYPE q = ENUMERATION OF (both); END_TYPE; ENTITY e; a : "
      "q; b : p; "
      "WHERE a = both; both = b; END_ENTITY;");
  ASSERT_THAT(text.Findings(), IsEmpty());
  const Entity& e = text.GetEntity("e");
  const auto& first = static_cast<const Operation&>(*e.where[0].expression);
  const Referent& q = static_cast<const NameReference&>(*first.right).referent;
  EXPECT_EQ(q.enumeration, &text.GetType("q"));
  EXPECT_EQ(q.item, 0);
  const auto& second = static_cast<const Operation&>(*e.where[1].expression);
  const Referent& p = static_cast<const NameReference&>(*second.left).referent;
  EXPECT_EQ(p.enumeration, &text.GetType("p"));
  EXPECT_EQ(p.item, 1);
}

TEST(ExpressionResolver, LocalDeclarationsAreVisibleInTheirAlgorithmOnly) {
  const SchemaText text = InSchema(
      "FUNCTION f : REAL; TYPE t = REAL; END_TYPE; ENTITY le; y : t; END_ENTITY; CONSTANT c : t := 1.0; "
      "END_CONSTANT; "
      "FUNCTION g (x : t) : t; RETURN (x + c); END_FUNCTION; LOCAL v : le := le (1.0); END_LOCAL; "
      "RETURN (g (v.y)); END_FUNCTION; FUNCTION h : t; RETURN (c + g (1.0)); END_FUNCTION;");
  EXPECT_THAT(text.Findings(),
              ElementsAre("1:258: error: unknown type 't' [E021]", "1:269: error: unknown name 'c' [E041]",
                          "1:273: error: unknown function or entity 'g' [E041]"));
}

TEST(ExpressionResolver, LocalEntitiesAndTypesAreResolvedAsThoseOfASchema) {
  const SchemaText text(ContentOf(VELMAR_TEST_DATA "/local_declarations.exp"));
  ASSERT_THAT(text.Findings(), IsEmpty());
  const Algorithm& f = LastAlgorithm(text);
  const auto local = [&](std::size_t i) { return f.declarations[i].get(); };
  const auto& thing = static_cast<const Entity&>(*local(2));
  const auto& inner = static_cast<const Entity&>(*local(3));
  EXPECT_EQ(static_cast<const DefinedType&>(*local(1)).underlying.base, local(0));
  EXPECT_THAT(thing.supertypes, ElementsAre(&text.GetEntity("thing")));
  EXPECT_THAT(inner.supertypes, ElementsAre(&thing));
  EXPECT_EQ(thing.supertypeExpression->entity, &inner);
  EXPECT_EQ(thing.attributes[0].inherited, &text.GetEntity("thing").attributes[0]);
  EXPECT_EQ(thing.attributes[1].type->declaration, local(0));
  EXPECT_EQ(thing.attributes[2].inverseEntityDeclaration, local(4));
  EXPECT_EQ(thing.unique[0].attributes[1].attribute, &thing.attributes[0]);
  const auto& rule = static_cast<const Operation&>(*thing.where[0].expression);
  EXPECT_EQ(static_cast<const NameReference&>(*rule.left).referent.attribute, &thing.attributes[0]);
  const auto& items = static_cast<const Operation&>(*thing.where[1].expression);
  EXPECT_EQ(static_cast<const NameReference&>(*items.right).referent.enumeration, local(0));
  EXPECT_EQ(static_cast<const SubtypeConstraint&>(*local(5)).entity, &thing);
  const auto& kind = static_cast<const Constant&>(*local(6));
  EXPECT_EQ(static_cast<const NameReference&>(*kind.expression).referent.enumeration, local(1));
}

TEST(ExpressionResolver, LocalDeclarationsAreCheckedAsThoseOfASchema) {
  const SchemaText text = InSchema(
      "FUNCTION f : REAL; ENTITY a SUBTYPE OF (b); SELF\\c.x : REAL; END_ENTITY; ENTITY b SUBTYPE OF (a); "
      "END_ENTITY; TYPE t = ENUMERATION BASED_ON u; END_TYPE; TYPE u = REAL; END_TYPE; ENTITY c; END_ENTITY; "
      "RETURN (red); END_FUNCTION; ENTITY d SUBTYPE OF (a); END_ENTITY;");
  EXPECT_THAT(
      text.Findings(),
      ElementsAre("1:60: error: 'c' is no supertype of 'a' [E035]",
                  "1:91: error: entity 'b' is a supertype of its own supertype 'a' [E032]",
                  "1:37: note: 'a' is declared here",
                  "1:151: error: 'u' is not an extensible enumeration [E031]", "1:169: note: declared here",
                  "1:219: error: unknown name 'red' [E041]", "1:260: error: unknown entity 'a' [E022]"));
}

TEST(ExpressionResolver, EntityIsAValueInARuleForItOnly) {
  const SchemaText text = InSchema(
      "ENTITY a; END_ENTITY; FUNCTION f : INTEGER; RETURN (SIZEOF (a)); END_FUNCTION; RULE r FOR (a); WHERE "
      "SIZEOF (a) = f; END_RULE;");
  EXPECT_THAT(text.Findings(),
              ElementsAre("1:71: error: 'a' is an entity and no value [E042]", "1:18: note: declared here"));
}

TEST(ExpressionResolver, WhatARuleDeclaresSeesItsPopulations) {
  const SchemaText text = InSchema(
      "ENTITY a; END_ENTITY; RULE r FOR (a); FUNCTION f : INTEGER; FUNCTION g : INTEGER; RETURN (SIZEOF "
      "(a)); "
      "END_FUNCTION; RETURN (g); END_FUNCTION; WHERE SIZEOF (a) = f; END_RULE; "
      "FUNCTION h : INTEGER; RETURN (SIZEOF (a)); END_FUNCTION;");
  EXPECT_THAT(text.Findings(),
              ElementsAre("1:224: error: 'a' is an entity and no value [E042]", "1:18: note: declared here"));
}

TEST(ExpressionResolver, ItemOfAnExtensionIsOneOfTheExtendedEnumeration) {
  const SchemaText text = InSchema(
      "TYPE p = EXTENSIBLE ENUMERATION OF (x); END_TYPE; TYPE q = EXTENSIBLE ENUMERATION BASED_ON p WITH "
      "(y); "
      "END_TYPE; TYPE r = ENUMERATION BASED_ON q WITH (z); END_TYPE; ENTITY e; a : p; b : r; "
      "WHERE a = p.z; b = r.x; a = q.w; END_ENTITY;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:230: error: enumeration 'q' has no item 'w' [E041]"));
  const auto& first = static_cast<const Operation&>(*text.GetEntity("e").where[0].expression);
  const Referent& item = static_cast<const Member&>(*first.right).referent;
  EXPECT_EQ(item.enumeration, &text.GetType("r"));
  EXPECT_EQ(item.item, 2);
}

TEST(ExpressionResolver, RedeclaredAttributeOfADiamondIsNotAmbiguous) {
  const SchemaText text = InSchema(
      "ENTITY a; n : NUMBER; END_ENTITY; ENTITY b SUBTYPE OF (a); SELF\\a.n : INTEGER; END_ENTITY; "
      "ENTITY c SUBTYPE OF (a); END_ENTITY; ENTITY d SUBTYPE OF (b, c); WHERE ODD (n); END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

TEST(ExpressionResolver, RuleSeesPopulations) {
  const SchemaText text = InSchema(
      "ENTITY a; x : REAL; END_ENTITY; RULE r FOR (a); WHERE SIZEOF (QUERY (i <* a | i.x > 0.0)) = 0; "
      "END_RULE;");
  ASSERT_THAT(text.Findings(), IsEmpty());
  EXPECT_THAT(LastAlgorithm(text).populationEntities, ElementsAre(&text.GetEntity("a")));
}

TEST(ExpressionResolver, AttributeOfASubtypeIsLeftOpen) {
  const SchemaText text =
      InSchema("ENTITY a; WHERE SELF.x > 0.0; END_ENTITY; ENTITY b SUBTYPE OF (a); x : REAL; END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

TEST(ExpressionResolver, DeclarationWithASyntaxErrorIsNotReportedAgain) {
  const SchemaText text = InSchema("ENTITY a; x REAL; y : REAL; WHERE x > y; END_ENTITY;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:23: error: expected ':', found 'REAL' [E010]"));
}

}  // namespace
}  // namespace VELMAR::Express
