#include <fmt/format.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "Extraction.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"

namespace velmar {

namespace {

struct ExtractFlags {
  std::string file;
  std::vector<std::string> instances;
  std::string out;
  bool quiet = false;
};

// "#12" or "12".
std::int64_t NumberOf(const std::string& text) {
  const std::string digits = text.substr(text.compare(0, 1, "#") == 0 ? 1 : 0);
  constexpr std::size_t kMostDigits = 18;
  if (digits.empty() || digits.size() > kMostDigits || digits.find_first_not_of("0123456789") != std::string::npos) {
    throw std::runtime_error(fmt::format("'{}' is no instance: they are named #1, #2, ...", text));
  }
  return std::strtoll(digits.c_str(), nullptr, 10);
}

int ExtractFile(const ExtractFlags& flags) {
  RequirePart21Name(flags.out);
  std::vector<std::int64_t> numbers;
  for (const std::string& instance : flags.instances) numbers.push_back(NumberOf(instance));
  WriteText(Extract(flags.file, numbers, MakeProgressBar("reading", flags.quiet)), flags.out);
  return kDone;
}

}  // namespace

void AddExtract(CLI::App& program, Run& run) {
  auto flags = std::make_shared<ExtractFlags>();
  CLI::App* command = program.add_subcommand(
      "extract", "Writes the smallest file that holds some instances of a file: its header, the instances, and all that they "
                 "refer to, as they stand in it. OUT is replaced by a complete file or not at all");
  command->add_option("FILE", flags->file, kFileHelp)->required();
  command->add_option("INSTANCE", flags->instances, "Instances: 12 or '#12'")->required();
  command->add_option("-o,--output", flags->out, "The Part 21 file to write")->required()->type_name("OUT");
  command->add_flag("-q,--quiet", flags->quiet, "Shows no progress on a terminal");
  command->footer(Footer("velmar extract examples/bracket.stp 20 -o product.stp"));
  command->callback([flags, &run] { run = [flags] { return ExtractFile(*flags); }; });
}

}  // namespace velmar
