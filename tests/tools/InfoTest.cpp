#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "RunProgram.h"
#include "SampleFiles.h"

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

Outcome Info(const std::string& text) {
  TemporaryDirectory directory;
  WriteFile(directory.Path("in.stp"), text);
  Setting setting;
  setting.directory = directory.Path("");
  return RunProgram({VELMAR_PROGRAM, "info", "in.stp"}, setting);
}

TEST(Info, PrintsTheHeaderTheSchemaAndTheNumberOfInstances) {
  const Outcome outcome = Info(FileWith(kPoint));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_THAT(outcome.out, HasSubstr("file                    in.stp, 240 bytes\n"
                                     "description             a test\n"
                                     "implementation level    2;1\n"
                                     "name                    t.stp\n"
                                     "time stamp              2026-01-01T00:00:00\n"
                                     "author                  A; B\n"
                                     "organization            O\n"
                                     "preprocessor version    P\n"
                                     "originating system      S\n"
                                     "authorization           Z\n"
                                     "schema                  AUTOMOTIVE_DESIGN\n"
                                     "read as                 AUTOMOTIVE_DESIGN (AP214)\n"
                                     "schema library          libVelmarAutomotiveDesign_3.1.so\n"
                                     "instances               1 of 1 type\n"
                                     "complex instances       0\n"
                                     "largest number          #1\n"
                                     "unresolved references   none\n"
                                     "unknown types           none\n"));
}

TEST(Info, ShowsTextInUtf8) {
  const Outcome outcome = Info(FileWith(kPoint, "AUTOMOTIVE_DESIGN \\X2\\00E4652F\\X0\\"));
  EXPECT_THAT(outcome.out, HasSubstr("schema                  AUTOMOTIVE_DESIGN \xC3\xA4\xE6\x94\xAF\n"));
}

TEST(Info, ListsTypesTheMostFrequentFirstAndEquallyFrequentOnesByName) {
  const Outcome outcome =
      Info(FileWith("#1=CARTESIAN_POINT('',(1.,2.));\n#2=DIRECTION('',(1.,0.));\n#3=DIRECTION('',(0.,1.));\n"
                    "#4=(NAMED_UNIT(*)SI_UNIT($,.METRE.)LENGTH_UNIT());\n#5=COLOUR();\n"));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("instances               5 of 4 types\n"
                                     "complex instances       1\n"
                                     "largest number          #5\n"
                                     "unresolved references   none\n"
                                     "unknown types           none\n"
                                     "\n"
                                     "           2  DIRECTION\n"
                                     "           1  (LENGTH_UNIT NAMED_UNIT SI_UNIT)\n"
                                     "           1  CARTESIAN_POINT\n"
                                     "           1  COLOUR\n"
                                     "\n"
                                     "read in "));
}

TEST(Info, EndsWithTimeAndRate) {
  const std::string out = Info(FileWith(kPoint)).out;
  const std::size_t start = out.find("read in ");
  ASSERT_NE(start, std::string::npos);
  EXPECT_THAT(out.substr(start), MatchesRegex("read in [0-9]+\\.[0-9] ms, [0-9]+ MB/s, [0-9]+ MB of memory\n"));
}

TEST(Info, AFileWithErrorsIsShownAsFarAsItGoes) {
  const Outcome outcome = Info(FileWith("#1=CARTESIAN_POINT('',(1.,2.);\n#2=DIRECTION('',(1.,0.));\n"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "in.stp:8:30: error: \")\" expected [V001]\n"
            "  #1=CARTESIAN_POINT('',(1.,2.);\n"
            "                               ^\n");
  EXPECT_THAT(outcome.out, HasSubstr("instances               2 of 2 types\n"));
}

TEST(Info, AFileWithAByteOrderMarkIsReadAndItsColumnsAreCharacters) {
  const std::string good = "\xEF\xBB\xBF" + FileWith("#1=CARTESIAN_POINT('\xC3\xA4\xC3\xB6',(1.,2.));\n");
  EXPECT_EQ(Info(good).status, 0);
  const std::string bad = "\xEF\xBB\xBF" + FileWith("#1=CARTESIAN_POINT('\xC3\xA4\xC3\xB6',(1.,2.);\n");
  EXPECT_EQ(Info(bad).err,
            "in.stp:8:32: error: \")\" expected [V001]\n"
            "  #1=CARTESIAN_POINT('\xC3\xA4\xC3\xB6',(1.,2.);\n"
            "                                 ^\n");
}

TEST(Info, ADamagedByteOrderMarkIsReported) {
  const Outcome outcome = Info("\xEF\xBB" + FileWith(kPoint));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err,
              HasSubstr("in.stp:1:1: error: damaged byte order mark: EF is not followed by BB BF [V002]\n"));
}

TEST(Info, CountsInstancesOfTypesThatTheSchemaLacks) {
  const Outcome outcome = Info(FileWith("#1=X();\n#2=X(1);\n#3=(X()LENGTH_UNIT());\n#4=!MINE();\n" + std::string("#5=COLOUR();\n")));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("instances               5 of 4 types\n"));
  EXPECT_THAT(outcome.out, HasSubstr("           2  X\n"
                                     "           1  !MINE\n"
                                     "           1  (LENGTH_UNIT X)\n"
                                     "           1  COLOUR\n"));
}

