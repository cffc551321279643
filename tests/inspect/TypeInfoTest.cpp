#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LateBoundSchema.h"
#include "RunProgram.h"
#include "Schemas.h"
#include "TypeInfo.h"

namespace velmar {
namespace {

using testing::Contains;
using testing::ElementsAre;

using Names = std::vector<std::string>;

Names NamesOf(const std::vector<AttributeInfo>& attributes) {
  Names names;
  for (const AttributeInfo& attribute : attributes) names.push_back(attribute.name);
  return names;
}

TEST(TypeInfo, OfASchemaLibraryKnowsOwnersSupertypesAndSubtypes) {
  LoadLibrary(VELMAR::STEP_AP214);
  const auto* type = FindType("vertex_point", "AUTOMOTIVE_DESIGN");
  ASSERT_NE(type, nullptr);
  const TypeInfo info = Describe(*type);
  EXPECT_EQ(info.name, "VERTEX_POINT");
  EXPECT_EQ(info.schema, "AUTOMOTIVE_DESIGN");
  EXPECT_THAT(NamesOf(info.attributes), ElementsAre("name", "vertex_geometry"));
  EXPECT_EQ(info.attributes[0].owner, "REPRESENTATION_ITEM");
  EXPECT_EQ(info.attributes[1].owner, "VERTEX_POINT");
  EXPECT_EQ(info.attributes[1].expressType, "");
  EXPECT_THAT(info.supertypes, Contains("VERTEX"));
  EXPECT_EQ(info.supertypes.front(), "REPRESENTATION_ITEM");
  EXPECT_THAT(Describe(*FindType("VERTEX", "AUTOMOTIVE_DESIGN")).subtypes, Contains("VERTEX_POINT"));
  EXPECT_THAT(
      AllSubtypes(*FindType("TOPOLOGICAL_REPRESENTATION_ITEM", "AUTOMOTIVE_DESIGN"), "AUTOMOTIVE_DESIGN"),
      Contains("VERTEX_POINT"));
}

TEST(TypeInfo, IsNullForWhatThereIsNot) {
  LoadLibrary(VELMAR::STEP_AP214);
  EXPECT_EQ(FindType("NO_SUCH_TYPE", "AUTOMOTIVE_DESIGN"), nullptr);
  // A type of AP214 alone: those of AP242 are found under any name of a schema once the fallback schema is loaded.
  EXPECT_NE(FindType("FOUNDED_KINEMATIC_PATH", "AUTOMOTIVE_DESIGN"), nullptr);
  EXPECT_EQ(FindType("FOUNDED_KINEMATIC_PATH", "NO_SUCH_SCHEMA"), nullptr);
  EXPECT_EQ(FindType("FILE_NAME", "AUTOMOTIVE_DESIGN"), nullptr);  // no type of any schema: it stands in the header
}

TEST(TypeInfo, OfAnExpressTextKnowsTheTypesOfAttributes) {
  TemporaryDirectory directory;
  const std::string text = WriteFile(
      directory.Path("gears.exp"),
      "SCHEMA type_info_gears;\n"
      "ENTITY gear; label : STRING; made_of : OPTIONAL INTEGER; END_ENTITY;\n"
      "ENTITY big SUBTYPE OF (gear); DERIVE SELF\\gear.made_of : INTEGER := 1; END_ENTITY;\nEND_SCHEMA;\n");
  VELMAR::LateBoundSchema::Load(text);
  const TypeInfo info = Describe(*FindType("big", "TYPE_INFO_GEARS"));
  EXPECT_THAT(NamesOf(info.attributes), ElementsAre("label", "made_of"));
  EXPECT_EQ(info.attributes[0].expressType, "string");
  EXPECT_FALSE(info.attributes[0].isOptional);
  EXPECT_TRUE(info.attributes[1].isDerived);
  EXPECT_EQ(info.attributes[1].owner, "GEAR");
  EXPECT_THAT(info.supertypes, ElementsAre("GEAR"));
  EXPECT_TRUE(Describe(*FindType("gear", "TYPE_INFO_GEARS")).attributes[1].isOptional);
}

TEST(RegisteredSchemas, AreThoseThatAreLoadedWithTheNumberOfTheirTypes) {
  LoadLibrary(VELMAR::STEP_AP214);
  const std::vector<SchemaInfo> schemas = RegisteredSchemas();
  bool isFound = false;
  for (const SchemaInfo& schema : schemas) {
    EXPECT_NE(schema.name, "VELMAR");
    EXPECT_EQ(TypesOf(schema.name).size(), schema.types);
    if (schema.name != "AUTOMOTIVE_DESIGN") continue;
    isFound = true;
    EXPECT_EQ(schema.types, 915u);
    EXPECT_EQ(schema.protocol, "AP214");
    EXPECT_EQ(schema.library, "libVelmarAutomotiveDesign_3.1.so");
  }
  EXPECT_TRUE(isFound);
  EXPECT_THAT(TypesOf("AUTOMOTIVE_DESIGN"), Contains("CARTESIAN_POINT"));
}

}  // namespace
}  // namespace velmar
