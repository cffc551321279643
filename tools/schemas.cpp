#include "Schemas.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "TypeInfo.h"
#include "Wording.h"

namespace velmar {

namespace {

struct SchemasOptions {
  std::string type;
  ReadingFlags schema;
  bool json = false;
};

// The registry schemas that are asked about, loaded.
std::vector<SchemaInfo> Load(const ReadingFlags& flags) {
  const ReadingOptions chosen = flags.Resolve();
  std::string name = chosen.lateBoundSchema;
  if (chosen.schema) {
    LoadLibrary(*chosen.schema);
    name = RegistryName(*chosen.schema);
  } else if (name.empty()) {
    LoadAllLibraries();
  }
  std::vector<SchemaInfo> schemas = RegisteredSchemas();
  if (name.empty()) return schemas;
  schemas.erase(
      std::remove_if(schemas.begin(), schemas.end(), [&](const SchemaInfo& s) { return s.name != name; }),
      schemas.end());
  return schemas;
}

void PrintSchemas(const std::vector<SchemaInfo>& schemas) {
  std::size_t width = 0;
  for (const SchemaInfo& schema : schemas) width = std::max(width, schema.name.size());
  for (const SchemaInfo& schema : schemas) {
    fmt::print("{:<{}}  {:>5} types  {}\n", schema.name, width, schema.types,
               schema.library.empty()    ? "EXPRESS"
               : schema.protocol.empty() ? schema.library
                                         : schema.protocol + ", " + schema.library);
  }
}

void PrintNames(const char* label, const std::vector<std::string>& names) {
  fmt::print("  {}\n", label);
  if (names.empty()) fmt::print("    none\n");
  for (const std::string& name : names) fmt::print("    {}\n", name);
}

void PrintType(const TypeInfo& type) {
  fmt::print("{} ({})\n  attributes\n", type.name, type.schema);
  std::size_t width = 0;
  for (const AttributeInfo& attribute : type.attributes) width = std::max(width, attribute.name.size());
  if (type.attributes.empty()) fmt::print("    none\n");
  for (const AttributeInfo& attribute : type.attributes) {
    const std::string expressType =
        attribute.expressType.empty()
            ? ""
            : fmt::format("{}{}{}, ", attribute.isOptional ? "optional " : "", attribute.expressType,
                          attribute.isDerived ? ", derived" : "");
    fmt::print("    {:<{}}  {}of {}\n", attribute.name, width, expressType, attribute.owner);
  }
  PrintNames("supertypes, the root first", type.supertypes);
  PrintNames("subtypes", type.subtypes);
}

int PrintTypes(const SchemasOptions& options, const std::vector<SchemaInfo>& schemas) {
  std::vector<TypeInfo> types;
  for (const SchemaInfo& schema : schemas) {
    const VELMAR::ExpEntityRuntimeType* type = FindType(options.type, schema.name);
    if (type == nullptr) continue;
    TypeInfo info = Describe(*type);
    if (info.schema == schema.name) types.push_back(std::move(info));
  }
  if (types.empty()) {
    throw std::runtime_error(fmt::format("there is no entity type '{}' in {}", options.type,
                                         schemas.size() == 1 ? schemas[0].name : "any schema"));
  }
  Json json = Json::array();
  for (const TypeInfo& type : types) {
    if (options.json) {
      json.push_back(ToJson(type));
      continue;
    }
    if (&type != &types.front()) fmt::print("\n");
    PrintType(type);
  }
  if (options.json) fmt::print("{}", ToText(json));
  return kDone;
}

int Schemas(const SchemasOptions& options) {
  const std::vector<SchemaInfo> schemas = Load(options.schema);
  if (!options.type.empty()) return PrintTypes(options, schemas);
  const bool isOne = options.schema.schema || !options.schema.express.empty();
  if (options.json) {
    Json json = ToJson(schemas);
    if (isOne) {
      for (Json& schema : json) schema["type_names"] = TypesOf(schema["name"].get<std::string>());
    }
    fmt::print("{}", ToText(json));
  } else if (isOne) {
    for (const SchemaInfo& schema : schemas) {
      for (const std::string& name : TypesOf(schema.name)) fmt::print("{}\n", name);
    }
  } else {
    PrintSchemas(schemas);
  }
  return kDone;
}

}  // namespace

void AddSchemas(CLI::App& program, Run& run) {
  auto options = std::make_shared<SchemasOptions>();
  CLI::App* command =
      program.add_subcommand("schemas",
                             "Lists the schemas that there are; with --schema or --express the types of one; "
                             "with TYPE the attributes, "
                             "supertypes and subtypes of a type, in every schema that has it");
  command->add_option("TYPE", options->type, "An entity type, in any case of letters");
  options->schema.AddSchemaTo(*command);
  command->add_flag("--json", options->json, "Prints an array of objects");
  command->footer(Footer("velmar schemas advanced_face --schema AP214"));
  command->callback([options, &run] { run = [options] { return Schemas(*options); }; });
}

}  // namespace velmar