TEST(Info, ReferencesThatLeadNowhereAreShownWithTheirPlaces) {
  const Outcome outcome = Info(FileWith("#1=VECTOR('',#9,1.);\n#2=VECTOR('',#9,1.);\n#3=VECTOR('',#8,1.);\n"));
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("unresolved references   3 to 2 missing instances: #9 (from #1 at 8:14), "
                                     "#8 (from #3 at 10:14)\n"));
}

TEST(Info, UnknownTypesAreNamedWithTheirNumber) {
  const Outcome outcome = Info(FileWith("#1=X();\n#2=(Y()X());\n#3=Z();\n#4=W();\n"));
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.out, HasSubstr("unknown types           W (1), X (2), Y (1), 1 more\n"));
}

// A header with records that no header has: of types that the schema does not have either, and of one that it has.
std::string FileWithHeaderRecords(const std::string& schema) {
  std::string text = FileWith("#1=PRODUCT('a','b',$,());\n#2=MINE();\n#3=(PRODUCT('a','b',$,())X());\n", schema);
  return text.insert(text.find("FILE_SCHEMA"), "PRODUCT('a');\nMINE();\n!OTHER();\n");
}

TEST(Info, UnknownTypesAreNotThoseOfTheHeader) {
  const Outcome outcome = Info(FileWithHeaderRecords("AUTOMOTIVE_DESIGN"));
  EXPECT_THAT(outcome.out, HasSubstr("unknown types           MINE (1), X (1)\n"));
  for (const char* type : {"PRODUCT", "MINE", "OTHER"}) {
    EXPECT_THAT(outcome.err, HasSubstr(std::string("warning: 1 header record of ") + type + " kept by position: the header has no such entity [V009]"));
  }
  EXPECT_THAT(outcome.err, HasSubstr("error: 1 instance of MINE kept by position: AUTOMOTIVE_DESIGN has no such entity (#2) [V008]"));
  // The schema knows what the header does not.
  EXPECT_THAT(outcome.err, testing::Not(HasSubstr("instance of PRODUCT")));
  EXPECT_THAT(outcome.err, testing::Not(HasSubstr("partial record of PRODUCT")));

  const Outcome ofNoSchema = Info(FileWithHeaderRecords("NO_SUCH_SCHEMA"));
  EXPECT_THAT(ofNoSchema.out, HasSubstr("unknown types           MINE (1), X (1)\n"));
  EXPECT_THAT(ofNoSchema.err, HasSubstr("2 records of 2 unknown types kept by position: MINE, X [V008]"));
  EXPECT_THAT(ofNoSchema.err, HasSubstr("1 header record of OTHER kept by position"));
}

TEST(Info, OfTheHeaderIsTheSameWhateverWasReadBefore) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWithHeaderRecords("AUTOMOTIVE_DESIGN"));
  const std::string once = RunProgram({VELMAR_PROGRAM, "info", in}).err;
  EXPECT_EQ(RunProgram({VELMAR_PROGRAM, "info", in, in}).err, once + once);
}

TEST(Info, QuietSaysNothingOfTheFileAndKeepsTheExitStatus) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith("#1=X();\n"));
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "info", "--quiet", in});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "");
  EXPECT_NE(outcome.out, "");
}

TEST(Info, OfSeveralFilesTheWorstDecidesTheExitStatus) {
  TemporaryDirectory directory;
  const std::string good = WriteFile(directory.Path("good.stp"), FileWith(kPoint));
  const std::string bad = WriteFile(directory.Path("bad.stp"), FileWith("#1=X();\n"));
  EXPECT_EQ(RunProgram({VELMAR_PROGRAM, "info", good, good}).status, 0);
  EXPECT_EQ(RunProgram({VELMAR_PROGRAM, "info", bad, good}).status, 1);
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "info", directory.Path("none"), bad, good});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr("velmar: error: " + directory.Path("none") + " does not exist\n"));
  EXPECT_THAT(outcome.out, HasSubstr("good.stp"));  // the others are read all the same
}

TEST(Info, JsonHoldsTextThatIsNoUtf8AsReplacementCharacters) {
  TemporaryDirectory directory;
  const std::string in = WriteFile(directory.Path("in.stp"), FileWith(kPoint, "AUTOMOTIVE_DESIGN \xE4"));
  const Outcome outcome = RunProgram({VELMAR_PROGRAM, "info", "--json", in});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.out, HasSubstr("\"file_schema\": [\n        \"AUTOMOTIVE_DESIGN "));
}

TEST(Info, AnEmptyHeaderIsReported) {
  const Outcome outcome =
      Info("ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n" + kPoint + "ENDSEC;\nEND-ISO-10303-21;\n");
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.err, HasSubstr("in.stp: error: cannot be read: the header section holds no record [V003]\n"));
  EXPECT_THAT(outcome.out, HasSubstr("instances               0 of 0 types\n"));
}

}  // namespace
