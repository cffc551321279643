/// @file JsonNumbers.h
/// What the reader and the writer of JSON files agree upon.
#pragma once

#include <algorithm>
#include <string>

namespace velmar {

constexpr const char* kJsonFormat = "velmar-json";
constexpr int kJsonVersion = 1;

/// The Part 21 form of a JSON number that has a point or an exponent: "1.0e5" is "1.E5".
inline std::string RealOfJson(const std::string& json) {
  std::string real = json;
  std::replace(real.begin(), real.end(), 'e', 'E');
  const std::size_t exponent = std::min(real.find('E'), real.size());
  const std::size_t point = real.find('.');
  if (point == std::string::npos) {
    real.insert(exponent, 1, '.');
  } else if (exponent == point + 2 && real[point + 1] == '0') {
    real.erase(point + 1, 1);
  }
  return real;
}

}  // namespace velmar
