// Measures reading and writing, as a whole and in parts, and the loading of schema libraries.
//
//   velmar_bench [--file=PATH | --megabytes=N] [options of the benchmark library]
//   velmar_bench --load=SCHEMA
//
// The second form is what the first runs for each measurement of loading: it prints how many nanoseconds that
// took. Without a file, the population is made in memory: the instances of the bundled sample again and
// again, renumbered, until there are 20 MB or what --megabytes says. VELMAR_BENCH_FILE names a file, too.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <list>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>

#include "BundledSchemas.h"
#include "ExpFile.h"
#include "LateBoundFile.h"
#include "Parser.h"
#include "Scanner.h"

namespace {

using VELMAR::ExpEntity;
using VELMAR::ExpFile;
using VELMAR::Scanner;
using VELMAR::Token;

std::string text;  // the file that is measured

const unsigned char* Bytes() { return reinterpret_cast<const unsigned char*>(text.data()); }

// Bytes per second, and the same as MB/s.
void CountBytes(benchmark::State& state) {
  const double bytes = static_cast<double>(text.size()) * static_cast<double>(state.iterations());
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
  state.counters["MB/s"] = benchmark::Counter(bytes / 1e6, benchmark::Counter::kIsRate);
}

// Tokens through the public operation, which gives each of them a wide text.
void ScanTokens(benchmark::State& state) {
  for (auto _ : state) {
    Scanner scanner(Bytes(), static_cast<int>(text.size()));
    int tokens = 0;
    while (scanner.Scan()->kind != Token::EoF) ++tokens;
    benchmark::DoNotOptimize(tokens);
  }
  CountBytes(state);
}
BENCHMARK(ScanTokens)->Unit(benchmark::kMillisecond);

// Knows no entity type, so that records are parsed and dropped.
class NoEntities : public ExpFile {
 public:
  ExpEntity* CreateEntity(const std::string&) override { return nullptr; }
};

void ParseOnly(benchmark::State& state) {
  NoEntities file;
  for (auto _ : state) {
    Scanner scanner(Bytes(), static_cast<int>(text.size()));
    VELMAR::Parser parser(&scanner);
    parser.SetProvider(&file);
    parser.Parse();
  }
  CountBytes(state);
}
BENCHMARK(ParseOnly)->Unit(benchmark::kMillisecond);

// The types of the file's schema, loaded at run time.
const VELMAR::LateBoundSchema& LateBoundTypes() {
  static const VELMAR::LateBoundSchema schema = VELMAR::LateBoundSchema::Load(SCHEMA_FILE, {"", "LATE_BOUND", {}});
  return schema;
}

std::unique_ptr<ExpFile> Generated() { return std::make_unique<ExpFile>(); }
std::unique_ptr<ExpFile> LateBound() { return std::make_unique<VELMAR::LateBoundFile>(LateBoundTypes()); }

// Reads a text into a new population; what the one before costs to delete is not counted.
void ReadPopulation(benchmark::State& state, std::unique_ptr<ExpFile> (*newFile)()) {
  for (auto _ : state) {
    state.PauseTiming();
    {
      const std::unique_ptr<ExpFile> file = newFile();
      std::istringstream stream(text);
      state.ResumeTiming();
      file->Read(stream);
      state.PauseTiming();
      if (file->GetMaxEntityNumber() == 0) state.SkipWithError("no instances");
    }
    state.ResumeTiming();
  }
  CountBytes(state);
}
BENCHMARK_CAPTURE(ReadPopulation, Generated, Generated)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ReadPopulation, LateBound, LateBound)->Unit(benchmark::kMillisecond);

void DeletePopulation(benchmark::State& state, std::unique_ptr<ExpFile> (*newFile)()) {
  for (auto _ : state) {
    state.PauseTiming();
    const std::unique_ptr<ExpFile> file = newFile();
    std::istringstream stream(text);
    file->Read(stream);
    state.ResumeTiming();
    file->ClearEntityVector();
  }
  CountBytes(state);
}
BENCHMARK_CAPTURE(DeletePopulation, Generated, Generated)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DeletePopulation, LateBound, LateBound)->Unit(benchmark::kMillisecond);

std::string smallText;  // about 10 KB

// A small file as a whole: an ExpFile is made, reads it and goes.
void ReadSmallFile(benchmark::State& state) {
  for (auto _ : state) {
    ExpFile file;
    std::istringstream stream(smallText);
    file.Read(stream);
    benchmark::DoNotOptimize(file.GetMaxEntityNumber());
  }
  state.counters["bytes"] = static_cast<double>(smallText.size());
}
BENCHMARK(ReadSmallFile)->Unit(benchmark::kMicrosecond);

// Counts what is written to it.
class CountingBuffer : public std::streambuf {
 public:
  std::streamsize count = 0;

 private:
  int_type overflow(int_type c) override {
    ++count;
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char*, std::streamsize length) override {
    count += length;
    return length;
  }
};

