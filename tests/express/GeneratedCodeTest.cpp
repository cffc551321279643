// The C++ that velmar-express writes for some of the schemas in data/, used as an application uses it.

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

#include "CppNames.h"
#include "EnumerationType.h"
#include "ExpRuntimeRegistry.h"
#include "ExtensibleTypes.h"
#include "GeneralisedTypes.h"
#include "InverseAttribute.h"
#include "MultipleInheritance.h"
#include "RedeclaredAttribute.h"
#include "RenamedAttribute.h"
#include "Shapes.h"
#include "SimpleTypes.h"

namespace VELMAR {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

template <class T>
std::unique_ptr<T> Create(const char* name, const char* schema) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, schema);
  EXPECT_NE(type, nullptr) << name;
  std::unique_ptr<ExpEntity> entity(type ? type->CreateInstance(-1) : nullptr);
  T* result = dynamic_cast<T*>(entity.get());
  EXPECT_NE(result, nullptr) << name;
  if (result) entity.release();
  return std::unique_ptr<T>(result);
}

TEST(GeneratedCode, MembersAreOfTheClassThatFitsTheType) {
  const auto thing = Create<SimpleTypes::Thing>("THING", "SIMPLE_TYPES");
  static_assert(std::is_same_v<decltype(thing->AReal()), ExpSchemaReal&>);
  static_assert(std::is_same_v<decltype(thing->ANumber()), ExpSchemaReal&>);
  static_assert(std::is_same_v<decltype(thing->AnInteger()), ExpInteger&>);
  static_assert(std::is_same_v<decltype(thing->AString()), ExpString&>);
  static_assert(std::is_same_v<decltype(thing->ACode()), ExpString&>);
  static_assert(std::is_same_v<decltype(thing->ABoolean()), ExpBoolean&>);
  static_assert(std::is_same_v<decltype(thing->ALogical()), ExpLogical&>);
  static_assert(std::is_same_v<decltype(thing->AByte()), ExpSchemaBinary&>);
  static_assert(std::is_same_v<decltype(thing->ALength()), ExpSchemaReal&>);
  EXPECT_EQ(thing->GetNofExplicitMembers(), 12);
  EXPECT_EQ(thing->GetMember(0), &thing->AReal());
  EXPECT_EQ(thing->GetMember("maybe"), &thing->Maybe());
  EXPECT_EQ(thing->GetMember(11), &thing->Maybe());
  EXPECT_EQ(thing->GetMember(12), nullptr);
  EXPECT_EQ(thing->GetMember(-1), nullptr);
}

TEST(GeneratedCode, EmptyEntitiesAreMadeWithoutAnyCleaningUp) {
  static_assert(std::is_nothrow_default_constructible_v<SimpleTypes::Thing>);
  static_assert(std::is_nothrow_default_constructible_v<EnumerationType::Crossing>);
  static_assert(std::is_nothrow_default_constructible_v<MultipleInheritance::Bottom>);
}

TEST(GeneratedCode, ClassesCanServeAFurtherSchema) {
  MultipleInheritance::RegisterAs("FURTHER");
  const auto bottom = Create<MultipleInheritance::Bottom>("BOTTOM", "FURTHER");
  EXPECT_THAT(*bottom->GetExpSuperClasses(),
              ElementsAre("VELMAR::ExpEntity", "FURTHER::ROOT", "FURTHER::RIGHT", "FURTHER::LEFT", "FURTHER::OTHER_ROOT"));
  EXPECT_THAT(*bottom->GetExpSubClasses(), ElementsAre("FURTHER::BELOW"));
  const auto own = Create<MultipleInheritance::Bottom>("BOTTOM", "MULTIPLE_INHERITANCE");
  EXPECT_THAT(*own->GetExpSubClasses(), ElementsAre("MULTIPLE_INHERITANCE::BELOW"));
}

TEST(GeneratedCode, SeveralSupertypesAreLaidOutOnceEachInOrder) {
  using namespace MultipleInheritance;
  const auto bottom = Create<Bottom>("BOTTOM", "MULTIPLE_INHERITANCE");
  const std::vector<ExpAttribute*> expected{&bottom->R1(), &bottom->R2(), &bottom->R(),
                                            &bottom->L(),  &bottom->O(),  &bottom->B()};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(bottom->GetMember(static_cast<int>(i)), expected[i]) << i;
  EXPECT_EQ(bottom->GetMember(6), nullptr);
  EXPECT_EQ(bottom->GetMember(-1), nullptr);
  EXPECT_EQ(bottom->GetExternalMappingStartIndex(), 5);
  EXPECT_THAT(*bottom->GetMemberNames(), ElementsAre("r1", "r2", "r", "l", "o", "b"));
  EXPECT_THAT(*bottom->GetExpSuperClasses(),
              ElementsAre("VELMAR::ExpEntity", "MULTIPLE_INHERITANCE::ROOT", "MULTIPLE_INHERITANCE::RIGHT",
                          "MULTIPLE_INHERITANCE::LEFT", "MULTIPLE_INHERITANCE::OTHER_ROOT"));
  EXPECT_THAT(*bottom->GetExpSubClasses(), ElementsAre("MULTIPLE_INHERITANCE::BELOW"));
}

