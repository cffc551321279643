/// @file Model.h
/// What an EXPRESS text declares: the tree that the parser builds and the resolver completes.
///
/// The parser fills in names and places. The resolver sets the pointers marked "resolved"; each of them stays
/// null where it has reported why. All names are in lower case, for EXPRESS does not distinguish cases.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Diagnostics.h"
#include "Expression.h"
#include "SourceFile.h"
#include "Statement.h"

namespace VELMAR::Express {

/// A rule of a WHERE clause: an expression and an optional label.
struct LabelledRule {
  Name label;
  ExpressionPtr expression;
};

/// TYPE name = underlying ... END_TYPE.
struct DefinedType : Declaration {
  DefinedType(Name typeName, SchemaDeclaration* owner)
      : Declaration(DeclarationKind::Type, std::move(typeName), owner) {}

  TypeExpression underlying;
  std::vector<LabelledRule> where;
};

// ---- entities -----------------------------------------------------------------------------------

enum class AttributeKind { Explicit, Derived, Inverse };

/// One attribute of an entity, or its redeclaration in a subtype.
struct Attribute {
  AttributeKind kind = AttributeKind::Explicit;
  Name name;  ///< the name it has in this entity: the new name where it is RENAMED
  Entity* owner = nullptr;
  bool optional = false;
  std::shared_ptr<TypeExpression> type;  ///< Explicit, Derived; shared by the attributes of one declaration

  bool redeclared = false;  ///< SELF\entity.attribute
  bool renamed = false;
  Name redeclaredEntity;                 ///< the qualifier of a redeclaration
  Name redeclaredAttribute;              ///< the inherited attribute's name
  const Attribute* original = nullptr;   ///< resolved: the attribute that an ancestor declared first
  const Attribute* inherited = nullptr;  ///< resolved: the declaration that this one takes the place of

  ExpressionPtr expression;  ///< Derived

  TypeKind inverseKind = TypeKind::Named;  ///< Inverse: Set, Bag, or Named for a single entity
  bool inverseHasBounds = false;
  ExpressionPtr inverseLower, inverseUpper;
  Name inverseEntity;     ///< Inverse: the referring entity
  Name inverseGroup;      ///< Inverse: FOR group.attribute; empty where there is no group
  Name inverseAttribute;  ///< Inverse: its attribute
  Entity* inverseEntityDeclaration = nullptr;              ///< resolved
  const Attribute* inverseAttributeDeclaration = nullptr;  ///< resolved
};

/// SUPERTYPE OF: an entity, or several combined (ISO 10303-11, 9.2.5).
struct SupertypeExpression {
  enum class Kind { Entity, OneOf, And, AndOr };
  Kind kind = Kind::Entity;
  Name name;                 ///< Entity
  Entity* entity = nullptr;  ///< Entity, resolved
  std::vector<SupertypeExpression> operands;
};

/// An attribute of a UNIQUE rule: its name, or SELF\group.name.
struct UniqueAttribute {
  Name group;  ///< empty where the name stands alone
  Name name;
  const Attribute* attribute = nullptr;  ///< resolved
};

/// UNIQUE rule of an entity: the attributes whose values differ together.
struct UniqueRule {
  Name label;
  std::vector<UniqueAttribute> attributes;
};

/// ENTITY ... END_ENTITY.
struct Entity : Declaration {
  Entity(Name entityName, SchemaDeclaration* owner)
      : Declaration(DeclarationKind::Entity, std::move(entityName), owner) {}

  bool isAbstract = false;
  bool isAbstractSupertype = false;  ///< ABSTRACT SUPERTYPE rather than ABSTRACT alone (ISO 10303-11, 9.2.4)
  std::unique_ptr<SupertypeExpression> supertypeExpression;  ///< null without SUPERTYPE OF
  std::vector<Name> supertypeNames;
  std::vector<Entity*> supertypes;   ///< resolved, in the order of SUBTYPE OF; unknown ones left out
  std::vector<Entity*> subtypes;     ///< resolved: the direct subtypes, in the order of their declaration
  std::deque<Attribute> attributes;  ///< all kinds in the order of declaration; addresses stay
  std::vector<UniqueRule> unique;
  std::vector<LabelledRule> where;
};

/// SUBTYPE_CONSTRAINT ... END_SUBTYPE_CONSTRAINT (ISO 10303-11, 9.7).
struct SubtypeConstraint : Declaration {
  SubtypeConstraint(Name constraintName, SchemaDeclaration* owner)
      : Declaration(DeclarationKind::SubtypeConstraint, std::move(constraintName), owner) {}

