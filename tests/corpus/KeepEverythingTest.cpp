// Real exchange files that are read with everything kept, by the library and by the program: what is written has the same tokens.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "../c/CapturedLog.h"
#include "../c/FileTokens.h"
#include "../tools/RunProgram.h"
#include "BundledSchemas.h"
#include "CorpusFiles.h"
#include "ExpFile.h"

namespace {

using namespace VELMAR;
using namespace VELMAR::TestData;

const bool kLoaded = (LoadBundledSchemas(), true);

// What is not written as it was read, by file: the instances, and why.
const std::map<std::string, std::map<std::string, std::string>> kNotTheSame = {
    {"bad/bad_X_escape.stp",
     {{"#8997", "parameters are missing, and written as $"},
      {"#8998", "parameters are missing, and written as $"},
      {"#8999", "parameters are missing, and written as $"}}},
};

// Files that are given up.
const std::map<std::string, std::string> kGivenUp = {
    {"syntax/forward_refs_sparse_ids.stp", "there is a number beyond those that a store can have"},
};

// Files with syntax errors, which spoil instances.
const std::set<std::string> kWithSyntaxErrors = {
    "bad/D_exponent.stp",
    "bad/bad_binary.stp",
    "bad/cross_section_refs.stp",
    "bad/endsec_no_semicolon.stp",
    "bad/no_end_marker.stp",
    "bad/no_leading_digit.stp",
    "bad/scope_export.stp",
    "bad/unterminated_string.stp",
    "syntax/ed2_multi_data_sections.stp",
    "syntax/ed3_anchor_reference.stp",
    "syntax/ed3_signature.stp",
    "syntax/empty_data.stp",
};

// The records behind those that every file has.
std::vector<std::string> FurtherRecords(const FileTokens& file) {
  std::vector<std::string> records;
  for (const Tokens& record : file.header) {
    const std::string& name = record.empty() ? std::string() : record.front().text;
    if (name == "FILE_DESCRIPTION" || name == "FILE_NAME" || name == "FILE_SCHEMA" || name == "ENDSEC") continue;
    records.push_back(TextOfTokens(record));
  }
  return records;
}

class KeptFile : public CorpusFile {
 protected:
  // Compares what was written with what was read.
  void ExpectSameTokens(const std::string& written) {
    const FileTokens before = TokensOf(bytes_);
    const FileTokens after = TokensOf(written);
    EXPECT_EQ(FurtherRecords(after), FurtherRecords(before));
    EXPECT_FALSE(before.instances.empty());
    EXPECT_EQ(after.instances.size(), before.instances.size());
    const auto known = kNotTheSame.find(GetParam());
    std::map<std::string, std::string> expected;
    if (known != kNotTheSame.end()) expected = known->second;
    std::size_t shown = 0;
    for (const auto& [number, tokens] : before.instances) {
      const auto found = after.instances.find(number);
      const bool isSame = found != after.instances.end() && found->second == tokens;
      if (isSame == (expected.count(number) == 0)) continue;
      ADD_FAILURE() << (isSame ? "is the same: " : "is not the same: ") << number << '\n'
                    << TextOfTokens(tokens) << '\n'
                    << (found == after.instances.end() ? "(gone)" : TextOfTokens(found->second));
      if (++shown == 5) break;
    }
  }
};

TEST_P(KeptFile, IsWrittenWithTheTokensThatItHas) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  std::istringstream in(bytes_);
  file.Read(in);
  if (const auto why = kGivenUp.find(GetParam()); why != kGivenUp.end()) {
    EXPECT_THAT(log.text, testing::HasSubstr("Error while reading from filestream")) << why->second;
    EXPECT_EQ(file.GetMaxEntityNumber(), 0);
    return;
  }
  const bool hasErrors = std::any_of(log.lines.begin(), log.lines.end(), [](const std::string& line) {
    const bool isWarning = line.find("is not kept") != std::string::npos;
    return line.compare(0, 7, "-- line") == 0 && !isWarning;
  });
  if (hasErrors) GTEST_SKIP() << "has syntax errors:\n" << log.text;
  std::ostringstream out;
  file.Write(out);
  ExpectSameTokens(out.str());
}

TEST_P(KeptFile, IsConvertedToTheTokensThatItHas) {
  const TemporaryDirectory directory;
  const std::string out = directory.Path("out.stp");
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", (Corpus() / GetParam()).string(), "-o", out});
  ASSERT_THAT(outcome.status, testing::AnyOf(0, 1)) << outcome.err;
  if (const auto why = kGivenUp.find(GetParam()); why != kGivenUp.end()) {
    EXPECT_THAT(outcome.err, testing::HasSubstr(" is not written: nothing could be read [V027]\n")) << why->second;
    EXPECT_FALSE(std::filesystem::exists(out));
    return;
  }
  const bool hasErrors = outcome.err.find(" [V001]\n") != std::string::npos;
  EXPECT_EQ(hasErrors, kWithSyntaxErrors.count(GetParam()) != 0) << outcome.err;
  if (!hasErrors) ExpectSameTokens(ReadFile(out));
}

INSTANTIATE_TEST_SUITE_P(Corpus, KeptFile, testing::ValuesIn(FilesOf({""})), NameOf);

}  // namespace
