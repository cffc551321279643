// Files whose types come from one registry schema, whatever their headers say.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <sstream>
#include <string>

#include "CapturedLog.h"
#include "ExpFixedSchemaFile.h"
#include "ExpUtilities.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::kTestSchema;

// A file with one POINT, and a header that names `schema`, or no schema where that is empty.
std::string FileOf(const std::string& schema, const std::string& data = "#1=POINT('p',(1.));") {
  const std::string names = schema.empty() ? "" : "'" + schema + "'";
  return "ISO-10303-21;HEADER;FILE_SCHEMA((" + names + "));ENDSEC;DATA;" + data + "ENDSEC;END-ISO-10303-21;";
}

void Read(ExpFile& file, const std::string& text) {
  std::istringstream stream(text);
  file.Read(stream);
}

std::string Written(ExpFile& file) {
  std::ostringstream text;
  file.Write(text);
  return text.str();
}

// Nothing is registered under AP242 in these tests.
TEST(ExpFixedSchemaFile, ReadsWithItsSchemaWhateverTheHeaderSays) {
  ExpFile other;
  Read(other, FileOf("AP242"));
  EXPECT_EQ(other.GetEntity(1), nullptr);
  ExpFixedSchemaFile file(kTestSchema);
  Read(file, FileOf("AP242"));
  ASSERT_NE(file.GetEntity(1), nullptr);
  EXPECT_EQ(file.GetEntity(1)->ToString(), "#1 = POINT('p', (1.));");
  std::list<ExpEntity*> points;
  file.GetEntities(points, "point", true);
  EXPECT_THAT(points, ElementsAre(file.GetEntity(1)));
  EXPECT_EQ(file.GetEnforcedFactoryName(), kTestSchema);
}

TEST(ExpFixedSchemaFile, KeepsItsSchemaWhenItReadsAgainAndAppends) {
  ExpFixedSchemaFile file(kTestSchema);
  Read(file, FileOf("AP242"));
  Read(file, FileOf("CONFIG_CONTROL_DESIGN"));
  ASSERT_NE(file.GetEntity(1), nullptr);
  std::istringstream more(FileOf("PLIB"));
  file.Append(more);
  ASSERT_NE(file.GetEntity(2), nullptr);
  file.Init(STEP_AP242, "");
  EXPECT_EQ(file.GetMaxEntityNumber(), 0);
  EXPECT_NE(file.CreateAndAddEntity("POINT"), nullptr);
  EXPECT_EQ(file.CreateAndAddEntity("NO_SUCH_TYPE"), nullptr);
}

TEST(ExpFixedSchemaFile, WritesTheFileSchemaThatWasRead) {
  ExpFixedSchemaFile file(kTestSchema);
  Read(file, FileOf("AP242"));
  EXPECT_THAT(Written(file), HasSubstr("FILE_SCHEMA(('AP242'));\n"));
}

TEST(ExpFixedSchemaFile, WritesItsOwnNameWhereTheHeaderHasNone) {
  ExpFixedSchemaFile file(kTestSchema);
  Read(file, FileOf(""));
  EXPECT_NE(file.GetEntity(1), nullptr);
  EXPECT_THAT(Written(file), HasSubstr("FILE_SCHEMA(('TEST_SCHEMA'));\n"));
  ExpFixedSchemaFile named(kTestSchema, "PUBLISHED_NAME");
  EXPECT_EQ(named.GetSchemaName(), "PUBLISHED_NAME");
  EXPECT_THAT(Written(named), HasSubstr("FILE_SCHEMA(('PUBLISHED_NAME'));\n"));
}

TEST(ExpFixedSchemaFile, OfAnApplicationProtocolItHasTheCanonicalName) {
  VELMAR::TestData::RegisterTestEntities(*ExpRuntimeRegistry::GetInstance(), "AP203_E2");
  ExpFixedSchemaFile file("AP203_E2", "ANOTHER_NAME");
  EXPECT_EQ(file.GetSchema(), STEP_AP203E2);
  EXPECT_EQ(file.GetSchemaName(), ExpFile(STEP_AP203E2).GetSchemaName());
  EXPECT_EQ(ExpFixedSchemaFile(kTestSchema).GetSchema(), STEP_AP214);
}

TEST(ExpFixedSchemaFile, SettingAnotherSchemaChangesNothing) {
  ExpFixedSchemaFile file(kTestSchema);
  CapturedLog log;
  file.SetSchemaName("ap242");
  EXPECT_THAT(log.lines, ElementsAre("Input schema name: AP242  --  fixed schema name: TEST_SCHEMA"));
  file.SetSchema(STEP_AP203);
  EXPECT_EQ(file.GetEnforcedFactoryName(), kTestSchema);
  EXPECT_EQ(file.GetSchemaName(), kTestSchema);
  EXPECT_THROW(file.SetSchema(static_cast<Schema>(4)), descriptive_exception);
}

TEST(ExpFixedSchemaFile, UnknownNamesAreRefused) {
  try {
    ExpFixedSchemaFile file("NO_SUCH_SCHEMA");
    FAIL() << "nothing thrown";
  } catch (const descriptive_exception& error) {
    EXPECT_STREQ(error.what(), "ExpFixedSchemaFile: no schema is registered under the name: NO_SUCH_SCHEMA");
  }
}

TEST(ExpFixedSchemaFile, WithoutANameItGoesByTheHeader) {
  ExpFixedSchemaFile file("");
  CapturedLog log;
  Read(file, FileOf("AP242"));
  EXPECT_EQ(file.GetEntity(1), nullptr);
  EXPECT_EQ(file.GetSchema(), STEP_AP242);
  EXPECT_EQ(file.GetEnforcedFactoryName(), "AP242");
  EXPECT_EQ(file.GetSchemaName(), ExpFile(STEP_AP242).GetSchemaName());
  EXPECT_THAT(log.lines, Contains("Input schema name: AP242  --  mapped schema name: AP242"));
  Read(file, FileOf(""));
  EXPECT_NE(file.GetEntity(1), nullptr);
}

}  // namespace
