/// @file CppWriter.h
/// Writes the C++ of a schema library.
#pragma once

#include <string>
#include <vector>

#include "Model.h"

namespace VELMAR::Express {

/// What the C++ of a schema depends on beside the schema.
struct CppOptions {
  std::string sourceName;    ///< the name of the .exp file as the first line of every file gives it
  std::string registryName;  ///< the schema name under which the types are registered: "AUTOMOTIVE_DESIGN"
  int parts = 8;             ///< the number of translation units that the classes are spread over, 1 to 999
};

/// One file of the output.
struct GeneratedFile {
  std::string name;
  std::string text;
};

/// The name of the namespace and of the files: the registry name in camel case, "AutomotiveDesign".
std::string CppSchemaName(const std::string& registryName);

/// The files of a schema library: NAME.h with all classes, NAME.cpp that registers the types, and NAME_1.cpp
/// to NAME_<parts>.cpp with the definitions. The model must have been resolved without an error.
///
/// The library has all entities and enumerations visible in the schema, and the supertypes of these. The
/// result depends on nothing but the arguments.
std::vector<GeneratedFile> WriteCpp(const Model& model, const SchemaDeclaration& schema,
                                    const CppOptions& options);

}  // namespace VELMAR::Express
