// What is written is read again: random populations keep their values, and are written the same once they
// were read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "CapturedLog.h"
#include "ExpFile.h"
#include "ExpUtilities.h"
#include "RandomValues.h"
#include "TestEntities.h"

namespace {

using namespace VELMAR;
using namespace VELMAR::TestData;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

Wanted Of(Kind kind) { return {kind, {}, {}, {}}; }

// Anything that a list can have, to some depth.
Wanted AnyList() {
  Wanted list = Of(Kind::List);
  Wanted select = Of(Kind::Select);
  for (const Kind kind : {Kind::Real, Kind::Integer, Kind::String, Kind::Link}) {
    list.choices.push_back(Of(kind));
    select.choices.push_back({kind, {}, {}, {"T"}});
    select.choices.push_back({kind, {}, {}, {"OUTER", "_INNER_1"}});
    select.choices.push_back(Of(kind));
  }
  list.choices.push_back(Of(Kind::Enumeration));
  list.choices.push_back(select);
  Wanted nested = list;
  nested.choices.push_back(list);
  list.choices.push_back(nested);
  list.choices.push_back(nested);
  return list;
}

Wanted AnySelect() {
  Wanted select = Of(Kind::Select);
  for (Wanted value : {Of(Kind::Real), Of(Kind::Integer), Of(Kind::String), Of(Kind::Link),
                       Of(Kind::Enumeration), AnyList()}) {
    for (const std::vector<std::string>& names :
         std::vector<std::vector<std::string>>{{}, {"LABEL"}, {"A", "B", "LENGTH_MEASURE"}}) {
      value.typeNames = names;
      select.choices.push_back(value);
    }
  }
  return select;
}

// What the members of the test types can be.
Wanted WantedAt(const std::string&, int index, ExpEntity* entity) {
  static const Wanted kList = AnyList();
  static const Wanted kSelect = AnySelect();
  ExpAttribute* value = entity->GetMember(index);
  if (dynamic_cast<Colour*>(value)) return {Kind::Enumeration, {"RED", "GREEN", "BLUE"}, {}, {}};
  if (dynamic_cast<ExpBoolean*>(value)) return {Kind::Enumeration, {"F", "T"}, {}, {}};
  if (dynamic_cast<ExpLogical*>(value)) return {Kind::Enumeration, {"F", "T", "U"}, {}, {}};
  const Kind kind = DataOf(value).kind;
  return kind == Kind::List ? kList : kind == Kind::Select ? kSelect : Of(kind);
}

const std::vector<std::vector<std::string>>& Types() {
  static const std::vector<std::vector<std::string>> types = {{"ALL_KINDS"},
                                                              {"ALL_KINDS"},
                                                              {"LIBRARY_KINDS"},
                                                              {"POINT"},
                                                              {"NODE"},
                                                              {"EMPTY"},
                                                              {"A"},
                                                              {"B"},
                                                              {"C"},
                                                              {"TOP"},
                                                              {"LEFT"},
                                                              {"RIGHT"},
                                                              {"BOTTOM"},
                                                              {"A", "B"},
                                                              {"B", "A", "C"},
                                                              {"C", "A"},
                                                              {"POINT", "NODE"},
                                                              {"TOP", "RIGHT", "LEFT"},
                                                              {"ALL_KINDS", "TOP"},
                                                              {"EMPTY", "BOTTOM", "LEFT", "RIGHT", "TOP"}};
  return types;
}

constexpr int kInstances = 250;

// Numbers with gaps between them, large ones now and then.
void FillWithInstances(ExpFile& file, RandomValues& random) {
  int number = 0;
  for (int i = 0; i < kInstances; ++i) {
    number += 1 + (random.OneIn(50) ? random.Below(20000) : random.Below(3));
    AddRandom(file, number, random.OneOf(Types()), WantedAt, 2 * kInstances, random);
  }
}

// Reads the text, of which every line is understood.
void ReadWhole(ExpFile& file, const std::string& text) {
  CapturedLog log;
  std::istringstream in(text);
  file.Read(in);
  EXPECT_THAT(log.lines, Each(Not(HasSubstr("-- line")))) << text;
}

class RoundTrip : public testing::TestWithParam<unsigned int> {};

TEST_P(RoundTrip, WhatIsReadIsWhatWasWritten) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  RandomValues random(GetParam(), true);
  ExpFile made;
  FillWithInstances(made, random);
  CheckRoundTrip(made, true);
}

// With marked elements and enumerations in lists.
TEST_P(RoundTrip, WhatListsCannotKeepIsLostOnce) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  RandomValues random(GetParam(), false);
  ExpFile made;
  FillWithInstances(made, random);
  CheckRoundTrip(made, false);
}

