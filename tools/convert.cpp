#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Conversion.h"
#include "Messages.h"
#include "Reading.h"
#include "UnreadableValues.h"
#include "Wording.h"

namespace velmar {

int Convert(const std::string& in, const std::string& out, const ReadingOptions& options) {
  std::string why = WhyUnreadable(in);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", in, why));
  why = WhyUnwritable(out);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", out, why));

  Reading reading(in, options);
  Population& file = reading.GetPopulation();
  Findings& findings = reading.GetFindings();
  ReportUnreadableValues(file, findings);
  const bool hasErrors = findings.Errors() != 0;
  why = WhyNotWritten(reading, out);
  if (why.empty()) {
    MarkMissingValues(file, findings);
  } else {
    findings.Add(Code::kNotWritten, why);
  }
  Print(findings);
  if (!why.empty()) return kFileHasErrors;

  Findings outFindings(out);
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t outSize = WriteAndReport(file, out, outFindings);
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (outFindings.Errors() != 0) {
    outFindings.Add(Code::kNotWritten, "not written");
    Print(outFindings);
    return kCannotRun;
  }
  std::error_code error;
  if (std::filesystem::is_regular_file(out, error)) {
    fmt::print("{}: {}, {} bytes, read in {:.1f} ms\n", in, Counted(file.Count(), "instance"),
               Grouped(reading.Size()), file.ReadingTime() * 1e3);
    fmt::print("{}: {}, {} bytes, written in {:.1f} ms\n", out, Counted(file.Count(), "instance"),
               Grouped(outSize), seconds * 1e3);
  }
  return hasErrors ? kFileHasErrors : kDone;
}

}  // namespace velmar
