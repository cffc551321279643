/// @file Messages.h
/// What the commands say on standard error.
#pragma once

#include <cstddef>
#include <string>

#include "Findings.h"

namespace velmar {

/// How a command ends: the exit status of the program.
enum ExitStatus {
  kDone = 0,
  kFileHasErrors = 1,
  kCannotRun = 2,  ///< wrong usage, or a file that cannot be read or written
};

/// Prints findings in the order of the lines, as `file:line:col: severity: text [code]` with the source line
/// and a caret below, and last those that concern the file as a whole. Reads the file again for the source
/// lines.
void Print(Findings& findings);

/// Ends a command that has printed its data: says what is wrong with the file, unless `isQuiet`, and returns
/// the exit status. Throws as FlushOutput does.
int Finish(Findings& findings, bool isQuiet);

/// Hands what was printed to the system. Throws std::system_error where it does not take it.
void FlushOutput();

/// The same on standard output, at most `most` of those with a place, and with what each is about: `#12 DIRECTION.name: `.
void PrintAsData(Findings& findings, std::size_t most);

/// Writes the text to standard error. Never throws: there is nobody left to be told that it cannot be
/// written.
void Say(const std::string& text) noexcept;

/// Prints `velmar: error: text` to standard error and returns kCannotRun.
int CannotRun(const std::string& text);

}  // namespace velmar
