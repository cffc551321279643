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

/// relation
class VELMAR_API Relation : public EntityBase {
 public:
  ~Relation() override;
  using EntityBase::GetMember;
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
  using EntityBase::GetMember;
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
