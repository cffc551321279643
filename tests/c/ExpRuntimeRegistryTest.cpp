// The registry of entity types: types, their instances, lookups and deletion.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "CapturedLog.h"
#include "ExpRuntimeRegistry.h"
#include "OrdinaryEntityType.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::CapturedLog;
using TestData::NewPlainType;
using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

static_assert(std::has_virtual_destructor_v<ExpRuntimeType>);
static_assert(std::is_base_of_v<ExpRuntimeType, ExpEntityRuntimeType>);

/// A type that counts its deletions.
class CountedType : public ExpEntityRuntimeType {
 public:
  CountedType(const std::string& name, const std::string& schema, int* deletions)
      : ExpEntityRuntimeType(name, schema, &TestData::Empty::New, 0, 0, 0, false, new Names, new Names,
                             new Names, 0),
        deletions_(deletions) {}
  ~CountedType() override { ++*deletions_; }

 private:
  int* deletions_;
};

Names SchemasOf(ExpRuntimeRegistry& registry) {
  std::ostringstream os;
  registry.DumpRegisteredSchemas(os);
  std::istringstream lines(os.str());
  Names schemas;
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 6, "      ") == 0) schemas.push_back(line.substr(6));
  }
  return schemas;
}

// -------------------------------------------------------------------------------------------- ExpRuntimeType

TEST(ExpRuntimeType, KeepsNameAndSchema) {
  ExpRuntimeType type("NAME", "SCHEMA");
  EXPECT_EQ(type.GetName(), "NAME");
  EXPECT_EQ(type.GetSchema(), "SCHEMA");
  EXPECT_EQ(type.GetImplementationTypeName(), "");
}

// -------------------------------------------------------------------------------------- ExpEntityRuntimeType

TEST(ExpEntityRuntimeType, KeepsWhatItIsGiven) {
  auto* supers = new Names{"VELMAR::ExpEntity", "S::A"};
  auto* subs = new Names{"S::C"};
  auto* members = new Names{"first", "second", "third"};
  const ExpEntityRuntimeType type("NAME", "SCHEMA", &TestData::Point::New, 3, 4, 5, true, supers, subs,
                                  members, 6);
  EXPECT_EQ(type.GetName(), "NAME");
  EXPECT_EQ(type.GetSchema(), "SCHEMA");
  EXPECT_EQ(type.GetNofExplicitMembers(), 3);
  EXPECT_EQ(type.GetNofInverseMembers(), 4);
  EXPECT_EQ(type.GetExternalMappingStartIndex(), 5);
  EXPECT_TRUE(type.InsertInObjTree());
  EXPECT_EQ(type.GetTypeNumber(), 6);
  EXPECT_EQ(type.GetSuperClasses(), supers);
  EXPECT_EQ(type.GetSubClasses(), subs);
  EXPECT_EQ(type.GetMemberNames(), members);
  EXPECT_THAT(*supers, ElementsAre("VELMAR::ExpEntity", "S::A"));
  EXPECT_THAT(*subs, ElementsAre("S::C"));
  EXPECT_THAT(*members, ElementsAre("first", "second", "third"));
}

TEST(ExpEntityRuntimeType, IndexesItsMembersByName) {
  const ExpEntityRuntimeType type("NAME", "SCHEMA", &TestData::Empty::New, 4, 0, 0, false, new Names,
                                  new Names, new Names{"first", "second", "first", "Second"}, 0);
  EXPECT_EQ(type.GetMemberIndex("first"), 0);  // of equal names the first
  EXPECT_EQ(type.GetMemberIndex("second"), 1);
  EXPECT_EQ(type.GetMemberIndex("Second"), 3);
  EXPECT_EQ(type.GetMemberIndex("FIRST"), -1);
  EXPECT_EQ(type.GetMemberIndex(""), -1);
}

TEST(ExpEntityRuntimeType, KnowsTheClassThatItsFactoryMakes) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  std::string expected = typeid(TestData::Empty).name();
  if (!expected.empty() && expected[0] == '*') expected.erase(0, 1);
  EXPECT_EQ(type->GetImplementationTypeName(), expected);
}

