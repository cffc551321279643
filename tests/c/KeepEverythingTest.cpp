// What reading drops on purpose is kept and written back where an application asks for it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <list>
#include <sstream>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpAttributeVisitor.h"
#include "ExpFile.h"
#include "ExpUtilities.h"
#include "FileTokens.h"
#include "RandomValues.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using namespace VELMAR::TestData;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

std::string FileOf(const std::string& instances, const std::string& headerRecords = "") {
  return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'1');\nFILE_NAME('','t',(''),(''),'','','');\n"
         "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n" +
         headerRecords + "ENDSEC;\nDATA;\n" + instances + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

void Read(ExpFile& file, const std::string& text) {
  std::istringstream in(text);
  file.Read(in);
}

// The instances as they are written, a line each.
std::string DataOf(ExpFile& file) {
  std::ostringstream text;
  file.WriteDataSection(text);
  const std::string all = text.str();
  const std::string begin = "DATA;\n";
  const std::string end = "ENDSEC;\n";
  EXPECT_EQ(all.compare(0, begin.size(), begin), 0);
  return all.substr(begin.size(), all.size() - begin.size() - end.size());
}

// Whether a line of the log tells of an error; that a real number is out of range is none.
bool IsError(const std::string& line) {
  return line.find("-- line") != std::string::npos && line.find(": a real number does not fit 64 bits") == std::string::npos;
}

// What becomes of one record that is read with everything kept and written.
std::string Kept(const std::string& record) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=" + record + ";"));
  EXPECT_THAT(log.lines, Not(Contains(testing::Truly(IsError)))) << record;
  std::string written = DataOf(file);
  const std::string name = "#1 = ";
  EXPECT_EQ(written.compare(0, name.size(), name), 0) << written;
  written.erase(0, name.size());
  written.resize(written.find_last_of(';'));
  // What is written is read as the same, and written again the same.
  ExpFile again;
  again.KeepEverything(true);
  Read(again, FileOf("#1=" + written + ";"));
  EXPECT_EQ(DataOf(again), DataOf(file));
  return written;
}

std::string Default(const std::string& record) {
  ExpFile file;
  Read(file, FileOf("#1=" + record + ";"));
  return DataOf(file);
}

// ------------------------------------------------------------------------------------------------------ the switch

TEST(KeepEverything, IsOffUntilItIsAskedFor) {
  ExpFile file;
  EXPECT_FALSE(file.KeepsEverything());
  file.KeepEverything(true);
  EXPECT_TRUE(file.KeepsEverything());
  ExpFile other;
  EXPECT_FALSE(other.KeepsEverything());
  file.KeepEverything(false);
  EXPECT_FALSE(file.KeepsEverything());
  Part21Importer importer;
  EXPECT_FALSE(importer.KeepsEverything());
  importer.KeepEverything(true);
  EXPECT_TRUE(importer.KeepsEverything());
}

TEST(KeepEverything, IsOffForAnImporterInThePlaceOfOneThatIsGone) {
  alignas(Part21Importer) unsigned char place[sizeof(Part21Importer)];
  auto* first = new (place) Part21Importer;
  first->KeepEverything(true);
  first->~Part21Importer();
  auto* second = new (place) Part21Importer;
  EXPECT_FALSE(second->KeepsEverything());
  second->~Part21Importer();
}

TEST(KeepEverything, OffDropsWhatItHasAlwaysDropped) {
  EXPECT_EQ(Default("POINT('a',(1.,$,*,.RED.,\"0F\",2.))"), "#1 = POINT('a', (1., 2.));\n");
  EXPECT_EQ(Default("NO_SUCH_TYPE(1)"), "");
  EXPECT_EQ(Default("POINT('a',(0.1000000000000000056),'superfluous')"), "#1 = POINT('a', (0.1));\n");
}

TEST(KeepEverything, OfAnImporterFillsAnyProvider) {
  TestProvider provider;
  Part21Importer importer;
  importer.KeepEverything(true);
  std::istringstream in(FileOf("#1=POINT('a',($,.B.));\n#2=NO_SUCH_TYPE(#1);"));
  importer.ImportFromStream(&in, &provider, 10);
  std::ostringstream out;
  provider.Write(out);
  EXPECT_EQ(out.str(), "#11 = POINT('a', ($, .B.));\n#12 = NO_SUCH_TYPE(#11);\n");
}

// --------------------------------------------------------------------------------------------- every value there is

struct Row {
  const char* name;
  const char* record;
};

class KeptValues : public testing::TestWithParam<Row> {};

