// Real exchange files: all that they hold is read and written again, and neither a cut nor a changed byte
// does harm.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "../c/CapturedLog.h"
#include "AutomotiveDesign.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"

namespace {

using namespace VELMAR;
using VELMAR::TestData::CapturedLog;

const bool kLoaded = (VELMAR::AutomotiveDesign::Load(), true);

// How many bytes the tests of cut and of changed files read, for each file; small files are cut at every
// byte.
constexpr std::size_t kBytesPerFile = 1500000;
constexpr std::size_t kSmallFile = 2048;
constexpr std::size_t kLongestToken = 32767;
constexpr int kHighestNumberToCountTo = 5000000;

const std::set<std::string> kTypesOfOlderEditions = {"MECHANICAL_CONTEXT", "DESIGN_CONTEXT", "PRODUCT_TYPE"};

std::filesystem::path Corpus() { return VELMAR_TEST_CORPUS; }

// The names of the files below a folder of the corpus; one empty name where there is no corpus, so that a
// test is there that says so.
std::vector<std::string> FilesOf(const std::string& folder) {
  std::vector<std::string> names;
  if (std::filesystem::is_directory(Corpus() / folder)) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Corpus() / folder)) {
      if (!entry.is_regular_file() || entry.path().extension() == ".md") continue;
      names.push_back(std::filesystem::relative(entry.path(), Corpus()).generic_string());
    }
  }
  std::sort(names.begin(), names.end());
  if (names.empty()) names.emplace_back();
  return names;
}

std::string NameOf(const testing::TestParamInfo<std::string>& info) {
  if (info.param.empty()) return "NoCorpus";
  std::string name = info.param;
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name;
}

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
using Ap214File = CorpusFile;

// ----------------------------------------------------------------- an account of a file's own text

// What one instance of a file's text holds, whatever the order: compared with what became of it.
struct Account {
  bool complex = false;
  std::vector<std::string> types;  // without those of typed parameters
  std::vector<std::string> references;
  std::vector<double> numbers;
  std::size_t strings = 0;
};

// Reads the instances of a text's data sections; knows no more of the syntax than it must.
std::map<std::string, Account> AccountsOf(const std::string& text) {
  std::map<std::string, Account> accounts;
  Account* current = nullptr;
  int depth = 0;
  std::size_t i = 0;
  const auto digits = [&text, &i] {
    std::string number;
    while (i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0) number += text[i++];
    return number;
  };
  const auto blanks = [&text](std::size_t from) {
    while (from < text.size() && std::isspace(static_cast<unsigned char>(text[from])) != 0) ++from;
    return from;
  };
  while (i < text.size()) {
    const char c = text[i];
    if (text.compare(i, 2, "/*") == 0) {
      const std::size_t end = text.find("*/", i + 2);
      i = end == std::string::npos ? text.size() : end + 2;
    } else if (c == '\'') {
      do {
        const std::size_t end = text.find('\'', i + 1);
        i = end == std::string::npos ? text.size() : end + 1;
      } while (i < text.size() && text[i] == '\'');
      if (current != nullptr) ++current->strings;
    } else if (c == '#') {
      ++i;
      const std::string number = std::to_string(std::strtol(digits().c_str(), nullptr, 10));
      const std::size_t behind = blanks(i);
      if (current == nullptr && behind < text.size() && text[behind] == '=') {
        current = &accounts[number];
        i = behind + 1;
        current->complex = blanks(i) < text.size() && text[blanks(i)] == '(';
      } else if (current != nullptr) {
        current->references.push_back(number);
      }
    } else if (current != nullptr &&
               (std::isdigit(static_cast<unsigned char>(c)) != 0 || c == '-' || c == '+')) {
      char* end = nullptr;
      const double value = std::strtod(text.c_str() + i, &end);
      if (end == text.c_str() + i) {
        ++i;
      } else {
        current->numbers.push_back(value);
        i = static_cast<std::size_t>(end - text.c_str());
      }
    } else if (current != nullptr && (std::isupper(static_cast<unsigned char>(c)) != 0 || c == '_')) {
      std::string name;
      while (i < text.size() && (std::isalnum(static_cast<unsigned char>(text[i])) != 0 || text[i] == '_'))
        name += text[i++];
      if (depth == (current->complex ? 1 : 0)) current->types.push_back(name);
    } else if (current != nullptr && c == '.' && i + 1 < text.size()) {
      // An enumeration: passed over up to its second point.
      const std::size_t end = text.find('.', i + 1);
      i = end == std::string::npos ? text.size() : end + 1;
    } else {
      if (c == '(') ++depth;
      if (c == ')') --depth;
      if (c == ';' && depth == 0) current = nullptr;
      ++i;
    }
  }
  for (auto& [number, account] : accounts) {
    std::sort(account.types.begin(), account.types.end());
    std::sort(account.references.begin(), account.references.end());
    std::sort(account.numbers.begin(), account.numbers.end());
  }
  return accounts;
}