  Name entityName;
  Entity* entity = nullptr;  ///< resolved
  bool isAbstract = false;
  std::vector<SupertypeExpression> totalOver;  ///< each of kind Entity
  std::unique_ptr<SupertypeExpression> expression;
};

// ---- the remainder ------------------------------------------------------------------------------

/// CONSTANT: one of its constants.
struct Constant : Declaration {
  Constant(Name constantName, SchemaDeclaration* owner)
      : Declaration(DeclarationKind::Constant, std::move(constantName), owner) {}

  TypeExpression type;
  ExpressionPtr expression;
};

/// FUNCTION, PROCEDURE or RULE (ISO 10303-11, 9.5 and 9.6).
struct Algorithm : Declaration {
  using Declaration::Declaration;

  std::vector<std::unique_ptr<Variable>> parameters;       ///< FUNCTION, PROCEDURE
  TypeExpression returnType;                               ///< FUNCTION
  std::vector<Name> populations;                           ///< RULE: the entities that it is FOR
  std::vector<Entity*> populationEntities;                 ///< resolved, unknown ones left out
  std::vector<std::unique_ptr<Declaration>> declarations;  ///< local types, constants, functions, ...
  std::vector<std::unique_ptr<Variable>> locals;
  std::vector<StatementPtr> statements;
  std::vector<LabelledRule> where;  ///< RULE
};

/// FUNCTION, PROCEDURE or RULE: the declaration is an Algorithm.
inline bool IsAlgorithm(DeclarationKind kind) {
  return kind == DeclarationKind::Function || kind == DeclarationKind::Procedure ||
         kind == DeclarationKind::Rule;
}

/// One name of a USE or REFERENCE, with the name it gets here.
struct InterfaceItem {
  Name name;
  Name alias;  ///< equal to `name` without AS
};

/// USE FROM or REFERENCE FROM (ISO 10303-11, clause 11).
struct Interface {
  bool isUse = false;
  Name schemaName;
  SchemaDeclaration* schema = nullptr;  ///< resolved
  std::vector<InterfaceItem> items;     ///< empty: all that the schema declares
};

/// SCHEMA ... END_SCHEMA.
struct SchemaDeclaration {
  Name name;
  std::string version;            ///< the characters of the version string, in UTF-8; empty without one
  bool isVersionEncoded = false;  ///< written as an encoded string literal
  std::vector<Interface> interfaces;
  std::vector<std::unique_ptr<Declaration>> declarations;  ///< in the order of the text

  std::map<std::string, Declaration*>
      scope;  ///< resolved: every name visible in the schema, interfaced ones included
};

/// All schemas of the files read, with the files that the places in them refer to.
struct Model {
  struct File {
    std::unique_ptr<SourceFile> source;
  };
  std::vector<std::unique_ptr<File>> files;
  std::vector<std::unique_ptr<SchemaDeclaration>> schemas;  ///< in the order of the texts

  /// Types that no text spells out: of SELF, of constructed instances, of inverse attributes.
  std::deque<TypeExpression> derivedTypes;

  /// The schema of this name in any case of letters; null where there is none.
  SchemaDeclaration* FindSchema(const std::string& name) const;
};

// ---- questions about a resolved model -----------------------------------------------------------

/// What a type finally stands for: follows names of defined types. Null where a name on the way is unknown or
/// cyclic. An entity is returned as the TypeExpression that names it.
const TypeExpression* Underlying(const TypeExpression& type);

/// All items of an enumeration, those of the types that it is based on first.
std::vector<TypeItem> AllItems(const TypeExpression& enumerationOrSelect);

/// The entity itself or one of its ancestors is `ancestor`.
bool IsKindOf(const Entity& entity, const Entity& ancestor);

/// All ancestors, each once: for every supertype in order its ancestors, then itself. So roots come first.
std::vector<const Entity*> AncestorsOf(const Entity& entity);

/// One place in the parameter list of an instance.
struct Slot {
  const Entity* owner;         ///< the entity that declares the attribute
  const Attribute* attribute;  ///< as declared there
};

/// The explicit attributes in the order in which Part 21 writes them (ISO 10303-21, mapping of entities,
/// internal mapping): those of the supertypes in the order of SUBTYPE OF, each entity once, then the entity's
/// own. Redeclared attributes keep the place of the original.
std::vector<Slot> InternalMapping(const Entity& entity);

/// Whether the attribute starts a place in a parameter list: explicit and not a redeclaration.
bool IsSlot(const Attribute& attribute);

/// The type as EXPRESS text in lower case: "list [1 : 3] of length_measure".
std::string TypeText(const TypeExpression& type);
inline std::string TypeText(const Model&, const TypeExpression& type) { return TypeText(type); }

}  // namespace VELMAR::Express
