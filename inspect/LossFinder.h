/// @file LossFinder.h
/// Where a file holds what its schema or its population does not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "Findings.h"
#include "Population.h"
#include "Progress.h"
#include "WrittenInstances.h"

namespace VELMAR {
class ExpEntityRuntimeType;
}

namespace velmar {

/// Walks once more over a file that has been read, and compares its records with the schema and with what the population could
/// keep of them. Finds nothing where reading met nothing unusual, see Population::ReadAndReport.
class LossFinder {
 public:
  LossFinder(Population& population, Findings& findings);

  /// Adds the findings, and tells the population which references lead nowhere. Linear in the length of the file. Called once. Tells
  /// `progress` how much of the file it has seen.
  /// Throws std::runtime_error where the file cannot be read.
  void Find(const std::string& path, const Progress& progress);

 private:
  struct Type {
    bool known;
    int attributes;
    int firstOwn;
    VELMAR::ExpEntityRuntimeType* runtimeType;
  };
  struct Loss {
    std::size_t count = 0;
    Place first = {0, 0};
    int instance = 0;                // where it stands
    std::vector<std::string> where;  // the first few instances
    bool hasMore = false;
  };
  enum class Kind { kUnknown, kUnknownPart, kUnknownHeader, kTooMany, kTooFew };

  void Look(const WrittenInstance& instance);
  void LookAtNumber(const WrittenInstance& instance);
  void LookAtRecord(const WrittenInstance& instance, const WrittenRecord& record);
  void LookAtValues(const WrittenRecord& record);

  void CheckNumber(std::int64_t number, const std::string& text, Place place, int instance, const std::string& attribute);
  void NoteReference(const WrittenValue& value);
  void RealValue(const WrittenValue& value);
  Type& TypeOf(const std::string& name, bool isInHeader);
  std::string AttributeOf(const WrittenValue& value) const;

  void Note(Loss& loss, const WrittenInstance& instance, Place place) const;
  static std::string Where(const Loss& loss);
  void ReportSchema();
  void ReportRecords();
  void ReportUnknownAtOnce();
  void ReportUnread();
  void ReportReferences();

  Population& population_;
  Findings& findings_;
  const bool hadErrors_;  // before we began to look
  std::unordered_map<std::string, Type> types_;
  std::unordered_map<std::string, Type> headerTypes_;
  std::map<std::tuple<std::string, Kind, int>, Loss> records_;  // by type, kind, number of attributes
  std::map<int, std::string> seen_;         // where a number that is used twice was used first
  const WrittenRecord* record_ = nullptr;   // the one we are in,
  const Type* type_ = nullptr;              // its type,
  bool isPart_ = false;                     // whether it is one of a complex instance,
  int number_ = 0;                          // and the number of the instance; 0 where it cannot be stored
  Place schemaPlace_ = {0, 0};
  std::size_t defined_ = 0;           // instances that the file defines,
  std::size_t replaced_ = 0;          // of these: replaced by others of the same number
  std::unordered_set<int> notKept_;   // the numbers of those that the population does not hold
  std::unordered_map<int, UnresolvedReference> unresolved_;  // by number: what no instance that is kept has
};

}  // namespace velmar
