#include "ExpressionResolver.h"

#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace VELMAR::Express {
namespace {

bool IsOpen(const TypeExpression* type) {
  return !type || type->kind == TypeKind::Generic || type->kind == TypeKind::GenericEntity;
}

class ExpressionResolver {
 public:
  ExpressionResolver(Model& model, TypeRules& rules, Diagnostics& diagnostics)
      : model_(model), rules_(rules), diagnostics_(diagnostics) {}

  void Run() {
    for (const auto& schema : model_.schemas) CollectAttributes(schema->declarations);
    for (const auto& schema : model_.schemas) {
      schema_ = schema.get();
      hasUnknownInterface_ = std::any_of(schema->interfaces.begin(), schema->interfaces.end(),
                                         [](const Interface& interface) { return !interface.schema; });
      items_.clear();
      for (const auto& [name, declaration] : schema->scope) AddItems(*declaration);
      for (const auto& declaration : schema->declarations) {
        neverFound_.clear();
        Any(*declaration);
      }
      AmbiguousItems();
    }
  }

 private:
  // The names that an algorithm, a QUERY, an ALIAS or a REPEAT adds.
  using Scope = std::unordered_map<std::string, Declaration*>;
  using Attributes = std::unordered_map<std::string, const Attribute*>;

  // ---- declarations -----------------------------------------------------------------------------

  void CollectAttributes(const std::vector<std::unique_ptr<Declaration>>& declarations) {
    for (const auto& declaration : declarations) {
      if (declaration->kind == DeclarationKind::Entity) {
        for (const Attribute& attribute : static_cast<const Entity&>(*declaration).attributes) {
          declared_[attribute.name.text].push_back(&attribute);
        }
      } else if (IsAlgorithm(declaration->kind)) {
        CollectAttributes(static_cast<const Algorithm&>(*declaration).declarations);
      }
    }
  }

  void AddItems(const Declaration& declaration) {
    if (declaration.kind != DeclarationKind::Type) return;
    const auto& type = static_cast<const DefinedType&>(declaration);
    if (type.underlying.kind != TypeKind::Enumeration) return;
    for (const TypeItem& item : type.underlying.items) items_[item.name.text].push_back(&type);
  }

  void Any(Declaration& declaration) {
    if (declaration.damaged) return;
    switch (declaration.kind) {
      case DeclarationKind::Type: {
        auto& type = static_cast<DefinedType&>(declaration);
        self_ = rules_.TypeOf(type);
        Bounds(type.underlying);
        Rules(type.where);
        self_ = nullptr;
        break;
      }
      case DeclarationKind::Entity:
        return EntityDecl(static_cast<Entity&>(declaration));
      case DeclarationKind::Constant: {
        auto& constant = static_cast<Constant&>(declaration);
        Bounds(constant.type);
        Resolve(constant.expression, &constant.type);
        break;
      }
      case DeclarationKind::Function:
      case DeclarationKind::Procedure:
      case DeclarationKind::Rule:
        return AlgorithmDecl(static_cast<Algorithm&>(declaration));
      case DeclarationKind::SubtypeConstraint:
      case DeclarationKind::Variable:
        break;
    }
  }

  void Rules(const std::vector<LabelledRule>& rules) {
    for (const LabelledRule& rule : rules) Resolve(rule.expression);
  }

  void EntityDecl(Entity& entity) {
    entity_ = &entity;
    entityScope_ = scopes_.size();
    self_ = rules_.TypeOf(entity);
    const TypeExpression* last = nullptr;
    for (Attribute& attribute : entity.attributes) {
      if (attribute.type && attribute.type.get() != last) Bounds(*attribute.type);
      last = attribute.type.get();
      deriving_ = &attribute;
      Resolve(attribute.expression, attribute.type.get());
      deriving_ = nullptr;
      Resolve(attribute.inverseLower);
      Resolve(attribute.inverseUpper);
    }
    Rules(entity.where);
    entity_ = nullptr;
    self_ = nullptr;
  }

  void AlgorithmDecl(Algorithm& algorithm) {
    scopes_.emplace_back();
    for (const auto& declaration : algorithm.declarations) Declare(*declaration);
    for (const auto* variables : {&algorithm.parameters, &algorithm.locals}) {
      for (const auto& variable : *variables) {
        Declare(*variable);
        variable->valueType = variable->type.get();
      }
    }
    for (const auto& declaration : algorithm.declarations) DeclareItems(*declaration);
    for (const Name& name : algorithm.populations) {
      Declaration* found = FindDeclaration(name.text);
      if (found && found->kind == DeclarationKind::Entity) {
        algorithm.populationEntities.push_back(static_cast<Entity*>(found));
      } else if (!found) {
        Unknown(Code::UnknownEntity, "entity", name);
      } else {
        NotAnEntity(name, *found);
      }
    }
    // What a rule declares sees its populations, too.
    const std::vector<Entity*> outerPopulations = populations_;
    if (algorithm.kind == DeclarationKind::Rule) populations_ = algorithm.populationEntities;
    if (algorithm.kind == DeclarationKind::Function) Bounds(algorithm.returnType);
    for (const auto& parameter : algorithm.parameters) VariableType(*parameter);
    for (const auto& declaration : algorithm.declarations) Any(*declaration);
    for (const auto& local : algorithm.locals) VariableType(*local);
    const Algorithm* const outer = std::exchange(algorithm_, &algorithm);
    Statements(algorithm.statements);
    Rules(algorithm.where);
    // Where there are errors, a name that is misspelt may be the use.
    for (const auto& local : algorithm.locals) {
      if (local->used || diagnostics_.ErrorCount() > 0) continue;
      diagnostics_.Report(Code::UnusedLocal, local->name.where,
                          "local variable " + Quoted(local->name) + " is never used");
    }
    algorithm_ = outer;
    populations_ = outerPopulations;
    scopes_.pop_back();
  }

