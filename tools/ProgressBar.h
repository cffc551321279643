/// @file ProgressBar.h
/// How far a command is, for whoever waits at a terminal.
#pragma once

#include <functional>
#include <string>

namespace velmar {

/// Something to call with how much is done, from 0 at the beginning to 1 at the end, which draws a bar on standard error once that has
/// taken more than half a second, and erases it at the end. Empty where standard error is no terminal.
std::function<void(double)> MakeProgressBar(const std::string& label);

/// Erases the bar that is drawn, if any, for something else to be written. Never throws.
void EraseProgressBar() noexcept;

}  // namespace velmar
