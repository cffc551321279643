/// @file ExpLogging.h
/// Diagnostics: the dispatcher, loggers, and the outputs they write to.
///
/// The library says everything through ExpLogger, which hands each message to every logger that the
/// application has registered; with none registered, messages are dropped. Texts are written exactly as the
/// caller built them. Write failures are ignored. Used by one thread at a time.
#pragma once

#include <cstdio>
#include <iosfwd>
#include <list>
#include <string>

#include "VelmarApi.h"

namespace VELMAR {

/// How serious a message is. Handed to every logger; nothing in the library filters by it.
enum ExpLogLevel : int {
  ExpLogMessage = 1,    ///< syntax errors, missing types, schema substitutions, growth of stores, progress
  ExpLogException = 4,  ///< exceptions caught while a file was read, appended to or written
};

/// A sink of characters.
class VELMAR_API ExpAbstractOutput {
 public:
  virtual ~ExpAbstractOutput();
  /// Takes one character. What it returns is up to the class.
  virtual int Put(char c) = 0;
  /// Calls Put(char) for each character in order. Returns 0.
  virtual int Put(const std::string& text);
};

/// Writes to a stream, which is not owned, and flushes it after every Put.
class VELMAR_API ExpStreamOutput : public ExpAbstractOutput {
 public:
  /// Writes to `stream`, which outlives this output.
  explicit ExpStreamOutput(std::ostream& stream);
  ~ExpStreamOutput() override;
  /// Returns 0.
  int Put(char c) override;
  /// Writes the whole text in one insertion. Returns 0.
  int Put(const std::string& text) override;

 private:
  std::ostream& stream_;
};

/// Writes to a FILE, which it owns and closes at its end. Buffering is that of the FILE.
class VELMAR_API ExpFileOutput : public ExpAbstractOutput {
 public:
  /// Takes over `file`. With null, everything put is dropped.
  explicit ExpFileOutput(FILE* file);
  ExpFileOutput(const ExpFileOutput&) = delete;
  ExpFileOutput& operator=(const ExpFileOutput&) = delete;
  ~ExpFileOutput() override;
  using ExpAbstractOutput::Put;
  /// Returns what fputc returns: the character written, or EOF.
  int Put(char c) override;

 private:
  FILE* file_;
};

/// What ExpLogger hands its messages to.
class VELMAR_API ExpAbstractLogger {
 public:
  virtual ~ExpAbstractLogger();
  /// Takes a message as it is: with its line end, where it has one.
  virtual void Write(const std::string& message, const ExpLogLevel& level) = 0;
  /// Calls Write with one "\n" appended to the message.
  virtual void WriteLine(const std::string& message, const ExpLogLevel& level);
};

/// Writes every message, whatever its level, to one output.
class VELMAR_API ExpSimpleLogger : public ExpAbstractLogger {
 public:
  /// Logs to `*stream`, which must not be null, is not owned and outlives the logger.
  explicit ExpSimpleLogger(std::ostream* stream);
  /// Logs to `file`, which the logger takes over and closes when it is destroyed.
  explicit ExpSimpleLogger(FILE* file);
  ExpSimpleLogger(const ExpSimpleLogger&) = delete;
  ExpSimpleLogger& operator=(const ExpSimpleLogger&) = delete;
  ~ExpSimpleLogger() override;
  void Write(const std::string& message, const ExpLogLevel& level) override;

 private:
  ExpAbstractOutput* output_;
};

/// Hands each message to the registered loggers, in the order of their registration.
///
/// Loggers stay the application's: none is ever deleted here, and one must be removed before it is destroyed.
/// A logger may remove itself while it is called.
class VELMAR_API ExpLogger {
 public:
  ExpLogger() = delete;

  /// The registered loggers, first registered first. The list lives until the process ends.
  static std::list<ExpAbstractLogger*>& GetLoggers();
  /// Registers `logger`; a logger that is registered already stays where it is.
  static void AddLogger(ExpAbstractLogger* logger);
  /// Takes `logger` out of the list without deleting it; nothing happens if it is not there.
  static void RemoveLogger(ExpAbstractLogger* logger);
  /// Whether `logger` is registered. Linear in the number of loggers.
  static bool Contains(ExpAbstractLogger* logger);

  /// Hands the message over as it is, without a line end of its own.
  static void Write(const std::string& message, const ExpLogLevel& level);
  /// Each logger appends the line feed itself.
  static void WriteLine(const std::string& message, const ExpLogLevel& level);
};

}  // namespace VELMAR
