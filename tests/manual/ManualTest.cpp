// The manual pages and the completion: of a program made for this, and of the programs as they were built.
#include "Manual.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "RunProgram.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::StartsWith;

// A program with one command of each kind of option.
class Manual : public testing::Test {
 protected:
  Manual() {
    facts_.version = "1.2";
    facts_.sections = {{"FILES", {"one", "two"}}};
    facts_.values["--schema"] = {"AP203", "AP214"};
    program_.set_version_flag("--version", "1.2");
    program_.footer("Example: tool cut a.txt\n\nExit status: 0 done.\nMessages go to standard error.");
    CLI::App* cut = program_.add_subcommand("cut", ".starts like a request, and has a \\ in it");
    cut->add_option("FILE", files_, "What is cut")->required();
    cut->add_option("-o,--output", text_, "Where it goes")->required()->type_name("OUT");
    CLI::Option* fast = cut->add_flag("--fast", flag_, "Takes no care");
    cut->add_flag("--slow", flag_, "Takes all care.")->excludes(fast);
    cut->add_option("--depth", number_, "How deep")->check(CLI::NonNegativeNumber)->capture_default_str()->type_name("N");
    cut->add_option("--tool", text_, "With what")->check(CLI::IsMember({"saw", "knife"}));
    cut->add_flag("--secret", flag_, "Is not shown")->group("");
    AddSchema(*cut);
    cut->footer("Example: tool cut a.txt -o b.txt\n\nNeeds a knife.\n\nExit status: 0 done.\nMessages go to standard error.");
    CLI::App* mend = program_.add_subcommand("mend", "Puts it together");
    mend->add_option("FILE", text_, "What was cut");
    AddSchema(*mend);
    VelmarManual::AddOptions(program_, facts_);
  }
  void AddSchema(CLI::App& command) {
    command.add_option("--schema", text_, "Which schema")->type_name("NAME");
    command.add_option("-I,--include", text_, "Where")->type_name("FOLDER");
  }

  CLI::App program_{"Cuts and mends.", "tool"};
  VelmarManual::Facts facts_;
  std::vector<std::string> files_;
  std::string text_;
  int number_ = 1;
  bool flag_ = false;
};

TEST_F(Manual, PageHasEveryCommandAndOptionOnce) {
  EXPECT_EQ(VelmarManual::ManPage(program_, facts_, "2026-01-31"), R"(.TH TOOL 1 2026-01-31 "tool 1.2" "User Commands"
.SH NAME
tool \- Cuts and mends
.SH SYNOPSIS
.nf
\fBtool cut\fR \fIFILE...\fR \fB\-o\fR \fIOUT\fR [\fIOPTIONS\fR]
\fBtool mend\fR \fI[FILE]\fR [\fIOPTIONS\fR]
.fi
.SH COMMANDS
.SS "tool cut \fIFILE...\fR \fB\-o\fR \fIOUT\fR [\fIOPTIONS\fR]"
\&.starts like a request, and has a \e in it.
.TP
\fIFILE...\fR
What is cut.
.TP
\fB\-o\fR, \fB\-\-output\fR \fIOUT\fR
Where it goes.
.TP
\fB\-\-fast\fR
Takes no care.
Not with \-\-slow.
.TP
\fB\-\-slow\fR
Takes all care.
Not with \-\-fast.
.TP
\fB\-\-depth\fR \fIN\fR
How deep.
Default: 1.
.TP
\fB\-\-tool\fR \fITEXT:{saw,knife}\fR
With what.
.PP
Also \fB\-\-schema\fR, \fB\-\-include\fR: see below.
.PP
Example:
.PP
.RS 4
.nf
tool cut a.txt \-o b.txt
.fi
.RE
.PP
Needs a knife.
.SS "tool mend \fI[FILE]\fR [\fIOPTIONS\fR]"
Puts it together.
.TP
\fI[FILE]\fR
What was cut.
.PP
Also \fB\-\-schema\fR, \fB\-\-include\fR: see below.
.SH OPTIONS
.TP
\fB\-h\fR, \fB\-\-help\fR
Print this help message and exit.
.TP
\fB\-\-version\fR
Display program version information and exit.
.TP
\fB\-\-schema\fR \fINAME\fR
Which schema.
.TP
\fB\-I\fR, \fB\-\-include\fR \fIFOLDER\fR
Where.
.SH EXIT STATUS
0 done.
Messages go to standard error.
.SH FILES
one
.PP
two
.SH EXAMPLES
.RS 4
.nf
tool cut a.txt
.fi
.RE
)");
}

