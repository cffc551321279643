// Exchange files: construction, the store behind them, reading and appending.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpFlyweightAdministration.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "ReadingSupport.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using reading::TemporaryFile;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::MakeIn;
using VELMAR::TestData::NewPlainType;
using VELMAR::TestData::Node;
using VELMAR::TestData::Point;

constexpr const char* kSchema = "AUTOMOTIVE_DESIGN";

// A file whose header names itself, with the given instances.
std::string FileOf(const std::string& instances, const std::string& name = "n",
                   const std::string& schema = kSchema) {
  return "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'),'1');\nFILE_NAME('" + name +
         "','t',('a'),('o'),'p','s','z');\nFILE_SCHEMA(('" + schema + "'));\nENDSEC;\nDATA;\n" + instances +
         "\nENDSEC;\nEND-ISO-10303-21;\n";
}

void Read(ExpFile& file, const std::string& text) {
  std::istringstream in(text);
  file.Read(in);
}

void Append(ExpFile& file, const std::string& text) {
  std::istringstream in(text);
  file.Append(in);
}

std::string DataOf(ExpFile& file) {
  std::ostringstream out;
  file.WriteDataSection(out);
  return out.str();
}

std::vector<std::string> TextsOf(ExpFile& file, const std::string& type) {
  std::list<ExpEntity*> entities;
  file.GetEntities(entities, type, false);
  std::vector<std::string> texts;
  for (ExpEntity* entity : entities) texts.push_back(entity->ToString());
  return texts;
}

void ExpectEmpty(ExpFile& file, int highestNumberBefore) {
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  for (int number = 0; number <= highestNumberBefore; ++number)
    EXPECT_EQ(file.GetEntity(number), nullptr) << number;
  EXPECT_THAT(TextsOf(file, "NODE"), IsEmpty());
  EXPECT_THAT(TextsOf(file, "FILE_NAME"), IsEmpty());
  EXPECT_EQ(DataOf(file), "DATA;\nENDSEC;\n");
}

const char kMapped[] = "Input schema name: AUTOMOTIVE_DESIGN  --  mapped schema name: AUTOMOTIVE_DESIGN";

// ------------------------------------------------------------------------------------ construction

TEST(ExpFile, StartsEmptyWithAStoreOf100000Slots) {
  ExpFile file;
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  EXPECT_EQ(file.GetEntityVectorSize(), 100000u);
  EXPECT_NE(file.GetAdaptedAdmin(), nullptr);
  EXPECT_EQ(file.GetAdminId(), file.GetAdaptedAdmin()->GetAdminId());
}

TEST(ExpFile, EveryFileHasAStoreOfItsOwn) {
  ExpFile a;
  ExpFile b;
  EXPECT_NE(a.GetAdminId(), b.GetAdminId());
}

