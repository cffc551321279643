#include "ExpFile.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <system_error>

#include "AddOwned.h"
#include "ExpLogging.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "KeptValues.h"
#include "ReplaceFile.h"
#include "SchemaNames.h"
#include "ValueText.h"

namespace VELMAR {

// --------------------------------------------------------------------------------------------------------- schemas

const char* const ExpFile::SCHEMA_NAME_STEP_AP203 = "CONFIG_CONTROL_DESIGN";
const char* const ExpFile::SCHEMA_NAME_STEP_AP203E2 =
    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF";
const char* const ExpFile::SCHEMA_NAME_STEP_AP214 = "AUTOMOTIVE_DESIGN";
const char* const ExpFile::SCHEMA_NAME_STEP_AP242 = "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM";
const char* const ExpFile::SCHEMA_NAME_PLIB = "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA";
const char* const ExpFile::SCHEMA_NAME_ISO13399 = "CUTTING_TOOL_SCHEMA_ARM";

namespace {

// The row of the first schema that the test holds for; null where there is none.
const SchemaNames* FindSchemaNamesIf(const std::function<bool(const SchemaNames&)>& test) {
  static const SchemaNames kNames[] = {
      {STEP_AP203,   ExpFile::SCHEMA_NAME_STEP_AP203,   "CONFIG_CONTROL_DESIGN"},
      {STEP_AP203E2, ExpFile::SCHEMA_NAME_STEP_AP203E2, "AP203_E2"},
      {STEP_AP214,   ExpFile::SCHEMA_NAME_STEP_AP214,   "AUTOMOTIVE_DESIGN"},
      {STEP_AP242,   ExpFile::SCHEMA_NAME_STEP_AP242,   "AP242"},
      {PLIB,         ExpFile::SCHEMA_NAME_PLIB,         "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA"},
      {ISO13399,     ExpFile::SCHEMA_NAME_ISO13399,     "CUTTING_TOOL_SCHEMA_ARM"},
  };
  const auto* const found = std::find_if(std::begin(kNames), std::end(kNames), test);
  return found == std::end(kNames) ? nullptr : found;
}

}  // namespace

const SchemaNames* FindSchemaNames(Schema schema) {
  return FindSchemaNamesIf([schema](const SchemaNames& names) { return names.schema == schema; });
}

const SchemaNames* FindSchemaNames(const std::string& registryName) {
  return FindSchemaNamesIf([&registryName](const SchemaNames& names) { return names.registryName == registryName; });
}

Schema SchemaLike(const std::string& name) {
  enum Test { Is, Contains };
  static constexpr struct {
    Test test;
    const char* text;
    Schema schema;
  } kTests[] = {
      {Is,       "CONFIG_CONTROL_DESIGN", STEP_AP203},
      {Is,       "CONFIG CONTROL DESIGN", STEP_AP203},
      {Is,       "AP203",                 STEP_AP203},
      {Is,       "AP203_E2",              STEP_AP203E2},
      {Is,       "AP203 E2",              STEP_AP203E2},
      {Contains, "AP203_CONFIGURATION",   STEP_AP203E2},
      {Contains, "AP214",                 STEP_AP214},
      {Contains, "AUTO",                  STEP_AP214},
      {Contains, "242",                   STEP_AP242},
      {Contains, "ISO13584",              PLIB},
      {Contains, "ISO13399",              ISO13399},
      {Contains, "CUTTING_TOOL",          ISO13399},
  };
  for (const auto& row : kTests) {
    if (row.test == Is ? name == row.text : name.find(row.text) != std::string::npos) return row.schema;
  }
  return STEP_AP214;
}

std::string ExpFile::GetSchemaName() { return schemaName_; }
Schema ExpFile::GetSchema() const { return schema_; }
std::string ExpFile::GetEnforcedFactoryName() { return enforcedFactoryName_; }

void ExpFile::SetSchema(Schema schema) {
  const SchemaNames* names = FindSchemaNames(schema);
  if (names == nullptr) throw descriptive_exception("ExpFile::SetSchema(): Unknown schema version!");
  schemaName_ = names->canonicalName;
  schema_ = schema;
  enforcedFactoryName_ = ExpRuntimeRegistry::GetInstance()->EvalRegisteredSchema(schema);
}

void ExpFile::SetSchemaName(std::string name) {
  name = ToUpperString(std::move(name));
  SetSchema(SchemaLike(name));
  ExpLogger::WriteLine("Input schema name: " + name + "  --  mapped schema name: " + name, ExpLogMessage);
}

// ------------------------------------------------------------------------------------------------------- lifecycle

namespace {

constexpr int kInitialSlots = 100000;

}  // namespace

ExpFile::ExpFile() : ExpFile(STEP_AP214) {}

ExpFile::ExpFile(Schema schema) : ExpFile(schema, std::string()) {}

ExpFile::ExpFile(Schema schema, const std::string& factoryName) : importer_(nullptr), schema_(STEP_AP214) {
  try {
    Init(schema, factoryName);
  } catch (...) {
    delete GetAdaptedAdmin();
    delete importer_;
    throw;
  }
}

ExpFile::~ExpFile() {
  try {
    ClearEntityVector();
    EmptyStore();
  } catch (...) {  // an entity's destructor; the rest goes all the same
  }
  delete GetAdaptedAdmin();
  delete importer_;
}

void ExpFile::Init(Schema schema, const std::string& factoryName) {
  fileName_.clear();
  DeleteEntities();
  if (importer_ == nullptr) importer_ = new Part21Importer;
  if (GetAdaptedAdmin() == nullptr) SetAdaptedAdmin(new ExpFlyweightAdministration(kInitialSlots));
  SetSchema(schema);
  if (!factoryName.empty()) enforcedFactoryName_ = factoryName;
  DeleteEntities();
}

// ----------------------------------------------------------------------------------------------------------- store

ExpEntity* ExpFile::GetEntity(int number) { return GetAdaptedAdmin()->GetEntity(number); }
void ExpFile::AddEntity(int number, ExpEntity* entity) { GetAdaptedAdmin()->AddEntity(number, entity); }
int ExpFile::CreateEntityNumber() { return GetAdaptedAdmin()->CreateEntityNumber(); }
std::size_t ExpFile::GetEntityVectorSize() { return GetAdaptedAdmin()->GetEntityVectorSize(); }
int ExpFile::GetMaxEntityNumber() { return GetAdaptedAdmin()->GetMaxEntityNumber(); }

unsigned int ExpFile::GetAdminId() {
  ExpAbstractObjectAdmin* store = GetAdaptedAdmin();
  return store == nullptr ? static_cast<unsigned int>(-1) : store->GetAdminId();
}

void ExpFile::DeleteEntities() {
  if (ExpAbstractObjectAdmin* store = GetAdaptedAdmin()) store->DeleteEntities();
}

void ExpFile::ClearEntityVector() {
  if (ExpAbstractObjectAdmin* store = GetAdaptedAdmin()) store->ClearEntityVector();
}

void ExpFile::ResetEntityVector() {
  if (ExpAbstractObjectAdmin* store = GetAdaptedAdmin()) store->ResetEntityVector();
}

// DeleteEntities, after which no slot leads to an entity that is gone and none is left that has no number, such as those
// of the header.
void ExpFile::EmptyStore() {
  DeleteEntities();
  if (auto* store = dynamic_cast<ExpFlyweightAdministration*>(GetAdaptedAdmin())) store->ForgetEntities();
}

ExpEntity* ExpFile::CreateEntity(const std::string& entityName) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(
      entityName, enforcedFactoryName_.empty() ? GetSchemaName() : enforcedFactoryName_);
  return type == nullptr ? nullptr : type->CreateInstance(static_cast<int>(GetAdminId()));
}

