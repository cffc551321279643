// Attribute values: flags, setters and getters by kind, the visitor, and the printed form.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "ExpUtilities.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::ThrownText;
using testing::Values;
using testing::ValuesIn;

static_assert(std::is_abstract_v<ExpAttribute>);
static_assert(std::is_same_v<decltype(std::declval<ExpAggregation>().NofElements()), unsigned long>);
static_assert(
    std::is_same_v<decltype(std::declval<ExpAggregation>().GetExpAggregation()), std::list<ExpAttribute*>*>);
static_assert(sizeof(unsigned long) == 8);

/// A value that overrides nothing but what it must.
class BareAttribute : public ExpAttribute {
 public:
  std::string ToString() override { return "bare"; }
};

/// Counts its deletions.
class CountedInteger : public ExpInteger {
 public:
  explicit CountedInteger(int* deletions) : deletions_(deletions) {}
  ~CountedInteger() override { ++*deletions_; }

 private:
  int* deletions_;
};

// ---------------------------------------------------------------------------- one row per operation and kind

struct Operation {
  const char* name;
  std::function<void(ExpAttribute&)> call;
};

const Operation kOperations[] = {
    {"SetExpReal", [](ExpAttribute& value) { value.SetExpReal(2.5); }},
    {"SetExpInteger", [](ExpAttribute& value) { value.SetExpInteger(3); }},
    {"SetExpString", [](ExpAttribute& value) { value.SetExpString("text"); }},
    {"SetExpLink", [](ExpAttribute& value) { value.SetExpLink(4); }},
    {"AddValue",
     [](ExpAttribute& value) {
       auto element = std::make_unique<ExpInteger>(5);
       value.AddValue(element.get());
       element.release();
     }},
    {"SetExpEnumeration", [](ExpAttribute& value) { value.SetExpEnumeration("T"); }},
    {"AddExpSelectTypeName", [](ExpAttribute& value) { value.AddExpSelectTypeName("NAME"); }},
    {"GetExpReal", [](ExpAttribute& value) { value.GetExpReal(); }},
    {"GetExpInteger", [](ExpAttribute& value) { value.GetExpInteger(); }},
    {"GetExpLink", [](ExpAttribute& value) { value.GetExpLink(); }},
};

struct Kind {
  const char* name;
  std::function<std::unique_ptr<ExpAttribute>()> make;
  std::vector<std::string> operations;  // those that the kind has
  std::string visited;                  // the operation of the visitor
};

const Kind kKinds[] = {
    {"Bare", [] { return std::make_unique<BareAttribute>(); }, {}, ""},
    {"ExpReal",
     [] { return std::make_unique<ExpReal>(0.5); },
     {"SetExpReal", "SetExpInteger", "GetExpReal"},
     "VisitExpReal"},
    {"ExpInteger",
     [] { return std::make_unique<ExpInteger>(7); },
     {"SetExpInteger", "GetExpInteger", "GetExpReal"},
     "VisitExpInteger"},
    {"ExpString", [] { return std::make_unique<ExpString>("x"); }, {"SetExpString"}, "VisitExpString"},
    {"ExpLink", [] { return std::make_unique<ExpLink>(9); }, {"SetExpLink", "GetExpLink"}, "VisitExpLink"},
    {"ExpAggregation",
     [] { return TestData::MakeList({new ExpInteger(1)}); },
     {"AddValue"},
     "VisitExpAggregation"},
    {"ExpEnumeration",
     [] { return std::make_unique<ExpEnumeration>(); },
     {"SetExpEnumeration"},
     "VisitExpEnumeration"},
    {"ExpLogical",
     [] { return std::make_unique<ExpLogical>(); },
     {"SetExpEnumeration"},
     "VisitExpEnumeration"},
    {"ExpBoolean",
     [] { return std::make_unique<ExpBoolean>(); },
     {"SetExpEnumeration"},
     "VisitExpEnumeration"},
};

class KindAndOperation : public testing::TestWithParam<std::tuple<Kind, Operation>> {};

TEST_P(KindAndOperation, WrongOperationsThrowTheirNameAndChangeNothing) {
  const auto& [kind, operation] = GetParam();
  const std::unique_ptr<ExpAttribute> value = kind.make();
  const std::string before = value->ToString();
  const std::string thrown = ThrownText([&, &call = operation.call] { call(*value); });
  if (testing::Value(kind.operations, testing::Contains(operation.name))) {
    EXPECT_EQ(thrown, "(nothing thrown)");
  } else {
    EXPECT_EQ(thrown, std::string("error ExpAttribute::") + operation.name);
    EXPECT_EQ(value->ToString(), before);
    EXPECT_FALSE(value->IsNotProvided());
    EXPECT_FALSE(value->IsOmitted());
  }
}

