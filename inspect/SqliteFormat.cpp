#include "SqliteFormat.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExpUtilities.h"
#include "ReplaceFile.h"
#include "Tables.h"

namespace velmar {

namespace {

namespace fs = std::filesystem;
using Kind = RecordType::Kind;
using ValueKind = WrittenValue::Kind;

// ------------------------------------------------------------------------------------------------------ the database

[[noreturn]] void ThrowReason(sqlite3* database, int result) {
  const int code = result & 0xFF;
  int system = 0;
  sqlite3_file_control(database, "main", SQLITE_FCNTL_LAST_ERRNO, &system);
  if (code == SQLITE_FULL) throw std::runtime_error(std::strerror(ENOSPC));
  if (code == SQLITE_NOMEM) throw std::bad_alloc();
  if (code == SQLITE_IOERR && system != 0) throw std::runtime_error(std::strerror(system));
  throw std::runtime_error(sqlite3_errmsg(database));
}

struct StatementFinalizer {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// Inserts rows; values are bound from the first column on.
class Insertion {
 public:
  Insertion() = default;
  Insertion(sqlite3* database, const std::string& sql) : database_(database) {
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    statement_.reset(statement);
    if (result != SQLITE_OK) ThrowReason(database, result);
  }

  explicit operator bool() const { return statement_ != nullptr; }
  void Null() { Check(sqlite3_bind_null(statement_.get(), ++column_)); }
  void Integer(std::int64_t value) { Check(sqlite3_bind_int64(statement_.get(), ++column_, value)); }
  void Real(double value) { Check(sqlite3_bind_double(statement_.get(), ++column_, value)); }
  void Text(const std::string& text) {
    Check(sqlite3_bind_text64(statement_.get(), ++column_, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8));
  }
  void Row() {
    const int result = sqlite3_step(statement_.get());
    if (result != SQLITE_DONE) ThrowReason(database_, result);
    sqlite3_reset(statement_.get());
    column_ = 0;
  }

 private:
  void Check(int result) {
    if (result != SQLITE_OK) ThrowReason(database_, result);
  }

  sqlite3* database_ = nullptr;
  std::unique_ptr<sqlite3_stmt, StatementFinalizer> statement_;
  int column_ = 0;
};

// A file that is there already and empty.
class Database {
 public:
  explicit Database(const std::string& path) {
    const int result = sqlite3_open_v2(path.c_str(), &database_, SQLITE_OPEN_READWRITE, nullptr);
    if (result != SQLITE_OK) {
      const std::string why = sqlite3_errmsg(database_);
      sqlite3_close_v2(database_);
      throw std::runtime_error(why);
    }
  }
  ~Database() { sqlite3_close_v2(database_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  void Run(const std::string& sql) {
    const int result = sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) ThrowReason(database_, result);
  }
  Insertion Prepare(const std::string& sql) { return Insertion(database_, sql); }

 private:
  sqlite3* database_ = nullptr;
};

// A name as SQL has it where it may be a word of SQL.
std::string Quoted(const std::string& name) { return '"' + VELMAR::ReplaceString(name, "\"", "\"\"") + '"'; }

// "(?,?,?)"
std::string Places(std::size_t count) {
  std::string places = "(?";
  for (std::size_t i = 1; i < count; ++i) places += ",?";
  return places + ')';
}

// ------------------------------------------------------------------------------------------------------------ values

const char* AffinityOf(Kind kind) {
  switch (kind) {
    case Kind::Integer:
    case Kind::Reference:
      return " INTEGER";
    case Kind::Real:
      return " REAL";
    case Kind::String:
    case Kind::Enumeration:
      return " TEXT";
    default:
      return "";
  }
}

// Whether a value is of the kind that an attribute calls for, so that it needs nothing around it.
bool Fits(Kind kind, ValueKind value) {
  switch (kind) {
    case Kind::Integer:
      return value == ValueKind::Integer;
    case Kind::Real:
      return value == ValueKind::Real || value == ValueKind::Integer;
    case Kind::String:
      return value == ValueKind::String;
    case Kind::Enumeration:
      return value == ValueKind::Enumeration;
    case Kind::Reference:
      return value == ValueKind::Reference;
    default:
      return value != ValueKind::Aggregate && value != ValueKind::Typed;
  }
}

// Binds a value: as what it is where it fits, else as its text.
void Bind(Insertion& insertion, Kind kind, const TableRow::Cell& cell) {
  if (!cell.IsSet()) return insertion.Null();
  const WrittenValue& value = cell.Value();
  if (!Fits(kind, value.kind)) return insertion.Text(TextOf(*cell.values, cell.at));
  if (value.kind == ValueKind::Integer || value.kind == ValueKind::Reference) {
    errno = 0;
    const long long number = std::strtoll(value.text.c_str(), nullptr, 10);
    if (errno == 0) return insertion.Integer(number);
    if (value.kind == ValueKind::Reference) return insertion.Text(TextOf(*cell.values, cell.at));
  }
  if (value.kind == ValueKind::Integer || value.kind == ValueKind::Real) {
    return insertion.Real(std::strtod(value.text.c_str(), nullptr));
  }
  insertion.Text(value.kind == ValueKind::Binary ? value.text : CellOf(cell));
}

// ------------------------------------------------------------------------------------------------------------ tables

// The column for the position at a level of nesting: "position", "position_2".
std::string PositionName(std::size_t level) { return level == 0 ? "position" : fmt::format("position_{}", level + 1); }

// The table of the elements of an attribute. It is made when there is an element that says how deep they are nested.
struct Link {
  static constexpr std::size_t kDeepest = 3;

