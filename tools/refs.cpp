#include <fmt/format.h>

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "Commands.h"
#include "Instances.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "Reading.h"
#include "References.h"

namespace velmar {

namespace {

struct RefsOptions {
  std::string file;
  std::string instance;
  int depth = 1;
  ReadingFlags reading;
  bool dot = false;
  bool json = false;
};

std::string Named(const Reference& reference) {
  return fmt::format("#{} {}.{}", reference.from, *reference.type, *reference.attribute);
}

// Below each instance, those that refer to it; what refers to several is followed where it stands first.
void PrintTree(const InstanceView& instance, const std::vector<Reference>& references) {
  std::multimap<int, const Reference*> byTarget;
  for (auto reference = references.rbegin(); reference != references.rend(); ++reference) {
    byTarget.emplace(reference->to, &*reference);
  }
  fmt::print("#{} {}\n", instance.number, instance.type);
  if (references.empty()) fmt::print("  nothing refers to it\n");
  std::vector<const Reference*> pending;
  const auto push = [&](int target) {
    const auto range = byTarget.equal_range(target);
    for (auto entry = range.first; entry != range.second; ++entry) pending.push_back(entry->second);
  };
  push(instance.number);
  while (!pending.empty()) {
    const Reference& reference = *pending.back();
    pending.pop_back();
    fmt::print("{:{}}{}\n", "", 2 * static_cast<std::size_t>(reference.level), Named(reference));
    if (reference.isFirst) push(reference.from);
  }
}

// For the program dot: an arrow for each reference, from the instance that refers.
void PrintDot(Population& population, const InstanceView& instance,
              const std::vector<Reference>& references) {
  std::set<int> numbers = {instance.number};
  for (const Reference& reference : references) numbers.insert(reference.from);
  fmt::print("digraph references {{\n  rankdir=LR;\n  node [shape=box];\n");
  for (const int number : numbers) {
    fmt::print("  n{} [label=\"#{}\\n{}\"{}];\n", number, number, TypeName(*population.GetEntity(number)),
               number == instance.number ? ", style=bold" : "");
  }
  for (const Reference& reference : references) {
    fmt::print("  n{} -> n{} [label=\"{}\"];\n", reference.from, reference.to, *reference.attribute);
  }
  fmt::print("}}\n");
}

int Refs(const RefsOptions& options) {
  const int number = ParseInstanceNumber(options.instance);
  const ReadingOptions readingOptions = options.reading.Resolve();
  Reading& reading = ReadForGood(options.file, readingOptions);
  Population& population = reading.GetPopulation();
  VELMAR::ExpEntity* entity = population.GetEntity(number);
  if (entity == nullptr) {
    Finish(reading.GetFindings(), options.reading.quiet);
    return CannotRun(fmt::format("{} has no instance #{}, or it could not be kept", options.file, number));
  }
  const InstanceView instance = ViewOf(*entity);
  const std::vector<Reference> references = ReferencesTo(population, number, options.depth);
  if (options.json) {
    fmt::print("{}", ToText(ToJson(references, instance)));
  } else if (options.dot) {
    PrintDot(population, instance, references);
  } else {
    PrintTree(instance, references);
  }
  return Finish(reading.GetFindings(), options.reading.quiet);
}

}  // namespace

void AddRefs(CLI::App& program, Run& run) {
  auto options = std::make_shared<RefsOptions>();
  CLI::App* command =
      program.add_subcommand("refs", "Says who refers to an instance, and through which attribute");
  command->add_option("FILE", options->file, kFileHelp)->required();
  command
      ->add_option("N", options->instance,
                   "The instance, as 12 or '#12': a shell takes # alone for a comment")
      ->required();
  command
      ->add_option("--depth", options->depth,
                   "Goes on so far to those who refer to the instances that refer; 0 is without a limit")
      ->check(CLI::NonNegativeNumber)
      ->capture_default_str()
      ->type_name("N");
  CLI::Option* dot = command->add_flag("--dot", options->dot, "Prints a graph for the program dot");
  command->add_flag("--json", options->json, "Prints an object")->excludes(dot);
  options->reading.AddTo(*command);
  command->footer(Footer("velmar refs examples/bracket.stp 16 --depth 2"));
  command->callback([options, &run] { run = [options] { return Refs(*options); }; });
}

}  // namespace velmar