TEST(ExpEntityRuntimeType, AClassOfAnUnnamedNamespaceIsNamedWithoutAsterisk) {
  class Local : public ExpEntity {};
  const ExpEntityRuntimeType type(
      "X", "S", [] { return static_cast<ExpEntity*>(new Local); }, 0, 0, 0, false, new Names, new Names,
      new Names, 0);
  ASSERT_FALSE(type.GetImplementationTypeName().empty());
  EXPECT_NE(type.GetImplementationTypeName()[0], '*');
  std::string expected = typeid(Local).name();
  if (expected[0] == '*') expected.erase(0, 1);
  EXPECT_EQ(type.GetImplementationTypeName(), expected);
}

TEST(ExpEntityRuntimeType, ItsConstructionMakesAndDeletesOneInstance) {
  static int made;
  made = 0;
  const std::size_t before = ExpEntity::instanceCount;
  ExpEntityRuntimeType type(
      "X", "S",
      [] {
        made++;
        return static_cast<ExpEntity*>(new ExpEntity);
      },
      0, 0, 0, false, new Names, new Names, new Names, 0);
  EXPECT_EQ(made, 1);
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(type.GetInstanceList(static_cast<unsigned int>(-1)), nullptr);
  EXPECT_EQ(type.GetInstanceList(0), nullptr);
}

ExpEntity* MakeNothing() { return nullptr; }

TEST(ExpEntityRuntimeType, AFactoryThatMakesNothingIsABadTypeid) {
  EXPECT_THROW(ExpEntityRuntimeType("X", "S", &MakeNothing, 0, 0, 0, false, new Names{"super"},
                                    new Names{"sub"}, new Names{"member"}, 0),
               std::bad_typeid);
}

TEST(ExpEntityRuntimeType, AnErrorOfTheFactoryEndsTheConstruction) {
  EXPECT_THROW(ExpEntityRuntimeType(
                   "X", "S", []() -> ExpEntity* { throw std::runtime_error("no"); }, 0, 0, 0, false,
                   new Names{"super"}, new Names{"sub"}, new Names{"member"}, 0),
               std::runtime_error);
}

TEST(CreateInstance, GivesTheEntityItsType) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("SOME_NAME", "S"));
  const std::unique_ptr<ExpEntity> entity(type->CreateInstance(-1));
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(entity->GetExpClassName(), "SOME_NAME");
  EXPECT_EQ(entity->GetEntityNumber(), -1);
}

TEST(CreateInstance, WithANegativeIdRecordsNothing) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  const std::unique_ptr<ExpEntity> first(type->CreateInstance(-1));
  const std::unique_ptr<ExpEntity> second(type->CreateInstance(-2147483647 - 1));
  EXPECT_EQ(type->GetInstanceList(static_cast<unsigned int>(-1)), nullptr);
  EXPECT_EQ(type->GetInstanceList(2147483648u), nullptr);
}

TEST(CreateInstance, AppendsToTheListOfTheId) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  ExpEntity* first = type->CreateInstance(3);
  ExpEntity* second = type->CreateInstance(3);
  ExpEntity* zero = type->CreateInstance(0);
  ASSERT_NE(type->GetInstanceList(3), nullptr);
  EXPECT_THAT(*type->GetInstanceList(3), ElementsAre(first, second));
  EXPECT_THAT(*type->GetInstanceList(0), ElementsAre(zero));
  EXPECT_EQ(type->GetInstanceList(1), nullptr);
  type->DeleteInstanceList(3);
  type->DeleteInstanceList(0);
}

TEST(CreateInstance, OfAFactoryThatMakesNothingAnyMoreIsNull) {
  static bool makes;
  makes = true;
  ExpEntityRuntimeType type(
      "X", "S", [] { return makes ? new ExpEntity : nullptr; }, 0, 0, 0, false, new Names, new Names,
      new Names, 0);
  makes = false;
  EXPECT_EQ(type.CreateInstance(3), nullptr);
  EXPECT_EQ(type.CreateInstance(-1), nullptr);
  EXPECT_EQ(type.GetInstanceList(3), nullptr);
}

