// Files whose types were loaded from EXPRESS texts: everything that works on generated types works on them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <sstream>
#include <string>
#include <vector>

#include "../c/CapturedLog.h"
#include "../tools/SampleFiles.h"
#include "ExpEntityVisitor.h"
#include "LateBoundFile.h"
#include "LoadedSchemas.h"

namespace {

using namespace VELMAR;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::Kinds;

const std::string kThing1 =
    "#1 = THING(2.5, 3., 4, 'it''s \\X\\E4', .T., .U., $, .GREEN., LENGTH_MEASURE(1.5), #2, ((0., 1.), (2., "
    "3., 4.)));";
const std::string kThing2 = "#2 = THING(*, $, $, $, $, $, $, $, #1, $, ());";

void Read(ExpFile& file, const std::string& data, const std::string& schema = "KINDS") {
  std::istringstream stream(FileWith(data, schema));
  file.Read(stream);
}

std::string TextOf(ExpFile& file, int number) {
  ExpEntity* entity = file.GetEntity(number);
  return entity == nullptr ? "null" : entity->ToString();
}

std::string DataOf(ExpFile& file) {
  std::ostringstream text;
  file.WriteDataSection(text);
  return text.str();
}

std::string Written(ExpFile& file) {
  std::ostringstream text;
  file.Write(text);
  return text.str();
}

std::vector<int> NumbersOf(ExpFile& file, const std::string& type, bool withSubtypes) {
  std::list<ExpEntity*> entities;
  file.GetEntities(entities, type, withSubtypes);
  std::vector<int> numbers;
  for (ExpEntity* entity : entities) numbers.push_back(entity->GetEntityNumber());
  return numbers;
}

// --------------------------------------------------------------------------------------- reading and writing

TEST(LateBoundFile, ReadsAndWritesEveryKindOfValue) {
  CapturedLog log;
  LateBoundFile file(Kinds());
  Read(file, kThing1 + "\n" + kThing2 + "\n");
  EXPECT_EQ(TextOf(file, 1), kThing1);
  EXPECT_EQ(TextOf(file, 2), kThing2);
  EXPECT_EQ(DataOf(file), "DATA;\n" + kThing1 + "\n" + kThing2 + "\nENDSEC;\n");
  LateBoundFile again(Kinds());
  std::istringstream written(Written(file));
  again.Read(written);
  EXPECT_EQ(Written(again), Written(file));
  EXPECT_THAT(log.text, Not(HasSubstr("failed")));
}

TEST(LateBoundFile, SelectsHoldEveryKindOfValue) {
  LateBoundFile file(Kinds());
  const std::vector<std::string> choices = {"LENGTH_MEASURE(2.)", "LABEL('x')", "COLOUR(.RED.)",
                                            "LABELS(('a', 'b'))", "#1",         "$"};
  std::string data;
  for (std::size_t i = 0; i < choices.size(); ++i) {
    data += "#" + std::to_string(i + 1) + "=BOTTOM('n',*,1.,.RED.," + choices[i] + ");\n";
  }
  Read(file, data);
  for (std::size_t i = 0; i < choices.size(); ++i) {
    const int number = static_cast<int>(i) + 1;
    EXPECT_EQ(TextOf(file, number),
              "#" + std::to_string(number) + " = BOTTOM('n', *, 1., .RED., " + choices[i] + ");");
  }
  auto* choice = dynamic_cast<ExpSelect*>(file.GetEntity(2)->GetMember("choice"));
  ASSERT_NE(choice, nullptr);
  EXPECT_TRUE(choice->CheckType("label"));
  EXPECT_EQ(choice->GetExpString(), "x");
  EXPECT_TRUE(dynamic_cast<ExpSelect*>(file.GetEntity(5)->GetMember("choice"))->CheckType("bottom", &file));
}

TEST(LateBoundFile, UsesItsSchemaWhateverTheHeaderSaysAndKeepsTheHeader) {
  LateBoundFile file(Kinds());
  Read(file, "#1=USER(#2);\n", "AUTOMOTIVE_DESIGN");
  EXPECT_EQ(TextOf(file, 1), "#1 = USER(#2);");
  EXPECT_THAT(Written(file), HasSubstr("FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\n"));
  Read(file, "#1=USER(#3);\n", "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF");
  EXPECT_EQ(TextOf(file, 1), "#1 = USER(#3);");
  std::istringstream more(FileWith("#5=USER(#6);\n", "CONFIG_CONTROL_DESIGN"));
  file.Append(more);
  EXPECT_EQ(TextOf(file, 6), "#6 = USER(#7);");
  EXPECT_THAT(Written(file),
              HasSubstr("FILE_SCHEMA(('AP242_MANAGED_MODEL_BASED_3D_ENGINEERING_MIM_LF'));\n"));
}

TEST(LateBoundFile, ANewFileNamesTheSchema) {
  LateBoundFile file(Kinds());
  EXPECT_EQ(file.GetSchemaName(), "KINDS");
  EXPECT_THAT(Written(file), HasSubstr("FILE_SCHEMA(('KINDS'));\n"));
  const LateBoundSchema& renamed =
      TestData::LoadedAs("KINDS_UNDER_ANOTHER_NAME", VELMAR_TEST_DATA "/kinds.exp");
  EXPECT_THAT(Written(*std::make_unique<LateBoundFile>(renamed)), HasSubstr("FILE_SCHEMA(('KINDS'));\n"));
}

TEST(LateBoundFile, InThePlaceOfALibraryItWritesTheNameThatTheLibraryWrites) {
  const LateBoundSchema& schema = TestData::LoadedAs("AP203_E2", VELMAR_TEST_DATA "/kinds.exp");
  LateBoundFile file(schema);
  EXPECT_EQ(file.GetSchema(), STEP_AP203E2);
  EXPECT_EQ(file.GetSchemaName(), ExpFile(STEP_AP203E2).GetSchemaName());
  ExpFile plain;
  Read(plain, "#1=USER(#2);\n",
       "AP203_CONFIGURATION_CONTROLLED_3D_DESIGN_OF_MECHANICAL_PARTS_AND_ASSEMBLIES_MIM_LF");
  EXPECT_EQ(TextOf(plain, 1), "#1 = USER(#2);");
}

TEST(LateBoundFile, WhatDoesNotFitIsLeftOut) {
  CapturedLog log;
  LateBoundFile file(Kinds());
  Read(file, "#1=NO_SUCH_TYPE(1);\n#2=USER(#1,#2);\n#3=RIGHT('r',1,.PINK.);\n");
  EXPECT_EQ(file.GetEntity(1), nullptr);
  EXPECT_EQ(TextOf(file, 2), "#2 = USER(#1);");
  EXPECT_EQ(TextOf(file, 3), "#3 = RIGHT('r', 1., ..);");
  EXPECT_THAT(log.text, HasSubstr("-- line 10 col 22: this symbol not expected in entityInstance\n"));
}

TEST(LateBoundFile, WhatDoesNotFitIsKeptOnRequest) {
  LateBoundFile file(Kinds());
  file.KeepEverything(true);
  const std::string things =
      "#1 = THING('x', 3., 2147483648, 5, .MAYBE., .U., \"0F9\", .BLACK., $, (#2), (($), .A.), 'more');\n"
      "#2 = NO_SUCH_TYPE(#1);\n";
  Read(file, things);
  EXPECT_EQ(DataOf(file), "DATA;\n" + things + "ENDSEC;\n");
}

TEST(LateBoundFile, InstancesAreDeletedWithTheFile) {
  const LateBoundSchema& schema = Kinds();
  const std::size_t before = ExpEntity::instanceCount;
  {
    LateBoundFile file(schema);
    Read(file, kThing1 + kThing2 + "#3=(TOP('n',*)LEFT(1.));\n");
    EXPECT_GT(ExpEntity::instanceCount, before + 4);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
}

// -------------------------------------------------------------------------------------------------- creating

TEST(LateBoundFile, CreatesInstances) {
  LateBoundFile file(Kinds());
  ExpLink link;
  ExpEntity* bottom = file.CreateAndAddEntity("BOTTOM", link);
  ASSERT_NE(bottom, nullptr);
  bottom->GetMember("name")->SetExpString("b");
  bottom->GetMember("shade")->SetExpEnumeration("red");
  bottom->GetMember("choice")->SetExpReal(2);
  bottom->GetMember("choice")->AddExpSelectTypeName("LENGTH_MEASURE");
  ExpEntity* user = file.CreateAndAddEntity("USER");
  ASSERT_NE(user, nullptr);
  user->GetMember(0)->SetExpLink(link.GetExpLink());
  EXPECT_EQ(DataOf(file),
            "DATA;\n#1 = BOTTOM('b', *, 0., .RED., LENGTH_MEASURE(2.));\n#2 = USER(#1);\nENDSEC;\n");
  EXPECT_EQ(file.GetEntity(user->GetMember("uses")), bottom);
  EXPECT_EQ(file.CreateAndAddEntity("CARTESIAN_POINT"), nullptr);
}

// --------------------------------------------------------------------------------------------------- finding

TEST(LateBoundFile, FindsInstancesByTypeWithAndWithoutSubtypes) {
  LateBoundFile file(Kinds());
  Read(file,
       "#1=LEFT('l',1.,2.);\n#2=RIGHT('r',1,.RED.);\n#3=BOTTOM('b',*,1.,.RED.,$);\n"
       "#4=BELOW('c',*,1.,.RED.,$);\n#5=(TOP('t',2.)LEFT(3.));\n");
  EXPECT_THAT(NumbersOf(file, "top", true), ElementsAre(1, 2, 3, 4, 5, 5));
  EXPECT_THAT(NumbersOf(file, "TOP", false), ElementsAre(5));
  EXPECT_THAT(NumbersOf(file, "RIGHT", true), ElementsAre(2, 3, 4));
  EXPECT_THAT(NumbersOf(file, "BELOW", true), ElementsAre(4));
  EXPECT_THAT(NumbersOf(file, "USER", true), IsEmpty());
  std::list<ExpEntity*> lefts;
  file.GetEntities(lefts, "LEFT", false);
  std::list<ExpExternalMappingEntity*> complex;
  file.GetExternalEntities({lefts.begin(), lefts.end()}, complex);
  ASSERT_EQ(complex.size(), 1u);
  EXPECT_EQ(complex.front()->GetEntityNumber(), 5);
}

// ----------------------------------------------------------------------------------------- complex instances

TEST(LateBoundFile, PartsOfComplexInstancesTakeOverTheValuesOfTheirSupertypes) {
  LateBoundFile file(Kinds());
  Read(file, "#1=(BOTTOM(LABEL('x'))LEFT(2.5)RIGHT(.BLUE.)TOP('t',7));\n");
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(file.GetEntity(1));
  ASSERT_NE(complex, nullptr);
  EXPECT_EQ(complex->ToString(),
            "#1 = (\n   BOTTOM (LABEL('x'))\n   LEFT (2.5)\n   RIGHT (.BLUE.)\n   TOP ('t', 7.)\n);");
  ExpEntity* bottom = complex->GetEntityByName("BOTTOM");
  ASSERT_NE(bottom, nullptr);
  EXPECT_EQ(bottom->GetMember("name")->ToString(), "'t'");
  EXPECT_EQ(bottom->GetMember("weight")->ToString(), "2.5");
  EXPECT_EQ(complex->GetEntityByName("LEFT")->ToString(), "#1 = LEFT('t', 7., 2.5);");
}

TEST(LateBoundFile, EnumerationsOfSupertypesAreCopiedWithTheirNumbers) {
  LateBoundFile file(Kinds());
  Read(file, "#1=(FAR_RIGHT(5)RIGHT(.BLUE.)TOP('t',7));\n");
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(file.GetEntity(1));
  ASSERT_NE(complex, nullptr);
  ExpEntity* part = complex->GetEntityByName("FAR_RIGHT");
  ASSERT_NE(part, nullptr);
  EXPECT_EQ(part->ToString(), "#1 = FAR_RIGHT('t', 7., .BLUE., 5);");
  EXPECT_EQ(dynamic_cast<ExpEnumeration*>(part->GetMember("shade"))->GetExpEnumeration(), 2);
}

TEST(LateBoundFile, AggregatesAreCopied) {
  const LateBoundSchema& schema = TestData::Construct("AGGREGATES", "aggregates.exp");
  LateBoundFile file(schema);
  const std::string values = "(1, 2), (#1), (), ('a', 'b'), ((1., 2.), (3.)), (1.5), (), (#1)";
  Read(file, "#1=NODE();\n#2=HOLDER(" + values + ");\n");
  EXPECT_EQ(TextOf(file, 1), "#1 = NODE();");
  EXPECT_EQ(TextOf(file, 2), "#2 = HOLDER(" + values + ");");
  ExpExternalMappingEntity handler;
  ExpEntity* copy = file.CreateAndAddEntity("HOLDER");
  for (int i = 0; i < copy->GetNofExplicitMembers(); ++i) {
    handler.HandleParams(copy->GetMember(i), file.GetEntity(2)->GetMember(i));
  }
  EXPECT_EQ(copy->ToString(), "#3 = HOLDER(" + values + ");");
}

// ---------------------------------------------------------------------------------------- visitors and dumps

TEST(LateBoundFile, DumpsAnInstanceWithAllThatItRefersTo) {
  LateBoundFile file(Kinds());
  Read(file,
       "#1=USER(#2);\n#2=BOTTOM('b',*,1.,.RED.,#3);\n#3=THING(1.,2.,3,'',.T.,.T.,$,.RED.,$,#3,());\n#4=USER(#"
       "9);\n");
  std::ostringstream text;
  file.ExpAbstractObjectAdmin::DumpEntity(file.GetEntity(1), text);
  EXPECT_EQ(text.str(), TextOf(file, 3) + "\n" + TextOf(file, 2) + "\n" + TextOf(file, 1) + "\n");
  std::ostringstream whole;
  file.DumpEntity(1, whole);
  EXPECT_THAT(whole.str(), HasSubstr("FILE_SCHEMA(('KINDS'));\n"));
  EXPECT_THAT(whole.str(), HasSubstr("DATA;\n" + text.str() + "ENDSEC;\n"));
}

class TypeCounter : public ExpEntityVisitor {
 public:
  using ExpEntityVisitor::ExpEntityVisitor;
  void VisitExpExternalMappingEntity(ExpExternalMappingEntity*) override { ++complex; }
  int complex = 0;
};

TEST(LateBoundFile, EntityVisitorsSeeComplexInstancesAndTypeNumbers) {
  LateBoundFile file(Kinds());
  Read(file, "#1=USER(#2);\n#2=(TOP('t',7)LEFT(1.));\n");
  TypeCounter visitor(&file);
  file.GetEntity(1)->Accept(&visitor);
  EXPECT_EQ(visitor.complex, 0);
  file.GetEntity(2)->Accept(&visitor);
  EXPECT_EQ(visitor.complex, 1);
  EXPECT_EQ(visitor.GetTypeOfEntity(1), Kinds().FindType("USER")->GetTypeNumber());
}

}  // namespace
