#include "ExpressionResolver.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

namespace VELMAR::Express {
namespace {

std::string Quoted(const Name& name) { return "'" + name.text + "'"; }

const TypeExpression* Simple(TypeKind kind) {
  static const std::vector<TypeExpression> types = [] {
    std::vector<TypeExpression> all(static_cast<std::size_t>(TypeKind::Named));
    for (std::size_t i = 0; i < all.size(); ++i) all[i].kind = static_cast<TypeKind>(i);
    return all;
  }();
  return &types[static_cast<std::size_t>(kind)];
}

bool IsOpen(const TypeExpression* type) {
  return !type || type->kind == TypeKind::Generic || type->kind == TypeKind::GenericEntity;
}

bool IsNumeric(TypeKind kind) {
  return kind == TypeKind::Number || kind == TypeKind::Real || kind == TypeKind::Integer;
}

const char* KindText(DeclarationKind kind) {
  switch (kind) {
    case DeclarationKind::Type:
      return "a type";
    case DeclarationKind::Entity:
      return "an entity";
    case DeclarationKind::Constant:
      return "a constant";
    case DeclarationKind::Function:
      return "a function";
    case DeclarationKind::Procedure:
      return "a procedure";
    case DeclarationKind::Rule:
      return "a rule";
    case DeclarationKind::SubtypeConstraint:
      return "a subtype constraint";
    case DeclarationKind::Variable:
      return "a variable";
  }
  return "";
}

class ExpressionResolver {
 public:
  ExpressionResolver(Model& model, Diagnostics& diagnostics) : model_(model), diagnostics_(diagnostics) {}

  void Run() {
    for (const auto& schema : model_.schemas) {
      schema_ = schema.get();
      hasUnknownInterface_ = std::any_of(schema->interfaces.begin(), schema->interfaces.end(),
                                         [](const Interface& interface) { return !interface.schema; });
      items_.clear();
      for (const auto& [name, declaration] : schema->scope) AddItems(*declaration);
      for (const auto& declaration : schema->declarations) Any(*declaration, false);
      AmbiguousItems();
    }
  }

 private:
  // The names that an algorithm, a QUERY, an ALIAS or a REPEAT adds.
  using Scope = std::unordered_map<std::string, Declaration*>;
  using Attributes = std::unordered_map<std::string, const Attribute*>;

  // ---- declarations -----------------------------------------------------------------------------

  void AddItems(const Declaration& declaration) {
    if (declaration.kind != DeclarationKind::Type) return;
    const auto& type = static_cast<const DefinedType&>(declaration);
    if (type.underlying.kind != TypeKind::Enumeration) return;
    for (const TypeItem& item : type.underlying.items) items_[item.name.text].push_back(&type);
  }

