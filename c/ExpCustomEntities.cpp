#include "ExpCustomEntities.h"

#include <cstddef>
#include <initializer_list>

#include "ExpRuntimeRegistry.h"
#include "OrdinaryEntityType.h"

namespace VELMAR {

namespace {

template <std::size_t N>
ExpAttribute* MemberAt(ExpAttribute* const (&members)[N], int index) {
  return index >= 0 && static_cast<std::size_t>(index) < N ? members[index] : nullptr;
}

}  // namespace

// ------------------------------------------------------------------------------------------------ FILE_INFORMATION

ExpEntity* FILE_INFORMATION::New() { return new FILE_INFORMATION; }
FILE_INFORMATION::~FILE_INFORMATION() = default;
ExpAttribute* FILE_INFORMATION::GetMember(int) { return nullptr; }
void FILE_INFORMATION::Accept(ExpEntityVisitor*) {}
void FILE_INFORMATION::ClearContent() {}

// ------------------------------------------------------------------------------------------------ FILE_DESCRIPTION

ExpEntity* FILE_DESCRIPTION::New() { return new FILE_DESCRIPTION; }
FILE_DESCRIPTION::FILE_DESCRIPTION() : members_{&description_, &implementationLevel_} {}
FILE_DESCRIPTION::~FILE_DESCRIPTION() = default;
ExpAttribute* FILE_DESCRIPTION::GetMember(int index) { return MemberAt(members_, index); }
void FILE_DESCRIPTION::Accept(ExpEntityVisitor*) {}

void FILE_DESCRIPTION::ClearContent() {
  description_.RemoveAllValues();
  implementationLevel_.SetExpString("");
}

// ------------------------------------------------------------------------------------------------------- FILE_NAME

ExpEntity* FILE_NAME::New() { return new FILE_NAME; }
FILE_NAME::FILE_NAME()
    : members_{&name_,
               &timeStamp_,
               &author_,
               &organization_,
               &preprocessorVersion_,
               &originatingSystem_,
               &authorization_} {}
FILE_NAME::~FILE_NAME() = default;
ExpAttribute* FILE_NAME::GetMember(int index) { return MemberAt(members_, index); }
void FILE_NAME::Accept(ExpEntityVisitor*) {}

void FILE_NAME::ClearContent() {
  for (ExpString* text : {&name_, &timeStamp_, &preprocessorVersion_, &originatingSystem_, &authorization_}) {
    text->SetExpString("");
  }
  author_.RemoveAllValues();
  organization_.RemoveAllValues();
}

// ----------------------------------------------------------------------------------------------------- FILE_SCHEMA

ExpEntity* FILE_SCHEMA::New() { return new FILE_SCHEMA; }
FILE_SCHEMA::FILE_SCHEMA() : members_{&schemaIdentifiers_} {}
FILE_SCHEMA::~FILE_SCHEMA() = default;
ExpAttribute* FILE_SCHEMA::GetMember(int index) { return MemberAt(members_, index); }
void FILE_SCHEMA::Accept(ExpEntityVisitor*) {}
void FILE_SCHEMA::ClearContent() { schemaIdentifiers_.RemoveAllValues(); }

// ---------------------------------------------------------------------------------------- ExpCustomEntitiesFactory

ExpCustomEntitiesFactory* ExpCustomEntitiesFactory::instance = nullptr;
bool ExpCustomEntitiesFactory::isInstanceCreated = false;

ExpCustomEntitiesFactory::~ExpCustomEntitiesFactory() = default;

ExpCustomEntitiesFactory* ExpCustomEntitiesFactory::GetInstance() {
  if (!isInstanceCreated) {
    instance = new ExpCustomEntitiesFactory;
    isInstanceCreated = true;
    instance->Init();
  }
  return instance;
}

namespace {

struct TypeRow {
  const char* name;
  ExpEntity* (*create)();
  std::initializer_list<const char*> superClasses;
  std::initializer_list<const char*> subClasses;
  std::initializer_list<const char*> members;
  int typeNumber;
  std::initializer_list<const char*> registeredAs;  // the empty name stands for the type's own
};

std::vector<std::string>* ListOf(std::initializer_list<const char*> names) {
  std::vector<std::string>* list = nullptr;
  ExpObjectFactory::Add(list, "", true);
  for (const char* name : names) ExpObjectFactory::Add(list, name, false);
  return list;
}

}  // namespace

void ExpCustomEntitiesFactory::Init() {
  const TypeRow rows[] = {
      {"ExpExternalMappingEntity",
       &ExpExternalMappingEntity::New,
       {"VELMAR::ExpEntity"},
       {},
       {},
       0,
       {"ExpExternalMappingEntity", "EXPEXTERNALMAPPINGENTITY", "EXTERNAL_MAPPING_ENTITY"}},
      {"FILE_INFORMATION",
       &FILE_INFORMATION::New,
       {"VELMAR::ExpEntity"},
       {"VELMAR::FILE_DESCRIPTION", "VELMAR::FILE_NAME", "VELMAR::FILE_SCHEMA"},
       {},
       -1,
       {""}},
      {"FILE_DESCRIPTION",
       &FILE_DESCRIPTION::New,
       {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
       {},
       {"description", "implementation_level"},
       -1,
       {""}},
      {"FILE_NAME",
       &FILE_NAME::New,
       {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
       {},
       {"name", "time_stamp", "author", "organization", "preprocessor_version", "originating_system", "authorization"},
       -1,
       {""}},
      {"FILE_SCHEMA",
       &FILE_SCHEMA::New,
       {"VELMAR::ExpEntity", "VELMAR::FILE_INFORMATION"},
       {},
       {"schema_identifiers"},
       -1,
       {""}},
  };
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  for (const TypeRow& row : rows) {
    constexpr int kNoInverseMembers = 0;
    constexpr int kStartIndex = 0;
    constexpr bool kInsertInObjTree = false;
    auto* type = new OrdinaryEntityType(row.name, "VELMAR", row.create, static_cast<int>(row.members.size()),
                                        kNoInverseMembers, kStartIndex, kInsertInObjTree, ListOf(row.superClasses),
                                        ListOf(row.subClasses), ListOf(row.members), row.typeNumber);
    for (const char* name : row.registeredAs) registry->RegisterEntityRuntimeType(type, name);
  }
}

namespace {
[[maybe_unused]] const ExpCustomEntitiesFactory* const registeredWhenLoaded = ExpCustomEntitiesFactory::GetInstance();
}  // namespace

}  // namespace VELMAR
