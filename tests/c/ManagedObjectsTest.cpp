// Managed objects, the utility registry and the lists of names of the factories.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The address as a standard stream prints a pointer.
std::string Address(const void* object) {
  std::ostringstream text;
  text << object;
  return text.str();
}

class Counted : public ExpUserData {
 public:
  explicit Counted(int* deletions) : deletions_(deletions) {}
  ~Counted() override { ++*deletions_; }
  std::string ToString() override { return "counted"; }

 private:
  int* deletions_;
};

ExpObjectHandleAdmin& Handles() { return *ExpObjectHandleAdmin::GetInstance(); }

// ---------------------------------------------------------------------------------------------
// ExpManagedObject

TEST(ExpManagedObject, ToStringGivesTheAddress) {
  ExpManagedObject object;
  EXPECT_EQ(object.ToString(), "ExpManagedObject: " + Address(&object));
}

TEST(ExpUserData, ToStringGivesTheAddress) {
  ExpUserData data;
  EXPECT_EQ(data.ToString(), "ExpUserData: " + Address(&data));
}

TEST(ExpUserData, ToStringIsReachedThroughTheBase) {
  ExpUserData data;
  ExpManagedObject& base = data;
  EXPECT_EQ(base.ToString(), "ExpUserData: " + Address(&data));
}

// -----------------------------------------------------------------------------------------
// ExpObjectHandleAdmin

TEST(ExpObjectHandleAdmin, ThereIsOneInstance) {
  EXPECT_NE(ExpObjectHandleAdmin::GetInstance(), nullptr);
  EXPECT_EQ(ExpObjectHandleAdmin::GetInstance(), ExpObjectHandleAdmin::GetInstance());
  EXPECT_EQ(ExpObjectHandleAdmin::m_admin, ExpObjectHandleAdmin::GetInstance());
}

TEST(ExpObjectHandleAdmin, AnObjectIsValidForExactlyItsLifetime) {
  auto data = std::make_unique<ExpUserData>();
  ExpUserData* const handle = data.get();
  EXPECT_TRUE(Handles().IsObjectValid(handle));
  data.reset();
  EXPECT_FALSE(Handles().IsObjectValid(handle));
}

TEST(ExpObjectHandleAdmin, NullIsNotValid) { EXPECT_FALSE(Handles().IsObjectValid(nullptr)); }

TEST(ExpObjectHandleAdmin, AnUnknownPointerIsNotFollowed) {
  EXPECT_FALSE(Handles().IsObjectValid(reinterpret_cast<ExpManagedObject*>(std::uintptr_t{0x18})));
}

TEST(ExpObjectHandleAdmin, ObjectsOnTheStackAreRegisteredToo) {
  ExpManagedObject* handle;
  {
    ExpManagedObject object;
    handle = &object;
    EXPECT_TRUE(Handles().IsObjectValid(handle));
  }
  EXPECT_FALSE(Handles().IsObjectValid(handle));
}

TEST(ExpObjectHandleAdmin, NullIsNeitherRegisteredNorDeregistered) {
  ExpObjectHandleAdmin handles;
  handles.RegisterObject(nullptr);
  handles.DeregisterObject(nullptr);
  EXPECT_FALSE(handles.IsObjectValid(nullptr));
  EXPECT_EQ(handles.ToString(), "");
}

TEST(ExpObjectHandleAdmin, AnObjectRegisteredTwiceIsThereOnce) {
  ExpManagedObject object;
  ExpObjectHandleAdmin handles;
  handles.RegisterObject(&object);
  handles.RegisterObject(&object);
  EXPECT_EQ(handles.ToString(), object.ToString() + "\n");
  handles.DeregisterObject(&object);
  EXPECT_FALSE(handles.IsObjectValid(&object));
}

TEST(ExpObjectHandleAdmin, DeregisteringForgetsTheObjectWithoutDeletingIt) {
  int deletions = 0;
  {
    Counted object(&deletions);
    Handles().DeregisterObject(&object);
    EXPECT_FALSE(Handles().IsObjectValid(&object));
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(object.ToString(), "counted");
  }
  EXPECT_EQ(deletions, 1);
}

