#include "FileWalk.h"

#include <cwchar>

namespace velmar {

namespace {

using VELMAR::Token;

constexpr long kFirstBadNumber = 1073741824;  // 2^30

class FileWalk {
 public:
  FileWalk(std::FILE* file, WalkListener& listener) : listener_(listener), scanner_(file) {}
  void Walk();

 private:
  void Next() { token_ = scanner_.Scan(); }
  bool Is(Token::Kind kind) const { return token_->kind == kind; }
  Place Here() const { return {token_->line, token_->col}; }

  void Header();
  void InstanceOrReference();
  void EndOfScope();
  void Records(const WalkedInstance& instance);
  void Record(const WalkedInstance& instance, bool isPart);
  int Parameters();

  WalkListener& listener_;
  VELMAR::Scanner scanner_;
  Token* token_ = nullptr;
  std::vector<WalkedInstance> enclosing_;  // the instances in whose scope we are
};

void FileWalk::Walk() {
  Next();
  while (!Is(Token::EoF)) {
    if (Is(Token::Header)) {
      Header();
    } else if (Is(Token::EntityInstanceName)) {
      InstanceOrReference();
    } else if (Is(Token::EndScope) && !enclosing_.empty()) {
      EndOfScope();
    } else {
      Next();
    }
  }
}

void FileWalk::Header() {
  Next();
  while (!Is(Token::EndSec) && !Is(Token::Data) && !Is(Token::EoF)) {
    if (Is(Token::Ident)) {
      Record({"", 0, Here()}, false);
    } else {
      Next();
    }
  }
}

// entityInstance = "#n" "=" [ "&SCOPE" ... "ENDSCOPE" ] record ";" .
void FileWalk::InstanceOrReference() {
  const WalkedInstance instance = {Narrow(token_->val), InstanceNumberOf(token_->val), Here()};
  listener_.InstanceName(token_->val, instance.place);
  Next();
  if (!Is(Token::Equals)) return;
  listener_.BeginInstance(instance);
  Next();
  if (Is(Token::Scope)) {
    enclosing_.push_back(instance);
    Next();
  } else {
    Records(instance);
  }
}

void FileWalk::EndOfScope() {
  const WalkedInstance instance = enclosing_.back();
  enclosing_.pop_back();
  Next();
  if (Is(Token::Slash)) {  // the export list
    do Next();
    while (!Is(Token::Slash) && !Is(Token::Semicolon) && !Is(Token::EoF));
    if (Is(Token::Slash)) Next();
  }
  Records(instance);
}

void FileWalk::Records(const WalkedInstance& instance) {
  bool isComplex = false;
  while (!Is(Token::Semicolon) && !Is(Token::EntityInstanceName) && !Is(Token::EoF)) {
    if (Is(Token::Ident)) {
      Record(instance, isComplex);
    } else {
      isComplex = isComplex || Is(Token::LeftParenthesis);
      Next();
    }
  }
}

void FileWalk::Record(const WalkedInstance& instance, bool isPart) {
  const std::wstring typeName = token_->val;
  const WalkedRecord record = {instance, typeName, Here(), isPart};
  Next();
  if (!Is(Token::LeftParenthesis)) return;
  listener_.BeginRecord(record);
  const int parameters = Parameters();
  listener_.EndRecord(record, parameters);
}

// Passes over a parameter list with its parentheses; returns the number of parameters.
int FileWalk::Parameters() {
  Nesting nesting;
  int count = 0;
  bool expectsParameter = true;
  bool afterName = false;
  Next();
  while (!Is(Token::Semicolon) && !Is(Token::EoF)) {
    if (Is(Token::RightParenthesis) && nesting.IsOutside()) {
      Next();
      return count;
    }
    if (Is(Token::Comma)) {
      expectsParameter = expectsParameter || nesting.IsOutside();
      afterName = false;
      Next();
      continue;
    }
    if (expectsParameter) ++count;
    expectsParameter = false;
    const Place place = Here();
    if (Is(Token::Point)) {  // an enumeration value is three tokens
      const bool isTyped = afterName;
      afterName = false;
      Next();
      if (!Is(Token::Ident)) continue;
      listener_.Value({Token::Point, token_->val, place, count - 1, nesting, isTyped});
      Next();
      if (Is(Token::Point)) Next();
      continue;
    }
    listener_.Value(
        {static_cast<Token::Kind>(token_->kind), token_->val, place, count - 1, nesting, afterName});
    if (Is(Token::LeftParenthesis)) nesting.Open(afterName);
    if (Is(Token::RightParenthesis)) nesting.Close();
    afterName = Is(Token::Ident);
    Next();
  }
  return count;
}

}  // namespace

void Nesting::Open(bool typed) {
  typed_.push_back(typed);
  if (typed) {
    if (lists_ > 0) ++typedInLists_;
  } else {
    ++lists_;
    if (typedInLists_ > 0) ++listsInTyped_;
  }
}

void Nesting::Close() {
  if (typed_.back()) {
    if (typedInLists_ > 0) --typedInLists_;
  } else {
    --lists_;
    if (listsInTyped_ > 0) --listsInTyped_;
  }
  typed_.pop_back();
}

WalkListener::~WalkListener() = default;
void WalkListener::InstanceName(const wchar_t*, Place) {}
void WalkListener::BeginInstance(const WalkedInstance&) {}
void WalkListener::BeginRecord(const WalkedRecord&) {}
void WalkListener::Value(const WalkedValue&) {}
void WalkListener::EndRecord(const WalkedRecord&, int) {}

void WalkFile(std::FILE* file, WalkListener& listener) { FileWalk(file, listener).Walk(); }

int InstanceNumberOf(const wchar_t* name) {
  const long number = std::wcstol(name + 1, nullptr, 10);
  return number < kFirstBadNumber ? static_cast<int>(number) : 0;
}

std::string Narrow(const wchar_t* text) {
  std::string narrow;
  for (; *text != 0; ++text) narrow += static_cast<char>(*text);
  return narrow;
}

}  // namespace velmar
