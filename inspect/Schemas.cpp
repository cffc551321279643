#include "Schemas.h"

#include <fmt/format.h>

#include <vector>

#include "BundledSchemas.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace velmar {

namespace {

using VELMAR::ExpFile;
using VELMAR::ExpRuntimeRegistry;
using VELMAR::Schema;

constexpr const char* kFallback = "STEP_IR_AIC";

struct Row {
  Schema schema;
  const char* fileName;   // the name that files state
  const char* word;       // the name that users type
  const char* shortName;  // the name that people speak of
};

const std::vector<Row>& Rows() {
  static const std::vector<Row> kRows = {
      {VELMAR::STEP_AP203, ExpFile::SCHEMA_NAME_STEP_AP203, "AP203", "AP203"},
      {VELMAR::STEP_AP203E2, ExpFile::SCHEMA_NAME_STEP_AP203E2, "AP203E2", "AP203 edition 2"},
      {VELMAR::STEP_AP214, ExpFile::SCHEMA_NAME_STEP_AP214, "AP214", "AP214"},
      {VELMAR::STEP_AP242, ExpFile::SCHEMA_NAME_STEP_AP242, "AP242", "AP242"},
      {VELMAR::PLIB, ExpFile::SCHEMA_NAME_PLIB, "PLIB", "PLIB"},
      {VELMAR::ISO13399, ExpFile::SCHEMA_NAME_ISO13399, "ISO13399", "ISO 13399"},
  };
  return kRows;
}

// The schemas that there are libraries of: "first (second), ...", in columns of the table; "none" in a build
// without.
std::string Listed(const char* Row::*first, const char* Row::*second) {
  std::vector<std::string> names;
  for (const Row& row : Rows()) {
    if (HasLibrary(row.schema)) names.push_back(fmt::format("{} ({})", row.*first, row.*second));
  }
  return names.empty() ? "none" : fmt::format("{}", fmt::join(names, ", "));
}

}  // namespace

std::string RegistryName(Schema schema) {
  return ExpRuntimeRegistry::GetInstance()->EvalRegisteredSchema(schema);
}

std::string SupportedSchemas() { return Listed(&Row::fileName, &Row::shortName); }

std::string SchemaNames() { return Listed(&Row::word, &Row::fileName); }

std::vector<std::string> SchemaWords() {
  std::vector<std::string> words;
  for (const Row& row : Rows()) {
    if (HasLibrary(row.schema)) words.emplace_back(row.word);
  }
  return words;
}

const char* ShortName(Schema schema) {
  for (const Row& row : Rows()) {
    if (row.schema == schema) return row.shortName;
  }
  return "";
}

std::optional<Schema> FindSchema(const std::string& name) {
  const std::string upper = VELMAR::ToUpperString(name);
  // What the library makes of names in files, which come with endings of many kinds. AP214 is also what it
  // makes of a name that it does not know.
  std::string registryName = ExpRuntimeRegistry::GetInstance()->EvalRegisteredSchema(upper);
  const bool isKnown = registryName != RegistryName(VELMAR::STEP_AP214) ||
                       upper.find("AUTO") != std::string::npos || upper.find("AP214") != std::string::npos;
  if (!isKnown) registryName.clear();
  for (const Row& row : Rows()) {
    if (upper == row.word || upper == VELMAR::ToUpperString(row.shortName)) {
      registryName = RegistryName(row.schema);
    }
  }
  for (const Row& row : Rows()) {
    if (RegistryName(row.schema) == registryName && HasLibrary(row.schema)) return row.schema;
  }
  return std::nullopt;
}

bool HasLibrary(Schema schema) { return VELMAR::IsBundledSchema(RegistryName(schema)); }

std::string LibraryFile(Schema schema) { return LibraryFile(RegistryName(schema)); }

std::string LibraryFile(const std::string& registryName) { return VELMAR::BundledLibraryFile(registryName); }

std::string ProtocolOf(const std::string& registryName) {
  for (const Row& row : Rows()) {
    if (RegistryName(row.schema) == registryName) return row.shortName;
  }
  return "";
}

void LoadLibrary(Schema schema) {
  if (HasLibrary(schema)) VELMAR::LoadBundledSchema(RegistryName(schema));
}

void LoadAllLibraries() { VELMAR::LoadBundledSchemas(); }

void LoadFallback() {
  if (VELMAR::IsBundledSchema(kFallback)) VELMAR::LoadBundledSchema(kFallback);
}

}  // namespace velmar
