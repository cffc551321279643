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

namespace velmar {

namespace {

using VELMAR::ExpEntityRuntimeType;
using VELMAR::ExpRuntimeRegistry;
using VELMAR::Token;

constexpr std::size_t kExamples = 3;        // how many instances a message names
constexpr std::size_t kTypesNamed = 8;      // how many types one message names
constexpr std::size_t kShortNumber = 9;     // so many characters always fit 32 bits
constexpr std::ptrdiff_t kShortReal = 200;  // real numbers of so many characters always fit 64 bits
constexpr std::ptrdiff_t kShortExponent =
    3;  // with an exponent of fewer digits, too, unless they are that long
constexpr long kFirstBadNumber = 1073741824;  // 2^30

std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

// Which of the parentheses around a value open lists, and which belong to typed parameters.
class Nesting {
 public:
  void Open(bool typed) {
    typed_.push_back(typed);
    if (typed) {
      if (lists_ > 0) ++typedInLists_;
    } else {
      ++lists_;
      if (typedInLists_ > 0) ++listsInTyped_;
    }
  }
  void Close() {
    if (typed_.back()) {
      if (typedInLists_ > 0) --typedInLists_;
    } else {
      --lists_;
      if (listsInTyped_ > 0) --listsInTyped_;
    }
    typed_.pop_back();
  }
  bool IsOutside() const { return typed_.empty(); }
  bool IsInList() const { return lists_ > 0; }
  bool IsInTypedElement() const { return typedInLists_ > 0; }
  /// Whether nothing of what stands here is kept.
  bool IsLost() const { return listsInTyped_ > 0; }

