/// @file ExpSchemaLibrary.h
/// What generated schema libraries are built from, beside the classes of the data model.
///
/// The class of an entity is derived from the classes of its supertypes, in the end from the library's EntityBase and
/// that from ExpEntity. Where an entity of the schema reaches a supertype in two ways, the bases on these ways are virtual, so that each supertype is there
/// once; all others are not. From an ExpEntity* to the class of its type, or of one of its supertypes, one therefore
/// gets by dynamic_cast; static_cast does not compile where a base between is virtual.
#pragma once

#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <type_traits>

#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// A REAL or NUMBER attribute of a generated entity: prints `$` and `*` where the flags say so.
class VELMAR_API ExpSchemaReal : public ExpReal {
 public:
  using ExpReal::ExpReal;
  std::string ToString() override;
};

/// A BINARY attribute of a generated entity. Readers pass binary values over, so it is written `$`, or `*` where omitted.
class VELMAR_API ExpSchemaBinary : public ExpAttribute {
 public:
  std::string ToString() override;
};

/// An attribute of an enumeration type of a schema. `Derived` is the class of the type; it declares
///
///     enum class Enumeration { Unset = -1, Ahead, Exact };     // numbered from 0
///     static constexpr const char* kNames = "AHEAD EXACT";     // the names in this order, as Part 21 writes them
template <class Derived>
class ExpSchemaEnumeration : public ExpEnumeration {
 public:
  using ExpEnumeration::SetExpEnumeration;

  /// Sets the item of this name, in any case of letters. Throws a std::string where the type has none.
  void SetExpEnumeration(const std::string& name) override { SetExpEnumeration(name, Table()); }

  /// Sets an item of the type. Throws a std::string for Unset: mark the value as not provided instead.
  template <class Item>
  void Set(Item item) {
    static_assert(std::is_same_v<Item, typename Derived::Enumeration>, "an item of another type");
    SetExpEnumeration(static_cast<int>(item), Table());
  }

  /// The item; Unset where there is none.
  auto Get() { return static_cast<typename Derived::Enumeration>(GetExpEnumeration()); }

  /// The number of each name. Made at the first use and never deleted.
  static const std::map<std::string, int>* Table() {
    static const auto* const table = [] {
      auto* numbers = new std::map<std::string, int>;
      int number = 0;
      for (const char* name = Derived::kNames; *name != '\0';) {
        const std::size_t length = std::strcspn(name, " ");
        numbers->emplace(std::string(name, length), number++);
        name += length;
        if (*name == ' ') ++name;
      }
      return numbers;
    }();
    return table;
  }
};

/// The creation function of an entity class.
template <class Entity>
ExpEntity* ExpSchemaCreate() {
  return new Entity;
}

/// What one entity type tells the registry. Names within a list are separated by one blank; those of types are EXPRESS
/// names in upper case, without a schema.
struct ExpEntityTypeRow {
  const char* name;
  ExpEntity* (*create)();   ///< creates an empty instance
  int explicitMembers;      ///< the number of explicit attributes, inherited ones included
  int inverseMembers;       ///< the number of inverse attributes, inherited ones included
  int startIndex;           ///< the position of the first attribute that the type declares itself
  int typeNumber;           ///< the type's number within its schema
  const char* superClasses;  ///< all supertypes, roots first
  const char* subClasses;    ///< the direct subtypes
  const char* memberNames;   ///< the explicit attributes in Part 21 order
};

/// Registers `count` entity types under a registry schema name, for instance "AUTOMOTIVE_DESIGN". Their supertypes,
/// ExpEntity before them, and subtypes are registered as types of the same schema.
VELMAR_API void RegisterEntityTypes(const char* registrySchemaName, const ExpEntityTypeRow* rows, std::size_t count);

}  // namespace VELMAR
