/// @file Comparison.h
/// What differs between two files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "DictionaryLoader.h"
#include "Findings.h"
#include "Input.h"
#include "Progress.h"

namespace velmar {

/// A parameter that is not the same, as Part 21 writes it, but with strings in UTF-8. Empty where a file does not have it.
struct ChangedValue {
  std::string attribute;  ///< "coordinates"; "parameter 2" where the schema is not known; with its record in complex instances
  std::string before;
  std::string after;
};

/// An instance that is not in both files, or not the same.
struct Difference {
  enum class Kind { Changed, Removed, Added };

  struct Side {
    std::int64_t number = -1;  ///< -1 where the file does not have it, and in the header
    Place where = {0, 0};
  };

  Kind kind = Kind::Changed;
  std::string type;  ///< "PLANE", "(A B)" with the records in the order of their names
  Side before;
  Side after;
  std::vector<ChangedValue> values;  ///< of a change
};

struct Comparison {
  struct Counts {
    std::size_t changed = 0;
    std::size_t removed = 0;
    std::size_t added = 0;
  };
  /// So many differences are kept; others are counted.
  static constexpr std::size_t kKept = 100000;

  std::vector<Difference> header;
  /// By the places in the first file, those that are added by the places in the second behind them.
  std::vector<Difference> instances;
  std::map<std::string, Counts> byType;
  std::size_t notKept = 0;

  bool IsSame() const { return header.empty() && byType.empty(); }
};

struct ComparisonOptions {
  SchemaChoice schema;
  bool withHeader = true;
};

/// Compares files by what they say: instances are the same whatever their numbers and their order, real numbers by their values,
/// sets and bags in any order where the schema is known, which is that of the first file. An instance that refers to a changed
/// one has not changed itself.
///
/// What is wrong with the syntax of the files becomes findings; what stands there is not compared. Throws std::runtime_error
/// where a file, or the text of the schema, cannot be read. Takes some 100 bytes of memory for each instance.
Comparison CompareFiles(const std::string& first, const std::string& second, const ComparisonOptions& options,
                        Findings& findingsOfFirst, Findings& findingsOfSecond, const Progress& progress = {});

}  // namespace velmar
