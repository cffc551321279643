// Writing exchange files: the header and its defaults, the data, and what happens when writing fails.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <list>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "ReadingSupport.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using reading::Ended;
using reading::RunInChild;
using reading::TemporaryFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::MakeIn;
using VELMAR::TestData::Node;
using VELMAR::TestData::Point;

constexpr const char* kSchema = "AUTOMOTIVE_DESIGN";
const char kFullHeader[] =
    "FILE_DESCRIPTION(('what'),'2;1');FILE_NAME('name','2020-01-02T03:04:05',('me'),('us'),'pre','sys','auth'"
    ");"
    "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 }'));";
const char kFullHeaderWritten[] =
    "HEADER;\nFILE_DESCRIPTION(('what'), '2;1');\n"
    "FILE_NAME('name', '2020-01-02T03:04:05', ('me'), ('us'), 'pre', 'sys', 'auth');\n"
    "FILE_SCHEMA(('AUTOMOTIVE_DESIGN { 1 0 10303 214 }'));\nENDSEC;\n\n";

std::string FileOf(const std::string& header, const std::string& instances) {
  return "ISO-10303-21;HEADER;" + header + "ENDSEC;DATA;" + instances + "ENDSEC;END-ISO-10303-21;";
}

void Read(ExpFile& file, const std::string& text) {
  std::istringstream in(text);
  file.Read(in);
}

std::string Written(ExpFile& file) {
  std::ostringstream out;
  file.Write(out);
  return out.str();
}

std::string HeaderOf(ExpFile& file) {
  std::ostringstream out;
  file.WriteHeaderSection(out);
  return out.str();
}

std::string LocalTime(std::time_t time) {
  char text[80];
  std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::localtime(&time));
  return text;
}

// --------------------------------------------------------------------------------------- the parts

TEST(ExpFileWrite, AnEmptyFileIsWrittenWithTheDefaultsOfItsHeader) {
  ExpFile file;
  const std::time_t before = std::time(nullptr);
  const std::string text = Written(file);
  const std::time_t after = std::time(nullptr);
  const std::string begin = "\nFILE_NAME('', '";
  const std::size_t at = text.find(begin);
  ASSERT_NE(at, std::string::npos) << text;
  const std::string stamp = text.substr(at + begin.size(), std::string("2000-01-02T03:04:05").size());
  EXPECT_GE(stamp, LocalTime(before));
  EXPECT_LE(stamp, LocalTime(after));
  EXPECT_EQ(text, "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('STEP'), '1');\nFILE_NAME('', '" + stamp +
                      "', ('Unknown'), ('Unknown'), 'Korvane 3.1.1.0', 'Korvane', 'Unknown');\n"
                      "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\n\nDATA;\nENDSEC;\nEND-ISO-10303-21;\n");
}

TEST(ExpFileWrite, TheSectionsAreWrittenOneByOne) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(kFullHeader, "#2=NODE('b',$,(),$);#1=NODE('a',#2,(),$);"));
  std::ostringstream start, data, end;
  file.WriteEncodingStart(start);
  file.WriteDataSection(data);
  file.WriteEncodingEnd(end);
  EXPECT_EQ(start.str(), "ISO-10303-21;\n");
  EXPECT_EQ(HeaderOf(file), kFullHeaderWritten);
  EXPECT_EQ(data.str(), "DATA;\n#1 = NODE('a', #2, (), $);\n#2 = NODE('b', $, (), $);\nENDSEC;\n");
  EXPECT_EQ(end.str(), "END-ISO-10303-21;\n");
  EXPECT_EQ(Written(file), start.str() + kFullHeaderWritten + data.str() + end.str());
}

TEST(ExpFileWrite, InstancesStandInTheOrderOfTheirNumbers) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(kFullHeader, "#300=NODE('c',$,(),$);#1=NODE('a',$,(),$);#20=(A(1,2)B('x'));"));
  EXPECT_THAT(Written(file),
              HasSubstr("DATA;\n#1 = NODE('a', $, (), $);\n#20 = (\n   A (1, 2)\n   B ('x')\n);\n"
                        "#300 = NODE('c', $, (), $);\nENDSEC;\n"));
}