TEST_P(KeptValues, AreWrittenAsTheyWereRead) { EXPECT_EQ(Kept(GetParam().record), GetParam().record); }

constexpr Row kRows[] = {
    // elements of aggregates
    {"Dollar", "POINT('', (1., $, 2.))"},
    {"DollarsAlone", "POINT('', ($, $))"},
    {"Asterisk", "POINT('', (*, 1.))"},
    {"Enumeration", "POINT('', (.RED., 1., .T.))"},
    {"Binary", "POINT('', (\"0FF0123456789ABCDEF\", \"0\"))"},
    {"LongInteger", "POINT('', (2147483648, -2147483649, 5, 123456789012345678901234567890))"},
    {"Nested", "POINT('', (($), ((*, .A.)), (), (\"3F\")))"},
    {"Typed", "POINT('', (L(1), L(1.5), L('x'), L(#1), L(.A.), L($), L(*), L(\"0A\"), L(12345678901)))"},
    {"TypedTwice", "POINT('', (L(M(1)), L(M(.A.)), L(M($)), L(M(\"1C\"))))"},
    {"TypedList", "POINT('', (L((1, 2)), L(($, .A., M(*))), L(((1), (2))), L(M((1)))))"},
    {"TypedEmptyList", "POINT('', (L(()), L((())), L(M(()))))"},
    {"TypedInTyped", "POINT('', (L((M((N(.A.))), M($)))))"},
    {"UserDefinedInTyped", "POINT('', (!L(1)))"},
    // selects
    {"SelectDollar", "NODE('', #1, (), L($))"},
    {"SelectAsterisk", "NODE('', #1, (), L(M(*)))"},
    {"SelectEmptyList", "NODE('', #1, (), L(()))"},
    {"SelectUntypedEmptyList", "NODE('', #1, (), ())"},
    {"SelectBinary", "NODE('', #1, (), \"0A\")"},
    {"SelectTypedBinary", "NODE('', #1, (), L(\"0A\"))"},
    {"SelectLongInteger", "NODE('', #1, (), L(9999999999))"},
    {"SelectList", "NODE('', #1, (), L(($, *, .A., M((1)), \"0\")))"},
    {"SelectMarked", "NODE('', $, $, *)"},
    // what an attribute does not take
    {"BinaryAttribute", "LIBRARY_KINDS(1., \"2ABC\", .RED.)"},
    {"BinaryAttributeMarked", "LIBRARY_KINDS($, $, *)"},
    {"BinaryInAString", "POINT(\"0A\", ())"},
    {"UnknownItem", "LIBRARY_KINDS(1., $, .PURPLE.)"},
    {"RealInAnInteger", "A(1.5, 2)"},
    {"StringInAReal", "LIBRARY_KINDS('x', $, .RED.)"},
    {"TypedInAReal", "LIBRARY_KINDS(LENGTH_MEASURE(1.), (), .RED.)"},
    {"LongIntegerInAnInteger", "A(2147483648, -5)"},
    {"EverythingElsewhere", "ALL_KINDS(.A., 'x', 5, 1., #1, $, 7, (.T.), ())"},
    {"ListInALink", "NODE('', (#1, #2), #1, 5)"},
    // parameters beyond the attributes
    {"Superfluous", "POINT('', (), 1, 'x', $, *, .A., #5, \"0\", (1, ($)), L(M(())))"},
    {"SuperfluousAlone", "EMPTY(1)"},
    // types
    {"UnknownType", "NO_SUCH_TYPE('x', 1, 2.5, #1, .A., $, *, \"0F\", (1, ($)), L(()), 12345678901)"},
    {"UnknownTypeWithoutParameters", "NO_SUCH_TYPE()"},
    {"UserDefinedUnknownType", "!NO_SUCH_TYPE(1)"},
    {"UserDefinedKnownType", "!POINT('', ())"},
    {"NameOfTheLibrarysOwn", "EXTERNAL_MAPPING_ENTITY(1, (2))"},
    {"NameOfTheHeader", "FILE_SCHEMA(5)"},
    // real numbers
    {"Reals", "POINT('', (0.30000000000000004, 1.7976931348623157E+308, 5.E-324, -0., 100., 1.5E-7, 1.234567890123456E+15))"},
};
INSTANTIATE_TEST_SUITE_P(Rows, KeptValues, testing::ValuesIn(kRows), [](const auto& row) { return row.param.name; });

