// The entities of the HEADER section and the registration of the library's own types.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "ExpCustomEntities.h"
#include "ExpEntityVisitor.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"

namespace VELMAR {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Names = std::vector<std::string>;

static_assert(std::is_base_of_v<ExpEntity, FILE_INFORMATION>);
static_assert(std::is_base_of_v<FILE_INFORMATION, FILE_DESCRIPTION>);
static_assert(std::is_base_of_v<FILE_INFORMATION, FILE_NAME>);
static_assert(std::is_base_of_v<FILE_INFORMATION, FILE_SCHEMA>);
static_assert(std::is_base_of_v<ExpObjectFactory, ExpCustomEntitiesFactory>);
static_assert(std::is_same_v<decltype(&FILE_NAME::New), ExpEntity* (*)()>);

ExpRuntimeRegistry& Registry() { return *ExpRuntimeRegistry::GetInstance(); }

template <class T>
std::unique_ptr<T> MakeHeader(const char* name) {
  return std::unique_ptr<T>(dynamic_cast<T*>(TestData::TypeOf(name, "VELMAR")->CreateInstance(-1)));
}

// ---------------------------------------------------------------------------------------------- registration

struct TypeRow {
  const char* registeredName;
  const char* name;
  const std::type_info* type;
  Names supers;
  Names subs;
  Names members;
  int typeNumber;
};

class RegisteredType : public testing::TestWithParam<TypeRow> {};

TEST_P(RegisteredType, IsDescribedLikeThis) {
  const TypeRow& row = GetParam();
  ExpEntityRuntimeType* type = Registry().GetEntityRuntimeType(row.registeredName, "VELMAR");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->GetName(), row.name);
  EXPECT_EQ(type->GetSchema(), "VELMAR");
  EXPECT_EQ(*type->GetSuperClasses(), row.supers);
  EXPECT_EQ(*type->GetSubClasses(), row.subs);
  EXPECT_EQ(*type->GetMemberNames(), row.members);
  EXPECT_EQ(type->GetNofExplicitMembers(), static_cast<int>(row.members.size()));
  EXPECT_EQ(type->GetNofInverseMembers(), 0);
  EXPECT_EQ(type->GetExternalMappingStartIndex(), 0);
  EXPECT_FALSE(type->InsertInObjTree());
  EXPECT_EQ(type->GetTypeNumber(), row.typeNumber);
  EXPECT_EQ(type->GetImplementationTypeName(), row.type->name());
}

TEST_P(RegisteredType, MakesInstancesOfItsClass) {
  const TypeRow& row = GetParam();
  const std::unique_ptr<ExpEntity> entity(
      Registry().GetEntityRuntimeType(row.registeredName, "VELMAR")->CreateInstance(-1));
  ASSERT_NE(entity, nullptr);
  const ExpEntity& made = *entity;
  EXPECT_EQ(typeid(made), *row.type);
  EXPECT_EQ(entity->GetExpClassName(), row.name);
  EXPECT_EQ(entity->GetEntityNumber(), -1);
}

TEST_P(RegisteredType, IsFoundFromEverySchema) {
  ExpEntityRuntimeType* type = Registry().GetEntityRuntimeType(GetParam().registeredName, "VELMAR");
  EXPECT_EQ(Registry().GetEntityRuntimeType(GetParam().registeredName, "AUTOMOTIVE_DESIGN"), type);
  EXPECT_EQ(Registry().GetEntityRuntimeType(GetParam().registeredName, "NO_SUCH_SCHEMA"), type);
  EXPECT_EQ(Registry().GetEntityRuntimeType(GetParam().registeredName), type);
}

TEST_P(RegisteredType, HasItsMembersAtThePositionsOfTheirNames) {
  const std::unique_ptr<ExpEntity> entity(
      Registry().GetEntityRuntimeType(GetParam().registeredName, "VELMAR")->CreateInstance(-1));
  for (std::size_t i = 0; i < GetParam().members.size(); i++) {
    ExpAttribute* member = entity->GetMember(static_cast<int>(i));
    EXPECT_NE(member, nullptr);
    EXPECT_EQ(entity->GetMember(GetParam().members[i]), member);
  }
  EXPECT_EQ(entity->GetMember("no such member"), nullptr);
}

