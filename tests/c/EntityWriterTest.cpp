// The writer of one entity and all that it refers to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "ExpFlyweightAdministration.h"
#include "ExpUtilities.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::MakeIn;
using TestData::MakeList;
using TestData::Node;
using TestData::Point;
using testing::ElementsAre;
using testing::IsEmpty;

/// An entity of one reference, small enough for populations of a million.
class LinkOnly : public ExpEntity {
 public:
  static ExpEntity* New() { return new LinkOnly; }
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int) override { return &link; }
  int GetNofExplicitMembers() override { return 1; }
  const std::string& GetExpClassName() const override {
    static const std::string name = "L";
    return name;
  }
  ExpLink link;
};

/// Entities by number, owned; notes how references are resolved.
class VectorStore : public ExpFlyweightAdministration {
 public:
  template <class T>
  T* Add(int number, std::unique_ptr<T> entity) {
    T* added = entity.get();
    added->SetEntityNumber(number);
    AddEntity(number, added);
    owned_.push_back(std::move(entity));
    return added;
  }

 private:
  std::vector<std::unique_ptr<ExpEntity>> owned_;
};

class EntityWriter : public testing::Test {
 protected:
  Node* AddNode(int number, int next = -1) {
    auto* node = MakeIn<Node>(store_, number);
    if (next == -1) {
      node->next.SetNotProvided(true);
    } else {
      node->next.SetExpLink(next);
    }
    node->choice.SetNotProvided(true);
    return node;
  }
  Point* AddPoint(int number) { return MakeIn<Point>(store_, number); }

  ExpExternalMappingEntity* AddComplex(int number, const std::vector<ExpEntity*>& parts) {
    auto* complex = dynamic_cast<ExpExternalMappingEntity*>(
        TestData::TypeOf("ExpExternalMappingEntity")->CreateInstance(static_cast<int>(store_.GetAdminId())));
    for (ExpEntity* part : parts) complex->AddEntity(part);
    complex->SetEntityNumber(number);
    store_.AddEntity(number, complex);
    return complex;
  }
  /// A partial record NODE(next).
  Node* Part(int next) {
    auto* node =
        dynamic_cast<Node*>(TestData::TypeOf("NODE")->CreateInstance(static_cast<int>(store_.GetAdminId())));
    node->next.SetExpLink(next);
    node->choice.SetNotProvided(true);
    return node;
  }

  std::string Full(ExpEntity* entity) {
    std::ostringstream os;
    ExpFullEntityWriter(&store_, os).WriteFullEntity(entity);
    return os.str();
  }
  /// The numbers of the instances in the order in which they are written.
  std::vector<int> Order(ExpEntity* entity) { return OrderOf(Full(entity)); }
  static std::vector<int> OrderOf(const std::string& text) {
    std::vector<int> numbers;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      if (line[0] == '#') numbers.push_back(std::stoi(line.substr(1)));
    }
    return numbers;
  }

  ExpFlyweightAdministration store_;
};

// ------------------------------------------------------------------------------------------ simple instances

TEST_F(EntityWriter, WritesReferencedInstancesFirst) {
  AddNode(1);
  AddNode(2, 1);
  Node* third = AddNode(3, 2);
  EXPECT_EQ(Full(third),
            "#1 = NODE('', $, (), $);\n"
            "#2 = NODE('', #1, (), $);\n"
            "#3 = NODE('', #2, (), $);\n");
}

TEST_F(EntityWriter, WritesNothingThatIsNotReferenced) {
  AddNode(1);
  AddNode(3, 2);
  EXPECT_EQ(Full(AddNode(2, 1)), "#1 = NODE('', $, (), $);\n#2 = NODE('', #1, (), $);\n");
}

TEST_F(EntityWriter, WritesAnInstanceThatReferencesItselfOnce) {
  EXPECT_EQ(Full(AddNode(1, 1)), "#1 = NODE('', #1, (), $);\n");
}

TEST_F(EntityWriter, ACycleIsWrittenOnceAndItsFirstInstanceLast) {
  AddNode(1, 2);
  AddNode(2, 3);
  AddNode(3, 1);
  EXPECT_THAT(Order(store_.GetEntity(1)), ElementsAre(3, 2, 1));
  EXPECT_THAT(Order(store_.GetEntity(3)), ElementsAre(2, 1, 3));
}

TEST_F(EntityWriter, FollowsMembersInTheirOrder) {
  AddPoint(1);
  AddPoint(2);
  AddPoint(3);
  AddPoint(4);
  Node* node = AddNode(5, 4);
  node->others.AddValue(new ExpLink(3));
  node->others.AddValue(new ExpLink(1));
  node->choice.SetNotProvided(false);
  node->choice.SetExpLink(2);
  EXPECT_THAT(Order(node), ElementsAre(4, 3, 1, 2, 5));
}

