#include "VelmarClasses.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "AddOwned.h"
#include "ExpEntityVisitor.h"
#include "ExpLogging.h"
#include "ExpRuntimeRegistry.h"
#include "ExpSchemaLibrary.h"
#include "ExpUtilities.h"
#include "KeptValues.h"
#include "SmallObjectPool.h"
#include "StepStrings.h"
#include "ValueText.h"

namespace VELMAR {

namespace {

[[noreturn]] void ThrowWrongKind(const char* operation) {
  throw std::string("error ExpAttribute::") + operation;
}

// Whether a type is exactly this class. Quicker than comparing the types; where the class has a second description in
// another shared object, the answer is no.
template <class Class>
bool Is(const std::type_info& type) {
  return &type == &typeid(Class);
}

// As dynamic_cast, and quicker for the classes that most values are of.
template <class Class>
Class* As(ExpAttribute* value) {
  if (value == nullptr) return nullptr;
  const std::type_info& type = typeid(*value);
  if (Is<Class>(type)) return static_cast<Class*>(value);
  if constexpr (std::is_same_v<Class, ExpReal>) {
    if (Is<ExpSchemaReal>(type)) return static_cast<ExpReal*>(value);
  }
  // None of these is derived from another.
  if (Is<ExpReal>(type) || Is<ExpLink>(type) || Is<ExpString>(type) || Is<ExpInteger>(type) || Is<ExpSelect>(type) ||
      Is<ExpAggregation>(type) || Is<ExpSchemaReal>(type)) {
    return nullptr;
  }
  return dynamic_cast<Class*>(value);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------- ExpAttribute

ExpAttribute::ExpAttribute() noexcept : notProvided_(false), omitted_(false) {}
ExpAttribute::~ExpAttribute() = default;

void* ExpAttribute::operator new(std::size_t size) { return SmallObjectPool::Allocate(size); }
void ExpAttribute::operator delete(void* memory, std::size_t size) noexcept { SmallObjectPool::Free(memory, size); }

void ExpAttribute::SetNotProvided(bool notProvided) { notProvided_ = notProvided; }
void ExpAttribute::SetOmitted(bool omitted) { omitted_ = omitted; }
bool ExpAttribute::IsNotProvided() { return notProvided_; }
bool ExpAttribute::IsOmitted() { return omitted_; }

void ExpAttribute::SetExpReal(double) { ThrowWrongKind("SetExpReal"); }
void ExpAttribute::SetExpInteger(int) { ThrowWrongKind("SetExpInteger"); }
void ExpAttribute::SetExpString(std::string) { ThrowWrongKind("SetExpString"); }
void ExpAttribute::SetExpLink(int) { ThrowWrongKind("SetExpLink"); }
void ExpAttribute::AddValue(ExpAttribute*) { ThrowWrongKind("AddValue"); }
void ExpAttribute::SetExpEnumeration(const std::string&) { ThrowWrongKind("SetExpEnumeration"); }
void ExpAttribute::AddExpSelectTypeName(std::string) { ThrowWrongKind("AddExpSelectTypeName"); }
double ExpAttribute::GetExpReal() { ThrowWrongKind("GetExpReal"); }
int ExpAttribute::GetExpInteger() { ThrowWrongKind("GetExpInteger"); }
int ExpAttribute::GetExpLink() { ThrowWrongKind("GetExpLink"); }
void ExpAttribute::Accept(ExpAttributeVisitor*) {}

// --------------------------------------------------------------------------------------------------------- ExpReal

ExpReal::ExpReal() noexcept : value_(0.0) {}
ExpReal::ExpReal(double value) : value_(value) {}

void ExpReal::SetExpReal(double value) { value_ = value; }
void ExpReal::SetExpInteger(int value) { value_ = value; }
double ExpReal::GetExpReal() { return value_; }
void ExpReal::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpReal(this); }

std::string ExpReal::ToString() {
  std::string text;
  if (!IsOmitted() && !IsNotProvided()) {
    ValueText::AppendReal(text, value_);
  } else if (CompleteWriting::IsOn()) {
    ValueText::AppendMarker(text, *this);
  }
  return text;
}

// ------------------------------------------------------------------------------------------------------ ExpInteger

ExpInteger::ExpInteger() noexcept : value_(0) {}
ExpInteger::ExpInteger(int value) : value_(value) {}

void ExpInteger::SetExpInteger(int value) { value_ = value; }
int ExpInteger::GetExpInteger() { return value_; }
double ExpInteger::GetExpReal() { return value_; }
void ExpInteger::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpInteger(this); }

std::string ExpInteger::ToString() {
  std::string text;
  if (!ValueText::AppendMarker(text, *this)) ValueText::AppendInteger(text, value_);
  return text;
}

// ------------------------------------------------------------------------------------------------------- ExpString

ExpString::ExpString() noexcept = default;
ExpString::ExpString(std::string stepText) { SetExpString(std::move(stepText)); }

void ExpString::SetExpString(std::string stepText) {
  if (IsPlainStepText(stepText.data(), stepText.size())) {
    text_ = std::move(stepText);
  } else {
    text_ = ConvertSTEPStringToUtf8(stepText);
  }
}

std::string ExpString::GetExpString() { return text_; }
void ExpString::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpString(this); }

