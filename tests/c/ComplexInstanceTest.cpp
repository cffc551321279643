// Complex instances: parts, numbering, inherited values, copying of values, and the printed form.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ExpEntityVisitor.h"
#include "ExpRuntimeRegistry.h"
#include "TestEntities.h"
#include "VelmarClasses.h"

namespace VELMAR {
namespace {

using TestData::Make;
using TestData::MakeList;
using TestData::ThrownText;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::ValuesIn;

/// A part that says itself what its type is, with INTEGER members.
class Part : public ExpEntity {
 public:
  Part(std::string name, std::vector<std::string> supertypes, int start, int members)
      : name_(std::move(name)), supertypes_(std::move(supertypes)), start_(start), values_(members) {}
  using ExpEntity::GetMember;
  ExpAttribute* GetMember(int index) override { return &values_.at(index); }
  const std::string& GetExpClassName() const override { return name_; }
  std::vector<std::string>* GetExpSuperClasses() const override { return &supertypes_; }
  int GetNofExplicitMembers() override { return static_cast<int>(values_.size()); }
  int GetExternalMappingStartIndex() override { return start_; }

 private:
  std::string name_;
  mutable std::vector<std::string> supertypes_;
  int start_;
  std::vector<ExpInteger> values_;
};

// ----------------------------------------------------------------------------------------------------- parts

TEST(ExpExternalMappingEntity, NewGivesAnEmptyUnnumberedContainer) {
  const std::unique_ptr<ExpEntity> entity(ExpExternalMappingEntity::New());
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(entity.get());
  ASSERT_NE(complex, nullptr);
  EXPECT_EQ(complex->GetEntityNumber(), -1);
  EXPECT_THAT(*complex->GetEntities(), IsEmpty());
  EXPECT_EQ(complex->GetEntityByName("A"), nullptr);
}

TEST(ExpExternalMappingEntity, KeepsPartsInTheOrderAdded) {
  Part b("B", {}, 0, 0), a("A", {}, 0, 0);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&b);
  complex.AddEntity(&a);
  EXPECT_THAT(*complex.GetEntities(), ElementsAre(&b, &a));
  EXPECT_EQ(complex.GetEntities(), complex.GetEntities());
  EXPECT_EQ(complex.GetEntityByName("A"), &a);
  EXPECT_EQ(complex.GetEntityByName("B"), &b);
}

TEST(ExpExternalMappingEntity, IgnoresANullPart) {
  ExpExternalMappingEntity complex;
  complex.AddEntity(nullptr);
  EXPECT_THAT(*complex.GetEntities(), IsEmpty());
  complex.SetEntityNumber(1);
  EXPECT_EQ(complex.GetEntityNumber(), 1);
}

TEST(ExpExternalMappingEntity, OfTwoPartsOfOneNameTheFirstIsFound) {
  Part first("A", {}, 0, 1), second("A", {}, 0, 1);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&first);
  complex.AddEntity(&second);
  EXPECT_THAT(*complex.GetEntities(), ElementsAre(&first, &second));
  EXPECT_EQ(complex.GetEntityByName("A"), &first);
}

TEST(ExpExternalMappingEntity, GetEntityByNameIsExact) {
  Part part("Part", {}, 0, 0);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&part);
  EXPECT_EQ(complex.GetEntityByName("Part"), &part);
  EXPECT_EQ(complex.GetEntityByName("PART"), nullptr);
  EXPECT_EQ(complex.GetEntityByName("Par"), nullptr);
  EXPECT_EQ(complex.GetEntityByName(""), nullptr);
}

TEST(ExpExternalMappingEntity, DoesNotOwnItsParts) {
  const auto part = Make<TestData::A>();
  const std::size_t before = ExpEntity::instanceCount;
  {
    ExpExternalMappingEntity complex;
    complex.AddEntity(part.get());
    EXPECT_EQ(ExpEntity::instanceCount, before + 1);
  }
  EXPECT_EQ(ExpEntity::instanceCount, before);
  EXPECT_EQ(part->ToString(), "A(0, 0);");
}

// ------------------------------------------------------------------------------------------------- numbering

