#include "SmallObjectPool.h"

#include <algorithm>
#include <mutex>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define VELMAR_POOLS_ARE_OFF
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELMAR_POOLS_ARE_OFF
#endif
#endif

namespace VELMAR {

namespace {

#ifdef VELMAR_POOLS_ARE_OFF
constexpr std::size_t kLargest = 0;
#else
constexpr std::size_t kLargest = 512;  // larger objects come from the general allocator
#endif
constexpr std::size_t kGranule = 8;  // sizes are multiples of this
constexpr std::size_t kSizes = kLargest / kGranule + 1;
constexpr std::size_t kSmallestChunk = 4 * 1024;
constexpr std::size_t kLargestChunk = 1024 * 1024;
constexpr int kBatch = 64;  // how many pieces a thread takes or gives back at once

std::size_t IndexOf(std::size_t size) { return (size + kGranule - 1) / kGranule; }

// A piece that is free.
struct Piece {
  Piece* next;
};

// The beginning of a chunk. Pieces follow, aligned as the general allocator aligns: an object that has to be aligned to 16
// bytes has a size that is a multiple of 16.
struct alignas(__STDCPP_DEFAULT_NEW_ALIGNMENT__) Chunk {
  Chunk* next;
  std::size_t size;
};

// All memory for objects of one size.
class Depot {
 public:
  // A list of 1 to kBatch free pieces. Throws std::bad_alloc.
  Piece* Take(std::size_t pieceSize, int& count) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (free_ == nullptr) MakePieces(pieceSize);
    Piece* const first = free_;
    Piece* last = first;
    for (count = 1; count < kBatch && last->next != nullptr; ++count) last = last->next;
    free_ = last->next;
    last->next = nullptr;
    taken_ += count;
    return first;
  }

  void Give(Piece* first, Piece* last, int count) noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    last->next = free_;
    free_ = first;
    taken_ -= count;
  }

  // The pieces are forgotten, the chunks wait for new ones to be made of them.
  void Restart() noexcept {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (taken_ != 0) return;
    while (chunks_ != nullptr) Move(chunks_, waiting_);
    free_ = nullptr;
    next_ = end_ = nullptr;
  }

  void Release() noexcept {
    Restart();
    const std::lock_guard<std::mutex> lock(mutex_);
    while (waiting_ != nullptr) {
      Chunk* chunk = waiting_;
      waiting_ = chunk->next;
      ::operator delete(chunk);
    }
  }

 private:
  // Makes up to kBatch pieces of memory that has not been used yet.
  void MakePieces(std::size_t pieceSize) {
    if (static_cast<std::size_t>(end_ - next_) < pieceSize) AddChunk();
    const std::size_t room = static_cast<std::size_t>(end_ - next_) / pieceSize;
    for (std::size_t i = std::min<std::size_t>(room, kBatch); i-- > 0;) {  // the lowest address comes first
      free_ = new (next_ + i * pieceSize) Piece{free_};
    }
    next_ += std::min<std::size_t>(room, kBatch) * pieceSize;
  }

  // One that waits, or a new one, twice as large as the one before.
  void AddChunk() {
    if (waiting_ != nullptr) {
      Move(waiting_, chunks_);
    } else {
      const std::size_t size = chunks_ == nullptr ? kSmallestChunk : std::min(2 * chunks_->size, kLargestChunk);
      chunks_ = new (::operator new(size)) Chunk{chunks_, size};
    }
    next_ = reinterpret_cast<char*>(chunks_ + 1);
    end_ = reinterpret_cast<char*>(chunks_) + chunks_->size;
  }

  // The first chunk of one list becomes the first of another.
  static void Move(Chunk*& from, Chunk*& to) {
    Chunk* chunk = from;
    from = chunk->next;
    chunk->next = to;
    to = chunk;
  }

  std::mutex mutex_;
  Piece* free_ = nullptr;
  char* next_ = nullptr;  // the newest chunk from here on has not been used yet
  char* end_ = nullptr;
  Chunk* chunks_ = nullptr;   // in use, the newest first
  Chunk* waiting_ = nullptr;  // all of them unused
  long taken_ = 0;  // pieces that objects use or threads keep
};

// Never destroyed: objects may be freed to the very end of the process.
Depot* Depots() {
  static Depot* const kDepots = new Depot[kSizes];
  return kDepots;
}

// Free pieces that a thread keeps, by size.
struct Kept {
  Piece* first;
  int count;
};
thread_local Kept kept[kSizes];

void GiveBack(std::size_t index, int count) noexcept {
  Piece* const first = kept[index].first;
  Piece* last = first;
  for (int i = 1; i < count; ++i) last = last->next;
  kept[index].first = last->next;
  kept[index].count -= count;
  Depots()[index].Give(first, last, count);
}

void GiveAllBack() noexcept {
  for (std::size_t index = 0; index < kSizes; ++index) {
    if (kept[index].count != 0) GiveBack(index, kept[index].count);
  }
}

// Nothing is lost when a thread ends.
struct EndOfThread {
  bool isAwaited = false;
  ~EndOfThread() { GiveAllBack(); }
};
thread_local EndOfThread endOfThread;

}  // namespace

void* SmallObjectPool::Allocate(std::size_t size) {
  if (size > kLargest) return ::operator new(size);
  const std::size_t index = IndexOf(size);
  Kept& mine = kept[index];
  if (mine.first == nullptr) {
    endOfThread.isAwaited = true;
    mine.first = Depots()[index].Take(index * kGranule, mine.count);
  }
  Piece* const piece = mine.first;
  mine.first = piece->next;
  --mine.count;
  return piece;
}

void SmallObjectPool::Free(void* memory, std::size_t size) noexcept {
  if (memory == nullptr) return;
  if (size > kLargest) {
    ::operator delete(memory);
    return;
  }
  const std::size_t index = IndexOf(size);
  Kept& mine = kept[index];
  if (mine.first == nullptr) endOfThread.isAwaited = true;
  mine.first = new (memory) Piece{mine.first};
  if (++mine.count == 2 * kBatch) GiveBack(index, kBatch);
}

void SmallObjectPool::Restart() noexcept {
  GiveAllBack();
  for (std::size_t index = 0; index < kSizes; ++index) Depots()[index].Restart();
}

void SmallObjectPool::Release() noexcept {
  GiveAllBack();
  for (std::size_t index = 0; index < kSizes; ++index) Depots()[index].Release();
}

}  // namespace VELMAR
