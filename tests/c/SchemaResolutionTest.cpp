// From a schema value, or a schema name as files and people write it, to the name under which its library
// registers.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "TestEntities.h"

namespace VELMAR {
namespace {

using TestData::CapturedLog;
using TestData::NewPlainType;
using testing::ElementsAre;
using testing::IsEmpty;

// ------------------------------------------------------------------------------------- by the schema's value

struct ValueRow {
  int value;
  Schema schema;
  const char* name;
};

class SchemaValue : public testing::TestWithParam<ValueRow> {};

TEST_P(SchemaValue, HasThisRegistryName) {
  CapturedLog log;
  ExpRuntimeRegistry registry;  // what is registered does not matter
  EXPECT_EQ(static_cast<int>(GetParam().schema), GetParam().value);
  EXPECT_EQ(registry.EvalRegisteredSchema(GetParam().schema), GetParam().name);
  EXPECT_EQ(ExpRuntimeRegistry::GetInstance()->EvalRegisteredSchema(GetParam().schema), GetParam().name);
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EvalRegisteredSchema, SchemaValue,
                         testing::Values(ValueRow{0, STEP_AP203, "CONFIG_CONTROL_DESIGN"},
                                         ValueRow{1, STEP_AP203E2, "AP203_E2"},
                                         ValueRow{2, STEP_AP214, "AUTOMOTIVE_DESIGN"},
                                         ValueRow{3, STEP_AP242, "AP242"},
                                         ValueRow{5, PLIB, "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA"},
                                         ValueRow{6, ISO13399, "CUTTING_TOOL_SCHEMA_ARM"}),
                         [](const auto& info) { return std::to_string(info.param.value); });

class NoSchemaValue : public testing::TestWithParam<int> {};

TEST_P(NoSchemaValue, Throws) {
  CapturedLog log;
  ExpRuntimeRegistry registry;
  std::string what;
  try {
    registry.EvalRegisteredSchema(static_cast<Schema>(GetParam()));
  } catch (const descriptive_exception& error) {
    what = error.what();
  }
  EXPECT_EQ(what, "ExpRuntimeRegistry::EvalRegisteredSchema(): Unknown schema version!");
  EXPECT_THAT(log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(EvalRegisteredSchema, NoSchemaValue,
                         testing::Values(4, 7, -1, 100, INT_MAX, INT_MIN));

// ------------------------------------------------------------------------------------------ by a schema name

struct NameRow {
  const char* requested;
  const char* used;
};

class SchemaName : public testing::TestWithParam<NameRow> {};

TEST_P(SchemaName, IsMappedAndLogged) {
  CapturedLog log;
  ExpRuntimeRegistry registry;
  const std::string used = registry.EvalRegisteredSchema(std::string(GetParam().requested));
  EXPECT_EQ(used, GetParam().used);
  EXPECT_THAT(log.lines, ElementsAre("requested schema: " + std::string(GetParam().requested) +
                                     "  --  used schema: " + GetParam().used));
  EXPECT_THAT(log.levels, ElementsAre(1));
  EXPECT_THAT(log.ended, ElementsAre(true));
}

constexpr const char* kAp203 = "CONFIG_CONTROL_DESIGN";
constexpr const char* kAp203e2 = "AP203_E2";
constexpr const char* kAp214 = "AUTOMOTIVE_DESIGN";
constexpr const char* kAp242 = "AP242";
constexpr const char* kPlib = "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA";
constexpr const char* kCuttingTool = "CUTTING_TOOL_SCHEMA_ARM";

INSTANTIATE_TEST_SUITE_P(
    EvalRegisteredSchema, SchemaName,
    testing::Values(
        // 1: whole names
        NameRow{"CONFIG_CONTROL_DESIGN", kAp203}, NameRow{"CONFIG CONTROL DESIGN", kAp203},
        NameRow{"AP203", kAp203}, NameRow{"AP203 ", kAp214}, NameRow{" AP203", kAp214},
        NameRow{"AP203X", kAp214}, NameRow{"CONFIG_CONTROL_DESIGN_2", kAp214},
        NameRow{"CONFIG_CONTROL DESIGN", kAp214},
        // 2: whole names, or a part
        NameRow{"AP203_E2", kAp203e2}, NameRow{"AP203 E2", kAp203e2},
        NameRow{"AP203_CONFIGURATION", kAp203e2},
        NameRow{"AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF",
                kAp203e2},
        NameRow{"MY AP203_CONFIGURATION 242", kAp203e2}, NameRow{"AP203_E2 ", kAp214},
        NameRow{"AP203_E21", kAp214}, NameRow{"AP203_CONFIG", kAp214},
        NameRow{"AUTO AP203_CONFIGURATION AP214", kAp203e2},
        // 3: parts
        NameRow{"AP214", kAp214}, NameRow{"XAP214X", kAp214}, NameRow{"AUTO", kAp214},
        NameRow{"AUTOMOTIVE_DESIGN", kAp214}, NameRow{"AUTOMOTIVE_DESIGN_CC2", kAp214},
        NameRow{"AUTOMOTIVE_DESIGN { 1 0 10303 214 1 1 1 1 }", kAp214}, NameRow{"AUTO 242", kAp214},
        NameRow{"242 AUTO", kAp214}, NameRow{"AP242 AP214", kAp214}, NameRow{"CUTTING_TOOL AUTO", kAp214},
        // 4
        NameRow{"AP242", kAp242}, NameRow{"242", kAp242}, NameRow{"ap242", kAp242}, NameRow{"X242X", kAp242},
        NameRow{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM", kAp242},
        NameRow{"AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF { 1 0 10303 442 1 1 4 }", kAp242},
        NameRow{"242 ISO13584", kAp242}, NameRow{"ISO13399 242", kAp242}, NameRow{"24 2", kAp214},
        // 5
        NameRow{"ISO13584", kPlib}, NameRow{"ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", kPlib},
        NameRow{"XISO13584X", kPlib}, NameRow{"ISO13399 ISO13584", kPlib}, NameRow{"ISO1358", kAp214},
        // 6
        NameRow{"ISO13399", kCuttingTool}, NameRow{"CUTTING_TOOL", kCuttingTool},
        NameRow{"CUTTING_TOOL_SCHEMA_ARM", kCuttingTool}, NameRow{"MY_CUTTING_TOOLS", kCuttingTool},
        NameRow{"CUTTING TOOL", kAp214}, NameRow{"ISO1339", kAp214},
        // 7: everything else, in lower case too
        NameRow{"", kAp214}, NameRow{"IFC2X3", kAp214}, NameRow{"automotive_design", kAp214},
        NameRow{"ap203", kAp214}, NameRow{"config_control_design", kAp214}, NameRow{"ap203_e2", kAp214},
        NameRow{"iso13584", kAp214}, NameRow{"iso13399", kAp214}, NameRow{"cutting_tool", kAp214},
        NameRow{"ap203_configuration", kAp214}));

TEST(EvalRegisteredSchema, LogsOneLinePerCall) {
  CapturedLog log;
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  registry->EvalRegisteredSchema(std::string("AP242"));
  registry->EvalRegisteredSchema(std::string("AP242"));
  EXPECT_EQ(log.text,
            "requested schema: AP242  --  used schema: AP242\n"
            "requested schema: AP242  --  used schema: AP242\n");
}

TEST(EvalRegisteredSchema, DoesNotConsultWhatIsRegistered) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "IFC2X3"), "");
  EXPECT_EQ(registry.EvalRegisteredSchema(std::string("IFC2X3")), "AUTOMOTIVE_DESIGN");
}

// ---------------------------------------------------------------------------------------- IsSchemaRegistered

TEST(IsSchemaRegistered, IsFalseBeforeAnythingIsRegistered) {
  ExpRuntimeRegistry registry;
  for (const char* name : {"", "VELMAR", "AUTOMOTIVE_DESIGN", "AP242"})
    EXPECT_FALSE(registry.IsSchemaRegistered(name));
}

TEST(IsSchemaRegistered, ComparesExactly) {
  ExpRuntimeRegistry registry;
  registry.RegisterEntityRuntimeType(NewPlainType("X", "AP242"), "");
  EXPECT_TRUE(registry.IsSchemaRegistered("AP242"));
  EXPECT_FALSE(registry.IsSchemaRegistered("ap242"));
  EXPECT_FALSE(registry.IsSchemaRegistered("AP24"));
  EXPECT_FALSE(registry.IsSchemaRegistered("AP2422"));
  EXPECT_FALSE(registry.IsSchemaRegistered(""));
  EXPECT_FALSE(registry.IsSchemaRegistered(std::string("AP242\0", 6)));
  registry.RegisterSchema("");
  EXPECT_TRUE(registry.IsSchemaRegistered(""));
}

TEST(IsSchemaRegistered, FindsEverySchemaOfTheList) {
  ExpRuntimeRegistry registry;
  for (const char* schema : {"C", "A", "B"}) registry.RegisterSchema(schema);
  for (const char* schema : {"A", "B", "C"}) EXPECT_TRUE(registry.IsSchemaRegistered(schema));
  EXPECT_FALSE(registry.IsSchemaRegistered("D"));
}

}  // namespace
}  // namespace VELMAR
