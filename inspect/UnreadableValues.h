/// @file UnreadableValues.h
/// Values that can be written, but not be read again.
#pragma once

#include "Findings.h"
#include "Population.h"

namespace velmar {

/// Adds a warning where strings will be longer than a token that can be read, for their escapes.
void ReportUnreadableValues(Population& file, Findings& findings);

}  // namespace velmar
