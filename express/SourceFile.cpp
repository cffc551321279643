#include "SourceFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace VELMAR::Express {

SourceFile::SourceFile(std::string name, std::string text) : name_(std::move(name)), text_(std::move(text)) {
  if (text_.size() >= std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error(name_ + ": larger than 4 GB");
  }
  if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) text_.erase(0, 3);
  lineStarts_.push_back(0);
  for (std::size_t at = text_.find('\n'); at != std::string::npos; at = text_.find('\n', at + 1)) {
    lineStarts_.push_back(static_cast<std::uint32_t>(at + 1));
  }
}

SourceFile SourceFile::Read(const std::string& path) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(nullptr, &std::fclose);
  do {
    file.reset(std::fopen(path.c_str(), "rb"));
  } while (!file && errno == EINTR);
  if (!file) throw std::system_error(errno, std::generic_category(), path);
  std::string text;
  char buffer[65536];
  for (;;) {
    const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get());
    text.append(buffer, count);
    if (count == sizeof buffer) continue;
    if (!std::ferror(file.get())) break;
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), path);
    std::clearerr(file.get());
  }
  return SourceFile(path, std::move(text));
}

std::uint32_t SourceFile::LineStart(std::uint32_t offset) const {
  return *(std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset) - 1);
}

Position SourceFile::PositionOf(std::uint32_t offset) const {
  offset = std::min(offset, static_cast<std::uint32_t>(text_.size()));
  const auto line = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset) - 1;
  const auto isCharacterStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  const auto column = std::count_if(text_.begin() + *line, text_.begin() + offset, isCharacterStart);
  return {static_cast<int>(line - lineStarts_.begin()) + 1, static_cast<int>(column) + 1};
}

std::string_view SourceFile::LineOf(std::uint32_t offset) const {
  const std::uint32_t start = LineStart(std::min(offset, static_cast<std::uint32_t>(text_.size())));
  const std::size_t end = std::min(text_.find('\n', start), text_.size());
  std::string_view line = std::string_view(text_).substr(start, end - start);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

}  // namespace VELMAR::Express
