// Enumerations, logicals, booleans and selects.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::ThrownText;
using testing::ElementsAre;
using testing::Pair;
using testing::Values;
using testing::ValuesIn;

const std::map<std::string, int> kColours = {{"RED", 0}, {"GREEN", 1}, {"BLUE", 2}};

class CountedInteger : public ExpInteger {
 public:
  explicit CountedInteger(int* deletions) : deletions_(deletions) {}
  ~CountedInteger() override { ++*deletions_; }

 private:
  int* deletions_;
};

// -------------------------------------------------------------------------------------------- ExpEnumeration

TEST(ExpEnumeration, HasNeitherNameNorNumberAtFirst) {
  ExpEnumeration item;
  EXPECT_EQ(item.GetExpEnumerationString(), "");
  EXPECT_EQ(item.GetExpEnumeration(), -1);
  EXPECT_EQ(item.ToString(), "..");
}

TEST(ExpEnumeration, SetByNameAloneKeepsTheNameAsItIs) {
  ExpEnumeration item;
  item.SetExpEnumeration("RED");
  EXPECT_EQ(item.GetExpEnumerationString(), "RED");
  EXPECT_EQ(item.GetExpEnumeration(), -1);
  item.SetExpEnumeration("mixed Case");
  EXPECT_EQ(item.GetExpEnumerationString(), "mixed Case");
  EXPECT_EQ(item.ToString(), ".mixed Case.");
}

TEST(ExpEnumeration, SetByNameAloneLeavesTheNumber) {
  ExpEnumeration item;
  item.SetExpEnumeration(1, &kColours);
  item.SetExpEnumeration("RED");
  EXPECT_EQ(item.GetExpEnumerationString(), "RED");
  EXPECT_EQ(item.GetExpEnumeration(), 1);
}

TEST(ExpEnumeration, SetByNumberTakesNameAndNumberFromTheTable) {
  ExpEnumeration item;
  item.SetExpEnumeration(2, &kColours);
  EXPECT_EQ(item.GetExpEnumerationString(), "BLUE");
  EXPECT_EQ(item.GetExpEnumeration(), 2);
  item.SetExpEnumeration(0, &kColours);
  EXPECT_EQ(item.GetExpEnumerationString(), "RED");
  EXPECT_EQ(item.GetExpEnumeration(), 0);
}

TEST(ExpEnumeration, SetByNumberTakesTheFirstNameInKeyOrder) {
  const std::map<std::string, int> table = {{"SECOND", 5}, {"FIRST", 5}, {"A", 4}};
  ExpEnumeration item;
  item.SetExpEnumeration(5, &table);
  EXPECT_EQ(item.GetExpEnumerationString(), "FIRST");
}

class MissingNumber : public testing::TestWithParam<int> {};

TEST_P(MissingNumber, ThrowsAndLeavesTheObjectUnset) {
  ExpEnumeration item;
  item.SetExpEnumeration(1, &kColours);
  EXPECT_EQ(ThrownText([&] { item.SetExpEnumeration(GetParam(), &kColours); }),
            "ExpEnumeration Enumerationvalue not found");
  EXPECT_EQ(item.GetExpEnumerationString(), "");
  EXPECT_EQ(item.GetExpEnumeration(), -1);
}

INSTANTIATE_TEST_SUITE_P(ExpEnumeration, MissingNumber, Values(-1, 3, INT_MAX, INT_MIN));

TEST(ExpEnumeration, TheTableMayHoldMinusOne) {
  const std::map<std::string, int> table = {{"NONE", -1}};
  ExpEnumeration item;
  item.SetExpEnumeration(-1, &table);
  EXPECT_EQ(item.GetExpEnumerationString(), "NONE");
}

struct NameLookup {
  const char* rule;
  std::map<std::string, int> table;
  std::string given;
  std::string name;
  int number;
};

class NameInTable : public testing::TestWithParam<NameLookup> {};

TEST_P(NameInTable, IsFoundAndSpeltAsInTheTable) {
  ExpEnumeration item;
  item.SetExpEnumeration(GetParam().given, &GetParam().table);
  EXPECT_EQ(item.GetExpEnumerationString(), GetParam().name);
  EXPECT_EQ(item.GetExpEnumeration(), GetParam().number);
}

