// Inputs that are cut off, damaged, senseless or absurdly deep: whatever comes in, reading returns, and what
// is whole is kept.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "HostileText.h"
#include "Part21Importer.h"
#include "ReadingSupport.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using namespace hostile;
using reading::Ended;
using reading::kByteOrderMark;
using reading::PipeStream;
using reading::RunInChild;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::Node;
using VELMAR::TestData::Point;
using VELMAR::TestData::TestProvider;

// The inputs of the data files.
std::vector<std::pair<std::string, std::string>> DataInputs() {
  std::vector<std::pair<std::string, std::string>> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA)) {
    if (entry.path().extension() != ".stp") continue;
    std::ifstream in(entry.path(), std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    inputs.emplace_back(entry.path().stem().string(), text.substr(0, text.find("==== log\n")));
  }
  std::sort(inputs.begin(), inputs.end());
  EXPECT_GT(inputs.size(), 60u);
  return inputs;
}

// --------------------------------------------------------------------------------- cut and damaged

TEST(HostileInput, EveryPrefixOfEveryDataFileIsReadTheSameFromMemoryAndFromAPipe) {
  for (const auto& [name, input] : DataInputs()) {
    for (std::size_t length = 1; length <= input.size(); ++length) {
      const std::string prefix = input.substr(0, length);
      const Outcome outcome = ReadMemory(prefix);
      // A file that is not whole is not silently taken for one.
      const bool whole = prefix.find("END-ISO-10303-21;") != std::string::npos;
      EXPECT_TRUE(whole || outcome.headerMissing || !outcome.log.empty()) << name << " cut to " << length;
      if (length % 16 == 0) {
        EXPECT_TRUE(outcome == ReadPipe(prefix)) << name << " cut to " << length;
      }
    }
  }
}

TEST(HostileInput, EveryPrefixOfEveryDataFileAsUtf8) {
  for (const auto& [name, input] : DataInputs()) {
    for (std::size_t length = 0; length <= input.size(); length += 3) {
      const std::string prefix = input.substr(0, length);
      // The columns do not count the mark, so the outcome is the same.
      const Outcome outcome = ReadMemory(kByteOrderMark + prefix);
      if (length > 0) {
        EXPECT_TRUE(outcome == ReadMemory(prefix)) << name << " cut to " << length;
      }
    }
  }
}

TEST(HostileInput, WhatStandsWholeBeforeTheCutIsKept) {
  const std::vector<std::string> records = {
      "A(1,2)",           "POINT('it''s',(1.5,(2),'x'))",
      "(A(1,2)B('y'))",   "NODE('n',#1,(#2,#3),L(M(2.5)))",
      "EMPTY()",          "ALL_KINDS(1.,2,'t',#1,(1,2),.RED.,.U.,.T.,L('v'))",
      "B($,*,'z')",       "UNKNOWN(1,(2))",
      "C(1,2,'c',-1.E-5)"};
  std::string text = kHead;
  std::vector<std::pair<std::size_t, int>> ends;
  for (int i = 0; i < 30; ++i) {
    text += "#" + std::to_string(i + 1) + "=" + records[static_cast<std::size_t>(i) % records.size()] + ";\n";
    ends.emplace_back(text.size() - 1, i + 1);
  }
  TestProvider whole;
  Part21Importer importer;
  std::istringstream all(text + kTail);
  importer.ImportFromStream(&all, &whole, 0);
  for (std::size_t length = std::string(kHead).size(); length <= text.size(); ++length) {
    TestProvider provider;
    CapturedLog log;
    std::istringstream in(text.substr(0, length));
    importer.ImportFromStream(&in, &provider, 0);
    for (const auto& [end, number] : ends) {
      if (end > length) break;
      ExpEntity* expected = whole.GetEntity(number);
      ExpEntity* entity = provider.GetEntity(number);
      ASSERT_EQ(entity == nullptr, expected == nullptr) << "#" << number << ", cut to " << length;
      if (entity != nullptr) {
        ASSERT_EQ(entity->ToString(), expected->ToString()) << "cut to " << length;
      }
    }
  }
}

