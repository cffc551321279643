// Types that come from EXPRESS texts, and their instances.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "ExpSchemaLibrary.h"
#include "LateBoundType.h"
#include "LoadedSchemas.h"
#include "VelmarClasses.h"

namespace {

using namespace VELMAR;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::Construct;
using VELMAR::TestData::Kinds;

// A new instance that belongs to the test, created as the library creates them: through the registry.
std::unique_ptr<ExpEntity> Create(const LateBoundSchema& schema, const std::string& name) {
  ExpEntityRuntimeType* type =
      ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, schema.GetRegistryName());
  EXPECT_NE(type, nullptr) << name;
  return std::unique_ptr<ExpEntity>(type == nullptr ? nullptr : type->CreateInstance(-1));
}

template <class Value>
bool IsA(ExpEntity& entity, const std::string& member) {
  ExpAttribute* value = entity.GetMember(member);
  return value != nullptr && typeid(*value) == typeid(Value);
}

TEST(LateBoundType, MembersAreOfTheClassThatFitsTheType) {
  const auto thing = Create(Kinds(), "THING");
  EXPECT_TRUE(IsA<ExpSchemaReal>(*thing, "extent"));
  EXPECT_TRUE(IsA<ExpSchemaReal>(*thing, "a_number"));
  EXPECT_TRUE(IsA<ExpInteger>(*thing, "an_integer"));
  EXPECT_TRUE(IsA<ExpString>(*thing, "words"));
  EXPECT_TRUE(IsA<ExpBoolean>(*thing, "yes"));
  EXPECT_TRUE(IsA<ExpLogical>(*thing, "maybe"));
  EXPECT_TRUE(IsA<ExpSchemaBinary>(*thing, "data"));
  EXPECT_NE(dynamic_cast<ExpEnumeration*>(thing->GetMember("shade")), nullptr);
  EXPECT_TRUE(IsA<ExpSelect>(*thing, "chosen"));
  EXPECT_TRUE(IsA<ExpLink>(*thing, "next"));
  EXPECT_TRUE(IsA<ExpAggregation>(*thing, "points"));
}

TEST(LateBoundType, GeneralisedTypesAreSelectsLinksAndAggregates) {
  const auto closed = Create(Construct("GENERALISED", "generalised_types.exp"), "CLOSED");
  EXPECT_TRUE(IsA<ExpSelect>(*closed, "anything"));
  EXPECT_TRUE(IsA<ExpLink>(*closed, "any_entity"));
  EXPECT_TRUE(IsA<ExpAggregation>(*closed, "some"));
  EXPECT_TRUE(IsA<ExpAggregation>(*closed, "row"));
  EXPECT_EQ(closed->GetNofExplicitMembers(), 4);
}

TEST(LateBoundType, MembersAreFoundByPositionAndByName) {
  const auto thing = Create(Kinds(), "THING");
  EXPECT_THAT(*thing->GetMemberNames(), ElementsAre("extent", "a_number", "an_integer", "words", "yes",
                                                    "maybe", "data", "shade", "chosen", "next", "points"));
  for (int i = 0; i < 11; ++i) {
    EXPECT_NE(thing->GetMember(i), nullptr) << i;
    EXPECT_EQ(thing->GetMember(i), thing->GetMember((*thing->GetMemberNames())[static_cast<std::size_t>(i)]))
        << i;
  }
  EXPECT_EQ(thing->GetMember(11), nullptr);
  EXPECT_EQ(thing->GetMember(-1), nullptr);
  EXPECT_EQ(thing->GetMember("EXTENT"), nullptr);
  EXPECT_EQ(thing->GetMember("nothing"), nullptr);
}

TEST(LateBoundType, EveryInstanceHasValuesOfItsOwn) {
  const auto a = Create(Kinds(), "THING");
  const auto b = Create(Kinds(), "THING");
  a->GetMember("words")->SetExpString("a");
  EXPECT_EQ(a->GetMember("words")->ToString(), "'a'");
  EXPECT_EQ(b->GetMember("words")->ToString(), "''");
}

TEST(LateBoundType, ANewInstancePrintsLikeOneOfASchemaLibrary) {
  const auto crossing = Create(Construct("ENUMERATIONS", "enumeration.exp"), "CROSSING");
  EXPECT_EQ(crossing->ToString(), "CROSSING(.., ..);");
  const auto fixed = Create(Construct("REDECLARED", "redeclared_attribute.exp"), "FIXED_UNIT");
  EXPECT_EQ(fixed->ToString(), "FIXED_UNIT(*, '', 0, '');");
}

