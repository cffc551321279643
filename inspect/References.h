/// @file References.h
/// Who refers to an instance.
#pragma once

#include <string>
#include <vector>

#include "Population.h"

namespace velmar {

/// One attribute of an instance that refers to another. Points into its population.
struct Reference {
  int from;
  const std::string* type;       ///< of the instance, or of the part of it that has the attribute
  const std::string* attribute;  ///< named once, however often it refers there
  int to;
  int level;     ///< 1 for a direct reference to the instance that was asked for, and so on
  bool isFirst;  ///< whether `from` was not met before: its own references follow, if they are within the
                 ///< depth
};

/// The references to #number, and with a depth of 2 those to the instances that refer to it, and so on; 0 is
/// without a limit. Level by level, and within it by the numbers `to` and `from`; no instance is followed
/// twice. Linear in the size of the population, and in memory, with a depth other than 1, in the number of
/// its references.
std::vector<Reference> ReferencesTo(Population& population, int number, int depth);

}  // namespace velmar
