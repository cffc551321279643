#include "Tables.h"

#include <fmt/format.h>

#include <algorithm>

#include "ExpUtilities.h"

namespace velmar {

namespace {

// The cells of the record's own parameters.
void AddOwn(const WrittenRecord& record, std::vector<TableRow::Cell>& cells) {
  for (std::size_t at = 0; at < record.values.size(); at = record.values[at].end) cells.push_back({&record.values, at});
}

// The attributes that a part inherits are those of its supertypes, in their order.
void AddInherited(const WrittenInstance& instance, const RecordType& type, std::vector<TableRow::Cell>& cells) {
  std::size_t expected = 0;
  for (const RecordType* supertype : type.supertypes) expected += supertype->Count(true);
  if (expected == type.firstOwn) {
    std::size_t end = 0;
    for (const RecordType* supertype : type.supertypes) {
      end += supertype->Count(true);
      const auto part = std::find_if(instance.records.begin(), instance.records.end(),
                                     [&](const WrittenRecord& record) { return record.type == supertype->name; });
      if (part != instance.records.end()) AddOwn(*part, cells);
      cells.resize(end);
    }
  }
  cells.resize(type.firstOwn);
}

}  // namespace

void ForEachRow(const WrittenInstance& instance, RecordTypes& types, TableRow& memory,
                const std::function<void(const TableRow&)>& action) {
  for (const WrittenRecord& record : instance.records) {
    memory.record = &record;
    memory.type = types.Of(record, instance);
    memory.cells.clear();
    if (memory.type != nullptr && instance.isComplex) AddInherited(instance, *memory.type, memory.cells);
    AddOwn(record, memory.cells);
    if (memory.type != nullptr && memory.cells.size() < memory.type->attributes.size()) {
      memory.cells.resize(memory.type->attributes.size());
    }
    action(memory);
  }
}

std::string TypeName(const WrittenInstance& instance) {
  if (!instance.isComplex) return instance.records.front().type;
  std::vector<std::string> names;
  for (const WrittenRecord& record : instance.records) names.push_back(record.type);
  std::sort(names.begin(), names.end());
  return fmt::format("({})", fmt::join(names, " "));
}

std::string FreeName(std::string name, std::set<std::string>& taken) {
  while (!taken.insert(VELMAR::ToLowerString(name)).second) name += '_';
  return name;
}

std::string ColumnOfPosition(std::size_t position) { return fmt::format("value_{}", position + 1); }

std::string CellOf(const TableRow::Cell& cell) {
  if (!cell.IsSet()) return "";
  const WrittenValue& value = cell.Value();
  if (value.kind == WrittenValue::Kind::Enumeration) return value.text;
  return value.kind == WrittenValue::Kind::String ? TextOfString(value.text) : TextOf(*cell.values, cell.at);
}

}  // namespace velmar