TEST(ExpFile, ConstructionLogsNothing) {
  CapturedLog log;
  ExpFile a;
  ExpFile b(PLIB);
  ExpFile c(PLIB, "X");
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(ExpFile, InitEmptiesItAndSetsTheSchema) {
  CapturedLog log;
  ExpFile file;
  ExpAbstractObjectAdmin* store = file.GetAdaptedAdmin();
  TemporaryFile onDisk(FileOf("#1=NODE('',$,(),$);"));
  file.Read(onDisk.Path());
  ASSERT_NE(file.GetEntity(1), nullptr);
  file.Init(STEP_AP242, "OWN");
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  EXPECT_THAT(TextsOf(file, "NODE"), IsEmpty());
  EXPECT_EQ(file.GetSchema(), STEP_AP242);
  EXPECT_EQ(file.GetEnforcedFactoryName(), "OWN");
  EXPECT_EQ(file.GetAdaptedAdmin(), store);
}

TEST(ExpFile, ItsEndDeletesEveryInstance) {
  const std::size_t before = ExpEntity::instanceCount;
  {
    CapturedLog log;
    ExpFile file;
    Read(file, FileOf("#1=NODE('',$,(),$);#2=(A(1,2)B('x'));"));
    file.CreateEntity("NODE");
    EXPECT_GT(ExpEntity::instanceCount, before + 5);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

TEST(ExpFile, ItsEndDeletesAlsoEntitiesThatWereNeverNumbered) {
  const std::size_t before = ExpEntity::instanceCount;
  {
    CapturedLog log;
    ExpFile file;
    Read(file, FileOf(""));  // its header
    file.CreateEntity("NODE");
    EXPECT_EQ(ExpEntity::instanceCount, before + 4);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

// --------------------------------------------------------------------------------------- the store

TEST(ExpFile, StoreOperationsGoToTheStore) {
  ExpFile file;
  ExpAbstractObjectAdmin* store = file.GetAdaptedAdmin();
  Node* node = MakeIn<Node>(file, 7, kSchema);
  EXPECT_EQ(file.GetEntity(7), node);
  EXPECT_EQ(store->GetEntity(7), node);
  EXPECT_EQ(file.GetMaxEntityNumber(), 7);
  EXPECT_EQ(file.CreateEntityNumber(), 8);
  EXPECT_EQ(store->GetMaxEntityNumber(), 8);
  file.AddEntity(100000, node);
  EXPECT_EQ(file.GetEntityVectorSize(), 200000u);
  file.DeleteEntities();
  EXPECT_EQ(store->GetMaxEntityNumber(), 0);
  file.ClearEntityVector();
  EXPECT_EQ(file.GetEntityVectorSize(), 0u);
  file.ResetEntityVector();
  EXPECT_EQ(file.GetEntityVectorSize(), 100000u);
}

// A file whose store can be exchanged or taken away.
class Redirected : public ExpFile {
 public:
  ExpAbstractObjectAdmin* GetAdaptedAdmin() override { return own ? ExpFile::GetAdaptedAdmin() : other; }
  bool own = true;
  ExpAbstractObjectAdmin* other = nullptr;
};

TEST(ExpFile, AnOverriddenGetAdaptedAdminRedirectsEveryStoreOperation) {
  ExpFlyweightAdministration other(10);
  Redirected file;
  Node* own = MakeIn<Node>(file, 1, kSchema);
  file.own = false;
  file.other = &other;
  EXPECT_EQ(file.GetEntity(1), nullptr);
  EXPECT_EQ(file.GetAdminId(), other.GetAdminId());
  EXPECT_EQ(file.GetEntityVectorSize(), 10u);
  auto* node = MakeIn<Point>(file, 5, kSchema);
  EXPECT_EQ(other.GetEntity(5), node);
  EXPECT_EQ(file.GetMaxEntityNumber(), 5);
  EXPECT_EQ(file.CreateEntityNumber(), 6);
  EXPECT_EQ(DataOf(file), "DATA;\n" + node->ToString() + "\nENDSEC;\n");
  file.DeleteEntities();
  EXPECT_EQ(other.GetMaxEntityNumber(), 0);
  file.ClearEntityVector();
  EXPECT_EQ(other.GetEntityVectorSize(), 0u);
  file.ResetEntityVector();
  EXPECT_EQ(other.GetEntityVectorSize(), 10u);
  file.own = true;
  EXPECT_EQ(file.GetEntity(1), own);
}

TEST(ExpFile, WithoutAStoreTheAdminIdIsMinusOneAndEmptyingDoesNothing) {
  Redirected file;
  Node* node = MakeIn<Node>(file, 1, kSchema);
  file.own = false;
  EXPECT_EQ(file.GetAdminId(), static_cast<unsigned int>(-1));
  file.DeleteEntities();
  file.ClearEntityVector();
  file.ResetEntityVector();
  file.own = true;
  EXPECT_EQ(file.GetEntity(1), node);
  EXPECT_EQ(file.GetMaxEntityNumber(), 1);
}

// ------------------------------------------------------------------------------------ CreateEntity

TEST(ExpFile, CreateEntityCreatesForTheStoreAndDoesNotAdd) {
  ExpFile file;
  ExpEntity* entity = file.CreateEntity("POINT");
  ASSERT_NE(dynamic_cast<Point*>(entity), nullptr);
  EXPECT_EQ(entity->GetEntityNumber(), -1);
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  EXPECT_THAT(TextsOf(file, "POINT"), ElementsAre("POINT('', ());"));
}

TEST(ExpFile, CreateEntityOfAnUnknownNameIsNull) {
  ExpFile file;
  const std::size_t before = ExpEntity::instanceCount;
  CapturedLog log;
  EXPECT_EQ(file.CreateEntity("NO_SUCH_TYPE"), nullptr);
  EXPECT_EQ(file.CreateEntity(""), nullptr);
  EXPECT_EQ(file.CreateEntity("node"), nullptr);
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(ExpFile, CreateEntitySearchesTheFactoryUntilTheSchemaIsSet) {
  ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(
      NewPlainType("ONLY_IN_FACTORY", "FACTORY_OF_A_FILE"), "");
  ExpFile file(STEP_AP214, "FACTORY_OF_A_FILE");
  CapturedLog log;
  EXPECT_NE(file.CreateEntity("ONLY_IN_FACTORY"), nullptr);
  EXPECT_EQ(file.CreateEntity("NODE"), nullptr);
  file.SetSchema(STEP_AP214);
  EXPECT_EQ(file.CreateEntity("ONLY_IN_FACTORY"), nullptr);
  EXPECT_NE(file.CreateEntity("NODE"), nullptr);
  EXPECT_THAT(log.lines,
              ElementsAre("the type: NODE isn't available for the schema: FACTORY_OF_A_FILE",
                          "the type: ONLY_IN_FACTORY isn't available for the schema: AUTOMOTIVE_DESIGN"));
}

TEST(ExpFile, CreateEntityFindsHeaderTypesInEverySchema) {
  for (const Schema schema : {STEP_AP203, STEP_AP203E2, STEP_AP214, STEP_AP242, PLIB, ISO13399}) {
    ExpFile file(schema);
    for (const char* name : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "ExpExternalMappingEntity"}) {
      EXPECT_NE(file.CreateEntity(name), nullptr) << name;
    }
  }
}

TEST(ExpFile, WithoutAStoreACreatedEntityBelongsToTheCaller) {
  Redirected file;
  file.own = false;
  const std::size_t before = ExpEntity::instanceCount;
  const std::unique_ptr<ExpEntity> entity(file.CreateEntity("NODE"));
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  file.own = true;
  EXPECT_THAT(TextsOf(file, "NODE"), IsEmpty());
}

// ----------------------------------------------------------------------------- logging and dumping

TEST(ExpFile, LogWritesTheMessageWithoutLineEnd) {
  CapturedLog log;
  ExpFile::Log("a message");
  EXPECT_THAT(log.lines, ElementsAre("a message"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(false));
}

TEST(ExpFile, DumpEntityWritesAFileOfTheEntityAndWhatItRefersTo) {
  CapturedLog log;
  ExpFile file;
  Read(file,
       FileOf(
           "#1=NODE('one',#3,(),$);#2=NODE('two',$,(),$);#3=NODE('three',$,(#5),$);#5=NODE('five',$,(),$);"));
  const std::string expected =
      "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION(('d'), '1');\nFILE_NAME('n', 't', ('a'), ('o'), 'p', 's', "
      "'z');\n"
      "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\n\nDATA;\n#5 = NODE('five', $, (), $);\n"
      "#3 = NODE('three', $, (#5), $);\n#1 = NODE('one', #3, (), $);\nENDSEC;\nEND-ISO-10303-21;\n";
  std::ostringstream byEntity;
  file.DumpEntity(file.GetEntity(1), byEntity);
  EXPECT_EQ(byEntity.str(), expected);
  std::ostringstream byNumber;
  file.DumpEntity(1, byNumber);
  EXPECT_EQ(byNumber.str(), expected);
}

TEST(ExpFile, ADumpReadsAgain) {
  CapturedLog log;
  ExpFile file;
  Read(file, FileOf("#1=NODE('one',#3,(),$);#3=NODE('three',#1,(),$);"));
  std::ostringstream out;
  file.DumpEntity(3, out);
  log.Clear();
  ExpFile again;
  Read(again, out.str());
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", kMapped));
  EXPECT_EQ(DataOf(again), DataOf(file));
}

// ----------------------------------------------------------------------------------------- reading

TEST(ExpFileRead, ReadsAFileAndLogsWhatItDoes) {
  TemporaryFile onDisk(FileOf("#1=NODE('one',#2,(),$);\n#2=NODE('two',$,(),$);"));
  ExpFile file;
  CapturedLog log;
  file.Read(onDisk.Path());
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", kMapped));
  EXPECT_THAT(log.levels, ElementsAre(1, 1));
  EXPECT_THAT(log.ended, ElementsAre(true, true));
  EXPECT_EQ(DataOf(file), "DATA;\n#1 = NODE('one', #2, (), $);\n#2 = NODE('two', $, (), $);\nENDSEC;\n");
}

TEST(ExpFileRead, ReadsAStream) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#4=NODE('four',$,(),$);"));
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", kMapped));
  EXPECT_EQ(file.GetMaxEntityNumber(), 4);
}

TEST(ExpFileRead, SyntaxErrorsAndMissingTypesAreLoggedInTheirOrder) {
  ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(NewPlainType("ELSEWHERE_ONLY", "SOME_SCHEMA"),
                                                               "");
  ExpFile file;
  CapturedLog log;
  Read(file,
       FileOf(
           "#1=ELSEWHERE_ONLY();\n#2=node();\n#3=ELSEWHERE_ONLY();\n#4=NEVER_SEEN();\n#5=NODE('',$,(),$);"));
  EXPECT_EQ(log.text, std::string("Reading from stream\n") + kMapped +
                          "\nthe type: ELSEWHERE_ONLY isn't available for the schema: AUTOMOTIVE_DESIGN\n"
                          "-- line 9 col 4: invalid entityInstance\n"
                          "the type: ELSEWHERE_ONLY isn't available for the schema: AUTOMOTIVE_DESIGN\n");
  EXPECT_EQ(DataOf(file), "DATA;\n#5 = NODE('', $, (), $);\nENDSEC;\n");
}

TEST(ExpFileRead, AMissingFileIsLoggedAndChangesNothing) {
  TemporaryFile onDisk(FileOf("#1=NODE('one',$,(),$);", ""));
  ExpFile file;
  CapturedLog log;
  file.Read(onDisk.Path());
  ExpEntity* entity = file.GetEntity(1);
  log.Clear();
  file.Read(std::string("/no/such/part.stp"));
  EXPECT_THAT(log.lines, ElementsAre("Error while opening file /no/such/part.stp"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(true));
  EXPECT_EQ(file.GetEntity(1), entity);
  EXPECT_EQ(file.GetMaxEntityNumber(), 1);
  // The file's name is still that of the file that was read.
  std::ostringstream out;
  file.WriteHeaderSection(out);
  EXPECT_THAT(out.str(), testing::HasSubstr("FILE_NAME('" + onDisk.Path() + "', "));
}

TEST(ExpFileRead, AnEmptyNameIsAMissingFile) {
  ExpFile file;
  CapturedLog log;
  file.Read(std::string());
  EXPECT_THAT(log.lines, ElementsAre("Error while opening file "));
}

TEST(ExpFileRead, AFolderGivesNoPopulation) {
  ExpFile file;
  CapturedLog log;
  file.Read(std::filesystem::temp_directory_path().string());
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  EXPECT_FALSE(log.lines.empty());
}

TEST(ExpFileRead, ReplacesThePopulationAndLeavesNoStaleSlot) {
  ExpFile file;
  CapturedLog log;
  std::string many;
  for (int i = 1; i <= 50; ++i) many += "#" + std::to_string(i) + "=NODE('old',$,(),$);\n";
  Read(file, FileOf(many + "#150000=NODE('far',$,(),$);"));
  ASSERT_NE(file.GetEntity(50), nullptr);
  ASSERT_NE(file.GetEntity(150000), nullptr);
  Read(file, FileOf("#7=NODE('new',$,(),$);"));
  EXPECT_EQ(file.GetMaxEntityNumber(), 7);
  for (int i = 0; i <= 50; ++i) EXPECT_EQ(file.GetEntity(i) != nullptr, i == 7) << i;
  EXPECT_EQ(file.GetEntity(150000), nullptr);
  EXPECT_EQ(DataOf(file), "DATA;\n#7 = NODE('new', $, (), $);\nENDSEC;\n");
  EXPECT_THAT(TextsOf(file, "NODE"), ElementsAre("#7 = NODE('new', $, (), $);"));
  EXPECT_EQ(file.CreateEntityNumber(), 8);
}

TEST(ExpFileRead, TheHeaderIsThatOfTheFileJustRead) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);", "first"));
  Read(file, FileOf("#1=NODE('',$,(),$);", "second"));
  EXPECT_THAT(TextsOf(file, "FILE_NAME"),
              ElementsAre("FILE_NAME('second', 't', ('a'), ('o'), 'p', 's', 'z');"));
  EXPECT_EQ(TextsOf(file, "FILE_SCHEMA").size(), 1u);
  EXPECT_EQ(TextsOf(file, "FILE_DESCRIPTION").size(), 1u);
}

TEST(ExpFileRead, TheHeaderIsThatOfTheFileJustReadAlsoBehindAFileWithoutInstances) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("", "first", "AP242"));
  EXPECT_EQ(file.GetSchema(), STEP_AP242);
  EXPECT_THAT(TextsOf(file, "FILE_NAME"),
              ElementsAre("FILE_NAME('first', 't', ('a'), ('o'), 'p', 's', 'z');"));
  Read(file, FileOf("#1=NODE('',$,(),$);", "second"));
  EXPECT_THAT(TextsOf(file, "FILE_NAME"),
              ElementsAre("FILE_NAME('second', 't', ('a'), ('o'), 'p', 's', 'z');"));
  EXPECT_THAT(TextsOf(file, "FILE_SCHEMA"), ElementsAre("FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));"));
  EXPECT_EQ(file.GetSchema(), STEP_AP214);
}

TEST(ExpFileRead, TheHeaderIsThatOfTheFileJustReadAlsoBehindAWriteOfAnEmptyFile) {
  ExpFile file;
  CapturedLog log;
  std::ostringstream out;
  file.Write(out);
  Read(file, FileOf("#1=NODE('',$,(),$);", "read"));
  EXPECT_THAT(TextsOf(file, "FILE_NAME"),
              ElementsAre("FILE_NAME('read', 't', ('a'), ('o'), 'p', 's', 'z');"));
}

TEST(ExpFileRead, EntitiesThatWereNeverNumberedAreDeletedToo) {
  const std::size_t before = ExpEntity::instanceCount;
  ExpFile file;
  CapturedLog log;
  file.CreateEntity("NODE");
  file.CreateEntity("NODE");
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  EXPECT_EQ(ExpEntity::instanceCount, before + 4);
}

struct SchemaCase {
  const char* name;
  int schema;
};
class ExpFileReadSchema : public testing::TestWithParam<SchemaCase> {};

TEST_P(ExpFileReadSchema, SelectsTheSchema) {
  ExpFile file(ISO13399);
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);", "n", GetParam().name));
  EXPECT_EQ(static_cast<int>(file.GetSchema()), GetParam().schema);
  ASSERT_GE(log.lines.size(), 2u);
  const std::string upper = ToUpperString(GetParam().name);
  EXPECT_EQ(log.lines[1], "Input schema name: " + upper + "  --  mapped schema name: " + upper);
}

INSTANTIATE_TEST_SUITE_P(
    Names, ExpFileReadSchema,
    testing::Values(
        SchemaCase{"CONFIG_CONTROL_DESIGN", 0}, SchemaCase{"config_control_design", 0},
        SchemaCase{"AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF", 1},
        SchemaCase{"AUTOMOTIVE_DESIGN { 1 0 10303 214 3 1 1 }", 2}, SchemaCase{"AUTOMOTIVE_DESIGN_CC2", 2},
        SchemaCase{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF { 1 0 10303 442 1 1 4 }", 3},
        SchemaCase{"ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", 5},
        SchemaCase{"CUTTING_TOOL_SCHEMA_ARM", 6}, SchemaCase{"IFC4", 2}, SchemaCase{"", 2}));

TEST(ExpFileRead, AFileWithoutFileSchemaIsReadAsAp214) {
  ExpFile file(PLIB);
  CapturedLog log;
  Read(file,
       "ISO-10303-21;HEADER;FILE_DESCRIPTION(('d'),'1');ENDSEC;DATA;#1=NODE('',$,(),$);ENDSEC;END-ISO-10303-"
       "21;");
  EXPECT_EQ(file.GetSchema(), STEP_AP214);
  EXPECT_NE(file.GetEntity(1), nullptr);
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", "Input schema name:   --  mapped schema name: "));
}

TEST(ExpFileRead, ReadingReplacesTheFactoryGivenToTheConstructor) {
  ExpFile file(STEP_AP214, "FACTORY_OF_A_FILE");
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  EXPECT_EQ(file.GetEnforcedFactoryName(), "AUTOMOTIVE_DESIGN");
  EXPECT_NE(file.GetEntity(1), nullptr);
}

TEST(ExpFileRead, AFailedStreamLeavesAnEmptyFile) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);#2=NODE('',$,(),$);"));
  std::istringstream in(FileOf("#1=NODE('',$,(),$);"));
  in.setstate(std::ios::failbit);
  log.Clear();
  file.Read(in);
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream"));
  ExpectEmpty(file, 3);
}