TEST(DeleteInstanceList, DeletesTheInstancesOfOneId) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  const std::size_t before = ExpEntity::instanceCount;
  type->CreateInstance(3);
  type->CreateInstance(3);
  type->CreateInstance(4);
  type->DeleteInstanceList(3);
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  EXPECT_EQ(type->GetInstanceList(3), nullptr);
  EXPECT_NE(type->GetInstanceList(4), nullptr);
  type->DeleteInstanceList(3);
  type->DeleteInstanceList(99);
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  type->DeleteInstanceList(4);
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(DeleteInstanceList, DestroysInstancesAsTheyAre) {
  static int destroyed;
  destroyed = 0;
  class Counted : public ExpEntity {
   public:
    ~Counted() override { destroyed++; }
  };
  ExpEntityRuntimeType type(
      "X", "S", [] { return static_cast<ExpEntity*>(new Counted); }, 0, 0, 0, false, new Names, new Names,
      new Names, 0);
  EXPECT_EQ(destroyed, 1);  // the instance made while the type was constructed
  type.CreateInstance(1);
  type.DeleteInstanceList(1);
  EXPECT_EQ(destroyed, 2);
}

TEST(DeleteInstanceList, PassesOverNulls) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  const std::size_t before = ExpEntity::instanceCount;
  type->CreateInstance(1);
  type->GetInstanceList(1)->push_front(nullptr);
  type->GetInstanceList(1)->push_back(nullptr);
  type->DeleteInstanceList(1);
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(DeleteInstanceList, StartsAfreshAfterwards) {
  const auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  type->CreateInstance(1);
  type->DeleteInstanceList(1);
  ExpEntity* entity = type->CreateInstance(1);
  EXPECT_THAT(*type->GetInstanceList(1), ElementsAre(entity));
  type->DeleteInstanceList(1);
}

TEST(ExpEntityRuntimeType, ItsDestructorLeavesTheInstances) {
  const std::size_t before = ExpEntity::instanceCount;
  auto type = std::unique_ptr<ExpEntityRuntimeType>(NewPlainType("X", "S"));
  const std::unique_ptr<ExpEntity> entity(type->CreateInstance(3));
  type.reset();
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  EXPECT_EQ(entity->GetEntityNumber(), -1);
}

// -------------------------------------------------------------------------------------- ExpRuntimeTypeVector

TEST(ExpRuntimeTypeVector, IsEmptyAtFirst) {
  ExpRuntimeTypeVector types;
  EXPECT_EQ(types.GetFirst(), nullptr);
  EXPECT_EQ(types.Get(""), nullptr);
  std::vector<ExpRuntimeType*> out;
  types.GetTypes(out);
  EXPECT_THAT(out, IsEmpty());
}

TEST(ExpRuntimeTypeVector, KeepsOneDefinitionPerSchema) {
  ExpRuntimeType first("X", "S"), second("X", "S"), other("X", "T");
  ExpRuntimeTypeVector types;
  EXPECT_TRUE(types.Add(&first));
  EXPECT_FALSE(types.Add(&second));
  EXPECT_FALSE(types.Add(&first));
  EXPECT_TRUE(types.Add(&other));
  EXPECT_EQ(types.Get("S"), &first);
  EXPECT_EQ(types.Get("T"), &other);
}

TEST(ExpRuntimeTypeVector, GetIsExact) {
  ExpRuntimeType type("X", "Schema");
  ExpRuntimeTypeVector types;
  types.Add(&type);
  EXPECT_EQ(types.Get("Schema"), &type);
  EXPECT_EQ(types.Get("SCHEMA"), nullptr);
  EXPECT_EQ(types.Get("Schem"), nullptr);
  EXPECT_EQ(types.Get("Schema "), nullptr);
}

