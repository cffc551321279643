// velmar anonymise.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class AnonymiseCommand : public testing::Test {
 protected:
  Outcome Velmar(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELMAR_PROGRAM);
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(arguments, setting);
  }
  std::string Read(const std::string& name) const { return ReadFile(directory_.Path(name)); }

  TemporaryDirectory directory_;
};

TEST_F(AnonymiseCommand, WritesAFileThatSaysTheSameOfShapes) {
  const Outcome outcome = Velmar({"anonymise", SAMPLE_FILE, "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, HasSubstr(" replaced\n"));
  EXPECT_EQ(Velmar({"check", "out.stp"}).status, 0);
  EXPECT_THAT(Read("out.stp"), Not(HasSubstr("Beispiel")));
  EXPECT_EQ(Velmar({"list", SAMPLE_FILE, "cartesian_point", "--attr", "coordinates"}).out,
            Velmar({"list", "out.stp", "cartesian_point", "--attr", "coordinates"}).out);
}

TEST_F(AnonymiseCommand, SaysWhatIsLeftOutUnlessItIsToBeQuiet) {
  WriteFile(directory_.Path("in.stp"), "Anna\n" + FileWith("#1=A('x);\n") + "Bob\n");
  const Outcome outcome = Velmar({"anonymise", "in.stp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err,
            "in.stp: 9 strings of 8 texts and 0 comments replaced\n"
            "in.stp: 1 place with words that are out of place, or strings without an end: letters are x there, and digits 0\n"
            "in.stp: what stands before ISO-10303-21; is left out\n"
            "in.stp: what stands behind END-ISO-10303-21; is left out\n");
  EXPECT_EQ(Velmar({"anonymise", "-q", "in.stp", "-o", "out.stp"}).err, "");
}

TEST_F(AnonymiseCommand, LeavesWhatIsThereWhereItFails) {
  WriteFile(directory_.Path("out.stp"), "old");
  Outcome outcome = Velmar({"anonymise", "none.stp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: none.stp does not exist\n");
  EXPECT_EQ(Velmar({"anonymise", SAMPLE_FILE, "-o", "no/out.stp"}).status, 2);
  EXPECT_EQ(Velmar({"anonymise", SAMPLE_FILE}).status, 2);
  EXPECT_EQ(Read("out.stp"), "old");
}

}  // namespace
