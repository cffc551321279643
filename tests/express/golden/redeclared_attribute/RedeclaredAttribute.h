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

/// Registers the same classes under a further schema name, "STEP_IR_AIC" say.
VELMAR_API void RegisterAs(const char* registrySchemaName);

/// What the classes of all entities derive from. It does what ExpEntity does; but as its operations are in
/// this library, references to them are settled while linking and not, class by class, while loading.
class VELMAR_API EntityBase : public ExpEntity {
 public:
  ~EntityBase() override;
  ExpAttribute* GetMember(int index) override;
  ExpAttribute* GetMember(const std::string& name) override;
  std::vector<std::string>* GetMemberNames() override;
  const std::string& GetExpClassName() const override;
  std::vector<std::string>* GetExpSuperClasses() const override;
  std::vector<std::string>* GetExpSubClasses() const override;
  int GetNofInverseMembers() override;
  int GetNofExplicitMembers() override;
  int GetExternalMappingStartIndex() override;
  int GetTypeNumberOfEntity() override;
  bool InsertInObjTree() const override;
  void SetEntityNumber(int number) override;
  int GetEntityNumber() override;
  std::string ToString() override;
  void Accept(ExpEntityVisitor* visitor) override;
};

/// unit
class VELMAR_API Unit : public EntityBase {
 public:
  ~Unit() override;
  using EntityBase::GetMember;
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
  using EntityBase::GetMember;
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
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& Label() { return label_; }  ///< string

 protected:
  ExpString label_;
};

}  // namespace VELMAR::RedeclaredAttribute
