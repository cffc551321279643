// What is wrong with a file, compared with its schema.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileChecker.h"
#include "SchemaText.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kSchema =
    "TYPE label = STRING (5); END_TYPE; TYPE code = STRING (2) FIXED; END_TYPE;"
    "TYPE colour = ENUMERATION OF (red, green); END_TYPE;"
    "TYPE len = REAL; END_TYPE; TYPE many = LIST OF one; END_TYPE;"
    "TYPE one = SELECT (len, colour, many, point); END_TYPE; TYPE thing = SELECT (point, line); END_TYPE;"
    "ENTITY shape ABSTRACT SUPERTYPE; name : label; END_ENTITY;"
    "ENTITY point SUBTYPE OF (shape); x : LIST [1 : 3] OF REAL; END_ENTITY;"
    "ENTITY line SUBTYPE OF (shape); p : point; q : OPTIONAL point; END_ENTITY;"
    "ENTITY values_of; i : INTEGER; r : REAL; n : NUMBER; b : BOOLEAN; l : LOGICAL; c : colour; y : BINARY (8); END_ENTITY;"
    "ENTITY picks; o : OPTIONAL one; t : OPTIONAL thing; END_ENTITY;"
    "ENTITY lists; a : ARRAY [0 : 1] OF OPTIONAL INTEGER; s : SET OF point; m : LIST OF LIST [2 : 2] OF INTEGER; END_ENTITY;"
    "ENTITY coded; k : code; END_ENTITY;"
    "ENTITY unit; d : INTEGER; END_ENTITY; ENTITY si SUBTYPE OF (unit); p : label; DERIVE SELF\\unit.d : INTEGER := 1; END_ENTITY;"
    "ENTITY metric SUBTYPE OF (unit); END_ENTITY;"
    "TYPE pair = LIST [2 : 2] OF INTEGER; END_TYPE; ENTITY paired; p : pair; END_ENTITY;";

constexpr const char* kHeader = "FILE_DESCRIPTION((''),'');FILE_NAME('','',(''),(''),'','','');FILE_SCHEMA(('S'));";

// Before the instances, on their line.
std::string Head(const std::string& header) { return "ISO-10303-21;HEADER;" + header + "ENDSEC;DATA;"; }

Findings Checked(const std::string& instances, const std::string& header) {
  static const VELMAR::Express::SchemaText schema = VELMAR::Express::InSchema(kSchema);
  EXPECT_EQ(schema.diagnostics.ErrorCount(), 0u) << testing::PrintToString(schema.Findings());
  static const DataDictionary dictionary(*schema.model.schemas.front());
  const std::string text = Head(header) + instances + "ENDSEC;END-ISO-10303-21;";
  Findings findings("");
  FileChecker checker(dictionary, findings);
  for (const bool second : {false, true}) {
    VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    InstanceReader reader(scanner);
    WrittenInstance instance;
    while (reader.Read(instance, second ? ValuesRead::All : ValuesRead::None)) second ? checker.Check(instance) : checker.Learn(instance);
  }
  checker.CheckWhole();
  return findings;
}

std::vector<std::string> HintsFor(const std::string& instances) {
  const Findings findings = Checked(instances, kHeader);
  std::vector<std::string> hints;
  for (const Finding& finding : findings.WithPlace()) hints.push_back(finding.hint);
  return hints;
}

// What is found in a file with these instances, which stand on line 1, as "column #number TYPE.attribute V028 text"; the
// header is whole.
std::vector<std::string> Found(const std::string& instances, const std::string& header = kHeader) {
  const std::string head = Head(header);
  const Findings findings = Checked(instances, header);
  std::vector<std::string> lines;
  for (const Finding& finding : findings.WithPlace()) {
    const int column = finding.place.column - (finding.instance == 0 ? 0 : static_cast<int>(head.size()));
    lines.push_back(std::to_string(column) + (finding.instance == 0 ? "" : " #" + std::to_string(finding.instance)) +
                    (finding.attribute.empty() ? "" : " " + finding.attribute) + " " + NameOf(finding.code) + " " + finding.text);
  }
  for (const Finding& finding : findings.WithoutPlace()) lines.push_back(NameOf(finding.code) + " " + finding.text);
  return lines;
}

