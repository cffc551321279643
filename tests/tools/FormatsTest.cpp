// velmar convert from and to other formats than Part 21.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class Formats : public testing::Test {
 protected:
  void Write(const std::string& name, const std::string& text) { WriteFile(directory_.Path(name), text); }
  std::string Read(const std::string& name) { return ReadFile(directory_.Path(name)); }
  Outcome Run(const std::string& in, const std::string& out, const std::vector<std::string>& more = {}, Setting setting = {}) {
    setting.directory = directory_.Path("");
    std::vector<std::string> command = {VELMAR_PROGRAM, "convert", in, "-o", out};
    command.insert(command.end(), more.begin(), more.end());
    return RunProgram(command, setting);
  }
  std::size_t FilesThere() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory_.Path("")), {}));
  }

  TemporaryDirectory directory_;
};

const char kValues[] = SOURCE_FOLDER "/tests/tools/data/values.stp";

TEST_F(Formats, JsonIsReadBackToTheBytesThatAFileIsWrittenWith) {
  for (const char* file : {SAMPLE_FILE, kValues}) {
    const int status = Run(file, "plain.stp").status;
    EXPECT_EQ(Run(file, "a.json").status, status);
    EXPECT_EQ(Run("a.json", "back.stp").status, status);
    EXPECT_EQ(Read("back.stp"), Read("plain.stp"));
    EXPECT_EQ(Run("a.json", "b.json").status, status);
    EXPECT_EQ(Read("b.json"), Read("a.json"));
    EXPECT_EQ(Run("a.json", "a.json").status, status);
    EXPECT_EQ(Read("b.json"), Read("a.json"));
  }
}

TEST_F(Formats, TheEndOfTheNameSaysWhichItIs) {
  for (const char* name : {"a.json", "b.JSON"}) {
    EXPECT_EQ(Run(SAMPLE_FILE, name).status, 0);
    EXPECT_THAT(Read(name), StartsWith("{\n\"format\": \"velmar-json\""));
  }
  for (const char* name : {"a.sqlite", "a.sqlite3", "a.db"}) {
    EXPECT_EQ(Run(SAMPLE_FILE, name).status, 0);
    EXPECT_THAT(Read(name), StartsWith("SQLite format 3"));
  }
  for (const char* name : {"a.stp", "a.step", "a.p21", "json", "a.json.txt"}) {
    EXPECT_EQ(Run(SAMPLE_FILE, name).status, 0);
    EXPECT_THAT(Read(name), StartsWith("ISO-10303-21;"));
  }
  for (const char* name : {"a.csv", "b.csv/"}) {
    EXPECT_EQ(Run(SAMPLE_FILE, name).status, 0);
    EXPECT_THAT(Read(std::string(name) + "/product.csv"), StartsWith("id,id_,name,description,frame_of_reference\n#12,VB-100,"));
  }
}

