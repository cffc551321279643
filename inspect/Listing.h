/// @file Listing.h
/// The instances of a type as a table.
#pragma once

#include <string>
#include <vector>

#include "Population.h"

namespace velmar {

/// Which instances are listed, and which of their attributes.
struct ListingRequest {
  std::string type;      ///< in any case of letters
  bool isExact = false;  ///< without the instances of subtypes
  std::vector<std::string>
      attributes;  ///< those of the type, or of its subtypes; all of the type where this is empty
};

/// Points into its population and lives no longer.
struct Listing {
  struct Row {
    int number;
    std::string type;  ///< as TypeName gives it
    std::vector<VELMAR::ExpAttribute*>
        values;  ///< in the order of the columns; null where the instance has no such attribute
  };
  std::vector<std::string> attributes;  ///< the columns
  std::vector<Row> rows;                ///< in the order of the instance numbers
};

/// A complex instance is listed once if one of its parts is of the type. Types that the schema lacks have the positions of
/// their parameters as attributes, from "1" on. Throws std::invalid_argument where neither the schema of the population nor an
/// instance is of such a type, or neither the type nor a subtype has such an attribute.
Listing ListInstances(Population& population, const ListingRequest& request);

}  // namespace velmar