TEST(ExpExternalMappingEntity, AllPartsShareItsNumber) {
  Part first("A", {}, 0, 0), second("A", {}, 0, 0), third("B", {}, 0, 0);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&first);
  complex.AddEntity(&second);
  complex.AddEntity(&third);
  complex.SetEntityNumber(5);
  EXPECT_EQ(complex.GetEntityNumber(), 5);
  for (ExpEntity* part : *complex.GetEntities()) EXPECT_EQ(part->GetEntityNumber(), 5);
  complex.SetEntityNumber(-1);
  for (ExpEntity* part : *complex.GetEntities()) EXPECT_EQ(part->GetEntityNumber(), -1);
}

TEST(ExpExternalMappingEntity, NumberingNumbersThePartsInOrderAndThenSolves) {
  static std::vector<std::string> calls;
  calls.clear();
  class NotingPart : public Part {
   public:
    using Part::Part;
    void SetEntityNumber(int number) override {
      calls.push_back(GetExpClassName() + " " + std::to_string(number));
      Part::SetEntityNumber(number);
    }
  };
  class NotingComplex : public ExpExternalMappingEntity {
   public:
    void SolveEntities() override { calls.push_back("solve as #" + std::to_string(GetEntityNumber())); }
  };
  NotingPart b("B", {}, 0, 0), a("A", {}, 0, 0);
  NotingComplex complex;
  complex.AddEntity(&b);
  complex.AddEntity(&a);
  EXPECT_THAT(calls, IsEmpty());
  complex.SetEntityNumber(3);
  EXPECT_THAT(calls, ElementsAre("B 3", "A 3", "solve as #3"));
  complex.SetEntityNumber(4);
  EXPECT_THAT(calls, ElementsAre("B 3", "A 3", "solve as #3", "B 4", "A 4", "solve as #4"));
}

TEST(ExpExternalMappingEntity, PartsAddedAfterNumberingWaitForTheNext) {
  const auto a = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  a->a1.SetExpInteger(7);
  ExpExternalMappingEntity complex;
  complex.AddEntity(b.get());
  complex.SetEntityNumber(1);
  complex.AddEntity(a.get());
  EXPECT_EQ(a->GetEntityNumber(), -1);
  EXPECT_EQ(b->a1.GetExpInteger(), 0);
  complex.SetEntityNumber(1);
  EXPECT_EQ(a->GetEntityNumber(), 1);
  EXPECT_EQ(b->a1.GetExpInteger(), 7);
}

// --------------------------------------------------------------------------------------------- SolveEntities

TEST(SolveEntities, ASubtypePartTakesTheValuesAndFlagsOfItsSupertype) {
  const auto a = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  a->a1.SetExpInteger(1);
  a->a2.SetExpInteger(2);
  a->a2.SetOmitted(true);
  b->a1.SetNotProvided(true);  // gives way to the flag of the supertype's value
  b->b1.SetExpString("x");
  ExpExternalMappingEntity complex;
  complex.AddEntity(a.get());
  complex.AddEntity(b.get());
  complex.SetEntityNumber(5);
  EXPECT_EQ(b->ToString(), "#5 = B(1, *, 'x');");
  EXPECT_EQ(b->a2.GetExpInteger(), 2);
  EXPECT_FALSE(b->a1.IsNotProvided());
  EXPECT_EQ(a->ToString(), "#5 = A(1, *);");
}

TEST(SolveEntities, BothFlagsAreCopied) {
  const auto a = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  a->a1.SetNotProvided(true);
  a->a2.SetOmitted(true);
  ExpExternalMappingEntity complex;
  complex.AddEntity(a.get());
  complex.AddEntity(b.get());
  complex.SolveEntities();
  EXPECT_TRUE(b->a1.IsNotProvided());
  EXPECT_FALSE(b->a1.IsOmitted());
  EXPECT_FALSE(b->a2.IsNotProvided());
  EXPECT_TRUE(b->a2.IsOmitted());
}

class OrderOfParts : public testing::TestWithParam<std::vector<int>> {};

TEST_P(OrderOfParts, DoesNotMatter) {
  const auto a = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  const auto c = Make<TestData::C>();
  a->a1.SetExpInteger(1);
  a->a2.SetExpInteger(2);
  b->b1.SetExpString("x");
  c->c1.SetExpReal(0.5);
  ExpEntity* parts[] = {a.get(), b.get(), c.get()};
  ExpExternalMappingEntity complex;
  for (int part : GetParam()) complex.AddEntity(parts[part]);
  complex.SetEntityNumber(9);
  EXPECT_EQ(a->ToString(), "#9 = A(1, 2);");
  EXPECT_EQ(b->ToString(), "#9 = B(1, 2, 'x');");
  EXPECT_EQ(c->ToString(), "#9 = C(1, 2, 'x', 0.5);");
}

