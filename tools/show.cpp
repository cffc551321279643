#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
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
#include "Values.h"
#include "Wording.h"

namespace velmar {

namespace {

struct ShowOptions {
  std::string file;
  std::vector<std::string> instances;
  ReadingFlags reading;
  bool json = false;
};

void PrintAttributes(const RecordView& record, const std::string& indentation) {
  std::size_t width = 0;
  for (const AttributeView& attribute : record.attributes) width = std::max(width, attribute.name->size());
  for (const AttributeView& attribute : record.attributes) {
    fmt::print("{}{:<{}}  {}\n", indentation, *attribute.name, width,
               attribute.value == nullptr ? "$" : TextOf(*attribute.value));
  }
}

void PrintInstance(const InstanceView& instance, const std::string& file, Place place) {
  fmt::print("#{} {} ({}:{}:{})\n", instance.number, instance.type, Printable(file), place.line,
             place.column);
  if (!instance.isComplex) {
    PrintAttributes(instance.records.front(), "  ");
    return;
  }
  for (const RecordView& record : instance.records) {
    fmt::print("  {}\n", *record.type);
    PrintAttributes(record, "    ");
  }
}

int Show(const ShowOptions& options) {
  std::vector<int> numbers;
  for (const std::string& instance : options.instances) numbers.push_back(ParseInstanceNumber(instance));
  const ReadingOptions readingOptions = options.reading.Resolve();
  Reading& reading = ReadForGood(options.file, readingOptions);
  const std::map<int, Place> places = FindPlaces(options.file, {numbers.begin(), numbers.end()}, readingOptions.progress);

  std::vector<int> missing;
  Json json = Json::array();
  bool isFirst = true;
  for (const int number : numbers) {
    VELMAR::ExpEntity* entity = reading.GetPopulation().GetEntity(number);
    if (entity == nullptr) {
      missing.push_back(number);
      continue;
    }
    const auto place = places.find(number);
    const Place at = place == places.end() ? Place{0, 0} : place->second;
    if (options.json) {
      json.push_back(ToJson(ViewOf(*entity), at));
      continue;
    }
    if (!isFirst) fmt::print("\n");
    isFirst = false;
    PrintInstance(ViewOf(*entity), options.file, at);
  }
  if (options.json) fmt::print("{}", ToText(json));
  int status = Finish(reading.GetFindings(), options.reading.quiet);
  for (const int number : missing) {
    status = CannotRun(fmt::format("{} has no instance #{}{}", options.file, number,
                                   places.count(number) == 0 ? "" : " that could be kept"));
  }
  return status;
}

}  // namespace

void AddShow(CLI::App& program, Run& run) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* command =
      program.add_subcommand("show", "Prints instances with the names and values of their attributes");
  command->add_option("FILE", options->file, kFileHelp)->required();
  command
      ->add_option("N", options->instances, "Instances, as 12 or '#12': a shell takes # alone for a comment")
      ->required();
  command->add_flag("--json", options->json, "Prints an array with an object for each instance");
  options->reading.AddTo(*command);
  command->footer(Footer("velmar show examples/bracket.stp 16 5"));
  command->callback([options, &run] { run = [options] { return Show(*options); }; });
}

}  // namespace velmar
