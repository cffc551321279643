// Real exchange files: all that they hold is read and written again, and neither a cut nor a changed byte
// does harm.
#include <gmock/gmock.h>
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
#include "../tools/RunProgram.h"
#include "BundledSchemas.h"
#include "CorpusFiles.h"
#include "ExpCustomEntities.h"
#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace {

using namespace VELMAR;
using VELMAR::TestData::CapturedLog;

const bool kLoaded = (LoadBundledSchemas(), true);

// How many bytes the tests of cut and of changed files read, for each file; small files are cut at every
// byte.
constexpr std::size_t kBytesPerFile = 1500000;
constexpr std::size_t kSmallFile = 2048;
constexpr std::size_t kLongestToken = 32767;
constexpr int kHighestNumberToCountTo = 5000000;

// Types of files that neither their schema nor STEP_IR_AIC has.
const std::map<std::string, std::set<std::string>> kUnknownTypes = {
    // In no edition of any schema that there is a table of.
    {"ap214/601-1794-001.stp", {"PRODUCT_TYPE"}},
};

// Files of schemas without a library; they are read as files of AP214 as far as that goes.
const std::map<std::string, std::string> kWithoutLibrary = {
    {"other/ATS1Mod0-outresult.stp", "AP209_MULTIDISCIPLINARY_ANALYSIS_AND_DESIGN_MIM_LF"},
    {"other/Annex_D_5.spf", "example_schema"},
    {"other/Clapp.stp", "AP210_ELECTRONIC_ASSEMBLY_INTERCONNECT_AND_PACKAGING_DESIGN_MIM_LF"},
    {"other/dip-switchV6.stp", "ELECTRONIC_ASSEMBLY_INTERCONNECT_AND_PACKAGING_DESIGN"},
};

// Values that lists do not keep.
const std::set<std::string> kWithLosses = {
    "ap242/nist_ftc_08_asme1_ap242-e1.stp",  // enumeration values in lists
};

// The files whose schema has a library.
std::vector<std::string> FilesWithLibrary() {
  std::vector<std::string> names = FilesOf({"ap203", "ap203e2", "ap214", "ap242", "other"});
  names.erase(std::remove_if(names.begin(), names.end(),
                             [](const std::string& name) { return kWithoutLibrary.count(name) != 0; }),
              names.end());
  return names;
}

// The schema that a file of a folder is of.
Schema SchemaOf(const std::string& name) {
  const std::string folder = name.substr(0, name.find('/'));
  return folder == "ap203"     ? STEP_AP203
         : folder == "ap203e2" ? STEP_AP203E2
         : folder == "ap214"   ? STEP_AP214
         : folder == "ap242"   ? STEP_AP242
                               : PLIB;
}

const std::set<std::string>& UnknownTypesOf(const std::string& name) {
  static const std::set<std::string> kNone;
  const auto unknown = kUnknownTypes.find(name);
  return unknown == kUnknownTypes.end() ? kNone : unknown->second;
}

// With the libraries of all schemas loaded at once.
class SchemaFile : public CorpusFile {
 protected:
  bool HasLosses() const { return kWithLosses.count(GetParam()) != 0; }
  std::string WithoutLosses() const;

  void SetUp() override {
    CorpusFile::SetUp();
    if (IsSkipped()) return;
    ExpRuntimeRegistry* registry = ExpRuntimeRegistry::GetInstance();
    for (const std::string& schema :
         {registry->EvalRegisteredSchema(SchemaOf(GetParam())), std::string("STEP_IR_AIC")}) {
      if (!registry->IsSchemaRegistered(schema))
        GTEST_SKIP() << "this build leaves the library of " << schema << " out";
    }
  }
};

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
  std::vector<Account*> enclosing;  // the instances whose scope is open
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
        i = blanks(i);
        if (text.compare(i, 6, "&SCOPE") == 0) {
          i += 6;
          enclosing.push_back(current);
          current = nullptr;
        } else {
          current->complex = i < text.size() && text[i] == '(';
        }
      } else if (current != nullptr) {
        current->references.push_back(number);
      }
    } else if (current == nullptr && !enclosing.empty() && text.compare(i, 8, "ENDSCOPE") == 0) {
      i = blanks(i + 8);
      if (i < text.size() && text[i] == '/') i = text.find('/', i + 1) + 1;  // the export list
      current = enclosing.back();
      enclosing.pop_back();
      i = blanks(i);
      current->complex = i < text.size() && text[i] == '(';
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

// The names of all entity types, as the registry lists them.
const std::vector<std::string>& TypeNames() {
  static const std::vector<std::string> kNames = [] {
    std::ostringstream out;
    ExpRuntimeRegistry::GetInstance()->DumpRegisteredEntityTypes(out);
    std::set<std::string> names;
    std::istringstream in(out.str());
    for (std::string name, colons, schema, line; std::getline(in, line);) {
      if (std::istringstream(line) >> name >> colons >> schema && colons == "::") names.insert(name);
    }
    return std::vector<std::string>(names.begin(), names.end());
  }();
  return kNames;
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
  for (const std::string& name : TypeNames()) {
    std::list<ExpEntity*> entities;
    file.GetEntities(entities, name, false);
    for (ExpEntity* entity : entities) add(file.GetEntity(entity->GetEntityNumber()));
  }
  return population;
}

// Gives the values that the file could not keep, and that have no text now, one: `$`.
void MarkLostValues(ExpFile& file) {
  for (int number = 1; number <= file.GetMaxEntityNumber(); ++number) {
    if (ExpEntity* entity = file.GetEntity(number)) MarkUnsetValues(*entity);
  }
}

// What is in the file but for the values that it could not keep.
std::string SchemaFile::WithoutLosses() const {
  if (!HasLosses()) return bytes_;
  ExpFile file;
  Read(file, bytes_);
  MarkLostValues(file);
  std::ostringstream out;
  file.Write(out);
  return out.str();
}

TEST_P(SchemaFile, EveryInstanceIsReadButThoseOfTypesThatNoSchemaHas) {
  ExpFile file;
  CapturedLog log;
  Read(file, bytes_);
  EXPECT_EQ(file.GetSchema(), SchemaOf(GetParam()));
  EXPECT_EQ(log.lines.size(), 2u) << log.text;
  const std::set<std::string>& unknown = UnknownTypesOf(GetParam());
  std::set<std::string> met;
  std::size_t known = 0;
  for (const auto& [number, account] : AccountsOf(bytes_)) {
    bool isKnown = true;
    for (const std::string& type : account.types) {
      if (unknown.count(type) == 0) continue;
      isKnown = false;
      met.insert(type);
    }
    ExpEntity* entity = file.GetEntity(std::atoi(number.c_str()));
    EXPECT_EQ(entity != nullptr, isKnown) << "#" << number;
    if (entity == nullptr) continue;
    EXPECT_EQ(entity->GetEntityNumber(), std::atoi(number.c_str()));
    auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity);
    ASSERT_EQ(complex != nullptr, account.complex) << "#" << number;
    // Every partial record has its object.
    if (complex != nullptr) {
      EXPECT_EQ(complex->GetEntities()->size(), account.types.size()) << "#" << number;
    }
    ++known;
  }
  EXPECT_EQ(met, unknown);
  EXPECT_GT(known, 0u);
  EXPECT_EQ(PopulationOf(file).size(), known);
}