  std::string name;
  std::size_t depth = 0;  // of positions
  Insertion insertion;

  void Make(Database& database, std::size_t itsDepth) {
    depth = itsDepth;
    std::string columns = "id";
    for (std::size_t i = 0; i < depth; ++i) columns += ", " + PositionName(i);
    database.Run(fmt::format("CREATE TABLE {} ({}, value, PRIMARY KEY ({})) WITHOUT ROWID", Quoted(name),
                             VELMAR::ReplaceString(columns, ",", " INTEGER,") + " INTEGER", columns));
    insertion = database.Prepare(fmt::format("INSERT OR IGNORE INTO {} VALUES {}", Quoted(name), Places(depth + 2)));
  }
};

struct Table {
  std::string name;
  const RecordType* type = nullptr;
  std::vector<std::string> columns;   // for each attribute; those of aggregates are empty
  std::vector<std::string> typeNames; // for each attribute that is a select, the column of the type
  std::vector<Link> links;            // for each attribute; those of others are empty
  std::set<std::string> taken;        // names of columns
  std::size_t width = 0;              // columns that there are
  bool hasParts = false;
  Insertion insertion;

  void Prepare(Database& database) {
    insertion = database.Prepare(fmt::format("INSERT OR IGNORE INTO {} VALUES {}", Quoted(name), Places(width)));
  }
};

class SqliteWriter {
 public:
  SqliteWriter(Database& database, RecordTypes& types) : database_(database), types_(types) {
    database_.Run(
        "CREATE TABLE header (record TEXT, attribute TEXT, position INTEGER, value);"
        "CREATE TABLE instance (id INTEGER PRIMARY KEY, type TEXT);"
        "CREATE TABLE part (id INTEGER, type TEXT, PRIMARY KEY (id, type)) WITHOUT ROWID;");
    header_ = database_.Prepare("INSERT INTO header VALUES (?,?,?,?)");
    instance_ = database_.Prepare("INSERT INTO instance VALUES (?,?)");
    part_ = database_.Prepare("INSERT OR IGNORE INTO part VALUES (?,?)");
  }

  void Add(const WrittenInstance& instance) {
    if (!instance.IsInHeader()) {
      instance_.Integer(instance.number);
      instance_.Text(TypeName(instance));
      instance_.Row();
    }
    ForEachRow(instance, types_, row_, [&](const TableRow& row) {
      if (instance.IsInHeader()) {
        AddHeader(row);
      } else {
        AddRow(instance, row);
      }
    });
  }

  void Finish() {
    for (const auto& [name, table] : tables_) {
      for (Link& link : table->links) {
        if (!link.name.empty() && link.depth == 0) link.Make(database_, 1);
      }
    }
    MakeViews();
  }

 private:
  void AddHeader(const TableRow& row) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const bool hasName = row.type != nullptr && i < row.type->attributes.size();
      const std::string attribute = hasName ? row.type->attributes[i].name : ColumnOfPosition(i);
      const TableRow::Cell& cell = row.cells[i];
      const bool isList = cell.IsSet() && cell.Value().kind == ValueKind::Aggregate;
      std::int64_t position = 0;
      for (std::size_t at = cell.at + (isList ? 1 : 0); at < cell.Value().end; at = (*cell.values)[at].end) {
        header_.Text(row.record->type);
        header_.Text(attribute);
        isList ? header_.Integer(++position) : header_.Null();
        Bind(header_, Kind::Other, {cell.values, at});
        header_.Row();
      }
    }
  }

