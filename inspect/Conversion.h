/// @file Conversion.h
/// Writing what was read.
#pragma once

#include <cstdint>
#include <string>

#include "FileFormats.h"
#include "Findings.h"
#include "Population.h"
#include "Progress.h"
#include "Reading.h"

namespace velmar {

/// Why nothing can be written under this name, as the end of a sentence that begins with it; empty where it
/// can, as far as can be told without touching anything.
std::string WhyUnwritable(const std::string& path, FileFormat format);

/// Why what was read is not written to `out`; empty where it is.
std::string WhyNotWritten(Reading& in, const std::string& out);

/// Writes the population and returns the number of bytes. What `out` holds is replaced by a complete file, of CSV by a complete
/// folder, or not at all. Adds an error where that fails. All formats but Part 21 empty the population: its instances make
/// room for their text. Tells `progress` how much is written, as far as it can be known: that which was read had `expectedSize`
/// bytes.
std::uint64_t WriteAndReport(Population& file, FileFormat format, const std::string& out, Findings& findings,
                             const Progress& progress, std::uint64_t expectedSize);

}  // namespace velmar
