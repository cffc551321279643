// Changes Part 21 files token by token, so that most of them stay files: the mutator of the targets that want whole files.
#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "Scanner.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using VELMAR::Scanner;
using VELMAR::Token;

constexpr const char* kValues[] = {
    "$", "*", "0", "-1", "2147483647", "2147483648", "0.", "1.E400", "''", "'a''b'", "'\\X2\\00E4\\X0\\'", ".T.", ".U.", ".ITEM.",
    "()", "(())", "(1.,$,.T.)", "#1", "#0", "#99999", "\"0F\"", "LENGTH_MEASURE(1.)", "A(B(C(#1)))", "(#1,#2,#1)", "/* */1",
};

// The tokens of a file, each with what stands between it and the next one.
std::vector<std::string> Cut(const std::string& text) {
  std::vector<std::string> pieces;
  if (text.empty() || static_cast<unsigned char>(text[0]) == 0xEF) return pieces;
  Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  std::size_t begin = 0;
  for (const Token* token = scanner.Scan(); token->kind != Token::EoF;) {
    token = scanner.Scan();
    const std::size_t end = token->kind == Token::EoF ? text.size() : static_cast<std::size_t>(token->pos);
    if (end < begin || end > text.size()) return {};
    pieces.push_back(text.substr(begin, end - begin));
    begin = end;
  }
  return pieces;
}

using Pieces = std::vector<std::string>;

// One instance, or whatever else ends with ';'.
std::pair<std::ptrdiff_t, std::ptrdiff_t> Statement(const Pieces& pieces, std::size_t at) {
  const auto ends = [](const std::string& piece) { return !piece.empty() && piece[0] == ';'; };
  const auto here = pieces.begin() + static_cast<std::ptrdiff_t>(at);
  auto first = here;
  while (first != pieces.begin() && !ends(*(first - 1))) --first;
  auto last = std::find_if(here, pieces.end(), ends);
  if (last != pieces.end()) ++last;
  return {first - pieces.begin(), last - pieces.begin()};
}

void Change(Pieces& pieces, std::minstd_rand& random) {
  const auto any = [&random](std::size_t count) { return static_cast<std::size_t>(random()) % count; };
  const std::size_t at = any(pieces.size());
  const auto begin = pieces.begin();
  const auto here = begin + static_cast<std::ptrdiff_t>(at);
  const auto [first, last] = Statement(pieces, at);
  switch (any(8)) {
    case 0: pieces.erase(here); break;
    case 1: pieces.insert(here, pieces[any(pieces.size())]); break;
    case 2: std::swap(pieces[at], pieces[any(pieces.size())]); break;
    case 3: pieces[at] = kValues[any(std::size(kValues))]; break;
    case 4: pieces.erase(begin + first, begin + last); break;
    case 5: {
      const Pieces statement(begin + first, begin + last);
      const auto [target, unused] = Statement(pieces, any(pieces.size()));
      static_cast<void>(unused);
      pieces.insert(pieces.begin() + target, statement.begin(), statement.end());
      break;
    }
    case 6:
      pieces[at].insert(0, "(");
      pieces[at].append(")");
      break;
    default: pieces.insert(here, std::string(",") + kValues[any(std::size(kValues))]); break;
  }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned int seed) {
  std::minstd_rand random(seed);
  std::vector<std::string> pieces;
  if (random() % 4 != 0) pieces = Cut(std::string(reinterpret_cast<const char*>(data), size));
  if (pieces.empty()) return LLVMFuzzerMutate(data, size, maxSize);
  for (std::size_t changes = random() % 4 + 1; changes > 0 && !pieces.empty(); --changes) Change(pieces, random);
  std::string text;
  for (const std::string& piece : pieces) text += piece;
  const std::size_t length = std::min(text.size(), maxSize);
  std::memcpy(data, text.data(), length);  // NOLINT(bugprone-not-null-terminated-result): bytes, no text of C
  return length;
}
