#include "NumberRules.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace velmar {

namespace {

constexpr std::ptrdiff_t kShortReal = 200;    // real numbers of so many characters always fit 64 bits
constexpr std::ptrdiff_t kShortExponent = 3;  // with an exponent of fewer digits, too, unless they are that long

}  // namespace

std::string BeyondRange(const std::string& real) {
  const char* const begin = real.data();
  const char* const end = begin + real.size();
  const char* last = end;  // behind what is no digit
  while (last != begin && last[-1] >= '0' && last[-1] <= '9') --last;
  const bool hasExponent = last != begin && last[-1] != '.';
  if (end - begin <= kShortReal && !(hasExponent && end - last >= kShortExponent)) return "";
  const double number = std::strtod(begin, nullptr);
  const bool isNotZero = std::any_of(begin, hasExponent ? last : end, [](char c) { return c >= '1' && c <= '9'; });
  if (std::isinf(number)) return "infinite";
  return number == 0 && isNotZero ? "0" : "";
}

}  // namespace velmar
