/// @file Manual.h
/// The manual page and the completion of a program, made of the same descriptions as its --help.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace VelmarManual {

/// What a manual page has beside the options.
struct Facts {
  std::string version;
  /// Further sections: a title in capitals, and paragraphs.
  std::vector<std::pair<std::string, std::vector<std::string>>> sections;
  /// The values that the completion proposes for an option: {"--schema", {"AP203", ...}}.
  std::map<std::string, std::vector<std::string>> values;
};

/// The manual page, for section 1, with the macros of man(7). Options that several commands have in the same words are
/// described once. A paragraph of a footer that begins with "Example: " is shown as an example; what else the footer of the
/// program has is said once, as the exit status. `date` is that in the page's footer.
std::string ManPage(const CLI::App& program, const Facts& facts, const std::string& date);

/// The completion for bash: commands, options, values of options, and files. Works without the package bash-completion.
std::string BashCompletion(const CLI::App& program, const Facts& facts);

/// Adds the options by which a build has both printed, --print-man-page DATE and --print-bash-completion. No help shows
/// them. Parsing throws CLI::Success with the text for CLI::App::exit. Commands may be added behind it.
void AddOptions(CLI::App& program, const Facts& facts);

}  // namespace VelmarManual
