/// @file Faults.h
/// Runs programs of which system calls fail, one after another.
#pragma once

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "RunProgram.h"

/// The calls that can fail on an ordinary file; to go to another place in it cannot.
inline const std::string kEvery = "read,readv,pread,write,writev,close,fstat,fsync,ftruncate,fchmod,getdents,open,stat,access,"
                                  "readlink,rename,unlink,chmod,mkdir,rmdir";

/// What fails: the calls of these names ("read,open") on files whose paths begin with `below`, with `error`, a
/// value of errno, or, where that is 0, by moving nothing as at the end of a file, or, where it is kShort, half of the bytes.
struct Fault {
  static constexpr int kShort = -1;

  std::string below;  ///< or "fd:1" for what the program finds open as 1
  std::string calls;
  int error = EIO;
  bool forGood = false;  ///< whether all calls behind the first failing one fail, too
};

inline std::string Text(const Fault& fault) {
  return fault.calls + " with " + (fault.error == Fault::kShort ? "half of the bytes" : strerror(fault.error)) +
         (fault.forGood ? ", for good" : "");
}

/// Runs a program with its k-th such call failing, for each k until there is none. Calls `prepare` before each run and
/// `check` after it, with what failed, "write" for instance. Counts the runs in which something failed.
inline int RunWithEach(const Fault& fault, const std::vector<std::string>& command, const std::function<void()>& prepare,
                       const std::function<void(const Outcome&, const std::string& failed)>& check,
                       const std::string& standardOutput = "") {
  constexpr int kMost = 2000;
  TemporaryDirectory directory;
  const std::string report = directory.Path("report");
  for (int k = 1; k < kMost; ++k) {
    std::filesystem::remove(report);
    prepare();
    Setting setting;
    setting.standardOutput = standardOutput;
    setting.before = [&] {
      setenv("VELMAR_FAULT_BELOW", fault.below.c_str(), 1);
      setenv("VELMAR_FAULT_CALLS", fault.calls.c_str(), 1);
      setenv("VELMAR_FAULT_ERROR", fault.error == Fault::kShort ? "short" : std::to_string(fault.error).c_str(), 1);
      setenv("VELMAR_FAULT_AT", std::to_string(k).c_str(), 1);
      setenv("VELMAR_FAULT_TIMES", fault.forGood ? "0" : "1", 1);
      setenv("VELMAR_FAULT_REPORT", report.c_str(), 1);
      setenv("LD_PRELOAD", VELMAR_FAULT_LIBRARY, 1);
      // A sanitizer wants to be first, and its search for leaks makes calls where no signal arrives.
      setenv("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0", 1);
    };
    const Outcome outcome = RunProgram(command, setting);
    if (outcome.status == 77) {
      ADD_FAILURE() << "there is no system call filter, although there was one before";
      return 0;
    }
    const std::string failed = ReadFile(report);
    check(outcome, failed);
    if (failed.empty()) return k - 1;
    if (testing::Test::HasFailure()) {
      ADD_FAILURE() << "this was with " << Text(fault) << ", call " << k << ": " << failed << "exit status " << outcome.status
                    << "\n" << outcome.err;
      return k;
    }
  }
  ADD_FAILURE() << "more than " << kMost << " calls";
  return kMost;
}

/// The contents of the files of a folder by their names.
inline std::map<std::string, std::string> FilesIn(const std::string& folder) {
  std::map<std::string, std::string> files;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    files[entry.path().filename().string()] = ReadFile(entry.path().string());
  }
  return files;
}

/// A test whose programs are made to fail; skipped where the system has no filter of system calls.
class FaultTest : public testing::Test {
 protected:
  void SetUp() override {
    Setting setting;
    setting.before = [] {
      for (const char* name : {"BELOW", "CALLS", "ERROR", "AT", "TIMES", "REPORT"}) {
        setenv((std::string("VELMAR_FAULT_") + name).c_str(), "0", 1);
      }
      setenv("LD_PRELOAD", VELMAR_FAULT_LIBRARY, 1);
    };
    if (RunProgram({"/bin/true"}, setting).status == 77) GTEST_SKIP() << "the system does not let calls be caught";
  }

  TemporaryDirectory directory_;
};
