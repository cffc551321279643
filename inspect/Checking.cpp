#include "Checking.h"

#include <memory>
#include <stdexcept>

#include "DataDictionary.h"
#include "FileChecker.h"
#include "Input.h"
#include "LibraryLog.h"
#include "Part21Source.h"
#include "Population.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

// Takes no instance: the parser says what is wrong with the syntax all the same.
class SyntaxOnly : public VELMAR::ExpFile {
 public:
  using VELMAR::ExpFile::CreateEntity;
  VELMAR::ExpEntity* CreateEntity(const std::string&) override { return nullptr; }
};

}  // namespace

bool CheckSyntax(const std::string& path, Findings& findings) {
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
  if (HasDamagedByteOrderMark(path)) {
    findings.Add(Code::kByteOrderMark, {1, 1}, "damaged byte order mark: EF is not followed by BB BF");
    return false;
  }
  const BeingRead reading(path);
  std::string unreadable;
  {
    const LibraryLog log(findings);
    SyntaxOnly file;
    file.Read(path);
    unreadable = log.Unreadable();
  }
  if (!unreadable.empty()) throw std::runtime_error(path + " cannot be read: " + unreadable);
  return true;
}

Findings CheckFile(const std::string& path, const SchemaChoice& options) {
  Findings findings(path);
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
  const Part21Source source(path);
  if (!CheckSyntax(source.Path(), findings)) return findings;

  const std::unique_ptr<DataDictionary> dictionary = LoadDictionaryOf(source.Path(), options, findings);
  if (dictionary == nullptr) return findings;

  const BeingRead reading(path);
  FileChecker checker(*dictionary, findings);
  ForEachWrittenInstance(source.Path(), ValuesRead::None, [&checker](const WrittenInstance& instance) { checker.Learn(instance); });
  ForEachWrittenInstance(source.Path(), ValuesRead::All, [&checker](const WrittenInstance& instance) { checker.Check(instance); });
  checker.CheckWhole();
  findings.Sort();
  return findings;
}

}  // namespace velmar
