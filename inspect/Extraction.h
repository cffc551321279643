/// @file Extraction.h
/// Parts of files, and files put together, as text: what they hold is written as it stands in them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Progress.h"

namespace velmar {

/// A text in pieces.
using Text = std::vector<std::string>;

/// The smallest file that holds these instances: the header of the file, the instances, and all that they refer to, in the order
/// of the file. Of a number that is used twice, the later instance is taken. The file may be JSON (docs/json_format.md); the text is Part 21.
///
/// Throws std::runtime_error where the file cannot be read, has no DATA section, or has not one of the instances.
Text Extract(const std::string& path, const std::vector<std::int64_t>& numbers, const Progress& progress = {});

/// One file with the instances of all: the header and the numbers are those of the first; the numbers of each other one
/// follow those of the one before. Files may be JSON, too.
///
/// Throws std::runtime_error where a file cannot be read, has no DATA section, or another schema than the first, and where
/// numbers become too high.
Text Merge(const std::vector<std::string>& paths, const Progress& progress = {});

/// Makes a text the contents of a file, which is there whole or not at all. Throws std::runtime_error where that fails.
void WriteText(const Text& text, const std::string& path);

}  // namespace velmar
