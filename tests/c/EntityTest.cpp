// Entities, the entity-store interface, the orderings of entity lists, and the entity visitor.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "CapturedLog.h"
#include "ExpEntityVisitor.h"
#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::CapturedLog;
using TestData::Make;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(std::is_abstract_v<ExpAbstractObjectAdmin>);
static_assert(std::is_polymorphic_v<ExpEntityVisitor>);
static_assert(sizeof(ExpEntity::instanceCount) == 8 &&
              std::is_unsigned_v<decltype(ExpEntity::instanceCount)>);

// ------------------------------------------------------------------------------------------------- ExpEntity

TEST(ExpEntity, HasNoNumberAndNoMemberAtFirst) {
  ExpEntity entity;
  EXPECT_EQ(entity.GetEntityNumber(), -1);
  EXPECT_EQ(entity.GetMember(0), nullptr);
  EXPECT_EQ(entity.GetMember(-1), nullptr);
  EXPECT_EQ(entity.GetMember(INT_MAX), nullptr);
}

TEST(ExpEntity, KeepsTheNumberSet) {
  ExpEntity entity;
  for (int number : {12, 0, -7, INT_MAX, INT_MIN}) {
    entity.SetEntityNumber(number);
    EXPECT_EQ(entity.GetEntityNumber(), number);
  }
}