TEST(KeepEverything, ComplexInstancesKeepAllRecordsInTheOrderOfTheirNames) {
  EXPECT_EQ(Kept("(UNKNOWN(1,$)!OTHER((.A.))A(1,*)B($))"),
            "(\n   !OTHER ((.A.))\n   A (1, *)\n   B ($)\n   UNKNOWN (1, $)\n)");
  EXPECT_EQ(Kept("(!B('x','more')A(1.5,2,3))"), "(\n   A (1.5, 2, 3)\n   !B ('x', 'more')\n)");
  EXPECT_EQ(Kept("(UNKNOWN())"), "(\n   UNKNOWN ()\n)");
}

TEST(KeepEverything, MissingParametersAreNotProvided) {
  EXPECT_EQ(Kept("ALL_KINDS()"), "ALL_KINDS($, $, $, $, $, $, $, $, $)");
  EXPECT_EQ(Kept("NODE('x')"), "NODE('x', $, $, $)");
  EXPECT_EQ(Kept("(A(1)B())"), "(\n   A (1, $)\n   B ($)\n)");
}

TEST(KeepEverything, NumbersKeepTheirValue) {
  EXPECT_EQ(Kept("POINT('',(+5.0,1.0E5,00.10,1.E400))"), "POINT('', (5., 100000., 0.1, 1.E+400))");
}

TEST(KeepEverything, HeaderRecordsAreWrittenBehindTheThree) {
  ExpFile file;
  file.KeepEverything(true);
  const std::string records = "SECTION_LANGUAGE($,'en');\nPOINT('a');\n!FILE_SCHEMA();\n!MINE((1,.A.));\nFILE_POPULATION('A','B',(#1));\n";
  Read(file, FileOf("#1=EMPTY();", records));
  const std::string written = "SECTION_LANGUAGE($, 'en');\nPOINT('a');\n!FILE_SCHEMA();\n!MINE((1, .A.));\nFILE_POPULATION('A', 'B', (#1));\n";
  std::ostringstream header;
  file.WriteHeaderSection(header);
  EXPECT_THAT(header.str(), HasSubstr("FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n" + written + "ENDSEC;\n"));
  EXPECT_EQ(DataOf(file), "#1 = EMPTY();\n");
  std::istringstream more(FileOf("#1=EMPTY();", "ANOTHER();\n"));
  file.Append(more);  // reads no header
  EXPECT_THAT(TextOf(file), HasSubstr("\n" + written + "ENDSEC;\n"));
  EXPECT_EQ(TextOf(file).find("ANOTHER"), std::string::npos);
  Read(file, FileOf("#1=EMPTY();"));
  EXPECT_EQ(TextOf(file).find("FILE_POPULATION"), std::string::npos);
}

TEST(KeepEverything, InstancesOfTheDataStayApartFromTheHeaderOfTheirType) {
  const std::string record = "#1 = FILE_NAME('a', 'b', ('c'), ('d'), 'e', 'f', 'g');";
  for (const std::string header : {"FILE_NAME('','t',(''),(''),'','','');\n", ""}) {
    ExpFile file;
    file.KeepEverything(true);
    CapturedLog log;
    Read(file, "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'1');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n" + header + "ENDSEC;\nDATA;\n" +
                   record + "\nENDSEC;\nEND-ISO-10303-21;\n");
    EXPECT_EQ(DataOf(file), record + "\n");
    std::ostringstream text;
    file.WriteHeaderSection(text);
    EXPECT_THAT(text.str(), testing::ContainsRegex("\nFILE_NAME\\('', '[^\n]*', \\('[^c']*'\\)")) << text.str();
    EXPECT_THAT(text.str(), Not(HasSubstr("'g'")));
  }
}

TEST(KeepEverything, PartsOfInstancesStayApartFromTheHeaderOfTheirType) {
  // With a number, and without one, which is a mistake.
  for (const std::string record : {"#1=(!FILE_SCHEMA(('MINE'))POINT());", "#1=(FILE_SCHEMA(('MINE'))POINT());", "(!FILE_SCHEMA(('MINE'))POINT());",
                                   "(FILE_SCHEMA(('MINE'))POINT());"}) {
    ExpFile file;
    file.KeepEverything(true);
    CapturedLog log;
    Read(file, "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'1');\nFILE_NAME('','t',(''),(''),'','','');\nENDSEC;\nDATA;\n" + record +
                   "\nENDSEC;\nEND-ISO-10303-21;\n");
    std::ostringstream text;
    file.WriteHeaderSection(text);
    EXPECT_THAT(text.str(), HasSubstr("\nFILE_SCHEMA((")) << record;
    EXPECT_THAT(text.str(), Not(HasSubstr("MINE"))) << record;
  }
}