INSTANTIATE_TEST_SUITE_P(
    ExpEnumeration, NameInTable,
    Values(NameLookup{"Exactly", {{"RED", 0}, {"GREEN", 1}}, "GREEN", "GREEN", 1},
           NameLookup{"ExactlyBeforeUpperCase", {{"red", 1}, {"RED", 2}}, "red", "red", 1},
           NameLookup{"InMixedCaseExactly", {{"Red", 3}, {"RED", 2}}, "Red", "Red", 3},
           NameLookup{"InUpperCase", {{"RED", 2}}, "rEd", "RED", 2},
           NameLookup{"InUpperCaseBeforeLowerCase", {{"red", 1}, {"RED", 2}}, "Red", "RED", 2},
           NameLookup{"InLowerCaseAtLast", {{"red", 1}}, "RED", "red", 1},
           NameLookup{"Empty", {{"", 4}}, "", "", 4}),
    [](const auto& info) { return std::string(info.param.rule); });

struct MissingNameRow {
  const char* rule;
  std::map<std::string, int> table;
  std::string given;
};

class MissingName : public testing::TestWithParam<MissingNameRow> {};

TEST_P(MissingName, ThrowsWithTheNameAsGivenAndLeavesTheObjectUnset) {
  ExpEnumeration item;
  item.SetExpEnumeration(1, &kColours);
  EXPECT_EQ(ThrownText([&] { item.SetExpEnumeration(GetParam().given, &GetParam().table); }),
            "ExpEnumeration Enumerationvalue not found: " + GetParam().given);
  EXPECT_EQ(item.GetExpEnumerationString(), "");
  EXPECT_EQ(item.GetExpEnumeration(), -1);
}

INSTANTIATE_TEST_SUITE_P(ExpEnumeration, MissingName,
                         Values(MissingNameRow{"NotThere", {{"RED", 0}}, "Yellow"},
                                MissingNameRow{"MixedCaseKeyIsNotRetried", {{"Red", 0}}, "RED"},
                                MissingNameRow{"Prefix", {{"RED", 0}}, "RE"},
                                MissingNameRow{"NoName", {{"RED", 0}}, ""},
                                MissingNameRow{"NoTableEntry", {}, "RED"}),
                         [](const auto& info) { return std::string(info.param.rule); });

TEST(ExpEnumeration, GetExpEnumerationStringGivesACopy) {
  ExpEnumeration item;
  item.SetExpEnumeration("RED");
  std::string copy = item.GetExpEnumerationString();
  copy += "DISH";
  EXPECT_EQ(item.GetExpEnumerationString(), "RED");
}

// ------------------------------------------------------------------------------------- logicals and booleans

TEST(ExpLogical, ItsTableIsFilledWhenTheLibraryIsLoaded) {
  EXPECT_THAT(ExpLogical::explogical_map, ElementsAre(Pair("F", 0), Pair("T", 1), Pair("U", 2)));
}

TEST(ExpBoolean, ItsTableIsFilledWhenTheLibraryIsLoaded) {
  EXPECT_THAT(ExpBoolean::expboolean_map, ElementsAre(Pair("F", 0), Pair("T", 1)));
}

TEST(ExpLogical, InitFillsTheTable) {
  ExpLogical::explogical_map.clear();
  EXPECT_TRUE(ExpLogical::Init());
  EXPECT_THAT(ExpLogical::explogical_map, ElementsAre(Pair("F", 0), Pair("T", 1), Pair("U", 2)));
}

TEST(ExpBoolean, InitFillsTheTable) {
  ExpBoolean::expboolean_map.clear();
  EXPECT_TRUE(ExpBoolean::Init());
  EXPECT_THAT(ExpBoolean::expboolean_map, ElementsAre(Pair("F", 0), Pair("T", 1)));
}

struct TruthRow {
  std::string given;
  std::string name;
  int number;
};

class LogicalName : public testing::TestWithParam<TruthRow> {};