TEST(ExpFileRead, AnEmptyFileLeavesAnEmptyFile) {
  TemporaryFile onDisk;
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  log.Clear();
  file.Read(onDisk.Path());
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream"));
  ExpectEmpty(file, 3);
}

// --------------------------------------------------------------------------------- failing to read

enum class Thrown { Pointer, String, Exception, Number };

// A file whose store refuses the instance #3.
class Failing : public ExpFile {
 public:
  explicit Failing(Thrown thrown) : thrown_(thrown) {}
  using ExpFile::AddEntity;
  void AddEntity(int number, ExpEntity* entity) override {
    if (entity != nullptr && number == failsAt) {
      switch (thrown_) {
        case Thrown::Pointer:
          throw "a pointer";
        case Thrown::String:
          throw std::string("a string");
        case Thrown::Exception:
          throw std::runtime_error("an exception");
        case Thrown::Number:
          throw 42;
      }
    }
    ExpFile::AddEntity(number, entity);
  }
  void DeleteEntities() override {
    ++deletions;
    ExpFile::DeleteEntities();
  }
  int failsAt = 3;
  int deletions = 0;

 private:
  Thrown thrown_;
};

struct ThrownCase {
  Thrown thrown;
  const char* line;  // behind the message text
};

class ExpFileFailure : public testing::TestWithParam<ThrownCase> {};

