#include "Wording.h"

#include <fmt/format.h>

namespace velmar {

std::string Grouped(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, ',');
  return digits;
}

std::string Counted(std::uint64_t number, const std::string& noun) {
  return fmt::format("{} {}{}", Grouped(number), noun, number == 1 ? "" : "s");
}

std::string Printable(std::string text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  return text;
}

}  // namespace velmar
