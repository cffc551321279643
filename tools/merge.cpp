#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Extraction.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"

namespace velmar {

namespace {

struct MergeFlags {
  std::vector<std::string> files;
  std::string out;
  bool quiet = false;
};

int MergeFiles(const MergeFlags& flags) {
  RequirePart21Name(flags.out);
  WriteText(Merge(flags.files, MakeProgressBar("reading", flags.quiet)), flags.out);
  return kDone;
}

}  // namespace

void AddMerge(CLI::App& program, Run& run) {
  auto flags = std::make_shared<MergeFlags>();
  CLI::App* command = program.add_subcommand(
      "merge", "Writes one file with the instances of several files of one schema, as they stand in them. The header is that of "
               "the first; the instances of each other file are numbered behind those of the one before. OUT is replaced by a "
               "complete file or not at all");
  command->add_option("FILE", flags->files, kFilesHelp)->required();
  command->add_option("-o,--output", flags->out, "The Part 21 file to write")->required()->type_name("OUT");
  command->add_flag("-q,--quiet", flags->quiet, "Shows no progress on a terminal");
  command->footer(Footer("velmar merge left.stp right.stp -o both.stp"));
  command->callback([flags, &run] { run = [flags] { return MergeFiles(*flags); }; });
}

}  // namespace velmar
