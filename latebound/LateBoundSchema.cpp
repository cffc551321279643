#include "LateBoundSchema.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <unordered_map>
#include <utility>

#include "Diagnostics.h"
#include "LateBoundTypeMaker.h"
#include "Loader.h"
#include "Model.h"
#include "SchemaContents.h"

namespace VELMAR {

LateBoundError::LateBoundError(const std::string& text, std::vector<LateBoundMessage> messages)
    : descriptive_exception(text), messages_(std::move(messages)) {}
LateBoundError::~LateBoundError() = default;

struct LateBoundSchema::Contents {
  std::string name;
  std::string registryName;
  std::vector<const LateBoundType*> types;
  std::unordered_map<std::string, const LateBoundType*> typesByName;
  std::vector<LateBoundMessage> warnings;
};

namespace {

std::vector<LateBoundMessage> MessagesOf(const Express::Diagnostics& diagnostics) {
  std::vector<LateBoundMessage> messages;
  for (const Express::Diagnostic& found : diagnostics.All()) {
    const Express::CatalogueRow& row = Express::CatalogueRowOf(found.code);
    LateBoundMessage message{
        row.severity == Express::Severity::Error, "", 0, 0, row.number, found.text, found.hint};
    if (const Express::SourceFile* file = found.where.file) {
      const Express::Position position = file->PositionOf(found.where.offset);
      message.file = file->Name();
      message.line = position.line;
      message.column = position.column;
    }
    messages.push_back(std::move(message));
  }
  return messages;
}

// The schema that was asked for, or the last one of the file.
const Express::SchemaDeclaration& Choose(const Express::Model& model, std::size_t given,
                                         const std::string& file, const std::string& name) {
  if (name.empty()) return *model.schemas[given - 1];
  if (const Express::SchemaDeclaration* schema = model.FindSchema(name)) return *schema;
  std::string text = file + ": error: there is no schema '" + name + "'. There are: ";
  for (std::size_t i = 0; i < given; ++i) text += (i > 0 ? ", " : "") + model.schemas[i]->name.text;
  throw LateBoundError(text);
}

void RequireNewRegistryName(const std::string& name) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  const auto isPart = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9') || c == '_'; };
  if (name.empty() || !isLetter(name[0]) || !std::all_of(name.begin(), name.end(), isPart)) {
    throw LateBoundError("'" + name +
                         "' is no registry name: it is made of letters, digits and '_', a letter first");
  }
  if (ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(name)) {
    throw LateBoundError("a schema is registered under the name " + name +
                         " already: give this one another name");
  }
}

}  // namespace

LateBoundSchema::LateBoundSchema(std::shared_ptr<const Contents> contents) : contents_(std::move(contents)) {}

LateBoundSchema LateBoundSchema::Load(const std::string& file, const LateBoundOptions& options) {
  if (!options.registryName.empty()) RequireNewRegistryName(options.registryName);
  Express::Model model;
  Express::Diagnostics diagnostics;
  std::size_t given = 0;
  try {
    given = Express::LoadFiles(model, {file}, options.includeDirectories, diagnostics);
  } catch (const std::system_error& error) {
    throw LateBoundError(error.what());
  } catch (const std::length_error& error) {
    throw LateBoundError(error.what());
  }
  if (diagnostics.ErrorCount() > 0) {
    std::ostringstream text;
    diagnostics.Print(text);
    throw LateBoundError(text.str(), MessagesOf(diagnostics));
  }
  const Express::SchemaDeclaration& schema = Choose(model, given, file, options.schemaName);

  auto contents = std::make_shared<Contents>();
  contents->name = Express::UpperCase(schema.name.text);
  contents->registryName = options.registryName.empty() ? contents->name : options.registryName;
  contents->warnings = MessagesOf(diagnostics);
  RequireNewRegistryName(contents->registryName);

  const Express::SchemaContents declared(schema);
  LateBoundTypeMaker maker(declared, contents->registryName);
  std::vector<std::unique_ptr<LateBoundType>> types;
  for (const auto& [name, entity] : declared.Entities()) {
    types.push_back(maker.Make(*entity));
    contents->types.push_back(types.back().get());
    contents->typesByName.emplace(types.back()->GetName(), types.back().get());
  }
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  registry->RegisterSchema(contents->registryName);
  for (std::unique_ptr<LateBoundType>& type : types) registry->RegisterEntityRuntimeType(type.release(), "");
  return LateBoundSchema(std::move(contents));
}

const std::string& LateBoundSchema::GetName() const { return contents_->name; }
const std::string& LateBoundSchema::GetRegistryName() const { return contents_->registryName; }
const std::vector<const LateBoundType*>& LateBoundSchema::GetTypes() const { return contents_->types; }
const std::vector<LateBoundMessage>& LateBoundSchema::GetWarnings() const { return contents_->warnings; }

const LateBoundType* LateBoundSchema::FindType(const std::string& name) const {
  const auto type = contents_->typesByName.find(ToUpperString(name));
  return type == contents_->typesByName.end() ? nullptr : type->second;
}

}  // namespace VELMAR
