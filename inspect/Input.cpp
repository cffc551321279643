#include "Input.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "Wording.h"

namespace velmar {

std::size_t ReadBytes(std::FILE* file, char* bytes, std::size_t wanted) {
  std::size_t count = 0;
  do {
    if (std::ferror(file) != 0) std::clearerr(file);
    count += std::fread(bytes + count, 1, wanted - count, file);
  } while (count < wanted && std::ferror(file) != 0 && errno == EINTR);
  return count;
}

namespace {

// How many columns of a line an excerpt shows, and how many of them at most before its place: enough to
// recognise the place, little enough for one row of a terminal.
constexpr std::size_t kWidth = 100;
constexpr std::size_t kBefore = 60;

// Hands out the bytes of a file, of which the line ends CR and CR LF come out as LF.
class LineReader {
 public:
  // cppcheck-suppress uninitMemberVar ; the block holds what fread has put there
  explicit LineReader(FILE* file) : file_(file) {}

  int Get() {
    int c = Raw();
    if (c == '\n' && afterCr_) c = Raw();
    afterCr_ = c == '\r';
    return afterCr_ ? '\n' : c;
  }

 private:
  int Raw() {
    if (at_ == end_) {
      end_ = ReadBytes(file_, block_, sizeof block_);
      at_ = 0;
      if (end_ == 0) return EOF;
    }
    return static_cast<unsigned char>(block_[at_++]);
  }

  FILE* file_;
  char block_[65536];
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  bool afterCr_ = false;
};

// Cuts the pieces of one line out of the stream of its bytes, for the places on it in the order of their
// columns.
class LineCutter {
 public:
  LineCutter(bool characters, std::vector<Excerpt>& excerpts)
      : characters_(characters), excerpts_(excerpts) {}

  void Add(int column) {
    const std::size_t at = static_cast<std::size_t>(column);
    pending_.push_back({excerpts_.size(), at, at > kBefore ? at - kBefore : 1, false});
    excerpts_.push_back({"", 0});
  }

  void Byte(char c) {
    if (first_ == pending_.size()) return;
    const bool continues = characters_ && (static_cast<unsigned char>(c) & 0xC0) == 0x80;
    if (!continues) ++column_;
    while (first_ < pending_.size() && column_ >= pending_[first_].begin + kWidth) ++first_;
    for (std::size_t i = first_; i < pending_.size() && column_ >= pending_[i].begin; ++i) {
      Pending& place = pending_[i];
      Excerpt& excerpt = excerpts_[place.excerpt];
      if (column_ == place.column && !place.reached) {
        excerpt.caret = excerpt.text.size();
        place.reached = true;
      }
      excerpt.text += c;
    }
  }

  void EndLine() {
    for (const Pending& place : pending_) {
      if (!place.reached) excerpts_[place.excerpt].caret = excerpts_[place.excerpt].text.size();
    }
    pending_.clear();
    first_ = 0;
    column_ = 0;
  }

 private:
  struct Pending {
    std::size_t excerpt;
    std::size_t column;
    std::size_t begin;  // the first column shown
    bool reached;
  };

