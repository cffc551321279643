#include "ExpRuntimeRegistry.h"

#include <algorithm>
#include <cstdint>
#include <iomanip>
#include <limits>
#include <memory>
#include <new>
#include <sstream>
#include <typeinfo>
#include <utility>

#include "ExpFile.h"
#include "ExpLogging.h"
#include "ExpUtilities.h"
#include "KeptValues.h"
#include "OrdinaryEntityType.h"
#include "SchemaNames.h"
#include "SmallObjectPool.h"
#include "VelmarClasses.h"

namespace VELMAR {

// -------------------------------------------------------------------------------------------------- ExpRuntimeType

ExpRuntimeType::ExpRuntimeType(std::string name, std::string schema)
    : name_(std::move(name)), schema_(std::move(schema)) {}
ExpRuntimeType::~ExpRuntimeType() = default;

// -------------------------------------------------------------------------------------------- ExpEntityRuntimeType

ExpEntityRuntimeType::ExpEntityRuntimeType(std::string name, std::string schema, ExpEntity* (*factory)(),
                                           int nofExplicitMembers, int nofInverseMembers, int externalMappingStartIndex,
                                           bool insertInObjTree, std::vector<std::string>* superClasses,
                                           std::vector<std::string>* subClasses, std::vector<std::string>* memberNames,
                                           int typeNumber)
    : ExpRuntimeType(std::move(name), std::move(schema)),
      factory_(factory),
      nofExplicitMembers_(nofExplicitMembers),
      nofInverseMembers_(nofInverseMembers),
      externalMappingStartIndex_(externalMappingStartIndex),
      typeNumber_(typeNumber),
      insertInObjTree_(insertInObjTree),
      superClasses_(nullptr),
      subClasses_(nullptr),
      memberNames_(nullptr),
      memberIndex_(nullptr),
      instanceLists_(nullptr) {
  // Owned here until nothing can fail any more.
  std::unique_ptr<std::vector<std::string>> supers(superClasses);
  std::unique_ptr<std::vector<std::string>> subs(subClasses);
  std::unique_ptr<std::vector<std::string>> members(memberNames);
  auto memberIndex = std::make_unique<std::map<std::string, unsigned int>>();
  auto instanceLists = std::make_unique<std::map<unsigned int, std::list<ExpEntity*>*>>();
  for (unsigned int position = 0; position < members->size(); ++position) {
    memberIndex->emplace((*members)[position], position);
  }

  const std::unique_ptr<ExpEntity> probe(CreateInstance(-1));
  if (probe == nullptr) throw std::bad_typeid();
  const ExpEntity& instance = *probe;
  const char* implementation = typeid(instance).name();
  implementationTypeName_ = implementation + (*implementation == '*');

  superClasses_ = supers.release();
  subClasses_ = subs.release();
  memberNames_ = members.release();
  memberIndex_ = memberIndex.release();
  instanceLists_ = instanceLists.release();
}

ExpEntityRuntimeType::~ExpEntityRuntimeType() {
  for (const auto& [adminId, instances] : *instanceLists_) delete instances;
  delete instanceLists_;
  delete memberIndex_;
  delete memberNames_;
  delete subClasses_;
  delete superClasses_;
}

ExpEntity* ExpEntityRuntimeType::CreateInstance(int adminId) {
  std::unique_ptr<ExpEntity> entity(factory_());
  if (entity == nullptr) return nullptr;
  entity->runtimeType_ = this;
  if (adminId >= 0) {
    auto found = instanceLists_->find(static_cast<unsigned int>(adminId));
    if (found == instanceLists_->end()) {
      auto instances = std::make_unique<std::list<ExpEntity*>>();
      found = instanceLists_->emplace(static_cast<unsigned int>(adminId), instances.get()).first;
      (void)instances.release();
    }
    found->second->push_back(entity.get());
  }
  return entity.release();
}

std::list<ExpEntity*>* ExpEntityRuntimeType::GetInstanceList(unsigned int adminId) {
  const auto instances = instanceLists_->find(adminId);
  return instances == instanceLists_->end() ? nullptr : instances->second;
}

// The node goes with its entity: both lie far from the next ones, so that a walk of its own over the nodes would cost as
// much again.
void ExpEntityRuntimeType::DeleteFirst(std::list<ExpEntity*>& instances) {
  ExpEntity* entity = instances.front();
  instances.pop_front();
  delete entity;
}

void ExpEntityRuntimeType::DeleteInstanceList(unsigned int adminId) {
  const auto found = instanceLists_->find(adminId);
  if (found == instanceLists_->end()) return;
  const InstanceList instances(found->second);
  instanceLists_->erase(found);
  while (!instances->empty()) DeleteFirst(*instances);
}

// Leaves the list where there is no memory for another one.
void ExpEntityRuntimeType::MoveInstanceList(unsigned int adminId, std::vector<InstanceList>& lists) {
  const auto found = instanceLists_->find(adminId);
  if (found == instanceLists_->end()) return;
  try {
    lists.emplace_back();
  } catch (const std::bad_alloc&) {
    return;
  }
  lists.back().reset(found->second);
  instanceLists_->erase(found);
}

// What was made together lies together, and mostly has neighbouring numbers: the lists are emptied side by side, a range of
// numbers at a time. Ranges that hold little become wider, so that sparse numbers cost no more.
void ExpEntityRuntimeType::DeleteInstances(std::vector<InstanceList>& lists) {
  std::int64_t range = 1024;
  std::int64_t limit = 0;
  while (!lists.empty()) {
    std::size_t deleted = 0;
    std::int64_t lowest = std::numeric_limits<int>::max();
    for (InstanceList& instances : lists) {
      for (; !instances->empty(); ++deleted) {
        const ExpEntity* next = instances->front();
        if (next != nullptr && next->number_ >= limit) {
          lowest = std::min<std::int64_t>(lowest, next->number_);
          break;
        }
        DeleteFirst(*instances);
      }
    }
    const auto isEmpty = [](const InstanceList& instances) { return instances->empty(); };
    lists.erase(std::remove_if(lists.begin(), lists.end(), isEmpty), lists.end());
    if (deleted < lists.size()) range *= 2;
    limit = std::max(limit, lowest) + range;
  }
}

int ExpEntityRuntimeType::GetMemberIndex(const std::string& name) const {
  const auto member = memberIndex_->find(name);
  return member == memberIndex_->end() ? -1 : static_cast<int>(member->second);
}

// -------------------------------------------------------------------------------------------- ExpRuntimeTypeVector

ExpRuntimeTypeVector::ExpRuntimeTypeVector() : types_(new std::map<std::string, ExpRuntimeType*>) {}
ExpRuntimeTypeVector::~ExpRuntimeTypeVector() { delete types_; }

bool ExpRuntimeTypeVector::Add(ExpRuntimeType* type) { return types_->emplace(type->GetSchema(), type).second; }

ExpRuntimeType* ExpRuntimeTypeVector::Get(const std::string& schema) {
  const auto type = types_->find(schema);
  return type == types_->end() ? nullptr : type->second;
}

ExpRuntimeType* ExpRuntimeTypeVector::GetFirst() { return types_->empty() ? nullptr : types_->begin()->second; }

void ExpRuntimeTypeVector::GetTypes(std::vector<ExpRuntimeType*>& out) {
  for (const auto& [schema, type] : *types_) out.push_back(type);
}

// ---------------------------------------------------------------------------------------------- ExpRuntimeRegistry

namespace {

// Where a schema does not define a type, it may come from the integrated resources or from this library itself.
constexpr const char* kIntegratedResources = "STEP_IR_AIC";
constexpr const char* kOwnTypes = "VELMAR";

}  // namespace

ExpRuntimeRegistry* ExpRuntimeRegistry::m_instance = nullptr;

ExpRuntimeRegistry* ExpRuntimeRegistry::GetInstance() {
  if (m_instance == nullptr) m_instance = new ExpRuntimeRegistry;
  return m_instance;
}

ExpRuntimeRegistry::ExpRuntimeRegistry()
    : typesByName_(new std::map<std::string, ExpRuntimeTypeVector*>),
      schemas_(new std::vector<std::string>),
      allTypes_(new std::map<ExpRuntimeType*, ExpRuntimeType*>),
      index_(new std::unordered_map<std::string, ExpRuntimeTypeVector*>) {}

ExpRuntimeRegistry::~ExpRuntimeRegistry() {
  for (const auto& [name, types] : *typesByName_) delete types;
  for (const auto& [type, same] : *allTypes_) delete type;
  delete index_;
  delete allTypes_;
  delete schemas_;
  delete typesByName_;
}

void ExpRuntimeRegistry::RegisterSchema(std::string schema) {
  if (!IsSchemaRegistered(schema)) schemas_->push_back(std::move(schema));
}

void ExpRuntimeRegistry::RegisterEntityRuntimeType(ExpEntityRuntimeType* type, const std::string& name) {
  const std::string& key = name.empty() ? type->GetName() : name;
  ExpRuntimeTypeVector*& types = (*typesByName_)[key];
  if (types == nullptr) {
    types = new ExpRuntimeTypeVector;
    index_->emplace(key, types);
  }
  if (types->Add(type)) RegisterSchema(type->GetSchema());
  allTypes_->emplace(type, type);
}

void ExpRuntimeRegistry::RegisterAdditionalEntityNameForType(const std::string& name, const std::string& schema,
                                                             const std::string& additionalName) {
  if (ExpEntityRuntimeType* type = GetEntityRuntimeType(name, schema)) RegisterEntityRuntimeType(type, additionalName);
}

ExpEntityRuntimeType* ExpRuntimeRegistry::GetEntityRuntimeType(const std::string& name) {
  const auto types = index_->find(name);
  return types == index_->end() ? nullptr : static_cast<ExpEntityRuntimeType*>(types->second->GetFirst());
}

ExpEntityRuntimeType* ExpRuntimeRegistry::GetEntityRuntimeType(const std::string& name, const std::string& schema) {
  const auto types = index_->find(name);
  if (types == index_->end()) return nullptr;
  ExpRuntimeType* type = types->second->Get(schema);
  if (type == nullptr) type = types->second->Get(kIntegratedResources);
  if (type == nullptr) type = types->second->Get(kOwnTypes);
  if (type == nullptr) {
    ExpLogger::WriteLine("the type: " + name + " isn't available for the schema: " + schema, ExpLogMessage);
  }
  return static_cast<ExpEntityRuntimeType*>(type);
}

void ExpRuntimeRegistry::DeleteAllInstances(unsigned int adminId) {
  std::vector<ExpEntityRuntimeType::InstanceList> lists;
  for (const auto& [name, definitions] : *typesByName_) {
    // Not through a list of them: this is how memory is given back when there is none left.
    for (const auto& [schema, type] : *definitions->types_) {
      auto* entityType = dynamic_cast<ExpEntityRuntimeType*>(type);
      if (entityType == nullptr) continue;
      if (typeid(*type) == typeid(OrdinaryEntityType)) entityType->MoveInstanceList(adminId, lists);
      entityType->DeleteInstanceList(adminId);
    }
  }
  if (ExpEntityRuntimeType* unknown = UnknownEntity::Type()) {
    unknown->MoveInstanceList(adminId, lists);
    unknown->DeleteInstanceList(adminId);
  }
  ExpEntityRuntimeType::DeleteInstances(lists);
  SmallObjectPool::Restart();
}

// ------------------------------------------------------------------------------------------------ schema resolution

bool ExpRuntimeRegistry::IsSchemaRegistered(const std::string& schema) {
  return std::find(schemas_->begin(), schemas_->end(), schema) != schemas_->end();
}

std::string ExpRuntimeRegistry::EvalRegisteredSchema(Schema schema) {
  const SchemaNames* names = FindSchemaNames(schema);
  if (names == nullptr) {
    throw descriptive_exception("ExpRuntimeRegistry::EvalRegisteredSchema(): Unknown schema version!");
  }
  return names->registryName;
}

std::string ExpRuntimeRegistry::EvalRegisteredSchema(const std::string& requested) {
  std::string used = FindSchemaNames(SchemaLike(requested))->registryName;
  ExpLogger::WriteLine("requested schema: " + requested + "  --  used schema: " + used, ExpLogMessage);
  return used;
}

// ---------------------------------------------------------------------------------------------------------- reports

namespace {

constexpr const char* kIndent = "      ";
constexpr const char* kSeparator = " :: ";
constexpr int kNameWidth = 80;
constexpr int kSchemaWidth = 30;

void WriteHeading(std::ostream& os, const std::string& title) { os << "\n--- " << title << " ---\n"; }

void WriteCount(std::ostream& os, const std::string& title, std::size_t count) {
  os << "--- " << title << std::to_string(count) << " ---\n";
}

void WriteName(std::ostream& os, const std::string& name) {
  os << kIndent << std::setw(kNameWidth) << std::left << name << kSeparator;
}

void WriteDefinition(std::ostream& os, const ExpRuntimeType& type) {
  WriteName(os, type.GetName());
  os << type.GetSchema() << "\n";
}

void WriteDefinitions(std::ostream& os, const std::string& name, const std::vector<ExpRuntimeType*>& types) {
  WriteName(os, name);
  for (const ExpRuntimeType* type : types) os << std::setw(kSchemaWidth) << std::left << type->GetSchema();
  os << "\n";
}

std::vector<ExpRuntimeType*> TypesOf(ExpRuntimeTypeVector& definitions) {
  std::vector<ExpRuntimeType*> types;
  definitions.GetTypes(types);
  return types;
}

}  // namespace

void ExpRuntimeRegistry::DumpRegisteredSchemas(std::ostream& os) {
  WriteHeading(os, "registered schemas");
  for (const std::string& schema : *schemas_) os << kIndent << schema << "\n";
  WriteCount(os, "registered schemas count: ", schemas_->size());
}

void ExpRuntimeRegistry::DumpRegisteredEntityTypes(std::ostream& os) {
  WriteHeading(os, "registered entity types");
  std::size_t count = 0;
  for (const auto& [name, definitions] : *typesByName_) {
    for (const ExpRuntimeType* type : TypesOf(*definitions)) {
      WriteDefinition(os, *type);
      ++count;
    }
  }
  WriteCount(os, "registered entity types count: ", count);
}

void ExpRuntimeRegistry::DumpSingleDefinitions(std::ostream& os) {
  WriteHeading(os, "single defined entity types");
  std::size_t count = 0;
  for (const auto& [name, definitions] : *typesByName_) {
    const std::vector<ExpRuntimeType*> types = TypesOf(*definitions);
    if (types.size() != 1) continue;
    WriteDefinition(os, *types.front());
    ++count;
  }
  WriteCount(os, "single defined entity types: ", count);
}

void ExpRuntimeRegistry::DumpMultipleDefinitions(std::ostream& os) {
  WriteHeading(os, "multiple defined entity types");
  std::size_t count = 0;
  for (const auto& [name, definitions] : *typesByName_) {
    const std::vector<ExpRuntimeType*> types = TypesOf(*definitions);
    if (types.size() < 2) continue;
    WriteDefinitions(os, name, types);
    ++count;
  }
  WriteCount(os, "multiple defined entity types count: ", count);
}

void ExpRuntimeRegistry::DumpMultipleDefinitions(std::ostream& os, bool containing, std::string schema) {
  const std::string title =
      std::string("multiple defined entity types ") + (containing ? "containing " : "NOT containing ") + schema;
  WriteHeading(os, title);
  std::size_t count = 0;
  try {
    for (const auto& [name, definitions] : *typesByName_) {
      const std::vector<ExpRuntimeType*> types = TypesOf(*definitions);
      if (types.size() < 2) continue;
      const bool contains = std::any_of(types.begin(), types.end(), [&schema](const ExpRuntimeType* type) {
        return type->GetSchema() == schema;
      });
      if (contains != containing) continue;
      std::ostringstream line;
      WriteDefinitions(line, name, types);
      os << line.str();
      ++count;
    }
  } catch (...) {
    os << "--- error while writing types! ---\n";
  }
  WriteCount(os, title + " count: ", count);
}

}  // namespace VELMAR
