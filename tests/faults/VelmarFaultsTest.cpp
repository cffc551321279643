// velmar where the files it is given, and its standard output, cannot be read or written to their end.
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Faults.h"
#include "SampleFiles.h"

namespace {

namespace fs = std::filesystem;
using testing::AnyOf;
using testing::HasSubstr;
using testing::StartsWith;

// A file of some blocks, of which a value is not kept.
std::string LongFile() {
  std::string data = "#1=DIRECTION('',(1.,$,0.));\n";
  for (int i = 2; i <= 4000; ++i) data += "#" + std::to_string(i) + "=CARTESIAN_POINT('p',(1.,2.,3.));\n";
  return FileWith(data);
}
const char kWarning[] = ":8:21: warning: 1 unset list element not kept (#1) [V018]\n";

class Velmar : public FaultTest {
 protected:
  void SetUp() override {
    FaultTest::SetUp();
    if (IsSkipped()) return;
    fs::create_directory(directory_.Path("in"));
    fs::create_directory(directory_.Path("out"));
    in_ = WriteFile(directory_.Path("in/in.stp"), LongFile());
    out_ = directory_.Path("out/out.stp");
  }

  std::vector<std::string> Info() const { return {VELMAR_PROGRAM, "info", in_}; }
  std::vector<std::string> Convert() const { return {VELMAR_PROGRAM, "convert", in_, "-o", out_}; }
  Fault Of(const std::string& calls, int error, bool forGood = false) const {
    return {directory_.Path(""), calls, error, forGood};
  }
  void Prepare(bool isThere) {
    for (const auto& [name, text] : FilesIn(directory_.Path("out"))) fs::remove(directory_.Path("out/" + name));
    if (isThere) WriteFile(out_, "old");
  }

