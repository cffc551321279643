// What the instances of a schema may hold.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "DataDictionary.h"
#include "SchemaText.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::unique_ptr<DataDictionary> Dictionary(const std::string& declarations) {
  const VELMAR::Express::SchemaText schema = VELMAR::Express::InSchema(declarations);
  EXPECT_EQ(schema.diagnostics.ErrorCount(), 0u) << testing::PrintToString(schema.Findings());
  return std::make_unique<DataDictionary>(*schema.model.schemas.front());
}

// The attributes as "OWNER.name: type", with what else is to be said about them.
std::vector<std::string> Attributes(const DataDictionary& dictionary, const std::string& entity) {
  std::vector<std::string> lines;
  for (const AttributeRule& attribute : dictionary.Find(entity)->attributes) {
    lines.push_back(attribute.owner->name + "." + attribute.name + ": " + attribute.domain->text +
                    (attribute.isOptional ? " optional" : "") + (attribute.isDerived ? " derived" : ""));
  }
  return lines;
}

const Domain& DomainOf(const DataDictionary& dictionary, const std::string& entity, std::size_t attribute = 0) {
  return *dictionary.Find(entity)->attributes.at(attribute).domain;
}

TEST(DataDictionary, HasTheEntitiesOfTheSchema) {
  const auto dictionary = Dictionary("ENTITY a ABSTRACT SUPERTYPE; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY;");
  EXPECT_EQ(dictionary->SchemaName(), "S");
  ASSERT_NE(dictionary->Find("A"), nullptr);
  EXPECT_TRUE(dictionary->Find("A")->isAbstract);
  EXPECT_FALSE(dictionary->Find("B")->isAbstract);
  EXPECT_EQ(dictionary->Find("a"), nullptr);
  EXPECT_EQ(dictionary->Find("C"), nullptr);
  EXPECT_TRUE(dictionary->Find("B")->IsKindOf(*dictionary->Find("A")));
  EXPECT_TRUE(dictionary->Find("B")->IsKindOf(*dictionary->Find("B")));
  EXPECT_FALSE(dictionary->Find("A")->IsKindOf(*dictionary->Find("B")));
}

TEST(DataDictionary, HasAttributesInTheOrderOfPart21) {
  const auto dictionary = Dictionary(
      "ENTITY a; x : INTEGER; y : OPTIONAL STRING; DERIVE z : REAL := 1.; END_ENTITY;"
      "ENTITY b SUBTYPE OF (a); w : LIST OF a; INVERSE i : SET OF c FOR r; END_ENTITY;"
      "ENTITY c; r : b; END_ENTITY;");
  EXPECT_THAT(Attributes(*dictionary, "B"), ElementsAre("A.x: integer", "A.y: string optional", "B.w: list of a"));
  EXPECT_EQ(dictionary->Find("B")->firstOwn, 2u);
  EXPECT_EQ(DomainOf(*dictionary, "C").entity, dictionary->Find("B"));
}

TEST(DataDictionary, KnowsWhatSubtypesRedeclareAndDerive) {
  const auto dictionary = Dictionary(
      "ENTITY a; x : OPTIONAL NUMBER; y : INTEGER; END_ENTITY;"
      "ENTITY b SUBTYPE OF (a); SELF\\a.x : INTEGER; DERIVE SELF\\a.y : INTEGER := 1; END_ENTITY;"
      "ENTITY c SUBTYPE OF (b); END_ENTITY;");
  EXPECT_THAT(Attributes(*dictionary, "A"), ElementsAre("A.x: number optional", "A.y: integer"));
  EXPECT_THAT(Attributes(*dictionary, "B"), ElementsAre("A.x: integer", "A.y: integer derived"));
  EXPECT_THAT(Attributes(*dictionary, "C"), ElementsAre("A.x: integer", "A.y: integer derived"));
  EXPECT_THAT(dictionary->Find("B")->derives, ElementsAre(std::make_pair(dictionary->Find("A"), std::string("y"))));
  EXPECT_THAT(dictionary->Find("C")->derives, IsEmpty());
}

TEST(DataDictionary, FollowsDefinedTypes) {
  const auto dictionary = Dictionary(
      "TYPE t = STRING (5) FIXED; END_TYPE; TYPE u = t; END_TYPE;"
      "ENTITY a; x : u; y : BINARY (8); z : STRING; END_ENTITY;");
  const Domain& x = DomainOf(*dictionary, "A");
  EXPECT_EQ(x.kind, Domain::Kind::String);
  EXPECT_EQ(x.text, "u");
  EXPECT_EQ(x.longest, 5);
  EXPECT_TRUE(x.isFixed);
  EXPECT_EQ(DomainOf(*dictionary, "A", 1).kind, Domain::Kind::Binary);
  EXPECT_EQ(DomainOf(*dictionary, "A", 1).longest, 8);
  EXPECT_FALSE(DomainOf(*dictionary, "A", 1).isFixed);
  EXPECT_EQ(DomainOf(*dictionary, "A", 2).longest, -1);
}

