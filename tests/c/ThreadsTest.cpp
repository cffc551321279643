// What docs/limits.md promises about threads, done at the same time as often as it takes for a thread
// sanitizer to see what is wrong (the preset tsan).
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ExpAttributeVisitor.h"
#include "ExpFile.h"
#include "ExpUtilities.h"
#include "Scanner.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using namespace VELMAR::TestData;

constexpr int kThreads = 4;
constexpr int kRounds = 20;

// Runs `work` in several threads at once, each with a number of its own, and `own` in this one meanwhile.
void Together(
    const std::function<void(int)>& work, const std::function<void()>& own = [] {}) {
  std::atomic<bool> begin{false};
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([&work, &begin, number] {
      while (!begin) std::this_thread::yield();
      work(number);
    });
  }
  begin = true;
  own();
  for (std::thread& thread : threads) thread.join();
}

// A value of every kind, made, changed, printed and deleted.
std::string UseValues(int number) {
  std::string text;
  ExpAggregation list;
  for (int i = 0; i < 50; ++i) {
    list.AddValue(new ExpReal(number + i / 8.0));
    list.AddValue(new ExpInteger(number * i));
    list.AddValue(new ExpLink(number + 1));
    list.AddValue(new ExpString("a text of more than fifteen \\X2\\03A9\\X0\\ characters \\PE\\\\S\\a"));
    auto* nested = new ExpAggregation;
    nested->AddValue(new ExpInteger(i));
    list.AddValue(nested);
    auto* select = new ExpSelect;
    select->AddExpSelectTypeName("LENGTH_MEASURE");
    select->SetExpReal(i);
    list.AddValue(select);
  }
  ExpSelect select;
  select.SetExpString("x");
  select.SetExpEnumeration("GREEN");
  ExpLogical logical;
  logical.SetExpEnumeration("u");
  ExpBoolean boolean;
  boolean.SetAsBool(number % 2 == 0);
  Colour colour;
  colour.SetExpEnumeration("blue");
  for (ExpAttribute* value : std::vector<ExpAttribute*>{&list, &select, &logical, &boolean, &colour}) {
    text += value->ToString();
  }
  EXPECT_EQ(ThrownText([&colour] { colour.SetExpEnumeration("PINK"); }),
            "ExpEnumeration Enumerationvalue not found: PINK");
  list.RemoveAllValues();
  return text + list.ToString();
}

TEST(Threads, UseValuesOfTheirOwn) {
  std::vector<std::string> expected;
  for (int number = 0; number < kThreads; ++number) expected.push_back(UseValues(number));
  Together([&expected](int number) {
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_EQ(UseValues(number), expected[static_cast<std::size_t>(number)]);
    }
  });
}

TEST(Threads, ScanTextsOfTheirOwn) {
  Together([](int number) {
    const std::string text = "#" + std::to_string(number) + "=A('b',1.5,ENDSCOPE);";
    for (int i = 0; i < kRounds; ++i) {
      Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
      EXPECT_EQ(std::wstring(scanner.Scan()->val), L"#" + std::to_wstring(number));
      int tokens = 1;
      while (scanner.Scan()->kind != Token::EoF) ++tokens;
      EXPECT_EQ(tokens, 11);
    }
  });
}

// Made and deleted by one thread: entities are counted.
TEST(Threads, UseEntitiesOfTheirOwnThatAreInNoStore) {
  std::vector<std::unique_ptr<AllKinds>> entities;
  for (int number = 0; number < kThreads; ++number) entities.push_back(Make<AllKinds>());
  Together([&entities](int number) {
    AllKinds& entity = *entities[static_cast<std::size_t>(number)];
    for (int i = 0; i < kRounds; ++i) {
      entity.SetEntityNumber(number + 1);
      entity.GetMember("integer")->SetExpInteger(i);
      entity.real.SetExpReal(i / 4.0);
      entity.text.SetExpString("\\X\\E9");
      entity.list.RemoveAllValues();
      entity.list.AddValue(new ExpLink(i + 1));
      entity.choice.SetExpInteger(i);
      MarkUnsetValues(entity);
      EXPECT_EQ(entity.ToString(), "#" + std::to_string(number + 1) + " = ALL_KINDS(" +
                                       ExpReal(i / 4.0).ToString() + ", " + std::to_string(i) +
                                       ", '\\X\\E9', $, (#" + std::to_string(i + 1) + "), $, $, $, " +
                                       std::to_string(i) + ");");
      EXPECT_EQ(entity.GetExpClassName(), "ALL_KINDS");
    }
  });
}

// ----------------------------------------------------------------------------------------------------
// populations