TEST(LateBoundType, NewAndUnusedInstancesAreCountedAndDeleted) {
  Kinds();
  const std::size_t before = ExpEntity::instanceCount;
  {
    const auto unused = Create(Kinds(), "THING");
    const auto used = Create(Kinds(), "THING");
    used->GetMember("points")->AddValue(new ExpReal(1.5));
    EXPECT_EQ(ExpEntity::instanceCount, before + 2);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

// ---------------------------------------------------------------------------------------------- enumerations

TEST(LateBoundType, EnumerationsKnowTheItemsOfTheirType) {
  const auto thing = Create(Kinds(), "THING");
  auto* shade = dynamic_cast<ExpEnumeration*>(thing->GetMember("shade"));
  ASSERT_NE(shade, nullptr);
  EXPECT_EQ(shade->GetExpEnumeration(), -1);
  static_cast<ExpAttribute*>(shade)->SetExpEnumeration("GREEN");
  EXPECT_EQ(shade->GetExpEnumeration(), 1);
  shade->SetExpEnumeration("blue");
  EXPECT_EQ(shade->GetExpEnumeration(), 2);
  EXPECT_EQ(shade->ToString(), ".BLUE.");
  try {
    shade->SetExpEnumeration("PINK");
    FAIL() << "nothing thrown";
  } catch (const std::string& text) {
    EXPECT_EQ(text, "ExpEnumeration Enumerationvalue not found: PINK");
  }
  EXPECT_EQ(shade->GetExpEnumeration(), -1);
}

TEST(LateBoundType, AnEnumerationBasedOnAnotherHasItsItemsFirst) {
  const LateBoundSchema& schema = Construct("EXTENSIBLE", "extensible_types.exp");
  const auto part = Create(schema, "PART");
  auto* paint = dynamic_cast<ExpEnumeration*>(part->GetMember("paint"));
  ASSERT_NE(paint, nullptr);
  paint->SetExpEnumeration("GREEN");
  EXPECT_EQ(paint->GetExpEnumeration(), 1);
}

// ---------------------------------------------------------------------------------------- several supertypes

TEST(LateBoundType, SeveralSupertypesAreLaidOutOnceEachInOrder) {
  const LateBoundSchema& schema = Construct("SEVERAL", "multiple_inheritance.exp");
  const auto bottom = Create(schema, "BOTTOM");
  EXPECT_THAT(*bottom->GetMemberNames(), ElementsAre("r1", "r2", "r", "l", "o", "b"));
  EXPECT_EQ(bottom->GetExternalMappingStartIndex(), 5);
  EXPECT_THAT(*bottom->GetExpSuperClasses(),
              ElementsAre("VELMAR::ExpEntity", "SEVERAL::ROOT", "SEVERAL::RIGHT", "SEVERAL::LEFT",
                          "SEVERAL::OTHER_ROOT"));
  EXPECT_THAT(*bottom->GetExpSubClasses(), ElementsAre("SEVERAL::BELOW"));
  EXPECT_TRUE(IsA<ExpSchemaReal>(*bottom, "o"));
  EXPECT_TRUE(IsA<ExpLogical>(*bottom, "b"));
  const auto below = Create(schema, "BELOW");
  EXPECT_EQ(below->GetNofExplicitMembers(), 6);
  EXPECT_EQ(below->GetExternalMappingStartIndex(), 6);
  EXPECT_THAT(*Create(schema, "TWICE")->GetMemberNames(), ElementsAre("r1", "r2", "l", "t"));
}

TEST(LateBoundType, DerivedAttributesAreOmittedInTheSubtypesToo) {
  EXPECT_EQ(Create(Kinds(), "LEFT")->ToString(), "LEFT('', 0., 0.);");
  EXPECT_EQ(Create(Kinds(), "RIGHT")->ToString(), "RIGHT('', 0., ..);");
  const auto bottom = Create(Kinds(), "BOTTOM");
  EXPECT_TRUE(bottom->GetMember("size")->IsOmitted());
  EXPECT_FALSE(bottom->GetMember("name")->IsOmitted());
  EXPECT_TRUE(Create(Kinds(), "BELOW")->GetMember("size")->IsOmitted());
}

TEST(LateBoundType, TypesHaveTheNumbersOfTheRegistry) {
  const auto bottom = Create(Kinds(), "BOTTOM");
  EXPECT_EQ(bottom->GetExpClassName(), "BOTTOM");
  EXPECT_EQ(bottom->GetTypeNumberOfEntity(), 2);  // BELOW, BOTTOM, ...
  EXPECT_EQ(bottom->GetNofInverseMembers(), 1);
  EXPECT_EQ(Create(Kinds(), "BELOW")->GetNofInverseMembers(), 1);
  EXPECT_EQ(Create(Kinds(), "TOP")->GetNofInverseMembers(), 0);
  EXPECT_FALSE(bottom->InsertInObjTree());
  EXPECT_FALSE(Kinds().FindType("TOP")->GetImplementationTypeName().empty());
}

TEST(LateBoundType, InterfacedEntitiesHaveTheirNewNames) {
  const LateBoundSchema& schema = Construct("INTERFACED", "interface.exp", "Shapes");
  EXPECT_EQ(schema.GetName(), "SHAPES");
  const auto shape = Create(schema, "SHAPE");
  EXPECT_THAT(*shape->GetExpSuperClasses(), ElementsAre("VELMAR::ExpEntity", "INTERFACED::NAMED_THING"));
  shape->GetMember("paint")->SetExpEnumeration("GREEN");
  EXPECT_EQ(shape->ToString(), "SHAPE('', 0., #-1, .GREEN.);");
}

// ------------------------------------------------------------------------------------------------ attributes

TEST(LateBoundType, TellsWhatExpressSaysAboutItsAttributes) {
  const LateBoundType* thing = Kinds().FindType("thing");
  ASSERT_NE(thing, nullptr);
  ASSERT_EQ(thing->GetAttributes().size(), 11u);
  const LateBoundAttribute& next = thing->GetAttributes()[9];
  EXPECT_EQ(next.name, "next");
  EXPECT_EQ(next.owner, "THING");
  EXPECT_EQ(next.expressType, "thing");
  EXPECT_TRUE(next.optional);
  EXPECT_FALSE(next.derived);
  EXPECT_EQ(thing->GetAttributes()[10].expressType, "list [1 : ?] of list [2 : 3] of real");
  EXPECT_FALSE(thing->GetAttributes()[10].optional);
  EXPECT_FALSE(thing->IsAbstract());
}

TEST(LateBoundType, ARedeclaredAttributeHasItsNarrowestTypeAndItsFirstName) {
  EXPECT_TRUE(Kinds().FindType("TOP")->IsAbstract());
  const LateBoundAttribute& first = Kinds().FindType("TOP")->GetAttributes()[1];
  EXPECT_EQ(first.expressType, "number");
  EXPECT_FALSE(first.derived);
  const std::vector<LateBoundAttribute>& right = Kinds().FindType("RIGHT")->GetAttributes();
  EXPECT_EQ(right[0].name, "name");
  EXPECT_EQ(right[0].owner, "TOP");
  EXPECT_EQ(right[1].expressType, "integer");
  EXPECT_FALSE(right[1].derived);
  for (const char* name : {"BOTTOM", "BELOW"}) {
    const std::vector<LateBoundAttribute>& attributes = Kinds().FindType(name)->GetAttributes();
    EXPECT_EQ(attributes[1].owner, "TOP") << name;
    EXPECT_TRUE(attributes[1].derived) << name;
    EXPECT_FALSE(attributes[0].derived) << name;
  }
  const LateBoundSchema& units = Construct("REDECLARED", "redeclared_attribute.exp");
  EXPECT_TRUE(units.FindType("UNIT")->GetAttributes()[1].optional);
  EXPECT_FALSE(units.FindType("COUNT_UNIT")->GetAttributes()[1].optional);
}

// -------------------------------------------------------------------------------------------------- visitors

class Recorder : public ExpAttributeVisitor {
 public:
  void VisitExpReal(ExpReal*) override { text += 'r'; }
  void VisitExpInteger(ExpInteger*) override { text += 'i'; }
  void VisitExpString(ExpString*) override { text += 's'; }
  void VisitExpLink(ExpLink*) override { text += 'l'; }
  void VisitExpAggregation(ExpAggregation*) override { text += 'a'; }
  void VisitExpEnumeration(ExpEnumeration*) override { text += 'e'; }
  void VisitExpSelect(ExpSelect*) override { text += 'c'; }
  std::string text;
};

TEST(LateBoundType, AttributeVisitorsGetEachValueByItsKind) {
  const auto thing = Create(Kinds(), "THING");
  Recorder recorder;
  for (int i = 0; i < thing->GetNofExplicitMembers(); ++i) {
    recorder.text += ' ';
    thing->GetMember(i)->Accept(&recorder);
  }
  EXPECT_EQ(recorder.text, " r r i s e e  e c l a");  // a binary value is visited by nobody
}

}  // namespace
