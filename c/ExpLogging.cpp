#include "ExpLogging.h"

#include <algorithm>
#include <ostream>

namespace VELMAR {

// --------------------------------------------------------------------------------------------------------
// Outputs

ExpAbstractOutput::~ExpAbstractOutput() = default;

int ExpAbstractOutput::Put(const std::string& text) {
  for (const char c : text) Put(c);
  return 0;
}

ExpStreamOutput::ExpStreamOutput(std::ostream& stream) : stream_(stream) {}

ExpStreamOutput::~ExpStreamOutput() = default;

int ExpStreamOutput::Put(char c) {
  stream_.put(c).flush();
  return 0;
}

int ExpStreamOutput::Put(const std::string& text) {
  stream_.write(text.data(), static_cast<std::streamsize>(text.size())).flush();
  return 0;
}

ExpFileOutput::ExpFileOutput(FILE* file) : file_(file) {}

ExpFileOutput::~ExpFileOutput() {
  if (file_ != nullptr) std::fclose(file_);
}

int ExpFileOutput::Put(char c) { return file_ != nullptr ? std::fputc(c, file_) : EOF; }

// --------------------------------------------------------------------------------------------------------
// Loggers

ExpAbstractLogger::~ExpAbstractLogger() = default;

void ExpAbstractLogger::WriteLine(const std::string& message, const ExpLogLevel& level) {
  Write(message + "\n", level);
}

ExpSimpleLogger::ExpSimpleLogger(std::ostream* stream) : output_(new ExpStreamOutput(*stream)) {}

ExpSimpleLogger::ExpSimpleLogger(FILE* file) : output_(new ExpFileOutput(file)) {}

ExpSimpleLogger::~ExpSimpleLogger() { delete output_; }

void ExpSimpleLogger::Write(const std::string& message, const ExpLogLevel&) { output_->Put(message); }

// -----------------------------------------------------------------------------------------------------
// Dispatcher

std::list<ExpAbstractLogger*>& ExpLogger::GetLoggers() {
  static std::list<ExpAbstractLogger*> loggers;
  return loggers;
}

void ExpLogger::AddLogger(ExpAbstractLogger* logger) {
  if (!Contains(logger)) GetLoggers().push_back(logger);
}

void ExpLogger::RemoveLogger(ExpAbstractLogger* logger) {
  if (Contains(logger)) GetLoggers().remove(logger);
}

bool ExpLogger::Contains(ExpAbstractLogger* logger) {
  const auto& loggers = GetLoggers();
  return std::find(loggers.begin(), loggers.end(), logger) != loggers.end();
}

// A logger may take itself out of the list while it is called, hence the early steps.

void ExpLogger::Write(const std::string& message, const ExpLogLevel& level) {
  auto& loggers = GetLoggers();
  for (auto logger = loggers.begin(); logger != loggers.end();) (*logger++)->Write(message, level);
}

void ExpLogger::WriteLine(const std::string& message, const ExpLogLevel& level) {
  auto& loggers = GetLoggers();
  for (auto logger = loggers.begin(); logger != loggers.end();) (*logger++)->WriteLine(message, level);
}

}  // namespace VELMAR
