/// @file StepStringRules.h
/// The rules for the characters of a string (ISO 10303-21, string encodings).
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace velmar {

/// The first mistake in a string.
struct StringMistake {
  std::size_t offset;  ///< in bytes, from the first character
  bool isEscape;       ///< of an escape; else of bytes that are not UTF-8
  std::string text;
};

/// `text` is what stands between the apostrophes.
std::optional<StringMistake> FindStringMistake(const std::string& text);

/// Whether the bytes are UTF-8 from their first to their last (ISO/IEC 10646).
bool IsWellFormedUtf8(const std::string& bytes);

}  // namespace velmar
