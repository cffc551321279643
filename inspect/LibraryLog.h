/// @file LibraryLog.h
/// What the library says while it reads, as findings.
#pragma once

#include <string>

#include "ExpLogging.h"
#include "Findings.h"

namespace velmar {

/// While it lives, turns what the library logs into findings: syntax errors and what is not kept get their place, errors met in
/// reading none, and progress is passed over. Notes where the file itself cannot be read.
class LibraryLog : public VELMAR::ExpAbstractLogger {
 public:
  explicit LibraryLog(Findings& findings);
  ~LibraryLog() override;
  LibraryLog(const LibraryLog&) = delete;
  LibraryLog& operator=(const LibraryLog&) = delete;

  void Write(const std::string& message, const VELMAR::ExpLogLevel& level) override;

  /// Why the file could not be read, or not to its end; empty where it could.
  const std::string& Unreadable() const { return unreadable_; }

  /// Whether it said anything of the file's content, be it a finding or something that LossFinder knows more about.
  bool HasRemarks() const { return hasRemarks_; }

 private:
  Findings& findings_;
  bool hasRemarks_ = false;
  std::string unreadable_;
};

}  // namespace velmar
