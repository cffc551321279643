#include "Parser.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <list>
#include <set>
#include <system_error>
#include <typeinfo>
#include <utility>

#include "AddOwned.h"
#include "ExpLogging.h"
#include "ExpSchemaLibrary.h"
#include "KeptValues.h"
#include "NumberSet.h"

namespace VELMAR {

// ---------------------------------------------------------------------------------------------------------- Errors

namespace {

constexpr const char* kSyntaxErrors[] = {
    /*  0 */ "EOF expected",
    /*  1 */ "INTEGER expected",
    /*  2 */ "REAL expected",
    /*  3 */ "ENTITYINSTANCENAME expected",
    /*  4 */ "STRING expected",
    /*  5 */ "BINARY expected",
    /*  6 */ "IDENT expected",
    /*  7 */ "HEADER expected",
    /*  8 */ "DATA expected",
    /*  9 */ "ENDSEC expected",
    /* 10 */ "\"ISO-10303-21;\" expected",
    /* 11 */ "\"END-ISO-10303-21;\" expected",
    /* 12 */ "\";\" expected",
    /* 13 */ "\"!\" expected",
    /* 14 */ "\",\" expected",
    /* 15 */ "\"(\" expected",
    /* 16 */ "\")\" expected",
    /* 17 */ "\"$\" expected",
    /* 18 */ "\".\" expected",
    /* 19 */ "\"*\" expected",
    /* 20 */ "\"=\" expected",
    /* 21 */ "\"&SCOPE\" expected",
    /* 22 */ "\"ENDSCOPE\" expected",
    /* 23 */ "\"/\" expected",
    /* 24 */ "??? expected",
    /* 25 */ "this symbol not expected in headerEntity",
    /* 26 */ "invalid keyword",
    /* 27 */ "invalid parameterArg",
    /* 28 */ "invalid untypedParameterArg",
    /* 29 */ "invalid parameterExpAggr",
    /* 30 */ "invalid untypedParameterExpAggr",
    /* 31 */ "invalid parameterExpAggrSelect",
    /* 32 */ "invalid untypedParameterExpAggrSelect",
    /* 33 */ "invalid parameter",
    /* 34 */ "invalid untypedParameter",
    /* 35 */ "invalid entityInstance",
    /* 36 */ "this symbol not expected in entityInstance",
};

enum SyntaxError {
  kNotInHeaderEntity = 25,
  kInvalidKeyword = 26,
  kInvalidParameter = 27,         // and every second number from here on, by family
  kInvalidUntypedParameter = 28,  // the same
  kInvalidEntityInstance = 35,
  kNotInEntityInstance = 36,
};

void WritePlaced(int line, int col, const std::string& message) {
  ExpLogger::WriteLine("-- line " + std::to_string(line) + " col " + std::to_string(col) + ": " + message,
                       ExpLogMessage);
}

std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; *text != L'\0'; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

}  // namespace

Errors::Errors() : count(0) {}

void Errors::SynErr(int line, int col, int n) {
  constexpr int kMessages = sizeof kSyntaxErrors / sizeof *kSyntaxErrors;
  WritePlaced(line, col, n >= 0 && n < kMessages ? kSyntaxErrors[n] : "error " + std::to_string(n));
  ++count;
}

void Errors::Error(int line, int col, const wchar_t* s) {
  WritePlaced(line, col, Narrow(s));
  ++count;
}

void Errors::Warning(int line, int col, const wchar_t* s) { WritePlaced(line, col, Narrow(s)); }
void Errors::Warning(const wchar_t* s) { ExpLogger::WriteLine(Narrow(s), ExpLogMessage); }

void Errors::Exception(const wchar_t* s) {
  ExpLogger::WriteLine(Narrow(s), ExpLogMessage);
  std::exit(1);
}

// -------------------------------------------------------------------------------------------------- Parser: tokens

namespace {

constexpr int kMinErrDist = 2;

constexpr unsigned int Bits() { return 0; }
template <class... Kinds>
constexpr unsigned int Bits(int kind, Kinds... kinds) {
  return 1u << kind | Bits(kinds...);
}

enum StartSet { kEndsInstance, kStartsParameter, kStartsUntypedParameter };

constexpr unsigned int kStartSets[] = {
    Bits(Token::EoF, Token::Semicolon),
    Bits(Token::Integer, Token::Real, Token::EntityInstanceName, Token::String, Token::Binary, Token::Ident,
         Token::Exclamation, Token::LeftParenthesis, Token::Dollar, Token::Point, Token::Asterisk),
    Bits(Token::Integer, Token::Real, Token::EntityInstanceName, Token::String, Token::Binary, Token::LeftParenthesis,
         Token::Dollar, Token::Point),
};

// As strtol, base 10: numbers out of range become the nearest that there is.
long LongOf(const char* begin, const char* end) {
  const bool isNegative = *begin == '-';
  const char* digits = isNegative || *begin == '+' ? begin + 1 : begin;
  if (end - digits <= std::numeric_limits<long>::digits10) {
    long value = 0;
    for (; digits != end; ++digits) value = 10 * value + (*digits - '0');
    return isNegative ? -value : value;
  }
  long value = 0;
  if (std::from_chars(isNegative ? begin : digits, end, value).ec == std::errc::result_out_of_range) {
    value = isNegative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
  }
  return value;
}

// The lower 32 bits of the number.
int IntegerOf(const char* begin, const char* end) { return static_cast<int>(LongOf(begin, end)); }

// As strtod: what is too large becomes infinite, what is too small zero.
double RealOf(const char* begin, const char* end, bool& isInRange) {
  const char* number = *begin == '+' ? begin + 1 : begin;
  double value = 0;
  isInRange = std::from_chars(number, end, value).ec != std::errc::result_out_of_range;
  if (isInRange) return value;
  // Not zero, and out of range in the direction that the place of the first significant digit and the exponent tell.
  const char* mantissaEnd = std::find_if(number, end, [](char c) { return c == 'E' || c == 'e'; });
  const long exponent = mantissaEnd == end ? 0 : LongOf(mantissaEnd + 1, end);
  const char* point = std::find(number, mantissaEnd, '.');
  const char* first = std::find_if(number, mantissaEnd, [](char c) { return c >= '1' && c <= '9'; });
  const long place = first < point ? point - first : point - first + 1;
  value = exponent > -place ? std::numeric_limits<double>::infinity() : 0.0;
  return *begin == '-' ? -value : value;
}

// Appends a new element to an aggregate and returns it; null without an aggregate.
template <class Value, class... Arguments>
Value* AddElement(ExpAttribute* aggregate, Arguments&&... arguments) {
  if (aggregate == nullptr) return nullptr;
  return AddOwned(*aggregate, std::make_unique<Value>(std::forward<Arguments>(arguments)...));
}

// Whether an INTEGER is one of 64 bits as a real number.
bool FitsReal(const char* begin, const char* end) {
  bool isInRange = true;
  if (end - begin > std::numeric_limits<double>::max_exponent10) RealOf(begin, end, isInRange);
  return isInRange;
}

// Whether an INTEGER is one of 32 bits.
bool FitsInteger(const char* begin, const char* end) {
  const long value = LongOf(begin, end);
  return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

int Sum(int number, int offset) {
  return static_cast<int>(static_cast<unsigned int>(number) + static_cast<unsigned int>(offset));
}

}  // namespace

// ------------------------------------------------------------------------------------------------ what objects are

namespace {

// What the parser has to know of an object when it keeps everything.
enum class ClassKind : unsigned char {
  Other, Select, Binary, Real, Integer, String, Link, Enumeration, Aggregation, ComplexEntity
};

template <class Object>
bool Is(const ExpAttribute& object) {
  return dynamic_cast<const Object*>(&object) != nullptr;
}

ClassKind FindKind(const ExpAttribute& value) {
  return Is<ExpSelect>(value)         ? ClassKind::Select
         : Is<ExpSchemaBinary>(value) ? ClassKind::Binary
         : Is<ExpReal>(value)         ? ClassKind::Real
         : Is<ExpInteger>(value)      ? ClassKind::Integer
         : Is<ExpString>(value)       ? ClassKind::String
         : Is<ExpLink>(value)         ? ClassKind::Link
         : Is<ExpEnumeration>(value)  ? ClassKind::Enumeration
         : Is<ExpAggregation>(value)  ? ClassKind::Aggregation
                                      : ClassKind::Other;
}

ClassKind FindKind(const ExpEntity& entity) {
  return dynamic_cast<const ExpExternalMappingEntity*>(&entity) != nullptr ? ClassKind::ComplexEntity : ClassKind::Other;
}

// The kinds of classes that were met, since dynamic_cast costs more than reading a parameter. Lives as long as one file is parsed:
// afterwards another library may have its classes where those of one that was unloaded were.
class KnownClasses {
 public:
  KnownClasses() : outer_(current_) { current_ = this; }
  ~KnownClasses() { current_ = outer_; }
  KnownClasses(const KnownClasses&) = delete;
  KnownClasses& operator=(const KnownClasses&) = delete;

