#include "Population.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Input.h"
#include "LibraryLog.h"
#include "LossFinder.h"
#include "NumberRules.h"
#include "Schemas.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

constexpr double kShareOfReading = 0.9;  // of the time until all is known of a file, where it is as it should be

// Gives a variable a value for as long as it lives.
template <class Value>
class InScope {
 public:
  InScope(Value& variable, Value value) : variable_(variable), before_(variable) { variable = value; }
  ~InScope() { variable_ = before_; }
  InScope(const InScope&) = delete;
  InScope& operator=(const InScope&) = delete;

 private:
  Value& variable_;
  const Value before_;
};

// Seconds since some point of time.
double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

bool IsHeaderType(const std::string& name) {
  return name == "FILE_DESCRIPTION" || name == "FILE_NAME" || name == "FILE_SCHEMA";
}

Population::Population(const ReadingOptions& options)
    : ExpFixedSchemaFile(options.lateBoundSchema),
      isLateBound_(!options.lateBoundSchema.empty()),
      keepsSchema_(isLateBound_ || options.schema.has_value()) {
  KeepEverything(true);
  if (options.schema) SetSchema(*options.schema);
}

void Population::ReadAndReport(const std::string& path, Findings& findings, const Progress& progress) {
  unknownTypes_.clear();
  unresolved_.clear();
  repeated_.clear();
  schemaOfFile_.clear();
  schemaSupported_ = true;
  usesFallback_ = false;
  libraryFailure_.clear();
  fallbackFailure_.clear();
  loadingTime_ = 0;
  wasGivenSchema_ = false;
  hasOddNumbers_ = false;
  if (HasDamagedByteOrderMark(path)) {
    findings.Add(Code::kByteOrderMark, {1, 1}, kDamagedByteOrderMark);
    return;
  }

  ReportedProgress reported(progress);
  std::string unreadable;
  bool hasRemarks = false;
  {
    ReportedProgress read(reported.Part(0, kShareOfReading), progress ? ExpectedInstances(path) : 0);
    const InScope<ReportedProgress*> shown(read_, &read);
    const InScope<bool> begins(isInHeader_, true);
    const LibraryLog log(findings);
    const double start = Now();
    Read(path);
    readingTime_ = Now() - start - loadingTime_;
    unreadable = log.Unreadable();
    hasRemarks = log.HasRemarks();
  }
  if (!unreadable.empty()) throw std::runtime_error(path + " cannot be read: " + unreadable);
  if (findings.Errors() == 0 && !wasGivenSchema_) {  // the library takes it for no file
    throw std::runtime_error(path + " cannot be read: it is empty");
  }
  LoadTypes();  // where the file was given up before its schema was known
  if (!libraryFailure_.empty()) throw std::runtime_error(libraryFailure_);
  if (!fallbackFailure_.empty()) findings.Add(Code::kFallbackLibrary, fallbackFailure_);
  const bool isAsItShouldBe = !hasRemarks && schemaSupported_ && unknownTypes_.empty() && repeated_.empty() && !hasOddNumbers_;
  if (!isAsItShouldBe) LossFinder(*this, findings).Find(path, reported.Part(kShareOfReading, 1));
}

VELMAR::ExpEntity* Population::CreateEntity(const std::string& typeName) {
  if (isInHeader_ && !IsHeaderType(typeName)) return nullptr;  // whatever the schema has under this name
  VELMAR::ExpEntity* entity = ExpFixedSchemaFile::CreateEntity(typeName);
  if (entity == nullptr && usesFallback_) {
    fallbackFailure_ = TryLoading(LoadFallback);
    usesFallback_ = false;  // from now on the registry looks there itself
    entity = ExpFixedSchemaFile::CreateEntity(typeName);
  }
  if (entity == nullptr) ++unknownTypes_[typeName];
  return entity;
}

void Population::AddEntity(int number, VELMAR::ExpEntity* entity) {
  if (number < 1 || number > kGreatestInstance) hasOddNumbers_ = true;
  const bool isNew = GetEntity(number) == nullptr;
  try {
    ExpFile::AddEntity(number, entity);
  } catch (const std::length_error&) {
    throw std::string("an instance number is out of range; nothing of the file is kept");
  }
  if (isNew) {
    areSorted_ = areSorted_ && (numbers_.empty() || numbers_.back() < number);
    numbers_.push_back(number);
    if (read_ != nullptr) (*read_)(static_cast<double>(Count()));
  } else {
    repeated_.insert(number);
  }
}

const std::vector<int>& Population::Numbers() {
  if (!areSorted_) std::sort(numbers_.begin(), numbers_.end());
  areSorted_ = true;
  return numbers_;
}

void Population::SetSchemaName(std::string name) {
  isInHeader_ = false;
  wasGivenSchema_ = true;
  schemaOfFile_ = name;
  if (!keepsSchema_) ExpFixedSchemaFile::SetSchemaName(name);
  schemaSupported_ = keepsSchema_ || FindSchema(name) == GetSchema();
  usesFallback_ = schemaSupported_ && !isLateBound_;
  LoadTypes();
  // It is no fault of the file that its types are not there.
  if (!libraryFailure_.empty()) throw libraryFailure_;
}

void Population::LoadTypes() {
  if (isLateBound_) return;
  libraryFailure_ = TryLoading([this] { LoadLibrary(GetSchema()); });
}

// Gives the reason where loading fails, and counts the time that it takes.
template <class Load>
std::string Population::TryLoading(Load load) {
  const double start = Now();
  std::string failure;
  try {
    load();
  } catch (const std::runtime_error& error) {
    failure = error.what();
  }
  loadingTime_ += Now() - start;
  return failure;
}

void Population::DeleteEntities() {
  numbers_.clear();
  areSorted_ = true;
  ExpFile::DeleteEntities();
}

}  // namespace velmar