TEST(ExpEntity, InstanceCountCountsTheEntitiesAlive) {
  const std::size_t before = ExpEntity::instanceCount;
  auto first = std::make_unique<ExpEntity>();
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  auto second = Make<TestData::Bottom>();  // virtual bases are built once
  EXPECT_EQ(ExpEntity::instanceCount, before + 2);
  first.reset();
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  second.reset();
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(ExpEntity, InstanceCountCountsCopiesToo) {
  class Copyable : public ExpEntity {
   public:
    Copyable() = default;
    Copyable(const Copyable&) = default;
    Copyable& operator=(const Copyable&) = default;
  };
  const std::size_t before = ExpEntity::instanceCount;
  {
    Copyable first;
    first.SetEntityNumber(5);
    Copyable second(first);
    EXPECT_EQ(second.GetEntityNumber(), 5);
    EXPECT_EQ(ExpEntity::instanceCount, before + 2);
    second = first;
    EXPECT_EQ(ExpEntity::instanceCount, before + 2);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(ExpEntity, AnswersFromItsRuntimeType) {
  ExpEntityRuntimeType* type = TestData::TypeOf("C");
  const auto entity = Make<TestData::C>();
  EXPECT_EQ(entity->GetExpClassName(), "C");
  EXPECT_EQ(entity->GetMemberNames(), type->GetMemberNames());
  EXPECT_THAT(*entity->GetMemberNames(), ElementsAre("a1", "a2", "b1", "c1"));
  EXPECT_EQ(entity->GetExpSuperClasses(), type->GetSuperClasses());
  EXPECT_THAT(*entity->GetExpSuperClasses(),
              ElementsAre("VELMAR::ExpEntity", "TEST_SCHEMA::A", "TEST_SCHEMA::B"));
  EXPECT_EQ(entity->GetExpSubClasses(), type->GetSubClasses());
  EXPECT_THAT(*entity->GetExpSubClasses(), IsEmpty());
  EXPECT_EQ(entity->GetNofExplicitMembers(), 4);
  EXPECT_EQ(entity->GetNofInverseMembers(), 3);
  EXPECT_EQ(entity->GetExternalMappingStartIndex(), 3);
  EXPECT_EQ(entity->GetTypeNumberOfEntity(), TestData::C::kTypeNumber);
  EXPECT_FALSE(entity->InsertInObjTree());
  EXPECT_TRUE(Make<TestData::Node>()->InsertInObjTree());
}

TEST(ExpEntity, GivesDirectSubtypes) {
  EXPECT_THAT(*Make<TestData::A>()->GetExpSubClasses(), ElementsAre("TEST_SCHEMA::B"));
  EXPECT_THAT(*Make<TestData::Top>()->GetExpSubClasses(),
              ElementsAre("TEST_SCHEMA::LEFT", "TEST_SCHEMA::RIGHT"));
}

TEST(ExpEntity, GetMemberByNameGivesThePositionOfTheName) {
  const auto entity = Make<TestData::AllKinds>();
  EXPECT_EQ(entity->GetMember("real"), &entity->real);
  EXPECT_EQ(entity->GetMember("choice"), &entity->choice);
  EXPECT_EQ(entity->GetMember("list"), entity->GetMember(4));
}

class UnknownMember : public testing::TestWithParam<std::string> {};

TEST_P(UnknownMember, IsNull) { EXPECT_EQ(Make<TestData::AllKinds>()->GetMember(GetParam()), nullptr); }

INSTANTIATE_TEST_SUITE_P(ExpEntity, UnknownMember,
                         testing::Values("REAL", "Real", "rea", "real ", "", "nothing"));

TEST(ExpEntity, GetMemberByNameAsksTheVirtualGetMember) {
  class Own : public ExpEntity {
   public:
    using ExpEntity::GetMember;
    ExpAttribute* GetMember(int index) override {
      asked.push_back(index);
      return nullptr;
    }
    std::vector<int> asked;
  };
  const std::unique_ptr<ExpEntityRuntimeType> type(new ExpEntityRuntimeType(
      "OWN", "X", [] { return static_cast<ExpEntity*>(new Own); }, 0, 0, 0, false,
      new std::vector<std::string>, new std::vector<std::string>,
      new std::vector<std::string>{"first", "second", "third"}, 0));
  const std::unique_ptr<ExpEntity> entity(type->CreateInstance(-1));
  EXPECT_EQ(entity->GetMember("third"), nullptr);
  EXPECT_EQ(entity->GetMember("fourth"), nullptr);
  EXPECT_THAT(dynamic_cast<Own&>(*entity).asked, ElementsAre(2));
}

TEST(ExpEntity, PrintsAsAnInstanceOfADataSection) {
  // The type's name is printed in upper case whatever its own case is.
  const std::unique_ptr<ExpEntityRuntimeType> type(new ExpEntityRuntimeType(
      "Cartesian_point", "X",
      [] {
        class CartesianPoint : public ExpEntity {
         public:
          using ExpEntity::GetMember;
          ExpAttribute* GetMember(int) override { return &coordinates; }
          ExpAggregation coordinates;
        };
        return static_cast<ExpEntity*>(new CartesianPoint);
      },
      1, 0, 0, false, new std::vector<std::string>, new std::vector<std::string>,
      new std::vector<std::string>{"coordinates"}, 0));
  const std::unique_ptr<ExpEntity> entity(type->CreateInstance(-1));
  for (double coordinate : {0.0, 1.5, 2.0}) entity->GetMember(0)->AddValue(new ExpReal(coordinate));
  entity->SetEntityNumber(12);
  EXPECT_EQ(entity->ToString(), "#12 = CARTESIAN_POINT((0., 1.5, 2.));");
  EXPECT_EQ(entity->GetExpClassName(), "Cartesian_point");
}

TEST(ExpEntity, PrintsMembersOfAllKinds) {
  const auto entity = Make<TestData::AllKinds>();
  entity->SetEntityNumber(1);
  entity->real.SetExpReal(2.5);
  entity->integer.SetExpInteger(-3);
  entity->text.SetExpString("it''s");
  entity->link.SetExpLink(7);
  entity->list.AddValue(new ExpInteger(1));
  entity->list.AddValue(new ExpInteger(2));
  entity->colour.SetExpEnumeration("RED");
  entity->logical.SetExpEnumeration("U");
  entity->boolean.SetAsBool(true);
  entity->choice.AddExpSelectTypeName("LENGTH_MEASURE");
  entity->choice.SetExpReal(1.0);
  EXPECT_EQ(entity->ToString(),
            "#1 = ALL_KINDS(2.5, -3, 'it''s', #7, (1, 2), .RED., .U., .T., LENGTH_MEASURE(1.));");
}

TEST(ExpEntity, PrintsTheMarkersOfItsMembers) {
  const auto entity = Make<TestData::AllKinds>();
  for (int i = 0; i < 9; i++) entity->GetMember(i)->SetNotProvided(true);
  entity->integer.SetOmitted(true);
  EXPECT_EQ(entity->ToString(), "ALL_KINDS(, *, $, $, $, $, $, $, $);");
}

TEST(ExpEntity, PrintsItsNumberWhereItIsAboveZero) {
  const auto entity = Make<TestData::A>();
  EXPECT_EQ(entity->ToString(), "A(0, 0);");
  entity->SetEntityNumber(0);
  EXPECT_EQ(entity->ToString(), "A(0, 0);");
  entity->SetEntityNumber(-5);
  EXPECT_EQ(entity->ToString(), "A(0, 0);");
  entity->SetEntityNumber(1);
  EXPECT_EQ(entity->ToString(), "#1 = A(0, 0);");
  entity->SetEntityNumber(INT_MAX);
  EXPECT_EQ(entity->ToString(), "#2147483647 = A(0, 0);");
}

TEST(ExpEntity, PrintsEmptyParenthesesWithoutMembers) {
  const auto entity = Make<TestData::Empty>();
  entity->SetEntityNumber(3);
  EXPECT_EQ(entity->ToString(), "#3 = EMPTY();");
}

TEST(ExpEntity, PrintsWhatItsVirtualOperationsSay) {
  class Own : public ExpEntity {
   public:
    using ExpEntity::GetMember;
    ExpAttribute* GetMember(int index) override { return &values[index]; }
    int GetNofExplicitMembers() override { return 2; }
    const std::string& GetExpClassName() const override { return name; }
    ExpInteger values[2] = {ExpInteger(4), ExpInteger(5)};
    std::string name = "own_name";
  };
  Own entity;
  entity.SetEntityNumber(8);
  EXPECT_EQ(entity.ToString(), "#8 = OWN_NAME(4, 5);");
}

TEST(ExpEntity, AnErrorOfAMemberReachesTheCaller) {
  const auto entity = Make<TestData::Node>();
  EXPECT_THROW(entity->ToString(), std::string);  // a select without value
}

TEST(ExpEntity, AcceptOfTheBaseCallsNothing) {
  class Visitor : public ExpEntityVisitor {
   public:
    void VisitExpExternalMappingEntity(ExpExternalMappingEntity*) override { visits++; }
    int visits = 0;
  };
  Visitor visitor;
  ExpEntity entity;
  entity.Accept(&visitor);
  Make<TestData::Point>()->Accept(&visitor);
  EXPECT_EQ(visitor.visits, 0);
}

// ------------------------------------------------------------------------------------------------- orderings

class NumberedEntity : public ExpEntity {
 public:
  explicit NumberedEntity(int number) { SetEntityNumber(number); }
};

TEST(IsIdSmaller, ComparesNumbers) {
  NumberedEntity two(2), five(5), otherFive(5), negative(-3);
  EXPECT_TRUE(Is_ID_smaller(&two, &five));
  EXPECT_FALSE(Is_ID_smaller(&five, &two));
  EXPECT_FALSE(Is_ID_smaller(&five, &otherFive));
  EXPECT_TRUE(Is_ID_smaller(&negative, &two));
  EXPECT_FALSE(Is_ID_smaller(&two, &negative));
}

TEST(IsIdSmaller, PutsNullLast) {
  NumberedEntity entity(INT_MAX);
  EXPECT_TRUE(Is_ID_smaller(&entity, nullptr));
  EXPECT_FALSE(Is_ID_smaller(nullptr, &entity));
  EXPECT_FALSE(Is_ID_smaller(nullptr, nullptr));
}

TEST(IsIdSmaller, SortsAListWithNulls) {
  NumberedEntity two(2), five(5);
  std::list<ExpEntity*> list = {&five, nullptr, &two};
  list.sort(Is_ID_smaller);
  EXPECT_THAT(list, ElementsAre(&two, &five, nullptr));
}

TEST(IsIdSmaller, EqualNumbersKeepTheirOrder) {
  NumberedEntity a(3), b(3), c(1), d(3);
  std::list<ExpEntity*> list = {&b, &a, &c, &d};
  list.sort(Is_ID_smaller);
  EXPECT_THAT(list, ElementsAre(&c, &b, &a, &d));
}

TEST(IsIdSmaller, AsksTheVirtualNumber) {
  class Reversed : public ExpEntity {
   public:
    explicit Reversed(int number) { SetEntityNumber(number); }
    int GetEntityNumber() override { return -ExpEntity::GetEntityNumber(); }
  };
  Reversed one(1), two(2);
  EXPECT_TRUE(Is_ID_smaller(&two, &one));
}

TEST(IsReferenceEqual, ComparesPointers) {
  NumberedEntity a(3), b(3);
  EXPECT_TRUE(Is_Reference_equal(&a, &a));
  EXPECT_FALSE(Is_Reference_equal(&a, &b));
  EXPECT_FALSE(Is_Reference_equal(&a, nullptr));
  EXPECT_TRUE(Is_Reference_equal(nullptr, nullptr));
}

// ------------------------------------------------------------------------------------ ExpAbstractObjectAdmin

/// Implements what the interface leaves open, over a map, and notes the numbers it is asked for.
class MapStore : public ExpAbstractObjectAdmin {
 public:
  using ExpAbstractObjectAdmin::GetEntity;
  ExpEntity* GetEntity(int number) override {
    asked.push_back(number);
    const auto found = entities.find(number);
    return found == entities.end() ? nullptr : found->second;
  }
  void AddEntity(int number, ExpEntity* entity) override { entities[number] = entity; }
  int CreateEntityNumber() override { return 0; }
  unsigned int GetAdminId() override { return 0; }
  std::size_t GetEntityVectorSize() override { return entities.size(); }
  void Write(std::ostream&) override {}
  void DeleteEntities() override {}
  void ClearEntityVector() override {}
  void ResetEntityVector() override {}
  int GetMaxEntityNumber() override { return 0; }

  std::map<int, ExpEntity*> entities;
  std::vector<int> asked;
};

TEST(ExpAbstractObjectAdmin, GetEntityFollowsALink) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  EXPECT_EQ(store.GetEntity(ExpLink(4)), &entity);
  EXPECT_EQ(store.GetEntity(ExpLink(5)), nullptr);
  EXPECT_EQ(store.GetEntity(ExpLink()), nullptr);
  EXPECT_THAT(store.asked, ElementsAre(4, 5, -1));
}

TEST(ExpAbstractObjectAdmin, GetEntityOfAMarkedLinkDoesNotAskTheStore) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  ExpLink link(4);
  link.SetNotProvided(true);
  EXPECT_EQ(store.GetEntity(link), nullptr);
  link.SetNotProvided(false);
  link.SetOmitted(true);
  EXPECT_EQ(store.GetEntity(link), nullptr);
  EXPECT_THAT(store.asked, IsEmpty());
  link.SetOmitted(false);
  EXPECT_EQ(store.GetEntity(link), &entity);
}

TEST(ExpAbstractObjectAdmin, GetEntityOfAValueFollowsALink) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  ExpLink link(4);
  EXPECT_EQ(store.GetEntity(static_cast<ExpAttribute*>(&link)), &entity);
}