TEST(ExpRuntimeTypeVector, IsInTheByteOrderOfTheSchemas) {
  ExpRuntimeType b("X", "B"), a("X", "a"), ab("X", "AB"), high("X", "\xC3\xA9"), empty("X", "");
  ExpRuntimeTypeVector types;
  for (ExpRuntimeType* type : {&high, &b, &a, &ab}) types.Add(type);
  EXPECT_EQ(types.GetFirst(), &ab);
  std::vector<ExpRuntimeType*> out = {&empty};  // appended to
  types.GetTypes(out);
  EXPECT_THAT(out, ElementsAre(&empty, &ab, &b, &a, &high));
  types.Add(&empty);
  EXPECT_EQ(types.GetFirst(), &empty);
}

TEST(ExpRuntimeTypeVector, DoesNotOwnTheTypes) {
  int deletions = 0;
  {
    CountedType type("X", "S", &deletions);
    {
      ExpRuntimeTypeVector types;
      types.Add(&type);
    }
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

// ---------------------------------------------------------------------------------------- ExpRuntimeRegistry

TEST(ExpRuntimeRegistry, GetInstanceGivesOneRegistry) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  ASSERT_NE(registry, nullptr);
  EXPECT_EQ(ExpRuntimeRegistry::GetInstance(), registry);
  EXPECT_EQ(ExpRuntimeRegistry::m_instance, registry);
}

TEST(ExpRuntimeRegistry, OneOfItsOwnIsEmpty) {
  CapturedLog log;
  ExpRuntimeRegistry registry;
  EXPECT_NE(ExpRuntimeRegistry::GetInstance(), &registry);
  EXPECT_EQ(registry.GetEntityRuntimeType("FILE_NAME"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("FILE_NAME", "VELMAR"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType(""), nullptr);
  registry.DeleteAllInstances(0);
  EXPECT_THAT(SchemasOf(registry), IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(RegisterSchema, KeepsTheOrderAndTakesEveryNameOnce) {
  ExpRuntimeRegistry registry;
  for (const char* schema : {"B", "A", "B", "b", "A"}) registry.RegisterSchema(schema);
  EXPECT_THAT(SchemasOf(registry), ElementsAre("B", "A", "b"));
}

TEST(RegisterEntityRuntimeType, UnderAnEmptyNameTakesTheNameOfTheType) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* type = NewPlainType("X", "S");
  registry.RegisterEntityRuntimeType(type, "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType(""), nullptr);
  EXPECT_THAT(SchemasOf(registry), ElementsAre("S"));
}

TEST(RegisterEntityRuntimeType, UnderAnotherNameIsFoundThereAlone) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* type = NewPlainType("X", "S");
  registry.RegisterEntityRuntimeType(type, "OTHER");
  EXPECT_EQ(registry.GetEntityRuntimeType("OTHER", "S"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("OTHER")->GetName(), "X");
}

TEST(RegisterEntityRuntimeType, IsFoundAfterALookupThatMissed) {
  ExpRuntimeRegistry registry;
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("X"), nullptr);
  ExpEntityRuntimeType* type = NewPlainType("X", "T");
  registry.RegisterEntityRuntimeType(type, "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), nullptr);
  ExpEntityRuntimeType* other = NewPlainType("X", "S");
  registry.RegisterEntityRuntimeType(other, "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), other);
}

TEST(RegisterEntityRuntimeType, ASecondDefinitionInOneSchemaIsNotFoundButOwned) {
  int first = 0, second = 0;
  {
    ExpRuntimeRegistry registry;
    auto* firstType = new CountedType("X", "S", &first);
    registry.RegisterEntityRuntimeType(firstType, "");
    registry.RegisterEntityRuntimeType(new CountedType("X", "S", &second), "");
    EXPECT_EQ(registry.GetEntityRuntimeType("X", "S"), firstType);
    EXPECT_EQ(registry.GetEntityRuntimeType("X"), firstType);
    EXPECT_THAT(SchemasOf(registry), ElementsAre("S"));
    EXPECT_EQ(first + second, 0);
  }
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 1);
}

TEST(ExpRuntimeRegistry, ItsDestructorDeletesEveryTypeOnce) {
  int deletions = 0;
  {
    ExpRuntimeRegistry registry;
    auto* type = new CountedType("X", "S", &deletions);
    registry.RegisterEntityRuntimeType(type, "");
    registry.RegisterEntityRuntimeType(type, "");
    registry.RegisterEntityRuntimeType(type, "OTHER");
    registry.RegisterAdditionalEntityNameForType("X", "S", "THIRD");
    registry.RegisterEntityRuntimeType(new CountedType("Y", "S", &deletions), "");
    registry.RegisterEntityRuntimeType(new CountedType("X", "T", &deletions), "");
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 3);
}

TEST(GetEntityRuntimeType, WithoutSchemaGivesTheSmallestSchemaName) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* b = NewPlainType("X", "SCHEMA_B");
  ExpEntityRuntimeType* a = NewPlainType("X", "SCHEMA_A");
  registry.RegisterEntityRuntimeType(b, "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X"), b);
  registry.RegisterEntityRuntimeType(a, "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X"), a);
  registry.RegisterEntityRuntimeType(NewPlainType("X", "SCHEMA_C"), "");
  EXPECT_EQ(registry.GetEntityRuntimeType("X"), a);
  EXPECT_THAT(SchemasOf(registry), ElementsAre("SCHEMA_B", "SCHEMA_A", "SCHEMA_C"));
}

struct Fallback {
  bool inSchema;
  bool inResources;
  bool inVelmar;
  const char* found;  // the schema of the definition that is found; empty for none
};

class SchemaFallback : public testing::TestWithParam<Fallback> {};

TEST_P(SchemaFallback, GivesThisDefinition) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "SCHEMA_A"), "");  // never found from SCHEMA_S
  if (GetParam().inVelmar) registry.RegisterEntityRuntimeType(NewPlainType("X", "VELMAR"), "");
  if (GetParam().inResources) registry.RegisterEntityRuntimeType(NewPlainType("X", "STEP_IR_AIC"), "");
  if (GetParam().inSchema) registry.RegisterEntityRuntimeType(NewPlainType("X", "SCHEMA_S"), "");
  CapturedLog log;
  ExpEntityRuntimeType* type = registry.GetEntityRuntimeType("X", "SCHEMA_S");
  if (*GetParam().found != '\0') {
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->GetSchema(), GetParam().found);
    EXPECT_THAT(log.lines, IsEmpty());
  } else {
    EXPECT_EQ(type, nullptr);
    EXPECT_THAT(log.lines, ElementsAre("the type: X isn't available for the schema: SCHEMA_S"));
    EXPECT_THAT(log.levels, ElementsAre(1));
    EXPECT_THAT(log.ended, ElementsAre(true));
  }
  EXPECT_EQ(registry.GetEntityRuntimeType("X")->GetSchema(), "SCHEMA_A");
}

