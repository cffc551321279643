/// @file Messages.h
/// What the commands say about a file on standard error.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ExpLogging.h"
#include "Input.h"

namespace velmar {

/// How a command ends: the exit status of the program.
enum ExitStatus {
  kDone = 0,
  kFileHasErrors = 1,
  kCannotRun = 2,  ///< wrong usage, or a file that cannot be read or written
};

enum class Severity { kError, kWarning };

/// Collects what is to be said about one file and prints it in the order of the lines, as
/// `file:line:col: severity: text` with the source line and a caret below, and last what concerns the file as
/// a whole.
class Messages {
 public:
  /// So many messages with a place are printed; what is beyond is counted.
  static constexpr std::size_t kPrinted = 50;
  /// So many are sorted; those added later are counted only.
  static constexpr std::size_t kSorted = 100000;

  explicit Messages(std::string file) : file_(std::move(file)) {}

  /// Line and column count from 1; line 0 stands for the file as a whole.
  void Add(Severity severity, int line, int column, std::string text);
  void AddError(std::string text) { Add(Severity::kError, 0, 0, std::move(text)); }

  /// Notes that the file could not be read, or not to its end.
  void SetUnreadable(std::string reason) { unreadable_ = std::move(reason); }
  /// Why it could not; empty where it could.
  const std::string& Unreadable() const { return unreadable_; }

  std::size_t Errors() const { return errors_; }
  bool IsEmpty() const { return placed_.empty() && general_.empty(); }

  /// Prints to standard error what was added, and forgets it. Reads the file again for the source lines.
  void Print();

 private:
  struct Message {
    Severity severity;
    Place place;
    std::string text;
  };

  std::string file_;
  std::vector<Message> placed_;
  std::vector<Message> general_;
  std::size_t unsorted_ = 0;
  std::size_t errors_ = 0;
  std::string unreadable_;
};

/// Writes the text to standard error. Never throws: there is nobody left to be told that it cannot be written.
void Say(const std::string& text) noexcept;

/// Prints `velmar: error: text` to standard error and returns kCannotRun.
int CannotRun(const std::string& text);

/// While it lives, turns what the library logs into messages: syntax errors get their place, errors met in
/// reading none, and progress is passed over. Notes where the file itself cannot be read.
class LogListener : public VELMAR::ExpAbstractLogger {
 public:
  explicit LogListener(Messages& messages);
  ~LogListener() override;
  LogListener(const LogListener&) = delete;
  LogListener& operator=(const LogListener&) = delete;

  void Write(const std::string& message, const VELMAR::ExpLogLevel& level) override;

 private:
  Messages& messages_;
};

}  // namespace velmar
