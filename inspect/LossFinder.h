/// @file LossFinder.h
/// Where a file holds what its schema or its population does not.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "FileWalk.h"
#include "Findings.h"
#include "Population.h"

namespace VELMAR {
class ExpEntityRuntimeType;
}

namespace velmar {

/// Walks once more over a file that has been read, and compares its records with the schema and with what the population could
/// keep of them.
class LossFinder : private WalkListener {
 public:
  LossFinder(Population& population, Findings& findings);

  /// Adds the findings, and tells the population which references lead nowhere. `file` stands at its start
  /// and stays the caller's. Linear in the length of the file. Called once.
  void Find(std::FILE* file);

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

  void InstanceName(const wchar_t* text, Place place) override;
  void BeginInstance(const WalkedInstance& instance) override;
  void BeginRecord(const WalkedRecord& record) override;
  void Value(const WalkedValue& value) override;
  void EndRecord(const WalkedRecord& record, int parameters) override;

  void CheckNumber(const wchar_t* name, Place place, int instance, const std::string& attribute);
  void NoteReference(const WalkedValue& value);
  void RealValue(const WalkedValue& value);
  Type& TypeOf(const std::wstring& name);
  std::string AttributeOf(const WalkedValue& value) const;

  static void Note(Loss& loss, const WalkedInstance& instance, Place place);
  static std::string Where(const Loss& loss);
  void ReportSchema();
  void ReportRecords();
  void ReportUnknownAtOnce();
  void ReportUnread();
  void ReportReferences();

  Population& population_;
  Findings& findings_;
  const bool hadErrors_;  // before we began to look
  std::unordered_map<std::wstring, Type> types_;
  std::map<std::tuple<std::string, Kind, int>, Loss> records_;  // by type, kind, number of attributes
  std::map<int, std::string> seen_;       // where a number that is used twice was used first
  const WalkedRecord* record_ = nullptr;  // the one we are in,
  const Type* type_ = nullptr;            // and its type
  Place schemaPlace_ = {0, 0};
  std::size_t defined_ = 0;           // instances that the file defines,
  std::size_t replaced_ = 0;          // of these: replaced by others of the same number
  std::unordered_set<int> notKept_;   // the numbers of those that the population does not hold
  std::unordered_map<int, UnresolvedReference> unresolved_;  // by number: what no instance that is kept has
};

}  // namespace velmar