TEST_P(RoundTrip, AppendedInstancesAreTheSameWithHigherNumbers) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  RandomValues random(GetParam(), true);
  ExpFile made;
  AddRandom(made, 7, {"A"}, WantedAt, kInstances, random);
  ReadWhole(made, TextOf(made));
  const std::string once = TextOf(made);
  const int offset = made.GetMaxEntityNumber();
  std::istringstream in(once);
  made.Append(in);
  ASSERT_EQ(made.GetMaxEntityNumber(), 2 * offset);
  const std::string first = made.GetEntity(7)->ToString();
  EXPECT_EQ("#7" + made.GetEntity(14)->ToString().substr(3), first);
}

constexpr unsigned int kSeeds = 8;
INSTANTIATE_TEST_SUITE_P(Seeds, RoundTrip, testing::Range(1u, kSeeds + 1));

TEST(RandomPopulations, HaveWhateverThereIs) {
  std::string text;
  for (unsigned int seed = 1; seed <= kSeeds; ++seed) {
    RandomValues random(seed, true);
    ExpFile made;
    FillWithInstances(made, random);
    text += TextOf(made);
  }
  for (const char* const part : {"$",
                                 "*",
                                 "()",
                                 "((",
                                 "(#",
                                 "-2147483648",
                                 "2147483647",
                                 "4.94065645841247E-324",
                                 "1.79769313486231E+308",
                                 "0.,",
                                 "\\X\\00",
                                 "\\\\\\\\",
                                 "''",
                                 "\\X2\\D",
                                 "\\X4\\0010",
                                 "\\X4\\001F",
                                 ".RED.",
                                 ".U.",
                                 ".T.",
                                 "(T(",
                                 "OUTER(_INNER_1(",
                                 "LENGTH_MEASURE((",
                                 "A(B(LENGTH_MEASURE(",
                                 "LABEL(.",
                                 "   BOTTOM (",
                                 "   C (",
                                 "EMPTY()"}) {
    EXPECT_NE(text.find(part), std::string::npos) << part;
  }
}

// ---------------------------------------------------------------------------------------------- every value
// once

// The text that the population gives which is read from this one.
std::string WrittenAndRead(const std::string& text, ExpFile& read) {
  ReadWhole(read, text);
  return TextOf(read);
}

std::string FileOf(const std::string& instances) {
  return "ISO-10303-21;\nHEADER;\nFILE_NAME('','t',(''),(''),'','','');\nFILE_SCHEMA(('AUTOMOTIVE_DESIGN'));"
         "\nENDSEC;\n"
         "DATA;\n" +
         instances + "\nENDSEC;\nEND-ISO-10303-21;\n";
}

TEST(RoundTripOfTexts, EveryCharacterThereIs) {
  constexpr unsigned int kEnd = 0x110000;
  constexpr unsigned int kPerText = 1024;
  ExpFile made;
  std::vector<std::string> texts;
  for (unsigned int first = 0; first < kEnd; first += kPerText) {
    std::string utf8;
    for (unsigned int c = first; c < first + kPerText; ++c) utf8 += reading::Utf8(c);
    const int number = static_cast<int>(texts.size()) + 1;
    auto* point = MakeIn<Point>(made, number, "AUTOMOTIVE_DESIGN");
    point->name.SetExpString(ConvertUtf8ToSTEPString(utf8));
    texts.push_back(utf8);
  }
  const std::string text = TextOf(made);
  ExpFile read;
  EXPECT_TRUE(WrittenAndRead(text, read) == text);
  ASSERT_EQ(texts.size(), kEnd / kPerText);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    auto* point = dynamic_cast<Point*>(read.GetEntity(static_cast<int>(i) + 1));
    ASSERT_NE(point, nullptr) << i;
    ASSERT_TRUE(point->name.GetExpString() == texts[i]) << "from character " << i * kPerText;
  }
}

TEST(RoundTripOfTexts, EveryPairOfCharactersThatMeanSomething) {
  const std::string marks = "'\\SPXABE0124F ~\n\t\x01";
  ExpFile made;
  std::vector<std::string> texts;
  for (const char a : marks) {
    for (const char b : marks) {
      for (const char c : marks) {
        const std::string utf8 = {a, b, c, '\\', a, b};
        auto* point = MakeIn<Point>(made, static_cast<int>(texts.size()) + 1, "AUTOMOTIVE_DESIGN");
        point->name.SetExpString(ConvertUtf8ToSTEPString(utf8));
        texts.push_back(utf8);
      }
    }
  }
  const std::string text = TextOf(made);
  ExpFile read;
  EXPECT_TRUE(WrittenAndRead(text, read) == text);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(dynamic_cast<Point*>(read.GetEntity(static_cast<int>(i) + 1))->name.GetExpString(), texts[i]);
  }
}

