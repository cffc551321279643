// The schemas a file can be of, by value and by the names found in files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace {

using namespace VELMAR;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::CapturedLog;

struct SchemaRow {
  int value;
  Schema schema;
  const char* constant;
  const char* canonical;
  const char* registered;
};
std::ostream& operator<<(std::ostream& os, const SchemaRow& row) { return os << row.value; }

class SchemaTable : public testing::TestWithParam<SchemaRow> {};

TEST_P(SchemaTable, TheEnumeratorHasItsValueAndTheConstantItsName) {
  EXPECT_EQ(static_cast<int>(GetParam().schema), GetParam().value);
  EXPECT_STREQ(GetParam().constant, GetParam().canonical);
}

TEST_P(SchemaTable, SetSchemaSetsSchemaNameAndFactory) {
  ExpFile file(GetParam().schema == STEP_AP203 ? STEP_AP214 : STEP_AP203);
  CapturedLog log;
  file.SetSchema(GetParam().schema);
  EXPECT_EQ(file.GetSchema(), GetParam().schema);
  EXPECT_EQ(file.GetSchemaName(), GetParam().canonical);
  EXPECT_EQ(file.GetEnforcedFactoryName(), GetParam().registered);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST_P(SchemaTable, TheConstructorSetsIt) {
  ExpFile file(GetParam().schema);
  EXPECT_EQ(file.GetSchema(), GetParam().schema);
  EXPECT_EQ(file.GetSchemaName(), GetParam().canonical);
  EXPECT_EQ(file.GetEnforcedFactoryName(), GetParam().registered);
}

TEST_P(SchemaTable, TheCanonicalNameSelectsItsOwnValue) {
  ExpFile file(GetParam().schema == STEP_AP203 ? STEP_AP214 : STEP_AP203);
  file.SetSchemaName(GetParam().canonical);
  EXPECT_EQ(file.GetSchema(), GetParam().schema);
}

TEST_P(SchemaTable, TheRegisteredNameSelectsItToo) {
  ExpFile file(GetParam().schema == STEP_AP203 ? STEP_AP214 : STEP_AP203);
  file.SetSchemaName(GetParam().registered);
  EXPECT_EQ(file.GetSchema(), GetParam().schema);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, SchemaTable,
    testing::Values(
        SchemaRow{0, STEP_AP203, ExpFile::SCHEMA_NAME_STEP_AP203, "CONFIG_CONTROL_DESIGN",
                  "CONFIG_CONTROL_DESIGN"},
        SchemaRow{1, STEP_AP203E2, ExpFile::SCHEMA_NAME_STEP_AP203E2,
                  "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
                  "AP203_E2"},
        SchemaRow{2, STEP_AP214, ExpFile::SCHEMA_NAME_STEP_AP214, "AUTOMOTIVE_DESIGN", "AUTOMOTIVE_DESIGN"},
        SchemaRow{3, STEP_AP242, ExpFile::SCHEMA_NAME_STEP_AP242,
                  "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM", "AP242"},
        SchemaRow{5, PLIB, ExpFile::SCHEMA_NAME_PLIB, "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA",
                  "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA"},
        SchemaRow{6, ISO13399, ExpFile::SCHEMA_NAME_ISO13399, "CUTTING_TOOL_SCHEMA_ARM",
                  "CUTTING_TOOL_SCHEMA_ARM"}),
    [](const auto& info) { return "Value" + std::to_string(info.param.value); });

class UnknownSchema : public testing::TestWithParam<int> {};

TEST_P(UnknownSchema, SetSchemaThrowsAndChangesNothing) {
  ExpFile file(STEP_AP242, "OWN_FACTORY");
  try {
    file.SetSchema(static_cast<Schema>(GetParam()));
    ADD_FAILURE() << "nothing thrown";
  } catch (const descriptive_exception& e) {
    EXPECT_STREQ(e.what(), "ExpFile::SetSchema(): Unknown schema version!");
  }
  EXPECT_EQ(file.GetSchema(), STEP_AP242);
  EXPECT_EQ(file.GetSchemaName(), "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM");
  EXPECT_EQ(file.GetEnforcedFactoryName(), "OWN_FACTORY");
}

TEST_P(UnknownSchema, TheConstructorsThrow) {
  const auto schema = static_cast<Schema>(GetParam());
  EXPECT_THROW(ExpFile file(schema), descriptive_exception);
  EXPECT_THROW(ExpFile file(schema, "OWN_FACTORY"), descriptive_exception);
  try {
    ExpFile file(schema);
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "ExpFile::SetSchema(): Unknown schema version!");
  }
}

