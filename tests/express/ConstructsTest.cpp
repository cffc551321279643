// One small schema for each construct in data/. What velmar-express says about NAME.exp stands in
// golden/NAME.txt; without such a file there is nothing to say. The names of schemas that must be rejected
// begin with "bad_".

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "ModelDump.h"
#include "Printer.h"
#include "SchemaText.h"

namespace VELMAR::Express {
namespace {

std::vector<std::string> AllNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA)) {
    if (entry.path().extension() == ".exp") names.push_back(entry.path().stem().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string GoldenPath(const std::string& name) {
  return std::string(VELMAR_TEST_GOLDEN) + '/' + name + ".txt";
}

SchemaText Read(const std::string& name) {
  return SchemaText(ContentOf(std::string(VELMAR_TEST_DATA) + '/' + name + ".exp"), name + ".exp");
}

class EveryConstruct : public testing::TestWithParam<std::string> {};

TEST_P(EveryConstruct, GivesTheMessagesOfItsGoldenFile) {
  const SchemaText text = Read(GetParam());
  std::ostringstream printed;
  text.diagnostics.Print(printed);
  EXPECT_EQ(printed.str(), ContentOf(GoldenPath(GetParam())))
      << "If the difference is right, in tests/express/data:\n  velmar-express check " << GetParam()
      << ".exp 2> ../golden/" << GetParam() << ".txt";
}

TEST_P(EveryConstruct, IsRejectedExactlyWhereItsNameSaysSo) {
  EXPECT_EQ(Read(GetParam()).diagnostics.ErrorCount() > 0, GetParam().compare(0, 4, "bad_") == 0);
}

TEST_P(EveryConstruct, PrintedGivesAnEqualModel) {
  const SchemaText text = Read(GetParam());
  if (text.diagnostics.ErrorCount() > 0) return;
  std::ostringstream printed;
  Print(text.model, printed);
  const SchemaText again(printed.str());
  EXPECT_EQ(ModelDump(again.model).Text(), ModelDump(text.model).Text());
}

INSTANTIATE_TEST_SUITE_P(Constructs, EveryConstruct, testing::ValuesIn(AllNames()),
                         [](const auto& info) { return info.param; });

TEST(Constructs, EveryCodeOfTheCatalogueIsProvoked) {
  std::set<Code> seen;
  for (const std::string& name : AllNames()) {
    const SchemaText text = Read(name);
    for (const Diagnostic& diagnostic : text.diagnostics.All()) seen.insert(diagnostic.code);
  }
  for (std::size_t i = 0; i < static_cast<std::size_t>(Code::kCount); ++i) {
    EXPECT_EQ(seen.count(static_cast<Code>(i)), 1u) << CatalogueRowOf(static_cast<Code>(i)).number;
  }
}

TEST(Constructs, LineEndsOfBothKindsGiveTheSameMessages) {
  for (const std::string& name : AllNames()) {
    const SchemaText unixText = Read(name);
    std::string text = ContentOf(std::string(VELMAR_TEST_DATA) + '/' + name + ".exp");
    for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += 2)
      text.insert(at, 1, '\r');
    const SchemaText dosText(text, name + ".exp");
    std::ostringstream expected, found;
    unixText.diagnostics.Print(expected);
    dosText.diagnostics.Print(found);
    EXPECT_EQ(found.str(), expected.str()) << name;
  }
}

}  // namespace
}  // namespace VELMAR::Express
