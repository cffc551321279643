/// @file Population.h
/// A Part 21 file with all that it holds, and with everything noted that could not be kept.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ExpFixedSchemaFile.h"
#include "Findings.h"
#include "Progress.h"

namespace velmar {

/// How a file is read.
struct ReadingOptions {
  std::optional<VELMAR::Schema> schema;  ///< the schema to read with, whatever the file says
  /// The registry name of a schema that has been loaded at run time, to read with it, whatever the file says;
  /// empty for none.
  std::string lateBoundSchema;
  Progress progress;  ///< told how far reading is
};

/// References to an instance that the file does not have, at their first place.
struct UnresolvedReference {
  int to = 0;
  int from = 0;  ///< the instance that refers to it; 0 where its number cannot be stored
  Place place = {0, 0};
  std::size_t count = 0;  ///< how many references there are
};

/// Whether the header has records of this type: FILE_DESCRIPTION, FILE_NAME, FILE_SCHEMA.
bool IsHeaderType(const std::string& name);

/// A file that keeps everything, and notes while it is read which types its schema lacks. Schema libraries are loaded when it
/// needs them: that of its schema, and that of the fallback schema when it meets a type that its schema
/// lacks. A schema that was loaded at run time takes the place of both.
class Population : public VELMAR::ExpFixedSchemaFile {
 public:
  explicit Population(const ReadingOptions& options = {});

  /// Reads the file, which RequireReadable has found readable. Adds an error for everything that is wrong with
  /// it and a finding for everything of it that this population does not hold:
  /// - errors: syntax; a schema without a library; instances and partial records of unknown types; records
  ///   with more parameters than their type has attributes; instance numbers that are used twice, or that
  ///   cannot be stored; real numbers beyond 64 bits; records that are there twice;
  /// - warnings: records with too few parameters; scopes; further records of the header; a fallback
  ///   schema that cannot be loaded.
  /// The text is gone over a second time only where something of that has been met.
  /// Throws std::runtime_error where the file cannot be read to its end, or the library of its schema cannot
  /// be loaded.
  void ReadAndReport(const std::string& path, Findings& findings, const Progress& progress = {});

  /// The time that reading took, in seconds, without that for loading schema libraries.
  double ReadingTime() const { return readingTime_; }
  /// The schema as the file names it; empty where it names none.
  const std::string& SchemaOfFile() const { return schemaOfFile_; }
  /// Whether the schema was loaded at run time.
  bool IsLateBound() const { return isLateBound_; }
  /// Whether there is a schema library for the schema that the file names, or the user chose a schema.
  bool IsSchemaSupported() const { return schemaSupported_; }
  /// The number of instances.
  std::size_t Count() const { return numbers_.size(); }
  /// The numbers of the instances, ascending. A file may have few instances with numbers far apart: whoever looks at all of them
  /// goes over these, and not over all numbers that there could be. Good until the population changes.
  const std::vector<int>& Numbers();

  /// How many instances and parts of such are of a type that is not known, by type. Records of the header are none.
  const std::map<std::string, std::size_t>& UnknownTypes() const { return unknownTypes_; }
  /// References that lead nowhere, one for each missing instance, in the order of their places.
  const std::vector<UnresolvedReference>& Unresolved() const { return unresolved_; }

  VELMAR::ExpEntity* CreateEntity(const std::string& typeName) override;
  using VELMAR::ExpFixedSchemaFile::AddEntity;
  void AddEntity(int number, VELMAR::ExpEntity* entity) override;
  void SetSchemaName(std::string name) override;
  void DeleteEntities() override;

 private:
  friend class LossFinder;
  friend void Renumber(Population& file);

  void LoadTypes();
  template <class Load>
  std::string TryLoading(Load load);

  const bool isLateBound_;
  const bool keepsSchema_;  // whatever the file says
  std::map<std::string, std::size_t> unknownTypes_;
  std::vector<UnresolvedReference> unresolved_;
  std::set<int> repeated_;  // the numbers that were used more than once
  bool hasOddNumbers_ = false;  // such as #0
  std::string schemaOfFile_;
  bool isInHeader_ = false;      // while that is read
  bool wasGivenSchema_ = false;  // by the header of the file, be it empty
  bool schemaSupported_ = true;
  std::vector<int> numbers_;  // in the order of the file, until they are asked for
  bool areSorted_ = true;
  ReportedProgress* read_ = nullptr;  // told of each instance while a file is read
  double readingTime_ = 0;
  double loadingTime_ = 0;
  bool usesFallback_ = false;    // whether the fallback schema is still to be loaded when a type is unknown
  std::string libraryFailure_;   // why the library of the schema cannot be loaded
  std::string fallbackFailure_;  // why that of the fallback schema cannot be
};

}  // namespace velmar