  template <class Object>
  static ClassKind KindOf(const Object& object) {
    const std::type_info* type = &typeid(object);
    if (current_ == nullptr) return FindKind(object);
    Slot& slot = current_->slots_[reinterpret_cast<std::uintptr_t>(type) / kAlignment % kSlots];
    if (slot.type != type) slot = {type, FindKind(object)};
    return slot.kind;
  }

 private:
  struct Slot {
    const std::type_info* type = nullptr;
    ClassKind kind = ClassKind::Other;
  };
  static constexpr std::size_t kSlots = 1021;  // of two classes with the same slot, one at a time has it
  static constexpr std::size_t kAlignment = 8;
  static thread_local KnownClasses* current_;

  KnownClasses* const outer_;
  Slot slots_[kSlots];
};

thread_local KnownClasses* KnownClasses::current_ = nullptr;

// Its class has no classes derived from it.
UnknownEntity* AsUnknown(ExpEntity* entity) {
  return entity != nullptr && &typeid(*entity) == &typeid(UnknownEntity) ? static_cast<UnknownEntity*>(entity) : nullptr;
}

}  // namespace

// What is to be said of a file as a whole, where everything is kept.
struct Parser::Remarks {
  std::set<std::string> types;  // of which a record has been reported
  NumberSet references;         // the numbers that are referred to
};

Parser::Parser(Scanner* scanner)
    : scanner_(scanner),
      errors_(new Errors),
      errDist_(kMinErrDist),
      t_(nullptr),
      la_(nullptr),
      provider_(nullptr),
      skipHeader_(false),
      keepsEverything_(false),
      offset_(0),
      currentNumber_(0) {
  scanner_->KeepSupplementaryCharacters();
}

Parser::~Parser() { delete errors_; }

void Parser::Parse() {
  const KnownClasses known;
  if (keepsEverything_) {
    remarks_ = std::make_unique<Remarks>();
    scanner_->AllowLongTokens();
  }
  dummy_.text = "Dummy Token";
  dummy_.length = 11;
  t_ = la_ = &dummy_;
  Get();
  Part21();
  Expect(Token::EoF);
  if (keepsEverything_) RemarkOnReferences();
}

void Parser::Get() {
  t_ = la_;
  la_ = scanner_->ScanLexeme();
  ++errDist_;
  if (!scanner_->Failure().empty() && !hasReportedFailure_) ReportFailure();
}

// Reports that the input breaks off within the look-ahead token or before it. That something is missing then is no error of
// its own.
void Parser::ReportFailure() {
  hasReportedFailure_ = true;
  const std::string text = "the input cannot be read any further: " + scanner_->Failure();
  errors_->Error(la_->line, la_->col, std::wstring(text.begin(), text.end()).c_str());
  errDist_ = 0;
}

void Parser::Expect(int n) {
  if (la_->kind == n) {
    Get();
  } else {
    SynErr(n);
  }
}

bool Parser::StartOf(int s) const { return (kStartSets[s] >> la_->kind & 1) != 0; }

void Parser::SynErr(int n) {
  if (errDist_ >= kMinErrDist) errors_->SynErr(la_->line, la_->col, n);
  errDist_ = 0;
}

void Parser::SemErr(const wchar_t* msg) {
  if (errDist_ >= kMinErrDist) errors_->Error(t_->line, t_->col, msg);
  errDist_ = 0;
}

void Parser::ExpectWeak(int n, int follow) {
  if (la_->kind == n) {
    Get();
    return;
  }
  SynErr(n);
  while (!StartOf(follow) && la_->kind != Token::EoF) Get();
}

bool Parser::WeakSeparator(int n, int syFol, int repFol) {
  if (la_->kind == n) {
    Get();
    return true;
  }
  if (StartOf(repFol)) return false;
  SynErr(n);
  while (!StartOf(syFol) && !StartOf(repFol) && !StartOf(kEndsInstance)) Get();
  return StartOf(syFol);
}

// --------------------------------------------------------------------------------------------- Parser: productions

// Part21 = "ISO-10303-21;" headerSection dataSection "END-ISO-10303-21;" .
void Parser::Part21() {
  schemaName_.clear();
  Expect(Token::Iso10303_21);
  headerSection();
  if (!skipHeader_) SelectSchema();
  skipHeader_ = false;
  dataSection();
  Expect(Token::EndIso10303_21);
}

// headerSection = HEADER [ headerEntityList ] ENDSEC .
void Parser::headerSection() {
  const bool isThere = la_->kind == Token::Header;
  Expect(Token::Header);
  const int begin = la_->pos;
  if (StartsRecord()) headerEntityList();
  const int end = t_->pos + 1;
  Expect(Token::EndSec);
  if (!isThere) return;
  const std::unique_ptr<wchar_t[]> text(scanner_->GetString(begin, end));
  headerText_ = Narrow(text.get());
}

// headerEntityList = headerEntity { headerEntity } .
void Parser::headerEntityList() {
  std::set<std::string> names;
  headerEntity(names);
  while (StartsRecord()) headerEntity(names);
}

// headerEntity = simpleRecord ";" .
//
// `names` are those of the records so far that the three entities of the header stand for.
void Parser::headerEntity(std::set<std::string>& names) {
  ExpEntity* entity = nullptr;
  simpleRecord(entity, Place::Header, recordName_);
  if (keepsEverything_ && entity != nullptr) {
    if (AsUnknown(entity) != nullptr) {
      RemarkOnRecord(recordName_, "the header has no entity " + recordName_ + "; its record is kept by position");
    } else if (!names.insert(recordName_).second) {
      Warn(*t_, "of two records " + recordName_ + " in the header, one is not kept");
    }
  }
  while (!StartOf(kEndsInstance)) {
    SynErr(kNotInHeaderEntity);
    Get();
  }
  Expect(Token::Semicolon);
}

// The schema of the provider is the first that the header names.
void Parser::SelectSchema() {
  std::list<ExpEntity*> entities;
  provider_->GetEntities(entities, "FILE_SCHEMA", false);
  entities.remove(nullptr);
  if (!entities.empty()) {
    auto* identifiers = dynamic_cast<ExpAggregation*>(entities.front()->GetMember("schema_identifiers"));
    if (identifiers != nullptr && identifiers->NofElements() != 0) {
      auto* first = dynamic_cast<ExpString*>(identifiers->GetExpAggregation()->front());
      if (first != nullptr) schemaName_ = first->GetExpString();
    }
  }
  provider_->SetSchemaName(schemaName_);
}

// dataSection = DATA entityInstanceList ENDSEC .
void Parser::dataSection() {
  Expect(Token::Data);
  entityInstanceList();
  Expect(Token::EndSec);
}

// entityInstanceList = entityInstance { entityInstance } .
// entityInstance     = ENTITYINSTANCENAME "=" [ scope ] ( simpleRecord | subSuperRecord ) ";" .
// scope              = "&SCOPE" entityInstanceList "ENDSCOPE" [ exportList ] .
//
// Scopes may be nested to any depth, so the instances whose scopes are open are kept in a list of our own.
void Parser::entityInstanceList() {
  struct Instance {
    bool isNamed;
    int number;
  };
  std::vector<Instance> open;
  for (;;) {
    Instance instance{};
    instance.isNamed = entityInstanceName(instance.number);
    Expect(Token::Equals);
    if (la_->kind == Token::Scope) {
      if (keepsEverything_) Warn(*la_, "the scope of #" + std::to_string(instance.number) + " is not kept; what is in it is");
      Get();
      open.push_back(instance);
      continue;
    }
    entityInstance(instance.isNamed, instance.number);
    while (la_->kind != Token::EntityInstanceName) {
      if (open.empty()) return;
      Expect(Token::EndScope);
      if (la_->kind == Token::Slash) exportList();
      instance = open.back();
      open.pop_back();
      entityInstance(instance.isNamed, instance.number);
    }
  }
}

bool Parser::entityInstanceName(int& number) {
  const bool isNamed = la_->kind == Token::EntityInstanceName;
  Expect(Token::EntityInstanceName);
  if (isNamed) number = NumberOf(*t_);
  return isNamed;
}

// What follows the instance name, "=" and the scope.
void Parser::entityInstance(bool isNamed, int number) {
  currentNumber_ = number;
  ExpEntity* entity = nullptr;
  recordName_.clear();
  if (StartsRecord()) {
    simpleRecord(entity, Place::Data, recordName_);
  } else if (la_->kind == Token::LeftParenthesis) {
    subSuperRecord(entity, recordName_);
  } else {
    SynErr(kInvalidEntityInstance);
  }
  while (!StartOf(kEndsInstance)) {
    SynErr(kNotInEntityInstance);
    Get();
  }
  Expect(Token::Semicolon);
  if (entity != nullptr && isNamed) {
    if (keepsEverything_ && provider_->GetEntity(number) != nullptr) {
      Warn(*t_, "there is a second #" + std::to_string(number) + ", and the first one is not kept");
    }
    entity->SetEntityNumber(number);
    provider_->AddEntity(number, entity);
  } else {
    Note(number, recordName_ + " ... entity creation failed\n");
  }
}

// exportList = "/" ENTITYINSTANCENAME { "," ENTITYINSTANCENAME } "/" .
void Parser::exportList() {
  Expect(Token::Slash);
  Expect(Token::EntityInstanceName);
  while (la_->kind == Token::Comma) {
    Get();
    Expect(Token::EntityInstanceName);
  }
  Expect(Token::Slash);
}

namespace {

bool IsHeaderType(const std::string& name) {
  return name == "FILE_DESCRIPTION" || name == "FILE_NAME" || name == "FILE_SCHEMA";
}

}  // namespace

// simpleRecord = keyword "(" [ entityParameterList ] ")" .
void Parser::simpleRecord(ExpEntity*& entity, Place place, std::string& name) {
  const bool inComplex = place == Place::Complex;
  const bool isUserDefined = keyword(name);
  // The header has its own types, and the data none of them.
  const bool isForeign = keepsEverything_ && (place == Place::Header ? isUserDefined || !IsHeaderType(name) : IsHeaderType(name));
  if (!skipHeader_ && !isForeign) entity = Create(name);
  if (keepsEverything_ && !skipHeader_) KeepRecord(entity, place, name, isUserDefined);
  bool ok = true;
  int reached = -1;
  try {
    Expect(Token::LeftParenthesis);
    if (StartOf(kStartsParameter)) entityParameterList(entity, inComplex, ok, reached);
    Expect(Token::RightParenthesis);
  } catch (...) {  // an attribute rejects its value: the rest of the record is given up
    levels_.clear();
  }
  if (keepsEverything_ && entity != nullptr) {
    const int first = inComplex ? entity->GetExternalMappingStartIndex() : 0;
    const int end = entity->GetNofExplicitMembers();
    if (reached < 0) reached = first;
    if (reached != end && AsUnknown(entity) == nullptr) {
      RemarkOnRecord(name, "a record " + name + " has " + std::to_string(reached - first) + " parameters, and its type " +
                               std::to_string(end - first) + " attributes");
    }
    for (; reached < end; ++reached) {
      ExpAttribute* missing = entity->GetMember(reached);
      if (missing != nullptr && !missing->IsOmitted()) missing->SetNotProvided(true);
    }
  }
  if (!ok && entity != nullptr) {
    Note(currentNumber_, entity->GetExpClassName() + " ... reading param list failed\n");
  }
}

// subSuperRecord = "(" subSuperSimpleRecordList ")" .
void Parser::subSuperRecord(ExpEntity*& entity, std::string& name) {
  name = "ExpExternalMappingEntity";
  auto* complex = dynamic_cast<ExpExternalMappingEntity*>(Create(name));
  entity = complex;
  Expect(Token::LeftParenthesis);
  subSuperSimpleRecordList(complex);
  Expect(Token::RightParenthesis);
  // Without a record, by a syntax error, it could be written, but not be read.
  if (keepsEverything_ && complex != nullptr && complex->GetEntities()->empty()) entity = nullptr;
}

// subSuperSimpleRecordList = simpleRecord { simpleRecord } .
void Parser::subSuperSimpleRecordList(ExpExternalMappingEntity* complex) {
  do {
    ExpEntity* part = nullptr;
    simpleRecord(part, Place::Complex, partName_);
    if (complex == nullptr) continue;
    if (keepsEverything_ && part != nullptr && complex->GetEntityByName(part->GetExpClassName()) != nullptr) {
      Warn(*t_, "there is a second record " + partName_ + " in #" + std::to_string(currentNumber_) + ", which is not kept");
    }
    complex->AddEntity(part);
  } while (StartsRecord());
}

// keyword             = userDefinedKeyword | standardKeyword .
// userDefinedKeyword  = "!" standardKeyword .
// standardKeyword     = IDENT .
//
// Gives the name without "!", and whether there is one.
bool Parser::keyword(std::string& name) {
  name.clear();
  if (!StartsRecord()) {
    SynErr(kInvalidKeyword);
    return false;
  }
  const bool isUserDefined = la_->kind == Token::Exclamation;
  if (isUserDefined) Get();
  if (la_->kind == Token::Ident) name.assign(la_->text, la_->length);
  Expect(Token::Ident);
  return isUserDefined;
}

// entityParameterList = parameterArg { "," parameterArg } .
//
// `reached` becomes the position behind the last parameter.
void Parser::entityParameterList(ExpEntity* entity, bool inComplex, bool& ok, int& reached) {
  int index = 0;
  int end = 0;
  ok = true;
  if (entity != nullptr) {
    index = inComplex ? entity->GetExternalMappingStartIndex() : 0;
    end = entity->GetNofExplicitMembers();
  }
  for (bool more = true; more;) {
    if (keepsEverything_ && entity != nullptr) {
      reached = index;
      KeepParameter(*entity, index, end);
      reached = ++index;
    } else {
      ExpAttribute* target = nullptr;
      if (entity != nullptr) {
        if (index < end) {
          target = entity->GetMember(index++);
        } else {
          ok = false;
        }
      }
      parameter(Family::Arg, target);
    }
    more = la_->kind == Token::Comma;
    if (more) Get();
  }
}

// parameter         = typedParameter | untypedParameter | omittedParameter .
// typedParameter    = keyword "(" parameter ")" .
// list              = "(" [ parameter { "," parameter } ] ")" .
// omittedParameter  = "*" .
//
// The productions of all four families: parameterArg, parameterExpAggr, parameterExpAggrSelect and parameter. Lists and
// typed parameters may be nested to any depth, so those that are open are kept in levels_.
void Parser::parameter(Family family, ExpAttribute* target) {
  for (;;) {
    bool isComplete = true;
    if (StartsRecord()) {
      beginTypedParameter(family, target);
      isComplete = false;
    } else if (la_->kind == Token::LeftParenthesis) {
      beginList(family, target);
      isComplete = !StartOf(kStartsParameter);
      if (isComplete) endLevel();
    } else if (StartOf(kStartsUntypedParameter)) {
      untypedParameter(family, target);
    } else if (la_->kind == Token::Asterisk) {
      Get();
      if (keepsEverything_ && (family == Family::ExpAggr || IsInTypedParameter())) {
        KeepToken(family, target, "*");
      } else if (family == Family::Arg && target != nullptr) {
        target->SetOmitted(true);
      }
    } else {
      SynErr(kInvalidParameter + 2 * static_cast<int>(family));
    }
    while (isComplete) {
      if (levels_.empty()) return;
      isComplete = !levels_.back().isList || la_->kind != Token::Comma;
      if (isComplete) {
        endLevel();
      } else {
        Get();
      }
    }
    family = levels_.back().family;
    target = levels_.back().target;
  }
}

void Parser::beginTypedParameter(Family family, ExpAttribute* target) {
  const bool isUserDefined = keyword(text_);
  const bool isNamed = !text_.empty();  // there is none where the syntax is wrong
  if (isUserDefined && isNamed && keepsEverything_) text_.insert(0, 1, '!');
  Level level{false, family, target, nullptr};
  if (family == Family::ExpAggr) {
    level.family = Family::ExpAggrSelect;
    if (target != nullptr) {
      level.made = std::make_unique<ExpSelect>();
      level.target = level.made.get();
    }
  }
  if (level.target != nullptr && (isNamed || !keepsEverything_)) level.target->AddExpSelectTypeName(text_);
  Expect(Token::LeftParenthesis);
  levels_.push_back(std::move(level));
}

void Parser::beginList(Family family, ExpAttribute* target) {
  Get();
  switch (family) {
    case Family::Arg:
      levels_.push_back({true, Family::ExpAggr, target, nullptr});
      break;
    case Family::ExpAggr:
      levels_.push_back({true, Family::ExpAggr, AddElement<ExpAggregation>(target), nullptr});
      break;
    case Family::ExpAggrSelect:
    case Family::Value:
      if (keepsEverything_) {
        levels_.push_back({true, Family::ExpAggr, target, nullptr});
      } else {
        levels_.push_back({true, Family::Value, nullptr, nullptr});
      }
      break;
  }
  // A select has an aggregate from its first element on, so one without elements is given one for a moment.
  if (keepsEverything_ && family != Family::ExpAggr && target != nullptr && !StartOf(kStartsParameter)) {
    if (auto* select = dynamic_cast<ExpSelect*>(target)) {
      AddElement<KeptToken>(select, "$");
      if (auto* list = dynamic_cast<ExpAggregation*>(select->GetExpSelectValue())) list->RemoveAllValues();
    }
  }
}

void Parser::endLevel() {
  Expect(Token::RightParenthesis);
  std::unique_ptr<ExpSelect> made = std::move(levels_.back().made);
  levels_.pop_back();
  if (made == nullptr) return;
  if (keepsEverything_ && made->GetExpSelectValue() == nullptr) made->SetNotProvided(true);
  AddOwned(*levels_.back().target, std::move(made));
}

// untypedParameter  = INTEGER | REAL | ENTITYINSTANCENAME | STRING | BINARY | "$" | enumeration | list .
void Parser::untypedParameter(Family family, ExpAttribute* target) {
  if (la_->kind == Token::Point) {
    enumeration(family, target);
    return;
  }
  Get();
  if (target == nullptr) return;
  const bool isElement = family == Family::ExpAggr;
  const char* const begin = t_->text;
  const char* const end = begin + t_->length;
  switch (t_->kind) {
    case Token::Integer: {
      if (keepsEverything_ && !FitsInteger(begin, end)) {
        KeepToken(family, target, std::string(begin, end));
        break;
      }
      const int value = IntegerOf(begin, end);
      isElement ? (void)AddElement<ExpInteger>(target, value) : target->SetExpInteger(value);
      break;
    }
    case Token::Real: {
      bool isInRange = true;
      const double value = RealOf(begin, end, isInRange);
      if (keepsEverything_ && !isInRange) {
        Warn(*t_, "a real number does not fit 64 bits and becomes " + std::string(value == 0 ? "0" : "infinite"));
      }
      isElement ? (void)AddElement<ExpReal>(target, value) : target->SetExpReal(value);
      break;
    }
    case Token::EntityInstanceName: {
      const int number = NumberOf(*t_);
      if (keepsEverything_) remarks_->references.Insert(number);
      isElement ? (void)AddElement<ExpLink>(target, number) : target->SetExpLink(number);
      break;
    }
    case Token::String: {
      std::string body(begin + 1, end - 1);
      // cppcheck-suppress accessMoved ; one of the two is done
      isElement ? (void)AddElement<ExpString>(target, std::move(body)) : target->SetExpString(std::move(body));
      break;
    }
    case Token::Dollar:
      if (keepsEverything_ && (isElement || IsInTypedParameter())) {
        KeepToken(family, target, "$");
      } else if (!isElement) {
        target->SetNotProvided(true);
      }
      break;
    default:  // a BINARY is passed over
      if (keepsEverything_) KeepToken(family, target, std::string(begin, end));
      break;
  }
}

// enumeration       = "." IDENT "." .
void Parser::enumeration(Family family, ExpAttribute* target) {
  Expect(Token::Point);
  text_.assign(la_->text, la_->length);
  const bool isNamed = la_->kind == Token::Ident;
  Expect(Token::Ident);
  Expect(Token::Point);
  if (!isNamed || target == nullptr) return;
  if (family == Family::Arg || (keepsEverything_ && family == Family::ExpAggrSelect)) {
    target->SetExpEnumeration(text_);
  } else if (keepsEverything_ && family == Family::ExpAggr) {
    auto item = std::make_unique<ExpEnumeration>();
    item->SetExpEnumeration(text_);
    AddOwned(*target, std::move(item));
  }
}

// ---------------------------------------------------------------------------------------- Parser: keeping everything

// An entity for a record that the provider has none for, or one that would not be written as this record. Another one is told of
// the "!" that it does not know of.
void Parser::KeepRecord(ExpEntity*& entity, Place place, const std::string& name, bool isUserDefined) {
  const bool isInHeader = place == Place::Header;
  const bool isWritten = entity != nullptr && KnownClasses::KindOf(*entity) != ClassKind::ComplexEntity;
  if (isWritten) {
    if (isUserDefined) KeptRecord::Of(*entity).isUserDefined = true;
  } else if (!name.empty()) {
    auto* unknown = UnknownEntity::Create(isUserDefined ? '!' + name : name, static_cast<int>(provider_->GetAdminId()));
    unknown->isInHeader = isInHeader;
    entity = unknown;
  }
}

namespace {

// Marks a select that is left without a value, by a syntax error for instance: it could not be written.
class MarkedIfUnset {
 public:
  explicit MarkedIfUnset(ExpAttribute* value)
      : select_(KnownClasses::KindOf(*value) == ClassKind::Select ? dynamic_cast<ExpSelect*>(value) : nullptr) {}
  ~MarkedIfUnset() {
    if (select_ != nullptr && select_->GetExpSelectValue() == nullptr && !select_->IsOmitted()) {
      select_->SetNotProvided(true);
    }
  }
  MarkedIfUnset(const MarkedIfUnset&) = delete;
  MarkedIfUnset& operator=(const MarkedIfUnset&) = delete;