TEST_P(LogicalName, IsLookedUpInTheTable) {
  ExpLogical logical;
  ExpAttribute& attribute = logical;
  attribute.SetExpEnumeration(GetParam().given);
  EXPECT_EQ(logical.GetExpEnumerationString(), GetParam().name);
  EXPECT_EQ(logical.GetExpEnumeration(), GetParam().number);
  EXPECT_EQ(logical.ToString(), "." + GetParam().name + ".");
}

INSTANTIATE_TEST_SUITE_P(ExpLogical, LogicalName,
                         Values(TruthRow{"F", "F", 0}, TruthRow{"T", "T", 1}, TruthRow{"U", "U", 2},
                                TruthRow{"f", "F", 0}, TruthRow{"t", "T", 1}, TruthRow{"u", "U", 2}));

class BooleanName : public testing::TestWithParam<TruthRow> {};

TEST_P(BooleanName, IsLookedUpInTheTable) {
  ExpBoolean boolean;
  ExpAttribute& attribute = boolean;
  attribute.SetExpEnumeration(GetParam().given);
  EXPECT_EQ(boolean.GetExpEnumerationString(), GetParam().name);
  EXPECT_EQ(boolean.GetExpEnumeration(), GetParam().number);
  EXPECT_EQ(boolean.GetAsBool(), GetParam().number == 1);
  EXPECT_EQ(boolean.ToString(), "." + GetParam().name + ".");
}

INSTANTIATE_TEST_SUITE_P(ExpBoolean, BooleanName,
                         Values(TruthRow{"F", "F", 0}, TruthRow{"T", "T", 1}, TruthRow{"f", "F", 0},
                                TruthRow{"t", "T", 1}));

class NoLogicalName : public testing::TestWithParam<std::string> {};

TEST_P(NoLogicalName, ThrowsAndLeavesTheObjectUnset) {
  ExpLogical logical;
  logical.SetExpEnumeration("T");
  EXPECT_EQ(ThrownText([&] { logical.SetExpEnumeration(GetParam()); }),
            "ExpEnumeration Enumerationvalue not found: " + GetParam());
  EXPECT_EQ(logical.GetExpEnumerationString(), "");
  EXPECT_EQ(logical.GetExpEnumeration(), -1);
}

INSTANTIATE_TEST_SUITE_P(ExpLogical, NoLogicalName, Values("X", "TRUE", "", ".T.", "UNKNOWN"));

class NoBooleanName : public testing::TestWithParam<std::string> {};

TEST_P(NoBooleanName, ThrowsAndLeavesTheObjectUnset) {
  ExpBoolean boolean;
  boolean.SetAsBool(true);
  EXPECT_EQ(ThrownText([&] { boolean.SetExpEnumeration(GetParam()); }),
            "ExpEnumeration Enumerationvalue not found: " + GetParam());
  EXPECT_EQ(boolean.GetExpEnumerationString(), "");
  EXPECT_EQ(boolean.GetExpEnumeration(), -1);
  EXPECT_FALSE(boolean.GetAsBool());
}

INSTANTIATE_TEST_SUITE_P(ExpBoolean, NoBooleanName, Values("U", "u", "X", ""));

TEST(ExpLogical, SetByItem) {
  ExpLogical logical;
  logical.SetExpEnumeration(ExpLogical::U);
  EXPECT_EQ(logical.GetExpEnumerationString(), "U");
  EXPECT_EQ(logical.GetExpEnumeration(), 2);
  logical.SetExpEnumeration(ExpLogical::T);
  EXPECT_EQ(logical.ToString(), ".T.");
  logical.SetExpEnumeration(ExpLogical::F);
  EXPECT_EQ(logical.ToString(), ".F.");
}

TEST(ExpLogical, SetByANumberThatIsNoItemThrows) {
  ExpLogical logical;
  logical.SetExpEnumeration(ExpLogical::T);
  EXPECT_EQ(ThrownText([&] { logical.SetExpEnumeration(static_cast<ExpLogical::Enumeration>(3)); }),
            "ExpEnumeration Enumerationvalue not found");
  EXPECT_EQ(logical.GetExpEnumeration(), -1);
}