TEST(KeepEverything, UserDefinedRecordsOfTheHeaderAreNoneOfItsTypes) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, "ISO-10303-21;\nHEADER;\n!FILE_SCHEMA(('MINE'));\nFILE_DESCRIPTION((''),'1');\nFILE_NAME('','t',(''),(''),'','','');\n"
             "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n");
  std::list<ExpEntity*> schemas;
  file.GetEntities(schemas, "FILE_SCHEMA", false);
  EXPECT_EQ(schemas.size(), 1u);
  EXPECT_EQ(file.GetSchemaName(), "AUTOMOTIVE_DESIGN");
  std::ostringstream text;
  file.WriteHeaderSection(text);
  EXPECT_THAT(text.str(), HasSubstr("\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n!FILE_SCHEMA(('MINE'));\n"));
}

TEST(KeepEverything, ReferencesInKeptValuesAreRaisedByAppend) {
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#7=EMPTY();"));
  std::istringstream in(FileOf("#1=UNKNOWN(#2,(L(#3)));\n#2=POINT(#1,(),#2);"));
  file.Append(in);
  EXPECT_EQ(DataOf(file), "#7 = EMPTY();\n#8 = UNKNOWN(#9, (L(#10)));\n#9 = POINT(#8, (), #9);\n");
}

// ------------------------------------------------------------------------------------------- as an application sees it

TEST(KeepEverything, ValuesBesideAnAttributeGiveWayToItsOwn) {
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=LIBRARY_KINDS('x',\"0A\",.PURPLE.,5);"));
  auto* entity = dynamic_cast<LibraryKinds*>(file.GetEntity(1));
  ASSERT_NE(entity, nullptr);
  EXPECT_TRUE(entity->measure.IsNotProvided());
  EXPECT_TRUE(entity->data.IsNotProvided());
  EXPECT_TRUE(entity->colour.IsNotProvided());
  ASSERT_NE(GetKeptValue(*entity, 0), nullptr);
  EXPECT_EQ(GetKeptValue(*entity, 0)->GetExpString(), "x");
  EXPECT_EQ(GetKeptValue(*entity, 1)->ToString(), "\"0A\"");
  EXPECT_EQ(GetKeptValue(*entity, 3)->GetExpInteger(), 5);
  EXPECT_EQ(GetKeptValue(*entity, 4), nullptr);
  entity->colour.SetExpEnumeration("BLUE");
  entity->colour.SetNotProvided(false);
  entity->measure.SetOmitted(true);
  EXPECT_EQ(entity->ToString(), "#1 = LIBRARY_KINDS(*, \"0A\", .BLUE., 5);");
  EXPECT_EQ(GetKeptValue(*MakeIn<A>(file, 2, "AUTOMOTIVE_DESIGN"), 0), nullptr);
}

TEST(KeepEverything, InstancesOfUnknownTypesHaveTheirParametersByPosition) {
  ExpFile file;
  file.KeepEverything(true);
  const std::size_t before = ExpEntity::instanceCount;
  Read(file, FileOf("#1=UNKNOWN('x',$,*,L(5));\n#2=EMPTY();"));
  ExpEntity* entity = file.GetEntity(1);
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(entity->GetExpClassName(), "UNKNOWN");
  ASSERT_EQ(entity->GetNofExplicitMembers(), 4);
  EXPECT_EQ(*entity->GetMemberNames(), (std::vector<std::string>{"1", "2", "3", "4"}));
  EXPECT_EQ(entity->GetMember("1"), entity->GetMember(0));
  EXPECT_EQ(dynamic_cast<ExpSelect*>(entity->GetMember(0))->GetExpString(), "x");
  EXPECT_TRUE(entity->GetMember(1)->IsNotProvided());
  EXPECT_TRUE(entity->GetMember(2)->IsOmitted());
  EXPECT_TRUE(dynamic_cast<ExpSelect*>(entity->GetMember(3))->CheckType("L"));
  EXPECT_EQ(entity->GetMember(4), nullptr);
  EXPECT_EQ(entity->GetMember(-1), nullptr);
  EXPECT_EQ(entity->GetMember("5"), nullptr);
  // Nothing new where types are looked up.
  std::list<ExpEntity*> found;
  file.GetEntities(found, "UNKNOWN", true);
  EXPECT_TRUE(found.empty());
  std::ostringstream types;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(types);
  EXPECT_EQ(types.str().find("UnknownEntity"), std::string::npos);
  EXPECT_EQ(file.CreateEntity("UNKNOWN"), nullptr);
  EXPECT_EQ(file.CreateEntity("UnknownEntity"), nullptr);
  // They go with the file's others.
  file.ResetEntityVector();
  EXPECT_LE(ExpEntity::instanceCount, before);
}

