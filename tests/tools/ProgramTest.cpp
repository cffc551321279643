// The program as a whole: its options, and what it says of files that it cannot work on.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"
#include "Terminal.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

const std::string kVelmar = VELMAR_PROGRAM;

TEST(VelmarProgram, VersionIsThatOfTheLibrary) {
  const Outcome outcome = RunProgram({kVelmar, "--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "velmar " VELMAR_VERSION "\n");
  EXPECT_EQ(outcome.err, "");
}

class VelmarHelp : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(VelmarHelp, ShowsUsageAnExampleAndTheExitStatus) {
  std::vector<std::string> command = {kVelmar};
  command.insert(command.end(), GetParam().begin(), GetParam().end());
  const Outcome outcome = RunProgram(command);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("Usage: "));
  EXPECT_THAT(outcome.out, HasSubstr("Example: velmar "));
  EXPECT_THAT(outcome.out, HasSubstr("Exit status: 0 done; 1 the file has errors; 2 wrong usage, or"));
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, VelmarHelp,
                         testing::Values(std::vector<std::string>{"--help"},
                                         std::vector<std::string>{"info", "--help"},
                                         std::vector<std::string>{"list", "--help"},
                                         std::vector<std::string>{"show", "--help"},
                                         std::vector<std::string>{"refs", "--help"},
                                         std::vector<std::string>{"schemas", "--help"},
                                         std::vector<std::string>{"convert", "--help"}));

class VelmarWrongUsage : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(VelmarWrongUsage, ExitsWith2AndAMessage) {
  std::vector<std::string> command = {kVelmar};
  command.insert(command.end(), GetParam().begin(), GetParam().end());
  const Outcome outcome = RunProgram(command);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_NE(outcome.err, "");
}

INSTANTIATE_TEST_SUITE_P(All, VelmarWrongUsage,
                         testing::Values(std::vector<std::string>{}, std::vector<std::string>{"inform"},
                                         std::vector<std::string>{"info"},
                                         std::vector<std::string>{"info", "a", "b"},
                                         std::vector<std::string>{"info", "--quick", "a"},
                                         std::vector<std::string>{"list", "a"},
                                         std::vector<std::string>{"list", "a", "b", "--csv", "--json"},
                                         std::vector<std::string>{"show", "a"},
                                         std::vector<std::string>{"refs", "a"},
                                         std::vector<std::string>{"refs", "a", "1", "--depth", "-1"},
                                         std::vector<std::string>{"refs", "a", "1", "--depth", "x"},
                                         std::vector<std::string>{"refs", "a", "1", "2"},
                                         std::vector<std::string>{"schemas", "--schema", "AP21"},
                                         std::vector<std::string>{"schemas", "a", "b"},
                                         std::vector<std::string>{"convert", "a"},
                                         std::vector<std::string>{"convert", "-o", "b"}));

class VelmarUnreadableInput : public testing::TestWithParam<std::string> {
 protected:
  Outcome Run(const std::string& in) {
    if (GetParam() == "info") return RunProgram({kVelmar, "info", in});
    if (GetParam() != "convert") return RunProgram({kVelmar, GetParam(), in, "1"});
    return RunProgram({kVelmar, "convert", in, "-o", directory_.Path("out.stp")});
  }
  TemporaryDirectory directory_;
};

TEST_P(VelmarUnreadableInput, ExitsWith2AndSaysWhy) {
  const std::string missing = directory_.Path("missing.stp");
  Outcome outcome = Run(missing);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: " + missing + " does not exist\n");
  EXPECT_EQ(outcome.out, "");

  outcome = Run(directory_.Path(""));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: " + directory_.Path("") + " is a directory\n");

  const std::string empty = WriteFile(directory_.Path("empty.stp"), "");
  outcome = Run(empty);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: " + empty + " is empty\n");
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.stp")));
}

TEST_P(VelmarUnreadableInput, SaysThatPermissionIsDenied) {
  namespace fs = std::filesystem;
  const std::string in = WriteFile(directory_.Path("secret.stp"), FileWith(kPoint));
  fs::permissions(in, fs::perms::none);
  fs::permissions(directory_.Path(""), fs::perms::all);
  Setting setting;
  if (getuid() == 0) {
    setting.before = [] {
      if (setuid(65534) != 0) _exit(126);
    };
    if (RunProgram({kVelmar, "--version"}, setting).status != 0) {
      GTEST_SKIP() << "an ordinary user may not enter the build folder";
    }
  }
  std::vector<std::string> command = {kVelmar, GetParam(), in};
  if (GetParam() == "convert") command.insert(command.end(), {"-o", directory_.Path("out.stp")});
  if (GetParam() != "convert" && GetParam() != "info") command.emplace_back("1");
  const Outcome outcome = RunProgram(command, setting);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: " + in + " cannot be read: Permission denied\n");
}

INSTANTIATE_TEST_SUITE_P(EveryCommand, VelmarUnreadableInput, testing::Values("info", "list", "show", "refs", "convert"));

TEST(VelmarProgram, StandardOutputThatCannotBeWrittenIsAnError) {
  TemporaryDirectory directory;
  Setting setting;
  setting.standardOutput = "/dev/full";
  const Outcome outcome =
      RunProgram({kVelmar, "info", WriteFile(directory.Path("in.stp"), FileWith(kPoint))}, setting);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: standard output cannot be written: No space left on device\n");
}

using MessagesOnATerminal = WithTerminal<testing::Test>;

TEST_F(MessagesOnATerminal, HaveColours) {
  TemporaryDirectory directory;
  const std::string in =
      WriteFile(directory.Path("in.stp"), FileWith("#1=DIRECTION('');\n#2=DIRECTION('',(1.);\n"));
  const std::vector<std::string> command = {kVelmar, "info", in};
  const auto coloured = OnATerminal(command);
  EXPECT_THAT(coloured, HasSubstr(":8:1: \x1B[1;33mwarning\x1B[0m: 1 record of DIRECTION with fewer "));
  EXPECT_THAT(coloured, HasSubstr(":9:21: \x1B[1;31merror\x1B[0m: \")\" expected [V001]"));
  EXPECT_THAT(coloured, HasSubstr("                    \x1B[1;32m^\x1B[0m"));
  EXPECT_THAT(OnATerminal({kVelmar, "info", in + "x"}), HasSubstr("velmar: \x1B[1;31merror\x1B[0m: "));
  TerminalSetting noColour;
  noColour.noColour = "1";
  TerminalSetting dumb;
  dumb.kind = "dumb";
  for (const std::string& plain : {OnATerminal(command, noColour), OnATerminal(command, dumb), RunProgram(command).err}) {
    EXPECT_THAT(plain, HasSubstr("error: "));
    EXPECT_THAT(plain, testing::Not(HasSubstr("\x1B")));
  }
}

// Messages are lost then, and nothing else: the exit status says what there is to say.
// As by `velmar info FILE | head`; where the signal is ignored, too, as some programs have it for those they start.
TEST(VelmarProgram, AClosedPipeEndsItAsTheSignalDoes) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith(kPoint));
  for (const bool isIgnored : {false, true}) {
    Setting setting;
    setting.before = [isIgnored] {
      int ends[2];
      if (pipe(ends) != 0) _exit(126);
      close(ends[0]);
      dup2(ends[1], 1);
      std::signal(SIGPIPE, isIgnored ? SIG_IGN : SIG_DFL);
    };
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{{"info", in}, {"--help"}}) {
      std::vector<std::string> command = {kVelmar};
      command.insert(command.end(), arguments.begin(), arguments.end());
      const Outcome outcome = RunProgram(command, setting);
      EXPECT_EQ(outcome.status, 1000 + SIGPIPE);
      EXPECT_EQ(outcome.err, "");
    }
  }
}

