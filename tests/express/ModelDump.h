/// @file ModelDump.h
/// A model as text for comparing two of them: every member of every node in brackets, names with what they
/// lead to, expressions with their types; no places. It shares no code with the Printer, whose texts it
/// judges.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "Model.h"

namespace VELMAR::Express {

class ModelDump {
 public:
  explicit ModelDump(const Model& model) {
    for (const auto& schema : model.schemas) Schema(*schema);
  }

  std::string Text() const { return out_.str(); }

 private:
  // [head rest...], a line for each bracket.
  template <class Inner>
  void Node(const char* head, int kind, Inner inner) {
    out_ << '\n' << std::string(depth_++, ' ') << '[' << head << ' ' << kind;
    inner();
    out_ << ']';
    --depth_;
  }

  void Put(const std::string& text) { out_ << ' ' << text.size() << ':' << text; }
  void Put(const Name& name) { Put(name.text); }
  void Put(bool flag) { out_ << (flag ? " yes" : " no"); }

  void To(const Declaration* declaration) {
    if (!declaration) {
      out_ << " -";
    } else {
      out_ << " >" << static_cast<int>(declaration->kind) << declaration->name.text << '@'
           << declaration->schema->name.text;
    }
  }

  void To(const Attribute* attribute) {
    if (!attribute) {
      out_ << " -";
    } else {
      out_ << " >" << attribute->owner->name.text << '.' << attribute->name.text;
    }
  }

  void Schema(const SchemaDeclaration& schema) {
    Node("schema", 0, [&] {
      Put(schema.name);
      Put(schema.version);
      Put(schema.isVersionEncoded);
      for (const Interface& interface : schema.interfaces) {
        Node("interface", interface.isUse, [&] {
          Put(interface.schemaName);
          Put(interface.schema != nullptr);
          for (const InterfaceItem& item : interface.items) {
            Put(item.name);
            Put(item.alias);
          }
        });
      }
      for (const auto& [name, declaration] : schema.scope) {
        Put(name);
        To(declaration);
      }
      for (const auto& declaration : schema.declarations) Any(*declaration);
    });
  }

  void Any(const Declaration& declaration) {
    Node("declaration", static_cast<int>(declaration.kind), [&] {
      Put(declaration.name);
      switch (declaration.kind) {
        case DeclarationKind::Type:
          Type(&static_cast<const DefinedType&>(declaration).underlying);
          return Rules(static_cast<const DefinedType&>(declaration).where);
        case DeclarationKind::Entity:
          return EntityBody(static_cast<const Entity&>(declaration));
        case DeclarationKind::Constant:
          Type(&static_cast<const Constant&>(declaration).type);
          return Any(static_cast<const Constant&>(declaration).expression.get());
        case DeclarationKind::Function:
        case DeclarationKind::Procedure:
        case DeclarationKind::Rule:
          return AlgorithmBody(static_cast<const Algorithm&>(declaration));
        case DeclarationKind::SubtypeConstraint: {
          const auto& constraint = static_cast<const SubtypeConstraint&>(declaration);
          Put(constraint.entityName);
          To(constraint.entity);
          Put(constraint.isAbstract);
          for (const SupertypeExpression& entity : constraint.totalOver) Supertypes(entity);
          if (constraint.expression) Supertypes(*constraint.expression);
          return;
        }
        case DeclarationKind::Variable: {
          const auto& variable = static_cast<const Variable&>(declaration);
          out_ << ' ' << static_cast<int>(variable.role);
          Put(variable.isVar);
          Put(variable.used);
          Type(variable.type.get());
          Type(variable.valueType);
          return Any(variable.initial.get());
        }
      }
    });
  }

  void Rules(const std::vector<LabelledRule>& rules) {
    for (const LabelledRule& rule : rules) {
      Node("rule", 0, [&] {
        Put(rule.label);
        Any(rule.expression.get());
      });
    }
  }

  void EntityBody(const Entity& entity) {
    Put(entity.isAbstract);
    Put(entity.isAbstractSupertype);
    for (const Name& name : entity.supertypeNames) Put(name);
    for (const Entity* supertype : entity.supertypes) To(supertype);
    for (const Entity* subtype : entity.subtypes) To(subtype);
    if (entity.supertypeExpression) Supertypes(*entity.supertypeExpression);
    for (const Attribute& attribute : entity.attributes) Any(attribute);
    for (const UniqueRule& rule : entity.unique) {
      Node("unique", 0, [&] {
        Put(rule.label);
        for (const UniqueAttribute& attribute : rule.attributes) {
          Put(attribute.group);
          Put(attribute.name);
          To(attribute.attribute);
        }
      });
    }
    Rules(entity.where);
  }

