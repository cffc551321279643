// Commands on files of the repository, and all that they print: golden/NAME.txt has what is expected.
#include <gtest/gtest.h>

#include <fstream>
#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace {

struct Golden {
  const char* name;
  std::vector<std::string> arguments;
};

void PrintTo(const Golden& golden, std::ostream* os) { *os << golden.name; }

// Without what differs from run to run.
std::string Lasting(std::string text) {
  text = std::regex_replace(text, std::regex("read in [0-9.]+ ms, [0-9]+ MB/s, [0-9]+ MB"), "read in T ms, R MB/s, M MB");
  return std::regex_replace(text, std::regex("(\"(seconds|megabytes_per_second|peak_memory)\": )[-+.0-9e]+"), "$1N");
}

class GoldenOutput : public testing::TestWithParam<Golden> {};

TEST_P(GoldenOutput, IsAsBefore) {
  std::vector<std::string> command = {VELMAR_PROGRAM};
  command.insert(command.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  Setting setting;
  setting.directory = SOURCE_FOLDER;
  const Outcome outcome = RunProgram(command, setting);
  std::string line = "$ velmar";
  for (const std::string& argument : GetParam().arguments) line += " " + argument;
  const std::string text = line + "\n" + Lasting(outcome.out) + "-- messages\n" + outcome.err + "-- exit status " +
                           std::to_string(outcome.status) + "\n";

  const std::string golden = std::string(SOURCE_FOLDER "/tests/tools/golden/") + GetParam().name + ".txt";
  const std::string expected = ReadFile(golden);
  if (text == expected) return;
  const std::string made = testing::TempDir() + "velmar-golden-" + GetParam().name + ".txt";
  std::ofstream(made) << text;
  EXPECT_EQ(text, expected) << "If this is as it should be: cp " << made << " " << golden;
}

const char kSample[] = "examples/bracket.stp";
const char kValues[] = "tests/tools/data/values.stp";

INSTANTIATE_TEST_SUITE_P(All, GoldenOutput,
                         testing::Values(Golden{"info", {"info", kSample}},
                                         Golden{"info_of_several", {"info", kValues, "none.stp", kSample, "-q"}},
                                         Golden{"info_json", {"info", "--json", kValues}},
                                         Golden{"info_json_missing", {"info", "--json", "none.stp"}}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
