#include "LossFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

#include "ExpRuntimeRegistry.h"
#include "NumberRules.h"
#include "Schemas.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::ExpEntityRuntimeType;
using VELMAR::ExpRuntimeRegistry;

constexpr std::size_t kExamples = 3;        // how many instances a message names
constexpr std::size_t kTypesNamed = 8;      // how many types one message names

// The name of a user-defined type as the provider was asked for it.
std::string WithoutMark(const std::string& type) { return type[0] == '!' ? type.substr(1) : type; }

}  // namespace

LossFinder::LossFinder(Population& population, Findings& findings)
    : population_(population), findings_(findings), hadErrors_(findings.Errors() != 0) {}

void LossFinder::Find(const std::string& path, const Progress& progress) {
  ForAnyWrittenInstance(path, ValuesRead::Numerals, [this](const WrittenInstance& instance) { Look(instance); }, progress);
  if (!population_.IsSchemaSupported()) ReportSchema();
  ReportRecords();
  ReportUnread();
  ReportReferences();
}

void LossFinder::Look(const WrittenInstance& instance) {
  number_ = 0;
  isPart_ = instance.isComplex;
  if (!instance.IsInHeader()) LookAtNumber(instance);
  for (const WrittenRecord& record : instance.records) {
    if (record.type.empty()) continue;
    record_ = &record;
    type_ = &TypeOf(record.type, instance.IsInHeader());
    LookAtValues(record);
    if (instance.isWhole || !type_->known) LookAtRecord(instance, record);
  }
}

void LossFinder::LookAtNumber(const WrittenInstance& instance) {
  const bool canBeStored = instance.number > 0 && instance.number <= kGreatestInstance;
  if (canBeStored) {
    number_ = static_cast<int>(instance.number);
  } else {
    CheckNumber(instance.number, fmt::format("#{}", instance.number), instance.where, 0, "");
  }
  ++defined_;
  if (population_.GetEntity(number_) == nullptr) notKept_.insert(number_);
  if (population_.repeated_.count(number_) == 0) return;
  const std::string here = fmt::format("{}:{}", instance.where.line, instance.where.column);
  const auto [first, isNew] = seen_.insert({number_, here});
  if (isNew) return;
  ++replaced_;
  findings_.Add(Code::kNumberUsedTwice, instance.where,
                fmt::format("#{} is used twice; the instance at {} is not kept", number_, first->second), number_);
  first->second = here;
}

void LossFinder::LookAtRecord(const WrittenInstance& instance, const WrittenRecord& record) {
  const bool isInHeader = instance.IsInHeader();
  if (isInHeader && record.type == "FILE_SCHEMA") schemaPlace_ = record.where;
  const int parameters = static_cast<int>(record.parameters);
  const int attributes = type_->attributes - (isPart_ ? type_->firstOwn : 0);
  if (type_->known && parameters == attributes) return;
  const Kind kind = type_->known ? parameters > attributes ? Kind::kTooMany : Kind::kTooFew
                    : isPart_    ? Kind::kUnknownPart
                    : isInHeader ? Kind::kUnknownHeader
                                 : Kind::kUnknown;
  Note(records_[{WithoutMark(record.type), kind, type_->known ? attributes : 0}], instance,
       isInHeader ? record.where : instance.where);
}

void LossFinder::LookAtValues(const WrittenRecord& record) {
  for (const WrittenValue& value : record.values) {
    if (value.kind == WrittenValue::Kind::Reference) NoteReference(value);
    if (value.kind == WrittenValue::Kind::Real) RealValue(value);
  }
}

// Of a reference to, or a definition of, an instance.
void LossFinder::CheckNumber(std::int64_t number, const std::string& text, Place place, int instance,
                             const std::string& attribute) {
  if (number == 0) {
    findings_.Add(Code::kNumberZero, place, "instance numbers begin at #1", instance, attribute);
    return;
  }
  const bool isKept = number <= std::numeric_limits<int>::max();
  findings_.Add(Code::kNumberTooHigh, place,
                fmt::format("instance numbers end at #{}{}", kGreatestInstance, isKept ? "" : fmt::format("; {} is not kept", text)),
                instance, attribute);
}

void LossFinder::NoteReference(const WrittenValue& value) {
  const char* const digits = value.text.data();
  const std::int64_t wanted = InstanceNumber(digits, digits + value.text.size());
  if (wanted == 0 || wanted > kGreatestInstance) {
    CheckNumber(wanted, "#" + value.text, value.where, number_, AttributeOf(value));
    return;
  }
  const int number = static_cast<int>(wanted);
  if (population_.GetEntity(number) != nullptr) return;
  UnresolvedReference& reference = unresolved_[number];
  if (reference.count++ == 0) {
    reference.to = number;
    reference.from = number_;
    reference.place = value.where;
  }
}

void LossFinder::RealValue(const WrittenValue& value) {
  const std::string becomes = BeyondRange(value.text);
  if (becomes.empty()) return;
  findings_.Add(Code::kRealRange, value.where,
                fmt::format("the real number does not fit 64 bits and becomes {}", becomes), number_,
                AttributeOf(value));
}

// "CARTESIAN_POINT.coordinates"
std::string LossFinder::AttributeOf(const WrittenValue& value) const {
  std::string name = WithoutMark(record_->type);
  if (type_->runtimeType == nullptr) return name;
  const std::size_t index = value.parameter + (isPart_ ? static_cast<std::size_t>(type_->firstOwn) : 0);
  const std::vector<std::string>& names = *type_->runtimeType->GetMemberNames();
  if (index < names.size()) name += "." + names[index];
  return name;
}

