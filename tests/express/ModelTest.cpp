#include <gmock/gmock.h>

#include "Model.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Mapping(const Entity& entity) {
  std::vector<std::string> names;
  for (const Slot& slot : InternalMapping(entity))
    names.push_back(slot.owner->name.text + '.' + slot.attribute->name.text);
  return names;
}

std::vector<std::string> Ancestors(const Entity& entity) {
  std::vector<std::string> names;
  for (const Entity* ancestor : AncestorsOf(entity)) names.push_back(ancestor->name.text);
  return names;
}

SchemaText Diamond() {
  return InSchema(
      "ENTITY root; r : REAL; END_ENTITY; ENTITY left SUBTYPE OF (root); l1, l2 : REAL; END_ENTITY; "
      "ENTITY right SUBTYPE OF (root); x : REAL; END_ENTITY; ENTITY apart; p : REAL; END_ENTITY; "
      "ENTITY bottom SUBTYPE OF (right, apart, left); b : REAL; END_ENTITY; ENTITY low SUBTYPE OF (bottom); "
      "END_ENTITY;");
}

TEST(InternalMapping, SupertypesFirstInTheOrderOfSubtypeOfEachOnce) {
  const SchemaText text = Diamond();
  EXPECT_THAT(Mapping(text.GetEntity("bottom")),
              ElementsAre("root.r", "right.x", "apart.p", "left.l1", "left.l2", "bottom.b"));
}

TEST(InternalMapping, EntityWithoutOwnAttributesHasThoseItInherits) {
  const SchemaText text = Diamond();
  EXPECT_EQ(Mapping(text.GetEntity("low")), Mapping(text.GetEntity("bottom")));
}

TEST(InternalMapping, SupertypeThatIsAlsoAnAncestorCountsOnce) {
  const SchemaText text = InSchema(
      "ENTITY a; x : REAL; END_ENTITY; ENTITY b SUBTYPE OF (a); y : REAL; END_ENTITY; "
      "ENTITY c SUBTYPE OF (a, b); z : REAL; END_ENTITY; ENTITY d SUBTYPE OF (b, a); END_ENTITY;");
  EXPECT_THAT(Mapping(text.GetEntity("c")), ElementsAre("a.x", "b.y", "c.z"));
  EXPECT_THAT(Mapping(text.GetEntity("d")), ElementsAre("a.x", "b.y"));
}

TEST(InternalMapping, RedeclaredDerivedAndInverseAttributesHaveNoPlaceOfTheirOwn) {
  const SchemaText text = InSchema(
      "ENTITY a; x : NUMBER; y : NUMBER; END_ENTITY; ENTITY b SUBTYPE OF (a); SELF\\a.x : REAL; own : REAL; "
      "DERIVE SELF\\a.y : REAL := 1.0; d : REAL := 1.0; INVERSE i : SET OF c FOR r; END_ENTITY; "
      "ENTITY c; r : b; END_ENTITY;");
  EXPECT_THAT(text.Findings(), IsEmpty());
  EXPECT_THAT(Mapping(text.GetEntity("b")), ElementsAre("a.x", "a.y", "b.own"));
}

TEST(AncestorsOf, RootsComeFirst) {
  const SchemaText text = Diamond();
  EXPECT_THAT(Ancestors(text.GetEntity("bottom")), ElementsAre("root", "right", "apart", "left"));
  EXPECT_THAT(Ancestors(text.GetEntity("low")), ElementsAre("root", "right", "apart", "left", "bottom"));
  EXPECT_THAT(Ancestors(text.GetEntity("root")), IsEmpty());
}

TEST(IsKindOf, HoldsForTheEntityItselfAndItsAncestorsOnly) {
  const SchemaText text = Diamond();
  EXPECT_TRUE(IsKindOf(text.GetEntity("low"), text.GetEntity("low")));
  EXPECT_TRUE(IsKindOf(text.GetEntity("low"), text.GetEntity("root")));
  EXPECT_FALSE(IsKindOf(text.GetEntity("root"), text.GetEntity("low")));
  EXPECT_FALSE(IsKindOf(text.GetEntity("left"), text.GetEntity("right")));
}

TEST(Underlying, FollowsNamesToWhatTheyStandFor) {
  const SchemaText text = InSchema(
      "TYPE a = b; END_TYPE; TYPE b = LIST OF c; END_TYPE; TYPE c = e; END_TYPE; ENTITY e; x : a; y : c; "
      "END_ENTITY;");
  EXPECT_EQ(Underlying(*text.GetEntity("e").attributes[0].type)->kind, TypeKind::List);
  const TypeExpression* entity = Underlying(*text.GetEntity("e").attributes[1].type);
  EXPECT_EQ(entity->kind, TypeKind::Named);
  EXPECT_EQ(entity->declaration, &text.GetEntity("e"));
}

TEST(Underlying, IsNullForWhatIsUnknown) {
  const SchemaText text = InSchema("TYPE a = b; END_TYPE;");
  EXPECT_EQ(Underlying(text.GetType("a").underlying), nullptr);
}

}  // namespace
}  // namespace VELMAR::Express