TEST_F(EntityWriter, WritesWhatIsReferencedTwiceOnce) {
  AddPoint(1);
  AddNode(2, 1);
  Node* node = AddNode(3, 2);
  for (int number : {1, 2, 1}) node->others.AddValue(new ExpLink(number));
  EXPECT_THAT(Order(node), ElementsAre(1, 2, 3));
}

TEST_F(EntityWriter, WritesAnInstanceWithoutMembers) {
  EXPECT_EQ(Full(MakeIn<TestData::Empty>(store_, 4)), "#4 = EMPTY();\n");
}

TEST_F(EntityWriter, WritesTheTextOfTheVirtualToString) {
  class Own : public LinkOnly {
   public:
    std::string ToString() override { return "own\ntext"; }
  };
  VectorStore store;
  Own* own = store.Add(1, std::make_unique<Own>());
  std::ostringstream os;
  ExpFullEntityWriter(&store, os).WriteFullEntity(own);
  EXPECT_EQ(os.str(), "own\ntext\n");
}

TEST_F(EntityWriter, AnErrorOfAnInstanceReachesTheCaller) {
  AddNode(1)->choice.SetNotProvided(false);  // a select without value
  EXPECT_THROW(Full(AddNode(2, 1)), std::string);
}

TEST_F(EntityWriter, AfterAnErrorAComplexInstanceIsWrittenAgain) {
  Node* broken = AddNode(1);
  broken->choice.SetNotProvided(false);  // a select without value
  ExpExternalMappingEntity* complex = AddComplex(2, {Part(1)});
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  EXPECT_THROW(writer.WriteFullEntity(complex), std::string);
  EXPECT_EQ(os.str(), "");
  writer.WriteFullEntity(complex);  // #1 counts as written
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(2));
}

// ------------------------------------------------------------------------------------------ kinds of members

TEST_F(EntityWriter, NestedAggregationsAreFollowed) {
  for (int number : {1, 2, 3}) AddPoint(number);
  Node* node = AddNode(4);
  node->others.AddValue(MakeList({new ExpLink(3), MakeList({new ExpLink(1)}).release()}).release());
  node->others.AddValue(new ExpLink(2));
  EXPECT_THAT(Order(node), ElementsAre(3, 1, 2, 4));
}

TEST_F(EntityWriter, SelectsInAggregationsAreFollowed) {
  AddPoint(1);
  Node* node = AddNode(2);
  auto* select = new ExpSelect;
  select->AddExpSelectTypeName("NAME");
  select->SetExpLink(1);
  node->others.AddValue(select);
  EXPECT_EQ(Full(node), "#1 = POINT('', ());\n#2 = NODE('', $, (NAME(#1)), $);\n");
}

TEST_F(EntityWriter, ALinkThatLeadsNowhereIsPassedOver) {
  Node* node = AddNode(1, 77);
  node->others.AddValue(new ExpLink(78));
  node->others.AddValue(new ExpLink);
  EXPECT_EQ(Full(node), "#1 = NODE('', #77, (#78, #-1), $);\n");
}

TEST_F(EntityWriter, ASelectThatLeadsNowhereIsPassedOver) {
  Node* node = AddNode(1);
  node->choice.SetNotProvided(false);
  node->choice.SetExpLink(77);
  auto* select = new ExpSelect;
  select->SetExpLink(78);
  node->others.AddValue(select);
  EXPECT_EQ(Full(node), "#1 = NODE('', $, (#78), #77);\n");
}

TEST_F(EntityWriter, AMarkedLinkIsNotFollowed) {
  AddPoint(1);
  Node* node = AddNode(2, 1);
  node->next.SetOmitted(true);
  auto* link = new ExpLink(1);
  link->SetNotProvided(true);
  node->others.AddValue(link);
  EXPECT_EQ(Full(node), "#2 = NODE('', *, ($), $);\n");
}

TEST_F(EntityWriter, ASelectOfAnotherKindLeadsToNothing) {
  AddPoint(1);
  Node* node = AddNode(2);
  node->choice.SetNotProvided(false);
  node->choice.SetExpInteger(1);
  EXPECT_EQ(Full(node), "#2 = NODE('', $, (), 1);\n");
  Node* other = AddNode(3);
  other->choice.SetNotProvided(false);
  other->choice.AddValue(new ExpLink(1));
  EXPECT_EQ(Full(other), "#3 = NODE('', $, (), (#1));\n");
}

