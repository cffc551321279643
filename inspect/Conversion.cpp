#include "Conversion.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <list>
#include <new>
#include <ostream>
#include <system_error>

#include "ExpUtilities.h"
#include "ReplaceFile.h"
#include "Wording.h"

namespace velmar {

namespace fs = std::filesystem;

std::string WhyUnwritable(const std::string& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) return "is a directory";
  if (access(path.c_str(), W_OK) == 0) return "";
  if (errno == ENOENT) {
    const fs::path folder = fs::path(path).parent_path();
    if (access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0) return "";
  }
  return fmt::format("cannot be written: {}", std::strerror(errno));
}

std::string WhyNotWritten(Reading& in, const std::string& out) {
  if (in.GetFindings().IsEmpty()) return "";
  const Population& file = in.GetPopulation();
  std::error_code error;
  if (!file.IsSchemaSupported()) return fmt::format("{} is not written: the schema is not supported", out);
  if (file.Count() == 0) return fmt::format("{} is not written: nothing could be read", out);
  if (fs::equivalent(in.Path(), out, error)) return "the file is left as it is: not all of it could be kept";
  return "";
}

void MarkMissingValues(Population& file, Findings& findings) {
  std::list<VELMAR::ExpEntity*> header;
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"})
    file.GetEntities(header, type, false);
  int marked = 0;
  for (VELMAR::ExpEntity* record : header) marked += VELMAR::MarkUnsetValues(*record);
  for (int number = file.GetMaxEntityNumber(); number >= 0; --number) {
    if (VELMAR::ExpEntity* entity = file.GetEntity(number)) marked += VELMAR::MarkUnsetValues(*entity);
  }
  if (marked == 0) return;
  findings.Add(Code::kMissingValues,
               fmt::format("{} written as $", Counted(static_cast<std::uint64_t>(marked), "missing value")));
}

std::uint64_t WriteAndReport(Population& file, const std::string& out, Findings& findings) {
  std::uint64_t size = 0;
  try {
    VelmarFiles::TextBuffer buffer;
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit | std::ios::failbit);
    file.Write(stream);
    for (const std::string& block : buffer.Blocks()) size += block.size();
    VelmarFiles::ReplaceFile(out, buffer.Blocks());
  } catch (const std::string& error) {
    findings.Add(Code::kNotWritten, error);
  } catch (const std::bad_alloc&) {
    findings.Add(Code::kNotWritten, "not enough memory");
  } catch (const std::exception& error) {
    findings.Add(Code::kNotWritten, error.what());
  }
  return size;
}

}  // namespace velmar
