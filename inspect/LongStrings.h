/// @file LongStrings.h
/// Strings that not every program reads, once they are written.
#pragma once

#include "Findings.h"
#include "Population.h"

namespace velmar {

/// Adds a warning where strings will be longer than kLongestCommonToken with their escapes.
void ReportLongStrings(Population& file, Findings& findings);

}  // namespace velmar
