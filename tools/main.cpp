// velmar: looks at Part 21 files and converts them.
#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <system_error>

#include "Codes.h"
#include "Commands.h"
#include "LateBoundSchema.h"
#include "Manual.h"
#include "Messages.h"
#include "Options.h"
#include "Schemas.h"

namespace {

// A reader of our output that has gone: we end as the signal would have ended us, without a word.
void EndAsByClosedPipe() {
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
}

int CannotPrint(int error) {
  if (error == EPIPE) EndAsByClosedPipe();
  return velmar::CannotRun("standard output cannot be written" +
                           (error == 0 ? "" : std::string(": ") + std::strerror(error)));
}

VelmarManual::Facts ManualFacts() {
  VelmarManual::Facts facts;
  facts.version = VELMAR_VERSION;
  facts.sections = {
      {"ENVIRONMENT", {"NO_COLOR: where it is set and not empty, there are no colours on a terminal."}},
      {"FILES",
       {"share/velmar/schemas/*.exp, beside the folder of the program: the EXPRESS texts of the schemas that come with Velmar."}},
      {"SEE ALSO", {"velmar-express(1)"}},
  };
  facts.values["--schema"] = velmar::SchemaWords();
  for (const velmar::CodeInfo& code : velmar::Catalogue()) facts.values["--only"].push_back(velmar::NameOf(code.code));
  return facts;
}

int RunProgram(int argc, char** argv) {
  CLI::App app("Looks at Part 21 (STEP) files and converts them.", "velmar");
  app.set_version_flag("--version", "velmar " VELMAR_VERSION);
  app.require_subcommand(1);
  VelmarManual::AddOptions(app, ManualFacts());
  app.footer(velmar::Footer("velmar info examples/bracket.stp"));
  velmar::Run run;
  velmar::AddInfo(app, run);
  velmar::AddList(app, run);
  velmar::AddShow(app, run);
  velmar::AddRefs(app, run);
  velmar::AddTree(app, run);
  velmar::AddSchemas(app, run);
  velmar::AddCheck(app, run);
  velmar::AddReport(app, run);
  velmar::AddDiff(app, run);
  velmar::AddConvert(app, run);
  velmar::AddExtract(app, run);
  velmar::AddMerge(app, run);
  velmar::AddAnonymise(app, run);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? velmar::kDone : velmar::kCannotRun;
  }
  return run();
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ,
              SIG_IGN);  // a file that grows beyond its limit is an error of writing, as a full disk is
  int status = velmar::kDone;
  try {
    status = RunProgram(argc, argv);
  } catch (const VELMAR::LateBoundError& error) {
    if (error.GetMessages().empty()) return velmar::CannotRun(error.what());
    velmar::Say(std::string(error.what()) + '\n');  // each message begins with its place
    return velmar::kCannotRun;
  } catch (const std::system_error& error) {
    if (std::ferror(stdout) == 0) return velmar::CannotRun(error.what());
    return CannotPrint(error.code().value());
  } catch (const std::string& error) {
    status = velmar::CannotRun(error);
  } catch (const std::exception& error) {
    status = velmar::CannotRun(error.what());
  }
  errno = 0;
  if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
  return CannotPrint(errno);
}
