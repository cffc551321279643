// Which schema a file is read with, and which schema libraries that takes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string kVelmar = VELMAR_PROGRAM;
const std::string kLf = "_MIM_LF { 1 0 10303 442 3 1 4 }";

const bool kNoneIsBuilt = std::string(VELMAR_BUILT_SCHEMAS).empty();

// Whether the build has a schema library.
bool IsBuilt(const std::string& library) {
  return std::string("," VELMAR_BUILT_SCHEMAS ",").find("," + library + ",") != std::string::npos;
}

#define NEEDS_LIBRARY(name) \
  if (!IsBuilt(name)) GTEST_SKIP() << "this build leaves the library " << (name) << " out"

class SchemaOfFile : public testing::Test {
 protected:
  std::string Write(const std::string& data, const std::string& schema = "AUTOMOTIVE_DESIGN") {
    return WriteFile(directory_.Path("in.stp"), FileWith(data, schema));
  }
  Outcome Convert(const std::vector<std::string>& options) {
    std::vector<std::string> command = {kVelmar, "convert", directory_.Path("in.stp"), "-o", Out()};
    command.insert(command.end(), options.begin(), options.end());
    return RunProgram(command);
  }
  std::string Out() { return directory_.Path("out.stp"); }

  TemporaryDirectory directory_;
};

// --------------------------------------------------------------------------------------------- what is
// loaded

using Libraries = std::set<std::string>;

// The schema libraries that the program loads, as the dynamic loader reports them.
Libraries Loaded(const std::vector<std::string>& arguments) {
  TemporaryDirectory directory;
  Setting setting;
  setting.before = [&directory] {
    setenv("LD_DEBUG", "files", 1);
    setenv("LD_DEBUG_OUTPUT", directory.Path("loader").c_str(), 1);
  };
  std::vector<std::string> command = {kVelmar};
  command.insert(command.end(), arguments.begin(), arguments.end());
  RunProgram(command, setting);
  Libraries libraries;
  bool sawLibrary = false;
  for (const auto& entry : fs::directory_iterator(directory.Path(""))) {
    std::istringstream lines(ReadFile(entry.path().string()));
    for (std::string line; std::getline(lines, line);) {
      if (line.find("calling init:") == std::string::npos) continue;
      const std::string file = line.substr(line.rfind('/') + 1);
      sawLibrary = sawLibrary || file == "libVelmar_3.1.so";
      const std::string start = "libVelmar";
      const std::string end = "_3.1.so";
      if (file.compare(0, start.size(), start) != 0 || file.size() <= start.size() + end.size()) continue;
      const std::string library = file.substr(start.size(), file.size() - start.size() - end.size());
      if (library != "LateBound") libraries.insert(library);  // which belongs to the program
    }
  }
  EXPECT_TRUE(sawLibrary) << "the loader reported nothing";
  return libraries;
}

TEST_F(SchemaOfFile, VersionHelpAndWrongUsageLoadNoLibrary) {
  EXPECT_THAT(Loaded({"--version"}), IsEmpty());
  EXPECT_THAT(Loaded({"--help"}), IsEmpty());
  EXPECT_THAT(Loaded({"info", "--help"}), IsEmpty());
  EXPECT_THAT(Loaded({"info", "--schema", "NONE", "in.stp"}), IsEmpty());
  EXPECT_THAT(Loaded({"info", directory_.Path("missing.stp")}), IsEmpty());
}

TEST_F(SchemaOfFile, OnlyItsLibraryIsLoaded) {
  if (IsBuilt("AutomotiveDesign")) {
    EXPECT_THAT(Loaded({"info", Write(kPoint)}), ElementsAre("AutomotiveDesign"));
  }
  if (IsBuilt("ConfigControlDesign")) {
    EXPECT_THAT(Loaded({"info", Write(kPoint, "CONFIG_CONTROL_DESIGN")}), ElementsAre("ConfigControlDesign"));
  }
  if (IsBuilt("Ap242")) {
    EXPECT_THAT(Loaded({"info", Write(kPoint, "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING" + kLf)}),
                ElementsAre("Ap242"));
    EXPECT_THAT(Loaded({"info", "--schema", "AP242", Write(kPoint)}), ElementsAre("Ap242"));
  }
}