constexpr const char* kPoint = "#1=POINT('a',(1.));";

TEST(FileChecker, FindsNothingWhereAllIsRight) {
  EXPECT_THAT(Found(std::string(kPoint) +
                    "#2=LINE('',#1,$);#3=LINE('abcde',#1,#1);#4=VALUES_OF(1,1.,2,.T.,.U.,.GREEN.,\"0FF\");"
                    "#5=PICKS(LEN(1.),#1);#6=PICKS(COLOUR(.RED.),#2);#7=PICKS(MANY((LEN(2.),#1)),$);#8=PICKS(#1,$);"
                    "#9=LISTS(($,3),(#1),((1,2),(3,4)));#10=CODED('ab');#11=SI(*,'m');#12=(METRIC()SI('m')UNIT(*));"
                    "#13=(METRIC()UNIT(5));"),
              IsEmpty());
}

TEST(FileChecker, FindsUnknownTypesOnce) {
  EXPECT_THAT(Found("#1=NONE(1);#2=OTHER();#3=NONE();"),
              ElementsAre("4 #1 NONE V008 S has no such entity (2 records)", "15 #2 OTHER V008 S has no such entity"));
}

TEST(FileChecker, FindsTooFewAndTooManyParameters) {
  EXPECT_THAT(Found("#1=POINT('a');"), ElementsAre("13 #1 POINT V011 expected 2 parameters, found 1"));
  EXPECT_THAT(Found("#1=POINT('a',(1.),2);"), ElementsAre("19 #1 POINT V010 expected 2 parameters, found 3"));
  EXPECT_THAT(Found("#1=(POINT((1.),2)SHAPE('a'));"), ElementsAre("16 #1 POINT V010 expected 1 parameter, found 2"));
}

TEST(FileChecker, FindsValuesOfWrongKinds) {
  EXPECT_THAT(Found("#1=VALUES_OF(1.,'a',$,1,#1,.BLUE.,3);"),
              ElementsAre("14 #1 VALUES_OF.i V028 expected integer, found the real number 1.",
                          "17 #1 VALUES_OF.r V028 expected real, found a string",
                          "21 #1 VALUES_OF.n V029 a value is required: expected number",
                          "23 #1 VALUES_OF.b V028 expected boolean (.T. or .F.), found the integer 1",
                          "25 #1 VALUES_OF.l V028 expected logical (.T., .F. or .U.), found the reference #1",
                          "28 #1 VALUES_OF.c V032 expected an item of colour (GREEN, RED), found .BLUE.",
                          "35 #1 VALUES_OF.y V028 expected binary (8), found the integer 3"));
  EXPECT_THAT(Found("#1=POINT(LABEL('a'),1.);"), ElementsAre("10 #1 POINT.name V028 expected label (a string of at most 5 characters), found LABEL(...)",
                                                             "21 #1 POINT.x V028 expected list [1 : 3] of real, found the real number 1."));
}

TEST(FileChecker, FindsItemsThatDoNotExist) {
  EXPECT_THAT(Found("#1=VALUES_OF(1,1.,2.,.U.,.TRUE.,.red.,\"0FF\");"), IsEmpty());  // no instance: a syntax error
  EXPECT_THAT(Found("#1=VALUES_OF(1,1.,2.,.U.,.TRUE.,.RED.,\"0FF\");"),
              ElementsAre("22 #1 VALUES_OF.b V032 expected an item of boolean (F, T), found .U.",
                          "26 #1 VALUES_OF.l V032 expected an item of logical (F, T, U), found .TRUE."));
}

