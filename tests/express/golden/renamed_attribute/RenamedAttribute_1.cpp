// Generated from renamed_attribute.exp by velmar-express 3.1. Do not edit.
#include "RenamedAttribute.h"

namespace VELMAR::RenamedAttribute {

AssemblyRelation::~AssemblyRelation() = default;

ExpAttribute* AssemblyRelation::GetMember(int index) {
  switch (index) {
    case 2: return &quantity_;
    default: return Relation::GetMember(index);
  }
}

void Visitor::VisitAssemblyRelation(AssemblyRelation* entity) {
  VisitRelation(entity);
}

NarrowRelation::~NarrowRelation() = default;

void Visitor::VisitNarrowRelation(NarrowRelation* entity) {
  VisitAssemblyRelation(entity);
}

Relation::~Relation() = default;

ExpAttribute* Relation::GetMember(int index) {
  switch (index) {
    case 0: return &relating_;
    case 1: return &related_;
    default: return nullptr;
  }
}

void Visitor::VisitRelation(Relation* entity) {
  VisitExpEntity(entity);
}

namespace {

constexpr ExpEntityTypeRow kRows[] = {
    {"ASSEMBLY_RELATION", &ExpSchemaCreate<AssemblyRelation>, 3, 0, 2, 1,
     "RELATION",
     "NARROW_RELATION",
     "relating related quantity",
     &typeid(AssemblyRelation),
     &ExpSchemaVisit<&Visitor::VisitAssemblyRelation>},
    {"NARROW_RELATION", &ExpSchemaCreate<NarrowRelation>, 3, 0, 3, 2,
     "RELATION ASSEMBLY_RELATION",
     "",
     "relating related quantity",
     &typeid(NarrowRelation),
     &ExpSchemaVisit<&Visitor::VisitNarrowRelation>},
    {"RELATION", &ExpSchemaCreate<Relation>, 2, 0, 0, 3,
     "",
     "ASSEMBLY_RELATION",
     "relating related",
     &typeid(Relation),
     &ExpSchemaVisit<&Visitor::VisitRelation>},
};

}  // namespace

extern const ExpEntityTypeTable kEntityTypes1;
const ExpEntityTypeTable kEntityTypes1 = {kRows, 3};

}  // namespace VELMAR::RenamedAttribute