TEST(HostileInput, OneByteChanged) {
  std::mt19937 random(1);
  for (const auto& [name, input] : DataInputs()) {
    for (int i = 0; i < 150; ++i) {
      std::string bytes = input;
      const std::size_t position = random() % bytes.size();
      const char byte =
          i % 2 == 0 ? static_cast<char>(random() % 256) : "'\"()/*;#.,$!&=-E\n\r"[random() % 18];
      if (position == 0 && byte == '\xEF') continue;  // a broken byte order mark ends the process
      bytes[position] = byte;
      EXPECT_TRUE(ReadMemory(bytes) == ReadPipe(bytes)) << name << " with another byte at " << position;
    }
  }
}

TEST(HostileInput, OneByteInsertedOrRemoved) {
  std::mt19937 random(2);
  for (const auto& [name, input] : DataInputs()) {
    for (int i = 0; i < 100; ++i) {
      std::string bytes = input;
      const std::size_t position = 1 + random() % (bytes.size() - 1);
      if (i % 2 == 0) {
        bytes.erase(position, 1);
      } else {
        bytes.insert(position, 1, "'\"()/*;#.,$!&=-E\n\r"[random() % 18]);
      }
      EXPECT_TRUE(ReadMemory(bytes) == ReadPipe(bytes))
          << name << " with one byte more or less at " << position;
    }
  }
}

TEST(HostileInput, EveryPairOfBytes) {
  CapturedLog log;
  for (int first = 0; first < 256; ++first) {
    if (first == 0xEF) continue;
    for (int second = 0; second < 256; ++second) {
      const std::string bytes = {static_cast<char>(first), static_cast<char>(second)};
      log.Clear();
      EXPECT_EQ(ReadMemory(bytes).population, "");
      ASSERT_GE(log.lines.size(), 1u);
      ASSERT_EQ(log.lines[0].substr(log.lines[0].find(": ")), ": \"ISO-10303-21;\" expected")
          << first << " " << second;
    }
  }
}

TEST(HostileInput, RandomBytes) {
  std::mt19937 random(3);
  for (int i = 0; i < 1500; ++i) {
    std::string bytes;
    const std::size_t length = 1 + random() % 300;
    while (bytes.size() < length) bytes += static_cast<char>(random() % 256);
    if (bytes[0] == '\xEF') bytes[0] = 'x';
    if (i % 3 == 1) bytes.insert(0, kByteOrderMark);
    if (i % 3 == 2) bytes.insert(0, kHead);
    EXPECT_TRUE(ReadMemory(bytes) == ReadPipe(bytes)) << i;
  }
}

TEST(HostileInput, RandomTokens) {
  const std::vector<std::string> words = {"ISO-10303-21;",
                                          "END-ISO-10303-21;",
                                          "HEADER;",
                                          "DATA;",
                                          "ENDSEC;",
                                          "&SCOPE",
                                          "ENDSCOPE",
                                          "#1",
                                          "#2=A(1,2);",
                                          "#3",
                                          "=",
                                          "(",
                                          ")",
                                          "((",
                                          "))",
                                          ",",
                                          ";",
                                          ";",
                                          "$",
                                          "*",
                                          "!",
                                          ".",
                                          "/",
                                          "'it''s'",
                                          "1",
                                          "-2.5",
                                          "\"3FA\"",
                                          ".T.",
                                          "A",
                                          "B",
                                          "POINT",
                                          "NODE",
                                          "UNKNOWN",
                                          "ALL_KINDS",
                                          "L(",
                                          "FILE_SCHEMA(('X'));",
                                          "%",
                                          "e",
                                          "/* c */",
                                          "//\r\n",
                                          "#4=POINT(",
                                          "#5=(",
                                          "#6=NODE('n',",
                                          "#7=&SCOPE"};
  std::mt19937 random(4);
  for (int i = 0; i < 4000; ++i) {
    std::string bytes = i % 4 == 0 ? "" : kHead;
    const unsigned int count = 1 + random() % 60;
    for (unsigned int w = 0; w < count; ++w) bytes += words[random() % words.size()] + " ";
    const Outcome outcome = ReadMemory(bytes);
    if (i % 8 == 0) {
      EXPECT_TRUE(outcome == ReadPipe(bytes)) << bytes;
    }
  }
}

// ------------------------------------------------------------------------------------------- depth

