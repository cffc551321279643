/// @file Renumbering.h
/// New numbers for the instances of a population.
#pragma once

#include "Population.h"

namespace velmar {

/// Numbers the instances 1, 2, 3 ... in the order of their numbers, which is that in which they are written. References follow. One to an
/// instance that is not there gets a number behind the last instance, the same for all references to the same one, so that it
/// still leads nowhere. Linear in the size of the population.
void Renumber(Population& file);

}  // namespace velmar