std::string ExpString::ToString() {
  std::string text;
  if (ValueText::AppendMarker(text, *this)) return text;
  text.reserve(text_.size() + 2);
  text += '\'';
  AppendUtf8AsStepText(text_, text);
  text += '\'';
  return text;
}

// --------------------------------------------------------------------------------------------------------- ExpLink

ExpLink::ExpLink() noexcept : number_(-1) {}
ExpLink::ExpLink(int number) : number_(number) {}

void ExpLink::SetExpLink(int number) { number_ = number; }
int ExpLink::GetExpLink() { return number_; }
void ExpLink::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpLink(this); }

std::string ExpLink::ToString() {
  std::string text;
  if (ValueText::AppendMarker(text, *this)) return text;
  ValueText::AppendReference(text, number_);
  return text;
}

// -------------------------------------------------------------------------------------------------- ExpAggregation

std::list<ExpAttribute*>* ExpElementsOf(ExpAttribute* value) {
  if (auto* select = As<ExpSelect>(value)) value = select->GetExpSelectValue();
  auto* aggregation = As<ExpAggregation>(value);
  return aggregation ? aggregation->GetExpAggregation() : nullptr;
}

ExpAggregation::ExpAggregation() noexcept = default;
ExpAggregation::~ExpAggregation() { ExpAggregation::RemoveAllValues(); }

void ExpAggregation::AddValue(ExpAttribute* value) { elements_.push_back(value); }
std::list<ExpAttribute*>* ExpAggregation::GetExpAggregation() { return &elements_; }
unsigned long ExpAggregation::NofElements() { return elements_.size(); }
void ExpAggregation::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpAggregation(this); }

void ExpAggregation::RemoveAllValues() {
  // The elements of nested aggregates are moved behind our own before their owner goes, so that deleting never nests.
  for (auto element = elements_.begin(); element != elements_.end(); ++element) {
    if (*element == nullptr) continue;
    if (auto* nested = ExpElementsOf(*element)) elements_.splice(elements_.end(), *nested);
    delete *element;
  }
  elements_.clear();
}

std::string ExpAggregation::ToString() {
  std::string text;
  ValueText::AppendAs(typeid(ExpAggregation), text, this);
  return text;
}

// -------------------------------------------------------------------------------------------------- ExpEnumeration

ExpEnumeration::ExpEnumeration() noexcept : value_(-1) {}

void ExpEnumeration::SetExpEnumeration(const std::string& name) { name_ = name; }

void ExpEnumeration::SetExpEnumeration(int value, const std::map<std::string, int>* table) {
  value_ = -1;
  name_.clear();
  for (const auto& [name, number] : *table) {
    if (number != value) continue;
    value_ = number;
    name_ = name;
    return;
  }
  throw std::string("ExpEnumeration Enumerationvalue not found");
}

void ExpEnumeration::SetExpEnumeration(const std::string& name, const std::map<std::string, int>* table) {
  auto entry = table->find(name);
  if (entry == table->end()) entry = table->find(ToUpperString(name));
  if (entry == table->end()) entry = table->find(ToLowerString(name));
  if (entry == table->end()) {
    std::string message = "ExpEnumeration Enumerationvalue not found: " + name;
    value_ = -1;
    name_.clear();
    throw message;
  }
  value_ = entry->second;
  name_ = entry->first;
}

int ExpEnumeration::GetExpEnumeration() { return value_; }
std::string ExpEnumeration::GetExpEnumerationString() { return name_; }
void ExpEnumeration::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpEnumeration(this); }

std::string ExpEnumeration::ToString() {
  std::string text;
  if (ValueText::AppendMarker(text, *this)) return text;
  if (name_.empty() && CompleteWriting::IsOn()) return "$";
  text += '.';
  text += name_;
  text += '.';
  return text;
}

// -------------------------------------------------------------------------------------------- ExpLogical, ExpBoolean

std::map<std::string, int> ExpLogical::explogical_map;
std::map<std::string, int> ExpBoolean::expboolean_map;

bool ExpLogical::Init() {
  explogical_map = {{"F", F}, {"T", T}, {"U", U}};
  return true;
}

bool ExpBoolean::Init() {
  expboolean_map = {{"F", F}, {"T", T}};
  return true;
}

namespace {
[[maybe_unused]] const bool logicalTableIsFilled = ExpLogical::Init();
[[maybe_unused]] const bool booleanTableIsFilled = ExpBoolean::Init();
}  // namespace

void ExpLogical::SetExpEnumeration(const std::string& name) {
  ExpEnumeration::SetExpEnumeration(name, &explogical_map);
}
void ExpLogical::SetExpEnumeration(Enumeration value) {
  ExpEnumeration::SetExpEnumeration(static_cast<int>(value), &explogical_map);
}

