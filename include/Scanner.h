/// @file Scanner.h
/// Input buffers, the scanner of Part 21 files and the wide-string functions that belong to them.
///
/// Characters outside the byte order mark's UTF-8 are bytes; the end of input is the character 65536.
#pragma once

#include <cstddef>
#include <cstdio>
#include <iosfwd>
#include <memory>
#include <string>

#include "VelmarApi.h"

// Wide strings here are zero-terminated arrays from new[]; what a `create` returns is freed by coco_string_delete.

/// A copy; null for null.
VELMAR_API wchar_t* coco_string_create(const wchar_t* text);
/// A copy of the `length` characters from `index` on; null for null.
VELMAR_API wchar_t* coco_string_create(const wchar_t* text, int index, int length);
/// A copy with "a" to "z" in upper case; null for null.
VELMAR_API wchar_t* coco_string_create_upper(const wchar_t* text);
/// A copy with "A" to "Z" in lower case; null for null.
VELMAR_API wchar_t* coco_string_create_lower(const wchar_t* text);
/// A copy of a part with "A" to "Z" in lower case; null for null.
VELMAR_API wchar_t* coco_string_create_lower(const wchar_t* text, int index, int length);
/// One text behind the other; null counts as empty.
VELMAR_API wchar_t* coco_string_create_append(const wchar_t* first, const wchar_t* second);
/// The same with one character.
VELMAR_API wchar_t* coco_string_create_append(const wchar_t* text, wchar_t character);
/// Frees the string and sets the pointer to null.
VELMAR_API void coco_string_delete(wchar_t*& text);
/// The same for what coco_string_create_char returns.
VELMAR_API void coco_string_delete(char*& text);
/// 0 for null.
VELMAR_API int coco_string_length(const wchar_t* text);
/// Whether the text ends with the other one, as every text does where that is null or empty.
VELMAR_API bool coco_string_endswith(const wchar_t* text, const wchar_t* suffix);
/// The first index of a character; -1 where it is absent.
VELMAR_API int coco_string_indexof(const wchar_t* text, wchar_t character);
/// The last index of a character; -1 where it is absent.
VELMAR_API int coco_string_lastindexof(const wchar_t* text, wchar_t character);
/// Replaces `text` by `text` and `appended`.
VELMAR_API void coco_string_merge(wchar_t*& text, const wchar_t* appended);
/// Whether the texts, neither of which may be null, are equal.
VELMAR_API bool coco_string_equal(const wchar_t* a, const wchar_t* b);
/// Below, equal to or above 0 as wcscmp.
VELMAR_API int coco_string_compareto(const wchar_t* a, const wchar_t* b);
/// The hash of KeywordMap; never negative but for the one number without a counterpart.
VELMAR_API int coco_string_hash(const wchar_t* text);
/// Each byte as one character; null for null.
VELMAR_API wchar_t* coco_string_create(const char* text);
/// Each character as its low byte; null for null.
VELMAR_API char* coco_string_create_char(const wchar_t* text);

namespace VELMAR {

/// The bytes of an input, by position: a memory block, a seekable file read through one block, or a stream that is kept.
///
/// Inputs are at most 2^31 - 1 bytes long.
class VELMAR_API Buffer {
 public:
  /// What stands behind the last character.
  static constexpr int EoF = 65536;

  /// Reads `s`. A user's stream is never closed here; another is closed with the buffer, or as soon as it has been read whole.
  Buffer(FILE* s, bool isUserStream);
  /// Copies the block.
  Buffer(const unsigned char* buf, int len);
  /// Takes over the contents of another buffer, which is left empty.
  explicit Buffer(Buffer* b);
  virtual ~Buffer();
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  /// Closes the stream, if it is not the user's.
  virtual void Close();
  /// The next byte, or EoF.
  virtual int Read();
  /// The next byte, or EoF, without moving on.
  virtual int Peek();
  /// The characters read from `beg` while the position is below `end`, freed with coco_string_delete. The position is kept.
  /// Throws std::bad_array_new_length where `end` is below `beg`.
  virtual wchar_t* GetString(int beg, int end);
  /// The position of the next byte, from 0.
  virtual int GetPos();
  /// Moves to a position from 0 to the length of the input; any other ends the process with a message.
  virtual void SetPos(int value);