INSTANTIATE_TEST_SUITE_P(
    GetEntityRuntimeType, SchemaFallback,
    testing::Values(Fallback{false, false, false, ""}, Fallback{true, false, false, "SCHEMA_S"},
                    Fallback{false, true, false, "STEP_IR_AIC"}, Fallback{false, false, true, "VELMAR"},
                    Fallback{true, true, false, "SCHEMA_S"}, Fallback{true, false, true, "SCHEMA_S"},
                    Fallback{false, true, true, "STEP_IR_AIC"}, Fallback{true, true, true, "SCHEMA_S"}),
    [](const auto& info) {
      return std::string(info.param.inSchema ? "InSchema" : "") +
             (info.param.inResources ? "InResources" : "") + (info.param.inVelmar ? "InVelmar" : "") +
             (*info.param.found == '\0' ? "Nowhere" : "");
    });

TEST(GetEntityRuntimeType, OfAnUnknownNameIsNullWithoutMessage) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "S"), "");
  CapturedLog log;
  EXPECT_EQ(registry.GetEntityRuntimeType("Y", "S"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("Y"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("", "S"), nullptr);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(GetEntityRuntimeType, ComparesNameAndSchemaExactly) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "SCHEMA"), "");
  EXPECT_EQ(registry.GetEntityRuntimeType("x", "SCHEMA"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("x"), nullptr);
  CapturedLog log;
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "schema"), nullptr);
  EXPECT_EQ(registry.GetEntityRuntimeType("X", ""), nullptr);
  EXPECT_THAT(log.lines, ElementsAre("the type: X isn't available for the schema: schema",
                                     "the type: X isn't available for the schema: "));
}

