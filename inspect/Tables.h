/// @file Tables.h
/// The instances of a written file as rows of tables, one for each entity type.
#pragma once

#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "RecordTypes.h"
#include "WrittenInstances.h"

namespace velmar {

/// A record of an instance as a row of its type's table.
struct TableRow {
  /// A value by its place among those of a record; no value where `values` is null.
  struct Cell {
    const std::vector<WrittenValue>* values = nullptr;
    std::size_t at = 0;

    const WrittenValue& Value() const { return (*values)[at]; }
    /// Whether there is a value other than `$` and `*`.
    bool IsSet() const {
      return values != nullptr && Value().kind != WrittenValue::Kind::Unset && Value().kind != WrittenValue::Kind::Omitted;
    }
  };

  const WrittenRecord* record = nullptr;
  const RecordType* type = nullptr;  ///< null where it is not known
  /// All attributes of the type, then what the record has beyond them. Inherited attributes of a part of a complex instance
  /// are those of the parts that have them.
  std::vector<Cell> cells;
};

/// Calls `action` for each record of an instance, which may be one of the header.
void ForEachRow(const WrittenInstance& instance, RecordTypes& types, TableRow& memory,
                const std::function<void(const TableRow&)>& action);

/// The type of an instance as users see it; of a complex one the names of its parts in their order, in parentheses.
std::string TypeName(const WrittenInstance& instance);

/// The name, or where `taken` has it the name with as many `_` behind it as make it another; `taken` has it from now on.
/// Case does not count.
std::string FreeName(std::string name, std::set<std::string>& taken);

/// The name of the column for the value at a position (from 0) for which a type has no attribute: "value_3".
std::string ColumnOfPosition(std::size_t position);

/// The value as a cell: a string or an enumeration item without what encloses it, nothing for `$` and `*`, any other value as
/// TextOf gives it.
std::string CellOf(const TableRow::Cell& cell);

}  // namespace velmar
