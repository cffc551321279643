// dynamic_cast, typeid and exceptions work between the library, an application and a schema library.
#include <gtest/gtest.h>

#include <exception>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>

#include "ExpCustomEntities.h"
#include "ExpFile.h"
#include "ExpFlyweightAdministration.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "SharedTestSchema.h"

namespace VELMAR {
namespace {

using SharedTestSchema::Gadget;
using SharedTestSchema::GadgetLink;
using SharedTestSchema::Gizmo;
using SharedTestSchema::KindByCast;

/// A file whose entity types are those of the shared schema library.
std::unique_ptr<ExpFile> NewFile() {
  return std::make_unique<ExpFile>(STEP_AP214, SharedTestSchema::kSchema);
}

// ---------------------------------------------------------------------- objects of the library in a schema
// library

struct Kind {
  const char* name;
  ExpAttribute* (*create)();
};

void PrintTo(const Kind& kind, std::ostream* os) { *os << kind.name; }

template <class T>
ExpAttribute* New() {
  return new T;
}

class ValueKind : public testing::TestWithParam<Kind> {};

TEST_P(ValueKind, IsFoundBySchemaLibraryAndApplicationAlike) {
  const std::unique_ptr<ExpAttribute> value(GetParam().create());
  ExpAttribute& object = *value;
  EXPECT_EQ(KindByCast(&object), GetParam().name);
  EXPECT_EQ(SharedTestSchema::TypeOf(&object), typeid(object));
  EXPECT_EQ(SharedTestSchema::TypeOf(&object).hash_code(), typeid(object).hash_code());
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, ValueKind,
    testing::Values(Kind{"ExpReal", New<ExpReal>}, Kind{"ExpInteger", New<ExpInteger>},
                    Kind{"ExpString", New<ExpString>}, Kind{"ExpLink", New<ExpLink>},
                    Kind{"ExpAggregation", New<ExpAggregation>}, Kind{"ExpEnumeration", New<ExpEnumeration>},
                    Kind{"ExpLogical", New<ExpLogical>}, Kind{"ExpBoolean", New<ExpBoolean>},
                    Kind{"ExpSelect", New<ExpSelect>}, Kind{"GadgetLink", New<GadgetLink>}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(SharedObjectTypes, ValuesThatTheLibraryCreatesAreFoundInTheSchemaLibrary) {
  ExpSelect select;
  select.SetExpReal(2.5);
  EXPECT_EQ(KindByCast(select.GetExpSelectValue()), "ExpReal");
  select.SetExpLink(7);
  EXPECT_EQ(KindByCast(select.GetExpSelectValue()), "ExpLink");
  select.AddValue(new ExpInteger(1));
  EXPECT_EQ(KindByCast(select.GetExpSelectValue()), "ExpAggregation");
  EXPECT_EQ(SharedTestSchema::TypeOfExpString(), typeid(ExpString));
}

TEST(SharedObjectTypes, EntitiesThatTheLibraryCreatesAreFoundInTheSchemaLibrary) {
  ExpFile file;
  EXPECT_EQ(KindByCast(file.CreateEntity("FILE_NAME")), "FILE_NAME");
  EXPECT_EQ(KindByCast(file.CreateEntity("FILE_SCHEMA")), "FILE_INFORMATION");
  ExpEntity* const complex = file.CreateEntity("ExpExternalMappingEntity");
  ASSERT_NE(complex, nullptr);
  EXPECT_EQ(KindByCast(complex), "ExpExternalMappingEntity");
  EXPECT_EQ(SharedTestSchema::TypeOf(complex), typeid(ExpExternalMappingEntity));
  EXPECT_EQ(SharedTestSchema::TypeOfComplexInstance(), typeid(*complex));
}

// -------------------------------------------------------------------- objects of a schema library in an
// application

TEST(SharedObjectTypes, EntitiesOfTheSchemaLibraryAreFoundInTheApplication) {
  const auto file = NewFile();
  ExpEntity* const entity = file->CreateAndAddEntity("GIZMO");
  ASSERT_NE(entity, nullptr);
  EXPECT_NE(dynamic_cast<Gizmo*>(entity), nullptr);
  EXPECT_NE(dynamic_cast<Gadget*>(entity), nullptr);
  EXPECT_EQ(dynamic_cast<ExpExternalMappingEntity*>(entity), nullptr);
  EXPECT_EQ(typeid(*entity), typeid(Gizmo));
  EXPECT_NE(typeid(*entity), typeid(Gadget));
  EXPECT_EQ(KindByCast(entity), "Gizmo");
  ExpEntity* const gadget = file->CreateAndAddEntity("GADGET");
  EXPECT_EQ(dynamic_cast<Gizmo*>(gadget), nullptr);
  EXPECT_EQ(typeid(*gadget), typeid(Gadget));
}

TEST(SharedObjectTypes, TheApplicationMayDeriveFromEntitiesOfTheSchemaLibrary) {
  class OwnGizmo : public Gizmo {};
  const auto own = std::make_unique<OwnGizmo>();
  EXPECT_EQ(KindByCast(own.get()), "Gizmo");
  EXPECT_NE(dynamic_cast<ExpEntity*>(own.get()), nullptr);
}

// -------------------------------------------------------------------- objects of others in the library's own
// casts

TEST(SharedObjectTypes, TheLibraryFollowsLinksOfClassesItDoesNotKnow) {
  const auto file = NewFile();
  ExpLink number;
  ExpEntity* const entity = file->CreateAndAddEntity("GADGET", number);
  class OwnLink : public ExpLink {
   public:
    using ExpLink::ExpLink;
  };
  GadgetLink schemaLink(number.GetExpLink());
  OwnLink ownLink(number.GetExpLink());
  EXPECT_EQ(file->GetEntity(static_cast<ExpAttribute*>(&schemaLink)), entity);
  EXPECT_EQ(file->GetEntity(static_cast<ExpAttribute*>(&ownLink)), entity);
}

TEST(SharedObjectTypes, TheLibraryFollowsSelectsOfClassesItDoesNotKnow) {
  class OwnSelect : public ExpSelect {};
  const auto file = NewFile();
  ExpLink number;
  ExpEntity* const entity = file->CreateAndAddEntity("GADGET", number);
  OwnSelect select;
  select.SetExpLink(number.GetExpLink());
  EXPECT_EQ(file->GetEntity(&select), entity);
}

TEST(SharedObjectTypes, TheLibraryKnowsTheTypeNameOfTheImplementingClass) {
  ExpEntityRuntimeType* const type =
      ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType("GIZMO", SharedTestSchema::kSchema);
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->GetImplementationTypeName(), typeid(Gizmo).name());
}

TEST(SharedObjectTypes, AComplexInstanceOfTheSchemaLibrarysPartsIsWrittenAsOne) {
  const auto file = NewFile();
  ExpLink number;
  const auto complex =
      dynamic_cast<ExpExternalMappingEntity*>(file->CreateAndAddEntity("ExpExternalMappingEntity", number));
  ASSERT_NE(complex, nullptr);
  complex->AddEntity(file->CreateEntity("GADGET"));
  complex->AddEntity(file->CreateEntity("GIZMO"));
  ASSERT_EQ(complex->GetEntities()->size(), 2u);
  std::list<ExpEntity*> simple;
  std::list<ExpExternalMappingEntity*> external;
  file->SplitIntoSimpleAndExternalEntities({complex}, simple, external);
  EXPECT_TRUE(simple.empty());
  EXPECT_EQ(external, std::list<ExpExternalMappingEntity*>{complex});
}

TEST(SharedObjectTypes, ReadingCreatesTheClassesOfTheSchemaLibrary) {
  std::istringstream text(
      "ISO-10303-21;\nHEADER;\nFILE_NAME('','',(''),(''),'','','');\nENDSEC;\nDATA;\n"
      "#1 = GADGET('one');\n#2 = GIZMO('two', #1);\nENDSEC;\nEND-ISO-10303-21;\n");
  // The schema that the file states decides where types are looked up; this one states none.
  class OwnFile : public ExpFile {
   public:
    std::string GetEnforcedFactoryName() override { return SharedTestSchema::kSchema; }
    ExpEntity* CreateEntity(const std::string& name) override {
      ExpEntityRuntimeType* const type =
          ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, SharedTestSchema::kSchema);
      return type == nullptr ? nullptr : type->CreateInstance(static_cast<int>(GetAdminId()));
    }
  };
  OwnFile file;
  file.Read(text);
  const auto gizmo = dynamic_cast<Gizmo*>(file.GetEntity(2));
  ASSERT_NE(gizmo, nullptr);
  EXPECT_EQ(gizmo->Label().GetExpString(), "two");
  const auto gadget = dynamic_cast<Gadget*>(file.GetEntity(gizmo->Other()));
  ASSERT_NE(gadget, nullptr);
  EXPECT_EQ(gadget->Label().GetExpString(), "one");
  EXPECT_EQ(gizmo->ToString(), "#2 = GIZMO('two', #1);");
}

// -----------------------------------------------------------------------------------------------------
// exceptions

TEST(SharedObjectTypes, ExceptionsOfTheLibraryAreCaughtInTheApplication) {
  EXPECT_THROW(ExpFile(static_cast<Schema>(4)), ::descriptive_exception);
  EXPECT_THROW(ExpFile(static_cast<Schema>(4)), std::exception);
  EXPECT_THROW(ExpInteger(1).SetExpString("a"), std::string);
}

TEST(SharedObjectTypes, ExceptionsOfTheLibraryAreCaughtInTheSchemaLibrary) {
  EXPECT_EQ(SharedTestSchema::CaughtFromLibrary(),
            "descriptive_exception: ExpFile::SetSchema(): Unknown schema version!");
}

TEST(SharedObjectTypes, ExceptionsOfTheSchemaLibraryAreCaughtInTheApplication) {
  try {
    SharedTestSchema::ThrowDescriptiveException("from afar");
    FAIL() << "nothing was thrown";
  } catch (const ::descriptive_exception& exception) {
    EXPECT_STREQ(exception.what(), "from afar");
  }
  EXPECT_THROW(SharedTestSchema::ThrowText("text"), std::string);
}

}  // namespace
}  // namespace VELMAR