const Names kFileNameMembers = {"name",         "time_stamp",           "author",
                                "organization", "preprocessor_version", "originating_system",
                                "authorization"};

INSTANTIATE_TEST_SUITE_P(HeaderEntities, RegisteredType,
                         testing::Values(TypeRow{"ExpExternalMappingEntity",
                                                 "ExpExternalMappingEntity",
                                                 &typeid(ExpExternalMappingEntity),
                                                 {"VELMAR::ExpEntity"},
                                                 {},
                                                 {},
                                                 0},
                                         TypeRow{"EXPEXTERNALMAPPINGENTITY",
                                                 "ExpExternalMappingEntity",
                                                 &typeid(ExpExternalMappingEntity),
                                                 {"VELMAR::ExpEntity"},
                                                 {},
                                                 {},
                                                 0},
                                         TypeRow{"EXTERNAL_MAPPING_ENTITY",
                                                 "ExpExternalMappingEntity",
                                                 &typeid(ExpExternalMappingEntity),
                                                 {"VELMAR::ExpEntity"},
                                                 {},
                                                 {},
                                                 0},
                                         TypeRow{"FILE_INFORMATION",
                                                 "FILE_INFORMATION",
                                                 &typeid(FILE_INFORMATION),
                                                 {"VELMAR::ExpEntity"},
                                                 {"VELMAR::FILE_DESCRIPTION", "VELMAR::FILE_NAME",
                                                  "VELMAR::FILE_SCHEMA"},
                                                 {},
                                                 -1},
                                         TypeRow{"FILE_DESCRIPTION",
                                                 "FILE_DESCRIPTION",
                                                 &typeid(FILE_DESCRIPTION),
                                                 {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
                                                 {},
                                                 {"description", "implementation_level"},
                                                 -1},
                                         TypeRow{"FILE_NAME",
                                                 "FILE_NAME",
                                                 &typeid(FILE_NAME),
                                                 {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
                                                 {},
                                                 kFileNameMembers,
                                                 -1},
                                         TypeRow{"FILE_SCHEMA",
                                                 "FILE_SCHEMA",
                                                 &typeid(FILE_SCHEMA),
                                                 {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
                                                 {},
                                                 {"schema_identifiers"},
                                                 -1}),
                         [](const auto& info) { return std::string(info.param.registeredName); });

TEST(HeaderEntities, TheComplexInstanceHasOneDefinitionPerName) {
  // Three registrations of one name each; every type is in the schema once.
  for (const char* name :
       {"ExpExternalMappingEntity", "EXPEXTERNALMAPPINGENTITY", "EXTERNAL_MAPPING_ENTITY"}) {
    EXPECT_NE(Registry().GetEntityRuntimeType(name), nullptr) << name;
  }
  EXPECT_EQ(Registry().GetEntityRuntimeType("EXPEXTERNALMAPPINGENTITY", "VELMAR")->GetName(),
            "ExpExternalMappingEntity");
  EXPECT_EQ(Registry().GetEntityRuntimeType("expexternalmappingentity"), nullptr);
}

TEST(ExpCustomEntitiesFactory, IsMadeWhenTheLibraryIsLoaded) {
  EXPECT_TRUE(ExpCustomEntitiesFactory::isInstanceCreated);
  ASSERT_NE(ExpCustomEntitiesFactory::instance, nullptr);
  EXPECT_EQ(ExpCustomEntitiesFactory::GetInstance(), ExpCustomEntitiesFactory::instance);
}

TEST(ExpCustomEntitiesFactory, InitChangesNoDefinition) {
  ExpEntityRuntimeType* before = Registry().GetEntityRuntimeType("FILE_NAME", "VELMAR");
  ExpCustomEntitiesFactory::GetInstance()->Init();
  EXPECT_EQ(Registry().GetEntityRuntimeType("FILE_NAME", "VELMAR"), before);
}

// ------------------------------------------------------------------------------------------ the four classes

TEST(HeaderEntities, NewMakesADefaultInstanceWithoutNumber) {
  ExpEntity* (*const creators[])() = {&FILE_INFORMATION::New, &FILE_DESCRIPTION::New, &FILE_NAME::New,
                                      &FILE_SCHEMA::New};
  const std::type_info* const types[] = {&typeid(FILE_INFORMATION), &typeid(FILE_DESCRIPTION),
                                         &typeid(FILE_NAME), &typeid(FILE_SCHEMA)};
  for (int i = 0; i < 4; i++) {
    const std::size_t before = ExpEntity::instanceCount;
    const std::unique_ptr<ExpEntity> entity(creators[i]());
    EXPECT_EQ(ExpEntity::instanceCount, before + 1);
    const ExpEntity& made = *entity;
    EXPECT_EQ(typeid(made), *types[i]);
    EXPECT_EQ(entity->GetEntityNumber(), -1);
    EXPECT_NE(dynamic_cast<FILE_INFORMATION*>(entity.get()), nullptr);
  }
}

TEST(FileInformation, HasNoMembers) {
  FILE_INFORMATION information;
  for (int index : {0, 1, -1, 100}) EXPECT_EQ(information.GetMember(index), nullptr);
  information.ClearContent();
  EXPECT_EQ(MakeHeader<FILE_INFORMATION>("FILE_INFORMATION")->ToString(), "FILE_INFORMATION();");
}

TEST(FileDescription, GivesItsMembersInOrder) {
  FILE_DESCRIPTION description;
  EXPECT_EQ(description.GetMember(0), &description.Description());
  EXPECT_EQ(description.GetMember(1), &description.ImplementationLevel());
}

TEST(FileName, GivesItsMembersInOrder) {
  FILE_NAME name;
  ExpAttribute* const members[] = {
      &name.Name(),         &name.TimeStamp(),           &name.Author(),
      &name.Organization(), &name.PreprocessorVersion(), &name.OriginatingSystem(),
      &name.Authorization()};
  for (int i = 0; i < 7; i++) EXPECT_EQ(name.GetMember(i), members[i]);
}

TEST(FileSchema, GivesItsMember) {
  FILE_SCHEMA schema;
  EXPECT_EQ(schema.GetMember(0), &schema.SchemaIdentifiers());
}

TEST(HeaderEntities, MembersAreOfTheseKinds) {
  const auto kindOf = [](ExpAttribute* value) {
    if (typeid(*value) == typeid(ExpString)) return 's';
    return typeid(*value) == typeid(ExpAggregation) ? 'a' : '?';
  };
  const auto kindsOf = [&](ExpEntity& entity, int members) {
    std::string kinds;
    for (int i = 0; i < members; i++) kinds += kindOf(entity.GetMember(i));
    return kinds;
  };
  FILE_DESCRIPTION description;
  FILE_NAME name;
  FILE_SCHEMA schema;
  EXPECT_EQ(kindsOf(description, 2), "as");
  EXPECT_EQ(kindsOf(name, 7), "ssaasss");
  EXPECT_EQ(kindsOf(schema, 1), "a");
}

TEST(HeaderEntities, AreEmptyAtFirst) {
  EXPECT_EQ(MakeHeader<FILE_DESCRIPTION>("FILE_DESCRIPTION")->ToString(), "FILE_DESCRIPTION((), '');");
  EXPECT_EQ(MakeHeader<FILE_NAME>("FILE_NAME")->ToString(), "FILE_NAME('', '', (), (), '', '', '');");
  EXPECT_EQ(MakeHeader<FILE_SCHEMA>("FILE_SCHEMA")->ToString(), "FILE_SCHEMA(());");
}

TEST(HeaderEntities, PrintWhatTheyHold) {
  const auto name = MakeHeader<FILE_NAME>("FILE_NAME");
  name->Name().SetExpString("part.stp");
  name->TimeStamp().SetExpString("2024-02-14T09:00:00");
  name->Author().AddValue(new ExpString(R"(J\X\FCrgen)"));
  name->Author().AddValue(new ExpString("Ann"));
  name->Organization().AddValue(new ExpString(""));
  name->GetMember("preprocessor_version")->SetExpString("1");
  name->GetMember("originating_system")->SetNotProvided(true);
  name->GetMember("authorization")->SetExpString("it''s me");
  EXPECT_EQ(
      name->ToString(),
      R"(FILE_NAME('part.stp', '2024-02-14T09:00:00', ('J\X\FCrgen', 'Ann'), (''), '1', $, 'it''s me');)");
}

TEST(HeaderEntities, ClearContentEmptiesEveryAttribute) {
  const auto name = MakeHeader<FILE_NAME>("FILE_NAME");
  for (int i = 0; i < 7; i++) {
    if (i == 2 || i == 3) {
      name->GetMember(i)->AddValue(new ExpString("x"));
      name->GetMember(i)->AddValue(new ExpString("y"));
    } else {
      name->GetMember(i)->SetExpString("x");
    }
  }
  FILE_INFORMATION& information = *name;  // by the virtual operation
  information.ClearContent();
  EXPECT_EQ(name->ToString(), "FILE_NAME('', '', (), (), '', '', '');");
  EXPECT_EQ(name->Author().NofElements(), 0u);
  information.ClearContent();
  EXPECT_EQ(name->ToString(), "FILE_NAME('', '', (), (), '', '', '');");

  const auto description = MakeHeader<FILE_DESCRIPTION>("FILE_DESCRIPTION");
  description->Description().AddValue(new ExpString("x"));
  description->ImplementationLevel().SetExpString("2;1");
  EXPECT_EQ(description->ToString(), "FILE_DESCRIPTION(('x'), '2;1');");
  description->ClearContent();
  EXPECT_EQ(description->ToString(), "FILE_DESCRIPTION((), '');");

  const auto schema = MakeHeader<FILE_SCHEMA>("FILE_SCHEMA");
  schema->SchemaIdentifiers().AddValue(new ExpString("AUTOMOTIVE_DESIGN"));
  schema->ClearContent();
  EXPECT_EQ(schema->ToString(), "FILE_SCHEMA(());");
}

TEST(HeaderEntities, VisitorsPassOverThem) {
  class Visitor : public ExpEntityVisitor {
   public:
    void VisitExpExternalMappingEntity(ExpExternalMappingEntity*) override { visits++; }
    int visits = 0;
  };
  Visitor visitor;
  const auto name = MakeHeader<FILE_NAME>("FILE_NAME");
  const auto description = MakeHeader<FILE_DESCRIPTION>("FILE_DESCRIPTION");
  const auto schema = MakeHeader<FILE_SCHEMA>("FILE_SCHEMA");
  const auto information = MakeHeader<FILE_INFORMATION>("FILE_INFORMATION");
  for (ExpEntity* entity :
       std::initializer_list<ExpEntity*>{name.get(), description.get(), schema.get(), information.get()}) {
    const std::string before = entity->ToString();
    entity->Accept(&visitor);
    entity->Accept(nullptr);
    EXPECT_EQ(entity->ToString(), before);
  }
  EXPECT_EQ(visitor.visits, 0);
}

TEST(HeaderEntities, AreReachedThroughTheirBases) {
  const std::unique_ptr<ExpEntity> entity(FILE_NAME::New());
  auto* information = dynamic_cast<FILE_INFORMATION*>(entity.get());
  auto* name = dynamic_cast<FILE_NAME*>(entity.get());
  ASSERT_NE(information, nullptr);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(static_cast<ExpEntity*>(information), entity.get());
  EXPECT_EQ(information->GetMember(0), &name->Name());
  EXPECT_EQ(dynamic_cast<FILE_SCHEMA*>(entity.get()), nullptr);
}

TEST(HeaderEntities, AFileMakesThemInEverySchema) {
  for (Schema schema : {STEP_AP203, STEP_AP203E2, STEP_AP214, STEP_AP242, PLIB, ISO13399}) {
    ExpFile file(schema);
    for (const char* name : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "ExpExternalMappingEntity"}) {
      ExpEntity* entity = file.CreateEntity(name);
      ASSERT_NE(entity, nullptr) << name;
      EXPECT_EQ(entity->GetExpClassName(), name);
    }
    ExpRuntimeRegistry::GetInstance()->DeleteAllInstances(file.GetAdminId());
  }
}

}  // namespace
}  // namespace VELMAR