void ExpFile::DumpEntity(int number, std::ostream& os) { DumpEntity(GetEntity(number), os); }

void ExpFile::DumpEntity(ExpEntity* entity, std::ostream& os) {
  WriteEncodingStart(os);
  WriteHeaderSection(os);
  const CompleteWriting complete(KeepsEverything());
  os << "DATA;\n";
  ExpAbstractObjectAdmin::DumpEntity(entity, os);
  os << "ENDSEC;\n";
  WriteEncodingEnd(os);
}

void ExpFile::Log(const std::string& message) { ExpLogger::Write(message, ExpLogMessage); }

// --------------------------------------------------------------------------------------------------------- reading

namespace {

enum class Outcome { Done, Failed, FailedWithoutText };

// Runs `action` and tells what became of it; `text` is that of the exception, if it has one.
template <class Action>
Outcome Attempt(Action action, std::string& text) {
  try {
    action();
    return Outcome::Done;
  } catch (const char* caught) {
    text = caught;
  } catch (const std::string& caught) {
    text = caught;
  } catch (const std::exception& caught) {
    text = caught.what();
  } catch (...) {
    return Outcome::FailedWithoutText;
  }
  return Outcome::Failed;
}

// Opens a file for input; logs where that fails.
bool Open(std::ifstream& file, const std::string& filename) {
  std::error_code error;
  if (!std::filesystem::is_directory(filename, error)) {
    do {
      errno = 0;
      file.open(filename, std::ios::binary);
    } while (!file.is_open() && errno == EINTR);
  }
  if (file.is_open()) return true;
  ExpLogger::WriteLine("Error while opening file " + filename, ExpLogMessage);
  return false;
}

}  // namespace

