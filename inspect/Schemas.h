/// @file Schemas.h
/// The application protocols that files can be read with: their names, and their libraries, which are loaded
/// when a file needs them.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ExpFile.h"

namespace velmar {

/// The schemas of which this program has libraries, as files name them: "AUTOMOTIVE_DESIGN (AP214), ...".
std::string SupportedSchemas();

/// The same as users name them: "AP203 (CONFIG_CONTROL_DESIGN), ...".
std::string SchemaNames();

/// The names that users type, of which this program has libraries: "AP203" and so on.
std::vector<std::string> SchemaWords();

/// The everyday name of an application protocol: "AP214".
const char* ShortName(VELMAR::Schema schema);

/// The schema of an everyday name, a registry name or what FILE_SCHEMA may hold, in any case. Nothing where
/// there is no such schema, or no library of it.
std::optional<VELMAR::Schema> FindSchema(const std::string& name);

/// Whether this program has a library of the schema.
bool HasLibrary(VELMAR::Schema schema);

/// The name of the file of the schema's library; empty where there is none.
std::string LibraryFile(VELMAR::Schema schema);
std::string LibraryFile(const std::string& registryName);

/// The everyday name of a schema by its registry name; empty where it has none.
std::string ProtocolOf(const std::string& registryName);

/// The name under which the types of the schema are registered.
std::string RegistryName(VELMAR::Schema schema);

/// Loads the library of the schema; does nothing where there is none. Throws std::runtime_error with the
/// reason where it cannot be loaded.
void LoadLibrary(VELMAR::Schema schema);

/// Loads the libraries of all schemas that there are. Throws as LoadLibrary does.
void LoadAllLibraries();

/// Loads the schema for types that a file's own schema lacks; does nothing where this program has none.
/// Throws as LoadLibrary does.
void LoadFallback();

}  // namespace velmar
