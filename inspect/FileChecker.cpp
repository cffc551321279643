#include "FileChecker.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "Diagnostics.h"
#include "ExpUtilities.h"
#include "Input.h"
#include "NumberRules.h"
#include "StepStringRules.h"

namespace velmar {

namespace {

using Kind = WrittenValue::Kind;

constexpr int kDeepest = 500;  // levels of values within values that are looked at

struct HeaderRule {
  const char* name;
  std::size_t parameters;
};
constexpr HeaderRule kHeader[] = {{"FILE_DESCRIPTION", 2}, {"FILE_NAME", 7}, {"FILE_SCHEMA", 1}};

std::string Plural(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string Text(Place place) { return std::to_string(place.line) + ":" + std::to_string(place.column); }

std::string Description(const WrittenValue& value) {
  switch (value.kind) {
    case Kind::Integer:
      return "the integer " + value.text;
    case Kind::Real:
      return "the real number " + value.text;
    case Kind::String:
      return "a string";
    case Kind::Binary:
      return "a binary value";
    case Kind::Enumeration:
      return "." + value.text + ".";
    case Kind::Reference:
      return "the reference #" + value.text;
    case Kind::Unset:
      return "$";
    case Kind::Omitted:
      return "*";
    case Kind::Aggregate:
      return "a list";
    case Kind::Typed:
      break;
  }
  return value.text + "(...)";
}

// What values of a type are, for those who do not know its name; empty where the name says it.
std::string NatureOf(const Domain& domain) {
  using Type = Domain::Kind;
  const auto limited = [&domain](const std::string& kind, const std::string& unit) {
    if (domain.longest < 0) return kind;
    return kind + " of " + (domain.isFixed ? "" : "at most ") + Plural(static_cast<std::size_t>(domain.longest), unit);
  };
  const auto unlessNamed = [&domain](const std::string& keyword, const std::string& nature) {
    const char behind = domain.text.compare(0, keyword.size(), keyword) == 0 ? domain.text.c_str()[keyword.size()] : '_';
    return behind == '\0' || behind == ' ' ? "" : nature;
  };
  switch (domain.kind) {
    case Type::Integer:
      return unlessNamed("integer", "an integer");
    case Type::Real:
      return unlessNamed("real", "a real number");
    case Type::Number:
      return unlessNamed("number", "a number");
    case Type::String:
      return unlessNamed("string", limited("a string", "character"));
    case Type::Binary:
      return unlessNamed("binary", limited("a binary value", "bit"));
    case Type::Boolean:
      return ".T. or .F.";
    case Type::Logical:
      return ".T., .F. or .U.";
    case Type::Enumeration:
      return "an enumeration item";
    case Type::Entity:
      return "a reference";
    case Type::Aggregate:
      for (const char* keyword : {"list", "set", "bag", "array"}) {
        if (unlessNamed(keyword, "a list").empty()) return "";
      }
      return "a list";
    case Type::Any:
    case Type::Select:
      break;
  }
  return "";
}

// "label (a string)"
std::string Expected(const Domain& domain) {
  const std::string nature = NatureOf(domain);
  return domain.text + (nature.empty() ? "" : " (" + nature + ")");
}

// In bytes.
std::size_t LengthOfToken(const WrittenValue& value) {
  const bool isQuoted = value.kind == Kind::String || value.kind == Kind::Binary;
  return value.text.size() + (isQuoted ? 2 : value.kind == Kind::Reference ? 1 : 0);
}

template <class Value>
std::vector<std::string> NamesOf(const std::map<std::string, Value>& values) {
  std::vector<std::string> names;
  names.reserve(values.size());
  for (const auto& value : values) names.push_back(value.first);
  return names;
}

// "A, B, C, ..."
std::string Some(const std::vector<std::string>& names) {
  constexpr std::size_t kMost = 8;
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kMost); ++i) text += (i == 0 ? "" : ", ") + names[i];
  return text + (names.size() > kMost ? ", ..." : "");
}

// Whether a value of this kind is of a type of that one, as far as the kinds tell.
bool Suits(Domain::Kind type, Kind value) {
  using Type = Domain::Kind;
  switch (value) {
    case Kind::Integer:
      return type == Type::Integer || type == Type::Number;
    case Kind::Real:
      return type == Type::Real || type == Type::Number;
    case Kind::String:
      return type == Type::String;
    case Kind::Binary:
      return type == Type::Binary;
    case Kind::Enumeration:
      return type == Type::Enumeration || type == Type::Boolean || type == Type::Logical;
    case Kind::Aggregate:
      return type == Type::Aggregate;
    default:
      return false;
  }
}

}  // namespace

