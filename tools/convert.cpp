#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Input.h"
#include "Messages.h"
#include "Population.h"

namespace velmar {

namespace {

namespace fs = std::filesystem;

// Why no file can be written under this name, as the end of a sentence that begins with it; empty where one
// can. Leaves everything as it is.
std::string WhyUnwritable(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) return "is a directory";
  if (fs::exists(status) && !fs::is_regular_file(status)) return "";
  if (std::FILE* file = std::fopen(path.c_str(), "ab")) {
    std::fclose(file);
    if (!fs::exists(status)) fs::remove(path, error);
    return "";
  }
  return fmt::format("cannot be written: {}", std::strerror(errno));
}

// Why what was read with errors is not written; empty where it is.
std::string WhyNotWritten(const Population& file, const std::string& in, const std::string& out) {
  std::error_code error;
  if (!file.IsSchemaSupported()) return fmt::format("{} is not written: the schema is not supported", out);
  if (file.Count() == 0) return fmt::format("{} is not written: nothing could be read", out);
  if (fs::equivalent(in, out, error)) return "the file is left as it is: not all of it could be kept";
  return "";
}

// Adds a message for each instance that has no text, for instance because a select of it holds no value.
void ReportInstancesWithoutText(Population& file, Messages& messages) {
  for (int number = 0; number <= file.GetMaxEntityNumber(); ++number) {
    VELMAR::ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    try {
      entity->ToString();
    } catch (const std::string&) {
      messages.AddError(
          fmt::format("#{} {} has a value that cannot be written", number, entity->GetExpClassName()));
    }
  }
}

}  // namespace

int Convert(const std::string& in, const std::string& out) {
  std::string why = WhyUnreadable(in);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", in, why));
  why = WhyUnwritable(out);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", out, why));

  Messages messages(in);
  Population file;
  file.ReadAndReport(in, messages);
  const std::string size = Grouped(FileSize(in));  // before it is written, for IN may be OUT
  const bool hasErrors = messages.Errors() != 0;
  if (hasErrors) {
    why = WhyNotWritten(file, in, out);
    if (!why.empty()) messages.AddError(why);
  }
  messages.Print();
  if (!why.empty()) return kFileHasErrors;

  Messages outMessages(out);
  const auto start = std::chrono::steady_clock::now();
  {
    const LogListener listener(outMessages);
    file.Write(out);
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (outMessages.Errors() != 0) {
    ReportInstancesWithoutText(file, outMessages);
    outMessages.AddError("not written");
    outMessages.Print();
    return kCannotRun;
  }
  std::error_code error;
  if (fs::is_regular_file(out, error)) {
    const std::string instances = Counted(file.Count(), "instance");
    fmt::print("{}: {}, {} bytes, read in {:.1f} ms\n", in, instances, size, file.ReadingTime() * 1e3);
    fmt::print("{}: {}, {} bytes, written in {:.1f} ms\n", out, instances, Grouped(FileSize(out)),
               seconds * 1e3);
  }
  return hasErrors ? kFileHasErrors : kDone;
}

}  // namespace velmar
