// Every command of velmar that looks at a file, over the whole corpus.
#include <gtest/gtest.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "../tools/RunProgram.h"
#include "CorpusFiles.h"

namespace {

using Json = nlohmann::json;

class Commands : public CorpusFile {
 protected:
  // The outcome; it ended by itself, with a status that is documented.
  Outcome Run(const std::string& command, const std::vector<std::string>& arguments) {
    std::vector<std::string> line = {VELMAR_PROGRAM, command, "-q", (Corpus() / GetParam()).string()};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const Outcome outcome = RunProgram(line);
    EXPECT_LE(outcome.status, 2) << command;
    EXPECT_GE(outcome.status, 0) << command;
    return outcome;
  }
  Json RunForJson(const std::string& command, std::vector<std::string> arguments) {
    arguments.emplace_back("--json");
    const Outcome outcome = Run(command, arguments);
    const Json json = Json::parse(outcome.out, nullptr, false);
    EXPECT_FALSE(json.is_discarded()) << command << ": " << outcome.out.substr(0, 1000);
    return json;
  }
};

TEST_P(Commands, TellOfItWhatTheyShould) {
  EXPECT_NE(Run("info", {}).out, "");
  const Json info = RunForJson("info", {}).at(0);
  std::size_t count = 0;
  for (const Json& type : info.at("types")) count += type.at("count").get<std::size_t>();
  EXPECT_EQ(count, info.at("instances").get<std::size_t>());
  const int number = info.at("largest_number").get<int>();
  if (number == 0) return;  // nothing could be kept

  const Json shown = RunForJson("show", {std::to_string(number)}).at(0);
  EXPECT_EQ(shown.at("id"), number);
  EXPECT_GT(shown.at("line"), 0);
  Run("show", {std::to_string(number), "1"});

  for (const Json& type : info.at("types")) {
    const std::string name = type.at("type").get<std::string>();
    if (name[0] == '(') continue;
    const Json rows = RunForJson("list", {name, "--exact"});
    EXPECT_GE(rows.size(), type.at("count").get<std::size_t>())
        << name;  // more where it is part of complex ones, too
    Run("list", {name});
    Run("list", {name, "--csv"});
    const std::string first = std::to_string(rows.at(0).at("id").get<int>());
    EXPECT_EQ(RunForJson("refs", {first, "--depth", "0"}).at("id"), rows.at(0).at("id"));
    Run("refs", {first, "--depth", "3"});
    Run("refs", {first, "--dot"});
    break;  // the most frequent one is enough
  }
}

// Each usage leads from a product to another one, and every product is reached from the roots.
TEST_P(Commands, TellOfAllProducts) {
  const Json tree = RunForJson("tree", {});
  std::set<std::int64_t> reached;
  for (const Json& product : tree.at("products")) {
    if (!product.at("is_defined").get<bool>()) reached.insert(product.at("id").get<std::int64_t>());
  }
  std::vector<std::int64_t> next = tree.at("roots").get<std::vector<std::int64_t>>();
  while (!next.empty()) {
    const std::int64_t id = next.back();
    next.pop_back();
    if (!reached.insert(id).second) continue;
    for (const Json& usage : tree.at("usages")) {
      if (usage.at("assembly") == id && usage.at("is_structure").get<bool>()) {
        next.push_back(usage.at("component").get<std::int64_t>());
      }
    }
  }
  EXPECT_EQ(reached.size(), tree.at("products").size());
  // Without errors in the file, as many products as the text has records of them.
  std::size_t records = 0;
  for (std::size_t at = bytes_.find("=PRODUCT("); at != std::string::npos; at = bytes_.find("=PRODUCT(", at + 1)) ++records;
  if (tree.at("findings").empty()) {
    EXPECT_GE(tree.at("products").size(), records);
  }
  EXPECT_NE(Run("tree", {"--all"}).out, "");
}

TEST_P(Commands, CheckItInEveryForm) {
  const Json findings = RunForJson("check", {}).at(0).at("findings");
  EXPECT_EQ(Run("check", {}).out.empty(), findings.empty());
  const Json sarif = Json::parse(Run("check", {"--sarif"}).out, nullptr, false);
  ASSERT_FALSE(sarif.is_discarded());
  EXPECT_EQ(sarif.at("runs").at(0).at("results").size(), findings.size());
}

TEST_P(Commands, MakeAPageOfIt) {
  const TemporaryDirectory directory;
  const std::string page = directory.Path("page.html");
  Run("report", {"-o", page});
  const std::string text = ReadFile(page);
  EXPECT_EQ(text.rfind("<!DOCTYPE html>", 0), 0u);
  EXPECT_NE(text.find("</html>"), std::string::npos);
  EXPECT_NE(text.find(std::filesystem::path(GetParam()).filename().string()), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(
    All, Commands,
    testing::ValuesIn(FilesOf({"ap203", "ap203e2", "ap214", "ap242", "bad", "ifc", "other", "syntax"})), NameOf);

}  // namespace
