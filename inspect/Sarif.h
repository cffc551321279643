/// @file Sarif.h
/// Findings for programs that show what analysers find.
#pragma once

#include <vector>

#include "Findings.h"
#include "Values.h"

namespace velmar {

/// A log of one run in the Static Analysis Results Interchange Format, version 2.1.0 (OASIS).
Json ToSarif(const std::vector<Findings>& files);

}  // namespace velmar