INSTANTIATE_TEST_SUITE_P(SolveEntities, OrderOfParts,
                         testing::Values(std::vector<int>{0, 1, 2}, std::vector<int>{0, 2, 1},
                                         std::vector<int>{1, 0, 2}, std::vector<int>{1, 2, 0},
                                         std::vector<int>{2, 0, 1}, std::vector<int>{2, 1, 0}));

TEST(SolveEntities, ASupertypeWithoutPartContributesNothing) {
  const auto b = Make<TestData::B>();
  const auto c = Make<TestData::C>();
  b->a1.SetExpInteger(7);  // inherited by B from A, which has no part
  b->b1.SetExpString("x");
  ExpExternalMappingEntity complex;
  complex.AddEntity(c.get());
  complex.AddEntity(b.get());
  complex.SetEntityNumber(1);
  EXPECT_EQ(c->a1.GetExpInteger(), 0);
  EXPECT_EQ(c->b1.GetExpString(), "x");
}

TEST(SolveEntities, UnrelatedPartsStayApart) {
  const auto a = Make<TestData::A>();
  const auto point = Make<TestData::Point>();
  a->a1.SetExpInteger(1);
  point->name.SetExpString("p");
  ExpExternalMappingEntity complex;
  complex.AddEntity(a.get());
  complex.AddEntity(point.get());
  complex.SetEntityNumber(1);
  EXPECT_EQ(a->ToString(), "#1 = A(1, 0);");
  EXPECT_EQ(point->ToString(), "#1 = POINT('p', ());");
}

TEST(SolveEntities, EveryPartOfTheSubtypeTakesTheValuesOfTheFirstSupertypePart) {
  const auto first = Make<TestData::A>();
  const auto second = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  const auto otherB = Make<TestData::B>();
  first->a1.SetExpInteger(1);
  second->a1.SetExpInteger(2);
  ExpExternalMappingEntity complex;
  for (ExpEntity* part :
       std::initializer_list<ExpEntity*>{b.get(), first.get(), second.get(), otherB.get()}) {
    complex.AddEntity(part);
  }
  complex.SetEntityNumber(1);
  EXPECT_EQ(b->a1.GetExpInteger(), 1);
  EXPECT_EQ(otherB->a1.GetExpInteger(), 1);
  EXPECT_EQ(second->a1.GetExpInteger(), 2);
}

TEST(SolveEntities, ValuesOfPartsWithVirtualBasesAreCopied) {
  const auto top = Make<TestData::Top>();
  const auto left = Make<TestData::Left>();
  const auto bottom = Make<TestData::Bottom>();
  top->top.SetExpInteger(3);
  top->rows.AddValue(MakeList({new ExpInteger(1), new ExpInteger(2)}).release());
  top->rows.AddValue(MakeList({new ExpInteger(3)}).release());
  left->left.SetExpEnumeration("U");
  ExpExternalMappingEntity complex;
  for (ExpEntity* part : std::initializer_list<ExpEntity*>{bottom.get(), left.get(), top.get()})
    complex.AddEntity(part);
  complex.SetEntityNumber(2);
  EXPECT_EQ(left->ToString(), "#2 = LEFT(3, ((1, 2), (3)), .U.);");
  EXPECT_EQ(bottom->top.GetExpInteger(), 3);
  EXPECT_EQ(bottom->rows.ToString(), "((1, 2), (3))");
  EXPECT_EQ(bottom->left.GetExpEnumeration(), 2);
}