TEST(KeepEverything, OneInstanceIsWrittenWithWhatItsKeptValuesReferTo) {
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=UNKNOWN(#2);\n#2=POINT(#3,(),(#4,L((#5))));\n#3=EMPTY();\n#4=EMPTY();\n#5=EMPTY();\n#6=EMPTY();"));
  std::ostringstream out;
  file.DumpEntity(1, out);
  EXPECT_THAT(out.str(), HasSubstr("DATA;\n#3 = EMPTY();\n#4 = EMPTY();\n#5 = EMPTY();\n#2 = POINT(#3, (), (#4, L((#5))));\n#1 = UNKNOWN(#2);\n"));
}

class Counter : public ExpAttributeVisitor {
 public:
  void VisitExpEnumeration(ExpEnumeration*) override { ++enumerations; }
  void VisitExpSelect(ExpSelect*) override { ++selects; }
  void VisitExpAggregation(ExpAggregation*) override { ++others; }
  void VisitExpInteger(ExpInteger*) override { ++others; }
  void VisitExpReal(ExpReal*) override { ++others; }
  void VisitExpString(ExpString*) override { ++others; }
  void VisitExpLink(ExpLink*) override { ++others; }
  int enumerations = 0, selects = 0, others = 0;
};

TEST(KeepEverything, VisitorsSeeEnumerationsAndPassOverTokens) {
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=POINT('',($,*,.A.,\"0\",L($)));"));
  auto* point = dynamic_cast<Point*>(file.GetEntity(1));
  Counter counter;
  for (ExpAttribute* element : *point->coordinates.GetExpAggregation()) element->Accept(&counter);
  EXPECT_EQ(counter.enumerations, 1);
  EXPECT_EQ(counter.selects, 1);
  EXPECT_EQ(counter.others, 0);
  const auto& elements = *point->coordinates.GetExpAggregation();
  EXPECT_TRUE(elements.front()->IsNotProvided());
  EXPECT_TRUE((*std::next(elements.begin()))->IsOmitted());
  EXPECT_EQ(MarkUnsetValues(*point), 0);
}

// An application that makes the entities itself.
class OwnFile : public ExpFile {
 public:
  ExpEntity* CreateEntity(const std::string& name) override {
    asked.push_back(name);
    return ExpFile::CreateEntity(name == "MINE" ? "POINT" : name);
  }
  void AddEntity(int number, ExpEntity* entity) override {
    added.push_back(number);
    ExpFile::AddEntity(number, entity);
  }
  std::vector<std::string> asked;
  std::vector<int> added;
};

TEST(KeepEverything, OverridesAreAskedFirst) {
  OwnFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=MINE('',($));\n#2=NO_SUCH_TYPE();\n#3=!MINE('',());"));
  EXPECT_EQ(DataOf(file), "#1 = POINT('', ($));\n#2 = NO_SUCH_TYPE();\n#3 = !POINT('', ());\n");
  EXPECT_THAT(file.asked, testing::IsSupersetOf({"MINE", "NO_SUCH_TYPE"}));
  EXPECT_EQ(file.added, (std::vector<int>{1, 2, 3}));
}

TEST(KeepEverything, WhatCannotBeKeptIsLogged) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=EMPTY();\n#1=POINT('',());\n#2=(A(1,2)A(3,4));\n"
                    "#3=&SCOPE #4=EMPTY();ENDSCOPE/#4/EMPTY();\n#5=POINT(#4294967297,());", "FILE_SCHEMA(('X'));\n"));
  EXPECT_THAT(log.text, HasSubstr("-- line 6 col 18: of two records FILE_SCHEMA in the header, one is not kept\n"));
  EXPECT_THAT(log.text, HasSubstr("-- line 10 col 16: there is a second #1, and the first one is not kept\n"));
  EXPECT_THAT(log.text, HasSubstr("-- line 12 col 4: the scope of #3 is not kept; what is in it is\n"));
  EXPECT_THAT(log.text, HasSubstr("#4294967297 is too great a number and becomes #1; it is not kept\n"));
  EXPECT_THAT(log.text, HasSubstr("there is a second record A in #2, which is not kept\n"));
}