  void Any(Declaration& declaration, bool isLocal) {
    if (declaration.damaged) return;
    switch (declaration.kind) {
      case DeclarationKind::Type: {
        auto& type = static_cast<DefinedType&>(declaration);
        self_ = NamedType(&type);
        if (isLocal) TypeNames(type.underlying);
        Bounds(type.underlying);
        Rules(type.where);
        self_ = nullptr;
        break;
      }
      case DeclarationKind::Entity:
        return EntityDecl(static_cast<Entity&>(declaration), isLocal);
      case DeclarationKind::Constant: {
        auto& constant = static_cast<Constant&>(declaration);
        if (isLocal) TypeNames(constant.type);
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

  void EntityDecl(Entity& entity, bool isLocal) {
    entity_ = &entity;
    self_ = NamedType(&entity);
    const TypeExpression* last = nullptr;
    for (Attribute& attribute : entity.attributes) {
      if (attribute.type && attribute.type.get() != last) {
        if (isLocal) TypeNames(*attribute.type);
        Bounds(*attribute.type);
      }
      last = attribute.type.get();
      Resolve(attribute.expression, attribute.type.get());
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
    for (const auto& parameter : algorithm.parameters) Declare(*parameter);
    for (const auto& local : algorithm.locals) Declare(*local);
    for (const Name& name : algorithm.populations) {
      Declaration* found = FindDeclaration(name.text);
      if (found && found->kind == DeclarationKind::Entity) {
        algorithm.populationEntities.push_back(static_cast<Entity*>(found));
      } else if (!found) {
        Unknown(Code::UnknownEntity, "entity", name);
      } else {
        diagnostics_.Report(
            Code::NotAnEntity, name.where,
            Quoted(name) + " is " + KindText(found->kind) + ", expected the name of an entity",
            found->name.where, "declared here");
      }
    }
    const std::vector<Entity*> outerPopulations = std::exchange(populations_, algorithm.populationEntities);
    if (algorithm.kind == DeclarationKind::Function) Type(algorithm.returnType);
    for (const auto& parameter : algorithm.parameters) VariableType(*parameter);
    for (const auto& declaration : algorithm.declarations) Any(*declaration, true);
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
    if (isNew) return;
    diagnostics_.Report(Code::DuplicateName, declaration.name.where,
                        "name " + Quoted(declaration.name) + " is declared twice", first->second->name.where,
                        "first declared here");
  }

  // Names declared together share type and initial value, which are then resolved once.
  void VariableType(Variable& variable) {
    if (variable.type.get() != lastType_) {
      Type(*variable.type);
      if (variable.initial) Resolve(*variable.initial, variable.type.get());
    }
    lastType_ = variable.type.get();
    variable.valueType = variable.type.get();
  }

  // ---- types ------------------------------------------------------------------------------------

  void Type(TypeExpression& type) {
    TypeNames(type);
    Bounds(type);
  }

  // The names in a type within an algorithm, where the names of the algorithm are visible, too.
  void TypeNames(TypeExpression& type) {
    for (TypeExpression* at = &type; at; at = at->element.get()) {
      if (at->kind == TypeKind::Named) at->declaration = TypeNamed(at->name);
      if (at->kind != TypeKind::Select) continue;
      for (TypeItem& item : at->items) item.declaration = TypeNamed(item.name);
    }
  }

  Declaration* TypeNamed(const Name& name) {
    Declaration* found = FindDeclaration(name.text);
    if (!found) {
      Unknown(Code::UnknownType, "type", name);
      return nullptr;
    }
    if (found->kind == DeclarationKind::Type || found->kind == DeclarationKind::Entity) return found;
    diagnostics_.Report(Code::NotAType, name.where,
                        Quoted(name) + " is " + KindText(found->kind) + ", expected the name of a type",
                        found->name.where, "declared here");
    return nullptr;
  }

  void Bounds(const TypeExpression& type) {
    for (const TypeExpression* at = &type; at; at = at->element.get()) {
      Resolve(at->lower);
      Resolve(at->upper);
      Resolve(at->width);
    }
  }

  const TypeExpression* NamedType(Declaration* declaration) {
    const TypeExpression*& known = namedTypes_[declaration];
    if (!known) {
      TypeExpression& type = model_.derivedTypes.emplace_back();
      type.name = declaration->name;
      type.declaration = declaration;
      known = &type;
    }
    return known;
  }

  const TypeExpression* AggregateOf(TypeKind kind, const TypeExpression& element) {
    const TypeExpression*& known = aggregates_[{kind, &element}];
    if (!known) {
      TypeExpression& type = model_.derivedTypes.emplace_back();
      type.kind = kind;
      type.element = std::make_shared<TypeExpression>();
      type.element->kind = element.kind;
      type.element->name = element.name;
      type.element->declaration = element.declaration;
      known = &type;
    }
    return known;
  }

  const TypeExpression* AttributeType(const Attribute& attribute) {
    if (attribute.kind != AttributeKind::Inverse) return attribute.type.get();
    if (!attribute.inverseEntityDeclaration) return nullptr;
    const TypeExpression* entity = NamedType(attribute.inverseEntityDeclaration);
    return attribute.inverseKind == TypeKind::Named ? entity : AggregateOf(attribute.inverseKind, *entity);
  }

  // ---- names ------------------------------------------------------------------------------------

  Declaration* FindDeclaration(const std::string& name) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
      const auto found = scope->find(name);
      if (found != scope->end()) return found->second;
    }
    const auto found = schema_->scope.find(name);
    return found == schema_->scope.end() ? nullptr : found->second;
  }

  // All attributes of the entity by name, redeclared ones as the entity has them.
  const Attributes& AttributesOf(const Entity& entity) {
    const auto [known, isNew] = attributes_.try_emplace(&entity);
    if (isNew) {
      const auto add = [&attributes = known->second](const Entity& owner) {
        for (const Attribute& attribute : owner.attributes) attributes[attribute.name.text] = &attribute;
      };
      for (const Entity* ancestor : AncestorsOf(entity)) add(*ancestor);
      add(entity);
    }
    return known->second;
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
      const std::string nearest = Nearest(name.text, names);
      if (!nearest.empty()) hint = "did you mean '" + nearest + "'?";
    }
    diagnostics_.Report(code, name.where, std::string("unknown ") + what + ' ' + Quoted(name), hint);
  }

  const TypeExpression* Resolved(NameReference& reference) {
    const std::string& name = reference.name.text;
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
      const auto found = scope->find(name);
      if (found != scope->end()) return Declared(reference, *found->second);
    }
    if (entity_) {
      const Attributes& attributes = AttributesOf(*entity_);
      const auto found = attributes.find(name);
      if (found != attributes.end()) {
        reference.referent.attribute = found->second;
        return AttributeType(*found->second);
      }
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
        const TypeExpression* type = NamedType(&declaration);
        const bool isPopulation =
            std::find(populations_.begin(), populations_.end(), &declaration) != populations_.end();
        return isPopulation ? AggregateOf(TypeKind::Set, *type) : nullptr;
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
    return NamedType(const_cast<DefinedType*>(&type));
  }

  // ---- expressions ------------------------------------------------------------------------------

  void Resolve(const ExpressionPtr& expression, const TypeExpression* expected = nullptr) {
    if (expression) Resolve(*expression, expected);
  }

  // `expected` tells apart items that several enumerations have.
  void Resolve(Expression& expression, const TypeExpression* expected = nullptr) {
    expression.type = TypeOf(expression);
    if (expression.kind == ExpressionKind::Name) Qualify(static_cast<NameReference&>(expression), expected);
  }

  void Qualify(NameReference& reference, const TypeExpression* expected) {
    Referent& referent = reference.referent;
    if (!expected || referent.declaration || referent.attribute) return;
    const TypeExpression* at = expected;
    while (IsAggregate(at->kind) && at->element) at = at->element.get();
    if (at->kind != TypeKind::Named || !at->declaration || at->declaration->kind != DeclarationKind::Type)
      return;
    const auto& type = static_cast<const DefinedType&>(*at->declaration);
    if (const TypeExpression* found = Item(referent, type, reference.name.text)) reference.type = found;
  }

  static TypeKind KindOf(const ExpressionPtr& expression) {
    const TypeExpression* type = expression->type ? Underlying(*expression->type) : nullptr;
    return type ? type->kind : TypeKind::Generic;
  }

  const TypeExpression* TypeOf(Expression& expression) {
    switch (expression.kind) {
      case ExpressionKind::Integer:
        return Simple(TypeKind::Integer);
      case ExpressionKind::Real:
        return Simple(TypeKind::Real);
      case ExpressionKind::BuiltinConstant:
        return Simple(TypeKind::Real);
      case ExpressionKind::String:
        return Simple(TypeKind::String);
      case ExpressionKind::Binary:
        return Simple(TypeKind::Binary);
      case ExpressionKind::Logical:
        return Simple(static_cast<LogicalLiteral&>(expression).value == LogicalValue::Unknown
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
        Declaration* found = TypeNamed(group.name);
        if (!found || found->kind != DeclarationKind::Entity) {
          if (found) NotAnEntity(group.name, *found);
          return nullptr;
        }
        group.entity = static_cast<Entity*>(found);
        return NamedType(found);
      }
      case ExpressionKind::Index: {
        auto& index = static_cast<Index&>(expression);
        Resolve(index.operand);
        Resolve(index.first);
        Resolve(index.last);
        const TypeExpression* type = index.operand->type ? Underlying(*index.operand->type) : nullptr;
        if (!type) return nullptr;
        if (IsAggregate(type->kind)) return type->element.get();
        return type->kind == TypeKind::String || type->kind == TypeKind::Binary ? type : nullptr;
      }
      case ExpressionKind::Unary: {
        auto& unary = static_cast<Unary&>(expression);
        Resolve(unary.operand);
        return unary.op == Operator::Not ? Simple(TypeKind::Logical) : unary.operand->type;
      }
      case ExpressionKind::Operation:
        return OperationType(static_cast<Operation&>(expression));
      case ExpressionKind::Interval: {
        auto& interval = static_cast<Interval&>(expression);
        Resolve(interval.low);
        Resolve(interval.item);
        Resolve(interval.high);
        return Simple(TypeKind::Logical);
      }
      case ExpressionKind::Query: {
        auto& query = static_cast<Query&>(expression);
        Resolve(query.source);
        const TypeExpression* source = query.source->type ? Underlying(*query.source->type) : nullptr;
        if (source && IsAggregate(source->kind)) query.variable->valueType = source->element.get();
        WithVariable(*query.variable, [&] { Resolve(query.condition); });
        return query.source->type;
      }
      case ExpressionKind::Aggregate:
        for (const auto& element : static_cast<AggregateInitializer&>(expression).elements) {
          Resolve(element.value);
          Resolve(element.repetition);
        }
        return nullptr;
    }
    return nullptr;
  }

  template <class Inner>
  void WithVariable(Variable& variable, Inner inner) {
    scopes_.emplace_back();
    scopes_.back().emplace(variable.name.text, &variable);
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
      return NamedType(found);
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
    for (std::size_t i = 0; i < std::min(call.arguments.size(), function.parameters.size()); ++i) {
      if (call.arguments[i]->kind != ExpressionKind::Name || !function.parameters[i]->type) continue;
      Qualify(static_cast<NameReference&>(*call.arguments[i]), function.parameters[i]->type.get());
    }
    return &function.returnType;
  }

  const TypeExpression* BuiltinType(BuiltinCall& call) {
    for (const ExpressionPtr& argument : call.arguments) Resolve(argument);
    const auto firstType = [&] { return call.arguments.empty() ? nullptr : call.arguments.front()->type; };
    switch (call.builtin) {
      case Builtin::Abs:
      case Builtin::Nvl:
        return firstType();
      case Builtin::BLength:
      case Builtin::HiBound:
      case Builtin::HiIndex:
      case Builtin::Length:
      case Builtin::LoBound:
      case Builtin::LoIndex:
      case Builtin::SizeOf:
        return Simple(TypeKind::Integer);
      case Builtin::Exists:
        return Simple(TypeKind::Boolean);
      case Builtin::Odd:
      case Builtin::ValueIn:
      case Builtin::ValueUnique:
        return Simple(TypeKind::Logical);
      case Builtin::Format:
        return Simple(TypeKind::String);
      case Builtin::RolesOf:
      case Builtin::TypeOf:
        return AggregateOf(TypeKind::Set, *Simple(TypeKind::String));
      case Builtin::UsedIn:
        return AggregateOf(TypeKind::Bag, *Simple(TypeKind::GenericEntity));
      case Builtin::Value:
        return Simple(TypeKind::Number);
      default:
        return Simple(TypeKind::Real);
    }
  }

  const TypeExpression* OperationType(Operation& operation) {
    Resolve(operation.left);
    Resolve(operation.right, operation.left->type);
    if (operation.left->kind == ExpressionKind::Name) {
      Qualify(static_cast<NameReference&>(*operation.left), operation.right->type);
    }
    const TypeKind left = KindOf(operation.left);
    const TypeKind right = KindOf(operation.right);
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
        return Simple(TypeKind::Real);
      case Operator::IntegerDivide:
      case Operator::Modulo:
        return Simple(TypeKind::Integer);
      case Operator::Add:
      case Operator::Subtract:
      case Operator::Multiply:
      case Operator::Power:
        if (IsNumeric(left) && IsNumeric(right)) {
          if (left == TypeKind::Integer && right == TypeKind::Integer) return Simple(TypeKind::Integer);
          const bool isNumber = left == TypeKind::Number || right == TypeKind::Number;
          return Simple(isNumber ? TypeKind::Number : TypeKind::Real);
        }
        if (left == right && (left == TypeKind::String || left == TypeKind::Binary)) return Simple(left);
        return IsAggregate(left) ? operation.left->type : nullptr;
      case Operator::Combine:
        return Simple(TypeKind::GenericEntity);
      default:
        return Simple(TypeKind::Logical);
    }
  }

