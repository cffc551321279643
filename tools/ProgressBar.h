/// @file ProgressBar.h
/// How far a command is, for whoever waits at a terminal.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

#include "Progress.h"

namespace velmar {

/// A bar on the last line of a terminal: `reading [==========                              ]  25 %`.
///
/// It is drawn where something takes more than half a second, then every 100 ms at most, and erased at the end. Of several bars one
/// is drawn at a time. Used by one thread.
class ProgressBar {
 public:
  using Clock = std::chrono::steady_clock;

  /// What a bar is drawn on, and the clock that it goes by.
  struct Terminal {
    std::function<void(const std::string&)> write;
    std::function<std::size_t()> columns;  ///< the width of the terminal; 0 where it is not known
    std::function<Clock::time_point()> now = Clock::now;
  };

  /// From the beginning of the operation to the bar.
  static constexpr std::chrono::milliseconds kPatience{500};
  /// Between two drawings.
  static constexpr std::chrono::milliseconds kBetween{100};

  /// Draws nothing yet.
  ProgressBar(std::string label, Terminal terminal);
  ~ProgressBar() { Erase(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// How much is done: 0 begins anew, 1 ends and erases.
  void Show(double done);

  /// Erases the bar where it is drawn; it comes again when it is told of more. Never throws.
  void Erase() noexcept;

  /// The bar as it is drawn, in so many columns at most; 0 stands for 80. It is shorter where it has less place, a number alone where it
  /// has little, and empty where that does not fit.
  static std::string Text(const std::string& label, double done, std::size_t columns);

 private:
  const std::string label_;
  const Terminal terminal_;
  Clock::time_point next_;  // when it may be drawn
  std::size_t drawn_ = 0;   // so many columns
};

/// A bar on standard error to be told how much is done. Empty where standard error is no terminal, and where `isQuiet`.
Progress MakeProgressBar(const std::string& label, bool isQuiet);

/// Erases the bar that is drawn, if any, for something else to be written. Never throws.
void EraseProgressBar() noexcept;

}  // namespace velmar