TEST_F(SchemaOfFile, TheFallbackIsLoadedForATypeThatTheSchemaLacks) {
  NEEDS_LIBRARY("StepIrAic");
  const Libraries all = {"Ap242", "AutomotiveDesign", "StepIrAic"};
  EXPECT_EQ(Loaded({"info", Write("#1=MECHANICAL_CONTEXT('',#2,'');\n" + kPoint)}), all);
  EXPECT_EQ(Loaded({"info", Write("#1=NO_SUCH_TYPE();\n")}), all);
  EXPECT_EQ(Loaded({"info", Write("#1=(REPRESENTATION_ITEM('')NO_SUCH_TYPE());\n")}), all);
}

TEST_F(SchemaOfFile, TheFallbackIsNotLoadedForTheHeaderNorForASchemaThatIsNotSupported) {
  NEEDS_LIBRARY("AutomotiveDesign");
  std::string text = FileWith(kPoint);
  text.replace(text.find("ENDSEC;"), 0, "SOME_HEADER_RECORD();\n");
  const std::string in = WriteFile(directory_.Path("header.stp"), text);
  EXPECT_THAT(Loaded({"info", in}), ElementsAre("AutomotiveDesign"));
  EXPECT_THAT(Loaded({"info", Write("#1=IFCWALL();\n", "IFC4")}), ElementsAre("AutomotiveDesign"));
}

TEST_F(SchemaOfFile, TypesThatItLacksAreKeptWhereTheFallbackHasThem) {
  NEEDS_LIBRARY("StepIrAic");
  Write("#1=APPLICATION_CONTEXT('x');\n#2=MECHANICAL_CONTEXT('a',#1,'b');\n#3=DESIGN_CONTEXT('a',#1,'b');\n");
  const Outcome outcome = Convert({});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(ReadFile(Out()), HasSubstr("#1 = APPLICATION_CONTEXT('x');\n"
                                         "#2 = MECHANICAL_CONTEXT('a', #1, 'b');\n"
                                         "#3 = DESIGN_CONTEXT('a', #1, 'b');\n"));
}

TEST_F(SchemaOfFile, WhatIsInNoSchemaIsReportedOnce) {
  NEEDS_LIBRARY("AutomotiveDesign");
  const std::string in =
      Write("#1=PRODUCT_TYPE('','','',(#2));\n" + std::string("#2=CARTESIAN_POINT('',(1.,2.));\n"));
  const Outcome outcome = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(
      outcome.err,
      in + ":8:1: error: 1 instance of PRODUCT_TYPE kept by position: AUTOMOTIVE_DESIGN has no such entity (#1) [V008]\n"
           "  #1=PRODUCT_TYPE('','','',(#2));\n"
           "  ^\n");
}

// ------------------------------------------------------------------------------------- libraries that are
// missing

// The program with libraries from a folder of its own, which holds those of the build that are named.
class MissingLibrary : public SchemaOfFile {
 protected:
  void SetUp() override {
    fs::create_directory(directory_.Path("lib"));
    Link("Velmar");
    setting_.before = [this] { setenv("LD_LIBRARY_PATH", directory_.Path("lib").c_str(), 1); };
  }
  std::string File(const std::string& library) { return directory_.Path("lib/lib" + library + "_3.1.so"); }
  void Link(const std::string& library) {
    fs::copy_file(fs::path(VELMAR_LIBRARY_FOLDER) / fs::path(File(library)).filename(), File(library));
  }
  Outcome Run(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {kVelmar};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunProgram(command, setting_);
  }

  Setting setting_;
};

TEST_F(MissingLibrary, OfTheSchemaIsNamedAndNoFaultOfTheFile) {
  NEEDS_LIBRARY("AutomotiveDesign");
  const std::string in = Write(kPoint + "#2=CARTESIAN_POINT(;\n");
  const std::string message = "velmar: error: the schema library of AUTOMOTIVE_DESIGN cannot be loaded: " +
                              File("VelmarAutomotiveDesign") +
                              ": cannot open shared object file: No such file or directory\n";
  for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
           {"info", in}, {"info", "--schema", "AP214", in}, {"convert", in, "-o", Out()}}) {
    const Outcome outcome = Run(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, message);
  }
  EXPECT_FALSE(fs::exists(Out()));
  EXPECT_EQ(Run({"--version"}).status, 0);
}

