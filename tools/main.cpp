// velmar: looks at Part 21 files and converts them.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "BundledSchemas.h"
#include "Commands.h"
#include "Messages.h"

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 done; 1 the file has errors; 2 wrong usage, or a file that cannot be read or written.\n"
    "Messages go to standard error as file:line:col: severity: text.";

std::string Footer(const char* example) { return fmt::format("Example: {}\n\n{}", example, kExitStatus); }

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("Looks at Part 21 (STEP) files and converts them.", "velmar");
  app.set_version_flag("--version", "velmar " VELMAR_VERSION);
  app.require_subcommand(1);
  app.footer(Footer("velmar info examples/bracket.stp"));

  std::string in;
  std::string out;
  CLI::App* info = app.add_subcommand(
      "info", "Prints the header of a file, its schema, and how many instances of which types it holds");
  info->add_option("FILE", in, "The Part 21 file")->required();
  info->footer(Footer("velmar info examples/bracket.stp"));

  CLI::App* convert =
      app.add_subcommand("convert",
                         "Reads a file and writes it anew. OUT is replaced by a complete file or not "
                         "at all; it may be the same file as IN if all of IN could be kept");
  convert->add_option("IN", in, "The Part 21 file to read")->required();
  convert->add_option("-o,--output", out, "The Part 21 file to write")->required()->type_name("OUT");
  convert->footer(Footer("velmar convert examples/bracket.stp -o copy.stp"));

  VELMAR::LoadBundledSchemas();

  int status = velmar::kDone;
  try {
    app.parse(argc, argv);
    status = info->parsed() ? velmar::Info(in) : velmar::Convert(in, out);
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? velmar::kDone : velmar::kCannotRun;
  } catch (const std::string& error) {
    status = velmar::CannotRun(error);
  } catch (const std::exception& error) {
    status = velmar::CannotRun(error.what());
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    return velmar::CannotRun("standard output cannot be written");
  return status;
}
