/// @file Diagnostics.h
/// What is wrong with an EXPRESS text, as data, and its printed form.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "SourceFile.h"

namespace VELMAR::Express {

/// A stretch of a source file; `file` is null for what has no place in a text.
struct Location {
  const SourceFile* file = nullptr;
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

enum class Severity { Error, Warning };

/// Everything the front end can find. The rows of the catalogue stand in this order.
enum class Code {
  UnexpectedCharacter,
  UnterminatedString,
  UnterminatedRemark,
  StrayRemarkEnd,
  BadEncodedString,
  BadBinary,
  BadReal,
  Expected,
  ReservedWord,
  NotClosed,
  WrongEnd,
  TooDeep,
  NoSchema,
  NoExpression,
  NumberRange,
  WrongArguments,
  UnknownType,
  UnknownEntity,
  UnknownSchema,
  UnknownInterfaceItem,
  UnknownAttribute,
  DuplicateName,
  DuplicateAttribute,
  DuplicateItem,
  NotAnEntity,
  NotAType,
  NotExtensible,
  CyclicInheritance,
  CyclicType,
  CyclicSelect,
  NotInherited,
  NotSpecialised,
  Bounds,
  GenericAttribute,
  NotASubtype,
  InverseNotReferring,
  UnknownName,
  NotAValue,
  NotAProcedure,
  NotAssignable,
  NotAnInstance,
  WrongOperand,
  NotComparable,
  NotLogical,
  NotANumber,
  NotAssignableValue,
  WrongArgumentType,
  WrongLabel,
  WrongReturn,
  TooManyElements,
  NotAPart,
  WiderRedeclaration,
  OutsideRepeat,
  NotInterfaceable,
  NotOnlyEntities,
  ReservedSchemaName,
  AmbiguousItem,
  Unreachable,
  UnusedLocal,
  InstanceComparison,
  HiddenName,
  EmptySelect,
  OtherEntity,
  UnknownRole,
  AlwaysIndeterminate,
  GenericValue,
  EmptySection,
  ConstantCondition,
  NoReturn,
  SameRedeclaration,
  AmbiguousAttribute,
  EndlessDerivation,
  NoEffect,
  DuplicateLabel,
  UnusedQueryVariable,
  RepeatVariableChanged,
  UnknownTypeName,
  SelfInterface,
  kCount
};

/// One row of the catalogue of diagnostics.
struct CatalogueRow {
  const char* number;  ///< "E021"; warnings begin with W
  Severity severity;
  const char* explanation;  ///< the rule, in one sentence, with the clause of ISO 10303-11:2004 it comes from
};

/// The catalogue's row of a code.
const CatalogueRow& CatalogueRowOf(Code code);

/// One finding.
struct Diagnostic {
  Code code;
  Location where;
  std::string text;
  std::string hint;         ///< empty, or what might have been meant
  Location related;         ///< another place that matters; without file where there is none
  std::string relatedText;  ///< what is at that place
};

/// Collects the findings of a run. Keeps the first 1,000; the rest is counted.
class Diagnostics {
 public:
  static constexpr std::size_t kKept = 1000;

  void Report(Code code, Location where, std::string text, std::string hint = "");
  /// As above with a second place, for example that of the first of two equal declarations.
  void Report(Code code, Location where, std::string text, Location related, std::string relatedText);

  std::size_t ErrorCount() const { return errors_; }
  std::size_t WarningCount() const { return warnings_; }
  /// The findings in the order in which they were reported.
  const std::vector<Diagnostic>& All() const { return all_; }

  /// Prints all findings, those of each file in the order of their places:
  ///
  ///     file.exp:12:7: error: unknown type 'lenght_measure' [E021]; did you mean 'length_measure'?
  ///         radius : lenght_measure;
  ///                  ^~~~~~~~~~~~~~
  void Print(std::ostream& out) const;

 private:
  void Add(Diagnostic diagnostic);

  std::vector<Diagnostic> all_;
  std::size_t errors_ = 0;
  std::size_t warnings_ = 0;
};

/// The candidate that `name` may be a misspelling of; empty where none is near enough.
std::string Nearest(const std::string& name, const std::vector<std::string>& candidates);

/// The hint that names the nearest candidate; empty where none is near enough.
std::string DidYouMean(const std::string& name, const std::vector<std::string>& candidates);

}  // namespace VELMAR::Express
