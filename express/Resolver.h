/// @file Resolver.h
/// Connects names with their declarations and checks what the grammar cannot.
#pragma once

#include "Diagnostics.h"
#include "Model.h"

namespace VELMAR::Express {

/// Completes all schemas of the model: visible names, supertypes and subtypes, types, redeclarations,
/// inverses.
///
/// What is wrong is reported, and the pointer in question stays null or the entry is left out, so that the
/// model is free of cycles afterwards whatever the text said. Call it once, after the last file.
void Resolve(Model& model, Diagnostics& diagnostics);

}  // namespace VELMAR::Express
