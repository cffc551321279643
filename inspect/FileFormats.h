/// @file FileFormats.h
/// The formats that files are read from and written to, by their names.
#pragma once

#include <optional>
#include <string>

namespace velmar {

enum class FileFormat { Part21, Json, Csv, Sqlite };

/// "part21", "json", "csv", "sqlite".
const char* Name(FileFormat format);

/// The format of this name, in any case.
std::optional<FileFormat> FormatNamed(const std::string& name);

/// The format of a file by the end of its name, in any case: `.json`; `.csv`; `.sqlite`, `.sqlite3`, `.db`; Part 21 for
/// `.stp`, `.step`, `.p21` and all others.
FileFormat FormatOf(const std::string& path);

}  // namespace velmar