TEST(ExpAbstractObjectAdmin, GetEntityOfAValueKeepsTheFlagsOfALink) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  ExpLink link(4);
  link.SetNotProvided(true);
  EXPECT_EQ(store.GetEntity(static_cast<ExpAttribute*>(&link)), nullptr);
  link.SetNotProvided(false);
  link.SetOmitted(true);
  EXPECT_EQ(store.GetEntity(static_cast<ExpAttribute*>(&link)), nullptr);
}

TEST(ExpAbstractObjectAdmin, GetEntityOfASelectFollowsItsLink) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  ExpSelect select;
  select.AddExpSelectTypeName("NAME");
  select.SetExpLink(4);
  EXPECT_EQ(store.GetEntity(&select), &entity);
}

TEST(ExpAbstractObjectAdmin, GetEntityOfASelectLooksAtTheFlagsOfTheSelectedLink) {
  ExpEntity entity;
  MapStore store;
  store.AddEntity(4, &entity);
  ExpSelect select;
  select.SetExpLink(4);
  select.GetExpSelectValue()->SetOmitted(true);
  EXPECT_EQ(store.GetEntity(&select), nullptr);
}

TEST(ExpAbstractObjectAdmin, GetEntityOfASelectWithoutValueIsNull) {
  MapStore store;
  ExpSelect select;
  EXPECT_EQ(store.GetEntity(&select), nullptr);
  EXPECT_THAT(store.asked, IsEmpty());
}

