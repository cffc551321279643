// A clock that is a second further each time somebody looks at it: a library to be preloaded into programs that do something where much
// time has passed.
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  static std::atomic<time_t> looks{0};
  const long result = syscall(SYS_clock_gettime, clock, time);
  if (result == 0 && clock == CLOCK_MONOTONIC) time->tv_sec += ++looks;
  return static_cast<int>(result);
}
