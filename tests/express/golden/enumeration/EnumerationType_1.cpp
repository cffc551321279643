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

void Visitor::VisitCrossing(Crossing* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"CROSSING", &ExpSchemaCreate<Crossing>, 2, 0, 0, 1,
     "",
     "",
     "shows other",
     &typeid(Crossing),
     &ExpSchemaVisit<&Visitor::VisitCrossing>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 1};

}  // namespace VELMAR::EnumerationType
