#include "TypeRules.h"

#include <algorithm>
#include <memory>
#include <unordered_set>

namespace VELMAR::Express {
namespace {

// Types nest deeper through names; what lies below is taken to fit.
constexpr int kDeepestComparison = 40;
// Selects of more pairs of members than these are taken to fit.
constexpr std::size_t kMostPairs = 100000;

// The classes of a type that is no select.
unsigned ClassOf(TypeKind kind) {
  switch (kind) {
    case TypeKind::Number:
    case TypeKind::Real:
    case TypeKind::Integer:
      return kNumericValue;
    case TypeKind::String:
      return kStringValue;
    case TypeKind::Boolean:
    case TypeKind::Logical:
      return kLogicalValue;
    case TypeKind::Binary:
      return kBinaryValue;
    case TypeKind::Array:
    case TypeKind::Bag:
    case TypeKind::List:
    case TypeKind::Set:
    case TypeKind::Aggregate:
      return kAggregateValue;
    case TypeKind::Enumeration:
      return kEnumerationValue;
    case TypeKind::GenericEntity:
    case TypeKind::Named:
      return kInstanceValue;
    case TypeKind::Generic:
    case TypeKind::Select:
      break;
  }
  return kAnyValue;
}

const Entity& EntityOf(const TypeExpression& type) { return static_cast<const Entity&>(*type.declaration); }

// An enumeration and those that it is based on have items in common.
bool ShareItems(const TypeExpression& a, const TypeExpression& b) {
  const auto rootOf = [](const TypeExpression& type) {
    const TypeExpression* at = &type;
    for (int steps = 0; at->base && steps < 1000; ++steps) at = &at->base->underlying;
    return at;
  };
  return rootOf(a) == rootOf(b);
}

// As far as the bounds are written as numbers.
bool IsWithinBounds(const TypeExpression& narrow, const TypeExpression& wide) {
  if (!wide.hasBounds) return true;
  const std::optional<std::int64_t> lower = LiteralValue(*wide.lower);
  const std::optional<std::int64_t> upper = LiteralValue(*wide.upper);
  if (!narrow.hasBounds) return lower == 0 && wide.upper->kind == ExpressionKind::Indeterminate;
  const std::optional<std::int64_t> low = LiteralValue(*narrow.lower);
  const std::optional<std::int64_t> high = LiteralValue(*narrow.upper);
  if (wide.kind == TypeKind::Array && narrow.kind == TypeKind::Array) {
    return (!low || !lower || *low == *lower) && (!high || !upper || *high == *upper);
  }
  if (lower && low && *low < *lower) return false;
  if (upper && narrow.upper->kind == ExpressionKind::Indeterminate) return false;
  return !upper || !high || *high <= *upper;
}

// As far as the widths are written as numbers.
bool IsWithinWidth(const TypeExpression& narrow, const TypeExpression& wide) {
  if (!wide.width) return true;
  if (!narrow.width || (wide.fixed && !narrow.fixed)) return false;
  const std::optional<std::int64_t> most = LiteralValue(*wide.width);
  const std::optional<std::int64_t> width = LiteralValue(*narrow.width);
  if (!most || !width) return true;
  return wide.fixed ? *width == *most : *width <= *most;
}

}  // namespace

const TypeExpression* SimpleType(TypeKind kind) {
  static const std::vector<TypeExpression> types = [] {
    std::vector<TypeExpression> all(static_cast<std::size_t>(TypeKind::Named));
    for (std::size_t i = 0; i < all.size(); ++i) all[i].kind = static_cast<TypeKind>(i);
    return all;
  }();
  return &types[static_cast<std::size_t>(kind)];
}

std::optional<std::int64_t> LiteralValue(const Expression& expression) {
  const Expression* at = &expression;
  const bool isNegative =
      at->kind == ExpressionKind::Unary && static_cast<const Unary*>(at)->op == Operator::Minus;
  if (isNegative) at = static_cast<const Unary*>(at)->operand.get();
  if (at->kind != ExpressionKind::Integer) return std::nullopt;
  const std::int64_t value = static_cast<const IntegerLiteral*>(at)->value;
  return isNegative ? -value : value;
}

const TypeExpression* TypeRules::TypeOf(Declaration& declaration) {
  const TypeExpression*& known = names_[&declaration];
  if (!known) {
    TypeExpression& type = model_.derivedTypes.emplace_back();
    type.name = declaration.name;
    type.declaration = &declaration;
    known = &type;
  }
  return known;
}

// One object for all types that name the same declaration.
const TypeExpression* TypeRules::Canonical(const TypeExpression& type) {
  return type.kind == TypeKind::Named && type.declaration ? TypeOf(*type.declaration) : &type;
}

const TypeExpression* TypeRules::AggregateOf(TypeKind kind, const TypeExpression& element) {
  const TypeExpression* of = Canonical(element);
  const TypeExpression*& known = aggregates_[{kind, of}];
  if (!known) {
    TypeExpression& type = model_.derivedTypes.emplace_back();
    type.kind = kind;
    // Owned by the model, as this type is.
    type.element = std::shared_ptr<TypeExpression>(std::shared_ptr<void>(), const_cast<TypeExpression*>(of));
    known = &type;
  }
  return known;
}

const TypeRules::Selection& TypeRules::SelectionOf(const TypeExpression& select) {
  const auto [known, isNew] = selections_.try_emplace(&select);
  Selection& selection = known->second;
  if (!isNew) return selection;
  std::unordered_set<const TypeExpression*> seen{&select};
  std::unordered_set<const Declaration*> entities;
  std::vector<const TypeExpression*> open{&select};
  const auto add = [&](const TypeExpression* type) {
    const TypeExpression* underlying = type ? Underlying(*type) : nullptr;
    if (!underlying) {
      selection.isOpen = true;
    } else if (underlying->kind == TypeKind::Named) {
      if (entities.insert(underlying->declaration).second) selection.types.push_back(underlying);
    } else if (seen.insert(underlying).second) {
      if (underlying->kind == TypeKind::Select) {
        open.push_back(underlying);
      } else {
        selection.types.push_back(underlying);
      }
    }
  };
  while (!open.empty()) {
    const TypeExpression& at = *open.back();
    open.pop_back();
    if (at.extensible || (!at.basedOn.text.empty() && !at.base)) selection.isOpen = true;
    for (const TypeItem& item : AllItems(at)) add(item.declaration ? TypeOf(*item.declaration) : nullptr);
  }
  return selection;
}

unsigned TypeRules::ClassesOf(const TypeExpression* type) {
  const TypeExpression* underlying = type ? Underlying(*type) : nullptr;
  if (!underlying) return kAnyValue;
  if (underlying->kind != TypeKind::Select) return ClassOf(underlying->kind);
  const Selection& selection = SelectionOf(*underlying);
  if (selection.isOpen) return IsOfEntities(*underlying) ? kInstanceValue : kAnyValue;
  unsigned classes = 0;
  for (const TypeExpression* member : selection.types) classes |= ClassOf(member->kind);
  return classes ? classes : kAnyValue;
}

bool TypeRules::IsOfEntities(const TypeExpression& select) {
  const TypeExpression* at = &select;
  while (!at->genericEntity && at->base) at = &at->base->underlying;
  return at->genericEntity;
}

bool TypeRules::IsSelect(const TypeExpression* type) {
  const TypeExpression* underlying = type ? Underlying(*type) : nullptr;
  return underlying && underlying->kind == TypeKind::Select;
}

const TypeExpression* TypeRules::Fundamental(const TypeExpression* type) {
  const TypeExpression* underlying = type ? Underlying(*type) : nullptr;
  if (!underlying || underlying->kind != TypeKind::Select) return underlying;
  const auto [known, isNew] = fundamentals_.try_emplace(underlying, nullptr);
  if (!isNew) return known->second;
  const Selection& selection = SelectionOf(*underlying);
  if (selection.isOpen || selection.types.empty()) {
    return IsOfEntities(*underlying) ? SimpleType(TypeKind::GenericEntity) : nullptr;
  }
  const TypeExpression* common = selection.types.front();
  for (const TypeExpression* member : selection.types) {
    common = Common(common, member);
    if (!common) return nullptr;
  }
  return fundamentals_[underlying] = common;
}

const TypeExpression* TypeRules::AggregateIn(const TypeExpression* type) {
  const TypeExpression* underlying = type ? Underlying(*type) : nullptr;
  if (!underlying) return nullptr;
  if (underlying->kind != TypeKind::Select) return IsAggregate(underlying->kind) ? underlying : nullptr;
  const Selection& selection = SelectionOf(*underlying);
  if (selection.isOpen) return nullptr;
  const TypeExpression* aggregate = nullptr;
  for (const TypeExpression* member : selection.types) {
    if (IsAggregate(member->kind)) aggregate = aggregate ? Common(aggregate, member) : member;
  }
  return aggregate;
}

const TypeExpression* TypeRules::Common(const TypeExpression* a, const TypeExpression* b) {
  return Common(a, b, 0);
}

const TypeExpression* TypeRules::Common(const TypeExpression* a, const TypeExpression* b, int depth) {
  if (!a || !b || depth > kDeepestComparison) return nullptr;
  if (a == b) return a;
  if (a->kind == TypeKind::Named && b->kind == TypeKind::Named && a->declaration == b->declaration) return a;
  const TypeExpression* left = Underlying(*a);
  const TypeExpression* right = Underlying(*b);
  if (!left || !right) return nullptr;
  if (left == right) return left;
  if (left->kind == TypeKind::Select || right->kind == TypeKind::Select) {
    const bool areInstances = ClassesOf(left) == kInstanceValue && ClassesOf(right) == kInstanceValue;
    if (areInstances) return SimpleType(TypeKind::GenericEntity);
    left = Fundamental(left);
    right = Fundamental(right);
    if (!left || !right) return nullptr;
  }
  if (IsNumeric(left->kind) && IsNumeric(right->kind)) {
    if (left->kind == right->kind) return SimpleType(left->kind);
    const bool isNumber = left->kind == TypeKind::Number || right->kind == TypeKind::Number;
    return SimpleType(isNumber ? TypeKind::Number : TypeKind::Real);
  }
  const unsigned kind = ClassOf(left->kind);
  if (kind != ClassOf(right->kind)) return nullptr;
  switch (kind) {
    case kStringValue:
    case kBinaryValue:
      return SimpleType(left->kind);
    case kLogicalValue:
      return left->kind == right->kind ? left : SimpleType(TypeKind::Logical);
    case kInstanceValue:
      if (left->kind == TypeKind::Named && right->kind == TypeKind::Named) {
        if (IsKindOf(EntityOf(*left), EntityOf(*right))) return right;
        if (IsKindOf(EntityOf(*right), EntityOf(*left))) return left;
      }
      return SimpleType(TypeKind::GenericEntity);
    case kAggregateValue: {
      const TypeExpression* element = Common(left->element.get(), right->element.get(), depth + 1);
      if (!element) element = SimpleType(TypeKind::Generic);
      if (left->kind == right->kind) return AggregateOf(left->kind, *element);
      const bool isBag = (left->kind == TypeKind::Bag || left->kind == TypeKind::Set) &&
                         (right->kind == TypeKind::Bag || right->kind == TypeKind::Set);
      return AggregateOf(isBag ? TypeKind::Bag : TypeKind::Aggregate, *element);
    }
    default:
      return nullptr;
  }
}

// Whether the test says yes to some pair of what the two types select.
template <class Test>
bool TypeRules::AnyPair(const TypeExpression& a, const TypeExpression& b, Test test) {
  const Selection left = MembersOf(a);
  const Selection right = MembersOf(b);
  if (left.isOpen || right.isOpen || left.types.size() * right.types.size() > kMostPairs) return true;
  for (const TypeExpression* x : left.types) {
    for (const TypeExpression* y : right.types) {
      if (test(x, y)) return true;
    }
  }
  return false;
}

bool TypeRules::MayHold(const TypeExpression* target, const TypeExpression* value, int depth) {
  if (!target || !value || target == value || depth > kDeepestComparison) return true;
  const TypeExpression* to = Underlying(*target);
  const TypeExpression* from = Underlying(*value);
  if (!to || !from || to == from) return true;
  if (to->kind == TypeKind::Generic || from->kind == TypeKind::Generic) return true;
  if ((ClassesOf(to) & ClassesOf(from)) == 0) return false;
  if (to->kind == TypeKind::Select || from->kind == TypeKind::Select) {
    const auto [known, isNew] = holds_.try_emplace({to, from}, true);
    if (!isNew) return known->second;
    const bool holds = AnyPair(*to, *from, [&](const TypeExpression* x, const TypeExpression* y) {
      return MayHold(x, y, depth + 1);
    });
    return holds_[{to, from}] = holds;
  }
  switch (to->kind) {
    case TypeKind::Integer:
      return from->kind != TypeKind::Real;
    case TypeKind::Enumeration:
      return ShareItems(*to, *from);
    case TypeKind::Named:
      return from->kind != TypeKind::Named || MayBeOneInstance(EntityOf(*to), EntityOf(*from));
    case TypeKind::Array:
    case TypeKind::Bag:
    case TypeKind::List:
    case TypeKind::Set:
    case TypeKind::Aggregate: {
      const auto isUnordered = [](TypeKind kind) { return kind == TypeKind::Bag || kind == TypeKind::Set; };
      const bool fits = to->kind == from->kind || to->kind == TypeKind::Aggregate ||
                        from->kind == TypeKind::Aggregate ||
                        (isUnordered(to->kind) && isUnordered(from->kind));
      return fits && MayHold(to->element.get(), from->element.get(), depth + 1);
    }
    default:
      return true;
  }
}

bool TypeRules::IsSpecialisation(const TypeExpression& narrow, const TypeExpression& wide, int depth) {
  const TypeExpression* to = Underlying(narrow);
  const TypeExpression* from = Underlying(wide);
  if (!to || !from || to == from || depth > kDeepestComparison) return true;
  const bool isGeneric = from->kind == TypeKind::Generic ||
                         (from->kind == TypeKind::GenericEntity && ClassesOf(to) == kInstanceValue);
  if (isGeneric) return true;
  if (to->kind == TypeKind::Select || from->kind == TypeKind::Select) return SelectsLess(*to, *from, depth);
  switch (from->kind) {
    case TypeKind::Number:
      return IsNumeric(to->kind);
    case TypeKind::Real:
      return to->kind == TypeKind::Real || to->kind == TypeKind::Integer;
    case TypeKind::Logical:
      return to->kind == TypeKind::Logical || to->kind == TypeKind::Boolean;
    case TypeKind::Enumeration:
      return to->kind == TypeKind::Enumeration && ShareItems(*to, *from);
    case TypeKind::Named:
      return to->kind == TypeKind::Named && IsKindOf(EntityOf(*to), EntityOf(*from));
    case TypeKind::Array:
    case TypeKind::Bag:
    case TypeKind::List:
    case TypeKind::Set:
    case TypeKind::Aggregate: {
      const bool isKind = to->kind == from->kind ||
                          (from->kind == TypeKind::Aggregate && IsAggregate(to->kind)) ||
                          (from->kind == TypeKind::Bag && to->kind == TypeKind::Set);
      const bool isAsStrict = (to->uniqueElements || !from->uniqueElements || to->kind == TypeKind::Set) &&
                              (!to->optionalElements || from->optionalElements);
      return isKind && isAsStrict && IsWithinBounds(*to, *from) &&
             IsSpecialisation(*to->element, *from->element, depth + 1);
    }
    case TypeKind::String:
    case TypeKind::Binary:
      return to->kind == from->kind && IsWithinWidth(*to, *from);
    default:
      return to->kind == from->kind;
  }
}

// Everything that one type selects is a specialisation of something that the other selects.
bool TypeRules::SelectsLess(const TypeExpression& narrow, const TypeExpression& wide, int depth) {
  const Selection less = MembersOf(narrow);
  const Selection more = MembersOf(wide);
  const bool isLarge = less.types.size() * more.types.size() > kMostPairs;
  if (less.isOpen || more.isOpen || isLarge) return true;
  return std::all_of(less.types.begin(), less.types.end(), [&](const TypeExpression* type) {
    return std::any_of(more.types.begin(), more.types.end(), [&](const TypeExpression* other) {
      return IsSpecialisation(*type, *other, depth + 1);
    });
  });
}

// What is selected, or the type itself where it is no select.
TypeRules::Selection TypeRules::MembersOf(const TypeExpression& type) {
  if (type.kind != TypeKind::Select) return {{&type}, false};
  Selection selection = SelectionOf(type);
  selection.isOpen = selection.isOpen || selection.types.empty();
  return selection;
}

bool TypeRules::MayEqual(const TypeExpression* a, const TypeExpression* b, int depth) {
  if (!a || !b || a == b || depth > kDeepestComparison) return true;
  const TypeExpression* left = Underlying(*a);
  const TypeExpression* right = Underlying(*b);
  if (!left || !right || left == right) return true;
  const unsigned common = ClassesOf(left) & ClassesOf(right);
  if (common == 0) return false;
  if (left->kind == TypeKind::Select || right->kind == TypeKind::Select) {
    const auto [known, isNew] = equals_.try_emplace({left, right}, true);
    if (!isNew) return known->second;
    const bool equals = AnyPair(*left, *right, [&](const TypeExpression* x, const TypeExpression* y) {
      return MayEqual(x, y, depth + 1);
    });
    return equals_[{left, right}] = equals;
  }
  if (left->kind == TypeKind::Enumeration && right->kind == TypeKind::Enumeration) {
    return ShareItems(*left, *right);
  }
  if (left->kind == TypeKind::Named && right->kind == TypeKind::Named) {
    return MayBeOneInstance(EntityOf(*left), EntityOf(*right));
  }
  if (common == kAggregateValue) return MayEqual(left->element.get(), right->element.get(), depth + 1);
  return true;
}

bool TypeRules::IsKindOf(const Entity& entity, const Entity& ancestor) {
  if (&entity == &ancestor) return true;
  const auto [known, isNew] = ancestors_.try_emplace(&entity);
  if (isNew) {
    known->second = AncestorsOf(entity);
    std::sort(known->second.begin(), known->second.end());
  }
  return std::binary_search(known->second.begin(), known->second.end(), &ancestor);
}

bool TypeRules::MayBeOneInstance(const Entity& a, const Entity& b) {
  if (groups_.empty()) {
    for (const auto& schema : model_.schemas) JoinGroups(schema->declarations);
  }
  return GroupOf(a) == GroupOf(b);
}

// Every entity becomes a member of the groups of its supertypes.
void TypeRules::JoinGroups(const std::vector<std::unique_ptr<Declaration>>& declarations) {
  for (const auto& declaration : declarations) {
    if (declaration->kind == DeclarationKind::Entity) {
      const auto& entity = static_cast<const Entity&>(*declaration);
      for (const Entity* supertype : entity.supertypes) groups_[GroupOf(entity)] = GroupOf(*supertype);
    } else if (IsAlgorithm(declaration->kind)) {
      JoinGroups(static_cast<const Algorithm&>(*declaration).declarations);
    }
  }
}

const Entity* TypeRules::GroupOf(const Entity& entity) {
  const Entity* at = &entity;
  for (;;) {
    const Entity*& up = groups_.try_emplace(at, at).first->second;
    if (up == at) break;
    const Entity*& above = groups_.try_emplace(up, up).first->second;
    up = above;
    at = up;
  }
  return at;
}

}  // namespace VELMAR::Express