TEST_F(EntityWriter, AnUnsetSelectLeadsToNothing) {
  EXPECT_EQ(Full(AddNode(1)), "#1 = NODE('', $, (), $);\n");
}

TEST_F(EntityWriter, OtherKindsLeadToNothing) {
  for (int number : {0, 1, 2, 3}) AddPoint(number);
  auto* entity = MakeIn<TestData::AllKinds>(store_, 9);
  entity->real.SetExpReal(1.0);
  entity->integer.SetExpInteger(2);
  entity->text.SetExpString("#3");
  entity->link.SetNotProvided(true);
  entity->list.AddValue(new ExpInteger(1));
  entity->list.AddValue(new ExpString("#2"));
  entity->colour.SetExpEnumeration("RED");
  entity->logical.SetExpEnumeration("U");
  entity->boolean.SetExpEnumeration("T");
  entity->choice.SetExpReal(3.0);
  EXPECT_THAT(Order(entity), ElementsAre(9));
}

TEST_F(EntityWriter, NullMembersAndElementsArePassedOver) {
  class Own : public ExpEntity {
   public:
    Own() {
      list.AddValue(nullptr);
      list.AddValue(new ExpLink(1));
    }
    using ExpEntity::GetMember;
    ExpAttribute* GetMember(int index) override { return index == 1 ? &list : nullptr; }
    int GetNofExplicitMembers() override { return 3; }
    std::string ToString() override { return "#2 = OWN"; }
    ExpAggregation list;
  };
  VectorStore store;
  store.Add(1, std::make_unique<LinkOnly>());
  Own* own = store.Add(2, std::make_unique<Own>());
  std::ostringstream os;
  ExpFullEntityWriter(&store, os).WriteFullEntity(own);
  EXPECT_EQ(os.str(), "#1 = L(#-1);\n#2 = OWN\n");
}

TEST_F(EntityWriter, LinksAndSelectsAreResolvedByTheStore) {
  class Noting : public ExpFlyweightAdministration {
   public:
    ExpEntity* GetEntity(ExpAttribute* value) override {
      asked.push_back(value->ToString() + " as a value");
      return nullptr;
    }
    ExpEntity* GetEntity(int number) override {
      asked.push_back(std::to_string(number));
      return nullptr;
    }
    using ExpFlyweightAdministration::GetEntity;
    std::vector<std::string> asked;
  };
  Noting noting;
  Node* node = AddNode(1, 5);
  auto* element = new ExpSelect;
  element->SetExpLink(6);
  node->others.AddValue(element);
  node->others.AddValue(new ExpLink(7));
  node->choice.SetNotProvided(false);
  node->choice.SetExpLink(8);
  std::ostringstream os;
  ExpFullEntityWriter(&noting, os).WriteFullEntity(node);
  EXPECT_THAT(noting.asked, ElementsAre("#5 as a value", "6", "#7 as a value", "8"));
}

// ------------------------------------------------------------------------------------ one writer, many calls

TEST_F(EntityWriter, WritesASharedInstanceOnceBeforeTheFirst) {
  AddPoint(1);
  Node* second = AddNode(2, 1);
  Node* third = AddNode(3, 1);
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteFullEntity(third);
  writer.WriteFullEntity(second);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 3, 2));
}

TEST_F(EntityWriter, WritesNothingTheSecondTime) {
  AddPoint(1);
  Node* node = AddNode(2, 1);
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteFullEntity(node);
  const std::string first = os.str();
  writer.WriteFullEntity(node);
  writer.WriteFullEntity(store_.GetEntity(1));
  EXPECT_EQ(os.str(), first);
  EXPECT_THAT(OrderOf(first), ElementsAre(1, 2));
}

TEST_F(EntityWriter, AnotherWriterWritesAgain) {
  Node* node = AddNode(1);
  EXPECT_EQ(Full(node), Full(node));
  EXPECT_FALSE(Full(node).empty());
}

TEST_F(EntityWriter, GoesByTheNumberOfAnInstance) {
  VectorStore store;
  auto first = std::make_unique<LinkOnly>();
  auto second = std::make_unique<LinkOnly>();
  std::ostringstream os;
  ExpFullEntityWriter writer(&store, os);
  writer.WriteFullEntity(first.get());
  writer.WriteFullEntity(second.get());  // has no number either
  EXPECT_EQ(os.str(), "L(#-1);\n");
}

TEST_F(EntityWriter, WriteEntityWithoutSelfWritesTheReferencedAlone) {
  AddPoint(1);
  AddNode(2, 1);
  Node* third = AddNode(3, 2);
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteEntity(third, false);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2));
  writer.WriteEntity(third, true);  // it does not count as written
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2, 3));
}

