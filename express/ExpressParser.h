/// @file ExpressParser.h
/// From tokens to declarations (ISO 10303-11, annex A).
#pragma once

#include <memory>
#include <string>

#include "Diagnostics.h"
#include "Model.h"

namespace VELMAR::Express {

/// Adds a file's schemas to the model. Takes over the file.
///
/// Everything is read: what cannot be is reported and passed over up to the next declaration, or within an
/// entity up to the next attribute. Expressions and the bodies of algorithms are kept as ranges of tokens
/// whose brackets and END_ words have been matched. Linear; nothing nests deeper on the stack than 200
/// levels.
void ParseFile(Model& model, SourceFile file, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
