// The entity store: slots, numbers, growth, writing and deleting.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "CapturedLog.h"
#include "ExpFlyweightAdministration.h"
#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"

namespace VELMAR {
namespace {

using TestData::CapturedLog;
using TestData::Make;
using TestData::MakeIn;
using TestData::TypeOf;
using testing::IsEmpty;

static_assert(std::is_same_v<decltype(ExpFlyweightAdministration::adminIdCounter), unsigned int>);
static_assert(
    std::is_same_v<decltype(std::declval<ExpFlyweightAdministration>().GetAdminId()), unsigned int>);

std::string Written(ExpFlyweightAdministration& store) {
  std::ostringstream os;
  store.Write(os);
  return os.str();
}

std::size_t OccupiedSlots(ExpFlyweightAdministration& store) {
  std::size_t occupied = 0;
  for (std::size_t i = 0; i < store.GetEntityVectorSize(); i++) {
    if (store.GetEntity(static_cast<int>(i)) != nullptr) occupied++;
  }
  return occupied;
}

class Store : public testing::Test {
 protected:
  ExpEntity entity_;
  ExpEntity other_;
};

// ---------------------------------------------------------------------------------------------- construction

TEST_F(Store, HasTenThousandEmptySlotsAtFirst) {
  ExpFlyweightAdministration store;
  EXPECT_EQ(store.GetEntityVectorSize(), 10000u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(store.GetEntity(5), nullptr);
  EXPECT_EQ(OccupiedSlots(store), 0u);
}

struct FirstSize {
  int given;
  std::size_t slots;
};

class StoreOfSize : public testing::TestWithParam<FirstSize> {};

TEST_P(StoreOfSize, HasAsManyEmptySlots) {
  ExpFlyweightAdministration store(GetParam().given);
  EXPECT_EQ(store.GetEntityVectorSize(), GetParam().slots);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(OccupiedSlots(store), 0u);
}

INSTANTIATE_TEST_SUITE_P(Store, StoreOfSize,
                         testing::Values(FirstSize{0, 0}, FirstSize{1, 1}, FirstSize{100000, 100000},
                                         FirstSize{-1, 0}, FirstSize{INT_MIN, 0}));

TEST_F(Store, IdsOfSuccessiveStoresDifferByOne) {
  const unsigned int next = ExpFlyweightAdministration::adminIdCounter;
  ExpFlyweightAdministration first;
  ExpFlyweightAdministration second(5);
  ExpFlyweightAdministration third;
  EXPECT_EQ(first.GetAdminId(), next);
  EXPECT_EQ(second.GetAdminId(), next + 1);
  EXPECT_EQ(third.GetAdminId(), next + 2);
  EXPECT_EQ(ExpFlyweightAdministration::adminIdCounter, next + 3);
}

TEST_F(Store, IdsAreNotUsedAgain) {
  unsigned int id;
  {
    ExpFlyweightAdministration store;
    id = store.GetAdminId();
  }
  EXPECT_EQ(ExpFlyweightAdministration().GetAdminId(), id + 1);
}

TEST_F(Store, InitGrowsToExactlyTheSizeAndNeverShrinks) {
  ExpFlyweightAdministration store(10);
  store.AddEntity(3, &entity_);
  store.Init(25);
  EXPECT_EQ(store.GetEntityVectorSize(), 25u);
  EXPECT_EQ(store.GetEntity(3), &entity_);
  EXPECT_EQ(OccupiedSlots(store), 1u);
  store.Init(25);
  EXPECT_EQ(store.GetEntityVectorSize(), 25u);
  store.Init(4);
  EXPECT_EQ(store.GetEntityVectorSize(), 25u);
  store.Init(-1);
  EXPECT_EQ(store.GetEntityVectorSize(), 25u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 3);
}

TEST_F(Store, InitSetsTheFirstSize) {
  ExpFlyweightAdministration store(10);
  store.Init(4);
  store.ResetEntityVector();
  EXPECT_EQ(store.GetEntityVectorSize(), 4u);
}

// -------------------------------------------------------------------------------------------- GetEntity(int)

TEST_F(Store, GetEntityOutsideTheTableIsNull) {
  ExpFlyweightAdministration store(10);
  store.AddEntity(9, &entity_);
  store.AddEntity(0, &other_);
  EXPECT_EQ(store.GetEntity(9), &entity_);
  EXPECT_EQ(store.GetEntity(10), nullptr);
  EXPECT_EQ(store.GetEntity(0), &other_);
  EXPECT_EQ(store.GetEntity(-1), nullptr);
  EXPECT_EQ(store.GetEntity(INT_MAX), nullptr);
  EXPECT_EQ(store.GetEntity(INT_MIN), nullptr);
}

TEST_F(Store, GetEntityOfAStoreWithoutSlotsIsNull) {
  ExpFlyweightAdministration store(0);
  EXPECT_EQ(store.GetEntity(0), nullptr);
  EXPECT_EQ(store.GetEntity(-1), nullptr);
}

TEST_F(Store, GetEntityFollowsLinksToo) {
  ExpFlyweightAdministration store;
  store.AddEntity(3, &entity_);
  EXPECT_EQ(store.GetEntity(ExpLink(3)), &entity_);
  ExpSelect select;
  select.SetExpLink(3);
  EXPECT_EQ(store.GetEntity(&select), &entity_);
}

// ------------------------------------------------------------------------------------------------- AddEntity

struct Growth {
  int firstSize;
  int number;
  std::size_t slots;
};

class GrowthOfStore : public testing::TestWithParam<Growth> {};

TEST_P(GrowthOfStore, IsThis) {
  const Growth& growth = GetParam();
  ExpEntity entity;
  CapturedLog log;
  ExpFlyweightAdministration store(growth.firstSize);
  store.AddEntity(growth.number, &entity);
  EXPECT_EQ(store.GetEntityVectorSize(), growth.slots);
  EXPECT_EQ(store.GetEntity(growth.number), &entity);
  EXPECT_EQ(store.GetMaxEntityNumber(), growth.number);
  EXPECT_EQ(OccupiedSlots(store), 1u);
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Store, GrowthOfStore,
    testing::Values(
        // without slots: 10000 up to #999, whatever the first size, else twice the number
        Growth{0, 0, 10000}, Growth{0, 5, 10000}, Growth{0, 999, 10000}, Growth{0, 1000, 2000},
        Growth{0, 1500, 3000}, Growth{-7, 5, 10000},
        // with slots: twice the number where it does not fit
        Growth{10000, 9999, 10000}, Growth{10000, 10000, 20000}, Growth{10000, 10001, 20002},
        Growth{10000, 0, 10000}, Growth{1, 0, 1}, Growth{1, 1, 2}, Growth{1, 2, 4}, Growth{5, 5, 10},
        Growth{5, 999, 1998}, Growth{10000, 1000000, 2000000}),
    [](const auto& info) {
      const std::string size = info.param.firstSize < 0 ? "negative" : std::to_string(info.param.firstSize);
      return "from_" + size + "_for_" + std::to_string(info.param.number);
    });

TEST_F(Store, AHugeNumberIsStored) {
  // The slots that nobody uses cost address space alone: 20,000,000 of them.
  ExpFlyweightAdministration store;
  store.AddEntity(10000000, &entity_);
  EXPECT_EQ(store.GetEntityVectorSize(), 20000000u);
  EXPECT_EQ(store.GetEntity(10000000), &entity_);
  EXPECT_EQ(store.GetEntity(9999999), nullptr);
  EXPECT_EQ(store.GetEntity(19999999), nullptr);
}

TEST_F(Store, EntitiesStayWhereTheyAreWhenItGrows) {
  ExpFlyweightAdministration store(3);
  std::vector<std::unique_ptr<ExpEntity>> entities;
  for (int number = 0; number < 5000; number++) {
    entities.push_back(std::make_unique<ExpEntity>());
    store.AddEntity(number, entities.back().get());
  }
  for (int number = 0; number < 5000; number++) ASSERT_EQ(store.GetEntity(number), entities[number].get());
  EXPECT_EQ(OccupiedSlots(store), 5000u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 4999);
}

TEST_F(Store, TheSecondEntityOfANumberReplacesTheFirst) {
  CapturedLog log;
  ExpFlyweightAdministration store;
  const std::size_t alive = ExpEntity::instanceCount;
  store.AddEntity(4, &entity_);
  store.AddEntity(4, &other_);
  EXPECT_EQ(store.GetEntity(4), &other_);
  EXPECT_EQ(ExpEntity::instanceCount, alive);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_F(Store, TheHighestNumberIsTheMaximum) {
  ExpFlyweightAdministration store;
  store.AddEntity(7, &entity_);
  store.AddEntity(3, &entity_);
  EXPECT_EQ(store.GetMaxEntityNumber(), 7);
  store.AddEntity(8, nullptr);
  EXPECT_EQ(store.GetMaxEntityNumber(), 8);
  EXPECT_EQ(store.GetEntity(8), nullptr);
}

TEST_F(Store, NumberZeroIsStoredLikeAnyOther) {
  ExpFlyweightAdministration store;
  store.AddEntity(0, &entity_);
  EXPECT_EQ(store.GetEntity(0), &entity_);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
}

class NumberTooLarge : public testing::TestWithParam<int> {};

TEST_P(NumberTooLarge, IsALengthErrorAndChangesNothing) {
  ExpEntity entity;
  CapturedLog log;
  for (int firstSize : {0, 10, 10000}) {
    ExpFlyweightAdministration store(firstSize);
    EXPECT_THROW(store.AddEntity(GetParam(), &entity), std::length_error);
    EXPECT_EQ(store.GetEntityVectorSize(), static_cast<std::size_t>(firstSize));
    EXPECT_EQ(store.GetMaxEntityNumber(), 0);
    EXPECT_EQ(store.GetEntity(GetParam()), nullptr);
    EXPECT_EQ(OccupiedSlots(store), 0u);
  }
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Store, NumberTooLarge,
                         testing::Values(1073741824, 1073741825, 1500000000, INT_MAX - 1, INT_MAX));

class SlightlyNegativeNumber : public testing::TestWithParam<int> {};

TEST_P(SlightlyNegativeNumber, IsALengthError) {
  ExpEntity entity, kept;
  CapturedLog log;
  ExpFlyweightAdministration store(10);
  store.AddEntity(3, &kept);
  EXPECT_THROW(store.AddEntity(GetParam(), &entity), std::length_error);
  EXPECT_EQ(store.GetEntityVectorSize(), 10u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 3);
  EXPECT_EQ(store.GetEntity(3), &kept);
  EXPECT_EQ(OccupiedSlots(store), 1u);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_P(SlightlyNegativeNumber, GivesAStoreWithoutSlotsItsFirst) {
  ExpEntity entity;
  ExpFlyweightAdministration store(0);
  EXPECT_THROW(store.AddEntity(GetParam(), &entity), std::length_error);
  EXPECT_EQ(store.GetEntityVectorSize(), 10000u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(OccupiedSlots(store), 0u);
}

INSTANTIATE_TEST_SUITE_P(Store, SlightlyNegativeNumber,
                         testing::Values(-1, -2, -1000, -1073741823, -1073741824));

struct VeryNegative {
  int number;
  std::size_t slots;  // twice the number, modulo 2^32
  const char* unsignedNumber;
};

class VeryNegativeNumber : public testing::TestWithParam<VeryNegative> {};

TEST_P(VeryNegativeNumber, ResizesTheTableAndIsOutOfRange) {
  ExpEntity entity, kept;
  CapturedLog log;
  ExpFlyweightAdministration store(10);
  store.AddEntity(1, &kept);
  std::string what;
  try {
    store.AddEntity(GetParam().number, &entity);
  } catch (const std::out_of_range& error) {
    what = error.what();
  }
  EXPECT_EQ(what, std::string("vector::_M_range_check: __n (which is ") + GetParam().unsignedNumber +
                      ") >= this->size() (which is " + std::to_string(GetParam().slots) + ")");
  EXPECT_EQ(store.GetEntityVectorSize(), GetParam().slots);
  EXPECT_EQ(store.GetMaxEntityNumber(), 1);
  EXPECT_EQ(store.GetEntity(1), GetParam().slots > 1 ? &kept : nullptr);
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Store, VeryNegativeNumber,
                         testing::Values(VeryNegative{INT_MIN, 0, "18446744071562067968"},
                                         VeryNegative{INT_MIN + 1, 2, "18446744071562067969"},
                                         VeryNegative{INT_MIN + 5, 10, "18446744071562067973"},
                                         VeryNegative{INT_MIN + 6, 12, "18446744071562067974"},
                                         VeryNegative{INT_MIN + 500000, 1000000, "18446744071562567968"}));

TEST_F(Store, SlotsThatWereTakenAwayComeBackEmpty) {
  ExpFlyweightAdministration store(20);
  for (int number = 0; number < 20; number++) store.AddEntity(number, &entity_);
  EXPECT_THROW(store.AddEntity(INT_MIN + 2, &entity_), std::out_of_range);
  ASSERT_EQ(store.GetEntityVectorSize(), 4u);
  EXPECT_EQ(OccupiedSlots(store), 4u);
  store.AddEntity(9, &other_);
  EXPECT_EQ(store.GetEntityVectorSize(), 18u);
  EXPECT_EQ(OccupiedSlots(store), 5u);
  EXPECT_EQ(store.GetEntity(9), &other_);
}

// ---------------------------------------------------------------------------------------- CreateEntityNumber

TEST_F(Store, CreateEntityNumberCountsOnFromTheMaximum) {
  ExpFlyweightAdministration store;
  EXPECT_EQ(store.CreateEntityNumber(), 1);
  EXPECT_EQ(store.CreateEntityNumber(), 2);
  store.AddEntity(100, &entity_);
  EXPECT_EQ(store.CreateEntityNumber(), 101);
  EXPECT_EQ(store.GetMaxEntityNumber(), 101);
  EXPECT_EQ(store.GetEntityVectorSize(), 10000u);
  EXPECT_EQ(store.GetEntity(101), nullptr);
}

TEST_F(Store, CreateEntityNumberDoesNotTouchTheTable) {
  ExpFlyweightAdministration store(2);
  for (int number = 1; number <= 50; number++) EXPECT_EQ(store.CreateEntityNumber(), number);
  EXPECT_EQ(store.GetEntityVectorSize(), 2u);
}

// ----------------------------------------------------------------------------------------------------- Write

TEST_F(Store, WriteWritesALinePerEntityInTheOrderOfTheNumbers) {
  ExpFlyweightAdministration store;
  MakeIn<TestData::A>(store, 3);
  MakeIn<TestData::Point>(store, 1);
  EXPECT_EQ(Written(store), "#1 = POINT('', ());\n#3 = A(0, 0);\n");
}

TEST_F(Store, WriteOfAStoreWithoutSlotsOrEntitiesWritesNothing) {
  ExpFlyweightAdministration none(0);
  EXPECT_EQ(Written(none), "");
  ExpFlyweightAdministration empty;
  EXPECT_EQ(Written(empty), "");
}

TEST_F(Store, WriteBeginsWithNumberZero) {
  ExpFlyweightAdministration store;
  const auto entity = Make<TestData::A>();
  store.AddEntity(0, entity.get());
  EXPECT_EQ(Written(store), "A(0, 0);\n");
}

TEST_F(Store, WriteStopsAtTheHighestNumber) {
  ExpFlyweightAdministration store;
  std::vector<std::unique_ptr<TestData::A>> entities;
  for (int number : {3, 4, 5}) {
    entities.push_back(Make<TestData::A>());
    entities.back()->SetEntityNumber(number);
  }
  store.AddEntity(3, entities[0].get());
  store.AddEntity(5, entities[2].get());
  store.DeleteEntities();  // none of them is this store's, so they stay, above the highest number now
  EXPECT_EQ(Written(store), "");
  store.AddEntity(4, entities[1].get());
  EXPECT_EQ(Written(store), "#3 = A(0, 0);\n#4 = A(0, 0);\n");
}

TEST_F(Store, WriteEndsWithTheTable) {
  ExpFlyweightAdministration store(4);
  MakeIn<TestData::A>(store, 3);
  for (int i = 0; i < 20; i++) store.CreateEntityNumber();
  EXPECT_EQ(Written(store), "#3 = A(0, 0);\n");
}

TEST_F(Store, WriteCallsTheVirtualToString) {
  class Own : public ExpEntity {
   public:
    std::string ToString() override { return "own text"; }
  };
  Own own;
  ExpFlyweightAdministration store;
  store.AddEntity(2, &own);
  EXPECT_EQ(Written(store), "own text\n");
}

TEST_F(Store, WriteLetsTheErrorOfAnEntityThrough) {
  ExpFlyweightAdministration store;
  MakeIn<TestData::Node>(store, 1);  // its select has no value
  EXPECT_THROW(Written(store), std::string);
}

// -------------------------------------------------------------------------------------------------- deleting

TEST_F(Store, DeleteEntitiesDeletesWhatWasCreatedForIt) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFlyweightAdministration store;
  MakeIn<TestData::A>(store, 1);
  MakeIn<TestData::Point>(store, 2);
  TypeOf("A")->CreateInstance(static_cast<int>(store.GetAdminId()));  // without a number
  EXPECT_EQ(ExpEntity::instanceCount, before + 3);
  store.DeleteEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(TypeOf("A")->GetInstanceList(store.GetAdminId()), nullptr);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
}

TEST_F(Store, DeleteEntitiesLeavesTheSlots) {
  ExpFlyweightAdministration store(10);
  ExpEntity* entity = MakeIn<TestData::A>(store, 5);
  store.DeleteEntities();
  EXPECT_EQ(store.GetEntityVectorSize(), 10u);
  EXPECT_EQ(store.GetEntity(5), entity);  // a pointer to what has been
  store.ClearEntityVector();
}

TEST_F(Store, DeleteEntitiesLeavesTheEntitiesOfOthers) {
  ExpFlyweightAdministration store, otherStore;
  const auto own = Make<TestData::A>();
  ExpEntity* others = MakeIn<TestData::A>(otherStore, 1);
  store.AddEntity(1, own.get());
  store.AddEntity(2, others);
  const std::size_t before = ExpEntity::instanceCount;
  store.DeleteEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(otherStore.GetEntity(1), others);
  EXPECT_EQ(Written(otherStore), "#1 = A(0, 0);\n");
}

TEST_F(Store, DeleteEntitiesWithoutNumberDoesNotContactTheRegistry) {
  ExpFlyweightAdministration store;
  const std::size_t before = ExpEntity::instanceCount;
  TypeOf("A")->CreateInstance(static_cast<int>(store.GetAdminId()));
  store.DeleteEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  ExpRuntimeRegistry::GetInstance()->DeleteAllInstances(store.GetAdminId());
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST_F(Store, DeleteEntitiesAsksForTheIdVirtually) {
  class Own : public ExpFlyweightAdministration {
   public:
    unsigned int GetAdminId() override {
      asked++;
      return id;
    }
    unsigned int id = 0;
    int asked = 0;
  };
  ExpFlyweightAdministration otherStore;
  MakeIn<TestData::A>(otherStore, 1);
  const std::size_t before = ExpEntity::instanceCount;
  Own store;
  store.id = otherStore.GetAdminId();
  store.DeleteEntities();
  EXPECT_EQ(store.asked, 0);  // nothing has a number yet
  store.CreateEntityNumber();
  store.DeleteEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before - 1);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  store.id = store.ExpFlyweightAdministration::GetAdminId();
  otherStore.ClearEntityVector();
}

TEST_F(Store, AnErrorWhileDeletingIsSwallowed) {
  class Failing : public ExpFlyweightAdministration {
   public:
    unsigned int GetAdminId() override { throw 42; }
  };
  Failing store;
  store.AddEntity(5, &entity_);
  EXPECT_NO_THROW(store.DeleteEntities());
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(store.GetEntity(5), &entity_);
}

TEST_F(Store, ClearEntityVectorDeletesAndLeavesNoSlots) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFlyweightAdministration store;
  MakeIn<TestData::A>(store, 1);
  store.ClearEntityVector();
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(store.GetEntityVectorSize(), 0u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(store.GetEntity(1), nullptr);
  EXPECT_EQ(Written(store), "");
}

TEST_F(Store, AfterClearEntityVectorAllSlotsAreEmpty) {
  ExpFlyweightAdministration store(10);
  for (int number = 0; number < 1000; number++) store.AddEntity(number, &entity_);
  store.ClearEntityVector();
  store.AddEntity(5, &other_);
  EXPECT_EQ(store.GetEntityVectorSize(), 10000u);  // not the first size
  EXPECT_EQ(OccupiedSlots(store), 1u);
  EXPECT_EQ(store.GetEntity(5), &other_);
}

TEST_F(Store, ResetEntityVectorBringsBackTheConstructedState) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFlyweightAdministration store(30);
  const unsigned int id = store.GetAdminId();
  for (int number = 1; number < 200; number++) MakeIn<TestData::A>(store, number);
  store.ResetEntityVector();
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(store.GetEntityVectorSize(), 30u);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(OccupiedSlots(store), 0u);
  EXPECT_EQ(store.GetAdminId(), id);
  EXPECT_EQ(store.CreateEntityNumber(), 1);
  MakeIn<TestData::A>(store, 5);
  EXPECT_EQ(OccupiedSlots(store), 1u);
}

TEST_F(Store, SlotsAreEmptyAfterAnySequenceOfGrowingAndClearing) {
  ExpFlyweightAdministration store(5);
  for (int round = 0; round < 20; round++) {
    for (int number = 0; number < 300 * (round % 4); number++) store.AddEntity(number, &entity_);
    switch (round % 3) {
      case 0:
        store.ClearEntityVector();
        EXPECT_EQ(store.GetEntityVectorSize(), 0u);
        break;
      case 1:
        store.ResetEntityVector();
        EXPECT_EQ(store.GetEntityVectorSize(), 5u);
        break;
      default:
        store.ForgetEntities();
    }
    EXPECT_EQ(OccupiedSlots(store), 0u);
    store.Init(5);
    store.AddEntity(4, &other_);
    EXPECT_EQ(OccupiedSlots(store), 1u);
    store.AddEntity(4, nullptr);
  }
}

TEST_F(Store, ClearAndResetCallTheVirtualOperations) {
  class Noting : public ExpFlyweightAdministration {
   public:
    void DeleteEntities() override {
      deletes++;
      ExpFlyweightAdministration::DeleteEntities();
    }
    void ClearEntityVector() override {
      clears++;
      ExpFlyweightAdministration::ClearEntityVector();
    }
    int deletes = 0;
    int clears = 0;
  };
  Noting store;
  store.ClearEntityVector();
  EXPECT_EQ(store.deletes, 1);
  store.ResetEntityVector();
  EXPECT_EQ(store.deletes, 2);
  EXPECT_EQ(store.clears, 2);
}

TEST_F(Store, ForgetEntitiesEmptiesTheSlotsAndKeepsTheirNumber) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFlyweightAdministration store(10);
  for (int number = 1; number < 50; number++) MakeIn<TestData::A>(store, number);
  const std::size_t slots = store.GetEntityVectorSize();
  store.ForgetEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(store.GetEntityVectorSize(), slots);
  EXPECT_EQ(store.GetMaxEntityNumber(), 0);
  EXPECT_EQ(OccupiedSlots(store), 0u);
  EXPECT_EQ(Written(store), "");
}

TEST_F(Store, ForgetEntitiesDeletesWhatNeverGotANumber) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFlyweightAdministration store;
  TypeOf("A")->CreateInstance(static_cast<int>(store.GetAdminId()));
  store.ForgetEntities();
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST_F(Store, ForgetEntitiesEmptiesSlotsThatDeleteEntitiesLeft) {
  ExpFlyweightAdministration store(10);
  MakeIn<TestData::A>(store, 5);
  store.DeleteEntities();
  store.ForgetEntities();
  EXPECT_EQ(OccupiedSlots(store), 0u);
}

TEST_F(Store, ItsDestructorDeletesItsEntities) {
  const std::size_t before = ExpEntity::instanceCount;
  unsigned int id;
  {
    ExpFlyweightAdministration store;
    id = store.GetAdminId();
    MakeIn<TestData::A>(store, 1);
    MakeIn<TestData::Bottom>(store, 2);
    EXPECT_EQ(ExpEntity::instanceCount, before + 2);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(TypeOf("A")->GetInstanceList(id), nullptr);
}

TEST_F(Store, ItsDestructorLeavesTheEntitiesOfOthers) {
  const auto entity = Make<TestData::A>();
  {
    ExpFlyweightAdministration store;
    store.AddEntity(1, entity.get());
  }
  EXPECT_EQ(entity->ToString(), "A(0, 0);");
}

TEST_F(Store, EraseDoesNothing) {
  ExpFlyweightAdministration store;
  store.AddEntity(3, &entity_);
  EXPECT_EQ(store.Erase(), 0);
  EXPECT_EQ(store.GetEntity(3), &entity_);
  EXPECT_EQ(store.GetMaxEntityNumber(), 3);
}

TEST_F(Store, DumpEntityWritesAnEntityAndWhatItRefersTo) {
  ExpFlyweightAdministration store;
  MakeIn<TestData::Point>(store, 1);
  auto* node = MakeIn<TestData::Node>(store, 2);
  node->next.SetExpLink(1);
  node->choice.SetOmitted(true);
  MakeIn<TestData::Point>(store, 3);
  std::ostringstream os;
  store.DumpEntity(2, os);
  EXPECT_EQ(os.str(), "#1 = POINT('', ());\n#2 = NODE('', #1, (), *);\n");
}

}  // namespace
}  // namespace VELMAR
