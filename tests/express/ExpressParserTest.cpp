#include <gmock/gmock.h>

#include "ExpressParser.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Names(const std::vector<std::unique_ptr<Declaration>>& declarations) {
  std::vector<std::string> names;
  for (const auto& declaration : declarations) names.push_back(declaration->name.text);
  return names;
}

std::string Text(const SupertypeExpression& expression) {
  if (expression.kind == SupertypeExpression::Kind::Entity) return expression.name.text;
  std::string text = expression.kind == SupertypeExpression::Kind::OneOf   ? "oneof"
                     : expression.kind == SupertypeExpression::Kind::AndOr ? "andor"
                                                                           : "and";
  for (const SupertypeExpression& operand : expression.operands) text += ' ' + Text(operand);
  return '(' + text + ')';
}

TEST(ExpressParser, SchemaHasNameAndVersion) {
  const SchemaText text("SCHEMA Some_Schema '{ iso 1 }'; END_SCHEMA; SCHEMA b; END_SCHEMA;");
  ASSERT_EQ(text.model.schemas.size(), 2u);
  EXPECT_EQ(text.model.schemas[0]->name.text, "some_schema");
  EXPECT_EQ(text.model.schemas[0]->version, "{ iso 1 }");
  EXPECT_EQ(text.model.schemas[1]->version, "");
  EXPECT_EQ(text.model.FindSchema("SOME_schema"), text.model.schemas[0].get());
  EXPECT_EQ(text.model.FindSchema("c"), nullptr);
}

TEST(ExpressParser, DeclarationsStandInTheOrderOfTheText) {
  const SchemaText text = InSchema(
      "CONSTANT c : REAL := 1.0; d : REAL := 2.0; END_CONSTANT; ENTITY b; END_ENTITY; TYPE a = REAL; "
      "END_TYPE; "
      "FUNCTION f : REAL; RETURN (c); END_FUNCTION; PROCEDURE p; END_PROCEDURE; RULE r FOR (b); WHERE "
      "SIZEOF (b) = 0; END_RULE; "
      "SUBTYPE_CONSTRAINT sc FOR b; END_SUBTYPE_CONSTRAINT;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_THAT(Names(text.model.schemas[0]->declarations),
              ElementsAre("c", "d", "b", "a", "f", "p", "r", "sc"));
}

