// The README's example compiles, and prints what the README says.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "RunProgram.h"

namespace {

TEST(Readme, ItsExamplePrintsWhatItSays) {
  Setting setting;
  setting.directory = SOURCE_FOLDER;
  TemporaryDirectory directory;
  const Outcome outcome =
      RunProgram({README_PROGRAM, "examples/bracket.stp", directory.Path("out.stp")}, setting);
  EXPECT_EQ(outcome.status, 0);
  const std::string expected = ReadFile(README_EXPECTED);
  EXPECT_NE(expected, "");
  EXPECT_EQ(outcome.out, expected);
  EXPECT_NE(ReadFile(directory.Path("out.stp")).find("'Pin 10 x 25, hardened'"), std::string::npos);
}

}  // namespace
