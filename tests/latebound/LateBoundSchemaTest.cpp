// Loading schemas, and what goes wrong when they are loaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

#include "../c/ReadingSupport.h"
#include "LateBoundFile.h"
#include "LateBoundSchema.h"
#include "LoadedSchemas.h"

namespace {

using namespace VELMAR;
using reading::TemporaryFile;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using VELMAR::TestData::Construct;
using VELMAR::TestData::Kinds;

std::string Data(const std::string& file) { return std::string(VELMAR_EXPRESS_DATA "/") + file; }

// What loading throws; without a text and with a failure where it does not.
LateBoundError ErrorOf(const std::string& file, const LateBoundOptions& options = {}) {
  try {
    LateBoundSchema::Load(file, options);
  } catch (const LateBoundError& error) {
    return error;
  }
  ADD_FAILURE() << file << " was loaded";
  return LateBoundError("");
}

std::string RegisteredTypes() {
  std::ostringstream text;
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredSchemas(text);
  ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(text);
  return text.str();
}

TEST(LateBoundSchema, RegistersItsTypesUnderTheNameOfTheSchema) {
  TemporaryFile text(
      "SCHEMA Plain_One; ENTITY point; x : REAL; END_ENTITY; ENTITY line; END_ENTITY; END_SCHEMA;");
  const LateBoundSchema schema = LateBoundSchema::Load(text.Path());
  EXPECT_EQ(schema.GetName(), "PLAIN_ONE");
  EXPECT_EQ(schema.GetRegistryName(), "PLAIN_ONE");
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  EXPECT_TRUE(registry->IsSchemaRegistered("PLAIN_ONE"));
  EXPECT_EQ(registry->GetEntityRuntimeType("POINT", "PLAIN_ONE"), schema.FindType("Point"));
  ASSERT_EQ(schema.GetTypes().size(), 2u);
  EXPECT_EQ(schema.GetTypes()[0]->GetName(), "LINE");
  EXPECT_EQ(schema.GetTypes()[1]->GetName(), "POINT");
  EXPECT_EQ(schema.FindType("PLANE"), nullptr);
  EXPECT_THAT(schema.GetWarnings(), IsEmpty());
}

TEST(LateBoundSchema, TheOptionsNameTheSchemaAndItsRegistryName) {
  const LateBoundSchema& units = Construct("UNITS_ALONE", "interface.exp", "UNITS");
  EXPECT_EQ(units.GetName(), "UNITS");
  EXPECT_EQ(units.GetRegistryName(), "UNITS_ALONE");
  EXPECT_NE(units.FindType("UNIT"), nullptr);
  EXPECT_EQ(units.FindType("SHAPE"), nullptr);
  EXPECT_EQ(Construct("LAST_ONE", "interface.exp").GetName(), "UNITS");
}

TEST(LateBoundSchema, InterfacedSchemasAreLookedForInTheGivenFolders) {
  TemporaryFile text("SCHEMA on_top; USE FROM enumeration; END_SCHEMA;");
  EXPECT_THAT(ErrorOf(text.Path()).what(), HasSubstr("enumeration"));
  TemporaryFile other(
      "SCHEMA on_top; REFERENCE FROM simple_types; ENTITY a SUBTYPE OF (thing); END_ENTITY; END_SCHEMA;");
  const LateBoundSchema schema = LateBoundSchema::Load(other.Path(), {"", "ON_TOP", {VELMAR_EXPRESS_DATA}});
  EXPECT_EQ(schema.GetName(), "ON_TOP");
  ASSERT_NE(schema.FindType("A"), nullptr);
  EXPECT_EQ(schema.FindType("A")->GetNofExplicitMembers(), 12);
}

TEST(LateBoundSchema, WarningsAreHandedOut) {
  const LateBoundSchema& schema = Construct("SUSPICIOUS", "suspicious.exp");
  ASSERT_FALSE(schema.GetWarnings().empty());
  const LateBoundMessage& first = schema.GetWarnings()[0];
  EXPECT_FALSE(first.isError);
  EXPECT_EQ(first.file, Data("suspicious.exp"));
  EXPECT_GT(first.line, 0);
  EXPECT_GT(first.column, 0);
  EXPECT_THAT(first.code, StartsWith("W"));
  EXPECT_FALSE(first.text.empty());
}

TEST(LateBoundSchema, ASchemaWithoutEntitiesIsRegisteredToo) {
  TemporaryFile text("SCHEMA nothing_in_it; END_SCHEMA;");
  const LateBoundSchema schema = LateBoundSchema::Load(text.Path());
  EXPECT_TRUE(schema.GetTypes().empty());
  LateBoundFile file(schema);
  EXPECT_EQ(file.CreateEntity("POINT"), nullptr);
  EXPECT_THAT(ErrorOf(text.Path()).what(), HasSubstr("NOTHING_IN_IT"));
}

// ---------------------------------------------------------------------------------------------------- errors

TEST(LateBoundSchema, AnErrorSaysWhereAndWhatAndShowsTheLine) {
  TemporaryFile text(
      "SCHEMA broken;\nTYPE length_measure = REAL;\nEND_TYPE;\nENTITY circle;\n"
      "  radius : lenght_measure;\nEND_ENTITY;\nEND_SCHEMA;\n");
  const std::string before = RegisteredTypes();
  const LateBoundError error = ErrorOf(text.Path());
  EXPECT_EQ(error.what(),
            text.Path() +
                ":5:12: error: unknown type 'lenght_measure' [E021]; did you mean 'length_measure'?\n"
                "      radius : lenght_measure;\n"
                "               ^~~~~~~~~~~~~~\n");
  ASSERT_EQ(error.GetMessages().size(), 1u);
  const LateBoundMessage& message = error.GetMessages()[0];
  EXPECT_TRUE(message.isError);
  EXPECT_EQ(message.file, text.Path());
  EXPECT_EQ(message.line, 5);
  EXPECT_EQ(message.column, 12);
  EXPECT_EQ(message.code, "E021");
  EXPECT_EQ(message.text, "unknown type 'lenght_measure'");
  EXPECT_EQ(message.hint, "did you mean 'length_measure'?");
  EXPECT_EQ(RegisteredTypes(), before);
}

class BadSchema : public testing::TestWithParam<const char*> {};

TEST_P(BadSchema, IsRefusedWithItsPlaceAndRegistersNothing) {
  const std::string before = RegisteredTypes();
  const LateBoundError error = ErrorOf(Data(GetParam()), {"", "BAD", {}});
  EXPECT_THAT(error.what(), StartsWith(Data(GetParam()) + ":"));
  EXPECT_THAT(error.what(), HasSubstr("error: "));
  EXPECT_FALSE(error.GetMessages().empty());
  EXPECT_EQ(RegisteredTypes(), before);
}

INSTANTIATE_TEST_SUITE_P(All, BadSchema,
                         testing::Values("bad_missing_semicolon.exp", "bad_syntax.exp",
                                         "bad_unknown_type.exp", "bad_cyclic_inheritance.exp",
                                         "bad_cyclic_type.exp", "bad_empty.exp", "bad_no_end_schema.exp",
                                         "bad_too_deep.exp", "bad_redeclaration.exp"));

TEST(LateBoundSchema, FilesAndFoldersThatCannotBeReadAreNamed) {
  EXPECT_THAT(ErrorOf("no_such_file.exp").what(), HasSubstr("no_such_file.exp"));
  EXPECT_THAT(ErrorOf("no_such_file.exp").what(), HasSubstr("No such file or directory"));
  EXPECT_THAT(ErrorOf(VELMAR_EXPRESS_DATA).what(), HasSubstr(VELMAR_EXPRESS_DATA));
  EXPECT_THAT(ErrorOf(Data("select.exp"), {"", "NEVER", {"no_such_folder"}}).what(),
              HasSubstr("no_such_folder"));
  EXPECT_THAT(ErrorOf("").GetMessages(), IsEmpty());
}

TEST(LateBoundSchema, ASchemaThatTheFileDoesNotDeclareIsRefused) {
  EXPECT_THAT(ErrorOf(Data("interface.exp"), {"shape", "", {}}).what(),
              EndsWith("interface.exp: error: there is no schema 'shape'. There are: shapes, basics, units"));
}

TEST(LateBoundSchema, ARegistryNameIsTakenOnce) {
  Kinds();
  const std::string before = RegisteredTypes();
  EXPECT_STREQ(ErrorOf(VELMAR_TEST_DATA "/kinds.exp").what(),
               "a schema is registered under the name KINDS already: give this one another name");
  EXPECT_THAT(ErrorOf(Data("select.exp"), {"", "KINDS", {}}).what(), HasSubstr("KINDS already"));
  EXPECT_THAT(ErrorOf(Data("select.exp"), {"", "VELMAR", {}}).what(), HasSubstr("VELMAR already"));
  EXPECT_EQ(RegisteredTypes(), before);
}

TEST(LateBoundSchema, ARegistryNameIsMadeOfLettersDigitsAndUnderscores) {
  for (const char* name : {"A::B", "1A", "_A", "A B", "\xC3\xA4"}) {
    EXPECT_EQ(ErrorOf(Data("select.exp"), {"", name, {}}).what(),
              "'" + std::string(name) +
                  "' is no registry name: it is made of letters, digits and '_', a letter first");
  }
}

}  // namespace
