#include "ProgressBar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace velmar {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kPatience(500);
constexpr std::chrono::milliseconds kBetween(100);
constexpr std::size_t kCells = 40;

std::size_t columnsDrawn = 0;

bool HasTerminal() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

class ProgressBar {
 public:
  explicit ProgressBar(const std::string& label) : label_(label) {}

  void Show(double done) {
    const Clock::time_point now = Clock::now();
    if (done <= 0) next_ = now + kPatience;
    if (done >= 1) {
      EraseProgressBar();
    } else if (now >= next_) {
      next_ = now + kBetween;
      Draw(std::max(done, 0.0));
    }
  }

 private:
  void Draw(double done) {
    const auto cells = static_cast<std::size_t>(done * kCells);
    const std::string text = fmt::format("{} [{:<{}}] {:3.0f} %", label_, std::string(cells, '='), kCells, done * 100);
    columnsDrawn = text.size();
    (void)std::fputs(("\r" + text).c_str(), stderr);
  }

  const std::string label_;
  Clock::time_point next_;
};

}  // namespace

std::function<void(double)> MakeProgressBar(const std::string& label) {
  if (!HasTerminal()) return nullptr;
  auto bar = std::make_shared<ProgressBar>(label);
  return [bar](double done) { bar->Show(done); };
}

void EraseProgressBar() noexcept {
  if (columnsDrawn == 0) return;
  (void)std::fprintf(stderr, "\r%*s\r", static_cast<int>(columnsDrawn), "");
  columnsDrawn = 0;
}

}  // namespace velmar