TEST_F(Formats, AFormatMayBeNamed) {
  EXPECT_EQ(Run(SAMPLE_FILE, "a.stp", {"--to", "json"}).status, 0);
  EXPECT_THAT(Read("a.stp"), StartsWith("{\n"));
  EXPECT_EQ(Run(SAMPLE_FILE, "a.json", {"--to", "PART21"}).status, 0);
  EXPECT_THAT(Read("a.json"), StartsWith("ISO-10303-21;"));
  EXPECT_EQ(Run(SAMPLE_FILE, "tables", {"--to", "csv"}).status, 0);
  EXPECT_TRUE(fs::exists(directory_.Path("tables/header.csv")));
  EXPECT_EQ(Run(SAMPLE_FILE, "a", {"--to", "sqlite"}).status, 0);
  EXPECT_THAT(Read("a"), StartsWith("SQLite format 3"));
  const Outcome outcome = Run(SAMPLE_FILE, "b", {"--to", "xml"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("xml"));
}

TEST_F(Formats, WhatWasDoneIsSaid) {
  Write("in.stp", FileWith(kPoint));
  for (const char* out : {"a.json", "a.csv", "a.db"}) {
    EXPECT_THAT(Run("in.stp", out).out, MatchesRegex("in.stp: 1 instance, 240 bytes, read in [0-9.]+ ms\n" + std::string(out) +
                                                     ": 1 instance, [0-9,]+ bytes, written in [0-9.]+ ms\n"));
  }
}

TEST_F(Formats, JsonMayGoToStandardOutput) {
  const Outcome outcome = Run(SAMPLE_FILE, "/dev/stdout", {"--to", "json"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, StartsWith("{\n"));
  EXPECT_THAT(outcome.out, EndsWith("\n]\n}\n"));
}

// Commands of which the others are not: what they say of the JSON is what they say of the file that it was made of.
TEST_F(Formats, JsonIsLookedAtAsPart21Is) {
  Run(SOURCE_FOLDER "/examples/trolley.stp", "a.stp");
  Run("a.stp", "a.json");
  const auto outputOf = [this](std::vector<std::string> command) {
    command.insert(command.begin(), VELMAR_PROGRAM);
    Setting setting;
    setting.directory = directory_.Path("");
    const Outcome outcome = RunProgram(command, setting);
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    return outcome.out;
  };
  EXPECT_THAT(outputOf({"tree", "a.json"}), HasSubstr("12 x Hexagon nut M8"));
  EXPECT_EQ(outputOf({"tree", "a.json"}), outputOf({"tree", "a.stp"}));
  EXPECT_EQ(outputOf({"diff", "a.json", "a.stp"}), "no difference\n");
  EXPECT_EQ(outputOf({"diff", "a.stp", "a.json"}), "no difference\n");
  outputOf({"report", "a.json", "-o", "a.html"});
  EXPECT_THAT(Read("a.html"), HasSubstr("Hexagon nut M8"));
  outputOf({"anonymise", "a.json", "-o", "of_json.stp"});
  outputOf({"anonymise", "a.stp", "-o", "of_part21.stp"});
  EXPECT_THAT(Read("of_json.stp"), HasSubstr("PRODUCT('text_"));
  EXPECT_EQ(outputOf({"diff", "of_json.stp", "of_part21.stp"}), "no difference\n");

  std::string json = Read("a.json");
  json.replace(json.find("\"Wheel\""), 7, "\"Disc\"");
  Write("b.json", json);
  Setting setting;
  setting.directory = directory_.Path("");
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "diff", "a.json", "b.json"}, setting);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("  name: 'Wheel' -> 'Disc'\n"));
}

TEST_F(Formats, WhatIsWrongInJsonIsSaidWithItsPlaceAndNothingIsWritten) {
  Write("in.stp", FileWith(kPoint));
  Run("in.stp", "a.json");
  std::string json = Read("a.json");
  json.replace(json.find("coordinates"), 11, "coordinate");
  Write("b.json", json);
  Write("out.stp", "old");
  const Outcome outcome = Run("b.json", "out.stp");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: b.json:11:77: CARTESIAN_POINT has no attribute \"coordinate\"\n");
  EXPECT_EQ(Read("out.stp"), "old");

  Write("c.json", "ISO-10303-21;");
  EXPECT_EQ(Run("c.json", "out.stp").err,
            "velmar: error: c.json:1:1: no JSON: syntax error while parsing value - invalid literal\n");
  Write("d.json", "");
  EXPECT_EQ(Run("d.json", "out.stp").err, "velmar: error: d.json is empty\n");
  EXPECT_EQ(Run("e.json", "out.stp").err, "velmar: error: e.json does not exist\n");
  EXPECT_EQ(Read("out.stp"), "old");
}