std::string TextWith(int count) {
  std::string text = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n";
  for (int i = 1; i <= count; i += 2) {
    const std::string number = std::to_string(i);
    const std::string next = std::to_string(i + 1);
    text +=
        "#" + number + "=NODE('it''s \\X2\\03A9\\X0\\',#" + next + ",(#" + next + ",#1),T(#" + next + "));\n";
    text += "#" + next + "=(A(" + number + ",2)B('b')POINT('',(1.5,2.,(3,'x'))));\n";
  }
  return text + "ENDSEC;\nEND-ISO-10303-21;\n";
}

void ReadInto(ExpFile& file, const std::string& text) {
  std::istringstream in(text);
  file.Read(in);
}

class CountingVisitor : public ExpAttributeVisitor {
 public:
  int count = 0;

 private:
  void VisitExpReal(ExpReal*) override { ++count; }
  void VisitExpInteger(ExpInteger*) override { ++count; }
  void VisitExpString(ExpString*) override { ++count; }
  void VisitExpLink(ExpLink*) override { ++count; }
  void VisitExpSelect(ExpSelect*) override { ++count; }
  void VisitExpAggregation(ExpAggregation* list) override {
    for (ExpAttribute* element : *list->GetExpAggregation()) element->Accept(this);
  }
};

// What may be done with a population that nobody changes, whatever is read elsewhere.
std::string LookAt(ExpFile& file) {
  std::ostringstream out;
  file.WriteDataSection(out);
  ExpFullEntityWriter(&file, out).WriteFullEntity(file.GetEntity(1));
  file.ExpAbstractObjectAdmin::DumpEntity(file.GetEntity(1), out);
  CountingVisitor visitor;
  for (int number = 0; number <= file.GetMaxEntityNumber(); ++number) {
    ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    out << entity->GetExpClassName() << entity->GetEntityNumber() << entity->GetExpSuperClasses()->size()
        << entity->GetMemberNames()->size() << entity->GetTypeNumberOfEntity();
    if (auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity)) {
      out << complex->GetEntities()->size() << complex->GetEntityByName("B")->ToString();
      continue;
    }
    for (int i = 0; i < entity->GetNofExplicitMembers(); ++i) entity->GetMember(i)->Accept(&visitor);
    auto* node = dynamic_cast<Node*>(entity);
    out << node->name.GetExpString() << file.GetEntity(node->next)->GetEntityNumber()
        << file.GetEntity(entity->GetMember("choice"))->GetEntityNumber() << node->choice.CheckType("T");
    EXPECT_EQ(EntityAs<Node>(entity), node);
    EXPECT_EQ(ResolveAll<ExpEntity>(file, node->others).size(), 2u);
  }
  out << visitor.count << file.GetSchemaName() << file.GetEntityVectorSize();
  return out.str();
}

TEST(Threads, LookAtOnePopulation) {
  ExpFile file;
  ReadInto(file, TextWith(100));
  const std::string expected = LookAt(file);
  EXPECT_GT(expected.size(), 10000u);
  Together([&file, &expected](int) {
    for (int i = 0; i < kRounds; ++i) {
      EXPECT_TRUE(LookAt(file) == expected);
      std::list<ExpEntity*> nodes;
      file.GetEntities(nodes, "NODE", true);
      EXPECT_EQ(nodes.size(), 50u);
    }
  });
}

TEST(Threads, LookAtOnePopulationWhileAnotherIsRead) {
  ExpFile file;
  ReadInto(file, TextWith(100));
  const std::string expected = LookAt(file);
  const std::string text = TextWith(60);
  Together(
      [&file, &expected](int) {
        for (int i = 0; i < kRounds; ++i) EXPECT_TRUE(LookAt(file) == expected);
      },
      [&text] {
        for (int i = 0; i < kRounds; ++i) {
          ExpFile other;
          ReadInto(other, text);
          std::istringstream in(text);
          other.Append(in);
          EXPECT_EQ(other.GetMaxEntityNumber(), 120);
          other.GetEntity(1)->GetMember("name")->SetExpString("changed");
          EXPECT_EQ(MarkUnsetValues(*other.GetEntity(1)), 0);
          std::list<ExpEntity*> nodes;
          other.GetEntities(nodes, "NODE", true);
          EXPECT_EQ(nodes.size(), 60u);
          other.CreateAndAddEntity("POINT");
          std::ostringstream out;
          other.Write(out);
          other.DumpEntity(1, out);
        }
      });
  EXPECT_TRUE(LookAt(file) == expected);
}

// One thread after the other: a population does not belong to the thread that has read it.
TEST(Threads, HandAPopulationOn) {
  auto file = std::make_unique<ExpFile>();
  std::thread([&file] { ReadInto(*file, TextWith(100)); }).join();
  std::thread([&file] { file->GetEntity(1)->GetMember("name")->SetExpString("changed"); }).join();
  EXPECT_EQ(file->GetEntity(1)->ToString(), "#1 = NODE('changed', #2, (#2, #1), T(#2));");
  std::thread([&file] { file.reset(); }).join();
  EXPECT_EQ(file, nullptr);
}

}  // namespace
