/// @file LoadedSchemas.h
/// The schemas of the tests, each loaded once in a process.
#pragma once

#include <map>
#include <string>

#include "LateBoundSchema.h"

namespace VELMAR::TestData {

/// The schema of a file, registered under `registryName`; loaded at the first call with this name.
inline const LateBoundSchema& LoadedAs(const std::string& registryName, const std::string& path,
                                       const std::string& schemaName = "") {
  static auto* const loaded = new std::map<std::string, LateBoundSchema>;
  auto found = loaded->find(registryName);
  if (found == loaded->end()) {
    found = loaded->emplace(registryName, LateBoundSchema::Load(path, {schemaName, registryName, {}})).first;
  }
  return found->second;
}

/// The schema of data/kinds.exp.
inline const LateBoundSchema& Kinds() { return LoadedAs("KINDS", VELMAR_TEST_DATA "/kinds.exp"); }

/// One of the schemas with which the EXPRESS front end is tested.
inline const LateBoundSchema& Construct(const std::string& registryName, const std::string& file,
                                        const std::string& schemaName = "") {
  return LoadedAs(registryName, std::string(VELMAR_EXPRESS_DATA "/") + file, schemaName);
}

}  // namespace VELMAR::TestData