 private:
  friend class Scanner;
  /// Takes over a block of `len` + 1 bytes.
  Buffer(std::unique_ptr<unsigned char[]> block, int len);
  int ReadNextStreamChunk();
  bool CanSeek();
  /// Whether the input cannot be read behind the end of the array.
  bool HasFailed() const {
    return start_ + length_ < fileLength_ || (stream_ != nullptr && std::ferror(stream_) != 0);
  }
  /// Whether the array holds the whole input and stays as it is.
  bool HoldsAll() const { return stream_ == nullptr && start_ == 0 && length_ == fileLength_; }

  static constexpr int kMinCapacity = 1024;
  static constexpr int kMaxCapacity = 64 * 1024;

  unsigned char* data_;  // one byte longer than the capacity: a zero stands behind the last valid byte
  int capacity_;
  int start_;
  int length_;
  int fileLength_;
  int index_;
  FILE* stream_;
  bool isUserStream_;
};

/// A buffer whose characters are the code points of UTF-8 input. Positions stay those of bytes.
///
/// Lenient: a stray continuation byte is skipped, and what follows a lead byte is taken as its continuation whatever it is.
class VELMAR_API UTF8Buffer : public Buffer {
 public:
  /// Takes over the contents of another buffer, which is left empty.
  explicit UTF8Buffer(Buffer* b);
  ~UTF8Buffer() override;
  /// The next code point, or EoF.
  int Read() override;
};

/// One token. Belongs to its scanner, which keeps it at least until the token after the next is asked for.
class VELMAR_API Token {
 public:
  /// The numbers of the token kinds; the messages of Errors are indexed by them.
  enum Kind {
    EoF = 0,
    Integer = 1,
    Real = 2,
    EntityInstanceName = 3,
    String = 4,
    Binary = 5,
    Ident = 6,
    Header = 7,
    Data = 8,
    EndSec = 9,
    Iso10303_21 = 10,
    EndIso10303_21 = 11,
    Semicolon = 12,
    Exclamation = 13,
    Comma = 14,
    LeftParenthesis = 15,
    RightParenthesis = 16,
    Dollar = 17,
    Point = 18,
    Asterisk = 19,
    Equals = 20,
    Scope = 21,
    EndScope = 22,
    Slash = 23,
    Invalid = 24
  };

  Token();

  int kind;      ///< a Kind
  int pos;       ///< position of the first character in the input, in bytes
  int col;       ///< column of the first character, from 1
  int line;      ///< line of the first character, from 1
  wchar_t* val;  ///< the text, in the scanner's memory
  Token* next;   ///< the following token; null while it has not been scanned
};

/// From the first character of a token to the state in which the scanner begins it: a hash table of 128 buckets.
class VELMAR_API StartStates {
 public:
  StartStates();
  ~StartStates();
  StartStates(const StartStates&) = delete;
  StartStates& operator=(const StartStates&) = delete;

  /// Tokens that start with the character begin in the state.
  void set(int character, int state);
  /// 0 where no token starts with the character.
  int state(int character) const;

 private:
  struct Elem {
    int character;
    int state;
    Elem* next;
  };
  static constexpr int kBuckets = 128;
  Elem** table_;
};

/// From the text of an identifier to its token kind: a hash table of 128 buckets.
class VELMAR_API KeywordMap {
 public:
  KeywordMap();
  ~KeywordMap();
  KeywordMap(const KeywordMap&) = delete;
  KeywordMap& operator=(const KeywordMap&) = delete;

  /// The text is a keyword of the kind.
  void set(const wchar_t* key, int kind);
  /// `defaultKind` where the text is no keyword. The case counts.
  int get(const wchar_t* key, int defaultKind) const;

  struct Elem {
    Elem(const wchar_t* text, int tokenKind);
    ~Elem();
    Elem(const Elem&) = delete;
    Elem& operator=(const Elem&) = delete;
    wchar_t* key;
    int kind;
    Elem* next;
  };

