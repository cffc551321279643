/// @file CorpusFiles.h
/// The files of the corpus, as parameters of tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

inline std::filesystem::path Corpus() { return VELMAR_TEST_CORPUS; }

/// The names of the files below these folders of the corpus; one empty name where there is no corpus, so that
/// a test is there that says so.
inline std::vector<std::string> FilesOf(std::initializer_list<const char*> folders) {
  std::vector<std::string> names;
  for (const char* folder : folders) {
    if (!std::filesystem::is_directory(Corpus() / folder)) continue;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Corpus() / folder)) {
      if (!entry.is_regular_file() || entry.path().extension() == ".md") continue;
      names.push_back(std::filesystem::relative(entry.path(), Corpus()).generic_string());
    }
  }
  std::sort(names.begin(), names.end());
  if (names.empty()) names.emplace_back();
  return names;
}

inline std::string NameOf(const testing::TestParamInfo<std::string>& info) {
  if (info.param.empty()) return "NoCorpus";
  std::string name = info.param;
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

/// A test of one file, whose bytes it reads. Skipped where there is no corpus.
class CorpusFile : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (GetParam().empty()) GTEST_SKIP() << "there is no corpus at " << Corpus();
    std::ifstream in(Corpus() / GetParam(), std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    ASSERT_FALSE(bytes_.empty());
  }
  std::string bytes_;
};
