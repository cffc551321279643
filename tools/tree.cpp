#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "ProductStructure.h"
#include "Wording.h"

namespace velmar {

namespace {

struct TreeFlags {
  std::string file;
  ReadingFlags reading;
  bool all = false;
  bool json = false;
  std::size_t depth = 100;
};

std::string NameOf(const DefinedProduct& product) {
  std::string name = IsBlank(product.name) ? product.id : product.name;
  if (IsBlank(name)) name = product.product < 0 ? "(no product)" : "(no name)";
  std::vector<std::string> more;
  if (!IsBlank(product.id) && product.id != name) more.push_back(product.id);
  if (!IsBlank(product.version)) more.push_back("version " + product.version);
  if (!product.isDefined) more.emplace_back("not defined");
  if (!more.empty()) name += fmt::format(" [{}]", fmt::join(more, ", "));
  name += fmt::format(" #{}", product.number);
  constexpr std::size_t kShown = 3;
  for (std::size_t i = 0; i < std::min(product.shapes.size(), kShown); ++i) {
    name += fmt::format("{} #{} {}", i == 0 ? ", shape" : ",", product.shapes[i].number, product.shapes[i].type);
  }
  if (product.shapes.size() > kShown) name += fmt::format(", {} more", product.shapes.size() - kShown);
  return name;
}

// "2 x ", "2.5 MILLIMETRE ", "2 x 2.5 KILOGRAM "
std::string AmountOf(const Component& component, const ProductStructure& structure) {
  std::string amount;
  if (component.usages.size() > 1) amount = fmt::format("{} x ", component.usages.size());
  const auto& quantity = structure.usages[component.usages.front()].quantity;
  if (!quantity) return amount;
  std::string value = quantity->value;
  if (!value.empty() && value.back() == '.') value.pop_back();
  if (quantity->type == "COUNT_MEASURE") return amount + value + " x ";
  return amount + value + " " + (quantity->unit.empty() ? quantity->type : quantity->unit) + " ";
}

// What tells the usage from others of the same component.
std::string UsageText(const Usage& usage) {
  std::string text = fmt::format(" (#{} {}", usage.instance.number, usage.instance.type);
  for (const std::string* word : {&usage.id, &usage.name, &usage.designator}) {
    if (!word->empty()) text += fmt::format(" '{}'", *word);
  }
  return text + ")";
}

class TreePrinter {
 public:
  TreePrinter(const ProductStructure& structure, const TreeFlags& flags)
      : structure_(structure), flags_(flags), shownAt_(structure.products.size(), kNever) {}

  void Print(std::size_t root) {
    fmt::print("{}\n", Printable(NameOf(structure_.products[root])));
    if (!Expand(root)) return;
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.components.size()) {
        levels_.pop_back();
        continue;
      }
      const Component& component = level.components[level.next++];
      const std::size_t product = component.product;
      std::string line;
      for (const Level& above : levels_) {
        const bool isHere = &above == &level;
        const bool isLast = above.next == above.components.size();
        line += isHere ? (isLast ? "└── " : "├── ") : (isLast ? "    " : "│   ");
      }
      line += Printable(AmountOf(component, structure_) + NameOf(structure_.products[product]));
      if (flags_.all) line += Printable(UsageText(structure_.usages[component.usages.front()]));
      const std::size_t hidden = structure_.products[product].usages.size();
      if (hidden == 0 || MayExpand(product)) {
        fmt::print("{}\n", line);
        Expand(product);
      } else if (shownAt_[product] <= levels_.size()) {
        fmt::print("{} (components as above)\n", line);
      } else {
        fmt::print("{} ({} not shown)\n", line, Counted(hidden, "component"));
      }
    }
  }

 private:
  static constexpr std::size_t kNever = static_cast<std::size_t>(-1);

  struct Level {
    std::vector<Component> components;
    std::size_t next = 0;
  };

  // What has been shown is shown again only where more of it fits into the depth.
  bool MayExpand(std::size_t product) const {
    const bool isDeepEnough = flags_.depth != 0 && levels_.size() >= flags_.depth;
    const bool isShown = shownAt_[product] != kNever && (flags_.depth == 0 || shownAt_[product] <= levels_.size());
    return !isDeepEnough && !isShown;
  }

  bool Expand(std::size_t product) {
    if (structure_.products[product].usages.empty()) return false;
    shownAt_[product] = levels_.size();
    levels_.push_back({ComponentsOf(structure_, product, !flags_.all), 0});
    return true;
  }

  const ProductStructure& structure_;
  const TreeFlags& flags_;
  std::vector<std::size_t> shownAt_;  // the lowest level
  std::vector<Level> levels_;
};

void PrintTree(const ProductStructure& structure, const TreeFlags& flags) {
  if (structure.products.empty()) {
    fmt::print("no products\n");
    return;
  }
  TreePrinter printer(structure, flags);
  for (const std::size_t root : structure.roots) printer.Print(root);
  std::size_t assemblies = 0;
  for (const DefinedProduct& product : structure.products) {
    if (!product.usages.empty()) ++assemblies;
    if (!product.isDefined) fmt::print("{}\n", Printable(NameOf(product)));
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
  const ProductStructure structure = ReadProductStructure(flags.file, choice, findings);
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
  command->add_option("FILE", flags->file, "The Part 21 file")->required();
  command->add_flag("--all", flags->all, "Shows each usage; without this, equal components of an assembly stand in one line");
  command->add_option("--depth", flags->depth, "Shows so many levels below the first; 0 is without a limit")
      ->capture_default_str()
      ->type_name("N");
  command->add_flag("--json", flags->json, "Prints an object with products, usages and roots");
  flags->reading.AddTo(*command);
  command->footer(Footer("velmar tree examples/trolley.stp"));
  command->callback([flags, &run] { run = [flags] { return Tree(*flags); }; });
}

}  // namespace velmar
