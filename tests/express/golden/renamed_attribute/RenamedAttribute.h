// Generated from renamed_attribute.exp by velmar-express 3.1. Do not edit.
#pragma once

#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::RenamedAttribute {

/// Registers the entity types of RENAMED_ATTRIBUTE, which loading the library does, too. A call makes sure
/// that the library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// relation
class VELMAR_API Relation : public ExpEntity {
 public:
  ~Relation() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Relating() { return relating_; }  ///< string
  ExpString& Related() { return related_; }  ///< string

 protected:
  ExpString relating_;
  ExpString related_;
};

/// assembly_relation
class VELMAR_API AssemblyRelation : public Relation {
 public:
  ~AssemblyRelation() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Assembly() { return Relation::relating_; }  ///< string
  ExpInteger& Quantity() { return quantity_; }  ///< integer

 protected:
  ExpInteger quantity_;
};

/// narrow_relation
class VELMAR_API NarrowRelation : public AssemblyRelation {
 public:
  ~NarrowRelation() override;

  ExpString& Narrow() { return Relation::relating_; }  ///< string
};

}  // namespace VELMAR::RenamedAttribute