TEST(KeepEverything, RealNumbersOutOfRangeAreLogged) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=POINT('',(1.,-1.E309,\n1.E-400,0.E-400));"));
  EXPECT_THAT(log.text, HasSubstr("-- line 8 col 17: a real number does not fit 64 bits and becomes infinite\n"
                                  "-- line 9 col 1: a real number does not fit 64 bits and becomes 0\n"));
  EXPECT_THAT(log.text, Not(HasSubstr("line 9 col 8")));
}

TEST(KeepEverything, TokensMayBeOfAnyLength) {
  const std::string text(1000000, 'x');
  const std::string name(100000, 'N');
  const std::string digits(100000, '7');
  const std::string record = name + "('" + text + "', ." + name + "., " + digits + ", \"0" + digits + "\", #1, " + name + "(1))";
  EXPECT_EQ(Kept(record), record);
}

TEST(KeepEverything, AnIntegerThatIsNoRealNumberIsKeptBesideARealAttribute) {
  const std::string digits(400, '7');
  EXPECT_EQ(Kept("LIBRARY_KINDS(" + digits + ", $, .RED.)"), "LIBRARY_KINDS(" + digits + ", $, .RED.)");
  EXPECT_EQ(Kept("LIBRARY_KINDS(" + digits.substr(0, 20) + ", $, .RED.)"), "LIBRARY_KINDS(7.777777777777777E+19, $, .RED.)");
}

TEST(KeepEverything, RecordsThatDoNotFitAreLoggedOnceForEachType) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=POINT('');\n#2=POINT();\n#3=EMPTY(1,2);\n#4=EMPTY();", "EXTRA();\nEXTRA();\n"));
  EXPECT_THAT(log.text, HasSubstr("the header has no entity EXTRA; its record is kept by position (line 6)\n"));
  EXPECT_THAT(log.text, Not(HasSubstr("(line 7)")));
  EXPECT_THAT(log.text, HasSubstr("a record POINT has 1 parameters, and its type 2 attributes (line 10)\n"
                                  "a record EMPTY has 2 parameters, and its type 0 attributes (line 12)\n"));
}

TEST(KeepEverything, ReferencesToWhatIsNotThereAreLogged) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',#9,(#2,#7,#100000,#1000000000,X(#7)),L((#2)));\n#2=EMPTY();"));
  EXPECT_THAT(log.text, HasSubstr("of the instances that are referred to, 4 are not there: #7, #9, #100000, ...\n"));
}

TEST(KeepEverything, NothingIsLoggedOfAFileThatIsAsItShouldBe) {
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',#1,(#2),L(#2));\n#2=POINT('',(1.,-0.E0,1.E308));\n#5=EMPTY();"));
  EXPECT_THAT(log.lines, Each(Not(HasSubstr("line")))) << log.text;
  EXPECT_THAT(log.text, Not(HasSubstr("not there")));
  EXPECT_NE(file.GetEntity(5), nullptr);
}