  std::string in_;
  std::string out_;
};

// What is printed but for the times.
std::string Lasting(const std::string& printed) { return printed.substr(0, printed.find("\nread in ")); }

TEST_F(Velmar, InfoSaysAllOrThatItCannot) {
  const Outcome good = RunProgram(Info());
  ASSERT_EQ(good.status, 0);
  ASSERT_THAT(good.err, HasSubstr(kWarning));
  for (const Fault& fault : {Of(kEvery, EIO), Of(kEvery, EIO, true), Of("open", EMFILE), Of("stat,open", ENOENT)}) {
    const int calls = RunWithEach(
        fault, Info(), [] {},
        [&](const Outcome& outcome, const std::string&) {
          if (outcome.status == 0) {
            EXPECT_EQ(Lasting(outcome.out), Lasting(good.out));
            EXPECT_THAT(outcome.err, HasSubstr(kWarning));
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_EQ(outcome.out, "");
            EXPECT_THAT(outcome.err, AnyOf("velmar: error: " + in_ + " cannot be read: " + strerror(fault.error) + "\n",
                                           "velmar: error: " + in_ + " does not exist\n"));
          }
        });
    EXPECT_GT(calls, 3) << Text(fault);
  }
}

TEST_F(Velmar, InfoDoesNotTakeAFileThatEndsEarlyForAWholeOne) {
  const Outcome good = RunProgram(Info());
  RunWithEach(
      Of("read", 0, true), Info(), [] {},
      [&](const Outcome& outcome, const std::string&) {
        if (outcome.status == 0) {
          EXPECT_EQ(Lasting(outcome.out), Lasting(good.out));
          EXPECT_THAT(outcome.err, HasSubstr(kWarning));
        } else {
          EXPECT_THAT(outcome.err, HasSubstr("error: "));
        }
      });
}

TEST_F(Velmar, InfoPrintsAllOrSaysThatItCannot) {
  const Outcome good = RunProgram(Info());
  for (const int error : {EIO, ENOSPC}) {
    const int calls = RunWithEach(
        {"fd:1", "write", error}, Info(), [] {},
        [&](const Outcome& outcome, const std::string& failed) {
          EXPECT_EQ(outcome.status, failed.empty() ? 0 : 2);
          if (failed.empty()) return;
          EXPECT_THAT(outcome.err, HasSubstr(std::string("velmar: error: standard output cannot be written: ") +
                                             strerror(error) + "\n"));
        },
        directory_.Path("printed"));
    EXPECT_GT(calls, 0);
  }
}

class VelmarConvert : public Velmar, public testing::WithParamInterface<bool> {};

TEST_P(VelmarConvert, LeavesAWholeFileOrThatOfBefore) {
  Prepare(false);
  const Outcome good = RunProgram(Convert());
  ASSERT_EQ(good.status, 0);
  const std::map<std::string, std::string> after = {{"out.stp", ReadFile(out_)}};
  std::map<std::string, std::string> before;
  if (GetParam()) before["out.stp"] = "old";
  for (const Fault& fault :
       {Of(kEvery, EIO), Of("open", EMFILE), Of("write,close,open", ENOSPC), Of("write,close,rename,chmod", EDQUOT),
        Of("write", ENOSPC, true), Of("open,access,rename", EROFS), Of("read", EIO, true)}) {
    const int calls = RunWithEach(
        fault, Convert(), [this] { Prepare(GetParam()); },
        [&](const Outcome& outcome, const std::string&) {
          const auto files = FilesIn(directory_.Path("out"));
          if (outcome.status == 0) {
            EXPECT_TRUE(files == after);
            EXPECT_THAT(outcome.err, HasSubstr(kWarning));
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_TRUE(files == before || files == after);
            EXPECT_THAT(outcome.err, HasSubstr(strerror(fault.error)));
            EXPECT_THAT(outcome.err, AnyOf(HasSubstr("velmar: error: " + in_ + " cannot be read: "),
                                           HasSubstr("velmar: error: " + out_ + " cannot be "),
                                           HasSubstr(out_ + ": error: not written [V027]\n")));
          }
        });
    EXPECT_GT(calls, 0) << Text(fault);
  }
}

TEST_P(VelmarConvert, DoesNotShowSignalsAndShortReadsAndWrites) {
  Prepare(false);
  ASSERT_EQ(RunProgram(Convert()).status, 0);
  const std::map<std::string, std::string> after = {{"out.stp", ReadFile(out_)}};
  for (const Fault& fault : {Of("read,readv,write,writev,open", EINTR), Of("read,readv,write,writev", Fault::kShort),
                             Of("read,readv,write,writev", Fault::kShort, true)}) {
    const int calls = RunWithEach(
        fault, Convert(), [this] { Prepare(GetParam()); },
        [&](const Outcome& outcome, const std::string&) {
          EXPECT_EQ(outcome.status, 0);
          EXPECT_TRUE(FilesIn(directory_.Path("out")) == after);
          EXPECT_THAT(outcome.err, HasSubstr(kWarning));
        });
    EXPECT_GT(calls, 3) << Text(fault);
  }
}

TEST_P(VelmarConvert, LeavesAWholeFileOrThatOfBeforeOnAFullDisk) {
  const std::string disk = directory_.Path("disk");
  fs::create_directory(disk);
  if (mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "cannot mount: " << strerror(errno);
  const std::string out = disk + "/out.stp";
  if (GetParam()) WriteFile(out, "old");
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", in_, "-o", out});
  const auto files = FilesIn(disk);
  umount2(disk.c_str(), MNT_DETACH);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr(out + ": error: No space left on device [V027]\n" + out + ": error: not written [V027]\n"));
  std::map<std::string, std::string> before;
  if (GetParam()) before["out.stp"] = "old";
  EXPECT_EQ(files, before);
}

INSTANTIATE_TEST_SUITE_P(OverAnOldFile, VelmarConvert, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(ToANewFile, VelmarConvert, testing::Values(false));

// ------------------------------------------------------------------------------------------------ other formats

class VelmarFormat : public Velmar, public testing::WithParamInterface<std::string> {
 protected:
  void SetUp() override {
    Velmar::SetUp();
    out_ = directory_.Path("out/out." + GetParam());
    WriteFile(in_, FileWith(kPoint + "#2=VERTEX_POINT('',#1);\n"));
  }
  // The files below `out`, and what is in them.
  std::map<std::string, std::string> Made() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory_.Path("out"))) {
      if (entry.is_regular_file()) files[entry.path().string()] = ReadFile(entry.path().string());
    }
    return files;
  }
  void Clear() const {
    fs::remove_all(directory_.Path("out"));
    fs::create_directory(directory_.Path("out"));
  }
};

