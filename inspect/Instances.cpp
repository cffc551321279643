#include "Instances.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <stdexcept>

#include "FileWalk.h"

namespace velmar {

namespace {

using VELMAR::ExpEntity;

RecordView RecordOf(ExpEntity& entity, int begin) {
  RecordView record = {&entity.GetExpClassName(), {}};
  const std::vector<std::string>& names = *entity.GetMemberNames();
  for (int index = begin; index < entity.GetNofExplicitMembers(); ++index) {
    record.attributes.push_back({&names[static_cast<std::size_t>(index)], entity.GetMember(index)});
  }
  return record;
}

class PlaceFinder : public WalkListener {
 public:
  explicit PlaceFinder(const std::set<int>& numbers) : numbers_(numbers) {}

  std::map<int, Place> places;

 private:
  // Of a number that is used twice, the later instance is the one that is kept.
  void BeginInstance(const WalkedInstance& instance) override {
    if (numbers_.count(instance.number) != 0) places[instance.number] = instance.place;
  }

  const std::set<int>& numbers_;
};

}  // namespace

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

std::map<int, Place> FindPlaces(const std::string& path, const std::set<int>& numbers) {
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  errno = 0;
  PlaceFinder finder(numbers);
  WalkFile(file.get(), finder);
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return finder.places;
}

int ParseInstanceNumber(const std::string& text) {
  const std::string digits = text.substr(!text.empty() && text[0] == '#' ? 1 : 0);
  const bool isNumber = !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
  const std::wstring name = L"#" + std::wstring(digits.begin(), digits.end());
  const int number = isNumber ? InstanceNumberOf(name.c_str()) : 0;
  if (number == 0)
    throw std::invalid_argument(fmt::format("'{}' is no instance number; #12 and 12 are", text));
  return number;
}

}  // namespace velmar