const char kThree[] = "#1=NODE('1',$,(),$);#2=NODE('2',$,(),$);#3=NODE('3',$,(),$);#4=NODE('4',$,(),$);";

TEST_P(ExpFileFailure, OfReadingIsLoggedAndEmptiesTheFile) {
  Failing file(GetParam().thrown);
  CapturedLog log;
  Read(file, FileOf("#5=NODE('before',$,(),$);"));
  log.Clear();
  file.deletions = 0;
  Read(file, FileOf(kThree));
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", kMapped,
                                     std::string("Error while reading from filestream") + GetParam().line));
  EXPECT_THAT(log.levels, ElementsAre(1, 1, 4));
  EXPECT_THAT(log.ended, ElementsAre(true, true, true));
  EXPECT_GE(file.deletions, 2);
  ExpectEmpty(file, 6);
}

TEST_P(ExpFileFailure, OfAppendingIsLoggedAndDiscardsAlsoWhatWasThere) {
  Failing file(GetParam().thrown);
  CapturedLog log;
  Read(file, FileOf("#1=NODE('before',$,(),$);"));
  ASSERT_NE(file.GetEntity(1), nullptr);
  log.Clear();
  file.deletions = 0;
  Append(file, FileOf(kThree));
  EXPECT_THAT(log.lines, ElementsAre("Appending from stream",
                                     std::string("Error while appending from filestream") + GetParam().line));
  EXPECT_THAT(log.levels, ElementsAre(1, 4));
  EXPECT_GE(file.deletions, 1);
  ExpectEmpty(file, 6);
}