LossFinder::Type& LossFinder::TypeOf(const std::string& name, bool isInHeader) {
  std::unordered_map<std::string, Type>& types = isInHeader ? headerTypes_ : types_;
  const auto found = types.find(name);
  if (found != types.end()) return found->second;

  const std::string narrow = WithoutMark(name);
  Type type = {isInHeader ? IsHeaderType(name) : population_.unknownTypes_.count(narrow) == 0, 0, 0, nullptr};
  if (type.known) {
    ExpEntityRuntimeType* runtimeType =
        ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(narrow, population_.GetEnforcedFactoryName());
    if (runtimeType != nullptr) {
      type = {true, runtimeType->GetNofExplicitMembers(), runtimeType->GetExternalMappingStartIndex(),
              runtimeType};
    }
  }
  return types.emplace(name, type).first->second;
}

void LossFinder::Note(Loss& loss, const WrittenInstance& instance, Place place) const {
  if (loss.count++ == 0) {
    loss.first = place;
    loss.instance = number_;
  }
  if (instance.IsInHeader()) return;
  const std::string name = fmt::format("#{}", instance.number);
  if (!loss.where.empty() && loss.where.back() == name) return;
  if (loss.where.size() < kExamples) {
    loss.where.push_back(name);
  } else {
    loss.hasMore = true;
  }
}

std::string LossFinder::Where(const Loss& loss) {
  if (loss.where.empty()) return "";
  return fmt::format(" ({}{})", fmt::join(loss.where, ", "), loss.hasMore ? ", ..." : "");
}

void LossFinder::ReportSchema() {
  const std::string& name = population_.SchemaOfFile();
  findings_.Add(name.empty() ? Code::kNoSchema : Code::kUnsupportedSchema, schemaPlace_,
                name.empty()
                    ? fmt::format("the file names no schema; supported: {}", SupportedSchemas())
                    : fmt::format("schema '{}' is not supported; supported: {}", name, SupportedSchemas()));
}

void LossFinder::ReportRecords() {
  std::map<std::string, std::size_t> unplaced = population_.unknownTypes_;
  for (const auto& [key, loss] : records_) {
    const auto& [type, kind, attributes] = key;
    Code code = Code::kUnknownType;
    std::string text;
    switch (kind) {
      case Kind::kUnknown:
      case Kind::kUnknownPart:
        unplaced[type] -= std::min(unplaced[type], loss.count);
        if (!population_.IsSchemaSupported()) continue;
        text = fmt::format("{} of {} kept by position: {} has no such entity",
                           Counted(loss.count, kind == Kind::kUnknown ? "instance" : "partial record"), type,
                           population_.GetEnforcedFactoryName());
        break;
      case Kind::kUnknownHeader:
        code = Code::kUnknownHeaderRecord;
        text = fmt::format("{} of {} kept by position: the header has no such entity", Counted(loss.count, "header record"), type);
        break;
      case Kind::kTooMany:
        code = Code::kTooManyParameters;
        text = fmt::format("{} of {} with more parameters than attributes ({}): the surplus is kept by position",
                           Counted(loss.count, "record"), type, attributes);
        break;
      case Kind::kTooFew:
        code = Code::kTooFewParameters;
        text = fmt::format(
            "{} of {} with fewer parameters than attributes ({}): the others have no value",
            Counted(loss.count, "record"), type, attributes);
        break;
    }
    findings_.Add(code, loss.first, text + Where(loss), loss.instance, type);
  }
  if (!population_.IsSchemaSupported()) {
    ReportUnknownAtOnce();
    return;
  }
  // What the parser takes for a record while it recovers from a syntax error need not be one.
  if (hadErrors_) return;
  for (const auto& [type, count] : unplaced) {
    if (count > 0) {
      findings_.Add(Code::kUnknownType,
                    fmt::format("{} of {} kept by position: {} has no such entity", Counted(count, "record"), type,
                                population_.GetEnforcedFactoryName()));
    }
  }
}

void LossFinder::ReportUnknownAtOnce() {
  const auto& unknown = population_.unknownTypes_;
  if (unknown.empty()) return;
  std::size_t records = 0;
  std::vector<std::string> names;
  for (const auto& [type, count] : unknown) {
    records += count;
    if (names.size() < kTypesNamed) names.push_back(type);
  }
  findings_.Add(Code::kUnknownType,
                fmt::format("{} of {} kept by position: {}{}", Counted(records, "record"),
                            Counted(unknown.size(), "unknown type"), fmt::join(names, ", "),
                            unknown.size() > names.size() ? ", ..." : ""));
}

// Every instance that the file defines is kept or replaced by a later one; what is
// missing then was passed over with a syntax error.
void LossFinder::ReportUnread() {
  if (defined_ < population_.Count() && !hadErrors_) {
    findings_.Add(Code::kFileChanged, "the file has become shorter while it was read");
  }
  const std::size_t accounted = population_.Count() + replaced_;
  if (defined_ <= accounted) return;
  findings_.Add(Code::kInstancesNotRead,
                fmt::format("{} of the {} instances were not read because of the errors",
                            Grouped(defined_ - accounted), Grouped(defined_)));
}

// An instance that is there but could not be kept is another matter.
void LossFinder::ReportReferences() {
  std::vector<UnresolvedReference>& found = population_.unresolved_;
  for (const auto& [number, reference] : unresolved_) {
    if (notKept_.count(number) == 0) found.push_back(reference);
  }
  std::sort(found.begin(), found.end(), [](const UnresolvedReference& a, const UnresolvedReference& b) {
    return a.place.line != b.place.line ? a.place.line < b.place.line : a.place.column < b.place.column;
  });
}

}  // namespace velmar