// ------------------------------------------------------------------------------------------------------ the first time

int FileChecker::KindsOf(const WrittenInstance& instance) {
  if (instance.records.size() == 1 && !instance.isComplex) {
    const auto known = kindOfType_.find(instance.records.front().type);
    if (known != kindOfType_.end()) return known->second;
  }
  Kinds kinds;
  for (const WrittenRecord& record : instance.records) kinds.push_back(dictionary_.Find(record.type));
  const auto [entry, isNew] = kindNumbers_.emplace(kinds, static_cast<int>(kinds_.size()));
  if (isNew) kinds_.push_back(kinds);
  if (!instance.isComplex) kindOfType_.emplace(instance.records.front().type, entry->second);
  return entry->second;
}

void FileChecker::Learn(const WrittenInstance& instance) {
  if (instance.IsInHeader()) {
    for (const WrittenRecord& record : instance.records) headerRecords_.emplace(record.type, Place{0, 0});
    return;
  }
  const int kinds = KindsOf(instance);
  instances_.emplace_back(instance.number, kinds);
  const Kinds& rules = kinds_[static_cast<std::size_t>(kinds)];
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (rules[i] == nullptr) ++unknown_[instance.records[i].type];
  }
}

void FileChecker::Sort() {
  isSorted_ = true;
  const auto isLess = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(instances_.begin(), instances_.end(), isLess)) {
    std::stable_sort(instances_.begin(), instances_.end(), isLess);
  }
  for (std::size_t i = 1; i < instances_.size(); ++i) {
    if (instances_[i].first == instances_[i - 1].first) repeated_[instances_[i].first];
  }
  if (instances_.empty()) return;
  const std::int64_t greatest = instances_.back().first;
  const auto count = static_cast<std::int64_t>(instances_.size());
  if (greatest > 4 * count + 1000) return;
  index_.assign(static_cast<std::size_t>(greatest) + 1, -1);
  for (const auto& [number, kinds] : instances_) index_[static_cast<std::size_t>(number)] = kinds;
}

// The kinds of the instance of this number, of several the last one; -1 where there is none.
int FileChecker::Find(std::int64_t number) const {
  if (!index_.empty()) {
    return number < static_cast<std::int64_t>(index_.size()) ? index_[static_cast<std::size_t>(number)] : -1;
  }
  const auto behind = std::upper_bound(instances_.begin(), instances_.end(), number,
                                       [](std::int64_t n, const auto& instance) { return n < instance.first; });
  return behind == instances_.begin() || (behind - 1)->first != number ? -1 : (behind - 1)->second;
}

// Whether one of the records is of the entity; so is what cannot be known.
bool FileChecker::IsOfKind(int kinds, const EntityRule& rule) const {
  const Kinds& rules = kinds_[static_cast<std::size_t>(kinds)];
  return std::any_of(rules.begin(), rules.end(),
                     [&rule](const EntityRule* kind) { return kind == nullptr || kind->IsKindOf(rule); });
}

std::string FileChecker::NameOf(int kinds) const {
  std::string names;
  for (const EntityRule* kind : kinds_[static_cast<std::size_t>(kinds)]) {
    if (!names.empty()) names += " + ";
    names += kind == nullptr ? "?" : kind->name;
  }
  return names;
}

// ----------------------------------------------------------------------------------------------------- the second time

void FileChecker::Add(Code code, Place where, std::string text, std::string hint) {
  const std::int64_t number = instance_ == nullptr ? 0 : instance_->number;
  std::string attribute = record_ == nullptr ? "" : record_->type;
  if (attribute_ != nullptr) attribute += "." + *attribute_;
  // What reading fills in with initial values is no less wrong.
  const Severity severity = code == Code::kTooFewParameters ? Severity::kError : InfoOf(code).severity;
  findings_.Add({code, severity, where, number > 0 && number <= kGreatestInstance ? static_cast<int>(number) : 0,
                 std::move(attribute), std::move(text), std::move(hint)});
}

