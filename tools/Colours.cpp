#include "Colours.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace velmar {

namespace {

bool HasColours(std::FILE* stream) {
  const char* noColour = std::getenv("NO_COLOR");
  return IsTerminal(stream) && (noColour == nullptr || *noColour == '\0');
}

}  // namespace

bool IsTerminal(std::FILE* stream) {
  const char* terminal = std::getenv("TERM");
  return isatty(fileno(stream)) != 0 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

std::string Coloured(std::FILE* stream, const std::string& text, const char* style) {
  if (text.empty() || !HasColours(stream)) return text;
  return fmt::format("\x1B[{}m{}\x1B[0m", style, text);
}

}  // namespace velmar