void ExpBoolean::SetExpEnumeration(const std::string& name) {
  ExpEnumeration::SetExpEnumeration(name, &expboolean_map);
}
void ExpBoolean::SetExpEnumeration(Enumeration value) {
  ExpEnumeration::SetExpEnumeration(static_cast<int>(value), &expboolean_map);
}
bool ExpBoolean::GetAsBool() { return GetExpEnumeration() == T; }
void ExpBoolean::SetAsBool(bool value) { SetExpEnumeration(std::string(value ? "T" : "F")); }

// ------------------------------------------------------------------------------------------------------- ExpSelect

ExpSelect::ExpSelect() noexcept
    : value_(nullptr),
      isReal_(false),
      isInteger_(false),
      isString_(false),
      isLink_(false),
      isAggregation_(false),
      isEnumeration_(false) {}

ExpSelect::~ExpSelect() { delete value_; }

// Replaces the selected value; `value` may be the one that is selected already. Null for a kind that has no flag.
void ExpSelect::Select(ExpAttribute* value, bool ExpSelect::*kind) {
  if (value != value_) {
    delete value_;
    value_ = value;
  }
  isReal_ = isInteger_ = isString_ = isLink_ = isAggregation_ = isEnumeration_ = false;
  if (kind != nullptr) this->*kind = true;
}

void ExpSelect::SetExpReal(double value) { Select(new ExpReal(value), &ExpSelect::isReal_); }
void ExpSelect::SetExpInteger(int value) { Select(new ExpInteger(value), &ExpSelect::isInteger_); }
void ExpSelect::SetExpString(std::string stepText) {
  Select(new ExpString(std::move(stepText)), &ExpSelect::isString_);
}
void ExpSelect::SetExpLink(int number) { Select(new ExpLink(number), &ExpSelect::isLink_); }

void ExpSelect::SetExpEnumeration(const std::string& name) {
  auto value = std::make_unique<ExpEnumeration>();
  value->SetExpEnumeration(name);
  Select(value.release(), &ExpSelect::isEnumeration_);
}

void ExpSelect::AddValue(ExpAttribute* value) {
  Select(isAggregation_ ? value_ : new ExpAggregation, &ExpSelect::isAggregation_);
  value_->AddValue(value);
}

void ExpSelect::AddExpSelectTypeName(std::string name) { typeNames_.push_back(std::move(name)); }

void ExpSelect::Require(bool kind, const char* message) const {
  if (!kind) throw std::string("error ExpSelect is not of type ") + message;
}

double ExpSelect::GetExpReal() {
  Require(isReal_, "ExpReal");
  return value_->GetExpReal();
}
int ExpSelect::GetExpInteger() {
  Require(isInteger_, "ExpInteger");
  return value_->GetExpInteger();
}
int ExpSelect::GetExpLink() {
  Require(isLink_, "ExpLink");
  return value_->GetExpLink();
}
std::string ExpSelect::GetExpString() {
  Require(isString_, "ExpString");
  return static_cast<ExpString*>(value_)->GetExpString();
}
std::list<ExpAttribute*>* ExpSelect::GetExpAggregation() {
  Require(isAggregation_, "ExpAggregation");
  return static_cast<ExpAggregation*>(value_)->GetExpAggregation();
}
int ExpSelect::GetExpEnumeration() {
  Require(isEnumeration_, "ExpEnumeration");
  return static_cast<ExpEnumeration*>(value_)->GetExpEnumeration();
}

bool ExpSelect::IsExpReal() { return isReal_; }
bool ExpSelect::IsExpInteger() { return isInteger_; }
bool ExpSelect::IsExpString() { return isString_; }
bool ExpSelect::IsExpLink() { return isLink_; }
bool ExpSelect::IsExpAggregation() { return isAggregation_; }
bool ExpSelect::IsExpEnumeration() { return isEnumeration_; }
ExpAttribute* ExpSelect::GetExpSelectValue() { return value_; }
void ExpSelect::Accept(ExpAttributeVisitor* visitor) { visitor->VisitExpSelect(this); }

bool ExpSelect::CheckType(const std::string& typeName) {
  return !typeNames_.empty() && typeNames_.front() == ToUpperString(typeName);
}

bool ExpSelect::CheckType(const std::string& typeName, ExpAbstractObjectAdmin* admin) {
  if (!isLink_) return CheckType(typeName);
  if (admin == nullptr) return false;
  ExpEntity* entity = admin->GetEntity(GetExpLink());
  return entity != nullptr && entity->GetExpClassName() == ToUpperString(typeName);
}

std::string ExpSelect::ToString() {
  std::string text;
  ValueText::AppendAs(typeid(ExpSelect), text, this);
  return text;
}

// ------------------------------------------------------------------------------------------------------- ValueText

bool ValueText::AppendMarker(std::string& out, const ExpAttribute& value) {
  if (!value.omitted_ && !value.notProvided_) return false;
  out += value.omitted_ ? '*' : '$';
  return true;
}

namespace {
thread_local bool writesCompletely = false;
}  // namespace

CompleteWriting::CompleteWriting(bool on) : before_(writesCompletely) { writesCompletely = before_ || on; }
CompleteWriting::~CompleteWriting() { writesCompletely = before_; }
bool CompleteWriting::IsOn() { return writesCompletely; }

