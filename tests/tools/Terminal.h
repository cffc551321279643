/// @file Terminal.h
/// Runs programs on a pseudo terminal.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
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

/// Both ends of a pseudo terminal. Throws std::runtime_error where there is none to be had.
class PseudoTerminal {
 public:
  PseudoTerminal() : master_(posix_openpt(O_RDWR | O_NOCTTY)) {
    const bool isThere = master_ >= 0 && grantpt(master_) == 0 && unlockpt(master_) == 0;
    if (isThere) slave_ = open(ptsname(master_), O_RDWR | O_NOCTTY);
    if (slave_ >= 0) return;
    const std::string reason = std::strerror(errno);
    if (master_ >= 0) close(master_);
    throw std::runtime_error("no pseudo terminal: " + reason);
  }
  ~PseudoTerminal() {
    close(slave_);
    close(master_);
  }
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  int Master() const { return master_; }
  int Slave() const { return slave_; }  ///< while it is open, what was written waits to be read

 private:
  int master_;
  int slave_ = -1;
};

/// A fixture whose tests are skipped where the system has no pseudo terminals, a container without /dev/pts for instance.
template <class Base>
class WithTerminal : public Base {
 protected:
  void SetUp() override {
    try {
      const PseudoTerminal terminal;
    } catch (const std::runtime_error& error) {
      GTEST_SKIP() << error.what();
    }
  }
};

/// All that a program writes to standard error where that is a terminal. Throws as PseudoTerminal does.
inline std::string OnATerminal(const std::vector<std::string>& command, const TerminalSetting& terminal = {}) {
  const PseudoTerminal both;
  const int master = both.Master();
  const int held = both.Slave();
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
