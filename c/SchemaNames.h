/// @file SchemaNames.h
/// The names of the application protocols' schemas, for the library's own use.
#pragma once

#include <string>

#include "ExpFile.h"

namespace VELMAR {

/// One application protocol: the name that files state and the name under which its library registers its types.
struct SchemaNames {
  Schema schema;
  const char* canonicalName;
  const char* registryName;
};

/// The names of a schema; null for a value that is no member of Schema.
const SchemaNames* FindSchemaNames(Schema schema);

/// The names of the schema whose library registers its types under a name; null where there is none.
const SchemaNames* FindSchemaNames(const std::string& registryName);

/// The schema that a name stands for, STEP_AP214 where it resembles none. The case counts.
Schema SchemaLike(const std::string& name);

}  // namespace VELMAR
