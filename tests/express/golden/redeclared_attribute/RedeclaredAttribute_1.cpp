// Generated from redeclared_attribute.exp by velmar-express 3.1. Do not edit.
#include "RedeclaredAttribute.h"

namespace VELMAR::RedeclaredAttribute {

CountUnit::~CountUnit() = default;

ExpAttribute* CountUnit::GetMember(int index) {
  switch (index) {
    case 2: return &own_;
    default: return Unit::GetMember(index);
  }
}

void Visitor::VisitCountUnit(CountUnit* entity) {
  VisitUnit(entity);
}

FixedUnit::FixedUnit() {
  Unit::dimensions_.SetOmitted(true);
}

FixedUnit::~FixedUnit() = default;

ExpAttribute* FixedUnit::GetMember(int index) {
  switch (index) {
    case 3: return &label_;
    default: return CountUnit::GetMember(index);
  }
}

void Visitor::VisitFixedUnit(FixedUnit* entity) {
  VisitCountUnit(entity);
}

Unit::~Unit() = default;

ExpAttribute* Unit::GetMember(int index) {
  switch (index) {
    case 0: return &dimensions_;
    case 1: return &note_;
    default: return nullptr;
  }
}

void Visitor::VisitUnit(Unit* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"COUNT_UNIT", &ExpSchemaCreate<CountUnit>, 3, 0, 2, 1,
     "UNIT",
     "FIXED_UNIT",
     "dimensions note own",
     &typeid(CountUnit),
     &ExpSchemaVisit<&Visitor::VisitCountUnit>},
    {"FIXED_UNIT", &ExpSchemaCreate<FixedUnit>, 4, 0, 3, 2,
     "UNIT COUNT_UNIT",
     "",
     "dimensions note own label",
     &typeid(FixedUnit),
     &ExpSchemaVisit<&Visitor::VisitFixedUnit>},
    {"UNIT", &ExpSchemaCreate<Unit>, 2, 0, 0, 3,
     "",
     "COUNT_UNIT",
     "dimensions note",
     &typeid(Unit),
     &ExpSchemaVisit<&Visitor::VisitUnit>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 3};

}  // namespace VELMAR::RedeclaredAttribute