TEST(GeneratedCode, EntityWithoutOwnAttributesInheritsEverything) {
  using namespace MultipleInheritance;
  const auto below = Create<Below>("BELOW", "MULTIPLE_INHERITANCE");
  EXPECT_EQ(below->GetMember(5), &below->B());
  EXPECT_EQ(below->GetNofExplicitMembers(), 6);
  EXPECT_EQ(below->GetExternalMappingStartIndex(), 6);
  const auto twice = Create<Twice>("TWICE", "MULTIPLE_INHERITANCE");
  EXPECT_THAT(*twice->GetMemberNames(), ElementsAre("r1", "r2", "l", "t"));
  EXPECT_EQ(twice->GetMember(2), &twice->L());
}

TEST(GeneratedCode, EveryTypeAnswersForExactlyItsMembers) {
  for (const char* name : {"ROOT", "LEFT", "RIGHT", "OTHER_ROOT", "BOTTOM", "BELOW", "TWICE", "APART"}) {
    const auto entity = Create<ExpEntity>(name, "MULTIPLE_INHERITANCE");
    const int count = entity->GetNofExplicitMembers();
    ASSERT_EQ(entity->GetMemberNames()->size(), static_cast<std::size_t>(count)) << name;
    for (int i = 0; i < count; ++i) EXPECT_NE(entity->GetMember(i), nullptr) << name << ' ' << i;
    EXPECT_EQ(entity->GetMember(count), nullptr) << name;
  }
}

TEST(GeneratedCode, DerivedRedeclarationIsWrittenOmitted) {
  using namespace RedeclaredAttribute;
  const auto fixed = Create<FixedUnit>("FIXED_UNIT", "REDECLARED_ATTRIBUTE");
  EXPECT_THAT(*fixed->GetMemberNames(), ElementsAre("dimensions", "note", "own", "label"));
  EXPECT_TRUE(fixed->Dimensions().IsOmitted());
  EXPECT_EQ(fixed->ToString(), "FIXED_UNIT(*, '', 0, '');");
  const auto count = Create<CountUnit>("COUNT_UNIT", "REDECLARED_ATTRIBUTE");
  EXPECT_FALSE(count->Dimensions().IsOmitted());
}

TEST(GeneratedCode, ExplicitRedeclarationKeepsPlaceAndStorage) {
  using namespace RedeclaredAttribute;
  const auto count = Create<CountUnit>("COUNT_UNIT", "REDECLARED_ATTRIBUTE");
  static_assert(std::is_same_v<decltype(count->Dimensions()), ExpSchemaReal&>);
  EXPECT_EQ(count->GetMember(0), &count->Dimensions());
  EXPECT_EQ(count->GetMember(2), &count->Own());
  EXPECT_EQ(count->GetExternalMappingStartIndex(), 2);
}

TEST(GeneratedCode, RenamedAttributeHasAFurtherAccessor) {
  using namespace RenamedAttribute;
  const auto narrow = Create<NarrowRelation>("NARROW_RELATION", "RENAMED_ATTRIBUTE");
  EXPECT_EQ(&narrow->Narrow(), &narrow->Relating());
  EXPECT_EQ(&narrow->Assembly(), &narrow->Relating());
  EXPECT_THAT(*narrow->GetMemberNames(), ElementsAre("relating", "related", "quantity"));
}

TEST(GeneratedCode, EnumerationKnowsItsItems) {
  using EnumerationType::TrafficLight;
  const auto crossing = Create<EnumerationType::Crossing>("CROSSING", "ENUMERATION_TYPE");
  TrafficLight& light = crossing->Shows();
  EXPECT_EQ(light.Get(), TrafficLight::Enumeration::Unset);
  crossing->GetMember(0)->SetExpEnumeration("GREEN");
  EXPECT_EQ(light.Get(), TrafficLight::Enumeration::Green);
  EXPECT_EQ(light.GetExpEnumeration(), 2);
  light.SetExpEnumeration("amber");
  EXPECT_EQ(light.Get(), TrafficLight::Enumeration::Amber);
  EXPECT_EQ(light.ToString(), ".AMBER.");
  light.Set(TrafficLight::Enumeration::Red);
  EXPECT_EQ(light.ToString(), ".RED.");
  EXPECT_THAT(*TrafficLight::Table(),
              ElementsAre(testing::Pair("AMBER", 1), testing::Pair("GREEN", 2), testing::Pair("RED", 0)));
}

TEST(GeneratedCode, UnknownEnumerationItemThrows) {
  EnumerationType::TrafficLight light;
  try {
    light.SetExpEnumeration("BLUE");
    FAIL() << "nothing thrown";
  } catch (const std::string& text) {
    EXPECT_EQ(text, "ExpEnumeration Enumerationvalue not found: BLUE");
  }
  EXPECT_THROW(light.Set(EnumerationType::TrafficLight::Enumeration::Unset), std::string);
}