  void AddRow(const WrittenInstance& instance, const TableRow& row) {
    Table& table = TableOf(row);
    if (instance.isComplex) {
      table.hasParts = true;
      part_.Integer(instance.number);
      part_.Text(row.record->type);
      part_.Row();
    }
    Widen(table, row.cells.size());
    table.insertion.Integer(instance.number);
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      const TableRow::Cell cell = i < row.cells.size() ? row.cells[i] : TableRow::Cell();
      if (!table.links[i].name.empty()) {
        if (cell.IsSet()) AddLinks(table.links[i], instance.number, cell);
      } else if (!table.typeNames[i].empty()) {
        BindSelect(table.insertion, cell);
      } else {
        Bind(table.insertion, KindOf(table, i), cell);
      }
    }
    table.insertion.Row();
  }

  static Kind KindOf(const Table& table, std::size_t attribute) {
    const bool isKnown = table.type != nullptr && attribute < table.type->attributes.size();
    return isKnown ? table.type->attributes[attribute].kind : Kind::Other;
  }

  // The value, and in the column behind it the name that stands before it.
  static void BindSelect(Insertion& insertion, const TableRow::Cell& cell) {
    if (cell.IsSet() && cell.Value().kind == ValueKind::Typed && cell.Value().elements == 1) {
      Bind(insertion, Kind::Select, {cell.values, cell.at + 1});
      insertion.Text(cell.Value().text);
    } else {
      Bind(insertion, Kind::Select, cell);
      insertion.Null();
    }
  }

  void AddLinks(Link& link, std::int64_t id, const TableRow::Cell& cell) {
    const std::vector<WrittenValue>& values = *cell.values;
    if (cell.Value().kind != ValueKind::Aggregate) {  // a value that the attribute does not take
      if (link.depth == 0) link.Make(database_, 1);
      AddLink(link, id, {0}, cell);
      return;
    }
    if (cell.Value().elements == 0) return;
    if (link.depth == 0) link.Make(database_, DepthOf(values, cell.at));
    std::vector<std::pair<std::size_t, std::int64_t>> open = {{cell.Value().end, 0}};  // where it ends, and the last position
    for (std::size_t at = cell.at + 1; !open.empty();) {
      if (at == open.back().first) {
        open.pop_back();
        continue;
      }
      ++open.back().second;
      if (values[at].kind == ValueKind::Aggregate && open.size() < link.depth) {
        open.emplace_back(values[at].end, 0);
        ++at;
        continue;
      }
      std::vector<std::int64_t> positions;
      positions.reserve(open.size());
      for (const auto& [end, position] : open) positions.push_back(position);
      AddLink(link, id, positions, {cell.values, at});
      at = values[at].end;
    }
  }

  static void AddLink(Link& link, std::int64_t id, const std::vector<std::int64_t>& positions, const TableRow::Cell& value) {
    link.insertion.Integer(id);
    for (std::size_t i = 0; i < link.depth; ++i) link.insertion.Integer(i < positions.size() ? positions[i] : 0);
    Bind(link.insertion, Kind::Other, value);
    link.insertion.Row();
  }

  // How deep the aggregates within this one are nested, up to the deepest that positions are given for.
  static std::size_t DepthOf(const std::vector<WrittenValue>& values, std::size_t at) {
    std::size_t deepest = 1;
    std::vector<std::size_t> ends = {values[at].end};
    for (std::size_t i = at + 1; i < values[at].end && deepest < Link::kDeepest; ++i) {
      while (ends.back() == i) ends.pop_back();
      if (values[i].kind == ValueKind::Typed) {
        i = values[i].end - 1;
      } else if (values[i].kind == ValueKind::Aggregate) {
        ends.push_back(values[i].end);
        deepest = std::max(deepest, ends.size());
      }
    }
    return deepest;
  }

