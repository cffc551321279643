/// @file Codes.h
/// The catalogue of findings: a code for each kind of thing that can be wrong with a file.
#pragma once

#include <string>
#include <vector>

namespace velmar {

enum class Severity { kError, kWarning };

/// "error" or "warning".
const char* Name(Severity severity);

/// The kinds of findings. Their numbers are those of the codes that users see, and are never used for
/// anything else. Numbers that are missing stood for what does not happen any more.
enum class Code {
  kSyntax = 1,
  kByteOrderMark,
  kEmptyHeader,
  kGivenUp,
  kLongToken,
  kUnsupportedSchema,
  kNoSchema,
  kUnknownType,
  kUnknownHeaderRecord,
  kTooManyParameters,
  kTooFewParameters,
  kNumberUsedTwice,
  kNumberZero,
  kNumberTooHigh,
  kRealRange = 16,
  kInstancesNotRead = 21,
  kFileChanged,
  kFallbackLibrary,
  kLongString,
  kNotWritten = 27,
  kWrongKind,
  kMissingValue,
  kNothingDerived,
  kDerivedValue,
  kUnknownItem,
  kForeignSelectType,
  kUntypedSelectValue,
  kNoSuchInstance,
  kWrongInstance,
  kElementCount,
  kTooLong,
  kIntegerForReal,
  kBadEscape,
  kNotUtf8,
  kAbstractType,
  kMissingSupertype,
  kMissingHeaderRecord,
  kTooDeep,
  kCyclicAssembly,
  kLooseEnd,
  kUnnamedProduct,
  kScope = 50,
  kRepeatedRecord,
};

/// "V012"
std::string NameOf(Code code);

/// What the catalogue says of a code.
struct CodeInfo {
  Code code;
  Severity severity;
  const char* title;        ///< one line
  const char* explanation;  ///< what it means, what becomes of the data, and what can be done
  /// What ExampleFile makes a file of that has the finding; null where no short text alone gives it.
  const char* example;
  const char* nearMiss;  ///< the same without the finding; null where there is no example
};

/// The row of a code.
const CodeInfo& InfoOf(Code code);

/// All rows, in the order of the codes.
const std::vector<CodeInfo>& Catalogue();

/// The whole file of an example: itself where it begins as a file does, otherwise one of AP214 with it in its
/// DATA section, from line 8 on.
std::string ExampleFile(const std::string& example);

/// The catalogue as the text of docs/findings.md.
std::string CatalogueAsMarkdown();

}  // namespace velmar
