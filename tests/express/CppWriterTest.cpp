#include <gmock/gmock.h>

#include <filesystem>

#include "CppWriter.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

using testing::HasSubstr;
using testing::Not;

std::vector<GeneratedFile> Generated(const SchemaText& text, const std::string& name, int parts = 1) {
  EXPECT_EQ(text.diagnostics.ErrorCount(), 0u);
  const SchemaDeclaration& schema = *text.model.schemas.front();
  std::string registryName = schema.name.text;
  for (char& c : registryName) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return WriteCpp(text.model, schema, {name, registryName, parts});
}

std::string Header(const std::string& declarations) {
  return Generated(InSchema(declarations), "test.exp")[0].text;
}
std::string Source(const std::string& declarations) {
  return Generated(InSchema(declarations), "test.exp")[2].text;
}

class EveryGolden : public testing::TestWithParam<const char*> {};

TEST_P(EveryGolden, IsWrittenAgainByteForByte) {
  const std::string name = GetParam();
  const SchemaText text(ContentOf(std::string(VELMAR_TEST_DATA) + '/' + name + ".exp"), name + ".exp");
  const std::filesystem::path golden = std::filesystem::path(VELMAR_TEST_GOLDEN) / name;
  for (const GeneratedFile& file : Generated(text, name + ".exp")) {
    EXPECT_EQ(file.text, ContentOf((golden / file.name).string()))
        << file.name << ": if the difference is right, in tests/express/data:\n  velmar-express generate "
        << name << ".exp --parts 1 --output-dir ../golden/" << name;
  }
}

INSTANTIATE_TEST_SUITE_P(Golden, EveryGolden,
                         testing::Values("cpp_names", "enumeration", "multiple_inheritance",
                                         "redeclared_attribute", "references", "renamed_attribute",
                                         "simple_types"),
                         [](const auto& info) { return std::string(info.param); });

TEST(CppWriter, NamesOfNamespacesAreInCamelCase) {
  EXPECT_EQ(CppSchemaName("AUTOMOTIVE_DESIGN"), "AutomotiveDesign");
  EXPECT_EQ(CppSchemaName("AP203_E2"), "Ap203E2");
  EXPECT_EQ(CppSchemaName("AP242"), "Ap242");
  EXPECT_EQ(CppSchemaName("s"), "S");
}

TEST(CppWriter, BaseIsVirtualOnTheEdgesThatADiamondHasAndOnNoOther) {
  const std::string header = Header(
      "ENTITY a; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY c SUBTYPE OF (a); END_ENTITY; "
      "ENTITY d SUBTYPE OF (b, c); END_ENTITY; ENTITY e SUBTYPE OF (a); END_ENTITY; ENTITY f SUBTYPE OF (b); "
      "END_ENTITY;");
  EXPECT_THAT(header, HasSubstr(" A : public EntityBase {"));
  EXPECT_THAT(header, HasSubstr(" B : virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" C : virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" D : public B, public C {"));
  EXPECT_THAT(header, HasSubstr(" E : public A {"));
  EXPECT_THAT(header, HasSubstr(" F : public B {"));
}

TEST(CppWriter, DiamondOfAnEntityAndItsOwnSupertypeIsOneToo) {
  const std::string header = Header(
      "ENTITY a; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY c SUBTYPE OF (b, a); END_ENTITY; "
      "ENTITY d SUBTYPE OF (b); END_ENTITY;");
  EXPECT_THAT(header, HasSubstr(" B : virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" C : public B, virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" D : public B {"));
}

