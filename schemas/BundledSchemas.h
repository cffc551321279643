/// @file BundledSchemas.h
/// The schema libraries that this build has, for programs that serve all of them.
#pragma once

namespace VELMAR {

/// Registers the entity types of every schema library that was chosen for the build (VELMAR_SCHEMAS).
void LoadBundledSchemas();

}  // namespace VELMAR
