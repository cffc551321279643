/// @file Statement.h
/// The nodes of statements (ISO 10303-11, clause 13).
#pragma once

#include <memory>
#include <vector>

#include "Expression.h"

namespace VELMAR::Express {

enum class StatementKind {
  Alias,
  Assignment,
  Case,
  Compound,
  Escape,
  If,
  Null,
  ProcedureCall,
  Repeat,
  Return,
  Skip
};

/// A statement. Escape, Null and Skip have no class of their own. Nests at most 200 levels deep.
struct Statement {
  Statement(StatementKind statementKind, Location place) : kind(statementKind), where(place) {}
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  virtual ~Statement() = default;

  const StatementKind kind;
  Location where;  ///< its first word
};

using StatementPtr = std::unique_ptr<Statement>;

/// ALIAS variable FOR source; body END_ALIAS.
struct AliasStatement : Statement {
  explicit AliasStatement(Location place) : Statement(StatementKind::Alias, place) {}
  std::unique_ptr<Variable> variable;
  ExpressionPtr source;
  std::vector<StatementPtr> body;
};

/// target := value.
struct AssignmentStatement : Statement {
  explicit AssignmentStatement(Location place) : Statement(StatementKind::Assignment, place) {}
  ExpressionPtr target;  ///< a NameReference with or without qualifiers
  ExpressionPtr value;
};

/// CASE selector OF actions OTHERWISE : otherwise END_CASE.
struct CaseStatement : Statement {
  explicit CaseStatement(Location place) : Statement(StatementKind::Case, place) {}
  struct Action {
    std::vector<ExpressionPtr> labels;
    StatementPtr statement;
  };
  ExpressionPtr selector;
  std::vector<Action> actions;
  StatementPtr otherwise;  ///< null without OTHERWISE
};

/// BEGIN body END.
struct CompoundStatement : Statement {
  explicit CompoundStatement(Location place) : Statement(StatementKind::Compound, place) {}
  std::vector<StatementPtr> body;
};

struct IfStatement : Statement {
  explicit IfStatement(Location place) : Statement(StatementKind::If, place) {}
  ExpressionPtr condition;
  std::vector<StatementPtr> thenBody;
  std::vector<StatementPtr> elseBody;
};

struct ProcedureCallStatement : Statement {
  explicit ProcedureCallStatement(Location place) : Statement(StatementKind::ProcedureCall, place) {}
  Name name;
  Builtin builtin = Builtin::kCount;   ///< Insert, Remove, or kCount for a declared procedure
  Declaration* declaration = nullptr;  ///< resolved
  std::vector<ExpressionPtr> arguments;
};

/// REPEAT variable := first TO last BY increment WHILE whileCondition UNTIL untilCondition; body END_REPEAT.
struct RepeatStatement : Statement {
  explicit RepeatStatement(Location place) : Statement(StatementKind::Repeat, place) {}
  std::unique_ptr<Variable> variable;  ///< null without increment control
  ExpressionPtr first, last, increment;
  ExpressionPtr whileCondition;
  ExpressionPtr untilCondition;
  std::vector<StatementPtr> body;
};

struct ReturnStatement : Statement {
  explicit ReturnStatement(Location place) : Statement(StatementKind::Return, place) {}
  ExpressionPtr value;  ///< null in procedures and rules
};

/// Whether what stands behind the statement is never reached: it returns, escapes or skips, or all that it
/// may do does. A REPEAT is taken to end.
bool Leaves(const Statement& statement);

/// Whether the end of the statements is never reached.
bool Leaves(const std::vector<StatementPtr>& statements);

}  // namespace VELMAR::Express