TEST_P(ExpFileFailure, DoesNotPreventTheNextReading) {
  Failing file(GetParam().thrown);
  CapturedLog log;
  Read(file, FileOf(kThree));
  file.failsAt = -1;
  Read(file, FileOf(kThree));
  EXPECT_EQ(file.GetMaxEntityNumber(), 4);
  EXPECT_EQ(TextsOf(file, "FILE_NAME").size(), 1u);
}

std::string NameOfThrown(const testing::TestParamInfo<ThrownCase>& info) {
  const char* const names[] = {"Pointer", "String", "Exception", "Number"};
  return names[static_cast<int>(info.param.thrown)];
}

INSTANTIATE_TEST_SUITE_P(Kinds, ExpFileFailure,
                         testing::Values(ThrownCase{Thrown::Pointer, " a pointer"},
                                         ThrownCase{Thrown::String, " a string"},
                                         ThrownCase{Thrown::Exception, " an exception"},
                                         ThrownCase{Thrown::Number, "'\n   Unknown"}),
                         NameOfThrown);

TEST(ExpFileRead, AHeaderWithoutRecordsFailsTheReading) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  log.Clear();
  Read(file, "ISO-10303-21;HEADER;ENDSEC;DATA;#1=NODE('',$,(),$);ENDSEC;END-ISO-10303-21;");
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream",
                                     "Error while reading from filestream std::bad_array_new_length"));
  EXPECT_THAT(log.levels, ElementsAre(1, 4));
  ExpectEmpty(file, 3);
}

