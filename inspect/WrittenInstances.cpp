#include "WrittenInstances.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

#include "ExpUtilities.h"
#include "LexemeReader.h"

namespace velmar {

using VELMAR::Token;

std::int64_t InstanceNumber(const char* begin, const char* end) {
  constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
  std::int64_t number = 0;
  for (const char* digit = begin; digit != end; ++digit) {
    const int value = *digit - '0';
    if (number > (kGreatest - value) / 10) return kGreatest;
    number = 10 * number + value;
  }
  return number;
}

namespace {

// Makes `text` that of a token without so many characters at its ends.
void AssignText(std::string& text, const VELMAR::LexemeReader& token, std::size_t first, std::size_t last) {
  text.assign(token.Text() + first, token.Length() - first - last);
}

bool IsNumeral(WrittenValue::Kind kind) {
  return kind == WrittenValue::Kind::Reference || kind == WrittenValue::Kind::Real;
}

int ForEach(const std::string& path, ValuesRead wanted, bool (InstanceReader::*read)(WrittenInstance&, ValuesRead),
            const std::function<void(const WrittenInstance&)>& action, const Progress& progress) {
  const File file = OpenPart21(path);
  ReportedProgress passed(progress, progress ? static_cast<double>(FileSize(path)) : 0);
  errno = 0;
  VELMAR::Scanner scanner(file.get());
  InstanceReader reader(scanner);
  WrittenInstance instance;
  while ((reader.*read)(instance, wanted)) {
    action(instance);
    passed(instance.end);
  }
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return reader.DataBegin();
}

}  // namespace

std::string TypeText(const WrittenInstance& instance) {
  if (!instance.isComplex) return instance.records.empty() ? "" : instance.records.front().type;
  std::string text;
  for (const WrittenRecord& record : instance.records) text += (text.empty() ? "(" : " ") + record.type;
  return text + ")";
}

InstanceReader::InstanceReader(VELMAR::Scanner& scanner) : token_(std::make_unique<VELMAR::LexemeReader>(scanner)) {}
InstanceReader::~InstanceReader() = default;

inline void InstanceReader::Next() {
  behind_ = token_->Position() + 1;  // exact behind parentheses
  token_->Next();
}

inline bool InstanceReader::Is(Token::Kind kind) const { return token_->Kind() == kind; }
inline Place InstanceReader::Here() const { return {token_->Line(), token_->Column()}; }

bool InstanceReader::Read(WrittenInstance& instance, ValuesRead wanted) {
  while (ReadAny(instance, wanted)) {
    if (instance.isWhole) return true;
  }
  return false;
}

bool InstanceReader::ReadAny(WrittenInstance& instance, ValuesRead wanted) {
  for (; !Is(Token::EoF);) {
    for (WrittenRecord& record : instance.records) spare_.push_back(std::move(record));
    instance.records.clear();
    instance.isComplex = false;
    instance.isWhole = true;
    instance.where = Here();
    if (Is(Token::Header)) {
      inHeader_ = true;
      Next();
    } else if (Is(Token::EndSec) || Is(Token::Data)) {
      inHeader_ = false;
      if (Is(Token::Data) && dataBegin_ < 0) dataBegin_ = token_->Position() + static_cast<int>(token_->Length());
      Next();
    } else if (inHeader_ && (Is(Token::Ident) || Is(Token::Exclamation))) {
      instance.number = -1;
      instance.begin = token_->Position();
      const bool isWhole = ReadRecord(instance, ValuesRead::All);
      instance.end = behind_;
      if (isWhole) return true;
      PassStatement();
    } else if (Is(Token::EntityInstanceName)) {
      instance.number = InstanceNumber(token_->Text() + 1, token_->Text() + token_->Length());
      Next();
      if (!Is(Token::Equals)) continue;
      Next();
      if (Is(Token::Scope)) {
        enclosing_.push_back({instance.number, instance.where});
        Next();
      } else {
        ReadRecords(instance, wanted);
        return true;
      }
    } else if (Is(Token::EndScope) && !enclosing_.empty()) {
      instance.number = enclosing_.back().number;
      instance.where = enclosing_.back().where;
      enclosing_.pop_back();
      Next();
      if (Is(Token::Slash)) {  // the export list
        do Next();
        while (!Is(Token::Slash) && !Is(Token::Semicolon) && !Is(Token::EoF));
        if (Is(Token::Slash)) Next();
      }
      ReadRecords(instance, wanted);
      return true;
    } else {
      Next();
    }
  }
  return false;
}

void InstanceReader::PassStatement() {
  while (!Is(Token::Semicolon) && !Is(Token::EoF)) Next();
}

// record ";" or "(" record { record } ")" ";" .
void InstanceReader::ReadRecords(WrittenInstance& instance, ValuesRead wanted) {
  bool isWhole = true;
  instance.begin = token_->Position();
  if (Is(Token::LeftParenthesis)) {
    instance.isComplex = true;
    Next();
    while (isWhole && (Is(Token::Ident) || Is(Token::Exclamation))) isWhole = ReadRecord(instance, wanted);
    isWhole = isWhole && !instance.records.empty() && Is(Token::RightParenthesis);
    if (isWhole) Next();
  } else {
    isWhole = ReadRecord(instance, wanted);
  }
  instance.end = behind_;
  instance.isWhole = isWhole && Is(Token::Semicolon);
  PassStatement();
}

bool InstanceReader::ReadRecord(WrittenInstance& instance, ValuesRead wanted) {
  if (spare_.empty()) {
    instance.records.emplace_back();
  } else {
    instance.records.push_back(std::move(spare_.back()));
    spare_.pop_back();
  }
  WrittenRecord& record = instance.records.back();
  record.where = Here();
  record.end = record.where;
  record.parameters = 0;
  record.type.clear();
  const bool isUserDefined = Is(Token::Exclamation);
  if (isUserDefined) Next();
  std::size_t used = 0;
  bool isWhole = Is(Token::Ident);
  if (isWhole) {
    AssignText(record.type, *token_, 0, 0);
    if (isUserDefined) record.type.insert(0, 1, '!');
    Next();
    isWhole = Is(Token::LeftParenthesis);
  }
  if (isWhole) {
    Next();
    isWhole = wanted == ValuesRead::None ? PassValues(record) : ReadValues(record, wanted, used);
  }
  record.values.resize(used);
  return isWhole;
}

// Up to the record's closing parenthesis.
bool InstanceReader::PassValues(WrittenRecord& record) {
  for (int level = 1; !Is(Token::Semicolon) && !Is(Token::EoF); Next()) {
    if (Is(Token::LeftParenthesis)) ++level;
    if (!Is(Token::RightParenthesis) || --level > 0) continue;
    record.end = Here();
    Next();
    return true;
  }
  return false;
}

// { values separated by "," } ")" . Nesting is kept in a list. `used` becomes the number of values; what the record had before stays
// behind them, for its memory.
bool InstanceReader::ReadValues(WrittenRecord& record, ValuesRead wanted, std::size_t& used) {
  const bool all = wanted == ValuesRead::All;
  std::vector<WrittenValue>& values = record.values;
  open_.clear();
  bool mayEnd = true;    // behind "(" and behind a value
  bool mayBegin = true;  // behind "(" and behind ","
  for (;;) {
    if (Is(Token::RightParenthesis) && mayEnd) {
      if (open_.empty()) {
        record.end = Here();
        Next();
        return true;
      }
      if (all) values[open_.back()].end = used;
      open_.pop_back();
      mayEnd = true;
      mayBegin = false;
      Next();
    } else if (Is(Token::Comma) && mayEnd && !mayBegin) {
      mayEnd = false;
      mayBegin = true;
      Next();
    } else if (mayBegin) {
      if (used == values.size()) values.emplace_back();
      WrittenValue& value = values[used];
      value.where = Here();
      value.elements = 0;
      value.text.clear();
      if (!ReadValue(value, wanted)) return false;
      if (open_.empty()) {
        ++record.parameters;
      } else if (all) {
        ++values[open_.back()].elements;
      }
      value.parameter = record.parameters - 1;
      const bool opens = value.kind == WrittenValue::Kind::Aggregate || value.kind == WrittenValue::Kind::Typed;
      if (opens) open_.push_back(used);
      if (all || IsNumeral(value.kind)) value.end = ++used;
      mayEnd = true;
      mayBegin = opens;
    } else {
      return false;
    }
  }
}

// One value, of an aggregate and a typed value the beginning.
bool InstanceReader::ReadValue(WrittenValue& value, ValuesRead wanted) {
  using Kind = WrittenValue::Kind;
  const auto take = [&](Kind kind, std::size_t first, std::size_t last) {
    value.kind = kind;
    if (wanted == ValuesRead::All || IsNumeral(kind)) AssignText(value.text, *token_, first, last);
    Next();
    return true;
  };
  switch (token_->Kind()) {
    case Token::Integer:
      return take(Kind::Integer, 0, 0);
    case Token::Real:
      return take(Kind::Real, 0, 0);
    case Token::String:
      return take(Kind::String, 1, 1);
    case Token::Binary:
      return take(Kind::Binary, 1, 1);
    case Token::EntityInstanceName:
      return take(Kind::Reference, 1, 0);
    case Token::Dollar:
      return take(Kind::Unset, 1, 0);
    case Token::Asterisk:
      return take(Kind::Omitted, 1, 0);
    case Token::LeftParenthesis:
      return take(Kind::Aggregate, 1, 0);
    case Token::Point:
      value.kind = Kind::Enumeration;
      Next();
      if (!Is(Token::Ident)) return false;
      AssignText(value.text, *token_, 0, 0);
      Next();
      if (!Is(Token::Point)) return false;
      Next();
      return true;
    case Token::Exclamation:
    case Token::Ident: {
      value.kind = Kind::Typed;
      const bool isUserDefined = Is(Token::Exclamation);
      if (isUserDefined) Next();
      if (!Is(Token::Ident)) return false;
      AssignText(value.text, *token_, 0, 0);
      if (isUserDefined) value.text.insert(0, 1, '!');
      Next();
      if (!Is(Token::LeftParenthesis)) return false;
      Next();
      return true;
    }
    default:
      return false;
  }
}

int ForEachWrittenInstance(const std::string& path, ValuesRead wanted, const std::function<void(const WrittenInstance&)>& action,
                           const Progress& progress) {
  return ForEach(path, wanted, &InstanceReader::Read, action, progress);
}

void ForAnyWrittenInstance(const std::string& path, ValuesRead wanted, const std::function<void(const WrittenInstance&)>& action,
                           const Progress& progress) {
  ForEach(path, wanted, &InstanceReader::ReadAny, action, progress);
}

double ExpectedInstances(const std::string& path) {
  constexpr std::size_t kFirstPart = 1 << 20;
  const File file = Open(path);
  std::string text(kFirstPart, '\0');
  text.resize(file == nullptr ? 0 : ReadBytes(file.get(), text.data(), text.size()));
  const auto instances = static_cast<double>(std::count(text.begin(), text.end(), '='));
  return std::max(1.0, instances * static_cast<double>(FileSize(path)) / static_cast<double>(std::max<std::size_t>(text.size(), 1)));
}

void ForEachInstanceOf(const std::string& part21, const std::function<void(const WrittenInstance&)>& action,
                       const Progress& progress) {
  const File file(fmemopen(const_cast<char*>(part21.data()), part21.size(), "rb"));  // reads only
  if (file == nullptr) throw std::runtime_error(std::strerror(errno));
  VELMAR::Scanner scanner(file.get());
  InstanceReader reader(scanner);
  WrittenInstance instance;
  ReportedProgress passed(progress, static_cast<double>(part21.size()));
  while (reader.ReadAny(instance)) {
    if (!instance.isWhole) {
      const std::string what = instance.IsInHeader() ? "a record of the header" : "#" + std::to_string(instance.number);
      throw std::runtime_error(what + " has a value that cannot be read again");
    }
    action(instance);
    passed(instance.end);
  }
}

NamedSchema SchemaNamedIn(const std::string& path) {
  const File file = OpenPart21(path);
  errno = 0;
  VELMAR::Scanner scanner(file.get());
  InstanceReader reader(scanner);
  WrittenInstance instance;
  NamedSchema found;
  while (found.where.line == 0 && reader.Read(instance, ValuesRead::None)) {
    const WrittenRecord& record = instance.records.front();
    if (!instance.IsInHeader() || record.type != "FILE_SCHEMA") continue;
    found.where = record.where;
    for (const WrittenValue& value : record.values) {
      if (value.kind != WrittenValue::Kind::String || !found.name.empty()) continue;
      found.name = VELMAR::ConvertSTEPStringToUtf8(value.text);
    }
  }
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return found;
}

}  // namespace velmar
