// Generated from simple_types.exp by velmar-express 3.1. Do not edit.
#include "SimpleTypes.h"

#include <iterator>

namespace VELMAR::SimpleTypes {

extern const ExpEntityTypeTable kEntityTypes1;

namespace {

constexpr const ExpEntityTypeTable* kParts[] = {&kEntityTypes1};

}  // namespace

EntityBase::~EntityBase() = default;
ExpAttribute* EntityBase::GetMember(int index) { return ExpEntity::GetMember(index); }
ExpAttribute* EntityBase::GetMember(const std::string& name) { return ExpEntity::GetMember(name); }
std::vector<std::string>* EntityBase::GetMemberNames() { return ExpEntity::GetMemberNames(); }
const std::string& EntityBase::GetExpClassName() const { return ExpEntity::GetExpClassName(); }
std::vector<std::string>* EntityBase::GetExpSuperClasses() const { return ExpEntity::GetExpSuperClasses(); }
std::vector<std::string>* EntityBase::GetExpSubClasses() const { return ExpEntity::GetExpSubClasses(); }
int EntityBase::GetNofInverseMembers() { return ExpEntity::GetNofInverseMembers(); }
int EntityBase::GetNofExplicitMembers() { return ExpEntity::GetNofExplicitMembers(); }
int EntityBase::GetExternalMappingStartIndex() { return ExpEntity::GetExternalMappingStartIndex(); }
int EntityBase::GetTypeNumberOfEntity() { return ExpEntity::GetTypeNumberOfEntity(); }
bool EntityBase::InsertInObjTree() const { return ExpEntity::InsertInObjTree(); }
void EntityBase::SetEntityNumber(int number) { ExpEntity::SetEntityNumber(number); }
int EntityBase::GetEntityNumber() { return ExpEntity::GetEntityNumber(); }
std::string EntityBase::ToString() { return ExpEntity::ToString(); }
void EntityBase::Accept(ExpEntityVisitor* visitor) {
  static ExpVisitIndex* const index = ExpMakeVisitIndex(kParts, std::size(kParts));
  auto* own = dynamic_cast<Visitor*>(visitor);
  if (own == nullptr || !ExpVisit(*index, own, this)) ExpEntity::Accept(visitor);
}

Visitor::~Visitor() = default;
void Visitor::VisitExpEntity(ExpEntity*) {}

void RegisterAs(const char* registrySchemaName) {
  for (const auto* part : kParts) RegisterEntityTypes(registrySchemaName, part->rows, part->count);
}

void Load() {
  static const bool loaded = (RegisterAs("SIMPLE_TYPES"), true);
  static_cast<void>(loaded);
}

namespace {

[[maybe_unused]] const bool loadedWithTheLibrary = (Load(), true);

}  // namespace
}  // namespace VELMAR::SimpleTypes