TEST(HostileDepth, AMillionNestedListsAreReadPrintedAndReadAgain) {
  const std::string record = "#1=POINT('p'," + Times(kMillion, "(") + "7" + Times(kMillion, ")") + ");";
  Quiet first(record);
  ASSERT_NE(first.provider.GetEntity(1), nullptr);
  const std::string text = first.provider.GetEntity(1)->ToString();
  EXPECT_TRUE(text == "#1 = POINT('p', " + Times(kMillion, "(") + "7" + Times(kMillion, ")") + ");");
  Quiet second(text);
  EXPECT_TRUE(second.provider.GetEntity(1)->ToString() == text);
}

TEST(HostileDepth, AMillionListsThatNobodyCloses) {
  for (const std::string begin :
       {"#1=POINT('p',", "#1=UNKNOWN(", "#1=A(", "#1=A(1,2,", "#1=NODE('n',$,(),", "#1=POINT('p',(T("}) {
    const Outcome outcome = ReadMemory(kHead + begin + Times(kMillion, "("));
    EXPECT_EQ(std::count(outcome.log.begin(), outcome.log.end(), '\n'), 1) << begin;
  }
}

TEST(HostileDepth, AMillionListsOfAnUnknownTypeAndBehindTheLastAttribute) {
  const std::string deep = Times(kMillion, "(") + "7" + Times(kMillion, ")");
  Quiet read("#1=UNKNOWN(" + deep + ");\n#2=A(1,2," + deep + ");");
  EXPECT_EQ(read.provider.GetEntity(1), nullptr);
  EXPECT_EQ(read.provider.GetEntity(2)->ToString(), "#2 = A(1, 2);");
}

TEST(HostileDepth, AMillionListsInATypedElementAreReadAndDropped) {
  Quiet read("#1=POINT('p',(T(" + Times(kMillion, "(") + "'x'" + Times(kMillion, ")") + "),8));");
  auto* elements = dynamic_cast<Point*>(read.provider.GetEntity(1))->coordinates.GetExpAggregation();
  EXPECT_EQ(elements->size(), 2u);
}

TEST(HostileDepth, AMillionTypeNamesOfAParameter) {
  const std::string typed = Times(kMillion, "T(") + "7" + Times(kMillion, ")");
  Quiet read("#1=NODE('n',$,()," + typed + ");");
  EXPECT_TRUE(read.provider.GetEntity(1)->ToString() == "#1 = NODE('n', $, (), " + typed + ");");
}

TEST(HostileDepth, AMillionTypeNamesOfAnElement) {
  const std::string typed = Times(kMillion, "T(") + "7" + Times(kMillion, ")");
  Quiet read("#1=POINT('p',(" + typed + "));");
  EXPECT_TRUE(read.provider.GetEntity(1)->ToString() == "#1 = POINT('p', (" + typed + "));");
}

TEST(HostileDepth, AMillionTypeNamesInAListInATypedElement) {
  Quiet read("#1=POINT('p',(T((" + Times(kMillion, "T(") + "7" + Times(kMillion, ")") + "))));");
  EXPECT_NE(read.provider.GetEntity(1), nullptr);
}

TEST(HostileDepth, ListsAndTypeNamesInTurn) {
  Quiet read("#1=NODE('n',$," + Times(kMillion / 2, "(T(") + "7" + Times(kMillion / 2, "))") +
             ",$);\n#2=UNKNOWN(" + Times(kMillion / 2, "(T(") + "7" + Times(kMillion / 2, "))") +
             ");\n#3=POINT('p'," + Times(kMillion / 2, "((1),") + "7" + Times(kMillion / 2, ")") + ");");
  EXPECT_NE(read.provider.GetEntity(1), nullptr);
  EXPECT_NE(read.provider.GetEntity(3), nullptr);
}

TEST(HostileDepth, AMillionTypeNamesThatNobodyCloses) {
  for (const std::string begin :
       {"#1=NODE('n',$,(),", "#1=POINT('p',(", "#1=UNKNOWN(", "#1=POINT('p',(T(("}) {
    const Outcome outcome = ReadMemory(kHead + begin + Times(kMillion, "T("));
    EXPECT_EQ(std::count(outcome.log.begin(), outcome.log.end(), '\n'), 1) << begin;
  }
}

