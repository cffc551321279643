// What velmar check says of the files of real exporters. Each finding was compared with the file and with the schema: the files are
// at fault. Where there are the published schemas, it finds the same by them.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "../tools/RunProgram.h"
#include "CorpusFiles.h"

namespace {

using Json = nlohmann::json;

// How often there is which finding, by its code, and the attribute or the type.
using Expected = std::map<std::pair<std::string, std::string>, int>;

const std::map<std::string, Expected>& Known() {
  // Entities of later editions under the name of the first.
  static const Expected appliedAssignments = {{{"V008", "APPLIED_APPROVAL_ASSIGNMENT"}, 1},
                                              {{"V008", "APPLIED_DATE_AND_TIME_ASSIGNMENT"}, 1},
                                              {{"V008", "APPLIED_PERSON_AND_ORGANIZATION_ASSIGNMENT"}, 1},
                                              {{"V008", "APPLIED_SECURITY_CLASSIFICATION_ASSIGNMENT"}, 1}};
  // The dimensions are derived, and stand there. Of what approvals apply to, the schema knows neither products' definitions nor their
  // formations.
  static const Expected dimensionsAndApprovals = {{{"V031", "NAMED_UNIT.dimensions"}, 1}, {{"V036", "CC_DESIGN_APPROVAL.items"}, 2}};
  static const std::map<std::string, Expected> known = {
      {"ap203/NIST_MBE_PMI_1.stp", appliedAssignments},
      {"ap203/plate_mode_samples_rhino.stp", appliedAssignments},
      // `()`, which is no list of at least one, for `$`.
      {"ap203/test_4_203.stp",
       {{{"V037", "PERSON.middle_names"}, 22}, {{"V037", "PERSON.prefix_titles"}, 22}, {{"V037", "PERSON.suffix_titles"}, 22}}},
      {"ap203e2/nist_ctc_01_asme1_ap203.stp", dimensionsAndApprovals},
      {"ap203e2/nist_ctc_01_asme1_rd.stp", dimensionsAndApprovals},
      {"ap214/00000050_80d90bfdd2e74e709956122a_step_000.stp", {{{"V031", "NAMED_UNIT.dimensions"}, 4}}},
      // The first conformance class had types of its own.
      {"ap214/601-1794-001.stp",
       {{{"V008", "DESIGN_CONTEXT"}, 1},
        {{"V008", "MECHANICAL_CONTEXT"}, 1},
        {{"V008", "PRODUCT_TYPE"}, 1},
        {{"V031", "NAMED_UNIT.dimensions"}, 16},
        {{"V037", "MECHANICAL_DESIGN_GEOMETRIC_PRESENTATION_REPRESENTATION.items"}, 1}}},
      {"ap214/dm1-id-214.stp", {{{"V031", "NAMED_UNIT.dimensions"}, 22}}},
      // A style for a whole representation.
      {"ap214/motor_antigravity_4004_custom_shaft.stp", {{{"V036", "STYLED_ITEM.item"}, 1}}},
      {"ap214/s1-c5-214.stp",
       {{{"V031", "NAMED_UNIT.dimensions"}, 5}, {{"V037", "PRODUCT_RELATED_PRODUCT_CATEGORY.products"}, 1}}},
      // `3.` for 3; planes among the surfaces of models.
      {"ap242/nist_ctc_01_asme1_ap242-e1.stp", {{{"V028", "INTEGER_REPRESENTATION_ITEM.the_value"}, 21}}},
      {"ap242/nist_ftc_08_asme1_ap242-e1.stp",
       {{{"V028", "INTEGER_REPRESENTATION_ITEM.the_value"}, 127},
        {{"V036", "MANIFOLD_SURFACE_SHAPE_REPRESENTATION.items"}, 15}}},
  };
  return known;
}

class Check : public CorpusFile {
 protected:
  Expected Findings(std::vector<std::string> options) const {
    std::vector<std::string> line = {VELMAR_PROGRAM, "check", "-q", "--json", "--max", "1000000", (Corpus() / GetParam()).string()};
    line.insert(line.end(), options.begin(), options.end());
    const Outcome outcome = RunProgram(line);
    Expected found;
    const Json report = Json::parse(outcome.out);
    for (const Json& finding : report.at(0).at("findings")) {
      const Json& attribute = finding.at("attribute");
      ++found[{finding.at("code"), attribute.is_null() ? "" : attribute.get<std::string>()}];
    }
    EXPECT_EQ(outcome.status, found.empty() ? 0 : 1);
    return found;
  }
  static Expected KnownOf(const std::string& file) {
    const auto known = Known().find(file);
    return known == Known().end() ? Expected() : known->second;
  }
};

TEST_P(Check, FindsWhatIsWrongWithIt) { EXPECT_EQ(Findings({}), KnownOf(GetParam())); }

TEST_P(Check, FindsTheSameByThePublishedSchema) {
  static const std::map<std::string, const char*> schemas = {
      {"ap203", "ap203.exp"}, {"ap203e2", "ap203e2.exp"}, {"ap214", "ap214e3.exp"}, {"ap242", "ap242e4.exp"}};
  const std::filesystem::path schema =
      std::filesystem::path(VELMAR_PUBLISHED_SCHEMAS) / schemas.at(std::filesystem::path(GetParam()).parent_path().string());
  if (!std::filesystem::exists(schema)) GTEST_SKIP() << "there is no " << schema;
  EXPECT_EQ(Findings({"--express", schema.string()}), KnownOf(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Corpus, Check, testing::ValuesIn(FilesOf({"ap203", "ap203e2", "ap214", "ap242"})), NameOf);

}  // namespace