TEST(ExpAbstractObjectAdmin, GetEntityOfAnyOtherValueIsNull) {
  ExpEntity entity;
  MapStore store;
  for (int number : {-1, 0, 4}) store.AddEntity(number, &entity);
  ExpInteger integer(4);
  ExpReal real(4);
  ExpString text("4");
  ExpEnumeration item;
  ExpAggregation list;
  list.AddValue(new ExpLink(4));
  ExpSelect selectedInteger;
  selectedInteger.SetExpInteger(4);
  ExpSelect selectedList;
  selectedList.AddValue(new ExpLink(4));
  for (ExpAttribute* value : std::initializer_list<ExpAttribute*>{&integer, &real, &text, &item, &list,
                                                                  &selectedInteger, &selectedList, nullptr}) {
    EXPECT_EQ(store.GetEntity(value), nullptr);
  }
  EXPECT_THAT(store.asked, IsEmpty());
}

TEST(ExpAbstractObjectAdmin, GetEntityOfAValueGoesThroughTheVirtualGetEntityOfALink) {
  class Own : public MapStore {
   public:
    using MapStore::GetEntity;
    ExpEntity* GetEntity(ExpLink link) override {
      links.push_back({link.GetExpLink(), link.IsNotProvided(), link.IsOmitted()});
      return nullptr;
    }
    std::vector<std::tuple<int, bool, bool>> links;
  };
  Own store;
  ExpLink link(6);
  link.SetNotProvided(true);
  EXPECT_EQ(store.GetEntity(static_cast<ExpAttribute*>(&link)), nullptr);
  ExpSelect select;
  select.SetExpLink(7);
  select.GetExpSelectValue()->SetOmitted(true);
  EXPECT_EQ(store.GetEntity(&select), nullptr);
  EXPECT_THAT(store.links, ElementsAre(std::make_tuple(6, true, false), std::make_tuple(7, false, true)));
}

