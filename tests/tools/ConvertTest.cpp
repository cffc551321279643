#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::MatchesRegex;

// Converts files within a directory of its own.
class Convert : public testing::Test {
 protected:
  void Write(const std::string& name, const std::string& text) { WriteFile(directory_.Path(name), text); }
  std::string Read(const std::string& name) { return ReadFile(directory_.Path(name)); }
  bool Exists(const std::string& name) { return fs::exists(directory_.Path(name)); }
  Outcome Run(const std::string& in, const std::string& out, Setting setting = {}) {
    setting.directory = directory_.Path("");
    return RunProgram({VELMAR_PROGRAM, "convert", in, "-o", out}, setting);
  }
  std::size_t FilesThere() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory_.Path("")), {}));
  }

  TemporaryDirectory directory_;
};

const std::string kBroken = FileWith("#1=CARTESIAN_POINT('p',(1.,2.);\n");
const std::string kNothing = FileWith("#1073741824=COLOUR();\n");

TEST_F(Convert, WritesWhatItHasRead) {
  Write("in.stp", FileWith(kPoint));
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, MatchesRegex("in.stp: 1 instance, 240 bytes, read in [0-9.]+ ms\n"
                                        "out.stp: 1 instance, [0-9]+ bytes, written in [0-9.]+ ms\n"));
  EXPECT_EQ(Read("out.stp"),
            "ISO-10303-21;\n"
            "HEADER;\n"
            "FILE_DESCRIPTION(('a test'), '2;1');\n"
            "FILE_NAME('t.stp', '2026-01-01T00:00:00', ('A', 'B'), ('O'), 'P', 'S', 'Z');\n"
            "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"
            "ENDSEC;\n"
            "\n"
            "DATA;\n"
            "#1 = CARTESIAN_POINT('p', (1., 2., 3.));\n"
            "ENDSEC;\n"
            "END-ISO-10303-21;\n");
}

TEST_F(Convert, WritingTheSampleTwiceGivesTheSameBytes) {
  ASSERT_EQ(Run(SAMPLE_FILE, "first.stp").status, 0);
  ASSERT_EQ(Run("first.stp", "second.stp").status, 0);
  EXPECT_EQ(Read("first.stp"), Read("second.stp"));
  EXPECT_THAT(Read("first.stp"),
              HasSubstr("#383 = MECHANICAL_DESIGN_GEOMETRIC_PRESENTATION_REPRESENTATION("));
}

TEST_F(Convert, InAndOutMayBeTheSameFile) {
  Write("a.stp", FileWith(kPoint));
  EXPECT_EQ(Run("a.stp", "a.stp").status, 0);
  EXPECT_THAT(Read("a.stp"), HasSubstr("\n#1 = CARTESIAN_POINT('p', (1., 2., 3.));\n"));
  EXPECT_EQ(FilesThere(), 1u);
}

TEST_F(Convert, AFileThatCouldNotBeKeptWholeIsNotReplacedByItself) {
  Write("a.stp", kBroken);
  const Outcome outcome = Run("a.stp", "./a.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err,
              HasSubstr("a.stp: error: the file is left as it is: not all of it could be kept [V027]\n"));
  EXPECT_EQ(Read("a.stp"), kBroken);
}

TEST_F(Convert, AFileOfWhichAValueIsNotKeptIsNotReplacedByItselfEither) {
  const std::string text = FileWith("#1=DIRECTION('',(1.,1.E999));\n");
  Write("a.stp", text);
  EXPECT_EQ(Run("a.stp", "b.stp").status, 1);
  EXPECT_EQ(Run("a.stp", "a.stp").status, 1);
  EXPECT_EQ(Read("a.stp"), text);
}

TEST_F(Convert, AFileWithErrorsThatIsKeptWholeMayBeReplacedByItself) {
  Write("a.stp", FileWith("#1=VEKTOR('',#9);\n#2=DIRECTION('',(1.,0.),3);\n#3=DIRECTION('');\n"));
  EXPECT_EQ(Run("a.stp", "a.stp").status, 1);
  EXPECT_THAT(Read("a.stp"), HasSubstr("DATA;\n"
                                       "#1 = VEKTOR('', #9);\n"
                                       "#2 = DIRECTION('', (1., 0.), 3);\n"
                                       "#3 = DIRECTION('', $);\n"
                                       "ENDSEC;\n"));
}