TEST_P(SchemaFile, ReferencesStringsAndNumbersAreThoseOfTheText) {
  ExpFile file;
  CapturedLog log;
  Read(file, bytes_);
  if (HasLosses()) MarkLostValues(file);
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

TEST_P(SchemaFile, WhatIsWrittenReadsToAnEqualPopulationAndIsWrittenTheSame) {
  CapturedLog log;
  ExpFile first;
  Read(first, WithoutLosses());
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

// In a process that loads what the file needs and nothing else, the same comes out.
TEST_P(SchemaFile, TheProgramLoadsWhatItNeedsAndWritesTheSame) {
  const TemporaryDirectory directory;
  const std::string once = directory.Path("once.stp");
  const std::string twice = directory.Path("twice.stp");
  const std::string in = WriteFile(directory.Path("in.stp"), bytes_);
  const Outcome first = RunProgram({VELMAR_PROGRAM, "convert", in, "-o", once});
  const bool isKnown = UnknownTypesOf(GetParam()).empty();
  EXPECT_EQ(first.status, isKnown ? 0 : 1) << first.err;
  // That instances stood in a scope is all that is lost, of one file.
  const bool hasScope = bytes_.find("&SCOPE") != std::string::npos;
  EXPECT_EQ(first.err.empty(), isKnown && !hasScope) << first.err;
  EXPECT_EQ(first.err.find("[V050]") != std::string::npos, hasScope) << first.err;
  const Outcome second = RunProgram({VELMAR_PROGRAM, "convert", once, "-o", twice});
  EXPECT_EQ(second.status, first.status) << second.err;
  EXPECT_TRUE(ReadFile(once) == ReadFile(twice));

  CapturedLog log;
  ExpFile file;
  file.KeepEverything(true);
  Read(file, ReadFile(in));
  std::ostringstream out;
  file.WriteDataSection(out);
  const std::string text = ReadFile(once);
  EXPECT_TRUE(text.find(out.str()) != std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Corpus, SchemaFile, testing::ValuesIn(FilesWithLibrary()), NameOf);

TEST(Corpus, FilesOfSchemasWithoutALibraryAreReportedAsSuch) {
  if (!std::filesystem::is_directory(Corpus())) GTEST_SKIP() << "there is no corpus at " << Corpus();
  const TemporaryDirectory directory;
  const std::string out = directory.Path("out.stp");
  for (const auto& [name, schema] : kWithoutLibrary) {
    const Outcome outcome = RunProgram({VELMAR_PROGRAM, "convert", (Corpus() / name).string(), "-o", out});
    EXPECT_EQ(outcome.status, 1) << name;
    EXPECT_THAT(outcome.err,
                testing::HasSubstr("error: schema '" + schema + "' is not supported; supported: "));
  }
}

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

INSTANTIATE_TEST_SUITE_P(All, CorpusFile, testing::ValuesIn(FilesOf({""})), NameOf);

TEST(Corpus, HoldsTheFilesTheseTestsAreAbout) {
  if (!std::filesystem::is_directory(Corpus())) GTEST_SKIP() << "there is no corpus at " << Corpus();
  EXPECT_GE(FilesWithLibrary().size(), 20u);
  EXPECT_GE(FilesOf({""}).size(), 50u);
  EXPECT_TRUE(kLoaded);
  EXPECT_TRUE(ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered("AUTOMOTIVE_DESIGN"));
}

}  // namespace
