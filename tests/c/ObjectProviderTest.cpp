// Object providers: creating numbered entities, listing the instances of a type, telling complex instances
// apart.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "CapturedLog.h"
#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::CapturedLog;
using TestData::kTestSchema;
using TestData::MakeIn;
using TestData::TestProvider;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_abstract_v<ExpAbstractObjectProvider>);
static_assert(std::is_base_of_v<ExpAbstractObjectAdmin, ExpAbstractObjectProvider>);

/// The numbers of a list, 0 for null.
template <class List>
std::vector<int> Numbers(const List& entities) {
  std::vector<int> numbers;
  for (ExpEntity* entity : entities) numbers.push_back(entity == nullptr ? 0 : entity->GetEntityNumber());
  return numbers;
}

std::vector<int> NumbersOf(TestProvider& provider, const std::string& typeName, bool withSubtypes) {
  std::list<ExpEntity*> entities;
  provider.GetEntities(entities, typeName, withSubtypes);
  return Numbers(entities);
}

// ----------------------------------------------------------------------------------------- the adapted store

TEST(ExpAbstractObjectProvider, HasNoAdaptedStoreAtFirst) {
  class Bare : public TestProvider {
   public:
    Bare() { first = GetAdaptedAdmin(); }
    ExpAbstractObjectAdmin* first;
  };
  // TestProvider sets one; a provider that sets none has none.
  class None : public ExpAbstractObjectProvider {
   public:
    using ExpAbstractObjectAdmin::GetEntity;
    ExpEntity* GetEntity(int) override { return nullptr; }
    void AddEntity(int, ExpEntity*) override {}
    int CreateEntityNumber() override { return 0; }
    unsigned int GetAdminId() override { return 0; }
    std::size_t GetEntityVectorSize() override { return 0; }
    void Write(std::ostream&) override {}
    void DeleteEntities() override {}
    void ClearEntityVector() override {}
    void ResetEntityVector() override {}
    int GetMaxEntityNumber() override { return 0; }
    std::string GetSchemaName() override { return ""; }
    void SetSchemaName(std::string) override {}
    Schema GetSchema() const override { return STEP_AP214; }
    void SetSchema(Schema) override {}
    ExpEntity* CreateEntity(const std::string&) override { return nullptr; }
    void Write(const std::string&) override {}
    std::string GetEnforcedFactoryName() override { return ""; }
  };
  None none;
  EXPECT_EQ(none.GetAdaptedAdmin(), nullptr);
  Bare bare;
  EXPECT_EQ(bare.first, &bare.store);
}

