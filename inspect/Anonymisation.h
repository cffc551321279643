/// @file Anonymisation.h
/// Takes the names and texts out of a file that is to be given away, and leaves all else as it stands.
#pragma once

#include <cstddef>
#include <string>

#include "Extraction.h"
#include "Progress.h"

namespace velmar {

/// A file without what tells whose it is.
struct Anonymised {
  Text text;
  std::size_t strings = 0;      ///< replaced
  std::size_t texts = 0;        ///< different ones among them
  std::size_t comments = 0;     ///< replaced
  std::size_t masked = 0;       ///< places where words or strings are out of place: letters became x, digits 0
  bool hadTextBefore = false;   ///< what stood before ISO-10303-21; is gone
  bool hadTextBehind = false;   ///< and behind END-ISO-10303-21;
};

/// Reads a file and replaces
/// - each string that is not empty or blank by `text_1`, `text_2`, ...: equal ones alike. Those of FILE_SCHEMA stay, the
///   implementation level of FILE_DESCRIPTION, and words of the standards (IsPublicText); the time stamp becomes 1970-01-01;
/// - comments by empty ones with as many lines, user-defined names by `!USER_NAME_1`, ..., the names of anchors and the targets
///   of references to other files by `<text_1>`, ..., the digits of binary values but the first by 0;
/// - letters by x and digits by 0 where a string or comment has no end, in words that are no part of the grammar where they
///   stand, and in signatures.
/// Everything else stays to the byte, mistakes included: a file that cannot be read is anonymised as well as any.
///
/// The file may be JSON (docs/json_format.md); the text is Part 21 then, too.
///
/// Throws std::runtime_error where the file cannot be read. Linear in its length, of which it needs three times the memory.
Anonymised Anonymise(const std::string& path, const Progress& progress = {});

/// Whether a string, as it stands in a file, says the same in all files and has a meaning for those who read them: 'mechanical',
/// 'DEGREE', 'red'. The case of letters does not matter.
bool IsPublicText(const std::string& text);

}  // namespace velmar
