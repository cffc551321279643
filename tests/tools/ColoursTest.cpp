// What has colours on a terminal, and that nothing else differs there.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <regex>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "Terminal.h"

namespace {

using testing::HasSubstr;

const std::string kTrolley = SOURCE_FOLDER "/examples/trolley.stp";
const std::string kChanged = SOURCE_FOLDER "/tests/tools/data/trolley_changed.stp";

struct Command {
  const char* name;
  std::vector<std::string> arguments;
  std::vector<std::string> coloured;  // some of what is printed
};

void PrintTo(const Command& command, std::ostream* os) { *os << command.name; }

class Colours : public WithTerminal<testing::TestWithParam<Command>> {
 protected:
  std::vector<std::string> Words() const {
    std::vector<std::string> words = {VELMAR_PROGRAM};
    words.insert(words.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    return words;
  }
};

TEST_P(Colours, AreOnATerminalAndNothingElseDiffers) {
  TerminalSetting terminal;
  terminal.hasStandardOutput = true;
  const auto shown = OnATerminal(Words(), terminal);
  for (const std::string& text : GetParam().coloured) EXPECT_THAT(shown, HasSubstr(text));
  const std::string plain = RunProgram(Words()).out;
  EXPECT_THAT(plain, testing::Not(HasSubstr("\x1B")));
  EXPECT_EQ(std::regex_replace(shown, std::regex("\x1B\\[[0-9;]*m"), ""), plain);

  terminal.noColour = "1";
  EXPECT_EQ(OnATerminal(Words(), terminal), plain);
  terminal.noColour = "";
  terminal.kind = "dumb";
  EXPECT_EQ(OnATerminal(Words(), terminal), plain);
}

INSTANTIATE_TEST_SUITE_P(
    OfCommands, Colours,
    testing::Values(Command{"diff",
                            {"diff", kTrolley, kChanged},
                            {kTrolley + ":46:1: \x1B[33mchanged #50 PRODUCT\x1B[0m (#950 at " + kChanged + ":46:1)\n",
                             "  name: \x1B[31m'Wheel'\x1B[0m -> \x1B[32m'Wheel, rubber'\x1B[0m\n",
                             kTrolley + ":83:1: \x1B[31mremoved #114 NEXT_ASSEMBLY_USAGE_OCCURRENCE\x1B[0m\n",
                             kChanged + ":70:1: \x1B[32madded #800 DESCRIPTIVE_REPRESENTATION_ITEM\x1B[0m\n"}},
                    Command{"diff_json", {"diff", kTrolley, kChanged, "--json"}, {}},
                    Command{"tree",
                            {"tree", kTrolley},
                            {"Trolley [T-1, version A]\x1B[2m #22, shape #24 SHAPE_REPRESENTATION\x1B[0m\n",
                             "│   ├── \x1B[2m2 x \x1B[0mTube [T-6, version C]\x1B[2m #72, shape #74 SHAPE_REPRESENTATION\x1B[0m\n",
                             "    └── \x1B[2m0.005 KILOGRAM \x1B[0mGrease [G-1]\x1B[2m #92\x1B[0m\n"}},
                    Command{"tree_all", {"tree", kTrolley, "--all"}, {"\x1B[2m #62, shape #64 SHAPE_REPRESENTATION (#"}},
                    Command{"tree_depth",
                            {"tree", kTrolley, "--depth", "1"},
                            {"\x1B[2m #32, shape #34 SHAPE_REPRESENTATION (3 components not shown)\x1B[0m\n"}},
                    Command{"tree_json", {"tree", kTrolley, "--json"}, {}}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
