#include "Conversion.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <new>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <system_error>

#include "CsvFormat.h"
#include "ExpUtilities.h"
#include "Input.h"
#include "JsonFormat.h"
#include "RecordTypes.h"
#include "ReplaceFile.h"
#include "SqliteFormat.h"
#include "Wording.h"

namespace velmar {

namespace fs = std::filesystem;

namespace {

// Whether what is found means that something of the file is not in what is written.
bool IsLoss(const Finding& finding) {
  switch (finding.code) {
    case Code::kUnsupportedSchema:
    case Code::kNoSchema:
    case Code::kUnknownType:
    case Code::kUnknownHeaderRecord:
    case Code::kTooManyParameters:
    case Code::kTooFewParameters:
    case Code::kNumberZero:
    case Code::kFallbackLibrary:
    case Code::kLongString:
      return false;
    default:
      return true;
  }
}

// Hands on to a buffer what is written, and reports how much that is.
class CountingBuffer : public std::streambuf {
 public:
  CountingBuffer(std::streambuf& target, const Progress& progress, std::uint64_t expected)
      : target_(target), written_(progress, static_cast<double>(expected)) {}

 private:
  int_type overflow(int_type character) override {
    if (traits_type::eq_int_type(character, traits_type::eof())) return traits_type::not_eof(character);
    return target_.sputc(traits_type::to_char_type(character));
  }
  std::streamsize xsputn(const char* text, std::streamsize length) override {
    count_ += length;
    written_(static_cast<double>(count_));
    return target_.sputn(text, length);
  }

  std::streambuf& target_;
  ReportedProgress written_;
  std::streamsize count_ = 0;
};

bool HasLosses(const Findings& findings) {
  return findings.NotKept() > 0 || std::any_of(findings.WithPlace().begin(), findings.WithPlace().end(), IsLoss) ||
         std::any_of(findings.WithoutPlace().begin(), findings.WithoutPlace().end(), IsLoss);
}

std::uint64_t SizeOf(const VelmarFiles::TextBuffer& buffer) {
  std::uint64_t size = 0;
  for (const std::string& block : buffer.Blocks()) size += block.size();
  return size;
}

void WritePart21(Population& file, VelmarFiles::TextBuffer& buffer, const Progress& progress, std::uint64_t expectedSize) {
  CountingBuffer counter(buffer, progress, expectedSize);
  std::ostream stream(&counter);
  stream.exceptions(std::ios::badbit | std::ios::failbit);
  file.Write(stream);
}

// The Part 21 text of a population, which is empty then.
std::string TakeText(Population& file, const Progress& progress, std::uint64_t expectedSize) {
  std::string part21;
  {
    VelmarFiles::TextBuffer buffer;
    WritePart21(file, buffer, progress, expectedSize);
    file.DeleteEntities();
    VELMAR::ReleaseUnusedMemory();
    const std::uint64_t size = SizeOf(buffer);
    if (size > kLongestFile) {
      throw std::runtime_error(fmt::format("the file takes more than {} bytes in Part 21", Grouped(kLongestFile)));
    }
    part21.reserve(size);
    for (const std::string& block : buffer.Blocks()) part21 += block;
  }
  return part21;
}

}  // namespace

std::string WhyUnwritable(const std::string& path, FileFormat format) {
  if (format == FileFormat::Csv) return WhyNoFolder(path);
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
  if (in.GetPopulation().Count() == 0) return fmt::format("{} is not written: nothing could be read", out);
  std::error_code error;
  if (HasLosses(in.GetFindings()) && fs::equivalent(in.Path(), out, error)) {
    return "the file is left as it is: not all of it could be kept";
  }
  return "";
}

std::uint64_t WriteAndReport(Population& file, FileFormat format, const std::string& out, Findings& findings,
                             const Progress& progress, std::uint64_t expectedSize) {
  constexpr double kShareOfText = 0.3;  // of the time for a format that is made of Part 21
  ReportedProgress all(progress);
  try {
    VelmarFiles::TextBuffer buffer;
    if (format == FileFormat::Part21) {
      WritePart21(file, buffer, all.Part(0, 1), expectedSize);
    } else {
      const std::string schema = file.IsSchemaSupported() ? file.GetEnforcedFactoryName() : "";
      const std::string part21 = TakeText(file, all.Part(0, kShareOfText), expectedSize);
      const Progress ofFormat = all.Part(kShareOfText, 1);
      RecordTypes types(schema);
      if (format == FileFormat::Csv) return WriteCsv(part21, types, out, ofFormat);
      if (format == FileFormat::Sqlite) return WriteSqlite(part21, types, out, ofFormat);
      std::ostream stream(&buffer);
      stream.exceptions(std::ios::badbit | std::ios::failbit);
      WriteJson(part21, types, stream, ofFormat);
    }
    VelmarFiles::ReplaceFile(out, buffer.Blocks());
    return SizeOf(buffer);
  } catch (const std::string& error) {
    findings.Add(Code::kNotWritten, error);
  } catch (const std::bad_alloc&) {
    findings.Add(Code::kNotWritten, "not enough memory");
  } catch (const std::exception& error) {
    findings.Add(Code::kNotWritten, error.what());
  }
  return 0;
}

}  // namespace velmar
