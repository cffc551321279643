// Generated from cpp_names.exp by velmar-express 3.1. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::CppNames {

/// Registers the entity types of CPP_NAMES, which loading the library does, too. A call makes sure
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
class Class;
class CppNames_;
class ExpEntity_;
class Late;
class LoAd;
class Load_;

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
  virtual void VisitClass(Class*);
  virtual void VisitCppNames_(CppNames_*);
  virtual void VisitExpEntity_(ExpEntity_*);
  virtual void VisitLate(Late*);
  virtual void VisitLoAd(LoAd*);
  virtual void VisitLoad_(Load_*);
};

/// colour
class VELMAR_API Colour : public ExpSchemaEnumeration<Colour> {
 public:
  enum class Enumeration { Unset = -1, Red };
  static constexpr const char* kNames = "RED";
};

/// namespace
class VELMAR_API Namespace : public ExpSchemaEnumeration<Namespace> {
 public:
  enum class Enumeration { Unset = -1, True, Null, Void, Delete, Unset_ };
  static constexpr const char* kNames = "TRUE_ NULL VOID DELETE UNSET";
};

/// class
class VELMAR_API Class : public EntityBase {
 public:
  ~Class() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& Int() { return int_; }  ///< integer
  ExpString& This() { return this_; }  ///< string
  ExpLink& Operator() { return operator_; }  ///< optional class
  template <class ExpStore>
  CppNames::Class* Operator(ExpStore& store) {
    return Resolve<CppNames::Class>(store, operator_);
  }
  CppNames::Namespace& Class_() { return class_; }  ///< namespace
  ExpString& ToString_() { return to_string_; }  ///< string
  ExpString& Tostring() { return tostring__; }  ///< string
  ExpInteger& GetMember_() { return get_member_; }  ///< integer
  ExpString& ExpString_() { return exp_string_; }  ///< string
  CppNames::Namespace& Namespace() { return namespace_; }  ///< namespace

 protected:
  ExpInteger int_;
  ExpString this_;
  ExpLink operator_;
  CppNames::Namespace class_;
  ExpString to_string_;
  ExpString tostring__;
  ExpInteger get_member_;
  ExpString exp_string_;
  CppNames::Namespace namespace_;
};

/// cpp_names
class VELMAR_API CppNames_ : public EntityBase {
 public:
  ~CppNames_() override;
};

/// exp_entity
class VELMAR_API ExpEntity_ : public EntityBase {
 public:
  ~ExpEntity_() override;
};

/// load
class VELMAR_API Load_ : public EntityBase {
 public:
  ~Load_() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpInteger& A1() { return a_1_; }  ///< integer
  ExpInteger& A1_() { return a1_; }  ///< integer
  CppNames::Colour& Colour() { return colour_; }  ///< colour

 protected:
  ExpInteger a_1_;
  ExpInteger a1_;
  CppNames::Colour colour_;
};

/// late
class VELMAR_API Late : public Load_ {
 public:
  ~Late() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  CppNames::Colour& Other() { return other_; }  ///< colour

 protected:
  CppNames::Colour other_;
};

/// lo_ad
class VELMAR_API LoAd : public EntityBase {
 public:
  ~LoAd() override;
};

}  // namespace VELMAR::CppNames
