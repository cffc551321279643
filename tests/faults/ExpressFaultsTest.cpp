// velmar-express where its files and its standard output cannot be read or written to their end.
#include <gmock/gmock.h>

#include "Faults.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class Express : public FaultTest {
 protected:
  void SetUp() override {
    FaultTest::SetUp();
    if (IsSkipped()) return;
    fs::create_directory(directory_.Path("in"));
    in_ = WriteFile(directory_.Path("in/a.exp"),
                    "SCHEMA a; USE FROM b; ENTITY e SUBTYPE OF (f); x : STRING; END_ENTITY; END_SCHEMA;\n");
    WriteFile(directory_.Path("in/b.exp"), "SCHEMA b; ENTITY f; y : REAL; END_ENTITY; END_SCHEMA;\n");
  }
  std::vector<std::string> Command(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), VELMAR_EXPRESS_PROGRAM);
    arguments.insert(arguments.end(), {in_, "-I", directory_.Path("in")});
    return arguments;
  }
  std::vector<std::string> Generate() const {
    return Command({"generate", "--parts", "2", "--output-dir", directory_.Path("out"), "--depfile",
                    directory_.Path("out/d"), "--depfile-target", "t"});
  }
  Fault Of(const std::string& calls, int error, bool forGood = false) const {
    return {directory_.Path(""), calls, error, forGood};
  }

  std::string in_;
};

TEST_F(Express, ReadsAllOrSaysThatItCannot) {
  for (const char* command : {"check", "print", "list"}) {
    const Outcome good = RunProgram(Command({command}));
    ASSERT_EQ(good.status, 0) << good.err;
    for (const Fault& fault : {Of(kEvery, EIO), Of("open", EMFILE), Of("read", EIO, true)}) {
      const int calls = RunWithEach(
          fault, Command({command}), [] {},
          [&](const Outcome& outcome, const std::string&) {
            if (outcome.status == 0) {
              EXPECT_EQ(outcome.out, good.out);
              EXPECT_EQ(outcome.err, "");
            } else {
              EXPECT_EQ(outcome.status, 2);
              EXPECT_EQ(outcome.out, "");
              EXPECT_THAT(outcome.err, HasSubstr(directory_.Path("in")));
              EXPECT_THAT(outcome.err, HasSubstr(strerror(fault.error)));
            }
          });
      EXPECT_GT(calls, 2) << command;
    }
  }
}

// Where its output goes: over older files, or into a folder that is made.
class ExpressGenerate : public Express, public testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    Express::SetUp();
    if (IsSkipped()) return;
    ASSERT_EQ(RunProgram(Generate()).status, 0);
    good_ = FilesIn(directory_.Path("out"));
    ASSERT_EQ(good_.size(), 5u);
  }
  void Prepare() {
    fs::remove_all(directory_.Path("out"));
    if (!GetParam()) return;
    fs::create_directory(directory_.Path("out"));
    for (const auto& [name, text] : good_) WriteFile(directory_.Path("out/" + name), "old");
  }
  // Each file is whole or that of before, and there is no other.
  void ExpectWholeFiles() {
    for (const auto& [name, text] : FilesIn(directory_.Path("out"))) {
      EXPECT_EQ(good_.count(name), 1u) << name;
      EXPECT_TRUE(text == good_[name] || (GetParam() && text == "old")) << name;
    }
  }

  std::map<std::string, std::string> good_;
};

TEST_P(ExpressGenerate, LeavesWholeFilesOrThoseOfBefore) {
  for (const Fault& fault : {Of(kEvery, EIO), Of("open", EMFILE), Of("write,close,open,mkdir", ENOSPC),
                             Of("write,close,rename", EDQUOT), Of("open,mkdir", EROFS), Of("write", ENOSPC, true)}) {
    const int calls = RunWithEach(
        fault, Generate(), [this] { Prepare(); },
        [&](const Outcome& outcome, const std::string&) {
          ExpectWholeFiles();
          if (outcome.status == 0) {
            EXPECT_TRUE(FilesIn(directory_.Path("out")) == good_);
            EXPECT_EQ(outcome.err, "");
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_THAT(outcome.err, HasSubstr(directory_.Path("")));
            EXPECT_THAT(outcome.err, HasSubstr(strerror(fault.error)));
          }
        });
    EXPECT_GT(calls, 0) << Text(fault);
  }
}

TEST_P(ExpressGenerate, DoesNotShowSignalsAndShortReadsAndWrites) {
  for (const Fault& fault : {Of("read,readv,write,writev", EINTR), Of("read,readv,write,writev", Fault::kShort),
                             Of("read,readv,write,writev", Fault::kShort, true)}) {
    const int calls = RunWithEach(
        fault, Generate(), [this] { Prepare(); },
        [&](const Outcome& outcome, const std::string&) {
          EXPECT_EQ(outcome.status, 0);
          EXPECT_TRUE(FilesIn(directory_.Path("out")) == good_);
        });
    EXPECT_GT(calls, 3) << Text(fault);
  }
  for (const std::string& name : {in_, directory_.Path("out/A")}) {
    RunWithEach(
        {name, "open", EINTR}, Generate(), [this] { Prepare(); },
        [&](const Outcome& outcome, const std::string&) { EXPECT_EQ(outcome.status, 0); });
  }
}

INSTANTIATE_TEST_SUITE_P(OverOldFiles, ExpressGenerate, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(IntoANewFolder, ExpressGenerate, testing::Values(false));

TEST_F(Express, StandardOutputThatCannotBeWrittenIsAnError) {
  for (const auto& command : {Command({"print"}), Command({"list"}), std::vector<std::string>{VELMAR_EXPRESS_PROGRAM, "--version"},
                              std::vector<std::string>{VELMAR_EXPRESS_PROGRAM, "--help"}}) {
    Setting full;
    full.standardOutput = "/dev/full";
    Setting closed;
    closed.before = [] { close(1); };
    for (const Setting& setting : {full, closed}) {
      const Outcome outcome = RunProgram(command, setting);
      EXPECT_EQ(outcome.status, 2) << command[1];
      EXPECT_THAT(outcome.err, HasSubstr("velmar-express: standard output cannot be written")) << command[1];
    }
  }
}

TEST_F(Express, AFileThatGrowsBeyondItsLimitIsAnError) {
  Setting setting;
  setting.before = [] {
    const struct rlimit limit = {100, 100};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  const Outcome outcome = RunProgram(Generate(), setting);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar-express: " + directory_.Path("out/A.h") + ": File too large\n");
  EXPECT_TRUE(FilesIn(directory_.Path("out")).empty());
}

TEST_F(Express, WritesIntoADeviceWithoutReadingIt) {
  const Outcome outcome = RunProgram(Command({"generate", "--output-dir", directory_.Path("out"), "--depfile", "/dev/full",
                                              "--depfile-target", "t"}));
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar-express: /dev/full: No space left on device\n");
}

TEST_F(Express, WritesWhereALinkLeads) {
  fs::create_directory(directory_.Path("elsewhere"));
  fs::create_directory(directory_.Path("out"));
  WriteFile(directory_.Path("elsewhere/A.h"), "old");
  fs::create_symlink(directory_.Path("elsewhere/A.h"), directory_.Path("out/A.h"));
  EXPECT_EQ(RunProgram(Generate()).status, 0);
  EXPECT_TRUE(fs::is_symlink(directory_.Path("out/A.h")));
  EXPECT_THAT(ReadFile(directory_.Path("elsewhere/A.h")), HasSubstr("Generated from "));
}

}  // namespace
