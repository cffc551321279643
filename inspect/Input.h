/// @file Input.h
/// The files that are looked at.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmar {

/// The longest file that the library reads: 2^31 - 1 bytes.
constexpr std::uint64_t kLongestFile = 2147483647;

/// The longest token that every application on the library reads, in characters. Those that keep everything, as we do, read any.
constexpr std::size_t kLongestCommonToken = 32767;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file for reading; null with errno where that fails.
File Open(const std::string& path);

/// As std::fread; goes on where a signal came in between. Where ferror() holds behind it, errno says why.
std::size_t ReadBytes(std::FILE* file, char* bytes, std::size_t wanted);

/// Why the file cannot be read, as the end of a sentence that begins with its name; empty where it can be.
std::string WhyUnreadable(const std::string& path);

/// Throws std::runtime_error where the file cannot be read: its path, and why.
void RequireReadable(const std::string& path);

/// Throws std::runtime_error: the file cannot be read, for the reason that `error`, a value of errno, gives.
[[noreturn]] void ThrowUnreadable(const std::string& path, int error);

/// The whole file. Throws std::runtime_error where it cannot be read.
std::string ContentsOf(const std::string& path);

/// Whether the file begins with a byte that begins the UTF-8 byte order mark, but not with the whole mark.
/// Throws std::runtime_error where it cannot be read.
bool HasDamagedByteOrderMark(const std::string& path);
constexpr const char* kDamagedByteOrderMark = "damaged byte order mark: EF is not followed by BB BF";

/// The file, for a Scanner, which would end the process at a damaged byte order mark. Throws std::runtime_error where there is one, or
/// the file cannot be opened.
File OpenPart21(const std::string& path);

/// The size in bytes. Throws std::runtime_error where the file cannot be asked.
std::uint64_t FileSize(const std::string& path);

/// A place in a file; line and column count from 1. Columns are bytes, or characters in a file with a byte
/// order mark.
struct Place {
  int line;
  int column;
};

/// A piece of a source line around a place, and the position of the place in it.
struct Excerpt {
  std::string text;
  std::size_t caret;
};

/// One excerpt for each place; the places are sorted. Reads the file once, up to the last of them. Lines end
/// at LF, at CR LF and at a CR alone.
std::vector<Excerpt> ReadExcerpts(const std::string& path, const std::vector<Place>& places);

/// The text in a form that does no harm to a terminal, and the characters that stand before the place. A blank stands for each
/// control character, "?" for bytes that are no UTF-8.
std::pair<std::string, std::size_t> Printable(const Excerpt& excerpt);

/// Whether the bytes are well-formed UTF-8, but for sequences that are cut off at either end.
bool IsUtf8(const std::string& bytes);

}  // namespace velmar