TEST(ExpFileWrite, TheDataSectionIsTheStores) {
  class Other : public ExpFlyweightAdministration {
   public:
    void Write(std::ostream& os) override { os << "what the store writes\n"; }
  };
  class Redirected : public ExpFile {
   public:
    ExpAbstractObjectAdmin* GetAdaptedAdmin() override { return other ? &store : ExpFile::GetAdaptedAdmin(); }
    Other store;
    bool other = false;
  } file;
  file.other = true;
  std::ostringstream out;
  file.WriteDataSection(out);
  file.other = false;
  EXPECT_EQ(out.str(), "DATA;\nwhat the store writes\nENDSEC;\n");
}

// --------------------------------------------------------------------------------- header defaults

struct HeaderCase {
  const char* name;
  std::string header;   // what is read
  std::string written;  // the record that must be written
};
std::ostream& operator<<(std::ostream& os, const HeaderCase& c) { return os << c.name; }

class HeaderDefault : public testing::TestWithParam<HeaderCase> {};

TEST_P(HeaderDefault, FillsOnlyWhatIsEmpty) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(GetParam().header, "#1=NODE('',$,(),$);"));
  EXPECT_THAT(HeaderOf(file), HasSubstr("\n" + GetParam().written + "\n"));
}

std::string FileName(const std::string& parameters) { return "FILE_NAME(" + parameters + ");"; }