class ExpFileAbsurdNumber : public testing::TestWithParam<const char*> {};

TEST_P(ExpFileAbsurdNumber, FailsTheReading) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf(std::string("#1=NODE('',$,(),$);") + GetParam() + "=NODE('',$,(),$);"));
  ASSERT_EQ(log.lines.size(), 3u);
  EXPECT_EQ(log.lines[2].find("Error while reading from filestream "), 0u) << log.lines[2];
  EXPECT_EQ(log.levels[2], 4);
  ExpectEmpty(file, 3);
}

INSTANTIATE_TEST_SUITE_P(Numbers, ExpFileAbsurdNumber,
                         testing::Values("#1073741824", "#2147483647", "#2147483648", "#4294967295",
                                         "#99999999999999999999"));

TEST(ExpFileRead, AnExceptionOfALoggerFailsTheReading) {
  class Throwing : public ExpAbstractLogger {
   public:
    Throwing() { ExpLogger::AddLogger(this); }
    ~Throwing() override { ExpLogger::RemoveLogger(this); }
    void Write(const std::string& message, const ExpLogLevel&) override {
      if (message == "Reading from stream\n") throw std::string("no log");
    }
  };
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  log.Clear();
  {
    Throwing logger;
    Read(file, FileOf("#2=NODE('',$,(),$);"));
  }
  EXPECT_THAT(log.lines, ElementsAre("Reading from stream", "Error while reading from filestream no log"));
  ExpectEmpty(file, 3);
}

