/// @file Part21Source.h
/// Files as Part 21, whatever they are.
#pragma once

#include <string>

#include "Input.h"

namespace velmar {

/// The Part 21 text of a file that WhyUnreadable has found readable: the file itself, or, where it is named as JSON, a text in
/// memory, in which header records and instances stand on the lines on which the JSON has them.
class Part21Source {
 public:
  /// Throws std::runtime_error where JSON cannot be read, or is none of a file: with the path, the place and what is wrong.
  explicit Part21Source(const std::string& path);

  /// What to open; good as long as this lives.
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  File memory_;
};

}  // namespace velmar