TEST_F(Formats, FindingsAboutJsonHaveItsLines) {
  Write("in.stp", FileWith(kPoint + "#2=VEKTOR('',1);\n"));
  Run("in.stp", "a.json");
  const Outcome outcome = Run("a.json", "b.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, StartsWith("a.json:12:1: error: "));
  EXPECT_THAT(outcome.err, HasSubstr("\n  {\"id\": 2, \"type\": \"VEKTOR\", \"values\": [\"\", 1]}\n  ^\n"));
}

TEST_F(Formats, CommandsThatLookAtFilesTakeJson) {
  Write("in.stp", FileWith(kPoint + "#2=VERTEX_POINT(5,#1);\n"));
  Run("in.stp", "a.json");
  const auto run = [this](std::vector<std::string> command) {
    command.insert(command.begin(), VELMAR_PROGRAM);
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(command, setting).out;
  };
  EXPECT_THAT(run({"info", "a.json"}), HasSubstr("AUTOMOTIVE_DESIGN (AP214)\n"));
  EXPECT_THAT(run({"list", "a.json", "point"}), HasSubstr("#1        CARTESIAN_POINT  p"));
  EXPECT_THAT(run({"show", "a.json", "2"}), StartsWith("#2 VERTEX_POINT (a.json:12:1)\n"));
  EXPECT_THAT(run({"refs", "a.json", "1"}), HasSubstr("#2 VERTEX_POINT.vertex_geometry\n"));
  EXPECT_THAT(run({"check", "a.json"}), HasSubstr("a.json:12:17: error: #2 VERTEX_POINT.name: "));
}

TEST_F(Formats, ASchemaOfOnesOwnNamesAttributes) {
  const std::vector<std::string> express = {"--express", SOURCE_FOLDER "/tests/tools/data/gears.exp"};
  const char* gears = SOURCE_FOLDER "/tests/tools/data/gears.stp";
  const int status = Run(gears, "plain.stp", express).status;
  EXPECT_EQ(Run(gears, "a.json", express).status, status);
  EXPECT_THAT(Read("a.json"), HasSubstr("\"attributes\": {\"label\": "));
  EXPECT_EQ(Run("a.json", "back.stp", express).status, status);
  EXPECT_EQ(Read("back.stp"), Read("plain.stp"));
  EXPECT_EQ(Run(gears, "a.csv", express).status, status);
  EXPECT_THAT(Read("a.csv/spur.csv"), StartsWith("id,label,"));
  EXPECT_EQ(Run(gears, "a.db", express).status, status);
  EXPECT_THAT(Run("a.json", "back.stp").err, HasSubstr("cannot be told by their names: the schema"));
}

TEST_F(Formats, AFileOfAnUnknownSchemaIsConvertedByPosition) {
  Write("in.stp", FileWith("#1=IFCWALL('a',$,#1);\n", "IFC4"));
  EXPECT_EQ(Run("in.stp", "plain.stp").status, 1);
  EXPECT_EQ(Run("in.stp", "a.json").status, 1);
  EXPECT_THAT(Read("a.json"), HasSubstr("\"schema\": null,"));
  EXPECT_THAT(Read("a.json"), HasSubstr("{\"id\": 1, \"type\": \"IFCWALL\", \"values\": [\"a\", null, {\"ref\": 1}]}"));
  EXPECT_EQ(Run("a.json", "back.stp").status, 1);
  EXPECT_EQ(Read("back.stp"), Read("plain.stp"));
  EXPECT_EQ(Run("in.stp", "a.csv").status, 1);
  EXPECT_EQ(Read("a.csv/ifcwall.csv"), "id,value_1,value_2,value_3\n#1,a,,#1\n");
}

TEST_F(Formats, TablesAreWrittenAndNotRead) {
  Write("a.db", "x");
  EXPECT_EQ(Run("a.db", "out.stp").err, "velmar: error: a.db is named as sqlite, which is written and not read\n");
  EXPECT_EQ(Run("a.db", "out.stp").status, 2);
}

TEST_F(Formats, AFolderThatIsNotEmptyIsRefused) {
  fs::create_directory(directory_.Path("a.csv"));
  Write("a.csv/mine", "text");
  const Outcome outcome = Run(SAMPLE_FILE, "a.csv");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: a.csv is a folder that is not empty\n");
  EXPECT_EQ(Read("a.csv/mine"), "text");
  EXPECT_EQ(FilesThere(), 1u);
}

TEST_F(Formats, StringsMayBeOfAnyLength) {
  std::string text;
  for (int i = 0; i < 7000; ++i) text += '\xE9';  // \X\E9
  Write("in.stp", FileWith("#1=CARTESIAN_POINT('" + text + "',(1.));\n"));
  EXPECT_EQ(Run("in.stp", "plain.stp").status, 0);
  EXPECT_EQ(Run("in.stp", "a.json").status, 0);
  EXPECT_EQ(Run("a.json", "back.stp").status, 0);
  EXPECT_EQ(Read("back.stp"), Read("plain.stp"));
  EXPECT_EQ(Run("in.stp", "a.csv").status, 0);
  EXPECT_GT(Read("a.csv/cartesian_point.csv").size(), 14000u);  // in UTF-8
  EXPECT_EQ(Run("in.stp", "a.db").status, 0);
}

}  // namespace
