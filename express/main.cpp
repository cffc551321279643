// velmar-express: checks, prints and lists EXPRESS schemas, and writes the C++ of schema libraries.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "CppWriter.h"
#include "Diagnostics.h"
#include "Loader.h"
#include "Manual.h"
#include "Model.h"
#include "Printer.h"
#include "ReplaceFile.h"

namespace {

using namespace VELMAR::Express;

constexpr int kGood = 0;
constexpr int kSchemaErrors = 1;
constexpr int kUsage = 2;

// What the help of a command ends with.
std::string Footer(const std::string& example) {
  return "Example: " + example +
         "\n\n"
         "Exit status: 0 where all is well, 1 for errors in a schema, 2 for wrong usage or a file that cannot be\n"
         "read or written. Messages go to standard error as file:line:col: severity: text [code].";
}

VelmarManual::Facts ManualFacts() {
  VelmarManual::Facts facts;
  facts.version = "3.1";
  facts.sections = {{"SEE ALSO", {"velmar(1)"}}};
  return facts;
}

struct Options {
  std::vector<std::string> files;
  std::vector<std::string> searchPath;
  std::string outputDirectory = ".";
  std::string depfile;
  std::string depfileTarget;
  std::string registryName;
  std::string schemaName;
  int parts = 8;
};

// The schemas of the given files and those that they interface.
struct Loaded {
  Model model;
  std::size_t given = 0;  // the first schemas of the model are those of the given files
};

// Reads and resolves all files, prints what was found. False where there is an error.
bool Load(const Options& options, Loaded& loaded) {
  Diagnostics diagnostics;
  loaded.given = LoadFiles(loaded.model, options.files, options.searchPath, diagnostics);
  diagnostics.Print(std::cerr);
  return diagnostics.ErrorCount() == 0;
}

int Check(const Options& options) {
  Loaded loaded;
  return Load(options, loaded) ? kGood : kSchemaErrors;
}

int PrintText(const Options& options) {
  Loaded loaded;
  if (!Load(options, loaded)) return kSchemaErrors;
  for (std::size_t i = 0; i < loaded.given; ++i) {
    if (i > 0) std::cout << '\n';
    Print(*loaded.model.schemas[i], std::cout);
  }
  return kGood;
}

const char* KindWord(const Declaration& declaration) {
  switch (declaration.kind) {
    case DeclarationKind::Type:
      return "TYPE";
    case DeclarationKind::Entity:
      return "ENTITY";
    case DeclarationKind::Constant:
      return "CONSTANT";
    case DeclarationKind::Function:
      return "FUNCTION";
    case DeclarationKind::Procedure:
      return "PROCEDURE";
    case DeclarationKind::Rule:
      return "RULE";
    case DeclarationKind::SubtypeConstraint:
      return "SUBTYPE_CONSTRAINT";
    case DeclarationKind::Variable:
      break;
  }
  return "";
}

void ListOne(const char* kind, const std::string& name, const Location& where) {
  const Position position = where.file->PositionOf(where.offset);
  std::cout << where.file->Name() << ':' << position.line << ':' << position.column << ": " << kind << ' '
            << name << '\n';
}

// One line for each declaration, in the order of the texts.
int List(const Options& options) {
  Loaded loaded;
  if (!Load(options, loaded)) return kSchemaErrors;
  for (std::size_t i = 0; i < loaded.given; ++i) {
    const auto& schema = loaded.model.schemas[i];
    ListOne("SCHEMA", schema->name.text, schema->name.where);
    for (const auto& declaration : schema->declarations) {
      ListOne(KindWord(*declaration), schema->name.text + '.' + declaration->name.text,
              declaration->name.where);
    }
  }
  return kGood;
}

// The text of a file; empty where it cannot be read, which then is no reason to leave it as it is.
std::string TextOf(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return "";
  try {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  } catch (const std::ios::failure&) {
    return "";
  }
}

// Leaves a file alone that already has the text, so that nothing is built again without a reason.
void WriteWhereChanged(const std::filesystem::path& path, const std::string& text) {
  if (!text.empty() && TextOf(path) == text) return;
  try {
    VelmarFiles::ReplaceFile(path.string(), {text});
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path.string() + ": " + error.what());
  }
}

// A file name as a rule of a makefile has it.
std::string InRule(const std::string& name) {
  std::string result;
  for (const char c : name) {
    if (c == ' ' || c == '#') result += '\\';
    if (c == '$') result += '$';
    result += c;
  }
  return result;
}

// The rule that says which texts were read, for the tool that builds.
std::string DependencyRule(const std::string& target, const Model& model) {
  std::string rule = InRule(target) + ':';
  for (const std::string& file : FilesOf(model)) rule += " \\\n  " + InRule(file);
  return rule + '\n';
}