// Runs `import`; an exception empties the store and is logged behind the text `failure`.
template <class Import>
void ExpFile::Guarded(const std::string& failure, Import import) {
  std::string text;
  const Outcome outcome = Attempt(import, text);
  if (outcome == Outcome::Done) return;
  EmptyStore();
  ExpLogger::WriteLine(failure + (outcome == Outcome::Failed ? " " + text : "'\n   Unknown"), ExpLogException);
}

void ExpFile::KeepEverything(bool keep) { importer_->KeepEverything(keep); }
bool ExpFile::KeepsEverything() const { return importer_->KeepsEverything(); }

void ExpFile::Read(const std::string& filename) {
  std::ifstream file;
  if (!Open(file, filename)) return;
  fileName_ = filename;
  Read(file);
}

void ExpFile::Read(std::istream& is) {
  static const std::string kFailure = "Error while reading from filestream";
  EmptyStore();
  Guarded(kFailure, [this, &is] {
    ExpLogger::WriteLine("Reading from stream", ExpLogMessage);
    importer_->ImportFromStream(&is, this, 0);
  });
}

void ExpFile::Append(const std::string& filename) {
  std::ifstream file;
  if (Open(file, filename)) Append(file);
}

void ExpFile::Append(std::istream& is) {
  static const std::string kFailure = "Error while appending from filestream";
  const int offset = GetMaxEntityNumber();
  Guarded(kFailure, [this, &is, offset] {
    ExpLogger::WriteLine("Appending from stream", ExpLogMessage);
    importer_->ImportFromStream(&is, this, offset, true);
  });
}

// --------------------------------------------------------------------------------------------------------- writing

namespace {

std::string Now() {
  char text[80];
  const std::time_t now = std::time(nullptr);
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::localtime(&now)));
}

// A default that has been stored is no longer missing.
void ClearFlags(ExpAttribute& value) {
  value.SetNotProvided(false);
  value.SetOmitted(false);
}

