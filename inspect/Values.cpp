#include "Values.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <list>
#include <nlohmann/json.hpp>
#include <system_error>

#include "ExpAttributeVisitor.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::ExpAttribute;

// Values nested deeper than this are given as texts: what reads JSON goes only so deep, too.
constexpr int kDeepest = 100;

// As Part 21 writes it; "$" for what cannot be written.
std::string Part21Text(ExpAttribute& value) {
  if (value.IsNotProvided()) return "$";
  if (value.IsOmitted()) return "*";
  try {
    return value.ToString();
  } catch (const std::string&) {  // a select without a value
    return "$";
  }
}

std::string Decoded(const std::string& body) { return Printable(VELMAR::ExpString(body).GetExpString()); }

// The type names before a typed value: "A(!B(1))" has two.
std::vector<std::string> TypeNamesIn(const std::string& text) {
  std::vector<std::string> names;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '(' && i > begin) {
      names.push_back(text.substr(begin, i - begin));
      begin = i + 1;
    } else if (std::isalnum(c) == 0 && c != '_' && (c != '!' || i > begin)) {
      break;
    }
  }
  return names;
}

class JsonMaker : public VELMAR::ExpAttributeVisitor {
 public:
  explicit JsonMaker(int depth) : depth_(depth) {}

  static Json Make(ExpAttribute* value, int depth) {
    if (value == nullptr || value->IsNotProvided()) return nullptr;
    if (value->IsOmitted()) return {{"omitted", true}};
    if (depth > kDeepest) return {{"part21", Part21Text(*value)}};
    JsonMaker maker(depth);
    value->Accept(&maker);
    return maker.isOther_ ? OfToken(Part21Text(*value)) : maker.json_;
  }

 private:
  // Of values that a visitor passes over: binary ones and integers of more than 32 bits.
  static Json OfToken(const std::string& text) {
    if (text.size() > 2 && text.front() == '"') return {{"binary", text.substr(1, text.size() - 2)}};
    const bool isPositive = text[0] == '+';
    std::int64_t integer = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data() + (isPositive ? 1 : 0), end, integer);
    if (error == std::errc() && behind == end) return integer;
    return {{"part21", text}};
  }

  void VisitExpReal(VELMAR::ExpReal* value) override {
    isOther_ = false;
    const double number = value->GetExpReal();
    if (std::isfinite(number)) {
      json_ = number;
    } else {
      json_ = {{"part21", Part21Text(*value)}};
    }
  }
  void VisitExpInteger(VELMAR::ExpInteger* value) override {
    isOther_ = false;
    json_ = value->GetExpInteger();
  }
  void VisitExpString(VELMAR::ExpString* value) override {
    isOther_ = false;
    json_ = value->GetExpString();
  }
  void VisitExpLink(VELMAR::ExpLink* value) override {
    isOther_ = false;
    if (value->GetExpLink() >= 0) json_ = {{"ref", value->GetExpLink()}};
  }
  void VisitExpEnumeration(VELMAR::ExpEnumeration* value) override {
    isOther_ = false;
    const std::string name = value->GetExpEnumerationString();
    if (!name.empty()) json_ = {{"enum", name}};
  }
  void VisitExpAggregation(VELMAR::ExpAggregation* value) override {
    isOther_ = false;
    json_ = Json::array();
    for (ExpAttribute* element : *value->GetExpAggregation()) json_.push_back(Make(element, depth_ + 1));
  }
  void VisitExpSelect(VELMAR::ExpSelect* value) override {
    isOther_ = false;
    json_ = Make(value->GetExpSelectValue(), depth_ + 1);
    const std::vector<std::string> names = TypeNamesIn(Part21Text(*value));
    for (auto name = names.rbegin(); name != names.rend(); ++name) {
      json_ = {{"type", *name}, {"value", std::move(json_)}};
    }
  }

  int depth_;
  bool isOther_ = true;  // of no kind that there is an operation for
  Json json_;
};

class LinkFinder : public VELMAR::ExpAttributeVisitor {
 public:
  explicit LinkFinder(const std::function<void(VELMAR::ExpLink&)>& action) : action_(action) {}

  void Look(ExpAttribute& value) {
    pending_.push_back(&value);
    while (!pending_.empty()) {
      ExpAttribute* next = pending_.back();
      pending_.pop_back();
      if (next != nullptr && !next->IsNotProvided() && !next->IsOmitted()) next->Accept(this);
    }
  }

 private:
  void VisitExpLink(VELMAR::ExpLink* value) override { action_(*value); }
  void VisitExpSelect(VELMAR::ExpSelect* value) override { pending_.push_back(value->GetExpSelectValue()); }
  void VisitExpAggregation(VELMAR::ExpAggregation* value) override {
    pending_.insert(pending_.end(), value->GetExpAggregation()->begin(), value->GetExpAggregation()->end());
  }

  const std::function<void(VELMAR::ExpLink&)>& action_;
  std::vector<ExpAttribute*> pending_;
};

}  // namespace

std::string TextOf(ExpAttribute& value) {
  const std::string part21 = Part21Text(value);
  std::string text;
  for (std::size_t i = 0; i < part21.size(); ++i) {
    text += part21[i];
    if (part21[i] != '\'') continue;
    // The string ends at an apostrophe that is not followed by another.
    std::size_t end = i + 1;
    while (end < part21.size() && (part21[end] != '\'' || part21.compare(end, 2, "''") == 0)) {
      end += part21[end] == '\'' ? 2 : 1;
    }
    for (const char c : Decoded(part21.substr(i + 1, end - i - 1)))
      text += c == '\'' ? std::string("''") : std::string(1, c);
    text += '\'';
    i = end;
  }
  return text;
}

std::string CellOf(ExpAttribute& value) {
  if (value.IsNotProvided() || value.IsOmitted()) return "";
  if (auto* string = dynamic_cast<VELMAR::ExpString*>(&value)) return string->GetExpString();
  if (auto* item = dynamic_cast<VELMAR::ExpEnumeration*>(&value)) return item->GetExpEnumerationString();
  const std::string text = TextOf(value);
  return text == "$" ? "" : text;
}

Json JsonOf(ExpAttribute& value) { return JsonMaker::Make(&value, 0); }

void ForEachLinkIn(ExpAttribute& value, const std::function<void(VELMAR::ExpLink&)>& action) { LinkFinder(action).Look(value); }

void AddLinksOf(ExpAttribute& value, std::vector<int>& numbers) {
  ForEachLinkIn(value, [&numbers](VELMAR::ExpLink& link) {
    if (link.GetExpLink() > 0) numbers.push_back(link.GetExpLink());
  });
}

}  // namespace velmar