TEST_F(Convert, WhatCouldBeKeptOfAFileWithErrorsIsWritten) {
  Write("in.stp", kBroken);
  Write("out.stp", "something else");
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(Read("out.stp"), HasSubstr("#1 = CARTESIAN_POINT('p', (1., 2.));\n"));
}

TEST_F(Convert, NothingIsWrittenWhereNothingCouldBeRead) {
  Write("in.stp", kNothing);
  Write("out.stp", "something else");
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("in.stp: error: out.stp is not written: nothing could be read [V027]\n"));
  EXPECT_EQ(Read("out.stp"), "something else");
  EXPECT_EQ(Run("in.stp", "new.stp").status, 1);
  EXPECT_FALSE(Exists("new.stp"));
}

// The schemas of this build, as messages list them.
const std::string kSupported = VELMAR_SUPPORTED_SCHEMAS;

TEST_F(Convert, AFileWhoseSchemaIsNotSupportedIsWrittenAllTheSame) {
  Write("in.stp", FileWith(kPoint + "#2=(NO_SUCH_TYPE());\n", "IFC4"));
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "in.stp:5:1: error: schema 'IFC4' is not supported; supported: " + kSupported +
            " [V006]\n"
            "  FILE_SCHEMA(('IFC4'));\n"
            "  ^\n"
            "in.stp: error: 1 record of 1 unknown type kept by position: NO_SUCH_TYPE [V008]\n");
  EXPECT_THAT(Read("out.stp"), HasSubstr("FILE_SCHEMA(('IFC4'));\n"));
  EXPECT_THAT(Read("out.stp"), HasSubstr("\n#1 = CARTESIAN_POINT('p', (1., 2., 3.));\n#2 = (\n   NO_SUCH_TYPE ()\n);\n"));
}

using Schema = std::pair<std::string, bool>;

class ConvertSchema : public Convert, public testing::WithParamInterface<Schema> {};

TEST_P(ConvertSchema, IsSupportedWhereItsNameIsThatOfAp214) {
  Write("in.stp", FileWith(kPoint, GetParam().first));
  EXPECT_EQ(Run("in.stp", "out.stp").status, GetParam().second ? 0 : 1);
  EXPECT_TRUE(Exists("out.stp"));
}

INSTANTIATE_TEST_SUITE_P(Names, ConvertSchema,
                         testing::Values(Schema{"AUTOMOTIVE_DESIGN { 1 0 10303 214 3 1 1 }", true},
                                         Schema{"AUTOMOTIVE_DESIGN_CC2", true},
                                         Schema{"automotive_design", true}, Schema{"AP214", true},
                                         Schema{"CUTTING_TOOL_SCHEMA_ARM", false},
                                         Schema{"SOMETHING_ELSE", false}, Schema{"", false}));

TEST_F(Convert, KeepsAFileOfEverySupportedSchema) {
  for (const char* schema :
       {"CONFIG_CONTROL_DESIGN",
        "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
        "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF"}) {
    const std::string name = schema;
    const bool isSupported = kSupported.find(name.substr(0, name.rfind("_LF"))) != std::string::npos;
    Write("in.stp", FileWith(kPoint, name));
    EXPECT_EQ(Run("in.stp", "out.stp").status, isSupported ? 0 : 1) << schema;
  }
}

TEST_F(Convert, AFileWithoutASchemaIsNotSupported) {
  std::string text = FileWith(kPoint);
  const std::string schema = "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n";
  text.erase(text.find(schema), schema.size());
  Write("in.stp", text);
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err,
              HasSubstr("in.stp: error: the file names no schema; supported: " + kSupported + " [V007]\n"));
}

TEST_F(Convert, ExitsWith2WhereOutCannotBeWritten) {
  Write("in.stp", FileWith(kPoint));
  fs::create_directory(directory_.Path("folder"));
  Outcome outcome = Run("in.stp", "folder");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: folder is a directory\n");
  outcome = Run("in.stp", "missing/out.stp");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "velmar: error: missing/out.stp cannot be written: No such file or directory\n");
}

