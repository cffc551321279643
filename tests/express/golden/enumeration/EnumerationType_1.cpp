// Generated from enumeration.exp by velmar-express 3.1. Do not edit.
#include "EnumerationType.h"

namespace VELMAR::EnumerationType {

Crossing::~Crossing() = default;

ExpAttribute* Crossing::GetMember(int index) {
  switch (index) {
    case 0: return &shows_;
    case 1: return &other_;
    default: return nullptr;
  }
}

namespace {

constexpr ExpEntityTypeRow kEntityTypes[] = {
    {"CROSSING", &ExpSchemaCreate<Crossing>, 2, 0, 0, 1,
     "",
     "",
     "shows other"},
};

}  // namespace

void Register1(const char* schema) { RegisterEntityTypes(schema, kEntityTypes, 1); }

}  // namespace VELMAR::EnumerationType