INSTANTIATE_TEST_SUITE_P(ExpAttribute, KindAndOperation,
                         testing::Combine(ValuesIn(kKinds), ValuesIn(kOperations)), [](const auto& info) {
                           return std::string(std::get<0>(info.param).name) + "_" +
                                  std::get<1>(info.param).name;
                         });

/// Notes what is called and with which value.
class NotingVisitor : public ExpAttributeVisitor {
 public:
  void VisitExpReal(ExpReal* value) override { Note("VisitExpReal", value); }
  void VisitExpInteger(ExpInteger* value) override { Note("VisitExpInteger", value); }
  void VisitExpString(ExpString* value) override { Note("VisitExpString", value); }
  void VisitExpLink(ExpLink* value) override { Note("VisitExpLink", value); }
  void VisitExpAggregation(ExpAggregation* value) override { Note("VisitExpAggregation", value); }
  void VisitExpEnumeration(ExpEnumeration* value) override { Note("VisitExpEnumeration", value); }
  void VisitExpSelect(ExpSelect* value) override { Note("VisitExpSelect", value); }

  std::vector<std::string> operations;
  std::vector<ExpAttribute*> values;

 private:
  void Note(const char* operation, ExpAttribute* value) {
    operations.emplace_back(operation);
    values.push_back(value);
  }
};

class EachKind : public testing::TestWithParam<Kind> {};

TEST_P(EachKind, AcceptCallsTheOneOperationOfItsKind) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  NotingVisitor visitor;
  value->Accept(&visitor);
  if (GetParam().visited.empty()) {
    EXPECT_THAT(visitor.operations, testing::IsEmpty());
  } else {
    EXPECT_THAT(visitor.operations, testing::ElementsAre(GetParam().visited));
    EXPECT_THAT(visitor.values, testing::ElementsAre(value.get()));
  }
}

TEST_P(EachKind, TheBaseVisitorDoesNothing) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  const std::string before = value->ToString();
  ExpAttributeVisitor visitor;
  value->Accept(&visitor);
  EXPECT_EQ(value->ToString(), before);
}

TEST_P(EachKind, StartsWithBothFlagsClear) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  EXPECT_FALSE(value->IsNotProvided());
  EXPECT_FALSE(value->IsOmitted());
}

TEST_P(EachKind, FlagsAreIndependentOfEachOtherAndOfTheValue) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  const std::string before = value->ToString();
  value->SetNotProvided(true);
  EXPECT_TRUE(value->IsNotProvided());
  EXPECT_FALSE(value->IsOmitted());
  value->SetOmitted(true);
  EXPECT_TRUE(value->IsNotProvided());
  EXPECT_TRUE(value->IsOmitted());
  value->SetNotProvided(false);
  EXPECT_FALSE(value->IsNotProvided());
  EXPECT_TRUE(value->IsOmitted());
  value->SetOmitted(false);
  EXPECT_EQ(value->ToString(), before);
}

TEST_P(EachKind, SettingAValueLeavesTheFlags) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  value->SetNotProvided(true);
  value->SetOmitted(true);
  for (const Operation& operation : kOperations) {
    ThrownText([&] { operation.call(*value); });
    EXPECT_TRUE(value->IsNotProvided()) << operation.name;
    EXPECT_TRUE(value->IsOmitted()) << operation.name;
  }
}

INSTANTIATE_TEST_SUITE_P(ExpAttribute, EachKind, ValuesIn(kKinds),
                         [](const auto& info) { return std::string(info.param.name); });

// ------------------------------------------------------------------------------------------ markers of flags

class EachPrintedKind : public testing::TestWithParam<Kind> {};

TEST_P(EachPrintedKind, OmittedPrintsAnAsterisk) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  value->SetOmitted(true);
  EXPECT_EQ(value->ToString(), "*");
}

TEST_P(EachPrintedKind, NotProvidedPrintsADollarSign) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  value->SetNotProvided(true);
  EXPECT_EQ(value->ToString(), "$");
}