TEST(FileChecker, FindsIntegersInPlaceOfRealNumbers) {
  EXPECT_THAT(Found("#1=POINT('a',(1,2.));"),
              ElementsAre("15 #1 POINT.x V039 expected real, found the integer 1: a real number has a decimal point"));
}

TEST(FileChecker, FindsDerivedValuesAndAsterisksElsewhere) {
  EXPECT_THAT(Found("#1=SI(1,'m');#2=UNIT(*);#3=SI($,'m');"),
              ElementsAre("7 #1 SI.d V031 the value is derived: expected *, found the integer 1",
                          "22 #2 UNIT.d V030 nothing is derived here: expected integer",
                          "31 #3 SI.d V031 the value is derived: expected *, found $"));
  EXPECT_THAT(Found("#1=(METRIC()UNIT(*));#2=(METRIC()SI('m')UNIT(1));"),
              ElementsAre("18 #1 UNIT.d V030 nothing is derived here: expected integer",
                          "46 #2 UNIT.d V031 the value is derived: expected *, found the integer 1"));
}

TEST(FileChecker, FindsWhatDoesNotBelongToASelect) {
  EXPECT_THAT(Found(std::string(kPoint) + "#2=PICKS(LABEL('a'),LEN(1.));#3=PICKS(LEN(1.,2.),$);#4=PICKS(LEN($),$);"
                                          "#5=PICKS(LEN('a'),$);#6=PICKS(MANY((LABEL('x'))),$);"),
              ElementsAre("29 #2 PICKS.o V033 expected one (COLOUR, LEN, MANY), found LABEL(...)",
                          "40 #2 PICKS.t V033 expected thing (a reference), found LEN(...)",
                          "58 #3 PICKS.o V028 expected one value within LEN(...), found 2",
                          "85 #4 PICKS.o V028 expected len (a real number), found $", "104 #5 PICKS.o V028 expected len (a real number), found a string",
                          "127 #6 PICKS.o V033 expected one (COLOUR, LEN, MANY), found LABEL(...)"));
}

TEST(FileChecker, FindsValuesOfSelectsWithoutATypeName) {
  EXPECT_THAT(Found("#1=PICKS(1.,2.);#2=PICKS(.RED.,(#1));"),
              ElementsAre("10 #1 PICKS.o V034 expected one with the name of a type, such as LEN(...), found the real number 1.",
                          "13 #1 PICKS.t V028 expected thing, found the real number 2.",
                          "26 #2 PICKS.o V034 expected one with the name of a type, such as COLOUR(...), found .RED.",
                          "32 #2 PICKS.t V028 expected thing, found a list"));
}

TEST(FileChecker, FindsReferencesThatLeadNowhere) {
  EXPECT_THAT(Found("#2=LINE('',#1,#0);#3=PICKS(#99999999999999999999,#4);"),
              ElementsAre("15 #2 LINE.q V013 instance numbers begin at #1", "12 #2 LINE.p V035 there is no instance #1",
                          "28 #3 PICKS.o V014 instance numbers end at #1073741823",
                          "50 #3 PICKS.t V035 there is no instance #4"));
  EXPECT_THAT(Found("#2=LINE('',#5000000,#2000000);#1000000=POINT('',(1.));#2000000=POINT('',(1.));"),
              ElementsAre("12 #2 LINE.p V035 there is no instance #5000000"));
}

TEST(FileChecker, FindsReferencesToInstancesOfOtherTypes) {
  EXPECT_THAT(Found("#1=UNIT(1);#2=LINE('',#1,#2);#3=PICKS(#2,#1);#4=(METRIC()UNIT(1));#5=LINE('',#4,$);"),
              ElementsAre("23 #2 LINE.p V036 expected point, found #1 (UNIT)",
                          "26 #2 LINE.q V036 expected point, found #2 (LINE)",
                          "39 #3 PICKS.o V036 expected one, found #2 (LINE)",
                          "42 #3 PICKS.t V036 expected thing, found #1 (UNIT)",
                          "78 #5 LINE.p V036 expected point, found #4 (METRIC + UNIT)"));
  EXPECT_THAT(Found("#1=NONE();#2=LINE('',#1,$);"), ElementsAre("4 #1 NONE V008 S has no such entity"));  // who knows
}

