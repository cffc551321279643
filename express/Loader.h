/// @file Loader.h
/// From the names of files to a resolved model.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Diagnostics.h"
#include "Model.h"

namespace VELMAR::Express {

/// Reads the files, then for every schema that is interfaced but not declared the file NAME.exp, in any case
/// of letters, in the first folder of the search path where it declares that schema; then resolves all.
/// Returns the number of schemas in `files`, which are the first of the model. Throws std::system_error where
/// a file or a folder cannot be read.
std::size_t LoadFiles(Model& model, const std::vector<std::string>& files,
                      const std::vector<std::string>& searchPath, Diagnostics& diagnostics);

/// The names of the files that the schemas of the model come from, each once, in the order of the schemas.
std::vector<std::string> FilesOf(const Model& model);

}  // namespace VELMAR::Express
