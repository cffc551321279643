#include "Instances.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <stdexcept>

#include "ExpUtilities.h"
#include "NumberRules.h"
#include "Part21Source.h"
#include "WrittenInstances.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;

RecordView RecordOf(ExpEntity& entity, int begin) {
  RecordView record = {&entity.GetExpClassName(), {}};
  const int end = entity.GetNofExplicitMembers();
  for (int index = begin;; ++index) {
    ExpAttribute* value = ValueAt(entity, index);
    if (value == nullptr && index >= end) return record;
    record.attributes.push_back({&AttributeName(entity, index, begin), value});
  }
}

}  // namespace

ExpAttribute* ValueAt(ExpEntity& record, int index) {
  ExpAttribute* own = index < record.GetNofExplicitMembers() ? record.GetMember(index) : nullptr;
  if (own != nullptr && (!own->IsNotProvided() || own->IsOmitted())) return own;
  ExpAttribute* kept = VELMAR::GetKeptValue(record, index);
  return kept == nullptr ? own : kept;
}

const std::string& AttributeName(ExpEntity& record, int index, int begin) {
  static std::deque<std::string> positions;  // their addresses stay
  if (index < record.GetNofExplicitMembers()) return (*record.GetMemberNames())[static_cast<std::size_t>(index)];
  const auto position = static_cast<std::size_t>(index - begin);
  while (positions.size() <= position) positions.push_back(std::to_string(positions.size() + 1));
  return positions[position];
}

std::string TypeName(ExpEntity& entity) {
  auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(&entity);
  if (complex == nullptr) return entity.GetExpClassName();
  std::vector<std::string> names;
  for (ExpEntity* part : *complex->GetEntities()) names.push_back(part->GetExpClassName());
  std::sort(names.begin(), names.end());
  return fmt::format("({})", fmt::join(names, " "));
}

InstanceView ViewOf(ExpEntity& entity) {
  InstanceView view = {entity.GetEntityNumber(), TypeName(entity), false, {}};
  if (auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(&entity)) {
    view.isComplex = true;
    for (ExpEntity* part : *complex->GetEntities()) {
      view.records.push_back(RecordOf(*part, part->GetExternalMappingStartIndex()));
    }
  } else {
    view.records.push_back(RecordOf(entity, 0));
  }
  return view;
}

std::map<int, Place> FindPlaces(const std::string& path, const std::set<int>& numbers, const Progress& progress) {
  std::map<int, Place> places;
  ReportedProgress all(progress);
  const Part21Source source(path, all.Part(0, Part21Source::kShareOfJson));
  // Of a number that is used twice, the later instance is the one that is kept.
  const auto find = [&](const WrittenInstance& instance) {
    if (instance.number > kGreatestInstance) return;
    const int number = static_cast<int>(instance.number);
    if (numbers.count(number) != 0) places[number] = instance.where;
  };
  ForAnyWrittenInstance(source.Path(), ValuesRead::None, find, all.Part(source.Share(), 1));
  return places;
}

int ParseInstanceNumber(const std::string& text) {
  const std::string digits = text.substr(!text.empty() && text[0] == '#' ? 1 : 0);
  const bool isNumber = !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
  const std::int64_t number = isNumber ? InstanceNumber(digits.data(), digits.data() + digits.size()) : 0;
  if (number == 0 || number > kGreatestInstance) {
    throw std::invalid_argument(fmt::format("'{}' is no instance number; #12 and 12 are", text));
  }
  return static_cast<int>(number);
}

}  // namespace velmar