TEST_F(Convert, ExitsWith2OnAFullDisk) {
  Write("in.stp", FileWith(kPoint));
  const Outcome outcome = Run("in.stp", "/dev/full");
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err,
            "/dev/full: error: No space left on device [V027]\n"
            "/dev/full: error: not written [V027]\n");
  EXPECT_EQ(outcome.out, "");
}

TEST_F(Convert, WhatOutHoldsStaysWhereWritingBreaksOff) {
  Write("in.stp", FileWith(kPoint));
  Write("out.stp", "something else");
  Setting setting;
  setting.before = [] {
    const struct rlimit limit = {100, 100};
    setrlimit(RLIMIT_FSIZE, &limit);
  };
  const Outcome outcome = Run("in.stp", "out.stp", setting);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.err, "out.stp: error: File too large [V027]\nout.stp: error: not written [V027]\n");
  EXPECT_EQ(Read("out.stp"), "something else");
  EXPECT_EQ(Run("in.stp", "new.stp", setting).status, 2);
  EXPECT_FALSE(Exists("new.stp"));
  EXPECT_EQ(FilesThere(), 2u);
}

TEST_F(Convert, WritesThroughASymbolicLinkAndKeepsPermissions) {
  Write("in.stp", FileWith(kPoint));
  Write("target.stp", "something else");
  fs::permissions(directory_.Path("target.stp"), fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("target.stp", directory_.Path("link.stp"));
  EXPECT_EQ(Run("in.stp", "link.stp").status, 0);
  EXPECT_TRUE(fs::is_symlink(directory_.Path("link.stp")));
  EXPECT_THAT(Read("target.stp"), HasSubstr("#1 = CARTESIAN_POINT"));
  EXPECT_EQ(fs::status(directory_.Path("target.stp")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(Convert, OutMayBeADevice) {
  Write("in.stp", FileWith(kPoint));
  const Outcome outcome = Run("in.stp", "/dev/null");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "");
}

// What a file holds beyond what can be kept, and what is said of it. The first record stands on line 8.
struct Loss {
  const char* name;
  const char* data;
  int status;
  const char*
      messages;  // each "line:col: severity: text" on a line of its own; those without a place begin with ":"
};

void PrintTo(const Loss& loss, std::ostream* os) { *os << loss.name; }

class ConvertLoss : public Convert, public testing::WithParamInterface<Loss> {};

TEST_P(ConvertLoss, IsReported) {
  Write("in.stp", FileWith(std::string(GetParam().data) + "#900=DIRECTION('',(1.,0.));\n"));
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, GetParam().status);
  std::string messages;
  std::istringstream lines(outcome.err);
  for (std::string line; std::getline(lines, line);) {
    if (line.compare(0, 7, "in.stp:") == 0) messages += line.substr(7) + "\n";
  }
  EXPECT_EQ(messages, GetParam().messages);
}

const Loss kLosses[] = {
    {"Nothing", "#1=CARTESIAN_POINT('p',(1.,2.,3.));\n", 0, ""},
    {"UnknownType", "#1=VEKTOR('',#2,1.);\n#2=MY_TYPE();\n#3=VEKTOR();\n", 1,
     "8:1: error: 2 instances of VEKTOR kept by position: AUTOMOTIVE_DESIGN has no such entity (#1, #3) [V008]\n"
     "9:1: error: 1 instance of MY_TYPE kept by position: AUTOMOTIVE_DESIGN has no such entity (#2) [V008]\n"},
    {"ManyOfAnUnknownType", "#1=X();\n#2=X();\n#3=X();\n#4=X();\n", 1,
     "8:1: error: 4 instances of X kept by position: AUTOMOTIVE_DESIGN has no such entity (#1, #2, #3, ...) [V008]\n"},
    {"UserDefinedType", "#1=!MY_TYPE('a');\n", 1,
     "8:1: error: 1 instance of MY_TYPE kept by position: AUTOMOTIVE_DESIGN has no such entity (#1) [V008]\n"},
    {"UnknownPart", "#1=(LENGTH_UNIT()MY_PART(1)NAMED_UNIT(*)SI_UNIT($,.METRE.));\n", 1,
     "8:1: error: 1 partial record of MY_PART kept by position: AUTOMOTIVE_DESIGN has no such entity (#1) [V008]\n"},
    {"TypeOfTheHeaderInData", "#1=FILE_NAMES();\n", 1,
     "8:1: error: 1 instance of FILE_NAMES kept by position: AUTOMOTIVE_DESIGN has no such entity (#1) [V008]\n"},
    {"InScope", "#1=&SCOPE\n#2=X();\nENDSCOPE/#2/DIRECTION('',(1.,0.),3);\n", 1,
     "8:1: error: 1 record of DIRECTION with more parameters than attributes (2): the surplus is kept by position "
     "(#1) [V010]\n"
     "8:4: warning: the scope of #1 is not kept; what is in it is [V050]\n"
     "9:1: error: 1 instance of X kept by position: AUTOMOTIVE_DESIGN has no such entity (#2) [V008]\n"},
    {"TooManyParameters", "#1=DIRECTION('',(1.,0.),$);\n#2=DIRECTION('',(1.,0.),(1,2),3);\n", 1,
     "8:1: error: 2 records of DIRECTION with more parameters than attributes (2): the surplus is kept by position "
     "(#1, #2) [V010]\n"},
    {"TooManyInAPart", "#1=(LENGTH_UNIT(1)NAMED_UNIT(*)SI_UNIT($,.METRE.));\n", 1,
     "8:1: error: 1 record of LENGTH_UNIT with more parameters than attributes (0): the surplus is kept by position "
     "(#1) [V010]\n"},
    {"TooFewParameters", "#1=DIRECTION('');\n#2=DIRECTION();\n", 0,
     "8:1: warning: 2 records of DIRECTION with fewer parameters than attributes (2): the others have no value "
     "(#1, #2) [V011]\n"},
    {"NumberUsedTwice", "#1=COLOUR();\n#1=COLOUR();\n#1=DIRECTION('',(1.,0.));\n", 1,
     "9:1: error: #1 is used twice; the instance at 8:1 is not kept [V012]\n"
     "10:1: error: #1 is used twice; the instance at 9:1 is not kept [V012]\n"},
    {"NumberZero", "#0=COLOUR();\n", 1, "8:1: error: instance numbers begin at #1 [V013]\n"},
    {"ReferenceToNumberZero", "#1=VECTOR('',#0,1.);\n", 1, "8:14: error: instance numbers begin at #1 [V013]\n"},
    {"ReferenceOutOfRange", "#1=VECTOR('',#1073741824,1.);\n", 1,
     "8:14: error: instance numbers end at #1073741823 [V014]\n"},
    {"GreatestReference", "#1=VECTOR('',#1073741823,1.);\n", 0, ""},
    {"GreatestAndSmallestInteger", "#1=CARTESIAN_POINT('',(2147483647,-2147483648));\n", 0, ""},
    {"IntegerOfMoreThan32Bits", "#1=CARTESIAN_POINT('',(2147483648,-2147483649,123456789012345678901));\n", 0, ""},
    {"ReferenceOfMoreThan32Bits", "#1=VECTOR('',#4294967298,1.);\n", 1,
     "8:14: error: instance numbers end at #1073741823; #4294967298 is not kept [V014]\n"},
    {"NumberOfMoreThan32Bits", "#4294967297=COLOUR();\n", 1,
     "8:1: error: instance numbers end at #1073741823; #4294967297 is not kept [V014]\n"},
    {"GreatestAndSmallestReal", "#1=CARTESIAN_POINT('',(1.7976931348623157E+308,4.94E-324,0.E-999));\n", 0, ""},
    {"RealOutOfRange", "#1=CARTESIAN_POINT('',(1.E309,-1.e+0400));\n", 1,
     "8:24: error: the real number does not fit 64 bits and becomes infinite [V016]\n"
     "8:31: error: the real number does not fit 64 bits and becomes infinite [V016]\n"},
    {"RealTooSmall", "#1=CARTESIAN_POINT('',(1.E-324));\n", 1,
     "8:24: error: the real number does not fit 64 bits and becomes 0 [V016]\n"},
    {"Scope", "#1=&SCOPE\n#2=COLOUR();\nENDSCOPE/#2/COLOUR();\n", 0,
     "8:4: warning: the scope of #1 is not kept; what is in it is [V050]\n"},
    {"RecordUsedTwice", "#1=(LENGTH_UNIT()LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT($,.METRE.));\n", 1,
     "8:30: error: there is a second record LENGTH_UNIT in #1, which is not kept [V051]\n"},
    {"UnsetInList", "#1=DIRECTION('',(1.,$,0.,*));\n", 0, ""},
    {"EnumerationInList", "#1=DIRECTION('',(1.,.X.));\n", 0, ""},
    {"Binary", "#1=DIRECTION('',(1.,\"0A\"));\n#2=DIRECTION(\"0\",(1.));\n", 0, ""},
};

INSTANTIATE_TEST_SUITE_P(Every, ConvertLoss, testing::ValuesIn(kLosses),
                         [](const auto& info) { return std::string(info.param.name); });

// What a record holds, and how it is written.
struct Kept {
  const char* name;
  const char* record;
  const char* written;
};

void PrintTo(const Kept& kept, std::ostream* os) { *os << kept.name; }

class ConvertKept : public Convert, public testing::WithParamInterface<Kept> {};

TEST_P(ConvertKept, IsWrittenAsItWasRead) {
  Write("in.stp", FileWith("#1=" + std::string(GetParam().record) + ";\n"));
  Run("in.stp", "out.stp");
  const std::string written = std::string("DATA;\n#1 = ") + GetParam().written + ";\nENDSEC;\n";
  EXPECT_THAT(Read("out.stp"), HasSubstr(written));
  Run("out.stp", "again.stp");
  EXPECT_EQ(Read("again.stp"), Read("out.stp"));
}

const Kept kKept[] = {
    {"Binary", "DIRECTION(\"0AF\",(\"1\"))", "DIRECTION(\"0AF\", (\"1\"))"},
    {"Elements", "DIRECTION('',(1.,$,*,.X.))", "DIRECTION('', (1., $, *, .X.))"},
    {"TypedValues", "PRESENTATION_STYLE_ASSIGNMENT((X($),X(*),X(.Y.),X((1,.Y.)),!X(()),L(())))",
     "PRESENTATION_STYLE_ASSIGNMENT((X($), X(*), X(.Y.), X((1, .Y.)), !X(()), L(())))"},
    {"OtherKinds", "DIRECTION(5,.F.)", "DIRECTION(5, .F.)"},
    {"UnknownItem", "ORIENTED_EDGE('',*,*,#1,.MAYBE.)", "ORIENTED_EDGE('', *, *, #1, .MAYBE.)"},
    {"UnknownType", "VEKTOR('it''s',#2,(1,$),T(\"0\"))", "VEKTOR('it''s', #2, (1, $), T(\"0\"))"},
    {"UserDefinedType", "!MINE(1)", "!MINE(1)"},
    {"UnknownPart", "(LENGTH_UNIT()MY_PART(1)NAMED_UNIT(*)SI_UNIT($,.METRE.))",
     "(\n   LENGTH_UNIT ()\n   MY_PART (1)\n   NAMED_UNIT (*)\n   SI_UNIT ($, .METRE.)\n)"},
    {"UnknownPartsAlone", "(YOUR_PART(2)MY_PART(1))", "(\n   MY_PART (1)\n   YOUR_PART (2)\n)"},
    {"SurplusParameters", "DIRECTION('',(1.,0.),3,$)", "DIRECTION('', (1., 0.), 3, $)"},
    {"MissingParameters", "VECTOR('v')", "VECTOR('v', $, $)"},
    {"LongInteger", "CARTESIAN_POINT('',(-12345678901234567890))", "CARTESIAN_POINT('', (-12345678901234567890))"},
    {"Digits", "CARTESIAN_POINT('',(0.1,0.12345678901234568,1.7976931348623157E308))",
     "CARTESIAN_POINT('', (0.1, 0.12345678901234568, 1.7976931348623157E+308))"},
    {"Infinity", "CARTESIAN_POINT('',(-1.E999))", "CARTESIAN_POINT('', (-1.E+400))"},
};

INSTANTIATE_TEST_SUITE_P(All, ConvertKept, testing::ValuesIn(kKept),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(Convert, ValuesOfOtherKindsInTheHeaderAreKept) {
  std::string text = FileWith(kPoint);
  const std::string authors = "('A','B')";
  text.replace(text.find(authors), authors.size(), "(AUTHOR(.NOBODY.),$)");
  Write("in.stp", text);
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(Read("out.stp"),
              HasSubstr("FILE_NAME('t.stp', '2026-01-01T00:00:00', (AUTHOR(.NOBODY.), $), ('O'), 'P', 'S', 'Z');\n"));
}

TEST_F(Convert, NumbersInstancesAnew) {
  Write("in.stp", FileWith("#30=VECTOR('',#20,1.);\n"
                           "#20=DIRECTION('#30',(1.,0.));\n"
                           "#7=(LENGTH_UNIT(#20)MY_PART(T(#30),(#7,#6))NAMED_UNIT(#8)SI_UNIT($,.METRE.));\n"
                           "#9=VEKTOR(#20,(#30,L(#6)),#9,#1,$,*);\n"
                           "#1000=DIRECTION(#30,(#20,$),#1000);\n"
                           "#1001=MEASURE_WITH_UNIT(LENGTH_MEASURE(1.),#7);\n"
                           "#1002=POLYLINE('',(#20,#30,#1,#1073741823));\n"
                           "#1003=(GEOMETRIC_REPRESENTATION_ITEM()REPRESENTATION_ITEM('')"
                           "SHELL_BASED_SURFACE_MODEL((#30,#6))SURFACE_MODEL());\n"));
  Setting setting;
  setting.directory = directory_.Path("");
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", "in.stp", "-o", "out.stp", "--renumber", "-q"}, setting);
  EXPECT_THAT(outcome.out, HasSubstr("out.stp: 8 instances, "));
  EXPECT_THAT(Read("out.stp"), HasSubstr("DATA;\n"
                                         "#1 = (\n   LENGTH_UNIT (#3)\n   MY_PART (T(#4), (#1, #10))\n   NAMED_UNIT (#9)\n"
                                         "   SI_UNIT ($, .METRE.)\n);\n"
                                         "#2 = VEKTOR(#3, (#4, L(#10)), #2, #11, $, *);\n"
                                         "#3 = DIRECTION('#30', (1., 0.));\n"
                                         "#4 = VECTOR('', #3, 1.);\n"
                                         "#5 = DIRECTION(#4, (#3, $), #5);\n"
                                         "#6 = MEASURE_WITH_UNIT(LENGTH_MEASURE(1.), #1);\n"
                                         "#7 = POLYLINE('', (#3, #4, #11, #12));\n"
                                         "#8 = (\n   GEOMETRIC_REPRESENTATION_ITEM ()\n   REPRESENTATION_ITEM ('')\n"
                                         "   SHELL_BASED_SURFACE_MODEL ((#4, #10))\n   SURFACE_MODEL ()\n);\n"
                                         "ENDSEC;\n"));
}

TEST_F(Convert, NumbersAFileWithoutGapsAsItIs) {
  ASSERT_EQ(Run(SAMPLE_FILE, "plain.stp").status, 0);
  const std::string renumbered = directory_.Path("renumbered.stp");
  ASSERT_EQ(RunProgram({VELMAR_PROGRAM, "convert", SAMPLE_FILE, "-o", renumbered, "--renumber"}).status, 0);
  EXPECT_EQ(Read("renumbered.stp"), Read("plain.stp"));
}

TEST_F(Convert, ANumberThatCannotBeStoredLosesTheFile) {
  Write("in.stp", FileWith(kPoint + "#1073741824=DIRECTION('',(1.,0.));\n"));
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "in.stp:9:1: error: instance numbers end at #1073741823 [V014]\n"
            "  #1073741824=DIRECTION('',(1.,0.));\n"
            "  ^\n"
            "in.stp: error: an instance number is out of range; nothing of the file is kept [V004]\n"
            "in.stp: error: 2 of the 2 instances were not read because of the errors [V021]\n"
            "in.stp: error: out.stp is not written: nothing could be read [V027]\n");
}

TEST_F(Convert, InstancesThatErrorsHideAreCounted) {
  std::string text = FileWith(kPoint);
  text.insert(text.find("END-ISO"), "DATA;\n#2=COLOUR();\n#3=COLOUR();\nENDSEC;\n");
  Write("in.stp", text);
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("in.stp:10:1: error: \"END-ISO-10303-21;\" expected [V001]\n"));
  EXPECT_THAT(outcome.err,
              HasSubstr("in.stp: error: 2 of the 3 instances were not read because of the errors [V021]\n"));
}

TEST_F(Convert, FurtherHeaderRecordsAreKept) {
  std::string text = FileWith(kPoint);
  text.insert(text.find("ENDSEC;"), "FILE_POPULATION('A','B',('C'));\n!MINE();\n");
  Write("in.stp", text);
  const Outcome outcome = Run("in.stp", "in.stp");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.err,
              HasSubstr("in.stp:6:1: warning: 1 header record of FILE_POPULATION kept by position: the header has no such "
                        "entity [V009]\n"));
  EXPECT_THAT(outcome.err, HasSubstr("in.stp:7:1: warning: 1 header record of MINE kept by position: the header has no such "
                                     "entity [V009]\n"));
  EXPECT_THAT(Read("in.stp"), HasSubstr("\nFILE_POPULATION('A', 'B', ('C'));\n!MINE();\nENDSEC;\n"));
}

