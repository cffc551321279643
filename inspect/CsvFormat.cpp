#include "CsvFormat.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "ExpUtilities.h"
#include "ReplaceFile.h"
#include "Tables.h"

namespace velmar {

namespace {

namespace fs = std::filesystem;

// A table as the text of its rows. Rows of types that are not known may have more cells than those before them.
struct Table {
  std::vector<std::string> columns;
  std::string rows;
  std::vector<std::pair<std::size_t, std::size_t>> ends;  // where a row ends, and how many cells it has

  void Add(const std::vector<std::string>& cells) {
    for (std::size_t i = columns.size(); i < cells.size(); ++i) columns.push_back(ColumnOfPosition(i - 1));
    rows += CsvLine(cells);
    ends.emplace_back(rows.size(), cells.size());
    rows += '\n';
  }

  // With as many cells in each row as there are columns.
  std::string Text() const {
    std::string text = CsvLine(columns) + '\n';
    std::size_t begin = 0;
    for (const auto& [end, cells] : ends) {
      text.append(rows, begin, end - begin).append(columns.size() - cells, ',').append(1, '\n');
      begin = end + 1;
    }
    return text;
  }
};

class CsvWriter {
 public:
  explicit CsvWriter(RecordTypes& types) : types_(types) { tables_["header"].columns = {"record", "attribute", "value"}; }

  void Add(const WrittenInstance& instance) {
    ForEachRow(instance, types_, row_, [&](const TableRow& row) {
      if (instance.IsInHeader()) {
        AddHeader(row);
      } else {
        AddRow(instance, row);
      }
    });
  }

  std::map<std::string, Table>& Tables() { return tables_; }
  // Of all rows, about as many bytes as will be written.
  std::size_t Size() const {
    std::size_t size = 0;
    for (const auto& [name, table] : tables_) size += table.rows.size();
    return size;
  }

 private:
  void AddHeader(const TableRow& row) {
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const bool hasName = row.type != nullptr && i < row.type->attributes.size();
      const std::string attribute = hasName ? row.type->attributes[i].name : ColumnOfPosition(i);
      tables_["header"].Add({row.record->type, attribute, CellOf(row.cells[i])});
    }
  }

  void AddRow(const WrittenInstance& instance, const TableRow& row) {
    Table& table = TableOf(row);
    cells_ = {fmt::format("#{}", instance.number)};
    for (const TableRow::Cell& cell : row.cells) cells_.push_back(CellOf(cell));
    table.Add(cells_);
  }

  Table& TableOf(const TableRow& row) {
    Table*& table = tableOf_[row.record->type];
    if (table != nullptr) return *table;
    table = &tables_[FreeName(VELMAR::ToLowerString(row.record->type), names_)];
    std::set<std::string> taken;
    table->columns = {FreeName("id", taken)};
    if (row.type == nullptr) return *table;
    for (const RecordType::Attribute& attribute : row.type->attributes) {
      table->columns.push_back(FreeName(attribute.name, taken));
    }
    return *table;
  }

  RecordTypes& types_;
  TableRow row_;
  std::vector<std::string> cells_;
  std::map<std::string, Table> tables_;  // by the names of their files
  std::map<std::string, Table*> tableOf_;
  std::set<std::string> names_ = {"header"};
};

// A new folder beside `target`, which is removed with all it holds unless it was moved there.
class PartFolder {
 public:
  explicit PartFolder(const fs::path& target) : target_(target) {
    constexpr int kTries = 100;
    int error = EEXIST;
    for (int number = 0; error == EEXIST && number < kTries; ++number) {
      path_ = target.parent_path() / (target.filename().string() + "." + std::to_string(number) + ".part");
      error = mkdir(path_.c_str(), 0777) == 0 ? 0 : errno;
    }
    if (error != 0) throw std::runtime_error(std::strerror(error));
  }
  ~PartFolder() {
    std::error_code error;
    if (!path_.empty()) fs::remove_all(path_, error);
  }
  PartFolder(const PartFolder&) = delete;
  PartFolder& operator=(const PartFolder&) = delete;

  void Write(const std::string& name, const std::string& text) const {
    std::FILE* file = VelmarFiles::Open((path_ / name).string(), "wb");
    if (file == nullptr) throw std::runtime_error(std::strerror(errno));
    VelmarFiles::WriteAndClose(file, {text});
  }

  void Move() {
    std::error_code error;
    fs::rename(path_, target_, error);
    VelmarFiles::Check(error);
    path_.clear();
  }

 private:
  const fs::path target_;
  fs::path path_;
};

// Without a slash at its end.
fs::path FolderOf(const std::string& name) {
  const fs::path path = fs::path(name).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

}  // namespace

std::string CsvLine(const std::vector<std::string>& cells) {
  std::string line;
  for (const std::string& cell : cells) {
    if (&cell != &cells.front()) line += ',';
    if (cell.find_first_of(",\"\r\n") == std::string::npos) {
      line += cell;
      continue;
    }
    line += '"';
    for (const char c : cell) line += c == '"' ? std::string("\"\"") : std::string(1, c);
    line += '"';
  }
  return line;
}

std::string WhyNoFolder(const std::string& folder) {
  const fs::path path = FolderOf(folder);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) {
    if (!fs::is_empty(path, error) && !error) return "is a folder that is not empty";
  } else if (fs::exists(status)) {
    return "is no folder";
  }
  const fs::path above = path.parent_path();
  if (access(above.empty() ? "." : above.c_str(), W_OK | X_OK) == 0) return "";
  return fmt::format("cannot be written: {}", std::strerror(errno));
}

std::uint64_t WriteCsv(const std::string& part21, RecordTypes& types, const std::string& folder, const Progress& progress) {
  constexpr double kShareOfRows = 0.8;  // of the time that it takes
  ReportedProgress all(progress);
  CsvWriter writer(types);
  ForEachInstanceOf(
      part21, [&writer](const WrittenInstance& instance) { writer.Add(instance); }, all.Part(0, kShareOfRows));
  PartFolder part(FolderOf(folder));
  std::uint64_t size = 0;
  ReportedProgress written(all.Part(kShareOfRows, 1), static_cast<double>(writer.Size()));
  for (auto& [name, table] : writer.Tables()) {
    const std::string text = table.Text();
    table = Table();
    part.Write(name + ".csv", text);
    size += text.size();
    written(static_cast<double>(size));
  }
  part.Move();
  return size;
}

}  // namespace velmar