TEST(HostileDepth, AMillionNestedScopes) {
  constexpr int kScopes = kMillion;
  std::string instances;
  for (int i = 1; i <= kScopes; ++i) instances += "#" + std::to_string(i) + "=&SCOPE ";
  instances += "#" + std::to_string(kScopes + 1) + "=EMPTY();";
  instances += Times(kScopes, "ENDSCOPE/#1/EMPTY();");
  Quiet read(instances);
  EXPECT_EQ(read.provider.GetMaxEntityNumber(), kScopes + 1);
  int missing = 0;
  for (int i = 1; i <= kScopes + 1; ++i) missing += read.provider.GetEntity(i) == nullptr;
  EXPECT_EQ(missing, 0);
}

TEST(HostileDepth, AMillionScopesThatNobodyCloses) {
  const Outcome outcome = ReadMemory(kHead + Times(kMillion, "#1=&SCOPE "));
  EXPECT_EQ(std::count(outcome.log.begin(), outcome.log.end(), '\n'), 1);
}

TEST(HostileDepth, AMillionComments) {
  Quiet read("#1=" + Times(kMillion, "/**/") + "A(" + Times(kMillion, "//\r\n") + "1," +
             Times(kMillion / 10, "/*\n*/ ") + "2);");
  EXPECT_EQ(read.provider.GetEntity(1)->ToString(), "#1 = A(1, 2);");
}

TEST(HostileDepth, AMillionNestedComments) {
  Quiet read("#1=A(" + Times(kMillion, "/*") + Times(kMillion, "*/") + "1,2);");
  EXPECT_EQ(read.provider.GetEntity(1)->ToString(), "#1 = A(1, 2);");
}

TEST(HostileDepth, AMillionCommentsThatNobodyCloses) {
  const Outcome outcome = ReadMemory(kHead + ("#1=A(1," + Times(kMillion, "/*") + "2);" + kTail));
  EXPECT_EQ(std::count(outcome.log.begin(), outcome.log.end(), '\n'), 1);
  EXPECT_EQ(outcome.population, "#1 = A(1, 0);\n");
}

TEST(HostileDepth, AMillionLoneSlashes) {
  const Outcome outcome = ReadMemory(FileOf("#1=A(1,2)" + Times(kMillion, "/ ") + ";#2=A(3,4);"));
  EXPECT_EQ(outcome.log, "-- line 6 col 10: this symbol not expected in entityInstance\n");
  EXPECT_EQ(outcome.population, "#1 = A(1, 2);\n#2 = A(3, 4);\n");
}

// ------------------------------------------------------------------------------------------ length

TEST(HostileLength, AListOfAMillionElements) {
  Quiet read("#1=POINT('p',(" + Times(kMillion - 1, "1,") + "2));");
  EXPECT_EQ(dynamic_cast<Point*>(read.provider.GetEntity(1))->coordinates.NofElements(),
            static_cast<unsigned long>(kMillion));
}

TEST(HostileLength, AMillionParametersTooMany) {
  Quiet read("#1=A(1,2" + Times(kMillion, ",('x')") + ");");
  EXPECT_EQ(read.provider.GetEntity(1)->ToString(), "#1 = A(1, 2);");
}

TEST(HostileLength, AComplexInstanceOfManyParts) {
  constexpr int kParts = 100000;
  Quiet read("#1=(" + Times(kParts, "A(1,2)") + "B('x'));");
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(read.provider.GetEntity(1));
  ASSERT_NE(complex, nullptr);
  EXPECT_EQ(complex->GetEntities()->size(), static_cast<std::size_t>(kParts) + 1);
  EXPECT_EQ(complex->GetEntityByName("B")->ToString(), "#1 = B(1, 2, 'x');");
}

TEST(HostileLength, AnExportListOfAMillionNames) {
  Quiet read("#1=&SCOPE #2=A(1,2);ENDSCOPE/#2" + Times(kMillion, ",#2") + "/A(3,4);");
  EXPECT_EQ(read.provider.GetEntity(1)->ToString(), "#1 = A(3, 4);");
}

