/// @file Checking.h
/// Checks a file against its schema.
#pragma once

#include <string>

#include "DictionaryLoader.h"
#include "Findings.h"
#include "Progress.h"

namespace velmar {

/// Adds what is wrong with the syntax of a file; its instances are not kept. Whether it has tokens to be looked at: not behind
/// a damaged byte order mark. Throws std::runtime_error where it cannot be read.
bool CheckSyntax(const std::string& path, Findings& findings, const Progress& progress = {});

/// All that is wrong with a file: its syntax, and where it does not follow its schema. The population is not kept.
///
/// Throws std::runtime_error where the file, or the text of the schema, cannot be read or has errors. Linear in the length of
/// the file; the memory is a few bytes for each instance.
Findings CheckFile(const std::string& path, const SchemaChoice& options = {}, const Progress& progress = {});

}  // namespace velmar
