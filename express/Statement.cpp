#include "Statement.h"

#include <algorithm>

namespace VELMAR::Express {

bool Leaves(const Statement& statement) {
  switch (statement.kind) {
    case StatementKind::Escape:
    case StatementKind::Return:
    case StatementKind::Skip:
      return true;
    case StatementKind::Alias:
      return Leaves(static_cast<const AliasStatement&>(statement).body);
    case StatementKind::Compound:
      return Leaves(static_cast<const CompoundStatement&>(statement).body);
    case StatementKind::Case: {
      const auto& choice = static_cast<const CaseStatement&>(statement);
      return choice.otherwise && Leaves(*choice.otherwise) &&
             std::all_of(choice.actions.begin(), choice.actions.end(),
                         [](const CaseStatement::Action& action) { return Leaves(*action.statement); });
    }
    case StatementKind::If: {
      const auto& branch = static_cast<const IfStatement&>(statement);
      return Leaves(branch.thenBody) && Leaves(branch.elseBody);
    }
    case StatementKind::Assignment:
    case StatementKind::Null:
    case StatementKind::ProcedureCall:
    case StatementKind::Repeat:
      break;
  }
  return false;
}

bool Leaves(const std::vector<StatementPtr>& statements) {
  return std::any_of(statements.begin(), statements.end(),
                     [](const StatementPtr& statement) { return Leaves(*statement); });
}

}  // namespace VELMAR::Express
