/// @file RunProgram.h
/// Runs programs and makes the files that they are run on.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

/// A new directory, removed with all it holds at the end.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = testing::TempDir() + "velmar-XXXXXX";
    path_ = mkdtemp(pattern.data());
  }
  ~TemporaryDirectory() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string Path(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

inline std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// Writes a file and returns its path.
inline std::string WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
  return path;
}

/// What a program did.
struct Outcome {
  int status = -1;  ///< its exit status, or 1000 and the number of the signal that ended it
  std::string out;
  std::string err;
};

/// How a program is run, where it matters.
struct Setting {
  std::string directory;         ///< the working directory; empty for that of the test
  std::string standardOutput;    ///< where standard output goes, instead of being captured
  std::function<void()> before;  ///< called in the new process
};

/// Runs a program with its arguments to its end.
inline Outcome RunProgram(const std::vector<std::string>& command, const Setting& setting = {}) {
  TemporaryDirectory directory;
  const std::string out = setting.standardOutput.empty() ? directory.Path("out") : setting.standardOutput;
  const std::string err = directory.Path("err");
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    const int flags = O_WRONLY | O_CREAT | O_TRUNC;
    dup2(open("/dev/null", O_RDONLY), 0);
    dup2(open(out.c_str(), flags, 0644), 1);
    dup2(open(err.c_str(), flags, 0644), 2);
    if (!setting.directory.empty() && chdir(setting.directory.c_str()) != 0) _exit(126);
    if (setting.before) setting.before();
    execv(arguments[0], arguments.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome;
  outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  if (setting.standardOutput.empty()) outcome.out = ReadFile(out);
  outcome.err = ReadFile(err);
  return outcome;
}
