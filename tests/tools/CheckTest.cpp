// velmar check: what is wrong with files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string kVelmar = VELMAR_PROGRAM;
const std::string kTwoMistakes =
    "#1=DIRECTION(3,(1.,0.));\n"
    "#2=VECTOR('v',#9,1);\n";

class Check : public testing::Test {
 protected:
  Outcome Velmar(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {kVelmar, "check"});
    Setting setting;
    setting.directory = directory_.Path("");
    return RunProgram(arguments, setting);
  }
  void Write(const std::string& name, const std::string& text) { WriteFile(directory_.Path(name), text); }

  TemporaryDirectory directory_;
};

TEST_F(Check, FindsNothingInTheSample) {
  const Outcome outcome = Velmar({SAMPLE_FILE});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, std::string(SAMPLE_FILE) + ": nothing is wrong\n");
}

TEST_F(Check, SaysWhatIsWrongWhereAndWithWhat) {
  Write("in.stp", FileWith(kTwoMistakes));
  const Outcome outcome = Velmar({"in.stp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            "in.stp:8:14: error: #1 DIRECTION.name: expected label (a string), found the integer 3 [V028]\n"
            "  #1=DIRECTION(3,(1.,0.));\n"
            "               ^\n"
            "in.stp:9:15: error: #2 VECTOR.orientation: there is no instance #9 [V035]\n"
            "  #2=VECTOR('v',#9,1);\n"
            "                ^\n"
            "in.stp:9:18: warning: #2 VECTOR.magnitude: expected length_measure, found the integer 1: a real number has a "
            "decimal point [V039]\n"
            "  #2=VECTOR('v',#9,1);\n"
            "                   ^\n");
  EXPECT_EQ(outcome.err, "in.stp: 2 errors, 1 warning\n");
}

TEST_F(Check, FindsMistakesOfSyntaxAndGoesOnBehindThem) {
  Write("in.stp", FileWith("#1=DIRECTION('',(1.;\n#2=VECTOR('v',#1,1.);\n#3=DIRECTION('',(1.,0.),$);\n"));
  const Outcome outcome = Velmar({"in.stp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("in.stp:8:20: error: \")\" expected [V001]\n"),
                                 HasSubstr("#2 VECTOR.orientation: there is no instance #1 [V035]\n"),
                                 HasSubstr("#3 DIRECTION: expected 2 parameters, found 3 [V010]\n")));
}

TEST_F(Check, TooFewParametersAreAnErrorHere) {
  Write("in.stp", FileWith("#1=DIRECTION('');\n"));
  EXPECT_THAT(Velmar({"in.stp"}).out, HasSubstr("in.stp:8:16: error: #1 DIRECTION: expected 2 parameters, found 1 [V011]\n"));
}

TEST_F(Check, PrintsNoMoreThanItMay) {
  Write("in.stp", FileWith(kTwoMistakes));
  const Outcome outcome = Velmar({"in.stp", "--max", "1"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("[V028]"), Not(HasSubstr("[V035]")), HasSubstr("in.stp: 2 more messages not shown\n")));
}

