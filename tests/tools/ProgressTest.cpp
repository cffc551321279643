// Which commands show how far they are, and where. When and how bars are drawn is ProgressBarTest's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"
#include "Terminal.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const std::string kVelmar = VELMAR_PROGRAM;

struct Command {
  const char* name;
  std::vector<std::string> arguments;  // IN and OUT stand for files
  std::vector<std::string> bars;       // one behind the other
};

void PrintTo(const Command& command, std::ostream* os) { *os << command.name; }

class ProgressOf : public WithTerminal<testing::TestWithParam<Command>> {
 protected:
  std::vector<std::string> Words(bool isQuiet) {
    std::vector<std::string> words = {kVelmar};
    for (const std::string& argument : GetParam().arguments) {
      words.push_back(argument == "IN"                     ? in_
                      : argument.compare(0, 3, "OUT") == 0 ? directory_.Path(std::to_string(++outputs_) + argument)
                                                           : argument);
    }
    if (isQuiet) words.emplace_back("-q");
    return words;
  }

  TemporaryDirectory directory_;
  std::string in_ =
      WriteFile(directory_.Path("in.stp"), FileWith("#1=DIRECTION('',(1.));\n#2=DIRECTION('',(1.));\n#3=DIRECTION('',(1.));\n"));
  int outputs_ = 0;
};

// The clock makes any time a long one.
TEST_P(ProgressOf, IsShownOnATerminalOnlyAndNotWithQuiet) {
  TerminalSetting terminal;
  terminal.preloaded = VELMAR_FAST_CLOCK;
  const auto shown = OnATerminal(Words(false), terminal);
  std::size_t at = 0;
  for (const std::string& bar : GetParam().bars) {
    at = shown.find('\r' + bar + " [", at);
    ASSERT_NE(at, std::string::npos) << bar << " in " << shown;
  }
  EXPECT_THAT(ShownAtTheEnd(shown), Not(HasSubstr("[")));
  EXPECT_THAT(OnATerminal(Words(true), terminal), Not(HasSubstr("\r")));

  Setting setting;
  setting.before = [] {
    setenv("TERM", "xterm", 1);
    setenv("LD_PRELOAD", VELMAR_FAST_CLOCK, 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
  };
  EXPECT_THAT(RunProgram(Words(false), setting).err, Not(HasSubstr("\r")));
  terminal.kind = "dumb";
  EXPECT_THAT(OnATerminal(Words(false), terminal), Not(HasSubstr("\r")));
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, ProgressOf,
                         testing::Values(Command{"anonymise", {"anonymise", "IN", "-o", "OUT.stp"}, {"reading"}},
                                         Command{"check", {"check", "IN", "IN"}, {"checking", "checking"}},
                                         Command{"convert", {"convert", "IN", "-o", "OUT.stp"}, {"reading", "writing"}},
                                         Command{"convert_csv", {"convert", "IN", "-o", "OUT.csv"}, {"reading", "writing"}},
                                         Command{"convert_json", {"convert", "IN", "-o", "OUT.json"}, {"reading", "writing"}},
                                         Command{"convert_sqlite", {"convert", "IN", "-o", "OUT.sqlite"}, {"reading", "writing"}},
                                         Command{"diff", {"diff", "IN", "IN"}, {"comparing"}},
                                         Command{"extract", {"extract", "IN", "1", "-o", "OUT.stp"}, {"reading"}},
                                         Command{"info", {"info", "IN", "IN"}, {"reading", "reading"}},
                                         Command{"list", {"list", "IN", "direction"}, {"reading"}},
                                         Command{"merge", {"merge", "IN", "IN", "-o", "OUT.stp"}, {"reading"}},
                                         Command{"refs", {"refs", "IN", "1"}, {"reading"}},
                                         Command{"report", {"report", "IN", "-o", "OUT.html"}, {"reading"}},
                                         Command{"show", {"show", "IN", "1"}, {"reading", "reading"}},
                                         Command{"tree", {"tree", "IN"}, {"reading"}}),
                         [](const auto& info) { return std::string(info.param.name); });

using ProgressOnATerminal = WithTerminal<testing::Test>;

TEST_F(ProgressOnATerminal, OfWhatIsQuicklyDoneIsNotShown) {
  TemporaryDirectory directory;
  const auto shown = OnATerminal({kVelmar, "info", WriteFile(directory.Path("in.stp"), FileWith(kPoint))});
  EXPECT_EQ(shown, "");
}

TEST_F(ProgressOnATerminal, IsAsWideAsTheTerminalAllows) {
  TemporaryDirectory directory;
  TerminalSetting terminal;
  terminal.preloaded = VELMAR_FAST_CLOCK;
  terminal.columns = 30;
  const auto shown = OnATerminal({kVelmar, "info", WriteFile(directory.Path("in.stp"), FileWith(kPoint))}, terminal);
  EXPECT_THAT(shown, testing::ContainsRegex("\rreading \\[[= ]{13}\\] "));
}

TEST_F(ProgressOnATerminal, LeavesTheLineToMessages) {
  TemporaryDirectory directory;
  TerminalSetting terminal;
  terminal.preloaded = VELMAR_FAST_CLOCK;
  terminal.noColour = "1";
  const std::string missing = directory.Path("none.stp");
  const auto shown = OnATerminal({kVelmar, "info", WriteFile(directory.Path("in.stp"), FileWith(kPoint)), missing}, terminal);
  EXPECT_THAT(shown, HasSubstr("reading ["));
  EXPECT_THAT(shown, HasSubstr(" \rvelmar: error: " + missing + " does not exist\n"));
}

}  // namespace
