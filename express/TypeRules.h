/// @file TypeRules.h
/// How data types go together: what a value may be, what may be assigned and compared (ISO 10303-11, clauses
/// 8, 9.2.3.4, 12 and 13.3).
///
/// A select, a generalised type and an entity leave open which value there will be. All questions are
/// answered with "yes" unless no value whatever could make it right.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Model.h"

namespace VELMAR::Express {

/// What kinds of values there are, as bits of a set.
enum ValueClass : unsigned {
  kNumericValue = 1,
  kStringValue = 2,
  kLogicalValue = 4,
  kBinaryValue = 8,
  kEnumerationValue = 16,
  kInstanceValue = 32,
  kAggregateValue = 64,
  kAnyValue = 127
};

/// The simple type of a kind, without width: one object for each kind, which lives as long as the program.
const TypeExpression* SimpleType(TypeKind kind);

/// The value of an integer literal with or without a sign; none of other expressions.
std::optional<std::int64_t> LiteralValue(const Expression& expression);

/// The types of a model once its declarations are resolved. Keeps what it has found out; the model must live
/// as long.
class TypeRules {
 public:
  explicit TypeRules(Model& model) : model_(model) {}

  /// What the values of the type can be; null is a type that is not known. `types` of a select: its leaves.
  unsigned ClassesOf(const TypeExpression* type);

  /// What a select finally selects: types that are no selects, as Underlying gives them, each once.
  struct Selection {
    std::vector<const TypeExpression*> types;
    bool isOpen = false;  ///< more than these: it is extensible, or a name in it is unknown
  };
  const Selection& SelectionOf(const TypeExpression& select);

  /// The select is one of GENERIC_ENTITY, or based on one.
  static bool IsOfEntities(const TypeExpression& select);

  /// The type stands for a select.
  static bool IsSelect(const TypeExpression* type);

  /// What all values of the type have in common: Underlying, where a select stands for what its members
  /// share. Null where that is nothing, or unknown.
  const TypeExpression* Fundamental(const TypeExpression* type);

  /// The aggregate that a value of the type is if it is one; null where that is open. A select may select
  /// others, too.
  const TypeExpression* AggregateIn(const TypeExpression* type);

  /// A type that has the values of both; null where there is none but GENERIC.
  const TypeExpression* Common(const TypeExpression* a, const TypeExpression* b);

  /// Whether a variable of type `target` may hold a value of the type `value` (13.3).
  bool MayHold(const TypeExpression* target, const TypeExpression* value) {
    return MayHold(target, value, 0);
  }

  /// Whether all values of the type `narrow` are also of the type `wide` (9.2.3.4).
  bool IsSpecialisation(const TypeExpression& narrow, const TypeExpression& wide) {
    return IsSpecialisation(narrow, wide, 0);
  }

  /// Whether values of the types may be equal (12.2).
  bool MayEqual(const TypeExpression* a, const TypeExpression* b) { return MayEqual(a, b, 0); }

  /// Whether an instance may be of both entities: they have a supertype or a subtype in common, or are
  /// connected by several such steps.
  bool MayBeOneInstance(const Entity& a, const Entity& b);

  bool IsKindOf(const Entity& entity, const Entity& ancestor);

  /// The type that names a declaration; one object for each.
  const TypeExpression* TypeOf(Declaration& declaration);

  /// An aggregate type of the given elements; one object for each kind and element.
  const TypeExpression* AggregateOf(TypeKind kind, const TypeExpression& element);

 private:
  using Pair = std::pair<const void*, const void*>;
  struct PairHash {
    std::size_t operator()(const Pair& pair) const {
      return std::hash<const void*>()(pair.first) * 31 + std::hash<const void*>()(pair.second);
    }
  };
  using Answers = std::unordered_map<Pair, bool, PairHash>;

  bool MayHold(const TypeExpression* target, const TypeExpression* value, int depth);
  bool MayEqual(const TypeExpression* a, const TypeExpression* b, int depth);
  bool IsSpecialisation(const TypeExpression& narrow, const TypeExpression& wide, int depth);
  const TypeExpression* Common(const TypeExpression* a, const TypeExpression* b, int depth);
  const TypeExpression* Canonical(const TypeExpression& type);
  Selection MembersOf(const TypeExpression& type);
  bool SelectsLess(const TypeExpression& narrow, const TypeExpression& wide, int depth);
  template <class Test>
  bool AnyPair(const TypeExpression& a, const TypeExpression& b, Test test);
  const Entity* GroupOf(const Entity& entity);
  void JoinGroups(const std::vector<std::unique_ptr<Declaration>>& declarations);

  Model& model_;
  std::unordered_map<const TypeExpression*, Selection> selections_;
  std::unordered_map<const TypeExpression*, const TypeExpression*> fundamentals_;
  Answers holds_, equals_;
  std::unordered_map<const Entity*, const Entity*> groups_;  // towards one entity of all that are connected
  std::unordered_map<const Entity*, std::vector<const Entity*>> ancestors_;  // sorted
  std::unordered_map<const Declaration*, const TypeExpression*> names_;
  std::map<std::pair<TypeKind, const TypeExpression*>, const TypeExpression*> aggregates_;
};

}  // namespace VELMAR::Express