INSTANTIATE_TEST_SUITE_P(Values, UnknownSchema, testing::Values(4, -1, 7, 100, -2147483647 - 1, 2147483647));

TEST(SchemaSelection, TheSchemaHas32Bits) { EXPECT_EQ(sizeof(Schema), 4u); }

struct NameRow {
  const char* name;
  int value;
};
std::ostream& operator<<(std::ostream& os, const NameRow& row) { return os << row.name; }

class SchemaNames : public testing::TestWithParam<NameRow> {};

TEST_P(SchemaNames, SelectTheirValue) {
  ExpFile file(GetParam().value == 5 ? ISO13399 : PLIB);
  CapturedLog log;
  file.SetSchemaName(GetParam().name);
  EXPECT_EQ(static_cast<int>(file.GetSchema()), GetParam().value);
  const std::string upper = ToUpperString(GetParam().name);
  EXPECT_THAT(log.lines, ElementsAre("Input schema name: " + upper + "  --  mapped schema name: " + upper));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(true));
}

INSTANTIATE_TEST_SUITE_P(Rule1, SchemaNames,
                         testing::Values(NameRow{"CONFIG_CONTROL_DESIGN", 0},
                                         NameRow{"config_control_design", 0},
                                         NameRow{"CONFIG CONTROL DESIGN", 0}, NameRow{"AP203", 0},
                                         NameRow{"ap203", 0}, NameRow{"CONFIG_CONTROL_DESIGN ", 2},
                                         NameRow{"CONFIG_CONTROL_DESIGNS", 2}, NameRow{" AP203", 2},
                                         NameRow{"AP203 EDITION", 2},
                                         NameRow{"CONFIG_CONTROL_DESIGN { 1 0 10303 }", 2}));
INSTANTIATE_TEST_SUITE_P(Rule2, SchemaNames,
                         testing::Values(NameRow{"AP203_E2", 1}, NameRow{"ap203_e2", 1},
                                         NameRow{"AP203 E2", 1}, NameRow{"AP203_CONFIGURATION", 1},
                                         NameRow{"AP203_CONFIGURATION_AND_MORE", 1},
                                         NameRow{"XAP203_CONFIGURATION_AUTO_242", 1}, NameRow{"AP203_E2 ", 2},
                                         NameRow{"AP203_E3", 2}, NameRow{"AP203 CONFIGURATION", 2}));
INSTANTIATE_TEST_SUITE_P(Rule3, SchemaNames,
                         testing::Values(NameRow{"AP214", 2}, NameRow{"XAP214X", 2}, NameRow{"AUTO", 2},
                                         NameRow{"AUTOMOTIVE_DESIGN_CC2", 2},
                                         NameRow{"automotive_design { 1 0 10303 214 3 1 1 }", 2},
                                         NameRow{"AP214_242", 2}, NameRow{"242_AUTO", 2},
                                         NameRow{"ISO13584_AUTO", 2}));