TEST(ExpBoolean, SetByItem) {
  ExpBoolean boolean;
  boolean.SetExpEnumeration(ExpBoolean::T);
  EXPECT_TRUE(boolean.GetAsBool());
  EXPECT_EQ(boolean.GetExpEnumerationString(), "T");
  boolean.SetExpEnumeration(ExpBoolean::F);
  EXPECT_FALSE(boolean.GetAsBool());
  EXPECT_EQ(boolean.GetExpEnumeration(), 0);
}

TEST(ExpBoolean, SetAsBool) {
  ExpBoolean boolean;
  boolean.SetAsBool(true);
  EXPECT_EQ(boolean.GetExpEnumeration(), 1);
  EXPECT_EQ(boolean.GetExpEnumerationString(), "T");
  EXPECT_TRUE(boolean.GetAsBool());
  EXPECT_EQ(boolean.ToString(), ".T.");
  boolean.SetAsBool(false);
  EXPECT_EQ(boolean.GetExpEnumeration(), 0);
  EXPECT_EQ(boolean.GetExpEnumerationString(), "F");
  EXPECT_FALSE(boolean.GetAsBool());
  EXPECT_EQ(boolean.ToString(), ".F.");
}

TEST(ExpBoolean, SetAsBoolSetsTheNameByTheVirtualOperation) {
  class Own : public ExpBoolean {
   public:
    using ExpBoolean::SetExpEnumeration;
    void SetExpEnumeration(const std::string& name) override { names.push_back(name); }
    std::vector<std::string> names;
  };
  Own boolean;
  boolean.SetAsBool(true);
  boolean.SetAsBool(false);
  EXPECT_THAT(boolean.names, ElementsAre("T", "F"));
}

TEST(ExpBoolean, IsFalseWhileUnset) {
  ExpBoolean boolean;
  EXPECT_FALSE(boolean.GetAsBool());
  EXPECT_EQ(boolean.GetExpEnumeration(), -1);
}

TEST(ExpBoolean, IsTrueForTheNumberOneAlone) {
  ExpBoolean boolean;
  const std::map<std::string, int> table = {{"TWO", 2}, {"ONE", 1}};
  boolean.SetExpEnumeration("TWO", &table);
  EXPECT_FALSE(boolean.GetAsBool());
  boolean.SetExpEnumeration("ONE", &table);
  EXPECT_TRUE(boolean.GetAsBool());
}

TEST(ExpLogical, PrintsItsFlags) {
  ExpLogical logical;
  logical.SetExpEnumeration(ExpLogical::T);
  logical.SetNotProvided(true);
  EXPECT_EQ(logical.ToString(), "$");
  logical.SetOmitted(true);
  EXPECT_EQ(logical.ToString(), "*");
  EXPECT_EQ(logical.GetExpEnumeration(), 1);
}

// ------------------------------------------------------------------------------------------------- ExpSelect

struct SelectKind {
  const char* name;
  std::function<void(ExpSelect&)> set;
  bool (ExpSelect::*is)();
  std::string text;
  std::function<bool(ExpAttribute*)> isOfItsClass;
};

const SelectKind kSelectKinds[] = {
    {"ExpReal", [](ExpSelect& select) { select.SetExpReal(2.5); }, &ExpSelect::IsExpReal, "2.5",
     [](ExpAttribute* value) { return dynamic_cast<ExpReal*>(value) != nullptr; }},
    {"ExpInteger", [](ExpSelect& select) { select.SetExpInteger(3); }, &ExpSelect::IsExpInteger, "3",
     [](ExpAttribute* value) { return dynamic_cast<ExpInteger*>(value) != nullptr; }},
    {"ExpString", [](ExpSelect& select) { select.SetExpString("a''b"); }, &ExpSelect::IsExpString, "'a''b'",
     [](ExpAttribute* value) { return dynamic_cast<ExpString*>(value) != nullptr; }},
    {"ExpLink", [](ExpSelect& select) { select.SetExpLink(7); }, &ExpSelect::IsExpLink, "#7",
     [](ExpAttribute* value) { return dynamic_cast<ExpLink*>(value) != nullptr; }},
    {"ExpAggregation", [](ExpSelect& select) { select.AddValue(new ExpInteger(9)); },
     &ExpSelect::IsExpAggregation, "(9)",
     [](ExpAttribute* value) { return dynamic_cast<ExpAggregation*>(value) != nullptr; }},
    {"ExpEnumeration", [](ExpSelect& select) { select.SetExpEnumeration("RED"); },
     &ExpSelect::IsExpEnumeration, ".RED.",
     [](ExpAttribute* value) { return dynamic_cast<ExpEnumeration*>(value) != nullptr; }},
};

