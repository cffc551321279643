#include "Lexer.h"

#include <array>
#include <unordered_map>

namespace VELMAR::Express {
namespace {

struct Word {
  const char* text;
  TokenKind kind;
};

// ISO 10303-11:2004, table 1 (reserved words) with table 2 (declared names), which are Builtin.
constexpr Word kWords[] = {
    {"ABS", TokenKind::Builtin},
    {"ABSTRACT", TokenKind::Abstract},
    {"ACOS", TokenKind::Builtin},
    {"AGGREGATE", TokenKind::Aggregate},
    {"ALIAS", TokenKind::Alias},
    {"AND", TokenKind::And},
    {"ANDOR", TokenKind::Andor},
    {"ARRAY", TokenKind::Array},
    {"AS", TokenKind::As},
    {"ASIN", TokenKind::Builtin},
    {"ATAN", TokenKind::Builtin},
    {"BAG", TokenKind::Bag},
    {"BASED_ON", TokenKind::BasedOn},
    {"BEGIN", TokenKind::Begin},
    {"BINARY", TokenKind::Binary},
    {"BLENGTH", TokenKind::Builtin},
    {"BOOLEAN", TokenKind::Boolean},
    {"BY", TokenKind::By},
    {"CASE", TokenKind::Case},
    {"CONSTANT", TokenKind::Constant},
    {"CONST_E", TokenKind::Builtin},
    {"COS", TokenKind::Builtin},
    {"DERIVE", TokenKind::Derive},
    {"DIV", TokenKind::Div},
    {"ELSE", TokenKind::Else},
    {"END", TokenKind::End},
    {"END_ALIAS", TokenKind::EndAlias},
    {"END_CASE", TokenKind::EndCase},
    {"END_CONSTANT", TokenKind::EndConstant},
    {"END_ENTITY", TokenKind::EndEntity},
    {"END_FUNCTION", TokenKind::EndFunction},
    {"END_IF", TokenKind::EndIf},
    {"END_LOCAL", TokenKind::EndLocal},
    {"END_PROCEDURE", TokenKind::EndProcedure},
    {"END_REPEAT", TokenKind::EndRepeat},
    {"END_RULE", TokenKind::EndRule},
    {"END_SCHEMA", TokenKind::EndSchema},
    {"END_SUBTYPE_CONSTRAINT", TokenKind::EndSubtypeConstraint},
    {"END_TYPE", TokenKind::EndType},
    {"ENTITY", TokenKind::Entity},
    {"ENUMERATION", TokenKind::Enumeration},
    {"ESCAPE", TokenKind::Escape},
    {"EXISTS", TokenKind::Builtin},
    {"EXP", TokenKind::Builtin},
    {"EXTENSIBLE", TokenKind::Extensible},
    {"FALSE", TokenKind::Builtin},
    {"FIXED", TokenKind::Fixed},
    {"FOR", TokenKind::For},
    {"FORMAT", TokenKind::Builtin},
    {"FROM", TokenKind::From},
    {"FUNCTION", TokenKind::Function},
    {"GENERIC", TokenKind::Generic},
    {"GENERIC_ENTITY", TokenKind::GenericEntity},
    {"HIBOUND", TokenKind::Builtin},
    {"HIINDEX", TokenKind::Builtin},
    {"IF", TokenKind::If},
    {"IN", TokenKind::In},
    {"INSERT", TokenKind::Builtin},
    {"INTEGER", TokenKind::Integer},
    {"INVERSE", TokenKind::Inverse},
    {"LENGTH", TokenKind::Builtin},
    {"LIKE", TokenKind::Like},
    {"LIST", TokenKind::List},
    {"LOBOUND", TokenKind::Builtin},
    {"LOCAL", TokenKind::Local},
    {"LOG", TokenKind::Builtin},
    {"LOG10", TokenKind::Builtin},
    {"LOG2", TokenKind::Builtin},
    {"LOGICAL", TokenKind::Logical},
    {"LOINDEX", TokenKind::Builtin},
    {"MOD", TokenKind::Mod},
    {"NOT", TokenKind::Not},
    {"NUMBER", TokenKind::Number},
    {"NVL", TokenKind::Builtin},
    {"ODD", TokenKind::Builtin},
    {"OF", TokenKind::Of},
    {"ONEOF", TokenKind::Oneof},
    {"OPTIONAL", TokenKind::Optional},
    {"OR", TokenKind::Or},
    {"OTHERWISE", TokenKind::Otherwise},
    {"PI", TokenKind::Builtin},
    {"PROCEDURE", TokenKind::Procedure},
    {"QUERY", TokenKind::Query},
    {"REAL", TokenKind::Real},
    {"REFERENCE", TokenKind::Reference},
    {"REMOVE", TokenKind::Builtin},
    {"RENAMED", TokenKind::Renamed},
    {"REPEAT", TokenKind::Repeat},
    {"RETURN", TokenKind::Return},
    {"ROLESOF", TokenKind::Builtin},
    {"RULE", TokenKind::Rule},
    {"SCHEMA", TokenKind::Schema},
    {"SELECT", TokenKind::Select},
    {"SELF", TokenKind::Self},
    {"SET", TokenKind::Set},
    {"SIN", TokenKind::Builtin},
    {"SIZEOF", TokenKind::Builtin},
    {"SKIP", TokenKind::Skip},
    {"SQRT", TokenKind::Builtin},
    {"STRING", TokenKind::String},
    {"SUBTYPE", TokenKind::Subtype},
    {"SUBTYPE_CONSTRAINT", TokenKind::SubtypeConstraint},
    {"SUPERTYPE", TokenKind::Supertype},
    {"TAN", TokenKind::Builtin},
    {"THEN", TokenKind::Then},
    {"TO", TokenKind::To},
    {"TOTAL_OVER", TokenKind::TotalOver},
    {"TRUE", TokenKind::Builtin},
    {"TYPE", TokenKind::Type},
    {"TYPEOF", TokenKind::Builtin},
    {"UNIQUE", TokenKind::Unique},
    {"UNKNOWN", TokenKind::Builtin},
    {"UNTIL", TokenKind::Until},
    {"USE", TokenKind::Use},
    {"USEDIN", TokenKind::Builtin},
    {"VALUE", TokenKind::Builtin},
    {"VALUE_IN", TokenKind::Builtin},
    {"VALUE_UNIQUE", TokenKind::Builtin},
    {"VAR", TokenKind::Var},
    {"WHERE", TokenKind::Where},
    {"WHILE", TokenKind::While},
    {"WITH", TokenKind::With},
    {"XOR", TokenKind::Xor},
};

struct Symbol {
  std::string_view text;
  TokenKind kind;
};

// Longer symbols before their beginnings.
constexpr Symbol kSymbols[] = {
    {":<>:", TokenKind::InstanceNotEqual},
    {":=:", TokenKind::InstanceEqual},
    {":=", TokenKind::Assign},
    {"<=", TokenKind::LessEqual},
    {"<>", TokenKind::NotEqual},
    {"<*", TokenKind::LessStar},
    {">=", TokenKind::GreaterEqual},
    {"||", TokenKind::BarBar},
    {"**", TokenKind::Power},
    {".", TokenKind::Dot},
    {",", TokenKind::Comma},
    {";", TokenKind::Semicolon},
    {":", TokenKind::Colon},
    {"*", TokenKind::Times},
    {"+", TokenKind::Plus},
    {"-", TokenKind::Minus},
    {"=", TokenKind::Equal},
    {"\\", TokenKind::Backslash},
    {"/", TokenKind::Slash},
    {"<", TokenKind::Less},
    {">", TokenKind::Greater},
    {"[", TokenKind::LeftBracket},
    {"]", TokenKind::RightBracket},
    {"{", TokenKind::LeftBrace},
    {"}", TokenKind::RightBrace},
    {"|", TokenKind::Bar},
    {"(", TokenKind::LeftParenthesis},
    {")", TokenKind::RightParenthesis},
    {"?", TokenKind::Question},
};

constexpr bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool IsHexDigit(char c) { return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }
constexpr bool IsWordPart(char c) { return IsLetter(c) || IsDigit(c) || c == '_'; }
constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

constexpr std::size_t kLongestWord = sizeof "END_SUBTYPE_CONSTRAINT" - 1;

TokenKind KindOfWord(std::string_view word) {
  static const std::unordered_map<std::string_view, TokenKind> words = [] {
    std::unordered_map<std::string_view, TokenKind> result;
    for (const Word& row : kWords) result.emplace(row.text, row.kind);
    return result;
  }();
  if (word.size() > kLongestWord) return TokenKind::Identifier;
  char upper[kLongestWord];
  for (std::size_t i = 0; i < word.size(); ++i) {
    upper[i] = word[i] >= 'a' && word[i] <= 'z' ? static_cast<char>(word[i] - 'a' + 'A') : word[i];
  }
  const auto found = words.find(std::string_view(upper, word.size()));
  return found == words.end() ? TokenKind::Identifier : found->second;
}

class Lexer {
 public:
  Lexer(const SourceFile& file, Diagnostics& diagnostics)
      : file_(file), diagnostics_(diagnostics), text_(file.Text()) {}