INSTANTIATE_TEST_SUITE_P(
    Rows, HeaderDefault,
    testing::Values(
        HeaderCase{"NameStaysEmptyWithoutFileName", FileName("'','t',('a'),('o'),'p','s','z'"),
                   FileName("'', 't', ('a'), ('o'), 'p', 's', 'z'")},
        HeaderCase{"Author", FileName("'n','t',(),('o'),'p','s','z'"),
                   FileName("'n', 't', ('Unknown'), ('o'), 'p', 's', 'z'")},
        HeaderCase{"Organization", FileName("'n','t',('a'),(),'p','s','z'"),
                   FileName("'n', 't', ('a'), ('Unknown'), 'p', 's', 'z'")},
        HeaderCase{"PreprocessorVersion", FileName("'n','t',('a'),('o'),'','s','z'"),
                   FileName("'n', 't', ('a'), ('o'), 'Korvane 3.1.1.0', 's', 'z'")},
        HeaderCase{"OriginatingSystem", FileName("'n','t',('a'),('o'),'p','','z'"),
                   FileName("'n', 't', ('a'), ('o'), 'p', 'Korvane', 'z'")},
        HeaderCase{"Authorization", FileName("'n','t',('a'),('o'),'p','s',''"),
                   FileName("'n', 't', ('a'), ('o'), 'p', 's', 'Unknown'")},
        HeaderCase{"NotProvidedValues", FileName("'n','t',$,$,$,$,$"),
                   FileName("'n', 't', ('Unknown'), ('Unknown'), 'Korvane 3.1.1.0', 'Korvane', 'Unknown'")},
        HeaderCase{"OmittedValues", FileName("'n','t',*,*,*,*,*"),
                   FileName("'n', 't', ('Unknown'), ('Unknown'), 'Korvane 3.1.1.0', 'Korvane', 'Unknown'")},
        HeaderCase{"MissingParameters", FileName("'n','t'"),
                   FileName("'n', 't', ('Unknown'), ('Unknown'), 'Korvane 3.1.1.0', 'Korvane', 'Unknown'")},
        HeaderCase{"AnEmptyStringInAListIsAValue", FileName("'n','t',(''),('',''),'p','s','z'"),
                   FileName("'n', 't', (''), ('', ''), 'p', 's', 'z'")},
        HeaderCase{"PresentValues", FileName("'n','t',('a','b'),('o','q'),'p','s','z'"),
                   FileName("'n', 't', ('a', 'b'), ('o', 'q'), 'p', 's', 'z'")},
        HeaderCase{"Description", "FILE_DESCRIPTION((),'3;1');", "FILE_DESCRIPTION(('STEP'), '3;1');"},
        HeaderCase{"ImplementationLevel", "FILE_DESCRIPTION(('d'),'');", "FILE_DESCRIPTION(('d'), '1');"},
        HeaderCase{"DescriptionNotProvided", "FILE_DESCRIPTION($,$);", "FILE_DESCRIPTION(('STEP'), '1');"},
        HeaderCase{"DescriptionOmitted", "FILE_DESCRIPTION(*,*);", "FILE_DESCRIPTION(('STEP'), '1');"},
        HeaderCase{"DescriptionOfAnEmptyString", "FILE_DESCRIPTION((''),'2');",
                   "FILE_DESCRIPTION((''), '2');"},
        HeaderCase{"SchemaIdentifiers", "FILE_SCHEMA(());", "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));"},
        HeaderCase{"SchemaIdentifiersNotProvided", "FILE_SCHEMA($);", "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));"},
        HeaderCase{"SchemaIdentifiersPresent", "FILE_SCHEMA(('automotive_design','b'));",
                   "FILE_SCHEMA(('automotive_design', 'b'));"},
        HeaderCase{"NoDescription", "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));",
                   "FILE_DESCRIPTION(('STEP'), '1');"},
        HeaderCase{"NoSchema", "FILE_DESCRIPTION(('d'),'1');", "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ExpFileWrite, TheTimeStampIsNowWhereItIsEmpty) {
  for (const char* empty : {"''", "$", "*"}) {
    CapturedLog log;
    ExpFile file;
    Read(file,
         FileOf(FileName(std::string("'n',") + empty + ",('a'),('o'),'p','s','z'"), "#1=NODE('',$,(),$);"));
    const std::string before = LocalTime(std::time(nullptr));
    const std::string header = HeaderOf(file);
    const std::string after = LocalTime(std::time(nullptr));
    EXPECT_TRUE(
        header.find("FILE_NAME('n', '" + before + "', ('a'), ('o'), 'p', 's', 'z');") != std::string::npos ||
        header.find("FILE_NAME('n', '" + after + "', ('a'), ('o'), 'p', 's', 'z');") != std::string::npos)
        << header;
  }
}

struct SchemaName {
  Schema schema;
  const char* name;
};
class SchemaDefault : public testing::TestWithParam<SchemaName> {};

TEST_P(SchemaDefault, IsTheCanonicalNameOfTheSchema) {
  ExpFile file(GetParam().schema);
  EXPECT_THAT(HeaderOf(file), HasSubstr(std::string("\nFILE_SCHEMA(('") + GetParam().name + "'));\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SchemaDefault,
    testing::Values(SchemaName{STEP_AP203, "CONFIG_CONTROL_DESIGN"},
                    SchemaName{
                        STEP_AP203E2,
                        "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF"},
                    SchemaName{STEP_AP214, "AUTOMOTIVE_DESIGN"},
                    SchemaName{STEP_AP242, "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM"},
                    SchemaName{PLIB, "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA"},
                    SchemaName{ISO13399, "CUTTING_TOOL_SCHEMA_ARM"}));

TEST(ExpFileWrite, TheNameIsThePathOfTheFileReadWithSlashes) {
  const std::string folder = testing::TempDir();
  const std::string path = folder + "a\\b\\velmar_part.stp";
  std::ofstream(path) << FileOf(FileName("'','t',('a'),('o'),'p','s','z'"), "#1=NODE('',$,(),$);");
  CapturedLog log;
  ExpFile file;
  file.Read(path);
  std::remove(path.c_str());
  ASSERT_NE(file.GetEntity(1), nullptr);
  EXPECT_THAT(HeaderOf(file), HasSubstr("\nFILE_NAME('" + folder + "a/b/velmar_part.stp', 't', ("));
}

TEST(ExpFileWrite, ThePathIsTextAndNotEscapes) {
  // A folder named X2 behind a backslash, an apostrophe and a letter beyond ASCII.
  const std::string folder = testing::TempDir();
  const std::string path = folder + "it's \xC3\xA9\\X2\\00E9.stp";
  std::ofstream(path) << FileOf(FileName("'','t',('a'),('o'),'p','s','z'"), "#1=NODE('',$,(),$);");
  CapturedLog log;
  ExpFile file;
  file.Read(path);
  std::remove(path.c_str());
  ASSERT_NE(file.GetEntity(1), nullptr);
  EXPECT_THAT(HeaderOf(file), HasSubstr("\nFILE_NAME('" + folder + "it''s \\X\\E9/X2/00E9.stp', 't', ("));
}

TEST(ExpFileWrite, AStreamReadLaterDoesNotTakeOverThePath) {
  TemporaryFile onDisk(FileOf(FileName("'','t',('a'),('o'),'p','s','z'"), "#1=NODE('',$,(),$);"));
  CapturedLog log;
  ExpFile file;
  file.Read(onDisk.Path());
  EXPECT_THAT(HeaderOf(file), HasSubstr("FILE_NAME('" + onDisk.Path() + "', "));
}

TEST(ExpFileWrite, DefaultsStayAfterTheWrite) {
  ExpFile file;
  const std::string text = Written(file);
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"}) {
    std::list<ExpEntity*> entities;
    file.GetEntities(entities, type, true);
    ASSERT_EQ(entities.size(), 1u);
    EXPECT_THAT(text, HasSubstr("\n" + entities.front()->ToString() + "\n"));
  }
  std::list<ExpEntity*> names;
  file.GetEntities(names, "FILE_NAME", true);
  EXPECT_THAT(names.front()->ToString(), HasSubstr("'Korvane 3.1.1.0', 'Korvane', 'Unknown');"));
  names.front()->GetMember("time_stamp")->SetExpString("then");
  EXPECT_THAT(Written(file), HasSubstr("FILE_NAME('', 'then', "));
}

TEST(ExpFileWrite, HeaderEntitiesAreWrittenInTheirOrderWhateverThatOfTheFile) {
  CapturedLog log;
  ExpFile file;
  Read(file,
       FileOf("FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));FILE_NAME('n','t',('a'),('o'),'p','s','z');UNKNOWN(1);"
              "FILE_DESCRIPTION(('d'),'1');",
              "#1=NODE('',$,(),$);"));
  EXPECT_EQ(HeaderOf(file),
            "HEADER;\nFILE_DESCRIPTION(('d'), '1');\nFILE_NAME('n', 't', ('a'), ('o'), 'p', 's', 'z');\n"
            "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\n\n");
}

TEST(ExpFileWrite, HeaderValuesAreEscaped) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf("FILE_NAME('It''s \\X\\E9','t',('\\X2\\03A9\\X0\\'),('o'),'p','s','z');",
                    "#1=NODE('',$,(),$);"));
  EXPECT_THAT(HeaderOf(file),
              HasSubstr("FILE_NAME('It''s \\X\\E9', 't', ('\\X2\\03A9\\X0\\'), ('o'), 'p', 's', 'z');"));
}

TEST(ExpFileWrite, AHeaderValueOfTheFileReadIsWrittenUnchanged) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(kFullHeader, "#1=NODE('',$,(),$);"));
  EXPECT_EQ(HeaderOf(file), kFullHeaderWritten);
}

