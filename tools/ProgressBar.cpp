#include "ProgressBar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <utility>

#include "Colours.h"

namespace velmar {

namespace {

ProgressBar* drawnBar = nullptr;

std::size_t ColumnsOfTerminal() {
  winsize size = {};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace

ProgressBar::ProgressBar(std::string label, Terminal terminal) : label_(std::move(label)), terminal_(std::move(terminal)) {
  next_ = terminal_.now() + kPatience;
}

void ProgressBar::Show(double done) {
  if (done >= 1) {
    Erase();
    return;
  }
  const Clock::time_point now = terminal_.now();
  if (done <= 0) next_ = now + kPatience;
  if (now < next_) return;
  next_ = now + kBetween;
  const std::string text = Text(label_, done, terminal_.columns());
  if (drawnBar != this || text.size() < drawn_) EraseProgressBar();
  if (text.empty()) return;
  drawnBar = this;
  drawn_ = text.size();
  terminal_.write('\r' + text);
}

void ProgressBar::Erase() noexcept {
  if (drawnBar == this) drawnBar = nullptr;
  if (drawn_ == 0) return;
  try {
    terminal_.write('\r' + std::string(std::exchange(drawn_, 0), ' ') + '\r');
  } catch (...) {  // not enough memory for blanks
  }
}

std::string ProgressBar::Text(const std::string& label, double done, std::size_t columns) {
  constexpr std::size_t kUsualColumns = 80;
  constexpr std::size_t kMostCells = 40;
  constexpr std::size_t kFewestCells = 5;
  // A character in the last column may move the cursor to the next line.
  const std::size_t width = (columns == 0 ? kUsualColumns : columns) - 1;
  const std::string percent = fmt::format(" {:3.0f} %", done * 100);
  const std::size_t around = label.size() + std::string(" []").size() + percent.size();
  if (around + kFewestCells > width) {
    return label.size() + percent.size() <= width ? label + percent : std::string();
  }
  const std::size_t cells = std::min(kMostCells, width - around);
  const std::string full(static_cast<std::size_t>(done * static_cast<double>(cells)), '=');
  return fmt::format("{} [{:<{}}]{}", label, full, cells, percent);
}

Progress MakeProgressBar(const std::string& label, bool isQuiet) {
  if (isQuiet || !IsTerminal(stderr)) return nullptr;
  const auto write = [](const std::string& text) { (void)std::fputs(text.c_str(), stderr); };
  auto bar = std::make_shared<ProgressBar>(label, ProgressBar::Terminal{write, ColumnsOfTerminal});
  return [bar](double done) { bar->Show(done); };
}

void EraseProgressBar() noexcept {
  if (drawnBar != nullptr) drawnBar->Erase();
}

}  // namespace velmar