TEST(SolveEntities, ANestedAggregationIsCopiedIntoNewAggregations) {
  const auto top = Make<TestData::Top>();
  const auto left = Make<TestData::Left>();
  top->rows.AddValue(MakeList({new ExpInteger(1), new ExpInteger(2)}).release());
  top->rows.AddValue(MakeList({new ExpInteger(3)}).release());
  ExpExternalMappingEntity complex;
  complex.AddEntity(top.get());
  complex.AddEntity(left.get());
  complex.SetEntityNumber(1);
  ASSERT_EQ(left->rows.NofElements(), 2u);
  EXPECT_EQ(left->rows.ToString(), "((1, 2), (3))");
  EXPECT_NE(left->rows.GetExpAggregation()->front(), top->rows.GetExpAggregation()->front());
  top->rows.RemoveAllValues();
  EXPECT_EQ(left->rows.ToString(), "((1, 2), (3))");
}

TEST(SolveEntities, FlagsAreCopiedWhereTheKindsDiffer) {
  // LEFT and RIGHT both put their own attribute at position 2; BOTTOM has the one of LEFT there.
  const auto right = Make<TestData::Right>();
  const auto bottom = Make<TestData::Bottom>();
  right->right.SetExpInteger(1);
  right->right.SetOmitted(true);
  bottom->left.SetExpEnumeration("T");
  ExpExternalMappingEntity complex;
  complex.AddEntity(right.get());
  complex.AddEntity(bottom.get());
  complex.SetEntityNumber(1);
  EXPECT_TRUE(bottom->left.IsOmitted());
  EXPECT_EQ(bottom->left.GetExpEnumerationString(), "T");
}

TEST(SolveEntities, FlagsAreCopiedWithAnUnsetLogical) {
  const auto left = Make<TestData::Left>();
  const auto bottom = Make<TestData::Bottom>();
  left->left.SetNotProvided(true);
  bottom->left.SetExpEnumeration("T");
  ExpExternalMappingEntity complex;
  complex.AddEntity(left.get());
  complex.AddEntity(bottom.get());
  EXPECT_EQ(ThrownText([&] { complex.SetEntityNumber(1); }), "(nothing thrown)");
  EXPECT_TRUE(bottom->left.IsNotProvided());
  EXPECT_EQ(bottom->left.GetExpEnumerationString(), "T");
}

struct SupertypeName {
  const char* rule;
  std::string listed;
  std::string lookedUp;
};

class ListedSupertype : public testing::TestWithParam<SupertypeName> {};

TEST_P(ListedSupertype, IsLookedUpByItsBareName) {
  class Noting : public ExpExternalMappingEntity {
   public:
    ExpEntity* GetEntityByName(std::string name) override {
      names.push_back(name);
      return ExpExternalMappingEntity::GetEntityByName(name);
    }
    std::vector<std::string> names;
  };
  Part supertype(GetParam().lookedUp, {}, 0, 1), subtype("a subtype", {GetParam().listed}, 1, 1);
  supertype.GetMember(0)->SetExpInteger(42);
  Noting complex;
  complex.AddEntity(&supertype);
  complex.AddEntity(&subtype);
  complex.SetEntityNumber(1);
  EXPECT_THAT(complex.names, ElementsAre(GetParam().lookedUp));
  EXPECT_EQ(subtype.GetMember(0)->GetExpInteger(), 42);
}

INSTANTIATE_TEST_SUITE_P(SolveEntities, ListedSupertype,
                         testing::Values(SupertypeName{"Qualified", "schema::A", "A"},
                                         SupertypeName{"QualifiedTwice", "x::schema::A", "schema::A"},
                                         SupertypeName{"WithAnEmptySchema", "::A", "A"},
                                         SupertypeName{"NotQualifiedLosesItsFirstCharacter", "XA", "A"},
                                         SupertypeName{"NotQualifiedAndLong", "POINT", "OINT"},
                                         SupertypeName{"OneCharacterStays", "A", "A"},
                                         SupertypeName{"EndsInTheSeparator", "A::", "A::"},
                                         SupertypeName{"OnlyTheSeparator", "::", "::"},
                                         SupertypeName{"OneColonIsNoSeparator", "s:A", ":A"},
                                         SupertypeName{"Empty", "", ""}),
                         [](const auto& info) { return std::string(info.param.rule); });

