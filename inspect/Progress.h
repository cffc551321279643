/// @file Progress.h
/// How far a long operation is.
#pragma once

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace velmar {

/// Called with how much is done: 0 at the beginning, then more and more, 1 at the end, also where the operation fails. May be empty.
using Progress = std::function<void(double done)>;

/// Reports 0 when it is made and 1 when it goes. Between them it is told how far the operation is, as often as one likes: what is less than
/// a thousandth more than the last report costs a comparison.
class ReportedProgress {
 public:
  /// The operation is done at `total`, which may be a guess: of bytes, of instances. 0 stands for what has no steps.
  explicit ReportedProgress(Progress report, double total = 1) : report_(std::move(report)), total_(total) {
    if (!report_) return;
    report_(0);
    if (total_ > 0) next_ = total_ * kStep;
  }
  ~ReportedProgress() {
    try {
      if (report_) report_(1);
    } catch (...) {  // not enough memory for showing it, which may be why the operation ends
    }
  }
  ReportedProgress(const ReportedProgress&) = delete;
  ReportedProgress& operator=(const ReportedProgress&) = delete;

  /// Reports at most 0.99, which is all that can be known before the end.
  void operator()(double done) {
    if (done >= next_) Report(done);
  }

  /// For an operation that is a part of this one, from a share of the whole to another. Lives no longer than this.
  Progress Part(double begin, double end) {
    if (!report_) return nullptr;
    return [this, begin, end](double done) { (*this)((begin + (end - begin) * done) * total_); };
  }

 private:
  static constexpr double kStep = 0.001;
  static constexpr double kMost = 0.99;

  void Report(double done) {
    next_ = done < kMost * total_ ? done + kStep * total_ : std::numeric_limits<double>::infinity();
    report_(std::min(done / total_, kMost));
  }

  const Progress report_;
  const double total_;
  double next_ = std::numeric_limits<double>::infinity();  // what is reported
};

}  // namespace velmar
