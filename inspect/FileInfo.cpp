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
  struct Type {
    bool isComplex = false;
    std::size_t count = 0;
  };
  std::unordered_map<const std::string*, Type> types;  // by the name that the type keeps
  std::map<std::string, std::size_t> counts;
  if (file.Count() > 0) info.largestNumber = file.Numbers().back();
  for (const int number : file.Numbers()) {
    ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    Type& type = types[&entity->GetExpClassName()];
    if (type.count++ == 0) type.isComplex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity) != nullptr;
    if (type.isComplex) {
      ++info.complexInstances;
      ++counts[TypeName(*entity)];
    }
  }
  for (const auto& [name, type] : types) {
    if (!type.isComplex) counts[*name] += type.count;
  }
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
