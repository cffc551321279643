/// @file Fuzzing.h
/// What the fuzz targets have in common.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "ExpFile.h"
#include "ExpUtilities.h"

namespace velmar_fuzz {

/// Ends the process, which makes the input a finding, unless the property holds.
inline void Require(bool holds, const char* property) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", property);
  std::abort();
}

/// As above, for two texts that must be equal.
inline void RequireEqual(const std::string& a, const std::string& b, const char* property) {
  if (a == b) return;
  std::fprintf(stderr, "---- one\n%s\n---- other\n%s\n", a.c_str(), b.c_str());
  Require(false, property);
}

/// Whether a '#' is followed by more than five digits: the table of instances would take gigabytes of address space, as
/// documented, and walks over it most of the time.
inline bool HasHighNumbers(const std::string& text) {
  std::size_t digits = 0;
  bool isNumber = false;
  for (const char c : text) {
    isNumber = c == '#' || (isNumber && c >= '0' && c <= '9');
    digits = isNumber && c != '#' ? digits + 1 : 0;
    if (digits > 5) return true;
  }
  return false;
}

/// Whether one of the header's three records stands in the text again, in the data for instance: of several, one of no
/// particular place is the header's, as documented.
inline bool RepeatsHeaderRecords(std::string text) {
  for (char& c : text) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"}) {
    const std::size_t first = text.find(type);
    if (first != std::string::npos && text.find(type, first + 1) != std::string::npos) return true;
  }
  return false;
}

/// What one of the operations of ExpFile that write gives, with `$` for values that have no text. Empty where
/// something cannot be written: a string that ends within a UTF-8 sequence, a select without a value in the header.
inline std::string TextOf(VELMAR::ExpFile& file, void (VELMAR::ExpFile::*write)(std::ostream&) = &VELMAR::ExpFile::Write) {
  for (int number = 0; number <= file.GetMaxEntityNumber(); ++number) {
    if (VELMAR::ExpEntity* entity = file.GetEntity(number)) VELMAR::MarkUnsetValues(*entity);
  }
  std::ostringstream text;
  try {
    (file.*write)(text);
  } catch (const std::string&) {
    return "";
  }
  return text.str();
}

/// The text that the population of a text gives.
inline std::string Rewritten(const std::string& text) {
  std::istringstream in(text);
  VELMAR::ExpFile file;
  file.Read(in);
  return TextOf(file);
}

/// Once it has been written and read, what a text holds is written the same again. Texts with high numbers are passed over.
/// So are texts with several records for the header of one kind.
inline void RequireSettled(const std::string& text) {
  if (HasHighNumbers(text) || RepeatsHeaderRecords(text)) return;
  const std::string written = Rewritten(text);
  if (written.empty() || RepeatsHeaderRecords(written)) return;
  // The first text may hold what is not read: infinite numbers, `$` within lists, and lists with a type name within lists. What was
  // infinite may become such a `$` itself.
  const std::string settled = Rewritten(Rewritten(written));
  if (settled.empty()) return;
  RequireEqual(Rewritten(settled), settled, "what was written and read is written the same again");
}

}  // namespace velmar_fuzz