TEST(SolveEntities, TakesTheOwnAttributesOfTheSupertypeAlone) {
  // BASE declares positions 2 and 3 itself; 0 and 1 are inherited and not its to give.
  Part base("BASE", {}, 2, 4), sub("SUB", {"s::BASE"}, 4, 6);
  for (int i = 0; i < 4; i++) base.GetMember(i)->SetExpInteger(10 + i);
  for (int i = 0; i < 6; i++) sub.GetMember(i)->SetExpInteger(100 + i);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&base);
  complex.AddEntity(&sub);
  complex.SetEntityNumber(1);
  std::vector<int> values;
  for (int i = 0; i < 6; i++) values.push_back(sub.GetMember(i)->GetExpInteger());
  EXPECT_THAT(values, ElementsAre(100, 101, 12, 13, 104, 105));
}

TEST(SolveEntities, CopiesByTheVirtualGetMember) {
  class Redirected : public Part {
   public:
    using Part::GetMember;
    using Part::Part;
    ExpAttribute* GetMember(int) override { return &own; }
    ExpInteger own;
  };
  Part base("BASE", {}, 0, 1);
  Redirected sub("SUB", {"s::BASE"}, 1, 1);
  base.GetMember(0)->SetExpInteger(6);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&base);
  complex.AddEntity(&sub);
  complex.SetEntityNumber(1);
  EXPECT_EQ(sub.own.GetExpInteger(), 6);
}

// -------------------------------------------------------------------------------------- HandleParams by kind

struct Value {
  const char* kind;  // the group within which values are copied
  const char* name;
  std::function<std::unique_ptr<ExpAttribute>()> make;
  std::function<std::unique_ptr<ExpAttribute>()> fresh;
  std::string appended;  // what an aggregation takes over from it, printed
};

template <class T>
std::unique_ptr<ExpAttribute> Fresh() {
  return std::make_unique<T>();
}

const Value kValues[] = {
    {"real", "ExpReal", [] { return std::make_unique<ExpReal>(2.5); }, Fresh<ExpReal>, "(2.5)"},
    {"real", "ExpSchemaReal", [] { return std::make_unique<ExpSchemaReal>(2.5); }, Fresh<ExpSchemaReal>,
     "(2.5)"},
    {"integer", "ExpInteger", [] { return std::make_unique<ExpInteger>(3); }, Fresh<ExpInteger>, "(3)"},
    {"string", "ExpString", [] { return std::make_unique<ExpString>("it''s"); }, Fresh<ExpString>,
     "('it''s')"},
    {"link", "ExpLink", [] { return std::make_unique<ExpLink>(4); }, Fresh<ExpLink>, "(#4)"},
    {"aggregation", "ExpAggregation",
     [] {
       return MakeList({new ExpInteger(1), MakeList({new ExpInteger(2)}).release()});
     },
     Fresh<ExpAggregation>, "(1, (2))"},
    {"enumeration", "ExpEnumeration",
     [] {
       auto item = std::make_unique<ExpEnumeration>();
       item->SetExpEnumeration("T");
       return item;
     },
     Fresh<ExpEnumeration>, "(.T.)"},
    {"enumeration", "ExpLogical",
     [] {
       auto item = std::make_unique<ExpLogical>();
       item->SetExpEnumeration("T");
       return item;
     },
     Fresh<ExpLogical>, "(.T.)"},
    {"enumeration", "ExpBoolean",
     [] {
       auto item = std::make_unique<ExpBoolean>();
       item->SetExpEnumeration("T");
       return item;
     },
     Fresh<ExpBoolean>, "(.T.)"},
    {"select", "ExpSelect",
     [] {
       auto select = std::make_unique<ExpSelect>();
       select->SetExpInteger(5);
       return select;
     },
     [] {
       auto select = std::make_unique<ExpSelect>();
       select->SetExpReal(1.5);
       return select;
     },
     "()"},
    {"binary", "ExpSchemaBinary", Fresh<ExpSchemaBinary>, Fresh<ExpSchemaBinary>, "()"},
};

class KindIntoKind : public testing::TestWithParam<std::tuple<Value, Value>> {};

TEST_P(KindIntoKind, CopiesWithinAKindAndIntoAggregations) {
  const auto& [targetKind, sourceKind] = GetParam();
  const std::unique_ptr<ExpAttribute> target = targetKind.fresh();
  const std::unique_ptr<ExpAttribute> source = sourceKind.make();
  const std::string before = target->ToString();
  const std::string sourceText = source->ToString();
  ExpExternalMappingEntity complex;
  EXPECT_EQ(ThrownText([&, &t = target, &s = source] { complex.HandleParams(t.get(), s.get()); }),
            "(nothing thrown)");
  const std::string kind = targetKind.kind;
  if (kind == "aggregation") {
    EXPECT_EQ(target->ToString(), sourceKind.appended);
  } else if (kind == sourceKind.kind && kind != "select") {
    EXPECT_EQ(target->ToString(), sourceText);
  } else {
    EXPECT_EQ(target->ToString(), before);
  }
  EXPECT_EQ(source->ToString(), sourceText);
}

