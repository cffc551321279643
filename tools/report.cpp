#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "Commands.h"
#include "Extraction.h"
#include "FileReport.h"
#include "Messages.h"
#include "Options.h"

namespace velmar {

namespace {

struct ReportFlags {
  std::string file;
  std::string out;
  ReportLimits limits;
  ReadingFlags reading;
};

int Report(const ReportFlags& flags) {
  std::error_code error;
  if (std::filesystem::equivalent(flags.file, flags.out, error)) {
    return CannotRun(fmt::format("{} is the file that is reported on", flags.out));
  }
  const SchemaChoice choice = {flags.reading.Schema(), flags.reading.express, flags.reading.includes};
  const FileReport report = MakeReport(flags.file, flags.reading.Resolve(), choice, flags.limits);
  WriteText({ToHtml(report)}, flags.out);
  if (!flags.reading.quiet) Say(fmt::format("{}: {}\n", flags.file, SummaryOf(report.findings)));
  return report.findings.Errors() == 0 ? kDone : kFileHasErrors;
}

}  // namespace

void AddReport(CLI::App& program, Run& run) {
  auto flags = std::make_shared<ReportFlags>();
  CLI::App* command = program.add_subcommand(
      "report", "Writes a page of HTML for people: the header of a file, its product structure, its types, and what is wrong with "
                "it, with a search box. The page needs no network. OUT is replaced by a complete page or not at all");
  command->add_option("FILE", flags->file, kFileHelp)->required();
  command->add_option("-o,--output", flags->out, "The page to write")->required()->type_name("OUT");
  command->add_option("--max", flags->limits.findings, "How many findings with a place are shown; what is beyond is counted")
      ->capture_default_str()
      ->type_name("N");
  flags->reading.AddTo(*command);
  command->footer(Footer("velmar report examples/trolley.stp -o trolley.html"));
  command->callback([flags, &run] { run = [flags] { return Report(*flags); }; });
}

}  // namespace velmar
