#include <gmock/gmock.h>

#include "Model.h"
#include "ModelDump.h"
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

// What comparisons of models rest on.
TEST(ModelDump, ShowsEveryDifference) {
  const std::string text =
      "SCHEMA s 'v 1'; REFERENCE FROM t (k AS m); CONSTANT c : REAL := 1.5; END_CONSTANT; "
      "TYPE n = STRING (3) FIXED; WHERE w1 : SELF <> 'a'; END_TYPE; TYPE o = ENUMERATION OF (red, blue); "
      "END_TYPE; "
      "TYPE q = EXTENSIBLE GENERIC_ENTITY SELECT (a, b); END_TYPE; "
      "ENTITY a ABSTRACT SUPERTYPE OF (ONEOF (b, d)); x : OPTIONAL SET [0 : 2] OF a; y, z : INTEGER; "
      "END_ENTITY; "
      "ENTITY b SUBTYPE OF (a); SELF\\a.y RENAMED yy : INTEGER; DERIVE h : LOGICAL := y + z * 2 < 7; "
      "INVERSE i : SET OF d FOR r; UNIQUE u1 : z; END_ENTITY; ENTITY d SUBTYPE OF (a); r : b; END_ENTITY; "
      "SUBTYPE_CONSTRAINT e FOR a; TOTAL_OVER (b, d); END_SUBTYPE_CONSTRAINT; "
      "FUNCTION f (VAR_p : INTEGER; l : LIST OF UNIQUE GENERIC : g) : REAL; LOCAL v : INTEGER := 1; "
      "END_LOCAL; "
      "REPEAT j := 1 TO 3 WHILE v < 9; v := j; CASE v OF 1, 2 : SKIP; OTHERWISE : ESCAPE; END_CASE; "
      "END_REPEAT; "
      "IF EXISTS (l[1]) THEN v := SIZEOF ([1, 2 : 2]); ELSE ; END_IF; ALIAS w FOR v; w := VAR_p; END_ALIAS; "
      "RETURN (SIN (v)); END_FUNCTION; "
      "RULE p FOR (a); WHERE SIZEOF (QUERY (k1 <* a | {1 < k1.y <= 5})) = 0; END_RULE; END_SCHEMA; "
      "SCHEMA t; CONSTANT k : BINARY := %101; k2 : BINARY := %1; END_CONSTANT; END_SCHEMA;";
  const auto dump = [](const std::string& schema) {
    const SchemaText read(schema);
    EXPECT_EQ(read.diagnostics.ErrorCount(), 0u) << testing::PrintToString(read.Findings());
    return ModelDump(read.model).Text();
  };
  const std::string expected = dump(text);
  EXPECT_EQ(dump(text), expected);
  const std::pair<const char*, const char*> changes[] = {{"'v 1'", "'v 2'"},
                                                         {"'v 1'", "\"00000076\""},
                                                         {"(k AS m)", "(k2 AS m)"},
                                                         {"(k AS m)", "(k AS mm)"},
                                                         {"REFERENCE FROM t (k AS m)", "REFERENCE FROM t"},
                                                         {"1.5", "1.25"},
                                                         {"(3)", "(4)"},
                                                         {" FIXED", ""},
                                                         {"w1 : ", ""},
                                                         {"<> 'a'", "<> 'b'"},
                                                         {"<> 'a'", "= 'a'"},
                                                         {"<> 'a'", "<> \"00000061\""},
                                                         {"(red, blue)", "(blue, red)"},
                                                         {"EXTENSIBLE GENERIC_ENTITY", "EXTENSIBLE"},
                                                         {"EXTENSIBLE GENERIC_ENTITY", ""},
                                                         {"SELECT (a, b)", "SELECT (a, d)"},
                                                         {"ABSTRACT SUPERTYPE", "SUPERTYPE"},
                                                         {"ONEOF (b, d)", "b ANDOR d"},
                                                         {"ONEOF (b, d)", "b AND d"},
                                                         {"OPTIONAL ", ""},
                                                         {"SET [0 : 2]", "BAG [0 : 2]"},
                                                         {"[0 : 2] OF a", "[0 : 3] OF a"},
                                                         {"[0 : 2] ", ""},
                                                         {" RENAMED yy", " RENAMED y2"},
                                                         {"y + z * 2", "(y + z) * 2"},
                                                         {"y + z", "z + y"},
                                                         {"* 2 <", "* 3 <"},
                                                         {"2 < 7", "2 <= 7"},
                                                         {"i : SET OF d", "i : BAG OF d"},
                                                         {"i : SET OF d", "i : d"},
                                                         {"u1 : z", "u1 : h"},
                                                         {"u1 : z", "z"},
                                                         {"TOTAL_OVER (b, d)", "TOTAL_OVER (b)"},
                                                         {"TOTAL_OVER (b, d)", "ONEOF (b, d)"},
                                                         {"UNIQUE GENERIC", "GENERIC"},
                                                         {"GENERIC : g", "GENERIC : h"},
                                                         {"1; END_LOCAL", "2; END_LOCAL"},
                                                         {"1 TO 3", "1 TO 3 BY 1"},
                                                         {"WHILE", "UNTIL"},
                                                         {"v := j", "v := v"},
                                                         {"1, 2 :", "1 :"},
                                                         {"OTHERWISE : ESCAPE;", ""},
                                                         {"ESCAPE", "SKIP"},
                                                         {"l[1]", "l[2]"},
                                                         {"2 : 2]", "2 : 3]"},
                                                         {"[1, 2 : 2]", "[1, 2]"},
                                                         {"ELSE ;", ""},
                                                         {"w := VAR_p", "v := VAR_p"},
                                                         {"SIN (v)", "COS (v)"},
                                                         {"1 < k1.y", "1 <= k1.y"},
                                                         {"k1.y <=", "k1.z <="},
                                                         {"%101", "%1010"},
                                                         {"FOR (a)", "FOR (a, b)"}};
  for (const auto& [part, other] : changes) {
    std::string changed = text;
    const std::size_t at = changed.find(part);
    ASSERT_NE(at, std::string::npos) << part;
    changed.replace(at, std::string(part).size(), other);
    EXPECT_NE(dump(changed), expected) << part << " -> " << other;
  }
}

}  // namespace
}  // namespace VELMAR::Express