INSTANTIATE_TEST_SUITE_P(HandleParams, KindIntoKind, testing::Combine(ValuesIn(kValues), ValuesIn(kValues)),
                         [](const auto& info) {
                           return std::string(std::get<1>(info.param).name) + "_into_" +
                                  std::get<0>(info.param).name;
                         });

class NullAndKind : public testing::TestWithParam<Value> {};

TEST_P(NullAndKind, ANullTargetTakesNothing) {
  const std::unique_ptr<ExpAttribute> source = GetParam().make();
  const std::string before = source->ToString();
  ExpExternalMappingEntity complex;
  complex.HandleParams(nullptr, source.get());
  EXPECT_EQ(source->ToString(), before);
}

TEST_P(NullAndKind, ANullSourceGivesNothing) {
  const std::unique_ptr<ExpAttribute> target = GetParam().make();
  const std::string before = target->ToString();
  ExpExternalMappingEntity complex;
  complex.HandleParams(target.get(), nullptr);
  EXPECT_EQ(target->ToString(), before);
}

INSTANTIATE_TEST_SUITE_P(HandleParams, NullAndKind, ValuesIn(kValues),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(HandleParams, NullIntoNullDoesNothing) {
  ExpExternalMappingEntity complex;
  EXPECT_EQ(ThrownText([&] { complex.HandleParams(nullptr, nullptr); }), "(nothing thrown)");
}

TEST(HandleParams, AnIntegerIsNotCopiedIntoAReal) {
  ExpReal target(0.5);
  ExpInteger source(3);
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpReal(), 0.5);
}

TEST(HandleParams, CopiesThroughTheVirtualSettersAndGetters) {
  class Target : public ExpInteger {
   public:
    void SetExpInteger(int value) override { ExpInteger::SetExpInteger(value * 10); }
  };
  class Source : public ExpInteger {
   public:
    int GetExpInteger() override { return 7; }
  };
  Target target;
  Source source;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpInteger(), 70);
}

TEST(HandleParams, ANamedEnumerationIsResolvedByTheTableOfTheTarget) {
  ExpLogical target;
  ExpEnumeration source;
  source.SetExpEnumeration("u");
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpEnumerationString(), "U");
  EXPECT_EQ(target.GetExpEnumeration(), 2);
}

TEST(HandleParams, AnEnumerationKeepsTheNumberOfAPlainTarget) {
  TestData::Colour source;
  source.SetExpEnumeration("BLUE");
  ExpEnumeration target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpEnumerationString(), "BLUE");
  EXPECT_EQ(target.GetExpEnumeration(), -1);
}

TEST(HandleParams, AnUnsetEnumerationLeavesTheTarget) {
  ExpLogical unset;
  ExpLogical logical;
  logical.SetExpEnumeration("T");
  ExpEnumeration plain;
  plain.SetExpEnumeration("RED");
  ExpExternalMappingEntity complex;
  EXPECT_EQ(ThrownText([&] { complex.HandleParams(&logical, &unset); }), "(nothing thrown)");
  EXPECT_EQ(logical.GetExpEnumerationString(), "T");
  EXPECT_EQ(logical.GetExpEnumeration(), 1);
  complex.HandleParams(&plain, &unset);
  EXPECT_EQ(plain.GetExpEnumerationString(), "RED");
}

TEST(HandleParams, ANameThatTheTargetDoesNotKnowIsNoError) {
  ExpBoolean target;
  ExpLogical source;
  source.SetExpEnumeration("U");
  ExpExternalMappingEntity complex;
  EXPECT_EQ(ThrownText([&] { complex.HandleParams(&target, &source); }), "(nothing thrown)");
  EXPECT_EQ(target.GetExpEnumeration(), -1);
  EXPECT_EQ(target.GetExpEnumerationString(), "");
}

