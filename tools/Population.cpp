#include "Population.h"

#include <fmt/format.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "Input.h"
#include "LossFinder.h"

namespace velmar {

namespace {

using VELMAR::ExpRuntimeRegistry;
using VELMAR::Schema;

constexpr struct {
  Schema schema;
  const char* shortName;
} kSchemas[] = {
    {VELMAR::STEP_AP203, "AP203"}, {VELMAR::STEP_AP203E2, "AP203 edition 2"},
    {VELMAR::STEP_AP214, "AP214"}, {VELMAR::STEP_AP242, "AP242"},
    {VELMAR::PLIB, "PLIB"},        {VELMAR::ISO13399, "ISO 13399"},
};

bool HasLibrary(Schema schema) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  return registry->IsSchemaRegistered(registry->EvalRegisteredSchema(schema));
}

// AP214 is also what the library takes for a name that it does not know.
bool IsNameOfAp214(const std::string& name) {
  const std::string upper = VELMAR::ToUpperString(name);
  return upper.find("AUTO") != std::string::npos || upper.find("AP214") != std::string::npos;
}

// The library ends the process where a token is longer than it can hold. This says in which file, when that
// happens.
const char* fileBeingRead = nullptr;

void SayWhereReadingEnded() {
  if (fileBeingRead == nullptr) return;
  fmt::print(stderr, "{}: error: the file holds a token of more than 32,767 characters and cannot be read\n",
             fileBeingRead);
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

void Population::ReadAndReport(const std::string& path, Messages& messages) {
  unknownTypes_.clear();
  repeated_.clear();
  schemaOfFile_.clear();
  schemaSupported_ = true;
  if (HasDamagedByteOrderMark(path)) {
    messages.Add(Severity::kError, 1, 1, "damaged byte order mark: EF is not followed by BB BF");
    return;
  }

  const Reading reading(path);
  {
    const LogListener listener(messages);
    const auto start = std::chrono::steady_clock::now();
    Read(path);
    readingTime_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (file != nullptr) LossFinder(file.get(), *this, messages).Find();
}

VELMAR::ExpEntity* Population::CreateEntity(const std::string& typeName) {
  VELMAR::ExpEntity* entity = ExpFile::CreateEntity(typeName);
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
  schemaOfFile_ = name;
  ExpFile::SetSchemaName(std::move(name));
  schemaSupported_ =
      HasLibrary(GetSchema()) && (GetSchema() != VELMAR::STEP_AP214 || IsNameOfAp214(schemaOfFile_));
}

void Population::DeleteEntities() {
  count_ = 0;
  withoutParts_ = 0;
  ExpFile::DeleteEntities();
}

std::string SupportedSchemas() {
  std::vector<std::string> names;
  for (const auto& [schema, shortName] : kSchemas) {
    if (HasLibrary(schema)) {
      names.push_back(fmt::format("{} ({})", VELMAR::ExpFile(schema).GetSchemaName(), shortName));
    }
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

const char* ShortName(Schema schema) {
  for (const auto& row : kSchemas) {
    if (row.schema == schema) return row.shortName;
  }
  return "";
}

}  // namespace velmar