// ------------------------------------------------------------------------------------- round trips

const char kInstances[] =
    "#1=ALL_KINDS(1.5E-7,-3,'It''s \\X\\E9 \\X2\\03A9\\X0\\ \\\\ "
    "\\X4\\0001F600\\X0\\',#2,(1,2.5,'c',#4,((5),()),T(6)),.RED.,"
    ".U.,.T.,LENGTH(2.5));\n"
    "#2=ALL_KINDS(0.,0,'',#1,(),.A_1.,.F.,.F.,#1);\n#3=ALL_KINDS(1.E20,2147483647,' ',$,$,$,$,$,$);\n"
    "#4=LIBRARY_KINDS($,$,$);\n#50=LIBRARY_KINDS(*,*,.BLUE.);\n#51=(A(1,2)B('x')C(2.5));\n#52=EMPTY();\n"
    "#53=BOTTOM(1,((1,2),(3)),.T.,L(M('y')),'b');\n";

TEST(ExpFileWrite, WhatIsWrittenReadsAgainAndIsWrittenTheSame) {
  CapturedLog log;
  ExpFile first;
  Read(first, FileOf(kFullHeader, kInstances));
  EXPECT_EQ(log.lines.size(), 2u) << log.text;
  const std::string once = Written(first);
  log.Clear();
  ExpFile second;
  Read(second, once);
  EXPECT_EQ(log.lines.size(), 2u) << log.text;
  EXPECT_EQ(Written(second), once);
  EXPECT_EQ(second.GetMaxEntityNumber(), 53);
}

