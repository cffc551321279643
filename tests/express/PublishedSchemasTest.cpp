// Whole published schemas, where they lie beside the repository.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>

#include "ModelDump.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

const std::filesystem::path kSchemas = std::filesystem::path(VELMAR_TEST_SHARED) / "schemas";

std::vector<std::filesystem::path> AllIn(const char* folder) {
  std::vector<std::filesystem::path> files;
  if (!std::filesystem::exists(kSchemas / folder)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(kSchemas / folder))
    files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

// Visits every expression of a schema.
class ExpressionVisitor {
 public:
  explicit ExpressionVisitor(std::function<void(const Expression&)> visit) : visit_(std::move(visit)) {}

  void Declarations(const std::vector<std::unique_ptr<Declaration>>& declarations) {
    for (const auto& declaration : declarations) Any(*declaration);
  }

 private:
  void Any(const Declaration& declaration) {
    if (declaration.kind == DeclarationKind::Type) {
      Type(&static_cast<const DefinedType&>(declaration).underlying);
      Rules(static_cast<const DefinedType&>(declaration).where);
    } else if (declaration.kind == DeclarationKind::Entity) {
      const auto& entity = static_cast<const Entity&>(declaration);
      for (const Attribute& attribute : entity.attributes) {
        Type(attribute.type.get());
        One(attribute.expression.get());
      }
      Rules(entity.where);
    } else if (declaration.kind == DeclarationKind::Constant) {
      One(static_cast<const Constant&>(declaration).expression.get());
    } else if (IsAlgorithm(declaration.kind)) {
      const auto& algorithm = static_cast<const Algorithm&>(declaration);
      Declarations(algorithm.declarations);
      for (const auto& local : algorithm.locals) One(local->initial.get());
      Statements(algorithm.statements);
      Rules(algorithm.where);
    }
  }

  void Type(const TypeExpression* type) {
    for (; type; type = type->element.get()) {
      One(type->lower.get());
      One(type->upper.get());
      One(type->width.get());
    }
  }

  void Rules(const std::vector<LabelledRule>& rules) {
    for (const LabelledRule& rule : rules) One(rule.expression.get());
  }

  void Statements(const std::vector<StatementPtr>& statements) {
    for (const StatementPtr& statement : statements) Any(statement.get());
  }

  void Any(const Statement* statement) {
    if (!statement) return;
    switch (statement->kind) {
      case StatementKind::Alias:
        One(static_cast<const AliasStatement*>(statement)->source.get());
        return Statements(static_cast<const AliasStatement*>(statement)->body);
      case StatementKind::Assignment:
        One(static_cast<const AssignmentStatement*>(statement)->target.get());
        return One(static_cast<const AssignmentStatement*>(statement)->value.get());
      case StatementKind::Case: {
        const auto* choice = static_cast<const CaseStatement*>(statement);
        One(choice->selector.get());
        for (const CaseStatement::Action& action : choice->actions) {
          for (const ExpressionPtr& label : action.labels) One(label.get());
          Any(action.statement.get());
        }
        return Any(choice->otherwise.get());
      }
      case StatementKind::Compound:
        return Statements(static_cast<const CompoundStatement*>(statement)->body);
      case StatementKind::If:
        One(static_cast<const IfStatement*>(statement)->condition.get());
        Statements(static_cast<const IfStatement*>(statement)->thenBody);
        return Statements(static_cast<const IfStatement*>(statement)->elseBody);
      case StatementKind::ProcedureCall:
        for (const ExpressionPtr& argument : static_cast<const ProcedureCallStatement*>(statement)->arguments)
          One(argument.get());
        return;
      case StatementKind::Repeat: {
        const auto* repeat = static_cast<const RepeatStatement*>(statement);
        for (const ExpressionPtr* each : {&repeat->first, &repeat->last, &repeat->increment,
                                          &repeat->whileCondition, &repeat->untilCondition}) {
          One(each->get());
        }
        return Statements(repeat->body);
      }
      case StatementKind::Return:
        return One(static_cast<const ReturnStatement*>(statement)->value.get());
      default:
        return;
    }
  }

  void One(const Expression* expression) {
    if (!expression) return;
    visit_(*expression);
    VisitOperands(*expression, [&](const Expression& operand) { One(&operand); });
  }

  std::function<void(const Expression&)> visit_;
};

// The name of the enumeration in enumeration.item is no value.
bool IsValue(const Expression& expression) {
  if (expression.kind == ExpressionKind::Indeterminate) return false;
  if (expression.kind != ExpressionKind::Name) return true;
  const Declaration* named = static_cast<const NameReference&>(expression).referent.declaration;
  return !named || named->kind != DeclarationKind::Type;
}

// All but one in a hundred; in a schema of today, one in a thousand.
TEST(PublishedSchemas, ExpressionsHaveTypes) {
  const auto files = AllIn("published");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "published");
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    std::size_t all = 0;
    std::size_t open = 0;
    ExpressionVisitor visitor([&](const Expression& expression) {
      if (!IsValue(expression)) return;
      ++all;
      open += !expression.type;
    });
    for (const auto& schema : text.model.schemas) visitor.Declarations(schema->declarations);
    EXPECT_GT(all, 9000u) << file;
    EXPECT_LT(open * (file.stem() == "ap203" ? 100 : 1000), all) << file << ": " << open << " of " << all;
    RecordProperty(file.stem().string(), std::to_string(open) + " of " + std::to_string(all));
  }
}