// "did you mean 'VECTOR'?" where one of the names is near; for the first mistakes alone, as it takes its time.
std::string FileChecker::HintFor(const std::string& name, const std::vector<std::string>& names) {
  constexpr int kMostHints = 1000;
  constexpr std::size_t kLongestName = 1000;
  return name.size() > kLongestName || ++hints_ > kMostHints ? "" : VELMAR::Express::DidYouMean(name, names);
}

void FileChecker::Check(const WrittenInstance& instance) {
  if (!isSorted_) Sort();
  instance_ = &instance;
  record_ = nullptr;
  attribute_ = nullptr;
  if (instance.IsInHeader()) {
    for (const WrittenRecord& record : instance.records) CheckHeaderRecord(record);
    return;
  }
  const bool isInRange = CheckNumber(instance.number, instance.where);
  const auto repeated = repeated_.find(instance.number);
  if (isInRange && repeated != repeated_.end()) {
    Place& first = repeated->second;
    if (first.line == 0) {
      first = instance.where;
    } else {
      Add(Code::kNumberUsedTwice, instance.where,
          "the number is used a second time; first at " + Text(first));
    }
  }
  const Kinds kinds = kinds_[static_cast<std::size_t>(KindsOf(instance))];
  for (const WrittenRecord& record : instance.records) CheckRecord(instance, record, kinds);
  if (instance.isComplex) CheckComplex(instance, kinds);
}

void FileChecker::CheckHeaderRecord(const WrittenRecord& record) {
  record_ = &record;
  for (const HeaderRule& rule : kHeader) {
    if (record.type != rule.name) continue;
    Place& first = headerRecords_[record.type];
    if (first.line == 0) {
      first = record.where;
    } else {
      Add(Code::kRepeatedRecord, record.where, "the header has a second record " + record.type + "; first at " + Text(first));
    }
    CheckCount(record, rule.parameters);
  }
  CheckTokens(record, nullptr, 0);
  for (const WrittenValue& value : record.values) {
    if (value.kind == Kind::String) CheckString(value, Domain());
  }
}

// Points at the first parameter that is too many, or at the parenthesis where one is missing.
void FileChecker::CheckCount(const WrittenRecord& record, std::size_t expected) {
  if (record.parameters == expected) return;
  const std::string text = "expected " + Plural(expected, "parameter") + ", found " + std::to_string(record.parameters);
  if (record.parameters < expected) {
    Add(Code::kTooFewParameters, record.end, text);
    return;
  }
  const auto surplus = std::find_if(record.values.begin(), record.values.end(),
                                    [expected](const WrittenValue& value) { return value.parameter == expected; });
  Add(Code::kTooManyParameters, surplus->where, text);
}

// Whether instances may have the number.
bool FileChecker::CheckNumber(std::int64_t number, Place where) {
  if (number == 0) {
    Add(Code::kNumberZero, where, "instance numbers begin at #1");
  } else if (number > kGreatestInstance) {
    Add(Code::kNumberTooHigh, where, "instance numbers end at #" + std::to_string(kGreatestInstance));
  }
  return number > 0 && number <= kGreatestInstance;
}

// The length of the tokens in a record, and the range of its numbers, wherever they stand. `first` is the index of its first attribute in
// the rule.
void FileChecker::CheckTokens(const WrittenRecord& record, const EntityRule* rule, std::size_t first) {
  constexpr std::size_t kSurelyInRange = 9;  // digits of an instance number
  const auto lookAt = [&](const WrittenValue& value) {
    const std::size_t attribute = first + value.parameter;
    attribute_ = rule != nullptr && attribute < rule->attributes.size() ? &rule->attributes[attribute].name : nullptr;
  };
  for (const WrittenValue& value : record.values) {
    const std::string& text = value.text;
    if (const std::size_t length = LengthOfToken(value); length > kLongestCommonToken) {
      lookAt(value);
      Add(Code::kLongToken, value.where,
          "a token of " + std::to_string(length) + " bytes; other programs may read no more than " + std::to_string(kLongestCommonToken));
    }
    if (value.kind == Kind::Reference && (text.size() > kSurelyInRange || text[0] == '0')) {
      lookAt(value);
      CheckNumber(InstanceNumber(text.data(), text.data() + text.size()), value.where);
    } else if (value.kind == Kind::Real) {
      const std::string becomes = BeyondRange(text);
      if (becomes.empty()) continue;
      lookAt(value);
      Add(Code::kRealRange, value.where, "the real number does not fit 64 bits and becomes " + becomes);
    }
  }
  attribute_ = nullptr;
}

