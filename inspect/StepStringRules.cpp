#include "StepStringRules.h"

#include <cctype>

namespace velmar {

namespace {

// Looks at one string from its beginning to the first mistake.
class Reader {
 public:
  explicit Reader(const std::string& text) : text_(text) {}

  std::optional<StringMistake> Find() {
    while (at_ < text_.size()) {
      const std::size_t begin = at_;
      const bool isRight = text_[at_] == '\\' ? PassEscape() : PassCharacter();
      if (!isRight) return StringMistake{begin, text_[begin] == '\\', mistake_};
    }
    return std::nullopt;
  }

  bool IsUtf8() {
    while (at_ < text_.size()) {
      if (!PassCharacter()) return false;
    }
    return true;
  }

 private:
  bool Fail(const char* mistake) {
    mistake_ = mistake;
    return false;
  }

  bool Take(const char* what) {
    const std::string expected = what;
    if (text_.compare(at_, expected.size(), expected) != 0) return false;
    at_ += expected.size();
    return true;
  }

  bool TakeHex(int digits) {
    for (int i = 0; i < digits; ++i, ++at_) {
      if (at_ >= text_.size() || std::isxdigit(static_cast<unsigned char>(text_[at_])) == 0) return false;
    }
    return true;
  }

  // Groups of so many digits up to \X0\.
  bool PassGroups(int digits, const char* mistake) {
    do {
      if (!TakeHex(digits)) return Fail(mistake);
    } while (!Take("\\X0\\"));
    return true;
  }

  bool PassEscape() {
    if (Take("\\\\") || Take("\\N\\") || Take("\\F\\")) return true;
    if (Take("\\X2\\")) return PassGroups(4, "\\X2\\ is followed by groups of four hexadecimal digits, and \\X0\\");
    if (Take("\\X4\\")) return PassGroups(8, "\\X4\\ is followed by groups of eight hexadecimal digits, and \\X0\\");
    if (Take("\\X\\")) return TakeHex(2) || Fail("\\X\\ is followed by two hexadecimal digits");
    if (Take("\\S\\")) {
      if (at_ >= text_.size()) return Fail("\\S\\ is followed by a character");
      at_ += text_.compare(at_, 2, "''") == 0 || text_.compare(at_, 2, "\\\\") == 0 ? 2 : 1;
      return true;
    }
    if (Take("\\P")) {
      if (at_ >= text_.size() || text_[at_] < 'A' || text_[at_] > 'I') return Fail("\\P is followed by a letter from A to I");
      ++at_;
      return Take("\\") || Fail("\\P and its letter are followed by \\");
    }
    return Fail("a backslash begins an escape; alone it is written \\\\");
  }

  // One character of UTF-8 (ISO/IEC 10646): no longer than it must be, no surrogate, at most 10FFFF.
  bool PassCharacter() {
    const auto byte = [this](std::size_t offset) {
      return at_ + offset < text_.size() ? static_cast<unsigned char>(text_[at_ + offset]) : 0u;
    };
    const unsigned lead = byte(0);
    std::size_t length = 1;
    if (lead >= 0x80) {
      unsigned lowest = 0x80;
      unsigned highest = 0xBF;
      if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
      } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) lowest = 0xA0;
        if (lead == 0xED) highest = 0x9F;
      } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) lowest = 0x90;
        if (lead == 0xF4) highest = 0x8F;
      } else {
        return Fail("this byte is not UTF-8");
      }
      if (byte(1) < lowest || byte(1) > highest) return Fail("these bytes are not UTF-8");
      for (std::size_t i = 2; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return Fail("these bytes are not UTF-8");
      }
    }
    at_ += length;
    return true;
  }

  const std::string& text_;
  std::size_t at_ = 0;
  std::string mistake_;
};

}  // namespace

std::optional<StringMistake> FindStringMistake(const std::string& text) { return Reader(text).Find(); }

bool IsWellFormedUtf8(const std::string& bytes) { return Reader(bytes).IsUtf8(); }

}  // namespace velmar