void ValueText::AppendReference(std::string& out, int number) {
  if (number == -1 && CompleteWriting::IsOn()) {
    out += '$';
    return;
  }
  out += '#';
  AppendInteger(out, number);
}

void ValueText::AppendInteger(std::string& out, int value) {
  char digits[12];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

// The fifteen significant digits of the printf format "%#.15g", the zeros at the mantissa's end taken away. Any double
// that has a decimal form of at most fifteen digits has that form as its shortest one, too, which is quicker to find.
// Complete writing takes the shortest one always, which has up to seventeen digits, and for infinities a number out of range.
void ValueText::AppendReal(std::string& out, double value) {
  const bool isExact = CompleteWriting::IsOn();
  if (value == 0.0) {
    out += isExact && std::signbit(value) ? "-0." : "0.";
    return;
  }
  if (!std::isfinite(value)) {
    if (isExact) {
      out += std::isnan(value) ? "$" : std::signbit(value) ? "-1.E+400" : "1.E+400";
      return;
    }
    out += std::signbit(value) ? "-" : "";
    out += std::isnan(value) ? "nan" : "inf";
    return;
  }
  constexpr int kDigits = 15;
  char text[40];
  char* end = text;
  int exponent = 0;
  int digits = kDigits + 1;
  if (isExact || std::fabs(value) >= std::numeric_limits<double>::min()) {
    end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific).ptr;
    digits = static_cast<int>(std::find(text, end, 'e') - text) - (value < 0) - 1;
    if (digits == 0) digits = 1;  // no point
  }
  if (digits > kDigits && !isExact) {
    end = std::to_chars(text, text + sizeof text, value, std::chars_format::scientific, kDigits - 1).ptr;
  }
  // Now "d", "d.ddd" and an exponent of at least two digits, with a sign in front where negative.
  char* e = std::find(text, end, 'e');
  const char* exponentDigits = e + (e[1] == '+' ? 2 : 1);
  std::from_chars(exponentDigits, end, exponent);
  char* first = text;
  if (*first == '-') {
    out += '-';
    ++first;
  }
  char mantissa[std::numeric_limits<double>::max_digits10];
  int length = 0;
  for (const char* c = first; c != e; ++c) {
    if (*c != '.') mantissa[length++] = *c;
  }
  while (length > 1 && mantissa[length - 1] == '0') --length;

  if (exponent < -4 || exponent >= kDigits) {
    out += mantissa[0];
    out += '.';
    out.append(mantissa + 1, length - 1);
    out += exponent < 0 ? "E-" : "E+";
    AppendInteger(out, std::abs(exponent));
  } else if (exponent < 0) {
    out += "0.";
    out.append(-exponent - 1, '0');
    out.append(mantissa, length);
  } else {
    const int whole = exponent + 1;  // digits in front of the point
    out.append(mantissa, std::min(whole, length));
    if (whole > length) out.append(whole - length, '0');
    out += '.';
    if (length > whole) out.append(mantissa + whole, length - whole);
  }
}

void ValueText::Append(std::string& out, ExpAttribute* value) {
  AppendAs(value == nullptr ? typeid(void) : typeid(*value), out, value);
}

void ValueText::AppendAs(const std::type_info& valueType, std::string& out, ExpAttribute* value) {
  // An aggregate that has been begun: the elements still to come, and how many ")" follow its own.
  struct Level {
    std::list<ExpAttribute*>::iterator next, end;
    std::size_t closing;
  };
  std::vector<Level> outer;
  Level level{{}, {}, 0};
  bool inAggregate = false;
  const std::type_info* nextType = &valueType;

  for (;;) {
    // One value; an aggregate begins a level, and its elements follow.
    std::size_t closing = 0;
    std::list<ExpAttribute*>* elements = nullptr;
    for (bool more = true; more;) {
      more = false;
      if (value == nullptr) {
        out += '$';
        break;
      }
      const std::type_info& type = nextType == nullptr ? typeid(*value) : *nextType;
      nextType = nullptr;
      if (Is<ExpReal>(type)) {
        auto* real = static_cast<ExpReal*>(value);
        if (!real->omitted_ && !real->notProvided_) {
          AppendReal(out, real->value_);
        } else if (CompleteWriting::IsOn()) {
          AppendMarker(out, *value);
        }
      } else if (Is<ExpLink>(type)) {
        if (!AppendMarker(out, *value)) AppendReference(out, static_cast<ExpLink*>(value)->number_);
      } else if (Is<ExpString>(type)) {
        if (AppendMarker(out, *value)) break;
        out += '\'';
        AppendUtf8AsStepText(static_cast<ExpString*>(value)->text_, out);
        out += '\'';
      } else if (Is<ExpSchemaReal>(type)) {
        if (!AppendMarker(out, *value)) AppendReal(out, static_cast<ExpReal*>(value)->value_);
      } else if (Is<ExpInteger>(type)) {
        if (!AppendMarker(out, *value)) AppendInteger(out, static_cast<ExpInteger*>(value)->value_);
      } else if (Is<ExpAggregation>(type)) {
        if (!AppendMarker(out, *value)) elements = &static_cast<ExpAggregation*>(value)->elements_;
      } else if (Is<ExpSelect>(type)) {
        if (AppendMarker(out, *value)) break;
        auto* select = static_cast<ExpSelect*>(value);
        if (select->value_ == nullptr && CompleteWriting::IsOn()) {
          out += '$';
          break;
        }
        for (const std::string& name : select->typeNames_) {
          out += name;
          out += '(';
        }
        if (select->value_ == nullptr) {
          throw std::string(
              "c/VelmarClasses - line: 1035   expSelectedValue should not be NULL while writing ExpSelect to string.");
        }
        closing += select->typeNames_.size();
        value = select->value_;
        more = true;
      } else {
        out += value->ToString();
      }
    }
    if (elements != nullptr) {
      if (inAggregate) outer.push_back(level);
      level = {elements->begin(), elements->end(), closing};
      inAggregate = true;
      out += '(';
    } else {
      out.append(closing, ')');
    }

    // On to the next value of the innermost level that has one.
    while (inAggregate && level.next == level.end) {
      out.append(1 + level.closing, ')');
      inAggregate = !outer.empty();
      if (inAggregate) {
        level = outer.back();
        outer.pop_back();
      }
    }
    if (!inAggregate) return;
    if (out.back() != '(' || elements == nullptr) out += ", ";
    value = *level.next++;
  }
}

