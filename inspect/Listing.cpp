#include "Listing.h"

#include <fmt/format.h>

#include <list>
#include <stdexcept>

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
    if (ExpAttribute* value = part->GetMember(name)) return value;
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

}  // namespace

Listing ListInstances(Population& population, const ListingRequest& request) {
  const std::string schema = population.GetEnforcedFactoryName();
  const ExpEntityRuntimeType* type = FindType(request.type, schema);
  if (type == nullptr) {
    throw std::invalid_argument(fmt::format("{} has no entity type '{}'", schema, request.type));
  }
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
