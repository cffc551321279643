// The C++ that velmar-express writes for some of the schemas in data/, used as an application uses it.

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>
#include <vector>

#include "CppNames.h"
#include "EnumerationType.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExtensibleTypes.h"
#include "GeneralisedTypes.h"
#include "HiddenTarget.h"
#include "InverseAttribute.h"
#include "MultipleInheritance.h"
#include "RedeclaredAttribute.h"
#include "References.h"
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

// ---- typed references -------------------------------------------------------------------------------

// Two nodes, #1 and #2, the second a special one, and an edge without values, #3.
class TypedReferences : public testing::Test {
 protected:
  ExpFile file{STEP_AP214, "REFERENCES"};
  ExpEntity* node = file.CreateAndAddEntity("NODE");
  ExpEntity* special = file.CreateAndAddEntity("SPECIAL_NODE");
  References::Edge* edge = dynamic_cast<References::Edge*>(file.CreateAndAddEntity("EDGE"));

  ExpAggregation* Links(std::initializer_list<int> numbers) {
    auto* list = new ExpAggregation;
    for (const int number : numbers) list->AddValue(new ExpLink(number));
    return list;
  }
};

template <class Entity, class = void>
constexpr bool hasTypedNoReference = false;
template <class Entity>
constexpr bool hasTypedNoReference<
    Entity, std::void_t<decltype(std::declval<Entity&>().NoReference(std::declval<ExpFile&>()))>> = true;
template <class Entity, class = void>
constexpr bool hasTypedEither = false;
template <class Entity>
constexpr bool
    hasTypedEither<Entity, std::void_t<decltype(std::declval<Entity&>().Either(std::declval<ExpFile&>()))>> = true;

TEST_F(TypedReferences, LinkLeadsToTheClassOfItsEntity) {
  static_assert(std::is_same_v<decltype(edge->First(file)), References::Node*>);
  edge->First().SetExpLink(1);
  EXPECT_EQ(edge->First(file), node);
  edge->First().SetExpLink(2);
  EXPECT_EQ(edge->First(file), special);
}

TEST_F(TypedReferences, LinkThatIsMissingOrLeadsElsewhereGivesNull) {
  EXPECT_EQ(edge->First(file), nullptr) << "never set";
  edge->First().SetExpLink(77);
  EXPECT_EQ(edge->First(file), nullptr) << "no such instance";
  edge->First().SetExpLink(3);
  EXPECT_EQ(edge->First(file), nullptr) << "an edge";
  edge->First().SetExpLink(1);
  edge->First().SetNotProvided(true);
  EXPECT_EQ(edge->First(file), nullptr) << "$";
  edge->First().SetNotProvided(false);
  edge->First().SetOmitted(true);
  EXPECT_EQ(edge->First(file), nullptr) << "*";
  edge->First().SetOmitted(false);
  EXPECT_EQ(edge->First(file), node);
}

TEST_F(TypedReferences, SelectThatIsMarkedAsMissingGivesNullWhateverItHolds) {
  edge->Either().SetExpLink(1);
  edge->Either().SetNotProvided(true);
  EXPECT_EQ(edge->Either(file), nullptr) << "$";
  edge->Either().SetNotProvided(false);
  edge->Either().SetOmitted(true);
  EXPECT_EQ(edge->Either(file), nullptr) << "*";
  edge->Either().SetOmitted(false);
  EXPECT_EQ(edge->Either(file), node);
}

TEST_F(TypedReferences, AggregateGivesItsEntitiesInOrderAndLeavesOutWhatIsNone) {
  static_assert(std::is_same_v<decltype(edge->Through(file)), std::vector<References::Node*>>);
  EXPECT_THAT(edge->Through(file), IsEmpty());
  for (const int number : {2, 77, 1, 3, 2}) edge->Through().AddValue(new ExpLink(number));
  edge->Through().AddValue(new ExpString("text"));
  edge->Through().AddValue(nullptr);
  EXPECT_THAT(edge->Through(file), ElementsAre(special, node, special));
  edge->Through().SetNotProvided(true);
  EXPECT_THAT(edge->Through(file), IsEmpty());
}

TEST_F(TypedReferences, NestedAggregateGivesAVectorForEachElement) {
  static_assert(std::is_same_v<decltype(edge->Grid(file)), std::vector<std::vector<References::Node*>>>);
  edge->Grid().AddValue(Links({1, 77, 2}));
  edge->Grid().AddValue(Links({}));
  edge->Grid().AddValue(new ExpLink(1));
  edge->Grid().AddValue(nullptr);
  EXPECT_THAT(edge->Grid(file), ElementsAre(ElementsAre(node, special), IsEmpty(), IsEmpty(), IsEmpty()));
}

