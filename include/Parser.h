/// @file Parser.h
/// The parser of Part 21 files and the reporting of syntax errors.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Scanner.h"
#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// Writes syntax errors to the log, as "-- line 3 col 7: message", and counts them.
class VELMAR_API Errors {
 public:
  int count;  ///< errors reported so far; warnings do not count

  Errors();
  /// Reports the error of a number: 0 to 24 for a token that is missing, 25 to 36 for what a production cannot start with.
  void SynErr(int line, int col, int n);
  /// Logs the message with its place, and counts it.
  void Error(int line, int col, const wchar_t* s);
  /// Logs the message, with its place where one is given, and counts nothing.
  ///@{
  void Warning(int line, int col, const wchar_t* s);
  void Warning(const wchar_t* s);
  ///@}
  /// Logs the message and ends the process with exit status 1.
  void Exception(const wchar_t* s);
};

/// Reads the tokens of one Part 21 file into an object provider: a recursive-descent parser of ISO 10303-21's exchange
/// structure with one token of look-ahead.
///
/// Every instance is created by the provider, filled through its members, numbered and added; references stay numbers.
/// Syntax errors are reported and parsing goes on behind the next semicolon. Records that a provider cannot create are
/// read and dropped. A parser reads one scanner to its end, once.
class VELMAR_API Parser {
 public:
  /// Reads from `scanner`, which is not owned.
  explicit Parser(Scanner* scanner);
  ~Parser();
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  /// Where entities are created and added; must be set before Parse, and is not owned.
  void SetProvider(ExpAbstractObjectProvider* provider) { provider_ = provider; }
  /// Added to every instance number and reference.
  void SetInstanceNumberOffset(int offset) { offset_ = offset; }
  /// Whether header records are read without creating entities and without choosing the schema.
  void SetSkipHeader(bool skipHeader) { skipHeader_ = skipHeader; }

  /// Whether nothing of the file is dropped, see ExpFile::KeepEverything.
  void KeepEverything(bool keep) { keepsEverything_ = keep; }

  /// Reads the file. Throws std::bad_array_new_length for a header section without any record, and lets the errors of
  /// the provider's AddEntity through.
  void Parse();

  /// The errors reported so far.
  const Errors& GetErrors() const { return *errors_; }
  /// A line for every record that became no entity or had more parameters than its type has attributes.
  const std::string& GetNotes() const { return notes_; }

  // Tokens.
  /// Makes the look-ahead token the current one, and scans the next.
  void Get();
  /// Consumes a token of the kind `n`, or reports that it is missing.
  void Expect(int n);
  /// As Expect; goes on to where a token of the set `follow` stands.
  void ExpectWeak(int n, int follow);
  /// Consumes a separator of the kind `n`. False where there is none but a token of the set `repFol`; otherwise that is
  /// reported, and tokens are passed over up to one of the sets, or the end of the instance: true where it is of `syFol`.
  bool WeakSeparator(int n, int syFol, int repFol);
  /// Whether the look-ahead token is in the set `s`: those that a production begins with.
  bool StartOf(int s) const;
  /// Reports an error at the look-ahead or the current token, unless the last one is only a token or two away.
  ///@{
  void SynErr(int n);
  void SemErr(const wchar_t* msg);
  ///@}

 private:
  using Lexeme = Scanner::Lexeme;
  // The productions of parameters come in four families with one grammar. They differ in where a value goes: into an
  // attribute; into an aggregate, as a further element; into a select that is an element; nowhere.
  enum class Family { Arg, ExpAggr, ExpAggrSelect, Value };
  // Where a record stands.
  enum class Place { Header, Data, Complex };
  // A list or a typed parameter that has been begun: where the values in its parentheses go.
  struct Level {
    bool isList;
    Family family;
    ExpAttribute* target;
    std::unique_ptr<ExpSelect> made;  // a typed element, which goes to the aggregate below once it is complete
  };

  // The productions, in the order of the grammar.
  void Part21();
  void headerSection();
  void headerEntityList();
  void headerEntity(std::set<std::string>& names);
  void dataSection();
  void entityInstanceList();
  bool entityInstanceName(int& number);
  void entityInstance(bool isNamed, int number);
  void exportList();
  void simpleRecord(ExpEntity*& entity, Place place, std::string& name);
  void subSuperRecord(ExpEntity*& entity, std::string& name);
  void subSuperSimpleRecordList(ExpExternalMappingEntity* complex);
  bool keyword(std::string& name);
  void entityParameterList(ExpEntity* entity, bool inComplex, bool& ok, int& reached);
  void parameter(Family family, ExpAttribute* target);
  void beginTypedParameter(Family family, ExpAttribute* target);
  void beginList(Family family, ExpAttribute* target);
  void endLevel();
  void untypedParameter(Family family, ExpAttribute* target);
  void enumeration(Family family, ExpAttribute* target);

  void ReportFailure();
  int NumberOf(const Lexeme& name);
  bool StartsRecord() const;
  void SelectSchema();
  ExpEntity* Create(const std::string& typeName);
  void Note(int number, const std::string& text);

  // What is done only where everything is kept.
  void KeepRecord(ExpEntity*& entity, Place place, const std::string& name, bool isUserDefined);
  void KeepParameter(ExpEntity& entity, int index, int end);
  bool Takes(ExpAttribute& attribute) const;
  void KeepToken(Family family, ExpAttribute* target, std::string text) const;
  bool IsInTypedParameter() const { return !levels_.empty() && !levels_.back().isList; }
  void Warn(const Lexeme& at, const std::string& text);
  void RemarkOnRecord(const std::string& type, const std::string& text);
  void Remark(const std::string& text);
  void RemarkOnReferences();

  Scanner* scanner_;
  Errors* errors_;
  int errDist_;
  Lexeme dummy_;
  const Lexeme* t_;   // the token just consumed
  const Lexeme* la_;  // the look-ahead token
  std::string notes_;
  ExpAbstractObjectProvider* provider_;
  bool skipHeader_;
  bool keepsEverything_;
  int offset_;
  int currentNumber_;
  std::string headerText_;
  std::string schemaName_;
  std::vector<Level> levels_;
  std::string recordName_;
  std::string partName_;
  std::string text_;
  bool hasReportedFailure_ = false;
  struct Remarks;
  std::unique_ptr<Remarks> remarks_;  // where everything is kept
};

}  // namespace VELMAR
