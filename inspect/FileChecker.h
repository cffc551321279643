/// @file FileChecker.h
/// Compares a file with its schema.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DataDictionary.h"
#include "Findings.h"
#include "WrittenInstances.h"

namespace velmar {

/// Looks at the instances of a file twice: first at all of them, to know their types, then at their values.
///
/// Time is linear in the length of the file; memory is a few bytes for each instance.
class FileChecker {
 public:
  /// Both outlive this. Findings are added in the order of the text.
  FileChecker(const DataDictionary& dictionary, Findings& findings) : dictionary_(dictionary), findings_(findings) {}

  /// The first time.
  void Learn(const WrittenInstance& instance);
  /// The second time; once all have been learned.
  void Check(const WrittenInstance& instance);
  /// What is missing in the file, once all have been checked.
  void CheckWhole();

 private:
  using Kinds = std::vector<const EntityRule*>;  // of an instance: null for a type that the schema has not

  int KindsOf(const WrittenInstance& instance);
  void Sort();
  int Find(std::int64_t number) const;
  bool IsOfKind(int kinds, const EntityRule& rule) const;
  std::string NameOf(int kinds) const;

  void CheckRecord(const WrittenInstance& instance, const WrittenRecord& record, const Kinds& kinds);
  void CheckComplex(const WrittenInstance& instance, const Kinds& kinds);
  void CheckHeaderRecord(const WrittenRecord& record);
  void CheckCount(const WrittenRecord& record, std::size_t expected);
  bool CheckNumber(std::int64_t number, Place where);
  void CheckTokens(const WrittenRecord& record, const EntityRule* rule, std::size_t first);
  bool IsDerivedBy(const Kinds& kinds, const AttributeRule& attribute) const;
  void CheckParameter(const AttributeRule& attribute, bool isDerived, std::size_t at);

  void CheckValue(const Domain& domain, std::size_t at, int depth);
  void CheckAggregate(const Domain& domain, std::size_t at, int depth);
  void CheckSelect(const Domain& domain, std::size_t at, int depth);
  void CheckReference(const WrittenValue& value, const Domain& domain);
  void CheckItem(const WrittenValue& value, const Domain& domain);
  void CheckString(const WrittenValue& value, const Domain& domain);
  void CheckBinary(const WrittenValue& value, const Domain& domain);
  void WrongKind(const Domain& domain, const WrittenValue& value);

  const WrittenValue& Value(std::size_t at) const { return record_->values[at]; }
  void Add(Code code, Place where, std::string text, std::string hint = "");
  std::string HintFor(const std::string& name, const std::vector<std::string>& names);
  const std::string& SubtypesOf(const EntityRule& rule);

  const DataDictionary& dictionary_;
  Findings& findings_;

  std::map<Kinds, int> kindNumbers_;
  std::vector<Kinds> kinds_;
  std::unordered_map<std::string, int> kindOfType_;  // of simple instances
  std::vector<std::pair<std::int64_t, int>> instances_;  // number and kinds
  std::vector<int> index_;                               // kinds by number where numbers are dense; -1 where there is none
  bool isSorted_ = false;
  std::map<std::string, std::size_t> unknown_;      // how many records a type has that is unknown
  std::map<std::int64_t, Place> repeated_;       // numbers that are used more than once, and where first
  std::map<std::string, Place> headerRecords_;   // where each stands first; on line 0 before it has been checked
  std::map<const EntityRule*, std::string> subtypes_;  // of abstract entities, as a text
  int hints_ = 0;

  // What is being checked.
  const WrittenInstance* instance_ = nullptr;
  const WrittenRecord* record_ = nullptr;
  const std::string* attribute_ = nullptr;
};

}  // namespace velmar