void FileChecker::CheckWhole() {
  instance_ = nullptr;
  record_ = nullptr;
  attribute_ = nullptr;
  for (const HeaderRule& rule : kHeader) {
    if (headerRecords_.count(rule.name) == 0) {
      Add(Code::kMissingHeaderRecord, Place(), std::string("the header has no ") + rule.name);
    }
  }
}

void FileChecker::CheckRecord(const WrittenInstance& instance, const WrittenRecord& record, const Kinds& kinds) {
  record_ = &record;
  attribute_ = nullptr;
  const EntityRule* rule = dictionary_.Find(record.type);
  const std::size_t first = rule != nullptr && instance.isComplex ? rule->firstOwn : 0;
  CheckTokens(record, rule, first);
  if (rule == nullptr) {
    const auto unknown = unknown_.find(record.type);
    if (unknown == unknown_.end()) return;  // said already
    Add(Code::kUnknownType, record.where,
        dictionary_.SchemaName() + " has no such entity" +
            (unknown->second == 1 ? "" : " (" + Plural(unknown->second, "record") + ")"),
        HintFor(record.type, NamesOf(dictionary_.Entities())));
    unknown_.erase(unknown);
    return;
  }
  if (rule->isAbstract && !instance.isComplex) {
    Add(Code::kAbstractType, record.where, "the entity is abstract: expected one of its subtypes" + SubtypesOf(*rule));
  }
  const std::size_t expected = rule->attributes.size() - first;
  CheckCount(record, expected);
  std::size_t at = 0;
  for (std::size_t i = 0; i < std::min(expected, record.parameters); ++i) {
    const AttributeRule& attribute = rule->attributes[first + i];
    attribute_ = &attribute.name;
    const bool isDerived = attribute.isDerived || (instance.isComplex && IsDerivedBy(kinds, attribute));
    CheckParameter(attribute, isDerived, at);
    at = record.values[at].end;
  }
}

// " (A, B, ...)": those that instances may be of.
const std::string& FileChecker::SubtypesOf(const EntityRule& rule) {
  const auto [entry, isNew] = subtypes_.emplace(&rule, "");
  if (isNew) {
    std::vector<std::string> names;
    for (const auto& [name, other] : dictionary_.Entities()) {
      if (!other.isAbstract && other.IsKindOf(rule)) names.push_back(name);
    }
    if (!names.empty()) entry->second = " (" + Some(names) + ")";
  }
  return entry->second;
}

bool FileChecker::IsDerivedBy(const Kinds& kinds, const AttributeRule& attribute) const {
  const auto derives = [&attribute](const EntityRule* kind) {
    return kind != nullptr && std::any_of(kind->kinds.begin(), kind->kinds.end(), [&attribute](const EntityRule* rule) {
             return std::find(rule->derives.begin(), rule->derives.end(),
                              std::make_pair(attribute.owner, attribute.name)) != rule->derives.end();
           });
  };
  return std::any_of(kinds.begin(), kinds.end(), derives);
}

void FileChecker::CheckComplex(const WrittenInstance& instance, const Kinds& kinds) {
  attribute_ = nullptr;
  std::map<std::string, Place> firsts;
  for (const WrittenRecord& record : instance.records) {
    record_ = &record;
    const auto [first, isNew] = firsts.emplace(record.type, record.where);
    if (isNew) continue;
    Add(Code::kRepeatedRecord, record.where,
        "the complex instance has a second record " + record.type + "; first at " + Text(first->second));
  }
  record_ = &instance.records.front();
  if (std::find(kinds.begin(), kinds.end(), nullptr) != kinds.end()) return;
  std::vector<const EntityRule*> missing;
  for (const EntityRule* kind : kinds) {
    for (const EntityRule* super : kind->kinds) {
      if (std::find(kinds.begin(), kinds.end(), super) != kinds.end()) continue;
      if (std::find(missing.begin(), missing.end(), super) == missing.end()) missing.push_back(super);
    }
  }
  std::sort(missing.begin(), missing.end(), [](auto* a, auto* b) { return a->name < b->name; });
  for (const EntityRule* super : missing) {
    Add(Code::kMissingSupertype, instance.where, "the complex instance has no record of the supertype " + super->name);
  }
}