// ----------------------------------------------------------------------------- reading and writing

void Read(ExpFile& file, const std::string& bytes) {
  std::istringstream in(bytes);
  file.Read(in);
}

std::string TextOf(ExpEntity& entity) {
  try {
    return entity.ToString();
  } catch (const std::string& text) {
    return "cannot be printed: " + text;
  }
}

// The names of the entity types, as the registry lists them.
const std::vector<std::string>& AutomotiveDesignTypes() {
  static const std::vector<std::string> names = [] {
    std::ostringstream out;
    ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(out);
    std::vector<std::string> words;
    std::istringstream in(out.str());
    for (std::string word; in >> word;) {
      word.erase(
          std::remove_if(word.begin(), word.end(),
                         [](char c) { return !std::isalnum(static_cast<unsigned char>(c)) && c != '_'; }),
          word.end());
      if (ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(word, "AUTOMOTIVE_DESIGN") != nullptr)
        words.push_back(word);
    }
    std::sort(words.begin(), words.end());
    words.erase(std::unique(words.begin(), words.end()), words.end());
    return words;
  }();
  return names;
}

std::map<int, std::string> PopulationOf(ExpFile& file) {
  std::map<int, std::string> population;
  const auto add = [&population](ExpEntity* entity) {
    if (entity != nullptr) population[entity->GetEntityNumber()] = TextOf(*entity);
  };
  if (file.GetMaxEntityNumber() <= kHighestNumberToCountTo) {
    for (int number = 0; number <= file.GetMaxEntityNumber(); ++number) add(file.GetEntity(number));
    return population;
  }
  // By way of the types, where the numbers are few and far between.
  for (const std::string& name : AutomotiveDesignTypes()) {
    std::list<ExpEntity*> entities;
    file.GetEntities(entities, name, false);
    for (ExpEntity* entity : entities) add(file.GetEntity(entity->GetEntityNumber()));
  }
  return population;
}

TEST_P(Ap214File, EveryInstanceOfAKnownTypeIsRead) {
  ExpFile file;
  CapturedLog log;
  Read(file, bytes_);
  EXPECT_EQ(file.GetSchema(), STEP_AP214);
  std::set<std::string> unknown;
  for (const auto& [number, account] : AccountsOf(bytes_)) {
    bool known = true;
    for (const std::string& type : account.types) {
      if (ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(type, "AUTOMOTIVE_DESIGN") != nullptr)
        continue;
      known = false;
      unknown.insert(type);
    }
    ExpEntity* entity = file.GetEntity(std::atoi(number.c_str()));
    // A complex instance is there whatever its parts are.
    EXPECT_EQ(entity != nullptr, known || account.complex) << "#" << number;
    if (entity != nullptr) {
      EXPECT_EQ(entity->GetEntityNumber(), std::atoi(number.c_str()));
    }
  }
  for (const std::string& type : unknown) EXPECT_EQ(kTypesOfOlderEditions.count(type), 1u) << type;
  if (!unknown.empty()) RecordProperty("unknown_types", testing::PrintToString(unknown));
  EXPECT_EQ(log.lines.size(), 2u) << log.text;
}