// MB/s here count the bytes written.
void WritePopulation(benchmark::State& state, std::unique_ptr<ExpFile> (*newFile)()) {
  const std::unique_ptr<ExpFile> file = newFile();
  std::istringstream stream(text);
  file->Read(stream);
  double bytes = 0;
  for (auto _ : state) {
    CountingBuffer buffer;
    std::ostream out(&buffer);
    file->Write(out);
    bytes += static_cast<double>(buffer.count);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
  state.counters["MB/s"] = benchmark::Counter(bytes / 1e6, benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(WritePopulation, Generated, Generated)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(WritePopulation, LateBound, LateBound)->Unit(benchmark::kMillisecond);

// All points by their type and its subtypes, in the order of their numbers.
void FindPoints(benchmark::State& state) {
  ExpFile file;
  std::istringstream stream(text);
  file.Read(stream);
  for (auto _ : state) {
    std::list<ExpEntity*> points;
    file.GetEntities(points, "CARTESIAN_POINT", true);
    benchmark::DoNotOptimize(points.size());
  }
}
BENCHMARK(FindPoints)->Unit(benchmark::kMillisecond);

// Loads the library of a schema and registers its types; prints how many nanoseconds that took.
int LoadOnce(const char* schema) {
  const auto begin = std::chrono::steady_clock::now();
  try {
    VELMAR::LoadBundledSchema(schema);
  } catch (const std::exception& error) {
    std::cerr << error.what() << "\n";
    return 2;
  }
  const auto end = std::chrono::steady_clock::now();
  std::cout << std::chrono::duration_cast<std::chrono::nanoseconds>(end - begin).count() << std::endl;
  return 0;
}

// What this program prints when it loads a schema library in a process of its own; 0 where that fails.
double LoadingNanoseconds(const std::string& schema) {
  int ends[2];
  if (pipe(ends) != 0) return 0;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addclose(&actions, ends[0]);
  posix_spawn_file_actions_addclose(&actions, ends[1]);
  std::string program = "velmar_bench";
  std::string option = "--load=" + schema;
  char* arguments[] = {program.data(), option.data(), nullptr};
  pid_t child = 0;
  const int error = posix_spawn(&child, "/proc/self/exe", &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  double nanoseconds = 0;
  if (error == 0) {
    char text[32] = "";
    const ssize_t length = read(ends[0], text, sizeof text - 1);
    int status = 0;
    waitpid(child, &status, 0);
    if (length > 0 && status == 0) nanoseconds = std::strtod(text, nullptr);
  }
  close(ends[0]);
  return nanoseconds;
}

// Loading and registration, in a fresh process each time; the library's file is in the system's cache.
void LoadSchema(benchmark::State& state, const std::string& schema) {
  for (auto _ : state) {
    const double nanoseconds = LoadingNanoseconds(schema);
    if (nanoseconds <= 0) {
      state.SkipWithError("the library cannot be loaded");
      break;
    }
    state.SetIterationTime(nanoseconds / 1e9);
  }
}

void RegisterLoading() {
  for (const char* schema : {"CONFIG_CONTROL_DESIGN", "AP203_E2", "AUTOMOTIVE_DESIGN", "AP242",
                             "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", "STEP_IR_AIC"}) {
    if (!VELMAR::IsBundledSchema(schema)) continue;
    benchmark::RegisterBenchmark((std::string("LoadSchema/") + schema).c_str(), LoadSchema,
                                 std::string(schema))
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream contents;
  contents << file.rdbuf();
  return contents.str();
}

// `data` with `offset` added to every instance number outside of strings and comments.
std::string Renumbered(const std::string& data, long offset) {
  std::string result;
  result.reserve(data.size() + data.size() / 8);
  bool inString = false;
  for (std::size_t i = 0; i < data.size(); ++i) {
    if (!inString && data.compare(i, 2, "/*") == 0) {
      i = data.find("*/", i) + 1;
      continue;
    }
    result += data[i];
    if (data[i] == '\'') inString = !inString;
    if (data[i] != '#' || inString) continue;
    char* end = nullptr;
    result += std::to_string(std::strtol(data.c_str() + i + 1, &end, 10) + offset);
    i = static_cast<std::size_t>(end - data.c_str()) - 1;
  }
  return result;
}

std::string MadeOfTheSample(std::size_t bytes) {
  const std::string sample = ReadFile(SAMPLE_FILE);
  const std::string begin = "DATA;\n";
  const std::size_t first = sample.find(begin) + begin.size();
  const std::size_t last = sample.find("ENDSEC;", first);
  const std::string data = sample.substr(first, last - first);
  constexpr long kNumbers = 1000;  // more than the sample has
  std::string made = sample.substr(0, first);
  for (long offset = 0; made.size() < bytes; offset += kNumbers)
    made += Renumbered(data, offset);
  return made + sample.substr(last);
}

// The value of `--name=value` where the argument is that option; null otherwise.
const char* ValueOf(const char* argument, const char* option) {
  const std::size_t length = std::strlen(option);
  return std::strncmp(argument, option, length) == 0 ? argument + length : nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) {
    if (const char* schema = ValueOf(argv[1], "--load=")) return LoadOnce(schema);
  }
  RegisterLoading();
  benchmark::Initialize(&argc, argv);
  const char* path = std::getenv("VELMAR_BENCH_FILE");
  std::size_t megabytes = 20;
  for (int i = 1; i < argc; ++i) {
    if (const char* file = ValueOf(argv[i], "--file=")) {
      path = file;
    } else if (const char* number = ValueOf(argv[i], "--megabytes=")) {
      megabytes = static_cast<std::size_t>(std::strtoul(number, nullptr, 10));
    } else {
      std::cerr << "unknown argument " << argv[i] << "\n";
      return 2;
    }
  }

  VELMAR::LoadBundledSchema("AUTOMOTIVE_DESIGN");
  text = path != nullptr ? ReadFile(path) : MadeOfTheSample(megabytes * 1000000);
  smallText = MadeOfTheSample(8000);
  if (text.empty()) {
    std::cerr << "nothing to measure\n";
    return 2;
  }
  std::cerr << "measured on " << (path != nullptr ? path : "the sample, repeated") << ", " << text.size()
            << " bytes\n";
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