TEST(DataDictionary, KnowsHowManyElementsThereMayBe) {
  const auto dictionary = Dictionary(
      "CONSTANT k : INTEGER := 4; END_CONSTANT;"
      "ENTITY a; v : LIST [1 : 3] OF REAL; w : SET OF INTEGER; x : ARRAY [-1 : 2] OF OPTIONAL REAL; y : BAG [2 : ?] OF a;"
      " z : LIST [0 : k] OF a; END_ENTITY;");
  const auto bounds = [&](std::size_t attribute) {
    const Domain& domain = DomainOf(*dictionary, "A", attribute);
    EXPECT_EQ(domain.kind, Domain::Kind::Aggregate);
    return std::make_pair(domain.fewest, domain.most);
  };
  EXPECT_EQ(bounds(0), std::make_pair(1L, 3L));
  EXPECT_EQ(bounds(1), std::make_pair(0L, -1L));
  EXPECT_EQ(bounds(2), std::make_pair(4L, 4L));
  EXPECT_EQ(bounds(3), std::make_pair(2L, -1L));
  EXPECT_EQ(bounds(4), std::make_pair(0L, -1L));
  EXPECT_TRUE(DomainOf(*dictionary, "A", 2).mayLackElements);
  EXPECT_FALSE(DomainOf(*dictionary, "A", 1).mayLackElements);
  EXPECT_EQ(DomainOf(*dictionary, "A", 0).element->kind, Domain::Kind::Real);
}

std::vector<std::string> TypesOf(const Domain& domain) {
  std::vector<std::string> names;
  for (const auto& [name, type] : domain.types) names.push_back(name + "=" + type->text);
  return names;
}

TEST(DataDictionary, GathersTheTypesOfNestedSelects) {
  const auto dictionary = Dictionary(
      "TYPE len = REAL; END_TYPE; TYPE colour = ENUMERATION OF (red, green); END_TYPE;"
      "TYPE inner = SELECT (len, a); END_TYPE; TYPE outer = SELECT (inner, colour, b); END_TYPE;"
      "TYPE same = outer; END_TYPE;"
      "ENTITY a; x : outer; y : same; z : colour; END_ENTITY; ENTITY b; END_ENTITY;");
  for (const std::size_t attribute : {0u, 1u}) {
    const Domain& select = DomainOf(*dictionary, "A", attribute);
    EXPECT_EQ(select.kind, Domain::Kind::Select);
    EXPECT_THAT(TypesOf(select), ElementsAre("COLOUR=colour", "LEN=len"));
    EXPECT_THAT(select.entities, testing::UnorderedElementsAre(dictionary->Find("A"), dictionary->Find("B")));
  }
  EXPECT_THAT(DomainOf(*dictionary, "A", 2).items, ElementsAre("GREEN", "RED"));
}

TEST(DataDictionary, AddsWhatExtensionsOfTypesAdd) {
  const auto dictionary = Dictionary(
      "TYPE colour = EXTENSIBLE ENUMERATION OF (red); END_TYPE;"
      "TYPE more = ENUMERATION BASED_ON colour WITH (blue); END_TYPE;"
      "TYPE any = EXTENSIBLE SELECT (a); END_TYPE; TYPE wider = SELECT BASED_ON any WITH (b); END_TYPE;"
      "ENTITY a; x : colour; y : more; z : any; END_ENTITY; ENTITY b; END_ENTITY;");
  EXPECT_THAT(DomainOf(*dictionary, "A", 0).items, ElementsAre("BLUE", "RED"));
  EXPECT_THAT(DomainOf(*dictionary, "A", 1).items, ElementsAre("BLUE", "RED"));
  EXPECT_THAT(DomainOf(*dictionary, "A", 2).entities,
              testing::UnorderedElementsAre(dictionary->Find("A"), dictionary->Find("B")));
}

TEST(DataDictionary, MayHaveTypesThatContainThemselves) {
  const auto dictionary = Dictionary("TYPE many = LIST OF one; END_TYPE; TYPE one = SELECT (many, a); END_TYPE;"
                                     "ENTITY a; x : one; END_ENTITY;");
  const Domain& one = DomainOf(*dictionary, "A");
  EXPECT_EQ(one.types.at("MANY")->element, &one);
}

}  // namespace
}  // namespace velmar
