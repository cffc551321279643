/// @file Options.h
/// What the manual page and the completion ask of the options of a program.
#pragma once

#include <CLI/CLI.hpp>
#include <vector>

namespace VelmarManual {

/// Those that --help shows, in the order in which they were added.
inline std::vector<const CLI::Option*> ShownOptions(const CLI::App& command) {
  return command.get_options(
      [](const CLI::Option* option) { return option->nonpositional() && !option->get_group().empty(); });
}

inline std::vector<const CLI::Option*> Positionals(const CLI::App& command) {
  return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

/// The commands that --help shows, in the order in which they were added.
inline std::vector<const CLI::App*> ShownCommands(const CLI::App& program) {
  return program.get_subcommands([](const CLI::App* command) { return !command->get_group().empty(); });
}

inline bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

}  // namespace VelmarManual
