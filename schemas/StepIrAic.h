/// @file StepIrAic.h
/// The schema STEP_IR_AIC: where the registry looks for types that a file's own schema does not have.
///
/// Exchange files use types of the integrated resources, and of other application protocols, that the schema
/// which they name does not list: STYLED_ITEM in files of AP203, MECHANICAL_CONTEXT in files of AP214. The
/// types of STEP_IR_AIC are those of AP242 under a second name, so the objects are of the classes in Ap242.h.
#pragma once

#include <list>
#include <string>

#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR::StepIrAic {

/// Registers the entity types of STEP_IR_AIC, which loading the library does, too. A call makes sure that the
/// library is linked and loaded; any further one does nothing.
VELMAR_API void Load();

/// Appends to `out` the instances of a type and of all its subtypes, in the order of their numbers, each
/// once, where GetEntities(out, typeName, true) stays within the subtypes that the schema of the type lists:
/// a REPRESENTATION_ITEM of AP203 lists no STYLED_ITEM. Here the subtypes that STEP_IR_AIC lists, and the
/// schema of `file` does not define, are subtypes as well. The case of the name does not matter; an unknown
/// one gives nothing.
VELMAR_API void GetEntitiesWithSubtypes(ExpAbstractObjectProvider& file, std::list<ExpEntity*>& out,
                                        const std::string& typeName);

}  // namespace VELMAR::StepIrAic
