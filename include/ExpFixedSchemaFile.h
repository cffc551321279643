/// @file ExpFixedSchemaFile.h
/// An exchange file whose entity types come from a registry schema of the application's choice.
#pragma once

#include <string>

#include "ExpFile.h"
#include "VelmarApi.h"

namespace VELMAR {

/// A file that looks for entity types in one registry schema, whatever FILE_SCHEMA says, and keeps to it when further
/// files are read or appended.
///
/// For the types of a schema library, for those that an application has registered, and for those of an EXPRESS text
/// that was loaded at run time alike. What is read keeps the FILE_SCHEMA that it has; a file that has none gets
/// GetSchemaName() when it is written.
/// ```
/// VELMAR::ExpFixedSchemaFile file("AP242");
/// file.Read("says_automotive_design.stp");
/// ```
class VELMAR_API ExpFixedSchemaFile : public ExpFile {
 public:
  /// @param registrySchemaName  the schema under which the types are registered; empty for a file that goes by
  ///                            FILE_SCHEMA as every ExpFile does
  /// @param schemaName          what GetSchemaName gives where no member of Schema is registered under
  ///                            `registrySchemaName`; `registrySchemaName` itself if empty
  /// Throws descriptive_exception where nothing is registered under the name.
  explicit ExpFixedSchemaFile(const std::string& registrySchemaName, const std::string& schemaName = std::string());
  ~ExpFixedSchemaFile() override;

  /// The canonical name of the fixed schema, or the name that the constructor was given.
  std::string GetSchemaName() override;
  /// Logs the name and that it changes nothing.
  void SetSchemaName(std::string name) override;
  /// Throws descriptive_exception for a value that is no member of Schema, and changes nothing. GetSchema() stays the
  /// member of the fixed schema; STEP_AP214 where it has none.
  void SetSchema(Schema schema) override;
  ExpEntity* CreateEntity(const std::string& entityName) override;
  /// The fixed schema.
  std::string GetEnforcedFactoryName() override;

 private:
  std::string registrySchemaName_;
  std::string fixedSchemaName_;
};

}  // namespace VELMAR
