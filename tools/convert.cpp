#include <fmt/format.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Conversion.h"
#include "FileFormats.h"
#include "LongStrings.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Reading.h"
#include "Renumbering.h"
#include "Wording.h"

namespace velmar {

namespace {

struct ConvertOptions {
  std::string in;
  std::string out;
  std::string to;
  ReadingFlags reading;
  bool renumber = false;
};

int Convert(const ConvertOptions& options) {
  const ReadingOptions readingOptions = options.reading.Resolve();
  const std::string& in = options.in;
  const std::string& out = options.out;
  std::string why = WhyUnreadable(in);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", in, why));
  const FileFormat inFormat = FormatOf(in);
  if (inFormat != FileFormat::Part21 && inFormat != FileFormat::Json) {
    return CannotRun(fmt::format("{} is named as {}, which is written and not read", in, Name(inFormat)));
  }
  const FileFormat format = options.to.empty() ? FormatOf(out) : *FormatNamed(options.to);
  why = WhyUnwritable(out, format);
  if (!why.empty()) return CannotRun(fmt::format("{} {}", out, why));

  Reading& reading = ReadForGood(in, readingOptions);
  Population& file = reading.GetPopulation();
  Findings& findings = reading.GetFindings();
  ReportLongStrings(file, findings);
  const bool hasErrors = findings.Errors() != 0;
  why = WhyNotWritten(reading, out);
  if (!why.empty()) findings.Add(Code::kNotWritten, why);
  if (!options.reading.quiet) Print(findings);
  if (!why.empty()) return kFileHasErrors;

  if (options.renumber) Renumber(file);
  const std::string instances = Counted(file.Count(), "instance");
  Findings outFindings(out);
  const Progress progress = MakeProgressBar("writing", options.reading.quiet);
  const auto start = std::chrono::steady_clock::now();
  const std::uint64_t outSize = WriteAndReport(file, format, out, outFindings, progress, reading.Size());
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (outFindings.Errors() != 0) {
    outFindings.Add(Code::kNotWritten, "not written");
    Print(outFindings);
    return kCannotRun;
  }
  std::error_code error;
  if (std::filesystem::is_regular_file(out, error) || std::filesystem::is_directory(out, error)) {
    fmt::print("{}: {}, {} bytes, read in {:.1f} ms\n", in, instances, Grouped(reading.Size()),
               file.ReadingTime() * 1e3);
    fmt::print("{}: {}, {} bytes, written in {:.1f} ms\n", out, instances, Grouped(outSize),
               seconds * 1e3);
  }
  return hasErrors ? kFileHasErrors : kDone;
}

}  // namespace

void AddConvert(CLI::App& program, Run& run) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command =
      program.add_subcommand("convert",
                             "Reads a file and writes it anew, with all that it holds, as Part 21, JSON, CSV or SQLite. OUT is "
                             "replaced by a complete file or not at all; it may be the same file as IN if all of IN could be kept");
  command->add_option("IN", options->in, "The file to read: Part 21, or JSON that is named .json")->required();
  command
      ->add_option("-o,--output", options->out,
                   "The file to write: JSON where it is named .json; a folder of tables, .csv; an SQLite database, .sqlite, .sqlite3 "
                   "or .db; otherwise Part 21")
      ->required()
      ->type_name("OUT");
  command->add_option("--to", options->to, "The format to write, however OUT is named: part21, json, csv or sqlite")
      ->type_name("FORMAT")
      ->check(CLI::IsMember({"part21", "json", "csv", "sqlite"}, CLI::ignore_case));
  command->add_flag("--renumber", options->renumber,
                    "Numbers the instances 1, 2, 3 ... in the order of their numbers. References follow; those to instances that are not "
                    "there get numbers behind the last one");
  options->reading.AddTo(*command);
  command->footer(Footer("velmar convert examples/bracket.stp -o bracket.json"));
  command->callback([options, &run] { run = [options] { return Convert(*options); }; });
}

}  // namespace velmar