TEST(ExpAbstractObjectAdmin, DumpEntityWritesTheEntityAndWhatItRefersTo) {
  MapStore store;
  const auto first = Make<TestData::Point>();
  first->SetEntityNumber(1);
  first->name.SetExpString("p");
  const auto second = Make<TestData::Node>();
  second->SetEntityNumber(2);
  second->next.SetExpLink(1);
  second->choice.SetNotProvided(true);
  store.AddEntity(1, first.get());
  store.AddEntity(2, second.get());
  std::ostringstream os;
  store.DumpEntity(second.get(), os);
  EXPECT_EQ(os.str(), "#1 = POINT('p', ());\n#2 = NODE('', #1, (), $);\n");
  std::ostringstream again;  // each dump begins afresh
  store.DumpEntity(second.get(), again);
  EXPECT_EQ(again.str(), os.str());
}

TEST(ExpAbstractObjectAdmin, DumpEntityOfANumberDumpsTheEntityOfThatNumber) {
  class Own : public MapStore {
   public:
    using MapStore::DumpEntity;
    void DumpEntity(ExpEntity* entity, std::ostream& os) override {
      dumped.push_back(entity);
      os << "own";
    }
    std::vector<ExpEntity*> dumped;
  };
  ExpEntity entity;
  Own store;
  store.AddEntity(4, &entity);
  std::ostringstream os;
  store.DumpEntity(4, os);
  EXPECT_THAT(store.dumped, ElementsAre(&entity));
  EXPECT_THAT(store.asked, ElementsAre(4));
  EXPECT_EQ(os.str(), "own");
}

