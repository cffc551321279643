/// @file InstancePairing.h
/// Which instance of one file is which of the other.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "InstanceGraph.h"
#include "Progress.h"

namespace velmar {

/// What has become of the instances of the first file in the second.
struct Pairing {
  /// For each instance its counterpart, where it matters which of several equal ones that is; else -1.
  std::vector<int> partner;
  /// Those that are not equal with all that they refer to, one of the first file and one of the second.
  std::vector<std::pair<int, int>> pairs;
  std::vector<int> removed;
  std::vector<int> added;
};

/// Equal instances are paired first, whatever their order and numbers. What is left has changed, or refers to what has: it is
/// paired by what it shares with one instance of the other file alone: its values and references, those that refer to it, the
/// text that it begins with; what follows from pairs, by where their references stand; and at last by the order of the files.
///
/// Time is n log n of the number of instances, where most of them are equal. Tells `progress` how much has been spent of the effort that is
/// made for those that are not.
Pairing PairInstances(const InstanceGraph& graph, const Progress& progress = {});

}  // namespace velmar
