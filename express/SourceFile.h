/// @file SourceFile.h
/// The text of one EXPRESS file and the way from a place in it to line and column.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace VELMAR::Express {

/// A place in a text as people count: lines and columns from 1, a column being one character, not one byte.
struct Position {
  int line;
  int column;
};

/// One EXPRESS file in memory. Everything that is said about the file refers to it by byte offsets.
class SourceFile {
 public:
  /// Takes over `text`; `name` is how messages call the file. A byte order mark is no part of the text.
  /// Throws std::length_error for texts of 4 GB and above.
  SourceFile(std::string name, std::string text);

  /// Reads a file. Throws std::system_error with the system's reason where it cannot be read.
  static SourceFile Read(const std::string& path);

  const std::string& Name() const { return name_; }
  std::string_view Text() const { return text_; }
  /// The bytes [offset, offset + length).
  std::string_view Text(std::uint32_t offset, std::uint32_t length) const {
    return std::string_view(text_).substr(offset, length);
  }
  /// Logarithmic in the number of lines. An offset at or behind the end is the place behind the last
  /// character.
  Position PositionOf(std::uint32_t offset) const;
  /// The line that holds `offset`, without its line end (LF or CR LF).
  std::string_view LineOf(std::uint32_t offset) const;

 private:
  std::uint32_t LineStart(std::uint32_t offset) const;

  std::string name_;
  std::string text_;
  std::vector<std::uint32_t> lineStarts_;
};

}  // namespace VELMAR::Express
