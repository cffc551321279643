#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <list>
#include <new>
#include <ostream>
#include <string>
#include <system_error>

#include "Commands.h"
#include "ExpUtilities.h"
#include "Input.h"
#include "Messages.h"
#include "Population.h"
#include "ReplaceFile.h"
#include "UnreadableValues.h"

namespace velmar {

namespace {

namespace fs = std::filesystem;

// Why no file can be written under this name, as the end of a sentence that begins with it; empty where one
// can, as far as can be told without touching anything.
std::string WhyUnwritable(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) return "is a directory";
  if (access(path.c_str(), W_OK) == 0) return "";
  if (errno == ENOENT) {
    const fs::path folder = fs::path(path).parent_path();
    if (access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0) return "";
  }
  return fmt::format("cannot be written: {}", std::strerror(errno));
}

// Why what was read is not written; empty where it is.
std::string WhyNotWritten(const Population& file, const Messages& messages, const std::string& in,
                          const std::string& out) {
  if (messages.IsEmpty()) return "";
  std::error_code error;
  if (!file.IsSchemaSupported()) return fmt::format("{} is not written: the schema is not supported", out);
  if (file.Count() == 0) return fmt::format("{} is not written: nothing could be read", out);
  if (fs::equivalent(in, out, error)) return "the file is left as it is: not all of it could be kept";
  return "";
}

// Makes every instance writable: what has no value, because the file has none or because it could not be
// kept, is written `$`. Adds a warning where there is such a value.
void MarkMissingValues(Population& file, Messages& messages) {
  std::list<VELMAR::ExpEntity*> header;
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"}) file.GetEntities(header, type, false);
  int marked = 0;
  for (VELMAR::ExpEntity* record : header) marked += VELMAR::MarkUnsetValues(*record);
  for (int number = file.GetMaxEntityNumber(); number >= 0; --number) {
    if (VELMAR::ExpEntity* entity = file.GetEntity(number)) marked += VELMAR::MarkUnsetValues(*entity);
  }
  if (marked == 0) return;
  messages.Add(Severity::kWarning, 0, 0,
               fmt::format("{} written as $", Counted(static_cast<std::uint64_t>(marked), "missing value")));
}

// Writes the population and returns the number of bytes. Adds an error where that fails.
std::uint64_t WriteAndReport(Population& file, const std::string& out, Messages& messages) {
  std::uint64_t size = 0;
  try {
    VelmarFiles::TextBuffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    file.Write(stream);
    for (const std::string& block : buffer.Blocks()) size += block.size();
    VelmarFiles::ReplaceFile(out, buffer.Blocks());
  } catch (const std::string& error) {
    messages.AddError(error);
  } catch (const std::bad_alloc&) {
    messages.AddError("not enough memory");
  } catch (const std::exception& error) {
    messages.AddError(error.what());
  }
  return size;
}

}  // namespace

int Convert(const std::string& in, const std::string& out, const ReadingOptions& options) {
  std::string why = WhyUnreadable(in);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", in, why));
  why = WhyUnwritable(out);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", out, why));

  Messages messages(in);
  Population file(options);
  file.ReadAndReport(in, messages);
  const std::string size = Grouped(FileSize(in));  // before it is written, for IN may be OUT
  ReportUnreadableValues(file, messages);
  const bool hasErrors = messages.Errors() != 0;
  why = WhyNotWritten(file, messages, in, out);
  if (why.empty()) {
    MarkMissingValues(file, messages);
  } else {
    messages.AddError(why);
  }
  messages.Print();
  if (!why.empty()) return kFileHasErrors;

  Messages outMessages(out);
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t outSize = WriteAndReport(file, out, outMessages);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (outMessages.Errors() != 0) {
    outMessages.AddError("not written");
    outMessages.Print();
    return kCannotRun;
  }
  std::error_code error;
  if (fs::is_regular_file(out, error)) {
    const std::string instances = Counted(file.Count(), "instance");
    fmt::print("{}: {}, {} bytes, read in {:.1f} ms\n", in, instances, size, file.ReadingTime() * 1e3);
    fmt::print("{}: {}, {} bytes, written in {:.1f} ms\n", out, instances, Grouped(outSize),
               seconds * 1e3);
  }
  return hasErrors ? kFileHasErrors : kDone;
}

}  // namespace velmar
