#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Colours.h"
#include "Commands.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "ProductStructure.h"
#include "ProductTree.h"
#include "ProgressBar.h"
#include "Wording.h"

namespace velmar {

namespace {

struct TreeFlags {
  std::string file;
  ReadingFlags reading;
  TreeOptions shown;
  bool json = false;
};

// With lines that lead from each assembly to its components.
void PrintTree(const ProductStructure& structure, const TreeFlags& flags) {
  if (structure.products.empty()) {
    fmt::print("no products\n");
    return;
  }
  std::vector<bool> isLast;  // on the levels from 1 on: whether the line above is the last of its assembly
  WalkProductTree(structure, flags.shown, [&isLast](const TreeLine& line) {
    std::string lines;
    if (line.level > 0) {
      isLast.resize(line.level);
      isLast.back() = line.isLast;
      for (std::size_t i = 0; i + 1 < line.level; ++i) lines += isLast[i] ? "    " : "│   ";
      lines += line.isLast ? "└── " : "├── ";
    }
    const auto dim = [](const std::string& text) { return Coloured(stdout, text, Style::kDim); };
    const std::string note = line.note.empty() ? "" : fmt::format(" ({})", line.note);
    fmt::print("{}{}{}{}\n", lines, dim(Printable(line.amount)), Printable(line.name), dim(Printable(line.instances) + note));
  });
  std::size_t assemblies = 0;
  for (const DefinedProduct& product : structure.products) {
    if (!product.usages.empty()) ++assemblies;
  }
  const auto higher = static_cast<std::size_t>(std::count_if(structure.usages.begin(), structure.usages.end(),
                                                             [](const Usage& usage) { return !usage.isStructure; }));
  fmt::print("\n{}, {} of them with components; {}\n", Counted(structure.products.size(), "product"), Grouped(assemblies),
             Counted(structure.usages.size() - higher, "usage"));
  if (higher > 0) fmt::print("{} of components deep within assemblies: --json has them\n", Counted(higher, "usage"));
}

int Tree(const TreeFlags& flags) {
  Findings findings(flags.file);
  const SchemaChoice choice = {flags.reading.Schema(), flags.reading.express, flags.reading.includes};
  const ProductStructure structure = ReadProductStructure(flags.file, choice, findings, MakeProgressBar("reading", flags.reading.quiet));
  if (flags.json) {
    Json json = ToJson(structure);
    json["findings"] = ToJson(findings);
    fmt::print("{}", ToText(json));
  } else {
    PrintTree(structure, flags);
  }
  return Finish(findings, flags.reading.quiet);
}

}  // namespace

void AddTree(CLI::App& program, Run& run) {
  auto flags = std::make_shared<TreeFlags>();
  CLI::App* command = program.add_subcommand(
      "tree", "Prints the product structure: assemblies and their components, with names, ids, and the instances of "
              "definitions and shapes");
  command->add_option("FILE", flags->file, kFileHelp)->required();
  command->add_flag("--all", flags->shown.all, "Shows each usage; without this, equal components of an assembly stand in one line");
  command->add_option("--depth", flags->shown.depth, "Shows so many levels below the first; 0 is without a limit")
      ->capture_default_str()
      ->type_name("N");
  command->add_flag("--json", flags->json, "Prints an object with products, usages and roots");
  flags->reading.AddTo(*command);
  command->footer(Footer("velmar tree examples/trolley.stp"));
  command->callback([flags, &run] { run = [flags] { return Tree(*flags); }; });
}

}  // namespace velmar
