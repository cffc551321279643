// Generated from enumeration.exp by velmar-express 3.1. Do not edit.
#pragma once

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
  void Accept(ExpEntityVisitor* visitor) override;
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
