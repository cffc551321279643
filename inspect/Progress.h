/// @file Progress.h
/// How far a long operation is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

namespace velmar {

/// Called with how much is done: 0 at the beginning, 1 at the end. May be empty.
using Progress = std::function<void(double done)>;

/// After so many instances each, progress is reported.
constexpr std::size_t kReportedInstances = 4096;

/// Reports 0 when it is made and 1 when it goes.
class ReportedProgress {
 public:
  explicit ReportedProgress(Progress report) : report_(std::move(report)) { Report(0); }
  ~ReportedProgress() { Report(1); }
  ReportedProgress(const ReportedProgress&) = delete;
  ReportedProgress& operator=(const ReportedProgress&) = delete;

  /// Reports at most 0.99, which is all that can be known before the end.
  void operator()(double done) const { Report(std::min(done, 0.99)); }

 private:
  void Report(double done) const {
    if (report_) report_(done);
  }

  Progress report_;
};

}  // namespace velmar