TEST_P(VelmarFormat, IsWrittenWholeOrNotAtAll) {
  ASSERT_EQ(RunProgram(Convert()).status, 0);
  const auto whole = Made();
  for (const Fault& fault : {Of("write,mkdir,rename", ENOSPC), Of("write", ENOSPC, true), Of("write,rename,mkdir", EDQUOT, true)}) {
    const int calls = RunWithEach(
        fault, Convert(), [this] { Clear(); },
        [&](const Outcome& outcome, const std::string&) {
          if (outcome.status == 0) {
            EXPECT_TRUE(Made() == whole);
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_TRUE(Made().empty() || Made() == whole);
            EXPECT_THAT(outcome.err, HasSubstr(strerror(fault.error)));
          }
        });
    EXPECT_GT(calls, 0) << Text(fault);
  }
}

TEST_P(VelmarFormat, SaysThatTheDiskIsFull) {
  const std::string disk = directory_.Path("disk");
  fs::create_directory(disk);
  if (mount("none", disk.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "cannot mount: " << strerror(errno);
  WriteFile(in_, LongFile());
  const std::string out = disk + "/out." + GetParam();
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", in_, "-o", out});
  const bool isEmpty = fs::is_empty(disk);
  umount2(disk.c_str(), MNT_DETACH);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr(out + ": error: No space left on device [V027]\n" + out + ": error: not written [V027]\n"));
  EXPECT_TRUE(isEmpty);
}

INSTANTIATE_TEST_SUITE_P(All, VelmarFormat, testing::Values("json", "csv", "db"), [](const auto& info) { return info.param; });

TEST_F(Velmar, JsonIsReadWholeOrNotAtAll) {
  WriteFile(in_, FileWith(kPoint));
  const std::string json = directory_.Path("in/a.json");
  ASSERT_EQ(RunProgram({VELMAR_PROGRAM, "convert", in_, "-o", json}).status, 0);
  const std::vector<std::string> command = {VELMAR_PROGRAM, "convert", json, "-o", out_};
  ASSERT_EQ(RunProgram(command).status, 0);
  const std::string good = ReadFile(out_);
  for (const Fault& fault : {Fault{directory_.Path("in"), "read,readv,open", EIO}, Fault{directory_.Path("in"), "read,readv", 0, true}}) {
    const int calls = RunWithEach(
        fault, command, [this] { fs::remove(out_); },
        [&](const Outcome& outcome, const std::string&) {
          if (outcome.status == 0) {
            EXPECT_EQ(ReadFile(out_), good);
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_FALSE(fs::exists(out_));
            EXPECT_THAT(outcome.err, HasSubstr("velmar: error: " + json));
          }
        });
    EXPECT_GT(calls, 0) << Text(fault);
  }
}

TEST_F(Velmar, ConvertLeavesNothingBehindInAFolderThatTakesNoNewFile) {
  fs::permissions(directory_.Path(""), fs::perms::all);
  fs::permissions(directory_.Path("out"), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read |
                                              fs::perms::others_exec);
  Setting setting;
  setting.before = [] {
    if (getuid() == 0 && setuid(65534) != 0) _exit(126);
  };
  if (RunProgram({VELMAR_PROGRAM, "--version"}, setting).status != 0) {
    GTEST_SKIP() << "an ordinary user may not enter the build folder";
  }
  const Outcome outcome = RunProgram(Convert(), setting);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: " + out_ + " cannot be written: Permission denied\n");
}

TEST_F(Velmar, ReadsTheExpressTextWholeOrSaysThatItCannot) {
  WriteFile(directory_.Path("in/a.exp"),
            "SCHEMA a; ENTITY cartesian_point; name : STRING; coordinates : LIST OF REAL; END_ENTITY; END_SCHEMA;\n");
  WriteFile(in_, FileWith(kPoint));
  std::vector<std::string> command = Info();
  command.insert(command.end(), {"--express", directory_.Path("in/a.exp"), "-I", directory_.Path("in")});
  const Outcome good = RunProgram(command);
  ASSERT_EQ(good.status, 0) << good.err;
  for (const Fault& fault : {Of(kEvery, EIO), Of("open", EMFILE), Of("read", EIO, true)}) {
    const int calls = RunWithEach(
        fault, command, [] {},
        [&](const Outcome& outcome, const std::string&) {
          if (outcome.status == 0) {
            EXPECT_EQ(Lasting(outcome.out), Lasting(good.out));
            EXPECT_EQ(outcome.err, "");
          } else {
            EXPECT_EQ(outcome.status, 2);
            EXPECT_THAT(outcome.err, HasSubstr(strerror(fault.error)));
            EXPECT_THAT(outcome.err, HasSubstr(directory_.Path("in")));
          }
        });
    EXPECT_GT(calls, 3) << Text(fault);
  }
}

// ------------------------------------------------------------------------------- files that are none, and streams

class VelmarOddInput : public Velmar, public testing::WithParamInterface<std::string> {
 protected:
  Outcome Run(const std::string& in) {
    std::vector<std::string> command = {VELMAR_PROGRAM, GetParam(), in};
    if (GetParam() == "convert") command.insert(command.end(), {"-o", out_});
    const Outcome outcome = RunProgram(command);
    EXPECT_FALSE(fs::exists(out_));
    return outcome;
  }
};

TEST_P(VelmarOddInput, IsRefusedByName) {
  const std::string pipe = directory_.Path("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const auto& [in, why] : std::map<std::string, std::string>{{pipe, "is not a regular file"},
                                                                  {"/dev/null", "is not a regular file"},
                                                                  {"/dev/zero", "is not a regular file"},
                                                                  {"/proc/self/status", "is empty"},
                                                                  {directory_.Path("in"), "is a directory"}}) {
    const Outcome outcome = Run(in);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "velmar: error: " + in + " " + why + "\n");
    EXPECT_EQ(outcome.out, "");
  }
}

