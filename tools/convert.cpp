#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Conversion.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Reading.h"
#include "Renumbering.h"
#include "UnreadableValues.h"
#include "Wording.h"

namespace velmar {

namespace {

struct ConvertOptions {
  std::string in;
  std::string out;
  ReadingFlags reading;
  bool renumber = false;
};

int Convert(const ConvertOptions& options) {
  const ReadingOptions readingOptions = options.reading.Resolve();
  const std::string& in = options.in;
  const std::string& out = options.out;
  std::string why = WhyUnreadable(in);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", in, why));
  why = WhyUnwritable(out);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", out, why));

  Reading reading(in, readingOptions);
  Population& file = reading.GetPopulation();
  Findings& findings = reading.GetFindings();
  ReportUnreadableValues(file, findings);
  const bool hasErrors = findings.Errors() != 0;
  why = WhyNotWritten(reading, out);
  if (!why.empty()) findings.Add(Code::kNotWritten, why);
  if (!options.reading.quiet) Print(findings);
  if (!why.empty()) return kFileHasErrors;

  if (options.renumber) Renumber(file);
  Findings outFindings(out);
  const Progress progress = options.reading.quiet ? nullptr : MakeProgressBar("writing");
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t outSize = WriteAndReport(file, out, outFindings, progress, reading.Size());
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

}  // namespace

void AddConvert(CLI::App& program, Run& run) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command =
      program.add_subcommand("convert",
                             "Reads a file and writes it anew, with all that it holds. OUT is replaced by a complete file or "
                             "not at all; it may be the same file as IN if all of IN could be kept");
  command->add_option("IN", options->in, "The Part 21 file to read")->required();
  command->add_option("-o,--output", options->out, "The Part 21 file to write")->required()->type_name("OUT");
  command->add_flag("--renumber", options->renumber,
                    "Numbers the instances 1, 2, 3 ... in the order of their numbers. References follow; those to instances that are not "
                    "there get numbers behind the last one");
  options->reading.AddTo(*command);
  command->footer(Footer("velmar convert examples/bracket.stp -o copy.stp"));
  command->callback([options, &run] { run = [options] { return Convert(*options); }; });
}

}  // namespace velmar