  void Any(const Attribute& attribute) {
    Node("attribute", static_cast<int>(attribute.kind), [&] {
      Put(attribute.name);
      Put(attribute.optional);
      Put(attribute.redeclared);
      Put(attribute.renamed);
      Put(attribute.redeclaredEntity);
      Put(attribute.redeclaredAttribute);
      To(attribute.original);
      To(attribute.inherited);
      Type(attribute.type.get());
      Any(attribute.expression.get());
      out_ << ' ' << static_cast<int>(attribute.inverseKind);
      Put(attribute.inverseHasBounds);
      Any(attribute.inverseLower.get());
      Any(attribute.inverseUpper.get());
      Put(attribute.inverseEntity);
      Put(attribute.inverseGroup);
      Put(attribute.inverseAttribute);
      To(attribute.inverseEntityDeclaration);
      To(attribute.inverseAttributeDeclaration);
    });
  }

  void Supertypes(const SupertypeExpression& expression) {
    Node("supertypes", static_cast<int>(expression.kind), [&] {
      Put(expression.name);
      To(expression.entity);
      for (const SupertypeExpression& operand : expression.operands) Supertypes(operand);
    });
  }

  void AlgorithmBody(const Algorithm& algorithm) {
    for (const auto& parameter : algorithm.parameters) Any(*parameter);
    Type(&algorithm.returnType);
    for (const Name& name : algorithm.populations) Put(name);
    for (const Entity* entity : algorithm.populationEntities) To(entity);
    for (const auto& declaration : algorithm.declarations) Any(*declaration);
    for (const auto& local : algorithm.locals) Any(*local);
    Statements(algorithm.statements);
    Rules(algorithm.where);
  }

  void Type(const TypeExpression* type) {
    if (!type) {
      out_ << " -";
      return;
    }
    Node("type", static_cast<int>(type->kind), [&] {
      Put(type->name);
      To(type->declaration);
      Any(type->width.get());
      Put(type->fixed);
      Put(type->hasBounds);
      Any(type->lower.get());
      Any(type->upper.get());
      Put(type->optionalElements);
      Put(type->uniqueElements);
      Put(type->label);
      Put(type->extensible);
      Put(type->genericEntity);
      Put(type->basedOn);
      To(type->base);
      for (const TypeItem& item : type->items) {
        Put(item.name);
        To(item.declaration);
      }
      if (type->element) Type(type->element.get());
    });
  }

  // The type of an expression, without the bounds of aggregates.
  void ShortType(const TypeExpression* type) {
    for (; type; type = type->element.get()) {
      out_ << ' ' << static_cast<int>(type->kind);
      To(type->declaration);
    }
  }

  void Any(const Referent& referent) {
    To(referent.declaration);
    To(referent.attribute);
    To(referent.enumeration);
    out_ << ' ' << referent.item;
  }

  void All(const std::vector<ExpressionPtr>& expressions) {
    for (const ExpressionPtr& expression : expressions) Any(expression.get());
  }

  void Any(const Expression* expression) {
    if (!expression) {
      out_ << " -";
      return;
    }
    Node("expression", static_cast<int>(expression->kind), [&] {
      ShortType(expression->type);
      Own(*expression);
      VisitOperands(*expression, [&](const Expression& operand) { Any(&operand); });
    });
  }

