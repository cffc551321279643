#include "ExpSchemaLibrary.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string_view>
#include <typeindex>
#include <unordered_map>

#include "ExpRuntimeRegistry.h"
#include "OrdinaryEntityType.h"
#include "ValueText.h"

namespace VELMAR {

std::string ExpSchemaReal::ToString() {
  std::string text;
  return ValueText::AppendMarker(text, *this) ? text : ExpReal::ToString();
}

std::string ExpSchemaBinary::ToString() { return IsOmitted() ? "*" : "$"; }

namespace {

// The names, each behind the prefix.
std::vector<std::string>* Split(const char* names, const std::string& prefix) {
  auto* list = new std::vector<std::string>;
  while (*names != '\0') {
    const std::size_t length = std::strcspn(names, " ");
    list->emplace_back(prefix).append(names, length);
    names += length;
    if (*names == ' ') ++names;
  }
  return list;
}

}  // namespace

void RegisterEntityTypes(const char* registrySchemaName, const ExpEntityTypeRow* rows, std::size_t count) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  constexpr bool kInsertInObjTree = false;
  const std::string qualifier = std::string(registrySchemaName) + "::";
  for (const ExpEntityTypeRow* row = rows; row != rows + count; ++row) {
    std::vector<std::string>* superClasses = Split(row->superClasses, qualifier);
    superClasses->insert(superClasses->begin(), "VELMAR::ExpEntity");
    registry->RegisterEntityRuntimeType(
        new OrdinaryEntityType(row->name, registrySchemaName, row->create, row->explicitMembers, row->inverseMembers,
                             row->startIndex, kInsertInObjTree, superClasses, Split(row->subClasses, qualifier),
                             Split(row->memberNames, ""), row->typeNumber),
        "");
  }
}

class ExpVisitIndex {
 public:
  ExpVisitIndex(const ExpEntityTypeTable* const* tables, std::size_t count);
  bool Visit(ExpEntityVisitor* visitor, ExpEntity* entity);

 private:
  const ExpEntityTypeRow* BaseRow(ExpEntity* entity);

  std::unordered_map<std::type_index, const ExpEntityTypeRow*> rows_;
  std::mutex mutex_;
  std::unordered_map<std::type_index, const ExpEntityTypeRow*> baseRows_;  // of classes that were met; guarded
};

ExpVisitIndex::ExpVisitIndex(const ExpEntityTypeTable* const* tables, std::size_t count) {
  for (auto table = tables; table != tables + count; ++table) {
    for (const ExpEntityTypeRow* row = (*table)->rows; row != (*table)->rows + (*table)->count; ++row) {
      rows_.emplace(*row->type, row);
    }
  }
}

bool ExpVisitIndex::Visit(ExpEntityVisitor* visitor, ExpEntity* entity) {
  const auto found = rows_.find(typeid(*entity));
  const ExpEntityTypeRow* row = found != rows_.end() ? found->second : BaseRow(entity);
  return row != nullptr && row->visit(visitor, entity);
}

const ExpEntityTypeRow* ExpVisitIndex::BaseRow(ExpEntity* entity) {
  const std::lock_guard<std::mutex> lock(mutex_);
  const auto [place, isNew] = baseRows_.emplace(typeid(*entity), nullptr);
  if (!isNew) return place->second;
  std::ptrdiff_t most = -1;
  for (const auto& [type, row] : rows_) {
    if (!row->visit(nullptr, entity)) continue;
    const std::string_view names = row->superClasses;
    const std::ptrdiff_t supertypes = names.empty() ? 0 : 1 + std::count(names.begin(), names.end(), ' ');
    const bool isFurther =
        supertypes > most || (supertypes == most && row->typeNumber < place->second->typeNumber);
    if (!isFurther) continue;
    most = supertypes;
    place->second = row;
  }
  return place->second;
}

ExpVisitIndex* ExpMakeVisitIndex(const ExpEntityTypeTable* const* tables, std::size_t count) {
  return new ExpVisitIndex(tables, count);
}

bool ExpVisit(ExpVisitIndex& index, ExpEntityVisitor* visitor, ExpEntity* entity) {
  return index.Visit(visitor, entity);
}

}  // namespace VELMAR
