// The instances of a file as they stand in the text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "WrittenInstances.h"

namespace velmar {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string Shown(const WrittenRecord& record, std::size_t begin, std::size_t end) {
  std::string text;
  for (std::size_t at = begin; at < end; at = record.values[at].end) {
    const WrittenValue& value = record.values[at];
    if (at > begin) text += ",";
    switch (value.kind) {
      case WrittenValue::Kind::Integer:
        text += "i" + value.text;
        break;
      case WrittenValue::Kind::Real:
        text += "r" + value.text;
        break;
      case WrittenValue::Kind::String:
        text += "s" + value.text;
        break;
      case WrittenValue::Kind::Binary:
        text += "b" + value.text;
        break;
      case WrittenValue::Kind::Enumeration:
        text += "e" + value.text;
        break;
      case WrittenValue::Kind::Reference:
        text += "#" + value.text;
        break;
      case WrittenValue::Kind::Unset:
        text += "$";
        break;
      case WrittenValue::Kind::Omitted:
        text += "*";
        break;
      case WrittenValue::Kind::Aggregate:
      case WrittenValue::Kind::Typed:
        text += value.text + "(" + Shown(record, at + 1, value.end) + ")" + std::to_string(value.elements);
        break;
    }
  }
  return text;
}

// Each instance as "line:column number type(values)".
std::vector<std::string> Read(const std::string& text, ValuesRead wanted = ValuesRead::All) {
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  std::vector<std::string> found;
  WrittenInstance instance;
  while (reader.Read(instance, wanted)) {
    std::string line = std::to_string(instance.where.line) + ":" + std::to_string(instance.where.column) + " " +
                       std::to_string(instance.number) + (instance.isComplex ? " complex" : "");
    for (const WrittenRecord& record : instance.records) {
      line += " " + record.type + "(" + (wanted == ValuesRead::All ? Shown(record, 0, record.values.size()) : "") + ")";
      if (wanted == ValuesRead::All) line += std::to_string(record.parameters);
    }
    found.push_back(line);
  }
  return found;
}

std::string InFile(const std::string& data, const std::string& header = "") {
  return "ISO-10303-21;\nHEADER;\n" + header + "ENDSEC;\nDATA;\n" + data + "ENDSEC;\nEND-ISO-10303-21;\n";
}

TEST(WrittenInstances, HaveTheirValuesInTheOrderOfTheText) {
  EXPECT_THAT(Read(InFile("#1=A(1,-2.5,'it''s',\"0F\",.T.,#3,$,*);\n")),
              ElementsAre("5:1 1 A(i1,r-2.5,sit''s,b0F,eT,#3,$,*)8"));
}

TEST(WrittenInstances, HaveValuesWithinValues) {
  EXPECT_THAT(Read(InFile("#1=A((),(1,(2,3)),L(4),M(N((5,$))));\n")), ElementsAre("5:1 1 A(()0,(i1,(i2,i3)2)2,L(i4)1,M(N((i5,$)2)1)1)4"));
  EXPECT_THAT(Read(InFile("#1=A();\n#2=!MINE(!OWN(1));\n")), ElementsAre("5:1 1 A()0", "6:1 2 !MINE(!OWN(i1)1)1"));
}

TEST(WrittenInstances, MayBeComplex) {
  EXPECT_THAT(Read(InFile("#7=(A(1)B()\nC(2,3));\n#8=(A(1));\n")),
              ElementsAre("5:1 7 complex A(i1)1 B()0 C(i2,i3)2", "7:1 8 complex A(i1)1"));
}

TEST(WrittenInstances, OfTheHeaderHaveNoNumber) {
  EXPECT_THAT(Read(InFile("#1=A();\n", "FILE_NAME('a',$);\n  FILE_SCHEMA(('S'));\n")),
              ElementsAre("3:1 -1 FILE_NAME(sa,$)2", "4:3 -1 FILE_SCHEMA((sS)1)1", "7:1 1 A()0"));
}

TEST(WrittenInstances, OfAScopeComeBeforeTheirOwner) {
  EXPECT_THAT(Read(InFile("#1=&SCOPE\n#2=B();\nENDSCOPE/#2/A(#2);\n#3=C();\n")),
              ElementsAre("6:1 2 B()0", "5:1 1 A(#2)1", "8:1 3 C()0"));
}

TEST(WrittenInstances, WithMistakesArePassedOver) {
  for (const char* mistake : {"#1=A(1;", "#1=A(1,);", "#1=A(,1);", "#1=A(1 2);", "#1=A(1)(2);", "#1=A(.T);", "#1=A(L);",
                              "#1=(A(1)B;", "#1=(A(1);", "#1=;", "#1 A();", "#1=A((1);", "#1=a(1);", "#1=A('x);"}) {
    if (std::string(mistake).find('\'') != std::string::npos) continue;
    EXPECT_THAT(Read(InFile(std::string(mistake) + "\n#2=B();\n")), ElementsAre("6:1 2 B()0")) << mistake;
  }
  EXPECT_THAT(Read(InFile("#1=A('x);\n#2=B();\n")), IsEmpty());  // the string does not end
}

TEST(WrittenInstances, OfHugeNumbersHaveTheGreatest) {
  EXPECT_THAT(Read(InFile("#9223372036854775806=A();#9223372036854775808=A();#99999999999999999999999=A();\n")),
              ElementsAre("5:1 9223372036854775806 A()0", "5:26 9223372036854775807 A()0", "5:51 9223372036854775807 A()0"));
}

TEST(WrittenInstances, AreReadWithoutTheirValues) {
  EXPECT_THAT(Read(InFile("#1=A((1),L(2));\n#2=(A(1)B());\n"), ValuesRead::None),
              ElementsAre("5:1 1 A()", "6:1 2 complex A() B()"));
}

// Each value as "line:column of parameter: text".
std::vector<std::string> Values(const std::string& data, ValuesRead wanted) {
  const std::string text = InFile(data, "FILE_NAME('a');\n");
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  std::vector<std::string> found;
  WrittenInstance instance;
  while (reader.ReadAny(instance, wanted)) {
    for (const WrittenRecord& record : instance.records) {
      for (const WrittenValue& value : record.values) {
        found.push_back(std::to_string(value.where.line) + ":" + std::to_string(value.where.column) + " of " +
                        std::to_string(value.parameter) + ": " + value.text);
      }
    }
  }
  return found;
}

TEST(WrittenInstances, MayBeReadWithTheirReferencesAndRealNumbersAlone) {
  EXPECT_THAT(Values("#1=A(1,'x',#2,(3.5,(.T.,#4),$),L(M(6.E2)),*,#5);\n#2=(A(\"0\",-0.)B()C(#7));\n", ValuesRead::Numerals),
              ElementsAre("3:11 of 0: a", "6:12 of 2: 2", "6:16 of 3: 3.5", "6:25 of 3: 4", "6:36 of 4: 6.E2", "6:45 of 6: 5", "7:11 of 1: -0.",
                          "7:20 of 0: 7"));
  EXPECT_THAT(Values("#1=A('x',2.5,#3;\n#2=A(#4);\n", ValuesRead::Numerals),
              ElementsAre("3:11 of 0: a", "6:10 of 1: 2.5", "6:14 of 2: 3", "7:6 of 0: 4"));
}

TEST(WrittenInstances, KnowTheParametersOfTheirValues) {
  EXPECT_THAT(Values("#1=A(1,(2,(3)),L(4),5);\n", ValuesRead::All),
              ElementsAre("3:11 of 0: a", "6:6 of 0: 1", "6:8 of 1: ", "6:9 of 1: 2", "6:11 of 1: ", "6:12 of 1: 3", "6:16 of 2: L", "6:18 of 2: 4",
                          "6:21 of 3: 5"));
}

TEST(WrittenInstances, HaveTextsOfBytesOrOfUtf8) {
  EXPECT_THAT(Read(InFile("#1=A('\xE4');\n")), ElementsAre("5:1 1 A(s\xE4)1"));
  EXPECT_THAT(Read("\xEF\xBB\xBF" + InFile("#1=A('\xC3\xA4\xE2\x82\xAC');\n")),
              ElementsAre("5:1 1 A(s\xC3\xA4\xE2\x82\xAC)1"));
}

TEST(WrittenInstances, MayBeNestedWithoutLimit) {
  constexpr std::size_t kLevels = 100000;
  const std::string text = InFile("#1=A(" + std::string(kLevels, '(') + std::string(kLevels, ')') + ");\n#2=B();\n");
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  WrittenInstance instance;
  ASSERT_TRUE(reader.Read(instance));
  EXPECT_EQ(instance.records.front().values.size(), kLevels);
  ASSERT_TRUE(reader.Read(instance));
  EXPECT_EQ(instance.number, 2);
}

TEST(WrittenInstances, SayWhereTheirRecordsStand) {
  const std::string text = InFile("#1 = A(1,\n 2 ) ;\n#2=( A(1) B((2)) );#3=&SCOPE #4=C();ENDSCOPE D();\n", "FILE_NAME('a');\n");
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  WrittenInstance instance;
  std::vector<std::string> texts;
  while (reader.Read(instance)) {
    texts.push_back(text.substr(static_cast<std::size_t>(instance.begin), static_cast<std::size_t>(instance.end - instance.begin)));
  }
  EXPECT_THAT(texts, ElementsAre("FILE_NAME('a')", "A(1,\n 2 )", "( A(1) B((2)) )", "C()", "D()"));
}

TEST(WrittenInstances, SayWhereARecordEnds) {
  const std::string text = InFile("#1=A(1,\n 2 );\n");
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  WrittenInstance instance;
  ASSERT_TRUE(reader.Read(instance));
  EXPECT_EQ(instance.records.front().where.column, 4);
  EXPECT_EQ(instance.records.front().end.line, 6);
  EXPECT_EQ(instance.records.front().end.column, 4);
  EXPECT_EQ(instance.records.front().values[1].where.column, 2);
}

// Each instance as "number type(values)", with `!` behind those that have mistakes.
std::vector<std::string> ReadAny(const std::string& text) {
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  InstanceReader reader(scanner);
  std::vector<std::string> found;
  WrittenInstance instance;
  while (reader.ReadAny(instance)) {
    std::string line = std::to_string(instance.number);
    for (const WrittenRecord& record : instance.records) line += " " + record.type + "(" + Shown(record, 0, record.values.size()) + ")";
    found.push_back(line + (instance.isWhole ? "" : "!"));
  }
  return found;
}

TEST(WrittenInstances, WithMistakesAreReadToTheMistakeWhereThatIsWanted) {
  EXPECT_THAT(ReadAny(InFile("#1=A(1,2,3);\n#2=A(4,,5);\n#3=;\n#4=A;\n#5=(A(1)B(2;\n#6=A(7)\n#7=A();\n#8=B();\n")),
              ElementsAre("1 A(i1,i2,i3)", "2 A(i4)!", "3 ()!", "4 A()!", "5 A(i1) B(i2)!", "6 A(i7)!", "8 B()"));
  EXPECT_THAT(ReadAny(InFile("#1=&SCOPE #2=B(; ENDSCOPE A;\n")), ElementsAre("2 B()!", "1 A()!"));
}

TEST(WrittenInstances, AreMistakesWhereTheyAreComplexAndHaveNoRecord) {
  EXPECT_EQ(ReadAny("DATA;#1=();#2=(A());"), (std::vector<std::string>{"1!", "2 A()"}));
}

TEST(InstanceNumber, IsTheGreatestForAllThatAreGreater) {
  const auto numberOf = [](const std::string& digits) { return InstanceNumber(digits.data(), digits.data() + digits.size()); };
  EXPECT_EQ(numberOf("0"), 0);
  EXPECT_EQ(numberOf("007"), 7);
  EXPECT_EQ(numberOf("1073741824"), 1073741824);
  EXPECT_EQ(numberOf("9223372036854775807"), 9223372036854775807);
  EXPECT_EQ(numberOf("9223372036854775808"), 9223372036854775807);
  EXPECT_EQ(numberOf("99999999999999999999999"), 9223372036854775807);
}

}  // namespace
}  // namespace velmar
