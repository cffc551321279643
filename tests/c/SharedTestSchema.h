/// @file SharedTestSchema.h
/// A schema library of two types, built as a shared object of its own, as generated ones are.
#pragma once

#include <string>
#include <typeinfo>

#include "ExpSchemaLibrary.h"
#include "VelmarClasses.h"

namespace VELMAR::SharedTestSchema {

inline constexpr const char* kSchema = "SHARED_TEST_SCHEMA";

/// ENTITY GADGET; label : STRING; END_ENTITY;
class VELMAR_API Gadget : virtual public ExpEntity {
 public:
  static ExpEntity* New();
  ~Gadget() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  ExpString& Label() { return label_; }

 private:
  ExpString label_;
};

/// ENTITY GIZMO SUBTYPE OF (GADGET); other : GADGET; END_ENTITY;
class VELMAR_API Gizmo : virtual public Gadget {
 public:
  static ExpEntity* New();
  ~Gizmo() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;
  ExpLink& Other() { return other_; }

 private:
  ExpLink other_;
};

/// A link of the schema library's own class.
class VELMAR_API GadgetLink : public ExpLink {
 public:
  using ExpLink::ExpLink;
  ~GadgetLink() override;
};

/// The name of the value's class among those of the library, found by dynamic_cast within the shared object.
VELMAR_API std::string KindByCast(ExpAttribute* value);
/// As above for entities.
VELMAR_API std::string KindByCast(ExpEntity* entity);
/// The type information of the object, taken within the shared object.
VELMAR_API const std::type_info& TypeOf(ExpAttribute* value);
VELMAR_API const std::type_info& TypeOf(ExpEntity* entity);
/// The type information of library classes as the shared object sees it.
VELMAR_API const std::type_info& TypeOfExpString();
VELMAR_API const std::type_info& TypeOfComplexInstance();

/// Throws what the library throws, from within the shared object.
VELMAR_API void ThrowDescriptiveException(const std::string& message);
VELMAR_API void ThrowText(const std::string& message);
/// What the shared object catches when the library rejects a schema: "descriptive_exception: " and the
/// message.
VELMAR_API std::string CaughtFromLibrary();

}  // namespace VELMAR::SharedTestSchema
