/// @file ReplaceFile.h
/// Writing a file whole: for the runtime library and for the programs.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <system_error>
#include <vector>

namespace VelmarFiles {

/// A growing text, in blocks that are never moved.
class TextBuffer : public std::streambuf {
 public:
  const std::vector<std::string>& Blocks() const { return blocks_; }

 private:
  static constexpr std::size_t kBlockSize = 1 << 20;

  int_type overflow(int_type character) override {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    const char text = traits_type::to_char_type(character);
    xsputn(&text, 1);
    return character;
  }
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    const auto size = static_cast<std::size_t>(length);
    if (blocks_.empty() || blocks_.back().capacity() - blocks_.back().size() < size) {
      blocks_.emplace_back().reserve(std::max(size, kBlockSize));
    }
    blocks_.back().append(text, size);
    return length;
  }

  std::vector<std::string> blocks_;
};

/// A file that cannot be opened for output; nothing has become of it. The text is the system's reason.
class CannotOpen : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

inline std::FILE* Open(const std::string& name, const char* mode) {
  std::FILE* file;
  do {
    file = std::fopen(name.c_str(), mode);
  } while (file == nullptr && errno == EINTR);
  return file;
}

/// Writes and closes `file`. Throws std::runtime_error with the system's reason where that fails.
inline void WriteAndClose(std::FILE* file, const std::vector<std::string>& text) {
  std::setvbuf(file, nullptr, _IONBF, 0);  // so that all that is counted as written has been written
  int error = 0;
  for (const std::string& block : text) {
    for (std::size_t done = 0; error == 0 && done < block.size();) {
      errno = 0;
      done += std::fwrite(block.data() + done, 1, block.size() - done, file);
      if (done == block.size()) break;
      if (errno != EINTR) error = errno == 0 ? EIO : errno;
      std::clearerr(file);
    }
  }
  if (std::fclose(file) != 0 && error == 0) error = errno;
  if (error != 0) throw std::runtime_error(std::strerror(error));
}

/// A new file beside `target`, open for output; null with errno where there can be none.
inline std::FILE* CreateBeside(const std::filesystem::path& target, std::filesystem::path& part) {
  constexpr int kTries = 100;
  constexpr std::size_t kLongestStem = 200;  // of the 255 bytes that a name may have
  const std::string stem = target.filename().string().substr(0, kLongestStem);
  std::FILE* file = nullptr;
  for (int number = 0; file == nullptr && number < kTries; ++number) {
    part = target.parent_path() / (stem + "." + std::to_string(number) + ".part");
    file = Open(part.string(), "wbx");
    if (file == nullptr && errno != EEXIST) break;
  }
  return file;
}

/// Throws the system's reason where there is one.
inline void Check(const std::error_code& error) {
  if (error) throw std::runtime_error(error.message());
}

/// Makes `text` the contents of a file, which is there whole or not at all: it is written beside its place and renamed. What
/// is no ordinary file is written to, and so is one whose folder takes no new file; a symbolic link is followed.
/// Throws CannotOpen, or std::runtime_error with the reason; an ordinary file is as it was then, unless it had to be written to.
inline void ReplaceFile(const std::string& filename, const std::vector<std::string>& text) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(filename, error);
  if (status.type() == fs::file_type::none) throw CannotOpen(error.message());
  const bool isThere = fs::exists(status);
  fs::path target = filename;
  const bool isNew = !isThere && target.has_filename() && !fs::is_symlink(fs::symlink_status(target, error));
  if (fs::is_regular_file(status) || isNew) {
    if (isThere) {  // whether it may be written is a matter of its own, not of its folder
      std::FILE* existing = Open(filename, "ab");
      if (existing == nullptr) throw CannotOpen(std::strerror(errno));
      std::fclose(existing);
      target = fs::canonical(filename, error);
      Check(error);
    }
    fs::path part;
    if (std::FILE* file = CreateBeside(target, part)) {
      try {
        WriteAndClose(file, text);
        if (isThere) {
          fs::permissions(part, status.permissions(), error);
          Check(error);
        }
        fs::rename(part, target, error);
        Check(error);
      } catch (...) {
        fs::remove(part, error);
        throw;
      }
      return;
    }
    if (!isThere) throw CannotOpen(std::strerror(errno));
    if (errno != EACCES && errno != EPERM && errno != EROFS) throw std::runtime_error(std::strerror(errno));
  }
  std::FILE* file = Open(filename, "wb");
  if (file == nullptr) throw CannotOpen(std::strerror(errno));
  try {
    WriteAndClose(file, text);
  } catch (...) {
    if (!isThere) fs::remove(filename, error);
    throw;
  }
}

}  // namespace VelmarFiles