TEST_F(Check, LooksForTheGivenCodesOnly) {
  Write("in.stp", FileWith(kTwoMistakes));
  Outcome outcome = Velmar({"in.stp", "--only", "V039", "--only", "V035", "--quiet"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("[V035]"), HasSubstr("[V039]"), Not(HasSubstr("[V028]"))));
  EXPECT_EQ(outcome.err, "");
  outcome = Velmar({"in.stp", "--only", "V001"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
  outcome = Velmar({"in.stp", "--only", "V999"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: there is no code 'V999'\n");
}

TEST_F(Check, GivesJson) {
  Write("in.stp", FileWith(kTwoMistakes));
  const Outcome outcome = Velmar({"in.stp", SAMPLE_FILE, "--json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  const json files = json::parse(outcome.out);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["file"], "in.stp");
  EXPECT_EQ(files[0]["findings"].size(), 3u);
  EXPECT_EQ(files[0]["findings"][0],
            json::parse(R"({"code": "V028", "severity": "error", "line": 8, "column": 14, "instance": 1,
                            "attribute": "DIRECTION.name", "text": "expected label (a string), found the integer 3",
                            "hint": null})"));
  EXPECT_EQ(files[1]["findings"], json::array());
}

TEST_F(Check, GivesSarif) {
  Write("a b.stp", FileWith(kTwoMistakes));
  const Outcome outcome = Velmar({"a b.stp", "--sarif"});
  EXPECT_EQ(outcome.status, 1);
  const json log = json::parse(outcome.out);
  EXPECT_EQ(log["version"], "2.1.0");
  const json& run = log["runs"][0];
  EXPECT_EQ(run["tool"]["driver"]["name"], "velmar");
  ASSERT_EQ(run["results"].size(), 3u);
  const json& result = run["results"][0];
  EXPECT_EQ(result["ruleId"], "V028");
  EXPECT_EQ(result["level"], "error");
  EXPECT_EQ(result["message"]["text"], "#1 DIRECTION.name: expected label (a string), found the integer 3");
  const json& place = result["locations"][0]["physicalLocation"];
  EXPECT_EQ(place["artifactLocation"]["uri"], "a%20b.stp");
  EXPECT_EQ(place["region"]["startLine"], 8);
  EXPECT_EQ(place["region"]["startColumn"], 14);
  for (const json& found : run["results"]) {
    const auto isRule = [&found](const json& rule) { return rule["id"] == found["ruleId"]; };
    const json& rules = run["tool"]["driver"]["rules"];
    EXPECT_NE(std::find_if(rules.begin(), rules.end(), isRule), rules.end());
  }
}

TEST_F(Check, GoesOnBehindAFileThatCannotBeRead) {
  Write("in.stp", FileWith(kTwoMistakes));
  const Outcome outcome = Velmar({"none.stp", "in.stp"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.out, HasSubstr("[V028]"));
  EXPECT_THAT(outcome.err, HasSubstr("velmar: error: none.stp does not exist\n"));
}

TEST_F(Check, SaysThatASchemaIsNotSupported) {
  Write("in.stp", FileWith("#1=IFCWALL($);\n", "IFC4"));
  const Outcome outcome = Velmar({"in.stp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("in.stp:5:1: error: schema 'IFC4' is not supported; supported: "));
}

TEST_F(Check, ComparesWithAnotherSchema) {
  Write("in.stp", FileWith(kTwoMistakes, "IFC4"));
  EXPECT_THAT(Velmar({"in.stp", "--schema", "AP214"}).out, HasSubstr("#1 DIRECTION.name: expected label"));
  EXPECT_EQ(Velmar({"in.stp", "--schema", "NONE"}).status, 2);
}

TEST_F(Check, ComparesWithTheSchemaOfAnExpressText) {
  Write("gears.exp",
        "SCHEMA gears; TYPE material = ENUMERATION OF (steel, brass); END_TYPE;\n"
        "ENTITY gear; teeth : INTEGER; made_of : OPTIONAL material; END_ENTITY; END_SCHEMA;\n");
  Write("in.stp", FileWith("#1=GEAR(12,.STEEL.);\n#2=GEAR('x',.WOOD.);\n", "GEARS"));
  const Outcome outcome = Velmar({"in.stp", "--express", "gears.exp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, AllOf(HasSubstr("#2 GEAR.teeth: expected integer, found a string [V028]\n"),
                                 HasSubstr("#2 GEAR.made_of: expected an item of material (BRASS, STEEL), found .WOOD. [V032]\n"), Not(HasSubstr("#1 "))));
  Write("wrong.exp", "SCHEMA gears; ENTITY gear; teeth : INTEGR; END_ENTITY; END_SCHEMA;\n");
  const Outcome wrong = Velmar({"in.stp", "--express", "wrong.exp"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.err, HasSubstr("wrong.exp has errors"));
}

TEST_F(Check, ExitsWith1WhereThereAreWarningsOnly) {
  Write("in.stp", FileWith("#1=DIRECTION('',(1,0.));\n"));
  const Outcome outcome = Velmar({"in.stp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "in.stp: 0 errors, 1 warning\n");
}

TEST_F(Check, SaysWhatAMisspeltNameMayMean) {
  Write("in.stp", FileWith("#1=DIRECTOIN('',(1.,0.));\n"));
  EXPECT_THAT(Velmar({"in.stp"}).out, HasSubstr("AUTOMOTIVE_DESIGN has no such entity [V008]; did you mean 'DIRECTION'?\n"));
  const json files = json::parse(Velmar({"in.stp", "--json"}).out);
  EXPECT_EQ(files[0]["findings"][0]["hint"], "did you mean 'DIRECTION'?");
}

TEST_F(Check, FindsADamagedByteOrderMark) {
  Write("in.stp", "\xEF\xBB" + FileWith(""));
  const Outcome outcome = Velmar({"in.stp"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("in.stp:1:1: error: damaged byte order mark"));
}

}  // namespace