TEST_P(Ap214File, TheNumberOfInstancesIsThatOfTheDefinitionsOfKnownTypes) {
  ExpFile file;
  CapturedLog log;
  Read(file, bytes_);
  const auto accounts = AccountsOf(bytes_);
  const auto known = std::count_if(accounts.begin(), accounts.end(), [](const auto& item) {
    return item.second.complex || kTypesOfOlderEditions.count(item.second.types[0]) == 0;
  });
  EXPECT_EQ(PopulationOf(file).size(), static_cast<std::size_t>(known));
  // The account itself: every "#n=" of the text outside of comments and strings.
  EXPECT_GT(known, 0);
}

TEST_P(Ap214File, ReferencesStringsAndNumbersAreThoseOfTheText) {
  ExpFile file;
  CapturedLog log;
  Read(file, bytes_);
  std::ostringstream out;
  file.WriteDataSection(out);
  const auto read = AccountsOf(bytes_);
  const auto written = AccountsOf(out.str());
  ASSERT_FALSE(written.empty());
  for (const auto& [number, account] : written) {
    const auto found = read.find(number);
    ASSERT_NE(found, read.end()) << "#" << number;
    EXPECT_EQ(account.types, found->second.types) << "#" << number;
    EXPECT_EQ(account.references, found->second.references) << "#" << number;
    EXPECT_EQ(account.strings, found->second.strings) << "#" << number;
    ASSERT_EQ(account.numbers.size(), found->second.numbers.size()) << "#" << number;
    for (std::size_t i = 0; i < account.numbers.size(); ++i) {
      const double expected = found->second.numbers[i];
      // Fifteen digits are written.
      EXPECT_NEAR(account.numbers[i], expected, std::abs(expected) * 1e-14) << "#" << number;
    }
  }
}

TEST_P(Ap214File, WhatIsWrittenReadsToAnEqualPopulationAndIsWrittenTheSame) {
  CapturedLog log;
  ExpFile first;
  Read(first, bytes_);
  std::ostringstream once;
  first.Write(once);
  log.Clear();
  ExpFile second;
  Read(second, once.str());
  EXPECT_EQ(log.lines.size(), 2u) << log.text;
  EXPECT_EQ(PopulationOf(second), PopulationOf(first));
  std::ostringstream twice;
  second.Write(twice);
  EXPECT_TRUE(twice.str() == once.str());
}

INSTANTIATE_TEST_SUITE_P(Ap214, Ap214File, testing::ValuesIn(FilesOf("ap214")), NameOf);

// -------------------------------------------------------------------------------------- every file

// A file that looks up its types in AP214 whatever schema it says it is of, so that as much as possible is
// created.
class AsAp214 : public ExpFile {
 public:
  void SetSchemaName(std::string) override { ExpFile::SetSchemaName("AUTOMOTIVE_DESIGN"); }
};

// Whether a string of the text, or what looks like one, is longer than any token may be: that ends the
// process.
bool HasTooLongToken(const std::string& bytes) {
  std::size_t i = 0;
  int depth = 0;
  while (i < bytes.size()) {
    if (bytes.compare(i, 2, "/*") == 0) {
      ++depth;
      i += 2;
    } else if (depth > 0 && bytes.compare(i, 2, "*/") == 0) {
      --depth;
      i += 2;
    } else if (depth == 0 && bytes.compare(i, 2, "//") == 0) {
      const std::size_t end = bytes.find("\r\n", i);
      i = end == std::string::npos ? bytes.size() : end + 2;
    } else if (depth == 0 && bytes[i] == '\'') {
      const std::size_t begin = i;
      do {
        const std::size_t end = bytes.find('\'', i + 1);
        i = end == std::string::npos ? bytes.size() : end + 1;
      } while (i < bytes.size() && bytes[i] == '\'');
      if (i - begin > kLongestToken) return true;
    } else {
      ++i;
    }
  }
  return false;
}