  // The table of a row, made where there is none.
  Table& TableOf(const TableRow& row) {
    std::unique_ptr<Table>& made = tables_[row.record->type];
    if (made != nullptr) return *made;
    made = std::make_unique<Table>();
    Table& table = *made;
    table.name = FreeName(VELMAR::ToLowerString(row.record->type), names_);
    table.type = row.type;
    std::string columns = FreeName("id", table.taken) + " INTEGER PRIMARY KEY";
    table.width = 1;
    const std::size_t count = row.type == nullptr ? 0 : row.type->attributes.size();
    table.columns.resize(count);
    table.typeNames.resize(count);
    table.links.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      const RecordType::Attribute& attribute = row.type->attributes[i];
      if (attribute.kind == Kind::Aggregate) {
        table.links[i].name = LinkName(table.name + '_' + attribute.name);
        continue;
      }
      table.columns[i] = FreeName(attribute.name, table.taken);
      columns += ", " + Quoted(table.columns[i]) + AffinityOf(attribute.kind);
      ++table.width;
      if (attribute.kind != Kind::Select) continue;
      table.typeNames[i] = FreeName(attribute.name + "_type", table.taken);
      columns += ", " + Quoted(table.typeNames[i]) + " TEXT";
      ++table.width;
    }
    database_.Run(fmt::format("CREATE TABLE {} ({})", Quoted(table.name), columns));
    table.Prepare(database_);
    return table;
  }

  // Not that of an entity type, be it there or not.
  std::string LinkName(std::string name) {
    while (types_.Find(VELMAR::ToUpperString(name)) != nullptr) name += '_';
    return FreeName(name, names_);
  }

  // Columns for values that the type has no attributes for.
  void Widen(Table& table, std::size_t count) {
    if (count <= table.columns.size()) return;
    for (std::size_t i = table.columns.size(); i < count; ++i) {
      table.columns.push_back(FreeName(ColumnOfPosition(i), table.taken));
      database_.Run(fmt::format("ALTER TABLE {} ADD COLUMN {}", Quoted(table.name), Quoted(table.columns.back())));
      ++table.width;
    }
    table.typeNames.resize(count);
    table.links.resize(count);
    table.Prepare(database_);
  }

  // ------------------------------------------------------------------------------------------------------------ views

  // A view of each type that there are instances of, with those of its subtypes, and of their supertypes.
  void MakeViews() {
    std::map<std::string, std::pair<const RecordType*, std::vector<const Table*>>> subtypes;
    for (const auto& [name, table] : tables_) {
      if (table->type == nullptr) continue;
      subtypes[table->type->name].first = table->type;
      for (const RecordType* supertype : table->type->supertypes) {
        auto& entry = subtypes[supertype->name];
        entry.first = supertype;
        entry.second.push_back(table.get());
      }
    }
    for (const auto& [name, entry] : subtypes) MakeView(*entry.first, entry.second);
  }

  void MakeView(const RecordType& supertype, std::vector<const Table*> tables) {
    const auto found = tables_.find(supertype.name);
    const Table* own = found == tables_.end() ? nullptr : found->second.get();
    if (own != nullptr) tables.insert(tables.begin(), own);
    const std::string name = "any_" + VELMAR::ToLowerString(supertype.name);

    // The columns are named as in the table of the supertype.
    std::set<std::string> taken = {"id", "type"};
    std::string columns = "id, type";
    for (const RecordType::Attribute& attribute : supertype.attributes) {
      if (attribute.kind == Kind::Aggregate) continue;
      columns += ", " + Quoted(FreeName(attribute.name, taken));
      if (attribute.kind == Kind::Select) columns += ", " + Quoted(FreeName(attribute.name + "_type", taken));
    }
    std::vector<std::string> selections;
    for (const Table* table : tables) {
      const std::string type = table->hasParts ? "(SELECT i.type FROM instance i WHERE i.id = t.id)" : "'" + table->type->name + "'";
      selections.push_back("t.id, " + type);
      for (std::size_t i = 0; i < supertype.attributes.size(); ++i) {
        const Kind kind = supertype.attributes[i].kind;
        if (kind == Kind::Aggregate) continue;
        const std::size_t at = Inherited(supertype, i, *table->type);
        const bool isThere = at < table->columns.size() && !table->columns[at].empty();
        selections.back() += isThere ? ", t." + Quoted(table->columns[at]) : ", NULL";
        if (kind != Kind::Select) continue;
        selections.back() += isThere && !table->typeNames[at].empty() ? ", t." + Quoted(table->typeNames[at]) : ", NULL";
      }
      selections.back() += " FROM " + Quoted(table->name) + " t" + WithoutThoseOf(own, *table);
    }
    CreateView(name, columns, selections);

    for (std::size_t i = 0; i < supertype.attributes.size(); ++i) {
      if (supertype.attributes[i].kind == Kind::Aggregate) MakeLinkView(name, supertype, i, own, tables);
    }
  }