TEST(GetEntityRuntimeType, LogsEveryMiss) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "S"), "");
  CapturedLog log;
  for (int i = 0; i < 3; i++) registry.GetEntityRuntimeType("X", "T");
  EXPECT_EQ(log.lines.size(), 3u);
}

// ----------------------------------------------------------------------- RegisterAdditionalEntityNameForType

TEST(RegisterAdditionalEntityNameForType, FindsTheSameTypeUnderBothNames) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* type = NewPlainType("X", "SCHEMA_A");
  registry.RegisterEntityRuntimeType(type, "");
  registry.RegisterAdditionalEntityNameForType("X", "SCHEMA_A", "Y");
  EXPECT_EQ(registry.GetEntityRuntimeType("Y", "SCHEMA_A"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType("X", "SCHEMA_A"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType("Y"), type);
}

TEST(RegisterAdditionalEntityNameForType, ItsInstancesAreDeletedOnce) {
  static int destroyed;
  class Counted : public ExpEntity {
   public:
    ~Counted() override { destroyed++; }
  };
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(new ExpEntityRuntimeType(
                                         "X", "S", [] { return static_cast<ExpEntity*>(new Counted); }, 0, 0,
                                         0, false, new Names, new Names, new Names, 0),
                                     "");
  registry.RegisterAdditionalEntityNameForType("X", "S", "Y");
  destroyed = 0;
  registry.GetEntityRuntimeType("X", "S")->CreateInstance(3);
  registry.GetEntityRuntimeType("Y", "S")->CreateInstance(3);
  registry.DeleteAllInstances(3);
  EXPECT_EQ(destroyed, 2);
}

TEST(RegisterAdditionalEntityNameForType, OfAnUnknownTypeDoesNothing) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "S"), "");
  CapturedLog log;
  registry.RegisterAdditionalEntityNameForType("Z", "S", "Y");
  EXPECT_THAT(log.lines, IsEmpty());
  registry.RegisterAdditionalEntityNameForType("X", "T", "Y");
  EXPECT_THAT(log.lines, ElementsAre("the type: X isn't available for the schema: T"));
  EXPECT_EQ(registry.GetEntityRuntimeType("Y"), nullptr);
}

TEST(RegisterAdditionalEntityNameForType, FallsBackAsALookupDoes) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* type = NewPlainType("X", "STEP_IR_AIC");
  registry.RegisterEntityRuntimeType(type, "");
  registry.RegisterAdditionalEntityNameForType("X", "S", "Y");
  EXPECT_EQ(registry.GetEntityRuntimeType("Y"), type);
  EXPECT_EQ(registry.GetEntityRuntimeType("Y", "ANY"), type);
  EXPECT_THAT(SchemasOf(registry), ElementsAre("STEP_IR_AIC"));
}

TEST(RegisterAdditionalEntityNameForType, LeavesADefinitionThatIsThere) {
  ExpRuntimeRegistry registry;
  ExpEntityRuntimeType* y = NewPlainType("Y", "S");
  registry.RegisterEntityRuntimeType(NewPlainType("X", "S"), "");
  registry.RegisterEntityRuntimeType(y, "");
  registry.RegisterAdditionalEntityNameForType("X", "S", "Y");
  EXPECT_EQ(registry.GetEntityRuntimeType("Y", "S"), y);
}

// ---------------------------------------------------------------------------------------- DeleteAllInstances