void ValueText::AppendMembers(std::string& out, ExpEntity& entity, int begin, int end) {
  KeptRecord* kept = KeptRecord::Find(entity);
  for (int index = begin; index < end; ++index) {
    if (index != begin) out += ", ";
    ExpAttribute* value = entity.GetMember(index);
    Append(out, kept == nullptr ? value : kept->InPlaceOf(value, index));
  }
  if (kept == nullptr) return;
  const auto [first, last] = kept->From(end);
  for (auto value = first; value != last; ++value) {
    if (begin != end || value != first) out += ", ";
    Append(out, &value->second);
  }
}

// ------------------------------------------------------------------------------------------------------- ExpEntity

std::size_t ExpEntity::instanceCount = 0;

ExpEntity::ExpEntity() noexcept : runtimeType_(nullptr), number_(-1), reserved_(nullptr) { ++instanceCount; }
ExpEntity::ExpEntity(const ExpEntity& other)
    : runtimeType_(other.runtimeType_), number_(other.number_), text_(other.text_), reserved_(nullptr) {
  ++instanceCount;
}
// cppcheck-suppress operatorEqVarError ; what is kept beside the attributes stays with its entity
ExpEntity& ExpEntity::operator=(const ExpEntity& other) {  // NOLINT(bugprone-unhandled-self-assignment): changes nothing
  runtimeType_ = other.runtimeType_;
  number_ = other.number_;
  text_ = other.text_;
  return *this;
}
ExpEntity::~ExpEntity() {
  --instanceCount;
  delete KeptRecord::Find(*this);
}

void* ExpEntity::operator new(std::size_t size) { return SmallObjectPool::Allocate(size); }
void ExpEntity::operator delete(void* memory, std::size_t size) noexcept { SmallObjectPool::Free(memory, size); }

ExpAttribute* ExpEntity::GetMember(int) { return nullptr; }

ExpAttribute* ExpEntity::GetMember(const std::string& name) {
  const int index = runtimeType_->GetMemberIndex(name);
  return index < 0 ? nullptr : GetMember(index);
}

std::vector<std::string>* ExpEntity::GetMemberNames() { return runtimeType_->GetMemberNames(); }
const std::string& ExpEntity::GetExpClassName() const { return runtimeType_->GetName(); }
std::vector<std::string>* ExpEntity::GetExpSuperClasses() const { return runtimeType_->GetSuperClasses(); }
std::vector<std::string>* ExpEntity::GetExpSubClasses() const { return runtimeType_->GetSubClasses(); }
int ExpEntity::GetNofInverseMembers() { return runtimeType_->GetNofInverseMembers(); }
int ExpEntity::GetNofExplicitMembers() { return runtimeType_->GetNofExplicitMembers(); }
int ExpEntity::GetExternalMappingStartIndex() { return runtimeType_->GetExternalMappingStartIndex(); }
int ExpEntity::GetTypeNumberOfEntity() { return runtimeType_->GetTypeNumber(); }
bool ExpEntity::InsertInObjTree() const { return runtimeType_->InsertInObjTree(); }
void ExpEntity::SetEntityNumber(int number) { number_ = number; }
int ExpEntity::GetEntityNumber() { return number_; }
void ExpEntity::Accept(ExpEntityVisitor*) {}

namespace {

void AppendInstanceName(std::string& out, int number) {
  if (number < 0 || (number == 0 && !CompleteWriting::IsOn())) return;
  out += '#';
  ValueText::AppendInteger(out, number);
  out += " = ";
}

void AppendUserDefinedMark(std::string& out, const ExpEntity& entity) {
  const KeptRecord* kept = KeptRecord::Find(entity);
  if (kept != nullptr && kept->isUserDefined) out += '!';
}

}  // namespace

