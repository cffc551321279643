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

TEST_F(MergeFiles, OfOneSchemaOnly) {
  WriteFile(directory_.Path("other.stp"), FileWith(kPoint, "CONFIG_CONTROL_DESIGN"));
  const Outcome outcome = Velmar({"merge", SAMPLE_FILE, "other.stp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("they make no file of one schema"));
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("out.stp")));
}

}  // namespace