TEST_F(Manual, OptionsOfTheBuildPrintAndAreNotShown) {
  EXPECT_THAT(program_.help(), Not(HasSubstr("--print")));
  try {
    program_.parse("--print-man-page 2026-01-31");
    FAIL() << "nothing was thrown";
  } catch (const CLI::Success& success) {
    EXPECT_EQ(std::string(success.what()) + '\n', VelmarManual::ManPage(program_, facts_, "2026-01-31"));
  }
  try {
    program_.parse("--print-bash-completion");
    FAIL() << "nothing was thrown";
  } catch (const CLI::Success& success) {
    EXPECT_EQ(std::string(success.what()) + '\n', VelmarManual::BashCompletion(program_, facts_));
  }
}

// What bash proposes for the words of a command line, of which the last is being written, in `folder`.
std::vector<std::string> Proposals(const std::string& script, const std::string& function,
                                   const std::vector<std::string>& words, const std::string& folder) {
  std::string text = "set -u; source " + script + "\nCOMP_WORDS=(";
  for (const std::string& word : words) text += "'" + word + "' ";
  text += ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) + "\n" + function +
          "\nfor word in \"${COMPREPLY[@]}\"; do printf '%s\\n' \"$word\"; done\n";
  Setting setting;
  setting.directory = folder;
  const Outcome outcome = RunProgram({"/bin/bash", "--norc", "-c", text}, setting);
  EXPECT_EQ(outcome.err, "");
  std::vector<std::string> proposals;
  std::istringstream out(outcome.out);
  for (std::string line; std::getline(out, line);) proposals.push_back(line);
  return proposals;
}

class Completion : public Manual {
 protected:
  Completion() {
    WriteFile(directory_.Path("a file.txt"), "");
    WriteFile(directory_.Path("AP.txt"), "");
    std::filesystem::create_directory(directory_.Path("folder"));
    WriteFile(directory_.Path("script"), VelmarManual::BashCompletion(program_, facts_));
  }
  std::vector<std::string> Propose(const std::vector<std::string>& words) {
    return Proposals(directory_.Path("script"), "_tool", words, directory_.Path(""));
  }
  TemporaryDirectory directory_;
};

TEST_F(Completion, CommandsAndOptionsOfTheProgramStandFirst) {
  EXPECT_THAT(Propose({"tool", ""}), ElementsAre("cut", "mend", "--help", "-h", "--version"));
  EXPECT_THAT(Propose({"tool", "m"}), ElementsAre("mend"));
  EXPECT_THAT(Propose({"tool", "--v"}), ElementsAre("--version"));
  EXPECT_THAT(Propose({"tool", "x"}), IsEmpty());
}

TEST_F(Completion, BehindACommandStandItsOptionsAndFiles) {
  EXPECT_THAT(Propose({"tool", "cut", "--"}),
              ElementsAre("--help", "--output", "--fast", "--slow", "--depth", "--tool", "--schema", "--include"));
  EXPECT_THAT(Propose({"tool", "mend", "--"}), ElementsAre("--help", "--schema", "--include"));
  EXPECT_THAT(Propose({"tool", "cut", "a"}), ElementsAre("a file.txt"));
  EXPECT_THAT(Propose({"tool", "cut", "--fast", "f"}), ElementsAre("folder"));
}

TEST_F(Completion, ValuesOfOptionsAreWhatTheyCanBe) {
  EXPECT_THAT(Propose({"tool", "cut", "--schema", "AP"}), ElementsAre("AP203", "AP214"));
  EXPECT_THAT(Propose({"tool", "mend", "--schema", "=", "AP21"}), ElementsAre("AP214"));
  EXPECT_THAT(Propose({"tool", "mend", "--schema", "="}), ElementsAre("AP203", "AP214"));
  EXPECT_THAT(Propose({"tool", "cut", "--tool", ""}), ElementsAre("saw", "knife"));
  EXPECT_THAT(Propose({"tool", "cut", "--depth", ""}), IsEmpty());
  EXPECT_THAT(Propose({"tool", "cut", "-I", ""}), ElementsAre("folder"));
  EXPECT_THAT(Propose({"tool", "cut", "-o", "AP"}), ElementsAre("AP.txt"));
}

// The programs as they were built. The options of both are those that --help shows.
class BuiltManual : public testing::TestWithParam<std::string> {
 protected:
  static std::string Program() { return VELMAR_PROGRAMS "/" + GetParam(); }
  static std::string Page() { return VELMAR_SHARE "/man/man1/" + GetParam() + ".1"; }
  static std::string Script() { return VELMAR_SHARE "/bash-completion/completions/" + GetParam(); }
  static std::string Function() { return GetParam() == "velmar" ? "_velmar" : "_velmar_express"; }

