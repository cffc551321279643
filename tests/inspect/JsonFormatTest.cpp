// Files as JSON, there and back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "JsonFormat.h"
#include "RunProgram.h"
#include "SampleFiles.h"
#include "WrittenFile.h"

namespace velmar {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::string JsonOf(const std::string& part21, const std::string& schema = "AUTOMOTIVE_DESIGN") {
  LoadAllLibraries();
  RecordTypes types(schema);
  std::ostringstream json;
  WriteJson(part21, types, json);
  return json.str();
}

std::string Part21Of(const std::string& json) {
  LoadAllLibraries();
  const File file(fmemopen(const_cast<char*>(json.data()), json.size(), "rb"));
  return ReadJson(file.get());
}

// "line:column: text"
std::string ErrorOf(const std::string& json) {
  try {
    Part21Of(json);
  } catch (const JsonError& error) {
    return std::to_string(error.Where().line) + ":" + std::to_string(error.Where().column) + ": " + error.what();
  }
  return "";
}

// The lines of the instances.
std::string InstancesOf(const std::string& json) {
  const std::size_t begin = json.find("\"instances\": [\n") + 15;
  return json.substr(begin, json.find("\n]\n}\n") - begin);
}

std::string InstanceOf(const std::string& part21Instance) { return InstancesOf(JsonOf(FileWith(part21Instance + "\n"))); }

// The JSON of a value, as an attribute of an unknown type.
std::string ValueOf(const std::string& part21) {
  const std::string line = InstanceOf("#1=VEKTOR(" + part21 + ");");
  const std::string before = R"({"id": 1, "type": "VEKTOR", "values": [)";
  EXPECT_THAT(line, StartsWith(before));
  return line.substr(before.size(), line.size() - before.size() - 2);
}

// The Part 21 text of a value.
std::string BackOf(const std::string& json) {
  const std::string text = Part21Of(R"({"format":"velmar-json","version":1,"header":[],"instances":[{"id":1,"type":"A","values":[)" +
                                    json + "]}]}");
  const std::string before = "ISO-10303-21;HEADER;ENDSEC;DATA;#1=A(";
  EXPECT_THAT(text, StartsWith(before));
  return text.substr(before.size(), text.find(");ENDSEC;END-ISO-10303-21;\n") - before.size());
}

TEST(JsonFormat, AFileHasHeaderAndInstancesALineEach) {
  EXPECT_EQ(JsonOf(FileWith(kPoint + "#3=VERTEX_POINT('',#1);\n")),
            R"({
"format": "velmar-json",
"version": 1,
"schema": "AUTOMOTIVE_DESIGN",
"header": [
{"type": "FILE_DESCRIPTION", "attributes": {"description": ["a test"], "implementation_level": "2;1"}},
{"type": "FILE_NAME", "attributes": {"name": "t.stp", "time_stamp": "2026-01-01T00:00:00", "author": ["A", "B"], )"
            R"("organization": ["O"], "preprocessor_version": "P", "originating_system": "S", "authorization": "Z"}},
{"type": "FILE_SCHEMA", "attributes": {"schema_identifiers": ["AUTOMOTIVE_DESIGN"]}}
],
"instances": [
{"id": 1, "type": "CARTESIAN_POINT", "attributes": {"name": "p", "coordinates": [1.0, 2.0, 3.0]}},
{"id": 3, "type": "VERTEX_POINT", "attributes": {"name": "", "vertex_geometry": {"ref": 1}}}
]
}
)");
}

TEST(JsonFormat, AFileWithoutInstancesIsAFile) {
  const std::string text = Rewritten(FileWith(""));
  const std::string json = JsonOf(text);
  EXPECT_TRUE(nlohmann::json::accept(json));
  EXPECT_EQ(Rewritten(Part21Of(json)), text);
}

TEST(JsonFormat, PartsOfAComplexInstanceHaveTheirOwnAttributes) {
  EXPECT_EQ(InstanceOf("#5=(LENGTH_UNIT()NAMED_UNIT(*)SI_UNIT(.MILLI.,.METRE.));"),
            R"({"id": 5, "parts": [{"type": "LENGTH_UNIT", "attributes": {}}, )"
            R"({"type": "NAMED_UNIT", "attributes": {"dimensions": {"omitted": true}}}, )"
            R"({"type": "SI_UNIT", "attributes": {"prefix": {"enum": "MILLI"}, "name": {"enum": "METRE"}}}]})");
}

TEST(JsonFormat, ARecordThatDoesNotFitItsTypeHasValuesByPosition) {
  EXPECT_EQ(InstanceOf("#1=VERTEX_POINT('',#1,3);"), R"({"id": 1, "type": "VERTEX_POINT", "values": ["", {"ref": 1}, 3]})");
  EXPECT_EQ(InstanceOf("#1=VERTEX_POINT('');"), R"({"id": 1, "type": "VERTEX_POINT", "values": [""]})");
  EXPECT_EQ(InstanceOf("#1=!VEKTOR();"), R"({"id": 1, "type": "!VEKTOR", "values": []})");
}

struct ValueCase {
  const char* part21;
  const char* json;
};

class JsonValue : public testing::TestWithParam<ValueCase> {};

TEST_P(JsonValue, IsTheSameInBothDirections) {
  EXPECT_EQ(ValueOf(GetParam().part21), GetParam().json);
  EXPECT_EQ(BackOf(GetParam().json), GetParam().part21);
}

INSTANTIATE_TEST_SUITE_P(
    All, JsonValue,
    testing::Values(
        ValueCase{"5", "5"}, ValueCase{"-5", "-5"}, ValueCase{"0", "0"}, ValueCase{"-0", R"({"part21": "-0"})"},
        ValueCase{"+5", R"({"part21": "+5"})"}, ValueCase{"007", R"({"part21": "007"})"},
        ValueCase{"999999999999999999", "999999999999999999"},
        ValueCase{"12345678901234567890123", R"({"part21": "12345678901234567890123"})"},  //
        ValueCase{"1.", "1.0"}, ValueCase{"-0.", "-0.0"}, ValueCase{"0.1", "0.1"}, ValueCase{"-2.5E-3", "-2.5e-3"},
        ValueCase{"1.E-07", "1.0e-07"}, ValueCase{"1.E+300", "1.0e+300"},
        ValueCase{"0.1000000000000000055511151231257827", "0.1000000000000000055511151231257827"},
        ValueCase{"1.0", R"({"part21": "1.0"})"}, ValueCase{"+1.", R"({"part21": "+1."})"},
        ValueCase{"01.", R"({"part21": "01."})"}, ValueCase{"1.E400", R"({"part21": "1.E400"})"},
        ValueCase{"'text'", R"("text")"}, ValueCase{"''", R"("")"}, ValueCase{"'it''s'", R"("it's")"},
        ValueCase{R"('a\\b"')", R"("a\\b\"")"}, ValueCase{R"('\X\E4')", R"("ä")"},
        ValueCase{R"('\X2\4E00\X0\')", "\"\xE4\xB8\x80\""}, ValueCase{R"('\X4\0001F600\X0\')", "\"\xF0\x9F\x98\x80\""},
        ValueCase{R"('\X\00')", R"("\u0000")"}, ValueCase{R"('\X\0A')", R"("\n")"},
        ValueCase{R"('\X2\D83D\X0\')", R"({"part21": "'\\X2\\D83D\\X0\\'"})"},
        ValueCase{R"('\S\d')", R"({"part21": "'\\S\\d'"})"},  //
        ValueCase{"\"0F2\"", R"({"binary": "0F2"})"}, ValueCase{".T.", R"({"enum": "T"})"}, ValueCase{"$", "null"},
        ValueCase{"*", R"({"omitted": true})"}, ValueCase{"#12", R"({"ref": 12})"}, ValueCase{"#0", R"({"ref": 0})"},
        ValueCase{"#012", R"({"part21": "#012"})"},
        ValueCase{"#12345678901234567890", R"({"part21": "#12345678901234567890"})"},  //
        ValueCase{"()", "[]"}, ValueCase{"((1,()),2)", "[[1, []], 2]"}, ValueCase{"A(1.5)", R"({"type": "A", "value": 1.5})"},
        ValueCase{"A(B(1))", R"({"type": "A", "value": {"type": "B", "value": 1}})"},
        ValueCase{"A((1,2))", R"({"type": "A", "value": [1, 2]})"}, ValueCase{"A()", R"({"type": "A", "values": []})"},
        ValueCase{"A(1,B())", R"({"type": "A", "values": [1, {"type": "B", "values": []}]})"},
        ValueCase{"!A(1)", R"({"type": "!A", "value": 1})"}, ValueCase{"(A(1),B((2)),$)",
                  R"([{"type": "A", "value": 1}, {"type": "B", "value": [2]}, null])"}));

TEST(JsonFormat, OtherSpellingsOfJsonAreRead) {
  EXPECT_EQ(BackOf("1e5"), "1.E5");
  EXPECT_EQ(BackOf("1E+5"), "1.E+5");
  EXPECT_EQ(BackOf("10.0"), "10.");
  EXPECT_EQ(BackOf("1.50"), "1.50");
  EXPECT_EQ(BackOf("12345678901234567890123"), "12345678901234567890123");
  EXPECT_EQ(BackOf("9223372036854775808"), "9223372036854775808");
  EXPECT_EQ(BackOf(R"("\u00e4\ud83d\ude00")"), R"('\X\E4\X4\0001F600\X0\')");
  EXPECT_EQ(BackOf(R"({"ref" : 12345678901234567890})"), "#12345678901234567890");
}

TEST(JsonFormat, KeysMayComeInAnyOrder) {
  const std::string text =
      R"({"version":1,"format":"velmar-json","schema":"AUTOMOTIVE_DESIGN","header":[{"values":[["A"]],"type":"FILE_SCHEMA"}],
"instances":[{"attributes":{"coordinates":[1.0],"name":"p"},"type":"CARTESIAN_POINT","id":7},
{"parts":[{"attributes":{},"type":"POINT"}],"id":8}]})";
  EXPECT_EQ(Part21Of(text),
            "ISO-10303-21;HEADER;FILE_SCHEMA(('A'));ENDSEC;DATA;\n#7=CARTESIAN_POINT('p',(1.));\n#8=(POINT());ENDSEC;END-ISO-10303-21;\n");
}

TEST(JsonFormat, AnInstanceStandsOnTheSameLineInBothTexts) {
  const std::string text = Part21Of(JsonOf(FileWith(kPoint + "#3=VERTEX_POINT('',#1);\n")));
  EXPECT_THAT(text, HasSubstr("\n#1=CARTESIAN_POINT('p',(1.,2.,3.));\n#3=VERTEX_POINT('',#1);"));
  EXPECT_EQ(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(text.find("#3=")), '\n'), 11);
}

TEST(JsonFormat, TheNumberZeroIsKept) {
  const std::string json = JsonOf(FileWith("#0=VEKTOR();\n"));
  EXPECT_THAT(json, HasSubstr("{\"id\": 0, "));
  EXPECT_THAT(Part21Of(json), HasSubstr("\n#0=VEKTOR();"));
}

TEST(JsonFormat, AnInstanceThatCannotBeReadIsNotLeftOut) {
  try {
    JsonOf(FileWith("#1=VEKTOR();\n#2=VEKTOR(inf);\n"));
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "#2 has a value that cannot be read again");
  }
}

TEST(JsonFormat, NestingMayBeDeep) {
  std::string value;
  for (int i = 0; i < 100000; ++i) value += i % 2 == 0 ? "(" : "A(";
  value += "1" + std::string(100000, ')');
  EXPECT_EQ(BackOf(ValueOf(value)), value);
}

TEST(JsonFormat, TheSampleIsReadBackToTheSameBytes) {
  for (const std::string& name : {std::string(SAMPLE_FILE), std::string(VALUES_FILE)}) {
    const std::string text = Rewritten(ReadFile(name));
    const std::string json = JsonOf(text);
    EXPECT_TRUE(nlohmann::json::accept(json)) << name;
    const std::string again = Part21Of(json);
    EXPECT_EQ(Rewritten(again), text) << name;
    EXPECT_EQ(JsonOf(again), json) << name;
  }
}

struct ErrorCase {
  const char* json;
  const char* error;
};

// Each stands in the instances of a file, on its line 2.
const ErrorCase kInstanceErrors[] = {
    {R"(5)", "2:1: an instance expected: an object"},
    {R"({"id":-1,"type":"A","values":[]})", R"(2:8: "id" has an instance number, at most 1073741823)"},
    {R"({"id":1073741824,"type":"A","values":[]})", R"(2:16: "id" has an instance number, at most 1073741823)"},
    {R"({"id":"1"})", R"(2:9: "id" has an instance number, at most 1073741823)"},
    {R"({"id":1.0})", R"(2:9: "id" has an instance number, at most 1073741823)"},
    {R"({"type":"A","values":[]})", R"(2:24: "id" expected before)"},
    {R"({"id":1})", R"(2:8: "type" expected before)"},
    {R"({"id":1,"type":"A"})", R"(2:19: "attributes" or "values" expected before)"},
    {R"({"id":1,"type":"A","values":[],"x":1})", R"(2:34: there is no key "x" here)"},
    {R"({"id":1,"id":2})", R"(2:12: "id" is there twice)"},
    {R"({"id":1,"type":"a b","values":[]})", R"(2:20: "type" has the name of a type, in upper case)"},
    {R"({"id":1,"type":"A(1);#2=B","values":[]})", R"(2:26: "type" has the name of a type, in upper case)"},
    {R"({"id":1,"type":"A","values":[],"attributes":{}})", R"(2:43: a record has either "attributes" or "values")"},
    {R"({"id":1,"type":"A","parts":[]})", R"(2:26: an instance with "parts" has their types and values there)"},
    {R"({"id":1,"parts":[]})", "2:18: a record expected"},
    {R"({"id":1,"parts":[1]})", "2:18: a record expected: an object"},
    {R"({"id":1,"type":"VEKTOR","attributes":{}})",
     R"(2:40: AUTOMOTIVE_DESIGN has no entity type VEKTOR: its values stand in the array "values", in their order)"},
    {R"({"id":1,"type":"VERTEX_POINT","attributes":{"name":""}})",
     R"(2:55: the attribute "vertex_geometry" of VERTEX_POINT expected)"},
    {R"({"id":1,"type":"VERTEX_POINT","attributes":{"name":"","vertex":null}})",
     R"(2:62: VERTEX_POINT has no attribute "vertex")"},
    {R"({"id":1,"type":"VERTEX_POINT","attributes":{"name":"","x":1,"vertex_geometry":null}})",
     R"(2:57: VERTEX_POINT has no attribute "x")"},
    {R"({"id":1,"type":"VERTEX_POINT","attributes":{"name":"","vertex_geometry":null,"name":""}})",
     R"(2:83: "name" is there twice)"},
    {R"({"id":1,"type":"A","values":[]},{"id":1,"type":"B","values":[]})", "2:63: there is an instance with the id 1 already"},
    {R"({"id":1,"type":"A","values":5})", R"(2:29: "values" has an array)"},
    {R"({"id":1,"type":"A","values":[true]})", R"(2:33: a boolean value is {"enum": "T"})"},
    {R"({"id":1,"type":"A","values":[{}]})", "2:31: a key expected: ref, enum, type, binary, omitted or part21"},
    {R"({"id":1,"type":"A","values":[{"x":1}]})", R"(2:33: there is no key "x" here)"},
    {R"({"id":1,"type":"A","values":[{"ref":-1}]})", R"(2:38: "ref" has the number of an instance)"},
    {R"({"id":1,"type":"A","values":[{"ref":1,"enum":"T"}]})", R"(2:44: "enum" is one key too many)"},
    {R"({"id":1,"type":"A","values":[{"value":1,"type":"T"}]})", R"(2:37: "type" expected before "value")"},
    {R"({"id":1,"type":"A","values":[{"type":"T"}]})", R"(2:41: "value" expected behind "type")"},
    {R"({"id":1,"type":"A","values":[{"omitted":false}]})", R"(2:45: "omitted" has true)"},
    {R"({"id":1,"type":"A","values":[{"enum":"T."}]})", R"(2:41: "enum" has the name of an item, in upper case)"},
    {R"({"id":1,"type":"A","values":[{"binary":"4"}]})",
     R"(2:42: "binary" has a string of hexadecimal digits behind 0, 1, 2 or 3)"},
    {R"({"id":1,"type":"A","values":[{"part21":"1),(2"}]})",
     R"(2:46: "part21" has a number, string, binary or reference as Part 21 has it)"},
    {R"({"id":1,"type":"A","values":[{"part21":"'\\X2\\D83D\r\\X0\\'"}]})",
     R"(2:61: "part21" has a number, string, binary or reference as Part 21 has it)"},
    {R"({"id":1,"type":"A","values":[1 2]})", "2:33: no JSON: syntax error while parsing array - unexpected number literal; expected ']'"},
    {"{\"id\":1,\"type\":\"A\",\"values\":[\"\xFF\"]}", "2:31: no JSON: syntax error while parsing value - invalid string: ill-formed UTF-8 byte"},
};

class JsonInstanceError : public testing::TestWithParam<ErrorCase> {};

TEST_P(JsonInstanceError, SaysWhereAndWhat) {
  EXPECT_EQ(ErrorOf(std::string(R"({"format":"velmar-json","version":1,"schema":"AUTOMOTIVE_DESIGN","header":[],"instances":[)") + "\n" +
                    GetParam().json + "]}"),
            GetParam().error)
      << GetParam().json;
}

INSTANTIATE_TEST_SUITE_P(All, JsonInstanceError, testing::ValuesIn(kInstanceErrors));

const ErrorCase kFileErrors[] = {
    {"5", R"(1:1: an object with "format": "velmar-json" expected)"},
    {"[]", R"(1:1: an object with "format": "velmar-json" expected)"},
    {"{}", R"(1:2: "format" expected before)"},
    {R"({"a":1})", R"(1:4: there is no key "a" here)"},
    {R"({"format":"x"})", R"(1:13: "format" has "velmar-json")"},
    {R"({"format":"velmar-json","version":2})", R"(1:35: "version" has the number 1)"},
    {R"({"header":[]})", R"(1:11: "format" expected before)"},
    {R"({"format":"velmar-json","version":1,"instances":[]})", R"(1:49: "header" expected before)"},
    {R"({"format":"velmar-json","version":1,"header":[],"schema":"NO_SUCH","instances":[{"id":1,"type":"A","attributes":{}}]})",
     "1:115: the attributes of A cannot be told by their names: the schema NO_SUCH is not known"},
    {R"({"format":"velmar-json","version":1,"header":[],"instances":[{"id":1,"type":"A","attributes":{}}]})",
     R"(1:96: attributes cannot be told by their names without a "schema" before the instances)"},
    {R"({"format":"velmar-json","version":1,"header":[{"type":"A","attributes":{}}]})",
     R"(1:74: the header has no record A: its values stand in the array "values", in their order)"},
    {R"({"format":"velmar-json","version":1,"header":[],"instances":[]} x)",
     "1:65: no JSON: syntax error while parsing value - invalid literal; expected end of input"},
    {R"({"format":"velmar-json","version":1,"header":[],"instances":[])",
     "1:62: no JSON: syntax error while parsing object - unexpected end of input; expected '}'"},
    {"{\n\n \"format\" 1", "3:11: no JSON: syntax error while parsing object separator - unexpected number literal; expected ':'"},
};

class JsonFileError : public testing::TestWithParam<ErrorCase> {};

TEST_P(JsonFileError, SaysWhereAndWhat) { EXPECT_EQ(ErrorOf(GetParam().json), GetParam().error) << GetParam().json; }

INSTANTIATE_TEST_SUITE_P(All, JsonFileError, testing::ValuesIn(kFileErrors));

TEST(JsonFormat, StringsAndNumbersMayBeOfAnyLength) {
  const std::string longString = "'" + std::string(1000000, 'x') + "'";
  const std::string longNumber(100000, '7');
  const std::string json = R"({"format":"velmar-json","version":1,"header":[],"instances":[{"id":1,"type":"A","values":[")" +
                           longString.substr(1, 1000000) + R"(",{"part21":")" + longString + R"("},{"part21":")" + longNumber + R"("}]}]})";
  EXPECT_EQ(ErrorOf(json), "");
}

TEST(JsonFormat, ATextThatIsCutAnywhereIsNoFile) {
  const std::string json = JsonOf(Rewritten(ReadFile(VALUES_FILE)));
  const std::size_t end = json.find_last_of('}');
  for (std::size_t length = 0; length <= end; ++length) {
    ASSERT_NE(ErrorOf(json.substr(0, length) + " "), "") << json.substr(0, length);
  }
  EXPECT_EQ(ErrorOf(json.substr(0, end + 1)), "");
}

}  // namespace
}  // namespace velmar