std::string ExpEntity::ToString() {
  constexpr std::size_t kUsualLength = 100;
  std::string text;
  text.reserve(kUsualLength);
  AppendInstanceName(text, GetEntityNumber());
  AppendUserDefinedMark(text, *this);
  text += ToUpperString(GetExpClassName());
  text += '(';
  ValueText::AppendMembers(text, *this, 0, GetNofExplicitMembers());
  text += ");";
  return text;
}

bool Is_ID_smaller(ExpEntity* a, ExpEntity* b) {
  if (a == nullptr) return false;
  if (b == nullptr) return true;
  return a->GetEntityNumber() < b->GetEntityNumber();
}

bool Is_Reference_equal(ExpEntity* a, ExpEntity* b) { return a == b; }

// ------------------------------------------------------------------------------------------ ExpAbstractObjectAdmin

ExpAbstractObjectAdmin::~ExpAbstractObjectAdmin() = default;

void ExpAbstractObjectAdmin::DumpEntity(ExpEntity* entity, std::ostream& os) {
  if (entity == nullptr) return;
  ExpFullEntityWriter(this, os).WriteFullEntity(entity);
}

void ExpAbstractObjectAdmin::DumpEntity(int number, std::ostream& os) { DumpEntity(GetEntity(number), os); }

ExpEntity* ExpAbstractObjectAdmin::GetEntity(ExpLink link) {
  if (link.IsOmitted() || link.IsNotProvided()) return nullptr;
  return GetEntity(link.GetExpLink());
}

ExpEntity* ExpAbstractObjectAdmin::GetEntity(ExpAttribute* value) {
  if (auto* select = As<ExpSelect>(value)) value = select->GetExpSelectValue();
  auto* link = As<ExpLink>(value);
  return link == nullptr ? nullptr : GetEntity(ExpLink(*link));
}

void ExpAbstractObjectAdmin::Log(const std::string& message) { ExpLogger::Write(message, ExpLogMessage); }

// ---------------------------------------------------------------------------------------- ExpExternalMappingEntity

ExpEntity* ExpExternalMappingEntity::New() { return new ExpExternalMappingEntity; }

ExpExternalMappingEntity::ExpExternalMappingEntity() = default;
ExpExternalMappingEntity::~ExpExternalMappingEntity() = default;

void ExpExternalMappingEntity::AddEntity(ExpEntity* part) {
  if (part == nullptr) return;
  partsByName_.emplace(part->GetExpClassName(), part);
  parts_.push_back(part);
}

std::vector<ExpEntity*>* ExpExternalMappingEntity::GetEntities() { return &parts_; }

ExpEntity* ExpExternalMappingEntity::GetEntityByName(std::string name) {
  const auto part = partsByName_.find(name);
  return part == partsByName_.end() ? nullptr : part->second;
}

void ExpExternalMappingEntity::Accept(ExpEntityVisitor* visitor) { visitor->VisitExpExternalMappingEntity(this); }

void ExpExternalMappingEntity::SetEntityNumber(int number) {
  ExpEntity::SetEntityNumber(number);
  for (ExpEntity* part : parts_) part->SetEntityNumber(number);
  SolveEntities();
}

namespace {

// The entity name in "SCHEMA::NAME". Of a name without "::" the first character is dropped; that is kept for the schema
// libraries that rely on it.
std::string UnqualifiedName(const std::string& name) {
  const std::size_t begin = name.find("::") + 2;
  return begin < name.size() ? name.substr(begin) : name;
}

}  // namespace

void ExpExternalMappingEntity::SolveEntities() {
  for (ExpEntity* part : parts_) {
    for (const std::string& superClass : *part->GetExpSuperClasses()) {
      ExpEntity* super = GetEntityByName(UnqualifiedName(superClass));
      if (super == nullptr) continue;
      const int end = super->GetNofExplicitMembers();
      for (int index = super->GetExternalMappingStartIndex(); index < end; ++index) {
        ExpAttribute* target = part->GetMember(index);
        ExpAttribute* source = super->GetMember(index);
        if (target == nullptr || source == nullptr) continue;
        target->SetOmitted(source->IsOmitted());
        target->SetNotProvided(source->IsNotProvided());
        HandleParams(target, source);
      }
    }
  }
}

namespace {

// A copy of a value that is no aggregate, as an element; null for the kinds that are not copied.
std::unique_ptr<ExpAttribute> CopyOfElement(ExpAttribute* source) {
  if (auto* real = As<ExpReal>(source)) return std::make_unique<ExpReal>(real->GetExpReal());
  if (auto* link = As<ExpLink>(source)) return std::make_unique<ExpLink>(link->GetExpLink());
  if (auto* integer = As<ExpInteger>(source)) return std::make_unique<ExpInteger>(integer->GetExpInteger());
  if (auto* string = As<ExpString>(source)) return std::make_unique<ExpString>(string->GetExpString());
  if (auto* token = dynamic_cast<KeptToken*>(source)) return token->Copy();
  return nullptr;
}

// Copies through the setters where both are of one kind.
template <class Value, class Copy>
bool CopyIfBothAre(ExpAttribute* target, ExpAttribute* source, Copy copy) {
  auto* from = As<Value>(source);
  if (from == nullptr) return false;
  if (auto* to = As<Value>(target)) copy(to, from);
  return true;
}

}  // namespace

