/// @file LossFinder.h
/// Where a file holds what its population does not.
#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "Input.h"
#include "Messages.h"
#include "Population.h"
#include "Scanner.h"

namespace velmar {

/// Walks once more over the tokens of a file that has been read, and compares its records with what the
/// population could keep of them. Knows records and parameters by their parentheses and commas alone: syntax
/// is the parser's.
class LossFinder {
 public:
  /// `file` stands at its start and stays the caller's.
  LossFinder(FILE* file, Population& population, Messages& messages);

  /// Adds the messages. Linear in the length of the file.
  void Find();

 private:
  // What stands before a record: "#12", or nothing in the header.
  struct Instance {
    std::string name;
    Place place = {0, 0};
  };
  struct Type {
    bool known;
    int attributes;
    int firstOwn;
  };
  struct Loss {
    std::size_t count = 0;
    Place first = {0, 0};
    std::vector<std::string> where;  // the first few instances
    bool hasMore = false;
  };
  enum class Kind { kUnknown, kUnknownPart, kUnknownHeader, kTooMany, kTooFew };

  void Next();
  bool Is(VELMAR::Token::Kind kind) const { return token_->kind == kind; }
  Place Here() const { return {token_->line, token_->col}; }

  void Header();
  void InstanceOrReference(std::vector<Instance>& enclosing);
  void Records(const Instance& instance);
  void Record(const Instance& instance, bool isPart);
  int Parameters(bool isKept);
  void InstanceNumber();
  void IntegerValue();
  void RealValue();
  const Type& TypeOf(const std::wstring& name);

  void Note(Loss& loss, const Instance& instance);
  static std::string Where(const Loss& loss);
  void ReportSchema();
  void ReportRecords();
  void ReportUnknownAtOnce();
  void ReportValues();
  void ReportUnread();

  Population& population_;
  Messages& messages_;
  const bool hadErrors_;  // before we began to look
  VELMAR::Scanner scanner_;
  VELMAR::Token* token_ = nullptr;
  std::unordered_map<std::wstring, Type> types_;
  std::map<std::tuple<std::string, Kind, int>, Loss> records_;  // by type, kind, number of attributes
  std::map<int, std::string> seen_;  // where a number that is used twice was used first
  Instance current_;
  Place schemaPlace_ = {0, 0};
  std::size_t defined_ = 0;           // instances that the file defines,
  std::size_t unknownInstances_ = 0;  // of these: of unknown types,
  std::size_t replaced_ = 0;          // and replaced by others of the same number
  Loss binaries_;
  Loss unsetInLists_;
  Loss enumerationsInLists_;
  Loss listsInTypedElements_;
};

}  // namespace velmar