TEST_F(Convert, OfTwoHeaderRecordsOfOneKindOneIsKept) {
  std::string text = FileWith(kPoint);
  text.insert(text.find("ENDSEC;"), "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n");
  Write("in.stp", text);
  const Outcome outcome = Run("in.stp", "in.stp");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("in.stp:6:34: error: of two records FILE_SCHEMA in the header, one is not kept [V051]\n"));
  EXPECT_EQ(Read("in.stp"), text);
}

// A text that is written as this many characters with its apostrophes; what is read has far fewer.
std::string LongText(std::size_t length) {
  std::string text;
  for (std::size_t i = 0; i < (length - 2) / 5; ++i) text += '\xE9';  // \X\E9
  return text + std::string((length - 2) % 5, 'x');
}

const std::string kLongString = "in.stp: warning: 1 string written with more than 32,767 characters, which other programs may "
                                "not read: ";

TEST_F(Convert, WarnsOfAStringThatIsTooLongWhenItIsWritten) {
  Write("in.stp", FileWith("#7=CARTESIAN_POINT('" + LongText(32767) + "',(1.,2.));\n"));
  EXPECT_EQ(Run("in.stp", "out.stp").err, "");
  EXPECT_EQ(Run("out.stp", "again.stp").status, 0);

  Write("in.stp", FileWith("#7=CARTESIAN_POINT('" + LongText(32768) + "',(1.,2.));\n"));
  const Outcome outcome = Run("in.stp", "out.stp");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, kLongString + "#7 CARTESIAN_POINT.name [V024]\n");
  EXPECT_EQ(Run("out.stp", "again.stp").err, "out.stp" + kLongString.substr(6) + "#7 CARTESIAN_POINT.name [V024]\n");
  EXPECT_EQ(Read("again.stp"), Read("out.stp"));
}

