// The scanner: the same tokens from memory, from a file and through Peek, in the order of their places.
#include "Scanner.h"

#include "Fuzzing.h"

using VELMAR::Scanner;
using VELMAR::Token;
using velmar_fuzz::Require;

namespace {

void RequireSame(const Token& a, const Token& b) {
  Require(a.kind == b.kind && a.pos == b.pos && a.col == b.col && a.line == b.line, "tokens have the same places");
  Require(std::wstring(a.val) == b.val, "tokens have the same texts");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // A damaged byte order mark ends the process, as documented.
  if (size == 0 || (data[0] == 0xEF && (size < 3 || data[1] != 0xBB || data[2] != 0xBF))) return 0;

  Scanner memory(data, static_cast<int>(size));
  FILE* file = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
  Scanner stream(file);
  Scanner peeking(data, static_cast<int>(size));
  int line = 1;
  int pos = 0;
  for (int kind = -1, count = 0; kind != Token::EoF; ++count) {
    const Token& token = *memory.Scan();
    RequireSame(token, *stream.Scan());
    const Token& peeked = *peeking.Peek();
    if (count % 3 == 0) peeking.Peek();
    peeking.ResetPeek();
    RequireSame(peeked, *peeking.Scan());
    RequireSame(token, peeked);
    Require(token.line >= line && token.pos >= pos, "tokens follow one another");
    line = token.line;
    pos = token.pos;
    kind = token.kind;
  }
  Require(memory.Scan()->kind == Token::EoF, "the end is followed by the end");
  std::fclose(file);
  return 0;
}