  void Declare(Declaration& declaration) {
    const auto [first, isNew] = scopes_.back().emplace(declaration.name.text, &declaration);
    if (isNew) return Hidden(declaration);
    diagnostics_.Report(Code::DuplicateName, declaration.name.where,
                        "name " + Quoted(declaration.name) + " is declared twice", first->second->name.where,
                        "first declared here");
  }

  // The items of an enumeration stand for it where nothing else has their name.
  void DeclareItems(Declaration& declaration) {
    if (declaration.kind != DeclarationKind::Type) return;
    auto& type = static_cast<DefinedType&>(declaration);
    if (type.underlying.kind != TypeKind::Enumeration) return;
    for (const TypeItem& item : AllItems(type.underlying)) scopes_.back().emplace(item.name.text, &type);
  }

  static bool IsItem(const std::string& name, const Declaration& declaration) {
    return declaration.kind == DeclarationKind::Type && declaration.name.text != name;
  }

  // Whether the innermost scope takes a name from an outer variable.
  void Hidden(const Declaration& declaration) {
    if (declaration.kind != DeclarationKind::Variable) return;
    const VariableRole role = static_cast<const Variable&>(declaration).role;
    if (role == VariableRole::Parameter) return;  // named for those who call
    for (std::size_t i = scopes_.size() - 1; i-- > 0;) {
      const auto outer = scopes_[i].find(declaration.name.text);
      if (outer == scopes_[i].end() || outer->second->kind != DeclarationKind::Variable) continue;
      // Many declare the variable of a REPEAT, too, which does it no harm.
      const bool isRepeated = role == VariableRole::Repeat &&
                              static_cast<const Variable&>(*outer->second).role == VariableRole::Local;
      if (isRepeated) return;
      diagnostics_.Report(Code::HiddenName, declaration.name.where,
                          Quoted(declaration.name) + " hides another variable of this name",
                          outer->second->name.where, "declared here");
      return;
    }
  }

  // Names declared together share type and initial value, which are then resolved once.
  void VariableType(Variable& variable) {
    if (variable.type.get() != lastType_) {
      Bounds(*variable.type);
      if (variable.initial) Resolve(*variable.initial, variable.type.get());
    }
    lastType_ = variable.type.get();
  }

  // ---- types ------------------------------------------------------------------------------------

  void Bounds(const TypeExpression& type) {
    for (const TypeExpression* at = &type; at; at = at->element.get()) {
      Resolve(at->lower);
      Resolve(at->upper);
      Resolve(at->width);
    }
  }

  const TypeExpression* AttributeType(const Attribute& attribute) {
    if (attribute.kind != AttributeKind::Inverse) return attribute.type.get();
    if (!attribute.inverseEntityDeclaration) return nullptr;
    const TypeExpression* entity = rules_.TypeOf(*attribute.inverseEntityDeclaration);
    return attribute.inverseKind == TypeKind::Named ? entity
                                                    : rules_.AggregateOf(attribute.inverseKind, *entity);
  }

  // ---- names ------------------------------------------------------------------------------------

