#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>

#include "Colours.h"
#include "Commands.h"
#include "Comparison.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "ProgressBar.h"
#include "Wording.h"

namespace velmar {

namespace {

struct DiffFlags {
  std::string first;
  std::string second;
  ReadingFlags reading;
  bool ignoreHeader = false;
  bool json = false;
  std::size_t most = 100;
};

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Cuts two long values down to where they differ.
std::pair<std::string, std::string> Shortened(const ChangedValue& value) {
  constexpr std::size_t kLongest = 72;  // of both
  constexpr std::size_t kBefore = 16;   // of what they share
  if (std::max(value.before.size(), value.after.size()) <= kLongest) return {value.before, value.after};
  std::size_t same = 0;
  while (same < std::min(value.before.size(), value.after.size()) && value.before[same] == value.after[same]) ++same;
  std::size_t begin = same > kBefore ? same - kBefore : 0;
  while (begin > 0 && IsContinuation(value.before[begin])) --begin;
  const auto cut = [begin](const std::string& text) {
    std::size_t end = std::min(text.size(), begin + kLongest);
    while (end < text.size() && IsContinuation(text[end])) ++end;
    return (begin > 0 ? "..." : "") + text.substr(begin, end - begin) + (end < text.size() ? "..." : "");
  };
  return {cut(value.before), cut(value.after)};
}

std::string Removed(const std::string& text) { return Coloured(stdout, text, Style::kRed); }
std::string Added(const std::string& text) { return Coloured(stdout, text, Style::kGreen); }
std::string Changed(const std::string& text) { return Coloured(stdout, text, Style::kYellow); }

void PrintDifference(const Difference& difference, const DiffFlags& flags) {
  const auto name = [&difference](const Difference::Side& side) {
    return side.number < 0 ? difference.type : fmt::format("#{} {}", side.number, difference.type);
  };
  const auto place = [](const std::string& file, const Difference::Side& side) {
    return fmt::format("{}:{}:{}", file, side.where.line, side.where.column);
  };
  switch (difference.kind) {
    case Difference::Kind::Removed:
      fmt::print("{}: {}\n", place(flags.first, difference.before), Removed("removed " + Printable(name(difference.before))));
      return;
    case Difference::Kind::Added:
      fmt::print("{}: {}\n", place(flags.second, difference.after), Added("added " + Printable(name(difference.after))));
      return;
    case Difference::Kind::Changed:
      break;
  }
  fmt::print("{}: {} ({}{})\n", place(flags.first, difference.before), Changed("changed " + Printable(name(difference.before))),
             difference.after.number < 0 ? "" : fmt::format("#{} at ", difference.after.number),
             place(flags.second, difference.after));
  for (const ChangedValue& value : difference.values) {
    const auto [before, after] = Shortened(value);
    fmt::print("  {}: {} -> {}\n", value.attribute, Removed(before.empty() ? "nothing" : Printable(before)),
               Added(after.empty() ? "nothing" : Printable(after)));
  }
}

void PrintComparison(const Comparison& comparison, bool isAllRead, const DiffFlags& flags) {
  if (comparison.IsSame()) {
    fmt::print("no difference{}\n", isAllRead ? "" : " in what could be read");
    return;
  }
  if (!comparison.byType.empty()) {
    std::size_t width = 4;
    for (const auto& [type, counts] : comparison.byType) width = std::max(width, type.size());
    width = std::min<std::size_t>(width, 60);
    fmt::print("{:<{}}  {:>9}  {:>9}  {:>9}\n", "type", width, "changed", "removed", "added");
    for (const auto& [type, counts] : comparison.byType) {
      fmt::print("{:<{}}  {:>9}  {:>9}  {:>9}\n", Printable(type), width, Grouped(counts.changed), Grouped(counts.removed),
                 Grouped(counts.added));
    }
    fmt::print("\n");
  }
  for (const Difference& difference : comparison.header) PrintDifference(difference, flags);
  const std::size_t shown = std::min(comparison.instances.size(), flags.most);
  for (std::size_t i = 0; i < shown; ++i) PrintDifference(comparison.instances[i], flags);
  const std::size_t hidden = comparison.instances.size() - shown + comparison.notKept;
  if (hidden > 0) fmt::print("{} not shown: --max shows them\n", Counted(hidden, "more difference"));
}

int Diff(const DiffFlags& flags) {
  const ComparisonOptions options = {{flags.reading.Schema(), flags.reading.express, flags.reading.includes},
                                     !flags.ignoreHeader};
  Findings ofFirst(flags.first);
  Findings ofSecond(flags.second);
  const Comparison comparison = CompareFiles(flags.first, flags.second, options, ofFirst, ofSecond,
                                             MakeProgressBar("comparing", flags.reading.quiet));
  if (flags.json) {
    Json json = {{"first", flags.first}, {"second", flags.second}};
    json.update(ToJson(comparison));
    json["findings_of_first"] = ToJson(ofFirst);
    json["findings_of_second"] = ToJson(ofSecond);
    fmt::print("{}", ToText(json));
  } else {
    PrintComparison(comparison, ofFirst.Errors() + ofSecond.Errors() == 0, flags);
  }
  const int first = Finish(ofFirst, flags.reading.quiet);
  const int second = Finish(ofSecond, flags.reading.quiet);
  return comparison.IsSame() ? std::max(first, second) : kFileHasErrors;
}

}  // namespace

void AddDiff(CLI::App& program, Run& run) {
  auto flags = std::make_shared<DiffFlags>();
  CLI::App* command = program.add_subcommand(
      "diff", "Says what differs between two files: instances that are changed, removed or added, whatever their numbers and "
              "their order");
  command->add_option("A", flags->first, kFileHelp)->required();
  command->add_option("B", flags->second, "The file that it is compared with")->required();
  command->add_flag("--ignore-header", flags->ignoreHeader, "Leaves out the HEADER section");
  command->add_option("--max", flags->most, "How many differences are printed; 100 without this")->type_name("N");
  command->add_flag("--json", flags->json, "Prints an object with all differences");
  flags->reading.AddTo(*command);
  command->footer(
      "Example: velmar diff before.stp after.stp --ignore-header\n\n"
      "Exit status: 0 no difference; 1 there are differences, or a file has errors, and what is wrong there is not compared;\n"
      "2 wrong usage, or a file that cannot be read.");
  command->callback([flags, &run] { run = [flags] { return Diff(*flags); }; });
}

}  // namespace velmar
