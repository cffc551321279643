// Every name in an expression leads to its declaration, and every expression has a type, where the language
// does not leave them open. Over the schemas of the tests, and over published ones where they lie beside the
// repository.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <set>

#include "ExpressionVisitor.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

bool IsOpen(const Expression& expression) {
  const TypeExpression* type = expression.type ? Underlying(*expression.type) : nullptr;
  return !type || type->kind == TypeKind::Generic || type->kind == TypeKind::GenericEntity ||
         type->kind == TypeKind::Select;
}

// Of an item that several enumerations have, with nothing that tells which (W002).
bool IsAmbiguousItem(const Referent& referent) {
  return !referent.declaration && !referent.attribute && !referent.enumeration;
}

// Why the language leaves the type of the expression open; empty where it does not.
std::string WhyWithoutType(const Expression& expression) {
  switch (expression.kind) {
    case ExpressionKind::Indeterminate:
      return "? is of every type";
    case ExpressionKind::Name: {
      const Referent& referent = static_cast<const NameReference&>(expression).referent;
      const Declaration* named = referent.declaration;
      if (IsAmbiguousItem(referent)) return "item of several enumerations";
      if (referent.attribute) return "attributes of one name that share no type";
      if (named && named->kind == DeclarationKind::Type) return "enumeration in front of its item";
      const bool isVariable = named && named->kind == DeclarationKind::Variable;
      if (isVariable && !static_cast<const Variable&>(*named).type) return "variable for what is open";
      return "";
    }
    case ExpressionKind::Member: {
      const auto& member = static_cast<const Member&>(expression);
      if (IsOpen(*member.operand)) return "attribute of what is open";
      return !member.referent.attribute ? "attributes of subtypes that share no type" : "";
    }
    case ExpressionKind::Index:
      return IsOpen(*static_cast<const Index&>(expression).operand) ? "element of what is open" : "";
    case ExpressionKind::Query:
      return IsOpen(*static_cast<const Query&>(expression).source) ? "elements of what is open" : "";
    case ExpressionKind::Operation: {
      const auto& operation = static_cast<const Operation&>(expression);
      const bool isSum = operation.op == Operator::Add || operation.op == Operator::Subtract ||
                         operation.op == Operator::Multiply;
      const bool isOpen = IsOpen(*operation.left) || IsOpen(*operation.right);
      return isSum && isOpen ? "sum, difference or product of what is open" : "";
    }
    case ExpressionKind::BuiltinCall: {
      const auto& call = static_cast<const BuiltinCall&>(expression);
      return call.builtin == Builtin::Nvl && IsOpen(*call.arguments[0]) && IsOpen(*call.arguments[1])
                 ? "NVL of what is open"
                 : "";
    }
    default:
      return "";
  }
}

// Why the language leaves open what the name in the expression refers to; empty where it does not.
std::string WhyWithoutDeclaration(const Expression& expression) {
  switch (expression.kind) {
    case ExpressionKind::Name:
      return IsAmbiguousItem(static_cast<const NameReference&>(expression).referent)
                 ? "item of several enumerations"
                 : "";
    case ExpressionKind::Member: {
      const auto& member = static_cast<const Member&>(expression);
      if (IsOpen(*member.operand)) return "attribute of what is open";
      return Underlying(*member.operand->type)->kind == TypeKind::Named ? "attribute of several subtypes"
                                                                        : "";
    }
    default:
      return "";
  }
}

bool HasDeclaration(const Expression& expression) {
  const auto isSet = [](const Referent& referent) {
    return referent.declaration || referent.attribute || referent.enumeration;
  };
  switch (expression.kind) {
    case ExpressionKind::Name:
      return isSet(static_cast<const NameReference&>(expression).referent);
    case ExpressionKind::Member:
      return isSet(static_cast<const Member&>(expression).referent);
    case ExpressionKind::Call:
      return static_cast<const Call&>(expression).declaration != nullptr;
    case ExpressionKind::Group:
      return static_cast<const Group&>(expression).entity != nullptr;
    default:
      return true;
  }
}

