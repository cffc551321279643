// Files of the corpus against copies of them.
#include "Comparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "CorpusFiles.h"
#include "Renumbered.h"
#include "RunProgram.h"
#include "WrittenInstances.h"

namespace velmar {
namespace {

class Copies : public CorpusFile {
 protected:
  Comparison Compare(const std::string& first, const std::string& second) {
    Findings findings(first), others(second);
    return CompareFiles(first, second, {}, findings, others);
  }

  TemporaryDirectory directory_;
};

TEST_P(Copies, WithOtherNumbersInAnotherOrderAreTheSame) {
  const std::string path = (Corpus() / GetParam()).string();
  const Comparison comparison = Compare(path, WriteFile(directory_.Path("copy"), Renumbered(path, 7)));
  EXPECT_TRUE(comparison.header.empty());
  for (const Difference& difference : comparison.instances) {
    ADD_FAILURE() << difference.type << " #" << difference.before.number << " #" << difference.after.number;
  }
}

// A real number that stands in an instance, and where.
struct Number {
  int position;
  std::size_t length;
  std::string type;
};

std::vector<Number> NumbersIn(const std::string& path, const std::string& text) {
  std::vector<Number> numbers;
  ForEachWrittenInstance(path, ValuesRead::All, [&](const WrittenInstance& instance) {
    if (instance.IsInHeader() || instance.isComplex) return;
    for (const WrittenValue& value : instance.records.front().values) {
      if (value.kind != WrittenValue::Kind::Real) continue;
      for (const char* before : {"(", ",", ", "}) {
        const std::size_t at = text.find(before + value.text, static_cast<std::size_t>(instance.begin));
        if (at >= static_cast<std::size_t>(instance.end)) continue;
        const std::size_t begin = at + std::string(before).size();
        const std::size_t end = begin + value.text.size();
        if (text[end] != ',' && text[end] != ')') continue;
        numbers.push_back({static_cast<int>(begin), value.text.size(), instance.records.front().type});
        return;
      }
    }
  });
  return numbers;
}

TEST_P(Copies, WithOneOtherValueDifferInThatAlone) {
  const std::string path = (Corpus() / GetParam()).string();
  const std::vector<Number> numbers = NumbersIn(path, bytes_);
  if (numbers.empty()) return;
  std::mt19937 random(3);
  for (int i = 0; i < 4; ++i) {
    const Number& number = numbers[random() % numbers.size()];
    std::string changed = bytes_;
    changed.replace(static_cast<std::size_t>(number.position), number.length, "-987.25");
    const std::string copy = WriteFile(directory_.Path("changed"), changed);
    const Comparison comparison = Compare(path, WriteFile(directory_.Path("copy"), Renumbered(copy, 8)));
    ASSERT_EQ(comparison.instances.size(), 1u) << number.position;
    const Difference& difference = comparison.instances[0];
    EXPECT_EQ(difference.kind, Difference::Kind::Changed);
    EXPECT_EQ(difference.type, number.type);
    ASSERT_EQ(difference.values.size(), 1u);
    EXPECT_NE(difference.values[0].after.find("-987.25"), std::string::npos);
    EXPECT_NE(difference.values[0].before.find(bytes_.substr(static_cast<std::size_t>(number.position), number.length)),
              std::string::npos);
  }
}

INSTANTIATE_TEST_SUITE_P(
    All, Copies, testing::ValuesIn(FilesOf({"ap203", "ap203e2", "ap214", "ap242", "ifc", "other", "syntax", "bad"})), ::NameOf);

}  // namespace
}  // namespace velmar
