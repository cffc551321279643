/// @file TypeInfo.h
/// What the registry knows of schemas and entity types.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace VELMAR {
class ExpEntityRuntimeType;
}

namespace velmar {

/// A registry schema.
struct SchemaInfo {
  std::string name;      ///< as its types are registered
  std::string protocol;  ///< its everyday name, "AP214"; empty where it has none
  std::string library;   ///< the file of its schema library; empty for a schema of an EXPRESS text
  std::size_t types;     ///< how many entity types it has
};

struct AttributeInfo {
  std::string name;
  std::string owner;  ///< the entity that declares it
  std::string
      expressType;  ///< as EXPRESS has it; empty where only a schema library is there, which does not know
  bool isOptional;  ///< false where it is not known
  bool isDerived;   ///< written `*`; false where it is not known
};

/// An entity type. Names of types are in upper case, without a schema.
struct TypeInfo {
  std::string schema;
  std::string name;
  std::vector<AttributeInfo>
      attributes;                       ///< the explicit ones, inherited ones first, in the order of Part 21
  std::vector<std::string> supertypes;  ///< all of them, the root first
  std::vector<std::string> subtypes;    ///< the direct ones
};

/// The schemas of which types are registered, those of the library itself left out, in the order of their
/// names.
std::vector<SchemaInfo> RegisteredSchemas();

/// The names of a schema's types, in their order.
std::vector<std::string> TypesOf(const std::string& schema);

/// The type of a schema, or that which files of the schema may use besides; null where there is none. In any
/// case of letters.
const VELMAR::ExpEntityRuntimeType* FindType(const std::string& name, const std::string& schema);

/// What is known of the type.
TypeInfo Describe(const VELMAR::ExpEntityRuntimeType& type);

/// The names of all subtypes, also the indirect ones, each once.
std::vector<std::string> AllSubtypes(const VELMAR::ExpEntityRuntimeType& type, const std::string& schema);

}  // namespace velmar
