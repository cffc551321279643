/// @file TypeChecker.h
/// Whether the values in expressions and statements have types that make sense (ISO 10303-11, clauses 9, 12,
/// 13).
#pragma once

#include "Diagnostics.h"
#include "Model.h"
#include "TypeRules.h"

namespace VELMAR::Express {

/// Checks the types of all operands, conditions, indices, arguments, assigned and returned values, and of
/// redeclared attributes. EXPRESS decides much only at run time: an error is what no value can make right.
/// Part of Resolve, behind ResolveExpressions. Leaves alone what lost a part to a syntax error.
void CheckTypes(const Model& model, TypeRules& rules, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
