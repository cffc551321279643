#include "Reading.h"

#include <fmt/format.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "FileFormats.h"
#include "Input.h"
#include "JsonFormat.h"

namespace velmar {

namespace {

// A text that has a path as files have, as long as it lives.
class TextInMemory {
 public:
  explicit TextInMemory(const std::string& text) : file_(fdopen(memfd_create("part21", MFD_CLOEXEC), "w")) {
    const bool isWritten = file_ != nullptr && std::fwrite(text.data(), 1, text.size(), file_.get()) == text.size();
    if (!isWritten || std::fflush(file_.get()) != 0) throw std::runtime_error(std::strerror(errno));
  }
  std::string Path() const { return "/proc/self/fd/" + std::to_string(fileno(file_.get())); }

 private:
  File file_;
};

std::string Part21Of(const std::string& path) {
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  try {
    return ReadJson(file.get());
  } catch (const JsonError& error) {
    throw std::runtime_error(fmt::format("{}:{}:{}: {}", path, error.Where().line, error.Where().column, error.what()));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{} cannot be read: {}", path, error.what()));
  }
}

}  // namespace

Reading::Reading(const std::string& path, const ReadingOptions& options)
    : findings_(path), population_(options) {
  const std::string why = WhyUnreadable(path);
  if (!why.empty()) throw std::runtime_error(path + " " + why);
  if (FormatOf(path) == FileFormat::Json) {
    const TextInMemory text(Part21Of(path));
    population_.ReadAndReport(text.Path(), findings_);
  } else {
    population_.ReadAndReport(path, findings_);
  }
  size_ = FileSize(path);
}

}  // namespace velmar
