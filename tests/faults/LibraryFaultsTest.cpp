// ExpFile and Part21Importer on files that cannot be read or written to their end.
#include <gmock/gmock.h>

#include "Faults.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class Library : public FaultTest {
 protected:
  std::vector<std::string> Command(const std::string& what, const std::string& file) {
    return {VELMAR_FAULT_HOST, what, directory_.Path(file)};
  }
  // A file of three blocks.
  void WriteInput() {
    std::string text = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n";
    for (int i = 1; i <= 6000; ++i) text += "#" + std::to_string(i) + "=NODE('a text',#1,(),$);\n";
    WriteFile(directory_.Path("in.stp"), text + "ENDSEC;\nEND-ISO-10303-21;\n");
  }
  Fault Of(const std::string& calls, int error, bool forGood = false) {
    return {directory_.Path(""), calls, error, forGood};
  }
};

const char kAll[] = "greatest: 6000\n";

TEST_F(Library, WhatIsReadIsAllOrThereIsAnError) {
  WriteInput();
  for (const char* way : {"read", "import"}) {
    for (const bool forGood : {false, true}) {
      const int calls = RunWithEach(
          Of(kEvery, EIO, forGood), Command(way, "in.stp"), [] {},
          [](const Outcome& outcome, const std::string&) {
            EXPECT_EQ(outcome.status, 0);
            const bool saysSo = outcome.out.find("Error while opening file ") != std::string::npos ||
                                outcome.out.find("cannot open\n") != std::string::npos ||
                                outcome.out.find(" cannot be read any further: Input/output error\n") != std::string::npos ||
                                outcome.out.find("the length of the input cannot be found\n") != std::string::npos;
            if (saysSo) return;
            EXPECT_THAT(outcome.out, HasSubstr(kAll));
            EXPECT_THAT(outcome.out, Not(HasSubstr("line")));
          });
      EXPECT_GT(calls, 6) << way;
    }
  }
}

TEST_F(Library, AFileThatEndsBeforeItsSizeIsASyntaxError) {
  WriteInput();
  for (const char* way : {"read", "import"}) {
    RunWithEach(
        Of("read", 0, true), Command(way, "in.stp"), [] {},
        [](const Outcome& outcome, const std::string&) {
          EXPECT_EQ(outcome.status, 0);
          const bool saysSo = outcome.out.find("-- line ") != std::string::npos;
          EXPECT_NE(saysSo, outcome.out.find(kAll) != std::string::npos) << outcome.out;
        });
  }
}

TEST_F(Library, SignalsAndShortReadsDoNotShowInWhatIsRead) {
  WriteInput();
  for (const char* way : {"read", "import"}) {
    for (const Fault& fault : {Of("read,readv", EINTR), Of("read,readv", Fault::kShort), Of("read,readv", Fault::kShort, true)}) {
      const int calls = RunWithEach(
          fault, Command(way, "in.stp"), [] {},
          [](const Outcome& outcome, const std::string&) {
            EXPECT_THAT(outcome.out, HasSubstr(kAll));
            EXPECT_THAT(outcome.out, Not(HasSubstr("line")));
          });
      EXPECT_GT(calls, 1) << way;
    }
  }
}

// What is written, to a new file or over an old one.
class LibraryWriting : public Library, public testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    Library::SetUp();
    if (IsSkipped()) return;
    WriteFile(directory_.Path("good.stp"), "");
    ASSERT_EQ(RunProgram(Command("write", "good.stp")).status, 0);
    good_ = ReadFile(directory_.Path("good.stp"));
    ASSERT_GT(good_.size(), 1000000u);  // more than one block
    std::filesystem::remove(directory_.Path("good.stp"));
  }
  void Prepare() {
    for (const auto& [name, text] : FilesIn(directory_.Path(""))) std::filesystem::remove(directory_.Path(name));
    if (GetParam()) WriteFile(directory_.Path("out.stp"), "old");
  }
  std::map<std::string, std::string> Before() {
    return GetParam() ? std::map<std::string, std::string>{{"out.stp", "old"}} : std::map<std::string, std::string>{};
  }
  const std::map<std::string, std::string>& After() { return after_ = {{"out.stp", good_}}; }

  std::string good_;
  std::map<std::string, std::string> after_;
};

TEST_P(LibraryWriting, LeavesAWholeFileOrThatOfBefore) {
  for (const Fault& fault : {Of(kEvery, EIO), Of("write,close,open", ENOSPC), Of("write,close,rename", EDQUOT), Of("open", EMFILE),
                             Of("write", ENOSPC, true)}) {
    const int calls = RunWithEach(
        fault, Command("write", "out.stp"), [this] { Prepare(); },
        [this](const Outcome& outcome, const std::string& failed) {
          EXPECT_EQ(outcome.status, 0);
          const auto files = FilesIn(directory_.Path(""));
          if (outcome.out.find("Error while writing file '" + directory_.Path("out.stp") + "'\n   ") != std::string::npos) {
            EXPECT_TRUE(files == Before());
          } else if (files == Before()) {  // it could not be opened, of which nothing is said
            EXPECT_THAT(failed, testing::AnyOf(testing::StartsWith("open"), testing::StartsWith("stat"),
                                               testing::StartsWith("lseek")));
          } else {
            EXPECT_TRUE(files == After());
          }
        });
    EXPECT_GT(calls, 0) << Text(fault);
  }
}

TEST_P(LibraryWriting, DoesNotShowSignalsAndShortWrites) {
  for (const Fault& fault : {Of("write,writev,open", EINTR), Of("write,writev", Fault::kShort), Of("write,writev", Fault::kShort, true)}) {
    const int calls = RunWithEach(
        fault, Command("write", "out.stp"), [this] { Prepare(); },
        [this](const Outcome& outcome, const std::string&) {
          EXPECT_THAT(outcome.out, Not(HasSubstr("Error")));
          EXPECT_TRUE(FilesIn(directory_.Path("")) == After());
        });
    EXPECT_GT(calls, 1) << Text(fault);
  }
}

class LibraryOverwriting : public LibraryWriting {};

TEST_P(LibraryOverwriting, WritesInPlaceOnlyWhereTheFolderTakesNoNewFile) {
  for (const int error : {EROFS, EACCES, EPERM}) {
    RunWithEach(
        Of("open", error), Command("write", "out.stp"), [this] { Prepare(); },
        [this](const Outcome&, const std::string& failed) {
          const auto files = FilesIn(directory_.Path(""));
          EXPECT_TRUE(files == (failed.find(".part") == std::string::npos && !failed.empty() ? Before() : After()));
        });
  }
}

INSTANTIATE_TEST_SUITE_P(OverAnOldFile, LibraryWriting, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(OverAnOldFile, LibraryOverwriting, testing::Values(true));
INSTANTIATE_TEST_SUITE_P(ANewFile, LibraryWriting, testing::Values(false));

}  // namespace