  std::vector<Token> Run() {
    tokens_.reserve(text_.size() / 6);
    while (at_ < text_.size()) Next();
    Add(TokenKind::EndOfFile, text_.size());
    return std::move(tokens_);
  }

 private:
  // The character `ahead` places on; a blank behind the end of the text.
  char Peek(std::size_t ahead = 0) const { return at_ + ahead < text_.size() ? text_[at_ + ahead] : ' '; }

  void Next() {
    const char c = text_[at_];
    if (IsSpace(c)) {
      ++at_;
    } else if (IsLetter(c)) {
      Word();
    } else if (IsDigit(c)) {
      Number();
    } else if (c == '(' && Peek(1) == '*') {
      EmbeddedRemark();
    } else if (c == '-' && Peek(1) == '-') {
      at_ = std::min(text_.find('\n', at_), text_.size());
    } else if (c == '\'') {
      SimpleString();
    } else if (c == '"') {
      EncodedString();
    } else if (c == '%') {
      Binary();
    } else {
      SymbolOrNothing();
    }
  }

  // simple_id = letter { letter | digit | '_' } .
  void Word() {
    const std::size_t start = at_;
    while (at_ < text_.size() && IsWordPart(text_[at_])) ++at_;
    Add(KindOfWord(text_.substr(start, at_ - start)), start);
    // A letter outside the language's alphabet within a word: one message, and the word goes on.
    if (at_ < text_.size() && static_cast<unsigned char>(text_[at_]) >= 0x80) {
      const std::size_t bad = at_;
      while (at_ < text_.size() && (static_cast<unsigned char>(text_[at_]) >= 0x80 || IsWordPart(text_[at_])))
        ++at_;
      const Location where = Place(bad, CharacterLength(bad));
      diagnostics_.Report(Code::UnexpectedCharacter, where,
                          "character '" + std::string(file_.Text(where.offset, where.length)) +
                              "' in a name: names are made of the letters a to z, digits and '_'");
    }
  }

