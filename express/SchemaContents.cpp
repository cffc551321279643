#include "SchemaContents.h"

#include <algorithm>

namespace VELMAR::Express {
namespace {

// A type with the names of defined types followed, and the last one of these.
struct Followed {
  const TypeExpression* type;
  const DefinedType* declaration;
};

Followed Follow(const TypeExpression& type) {
  Followed at{&type, nullptr};
  while (at.type->kind == TypeKind::Named && at.type->declaration->kind == DeclarationKind::Type) {
    at.declaration = static_cast<const DefinedType*>(at.type->declaration);
    at.type = &at.declaration->underlying;
  }
  return at;
}

template <class Map>
std::string Unused(const Map& map, std::string name) {
  while (map.count(name)) name += '_';
  return name;
}

int OwnInverseAttributes(const Entity& entity) {
  return static_cast<int>(
      std::count_if(entity.attributes.begin(), entity.attributes.end(),
                    [](const Attribute& a) { return a.kind == AttributeKind::Inverse && !a.redeclared; }));
}

}  // namespace

std::string UpperCase(std::string text) {
  for (char& c : text) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return text;
}

ValueKind ValueKindOf(const TypeExpression& type) {
  switch (Follow(type).type->kind) {
    case TypeKind::Number:
    case TypeKind::Real:
      return ValueKind::Real;
    case TypeKind::Integer:
      return ValueKind::Integer;
    case TypeKind::String:
      return ValueKind::String;
    case TypeKind::Boolean:
      return ValueKind::Boolean;
    case TypeKind::Logical:
      return ValueKind::Logical;
    case TypeKind::Binary:
      return ValueKind::Binary;
    case TypeKind::Enumeration:
      return ValueKind::Enumeration;
    case TypeKind::Select:
    case TypeKind::Generic:
      return ValueKind::Select;
    case TypeKind::GenericEntity:
    case TypeKind::Named:
      return ValueKind::Link;
    default:
      return ValueKind::Aggregation;
  }
}

const DefinedType* EnumerationOf(const TypeExpression& type) {
  const Followed followed = Follow(type);
  return followed.type->kind == TypeKind::Enumeration ? followed.declaration : nullptr;
}

std::vector<const Attribute*> OmittedAttributes(const Entity& entity) {
  std::vector<const Attribute*> omitted;
  for (const Attribute& attribute : entity.attributes) {
    const bool isDerived = attribute.kind == AttributeKind::Derived && attribute.redeclared;
    if (isDerived && attribute.original && IsSlot(*attribute.original)) omitted.push_back(attribute.original);
  }
  return omitted;
}

SchemaContents::SchemaContents(const SchemaDeclaration& schema) {
  for (const auto& [name, declaration] : schema.scope) {
    if (declaration->kind == DeclarationKind::Entity) {
      AddEntity(static_cast<const Entity&>(*declaration), name);
    } else if (declaration->kind == DeclarationKind::Type) {
      AddEnumeration(static_cast<const DefinedType&>(*declaration), name);
    }
  }
  const std::map<std::string, const Entity*> visible = entities_;
  for (const auto& [name, entity] : visible) {
    for (const Entity* ancestor : AncestorsOf(*entity)) AddEntity(*ancestor, ancestor->name.text);
  }
  for (const auto& [name, entity] : entities_) {
    for (const Attribute& attribute : entity->attributes) {
      if (!IsSlot(attribute)) continue;
      // It need not be visible by name: it may be the type of an attribute of something interfaced.
      const DefinedType* enumeration = EnumerationOf(*attribute.type);
      if (enumeration != nullptr) AddEnumeration(*enumeration, enumeration->name.text);
    }
  }
  int number = 0;
  for (const auto& [name, entity] : entities_) numbers_[entity] = ++number;
}

void SchemaContents::AddEntity(const Entity& entity, const std::string& name) {
  if (names_.count(&entity)) return;
  entities_[names_[&entity] = Unused(entities_, name)] = &entity;
}

void SchemaContents::AddEnumeration(const DefinedType& type, const std::string& name) {
  if (type.underlying.kind != TypeKind::Enumeration || names_.count(&type)) return;
  enumerations_[names_[&type] = Unused(enumerations_, name)] = &type;
}

EntityDescription SchemaContents::Describe(const Entity& entity) const {
  EntityDescription description{
      UpperCase(NameOf(entity)), numbers_.at(&entity), OwnInverseAttributes(entity), 0, {}, {}, {}};
  for (const Entity* ancestor : AncestorsOf(entity)) {
    description.superTypes.push_back(UpperCase(NameOf(*ancestor)));
    description.inverseMembers += OwnInverseAttributes(*ancestor);
  }
  for (const Entity* subtype : entity.subtypes) {
    if (names_.count(subtype)) description.subTypes.push_back(UpperCase(NameOf(*subtype)));
  }
  for (const Slot& slot : InternalMapping(entity)) {
    description.memberNames.push_back(slot.attribute->name.text);
    if (slot.owner != &entity) ++description.startIndex;
  }
  return description;
}

}  // namespace VELMAR::Express
