#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <nlohmann/json.hpp>
#include <unordered_set>
#include <utility>
#include <vector>

#include "BundledSchemas.h"
#include "ExpRuntimeRegistry.h"
#include "ExpUtilities.h"
#include "Input.h"
#include "JsonFormat.h"
#include "JsonNumbers.h"
#include "NumberRules.h"
#include "Scanner.h"
#include "Wording.h"

namespace velmar {

namespace {

using VELMAR::Token;

// Whether the text is one token of these kinds, and nothing else. One with a carriage return is read as another, with a line feed.
bool IsToken(const std::string& text, std::initializer_list<int> kinds) {
  if (text.empty() || text[0] == '\xEF') return false;
  if (text.find('\0') != std::string::npos || text.find('\r') != std::string::npos) return false;
  VELMAR::Scanner scanner(reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
  scanner.AllowLongTokens();
  const Token* token = scanner.Scan();
  const bool isOfKind = std::find(kinds.begin(), kinds.end(), token->kind) != kinds.end();
  return isOfKind && std::wcslen(token->val) == text.size() && scanner.Scan()->kind == Token::EoF;
}

// The bytes of a file, block by block, with the places of the last two.
class JsonInput {
 public:
  JsonInput(std::FILE* file, ReportedProgress* read) : file_(file), read_(read), block_(kBlock) { Fill(); }

  bool IsAtEnd() const { return at_ == end_; }
  char Current() const { return block_[at_]; }
  void Advance() {
    before_ = last_;
    if (isNewLine_) {
      ++last_.line;
      last_.column = 0;
    }
    ++last_.column;
    isNewLine_ = block_[at_] == '\n';
    if (++at_ == end_) Fill();
  }
  // Of the last character that was taken, and of the one before it.
  Place Last() const { return last_; }
  Place Before() const { return {before_.line, std::max(before_.column, 1)}; }

 private:
  static constexpr std::size_t kBlock = 65536;

  void Fill() {
    at_ = 0;
    errno = 0;
    end_ = ReadBytes(file_, block_.data(), block_.size());
    if (std::ferror(file_) != 0) throw std::runtime_error(std::strerror(errno == 0 ? EIO : errno));
    count_ += end_;
    if (read_ != nullptr) (*read_)(static_cast<double>(count_));
  }

  std::FILE* file_;
  ReportedProgress* read_;
  std::size_t count_ = 0;  // bytes that have been read
  std::vector<char> block_;
  std::size_t at_ = 0;
  std::size_t end_ = 0;
  bool isNewLine_ = false;
  Place last_ = {1, 0};
  Place before_ = {1, 0};
};

// The same as nlohmann's parser takes it. All copies share the input; the default is the end of any.
class JsonBytes {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = char;

  explicit JsonBytes(JsonInput* input = nullptr) : input_(input) {}
  char operator*() const { return input_->Current(); }
  JsonBytes& operator++() {
    input_->Advance();
    return *this;
  }
  friend bool operator==(const JsonBytes& a, const JsonBytes& b) { return a.IsAtEnd() == b.IsAtEnd(); }
  friend bool operator!=(const JsonBytes& a, const JsonBytes& b) { return !(a == b); }

 private:
  bool IsAtEnd() const { return input_ == nullptr || input_->IsAtEnd(); }
  JsonInput* input_;
};

enum class Key {
  Format, Version, Schema, Header, Instances,  // of the file
  Id, Parts,                                   // of an instance
  Type, Attributes, Values,                    // of a record; type and values also of a typed value
  Value, Ref, Enum, Binary, Omitted, Part21,   // of a value
  Unknown
};

struct KeyRow {
  const char* name;
  Key key;
  const char* value;  // what it has as its value
};

constexpr KeyRow kKeys[] = {
    {"format", Key::Format, "\"velmar-json\""},
    {"version", Key::Version, "the number 1"},
    {"schema", Key::Schema, "the name of a schema, or null"},
    {"header", Key::Header, "an array of records"},
    {"instances", Key::Instances, "an array of instances"},
    {"id", Key::Id, "an instance number, at most 1073741823"},
    {"parts", Key::Parts, "an array of records"},
    {"type", Key::Type, "the name of a type, in upper case"},
    {"attributes", Key::Attributes, "an object"},
    {"values", Key::Values, "an array"},
    {"value", Key::Value, "a value"},
    {"ref", Key::Ref, "the number of an instance"},
    {"enum", Key::Enum, "the name of an item, in upper case"},
    {"binary", Key::Binary, "a string of hexadecimal digits behind 0, 1, 2 or 3"},
    {"omitted", Key::Omitted, "true"},
    {"part21", Key::Part21, "a number, string, binary or reference as Part 21 has it"},
};

const KeyRow* FindKey(const std::string& name) {
  for (const KeyRow& row : kKeys) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

// What we are in: an object or an array of a certain kind.
struct Frame {
  enum Kind { Document, File, Header, Instances, Instance, Parts, Record, Attributes, Values, Aggregate, Object, TypedValues };
  Kind kind;
  Key key = Key::Unknown;  // the last one
  unsigned keys = 0;       // those that there were, as bits
  bool isEmpty = true;     // an array without elements

  bool Has(Key other) const { return (keys >> static_cast<unsigned>(other) & 1u) != 0; }
};

// Which objects have which keys.
bool MayHave(Frame::Kind kind, Key key) {
  switch (key) {
    case Key::Format:
    case Key::Version:
    case Key::Schema:
    case Key::Header:
    case Key::Instances:
      return kind == Frame::File;
    case Key::Id:
    case Key::Parts:
      return kind == Frame::Instance;
    case Key::Attributes:
      return kind == Frame::Instance || kind == Frame::Record;
    case Key::Type:
    case Key::Values:
      return kind != Frame::File;
    default:
      return kind == Frame::Object;
  }
}

// Makes Part 21 of what nlohmann's parser meets: the functions null() to parse_error() are those that it calls. They
// give true; what is wrong is thrown.
class JsonReader {
 public:
  explicit JsonReader(const JsonInput& input) : input_(input) { Push(Frame::Document); }

  std::string Take() { return std::move(text_); }

  bool null() {
    if (Top().kind == Frame::File && Top().key == Key::Schema) return true;
    return Plain("$");
  }

  bool boolean(bool value) {
    if (Top().kind == Frame::Object && Top().key == Key::Omitted && value) {
      Parameter() += '*';
      return true;
    }
    if (TakesValues()) Fail(fmt::format(R"(a boolean value is {{"enum": "{}"}})", value ? 'T' : 'F'));
    FailExpected();
  }

  bool number_integer(std::int64_t value) { return Integer(std::to_string(value), value); }
  bool number_unsigned(std::uint64_t value) {
    constexpr std::uint64_t kGreatest = std::numeric_limits<std::int64_t>::max();
    return Integer(std::to_string(value), static_cast<std::int64_t>(std::min(value, kGreatest)));
  }
  bool number_float(double, const std::string& text) {
    isBehindNumber_ = true;
    if (text.find_first_of(".eE") == std::string::npos) return Integer(text, text[0] == '-' ? -1 : kGreatestInstance + 1);
    return Plain(RealOfJson(text));
  }

  bool string(const std::string& text) {
    if (TakesValues()) return Plain(Encoded(text));
    switch (Top().key) {
      case Key::Format:
        if (text != kJsonFormat) FailExpected();
        break;
      case Key::Schema:
        UseSchema(text);
        break;
      case Key::Type:
        RequireName(text, true);
        if (Top().kind == Frame::Object) {
          Parameter() += text + '(';
        } else {
          type_ = text;
        }
        break;
      case Key::Enum:
        RequireName(text, false);
        Parameter() += '.' + text + '.';
        break;
      case Key::Binary:
        if (!IsToken('"' + text + '"', {Token::Binary})) FailExpected();
        Parameter() += '"' + text + '"';
        break;
      case Key::Part21:
        if (!IsToken(text, {Token::Integer, Token::Real, Token::String, Token::Binary, Token::EntityInstanceName})) FailExpected();
        Parameter() += text;
        break;
      default:
        FailExpected();
    }
    return true;
  }
  bool binary(const nlohmann::json::binary_t&) { return false; }  // a text has none

  bool start_object(std::size_t) {
    switch (Top().kind) {
      case Frame::Document:
        Push(Frame::File);
        break;
      case Frame::Header:
        ReachLine();
        StartRecord();
        Push(Frame::Record);
        break;
      case Frame::Parts:
        StartRecord();
        Push(Frame::Record);
        break;
      case Frame::Instances:
        ReachLine();
        StartRecord();
        Push(Frame::Instance);
        break;
      case Frame::Instance:
      case Frame::Record:
        if (Top().key != Key::Attributes) FailExpected();
        Push(Frame::Attributes);
        break;
      default:
        StartValue();
        Push(Frame::Object);
    }
    return true;
  }

  bool key(const std::string& name) {
    Frame& frame = Top();
    if (frame.kind == Frame::Attributes) {
      NextParameter().name = name;
      parameters_[used_ - 1].where = input_.Last();
      return true;
    }
    const KeyRow* row = FindKey(name);
    if (row == nullptr || !MayHave(frame.kind, row->key)) Fail(fmt::format("there is no key \"{}\" here", Printable(name)));
    if (frame.Has(row->key)) Fail(fmt::format("\"{}\" is there twice", name));
    frame.key = row->key;
    if (frame.kind == Frame::Object) {
      const bool isValueOfType = row->key == Key::Value || row->key == Key::Values;
      if (isValueOfType && !frame.Has(Key::Type)) Fail(fmt::format("\"type\" expected before \"{}\"", name));
      if (frame.keys != 0 && !(isValueOfType && frame.keys == Bit(Key::Type))) Fail(fmt::format("\"{}\" is one key too many", name));
    } else if (frame.kind != Frame::File) {
      const unsigned ofRecord = Bit(Key::Type) | Bit(Key::Attributes) | Bit(Key::Values);
      const bool isOfRecord = (Bit(row->key) & ofRecord) != 0;
      if ((row->key == Key::Parts && (frame.keys & ofRecord) != 0) || (isOfRecord && frame.Has(Key::Parts))) {
        Fail("an instance with \"parts\" has their types and values there");
      }
      if ((row->key == Key::Values && frame.Has(Key::Attributes)) || (row->key == Key::Attributes && frame.Has(Key::Values))) {
        Fail("a record has either \"attributes\" or \"values\"");
      }
    }
    frame.keys |= Bit(row->key);
    return true;
  }

  bool end_object() {
    const Frame frame = Top();
    frames_.pop_back();
    switch (frame.kind) {
      case Frame::File:
        Require(frame, {Key::Format, Key::Version, Key::Header, Key::Instances});
        text_ += "ENDSEC;END-ISO-10303-21;\n";
        break;
      case Frame::Instance:
        EndInstance(frame);
        break;
      case Frame::Record:
        if (Top().kind == Frame::Parts) {
          AppendRecord(frame, parts_);
        } else {
          AppendRecord(frame, text_);
          text_ += ';';
        }
        Top().isEmpty = false;
        break;
      case Frame::Object:
        if (frame.keys == 0) Fail("a key expected: ref, enum, type, binary, omitted or part21");
        if (frame.keys == Bit(Key::Type)) Fail("\"value\" expected behind \"type\"");
        if (frame.Has(Key::Type)) Parameter() += ')';
        break;
      default:
        break;
    }
    return true;
  }

  bool start_array(std::size_t) {
    if (TakesValues()) {
      StartValue();
      Parameter() += '(';
      Push(Frame::Aggregate);
      return true;
    }
    const Frame& frame = Top();
    if (frame.key == Key::Header && frame.kind == Frame::File) {
      Require(frame, {Key::Format, Key::Version});
      text_ += "ISO-10303-21;HEADER;";
      Push(Frame::Header);
    } else if (frame.key == Key::Instances && frame.kind == Frame::File) {
      Require(frame, {Key::Header});
      Push(Frame::Instances);
    } else if (frame.key == Key::Parts && frame.kind == Frame::Instance) {
      parts_.clear();
      Push(Frame::Parts);
    } else if (frame.key == Key::Values) {
      Push(frame.kind == Frame::Object ? Frame::TypedValues : Frame::Values);
    } else {
      FailExpected();
    }
    return true;
  }

  bool end_array() {
    const Frame frame = Top();
    frames_.pop_back();
    if (frame.kind == Frame::Aggregate) Parameter() += ')';
    if (frame.kind == Frame::Header) text_ += "ENDSEC;DATA;";
    if (frame.kind == Frame::Parts && frame.isEmpty) Fail("a record expected");
    return true;
  }

  template <class Exception>
  bool parse_error(std::size_t, const std::string&, const Exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error while ..."
    std::string text = error.what();
    if (const std::size_t id = text.find("] "); id != std::string::npos) text.erase(0, id + 2);
    if (const std::size_t place = text.find(": "); text.compare(0, 11, "parse error") == 0 && place != std::string::npos) {
      text.erase(0, place + 2);
    }
    if (const std::size_t read = text.find("; last read: "); read != std::string::npos) {  // the place says it
      text.erase(read, std::min(text.rfind("; expected "), text.size()) - read);
    }
    Fail("no JSON: " + Printable(text));
  }

 private:
  // A parameter of a record: its Part 21 text, and in "attributes" its name.
  struct NamedText {
    std::string name;
    std::string text;
    Place where = {0, 0};
  };

  static unsigned Bit(Key key) { return 1u << static_cast<unsigned>(key); }
  Frame& Top() { return frames_.back(); }
  void Push(Frame::Kind kind) { frames_.push_back({kind}); }

  [[noreturn]] static void Fail(Place where, const std::string& text) { throw JsonError(where, text); }
  [[noreturn]] void Fail(const std::string& text) const { Fail(isBehindNumber_ ? input_.Before() : input_.Last(), text); }
  [[noreturn]] void FailExpected() const {
    const Frame& frame = frames_.back();
    if (frame.kind == Frame::Header || frame.kind == Frame::Parts) Fail("a record expected: an object");
    if (frame.kind == Frame::Instances) Fail("an instance expected: an object");
    for (const KeyRow& row : kKeys) {
      if (row.key == frame.key) Fail(fmt::format("\"{}\" has {}", row.name, row.value));
    }
    Fail(fmt::format("an object with \"format\": \"{}\" expected", kJsonFormat));
  }
  void Require(const Frame& frame, std::initializer_list<Key> keys) const {
    for (const KeyRow& row : kKeys) {
      const bool isRequired = std::find(keys.begin(), keys.end(), row.key) != keys.end();
      if (isRequired && !frame.Has(row.key)) Fail(fmt::format("\"{}\" expected before", row.name));
    }
  }
  void RequireName(const std::string& name, bool mayBeUserDefined) {
    if (names_.count(name) != 0) return;
    const bool isUserDefined = mayBeUserDefined && !name.empty() && name[0] == '!';
    if (!IsToken(isUserDefined ? name.substr(1) : name, {Token::Ident})) FailExpected();
    if (!isUserDefined) names_.insert(name);
  }

  // Whether a value of an instance may stand here.
  bool TakesValues() {
    switch (Top().kind) {
      case Frame::Attributes:
      case Frame::Values:
      case Frame::Aggregate:
      case Frame::TypedValues:
        return true;
      case Frame::Object:
        return Top().key == Key::Value;
      default:
        return false;
    }
  }

  NamedText& NextParameter() {
    if (used_ == parameters_.size()) parameters_.emplace_back();
    parameters_[used_].text.clear();
    return parameters_[used_++];
  }
  std::string& Parameter() { return parameters_[used_ - 1].text; }

  void StartValue() {
    if (!TakesValues()) FailExpected();
    Frame& frame = Top();
    if (frame.kind == Frame::Values) {
      NextParameter();
    } else if (frame.kind == Frame::Aggregate || frame.kind == Frame::TypedValues) {
      if (!frame.isEmpty) Parameter() += ',';
      frame.isEmpty = false;
    }
  }

  // A value that has this Part 21 text.
  bool Plain(const std::string& part21) {
    StartValue();
    Parameter() += part21;
    isBehindNumber_ = false;
    return true;
  }

  // `value` may be any great one where the number is too long for it.
  bool Integer(const std::string& text, std::int64_t value) {
    isBehindNumber_ = true;
    if (TakesValues()) return Plain(text);
    const bool isNumber = value >= 0 && text[0] != '-';
    switch (Top().key) {
      case Key::Version:
        if (value != kJsonVersion) FailExpected();
        break;
      case Key::Id:
        if (!isNumber || value > kGreatestInstance) FailExpected();
        number_ = value;
        break;
      case Key::Ref:
        if (!isNumber) FailExpected();
        Parameter() += '#' + text;
        break;
      default:
        FailExpected();
    }
    isBehindNumber_ = false;
    return true;
  }

  static std::string Encoded(const std::string& text) { return '\'' + VELMAR::ConvertUtf8ToSTEPString(text) + '\''; }

  void UseSchema(const std::string& name) {
    if (VELMAR::IsBundledSchema(name)) VELMAR::LoadBundledSchema(name);
    if (VELMAR::ExpRuntimeRegistry::GetInstance()->IsSchemaRegistered(name)) {
      types_ = std::make_unique<RecordTypes>(name);
    } else {
      unknownSchema_ = name;
    }
  }

  // What comes next stands on the line that we are on.
  void ReachLine() {
    for (; line_ < input_.Last().line; ++line_) text_ += '\n';
  }

  void StartRecord() {
    used_ = 0;
    type_.clear();
  }

  // Puts the parameters in the order of the attributes that they name.
  void AppendRecord(const Frame& frame, std::string& text) {
    Require(frame, {Key::Type});
    if (!frame.Has(Key::Attributes) && !frame.Has(Key::Values)) Fail("\"attributes\" or \"values\" expected before");
    text += type_;
    text += '(';
    if (frame.Has(Key::Values)) {
      for (std::size_t i = 0; i < used_; ++i) text.append(i == 0 ? "" : ",").append(parameters_[i].text);
    } else {
      const bool isPart = Top().kind == Frame::Parts;
      const RecordType& type = TypeOfNames(isPart);
      const std::size_t first = type.First(isPart);
      const std::vector<RecordType::Attribute>& attributes = type.attributes;
      for (std::size_t i = first; i < attributes.size(); ++i) {
        const std::string* parameter = ParameterOf(attributes[i].name, i - first);
        if (parameter == nullptr) {
          RequireAttributes(type, first);
          Fail(fmt::format("the attribute \"{}\" of {} expected", attributes[i].name, type_));
        }
        text.append(i == first ? "" : ",").append(*parameter);
      }
      if (used_ > attributes.size() - first) RequireAttributes(type, first);
    }
    text += ')';
  }

  const RecordType& TypeOfNames(bool isPart) {
    const bool inHeader = Top().kind == Frame::Header;
    const RecordType* type = inHeader ? headerTypes_.FindInHeader(type_) : types_ == nullptr ? nullptr : types_->Find(type_);
    constexpr const char* kOtherwise = "its values stand in the array \"values\", in their order";
    if (type == nullptr && inHeader) Fail(fmt::format("the header has no record {}: {}", type_, kOtherwise));
    if (type == nullptr && !unknownSchema_.empty()) {
      Fail(fmt::format("the attributes of {} cannot be told by their names: the schema {} is not known", type_,
                       Printable(unknownSchema_)));
    }
    if (type == nullptr && types_ == nullptr) {
      Fail("attributes cannot be told by their names without a \"schema\" before the instances");
    }
    if (type == nullptr) Fail(fmt::format("{} has no entity type {}: {}", types_->Schema(), type_, kOtherwise));
    if (!type->HasDistinctNames(isPart)) Fail(fmt::format("attributes of {} have the same name: {}", type_, kOtherwise));
    return *type;
  }

  // That of a name, which nearly always stands at this index; null where there is none.
  const std::string* ParameterOf(const std::string& name, std::size_t index) const {
    if (index < used_ && parameters_[index].name == name) return &parameters_[index].text;
    for (std::size_t i = 0; i < used_; ++i) {
      if (parameters_[i].name == name) return &parameters_[i].text;
    }
    return nullptr;
  }

  // Fails where a name is no attribute's, or there twice.
  void RequireAttributes(const RecordType& type, std::size_t first) const {
    std::unordered_set<std::string> left;
    for (std::size_t i = first; i < type.attributes.size(); ++i) left.insert(type.attributes[i].name);
    const std::unordered_set<std::string> all = left;
    for (std::size_t i = 0; i < used_; ++i) {
      const NamedText& parameter = parameters_[i];
      if (all.count(parameter.name) == 0) {
        Fail(parameter.where, fmt::format("{} has no attribute \"{}\"", type_, Printable(parameter.name)));
      }
      if (left.erase(parameter.name) == 0) Fail(parameter.where, fmt::format("\"{}\" is there twice", parameter.name));
    }
  }

  void EndInstance(const Frame& frame) {
    Require(frame, {Key::Id});
    const auto index = static_cast<std::size_t>(number_);
    if (index >= isUsed_.size()) isUsed_.resize(index + 1 + index / 2);
    if (isUsed_[index]) Fail(fmt::format("there is an instance with the id {} already", number_));
    isUsed_[index] = true;
    text_ += fmt::format("#{}=", number_);
    if (frame.Has(Key::Parts)) {
      text_.append(1, '(').append(parts_).append(1, ')');
    } else {
      AppendRecord(frame, text_);
    }
    text_ += ';';
  }

  const JsonInput& input_;
  std::vector<Frame> frames_;
  bool isBehindNumber_ = false;  // the parser has taken one character more than the number has
  std::string text_;             // what has been made
  int line_ = 1;                 // on which it ends
  std::unique_ptr<RecordTypes> types_;
  RecordTypes headerTypes_{""};
  std::string unknownSchema_;
  std::unordered_set<std::string> names_;  // of types and items, that are right
  std::vector<bool> isUsed_;               // the instance numbers
  std::int64_t number_ = 0;                // of the instance
  std::string parts_;                      // its records
  std::string type_;                       // of the record
  std::vector<NamedText> parameters_;      // of the record; memory that is used again
  std::size_t used_ = 0;                   // so many of them
};

}  // namespace

std::string ReadJson(std::FILE* file, ReportedProgress* read) {
  JsonInput input(file, read);
  JsonReader reader(input);
  nlohmann::json::sax_parse(JsonBytes(&input), JsonBytes(), &reader);
  return reader.Take();
}

}  // namespace velmar