TEST_F(MissingLibrary, ThatIsNoLibraryIsNamed) {
  NEEDS_LIBRARY("AutomotiveDesign");
  WriteFile(File("VelmarAutomotiveDesign"), "nothing");
  const Outcome outcome = Run({"info", Write(kPoint)});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr(File("VelmarAutomotiveDesign") + ": file too short"));
}

TEST_F(MissingLibrary, OfTheFallbackIsAWarning) {
  NEEDS_LIBRARY("StepIrAic");
  Link("VelmarAutomotiveDesign");
  const std::string in = Write(kPoint + "#2=MECHANICAL_CONTEXT('',#2,'');\n#3=DESIGN_CONTEXT('',#2,'');\n");
  const Outcome outcome = Run({"info", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("instances               3 of 3 types\n"));
  EXPECT_THAT(
      outcome.err,
      HasSubstr("1 instance of MECHANICAL_CONTEXT kept by position: AUTOMOTIVE_DESIGN has no such entity (#2) [V008]\n"));
  EXPECT_THAT(outcome.err, HasSubstr(in + ": warning: the schema library of STEP_IR_AIC cannot be loaded: " +
                                     File("VelmarStepIrAic") + ": cannot open shared object file"));
  EXPECT_EQ(Run({"info", Write(kPoint)}).status, 0);
}

// ------------------------------------------------------------------------------------------------- --schema
// NAME

struct Name {
  const char* name;
  const char* library;
  const char* readAs;
};

std::ostream& operator<<(std::ostream& out, const Name& name) { return out << name.name; }

class SchemaName : public SchemaOfFile, public testing::WithParamInterface<Name> {};

// An instance of a type that every schema has.
constexpr const char* kPerson = "#1=PERSON('1',$,$,$,$,$);\n";

TEST_P(SchemaName, ChoosesTheSchemaWhateverTheFileSays) {
  NEEDS_LIBRARY(GetParam().library);
  for (const char* fileSchema : {"AUTOMOTIVE_DESIGN", "CONFIG_CONTROL_DESIGN", "SOMETHING_ELSE", ""}) {
    const std::string in = Write(kPerson, fileSchema);
    const Outcome outcome = RunProgram({kVelmar, "info", "--schema", GetParam().name, in});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("schema                  " + std::string(fileSchema) + "\n"));
    EXPECT_THAT(outcome.out, HasSubstr("read as                 " + std::string(GetParam().readAs) + "\n"));
  }
}

constexpr const char* kAp203 = "CONFIG_CONTROL_DESIGN (AP203)";
constexpr const char* kAp203E2 =
    "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF (AP203 edition 2)";
constexpr const char* kAp214 = "AUTOMOTIVE_DESIGN (AP214)";
constexpr const char* kAp242 = "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM (AP242)";
constexpr const char* kPlib = "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA (PLIB)";
constexpr const char* kPlibLibrary = "Iso1358425Iec613605LibraryImplicitSchema";

INSTANTIATE_TEST_SUITE_P(
    Everyday, SchemaName,
    testing::Values(Name{"AP203", "ConfigControlDesign", kAp203},
                    Name{"ap203", "ConfigControlDesign", kAp203}, Name{"AP203E2", "Ap203E2", kAp203E2},
                    Name{"AP203 edition 2", "Ap203E2", kAp203E2}, Name{"AP214", "AutomotiveDesign", kAp214},
                    Name{"Ap214", "AutomotiveDesign", kAp214}, Name{"AP242", "Ap242", kAp242},
                    Name{"ap242", "Ap242", kAp242}, Name{"PLIB", kPlibLibrary, kPlib},
                    Name{"plib", kPlibLibrary, kPlib}));

INSTANTIATE_TEST_SUITE_P(Registry, SchemaName,
                         testing::Values(Name{"CONFIG_CONTROL_DESIGN", "ConfigControlDesign", kAp203},
                                         Name{"config_control_design", "ConfigControlDesign", kAp203},
                                         Name{"AP203_E2", "Ap203E2", kAp203E2},
                                         Name{"AUTOMOTIVE_DESIGN", "AutomotiveDesign", kAp214},
                                         Name{"automotive_design", "AutomotiveDesign", kAp214},
                                         Name{"ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", kPlibLibrary,
                                              kPlib}));

