// What holds for every schema library, without anything from outside of the repository.

#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>

#include "BundledSchemas.h"
#include "ExpRuntimeRegistry.h"
#include "ExpressParser.h"
#include "Resolver.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

struct Bundled {
  const char* file;
  const char* schema;  // as the file declares it
  const char* registryName;
  int entities;
  int types;
};

std::ostream& operator<<(std::ostream& out, const Bundled& bundled) { return out << bundled.registryName; }

class EveryBundledSchema : public testing::TestWithParam<Bundled> {
 protected:
  void LoadOrSkip() {
    LoadBundledSchemas();
    if (!Registry().IsSchemaRegistered(GetParam().registryName))
      GTEST_SKIP() << "this build leaves the library out";
  }

  static ExpRuntimeRegistry& Registry() { return *ExpRuntimeRegistry::GetInstance(); }

  std::vector<std::string> RegisteredNames() const {
    std::ostringstream report;
    Registry().DumpRegisteredEntityTypes(report);
    std::istringstream lines(report.str());
    std::vector<std::string> names;
    for (std::string name, colons, schema, line; std::getline(lines, line);) {
      if (std::istringstream(line) >> name >> colons >> schema && schema == GetParam().registryName)
        names.push_back(name);
    }
    return names;
  }
};

TEST_P(EveryBundledSchema, DeclaresAllEntitiesAndTypesWithoutAWarning) {
  Express::Model model;
  Express::Diagnostics diagnostics;
  Express::ParseFile(model, Express::SourceFile::Read(std::string(VELMAR_SCHEMAS) + '/' + GetParam().file),
                     diagnostics);
  Express::Resolve(model, diagnostics);
  EXPECT_EQ(diagnostics.ErrorCount() + diagnostics.WarningCount(), 0u);
  ASSERT_EQ(model.schemas.size(), 1u);
  EXPECT_EQ(model.schemas[0]->name.text, GetParam().schema);
  int entities = 0;
  int types = 0;
  for (const auto& declaration : model.schemas[0]->declarations) {
    entities += declaration->kind == Express::DeclarationKind::Entity;
    types += declaration->kind == Express::DeclarationKind::Type;
  }
  EXPECT_EQ(entities, GetParam().entities);
  EXPECT_EQ(types, GetParam().types);
}

TEST_P(EveryBundledSchema, RegistersAllEntities) {
  LoadOrSkip();
  if (IsSkipped()) return;
  EXPECT_EQ(static_cast<int>(RegisteredNames().size()), GetParam().entities);
}

TEST_P(EveryBundledSchema, EveryTypeCreatesAnInstanceThatAnswersForItsMembers) {
  LoadOrSkip();
  if (IsSkipped()) return;
  std::set<int> numbers;
  for (const std::string& name : RegisteredNames()) {
    ExpEntityRuntimeType* type = Registry().GetEntityRuntimeType(name, GetParam().registryName);
    const std::unique_ptr<ExpEntity> entity(type->CreateInstance(-1));
    EXPECT_EQ(entity->GetExpClassName(), name);
    const int members = entity->GetNofExplicitMembers();
    ASSERT_EQ(entity->GetMemberNames()->size(), static_cast<std::size_t>(members)) << name;
    std::set<ExpAttribute*> different;
    for (int i = 0; i < members; ++i) different.insert(entity->GetMember(i));
    EXPECT_EQ(different.size(), static_cast<std::size_t>(members)) << name;
    EXPECT_EQ(different.count(nullptr), 0u) << name;
    EXPECT_EQ(entity->GetMember(members), nullptr) << name;
    numbers.insert(entity->GetTypeNumberOfEntity());
  }
  EXPECT_EQ(static_cast<int>(numbers.size()), GetParam().entities);
}

// What a type says of its subtypes, these say of their supertypes, and all of them are of the same schema.
TEST_P(EveryBundledSchema, SubtypesAndSupertypesAgree) {
  LoadOrSkip();
  if (IsSkipped()) return;
  const std::string prefix = std::string(GetParam().registryName) + "::";
  int subtypes = 0;
  for (const std::string& name : RegisteredNames()) {
    ExpEntityRuntimeType* type = Registry().GetEntityRuntimeType(name, GetParam().registryName);
    for (const std::string& subtype : *type->GetSubClasses()) {
      ASSERT_EQ(subtype.compare(0, prefix.size(), prefix), 0) << subtype;
      ExpEntityRuntimeType* other =
          Registry().GetEntityRuntimeType(subtype.substr(prefix.size()), GetParam().registryName);
      ASSERT_NE(other, nullptr) << subtype;
      EXPECT_THAT(*other->GetSuperClasses(), testing::Contains(prefix + name)) << subtype;
      ++subtypes;
    }
  }
  EXPECT_GT(subtypes, 0);
}

TEST_P(EveryBundledSchema, HasTheTextThatItWasMadeOf) {
  if (!IsBundledSchema(GetParam().registryName)) GTEST_SKIP() << "this build leaves the library out";
  const auto textOf = [](const std::string& path) { return std::string(Express::SourceFile::Read(path).Text()); };
  EXPECT_EQ(textOf(BundledSchemaText(GetParam().registryName)),
            textOf(std::string(VELMAR_SCHEMAS) + '/' + GetParam().file));
}

TEST(BundledSchemaText, OfWhichThereIsNoLibraryThrows) {
  EXPECT_THROW(BundledSchemaText("CUTTING_TOOL_SCHEMA_ARM"), std::runtime_error);
}

TEST(LoadBundledSchema, LoadsTheLibraryOfOneSchemaOnce) {
  const std::string schema = "AUTOMOTIVE_DESIGN";
  if (!IsBundledSchema(schema)) GTEST_SKIP() << "this build leaves the library out";
  LoadBundledSchema(schema);
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  ExpEntityRuntimeType* type = registry->GetEntityRuntimeType("PRODUCT", schema);
  ASSERT_NE(type, nullptr);
  LoadBundledSchema(schema);
  EXPECT_EQ(registry->GetEntityRuntimeType("PRODUCT", schema), type);
}

TEST(LoadBundledSchema, OfWhichThereIsNoLibraryThrows) {
  EXPECT_FALSE(IsBundledSchema("CUTTING_TOOL_SCHEMA_ARM"));
  EXPECT_FALSE(IsBundledSchema("automotive_design"));
  try {
    LoadBundledSchema("CUTTING_TOOL_SCHEMA_ARM");
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "there is no schema library of CUTTING_TOOL_SCHEMA_ARM");
  }
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, EveryBundledSchema,
    testing::Values(
        Bundled{"config_control_design.exp", "config_control_design", "CONFIG_CONTROL_DESIGN", 254, 69},
        Bundled{"ap203_e2.exp",
                "ap203_configuration_controlled_3d_design_of_mechanical_parts_and_assemblies_mim_lf",
                "AP203_E2", 1001, 248},
        Bundled{"automotive_design.exp", "automotive_design", "AUTOMOTIVE_DESIGN", 915, 192},
        Bundled{"ap242.exp", "ap242_managed_model_based_3d_engineering_mim_lf", "AP242", 2417, 533},
        Bundled{"ap242.exp", "ap242_managed_model_based_3d_engineering_mim_lf", "STEP_IR_AIC", 2417, 533},
        Bundled{"plib.exp", "iso13584_25_iec61360_5_library_implicit_schema",
                "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", 218, 117}),
    [](const auto& info) { return std::string(info.param.registryName); });

}  // namespace
}  // namespace VELMAR