TEST(HandleParams, AStringIsDecodedOnceMore) {
  ExpString source(R"(\\X\\41)");
  ASSERT_EQ(source.GetExpString(), R"(\X\41)");
  ExpString target;
  ExpAggregation list;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  complex.HandleParams(&list, &source);
  EXPECT_EQ(target.GetExpString(), "A");
  EXPECT_EQ(list.ToString(), "('A')");
  EXPECT_EQ(source.GetExpString(), R"(\X\41)");
}

TEST(HandleParams, TextWithoutBackslashStaysTheSame) {
  ExpString source(R"(\X2\03A9\X0\ \X\E9 plain)");
  ExpString target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpString(), "\xCE\xA9 \xC3\xA9 plain");
}

TEST(HandleParams, LeavesTheFlagsOfItsTarget) {
  ExpInteger source(3);
  source.SetOmitted(true);
  ExpInteger target;
  target.SetNotProvided(true);
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, &source);
  EXPECT_EQ(target.GetExpInteger(), 3);
  EXPECT_FALSE(target.IsOmitted());
  EXPECT_TRUE(target.IsNotProvided());
}

TEST(HandleParams, AnAggregationKeepsWhatItHas) {
  const auto target = MakeList({new ExpInteger(9)});
  const auto source = MakeList({new ExpInteger(1), new ExpInteger(2)});
  ExpInteger single(3);
  ExpExternalMappingEntity complex;
  complex.HandleParams(target.get(), source.get());
  complex.HandleParams(target.get(), &single);
  EXPECT_EQ(target->ToString(), "(9, 1, 2, 3)");
}

TEST(HandleParams, CopiesOfElementsHaveClearFlags) {
  const auto source = MakeList({new ExpInteger(1), new ExpReal(2.5), new ExpString("x"), new ExpLink(4)});
  for (ExpAttribute* element : *source->GetExpAggregation()) {
    element->SetNotProvided(true);
    element->SetOmitted(true);
  }
  ExpAggregation target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, source.get());
  EXPECT_EQ(target.ToString(), "(1, 2.5, 'x', #4)");
}

TEST(HandleParams, CopiesOfEnumerationsHaveNameNumberAndFlags) {
  auto* source = new ExpLogical;
  source->SetExpEnumeration("U");
  source->SetNotProvided(true);
  auto* other = new TestData::Colour;
  other->SetExpEnumeration("BLUE");
  other->SetOmitted(true);
  const auto list = MakeList({source, other});
  ExpAggregation target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, list.get());
  ASSERT_EQ(target.NofElements(), 2u);
  auto* first = dynamic_cast<ExpEnumeration*>(target.GetExpAggregation()->front());
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(typeid(*first), typeid(ExpEnumeration));
  EXPECT_EQ(first->GetExpEnumerationString(), "U");
  EXPECT_EQ(first->GetExpEnumeration(), 2);
  EXPECT_TRUE(first->IsNotProvided());
  EXPECT_FALSE(first->IsOmitted());
  auto* second = dynamic_cast<ExpEnumeration*>(target.GetExpAggregation()->back());
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->GetExpEnumerationString(), "BLUE");
  EXPECT_EQ(second->GetExpEnumeration(), 2);
  EXPECT_TRUE(second->IsOmitted());
}

TEST(HandleParams, SelectsAndNullsInAnAggregationAreLeftOut) {
  auto* select = new ExpSelect;
  select->SetExpInteger(1);
  const auto source = MakeList({new ExpInteger(1), nullptr, select, new ExpInteger(2)});
  ExpAggregation target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, source.get());
  EXPECT_EQ(target.ToString(), "(1, 2)");
}

TEST(HandleParams, NestedAggregationsKeepTheirShape) {
  const auto source = MakeList(
      {new ExpAggregation, MakeList({new ExpInteger(1), MakeList({new ExpAggregation}).release()}).release(),
       new ExpInteger(2)});
  ExpAggregation target;
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, source.get());
  EXPECT_EQ(target.ToString(), "((), (1, (())), 2)");
}

TEST(HandleParams, AnAggregationIsNotCopiedIntoASingleValue) {
  ExpInteger target(5);
  const auto source = MakeList({new ExpInteger(1)});
  ExpExternalMappingEntity complex;
  complex.HandleParams(&target, source.get());
  EXPECT_EQ(target.GetExpInteger(), 5);
}

