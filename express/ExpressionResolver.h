/// @file ExpressionResolver.h
/// From the names in expressions and statements to what they stand for (ISO 10303-11, clauses 10, 12 and 13).
#pragma once

#include "Diagnostics.h"
#include "Model.h"
#include "TypeRules.h"

namespace VELMAR::Express {

/// Resolves the names in all expressions and statements, and the types of all expressions as far as the
/// language gives them. Part of Resolve, which must have resolved the declarations before. A declaration that
/// lost a part to a syntax error is left alone: what it lost would be reported again and again.
void ResolveExpressions(Model& model, TypeRules& rules, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
