/// @file CapturedLog.h
/// What the library logs while a test runs.
#pragma once

#include <string>
#include <vector>

#include "ExpLogging.h"

namespace VELMAR::TestData {

/// A logger that is registered for exactly as long as it lives and keeps everything it is given.
///
/// ```
/// CapturedLog log;
/// file.Read("no_such_file.stp");
/// EXPECT_THAT(log.lines, ElementsAre("Error while opening file no_such_file.stp"));
/// EXPECT_THAT(log.levels, ElementsAre(1));
/// ```
/// One entry in each vector per message, oldest first. A message comes by ExpLogger::Write as it is or by
/// ExpLogger::WriteLine, which ends the line; `lines` has the text that the caller gave in both cases,
/// `ended` tells them apart, and `text` is what a log file would hold.
class CapturedLog : public ExpAbstractLogger {
 public:
  CapturedLog() { ExpLogger::AddLogger(this); }
  ~CapturedLog() override { ExpLogger::RemoveLogger(this); }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  void Write(const std::string& message, const ExpLogLevel& level) override {
    Keep(message, level, false);
    text += message;
  }
  void WriteLine(const std::string& message, const ExpLogLevel& level) override {
    Keep(message, level, true);
    text += message + "\n";
  }

  /// Forgets what has been logged so far.
  void Clear() {
    lines.clear();
    levels.clear();
    ended.clear();
    text.clear();
  }

  std::vector<std::string> lines;  ///< the messages, without the line feed of WriteLine
  std::vector<int> levels;         ///< the level of each message as a number
  std::vector<bool> ended;         ///< whether the message came by WriteLine
  std::string text;                ///< all messages one behind the other, with the line feeds of WriteLine

 private:
  void Keep(const std::string& message, const ExpLogLevel& level, bool line) {
    lines.push_back(message);
    levels.push_back(static_cast<int>(level));
    ended.push_back(line);
  }
};

}  // namespace VELMAR::TestData