INSTANTIATE_TEST_SUITE_P(BothCommands, VelmarOddInput, testing::Values("info", "convert"));

TEST_F(Velmar, StandardStreamsMayBeClosed) {
  const Outcome good = RunProgram(Info());
  Setting setting;
  setting.before = [] { close(0); };
  EXPECT_EQ(Lasting(RunProgram(Info(), setting).out), Lasting(good.out));

  setting.before = [] { close(1); };
  for (const auto& command : {Info(), Convert(), std::vector<std::string>{VELMAR_PROGRAM, "--version"}}) {
    const Outcome outcome = RunProgram(command, setting);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("velmar: error: standard output cannot be written"));
  }
  EXPECT_THAT(ReadFile(out_), StartsWith("ISO-10303-21;\n"));
  EXPECT_THAT(ReadFile(out_), testing::EndsWith("END-ISO-10303-21;\n"));

  fs::remove(out_);
  setting.before = [] { close(2); };
  EXPECT_EQ(RunProgram(Convert(), setting).status, 0);
  EXPECT_THAT(ReadFile(out_), StartsWith("ISO-10303-21;\n"));
  EXPECT_THAT(ReadFile(out_), testing::EndsWith("END-ISO-10303-21;\n"));

  fs::remove(out_);
  setting.before = [] {
    for (const int stream : {0, 1, 2}) close(stream);
  };
  EXPECT_EQ(RunProgram(Convert(), setting).status, 2);
  EXPECT_THAT(ReadFile(out_), StartsWith("ISO-10303-21;\n"));
  EXPECT_THAT(ReadFile(out_), testing::EndsWith("END-ISO-10303-21;\n"));
}

TEST_F(Velmar, StandardErrorThatTakesNothingChangesNoStatus) {
  WriteFile(in_, FileWith("#1=CARTESIAN_POINT('p',(1.,2.);\n"));
  Setting setting;
  setting.before = [] { dup2(open("/dev/full", O_WRONLY), 2); };
  EXPECT_EQ(RunProgram(Info(), setting).status, 1);
  EXPECT_EQ(RunProgram({VELMAR_PROGRAM, "info", directory_.Path("nothing")}, setting).status, 2);
}

TEST_F(Velmar, APipeThatIsClosedEndsTheProgramByItsSignal) {
  Setting setting;
  setting.before = [] {
    int ends[2];
    if (pipe(ends) != 0) _exit(126);
    close(ends[0]);
    dup2(ends[1], 1);
  };
  EXPECT_EQ(RunProgram(Info(), setting).status, 1000 + SIGPIPE);
}

TEST_F(Velmar, StandardOutputMayBeOut) {
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", in_, "-o", "/dev/stdout"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, StartsWith("ISO-10303-21;\n"));
  EXPECT_THAT(outcome.out, testing::EndsWith("END-ISO-10303-21;\n"));
}

}  // namespace
