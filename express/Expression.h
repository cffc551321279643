/// @file Expression.h
/// The nodes of types and expressions (ISO 10303-11, clauses 8, 12, 14 and 15).
///
/// The parser builds them; the resolver sets the members marked "resolved". A node's kind tells its class, so
/// that a switch over the kind and a static_cast visit an expression. Expressions are trees of at most
/// kDeepestExpression levels: recursion over them is safe.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Diagnostics.h"

namespace VELMAR::Express {

struct Attribute;
struct Declaration;
struct DefinedType;
struct Entity;
struct SchemaDeclaration;
struct TypeExpression;

constexpr int kDeepestExpression = 500;

/// The text with the letters A to Z in lower case.
std::string LowerCase(std::string_view text);

/// A name as it stands somewhere in a text.
struct Name {
  std::string text;  ///< lower case; empty where there is no name
  Location where;
};

/// The name as messages show it.
inline std::string Quoted(const Name& name) { return "'" + name.text + "'"; }

enum class ExpressionKind {
  Integer,
  Real,
  String,
  Binary,
  Logical,
  Indeterminate,
  Self,
  BuiltinConstant,
  Name,
  Call,
  BuiltinCall,
  Member,
  Group,
  Index,
  Unary,
  Operation,
  Interval,
  Query,
  Aggregate
};

/// A node of an expression.
struct Expression {
  Expression(ExpressionKind expressionKind, Location place) : kind(expressionKind), where(place) {}
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;
  virtual ~Expression() = default;

  const ExpressionKind kind;
  std::uint16_t depth = 1;               ///< levels of nodes, itself included
  Location where;                        ///< the operator of an operation; else where the node's own text is
  const TypeExpression* type = nullptr;  ///< resolved; null where the language leaves the type open
};

using ExpressionPtr = std::unique_ptr<Expression>;

// ---- declarations -------------------------------------------------------------------------------

enum class DeclarationKind { Type, Entity, Constant, Function, Procedure, Rule, SubtypeConstraint, Variable };

/// The kind as messages show it: "a type", "an entity".
const char* KindText(DeclarationKind kind);

/// Anything that a schema or an algorithm declares under a name.
struct Declaration {
  Declaration(DeclarationKind declarationKind, Name declarationName, SchemaDeclaration* owner)
      : kind(declarationKind), name(std::move(declarationName)), schema(owner) {}
  Declaration(const Declaration&) = delete;
  Declaration& operator=(const Declaration&) = delete;
  virtual ~Declaration() = default;

  const DeclarationKind kind;
  Name name;
  SchemaDeclaration* schema;  ///< the schema that declares it
  bool damaged = false;       ///< a syntax error lost a part of it
};

// ---- types --------------------------------------------------------------------------------------

enum class TypeKind {
  Number,
  Real,
  Integer,
  String,
  Boolean,
  Logical,
  Binary,
  Array,
  Bag,
  List,
  Set,
  Aggregate,
  Enumeration,
  Select,
  Generic,
  GenericEntity,
  Named
};

/// An item of an enumeration, or of a select.
struct TypeItem {
  Name name;
  Declaration* declaration =
      nullptr;  ///< resolved; the selected type or entity, null for items of an enumeration
};

/// The right-hand side of a type declaration, or the type of an attribute (ISO 10303-11, clause 8).
struct TypeExpression {
  TypeKind kind = TypeKind::Named;
  Location where;

  Name name;                           ///< Named: the type or entity
  Declaration* declaration = nullptr;  ///< Named, resolved: a DefinedType or an Entity

  ExpressionPtr width;  ///< String, Binary: the width; Real: the precision; null where none is given
  bool fixed = false;   ///< String, Binary: FIXED

  bool hasBounds = false;                   ///< aggregates
  ExpressionPtr lower, upper;               ///< aggregates with bounds
  bool optionalElements = false;            ///< Array: OPTIONAL elements
  bool uniqueElements = false;              ///< Array, List: UNIQUE elements
  std::shared_ptr<TypeExpression> element;  ///< aggregates
  Name label;                               ///< Aggregate, Generic, GenericEntity: the type label, if any

  bool extensible = false;      ///< Enumeration, Select: EXTENSIBLE
  bool genericEntity = false;   ///< Select: GENERIC_ENTITY
  Name basedOn;                 ///< Enumeration, Select: BASED_ON
  DefinedType* base = nullptr;  ///< resolved BASED_ON
  std::vector<TypeItem> items;  ///< Enumeration, Select: those that this declaration gives itself
};

bool IsAggregate(TypeKind kind);
bool IsNumeric(TypeKind kind);

enum class VariableRole { Parameter, Local, Repeat, Query, Alias };

/// What an algorithm or an expression names for its own use: a formal parameter, a local variable, the
/// variable of a REPEAT, QUERY or ALIAS.
struct Variable : Declaration {
  Variable(Name variableName, SchemaDeclaration* owner, VariableRole variableRole)
      : Declaration(DeclarationKind::Variable, std::move(variableName), owner), role(variableRole) {}

