#include <fmt/format.h>

#include <memory>
#include <string>

#include "Anonymisation.h"
#include "Commands.h"
#include "Extraction.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Wording.h"

namespace velmar {

namespace {

struct AnonymiseFlags {
  std::string file;
  std::string out;
  bool quiet = false;
};

int AnonymiseFile(const AnonymiseFlags& flags) {
  RequirePart21Name(flags.out);
  const Anonymised anonymised = Anonymise(flags.file, MakeProgressBar("reading", flags.quiet));
  WriteText(anonymised.text, flags.out);
  if (flags.quiet) return kDone;
  Say(fmt::format("{}: {} of {} and {} replaced\n", flags.file, Counted(anonymised.strings, "string"),
                  Counted(anonymised.texts, "text"), Counted(anonymised.comments, "comment")));
  if (anonymised.masked > 0) {
    Say(fmt::format("{}: {} with words that are out of place, or strings without an end: letters are x there, and digits 0\n", flags.file,
                    Counted(anonymised.masked, "place")));
  }
  if (anonymised.hadTextBefore) Say(flags.file + ": what stands before ISO-10303-21; is left out\n");
  if (anonymised.hadTextBehind) Say(flags.file + ": what stands behind END-ISO-10303-21; is left out\n");
  return kDone;
}

}  // namespace

void AddAnonymise(CLI::App& program, Run& run) {
  auto flags = std::make_shared<AnonymiseFlags>();
  CLI::App* command = program.add_subcommand(
      "anonymise", "Writes a file without its names and texts, to send it to somebody: strings, comments, authors and dates are "
                   "replaced, all else stays as it stands, mistakes included. OUT is replaced by a complete file or not at all");
  command->add_option("FILE", flags->file, kFileHelp)->required();
  command->add_option("-o,--output", flags->out, "The Part 21 file to write")->required()->type_name("OUT");
  command->add_flag("-q,--quiet", flags->quiet, "Does not say what was replaced");
  command->footer(Footer("velmar anonymise examples/bracket.stp -o anonymous.stp"));
  command->callback([flags, &run] { run = [flags] { return AnonymiseFile(*flags); }; });
}

}  // namespace velmar