  // real_literal = integer_literal | ( digits '.' [ digits ] [ 'e' [ sign ] digits ] ) .
  void Number() {
    const std::size_t start = at_;
    while (IsDigit(Peek())) ++at_;
    TokenKind kind = TokenKind::IntegerLiteral;
    if (Peek() == '.') {
      kind = TokenKind::RealLiteral;
      ++at_;
      while (IsDigit(Peek())) ++at_;
      if (Peek() == 'e' || Peek() == 'E') Exponent(start);
    }
    Add(kind, start);
  }

  void Exponent(std::size_t start) {
    ++at_;
    if (Peek() == '+' || Peek() == '-') ++at_;
    if (!IsDigit(Peek()))
      Report(Code::BadReal, start, at_ - start, "the exponent of this real number has no digits");
    while (IsDigit(Peek())) ++at_;
  }

  // embedded_remark = '(*' { not_paren_star | embedded_remark ... } '*)' .
  void EmbeddedRemark() {
    const std::size_t start = at_;
    std::size_t depth = 0;
    for (;;) {
      at_ = text_.find_first_of("(*", at_);
      if (at_ == std::string_view::npos) {
        at_ = text_.size();
        Report(Code::UnterminatedRemark, start, 2, "this remark is never closed: '*)' is missing");
        return;
      }
      if (text_[at_] == '(' && Peek(1) == '*') {
        ++depth;
        at_ += 2;
      } else if (text_[at_] == '*' && Peek(1) == ')') {
        at_ += 2;
        if (--depth == 0) return;
      } else {
        ++at_;
      }
    }
  }

  // simple_string_literal = \q { ( \q \q ) | not_quote | \s | \o } \q .
  void SimpleString() {
    const std::size_t start = at_++;
    for (;;) {
      if (at_ >= text_.size() || text_[at_] == '\n') {
        Report(Code::UnterminatedString, start, 1, "this string is not closed on its line");
        LeaveLineEnd(start);
        break;
      }
      if (text_[at_++] != '\'') continue;
      if (Peek() != '\'') break;
      ++at_;
    }
    Add(TokenKind::StringLiteral, start);
  }

  // A ';' at the end of the line most likely ends the statement, not the string.
  void LeaveLineEnd(std::size_t start) {
    std::size_t end = at_;
    while (end > start && IsSpace(text_[end - 1])) --end;
    if (end > start + 1 && text_[end - 1] == ';') at_ = end - 1;
  }

