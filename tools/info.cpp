#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <list>
#include <map>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Commands.h"
#include "ExpCustomEntities.h"
#include "Messages.h"
#include "Reading.h"
#include "Schemas.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;
using VELMAR::ExpExternalMappingEntity;

std::string Text(VELMAR::ExpString& value) { return Printable(value.GetExpString()); }

std::string Text(VELMAR::ExpAggregation& values) {
  std::vector<std::string> texts;
  for (ExpAttribute* value : *values.GetExpAggregation()) {
    if (auto* string = dynamic_cast<VELMAR::ExpString*>(value)) texts.push_back(Text(*string));
  }
  return fmt::format("{}", fmt::join(texts, "; "));
}

template <class Header>
Header* HeaderOf(Population& file, const char* typeName) {
  std::list<ExpEntity*> found;
  file.GetEntities(found, typeName, false);
  return found.empty() ? nullptr : dynamic_cast<Header*>(found.front());
}

void PrintRow(const char* label, const std::string& value) { fmt::print("{:<24}{}\n", label, value); }

void PrintHeader(Population& file) {
  if (auto* description = HeaderOf<VELMAR::FILE_DESCRIPTION>(file, "FILE_DESCRIPTION")) {
    PrintRow("description", Text(description->Description()));
    PrintRow("implementation level", Text(description->ImplementationLevel()));
  }
  if (auto* name = HeaderOf<VELMAR::FILE_NAME>(file, "FILE_NAME")) {
    PrintRow("name", Text(name->Name()));
    PrintRow("time stamp", Text(name->TimeStamp()));
    PrintRow("author", Text(name->Author()));
    PrintRow("organization", Text(name->Organization()));
    PrintRow("preprocessor version", Text(name->PreprocessorVersion()));
    PrintRow("originating system", Text(name->OriginatingSystem()));
    PrintRow("authorization", Text(name->Authorization()));
  }
  std::string schemas = Printable(file.SchemaOfFile());
  if (auto* schema = HeaderOf<VELMAR::FILE_SCHEMA>(file, "FILE_SCHEMA"))
    schemas = Text(schema->SchemaIdentifiers());
  PrintRow("schema", schemas);
  PrintRow("read as", fmt::format("{} ({})", file.GetSchemaName(),
                                  file.IsLateBound() ? "EXPRESS" : ShortName(file.GetSchema())));
}

std::string TypeName(ExpEntity* entity) {
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity);
  if (complex == nullptr) return entity->GetExpClassName();
  std::vector<std::string> names;
  for (ExpEntity* part : *complex->GetEntities()) names.push_back(part->GetExpClassName());
  std::sort(names.begin(), names.end());
  return fmt::format("({})", fmt::join(names, " "));
}

void PrintTypes(Population& file) {
  std::map<std::string, std::size_t> counts;
  for (int number = file.GetMaxEntityNumber(); number >= 0; --number) {
    if (ExpEntity* entity = file.GetEntity(number)) ++counts[TypeName(entity)];
  }
  // The most frequent first, equally frequent ones by name.
  std::vector<std::pair<std::string, std::size_t>> sorted(counts.begin(), counts.end());
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });

  PrintRow("instances", fmt::format("{} of {}", Grouped(file.Count()), Counted(counts.size(), "type")));
  fmt::print("\n");
  for (const auto& [name, count] : sorted) fmt::print("{:>12}  {}\n", Grouped(count), name);
}

}  // namespace

int Info(const std::string& path, const ReadingOptions& options) {
  Reading reading(path, options);
  Population& file = reading.GetPopulation();
  const std::uint64_t size = reading.Size();
  PrintRow("file", fmt::format("{}, {} bytes", Printable(path), Grouped(size)));
  PrintHeader(file);
  PrintTypes(file);
  fmt::print("\nread in {:.1f} ms, {:.0f} MB/s\n", file.ReadingTime() * 1e3,
             static_cast<double>(size) / 1e6 / std::max(file.ReadingTime(), 1e-9));
  if (std::fflush(stdout) != 0) throw std::system_error(errno, std::generic_category());
  std::fflush(stdout);

  const ExitStatus status = reading.GetFindings().Errors() == 0 ? kDone : kFileHasErrors;
  Print(reading.GetFindings());
  return status;
}

}  // namespace velmar
