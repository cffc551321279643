#include "WrittenInstances.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <limits>
#include <utility>

#include "ExpUtilities.h"

namespace velmar {

using VELMAR::Token;

namespace {

// Makes `text` that of a token without so many characters at its ends. Characters are bytes of the file, or code points.
void AssignText(std::string& text, const wchar_t* token, std::size_t first, std::size_t last, bool areCodePoints) {
  text.clear();
  const std::size_t length = std::wcslen(token);
  for (std::size_t i = first; i + last < length; ++i) {
    if (token[i] < 0x80 || !areCodePoints) {
      text += static_cast<char>(token[i]);
    } else {
      text += VELMAR::Utf8Encode(static_cast<unsigned int>(token[i]));
    }
  }
}

// The number of "#12".
std::int64_t NumberOf(const wchar_t* token) {
  constexpr std::int64_t kGreatest = std::numeric_limits<std::int64_t>::max();
  std::int64_t number = 0;
  for (const wchar_t* digit = token + 1; *digit != L'\0'; ++digit) {
    const int value = static_cast<int>(*digit - L'0');
    if (number > (kGreatest - value) / 10) return kGreatest;
    number = 10 * number + value;
  }
  return number;
}

}  // namespace

std::string TypeText(const WrittenInstance& instance) {
  if (!instance.isComplex) return instance.records.empty() ? "" : instance.records.front().type;
  std::string text;
  for (const WrittenRecord& record : instance.records) text += (text.empty() ? "(" : " ") + record.type;
  return text + ")";
}

bool InstanceReader::Read(WrittenInstance& instance, bool withValues) {
  for (; !Is(Token::EoF);) {
    for (WrittenRecord& record : instance.records) spare_.push_back(std::move(record));
    instance.records.clear();
    instance.isComplex = false;
    instance.where = Here();
    if (Is(Token::Header)) {
      inHeader_ = true;
      Next();
    } else if (Is(Token::EndSec) || Is(Token::Data)) {
      inHeader_ = false;
      if (Is(Token::Data) && dataBegin_ < 0) dataBegin_ = token_->pos + static_cast<int>(std::wcslen(token_->val));
      Next();
    } else if (inHeader_ && (Is(Token::Ident) || Is(Token::Exclamation))) {
      instance.number = -1;
      instance.begin = token_->pos;
      const bool isWhole = ReadRecord(instance, true);
      instance.end = behind_;
      if (isWhole) return true;
      PassStatement();
    } else if (Is(Token::EntityInstanceName)) {
      instance.number = NumberOf(token_->val);
      Next();
      if (!Is(Token::Equals)) continue;
      Next();
      if (Is(Token::Scope)) {
        enclosing_.push_back({instance.number, instance.where});
        Next();
      } else if (ReadRecords(instance, withValues)) {
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
      if (ReadRecords(instance, withValues)) return true;
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
bool InstanceReader::ReadRecords(WrittenInstance& instance, bool withValues) {
  bool isWhole = true;
  instance.begin = token_->pos;
  if (Is(Token::LeftParenthesis)) {
    instance.isComplex = true;
    Next();
    while (isWhole && (Is(Token::Ident) || Is(Token::Exclamation))) isWhole = ReadRecord(instance, withValues);
    isWhole = isWhole && Is(Token::RightParenthesis);
    if (isWhole) Next();
  } else {
    isWhole = ReadRecord(instance, withValues);
  }
  instance.end = behind_;
  isWhole = isWhole && Is(Token::Semicolon);
  PassStatement();
  return isWhole;
}

bool InstanceReader::ReadRecord(WrittenInstance& instance, bool withValues) {
  if (spare_.empty()) {
    instance.records.emplace_back();
  } else {
    instance.records.push_back(std::move(spare_.back()));
    spare_.pop_back();
  }
  WrittenRecord& record = instance.records.back();
  record.where = Here();
  record.parameters = 0;
  const bool isUserDefined = Is(Token::Exclamation);
  if (isUserDefined) Next();
  if (!Is(Token::Ident)) return false;
  AssignText(record.type, token_->val, 0, 0, isUtf8_);
  if (isUserDefined) record.type.insert(0, 1, '!');
  Next();
  if (!Is(Token::LeftParenthesis)) return false;
  Next();
  return withValues ? ReadValues(record) : PassValues(record);
}

// Up to the record's closing parenthesis.
bool InstanceReader::PassValues(WrittenRecord& record) {
  record.values.clear();
  for (int level = 1; !Is(Token::Semicolon) && !Is(Token::EoF); Next()) {
    if (Is(Token::LeftParenthesis)) ++level;
    if (!Is(Token::RightParenthesis) || --level > 0) continue;
    record.end = Here();
    Next();
    return true;
  }
  return false;
}

// { values separated by "," } ")" . Nesting is kept in a list.
bool InstanceReader::ReadValues(WrittenRecord& record) {
  std::vector<WrittenValue>& values = record.values;
  std::size_t used = 0;
  open_.clear();
  bool mayEnd = true;    // behind "(" and behind a value
  bool mayBegin = true;  // behind "(" and behind ","
  for (;;) {
    if (Is(Token::RightParenthesis) && mayEnd) {
      if (open_.empty()) {
        values.resize(used);
        record.end = Here();
        Next();
        return true;
      }
      values[open_.back()].end = used;
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
      if (!ReadValue(value)) return false;
      if (open_.empty()) {
        ++record.parameters;
      } else {
        ++values[open_.back()].elements;
      }
      value.end = ++used;
      const bool opens = value.kind == WrittenValue::Kind::Aggregate || value.kind == WrittenValue::Kind::Typed;
      if (opens) open_.push_back(used - 1);
      mayEnd = true;
      mayBegin = opens;
    } else {
      return false;
    }
  }
}

// One value, of an aggregate and a typed value the beginning.
bool InstanceReader::ReadValue(WrittenValue& value) {
  using Kind = WrittenValue::Kind;
  const auto take = [&](Kind kind, std::size_t first, std::size_t last) {
    value.kind = kind;
    AssignText(value.text, token_->val, first, last, isUtf8_);
    Next();
    return true;
  };
  switch (token_->kind) {
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
      AssignText(value.text, token_->val, 0, 0, isUtf8_);
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
      AssignText(value.text, token_->val, 0, 0, isUtf8_);
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

int ForEachWrittenInstance(const std::string& path, bool withValues,
                           const std::function<void(const WrittenInstance&)>& action) {
  const File file = Open(path);
  if (file == nullptr) ThrowUnreadable(path, errno);
  char start[3] = {};
  const bool isUtf8 = std::fread(start, 1, 3, file.get()) == 3 && std::memcmp(start, "\xEF\xBB\xBF", 3) == 0;
  std::rewind(file.get());
  errno = 0;
  VELMAR::Scanner scanner(file.get());
  InstanceReader reader(scanner, isUtf8);
  WrittenInstance instance;
  while (reader.Read(instance, withValues)) action(instance);
  if (std::ferror(file.get()) != 0) ThrowUnreadable(path, errno);
  return reader.DataBegin();
}

NamedSchema SchemaNamedIn(const std::string& path) {
  NamedSchema found;
  ForEachWrittenInstance(path, false, [&found](const WrittenInstance& instance) {
    if (!instance.IsInHeader() || found.where.line != 0) return;
    const WrittenRecord& record = instance.records.front();
    if (record.type != "FILE_SCHEMA") return;
    found.where = record.where;
    for (const WrittenValue& value : record.values) {
      if (value.kind != WrittenValue::Kind::String || !found.name.empty()) continue;
      found.name = VELMAR::ConvertSTEPStringToUtf8(value.text);
    }
  });
  return found;
}

}  // namespace velmar
