// Measures the pieces of reading and writing one by one: setting values, their texts, strings, types and instances.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <string>

#include "ExpFile.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"

namespace {

using namespace VELMAR;

constexpr const char* kSchema = "AUTOMOTIVE_DESIGN";

// ------------------------------------------------------------------------------------------------------ setting values

void SetReal(benchmark::State& state) {
  ExpReal value;
  ExpAttribute& attribute = value;
  double number = 0;
  for (auto _ : state) attribute.SetExpReal(number += 1.5);
  benchmark::DoNotOptimize(value);
}
BENCHMARK(SetReal);

void SetInteger(benchmark::State& state) {
  ExpInteger value;
  ExpAttribute& attribute = value;
  int number = 0;
  for (auto _ : state) attribute.SetExpInteger(++number & 0xFFFF);
  benchmark::DoNotOptimize(value);
}
BENCHMARK(SetInteger);

void SetLink(benchmark::State& state) {
  ExpLink value;
  ExpAttribute& attribute = value;
  int number = 0;
  for (auto _ : state) attribute.SetExpLink(++number & 0xFFFF);
  benchmark::DoNotOptimize(value);
}
BENCHMARK(SetLink);

void SetString(benchmark::State& state, const std::string& stepText) {
  ExpString value;
  for (auto _ : state) value.SetExpString(stepText);
  benchmark::DoNotOptimize(value);
}
BENCHMARK_CAPTURE(SetString, Short, "side face");
BENCHMARK_CAPTURE(SetString, Long, std::string(200, 'a'));
BENCHMARK_CAPTURE(SetString, Escapes, "Geh\\X\\E4use \\X2\\03B103B2\\X0\\ \\S\\d");

void SetEnumeration(benchmark::State& state) {
  ExpLogical value;
  ExpAttribute& attribute = value;
  const std::string name = "T";
  for (auto _ : state) attribute.SetExpEnumeration(name);
  benchmark::DoNotOptimize(value);
}
BENCHMARK(SetEnumeration);

// A select that changes its value, with a type name.
void SetSelect(benchmark::State& state) {
  for (auto _ : state) {
    ExpSelect value;
    value.SetExpReal(2.5);
    value.AddExpSelectTypeName("LENGTH_MEASURE");
    benchmark::DoNotOptimize(value);
  }
}
BENCHMARK(SetSelect);

// Elements created, added and deleted; per element.
void FillAggregation(benchmark::State& state) {
  constexpr int kElements = 1000;
  for (auto _ : state) {
    ExpAggregation value;
    for (int i = 0; i < kElements; ++i) value.AddValue(new ExpLink(i));
    benchmark::DoNotOptimize(value.NofElements());
  }
  state.SetItemsProcessed(state.iterations() * kElements);
}
BENCHMARK(FillAggregation);

// ------------------------------------------------------------------------------------------------- strings and numbers

void DecodeString(benchmark::State& state, const std::string& stepText) {
  for (auto _ : state) benchmark::DoNotOptimize(ConvertSTEPStringToUtf8(stepText));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stepText.size()));
}
BENCHMARK_CAPTURE(DecodeString, Ascii, std::string(200, 'a'));
BENCHMARK_CAPTURE(DecodeString, Escapes, "Geh\\X\\E4use \\X2\\03B103B2\\X0\\ \\S\\d");

void EncodeString(benchmark::State& state, const std::string& utf8) {
  for (auto _ : state) benchmark::DoNotOptimize(ConvertUtf8ToSTEPString(utf8));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(utf8.size()));
}
BENCHMARK_CAPTURE(EncodeString, Ascii, std::string(200, 'a'));
BENCHMARK_CAPTURE(EncodeString, OtherLetters, "Geh\u00E4use \u03B1\u03B2 \u00E4");

// --------------------------------------------------------------------------------------------------------------- texts

void TextOf(benchmark::State& state, ExpAttribute& value) {
  for (auto _ : state) benchmark::DoNotOptimize(value.ToString());
}

void TextOfReal(benchmark::State& state) {
  ExpReal value(std::strtod("-12.7071067811865", nullptr));
  TextOf(state, value);
}
BENCHMARK(TextOfReal);

