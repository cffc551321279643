// The files of tests/data/check: for each finding of velmar check one that has it, with all that is printed, and one without it.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "Transcript.h"

namespace {

const std::string kFolder = SOURCE_FOLDER "/tests/data/check";
const std::string kNearMiss = "_near_miss.stp";

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// "V001" of "V001_syntax_error.stp".
std::string CodeOf(const std::string& file) { return file.substr(0, 4); }

// The names of the files of STEP data.
std::vector<std::string> Files(bool nearMisses) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    const std::string name = entry.path().filename().string();
    if (EndsWith(name, ".stp") && EndsWith(name, kNearMiss) == nearMisses) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> CommandFor(const std::string& file) {
  std::vector<std::string> command = {"check", file};
  const std::string schema = CodeOf(file) + ".exp";
  if (std::filesystem::exists(kFolder + "/" + schema)) command.insert(command.end(), {"--express", schema});
  return command;
}

// As from a build with all schemas.
std::string WithAllSchemas(std::string text) {
  const std::string built = std::string("supported: ") + VELMAR_SUPPORTED_SCHEMAS + " [";
  const std::size_t at = text.find(built);
  if (at != std::string::npos) text.replace(at, built.size(), std::string("supported: ") + VELMAR_ALL_SCHEMAS + " [");
  return text;
}

// The codes that docs/findings.md explains.
std::set<std::string> AllCodes() {
  std::set<std::string> codes;
  std::istringstream text(ReadFile(SOURCE_FOLDER "/docs/findings.md"));
  for (std::string line; std::getline(text, line);) {
    if (line.compare(0, 4, "## V") == 0) codes.insert(line.substr(3, 4));
  }
  return codes;
}

// Those that no file gives here, and why.
const std::map<std::string, std::string>& Without() {
  static const std::map<std::string, std::string> codes = {
      {"V004", "needs more memory than there is: check keeps no instances, and finds V014 where numbers are too high"},
      {"V009", "no fault: convert and info say that they keep the record"},
      {"V021", "of info and convert, which read a population"},
      {"V022", "depends on who else writes the file"},
      {"V023", "depends on the libraries that are installed"},
      {"V024", "of convert, about what it writes"},
      {"V027", "of convert, about what it writes"},
      {"V046", "of tree"},
      {"V047", "of tree"},
      {"V048", "of tree"},
      {"V050", "no fault: convert and info say that they do not keep the scope"},
  };
  return codes;
}

class FileWithAFinding : public testing::TestWithParam<std::string> {};

TEST_P(FileWithAFinding, IsReportedAsExpected) {
  const std::string& file = GetParam();
  const std::string text = WithAllSchemas(TranscriptOf(CommandFor(file), kFolder));
  EXPECT_NE(text.find(" [" + CodeOf(file) + "]"), std::string::npos) << text;
  EXPECT_NE(text.find("-- exit status 1\n"), std::string::npos) << text;
  ExpectGolden(text, kFolder + "/" + std::filesystem::path(file).stem().string() + ".txt");
}

class FileWithoutAFinding : public testing::TestWithParam<std::string> {};

TEST_P(FileWithoutAFinding, IsFoundRight) {
  const Outcome outcome = [] {
    std::vector<std::string> command = CommandFor(GetParam());
    command.insert(command.begin(), VELMAR_PROGRAM);
    Setting setting;
    setting.directory = kFolder;
    return RunProgram(command, setting);
  }();
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, GetParam() + ": nothing is wrong\n");
  EXPECT_EQ(outcome.status, 0);
}

std::string NameOfTest(const testing::TestParamInfo<std::string>& info) {
  return std::filesystem::path(info.param).stem().string();
}

INSTANTIATE_TEST_SUITE_P(All, FileWithAFinding, testing::ValuesIn(Files(false)), NameOfTest);
INSTANTIATE_TEST_SUITE_P(All, FileWithoutAFinding, testing::ValuesIn(Files(true)), NameOfTest);

TEST(FindingFiles, AreThereForEachCodeWithANearMiss) {
  std::set<std::string> with;
  for (const std::string& file : Files(false)) with.insert(CodeOf(file));
  std::set<std::string> nearMisses;
  for (const std::string& file : Files(true)) nearMisses.insert(CodeOf(file));
  std::set<std::string> expected = AllCodes();
  ASSERT_FALSE(expected.empty());
  for (const auto& [code, reason] : Without()) EXPECT_EQ(expected.erase(code), 1u) << code << ": " << reason;
  EXPECT_EQ(with, expected);
  EXPECT_EQ(nearMisses, expected);
}

TEST(FindingFiles, HaveAnExpectedOutputEach) {
  std::set<std::string> outputs;
  for (const auto& entry : std::filesystem::directory_iterator(kFolder)) {
    if (entry.path().extension() == ".txt") outputs.insert(entry.path().stem().string() + ".stp");
  }
  const std::vector<std::string> files = Files(false);
  EXPECT_EQ(outputs, std::set<std::string>(files.begin(), files.end()));
}

}  // namespace