void ExpectKind(ExpSelect& select, const char* name) {
  for (const SelectKind& kind : kSelectKinds) {
    EXPECT_EQ((select.*kind.is)(), std::string(kind.name) == name) << kind.name;
  }
}

struct SelectGetter {
  const char* kind;
  std::function<void(ExpSelect&)> get;
};

const SelectGetter kSelectGetters[] = {
    {"ExpReal", [](ExpSelect& select) { EXPECT_EQ(select.GetExpReal(), 2.5); }},
    {"ExpInteger", [](ExpSelect& select) { EXPECT_EQ(select.GetExpInteger(), 3); }},
    {"ExpString", [](ExpSelect& select) { EXPECT_EQ(select.GetExpString(), "a'b"); }},
    {"ExpLink", [](ExpSelect& select) { EXPECT_EQ(select.GetExpLink(), 7); }},
    {"ExpAggregation", [](ExpSelect& select) { EXPECT_EQ(select.GetExpAggregation()->size(), 1u); }},
    {"ExpEnumeration", [](ExpSelect& select) { EXPECT_EQ(select.GetExpEnumeration(), -1); }},
};

TEST(ExpSelect, HasNothingAtFirst) {
  ExpSelect select;
  EXPECT_EQ(select.GetExpSelectValue(), nullptr);
  ExpectKind(select, "none");
}

class SelectOfKind : public testing::TestWithParam<SelectKind> {};

TEST_P(SelectOfKind, ASetterSelectsANewValueOfItsKind) {
  ExpSelect select;
  GetParam().set(select);
  ASSERT_NE(select.GetExpSelectValue(), nullptr);
  EXPECT_TRUE(GetParam().isOfItsClass(select.GetExpSelectValue()));
  ExpectKind(select, GetParam().name);
  EXPECT_EQ(select.ToString(), GetParam().text);
}

TEST_P(SelectOfKind, ASetterDeletesTheValueBefore) {
  int deletions = 0;
  ExpSelect select;
  select.SetExpInteger(1);
  select.AddValue(new CountedInteger(&deletions));
  if (std::string(GetParam().name) == "ExpAggregation") {
    GetParam().set(select);  // goes on with the same list
    EXPECT_EQ(deletions, 0);
    select.SetExpReal(1.0);
  } else {
    GetParam().set(select);
    ExpectKind(select, GetParam().name);
  }
  EXPECT_EQ(deletions, 1);
}

TEST_P(SelectOfKind, ASetterLeavesTypeNamesAndFlags) {
  ExpSelect select;
  select.AddExpSelectTypeName("FIRST");
  select.SetNotProvided(true);
  select.SetOmitted(true);
  GetParam().set(select);
  EXPECT_TRUE(select.IsNotProvided());
  EXPECT_TRUE(select.IsOmitted());
  select.SetNotProvided(false);
  select.SetOmitted(false);
  EXPECT_EQ(select.ToString(), "FIRST(" + GetParam().text + ")");
}

TEST_P(SelectOfKind, TypeNamesEncloseTheValueOutermostFirst) {
  ExpSelect select;
  select.AddExpSelectTypeName("OUTER");
  GetParam().set(select);
  select.AddExpSelectTypeName("inner as it is");
  EXPECT_EQ(select.ToString(), "OUTER(inner as it is(" + GetParam().text + "))");
}

