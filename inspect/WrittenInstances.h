/// @file WrittenInstances.h
/// The instances of a Part 21 file one behind the other, as they stand in the text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Input.h"
#include "Progress.h"
#include "Scanner.h"

namespace VELMAR {
class LexemeReader;
}

namespace velmar {

/// One value as it is written. The values of a record stand behind each other in one list: an aggregate or a typed value,
/// then what stands within it.
struct WrittenValue {
  enum class Kind { Integer, Real, String, Binary, Enumeration, Reference, Unset, Omitted, Aggregate, Typed };

  Kind kind = Kind::Unset;
  Place where = {0, 0};
  /// The token; without apostrophes, quotation marks, points and `#`. Of a typed value its name, else empty.
  std::string text;
  std::size_t parameter = 0;  ///< the index of the parameter that it is or stands within
  std::size_t end = 0;       ///< the index behind the value and all that stands within it
  std::size_t elements = 0;  ///< of an aggregate, and of the parentheses of a typed value
};

/// The record of one entity type: NAME ( values ).
struct WrittenRecord {
  std::string type;  ///< with `!` in front of the name of a user-defined type
  Place where = {0, 0};
  Place end = {0, 0};  ///< of its closing parenthesis
  std::size_t parameters = 0;
  std::vector<WrittenValue> values;  ///< the parameters and all that stands within them
};

/// Which values of the instances are read; those of the header always are.
enum class ValuesRead {
  None,      ///< records have types and places alone
  Numerals,  ///< references and real numbers, wherever they stand, one behind the other: `end` and `elements` say nothing
  All,
};

/// An instance, or a record of the header.
struct WrittenInstance {
  std::int64_t number = -1;  ///< -1 in the header; the greatest 64-bit number for all that are greater
  Place where = {0, 0};
  bool isComplex = false;
  bool isWhole = true;  ///< whether there is no mistake in it
  std::vector<WrittenRecord> records;
  /// Where the records stand in the file, in bytes: the first, or the parenthesis before it, and what is behind the last.
  int begin = 0;
  int end = 0;

  bool IsInHeader() const { return number < 0; }
};

/// "A", of a complex instance "(A B)".
std::string TypeText(const WrittenInstance& instance);

/// Gives the header records and the instances of a file in the order of its text. What is no instance is passed over
/// silently up to the next semicolon: to say what is wrong with the syntax is the parser's part. An instance with a scope
/// comes behind those within it.
///
/// The one walk over the text that there is beside the parser's.
class InstanceReader {
 public:
  /// `scanner` stands at the beginning of the file, and outlives this. The texts of values are bytes of the file, and UTF-8 where it
  /// has a byte order mark.
  explicit InstanceReader(VELMAR::Scanner& scanner);
  ~InstanceReader();
  InstanceReader(const InstanceReader&) = delete;
  InstanceReader& operator=(const InstanceReader&) = delete;

  /// Fills `instance` with the next one that is whole, whose memory is used again; false at the end of the file.
  bool Read(WrittenInstance& instance, ValuesRead wanted = ValuesRead::All);

  /// The same with those that have mistakes, whose last record ends where the first mistake is.
  bool ReadAny(WrittenInstance& instance, ValuesRead wanted = ValuesRead::All);

  /// Where the first DATA section begins, in bytes, behind its keyword; -1 while there was none.
  int DataBegin() const { return dataBegin_; }

 private:
  struct Enclosing {
    std::int64_t number;
    Place where = {0, 0};
  };

  void Next();
  bool Is(VELMAR::Token::Kind kind) const;
  Place Here() const;
  void ReadRecords(WrittenInstance& instance, ValuesRead wanted);
  bool ReadRecord(WrittenInstance& instance, ValuesRead wanted);
  bool ReadValues(WrittenRecord& record, ValuesRead wanted, std::size_t& used);
  bool ReadValue(WrittenValue& value, ValuesRead wanted);
  bool PassValues(WrittenRecord& record);
  void PassStatement();

  const std::unique_ptr<VELMAR::LexemeReader> token_;
  int dataBegin_ = -1;
  int behind_ = 0;  // where the token before this one ends
  bool inHeader_ = false;
  std::vector<Enclosing> enclosing_;     // the instances in whose scope we are
  std::vector<std::size_t> open_;        // the aggregates and typed values that a value stands within
  std::vector<WrittenRecord> spare_;     // records whose memory waits for others
};

/// Calls `action` for each header record and whole instance of a file; returns where its DATA section begins, as DataBegin. Tells
/// `progress` how much of the file it has passed. Throws std::runtime_error where it cannot be read.
int ForEachWrittenInstance(const std::string& path, ValuesRead wanted, const std::function<void(const WrittenInstance&)>& action,
                           const Progress& progress = {});

/// The same for a file that is in memory, of 2^31 - 1 bytes at most, without a byte order mark. Throws std::runtime_error where an
/// instance has a mistake.
void ForEachInstanceOf(const std::string& part21, const std::function<void(const WrittenInstance&)>& action,
                       const Progress& progress = {});

/// The same for instances with mistakes, too.
void ForAnyWrittenInstance(const std::string& path, ValuesRead wanted, const std::function<void(const WrittenInstance&)>& action,
                           const Progress& progress = {});

/// As many instances as a file would have if all of it were as its first part is; at least 1. For telling how far it has been read.
double ExpectedInstances(const std::string& path);

/// The number of an instance name without its `#`; the greatest 64-bit number for all that are greater.
std::int64_t InstanceNumber(const char* begin, const char* end);

/// What the header of a file says of its schema.
struct NamedSchema {
  std::string name;      ///< the first of FILE_SCHEMA; empty where there is none
  Place where = {0, 0};  ///< of the record
};

/// Reads no further than that record. Throws as ForEachWrittenInstance does.
NamedSchema SchemaNamedIn(const std::string& path);

}  // namespace velmar
