/// @file DataDictionary.h
/// What the instances of a schema may hold, as those need it who compare files with the schema.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace VELMAR::Express {
struct SchemaDeclaration;
}

namespace velmar {

struct EntityRule;

/// The values of a type.
struct Domain {
  enum class Kind {
    Any,  ///< GENERIC, and what the schema leaves open
    Integer,
    Real,
    Number,
    String,
    Binary,
    Boolean,
    Logical,
    Enumeration,
    Entity,
    Aggregate,
    Select
  };

  Kind kind = Kind::Any;
  std::string text;  ///< the type in EXPRESS: "list [1 : 3] of length_measure"

  long longest = -1;     ///< String: characters; Binary: bits; -1 without limit
  bool isFixed = false;  ///< ... and no fewer

  std::vector<std::string> items;  ///< Enumeration: in upper case, sorted

  const EntityRule* entity = nullptr;  ///< Entity; null for any entity

  const Domain* element = nullptr;  ///< Aggregate
  long fewest = 0;                  ///< elements
  long most = -1;                   ///< -1 without limit
  bool mayLackElements = false;     ///< ARRAY OF OPTIONAL
  bool isUnordered = false;         ///< SET and BAG

  std::vector<const EntityRule*> entities;     ///< Select: those of nested selects, too
  std::map<std::string, const Domain*> types;  ///< Select: defined types by name in upper case, likewise
};

struct AttributeRule {
  std::string name;
  const EntityRule* owner = nullptr;  ///< the entity that declares it
  const Domain* domain = nullptr;
  bool isOptional = false;
  bool isDerived = false;  ///< by this entity or a supertype: written `*`
};

/// An entity type.
struct EntityRule {
  std::string name;  ///< in upper case
  bool isAbstract = false;
  std::vector<AttributeRule> attributes;   ///< explicit ones, in the order of Part 21
  std::size_t firstOwn = 0;                ///< the first that it declares itself
  std::vector<const EntityRule*> kinds;    ///< itself and all supertypes, sorted by address
  /// Attributes of supertypes that it derives: the entity that declares the attribute, and the name.
  std::vector<std::pair<const EntityRule*, std::string>> derives;

  bool IsKindOf(const EntityRule& other) const;
};

/// The entity types of a schema.
class DataDictionary {
 public:
  /// The schema has been resolved without an error. It is not needed afterwards.
  explicit DataDictionary(const VELMAR::Express::SchemaDeclaration& schema);
  ~DataDictionary();
  DataDictionary(const DataDictionary&) = delete;
  DataDictionary& operator=(const DataDictionary&) = delete;

  const std::string& SchemaName() const { return schemaName_; }
  /// By name in upper case; null where there is none.
  const EntityRule* Find(const std::string& name) const;
  const std::map<std::string, EntityRule>& Entities() const { return entities_; }

 private:
  class Maker;

  std::string schemaName_;
  std::map<std::string, EntityRule> entities_;
  std::unordered_map<std::string, const EntityRule*> byName_;
  std::deque<Domain> domains_;
};

}  // namespace velmar
