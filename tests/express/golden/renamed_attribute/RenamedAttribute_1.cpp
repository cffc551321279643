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

NarrowRelation::~NarrowRelation() = default;

Relation::~Relation() = default;

ExpAttribute* Relation::GetMember(int index) {
  switch (index) {
    case 0: return &relating_;
    case 1: return &related_;
    default: return nullptr;
  }
}

namespace {

constexpr ExpEntityTypeRow kEntityTypes[] = {
    {"ASSEMBLY_RELATION", &ExpSchemaCreate<AssemblyRelation>, 3, 0, 2, 1,
     "RELATION",
     "NARROW_RELATION",
     "relating related quantity"},
    {"NARROW_RELATION", &ExpSchemaCreate<NarrowRelation>, 3, 0, 3, 2,
     "RELATION ASSEMBLY_RELATION",
     "",
     "relating related quantity"},
    {"RELATION", &ExpSchemaCreate<Relation>, 2, 0, 0, 3,
     "",
     "ASSEMBLY_RELATION",
     "relating related"},
};

}  // namespace

void Register1(const char* schema) { RegisterEntityTypes(schema, kEntityTypes, 3); }

}  // namespace VELMAR::RenamedAttribute
