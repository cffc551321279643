#include "LongStrings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "ExpAttributeVisitor.h"
#include "ExpCustomEntities.h"
#include "Input.h"
#include "Instances.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;
using VELMAR::ExpEntity;

constexpr std::size_t kMostForAByte = 6;  // \X2\4E00\X0\ for two bytes of UTF-8
constexpr std::size_t kExamples = 3;

// Values of one kind: how many there are, and where the first of them stand.
struct Found {
  std::size_t count = 0;
  std::vector<std::string> where;

  void Add(const std::string& place) {
    ++count;
    if (where.size() <= kExamples && (where.empty() || where.back() != place)) where.push_back(place);
  }
  std::string Where() const {
    const std::size_t shown = std::min(where.size(), kExamples);
    return fmt::format("{}{}",
                       fmt::join(where.begin(), where.begin() + static_cast<std::ptrdiff_t>(shown), ", "),
                       where.size() > shown ? ", ..." : "");
  }
};

// Looks at the values of a record, also those within selects and aggregates.
class Finder : public VELMAR::ExpAttributeVisitor {
 public:
  // From the member at `begin` on. `instance` begins the place: "#1 " or nothing.
  void Look(ExpEntity& record, int begin, const std::string& instance) {
    const int end = record.GetNofExplicitMembers();
    for (int index = begin;; ++index) {
      ExpAttribute* first = ValueAt(record, index);
      if (first == nullptr && index >= end) return;
      longStrings_ = 0;
      pending_.push_back(first);
      while (!pending_.empty()) {
        ExpAttribute* value = pending_.back();
        pending_.pop_back();
        if (value != nullptr) value->Accept(this);
      }
      if (longStrings_ == 0) continue;
      const std::string place =
          fmt::format("{}{}.{}", instance, record.GetExpClassName(), AttributeName(record, index, begin));
      for (std::size_t i = 0; i < longStrings_; ++i) strings.Add(place);
    }
  }

  Found strings;

 private:
  void VisitExpString(VELMAR::ExpString* value) override {
    if (value->GetExpString().size() * kMostForAByte <= kLongestCommonToken - 2) return;
    try {
      if (value->ToString().size() > kLongestCommonToken) ++longStrings_;
    } catch (const std::string&) {  // it cannot be written either, and writing says so
    }
  }
  void VisitExpSelect(VELMAR::ExpSelect* value) override { pending_.push_back(value->GetExpSelectValue()); }
  void VisitExpAggregation(VELMAR::ExpAggregation* value) override {
    pending_.insert(pending_.end(), value->GetExpAggregation()->begin(), value->GetExpAggregation()->end());
  }

  std::vector<ExpAttribute*> pending_;
  std::size_t longStrings_ = 0;  // in the attribute that is looked at
};

}  // namespace

void ReportLongStrings(Population& file, Findings& findings) {
  Finder finder;
  std::list<ExpEntity*> header;
  for (const char* type : {"FILE_DESCRIPTION", "FILE_NAME", "FILE_SCHEMA"})
    file.GetEntities(header, type, false);
  for (ExpEntity* record : header) finder.Look(*record, 0, "");
  for (const int number : file.Numbers()) {
    ExpEntity* entity = file.GetEntity(number);
    if (entity == nullptr) continue;
    const std::string instance = fmt::format("#{} ", number);
    if (auto* complex = dynamic_cast<VELMAR::ExpExternalMappingEntity*>(entity)) {
      for (ExpEntity* part : *complex->GetEntities())
        finder.Look(*part, part->GetExternalMappingStartIndex(), instance);
    } else {
      finder.Look(*entity, 0, instance);
    }
  }
  if (finder.strings.count > 0) {
    findings.Add(
        Code::kLongString,
        fmt::format("{} written with more than {} characters, which other programs may not read: {}",
                    Counted(finder.strings.count, "string"), Grouped(kLongestCommonToken), finder.strings.Where()));
  }
}

}  // namespace velmar
