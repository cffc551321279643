/// @file ExpressParser.h
/// From tokens to declarations (ISO 10303-11, annex A).
#pragma once

#include <memory>
#include <string>

#include "Diagnostics.h"
#include "Model.h"

namespace VELMAR::Express {

/// Adds a file's schemas to the model. Takes over the source.
///
/// Everything is read: what cannot be is reported and passed over up to the next declaration, or within an
/// entity up to the next attribute, within an algorithm up to the next statement. Linear; types and
/// statements nest at most 200 levels deep, expressions 500.
void ParseFile(Model& model, SourceFile source, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
