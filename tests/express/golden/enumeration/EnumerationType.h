// Generated from enumeration.exp by velmar-express 3.1. Do not edit.
#pragma once

#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpSchemaLibrary.h"

#if VELMAR_VERSION_MAJOR != 3 || VELMAR_VERSION_MINOR != 1
#error "Generated for Velmar 3.1: generate this schema library again with the velmar-express of your version"
#endif

namespace VELMAR::EnumerationType {

/// Registers the entity types of ENUMERATION_TYPE, which loading the library does, too. A call makes sure
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
class Crossing;

/// Receives the entities of this schema, each by the operation for its class. Unless such an operation is
/// overridden it calls that for the first supertype, or VisitExpEntity where the entity has none.
class VELMAR_API Visitor : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  ~Visitor() override;

  /// Does nothing.
  virtual void VisitExpEntity(ExpEntity*);
  virtual void VisitCrossing(Crossing*);
};

/// traffic_light
class VELMAR_API TrafficLight : public ExpSchemaEnumeration<TrafficLight> {
 public:
  enum class Enumeration { Unset = -1, Red, Amber, Green };
  static constexpr const char* kNames = "RED AMBER GREEN";
};

/// unset_or_not
class VELMAR_API UnsetOrNot : public ExpSchemaEnumeration<UnsetOrNot> {
 public:
  enum class Enumeration { Unset = -1, Unset_, A1, A1_ };
  static constexpr const char* kNames = "UNSET A_1 A1";
};

/// crossing
class VELMAR_API Crossing : public EntityBase {
 public:
  ~Crossing() override;
  using EntityBase::GetMember;
  ExpAttribute* GetMember(int index) override;

  TrafficLight& Shows() { return shows_; }  ///< light
  UnsetOrNot& Other() { return other_; }  ///< optional unset_or_not

 protected:
  TrafficLight shows_;
  UnsetOrNot other_;
};

}  // namespace VELMAR::EnumerationType