  bool characters_;
  std::vector<Excerpt>& excerpts_;
  std::vector<Pending> pending_;
  std::size_t first_ = 0;  // the places before it are done with
  std::size_t column_ = 0;
};

bool HasByteOrderMark(FILE* file) {
  char start[3];
  if (ReadBytes(file, start, 3) == 3 && std::memcmp(start, "\xEF\xBB\xBF", 3) == 0) return true;
  std::rewind(file);
  return false;
}

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Where the last character of the text ends that is not cut off.
std::size_t EndOfWholeCharacters(const std::string& utf8) {
  std::size_t lead = utf8.size();
  while (lead > 0 && IsContinuation(utf8[lead - 1])) --lead;
  if (lead == 0) return utf8.size();
  const unsigned char byte = static_cast<unsigned char>(utf8[--lead]);
  const std::size_t length = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
  return lead + length <= utf8.size() ? utf8.size() : lead;
}

}  // namespace

File Open(const std::string& path) {
  FILE* file;
  do {
    file = std::fopen(path.c_str(), "rb");
  } while (file == nullptr && errno == EINTR);
  return File(file);
}

std::string WhyUnreadable(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) {
    return errno == ENOENT ? "does not exist" : fmt::format("cannot be read: {}", std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) return "is a directory";
  if (!S_ISREG(status.st_mode)) return "is not a regular file";
  if (status.st_size == 0) return "is empty";
  if (static_cast<std::uint64_t>(status.st_size) > kLongestFile) {
    return fmt::format("is {} bytes long; the longest file that can be read has {}",
                       Grouped(static_cast<std::uint64_t>(status.st_size)), Grouped(kLongestFile));
  }
  if (!Open(path)) return fmt::format("cannot be read: {}", std::strerror(errno));
  return "";
}

void RequireReadable(const std::string& path) {
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
}

void ThrowUnreadable(const std::string& path, int error) {
  throw std::runtime_error(
      fmt::format("{} cannot be read: {}", path, std::strerror(error == 0 ? EIO : error)));
}

std::string ContentsOf(const std::string& path) {
  RequireReadable(path);
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  std::string contents(FileSize(path), '\0');
  contents.resize(ReadBytes(file.get(), contents.data(), contents.size()));
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return contents;
}

bool HasDamagedByteOrderMark(const std::string& path) {
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  char start[3] = {};
  ReadBytes(file.get(), start, 3);
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return start[0] == '\xEF' && std::memcmp(start, "\xEF\xBB\xBF", 3) != 0;
}

File OpenPart21(const std::string& path) {
  if (HasDamagedByteOrderMark(path)) throw std::runtime_error(path + " cannot be read: " + kDamagedByteOrderMark);
  File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  return file;
}

std::uint64_t FileSize(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) ThrowUnreadable(path, errno);
  return static_cast<std::uint64_t>(status.st_size);
}

std::vector<Excerpt> ReadExcerpts(const std::string& path, const std::vector<Place>& places) {
  std::vector<Excerpt> excerpts;
  const File file = places.empty() ? nullptr : Open(path);
  if (file == nullptr) return excerpts;

  LineCutter cutter(HasByteOrderMark(file.get()), excerpts);
  LineReader reader(file.get());
  auto place = places.begin();
  int c = 0;
  for (int line = 1; c != EOF && place != places.end(); ++line) {
    for (; place != places.end() && place->line == line; ++place) cutter.Add(place->column);
    while ((c = reader.Get()) != EOF && c != '\n') cutter.Byte(static_cast<char>(c));
    cutter.EndLine();
  }
  // Places behind the end of the file.
  for (; place != places.end(); ++place) excerpts.push_back({"", 0});
  return excerpts;
}

bool IsUtf8(const std::string& bytes) {
  std::size_t missing = 0;
  bool started = false;
  for (const char c : bytes) {
    const unsigned char byte = static_cast<unsigned char>(c);
    const bool continues = (byte & 0xC0) == 0x80;
    if (continues && !started) continue;
    started = true;
    if (missing > 0 ? !continues : continues || byte >= 0xF8) return false;
    if (missing > 0) {
      --missing;
    } else {
      missing = byte < 0xC0 ? 0 : byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
    }
  }
  return true;
}

std::pair<std::string, std::size_t> Printable(const Excerpt& excerpt) {
  const bool utf8 = IsUtf8(excerpt.text);
  const std::size_t end = utf8 ? EndOfWholeCharacters(excerpt.text) : excerpt.text.size();
  std::string shown;
  std::size_t caret = 0;
  for (std::size_t i = 0; i < end; ++i) {
    const char c = excerpt.text[i];
    if (utf8 && shown.empty() && IsContinuation(c)) continue;
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    const bool foreign = static_cast<unsigned char>(c) >= 0x80 && !utf8;
    shown += control ? ' ' : foreign ? '?' : c;
    if (i < excerpt.caret && !(utf8 && IsContinuation(c))) ++caret;
  }
  return {shown, caret};
}

}  // namespace velmar
