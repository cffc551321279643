/// @file Part21Source.h
/// Files as Part 21, whatever they are.
#pragma once

#include <string>

#include "Input.h"
#include "Progress.h"

namespace velmar {

/// The Part 21 text of a file: the file itself, or, where it is named as JSON, a text in
/// memory, in which header records and instances stand on the lines on which the JSON has them.
class Part21Source {
 public:
  /// The share of the time for making a text of JSON, of all that it takes to read the file.
  static constexpr double kShareOfJson = 0.6;

  /// Tells `progress` how much of JSON has been read. Throws std::runtime_error where the file cannot be read, or JSON is none of a file: with
  /// the path, the place and what is wrong.
  explicit Part21Source(const std::string& path, const Progress& progress = {});

  /// What to open; good as long as this lives.
  const std::string& Path() const { return path_; }
  /// The share of reading the file that has been done with this.
  double Share() const { return memory_ == nullptr ? 0 : kShareOfJson; }

 private:
  std::string path_;
  File memory_;
};

}  // namespace velmar
