// Reading with the schema of an EXPRESS text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

const std::string kVelmar = VELMAR_PROGRAM;

class Express : public testing::Test {
 protected:
  Express() {
    WriteFile(directory_.Path("gears.exp"),
              "SCHEMA gears;\n"
              "TYPE material = ENUMERATION OF (steel, brass); END_TYPE;\n"
              "ENTITY gear; label : STRING; teeth : INTEGER; made_of : OPTIONAL material; END_ENTITY;\n"
              "ENTITY pair; gears : SET [2:2] OF gear; END_ENTITY;\n"
              "END_SCHEMA;\n");
    WriteFile(directory_.Path("in.stp"), FileWith("#1=GEAR('small',12,.STEEL.);\n"
                                                  "#2=GEAR('large',48,$);\n"
                                                  "#3=PAIR((#1,#2));\n",
                                                  "GEARS_OF_MINE"));
  }
  Outcome Velmar(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), kVelmar);
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(arguments, setting);
  }
  void WriteText(const std::string& name, const std::string& text) { WriteFile(directory_.Path(name), text); }

  TemporaryDirectory directory_;
};

TEST_F(Express, InfoCountsTheTypesOfTheText) {
  const Outcome outcome = Velmar({"info", "--express", "gears.exp", "in.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("GEARS (EXPRESS)\n"), HasSubstr("3 of 2 types\n"),
                                 HasSubstr("2  GEAR\n"), HasSubstr("1  PAIR\n"), HasSubstr("GEARS_OF_MINE")));
}

TEST_F(Express, ConvertWritesThePopulationWithTheFilesOwnSchema) {
  const Outcome outcome = Velmar({"convert", "in.stp", "--express", "gears.exp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(
      ReadFile(directory_.Path("out.stp")),
      AllOf(
          HasSubstr("FILE_SCHEMA(('GEARS_OF_MINE'));\n"),
          HasSubstr("#1 = GEAR('small', 12, .STEEL.);\n#2 = GEAR('large', 48, $);\n#3 = PAIR((#1, #2));\n")));
}

TEST_F(Express, WhatTheTextLacksIsReportedWithItsPlace) {
  WriteText("in.stp",
            FileWith("#1=GEAR('small',12,.STEEL.);\n#2=AXLE('x');\n#3=CARTESIAN_POINT('',(1.,2.));\n"));
  const Outcome outcome = Velmar({"info", "in.stp", "--express", "gears.exp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("AXLE kept by position: GEARS has no such entity (#2) [V008]\n"),
                                 HasSubstr("CARTESIAN_POINT kept by position: GEARS has no such entity (#3) [V008]\n")));
}

TEST_F(Express, ErrorsOfTheTextAreThoseOfACompiler) {
  WriteText("gears.exp", "SCHEMA gears;\nENTITY gear; teeth : tooth; END_ENTITY;\nEND_SCHEMA;\n");
  const Outcome outcome = Velmar({"info", "in.stp", "--express", "gears.exp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, StartsWith("gears.exp:2:22: error: unknown type 'tooth' [E021]"));
  EXPECT_EQ(outcome.out, "");
}

TEST_F(Express, TextThatIsMissingIsNamed) {
  const Outcome outcome = Velmar({"convert", "in.stp", "--express", "none.exp", "-o", "out.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, AllOf(HasSubstr("error"), HasSubstr("none.exp")));
  EXPECT_FALSE(fs::exists(directory_.Path("out.stp")));
}

TEST_F(Express, SchemasThatItUsesAreFoundInTheFoldersOfI) {
  WriteText("own.exp", "SCHEMA own; USE FROM gears; END_SCHEMA;\n");
  EXPECT_EQ(Velmar({"info", "in.stp", "--express", "own.exp"}).status, 2);
  const Outcome outcome = Velmar({"info", "in.stp", "--express", "own.exp", "-I", "."});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("2  GEAR\n"));
}

TEST_F(Express, AndSchemaTogetherAreWrongUsage) {
  EXPECT_EQ(Velmar({"info", "in.stp", "--express", "gears.exp", "--schema", "AP214"}).status, 2);
  EXPECT_EQ(Velmar({"info", "in.stp", "-I", "."}).status, 2);
}

}  // namespace
