#include "ExpFixedSchemaFile.h"

#include <utility>

#include "ExpLogging.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "SchemaNames.h"

namespace VELMAR {
namespace {

Schema SchemaOf(const std::string& registrySchemaName) {
  const SchemaNames* names = FindSchemaNames(registrySchemaName);
  return names == nullptr ? STEP_AP214 : names->schema;
}

}  // namespace

ExpFixedSchemaFile::ExpFixedSchemaFile(const std::string& registrySchemaName, const std::string& schemaName)
    : ExpFile(SchemaOf(registrySchemaName)), registrySchemaName_(registrySchemaName) {
  if (registrySchemaName.empty()) return;
  if (!ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(registrySchemaName)) {
    throw descriptive_exception("ExpFixedSchemaFile: no schema is registered under the name: " + registrySchemaName);
  }
  if (const SchemaNames* names = FindSchemaNames(registrySchemaName)) {
    fixedSchemaName_ = names->canonicalName;
  } else {
    fixedSchemaName_ = schemaName.empty() ? registrySchemaName : schemaName;
  }
}

ExpFixedSchemaFile::~ExpFixedSchemaFile() = default;

std::string ExpFixedSchemaFile::GetSchemaName() {
  return registrySchemaName_.empty() ? ExpFile::GetSchemaName() : fixedSchemaName_;
}

void ExpFixedSchemaFile::SetSchemaName(std::string name) {
  if (registrySchemaName_.empty()) {
    ExpFile::SetSchemaName(std::move(name));
    return;
  }
  ExpLogger::WriteLine("Input schema name: " + ToUpperString(std::move(name)) + "  --  fixed schema name: " +
                           registrySchemaName_,
                       ExpLogMessage);
}

void ExpFixedSchemaFile::SetSchema(Schema schema) {
  if (registrySchemaName_.empty()) {
    ExpFile::SetSchema(schema);
  } else if (FindSchemaNames(schema) == nullptr) {
    throw descriptive_exception("ExpFixedSchemaFile::SetSchema(): Unknown schema version!");
  }
}

ExpEntity* ExpFixedSchemaFile::CreateEntity(const std::string& entityName) {
  if (registrySchemaName_.empty()) return ExpFile::CreateEntity(entityName);
  ExpEntityRuntimeType* type =
      ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(entityName, registrySchemaName_);
  return type == nullptr ? nullptr : type->CreateInstance(static_cast<int>(GetAdminId()));
}

std::string ExpFixedSchemaFile::GetEnforcedFactoryName() {
  return registrySchemaName_.empty() ? ExpFile::GetEnforcedFactoryName() : registrySchemaName_;
}

}  // namespace VELMAR
