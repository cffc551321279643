#include "FileInfo.h"

#include <sys/resource.h>

#include <algorithm>
#include <list>
#include <map>
#include <unordered_map>

#include "ExpCustomEntities.h"
#include "Instances.h"
#include "Schemas.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;

std::vector<std::string> TextsOf(VELMAR::ExpAggregation& values) {
  std::vector<std::string> texts;
  for (ExpAttribute* value : *values.GetExpAggregation()) {
    if (auto* string = dynamic_cast<VELMAR::ExpString*>(value)) texts.push_back(string->GetExpString());
  }
  return texts;
}

template <class Header>
Header* HeaderOf(Population& file, const char* typeName) {
  std::list<ExpEntity*> found;
  file.GetEntities(found, typeName, false);
  return found.empty() ? nullptr : dynamic_cast<Header*>(found.front());
}

void DescribeHeader(Population& file, FileInfo& info) {
  if (auto* record = HeaderOf<VELMAR::FILE_DESCRIPTION>(file, "FILE_DESCRIPTION")) {
    info.description = {TextsOf(record->Description()), record->ImplementationLevel().GetExpString()};
  }
  if (auto* record = HeaderOf<VELMAR::FILE_NAME>(file, "FILE_NAME")) {
    info.name = {record->Name().GetExpString(),
                 record->TimeStamp().GetExpString(),
                 TextsOf(record->Author()),
                 TextsOf(record->Organization()),
                 record->PreprocessorVersion().GetExpString(),
                 record->OriginatingSystem().GetExpString(),
                 record->Authorization().GetExpString()};
  }
  if (auto* record = HeaderOf<VELMAR::FILE_SCHEMA>(file, "FILE_SCHEMA")) {
    info.schemas = TextsOf(record->SchemaIdentifiers());
  } else if (!file.SchemaOfFile().empty()) {
    info.schemas = {file.SchemaOfFile()};
  }
}

void DescribeInstances(Population& file, FileInfo& info) {
  std::unordered_map<const std::string*, std::size_t> simple;  // by the name that the type keeps
  std::map<std::string, std::size_t> counts;
  for (int number = file.GetMaxEntityNumber(); number >= 0; --number) {
    ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    if (info.largestNumber == 0) info.largestNumber = number;
    if (dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity) != nullptr) {
      ++info.complexInstances;
      ++counts[TypeName(*entity)];
    } else if (entity->GetTypeNumberOfEntity() < 0) {  // perhaps of an unknown type, with a name of its own
      ++counts[entity->GetExpClassName()];
    } else {
      ++simple[&entity->GetExpClassName()];
    }
  }
  for (const auto& [name, count] : simple) counts[*name] += count;
  info.instances = file.Count();
  info.types.assign(counts.begin(), counts.end());
  std::stable_sort(info.types.begin(), info.types.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  info.unknownTypes.assign(file.UnknownTypes().begin(), file.UnknownTypes().end());
  info.unresolved = file.Unresolved();
}

std::uint64_t PeakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}

}  // namespace

double FileInfo::MegabytesPerSecond() const {
  return static_cast<double>(size) / 1e6 / std::max(seconds, 1e-9);
}

FileInfo Describe(Reading& reading) {
  Population& file = reading.GetPopulation();
  FileInfo info = {};
  info.file = reading.Path();
  info.size = reading.Size();
  DescribeHeader(file, info);
  info.readAs = file.GetSchemaName();
  if (!file.IsLateBound()) {
    info.protocol = ShortName(file.GetSchema());
    info.library = LibraryFile(file.GetSchema());
  }
  info.isSchemaSupported = file.IsSchemaSupported();
  DescribeInstances(file, info);
  info.seconds = file.ReadingTime();
  info.peakMemory = PeakMemory();
  return info;
}

}  // namespace velmar