int Generate(const Options& options) {
  Loaded loaded;
  if (!Load(options, loaded)) return kSchemaErrors;
  const Model& model = loaded.model;
  const SchemaDeclaration* schema = model.schemas[loaded.given - 1].get();
  if (!options.schemaName.empty()) schema = model.FindSchema(options.schemaName);
  if (!schema) {
    std::cerr << "velmar-express: the files declare no schema '" << options.schemaName << "'\n";
    return kUsage;
  }
  CppOptions cpp;
  cpp.sourceName = std::filesystem::path(schema->name.where.file->Name()).filename().string();
  cpp.registryName = options.registryName.empty() ? schema->name.text : options.registryName;
  for (char& c : cpp.registryName) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  cpp.parts = options.parts;
  std::filesystem::create_directories(options.outputDirectory);
  for (const GeneratedFile& file : WriteCpp(model, *schema, cpp)) {
    WriteWhereChanged(std::filesystem::path(options.outputDirectory) / file.name, file.text);
  }
  if (!options.depfile.empty()) {
    WriteWhereChanged(options.depfile, DependencyRule(options.depfileTarget, model));
  }
  return kGood;
}

std::string ValidateRegistryName(const std::string& name) {
  const auto isPart = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
  const bool good = !name.empty() && std::isalpha(static_cast<unsigned char>(name[0])) &&
                    std::all_of(name.begin(), name.end(), isPart);
  return good ? "" : "a registry name is made of letters, digits and '_', a letter first";
}

void AddSearchPath(CLI::App& command, Options& options) {
  command
      .add_option(
          "-I,--include", options.searchPath,
          "A folder where NAME.exp is looked for, in any case of letters, when a schema NAME is interfaced "
          "that no FILE declares; may be given several times")
      ->type_name("FOLDER")
      ->allow_extra_args(false);
}

int Run(int argc, char** argv) {
  CLI::App app("Checks, prints and lists EXPRESS schemas (ISO 10303-11), and writes C++ classes of them.",
               "velmar-express");
  app.footer(Footer("velmar-express check my_schema.exp"));
  app.set_version_flag("--version", "velmar-express 3.1");
  VelmarManual::AddOptions(app, ManualFacts());
  app.require_subcommand(1);
  Options options;

  CLI::App* check = app.add_subcommand("check", "Read schemas and report what is wrong with them");
  check->add_option("FILE", options.files, "EXPRESS files; schemas in them may interface each other")
      ->required();
  AddSearchPath(*check, options);
  check->footer(Footer("velmar-express check my_schema.exp -I other_schemas"));

  CLI::App* print = app.add_subcommand(
      "print", "Write the schemas in canonical form: without remarks, one form for everything");
  print->add_option("FILE", options.files, "EXPRESS files; schemas in them may interface each other")
      ->required();
  AddSearchPath(*print, options);
  print->footer(Footer("velmar-express print my_schema.exp"));

  CLI::App* list =
      app.add_subcommand("list", "Write the place, kind and name of each declaration, one on a line");
  list->add_option("FILE", options.files, "EXPRESS files; schemas in them may interface each other")
      ->required();
  AddSearchPath(*list, options);
  list->footer(Footer("velmar-express list my_schema.exp"));

  CLI::App* generate = app.add_subcommand("generate", "Write the C++ of a schema library");
  generate->add_option("FILE", options.files, "EXPRESS files: the schema and those it interfaces")
      ->required();
  generate
      ->add_option("--output-dir", options.outputDirectory,
                   "Where the files go; made where it does not exist")
      ->type_name("FOLDER")
      ->capture_default_str();
  generate
      ->add_option(
          "--registry-name", options.registryName,
          "The schema name that the types are registered under; in camel case it names the C++ namespace and "
          "the files. Default: the name of the schema")
      ->type_name("NAME")
      ->check(ValidateRegistryName);
  generate->add_option("--schema", options.schemaName, "Which schema of the files. Default: the last one")
      ->type_name("NAME");
  generate->add_option("--parts", options.parts, "Into how many .cpp files the classes go")
      ->type_name("N")
      ->check(CLI::Range(1, 999))
      ->capture_default_str();
  CLI::Option* depfile =
      generate
          ->add_option("--depfile", options.depfile, "Writes a makefile rule there that says which EXPRESS files were read")
          ->type_name("FILE");
  depfile->needs(generate->add_option("--depfile-target", options.depfileTarget, "The target of that rule")
                     ->type_name("FILE")
                     ->needs(depfile));
  AddSearchPath(*generate, options);
  generate->footer(Footer("velmar-express generate my_schema.exp --output-dir generated"));

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kGood : kUsage;
  }
  if (*check) return Check(options);
  if (*print) return PrintText(options);
  if (*list) return List(options);
  return Generate(options);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef SIGXFSZ
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows beyond its limit is an error of writing, as a full disk is
#endif
  try {
    const int status = Run(argc, argv);
    errno = 0;
    if (!std::cout.flush()) {
      throw std::runtime_error(std::string("standard output cannot be written") +
                               (errno == 0 ? "" : std::string(": ") + std::strerror(errno)));
    }
    return status;
  } catch (const std::exception& error) {
    std::cerr << "velmar-express: " << error.what() << '\n';
    return kUsage;
  }
}
