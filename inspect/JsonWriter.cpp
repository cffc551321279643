#include "JsonFormat.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "ExpUtilities.h"
#include "JsonNumbers.h"
#include "StepStringRules.h"

namespace velmar {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// JSON has a digit on either side of the point, and a small e. "1.E5" is "1.0e5".
std::string JsonOfReal(const std::string& part21) {
  std::string json = part21;
  const std::size_t point = json.find('.');
  if (point != std::string::npos && (point + 1 == json.size() || !IsDigit(json[point + 1]))) json.insert(point + 1, 1, '0');
  std::replace(json.begin(), json.end(), 'E', 'e');
  return json;
}

bool IsJsonInteger(const std::string& text) {
  constexpr std::size_t kSurelyIn64Bits = 18;
  const std::size_t first = text[0] == '-' ? 1 : 0;
  const std::size_t digits = text.size() - first;
  if (digits == 0 || digits > kSurelyIn64Bits || (text[first] == '0' && text.size() > 1)) return false;
  return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(first), text.end(), IsDigit);
}

// Whether JSON has this number, and it comes back as it is.
bool IsJsonReal(const std::string& json, const std::string& part21) {
  const std::size_t first = json[0] == '-' ? 1 : 0;
  if (first == json.size() || !IsDigit(json[first])) return false;
  if (json[first] == '0' && first + 1 < json.size() && IsDigit(json[first + 1])) return false;
  return std::isfinite(std::strtod(json.c_str(), nullptr)) && RealOfJson(json) == part21;
}

// The text of a string as it stands in a file; false where no UTF-8 text is written as this one is: halves of surrogate pairs,
// for instance.
bool Decode(const std::string& written, std::string& text) {
  text = VELMAR::ConvertSTEPStringToUtf8(written);
  return IsWellFormedUtf8(text) && VELMAR::ConvertUtf8ToSTEPString(text) == written;
}

// What a string needs to stand in JSON. Throws nlohmann's exception for what is no UTF-8.
void AppendQuoted(const std::string& text, std::string& json) {
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
  if (isPlain) {
    json.append(1, '"').append(text).append(1, '"');
  } else {
    json += nlohmann::json(text).dump();
  }
}

class JsonWriter {
 public:
  JsonWriter(RecordTypes& types, std::ostream& out) : types_(types), out_(out) {}

  void Write(const std::string& part21, const Progress& progress) {
    out_ << "{\n\"format\": \"" << kJsonFormat << "\",\n\"version\": " << kJsonVersion << ",\n\"schema\": ";
    if (types_.Schema().empty()) {
      out_ << "null";
    } else {
      AppendQuoted(types_.Schema(), text_);
      out_ << text_;
    }
    out_ << ",\n\"header\": [";
    ForEachInstanceOf(part21, [this](const WrittenInstance& instance) { WriteInstance(instance); }, progress);
    if (inHeader_) EndHeader();
    out_ << "\n]\n}\n";
  }

 private:
  void EndHeader() {
    out_ << "\n],\n\"instances\": [";
    inHeader_ = false;
    isFirst_ = true;
  }

  void WriteInstance(const WrittenInstance& instance) {
    if (inHeader_ && !instance.IsInHeader()) EndHeader();
    text_ = isFirst_ ? "\n" : ",\n";
    isFirst_ = false;
    if (instance.IsInHeader()) {
      text_ += '{';
      AppendRecord(instance, instance.records.front());
    } else {
      text_ += "{\"id\": " + std::to_string(instance.number) + ", ";
      if (instance.isComplex) {
        text_ += "\"parts\": [";
        for (const WrittenRecord& record : instance.records) {
          if (&record != &instance.records.front()) text_ += ", ";
          text_ += '{';
          AppendRecord(instance, record);
          text_ += '}';
        }
        text_ += ']';
      } else {
        AppendRecord(instance, instance.records.front());
      }
    }
    text_ += '}';
    out_ << text_;
  }