void TextOfInteger(benchmark::State& state) {
  ExpInteger value(-123456);
  TextOf(state, value);
}
BENCHMARK(TextOfInteger);

void TextOfString(benchmark::State& state) {
  ExpString value("side face");
  TextOf(state, value);
}
BENCHMARK(TextOfString);

void TextOfLink(benchmark::State& state) {
  ExpLink value(123456);
  TextOf(state, value);
}
BENCHMARK(TextOfLink);

void TextOfEnumeration(benchmark::State& state) {
  ExpLogical value;
  value.SetExpEnumeration(ExpLogical::T);
  TextOf(state, value);
}
BENCHMARK(TextOfEnumeration);

void TextOfSelect(benchmark::State& state) {
  ExpSelect value;
  value.SetExpReal(2.5);
  value.AddExpSelectTypeName("LENGTH_MEASURE");
  TextOf(state, value);
}
BENCHMARK(TextOfSelect);

void TextOfAggregation(benchmark::State& state) {
  ExpAggregation value;
  for (int i = 0; i < 3; ++i) value.AddValue(new ExpReal(i + 0.5));
  TextOf(state, value);
}
BENCHMARK(TextOfAggregation);

void SetPoint(ExpEntity& point) {
  point.GetMember(0)->SetExpString("corner");
  for (int i = 0; i < 3; ++i) point.GetMember(1)->AddValue(new ExpReal(i + 0.5));
}

void TextOfInstance(benchmark::State& state) {
  ExpFile file(STEP_AP214);
  ExpEntity* point = file.CreateAndAddEntity("CARTESIAN_POINT");
  if (point == nullptr) return state.SkipWithError("no such type");
  SetPoint(*point);
  for (auto _ : state) benchmark::DoNotOptimize(point->ToString());
}
BENCHMARK(TextOfInstance);

void TextOfComplexInstance(benchmark::State& state) {
  ExpFile file(STEP_AP214);
  auto* unit = new ExpExternalMappingEntity;
  for (const char* name : {"LENGTH_UNIT", "NAMED_UNIT", "SI_UNIT"}) {
    if (ExpEntity* part = file.CreateEntity(name)) unit->AddEntity(part);
  }
  file.AddEntity(1, unit);
  MarkUnsetValues(*unit);
  for (auto _ : state) benchmark::DoNotOptimize(unit->ToString());
}
BENCHMARK(TextOfComplexInstance);

// ------------------------------------------------------------------------------------------------- types and instances

void FindType(benchmark::State& state, const std::string& name) {
  ExpRuntimeRegistry& registry = *ExpRuntimeRegistry::GetInstance();
  const std::string schema = kSchema;
  for (auto _ : state) benchmark::DoNotOptimize(registry.GetEntityRuntimeType(name, schema));
}
BENCHMARK_CAPTURE(FindType, OfTheSchema, "CARTESIAN_POINT");
BENCHMARK_CAPTURE(FindType, OfTheHeader, "FILE_NAME");
BENCHMARK_CAPTURE(FindType, Unknown, "NO_SUCH_TYPE");

// A new instance of a found type, and its deletion.
void CreateInstance(benchmark::State& state, const std::string& name) {
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(name, kSchema);
  if (type == nullptr) return state.SkipWithError("no such type");
  for (auto _ : state) delete type->CreateInstance(-1);
}
BENCHMARK_CAPTURE(CreateInstance, CartesianPoint, "CARTESIAN_POINT");
BENCHMARK_CAPTURE(CreateInstance, AdvancedFace, "ADVANCED_FACE");

// As reading does it: by the name of the type, with a number, in the population; deleted a thousand at a time.
void CreateEntity(benchmark::State& state) {
  constexpr int kInstances = 1000;
  const std::string name = "CARTESIAN_POINT";
  ExpFile file(STEP_AP214);
  for (auto _ : state) {
    for (int number = 1; number <= kInstances; ++number) file.AddEntity(number, file.CreateEntity(name));
    file.ClearEntityVector();
  }
  state.SetItemsProcessed(state.iterations() * kInstances);
}
BENCHMARK(CreateEntity);

}  // namespace