TEST_P(SelectOfKind, FlagsPrintMarkersWhateverIsSelected) {
  ExpSelect select;
  select.AddExpSelectTypeName("NAME");
  GetParam().set(select);
  select.SetNotProvided(true);
  EXPECT_EQ(select.ToString(), "$");
  select.SetOmitted(true);
  EXPECT_EQ(select.ToString(), "*");
  EXPECT_TRUE((select.*GetParam().is)());
}

INSTANTIATE_TEST_SUITE_P(ExpSelect, SelectOfKind, ValuesIn(kSelectKinds),
                         [](const auto& info) { return std::string(info.param.name); });

class KindAfterKind : public testing::TestWithParam<std::tuple<SelectKind, SelectKind>> {};

TEST_P(KindAfterKind, TheLastValueSetWins) {
  const auto& [first, second] = GetParam();
  ExpSelect select;
  first.set(select);
  if (std::string(second.name) == "ExpAggregation" && std::string(first.name) == second.name)
    select.SetExpReal(0.0);
  second.set(select);
  ExpectKind(select, second.name);
  EXPECT_TRUE(second.isOfItsClass(select.GetExpSelectValue()));
  EXPECT_EQ(select.ToString(), second.text);
}

INSTANTIATE_TEST_SUITE_P(ExpSelect, KindAfterKind,
                         testing::Combine(ValuesIn(kSelectKinds), ValuesIn(kSelectKinds)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) + "_" +
                                  std::get<1>(info.param).name;
                         });

class KindAndGetter : public testing::TestWithParam<std::tuple<SelectKind, SelectGetter>> {};

TEST_P(KindAndGetter, AnswersForItsOwnKindAndThrowsForOthers) {
  const auto& [kind, getter] = GetParam();
  ExpSelect select;
  kind.set(select);
  const std::string thrown = ThrownText([&, &get = getter.get] { get(select); });
  EXPECT_EQ(thrown, std::string(kind.name) == getter.kind
                        ? "(nothing thrown)"
                        : std::string("error ExpSelect is not of type ") + getter.kind);
  EXPECT_EQ(select.ToString(), kind.text);
}

INSTANTIATE_TEST_SUITE_P(ExpSelect, KindAndGetter,
                         testing::Combine(ValuesIn(kSelectKinds), ValuesIn(kSelectGetters)),
                         [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) + "_" +
                                  std::get<1>(info.param).kind;
                         });

class EachSelectGetter : public testing::TestWithParam<SelectGetter> {};

TEST_P(EachSelectGetter, ThrowsWhereNothingIsSelected) {
  ExpSelect select;
  EXPECT_EQ(ThrownText([&] { GetParam().get(select); }),
            std::string("error ExpSelect is not of type ") + GetParam().kind);
}

INSTANTIATE_TEST_SUITE_P(ExpSelect, EachSelectGetter, ValuesIn(kSelectGetters),
                         [](const auto& info) { return std::string(info.param.kind); });

TEST(ExpSelect, AnIntegerIsNotReadableAsAReal) {
  ExpSelect select;
  select.SetExpInteger(3);
  EXPECT_EQ(select.GetExpSelectValue()->GetExpReal(), 3.0);
  EXPECT_EQ(ThrownText([&] { select.GetExpReal(); }), "error ExpSelect is not of type ExpReal");
}

TEST(ExpSelect, AfterAnIntegerAStringHasTheStringFlagAlone) {
  ExpSelect select;
  select.SetExpInteger(3);
  select.SetExpString("A");
  ExpectKind(select, "ExpString");
  EXPECT_EQ(ThrownText([&] { select.GetExpInteger(); }), "error ExpSelect is not of type ExpInteger");
  EXPECT_EQ(select.GetExpString(), "A");
}

TEST(ExpSelect, AStringIsDecoded) {
  ExpSelect select;
  select.SetExpString(R"(\X\E9)");
  EXPECT_EQ(select.GetExpString(), "\xC3\xA9");
  EXPECT_EQ(select.ToString(), R"('\X\E9')");
}