INSTANTIATE_TEST_SUITE_P(
    Rule4, SchemaNames,
    testing::Values(NameRow{"242", 3}, NameRow{"AP242", 3}, NameRow{"ap242", 3},
                    NameRow{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF", 3},
                    NameRow{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF { 1 0 10303 442 1 1 4 }", 3},
                    NameRow{"ISO13584_242", 3}, NameRow{"24 2", 2}));
INSTANTIATE_TEST_SUITE_P(Rule5, SchemaNames,
                         testing::Values(NameRow{"ISO13584", 5}, NameRow{"iso13584_x", 5},
                                         NameRow{"ISO13584_CUTTING_TOOL", 5}, NameRow{"ISO 13584", 2}));
INSTANTIATE_TEST_SUITE_P(Rule6, SchemaNames,
                         testing::Values(NameRow{"ISO13399", 6}, NameRow{"MY_ISO13399", 6},
                                         NameRow{"CUTTING_TOOL", 6}, NameRow{"cutting_tool_schema_arm", 6},
                                         NameRow{"CUTTING TOOL", 2}));
INSTANTIATE_TEST_SUITE_P(Rule7, SchemaNames,
                         testing::Values(NameRow{"", 2}, NameRow{"IFC4", 2}, NameRow{"EXAMPLE_SCHEMA", 2},
                                         NameRow{"AP209_MULTIDISCIPLINARY", 2}, NameRow{"\xC3\xA4 auto", 2},
                                         NameRow{"\xC3\xA4", 2}));

TEST(SchemaSelection, SetSchemaNameCallsTheVirtualSetSchema) {
  class Watching : public ExpFile {
   public:
    void SetSchema(Schema schema) override {
      schemas.push_back(schema);
      ExpFile::SetSchema(schema);
    }
    std::vector<Schema> schemas;
  } file;
  file.SetSchemaName("AP242");
  file.SetSchemaName("unknown");
  EXPECT_THAT(file.schemas, ElementsAre(STEP_AP242, STEP_AP214));
}

TEST(SchemaSelection, TheSchemaIsSetBeforeTheLineIsLogged) {
  class Looking : public ExpAbstractLogger {
   public:
    explicit Looking(ExpFile& file) : file_(file) { ExpLogger::AddLogger(this); }
    ~Looking() override { ExpLogger::RemoveLogger(this); }
    void Write(const std::string&, const ExpLogLevel&) override { seen.push_back(file_.GetSchema()); }
    std::vector<Schema> seen;

   private:
    ExpFile& file_;
  };
  ExpFile file;
  Looking logger(file);
  file.SetSchemaName("AP203");
  EXPECT_THAT(logger.seen, ElementsAre(STEP_AP203));
}

TEST(SchemaSelection, TheCanonicalNameStaysWhateverNameWasGiven) {
  ExpFile file;
  file.SetSchemaName("something else");
  file.SetSchema(STEP_AP203);
  EXPECT_EQ(file.GetSchemaName(), "CONFIG_CONTROL_DESIGN");
  file.SetSchemaName("AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF { 1 0 10303 442 1 1 4 }");
  EXPECT_EQ(file.GetSchemaName(), "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM");
}

TEST(SchemaSelection, AnotherSchemaReplacesTheGivenFactory) {
  ExpFile file(STEP_AP214, "OWN_FACTORY");
  EXPECT_EQ(file.GetEnforcedFactoryName(), "OWN_FACTORY");
  EXPECT_EQ(file.GetSchemaName(), "AUTOMOTIVE_DESIGN");
  file.SetSchema(STEP_AP214);
  EXPECT_EQ(file.GetEnforcedFactoryName(), "AUTOMOTIVE_DESIGN");

  ExpFile other(STEP_AP214, "OWN_FACTORY");
  other.SetSchemaName("AP242");
  EXPECT_EQ(other.GetEnforcedFactoryName(), "AP242");
}

TEST(SchemaSelection, AnEmptyFactoryNameIsNone) {
  EXPECT_EQ(ExpFile(STEP_AP242, "").GetEnforcedFactoryName(), "AP242");
}

TEST(SchemaSelection, TheDefaultIsAp214) {
  ExpFile file;
  EXPECT_EQ(static_cast<int>(file.GetSchema()), 2);
  EXPECT_EQ(file.GetSchemaName(), "AUTOMOTIVE_DESIGN");
  EXPECT_EQ(file.GetEnforcedFactoryName(), "AUTOMOTIVE_DESIGN");
}

TEST(DescriptiveException, IsAStdExceptionThatHoldsItsText) {
  std::string text = "what went wrong";
  const descriptive_exception e(text);
  text.clear();
  EXPECT_STREQ(e.what(), "what went wrong");
  const std::exception& base = e;
  EXPECT_STREQ(base.what(), "what went wrong");
  const descriptive_exception copy(e);
  EXPECT_STREQ(copy.what(), "what went wrong");
  EXPECT_STREQ(descriptive_exception("").what(), "");
}

}  // namespace
