// The parser: sections, instances, every kind of parameter, and what follows a syntax error.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <list>
#include <locale>
#include <new>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpCustomEntities.h"
#include "ExpRuntimeRegistry.h"
#include "Parser.h"
#include "ReadingSupport.h"
#include "Scanner.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using reading::AllSources;
using reading::kByteOrderMark;
using reading::NameOf;
using reading::ScannerOver;
using reading::Source;
using reading::Utf8;
using testing::ElementsAre;
using testing::IsEmpty;
using VELMAR::TestData::AllKinds;
using VELMAR::TestData::CapturedLog;
using VELMAR::TestData::Node;
using VELMAR::TestData::Point;
using VELMAR::TestData::TestProvider;

const char kHead[] = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('TEST'));\nENDSEC;\nDATA;\n";
const char kTail[] = "ENDSEC;\nEND-ISO-10303-21;\n";

std::string FileOf(const std::string& instances) { return kHead + instances + "\n" + kTail; }

// Parses a text into a provider and returns the number of errors.
int Parse(const std::string& text, ExpAbstractObjectProvider& provider, int offset = 0,
          bool skipHeader = false, Source source = Source::Memory) {
  ScannerOver scanner(text, source);
  Parser parser(scanner.Get());
  parser.SetProvider(&provider);
  parser.SetInstanceNumberOffset(offset);
  parser.SetSkipHeader(skipHeader);
  parser.Parse();
  return parser.GetErrors().count;
}

// What has been read from the instances of a DATA section.
struct ReadData {
  explicit ReadData(const std::string& instances, int offset = 0) {
    errors = Parse(FileOf(instances), provider, offset);
  }

  template <class T>
  T* Get(int number) {
    T* entity = dynamic_cast<T*>(provider.GetEntity(number));
    if (entity == nullptr) throw std::logic_error("no such instance: #" + std::to_string(number));
    return entity;
  }
  std::string Text() {
    std::ostringstream out;
    provider.Write(out);
    return out.str();
  }

  TestProvider provider;
  CapturedLog log;
  int errors = -1;
};

// --------------------------------------------------------------------------- files with their logs

// Files of data/: an input, then the lines that reading it logs, then, unless it is left out, the population.
struct DataFile {
  std::string input;
  std::string log;
  bool hasPopulation = false;
  std::string population;

  explicit DataFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::string logMark = "==== log\n";
    const std::string populationMark = "==== population\n";
    const std::size_t logAt = text.find(logMark);
    if (logAt == std::string::npos) throw std::logic_error("no log in " + path.string());
    input = text.substr(0, logAt);
    const std::size_t populationAt = text.find(populationMark);
    hasPopulation = populationAt != std::string::npos;
    log = text.substr(logAt + logMark.size(),
                      hasPopulation ? populationAt - logAt - logMark.size() : std::string::npos);
    if (hasPopulation) population = text.substr(populationAt + populationMark.size());
  }
};