  // The first words of the lines that --help indents below `heading`: "info", "-I,--include".
  static std::vector<std::string> Listed(const std::vector<std::string>& arguments, const std::string& heading) {
    std::vector<std::string> command = {Program()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.push_back("--help");
    std::istringstream help(RunProgram(command).out);
    std::vector<std::string> words;
    bool isListed = false;
    for (std::string line; std::getline(help, line);) {
      if (!StartsWithBlank(line)) isListed = line == heading;
      if (isListed && line.size() > 2 && line[0] == ' ' && line[1] == ' ' && line[2] != ' ') {
        words.push_back(line.substr(2, line.find(' ', 2) - 2));
      }
    }
    return words;
  }
  static bool StartsWithBlank(const std::string& line) { return line.empty() || line[0] == ' '; }
  static std::vector<std::string> Commands() { return Listed({}, "Subcommands:"); }
  // The long names.
  static std::set<std::string> OptionsOf(const std::vector<std::string>& arguments) {
    std::set<std::string> names;
    for (const std::string& option : Listed(arguments, "Options:")) {
      const std::size_t at = option.find("--");
      if (at != std::string::npos) names.insert(option.substr(at));
    }
    return names;
  }

  // The page as a terminal shows it, without its boldface.
  static std::string Shown() {
    const Outcome outcome =
        RunProgram({"/bin/sh", "-c", "groff -man -Tascii -P-cbou '" + Page() + "'"});
    EXPECT_EQ(outcome.err, "");
    return outcome.out;
  }
  static bool Has(const std::string& program) {
    return RunProgram({"/bin/sh", "-c", "command -v " + program}).status == 0;
  }
};

TEST_P(BuiltManual, PageFormatsWithoutAWarning) {
  if (!Has("groff")) GTEST_SKIP() << "there is no groff";
  const Outcome outcome = RunProgram({"/bin/sh", "-c", "groff -man -Tutf8 -ww '" + Page() + "'"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, Not(IsEmpty()));
}

TEST_P(BuiltManual, PageIsPortable) {
  if (!Has("mandoc")) GTEST_SKIP() << "there is no mandoc";
  const Outcome outcome = RunProgram({"/bin/sh", "-c", "mandoc -T lint -W warning '" + Page() + "'"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
}

TEST_P(BuiltManual, PageHasEveryCommandWithItsOptions) {
  if (!Has("groff")) GTEST_SKIP() << "there is no groff";
  const std::string page = Shown();
  const std::vector<std::string> commands = Commands();
  EXPECT_GE(commands.size(), 4u);
  for (const std::string& command : commands) {
    const std::size_t at = page.find("\n   " + GetParam() + " " + command + " ");
    ASSERT_NE(at, std::string::npos) << command;
    const std::string section = page.substr(at, page.find("\n   " + GetParam(), at + 1) - at);
    for (const std::string& option : OptionsOf({command})) {
      EXPECT_THAT(option == "--help" ? page : section, HasSubstr(option)) << command;
    }
    EXPECT_THAT(section, HasSubstr("Example:\n\n           " + GetParam() + " " + command + " "));
  }
  EXPECT_THAT(page, HasSubstr("EXIT STATUS\n       0 "));
}

TEST_P(BuiltManual, CompletionHasEveryCommandWithItsOptions) {
  const std::vector<std::string> commands = Commands();
  EXPECT_GE(commands.size(), 4u);
  EXPECT_THAT(Proposals(Script(), Function(), {GetParam(), ""}, "/"), IsSupersetOf(commands));
  for (const std::string& command : commands) {
    EXPECT_THAT(Proposals(Script(), Function(), {GetParam(), command, "-"}, "/"), IsSupersetOf(OptionsOf({command})))
        << command;
    EXPECT_THAT(Proposals(Script(), Function(), {GetParam(), command, ""}, SOURCE_FOLDER "/examples"),
                testing::Contains("bracket.stp"))
        << command;
  }
}

TEST_P(BuiltManual, EveryCommandHasAnExampleInItsHelp) {
  for (const std::string& command : Commands()) {
    EXPECT_THAT(RunProgram({Program(), command, "--help"}).out, HasSubstr("\nExample: " + GetParam() + " " + command + " "));
  }
}

INSTANTIATE_TEST_SUITE_P(Programs, BuiltManual, testing::Values(VELMAR_BUILT_PROGRAMS),
                         [](const auto& info) { return info.param == "velmar" ? "velmar" : "velmar_express"; });

}  // namespace