TEST(CppWriter, DiamondFarBelowMakesItsUpperEdgesVirtualOnly) {
  const std::string header = Header(
      "ENTITY a; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY bb SUBTYPE OF (b); END_ENTITY; "
      "ENTITY c SUBTYPE OF (a); END_ENTITY; ENTITY d SUBTYPE OF (bb, c); END_ENTITY; ENTITY other; "
      "END_ENTITY;");
  EXPECT_THAT(header, HasSubstr(" B : virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" Bb : public B {"));
  EXPECT_THAT(header, HasSubstr(" C : virtual public A {"));
  EXPECT_THAT(header, HasSubstr(" Other : public EntityBase {"));
}

TEST(CppWriter, TwoRootsThatComeTogetherMakeTheCommonBaseVirtual) {
  const std::string header = Header(
      "ENTITY a; END_ENTITY; ENTITY b; END_ENTITY; ENTITY c SUBTYPE OF (a, b); END_ENTITY; ENTITY d; "
      "END_ENTITY;");
  EXPECT_THAT(header, HasSubstr(" A : virtual public EntityBase {"));
  EXPECT_THAT(header, HasSubstr(" B : virtual public EntityBase {"));
  EXPECT_THAT(header, HasSubstr(" C : public A, public B {"));
  EXPECT_THAT(header, HasSubstr(" D : public EntityBase {"));
}

TEST(CppWriter, CommonBaseHasItsOwnCopyOfEveryOperationOfExpEntity) {
  const auto files = Generated(InSchema("ENTITY a; END_ENTITY;"), "test.exp");
  EXPECT_THAT(files[0].text, HasSubstr("class VELMAR_API EntityBase : public ExpEntity {"));
  for (const char* operation :
       {"GetMember", "GetMemberNames", "GetExpClassName", "GetExpSuperClasses", "GetExpSubClasses",
        "GetNofInverseMembers", "GetNofExplicitMembers", "GetExternalMappingStartIndex",
        "GetTypeNumberOfEntity", "InsertInObjTree", "SetEntityNumber", "GetEntityNumber", "ToString",
        "Accept"}) {
    EXPECT_THAT(files[1].text, HasSubstr(std::string("ExpEntity::") + operation + '(')) << operation;
  }
}

TEST(CppWriter, EntityNamedAsTheCommonBaseGetsAnotherName) {
  const std::string header = Header("ENTITY entity_base; END_ENTITY;");
  EXPECT_THAT(header, HasSubstr("class VELMAR_API EntityBase_ : public EntityBase {"));
}

TEST(CppWriter, WithoutDiamondNothingIsVirtual) {
  EXPECT_THAT(Header("ENTITY a; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY c; END_ENTITY;"),
              Not(HasSubstr("virtual public")));
}

TEST(CppWriter, RowGivesCountsStartIndexAndLists) {
  const std::string source = Source(
      "ENTITY a; x : REAL; INVERSE i : SET OF d FOR r; END_ENTITY; ENTITY b SUBTYPE OF (a); y, z : REAL; "
      "END_ENTITY; "
      "ENTITY c SUBTYPE OF (b); INVERSE SELF\\a.i : SET [1:1] OF d FOR r; j : SET OF d FOR r; END_ENTITY; "
      "ENTITY d; r : a; END_ENTITY;");
  EXPECT_THAT(source, HasSubstr("{\"A\", &ExpSchemaCreate<A>, 1, 1, 0, 1,\n     \"\",\n     \"B\",\n"
                                "     \"x\",\n     &typeid(A),\n     &ExpSchemaVisit<&Visitor::VisitA>},"));
  EXPECT_THAT(source, HasSubstr("{\"B\", &ExpSchemaCreate<B>, 3, 1, 1, 2,\n     \"A\",\n"
                                "     \"C\",\n     \"x y z\",\n"));
  EXPECT_THAT(source, HasSubstr("{\"C\", &ExpSchemaCreate<C>, 3, 2, 3, 3,\n     \"A B\",\n"
                                "     \"\",\n     \"x y z\",\n"));
}

TEST(CppWriter, AccessorsWithAStoreAreThereForValuesThatMayReferToEntitiesAndForNoOthers) {
  const std::string header = Header(
      "TYPE l = STRING; END_TYPE; TYPE n = SELECT (l); END_TYPE; TYPE s = SELECT (l, t); END_TYPE; "
      "TYPE t = SELECT (a); END_TYPE; "
      "ENTITY a; x : l; END_ENTITY; "
      "ENTITY b; p : LIST OF LIST OF SET OF a; q : n; r : s; v : LIST OF n; w : LIST OF s; END_ENTITY;");
  EXPECT_THAT(header, HasSubstr("  std::vector<std::vector<std::vector<A*>>> P(ExpStore& store) {\n"
                                "    return ResolveAll<A, 3>(store, p_);\n"));
  EXPECT_THAT(header,
              HasSubstr("  ExpEntity* R(ExpStore& store) {\n    return Resolve<ExpEntity>(store, r_);\n"));
  EXPECT_THAT(header, HasSubstr("  std::vector<ExpEntity*> W(ExpStore& store) {\n"));
  for (const char* none : {" X(ExpStore", " Q(ExpStore", " V(ExpStore"})
    EXPECT_THAT(header, Not(HasSubstr(none)));
}

TEST(CppWriter, ClassesAreDeclaredBeforeTheFirstIsDefinedSoThatTheyMayReferToEachOther) {
  const std::string header = Header("ENTITY a; r : b; END_ENTITY; ENTITY b; r : a; END_ENTITY;");
  const std::size_t declared = header.find("class A;\nclass B;\n");
  ASSERT_NE(declared, std::string::npos);
  EXPECT_LT(declared, header.find("class VELMAR_API A "));
}

TEST(CppWriter, VisitorCallsTheOperationOfTheFirstSupertype) {
  const auto files = Generated(
      InSchema("ENTITY a; END_ENTITY; ENTITY b; END_ENTITY; ENTITY c SUBTYPE OF (b, a); END_ENTITY;"),
      "test.exp");
  EXPECT_THAT(files[0].text, HasSubstr("  virtual void VisitA(A*);\n  virtual void VisitB(B*);\n"
                                       "  virtual void VisitC(C*);\n"));
  EXPECT_THAT(files[2].text, HasSubstr("void Visitor::VisitA(A* entity) {\n  VisitExpEntity(entity);\n}\n"));
  EXPECT_THAT(files[2].text, HasSubstr("void Visitor::VisitC(C* entity) {\n  VisitB(entity);\n}\n"));
}

TEST(CppWriter, PartsShareTheEntities) {
  const SchemaText text = InSchema("ENTITY a; END_ENTITY; ENTITY b; END_ENTITY; ENTITY c; END_ENTITY;");
  const auto files = Generated(text, "test.exp", 4);
  ASSERT_EQ(files.size(), 6u);
  EXPECT_EQ(files[5].name, "S_4.cpp");
  std::string all;
  for (std::size_t i = 2; i < files.size(); ++i) all += files[i].text;
  for (const char* row : {"{\"A\", ", "{\"B\", ", "{\"C\", "}) {
    EXPECT_NE(all.find(row), std::string::npos) << row;
    EXPECT_EQ(all.find(row), all.rfind(row)) << row;
  }
}

TEST(CppWriter, SupertypesOfWhatIsInterfacedComeAlong) {
  const SchemaText text(
      "SCHEMA s; USE FROM t (b AS bb); END_SCHEMA; SCHEMA t; TYPE e = ENUMERATION OF (x); END_TYPE; "
      "ENTITY a; v : e; END_ENTITY; ENTITY b SUBTYPE OF (a); END_ENTITY; ENTITY c SUBTYPE OF (b); "
      "END_ENTITY; END_SCHEMA;");
  const auto files = Generated(text, "test.exp");
  EXPECT_THAT(files[0].text, HasSubstr("class VELMAR_API E : "));
  EXPECT_THAT(files[0].text, HasSubstr("class VELMAR_API A : "));
  EXPECT_THAT(files[0].text, HasSubstr("class VELMAR_API Bb : public A {"));
  EXPECT_THAT(files[0].text, Not(HasSubstr("class VELMAR_API C ")));
  EXPECT_THAT(files[2].text, HasSubstr("     \"\",\n     \"BB\",\n     \"v\",\n"));
  EXPECT_THAT(files[2].text, HasSubstr("{\"BB\", "));
}

TEST(CppWriter, SameModelGivesTheSameBytes) {
  const std::string path = std::string(VELMAR_TEST_DATA) + "/multiple_inheritance.exp";
  const auto first = Generated(SchemaText(ContentOf(path)), "test.exp", 3);
  const auto second = Generated(SchemaText(ContentOf(path)), "test.exp", 3);
  ASSERT_EQ(first.size(), second.size());
  for (std::size_t i = 0; i < first.size(); ++i) EXPECT_EQ(first[i].text, second[i].text) << first[i].name;
}

TEST(CppWriter, NoLineIsLongerThan110Characters) {
  std::string text = "ENTITY root; END_ENTITY; ";
  std::string supertypes;
  for (int i = 0; i < 12; ++i) {
    const std::string name = "some_rather_long_name_of_an_entity_" + std::to_string(i);
    text +=
        "ENTITY " + name + " SUBTYPE OF (root); an_attribute_" + std::to_string(i) + " : REAL; END_ENTITY; ";
    supertypes += (i ? ", " : "") + name;
  }
  const SchemaText schema = InSchema(text + "ENTITY all_of_them SUBTYPE OF (" + supertypes +
                                     "); END_ENTITY; "
                                     "TYPE e = ENUMERATION OF (" +
                                     supertypes + "); END_TYPE;");
  for (const GeneratedFile& file : Generated(schema, "test.exp")) {
    std::istringstream lines(file.text);
    for (std::string line; std::getline(lines, line);) {
      const bool mayBeLonger = line.find("#error") != std::string::npos;
      EXPECT_TRUE(mayBeLonger || line.size() <= 110) << file.name << ": " << line;
    }
  }
}

}  // namespace
}  // namespace VELMAR::Express