TEST(HandleParams, AMillionLevelsAreCopied) {
  constexpr std::size_t kLevels = 1000000;
  ExpAggregation target;
  {
    const auto source = TestData::MakeNested(kLevels);
    ExpExternalMappingEntity complex;
    complex.HandleParams(&target, source.get());
  }
  EXPECT_TRUE(target.ToString() == TestData::NestedText(kLevels));
}

// -------------------------------------------------------------------------------------------------- printing

TEST(ExpExternalMappingEntity, PrintsItsPartsWithTheirOwnAttributes) {
  const auto a = Make<TestData::A>();
  const auto b = Make<TestData::B>();
  a->a1.SetExpInteger(1);
  a->a2.SetExpInteger(2);
  b->b1.SetExpString("x");
  ExpExternalMappingEntity complex;
  complex.AddEntity(a.get());
  complex.AddEntity(b.get());
  complex.SetEntityNumber(5);
  EXPECT_EQ(complex.ToString(), "#5 = (\n   A (1, 2)\n   B ('x')\n);");
}

TEST(ExpExternalMappingEntity, PrintsPartsInTheOrderOfTheirNames) {
  Part b("B", {}, 0, 0), a("A", {}, 0, 0), lower("a", {}, 0, 0), ab("AB", {}, 0, 0);
  ExpExternalMappingEntity complex;
  for (Part* part : {&lower, &b, &ab, &a}) complex.AddEntity(part);
  EXPECT_EQ(complex.ToString(), "(\n   A ()\n   AB ()\n   B ()\n   a ()\n);");
}

TEST(ExpExternalMappingEntity, PrintsTheNamesOfItsPartsAsTheyAre) {
  Part part("Mixed_Case", {}, 0, 1);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&part);
  EXPECT_EQ(complex.ToString(), "(\n   Mixed_Case (0)\n);");
}

TEST(ExpExternalMappingEntity, PrintsItsNumberWhereItIsAboveZero) {
  Part part("A", {}, 0, 0);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&part);
  EXPECT_EQ(complex.ToString(), "(\n   A ()\n);");
  complex.SetEntityNumber(0);
  EXPECT_EQ(complex.ToString(), "(\n   A ()\n);");
  complex.SetEntityNumber(-2);
  EXPECT_EQ(complex.ToString(), "(\n   A ()\n);");
  complex.SetEntityNumber(1);
  EXPECT_EQ(complex.ToString(), "#1 = (\n   A ()\n);");
}

TEST(ExpExternalMappingEntity, PrintsWithoutParts) {
  ExpExternalMappingEntity complex;
  EXPECT_EQ(complex.ToString(), "(\n);");
  complex.SetEntityNumber(3);
  EXPECT_EQ(complex.ToString(), "#3 = (\n);");
}

TEST(ExpExternalMappingEntity, PrintsOnePartPerName) {
  Part first("A", {}, 0, 1), second("A", {}, 0, 1);
  second.GetMember(0)->SetExpInteger(2);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&first);
  complex.AddEntity(&second);
  EXPECT_EQ(complex.ToString(), "(\n   A (0)\n);");
}

TEST(ExpExternalMappingEntity, PrintsMarkersAndAllMembersFromTheStart) {
  Part part("A", {}, 1, 4);
  for (int i = 0; i < 4; i++) part.GetMember(i)->SetExpInteger(i);
  part.GetMember(2)->SetNotProvided(true);
  part.GetMember(3)->SetOmitted(true);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&part);
  EXPECT_EQ(complex.ToString(), "(\n   A (1, $, *)\n);");
}

TEST(ExpExternalMappingEntity, AcceptCallsTheVisitor) {
  class Visitor : public ExpEntityVisitor {
   public:
    void VisitExpExternalMappingEntity(ExpExternalMappingEntity* entity) override {
      visited.push_back(entity);
    }
    std::vector<ExpExternalMappingEntity*> visited;
  };
  Part part("A", {}, 0, 0);
  ExpExternalMappingEntity complex;
  complex.AddEntity(&part);
  Visitor visitor;
  ExpEntity& entity = complex;
  entity.Accept(&visitor);
  EXPECT_THAT(visitor.visited, ElementsAre(&complex));
}

}  // namespace
}  // namespace VELMAR