  // A view of the elements of an attribute, of all subtypes.
  void MakeLinkView(const std::string& ofInstances, const RecordType& supertype, std::size_t attribute, const Table* own,
                    const std::vector<const Table*>& tables) {
    std::size_t depth = 1;
    std::vector<std::pair<const Table*, const Link*>> links;
    for (const Table* table : tables) {
      const std::size_t at = Inherited(supertype, attribute, *table->type);
      if (at >= table->links.size() || table->links[at].name.empty()) continue;
      links.emplace_back(table, &table->links[at]);
      depth = std::max(depth, table->links[at].depth);
    }
    std::vector<std::string> selections;
    for (const auto& [table, link] : links) {
      std::string selection = "t.id";
      for (std::size_t i = 0; i < depth; ++i) selection += i < link->depth ? ", t." + PositionName(i) : std::string(", 0");
      selections.push_back(selection + ", t.value FROM " + Quoted(link->name) + " t" + WithoutThoseOf(own, *table));
    }
    std::string columns = "id";
    for (std::size_t i = 0; i < depth; ++i) columns += ", " + PositionName(i);
    CreateView(ofInstances + '_' + supertype.attributes[attribute].name, columns + ", value", selections);
  }

  // A complex instance has a record of the supertype, and so stands in the supertype's own table.
  static std::string WithoutThoseOf(const Table* own, const Table& table) {
    const bool isInBoth = own != nullptr && own != &table && own->hasParts && table.hasParts;
    return isInBoth ? " WHERE t.id NOT IN (SELECT part.id FROM part)" : "";
  }

  void CreateView(const std::string& name, const std::string& columns, const std::vector<std::string>& selections) {
    if (selections.empty()) return;
    database_.Run(fmt::format("CREATE VIEW {} ({}) AS SELECT {}", Quoted(FreeName(name, names_)), columns,
                              fmt::join(selections, " UNION ALL SELECT ")));
  }

  // Where a type has an attribute of its supertype, or of itself; behind all attributes where it has not.
  static std::size_t Inherited(const RecordType& supertype, std::size_t attribute, const RecordType& type) {
    const auto [owner, index] = OwnerOf(supertype, attribute);
    std::size_t first = 0;
    for (const RecordType* candidate : type.supertypes) {
      if (candidate == owner) return first + index;
      first += candidate->Count(true);
    }
    return &type == owner ? type.firstOwn + index : type.attributes.size();
  }

  // The type that declares an attribute, and which of its own it is.
  static std::pair<const RecordType*, std::size_t> OwnerOf(const RecordType& type, std::size_t attribute) {
    std::size_t first = 0;
    for (const RecordType* supertype : type.supertypes) {
      if (attribute < first + supertype->Count(true)) return {supertype, attribute - first};
      first += supertype->Count(true);
    }
    return {&type, attribute - first};
  }

  Database& database_;
  RecordTypes& types_;
  TableRow row_;
  Insertion header_, instance_, part_;
  std::map<std::string, std::unique_ptr<Table>> tables_;  // by the names of the types
  std::set<std::string> names_ = {"header", "instance", "part"};
};

// Removes a file at the end, unless it was moved.
struct PartFile {
  fs::path path;

  explicit PartFile(const fs::path& target) {
    std::FILE* file = VelmarFiles::CreateBeside(target, path);
    if (file == nullptr) throw std::runtime_error(std::strerror(errno));
    std::fclose(file);
  }
  ~PartFile() {
    std::error_code error;
    if (!path.empty()) fs::remove(path, error);
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
};

}  // namespace

std::uint64_t WriteSqlite(const std::string& part21, RecordTypes& types, const std::string& path, const Progress& progress) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  const bool isThere = fs::exists(status);
  if (isThere && !fs::is_regular_file(status)) throw std::runtime_error("a database needs a file of its own");
  fs::path target = path;
  if (isThere) {
    target = fs::canonical(path, error);
    VelmarFiles::Check(error);
  }
  PartFile part(target);
  {
    Database database(part.path.string());
    database.Run(
        "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -65536; BEGIN");
    SqliteWriter writer(database, types);
    ForEachInstanceOf(
        part21, [&writer](const WrittenInstance& instance) { writer.Add(instance); }, progress);
    writer.Finish();
    database.Run("COMMIT");
  }
  const std::uint64_t size = fs::file_size(part.path, error);
  VelmarFiles::Check(error);
  if (isThere) {
    fs::permissions(part.path, status.permissions(), error);
    VelmarFiles::Check(error);
  }
  fs::rename(part.path, target, error);
  VelmarFiles::Check(error);
  part.path.clear();
  return size;
}

}  // namespace velmar
