/// @file RecordTypes.h
/// What the records of a written file are made of: the names and kinds of attributes, in the order of Part 21.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "WrittenInstances.h"

namespace VELMAR {
class ExpEntityRuntimeType;
}

namespace velmar {

/// An entity type.
struct RecordType {
  /// What an attribute holds.
  enum class Kind { Integer, Real, String, Enumeration, Reference, Select, Aggregate, Other };
  struct Attribute {
    std::string name;
    Kind kind;
  };

  std::string name;                           ///< in upper case
  std::vector<Attribute> attributes;          ///< all that a record of a simple instance has, inherited ones first
  std::size_t firstOwn = 0;                   ///< the first that a record within a complex instance has
  std::vector<const RecordType*> supertypes;  ///< all of them, the root first
  bool hasDistinctNames = true;               ///< among all attributes
  bool hasDistinctOwnNames = true;            ///< from the first own one on

  /// Of a record within a complex instance, or of any other.
  std::size_t First(bool isPart) const { return isPart ? firstOwn : 0; }
  std::size_t Count(bool isPart) const { return attributes.size() - First(isPart); }
  bool HasDistinctNames(bool isPart) const { return isPart ? hasDistinctOwnNames : hasDistinctNames; }
};

/// The types of one schema, and those of the fallback schema that it lacks.
class RecordTypes {
 public:
  /// `schema` is a registry name, of which the types are registered; where it is empty, no type is known but those of the
  /// header.
  explicit RecordTypes(std::string schema) : schema_(std::move(schema)) {}
  RecordTypes(const RecordTypes&) = delete;
  RecordTypes& operator=(const RecordTypes&) = delete;

  const std::string& Schema() const { return schema_; }
  /// The type of this name, in upper case; null where there is none. Belongs to this. May load the fallback schema: throws
  /// std::runtime_error where that fails.
  const RecordType* Find(const std::string& name);
  /// The same for records of the header.
  const RecordType* FindInHeader(const std::string& name);
  /// One of both.
  const RecordType* Of(const WrittenRecord& record, const WrittenInstance& instance) {
    return instance.IsInHeader() ? FindInHeader(record.type) : Find(record.type);
  }

 private:
  using Table = std::unordered_map<std::string, std::unique_ptr<RecordType>>;

  static std::unique_ptr<RecordType> Describe(VELMAR::ExpEntityRuntimeType& type);
  VELMAR::ExpEntityRuntimeType* Registered(const std::string& name);

  const std::string schema_;
  bool hasFallback_ = false;
  Table types_;
  Table headerTypes_;
};

/// A value as Part 21 writes it, but with strings in UTF-8 where they have a text.
std::string TextOf(const std::vector<WrittenValue>& values, std::size_t at);

/// The text of a string as it stands in a file, in UTF-8; as it stands there where it has no such text: halves of surrogate
/// pairs are none.
std::string TextOfString(const std::string& written);

}  // namespace velmar
