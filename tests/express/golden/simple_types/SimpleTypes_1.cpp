// Generated from simple_types.exp by velmar-express 3.1. Do not edit.
#include "SimpleTypes.h"

namespace VELMAR::SimpleTypes {

Thing::~Thing() = default;

ExpAttribute* Thing::GetMember(int index) {
  switch (index) {
    case 0: return &a_real_;
    case 1: return &a_precise_real_;
    case 2: return &a_number_;
    case 3: return &an_integer_;
    case 4: return &a_string_;
    case 5: return &a_code_;
    case 6: return &a_boolean_;
    case 7: return &a_logical_;
    case 8: return &a_binary_;
    case 9: return &a_byte_;
    case 10: return &a_length_;
    case 11: return &maybe_;
    default: return nullptr;
  }
}

void Visitor::VisitThing(Thing* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"THING", &ExpSchemaCreate<Thing>, 12, 0, 0, 1,
     "",
     "",
     "a_real a_precise_real a_number an_integer a_string a_code a_boolean a_logical a_binary a_byte "
     "a_length maybe",
     &typeid(Thing),
     &ExpSchemaVisit<&Visitor::VisitThing>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 1};

}  // namespace VELMAR::SimpleTypes