void ExpExternalMappingEntity::HandleParams(ExpAttribute* target, ExpAttribute* source) {
  if (target == nullptr) return;
  auto* targetList = As<ExpAggregation>(target);
  auto* sourceList = As<ExpAggregation>(source);

  if (targetList == nullptr) {
    if (sourceList != nullptr || source == nullptr) return;
    try {
      CopyIfBothAre<ExpEnumeration>(target, source,
                                    [](ExpAttribute* to, auto* from) {
                                      const std::string name = from->GetExpEnumerationString();
                                      if (!name.empty()) to->SetExpEnumeration(name);
                                    }) ||
          CopyIfBothAre<ExpInteger>(target, source,
                                    [](auto* to, auto* from) { to->SetExpInteger(from->GetExpInteger()); }) ||
          CopyIfBothAre<ExpLink>(target, source, [](auto* to, auto* from) { to->SetExpLink(from->GetExpLink()); }) ||
          CopyIfBothAre<ExpReal>(target, source, [](auto* to, auto* from) { to->SetExpReal(from->GetExpReal()); }) ||
          CopyIfBothAre<ExpString>(target, source,
                                   [](auto* to, auto* from) { to->SetExpString(from->GetExpString()); });
    } catch (...) {  // the target rejects the value, for instance an item that its type does not have
    }
    return;
  }

  const auto append = [](ExpAggregation* list, ExpAttribute* value) {
    if (auto* item = As<ExpEnumeration>(value)) {
      auto copy = std::make_unique<ExpEnumeration>();
      copy->name_ = item->GetExpEnumerationString();
      copy->value_ = item->GetExpEnumeration();
      copy->SetOmitted(item->IsOmitted());
      copy->SetNotProvided(item->IsNotProvided());
      AddOwned(*list, std::move(copy));
    } else if (std::unique_ptr<ExpAttribute> element = CopyOfElement(value)) {
      AddOwned(*list, std::move(element));
    }
  };
  if (sourceList == nullptr) {
    append(targetList, source);
    return;
  }
  // An aggregate that is being copied: the elements still to come and the list that takes them.
  struct Level {
    std::list<ExpAttribute*>::iterator next, end;
    ExpAggregation* to;
  };
  std::vector<Level> levels;
  const auto begin = [&levels](ExpAggregation* from, ExpAggregation* to) {
    std::list<ExpAttribute*>* elements = from->GetExpAggregation();
    levels.push_back({elements->begin(), elements->end(), to});
  };
  begin(sourceList, targetList);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.end) {
      levels.pop_back();
      continue;
    }
    ExpAttribute* element = *level.next++;
    if (auto* nested = As<ExpAggregation>(element)) {
      begin(nested, AddOwned(*level.to, std::make_unique<ExpAggregation>()));
    } else {
      append(level.to, element);
    }
  }
}

std::string ExpExternalMappingEntity::ToString() {
  std::string text;
  AppendInstanceName(text, GetEntityNumber());
  text += "(\n";
  for (const auto& [name, part] : partsByName_) {
    text += "   ";
    AppendUserDefinedMark(text, *part);
    text += part->GetExpClassName();
    text += " (";
    ValueText::AppendMembers(text, *part, part->GetExternalMappingStartIndex(), part->GetNofExplicitMembers());
    text += ")\n";
  }
  text += ");";
  return text;
}

// --------------------------------------------------------------------------------------- ExpAbstractObjectProvider

ExpAbstractObjectProvider::ExpAbstractObjectProvider() : adaptedAdmin_(nullptr) {}
ExpAbstractObjectProvider::~ExpAbstractObjectProvider() = default;

ExpAbstractObjectAdmin* ExpAbstractObjectProvider::GetAdaptedAdmin() { return adaptedAdmin_; }
void ExpAbstractObjectProvider::SetAdaptedAdmin(ExpAbstractObjectAdmin* admin) { adaptedAdmin_ = admin; }

ExpEntity* ExpAbstractObjectProvider::CreateAndAddEntity(const std::string& typeName) {
  ExpLink link;
  return CreateAndAddEntity(typeName, link);
}

ExpEntity* ExpAbstractObjectProvider::CreateAndAddEntity(const std::string& typeName, ExpLink& link) {
  ExpEntity* entity = CreateEntity(typeName);
  if (entity == nullptr) return nullptr;
  const int number = CreateEntityNumber();
  entity->SetEntityNumber(number);
  AddEntity(number, entity);
  link.SetExpLink(number);
  return entity;
}

void ExpAbstractObjectProvider::GetEntitiesProtected(std::list<ExpEntity*>& out, const std::string& typeName,
                                                     bool withSubtypes) {
  const std::string enforced = GetEnforcedFactoryName();
  ExpEntityRuntimeType* type = ExpRuntimeRegistry::GetInstance()->GetEntityRuntimeType(
      ToUpperString(typeName), enforced.empty() ? GetSchemaName() : enforced);
  if (type == nullptr) return;
  if (const std::list<ExpEntity*>* instances = type->GetInstanceList(GetAdminId())) {
    std::list<ExpEntity*> sorted(*instances);
    sorted.sort();
    out.merge(sorted);
  }
  if (!withSubtypes) return;
  const std::vector<std::string> subtypes = *type->GetSubClasses();
  for (const std::string& subtype : subtypes) GetEntitiesProtected(out, UnqualifiedName(subtype), true);
}

