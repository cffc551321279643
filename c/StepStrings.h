/// @file StepStrings.h
/// The string encoding of Part 21 files without temporary copies, for the library's own use.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace VELMAR {

/// Whether a character has the same form in a file string and in the model, in both directions: 0x20 to 0x7F
/// without the apostrophe and the backslash.
inline bool IsPlainStepCharacter(unsigned char c) { return c >= 0x20 && c < 0x80 && c != '\'' && c != '\\'; }

/// The length of the longest plain beginning of the `length` bytes at `text`. Eight bytes a step.
inline std::size_t PlainStepPrefix(const char* text, std::size_t length) {
  constexpr std::uint64_t kOnes = 0x0101010101010101u;
  constexpr std::uint64_t kTops = 0x8080808080808080u;
  std::size_t plain = 0;
  for (; length - plain >= 8; plain += 8) {
    std::uint64_t word;
    std::memcpy(&word, text + plain, sizeof word);
    const std::uint64_t apostrophe = word ^ (kOnes * '\'');
    const std::uint64_t backslash = word ^ (kOnes * '\\');
    // A subtraction sets the top bit of a byte that was below 0x20, or zero after the exclusive or. A borrow
    // can mark a byte above such a one as well, never a byte in a word without one.
    const std::uint64_t special = (word | (word - kOnes * 0x20) | (apostrophe - kOnes) | (backslash - kOnes));
    if (special & kTops) break;
  }
  while (plain < length && IsPlainStepCharacter(static_cast<unsigned char>(text[plain]))) ++plain;
  return plain;
}

/// Whether all of the `length` bytes at `text` are plain, so that decoding and encoding would give the same
/// bytes.
inline bool IsPlainStepText(const char* text, std::size_t length) {
  return PlainStepPrefix(text, length) == length;
}

/// Appends the UTF-8 bytes of one code point as Utf8Encode gives them.
void AppendUtf8(unsigned int codepoint, std::string& out);

/// Appends what ConvertUtf8ToSTEPString gives. Throws as it does; `out` ends before the broken sequence then.
void AppendUtf8AsStepText(const std::string& utf8, std::string& out);

}  // namespace VELMAR