using Counts = std::map<std::string, std::size_t>;

struct Openness {
  std::size_t all = 0;
  Counts types;         // by reason, the expressions without type
  Counts declarations;  // by reason, the names without declaration
};

std::string Place(const Expression& expression) {
  const Position position = expression.where.file->PositionOf(expression.where.offset);
  return expression.where.file->Name() + ':' + std::to_string(position.line) + ':' +
         std::to_string(position.column);
}

// Fails for every expression that has no type, and for every name that has no declaration, without a reason.
Openness OpennessOf(const SchemaText& text) {
  Openness found;
  ExpressionVisitor visitor([&](const Expression& expression) {
    ++found.all;
    if (!expression.type) {
      const std::string why = WhyWithoutType(expression);
      EXPECT_NE(why, "") << Place(expression) << ": no type";
      ++found.types[why];
    }
    if (!HasDeclaration(expression)) {
      const std::string why = WhyWithoutDeclaration(expression);
      EXPECT_NE(why, "") << Place(expression) << ": no declaration";
      ++found.declarations[why];
    }
  });
  visitor.Visit(text.model);
  return found;
}

std::vector<std::unique_ptr<SchemaText>> AcceptedIn(const std::filesystem::path& folder) {
  std::vector<std::unique_ptr<SchemaText>> texts;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".exp") continue;
    const std::string name = entry.path().filename().string();
    auto text = std::make_unique<SchemaText>(ContentOf(entry.path().string()), name);
    if (text->diagnostics.ErrorCount() == 0) texts.push_back(std::move(text));
  }
  return texts;
}

std::set<std::string> Reasons(const Counts& counts) {
  std::set<std::string> reasons;
  for (const auto& [reason, count] : counts) reasons.insert(reason);
  return reasons;
}

TEST(ExpressionTypes, AreOpenForTheReasonsOfTheLanguageOnly) {
  Openness all;
  for (const auto& text : AcceptedIn(VELMAR_TEST_DATA)) {
    const Openness one = OpennessOf(*text);
    for (const auto& [reason, count] : one.types) all.types[reason] += count;
    for (const auto& [reason, count] : one.declarations) all.declarations[reason] += count;
  }
  // Each of the reasons has an example among the schemas.
  EXPECT_EQ(
      Reasons(all.types),
      (std::set<std::string>{
          "? is of every type", "item of several enumerations", "attributes of one name that share no type",
          "enumeration in front of its item", "variable for what is open", "attribute of what is open",
          "attributes of subtypes that share no type", "element of what is open", "elements of what is open",
          "sum, difference or product of what is open", "NVL of what is open"}));
  EXPECT_EQ(Reasons(all.declarations),
            (std::set<std::string>{"item of several enumerations", "attribute of what is open",
                                   "attribute of several subtypes"}));
}

TEST(ExpressionTypes, OfOtherSchemasAreOpenForTheReasonsOfTheLanguageOnly) {
  const std::filesystem::path schemas = std::filesystem::path(VELMAR_TEST_SHARED) / "schemas";
  if (!std::filesystem::exists(schemas)) GTEST_SKIP() << "no folder " << schemas;
  for (const char* folder : {"constructs", "published"}) {
    for (const auto& text : AcceptedIn(schemas / folder)) {
      const std::string name = text->model.schemas.front()->name.text;
      const Openness found = OpennessOf(*text);
      std::size_t open = 0;
      for (const auto& [reason, count] : found.types) {
        const bool isValue = reason != "? is of every type" && reason != "enumeration in front of its item";
        if (isValue) open += count;
      }
      // What is open at all is rare: no rule of a schema says much about values that may be anything.
      EXPECT_LE(open * 100, found.all) << name;
      RecordProperty(name, std::to_string(open) + " of " + std::to_string(found.all));
    }
  }
}

}  // namespace
}  // namespace VELMAR::Express