TEST(FileChecker, FindsNumbersThatAreUsedTwice) {
  EXPECT_THAT(Found("#3=UNIT(1);#2=UNIT(2);#3=UNIT(3);#3=UNIT(4);"),
              ElementsAre(testing::StartsWith("23 #3 V012 the number is used a second time; first at 1:"),
                          testing::StartsWith("34 #3 V012 the number is used a second time; first at 1:")));
}

TEST(FileChecker, FindsBadEscapesAndBytes) {
  EXPECT_THAT(Found("#1=POINT('a\\b',(1.));#2=POINT('\xE4',(1.));"),
              ElementsAre("12 #1 POINT.name V040 a backslash begins an escape; alone it is written \\\\",
                          "32 #2 POINT.name V041 these bytes are not UTF-8; the string is taken for ISO 8859-1"));
}

TEST(FileChecker, FindsTooManyAndTooFewElements) {
  EXPECT_THAT(Found(std::string(kPoint) + "#2=POINT('',());#3=POINT('',(1.,2.,3.,4.));#4=LISTS((1),(),((1),(1,2)));"),
              ElementsAre("32 #2 POINT.x V037 expected list [1 : 3] of real, found 0 elements",
                          "48 #3 POINT.x V037 expected list [1 : 3] of real, found 4 elements",
                          "72 #4 LISTS.a V037 expected array [0 : 1] of optional integer, found 1 element",
                          "80 #4 LISTS.m V037 expected list [2 : 2] of integer, found 1 element"));
}

TEST(FileChecker, FindsUnsetElements) {
  EXPECT_THAT(Found("#1=POINT('',($,*,1.));#2=LISTS((*,$),(),());"),
              ElementsAre("14 #1 POINT.x V028 expected real, found $", "16 #1 POINT.x V028 expected real, found *",
                          "33 #2 LISTS.a V028 expected integer, found *"));
}

TEST(FileChecker, FindsStringsAndBinaryValuesThatAreTooLong) {
  EXPECT_THAT(Found("#1=POINT('abcdef',(1.));#2=POINT('\\X2\\03B1\\X0\\''bcd',(1.));#3=CODED('a');#4=CODED('abc');"
                    "#5=VALUES_OF(1,1.,1,.T.,.T.,.RED.,\"1FFF\");"),
              ElementsAre("10 #1 POINT.name V038 expected label (a string of at most 5 characters), found 6 characters",
                          "69 #3 CODED.k V038 expected code (a string of 2 characters), found 1 character",
                          "83 #4 CODED.k V038 expected code (a string of 2 characters), found 3 characters",
                          "124 #5 VALUES_OF.y V038 expected binary (8), found 11 bits"));
}

TEST(FileChecker, FindsAbstractTypesAndMissingSupertypes) {
  EXPECT_THAT(Found("#1=SHAPE('');#2=(POINT((1.)));#3=(LINE(#1,$)SHAPE(''));"),
              ElementsAre("4 #1 SHAPE V042 the entity is abstract: expected one of its subtypes (LINE, POINT)",
                          "14 #2 POINT V043 the complex instance has no record of the supertype SHAPE",
                          "40 #3 LINE.p V036 expected point, found #1 (SHAPE)"));
}

