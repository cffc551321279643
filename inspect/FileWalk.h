/// @file FileWalk.h
/// The tokens of a Part 21 file as what they make up: header records, instances, records, values; each with
/// its place.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "Input.h"
#include "Scanner.h"

namespace velmar {

/// What stands before a record: `#12=`; the number is 0 in the header, and where it is none that can be
/// stored.
struct WalkedInstance {
  std::string name;  ///< "#12" as it stands there; empty in the header
  int number = 0;
  Place place = {0, 0};
};

/// A type name with a parameter list behind it.
struct WalkedRecord {
  const WalkedInstance& instance;
  const std::wstring& typeName;
  Place place;
  bool isPart;  ///< of a complex instance
};

/// Which of the parentheses around a value open lists, and which belong to typed parameters.
class Nesting {
 public:
  void Open(bool typed);
  void Close();
  /// Whether the value is a parameter itself.
  bool IsOutside() const { return typed_.empty(); }
  bool IsInList() const { return lists_ > 0; }
  bool IsInTypedElement() const { return typedInLists_ > 0; }
  bool IsInListOfTypedElement() const { return listsInTyped_ > 0; }

 private:
  std::vector<bool> typed_;
  std::size_t lists_ = 0;
  std::size_t typedInLists_ = 0;
  std::size_t listsInTyped_ = 0;
};

/// A value within a parameter list, or the type name before one, or a parenthesis within one.
struct WalkedValue {
  VELMAR::Token::Kind kind;  ///< Point for an enumeration item, Ident for a type name
  const wchar_t* text;       ///< of an item without its dots; valid until the call returns
  Place place;
  int parameter;           ///< which of the record's, from 0
  const Nesting& nesting;  ///< of an opening parenthesis: what stands around it
  bool isTyped;            ///< whether a type name stands before it
};

/// Receives what a walk meets, in the order of the file; every operation of this base does nothing.
class WalkListener {
 public:
  virtual ~WalkListener();
  /// `#12` outside of parameter lists: where an instance begins, and wherever else it stands by mistake.
  virtual void InstanceName(const wchar_t* text, Place place);
  /// `#12=`
  virtual void BeginInstance(const WalkedInstance& instance);
  virtual void BeginRecord(const WalkedRecord& record);
  virtual void Value(const WalkedValue& value);
  /// `parameters` is their number. Not every record ends with a parenthesis: a semicolon ends it, too.
  virtual void EndRecord(const WalkedRecord& record, int parameters);
};

/// Walks over the file, which stands at its start and stays the caller's, with the library's scanner. Knows
/// records and parameters by their parentheses and commas alone: syntax is the parser's. Linear in the length
/// of the file. The process ends where a token is longer than the scanner takes: for files that have been
/// read before.
void WalkFile(std::FILE* file, WalkListener& listener);

/// The number of an instance name, "#12"; 0 where it cannot be stored.
int InstanceNumberOf(const wchar_t* name);

/// As bytes; what is beyond them is cut off.
std::string Narrow(const wchar_t* text);

}  // namespace velmar