TEST(ExpAbstractObjectProvider, KeepsTheAdaptedStoreAndDoesNotOwnIt) {
  class Counted : public ExpFlyweightAdministration {
   public:
    explicit Counted(int* deletions) : deletions_(deletions) {}
    ~Counted() override { ++*deletions_; }

   private:
    int* deletions_;
  };
  int deletions = 0;
  {
    Counted store(&deletions);
    {
      TestProvider provider;
      provider.SetAdaptedAdmin(&store);
      EXPECT_EQ(provider.GetAdaptedAdmin(), &store);
      provider.SetAdaptedAdmin(nullptr);
      EXPECT_EQ(provider.GetAdaptedAdmin(), nullptr);
      provider.SetAdaptedAdmin(&store);
    }
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

// ---------------------------------------------------------------------------------------- CreateAndAddEntity

TEST(CreateAndAddEntity, NumbersAndStoresANewEntity) {
  TestProvider provider;
  MakeIn<TestData::A>(provider, 10);
  ExpLink link;
  ExpEntity* entity = provider.CreateAndAddEntity("POINT", link);
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(entity->GetExpClassName(), "POINT");
  EXPECT_EQ(entity->GetEntityNumber(), 11);
  EXPECT_EQ(link.GetExpLink(), 11);
  EXPECT_EQ(provider.GetEntity(11), entity);
  EXPECT_EQ(provider.GetEntity(link), entity);
  EXPECT_EQ(provider.GetMaxEntityNumber(), 11);
}

TEST(CreateAndAddEntity, WithoutLinkDoesTheSame) {
  TestProvider provider;
  ExpEntity* entity = provider.CreateAndAddEntity("POINT");
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(entity->GetEntityNumber(), 1);
  EXPECT_EQ(provider.GetEntity(1), entity);
  EXPECT_EQ(provider.CreateAndAddEntity("A")->GetEntityNumber(), 2);
}

TEST(CreateAndAddEntity, OfAnUnknownTypeIsNullAndUsesNoNumber) {
  TestProvider provider;
  ExpLink link(77);
  link.SetNotProvided(true);
  EXPECT_EQ(provider.CreateAndAddEntity("NO_SUCH_TYPE", link), nullptr);
  EXPECT_EQ(link.GetExpLink(), 77);
  EXPECT_TRUE(link.IsNotProvided());
  EXPECT_EQ(provider.CreateAndAddEntity("NO_SUCH_TYPE"), nullptr);
  EXPECT_EQ(provider.GetMaxEntityNumber(), 0);
  EXPECT_EQ(provider.CreateAndAddEntity("POINT")->GetEntityNumber(), 1);
}

TEST(CreateAndAddEntity, PassesTheTypeNameAsItIs) {
  TestProvider provider;
  provider.CreateAndAddEntity("point");
  provider.CreateAndAddEntity("POINT");
  EXPECT_THAT(provider.askedTypes, ElementsAre("point", "POINT"));
}

TEST(CreateAndAddEntity, UsesTheVirtualOperationsInOrder) {
  class Noting : public TestProvider {
   public:
    ExpEntity* CreateEntity(const std::string& typeName) override {
      calls.push_back("create " + typeName);
      return TestProvider::CreateEntity(typeName);
    }
    int CreateEntityNumber() override {
      calls.push_back("number");
      return 500;
    }
    void AddEntity(int number, ExpEntity* entity) override {
      calls.push_back("add #" + std::to_string(number) + " as #" + std::to_string(entity->GetEntityNumber()));
    }
    std::vector<std::string> calls;
  };
  Noting provider;
  ExpLink link;
  ExpEntity* entity = provider.CreateAndAddEntity("POINT", link);
  EXPECT_THAT(provider.calls, ElementsAre("create POINT", "number", "add #500 as #500"));
  EXPECT_EQ(entity->GetEntityNumber(), 500);
  EXPECT_EQ(link.GetExpLink(), 500);
  provider.store.AddEntity(1, entity);  // so that the store deletes its entities
}

TEST(CreateAndAddEntity, WithoutLinkCallsTheOneWithALinkVirtually) {
  class Own : public TestProvider {
   public:
    using TestProvider::CreateAndAddEntity;
    ExpEntity* CreateAndAddEntity(const std::string& typeName, ExpLink& link) override {
      names.push_back(typeName);
      links.push_back(link.GetExpLink());
      return &entity;
    }
    std::vector<std::string> names;
    std::vector<int> links;
    ExpEntity entity;
  };
  Own provider;
  EXPECT_EQ(provider.CreateAndAddEntity("ANY"), &provider.entity);
  EXPECT_THAT(provider.names, ElementsAre("ANY"));
  EXPECT_THAT(provider.links, ElementsAre(-1));
}

// ----------------------------------------------------------------------------------------------- GetEntities

TEST(GetEntities, GivesTheInstancesInTheOrderOfTheirNumbers) {
  TestProvider provider;
  for (int number : {7, 3, 5}) MakeIn<TestData::Point>(provider, number);
  MakeIn<TestData::A>(provider, 4);
  EXPECT_THAT(NumbersOf(provider, "POINT", false), ElementsAre(3, 5, 7));
  EXPECT_THAT(NumbersOf(provider, "POINT", true), ElementsAre(3, 5, 7));
}

TEST(GetEntities, GivesManyInstancesInTheOrderOfTheirNumbers) {
  TestProvider provider;
  std::vector<int> expected;
  for (int i = 0; i < 3000; i++) {
    MakeIn<TestData::Point>(provider, 1 + (i * 1009) % 3001);  // 1009 and 3001 have no common divisor
    expected.push_back(1 + (i * 1009) % 3001);
  }
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(NumbersOf(provider, "POINT", true), expected);
}

TEST(GetEntities, TakesTheTypeNameInAnyCase) {
  TestProvider provider;
  MakeIn<TestData::Point>(provider, 2);
  EXPECT_THAT(NumbersOf(provider, "point", false), ElementsAre(2));
  EXPECT_THAT(NumbersOf(provider, "POINT", false), ElementsAre(2));
  EXPECT_THAT(NumbersOf(provider, "Point", true), ElementsAre(2));
}

TEST(GetEntities, OfAnUnknownTypeGivesNothingSilently) {
  CapturedLog log;
  TestProvider provider;
  MakeIn<TestData::Point>(provider, 2);
  EXPECT_THAT(NumbersOf(provider, "NO_SUCH_TYPE", true), IsEmpty());
  EXPECT_THAT(NumbersOf(provider, "", true), IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(GetEntities, OfATypeWithoutInstancesGivesNothing) {
  TestProvider provider;
  MakeIn<TestData::Point>(provider, 2);
  EXPECT_THAT(NumbersOf(provider, "NODE", true), IsEmpty());
}

TEST(GetEntities, TakesSubtypesInOnRequest) {
  TestProvider provider;
  MakeIn<TestData::C>(provider, 1);
  MakeIn<TestData::A>(provider, 2);
  MakeIn<TestData::B>(provider, 3);
  EXPECT_THAT(NumbersOf(provider, "A", false), ElementsAre(2));
  EXPECT_THAT(NumbersOf(provider, "A", true), ElementsAre(1, 2, 3));
  EXPECT_THAT(NumbersOf(provider, "B", true), ElementsAre(1, 3));
  EXPECT_THAT(NumbersOf(provider, "C", true), ElementsAre(1));
}

TEST(GetEntities, TakesSubtypesInWhereTheTypeItselfHasNoInstances) {
  TestProvider provider;
  MakeIn<TestData::C>(provider, 1);
  EXPECT_THAT(NumbersOf(provider, "A", true), ElementsAre(1));
}

TEST(GetEntities, ListsAnInstanceReachedAlongTwoPathsOnce) {
  TestProvider provider;
  for (int number : {9, 8, 4}) MakeIn<TestData::Bottom>(provider, number);
  for (int number : {7, 2}) MakeIn<TestData::Left>(provider, number);
  MakeIn<TestData::Right>(provider, 6);
  MakeIn<TestData::Top>(provider, 5);
  MakeIn<TestData::Bottom>(provider, 3);
  EXPECT_THAT(NumbersOf(provider, "TOP", true), ElementsAre(2, 3, 4, 5, 6, 7, 8, 9));
  EXPECT_THAT(NumbersOf(provider, "LEFT", true), ElementsAre(2, 3, 4, 7, 8, 9));
}

TEST(GetEntities, GivesTheInstancesOfItsOwnStoreAlone) {
  TestProvider one, other;
  MakeIn<TestData::Point>(one, 1);
  MakeIn<TestData::Point>(other, 2);
  EXPECT_THAT(NumbersOf(one, "POINT", true), ElementsAre(1));
  EXPECT_THAT(NumbersOf(other, "POINT", true), ElementsAre(2));
}

TEST(GetEntities, GivesInstancesThatWereNeverStored) {
  TestProvider provider;
  provider.CreateEntity("POINT");
  MakeIn<TestData::Point>(provider, 1);
  EXPECT_THAT(NumbersOf(provider, "POINT", false), ElementsAre(-1, 1));
}

TEST(GetEntities, AppendsToTheList) {
  TestProvider provider;
  auto* point = MakeIn<TestData::Point>(provider, 5);
  MakeIn<TestData::A>(provider, 3);
  std::list<ExpEntity*> entities;
  provider.GetEntities(entities, "POINT", false);
  provider.GetEntities(entities, "A", false);
  EXPECT_THAT(Numbers(entities), ElementsAre(3, 5));
  provider.GetEntities(entities, "NO_SUCH_TYPE", false);
  EXPECT_THAT(Numbers(entities), ElementsAre(3, 5));
  EXPECT_EQ(entities.back(), point);
}

TEST(GetEntities, RemovesAdjacentRepeatsAndSortsNullsLast) {
  TestProvider provider;
  auto* point = MakeIn<TestData::Point>(provider, 5);
  std::list<ExpEntity*> entities = {nullptr, nullptr, point, point};
  provider.GetEntities(entities, "NODE", false);
  EXPECT_THAT(entities, ElementsAre(point, nullptr));
}

TEST(GetEntities, LooksTheTypeUpInTheSchemaOfTheProvider) {
  TestProvider provider("AUTOMOTIVE_DESIGN");
  MakeIn<TestData::Point>(provider, 1, "AUTOMOTIVE_DESIGN");
  MakeIn<TestData::Point>(provider, 2, kTestSchema);
  EXPECT_THAT(NumbersOf(provider, "POINT", true), ElementsAre(1));
}

TEST(GetEntities, LooksTheTypeUpInTheEnforcedSchemaWhereThereIsOne) {
  TestProvider provider("AUTOMOTIVE_DESIGN");
  MakeIn<TestData::Point>(provider, 1, "AUTOMOTIVE_DESIGN");
  MakeIn<TestData::Point>(provider, 2, kTestSchema);
  provider.enforcedFactoryName = kTestSchema;
  EXPECT_THAT(NumbersOf(provider, "POINT", true), ElementsAre(2));
}

TEST(GetEntities, AsksForItsAdminIdVirtually) {
  class Other : public TestProvider {
   public:
    unsigned int GetAdminId() override { return id; }
    unsigned int id = 0;
  };
  TestProvider owner;
  MakeIn<TestData::Point>(owner, 4);
  Other provider;
  provider.id = owner.GetAdminId();
  EXPECT_THAT(NumbersOf(provider, "POINT", true), ElementsAre(4));
}

TEST(GetEntities, CollectsByTheVirtualOperation) {
  class Own : public TestProvider {
   public:
    void GetEntitiesProtected(std::list<ExpEntity*>& out, const std::string& typeName,
                              bool withSubtypes) override {
      names.push_back(typeName + (withSubtypes ? " with subtypes" : ""));
      TestProvider::GetEntitiesProtected(out, typeName, withSubtypes);
    }
    std::vector<std::string> names;
  };
  Own provider;
  MakeIn<TestData::C>(provider, 2);
  std::list<ExpEntity*> entities;
  provider.GetEntities(entities, "a", true);
  EXPECT_THAT(provider.names, ElementsAre("a with subtypes", "B with subtypes", "C with subtypes"));
  EXPECT_THAT(Numbers(entities), ElementsAre(2));
  provider.names.clear();
  provider.GetEntities(entities, "A", false);
  EXPECT_THAT(provider.names, ElementsAre("A"));
}

TEST(GetEntitiesProtected, MergesInTheOrderOfThePointers) {
  class Own : public TestProvider {
   public:
    using TestProvider::GetEntitiesProtected;
  };
  Own provider;
  for (int number = 40; number > 0; number--) MakeIn<TestData::Left>(provider, number);
  for (int number = 41; number < 60; number++) MakeIn<TestData::Bottom>(provider, number);
  std::list<ExpEntity*> entities;
  provider.GetEntitiesProtected(entities, "TOP", true);
  EXPECT_EQ(entities.size(), 40u + 2 * 19u);  // BOTTOM along both paths
  EXPECT_TRUE(std::is_sorted(entities.begin(), entities.end(), std::less<ExpEntity*>()));
}

// A schema whose types name their subtypes in several ways.
constexpr const char* kNamingSchema = "SUBTYPE_NAMING_TEST";

void RegisterNamingTypes() {
  static const bool registered = [] {
    const auto add = [](const std::string& name, std::vector<std::string> subtypes) {
      ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(
          new ExpEntityRuntimeType(
              name, kNamingSchema, &TestData::Empty::New, 0, 0, 0, false, new std::vector<std::string>,
              new std::vector<std::string>(std::move(subtypes)), new std::vector<std::string>, 0),
          "");
    };
    add("QUALIFIED", {"any schema::WALL"});
    add("TWICE", {"x::y::WALL"});
    add("UNQUALIFIED", {"XWALL"});
    add("MISSING", {"s::NO_SUCH_TYPE", "s::WALL"});
    add("WHOLE", {"WALL"});
    add("WALL", {});
    add("Y::WALL", {});
    add("ALL", {});
    return true;
  }();
  ASSERT_TRUE(registered);
}

struct SubtypeNaming {
  const char* type;
  std::vector<int> numbers;
};

class ListedSubtype : public testing::TestWithParam<SubtypeNaming> {};

TEST_P(ListedSubtype, IsLookedUpByItsBareName) {
  RegisterNamingTypes();
  TestProvider provider(kNamingSchema);
  const auto add = [&](int number, const char* type) {
    ExpEntity* entity = provider.CreateEntity(type);
    ASSERT_NE(entity, nullptr) << type;
    entity->SetEntityNumber(number);
    provider.AddEntity(number, entity);
  };
  add(1, "WALL");
  add(2, "Y::WALL");
  add(3, "ALL");
  EXPECT_EQ(NumbersOf(provider, GetParam().type, true), GetParam().numbers);
}

INSTANTIATE_TEST_SUITE_P(
    GetEntities, ListedSubtype,
    testing::Values(SubtypeNaming{"QUALIFIED", {1}},    // the text behind the first "::"
                    SubtypeNaming{"TWICE", {2}},        // only the first
                    SubtypeNaming{"UNQUALIFIED", {1}},  // without "::" all but the first character
                    SubtypeNaming{"WHOLE", {3}},        // so that this one is looked up as "ALL"
                    SubtypeNaming{"MISSING", {1}}),     // the others are still found
    [](const auto& info) { return std::string(info.param.type); });

TEST(GetEntities, ASubtypeNameWithoutSchemaLosesItsFirstCharacter) {
  class Noting : public TestProvider {
   public:
    using TestProvider::TestProvider;
    void GetEntitiesProtected(std::list<ExpEntity*>& out, const std::string& typeName,
                              bool withSubtypes) override {
      names.push_back(typeName);
      if (names.size() == 1) TestProvider::GetEntitiesProtected(out, typeName, withSubtypes);
    }
    std::vector<std::string> names;
  };
  RegisterNamingTypes();
  Noting provider(kNamingSchema);
  std::list<ExpEntity*> entities;
  provider.GetEntities(entities, "WHOLE", true);
  EXPECT_THAT(provider.names, ElementsAre("WHOLE", "ALL"));
}

// ------------------------------------------------------------------- complex instances and simple ones apart

class Splitting : public testing::Test {
 protected:
  ExpExternalMappingEntity* AddComplex(int number) {
    ExpEntity* entity =
        TestData::TypeOf("ExpExternalMappingEntity")->CreateInstance(static_cast<int>(provider.GetAdminId()));
    entity->SetEntityNumber(number);
    provider.AddEntity(number, entity);
    return dynamic_cast<ExpExternalMappingEntity*>(entity);
  }

  TestProvider provider;
  std::list<ExpEntity*> simple;
  std::list<ExpExternalMappingEntity*> external;
};

TEST_F(Splitting, TellsSimpleAndComplexInstancesApartAndSortsBoth) {
  auto* point7 = MakeIn<TestData::Point>(provider, 7);
  auto* point3 = MakeIn<TestData::Point>(provider, 3);
  auto* complex6 = AddComplex(6);
  auto* complex2 = AddComplex(2);
  provider.SplitIntoSimpleAndExternalEntities({point7, complex6, point3, complex2}, simple, external);
  EXPECT_THAT(simple, ElementsAre(point3, point7));
  EXPECT_THAT(external, ElementsAre(complex2, complex6));
}

TEST_F(Splitting, TakesWhatIsStoredUnderTheNumber) {
  auto* complex = AddComplex(4);
  const auto part = TestData::Make<TestData::A>();
  const auto other = TestData::Make<TestData::B>();
  complex->AddEntity(part.get());
  complex->SetEntityNumber(4);
  other->SetEntityNumber(5);
  auto* point = MakeIn<TestData::Point>(provider, 5);
  provider.SplitIntoSimpleAndExternalEntities({part.get(), other.get()}, simple, external);
  EXPECT_THAT(simple, ElementsAre(point));
  EXPECT_THAT(external, ElementsAre(complex));
}

TEST_F(Splitting, DropsAnEntityWhoseNumberIsNotInTheStore) {
  const auto stranger = TestData::Make<TestData::A>();
  provider.SplitIntoSimpleAndExternalEntities({stranger.get()}, simple, external);
  stranger->SetEntityNumber(9);
  provider.SplitIntoSimpleAndExternalEntities({stranger.get()}, simple, external);
  EXPECT_THAT(simple, IsEmpty());
  EXPECT_THAT(external, IsEmpty());
}

TEST_F(Splitting, RemovesAdjacentRepeats) {
  auto* point = MakeIn<TestData::Point>(provider, 1);
  auto* complex = AddComplex(2);
  provider.SplitIntoSimpleAndExternalEntities({point, point, complex, complex, complex}, simple, external);
  EXPECT_THAT(simple, ElementsAre(point));
  EXPECT_THAT(external, ElementsAre(complex));
}

TEST_F(Splitting, RepeatsOfOneKindMayBeAdjacentAcrossTheOther) {
  auto* point = MakeIn<TestData::Point>(provider, 1);
  auto* complex = AddComplex(2);
  provider.SplitIntoSimpleAndExternalEntities({point, complex, point, complex}, simple, external);
  EXPECT_THAT(simple, ElementsAre(point));
  EXPECT_THAT(external, ElementsAre(complex));
}

TEST_F(Splitting, KeepsRepeatsThatAreNotAdjacent) {
  auto* first = MakeIn<TestData::Point>(provider, 1);
  auto* second = MakeIn<TestData::Point>(provider, 2);
  auto* complex3 = AddComplex(3);
  auto* complex4 = AddComplex(4);
  provider.SplitIntoSimpleAndExternalEntities({first, second, first, complex3, complex4, complex3}, simple,
                                              external);
  EXPECT_THAT(simple, ElementsAre(first, first, second));
  EXPECT_THAT(external, ElementsAre(complex3, complex3, complex4));
}

TEST_F(Splitting, AppendsToBothLists) {
  auto* point1 = MakeIn<TestData::Point>(provider, 1);
  auto* point2 = MakeIn<TestData::Point>(provider, 2);
  auto* complex3 = AddComplex(3);
  auto* complex4 = AddComplex(4);
  simple = {point2};
  external = {complex4};
  provider.SplitIntoSimpleAndExternalEntities({point1, complex3}, simple, external);
  EXPECT_THAT(simple, ElementsAre(point1, point2));
  EXPECT_THAT(external, ElementsAre(complex3, complex4));
}

TEST_F(Splitting, LooksUpByTheVirtualGetEntity) {
  class Own : public TestProvider {
   public:
    using TestProvider::GetEntity;
    ExpEntity* GetEntity(int number) override { return number == 1 ? &entity : nullptr; }
    ExpEntity entity;
  };
  Own own;
  auto* point = MakeIn<TestData::Point>(provider, 1);
  own.SplitIntoSimpleAndExternalEntities({point}, simple, external);
  EXPECT_THAT(simple, ElementsAre(&own.entity));
}

TEST_F(Splitting, GetExternalEntitiesGivesTheComplexOnes) {
  auto* point = MakeIn<TestData::Point>(provider, 7);
  auto* complex6 = AddComplex(6);
  auto* complex2 = AddComplex(2);
  auto* complex9 = AddComplex(9);
  external = {complex9};
  provider.GetExternalEntities({complex6, point, complex2}, external);
  EXPECT_THAT(external, ElementsAre(complex2, complex6, complex9));
}

TEST_F(Splitting, GetExternalEntitiesSplitsByTheVirtualOperation) {
  class Own : public TestProvider {
   public:
    void SplitIntoSimpleAndExternalEntities(const std::vector<ExpEntity*>& in, std::list<ExpEntity*>& simple,
                                            std::list<ExpExternalMappingEntity*>& external) override {
      given = in;
      simpleBefore = simple.size();
      external.push_back(&entity);
    }
    std::vector<ExpEntity*> given;
    std::size_t simpleBefore = 99;
    ExpExternalMappingEntity entity;
  };
  Own own;
  auto* point = MakeIn<TestData::Point>(provider, 7);
  own.GetExternalEntities({point}, external);
  EXPECT_THAT(own.given, ElementsAre(point));
  EXPECT_EQ(own.simpleBefore, 0u);
  EXPECT_THAT(external, ElementsAre(&own.entity));
}

}  // namespace
}  // namespace VELMAR
