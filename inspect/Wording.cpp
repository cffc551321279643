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

std::string Printable(const std::string& text) {
  std::string printable;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    const unsigned char next = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0;
    const bool isOfTwoBytes = c == 0xC2 && next >= 0x80 && next < 0xA0;  // U+0080 to U+009F
    printable += c < 0x20 || c == 0x7F || isOfTwoBytes ? ' ' : text[i];
    if (isOfTwoBytes) ++i;
  }
  return printable;
}

bool IsBlank(const std::string& text) { return text.find_first_not_of(' ') == std::string::npos; }

}  // namespace velmar
