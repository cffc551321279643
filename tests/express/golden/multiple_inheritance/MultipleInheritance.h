// Generated from multiple_inheritance.exp by velmar-express 3.1. Do not edit.
#pragma once

#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::MultipleInheritance {

/// Registers the entity types of MULTIPLE_INHERITANCE, which loading the library does, too. A call makes sure
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

/// root
class VELMAR_API Root : virtual public EntityBase {
 public:
  ~Root() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& R1() { return r1_; }  ///< integer
  ExpInteger& R2() { return r2_; }  ///< integer

 protected:
  ExpInteger r1_;
  ExpInteger r2_;
};

/// left
class VELMAR_API Left : virtual public Root {
 public:
  ~Left() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& L() { return l_; }  ///< string

 protected:
  ExpString l_;
};

/// apart
class VELMAR_API Apart : public Left {
 public:
  ~Apart() override;
};

/// right
class VELMAR_API Right : virtual public Root {
 public:
  ~Right() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpString& R() { return r_; }  ///< string

 protected:
  ExpString r_;
};

/// other_root
class VELMAR_API OtherRoot : virtual public EntityBase {
 public:
  ~OtherRoot() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSchemaReal& O() { return o_; }  ///< real

 protected:
  ExpSchemaReal o_;
};

/// bottom
class VELMAR_API Bottom : public Right, public Left, public OtherRoot {
 public:
  ~Bottom() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpLogical& B() { return b_; }  ///< logical

 protected:
  ExpLogical b_;
};

/// below
class VELMAR_API Below : public Bottom {
 public:
  ~Below() override;
};

/// twice
class VELMAR_API Twice : virtual public Root, public Left {
 public:
  ~Twice() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& T() { return t_; }  ///< integer

 protected:
  ExpInteger t_;
};

}  // namespace VELMAR::MultipleInheritance
