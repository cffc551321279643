#include "Scanner.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <deque>
#include <functional>
#include <istream>
#include <new>
#include <utility>

#include "StepStrings.h"

// ---------------------------------------------------------------------------------------------------- wide strings

namespace {

wchar_t* CopyOf(const wchar_t* text, std::size_t length) {
  auto* copy = new wchar_t[length + 1];
  std::wmemcpy(copy, text, length);
  copy[length] = L'\0';
  return copy;
}

template <class Convert>
wchar_t* ConvertedCopyOf(const wchar_t* text, std::size_t length, Convert convert) {
  wchar_t* copy = CopyOf(text, length);
  for (std::size_t i = 0; i < length; ++i) copy[i] = convert(copy[i]);
  return copy;
}

wchar_t Upper(wchar_t c) { return c >= L'a' && c <= L'z' ? c - L'a' + L'A' : c; }
wchar_t Lower(wchar_t c) { return c >= L'A' && c <= L'Z' ? c - L'A' + L'a' : c; }

std::size_t LengthOf(const wchar_t* text) { return text == nullptr ? 0 : std::wcslen(text); }

}  // namespace

wchar_t* coco_string_create(const wchar_t* text) { return text == nullptr ? nullptr : CopyOf(text, LengthOf(text)); }

wchar_t* coco_string_create(const wchar_t* text, int index, int length) {
  return text == nullptr ? nullptr : CopyOf(text + index, static_cast<std::size_t>(length));
}

wchar_t* coco_string_create_upper(const wchar_t* text) {
  return text == nullptr ? nullptr : ConvertedCopyOf(text, LengthOf(text), Upper);
}

wchar_t* coco_string_create_lower(const wchar_t* text) {
  return text == nullptr ? nullptr : ConvertedCopyOf(text, LengthOf(text), Lower);
}

wchar_t* coco_string_create_lower(const wchar_t* text, int index, int length) {
  return text == nullptr ? nullptr : ConvertedCopyOf(text + index, static_cast<std::size_t>(length), Lower);
}

wchar_t* coco_string_create_append(const wchar_t* first, const wchar_t* second) {
  const std::size_t firstLength = LengthOf(first);
  const std::size_t secondLength = LengthOf(second);
  auto* text = new wchar_t[firstLength + secondLength + 1];
  if (firstLength != 0) std::wmemcpy(text, first, firstLength);
  if (secondLength != 0) std::wmemcpy(text + firstLength, second, secondLength);
  text[firstLength + secondLength] = L'\0';
  return text;
}

wchar_t* coco_string_create_append(const wchar_t* text, wchar_t character) {
  const wchar_t second[] = {character, L'\0'};
  return coco_string_create_append(text, second);
}

void coco_string_delete(wchar_t*& text) {
  delete[] text;
  text = nullptr;
}

void coco_string_delete(char*& text) {
  delete[] text;
  text = nullptr;
}

int coco_string_length(const wchar_t* text) { return static_cast<int>(LengthOf(text)); }

bool coco_string_endswith(const wchar_t* text, const wchar_t* suffix) {
  const std::size_t textLength = LengthOf(text);
  const std::size_t suffixLength = LengthOf(suffix);
  if (suffixLength == 0) return true;
  return suffixLength <= textLength && std::wcscmp(text + textLength - suffixLength, suffix) == 0;
}

int coco_string_indexof(const wchar_t* text, wchar_t character) {
  for (std::size_t i = 0, length = LengthOf(text); i < length; ++i) {
    if (text[i] == character) return static_cast<int>(i);
  }
  return -1;
}

int coco_string_lastindexof(const wchar_t* text, wchar_t character) {
  for (std::size_t i = LengthOf(text); i > 0; --i) {
    if (text[i - 1] == character) return static_cast<int>(i - 1);
  }
  return -1;
}

void coco_string_merge(wchar_t*& text, const wchar_t* appended) {
  wchar_t* merged = coco_string_create_append(text, appended);
  coco_string_delete(text);
  text = merged;
}

bool coco_string_equal(const wchar_t* a, const wchar_t* b) { return std::wcscmp(a, b) == 0; }
int coco_string_compareto(const wchar_t* a, const wchar_t* b) { return std::wcscmp(a, b); }

int coco_string_hash(const wchar_t* text) {
  unsigned int hash = 0;
  for (; *text != L'\0'; ++text) hash = (hash * 7) ^ static_cast<unsigned int>(*text);
  const auto number = static_cast<int>(hash);
  return number < 0 ? static_cast<int>(0u - hash) : number;
}

wchar_t* coco_string_create(const char* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text);
  auto* wide = new wchar_t[length + 1];
  for (std::size_t i = 0; i <= length; ++i) wide[i] = static_cast<unsigned char>(text[i]);
  return wide;
}

char* coco_string_create_char(const wchar_t* text) {
  if (text == nullptr) return nullptr;
  const std::size_t length = LengthOf(text);
  auto* narrow = new char[length + 1];
  for (std::size_t i = 0; i <= length; ++i) narrow[i] = static_cast<char>(text[i]);
  return narrow;
}