// Stores `text` into the attribute of this name where it is empty: as its text, or as the one element of an aggregate.
void FillIfEmpty(ExpEntity& entity, const std::string& attribute, const std::string& text) {
  ExpAttribute* value = entity.GetMember(attribute);
  if (text.empty()) return;
  if (auto* string = dynamic_cast<ExpString*>(value)) {
    if (!string->GetExpString().empty()) return;
    string->SetExpString(text);
    ClearFlags(*string);
  } else if (auto* list = dynamic_cast<ExpAggregation*>(value)) {
    if (list->NofElements() != 0) return;
    AddOwned(*list, std::make_unique<ExpString>(text));
    ClearFlags(*list);
  }
}

}  // namespace

void ExpFile::WriteEncodingStart(std::ostream& os) { os << "ISO-10303-21;\n"; }
void ExpFile::WriteEncodingEnd(std::ostream& os) { os << "END-ISO-10303-21;\n"; }

ExpEntity* ExpFile::HeaderEntity(const std::string& typeName) {
  std::list<ExpEntity*> entities;
  GetEntities(entities, typeName, true);
  return entities.empty() ? CreateEntity(typeName) : entities.front();
}

void ExpFile::WriteHeaderSection(std::ostream& os) {
  ExpEntity* description = HeaderEntity("FILE_DESCRIPTION");
  ExpEntity* name = HeaderEntity("FILE_NAME");
  ExpEntity* schema = HeaderEntity("FILE_SCHEMA");

  // A path is no Part 21 text yet: its apostrophes are doubled, to be single again in the value.
  FillIfEmpty(*name, "name", ReplaceString(ReplaceString(fileName_, "\\", "/"), "'", "''"));
  FillIfEmpty(*name, "time_stamp", Now());
  FillIfEmpty(*name, "author", "Unknown");
  FillIfEmpty(*name, "organization", "Unknown");
  FillIfEmpty(*name, "preprocessor_version", "Korvane 3.1.1.0");
  FillIfEmpty(*name, "originating_system", "Korvane");
  FillIfEmpty(*name, "authorization", "Unknown");
  FillIfEmpty(*description, "description", "STEP");
  FillIfEmpty(*description, "implementation_level", "1");
  FillIfEmpty(*schema, "schema_identifiers", GetSchemaName());

  os << "HEADER;\n";
  const CompleteWriting complete(KeepsEverything());
  for (ExpEntity* entity : {description, name, schema}) os << entity->ToString() << '\n';
  for (ExpEntity* entity : UnknownEntity::HeaderRecords(GetAdminId())) os << entity->ToString() << '\n';
  os << "ENDSEC;\n\n";
}

void ExpFile::WriteDataSection(std::ostream& os) {
  const CompleteWriting complete(KeepsEverything());
  os << "DATA;\n";
  GetAdaptedAdmin()->Write(os);
  os << "ENDSEC;\n";
}

void ExpFile::Write(std::ostream& os) {
  WriteEncodingStart(os);
  WriteHeaderSection(os);
  WriteDataSection(os);
  WriteEncodingEnd(os);
}

void ExpFile::Write(const std::string& filename) {
  static const std::string kFailure = "Error while writing file";
  std::string text;
  const Outcome outcome = Attempt(
      [this, &filename] {
        ExpLogger::WriteLine("Write file: " + filename, ExpLogMessage);
        VelmarFiles::TextBuffer buffer;
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit | std::ios::failbit);
        WriteEncodingStart(stream);
        WriteHeaderSection(stream);
        WriteDataSection(stream);
        WriteEncodingEnd(stream);
        try {
          VelmarFiles::ReplaceFile(filename, buffer.Blocks());
        } catch (const VelmarFiles::CannotOpen&) {  // nothing has happened, and nothing is said
        }
      },
      text);
  if (outcome == Outcome::Done) return;
  if (outcome == Outcome::FailedWithoutText) text = "Unknown";
  ExpLogger::WriteLine(kFailure + " '" + filename + "'\n   " + text, ExpLogException);
}

}  // namespace VELMAR
