// Random instances of the entities of AP203, with values of the kinds that its EXPRESS text declares, are
// written, read and compared.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "../c/RandomValues.h"
#include "BundledSchemas.h"
#include "ExpressParser.h"
#include "Resolver.h"
#include "SchemaContents.h"

namespace VELMAR {
namespace {

using TestData::Kind;
using TestData::Wanted;

constexpr const char* kRegistryName = "CONFIG_CONTROL_DESIGN";
constexpr int kInstances = 400;

std::vector<std::string> UpperItems(const Express::TypeExpression& enumeration) {
  std::vector<std::string> items;
  for (const Express::TypeItem& item : AllItems(enumeration))
    items.push_back(Express::UpperCase(item.name.text));
  return items;
}

Wanted WantedOf(const Express::TypeExpression& type);

// What a select can be: the choices of the selects in it are its own, defined types give their names.
void AddChoices(const Express::TypeExpression& select, std::vector<Wanted>& choices) {
  for (const Express::TypeItem& item : AllItems(select)) {
    if (item.declaration->kind == Express::DeclarationKind::Entity) {
      choices.push_back({Kind::Link, {}, {}, {}});
      continue;
    }
    const auto& type = static_cast<const Express::DefinedType&>(*item.declaration);
    const Express::TypeExpression* underlying = Express::Underlying(type.underlying);
    if (Express::ValueKindOf(type.underlying) == Express::ValueKind::Select) {
      AddChoices(*underlying, choices);
    } else {
      choices.push_back(WantedOf(type.underlying));
      choices.back().typeNames.push_back(Express::UpperCase(type.name.text));
    }
  }
}

Wanted WantedOf(const Express::TypeExpression& type) {
  using Express::ValueKind;
  const Express::TypeExpression& underlying = *Express::Underlying(type);
  switch (Express::ValueKindOf(type)) {
    case ValueKind::Real:
      return {Kind::Real, {}, {}, {}};
    case ValueKind::Integer:
      return {Kind::Integer, {}, {}, {}};
    case ValueKind::String:
      return {Kind::String, {}, {}, {}};
    case ValueKind::Link:
      return {Kind::Link, {}, {}, {}};
    case ValueKind::Boolean:
      return {Kind::Enumeration, {"F", "T"}, {}, {}};
    case ValueKind::Logical:
      return {Kind::Enumeration, {"F", "T", "U"}, {}, {}};
    case ValueKind::Enumeration:
      return {Kind::Enumeration, UpperItems(underlying), {}, {}};
    case ValueKind::Aggregation:
      return {Kind::List, {}, {WantedOf(*underlying.element)}, {}};
    case ValueKind::Select: {
      Wanted select{Kind::Select, {}, {}, {}};
      AddChoices(underlying, select.choices);
      return select;
    }
    case ValueKind::Binary:
      break;
  }
  return {Kind::Binary, {}, {}, {}};
}

// The entities of the schema by their names in the registry, with what their attributes can be.
const std::map<std::string, std::vector<Wanted>>& Entities() {
  static const auto* const entities = [] {
    Express::Model model;
    Express::Diagnostics diagnostics;
    Express::ParseFile(model, Express::SourceFile::Read(VELMAR_SCHEMAS "/config_control_design.exp"),
                       diagnostics);
    Express::Resolve(model, diagnostics);
    EXPECT_EQ(diagnostics.ErrorCount(), 0u);
    const Express::SchemaContents contents(*model.schemas.at(0));
    auto* found = new std::map<std::string, std::vector<Wanted>>;
    for (const auto& [name, entity] : contents.Entities()) {
      std::vector<Wanted>& attributes = (*found)[Express::UpperCase(name)];
      for (const Express::Slot& slot : InternalMapping(*entity))
        attributes.push_back(WantedOf(*slot.attribute->type));
    }
    return found;
  }();
  return *entities;
}

class Ap203RoundTrip : public testing::TestWithParam<unsigned int> {
 protected:
  void SetUp() override {
    if (!IsBundledSchema(kRegistryName)) GTEST_SKIP() << "this build leaves the library out";
    LoadBundledSchema(kRegistryName);
    for (const auto& [name, attributes] : Entities()) names_.push_back(name);
    ASSERT_GT(names_.size(), 200u);
  }

  // Every third one a complex instance of several types.
  void Fill(ExpFile& file, TestData::RandomValues& random) const {
    const auto wanted = [](const std::string& type, int index, ExpEntity*) {
      return Entities().at(type).at(static_cast<std::size_t>(index));
    };
    int number = 0;
    for (int i = 0; i < kInstances; ++i) {
      number += 1 + (random.OneIn(50) ? random.Below(20000) : random.Below(3));
      std::set<std::string> types{random.OneOf(names_)};
      while (i % 3 == 0 && types.size() < 2u + static_cast<unsigned int>(i) % 4)
        types.insert(random.OneOf(names_));
      AddRandom(file, number, std::vector<std::string>(types.begin(), types.end()), wanted, 2 * kInstances,
                random);
    }
  }

  std::vector<std::string> names_;
};

TEST_P(Ap203RoundTrip, WhatIsReadIsWhatWasWritten) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  TestData::RandomValues random(GetParam(), true);
  ExpFile made(STEP_AP203);
  Fill(made, random);
  TestData::CheckRoundTrip(made, true);
}

TEST_P(Ap203RoundTrip, WhatListsCannotKeepIsLostOnce) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  TestData::RandomValues random(GetParam(), false);
  ExpFile made(STEP_AP203);
  Fill(made, random);
  TestData::CheckRoundTrip(made, false);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Ap203RoundTrip, testing::Range(1u, 4u));

// Each entity once, so that none depends on chance.
TEST_P(Ap203RoundTrip, EveryEntity) {
  TestData::RandomValues random(GetParam(), true);
  ExpFile made(STEP_AP203);
  int number = 0;
  for (const auto& [name, attributes] : Entities()) {
    ExpEntity* entity = AddRandom(
        made, ++number, {name},
        [&all = attributes](const std::string&, int index, ExpEntity*) {
          return all.at(static_cast<std::size_t>(index));
        },
        static_cast<int>(names_.size()), random);
    EXPECT_EQ(entity->GetNofExplicitMembers(), static_cast<int>(attributes.size())) << name;
  }
  TestData::CheckRoundTrip(made, true);
}

}  // namespace
}  // namespace VELMAR