  // What a node has besides its operands.
  void Own(const Expression& expression) {
    switch (expression.kind) {
      case ExpressionKind::Integer:
        out_ << ' ' << static_cast<const IntegerLiteral&>(expression).value;
        return;
      case ExpressionKind::Real:
        out_ << ' ' << std::hexfloat << static_cast<const RealLiteral&>(expression).value;
        return;
      case ExpressionKind::String:
        Put(static_cast<const StringLiteral&>(expression).value);
        return Put(static_cast<const StringLiteral&>(expression).encoded);
      case ExpressionKind::Binary:
        return Put(static_cast<const BinaryLiteral&>(expression).bits);
      case ExpressionKind::Logical:
        out_ << ' ' << static_cast<int>(static_cast<const LogicalLiteral&>(expression).value);
        return;
      case ExpressionKind::BuiltinConstant:
        out_ << ' ' << static_cast<int>(static_cast<const BuiltinConstant&>(expression).builtin);
        return;
      case ExpressionKind::Name:
        Put(static_cast<const NameReference&>(expression).name);
        return Any(static_cast<const NameReference&>(expression).referent);
      case ExpressionKind::Call:
        Put(static_cast<const Call&>(expression).name);
        return To(static_cast<const Call&>(expression).declaration);
      case ExpressionKind::BuiltinCall:
        out_ << ' ' << static_cast<int>(static_cast<const BuiltinCall&>(expression).builtin);
        return;
      case ExpressionKind::Member:
        Put(static_cast<const Member&>(expression).name);
        return Any(static_cast<const Member&>(expression).referent);
      case ExpressionKind::Group:
        Put(static_cast<const Group&>(expression).name);
        return To(static_cast<const Group&>(expression).entity);
      case ExpressionKind::Index:
        return Put(static_cast<const Index&>(expression).last != nullptr);
      case ExpressionKind::Unary:
        out_ << ' ' << static_cast<int>(static_cast<const Unary&>(expression).op);
        return;
      case ExpressionKind::Operation:
        out_ << ' ' << static_cast<int>(static_cast<const Operation&>(expression).op);
        return;
      case ExpressionKind::Interval:
        out_ << ' ' << static_cast<int>(static_cast<const Interval&>(expression).lowOperator) << ' '
             << static_cast<int>(static_cast<const Interval&>(expression).highOperator);
        return;
      case ExpressionKind::Query:
        return Any(*static_cast<const Query&>(expression).variable);
      case ExpressionKind::Aggregate:
        for (const auto& element : static_cast<const AggregateInitializer&>(expression).elements) {
          Put(element.repetition != nullptr);
        }
        return;
      case ExpressionKind::Indeterminate:
      case ExpressionKind::Self:
        return;
    }
  }

  void Statements(const std::vector<StatementPtr>& statements) {
    Node("body", static_cast<int>(statements.size()), [&] {
      for (const StatementPtr& statement : statements) Any(*statement);
    });
  }

  void Any(const Statement& statement) {
    Node("statement", static_cast<int>(statement.kind), [&] {
      switch (statement.kind) {
        case StatementKind::Alias:
          Any(*static_cast<const AliasStatement&>(statement).variable);
          Any(static_cast<const AliasStatement&>(statement).source.get());
          return Statements(static_cast<const AliasStatement&>(statement).body);
        case StatementKind::Assignment:
          Any(static_cast<const AssignmentStatement&>(statement).target.get());
          return Any(static_cast<const AssignmentStatement&>(statement).value.get());
        case StatementKind::Case: {
          const auto& choice = static_cast<const CaseStatement&>(statement);
          Any(choice.selector.get());
          for (const CaseStatement::Action& action : choice.actions) {
            Node("action", static_cast<int>(action.labels.size()), [&] {
              All(action.labels);
              Any(*action.statement);
            });
          }
          if (choice.otherwise) Any(*choice.otherwise);
          return;
        }
        case StatementKind::Compound:
          return Statements(static_cast<const CompoundStatement&>(statement).body);
        case StatementKind::If:
          Any(static_cast<const IfStatement&>(statement).condition.get());
          Statements(static_cast<const IfStatement&>(statement).thenBody);
          return Statements(static_cast<const IfStatement&>(statement).elseBody);
        case StatementKind::ProcedureCall: {
          const auto& call = static_cast<const ProcedureCallStatement&>(statement);
          Put(call.name);
          out_ << ' ' << static_cast<int>(call.builtin);
          To(call.declaration);
          return All(call.arguments);
        }
        case StatementKind::Repeat: {
          const auto& repeat = static_cast<const RepeatStatement&>(statement);
          if (repeat.variable) Any(*repeat.variable);
          for (const ExpressionPtr* each : {&repeat.first, &repeat.last, &repeat.increment,
                                            &repeat.whileCondition, &repeat.untilCondition}) {
            Any(each->get());
          }
          return Statements(repeat.body);
        }
        case StatementKind::Return:
          return Any(static_cast<const ReturnStatement&>(statement).value.get());
        case StatementKind::Escape:
        case StatementKind::Null:
        case StatementKind::Skip:
          return;
      }
    });
  }

  std::ostringstream out_;
  std::size_t depth_ = 0;
};

}  // namespace VELMAR::Express