// --------------------------------------------------------------------------------------- appending

TEST(ExpFileAppend, NumbersTheInstancesBehindThoseThatAreThere) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#3=NODE('three',#10,(),$);#10=NODE('ten',$,(),$);", "first"));
  log.Clear();
  Append(file, FileOf("#1=NODE('one',#2,(#1,(#2)),L(#1));#2=NODE('two',$,(),$);", "second", "AP242"));
  EXPECT_THAT(log.lines, ElementsAre("Appending from stream"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_EQ(DataOf(file),
            "DATA;\n#3 = NODE('three', #10, (), $);\n#10 = NODE('ten', $, (), $);\n"
            "#11 = NODE('one', #12, (#11, (#12)), L(#11));\n#12 = NODE('two', $, (), $);\nENDSEC;\n");
}

TEST(ExpFileAppend, KeepsHeaderAndSchema) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);", "first"));
  Append(file, FileOf("#1=NODE('',$,(),$);", "second", "AP242"));
  EXPECT_EQ(file.GetSchema(), STEP_AP214);
  EXPECT_THAT(TextsOf(file, "FILE_NAME"),
              ElementsAre("FILE_NAME('first', 't', ('a'), ('o'), 'p', 's', 'z');"));
  EXPECT_EQ(TextsOf(file, "FILE_SCHEMA").size(), 1u);
}

