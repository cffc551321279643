#include "TypeInfo.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "LateBoundType.h"
#include "Schemas.h"

namespace velmar {

namespace {

using VELMAR::ExpEntityRuntimeType;
using VELMAR::ExpRuntimeRegistry;

constexpr const char* kOwnSchema = "VELMAR";  // header entities and complex instances

// All types as (schema, name), read off the registry's report: it has a line with name, separator and schema
// for each type, also for each further name under which one is registered, and lines of more words before and
// behind.
std::set<std::pair<std::string, std::string>> AllTypes() {
  std::stringstream report;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(report);
  std::set<std::pair<std::string, std::string>> types;
  for (std::string line; std::getline(report, line);) {
    std::istringstream stream(line);
    const std::istream_iterator<std::string> begin(stream);
    const std::vector<std::string> words(begin, {});
    if (words.size() == 3 && words[2] != kOwnSchema) types.emplace(words[2], words[0]);
  }
  return types;
}

// "AUTOMOTIVE_DESIGN::POINT" as "POINT"
std::string WithoutSchema(const std::string& qualified) {
  const std::size_t at = qualified.find("::");
  return at == std::string::npos ? qualified : qualified.substr(at + 2);
}

// The topmost supertype that has the attribute, or the type itself.
std::string OwnerOf(const std::string& attribute, const TypeInfo& info) {
  for (const std::string& supertype : info.supertypes) {
    const ExpEntityRuntimeType* type = FindType(supertype, info.schema);
    if (type != nullptr && type->GetMemberIndex(attribute) >= 0) return supertype;
  }
  return info.name;
}

}  // namespace

std::vector<SchemaInfo> RegisteredSchemas() {
  std::map<std::string, std::size_t> counts;
  for (const auto& [schema, name] : AllTypes()) ++counts[schema];
  std::vector<SchemaInfo> schemas;
  schemas.reserve(counts.size());
  for (const auto& [schema, count] : counts) {
    schemas.push_back({schema, ProtocolOf(schema), LibraryFile(schema), count});
  }
  return schemas;
}

std::vector<std::string> TypesOf(const std::string& schema) {
  std::vector<std::string> names;
  for (const auto& [typeSchema, name] : AllTypes()) {
    if (typeSchema == schema) names.push_back(name);
  }
  return names;
}

const ExpEntityRuntimeType* FindType(const std::string& name, const std::string& schema) {
  const ExpEntityRuntimeType* type =
      ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(VELMAR::ToUpperString(name), schema);
  return type == nullptr || type->GetSchema() == kOwnSchema ? nullptr : type;
}

TypeInfo Describe(const ExpEntityRuntimeType& type) {
  TypeInfo info = {type.GetSchema(), type.GetName(), {}, {}, {}};
  for (const std::string& supertype : *type.GetSuperClasses()) {
    const std::string name = WithoutSchema(supertype);
    if (name != "ExpEntity") info.supertypes.push_back(name);
  }
  for (const std::string& subtype : *type.GetSubClasses()) info.subtypes.push_back(WithoutSchema(subtype));
  std::sort(info.subtypes.begin(), info.subtypes.end());
  if (const auto* lateBound = dynamic_cast<const VELMAR::LateBoundType*>(&type)) {
    for (const VELMAR::LateBoundAttribute& attribute : lateBound->GetAttributes()) {
      info.attributes.push_back(
          {attribute.name, attribute.owner, attribute.expressType, attribute.optional, attribute.derived});
    }
  } else {
    for (const std::string& name : *type.GetMemberNames()) {
      info.attributes.push_back({name, OwnerOf(name, info), "", false, false});
    }
  }
  return info;
}

std::vector<std::string> AllSubtypes(const ExpEntityRuntimeType& type, const std::string& schema) {
  std::set<std::string> seen;
  std::vector<std::string> names;
  std::vector<const ExpEntityRuntimeType*> pending = {&type};
  while (!pending.empty()) {
    const ExpEntityRuntimeType* next = pending.back();
    pending.pop_back();
    for (const std::string& qualified : *next->GetSubClasses()) {
      const std::string name = WithoutSchema(qualified);
      if (!seen.insert(name).second) continue;
      names.push_back(name);
      if (const ExpEntityRuntimeType* subtype = FindType(name, schema)) pending.push_back(subtype);
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace velmar
