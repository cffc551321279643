/// @file ProductTree.h
/// The product structure of a file as the lines of a tree.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "ProductStructure.h"

namespace velmar {

/// What of a product structure is shown.
struct TreeOptions {
  bool all = false;         ///< each usage; otherwise equal components of an assembly stand in one line
  std::size_t depth = 100;  ///< so many levels below the first; 0 is without a limit
};

/// A product, alone or as the component of the last line before it that is one level higher.
struct TreeLine {
  std::size_t level;  ///< from 0
  bool isLast;        ///< whether no line of the same assembly follows
  /// As the file has them: "2 x ", how much of it there is; "bolt [B1, version 2]"; " #12, shape #20 SHAPE_REPRESENTATION", the instances.
  std::string amount;
  std::string name;
  std::string instances;
  std::string note;  ///< why its components do not follow; empty where they do, or there are none

  std::string Text() const { return amount + name + instances; }
};

/// Gives the lines one by one, those of a root behind each other, and last the products without a definition. The components of
/// a product are shown once, where it stands highest, so there are no more lines than usages and products.
void WalkProductTree(const ProductStructure& structure, const TreeOptions& options,
                     const std::function<void(const TreeLine&)>& take);

}  // namespace velmar
