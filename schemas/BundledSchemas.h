/// @file BundledSchemas.h
/// The schema libraries that this build has, for programs that choose among them while they run.
#pragma once

#include <string>

namespace VELMAR {

/// Whether the build has the library of a schema (VELMAR_SCHEMAS), named as its types are registered: "AP203_E2".
bool IsBundledSchema(const std::string& registryName);

/// The name of the file of a schema's library, without its folder; empty where the build has none.
std::string BundledLibraryFile(const std::string& registryName);

/// Loads the library of a schema, which lies beside the runtime library, unless its types are registered already.
/// Throws std::runtime_error with the reason where the library cannot be loaded or the build has none.
void LoadBundledSchema(const std::string& registryName);

/// The EXPRESS text that the library of a schema was made of: where it was installed, or in the build. Throws std::runtime_error
/// where the build has no such library, or the text is not there.
std::string BundledSchemaText(const std::string& registryName);

/// Loads the libraries of all schemas that the build has.
void LoadBundledSchemas();

}  // namespace VELMAR
