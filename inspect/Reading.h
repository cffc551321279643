/// @file Reading.h
/// A file that has been read, with all that is known about it.
#pragma once

#include <cstdint>
#include <string>

#include "Findings.h"
#include "Population.h"

namespace velmar {

/// Reads a file when it is made. Owns the population; entities live as long as it does.
class Reading {
 public:
  /// Throws std::runtime_error where the file cannot be read, or the library of its schema cannot be loaded;
  /// the text begins with the path. All that is wrong with what the file holds is a finding. A file that is named as
  /// JSON is read as such; what makes it none is thrown, with its place.
  explicit Reading(const std::string& path, const ReadingOptions& options = {});

  const std::string& Path() const { return findings_.File(); }
  /// In bytes.
  std::uint64_t Size() const { return size_; }
  Population& GetPopulation() { return population_; }
  Findings& GetFindings() { return findings_; }

 private:
  Findings findings_;
  Population population_;
  std::uint64_t size_;
};

}  // namespace velmar