TEST_P(EachPrintedKind, OmittedWinsOverNotProvided) {
  const std::unique_ptr<ExpAttribute> value = GetParam().make();
  value->SetNotProvided(true);
  value->SetOmitted(true);
  EXPECT_EQ(value->ToString(), "*");
}

INSTANTIATE_TEST_SUITE_P(ExpAttribute, EachPrintedKind,
                         Values(kKinds[2], kKinds[3], kKinds[4], kKinds[5], kKinds[6], kKinds[7], kKinds[8]),
                         [](const auto& info) { return std::string(info.param.name); });

// --------------------------------------------------------------------------------------------------- ExpReal

TEST(ExpReal, IsZeroAtFirst) {
  ExpReal real;
  EXPECT_EQ(real.GetExpReal(), 0.0);
  EXPECT_FALSE(std::signbit(real.GetExpReal()));
  EXPECT_EQ(real.ToString(), "0.");
}

TEST(ExpReal, KeepsTheValueOfItsConstructor) { EXPECT_EQ(ExpReal(-1.25).GetExpReal(), -1.25); }

TEST(ExpReal, TakesAnIntegerConverted) {
  ExpReal real(0.5);
  real.SetExpInteger(-2);
  EXPECT_EQ(real.GetExpReal(), -2.0);
  EXPECT_EQ(real.ToString(), "-2.");
  real.SetExpInteger(INT_MIN);
  EXPECT_EQ(real.GetExpReal(), -2147483648.0);
}

TEST(ExpReal, TheLastValueSetWins) {
  ExpReal real(1.5);
  real.SetExpReal(2.5);
  real.SetExpInteger(3);
  real.SetExpReal(4.5);
  EXPECT_EQ(real.GetExpReal(), 4.5);
}

TEST(ExpReal, OmittedPrintsNothing) {
  ExpReal real(2.5);
  real.SetOmitted(true);
  EXPECT_EQ(real.ToString(), "");
  EXPECT_EQ(real.GetExpReal(), 2.5);
}

TEST(ExpReal, NotProvidedPrintsNothing) {
  ExpReal real(2.5);
  real.SetNotProvided(true);
  EXPECT_EQ(real.ToString(), "");
  real.SetOmitted(true);
  EXPECT_EQ(real.ToString(), "");
  real.SetOmitted(false);
  real.SetNotProvided(false);
  EXPECT_EQ(real.ToString(), "2.5");
}

struct PrintedReal {
  double value;
  const char* text;
};

class ExpRealText : public testing::TestWithParam<PrintedReal> {};