TEST(GeneratedCode, EnumerationItemsThatBecomeEqualAreToldApart) {
  using EnumerationType::UnsetOrNot;
  EXPECT_EQ(static_cast<int>(UnsetOrNot::Enumeration::Unset_), 0);
  EXPECT_EQ(static_cast<int>(UnsetOrNot::Enumeration::A1), 1);
  EXPECT_EQ(static_cast<int>(UnsetOrNot::Enumeration::A1_), 2);
  EXPECT_EQ(UnsetOrNot::Table()->at("A_1"), 1);
}

TEST(GeneratedCode, EnumerationBasedOnAnotherHasItsItemsFirst) {
  using ExtensibleTypes::MoreColours;
  EXPECT_EQ(static_cast<int>(MoreColours::Enumeration::Red), 0);
  EXPECT_EQ(static_cast<int>(MoreColours::Enumeration::Blue), 2);
  EXPECT_THAT(*ExtensibleTypes::OpenList::Table(), IsEmpty());
}

TEST(GeneratedCode, NamesThatCollideGetAnUnderscore) {
  const auto entity = Create<CppNames::Class>("CLASS", "CPP_NAMES");
  entity->Int().SetExpInteger(1);
  entity->This().SetExpString("x");
  entity->Class_().Set(CppNames::Namespace::Enumeration::Delete);
  entity->ToString_().SetExpString("y");
  entity->Tostring().SetExpString("z");
  entity->GetMember_().SetExpInteger(2);
  entity->Namespace().Set(CppNames::Namespace::Enumeration::True);
  EXPECT_EQ(entity->ToString(), "CLASS(1, 'x', #-1, .DELETE., 'y', 'z', 2, '', .TRUE_.);");
  const auto load = Create<CppNames::Load_>("LOAD", "CPP_NAMES");
  EXPECT_EQ(load->GetMember(0), &load->A1());
  EXPECT_EQ(load->GetMember(1), &load->A1_());
  EXPECT_NE(Create<CppNames::LoAd>("LO_AD", "CPP_NAMES"), nullptr);
  EXPECT_NE(Create<CppNames::ExpEntity_>("EXP_ENTITY", "CPP_NAMES"), nullptr);
  EXPECT_NE(Create<CppNames::CppNames_>("CPP_NAMES", "CPP_NAMES"), nullptr);
}

TEST(GeneratedCode, GeneralisedTypesAreSelectsLinksAndAggregates) {
  const auto closed = Create<GeneralisedTypes::Closed>("CLOSED", "GENERALISED_TYPES");
  static_assert(std::is_same_v<decltype(closed->Anything()), ExpSelect&>);
  static_assert(std::is_same_v<decltype(closed->AnyEntity()), ExpLink&>);
  static_assert(std::is_same_v<decltype(closed->Some()), ExpAggregation&>);
  EXPECT_EQ(closed->GetNofExplicitMembers(), 4);
}

TEST(GeneratedCode, InverseAttributesAreCountedWithThoseInherited) {
  EXPECT_EQ(Create<ExpEntity>("OWNER", "INVERSE_ATTRIBUTE")->GetNofInverseMembers(), 4);
  EXPECT_EQ(Create<ExpEntity>("SPECIAL_OWNER", "INVERSE_ATTRIBUTE")->GetNofInverseMembers(), 4);
  EXPECT_EQ(Create<ExpEntity>("THING", "INVERSE_ATTRIBUTE")->GetNofInverseMembers(), 0);
}

TEST(GeneratedCode, InterfacedEntitiesHaveTheirNewNames) {
  const auto shape = Create<Shapes::Shape>("SHAPE", "SHAPES");
  EXPECT_NE(dynamic_cast<Shapes::NamedThing*>(shape.get()), nullptr);
  shape->Name().SetExpString("s");
  shape->Paint().Set(Shapes::Colour::Enumeration::Green);
  EXPECT_EQ(shape->ToString(), "SHAPE('s', 0., #-1, .GREEN.);");
  EXPECT_THAT(*shape->GetExpSuperClasses(), ElementsAre("VELMAR::ExpEntity", "SHAPES::NAMED_THING"));
}

TEST(GeneratedCode, LoadMayBeCalledAgain) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  ExpEntityRuntimeType* before = registry->GetEntityRuntimeType("SHAPE", "SHAPES");
  Shapes::Load();
  Shapes::Load();
  EXPECT_EQ(registry->GetEntityRuntimeType("SHAPE", "SHAPES"), before);
}

TEST(GeneratedCode, UnknownMemberNamesAndOtherCasesGiveNull) {
  const auto shape = Create<Shapes::Shape>("SHAPE", "SHAPES");
  EXPECT_EQ(shape->GetMember("size"), &shape->Size());
  EXPECT_EQ(shape->GetMember("SIZE"), nullptr);
  EXPECT_EQ(shape->GetMember("nothing"), nullptr);
}

}  // namespace
}  // namespace VELMAR