 private:
  static constexpr int kBuckets = 128;
  Elem** table_;
};

/// Cuts a Part 21 file into tokens (ISO 10303-21, tokens of the exchange structure).
///
/// White space and comments stand between tokens; what is no token comes out as a token of the kind Invalid. Strings keep
/// their apostrophes and escapes. A file that begins with the UTF-8 byte order mark is read as UTF-8, any other byte by
/// byte. Three conditions end the process with exit status 1 and a message on standard output: a file that cannot be
/// opened, a damaged byte order mark, and, unless AllowLongTokens was called, a token of more than 32,767 characters.
class VELMAR_API Scanner {
 public:
  /// Scans a memory block, which is copied.
  Scanner(const unsigned char* buf, int len);
  /// Opens the file, whose name is one character per byte, and closes it.
  explicit Scanner(const wchar_t* fileName);
  /// Scans an open stream, which stays the caller's.
  explicit Scanner(FILE* s);
  ~Scanner();
  Scanner(const Scanner&) = delete;
  Scanner& operator=(const Scanner&) = delete;

  /// From now on tokens may be of any length.
  void AllowLongTokens() { allowsLongTokens_ = true; }

  /// The next token; after the last, tokens of the kind EoF.
  Token* Scan();
  /// The token behind the one that was last peeked or scanned; nothing is consumed.
  Token* Peek();
  /// Peek begins again behind the token last scanned.
  void ResetPeek();

 private:
  friend class LexemeReader;
  friend class Parser;
  friend class Part21Importer;

  // A token as the parser takes it: its text is a range of bytes, UTF-8 where the file says so.
  struct Lexeme {
    int kind = 0;
    int pos = 0;
    int col = 0;
    int line = 0;
    const char* text = "";
    std::size_t length = 0;
    std::string kept;  // holds the text where it is not a range of the input any more

    std::string Text() const { return std::string(text, length); }
  };
  class Arena;

  class StreamBuffer;

  /// Scans the first `len` bytes of a stream, which stays the caller's and is left behind them.
  Scanner(std::istream& stream, int len);

  void Init();
  void SkipByteOrderMark();
  const Lexeme* ScanLexeme();
  const Lexeme& PeekedLexeme();
  /// Why the input cannot be read behind the token last scanned, which may be a part of one; empty where it can be.
  const std::string& Failure() const { return failure_; }
  /// Strings may hold code points of 65536 and above; for Scan they make a token invalid.
  void KeepSupplementaryCharacters() { keepSupplementary_ = true; }
  wchar_t* GetString(int beg, int end);

  // The window: the bytes of the buffer's array that have not been read yet.
  void OpenWindow();
  void CloseWindow();
  bool Refill();
  void Fail();
  void SkipStrayByte();
  int Ch();
  void Take() { ++cur_; }
  int Position() const;
  void NewLine();
  bool EndsLine();
  int TakeCodePoint(int last);

  // The text of the token that is being read.
  void Keep(Lexeme& lexeme);
  std::string& KeepText();
  bool TextIs(const char* text);
  void EndText(Lexeme& lexeme);

  // The automaton.
  const Lexeme& NextToken();
  const Lexeme& AnyToken();
  void BeginToken(Lexeme& lexeme);
  void TakeOneCharacter(Lexeme& lexeme, int state);
  int SkipBlanks();
  bool SkipComment();
  bool Comment0();
  bool Comment1();
  int ScanFrom(int state);
  int ScanNumber();
  int ScanIdentifier(int state);
  int ScanString();
  int ScanBinary();
  int ScanInvalid();
  bool TakeExactly(const char* text);
  void TakeDigits();

  // Tokens for Scan and Peek.
  Token* NewToken();
  Token* CreateToken();
  void AppendVal(Token* token, const Lexeme& lexeme);
  void CreateHeapBlock(std::size_t size);

  std::unique_ptr<Buffer> buffer_;
  const unsigned char* cur_ = nullptr;        // the current character
  const unsigned char* end_ = nullptr;        // a zero stands here
  const unsigned char* textBegin_ = nullptr;  // where the part of the token's text begins that is not kept elsewhere
  bool inText_ = false;
  bool utf8_ = false;
  bool keepSupplementary_ = false;
  bool allowsLongTokens_ = false;
  bool ended_ = false;  // before the end of the input
  std::string failure_;
  int line_ = 1;
  int lineStart_ = 0;  // the position of column 1, moved by the bytes that are no columns of their own
  Lexeme lexemes_[2];
  int lexeme_ = 0;     // the one last read; the other one is being read or about to be

  StartStates start_;
  KeywordMap keywords_;
  int firstState_[256];  // start_ for bytes
  std::unique_ptr<Arena> arena_;
  Token* tokens_ = nullptr;  // the token last scanned
  Token* peeked_ = nullptr;  // the token last peeked or scanned
};

}  // namespace VELMAR