TEST_F(EntityWriter, WriteEntityWithoutSelfOfOneWithoutMembersWritesNothing) {
  std::ostringstream os;
  ExpFullEntityWriter(&store_, os).WriteEntity(MakeIn<TestData::Empty>(store_, 1), false);
  EXPECT_EQ(os.str(), "");
}

TEST_F(EntityWriter, WriteEntityWithoutSelfLooksAtTheMembersOfOneThatIsWritten) {
  Node* node = AddNode(1);
  AddPoint(2);
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteFullEntity(node);
  node->others.AddValue(new ExpLink(2));
  writer.WriteFullEntity(node);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1));
  writer.WriteEntity(node, false);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2));
}

TEST_F(EntityWriter, WriteEntityWithoutSelfWritesItWhereItIsOnACycle) {
  AddNode(1, 2);
  AddNode(2, 1);
  std::ostringstream os;
  ExpFullEntityWriter(&store_, os).WriteEntity(store_.GetEntity(1), false);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2));
}

TEST_F(EntityWriter, WriteEntityWithSelfIsWriteFullEntity) {
  AddPoint(1);
  Node* node = AddNode(2, 1);
  std::ostringstream os;
  ExpFullEntityWriter(&store_, os).WriteEntity(node, true);
  EXPECT_EQ(os.str(), Full(node));
}

TEST_F(EntityWriter, WriteAggregationWritesWhatTheElementsReferTo) {
  AddPoint(1);
  AddNode(2, 1);
  auto* select = new ExpSelect;
  select->SetExpLink(2);
  const auto list =
      MakeList({new ExpInteger(4), select, nullptr, MakeList({new ExpLink(1)}).release(), new ExpLink(9)});
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteAggregation(list.get());
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2));
  writer.WriteAggregation(list.get());
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 2));
}

TEST_F(EntityWriter, WriteAggregationOfNullOrNothingDoesNothing) {
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteAggregation(nullptr);
  ExpAggregation empty;
  writer.WriteAggregation(&empty);
  EXPECT_EQ(os.str(), "");
}

// ----------------------------------------------------------------------------------------- complex instances

TEST_F(EntityWriter, WritesWhatThePartsOfAComplexInstanceReferTo) {
  AddPoint(1);
  AddPoint(2);
  auto* a = dynamic_cast<TestData::A*>(
      TestData::TypeOf("A")->CreateInstance(static_cast<int>(store_.GetAdminId())));
  ExpExternalMappingEntity* complex = AddComplex(5, {Part(2), a, Part(1)});
  EXPECT_EQ(Full(complex),
            "#2 = POINT('', ());\n"
            "#1 = POINT('', ());\n"
            "#5 = (\n   A (0, 0)\n   NODE ('', #2, (), $)\n);\n");
}

TEST_F(EntityWriter, AComplexInstanceWithoutSelfWritesTheReferencedAlone) {
  AddPoint(1);
  ExpExternalMappingEntity* complex = AddComplex(5, {Part(1)});
  std::ostringstream os;
  ExpFullEntityWriter(&store_, os).WriteEntity(complex, false);
  EXPECT_EQ(os.str(), "#1 = POINT('', ());\n");
}

TEST_F(EntityWriter, AComplexInstanceReachedTwiceIsWrittenTwice) {
  AddPoint(1);
  AddComplex(5, {Part(1)});
  Node* node = AddNode(6, 5);
  node->others.AddValue(new ExpLink(5));
  EXPECT_THAT(Order(node), ElementsAre(1, 5, 5, 6));
}

TEST_F(EntityWriter, AComplexInstanceIsWrittenAgainByTheSameWriter) {
  AddPoint(1);
  ExpExternalMappingEntity* complex = AddComplex(5, {Part(1)});
  std::ostringstream os;
  ExpFullEntityWriter writer(&store_, os);
  writer.WriteFullEntity(complex);
  writer.WriteFullEntity(complex);
  EXPECT_THAT(OrderOf(os.str()), ElementsAre(1, 5, 5));
}

TEST_F(EntityWriter, AComplexInstanceThatReferencesItselfIsWrittenOnce) {
  ExpExternalMappingEntity* complex = AddComplex(5, {Part(5)});
  EXPECT_THAT(Order(complex), ElementsAre(5));
}

TEST_F(EntityWriter, ACycleThroughComplexInstancesEnds) {
  ExpExternalMappingEntity* first = AddComplex(1, {Part(2)});
  AddComplex(2, {Part(3)});
  AddNode(3, 1);
  EXPECT_THAT(Order(first), ElementsAre(3, 2, 1));
  EXPECT_THAT(Order(store_.GetEntity(3)), ElementsAre(2, 1, 3));
}

