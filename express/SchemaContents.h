/// @file SchemaContents.h
/// What a schema library holds: the entity types and enumerations of a schema, as the registry and Part 21
/// see them.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "Model.h"

namespace VELMAR::Express {

/// The text with the letters a to z in upper case: names as Part 21 and the registry have them.
std::string UpperCase(std::string text);

/// The kinds of values that the library tells apart.
enum class ValueKind {
  Real,
  Integer,
  String,
  Boolean,
  Logical,
  Binary,
  Enumeration,
  Select,
  Link,
  Aggregation
};

/// The kind of value that an attribute of this type holds. REAL for NUMBER, Select for GENERIC.
ValueKind ValueKindOf(const TypeExpression& type);

/// The enumeration that the type stands for; null where it is none.
const DefinedType* EnumerationOf(const TypeExpression& type);

/// The inherited explicit attributes that the entity derives: an instance writes `*` for them.
std::vector<const Attribute*> OmittedAttributes(const Entity& entity);

/// One entity type as it is registered. Names of types are in upper case and without their schema.
struct EntityDescription {
  std::string name;
  int typeNumber;      ///< from 1, in the order of the names
  int inverseMembers;  ///< inherited ones included
  int startIndex;      ///< the position of the first attribute that the entity declares itself
  std::vector<std::string> superTypes;   ///< all of them, roots first
  std::vector<std::string> subTypes;     ///< the direct ones
  std::vector<std::string> memberNames;  ///< the explicit attributes in the order of Part 21
};

/// The entities and enumerations visible in a schema, with the supertypes of these entities and the
/// enumerations that they use. The schema must have been resolved without an error, and outlive this.
class SchemaContents {
 public:
  explicit SchemaContents(const SchemaDeclaration& schema);

  /// By name, in lower case. Declarations of several schemas may bear one name: that which is visible by it
  /// has it, the others get "_" appended until it is new.
  const std::map<std::string, const Entity*>& Entities() const { return entities_; }
  const std::map<std::string, const DefinedType*>& Enumerations() const { return enumerations_; }

  /// The name under which the maps have the entity or enumeration, which must be in them.
  const std::string& NameOf(const Declaration& declaration) const { return names_.at(&declaration); }

  EntityDescription Describe(const Entity& entity) const;

 private:
  void AddEntity(const Entity& entity, const std::string& name);
  void AddEnumeration(const DefinedType& type, const std::string& name);

  std::map<std::string, const Entity*> entities_;
  std::map<std::string, const DefinedType*> enumerations_;
  std::unordered_map<const Declaration*, std::string> names_;
  std::unordered_map<const Entity*, int> numbers_;
};

}  // namespace VELMAR::Express
