/// @file Options.h
/// Options that several commands have.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Population.h"
#include "Reading.h"

namespace velmar {

/// The help of what commands read.
constexpr const char* kFileHelp = "The file: Part 21, or JSON that is named .json";
constexpr const char* kFilesHelp = "The files: Part 21, or JSON that is named .json";

/// How files are read, as users say it.
struct ReadingFlags {
  std::optional<std::string> schema;
  std::string express;
  std::vector<std::string> includes;
  bool quiet = false;

  /// Adds --schema, --express, -I and --quiet; stays where it is while the command does.
  void AddTo(CLI::App& command);
  /// Without --quiet, for commands that read no file.
  void AddSchemaTo(CLI::App& command);
  /// The schema that is named. Throws std::runtime_error where there is no such schema.
  std::optional<VELMAR::Schema> Schema() const;
  /// Loads the EXPRESS text, if one is given. Throws std::runtime_error where there is no such schema, and
  /// VELMAR::LateBoundError.
  ReadingOptions Resolve() const;
};

/// Reads a file, as Reading does, for the rest of the process. The instances are never taken apart, which would take a fifth of
/// the time that reading them took: the system gets the memory back as a whole. Only the last file of a command is read so.
Reading& ReadForGood(const std::string& path, const ReadingOptions& options);

/// Throws std::runtime_error where a file of this name would be taken for another format than Part 21.
void RequirePart21Name(const std::string& path);

/// What the help of a command ends with: an example, and the exit status.
std::string Footer(const std::string& example);

}  // namespace velmar
