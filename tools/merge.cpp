#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Extraction.h"
#include "Messages.h"
#include "Options.h"

namespace velmar {

namespace {

struct MergeFlags {
  std::vector<std::string> files;
  std::string out;
};

int MergeFiles(const MergeFlags& flags) {
  WriteText(Merge(flags.files), flags.out);
  return kDone;
}

}  // namespace

void AddMerge(CLI::App& program, Run& run) {
  auto flags = std::make_shared<MergeFlags>();
  CLI::App* command = program.add_subcommand(
      "merge", "Writes one file with the instances of several files of one schema, as they stand in them. The header is that of "
               "the first; the instances of each other file are numbered behind those of the one before. OUT is replaced by a "
               "complete file or not at all");
  command->add_option("FILE", flags->files, "Part 21 files")->required();
  command->add_option("-o,--output", flags->out, "The Part 21 file to write")->required()->type_name("OUT");
  command->footer(Footer("velmar merge left.stp right.stp -o both.stp"));
  command->callback([flags, &run] { run = [flags] { return MergeFiles(*flags); }; });
}

}  // namespace velmar
