#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Checking.h"
#include "Commands.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Sarif.h"
#include "Schemas.h"

namespace velmar {

namespace {

struct CheckFlags {
  std::vector<std::string> files;
  ReadingFlags reading;
  std::size_t most = 100;
  std::vector<std::string> only;
  bool json = false;
  bool sarif = false;
};

std::set<Code> CodesNamed(const std::vector<std::string>& names) {
  std::set<Code> codes;
  for (const std::string& name : names) {
    const auto row = std::find_if(Catalogue().begin(), Catalogue().end(),
                                  [&name](const CodeInfo& info) { return NameOf(info.code) == name; });
    if (row == Catalogue().end()) throw std::runtime_error(fmt::format("there is no code '{}'", name));
    codes.insert(row->code);
  }
  return codes;
}

int Check(const CheckFlags& flags) {
  const std::set<Code> codes = CodesNamed(flags.only);
  const SchemaChoice options = {flags.reading.Schema(), flags.reading.express, flags.reading.includes};
  const Progress progress = MakeProgressBar("checking", flags.reading.quiet);
  int status = kDone;
  Json json = Json::array();
  std::vector<Findings> all;
  for (const std::string& path : flags.files) {
    try {
      Findings findings = CheckFile(path, options, progress);
      if (!codes.empty()) findings.Keep(codes);
      if (!findings.IsEmpty()) status = std::max<int>(status, kFileHasErrors);
      if (flags.json) {
        json.push_back(
            {{"file", path}, {"findings", ToJson(findings)}, {"findings_not_listed", findings.NotKept()}});
      } else if (flags.sarif) {
        all.push_back(std::move(findings));
      } else {
        PrintAsData(findings, flags.most);
        FlushOutput();
        if (!flags.reading.quiet) Say(fmt::format("{}: {}\n", path, SummaryOf(findings)));
      }
    } catch (const std::system_error&) {  // of standard output
      throw;
    } catch (const std::runtime_error& error) {
      status = CannotRun(error.what());
      if (flags.json) json.push_back({{"file", path}, {"error", error.what()}});
    }
  }
  if (flags.json) fmt::print("{}", ToText(json));
  if (flags.sarif) fmt::print("{}", ToText(ToSarif(all)));
  return status;
}

}  // namespace

void AddCheck(CLI::App& program, Run& run) {
  auto flags = std::make_shared<CheckFlags>();
  CLI::App* command =
      program.add_subcommand("check", "Says what is wrong with files: syntax, and values, references and types that do not "
                                      "follow the schema. docs/findings.md lists what it finds");
  command->add_option("FILE", flags->files, kFilesHelp)->required();
  flags->reading.AddTo(*command);
  command->add_option("--max", flags->most, "How many findings with a place are printed for a file; 100 without this")
      ->type_name("N");
  command->add_option("--only", flags->only, "Looks for findings of this code only; may be repeated")
      ->type_name("CODE")
      ->allow_extra_args(false);
  CLI::Option* json = command->add_flag("--json", flags->json, "Prints an array with an object for each file");
  command->add_flag("--sarif", flags->sarif, "Prints a log in the format SARIF 2.1.0")->excludes(json);
  command->footer(
      "Example: velmar check examples/bracket.stp\n\n"
      "Exit status: 0 nothing was found; 1 something was found, errors or warnings; 2 wrong usage, or a file that cannot be read.");
  command->callback([flags, &run] { run = [flags] { return Check(*flags); }; });
}

}  // namespace velmar
