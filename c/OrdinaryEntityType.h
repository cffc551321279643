/// @file OrdinaryEntityType.h
/// For the library itself: entity types apart from those that applications register themselves.
#pragma once

#include "ExpRuntimeRegistry.h"

namespace VELMAR {

/// The type of a generated class, or of one of the library's own: nobody sees in which order the instances of such types are
/// deleted, so the registry chooses the quickest. Those of other types are deleted type by type, in the order of the names.
class OrdinaryEntityType final : public ExpEntityRuntimeType {
 public:
  using ExpEntityRuntimeType::ExpEntityRuntimeType;
};

}  // namespace VELMAR
