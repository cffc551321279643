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
#include <list>
#include <map>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// A REAL or NUMBER attribute of a generated entity: prints `$` and `*` where the flags say so.
class VELMAR_API ExpSchemaReal : public ExpReal {
 public:
  using ExpReal::ExpReal;
  std::string ToString() override;
};

/// A BINARY attribute of a generated entity. Readers pass binary values over, so it is written `$`, or `*` where omitted;
/// where everything is kept, GetKeptValue gives the value, which is written in its place.
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

/// An entity as one of a class: the entity itself, or that part of a complex instance whose type is of exactly
/// this class, or else the first part whose class is derived from it. Null where there is none, and for null.
template <class Entity>
Entity* EntityAs(ExpEntity* entity) {
  if (auto* found = dynamic_cast<Entity*>(entity)) return found;
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity);
  if (complex == nullptr) return nullptr;
  Entity* derived = nullptr;
  for (ExpEntity* part : *complex->GetEntities()) {
    auto* found = dynamic_cast<Entity*>(part);
    if (found != nullptr && typeid(*part) == typeid(Entity)) return found;
    if (derived == nullptr) derived = found;
  }
  return derived;
}

/// The entity that a link, or a select that holds one, leads to in `store`, as EntityAs gives it: null where the
/// reference is missing (unset, $ or *), leads nowhere or to an entity of another type, and for other values.
///
///     auto* surface = Resolve<Surface>(file, face->FaceGeometry());  // as face->FaceGeometry(file)
template <class Entity>
Entity* Resolve(ExpAbstractObjectAdmin& store, ExpAttribute& value) {
  return value.IsNotProvided() || value.IsOmitted() ? nullptr : EntityAs<Entity>(store.GetEntity(&value));
}

/// What ResolveAll gives: the entities in a vector, for aggregates of aggregates in vectors of such vectors.
template <class Entity, int depth>
struct ExpResolved {
  static_assert(depth > 1, "there is one aggregate at least");
  /// A vector of such vectors.
  using Type = std::vector<typename ExpResolved<Entity, depth - 1>::Type>;
};
/// Of one aggregate.
template <class Entity>
struct ExpResolved<Entity, 1> {
  /// A vector of entities.
  using Type = std::vector<Entity*>;
};

/// The elements of an aggregate, or of a select that holds one, whatever its flags say; null for every other
/// value. The argument is not null.
VELMAR_API std::list<ExpAttribute*>* ExpElementsOf(ExpAttribute* value);

/// The entities that the elements of an aggregate, or of a select that holds one, lead to in `store`, in their
/// order. Elements for which Resolve gives null are left out, so that there is no null among the result; it is
/// empty where the aggregate is marked as not provided or omitted. With a `depth` of 2 the elements are
/// aggregates themselves and each gives a vector, which may be empty; and so on.
///
///     for (FaceBound* bound : ResolveAll<FaceBound>(file, face->Bounds())) ...  // as face->Bounds(file)
template <class Entity, int depth = 1>
typename ExpResolved<Entity, depth>::Type ResolveAll(ExpAbstractObjectAdmin& store, ExpAttribute& aggregate) {
  typename ExpResolved<Entity, depth>::Type result;
  if (aggregate.IsNotProvided() || aggregate.IsOmitted()) return result;
  std::list<ExpAttribute*>* elements = ExpElementsOf(&aggregate);
  if (elements == nullptr) return result;
  result.reserve(elements->size());
  for (ExpAttribute* element : *elements) {
    if constexpr (depth > 1) {
      result.emplace_back();
      if (element != nullptr) result.back() = ResolveAll<Entity, depth - 1>(store, *element);
    } else if (Entity* entity = element == nullptr ? nullptr : Resolve<Entity>(store, *element)) {
      result.push_back(entity);
    }
  }
  return result;
}

/// The creation function of an entity class.
template <class Entity>
ExpEntity* ExpSchemaCreate() {
  return new Entity;
}

/// The classes that an operation of a visitor is about.
template <class Operation>
struct ExpVisitOf;
/// The one form that operations have.
template <class SchemaVisitor, class EntityClass>
struct ExpVisitOf<void (SchemaVisitor::*)(EntityClass*)> {
  using Visitor = SchemaVisitor;  ///< whose operation it is
  using Entity = EntityClass;     ///< what it takes
};

/// Calls an operation, &Visitor::VisitSurface say, of `visitor`, if there is one, with the entity where that is
/// of the operation's class. Returns whether it is.
template <auto operation>
bool ExpSchemaVisit(ExpEntityVisitor* visitor, ExpEntity* entity) {
  using Visit = ExpVisitOf<decltype(operation)>;
  auto* found = dynamic_cast<typename Visit::Entity*>(entity);
  if (found == nullptr) return false;
  if (visitor != nullptr) (static_cast<typename Visit::Visitor*>(visitor)->*operation)(found);
  return true;
}

/// What one entity type tells the registry and visitors. Names within a list are separated by one blank; those
/// of types are EXPRESS names in upper case, without a schema.
struct ExpEntityTypeRow {
  const char* name;         ///< the EXPRESS name
  ExpEntity* (*create)();   ///< creates an empty instance
  int explicitMembers;      ///< the number of explicit attributes, inherited ones included
  int inverseMembers;       ///< the number of inverse attributes, inherited ones included
  int startIndex;           ///< the position of the first attribute that the type declares itself
  int typeNumber;           ///< the type's number within its schema
  const char* superClasses;  ///< all supertypes, roots first
  const char* subClasses;    ///< the direct subtypes
  const char* memberNames;   ///< the explicit attributes in Part 21 order
  const std::type_info* type = nullptr;  ///< the class; null where the schema has no visitor
  bool (*visit)(ExpEntityVisitor* visitor, ExpEntity* entity) = nullptr;  ///< as ExpSchemaVisit
};

/// Rows that stand in one constant table.
struct ExpEntityTypeTable {
  const ExpEntityTypeRow* rows;  ///< the first
  std::size_t count;             ///< how many there are
};

/// Registers `count` entity types under a registry schema name, for instance "AUTOMOTIVE_DESIGN". Their supertypes,
/// ExpEntity before them, and subtypes are registered as types of the same schema.
VELMAR_API void RegisterEntityTypes(const char* registrySchemaName, const ExpEntityTypeRow* rows, std::size_t count);

/// Finds the operation of a schema library's visitor for an entity. Threads may share it.
class ExpVisitIndex;

/// Made of `count` tables, each of which has its `type` and `visit` in every row. Never deleted.
VELMAR_API ExpVisitIndex* ExpMakeVisitIndex(const ExpEntityTypeTable* const* tables, std::size_t count);

/// Calls the operation for the entity's class or, where the tables lack that, for the class it is derived from: if
/// there are several the one with the most supertypes, and of these that with the lowest type number. Returns
/// false where there is none. The visitor is one of the schema library's own.
VELMAR_API bool ExpVisit(ExpVisitIndex& index, ExpEntityVisitor* visitor, ExpEntity* entity);

}  // namespace VELMAR