 private:
  ExpSelect* const select_;
};

}  // namespace

// Reads a parameter into the attribute at the position or, where that cannot take it or there is none, beside it.
void Parser::KeepParameter(ExpEntity& entity, int index, int end) {
  if (auto* unknown = AsUnknown(&entity)) {
    ExpSelect* place = unknown->AddParameter();
    const MarkedIfUnset marked(place);
    parameter(Family::Arg, place);
    return;
  }
  ExpAttribute* own = index < end ? entity.GetMember(index) : nullptr;
  if (own != nullptr && Takes(*own)) {
    try {
      const MarkedIfUnset marked(own);
      parameter(Family::Arg, own);
      return;
    } catch (...) {
      // An item that the type of the enumeration does not have; it has been read.
      if (!levels_.empty() || t_->kind != Token::Point) throw;
      KeptRecord::Of(entity).At(index).SetExpEnumeration(text_);
    }
  } else {
    ExpSelect* beside = &KeptRecord::Of(entity).At(index);
    const MarkedIfUnset marked(beside);
    parameter(Family::Arg, beside);
  }
  if (own != nullptr) own->SetNotProvided(true);
}

// Whether the attribute is of the kind that the parameter which follows is of. Nobody knows about classes of applications.
bool Parser::Takes(ExpAttribute& attribute) const {
  const int token = la_->kind;
  if (token == Token::Dollar || token == Token::Asterisk) return true;
  const ClassKind kind = KnownClasses::KindOf(attribute);
  if (kind == ClassKind::Select) return true;
  if (kind == ClassKind::Binary || token == Token::Binary) return false;
  if (kind == ClassKind::Real) {
    return token == Token::Real || (token == Token::Integer && FitsReal(la_->text, la_->text + la_->length));
  }
  if (token == Token::Integer && !FitsInteger(la_->text, la_->text + la_->length)) return false;
  switch (kind) {
    case ClassKind::Integer:
      return token == Token::Integer;
    case ClassKind::String:
      return token == Token::String;
    case ClassKind::Link:
      return token == Token::EntityInstanceName;
    case ClassKind::Enumeration:
      return token == Token::Point;
    case ClassKind::Aggregation:
      return token == Token::LeftParenthesis;
    default:
      return true;
  }
}

// Puts a value for which there is no setter where it belongs: a BINARY, a long INTEGER, or `$` or `*` that is no parameter.
void Parser::KeepToken(Family family, ExpAttribute* target, std::string text) const {
  if (target == nullptr) return;
  if (family == Family::ExpAggr) {
    AddElement<KeptToken>(target, std::move(text));
  } else if (auto* select = dynamic_cast<ExpSelect*>(target)) {
    KeptToken::SelectIn(*select, std::make_unique<KeptToken>(std::move(text)));
  } else if (dynamic_cast<ExpReal*>(target) != nullptr) {  // an INTEGER
    bool isInRange = true;  // Takes has seen to that
    target->SetExpReal(RealOf(text.data(), text.data() + text.size(), isInRange));
  } else if (text == "$") {
    target->SetNotProvided(true);
  } else if (text == "*") {
    target->SetOmitted(true);
  }
}

void Parser::Warn(const Lexeme& at, const std::string& text) {
  errors_->Warning(at.line, at.col, std::wstring(text.begin(), text.end()).c_str());
}

// Says something of a record of the type, and of those that follow nothing more: there may be as many as instances. It is no
// warning at a place, which is about what is lost.
void Parser::RemarkOnRecord(const std::string& type, const std::string& text) {
  if (remarks_->types.insert(type).second) Remark(text + " (line " + std::to_string(t_->line) + ")");
}

void Parser::Remark(const std::string& text) { errors_->Warning(std::wstring(text.begin(), text.end()).c_str()); }

void Parser::RemarkOnReferences() {
  constexpr std::size_t kNamed = 3;
  std::size_t missing = 0;
  std::string names;
  remarks_->references.ForEach([&](int number) {
    if (provider_->GetEntity(number) != nullptr) return;
    if (++missing <= kNamed) names += (names.empty() ? "#" : ", #") + std::to_string(number);
  });
  if (missing == 0) return;
  Remark("of the instances that are referred to, " + std::to_string(missing) + " are not there: " + names +
         (missing > kNamed ? ", ..." : ""));
}

// The number of an instance name, raised by the offset.
int Parser::NumberOf(const Lexeme& name) {
  const char* const begin = name.text + 1;
  const char* const end = name.text + name.length;
  const int number = IntegerOf(begin, end);
  if (keepsEverything_ && !FitsInteger(begin, end)) {
    Warn(name, name.Text() + " is too great a number and becomes #" + std::to_string(number) + "; it is not kept");
  }
  return Sum(number, offset_);
}

bool Parser::StartsRecord() const { return la_->kind == Token::Ident || la_->kind == Token::Exclamation; }

// Null where the provider fails, too: the record is read all the same.
ExpEntity* Parser::Create(const std::string& typeName) {
  try {
    return provider_->CreateEntity(typeName);
  } catch (...) {
    return nullptr;
  }
}

void Parser::Note(int number, const std::string& text) { notes_ += "#" + std::to_string(number) + " = " + text; }

}  // namespace VELMAR
