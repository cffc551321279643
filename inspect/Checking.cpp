#include "Checking.h"

#include <exception>
#include <memory>
#include <stdexcept>

#include "DataDictionary.h"
#include "ExpFile.h"
#include "FileChecker.h"
#include "Input.h"
#include "LibraryLog.h"
#include "Parser.h"
#include "Part21Source.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

// Takes no instance: the parser says what is wrong with the syntax all the same.
class SyntaxOnly : public VELMAR::ExpFile {
 public:
  explicit SyntaxOnly(ReportedProgress& read) : read_(read) {}

  using VELMAR::ExpFile::CreateEntity;
  VELMAR::ExpEntity* CreateEntity(const std::string&) override {
    read_(++count_);
    return nullptr;
  }

 private:
  ReportedProgress& read_;
  double count_ = 0;
};

// The shares of the time that it takes to check a file.
constexpr double kShareOfSyntax = 0.35;
constexpr double kShareOfTypes = 0.25;

}  // namespace

bool CheckSyntax(const std::string& path, Findings& findings, const Progress& progress) {
  RequireReadable(path);
  if (HasDamagedByteOrderMark(path)) {
    findings.Add(Code::kByteOrderMark, {1, 1}, kDamagedByteOrderMark);
    return false;
  }
  const File file = OpenPart21(path);
  std::string unreadable;
  {
    const LibraryLog log(findings);
    ReportedProgress read(progress, progress ? ExpectedInstances(path) : 0);
    SyntaxOnly provider(read);
    VELMAR::Scanner scanner(file.get());
    scanner.AllowLongTokens();
    VELMAR::Parser parser(&scanner);
    parser.SetProvider(&provider);
    try {
      parser.Parse();
    } catch (const std::exception& error) {  // there is no record in the header, or not enough memory
      VELMAR::ExpLogger::WriteLine(error.what(), VELMAR::ExpLogException);
    }
    unreadable = log.Unreadable();
  }
  if (!unreadable.empty()) throw std::runtime_error(path + " cannot be read: " + unreadable);
  return true;
}

Findings CheckFile(const std::string& path, const SchemaChoice& options, const Progress& progress) {
  Findings findings(path);
  ReportedProgress all(progress);
  const Part21Source source(path, all.Part(0, Part21Source::kShareOfJson));
  ReportedProgress checked(all.Part(source.Share(), 1));
  if (!CheckSyntax(source.Path(), findings, checked.Part(0, kShareOfSyntax))) return findings;

  const std::unique_ptr<DataDictionary> dictionary = LoadDictionaryOf(source.Path(), options, findings);
  if (dictionary == nullptr) return findings;

  FileChecker checker(*dictionary, findings);
  const auto learn = [&checker](const WrittenInstance& instance) { checker.Learn(instance); };
  const auto check = [&checker](const WrittenInstance& instance) { checker.Check(instance); };
  ForEachWrittenInstance(source.Path(), ValuesRead::None, learn, checked.Part(kShareOfSyntax, kShareOfSyntax + kShareOfTypes));
  ForEachWrittenInstance(source.Path(), ValuesRead::All, check, checked.Part(kShareOfSyntax + kShareOfTypes, 1));
  checker.CheckWhole();
  findings.Sort();
  return findings;
}

}  // namespace velmar
