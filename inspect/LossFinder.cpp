#include "LossFinder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <utility>

#include "ExpRuntimeRegistry.h"
#include "Schemas.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::ExpEntityRuntimeType;
using VELMAR::ExpRuntimeRegistry;
using VELMAR::Token;

constexpr std::size_t kExamples = 3;        // how many instances a message names
constexpr std::size_t kTypesNamed = 8;      // how many types one message names
constexpr std::ptrdiff_t kShortReal = 200;  // real numbers of so many characters always fit 64 bits
constexpr std::ptrdiff_t kShortExponent =
    3;  // with an exponent of fewer digits, too, unless they are that long
constexpr int kGreatestNumber = 1073741823;  // 2^30 - 1

}  // namespace

LossFinder::LossFinder(Population& population, Findings& findings)
    : population_(population), findings_(findings), hadErrors_(findings.Errors() != 0) {}

void LossFinder::Find(std::FILE* file) {
  WalkFile(file, *this);
  if (!population_.IsSchemaSupported()) ReportSchema();
  ReportRecords();
  ReportUnread();
  ReportReferences();
}

void LossFinder::InstanceName(const wchar_t* text, Place place) {
  if (InstanceNumberOf(text) == 0) CheckNumber(text, place, 0, "");
}

void LossFinder::BeginInstance(const WalkedInstance& instance) {
  ++defined_;
  if (population_.GetEntity(instance.number) == nullptr) notKept_.insert(instance.number);
  if (population_.repeated_.count(instance.number) == 0) return;
  const std::string here = fmt::format("{}:{}", instance.place.line, instance.place.column);
  const auto [first, isNew] = seen_.insert({instance.number, here});
  if (isNew) return;
  ++replaced_;
  findings_.Add(Code::kNumberUsedTwice, instance.place,
                fmt::format("{} is used twice; the instance at {} is not kept", instance.name, first->second),
                instance.number);
  first->second = here;
}

void LossFinder::BeginRecord(const WalkedRecord& record) {
  record_ = &record;
  type_ = &TypeOf(record.typeName);
  if (record.instance.name.empty() && record.typeName == L"FILE_SCHEMA") schemaPlace_ = record.place;
}

void LossFinder::Value(const WalkedValue& value) {
  if (value.kind == Token::EntityInstanceName) NoteReference(value);
  if (value.kind == Token::Real) RealValue(value);
}

void LossFinder::EndRecord(const WalkedRecord& record, int parameters) {
  const Place place = record.instance.name.empty() ? record.place : record.instance.place;
  const int attributes = type_->attributes - (record.isPart ? type_->firstOwn : 0);
  if (type_->known && parameters == attributes) return;
  const Kind kind = type_->known                   ? parameters > attributes ? Kind::kTooMany : Kind::kTooFew
                    : record.isPart                ? Kind::kUnknownPart
                    : record.instance.name.empty() ? Kind::kUnknownHeader
                                                   : Kind::kUnknown;
  Note(records_[{Narrow(record.typeName.c_str()), kind, type_->known ? attributes : 0}], record.instance,
       place);
}

// Of a reference to, or a definition of, an instance.
void LossFinder::CheckNumber(const wchar_t* name, Place place, int instance, const std::string& attribute) {
  if (std::wcstol(name + 1, nullptr, 10) == 0) {
    findings_.Add(Code::kNumberZero, place, "instance numbers begin at #1", instance, attribute);
  } else {
    const bool isKept = std::wcstol(name + 1, nullptr, 10) <= std::numeric_limits<int>::max();
    findings_.Add(Code::kNumberTooHigh, place,
                  fmt::format("instance numbers end at #{}{}", kGreatestNumber,
                              isKept ? "" : fmt::format("; {} is not kept", Narrow(name))),
                  instance, attribute);
  }
}

void LossFinder::NoteReference(const WalkedValue& value) {
  const int number = InstanceNumberOf(value.text);
  if (number == 0) CheckNumber(value.text, value.place, record_->instance.number, AttributeOf(value));
  if (number == 0 || population_.GetEntity(number) != nullptr) return;
  UnresolvedReference& reference = unresolved_[number];
  if (reference.count++ == 0) {
    reference.to = number;
    reference.from = record_->instance.number;
    reference.place = value.place;
  }
}

void LossFinder::RealValue(const WalkedValue& value) {
  const wchar_t* const begin = value.text;
  const wchar_t* const end = begin + std::wcslen(begin);
  const wchar_t* last = end;  // behind what is no digit
  while (last != begin && last[-1] >= L'0' && last[-1] <= L'9') --last;
  const bool hasExponent = last != begin && last[-1] != L'.';
  if (end - begin <= kShortReal && !(hasExponent && end - last >= kShortExponent)) return;
  const double number = std::strtod(Narrow(begin).c_str(), nullptr);
  const bool isNotZero = std::any_of(begin, last, [](wchar_t c) { return c >= L'1' && c <= L'9'; });
  if (!std::isinf(number) && (number != 0 || !isNotZero)) return;
  findings_.Add(Code::kRealRange, value.place,
                fmt::format("the real number does not fit 64 bits and becomes {}", number == 0 ? "0" : "infinite"),
                record_->instance.number, AttributeOf(value));
}

// "CARTESIAN_POINT.coordinates"
std::string LossFinder::AttributeOf(const WalkedValue& value) const {
  std::string name = Narrow(record_->typeName.c_str());
  if (type_->runtimeType == nullptr) return name;
  const int index = value.parameter + (record_->isPart ? type_->firstOwn : 0);
  const std::vector<std::string>& names = *type_->runtimeType->GetMemberNames();
  if (index >= 0 && static_cast<std::size_t>(index) < names.size())
    name += "." + names[static_cast<std::size_t>(index)];
  return name;
}

LossFinder::Type& LossFinder::TypeOf(const std::wstring& name) {
  const auto found = types_.find(name);
  if (found != types_.end()) return found->second;

  const std::string narrow = Narrow(name.c_str());
  Type type = {population_.unknownTypes_.count(narrow) == 0, 0, 0, nullptr};
  if (type.known) {
    ExpEntityRuntimeType* runtimeType =
        ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(narrow, population_.GetEnforcedFactoryName());
    if (runtimeType != nullptr) {
      type = {true, runtimeType->GetNofExplicitMembers(), runtimeType->GetExternalMappingStartIndex(),
              runtimeType};
    }
  }
  return types_.emplace(name, type).first->second;
}

void LossFinder::Note(Loss& loss, const WalkedInstance& instance, Place place) {
  if (loss.count++ == 0) {
    loss.first = place;
    loss.instance = instance.number;
  }
  if (instance.name.empty() || (!loss.where.empty() && loss.where.back() == instance.name)) return;
  if (loss.where.size() < kExamples) {
    loss.where.push_back(instance.name);
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
      case Kind::kUnknownHeader:
        unplaced[type] -= std::min(unplaced[type], loss.count);
        if (kind == Kind::kUnknownHeader) code = Code::kUnknownHeaderRecord;
        if (!population_.IsSchemaSupported()) continue;
        text = fmt::format(
            "{} of {} kept by position: {} has no such entity",
            Counted(loss.count, kind == Kind::kUnknown       ? "instance"
                                : kind == Kind::kUnknownPart ? "partial record"
                                                             : "header record"),
            type, kind == Kind::kUnknownHeader ? "the header" : population_.GetEnforcedFactoryName());
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
