#include "Resolver.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExpressionResolver.h"
#include "TypeChecker.h"
#include "TypeRules.h"

namespace VELMAR::Express {
namespace {

constexpr std::size_t kDeepestInheritance = 200;

Entity* AsEntity(Declaration* declaration) {
  return declaration && declaration->kind == DeclarationKind::Entity ? static_cast<Entity*>(declaration)
                                                                     : nullptr;
}

DefinedType* AsType(Declaration* declaration) {
  return declaration && declaration->kind == DeclarationKind::Type ? static_cast<DefinedType*>(declaration)
                                                                   : nullptr;
}

// Walks a graph depth first without recursion. `edges(node)` gives the nodes that a node leads to, `cut(node,
// i)` is called for the i-th edge of a node where it closes a cycle.
template <class Node, class Edges, class Cut>
void FindCycles(const std::vector<Node*>& nodes, Edges edges, Cut cut) {
  enum class Colour { White, Grey, Black };
  struct Frame {
    Node* node;
    std::vector<Node*> targets;
    std::size_t next;
  };
  std::unordered_map<Node*, Colour> colours;
  std::vector<Frame> stack;
  const auto enter = [&](Node* node) {
    colours[node] = Colour::Grey;
    stack.push_back({node, edges(node), 0});
  };
  for (Node* start : nodes) {
    if (colours[start] != Colour::White) continue;
    enter(start);
    while (!stack.empty()) {
      Frame& frame = stack.back();
      if (frame.next == frame.targets.size()) {
        colours[frame.node] = Colour::Black;
        stack.pop_back();
        continue;
      }
      const std::size_t index = frame.next++;
      Node* target = frame.targets[index];
      if (!target) continue;
      if (colours[target] == Colour::Grey) {
        cut(frame.node, index);
      } else if (colours[target] == Colour::White) {
        enter(target);
      }
    }
  }
}

class Resolver {
 public:
  Resolver(Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

  void Run() {
    Schemas();
    Interfaces();
    for (const auto& schema : model_.schemas) {
      Collect(schema->declarations, scopes_.emplace_back(Scope{schema.get(), nullptr, {}}));
    }
    for (Entity* entity : entities_) Supertypes(*entity);
    InheritanceCycles();
    for (Entity* entity : entities_) {
      for (Entity* supertype : entity->supertypes) supertype->subtypes.push_back(entity);
    }
    for (DefinedType* type : types_) Type(ScopeOf(*type), type->underlying, false);
    TypeCycles();
    for (DefinedType* type : types_) Items(*type);
    for (Entity* entity : entities_) AttributeTypes(*entity);
    for (const auto& [algorithm, scope] : algorithms_) VariableTypes(*algorithm, *scope);
    for (Entity* entity : SupertypesFirst()) EntityRules(*entity);
    Remainder();
  }

 private:
  using Kinds = std::set<DeclarationKind>;

  // ---- scopes -----------------------------------------------------------------------------------

  // What is visible where a declaration stands: the names of the algorithms around it, then those of the
  // schema.
  struct Scope {
    const SchemaDeclaration* schema;
    const Scope* outer;  // null for that of a schema
    std::map<std::string, Declaration*> names;
  };

  const Scope& ScopeOf(const Declaration& declaration) const { return *scopeOf_.at(&declaration); }

  static Declaration* Lookup(const Scope& scope, const std::string& name) {
    for (const Scope* at = &scope; at->outer; at = at->outer) {
      const auto found = at->names.find(name);
      if (found != at->names.end()) return found->second;
    }
    const auto found = scope.schema->scope.find(name);
    return found == scope.schema->scope.end() ? nullptr : found->second;
  }

  // All declarations by kind, those within algorithms included.
  void Collect(const std::vector<std::unique_ptr<Declaration>>& declarations, const Scope& scope) {
    for (const auto& declaration : declarations) {
      scopeOf_[declaration.get()] = &scope;
      if (Entity* entity = AsEntity(declaration.get())) {
        entities_.push_back(entity);
      } else if (DefinedType* type = AsType(declaration.get())) {
        types_.push_back(type);
      } else if (declaration->kind == DeclarationKind::Constant) {
        constants_.push_back(static_cast<Constant*>(declaration.get()));
      } else if (declaration->kind == DeclarationKind::SubtypeConstraint) {
        constraints_.push_back(static_cast<SubtypeConstraint*>(declaration.get()));
      } else if (IsAlgorithm(declaration->kind) && !declaration->damaged) {
        auto& algorithm = static_cast<Algorithm&>(*declaration);
        scopes_.push_back({scope.schema, &scope, {}});
        Scope& inner = scopes_.back();
        for (const auto& local : algorithm.declarations) inner.names.emplace(local->name.text, local.get());
        for (const auto& parameter : algorithm.parameters)
          inner.names.emplace(parameter->name.text, parameter.get());
        for (const auto& local : algorithm.locals) inner.names.emplace(local->name.text, local.get());
        algorithms_.push_back({&algorithm, &inner});
        Collect(algorithm.declarations, inner);
      }
    }
  }

  void Schemas() {
    std::map<std::string, SchemaDeclaration*> seen;
    for (const auto& schema : model_.schemas) {
      const auto [first, added] = seen.emplace(schema->name.text, schema.get());
      if (!added) Duplicate("schema", schema->name, first->second->name);
      for (const auto& declaration : schema->declarations) {
        const auto [other, isNew] = schema->scope.emplace(declaration->name.text, declaration.get());
        if (!isNew) Duplicate("name", declaration->name, other->second->name);
        if (isNew) exported_[schema.get()].insert(declaration->name.text);
      }
    }
  }

  void Duplicate(const char* what, const Name& name, const Name& first) {
    diagnostics_.Report(Code::DuplicateName, name.where,
                        std::string(what) + ' ' + Quoted(name) + " is declared twice", first.where,
                        "first declared here");
  }

  // Carries names over until nothing changes, for a schema may use what another one uses.
  void Interfaces() {
    for (const auto& schema : model_.schemas) {
      for (Interface& interface : schema->interfaces) {
        interface.schema = model_.FindSchema(interface.schemaName.text);
        if (!interface.schema) UnknownSchema(interface.schemaName);
      }
    }
    bool changed = true;
    while (changed) {
      changed = false;
      for (const auto& schema : model_.schemas) {
        for (const Interface& interface : schema->interfaces)
          changed = CarryOver(*schema, interface) || changed;
      }
    }
    for (const auto& schema : model_.schemas) {
      for (const Interface& interface : schema->interfaces) CheckItems(*schema, interface);
    }
  }

  bool CarryOver(SchemaDeclaration& schema, const Interface& interface) {
    if (!interface.schema || interface.schema == &schema) return false;
    bool changed = false;
    const auto add = [&](const std::string& name, Declaration* declaration) {
      changed = schema.scope.emplace(name, declaration).second || changed;
      if (interface.isUse) changed = exported_[&schema].insert(name).second || changed;
    };
    const SchemaDeclaration& from = *interface.schema;
    for (const InterfaceItem& item : interface.items) {
      const auto found = from.scope.find(item.name.text);
      if (found != from.scope.end()) add(item.alias.text, found->second);
    }
    if (!interface.items.empty()) return changed;
    const std::set<std::string> all = exported_[interface.schema];
    for (const std::string& name : all) {
      Declaration* declaration = from.scope.at(name);
      if (MayBeInterfaced(*declaration, interface.isUse)) add(name, declaration);
    }
    return changed;
  }

  // named_type_or_rename = named_types [ AS ( entity_id | type_id ) ] .
  // resource_ref = constant_ref | entity_ref | function_ref | procedure_ref | type_ref .
  static bool MayBeInterfaced(const Declaration& declaration, bool isUse) {
    switch (declaration.kind) {
      case DeclarationKind::Entity:
      case DeclarationKind::Type:
        return true;
      case DeclarationKind::Rule:
      case DeclarationKind::SubtypeConstraint:
        return false;
      default:
        return !isUse;
    }
  }

  void CheckItems(const SchemaDeclaration& schema, const Interface& interface) {
    if (interface.schema == &schema) {
      diagnostics_.Report(Code::SelfInterface, interface.schemaName.where,
                          "schema " + Quoted(schema.name) + " interfaces itself");
    }
    if (!interface.schema || interface.schema == &schema) return;
    for (const InterfaceItem& item : interface.items) {
      const auto found = interface.schema->scope.find(item.name.text);
      if (found == interface.schema->scope.end()) {
        diagnostics_.Report(
            Code::UnknownInterfaceItem, item.name.where,
            "schema " + Quoted(interface.schemaName) + " has no declaration " + Quoted(item.name),
            DidYouMean({interface.schema, nullptr, {}}, item.name.text, {}));
        continue;
      }
      if (!MayBeInterfaced(*found->second, interface.isUse)) {
        diagnostics_.Report(Code::NotInterfaceable, item.name.where,
                            Quoted(item.name) + " is " + KindText(found->second->kind) + ", which " +
                                (interface.isUse ? "USE" : "REFERENCE") + " does not take over",
                            found->second->name.where, "declared here");
      }
      const Declaration* here = schema.scope.at(item.alias.text);
      if (here != found->second) Duplicate("name", item.alias, here->name);
    }
  }

  void UnknownSchema(const Name& name) {
    std::vector<std::string> names;
    for (const auto& schema : model_.schemas) names.push_back(schema->name.text);
    const std::string hint = Express::DidYouMean(name.text, names);
    diagnostics_.Report(Code::UnknownSchema, name.where, "unknown schema " + Quoted(name),
                        hint.empty() ? "give the file that declares it, too, or its folder with -I" : hint);
  }

  std::string DidYouMean(const Scope& scope, const std::string& name, const Kinds& kinds) {
    // Looking for a near name is what costs; after so many errors nobody reads the hints.
    if (diagnostics_.ErrorCount() >= 200) return "";
    std::vector<std::string> names;
    const auto add = [&](const std::map<std::string, Declaration*>& visible) {
      for (const auto& [each, declaration] : visible) {
        if (kinds.empty() || kinds.count(declaration->kind)) names.push_back(each);
      }
    };
    for (const Scope* at = &scope; at; at = at->outer) add(at->names);
    add(scope.schema->scope);
    return Express::DidYouMean(name, names);
  }

  // A declaration that a name may refer to; reports and gives null where there is none of the kinds.
  Declaration* Find(const Scope& scope, const Name& name, const Kinds& kinds, Code unknown,
                    const char* what) {
    if (name.text.empty()) return nullptr;
    Declaration* found = Lookup(scope, name.text);
    if (!found) {
      if (!HasUnknownInterface(*scope.schema, name)) {
        diagnostics_.Report(unknown, name.where, "unknown " + std::string(what) + ' ' + Quoted(name),
                            DidYouMean(scope, name.text, kinds));
      }
      return nullptr;
    }
    if (kinds.count(found->kind)) return found;
    const Code code = unknown == Code::UnknownEntity ? Code::NotAnEntity : Code::NotAType;
    diagnostics_.Report(code, name.where,
                        Quoted(name) + " is " + KindText(found->kind) + ", expected the name of " +
                            (what[0] == 'e' ? "an " : "a ") + what,
                        found->name.where, "declared here");
    return nullptr;
  }

  // Whether the name was to come from a schema that is missing: that has been reported, once.
  static bool HasUnknownInterface(const SchemaDeclaration& schema, const Name& name) {
    for (const Interface& interface : schema.interfaces) {
      if (interface.schema && interface.items.empty()) continue;
      if (!interface.schema && interface.items.empty()) return true;
      for (const InterfaceItem& item : interface.items) {
        if (item.alias.text == name.text) return true;
      }
    }
    return false;
  }

  Entity* FindEntity(const Scope& scope, const Name& name) {
    return AsEntity(Find(scope, name, {DeclarationKind::Entity}, Code::UnknownEntity, "entity"));
  }

  // ---- inheritance ------------------------------------------------------------------------------

  void Supertypes(Entity& entity) {
    for (const Name& name : entity.supertypeNames) {
      Entity* supertype = FindEntity(ScopeOf(entity), name);
      if (!supertype) continue;
      if (std::find(entity.supertypes.begin(), entity.supertypes.end(), supertype) !=
          entity.supertypes.end()) {
        diagnostics_.Report(Code::DuplicateItem, name.where, "supertype " + Quoted(name) + " is given twice");
        continue;
      }
      entity.supertypes.push_back(supertype);
    }
  }

  void InheritanceCycles() {
    FindCycles(
        entities_, [](Entity* entity) { return entity->supertypes; },
        [&](Entity* entity, std::size_t index) {
          Entity*& supertype = entity->supertypes[index];
          diagnostics_.Report(Code::CyclicInheritance, entity->name.where,
                              supertype == entity
                                  ? "entity " + Quoted(entity->name) + " is its own supertype"
                                  : "entity " + Quoted(entity->name) +
                                        " is a supertype of its own supertype " + Quoted(supertype->name),
                              supertype->name.where, Quoted(supertype->name) + " is declared here");
          supertype = nullptr;
        });
    for (Entity* entity : entities_) RemoveNulls(entity->supertypes);
    std::unordered_map<const Entity*, std::size_t> depths;
    for (Entity* entity : SupertypesFirst()) {
      std::size_t depth = 0;
      for (const Entity* supertype : entity->supertypes) depth = std::max(depth, depths[supertype] + 1);
      if (depth > kDeepestInheritance) {
        diagnostics_.Report(Code::TooDeep, entity->name.where,
                            "entity " + Quoted(entity->name) + " has more than 200 levels of supertypes");
        entity->supertypes.clear();
        depth = 0;
      }
      depths[entity] = depth;
    }
  }

  static void RemoveNulls(std::vector<Entity*>& list) {
    list.erase(std::remove(list.begin(), list.end(), nullptr), list.end());
  }

  std::vector<Entity*> SupertypesFirst() const {
    std::unordered_map<const Entity*, std::size_t> missing;
    std::unordered_map<const Entity*, std::vector<Entity*>> subtypes;
    std::vector<Entity*> order;
    for (Entity* entity : entities_) {
      missing[entity] = entity->supertypes.size();
      for (const Entity* supertype : entity->supertypes) subtypes[supertype].push_back(entity);
      if (entity->supertypes.empty()) order.push_back(entity);
    }
    for (std::size_t i = 0; i < order.size(); ++i) {
      for (Entity* subtype : subtypes[order[i]]) {
        if (--missing[subtype] == 0) order.push_back(subtype);
      }
    }
    return order;
  }

  // ---- types ------------------------------------------------------------------------------------

  void Type(const Scope& scope, TypeExpression& type, bool isGenericAllowed) {
    for (TypeExpression* at = &type; at; at = at->element.get()) {
      if (at->kind == TypeKind::Named) {
        at->declaration = Find(scope, at->name, {DeclarationKind::Type, DeclarationKind::Entity},
                               Code::UnknownType, "type");
      }
      if (at->hasBounds) {
        Bounds(at->kind, at->where, *at->lower, *at->upper);
      } else if (at->kind == TypeKind::Array && !isGenericAllowed) {
        diagnostics_.Report(Code::Bounds, at->where, "an array gives its bounds: ARRAY [1 : 3] OF ...");
      }
      if (at->width && LiteralValue(*at->width).value_or(1) < 1) {
        diagnostics_.Report(Code::NotANumber, at->width->where, "a width is above zero");
      }
      const bool isGeneric = at->kind == TypeKind::Generic || at->kind == TypeKind::GenericEntity ||
                             at->kind == TypeKind::Aggregate;
      if (isGeneric && !isGenericAllowed) {
        diagnostics_.Report(Code::GenericAttribute, at->where,
                            "a generalised type stands only in abstract entities");
      }
      BasedOn(scope, *at);
      if (at->kind == TypeKind::Select) {
        for (TypeItem& item : at->items) {
          item.declaration = Find(scope, item.name, {DeclarationKind::Type, DeclarationKind::Entity},
                                  Code::UnknownType, "type");
        }
      }
    }
  }

  void BasedOn(const Scope& scope, TypeExpression& type) {
    if (type.basedOn.text.empty()) return;
    type.base = AsType(Find(scope, type.basedOn, {DeclarationKind::Type}, Code::UnknownType, "type"));
    if (!type.base) return;
    if (type.base->underlying.kind == type.kind && type.base->underlying.extensible) return;
    diagnostics_.Report(Code::NotExtensible, type.basedOn.where,
                        Quoted(type.basedOn) + " is not an extensible " +
                            (type.kind == TypeKind::Enumeration ? "enumeration" : "select"),
                        type.base->name.where, "declared here");
    type.base = nullptr;
  }

  // As far as the bounds are written as numbers.
  void Bounds(TypeKind kind, const Location& where, const Expression& lower, const Expression& upper) {
    const std::optional<std::int64_t> low = LiteralValue(lower);
    const std::optional<std::int64_t> high = LiteralValue(upper);
    if (kind == TypeKind::Array && (IsIndeterminate(lower) || IsIndeterminate(upper))) {
      diagnostics_.Report(Code::Bounds, where, "a bound of an array is not '?'");
    } else if (IsIndeterminate(lower)) {
      diagnostics_.Report(Code::Bounds, lower.where, "a lower bound is not '?'");
    } else if (kind != TypeKind::Array && low && *low < 0) {
      diagnostics_.Report(Code::Bounds, where, "the lower bound " + std::to_string(*low) + " is below zero");
    } else if (low && high && *low > *high) {
      diagnostics_.Report(
          Code::Bounds, where,
          "the lower bound " + std::to_string(*low) + " is above the upper bound " + std::to_string(*high));
    }
  }

  static bool IsIndeterminate(const Expression& expression) {
    return expression.kind == ExpressionKind::Indeterminate;
  }

  // A type must not stand for itself, by names and elements of aggregates, nor a select select itself, by
  // names and items.
  void TypeCycles() {
    FindCycles(
        types_,
        [](DefinedType* type) {
          std::vector<DefinedType*> targets{type->underlying.base};
          for (TypeExpression* at = &type->underlying; at; at = at->element.get()) {
            targets.push_back(AsType(at->declaration));
          }
          return targets;
        },
        [&](DefinedType* type, std::size_t index) {
          diagnostics_.Report(Code::CyclicType, type->name.where,
                              "type " + Quoted(type->name) + " stands for itself");
          if (index == 0) type->underlying.base = nullptr;
          for (TypeExpression* at = &type->underlying; at && index > 0; at = at->element.get()) {
            if (--index == 0) at->declaration = nullptr;
          }
        });
    FindCycles(
        types_,
        [](DefinedType* type) {
          std::vector<DefinedType*> targets{AsType(type->underlying.declaration)};
          for (const TypeItem& item : type->underlying.items) targets.push_back(AsType(item.declaration));
          return targets;
        },
        [&](DefinedType* type, std::size_t index) {
          if (index == 0) {
            type->underlying.declaration = nullptr;
            diagnostics_.Report(Code::CyclicSelect, type->name.where,
                                "type " + Quoted(type->name) + " stands for a select that selects it");
            return;
          }
          TypeItem& item = type->underlying.items[index - 1];
          diagnostics_.Report(
              Code::CyclicSelect, item.name.where,
              "select " + Quoted(type->name) + " selects itself through " + Quoted(item.name));
          item.declaration = nullptr;
        });
  }

  // The items of an enumeration or a select differ from each other and from those of the type it is based on.
  void Items(const DefinedType& type) {
    std::map<std::string, const Name*> seen;
    const std::vector<TypeItem> items = AllItems(type.underlying);
    const std::size_t inherited = items.size() - type.underlying.items.size();
    for (std::size_t i = 0; i < inherited; ++i) seen.emplace(items[i].name.text, &items[i].name);
    for (const TypeItem& item : type.underlying.items) {
      const auto [first, isNew] = seen.emplace(item.name.text, &item.name);
      if (isNew) continue;
      diagnostics_.Report(Code::DuplicateItem, item.name.where,
                          "item " + Quoted(item.name) + " of " + Quoted(type.name) + " is given twice",
                          first->second->where, "first given here");
    }
  }

  // ---- entities ---------------------------------------------------------------------------------

  void AttributeTypes(Entity& entity) {
    const TypeExpression* last = nullptr;
    for (Attribute& attribute : entity.attributes) {
      // Attributes that were declared together share their type; it is looked at once.
      if (attribute.type && attribute.type.get() != last)
        Type(ScopeOf(entity), *attribute.type, entity.isAbstract);
      last = attribute.type.get();
    }
  }

  void VariableTypes(Algorithm& algorithm, const Scope& scope) {
    if (algorithm.kind == DeclarationKind::Function) Type(scope, algorithm.returnType, true);
    const TypeExpression* last = nullptr;
    const auto resolve = [&](const Variable& variable) {
      if (variable.type && variable.type.get() != last) Type(scope, *variable.type, true);
      last = variable.type.get();
    };
    for (const auto& parameter : algorithm.parameters) resolve(*parameter);
    for (const auto& local : algorithm.locals) resolve(*local);
  }

  void EntityRules(Entity& entity) {
    const std::vector<const Entity*> ancestors = AncestorsOf(entity);
    std::map<std::string, const Attribute*> inherited;
    for (const Entity* ancestor : ancestors) {
      for (const Attribute& attribute : ancestor->attributes)
        inherited.emplace(attribute.name.text, &attribute);
    }
    std::map<std::string, const Attribute*> own;
    for (Attribute& attribute : entity.attributes) {
      DuplicateAttributes(entity, attribute, own, inherited);
      if (attribute.redeclared) Redeclaration(entity, ancestors, attribute);
      if (attribute.kind == AttributeKind::Inverse) Inverse(entity, attribute);
    }
    for (UniqueRule& rule : entity.unique) Unique(entity, rule, own, inherited);
    if (entity.supertypeExpression) Subtypes(ScopeOf(entity), entity, *entity.supertypeExpression);
  }

  void DuplicateAttributes(const Entity& entity, const Attribute& attribute,
                           std::map<std::string, const Attribute*>& own,
                           const std::map<std::string, const Attribute*>& inherited) {
    const auto [first, isNew] = own.emplace(attribute.name.text, &attribute);
    if (!isNew && !(attribute.redeclared && first->second->redeclared &&
                    attribute.redeclaredEntity.text != first->second->redeclaredEntity.text)) {
      diagnostics_.Report(
          Code::DuplicateAttribute, attribute.name.where,
          "attribute " + Quoted(attribute.name) + " of " + Quoted(entity.name) + " is declared twice",
          first->second->name.where, "first declared here");
      return;
    }
    const auto other = inherited.find(attribute.name.text);
    if (attribute.redeclared || other == inherited.end()) return;
    diagnostics_.Report(Code::DuplicateAttribute, attribute.name.where,
                        "attribute " + Quoted(attribute.name) + " of " + Quoted(entity.name) +
                            " is inherited from " + Quoted(other->second->owner->name) +
                            "; to redeclare it write SELF\\" + other->second->owner->name.text + '.' +
                            attribute.name.text,
                        other->second->name.where, "declared here");
  }

  void Redeclaration(const Entity& entity, const std::vector<const Entity*>& ancestors,
                     Attribute& attribute) {
    const Entity* group = FindEntity(ScopeOf(entity), attribute.redeclaredEntity);
    if (!group) return;
    if (std::find(ancestors.begin(), ancestors.end(), group) == ancestors.end()) {
      diagnostics_.Report(Code::NotInherited, attribute.redeclaredEntity.where,
                          Quoted(attribute.redeclaredEntity) + " is no supertype of " + Quoted(entity.name));
      return;
    }
    const Attribute* inherited = FindAttribute(*group, attribute.redeclaredAttribute.text);
    if (!inherited) {
      UnknownAttribute(*group, attribute.redeclaredAttribute);
      return;
    }
    attribute.original = inherited->redeclared ? inherited->original : inherited;
    attribute.inherited = inherited;
  }

  // Whether the entity that a qualifier names is the entity itself or a supertype; reports it where not.
  bool IsSupertype(const Entity& supertype, const Entity& entity, const Name& qualifier) {
    if (IsKindOf(entity, supertype)) return true;
    diagnostics_.Report(Code::NotInherited, qualifier.where,
                        Quoted(qualifier) + " is no supertype of " + Quoted(entity.name));
    return false;
  }

  // The attribute of this name that the entity declares or inherits; null where there is none.
  static const Attribute* FindAttribute(const Entity& entity, const std::string& name) {
    const auto declaredIn = [&](const Entity& owner) -> const Attribute* {
      for (const Attribute& attribute : owner.attributes) {
        if (attribute.name.text == name) return &attribute;
      }
      return nullptr;
    };
    if (const Attribute* attribute = declaredIn(entity)) return attribute;
    const std::vector<const Entity*> ancestors = AncestorsOf(entity);
    for (auto ancestor = ancestors.rbegin(); ancestor != ancestors.rend(); ++ancestor) {
      if (const Attribute* attribute = declaredIn(**ancestor)) return attribute;
    }
    return nullptr;
  }

  void UnknownAttribute(const Entity& entity, const Name& name) {
    std::vector<std::string> names;
    for (const Attribute& attribute : entity.attributes) names.push_back(attribute.name.text);
    for (const Entity* ancestor : AncestorsOf(entity)) {
      for (const Attribute& attribute : ancestor->attributes) names.push_back(attribute.name.text);
    }
    diagnostics_.Report(Code::UnknownAttribute, name.where,
                        "entity " + Quoted(entity.name) + " has no attribute " + Quoted(name),
                        Express::DidYouMean(name.text, names));
  }

  void Inverse(const Entity& entity, Attribute& attribute) {
    attribute.inverseEntityDeclaration = FindEntity(ScopeOf(entity), attribute.inverseEntity);
    if (!attribute.inverseEntityDeclaration) return;
    if (attribute.inverseHasBounds) {
      Bounds(attribute.inverseKind, attribute.inverseEntity.where, *attribute.inverseLower,
             *attribute.inverseUpper);
    }
    const Entity* owner = attribute.inverseEntityDeclaration;
    if (!attribute.inverseGroup.text.empty()) {
      owner = FindEntity(ScopeOf(entity), attribute.inverseGroup);
      if (!owner || !IsSupertype(*owner, *attribute.inverseEntityDeclaration, attribute.inverseGroup)) return;
    }
    const Attribute* inverted = FindAttribute(*owner, attribute.inverseAttribute.text);
    if (!inverted) {
      UnknownAttribute(*owner, attribute.inverseAttribute);
      return;
    }
    attribute.inverseAttributeDeclaration = inverted;
    if (inverted->kind == AttributeKind::Explicit && (!inverted->type || CanReferTo(*inverted->type, entity)))
      return;
    diagnostics_.Report(Code::InverseNotReferring, attribute.inverseAttribute.where,
                        "attribute " + Quoted(attribute.inverseAttribute) + " of " + Quoted(owner->name) +
                            " does not refer to " + Quoted(entity.name),
                        inverted->name.where, "declared here");
  }

  // Whether a value of the type may hold a reference to an instance of the entity.
  static bool CanReferTo(const TypeExpression& type, const Entity& entity) {
    std::vector<const TypeExpression*> open{&type};
    std::set<const TypeExpression*> seen;
    while (!open.empty()) {
      const TypeExpression* at = Underlying(*open.back());
      open.pop_back();
      if (!at || at->kind == TypeKind::Generic || at->kind == TypeKind::GenericEntity) return true;
      if (!seen.insert(at).second) continue;
      if (at->element) open.push_back(at->element.get());
      if (at->kind == TypeKind::Named) {
        const Entity& target = *AsEntity(at->declaration);
        if (IsKindOf(entity, target) || IsKindOf(target, entity)) return true;
      }
      if (at->kind != TypeKind::Select) continue;
      if (at->extensible) return true;
      for (const TypeItem& item : AllItems(*at)) {
        if (!item.declaration) return true;
        if (const Entity* target = AsEntity(item.declaration)) {
          if (IsKindOf(entity, *target) || IsKindOf(*target, entity)) return true;
        } else {
          open.push_back(&AsType(item.declaration)->underlying);
        }
      }
    }
    return false;
  }

  void Unique(const Entity& entity, UniqueRule& rule, const std::map<std::string, const Attribute*>& own,
              const std::map<std::string, const Attribute*>& inherited) {
    for (UniqueAttribute& attribute : rule.attributes) {
      const std::string& name = attribute.name.text;
      if (!attribute.group.text.empty()) {
        const Entity* group = FindEntity(ScopeOf(entity), attribute.group);
        if (!group || !IsSupertype(*group, entity, attribute.group)) continue;
        attribute.attribute = FindAttribute(*group, name);
      } else if (own.count(name)) {
        attribute.attribute = own.at(name);
      } else if (inherited.count(name)) {
        attribute.attribute = inherited.at(name);
      }
      if (!attribute.attribute) UnknownAttribute(entity, attribute.name);
    }
  }

  void Subtypes(const Scope& scope, const Entity& entity, SupertypeExpression& expression) {
    for (SupertypeExpression& operand : expression.operands) Subtypes(scope, entity, operand);
    if (expression.kind != SupertypeExpression::Kind::Entity) return;
    expression.entity = FindEntity(scope, expression.name);
    const bool isSubtype =
        expression.entity && expression.entity != &entity && IsKindOf(*expression.entity, entity);
    if (!expression.entity || isSubtype) return;
    diagnostics_.Report(Code::NotASubtype, expression.name.where,
                        Quoted(expression.name) + " is not a subtype of " + Quoted(entity.name),
                        expression.entity->name.where, Quoted(expression.name) + " is declared here");
  }

  void Remainder() {
    for (Constant* constant : constants_) Type(ScopeOf(*constant), constant->type, false);
    for (SubtypeConstraint* constraint : constraints_) {
      constraint->entity = FindEntity(ScopeOf(*constraint), constraint->entityName);
      if (!constraint->entity) continue;
      for (SupertypeExpression& entity : constraint->totalOver)
        Subtypes(ScopeOf(*constraint), *constraint->entity, entity);
      if (constraint->expression) {
        Subtypes(ScopeOf(*constraint), *constraint->entity, *constraint->expression);
      }
    }
  }

  Model& model_;
  Diagnostics& diagnostics_;
  std::vector<Entity*> entities_;
  std::vector<DefinedType*> types_;
  std::vector<Constant*> constants_;
  std::vector<std::pair<Algorithm*, const Scope*>> algorithms_;  // with the scope of what they declare
  std::vector<SubtypeConstraint*> constraints_;
  std::deque<Scope> scopes_;
  std::unordered_map<const Declaration*, const Scope*> scopeOf_;
  std::map<const SchemaDeclaration*, std::set<std::string>>
      exported_;  // what USE FROM without a list carries over
};

}  // namespace

void Resolve(Model& model, Diagnostics& diagnostics) {
  Resolver(model, diagnostics).Run();
  TypeRules rules(model);
  ResolveExpressions(model, rules, diagnostics);
  CheckTypes(model, rules, diagnostics);
}

}  // namespace VELMAR::Express
