#include "DictionaryLoader.h"

#include <sstream>
#include <stdexcept>

#include "BundledSchemas.h"
#include "Diagnostics.h"
#include "ExpressParser.h"
#include "Loader.h"
#include "Model.h"
#include "Resolver.h"
#include "Schemas.h"
#include "WrittenInstances.h"

namespace velmar {

namespace Express = VELMAR::Express;

std::unique_ptr<DataDictionary> LoadDictionary(const std::string& text, const std::vector<std::string>& includes) {
  Express::Model model;
  Express::Diagnostics diagnostics;
  const std::size_t given = Express::LoadFiles(model, {text}, includes, diagnostics);
  if (diagnostics.ErrorCount() > 0 || given == 0) {
    std::ostringstream messages;
    diagnostics.Print(messages);
    throw std::runtime_error(text + " has errors\n" + messages.str());
  }
  return std::make_unique<DataDictionary>(*model.schemas[given - 1]);
}

std::unique_ptr<DataDictionary> DictionaryOfText(const std::string& text) {
  Express::Model model;
  Express::Diagnostics diagnostics;
  Express::ParseFile(model, Express::SourceFile("schema", text), diagnostics);
  Express::Resolve(model, diagnostics);
  return std::make_unique<DataDictionary>(*model.schemas.front());
}

std::unique_ptr<DataDictionary> LoadDictionaryOf(const std::string& path, const SchemaChoice& choice, Findings& findings) {
  if (!choice.express.empty()) return LoadDictionary(choice.express, choice.includes);
  std::optional<VELMAR::Schema> schema = choice.schema;
  if (!schema) {
    const NamedSchema named = SchemaNamedIn(path);
    if (!named.name.empty()) schema = FindSchema(named.name);
    if (!schema && named.name.empty()) {
      findings.Add(Code::kNoSchema, named.where, "the file names no schema; supported: " + SupportedSchemas());
    } else if (!schema) {
      findings.Add(Code::kUnsupportedSchema, named.where,
                   "schema '" + named.name + "' is not supported; supported: " + SupportedSchemas());
    }
  }
  if (!schema) return nullptr;
  return LoadDictionary(VELMAR::BundledSchemaText(RegistryName(*schema)), {});
}

}  // namespace velmar
