// velmar: looks at Part 21 files and converts them.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "LateBoundSchema.h"
#include "Messages.h"
#include "Schemas.h"

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 done; 1 the file has errors; 2 wrong usage, or a file that cannot be read or written.\n"
    "Messages go to standard error as file:line:col: severity: text.";

std::string Footer(const char* example) { return fmt::format("Example: {}\n\n{}", example, kExitStatus); }

int CannotPrint(const std::string& reason) {
  return velmar::CannotRun("standard output cannot be written" + (reason.empty() ? "" : ": " + reason));
}

int Run(int argc, char** argv) {
  CLI::App app("Looks at Part 21 (STEP) files and converts them.", "velmar");
  app.set_version_flag("--version", "velmar " VELMAR_VERSION);
  app.require_subcommand(1);
  app.footer(Footer("velmar info examples/bracket.stp"));

  std::string in;
  std::string out;
  std::optional<std::string> schema;
  std::string express;
  std::vector<std::string> includes;
  const auto addReadingOptions = [&](CLI::App* command) {
    CLI::Option* named =
        command
            ->add_option(
                "--schema", schema,
                "Reads the file with this schema, whatever it says itself: AP203, AP203E2, AP214, AP242, "
                "PLIB, or a name that FILE_SCHEMA may hold. FILE_SCHEMA stays as it is")
            ->type_name("NAME");
    CLI::Option* text = command
                            ->add_option("--express", express,
                                         "Reads the file with the schema of this EXPRESS text, the last one "
                                         "in it. FILE_SCHEMA stays as it is")
                            ->type_name("FILE.exp")
                            ->excludes(named);
    command
        ->add_option("-I,--include", includes,
                     "Where schemas that the EXPRESS text uses are looked for as NAME.exp")
        ->type_name("FOLDER")
        ->allow_extra_args(false)
        ->needs(text);
  };
  CLI::App* info = app.add_subcommand(
      "info", "Prints the header of a file, its schema, and how many instances of which types it holds");
  info->add_option("FILE", in, "The Part 21 file")->required();
  addReadingOptions(info);
  info->footer(Footer("velmar info examples/bracket.stp"));

  CLI::App* convert =
      app.add_subcommand("convert",
                         "Reads a file and writes it anew. OUT is replaced by a complete file or not "
                         "at all; it may be the same file as IN if all of IN could be kept");
  convert->add_option("IN", in, "The Part 21 file to read")->required();
  convert->add_option("-o,--output", out, "The Part 21 file to write")->required()->type_name("OUT");
  addReadingOptions(convert);
  convert->footer(Footer("velmar convert examples/bracket.stp -o copy.stp"));

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? velmar::kDone : velmar::kCannotRun;
  }
  velmar::ReadingOptions options;
  if (schema) {
    options.schema = velmar::FindSchema(*schema);
    if (!options.schema) {
      throw std::runtime_error(fmt::format("there is no schema '{}'; there are: {}", *schema, velmar::SchemaNames()));
    }
  }
  if (!express.empty()) {
    options.lateBoundSchema = VELMAR::LateBoundSchema::Load(express, {"", "", includes}).GetRegistryName();
  }
  return info->parsed() ? velmar::Info(in, options) : velmar::Convert(in, out, options);
}

}  // namespace

int main(int argc, char** argv) {
  std::atexit(velmar::SayWhereReadingEnded);
  std::signal(SIGXFSZ, SIG_IGN);  // a file that grows beyond its limit is an error of writing, as a full disk is
  int status = velmar::kDone;
  try {
    status = Run(argc, argv);
  } catch (const VELMAR::LateBoundError& error) {
    if (error.GetMessages().empty()) return velmar::CannotRun(error.what());
    velmar::Say(std::string(error.what()) + '\n');  // each message begins with its place
    return velmar::kCannotRun;
  } catch (const std::system_error& error) {
    if (std::ferror(stdout) == 0) return velmar::CannotRun(error.what());
    return CannotPrint(error.code().message());
  } catch (const std::string& error) {
    status = velmar::CannotRun(error);
  } catch (const std::exception& error) {
    status = velmar::CannotRun(error.what());
  }
  errno = 0;
  if (std::fflush(stdout) == 0 && !std::ferror(stdout)) return status;
  return CannotPrint(errno == 0 ? "" : std::strerror(errno));
}
