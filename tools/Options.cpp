#include "Options.h"

#include <fmt/format.h>

#include <stdexcept>

#include "FileFormats.h"
#include "LateBoundSchema.h"
#include "ProgressBar.h"
#include "Schemas.h"

namespace velmar {

namespace {

constexpr const char* kExitStatus =
    "Exit status: 0 done; 1 the file has errors; 2 wrong usage, or a file that cannot be read or written.\n"
    "Messages go to standard error as file:line:col: severity: text [code].";

void AddOptions(CLI::App& command, ReadingFlags& flags, const char* schemaHelp, const char* expressHelp) {
  CLI::Option* named = command.add_option("--schema", flags.schema, schemaHelp)->type_name("NAME");
  CLI::Option* text =
      command.add_option("--express", flags.express, expressHelp)->type_name("FILE.exp")->excludes(named);
  command
      .add_option("-I,--include", flags.includes,
                  "Where schemas that the EXPRESS text uses are looked for as NAME.exp")
      ->type_name("FOLDER")
      ->allow_extra_args(false)
      ->needs(text);
}

}  // namespace

void ReadingFlags::AddTo(CLI::App& command) {
  AddOptions(
      command, *this,
      "Reads the file with this schema, whatever it says itself: AP203, AP203E2, AP214, AP242, "
      "PLIB, or a name that FILE_SCHEMA may hold. FILE_SCHEMA stays as it is",
      "Reads the file with the schema of this EXPRESS text, the last one in it. FILE_SCHEMA stays as it is");
  command.add_flag("-q,--quiet", quiet, "Says nothing of what is wrong with the file: the exit status does");
}

void ReadingFlags::AddSchemaTo(CLI::App& command) {
  AddOptions(command, *this,
             "Only this schema: AP203, AP203E2, AP214, AP242, PLIB, or a name that FILE_SCHEMA may hold",
             "Only the schema of this EXPRESS text, the last one in it");
}

std::optional<VELMAR::Schema> ReadingFlags::Schema() const {
  if (!schema) return std::nullopt;
  const std::optional<VELMAR::Schema> found = FindSchema(*schema);
  if (!found) throw std::runtime_error(fmt::format("there is no schema '{}'; there are: {}", *schema, SchemaNames()));
  return found;
}

ReadingOptions ReadingFlags::Resolve() const {
  ReadingOptions options;
  options.schema = Schema();
  options.progress = MakeProgressBar("reading", quiet);
  if (!express.empty()) {
    options.lateBoundSchema = VELMAR::LateBoundSchema::Load(express, {"", "", includes}).GetRegistryName();
  }
  return options;
}

Reading& ReadForGood(const std::string& path, const ReadingOptions& options) {
  static Reading* reading = nullptr;  // what can be reached from here is no leak
  reading = new Reading(path, options);
  return *reading;
}

void RequirePart21Name(const std::string& path) {
  const FileFormat format = FormatOf(path);
  if (format == FileFormat::Part21) return;
  throw std::runtime_error(fmt::format("{} is named as {}, and what is written is Part 21", path, Name(format)));
}

std::string Footer(const std::string& example) {
  return fmt::format("Example: {}\n\n{}", example, kExitStatus);
}

}  // namespace velmar