TEST(RoundTripOfReals, EveryPowerOfTwoAndOfTen) {
  ExpFile made;
  auto* point = MakeIn<Point>(made, 1, "AUTOMOTIVE_DESIGN");
  std::vector<double> values;
  for (int e = -1074; e < 1024; ++e) values.push_back(std::ldexp(1.0, e));
  for (int e = -323; e < 309; ++e) values.push_back(std::strtod(("1e" + std::to_string(e)).c_str(), nullptr));
  for (int e = -307; e < 308; ++e)
    values.push_back(std::strtod(("9.99999999999999e" + std::to_string(e)).c_str(), nullptr));
  for (double value : values) point->coordinates.AddValue(new ExpReal(value));
  const std::string text = TextOf(made);
  ExpFile read;
  EXPECT_EQ(WrittenAndRead(text, read), text);
  auto* again = dynamic_cast<Point*>(read.GetEntity(1));
  ASSERT_EQ(again->coordinates.NofElements(), values.size());
  auto value = values.begin();
  for (ExpAttribute* element : *again->coordinates.GetExpAggregation()) {
    // No digit is lost that fifteen digits can hold.
    EXPECT_EQ(element->GetExpReal(), Rounded(*value)) << *value;
    ++value;
  }
}

// ----------------------------------------------------------------------------------------------- what is not
// kept

TEST(RoundTripLosses, TheSignOfZeroAndTheSixteenthDigit) {
  ExpFile made;
  auto* point = MakeIn<Point>(made, 1, "AUTOMOTIVE_DESIGN");
  point->coordinates.AddValue(new ExpReal(-0.0));
  point->coordinates.AddValue(new ExpReal(0.1 + 0.2));
  ExpFile read;
  ReadWhole(read, TextOf(made));
  EXPECT_EQ(read.GetEntity(1)->ToString(), "#1 = POINT('', (0., 0.3));");
}

// The largest numbers are rounded up to what no REAL can hold, and infinity is written in a form that nothing
// reads.
TEST(RoundTripLosses, NumbersThatAreRoundedUpToInfinity) {
  constexpr double kMax = std::numeric_limits<double>::max();
  constexpr double kLargestKept = 1.797693134862315e308;
  ExpFile made;
  auto* point = MakeIn<Point>(made, 1, "AUTOMOTIVE_DESIGN");
  for (const double value : {kMax, -kMax, std::nextafter(kLargestKept, 0.0)}) {
    point->coordinates.AddValue(new ExpReal(value));
  }
  ExpFile read;
  ReadWhole(read, TextOf(made));
  EXPECT_EQ(read.GetEntity(1)->ToString(), "#1 = POINT('', (inf, -inf, 1.79769313486231E+308));");
  CapturedLog log;
  std::istringstream in(TextOf(read));
  ExpFile again;
  again.Read(in);
  EXPECT_THAT(log.text, HasSubstr("-- line 9 col 17: "));
}

TEST(RoundTripLosses, AnEmptyListInASelect) {
  ExpFile read;
  ReadWhole(read, FileOf("#1=NODE('',#1,(),L(()));"));
  auto* node = dynamic_cast<Node*>(read.GetEntity(1));
  EXPECT_EQ(node->choice.GetExpSelectValue(), nullptr);
  EXPECT_THROW(TextOf(read), std::string);
  EXPECT_EQ(MarkUnsetValues(*node), 1);
  EXPECT_THAT(TextOf(read), HasSubstr("#1 = NODE('', #1, (), $);"));
}

// Directives take up to 16 characters each, so that a text may be too long once it is written.
TEST(RoundTripLosses, ATextThatIsTooLongOnceItIsWritten) {
  constexpr int kMaxToken = 32767;
  const struct {
    const char* utf8;
    int written;  // characters for one
  } rows[] = {{"x", 1}, {"'", 2}, {"\xC3\xA9", 5}, {"\xCE\xA9", 12}, {"\xF0\x9F\x98\x80", 16}};
  for (const auto& row : rows) {
    ExpString value;
    std::string text;
    const int most = (kMaxToken - 2) / row.written;
    for (int i = 0; i < most; ++i) text += row.utf8;
    value.SetExpString(ConvertUtf8ToSTEPString(text));
    EXPECT_LE(value.ToString().size(), static_cast<std::size_t>(kMaxToken)) << row.utf8;
    ExpFile read;
    ReadWhole(read, FileOf("#1=POINT(" + value.ToString() + ",());"));
    EXPECT_TRUE(dynamic_cast<Point*>(read.GetEntity(1))->name.GetExpString() == text) << row.utf8;
    value.SetExpString(ConvertUtf8ToSTEPString(text + row.utf8));
    EXPECT_GT(value.ToString().size(), static_cast<std::size_t>(kMaxToken)) << row.utf8;
  }
}

}  // namespace
