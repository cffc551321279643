// Whole published schemas, where they lie beside the repository.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "ModelDump.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

const std::filesystem::path kSchemas = std::filesystem::path(VELMAR_TEST_SHARED) / "schemas";

std::vector<std::filesystem::path> AllIn(const char* folder) {
  std::vector<std::filesystem::path> files;
  if (!std::filesystem::exists(kSchemas / folder)) return files;
  for (const auto& entry : std::filesystem::directory_iterator(kSchemas / folder))
    files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

// Places where a published schema says what cannot be meant, by file.
const std::map<std::string, std::vector<std::string>> kDoubtful = {
    {"ap203", {"4170:29 W010", "4655:55 W011"}},
    {"ap203e2", {"5382:23 W020", "13489:25 W020"}},
    {"ap214e3", {"4259:22 W020", "10878:22 W020", "7455:21 W008", "12373:17 W010", "12489:15 W010"}},
    {"ap242e1", {"8168:30 W020", "20614:30 W020"}},
    {"ap242e2", {"12972:21 W020", "31531:21 W020", "13033:42 W015"}},
    {"ap242e3", {"13359:21 W020", "32021:21 W020"}},
    {"ap242e4", {"14819:21 W020", "34627:21 W020", "38965:44 W010"}},
    {"plib25", {"1143:48 W008", "3427:60 W008", "4767:7 W018"}},
};

std::string Place(const Diagnostic& diagnostic) {
  const Position position = diagnostic.where.file->PositionOf(diagnostic.where.offset);
  return std::to_string(position.line) + ':' + std::to_string(position.column) + ' ' +
         CatalogueRowOf(diagnostic.code).number;
}

TEST(PublishedSchemas, AreAcceptedAndWarnedOfWhatIsCommonAndOfWhatIsDoubtful) {
  const auto files = AllIn("published");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "published");
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << file;
    std::vector<std::string> doubtful;
    for (const Diagnostic& diagnostic : text.diagnostics.All()) {
      const Code common[] = {Code::UnusedLocal, Code::HiddenName, Code::InstanceComparison, Code::NoReturn,
                             Code::UnknownTypeName};
      const bool isCommon =
          std::find(std::begin(common), std::end(common), diagnostic.code) != std::end(common);
      if (!isCommon) doubtful.push_back(Place(diagnostic));
    }
    const auto expected = kDoubtful.find(file.stem().string());
    EXPECT_EQ(doubtful, expected == kDoubtful.end() ? std::vector<std::string>() : expected->second) << file;
  }
}

TEST(PublishedSchemas, PrintedTextGivesAnEqualModelAndPrintsAsItself) {
  auto files = AllIn("published");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "published");
  for (const auto& file : AllIn("constructs")) files.push_back(file);
  std::size_t printed = 0;
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    if (text.diagnostics.ErrorCount() > 0) continue;
    ++printed;
    std::ostringstream once;
    Print(text.model, once);
    const SchemaText again(once.str(), file.filename().string());
    ASSERT_EQ(again.diagnostics.ErrorCount(), 0u) << file;
    EXPECT_TRUE(ModelDump(again.model).Text() == ModelDump(text.model).Text()) << file;
    std::ostringstream twice;
    Print(again.model, twice);
    EXPECT_TRUE(twice.str() == once.str()) << file;
  }
  EXPECT_GE(printed, 8u);
}

// The places of the first messages; the schemas that are not listed are accepted.
const std::map<std::string, std::string> kRejected = {
    {"array_without_bounds", "3:7 E037"},
    {"bad_aggregate_bounds", "3:15 E010"},
    {"cyclic_inheritance", "4:8 E032"},
    {"cyclic_select", "4:18 E034"},
    {"cyclic_type", "4:6 E033"},
    {"derive_without_expression", "5:14 E016"},
    {"duplicate_attribute", "4:3 E027"},
    {"duplicate_attribute_inherited", "6:3 E027"},
    {"duplicate_entity", "4:8 E026"},
    {"empty_file", "1:1 E015"},
    {"enum_duplicate_item", "2:38 E028"},
    {"inverse_no_such_attribute", "4:20 E025"},
    {"missing_end_entity", "4:1 E012"},
    {"missing_semicolon", "2:9 E010"},
    {"no_end_schema", "3:12 E012"},
    {"non_ascii_identifier", "2:10 E001"},
    {"only_remark", "2:1 E015"},
    {"redeclare_not_specialised", "6:14 E036"},
    {"reserved_word_as_name", "2:8 E011"},
    {"supertype_expr_unknown", "2:34 E022"},
    {"undefined_supertype", "2:22 E022"},
    {"undefined_type_ref", "3:7 E021"},
    {"unterminated_remark", "2:1 E003"},
    {"unterminated_string", "3:16 E002"},
    {"use_from_unknown_schema", "2:10 E023"},
};

TEST(ConstructSchemas, AreRejectedAtTheRightPlaceOrAccepted) {
  const auto files = AllIn("constructs");
  if (files.empty()) GTEST_SKIP() << "no folder " << (kSchemas / "constructs");
  std::size_t rejected = 0;
  for (const auto& file : files) {
    const SchemaText text(ContentOf(file.string()), file.filename().string());
    const auto expected = kRejected.find(file.stem().string());
    if (expected == kRejected.end()) {
      EXPECT_EQ(text.diagnostics.ErrorCount(), 0u) << file;
      continue;
    }
    ++rejected;
    ASSERT_EQ(text.diagnostics.ErrorCount(), 1u) << file;
    const Diagnostic& first = text.diagnostics.All()[0];
    EXPECT_EQ(Place(first), expected->second) << file;
  }
  EXPECT_EQ(rejected, kRejected.size());
}

}  // namespace
}  // namespace VELMAR::Express
