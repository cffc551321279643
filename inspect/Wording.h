/// @file Wording.h
/// How numbers and the texts of files are put into sentences.
#pragma once

#include <cstdint>
#include <string>

namespace velmar {

/// 1234567 as "1,234,567".
std::string Grouped(std::uint64_t number);

/// "1 instance", "2,000 instances".
std::string Counted(std::uint64_t number, const std::string& noun);

/// The text as it may go to a terminal: a blank for each control character.
std::string Printable(const std::string& text);

/// Whether the text has no character but blanks.
bool IsBlank(const std::string& text);

}  // namespace velmar