TEST(FileChecker, FindsNumbersThatNoInstanceMayHave) {
  EXPECT_THAT(Found("#1073741823=UNIT(1);#2=LINE('',#3,$);#3=POINT('',(1.));"), IsEmpty());
  // Of numbers that cannot be kept, findings do not name the instance, and Found counts columns from the beginning of the line.
  EXPECT_THAT(Found("#0=UNIT(1);#1073741824=UNIT(2);#99999999999999999999=UNIT(3);#88888888888888888888=UNIT(4);"),
              ElementsAre(testing::EndsWith(" V013 instance numbers begin at #1"),
                          testing::EndsWith(" V014 instance numbers end at #1073741823"),
                          testing::EndsWith(" V014 instance numbers end at #1073741823"),
                          testing::EndsWith(" V014 instance numbers end at #1073741823")));
  EXPECT_THAT(Found("#1=NONE(#0);"), ElementsAre("9 #1 NONE V013 instance numbers begin at #1", "4 #1 NONE V008 S has no such entity"));
}

TEST(FileChecker, FindsRealNumbersOutOfRange) {
  EXPECT_THAT(Found("#1=POINT('',(1.E308,1.E309,-1.E-400));"),
              ElementsAre("21 #1 POINT.x V016 the real number does not fit 64 bits and becomes infinite",
                          "28 #1 POINT.x V016 the real number does not fit 64 bits and becomes 0"));
  EXPECT_THAT(Found("#1=(POINT((1.E309))SHAPE(''));"),
              ElementsAre("12 #1 POINT.x V016 the real number does not fit 64 bits and becomes infinite"));
}

TEST(FileChecker, FindsRecordsThatAreUsedTwice) {
  EXPECT_THAT(Found("#1=(METRIC()UNIT(1)UNIT(2));"),
              ElementsAre(testing::StartsWith("20 #1 UNIT V051 the complex instance has a second record UNIT; first at 1:")));
  EXPECT_THAT(Found("", "FILE_DESCRIPTION((''),'');FILE_NAME('','',(''),(''),'','','');FILE_SCHEMA(('S'));FILE_SCHEMA(('T'));"),
              ElementsAre("102 FILE_SCHEMA V051 the header has a second record FILE_SCHEMA; first at 1:83"));
}

TEST(FileChecker, SaysHowManyElementsATypeWithANameHas) {
  EXPECT_THAT(Found("#1=PAIRED((1));#2=PAIRED((1,2));#3=PAIRED(1);"),
              ElementsAre("11 #1 PAIRED.p V037 expected pair (2 to 2 elements), found 1 element",
                          "43 #3 PAIRED.p V028 expected pair (a list), found the integer 1"));
}

TEST(FileChecker, HasHintsForWhatIsMisspelt) {
  EXPECT_EQ(HintsFor("#1=PIONT('a',(1.));"), std::vector<std::string>{"did you mean 'POINT'?"});
  EXPECT_EQ(HintsFor("#1=VALUES_OF(1,1.,2,.T.,.T.,.GREN.,\"0FF\");"), std::vector<std::string>{"did you mean 'GREEN'?"});
  EXPECT_EQ(HintsFor("#1=PICKS(COLOR(.RED.),$);"), std::vector<std::string>{"did you mean 'COLOUR'?"});
  EXPECT_EQ(HintsFor("#1=ELEPHANT();"), std::vector<std::string>{""});
}

TEST(FileChecker, FindsMissingHeaderRecords) {
  EXPECT_THAT(Found("", "FILE_NAME('','',(''),(''),'','');FILE_SCHEMA(('S\\a'));"),
              ElementsAre("52 FILE_NAME V011 expected 7 parameters, found 6",
                          testing::HasSubstr("FILE_SCHEMA V040 a backslash begins an escape"),
                          "V044 the header has no FILE_DESCRIPTION"));
}

TEST(FileChecker, LooksNoDeeperThanItCan) {
  constexpr int kLevels = 100000;
  std::string value = "LEN(1.)";
  std::string open;
  std::string close;
  for (int i = 0; i < kLevels; ++i) {
    open += "MANY((";
    close += "))";
  }
  const std::vector<std::string> found = Found("#1=PICKS(" + open + value + close + ",$);");
  EXPECT_THAT(found, ElementsAre(testing::HasSubstr("V045 values within values are checked to 500 levels")));
}

}  // namespace
}  // namespace velmar
