#include "TypeChecker.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace VELMAR::Express {
namespace {

// "integer", "length_measure (real)".
std::string Shown(const TypeExpression* type) {
  if (!type) return "open";
  const TypeExpression* underlying = Underlying(*type);
  const bool isShort = !underlying || underlying == type || underlying->kind == TypeKind::Named ||
                       underlying->kind == TypeKind::Select || underlying->kind == TypeKind::Enumeration;
  return isShort ? TypeText(*type) : TypeText(*type) + " (" + TypeText(*underlying) + ')';
}

bool IsIndeterminate(const Expression& expression) {
  return expression.kind == ExpressionKind::Indeterminate;
}

// What a builtin takes: the classes of its first and its second argument.
struct BuiltinArguments {
  Builtin builtin;
  unsigned classes[2];
};

constexpr BuiltinArguments kBuiltinArguments[] = {
    {Builtin::Abs, {kNumericValue, 0}},
    {Builtin::Acos, {kNumericValue, 0}},
    {Builtin::Asin, {kNumericValue, 0}},
    {Builtin::Atan, {kNumericValue, kNumericValue}},
    {Builtin::BLength, {kBinaryValue, 0}},
    {Builtin::Cos, {kNumericValue, 0}},
    {Builtin::Exists, {kAnyValue, 0}},
    {Builtin::Exp, {kNumericValue, 0}},
    {Builtin::Format, {kNumericValue, kStringValue}},
    {Builtin::HiBound, {kAggregateValue, 0}},
    {Builtin::HiIndex, {kAggregateValue, 0}},
    {Builtin::Length, {kStringValue, 0}},
    {Builtin::LoBound, {kAggregateValue, 0}},
    {Builtin::Log, {kNumericValue, 0}},
    {Builtin::Log2, {kNumericValue, 0}},
    {Builtin::Log10, {kNumericValue, 0}},
    {Builtin::LoIndex, {kAggregateValue, 0}},
    {Builtin::Nvl, {kAnyValue, kAnyValue}},
    {Builtin::Odd, {kNumericValue, 0}},
    {Builtin::RolesOf, {kInstanceValue, 0}},
    {Builtin::Sin, {kNumericValue, 0}},
    {Builtin::SizeOf, {kAggregateValue, 0}},
    {Builtin::Sqrt, {kNumericValue, 0}},
    {Builtin::Tan, {kNumericValue, 0}},
    {Builtin::TypeOf, {kAnyValue, 0}},
    {Builtin::UsedIn, {kAnyValue, kStringValue}},
    {Builtin::Value, {kStringValue, 0}},
    {Builtin::ValueIn, {kAggregateValue, kAnyValue}},
    {Builtin::ValueUnique, {kAggregateValue, 0}},
};

constexpr std::pair<unsigned, const char*> kClassTexts[] = {
    {kNumericValue, "a number"},           {kStringValue, "a string"},
    {kLogicalValue, "a logical value"},    {kBinaryValue, "a binary"},
    {kInstanceValue, "an instance"},       {kAggregateValue, "an aggregate"},
    {kEnumerationValue, "an enumeration"},
};

// "a number", "an aggregate or a string".
std::string ClassesText(unsigned classes) {
  std::string text;
  for (const auto& [bit, name] : kClassTexts) {
    if ((classes & bit) == 0) continue;
    if (!text.empty()) text += " or ";
    text += name;
  }
  return text;
}

// The names of simple and aggregation types, as TYPEOF gives them (15.25).
bool IsSimpleTypeName(const std::string& name) {
  const char* const names[] = {"NUMBER", "REAL",  "INTEGER", "STRING", "BOOLEAN", "LOGICAL",
                               "BINARY", "ARRAY", "BAG",     "LIST",   "SET",     "GENERIC"};
  return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

class TypeChecker {
 public:
  TypeChecker(const Model& model, TypeRules& rules, Diagnostics& diagnostics)
      : model_(model), rules_(rules), diagnostics_(diagnostics) {}

  void Run() {
    for (const auto& schema : model_.schemas) {
      schema_ = schema.get();
      for (const auto& declaration : schema->declarations) Any(*declaration);
    }
  }

 private:
  // ---- declarations -----------------------------------------------------------------------------

  void Any(const Declaration& declaration) {
    if (declaration.damaged) return;
    switch (declaration.kind) {
      case DeclarationKind::Type: {
        const auto& type = static_cast<const DefinedType&>(declaration);
        Type(type.underlying);
        EmptySelect(type);
        OnlyEntities(type);
        Rules(type.where);
        break;
      }
      case DeclarationKind::Entity:
        return EntityDecl(static_cast<const Entity&>(declaration));
      case DeclarationKind::Constant: {
        const auto& constant = static_cast<const Constant&>(declaration);
        Type(constant.type);
        Value(*constant.expression, &constant.type, "constant " + Quoted(constant.name) + " is");
        break;
      }
      case DeclarationKind::Function:
      case DeclarationKind::Procedure:
      case DeclarationKind::Rule:
        return AlgorithmDecl(static_cast<const Algorithm&>(declaration));
      case DeclarationKind::SubtypeConstraint:
      case DeclarationKind::Variable:
        break;
    }
  }

  void EmptySelect(const DefinedType& type) {
    const TypeExpression& select = type.underlying;
    const bool isUnknown = !select.basedOn.text.empty() && !select.base;
    if (select.kind != TypeKind::Select || select.extensible || isUnknown || !AllItems(select).empty())
      return;
    diagnostics_.Report(Code::EmptySelect, type.name.where,
                        "select " + Quoted(type.name) + " selects nothing");
  }

  void OnlyEntities(const DefinedType& type) {
    if (type.underlying.kind != TypeKind::Select || !TypeRules::IsOfEntities(type.underlying)) return;
    for (const TypeItem& item : type.underlying.items) {
      if (!item.declaration || (rules_.ClassesOf(rules_.TypeOf(*item.declaration)) & kInstanceValue) != 0)
        continue;
      diagnostics_.Report(
          Code::NotOnlyEntities, item.name.where,
          "a select of GENERIC_ENTITY selects entities, not " + Shown(rules_.TypeOf(*item.declaration)),
          item.declaration->name.where, "declared here");
    }
  }

  void Rules(const std::vector<LabelledRule>& rules) {
    std::map<std::string, const Name*> labels;
    for (const LabelledRule& rule : rules) {
      Label(rule.label, labels);
      Condition(*rule.expression, "domain rule");
    }
  }

  void Label(const Name& label, std::map<std::string, const Name*>& labels) {
    if (label.text.empty()) return;
    const auto [first, isNew] = labels.emplace(label.text, &label);
    if (isNew) return;
    diagnostics_.Report(Code::DuplicateLabel, label.where, "label " + Quoted(label) + " is given twice",
                        first->second->where, "first given here");
  }

  void EntityDecl(const Entity& entity) {
    const TypeExpression* last = nullptr;
    for (const Attribute& attribute : entity.attributes) {
      if (attribute.type && attribute.type.get() != last) Type(*attribute.type);
      last = attribute.type.get();
      if (attribute.inherited) Redeclaration(attribute);
      if (attribute.inverseHasBounds) {
        WholeNumber(*attribute.inverseLower, "bound");
        WholeNumber(*attribute.inverseUpper, "bound");
      }
      if (attribute.expression)
        Value(*attribute.expression, attribute.type.get(), "attribute " + Quoted(attribute.name) + " is");
    }
    std::map<std::string, const Name*> labels;
    for (const UniqueRule& rule : entity.unique) Label(rule.label, labels);
    Rules(entity.where);
  }

  void Redeclaration(const Attribute& attribute) {
    const Attribute& inherited = *attribute.inherited;
    const char* const texts[] = {"explicit", "derived", "inverse"};
    const bool isKind = attribute.kind == inherited.kind || (attribute.kind == AttributeKind::Derived &&
                                                             inherited.kind == AttributeKind::Explicit);
    if (!isKind) {
      diagnostics_.Report(Code::WiderRedeclaration, attribute.name.where,
                          std::string(texts[static_cast<int>(inherited.kind)]) + " attribute " +
                              Quoted(attribute.redeclaredAttribute) + " is redeclared as " +
                              texts[static_cast<int>(attribute.kind)],
                          inherited.name.where, "declared here");
    } else if (attribute.optional && !inherited.optional && inherited.kind == AttributeKind::Explicit) {
      diagnostics_.Report(Code::WiderRedeclaration, attribute.name.where,
                          "attribute " + Quoted(attribute.redeclaredAttribute) +
                              " is redeclared as OPTIONAL, which the inherited one is not",
                          inherited.name.where, "declared here");
    }
    const Entity* referring = attribute.inverseEntityDeclaration;
    const Entity* inheritedReferring = inherited.inverseEntityDeclaration;
    if (referring && inheritedReferring && !rules_.IsKindOf(*referring, *inheritedReferring)) {
      diagnostics_.Report(Code::NotSpecialised, attribute.inverseEntity.where,
                          "inverse attribute " + Quoted(attribute.name) + " is redeclared with entity " +
                              Quoted(referring->name) + ", which is no subtype of " +
                              Quoted(inheritedReferring->name),
                          inherited.name.where, "declared here");
    }
    if (!attribute.type || !inherited.type) return;
    const bool isSame = attribute.kind == AttributeKind::Explicit && !attribute.renamed &&
                        inherited.kind == AttributeKind::Explicit &&
                        attribute.optional == inherited.optional && AreSame(*attribute.type, *inherited.type);
    if (isSame) {
      diagnostics_.Report(Code::SameRedeclaration, attribute.name.where,
                          "attribute " + Quoted(attribute.name) + " is redeclared as it is inherited",
                          inherited.name.where, "declared here");
    }
    if (rules_.IsSpecialisation(*attribute.type, *inherited.type)) return;
    diagnostics_.Report(Code::NotSpecialised, attribute.type->where,
                        "attribute " + Quoted(attribute.name) + " is redeclared as " +
                            TypeText(*attribute.type) + ", which is no specialisation of " +
                            TypeText(*inherited.type),
                        inherited.name.where, "declared here");
  }

  static bool AreSame(const TypeExpression& a, const TypeExpression& b) {
    if (TypeText(a) != TypeText(b)) return false;
    const TypeExpression* left = &a;
    const TypeExpression* right = &b;
    while (IsAggregate(left->kind)) {
      left = left->element.get();
      right = right->element.get();
    }
    return left->declaration == right->declaration;
  }

  void AlgorithmDecl(const Algorithm& algorithm) {
    const Algorithm* const outer = std::exchange(algorithm_, &algorithm);
    if (algorithm.kind == DeclarationKind::Function) Type(algorithm.returnType);
    const TypeExpression* last = nullptr;
    const auto variable = [&](const Variable& declared) {
      // Names declared together share type and initial value.
      if (!declared.type || declared.type.get() == last) return;
      last = declared.type.get();
      Type(*last);
      if (declared.initial) Value(*declared.initial, last, "variable " + Quoted(declared.name) + " is");
    };
    for (const auto& parameter : algorithm.parameters) variable(*parameter);
    for (const auto& declaration : algorithm.declarations) Any(*declaration);
    for (const auto& local : algorithm.locals) variable(*local);
    Statements(algorithm.statements);
    if (algorithm.kind == DeclarationKind::Function && !Leaves(algorithm.statements)) {
      diagnostics_.Report(Code::NoReturn, algorithm.name.where,
                          "function " + Quoted(algorithm.name) + " may end without RETURN");
    }
    Rules(algorithm.where);
    algorithm_ = outer;
  }

  void Type(const TypeExpression& type) {
    for (const TypeExpression* at = &type; at; at = at->element.get()) {
      if (at->lower) WholeNumber(*at->lower, "bound");
      if (at->upper) WholeNumber(*at->upper, "bound");
      if (at->width) WholeNumber(*at->width, at->kind == TypeKind::Real ? "precision" : "width");
    }
  }

  // ---- statements -------------------------------------------------------------------------------

  void Statements(const std::vector<StatementPtr>& statements) {
    for (const StatementPtr& statement : statements) Any(*statement);
  }

  void Any(const Statement& statement) {
    switch (statement.kind) {
      case StatementKind::Alias: {
        const auto& alias = static_cast<const AliasStatement&>(statement);
        Check(*alias.source);
        return Statements(alias.body);
      }
      case StatementKind::Assignment: {
        const auto& assignment = static_cast<const AssignmentStatement&>(statement);
        Check(*assignment.target);
        if (!IsVariable(*assignment.target)) return Check(*assignment.value);
        ToItself(assignment);
        return Value(*assignment.value, assignment.target->type, TargetText(*assignment.target) + " is");
      }
      case StatementKind::Case:
        return Case(static_cast<const CaseStatement&>(statement));
      case StatementKind::Compound:
        return Statements(static_cast<const CompoundStatement&>(statement).body);
      case StatementKind::If: {
        const auto& branch = static_cast<const IfStatement&>(statement);
        Condition(*branch.condition, "condition");
        Statements(branch.thenBody);
        return Statements(branch.elseBody);
      }
      case StatementKind::ProcedureCall:
        return ProcedureCall(static_cast<const ProcedureCallStatement&>(statement));
      case StatementKind::Repeat:
        return Repeat(static_cast<const RepeatStatement&>(statement));
      case StatementKind::Return:
        return Return(static_cast<const ReturnStatement&>(statement));
      case StatementKind::Escape:
        return WithinRepeat(statement, "ESCAPE");
      case StatementKind::Skip:
        return WithinRepeat(statement, "SKIP");
      case StatementKind::Null:
        break;
    }
  }

  void WithinRepeat(const Statement& statement, const char* word) {
    if (repeats_ > 0) return;
    diagnostics_.Report(Code::OutsideRepeat, statement.where,
                        std::string(word) + " stands outside of any REPEAT");
  }

  void ToItself(const AssignmentStatement& assignment) {
    if (assignment.target->kind != ExpressionKind::Name || assignment.value->kind != ExpressionKind::Name)
      return;
    const auto& target = static_cast<const NameReference&>(*assignment.target);
    const auto& value = static_cast<const NameReference&>(*assignment.value);
    if (!target.referent.declaration || target.referent.declaration != value.referent.declaration) return;
    diagnostics_.Report(Code::NoEffect, assignment.where, Quoted(target.name) + " is assigned to itself");
  }

  static std::string TargetText(const Expression& target) {
    if (target.kind == ExpressionKind::Name) return Quoted(static_cast<const NameReference&>(target).name);
    if (target.kind == ExpressionKind::Member) {
      return "attribute " + Quoted(static_cast<const Member&>(target).name);
    }
    return target.kind == ExpressionKind::Index ? "an element" : "the target";
  }

  void Case(const CaseStatement& choice) {
    Check(*choice.selector);
    std::map<std::string, Location> labels;
    for (const CaseStatement::Action& action : choice.actions) {
      for (const ExpressionPtr& label : action.labels) {
        Check(*label);
        if (!rules_.MayEqual(choice.selector->type, label->type)) {
          diagnostics_.Report(
              Code::WrongLabel, label->where,
              "label is " + Shown(label->type) + ", the selector is " + Shown(choice.selector->type),
              choice.selector->where, "selector");
        }
        DuplicateLabel(*label, labels);
      }
      Any(*action.statement);
    }
    if (choice.otherwise) Any(*choice.otherwise);
  }

  // A label that a CASE has had before is never reached.
  void DuplicateLabel(const Expression& label, std::map<std::string, Location>& labels) {
    std::string text;
    if (const std::optional<std::int64_t> number = LiteralValue(label)) {
      text = std::to_string(*number);
    } else if (label.kind == ExpressionKind::String) {
      text = '\'' + static_cast<const StringLiteral&>(label).value;
    } else if (const Referent* item = ItemIn(label)) {
      text = item->enumeration->name.text + '.' + std::to_string(item->item);
    } else {
      return;
    }
    const auto [first, isNew] = labels.emplace(text, label.where);
    if (isNew) return;
    diagnostics_.Report(Code::DuplicateLabel, label.where, "this label is given twice", first->second,
                        "first given here");
  }

  // The enumeration item that the expression is; null for others.
  static const Referent* ItemIn(const Expression& expression) {
    const Referent* referent = nullptr;
    if (expression.kind == ExpressionKind::Name) {
      referent = &static_cast<const NameReference&>(expression).referent;
    } else if (expression.kind == ExpressionKind::Member) {
      referent = &static_cast<const Member&>(expression).referent;
    }
    return referent && referent->enumeration ? referent : nullptr;
  }

  void Repeat(const RepeatStatement& repeat) {
    for (const Expression* number : {repeat.first.get(), repeat.last.get(), repeat.increment.get()}) {
      if (!number) continue;
      Check(*number);
      if ((rules_.ClassesOf(number->type) & kNumericValue) == 0) {
        diagnostics_.Report(Code::NotANumber, number->where,
                            "REPEAT counts with numbers, not with " + Shown(number->type));
      }
    }
    // WHILE TRUE and UNTIL FALSE leave it to ESCAPE and RETURN when the REPEAT ends.
    if (repeat.whileCondition) Condition(*repeat.whileCondition, "condition", LogicalValue::True);
    if (repeat.untilCondition) Condition(*repeat.untilCondition, "condition", LogicalValue::False);
    ++repeats_;
    Statements(repeat.body);
    --repeats_;
  }

  void Return(const ReturnStatement& result) {
    const bool isFunction = algorithm_->kind == DeclarationKind::Function;
    if (!result.value) {
      if (!isFunction) return;
      diagnostics_.Report(Code::WrongReturn, result.where,
                          "function " + Quoted(algorithm_->name) + " returns a value: RETURN (...)");
      return;
    }
    if (isFunction) {
      return Value(*result.value, &algorithm_->returnType,
                   "function " + Quoted(algorithm_->name) + " returns");
    }
    Check(*result.value);
    diagnostics_.Report(Code::WrongReturn, result.where,
                        std::string(algorithm_->kind == DeclarationKind::Rule ? "rule " : "procedure ") +
                            Quoted(algorithm_->name) + " returns no value");
  }

  void ProcedureCall(const ProcedureCallStatement& call) {
    for (const ExpressionPtr& argument : call.arguments) Check(*argument);
    if (call.builtin != Builtin::kCount) return ListProcedure(call);
    if (call.declaration) Arguments(static_cast<const Algorithm&>(*call.declaration), call.arguments);
  }

  // INSERT (list, element, position) and REMOVE (list, position).
  void ListProcedure(const ProcedureCallStatement& call) {
    if (call.arguments.size() != static_cast<std::size_t>(BuiltinRowOf(call.builtin).arguments)) return;
    const Expression& list = *call.arguments.front();
    Modifiable(list, BuiltinRowOf(call.builtin).name);
    const TypeExpression* type = rules_.Fundamental(list.type);
    const bool isList = !type || type->kind == TypeKind::List || type->kind == TypeKind::Aggregate ||
                        type->kind == TypeKind::Generic;
    if (!isList) {
      diagnostics_.Report(
          Code::WrongArgumentType, list.where,
          std::string(BuiltinRowOf(call.builtin).name) + " takes a list, not " + Shown(list.type));
    } else if (call.builtin == Builtin::Insert && type && type->element) {
      Argument(*call.arguments[1], type->element.get(), "INSERT");
    }
    IsWholeNumber(*call.arguments.back(), "position");
  }

  // ---- values -----------------------------------------------------------------------------------

  // A value that is given to something of the type `target`.
  void Value(const Expression& value, const TypeExpression* target, const std::string& what) {
    Check(value);
    Holds(value, target, Code::NotAssignableValue, what);
  }

  void Argument(const Expression& argument, const TypeExpression* parameter, const std::string& what) {
    Holds(argument, parameter, Code::WrongArgumentType, what + " takes");
  }

  // `what` and the type make a sentence.
  void Holds(const Expression& value, const TypeExpression* target, Code code, const std::string& what) {
    if (!target || IsIndeterminate(value)) return;
    if (value.kind == ExpressionKind::Aggregate) {
      const TypeExpression* type = rules_.Fundamental(target);
      if (type && IsAggregate(type->kind)) {
        return Elements(static_cast<const AggregateInitializer&>(value), *type, code);
      }
    }
    const auto text = [&] { return what + ' ' + Shown(target) + ", the value is " + Shown(value.type); };
    if (!rules_.MayHold(target, value.type)) {
      diagnostics_.Report(IsGeneric(*target) ? Code::GenericValue : code, value.where, text());
      return;
    }
    const TypeExpression* to = Underlying(*target);
    const TypeExpression* from = value.type ? Underlying(*value.type) : nullptr;
    if (!to || !from || to->kind != TypeKind::Named || from->kind != TypeKind::Named) return;
    const auto& wanted = static_cast<const Entity&>(*to->declaration);
    const auto& given = static_cast<const Entity&>(*from->declaration);
    if (rules_.IsKindOf(wanted, given) || rules_.IsKindOf(given, wanted)) return;
    diagnostics_.Report(Code::OtherEntity, value.where, text() + ", neither sub- nor supertype of it");
  }

  static bool IsGeneric(const TypeExpression& type) {
    const TypeExpression* at = &type;
    while (IsAggregate(at->kind)) at = at->element.get();
    return at->kind == TypeKind::Generic;
  }

  void Elements(const AggregateInitializer& value, const TypeExpression& type, Code code) {
    bool isCounted = true;
    for (const AggregateInitializer::Element& element : value.elements) {
      isCounted = isCounted && !element.repetition;
      Holds(*element.value, type.element.get(), code, "an element is");
    }
    if (!type.hasBounds || !isCounted || value.elements.empty()) return;
    const std::optional<std::int64_t> lower = LiteralValue(*type.lower);
    const std::optional<std::int64_t> upper = LiteralValue(*type.upper);
    if (!upper || (type.kind == TypeKind::Array && !lower)) return;
    const auto count = static_cast<std::int64_t>(value.elements.size());
    const std::int64_t most = type.kind == TypeKind::Array ? *upper - *lower + 1 : *upper;
    if (count <= most) return;
    diagnostics_.Report(Code::TooManyElements, value.where,
                        std::to_string(count) + " elements are given; " + TypeText(type) + " has " +
                            std::to_string(most) + " at most");
  }

  // The parameters of a function or procedure get what they can hold, VAR parameters a variable, and what is
  // given for the same type label agrees.
  void Arguments(const Algorithm& algorithm, const std::vector<ExpressionPtr>& arguments) {
    if (algorithm.damaged || arguments.size() != algorithm.parameters.size()) return;
    std::map<std::string, const TypeExpression*> labels;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      const Variable& parameter = *algorithm.parameters[i];
      if (!parameter.type) continue;
      const std::string what = "parameter " + Quoted(parameter.name);
      Argument(*arguments[i], parameter.type.get(), what);
      if (parameter.isVar) Modifiable(*arguments[i], "VAR " + what);
      Labels(*parameter.type, *arguments[i], labels);
    }
  }

  void Labels(const TypeExpression& parameter, const Expression& argument,
              std::map<std::string, const TypeExpression*>& labels) {
    const TypeExpression* type = argument.type;
    for (const TypeExpression* at = &parameter; at && type; at = at->element.get()) {
      // A label of AGGREGATE stands for the kind, one of GENERIC for the type.
      const bool isLabelled = !at->label.text.empty() && !IsAggregate(at->kind);
      if (isLabelled) {
        const auto [first, isNew] = labels.emplace(at->label.text, type);
        if (!isNew && !rules_.MayHold(first->second, type) && !rules_.MayHold(type, first->second)) {
          diagnostics_.Report(Code::WrongArgumentType, argument.where,
                              Shown(type) + " is given where the type label " + Quoted(at->label) +
                                  " stands for " + Shown(first->second));
        }
      }
      if (!IsAggregate(at->kind)) break;
      const TypeExpression* aggregate = rules_.Fundamental(type);
      type = aggregate && IsAggregate(aggregate->kind) ? aggregate->element.get() : nullptr;
    }
  }

  // A variable, or a part of what one holds; an unknown name passes.
  static bool IsVariable(const Expression& expression) {
    const Expression& root = RootOf(expression);
    if (root.kind != ExpressionKind::Name) return false;
    const Referent& referent = static_cast<const NameReference&>(root).referent;
    const bool isUnknown = !referent.declaration && !referent.attribute && !referent.enumeration;
    return isUnknown || (referent.declaration && referent.declaration->kind == DeclarationKind::Variable);
  }

  void Modifiable(const Expression& argument, const std::string& what) {
    if (IsVariable(argument)) return;
    diagnostics_.Report(Code::NotAssignable, argument.where,
                        what + " changes its argument, which is no variable");
  }

  // `usual` is the constant that may stand there.
  void Condition(const Expression& condition, const char* what,
                 std::optional<LogicalValue> usual = std::nullopt) {
    Check(condition);
    const bool isConstant = condition.kind == ExpressionKind::Logical &&
                            static_cast<const LogicalLiteral&>(condition).value != usual;
    if (isConstant) {
      diagnostics_.Report(Code::ConstantCondition, condition.where,
                          std::string(what) + " is always the same");
    }
    IsLogical(condition, what);
  }

  void IsLogical(const Expression& condition, const char* what) {
    if ((rules_.ClassesOf(condition.type) & kLogicalValue) != 0) return;
    diagnostics_.Report(Code::NotLogical, condition.where,
                        std::string(what) + " is " + Shown(condition.type) + ", expected a logical value");
  }

  void WholeNumber(const Expression& number, const char* what) {
    Check(number);
    IsWholeNumber(number, what);
  }

  void IsWholeNumber(const Expression& number, const char* what) {
    if (rules_.MayHold(SimpleType(TypeKind::Integer), number.type)) return;
    diagnostics_.Report(Code::NotANumber, number.where,
                        std::string(what) + " is " + Shown(number.type) + ", expected an integer");
  }

  // ---- expressions ------------------------------------------------------------------------------

  void Check(const Expression& expression) {
    VisitOperands(expression, [&](const Expression& operand) { Check(operand); });
    switch (expression.kind) {
      case ExpressionKind::Call:
        return CallArguments(static_cast<const Call&>(expression));
      case ExpressionKind::BuiltinCall:
        return BuiltinCallArguments(static_cast<const BuiltinCall&>(expression));
      case ExpressionKind::Group:
        return GroupOperand(static_cast<const Group&>(expression));
      case ExpressionKind::Index:
        return IndexOperands(static_cast<const Index&>(expression));
      case ExpressionKind::Unary: {
        const auto& unary = static_cast<const Unary&>(expression);
        return Operand(*unary.operand, unary.op == Operator::Not ? kLogicalValue : kNumericValue, unary);
      }
      case ExpressionKind::Operation:
        return Operands(static_cast<const Operation&>(expression));
      case ExpressionKind::Interval: {
        const auto& interval = static_cast<const Interval&>(expression);
        if (Ordered(*interval.low, *interval.item, interval)) {
          Ordered(*interval.item, *interval.high, interval);
        }
        return;
      }
      case ExpressionKind::Query: {
        const auto& query = static_cast<const Query&>(expression);
        if ((rules_.ClassesOf(query.source->type) & kAggregateValue) == 0) {
          diagnostics_.Report(Code::WrongOperand, query.source->where,
                              "QUERY goes through an aggregate, not through " + Shown(query.source->type));
        }
        return IsLogical(*query.condition, "condition");
      }
      case ExpressionKind::Aggregate:
        for (const auto& element : static_cast<const AggregateInitializer&>(expression).elements) {
          if (element.repetition) IsWholeNumber(*element.repetition, "repetition");
        }
        return;
      default:
        return;
    }
  }

  void CallArguments(const Call& call) {
    if (!call.declaration || call.declaration->damaged) return;
    if (call.declaration->kind == DeclarationKind::Function) {
      return Arguments(static_cast<const Algorithm&>(*call.declaration), call.arguments);
    }
    std::size_t next = 0;
    for (const Attribute& attribute : static_cast<const Entity&>(*call.declaration).attributes) {
      if (!IsSlot(attribute) || next == call.arguments.size()) continue;
      Argument(*call.arguments[next++], attribute.type.get(), "attribute " + Quoted(attribute.name));
    }
  }

  void BuiltinCallArguments(const BuiltinCall& call) {
    const auto row = std::find_if(std::begin(kBuiltinArguments), std::end(kBuiltinArguments),
                                  [&](const BuiltinArguments& each) { return each.builtin == call.builtin; });
    if (row == std::end(kBuiltinArguments)) return;
    const BuiltinRow& builtin = BuiltinRowOf(call.builtin);
    if (call.arguments.size() != static_cast<std::size_t>(builtin.arguments)) return;
    for (std::size_t i = 0; i < call.arguments.size() && i < 2; ++i) {
      const Expression& argument = *call.arguments[i];
      if ((rules_.ClassesOf(argument.type) & row->classes[i]) != 0) continue;
      diagnostics_.Report(Code::WrongArgumentType, argument.where,
                          std::string(builtin.name) + " takes " + ClassesText(row->classes[i]) + ", not " +
                              Shown(argument.type));
    }
    if (call.builtin == Builtin::UsedIn &&
        (rules_.ClassesOf(call.arguments[0]->type) & kInstanceValue) == 0) {
      diagnostics_.Report(Code::AlwaysIndeterminate, call.arguments[0]->where,
                          "only instances are used, not " + Shown(call.arguments[0]->type),
                          "USEDIN gives an empty bag here");
    }
    if (call.builtin == Builtin::Odd) IsWholeNumber(*call.arguments.front(), "argument of ODD");
    if (call.builtin == Builtin::Nvl) Comparable(*call.arguments[0], *call.arguments[1], call);
    if (call.builtin == Builtin::ValueIn) Element(*call.arguments[1], *call.arguments[0], call);
  }

  void GroupOperand(const Group& group) {
    const TypeExpression* type = group.operand->type;
    if ((rules_.ClassesOf(type) & kInstanceValue) == 0) {
      diagnostics_.Report(Code::NotAnInstance, group.where,
                          "the operand of '\\" + group.name.text + "' is no instance but " + Shown(type));
      return;
    }
    if (!group.entity || rules_.MayHold(type, rules_.TypeOf(*group.entity))) return;
    diagnostics_.Report(Code::NotAPart, group.where,
                        Shown(type) + " has no instances that are also of " + Quoted(group.name),
                        group.entity->name.where, "declared here");
  }

  void IndexOperands(const Index& index) {
    const unsigned wanted =
        index.last ? kStringValue | kBinaryValue : kAggregateValue | kStringValue | kBinaryValue;
    const bool isIndexed = (rules_.ClassesOf(index.operand->type) & wanted) != 0;
    if (!isIndexed) {
      diagnostics_.Report(Code::WrongOperand, index.where,
                          Shown(index.operand->type) + " is indexed, expected " + ClassesText(wanted));
    }
    IsWholeNumber(*index.first, "index");
    if (index.last) IsWholeNumber(*index.last, "index");
    if (isIndexed) OutsideOf(*index.first, rules_.Fundamental(index.operand->type));
  }

  // An index that no value of the type has, as far as both are written as numbers: all but arrays begin
  // with 1.
  void OutsideOf(const Expression& index, const TypeExpression* type) {
    const std::optional<std::int64_t> at = LiteralValue(index);
    const bool isOpen = !type || type->kind == TypeKind::Aggregate || type->kind == TypeKind::Generic;
    if (!at || isOpen) return;
    const bool isArray = type->kind == TypeKind::Array;
    if (isArray && !type->hasBounds) return;
    const std::optional<std::int64_t> lower = isArray ? LiteralValue(*type->lower) : 1;
    const std::optional<std::int64_t> upper = isArray ? LiteralValue(*type->upper) : std::nullopt;
    if ((!lower || *at >= *lower) && (!upper || *at <= *upper)) return;
    diagnostics_.Report(Code::AlwaysIndeterminate, index.where,
                        "index " + std::to_string(*at) + " is outside of " + TypeText(*type),
                        "this gives '?' always");
  }

  void Operand(const Expression& operand, unsigned classes, const Unary& operation) {
    if ((rules_.ClassesOf(operand.type) & classes) != 0) return;
    diagnostics_.Report(Code::WrongOperand, operation.where,
                        std::string("'") + OperatorRowOf(operation.op).text + "' takes " +
                            ClassesText(classes) + ", not " + Shown(operand.type));
  }

  void Operands(const Operation& operation) {
    const Expression& left = *operation.left;
    const Expression& right = *operation.right;
    const unsigned l = rules_.ClassesOf(left.type);
    const unsigned r = rules_.ClassesOf(right.type);
    const unsigned both = l & r;
    switch (operation.op) {
      case Operator::Less:
      case Operator::Greater:
      case Operator::LessEqual:
      case Operator::GreaterEqual:
        Ordered(left, right, operation);
        return;
      case Operator::NotEqual:
      case Operator::Equal:
      case Operator::InstanceNotEqual:
      case Operator::InstanceEqual:
        Comparable(left, right, operation);
        return;
      case Operator::In:
        TypeNames(left, right);
        if ((r & kAggregateValue) == 0) return Wrong(operation);
        return Element(left, right, operation);
      case Operator::Like:
        if ((both & kStringValue) == 0) Wrong(operation);
        return;
      case Operator::Add:
        if ((both & (kNumericValue | kStringValue | kBinaryValue)) == 0 && ((l | r) & kAggregateValue) == 0) {
          return Wrong(operation);
        }
        return Union(operation, l, r);
      case Operator::Subtract:
        if ((both & kNumericValue) == 0 && (l & kAggregateValue) == 0) return Wrong(operation);
        return Union(operation, l, r);
      case Operator::Multiply:
        TypeNames(left, right);
        TypeNames(right, left);
        if ((both & (kNumericValue | kAggregateValue)) == 0) return Wrong(operation);
        return Union(operation, l, r);
      case Operator::Divide:
      case Operator::IntegerDivide:
      case Operator::Modulo:
      case Operator::Power:
        if ((both & kNumericValue) == 0) Wrong(operation);
        return;
      case Operator::Or:
      case Operator::Xor:
      case Operator::And:
        if ((both & kLogicalValue) == 0) Wrong(operation);
        return;
      case Operator::Combine:
        if ((both & kInstanceValue) == 0) Wrong(operation);
        return;
      case Operator::Plus:
      case Operator::Minus:
      case Operator::Not:
        return;
    }
  }

  // The elements of two aggregates, or of one and what is added to it, go together.
  void Union(const Operation& operation, unsigned left, unsigned right) {
    const TypeExpression* l = rules_.Fundamental(operation.left->type);
    const TypeExpression* r = rules_.Fundamental(operation.right->type);
    // Lists have a union, arrays have none, and neither has an intersection or difference (12.6).
    const auto isUndefined = [&](const TypeExpression* type) {
      return IsOrdered(type) && (type->kind == TypeKind::Array || operation.op != Operator::Add);
    };
    if (isUndefined(l) || isUndefined(r)) return Wrong(operation);
    if (left == kAggregateValue && right == kAggregateValue) {
      if (!l || !r || rules_.MayEqual(l->element.get(), r->element.get())) return;
      // What USEDIN gives is formally of one type.
      if ((rules_.ClassesOf(l->element.get()) & rules_.ClassesOf(r->element.get()) & kInstanceValue) != 0)
        return;
      // An aggregate may itself be the element.
      if (rules_.MayEqual(l->element.get(), r) || rules_.MayEqual(l, r->element.get())) return;
      return Wrong(operation);
    }
    if (left == kAggregateValue && l && !rules_.MayEqual(l->element.get(), operation.right->type)) {
      return Wrong(operation);
    }
    if (right == kAggregateValue && r && !rules_.MayEqual(r->element.get(), operation.left->type)) {
      Wrong(operation);
    }
  }

  static bool IsOrdered(const TypeExpression* type) {
    return type && (type->kind == TypeKind::Array || type->kind == TypeKind::List);
  }

  // Names that are looked for among those that TYPEOF gives.
  void TypeNames(const Expression& names, const Expression& types) {
    if (types.kind != ExpressionKind::BuiltinCall) return;
    if (static_cast<const BuiltinCall&>(types).builtin != Builtin::TypeOf) return;
    if (names.kind != ExpressionKind::Aggregate) return TypeName(names);
    for (const auto& element : static_cast<const AggregateInitializer&>(names).elements) {
      TypeName(*element.value);
    }
  }

  void TypeName(const Expression& expression) {
    const std::optional<std::string> name = ConstantText(expression);
    if (!name) return;
    const auto report = [&](const std::string& text) {
      diagnostics_.Report(Code::UnknownTypeName, expression.where, text, "TYPEOF never gives this name");
    };
    const std::size_t dot = name->find('.');
    const bool isLower = std::any_of(name->begin(), name->end(), [](char c) { return c >= 'a' && c <= 'z'; });
    if (isLower) return report("the name of a type is in capital letters");
    if (dot == std::string::npos) {
      if (!IsSimpleTypeName(*name)) report("'" + *name + "' is no name of the form 'SCHEMA.TYPE'");
      return;
    }
    const SchemaDeclaration* schema = model_.FindSchema(name->substr(0, dot));
    if (!schema) return;  // perhaps one that interfaces this
    const auto found = schema->scope.find(LowerCase(name->substr(dot + 1)));
    const bool isType = found != schema->scope.end() && (found->second->kind == DeclarationKind::Entity ||
                                                         found->second->kind == DeclarationKind::Type);
    if (!isType && unknownTypes_.insert(*name).second) {
      report("there is no type or entity '" + *name + "'");
    }
  }

  void Wrong(const Operation& operation) {
    diagnostics_.Report(Code::WrongOperand, operation.where,
                        std::string("'") + OperatorRowOf(operation.op).text + "' does not take " +
                            Shown(operation.left->type) + " and " + Shown(operation.right->type));
  }

  bool Comparable(const Expression& left, const Expression& right, const Expression& at) {
    if (at.kind == ExpressionKind::Operation && (IsIndeterminate(left) || IsIndeterminate(right))) {
      diagnostics_.Report(Code::AlwaysIndeterminate, at.where,
                          "a comparison with '?' is UNKNOWN, whatever the other value is",
                          "EXISTS tells whether there is a value");
    }
    if (rules_.MayEqual(left.type, right.type)) return true;
    diagnostics_.Report(Code::NotComparable, at.where,
                        Shown(left.type) + " and " + Shown(right.type) + " have no values in common");
    return false;
  }

  // Subsets of bags and sets, too, are asked for with <= and >=.
  bool Ordered(const Expression& left, const Expression& right, const Expression& at) {
    if (!Comparable(left, right, at)) return false;
    const bool isSubset = at.kind == ExpressionKind::Operation &&
                          (static_cast<const Operation&>(at).op == Operator::LessEqual ||
                           static_cast<const Operation&>(at).op == Operator::GreaterEqual);
    unsigned ordered = kNumericValue | kStringValue | kLogicalValue | kBinaryValue | kEnumerationValue;
    const bool hasSubsets =
        isSubset && !IsOrdered(rules_.Fundamental(left.type)) && !IsOrdered(rules_.Fundamental(right.type));
    if (hasSubsets) ordered |= kAggregateValue;
    if ((rules_.ClassesOf(left.type) & rules_.ClassesOf(right.type) & ordered) != 0) return true;
    diagnostics_.Report(Code::WrongOperand, at.where,
                        "values of " + Shown(left.type) + " and " + Shown(right.type) + " have no order");
    return false;
  }

  void Element(const Expression& element, const Expression& aggregate, const Expression& at) {
    const TypeExpression* type = rules_.Fundamental(aggregate.type);
    if (!type || !IsAggregate(type->kind) || rules_.MayEqual(type->element.get(), element.type)) return;
    diagnostics_.Report(Code::NotComparable, at.where,
                        Shown(element.type) + " is never an element of " + Shown(aggregate.type));
  }

  const Model& model_;
  TypeRules& rules_;
  Diagnostics& diagnostics_;
  const SchemaDeclaration* schema_ = nullptr;
  const Algorithm* algorithm_ = nullptr;
  std::set<std::string> unknownTypes_;  // named in texts, each reported once
  int repeats_ = 0;                     // around the statement
};

}  // namespace

void CheckTypes(const Model& model, TypeRules& rules, Diagnostics& diagnostics) {
  TypeChecker(model, rules, diagnostics).Run();
}

}  // namespace VELMAR::Express