TEST_F(Convert, AFileWithSuchAStringMayBeReplacedByItself) {
  Write("in.stp", FileWith("#7=CARTESIAN_POINT('" + LongText(32768) + "',(1.,2.));\n"));
  EXPECT_EQ(Run("in.stp", "out.stp").status, 0);
  EXPECT_EQ(Run("in.stp", "in.stp").status, 0);
  EXPECT_EQ(Read("in.stp"), Read("out.stp"));
}

TEST_F(Convert, SuchAStringMayBeInTheHeaderAListASelectOrAComplexInstance) {
  const std::string text = "'" + LongText(40000) + "'";
  std::string file = FileWith("#3=(GEOMETRIC_REPRESENTATION_ITEM()POINT()REPRESENTATION_ITEM(" + text + "));\n" +
                              "#4=MEASURE_WITH_UNIT(DESCRIPTIVE_MEASURE(" + text + "),#5);\n" +
                              "#5=CARTESIAN_POINT(" + text + ",(1.));\n");
  const std::string authors = "('A','B')";
  file.replace(file.find(authors), authors.size(), "('A'," + text + "," + text + ")");
  Write("in.stp", file);
  EXPECT_THAT(Run("in.stp", "out.stp").err,
              HasSubstr("in.stp: warning: 5 strings written with more than 32,767 characters, which other programs may not "
                        "read: FILE_NAME.author, #3 REPRESENTATION_ITEM.name, "
                        "#4 MEASURE_WITH_UNIT.value_component, ... [V024]\n"));
}

}  // namespace