  Declaration* FindDeclaration(const std::string& name) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
      const auto found = scope->find(name);
      if (found != scope->end() && !IsItem(name, *found->second)) return found->second;
    }
    const auto found = schema_->scope.find(name);
    return found == schema_->scope.end() ? nullptr : found->second;
  }

  // All attributes of the entity by name, redeclared ones as the entity has them.
  const Attributes& AttributesOf(const Entity& entity) {
    const auto [known, isNew] = attributes_.try_emplace(&entity);
    if (isNew) {
      Attributes& attributes = known->second;
      const auto add = [&](const Entity& owner) {
        for (const Attribute& attribute : owner.attributes) {
          const Attribute*& same = attributes[attribute.name.text];
          if (same && &owner != &entity && FirstOf(*same) != FirstOf(attribute)) {
            rivals_.emplace(std::make_pair(&entity, &attribute), same);
          }
          same = &attribute;
        }
      };
      for (const Entity* ancestor : AncestorsOf(entity)) add(*ancestor);
      add(entity);
    }
    return known->second;
  }

  static const Attribute* FirstOf(const Attribute& attribute) {
    return attribute.original ? attribute.original : &attribute;
  }

  // The type of an attribute that is used by its name alone; what several supertypes have under the name is
  // as open as they differ.
  const TypeExpression* TypeByName(const Entity& entity, const Attribute& attribute, const Name& name) {
    const auto rival = rivals_.find({&entity, &attribute});
    if (rival == rivals_.end()) return AttributeType(attribute);
    const Attribute& other = *rival->second;
    diagnostics_.Report(Code::AmbiguousAttribute, name.where,
                        Quoted(name) + " is an attribute of " + Quoted(other.owner->name) + " and of " +
                            Quoted(attribute.owner->name),
                        "a group qualifier tells which: \\" + other.owner->name.text + '.' + name.text +
                            " or \\" + attribute.owner->name.text + '.' + name.text);
    return rules_.Common(AttributeType(other), AttributeType(attribute));
  }

  void DerivesFrom(const Attribute& attribute, const Name& name) {
    if (&attribute != deriving_) return;
    diagnostics_.Report(Code::EndlessDerivation, name.where,
                        "attribute " + Quoted(attribute.name) + " derives from itself");
  }

  // Those that no other operand told apart meanwhile.
  void AmbiguousItems() {
    for (const NameReference* reference : ambiguous_) {
      if (reference->referent.enumeration) continue;
      const std::vector<const DefinedType*>& types = items_.at(reference->name.text);
      diagnostics_.Report(Code::AmbiguousItem, reference->where,
                          Quoted(reference->name) + " is an item of " + Quoted(types[0]->name) + " and of " +
                              Quoted(types[1]->name),
                          "write " + types[0]->name.text + '.' + reference->name.text + " or " +
                              types[1]->name.text + '.' + reference->name.text);
    }
    ambiguous_.clear();
  }

  void Unknown(Code code, const char* what, const Name& name) {
    if (hasUnknownInterface_) return;
    std::string hint;
    // Looking for a near name is what costs; after so many errors nobody reads the hints.
    if (diagnostics_.ErrorCount() < 200) {
      std::vector<std::string> names;
      for (const Scope& scope : scopes_) {
        for (const auto& [visible, declaration] : scope) names.push_back(visible);
      }
      if (entity_) {
        for (const auto& [visible, attribute] : AttributesOf(*entity_)) names.push_back(visible);
      }
      std::sort(names.begin(), names.end());
      for (const auto& [visible, declaration] : schema_->scope) names.push_back(visible);
      for (const auto& [visible, types] : items_) names.push_back(visible);
      hint = DidYouMean(name.text, names);
    }
    diagnostics_.Report(code, name.where, std::string("unknown ") + what + ' ' + Quoted(name), hint);
  }

  const TypeExpression* Resolved(NameReference& reference) {
    const std::string& name = reference.name.text;
    for (std::size_t i = scopes_.size();; --i) {
      const Attribute* attribute = entity_ && i == entityScope_ ? AttributeOf(*entity_, name) : nullptr;
      if (attribute) {
        reference.referent.attribute = attribute;
        DerivesFrom(*attribute, reference.name);
        return TypeByName(*entity_, *attribute, reference.name);
      }
      if (i == 0) break;
      const auto found = scopes_[i - 1].find(name);
      if (found == scopes_[i - 1].end()) continue;
      if (!IsItem(name, *found->second)) return Declared(reference, *found->second);
      return Item(reference.referent, static_cast<const DefinedType&>(*found->second), name);
    }
    const auto found = schema_->scope.find(name);
    if (found != schema_->scope.end()) return Declared(reference, *found->second);
    const auto item = items_.find(name);
    if (item == items_.end()) {
      Unknown(Code::UnknownName, "name", reference.name);
      return nullptr;
    }
    if (item->second.size() == 1) return Item(reference.referent, *item->second.front(), name);
    ambiguous_.push_back(&reference);
    return nullptr;
  }

  const TypeExpression* Declared(NameReference& reference, Declaration& declaration) {
    reference.referent.declaration = &declaration;
    switch (declaration.kind) {
      case DeclarationKind::Variable:
        static_cast<Variable&>(declaration).used = true;
        return static_cast<Variable&>(declaration).valueType;
      case DeclarationKind::Constant:
        return &static_cast<Constant&>(declaration).type;
      case DeclarationKind::Function:
        if (!static_cast<Algorithm&>(declaration).parameters.empty() && !isTarget_ && !declaration.damaged) {
          WrongArguments(reference.name, declaration, static_cast<Algorithm&>(declaration).parameters.size(),
                         0);
        }
        return &static_cast<Algorithm&>(declaration).returnType;
      case DeclarationKind::Entity: {
        const TypeExpression* type = rules_.TypeOf(declaration);
        const bool isPopulation =
            std::find(populations_.begin(), populations_.end(), &declaration) != populations_.end();
        if (isPopulation) return rules_.AggregateOf(TypeKind::Set, *type);
        reference.referent.declaration = nullptr;
        NotAValue(reference.name, declaration);
        break;
      }
      case DeclarationKind::Type:
      case DeclarationKind::Procedure:
      case DeclarationKind::Rule:
      case DeclarationKind::SubtypeConstraint:
        reference.referent.declaration = nullptr;
        NotAValue(reference.name, declaration);
        break;
    }
    return nullptr;
  }

  void NotAValue(const Name& name, const Declaration& declaration) {
    diagnostics_.Report(Code::NotAValue, name.where,
                        Quoted(name) + " is " + KindText(declaration.kind) + " and no value",
                        declaration.name.where, "declared here");
  }

  void WrongArguments(const Name& name, const Declaration& declaration, std::size_t wanted,
                      std::size_t given) {
    diagnostics_.Report(Code::WrongArguments, name.where,
                        Quoted(name) + " takes " + std::to_string(wanted) +
                            (wanted == 1 ? " argument, not " : " arguments, not ") + std::to_string(given),
                        declaration.name.where, "declared here");
  }

  // The item of an enumeration; no change of the referent where there is none of this name.
  const TypeExpression* Item(Referent& referent, const DefinedType& type, const std::string& name) {
    const TypeExpression* enumeration = Underlying(type.underlying);
    if (!enumeration || enumeration->kind != TypeKind::Enumeration) return nullptr;
    const std::vector<TypeItem> items = AllItems(*enumeration);
    const auto found = std::find_if(items.begin(), items.end(),
                                    [&](const TypeItem& item) { return item.name.text == name; });
    if (found == items.end()) return nullptr;
    referent.enumeration = &type;
    referent.item = static_cast<int>(found - items.begin());
    return rules_.TypeOf(const_cast<DefinedType&>(type));
  }

  // The item of an enumeration that extends the type: it is one of the type's, too (8.4.1).
  const TypeExpression* ItemOfExtension(Referent& referent, const DefinedType& type,
                                        const std::string& name) {
    const auto found = items_.find(name);
    if (found == items_.end()) return nullptr;
    for (const DefinedType* extension : found->second) {
      if (IsBasedOn(*extension, type)) return Item(referent, *extension, name);
    }
    return nullptr;
  }

  static bool IsBasedOn(const DefinedType& extension, const DefinedType& type) {
    const DefinedType* at = &extension;
    while (at && at != &type) at = at->underlying.base;
    return at != nullptr;
  }

  // ---- expressions ------------------------------------------------------------------------------

  void Resolve(const ExpressionPtr& expression, const TypeExpression* expected = nullptr) {
    if (expression) Resolve(*expression, expected);
  }

  // `expected` tells apart items that several enumerations have.
  void Resolve(Expression& expression, const TypeExpression* expected = nullptr) {
    expression.type = TypeOf(expression);
    Qualify(expression, expected);
  }

  void Qualify(Expression& expression, const TypeExpression* expected) {
    if (!expected) return;
    if (expression.kind == ExpressionKind::Aggregate) {
      const TypeExpression* type = rules_.Fundamental(expected);
      if (!type || !IsAggregate(type->kind)) return;
      auto& initializer = static_cast<AggregateInitializer&>(expression);
      for (const auto& element : initializer.elements) Qualify(*element.value, type->element.get());
      return;
    }
    if (expression.kind != ExpressionKind::Name) return;
    auto& reference = static_cast<NameReference&>(expression);
    Referent& referent = reference.referent;
    if (referent.declaration || referent.attribute) return;
    const TypeExpression* at = expected;
    while (IsAggregate(at->kind) && at->element) at = at->element.get();
    if (at->kind != TypeKind::Named || !at->declaration || at->declaration->kind != DeclarationKind::Type)
      return;
    const auto& type = static_cast<const DefinedType&>(*at->declaration);
    if (const TypeExpression* found = Item(referent, type, reference.name.text)) reference.type = found;
  }

  // What the values of the expression share; GENERIC where that is open.
  const TypeExpression& FundamentalOf(const Expression& expression) {
    const TypeExpression* type = rules_.Fundamental(expression.type);
    return type ? *type : *SimpleType(TypeKind::Generic);
  }

  const TypeExpression* TypeOf(Expression& expression) {
    switch (expression.kind) {
      case ExpressionKind::Integer:
        return SimpleType(TypeKind::Integer);
      case ExpressionKind::Real:
      case ExpressionKind::BuiltinConstant:
        return SimpleType(TypeKind::Real);
      case ExpressionKind::String:
        return SimpleType(TypeKind::String);
      case ExpressionKind::Binary:
        return SimpleType(TypeKind::Binary);
      case ExpressionKind::Logical:
        return SimpleType(static_cast<LogicalLiteral&>(expression).value == LogicalValue::Unknown
                              ? TypeKind::Logical
                              : TypeKind::Boolean);
      case ExpressionKind::Indeterminate:
        return nullptr;
      case ExpressionKind::Self:
        return self_;
      case ExpressionKind::Name:
        return Resolved(static_cast<NameReference&>(expression));
      case ExpressionKind::Call:
        return CallType(static_cast<Call&>(expression));
      case ExpressionKind::BuiltinCall:
        return BuiltinType(static_cast<BuiltinCall&>(expression));
      case ExpressionKind::Member:
        return MemberType(static_cast<Member&>(expression));
      case ExpressionKind::Group: {
        auto& group = static_cast<Group&>(expression);
        Resolve(group.operand);
        Declaration* found = FindDeclaration(group.name.text);
        if (!found) Unknown(Code::UnknownEntity, "entity", group.name);
        if (!found || found->kind != DeclarationKind::Entity) {
          if (found) NotAnEntity(group.name, *found);
          return nullptr;
        }
        group.entity = static_cast<Entity*>(found);
        return rules_.TypeOf(*found);
      }
      case ExpressionKind::Index: {
        auto& index = static_cast<Index&>(expression);
        Resolve(index.operand);
        Resolve(index.first);
        Resolve(index.last);
        const TypeExpression* aggregate = rules_.AggregateIn(index.operand->type);
        if (aggregate && !MayBe(*index.operand, kStringValue | kBinaryValue)) return aggregate->element.get();
        const TypeExpression& type = FundamentalOf(*index.operand);
        const bool isText = type.kind == TypeKind::String || type.kind == TypeKind::Binary;
        return isText ? SimpleType(type.kind) : nullptr;
      }
      case ExpressionKind::Unary: {
        auto& unary = static_cast<Unary&>(expression);
        Resolve(unary.operand);
        return unary.op == Operator::Not ? SimpleType(TypeKind::Logical) : NumericType(*unary.operand);
      }
      case ExpressionKind::Operation:
        return OperationType(static_cast<Operation&>(expression));
      case ExpressionKind::Interval: {
        auto& interval = static_cast<Interval&>(expression);
        Resolve(interval.low);
        Resolve(interval.item);
        Resolve(interval.high);
        return SimpleType(TypeKind::Logical);
      }
      case ExpressionKind::Query: {
        auto& query = static_cast<Query&>(expression);
        Resolve(query.source);
        const TypeExpression* source = rules_.AggregateIn(query.source->type);
        if (source) query.variable->valueType = source->element.get();
        WithVariable(*query.variable, [&] { Resolve(query.condition); });
        // QUERY (x <* source | TRUE) makes a copy.
        if (!query.variable->used && query.condition->kind != ExpressionKind::Logical) {
          diagnostics_.Report(Code::UnusedQueryVariable, query.variable->name.where,
                              "the condition of the QUERY does not look at " + Quoted(query.variable->name));
        }
        if (source) return source;
        return MayBe(*query.source, kAggregateValue) ? query.source->type : nullptr;
      }
      case ExpressionKind::Aggregate:
        return InitializerType(static_cast<AggregateInitializer&>(expression));
    }
    return nullptr;
  }

  bool MayBe(const Expression& expression, unsigned classes) {
    return (rules_.ClassesOf(expression.type) & classes) != 0;
  }

  // The type of a number with a sign: as it was, and a NUMBER where that is open.
  const TypeExpression* NumericType(const Expression& operand) {
    const TypeExpression& type = FundamentalOf(operand);
    if (!MayBe(operand, kNumericValue)) return nullptr;
    if (!IsNumeric(type.kind)) return SimpleType(TypeKind::Number);
    return TypeRules::IsSelect(operand.type) ? &type : operand.type;
  }

  // The type of the elements where there are none.
  static const TypeExpression& NoElement() {
    static const TypeExpression type = [] {
      TypeExpression none;
      none.kind = TypeKind::Generic;
      return none;
    }();
    return type;
  }

  // An AGGREGATE of what the elements have in common; of GENERIC where that is nothing.
  const TypeExpression* InitializerType(const AggregateInitializer& initializer) {
    const TypeExpression* common = nullptr;
    bool isFirst = true;
    for (const AggregateInitializer::Element& element : initializer.elements) {
      Resolve(element.value);
      Resolve(element.repetition);
      if (element.value->kind == ExpressionKind::Indeterminate) continue;
      common = isFirst ? element.value->type : rules_.Common(common, element.value->type);
      isFirst = false;
    }
    if (isFirst) return rules_.AggregateOf(TypeKind::Aggregate, NoElement());
    return rules_.AggregateOf(TypeKind::Aggregate, common ? *common : *SimpleType(TypeKind::Generic));
  }

  template <class Inner>
  void WithVariable(Variable& variable, Inner inner) {
    scopes_.emplace_back();
    scopes_.back().emplace(variable.name.text, &variable);
    Hidden(variable);
    inner();
    scopes_.pop_back();
  }

  void NotAnEntity(const Name& name, const Declaration& found) {
    diagnostics_.Report(Code::NotAnEntity, name.where,
                        Quoted(name) + " is " + KindText(found.kind) + ", expected the name of an entity",
                        found.name.where, "declared here");
  }

  const TypeExpression* CallType(Call& call) {
    for (const ExpressionPtr& argument : call.arguments) Resolve(argument);
    Declaration* found = FindDeclaration(call.name.text);
    if (!found) {
      Unknown(Code::UnknownName, "function or entity", call.name);
      return nullptr;
    }
    if (found->kind == DeclarationKind::Entity) {
      call.declaration = found;
      const auto& entity = static_cast<const Entity&>(*found);
      const auto own =
          static_cast<std::size_t>(std::count_if(entity.attributes.begin(), entity.attributes.end(), IsSlot));
      if (call.arguments.size() != own && !found->damaged) {
        WrongArguments(call.name, *found, own, call.arguments.size());
      }
      std::size_t next = 0;
      for (const Attribute& attribute : entity.attributes) {
        if (!IsSlot(attribute) || next == call.arguments.size()) continue;
        Qualify(*call.arguments[next++], attribute.type.get());
      }
      return rules_.TypeOf(*found);
    }
    if (found->kind != DeclarationKind::Function) {
      NotAValue(call.name, *found);
      return nullptr;
    }
    call.declaration = found;
    const auto& function = static_cast<const Algorithm&>(*found);
    if (call.arguments.size() != function.parameters.size() && !found->damaged) {
      WrongArguments(call.name, *found, function.parameters.size(), call.arguments.size());
    }
    Labels labels;
    for (std::size_t i = 0; i < std::min(call.arguments.size(), function.parameters.size()); ++i) {
      const TypeExpression* parameter = function.parameters[i]->type.get();
      Qualify(*call.arguments[i], parameter);
      if (parameter) Bind(labels, *parameter, call.arguments[i]->type);
    }
    return Bound(labels, function.returnType);
  }

  // What the type labels of a function stand for in a call (9.5.3.4).
  using Labels = std::map<std::string, const TypeExpression*>;

  void Bind(Labels& labels, const TypeExpression& parameter, const TypeExpression* argument) {
    const TypeExpression* at = &parameter;
    while (argument && at) {
      if (!at->label.text.empty()) labels.emplace(at->label.text, argument);
      if (!IsAggregate(at->kind)) break;
      const TypeExpression* type = rules_.Fundamental(argument);
      argument = type && IsAggregate(type->kind) ? type->element.get() : nullptr;
      at = at->element.get();
    }
  }

  const TypeExpression* Bound(const Labels& labels, const TypeExpression& type) {
    if (labels.empty()) return &type;
    std::vector<const TypeExpression*> levels{&type};
    while (IsAggregate(levels.back()->kind)) levels.push_back(levels.back()->element.get());
    const TypeExpression* bound = levels.back();
    for (std::size_t i = levels.size(); i-- > 0;) {
      const TypeExpression& level = *levels[i];
      const auto known = labels.find(level.label.text);
      const TypeExpression* actual = known == labels.end() ? nullptr : known->second;
      if (!IsAggregate(level.kind)) {
        if (actual) bound = actual;
        continue;
      }
      const TypeExpression* aggregate = actual ? rules_.Fundamental(actual) : nullptr;
      const TypeKind kind = aggregate && IsAggregate(aggregate->kind) ? aggregate->kind : level.kind;
      const bool isSame = kind == level.kind && bound == level.element.get();
      bound = isSame ? &level : rules_.AggregateOf(kind, *bound);
    }
    return bound;
  }

  // USEDIN (x, 'SCHEMA.ENTITY.ATTRIBUTE') gives instances of the entity.
  const TypeExpression* EntityOfRole(const BuiltinCall& call) {
    const TypeExpression* const open = SimpleType(TypeKind::GenericEntity);
    if (call.arguments.size() != 2) return open;
    const std::string role = LowerCase(ConstantText(*call.arguments[1]).value_or(""));
    if (role.empty()) return open;  // every role, or one that is not known here
    const std::size_t first = role.find('.');
    const std::size_t last = role.rfind('.');
    if (first == last) {
      diagnostics_.Report(Code::UnknownRole, call.arguments[1]->where,
                          "a role has the form 'SCHEMA.ENTITY.ATTRIBUTE'", "USEDIN gives an empty bag here");
      return open;
    }
    const auto found = schema_->scope.find(role.substr(first + 1, last - first - 1));
    const bool isEntity = found != schema_->scope.end() && found->second->kind == DeclarationKind::Entity;
    if (!isEntity) return open;
    const std::string attribute = role.substr(last + 1);
    const auto& entity = static_cast<const Entity&>(*found->second);
    if (!AttributeOf(entity, attribute) && !entity.damaged) {
      diagnostics_.Report(Code::UnknownRole, call.arguments[1]->where,
                          "entity " + Quoted(entity.name) + " has no attribute '" + attribute + "'",
                          "USEDIN gives an empty bag here");
    }
    return rules_.TypeOf(*found->second);
  }

  const TypeExpression* BuiltinType(BuiltinCall& call) {
    for (const ExpressionPtr& argument : call.arguments) Resolve(argument);
    const auto firstType = [&] { return call.arguments.empty() ? nullptr : call.arguments.front()->type; };
    switch (call.builtin) {
      case Builtin::Abs:
        return call.arguments.empty() ? nullptr : NumericType(*call.arguments.front());
      case Builtin::Nvl:
        if (call.arguments.size() != 2) return firstType();
        Qualify(*call.arguments[1], firstType());
        return firstType() ? firstType() : call.arguments[1]->type;
      case Builtin::BLength:
      case Builtin::HiBound:
      case Builtin::HiIndex:
      case Builtin::Length:
      case Builtin::LoBound:
      case Builtin::LoIndex:
      case Builtin::SizeOf:
        return SimpleType(TypeKind::Integer);
      case Builtin::Exists:
        return SimpleType(TypeKind::Boolean);
      case Builtin::Odd:
      case Builtin::ValueIn:
      case Builtin::ValueUnique:
        return SimpleType(TypeKind::Logical);
      case Builtin::Format:
        return SimpleType(TypeKind::String);
      case Builtin::RolesOf:
      case Builtin::TypeOf:
        return rules_.AggregateOf(TypeKind::Set, *SimpleType(TypeKind::String));
      case Builtin::UsedIn:
        return rules_.AggregateOf(TypeKind::Bag, *EntityOfRole(call));
      case Builtin::Value:
        return SimpleType(TypeKind::Number);
      default:
        return SimpleType(TypeKind::Real);
    }
  }

  const TypeExpression* OperationType(Operation& operation) {
    Resolve(operation.left);
    Resolve(operation.right, operation.left->type);
    Qualify(*operation.left, operation.right->type);
    const TypeExpression& leftType = FundamentalOf(*operation.left);
    const TypeExpression& rightType = FundamentalOf(*operation.right);
    const TypeKind left = leftType.kind;
    const TypeKind right = rightType.kind;
    if ((operation.op == Operator::Equal || operation.op == Operator::NotEqual) && left == TypeKind::Named &&
        right == TypeKind::Named) {
      const bool isEqual = operation.op == Operator::Equal;
      diagnostics_.Report(
          Code::InstanceComparison, operation.where,
          std::string("instances compared by their values with '") + (isEqual ? "=" : "<>") + "'",
          std::string("whether they are the same is asked with '") + (isEqual ? ":=:" : ":<>:") + "'");
    }
    switch (operation.op) {
      case Operator::Divide:
        return SimpleType(TypeKind::Real);
      case Operator::IntegerDivide:
      case Operator::Modulo:
        return SimpleType(TypeKind::Integer);
      case Operator::Add:
      case Operator::Subtract:
      case Operator::Multiply:
      case Operator::Power:
        if (IsNumeric(left) && IsNumeric(right)) {
          if (left == TypeKind::Integer && right == TypeKind::Integer) return SimpleType(TypeKind::Integer);
          const bool isNumber = left == TypeKind::Number || right == TypeKind::Number;
          return SimpleType(isNumber ? TypeKind::Number : TypeKind::Real);
        }
        if (left == right && (left == TypeKind::String || left == TypeKind::Binary)) return SimpleType(left);
        if (IsAggregate(left) || IsAggregate(right)) return AggregateResult(operation, leftType, rightType);
        return IsNumber(operation) ? SimpleType(TypeKind::Number) : nullptr;
      case Operator::Combine:
        return SimpleType(TypeKind::GenericEntity);
      default:
        return SimpleType(TypeKind::Logical);
    }
  }

  // Whether an operation of which an operand is open can only have a number as its result.
  bool IsNumber(const Operation& operation) {
    const bool areNumbers = MayBe(*operation.left, kNumericValue) && MayBe(*operation.right, kNumericValue);
    const bool isLeft = rules_.ClassesOf(operation.left->type) == kNumericValue;
    const bool isRight = rules_.ClassesOf(operation.right->type) == kNumericValue;
    switch (operation.op) {
      case Operator::Power:
        return areNumbers;
      case Operator::Multiply:
        return areNumbers && (isLeft || isRight);
      default:
        return areNumbers && isLeft && operation.op == Operator::Subtract;
    }
  }

  // Of union, intersection and difference (12.6): the kind of the left operand, an initializer excepted; with
  // elements of both operands in a union.
  const TypeExpression* AggregateResult(const Operation& operation, const TypeExpression& left,
                                        const TypeExpression& right) {
    const auto elementOf = [](const TypeExpression& type) {
      return IsAggregate(type.kind) ? type.element.get() : &type;
    };
    const TypeExpression* const nothing = &NoElement();
    if (!IsAggregate(left.kind) && operation.op != Operator::Add) return nullptr;
    const bool isLeftKind =
        IsAggregate(left.kind) && (left.kind != TypeKind::Aggregate || !IsAggregate(right.kind));
    TypeKind kind = isLeftKind ? left.kind : right.kind;
    if (operation.op == Operator::Multiply && right.kind == TypeKind::Set) kind = TypeKind::Set;
    const TypeExpression* element = elementOf(left);
    if (operation.op == Operator::Add || element == nothing) {
      const TypeExpression* other = elementOf(right);
      if (element == nothing) {
        element = other;
      } else if (other != nothing) {
        element = rules_.Common(IsAggregate(left.kind) ? element : operation.left->type,
                                IsAggregate(right.kind) ? other : operation.right->type);
      }
    }
    return rules_.AggregateOf(kind, element ? *element : *SimpleType(TypeKind::Generic));
  }

  const TypeExpression* MemberType(Member& member) {
    if (member.operand->kind == ExpressionKind::Name) {
      auto& reference = static_cast<NameReference&>(*member.operand);
      const bool isAttribute = entity_ && AttributesOf(*entity_).count(reference.name.text) > 0;
      Declaration* found =
          isAttribute && scopes_.size() == entityScope_ ? nullptr : FindDeclaration(reference.name.text);
      if (found && found->kind == DeclarationKind::Type) return QualifiedItem(member, reference, *found);
    }
    Resolve(member.operand);
    const TypeExpression* type = member.operand->type ? Underlying(*member.operand->type) : nullptr;
    if (IsOpen(type)) return nullptr;
    if (type->kind == TypeKind::Named) {
      const auto& entity = static_cast<const Entity&>(*type->declaration);
      if (const Attribute* attribute = AttributeOf(entity, member.name.text)) {
        member.referent.attribute = attribute;
        if (member.operand->kind == ExpressionKind::Self) DerivesFrom(*attribute, member.name);
        return TypeByName(entity, *attribute, member.name);
      }
      const std::vector<const Attribute*> below = AttributesBelow(entity, member.name.text);
      if (!below.empty() || entity.damaged) return OneOf(member, below);
      NoAttribute("entity " + Quoted(entity.name), entity, member.name);
      return nullptr;
    }
    if (type->kind == TypeKind::Select) return SelectMember(member, *type);
    NoInstance(member.name, *type);
    return nullptr;
  }

  const TypeExpression* QualifiedItem(Member& member, NameReference& reference, Declaration& found) {
    reference.referent.declaration = &found;
    const auto& type = static_cast<const DefinedType&>(found);
    if (const TypeExpression* item = Item(member.referent, type, member.name.text)) return item;
    if (const TypeExpression* item = ItemOfExtension(member.referent, type, member.name.text)) return item;
    const TypeExpression* enumeration = Underlying(type.underlying);
    if (!enumeration || enumeration->kind != TypeKind::Enumeration) {
      if (enumeration) NotAValue(reference.name, found);
      return nullptr;
    }
    std::vector<std::string> names;
    for (const TypeItem& item : AllItems(*enumeration)) names.push_back(item.name.text);
    diagnostics_.Report(Code::UnknownName, member.name.where,
                        "enumeration " + Quoted(found.name) + " has no item " + Quoted(member.name),
                        DidYouMean(member.name.text, names));
    return nullptr;
  }

  const Attribute* AttributeOf(const Entity& entity, const std::string& name) {
    const Attributes& attributes = AttributesOf(entity);
    const auto found = attributes.find(name);
    return found == attributes.end() ? nullptr : found->second;
  }

  // The attributes of this name that an instance of the entity has where it is also one of a subtype.
  std::vector<const Attribute*> AttributesBelow(const Entity& entity, const std::string& name) {
    std::vector<const Attribute*> below;
    const auto found = declared_.find(name);
    if (found == declared_.end()) return below;
    for (const Attribute* attribute : found->second) {
      if (rules_.IsKindOf(*attribute->owner, entity)) below.push_back(attribute);
    }
    return below;
  }

  // The type that all the attributes have which the name may stand for, each of another entity.
  const TypeExpression* OneOf(Member& member, const std::vector<const Attribute*>& attributes) {
    if (attributes.empty()) return nullptr;
    const TypeExpression* type = AttributeType(*attributes.front());
    for (const Attribute* attribute : attributes) type = rules_.Common(type, AttributeType(*attribute));
    if (attributes.size() == 1) member.referent.attribute = attributes.front();
    return type;
  }

  void NoAttribute(const std::string& what, const Entity& entity, const Name& name) {
    std::vector<std::string> names;
    for (const auto& [visible, attribute] : AttributesOf(entity)) names.push_back(visible);
    std::sort(names.begin(), names.end());
    diagnostics_.Report(Code::UnknownAttribute, name.where, what + " has no attribute " + Quoted(name),
                        DidYouMean(name.text, names));
  }

  // The one attribute that the entities of the select have under the name, or the type that they agree on.
  const TypeExpression* SelectMember(Member& member, const TypeExpression& select) {
    const TypeRules::Selection& selection = rules_.SelectionOf(select);
    std::vector<const Attribute*> found;
    const auto add = [&](const Attribute* attribute) {
      if (std::find(found.begin(), found.end(), attribute) == found.end()) found.push_back(attribute);
    };
    bool isOpen = selection.isOpen || selection.types.empty();
    for (const TypeExpression* type : selection.types) {
      isOpen = isOpen || type->kind == TypeKind::GenericEntity || type->kind == TypeKind::Generic;
      if (type->kind != TypeKind::Named) continue;
      const auto& entity = static_cast<const Entity&>(*type->declaration);
      isOpen = isOpen || entity.damaged;
      if (const Attribute* attribute = AttributeOf(entity, member.name.text)) add(attribute);
    }
    for (std::size_t i = 0; found.empty() && i < selection.types.size(); ++i) {
      if (selection.types[i]->kind != TypeKind::Named) continue;
      const auto& entity = static_cast<const Entity&>(*selection.types[i]->declaration);
      for (const Attribute* attribute : AttributesBelow(entity, member.name.text)) add(attribute);
    }
    if (!found.empty() || isOpen) return OneOf(member, found);
    if ((rules_.ClassesOf(&select) & kInstanceValue) == 0) {
      NoInstance(member.name, *member.operand->type);
    } else {
      NeverFound(member, "no entity of select " + TypeText(*member.operand->type) + " has an attribute " +
                             Quoted(member.name));
    }
    return nullptr;
  }

  // Says so once for each attribute in a declaration.
  void NeverFound(const Member& member, const std::string& text) {
    if (!neverFound_.insert(text).second) return;
    diagnostics_.Report(Code::AlwaysIndeterminate, member.name.where, text, "this gives '?' always");
  }

  void NoInstance(const Name& member, const TypeExpression& type) {
    diagnostics_.Report(Code::NotAnInstance, member.where,
                        "the operand of '." + member.text + "' is no instance but " + TypeText(type));
  }

  // ---- statements -------------------------------------------------------------------------------

  void Statements(const std::vector<StatementPtr>& statements) {
    const Statement* leaving = nullptr;
    for (const StatementPtr& statement : statements) {
      if (leaving && statement->kind != StatementKind::Null) {
        diagnostics_.Report(Code::Unreachable, statement->where, "this statement is never reached",
                            leaving->where, "what stands before it leaves here");
        leaving = nullptr;
      }
      Any(*statement);
      if (Leaves(*statement)) leaving = statement.get();
    }
  }

  void Any(Statement& statement) {
    switch (statement.kind) {
      case StatementKind::Alias: {
        auto& alias = static_cast<AliasStatement&>(statement);
        Resolve(alias.source);
        if (!IsPopulation(*alias.source)) CheckTarget(*alias.source, "have an ALIAS");
        alias.variable->valueType = alias.source->type;
        WithVariable(*alias.variable, [&] { Statements(alias.body); });
        break;
      }
      case StatementKind::Assignment: {
        auto& assignment = static_cast<AssignmentStatement&>(statement);
        isTarget_ = assignment.target->kind == ExpressionKind::Name;
        Resolve(assignment.target);
        isTarget_ = false;
        CheckTarget(*assignment.target, "are assigned to");
        CheckCounter(*assignment.target);
        Resolve(assignment.value, assignment.target->type);
        break;
      }
      case StatementKind::Case: {
        auto& choice = static_cast<CaseStatement&>(statement);
        Resolve(choice.selector);
        for (const CaseStatement::Action& action : choice.actions) {
          for (const ExpressionPtr& label : action.labels) Resolve(label, choice.selector->type);
          Any(*action.statement);
        }
        if (choice.otherwise) Any(*choice.otherwise);
        break;
      }
      case StatementKind::Compound:
        Statements(static_cast<CompoundStatement&>(statement).body);
        break;
      case StatementKind::If: {
        auto& branch = static_cast<IfStatement&>(statement);
        Resolve(branch.condition);
        Statements(branch.thenBody);
        Statements(branch.elseBody);
        break;
      }
      case StatementKind::ProcedureCall:
        ProcedureCall(static_cast<ProcedureCallStatement&>(statement));
        break;
      case StatementKind::Repeat: {
        auto& repeat = static_cast<RepeatStatement&>(statement);
        Resolve(repeat.first);
        Resolve(repeat.last);
        Resolve(repeat.increment);
        const auto inner = [&] {
          Resolve(repeat.whileCondition);
          Resolve(repeat.untilCondition);
          Statements(repeat.body);
        };
        if (!repeat.variable) {
          inner();
          break;
        }
        repeat.variable->valueType = SimpleType(TypeKind::Number);
        WithVariable(*repeat.variable, inner);
        break;
      }
      case StatementKind::Return:
        Resolve(static_cast<ReturnStatement&>(statement).value,
                algorithm_->kind == DeclarationKind::Function ? &algorithm_->returnType : nullptr);
        break;
      case StatementKind::Escape:
      case StatementKind::Null:
      case StatementKind::Skip:
        break;
    }
  }

  // Only variables are assigned to and have an ALIAS.
  void CheckTarget(const Expression& target, const char* use) {
    const auto& reference = static_cast<const NameReference&>(RootOf(target));
    const Declaration* found = reference.referent.declaration;
    const bool isItem = reference.referent.enumeration != nullptr;
    if (!isItem && (!found || found->kind == DeclarationKind::Variable)) return;
    diagnostics_.Report(Code::NotAssignable, reference.where,
                        Quoted(reference.name) + " is " +
                            (isItem ? "an enumeration item" : KindText(found->kind)) +
                            ": only variables and parameters " + use);
  }

  // What a rule calls by the name of an entity.
  static bool IsPopulation(const Expression& expression) {
    const auto& reference = static_cast<const NameReference&>(RootOf(expression));
    const Declaration* found = reference.referent.declaration;
    return found && found->kind == DeclarationKind::Entity;
  }

  void CheckCounter(const Expression& target) {
    if (target.kind != ExpressionKind::Name) return;
    const auto& reference = static_cast<const NameReference&>(target);
    const Declaration* found = reference.referent.declaration;
    if (!found || found->kind != DeclarationKind::Variable) return;
    if (static_cast<const Variable*>(found)->role != VariableRole::Repeat) return;
    diagnostics_.Report(Code::RepeatVariableChanged, reference.where,
                        "the REPEAT that counts with " + Quoted(reference.name) + " changes it",
                        found->name.where, "declared here");
  }

  void ProcedureCall(ProcedureCallStatement& call) {
    for (const ExpressionPtr& argument : call.arguments) Resolve(argument);
    if (call.builtin != Builtin::kCount) return;
    Declaration* found = FindDeclaration(call.name.text);
    if (!found) {
      Unknown(Code::UnknownName, "procedure", call.name);
      return;
    }
    if (found->kind != DeclarationKind::Procedure) {
      diagnostics_.Report(Code::NotAProcedure, call.name.where,
                          Quoted(call.name) + " is " + KindText(found->kind) + ", expected a procedure",
                          found->name.where, "declared here");
      return;
    }
    call.declaration = found;
    const auto& procedure = static_cast<const Algorithm&>(*found);
    if (call.arguments.size() != procedure.parameters.size() && !found->damaged) {
      WrongArguments(call.name, *found, procedure.parameters.size(), call.arguments.size());
    }
  }

  Model& model_;
  TypeRules& rules_;
  Diagnostics& diagnostics_;
  SchemaDeclaration* schema_ = nullptr;
  bool hasUnknownInterface_ = false;
  std::vector<Scope> scopes_;
  Entity* entity_ = nullptr;              // whose attributes are visible by name
  std::size_t entityScope_ = 0;           // behind so many of the scopes
  const TypeExpression* self_ = nullptr;  // of SELF
  const Algorithm* algorithm_ = nullptr;
  std::vector<Entity*> populations_;
  const TypeExpression* lastType_ = nullptr;
  std::vector<const NameReference*> ambiguous_;
  std::set<std::string> neverFound_;                              // what has been said in the declaration
  bool isTarget_ = false;                                         // the name is assigned to
  std::map<std::string, std::vector<const DefinedType*>> items_;  // by name, the enumerations that have it
  std::unordered_map<const Entity*, Attributes> attributes_;
  // Of an entity and an attribute that it inherits: another one of this name that it inherits, too.
  std::map<std::pair<const Entity*, const Attribute*>, const Attribute*> rivals_;
  const Attribute* deriving_ = nullptr;                                      // whose expression is looked at
  std::unordered_map<std::string, std::vector<const Attribute*>> declared_;  // by name, of all entities
};

}  // namespace

void ResolveExpressions(Model& model, TypeRules& rules, Diagnostics& diagnostics) {
  ExpressionResolver(model, rules, diagnostics).Run();
}

}  // namespace VELMAR::Express
