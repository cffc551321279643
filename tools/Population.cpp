#include "Population.h"

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>
#include <vector>

#include "Input.h"
#include "LossFinder.h"
#include "Messages.h"
#include "Schemas.h"

namespace velmar {

namespace {

// The library ends the process where a token is longer than it can hold. This says in which file, when that
// happens.
const char* fileBeingRead = nullptr;

void SayWhereReadingEnded() {
  if (fileBeingRead == nullptr) return;
  Say(std::string(fileBeingRead) +
      ": error: the file holds a token of more than 32,767 characters and cannot be read\n");
}

// Seconds since some point of time.
double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

class Reading {
 public:
  explicit Reading(const std::string& path) {
    static const bool registered = std::atexit(SayWhereReadingEnded) == 0;
    static_cast<void>(registered);
    fileBeingRead = path.c_str();
  }
  ~Reading() { fileBeingRead = nullptr; }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
};

}  // namespace

Population::Population(const ReadingOptions& options)
    : ExpFixedSchemaFile(options.lateBoundSchema),
      isLateBound_(!options.lateBoundSchema.empty()),
      keepsSchema_(isLateBound_ || options.schema.has_value()) {
  if (options.schema) SetSchema(*options.schema);
}

void Population::ReadAndReport(const std::string& path, Messages& messages) {
  unknownTypes_.clear();
  repeated_.clear();
  schemaOfFile_.clear();
  schemaSupported_ = true;
  usesFallback_ = false;
  libraryFailure_.clear();
  fallbackFailure_.clear();
  loadingTime_ = 0;
  wasGivenSchema_ = false;
  if (HasDamagedByteOrderMark(path)) {
    messages.Add(Severity::kError, 1, 1, "damaged byte order mark: EF is not followed by BB BF");
    return;
  }

  const Reading reading(path);
  {
    const LogListener listener(messages);
    const double start = Now();
    Read(path);
    readingTime_ = Now() - start - loadingTime_;
  }
  if (!messages.Unreadable().empty()) {
    throw std::runtime_error(path + " cannot be read: " + messages.Unreadable());
  }
  if (messages.Errors() == 0 && !wasGivenSchema_) {  // the library takes it for no file
    throw std::runtime_error(path + " cannot be read: it is empty");
  }
  LoadTypes();  // where the file was given up before its schema was known
  if (!libraryFailure_.empty()) throw std::runtime_error(libraryFailure_);
  if (!fallbackFailure_.empty()) messages.Add(Severity::kWarning, 0, 0, fallbackFailure_);
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  errno = 0;
  LossFinder(file.get(), *this, messages).Find();
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
}

VELMAR::ExpEntity* Population::CreateEntity(const std::string& typeName) {
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
  // A complex instance of which no part is known has no text that could be read again.
  auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity);
  if (complex != nullptr && complex->GetEntities()->empty()) {
    ++withoutParts_;
    return;
  }

  const bool isNew = GetEntity(number) == nullptr;
  try {
    ExpFile::AddEntity(number, entity);
  } catch (const std::length_error&) {
    throw std::string("an instance number is out of range; nothing of the file is kept");
  }
  if (isNew) {
    ++count_;
  } else {
    repeated_.insert(number);
  }
}

void Population::SetSchemaName(std::string name) {
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
  count_ = 0;
  withoutParts_ = 0;
  ExpFile::DeleteEntities();
}

}  // namespace velmar