TEST_P(ExpRealText, IsThisOne) { EXPECT_EQ(ExpReal(GetParam().value).ToString(), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(  //
    ExpReal, ExpRealText,
    Values(PrintedReal{2.5, "2.5"}, PrintedReal{0.5, "0.5"}, PrintedReal{100.0, "100."},
           PrintedReal{-3.0, "-3."}, PrintedReal{0.1, "0.1"}, PrintedReal{123456.0, "123456."},
           // zero and one
           PrintedReal{0.0, "0."}, PrintedReal{-0.0, "0."}, PrintedReal{1.0, "1."}, PrintedReal{-1.0, "-1."},
           PrintedReal{10.0, "10."},
           // the exponent: leading zeros go, the plus stays
           PrintedReal{1.0e20, "1.E+20"}, PrintedReal{1.5e-7, "1.5E-7"}, PrintedReal{1e-5, "1.E-5"},
           PrintedReal{-1e-5, "-1.E-5"}, PrintedReal{1e15, "1.E+15"}, PrintedReal{1e100, "1.E+100"},
           PrintedReal{1e-100, "1.E-100"}, PrintedReal{2.5e-10, "2.5E-10"}, PrintedReal{1e-20, "1.E-20"},
           PrintedReal{-1.25e+30, "-1.25E+30"},
           // on both sides of where the exponent begins
           PrintedReal{1e14, "100000000000000."}, PrintedReal{999999999999999.0, "999999999999999."},
           PrintedReal{9999999999999995.0, "1.E+16"}, PrintedReal{0.0001, "0.0001"},
           PrintedReal{0.00099999, "0.00099999"}, PrintedReal{0.00009, "9.E-5"},
           // fifteen significant digits
           PrintedReal{123456789012345678.0, "1.23456789012346E+17"},
           PrintedReal{1.0 / 3.0, "0.333333333333333"}, PrintedReal{2.0 / 3.0, "0.666666666666667"},
           PrintedReal{0.30000000000000004, "0.3"}, PrintedReal{0.9999999999999999, "1."},
           PrintedReal{1.0000000000000002, "1."}, PrintedReal{3.14159265358979323846, "3.14159265358979"},
           PrintedReal{123456789012345.6, "123456789012346."},
           // the ends of the range
           PrintedReal{DBL_MAX, "1.79769313486232E+308"}, PrintedReal{-DBL_MAX, "-1.79769313486232E+308"},
           PrintedReal{DBL_MIN, "2.2250738585072E-308"},
           PrintedReal{std::numeric_limits<double>::denorm_min(), "4.94065645841247E-324"}));

TEST(ExpReal, PrintsInfinitiesAndNanAsTheyAre) {
  EXPECT_EQ(ExpReal(HUGE_VAL).ToString(), "inf");
  EXPECT_EQ(ExpReal(-HUGE_VAL).ToString(), "-inf");
  EXPECT_EQ(ExpReal(std::nan("")).ToString(), "nan");
  EXPECT_EQ(ExpReal(std::copysign(std::nan(""), -1.0)).ToString(), "-nan");
}

/// The printed form made the long way from the printf form.
std::string SlowText(double value) {
  if (value == 0.0) return "0.";
  if (value == 1.0) return "1.";
  char buffer[256];
  std::snprintf(buffer, sizeof buffer, "%#.15g", value);
  std::string text = buffer;
  std::size_t end = text.find('e');
  if (end == std::string::npos) {
    end = text.size();
  } else {
    text[end] = 'E';
    std::size_t digit = end + 1;
    while (text[digit] == '+' || text[digit] == '-') digit++;
    while (text[digit] == '0') text.erase(digit, 1);
  }
  for (std::size_t last = end - 1; last > 0 && text[last] == '0'; last--) text.erase(last, 1);
  return text;
}

TEST(ExpReal, PrintsRandomBitPatternsAsThePrintfFormWithoutZeros) {
  std::mt19937_64 random(20240214);
  for (int i = 0; i < 50000; i++) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (std::isnan(value)) continue;
    ASSERT_EQ(ExpReal(value).ToString(), SlowText(value)) << bits;
  }
}

TEST(ExpReal, PrintsRandomDecimalsAsThePrintfFormWithoutZeros) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 50000; i++) {
    const double scaled = static_cast<double>(static_cast<std::int64_t>(random() % 2000000001) - 1000000000);
    const double value = scaled / std::pow(10.0, static_cast<double>(random() % 13));
    ASSERT_EQ(ExpReal(value).ToString(), SlowText(value)) << i;
  }
}

TEST(ExpReal, PrintsEveryPowerOfTenAndItsNeighbours) {
  for (int exponent = -320; exponent <= 308; exponent++) {
    const double power = std::strtod(("1e" + std::to_string(exponent)).c_str(), nullptr);
    for (double value :
         {power, std::nextafter(power, 0.0), std::nextafter(power, HUGE_VAL), power * 9.999999999999995}) {
      ASSERT_EQ(ExpReal(value).ToString(), SlowText(value)) << exponent;
      ASSERT_EQ(ExpReal(-value).ToString(), SlowText(-value)) << exponent;
    }
  }
}

TEST(ExpSchemaReal, PrintsItsFlags) {
  ExpSchemaReal real;
  EXPECT_EQ(real.ToString(), "0.");
  real.SetExpInteger(3);
  EXPECT_EQ(real.ToString(), "3.");
  real.SetNotProvided(true);
  EXPECT_EQ(real.ToString(), "$");
  real.SetOmitted(true);
  EXPECT_EQ(real.ToString(), "*");
  EXPECT_EQ(ExpSchemaReal(2.5).ToString(), "2.5");
}

TEST(ExpSchemaReal, IsAnExpRealToVisitors) {
  ExpSchemaReal real;
  NotingVisitor visitor;
  real.Accept(&visitor);
  EXPECT_THAT(visitor.operations, testing::ElementsAre("VisitExpReal"));
}

TEST(ExpSchemaReal, PrintsItsFlagsWithinEntitiesAndAggregations) {
  const auto entity = TestData::Make<TestData::LibraryKinds>();
  entity->measure.SetNotProvided(true);
  entity->data.SetOmitted(true);
  EXPECT_EQ(entity->ToString(), "LIBRARY_KINDS($, *, ..);");
  auto* element = new ExpSchemaReal(1.5);
  element->SetOmitted(true);
  EXPECT_EQ(TestData::MakeList({element, new ExpSchemaReal(2.5)})->ToString(), "(*, 2.5)");
}

