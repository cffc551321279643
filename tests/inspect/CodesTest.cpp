#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <string>

#include "Checking.h"
#include "Codes.h"
#include "ProductStructure.h"
#include "Reading.h"
#include "RunProgram.h"
#include "SampleFiles.h"

namespace velmar {
namespace {

// The codes of what is found in a file with this text.
std::set<std::string> CodesOf(const std::string& text) {
  TemporaryDirectory directory;
  const std::string path = WriteFile(directory.Path("in.stp"), text);
  Reading reading(path);
  std::set<std::string> codes;
  Findings ofProducts(path);
  ReadProductStructure(path, {}, ofProducts);
  for (const Findings& findings : {reading.GetFindings(), CheckFile(path), ofProducts}) {
    for (const Finding& finding : findings.WithPlace()) codes.insert(NameOf(finding.code));
    for (const Finding& finding : findings.WithoutPlace()) codes.insert(NameOf(finding.code));
  }
  return codes;
}

class CatalogueRow : public testing::TestWithParam<CodeInfo> {};

TEST_P(CatalogueRow, IsFoundByItsCode) {
  EXPECT_EQ(InfoOf(GetParam().code).code, GetParam().code);
  EXPECT_EQ(InfoOf(GetParam().code).title, GetParam().title);
}

TEST_P(CatalogueRow, ItsExampleHasTheFindingAndTheNearMissHasNone) {
  const CodeInfo& row = GetParam();
  if (row.example == nullptr) {
    // What no file has by itself: it depends on the system, on what is done with the file, or needs a long
    // text.
    const std::set<Code> without = {Code::kLongToken,  Code::kFileChanged, Code::kFallbackLibrary,
                                    Code::kLongString, Code::kNotWritten,  Code::kTooLong,
                                    Code::kTooDeep};
    EXPECT_EQ(without.count(row.code), 1u);
    return;
  }
  EXPECT_EQ(CodesOf(ExampleFile(row.example)).count(NameOf(row.code)), 1u);
  EXPECT_EQ(CodesOf(ExampleFile(row.nearMiss)).count(NameOf(row.code)), 0u);
}

INSTANTIATE_TEST_SUITE_P(All, CatalogueRow, testing::ValuesIn(Catalogue()),
                         [](const auto& info) { return NameOf(info.param.code); });

TEST(Finding, KnowsItsInstanceAndAttribute) {
  TemporaryDirectory directory;
  Reading reading(
      WriteFile(directory.Path("in.stp"),
                FileWith("#7=CARTESIAN_POINT('',(1.E309));\n"
                         "#8=(CONVERSION_BASED_UNIT('x',#0)NAMED_UNIT(*)PLANE_ANGLE_UNIT());\n")));
  const std::vector<Finding>& findings = reading.GetFindings().WithPlace();
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_EQ(findings[0].instance, 7);
  EXPECT_EQ(findings[0].attribute, "CARTESIAN_POINT.coordinates");
  EXPECT_EQ(findings[1].instance, 8);
  EXPECT_EQ(findings[1].attribute, "CONVERSION_BASED_UNIT.conversion_factor");
}

TEST(Unresolved, ReferencesAreGivenOncePerMissingInstanceWithTheirFirstPlace) {
  TemporaryDirectory directory;
  Reading reading(WriteFile(directory.Path("in.stp"),
                            FileWith("#1=VECTOR('',#9,1.);\n#2=VECTOR('',#4,1.);\n"
                                     "#3=VECTOR('',#9,1.);\n#4=VEKTOR();\n#5=VECTOR('',#1,1.);\n")));
  const std::vector<UnresolvedReference>& found = reading.GetPopulation().Unresolved();
  ASSERT_EQ(found.size(), 1u);  // #4 is there, though its type is unknown
  EXPECT_EQ(found[0].to, 9);
  EXPECT_EQ(found[0].from, 1);
  EXPECT_EQ(found[0].count, 2u);
  EXPECT_EQ(found[0].place.line, 8);
  EXPECT_EQ(found[0].place.column, 14);
}

TEST(Catalogue, IsInTheOrderOfTheCodes) {
  const auto isNotBefore = [](const CodeInfo& a, const CodeInfo& b) { return a.code >= b.code; };
  EXPECT_EQ(std::adjacent_find(Catalogue().begin(), Catalogue().end(), isNotBefore), Catalogue().end());
}

TEST(Catalogue, IsWhatTheDocumentationSays) {
  const std::string text = CatalogueAsMarkdown();
  if (ReadFile(FINDINGS_TEXT) == text) return;
  const std::string made = testing::TempDir() + "findings.md";
  std::ofstream(made) << text;
  ADD_FAILURE() << "docs/findings.md is not what the catalogue says. cp " << made << " " << FINDINGS_TEXT;
}

}  // namespace
}  // namespace velmar
