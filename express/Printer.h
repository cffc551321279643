/// @file Printer.h
/// From the model back to EXPRESS text.
#pragma once

#include <iosfwd>
#include <string>

#include "Model.h"

namespace VELMAR::Express {

/// The canonical text of all schemas of the model: words of the language in capitals, names in lower case,
/// two blanks for each level, no remarks, only the parentheses that the precedence of operators needs,
/// numbers in their shortest form. Reading it gives an equal model, and printing that the same text. The
/// model need not be resolved, but must come from texts without syntax errors.
void Print(const Model& model, std::ostream& out);

/// One schema.
void Print(const SchemaDeclaration& schema, std::ostream& out);

/// An expression on one line, as above.
std::string ExpressionText(const Expression& expression);

}  // namespace VELMAR::Express
