#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "Commands.h"
#include "FileInfo.h"
#include "Json.h"
#include "Messages.h"
#include "Options.h"
#include "Wording.h"

namespace velmar {

namespace {

constexpr std::size_t kShown = 3;  // so many of a row are named; what is beyond is counted

struct InfoOptions {
  std::vector<std::string> files;
  ReadingFlags reading;
  bool json = false;
};

void PrintRow(const char* label, const std::string& value) {
  fmt::print("{:<24}{}\n", label, Printable(value));
}

std::string Joined(const std::vector<std::string>& texts) {
  return fmt::format("{}", fmt::join(texts, "; "));
}

// "VEKTOR (2), MY_TYPE (1), 4 more"
std::string Named(const std::vector<std::string>& names) {
  if (names.empty()) return "none";
  const auto end = names.begin() + static_cast<std::ptrdiff_t>(std::min(names.size(), kShown));
  std::string text = fmt::format("{}", fmt::join(names.begin(), end, ", "));
  if (names.size() > kShown) text += fmt::format(", {} more", Grouped(names.size() - kShown));
  return text;
}

std::string UnknownTypes(const FileInfo& info) {
  std::vector<std::string> names;
  for (const auto& [type, count] : info.unknownTypes)
    names.push_back(fmt::format("{} ({})", type, Grouped(count)));
  return Named(names);
}

std::string Unresolved(const FileInfo& info) {
  if (info.unresolved.empty()) return "none";
  std::vector<std::string> names;
  std::size_t count = 0;
  for (const UnresolvedReference& reference : info.unresolved) {
    count += reference.count;
    const std::string from = reference.from == 0 ? "" : fmt::format("from #{} ", reference.from);
    names.push_back(
        fmt::format("#{} ({}at {}:{})", reference.to, from, reference.place.line, reference.place.column));
  }
  return fmt::format("{} to {}: {}", Grouped(count), Counted(info.unresolved.size(), "missing instance"),
                     Named(names));
}

void PrintInfo(const FileInfo& info) {
  PrintRow("file", fmt::format("{}, {} bytes", info.file, Grouped(info.size)));
  if (info.description) {
    PrintRow("description", Joined(info.description->description));
    PrintRow("implementation level", info.description->implementationLevel);
  }
  if (info.name) {
    PrintRow("name", info.name->name);
    PrintRow("time stamp", info.name->timeStamp);
    PrintRow("author", Joined(info.name->author));
    PrintRow("organization", Joined(info.name->organization));
    PrintRow("preprocessor version", info.name->preprocessorVersion);
    PrintRow("originating system", info.name->originatingSystem);
    PrintRow("authorization", info.name->authorization);
  }
  PrintRow("schema", Joined(info.schemas));
  PrintRow("read as", fmt::format("{} ({})", info.readAs, info.protocol.empty() ? "EXPRESS" : info.protocol));
  if (!info.library.empty()) PrintRow("schema library", info.library);
  PrintRow("instances", fmt::format("{} of {}", Grouped(info.instances), Counted(info.types.size(), "type")));
  PrintRow("complex instances", Grouped(info.complexInstances));
  PrintRow("largest number", info.largestNumber == 0 ? "none" : fmt::format("#{}", info.largestNumber));
  PrintRow("unresolved references", Unresolved(info));
  PrintRow("unknown types", UnknownTypes(info));
  fmt::print("\n");
  for (const auto& [name, count] : info.types) fmt::print("{:>12}  {}\n", Grouped(count), name);
  fmt::print("\nread in {:.1f} ms, {:.0f} MB/s, {:.0f} MB of memory\n", info.seconds * 1e3,
             info.MegabytesPerSecond(), static_cast<double>(info.peakMemory) / 1e6);
}

int Info(const InfoOptions& options) {
  const ReadingOptions readingOptions = options.reading.Resolve();
  int status = kDone;
  bool isFirst = true;
  Json json = Json::array();
  for (const std::string& path : options.files) {
    try {
      const bool isLast = &path == &options.files.back();
      const auto freed = isLast ? nullptr : std::make_unique<Reading>(path, readingOptions);
      Reading& reading = isLast ? ReadForGood(path, readingOptions) : *freed;
      Findings& findings = reading.GetFindings();
      const FileInfo info = Describe(reading);
      findings.Sort();
      if (options.json) {
        json.push_back(ToJson(info, findings));
      } else {
        if (!isFirst) fmt::print("\n");
        isFirst = false;
        PrintInfo(info);
        FlushOutput();
      }
      if (findings.Errors() != 0) status = std::max<int>(status, kFileHasErrors);
      if (!options.reading.quiet) Print(findings);
    } catch (const std::system_error&) {  // of standard output
      throw;
    } catch (const std::runtime_error& error) {
      status = CannotRun(error.what());
      if (options.json) json.push_back({{"file", path}, {"error", error.what()}});
    }
  }
  if (options.json) fmt::print("{}", ToText(json));
  return status;
}

}  // namespace

void AddInfo(CLI::App& program, Run& run) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* command = program.add_subcommand(
      "info",
      "Prints the headers of files, their schemas, and how many instances of which types "
      "they hold");
  command->add_option("FILE", options->files, kFilesHelp)->required();
  options->reading.AddTo(*command);
  command->add_flag("--json", options->json, "Prints an array with an object for each file");
  command->footer(Footer("velmar info examples/bracket.stp"));
  command->callback([options, &run] { run = [options] { return Info(*options); }; });
}

}  // namespace velmar