TEST(ExpressParser, InterfacesKeepNewNames) {
  const SchemaText text(
      "SCHEMA s; USE FROM t (a AS b, c); REFERENCE FROM t; END_SCHEMA; "
      "SCHEMA t; ENTITY a; END_ENTITY; ENTITY c; END_ENTITY; END_SCHEMA;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  const auto& interfaces = text.model.schemas[0]->interfaces;
  ASSERT_EQ(interfaces.size(), 2u);
  EXPECT_TRUE(interfaces[0].isUse);
  EXPECT_EQ(interfaces[0].items[0].name.text, "a");
  EXPECT_EQ(interfaces[0].items[0].alias.text, "b");
  EXPECT_EQ(interfaces[0].items[1].alias.text, "c");
  EXPECT_FALSE(interfaces[1].isUse);
  EXPECT_THAT(interfaces[1].items, IsEmpty());
}

struct TypeRow {
  const char* express;
  const char* text;
};

std::ostream& operator<<(std::ostream& out, const TypeRow& row) { return out << row.express; }

class EveryType : public testing::TestWithParam<TypeRow> {};

TEST_P(EveryType, IsReadWhole) {
  const SchemaText text =
      InSchema("ENTITY thing; END_ENTITY; ENTITY e ABSTRACT; x : " + std::string(GetParam().express) +
               "; END_ENTITY; FUNCTION f (n : INTEGER) : INTEGER; RETURN (n); END_FUNCTION;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_EQ(TypeText(text.model, *text.GetEntity("e").attributes.at(0).type), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Types, EveryType,
    testing::Values(
        TypeRow{"REAL", "real"}, TypeRow{"REAL (6)", "real (6)"}, TypeRow{"NUMBER", "number"},
        TypeRow{"INTEGER", "integer"}, TypeRow{"STRING", "string"}, TypeRow{"STRING (20)", "string (20)"},
        TypeRow{"STRING (2 * 10) FIXED", "string (2 * 10) fixed"}, TypeRow{"BOOLEAN", "boolean"},
        TypeRow{"LOGICAL", "logical"}, TypeRow{"BINARY", "binary"},
        TypeRow{"BINARY (8) FIXED", "binary (8) fixed"}, TypeRow{"Thing", "thing"},
        TypeRow{"LIST OF thing", "list of thing"}, TypeRow{"SET [0:?] OF thing", "set [0 : ?] of thing"},
        TypeRow{"BAG [1:2] OF REAL", "bag [1 : 2] of real"},
        TypeRow{"LIST [1:?] OF UNIQUE thing", "list [1 : ?] of unique thing"},
        TypeRow{"ARRAY [-1:f(1)] OF OPTIONAL UNIQUE REAL", "array [-1 : f(1)] of optional unique real"},
        TypeRow{"ARRAY [1:2] OF SET OF LIST [3:4] OF REAL", "array [1 : 2] of set of list [3 : 4] of real"},
        TypeRow{"GENERIC", "generic"}, TypeRow{"GENERIC : l", "generic"},
        TypeRow{"GENERIC_ENTITY : l", "generic_entity"},
        TypeRow{"AGGREGATE : a OF GENERIC : b", "aggregate of generic"}));

TEST(ExpressParser, EnumerationsAndSelectsKeepTheirItems) {
  const SchemaText text = InSchema(
      "ENTITY a; END_ENTITY; ENTITY b; END_ENTITY; TYPE e = EXTENSIBLE ENUMERATION OF (x, Y); END_TYPE; "
      "TYPE f = ENUMERATION BASED_ON e WITH (z); END_TYPE; TYPE s = EXTENSIBLE GENERIC_ENTITY SELECT (a); "
      "END_TYPE; "
      "TYPE t = SELECT BASED_ON s WITH (b); END_TYPE; TYPE u = EXTENSIBLE SELECT; END_TYPE;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  const TypeExpression& e = text.GetType("e").underlying;
  EXPECT_TRUE(e.extensible);
  EXPECT_EQ(e.items.size(), 2u);
  EXPECT_EQ(e.items[1].name.text, "y");
  const TypeExpression& f = text.GetType("f").underlying;
  EXPECT_FALSE(f.extensible);
  EXPECT_EQ(f.basedOn.text, "e");
  EXPECT_EQ(f.items.size(), 1u);
  EXPECT_EQ(AllItems(f).size(), 3u);
  EXPECT_EQ(AllItems(f)[2].name.text, "z");
  EXPECT_TRUE(text.GetType("s").underlying.genericEntity);
  EXPECT_EQ(AllItems(text.GetType("t").underlying)[1].declaration, &text.GetEntity("b"));
  EXPECT_TRUE(text.GetType("u").underlying.extensible);
}

TEST(ExpressParser, AttributesDeclaredTogetherShareTheirType) {
  const SchemaText text = InSchema("ENTITY e; a, b : OPTIONAL INTEGER; c : REAL; END_ENTITY;");
  const auto& attributes = text.GetEntity("e").attributes;
  ASSERT_EQ(attributes.size(), 3u);
  EXPECT_EQ(attributes[0].type, attributes[1].type);
  EXPECT_TRUE(attributes[0].optional);
  EXPECT_TRUE(attributes[1].optional);
  EXPECT_FALSE(attributes[2].optional);
}

TEST(ExpressParser, AllKindsOfAttributes) {
  const SchemaText text = InSchema(
      "ENTITY a; x, y : NUMBER; END_ENTITY; ENTITY b SUBTYPE OF (a); SELF\\a.x RENAMED z : REAL; "
      "DERIVE SELF\\a.y : REAL := z * 2.0; w : REAL := (z); "
      "INVERSE users : BAG [1:3] OF c FOR ref; one : c FOR c.ref; END_ENTITY; ENTITY c; ref : b; "
      "END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  const auto& b = text.GetEntity("b").attributes;
  ASSERT_EQ(b.size(), 5u);
  EXPECT_TRUE(b[0].redeclared && b[0].renamed);
  EXPECT_EQ(b[0].name.text, "z");
  EXPECT_EQ(b[0].redeclaredAttribute.text, "x");
  EXPECT_EQ(b[1].kind, AttributeKind::Derived);
  EXPECT_TRUE(b[1].redeclared);
  EXPECT_EQ(ExpressionText(*b[1].expression), "z * 2.0");
  EXPECT_EQ(b[2].kind, AttributeKind::Derived);
  EXPECT_FALSE(b[2].redeclared);
  EXPECT_EQ(b[3].kind, AttributeKind::Inverse);
  EXPECT_EQ(b[3].inverseKind, TypeKind::Bag);
  EXPECT_TRUE(b[3].inverseHasBounds);
  EXPECT_EQ(b[4].inverseKind, TypeKind::Named);
  EXPECT_EQ(b[4].inverseGroup.text, "c");
  EXPECT_EQ(b[4].inverseAttribute.text, "ref");
}

TEST(ExpressParser, AndBindsCloserThanAndor) {
  const SchemaText text = InSchema(
      "ENTITY r ABSTRACT SUPERTYPE OF (a ANDOR b AND ONEOF (c, d ANDOR e) AND (f)); END_ENTITY; "
      "ENTITY a SUBTYPE OF (r); END_ENTITY; ENTITY b SUBTYPE OF (r); END_ENTITY; ENTITY c SUBTYPE OF (r); "
      "END_ENTITY; "
      "ENTITY d SUBTYPE OF (r); END_ENTITY; ENTITY e SUBTYPE OF (r); END_ENTITY; ENTITY f SUBTYPE OF (r); "
      "END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_TRUE(text.GetEntity("r").isAbstract);
  EXPECT_EQ(Text(*text.GetEntity("r").supertypeExpression), "(andor a (and b (oneof c (andor d e)) f))");
}

TEST(ExpressParser, SubtypeConstraintHasItsThreeParts) {
  const SchemaText text = InSchema(
      "ENTITY r; END_ENTITY; ENTITY a SUBTYPE OF (r); END_ENTITY; ENTITY b SUBTYPE OF (r); END_ENTITY; "
      "SUBTYPE_CONSTRAINT c FOR r; ABSTRACT SUPERTYPE; TOTAL_OVER (a, b); ONEOF (a, b); "
      "END_SUBTYPE_CONSTRAINT;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  const auto& c = static_cast<const SubtypeConstraint&>(*text.model.schemas[0]->declarations.back());
  EXPECT_EQ(c.entity, &text.GetEntity("r"));
  EXPECT_TRUE(c.isAbstract);
  ASSERT_EQ(c.totalOver.size(), 2u);
  EXPECT_EQ(c.totalOver[1].entity, &text.GetEntity("b"));
  EXPECT_EQ(Text(*c.expression), "(oneof a b)");
}

TEST(ExpressParser, RulesKeepTheirLabels) {
  const SchemaText text = InSchema(
      "ENTITY e; a, b : REAL; UNIQUE u : a, b; SELF\\e.a; WHERE w : a > 0.0; b > (1.0); END_ENTITY; "
      "TYPE t = REAL; WHERE SELF > 0.0; END_TYPE;");
  const Entity& e = text.GetEntity("e");
  ASSERT_EQ(e.unique.size(), 2u);
  EXPECT_EQ(e.unique[0].label.text, "u");
  EXPECT_EQ(e.unique[0].attributes.size(), 2u);
  EXPECT_EQ(e.unique[1].label.text, "");
  ASSERT_EQ(e.where.size(), 2u);
  EXPECT_EQ(e.where[0].label.text, "w");
  EXPECT_EQ(ExpressionText(*e.where[0].expression), "a > 0.0");
  EXPECT_EQ(text.GetType("t").where.size(), 1u);
}

TEST(ExpressParser, BodiesOfAlgorithmsHideTheirEndWords) {
  const SchemaText text = InSchema(
      "PROCEDURE f; PROCEDURE g; END_PROCEDURE; LOCAL x : STRING; END_LOCAL; IF EXISTS (x) THEN x := "
      "'END_PROCEDURE;'; END_IF; (* END_PROCEDURE; *) END_PROCEDURE; ENTITY after; END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_THAT(Names(text.model.schemas[0]->declarations), ElementsAre("f", "after"));
}

TEST(ExpressParser, GoesOnBehindAnError) {
  const SchemaText text = InSchema(
      "ENTITY a; x : ; y : REAL; END_ENTITY; TYPE t = ; END_TYPE; ENTITY b; z : REAL; END_ENTITY; ENTITY c "
      "SUBTYPE;"
      "v : REAL; END_ENTITY;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:25: error: expected a type, found ';' [E010]",
                                           "1:58: error: expected a type, found ';' [E010]",
                                           "1:118: error: expected OF, found ';' [E010]"));
  EXPECT_EQ(text.GetEntity("a").attributes.size(), 2u);
  EXPECT_EQ(text.GetEntity("b").attributes.size(), 1u);
  EXPECT_EQ(text.GetEntity("c").attributes.size(), 1u);
}

TEST(ExpressParser, MissingUpperBoundIsExplained) {
  const SchemaText text = InSchema("ENTITY a; x : LIST [1:] OF REAL; y : LIST [1:?] OF REAL; END_ENTITY;");
  EXPECT_THAT(
      text.Findings(),
      ElementsAre("1:33: error: expected an upper bound ('?' where there is none), found ']' [E010]"));
}

TEST(ExpressParser, SchemaBehindAnUnfinishedOneIsRead) {
  const SchemaText text("SCHEMA a; ENTITY x; SCHEMA b; ENTITY y; END_ENTITY; END_SCHEMA;");
  EXPECT_FALSE(text.Findings().empty());
  ASSERT_EQ(text.model.schemas.size(), 2u);
  EXPECT_EQ(text.model.schemas[1]->scope.count("y"), 1u);
}

TEST(ExpressParser, NestingOf200LevelsIsReadAnd201IsReported) {
  const auto nested = [](int depth) {
    std::string type;
    for (int i = 0; i < depth; ++i) type += "LIST OF ";
    return InSchema("ENTITY a; x : " + type + "REAL; END_ENTITY;").diagnostics.ErrorCount();
  };
  EXPECT_EQ(nested(200), 0u);
  EXPECT_EQ(nested(201), 1u);
}

}  // namespace
}  // namespace VELMAR::Express
