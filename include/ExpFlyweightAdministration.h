/// @file ExpFlyweightAdministration.h
/// The entity store of an exchange file.
#pragma once

#include <cstdlib>
#include <new>
#include <vector>

#include "VelmarApi.h"
#include "VelmarClasses.h"

namespace VELMAR {

/// Memory for the slots of a store: zero when it comes from the system, and left alone when slots are appended, so that
/// slots nobody has used cost address space, not pages. Slots that are taken away must not be appended again.
template <class T>
class ExpZeroedAllocator {
 public:
  using value_type = T;
  ExpZeroedAllocator() = default;
  template <class U>
  ExpZeroedAllocator(const ExpZeroedAllocator<U>&) {}

  T* allocate(std::size_t n) {
    void* memory = std::calloc(n, sizeof(T));  // NOLINT(bugprone-sizeof-expression): T may be a pointer
    if (memory == nullptr) throw std::bad_alloc();
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t) { std::free(memory); }
  template <class U>
  void construct(U*) {}
  template <class U, class V>
  void construct(U* place, V&& value) {
    if (value != U()) ::new (static_cast<void*>(place)) U(static_cast<V&&>(value));
  }
  friend bool operator==(const ExpZeroedAllocator&, const ExpZeroedAllocator&) { return true; }
  friend bool operator!=(const ExpZeroedAllocator&, const ExpZeroedAllocator&) { return false; }
};

/// The entities of one exchange file, found by instance number (the n of #n).
///
/// A table of pointers indexed by the number itself, so a lookup is one bounds check and one load. Does not own the
/// entities: they belong to their runtime type's instance list under GetAdminId(), and DeleteEntities deletes what is
/// recorded there. Used by one thread at a time.
class VELMAR_API ExpFlyweightAdministration : public ExpAbstractObjectAdmin {
 public:
  /// The id of the next store; ids are never used again.
  static unsigned int adminIdCounter;

  /// 10000 slots.
  ExpFlyweightAdministration();
  /// A table of so many slots.
  explicit ExpFlyweightAdministration(int initialSize);
  /// Deletes the entities created for this store.
  ~ExpFlyweightAdministration() override;
  ExpFlyweightAdministration(const ExpFlyweightAdministration&) = delete;
  ExpFlyweightAdministration& operator=(const ExpFlyweightAdministration&) = delete;

  using ExpAbstractObjectAdmin::GetEntity;
  /// Null for an empty slot and for every number outside the table. Constant time.
  ExpEntity* GetEntity(int number) override;
  /// Stores `entity` under `number`, in place of whatever is there; a number beyond the table grows it to 2 * number
  /// slots. Throws std::length_error for numbers of 2^30 and above, which changes nothing, and a standard error for
  /// negative ones.
  void AddEntity(int number, ExpEntity* entity) override;
  /// The highest number so far plus one, which becomes the highest. Stores nothing.
  int CreateEntityNumber() override;
  unsigned int GetAdminId() override;
  /// The number of slots, occupied or not.
  std::size_t GetEntityVectorSize() override;
  /// Writes every entity's ToString and a line feed, in the order of the numbers, up to the highest number.
  void Write(std::ostream& os) override;
  /// Deletes all entities created for this store and sets the highest number to 0. The slots keep their pointers: follow
  /// with ClearEntityVector or ForgetEntities before anything is looked up.
  void DeleteEntities() override;
  /// DeleteEntities, and no slots.
  void ClearEntityVector() override;
  /// ClearEntityVector, and the first number of slots.
  void ResetEntityVector() override;
  int GetMaxEntityNumber() override;
  /// Does nothing and returns 0.
  virtual int Erase();

  /// Makes the table at least `size` slots long and takes that as the first number of slots.
  void Init(int size);
  /// Deletes all entities created for this store, also those that never got a number, and sets every slot to null. The
  /// number of slots stays.
  void ForgetEntities();

 private:
  using Table = std::vector<ExpEntity*, ExpZeroedAllocator<ExpEntity*>>;

  void Resize(std::size_t slots);
  ExpEntity*& Slot(int number);

  unsigned int adminId_;
  int maxEntityNumber_;
  Table expEntityVector;
  int initialSize_;
};

}  // namespace VELMAR
