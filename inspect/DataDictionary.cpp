#include "DataDictionary.h"

#include <algorithm>
#include <set>
#include <utility>

#include "Model.h"
#include "SchemaContents.h"

namespace velmar {

namespace Express = VELMAR::Express;

using Express::Attribute;
using Express::DeclarationKind;
using Express::DefinedType;
using Express::Entity;
using Express::TypeExpression;
using Express::TypeKind;

bool EntityRule::IsKindOf(const EntityRule& other) const {
  return std::binary_search(kinds.begin(), kinds.end(), &other, std::less<const EntityRule*>());
}

namespace {

// The value of a literal, or of a negated one; `otherwise` for all that has to be evaluated.
long LiteralValue(const Express::Expression* expression, long otherwise) {
  if (expression == nullptr) return otherwise;
  if (expression->kind == Express::ExpressionKind::Integer) {
    return static_cast<long>(static_cast<const Express::IntegerLiteral*>(expression)->value);
  }
  if (expression->kind == Express::ExpressionKind::Unary) {
    const auto* unary = static_cast<const Express::Unary*>(expression);
    if (unary->op == Express::Operator::Minus &&
        unary->operand->kind == Express::ExpressionKind::Integer) {
      return -LiteralValue(unary->operand.get(), 0);
    }
  }
  return otherwise;
}

bool IsLiteral(const Express::Expression* expression) {
  return LiteralValue(expression, 0) == LiteralValue(expression, 1);
}

}  // namespace

class DataDictionary::Maker {
 public:
  Maker(DataDictionary& dictionary, const Express::SchemaDeclaration& schema)
      : dictionary_(dictionary), contents_(schema) {
    for (const auto& [name, declaration] : schema.scope) {
      if (declaration->kind != DeclarationKind::Type) continue;
      const auto* type = static_cast<const DefinedType*>(declaration);
      if (type->underlying.base != nullptr) extensions_[type->underlying.base].push_back(type);
    }
  }

  void Make() {
    for (const auto& [name, entity] : contents_.Entities()) {
      EntityRule& rule = dictionary_.entities_[Express::UpperCase(name)];
      rule.name = Express::UpperCase(name);
      rule.isAbstract = entity->isAbstract;
      rules_[entity] = &rule;
    }
    for (const auto& [entity, rule] : rules_) Describe(*entity, *rule);
  }

 private:
  void Describe(const Entity& entity, EntityRule& rule) {
    std::vector<const Entity*> family = Express::AncestorsOf(entity);
    family.push_back(&entity);
    for (const Entity* member : family) rule.kinds.push_back(rules_.at(member));
    std::sort(rule.kinds.begin(), rule.kinds.end(), std::less<const EntityRule*>());
    for (const Express::Slot& slot : Express::InternalMapping(entity)) {
      if (slot.owner != &entity) ++rule.firstOwn;
      rule.attributes.push_back(DescribeAttribute(slot, family));
    }
    for (const Attribute* omitted : Express::OmittedAttributes(entity)) {
      rule.derives.emplace_back(rules_.at(omitted->owner), omitted->name.text);
    }
  }

  // As the entity sees it that ends `family`, its supertypes before it.
  AttributeRule DescribeAttribute(const Express::Slot& slot, const std::vector<const Entity*>& family) {
    const Attribute* narrowest = slot.attribute;
    bool isDerived = false;
    for (const Entity* owner : family) {
      for (const Attribute& attribute : owner->attributes) {
        if (!attribute.redeclared || attribute.original != slot.attribute) continue;
        narrowest = &attribute;
        isDerived = isDerived || attribute.kind == Express::AttributeKind::Derived;
      }
    }
    return {slot.attribute->name.text, rules_.at(slot.owner), DomainOf(*narrowest->type), narrowest->optional,
            isDerived};
  }

  const Domain* DomainOf(const TypeExpression& type) {
    if (type.kind == TypeKind::Named && type.declaration != nullptr &&
        type.declaration->kind == DeclarationKind::Type) {
      return DomainOf(static_cast<const DefinedType&>(*type.declaration));
    }
    Domain*& domain = domains_[&type];
    if (domain == nullptr) {
      domain = &dictionary_.domains_.emplace_back();
      Fill(*domain, type, nullptr);
      domain->text = Express::TypeText(type);
    }
    return domain;
  }

  const Domain* DomainOf(const DefinedType& type) {
    Domain*& known = domains_[&type.underlying];
    if (known != nullptr) return known;
    Domain* domain = known = &dictionary_.domains_.emplace_back();
    // A type may stand for another one, and need not be the first that leads here.
    const TypeExpression* underlying = Express::Underlying(type.underlying);
    if (underlying != nullptr) Fill(*domain, *underlying, &type);
    domain->text = type.name.text;
    return domain;
  }

