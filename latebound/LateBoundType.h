/// @file LateBoundType.h
/// The description of an entity type that comes from an EXPRESS text at run time.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ExpRuntimeRegistry.h"
#include "VelmarApi.h"

namespace VELMAR {

/// What EXPRESS says about an explicit attribute of an entity type.
struct LateBoundAttribute {
  std::string name;         ///< as GetMember(name) takes it, in lower case
  std::string owner;        ///< the entity that declares it first, in upper case
  std::string expressType;  ///< "list [1 : 3] of length_measure"; the narrowest where subtypes redeclare it
  bool optional;            ///< `$` is a value, too
  bool derived;  ///< a subtype derives its value: it is written `*`
};

/// An entity type whose instances get their attributes when the program runs.
///
/// Registered like the types of schema libraries, with the same names, numbers and lists. Its instances have
/// members of the classes that a schema library has (ExpSchemaReal, ExpInteger, ExpString, ExpBoolean,
/// ExpLogical, ExpSchemaBinary, ExpSelect, ExpLink, ExpAggregation, and an ExpEnumeration that knows the
/// items of its type); they are reached by GetMember, by position or by name. All instances are of one C++
/// class, whatever their type.
class VELMAR_API LateBoundType : public ExpEntityRuntimeType {
 public:
  ~LateBoundType() override;

  /// Whether the entity is ABSTRACT. Such a type, too, has instances: as parts of complex ones.
  bool IsAbstract() const;
  /// The explicit attributes in the order of GetMember, inherited ones included.
  const std::vector<LateBoundAttribute>& GetAttributes() const;

 private:
  friend class LateBoundEntity;
  friend class LateBoundTypeMaker;
  class Members;

  LateBoundType(std::string name, std::string schema, int nofInverseMembers, int externalMappingStartIndex,
                std::vector<std::string>* superClasses, std::vector<std::string>* subClasses,
                std::vector<std::string>* memberNames, int typeNumber,
                std::unique_ptr<const Members> members);

  std::unique_ptr<const Members> members_;
};

}  // namespace VELMAR
