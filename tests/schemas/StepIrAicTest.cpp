// Files whose types come from two schemas: their own, and the one for types that it lacks.

#include <gmock/gmock.h>

#include <memory>
#include <sstream>

#include "Ap242.h"
#include "BundledSchemas.h"
#include "ExpCustomEntities.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "StepIrAic.h"

namespace VELMAR {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::string SchemaOf(const std::string& type, const std::string& schema) {
  const ExpEntityRuntimeType* found = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(type, schema);
  return found == nullptr ? "none" : found->GetSchema();
}

void Read(ExpFile& file, const std::string& schema, const std::string& data) {
  std::istringstream in(
      "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\nFILE_NAME('','',(''),(''),'','','');\n"
      "FILE_SCHEMA(('" +
      schema + "'));\nENDSEC;\nDATA;\n" + data + "ENDSEC;\nEND-ISO-10303-21;\n");
  file.Read(in);
}

using Numbers = std::vector<int>;

Numbers NumbersOf(const std::list<ExpEntity*>& entities) {
  Numbers numbers;
  for (ExpEntity* entity : entities) numbers.push_back(entity->GetEntityNumber());
  return numbers;
}

Numbers Found(ExpFile& file, const std::string& type, bool withSubtypes) {
  std::list<ExpEntity*> found;
  file.GetEntities(found, type, withSubtypes);
  return NumbersOf(found);
}

Numbers FoundInBoth(ExpFile& file, const std::string& type) {
  std::list<ExpEntity*> found;
  StepIrAic::GetEntitiesWithSubtypes(file, found, type);
  return NumbersOf(found);
}

class StepIrAicTypes : public testing::Test {
 protected:
  void SetUp() override {
    LoadBundledSchemas();
    StepIrAic::Load();
  }
};

using StepIrAicInAp203 = StepIrAicTypes;
using StepIrAicInAp214 = StepIrAicTypes;

#define NEEDS_SCHEMA(name)                                                   \
  if (!ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(name)) {        \
    GTEST_SKIP() << "this build leaves the library of " << (name) << " out"; \
  }

TEST_F(StepIrAicInAp214, GivesTheContextsThatEarlierEditionsHad) {
  EXPECT_EQ(SchemaOf("MECHANICAL_CONTEXT", "AUTOMOTIVE_DESIGN"), "STEP_IR_AIC");
  EXPECT_EQ(SchemaOf("DESIGN_CONTEXT", "AUTOMOTIVE_DESIGN"), "STEP_IR_AIC");
  EXPECT_EQ(SchemaOf("PRODUCT_CONTEXT", "AUTOMOTIVE_DESIGN"), "AUTOMOTIVE_DESIGN");
}

TEST_F(StepIrAicInAp203, GivesPresentationAndAssignmentsAndNothingThatTheSchemaHasItself) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  for (const char* type : {"STYLED_ITEM", "APPLIED_DATE_AND_TIME_ASSIGNMENT", "APPLIED_DOCUMENT_REFERENCE",
                           "APPLIED_PERSON_AND_ORGANIZATION_ASSIGNMENT"}) {
    EXPECT_EQ(SchemaOf(type, "CONFIG_CONTROL_DESIGN"), "STEP_IR_AIC") << type;
  }
  for (const char* type :
       {"CARTESIAN_POINT", "DESIGN_CONTEXT", "MECHANICAL_CONTEXT", "REPRESENTATION_ITEM"}) {
    EXPECT_EQ(SchemaOf(type, "CONFIG_CONTROL_DESIGN"), "CONFIG_CONTROL_DESIGN") << type;
  }
}

TEST_F(StepIrAicTypes, OfNoSchemaStayUnknown) {
  for (const char* schema :
       {"CONFIG_CONTROL_DESIGN", "AP203_E2", "AUTOMOTIVE_DESIGN", "AP242", "STEP_IR_AIC"}) {
    EXPECT_EQ(SchemaOf("PRODUCT_TYPE", schema), "none") << schema;
  }
}

TEST_F(StepIrAicTypes, AreObjectsOfTheClassesOfAp242) {
  ExpFile file;
  Read(file, "AUTOMOTIVE_DESIGN",
       "#1=APPLICATION_CONTEXT('design');\n#2=MECHANICAL_CONTEXT('part',#1,'mechanical');\n");
  auto* context = dynamic_cast<Ap242::MechanicalContext*>(file.GetEntity(2));
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context->DisciplineType().GetExpString(), "mechanical");
  EXPECT_EQ(file.GetEntity(2)->ToString(), "#2 = MECHANICAL_CONTEXT('part', #1, 'mechanical');");
  EXPECT_THAT(*context->GetExpSuperClasses(), Contains("STEP_IR_AIC::PRODUCT_CONTEXT"));
}