TEST(ExpObjectHandleAdmin, DeregisteringAnUnknownObjectDoesNothing) {
  ExpManagedObject known;
  ExpManagedObject unknown;
  ExpObjectHandleAdmin handles;
  handles.RegisterObject(&known);
  handles.DeregisterObject(&unknown);
  EXPECT_TRUE(handles.IsObjectValid(&known));
  handles.DeregisterObject(&known);
  handles.DeregisterObject(&known);
  EXPECT_EQ(handles.ToString(), "");
}

TEST(ExpObjectHandleAdmin, ToStringListsTheObjectsInTheOrderOfTheirAddresses) {
  ExpUserData objects[3];
  ExpObjectHandleAdmin handles;
  handles.RegisterObject(&objects[2]);
  handles.RegisterObject(&objects[0]);
  handles.RegisterObject(&objects[1]);
  EXPECT_EQ(handles.ToString(),
            objects[0].ToString() + "\n" + objects[1].ToString() + "\n" + objects[2].ToString() + "\n");
}

TEST(ExpObjectHandleAdmin, ToStringCallsTheObjectsOwnOperation) {
  int deletions = 0;
  Counted object(&deletions);
  ExpObjectHandleAdmin handles;
  handles.RegisterObject(&object);
  EXPECT_EQ(handles.ToString(), "counted\n");
}

TEST(ExpObjectHandleAdmin, EraseAllDeletesEveryObjectOnce) {
  int deletions[3] = {0, 0, 0};
  ExpManagedObject* objects[3];
  for (int i = 0; i < 3; ++i) objects[i] = new Counted(&deletions[i]);
  Handles().EraseAll();
  EXPECT_THAT(deletions, ElementsAre(1, 1, 1));
  for (ExpManagedObject* object : objects) EXPECT_FALSE(Handles().IsObjectValid(object));
  EXPECT_EQ(Handles().ToString(), "");
}

TEST(ExpObjectHandleAdmin, EraseAllOfNothingDoesNothing) {
  Handles().EraseAll();
  Handles().EraseAll();
  EXPECT_EQ(Handles().ToString(), "");
}

TEST(ExpObjectHandleAdmin, EraseAllForgetsAnObjectBeforeItDeletesIt) {
  class Asks : public ExpUserData {
   public:
    explicit Asks(bool* valid) : valid_(valid) {}
    ~Asks() override { *valid_ = Handles().IsObjectValid(this); }

   private:
    bool* valid_;
  };
  bool valid = true;
  new Asks(&valid);
  Handles().EraseAll();
  EXPECT_FALSE(valid);
}

TEST(ExpObjectHandleAdmin, EraseAllGoesByAscendingAddresses) {
  class Reports : public ExpUserData {
   public:
    explicit Reports(std::vector<const void*>* order) : order_(order) {}
    ~Reports() override { order_->push_back(this); }

   private:
    std::vector<const void*>* order_;
  };
  std::vector<const void*> order;
  for (int i = 0; i < 8; ++i) new Reports(&order);
  Handles().EraseAll();
  ASSERT_EQ(order.size(), 8u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end(), std::less<>()));
}

TEST(ExpObjectHandleAdmin, AnObjectMayDeleteAnotherWhileAllAreErased) {
  class Owner : public ExpUserData {
   public:
    Owner(ExpManagedObject* owned, int* deletions) : owned_(owned), deletions_(deletions) {}
    ~Owner() override {
      ++*deletions_;
      if (Handles().IsObjectValid(owned_)) delete owned_;
    }

   private:
    ExpManagedObject* owned_;
    int* deletions_;
  };
  int owners = 0;
  int owned = 0;
  // Both orders of addresses occur among several pairs, or at least one of them does.
  for (int i = 0; i < 4; ++i) new Owner(new Counted(&owned), &owners);
  Handles().EraseAll();
  EXPECT_EQ(owners, 4);
  EXPECT_EQ(owned, 4);
}

