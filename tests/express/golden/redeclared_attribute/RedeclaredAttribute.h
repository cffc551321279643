// Generated from redeclared_attribute.exp by velmar-express 3.1. Do not edit.
#pragma once

#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::RedeclaredAttribute {

/// Registers the entity types of REDECLARED_ATTRIBUTE, which loading the library does, too. A call makes sure
/// that the library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// unit
class VELMAR_API Unit : public ExpEntity {
 public:
  ~Unit() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSchemaReal& Dimensions() { return dimensions_; }  ///< number
  ExpString& Note() { return note_; }  ///< optional string

 protected:
  ExpSchemaReal dimensions_;
  ExpString note_;
};

/// count_unit
class VELMAR_API CountUnit : public Unit {
 public:
  ~CountUnit() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& Own() { return own_; }  ///< integer

 protected:
  ExpInteger own_;
};

/// fixed_unit
class VELMAR_API FixedUnit : public CountUnit {
 public:
  FixedUnit();
  ~FixedUnit() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Label() { return label_; }  ///< string

 protected:
  ExpString label_;
};

}  // namespace VELMAR::RedeclaredAttribute
