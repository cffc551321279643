#include "SharedTestSchema.h"

#include "ExpCustomEntities.h"
#include "ExpFile.h"
#include "ExpUtilities.h"

namespace VELMAR::SharedTestSchema {

// clang-format off
constexpr ExpEntityTypeRow kRows[] = {
    {"GADGET", &Gadget::New, 1, 0, 0, 1, "", "GIZMO", "label"},
    {"GIZMO",  &Gizmo::New,  2, 0, 1, 2, "GADGET", "", "label other"},
};
// clang-format on

[[maybe_unused]] const bool registered = (RegisterEntityTypes(kSchema, kRows, 2), true);

ExpEntity* Gadget::New() { return new Gadget; }
Gadget::~Gadget() = default;
ExpAttribute* Gadget::GetMember(int index) { return index == 0 ? &label_ : nullptr; }

ExpEntity* Gizmo::New() { return new Gizmo; }
Gizmo::~Gizmo() = default;
ExpAttribute* Gizmo::GetMember(int index) { return index == 1 ? &other_ : Gadget::GetMember(index); }

GadgetLink::~GadgetLink() = default;

std::string KindByCast(ExpAttribute* value) {
  if (dynamic_cast<GadgetLink*>(value) != nullptr) return "GadgetLink";
  if (dynamic_cast<ExpLink*>(value) != nullptr) return "ExpLink";
  if (dynamic_cast<ExpReal*>(value) != nullptr) return "ExpReal";
  if (dynamic_cast<ExpInteger*>(value) != nullptr) return "ExpInteger";
  if (dynamic_cast<ExpString*>(value) != nullptr) return "ExpString";
  if (dynamic_cast<ExpAggregation*>(value) != nullptr) return "ExpAggregation";
  if (dynamic_cast<ExpLogical*>(value) != nullptr) return "ExpLogical";
  if (dynamic_cast<ExpBoolean*>(value) != nullptr) return "ExpBoolean";
  if (dynamic_cast<ExpEnumeration*>(value) != nullptr) return "ExpEnumeration";
  if (dynamic_cast<ExpSelect*>(value) != nullptr) return "ExpSelect";
  return "unknown";
}

std::string KindByCast(ExpEntity* entity) {
  if (dynamic_cast<Gizmo*>(entity) != nullptr) return "Gizmo";
  if (dynamic_cast<Gadget*>(entity) != nullptr) return "Gadget";
  if (dynamic_cast<ExpExternalMappingEntity*>(entity) != nullptr) return "ExpExternalMappingEntity";
  if (dynamic_cast<FILE_NAME*>(entity) != nullptr) return "FILE_NAME";
  if (dynamic_cast<FILE_INFORMATION*>(entity) != nullptr) return "FILE_INFORMATION";
  return "unknown";
}

const std::type_info& TypeOf(ExpAttribute* value) { return typeid(*value); }
const std::type_info& TypeOf(ExpEntity* entity) { return typeid(*entity); }
const std::type_info& TypeOfExpString() { return typeid(ExpString); }
const std::type_info& TypeOfComplexInstance() { return typeid(ExpExternalMappingEntity); }

void ThrowDescriptiveException(const std::string& message) { throw descriptive_exception(message); }
void ThrowText(const std::string& message) { throw message; }

std::string CaughtFromLibrary() {
  try {
    ExpFile file(static_cast<Schema>(4));
  } catch (const descriptive_exception& exception) {
    return std::string("descriptive_exception: ") + exception.what();
  } catch (...) {
    return "something else";
  }
  return "nothing";
}

}  // namespace VELMAR::SharedTestSchema