TEST_F(EntityWriter, ACycleThroughSelectsAndAggregationsOfComplexInstancesEnds) {
  Node* part = Part(-1);
  auto* select = new ExpSelect;
  select->SetExpLink(2);
  part->others.AddValue(select);
  part->others.AddValue(MakeList({new ExpLink(2)}).release());
  AddComplex(1, {part});
  AddNode(2, 1);
  EXPECT_THAT(Order(store_.GetEntity(1)), ElementsAre(2, 1));
}

TEST_F(EntityWriter, AComplexInstanceIsWrittenAgainOnceItIsDone) {
  // #1 is met while it is being written (from #3, passed over), and again afterwards (from #4).
  AddComplex(1, {Part(3)});
  AddNode(3, 1);
  Node* node = AddNode(4, 1);
  node->others.AddValue(new ExpLink(1));
  EXPECT_THAT(Order(node), ElementsAre(3, 1, 1, 4));
}

TEST_F(EntityWriter, AnEmptyComplexInstanceIsWritten) { EXPECT_EQ(Full(AddComplex(5, {})), "#5 = (\n);\n"); }

// --------------------------------------------------------------------------------------------- deep and long

TEST_F(EntityWriter, AChainOfAMillionInstancesIsWritten) {
  constexpr int kLength = 1000000;
  VectorStore store;
  for (int number = 1; number <= kLength; number++) {
    store.Add(number, std::make_unique<LinkOnly>())->link.SetExpLink(number - 1);
  }
  std::ostringstream os;
  store.DumpEntity(kLength, os);
  const std::string text = os.str();
  std::string expected;
  for (int number = 1; number <= kLength; number++) {
    expected += "#" + std::to_string(number) + " = L(#" + std::to_string(number - 1) + ");\n";
  }
  EXPECT_TRUE(text == expected);
}

TEST_F(EntityWriter, ACycleOfAMillionInstancesIsWrittenOnce) {
  constexpr int kLength = 1000000;
  VectorStore store;
  for (int number = 1; number <= kLength; number++) {
    store.Add(number, std::make_unique<LinkOnly>())->link.SetExpLink(number % kLength + 1);
  }
  std::ostringstream os;
  store.DumpEntity(1, os);
  const std::string text = os.str();
  EXPECT_EQ(static_cast<int>(std::count(text.begin(), text.end(), '\n')), kLength);
  EXPECT_EQ(text.substr(0, text.find('\n')), "#1000000 = L(#1);");
  EXPECT_EQ(text.substr(text.rfind('#', text.size() - 6)), "#1 = L(#2);\n");
}

TEST_F(EntityWriter, AnInstanceWithAMillionReferencesIsWritten) {
  constexpr int kNumber = 1000000;
  AddPoint(1);
  Node* node = AddNode(2);
  for (int i = 0; i < kNumber; i++) node->others.AddValue(new ExpLink(1));
  EXPECT_THAT(Order(node), ElementsAre(1, 2));
}

TEST_F(EntityWriter, AChainThroughComplexInstancesAggregationsAndSelectsIsWritten) {
  constexpr int kLength = 100000;
  std::vector<int> expected;
  AddPoint(1);
  for (int number = 2; number <= kLength; number++) {
    switch (number % 4) {
      case 0:
        AddComplex(number, {Part(number - 1)});
        break;
      case 1:
        AddNode(number)->others.AddValue(MakeList({new ExpLink(number - 1)}).release());
        break;
      case 2: {
        Node* node = AddNode(number);
        node->choice.SetNotProvided(false);
        node->choice.SetExpLink(number - 1);
        break;
      }
      default:
        AddNode(number, number - 1);
    }
  }
  for (int number = 1; number <= kLength; number++) expected.push_back(number);
  EXPECT_TRUE(Order(store_.GetEntity(kLength)) == expected);
}

TEST_F(EntityWriter, AnAggregationNestedAMillionDeepIsFollowed) {
  AddPoint(1);
  Node* node = AddNode(2);
  auto innermost = MakeList({new ExpLink(1)});
  for (int i = 0; i < 1000000; i++) innermost = MakeList({innermost.release()});
  node->others.AddValue(innermost.release());
  EXPECT_THAT(Order(node), ElementsAre(1, 2));
  std::ostringstream os;
  ExpFullEntityWriter(&store_, os).WriteAggregation(&node->others);
  EXPECT_EQ(os.str(), "#1 = POINT('', ());\n");
}

}  // namespace
}  // namespace VELMAR