TEST(ExpFileWrite, APopulationBuiltFromNothingReadsAgain) {
  CapturedLog log;
  ExpFile file;
  auto* point = dynamic_cast<Point*>(file.CreateAndAddEntity("POINT"));
  ASSERT_NE(point, nullptr);
  point->name.SetExpString("p");
  point->coordinates.AddValue(new ExpReal(2.5));
  ExpFile again;
  Read(again, Written(file));
  EXPECT_EQ(again.GetEntity(1)->ToString(), "#1 = POINT('p', (2.5));");
}

// ---------------------------------------------------------------------------------- to a file name

TEST(ExpFileWriteToFile, LogsAndWritesTheSameText) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(kFullHeader, kInstances));
  TemporaryFile out("what stood here before, and was longer or shorter");
  log.Clear();
  file.Write(out.Path());
  EXPECT_THAT(log.lines, ElementsAre("Write file: " + out.Path()));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(true));
  EXPECT_EQ(out.Content(), Written(file));
}

TEST(ExpFileWriteToFile, CreatesAFileThatWasNotThere) {
  const std::string path = testing::TempDir() + "velmar_new_" + std::to_string(getpid()) + ".stp";
  std::remove(path.c_str());
  CapturedLog log;
  ExpFile file;
  file.Write(path);
  std::ifstream in(path, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  EXPECT_EQ(text, Written(file));
  std::remove(path.c_str());
}

TEST(ExpFileWriteToFile, ReplacesALongerFileCompletely) {
  TemporaryFile out(std::string(1000000, 'x'));
  CapturedLog log;
  ExpFile file;
  file.Write(out.Path());
  EXPECT_EQ(out.Content(), Written(file));
}

TEST(ExpFileWriteToFile, ReplacesTheFileThatWasRead) {
  TemporaryFile onDisk(FileOf(kFullHeader, "#1=NODE('one',$,(),$);"));
  CapturedLog log;
  ExpFile file;
  file.Read(onDisk.Path());
  file.Write(onDisk.Path());
  EXPECT_EQ(onDisk.Content(), Written(file));
  file.Read(onDisk.Path());
  EXPECT_NE(file.GetEntity(1), nullptr);
}

TEST(ExpFileWriteToFile, AFileThatCannotBeOpenedLeavesOnlyTheFirstLine) {
  for (const std::string& path :
       {std::string("/no/such/folder/part.stp"), std::string(), std::string("/proc")}) {
    CapturedLog log;
    ExpFile file;
    MakeIn<Point>(file, 1, kSchema);
    file.Write(path);
    EXPECT_THAT(log.lines, ElementsAre("Write file: " + path));
    EXPECT_NE(file.GetEntity(1), nullptr);
  }
}

TEST(ExpFileWriteToFile, KeepsASymbolicLinkAndTheModeOfTheFile) {
  TemporaryFile target("old");
  ASSERT_EQ(chmod(target.Path().c_str(), 0640), 0);
  const std::string link = target.Path() + ".link";
  ASSERT_EQ(symlink(target.Path().c_str(), link.c_str()), 0);
  CapturedLog log;
  ExpFile file;
  file.Write(link);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(target.Content(), Written(file));
  struct stat status = {};
  ASSERT_EQ(stat(target.Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0640u);
  std::remove(link.c_str());
}

TEST(ExpFileWriteToFile, MakesTheFileThatALinkLeadsTo) {
  TemporaryFile target;
  std::remove(target.Path().c_str());
  const std::string link = target.Path() + ".link";
  ASSERT_EQ(symlink(target.Path().c_str(), link.c_str()), 0);
  CapturedLog log;
  ExpFile file;
  file.Write(link);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(target.Content(), Written(file));
  std::remove(link.c_str());
}

TEST(ExpFileWriteToFile, AFileMayHaveTheLongestName) {
  const std::string path = testing::TempDir() + std::string(255, 'n');
  for (int time = 0; time < 2; ++time) {  // as a new file, and over that
    CapturedLog log;
    ExpFile file;
    if (time == 1) MarkUnsetValues(*file.CreateAndAddEntity("NODE"));
    file.Write(path);
    EXPECT_THAT(log.lines, ElementsAre("Write file: " + path));
    std::ifstream in(path, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), Written(file));
  }
  std::remove(path.c_str());
}

TEST(ExpFileWriteToFile, WritesIntoAPipeThatHasAName) {
  TemporaryFile place;
  const std::string path = place.Path() + ".fifo";
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] {
    std::ifstream in(path, std::ios::binary);
    received.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  });
  CapturedLog log;
  ExpFile file;
  file.Write(path);
  // Lets the reader go where the writer has not come to the pipe.
  const int fd = open(path.c_str(), O_WRONLY | O_NONBLOCK);
  if (fd != -1) close(fd);
  reader.join();
  EXPECT_TRUE(std::filesystem::is_fifo(path));
  EXPECT_EQ(received, Written(file));
  std::remove(path.c_str());
}