// Reads the bytes, looks at every instance, and lets them go. Gives the number of instances.
std::size_t Survive(const std::string& bytes, bool asAp214) {
  if (HasTooLongToken(bytes)) return 0;
  CapturedLog log;
  std::unique_ptr<ExpFile> file = asAp214 ? std::make_unique<AsAp214>() : std::make_unique<ExpFile>();
  Read(*file, bytes);
  EXPECT_GE(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0], "Reading from stream");
  return PopulationOf(*file).size();
}

// How often a file can be read; files of huge instance numbers cost as much as long ones.
std::size_t TimesFor(const std::string& bytes) {
  long highest = 0;
  for (const auto& [number, account] : AccountsOf(bytes)) {
    const long value = std::strtol(number.c_str(), nullptr, 10);
    if (value < 1L << 30) highest = std::max(highest, value);
  }
  const std::size_t cost = bytes.size() + static_cast<std::size_t>(highest) / 4;
  return std::max<std::size_t>(1, std::min<std::size_t>(200, kBytesPerFile / cost));
}

TEST_P(CorpusFile, IsReadInItsOwnSchemaAndInAp214) {
  const std::size_t instances = Survive(bytes_, true);
  ExpFile file;
  CapturedLog log;
  file.Read((Corpus() / GetParam()).string());
  ASSERT_GE(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0], "Reading from stream");
  if (file.GetSchema() == STEP_AP214) {
    EXPECT_EQ(PopulationOf(file).size(), instances);
  }
}

TEST_P(CorpusFile, ReadsTheSameTwice) {
  CapturedLog log;
  AsAp214 file;
  Read(file, bytes_);
  const std::string firstLog = log.text;
  const auto first = PopulationOf(file);
  log.Clear();
  Read(file, bytes_);
  EXPECT_EQ(log.text, firstLog);
  EXPECT_EQ(PopulationOf(file), first);
}

TEST_P(CorpusFile, AnyPrefixIsRead) {
  const std::size_t times = TimesFor(bytes_);
  const bool small = bytes_.size() < kSmallFile && times > 100;
  const std::size_t step = small ? 1 : std::max<std::size_t>(1, bytes_.size() / times);
  const std::size_t whole = Survive(bytes_, true);
  const bool forbidden = whole == 0;
  for (std::size_t length = step == 1 ? 0 : step - 1; length < bytes_.size(); length += step) {
    const std::size_t instances = Survive(bytes_.substr(0, length), true);
    // A cut may add one instance that its whole record would not have become, but nothing more.
    EXPECT_TRUE(forbidden || instances <= whole + 1) << "cut to " << length;
  }
}

TEST_P(CorpusFile, AnyChangedByteIsSurvived) {
  std::mt19937 random(static_cast<unsigned int>(bytes_.size()));
  const std::size_t times = TimesFor(bytes_);
  for (std::size_t i = 0; i < times; ++i) {
    std::string changed = bytes_;
    const std::size_t position = random() % changed.size();
    const char byte =
        i % 2 == 0 ? static_cast<char>(random() % 256) : "'\"()/*;#.,$!&=-E\n\r0"[random() % 19];
    if (position == 0 && byte == '\xEF') continue;  // a broken byte order mark ends the process
    changed[position] = byte;
    SCOPED_TRACE("byte " + std::to_string(position) + " made " +
                 std::to_string(static_cast<unsigned char>(byte)));
    Survive(changed, i % 4 != 0);
  }
}

INSTANTIATE_TEST_SUITE_P(All, CorpusFile, testing::ValuesIn(FilesOf("")), NameOf);

TEST(Corpus, HoldsTheFilesTheseTestsAreAbout) {
  if (!std::filesystem::is_directory(Corpus())) GTEST_SKIP() << "there is no corpus at " << Corpus();
  EXPECT_GE(FilesOf("ap214").size(), 8u);
  EXPECT_GE(FilesOf("").size(), 50u);
  EXPECT_TRUE(kLoaded);
  EXPECT_TRUE(ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered("AUTOMOTIVE_DESIGN"));
}

}  // namespace
