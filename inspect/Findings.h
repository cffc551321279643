/// @file Findings.h
/// What is wrong with a file, as data.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Codes.h"
#include "Input.h"

namespace velmar {

/// One thing that was found in a file.
struct Finding {
  Code code;
  Severity severity;
  Place place = {0, 0};  ///< {0, 0} where it concerns the file as a whole
  int instance = 0;      ///< the n of #n; the first where it concerns several, 0 where it concerns none
  std::string
      attribute;     ///< "CARTESIAN_POINT.coordinates"; empty where none is concerned, or it is not known
  std::string text;  ///< a sentence without a stop, for people
  std::string hint;  ///< what might be done; empty where nothing suggests itself
};

/// The findings about one file.
class Findings {
 public:
  /// So many with a place are kept; those added later are counted only.
  static constexpr std::size_t kKept = 100000;

  explicit Findings(std::string file) : file_(std::move(file)) {}

  void Add(Finding finding);
  /// Of the severity that the code has.
  void Add(Code code, Place place, std::string text, int instance = 0, std::string attribute = "");
  /// About the file as a whole.
  void Add(Code code, std::string text) { Add(code, {0, 0}, std::move(text)); }

  /// The path of the file.
  const std::string& File() const { return file_; }
  /// How many errors were added, those that are not kept included.
  std::size_t Errors() const { return errors_; }
  bool IsEmpty() const { return placed_.empty() && general_.empty(); }
  std::size_t NotKept() const { return notKept_; }

  /// Forgets all that are not of these codes. Where some were not kept before, their number stays.
  void Keep(const std::set<Code>& codes);

  /// Puts those with a place in the order of the places; of one place, they stay in the order in which they
  /// were added.
  void Sort();
  const std::vector<Finding>& WithPlace() const { return placed_; }
  const std::vector<Finding>& WithoutPlace() const { return general_; }

 private:
  std::string file_;
  std::vector<Finding> placed_;
  std::vector<Finding> general_;
  std::size_t notKept_ = 0;
  std::size_t errors_ = 0;
};

/// "2 errors, 1 warning", those that are not kept included; "nothing is wrong" where there are none.
std::string SummaryOf(const Findings& findings);

}  // namespace velmar