TEST(ExpAbstractObjectAdmin, LogWritesTheMessageAsItIsAtLevelOne) {
  CapturedLog log;
  MapStore store;
  store.Log("a message");
  store.Log("");
  EXPECT_THAT(log.lines, ElementsAre("a message", ""));
  EXPECT_THAT(log.levels, ElementsAre(1, 1));
  EXPECT_THAT(log.ended, ElementsAre(false, false));
}

// ------------------------------------------------------------------------------------------ ExpEntityVisitor

TEST(ExpEntityVisitor, KeepsTheStoreItIsGiven) {
  MapStore store;
  EXPECT_EQ(ExpEntityVisitor().GetAdmin(), nullptr);
  ExpEntityVisitor visitor(&store);
  EXPECT_EQ(visitor.GetAdmin(), &store);
  visitor.SetAdmin(nullptr);
  EXPECT_EQ(visitor.GetAdmin(), nullptr);
  visitor.SetAdmin(&store);
  EXPECT_EQ(visitor.GetAdmin(), &store);
}

TEST(ExpEntityVisitor, GetTypeOfEntityGivesTheTypeNumber) {
  MapStore store;
  const auto entity = Make<TestData::Point>();
  store.AddEntity(1, entity.get());
  ExpEntityVisitor visitor(&store);
  EXPECT_EQ(visitor.GetTypeOfEntity(1), TestData::Point::kTypeNumber);
}

TEST(ExpEntityVisitor, GetTypeOfEntityIsMinusOneBelowOne) {
  MapStore store;
  ExpEntityVisitor visitor(&store);
  EXPECT_EQ(visitor.GetTypeOfEntity(0), -1);
  EXPECT_EQ(visitor.GetTypeOfEntity(-3), -1);
  EXPECT_EQ(visitor.GetTypeOfEntity(INT_MIN), -1);
  EXPECT_THAT(store.asked, IsEmpty());
}

TEST(ExpEntityVisitor, GetTypeOfEntityIsMinusOneWithoutStore) {
  ExpEntityVisitor visitor;
  EXPECT_EQ(visitor.GetTypeOfEntity(1), -1);
  EXPECT_EQ(visitor.GetTypeOfEntity(0), -1);
}

TEST(ExpEntityVisitor, LogDoesNothing) {
  CapturedLog log;
  ExpEntityVisitor visitor;
  ExpEntity entity;
  visitor.Log("message", ExpLogMessage);
  visitor.Log(&entity, "message", ExpLogException);
  visitor.Log(nullptr, "message", ExpLogMessage);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(ExpEntityVisitor, AComplexInstanceIsPassedOver) {
  class Visitor : public ExpEntityVisitor {
   public:
    void Log(ExpEntity*, const std::string&, ExpLogLevel) { logged++; }  // hides; the base never calls it
    int logged = 0;
  };
  CapturedLog log;
  Visitor visitor;
  ExpExternalMappingEntity entity;
  visitor.VisitExpExternalMappingEntity(&entity);
  entity.Accept(&visitor);
  EXPECT_EQ(visitor.logged, 0);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(ExpEntityVisitor, ItsTextIsEmptyAtFirst) {
  class Visitor : public ExpEntityVisitor {
   public:
    const std::string& Text() const { return text_; }
  };
  EXPECT_EQ(Visitor().Text(), "");
}

}  // namespace
}  // namespace VELMAR
