/// @file Terminal.h
/// Runs programs on a pseudo terminal.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "RunProgram.h"

/// What a program finds where it looks for a terminal.
struct TerminalSetting {
  const char* kind = "xterm";      ///< TERM
  const char* noColour = "";       ///< NO_COLOR
  bool hasStandardOutput = false;  ///< whether standard output goes there, too
  unsigned short columns = 80;
  const char* preloaded = nullptr;  ///< a library (LD_PRELOAD)
};

/// All that a program writes to standard error where that is a terminal; nothing where there are no pseudo terminals.
inline std::optional<std::string> OnATerminal(const std::vector<std::string>& command, const TerminalSetting& terminal = {}) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY);
  if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return std::nullopt;
  const std::string slave = ptsname(master);
  const int held = open(slave.c_str(), O_RDWR | O_NOCTTY);  // keeps what was written until it is read
  termios mode = {};
  tcgetattr(held, &mode);
  cfmakeraw(&mode);
  tcsetattr(held, TCSANOW, &mode);
  const winsize size = {24, terminal.columns, 0, 0};
  ioctl(held, TIOCSWINSZ, &size);

  std::string all;
  std::atomic<bool> hasEnded = false;
  std::thread reader([&] {
    for (;;) {
      const bool isLast = hasEnded;
      pollfd waiting = {master, POLLIN, 0};
      if (poll(&waiting, 1, isLast ? 0 : 20) <= 0) {
        if (isLast) return;
        continue;
      }
      char text[4096];
      const ssize_t length = read(master, text, sizeof text);
      if (length > 0) all.append(text, static_cast<std::size_t>(length));
    }
  });
  Setting setting;
  setting.before = [&] {
    dup2(held, 2);
    if (terminal.hasStandardOutput) dup2(held, 1);
    setenv("TERM", terminal.kind, 1);
    setenv("NO_COLOR", terminal.noColour, 1);
    if (terminal.preloaded == nullptr) return;
    setenv("LD_PRELOAD", terminal.preloaded, 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);  // a sanitizer wants to be first
  };
  RunProgram(command, setting);
  hasEnded = true;
  reader.join();
  close(held);
  close(master);
  return all;
}

/// What a terminal shows in the end, in which carriage returns go back to the beginning of the line: the last line of it.
inline std::string ShownAtTheEnd(const std::string& text) {
  std::string line;
  std::size_t column = 0;
  for (const char c : text) {
    if (c == '\n') line.clear();
    if (c == '\r' || c == '\n') {
      column = 0;
    } else {
      line.resize(std::max(line.size(), column + 1), ' ');
      line[column++] = c;
    }
  }
  return line.substr(0, line.find_last_not_of(' ') + 1);
}
