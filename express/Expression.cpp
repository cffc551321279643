#include "Expression.h"

#include <algorithm>
#include <string_view>

namespace VELMAR::Express {
namespace {

constexpr BuiltinRow kBuiltins[] = {
    {"ABS", BuiltinRow::Function, 1},          {"ACOS", BuiltinRow::Function, 1},
    {"ASIN", BuiltinRow::Function, 1},         {"ATAN", BuiltinRow::Function, 2},
    {"BLENGTH", BuiltinRow::Function, 1},      {"COS", BuiltinRow::Function, 1},
    {"EXISTS", BuiltinRow::Function, 1},       {"EXP", BuiltinRow::Function, 1},
    {"FORMAT", BuiltinRow::Function, 2},       {"HIBOUND", BuiltinRow::Function, 1},
    {"HIINDEX", BuiltinRow::Function, 1},      {"LENGTH", BuiltinRow::Function, 1},
    {"LOBOUND", BuiltinRow::Function, 1},      {"LOG", BuiltinRow::Function, 1},
    {"LOG2", BuiltinRow::Function, 1},         {"LOG10", BuiltinRow::Function, 1},
    {"LOINDEX", BuiltinRow::Function, 1},      {"NVL", BuiltinRow::Function, 2},
    {"ODD", BuiltinRow::Function, 1},          {"ROLESOF", BuiltinRow::Function, 1},
    {"SIN", BuiltinRow::Function, 1},          {"SIZEOF", BuiltinRow::Function, 1},
    {"SQRT", BuiltinRow::Function, 1},         {"TAN", BuiltinRow::Function, 1},
    {"TYPEOF", BuiltinRow::Function, 1},       {"USEDIN", BuiltinRow::Function, 2},
    {"VALUE", BuiltinRow::Function, 1},        {"VALUE_IN", BuiltinRow::Function, 2},
    {"VALUE_UNIQUE", BuiltinRow::Function, 1}, {"CONST_E", BuiltinRow::Constant, 0},
    {"PI", BuiltinRow::Constant, 0},           {"FALSE", BuiltinRow::Constant, 0},
    {"TRUE", BuiltinRow::Constant, 0},         {"UNKNOWN", BuiltinRow::Constant, 0},
    {"INSERT", BuiltinRow::Procedure, 3},      {"REMOVE", BuiltinRow::Procedure, 2},
};
static_assert(sizeof kBuiltins / sizeof kBuiltins[0] == static_cast<std::size_t>(Builtin::kCount),
              "one row for each builtin");

constexpr OperatorRow kOperators[] = {
    {"<", 1},   {">", 1},    {"<=", 1},  {">=", 1}, {"<>", 1}, {"=", 1},   {":<>:", 1}, {":=:", 1},
    {"IN", 1},  {"LIKE", 1}, {"+", 2},   {"-", 2},  {"OR", 2}, {"XOR", 2}, {"*", 3},    {"/", 3},
    {"DIV", 3}, {"MOD", 3},  {"AND", 3}, {"||", 3}, {"**", 4}, {"+", 5},   {"-", 5},    {"NOT", 5},
};

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

std::optional<std::string> ConstantText(const Expression& expression) {
  if (expression.kind == ExpressionKind::String) return static_cast<const StringLiteral&>(expression).value;
  if (expression.kind != ExpressionKind::Operation) return std::nullopt;
  const auto& sum = static_cast<const Operation&>(expression);
  if (sum.op != Operator::Add) return std::nullopt;
  const std::optional<std::string> left = ConstantText(*sum.left);
  const std::optional<std::string> right = left ? ConstantText(*sum.right) : std::nullopt;
  return right ? std::optional<std::string>(*left + *right) : std::nullopt;
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

const Expression& RootOf(const Expression& expression) {
  const Expression* at = &expression;
  for (;;) {
    switch (at->kind) {
      case ExpressionKind::Member:
        at = static_cast<const Member*>(at)->operand.get();
        break;
      case ExpressionKind::Group:
        at = static_cast<const Group*>(at)->operand.get();
        break;
      case ExpressionKind::Index:
        at = static_cast<const Index*>(at)->operand.get();
        break;
      default:
        return *at;
    }
  }
}

bool IsAggregate(TypeKind kind) { return kind >= TypeKind::Array && kind <= TypeKind::Aggregate; }

bool IsNumeric(TypeKind kind) { return kind >= TypeKind::Number && kind <= TypeKind::Integer; }

const BuiltinRow& BuiltinRowOf(Builtin builtin) { return kBuiltins[static_cast<std::size_t>(builtin)]; }

Builtin FindBuiltin(const std::string& name) {
  const auto found = std::find_if(std::begin(kBuiltins), std::end(kBuiltins),
                                  [&](const BuiltinRow& row) { return name == row.name; });
  return static_cast<Builtin>(found - std::begin(kBuiltins));
}

const OperatorRow& OperatorRowOf(Operator op) { return kOperators[static_cast<std::size_t>(op)]; }

}  // namespace VELMAR::Express
