#include "FileFormats.h"

#include <filesystem>

#include "ExpUtilities.h"

namespace velmar {

namespace {

constexpr FileFormat kFormats[] = {FileFormat::Part21, FileFormat::Json, FileFormat::Csv, FileFormat::Sqlite};

struct Ending {
  const char* text;
  FileFormat format;
};

constexpr Ending kEndings[] = {
    {".json", FileFormat::Json},      {".csv", FileFormat::Csv},   {".sqlite", FileFormat::Sqlite},
    {".sqlite3", FileFormat::Sqlite}, {".db", FileFormat::Sqlite},
};

}  // namespace

const char* Name(FileFormat format) {
  switch (format) {
    case FileFormat::Json:
      return "json";
    case FileFormat::Csv:
      return "csv";
    case FileFormat::Sqlite:
      return "sqlite";
    default:
      return "part21";
  }
}

std::optional<FileFormat> FormatNamed(const std::string& name) {
  for (const FileFormat format : kFormats) {
    if (VELMAR::ToLowerString(name) == Name(format)) return format;
  }
  return std::nullopt;
}

FileFormat FormatOf(const std::string& path) {
  std::filesystem::path name = path;
  if (!name.has_filename()) name = name.parent_path();  // a folder with a slash behind it
  const std::string ending = VELMAR::ToLowerString(name.extension().string());
  for (const Ending& row : kEndings) {
    if (ending == row.text) return row.format;
  }
  return FileFormat::Part21;
}

}  // namespace velmar
