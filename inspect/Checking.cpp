#include "Checking.h"

#include <cerrno>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "BundledSchemas.h"
#include "DataDictionary.h"
#include "Diagnostics.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "FileChecker.h"
#include "Input.h"
#include "WrittenInstances.h"
#include "LibraryLog.h"
#include "Loader.h"
#include "Model.h"
#include "Part21Source.h"
#include "Population.h"
#include "Schemas.h"

namespace velmar {

namespace {

namespace Express = VELMAR::Express;

// Takes no instance: the parser says what is wrong with the syntax all the same.
class SyntaxOnly : public VELMAR::ExpFile {
 public:
  using VELMAR::ExpFile::CreateEntity;
  VELMAR::ExpEntity* CreateEntity(const std::string&) override { return nullptr; }
};

void CheckSyntax(const std::string& path, Findings& findings) {
  const BeingRead reading(path);
  std::string unreadable;
  {
    const LibraryLog log(findings);
    SyntaxOnly file;
    file.Read(path);
    unreadable = log.Unreadable();
  }
  if (!unreadable.empty()) throw std::runtime_error(path + " cannot be read: " + unreadable);
}

// Throws what is wrong with the text.
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

}  // namespace

Findings CheckFile(const std::string& path, const CheckOptions& options) {
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
  Findings findings(path);
  const Part21Source source(path);
  if (HasDamagedByteOrderMark(source.Path())) {
    findings.Add(Code::kByteOrderMark, {1, 1}, "damaged byte order mark: EF is not followed by BB BF");
    return findings;
  }
  CheckSyntax(source.Path(), findings);

  std::unique_ptr<DataDictionary> dictionary;
  if (!options.express.empty()) {
    dictionary = LoadDictionary(options.express, options.includes);
  } else {
    std::optional<VELMAR::Schema> schema = options.schema;
    if (!schema) {
      const NamedSchema named = SchemaNamedIn(source.Path());
      if (!named.name.empty()) schema = FindSchema(named.name);
      if (!schema && named.name.empty()) {
        findings.Add(Code::kNoSchema, named.where, "the file names no schema; supported: " + SupportedSchemas());
      } else if (!schema) {
        findings.Add(Code::kUnsupportedSchema, named.where,
                     "schema '" + named.name + "' is not supported; supported: " + SupportedSchemas());
      }
    }
    if (!schema) return findings;
    const std::string registryName = VELMAR::ExpRuntimeRegistry::GetInstance()->EvalRegisteredSchema(*schema);
    dictionary = LoadDictionary(VELMAR::BundledSchemaText(registryName), {});
  }

  const BeingRead reading(path);
  FileChecker checker(*dictionary, findings);
  ForEachWrittenInstance(source.Path(), false, [&checker](const WrittenInstance& instance) { checker.Learn(instance); });
  ForEachWrittenInstance(source.Path(), true, [&checker](const WrittenInstance& instance) { checker.Check(instance); });
  checker.CheckWhole();
  findings.Sort();
  return findings;
}

}  // namespace velmar