TEST(ExpObjectHandleAdmin, ItsDestructorDeletesNoObject) {
  int deletions = 0;
  Counted object(&deletions);
  {
    ExpObjectHandleAdmin handles;
    handles.RegisterObject(&object);
  }
  EXPECT_EQ(deletions, 0);
  EXPECT_TRUE(Handles().IsObjectValid(&object));
}

// ---------------------------------------------------------------------------------------------------
// ExpUtility

class Utility : public testing::Test {
 protected:
  void SetUp() override { before_ = ExpUtility::RegisterImplementation(nullptr); }
  void TearDown() override { ExpUtility::RegisterImplementation(before_); }

 private:
  ExpUtility* before_ = nullptr;
};

TEST_F(Utility, RegisteringReturnsWhatWasRegisteredBefore) {
  ExpUtility a;
  ExpUtility b;
  EXPECT_EQ(ExpUtility::RegisterImplementation(&a), nullptr);
  EXPECT_EQ(ExpUtility::RegisterImplementation(&b), &a);
  EXPECT_EQ(ExpUtility::GetInstance(false), &b);
  EXPECT_EQ(ExpUtility::GetInstance(true), &b);
  EXPECT_EQ(ExpUtility::m_implementation, &b);
}

TEST_F(Utility, RegisteringNullUnregisters) {
  ExpUtility a;
  ExpUtility::RegisterImplementation(&a);
  EXPECT_EQ(ExpUtility::RegisterImplementation(nullptr), &a);
  EXPECT_EQ(ExpUtility::GetInstance(true), nullptr);
}

TEST_F(Utility, WithoutImplementationNullIsReturnedWhereItIsAllowed) {
  EXPECT_EQ(ExpUtility::GetInstance(true), nullptr);
}

TEST_F(Utility, WithoutImplementationGetInstanceThrowsWhereNullIsNotAllowed) {
  try {
    ExpUtility::GetInstance(false);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "No implementation registered for the ExpUtility");
  }
}

// ---------------------------------------------------------------------------------------------
// ExpObjectFactory

TEST(ExpObjectFactory, AddStartsANewListAndAppends) {
  std::vector<std::string>* names = nullptr;
  ExpObjectFactory::Add(names, "", true);
  ASSERT_NE(names, nullptr);
  const std::unique_ptr<std::vector<std::string>> owner(names);
  EXPECT_THAT(*names, IsEmpty());
  ExpObjectFactory::Add(names, "X", false);
  ExpObjectFactory::Add(names, "Y", false);
  EXPECT_EQ(names, owner.get());
  EXPECT_THAT(*names, ElementsAre("X", "Y"));
}

TEST(ExpObjectFactory, AddAppendsTheFirstNameToANewList) {
  std::vector<std::string>* names = nullptr;
  ExpObjectFactory::Add(names, "X", true);
  const std::unique_ptr<std::vector<std::string>> owner(names);
  EXPECT_THAT(*names, ElementsAre("X"));
}

TEST(ExpObjectFactory, AddIgnoresAnEmptyName) {
  std::vector<std::string> list = {"X"};
  std::vector<std::string>* names = &list;
  ExpObjectFactory::Add(names, "", false);
  EXPECT_EQ(names, &list);
  EXPECT_THAT(list, ElementsAre("X"));
  names = nullptr;
  ExpObjectFactory::Add(names, "", false);
  EXPECT_EQ(names, nullptr);
}

TEST(ExpObjectFactory, AddLeavesTheListBeforeToItsOwner) {
  std::vector<std::string> before = {"X"};
  std::vector<std::string>* names = &before;
  ExpObjectFactory::Add(names, "Y", true);
  const std::unique_ptr<std::vector<std::string>> owner(names);
  EXPECT_NE(names, &before);
  EXPECT_THAT(before, ElementsAre("X"));
  EXPECT_THAT(*names, ElementsAre("Y"));
}

}  // namespace
}  // namespace VELMAR
