#include "Part21Source.h"

#include <fmt/format.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "FileFormats.h"
#include "JsonFormat.h"

namespace velmar {

namespace {

std::string TextOfJson(const std::string& path, const Progress& progress) {
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  ReportedProgress read(progress, static_cast<double>(FileSize(path)));
  try {
    return ReadJson(file.get(), &read);
  } catch (const JsonError& error) {
    throw std::runtime_error(fmt::format("{}:{}:{}: {}", path, error.Where().line, error.Where().column, error.what()));
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(fmt::format("{} cannot be read: {}", path, error.what()));
  }
}

}  // namespace

Part21Source::Part21Source(const std::string& path, const Progress& progress) : path_(path) {
  RequireReadable(path);
  if (FormatOf(path) != FileFormat::Json) return;
  const std::string text = TextOfJson(path, progress);
  const int descriptor = memfd_create("part21", MFD_CLOEXEC);
  if (descriptor >= 0) memory_.reset(fdopen(descriptor, "w"));
  const bool isWritten = memory_ != nullptr && std::fwrite(text.data(), 1, text.size(), memory_.get()) == text.size();
  if (!isWritten || std::fflush(memory_.get()) != 0) ThrowUnreadable(path, errno);
  path_ = fmt::format("/proc/self/fd/{}", descriptor);
}

}  // namespace velmar