  void Fill(Domain& domain, const TypeExpression& type, const DefinedType* definition) {
    using Kind = Domain::Kind;
    switch (type.kind) {
      case TypeKind::Number:
        domain.kind = Kind::Number;
        break;
      case TypeKind::Real:
        domain.kind = Kind::Real;
        break;
      case TypeKind::Integer:
        domain.kind = Kind::Integer;
        break;
      case TypeKind::String:
      case TypeKind::Binary:
        domain.kind = type.kind == TypeKind::String ? Kind::String : Kind::Binary;
        domain.longest = LiteralValue(type.width.get(), -1);
        domain.isFixed = type.fixed && domain.longest >= 0;
        break;
      case TypeKind::Boolean:
        domain.kind = Kind::Boolean;
        break;
      case TypeKind::Logical:
        domain.kind = Kind::Logical;
        break;
      case TypeKind::Enumeration:
        domain.kind = Kind::Enumeration;
        FillItems(domain, type, definition);
        break;
      case TypeKind::Select:
        domain.kind = Kind::Select;
        FillSelect(domain, type, definition);
        break;
      case TypeKind::Named:
        if (type.declaration == nullptr || type.declaration->kind != DeclarationKind::Entity) break;
        domain.kind = Kind::Entity;
        domain.entity = RuleOf(static_cast<const Entity&>(*type.declaration));
        break;
      case TypeKind::GenericEntity:
        domain.kind = Kind::Entity;
        break;
      case TypeKind::Generic:
        break;
      default:
        FillAggregate(domain, type);
    }
  }

  void FillAggregate(Domain& domain, const TypeExpression& type) {
    domain.kind = Domain::Kind::Aggregate;
    domain.element = type.element == nullptr ? &dictionary_.domains_.emplace_back() : DomainOf(*type.element);
    domain.mayLackElements = type.optionalElements;
    domain.isUnordered = type.kind == TypeKind::Set || type.kind == TypeKind::Bag;
    if (!type.hasBounds) return;
    const long upper = LiteralValue(type.upper.get(), -1);
    if (type.kind == TypeKind::Array) {
      if (!IsLiteral(type.lower.get()) || !IsLiteral(type.upper.get())) return;
      domain.fewest = domain.most = upper - LiteralValue(type.lower.get(), 0) + 1;
    } else {
      domain.fewest = LiteralValue(type.lower.get(), 0);
      domain.most = IsLiteral(type.upper.get()) ? upper : -1;
    }
  }

  void FillItems(Domain& domain, const TypeExpression& type, const DefinedType* definition) {
    for (const Express::TypeItem& item : ItemsOf(type, definition)) {
      domain.items.push_back(Express::UpperCase(item.name.text));
    }
    std::sort(domain.items.begin(), domain.items.end());
  }

  void FillSelect(Domain& domain, const TypeExpression& type, const DefinedType* definition) {
    std::vector<std::pair<const TypeExpression*, const DefinedType*>> selects = {{&type, definition}};
    std::set<const TypeExpression*> met = {&type};
    while (!selects.empty()) {
      const auto [select, declaration] = selects.back();
      selects.pop_back();
      for (const Express::TypeItem& item : ItemsOf(*select, declaration)) {
        if (item.declaration == nullptr) continue;
        if (item.declaration->kind == DeclarationKind::Entity) {
          domain.entities.push_back(RuleOf(static_cast<const Entity&>(*item.declaration)));
          continue;
        }
        const auto& defined = static_cast<const DefinedType&>(*item.declaration);
        const TypeExpression* underlying = Express::Underlying(defined.underlying);
        if (underlying == nullptr) continue;
        if (underlying->kind == TypeKind::Select) {
          if (met.insert(underlying).second) selects.emplace_back(underlying, &defined);
        } else {
          domain.types.emplace(Express::UpperCase(defined.name.text), DomainOf(defined));
        }
      }
      // Of any entity.
      if (select->genericEntity && ItemsOf(*select, declaration).empty()) domain.entities.push_back(nullptr);
    }
  }

  // The items of an enumeration or select, with those that extensions of it in the schema add.
  std::vector<Express::TypeItem> ItemsOf(const TypeExpression& type, const DefinedType* definition) {
    std::vector<Express::TypeItem> items = Express::AllItems(type);
    std::vector<const DefinedType*> next = {definition};
    std::set<const DefinedType*> met = {definition};
    while (!next.empty()) {
      const auto extensions = extensions_.find(next.back());
      next.pop_back();
      if (extensions == extensions_.end()) continue;
      for (const DefinedType* extension : extensions->second) {
        if (!met.insert(extension).second) continue;
        items.insert(items.end(), extension->underlying.items.begin(), extension->underlying.items.end());
        next.push_back(extension);
      }
    }
    return items;
  }

  const EntityRule* RuleOf(const Entity& entity) {
    const auto rule = rules_.find(&entity);
    return rule == rules_.end() ? nullptr : rule->second;
  }

  DataDictionary& dictionary_;
  const Express::SchemaContents contents_;
  std::map<const Entity*, EntityRule*> rules_;
  std::map<const TypeExpression*, Domain*> domains_;
  std::map<const DefinedType*, std::vector<const DefinedType*>> extensions_;
};

DataDictionary::DataDictionary(const Express::SchemaDeclaration& schema)
    : schemaName_(Express::UpperCase(schema.name.text)) {
  Maker(*this, schema).Make();
  for (const auto& [name, rule] : entities_) byName_.emplace(name, &rule);
}

DataDictionary::~DataDictionary() = default;

const EntityRule* DataDictionary::Find(const std::string& name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second;
}

}  // namespace velmar
