/// @file JsonFormat.h
/// Exchange files as JSON (docs/json_format.md), without loss in both directions.
#pragma once

#include <cstdio>
#include <ostream>
#include <stdexcept>
#include <string>

#include "Input.h"
#include "Progress.h"
#include "RecordTypes.h"

namespace velmar {

/// Writes what a Part 21 text holds as JSON, an instance a line. `part21` is what a population wrote; attributes have the names
/// that `types` gives them. What the two texts hold is the same: ReadJson gives a text with the same values. Linear in
/// the length of the text. Throws std::runtime_error for a value that has no place in JSON: a name with bytes that are no UTF-8.
void WriteJson(const std::string& part21, RecordTypes& types, std::ostream& out, const Progress& progress = {});

/// Why a text is not such JSON.
class JsonError : public std::runtime_error {
 public:
  JsonError(Place where, const std::string& text) : std::runtime_error(text), where_(where) {}
  /// Where it was noticed: the last character of what is wrong. Columns are bytes.
  Place Where() const { return where_; }

 private:
  Place where_;
};

/// The Part 21 text of a file that WriteJson wrote, or that somebody has made to the same description. Records of
/// the header and instances stand on the lines on which they begin in the JSON, wherever that has a line for each.
///
/// Every value arrives in the text as it stands; nothing is left out. Throws JsonError at the first mistake, and
/// std::runtime_error where the file cannot be read. Linear in the length of the file, of which a block is held. `read`, which may be
/// null, is told of the bytes that have been read.
std::string ReadJson(std::FILE* file, ReportedProgress* read = nullptr);

}  // namespace velmar