TEST(ExpFileWriteToFile, LeavesADeviceADevice) {
  TemporaryFile place;
  const std::string link = place.Path() + ".null";
  ASSERT_EQ(symlink("/dev/null", link.c_str()), 0);
  CapturedLog log;
  ExpFile file;
  file.Write(link);
  EXPECT_THAT(log.lines, ElementsAre("Write file: " + link));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  std::remove(link.c_str());
}

// -------------------------------------------------------------------------------- failing to write

enum class Thrown { Nothing, Pointer, String, Exception, Number };
Thrown thrownByText = Thrown::Nothing;

// An entity whose text cannot be made.
class Refusing : public ExpEntity {
 public:
  static ExpEntity* New() { return new Refusing; }
  std::string ToString() override {
    switch (thrownByText) {
      case Thrown::Pointer:
        throw "a pointer";
      case Thrown::String:
        throw std::string("a string");
      case Thrown::Exception:
        throw std::runtime_error("an exception");
      case Thrown::Number:
        throw 42;
      case Thrown::Nothing:
        break;
    }
    return "#2 = REFUSING();";
  }
};

void AddRefusing(ExpFile& file) {
  static const bool registered = [] {
    ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(
        new ExpEntityRuntimeType("REFUSING", kSchema, &Refusing::New, 0, 0, 0, false,
                                 new std::vector<std::string>, new std::vector<std::string>,
                                 new std::vector<std::string>, 0),
        "");
    return true;
  }();
  ASSERT_TRUE(registered);
  ExpEntity* entity = file.CreateEntity("REFUSING");
  entity->SetEntityNumber(2);
  file.AddEntity(2, entity);
}

struct FailureCase {
  Thrown thrown;
  const char* text;
};
class ExpFileWriteFailure : public testing::TestWithParam<FailureCase> {};

TEST_P(ExpFileWriteFailure, IsLoggedAndLeavesTheExistingFileAndTheStore) {
  TemporaryFile out("an existing file");
  CapturedLog log;
  ExpFile file;
  MakeIn<Point>(file, 1, kSchema);
  AddRefusing(file);
  thrownByText = GetParam().thrown;
  file.Write(out.Path());
  thrownByText = Thrown::Nothing;
  EXPECT_THAT(log.lines, ElementsAre("Write file: " + out.Path(),
                                     "Error while writing file '" + out.Path() + "'\n   " + GetParam().text));
  EXPECT_THAT(log.levels, ElementsAre(1, 4));
  EXPECT_THAT(log.ended, ElementsAre(true, true));
  EXPECT_EQ(out.Content(), "an existing file");
  EXPECT_NE(file.GetEntity(1), nullptr);
  EXPECT_NE(file.GetEntity(2), nullptr);
}