TEST(ExpSchemaBinary, HasNoValue) {
  ExpSchemaBinary binary;
  EXPECT_EQ(binary.ToString(), "$");
  binary.SetNotProvided(true);
  EXPECT_EQ(binary.ToString(), "$");
  binary.SetOmitted(true);
  EXPECT_EQ(binary.ToString(), "*");
}

// ------------------------------------------------------------------------------------------------ ExpInteger

TEST(ExpInteger, IsZeroAtFirst) {
  ExpInteger integer;
  EXPECT_EQ(integer.GetExpInteger(), 0);
  EXPECT_EQ(integer.ToString(), "0");
}

TEST(ExpInteger, IsReadableAsAReal) {
  EXPECT_EQ(ExpInteger(7).GetExpReal(), 7.0);
  EXPECT_EQ(ExpInteger(INT_MIN).GetExpReal(), -2147483648.0);
}

TEST(ExpInteger, TheLastValueSetWins) {
  ExpInteger integer(5);
  integer.SetExpInteger(6);
  integer.SetExpInteger(-7);
  EXPECT_EQ(integer.GetExpInteger(), -7);
}

struct PrintedInteger {
  int value;
  const char* text;
};

class ExpIntegerText : public testing::TestWithParam<PrintedInteger> {};

TEST_P(ExpIntegerText, IsThisOne) { EXPECT_EQ(ExpInteger(GetParam().value).ToString(), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(ExpInteger, ExpIntegerText,
                         Values(PrintedInteger{0, "0"}, PrintedInteger{7, "7"}, PrintedInteger{-1, "-1"},
                                PrintedInteger{1234567, "1234567"}, PrintedInteger{INT_MAX, "2147483647"},
                                PrintedInteger{INT_MIN, "-2147483648"}));

// --------------------------------------------------------------------------------------------------- ExpLink

TEST(ExpLink, RefersToNothingAtFirst) {
  ExpLink link;
  EXPECT_EQ(link.GetExpLink(), -1);
  EXPECT_EQ(link.ToString(), "#-1");
}

TEST(ExpLink, PrintsItsNumberBehindANumberSign) {
  EXPECT_EQ(ExpLink(0).ToString(), "#0");
  EXPECT_EQ(ExpLink(17).ToString(), "#17");
  EXPECT_EQ(ExpLink(INT_MAX).ToString(), "#2147483647");
  EXPECT_EQ(ExpLink(INT_MIN).ToString(), "#-2147483648");
}

TEST(ExpLink, TheLastNumberSetWins) {
  ExpLink link(3);
  link.SetExpLink(4);
  EXPECT_EQ(link.GetExpLink(), 4);
}

TEST(ExpLink, ACopyHasTheNumberAndBothFlags) {
  ExpLink link(3);
  link.SetOmitted(true);
  link.SetNotProvided(true);
  ExpLink copy = link;
  EXPECT_EQ(copy.GetExpLink(), 3);
  EXPECT_TRUE(copy.IsOmitted());
  EXPECT_TRUE(copy.IsNotProvided());
}

// ------------------------------------------------------------------------------------------------- ExpString

TEST(ExpString, IsEmptyAtFirst) {
  ExpString text;
  EXPECT_EQ(text.GetExpString(), "");
  EXPECT_EQ(text.ToString(), "''");
}

TEST(ExpString, DecodesTheEscapesOfAFile) {
  ExpString text;
  text.SetExpString(R"(caf\X\E9 \X2\03A9\X0\ it''s \\)");
  EXPECT_EQ(text.GetExpString(), "caf\xC3\xA9 \xCE\xA9 it's \\");
  EXPECT_EQ(text.ToString(), R"('caf\X\E9 \X2\03A9\X0\ it''s \\')");
}

TEST(ExpString, ItsConstructorDecodesToo) {
  ExpString text(R"(\X\E9'')");
  EXPECT_EQ(text.GetExpString(), "\xC3\xA9'");
  EXPECT_EQ(text.ToString(), R"('\X\E9''')");
}

class ExpStringBody : public testing::TestWithParam<std::string> {};

TEST_P(ExpStringBody, IsConvertedBothWays) {
  ExpString text;
  text.SetExpString(GetParam());
  EXPECT_EQ(text.GetExpString(), ConvertSTEPStringToUtf8(GetParam()));
  EXPECT_EQ(text.ToString(), "'" + ConvertUtf8ToSTEPString(ConvertSTEPStringToUtf8(GetParam())) + "'");
}

INSTANTIATE_TEST_SUITE_P(ExpString, ExpStringBody,
                         Values("", "plain", "a''b", "a'b", R"(\\)", R"(\)", R"(\S\a)", R"(\PE\\S\a)",
                                R"(\X2\00E900E8\X0\)", R"(\X4\0001F600\X0\)", "tab\there", "\xE9", "\xC3\xA9",
                                std::string("nul\0nul", 7), std::string(100000, 'x'),
                                std::string(1000, '\xE9')));

TEST(ExpString, TheLastTextSetWins) {
  ExpString text("first");
  text.SetExpString("second");
  EXPECT_EQ(text.GetExpString(), "second");
}

TEST(ExpString, GetExpStringGivesACopy) {
  ExpString text("first");
  std::string copy = text.GetExpString();
  copy += " and more";
  EXPECT_EQ(text.GetExpString(), "first");
}

TEST(ExpString, LetsTheErrorOfABrokenTextThrough) {
  ExpString text;
  text.SetExpString(std::string("\0\xC3", 2));  // what stands behind a NUL is taken as it is
  ASSERT_EQ(text.GetExpString(), std::string("\0\xC3", 2));
  EXPECT_EQ(ThrownText([&] { text.ToString(); }),
            "String ended in middle of utf8 character '" + std::string("\0\xC3", 2) + "' - index: 2");
  text.SetNotProvided(true);
  EXPECT_EQ(text.ToString(), "$");
}

// -------------------------------------------------------------------------------------------- ExpAggregation

TEST(ExpAggregation, IsEmptyAtFirst) {
  ExpAggregation list;
  EXPECT_EQ(list.NofElements(), 0u);
  EXPECT_TRUE(list.GetExpAggregation()->empty());
  EXPECT_EQ(list.ToString(), "()");
}

TEST(ExpAggregation, KeepsTheOrderOfInsertion) {
  ExpAggregation list;
  auto* first = new ExpInteger(3);
  auto* second = new ExpInteger(1);
  auto* third = new ExpInteger(2);
  list.AddValue(first);
  EXPECT_EQ(list.ToString(), "(3)");
  list.AddValue(second);
  list.AddValue(third);
  EXPECT_EQ(list.NofElements(), 3u);
  EXPECT_THAT(*list.GetExpAggregation(), testing::ElementsAre(first, second, third));
  EXPECT_EQ(list.ToString(), "(3, 1, 2)");
}

TEST(ExpAggregation, MixesKindsAndNests) {
  ExpAggregation list;
  list.AddValue(new ExpReal(0.0));
  list.AddValue(new ExpInteger(2));
  list.AddValue(new ExpString("a''b"));
  list.AddValue(new ExpLink(7));
  list.AddValue(TestData::MakeList({new ExpInteger(1), new ExpAggregation}).release());
  auto* item = new ExpEnumeration;
  item->SetExpEnumeration("RED");
  list.AddValue(item);
  auto* choice = new ExpSelect;
  choice->AddExpSelectTypeName("LENGTH_MEASURE");
  choice->SetExpReal(2.5);
  list.AddValue(choice);
  EXPECT_EQ(list.ToString(), "(0., 2, 'a''b', #7, (1, ()), .RED., LENGTH_MEASURE(2.5))");
}

TEST(ExpAggregation, PrintsTheMarkersOfItsElements) {
  ExpAggregation list;
  list.AddValue(new ExpInteger(1));
  list.AddValue(new ExpLink(2));
  list.AddValue(new ExpReal(3.0));
  list.GetExpAggregation()->front()->SetNotProvided(true);
  (*std::next(list.GetExpAggregation()->begin()))->SetOmitted(true);
  list.GetExpAggregation()->back()->SetOmitted(true);
  EXPECT_EQ(list.ToString(), "($, *, )");
}

TEST(ExpAggregation, CallsTheToStringOfItsElements) {
  class Own : public ExpInteger {
   public:
    std::string ToString() override { return "own"; }
  };
  ExpAggregation list;
  list.AddValue(new Own);
  list.AddValue(new BareAttribute);
  list.AddValue(TestData::MakeList({new Own}).release());
  EXPECT_EQ(list.ToString(), "(own, bare, (own))");
}

/// A class of an application that changes nothing.
template <class Base>
class Derived : public Base {};

template <class Base>
class DerivedValue : public testing::Test {};

using LibraryClasses = testing::Types<ExpReal, ExpInteger, ExpString, ExpLink, ExpAggregation, ExpEnumeration,
                                      ExpLogical, ExpBoolean, ExpSelect, ExpSchemaReal, ExpSchemaBinary>;
TYPED_TEST_SUITE(DerivedValue, LibraryClasses, );

template <class Value>
void Fill(Value& value) {
  ExpAttribute& attribute = value;
  for (const Operation& operation : kOperations) {
    if (operation.name != std::string("AddExpSelectTypeName")) ThrownText([&] { operation.call(attribute); });
  }
}

TYPED_TEST(DerivedValue, PrintsAsItsBase) {
  TypeParam base;
  Derived<TypeParam> derived;
  Fill(base);
  Fill(derived);
  EXPECT_EQ(derived.ToString(), base.ToString());
  derived.SetNotProvided(true);
  base.SetNotProvided(true);
  EXPECT_EQ(derived.ToString(), base.ToString());
}

TYPED_TEST(DerivedValue, PrintsAsItsBaseWithinAnAggregation) {
  auto* base = new TypeParam;
  auto* derived = new Derived<TypeParam>;
  Fill(*base);
  Fill(*derived);
  const auto list = TestData::MakeList({base});
  const auto derivedList = TestData::MakeList({derived});
  EXPECT_EQ(derivedList->ToString(), list->ToString());
}

TEST(ExpAggregation, AnErrorOfAnElementReachesTheCaller) {
  ExpAggregation list;
  list.AddValue(TestData::MakeList({new ExpSelect}).release());
  EXPECT_THROW(list.ToString(), std::string);
  EXPECT_EQ(list.NofElements(), 1u);
}

TEST(ExpAggregation, AMarkerLeavesTheElements) {
  ExpAggregation list;
  list.AddValue(new ExpInteger(1));
  list.SetNotProvided(true);
  EXPECT_EQ(list.ToString(), "$");
  EXPECT_EQ(list.NofElements(), 1u);
}

TEST(ExpAggregation, AcceptDoesNotDescend) {
  ExpAggregation list;
  list.AddValue(new ExpInteger(1));
  list.AddValue(TestData::MakeList({new ExpReal}).release());
  NotingVisitor visitor;
  list.Accept(&visitor);
  EXPECT_THAT(visitor.operations, testing::ElementsAre("VisitExpAggregation"));
  for (ExpAttribute* element : *list.GetExpAggregation()) element->Accept(&visitor);
  EXPECT_THAT(visitor.operations,
              testing::ElementsAre("VisitExpAggregation", "VisitExpInteger", "VisitExpAggregation"));
}

TEST(ExpAggregation, GivesOutItsOwnList) {
  ExpAggregation list;
  list.AddValue(new ExpInteger(1));
  list.GetExpAggregation()->push_front(new ExpInteger(0));
  EXPECT_EQ(list.GetExpAggregation(), list.GetExpAggregation());
  EXPECT_EQ(list.ToString(), "(0, 1)");
  EXPECT_EQ(list.NofElements(), 2u);
}

TEST(ExpAggregation, AddValueTakesNull) {
  ExpAggregation list;
  list.AddValue(nullptr);
  EXPECT_EQ(list.NofElements(), 1u);
  EXPECT_THAT(*list.GetExpAggregation(), testing::ElementsAre(nullptr));
}

TEST(ExpAggregation, RemoveAllValuesDeletesTheElementsAndPassesOverNulls) {
  int deletions = 0;
  ExpAggregation list;
  list.AddValue(new CountedInteger(&deletions));
  list.AddValue(nullptr);
  list.AddValue(new CountedInteger(&deletions));
  list.AddValue(nullptr);
  EXPECT_EQ(list.NofElements(), 4u);
  list.RemoveAllValues();
  EXPECT_EQ(deletions, 2);
  EXPECT_EQ(list.NofElements(), 0u);
  EXPECT_TRUE(list.GetExpAggregation()->empty());
  EXPECT_EQ(list.ToString(), "()");
  list.RemoveAllValues();
  EXPECT_EQ(deletions, 2);
}

TEST(ExpAggregation, CanBeFilledAgain) {
  ExpAggregation list;
  list.AddValue(new ExpInteger(1));
  list.RemoveAllValues();
  list.AddValue(new ExpInteger(2));
  EXPECT_EQ(list.ToString(), "(2)");
}

TEST(ExpAggregation, RemoveAllValuesLeavesTheFlags) {
  ExpAggregation list;
  list.SetOmitted(true);
  list.SetNotProvided(true);
  list.RemoveAllValues();
  EXPECT_TRUE(list.IsOmitted());
  EXPECT_TRUE(list.IsNotProvided());
}

TEST(ExpAggregation, ItsDestructorDeletesNestedElementsOnce) {
  int deletions = 0;
  {
    ExpAggregation list;
    list.AddValue(new CountedInteger(&deletions));
    list.AddValue(nullptr);
    list.AddValue(TestData::MakeList({new CountedInteger(&deletions), nullptr}).release());
    auto* choice = new ExpSelect;
    choice->AddValue(new CountedInteger(&deletions));
    list.AddValue(choice);
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 3);
}

TEST(ExpAggregation, DerivedElementsAreDestroyedAsTheyAre) {
  // A derived aggregation, whose destructor is its own, between two of the library's.
  class Counted : public ExpAggregation {
   public:
    explicit Counted(int* deletions) : deletions_(deletions) {}
    ~Counted() override { ++*deletions_; }

   private:
    int* deletions_;
  };
  int lists = 0;
  int elements = 0;
  {
    ExpAggregation outer;
    auto* derived = new Counted(&lists);
    derived->AddValue(TestData::MakeList({new CountedInteger(&elements)}).release());
    outer.AddValue(derived);
  }
  EXPECT_EQ(lists, 1);
  EXPECT_EQ(elements, 1);
}

// ---------------------------------------------------------------------------------------------- deep nesting

constexpr std::size_t kMillion = 1000000;

TEST(ExpAggregation, AMillionLevelsArePrinted) {
  const auto list = TestData::MakeNested(kMillion);
  EXPECT_TRUE(list->ToString() == TestData::NestedText(kMillion));
}

TEST(ExpAggregation, AMillionLevelsAreDestroyed) {
  int deletions = 0;
  {
    auto innermost = TestData::MakeList({new CountedInteger(&deletions)});
    for (std::size_t i = 0; i < kMillion; i++) {
      auto outer = std::make_unique<ExpAggregation>();
      outer->AddValue(innermost.release());
      innermost = std::move(outer);
    }
    EXPECT_EQ(deletions, 0);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(ExpAggregation, RemoveAllValuesTakesAMillionLevels) {
  const auto list = TestData::MakeNested(kMillion);
  list->RemoveAllValues();
  EXPECT_EQ(list->NofElements(), 0u);
  EXPECT_EQ(list->ToString(), "()");
}

TEST(ExpAggregation, ALevelWithManyDeepElementsIsDestroyed) {
  int deletions = 0;
  {
    ExpAggregation list;
    for (int i = 0; i < 10; i++) list.AddValue(TestData::MakeNested(100000).release());
    list.AddValue(new CountedInteger(&deletions));
  }
  EXPECT_EQ(deletions, 1);
}

TEST(ExpAggregation, AMillionLevelsOfSelectsAndAggregationsArePrintedAndDestroyed) {
  int deletions = 0;
  {
    auto list = TestData::MakeList({new CountedInteger(&deletions)});
    for (std::size_t i = 0; i < kMillion / 2; i++) {
      auto* choice = new ExpSelect;
      choice->AddExpSelectTypeName("T");
      choice->AddValue(list.release());
      list = TestData::MakeList({choice});
    }
    std::string expected;
    for (std::size_t i = 0; i < kMillion / 2; i++) expected += "(T((";
    expected += "(0)";
    for (std::size_t i = 0; i < kMillion / 2; i++) expected += ")))";
    EXPECT_TRUE(list->ToString() == expected);
  }
  EXPECT_EQ(deletions, 1);
}

TEST(ExpSelect, AMillionLevelsAreDestroyedWithTheirSelect) {
  int deletions = 0;
  {
    ExpSelect select;
    auto list = TestData::MakeNested(kMillion);
    select.AddValue(list.release());
    select.AddValue(new CountedInteger(&deletions));
    EXPECT_TRUE(select.ToString() == "(" + TestData::NestedText(kMillion) + ", 0)");
    select.SetExpInteger(1);  // instead of the list
    EXPECT_EQ(deletions, 1);
    select.AddValue(TestData::MakeNested(kMillion).release());
  }
  EXPECT_EQ(deletions, 1);
}

}  // namespace
}  // namespace VELMAR
