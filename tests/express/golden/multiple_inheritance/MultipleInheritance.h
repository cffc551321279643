// Generated from multiple_inheritance.exp by velmar-express 3.1. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
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
  /// Calls the operation of a Visitor for the entity's class; with other visitors does what ExpEntity does.
  void Accept(ExpEntityVisitor* visitor) override;
};

// The classes of the entities. An attribute that refers to entities has two accessors: one gives its value,
// the other the entities that it leads to in a store, as Resolve or, for aggregates, ResolveAll does.
class Apart;
class Below;
class Bottom;
class Left;
class OtherRoot;
class Right;
class Root;
class Twice;

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
  virtual void VisitApart(Apart*);
  virtual void VisitBelow(Below*);
  virtual void VisitBottom(Bottom*);
  virtual void VisitLeft(Left*);
  virtual void VisitOtherRoot(OtherRoot*);
  virtual void VisitRight(Right*);
  virtual void VisitRoot(Root*);
  virtual void VisitTwice(Twice*);
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