TEST(VelmarProgram, StandardErrorThatCannotBeWrittenChangesNoExitStatus) {
  TemporaryDirectory directory;
  const std::string damaged = WriteFile(directory.Path("in.stp"), FileWith("#1=CARTESIAN_POINT('',(1.,2.);\n"));
  Setting full;
  full.before = [] { dup2(open("/dev/full", O_WRONLY), 2); };
  Setting closed;
  closed.before = [] { close(2); };
  for (const Setting& setting : {full, closed}) {
    EXPECT_EQ(RunProgram({kVelmar, "info", damaged}, setting).status, 1);
    EXPECT_EQ(RunProgram({kVelmar, "info", directory.Path("missing.stp")}, setting).status, 2);
    EXPECT_EQ(RunProgram({kVelmar, "info", damaged, "--express", damaged}, setting).status, 2);
  }
}

// What a file may hold, and must not harm.
TEST(VelmarProgram, SurvivesAMillionParentheses) {
  TemporaryDirectory directory;
  const std::string in =
      WriteFile(directory.Path("in.stp"),
                FileWith("#1=CARTESIAN_POINT('p'," + std::string(1000000, '(') + ");\n" + kPoint));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr(in + ":8:"));
}

TEST(VelmarProgram, SurvivesAMillionScopes) {
  TemporaryDirectory directory;
  std::string scopes;
  for (int i = 0; i < 1000000; ++i) scopes += "#7=&SCOPE ";
  const Outcome outcome =
      RunProgram({kVelmar, "info", WriteFile(directory.Path("in.stp"), FileWith(scopes + kPoint))});
  EXPECT_EQ(outcome.status, 1);
}

TEST(VelmarProgram, TokensOfAnyLengthAreRead) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith("#1=CARTESIAN_POINT('" + std::string(10000000, 'x') + "',(1.,2.));\n"));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr(" 1  CARTESIAN_POINT\n"));
}

TEST(VelmarProgram, MessagesRepeatNoMoreThanTheBeginningOfALongName) {
  TemporaryDirectory directory;
  const std::string name(1000000, 'X');
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith("#1=" + name + "();\n#2=CARTESIAN_POINT(." + name + ".,(1.,2.));\n"));
  for (const char* command : {"info", "check"}) {
    const Outcome outcome = RunProgram({kVelmar, command, in});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err + outcome.out, HasSubstr("XXX..."));
    EXPECT_LT(outcome.err.size(), 10000u);
  }
}

TEST(VelmarProgram, MessagesHoldNoControlCharactersOfTheFile) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith("#1=\x1B[31m\x07;\n" + kPoint));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, StartsWith(in + ":8:4: error: the name of an entity type, in capital letters, or \"(\" of a complex instance expected [V001]\n  #1= [31m ;\n     ^\n"));
}

TEST(VelmarProgram, CountsMoreMessagesThanItKeeps) {
  TemporaryDirectory directory;
  std::string data = "#1=POLYLINE('',(";
  for (int i = 0; i < 100100; ++i) data += "#0,";
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith(data + "#0));\n"));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr(in + ": 100,051 more messages not shown\n"));
}

TEST(VelmarProgram, OfManyMessages50AreShownAndTheOthersCounted) {
  TemporaryDirectory directory;
  std::string data;
  for (int i = 1; i <= 60; ++i) data += "#" + std::to_string(i) + "=;\n";
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith(data));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr(in + ":57:5: error: the name of an entity type, in capital letters, or \"(\" of a complex instance expected [V001]\n  #50=;\n"));
  EXPECT_THAT(outcome.err, testing::Not(HasSubstr("#51=;")));
  EXPECT_THAT(outcome.err, HasSubstr(in + ": 10 more messages not shown\n"));
}

}  // namespace
