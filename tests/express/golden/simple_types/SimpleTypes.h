// Generated from simple_types.exp by velmar-express 3.1. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::SimpleTypes {

/// Registers the entity types of SIMPLE_TYPES, which loading the library does, too. A call makes sure
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
class Thing;

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
  virtual void VisitThing(Thing*);
};

/// thing
class VELMAR_API Thing : public EntityBase {
 public:
  ~Thing() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  ExpSchemaReal& AReal() { return a_real_; }  ///< real
  ExpSchemaReal& APreciseReal() { return a_precise_real_; }  ///< real (6)
  ExpSchemaReal& ANumber() { return a_number_; }  ///< number
  ExpInteger& AnInteger() { return an_integer_; }  ///< integer
  ExpString& AString() { return a_string_; }  ///< string
  ExpString& ACode() { return a_code_; }  ///< code
  ExpBoolean& ABoolean() { return a_boolean_; }  ///< boolean
  ExpLogical& ALogical() { return a_logical_; }  ///< logical
  ExpSchemaBinary& ABinary() { return a_binary_; }  ///< binary
  ExpSchemaBinary& AByte() { return a_byte_; }  ///< byte
  ExpSchemaReal& ALength() { return a_length_; }  ///< positive_length
  ExpString& Maybe() { return maybe_; }  ///< optional short_text

 protected:
  ExpSchemaReal a_real_;
  ExpSchemaReal a_precise_real_;
  ExpSchemaReal a_number_;
  ExpInteger an_integer_;
  ExpString a_string_;
  ExpString a_code_;
  ExpBoolean a_boolean_;
  ExpLogical a_logical_;
  ExpSchemaBinary a_binary_;
  ExpSchemaBinary a_byte_;
  ExpSchemaReal a_length_;
  ExpString maybe_;
};

}  // namespace VELMAR::SimpleTypes