namespace VELMAR {

namespace {

// Prints on standard output, whichever width its first user gave it, and ends the process.
[[noreturn]] void EndProcess(const std::string& message) {
  if (std::fwide(stdout, 0) > 0) {
    std::fwprintf(stdout, L"%s", message.c_str());
  } else {
    std::fputs(message.c_str(), stdout);
  }
  std::fflush(stdout);
  std::exit(1);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------- Buffer

namespace {

// As std::fread; goes on where a signal came in between. Where ferror() holds behind it, errno says why.
int ReadBytes(FILE* stream, unsigned char* bytes, int size) {
  std::size_t count = 0;
  const auto wanted = static_cast<std::size_t>(size);
  do {
    if (std::ferror(stream) != 0) std::clearerr(stream);
    count += std::fread(bytes + count, 1, wanted - count, stream);
  } while (count < wanted && std::ferror(stream) != 0 && errno == EINTR);
  return static_cast<int>(count);
}

}  // namespace

Buffer::Buffer(FILE* s, bool isUserStream)
    : data_(nullptr),
      capacity_(0),
      start_(0),
      length_(0),
      fileLength_(0),
      index_(0),
      stream_(s),
      isUserStream_(isUserStream) {
  if (CanSeek()) {
    // Where the end cannot be found beforehand, it is where there is nothing more to be read.
    const long length = std::fseek(s, 0, SEEK_END) == 0 ? std::ftell(s) : -1;
    std::rewind(s);
    fileLength_ = length < 0 || length > INT_MAX ? INT_MAX : static_cast<int>(length);
    capacity_ = fileLength_ < kMaxCapacity ? fileLength_ : kMaxCapacity;
  }
  if (capacity_ == 0) capacity_ = kMinCapacity;
  data_ = new unsigned char[static_cast<std::size_t>(capacity_) + 1];
  data_[0] = 0;
  if (fileLength_ > 0) {
    start_ = INT_MAX;  // nothing has been loaded: every position is outside the block
    SetPos(0);
  }
  if (length_ == fileLength_ && CanSeek()) Close();
}

Buffer::Buffer(const unsigned char* buf, int len)
    : Buffer(std::unique_ptr<unsigned char[]>(new unsigned char[static_cast<std::size_t>(len) + 1]), len) {
  if (len > 0) std::memcpy(data_, buf, static_cast<std::size_t>(len));
}

Buffer::Buffer(std::unique_ptr<unsigned char[]> block, int len)
    : data_(block.release()),
      capacity_(len),
      start_(0),
      length_(len),
      fileLength_(len),
      index_(0),
      stream_(nullptr),
      isUserStream_(false) {
  data_[len] = 0;
}

Buffer::Buffer(Buffer* b)
    : data_(std::exchange(b->data_, nullptr)),
      capacity_(b->capacity_),
      start_(b->start_),
      length_(b->length_),
      fileLength_(b->fileLength_),
      index_(b->index_),
      stream_(std::exchange(b->stream_, nullptr)),
      isUserStream_(b->isUserStream_) {}

Buffer::~Buffer() {
  Buffer::Close();
  delete[] data_;
}

void Buffer::Close() {
  if (isUserStream_ || stream_ == nullptr) return;
  std::fclose(stream_);
  stream_ = nullptr;
}

int Buffer::Read() {
  if (index_ >= length_) {
    if (GetPos() < fileLength_) {
      SetPos(GetPos());
    } else if (stream_ != nullptr && !CanSeek()) {
      ReadNextStreamChunk();
    }
  }
  return index_ < length_ ? data_[index_++] : EoF;
}

int Buffer::Peek() {
  const int position = GetPos();
  const int character = Read();
  SetPos(position);
  return character;
}

wchar_t* Buffer::GetString(int beg, int end) {
  if (end < beg) throw std::bad_array_new_length();
  const std::unique_ptr<wchar_t[]> text(new wchar_t[static_cast<std::size_t>(end - beg) + 1]);
  const int position = GetPos();
  int length = 0;
  SetPos(beg);
  while (GetPos() < end) {
    const int before = GetPos();
    const int character = Read();
    if (GetPos() == before) break;  // the end of the input
    text[length++] = character;
  }
  SetPos(position);
  return coco_string_create(text.get(), 0, length);
}

int Buffer::GetPos() { return start_ + index_; }

void Buffer::SetPos(int value) {
  if (value >= fileLength_ && stream_ != nullptr && !CanSeek()) {
    while (value >= fileLength_ && ReadNextStreamChunk() > 0) {
    }
  }
  if (value < 0 || value > fileLength_) {
    EndProcess("--- buffer out of bounds access, position: " + std::to_string(value) + "\n");
  }
  if (value >= start_ && value - start_ < length_) {
    index_ = value - start_;
  } else if (stream_ != nullptr) {
    const bool isThere = std::fseek(stream_, value, SEEK_SET) == 0;
    length_ = isThere ? ReadBytes(stream_, data_, capacity_) : 0;
    data_[length_] = 0;
    start_ = value;
    index_ = 0;
    if (length_ == 0 && isThere && std::ferror(stream_) == 0) fileLength_ = value;  // shorter than it said
  } else {
    index_ = fileLength_ - start_;
  }
}

int Buffer::ReadNextStreamChunk() {
  if (length_ == capacity_) {
    if (capacity_ > INT_MAX / 2) return 0;
    auto* larger = new unsigned char[2 * static_cast<std::size_t>(capacity_) + 1];
    std::memcpy(larger, data_, static_cast<std::size_t>(length_));
    delete[] data_;
    data_ = larger;
    capacity_ *= 2;
  }
  const int count = ReadBytes(stream_, data_ + length_, capacity_ - length_);
  length_ += count;
  fileLength_ = length_;
  data_[length_] = 0;
  return count;
}

bool Buffer::CanSeek() { return stream_ != nullptr && std::ftell(stream_) != -1; }

// ------------------------------------------------------------------------------------------------------ UTF8Buffer

namespace {

bool IsContinuation(int byte) { return (byte & 0xC0) == 0x80 && byte < Buffer::EoF; }

}  // namespace

UTF8Buffer::UTF8Buffer(Buffer* b) : Buffer(b) {}
UTF8Buffer::~UTF8Buffer() = default;

int UTF8Buffer::Read() {
  int lead;
  do {
    lead = Buffer::Read();
  } while (IsContinuation(lead));
  if (lead < 0x80 || lead == EoF) return lead;
  int following;
  int codePoint;
  if ((lead & 0xF0) == 0xF0) {
    codePoint = lead & 0x07;
    following = 3;
  } else if ((lead & 0xF0) == 0xE0) {
    codePoint = lead & 0x0F;
    following = 2;
  } else {
    codePoint = lead & 0x1F;
    following = 1;
  }
  while (following-- > 0) codePoint = codePoint * 64 + (Buffer::Read() & 0x3F);
  return codePoint;
}

// --------------------------------------------------------------------------------------- Token, StartStates, KeywordMap

Token::Token() : kind(0), pos(0), col(0), line(0), val(nullptr), next(nullptr) {}

StartStates::StartStates() : table_(new Elem*[kBuckets]()) {}

StartStates::~StartStates() {
  for (int bucket = 0; bucket < kBuckets; ++bucket) {
    for (Elem* elem = table_[bucket]; elem != nullptr;) delete std::exchange(elem, elem->next);
  }
  delete[] table_;
}

void StartStates::set(int character, int state) {
  Elem*& bucket = table_[static_cast<unsigned int>(character) % kBuckets];
  bucket = new Elem{character, state, bucket};
}

int StartStates::state(int character) const {
  const Elem* elem = table_[static_cast<unsigned int>(character) % kBuckets];
  while (elem != nullptr && elem->character != character) elem = elem->next;
  return elem == nullptr ? 0 : elem->state;
}

KeywordMap::Elem::Elem(const wchar_t* text, int tokenKind)
    : key(coco_string_create(text)), kind(tokenKind), next(nullptr) {}
KeywordMap::Elem::~Elem() { coco_string_delete(key); }

KeywordMap::KeywordMap() : table_(new Elem*[kBuckets]()) {}

KeywordMap::~KeywordMap() {
  for (int bucket = 0; bucket < kBuckets; ++bucket) {
    for (Elem* elem = table_[bucket]; elem != nullptr;) delete std::exchange(elem, elem->next);
  }
  delete[] table_;
}

void KeywordMap::set(const wchar_t* key, int kind) {
  Elem*& bucket = table_[static_cast<unsigned int>(coco_string_hash(key)) % kBuckets];
  auto* elem = new Elem(key, kind);
  elem->next = bucket;
  bucket = elem;
}

int KeywordMap::get(const wchar_t* key, int defaultKind) const {
  const Elem* elem = table_[static_cast<unsigned int>(coco_string_hash(key)) % kBuckets];
  while (elem != nullptr && !coco_string_equal(elem->key, key)) elem = elem->next;
  return elem == nullptr ? defaultKind : elem->kind;
}

// --------------------------------------------------------------------------------------------------- Scanner: states

namespace {

enum State {
  kAtEnd = -1,
  kNoToken = 0,
  kNumber,
  kSignedNumber,
  kIdentifier,
  kIdentifierOrData,
  kIdentifierOrEnd,
  kIdentifierOrHeader,
  kIdentifierOrIso,
  kInstanceName,
  kString,
  kBinary,
  kScope,
  kOneCharacter = 64,  // plus the kind of the token
};

struct StartRange {
  int first, last;
  int state;
};

// In which state a token begins, by its first character.
constexpr StartRange kStartRanges[] = {
    {'0', '9', kNumber},
    {'+', '+', kSignedNumber},
    {'-', '-', kSignedNumber},
    {'A', 'C', kIdentifier},
    {'D', 'D', kIdentifierOrData},
    {'E', 'E', kIdentifierOrEnd},
    {'F', 'G', kIdentifier},
    {'H', 'H', kIdentifierOrHeader},
    {'I', 'I', kIdentifierOrIso},
    {'J', 'Z', kIdentifier},
    {'_', '_', kIdentifier},
    {'#', '#', kInstanceName},
    {'\'', '\'', kString},
    {'"', '"', kBinary},
    {'&', '&', kScope},
    {';', ';', kOneCharacter + Token::Semicolon},
    {'!', '!', kOneCharacter + Token::Exclamation},
    {',', ',', kOneCharacter + Token::Comma},
    {'(', '(', kOneCharacter + Token::LeftParenthesis},
    {')', ')', kOneCharacter + Token::RightParenthesis},
    {'$', '$', kOneCharacter + Token::Dollar},
    {'.', '.', kOneCharacter + Token::Point},
    {'*', '*', kOneCharacter + Token::Asterisk},
    {'=', '=', kOneCharacter + Token::Equals},
    {'/', '/', kOneCharacter + Token::Slash},
    {Buffer::EoF, Buffer::EoF, kAtEnd},
};

enum CharacterClass : unsigned char {
  kDigit = 1,
  kUpper = 2,        // with "_"
  kHexDigit = 4,     // of a BINARY: upper case
  kStringStop = 8,   // ends the quick loop over the characters of a string
};

struct CharacterClasses {
  unsigned char of[256] = {};
  constexpr CharacterClasses() {
    for (int c = '0'; c <= '9'; ++c) of[c] = kDigit | kHexDigit;
    for (int c = 'A'; c <= 'Z'; ++c) of[c] = kUpper;
    for (int c = 'A'; c <= 'F'; ++c) of[c] |= kHexDigit;
    of[static_cast<int>('_')] = kUpper;
    for (int c : {0, static_cast<int>('\n'), static_cast<int>('\r'), static_cast<int>('\'')}) of[c] |= kStringStop;
    for (int c = 0x80; c < 0x100; ++c) of[c] |= kStringStop;
  }
};
constexpr CharacterClasses kClasses;

// Whether a character, which may be the end of the input, is of one of the classes.
bool Is(int character, int classes) { return character < 256 && (kClasses.of[character] & classes) != 0; }

constexpr std::size_t kMaxTokenLength = 32767;
constexpr std::size_t kKeywordLength = 8;  // of the one keyword
constexpr int kLastCodePoint = 0x1FFFFF;   // that four bytes can hold

}  // namespace

// ---------------------------------------------------------------------------------------------- Scanner: its memory

// Tokens and their texts, in blocks that are freed as a whole, the oldest first.
class Scanner::Arena {
 public:
  static constexpr std::size_t kBlockSize = 128 * 1024;

  Arena() { AddBlock(kBlockSize); }

  // Null where the current block has no room left.
  void* Allocate(std::size_t bytes) {
    const std::size_t begin = (used_ + alignof(Token) - 1) / alignof(Token) * alignof(Token);
    if (begin + bytes > blocks_.back().size) return nullptr;
    used_ = begin + bytes;
    return blocks_.back().bytes.get() + begin;
  }

  // Of this size, or larger.
  void AddBlock(std::size_t atLeast) {
    const std::size_t size = std::max(atLeast, kBlockSize);
    blocks_.push_back({std::unique_ptr<char[]>(new char[size]), size});
    used_ = 0;
  }

  // Frees the blocks before the one that holds `kept`.
  void FreeBefore(const void* kept) {
    const auto holds = [kept](const Block& block) {
      const std::less_equal<const void*> lessEqual;
      return lessEqual(block.bytes.get(), kept) && lessEqual(kept, block.bytes.get() + block.size - 1);
    };
    while (blocks_.size() > 1 && !holds(blocks_.front())) blocks_.pop_front();
  }

 private:
  struct Block {
    std::unique_ptr<char[]> bytes;
    std::size_t size;
  };

  std::deque<Block> blocks_;
  std::size_t used_ = 0;
};

// ------------------------------------------------------------------------------------------- Scanner: std::istream

// The bytes of a seekable stream, of which one block is in memory. Where a stream is shorter than it said, the input ends
// there; where it cannot be read, before its end.
class Scanner::StreamBuffer : public Buffer {
 public:
  static Buffer* Open(std::istream& stream, int length) {
    // What UTF8Buffer takes over must be all there is; and nothing may be thrown in the middle of a file.
    errno = 0;
    const bool isWhole = length <= kMaxCapacity || stream.exceptions() != std::ios::goodbit || stream.peek() == 0xEF;
    std::unique_ptr<StreamBuffer> buffer(new StreamBuffer(stream, length, isWhole ? length : kMaxCapacity));
    buffer->Load(0);
    return buffer.release();
  }

  ~StreamBuffer() override {
    if (input_.good() && next_ != streamLength_) input_.seekg(streamLength_);
  }

  void SetPos(int value) override {
    const bool isElsewhere = value < start_ || value - start_ >= length_;
    if (isElsewhere && value >= 0 && value < fileLength_) Load(value);
    Buffer::SetPos(value);
  }

 private:
  // Not from make_unique, which would write zeros over the block first.
  StreamBuffer(std::istream& stream, int length, int capacity)
      : Buffer(std::unique_ptr<unsigned char[]>(new unsigned char[static_cast<std::size_t>(capacity) + 1]), 0),
        input_(stream),
        streamLength_(length) {
    capacity_ = capacity;
    fileLength_ = length;
  }

  void Load(int position) {
    if (!input_.bad()) errno = 0;
    if (position != next_) input_.seekg(position);
    input_.read(reinterpret_cast<char*>(data_), std::min(capacity_, fileLength_ - position));
    length_ = static_cast<int>(input_.gcount());
    data_[length_] = 0;
    start_ = position;
    index_ = 0;
    next_ = position + length_;
    if (input_.eof() && !input_.bad()) fileLength_ = next_;
  }

  std::istream& input_;
  int streamLength_;
  int next_ = 0;  // the stream's position
};

// ------------------------------------------------------------------------------------------- Scanner: life and tokens

Scanner::Scanner(const unsigned char* buf, int len) : buffer_(new Buffer(buf, len)) { Init(); }

Scanner::Scanner(std::istream& stream, int len) : buffer_(StreamBuffer::Open(stream, len)) { Init(); }

Scanner::Scanner(FILE* s) : buffer_(new Buffer(s, true)) { Init(); }

Scanner::Scanner(const wchar_t* fileName) {
  const std::unique_ptr<char[]> name(coco_string_create_char(fileName));
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(name.get(), "rb"), std::fclose);
  if (file == nullptr) EndProcess(std::string("--- Cannot open file ") + name.get() + "\n");
  buffer_.reset(new Buffer(file.get(), false));
  (void)file.release();
  Init();
}

Scanner::~Scanner() = default;

void Scanner::Init() {
  for (const StartRange& range : kStartRanges) {
    for (int character = range.first; character <= range.last; ++character) start_.set(character, range.state);
  }
  for (int character = 0; character < 256; ++character) firstState_[character] = start_.state(character);
  keywords_.set(L"ENDSCOPE", Token::EndScope);
  arena_.reset(new Arena);
  OpenWindow();
  if (Ch() == 0xEF) SkipByteOrderMark();
  tokens_ = peeked_ = CreateToken();
}

void Scanner::SkipByteOrderMark() {
  for (const int byte : {0xEF, 0xBB, 0xBF}) {
    if (Ch() != byte) EndProcess("Illegal byte order mark at start of file");
    Take();
  }
  CloseWindow();
  buffer_.reset(new UTF8Buffer(buffer_.get()));
  if (buffer_->stream_ == nullptr && buffer_->HasFailed()) Fail();  // what could be read is all there is
  OpenWindow();
  utf8_ = true;
  lineStart_ = Position();
}

Token* Scanner::Scan() {
  if (tokens_->next == nullptr) tokens_->next = NewToken();
  tokens_ = peeked_ = tokens_->next;
  return tokens_;
}

Token* Scanner::Peek() {
  do {
    if (peeked_->next == nullptr) peeked_->next = NewToken();
    peeked_ = peeked_->next;
  } while (peeked_->kind > Token::Invalid);
  return peeked_;
}

void Scanner::ResetPeek() { peeked_ = tokens_; }

// The parser's Scan: no wide text, and nothing kept but this token and the one before it.
const Scanner::Lexeme* Scanner::ScanLexeme() { return tokens_->next == nullptr ? &NextToken() : &PeekedLexeme(); }

// The token that was peeked is the next one.
const Scanner::Lexeme& Scanner::PeekedLexeme() {
  tokens_ = peeked_ = tokens_->next;
  lexeme_ = 1 - lexeme_;
  Lexeme& lexeme = lexemes_[lexeme_];
  lexeme.kind = tokens_->kind;
  lexeme.pos = tokens_->pos;
  lexeme.col = tokens_->col;
  lexeme.line = tokens_->line;
  lexeme.kept.clear();
  for (const wchar_t* c = tokens_->val; *c != L'\0'; ++c) {
    if (utf8_) {
      AppendUtf8(static_cast<unsigned int>(*c), lexeme.kept);
    } else {
      lexeme.kept += static_cast<char>(*c);
    }
  }
  lexeme.text = lexeme.kept.data();
  lexeme.length = lexeme.kept.size();
  return lexeme;
}

// A block of at least this size.
void Scanner::CreateHeapBlock(std::size_t size) {
  arena_->FreeBefore(tokens_);
  arena_->AddBlock(size);
}

Token* Scanner::CreateToken() {
  void* memory = arena_->Allocate(sizeof(Token));
  if (memory == nullptr) {
    CreateHeapBlock(sizeof(Token));
    memory = arena_->Allocate(sizeof(Token));
  }
  return new (memory) Token;
}

void Scanner::AppendVal(Token* token, const Lexeme& lexeme) {
  const std::size_t bytes = (lexeme.length + 1) * sizeof(wchar_t);  // enough: a character has at least one byte
  void* memory = arena_->Allocate(bytes);
  std::unique_ptr<wchar_t[]> wide;
  if (memory == nullptr && bytes <= Arena::kBlockSize) {
    CreateHeapBlock(bytes);
    memory = arena_->Allocate(bytes);
  }
  if (memory == nullptr) {  // long, or UTF-8 that is longer in bytes than it is in characters
    wide.reset(new wchar_t[lexeme.length + 1]);
  }
  auto* text = memory == nullptr ? wide.get() : static_cast<wchar_t*>(memory);
  wchar_t* end = text;
  for (std::size_t i = 0; i < lexeme.length;) {
    const auto lead = static_cast<unsigned char>(lexeme.text[i++]);
    if (!utf8_ || lead < 0x80) {
      *end++ = lead;
      continue;
    }
    int codePoint = lead >= 0xF0 ? lead & 0x07 : lead >= 0xE0 ? lead & 0x0F : lead & 0x1F;
    while (i < lexeme.length && IsContinuation(static_cast<unsigned char>(lexeme.text[i]))) {
      codePoint = codePoint * 64 + (lexeme.text[i++] & 0x3F);
    }
    *end++ = codePoint;
  }
  *end++ = L'\0';
  if (memory == nullptr) {
    const std::size_t size = static_cast<std::size_t>(end - text) * sizeof(wchar_t);
    memory = arena_->Allocate(size);
    if (memory == nullptr) {
      CreateHeapBlock(size);
      memory = arena_->Allocate(size);
    }
    std::memcpy(memory, text, size);
  }
  token->val = static_cast<wchar_t*>(memory);
}

Token* Scanner::NewToken() {
  const Lexeme& lexeme = NextToken();
  Token* token = CreateToken();
  token->kind = lexeme.kind;
  token->pos = lexeme.pos;
  token->col = lexeme.col;
  token->line = lexeme.line;
  AppendVal(token, lexeme);
  return token;
}

// ----------------------------------------------------------------------------------------------- Scanner: the window

void Scanner::OpenWindow() {
  cur_ = buffer_->data_ + std::min(buffer_->index_, buffer_->length_);  // the index may be at the end of what cannot be read
  end_ = buffer_->data_ + buffer_->length_;
}

void Scanner::CloseWindow() { buffer_->index_ = static_cast<int>(cur_ - buffer_->data_); }

inline int Scanner::Position() const { return buffer_->start_ + static_cast<int>(cur_ - buffer_->data_); }

// The current character; in UTF-8 the first byte of a sequence.
inline int Scanner::Ch() {
  for (;;) {
    if (cur_ == end_ && !Refill()) return Buffer::EoF;
    if (!utf8_ || !IsContinuation(*cur_)) return *cur_;
    SkipStrayByte();
  }
}

// Loads what follows the window. False at the end of the input, and where it cannot be read any further.
bool Scanner::Refill() {
  if (buffer_->stream_ == nullptr && Position() >= buffer_->fileLength_) return false;
  if (!failure_.empty()) return false;
  Keep(lexemes_[lexeme_]);
  if (inText_) KeepText();
  CloseWindow();
  const bool more = buffer_->Buffer::Read() != Buffer::EoF;
  if (more) {
    --buffer_->index_;
  } else if (buffer_->HasFailed()) {
    Fail();
  }
  OpenWindow();
  textBegin_ = cur_;
  return more;
}

// The input cannot be read any further, for the reason that errno gives, if it does.
void Scanner::Fail() { failure_ = std::strerror(errno == 0 ? EIO : errno); }

void Scanner::SkipStrayByte() {
  if (inText_) KeepText();
  Take();
  textBegin_ = cur_;
  ++lineStart_;
}

// Takes the code point at the current character, which is the first byte of a sequence; -1, and nothing taken, where it is
// above `last`.
int Scanner::TakeCodePoint(int last) {
  Keep(lexemes_[lexeme_]);
  if (inText_) KeepText();
  CloseWindow();
  const int position = buffer_->GetPos();
  int codePoint = buffer_->Read();
  if (codePoint > last) {
    codePoint = -1;
    buffer_->SetPos(position);
  } else {
    lineStart_ += buffer_->GetPos() - position - 1;
  }
  OpenWindow();
  textBegin_ = cur_;
  return codePoint;
}

inline void Scanner::NewLine() {
  ++line_;
  lineStart_ = Position();
}

// Takes the current character, which is CR or LF, and tells whether the line ends with it: it does with LF and with a CR
// that no LF follows.
bool Scanner::EndsLine() {
  const bool isCarriageReturn = *cur_ == '\r';
  Take();
  if (isCarriageReturn && Ch() == '\n') return false;
  NewLine();
  return true;
}

wchar_t* Scanner::GetString(int beg, int end) {
  for (Lexeme& lexeme : lexemes_) Keep(lexeme);
  CloseWindow();
  wchar_t* text = buffer_->GetString(beg, end);
  OpenWindow();
  return text;
}

// ------------------------------------------------------------------------------------------------- Scanner: the text

// Makes the text of a token independent of the buffer's array, which another block is about to fill.
void Scanner::Keep(Lexeme& lexeme) {
  if (buffer_->HoldsAll() || lexeme.text == lexeme.kept.data()) return;
  lexeme.kept.assign(lexeme.text, lexeme.length);
  lexeme.text = lexeme.kept.data();
}

// Puts the token's text so far aside.
std::string& Scanner::KeepText() {
  std::string& kept = lexemes_[1 - lexeme_].kept;
  kept.append(reinterpret_cast<const char*>(textBegin_), static_cast<std::size_t>(cur_ - textBegin_));
  textBegin_ = cur_;
  return kept;
}

// Whether the token's text so far is this one.
bool Scanner::TextIs(const char* text) {
  if (!lexemes_[1 - lexeme_].kept.empty()) return KeepText() == text;
  const std::size_t length = std::strlen(text);
  return static_cast<std::size_t>(cur_ - textBegin_) == length && std::memcmp(textBegin_, text, length) == 0;
}

inline void Scanner::EndText(Lexeme& lexeme) {
  inText_ = false;
  if (lexeme.kept.empty()) {
    lexeme.text = reinterpret_cast<const char*>(textBegin_);
    lexeme.length = static_cast<std::size_t>(cur_ - textBegin_);
  } else {
    KeepText();
    lexeme.text = lexeme.kept.data();
    lexeme.length = lexeme.kept.size();
  }
  if (lexeme.length <= kMaxTokenLength || allowsLongTokens_) return;
  std::size_t characters = lexeme.length;
  for (std::size_t i = 0; utf8_ && i < lexeme.length; ++i) {
    if (IsContinuation(static_cast<unsigned char>(lexeme.text[i]))) --characters;
  }
  if (characters > kMaxTokenLength) EndProcess("--- Too long token value\n");
}

// --------------------------------------------------------------------------------------------- Scanner: the automaton

// The token begins with the current character, which is in the window.
inline void Scanner::BeginToken(Lexeme& lexeme) {
  lexeme.pos = Position();
  lexeme.col = lexeme.pos - lineStart_ + 1;
  lexeme.line = line_;
  textBegin_ = cur_;
}

inline void Scanner::TakeOneCharacter(Lexeme& lexeme, int state) {
  Take();
  lexeme.kind = state - kOneCharacter;
  lexeme.text = reinterpret_cast<const char*>(textBegin_);
  lexeme.length = 1;
}

// Most tokens are one character right behind the token before. The rest is not in here, so that these stay quick.
const Scanner::Lexeme& Scanner::NextToken() {
  const int state = firstState_[*cur_];  // at the end of the window there is a zero, with which no token begins
  if (state < kOneCharacter || state == kOneCharacter + Token::Slash || ended_) return AnyToken();
  lexeme_ = 1 - lexeme_;
  Lexeme& lexeme = lexemes_[lexeme_];
  BeginToken(lexeme);
  TakeOneCharacter(lexeme, state);
  return lexeme;
}

const Scanner::Lexeme& Scanner::AnyToken() {
  Lexeme& lexeme = lexemes_[1 - lexeme_];
  for (;;) {
    const int blank = SkipBlanks();
    const int first = ended_ ? Buffer::EoF : blank;
    const int state = first < 256 ? firstState_[first] : start_.state(first);
    BeginToken(lexeme);
    lexeme.kept.clear();
    if (state >= kOneCharacter) {
      TakeOneCharacter(lexeme, state);
      if (lexeme.kind != Token::Slash) break;
    }
    inText_ = true;
    if (state < kOneCharacter) {
      lexeme.kind = ScanFrom(state);
    } else if (SkipComment()) {
      continue;
    }
    EndText(lexeme);
    break;
  }
  lexeme_ = 1 - lexeme_;
  return lexeme;
}

// Tells which character follows.
inline int Scanner::SkipBlanks() {
  for (;;) {
    const int c = Ch();
    switch (c) {
      case ' ':
      case '\t':
        Take();
        break;
      case '\r':
      case '\n':
        EndsLine();
        break;
      default:
        return c;
    }
  }
}

// Behind a "/": skips a comment and tells whether there was one. A comment that does not end goes to the end of the input.
bool Scanner::SkipComment() {
  const int second = Ch();
  if (second != '/' && second != '*') return false;
  inText_ = false;
  Take();
  return second == '/' ? Comment0() : Comment1();
}

// "//" up to CR LF; an LF alone does not end it.
bool Scanner::Comment0() {
  for (int c = Ch(); c != Buffer::EoF; c = Ch()) {
    if (c == '\r') {
      if (!EndsLine()) {  // LF follows
        EndsLine();
        return true;
      }
    } else if (c == '\n') {
      EndsLine();
    } else {
      Take();
    }
  }
  return true;
}

// "/*" up to its own "*/"; comments of this form nest.
bool Scanner::Comment1() {
  int level = 1;
  for (int c = Ch(); c != Buffer::EoF; c = Ch()) {
    if (c == '\r' || c == '\n') {
      EndsLine();
      continue;
    }
    Take();
    if (c == '*' && Ch() == '/') {
      Take();
      if (--level == 0) return true;
    } else if (c == '/' && Ch() == '*') {
      Take();
      ++level;
    }
  }
  return true;
}

int Scanner::ScanFrom(int state) {
  switch (state) {
    case kNumber:
    case kSignedNumber:
      return ScanNumber();
    case kIdentifier:
    case kIdentifierOrData:
    case kIdentifierOrEnd:
    case kIdentifierOrHeader:
    case kIdentifierOrIso:
      return ScanIdentifier(state);
    case kInstanceName:
      Take();
      if (!Is(Ch(), kDigit)) return Token::Invalid;
      TakeDigits();
      return Token::EntityInstanceName;
    case kString:
      return ScanString();
    case kBinary:
      return ScanBinary();
    case kScope:
      return TakeExactly("&SCOPE") ? Token::Scope : Token::Invalid;
    case kAtEnd:
      return Token::EoF;
    default:
      return ScanInvalid();
  }
}

// The loops run in the window; at its end Ch() tells whether they go on.
inline void Scanner::TakeDigits() {
  do {
    while (kClasses.of[*cur_] & kDigit) ++cur_;
  } while (Is(Ch(), kDigit));
}

bool Scanner::TakeExactly(const char* text) {
  for (; *text != '\0'; ++text) {
    if (Ch() != *text) return false;
    Take();
  }
  return true;
}

// [ "+" | "-" ] digits [ "." { digit } [ ( "E" | "e" ) [ "+" | "-" ] digits ] ]
int Scanner::ScanNumber() {
  if (!Is(Ch(), kDigit)) {
    Take();
    if (!Is(Ch(), kDigit)) return Token::Invalid;
  }
  TakeDigits();
  if (Ch() != '.') return Token::Integer;
  Take();
  TakeDigits();
  if (Ch() != 'E' && Ch() != 'e') return Token::Real;
  Take();
  if (Ch() == '+' || Ch() == '-') Take();
  if (!Is(Ch(), kDigit)) return Token::Invalid;
  TakeDigits();
  return Token::Real;
}

// ( upper | "_" ) { upper | "_" | digit }, or one of the words that end in ";", which belongs to them.
int Scanner::ScanIdentifier(int state) {
  do {
    while (kClasses.of[*cur_] & (kUpper | kDigit)) ++cur_;
  } while (Is(Ch(), kUpper | kDigit));

  const auto word = [this](const char* text, int kind) {
    if (Ch() != ';' || !TextIs(text)) return static_cast<int>(Token::Ident);
    Take();
    return kind;
  };
  switch (state) {
    case kIdentifierOrData:
      return word("DATA", Token::Data);
    case kIdentifierOrHeader:
      return word("HEADER", Token::Header);
    case kIdentifierOrIso:
      if (Ch() != '-' || !TextIs("ISO")) return Token::Ident;
      return TakeExactly("-10303-21;") ? Token::Iso10303_21 : Token::Invalid;
    case kIdentifierOrEnd: {
      if (Ch() == '-' && TextIs("END")) {
        return TakeExactly("-ISO-10303-21;") ? Token::EndIso10303_21 : Token::Invalid;
      }
      if (const int kind = word("ENDSEC", Token::EndSec); kind != Token::Ident) return kind;
      // Every keyword begins with this letter.
      const std::string& kept = lexemes_[1 - lexeme_].kept;
      if (kept.size() + static_cast<std::size_t>(cur_ - textBegin_) != kKeywordLength) return Token::Ident;
      wchar_t key[kKeywordLength + 1] = {};
      for (std::size_t i = 0; i < kKeywordLength; ++i) {
        key[i] = i < kept.size() ? kept[i] : textBegin_[i - kept.size()];
      }
      return keywords_.get(key, Token::Ident);
    }
    default:
      return Token::Ident;
  }
}

// An apostrophe, characters and doubled apostrophes, an apostrophe.
int Scanner::ScanString() {
  Take();
  for (;;) {
    while (!(kClasses.of[*cur_] & kStringStop)) ++cur_;
    const int c = Ch();
    if (c == '\'') {
      Take();
      if (Ch() != '\'') return Token::String;
      Take();
    } else if (c == '\n' || c == '\r') {
      if (EndsLine() && c == '\r') KeepText().back() = '\n';
    } else if (c == Buffer::EoF) {
      return Token::Invalid;
    } else if (c < 0x80 || !utf8_) {
      Take();
    } else {
      const int codePoint = TakeCodePoint(keepSupplementary_ ? kLastCodePoint : Buffer::EoF - 1);
      if (codePoint < 0) return Token::Invalid;
      AppendUtf8(static_cast<unsigned int>(codePoint), KeepText());
    }
  }
}

// A double quote, "0" to "3", { hexadecimal digit }, a double quote.
int Scanner::ScanBinary() {
  Take();
  if (Ch() < '0' || Ch() > '3') return Token::Invalid;
  while (Is(Ch(), kHexDigit)) Take();
  if (Ch() != '"') return Token::Invalid;
  Take();
  return Token::Binary;
}

int Scanner::ScanInvalid() {
  if (!utf8_ || *cur_ < 0x80) {
    Take();
    return Token::Invalid;
  }
  const int codePoint = TakeCodePoint(kLastCodePoint);
  if (codePoint == Buffer::EoF && !keepSupplementary_) {  // the character that stands for the end
    ended_ = true;
    return Token::EoF;
  }
  AppendUtf8(static_cast<unsigned int>(codePoint), KeepText());
  return Token::Invalid;
}

}  // namespace VELMAR