TEST(ExpSelect, AnEnumerationKeepsItsNameWithoutATable) {
  ExpSelect select;
  select.SetExpEnumeration("t");
  auto* item = dynamic_cast<ExpEnumeration*>(select.GetExpSelectValue());
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(item->GetExpEnumerationString(), "t");
  EXPECT_EQ(item->GetExpEnumeration(), -1);
}

TEST(ExpSelect, AddValueBuildsOneAggregation) {
  ExpSelect select;
  auto* first = new ExpInteger(1);
  select.AddValue(first);
  ExpAttribute* list = select.GetExpSelectValue();
  auto* second = new ExpString("x");
  select.AddValue(second);
  EXPECT_EQ(select.GetExpSelectValue(), list);
  EXPECT_THAT(*select.GetExpAggregation(), ElementsAre(first, second));
  EXPECT_EQ(select.ToString(), "(1, 'x')");
}

TEST(ExpSelect, AddValueAfterAnotherKindBeginsANewAggregation) {
  int deletions = 0;
  ExpSelect select;
  select.AddValue(new CountedInteger(&deletions));
  select.SetExpReal(1.5);
  EXPECT_EQ(deletions, 1);
  select.AddValue(new ExpInteger(2));
  ExpectKind(select, "ExpAggregation");
  EXPECT_EQ(select.ToString(), "(2)");
}

TEST(ExpSelect, AddValueTakesNull) {
  ExpSelect select;
  select.AddValue(nullptr);
  ExpectKind(select, "ExpAggregation");
  EXPECT_THAT(*select.GetExpAggregation(), ElementsAre(nullptr));
}

TEST(ExpSelect, ItsDestructorDeletesTheValue) {
  int deletions = 0;
  {
    ExpSelect select;
    select.AddValue(new CountedInteger(&deletions));
    select.AddValue(new CountedInteger(&deletions));
  }
  EXPECT_EQ(deletions, 2);
}

TEST(ExpSelect, PrintsTheValueByItsOwnToString) {
  ExpSelect select;
  select.AddExpSelectTypeName("LENGTH_MEASURE");
  select.SetExpReal(2.5);
  EXPECT_EQ(select.ToString(), "LENGTH_MEASURE(2.5)");
  select.SetExpInteger(2);
  select.GetExpSelectValue()->SetNotProvided(true);
  EXPECT_EQ(select.ToString(), "LENGTH_MEASURE($)");
}

TEST(ExpSelect, PrintsALinkWithoutTypeNames) {
  ExpSelect select;
  select.SetExpLink(7);
  EXPECT_EQ(select.ToString(), "#7");
}

TEST(ExpSelect, WithoutValueItCannotBePrinted) {
  const std::string expected =
      "c/VelmarClasses - line: 1035   expSelectedValue should not be NULL while writing ExpSelect to string.";
  ExpSelect select;
  EXPECT_EQ(ThrownText([&] { select.ToString(); }), expected);
  select.AddExpSelectTypeName("NAME");
  EXPECT_EQ(ThrownText([&] { select.ToString(); }), expected);
}

TEST(ExpSelect, AMarkerNeedsNoValue) {
  ExpSelect select;
  select.SetNotProvided(true);
  EXPECT_EQ(select.ToString(), "$");
  select.SetOmitted(true);
  EXPECT_EQ(select.ToString(), "*");
}

TEST(ExpSelect, AcceptCallsVisitExpSelectAlone) {
  class Visitor : public ExpAttributeVisitor {
   public:
    void VisitExpInteger(ExpInteger*) override { others++; }
    void VisitExpSelect(ExpSelect* value) override { visited.push_back(value); }
    std::vector<ExpSelect*> visited;
    int others = 0;
  };
  ExpSelect select;
  select.SetExpInteger(1);
  Visitor visitor;
  select.Accept(&visitor);
  EXPECT_THAT(visitor.visited, ElementsAre(&select));
  EXPECT_EQ(visitor.others, 0);
}

// -------------------------------------------------------------------------------------- ExpSelect::CheckType

struct CheckTypeRow {
  const char* rule;
  std::vector<std::string> stored;
  std::string asked;
  bool result;
};

