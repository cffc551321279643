/// @file InstanceDigest.h
/// What an instance says, in a form that is quickly compared: whatever its number, and the numbers of those it refers to.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "DataDictionary.h"
#include "WrittenInstances.h"

namespace velmar {

/// A reference of an instance. The slot says where in the instance it stands; the elements of a set or bag share one.
struct DigestedReference {
  std::uint32_t slot;
  std::int64_t number;
};

/// The values of an instance but for what its references lead to.
///
/// Two digests of the same type are equal where the values are: real numbers and integers by their values, strings by their
/// characters, sets and bags without regard to the order of their elements. The elements of a set that are aggregates or
/// references with a type around them have an order all the same. Equal digests of other values have the odds of 1 to 2^64.
struct Digest {
  std::uint64_t hash = 0;
  std::vector<DigestedReference> references;
};

/// A hash that spreads the bits of a number.
inline std::uint64_t Mixed(std::uint64_t number) {
  number += 0x9E3779B97F4A7C15u;
  number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9u;
  number = (number ^ (number >> 27)) * 0x94D049BB133111EBu;
  return number ^ (number >> 31);
}
/// Of two, in this order.
inline std::uint64_t Mixed(std::uint64_t first, std::uint64_t second) { return Mixed(Mixed(first) ^ (second * 3)); }

std::uint64_t HashOf(const std::string& text);

/// Digests the parameter whose value is the one at index `at` of the record. `domain` is what the schema says of it, or null.
/// The slots begin with `slot`, which becomes the first behind them.
void AddParameter(const WrittenRecord& record, std::size_t at, const Domain* domain, std::uint32_t& slot, Digest& digest);

/// The records of an instance, of a complex one in the order of their types: its own order means nothing.
void SortRecords(const WrittenInstance& instance, std::vector<const WrittenRecord*>& records);

/// Digests an instance with these records. `dictionary` may be null.
void DigestInstance(const std::vector<const WrittenRecord*>& records, bool isComplex, const DataDictionary* dictionary,
                    Digest& digest);

/// What the schema says of a parameter of a record, counted from 0; null where it says nothing.
const AttributeRule* AttributeOf(const WrittenRecord& record, std::size_t parameter, bool isComplex,
                                 const DataDictionary* dictionary);

}  // namespace velmar
