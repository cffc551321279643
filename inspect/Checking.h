/// @file Checking.h
/// Checks a file against its schema.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ExpFile.h"
#include "Findings.h"

namespace velmar {

/// Which schema a file is compared with. Without either, the one that it names.
struct CheckOptions {
  std::optional<VELMAR::Schema> schema;
  std::string express;                ///< the path of an EXPRESS text, of which the last schema counts
  std::vector<std::string> includes;  ///< where schemas that it uses are looked for
};

/// All that is wrong with a file: its syntax, and where it does not follow its schema. The population is not kept.
///
/// Throws std::runtime_error where the file, or the text of the schema, cannot be read or has errors. Linear in the length of
/// the file; the memory is a few bytes for each instance.
Findings CheckFile(const std::string& path, const CheckOptions& options = {});

}  // namespace velmar