TEST(DeleteAllInstances, DeletesTheInstancesOfOneIdInAllTypes) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpRuntimeRegistry registry;
  const std::vector<ExpEntityRuntimeType*> types = {NewPlainType("X", "S"), NewPlainType("X", "T"),
                                                    NewPlainType("Y", "S")};
  for (ExpEntityRuntimeType* type : types) {
    registry.RegisterEntityRuntimeType(type, "");
    type->CreateInstance(3);
    type->CreateInstance(3);
    type->CreateInstance(4);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before + 9);
  registry.DeleteAllInstances(3);
  EXPECT_EQ(ExpEntity::instanceCount, before + 3);
  for (ExpEntityRuntimeType* type : types) {
    EXPECT_EQ(type->GetInstanceList(3), nullptr);
    EXPECT_EQ(type->GetInstanceList(4)->size(), 1u);
  }
  registry.DeleteAllInstances(3);
  registry.DeleteAllInstances(77);
  EXPECT_EQ(ExpEntity::instanceCount, before + 3);
  registry.DeleteAllInstances(4);
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(DeleteAllInstances, GoesByName) {
  static std::vector<std::string> order;
  order.clear();
  class Noting : public ExpEntity {
   public:
    explicit Noting(const char* name) : name_(name) {}
    ~Noting() override { order.emplace_back(name_); }

   private:
    const char* name_;
  };
  ExpRuntimeRegistry registry;
  const auto add = [&](const std::string& name, const std::string& schema, ExpEntity* (*create)()) {
    auto* type =
        new ExpEntityRuntimeType(name, schema, create, 0, 0, 0, false, new Names, new Names, new Names, 0);
    registry.RegisterEntityRuntimeType(type, "");
    type->CreateInstance(1);
  };
  add("C", "S", [] { return static_cast<ExpEntity*>(new Noting("C")); });
  add("A", "T", [] { return static_cast<ExpEntity*>(new Noting("A in T")); });
  add("A", "S", [] { return static_cast<ExpEntity*>(new Noting("A in S")); });
  add("B", "S", [] { return static_cast<ExpEntity*>(new Noting("B")); });
  order.clear();
  registry.DeleteAllInstances(1);
  EXPECT_THAT(order, ElementsAre("A in S", "A in T", "B", "C"));
}

// An entity that notes its name and number when it is deleted.
class NotedAtItsEnd : public ExpEntity {
 public:
  explicit NotedAtItsEnd(const char* name) : name_(name) {}
  ~NotedAtItsEnd() override { Notes().push_back(name_ + std::to_string(GetEntityNumber())); }

  static std::vector<std::string>& Notes() {
    static std::vector<std::string> notes;
    return notes;
  }

 private:
  std::string name_;
};

// A registry with two types, A and B, as schema libraries have them.
class TypesOfASchemaLibrary : public ::testing::Test {
 protected:
  TypesOfASchemaLibrary() {
    a_ = Add("A", [] { return static_cast<ExpEntity*>(new NotedAtItsEnd("A")); });
    b_ = Add("B", [] { return static_cast<ExpEntity*>(new NotedAtItsEnd("B")); });
    NotedAtItsEnd::Notes().clear();
  }

  ExpEntityRuntimeType* Add(const std::string& name, ExpEntity* (*create)()) {
    auto* type = new OrdinaryEntityType(name, "S", create, 0, 0, 0, false, new Names, new Names, new Names, 0);
    registry_.RegisterEntityRuntimeType(type, "");
    return type;
  }

  static void Make(ExpEntityRuntimeType* type, std::initializer_list<int> numbers, unsigned int adminId = 1) {
    for (const int number : numbers) type->CreateInstance(static_cast<int>(adminId))->SetEntityNumber(number);
  }

  ExpRuntimeRegistry registry_;
  ExpEntityRuntimeType* a_;
  ExpEntityRuntimeType* b_;
};

TEST_F(TypesOfASchemaLibrary, LoseInstancesOfNeighbouringNumbersTogether) {
  Make(a_, {1, 3, 100000, 200000});
  Make(b_, {2, 100001});
  registry_.DeleteAllInstances(1);
  EXPECT_THAT(NotedAtItsEnd::Notes(), ElementsAre("A1", "A3", "B2", "A100000", "B100001", "A200000"));
}

