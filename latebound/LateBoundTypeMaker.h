/// @file LateBoundTypeMaker.h
/// From a resolved EXPRESS schema to entity types, for the library's own use.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "LateBoundType.h"
#include "SchemaContents.h"

namespace VELMAR {

/// The names of an enumeration's items, with their numbers from 0.
using LateBoundItems = std::map<std::string, int>;

/// Makes the types of a schema, which are independent of it afterwards.
class LateBoundTypeMaker {
 public:
  LateBoundTypeMaker(const Express::SchemaContents& contents, std::string registryName);

  std::unique_ptr<LateBoundType> Make(const Express::Entity& entity);

 private:
  std::vector<std::string> Qualified(const std::vector<std::string>& names) const;
  LateBoundAttribute Describe(const Express::Slot& slot,
                              const std::vector<const Express::Entity*>& family) const;
  std::shared_ptr<const LateBoundItems> ItemsOf(const Express::TypeExpression& type);

  const Express::SchemaContents& contents_;
  const std::string registryName_;
  std::unordered_map<const Express::DefinedType*, std::shared_ptr<const LateBoundItems>> items_;
};

}  // namespace VELMAR