std::vector<std::filesystem::path> DataFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(VELMAR_TEST_DATA)) {
    if (entry.path().extension() == ".stp") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

class ParserDataFile : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(ParserDataFile, GivesItsLogAndPopulation) {
  const DataFile file(GetParam());
  for (const Source source : AllSources()) {
    for (const char* mark : {"", kByteOrderMark}) {
      SCOPED_TRACE(NameOf(source) + (*mark == '\0' ? "" : " with byte order mark"));
      TestProvider provider;
      CapturedLog log;
      const int errors = Parse(mark + file.input, provider, 0, false, source);
      EXPECT_EQ(log.text, file.log);
      EXPECT_EQ(errors, static_cast<int>(log.lines.size()));
      if (file.hasPopulation) {
        std::ostringstream out;
        provider.Write(out);
        EXPECT_EQ(out.str(), file.population);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Data, ParserDataFile, testing::ValuesIn(DataFiles()),
                         [](const auto& info) { return info.param.stem().string(); });

// ------------------------------------------------------------------------------ values and setters

// A value that notes every call.
class NotedAttribute : public ExpAttribute {
 public:
  ~NotedAttribute() override {
    for (ExpAttribute* value : values) delete value;
  }
  void SetNotProvided(bool flag) override {
    calls.push_back(flag ? "SetNotProvided" : "SetNotProvided(false)");
  }
  void SetOmitted(bool flag) override { calls.push_back(flag ? "SetOmitted" : "SetOmitted(false)"); }
  void SetExpReal(double value) override {
    std::ostringstream out;
    out << "SetExpReal " << value;
    calls.push_back(out.str());
  }
  void SetExpInteger(int value) override { calls.push_back("SetExpInteger " + std::to_string(value)); }
  void SetExpString(std::string text) override { calls.push_back("SetExpString " + text); }
  void SetExpLink(int number) override { calls.push_back("SetExpLink " + std::to_string(number)); }
  void AddValue(ExpAttribute* value) override {
    values.push_back(value);
    calls.push_back("AddValue");
  }
  void SetExpEnumeration(const std::string& name) override { calls.push_back("SetExpEnumeration " + name); }
  void AddExpSelectTypeName(std::string name) override { calls.push_back("AddExpSelectTypeName " + name); }
  std::string ToString() override { return "noted"; }

  std::vector<std::string> calls;
  std::vector<ExpAttribute*> values;
};

class Nine : public ExpEntity {
 public:
  static ExpEntity* New() { return new Nine; }
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override { return index >= 0 && index < 9 ? &members[index] : nullptr; }
  NotedAttribute members[9];
};

// A provider whose one type NINE has nine noted attributes; the test's other types come from the test schema.
class NineProvider : public TestProvider {
 public:
  ExpEntity* CreateEntity(const std::string& typeName) override {
    static ExpEntityRuntimeType* const type = new ExpEntityRuntimeType(
        "NINE", "PARSER_TEST", &Nine::New, 9, 0, 0, false, new std::vector<std::string>,
        new std::vector<std::string>,
        new std::vector<std::string>{"m0", "m1", "m2", "m3", "m4", "m5", "m6", "m7", "m8"}, 0);
    static const bool registered =
        (ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(type, ""), true);
    if (registered && typeName == "NINE") {
      askedTypes.push_back(typeName);
      return type->CreateInstance(static_cast<int>(GetAdminId()));
    }
    return TestProvider::CreateEntity(typeName);
  }
  Nine* First(int number = 1) { return dynamic_cast<Nine*>(GetEntity(number)); }
};

TEST(Parser, ARecordOfEveryKindReachesItsNineAttributes) {
  for (const int offset : {0, 1000}) {
    NineProvider provider;
    CapturedLog log;
    EXPECT_EQ(Parse(FileOf("#1=NINE(1,2.5,'a''''b',#7,$,*,.T.,(1,2),\"3FA\");"), provider, offset), 0);
    Nine* nine = provider.First(1 + offset);
    ASSERT_NE(nine, nullptr);
    EXPECT_THAT(nine->members[0].calls, ElementsAre("SetExpInteger 1"));
    EXPECT_THAT(nine->members[1].calls, ElementsAre("SetExpReal 2.5"));
    EXPECT_THAT(nine->members[2].calls, ElementsAre("SetExpString a''''b"));
    EXPECT_THAT(nine->members[3].calls, ElementsAre("SetExpLink " + std::to_string(7 + offset)));
    EXPECT_THAT(nine->members[4].calls, ElementsAre("SetNotProvided"));
    EXPECT_THAT(nine->members[5].calls, ElementsAre("SetOmitted"));
    EXPECT_THAT(nine->members[6].calls, ElementsAre("SetExpEnumeration T"));
    EXPECT_THAT(nine->members[7].calls, ElementsAre("AddValue", "AddValue"));
    ASSERT_EQ(nine->members[7].values.size(), 2u);
    for (int i = 0; i < 2; ++i) {
      const auto* integer = dynamic_cast<ExpInteger*>(nine->members[7].values[static_cast<std::size_t>(i)]);
      ASSERT_NE(integer, nullptr);
      EXPECT_EQ(const_cast<ExpInteger*>(integer)->GetExpInteger(), i + 1);
    }
    EXPECT_THAT(nine->members[8].calls, IsEmpty());
    EXPECT_THAT(log.lines, IsEmpty());
  }
}

struct ArgCase {
  const char* name;
  std::string parameter;
  std::vector<std::string> calls;
};
std::ostream& operator<<(std::ostream& os, const ArgCase& c) { return os << c.parameter; }

class ParserParameter : public testing::TestWithParam<ArgCase> {};

TEST_P(ParserParameter, CallsTheSettersOfItsAttribute) {
  NineProvider provider;
  CapturedLog log;
  EXPECT_EQ(Parse(FileOf("#1=NINE($," + GetParam().parameter + ",*);"), provider, 100), 0);
  Nine* nine = provider.First(101);
  ASSERT_NE(nine, nullptr);
  EXPECT_EQ(nine->members[1].calls, GetParam().calls);
  EXPECT_THAT(nine->members[0].calls, ElementsAre("SetNotProvided"));
  EXPECT_THAT(nine->members[2].calls, ElementsAre("SetOmitted"));
  for (int i = 3; i < 9; ++i) EXPECT_THAT(nine->members[i].calls, IsEmpty());
  EXPECT_THAT(log.lines, IsEmpty());
}

using Calls = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(
    Forms, ParserParameter,
    testing::Values(
        ArgCase{"Integer", "7", {"SetExpInteger 7"}}, ArgCase{"SignedInteger", "-7", {"SetExpInteger -7"}},
        ArgCase{"PlusInteger", "+7", {"SetExpInteger 7"}},
        ArgCase{"LeadingZerosAreDecimal", "010", {"SetExpInteger 10"}},
        ArgCase{"Real", "2.5", {"SetExpReal 2.5"}}, ArgCase{"RealWithoutFraction", "-3.", {"SetExpReal -3"}},
        ArgCase{"RealWithExponent", "1.5e-3", {"SetExpReal 0.0015"}},
        ArgCase{"String", "'abc'", {"SetExpString abc"}}, ArgCase{"EmptyString", "''", {"SetExpString "}},
        ArgCase{"StringWithDoubledApostrophes", "'''a'''", {"SetExpString ''a''"}},
        ArgCase{"StringWithEscapesRaw",
                "'\\X\\E9\\\\\\X2\\03A9\\X0\\'",
                {"SetExpString \\X\\E9\\\\\\X2\\03A9\\X0\\"}},
        ArgCase{"Reference", "#7", {"SetExpLink 107"}}, ArgCase{"NotProvided", "$", {"SetNotProvided"}},
        ArgCase{"Omitted", "*", {"SetOmitted"}},
        ArgCase{"Enumeration", ".RED_2.", {"SetExpEnumeration RED_2"}},
        ArgCase{"EnumerationWithBlanks", ". RED .", {"SetExpEnumeration RED"}},
        ArgCase{"Binary", "\"3FA\"", {}},
        ArgCase{"Typed", "LABEL('x')", {"AddExpSelectTypeName LABEL", "SetExpString x"}},
        ArgCase{"TypedUserDefined", "!LABEL(1)", {"AddExpSelectTypeName LABEL", "SetExpInteger 1"}},
        ArgCase{"TypedReal", "L(1.5)", {"AddExpSelectTypeName L", "SetExpReal 1.5"}},
        ArgCase{"TypedReference", "L(#5)", {"AddExpSelectTypeName L", "SetExpLink 105"}},
        ArgCase{"TypedNotProvided", "L($)", {"AddExpSelectTypeName L", "SetNotProvided"}},
        ArgCase{"TypedOmitted", "L(*)", {"AddExpSelectTypeName L", "SetOmitted"}},
        ArgCase{"TypedEnumeration", "L(.T.)", {"AddExpSelectTypeName L", "SetExpEnumeration T"}},
        ArgCase{"TypedBinary", "L(\"0\")", {"AddExpSelectTypeName L"}},
        ArgCase{"TypedList", "L((1,2))", {"AddExpSelectTypeName L", "AddValue", "AddValue"}},
        ArgCase{"TypedTyped",
                "A(B(!C(1)))",
                {"AddExpSelectTypeName A", "AddExpSelectTypeName B", "AddExpSelectTypeName C",
                 "SetExpInteger 1"}},
        ArgCase{"EmptyList", "()", {}}, ArgCase{"EmptyListWithBlank", "( )", {}},
        ArgCase{"List", "(1,'a',#2)", {"AddValue", "AddValue", "AddValue"}},
        ArgCase{"ListOfNothingThatIsKept", "($,*,.E.,\"0\")", {}},
        ArgCase{"CommentsAround", "/* a */1/* b */", {"SetExpInteger 1"}}),
    [](const auto& info) { return std::string(info.param.name); });

struct ListCase {
  const char* name;
  std::string list;
  std::string printed;
};
std::ostream& operator<<(std::ostream& os, const ListCase& c) { return os << c.list; }

class ParserList : public testing::TestWithParam<ListCase> {};

TEST_P(ParserList, GivesItsElements) {
  ReadData read("#1=POINT('p'," + GetParam().list + ");", 100);
  EXPECT_EQ(read.errors, 0);
  EXPECT_EQ(read.Get<Point>(101)->coordinates.ToString(), GetParam().printed);
  EXPECT_THAT(read.log.lines, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ParserList,
    testing::Values(
        ListCase{"Empty", "()", "()"}, ListCase{"Integers", "(1,-2)", "(1, -2)"},
        ListCase{"Reals", "(1.,2.5E3)", "(1., 2500.)"},
        ListCase{"Strings", "('a','It''s','\\X\\E9')", "('a', 'It''s', '\\X\\E9')"},
        ListCase{"References", "(#1,#2)", "(#101, #102)"},
        ListCase{"OnlyValuesAreKept", "(1,$,*,.E.,2)", "(1, 2)"}, ListCase{"NotProvided", "($)", "()"},
        ListCase{"Omitted", "(*)", "()"}, ListCase{"Enumerations", "(.A.,.B.)", "()"},
        ListCase{"Binaries", "(\"0\",\"1F\")", "()"}, ListCase{"NestedEmpty", "(())", "(())"},
        ListCase{"Nested", "((1,2),(),((3)),4)", "((1, 2), (), ((3)), 4)"},
        ListCase{"NestedDropsToo", "(($,1),(*,.E.))", "((1), ())"},
        ListCase{"NestedReferences", "((#1))", "((#101))"}, ListCase{"Typed", "(L(1),2)", "(L(1), 2)"},
        ListCase{"TypedReal", "(L(1.5))", "(L(1.5))"}, ListCase{"TypedString", "(L('x'))", "(L('x'))"},
        ListCase{"TypedReference", "(L(#5))", "(L(#105))"}, ListCase{"TypedUserDefined", "(!L(1))", "(L(1))"},
        ListCase{"TypedNotProvided", "(L($))", "($)"},
        ListCase{"TypedTyped", "(A(B(C(1.5))))", "(A(B(C(1.5))))"},
        ListCase{"TypedTypedNotProvided", "(A(B($)))", "($)"},
        ListCase{"TypedInNested", "((L(1)),(M(2)))", "((L(1)), (M(2)))"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Parser, AnAggregateOfTwoIntegersHasTwoIntegers) {
  ReadData read("#1=POINT('p',(1,$,*,.E.,2));");
  auto* elements = read.Get<Point>(1)->coordinates.GetExpAggregation();
  ASSERT_EQ(elements->size(), 2u);
  EXPECT_NE(dynamic_cast<ExpInteger*>(elements->front()), nullptr);
  EXPECT_NE(dynamic_cast<ExpInteger*>(elements->back()), nullptr);
}

TEST(Parser, ElementsAreOfTheirKinds) {
  ReadData read("#1=POINT('p',(1,2.,'c',#4,(5),T(6)));");
  std::vector<ExpAttribute*> elements(read.Get<Point>(1)->coordinates.GetExpAggregation()->begin(),
                                      read.Get<Point>(1)->coordinates.GetExpAggregation()->end());
  ASSERT_EQ(elements.size(), 6u);
  EXPECT_NE(dynamic_cast<ExpInteger*>(elements[0]), nullptr);
  EXPECT_NE(dynamic_cast<ExpReal*>(elements[1]), nullptr);
  EXPECT_NE(dynamic_cast<ExpString*>(elements[2]), nullptr);
  EXPECT_NE(dynamic_cast<ExpLink*>(elements[3]), nullptr);
  EXPECT_NE(dynamic_cast<ExpAggregation*>(elements[4]), nullptr);
  EXPECT_NE(dynamic_cast<ExpSelect*>(elements[5]), nullptr);
}

// Typed elements whose value has no effect: the select is there, without value.
class ParserDroppedElementValue : public testing::TestWithParam<std::string> {};

TEST_P(ParserDroppedElementValue, LeavesATypedElementWithoutValue) {
  ReadData read("#1=POINT('p',(L(" + GetParam() + "),7));");
  EXPECT_EQ(read.errors, 0);
  auto* elements = read.Get<Point>(1)->coordinates.GetExpAggregation();
  ASSERT_EQ(elements->size(), 2u);
  auto* select = dynamic_cast<ExpSelect*>(elements->front());
  ASSERT_NE(select, nullptr);
  EXPECT_EQ(select->GetExpSelectValue(), nullptr);
  EXPECT_FALSE(select->IsNotProvided());
  EXPECT_FALSE(select->IsOmitted());
  EXPECT_TRUE(select->CheckType("L"));
  EXPECT_EQ(elements->back()->GetExpInteger(), 7);
}

INSTANTIATE_TEST_SUITE_P(Values, ParserDroppedElementValue,
                         testing::Values("*", ".E.", "\"0F\"", "()", "(1,2)", "(1,2.,'a',#1,\"0\",$,*,.E.)",
                                         "((1),('a',()))", "(U(1),U('b'),!U(V(#2)),U((1,'c')))", "M(*)",
                                         "M(.E.)", "M((1))"));

TEST(Parser, TheTypeNamesOfANestedTypedElementAreAddedInTurn) {
  ReadData read("#1=POINT('p',(A(B(*))));");
  auto* select = dynamic_cast<ExpSelect*>(read.Get<Point>(1)->coordinates.GetExpAggregation()->front());
  ASSERT_NE(select, nullptr);
  select->SetExpInteger(1);
  EXPECT_EQ(select->ToString(), "A(B(1))");
}

TEST(Parser, ATypedParameterOfASelectKeepsEveryKindOfValue) {
  ReadData read(
      "#1=NODE('n',$,(),L(1));#2=NODE('n',$,(),L(1.5));#3=NODE('n',$,(),L('x'));#4=NODE('n',$,(),L(#1));"
      "#5=NODE('n',$,(),L(.E.));#6=NODE('n',$,(),L((1,(2),'c')));#7=NODE('n',$,(),#3);#8=NODE('n',$,(),(1,2))"
      ";");
  EXPECT_EQ(read.errors, 0);
  const char* const expected[] = {"L(1)",   "L(1.5)",           "L('x')", "L(#1)",
                                  "L(.E.)", "L((1, (2), 'c'))", "#3",     "(1, 2)"};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(read.Get<Node>(i + 1)->choice.ToString(), expected[i]);
}

TEST(Parser, LogicalsBooleansAndEnumerationsAreSetByName) {
  ReadData read("#1=ALL_KINDS(1,2,'t',#1,(),.BLUE.,.U.,.T.,$);");
  EXPECT_EQ(read.errors, 0);
  auto* all = read.Get<AllKinds>(1);
  EXPECT_EQ(all->real.GetExpReal(), 1.0);
  EXPECT_EQ(all->integer.GetExpInteger(), 2);
  EXPECT_EQ(all->colour.GetExpEnumerationString(), "BLUE");
  EXPECT_EQ(all->logical.GetExpEnumeration(), 2);
  EXPECT_TRUE(all->boolean.GetAsBool());
  EXPECT_TRUE(all->choice.IsNotProvided());
}

// -------------------------------------------------------------------------------------- exceptions

struct GivenUp {
  const char* name;
  std::string record;
  std::string rest;  // the text from where the record is given up
};
std::ostream& operator<<(std::ostream& os, const GivenUp& c) { return os << c.record; }

class ParserExceptionInARecord : public testing::TestWithParam<GivenUp> {};

TEST_P(ParserExceptionInARecord, GivesUpTheRestAddsTheEntityAndReportsOnce) {
  ReadData read(GetParam().record + "\n#2=A(3,4);");
  const std::size_t col = GetParam().record.rfind(GetParam().rest) + 1;
  EXPECT_THAT(read.log.lines, ElementsAre("-- line 6 col " + std::to_string(col) +
                                          ": this symbol not expected in entityInstance"));
  EXPECT_EQ(read.errors, 1);
  ASSERT_NE(read.provider.GetEntity(1), nullptr);
  EXPECT_EQ(read.provider.GetEntity(1)->GetEntityNumber(), 1);
  EXPECT_NE(read.provider.GetEntity(2), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParserExceptionInARecord,
    testing::Values(GivenUp{"StringForAnInteger", "#1=A('x',2);", ",2);"},
                    GivenUp{"RealForAnInteger", "#1=A(1,2.5);", ");"},
                    GivenUp{"ReferenceForAnInteger", "#1=A(#7,2);", ",2);"},
                    GivenUp{"EnumerationForAnInteger", "#1=A(.T.,2);", ",2);"},
                    GivenUp{"ListForAnInteger", "#1=A((1,2),3);", ",2),3);"},
                    GivenUp{"IntegerForAString", "#1=POINT(1,());", ",());"},
                    GivenUp{"IntegerForAList", "#1=POINT('p',1);", ");"},
                    GivenUp{"StringForAReference", "#1=NODE('n','x',(),$);", ",(),$);"},
                    GivenUp{"UnknownItem", "#1=LIBRARY_KINDS(1.,$,.PINK.);", ");"},
                    GivenUp{"UnknownLogical", "#1=ALL_KINDS(1.,2,'t',#1,(),.B.,.X.,.T.,$);", ",.T.,$);"},
                    GivenUp{"UnknownBoolean", "#1=ALL_KINDS(1.,2,'t',#1,(),.B.,.T.,.U.,$);", ",$);"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Parser, AnExceptionKeepsWhatWasSetBeforeIt) {
  ReadData read("#1=B(1,'x','y');");
  EXPECT_EQ(read.Text(), "#1 = B(1, 0, '');\n");
}

TEST(Parser, AnExceptionFromATypeNameGivesUpTheRecord) {
  ReadData read("#1=A(1,T(2));\n#2=A(3,4);");
  ASSERT_EQ(read.log.lines.size(), 1u);
  EXPECT_THAT(read.log.lines[0], testing::HasSubstr(": this symbol not expected in entityInstance"));
  EXPECT_EQ(read.Text(), "#1 = A(1, 0);\n#2 = A(3, 4);\n");
}

TEST(Parser, AnExceptionFromANestedListGivesUpTheRecord) {
  ReadData read("#1=A(((1,2),3),4);\n#2=A(((T(1))),4);\n#3=A((T(1)),4);\n#4=A(3,4);");
  EXPECT_EQ(read.errors, 3);
  EXPECT_EQ(read.Text(), "#1 = A(0, 0);\n#2 = A(0, 0);\n#3 = A(0, 0);\n#4 = A(3, 4);\n");
}

// --------------------------------------------------------------------------------- what is dropped

TEST(Parser, EveryParameterOfAnUnknownTypeIsReadAndDropped) {
  ReadData read(
      "#1=UNKNOWN(1,2.5,'a',#7,$,*,.T.,(1,2.,'b',#3,(4,'c'),T(5),$,*,.E.,\"0\"),\"3FA\",L(1),L(M('x')),L((1,'"
      "d')),"
      "(T((1,'e',(2),U('f')))));#2=A(1,2);");
  EXPECT_EQ(read.errors, 0);
  EXPECT_THAT(read.log.lines, IsEmpty());
  EXPECT_EQ(read.Text(), "#2 = A(1, 2);\n");
}

TEST(Parser, ParametersBeyondTheAttributesAreReadAndDropped) {
  ReadData read("#1=A(1,2,3,'a',(1,('b'),T(2)),L(M('x')),\"0\",$,*,.E.);#2=A(3,4);");
  EXPECT_EQ(read.errors, 0);
  EXPECT_THAT(read.log.lines, IsEmpty());
  EXPECT_EQ(read.Text(), "#1 = A(1, 2);\n#2 = A(3, 4);\n");
}

TEST(Parser, AttributesWithoutParameterKeepTheirInitialState) {
  ReadData read("#1=ALL_KINDS(2.5);");
  EXPECT_EQ(read.errors, 0);
  auto* all = read.Get<AllKinds>(1);
  EXPECT_EQ(all->real.GetExpReal(), 2.5);
  EXPECT_EQ(all->link.GetExpLink(), -1);
  EXPECT_FALSE(all->text.IsNotProvided());
  EXPECT_EQ(all->choice.GetExpSelectValue(), nullptr);
}

TEST(Parser, AMemberThatDoesNotExistIsATargetThatDropsItsValue) {
  // Claims more attributes than it has members.
  class Gap : public ExpEntity {
   public:
    static ExpEntity* New() { return new Gap; }
  };
  class GapProvider : public TestProvider {
   public:
    ExpEntity* CreateEntity(const std::string& typeName) override {
      static auto* const type = new ExpEntityRuntimeType(
          "GAP", "PARSER_TEST", &Gap::New, 3, 0, 0, false, new std::vector<std::string>,
          new std::vector<std::string>, new std::vector<std::string>{"a", "b", "c"}, 0);
      static const bool registered =
          (ExpRuntimeRegistry::GetInstance()->RegisterEntityRuntimeType(type, ""), true);
      return registered && typeName == "GAP" ? type->CreateInstance(static_cast<int>(GetAdminId()))
                                             : TestProvider::CreateEntity(typeName);
    }
  } provider;
  EXPECT_EQ(Parse(FileOf("#1=GAP('a',(1,('b')),L('c'));"), provider), 0);
  EXPECT_NE(provider.GetEntity(1), nullptr);
}

// ----------------------------------------------------------------------------------------- numbers

TEST(Parser, TheOffsetIsAddedToInstancesAndReferences) {
  ReadData read("#1=NODE('n',#2,(#3,(#4),L(#5)),M(#6));#2=(A(1,2)NODE('m',#1,(),$));", 100);
  EXPECT_EQ(read.provider.GetEntity(1), nullptr);
  auto* node = read.Get<Node>(101);
  EXPECT_EQ(node->next.GetExpLink(), 102);
  EXPECT_EQ(node->others.ToString(), "(#103, (#104), L(#105))");
  EXPECT_EQ(node->choice.ToString(), "M(#106)");
  auto* complex = read.Get<ExpExternalMappingEntity>(102);
  EXPECT_EQ(dynamic_cast<Node*>(complex->GetEntityByName("NODE"))->next.GetExpLink(), 101);
  EXPECT_EQ(complex->GetEntityByName("A")->GetEntityNumber(), 102);
}

TEST(Parser, WithAnOffsetOf100TheFirstReferenceIs102) {
  ReadData read("#1=NODE('',#2,(),$);", 100);
  EXPECT_EQ(read.Get<Node>(101)->next.GetExpLink(), 102);
}

struct IntegerCase {
  const char* text;
  int value;
};
std::ostream& operator<<(std::ostream& os, const IntegerCase& c) { return os << c.text; }

class ParserInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(ParserInteger, IsTheLowHalfOfASaturated64BitNumber) {
  ReadData read(std::string("#1=POINT('p',(") + GetParam().text + "));#2=A(" + GetParam().text + ",0);");
  EXPECT_EQ(read.errors, 0);
  EXPECT_EQ(read.Get<Point>(1)->coordinates.GetExpAggregation()->front()->GetExpInteger(), GetParam().value);
  EXPECT_EQ(read.Get<VELMAR::TestData::A>(2)->a1.GetExpInteger(), GetParam().value);
  // What strtol says.
  EXPECT_EQ(
      static_cast<int>(static_cast<unsigned int>(std::strtol(GetParam().text, nullptr, 10) & 0xFFFFFFFF)),
      GetParam().value);
}

constexpr int kMost = std::numeric_limits<int>::max();
constexpr int kLeast = std::numeric_limits<int>::min();
INSTANTIATE_TEST_SUITE_P(
    Edges, ParserInteger,
    testing::Values(IntegerCase{"0", 0}, IntegerCase{"-0", 0}, IntegerCase{"+0", 0}, IntegerCase{"00012", 12},
                    IntegerCase{"-0012", -12}, IntegerCase{"999999999", 999999999},
                    IntegerCase{"2147483647", kMost}, IntegerCase{"2147483648", kLeast},
                    IntegerCase{"-2147483648", kLeast}, IntegerCase{"-2147483649", kMost},
                    IntegerCase{"4294967295", -1}, IntegerCase{"4294967296", 0}, IntegerCase{"4294967297", 1},
                    IntegerCase{"9223372036854775806", -2}, IntegerCase{"9223372036854775807", -1},
                    IntegerCase{"9223372036854775808", -1}, IntegerCase{"-9223372036854775807", 1},
                    IntegerCase{"-9223372036854775808", 0}, IntegerCase{"-9223372036854775809", 0},
                    IntegerCase{"18446744073709551617", -1}, IntegerCase{"-18446744073709551617", 0},
                    IntegerCase{"99999999999999999999999999999999999999999999", -1},
                    IntegerCase{"000000000000000000000000000000000000000000000000000000000000000007", 7}));

TEST(Parser, InstanceNumbersAndReferencesAreReadLikeIntegers) {
  ReadData read("#0000007=NODE('n',#4294967303,(#99999999999999999999,#2147483648),#0);#4294967304=A(1,2);");
  EXPECT_EQ(read.errors, 0);
  auto* node = read.Get<Node>(7);
  EXPECT_EQ(node->next.GetExpLink(), 7);
  EXPECT_EQ(node->others.ToString(), "(#-1, #-2147483648)");
  EXPECT_EQ(node->choice.GetExpLink(), 0);
  EXPECT_NE(read.provider.GetEntity(8), nullptr);
}

TEST(Parser, InstanceZeroIsStoredAsSuch) {
  ReadData read("#0=A(1,2);");
  EXPECT_EQ(read.errors, 0);
  ASSERT_NE(read.provider.GetEntity(0), nullptr);
  EXPECT_EQ(read.provider.GetEntity(0)->GetEntityNumber(), 0);
}

TEST(Parser, AnErrorOfTheStoreLeavesParse) {
  TestProvider provider;
  EXPECT_THROW(Parse(FileOf("#1=A(1,2);#1073741824=A(1,2);"), provider), std::length_error);
  EXPECT_NE(provider.GetEntity(1), nullptr);
}

std::uint64_t Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

void ExpectRealsAsStrtod(const std::vector<std::string>& texts) {
  // Once as elements of one list, once as attributes, whose targets are set.
  std::string data = "#1=POINT('p',(";
  for (std::size_t i = 0; i < texts.size(); ++i) data += (i == 0 ? "" : ",") + texts[i];
  data += "));\n";
  for (std::size_t i = 0; i < texts.size(); ++i)
    data += "#" + std::to_string(i + 2) + "=ALL_KINDS(" + texts[i] + ");\n";
  ReadData read(data);
  ASSERT_EQ(read.errors, 0);
  auto* elements = read.Get<Point>(1)->coordinates.GetExpAggregation();
  ASSERT_EQ(elements->size(), texts.size());
  std::size_t i = 0;
  for (ExpAttribute* element : *elements) {
    const double expected = std::strtod(texts[i].c_str(), nullptr);
    ASSERT_EQ(Bits(element->GetExpReal()), Bits(expected)) << texts[i];
    ASSERT_EQ(Bits(read.Get<AllKinds>(static_cast<int>(i) + 2)->real.GetExpReal()), Bits(expected))
        << texts[i];
    ++i;
  }
}

TEST(Parser, RealsAtTheEdgesAreThoseOfStrtod) {
  ExpectRealsAsStrtod({"0.",
                       "-0.",
                       "+0.",
                       "0.0E0",
                       "-0.E99999",
                       "1.",
                       "1.E0",
                       "1.E+00",
                       "1.e-0",
                       "0001.5",
                       "-0001.50000",
                       "1.E308",
                       "1.7976931348623157E308",
                       "1.7976931348623158E308",
                       "1.7976931348623159E308",
                       "1.E309",
                       "-1.E309",
                       "1.E999",
                       "1.E99999999999999999999",
                       "-1.E999",
                       "1.E-999",
                       "-1.E-999",
                       "1.E-99999999999999999999",
                       "2.2250738585072014E-308",
                       "2.2250738585072011E-308",
                       "2.225073858507201E-308",
                       "4.9406564584124654E-324",
                       "4.9E-324",
                       "2.4703282292062327E-324",
                       "2.4703282292062328E-324",
                       "2.4703282292062329E-324",
                       "9007199254740993.",
                       "9007199254740991.",
                       "9007199254740992.5",
                       "0.1",
                       "0.3",
                       "123456789012345678.",
                       "1.00000000000000011102230246251565",
                       "1.00000000000000011102230246251566",
                       "1.00000000000000011102230246251564",
                       "0.000000000000000000000000000000000000000000000001",
                       "10000000000000000000000000000000000000000.",
                       "8.5E-46",
                       "5.E-324",
                       "1.E22",
                       "1.E23",
                       "6.0221409E+23",
                       "179769313486231580793.E289"});
}

TEST(Parser, RealsOfManyDigitsAreThoseOfStrtod) {
  std::vector<std::string> texts;
  for (const int digits : {20, 40, 100, 400, 800, 1200, 5000}) {
    texts.push_back("0." + std::string(static_cast<std::size_t>(digits), '3'));
    texts.push_back("-" + std::string(static_cast<std::size_t>(digits), '7') + ".");
    texts.push_back("0." + std::string(static_cast<std::size_t>(digits), '0') + "1");
    texts.push_back(std::string(static_cast<std::size_t>(digits), '0') + "12.5");
    texts.push_back("1." + std::string(static_cast<std::size_t>(digits), '0') + "1E-5");
    texts.push_back("0." + std::string(static_cast<std::size_t>(digits), '0') + "1E" +
                    std::to_string(digits));
  }
  ExpectRealsAsStrtod(texts);
}

TEST(Parser, TenThousandRandomRealsAreThoseOfStrtod) {
  std::mt19937 random(20240229);
  const auto pick = [&random](int below) {
    return static_cast<int>(random() % static_cast<unsigned int>(below));
  };
  std::vector<std::string> texts;
  for (int i = 0; i < 10000; ++i) {
    std::string text = std::string(1, "+-  "[pick(4)]);
    if (text == " ") text.clear();
    if (i % 4 == 0) {
      // The shortest text that leads back to a random bit pattern.
      double value = 0;
      do {
        std::uint64_t bits = static_cast<std::uint64_t>(random()) << 32 | random();
        bits &= 0x7FFFFFFFFFFFFFFF;
        std::memcpy(&value, &bits, sizeof value);
      } while (!std::isfinite(value));
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%.16E", value);
      text += buffer;
    } else {
      const int before = 1 + pick(i % 4 == 1 ? 4 : 22);
      const int behind = pick(i % 4 == 1 ? 8 : 25);
      for (int d = 0; d < before; ++d) text += static_cast<char>('0' + pick(10));
      text += '.';
      for (int d = 0; d < behind; ++d) text += static_cast<char>('0' + pick(10));
      if (i % 4 == 3) text += std::string(1, "eE"[pick(2)]) + std::to_string(pick(700) - 350);
    }
    texts.push_back(text);
  }
  ExpectRealsAsStrtod(texts);
}

struct CommaLocale : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Parser, NumbersDoNotDependOnTheGlobalLocale) {
  const std::locale before = std::locale::global(std::locale(std::locale::classic(), new CommaLocale));
  std::string text;
  {
    ReadData read("#1234=POINT('p',(1234567,1234.5,#123456,1.5E-7));");
    text = read.Text();
  }
  std::locale::global(before);
  EXPECT_EQ(text, "#1234 = POINT('p', (1234567, 1234.5, #123456, 1.5E-7));\n");
}

// ----------------------------------------------------------------------------------------- strings

std::string NameOfTheFirst(const std::string& bytes, Source source = Source::Memory) {
  TestProvider provider;
  CapturedLog log;
  EXPECT_EQ(Parse(bytes, provider, 0, false, source), 0);
  EXPECT_THAT(log.lines, IsEmpty());
  auto* point = dynamic_cast<Point*>(provider.GetEntity(1));
  return point == nullptr ? "(no instance)" : point->name.GetExpString();
}

TEST(ParserText, EscapesReachTheAttributeDecoded) {
  EXPECT_EQ(NameOfTheFirst(FileOf(
                "#1=POINT('It''s \\\\ \\X\\E9 \\X2\\03A903B1\\X0\\ \\X4\\0001F600\\X0\\ \\S\\a',());")),
            "It's \\ \xC3\xA9 \xCE\xA9\xCE\xB1 \xF0\x9F\x98\x80 \xC3\xA1");
}

TEST(ParserText, RawUtf8StaysUtf8WithoutTheByteOrderMark) {
  const std::string text = Utf8(0xE9) + Utf8(0x4E00) + Utf8(0x1F600) + Utf8(0x10000);
  for (const Source source : AllSources())
    EXPECT_EQ(NameOfTheFirst(FileOf("#1=POINT('" + text + "',());"), source), text);
}

TEST(ParserText, OtherBytesAreTakenAsLatin1) {
  EXPECT_EQ(NameOfTheFirst(FileOf("#1=POINT('caf\xE9',());")), "caf\xC3\xA9");
}

TEST(ParserText, EveryCodePointOfAUtf8FileReachesTheAttribute) {
  std::string text;
  for (const unsigned int c : {0x80u, 0xE9u, 0xFFu, 0x100u, 0x141u, 0x7FFu, 0x800u, 0x4E00u, 0xFFFDu, 0xFFFFu,
                               0x10000u, 0x10001u, 0x1F600u, 0x20027u, 0x10FFFFu}) {
    text += Utf8(c) + "-";
  }
  for (const Source source : AllSources()) {
    EXPECT_EQ(NameOfTheFirst(kByteOrderMark + FileOf("#1=POINT('" + text + "',());"), source), text)
        << NameOf(source);
  }
}

TEST(ParserText, AnEmojiOfAUtf8FileReachesElementsAndTypedValuesToo) {
  const std::string emoji = Utf8(0x1F600);
  TestProvider provider;
  CapturedLog log;
  Parse(kByteOrderMark + FileOf("#1=NODE('',$,('" + emoji + "',L('" + emoji + "')),M('" + emoji + "'));"),
        provider);
  EXPECT_THAT(log.lines, IsEmpty());
  auto* node = dynamic_cast<Node*>(provider.GetEntity(1));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(node->others.ToString(), "('\\X4\\0001F600\\X0\\', L('\\X4\\0001F600\\X0\\'))");
  EXPECT_EQ(node->choice.GetExpString(), emoji);
}

TEST(ParserText, EscapesOfAUtf8FileAreDecodedToo) {
  EXPECT_EQ(NameOfTheFirst(kByteOrderMark + FileOf("#1=POINT('\xC3\xA9\\X\\E9\\X2\\03A9\\X0\\''\\\\',());")),
            "\xC3\xA9\xC3\xA9\xCE\xA9'\\");
}

TEST(ParserText, MalformedUtf8OfAUtf8FileIsDecodedLeniently) {
  // C3 takes the low six bits of what follows, here of "A"; a stray continuation byte is passed over.
  EXPECT_EQ(NameOfTheFirst(kByteOrderMark + FileOf("#1=POINT('x\xC3"
                                                   "Ay\x80z',());")),
            "x" + Utf8(3 * 64 + 1) + "yz");
}

TEST(ParserText, Utf8AcrossABlockBorderStaysWhole) {
  const std::string text = Utf8(0x1F600) + Utf8(0x4E00) + Utf8(0xE9) + "''" + Utf8(0x10FFFF);
  const std::string decoded = Utf8(0x1F600) + Utf8(0x4E00) + Utf8(0xE9) + "'" + Utf8(0x10FFFF);
  for (const char* mark : {"", kByteOrderMark}) {
    const std::string begin = mark + std::string(kHead) + "#1=POINT('";
    for (std::size_t split = 0; split <= text.size(); ++split) {
      const std::string filler(65536 - begin.size() - split - 2, ' ');
      const std::string bytes = mark + filler + begin.substr(std::strlen(mark)) + text + "',());\n" + kTail;
      ASSERT_EQ(NameOfTheFirst(bytes, Source::File), decoded) << split;
    }
  }
}

TEST(ParserText, LineEndsInsideAStringStay) {
  EXPECT_EQ(NameOfTheFirst(FileOf("#1=POINT('a\nb\r\nc',());")), "a\nb\r\nc");
}

TEST(ParserText, ALoneCarriageReturnInsideAStringCountsAsLineFeed) {
  EXPECT_EQ(NameOfTheFirst(FileOf("#1=POINT('a\rb',());")), "a\nb");
}

TEST(ParserText, ANulInsideAStringStays) {
  EXPECT_EQ(NameOfTheFirst(FileOf(std::string("#1=POINT('a\0b',());", 19))), std::string("a\0b", 3));
}

TEST(ParserText, TheLongestStringReachesTheAttributeWhole) {
  const std::string text(32765, 'x');
  EXPECT_EQ(NameOfTheFirst(FileOf("#1=POINT('" + text + "',());")), text);
  std::string wide;
  for (int i = 0; i < 32765; ++i) wide += Utf8(0x4E00);
  EXPECT_EQ(NameOfTheFirst(kByteOrderMark + FileOf("#1=POINT('" + wide + "',());")), wide);
}

TEST(ParserText, ALongerStringEndsTheProcess) {
  const reading::Ended ended = reading::RunInChild([] {
    TestProvider provider;
    Parse(FileOf("#1=POINT('" + std::string(32766, 'x') + "',());"), provider);
  });
  EXPECT_EQ(ended.exitStatus, 1);
  EXPECT_EQ(ended.output, "--- Too long token value\n");
}

// --------------------------------------------------------------------------- calls of the provider

TEST(ParserProvider, IsAskedForEveryRecordInOrder) {
  TestProvider provider;
  Parse(
      "ISO-10303-21;HEADER;FILE_DESCRIPTION(('d'),'1');FILE_NAME('n','t',('a'),('o'),'p','s','z');"
      "FILE_SCHEMA(('S'));ENDSEC;DATA;#1=A(1,2);#2=(A(1,2)B('x'));#3=!UNKNOWN();ENDSEC;END-ISO-10303-21;",
      provider);
  EXPECT_THAT(provider.askedTypes, ElementsAre("FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA", "A",
                                               "ExpExternalMappingEntity", "A", "B", "UNKNOWN"));
}

TEST(ParserProvider, HeaderEntitiesAreNeitherNumberedNorAdded) {
  TestProvider provider;
  Parse(FileOf("#1=A(1,2);"), provider, 50);
  std::list<ExpEntity*> schemas;
  provider.GetEntities(schemas, "FILE_SCHEMA", false);
  ASSERT_EQ(schemas.size(), 1u);
  EXPECT_EQ(schemas.front()->GetEntityNumber(), -1);
  EXPECT_EQ(provider.GetMaxEntityNumber(), 51);
  EXPECT_EQ(provider.GetEntity(0), nullptr);
}

TEST(ParserProvider, HeaderRecordsAreFilled) {
  TestProvider provider;
  Parse(
      "ISO-10303-21;HEADER;FILE_NAME('n\\X\\E9','t',('a','b'),('o'),'p','s','z');ENDSEC;DATA;#1=A(1,2);"
      "ENDSEC;"
      "END-ISO-10303-21;",
      provider);
  std::list<ExpEntity*> names;
  provider.GetEntities(names, "FILE_NAME", false);
  ASSERT_EQ(names.size(), 1u);
  EXPECT_EQ(names.front()->ToString(), "FILE_NAME('n\\X\\E9', 't', ('a', 'b'), ('o'), 'p', 's', 'z');");
}

std::vector<std::string> SchemaNamesOf(const std::string& header) {
  TestProvider provider;
  CapturedLog log;
  Parse("ISO-10303-21;HEADER;" + header + "ENDSEC;DATA;#1=A(1,2);ENDSEC;END-ISO-10303-21;", provider);
  EXPECT_NE(provider.GetEntity(1), nullptr);
  return provider.givenSchemaNames;
}

TEST(ParserProvider, GetsTheFirstSchemaIdentifier) {
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA(('AP242 { 1 0 }'));"), ElementsAre("AP242 { 1 0 }"));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA(('first','second'));"), ElementsAre("first"));
}

TEST(ParserProvider, GetsTheEmptyNameWithoutFileSchema) {
  EXPECT_THAT(SchemaNamesOf("FILE_DESCRIPTION(('d'),'1');"), ElementsAre(""));
}

TEST(ParserProvider, GetsTheEmptyNameWhereFileSchemaHasNoText) {
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA(());"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA($);"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA();"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA(($));"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA((1));"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA(((1)));"), ElementsAre(""));
  EXPECT_THAT(SchemaNamesOf("FILE_SCHEMA('wrong');"), ElementsAre(""));
}

TEST(ParserProvider, GetsTheSchemaBeforeTheFirstInstanceIsCreated) {
  class Watching : public TestProvider {
   public:
    void SetSchemaName(std::string name) override { askedTypes.push_back("schema " + name); }
  } provider;
  Parse(FileOf("#1=A(1,2);"), provider);
  EXPECT_THAT(provider.askedTypes, ElementsAre("FILE_SCHEMA", "schema TEST", "A"));
}

TEST(ParserProvider, SkippingTheHeaderCreatesNoHeaderEntitiesAndLeavesTheSchema) {
  TestProvider provider;
  CapturedLog log;
  EXPECT_EQ(
      Parse("ISO-10303-21;HEADER;FILE_DESCRIPTION(('d'),'1');FILE_NAME('n','t',('a'),('o'),'p','s','z');"
            "FILE_SCHEMA(('S'));ENDSEC;DATA;#1=A(1,2);#2=(A(1,2)B('x'));ENDSEC;END-ISO-10303-21;",
            provider, 10, true),
      0);
  EXPECT_THAT(provider.askedTypes, ElementsAre("A", "ExpExternalMappingEntity", "A", "B"));
  EXPECT_THAT(provider.givenSchemaNames, IsEmpty());
  EXPECT_NE(provider.GetEntity(11), nullptr);
  EXPECT_NE(provider.GetEntity(12), nullptr);
  EXPECT_THAT(log.lines, IsEmpty());
}

TEST(ParserProvider, ExceptionsOfCreateEntityAreSwallowed) {
  class Throwing : public TestProvider {
   public:
    ExpEntity* CreateEntity(const std::string& typeName) override {
      if (typeName == "STRING") throw std::string("no");
      if (typeName == "EXCEPTION") throw std::runtime_error("no");
      if (typeName == "NUMBER") throw 1;
      if (typeName == "POINTER") throw "no";
      return TestProvider::CreateEntity(typeName);
    }
  } provider;
  CapturedLog log;
  EXPECT_EQ(Parse(FileOf("#1=STRING(1,'a');#2=EXCEPTION();#3=NUMBER((1));#4=POINTER($);#5=(A(1,2)STRING('x'))"
                         ";#6=A(1,2);"),
                  provider),
            0);
  EXPECT_THAT(log.lines, IsEmpty());
  for (int number = 1; number <= 4; ++number) EXPECT_EQ(provider.GetEntity(number), nullptr);
  EXPECT_EQ(dynamic_cast<ExpExternalMappingEntity*>(provider.GetEntity(5))->GetEntities()->size(), 1u);
  EXPECT_NE(provider.GetEntity(6), nullptr);
}

TEST(ParserProvider, AnEntityIsNumberedBeforeItIsAdded) {
  class Watching : public TestProvider {
   public:
    void AddEntity(int number, ExpEntity* entity) override {
      added.push_back(std::to_string(number) + " " + std::to_string(entity->GetEntityNumber()));
      TestProvider::AddEntity(number, entity);
    }
    std::vector<std::string> added;
  } provider;
  Parse(FileOf("#3=A(1,2);#1=(A(1,2)B('x'));"), provider, 20);
  EXPECT_THAT(provider.added, ElementsAre("23 23", "21 21"));
}

TEST(ParserProvider, WithoutAContainerTheRecordsOfAComplexInstanceAreReadAndDropped) {
  class Without : public TestProvider {
   public:
    ExpEntity* CreateEntity(const std::string& typeName) override {
      if (typeName == "ExpExternalMappingEntity")
        return container ? TestProvider::CreateEntity("EMPTY") : nullptr;
      return TestProvider::CreateEntity(typeName);
    }
    bool container = false;
  };
  for (const bool container : {false, true}) {
    Without provider;
    provider.container = container;
    CapturedLog log;
    EXPECT_EQ(Parse(FileOf("#1=(A(1,2)B('x'));#2=A(3,4);"), provider), 0);
    EXPECT_EQ(provider.GetEntity(1), nullptr);
    EXPECT_NE(provider.GetEntity(2), nullptr);
    EXPECT_THAT(log.lines, IsEmpty());
  }
}

// ------------------------------------------------------------------------------- complex instances

TEST(ParserComplex, PartsStartAtTheAttributesThatTheirTypesDeclareAndTakeOverTheOthers) {
  ReadData read("#5=(A(1,2)B('x')C(2.5));");
  EXPECT_EQ(read.errors, 0);
  auto* complex = read.Get<ExpExternalMappingEntity>(5);
  ASSERT_EQ(complex->GetEntities()->size(), 3u);
  EXPECT_EQ(complex->GetEntityByName("A")->ToString(), "#5 = A(1, 2);");
  EXPECT_EQ(complex->GetEntityByName("B")->ToString(), "#5 = B(1, 2, 'x');");
  EXPECT_EQ(complex->GetEntityByName("C")->ToString(), "#5 = C(1, 2, 'x', 2.5);");
}

TEST(ParserComplex, PartsStandInTheOrderOfTheFile) {
  ReadData read("#5=(C(2.5)A(1,2)POINT('p',()));");
  auto* parts = read.Get<ExpExternalMappingEntity>(5)->GetEntities();
  ASSERT_EQ(parts->size(), 3u);
  EXPECT_EQ((*parts)[0]->GetExpClassName(), "C");
  EXPECT_EQ((*parts)[1]->GetExpClassName(), "A");
  EXPECT_EQ((*parts)[2]->GetExpClassName(), "POINT");
}

TEST(ParserComplex, AParameterOfAPartWithoutAttributesOfItsOwnIsDropped) {
  ReadData read("#5=(EMPTY(1,('a'))A(1,2));");
  EXPECT_EQ(read.errors, 0);
  EXPECT_EQ(read.Get<ExpExternalMappingEntity>(5)->GetEntityByName("A")->ToString(), "#5 = A(1, 2);");
}

TEST(ParserComplex, TheSameRecordAloneStartsAtTheFirstAttribute) {
  ReadData read("#1=B(1,2,'x');#2=(B('y'));");
  EXPECT_EQ(read.Get<VELMAR::TestData::B>(1)->b1.GetExpString(), "x");
  EXPECT_EQ(read.Get<ExpExternalMappingEntity>(2)->GetEntityByName("B")->ToString(), "#2 = B(0, 0, 'y');");
}

TEST(ParserComplex, UserDefinedPartsAreReadByTheirName) {
  ReadData read("#5=(!A(1,2)!OWN(3)B('x'));");
  EXPECT_EQ(read.errors, 0);
  EXPECT_EQ(read.Get<ExpExternalMappingEntity>(5)->GetEntities()->size(), 2u);
}

// ------------------------------------------------------------------------------------------ header

class ParserEmptyHeader : public testing::TestWithParam<std::string> {};

TEST_P(ParserEmptyHeader, EndsTheParse) {
  for (const Source source : AllSources()) {
    TestProvider provider;
    EXPECT_THROW(Parse(GetParam(), provider, 0, false, source), std::bad_array_new_length) << NameOf(source);
    EXPECT_EQ(provider.GetMaxEntityNumber(), 0);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ParserEmptyHeader,
    testing::Values("ISO-10303-21;\nHEADER;\nENDSEC;\nDATA;\n#1=A(1,2);\nENDSEC;\nEND-ISO-10303-21;\n",
                    "ISO-10303-21;HEADER;/* nothing */ENDSEC;DATA;#1=A(1,2);ENDSEC;END-ISO-10303-21;",
                    std::string(kByteOrderMark) +
                        "ISO-10303-21;HEADER;ENDSEC;DATA;#1=A(1,2);ENDSEC;END-ISO-10303-21;"));

TEST(Parser, AHeaderLongerThanABlockIsRead) {
  std::string header = "ISO-10303-21;HEADER;FILE_SCHEMA(('TEST'));";
  for (int i = 0; i < 6000; ++i) header += "UNKNOWN('" + std::to_string(i) + "');\n";
  for (const Source source : AllSources()) {
    TestProvider provider;
    EXPECT_EQ(Parse(header + "ENDSEC;DATA;#1=A(1,2);ENDSEC;END-ISO-10303-21;", provider, 0, false, source),
              0);
    EXPECT_NE(provider.GetEntity(1), nullptr) << NameOf(source);
  }
}

// ------------------------------------------------------------------------------------------- notes

std::string NotesOf(const std::string& instances, int offset = 0) {
  TestProvider provider;
  CapturedLog log;
  const std::string text = FileOf(instances);
  ScannerOver scanner(text, Source::Memory);
  Parser parser(scanner.Get());
  parser.SetProvider(&provider);
  parser.SetInstanceNumberOffset(offset);
  parser.Parse();
  EXPECT_EQ(parser.GetErrors().count, 0);
  EXPECT_THAT(log.lines, IsEmpty());
  return parser.GetNotes();
}

TEST(ParserNotes, ThereIsNoneForAnInstanceThatFits) {
  EXPECT_EQ(NotesOf("#1=A(1,2);#2=A(1);#3=(A(1,2)B('x'));"), "");
}

TEST(ParserNotes, TooManyParametersLeaveANote) {
  EXPECT_EQ(NotesOf("#1=A(1,2,3,4);#2=EMPTY(1);", 10),
            "#11 = A ... reading param list failed\n#12 = EMPTY ... reading param list failed\n");
  EXPECT_EQ(NotesOf("#5=(A(1,2)B('x','y')EMPTY($));"),
            "#5 = B ... reading param list failed\n#5 = EMPTY ... reading param list failed\n");
}

TEST(ParserNotes, AnUnknownTypeLeavesANote) {
  EXPECT_EQ(NotesOf("#1=UNKNOWN(1,2);#2=!OWN();", 10),
            "#11 = UNKNOWN ... entity creation failed\n#12 = OWN ... entity creation failed\n");
  EXPECT_EQ(NotesOf("#1=(A(1,2)UNKNOWN(1));"), "");
}

// ---------------------------------------------------------------------------------- edges of files

TEST(Parser, MissingEndReportsError11AtTheEndOfInput) {
  TestProvider provider;
  CapturedLog log;
  EXPECT_EQ(Parse(std::string(kHead) + "#1=A(1,2);\nENDSEC;\n  ", provider), 1);
  EXPECT_THAT(log.lines, ElementsAre("-- line 8 col 3: \"END-ISO-10303-21;\" expected"));
}

TEST(Parser, ALowerCaseRecordNameIsReportedOnce) {
  ReadData read("#1=cartesian_point('',(1.,2.,3.));\n#2=A(1,2);");
  EXPECT_THAT(read.log.lines, ElementsAre("-- line 6 col 4: invalid entityInstance"));
  EXPECT_EQ(read.errors, 1);
  EXPECT_EQ(read.Text(), "#2 = A(1, 2);\n");
}

TEST(Parser, OnlyReportedErrorsAreCounted) {
  ReadData read("#1=a b c d e f;\n#2=A(1,2);");
  EXPECT_EQ(read.errors, 1);
  EXPECT_EQ(read.log.lines.size(), 1u);
}

TEST(Parser, NothingAtAllIsOneError) {
  for (const Source source : AllSources()) {
    TestProvider provider;
    CapturedLog log;
    try {
      Parse("", provider, 0, false, source);
    } catch (const std::bad_array_new_length&) {
      // There is no header, and whether its text can be taken is open.
    }
    EXPECT_THAT(log.lines, ElementsAre("-- line 1 col 1: \"ISO-10303-21;\" expected"));
  }
}

}  // namespace
