/// @file LexemeReader.h
/// For the library's own programs: the tokens of a scanner as the parser takes them, without a wide text for each.
#pragma once

#include <cstddef>

#include "Scanner.h"

namespace VELMAR {

/// Reads the tokens of a scanner one by one, of any length. Strings may hold any code point, as for the parser. Does not own the
/// scanner, of which nobody else asks for tokens meanwhile.
class LexemeReader {
 public:
  /// The first token is the current one.
  explicit LexemeReader(Scanner& scanner) : scanner_(scanner) {
    scanner_.KeepSupplementaryCharacters();
    scanner_.AllowLongTokens();
    Next();
  }

  void Next() { lexeme_ = scanner_.ScanLexeme(); }

  int Kind() const { return lexeme_->kind; }
  int Line() const { return lexeme_->line; }
  int Column() const { return lexeme_->col; }
  /// Of the first character, in bytes.
  int Position() const { return lexeme_->pos; }
  /// The text as bytes of the file, UTF-8 where the file has a byte order mark; valid until Next.
  const char* Text() const { return lexeme_->text; }
  std::size_t Length() const { return lexeme_->length; }

 private:
  Scanner& scanner_;
  const Scanner::Lexeme* lexeme_ = nullptr;
};

}  // namespace VELMAR
