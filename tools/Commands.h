/// @file Commands.h
/// One function per command of the program. Each prints data to standard output and messages to standard
/// error, and returns the exit status.
#pragma once

#include <string>

#include "Population.h"

namespace velmar {

/// Prints what the file says about itself, and how many instances of which types it holds.
int Info(const std::string& path, const ReadingOptions& options);

/// Reads one file and writes what was read to another. What `out` holds is replaced by a complete file or not
/// at all.
int Convert(const std::string& in, const std::string& out, const ReadingOptions& options);

}  // namespace velmar
