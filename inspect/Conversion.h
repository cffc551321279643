/// @file Conversion.h
/// Writing what was read.
#pragma once

#include <cstdint>
#include <string>

#include "Findings.h"
#include "Population.h"
#include "Progress.h"
#include "Reading.h"

namespace velmar {

/// Why no file can be written under this name, as the end of a sentence that begins with it; empty where one
/// can, as far as can be told without touching anything.
std::string WhyUnwritable(const std::string& path);

/// Why what was read is not written to `out`; empty where it is.
std::string WhyNotWritten(Reading& in, const std::string& out);

/// Writes the population and returns the number of bytes. What `out` holds is replaced by a complete file or
/// not at all. Adds an error where that fails. Tells `progress` how much is written, as far as it can be known: that which was read
/// had `expectedSize` bytes.
std::uint64_t WriteAndReport(Population& file, const std::string& out, Findings& findings, const Progress& progress,
                             std::uint64_t expectedSize);

}  // namespace velmar