TEST(HostileLength, AMillionSyntaxErrors) {
  constexpr int kErrors = 200000;
  TestProvider provider;
  CapturedLog log;
  std::istringstream in(FileOf(Times(kErrors, "#1=a;\n") + "#2=A(1,2);"));
  Part21Importer().ImportFromStream(&in, &provider, 0);
  ASSERT_EQ(log.lines.size(), static_cast<std::size_t>(kErrors));
  EXPECT_EQ(log.lines.front(), "-- line 6 col 4: invalid entityInstance");
  EXPECT_EQ(log.lines.back(), "-- line " + std::to_string(kErrors + 5) + " col 4: invalid entityInstance");
  EXPECT_NE(provider.GetEntity(2), nullptr);
}

TEST(HostileLength, TheLongestNumbers) {
  const std::string digits(32766, '9');
  Quiet read("#1=ALL_KINDS(-" + digits.substr(1) + ".," + digits + ",'');\n#2=ALL_KINDS(0." +
             std::string(32765, '0') + ");\n" + "#3=POINT('',(#" + digits + "));");
  EXPECT_EQ(read.provider.GetEntity(1)->GetMember("real")->GetExpReal(), -HUGE_VAL);
  EXPECT_EQ(read.provider.GetEntity(1)->GetMember("integer")->GetExpInteger(), -1);
  EXPECT_EQ(read.provider.GetEntity(2)->GetMember("real")->GetExpReal(), 0.0);
  EXPECT_EQ(read.provider.GetEntity(3)->ToString(), "#3 = POINT('', (#-1));");
}

TEST(HostileLength, AnUnterminatedStringShortOfTheLimitIsASyntaxError) {
  // Apostrophe and text together are the longest token.
  const Outcome outcome = ReadMemory(kHead + ("#1=POINT('" + std::string(32766, 'x')));
  EXPECT_EQ(outcome.log, "-- line 6 col 10: \")\" expected\n");
  EXPECT_EQ(outcome.population, "#1 = POINT('', ());\n");
}

TEST(HostileLength, AnUnterminatedStringBeyondTheLimitEndsTheProcess) {
  for (const int length : {32767, 1000000}) {
    const Ended ended =
        RunInChild([length] { ReadMemory(kHead + ("#1=POINT('" + std::string(length, 'x'))); });
    EXPECT_EQ(ended.exitStatus, 1);
    EXPECT_EQ(ended.output, "--- Too long token value\n");
  }
}

TEST(HostileLength, AnUnterminatedStringBeyondTheLimitEndsTheProcessAlsoFromAFile) {
  reading::TemporaryFile file(kHead + ("#1=POINT('" + std::string(200000, 'x')));
  const Ended ended = RunInChild([&file] {
    ExpFile exchange;
    exchange.Read(file.Path());
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "--- Too long token value\n");
}

// ----------------------------------------------------------------------------------- written again

TEST(HostileDepth, DeepValuesOfAFileAreWrittenAndReadAgain) {
  const std::string deepList = Times(kMillion, "(") + Times(kMillion, ")");
  const std::string deepSelect = Times(kMillion, "T(") + "'x'" + Times(kMillion, ")");
  std::string text = FileOf("#1=POINT('p'," + deepList + ");\n#2=NODE('n',#1,(" + deepSelect + ")," +
                            deepSelect + ");\n#3=(NODE('m',#1," + deepList + ",$)A(1,2));");
  std::string written[2];
  for (std::string& out : written) {
    CapturedLog log;
    ExpFile file;
    std::istringstream in(text);
    file.Read(in);
    EXPECT_EQ(log.lines.size(), 2u);
    std::ostringstream data;
    file.WriteDataSection(data);
    out = data.str();
    std::ostringstream dump;
    file.DumpEntity(2, dump);
    EXPECT_GT(dump.str().size(), deepList.size() + 2 * deepSelect.size());
    std::ostringstream whole;
    file.Write(whole);
    text = whole.str();
  }
  EXPECT_TRUE(written[0] == written[1]);
  EXPECT_GT(written[0].size(), 2 * deepList.size() + 2 * deepSelect.size());
}

TEST(HostileDepth, ReadingReplacesADeepPopulation) {
  CapturedLog log;
  ExpFile file;
  for (int i = 0; i < 3; ++i) {
    std::istringstream in(FileOf("#1=POINT('p'," + Times(kMillion, "(") + Times(kMillion, ")") + ");"));
    file.Read(in);
    EXPECT_NE(file.GetEntity(1), nullptr);
  }
}

}  // namespace