TEST_F(TypedReferences, SelectGivesAnEntityOfAnyClassOrNullForAnotherValue) {
  static_assert(std::is_same_v<decltype(edge->Either(file)), ExpEntity*>);
  edge->Either().SetExpLink(3);
  EXPECT_EQ(edge->Either(file), edge);
  edge->Mixed().SetExpLink(1);
  EXPECT_EQ(edge->Mixed(file), node);
  EXPECT_EQ(Resolve<References::Node>(file, edge->Mixed()), node);
  EXPECT_EQ(Resolve<References::Edge>(file, edge->Mixed()), nullptr);
  edge->Mixed().SetExpString("label");
  EXPECT_EQ(edge->Mixed(file), nullptr);
  EXPECT_EQ(Resolve<ExpEntity>(file, edge->NoReference()), nullptr);
}

TEST_F(TypedReferences, SelectThatHoldsAnAggregateIsResolvedLikeOne) {
  edge->Mixed().AddExpSelectTypeName("NODES");
  for (const int number : {1, 2}) edge->Mixed().AddValue(new ExpLink(number));
  EXPECT_EQ(edge->Mixed(file), nullptr);
  EXPECT_THAT(ResolveAll<References::Node>(file, edge->Mixed()), ElementsAre(node, special));
  EXPECT_THAT(ResolveAll<References::SpecialNode>(file, edge->Mixed()), ElementsAre(special));
  EXPECT_THAT(ResolveAll<References::Node>(file, edge->First()), IsEmpty());
}

TEST_F(TypedReferences, AggregateOfSelectsGivesTheEntitiesAmongItsValues) {
  static_assert(std::is_same_v<decltype(edge->Several(file)), std::vector<ExpEntity*>>);
  for (const int number : {3, 1}) {
    auto* select = new ExpSelect;
    select->SetExpLink(number);
    edge->Several().AddValue(select);
  }
  auto* label = new ExpSelect;
  label->SetExpString("label");
  edge->Several().AddValue(label);
  EXPECT_THAT(edge->Several(file), ElementsAre(edge, node));
}

TEST_F(TypedReferences, ValuesThatAreNoReferencesHaveNone) {
  static_assert(!hasTypedNoReference<References::Edge>);
  static_assert(hasTypedEither<References::Edge>);
}

TEST_F(TypedReferences, ComplexInstanceGivesItsPartOfExactlyTheClassOrElseOneDerivedFromIt) {
  const auto complexWith = [&](std::initializer_list<const char*> names) {
    auto* complex = new ExpExternalMappingEntity;
    for (const char* name : names) complex->AddEntity(file.CreateEntity(name));
    return complex;
  };
  const std::unique_ptr<ExpExternalMappingEntity> both(complexWith({"SPECIAL_NODE", "NODE", "TAGGED"}));
  const std::unique_ptr<ExpExternalMappingEntity> derived(complexWith({"TAGGED", "SPECIAL_NODE"}));
  file.AddEntity(50, both.get());
  file.AddEntity(51, derived.get());
  edge->First().SetExpLink(50);
  EXPECT_EQ(edge->First(file), (*both->GetEntities())[1]);
  EXPECT_EQ(Resolve<References::SpecialNode>(file, edge->First()), (*both->GetEntities())[0]);
  EXPECT_EQ(Resolve<ExpEntity>(file, edge->First()), both.get());
  EXPECT_EQ(Resolve<References::Edge>(file, edge->First()), nullptr);
  edge->First().SetExpLink(51);
  EXPECT_EQ(edge->First(file), (*derived->GetEntities())[1]);
  EXPECT_EQ(EntityAs<References::Node>(nullptr), nullptr);
  file.AddEntity(50, nullptr);
  file.AddEntity(51, nullptr);
}

TEST_F(TypedReferences, AccessorsThatHideClassesAndRenamedAttributesHaveThem) {
  auto* holder = dynamic_cast<References::SpecialHolder*>(file.CreateAndAddEntity("SPECIAL_HOLDER"));
  static_assert(std::is_same_v<decltype(holder->Node(file)), References::Node*>);
  static_assert(std::is_same_v<decltype(holder->Special(file)), References::SpecialNode*>);
  holder->Node().SetExpLink(1);
  EXPECT_EQ(holder->Node(file), node);
  EXPECT_EQ(holder->Special(file), nullptr);
  holder->Node().SetExpLink(2);
  EXPECT_EQ(holder->Special(file), special);
  auto* visitor = dynamic_cast<References::Visitor_*>(file.CreateAndAddEntity("VISITOR"));
  visitor->Resolve_().SetExpLink(1);
  visitor->Visitor__().SetExpLink(visitor->GetEntityNumber());
  EXPECT_EQ(visitor->Resolve_(file), node);
  EXPECT_EQ(visitor->Visitor__(file), visitor);
  visitor->Accept_().SetExpLink(2);
  visitor->ExpStore_().SetExpLink(1);
  EXPECT_EQ(visitor->Accept_(file), special);
  EXPECT_EQ(visitor->ExpStore_(file), node);
}