INSTANTIATE_TEST_SUITE_P(
    InFiles, SchemaName,
    testing::Values(Name{"AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
                         "Ap203E2", kAp203E2},
                    Name{"AUTOMOTIVE_DESIGN_CC2", "AutomotiveDesign", kAp214},
                    Name{"AUTOMOTIVE_DESIGN { 1 0 10303 214 3 1 1 }", "AutomotiveDesign", kAp214},
                    Name{"ap242_managed_model_based_3d_engineering_mim_lf", "Ap242", kAp242},
                    Name{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM", "Ap242", kAp242}));

class UnknownSchemaName : public SchemaOfFile, public testing::WithParamInterface<std::string> {};

TEST_P(UnknownSchemaName, ExitsWith2AndListsThoseThatThereAre) {
  const std::string in = Write(kPoint);
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"info", in}, {"convert", in, "-o", Out()}}) {
    std::vector<std::string> command = {kVelmar};
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.insert(command.end(), {"--schema", GetParam()});
    const Outcome outcome = RunProgram(command);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err,
                StartsWith("velmar: error: there is no schema '" + GetParam() + "'; there are: "));
    if (IsBuilt("AutomotiveDesign")) {
      EXPECT_THAT(outcome.err, HasSubstr("AP214 (AUTOMOTIVE_DESIGN)"));
    }
    if (kNoneIsBuilt) {
      EXPECT_THAT(outcome.err, EndsWith("there are: none\n"));
    }
    EXPECT_THAT(outcome.err, Not(HasSubstr("CUTTING_TOOL_SCHEMA_ARM)")));
  }
  EXPECT_FALSE(fs::exists(Out()));
}

INSTANTIATE_TEST_SUITE_P(All, UnknownSchemaName,
                         testing::Values("", "AP209", "IFC4", "AP21", "ISO13399", "STEP_IR_AIC", "PLI"));

TEST_F(SchemaOfFile, TypesAreThoseOfTheChosenSchema) {
  NEEDS_LIBRARY("Ap242");
  // Only AP214 has the type.
  const std::string in =
      Write("#1=APPLICATION_CONTEXT_RELATIONSHIP('','',$,$);\n", "AP242_MANAGED_MODEL" + kLf);
  const Outcome own = RunProgram({kVelmar, "info", in});
  EXPECT_EQ(own.status, 1);
  EXPECT_THAT(own.err,
              HasSubstr("APPLICATION_CONTEXT_RELATIONSHIP kept by position: AP242 has no such entity (#1) [V008]\n"));
  const Outcome chosen = RunProgram({kVelmar, "info", "--schema", "AP214", in});
  EXPECT_EQ(chosen.status, 0);
  EXPECT_EQ(chosen.err, "");
}

TEST_F(SchemaOfFile, StaysInTheWrittenFileAsTheFileStatesIt) {
  NEEDS_LIBRARY("Ap242");
  Write(kPoint, "SOMETHING_ELSE");
  for (const bool isChosen : {false, true}) {
    fs::remove(Out());
    const Outcome outcome = isChosen ? Convert({"--schema", "AP242"}) : Convert({});
    EXPECT_EQ(outcome.status, isChosen ? 0 : 1);
    EXPECT_EQ(outcome.err.empty(), isChosen) << outcome.err;
    EXPECT_THAT(ReadFile(Out()), HasSubstr("FILE_SCHEMA(('SOMETHING_ELSE'));\n"));
    EXPECT_THAT(ReadFile(Out()), HasSubstr("#1 = CARTESIAN_POINT('p', (1., 2., 3.));\n"));
  }
}

TEST_F(SchemaOfFile, IsStatedInTheWrittenFileWhereTheFileStatesNone) {
  NEEDS_LIBRARY("Ap242");
  std::string text = FileWith(kPoint);
  const std::string schema = "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n";
  text.erase(text.find(schema), schema.size());
  WriteFile(directory_.Path("in.stp"), text);
  const Outcome outcome = Convert({"--schema", "AP242"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(ReadFile(Out()), HasSubstr("FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM'));\n"));
}

}  // namespace