// A cartesian point, and what AP203 lacks: a style of it, one that overrides that, and an invisible one.
constexpr const char* kStyled =
    "#1=CARTESIAN_POINT('p',(1.,2.,3.));\n"
    "#2=STYLED_ITEM('s',(),#1);\n"
    "#3=OVER_RIDING_STYLED_ITEM('o',(),#1,#2);\n"
    "#4=DIRECTION('d',(1.,0.,0.));\n";

TEST_F(StepIrAicInAp203, AreFoundByTheirNamesWithTheirSubtypes) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  ExpFile file;
  Read(file, "CONFIG_CONTROL_DESIGN", kStyled);
  EXPECT_THAT(Found(file, "STYLED_ITEM", false), ElementsAre(2));
  EXPECT_THAT(Found(file, "styled_item", true), ElementsAre(2, 3));
}

TEST_F(StepIrAicInAp203, AreNoSubtypesOfTypesThatTheSchemaDefinesItself) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  ExpFile file;
  Read(file, "CONFIG_CONTROL_DESIGN", kStyled);
  EXPECT_THAT(Found(file, "REPRESENTATION_ITEM", false), IsEmpty());
  EXPECT_THAT(Found(file, "REPRESENTATION_ITEM", true), ElementsAre(1, 4));
}

TEST_F(StepIrAicInAp203, AreFoundAsSubtypesByGetEntitiesWithSubtypes) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  ExpFile file;
  Read(file, "CONFIG_CONTROL_DESIGN", kStyled);
  EXPECT_THAT(FoundInBoth(file, "REPRESENTATION_ITEM"), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(FoundInBoth(file, "representation_item"), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(FoundInBoth(file, "STYLED_ITEM"), ElementsAre(2, 3));
  EXPECT_THAT(FoundInBoth(file, "POINT"), ElementsAre(1));
  EXPECT_THAT(FoundInBoth(file, "NO_SUCH_TYPE"), IsEmpty());

  std::list<ExpEntity*> found = {file.GetEntity(4)};
  StepIrAic::GetEntitiesWithSubtypes(file, found, "STYLED_ITEM");
  EXPECT_THAT(NumbersOf(found), ElementsAre(4, 2, 3));
}

// Where all types are of one schema, both ways of asking give the same.
TEST_F(StepIrAicTypes, ChangeNothingInFilesWhoseSchemaHasEverything) {
  ExpFile file;
  Read(file, "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF", kStyled);
  EXPECT_THAT(Found(file, "REPRESENTATION_ITEM", true), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(FoundInBoth(file, "REPRESENTATION_ITEM"), ElementsAre(1, 2, 3, 4));
  EXPECT_EQ(SchemaOf("STYLED_ITEM", file.GetEnforcedFactoryName()), "AP242");
}

TEST_F(StepIrAicInAp203, AreWrittenAndReadAgain) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  ExpFile file;
  Read(file, "CONFIG_CONTROL_DESIGN", kStyled);
  std::ostringstream once;
  file.Write(once);
  std::istringstream in(once.str());
  ExpFile again;
  again.Read(in);
  std::ostringstream twice;
  again.Write(twice);
  EXPECT_EQ(once.str(), twice.str());
  EXPECT_THAT(once.str(), testing::HasSubstr("#3 = OVER_RIDING_STYLED_ITEM('o', (), #1, #2);\n"));
}

// ------------------------------------------------------------------------------------------- complex
// instances

TEST_F(StepIrAicInAp203, PartsOfTwoSchemasMakeOneInstance) {
  NEEDS_SCHEMA("CONFIG_CONTROL_DESIGN");
  ExpFile file;
  Read(file, "CONFIG_CONTROL_DESIGN",
       "#1=CARTESIAN_POINT('p',(1.,2.,3.));\n#2=(REPRESENTATION_ITEM('both')STYLED_ITEM((),#1));\n");
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(file.GetEntity(2));
  ASSERT_NE(complex, nullptr);
  ASSERT_EQ(complex->GetEntities()->size(), 2u);
  EXPECT_THAT(*complex->GetEntityByName("REPRESENTATION_ITEM")->GetExpSuperClasses(),
              Not(Contains("STEP_IR_AIC::REPRESENTATION_ITEM")));
  auto* styled = dynamic_cast<Ap242::StyledItem*>(complex->GetEntityByName("STYLED_ITEM"));
  ASSERT_NE(styled, nullptr);
  EXPECT_EQ(styled->Name().GetExpString(), "both");  // inherited across the schemas
  EXPECT_EQ(file.GetEntity(&styled->Item()), file.GetEntity(1));
  EXPECT_EQ(complex->ToString(), "#2 = (\n   REPRESENTATION_ITEM ('both')\n   STYLED_ITEM ((), #1)\n);");
  EXPECT_THAT(Found(file, "REPRESENTATION_ITEM", true), ElementsAre(1, 2));
  EXPECT_THAT(FoundInBoth(file, "REPRESENTATION_ITEM"), ElementsAre(1, 2, 2));
}

// Every type that a schema lacks, with all its supertypes, of which the schema may have its own definitions
// with fewer or other attributes.
TEST_F(StepIrAicInAp214, AreVisitedByTheVisitorOfAp242AndLeadToItsClassesOnly) {
  NEEDS_SCHEMA("AUTOMOTIVE_DESIGN");
  struct Contexts : Ap242::Visitor {
    Numbers seen;
    void VisitProductContext(Ap242::ProductContext* context) override {
      seen.push_back(context->GetEntityNumber());
    }
  } contexts;
  ExpFile file;
  Read(file, "AUTOMOTIVE_DESIGN",
       "#1=APPLICATION_CONTEXT('');\n#2=MECHANICAL_CONTEXT('',#1,'mechanical');\n"
       "#3=PRODUCT_CONTEXT('',#1,'mechanical');\n#4=PRODUCT('','',$,(#2,#3));\n");
  for (const int number : {1, 2, 3, 4}) file.GetEntity(number)->Accept(&contexts);
  EXPECT_EQ(contexts.seen, Numbers{2}) << "of these #2 alone is of a class of Ap242";

  auto* mechanical = dynamic_cast<Ap242::MechanicalContext*>(file.GetEntity(2));
  ASSERT_NE(mechanical, nullptr);
  EXPECT_EQ(mechanical->FrameOfReference(file), nullptr) << "#1 is of the class of the file's own schema";
  EXPECT_EQ(Resolve<ExpEntity>(file, mechanical->FrameOfReference()), file.GetEntity(1));
}

TEST_F(StepIrAicTypes, EveryCombinationWithTheirSupertypesIsNumberedAndPrinted) {
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  std::ostringstream report;
  registry->DumpRegisteredEntityTypes(report);
  std::istringstream lines(report.str());
  std::vector<std::string> names;
  for (std::string name, colons, schema, line; std::getline(lines, line);) {
    if (std::istringstream(line) >> name >> colons >> schema && schema == "STEP_IR_AIC")
      names.push_back(name);
  }
  ASSERT_EQ(names.size(), 2417u);

  int mixed = 0;
  for (const char* schema : {"CONFIG_CONTROL_DESIGN", "AP203_E2", "AUTOMOTIVE_DESIGN", "AP242",
                             "ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA"}) {
    if (!registry->IsSchemaRegistered(schema)) continue;
    for (const std::string& name : names) {
      ExpEntityRuntimeType* type = registry->GetEntityRuntimeType(name, schema);
      ASSERT_NE(type, nullptr);
      if (type->GetSchema() == schema) continue;
      std::vector<std::unique_ptr<ExpEntity>> parts;
      parts.emplace_back(type->CreateInstance(-1));
      bool isMixed = false;
      for (const std::string& superClass : *type->GetSuperClasses()) {
        const std::string super = superClass.substr(superClass.find("::") + 2);
        ExpEntityRuntimeType* superType = registry->GetEntityRuntimeType(super, schema);
        if (superType == nullptr) continue;  // ExpEntity
        isMixed = isMixed || superType->GetSchema() == schema;
        parts.emplace_back(superType->CreateInstance(-1));
      }
      mixed += isMixed;
      ExpExternalMappingEntity complex;
      // The attributes of the type are `*`, those of the others `$`, so that each is seen where it must not
      // be.
      for (const auto& part : parts) {
        for (int i = 0; i < part->GetNofExplicitMembers(); ++i) {
          part->GetMember(i)->SetOmitted(part == parts[0]);
          part->GetMember(i)->SetNotProvided(part != parts[0]);
        }
        complex.AddEntity(part.get());
      }
      const std::string before = complex.ToString();
      complex.SetEntityNumber(1);
      EXPECT_EQ(complex.ToString(), "#1 = " + before) << schema;
    }
  }
  EXPECT_GT(mixed, 0);
  RecordProperty("mixed", mixed);
}

}  // namespace
}  // namespace VELMAR