 private:
  std::vector<bool> typed_;
  std::size_t lists_ = 0;
  std::size_t typedInLists_ = 0;
  std::size_t listsInTyped_ = 0;
};

}  // namespace

LossFinder::LossFinder(FILE* file, Population& population, Messages& messages)
    : population_(population), messages_(messages), hadErrors_(messages.Errors() != 0), scanner_(file) {}

void LossFinder::Find() {
  std::vector<Instance> enclosing;  // the instances in whose scope we are
  Next();
  while (!Is(Token::EoF)) {
    if (Is(Token::Header)) {
      Header();
    } else if (Is(Token::EntityInstanceName)) {
      InstanceOrReference(enclosing);
    } else if (Is(Token::EndScope) && !enclosing.empty()) {
      const Instance instance = enclosing.back();
      enclosing.pop_back();
      Next();
      if (Is(Token::Slash)) {  // the export list
        do Next();
        while (!Is(Token::Slash) && !Is(Token::Semicolon) && !Is(Token::EoF));
        if (Is(Token::Slash)) Next();
      }
      Records(instance);
    } else {
      Next();
    }
  }
  if (!population_.IsSchemaSupported()) ReportSchema();
  ReportRecords();
  ReportValues();
  ReportUnread();
}

void LossFinder::Next() { token_ = scanner_.Scan(); }

void LossFinder::Header() {
  Next();
  while (!Is(Token::EndSec) && !Is(Token::Data) && !Is(Token::EoF)) {
    if (Is(Token::Ident)) {
      if (std::wcscmp(token_->val, L"FILE_SCHEMA") == 0) schemaPlace_ = Here();
      Record({"", Here()}, false);
    } else {
      Next();
    }
  }
}

// entityInstance = "#n" "=" [ "&SCOPE" ... "ENDSCOPE" ] record ";" .
void LossFinder::InstanceOrReference(std::vector<Instance>& enclosing) {
  const Instance instance = {Narrow(token_->val), Here()};
  InstanceNumber();
  Next();
  if (!Is(Token::Equals)) return;
  ++defined_;
  const long number = std::strtol(instance.name.c_str() + 1, nullptr, 10);
  if (number < kFirstBadNumber && population_.repeated_.count(static_cast<int>(number)) != 0) {
    const std::string here = fmt::format("{}:{}", instance.place.line, instance.place.column);
    const auto [first, isNew] = seen_.insert({static_cast<int>(number), here});
    if (!isNew) {
      ++replaced_;
      messages_.Add(
          Severity::kError, instance.place.line, instance.place.column,
          fmt::format("{} is used twice; the instance at {} is not kept", instance.name, first->second));
      first->second = here;
    }
  }
  Next();
  if (Is(Token::Scope)) {
    enclosing.push_back(instance);
    Next();
  } else {
    Records(instance);
  }
}

void LossFinder::Records(const Instance& instance) {
  current_ = instance;
  bool isComplex = false;
  while (!Is(Token::Semicolon) && !Is(Token::EntityInstanceName) && !Is(Token::EoF)) {
    if (Is(Token::Ident)) {
      Record(instance, isComplex);
    } else {
      isComplex = isComplex || Is(Token::LeftParenthesis);
      Next();
    }
  }
}

void LossFinder::Record(const Instance& instance, bool isPart) {
  const std::wstring wideName = token_->val;
  const Instance record = {instance.name, instance.name.empty() ? Here() : instance.place};
  Next();
  if (!Is(Token::LeftParenthesis)) return;
  const Type& type = TypeOf(wideName);
  const int parameters = Parameters(type.known);
  if (!type.known) {
    const Kind kind = isPart                  ? Kind::kUnknownPart
                      : instance.name.empty() ? Kind::kUnknownHeader
                                              : Kind::kUnknown;
    Note(records_[{Narrow(wideName.c_str()), kind, 0}], record);
    return;
  }
  const int attributes = type.attributes - (isPart ? type.firstOwn : 0);
  if (parameters == attributes) return;
  const Kind kind = parameters > attributes ? Kind::kTooMany : Kind::kTooFew;
  Note(records_[{Narrow(wideName.c_str()), kind, attributes}], record);
}

// Passes over a parameter list with its parentheses; returns the number of parameters. With `isKept`, notes
// the values that the attributes do not take: an aggregate has elements of some kinds only, and of a typed
// element it takes plain values.
int LossFinder::Parameters(bool isKept) {
  Nesting nesting;
  int count = 0;
  bool expectsParameter = true;
  bool afterName = false;
  Place place;
  const auto note = [&](Loss& loss) {
    if (isKept && !nesting.IsLost()) Note(loss, {current_.name, place});
  };
  Next();
  while (!Is(Token::Semicolon) && !Is(Token::EoF)) {
    if (Is(Token::RightParenthesis) && nesting.IsOutside()) {
      Next();
      return count;
    }
    if (Is(Token::Comma)) {
      expectsParameter = expectsParameter || nesting.IsOutside();
      afterName = false;
      Next();
      continue;
    }
    if (expectsParameter) ++count;
    expectsParameter = false;
    place = Here();
    switch (token_->kind) {
      case Token::LeftParenthesis:
        if (!afterName && nesting.IsInTypedElement()) note(listsInTypedElements_);
        nesting.Open(afterName);
        break;
      case Token::RightParenthesis:
        nesting.Close();
        break;
      case Token::Point:  // an enumeration value is three tokens
        afterName = false;
        Next();
        if (!Is(Token::Ident)) continue;
        if (nesting.IsInList()) note(enumerationsInLists_);
        Next();
        if (!Is(Token::Point)) continue;
        break;
      case Token::Dollar:
        if (nesting.IsInList() && !nesting.IsInTypedElement()) note(unsetInLists_);
        break;
      case Token::Asterisk:
        if (nesting.IsInList()) note(unsetInLists_);
        break;
      case Token::Binary:
        note(binaries_);
        break;
      case Token::EntityInstanceName:
        InstanceNumber();
        break;
      case Token::Integer:
        IntegerValue();
        break;
      case Token::Real:
        RealValue();
        break;
      default:
        break;
    }
    afterName = Is(Token::Ident);
    Next();
  }
  return count;
}

// A reference to, or a definition of, an instance.
void LossFinder::InstanceNumber() {
  const wchar_t* digits = token_->val + 1;
  if (std::wcslen(digits) <= kShortNumber && (digits[0] != L'0' || std::wcstol(digits, nullptr, 10) != 0))
    return;
  const long number = std::wcstol(digits, nullptr, 10);
  if (number == 0) {
    messages_.Add(Severity::kError, token_->line, token_->col, "instance numbers begin at #1");
  } else if (number >= kFirstBadNumber) {
    messages_.Add(Severity::kError, token_->line, token_->col,
                  fmt::format("instance numbers end at #{}", kFirstBadNumber - 1));
  }
}

void LossFinder::IntegerValue() {
  if (std::wcslen(token_->val) <= kShortNumber) return;
  const long value = std::wcstol(token_->val, nullptr, 10);
  if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max()) {
    messages_.Add(Severity::kError, token_->line, token_->col, "the integer does not fit 32 bits");
  }
}

void LossFinder::RealValue() {
  const wchar_t* const begin = token_->val;
  const wchar_t* const end = begin + std::wcslen(begin);
  const wchar_t* last = end;  // behind what is no digit
  while (last != begin && last[-1] >= L'0' && last[-1] <= L'9') --last;
  const bool hasExponent = last != begin && last[-1] != L'.';
  if (end - begin <= kShortReal && !(hasExponent && end - last >= kShortExponent)) return;
  if (std::isinf(std::strtod(Narrow(begin).c_str(), nullptr))) {
    messages_.Add(Severity::kError, token_->line, token_->col, "the real number does not fit 64 bits");
  }
}