  const TypeExpression* MemberType(Member& member) {
    if (member.operand->kind == ExpressionKind::Name) {
      auto& reference = static_cast<NameReference&>(*member.operand);
      const bool isAttribute = entity_ && AttributesOf(*entity_).count(reference.name.text) > 0;
      Declaration* found = isAttribute && scopes_.empty() ? nullptr : FindDeclaration(reference.name.text);
      if (found && found->kind == DeclarationKind::Type) return QualifiedItem(member, reference, *found);
    }
    Resolve(member.operand);
    const TypeExpression* type = member.operand->type ? Underlying(*member.operand->type) : nullptr;
    if (IsOpen(type)) return nullptr;
    if (type->kind == TypeKind::Named) {
      const auto& entity = static_cast<const Entity&>(*type->declaration);
      if (const Attribute* attribute = AttributeOf(entity, member.name.text)) {
        member.referent.attribute = attribute;
        return AttributeType(*attribute);
      }
      if (IsAttributeOfASubtype(entity, member.name.text) || entity.damaged) return nullptr;
      NoAttribute("entity " + Quoted(entity.name), entity, member.name);
      return nullptr;
    }
    if (type->kind == TypeKind::Select) return SelectMember(member, *type);
    diagnostics_.Report(Code::NotAnInstance, member.name.where,
                        "the operand of '." + member.name.text + "' is no instance but " + TypeText(*type));
    return nullptr;
  }

