// velmar extract and velmar merge.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kVelmar = VELMAR_PROGRAM;

class Extract : public testing::Test {
 protected:
  Outcome Velmar(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), kVelmar);
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(arguments, setting);
  }
  std::string Read(const std::string& name) const { return ReadFile(directory_.Path(name)); }

  TemporaryDirectory directory_;
};

using MergeFiles = Extract;

TEST_F(Extract, WritesAFileThatIsWholeByItself) {
  const Outcome outcome = Velmar({"extract", SAMPLE_FILE, "#20", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(Read("out.stp"), HasSubstr("\n#20=PRODUCT("));
  EXPECT_THAT(Read("out.stp"), Not(HasSubstr("CARTESIAN_POINT")));
  EXPECT_EQ(Velmar({"check", "out.stp"}).status, 0);
}

TEST_F(Extract, LeavesWhatIsThereWhereItFails) {
  WriteFile(directory_.Path("out.stp"), "old");
  Outcome outcome = Velmar({"extract", SAMPLE_FILE, "20", "99999", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, std::string("velmar: error: ") + SAMPLE_FILE + " has no instance #99999\n");
  outcome = Velmar({"extract", SAMPLE_FILE, "x", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("'x' is no instance"));
  outcome = Velmar({"extract", SAMPLE_FILE, "20", "-o", "no/out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("no/out.stp cannot be written: "));
  EXPECT_EQ(Velmar({"extract", SAMPLE_FILE, "-o", "out.stp"}).status, 2);
  EXPECT_EQ(Read("out.stp"), "old");
}

TEST_F(Extract, MayWriteOverItsInput) {
  std::filesystem::copy_file(SAMPLE_FILE, directory_.Path("in.stp"));
  EXPECT_EQ(Velmar({"extract", "in.stp", "20", "-o", "in.stp"}).status, 0);
  EXPECT_THAT(Read("in.stp"), HasSubstr("\n#20=PRODUCT("));
}

TEST_F(MergeFiles, WritesTheInstancesOfAll) {
  const Outcome outcome = Velmar({"merge", SAMPLE_FILE, SAMPLE_FILE, "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(Velmar({"check", "out.stp"}).status, 0);
  const auto instances = [this](const std::string& path) {
    const std::string out = Velmar({"info", path}).out;
    const std::size_t at = out.find("\ninstances");
    return std::stoi(out.substr(out.find_first_of("0123456789", at)));
  };
  EXPECT_EQ(instances("out.stp"), 2 * instances(SAMPLE_FILE));
}

// What is written of JSON is what is written of the Part 21 file that it was made of.
class ExtractAndMergeOfJson : public Extract {
 protected:
  void SetUp() override {
    ASSERT_EQ(Velmar({"convert", SAMPLE_FILE, "-o", "in.stp"}).status, 0);
    ASSERT_EQ(Velmar({"convert", "in.stp", "-o", "in.json"}).status, 0);
  }
  // Written anew: the text that is made of JSON has other blanks and line ends.
  std::string Rewritten(const std::string& name) {
    EXPECT_EQ(Velmar({"convert", name, "-o", "again.stp"}).status, 0);
    return Read("again.stp");
  }
};

TEST_F(ExtractAndMergeOfJson, AreAsOfPart21) {
  for (const char* name : {"in.stp", "in.json"}) {
    const Outcome outcome = Velmar({"extract", name, "#20", "1", "-o", std::string(name) + ".part"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
  }
  EXPECT_THAT(Read("in.json.part"), HasSubstr("\n#20=PRODUCT("));
  EXPECT_EQ(Rewritten("in.json.part"), Rewritten("in.stp.part"));

  EXPECT_EQ(Velmar({"merge", "in.stp", "in.stp", "in.stp", "-o", "part21.stp"}).status, 0);
  const std::string expected = Rewritten("part21.stp");
  EXPECT_EQ(Velmar({"merge", "in.json", "in.stp", "in.json", "-o", "json.stp"}).status, 0);
  EXPECT_EQ(Rewritten("json.stp"), expected);
  EXPECT_EQ(Velmar({"merge", "in.stp", "in.json", "in.json", "-o", "json.stp"}).status, 0);
  EXPECT_EQ(Rewritten("json.stp"), expected);
}

TEST_F(ExtractAndMergeOfJson, SayWhatIsWrongWithThePathThatWasGiven) {
  Outcome outcome = Velmar({"extract", "in.json", "99999", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: in.json has no instance #99999\n");
  WriteFile(directory_.Path("bad.json"), "{\n\"format\": 1}\n");
  const std::string why = "velmar: error: bad.json:2:11: ";
  EXPECT_THAT(Velmar({"extract", "bad.json", "1", "-o", "out.stp"}).err, StartsWith(why));
  EXPECT_THAT(Velmar({"merge", "in.json", "bad.json", "-o", "out.stp"}).err, StartsWith(why));
  EXPECT_EQ(Velmar({"merge", "in.json", "none.json", "-o", "out.stp"}).err, "velmar: error: none.json does not exist\n");
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.stp")));
}

// It would be taken for JSON from then on.
TEST_F(ExtractAndMergeOfJson, DoNotWritePart21UnderTheNameOfAnotherFormat) {
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"extract", "in.json", "20"}, {"merge", "in.json", "in.stp"}, {"anonymise", "in.stp"}}) {
    std::vector<std::string> words = command;
    words.insert(words.end(), {"-o", "out.json"});
    const Outcome outcome = Velmar(words);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.err, "velmar: error: out.json is named as json, and what is written is Part 21\n");
    EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.json")));
  }
}

TEST_F(MergeFiles, WithADamagedByteOrderMarkAreNotRead) {
  WriteFile(directory_.Path("in.stp"), FileWith(kPoint));
  WriteFile(directory_.Path("damaged.stp"), "\xEF\xBB" + FileWith(kPoint));
  const std::string error = "velmar: error: damaged.stp cannot be read: damaged byte order mark: EF is not followed by BB BF\n";
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"merge", "in.stp", "damaged.stp", "-o", "out.stp"}, {"extract", "damaged.stp", "1", "-o", "out.stp"}}) {
    const Outcome outcome = Velmar(command);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, error);
    EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.stp")));
  }
}

TEST_F(MergeFiles, WithTokensOfAnyLength) {
  const std::string instance = "COLOUR('" + std::string(40000, 'x') + "');\n";
  WriteFile(directory_.Path("in.stp"), FileWith(kPoint));
  WriteFile(directory_.Path("long.stp"), FileWith("#1=" + instance));
  EXPECT_EQ(Velmar({"merge", "in.stp", "long.stp", "-o", "merged.stp"}).status, 0);
  EXPECT_THAT(ReadFile(directory_.Path("merged.stp")), HasSubstr("=" + instance));
  EXPECT_EQ(Velmar({"extract", "long.stp", "1", "-o", "part.stp"}).status, 0);
  EXPECT_THAT(ReadFile(directory_.Path("part.stp")), HasSubstr("#1=" + instance));
}

TEST_F(MergeFiles, OfOneSchemaOnly) {
  WriteFile(directory_.Path("other.stp"), FileWith(kPoint, "CONFIG_CONTROL_DESIGN"));
  const Outcome outcome = Velmar({"merge", SAMPLE_FILE, "other.stp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("they make no file of one schema"));
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.stp")));
}

}  // namespace