// Places where a published schema says what cannot be meant, by file.
const std::map<std::string, std::vector<std::string>> kDoubtful = {
    {"ap203", {"4170:29 W010", "4655:55 W011"}},
    {"ap203e2", {"5382:23 W020", "13489:25 W020"}},
    {"ap214e3", {"4259:22 W020", "10878:22 W020", "7455:21 W008", "12373:17 W010", "12489:15 W010"}},
    {"ap242e1", {"8168:30 W020", "20614:30 W020"}},
    {"ap242e2", {"12972:21 W020", "31531:21 W020", "13033:42 W015"}},
    {"ap242e3", {"13359:21 W020", "32021:21 W020"}},
    {"ap242e4", {"14819:21 W020", "34627:21 W020", "38965:44 W010"}},
    {"plib25", {"1143:48 W008", "3427:60 W008", "4767:7 W018"}},
};

std::string Place(const Diagnostic& diagnostic) {
  const Position position = diagnostic.where.file->PositionOf(diagnostic.where.offset);
  return std::to_string(position.line) + ':' + std::to_string(position.column) + ' ' +
         CatalogueRowOf(diagnostic.code).number;
}

TEST(PublishedSchemas, AreAcceptedAndWarnedOfWhatIsCommonAndOfWhatIsDoubtful) {
  const auto files = AllIn("published");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "published");
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << file;
    std::vector<std::string> doubtful;
    for (const Diagnostic& diagnostic : text.diagnostics.All()) {
      const Code common[] = {Code::UnusedLocal, Code::HiddenName, Code::InstanceComparison, Code::NoReturn,
                             Code::UnknownTypeName};
      const bool isCommon =
          std::find(std::begin(common), std::end(common), diagnostic.code) != std::end(common);
      if (!isCommon) doubtful.push_back(Place(diagnostic));
    }
    const auto expected = kDoubtful.find(file.stem().string());
    EXPECT_EQ(doubtful, expected == kDoubtful.end() ? std::vector<std::string>() : expected->second) << file;
  }
}

TEST(PublishedSchemas, PrintedTextGivesAnEqualModelAndPrintsAsItself) {
  auto files = AllIn("published");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "published");
  for (const auto& file : AllIn("constructs")) files.push_back(file);
  std::size_t printed = 0;
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    if (text.diagnostics.ErrorCount() > 0) continue;
    ++printed;
    std::ostringstream once;
    Print(text.model, once);
    const SchemaText again(once.str(), file.filename().string());
    ASSERT_EQ(again.diagnostics.ErrorCount(), 0u) << file;
    EXPECT_TRUE(ModelDump(again.model).Text() == ModelDump(text.model).Text()) << file;
    std::ostringstream twice;
    Print(again.model, twice);
    EXPECT_TRUE(twice.str() == once.str()) << file;
  }
  EXPECT_GE(printed, 8u);
}

// The places of the first messages; the schemas that are not listed are accepted.
const std::map<std::string, std::string> kRejected = {
    {"array_without_bounds", "3:7 E037"},
    {"bad_aggregate_bounds", "3:15 E010"},
    {"cyclic_inheritance", "4:8 E032"},
    {"cyclic_select", "4:18 E034"},
    {"cyclic_type", "4:6 E033"},
    {"derive_without_expression", "5:14 E016"},
    {"duplicate_attribute", "4:3 E027"},
    {"duplicate_attribute_inherited", "6:3 E027"},
    {"duplicate_entity", "4:8 E026"},
    {"empty_file", "1:1 E015"},
    {"enum_duplicate_item", "2:38 E028"},
    {"inverse_no_such_attribute", "4:20 E025"},
    {"missing_end_entity", "4:1 E012"},
    {"missing_semicolon", "2:9 E010"},
    {"no_end_schema", "3:12 E012"},
    {"non_ascii_identifier", "2:10 E001"},
    {"only_remark", "2:1 E015"},
    {"redeclare_not_specialised", "6:14 E036"},
    {"reserved_word_as_name", "2:8 E011"},
    {"supertype_expr_unknown", "2:34 E022"},
    {"undefined_supertype", "2:22 E022"},
    {"undefined_type_ref", "3:7 E021"},
    {"unterminated_remark", "2:1 E003"},
    {"unterminated_string", "3:16 E002"},
    {"use_from_unknown_schema", "2:10 E023"},
};

TEST(ConstructSchemas, AreRejectedAtTheRightPlaceOrAccepted) {
  const auto files = AllIn("constructs");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "constructs");
  std::size_t rejected = 0;
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    const auto expected = kRejected.find(file.stem().string());
    if (expected == kRejected.end()) {
      EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << file;
      continue;
    }
    ++rejected;
    ASSERT_EQ(text.diagnostics.ErrorCount(), 1u) << file;
    const Diagnostic& first = text.diagnostics.All()[0];
    EXPECT_EQ(Place(first), expected->second) << file;
  }
  EXPECT_EQ(rejected, kRejected.size());
}

}  // namespace
}  // namespace VELMAR::Express
