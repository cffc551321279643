#include "LibraryLog.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

namespace velmar {

namespace {

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
  for (const char* text :
       {"the input cannot be read any further: ", "the length of the input cannot be found"}) {
    const std::size_t at = logged.find(text);
    if (at == std::string::npos) continue;
    const std::string reason = logged.substr(at + std::strlen(text));
    return reason.empty() ? std::strerror(error) : reason;
  }
  return "";
}

bool BeginsWith(const std::string& text, const char* start) { return text.compare(0, std::strlen(start), start) == 0; }

// What the library says of syntax in the words of its grammar, in those of users; all else as it is.
const std::string& Explained(const std::string& text) {
  static const std::string kValue = "a value expected";
  static const std::map<std::string, std::string> kTexts = {
      {"EOF expected", "the end of the file expected"},
      {"IDENT expected", "a name in capital letters expected"},
      {"ENTITYINSTANCENAME expected", "the name of an instance, such as #1, expected"},
      {"HEADER expected", "\"HEADER\" expected"},
      {"DATA expected", "\"DATA\" expected"},
      {"ENDSEC expected", "\"ENDSEC\" expected"},
      {"invalid keyword", "the name of an entity type, in capital letters, expected"},
      {"invalid entityInstance", "the name of an entity type, in capital letters, or \"(\" of a complex instance expected"},
      {"invalid parameterArg", kValue},
      {"invalid parameterExpAggr", kValue},
      {"invalid parameterExpAggrSelect", kValue},
      {"invalid parameter", kValue},
      {"this symbol not expected in headerEntity", "\";\" expected behind the record of the header"},
      {"this symbol not expected in entityInstance", "\";\" expected behind the instance"},
  };
  const auto explained = kTexts.find(text);
  return explained == kTexts.end() ? text : explained->second;
}

// Whether the library says of a place what the walk over the file finds again, and knows more about: real numbers out of range,
// instances with the same number, and numbers that are too great.
bool IsFoundAgain(const std::string& text) {
  return BeginsWith(text, "a real number does not fit ") || BeginsWith(text, "there is a second #") ||
         text.find(" is too great a number") != std::string::npos;
}

// Whether the library says something of the whole file that the walk knows more about: references that lead nowhere, records that do
// not fit their type, or have none.
bool IsRemark(const std::string& text) {
  return BeginsWith(text, "of the instances that are referred to, ") || BeginsWith(text, "a record ") ||
         BeginsWith(text, "the header has no entity ");
}

// Adds what the library says of a place, which is about syntax, or about what is not kept.
void AddPlaced(Findings& findings, Place place, const std::string& text) {
  if (IsFoundAgain(text)) return;
  const bool isScope = BeginsWith(text, "the scope of #");
  const bool isRecord = BeginsWith(text, "of two records ") || BeginsWith(text, "there is a second record ");
  const std::size_t number = text.find('#');
  const int instance = (isScope || isRecord) && number != std::string::npos ? std::atoi(text.c_str() + number + 1) : 0;
  findings.Add(isScope ? Code::kScope : isRecord ? Code::kRepeatedRecord : Code::kSyntax, place, Explained(text), instance);
}

}  // namespace

LibraryLog::LibraryLog(Findings& findings) : findings_(findings) { VELMAR::ExpLogger::AddLogger(this); }

LibraryLog::~LibraryLog() { VELMAR::ExpLogger::RemoveLogger(this); }

void LibraryLog::Write(const std::string& message, const VELMAR::ExpLogLevel& level) {
  const int error = errno == 0 ? EIO : errno;
  std::string text = message;
  while (!text.empty() && text.back() == '\n') text.pop_back();
  const std::string unreadable = ReasonUnreadable(text, error);
  if (!unreadable.empty()) unreadable_ = unreadable;
  int line = 0;
  int column = 0;
  int length = 0;
  if (std::sscanf(text.c_str(), "-- line %d col %d: %n", &line, &column, &length) == 2 && length > 0) {
    hasRemarks_ = true;
    AddPlaced(findings_, {line, column}, text.substr(static_cast<std::size_t>(length)));
  } else if (level == VELMAR::ExpLogException) {
    const std::string reason = Reason(text);
    findings_.Add(reason.find("holds no record") != std::string::npos ? Code::kEmptyHeader : Code::kGivenUp,
                  reason);
    hasRemarks_ = true;
  } else if (IsRemark(text)) {
    hasRemarks_ = true;
  }
}

}  // namespace velmar