TEST(KeepEverything, ASyntaxErrorSpoilsNothingOfTheWriting) {
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=NODE('',#1,(L(;\n#2=NODE('a' 'b',());\n#3=NODE(L(,1);\n#4=UNKNOWN((1,;\n#5=EMPTY();"));
  const std::string text = TextOf(file);
  CapturedLog log;
  ExpFile again;
  again.KeepEverything(true);
  Read(again, text);
  EXPECT_THAT(log.lines, Each(Not(HasSubstr("-- line")))) << text;
  EXPECT_NE(again.GetEntity(5), nullptr);
  file.KeepEverything(false);
  EXPECT_NO_THROW(TextOf(file));
}

TEST(KeepEverything, WritesValuesWithoutAFormAsNotProvided) {
  ExpFile file;
  auto* node = MakeIn<Node>(file, 1, "AUTOMOTIVE_DESIGN");
  auto* kinds = MakeIn<LibraryKinds>(file, 2, "AUTOMOTIVE_DESIGN");
  node->others.AddValue(new ExpReal(std::numeric_limits<double>::quiet_NaN()));
  node->others.AddValue(new ExpReal(-std::numeric_limits<double>::infinity()));
  kinds->measure.SetNotProvided(true);
  EXPECT_THROW(TextOf(file), std::string);
  file.KeepEverything(true);
  EXPECT_EQ(DataOf(file), "#1 = NODE('', $, ($, -1.E+400), $);\n#2 = LIBRARY_KINDS($, $, $);\n");
  file.KeepEverything(false);
  EXPECT_THROW(TextOf(file), std::string);
  EXPECT_EQ(ExpReal(0.1 + 0.2).ToString(), "0.3");
}

TEST(KeepEverything, EveryPowerOfTwoAndItsNeighboursAreReadAsTheSameNumber) {
  ExpFile made;
  made.KeepEverything(true);
  auto* point = MakeIn<Point>(made, 1, "AUTOMOTIVE_DESIGN");
  std::vector<double> values;
  for (int e = -1074; e < 1024; ++e) {
    for (const double towards : {0.0, std::numeric_limits<double>::infinity(), std::ldexp(1.0, e)}) {
      values.push_back(std::nextafter(std::ldexp(1.0, e), towards));
      if (std::isinf(values.back())) values.pop_back();
    }
  }
  for (const double value : values) point->coordinates.AddValue(new ExpReal(value));
  ExpFile read;
  CapturedLog log;
  Read(read, TextOf(made));
  EXPECT_THAT(log.lines, Each(Not(HasSubstr("-- line"))));
  auto* again = dynamic_cast<Point*>(read.GetEntity(1));
  ASSERT_EQ(again->coordinates.NofElements(), values.size());
  auto value = values.begin();
  for (ExpAttribute* element : *again->coordinates.GetExpAggregation()) ASSERT_EQ(element->GetExpReal(), *value++);
}

// --------------------------------------------------------------------------------------------- random records

// Records of any values, whatever their types want.
class RandomRecords {
 public:
  explicit RandomRecords(unsigned int seed) : random_(seed, true) {}

  std::string Instances(int count) {
    std::string text;
    for (int number = 1; number <= count; ++number) text += '#' + std::to_string(number) + '=' + Instance() + ";\n";
    return text;
  }

 private:
  struct Type {
    const char* name;
    int attributes;  // those of a simple record
    int own;         // those of a record of a complex instance
  };

  std::string Instance() {
    static const std::vector<Type> kTypes = {{"POINT", 2, 2},         {"NODE", 4, 4}, {"ALL_KINDS", 9, 9},
                                             {"LIBRARY_KINDS", 3, 3}, {"A", 2, 2},    {"B", 3, 1},
                                             {"C", 4, 1},             {"EMPTY", 0, 0}, {"BOTTOM", 5, 1},
                                             {"NO_SUCH_TYPE", 0, 0},  {"!OTHER", 0, 0}, {"!POINT", 2, 2}};
    if (!random_.OneIn(5)) {
      const Type& type = random_.OneOf(kTypes);
      return Record(type.name, type.attributes);
    }
    std::string text = "(";
    for (const Type& type : kTypes) {
      // Types with `!` may not stand beside those without.
      if (random_.OneIn(3) && type.name != std::string("!POINT")) text += Record(type.name, type.own);
    }
    return text == "(" ? Record("EMPTY", 0) : text + ")";
  }

  std::string Record(const std::string& name, int attributes) { return name + '(' + Values(attributes, 0) + ')'; }

  // At least so many.
  std::string Values(int least, int depth) {
    std::string text;
    for (int left = least + (random_.OneIn(2) ? random_.Below(4) : 0); left > 0; --left) {
      text += Value(depth);
      if (left > 1) text += ',';
    }
    return text;
  }

  std::string Value(int depth) {
    switch (random_.Below(depth > 4 ? 9 : 12)) {
      case 0: return std::to_string(random_.Integer());
      case 1: return std::to_string(static_cast<long>(random_.Integer()) * 4999999);
      case 2: return std::to_string(random_.Below(1000)) + '.' + std::to_string(random_.Below(1000000000)) +
                     (random_.OneIn(2) ? "E" + std::to_string(random_.Below(600) - 300) : "");
      case 3: return '\'' + StepText() + '\'';
      case 4: return '#' + std::to_string(1 + random_.Below(1000));
      case 5: return '.' + random_.Name() + '.';
      case 6: return "$";
      case 7: return "*";
      case 8: return '"' + std::to_string(random_.Below(4)) + (random_.OneIn(3) ? "" : "0A9F") + '"';
      case 9:
      case 10: return '(' + Values(0, depth + 1) + ')';
      default: return (random_.OneIn(4) ? "!" : "") + random_.Name() + '(' + Value(depth + 1) + ')';
    }
  }

  // Without NUL, at which the text of a Token ends.
  std::string StepText() {
    std::string utf8;
    for (;;) {
      const std::string text = random_.StepText(utf8);
      if (text.find('\0') == std::string::npos) return text;
    }
  }

  RandomValues random_;
};

class RandomKeptRecords : public testing::TestWithParam<unsigned int> {};

TEST_P(RandomKeptRecords, HaveTheSameTokensOnceTheyAreWritten) {
  constexpr int kInstances = 2000;
  const std::string text = FileOf(RandomRecords(GetParam()).Instances(kInstances));
  ExpFile file;
  file.KeepEverything(true);
  CapturedLog log;
  Read(file, text);
  EXPECT_THAT(log.lines, Each(Not(HasSubstr("-- line"))));
  const std::string written = TextOf(file);
  const FileTokens before = TokensOf(text);
  const FileTokens after = TokensOf(written);
  ASSERT_EQ(before.instances.size(), static_cast<std::size_t>(kInstances));
  ASSERT_EQ(after.instances.size(), before.instances.size());
  for (const auto& [number, tokens] : before.instances) {
    ASSERT_TRUE(after.instances.at(number) == tokens)
        << number << '\n' << TextOfTokens(tokens) << '\n' << TextOfTokens(after.instances.at(number));
  }
  ExpFile again;
  again.KeepEverything(true);
  Read(again, written);
  EXPECT_TRUE(TextOf(again) == written);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomKeptRecords, testing::Range(1u, 9u));

// ------------------------------------------------------------------------------------------------------ hostile input

// Each of these would take hours if the time grew with the square of the length.
TEST(KeepEverything, ManyRecordsAndParametersTakeNoLongerThanTheirNumber) {
  constexpr int kMany = 200000;
  std::string header;
  std::string parameters = "1";
  std::string records;
  for (int i = 0; i < kMany; ++i) {
    header += i % 2 == 0 ? "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n" : "X();\n";
    parameters += ",1";
    records += "X()";
  }
  ExpFile file;
  file.KeepEverything(true);
  Read(file, FileOf("#1=UNKNOWN(" + parameters + ");\n#2=EMPTY(" + parameters + ");\n#3=(" + records + ");", header));
  EXPECT_EQ(file.GetEntity(1)->GetNofExplicitMembers(), kMany + 1);
  EXPECT_NE(GetKeptValue(*file.GetEntity(2), kMany), nullptr);
  EXPECT_GT(TextOf(file).size(), 2 * parameters.size());
}

// Whatever a damaged file holds, what is written of it can be read.
TEST(KeepEverything, WhatIsReadOfADamagedFileIsWrittenWithoutSyntaxErrors) {
  std::string records;
  for (int i = 0; i < static_cast<int>(std::size(kRows)); ++i) {
    // One of each few: the time that the test takes grows with the square of the length.
    if (i % 4 == 0) records += '#' + std::to_string(i) + '=' + kRows[i].record + ";\n";
  }
  records += "#90=(UNKNOWN(1,$)!OTHER((.A.))A(1,*)B($));\n";
  const std::string whole = FileOf(records, "SECTION_LANGUAGE($,'en');\n");
  int compared = 0;
  const auto check = [&compared](const std::string& text) {
    ExpFile file;
    file.KeepEverything(true);
    Read(file, text);
    if (DataOf(file).empty()) return;  // a section without records is an error
    const std::string written = TextOf(file);
    CapturedLog log;
    ExpFile again;
    again.KeepEverything(true);
    Read(again, written);
    ASSERT_THAT(log.lines, Not(Contains(testing::Truly(IsError)))) << text << '\n' << written << '\n' << log.text;
    ASSERT_EQ(TextOf(again), written) << text;
    ++compared;
  };
  for (std::size_t i = whole.find("DATA;"); i < whole.size(); ++i) {
    check(whole.substr(0, i));
    for (const char c : {'(', ')', '\'', ',', '$', '*', '.', '"', '#', ';', '!', 'L', '0'}) {
      std::string changed = whole;
      changed[i] = c;
      check(changed);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
  EXPECT_GT(compared, 5000);
}

TEST(KeepEverything, NestingOfAMillionIsKept) {
  constexpr std::size_t kDepth = 1000000;
  const auto repeated = [](const std::string& text) {
    std::string all;
    for (std::size_t i = 0; i < kDepth; ++i) all += text;
    return all;
  };
  const std::string close(kDepth, ')');
  const std::string close2(2 * kDepth, ')');
  for (const std::string& nested :
       {repeated("(") + close, repeated("L(") + ".A." + close, repeated("L((") + "$" + close2, repeated("L((") + close2}) {
    for (const char* record : {"POINT('', (", "UNKNOWN(1, (", "NODE('', $, (), ("}) {
      const std::string text = std::string(record) + nested + "))";
      ExpFile file;
      file.KeepEverything(true);
      Read(file, FileOf("#1=" + text + ";"));
      EXPECT_TRUE(DataOf(file) == "#1 = " + text + ";\n") << record << nested.substr(0, 4);
    }
  }
}

}  // namespace
