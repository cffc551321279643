/// @file ValueText.h
/// Prints attribute values behind each other into one text, for the library's own use.
#pragma once

#include <string>
#include <typeinfo>

namespace VELMAR {

class ExpAttribute;
class ExpEntity;

/// The Part 21 form of values, appended to a text: what ExpAttribute::ToString gives, without a string per value.
///
/// A value whose class is one of the library's own is printed in place; every other goes through its ToString, so that
/// overrides count. Aggregates may be nested to any depth.
class ValueText {
 public:
  /// Appends value.ToString(); `$` for null.
  static void Append(std::string& out, ExpAttribute* value);
  /// The same, with the first value printed as one of the class `type`, which it is or is derived from.
  static void AppendAs(const std::type_info& type, std::string& out, ExpAttribute* value);
  /// Appends the members `begin` to `end` - 1 of an entity, separated by ", ", and those kept behind them.
  static void AppendMembers(std::string& out, ExpEntity& entity, int begin, int end);
  static void AppendInteger(std::string& out, int value);
  static void AppendReference(std::string& out, int number);
  /// Appends the form of ExpReal without flags; while a CompleteWriting lives, that which is read as the same number.
  static void AppendReal(std::string& out, double value);
  /// Appends `*` or `$` where a flag of the value says so, and tells whether it did.
  static bool AppendMarker(std::string& out, const ExpAttribute& value);
};

/// While one that is `on` lives, this thread prints values so that nothing is lost and the text can be read: real numbers with
/// all the digits they need, and `$` for values that have no Part 21 form.
class CompleteWriting {
 public:
  explicit CompleteWriting(bool on);
  ~CompleteWriting();
  CompleteWriting(const CompleteWriting&) = delete;
  CompleteWriting& operator=(const CompleteWriting&) = delete;
  static bool IsOn();

 private:
  const bool before_;
};

}  // namespace VELMAR