  // encoded_string_literal = '"' { encoded_character } '"' .
  void EncodedString() {
    const std::size_t start = at_++;
    while (at_ < text_.size() && IsHexDigit(text_[at_])) ++at_;
    const std::size_t digits = at_ - start - 1;
    if (Peek() != '"') {
      while (at_ < text_.size() && text_[at_] != '"' && text_[at_] != '\n') ++at_;
      if (Peek() == '"') {
        ++at_;
        Report(Code::BadEncodedString, start, at_ - start, "an encoded string holds hexadecimal digits only");
      } else {
        Report(Code::UnterminatedString, start, 1, "this encoded string is not closed on its line");
        LeaveLineEnd(start);
      }
    } else {
      ++at_;
      if (digits % 8 != 0) {
        Report(Code::BadEncodedString, start, at_ - start,
               "an encoded string holds groups of eight hexadecimal digits, not " + std::to_string(digits) +
                   " digits");
      }
    }
    Add(TokenKind::EncodedStringLiteral, start);
  }

  // binary_literal = '%' bit { bit } .
  void Binary() {
    const std::size_t start = at_++;
    while (Peek() == '0' || Peek() == '1') ++at_;
    if (at_ == start + 1 || IsWordPart(Peek())) {
      while (at_ < text_.size() && IsWordPart(text_[at_])) ++at_;
      Report(Code::BadBinary, start, at_ - start, "a binary number is '%' followed by the digits 0 and 1");
    }
    Add(TokenKind::BinaryLiteral, start);
  }

  void SymbolOrNothing() {
    if (text_[at_] == '*' && Peek(1) == ')') {
      Report(Code::StrayRemarkEnd, at_, 2, "'*)' without a remark to close");
      at_ += 2;
      return;
    }
    for (const Symbol& symbol : kSymbols) {
      if (text_.compare(at_, symbol.text.size(), symbol.text) != 0) continue;
      const std::size_t start = at_;
      at_ += symbol.text.size();
      Add(symbol.kind, start);
      return;
    }
    UnexpectedCharacters();
  }

  void UnexpectedCharacters() {
    const std::size_t start = at_;
    const auto isUnexpected = [&] {
      const char c = text_[at_];
      return static_cast<unsigned char>(c) >= 0x7F || (c < ' ' && !IsSpace(c)) ||
             std::string_view("!#$&@^_`~").find(c) != std::string_view::npos;
    };
    while (at_ < text_.size() && isUnexpected()) ++at_;
    const std::size_t length = CharacterLength(start);
    const unsigned char first = static_cast<unsigned char>(text_[start]);
    std::string shown = "character '" + std::string(text_.substr(start, length)) + "'";
    if (first < ' ' || first == 0x7F || (first >= 0x80 && length == 1)) {
      constexpr char digits[] = "0123456789ABCDEF";
      shown = std::string("byte 0x") + digits[first >> 4] + digits[first & 15];
    }
    Report(Code::UnexpectedCharacter, start, length, "unexpected " + shown);
  }

  // The bytes of the UTF-8 character at `at`; 1 where it is none.
  std::size_t CharacterLength(std::size_t at) const {
    std::size_t length = 1;
    if (static_cast<unsigned char>(text_[at]) < 0xC0) return length;
    while (length < 4 && at + length < text_.size() &&
           (static_cast<unsigned char>(text_[at + length]) & 0xC0) == 0x80) {
      ++length;
    }
    return length;
  }

  Location Place(std::size_t offset, std::size_t length) const {
    return {&file_, static_cast<std::uint32_t>(offset), static_cast<std::uint32_t>(length)};
  }

  void Report(Code code, std::size_t offset, std::size_t length, const std::string& text) {
    diagnostics_.Report(code, Place(offset, length), text);
  }

  void Add(TokenKind kind, std::size_t start) {
    tokens_.push_back({kind, static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(at_ - start)});
  }

  const SourceFile& file_;
  Diagnostics& diagnostics_;
  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<Token> tokens_;
};

}  // namespace

std::string DescribeKind(TokenKind kind) {
  switch (kind) {
    case TokenKind::EndOfFile:
      return "the end of the file";
    case TokenKind::Identifier:
      return "a name";
    case TokenKind::Builtin:
      return "a name of the language";
    case TokenKind::IntegerLiteral:
      return "an integer";
    case TokenKind::RealLiteral:
      return "a real number";
    case TokenKind::StringLiteral:
      return "a string";
    case TokenKind::EncodedStringLiteral:
      return "an encoded string";
    case TokenKind::BinaryLiteral:
      return "a binary number";
    default:
      break;
  }
  for (const Symbol& symbol : kSymbols) {
    if (symbol.kind == kind) return "'" + std::string(symbol.text) + "'";
  }
  for (const Word& word : kWords) {
    if (word.kind == kind) return word.text;
  }
  return "a token";
}

std::vector<Token> Tokenize(const SourceFile& file, Diagnostics& diagnostics) {
  return Lexer(file, diagnostics).Run();
}

}  // namespace VELMAR::Express