TEST_F(TypedReferences, EntityThatIsNotVisibleInTheSchemaIsAnyEntity) {
  const auto holder = Create<HiddenTarget::Holder>("HOLDER", "HIDDEN_TARGET");
  static_assert(std::is_same_v<decltype(holder->Hidden(file)), ExpEntity*>);
  holder->Hidden().SetExpLink(1);
  EXPECT_EQ(holder->Hidden(file), node);
}

// ---- the visitor ------------------------------------------------------------------------------------

class NamesOfVisits : public References::Visitor {
 public:
  std::vector<std::string> seen;

 private:
  void VisitNode_(References::Node* node) override {  // for there is an entity visit_node
    seen.push_back("node " + node->GetExpClassName());
    Visitor::VisitNode_(node);
  }
  void VisitTagged(References::Tagged*) override { seen.push_back("tagged"); }
  void VisitExpEntity(ExpEntity* entity) override { seen.push_back("entity " + entity->GetExpClassName()); }
};

TEST(SchemaVisitor, OperationNotOverriddenCallsThatOfTheFirstSupertype) {
  NamesOfVisits visitor;
  for (const char* name : {"NODE", "SPECIAL_NODE", "TAGGED_NODE", "TAGGED", "EDGE"})
    Create<ExpEntity>(name, "REFERENCES")->Accept(&visitor);
  EXPECT_THAT(visitor.seen,
              ElementsAre("node NODE", "entity NODE", "node SPECIAL_NODE", "entity SPECIAL_NODE",
                          "node TAGGED_NODE", "entity TAGGED_NODE", "tagged", "entity EDGE"));
}

TEST(SchemaVisitor, EntityMadeWithoutItsTypeIsVisitedToo) {
  NamesOfVisits visitor;
  References::Tagged tagged;
  tagged.Accept(&visitor);
  EXPECT_THAT(visitor.seen, ElementsAre("tagged"));
}

TEST(SchemaVisitor, ClassOfAnApplicationIsVisitedAsTheClassItIsDerivedFrom) {
  class Tagged : public References::Tagged {};
  class Node : public References::TaggedNode {};
  class Base : public References::EntityBase {};
  NamesOfVisits visitor;
  for (int i = 0; i < 2; ++i) {  // looked for, and remembered
    Tagged().Accept(&visitor);
    Base().Accept(&visitor);
  }
  EXPECT_THAT(visitor.seen, ElementsAre("tagged", "tagged"));
  struct Last : References::Visitor {
    References::TaggedNode* seen = nullptr;
    void VisitTaggedNode(References::TaggedNode* node) override { seen = node; }
  } last;
  Node node;
  node.Accept(&last);
  EXPECT_EQ(last.seen, &node);
}

TEST(SchemaVisitor, ClassOfAnApplicationOverTwoThatAreUnrelatedIsVisitedAsTheDeeperOrElseTheEarlier) {
  class DeeperSecond : public References::Tagged, public References::SpecialNode {
    using References::Tagged::GetMember;
    ExpAttribute* GetMember(int) override { return nullptr; }
  };
  class EarlierSecond : public References::Tagged, public References::Node {
    using References::Tagged::GetMember;
    ExpAttribute* GetMember(int) override { return nullptr; }
  };
  struct Visitor : References::Visitor {
    std::vector<std::string> seen;
    void VisitNode_(References::Node*) override { seen.push_back("node"); }
    void VisitSpecialNode(References::SpecialNode*) override { seen.push_back("special node"); }
    void VisitTagged(References::Tagged*) override { seen.push_back("tagged"); }
  } visitor;
  DeeperSecond().Accept(&visitor);
  EarlierSecond().Accept(&visitor);
  EXPECT_THAT(visitor.seen, ElementsAre("special node", "node"));
}

TEST(SchemaVisitor, VisitorOfAnotherKindGetsNothing) {
  class Other : public MultipleInheritance::Visitor {
   public:
    int visits = 0;
    void VisitExpEntity(ExpEntity*) override { ++visits; }
  } other;
  ExpEntityVisitor plain;
  const auto node = Create<References::Node>("NODE", "REFERENCES");
  node->Accept(&other);
  node->Accept(&plain);
  node->Accept(nullptr);
  EXPECT_EQ(other.visits, 0);
  Create<ExpEntity>("ROOT", "MULTIPLE_INHERITANCE")->Accept(&other);
  EXPECT_EQ(other.visits, 1);
}