const LossFinder::Type& LossFinder::TypeOf(const std::wstring& name) {
  const auto found = types_.find(name);
  if (found != types_.end()) return found->second;

  const std::string narrow = Narrow(name.c_str());
  Type type = {population_.unknownTypes_.count(narrow) == 0, 0, 0};
  if (type.known) {
    const ExpEntityRuntimeType* runtimeType =
        ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(narrow, population_.GetEnforcedFactoryName());
    if (runtimeType != nullptr) {
      type = {true, runtimeType->GetNofExplicitMembers(), runtimeType->GetExternalMappingStartIndex()};
    }
  }
  return types_.emplace(name, type).first->second;
}

void LossFinder::Note(Loss& loss, const Instance& instance) {
  if (loss.count++ == 0) loss.first = instance.place;
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
  messages_.Add(Severity::kError, schemaPlace_.line, schemaPlace_.column,
                name.empty()
                    ? fmt::format("the file names no schema; supported: {}", SupportedSchemas())
                    : fmt::format("schema '{}' is not supported; supported: {}", name, SupportedSchemas()));
}

void LossFinder::ReportRecords() {
  std::map<std::string, std::size_t> unplaced = population_.unknownTypes_;
  for (const auto& [key, loss] : records_) {
    const auto& [type, kind, attributes] = key;
    Severity severity = Severity::kError;
    std::string text;
    switch (kind) {
      case Kind::kUnknown:
      case Kind::kUnknownPart:
      case Kind::kUnknownHeader:
        unplaced[type] -= std::min(unplaced[type], loss.count);
        if (kind == Kind::kUnknown) unknownInstances_ += loss.count;
        if (!population_.IsSchemaSupported()) continue;
        text = fmt::format(
            "{} of {} not kept: {} has no such entity",
            Counted(loss.count, kind == Kind::kUnknown       ? "instance"
                                : kind == Kind::kUnknownPart ? "partial record"
                                                             : "header record"),
            type, kind == Kind::kUnknownHeader ? "the header" : population_.GetEnforcedFactoryName());
        break;
      case Kind::kTooMany:
        text = fmt::format("{} of {} with more parameters than attributes ({}): the surplus is not kept",
                           Counted(loss.count, "record"), type, attributes);
        break;
      case Kind::kTooFew:
        severity = Severity::kWarning;
        text = fmt::format(
            "{} of {} with fewer parameters than attributes ({}): the others keep their initial values",
            Counted(loss.count, "record"), type, attributes);
        break;
    }
    messages_.Add(severity, loss.first.line, loss.first.column, text + Where(loss));
  }
  if (!population_.IsSchemaSupported()) {
    ReportUnknownAtOnce();
    return;
  }
  // What the parser takes for a record while it recovers from a syntax error need not be one.
  if (hadErrors_) return;
  for (const auto& [type, count] : unplaced) {
    if (count > 0) {
      messages_.AddError(fmt::format("{} of {} not kept: {} has no such entity", Counted(count, "record"),
                                     type, population_.GetEnforcedFactoryName()));
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
  messages_.AddError(fmt::format("{} of {} not kept: {}{}", Counted(records, "record"),
                                 Counted(unknown.size(), "unknown type"), fmt::join(names, ", "),
                                 unknown.size() > names.size() ? ", ..." : ""));
}

void LossFinder::ReportValues() {
  const struct {
    const Loss& loss;
    const char* one;
    const char* many;
  } losses[] = {
      {binaries_, "binary value", "binary values"},
      {unsetInLists_, "unset list element", "unset list elements"},
      {enumerationsInLists_, "enumeration value in a list", "enumeration values in lists"},
      {listsInTypedElements_, "list in a typed list element", "lists in typed list elements"},
  };
  for (const auto& [loss, one, many] : losses) {
    if (loss.count == 0) continue;
    messages_.Add(
        Severity::kWarning, loss.first.line, loss.first.column,
        fmt::format("{} {} not kept{}", Grouped(loss.count), loss.count == 1 ? one : many, Where(loss)));
  }
}

// Every instance that the file defines is kept, of an unknown type, or replaced by a later one; what is
// missing then was passed over with a syntax error.
void LossFinder::ReportUnread() {
  if (defined_ < population_.Count() && !hadErrors_) {
    messages_.AddError("the file has become shorter while it was read");
  }
  const std::size_t accounted = population_.Count() + population_.WithoutParts() + unknownInstances_ + replaced_;
  if (defined_ <= accounted) return;
  messages_.AddError(fmt::format("{} of the {} instances were not read because of the errors",
                                 Grouped(defined_ - accounted), Grouped(defined_)));
}

}  // namespace velmar
