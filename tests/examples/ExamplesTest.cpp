// The example programs do what they say.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "RunProgram.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

std::string Example(const std::string& name) { return std::string(EXAMPLES_FOLDER "/") + name; }

TEST(Examples, ReadAndList) {
  const Outcome outcome = RunProgram({Example("read_and_list"), SAMPLE_FILE});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "3 products\n"
            "  #12 VB-100 Bracket, complete\n"
            "  #16 VB-110 Winkel f\xC3\xBCr Tr\xC3\xA4ger\n"
            "  #20 VB-120 Pin 10 x 25\n"
            "3 uses\n"
            "  VB-110 in VB-100: bracket\n"
            "  VB-120 in VB-100: pin in the base\n"
            "  VB-120 in VB-100: pin in the wall\n");
}

TEST(Examples, EditAndWrite) {
  TemporaryDirectory directory;
  const Outcome outcome = RunProgram({Example("edit_and_write"), SAMPLE_FILE, directory.Path("out.stp")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "renamed: Tr\xC3\xA4ger, ge\xC3\xA4ndert\nmoved: 30 points\n");
  const std::string written = ReadFile(directory.Path("out.stp"));
  EXPECT_THAT(written, HasSubstr("#12 = PRODUCT('VB-100', 'Tr\\X\\E4ger, ge\\X\\E4ndert', "));
  EXPECT_THAT(written, HasSubstr("#31 = CARTESIAN_POINT('', (80., 0., 100.));\n"));
}

TEST(Examples, BuildFromNothing) {
  TemporaryDirectory directory;
  const Outcome outcome = RunProgram({Example("build_from_nothing"), directory.Path("out.stp")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "#4 = POLYLINE('triangle', (#1, #2, #3, #1));\n"
            "#5 = GEOMETRIC_CURVE_SET('', (#4));\n");
  EXPECT_THAT(ReadFile(directory.Path("out.stp")), HasSubstr("FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
                                                             "ENDSEC;\n"
                                                             "\n"
                                                             "DATA;\n"
                                                             "#1 = CARTESIAN_POINT('', (0., 0., 0.));\n"
                                                             "#2 = CARTESIAN_POINT('', (40., 0., 0.));\n"
                                                             "#3 = CARTESIAN_POINT('', (20., 34.5, 0.));\n"
                                                             "#4 = POLYLINE('triangle', (#1, #2, #3, #1));\n"
                                                             "#5 = GEOMETRIC_CURVE_SET('', (#4));\n"
                                                             "ENDSEC;\n"
                                                             "END-ISO-10303-21;\n"));
}

TEST(Examples, DumpInstance) {
  const Outcome outcome = RunProgram({Example("dump_instance"), SAMPLE_FILE, "33"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err,
            "VECTOR has 3 attributes:\n"
            "  name = ''\n"
            "  orientation = #28\n"
            "  magnitude = 1.\n");
  EXPECT_THAT(outcome.out, HasSubstr("\nDATA;\n"
                                     "#28 = DIRECTION('', (1., 0., 0.));\n"
                                     "#33 = VECTOR('', #28, 1.);\n"
                                     "ENDSEC;\n"
                                     "END-ISO-10303-21;\n"));
  EXPECT_EQ(RunProgram({Example("dump_instance"), SAMPLE_FILE, "384"}).status, 1);
}

TEST(Examples, LogToFile) {
  TemporaryDirectory directory;
  const std::string log = directory.Path("log");
  Outcome outcome = RunProgram({Example("log_to_file"), SAMPLE_FILE, log});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "0 errors\n");
  EXPECT_THAT(ReadFile(log), MatchesRegex("Reading from stream\nInput schema name: AUTOMOTIVE_DESIGN .*\n"));

  std::string damaged = ReadFile(SAMPLE_FILE);
  damaged.replace(damaged.find("#1="), 3, "#1+");
  outcome = RunProgram({Example("log_to_file"), WriteFile(directory.Path("damaged.stp"), damaged), log});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, MatchesRegex("-- line 11 col 3: .*\n1 errors\n"));
  EXPECT_THAT(ReadFile(log), HasSubstr("-- line 11 col 3: "));
}

TEST(Examples, WalkFaces) {
  TemporaryDirectory directory;
  Outcome outcome = RunProgram({Example("walk_faces"), SAMPLE_FILE});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "#274 bracket\n"
            "  #80 front: plane, bounds: 1\n"
            "  #128 back: plane, bounds: 1\n"
            "  #152 bottom: plane, bounds: 2\n"
            "  #164 end: plane, bounds: 1\n"
            "  #185 base top: plane, bounds: 2\n"
            "  #209 wall inside: plane, bounds: 2\n"
            "  #221 wall top: plane, bounds: 1\n"
            "  #239 wall outside: plane, bounds: 2\n"
            "  #248 fillet: cylinder of radius 6, bounds: 1\n"
            "  #260 hole in the base: cylinder of radius 5, bounds: 1\n"
            "  #272 hole in the wall: cylinder of radius 5, bounds: 1\n"
            "#345 pin\n"
            "  #288 head top: plane, bounds: 1\n"
            "  #305 head side: cylinder of radius 8, bounds: 1\n"
            "  #319 head underside: plane, bounds: 2\n"
            "  #337 shaft side: cylinder of radius 5, bounds: 1\n"
            "  #343 shaft end: plane, bounds: 1\n"
            "16 faces\n");

  // References that are unset, lead nowhere, or to a direction; and a surface that has no operation of its
  // own.
  std::string damaged = ReadFile(SAMPLE_FILE);
  const std::pair<std::string, std::string> changes[] = {
      {"(#288,#305,", "(#27,#9999,"},
      {"(#308,#316),#318", "(#308,#27),#27"},
      {"(#334),#336", "(#334),$"},
      {"CYLINDRICAL_SURFACE('',#246,6.)", "TOROIDAL_SURFACE('',#246,6.,1.)"},
  };
  for (const auto& [what, other] : changes) {
    const std::size_t place = damaged.find(what);
    ASSERT_NE(place, std::string::npos) << what;
    damaged.replace(place, what.size(), other);
  }
  outcome = RunProgram({Example("walk_faces"), WriteFile(directory.Path("damaged.stp"), damaged)});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("  #248 fillet: TOROIDAL_SURFACE, bounds: 1\n"));
  EXPECT_THAT(outcome.out, HasSubstr("#345 pin\n"
                                     "  #319 head underside: surface missing, bounds: 1\n"
                                     "  #337 shaft side: surface missing, bounds: 1\n"
                                     "  #343 shaft end: plane, bounds: 1\n"
                                     "14 faces\n"));
  EXPECT_EQ(RunProgram({Example("walk_faces"), directory.Path("none.stp")}).status, 1);
}

