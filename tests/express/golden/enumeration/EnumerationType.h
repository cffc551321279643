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
class VELMAR_API Crossing : public ExpEntity {
 public:
  ~Crossing() override;
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override;

  TrafficLight& Shows() { return shows_; }  ///< light
  UnsetOrNot& Other() { return other_; }  ///< optional unset_or_not

 protected:
  TrafficLight shows_;
  UnsetOrNot other_;
};

}  // namespace VELMAR::EnumerationType
