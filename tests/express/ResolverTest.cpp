#include <gmock/gmock.h>

#include "Resolver.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Resolver, SubtypesAreThoseDeclaredInOrder) {
  const SchemaText text = InSchema(
      "ENTITY a; END_ENTITY; ENTITY c SUBTYPE OF (a); END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; "
      "ENTITY d SUBTYPE OF (b); END_ENTITY;");
  EXPECT_THAT(text.GetEntity("a").subtypes, ElementsAre(&text.GetEntity("c"), &text.GetEntity("b")));
  EXPECT_THAT(text.GetEntity("b").subtypes, ElementsAre(&text.GetEntity("d")));
}

TEST(Resolver, RedeclarationLeadsToTheFirstDeclaration) {
  const SchemaText text = InSchema(
      "ENTITY c SUBTYPE OF (b); SELF\\b.new_x : INTEGER; END_ENTITY; "
      "ENTITY b SUBTYPE OF (a); SELF\\a.x RENAMED new_x : REAL; END_ENTITY; ENTITY a; x : NUMBER; "
      "END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_EQ(text.GetEntity("b").attributes[0].original, &text.GetEntity("a").attributes[0]);
  EXPECT_EQ(text.GetEntity("c").attributes[0].original, &text.GetEntity("a").attributes[0]);
}

TEST(Resolver, RedeclarationMayNameAnyAncestorThatHasTheAttribute) {
  const SchemaText text = InSchema(
      "ENTITY a; x : NUMBER; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; "
      "ENTITY c SUBTYPE OF (b); SELF\\b.x : REAL; END_ENTITY; ENTITY d SUBTYPE OF (b); SELF\\a.x : REAL; "
      "END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

struct Specialisation {
  const char* wide;
  const char* narrow;
  bool isAllowed;
};

std::ostream& operator<<(std::ostream& out, const Specialisation& row) {
  return out << row.wide << " as " << row.narrow;
}

class EverySpecialisation : public testing::TestWithParam<Specialisation> {};

TEST_P(EverySpecialisation, IsAllowedOrRejected) {
  const SchemaText text = InSchema(
      "TYPE colour = EXTENSIBLE ENUMERATION OF (red); END_TYPE; TYPE more = ENUMERATION BASED_ON colour; "
      "END_TYPE; "
      "TYPE choice = SELECT (base, real_type); END_TYPE; TYPE real_type = REAL; END_TYPE; "
      "ENTITY base; END_ENTITY; ENTITY derived SUBTYPE OF (base); END_ENTITY; ENTITY other; END_ENTITY; "
      "ENTITY a ABSTRACT; x : " +
      std::string(GetParam().wide) +
      "; END_ENTITY; "
      "ENTITY b ABSTRACT SUBTYPE OF (a); SELF\\a.x : " +
      GetParam().narrow + "; END_ENTITY;");
  if (GetParam().isAllowed) {
    EXPECT_THAT(text.Findings(), IsEmpty());
  } else {
    ASSERT_EQ(text.diagnostics.All().size(), 1u);
    EXPECT_EQ(text.diagnostics.All()[0].code, Code::NotSpecialised);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Specialisations, EverySpecialisation,
    testing::Values(Specialisation{"NUMBER", "REAL", true}, Specialisation{"NUMBER", "INTEGER", true},
                    Specialisation{"NUMBER", "STRING", false}, Specialisation{"REAL", "INTEGER", true},
                    Specialisation{"REAL", "real_type", true}, Specialisation{"REAL", "NUMBER", false},
                    Specialisation{"INTEGER", "REAL", false}, Specialisation{"LOGICAL", "BOOLEAN", true},
                    Specialisation{"BOOLEAN", "LOGICAL", false}, Specialisation{"STRING", "STRING (5)", true},
                    Specialisation{"STRING", "BINARY", false}, Specialisation{"base", "derived", true},
                    Specialisation{"base", "other", false}, Specialisation{"STRING (5)", "STRING (3)", true},
                    Specialisation{"STRING (5)", "STRING (6)", false},
                    Specialisation{"STRING (5)", "STRING", false},
                    Specialisation{"STRING (5)", "STRING (5) FIXED", true},
                    Specialisation{"STRING (5) FIXED", "STRING (5)", false},
                    Specialisation{"BINARY (5) FIXED", "BINARY (4) FIXED", false},
                    Specialisation{"derived", "base", false}, Specialisation{"base", "REAL", false},
                    Specialisation{"choice", "derived", true}, Specialisation{"choice", "REAL", true},
                    Specialisation{"colour", "more", true}, Specialisation{"colour", "STRING", false},
                    Specialisation{"SET OF base", "SET [1:1] OF derived", true},
                    Specialisation{"SET OF base", "SET OF other", false},
                    Specialisation{"SET OF base", "BAG OF base", false},
                    Specialisation{"BAG OF base", "SET OF base", true},
                    Specialisation{"LIST OF base", "LIST OF UNIQUE base", true},
                    Specialisation{"LIST OF UNIQUE base", "LIST OF base", false},
                    Specialisation{"ARRAY [1:3] OF OPTIONAL base", "ARRAY [1:3] OF base", true},
                    Specialisation{"ARRAY [1:3] OF base", "ARRAY [1:3] OF OPTIONAL base", false},
                    Specialisation{"ARRAY [1:3] OF base", "ARRAY [1:3] OF derived", true},
                    Specialisation{"ARRAY [1:3] OF base", "ARRAY [1:2] OF base", false},
                    Specialisation{"LIST OF base", "base", false},
                    Specialisation{"AGGREGATE OF base", "LIST OF derived", true},
                    Specialisation{"AGGREGATE OF base", "base", false},
                    Specialisation{"GENERIC", "LIST OF REAL", true},
                    Specialisation{"GENERIC_ENTITY", "derived", true}));

TEST(Resolver, InverseMayReferThroughSelectsAggregatesAndSupertypes) {
  const SchemaText text = InSchema(
      "TYPE s = SELECT (l, other); END_TYPE; TYPE l = LIST OF base; END_TYPE; ENTITY other; END_ENTITY; "
      "ENTITY base; END_ENTITY; ENTITY e SUBTYPE OF (base); INVERSE i : SET OF u FOR r; END_ENTITY; "
      "ENTITY v; r : s; END_ENTITY; ENTITY u SUBTYPE OF (v); END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  const Attribute& inverse = text.GetEntity("e").attributes[0];
  EXPECT_EQ(inverse.inverseEntityDeclaration, &text.GetEntity("u"));
  EXPECT_EQ(inverse.inverseAttributeDeclaration, &text.GetEntity("v").attributes[0]);
}

TEST(Resolver, UseCarriesOnWhatIsUsedAndReferenceDoesNot) {
  const SchemaText text(
      "SCHEMA s; USE FROM t; ENTITY e SUBTYPE OF (used); END_ENTITY; ENTITY f SUBTYPE OF (referenced); "
      "END_ENTITY; "
      "END_SCHEMA; SCHEMA t; USE FROM u (used); REFERENCE FROM u (referenced); END_SCHEMA; "
      "SCHEMA u; ENTITY used; END_ENTITY; ENTITY referenced; END_ENTITY; END_SCHEMA;");
  EXPECT_THAT(text.Findings(), ElementsAre("1:84: error: unknown entity 'referenced' [E022]"));
  EXPECT_EQ(text.model.schemas[0]->scope.count("used"), 1u);
}

TEST(Resolver, EntityIsNotItsOwnSubtype) {
  const SchemaText text = InSchema(
      "ENTITY a SUPERTYPE OF (ONEOF (b, a)); END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; "
      "SUBTYPE_CONSTRAINT c FOR a; TOTAL_OVER (a); END_SUBTYPE_CONSTRAINT;");
  EXPECT_THAT(
      text.Findings(),
      ElementsAre("1:44: error: 'a' is not a subtype of 'a' [E039]", "1:18: note: 'a' is declared here",
                  "1:138: error: 'a' is not a subtype of 'a' [E039]", "1:18: note: 'a' is declared here"));
}

TEST(Resolver, ReferenceWithoutListTakesAllDeclarationsAndUseTypesAndEntities) {
  const SchemaText text(
      "SCHEMA s; REFERENCE FROM u; END_SCHEMA; SCHEMA t; USE FROM u; END_SCHEMA; "
      "SCHEMA u; ENTITY e; END_ENTITY; FUNCTION f : REAL; RETURN (1.0); END_FUNCTION; RULE r FOR (e); "
      "WHERE SIZEOF (e) = 1; END_RULE; END_SCHEMA;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_EQ(text.model.schemas[0]->scope.count("f"), 1u);
  EXPECT_EQ(text.model.schemas[0]->scope.count("r"), 0u);
  EXPECT_EQ(text.model.schemas[1]->scope.count("f"), 0u);
  EXPECT_EQ(text.model.schemas[1]->scope.count("e"), 1u);
}

TEST(Resolver, SchemasMayUseEachOther) {
  const SchemaText text(
      "SCHEMA s; USE FROM t; ENTITY a SUBTYPE OF (b); END_ENTITY; END_SCHEMA; "
      "SCHEMA t; USE FROM s; ENTITY b; x : a; END_ENTITY; END_SCHEMA;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

TEST(Resolver, AttributeOfOneNameMayBeInheritedTwice) {
  const SchemaText text = InSchema(
      "ENTITY a; name : STRING; END_ENTITY; ENTITY b; name : STRING; END_ENTITY; "
      "ENTITY c SUBTYPE OF (a, b); SELF\\a.name : STRING (5); SELF\\b.name : STRING (6); END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
}

TEST(Resolver, ModelIsFreeOfCyclesAfterwards) {
  const SchemaText text = InSchema(
      "ENTITY a SUBTYPE OF (b); x : t; END_ENTITY; ENTITY b SUBTYPE OF (c); END_ENTITY; ENTITY c SUBTYPE OF "
      "(a, d); "
      "END_ENTITY; ENTITY d; END_ENTITY; TYPE t = LIST OF u; END_TYPE; TYPE u = t; END_TYPE; "
      "TYPE s = SELECT (s, r); END_TYPE; TYPE r = SELECT (s); END_TYPE;");
  EXPECT_EQ(text.diagnostics.ErrorCount(), 4u);
  EXPECT_LE(AncestorsOf(text.GetEntity("a")).size(), 3u);
  EXPECT_FALSE(IsKindOf(text.GetEntity("d"), text.GetEntity("a")));
}

TEST(Resolver, TwoHundredLevelsOfSupertypesAreReadAndMoreAreReported) {
  const auto chain = [](int levels) {
    std::string text = "ENTITY e0; END_ENTITY; ";
    for (int i = 1; i <= levels; ++i) {
      text += "ENTITY e" + std::to_string(i) + " SUBTYPE OF (e" + std::to_string(i - 1) + "); END_ENTITY; ";
    }
    return InSchema(text);
  };
  EXPECT_EQ(chain(200).diagnostics.ErrorCount(), 0u);
  const SchemaText tooDeep = chain(201);
  ASSERT_EQ(tooDeep.diagnostics.ErrorCount(), 1u);
  EXPECT_EQ(tooDeep.diagnostics.All()[0].code, Code::TooDeep);
}

}  // namespace
}  // namespace VELMAR::Express