class SelectCheckType : public testing::TestWithParam<CheckTypeRow> {};

TEST_P(SelectCheckType, ComparesTheOutermostName) {
  ExpSelect select;
  select.SetExpReal(1.0);
  for (const std::string& name : GetParam().stored) select.AddExpSelectTypeName(name);
  EXPECT_EQ(select.CheckType(GetParam().asked), GetParam().result);
  TestData::TestProvider store;
  EXPECT_EQ(select.CheckType(GetParam().asked, &store), GetParam().result);
  EXPECT_EQ(select.CheckType(GetParam().asked, nullptr), GetParam().result);
}

INSTANTIATE_TEST_SUITE_P(ExpSelect, SelectCheckType,
                         Values(CheckTypeRow{"SameCase", {"LENGTH_MEASURE"}, "LENGTH_MEASURE", true},
                                CheckTypeRow{"AskedInLowerCase", {"LENGTH_MEASURE"}, "length_measure", true},
                                CheckTypeRow{
                                    "StoredInLowerCase", {"length_measure"}, "length_measure", false},
                                CheckTypeRow{"NoName", {}, "length_measure", false},
                                CheckTypeRow{"NoNameAndNothingAsked", {}, "", false},
                                CheckTypeRow{"TheFirstOfTwo", {"OUTER", "INNER"}, "outer", true},
                                CheckTypeRow{"NotTheSecondOfTwo", {"OUTER", "INNER"}, "inner", false},
                                CheckTypeRow{"NoPrefix", {"LENGTH_MEASURE"}, "LENGTH", false},
                                CheckTypeRow{"NothingLonger", {"LENGTH"}, "LENGTH_MEASURE", false}),
                         [](const auto& info) { return std::string(info.param.rule); });

TEST(ExpSelect, CheckTypeOfALinkLooksAtTheEntity) {
  TestData::TestProvider store;
  TestData::MakeIn<TestData::Point>(store, 5);
  ExpSelect select;
  select.SetExpLink(5);
  EXPECT_TRUE(select.CheckType("POINT", &store));
  EXPECT_TRUE(select.CheckType("point", &store));
  EXPECT_FALSE(select.CheckType("NODE", &store));
}

TEST(ExpSelect, CheckTypeOfALinkDoesNotLookAtTheTypeNames) {
  TestData::TestProvider store;
  TestData::MakeIn<TestData::Point>(store, 5);
  ExpSelect select;
  select.AddExpSelectTypeName("NODE");
  select.SetExpLink(5);
  EXPECT_FALSE(select.CheckType("NODE", &store));
  EXPECT_TRUE(select.CheckType("POINT", &store));
  EXPECT_TRUE(select.CheckType("NODE"));
}

TEST(ExpSelect, CheckTypeOfALinkIsFalseWithoutStore) {
  ExpSelect select;
  select.AddExpSelectTypeName("NODE");
  select.SetExpLink(5);
  EXPECT_FALSE(select.CheckType("NODE", nullptr));
}

TEST(ExpSelect, CheckTypeOfALinkIsFalseWithoutEntity) {
  TestData::TestProvider store;
  ExpSelect select;
  select.SetExpLink(5);
  EXPECT_FALSE(select.CheckType("POINT", &store));
  select.SetExpLink(-1);
  EXPECT_FALSE(select.CheckType("POINT", &store));
}

TEST(ExpSelect, CheckTypeComparesTheClassNameAsItIs) {
  // A type whose registered name is not in upper case is never equal to a name in upper case.
  ExpEntityRuntimeType* type = TestData::NewPlainType("Mixed", "X");
  const std::unique_ptr<ExpEntityRuntimeType> owner(type);
  const std::unique_ptr<ExpEntity> entity(type->CreateInstance(-1));
  TestData::TestProvider store;
  store.AddEntity(1, entity.get());
  ExpSelect select;
  select.SetExpLink(1);
  EXPECT_FALSE(select.CheckType("Mixed", &store));
  EXPECT_FALSE(select.CheckType("MIXED", &store));
}

}  // namespace
}  // namespace VELMAR
