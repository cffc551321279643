#include "Messages.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "Input.h"

namespace velmar {

namespace {

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Where the last character of the text ends that is not cut off.
std::size_t EndOfWholeCharacters(const std::string& utf8) {
  std::size_t lead = utf8.size();
  while (lead > 0 && IsContinuation(utf8[lead - 1])) --lead;
  if (lead == 0) return utf8.size();
  const unsigned char byte = static_cast<unsigned char>(utf8[--lead]);
  const std::size_t length = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
  return lead + length <= utf8.size() ? utf8.size() : lead;
}

// The excerpt in a form that does no harm to a terminal, and the columns that stand before the caret.
std::pair<std::string, std::size_t> Shown(const Excerpt& excerpt) {
  const bool utf8 = IsUtf8(excerpt.text);
  const std::size_t end = utf8 ? EndOfWholeCharacters(excerpt.text) : excerpt.text.size();
  std::string shown;
  std::size_t caret = 0;
  for (std::size_t i = 0; i < end; ++i) {
    const char c = excerpt.text[i];
    if (utf8 && shown.empty() && IsContinuation(c)) continue;
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    const bool foreign = static_cast<unsigned char>(c) >= 0x80 && !utf8;
    shown += control ? ' ' : foreign ? '?' : c;
    if (i < excerpt.caret && !(utf8 && IsContinuation(c))) ++caret;
  }
  return {shown, caret};
}

const char* Name(Severity severity) { return severity == Severity::kError ? "error" : "warning"; }

// What an exception that the library has caught says, in words of a user.
std::string Reason(const std::string& logged) {
  static const std::string kReading = "Error while reading from filestream ";
  std::string reason =
      logged.compare(0, kReading.size(), kReading) == 0 ? logged.substr(kReading.size()) : logged;
  const std::size_t lineEnd = reason.find("\n   ");
  if (lineEnd != std::string::npos) reason.erase(0, lineEnd + 4);
  if (reason == "std::bad_array_new_length") return "cannot be read: the header section holds no record";
  if (reason == "std::bad_alloc") return "not enough memory";
  return reason;
}

// What of a message the library has logged says that the file cannot be read, with the reason; empty where it
// says something else.
std::string ReasonUnreadable(const std::string& logged, int error) {
  if (logged.compare(0, 25, "Error while opening file ") == 0) return std::strerror(error);
  for (const char* text : {"the input cannot be read any further: ", "the length of the input cannot be found"}) {
    const std::size_t at = logged.find(text);
    if (at == std::string::npos) continue;
    const std::string reason = logged.substr(at + std::strlen(text));
    return reason.empty() ? std::strerror(error) : reason;
  }
  return "";
}

}  // namespace

void Messages::Add(Severity severity, int line, int column, std::string text) {
  if (severity == Severity::kError) ++errors_;
  if (line > 0 && placed_.size() == kSorted) {
    ++unsorted_;
    return;
  }
  (line > 0 ? placed_ : general_).push_back({severity, {line, column}, std::move(text)});
}

void Messages::Print() {
  std::stable_sort(placed_.begin(), placed_.end(), [](const Message& a, const Message& b) {
    return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
  });
  const std::size_t printed = std::min(placed_.size(), kPrinted);
  std::vector<Place> places;
  for (std::size_t i = 0; i < printed; ++i) places.push_back(placed_[i].place);
  const std::vector<Excerpt> excerpts = ReadExcerpts(file_, places);

  for (std::size_t i = 0; i < printed; ++i) {
    const Message& message = placed_[i];
    Say(fmt::format("{}:{}:{}: {}: {}\n", file_, message.place.line, message.place.column, Name(message.severity),
                    message.text));
    if (i >= excerpts.size()) continue;  // the file is gone
    const auto [shown, caret] = Shown(excerpts[i]);
    if (!shown.empty()) Say(fmt::format("  {}\n  {:>{}}\n", shown, '^', caret + 1));
  }
  const std::size_t hidden = placed_.size() - printed + unsorted_;
  if (hidden > 0) Say(fmt::format("{}: {} not shown\n", file_, Counted(hidden, "more message")));
  for (const Message& message : general_) {
    Say(fmt::format("{}: {}: {}\n", file_, Name(message.severity), message.text));
  }
  placed_.clear();
  general_.clear();
  unsorted_ = 0;
}

void Say(const std::string& text) noexcept { (void)std::fputs(text.c_str(), stderr); }

int CannotRun(const std::string& text) {
  Say("velmar: error: " + text + '\n');
  return kCannotRun;
}

LogListener::LogListener(Messages& messages) : messages_(messages) { VELMAR::ExpLogger::AddLogger(this); }

LogListener::~LogListener() { VELMAR::ExpLogger::RemoveLogger(this); }

void LogListener::Write(const std::string& message, const VELMAR::ExpLogLevel& level) {
  const int error = errno == 0 ? EIO : errno;
  std::string text = message;
  while (!text.empty() && text.back() == '\n') text.pop_back();
  const std::string reason = ReasonUnreadable(text, error);
  if (!reason.empty()) messages_.SetUnreadable(reason);
  int line = 0;
  int column = 0;
  int length = 0;
  if (std::sscanf(text.c_str(), "-- line %d col %d: %n", &line, &column, &length) == 2 && length > 0) {
    messages_.Add(Severity::kError, line, column, text.substr(static_cast<std::size_t>(length)));
  } else if (level == VELMAR::ExpLogException) {
    messages_.AddError(Reason(text));
  }
}

}  // namespace velmar
