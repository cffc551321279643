// The files of the corpus without their names and texts.
#include "Anonymisation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "Checking.h"
#include "CorpusFiles.h"
#include "RunProgram.h"
#include "Wording.h"
#include "WrittenInstances.h"

namespace velmar {
namespace {

class AnonymisedFile : public CorpusFile {
 protected:
  void SetUp() override {
    CorpusFile::SetUp();
    if (GetParam().empty()) return;
    path_ = (Corpus() / GetParam()).string();
    result_ = Anonymise(path_);
    for (const std::string& piece : result_.text) out_ += piece;
    copy_ = WriteFile(directory_.Path("copy"), out_);
  }

  TemporaryDirectory directory_;
  std::string path_, copy_, out_;
  Anonymised result_;
};

// The strings that it has are known to be harmless, and the others are looked for between them.
TEST_P(AnonymisedFile, HasNoStringOfTheFile) {
  std::set<std::string> kept = {"1970-01-01T00:00:00"}, strings;
  ForEachWrittenInstance(path_, ValuesRead::All, [&](const WrittenInstance& instance) {
    for (const WrittenRecord& record : instance.records) {
      for (std::size_t i = 0; i < record.values.size(); ++i) {
        const WrittenValue& value = record.values[i];
        if (value.kind != WrittenValue::Kind::String) continue;
        const bool isLevel = record.type == "FILE_DESCRIPTION" && i + 1 == record.values.size();
        (instance.IsInHeader() && (record.type == "FILE_SCHEMA" || isLevel) ? kept : strings).insert(value.text);
      }
    }
  });
  ForEachWrittenInstance(copy_, ValuesRead::All, [&](const WrittenInstance& instance) {
    for (const WrittenRecord& record : instance.records) {
      for (const WrittenValue& value : record.values) {
        if (value.kind != WrittenValue::Kind::String) continue;
        const bool isNumbered = value.text.compare(0, 5, "text_") == 0 &&
                                value.text.find_first_not_of("0123456789\r\n", 5) == std::string::npos;
        EXPECT_TRUE(isNumbered || IsBlank(value.text) || IsPublicText(value.text) || kept.count(value.text) != 0) << value.text;
      }
    }
  });
  std::string between;
  for (std::size_t i = 0; i < out_.size(); ++i) {
    if (out_[i] == '\'') i = std::min(out_.find('\'', i + 1), out_.size() - 1);
    between += out_[i];
  }
  const auto isOfNames = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.' || c == '-'; };
  for (const std::string& string : strings) {
    if (string.size() < 4 || IsBlank(string) || std::all_of(string.begin(), string.end(), isOfNames)) continue;
    if (string != "text") {
      EXPECT_EQ(between.find(string), std::string::npos) << string;
    }
  }
}

TEST_P(AnonymisedFile, HasTheFindingsOfTheFile) {
  if (result_.hadTextBefore || result_.hadTextBehind) return;
  using Place = std::pair<std::string, std::pair<int, int>>;  // code, line, instance
  const auto findingsOf = [](const std::string& path) {
    std::multiset<Place> places;
    const Findings findings = CheckFile(path);
    for (const Finding& finding : findings.WithPlace()) {
      const std::set<Code> ofStrings = {Code::kBadEscape, Code::kNotUtf8, Code::kTooLong, Code::kLongString};
      if (ofStrings.count(finding.code) == 0) places.insert({NameOf(finding.code), {finding.place.line, finding.instance}});
    }
    return places;
  };
  EXPECT_EQ(findingsOf(path_), findingsOf(copy_));
}

TEST_P(AnonymisedFile, IsNotChangedAnyMoreThanThat) {
  const Anonymised again = Anonymise(copy_);
  EXPECT_EQ(again.strings, result_.strings);
  EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), std::count(bytes_.begin(), bytes_.end(), '\n'));
  std::multimap<std::int64_t, std::string> before, after;
  for (auto& [path, types] : {std::make_pair(path_, &before), std::make_pair(copy_, &after)}) {
    ForEachWrittenInstance(path, ValuesRead::All, [&types = *types](const WrittenInstance& instance) {
      for (const WrittenRecord& record : instance.records) {
        std::string values = record.type[0] == '!' ? "!" : record.type;
        for (const WrittenValue& value : record.values) {
          const bool isText = value.kind == WrittenValue::Kind::String || value.kind == WrittenValue::Kind::Binary;
          values += isText || value.text[0] == '!' ? " text" : " " + value.text;
        }
        types.emplace(instance.number, values);
      }
    });
  }
  EXPECT_TRUE(before == after);
}

INSTANTIATE_TEST_SUITE_P(
    All, AnonymisedFile, testing::ValuesIn(FilesOf({"ap203", "ap203e2", "ap214", "ap242", "ifc", "other", "syntax", "bad"})),
    ::NameOf);

}  // namespace
}  // namespace velmar
