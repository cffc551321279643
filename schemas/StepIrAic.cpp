#include "StepIrAic.h"

#include <set>
#include <vector>

#include "Ap242.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace VELMAR::StepIrAic {

namespace {

constexpr const char* kSchema = "STEP_IR_AIC";

// Appends the names of the direct subtypes, without their schema.
void AppendSubtypes(const ExpEntityRuntimeType& type, std::vector<std::string>& names) {
  for (const std::string& subtype : *type.GetSubClasses()) {
    const std::size_t colons = subtype.find("::");
    names.push_back(colons == std::string::npos ? subtype : subtype.substr(colons + 2));
  }
}

// The definition of exactly this schema, or null. Asked in this way the registry looks nowhere else.
ExpEntityRuntimeType* Definition(const std::string& name, const std::string& schema) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, schema);
  return type != nullptr && type->GetSchema() == schema ? type : nullptr;
}

}  // namespace

void Load() {
  static const bool loaded = (Ap242::RegisterAs(kSchema), true);
  static_cast<void>(loaded);
}

void GetEntitiesWithSubtypes(ExpAbstractObjectProvider& file, std::list<ExpEntity*>& out,
                             const std::string& typeName) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  const std::string enforced = file.GetEnforcedFactoryName();
  const std::string schema = enforced.empty() ? file.GetSchemaName() : enforced;
  std::list<ExpEntity*> found;
  std::set<const ExpEntityRuntimeType*> seen;
  std::vector<std::string> names = {ToUpperString(typeName)};
  while (!names.empty()) {
    const std::string name = names.back();
    names.pop_back();
    const ExpEntityRuntimeType* type = registry->GetEntityRuntimeType(name, schema);
    if (type == nullptr || !seen.insert(type).second) continue;
    std::list<ExpEntity*> instances;
    file.GetEntities(instances, name, false);
    found.splice(found.end(), instances);
    AppendSubtypes(*type, names);

    const ExpEntityRuntimeType* general = type->GetSchema() == kSchema ? nullptr : Definition(name, kSchema);
    if (general == nullptr) continue;
    std::vector<std::string> further;
    AppendSubtypes(*general, further);
    for (const std::string& subtype : further) {
      if (Definition(subtype, schema) == nullptr) names.push_back(subtype);
    }
  }
  found.sort(Is_ID_smaller);
  out.splice(out.end(), found);
}

namespace {

[[maybe_unused]] const bool loadedWithTheLibrary = (Load(), true);

}  // namespace
}  // namespace VELMAR::StepIrAic
