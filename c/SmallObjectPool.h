/// @file SmallObjectPool.h
/// For the library itself: memory for the many small objects of a population.
#pragma once

#include <cstddef>

namespace VELMAR {

/// Gives out memory for small objects, without the bytes that a general allocator adds to each.
///
/// Memory comes in chunks, each for objects of one size, and is kept for further objects of that size. A thread keeps some free
/// pieces to itself, so that most calls take no lock; one thread may free what another was given. With the address sanitizer
/// all memory is the general allocator's.
class SmallObjectPool {
 public:
  /// Throws std::bad_alloc.
  static void* Allocate(std::size_t size);
  /// `size` is that of the allocation. Null is ignored.
  static void Free(void* memory, std::size_t size) noexcept;
  /// Of sizes of which no object is left, and of which no other thread keeps pieces, the chunks are used from their
  /// beginning again: objects that are made one behind the other lie so.
  static void Restart() noexcept;
  /// Gives these chunks back.
  static void Release() noexcept;
};

}  // namespace VELMAR
