/// Helpers for the tests of reading: the same bytes as a memory block, a file and a pipe, and child processes
/// whose standard output and exit status are looked at.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Scanner.h"

namespace reading {

const char kByteOrderMark[] = "\xEF\xBB\xBF";

/// A file of its own that disappears with the object, or with the process where that ends before.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content = std::string()) {
    std::string pattern = ::testing::TempDir() + "velmar_XXXXXX";
    std::vector<char> name(pattern.c_str(), pattern.c_str() + pattern.size() + 1);
    const int fd = mkstemp(name.data());
    EXPECT_NE(fd, -1);
    path_ = name.data();
    close(fd);
    Write(content);
    // A child process must not remove what belongs to its parent.
    static const bool registered = std::atexit([] {
                                     for (const auto& [process, path] : Alive()) {
                                       if (process == getpid()) std::remove(path.c_str());
                                     }
                                   }) == 0;
    EXPECT_TRUE(registered);
    Alive().emplace(getpid(), path_);
  }
  ~TemporaryFile() {
    std::remove(path_.c_str());
    Alive().erase({getpid(), path_});
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void Write(const std::string& content) const {
    std::ofstream out(path_, std::ios::binary);
    out << content;
  }
  std::string Content() const {
    std::ifstream in(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  const std::string& Path() const { return path_; }
  std::wstring WidePath() const { return std::wstring(path_.begin(), path_.end()); }

 private:
  static std::set<std::pair<pid_t, std::string>>& Alive() {
    static auto* const alive = new std::set<std::pair<pid_t, std::string>>;
    return *alive;
  }

  std::string path_;
};

/// A stream that cannot seek, from which the given bytes come.
class PipeStream {
 public:
  explicit PipeStream(const std::string& content) {
    std::signal(SIGPIPE, SIG_IGN);
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    stream_ = fdopen(ends[0], "rb");
    writer_ = std::thread([content, end = ends[1]] {
      std::size_t done = 0;
      while (done < content.size()) {
        const ssize_t written = write(end, content.data() + done, content.size() - done);
        if (written <= 0) break;
        done += static_cast<std::size_t>(written);
      }
      close(end);
    });
  }
  ~PipeStream() {
    fclose(stream_);
    writer_.join();
  }
  PipeStream(const PipeStream&) = delete;
  PipeStream& operator=(const PipeStream&) = delete;

  FILE* Stream() { return stream_; }

 private:
  FILE* stream_;
  std::thread writer_;
};

/// The ways by which bytes reach a scanner.
enum class Source { Memory, File, Pipe, Name };
inline const std::vector<Source>& AllSources() {
  static const std::vector<Source> all = {Source::Memory, Source::File, Source::Pipe, Source::Name};
  return all;
}
inline std::string NameOf(Source source) {
  switch (source) {
    case Source::Memory:
      return "Memory";
    case Source::File:
      return "File";
    case Source::Pipe:
      return "Pipe";
    case Source::Name:
      return "Name";
  }
  return "";
}

/// A scanner over bytes that come by one of the ways.
class ScannerOver {
 public:
  ScannerOver(const std::string& content, Source source) {
    switch (source) {
      case Source::Memory:
        scanner_ = std::make_unique<VELMAR::Scanner>(reinterpret_cast<const unsigned char*>(content.data()),
                                                     static_cast<int>(content.size()));
        break;
      case Source::File:
        file_ = std::make_unique<TemporaryFile>(content);
        stream_ = fopen(file_->Path().c_str(), "rb");
        scanner_ = std::make_unique<VELMAR::Scanner>(stream_);
        break;
      case Source::Pipe:
        pipe_ = std::make_unique<PipeStream>(content);
        scanner_ = std::make_unique<VELMAR::Scanner>(pipe_->Stream());
        break;
      case Source::Name:
        file_ = std::make_unique<TemporaryFile>(content);
        scanner_ = std::make_unique<VELMAR::Scanner>(file_->WidePath().c_str());
        break;
    }
  }
  ~ScannerOver() {
    scanner_.reset();
    if (stream_ != nullptr) fclose(stream_);
  }
  ScannerOver(const ScannerOver&) = delete;
  ScannerOver& operator=(const ScannerOver&) = delete;

  VELMAR::Scanner* operator->() { return scanner_.get(); }
  VELMAR::Scanner* Get() { return scanner_.get(); }

 private:
  std::unique_ptr<TemporaryFile> file_;
  FILE* stream_ = nullptr;
  std::unique_ptr<PipeStream> pipe_;
  std::unique_ptr<VELMAR::Scanner> scanner_;
};

/// How a child process ended, and what it wrote to standard output.
struct Ended {
  int exitStatus;  ///< -1 where a signal ended it
  std::string output;
};

/// Runs `body` in a child process, which ends with the status 99 where `body` returns.
inline Ended RunInChild(const std::function<void()>& body) {
  std::fflush(nullptr);
  int ends[2];
  EXPECT_EQ(pipe(ends), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    body();
    std::fflush(nullptr);
    _exit(99);
  }
  close(ends[1]);
  Ended ended{-1, std::string()};
  char block[4096];
  ssize_t count;
  while ((count = read(ends[0], block, sizeof block)) > 0)
    ended.output.append(block, static_cast<std::size_t>(count));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) ended.exitStatus = WEXITSTATUS(status);
  return ended;
}

/// Code point to UTF-8, independent of the library.
inline std::string Utf8(unsigned int c) {
  std::string out;
  const auto put = [&out](unsigned int byte) { out += static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6);
    put(0x80 | (c & 63));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 63));
    put(0x80 | (c & 63));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 63));
    put(0x80 | (c >> 6 & 63));
    put(0x80 | (c & 63));
  }
  return out;
}

/// Wide text to UTF-8.
inline std::string Utf8(const std::wstring& text) {
  std::string out;
  for (wchar_t c : text) out += Utf8(static_cast<unsigned int>(c));
  return out;
}

}  // namespace reading