TEST(Examples, LateBinding) {
  TemporaryDirectory directory;
  Outcome outcome = RunProgram({Example("late_binding"), SCHEMA_FILE, SAMPLE_FILE});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("#5 LENGTH_UNIT\n  dimensions = *\n"));
  EXPECT_THAT(outcome.out, HasSubstr("#20 PRODUCT\n"
                                     "  id = 'VB-120'\n"
                                     "  name = 'Pin 10 x 25'\n"
                                     "  description = $\n"
                                     "  frame_of_reference = (#3)\n"
                                     "#21 PRODUCT_DEFINITION_FORMATION\n"));
  const std::string schema = WriteFile(directory.Path("bad.exp"),
                                       "SCHEMA s;\nENTITY e;\n  a : rael;\nEND_ENTITY;\nEND_SCHEMA;\n");
  outcome = RunProgram({Example("late_binding"), schema, SAMPLE_FILE});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("bad.exp:3:7: error: unknown type 'rael' [E021]"));
  outcome = RunProgram({Example("late_binding"), SCHEMA_FILE, directory.Path("none.stp")});
  EXPECT_EQ(outcome.status, 1);
}

class ExampleUsage : public testing::TestWithParam<const char*> {};

TEST_P(ExampleUsage, IsShownWithoutArguments) {
  const Outcome outcome = RunProgram({Example(GetParam())});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr(std::string("usage: ") + GetParam() + " "));
}

INSTANTIATE_TEST_SUITE_P(Every, ExampleUsage,
                         testing::Values("read_and_list", "edit_and_write", "build_from_nothing",
                                         "dump_instance", "log_to_file", "walk_faces", "late_binding"));

TEST(Examples, OwnSchema) {
  const Outcome outcome = RunProgram({Example("list_tools"), SOURCE_FOLDER "/examples/own_schema/tools.stp"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out,
            "D-6.8: 6.8 mm, coating TITANIUM_NITRIDE, in A1, left\n"
            "D-5.0: 5 mm, coating NONE, in A1, left\n"
            "S-12.4: 12.4 mm, in A2\n"
            "D-1.2: 1.2 mm, coating DIAMOND, not put away\n");
  EXPECT_EQ(RunProgram({Example("list_tools"), "missing.stp"}).status, 1);
}

}  // namespace
