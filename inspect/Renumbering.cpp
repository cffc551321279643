#include "Renumbering.h"

#include <cstddef>
#include <numeric>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ExpCustomEntities.h"
#include "Instances.h"
#include "Values.h"

namespace velmar {

namespace {

using VELMAR::ExpEntity;

using Numbering = std::unordered_map<int, int>;  // the new numbers by the old ones

// Also where the record has the values that it inherits from others.
void FollowReferences(ExpEntity& record, Numbering& numbers) {
  for (int index = 0;; ++index) {
    VELMAR::ExpAttribute* value = ValueAt(record, index);
    if (value == nullptr && index >= record.GetNofExplicitMembers()) return;
    if (value == nullptr) continue;
    ForEachLinkIn(*value, [&numbers](VELMAR::ExpLink& link) {
      if (link.GetExpLink() < 0) return;  // none
      const int next = static_cast<int>(numbers.size()) + 1;
      link.SetExpLink(numbers.emplace(link.GetExpLink(), next).first->second);
    });
  }
}

// The records of an instance: itself, or the parts of a complex one.
std::vector<ExpEntity*> RecordsOf(ExpEntity& entity) {
  auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(&entity);
  if (complex == nullptr) return {&entity};
  return {complex->GetEntities()->begin(), complex->GetEntities()->end()};
}

}  // namespace

void Renumber(Population& file) {
  std::vector<ExpEntity*> entities;
  Numbering numbers;
  for (const int number : file.Numbers()) {
    ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    entities.push_back(entity);
    numbers.emplace(number, static_cast<int>(entities.size()));
    file.ExpFile::AddEntity(number, nullptr);
  }
  for (std::size_t i = 0; i < entities.size(); ++i) {
    const int number = static_cast<int>(i) + 1;
    for (ExpEntity* record : RecordsOf(*entities[i])) {
      FollowReferences(*record, numbers);
      record->SetEntityNumber(number);
    }
    entities[i]->ExpEntity::SetEntityNumber(number);  // what its parts inherit has followed
    file.ExpFile::AddEntity(number, entities[i]);
  }
  file.numbers_.resize(entities.size());
  std::iota(file.numbers_.begin(), file.numbers_.end(), 1);
}

}  // namespace velmar
