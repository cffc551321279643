#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "CsvFormat.h"
#include "Json.h"
#include "Listing.h"
#include "Messages.h"
#include "Options.h"
#include "Reading.h"
#include "Values.h"
#include "Wording.h"

namespace velmar {

namespace {

constexpr std::size_t kWidest = 40;  // a longer cell moves the rest of its row

struct ListOptions {
  std::string file;
  ListingRequest request;
  ReadingFlags reading;
  bool csv = false;
  bool json = false;
};

using Cells = std::vector<std::string>;

std::vector<Cells> CellsOf(const Listing& listing) {
  std::vector<Cells> table = {{"instance", "type"}};
  table[0].insert(table[0].end(), listing.attributes.begin(), listing.attributes.end());
  for (const Listing::Row& row : listing.rows) {
    Cells cells = {fmt::format("#{}", row.number), row.type};
    for (VELMAR::ExpAttribute* value : row.values) cells.push_back(value == nullptr ? "" : CellOf(*value));
    table.push_back(std::move(cells));
  }
  return table;
}

// In characters of UTF-8.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(
      text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

void PrintTable(const std::vector<Cells>& table) {
  std::vector<std::size_t> widths(table[0].size());
  for (const Cells& cells : table) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const std::size_t width = WidthOf(cells[i]);
      if (width <= kWidest) widths[i] = std::max(widths[i], width);
    }
  }
  for (const Cells& cells : table) {
    std::string line;
    std::size_t blanks = 0;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (!cells[i].empty()) line += std::string(blanks, ' ') + Printable(cells[i]);
      const std::size_t width = WidthOf(cells[i]);
      blanks = (cells[i].empty() ? blanks : 0) + (widths[i] > width ? widths[i] - width : 0) + 2;
    }
    fmt::print("{}\n", line);
  }
}

void PrintCsv(const std::vector<Cells>& table) {
  for (const Cells& cells : table) fmt::print("{}\n", CsvLine(cells));
}

int Print(Reading& reading, const ListOptions& options) {
  const Listing listing = ListInstances(reading.GetPopulation(), options.request);
  if (options.json) {
    fmt::print("{}", ToText(ToJson(listing)));
  } else if (options.csv) {
    PrintCsv(CellsOf(listing));
  } else {
    PrintTable(CellsOf(listing));
  }
  return Finish(reading.GetFindings(), options.reading.quiet);
}

int List(const ListOptions& options) {
  const ReadingOptions readingOptions = options.reading.Resolve();
  Reading& reading = ReadForGood(options.file, readingOptions);
  try {
    return Print(reading, options);
  } catch (const std::invalid_argument& error) {  // what is wrong with the file may be the reason
    Finish(reading.GetFindings(), options.reading.quiet);
    return CannotRun(error.what());
  }
}

}  // namespace

void AddList(CLI::App& program, Run& run) {
  auto options = std::make_shared<ListOptions>();
  CLI::App* command = program.add_subcommand(
      "list", "Lists the instances of a type and its subtypes, with attributes as columns");
  command->add_option("FILE", options->file, kFileHelp)->required();
  command->add_option("TYPE", options->request.type, "The entity type, in any case of letters")->required();
  command->add_flag("--exact", options->request.isExact, "Leaves out the instances of subtypes");
  command
      ->add_option("--attr", options->request.attributes,
                   "Shows this attribute, of the type or a subtype; may be given several times. Default: all "
                   "of the type")
      ->type_name("NAME")
      ->allow_extra_args(false);
  CLI::Option* csv = command->add_flag("--csv", options->csv, "Prints comma-separated values");
  command->add_flag("--json", options->json, "Prints an array with an object for each instance")
      ->excludes(csv);
  options->reading.AddTo(*command);
  command->footer(Footer("velmar list examples/bracket.stp product --attr id --attr name"));
  command->callback([options, &run] { run = [options] { return List(*options); }; });
}

}  // namespace velmar
