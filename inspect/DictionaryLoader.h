/// @file DictionaryLoader.h
/// Finds the data dictionary for a file.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DataDictionary.h"
#include "ExpFile.h"
#include "Findings.h"

namespace velmar {

/// Which schema a file is compared with. Without either, the one that it names.
struct SchemaChoice {
  std::optional<VELMAR::Schema> schema;
  std::string express;                ///< the path of an EXPRESS text, of which the last schema counts
  std::vector<std::string> includes;  ///< where schemas that it uses are looked for
};

/// The last schema of an EXPRESS text. Throws std::runtime_error with what is wrong where it cannot be read or has errors.
std::unique_ptr<DataDictionary> LoadDictionary(const std::string& text, const std::vector<std::string>& includes);

/// The only schema of a text that is known to have no errors.
std::unique_ptr<DataDictionary> DictionaryOfText(const std::string& text);

/// The dictionary for a file; null, and a finding, where the file names a schema that this program does not have, or none.
/// Throws std::runtime_error where the file or the text of the schema cannot be read.
std::unique_ptr<DataDictionary> LoadDictionaryOf(const std::string& path, const SchemaChoice& choice, Findings& findings);

}  // namespace velmar