TEST(ExpFileAppend, ToAnEmptyFileKeepsTheNumbersAndMakesNoHeader) {
  ExpFile file;
  CapturedLog log;
  Append(file, FileOf("#5=NODE('',#5,(),$);"));
  EXPECT_EQ(DataOf(file), "DATA;\n#5 = NODE('', #5, (), $);\nENDSEC;\n");
  EXPECT_THAT(TextsOf(file, "FILE_NAME"), IsEmpty());
}

TEST(ExpFileAppend, TakesTheHighestNumberFromTheVirtualOperation) {
  class Higher : public ExpFile {
   public:
    int GetMaxEntityNumber() override { return 100; }
  } file;
  CapturedLog log;
  Append(file, FileOf("#1=NODE('',$,(),$);"));
  EXPECT_NE(file.GetEntity(101), nullptr);
}

TEST(ExpFileAppend, OfAFileKeepsTheNameOfTheFileRead) {
  TemporaryFile first(FileOf("#1=NODE('',$,(),$);", ""));
  TemporaryFile second(FileOf("#1=NODE('',$,(),$);", ""));
  ExpFile file;
  CapturedLog log;
  file.Read(first.Path());
  log.Clear();
  file.Append(second.Path());
  EXPECT_THAT(log.lines, ElementsAre("Appending from stream"));
  EXPECT_EQ(file.GetMaxEntityNumber(), 2);
  std::ostringstream out;
  file.WriteHeaderSection(out);
  EXPECT_THAT(out.str(), testing::HasSubstr("FILE_NAME('" + first.Path() + "', "));
}

TEST(ExpFileAppend, OfAMissingFileIsLoggedAndChangesNothing) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  log.Clear();
  file.Append(std::string("/no/such/part.stp"));
  EXPECT_THAT(log.lines, ElementsAre("Error while opening file /no/such/part.stp"));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_NE(file.GetEntity(1), nullptr);
}

TEST(ExpFileAppend, OfAnEmptyStreamChangesNothing) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  Append(file, "");
  EXPECT_NE(file.GetEntity(1), nullptr);
  EXPECT_EQ(file.GetMaxEntityNumber(), 1);
}

TEST(ExpFileAppend, TheSameFileManyTimes) {
  ExpFile file;
  CapturedLog log;
  for (int i = 0; i < 10; ++i) Append(file, FileOf("#1=NODE('',#2,(),$);#2=NODE('',#1,(),$);"));
  EXPECT_EQ(file.GetMaxEntityNumber(), 20);
  EXPECT_EQ(file.GetEntity(19)->ToString(), "#19 = NODE('', #20, (), $);");
  EXPECT_EQ(file.GetEntity(20)->ToString(), "#20 = NODE('', #19, (), $);");
}

TEST(ExpFileAppend, SyntaxErrorsAreLoggedAndTheRestIsAppended) {
  ExpFile file;
  CapturedLog log;
  Read(file, FileOf("#1=NODE('',$,(),$);"));
  log.Clear();
  Append(file, FileOf("#1=node();\n#2=NODE('two',$,(),$);"));
  EXPECT_THAT(log.lines, ElementsAre("Appending from stream", "-- line 8 col 4: invalid entityInstance"));
  EXPECT_EQ(file.GetMaxEntityNumber(), 3);
  EXPECT_NE(file.GetEntity(1), nullptr);
}

}  // namespace