  const VariableRole role;
  bool isVar = false;                         ///< Parameter of a procedure: VAR
  std::shared_ptr<TypeExpression> type;       ///< Parameter, Local; shared by the names of one declaration
  std::shared_ptr<Expression> initial;        ///< Local: the initial value, or null; shared likewise
  const TypeExpression* valueType = nullptr;  ///< resolved: the type of its values; null where it is open
  bool used = false;                          ///< resolved: a name refers to it
};

// ---- primaries ----------------------------------------------------------------------------------

struct IntegerLiteral : Expression {
  IntegerLiteral(Location place, std::int64_t literal)
      : Expression(ExpressionKind::Integer, place), value(literal) {}
  std::int64_t value;
};

struct RealLiteral : Expression {
  RealLiteral(Location place, double literal) : Expression(ExpressionKind::Real, place), value(literal) {}
  double value;
};

/// A simple or an encoded string literal.
struct StringLiteral : Expression {
  StringLiteral(Location place, std::string literal, bool isEncoded)
      : Expression(ExpressionKind::String, place), value(std::move(literal)), encoded(isEncoded) {}
  std::string value;  ///< the characters; those of an encoded literal in UTF-8
  bool encoded;
};

struct BinaryLiteral : Expression {
  BinaryLiteral(Location place, std::string literal)
      : Expression(ExpressionKind::Binary, place), bits(std::move(literal)) {}
  std::string bits;  ///< the digits 0 and 1
};

enum class LogicalValue { False, True, Unknown };

struct LogicalLiteral : Expression {
  LogicalLiteral(Location place, LogicalValue literal)
      : Expression(ExpressionKind::Logical, place), value(literal) {}
  LogicalValue value;
};

/// The built-in constant ?.
struct IndeterminateLiteral : Expression {
  explicit IndeterminateLiteral(Location place) : Expression(ExpressionKind::Indeterminate, place) {}
};

struct SelfReference : Expression {
  explicit SelfReference(Location place) : Expression(ExpressionKind::Self, place) {}
};

/// The constants, functions and procedures of the language (ISO 10303-11, clauses 14 to 16).
enum class Builtin {
  Abs,
  Acos,
  Asin,
  Atan,
  BLength,
  Cos,
  Exists,
  Exp,
  Format,
  HiBound,
  HiIndex,
  Length,
  LoBound,
  Log,
  Log2,
  Log10,
  LoIndex,
  Nvl,
  Odd,
  RolesOf,
  Sin,
  SizeOf,
  Sqrt,
  Tan,
  TypeOf,
  UsedIn,
  Value,
  ValueIn,
  ValueUnique,
  ConstE,
  Pi,
  False,
  True,
  Unknown,
  Insert,
  Remove,
  kCount
};

/// What a Builtin is.
struct BuiltinRow {
  const char* name;  ///< in capitals
  enum { Function, Constant, Procedure } kind;
  int arguments;
};

const BuiltinRow& BuiltinRowOf(Builtin builtin);

/// The builtin of this name in capitals; kCount where there is none.
Builtin FindBuiltin(const std::string& name);

/// CONST_E or PI.
struct BuiltinConstant : Expression {
  BuiltinConstant(Location place, Builtin constant)
      : Expression(ExpressionKind::BuiltinConstant, place), builtin(constant) {}
  Builtin builtin;
};

/// What a name stands for. One of the pointers is set, or `enumeration` with `item`; none where the name is
/// unknown.
struct Referent {
  Declaration* declaration = nullptr;        ///< a variable, constant, function, entity or type
  const Attribute* attribute = nullptr;      ///< an attribute
  const DefinedType* enumeration = nullptr;  ///< the type of an enumeration item
  int item = -1;                             ///< its index in AllItems(enumeration->underlying)
};

/// A name by itself: a variable, constant, attribute, enumeration item, population, function without
/// arguments.
struct NameReference : Expression {
  explicit NameReference(Name reference)
      : Expression(ExpressionKind::Name, reference.where), name(std::move(reference)) {}
  Name name;
  Referent referent;  ///< resolved
};

/// name (arguments): the call of a function or the construction of an entity.
struct Call : Expression {
  explicit Call(Name callee) : Expression(ExpressionKind::Call, callee.where), name(std::move(callee)) {}
  Name name;
  std::vector<ExpressionPtr> arguments;
  Declaration* declaration = nullptr;  ///< resolved: a function or an Entity
};

struct BuiltinCall : Expression {
  BuiltinCall(Location place, Builtin function)
      : Expression(ExpressionKind::BuiltinCall, place), builtin(function) {}
  Builtin builtin;
  std::vector<ExpressionPtr> arguments;
};

// ---- qualified factors --------------------------------------------------------------------------

/// operand.name: an attribute of an instance, or an item of the enumeration that the operand names.
struct Member : Expression {
  explicit Member(Name member) : Expression(ExpressionKind::Member, member.where), name(std::move(member)) {}
  ExpressionPtr operand;
  Name name;
  Referent referent;  ///< resolved; null where the operand's type leaves open which attribute it is
};

/// operand\entity: the values that the instance has as one of its entities.
struct Group : Expression {
  explicit Group(Name group) : Expression(ExpressionKind::Group, group.where), name(std::move(group)) {}
  ExpressionPtr operand;
  Name name;
  Entity* entity = nullptr;  ///< resolved
};

/// operand[first] or operand[first : last].
struct Index : Expression {
  explicit Index(Location place) : Expression(ExpressionKind::Index, place) {}
  ExpressionPtr operand;
  ExpressionPtr first;
  ExpressionPtr last;  ///< null for one element
};

// ---- operations ---------------------------------------------------------------------------------

enum class Operator {
  Less,
  Greater,
  LessEqual,
  GreaterEqual,
  NotEqual,
  Equal,
  InstanceNotEqual,
  InstanceEqual,
  In,
  Like,
  Add,
  Subtract,
  Or,
  Xor,
  Multiply,
  Divide,
  IntegerDivide,
  Modulo,
  And,
  Combine,  ///< ||
  Power,
  Plus,   ///< with one operand
  Minus,  ///< with one operand
  Not     ///< with one operand
};

/// How an operator is written, and how close it binds: 1 for comparisons, 2 as +, 3 as *, 4 as **, 5 with one
/// operand.
struct OperatorRow {
  const char* text;
  int precedence;
};

const OperatorRow& OperatorRowOf(Operator op);

struct Unary : Expression {
  Unary(Location place, Operator unaryOperator)
      : Expression(ExpressionKind::Unary, place), op(unaryOperator) {}
  Operator op;
  ExpressionPtr operand;
};

struct Operation : Expression {
  Operation(Location place, Operator binaryOperator)
      : Expression(ExpressionKind::Operation, place), op(binaryOperator) {}
  Operator op;
  ExpressionPtr left, right;
};

/// { low < item <= high }.
struct Interval : Expression {
  explicit Interval(Location place) : Expression(ExpressionKind::Interval, place) {}
  ExpressionPtr low, item, high;
  Operator lowOperator = Operator::Less;   ///< Less or LessEqual
  Operator highOperator = Operator::Less;  ///< Less or LessEqual
};

/// QUERY (variable <* source | condition).
struct Query : Expression {
  explicit Query(Location place) : Expression(ExpressionKind::Query, place) {}
  std::unique_ptr<Variable> variable;
  ExpressionPtr source;
  ExpressionPtr condition;
};

/// [element : repetition, ...].
struct AggregateInitializer : Expression {
  explicit AggregateInitializer(Location place) : Expression(ExpressionKind::Aggregate, place) {}
  struct Element {
    ExpressionPtr value;
    ExpressionPtr repetition;  ///< null without one
  };
  std::vector<Element> elements;
};

/// What the qualifiers of an expression are applied to; the expression itself where there are none.
const Expression& RootOf(const Expression& expression);

/// The text that string literals make, one or several joined with +; none of other expressions.
std::optional<std::string> ConstantText(const Expression& expression);

/// Calls visit(operand) for each expression directly below a node, in the order of the text.
template <class Visit>
void VisitOperands(const Expression& expression, Visit visit) {
  const auto one = [&](const ExpressionPtr& operand) {
    if (operand) visit(*operand);
  };
  const auto all = [&](const std::vector<ExpressionPtr>& operands) {
    for (const ExpressionPtr& operand : operands) one(operand);
  };
  switch (expression.kind) {
    case ExpressionKind::Call:
      return all(static_cast<const Call&>(expression).arguments);
    case ExpressionKind::BuiltinCall:
      return all(static_cast<const BuiltinCall&>(expression).arguments);
    case ExpressionKind::Member:
      return one(static_cast<const Member&>(expression).operand);
    case ExpressionKind::Group:
      return one(static_cast<const Group&>(expression).operand);
    case ExpressionKind::Index:
      one(static_cast<const Index&>(expression).operand);
      one(static_cast<const Index&>(expression).first);
      return one(static_cast<const Index&>(expression).last);
    case ExpressionKind::Unary:
      return one(static_cast<const Unary&>(expression).operand);
    case ExpressionKind::Operation:
      one(static_cast<const Operation&>(expression).left);
      return one(static_cast<const Operation&>(expression).right);
    case ExpressionKind::Interval:
      one(static_cast<const Interval&>(expression).low);
      one(static_cast<const Interval&>(expression).item);
      return one(static_cast<const Interval&>(expression).high);
    case ExpressionKind::Query:
      one(static_cast<const Query&>(expression).source);
      return one(static_cast<const Query&>(expression).condition);
    case ExpressionKind::Aggregate:
      for (const auto& element : static_cast<const AggregateInitializer&>(expression).elements) {
        one(element.value);
        one(element.repetition);
      }
      return;
    default:
      return;
  }
}

}  // namespace VELMAR::Express
