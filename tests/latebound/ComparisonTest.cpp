// The types of a schema library and those made at run time from the EXPRESS text of the same schema: the same
// registration, the same values of new instances, the same population and the same bytes for every file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "../c/CapturedLog.h"
#include "BundledSchemas.h"
#include "ExpFixedSchemaFile.h"
#include "ExpUtilities.h"
#include "LateBoundFile.h"
#include "LoadedSchemas.h"

namespace {

namespace fs = std::filesystem;
using namespace VELMAR;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::LoadedAs;

const bool kLoaded = (LoadBundledSchemas(), true);

const fs::path kShared = VELMAR_TEST_SHARED;

struct SchemaRow {
  const char* library;    // the name under which the schema library registers its types
  const char* text;       // the EXPRESS text that the library is made of, in schemas/
  const char* published;  // a published text of the schema, in published/ of what the tests share
  const char* files;      // a file of the schema, or a folder of such files, in corpus/ there
};

constexpr SchemaRow kSchemas[] = {
    {"CONFIG_CONTROL_DESIGN", "config_control_design.exp", "ap203.exp", "ap203"},
    {"AP203_E2", "ap203_e2.exp", "ap203e2.exp", "ap203e2"},
    {"AUTOMOTIVE_DESIGN", "automotive_design.exp", "ap214e3.exp", "ap214"},
    {"AP242", "ap242.exp", "ap242e1.exp", "ap242"},
    {"AP242", "ap242.exp", "ap242e4.exp", "ap242"},
    {"ISO13584_25_IEC61360_5_LIBRARY_IMPLICIT_SCHEMA", "plib.exp", "plib25.exp", "other/FM_model_P25_IS.p21"},
};

bool HasLibrary(const SchemaRow& row) {
  return ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(row.library);
}

// The row's own text, or the published one, loaded.
const LateBoundSchema& Ours(const SchemaRow& row) {
  return LoadedAs(std::string("OURS_") + row.library, std::string(VELMAR_SCHEMAS "/") + row.text);
}
const LateBoundSchema& Published(const SchemaRow& row) {
  const std::string name = fs::path(row.published).stem().string();
  return LoadedAs("PUBLISHED_" + ToUpperString(name),
                  (kShared / "schemas/published" / row.published).string());
}

std::string NameOf(const std::string& text) {
  std::string name = text;
  for (char& c : name) {
    if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return name;
}

// ----------------------------------------------------------------------------------------------------- types

class Types : public testing::TestWithParam<SchemaRow> {};

std::vector<std::string> WithoutSchema(const std::vector<std::string>& names, const std::string& schema) {
  std::vector<std::string> bare;
  for (const std::string& name : names) {
    const bool isOfSchema = name.compare(0, schema.size() + 2, schema + "::") == 0;
    bare.push_back(isOfSchema ? name.substr(schema.size() + 2) : "not of the schema: " + name);
  }
  return bare;
}

// The class of a value; that of an enumeration type, of which every library has its own, by its base.
std::string ClassOf(ExpAttribute* value) {
  if (value == nullptr) return "null";
  const bool isEnumerationType = dynamic_cast<ExpEnumeration*>(value) != nullptr &&
                                 dynamic_cast<ExpLogical*>(value) == nullptr &&
                                 dynamic_cast<ExpBoolean*>(value) == nullptr;
  return isEnumerationType ? typeid(ExpEnumeration).name() : typeid(*value).name();
}

TEST_P(Types, AreRegisteredAndMadeAsThoseOfTheLibrary) {
  const SchemaRow& row = GetParam();
  if (!HasLibrary(row)) GTEST_SKIP() << "the library of " << row.library << " is not built";
  const LateBoundSchema& schema = Ours(row);
  ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
  ASSERT_GT(schema.GetTypes().size(), 100u);
  for (const LateBoundType* late : schema.GetTypes()) {
    SCOPED_TRACE(late->GetName());
    ExpEntityRuntimeType* type = registry->GetEntityRuntimeType(late->GetName(), row.library);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(type->GetSchema(), row.library);
    EXPECT_EQ(late->GetNofExplicitMembers(), type->GetNofExplicitMembers());
    EXPECT_EQ(late->GetNofInverseMembers(), type->GetNofInverseMembers());
    EXPECT_EQ(late->GetExternalMappingStartIndex(), type->GetExternalMappingStartIndex());
    EXPECT_EQ(late->GetTypeNumber(), type->GetTypeNumber());
    EXPECT_EQ(late->InsertInObjTree(), type->InsertInObjTree());
    EXPECT_EQ(*late->GetMemberNames(), *type->GetMemberNames());
    EXPECT_EQ(WithoutSchema(*late->GetSubClasses(), schema.GetRegistryName()),
              WithoutSchema(*type->GetSubClasses(), row.library));
    std::vector<std::string> supers = *late->GetSuperClasses();
    std::vector<std::string> supersOfLibrary = *type->GetSuperClasses();
    ASSERT_FALSE(supers.empty());
    EXPECT_EQ(supers.front(), "VELMAR::ExpEntity");
    EXPECT_EQ(supersOfLibrary.front(), "VELMAR::ExpEntity");
    supers.erase(supers.begin());
    supersOfLibrary.erase(supersOfLibrary.begin());
    EXPECT_EQ(WithoutSchema(supers, schema.GetRegistryName()), WithoutSchema(supersOfLibrary, row.library));

    const std::unique_ptr<ExpEntity> a(const_cast<LateBoundType*>(late)->CreateInstance(-1));
    const std::unique_ptr<ExpEntity> b(type->CreateInstance(-1));
    for (int i = 0; i <= late->GetNofExplicitMembers(); ++i) {
      ExpAttribute* value = a->GetMember(i);
      ExpAttribute* valueOfLibrary = b->GetMember(i);
      ASSERT_EQ(ClassOf(value), ClassOf(valueOfLibrary)) << i;
      if (value != nullptr) {
        EXPECT_EQ(value->IsOmitted(), valueOfLibrary->IsOmitted()) << i;
      }
    }
  }
  // No type of the library is missing: type numbers run from 1 without gaps, and those above have all of
  // ours.
  std::ostringstream dump;
  registry->DumpRegisteredEntityTypes(dump);
  std::size_t ofLibrary = 0;
  std::istringstream lines(dump.str());
  for (std::string line; std::getline(lines, line);) {
    const std::string end = std::string(" :: ") + row.library;
    ofLibrary +=
        line.size() > end.size() && line.compare(line.size() - end.size(), end.size(), end) == 0 ? 1 : 0;
  }
  EXPECT_EQ(schema.GetTypes().size(), ofLibrary);
}

INSTANTIATE_TEST_SUITE_P(All, Types,
                         testing::Values(kSchemas[0], kSchemas[1], kSchemas[2], kSchemas[3], kSchemas[5]),
                         [](const auto& row) { return NameOf(row.param.library); });

// ----------------------------------------------------------------------------------------------------- files

std::string ContentOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Reads a text; gives what was logged, without the line that names the schema.
std::string Read(ExpFile& file, const std::string& text) {
  CapturedLog log;
  std::istringstream stream(text);
  file.Read(stream);
  std::string lines;
  for (const std::string& line : log.lines) {
    if (line.find("Input schema name: ") == std::string::npos) lines += line + "\n";
  }
  const std::string schema = file.GetEnforcedFactoryName();
  return ReplaceString(lines, "for the schema: " + schema, "for the schema");
}

// What is written; where the header has no time stamp, with a fixed one.
std::string Written(ExpFile& file) {
  std::list<ExpEntity*> names;
  file.GetEntities(names, "FILE_NAME", false);
  ExpEntity* name = names.empty() ? file.CreateEntity("FILE_NAME") : names.front();
  auto* stamp = dynamic_cast<ExpString*>(name->GetMember("time_stamp"));
  if (stamp->GetExpString().empty()) stamp->SetExpString("2026-01-01T00:00:00");
  std::ostringstream text;
  try {
    file.Write(text);
  } catch (const std::string& error) {
    text << "thrown: " << error;
  }
  return text.str();
}

std::string TextOf(ExpEntity* entity) {
  try {
    return entity->ToString();
  } catch (const std::string& error) {
    return "thrown: " + error;
  }
}

// The types of an instance: its own, or those of its parts.
std::vector<std::string> TypesOf(ExpEntity* entity) {
  std::vector<std::string> types;
  if (auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity)) {
    for (ExpEntity* part : *complex->GetEntities()) types.push_back(part->GetExpClassName());
  } else {
    types.push_back(entity->GetExpClassName());
  }
  return types;
}

// The numbers of the instances that a file defines, one on a line each.
std::vector<int> NumbersIn(const std::string& text) {
  std::vector<int> numbers;
  for (std::size_t line = 0; line < text.size(); line = std::min(text.find('\n', line), text.size()) + 1) {
    if (text[line] == '#') numbers.push_back(std::stoi(text.substr(line + 1, 10)));
  }
  return numbers;
}

// The same instances, texts and bytes. Gives the number of instances.
int ExpectSame(ExpFile& generated, ExpFile& dynamic) {
  EXPECT_EQ(generated.GetMaxEntityNumber(), dynamic.GetMaxEntityNumber());
  const std::string text = Written(generated);
  EXPECT_EQ(text, Written(dynamic));
  int count = 0;
  for (const int number : NumbersIn(text)) {
    ExpEntity* expected = generated.GetEntity(number);
    ExpEntity* found = dynamic.GetEntity(number);
    EXPECT_TRUE(expected != nullptr && found != nullptr) << "#" << number;
    if (expected == nullptr || found == nullptr) continue;
    ++count;
    EXPECT_EQ(TypesOf(expected), TypesOf(found)) << "#" << number;
    EXPECT_EQ(TextOf(expected), TextOf(found));
    if (testing::Test::HasFailure()) return count;
  }
  return count;
}

struct FileRow {
  SchemaRow schema;
  std::string file;  // in corpus/; empty where there is no corpus
};

// The files of the schemas; with `all`, every file of the corpus for each of them.
std::vector<FileRow> FilesOf(const std::vector<SchemaRow>& schemas, bool all = false) {
  std::vector<FileRow> rows;
  const fs::path corpus = kShared / "corpus";
  for (const SchemaRow& schema : schemas) {
    const fs::path files = all ? corpus : corpus / schema.files;
    if (fs::is_regular_file(files)) rows.push_back({schema, schema.files});
    if (!fs::is_directory(files)) continue;
    for (const auto& entry : fs::recursive_directory_iterator(files)) {
      if (!entry.is_regular_file() || entry.path().extension() == ".md") continue;
      rows.push_back({schema, fs::relative(entry.path(), corpus).generic_string()});
    }
  }
  std::sort(rows.begin(), rows.end(), [](const FileRow& a, const FileRow& b) {
    return std::make_pair(a.file, std::string(a.schema.published)) <
           std::make_pair(b.file, std::string(b.schema.published));
  });
  if (rows.empty()) rows.push_back({schemas.front(), ""});
  return rows;
}

std::string NameOfFile(const testing::TestParamInfo<FileRow>& row) {
  if (row.param.file.empty()) return "NoCorpus";
  return NameOf(row.param.file + " by " + row.param.schema.published);
}

class Files : public testing::TestWithParam<FileRow> {
 protected:
  void SetUp() override {
    if (GetParam().file.empty()) GTEST_SKIP() << "there is no corpus at " << kShared;
    if (!HasLibrary(GetParam().schema)) {
      GTEST_SKIP() << "the library of " << GetParam().schema.library << " is not built";
    }
    text_ = ContentOf(kShared / "corpus" / GetParam().file);
    ASSERT_FALSE(text_.empty());
  }
  std::string text_;
};

// With the text that the library is made of: no difference at all.
using FilesByOurText = Files;
TEST_P(FilesByOurText, GiveTheSamePopulationLogAndBytes) {
  ExpFixedSchemaFile generated(GetParam().schema.library);
  LateBoundFile dynamic(Ours(GetParam().schema));
  EXPECT_EQ(Read(generated, text_), Read(dynamic, text_));
  ExpectSame(generated, dynamic);
}
INSTANTIATE_TEST_SUITE_P(All, FilesByOurText, testing::ValuesIn(FilesOf({kSchemas[2]}, true)), NameOfFile);

// Files of the schema, through an ordinary ExpFile.
using FilesOfTheSchema = Files;
TEST_P(FilesOfTheSchema, GiveTheSamePopulationLogAndBytes) {
  ExpFile generated;
  LateBoundFile dynamic(Ours(GetParam().schema));
  EXPECT_EQ(Read(generated, text_), Read(dynamic, text_));
  EXPECT_EQ(generated.GetEnforcedFactoryName(), GetParam().schema.library);
  EXPECT_GT(ExpectSame(generated, dynamic), 0);
}
INSTANTIATE_TEST_SUITE_P(All, FilesOfTheSchema,
                         testing::ValuesIn(FilesOf({kSchemas[0], kSchemas[1], kSchemas[2], kSchemas[3],
                                                    kSchemas[5]})),
                         NameOfFile);

// With a published text, which may know fewer types than the library: the instances of these are missing.
using FilesByPublishedText = Files;
TEST_P(FilesByPublishedText, GiveTheSamePopulationAndBytes) {
  if (!fs::exists(kShared / "schemas/published" / GetParam().schema.published)) {
    GTEST_SKIP() << "there are no published schemas at " << kShared;
  }
  const LateBoundSchema& schema = Published(GetParam().schema);
  ExpFile generated;
  LateBoundFile dynamic(schema);
  Read(generated, text_);
  Read(dynamic, text_);
  EXPECT_GT(ExpectSame(generated, dynamic), 0);
}
INSTANTIATE_TEST_SUITE_P(All, FilesByPublishedText,
                         testing::ValuesIn(FilesOf({std::begin(kSchemas), std::end(kSchemas)})), NameOfFile);

TEST(SampleFile, GivesTheSamePopulationLogAndBytes) {
  const SchemaRow& row = kSchemas[2];
  if (!HasLibrary(row)) GTEST_SKIP() << "the library of " << row.library << " is not built";
  const std::string text = ContentOf(SAMPLE_FILE);
  ExpFile generated;
  LateBoundFile dynamic(Ours(row));
  EXPECT_EQ(Read(generated, text), Read(dynamic, text));
  EXPECT_EQ(ExpectSame(generated, dynamic), 383);
  const std::vector<std::string> types = {"PRODUCT", "CARTESIAN_POINT", "REPRESENTATION_ITEM", "NAMED_UNIT"};
  for (const std::string& type : types) {
    const auto numbers = [&type](ExpFile& file) {
      std::list<ExpEntity*> entities;
      file.GetEntities(entities, type, true);
      std::multiset<int> found;
      for (ExpEntity* entity : entities) found.insert(entity->GetEntityNumber());
      return found;
    };
    EXPECT_FALSE(numbers(generated).empty()) << type;
    EXPECT_EQ(numbers(generated), numbers(dynamic)) << type;
  }
  std::ostringstream dumps[2];
  generated.ExpAbstractObjectAdmin::DumpEntity(14, dumps[0]);
  dynamic.ExpAbstractObjectAdmin::DumpEntity(14, dumps[1]);
  EXPECT_FALSE(dumps[0].str().empty());
  EXPECT_EQ(dumps[0].str(), dumps[1].str());
}

}  // namespace