  const TypeExpression* QualifiedItem(Member& member, NameReference& reference, Declaration& found) {
    reference.referent.declaration = &found;
    const auto& type = static_cast<const DefinedType&>(found);
    if (const TypeExpression* item = Item(member.referent, type, member.name.text)) return item;
    const TypeExpression* enumeration = Underlying(type.underlying);
    if (!enumeration || enumeration->kind != TypeKind::Enumeration) {
      if (enumeration) NotAValue(reference.name, found);
      return nullptr;
    }
    std::vector<std::string> names;
    for (const TypeItem& item : AllItems(*enumeration)) names.push_back(item.name.text);
    const std::string nearest = Nearest(member.name.text, names);
    diagnostics_.Report(Code::UnknownName, member.name.where,
                        "enumeration " + Quoted(found.name) + " has no item " + Quoted(member.name),
                        nearest.empty() ? "" : "did you mean '" + nearest + "'?");
    return nullptr;
  }

  const Attribute* AttributeOf(const Entity& entity, const std::string& name) {
    const Attributes& attributes = AttributesOf(entity);
    const auto found = attributes.find(name);
    return found == attributes.end() ? nullptr : found->second;
  }

  // Whether an instance of the entity may have the attribute by also being an instance of a subtype.
  static bool IsAttributeOfASubtype(const Entity& entity, const std::string& name) {
    std::vector<const Entity*> open{&entity};
    std::set<const Entity*> seen;
    while (!open.empty()) {
      const Entity* at = open.back();
      open.pop_back();
      if (!seen.insert(at).second) continue;
      for (const Attribute& attribute : at->attributes) {
        if (attribute.name.text == name) return true;
      }
      open.insert(open.end(), at->subtypes.begin(), at->subtypes.end());
    }
    return false;
  }