void FileChecker::CheckParameter(const AttributeRule& attribute, bool isDerived, std::size_t at) {
  const WrittenValue& value = Value(at);
  if (value.kind == Kind::Omitted) {
    if (!isDerived) Add(Code::kNothingDerived, value.where, "nothing is derived here: expected " + Expected(*attribute.domain));
  } else if (isDerived) {
    Add(Code::kDerivedValue, value.where, "the value is derived: expected *, found " + Description(value));
  } else if (value.kind == Kind::Unset) {
    if (!attribute.isOptional) {
      Add(Code::kMissingValue, value.where, "a value is required: expected " + Expected(*attribute.domain));
    }
  } else {
    CheckValue(*attribute.domain, at, 0);
  }
}

// --------------------------------------------------------------------------------------------------------- the values

void FileChecker::WrongKind(const Domain& domain, const WrittenValue& value) {
  Add(Code::kWrongKind, value.where, "expected " + Expected(domain) + ", found " + Description(value));
}

void FileChecker::CheckValue(const Domain& domain, std::size_t at, int depth) {
  using Type = Domain::Kind;
  const WrittenValue& value = Value(at);
  if (depth > kDeepest) {
    Add(Code::kTooDeep, value.where, "values within values are checked to " + std::to_string(kDeepest) + " levels");
    return;
  }
  const auto require = [&](bool isRight) {
    if (!isRight) WrongKind(domain, value);
    return isRight;
  };
  switch (domain.kind) {
    case Type::Any:
      break;
    case Type::Integer:
      require(value.kind == Kind::Integer);
      break;
    case Type::Real:
      if (value.kind == Kind::Integer) {
        Add(Code::kIntegerForReal, value.where, "expected " + domain.text + ", found the integer " + value.text +
                                              ": a real number has a decimal point");
      } else {
        require(value.kind == Kind::Real);
      }
      break;
    case Type::Number:
      require(value.kind == Kind::Integer || value.kind == Kind::Real);
      break;
    case Type::String:
      if (require(value.kind == Kind::String)) CheckString(value, domain);
      break;
    case Type::Binary:
      if (require(value.kind == Kind::Binary)) CheckBinary(value, domain);
      break;
    case Type::Boolean:
    case Type::Logical:
    case Type::Enumeration:
      if (require(value.kind == Kind::Enumeration)) CheckItem(value, domain);
      break;
    case Type::Entity:
      if (require(value.kind == Kind::Reference)) CheckReference(value, domain);
      break;
    case Type::Aggregate:
      if (require(value.kind == Kind::Aggregate)) CheckAggregate(domain, at, depth);
      break;
    case Type::Select:
      CheckSelect(domain, at, depth);
      break;
  }
}

void FileChecker::CheckAggregate(const Domain& domain, std::size_t at, int depth) {
  const WrittenValue& list = Value(at);
  const auto count = static_cast<long>(list.elements);
  if (count < domain.fewest || (domain.most >= 0 && count > domain.most)) {
    std::string range = "at least " + Plural(static_cast<std::size_t>(domain.fewest), "element");
    if (domain.most >= 0) range = std::to_string(domain.fewest) + " to " + Plural(static_cast<std::size_t>(domain.most), "element");
    Add(Code::kElementCount, list.where,
        "expected " + domain.text + (NatureOf(domain).empty() ? "" : " (" + range + ")") + ", found " + Plural(list.elements, "element"));
  }
  for (std::size_t element = at + 1; element < list.end; element = Value(element).end) {
    const WrittenValue& value = Value(element);
    if (value.kind == Kind::Omitted) {
      WrongKind(*domain.element, value);
    } else if (value.kind == Kind::Unset) {
      if (!domain.mayLackElements) WrongKind(*domain.element, value);
    } else {
      CheckValue(*domain.element, element, depth + 1);
    }
  }
}

