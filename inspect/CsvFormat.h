/// @file CsvFormat.h
/// Exchange files as tables of comma-separated values (docs/csv.md).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Progress.h"
#include "RecordTypes.h"

namespace velmar {

/// The cells as RFC 4180 has them in a line, without its end.
std::string CsvLine(const std::vector<std::string>& cells);

/// Why no folder of tables can be made under this name, as the end of a sentence that begins with it; empty where one can,
/// as far as can be told without touching anything.
std::string WhyNoFolder(const std::string& folder);

/// Makes a folder with a file for each entity type of a Part 21 text that a population wrote, and one for its header. The
/// folder is there with all files or not at all; an empty one of that name is replaced. Throws std::runtime_error with the
/// reason where that fails. The tables are made in memory. Returns their size in bytes.
std::uint64_t WriteCsv(const std::string& part21, RecordTypes& types, const std::string& folder, const Progress& progress = {});

}  // namespace velmar
