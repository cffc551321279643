#include "Model.h"

#include <algorithm>
#include <set>

namespace VELMAR::Express {
namespace {

// The types that a type is based on; the cycle that bad input may form ends at the first type met again.
std::vector<const TypeExpression*> BaseChain(const TypeExpression& type) {
  std::vector<const TypeExpression*> chain{&type};
  while (chain.back()->base) {
    const TypeExpression* base = &chain.back()->base->underlying;
    if (std::find(chain.begin(), chain.end(), base) != chain.end()) break;
    chain.push_back(base);
  }
  return chain;
}

// Calls visit(entity) for every ancestor once, supertypes before their subtypes. Without recursion.
template <class Visit>
void VisitAncestors(const Entity& entity, Visit visit) {
  struct Frame {
    const Entity* entity;
    std::size_t next;
  };
  std::set<const Entity*> seen{&entity};
  std::vector<Frame> stack{{&entity, 0}};
  while (!stack.empty()) {
    Frame& frame = stack.back();
    if (frame.next < frame.entity->supertypes.size()) {
      const Entity* supertype = frame.entity->supertypes[frame.next++];
      if (seen.insert(supertype).second) stack.push_back({supertype, 0});
    } else {
      if (frame.entity != &entity) visit(*frame.entity);
      stack.pop_back();
    }
  }
}

}  // namespace

SchemaDeclaration* Model::FindSchema(const std::string& name) const {
  const std::string wanted = LowerCase(name);
  for (const auto& schema : schemas) {
    if (schema->name.text == wanted) return schema.get();
  }
  return nullptr;
}

const TypeExpression* Underlying(const TypeExpression& type) {
  const TypeExpression* at = &type;
  const TypeExpression* before = nullptr;  // one met earlier, further ahead each time the steps double
  for (std::size_t step = 1, mark = 1; at->kind == TypeKind::Named; ++step) {
    if (!at->declaration || at == before) return nullptr;
    if (at->declaration->kind == DeclarationKind::Entity) return at;
    if (step == mark) {
      before = at;
      mark *= 2;
    }
    at = &static_cast<const DefinedType*>(at->declaration)->underlying;
  }
  return at;
}

std::vector<TypeItem> AllItems(const TypeExpression& enumerationOrSelect) {
  std::vector<TypeItem> items;
  const std::vector<const TypeExpression*> chain = BaseChain(enumerationOrSelect);
  for (auto type = chain.rbegin(); type != chain.rend(); ++type) {
    items.insert(items.end(), (*type)->items.begin(), (*type)->items.end());
  }
  return items;
}

bool IsKindOf(const Entity& entity, const Entity& ancestor) {
  if (&entity == &ancestor) return true;
  bool found = false;
  VisitAncestors(entity, [&](const Entity& visited) { found = found || &visited == &ancestor; });
  return found;
}

std::vector<const Entity*> AncestorsOf(const Entity& entity) {
  std::vector<const Entity*> ancestors;
  VisitAncestors(entity, [&](const Entity& visited) { ancestors.push_back(&visited); });
  return ancestors;
}

bool IsSlot(const Attribute& attribute) {
  return attribute.kind == AttributeKind::Explicit && !attribute.redeclared;
}

std::vector<Slot> InternalMapping(const Entity& entity) {
  std::vector<Slot> slots;
  const auto addOwn = [&](const Entity& owner) {
    for (const Attribute& attribute : owner.attributes) {
      if (IsSlot(attribute)) slots.push_back({&owner, &attribute});
    }
  };
  VisitAncestors(entity, addOwn);
  addOwn(entity);
  return slots;
}

}  // namespace VELMAR::Express
