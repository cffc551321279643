#include "KeptValues.h"

#include <algorithm>
#include <iterator>
#include <list>

#include "ExpUtilities.h"
#include "OrdinaryEntityType.h"

namespace VELMAR {

// ------------------------------------------------------------------------------------------------------- KeptToken

KeptToken::KeptToken(std::string text) : text_(std::move(text)) {
  if (text_ == "$") SetNotProvided(true);
  if (text_ == "*") SetOmitted(true);
}

void KeptToken::SelectIn(ExpSelect& select, std::unique_ptr<KeptToken> value) {
  select.Select(value.release(), nullptr);
}

// ------------------------------------------------------------------------------------------------------ KeptRecord

KeptRecord& KeptRecord::Of(ExpEntity& entity) {
  if (entity.reserved_ == nullptr) entity.reserved_ = new KeptRecord;
  return *Find(entity);
}

ExpSelect* KeptRecord::Find(int index) const {
  const auto found = values_.find(index);
  return found == values_.end() ? nullptr : const_cast<ExpSelect*>(&found->second);
}

ExpAttribute* KeptRecord::InPlaceOf(ExpAttribute* own, int index) const {
  if (own != nullptr && (!own->IsNotProvided() || own->IsOmitted())) return own;
  ExpSelect* kept = Find(index);
  return kept == nullptr ? own : kept;
}

ExpSelect* GetKeptValue(ExpEntity& entity, int index) {
  const KeptRecord* kept = KeptRecord::Find(entity);
  return kept == nullptr ? nullptr : kept->Find(index);
}

// --------------------------------------------------------------------------------------------------- UnknownEntity

ExpEntityRuntimeType* UnknownEntity::type_ = nullptr;

ExpEntity* UnknownEntity::New() { return new UnknownEntity; }

UnknownEntity* UnknownEntity::Create(const std::string& name, int adminId) {
  if (type_ == nullptr) {
    constexpr int kNoType = -1;
    using Names = std::vector<std::string>;
    type_ = new OrdinaryEntityType("UnknownEntity", "VELMAR", &New, 0, 0, 0, false, new Names{"VELMAR::ExpEntity"},
                                   new Names, new Names, kNoType);
  }
  auto* entity = static_cast<UnknownEntity*>(type_->CreateInstance(adminId));
  entity->name_ = name;
  return entity;
}

std::vector<ExpEntity*> UnknownEntity::HeaderRecords(unsigned int adminId) {
  std::vector<ExpEntity*> records;
  const std::list<ExpEntity*>* instances = type_ == nullptr ? nullptr : type_->GetInstanceList(adminId);
  if (instances == nullptr) return records;
  std::copy_if(instances->begin(), instances->end(), std::back_inserter(records),
               [](ExpEntity* entity) { return static_cast<UnknownEntity*>(entity)->isInHeader; });
  return records;
}

ExpAttribute* UnknownEntity::GetMember(int index) {
  const auto position = static_cast<std::size_t>(index);
  return index >= 0 && position < parameters_.size() ? parameters_[position].get() : nullptr;
}

ExpAttribute* UnknownEntity::GetMember(const std::string& name) {
  const auto found = std::find(names_.begin(), names_.end(), name);
  return found == names_.end() ? nullptr : GetMember(static_cast<int>(found - names_.begin()));
}

ExpSelect* UnknownEntity::AddParameter() {
  auto parameter = std::make_unique<ExpSelect>();
  names_.push_back(std::to_string(parameters_.size() + 1));
  try {
    parameters_.push_back(std::move(parameter));
  } catch (...) {
    names_.pop_back();
    throw;
  }
  return parameters_.back().get();
}

}  // namespace VELMAR