  // The members of its object.
  void AppendRecord(const WrittenInstance& instance, const WrittenRecord& record) {
    text_ += "\"type\": ";
    AppendQuoted(record.type, text_);
    const RecordType* type = types_.Of(record, instance);
    const bool isPart = instance.isComplex;
    const bool isNamed = type != nullptr && type->HasDistinctNames(isPart) && record.parameters == type->Count(isPart);
    text_ += isNamed ? ", \"attributes\": {" : ", \"values\": [";
    std::size_t index = isNamed ? type->First(isPart) : 0;
    for (std::size_t at = 0; at < record.values.size(); at = record.values[at].end, ++index) {
      if (at > 0) text_ += ", ";
      if (isNamed) {
        AppendQuoted(type->attributes[index].name, text_);
        text_ += ": ";
      }
      AppendValue(record.values, at);
    }
    text_ += isNamed ? '}' : ']';
  }

  // With what is within it, however deep that is.
  void AppendValue(const std::vector<WrittenValue>& values, std::size_t at) {
    using Kind = WrittenValue::Kind;
    open_.clear();
    const std::size_t last = values[at].end;
    bool isFirst = true;
    const auto close = [this] {
      text_ += open_.back().second;
      open_.pop_back();
    };
    for (std::size_t i = at; i < last; ++i) {
      while (!open_.empty() && open_.back().first == i) {
        close();
        isFirst = false;
      }
      if (!isFirst) text_ += ", ";
      isFirst = false;
      const WrittenValue& value = values[i];
      if (value.kind == Kind::Aggregate) {
        text_ += '[';
        open_.emplace_back(value.end, "]");
        isFirst = true;
      } else if (value.kind == Kind::Typed) {
        text_ += "{\"type\": ";
        AppendQuoted(value.text, text_);
        text_ += value.elements == 1 ? ", \"value\": " : ", \"values\": [";
        open_.emplace_back(value.end, value.elements == 1 ? "}" : "]}");
        isFirst = true;
      } else {
        AppendScalar(value);
      }
    }
    while (!open_.empty()) close();
  }

  void AppendScalar(const WrittenValue& value) {
    using Kind = WrittenValue::Kind;
    switch (value.kind) {
      case Kind::Unset:
        text_ += "null";
        break;
      case Kind::Omitted:
        text_ += "{\"omitted\": true}";
        break;
      case Kind::Integer:
        if (IsJsonInteger(value.text)) {
          text_ += value.text;
        } else {
          AppendObject("part21", value.text);
        }
        break;
      case Kind::Real: {
        const std::string json = JsonOfReal(value.text);
        if (IsJsonReal(json, value.text)) {
          text_ += json;
        } else {
          AppendObject("part21", value.text);
        }
        break;
      }
      case Kind::String:
        if (Decode(value.text, decoded_)) {
          AppendQuoted(decoded_, text_);
        } else {
          AppendObject("part21", '\'' + value.text + '\'');
        }
        break;
      case Kind::Reference:
        if (IsJsonInteger(value.text)) {
          text_ += "{\"ref\": " + value.text + '}';
        } else {
          AppendObject("part21", '#' + value.text);
        }
        break;
      case Kind::Enumeration:
        AppendObject("enum", value.text);
        break;
      default:
        AppendObject("binary", value.text);
    }
  }

  void AppendObject(const char* key, const std::string& value) {
    text_ += std::string("{\"") + key + "\": ";
    AppendQuoted(value, text_);
    text_ += '}';
  }

  RecordTypes& types_;
  std::ostream& out_;
  bool inHeader_ = true;
  bool isFirst_ = true;
  std::string text_;     // of an instance
  std::string decoded_;  // a string's
  std::vector<std::pair<std::size_t, const char*>> open_;  // where what is open ends, and how
};

}  // namespace

void WriteJson(const std::string& part21, RecordTypes& types, std::ostream& out, const Progress& progress) {
  JsonWriter(types, out).Write(part21, progress);
}

}  // namespace velmar
