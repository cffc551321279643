#include "InstanceDigest.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <functional>
#include <string_view>
#include <system_error>

#include "ExpUtilities.h"
#include "StepStringRules.h"

namespace velmar {

namespace {

using Kind = WrittenValue::Kind;

// Its value; of a text that is no number, the text.
template <typename Number>
std::uint64_t HashOfNumber(const std::string& text) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  Number number = 0;
  const auto [behind, error] = std::from_chars(begin, end, number);
  if (error != std::errc() || behind != end) return HashOf(text);
  if (number == 0) number = 0;  // of the two zeros
  std::uint64_t bits = 0;
  static_assert(sizeof number == sizeof bits);
  std::memcpy(&bits, &number, sizeof bits);
  return Mixed(bits);
}

// Its characters, however they are written; of a text with mistakes in it the bytes.
std::uint64_t HashOfString(const std::string& text) {
  const auto isPlain = [](char c) { return static_cast<unsigned char>(c) < 0x80 && c != '\\' && c != '\''; };
  if (std::all_of(text.begin(), text.end(), isPlain) || FindStringMistake(text)) return HashOf(text);
  return HashOf(VELMAR::ConvertSTEPStringToUtf8(text));
}

std::uint64_t HashOfLeaf(const WrittenValue& value) {
  const auto kind = static_cast<std::uint64_t>(value.kind);
  switch (value.kind) {
    case Kind::Integer:
      return Mixed(kind, HashOfNumber<std::int64_t>(value.text));
    case Kind::Real:
      return Mixed(kind, HashOfNumber<double>(value.text));
    case Kind::String:
      return Mixed(kind, HashOfString(value.text));
    case Kind::Binary:
    case Kind::Enumeration:
      return Mixed(kind, HashOf(value.text));
    case Kind::Aggregate:
      return Mixed(kind, value.elements);
    case Kind::Typed:
      return Mixed(kind, HashOf(value.text) + value.elements);
    case Kind::Reference:
    case Kind::Unset:
    case Kind::Omitted:
      break;
  }
  return Mixed(kind);
}

// Whether none of the elements has values of its own within but one that is no reference.
bool HasPlainElements(const WrittenRecord& record, std::size_t aggregate) {
  for (std::size_t i = aggregate + 1; i < record.values[aggregate].end; i = record.values[i].end) {
    const WrittenValue& element = record.values[i];
    if (element.kind == Kind::Aggregate) return false;
    if (element.kind != Kind::Typed) continue;
    if (element.end != i + 2 || record.values[i + 1].kind == Kind::Reference) return false;
    if (record.values[i + 1].kind == Kind::Aggregate || record.values[i + 1].kind == Kind::Typed) return false;
  }
  return true;
}

const Domain* DomainWithin(const Domain* domain, const WrittenValue& value) {
  if (domain == nullptr) return nullptr;
  if (value.kind == Kind::Aggregate) return domain->kind == Domain::Kind::Aggregate ? domain->element : nullptr;
  if (domain->kind != Domain::Kind::Select) return nullptr;
  const auto type = domain->types.find(value.text);
  return type == domain->types.end() ? nullptr : type->second;
}

}  // namespace

std::uint64_t HashOf(const std::string& text) { return Mixed(std::hash<std::string_view>()(text)); }

void AddParameter(const WrittenRecord& record, std::size_t at, const Domain* domain, std::uint32_t& slot, Digest& digest) {
  struct Enclosing {
    std::size_t end;
    const Domain* domain;  // of what stands within
    bool isUnordered;
    std::uint32_t slot;  // of the elements where they have no order
  };
  std::vector<Enclosing> enclosing;
  const std::size_t end = record.values[at].end;
  for (std::size_t i = at; i < end; ++i) {
    while (!enclosing.empty() && enclosing.back().end <= i) enclosing.pop_back();
    const bool hasNoOrder = !enclosing.empty() && enclosing.back().isUnordered;
    const Domain* here = enclosing.empty() ? domain : enclosing.back().domain;
    const WrittenValue& value = record.values[i];
    const std::uint32_t place = hasNoOrder ? enclosing.back().slot : slot++;
    std::uint64_t hash = HashOfLeaf(value);
    if (value.kind == Kind::Reference) {
      std::int64_t number = 0;
      std::from_chars(value.text.data(), value.text.data() + value.text.size(), number);
      digest.references.push_back({place, number});
    } else if (value.kind == Kind::Typed && hasNoOrder) {
      hash = Mixed(hash, HashOfLeaf(record.values[++i]));
    } else if (value.kind == Kind::Typed || value.kind == Kind::Aggregate) {
      const bool isUnordered = value.kind == Kind::Aggregate && here != nullptr && here->kind == Domain::Kind::Aggregate &&
                               here->isUnordered && HasPlainElements(record, i);
      enclosing.push_back({value.end, DomainWithin(here, value), isUnordered, slot});
      if (isUnordered) ++slot;
    }
    digest.hash += Mixed(place, hash);
  }
}

void SortRecords(const WrittenInstance& instance, std::vector<const WrittenRecord*>& records) {
  records.clear();
  for (const WrittenRecord& record : instance.records) records.push_back(&record);
  std::stable_sort(records.begin(), records.end(),
                   [](const WrittenRecord* a, const WrittenRecord* b) { return a->type < b->type; });
}

const AttributeRule* AttributeOf(const WrittenRecord& record, std::size_t parameter, bool isComplex,
                                 const DataDictionary* dictionary) {
  const EntityRule* rule = dictionary == nullptr ? nullptr : dictionary->Find(record.type);
  if (rule == nullptr) return nullptr;
  const std::size_t at = parameter + (isComplex ? rule->firstOwn : 0);
  return at < rule->attributes.size() ? &rule->attributes[at] : nullptr;
}

void DigestInstance(const std::vector<const WrittenRecord*>& records, bool isComplex, const DataDictionary* dictionary,
                    Digest& digest) {
  digest.hash = isComplex ? 1 : 0;
  digest.references.clear();
  std::uint32_t slot = 0;
  for (const WrittenRecord* record : records) {
    digest.hash += Mixed(slot++, HashOf(record->type) + record->parameters);
    std::size_t at = 0;
    for (std::size_t n = 0; n < record->parameters; ++n, at = record->values[at].end) {
      const AttributeRule* attribute = AttributeOf(*record, n, isComplex, dictionary);
      AddParameter(*record, at, attribute == nullptr ? nullptr : attribute->domain, slot, digest);
    }
  }
  digest.hash = Mixed(digest.hash);
}

}  // namespace velmar
