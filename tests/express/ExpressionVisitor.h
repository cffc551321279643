/// @file ExpressionVisitor.h
/// Walks through the expressions of a model, for the tests.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Model.h"

namespace VELMAR::Express {

/// Visits every expression of a model, operands behind the operations that they belong to.
class ExpressionVisitor {
 public:
  explicit ExpressionVisitor(std::function<void(const Expression&)> visit) : visit_(std::move(visit)) {}

  void Visit(const Model& model) {
    for (const auto& schema : model.schemas) Declarations(schema->declarations);
  }

 private:
  void Declarations(const std::vector<std::unique_ptr<Declaration>>& declarations) {
    for (const auto& declaration : declarations) Any(*declaration);
  }

  void Any(const Declaration& declaration) {
    if (declaration.kind == DeclarationKind::Type) {
      Type(&static_cast<const DefinedType&>(declaration).underlying);
      Rules(static_cast<const DefinedType&>(declaration).where);
    } else if (declaration.kind == DeclarationKind::Entity) {
      const auto& entity = static_cast<const Entity&>(declaration);
      for (const Attribute& attribute : entity.attributes) {
        Type(attribute.type.get());
        One(attribute.expression.get());
        One(attribute.inverseLower.get());
        One(attribute.inverseUpper.get());
      }
      Rules(entity.where);
    } else if (declaration.kind == DeclarationKind::Constant) {
      Type(&static_cast<const Constant&>(declaration).type);
      One(static_cast<const Constant&>(declaration).expression.get());
    } else if (IsAlgorithm(declaration.kind)) {
      const auto& algorithm = static_cast<const Algorithm&>(declaration);
      Declarations(algorithm.declarations);
      for (const auto& parameter : algorithm.parameters) Type(parameter->type.get());
      Type(&algorithm.returnType);
      for (const auto& local : algorithm.locals) {
        Type(local->type.get());
        One(local->initial.get());
      }
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

}  // namespace VELMAR::Express
