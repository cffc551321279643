#include "Anonymisation.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <unordered_map>
#include <utility>

#include "ExpUtilities.h"
#include "Input.h"
#include "Part21Source.h"
#include "Wording.h"

namespace velmar {

namespace {

constexpr const char* kTimeStamp = "1970-01-01T00:00:00";
constexpr const char* kBegin = "ISO-10303-21;";
constexpr const char* kEnd = "END-ISO-10303-21;";

// What the application protocols and their recommended practices prescribe, and readers look at; in upper case, sorted.
const std::set<std::string>& PublicTexts() {
  static const std::set<std::string> kTexts = {
      // applications, protocols and their contexts
      "ASSEMBLY", "AP242_MANAGED_MODEL_BASED_3D_ENGINEERING", "AUTOMOTIVE_DESIGN", "CONFIG_CONTROL_DESIGN",
      "CONFIGURATION CONTROLLED 3D DESIGNS OF MECHANICAL PARTS AND ASSEMBLIES",
      "CORE DATA FOR AUTOMOTIVE MECHANICAL DESIGN PROCESSES", "DESIGN", "DETAIL", "DRAFT INTERNATIONAL STANDARD",
      "INTERNATIONAL STANDARD", "MANAGED MODEL BASED 3D ENGINEERING", "MECHANICAL", "PART", "PART DEFINITION",
      // units and tolerances
      "CENTIMETRE", "DEGREE", "DEGREES", "DISTANCE_ACCURACY_VALUE", "FOOT", "INCH", "MILLIMETRE", "POUND",
      // colours and curve fonts
      "BLACK", "BLUE", "CYAN", "GREEN", "MAGENTA", "RED", "WHITE", "YELLOW",
      "CHAIN", "CHAIN DOUBLE DASH", "CONTINUOUS", "DASHED", "DOTTED",
      // roles and states
      "APPROVED", "CLASSIFICATION_DATE", "CLASSIFICATION_OFFICER", "CREATION_DATE", "CREATOR", "DESIGN_OWNER",
      "DESIGN_SUPPLIER", "NOT_YET_APPROVED", "UNCLASSIFIED",
      // validation properties
      "CENTRE POINT", "GEOMETRIC VALIDATION PROPERTY", "SURFACE AREA MEASURE", "VOLUME MEASURE",
  };
  return kTexts;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
bool IsBlankCharacter(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
bool EndsLine(char c) { return c == '\r' || c == '\n'; }

char Masked(char c) {
  if (IsDigit(c)) return '0';
  if (c >= 'A' && c <= 'Z') return 'X';
  if ((c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80) return 'x';
  return c;
}

class Anonymiser {
 public:
  explicit Anonymiser(std::string text) : text_(std::move(text)) { out_.reserve(text_.size()); }

  Anonymised Run(const Progress& progress) {
    ReportedProgress passed(progress, static_cast<double>(text_.size()));
    if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0) Copy(3);
    PassTextBefore();
    while (at_ < text_.size() && !isAtEnd_) {
      Take();
      passed(static_cast<double>(at_));
    }
    PassTextBehind();
    result_.texts = texts_.size();
    result_.text.push_back(std::move(out_));
    return std::move(result_);
  }

 private:
  enum class Section { None, Header, Data, Anchor, Reference, Signature };
  enum class Before { Mark, Word };  // what stands before: a mark of punctuation; a word, number or string

  bool Follows(const char* text) const { return text_.compare(at_, std::char_traits<char>::length(text), text) == 0; }
  char At(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }

  void Copy(std::size_t length) {
    out_.append(text_, at_, length);
    at_ = std::min(text_.size(), at_ + length);
  }
  void Mask(std::size_t end) {
    for (; at_ < end; ++at_) out_ += Masked(text_[at_]);
  }
  void KeepLines(std::size_t begin, std::size_t end) {
    for (; begin < end; ++begin) {
      if (EndsLine(text_[begin])) out_ += text_[begin];
    }
  }

  std::size_t BehindBlanks(std::size_t position) const {
    while (position < text_.size() && IsBlankCharacter(text_[position])) ++position;
    return position;
  }
  // Behind blanks and comments.
  std::size_t NextToken(std::size_t position) const {
    for (;;) {
      position = BehindBlanks(position);
      if (text_.compare(position, 2, "/*") != 0) return position;
      const std::size_t end = text_.find("*/", position + 2);
      if (end == std::string::npos) return text_.size();
      position = end + 2;
    }
  }

  void PassTextBefore() {
    const std::size_t first = NextToken(at_);
    std::size_t begin = text_.find(kBegin, at_);
    if (begin != std::string::npos && begin >= 4 && text_.compare(begin - 4, 4, "END-") == 0) begin = std::string::npos;
    if (begin == std::string::npos || begin <= first) return;
    KeepLines(at_, begin);
    at_ = begin;
    result_.hadTextBefore = true;
  }

  void PassTextBehind() {
    const std::size_t begin = BehindBlanks(at_);
    Copy(begin - at_);
    if (at_ == text_.size()) return;
    KeepLines(at_, text_.size());
    at_ = text_.size();
    result_.hadTextBehind = true;
  }

  void Take() {
    const char c = text_[at_];
    if (IsBlankCharacter(c)) {
      Copy(1);
    } else if (c == '\'') {
      TakeString();
    } else if (Follows("/*")) {
      TakeComment();
    } else if (Follows("//")) {  // not of the standard, but what stands there is meant for people
      std::size_t end = at_;
      while (end < text_.size() && !EndsLine(text_[end])) ++end;
      Mask(end);
      ++result_.comments;
    } else if (c == '"') {
      TakeBinary();
    } else if (c == '<' && (section_ == Section::Anchor || section_ == Section::Reference)) {
      TakeTarget();
    } else if (c == '#' || IsDigit(c)) {
      TakeNumber();
    } else if (Follows(kBegin) || Follows(kEnd)) {
      isAtEnd_ = c == 'E';
      Copy(std::char_traits<char>::length(isAtEnd_ ? kEnd : kBegin));
      EndStatement();
    } else if (IsLetter(c)) {
      TakeWord();
    } else if (static_cast<unsigned char>(c) >= 0x80) {
      Mask(at_ + 1);
    } else {
      TakeMark();
    }
  }

  void TakeMark() {
    const char c = text_[at_];
    if (c == '(') ++depth_;
    if (c == ')') --depth_;
    if (c == ',' && depth_ == 1) ++parameter_;
    before_ = Before::Mark;
    mark_ = c;
    Copy(1);
    if (c == ';' && IsNewStatement(at_)) EndStatement();
  }

  void EndStatement() {
    hasString_ = false;
    depth_ = 0;
    parameter_ = 0;
    record_.clear();
    before_ = Before::Mark;
    mark_ = ';';
  }

  // Whether a semicolon before this really ends something, and is not a part of a text.
  bool IsNewStatement(std::size_t position) const {
    return position >= text_.size() || EndsLine(text_[position]) || Begins(position) || !hasString_;
  }
  // Whether an instance begins here, behind blanks, or a section ends.
  bool Begins(std::size_t position) const {
    position = BehindBlanks(position);
    if (text_.compare(position, 6, "ENDSEC") == 0 || text_.compare(position, 7, "END-ISO") == 0) return true;
    if (At(position) != '#') return false;
    const std::size_t first = ++position;
    while (IsDigit(At(position))) ++position;
    return position > first && At(BehindBlanks(position)) == '=';
  }

  // A string that runs into the next instance has no end: from the first string of the statement on it cannot be said what
  // stands within strings and what between them.
  void TakeString() {
    if (!hasString_) {
      hasString_ = true;
      firstString_ = at_;
      firstStringOut_ = out_.size();
    }
    std::size_t end = at_ + 1;
    std::size_t next = 0;  // behind the blanks that were looked at last
    bool isWhole = false;  // in this line
    for (; end < text_.size(); ++end) {
      const char c = text_[end];
      if (c == '\'') {
        if (At(end + 1) != '\'') break;
        ++end;
      } else if ((EndsLine(c) || c == ';') && end >= next) {
        isWhole = isWhole && c == ';';
        next = BehindBlanks(end + 1);
        if (!Begins(next)) continue;
        if (!isWhole && c == ';') isWhole = EndsInLine(end + 1);
        if (isWhole && c == ';') continue;
        MaskStatement(c == ';' ? end + 1 : end);
        return;
      }
    }
    if (end >= text_.size()) {
      MaskStatement(text_.size());
      return;
    }
    const std::string content = text_.substr(at_ + 1, end - at_ - 1);
    out_ += '\'' + ReplacementOf(content) + '\'';
    at_ = end + 1;
    before_ = Before::Word;
  }

  // Whether a string that goes on here ends in this line as one does: a comma or parenthesis follows.
  bool EndsInLine(std::size_t position) const {
    for (; position < text_.size() && !EndsLine(text_[position]); ++position) {
      if (text_[position] != '\'') continue;
      if (At(position + 1) == '\'') {
        ++position;
        continue;
      }
      const char next = At(BehindBlanks(position + 1));
      return next == ',' || next == ')';
    }
    return false;
  }

  void MaskStatement(std::size_t end) {
    at_ = firstString_;
    out_.resize(firstStringOut_);
    Mask(end);
    ++result_.masked;
    EndStatement();
  }

  std::string ReplacementOf(const std::string& content) {
    if (IsBlank(content) || (section_ != Section::Header && IsPublicText(content)) || schemas_.count(content) != 0) return content;
    if (section_ == Section::Header) {
      if (record_ == "FILE_SCHEMA") {
        schemas_.insert(content);
        return content;
      }
      if (record_ == "FILE_DESCRIPTION" && parameter_ == 1) return content;
      if (record_ == "FILE_NAME" && parameter_ == 1) {
        ++result_.strings;
        return kTimeStamp;
      }
    }
    ++result_.strings;
    std::string replacement = Named(content);
    for (const char c : content) {
      if (EndsLine(c)) replacement += c;
    }
    return replacement;
  }

  std::string Named(const std::string& content) {
    return "text_" + std::to_string(texts_.emplace(content, texts_.size() + 1).first->second);
  }

  void TakeComment() {
    const std::size_t end = text_.find("*/", at_ + 2);
    ++result_.comments;
    if (end == std::string::npos) {
      Mask(text_.size());
      ++result_.masked;
      return;
    }
    out_ += "/*";
    const std::size_t before = out_.size();
    KeepLines(at_ + 2, end);
    out_ += out_.size() == before ? " */" : "*/";
    at_ = end + 2;
  }

  void TakeBinary() {
    std::size_t end = at_ + 1;
    while (std::isxdigit(static_cast<unsigned char>(At(end))) != 0) ++end;
    if (At(end) != '"') {
      TakeMark();
      return;
    }
    Copy(std::min<std::size_t>(2, end - at_));
    for (; at_ < end; ++at_) out_ += text_[at_] >= 'a' ? 'a' : '0';  // small letters are a mistake
    Copy(1);
    before_ = Before::Word;
  }

  // <name> of an anchor, <file#name> of a reference.
  void TakeTarget() {
    std::size_t end = at_;
    while (end < text_.size() && text_[end] != '>' && !EndsLine(text_[end])) ++end;
    if (At(end) != '>') {
      Mask(end);
      ++result_.masked;
      return;
    }
    const std::string content = text_.substr(at_ + 1, end - at_ - 1);
    const bool hasSlashes = content.find("//") != std::string::npos;  // some readers take them for a comment
    out_ += (hasSlashes ? "<//" : "<") + Named(content) + ">";
    at_ = end + 1;
    ++result_.strings;
    before_ = Before::Word;
  }

  // Also an instance name. A number that follows a word is a part of a text.
  void TakeNumber() {
    std::size_t end = at_ + 1;
    while (IsDigit(At(end))) ++end;
    if (text_[at_] != '#') {
      if (At(end) == '.') ++end;
      while (IsDigit(At(end))) ++end;
      std::size_t exponent = end + 1;
      if (At(exponent) == '+' || At(exponent) == '-') ++exponent;
      if ((At(end) == 'E' || At(end) == 'e') && IsDigit(At(exponent))) end = exponent;
      while (IsDigit(At(end))) ++end;
    }
    if (before_ == Before::Word || section_ == Section::Signature) {
      Mask(end);
    } else {
      Copy(end - at_);
    }
    before_ = Before::Word;
  }

  void TakeWord() {
    std::size_t end = at_;
    while (IsLetter(At(end)) || IsDigit(At(end))) ++end;
    const std::string word = text_.substr(at_, end - at_);
    const char next = At(NextToken(end));
    if (mark_ == '!' && before_ == Before::Mark) {
      out_ += "USER_NAME_" + std::to_string(names_.emplace(word, names_.size() + 1).first->second);
      at_ = end;
    } else if (IsKeyword(word, next)) {
      Copy(word.size());
      before_ = Before::Mark;
      mark_ = '/';
      return;
    } else if (IsName(word, next)) {
      if (depth_ == 0) record_ = word;
      if (mark_ == '=') types_.insert(word);
      Copy(word.size());
    } else {
      const bool isItem = mark_ == '.' || At(end) == '.' || word.size() == 1;
      const bool stays = (before_ == Before::Mark && isItem) || IsPartOfNumber(word);
      if (stays && section_ != Section::Signature) {  // an item, or so little that it tells nothing
        Copy(word.size());
      } else {
        Mask(end);
        ++result_.masked;
      }
    }
    before_ = Before::Word;
  }

  // As in 1.D05.
  bool IsPartOfNumber(const std::string& word) const {
    constexpr std::size_t kLongest = 4;
    const bool isBehindOne = at_ > 0 && (IsDigit(text_[at_ - 1]) || text_[at_ - 1] == '.');
    return isBehindOne && word.size() <= kLongest && std::all_of(word.begin() + 1, word.end(), IsDigit);
  }

  bool IsKeyword(const std::string& word, char next) {
    const std::string upper = VELMAR::ToUpperString(word);
    if (upper == "SCOPE" || upper == "ENDSCOPE") return true;
    constexpr std::pair<const char*, Section> kSections[] = {
        {"HEADER", Section::Header},       {"DATA", Section::Data},           {"ENDSEC", Section::None},
        {"ANCHOR", Section::Anchor},       {"REFERENCE", Section::Reference}, {"SIGNATURE", Section::Signature},
    };
    for (const auto& [name, section] : kSections) {
      if (upper != name || (next != ';' && !(section == Section::Data && next == '(' && depth_ == 0))) continue;
      section_ = section;
      return true;
    }
    return false;
  }

  // Of a record or a type, where one may stand; alone at the beginning of a statement if it is known from other places.
  bool IsName(const std::string& word, char next) const {
    if (next != '(' || before_ != Before::Mark || section_ == Section::Signature) return false;
    if (mark_ == ';') return section_ == Section::Header || types_.count(word) != 0;
    return mark_ == '=' || mark_ == '(' || mark_ == ')' || mark_ == ',' || mark_ == '/';
  }

  const std::string text_;
  std::size_t at_ = 0;
  std::string out_;
  Anonymised result_;
  bool isAtEnd_ = false;

  Section section_ = Section::None;
  Before before_ = Before::Mark;
  char mark_ = ';';
  int depth_ = 0;
  int parameter_ = 0;   // of the record of the header
  std::string record_;  // likewise
  bool hasString_ = false;  // in this statement
  std::size_t firstString_ = 0;
  std::size_t firstStringOut_ = 0;

  std::unordered_map<std::string, std::size_t> texts_;
  std::unordered_map<std::string, std::size_t> names_;
  std::set<std::string> schemas_;
  std::set<std::string> types_;
};

}  // namespace

Anonymised Anonymise(const std::string& path, const Progress& progress) {
  ReportedProgress all(progress);
  const Part21Source source(path, all.Part(0, Part21Source::kShareOfJson));
  return Anonymiser(ContentsOf(source.Path())).Run(all.Part(source.Share(), 1));
}

bool IsPublicText(const std::string& text) { return PublicTexts().count(VELMAR::ToUpperString(text)) != 0; }

}  // namespace velmar
