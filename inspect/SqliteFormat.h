/// @file SqliteFormat.h
/// Exchange files as SQLite databases (docs/sqlite.md).
#pragma once

#include <cstdint>
#include <string>

#include "Progress.h"
#include "RecordTypes.h"

namespace velmar {

/// Makes a database of a Part 21 text that a population wrote: a table for each entity type, one for each attribute that is an
/// aggregate, and views of types with their subtypes. What `path` holds is replaced by a complete database or not at all.
///
/// Throws std::runtime_error with the reason where that fails. Linear in the length of the text but for the indexes; of the
/// database, some 64 MB are in memory. Returns its size in bytes.
std::uint64_t WriteSqlite(const std::string& part21, RecordTypes& types, const std::string& path, const Progress& progress = {});

}  // namespace velmar