void ExpAbstractObjectProvider::GetEntities(std::list<ExpEntity*>& out, const std::string& typeName,
                                            bool withSubtypes) {
  GetEntitiesProtected(out, typeName, withSubtypes);
  out.unique(Is_Reference_equal);
  out.sort(Is_ID_smaller);
}

void ExpAbstractObjectProvider::GetExternalEntities(const std::vector<ExpEntity*>& in,
                                                    std::list<ExpExternalMappingEntity*>& out) {
  std::list<ExpEntity*> simple;
  SplitIntoSimpleAndExternalEntities(in, simple, out);
}

void ExpAbstractObjectProvider::SplitIntoSimpleAndExternalEntities(const std::vector<ExpEntity*>& in,
                                                                   std::list<ExpEntity*>& simple,
                                                                   std::list<ExpExternalMappingEntity*>& external) {
  for (ExpEntity* entity : in) {
    if (entity == nullptr) continue;
    ExpEntity* stored = GetEntity(entity->GetEntityNumber());
    if (stored == nullptr) continue;
    if (auto* complex = dynamic_cast<ExpExternalMappingEntity*>(stored)) {
      external.push_back(complex);
    } else {
      simple.push_back(stored);
    }
  }
  simple.unique(Is_Reference_equal);
  simple.sort(Is_ID_smaller);
  external.unique(Is_Reference_equal);
  external.sort(Is_ID_smaller);
}

// --------------------------------------------------------------------- managed objects and the utility registry

ExpManagedObject::ExpManagedObject() { ExpObjectHandleAdmin::GetInstance()->RegisterObject(this); }
ExpManagedObject::~ExpManagedObject() { ExpObjectHandleAdmin::GetInstance()->DeregisterObject(this); }

namespace {

std::string NameAndAddress(const char* name, const void* address) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << name << ": " << address;
  return text.str();
}

unsigned long AddressOf(const ExpManagedObject* object) { return reinterpret_cast<unsigned long>(object); }

}  // namespace

std::string ExpManagedObject::ToString() { return NameAndAddress("ExpManagedObject", this); }

ExpUserData::ExpUserData() = default;
ExpUserData::~ExpUserData() = default;
std::string ExpUserData::ToString() { return NameAndAddress("ExpUserData", this); }

ExpObjectHandleAdmin* ExpObjectHandleAdmin::m_admin = nullptr;

ExpObjectHandleAdmin* ExpObjectHandleAdmin::GetInstance() {
  if (m_admin == nullptr) m_admin = new ExpObjectHandleAdmin;
  return m_admin;
}

ExpObjectHandleAdmin::ExpObjectHandleAdmin() : cursor_(objects_.end()) {}
ExpObjectHandleAdmin::~ExpObjectHandleAdmin() = default;

void ExpObjectHandleAdmin::RegisterObject(ExpManagedObject* object) {
  if (object == nullptr) return;
  cursor_ = objects_.find(AddressOf(object));
  if (cursor_ == objects_.end()) objects_.emplace(AddressOf(object), object);
}

void ExpObjectHandleAdmin::DeregisterObject(ExpManagedObject* object) {
  if (object == nullptr) return;
  cursor_ = objects_.find(AddressOf(object));
  if (cursor_ != objects_.end()) cursor_ = objects_.erase(cursor_);
}

bool ExpObjectHandleAdmin::IsObjectValid(ExpManagedObject* object) {
  if (object == nullptr) return false;
  cursor_ = objects_.find(AddressOf(object));
  return cursor_ != objects_.end();
}

void ExpObjectHandleAdmin::EraseAll() {
  while (!objects_.empty()) {
    ExpManagedObject* object = objects_.begin()->second;
    cursor_ = objects_.erase(objects_.begin());
    delete object;
  }
}

std::string ExpObjectHandleAdmin::ToString() {
  std::string text;
  for (const auto& [address, object] : objects_) {
    if (object != nullptr) text += object->ToString() + "\n";
  }
  return text;
}

ExpUtility* ExpUtility::m_implementation = nullptr;

ExpUtility::~ExpUtility() = default;

ExpUtility* ExpUtility::RegisterImplementation(ExpUtility* implementation) {
  return std::exchange(m_implementation, implementation);
}

ExpUtility* ExpUtility::GetInstance(bool allowNull) {
  if (m_implementation == nullptr && !allowNull) {
    throw std::runtime_error("No implementation registered for the ExpUtility");
  }
  return m_implementation;
}

ExpObjectFactory::~ExpObjectFactory() = default;
void ExpObjectFactory::Init() {}

void ExpObjectFactory::Add(std::vector<std::string>*& names, std::string name, bool startNew) {
  if (startNew) names = new std::vector<std::string>;
  if (!name.empty()) names->push_back(std::move(name));
}

}  // namespace VELMAR
