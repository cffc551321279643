#include "ProductTree.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "Wording.h"

namespace velmar {

namespace {

std::string NameOf(const DefinedProduct& product) {
  std::string name = IsBlank(product.name) ? product.id : product.name;
  if (IsBlank(name)) name = product.product < 0 ? "(no product)" : "(no name)";
  std::vector<std::string> more;
  if (!IsBlank(product.id) && product.id != name) more.push_back(product.id);
  if (!IsBlank(product.version)) more.push_back("version " + product.version);
  if (!product.isDefined) more.emplace_back("not defined");
  if (!more.empty()) name += fmt::format(" [{}]", fmt::join(more, ", "));
  return name;
}

std::string InstancesOf(const DefinedProduct& product) {
  std::string instances = fmt::format(" #{}", product.number);
  constexpr std::size_t kShown = 3;
  for (std::size_t i = 0; i < std::min(product.shapes.size(), kShown); ++i) {
    instances += fmt::format("{} #{} {}", i == 0 ? ", shape" : ",", product.shapes[i].number, product.shapes[i].type);
  }
  if (product.shapes.size() > kShown) instances += fmt::format(", {} more", product.shapes.size() - kShown);
  return instances;
}

TreeLine RootLine(const DefinedProduct& product) { return {0, true, "", NameOf(product), InstancesOf(product), ""}; }

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

class Walk {
 public:
  Walk(const ProductStructure& structure, const TreeOptions& options, const std::function<void(const TreeLine&)>& take)
      : structure_(structure), options_(options), take_(take), shownAt_(structure.products.size(), kNever) {}

  void Take(std::size_t root) {
    take_(RootLine(structure_.products[root]));
    if (!Expand(root)) return;
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next == level.components.size()) {
        levels_.pop_back();
        continue;
      }
      const Component& component = level.components[level.next++];
      const std::size_t product = component.product;
      const DefinedProduct& defined = structure_.products[product];
      TreeLine line = {levels_.size(), level.next == level.components.size(), AmountOf(component, structure_), NameOf(defined),
                       InstancesOf(defined), ""};
      if (options_.all) line.instances += UsageText(structure_.usages[component.usages.front()]);
      const std::size_t hidden = defined.usages.size();
      if (hidden == 0 || MayExpand(product)) {
        take_(line);
        Expand(product);
        continue;
      }
      line.note = shownAt_[product] <= levels_.size() ? "components as above"
                                                      : fmt::format("{} not shown", Counted(hidden, "component"));
      take_(line);
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
    const bool isDeepEnough = options_.depth != 0 && levels_.size() >= options_.depth;
    const bool isShown = shownAt_[product] != kNever && (options_.depth == 0 || shownAt_[product] <= levels_.size());
    return !isDeepEnough && !isShown;
  }

  bool Expand(std::size_t product) {
    if (structure_.products[product].usages.empty()) return false;
    shownAt_[product] = levels_.size();
    levels_.push_back({ComponentsOf(structure_, product, !options_.all), 0});
    return true;
  }

  const ProductStructure& structure_;
  const TreeOptions& options_;
  const std::function<void(const TreeLine&)>& take_;
  std::vector<std::size_t> shownAt_;  // the lowest level
  std::vector<Level> levels_;
};

}  // namespace

void WalkProductTree(const ProductStructure& structure, const TreeOptions& options,
                     const std::function<void(const TreeLine&)>& take) {
  Walk walk(structure, options, take);
  for (const std::size_t root : structure.roots) walk.Take(root);
  for (const DefinedProduct& product : structure.products) {
    if (!product.isDefined) take(RootLine(product));
  }
}

}  // namespace velmar
