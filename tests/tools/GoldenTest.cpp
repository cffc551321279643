// Commands on files of the repository, and all that they print: golden/NAME.txt has what is expected.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "Transcript.h"

namespace {

struct Golden {
  const char* name;
  std::vector<std::string> arguments;
};

void PrintTo(const Golden& golden, std::ostream* os) { *os << golden.name; }

// Puts `name` in the place of the number that stands behind each `mark`.
void NameNumbers(std::string& text, const std::string& mark, const std::string& name) {
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
    at += mark.size();
    text.replace(at, text.find_first_not_of("0123456789.+-e", at) - at, name);
  }
}

// Without what differs from run to run.
std::string Lasting(std::string text) {
  NameNumbers(text, "read in ", "T");
  NameNumbers(text, "T ms, ", "R");
  NameNumbers(text, "R MB/s, ", "M");
  for (const char* key : {"seconds", "megabytes_per_second", "peak_memory"}) {
    NameNumbers(text, std::string("\"") + key + "\": ", "N");
  }
  return text;
}

class GoldenOutput : public testing::TestWithParam<Golden> {};

TEST_P(GoldenOutput, IsAsBefore) {
  ExpectGolden(Lasting(TranscriptOf(GetParam().arguments, SOURCE_FOLDER)),
               std::string(SOURCE_FOLDER "/tests/tools/golden/") + GetParam().name + ".txt");
}

const char kSample[] = "examples/bracket.stp";
const char kGears[] = "tests/tools/data/gears.stp";
const char kText[] = "tests/tools/data/gears.exp";
const char kTrolley[] = "examples/trolley.stp";
const char kChanged[] = "tests/tools/data/trolley_changed.stp";
const char kCycle[] = "tests/tools/data/cycle.stp";
const char kValues[] = "tests/tools/data/values.stp";

INSTANTIATE_TEST_SUITE_P(
    All, GoldenOutput,
    testing::Values(Golden{"info", {"info", kSample}},
                    Golden{"info_of_several", {"info", kValues, "none.stp", kSample, "-q"}},
                    Golden{"info_json", {"info", "--json", kValues}},
                    Golden{"info_json_missing", {"info", "--json", "none.stp"}},
                    Golden{"list", {"list", kSample, "product"}},
                    Golden{"list_subtypes", {"list", kSample, "face_bound", "--attr", "bound"}},
                    Golden{"list_exact", {"list", kSample, "FACE_BOUND", "--exact"}},
                    Golden{"list_complex",
                           {"list", kSample, "named_unit", "--attr", "name", "--attr", "prefix", "--attr",
                            "conversion_factor"}},
                    Golden{"list_csv", {"list", kValues, "cartesian_point", "--csv"}},
                    Golden{"list_json", {"list", kValues, "measure_with_unit", "--json", "-q"}},
                    Golden{"list_none", {"list", kSample, "colour_specification", "--exact"}},
                    Golden{"list_of_unknown_type", {"list", kValues, "vektor"}},
                    Golden{"list_unknown_type", {"list", kSample, "vektor"}},
                    Golden{"list_unknown_attribute", {"list", kSample, "product", "--attr", "x"}},
                    Golden{"show", {"show", kSample, "16", "#5", "10", "35"}},
                    Golden{"show_json", {"show", kValues, "--json", "-q", "1", "5", "6", "9", "10"}},
                    Golden{"show_of_unknown_type", {"show", kValues, "--json", "-q", "20"}},
                    Golden{"show_missing", {"show", kValues, "-q", "1", "20", "77"}},
                    Golden{"show_wrong", {"show", kSample, "x"}},
                    Golden{"info_express", {"info", kGears, "--express", kText, "--json"}},
                    Golden{
                        "list_express",
                        {"list", kGears, "gear", "--express", kText, "--attr", "label", "--attr", "pitch"}},
                    Golden{"convert_json", {"convert", kValues, "-o", "/dev/stdout", "--to", "json", "-q"}},
                    Golden{"list_header", {"list", kSample, "file_name"}},
                    Golden{"show_express", {"show", kGears, "2", "--express", kText}},
                    Golden{"refs_express", {"refs", kGears, "2", "--express", kText}},
                    Golden{"refs", {"refs", kSample, "16"}}, Golden{"refs_none", {"refs", kSample, "383"}},
                    Golden{"refs_depth", {"refs", kSample, "#20", "--depth", "3"}},
                    Golden{"refs_all", {"refs", kSample, "80", "--depth", "0"}},
                    Golden{"refs_json", {"refs", kValues, "1", "--json", "-q"}},
                    Golden{"refs_dot", {"refs", kSample, "20", "--depth", "2", "--dot"}},
                    Golden{"refs_missing", {"refs", kSample, "384"}},
                    Golden{"tree", {"tree", kTrolley}}, Golden{"tree_all", {"tree", kTrolley, "--all"}},
                    Golden{"tree_depth", {"tree", kTrolley, "--depth", "1"}},
                    Golden{"tree_json", {"tree", kTrolley, "--json"}}, Golden{"tree_cycle", {"tree", kCycle}},
                    Golden{"tree_none", {"tree", kValues, "-q"}}, Golden{"tree_missing", {"tree", "none.stp"}},
                    Golden{"diff", {"diff", kTrolley, kChanged}},
                    Golden{"diff_max", {"diff", kTrolley, kChanged, "--ignore-header", "--max", "1"}},
                    Golden{"diff_json", {"diff", kTrolley, kChanged, "--json"}},
                    Golden{"diff_none", {"diff", kTrolley, kTrolley}},
                    Golden{"diff_errors", {"diff", "tests/tools/data/broken.stp", "tests/tools/data/broken.stp"}},
                    Golden{"diff_missing", {"diff", kTrolley, "none.stp"}},
                    Golden{"schemas_type", {"schemas", "Face_Surface", "--schema", "AP214"}},
                    Golden{"schemas_json", {"schemas", "vertex", "--json", "--schema", "AP214"}},
                    Golden{"schemas_express", {"schemas", "--express", kText}},
                    Golden{"schemas_express_type", {"schemas", "--express", kText, "worm"}},
                    Golden{"schemas_unknown", {"schemas", "vektor", "--schema", "AP214"}}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
