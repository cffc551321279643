/// @file LateBoundFile.h
/// An exchange file of a schema that was loaded at run time.
#pragma once

#include "ExpFixedSchemaFile.h"
#include "LateBoundSchema.h"
#include "VelmarApi.h"

namespace VELMAR {

/// A file whose entity types are those of a loaded schema, whatever FILE_SCHEMA says.
///
/// GetSchemaName(), which a file without FILE_SCHEMA gets when it is written, is the schema's own name; for a
/// schema in the place of a library, registered as "AP242" say, it is the canonical name that ExpFile writes.
class VELMAR_API LateBoundFile : public ExpFixedSchemaFile {
 public:
  /// An empty file of the schema, which need not outlive it.
  explicit LateBoundFile(const LateBoundSchema& schema);
  ~LateBoundFile() override;
};

}  // namespace VELMAR