  void NoAttribute(const std::string& what, const Entity& entity, const Name& name) {
    std::vector<std::string> names;
    for (const auto& [visible, attribute] : AttributesOf(entity)) names.push_back(visible);
    std::sort(names.begin(), names.end());
    const std::string nearest = Nearest(name.text, names);
    diagnostics_.Report(Code::UnknownAttribute, name.where, what + " has no attribute " + Quoted(name),
                        nearest.empty() ? "" : "did you mean '" + nearest + "'?");
  }

  // The one attribute that the entities of the select have under the name, or the type that they agree on.
  const TypeExpression* SelectMember(Member& member, const TypeExpression& select) {
    std::set<const TypeExpression*> seen;
    std::set<const Attribute*> found;
    std::vector<const TypeExpression*> open{&select};
    while (!open.empty()) {
      const TypeExpression* at = open.back();
      open.pop_back();
      if (!at || !seen.insert(at).second || at->kind != TypeKind::Select) continue;
      for (const TypeItem& item : AllItems(*at)) {
        if (item.declaration && item.declaration->kind == DeclarationKind::Entity) {
          const Attribute* attribute = AttributeOf(static_cast<Entity&>(*item.declaration), member.name.text);
          if (attribute) found.insert(attribute);
        } else if (item.declaration) {
          open.push_back(Underlying(static_cast<DefinedType&>(*item.declaration).underlying));
        }
      }
    }
    if (found.size() != 1) return nullptr;
    member.referent.attribute = *found.begin();
    return AttributeType(**found.begin());
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
      const bool leaves = statement->kind == StatementKind::Return ||
                          statement->kind == StatementKind::Escape || statement->kind == StatementKind::Skip;
      if (leaves) leaving = statement.get();
    }
  }

