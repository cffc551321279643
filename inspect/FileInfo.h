/// @file FileInfo.h
/// What a file is, at a glance.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Reading.h"

namespace velmar {

/// FILE_DESCRIPTION, in UTF-8.
struct FileDescription {
  std::vector<std::string> description;
  std::string implementationLevel;
};

/// FILE_NAME, in UTF-8.
struct FileName {
  std::string name;
  std::string timeStamp;
  std::vector<std::string> author;
  std::vector<std::string> organization;
  std::string preprocessorVersion;
  std::string originatingSystem;
  std::string authorization;
};

struct FileInfo {
  std::string file;
  std::uint64_t size;  ///< in bytes
  std::optional<FileDescription> description;
  std::optional<FileName> name;
  std::vector<std::string> schemas;  ///< as FILE_SCHEMA names them

  std::string readAs;    ///< the name of the schema that the file was read with
  std::string protocol;  ///< its everyday name, "AP214"; empty for a schema of an EXPRESS text
  std::string library;   ///< the file of its schema library; empty where there is none
  bool isSchemaSupported;

  std::size_t instances;
  std::size_t complexInstances;
  int largestNumber;  ///< 0 where there is no instance
  /// The types with the number of their instances, the most frequent first, equally frequent ones by name.
  std::vector<std::pair<std::string, std::size_t>> types;
  /// Types, also of parts of complex instances, that are not known, in the order of their names.
  std::vector<std::pair<std::string, std::size_t>> unknownTypes;
  /// References that lead nowhere, one for each missing instance, in the order of their places.
  std::vector<UnresolvedReference> unresolved;

  double seconds;            ///< that reading took, without loading schema libraries
  std::uint64_t peakMemory;  ///< in bytes: the most that the process has had until now
  double MegabytesPerSecond() const;
};

FileInfo Describe(Reading& reading);

}  // namespace velmar
