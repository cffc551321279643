#include "Listing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <list>
#include <stdexcept>
#include <utility>

#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "Instances.h"
#include "TypeInfo.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;
using VELMAR::ExpEntityRuntimeType;

bool HasAttribute(const ExpEntityRuntimeType& type, const std::string& schema, const std::string& name) {
  if (type.GetMemberIndex(name) >= 0) return true;
  for (const std::string& subtype : AllSubtypes(type, schema)) {
    const ExpEntityRuntimeType* found = FindType(subtype, schema);
    if (found != nullptr && found->GetMemberIndex(name) >= 0) return true;
  }
  return false;
}

std::vector<std::string> ColumnsOf(const ListingRequest& request, const ExpEntityRuntimeType& type,
                                   const std::string& schema) {
  if (request.attributes.empty()) return *type.GetMemberNames();
  std::vector<std::string> columns;
  for (const std::string& attribute : request.attributes) {
    const std::string name = VELMAR::ToLowerString(attribute);
    if (!HasAttribute(type, schema, name)) {
      throw std::invalid_argument(fmt::format("{} has no attribute '{}'; it has: {}", type.GetName(),
                                              attribute, fmt::join(*type.GetMemberNames(), ", ")));
    }
    columns.push_back(name);
  }
  return columns;
}

// Of the parts of the type that one instance has, the first that has the attribute.
ExpAttribute* ValueIn(const std::vector<ExpEntity*>& parts, const std::string& name) {
  for (ExpEntity* part : parts) {
    const std::vector<std::string>& names = *part->GetMemberNames();
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) continue;
    if (ExpAttribute* value = ValueAt(*part, static_cast<int>(found - names.begin()))) return value;
  }
  return nullptr;
}

// Whether the entity, or the complex instance that it is a part of, is what the population has under its
// number.
bool IsKept(ExpEntity* kept, ExpEntity* entity) {
  auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(kept);
  return kept == entity ||
         (complex != nullptr && complex->GetEntityByName(entity->GetExpClassName()) == entity);
}

// The instances of a type that the schema does not have, with the positions of their parameters as columns.
Listing ListUnknown(Population& population, const ListingRequest& request, const std::string& schema) {
  const std::string type = VELMAR::ToUpperString(request.type);
  const auto isOfType = [&type](const ExpEntity& entity) {
    const std::string& name = entity.GetExpClassName();
    return name == type || (!name.empty() && name[0] == '!' && name.compare(1, std::string::npos, type) == 0);
  };
  std::vector<ExpEntity*> records;
  std::vector<ExpEntity*> instances;
  std::size_t columns = 0;
  for (const int number : population.Numbers()) {
    ExpEntity* entity = population.GetEntity(number);
    if (entity == nullptr) continue;
    ExpEntity* record = isOfType(*entity) ? entity : nullptr;
    if (auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity)) {
      for (ExpEntity* part : *complex->GetEntities()) {
        if (record == nullptr && isOfType(*part)) record = part;
      }
    }
    if (record == nullptr) continue;
    records.push_back(record);
    instances.push_back(entity);
    columns = std::max(columns, record->GetMemberNames()->size());
  }
  if (records.empty()) throw std::invalid_argument(fmt::format("{} has no entity type '{}'", schema, request.type));
  Listing listing = {request.attributes, {}};
  for (std::size_t i = 0; request.attributes.empty() && i < columns; ++i) listing.attributes.push_back(std::to_string(i + 1));
  for (const std::string& attribute : listing.attributes) {
    const bool isPosition = std::any_of(records.begin(), records.end(), [&attribute](ExpEntity* record) {
      return record->GetMember(attribute) != nullptr;
    });
    if (isPosition || request.attributes.empty()) continue;
    throw std::invalid_argument(fmt::format("{} has no attribute '{}'; {} has no such entity, and its attributes are 1 to {}", type,
                                            attribute, schema, columns));
  }
  for (std::size_t i = 0; i < records.size(); ++i) {
    Listing::Row row = {instances[i]->GetEntityNumber(), TypeName(*instances[i]), {}};
    for (const std::string& attribute : listing.attributes) row.values.push_back(records[i]->GetMember(attribute));
    listing.rows.push_back(std::move(row));
  }
  return listing;
}

}  // namespace

Listing ListInstances(Population& population, const ListingRequest& request) {
  const std::string schema = population.GetEnforcedFactoryName();
  const ExpEntityRuntimeType* type = FindType(request.type, schema);
  if (type == nullptr) return ListUnknown(population, request, schema);
  Listing listing = {ColumnsOf(request, *type, schema), {}};
  std::list<ExpEntity*> found;
  population.GetEntities(found, type->GetName(), !request.isExact);
  for (auto entity = found.begin(); entity != found.end();) {
    const int number = (*entity)->GetEntityNumber();
    ExpEntity* const kept = population.GetEntity(number);
    std::vector<ExpEntity*> parts;
    for (; entity != found.end() && (*entity)->GetEntityNumber() == number; ++entity) {
      if (kept != nullptr && IsKept(kept, *entity)) parts.push_back(*entity);
    }
    if (kept == nullptr || parts.empty()) continue;
    Listing::Row row = {number, TypeName(*kept), {}};
    for (const std::string& attribute : listing.attributes) row.values.push_back(ValueIn(parts, attribute));
    listing.rows.push_back(std::move(row));
  }
  return listing;
}

}  // namespace velmar