  void Any(Statement& statement) {
    switch (statement.kind) {
      case StatementKind::Alias: {
        auto& alias = static_cast<AliasStatement&>(statement);
        Resolve(alias.source);
        alias.variable->valueType = alias.source->type;
        WithVariable(*alias.variable, [&] { Statements(alias.body); });
        break;
      }
      case StatementKind::Assignment: {
        auto& assignment = static_cast<AssignmentStatement&>(statement);
        isTarget_ = assignment.target->kind == ExpressionKind::Name;
        Resolve(assignment.target);
        isTarget_ = false;
        CheckTarget(*assignment.target);
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
        repeat.variable->valueType = Simple(TypeKind::Number);
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

  // Only variables are assigned to.
  void CheckTarget(const Expression& target) {
    const Expression* at = &target;
    for (;;) {
      if (at->kind == ExpressionKind::Member) {
        at = static_cast<const Member*>(at)->operand.get();
      } else if (at->kind == ExpressionKind::Group) {
        at = static_cast<const Group*>(at)->operand.get();
      } else if (at->kind == ExpressionKind::Index) {
        at = static_cast<const Index*>(at)->operand.get();
      } else {
        break;
      }
    }
    const auto& reference = static_cast<const NameReference&>(*at);
    const Declaration* found = reference.referent.declaration;
    const bool isItem = reference.referent.enumeration != nullptr;
    if (!isItem && (!found || found->kind == DeclarationKind::Variable)) return;
    diagnostics_.Report(Code::NotAssignable, reference.where,
                        Quoted(reference.name) + " is " +
                            (isItem ? "an enumeration item" : KindText(found->kind)) +
                            ": only variables and parameters are assigned to");
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

  struct PairHash {
    std::size_t operator()(const std::pair<TypeKind, const TypeExpression*>& key) const {
      return std::hash<const void*>()(key.second) * 31 + static_cast<std::size_t>(key.first);
    }
  };

  Model& model_;
  Diagnostics& diagnostics_;
  SchemaDeclaration* schema_ = nullptr;
  bool hasUnknownInterface_ = false;
  std::vector<Scope> scopes_;
  Entity* entity_ = nullptr;              // whose attributes are visible by name
  const TypeExpression* self_ = nullptr;  // of SELF
  const Algorithm* algorithm_ = nullptr;
  std::vector<Entity*> populations_;
  const TypeExpression* lastType_ = nullptr;
  std::vector<const NameReference*> ambiguous_;
  bool isTarget_ = false;                                         // the name is assigned to
  std::map<std::string, std::vector<const DefinedType*>> items_;  // by name, the enumerations that have it
  std::unordered_map<const Entity*, Attributes> attributes_;
  std::unordered_map<const Declaration*, const TypeExpression*> namedTypes_;
  std::unordered_map<std::pair<TypeKind, const TypeExpression*>, const TypeExpression*, PairHash> aggregates_;
};

}  // namespace

void ResolveExpressions(Model& model, Diagnostics& diagnostics) {
  ExpressionResolver(model, diagnostics).Run();
}

}  // namespace VELMAR::Express