TEST_P(ExpFileWriteFailure, CreatesNoFile) {
  const std::string path = testing::TempDir() + "velmar_never_" + std::to_string(getpid()) + ".stp";
  std::remove(path.c_str());
  CapturedLog log;
  ExpFile file;
  AddRefusing(file);
  thrownByText = GetParam().thrown;
  file.Write(path);
  thrownByText = Thrown::Nothing;
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_P(ExpFileWriteFailure, ReachesTheCallerOfTheStreamForm) {
  CapturedLog log;
  ExpFile file;
  AddRefusing(file);
  thrownByText = GetParam().thrown;
  std::ostringstream out;
  bool thrown = false;
  try {
    file.Write(out);
  } catch (...) {
    thrown = true;
  }
  thrownByText = Thrown::Nothing;
  EXPECT_TRUE(thrown);
  EXPECT_THAT(log.lines, IsEmpty());
}

std::string NameOfThrown(const testing::TestParamInfo<FailureCase>& info) {
  const char* const names[] = {"Nothing", "Pointer", "String", "Exception", "Number"};
  return names[static_cast<int>(info.param.thrown)];
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExpFileWriteFailure,
                         testing::Values(FailureCase{Thrown::Pointer, "a pointer"},
                                         FailureCase{Thrown::String, "a string"},
                                         FailureCase{Thrown::Exception, "an exception"},
                                         FailureCase{Thrown::Number, "Unknown"}),
                         NameOfThrown);

TEST(ExpFileWriteToFile, AMalformedTextIsLoggedAndLeavesTheExistingFile) {
  TemporaryFile out("an existing file");
  CapturedLog log;
  ExpFile file;
  // Behind the NUL nobody looks whether the bytes are UTF-8 when they come in.
  MakeIn<Point>(file, 1, kSchema)->name.SetExpString(std::string("a\0\xC3", 3));
  file.Write(out.Path());
  ASSERT_EQ(log.lines.size(), 2u);
  EXPECT_EQ(log.lines[1], "Error while writing file '" + out.Path() +
                              "'\n   String ended in middle of utf8 character '" + std::string("a\0\xC3", 3) +
                              "' - index: 3");
  EXPECT_EQ(log.levels[1], 4);
  EXPECT_EQ(out.Content(), "an existing file");
}

TEST(ExpFileWriteToFile, ASelectWithoutValueIsLoggedAndLeavesTheExistingFile) {
  TemporaryFile out("an existing file");
  CapturedLog log;
  ExpFile file;
  MakeIn<Node>(file, 1, kSchema);
  file.Write(out.Path());
  ASSERT_EQ(log.lines.size(), 2u);
  EXPECT_THAT(log.lines[1],
              HasSubstr("expSelectedValue should not be NULL while writing ExpSelect to string."));
  EXPECT_EQ(out.Content(), "an existing file");
}

TEST(ExpFileWriteToFile, AFullDeviceIsLogged) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
  CapturedLog log;
  ExpFile file;
  file.Write(std::string("/dev/full"));
  ASSERT_EQ(log.lines.size(), 2u) << log.text;
  EXPECT_EQ(log.lines[0], "Write file: /dev/full");
  EXPECT_EQ(log.lines[1].find("Error while writing file '/dev/full'\n   "), 0u) << log.lines[1];
  EXPECT_EQ(log.levels[1], 4);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(ExpFileWriteToFile, AFullDiskIsLoggedAndLeavesTheExistingFile) {
  const std::string folder = testing::TempDir() + "velmar_full_" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  const std::string path = folder + "/part.stp";
  std::ofstream(path) << "an existing file";
  // No file of the child may become longer than 2000 bytes.
  const Ended ended = RunInChild([&path] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{2000, 2000};
    setrlimit(RLIMIT_FSIZE, &limit);
    ExpSimpleLogger logger(&std::cout);
    ExpLogger::AddLogger(&logger);
    ExpFile file;
    for (int i = 1; i <= 500; ++i)
      dynamic_cast<Node*>(file.CreateAndAddEntity("NODE"))->choice.SetNotProvided(true);
    file.Write(path);
    ExpLogger::RemoveLogger(&logger);
  });
  EXPECT_EQ(ended.exitStatus, 99);
  EXPECT_EQ(ended.output.find("Write file: " + path + "\nError while writing file '" + path + "'\n   "), 0u)
      << ended.output;
  std::ifstream in(path);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()),
            "an existing file");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()),
            1);
  std::filesystem::remove_all(folder);
}

struct CommaLocale : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(ExpFileWrite, DoesNotDependOnTheLocaleOfTheStream) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf(kFullHeader, "#123456=POINT('p',(1234567,1234567.5,#7654321));"));
  const std::string expected = Written(file);
  EXPECT_THAT(expected, HasSubstr("#123456 = POINT('p', (1234567, 1234567.5, #7654321));"));
  const std::locale comma(std::locale::classic(), new CommaLocale);
  std::ostringstream out;
  out.imbue(comma);
  file.Write(out);
  EXPECT_EQ(out.str(), expected);
  const std::locale before = std::locale::global(comma);
  TemporaryFile onDisk;
  file.Write(onDisk.Path());
  std::locale::global(before);
  EXPECT_EQ(onDisk.Content(), expected);
}

}  // namespace