TEST(SchemaVisitor, VisitorOfTwoSchemasGetsTheEntitiesOfBoth) {
  struct Both : References::Visitor, MultipleInheritance::Visitor {
    std::vector<std::string> seen;
    void VisitNode_(References::Node* node) override { seen.push_back(node->GetExpClassName()); }
    void VisitRoot(MultipleInheritance::Root* root) override { seen.push_back(root->GetExpClassName()); }
  } both;
  ExpEntityVisitor* visitor = static_cast<References::Visitor*>(&both);
  Create<ExpEntity>("NODE", "REFERENCES")->Accept(visitor);
  Create<ExpEntity>("BOTTOM", "MULTIPLE_INHERITANCE")->Accept(visitor);
  EXPECT_THAT(both.seen, ElementsAre("NODE", "BOTTOM"));
}

TEST(SchemaVisitor, ComplexInstanceArrivesWholeAndItsPartsByTheirClasses) {
  struct Visitor : References::Visitor {
    std::vector<std::string> seen;
    void VisitExpExternalMappingEntity(ExpExternalMappingEntity* complex) override {
      seen.push_back("complex");
      for (ExpEntity* part : *complex->GetEntities()) part->Accept(this);
    }
    void VisitSpecialNode(References::SpecialNode*) override { seen.push_back("special node"); }
    void VisitTagged(References::Tagged*) override { seen.push_back("tagged"); }
  } visitor;
  const auto node = Create<ExpEntity>("SPECIAL_NODE", "REFERENCES");
  const auto tagged = Create<ExpEntity>("TAGGED", "REFERENCES");
  ExpExternalMappingEntity complex;
  for (ExpEntity* part : {node.get(), tagged.get()}) complex.AddEntity(part);
  complex.Accept(&visitor);
  EXPECT_THAT(visitor.seen, ElementsAre("complex", "special node", "tagged"));
}

TEST(SchemaVisitor, OperationsGetEntitiesOfVirtualBases) {
  struct Visitor : MultipleInheritance::Visitor {
    std::vector<ExpAttribute*> seen;
    void VisitRoot(MultipleInheritance::Root* root) override { seen = {&root->R1(), &root->R2()}; }
  } visitor;
  const auto bottom = Create<MultipleInheritance::Bottom>("BOTTOM", "MULTIPLE_INHERITANCE");
  bottom->Accept(&visitor);
  EXPECT_THAT(visitor.seen, ElementsAre(bottom->GetMember(0), bottom->GetMember(1)));
}

TEST(SchemaVisitor, ResolvesReferencesInItsStore) {
  ExpFile file(STEP_AP214, "REFERENCES");
  ExpEntity* node = file.CreateAndAddEntity("NODE");
  ExpEntity* edge = file.CreateAndAddEntity("EDGE");
  edge->GetMember(0)->SetExpLink(1);
  struct Visitor : References::Visitor {
    using References::Visitor::Visitor;
    References::Node* first = nullptr;
    void VisitEdge(References::Edge* visited) override { first = visited->First(*GetAdmin()); }
  } visitor(&file);
  edge->Accept(&visitor);
  EXPECT_EQ(visitor.first, node);
}

TEST(SchemaVisitor, NamesThatCollideGetAnUnderscore) {
  struct Visitor : References::Visitor {
    std::vector<std::string> seen;
    void VisitNode_(References::Node*) override { seen.push_back("node"); }
    void VisitVisitNode(References::VisitNode*) override { seen.push_back("visit node"); }
    void VisitVisitor_(References::Visitor_*) override { seen.push_back("visitor"); }
    void VisitLog_(References::Log_* log) override {
      seen.push_back("log");
      References::Visitor::VisitLog_(log);
    }
    void VisitVisitExpEntity_(References::VisitExpEntity_*) override { seen.push_back("visit exp entity"); }
    void VisitExpSchemaVisit_(References::ExpSchemaVisit_*) override { seen.push_back("exp schema visit"); }
  } visitor;
  for (const char* name : {"NODE", "VISIT_NODE", "VISITOR", "LOG_", "EXP_SCHEMA_VISIT"})
    Create<ExpEntity>(name, "REFERENCES")->Accept(&visitor);
  EXPECT_THAT(visitor.seen,
              ElementsAre("node", "visit node", "visitor", "log", "visit exp entity", "exp schema visit"));
}

}  // namespace
}  // namespace VELMAR