TEST_F(TypesOfASchemaLibrary, LoseInstancesOfAllNumbers) {
  Make(a_, {-1, 0, 1, 5000, 2147483647, 4999, 1, 1073741823, -2147483647 - 1});
  Make(b_, {2147483647, 7});
  Make(b_, {8}, 2);
  registry_.DeleteAllInstances(1);
  EXPECT_EQ(NotedAtItsEnd::Notes().size(), 11u);
  EXPECT_EQ(a_->GetInstanceList(1), nullptr);
  EXPECT_EQ(b_->GetInstanceList(1), nullptr);
  ASSERT_NE(b_->GetInstanceList(2), nullptr);
  EXPECT_EQ(b_->GetInstanceList(2)->size(), 1u);
  registry_.DeleteAllInstances(2);
  EXPECT_EQ(NotedAtItsEnd::Notes().back(), "B8");
}

TEST_F(TypesOfASchemaLibrary, LoseInstancesBesideNulls) {
  Make(a_, {5});
  Make(b_, {5000});
  for (ExpEntityRuntimeType* type : {a_, b_}) {
    type->GetInstanceList(1)->push_front(nullptr);
    type->GetInstanceList(1)->push_back(nullptr);
  }
  registry_.DeleteAllInstances(1);
  EXPECT_THAT(NotedAtItsEnd::Notes(), ElementsAre("A5", "B5000"));
}

// Each step of the deletion looks at all types: there must not be one for each instance.
TEST_F(TypesOfASchemaLibrary, LoseSparseInstancesInFewSteps) {
  for (int i = 0; i < 20; ++i) Make(Add("T" + std::to_string(i), [] { return new ExpEntity; }), {2000000000});
  constexpr int kInstances = 1000;
  for (int i = 0; i < kInstances; ++i) {
    Make(a_, {i * 20000});
    Make(b_, {i * 20000 + 1});
  }
  registry_.DeleteAllInstances(1);
  const std::vector<std::string>& notes = NotedAtItsEnd::Notes();
  ASSERT_EQ(notes.size(), 2u * kInstances);
  int changes = 0;  // from A to B, and from B to A
  for (std::size_t i = 1; i < notes.size(); ++i) changes += notes[i][0] != notes[i - 1][0];
  EXPECT_LT(changes, kInstances / 4);
}

// --------------------------------------------------------------------------------- the process-wide registry

TEST(ExpRuntimeRegistry, TheProcessWideOneHoldsWhatLibrariesRegisterWhenLoaded) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  ASSERT_NE(registry->GetEntityRuntimeType("POINT", TestData::kTestSchema), nullptr);
  EXPECT_EQ(registry->GetEntityRuntimeType("POINT", TestData::kTestSchema)->GetSchema(),
            TestData::kTestSchema);
  ASSERT_NE(registry->GetEntityRuntimeType("POINT", "AUTOMOTIVE_DESIGN"), nullptr);
  EXPECT_EQ(registry->GetEntityRuntimeType("POINT", "AUTOMOTIVE_DESIGN")->GetSchema(), "AUTOMOTIVE_DESIGN");
  EXPECT_TRUE(registry->IsSchemaRegistered("VELMAR"));
}

TEST(ExpRuntimeRegistry, ManyTypesAreFoundByTheirNames) {
  ExpRuntimeRegistry registry;
  for (int i = 0; i < 2000; i++) {
    for (const char* schema : {"S", "T"}) {
      registry.RegisterEntityRuntimeType(NewPlainType("TYPE_" + std::to_string(i), schema), "");
    }
  }
  for (int i = 0; i < 2000; i++) {
    const std::string name = "TYPE_" + std::to_string(i);
    ASSERT_EQ(registry.GetEntityRuntimeType(name, "T")->GetName(), name);
    ASSERT_EQ(registry.GetEntityRuntimeType(name, "T")->GetSchema(), "T");
    ASSERT_EQ(registry.GetEntityRuntimeType(name)->GetSchema(), "S");
  }
}

}  // namespace
}  // namespace VELMAR