void FileChecker::CheckSelect(const Domain& domain, std::size_t at, int depth) {
  const WrittenValue& value = Value(at);
  if (value.kind == Kind::Typed) {
    const auto type = domain.types.find(value.text);
    if (type == domain.types.end()) {
      const std::vector<std::string> types = NamesOf(domain.types);
      Add(Code::kForeignSelectType, value.where,
          "expected " + domain.text + " (" + (types.empty() ? "a reference" : Some(types)) + "), found " + Description(value),
          HintFor(value.text, types));
    } else if (value.elements != 1) {
      Add(Code::kWrongKind, value.where,
          "expected one value within " + value.text + "(...), found " + std::to_string(value.elements));
    } else if (Value(at + 1).kind == Kind::Unset || Value(at + 1).kind == Kind::Omitted) {
      WrongKind(*type->second, Value(at + 1));
    } else {
      CheckValue(*type->second, at + 1, depth + 1);
    }
    return;
  }
  if (value.kind == Kind::Reference) {
    CheckReference(value, domain);
    return;
  }
  if (value.kind == Kind::Unset || value.kind == Kind::Omitted || domain.types.empty()) {
    WrongKind(domain, value);
    return;
  }
  auto example = std::find_if(domain.types.begin(), domain.types.end(),
                              [&value](const auto& type) { return Suits(type.second->kind, value.kind); });
  if (example == domain.types.end()) example = domain.types.begin();
  Add(Code::kUntypedSelectValue, value.where,
      "expected " + domain.text + " with the name of a type, such as " + example->first + "(...), found " + Description(value));
}

void FileChecker::CheckReference(const WrittenValue& value, const Domain& domain) {
  const std::int64_t number = InstanceNumber(value.text.data(), value.text.data() + value.text.size());
  const int kinds = Find(number);
  if (kinds < 0) {
    // Of numbers that no instance may have it is said already.
    if (number > 0 && number <= kGreatestInstance) Add(Code::kNoSuchInstance, value.where, "there is no instance #" + value.text);
    return;
  }
  bool isRight;
  if (domain.kind == Domain::Kind::Entity) {
    isRight = domain.entity == nullptr || IsOfKind(kinds, *domain.entity);
  } else {
    isRight = std::any_of(domain.entities.begin(), domain.entities.end(), [&](const EntityRule* entity) {
      return entity == nullptr || IsOfKind(kinds, *entity);
    });
  }
  if (isRight) return;
  Add(Code::kWrongInstance, value.where,
      "expected " + domain.text + ", found #" + value.text + " (" + NameOf(kinds) + ")");
}

void FileChecker::CheckItem(const WrittenValue& value, const Domain& domain) {
  using Type = Domain::Kind;
  static const std::vector<std::string> kBoolean = {"F", "T"};
  static const std::vector<std::string> kLogical = {"F", "T", "U"};
  const std::vector<std::string>& items = domain.kind == Type::Enumeration ? domain.items
                                          : domain.kind == Type::Boolean   ? kBoolean
                                                                           : kLogical;
  if (std::binary_search(items.begin(), items.end(), value.text)) return;
  Add(Code::kUnknownItem, value.where, "expected an item of " + domain.text + " (" + Some(items) + "), found " + Description(value),
      HintFor(value.text, items));
}

void FileChecker::CheckString(const WrittenValue& value, const Domain& domain) {
  const std::optional<StringMistake> mistake = FindStringMistake(value.text);
  if (mistake) {
    Place where = value.where;
    where.column += 1 + static_cast<int>(mistake->offset);
    Add(mistake->isEscape ? Code::kBadEscape : Code::kNotUtf8, where,
        mistake->text + (mistake->isEscape ? "" : "; the string is taken for ISO 8859-1"));
  }
  if (domain.longest < 0) return;
  const std::string text = VELMAR::ConvertSTEPStringToUtf8(value.text);
  const auto length = static_cast<long>(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
  if (length > domain.longest || (domain.isFixed && length < domain.longest)) {
    Add(Code::kTooLong, value.where, "expected " + Expected(domain) + ", found " + Plural(static_cast<std::size_t>(length), "character"));
  }
}

void FileChecker::CheckBinary(const WrittenValue& value, const Domain& domain) {
  if (domain.longest < 0 || value.text.empty()) return;
  const long bits = 4 * (static_cast<long>(value.text.size()) - 1) - (value.text[0] - '0');
  if (bits > domain.longest || (domain.isFixed && bits < domain.longest)) {
    Add(Code::kTooLong, value.where, "expected " + Expected(domain) + ", found " + Plural(static_cast<std::size_t>(bits), "bit"));
  }
}

}  // namespace velmar
